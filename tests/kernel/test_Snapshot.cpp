// Stopping a run, writing it to a directory and taking it up again in a new
// simulator must give exactly the block of a run that never stopped.

#include "kernel/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/Core.h"
#include "kernel/Domain.h"
#include "kernel/Network.h"
#include "kernel/Parameters.h"
#include "kernel/TectoMap.h"
#include "kernel/Topo.h"
#include "kernel/Tracer.h"
#include "kernel/Well.h"

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

    // A truncated block.
    const std::string block = read_file(dir + "/simu.dat");
    testing_support::write_file(dir + "/simu.dat", block.substr(0, block.size() / 2));
    auto other = new_simulator();
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(), "Cannot load simulation block from file " + dir + "/simu.dat");
    EXPECT_FALSE(other->ready(false));
    // A block with bytes left over belongs to another grid.
    testing_support::write_file(dir + "/simu.dat", block + "x");
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(), "Cannot load simulation block from file " + dir + "/simu.dat");
    // A corrupt centerline.
    testing_support::write_file(dir + "/simu.dat", block);
    testing_support::write_file(dir + "/centerline.txt", "N_DIMENSIONS=3\nN_POINTS=0\n");
    EXPECT_FALSE(other->load(dir));
    EXPECT_TRUE(
        contains(other->getLastMessage(), "Cannot read centerline from file " + dir + "/centerline.txt"));
    EXPECT_FALSE(other->ready(false));
    // A plain centerline, without the channel's state, is laid on the block as a new channel.
    ASSERT_NE(sim->getChannel(), nullptr);
    ASSERT_TRUE(sim->saveCenterline(dir + "/centerline.txt"));
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
    EXPECT_FALSE(other->load(dir));
    EXPECT_EQ(other->getLastMessage(),
              "Cannot load tectonic deformation map from file " + dir + "/tecto.dat");
}
} // namespace
