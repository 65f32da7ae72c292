// Stopping a run, writing it to a directory and taking it up again in a new
// simulator must give exactly the block of a run that never stopped.

#include "kernel/driver/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/EMap.h"
#include "kernel/files/SnapshotFolder.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/wells/Well.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

namespace
{
namespace fs = std::filesystem;
using testing_support::read_file;
using testing_support::TempDir;

using testing_support::capture;
using testing_support::contains;
using testing_support::g_trace;

bool refuse_progress(int)
{
    return false;
}

// A small sloping fluvial plain with the default events (Poisson overbank
// floods drawn from a Gaussian law, local and regional avulsions), made
// frequent so that a short run meets all of them.
std::unique_ptr<Simulator> new_simulator(bool splays = false)
{
    auto sim = testing_support::simulator_on_grid(40, 30);
    iParameters* p = sim->getParameters();
    p->setParamDouble("DOMAIN_ZREF", 0.);
    p->setParamInt("AG_OB_POISSON", 7);
    p->setParamInt("AV_LOC_POISSON", 25);
    p->setParamInt("AV_REG_POISSON", 30);
    p->setParamBool("AV_NO_SPLAY", !splays);
    return sim;
}

std::unique_ptr<Simulator> initialised_simulator(bool splays = false)
{
    auto sim = new_simulator(splays);
    if (sim->init(false) != MP_STATUS_OK)
        return nullptr;
    Topo topo(sim->domain()->getGridParams());
    for (int j = 0; j < topo.getNy(); ++j)
        for (int i = 0; i < topo.getNx(); ++i)
            topo.set_at(i, j, 20. - 0.1 * i);
    if (!sim->replaceTopo(topo, SURF_ERODE_FILL, 8, false))
        return nullptr;
    return sim;
}

// One sequence of n iterations; false when the run does not go through.
bool sequence(Simulator& sim, unsigned int n)
{
    return sim.newSequence() == MP_STATUS_OK && sim.run(n) == MP_STATUS_OK &&
           sim.endSequence() == MP_STATUS_OK;
}

// What a batch exports at the end: the regular F2G block and the topography,
// plus the raw stacks, which also hold erodibility and pseudo-topography.
std::string exports(Simulator& sim, const std::string& dir)
{
    fs::create_directories(dir);
    double zmin = 0., zmax = 0.;
    sim.getDomain()->min_and_max_elevation_geo(zmin, zmax);
    const std::string f2g = dir + "/block.f2g";
    const std::string topo = dir + "/topo.f2g";
    EXPECT_TRUE(sim.saveSimuF2G(f2g, 0.25, true, true, true, zmin, zmax, "+Y +X +Z"));
    EXPECT_TRUE(sim.saveTopo(topo, GRID_FORMAT_F2G, "+Y +X +Z"));
    std::ostringstream stacks;
    sim.domain()->binary_output(stacks);
    return read_file(f2g) + "\n--\n" + read_file(topo) + "\n--\n" + stacks.str();
}

// A point bar under the surface at node (20, 10), which steers the channel.
bool add_steering_well(Simulator& sim)
{
    Core core(200., 250., sim.domain()->getTopoGeo(20, 25, false), "V");
    core.add(2, 2.4);
    sim.getParameters()->setCondMigWells(4);
    return sim.addWell(core, "V");
}

constexpr unsigned int FIRST = 70;
constexpr unsigned int SECOND = 90;

// Runs FIRST + SECOND iterations in one simulator, and FIRST, save, load in a
// new simulator, SECOND; both must export the same bytes.
void check_restart(bool splays, bool well = false)
{
    TempDir tmp;
    g_trace.clear();
    auto reference = initialised_simulator(splays);
    ASSERT_TRUE(reference);
    ASSERT_TRUE(!well || add_steering_well(*reference)) << reference->getLastMessage();
    ASSERT_TRUE(sequence(*reference, FIRST) && sequence(*reference, SECOND)) << reference->getLastMessage();
    // The run met the events whose state the snapshot must carry.
    EXPECT_TRUE(contains(g_trace, "Overbank Flow"));
    EXPECT_TRUE(contains(g_trace, "Levee Breaches (others)"));
    EXPECT_TRUE(contains(g_trace, "Regional Avulsion"));
    const std::string expected = exports(*reference, tmp.path().string() + "/reference");

    const std::string snapshot = tmp.path().string() + "/snap";
    {
        auto first = initialised_simulator(splays);
        ASSERT_TRUE(first);
        ASSERT_TRUE(!well || add_steering_well(*first)) << first->getLastMessage();
        ASSERT_TRUE(sequence(*first, FIRST)) << first->getLastMessage();
        ASSERT_NE(first->getChannel(), nullptr);
        ASSERT_TRUE(first->save(snapshot)) << first->getLastMessage();
    }
    for (const char* name :
         {"params.txt", "wells.txt", "simu.dat", "emap.txt", "centerline.txt", "dyparams.txt"})
        EXPECT_TRUE(fs::exists(snapshot + "/" + name)) << name;
    EXPECT_FALSE(fs::exists(snapshot + ".saving"));
    EXPECT_FALSE(fs::exists(snapshot + "/tecto.txt"));
    EXPECT_TRUE(contains(read_file(snapshot + "/wells.txt"), well ? "NB_WELLS=1" : "NB_WELLS=0"));

    // The new simulator starts from other parameters: the snapshot brings its own.
    auto resumed = std::make_unique<Simulator>();
    resumed->getTracer()->setTraceFunction(capture);
    // Expert settings are not parameters of the registry: the user gives them again.
    if (well)
        resumed->getParameters()->setCondMigWells(4);
    ASSERT_TRUE(resumed->load(snapshot)) << resumed->getLastMessage();
    EXPECT_EQ(resumed->getAge(), FIRST);
    ASSERT_NE(resumed->getChannel(), nullptr);
    ASSERT_TRUE(sequence(*resumed, SECOND)) << resumed->getLastMessage();
    EXPECT_EQ(resumed->getAge(), FIRST + SECOND);
    EXPECT_EQ(resumed->getCurrentSeed(), reference->getCurrentSeed());
    EXPECT_EQ(resumed->network()->nb_cutoffs_total(), reference->network()->nb_cutoffs_total());
    EXPECT_EQ(resumed->network()->nb_avulsions(), reference->network()->nb_avulsions());
    const std::string got = exports(*resumed, tmp.path().string() + "/resumed");
    EXPECT_TRUE(got == expected) << "the resumed run differs from the uninterrupted one";
}

TEST(Snapshot, RestartGivesTheBlockOfARunThatNeverStopped)
{
    check_restart(false);
}

TEST(Snapshot, RestartWithCrevasseSplaysGivesTheSameBlock)
{
    check_restart(true);
}

TEST(Snapshot, RestartOfAConditionedRunGivesTheSameBlock)
{
    check_restart(true, true);
}

TEST(Snapshot, LogsSharingACellComeBackOnce)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    // The second log lands at the first one's cell and is linked to it; its
    // name sorts first, as the snapshot's list of wells is in name order.
    const double top = sim->domain()->getTopoGeo(20, 25, false);
    for (const char* name : {"W2", "W1"})
    {
        Core core(200., 250., top, name);
        core.add(2, 2.4);
        ASSERT_TRUE(sim->addWell(core, name)) << sim->getLastMessage();
    }
    ASSERT_NE(sim->wells().at("W1")->parent(), nullptr);
    ASSERT_TRUE(sim->save(tmp.path().string() + "/snap")) << sim->getLastMessage();
    EXPECT_TRUE(contains(read_file(tmp.path().string() + "/snap/wells.txt"), "NB_WELLS=1"));

