// The pieces of a snapshot one by one, and the actions that change the model
// between two sequences.

#include "kernel/driver/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Topo.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/TimeProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

using testing_support::capture;
using testing_support::contains;
using testing_support::g_trace;

std::unique_ptr<Simulator> small_simulator(bool initialise = true)
{
    auto sim = testing_support::simulator_on_grid(30, 20);
    iParameters* p = sim->getParameters();
    p->setParamInt("AG_OB_POISSON", 5);
    // A level that has no short decimal form.
    p->setParamDouble("AG_EP_INIT_ELEV", 1. / 3.);
    if (initialise && sim->init(false) != MP_STATUS_OK)
        return nullptr;
    return sim;
}

unsigned int next_age(const TimeProcess* process)
{
    const auto* discrete = dynamic_cast<const DiscreteTimeProcess*>(process);
    return discrete != nullptr ? discrete->getNextAge() : 0u;
}

std::vector<std::string> keys_of(const std::string& text)
{
    std::vector<std::string> keys;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        if (line.find('=') != std::string::npos)
            keys.push_back(line.substr(0, line.find('=')));
    return keys;
}

TEST(SimulatorState, DynamicParametersKeepTheirOrderAndComeBackExactly)
{
    TempDir tmp;
    auto sim = small_simulator();
    ASSERT_TRUE(sim);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    sim->setAge(41);
    sim->network()->set_counters(3, 1, 2, 4, 9);
    sim->network()->last_flood_iter(38);
    sim->network()->last_avulsion_iter(17);
    sim->network()->set_first_cutoff(11, 0.1, 1.1, 1.2, 1.3, 375.5, 0.7);
    const std::string path = tmp.file("dyparams.txt");
    ASSERT_TRUE(sim->saveDynamicParams(path)) << sim->getLastMessage();
    EXPECT_TRUE(contains(g_trace, "Save dynamic parameters"));

    const std::vector<std::string> keys = keys_of(read_file(path));
    std::vector<std::string> expected = {"SEED", "SHSEED"};
    for (int i = 0; i < 32; ++i)
        expected.push_back("SEED" + std::to_string(i));
    for (const char* key : {"AGE",
                            "EP",
                            "EP_INIT",
                            "EP_NEXT",
                            "AGG_INIT",
                            "AGG_NEXT",
                            "LAV_INIT",
                            "LAV_NEXT",
                            "RAV_INIT",
                            "RAV_NEXT",
                            "STATS_INIT",
                            "STATS_NEXT",
                            "NEXT_LAV",
                            "NEXT_RAV",
                            "LAST_OB",
                            "NB_CUTOFF",
                            "NB_CHUTECUTOFF",
                            "NB_AVULSION",
                            "NB_CUTOFF_AVULS",
                            "NB_CUTOFF_SUM",
                            "TAU_CUT_AGE",
                            "TAU_CUT_VALUE",
                            "TAU_CUT_SINUO",
                            "TAU_CUT_SINUO_A",
                            "TAU_CUT_TORTUO",
                            "TAU_CUT_WAVELENGTH",
                            "TAU_CUT_MEAN_SBEXT",
                            "LAST_AV"})
        expected.push_back(key);
    ASSERT_GE(keys.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(keys.begin(), keys.begin() + static_cast<long>(expected.size())),
              expected);

    auto other = small_simulator();
    ASSERT_TRUE(other);
    // The other generator stands elsewhere in its stream.
    other->getParameters()->setParamInt("SIM_SEED", 777);
    ASSERT_EQ(other->newSequence(), MP_STATUS_OK);
    ASSERT_TRUE(other->loadDynamicParams(path)) << other->getLastMessage();
    EXPECT_EQ(other->getAge(), 41u);
    EXPECT_EQ(other->getCurrentSeed(), sim->getCurrentSeed());
    EXPECT_EQ(other->getCurrentEP(), 1. / 3.);
    EXPECT_EQ(next_age(other->overbankProcess()), next_age(sim->overbankProcess()));
    EXPECT_EQ(next_age(other->regionalAvulsionProcess()), next_age(sim->regionalAvulsionProcess()));
    EXPECT_EQ(other->getNextLocalAllowed(), sim->getNextLocalAllowed());
    EXPECT_EQ(other->network()->nb_cutoffs(), 3u);
    EXPECT_EQ(other->network()->nb_chute_cutoffs(), 1u);
    EXPECT_EQ(other->network()->nb_avulsions(), 2u);
    EXPECT_EQ(other->network()->nb_cutoffs_avuls(), 4u);
    EXPECT_EQ(other->network()->nb_cutoffs_total(), 9u);
    EXPECT_EQ(other->network()->last_flood_iter(), 38u);
    EXPECT_EQ(other->network()->last_avulsion_iter(), 17u);
    EXPECT_EQ(other->network()->first_cutoff_iter(), 11u);
    EXPECT_EQ(other->network()->first_cutoff_time(), 0.1);
    EXPECT_EQ(other->network()->first_cutoff_wavelength(), 375.5);
    // Written again, the state reads the same, generator table included.
    ASSERT_TRUE(other->saveDynamicParams(tmp.file("again.txt")));
    EXPECT_EQ(read_file(tmp.file("again.txt")), read_file(path));
}

