// The history of a project: one directory per saved iteration, written and
// read back through the simulator's own snapshot, which restarts a run
// exactly. The directory names three of the snapshot's files as users know
// them; loading links them back under the snapshot's names.

#include "gui/Project.h"

#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/files/EMap.h"
#include "kernel/files/InDataFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace
{
const char* const HISTORY_LOOK = "Look at the Message Window for more details.\n";

// The iteration directory's names and the snapshot's.
const std::pair<const char*, const char*> RENAMED[] = {
    {"erodibility.txt", "emap.txt"},
    {"simulation.dat", "simu.dat"},
    {"current_params.txt", "dyparams.txt"},
};

const char* const PARAMS_FILE = "params.txt";
const char* const WELLS_FILE = "wells.txt";
const char* const STAGING = "/.loading";

std::string journal_name(unsigned int iteration)
{
    return "journal_" + std::to_string(iteration) + ".jnl";
}

bool has_file(const std::string& path)
{
    std::error_code ec;
    return fs::is_regular_file(path, ec);
}

bool mentions(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

// The wells a snapshot lists; false when the list is unreadable.
bool listed_wells(const std::string& dir, std::vector<std::string>& names)
{
    names.clear();
    if (!has_file(dir + "/" + WELLS_FILE))
        return true;
    InDataFile file(dir + "/" + WELLS_FILE);
    int count = 0;
    if (!file.is_open() || !file.get_key_value("NB_WELLS", count) || count < 0)
        return false;
    // The snapshot numbers its wells from 1.
    for (int i = 1; i <= count; ++i)
    {
        std::string name;
        if (!file.get_key_value("WELL_" + std::to_string(i), name))
            return false;
        names.push_back(name);
    }
    return true;
}

} // namespace

// ---------------------------------------------------------------------------
// Saving

bool Project::save()
{
    if (_simulator == nullptr || !_simulator->ready(false))
        return error("Cannot save the slice in " + _path + ": no simulation to save");
    if (!remove_later_iterations())
        return false;
    const unsigned int age = _simulator->getAge();
    const std::string dir = getSimuPath(age);
    if (!write_iteration(dir))
        return false;
    std::error_code ec;
    if (!fs::exists(getJournalPath(), ec) && !saveInitSequenceInCurrentJnl())
        return error("Cannot save the slice in " + dir);
    debug("   Saving the Journal File " + journal_name(age));
    debug("   Copy the Journal File from " + getJournalPath() + " to " + dir + "/" + journal_name(age));
    if (!copyFile(getJournalPath(), dir + "/" + journal_name(age)))
        return error("Cannot save the slice in " + dir);
    _currentIter = age;
    return updateVersionFile();
}

bool Project::remove_later_iterations()
{
    std::vector<unsigned int> list;
    getIterList(list);
    std::vector<unsigned int> later;
    for (unsigned int iteration : list)
        if (iteration > _currentIter)
            later.push_back(iteration);
    if (later.empty())
        return true;
    iTracer* t = tracer();
    t->progress(-static_cast<int>(later.size()));
    for (unsigned int iteration : later)
    {
        if (!removeDirectory(getSimuPath(iteration)))
            return false;
        if (!t->progress(1))
            return error("Save stopped: the iterations above " + std::to_string(_currentIter) +
                         " were not all removed");
    }
    return true;
}

bool Project::write_iteration(const std::string& dir)
{
    debug("   Saving the Erodibility Map erodibility.txt");
    debug("   Saving the Simulation simulation.dat");
    debug("   Saving the Dynamic Parameters current_params.txt");
    for (const auto& well : _wells)
        debug("   Saving the Well " + well.first + ".dat");
    const bool channel = _simulator->getChannel() != nullptr;
    if (channel)
        debug("   Saving the Centerline centerline.txt");
    if (!_simulator->save(dir))
        return error("Cannot save the slice in " + dir + "\n" + _simulator->getLastMessage());
    for (const auto& names : RENAMED)
    {
        std::error_code ec;
        fs::rename(dir + "/" + names.second, dir + "/" + names.first, ec);
        if (ec)
            return error("Cannot save the slice in " + dir + "/" + names.first);
    }
    if (!channel)
    {
        warning("No centerline saved for the current iteration");
        _lastMessage.clear();
    }
    return true;
}

// ---------------------------------------------------------------------------
// Going back to an iteration

bool Project::goto_failed(const std::string& text)
{
    error(text);
    // Never half-loaded: whatever got in goes out again.
    if (_simulator != nullptr)
        _simulator->clear();
    return false;
}

bool Project::gotoIter(unsigned int iteration)
{
    const std::string dir = getSimuPath(iteration);
    int iterations = 0;
    if (!loadAllSequenceFromJnl(dir + "/" + journal_name(iteration), iterations))
        return goto_failed(std::string("Error: Cannot read parameters from journal file.\n") + HISTORY_LOOK);
    if (!clearSimulator())
        return false;
    if (!check_iteration(dir) || !load_iteration(dir))
        return false;
    if (_simulator->getAge() != iteration)
    {
        warning("Inconsistency between age and folder name iteration (old project detected).\n");
        _simulator->setAge(iteration);
    }
    if (_zul.path.empty() ? false : !loadZul())
        return goto_failed(std::string("Error: Problem when reading the upper limit file.\n") + HISTORY_LOOK);
    if (_simulator->getChannel() == nullptr)
        warning("No centerline at this time of the simulation(will be created at next launch)");
    std::error_code ec;
    if (fs::exists(getJournalPath(), ec))
        copyFile(getJournalPath(), getJournalBackupPath());
    if (!copyFile(dir + "/" + journal_name(iteration), getJournalPath()))
        return goto_failed(std::string("Error: Cannot read parameters from journal file.\n") + HISTORY_LOOK);
    _currentIter = iteration;
    _sequenceStartAge = iteration;
    _lastMessage.clear();
    return true;
}

// Each file the load needs, in the order of the load, so that a damaged
// directory is told by its first bad file and nothing is read from it.
bool Project::check_iteration(const std::string& dir)
{
    const std::string dynamic = dir + "/current_params.txt";
    InDataFile dynamicFile(dynamic);
    unsigned int age = 0;
    if (!dynamicFile.is_open() || !dynamicFile.get_key_value("AGE", age))
        return goto_failed(std::string("Error: The format of the Dynamic Parameters file is not correct.\n") +
                           HISTORY_LOOK);
    EMap map;
    if (!map.read(dir + "/erodibility.txt"))
        return goto_failed(std::string("Error: Problem when reading the erodibility map file.\n") +
                           HISTORY_LOOK);
    if (!has_file(dir + "/simulation.dat"))
        return goto_failed(std::string("Error: The format of the binary simulation file is not correct.\n") +
                           HISTORY_LOOK);
    std::vector<std::string> wells;
    bool wellsGood = listed_wells(dir, wells);
    for (const std::string& name : wells)
        wellsGood = wellsGood && has_file(dir + "/" + name + ".dat");
    if (!wellsGood)
        return goto_failed(
            std::string(
                "Error: The format of the binary well file is not correct or binary file is absent.\n") +
            HISTORY_LOOK);
    if (!has_file(dir + "/" + PARAMS_FILE))
        return goto_failed("Error: Cannot initialize simulator.\n");
    return true;
}

bool Project::load_iteration(const std::string& dir)
{
    const std::string staging = _path + STAGING;
    std::error_code ec;
    fs::remove_all(staging, ec);
    fs::create_directories(staging, ec);
    bool good = !ec;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir, ec))
    {
        if (!good || !entry.is_regular_file(ec))
            continue;
        std::string name = entry.path().filename().string();
        for (const auto& names : RENAMED)
            if (name == names.first)
                name = names.second;
        // A link costs nothing; a copy serves file systems without links.
        std::error_code linkError;
        fs::create_hard_link(entry.path(), staging + "/" + name, linkError);
        if (linkError)
            good = copyFile(entry.path().string(), staging + "/" + name);
    }
    good = good && _simulator->load(staging);
    fs::remove_all(staging, ec);
    if (good)
        return true;
    return goto_failed(load_failure_message());
}

