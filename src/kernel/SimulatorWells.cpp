// What the driver does with wells: conditioning wells given by the user,
// synthetic wells extracted from the block, and their reports.

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

namespace
{
template <typename Value>
std::string text_of(const std::string& head, Value value, const std::string& tail = ")")
{
    std::ostringstream text;
    text << head << value << tail;
    return text.str();
}
} // namespace

bool Simulator::extractWell(int i, int j, Core& core, double zmin, double zmax) const
{
    if (!ready(true))
        return false;
    if (!_domain->to_core(i, j, core, zmin, zmax))
        return fail(text_of("Cannot extract well at indices [", i, ", ") + text_of("", j, "]"), false);
    return true;
}

bool Simulator::extractWellAt(const Point2D& location, Core& core, double zmin, double zmax) const
{
    if (!ready(true))
        return false;
    const Point2D node = _domain->getGridPointFromGeo(location);
    return extractWell(static_cast<int>(node.get_abscissa()), static_cast<int>(node.get_ordinate()), core,
                       zmin, zmax);
}

bool Simulator::setUserClassList(UserClassList const& classes)
{
    _userClasses = classes;
    return true;
}

bool Simulator::addWellFromFile(const std::string&, const std::string&, const std::string&)
{
    return notAvailable("addWellFromFile");
}

bool Simulator::addWell(const Core&, const std::string&)
{
    return notAvailable("addWell");
}

bool Simulator::deleteWell(const std::string&)
{
    return notAvailable("deleteWell");
}

bool Simulator::getAllWells(CoreList&) const
{
    return notAvailable("getAllWells");
}

bool Simulator::getWellInfos(const std::string&, std::string&) const
{
    return notAvailable("getWellInfos");
}

bool Simulator::getWellInfosAt(int, int, std::string&) const
{
    return notAvailable("getWellInfosAt");
}

bool Simulator::loadWell(const std::string&)
{
    return notAvailable("loadWell");
}

bool Simulator::saveWell(const std::string&, const std::string&)
{
    return notAvailable("saveWell");
}

bool Simulator::saveHistogram(const std::string&, const CoreList&, double, int)
{
    return notAvailable("saveHistogram");
}

void Simulator::printWells() const
{
    notAvailable("printWells");
}

bool Simulator::saveConditioningStats(const std::string&)
{
    return notAvailable("saveConditioningStats");
}