    auto other = new_simulator();
    ASSERT_TRUE(other->load(tmp.path().string() + "/snap")) << other->getLastMessage();
    ASSERT_EQ(other->wells().size(), 2u);
    EXPECT_EQ(other->wells().at("W2")->parent(), nullptr);
    EXPECT_EQ(other->wells().at("W1")->parent(), other->wells().at("W2"));
}

TEST(Snapshot, SnapshotWithoutChannelLoadsWithoutChannel)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    sim->setAge(12);
    ASSERT_EQ(sim->getChannel(), nullptr);
    ASSERT_TRUE(sim->save(tmp.path().string() + "/snap/")) << sim->getLastMessage();
    EXPECT_FALSE(fs::exists(tmp.path().string() + "/snap/centerline.txt"));

    auto other = new_simulator();
    ASSERT_TRUE(other->load(tmp.path().string() + "/snap")) << other->getLastMessage();
    EXPECT_EQ(other->getChannel(), nullptr);
    EXPECT_EQ(other->getAge(), 12u);
    std::ostringstream a, b;
    sim->domain()->binary_output(a);
    other->domain()->binary_output(b);
    EXPECT_TRUE(a.str() == b.str());
}

// Writes a snapshot of a short run, then hands the dynamic file's text to
// `edit` and loads the result in a new simulator.
struct EditedSnapshot
{
    TempDir tmp;
    std::string dir = tmp.path().string() + "/snap";
    std::unique_ptr<Simulator> loaded;
    bool ok = false;

