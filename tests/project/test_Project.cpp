// The project store on disk: what removal and copies refuse, which projects
// open, and a project that ran three sequences, taken back to its saved
// iterations, cut, copied, damaged and replayed from its journal.

#include "gui/Project.h"

#include "RecordingDialogs.h"
#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/files/Core.h"
#include "kernel/files/GridReal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;
using testing_support::capture;
using testing_support::contains;
using testing_support::read_file;
using testing_support::RecordingDialogs;
using testing_support::TempDir;
using testing_support::write_file;

const std::string LOOK = "Look at the Message Window for more details.\n";

struct Deleter
{
    void operator()(iSimulator* sim) const { iSimulator::deleteSimulator(sim); }
};
using SimPtr = std::unique_ptr<iSimulator, Deleter>;

// A project on a fresh simulator, as the desktop makes one.
struct Session
{
    Session(const fs::path& parent, const std::string& name) : sim(iSimulator::createSimulator())
    {
        sim->getTracer()->setTraceFunction(capture);
        sim->getTracer()->setTraceLevel(TRACE_WARNING);
        project = std::make_unique<Project>(sim.get(), &dialogs, parent.string(), name);
    }
    SimPtr sim;
    RecordingDialogs dialogs;
    std::unique_ptr<Project> project;
};

// A 40 x 30 plain with frequent events, so that short sequences meet them.
void set_small_model(iParameters* p)
{
    p->setParamInt("DOMAIN_NX", 40);
    p->setParamInt("DOMAIN_NY", 30);
    p->setParamDouble("DOMAIN_DX", 10.);
    p->setParamDouble("DOMAIN_DY", 10.);
    p->setParamInt("SIM_SEED", 777);
    p->setParamInt("AV_LOC_POISSON", 25);
    p->setParamInt("AV_REG_POISSON", 30);
}

struct Sequence
{
    unsigned int iterations;
    int overbankPoisson;
};
// The sequences of the shared project; the saved iterations are 0, 30, 60, 85.
const Sequence SEQUENCES[] = {{30, 7}, {30, 4}, {25, 12}};

bool run_sequence(Session& s, const Sequence& sequence)
{
    s.sim->getParameters()->setParamInt("AG_OB_POISSON", sequence.overbankPoisson);
    return s.project->newSequence() && s.project->launch(sequence.iterations) == Project::LAUNCH_CHUNK_DONE &&
           s.project->endSequence();
}

// The block, the generator and the clocks, as bytes.
std::string state_bytes(iSimulator& sim, const fs::path& dir)
{
    static int count = 0;
    const std::string stem = (dir / ("state_" + std::to_string(count++))).string();
    EXPECT_TRUE(sim.saveDomain(stem + ".dat")) << sim.getLastMessage();
    EXPECT_TRUE(sim.saveDynamicParams(stem + ".dyn")) << sim.getLastMessage();
    const std::string bytes = read_file(stem + ".dat") + "\n--\n" + read_file(stem + ".dyn");
    // A digest keeps failure reports readable.
    return std::to_string(bytes.size()) + ":" + std::to_string(std::hash<std::string>{}(bytes));
}

std::vector<unsigned int> iterations_of(const Project& project)
{
    std::vector<unsigned int> list;
    project.getIterList(list);
    return list;
}

// A vertical log of two metres under the surface at node (20, 15).
void write_well(iSimulator& sim, const std::string& path)
{
    Core core(200., 150., sim.getDomain()->getTopoGeo(20, 15, false), "");
    core.add(2, 1.);
    core.add(9, 1.);
    ASSERT_TRUE(core.write(path, "test"));
}

