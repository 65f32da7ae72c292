// The project's paths, its messages and its lifecycle: creation, opening,
// versions, save as, and the simulator it drives.

#include "gui/Project.h"

#include "gui/iProjectDialogs.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
const char* const VERSION_FILE = "/version.txt";
const char* const VERSION_KEY = "sarvo";
// In the order `create` makes them and `saveProjectAs` copies them.
const char* const DATA_DIRECTORIES[] = {"wells",    "erodibility", "topography",
                                        "tectonic", "flattening",  "centerline"};
const char* const LOOK = "Look at the Message Window for more details.\n";
} // namespace

Project::Project(iSimulator* simulator, iProjectDialogs* dialogs, const std::string& parent,
                 const std::string& name)
    : _simulator(simulator), _dialogs(dialogs)
{
    if (_simulator != nullptr)
        _groups = std::make_unique<ParameterGroupList>(_simulator->getParameters());
    set_location(parent, name);
}

Project::~Project() = default;

void Project::set_location(const std::string& parent, const std::string& name)
{
    _parent = parent;
    _name = name;
    _path = parent + "/" + getName() + ".prj";
    _inputJournalPath = _path + "/" + getName() + "_input.jnl";
}

std::string Project::getName() const
{
    return _name.empty() ? std::string("Untitled Project") : _name;
}

std::string Project::getJournalPath() const
{
    return _path + "/" + getName() + ".jnl";
}

std::string Project::getJournalBackupPath() const
{
    return _path + "/" + getName() + "_bck.jnl";
}

std::string Project::getSimuPath(unsigned int iteration) const
{
    return _path + "/iter_" + std::to_string(iteration);
}

// ---------------------------------------------------------------------------
// Messages: the detail goes to the trace, the text to a box.

iTracer* Project::tracer() const
{
    return _simulator != nullptr ? _simulator->getTracer() : nullptr;
}

void Project::debug(const std::string& text) const
{
    iTracer* t = tracer();
    if (t != nullptr && t->traceLevel(TRACE_DEBUG))
        t->trace(text, TRACE_DEBUG);
}

bool Project::error(const std::string& text)
{
    _lastMessage = text;
    if (tracer() != nullptr)
        tracer()->trace(text, TRACE_ERROR);
    if (_dialogs != nullptr)
        _dialogs->showMessage("Error!", text);
    return false;
}

bool Project::warning(const std::string& text)
{
    _lastMessage = text;
    if (tracer() != nullptr)
        tracer()->trace(text, TRACE_WARNING);
    if (_dialogs != nullptr)
        _dialogs->showMessage("Warning!", text);
    return false;
}

// ---------------------------------------------------------------------------
// Lifecycle

bool Project::create()
{
    std::error_code ec;
    // Only a project, or an empty folder, is made anew: a folder of the user's
    // that happens to bear the project's name is left as it is.
    if (fs::exists(_path, ec) && !fs::is_empty(_path, ec) && !fs::exists(_path + VERSION_FILE, ec))
        return error("Unable to create project : " + _path + " holds files that are not a project's");
    if (fs::exists(_path, ec) && !removeDirectory(_path))
        return false;
    if (!fs::create_directories(_path, ec))
        return error("Unable to create project : " + _path);
    if (!updateVersionFile())
        return false;
    for (const char* name : DATA_DIRECTORIES)
        if (!fs::create_directories(_path + "/" + name, ec))
            return error("Unable to create project : " + _path + "/" + name);
    return open();
}

bool Project::updateVersionFile()
{
    OutDataFile file(_path + VERSION_FILE);
    if (!file.is_open())
        return error("Cannot write the version file " + _path + VERSION_FILE);
    file.key_value(VERSION_KEY, _simulator->getParameters()->getVersion(), 3);
    file.close();
    return !file.fail() || error("Cannot write the version file " + _path + VERSION_FILE);
}

bool Project::check_version(const std::string& path)
{
    std::error_code ec;
    if (!fs::is_directory(path, ec))
        return warning("Warning: " + path + " is not a valid project path!");
    InDataFile file(path + VERSION_FILE);
    double version = 0.;
    if (!file.is_open() || !file.get_key_value(VERSION_KEY, version))
        return warning("Warning: " + path + " is not a valid project (version.txt is corrupted)!");
    // The file keeps three decimals of the running version.
    if (version > _simulator->getParameters()->getVersion() + 0.0005)
        return warning("Warning: " + path + " has been created with a newer version!");
    return true;
}

bool Project::open()
{
    if (!check_version(_path))
        return false;
    if (iTracer* t = tracer())
    {
        t->setStatsFile(getStatsPath());
        t->setCenterlineStatsFile(getCenterlineStatsPath());
        t->setGrainsizeStatsFile(getGrainsizeStatsPath());
    }
    _currentIter = 0;
    return scan_wells();
}

bool Project::load()
{
    std::vector<unsigned int> list;
    getIterList(list);
    if (list.empty())
        return warning("No saved iteration found in your project.");
    return gotoIter(list.back());
}