    explicit EditedSnapshot(std::string (*edit)(const std::string&))
    {
        auto sim = initialised_simulator();
        if (!sim || !sequence(*sim, 20) || !sim->save(dir))
            return;
        const std::string path = dir + "/dyparams.txt";
        testing_support::write_file(path, edit(read_file(path)));
        // Signed again: what is under test is the reader, not the checksum.
        SnapshotFolder::markComplete(dir);
        loaded = new_simulator();
        g_trace.clear();
        ok = loaded->load(dir);
    }
};

std::string drop_line(const std::string& text, const std::string& key)
{
    std::istringstream in(text);
    std::string out, line;
    while (std::getline(in, line))
        if (line.rfind(key + "=", 0) != 0)
            out += line + "\n";
    return out;
}

std::string replace_value(const std::string& text, const std::string& key, const std::string& value)
{
    return drop_line(text, key) + key + "=" + value + "\n";
}

TEST(Snapshot, EachMissingOrCorruptDynamicKeyIsTold)
{
    {
        EditedSnapshot s([](const std::string& t) { return drop_line(t, "AGE"); });
        ASSERT_TRUE(s.loaded);
        EXPECT_FALSE(s.ok);
        EXPECT_EQ(s.loaded->getLastMessage(),
                  "Bad or missing value of AGE in dynamic parameters file " + s.dir + "/dyparams.txt");
        // Nothing half-loaded stays behind, and the trace says so.
        EXPECT_FALSE(s.loaded->ready(false));
        EXPECT_TRUE(contains(g_trace, "could not be loaded: the simulator has been cleared"));
    }
    {
        EditedSnapshot s([](const std::string& t) { return replace_value(t, "NB_CUTOFF", "none"); });
        EXPECT_FALSE(s.ok);
        EXPECT_TRUE(contains(s.loaded->getLastMessage(), "Bad or missing value of NB_CUTOFF"));
    }
    {
        EditedSnapshot s([](const std::string& t) { return drop_line(t, "LAV_NEXT"); });
        EXPECT_FALSE(s.ok);
        EXPECT_TRUE(contains(s.loaded->getLastMessage(), "Bad or missing value of LAV_NEXT"));
    }
    {
        EditedSnapshot s([](const std::string& t) { return drop_line(t, "SEED7"); });
        EXPECT_FALSE(s.ok);
        EXPECT_EQ(s.loaded->getLastMessage(),
                  "Cannot deserialize seeder from file " + s.dir + "/dyparams.txt");
    }
    {
        // Keys of the counters may be absent: they keep their fresh values.
        EditedSnapshot s([](const std::string& t) { return drop_line(drop_line(t, "NEXT_LAV"), "LAST_AV"); });
        EXPECT_TRUE(s.ok) << s.loaded->getLastMessage();
        EXPECT_EQ(s.loaded->getAge(), 20u);
    }
    {
        // Without EP the file comes from an old project: usable, with a warning.
        EditedSnapshot s([](const std::string& t) { return drop_line(t, "EP"); });
        EXPECT_TRUE(s.ok) << s.loaded->getLastMessage();
        EXPECT_TRUE(contains(g_trace,
                             "Old project detected (version is less than v4.200). Simulation may not "
                             "be reproducible! Don't use backward feature!"));
    }
}