TEST(SimulatorState, BadDynamicFileLeavesTheModelAsItWas)
{
    TempDir tmp;
    auto sim = small_simulator();
    ASSERT_TRUE(sim);
    sim->setAge(5);
    const int seed = sim->getCurrentSeed();

    EXPECT_FALSE(sim->loadDynamicParams(tmp.file("missing.txt")));
    EXPECT_EQ(sim->getLastMessage(), "Cannot load dynamic parameters from file " + tmp.file("missing.txt"));

    ASSERT_TRUE(sim->saveDynamicParams(tmp.file("d.txt")));
    const std::string good = read_file(tmp.file("d.txt"));
    const std::string no_age =
        good.substr(0, good.find("AGE=")) + good.substr(good.find("\n", good.find("AGE=")) + 1);
    write_file(tmp.file("bad.txt"), no_age + "NB_AVULSION=many\n");
    sim->setAge(9);
    EXPECT_FALSE(sim->loadDynamicParams(tmp.file("bad.txt")));
    EXPECT_EQ(sim->getLastMessage(),
              "Bad or missing value of AGE in dynamic parameters file " + tmp.file("bad.txt"));
    EXPECT_EQ(sim->getAge(), 9u);
    EXPECT_EQ(sim->getCurrentSeed(), seed);

    write_file(tmp.file("bad.txt"), good + "NB_AVULSION=many\n");
    // The first occurrence of a key counts.
    EXPECT_TRUE(sim->loadDynamicParams(tmp.file("bad.txt")));
    write_file(tmp.file("bad.txt"), "NB_AVULSION=many\n" + good);
    EXPECT_FALSE(sim->loadDynamicParams(tmp.file("bad.txt")));
    EXPECT_TRUE(contains(sim->getLastMessage(), "Bad or missing value of NB_AVULSION"));

    EXPECT_FALSE(sim->saveDynamicParams(tmp.file("no/such/dir/d.txt")));
    EXPECT_EQ(sim->getLastMessage(),
              "Cannot save dynamic parameters into file " + tmp.file("no/such/dir/d.txt"));
}

TEST(SimulatorState, BlockAndWellsFiles)
{
    TempDir tmp;
    auto idle = small_simulator(false);
    EXPECT_FALSE(idle->saveDomain(tmp.file("simu.dat")));
    EXPECT_FALSE(idle->loadDynamicParams(tmp.file("simu.dat")));
    EXPECT_TRUE(contains(g_trace, "Simulator not ready (call init method first)"));

    auto sim = small_simulator();
    ASSERT_TRUE(sim);
    ASSERT_TRUE(sim->replaceTopoFromCst(12.5, SURF_ERODE_FILL, 8, false));
    ASSERT_TRUE(sim->saveDomain(tmp.file("simu.dat")));
    EXPECT_TRUE(contains(g_trace, "Save simulation block"));
    EXPECT_FALSE(sim->saveDomain(tmp.file("no/dir/simu.dat")));
    EXPECT_EQ(sim->getLastMessage(), "Cannot save simulation block into file " + tmp.file("no/dir/simu.dat"));

    auto other = small_simulator();
    ASSERT_TRUE(other);
    ASSERT_TRUE(other->loadDomain(tmp.file("simu.dat"))) << other->getLastMessage();
    EXPECT_TRUE(contains(g_trace, "Load simulation block"));
    EXPECT_DOUBLE_EQ(other->domain()->getTopoGeo(3, 4, false), 12.5);
    EXPECT_FALSE(other->loadDomain(tmp.file("none.dat")));
    EXPECT_EQ(other->getLastMessage(), "Cannot load simulation block from file " + tmp.file("none.dat"));

    // No wells: the list says so, and a folder without a list loads nothing.
    ASSERT_TRUE(sim->saveWells(tmp.path().string()));
    EXPECT_EQ(read_file(tmp.file("wells.txt")), "NB_WELLS=0\n");
    EXPECT_TRUE(other->loadWells(tmp.path().string()));
    EXPECT_TRUE(other->loadWells(tmp.file("empty")));
    write_file(tmp.file("wells.txt"), "NB_WELLS=x\n");
    EXPECT_FALSE(other->loadWells(tmp.path().string()));
    EXPECT_EQ(other->getLastMessage(), "Cannot read the list of wells from file " + tmp.file("wells.txt"));
    write_file(tmp.file("wells.txt"), "NB_WELLS=2\nWELL_1=W1\n");
    EXPECT_FALSE(other->loadWells(tmp.path().string()));
    // A listed well whose file is not there is not added.
    write_file(tmp.file("wells.txt"), "NB_WELLS=1\nWELL_1=W1\n");
    EXPECT_FALSE(other->loadWells(tmp.path().string()));
    EXPECT_FALSE(sim->saveWells(tmp.file("no/dir")));
    EXPECT_EQ(sim->getLastMessage(), "Cannot save wells into folder " + tmp.file("no/dir"));
}