// The user's message for the simulator's reason of a failed load.
std::string Project::load_failure_message() const
{
    const std::string& reason = _simulator->getLastMessage();
    // A file refused by its checksum is told by the file it is.
    if (mentions(reason, "Snapshot file"))
    {
        if (mentions(reason, "/simu.dat"))
            return std::string("Error: The format of the binary simulation file is not correct.\n") +
                   HISTORY_LOOK;
        if (mentions(reason, "/dyparams.txt"))
            return std::string("Error: The format of the Dynamic Parameters file is not correct.\n") +
                   HISTORY_LOOK;
        if (mentions(reason, "/emap.txt"))
            return std::string("Error: Problem when reading the erodibility map file.\n") + HISTORY_LOOK;
        if (mentions(reason, "/centerline.txt"))
            return std::string(
                       "Error: Input centerline file has a bad format or centerline is too short.\n") +
                   HISTORY_LOOK;
        if (mentions(reason, ".dat"))
            return std::string("Error: The format of the binary well file is not correct or binary file is "
                               "absent.\n") +
                   HISTORY_LOOK;
    }
    if (mentions(reason, "dynamic parameters") || mentions(reason, "seeder") ||
        mentions(reason, "distribution"))
        return std::string("Error: The format of the Dynamic Parameters file is not correct.\n") +
               HISTORY_LOOK;
    if (mentions(reason, "simulation block"))
        return std::string("Error: The format of the binary simulation file is not correct.\n") +
               HISTORY_LOOK;
    if (mentions(reason, "well"))
        return std::string(
                   "Error: The format of the binary well file is not correct or binary file is absent.\n") +
               HISTORY_LOOK;
    if (mentions(reason, "centerline") || mentions(reason, "channel"))
        return std::string("Error: Input centerline file has a bad format or centerline is too short.\n") +
               HISTORY_LOOK;
    return "Error: Cannot initialize simulator.\n";
}

bool Project::loadPrevious()
{
    std::vector<unsigned int> list;
    getIterList(list);
    for (auto it = list.rbegin(); it != list.rend(); ++it)
        if (*it < _currentIter)
        {
            debug("   Loading previous sequence in " + getSimuPath(*it));
            return gotoIter(*it);
        }
    return false;
}

bool Project::loadNext()
{
    std::vector<unsigned int> list;
    getIterList(list);
    for (unsigned int iteration : list)
        if (iteration > _currentIter)
        {
            debug("   Loading next sequence in " + getSimuPath(iteration));
            return gotoIter(iteration);
        }
    return false;
}