TEST(Snapshot, BrokenOrMissingSnapshotsAreRefused)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    ASSERT_TRUE(sequence(*sim, 10));
    const std::string dir = tmp.path().string() + "/snap";
    ASSERT_TRUE(sim->save(dir));

    // A missing snapshot touches nothing: the simulator goes on as it was.
    EXPECT_FALSE(sim->load(tmp.path().string() + "/nowhere"));
    EXPECT_EQ(sim->getLastMessage(),
              "Cannot load snapshot: file " + tmp.path().string() + "/nowhere/params.txt is missing");
    EXPECT_TRUE(sim->ready(false));
    EXPECT_EQ(sim->getAge(), 10u);

    // A truncated block; each file is signed again so that the reader itself is tested.
    const std::string block = read_file(dir + "/simu.dat");
    testing_support::write_file(dir + "/simu.dat", block.substr(0, block.size() / 2));
    SnapshotFolder::markComplete(dir);
    auto other = new_simulator();
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(), "Cannot load simulation block from file " + dir + "/simu.dat");
    EXPECT_FALSE(other->ready(false));
    // A block with bytes left over belongs to another grid.
    testing_support::write_file(dir + "/simu.dat", block + "x");
    SnapshotFolder::markComplete(dir);
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(), "Cannot load simulation block from file " + dir + "/simu.dat");
    // A corrupt centerline.
    testing_support::write_file(dir + "/simu.dat", block);
    testing_support::write_file(dir + "/centerline.txt", "N_DIMENSIONS=3\nN_POINTS=0\n");
    SnapshotFolder::markComplete(dir);
    EXPECT_FALSE(other->load(dir));
    EXPECT_TRUE(
        contains(other->getLastMessage(), "Cannot read centerline from file " + dir + "/centerline.txt"));
    EXPECT_FALSE(other->ready(false));
    // A plain centerline, without the channel's state, is laid on the block as a new channel.
    ASSERT_NE(sim->getChannel(), nullptr);
    ASSERT_TRUE(sim->saveCenterline(dir + "/centerline.txt"));
    SnapshotFolder::markComplete(dir);
    g_trace.clear();
    EXPECT_TRUE(other->load(dir)) << other->getLastMessage();
    EXPECT_NE(other->getChannel(), nullptr);
    EXPECT_TRUE(contains(g_trace, "Load centerline"));
}

TEST(Snapshot, FailedSaveKeepsTheEarlierSnapshot)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    ASSERT_TRUE(sequence(*sim, 10));
    const std::string dir = tmp.path().string() + "/snap";
    ASSERT_TRUE(sim->save(dir));
    const std::string before = read_file(dir + "/dyparams.txt");

    ASSERT_TRUE(sequence(*sim, 5));
    // A refused progress breaks the writing of the block half-way.
    sim->getTracer()->setProgressFunction(refuse_progress);
    EXPECT_FALSE(sim->save(dir));
    EXPECT_TRUE(contains(sim->getLastMessage(), "Cannot save simulation block into file "));
    EXPECT_EQ(read_file(dir + "/dyparams.txt"), before);
    EXPECT_FALSE(fs::exists(dir + ".saving"));

    // A successful save replaces the whole snapshot.
    sim->getTracer()->setProgressFunction(nullptr);
    ASSERT_TRUE(sim->save(dir)) << sim->getLastMessage();
    EXPECT_NE(read_file(dir + "/dyparams.txt"), before);
    EXPECT_FALSE(fs::exists(dir + ".previous"));

    // Not ready: refused with a message.
    auto fresh = new_simulator();
    EXPECT_FALSE(fresh->save(tmp.path().string() + "/other"));
    EXPECT_FALSE(fs::exists(tmp.path().string() + "/other"));
}

} // namespace

