// Writing the simulation to files and taking it up again: parameters,
// block, wells and the dynamic state of the run.

#include "kernel/Simulator.h"

#include "kernel/Constants.h"
#include "kernel/Core.h"
#include "kernel/CoreList.h"
#include "kernel/Domain.h"
#include "kernel/Network.h"
#include "kernel/Parameters.h"
#include "kernel/Tracer.h"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

bool Simulator::saveParams(const std::string& path)
{
    if (!_parameters->write(path))
        return fail("Cannot save parameters into file " + path, false);
    return true;
}

bool Simulator::loadParams(const std::string& path)
{
    if (!_parameters->read(path))
        return fail("Cannot load parameters from file " + path, false);
    return true;
}

bool Simulator::saveDomain(const std::string& path)
{
    if (!ready(true))
        return false;
    if (_network->ghost_channel() != nullptr)
        return fail(std::string("Cannot save simulation while the option 'Ghost Migration' is active."),
                    false);
    printout("Save simulation block");
    std::ofstream out(path, std::ios::binary);
    if (!out || !_domain->binary_output(out))
        return fail("Cannot save simulation block into file " + path, false);
    return true;
}

bool Simulator::loadDomain(const std::string& path)
{
    if (!ready(true))
        return false;
    printout("Load simulation block");
    std::ifstream in(path, std::ios::binary);
    if (!in || !_domain->binary_input(in))
        return fail("Cannot load simulation block from file " + path, false);
    return true;
}

bool Simulator::loadWells(const std::string&)
{
    return notAvailable("loadWells");
}

bool Simulator::saveWells(const std::string&)
{
    return notAvailable("saveWells");
}

bool Simulator::loadDynamicParams(const std::string&)
{
    return notAvailable("loadDynamicParams");
}

bool Simulator::saveDynamicParams(const std::string&)
{
    return notAvailable("saveDynamicParams");
}

bool Simulator::load(const std::string&)
{
    return notAvailable("load");
}

bool Simulator::save(const std::string&)
{
    return notAvailable("save");
}