// One project run once for the suite: a well whose file name holds a dot,
// iteration 0 saved without a channel, then three sequences each saved.
class SavedProject : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        _root = std::make_unique<TempDir>();
        Session s(_root->path(), "run");
        set_small_model(s.sim->getParameters());
        // As in the panels, the first sequence's values are in force at the start.
        s.sim->getParameters()->setParamInt("AG_OB_POISSON", SEQUENCES[0].overbankPoisson);
        ASSERT_TRUE(s.project->create());
        ASSERT_TRUE(s.project->initSimulator(777));
        write_well(*s.sim, _root->file("W1.v2.flw"));
        std::string copied;
        ASSERT_TRUE(s.project->addWell(_root->file("W1.v2.flw"), "", copied)) << s.dialogs.all();
        ASSERT_TRUE(s.project->save()) << s.dialogs.all();
        for (const Sequence& sequence : SEQUENCES)
        {
            ASSERT_TRUE(run_sequence(s, sequence)) << s.dialogs.all() << s.sim->getLastMessage();
            ASSERT_TRUE(s.project->save()) << s.dialogs.all();
            if (s.sim->getAge() == 30)
                _at30 = state_bytes(*s.sim, _root->path());
        }
        _final = state_bytes(*s.sim, _root->path());
        _boxes = s.dialogs.all();
    }
    static void TearDownTestSuite()
    {
        if (std::getenv("SARVO_KEEP_PROJECT") == nullptr)
            _root.reset();
        else
            _root.release();
    }

    // A copy of the shared project "run.prj" into `dir`.
    static void copy_into(const TempDir& dir)
    {
        fs::copy(_root->path() / "run.prj", dir.path() / "run.prj", fs::copy_options::recursive);
    }

    static std::unique_ptr<TempDir> _root;
    static std::string _at30;
    static std::string _final;
    static std::string _boxes;
};
std::unique_ptr<TempDir> SavedProject::_root;
std::string SavedProject::_at30;
std::string SavedProject::_final;
std::string SavedProject::_boxes;

} // namespace

TEST(ProjectFiles, RemovalStaysInsideTheProjectAndCopiesKeepTheirSources)
{
    TempDir dir;
    Session s(dir.path(), "p");
    ASSERT_TRUE(s.project->create());
    const fs::path prj = s.project->getPath();
    const fs::path outside = dir.path() / "outside";
    fs::create_directories(outside / "deep");
    write_file((outside / "deep" / "keep.txt").string(), "user data");
    fs::create_directories(prj / "iter_7" / "home");
    fs::create_directories(prj / "iter_8");
    fs::create_symlink(outside, prj / "link");
    const std::string root = "You asked remDirRF() to delete a possible root directory.\n";
    const char* home = std::getenv("HOME");
    const std::string savedHome = home != nullptr ? home : "";
    ::setenv("HOME", (prj / "iter_7" / "home").c_str(), 1);

    struct Row
    {
        std::string path;
        bool removed;
        std::string message;
    };
    const std::vector<Row> rows = {
        {"/", false, root},
        {"/tmp", false, root},
        {(prj / "iter_7" / "home").string(), false, root},
        {(prj / "iter_7").string(), false, root},
        {outside.string(), false, "Cannot remove " + outside.string() + ": it is not inside the project"},
        {(prj / ".." / "outside").string(), false,
         "Cannot remove " + (prj / ".." / "outside").string() + ": it is not inside the project"},
        {(prj / "missing").string(), false,
         (prj / "missing").string() + " does not exist.  Could not remove"},
        {(prj / "link").string(), true, ""},
        {(prj / "iter_8").string(), true, ""},
    };
    for (const Row& row : rows)
    {
        s.dialogs.boxes.clear();
        EXPECT_EQ(s.project->removeDirectory(row.path), row.removed) << row.path;
        if (!row.removed)
        {
            EXPECT_TRUE(contains(s.dialogs.all(), "[Error!] " + row.message)) << row.path << "\n"
                                                                              << s.dialogs.all();
        }
        const bool missing = contains(row.message, "does not exist");
        EXPECT_EQ(fs::exists(fs::symlink_status(row.path)), !row.removed && !missing) << row.path;
    }
    ::setenv("HOME", savedHome.c_str(), 1);
    EXPECT_EQ(read_file((outside / "deep" / "keep.txt").string()), "user data");
    EXPECT_TRUE(fs::exists(prj / "iter_7" / "home"));

    // A copy onto itself, from nowhere, or of a folder into itself.
    const std::string file = (outside / "deep" / "keep.txt").string();
    EXPECT_FALSE(s.project->copyFile(file, (outside / "deep" / ".." / "deep" / "keep.txt").string()));
    EXPECT_EQ(read_file(file), "user data");
    EXPECT_FALSE(s.project->copyFile((outside / "none.txt").string(), (prj / "none.txt").string()));
    EXPECT_FALSE(fs::exists(prj / "none.txt"));
    EXPECT_FALSE(s.project->copyDir(outside.string(), (outside / "deep" / "again").string()));
    EXPECT_FALSE(fs::exists(outside / "deep" / "again"));
    ASSERT_TRUE(s.project->copyDir(outside.string(), (prj / "copy").string()));
    EXPECT_EQ(read_file((prj / "copy" / "deep" / "keep.txt").string()), "user data");
    // The project itself may go, as a new project in its place removes it.
    EXPECT_TRUE(s.project->removeDirectory(prj.string()));
    EXPECT_FALSE(fs::exists(prj));
    EXPECT_EQ(read_file(file), "user data");

    // A folder of the user's that bears the project's name is not a project to remake.
    fs::create_directories(prj);
    write_file((prj / "notes.txt").string(), "user data");
    s.dialogs.boxes.clear();
    EXPECT_FALSE(s.project->create());
    EXPECT_TRUE(contains(s.dialogs.all(), "holds files that are not a project's")) << s.dialogs.all();
    EXPECT_EQ(read_file((prj / "notes.txt").string()), "user data");
}