namespace
{
TEST(Snapshot, TectonicAndFlatteningMapsComeBackExactly)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    const GridParams geom = sim->domain()->getGridParams();
    TectoMap tecto(geom);
    Topo flat(geom);
    for (int j = 0; j < geom.getNy(); ++j)
        for (int i = 0; i < geom.getNx(); ++i)
        {
            tecto.set_at(i, j, (i + 1) / 3.);
            flat.set_at(i, j, j / 7.);
        }
    ASSERT_TRUE(sim->loadTectoMap(tecto)) << sim->getLastMessage();
    ASSERT_TRUE(sim->loadFlattening(flat)) << sim->getLastMessage();
    const std::string dir = tmp.path().string() + "/snap";
    ASSERT_TRUE(sim->save(dir)) << sim->getLastMessage();
    EXPECT_TRUE(fs::exists(dir + "/tecto.txt"));
    EXPECT_TRUE(fs::exists(dir + "/flattening.txt"));

    auto other = new_simulator();
    ASSERT_TRUE(other->load(dir)) << other->getLastMessage();
    for (int j = 0; j < geom.getNy(); ++j)
        for (int i = 0; i < geom.getNx(); ++i)
        {
            ASSERT_EQ(other->domain()->getObject(i, j).get_tecto(),
                      sim->domain()->getObject(i, j).get_tecto());
            ASSERT_EQ(other->domain()->getTopoGeo(i, j, false), sim->domain()->getTopoGeo(i, j, false));
        }
    double a = 0., b = 0., c = 0., d = 0.;
    ASSERT_TRUE(sim->getFlatteningMinMax(a, b));
    ASSERT_TRUE(other->getFlatteningMinMax(c, d));
    EXPECT_EQ(a, c);
    EXPECT_EQ(b, d);

    // A snapshot whose exact tectonic values are cut short is refused.
    testing_support::write_file(dir + "/tecto.dat", "\x02");
    SnapshotFolder::markComplete(dir);
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(),
              "Cannot load tectonic deformation map from file " + dir + "/tecto.dat");
}
} // namespace

