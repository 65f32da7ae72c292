#include "kernel/batch/ProportionExports.h"

#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/BatchPaths.h"
#include "kernel/batch/NewJournalFile.h"

#include <utility>

namespace
{
constexpr const char* WRONG_STEP = "Wrong VPC_DZ value (must be > 0.)";

// One file, traced as it is written; the simulator's reason follows a failure.
template <typename Save>
bool save_one(iSimulator& simulator, const std::string& what, const std::string& file, Save save)
{
    if (file.empty())
        return true;
    iTracer* tracer = simulator.getTracer();
    tracer->info("Saving " + what + " in " + file);
    if (save())
        return true;
    const std::string& reason = simulator.getLastMessage();
    tracer->error("Cannot save " + what + " in " + file + (reason.empty() ? "" : "\n" + reason));
    return false;
}
} // namespace

bool ProportionExports::is_keyword(const std::string& key)
{
    return key == "VPC_FILE" || key == "PM_FILE" || key == "WELL_VPC_FILE" || key == "VPC_DZ";
}

bool ProportionExports::read_keyword(const std::string& key, const std::string& value, std::string& error)
{
    if (key == "VPC_DZ")
    {
        double dz = 0.;
        if (!NewJournalFile::toReal(value, dz))
        {
            error = "Bad formatted value: " + value;
            return false;
        }
        if (!(dz > 0.))
        {
            error = WRONG_STEP;
            return false;
        }
        _dz = dz;
    }
    else if (key == "VPC_FILE")
        _vpcFile = value;
    else if (key == "PM_FILE")
        _pmFile = value;
    else if (key == "WELL_VPC_FILE")
        _wellVpcFile = value;
    return true;
}

bool ProportionExports::check(std::string& error) const
{
    if ((!_vpcFile.empty() || !_wellVpcFile.empty()) && _dz == MP_UNDEF_REAL)
    {
        error = "VPC_DZ keyword is missing (VPC_FILE and WELL_VPC_FILE need it)";
        return false;
    }
    const std::pair<const char*, const std::string*> files[] = {
        {"VPC_FILE ", &_vpcFile}, {"PM_FILE ", &_pmFile}, {"WELL_VPC_FILE ", &_wellVpcFile}};
    for (const auto& file : files)
        if (!file.second->empty() && !NewJournalFile::isWritable(*file.second))
        {
            error = file.first + *file.second + " is not writable";
            return false;
        }
    return true;
}

bool ProportionExports::save(iSimulator& simulator) const
{
    return save_one(simulator, "the vertical proportion curve", _vpcFile,
                    [&] { return simulator.saveVerticalProportions(_vpcFile, _dz); }) &&
           save_one(simulator, "the proportion matrix", _pmFile,
                    [&] { return simulator.saveProportionMatrix(_pmFile); }) &&
           save_one(simulator, "the vertical proportion curve of wells", _wellVpcFile,
                    [&] { return simulator.saveWellVerticalProportions(_wellVpcFile, _dz); });
}

void ProportionExports::listPaths(BatchPaths& paths) const
{
    paths.output("VPC_FILE", _vpcFile);
    paths.output("PM_FILE", _pmFile);
    paths.output("WELL_VPC_FILE", _wellVpcFile);
}