bool Project::saveProjectAs(const std::string& parent, const std::string& name)
{
    debug("   Save the project as " + parent + "/" + name + ".prj");
    const std::string source = _path;
    const std::string sourceJournal = getJournalPath();
    const std::string target = fs::absolute(parent + "/" + name + ".prj").lexically_normal().string();
    const std::string here = fs::absolute(source).lexically_normal().string();
    const auto within = [](const std::string& inner, const std::string& outer)
    { return inner == outer || inner.rfind(outer + "/", 0) == 0; };
    if (within(target, here) || within(here, target))
        return error("Cannot save the project " + source + " as " + target +
                     ": one would hold the other. Choose another name.");
    std::vector<unsigned int> iterations;
    getIterList(iterations);
    const std::string oldParent = _parent;
    const std::string oldName = _name;
    const unsigned int current = _currentIter;
    set_location(parent, name);
    bool good = create();
    for (const char* dir : DATA_DIRECTORIES)
        good = good && copyDir(source + "/" + dir, _path + "/" + dir);
    for (unsigned int iteration : iterations)
        good = good && copyDir(source + "/iter_" + std::to_string(iteration), getSimuPath(iteration));
    std::error_code ec;
    if (good && fs::exists(sourceJournal, ec))
        good = copyFile(sourceJournal, getJournalPath());
    if (!good)
    {
        set_location(oldParent, oldName);
        _currentIter = current;
        return false;
    }
    _currentIter = current;
    return scan_wells();
}

void Project::reset()
{
    clearSimulator();
    _currentIter = 0;
    _sequenceStartAge = 0;
    _sequenceCount = 0;
    _nextSequenceIterations = 0;
    _inputsChanged = false;
}

void Project::resetDefaultParameters()
{
    _simulator->getParameters()->reset(false);
}

bool Project::clearSimulator()
{
    if (_simulator == nullptr || !_simulator->clear())
        return error("Problem encountered during simulator clear");
    return true;
}

bool Project::initSimulator(int seed)
{
    if (_simulator == nullptr)
        return error("Simulator not created.");
    _simulator->getParameters()->setParamInt("SIM_SEED", seed);
    if (_simulator->init(false) != MP_STATUS_OK)
        return error("Problem encountered during simulator initialization");
    _sequenceStartAge = _simulator->getAge();
    return loadAllWells();
}

bool Project::domainChanged() const
{
    const iDomain* domain = _simulator->getDomain();
    if (domain == nullptr)
        return true;
    const iParameters* p = _simulator->getParameters();
    const GridParams& grid = domain->getGridParams();
    return grid.getNx() != p->getParamInt("DOMAIN_NX") || grid.getNy() != p->getParamInt("DOMAIN_NY") ||
           grid.getDx() != p->getParamDouble("DOMAIN_DX") || grid.getDy() != p->getParamDouble("DOMAIN_DY");
}

// ---------------------------------------------------------------------------
// Run

int Project::launch(unsigned int iterations)
{
    if (_simulator == nullptr)
    {
        error("Simulator not created.");
        return LAUNCH_FAILED;
    }
    if (!apply_launch_replacements())
        return LAUNCH_FAILED;
    const int status = _simulator->run(iterations);
    switch (status)
    {
    case MP_STATUS_OK:
        return LAUNCH_CHUNK_DONE;
    case MP_STATUS_UPPER_LIMIT:
    case MP_STATUS_WELLS_HONORED:
        return LAUNCH_RUN_ENDED;
    case MP_STATUS_USER_STOP:
        return LAUNCH_STOPPED;
    default:
        if (_simulator->getLastMessage().empty())
            error(std::string("Cannot run simulator!\n") + LOOK);
        else
            error("Cannot run simulator:\n" + _simulator->getLastMessage());
        return LAUNCH_FAILED;
    }
}

bool Project::launch_batch(const std::string& path)
{
    const int status = _simulator->launchBatch(path);
    if (status == 1)
        return error("Error: Cannot load the batch file!");
    if (status != 0)
        return error("Error: Cannot execute batch file!");
    return true;
}

void Project::replaceTopographyAtLaunch(const std::string& path, int mode, int facies)
{
    _replacements.topoPath = path;
    _replacements.topoConstant = false;
    _replacements.topoMode = mode;
    _replacements.topoFacies = facies;
    _replacements.topoPending = true;
}

void Project::replaceTopographyByConstantAtLaunch(double value, int mode, int facies)
{
    _replacements.topoConstant = true;
    _replacements.topoValue = value;
    _replacements.topoMode = mode;
    _replacements.topoFacies = facies;
    _replacements.topoPending = true;
}

void Project::replaceCenterlineAtLaunch(const std::string& path)
{
    _replacements.centerlinePath = path;
    _replacements.centerlinePoint = false;
    _replacements.centerlinePending = true;
}

void Project::replaceCenterlineFromPointAtLaunch(const Point2D& point)
{
    _replacements.centerlinePoint = true;
    _replacements.pointX = point.get_abscissa();
    _replacements.pointY = point.get_ordinate();
    _replacements.centerlinePending = true;
}

bool Project::apply_launch_replacements()
{
    // Each replacement is asked once: a failed one is not tried again.
    LaunchReplacements asked = _replacements;
    _replacements.topoPending = false;
    _replacements.centerlinePending = false;
    if (asked.topoPending && asked.topoConstant &&
        !_simulator->replaceTopoFromCst(asked.topoValue, asked.topoMode, asked.topoFacies, true))
        return error(std::string("Cannot replace topography by a constant.\n") + LOOK);
    if (asked.topoPending && !asked.topoConstant &&
        !_simulator->replaceTopoFromFile(asked.topoPath, asked.topoMode, asked.topoFacies, true))
        return error("Cannot replace topography by file: " + asked.topoPath);
    if (asked.centerlinePending && !asked.centerlinePoint &&
        !_simulator->replaceCenterlineFromFile(asked.centerlinePath, true))
        return error("Cannot replace centerline by file: " + asked.centerlinePath);
    const Point2D point(asked.pointX, asked.pointY);
    if (asked.centerlinePending && asked.centerlinePoint &&
        !_simulator->replaceCenterlineFromPoint(point, true))
        return error("Cannot replace centerline from point: " + point.debug());
    return true;
}