namespace
{
// A copy of a saved snapshot folder, to damage or rearrange.
void copy_folder(const std::string& from, const std::string& to)
{
    fs::create_directories(to);
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

TEST(Snapshot, DamagedSnapshotFilesAreRefusedByName)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    ASSERT_TRUE(sequence(*sim, 20));
    const std::string saved = tmp.path().string() + "/snap";
    ASSERT_TRUE(sim->save(saved)) << sim->getLastMessage();
    ASSERT_TRUE(fs::exists(saved + "/" + SnapshotFolder::MP_MARK_FILE));

    struct Damage
    {
        const char* file;
        double where; // fraction of the file; below 0: the file is cut to half, above 1: removed
        const char* told;
    };
    const Damage table[] = {
        {"simu.dat", 0.0, "is damaged"},     {"simu.dat", 0.01, "is damaged"},
        {"simu.dat", 0.1, "is damaged"},     {"simu.dat", 0.2, "is damaged"},
        {"simu.dat", 0.3, "is damaged"},     {"simu.dat", 0.4, "is damaged"},
        {"simu.dat", 0.5, "is damaged"},     {"simu.dat", 0.6, "is damaged"},
        {"simu.dat", 0.7, "is damaged"},     {"simu.dat", 0.8, "is damaged"},
        {"simu.dat", 0.9, "is damaged"},     {"simu.dat", 0.999, "is damaged"},
        {"dyparams.txt", 0.5, "is damaged"}, {"params.txt", 0.5, "is damaged"},
        {"emap.txt", 0.9, "is damaged"},     {"centerline.txt", -1., "does not have the size"},
        {"simu.dat", 2., "is missing"},
    };
    int row = 0;
    for (const Damage& d : table)
    {
        const std::string dir = tmp.path().string() + "/damaged" + std::to_string(row++);
        copy_folder(saved, dir);
        const std::string path = dir + "/" + d.file;
        std::string bytes = read_file(path);
        if (d.where > 1.)
            fs::remove(path);
        else if (d.where < 0.)
            testing_support::write_file(path, bytes.substr(0, bytes.size() / 2));
        else
        {
            const size_t at = static_cast<size_t>(d.where * static_cast<double>(bytes.size()));
            bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
            testing_support::write_file(path, bytes);
        }
        // Refused before anything changes: the simulator goes on as it was.
        EXPECT_FALSE(sim->load(dir)) << d.file << " at " << d.where;
        EXPECT_TRUE(contains(sim->getLastMessage(), "Snapshot file " + path + " " + d.told))
            << sim->getLastMessage();
        EXPECT_TRUE(sim->ready(false));
        EXPECT_EQ(sim->getAge(), 20u);
    }
    // A snapshot of an older version has no list of files: it still loads.
    const std::string old = tmp.path().string() + "/old";
    copy_folder(saved, old);
    fs::remove(old + "/" + SnapshotFolder::MP_MARK_FILE);
    auto other = new_simulator();
    EXPECT_TRUE(other->load(old)) << other->getLastMessage();
    EXPECT_EQ(other->getAge(), 20u);
}

// The folders a save leaves when it is killed at each of its steps: the
// loader takes the newest complete snapshot and says which.
TEST(Snapshot, InterruptedSaveIsRecovered)
{
    TempDir tmp;
    const std::string older = tmp.path().string() + "/older";
    const std::string newer = tmp.path().string() + "/newer";
    {
        auto sim = initialised_simulator();
        ASSERT_TRUE(sim);
        ASSERT_TRUE(sequence(*sim, 10) && sim->save(older));
        ASSERT_TRUE(sequence(*sim, 10) && sim->save(newer));
    }
    enum Content
    {
        NONE,
        OLDER,
        NEWER,
        HALF_NEWER // the new one before its list of files was written
    };
    struct Layout
    {
        const char* when;
        Content snap, saving, previous;
        unsigned int age; // 0: refused
        const char* used; // "" : the folder itself, without warning
    };
    const Layout table[] = {
        {"while writing the new one", OLDER, HALF_NEWER, NONE, 10, ""},
        {"after moving the old one aside", NONE, HALF_NEWER, OLDER, 10, ".previous"},
        {"between the two renames", NONE, NEWER, OLDER, 20, ".saving"},
        {"before removing the old one", NEWER, NONE, OLDER, 20, ""},
        {"with nothing complete left", NONE, HALF_NEWER, NONE, 0, ""},
        {"with its own mark never completed", HALF_NEWER, NONE, NONE, 0, ""},
    };
    int row = 0;
    for (const Layout& l : table)
    {
        const std::string snap = tmp.path().string() + "/snap" + std::to_string(row++);
        auto place = [&](Content content, const std::string& dir)
        {
            if (content == NONE)
                return;
            copy_folder(content == OLDER ? older : newer, dir);
            if (content == HALF_NEWER)
                SnapshotFolder::markIncomplete(dir);
        };
        place(l.snap, snap);
        place(l.saving, SnapshotFolder::staging(snap));
        place(l.previous, SnapshotFolder::previous(snap));
        auto sim = new_simulator();
        g_trace.clear();
        const bool loaded = sim->load(snap);
        EXPECT_EQ(loaded, l.age != 0) << l.when << ": " << sim->getLastMessage();
        if (!loaded)
            continue;
        EXPECT_EQ(sim->getAge(), l.age) << l.when;
        const std::string warning = "loading the complete snapshot in " + snap + l.used;
        EXPECT_EQ(contains(g_trace, warning), *l.used != '\0') << l.when << "\n" << g_trace;
        // The next save cleans up what the interrupted one left.
        ASSERT_TRUE(sim->save(snap)) << l.when << ": " << sim->getLastMessage();
        EXPECT_FALSE(fs::exists(SnapshotFolder::staging(snap))) << l.when;
        EXPECT_FALSE(fs::exists(SnapshotFolder::previous(snap))) << l.when;
    }
}

// A snapshot replaces only a folder that is missing, empty or a snapshot.
TEST(Snapshot, SaveNeverReplacesAFolderOfTheUser)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    ASSERT_TRUE(sequence(*sim, 5));
    struct Case
    {
        const char* what;
        const char* user_file; // relative to tmp, made before the save
        const char* target;    // relative to tmp
        bool saved;
        const char* told;
    };
    const Case table[] = {
        {"a missing folder", nullptr, "new", true, ""},
        {"an empty folder", "empty/", "empty", true, ""},
        {"the folder of the inputs", "inputs/run.bat", "inputs", false, "folder "},
        {"a folder of results", "results/block.f2g", "results/", false, "folder "},
        {"a file", "plain.txt", "plain.txt", false, " is a file, not a folder"},
        {"a user folder under the staging name", "busy.saving/keep.txt", "busy", false,
         "cannot clear folder "},
    };
    for (const Case& c : table)
    {
        const std::string user = c.user_file ? tmp.file(c.user_file) : std::string();
        if (c.user_file && user.back() == '/')
            fs::create_directories(user);
        else if (c.user_file)
        {
            fs::create_directories(fs::path(user).parent_path());
            testing_support::write_file(user, "user data\n");
        }
        const std::string target = tmp.file(c.target);
        EXPECT_EQ(sim->save(target), c.saved) << c.what << ": " << sim->getLastMessage();
        if (c.saved)
        {
            EXPECT_TRUE(fs::exists(target + "/" + SnapshotFolder::MP_MARK_FILE)) << c.what;
            // Saving over its own snapshot is allowed.
            EXPECT_TRUE(sim->save(target)) << c.what << ": " << sim->getLastMessage();
            continue;
        }
        EXPECT_TRUE(contains(sim->getLastMessage(), c.told)) << c.what << ": " << sim->getLastMessage();
        EXPECT_EQ(read_file(user), "user data\n") << c.what;
    }
}