TEST(ProjectVersion, TheVersionFileDecidesWhetherAProjectOpens)
{
    struct Row
    {
        std::string label;
        std::function<void(const fs::path&, const std::string&)> damage;
        std::string warning;
    };
    const std::vector<Row> rows = {
        {"as made", [](const fs::path&, const std::string&) {}, ""},
        {"no version.txt", [](const fs::path& p, const std::string&) { fs::remove(p / "version.txt"); },
         " is not a valid project (version.txt is corrupted)!"},
        {"no key",
         [](const fs::path& p, const std::string&) { write_file((p / "version.txt").string(), "other 8\n"); },
         " is not a valid project (version.txt is corrupted)!"},
        {"newer",
         [](const fs::path& p, const std::string& v)
         {
             const std::string path = (p / "version.txt").string();
             write_file(path, testing_support::replaced(read_file(path), v, "999.000"));
         },
         " has been created with a newer version!"},
        {"older",
         [](const fs::path& p, const std::string& v)
         {
             const std::string path = (p / "version.txt").string();
             write_file(path, testing_support::replaced(read_file(path), v, "1.000"));
         },
         ""},
        {"no folder", [](const fs::path& p, const std::string&) { fs::remove_all(p); },
         " is not a valid project path!"},
    };
    for (const Row& row : rows)
    {
        TempDir dir;
        Session made(dir.path(), "p");
        ASSERT_TRUE(made.project->create());
        char version[32];
        std::snprintf(version, sizeof(version), "%.3f", made.sim->getParameters()->getVersion());
        ASSERT_TRUE(contains(read_file(made.project->getPath() + "/version.txt"), version));
        row.damage(made.project->getPath(), version);
        Session s(dir.path(), "p");
        EXPECT_EQ(s.project->open(), row.warning.empty()) << row.label;
        const bool told = row.warning.empty()
                              ? s.dialogs.boxes.empty()
                              : s.dialogs.saw("Warning!", "Warning: " + s.project->getPath() + row.warning);
        EXPECT_TRUE(told) << row.label << "\n" << s.dialogs.all();
    }
}