TEST(SimulatorState, ReplaceActionsPrintCountAndRefuse)
{
    auto sim = small_simulator();
    ASSERT_TRUE(sim);
    // A surface action with the flag counts as one iteration.
    ASSERT_TRUE(sim->replaceTopoFromCst(10., SURF_ERODE_FILL, 8, true));
    EXPECT_EQ(sim->getAge(), 1u);
    EXPECT_TRUE(contains(g_trace, "Replace topography by constant one (val=10)"));
    ASSERT_TRUE(sim->replaceTopoFromCst(4., SURF_ERODE_BOTTOM, 0, false));
    EXPECT_EQ(sim->getAge(), 1u);
    EXPECT_TRUE(contains(g_trace, "Erode up to constant surface (val=4)"));
    ASSERT_TRUE(sim->eraseFacies(2.5, false));
    EXPECT_TRUE(contains(g_trace, "Erase deposits up to elevation 2.5"));
    ASSERT_TRUE(sim->eraseFaciesFake(2.));
    EXPECT_TRUE(contains(g_trace, "(Fake) erase deposits up to elevation 2"));
    ASSERT_TRUE(sim->loadEMapFromCst(0.5, false));
    EXPECT_TRUE(contains(g_trace, "Load erodibility map (val=0.5)"));
    ASSERT_TRUE(sim->abandonChannel());
    EXPECT_EQ(sim->getChannel(), nullptr);

    ASSERT_TRUE(sim->loadUpperLimitFromCst(50., 1));
    EXPECT_TRUE(contains(g_trace, "Load upper limit (mean=50)"));
    EXPECT_EQ(sim->getParameters()->getParamInt("ZUL_TYPE"), 1);
    sim->resetUpperLimit();

    TempDir tmp;
    EXPECT_FALSE(sim->replaceCenterlineFromFile(tmp.file("none.txt"), false));
    EXPECT_TRUE(contains(sim->getLastMessage(), "Cannot read centerline from file " + tmp.file("none.txt")));
    EXPECT_FALSE(sim->saveCenterline(tmp.file("c.txt")));
    EXPECT_EQ(sim->getLastMessage(), "There is no channel centerline");

    auto idle = small_simulator(false);
    EXPECT_FALSE(idle->replaceTopoFromCst(1., SURF_ERODE_FILL, 8, true));
    EXPECT_FALSE(idle->abandonChannel());
    EXPECT_EQ(idle->getAge(), 0u);
}

} // namespace

// A flattening surface written on the domain's own grid comes back on the same
// nodes, whatever the file's order: each node is shifted by its own value.
TEST(SimulatorState, FlatteningFromFileLandsOnItsNodes)
{
    TempDir tmp;
    auto sim = small_simulator();
    ASSERT_TRUE(sim);
    const Domain& domain = *sim->domain();
    Topo surface(domain.getGridParams());
    for (int j = 0; j < surface.getNy(); ++j)
        for (int i = 0; i < surface.getNx(); ++i)
            surface.set_at(i, j, 100. + i + 1000. * j);
    for (const std::string order : {"+Y +X +Z", "+X +Y +Z", "-X -Y +Z"})
    {
        ASSERT_TRUE(surface.write(tmp.file("flat.f2g"), sim->getTracer(), GRID_FORMAT_F2G, order));
        ASSERT_TRUE(sim->loadFlatteningFromFile(tmp.file("flat.f2g"))) << sim->getLastMessage();
        for (int j = 0; j < surface.getNy(); ++j)
            for (int i = 0; i < surface.getNx(); ++i)
                ASSERT_DOUBLE_EQ(domain.getObject(i, j).get_flat_delta(), i + 1000. * j)
                    << order << " at " << i << ", " << j;
    }
    // The model's own topography, saved and read back as the flattening surface.
    sim->resetFlattening();
    ASSERT_TRUE(sim->replaceTopoFromCst(12.5, SURF_ERODE_FILL, 8, false));
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK) << sim->getLastMessage();
    ASSERT_EQ(sim->run(30), MP_STATUS_OK) << sim->getLastMessage();
    ASSERT_TRUE(sim->saveTopo(tmp.file("topo.f2g"), GRID_FORMAT_F2G, "+Y +X +Z"));
    std::vector<double> tops;
    for (int j = 0; j < domain.getNy(); ++j)
        for (int i = 0; i < domain.getNx(); ++i)
            tops.push_back(domain.getTopoGeo(i, j, false));
    ASSERT_TRUE(sim->loadFlatteningFromFile(tmp.file("topo.f2g"))) << sim->getLastMessage();
    const double low = *std::min_element(tops.begin(), tops.end());
    for (int j = 0; j < domain.getNy(); ++j)
        for (int i = 0; i < domain.getNx(); ++i)
            ASSERT_NEAR(domain.getObject(i, j).get_flat_delta(), tops[j * domain.getNx() + i] - low, 1e-4)
                << "at " << i << ", " << j;
}
