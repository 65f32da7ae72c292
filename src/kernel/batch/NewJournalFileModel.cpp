// Building the model a loaded batch describes: the simulator's type and
// tracer, the flattening, user classes, wells and the basement.

#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/Topo.h"
#include "kernel/files/UserClass.h"
#include "kernel/files/UserClassList.h"
#include "kernel/parameters/Parameters.h"

#include <cmath>
#include <unistd.h>

namespace
{
using journal_support::int_text;
using journal_support::is_set;
} // namespace

// ---------------------------------------------------------------------------
// Building the model

int NewJournalFile::initialize()
{
    if (!set_type_and_tracer())
        return MP_STATUS_FAILURE;
    return buildModel();
}

int NewJournalFile::buildModel()
{
    const int status = _simulator->init(forceSimu());
    if (status != MP_STATUS_OK)
    {
        _simulator->getTracer()->error("Problem with simulator action: init");
        return status;
    }
    if (!check_extracted_wells() || !load_flattening() || !load_user_classes() || !load_wells())
        return MP_STATUS_FAILURE;
    if (!_wellFiles.empty() && !_simulator->getParameters()->usingFree())
    {
        CoreList cores;
        if (_simulator->getAllWells(cores))
            infer_nexus(cores, "input wells");
        else
            _simulator->getTracer()->warning("Cannot calculate Nexus from input wells: no well available");
    }
    return load_basement() ? MP_STATUS_OK : MP_STATUS_FAILURE;
}

bool NewJournalFile::set_type_and_tracer()
{
    iParameters* params = _simulator->getParameters();
    iTracer* tracer = _simulator->getTracer();
    if (_useTurbidite == 1)
        params->setUsingTurbi();
    else
        params->setUsingFluvi();
    const bool byIteration = is_set(_statsIt);
    const bool byAvulsion = is_set(_statsAv);
    tracer->setGenerateStatsIteration(byIteration);
    tracer->setGenerateStatsAvulsion(byAvulsion);
    tracer->setGenerateStatsProps(_statsProps == 1);
    tracer->setGenerateCenterlineStats(_statsCl == 1);
    if (byIteration || byAvulsion)
    {
        tracer->setStatsFile(_statsFile);
        tracer->setStatsInterval(static_cast<unsigned int>(byIteration ? _statsIt : _statsAv));
    }
    if (_statsCl == 1)
        tracer->setCenterlineStatsFile(_statsClFile);
    return true;
}

bool NewJournalFile::check_extracted_wells()
{
    const iDomain* domain = _simulator->getDomain();
    if (_extractedWells.empty())
        return true;
    const int nx = domain ? domain->getGridParams().getNx() : 0;
    const int ny = domain ? domain->getGridParams().getNy() : 0;
    for (const ExtractedWell& well : _extractedWells)
        if (well.i < 0 || well.i >= nx || well.j < 0 || well.j >= ny)
        {
            _simulator->getTracer()->error("Extract well indices [" + int_text(well.i) + ", " +
                                           int_text(well.j) + "] out of range [" + int_text(nx - 1) + ", " +
                                           int_text(ny - 1) + "]");
            return false;
        }
    return true;
}