TEST(ProjectVersion, AProjectWithoutIterationOpensAndSaysSo)
{
    TempDir dir;
    Session s(dir.path(), "");
    EXPECT_EQ(s.project->getName(), "Untitled Project");
    ASSERT_TRUE(s.project->create());
    EXPECT_TRUE(fs::is_directory(dir.path() / "Untitled Project.prj" / "flattening"));
    EXPECT_FALSE(s.project->load());
    EXPECT_TRUE(s.dialogs.saw("Warning!", "No saved iteration found in your project.")) << s.dialogs.all();
    EXPECT_FALSE(s.sim->ready(false));
}

TEST(ProjectImports, GridsAreConvertedToF2GAndUnknownFilesRefused)
{
    TempDir dir;
    Session s(dir.path(), "p");
    s.sim->getParameters()->setParamInt("DOMAIN_NX", 4);
    s.sim->getParameters()->setParamInt("DOMAIN_NY", 3);
    ASSERT_TRUE(s.project->create());
    GridReal grid(10., 10., 4, 3);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)
            grid.set_at(i, j, 0.5 * i + j);
    ASSERT_TRUE(grid.write(dir.file("surface.gslib"), nullptr, GRID_FORMAT_GSLIB, ""));
    ASSERT_TRUE(grid.write(dir.file("map.f2g"), nullptr, GRID_FORMAT_F2G, "+Y +X +Z"));
    write_file(dir.file("words.txt"), "no grid\nin here\n");
    typedef bool (Project::*Import)(const std::string&, std::string&);
    struct Row
    {
        Import import;
        std::string source;
        std::string target; // "" when refused
        std::string message;
    };
    const std::string prj = s.project->getPath();
    const std::vector<Row> rows = {
        {&Project::addTopography, "surface.gslib", prj + "/topography/surface.f2g", ""},
        {&Project::addErodibilityMap, "map.f2g", prj + "/erodibility/map.f2g", ""},
        {&Project::addTectonic, "surface.gslib", prj + "/tectonic/surface.f2g", ""},
        {&Project::addFlattening, "map.f2g", prj + "/flattening/map.f2g", ""},
        {&Project::addTopography, "words.txt", "", "Error: Unknown topo file format: "},
        {&Project::addErodibilityMap, "missing.txt", "", "Error: Unknown emap file format: "},
        {&Project::addTectonic, "words.txt", "", "Error: Unknown tecto file format: "},
        {&Project::addFlattening, "words.txt", "", "Error: Unknown flattening file format: "},
    };
    for (const Row& row : rows)
    {
        s.dialogs.boxes.clear();
        std::string result;
        EXPECT_EQ((s.project.get()->*row.import)(dir.file(row.source), result), !row.target.empty())
            << row.source;
        if (row.target.empty())
        {
            EXPECT_TRUE(s.dialogs.saw("Error!", row.message + dir.file(row.source))) << s.dialogs.all();
            continue;
        }
        EXPECT_EQ(result, row.target);
        EXPECT_EQ(GridReal::get_format(result), GRID_FORMAT_F2G) << row.source;
        GridReal back;
        ASSERT_TRUE(back.read(result)) << row.source;
        double value = 0.;
        EXPECT_TRUE(back.get_at(3, 2, value) && value == 3.5) << row.source;
    }
    // A well of no known format, and a centerline copied as it is.
    std::string result;
    EXPECT_FALSE(s.project->addWell(dir.file("words.txt"), "", result));
    EXPECT_TRUE(s.dialogs.saw("Warning!", "Warning: Wrong format or file not found: " +
                                              dir.file("words.txt") + "\nUnknown well file format"));
    EXPECT_EQ(s.project->getNbWell(), 0);
    ASSERT_TRUE(s.project->addCenterline(dir.file("words.txt"), result));
    EXPECT_EQ(read_file(prj + "/centerline/words.txt"), read_file(dir.file("words.txt")));
}