// The snapshot's erodibility comes back: the block's own when the map beside
// it says the same, the map when the user put another one there.
TEST(Snapshot, ErodibilityMapOfTheSnapshotComesBack)
{
    TempDir tmp;
    auto sim = initialised_simulator();
    ASSERT_TRUE(sim);
    const GridParams geom = sim->domain()->getGridParams();
    EMap given(geom);
    for (int j = 0; j < geom.getNy(); ++j)
        for (int i = 0; i < geom.getNx(); ++i)
            given.set_at(i, j, 1. + (i % 7) + 0.5 * j);
    ASSERT_TRUE(sim->loadEMap(given, false)) << sim->getLastMessage();
    ASSERT_TRUE(sequence(*sim, 10));
    const std::string dir = tmp.path().string() + "/snap";
    ASSERT_TRUE(sim->save(dir)) << sim->getLastMessage();
    EMap saved;
    ASSERT_TRUE(sim->getEMap(saved));

    // The user's map: half the erodibility, in a snapshot of an older version.
    EMap edited(saved);
    for (int j = 0; j < geom.getNy(); ++j)
        for (int i = 0; i < geom.getNx(); ++i)
        {
            double v = 0.;
            saved.get_at(i, j, v);
            edited.set_at(i, j, v / 2.);
        }
    const std::string old = tmp.path().string() + "/old";
    copy_folder(dir, old);
    fs::remove(old + "/" + SnapshotFolder::MP_MARK_FILE);
    ASSERT_TRUE(edited.write(old + "/emap.txt", nullptr, GRID_FORMAT_F2G, "+Y +X +Z"));

    struct Case
    {
        std::string dir;
        const EMap* expected;
        double tolerance;
    };
    const Case table[] = {{dir, &saved, 0.}, {old, &edited, 1e-5}};
    for (const Case& c : table)
    {
        auto other = new_simulator();
        ASSERT_TRUE(other->load(c.dir)) << other->getLastMessage();
        EMap got;
        ASSERT_TRUE(other->getEMap(got));
        for (int j = 0; j < geom.getNy(); ++j)
            for (int i = 0; i < geom.getNx(); ++i)
            {
                double want = 0., have = 0.;
                c.expected->get_at(i, j, want);
                got.get_at(i, j, have);
                ASSERT_NEAR(have, want, c.tolerance * want) << c.dir << " at " << i << ", " << j;
            }
    }
}
} // namespace