bool NewJournalFile::load_flattening()
{
    if (_flatteningFile.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    Topo topo;
    if (!topo.read(_flatteningFile))
    {
        tracer->error("Cannot read flattening surface from input file: " + _flatteningFile + "\n" +
                      journal_support::grid_reason(topo.getError()));
        return false;
    }
    if (!_simulator->loadFlattening(topo))
    {
        tracer->error("Error loading flattening surface from file: " + _flatteningFile);
        return false;
    }
    return true;
}

bool NewJournalFile::make_user_classes(UserClassList& classes) const
{
    for (size_t k = 0; k < _userClassFacies.size(); ++k)
    {
        const bool discrete = _userClassType == USER_CLASS_DISCRETE;
        std::string message;
        if (!classes.add(_userClassType, _userClassFacies[k], discrete ? _userClassAttributes[k] : "",
                         discrete ? MP_UNDEF_REAL : _userClassMin[k],
                         discrete ? MP_UNDEF_REAL : _userClassMax[k], message))
        {
            _simulator->getTracer()->error("Error adding user class: " + message);
            return false;
        }
    }
    return true;
}

bool NewJournalFile::load_user_classes()
{
    if (!_hasUserClasses)
        return true;
    iTracer* tracer = _simulator->getTracer();
    UserClassList classes;
    if (!make_user_classes(classes))
        return false;
    if (!_simulator->setUserClassList(classes))
    {
        tracer->error("Error loading user classes");
        return false;
    }
    return true;
}

bool NewJournalFile::load_wells()
{
    iTracer* tracer = _simulator->getTracer();
    for (size_t k = 0; k < _wellFiles.size(); ++k)
    {
        const std::string& file = _wellFiles[k];
        tracer->info("Adding conditioning well " + file);
        const std::string trajectory = k < _wellTrajectories.size() ? _wellTrajectories[k] : "";
        const std::string name = k < _wellNames.size() ? _wellNames[k] : "";
        // A bad well is refused alone: the others still condition the run.
        if (!_simulator->addWellFromFile(file, trajectory, name))
            tracer->error("Error loading well: " + file);
    }
    return some_well_to_honor();
}

bool NewJournalFile::some_well_readable() const
{
    for (size_t k = 0; k < _wellFiles.size(); ++k)
    {
        Core core;
        if (core.read(_wellFiles[k], k < _wellTrajectories.size() ? _wellTrajectories[k] : ""))
            return true;
    }
    _simulator->getTracer()->error("No well file can be read as a well log: 'COND_WELL_STOP_HONORED' has no "
                                   "well to honor");
    return false;
}

// Without a well the wells are all honored at once, and the run would stop
// before its first iteration as if it had succeeded.
bool NewJournalFile::some_well_to_honor() const
{
    if (!_stopHonored)
        return true;
    CoreList wells;
    if (_simulator->getAllWells(wells) && wells.size() > 0)
        return true;
    _simulator->getTracer()->error(
        "Every conditioning well was refused: 'COND_WELL_STOP_HONORED' has no well "
        "to honor");
    return false;
}

void NewJournalFile::infer_nexus(const CoreList& cores, const std::string& what)
{
    iTracer* tracer = _simulator->getTracer();
    std::vector<double> nexus;
    std::string message;
    if (!_simulator->nexusFromWells(cores, nexus, message) || nexus.size() < 3)
    {
        tracer->warning("Cannot calculate Nexus from " + what + ": " + message);
        return;
    }
    tracer->info("Nexus automatic inference from " + what + " gives NEXUS_HMAX = " + text(nexus[0]) +
                 ", NEXUS_ISBX = " + text(nexus[1]) + ", NEXUS_SAND = " + text(nexus[2]));
}

bool NewJournalFile::load_basement()
{
    if (_basementTopo.empty())
        return true;
    iTracer* tracer = _simulator->getTracer();
    tracer->warning("BASEMENT_TOPO now deprecated. Please use NEW_TOPO & NEW_TOPO_FACIES and the value 1 for "
                    "NEW_TOPO_MODE in the first sequence");
    if (!isReadable(_basementTopo))
    {
        tracer->error("Cannot access to basement topography file: " + _basementTopo);
        return false;
    }
    if (GridReal::get_format(_basementTopo) != GRID_FORMAT_F2G)
    {
        tracer->error("Basement topography file must be F2G format: " + _basementTopo);
        return false;
    }
    Topo topo;
    if (!topo.read(_basementTopo))
    {
        tracer->error("Cannot read basement topography from input file: " + _basementTopo + "\n" +
                      journal_support::grid_reason(topo.getError()));
        return false;
    }
    const int facies = is_set(_basementFacies) ? _basementFacies : 0;
    if (!_simulator->replaceTopo(topo, SURF_ERODE_FILL, facies, false))
    {
        tracer->error("Cannot load basement topography from input file: " + _basementTopo);
        return false;
    }
    return true;
}