TEST_F(SavedProject, GoingBackThenRunningOnGivesTheUninterruptedBytesAndASaveCutsTheFuture)
{
    TempDir dir;
    copy_into(dir);
    Session s(dir.path(), "run");
    ASSERT_TRUE(s.project->open());
    ASSERT_TRUE(s.project->load()) << s.dialogs.all();
    EXPECT_EQ(s.project->getCurrentIter(), 85u);
    EXPECT_EQ(state_bytes(*s.sim, dir.path()), _final);

    ASSERT_TRUE(s.project->gotoIter(30)) << s.dialogs.all();
    EXPECT_EQ(state_bytes(*s.sim, dir.path()), _at30);
    ASSERT_TRUE(run_sequence(s, SEQUENCES[1]) && run_sequence(s, SEQUENCES[2])) << s.dialogs.all();
    EXPECT_EQ(state_bytes(*s.sim, dir.path()), _final);

    // Moving back deletes nothing; a save below the last cuts off the later
    // iterations and nothing else.
    const fs::path prj = s.project->getPath();
    write_file((prj / "notes.txt").string(), "mine");
    fs::create_directories(prj / "iter_old");
    ASSERT_TRUE(s.project->gotoIter(30));
    EXPECT_EQ(iterations_of(*s.project), (std::vector<unsigned int>{0, 30, 60, 85}));
    ASSERT_TRUE(run_sequence(s, {10, 7}));
    ASSERT_TRUE(s.project->save()) << s.dialogs.all();
    EXPECT_EQ(iterations_of(*s.project), (std::vector<unsigned int>{0, 30, 40}));
    EXPECT_EQ(read_file((prj / "notes.txt").string()), "mine");
    EXPECT_TRUE(fs::is_directory(prj / "iter_old"));
    EXPECT_TRUE(fs::exists(prj / "wells" / "W1.v2.flw"));
    EXPECT_TRUE(fs::exists(prj / "iter_30" / "journal_30.jnl"));
    EXPECT_TRUE(fs::exists(s.project->getJournalPath()));
    // The navigation follows the new history.
    EXPECT_FALSE(s.project->loadNext());
    ASSERT_TRUE(s.project->loadPrevious());
    EXPECT_EQ(s.project->getCurrentIter(), 30u);
    EXPECT_EQ(state_bytes(*s.sim, dir.path()), _at30);
}

TEST_F(SavedProject, EdgesOfTheHistory)
{
    // Saved without a channel: no centerline file, a warning at the save
    // and at the return, and a channel again at the next launch.
    EXPECT_TRUE(contains(_boxes, "[Warning!] No centerline saved for the current iteration")) << _boxes;
    TempDir dir;
    copy_into(dir);
    Session s(dir.path(), "run");
    ASSERT_TRUE(s.project->open());
    const fs::path prj = s.project->getPath();
    EXPECT_FALSE(fs::exists(prj / "iter_0" / "centerline.txt"));
    EXPECT_TRUE(fs::exists(prj / "iter_30" / "centerline.txt"));
    ASSERT_TRUE(s.project->gotoIter(0)) << s.dialogs.all();
    EXPECT_TRUE(s.dialogs.saw(
        "Warning!", "No centerline at this time of the simulation(will be created at next launch)"));
    EXPECT_EQ(s.sim->getChannel(), nullptr);
    EXPECT_FALSE(s.project->loadPrevious());
    ASSERT_TRUE(s.project->newSequence() && s.project->launch(5) == Project::LAUNCH_CHUNK_DONE);
    EXPECT_NE(s.sim->getChannel(), nullptr);
    // A sequence of no iteration is not written to the journal.
    ASSERT_TRUE(s.project->endSequence());
    const std::string journal = read_file(s.project->getJournalPath());
    ASSERT_TRUE(s.project->newSequence());
    EXPECT_FALSE(s.project->endSequence());
    EXPECT_TRUE(s.dialogs.saw("Error!", "Number of iteration for current sequence is negative or null!"));
    EXPECT_EQ(read_file(s.project->getJournalPath()), journal);
    // A journal with its initial record only yields no sequence.
    s.project->setInputJournal((prj / "iter_0" / "journal_0.jnl").string());
    EXPECT_FALSE(s.project->readInitFromInputJnl());
    EXPECT_EQ(s.project->getNextSequenceIterations(), 0);
    EXPECT_FALSE(s.project->isInputJournalActive());

    // The well of "W1.v2.flw" is "W1.v2" and has one file in each iteration.
    std::vector<std::string> dat;
    for (const auto& entry : fs::directory_iterator(prj / "iter_30"))
        if (entry.path().extension() == ".dat")
            dat.push_back(entry.path().filename().string());
    std::sort(dat.begin(), dat.end());
    EXPECT_EQ(dat, (std::vector<std::string>{"W1.v2.dat", "simulation.dat"}));
    ASSERT_EQ(s.project->getNbWell(), 1);
    EXPECT_EQ(s.project->getWells()[0].first, "W1.v2");

    // An old project whose folder number is not the stored age.
    fs::rename(prj / "iter_60" / "journal_60.jnl", prj / "iter_60" / "journal_61.jnl");
    fs::rename(prj / "iter_60", prj / "iter_61");
    s.dialogs.boxes.clear();
    ASSERT_TRUE(s.project->gotoIter(61)) << s.dialogs.all();
    EXPECT_TRUE(s.dialogs.saw(
        "Warning!", "Inconsistency between age and folder name iteration (old project detected).\n"));
    EXPECT_EQ(s.sim->getAge(), 61u);
    EXPECT_TRUE(s.project->loadNext());
    EXPECT_EQ(s.project->getCurrentIter(), 85u);
    EXPECT_FALSE(s.project->loadNext());
}

TEST_F(SavedProject, SaveAsCopiesTheWholeProject)
{
    TempDir dir;
    copy_into(dir);
    Session s(dir.path(), "run");
    ASSERT_TRUE(s.project->open() && s.project->load());
    EXPECT_FALSE(s.project->saveProjectAs(dir.path().string(), "run"));
    ASSERT_TRUE(s.project->saveProjectAs(dir.path().string(), "copy")) << s.dialogs.all();
    EXPECT_EQ(s.project->getPath(), (dir.path() / "copy.prj").string());
    EXPECT_TRUE(fs::exists(dir.path() / "copy.prj" / "wells" / "W1.v2.flw"));
    EXPECT_TRUE(fs::exists(dir.path() / "copy.prj" / "copy.jnl"));

    Session copy(dir.path(), "copy");
    ASSERT_TRUE(copy.project->open());
    EXPECT_EQ(iterations_of(*copy.project), (std::vector<unsigned int>{0, 30, 60, 85}));
    ASSERT_TRUE(copy.project->load()) << copy.dialogs.all();
    EXPECT_EQ(copy.project->getCurrentIter(), 85u);
    EXPECT_EQ(state_bytes(*copy.sim, dir.path()), _final);
    Session original(dir.path(), "run");
    ASSERT_TRUE(original.project->open());
    EXPECT_EQ(iterations_of(*original.project), (std::vector<unsigned int>{0, 30, 60, 85}));
}

TEST_F(SavedProject, ReplayingTheJournalInAFreshProjectGivesTheSameBlock)
{
    TempDir dir;
    copy_into(dir);
    const std::string journal = (dir.path() / "run.prj" / "iter_85" / "journal_85.jnl").string();
    Session s(dir.path(), "replay");
    ASSERT_TRUE(s.project->create());
    s.project->setInputJournal(journal);
    ASSERT_TRUE(s.project->readInitFromInputJnl()) << s.dialogs.all();
    ASSERT_TRUE(s.project->initSimulator(s.sim->getParameters()->getParamInt("SIM_SEED")));
    std::string copied;
    ASSERT_TRUE(s.project->addWell((dir.path() / "run.prj" / "wells" / "W1.v2.flw").string(), "", copied));
    ASSERT_TRUE(s.project->save());
    std::vector<int> replayed;
    while (s.project->getNextSequenceIterations() > 0)
    {
        replayed.push_back(s.project->getNextSequenceIterations());
        ASSERT_TRUE(s.project->newSequence()) << s.dialogs.all();
        ASSERT_EQ(s.project->launch(static_cast<unsigned int>(replayed.back())), Project::LAUNCH_CHUNK_DONE);
        ASSERT_TRUE(s.project->endSequence()) << s.dialogs.all();
        s.project->readSequenceFromInputJnl();
    }
    EXPECT_EQ(replayed, (std::vector<int>{30, 30, 25}));
    EXPECT_FALSE(s.project->isInputJournalActive());
    EXPECT_EQ(state_bytes(*s.sim, dir.path()), _final);
    EXPECT_EQ(read_file(s.project->getJournalPath()), read_file(journal));

    // The current journal turned into the input journal replays again.
    ASSERT_TRUE(s.project->turnCurrentJnlIntoInputJnl());
    EXPECT_FALSE(fs::exists(s.project->getJournalPath()));
    EXPECT_EQ(read_file(s.project->getInputJournalPath()), read_file(journal));
    ASSERT_TRUE(s.project->readInitFromInputJnl());
    EXPECT_EQ(s.project->getNextSequenceIterations(), 30);
}

TEST_F(SavedProject, DamagedIterationsAreToldAndLeaveTheSimulatorCleared)
{
    const std::string dynamic = "Error: The format of the Dynamic Parameters file is not correct.\n" + LOOK;
    const std::string binary = "Error: The format of the binary simulation file is not correct.\n" + LOOK;
    const std::string well =
        "Error: The format of the binary well file is not correct or binary file is absent.\n" + LOOK;
    const std::string journal = "Error: Cannot read parameters from journal file.\n" + LOOK;
    struct Row
    {
        std::string file;
        std::string content; // "" removes the file
        std::string message;
    };
    const std::vector<Row> rows = {
        {"journal_30.jnl", "", journal},
        {"journal_30.jnl", "Fluvial # Simulation\nnot a number # Seed\n", journal},
        {"current_params.txt", "", dynamic},
        {"current_params.txt", "AGE 30\n", dynamic},
        {"erodibility.txt", "", "Error: Problem when reading the erodibility map file.\n" + LOOK},
        {"erodibility.txt", "F2G_DIM 7\n", "Error: Problem when reading the erodibility map file.\n" + LOOK},
        {"simulation.dat", "", binary},
        {"simulation.dat", "short", binary},
        {"W1.v2.dat", "", well},
        {"W1.v2.dat", "short", well},
        {"centerline.txt", "nothing here\n",
         "Error: Input centerline file has a bad format or centerline is too short.\n" + LOOK},
        {"params.txt", "", "Error: Cannot initialize simulator.\n"},
    };
    for (const Row& row : rows)
    {
        TempDir dir;
        copy_into(dir);
        Session s(dir.path(), "run");
        ASSERT_TRUE(s.project->open());
        // A model is in memory before the failed return.
        ASSERT_TRUE(s.project->gotoIter(85));
        const fs::path file = fs::path(s.project->getSimuPath(30)) / row.file;
        ASSERT_TRUE(fs::exists(file)) << row.file;
        if (row.content.empty())
            fs::remove(file);
        else
            write_file(file.string(), row.content);
        s.dialogs.boxes.clear();
        EXPECT_FALSE(s.project->gotoIter(30)) << row.file << " " << row.content;
        EXPECT_TRUE(s.dialogs.saw("Error!", row.message)) << row.file << " " << row.content << "\n"
                                                          << s.dialogs.all();
        EXPECT_FALSE(s.sim->ready(false)) << row.file;
        EXPECT_EQ(s.sim->getDomain(), nullptr) << row.file;
        // The history is untouched and its other iterations still load.
        EXPECT_TRUE(s.project->gotoIter(60)) << row.file << s.dialogs.all();
    }
}
