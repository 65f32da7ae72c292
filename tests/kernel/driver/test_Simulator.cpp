#include "kernel/driver/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/Topo.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/TimeProcess.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>

namespace
{

using testing_support::capture;
using testing_support::contains;
using testing_support::g_trace;

constexpr double ZREF = 0.;

// A small fluvial domain on which a run is quick.
std::unique_ptr<Simulator> small_simulator()
{
    auto sim = testing_support::simulator_on_grid(40, 30);
    iParameters* p = sim->getParameters();
    p->setParamDouble("DOMAIN_ZREF", ZREF);
    return sim;
}

unsigned int next_age(const TimeProcess* process)
{
    const auto* discrete = dynamic_cast<const DiscreteTimeProcess*>(process);
    return discrete != nullptr ? discrete->getNextAge() : 123456789u;
}

double top_geo(const Simulator& sim, int i, int j)
{
    return sim.domain()->getTopoGeo(i, j, false);
}

TEST(Simulator, LifecycleStatusCodes)
{
    auto sim = small_simulator();
    EXPECT_FALSE(sim->ready(false));
    EXPECT_EQ(sim->getAge(), 0u);
    EXPECT_EQ(sim->getInitialSeed(), 165426111);

    // Nothing to run before init, and run asks for a sequence first.
    EXPECT_EQ(sim->run(3), MP_STATUS_NOT_READY);
    EXPECT_EQ(sim->getLastMessage(), "Simulator::run : not ready ! Call newSequence first");
    EXPECT_EQ(sim->newSequence(), MP_STATUS_NOT_READY);
    EXPECT_TRUE(contains(g_trace, "Simulator not ready (call init method first)"));

    // Out of range parameters refuse init unless forced.
    sim->getParameters()->setParamInt("DOMAIN_NX", 5);
    EXPECT_EQ(sim->init(false), MP_STATUS_OUT_OF_RANGE);
    EXPECT_FALSE(sim->ready(false));
    EXPECT_TRUE(contains(sim->getLastMessage(), "DOMAIN_NX"));
    EXPECT_EQ(sim->init(true), MP_STATUS_OK);
    EXPECT_TRUE(sim->ready(false));
    EXPECT_EQ(sim->domain()->getNx(), 5);

    sim->getParameters()->setParamInt("DOMAIN_NX", 40);
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    EXPECT_EQ(sim->domain()->getNx(), 40);
    EXPECT_EQ(sim->domain()->getNy(), 30);

    // The domain exists but no sequence was opened.
    EXPECT_FALSE(sim->sequenceOpen());
    EXPECT_EQ(sim->run(1), MP_STATUS_NOT_READY);
    EXPECT_EQ(sim->getLastMessage(), "Simulator::run : not ready ! Call newSequence first");

    // The decay length of overbank deposits, computed from its definition.
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    const double width = sim->getParameters()->getParamDouble("CHNL_WIDTH");
    const double levee = sim->getParameters()->getParamDouble("AG_LV_WIDTH");
    const double gmax = Facies::class_to_granulo(8);
    const double expected =
        levee * width * std::log(0.37) / std::log((Facies::class_to_granulo(4) + 1e-6) / gmax);
    EXPECT_NEAR(sim->getOverbankDecayLength(), expected, 1e-9 * std::fabs(expected));
    EXPECT_GT(sim->getOverbankDecayLength(), 0.);
    EXPECT_TRUE(sim->sequenceOpen());
    EXPECT_EQ(sim->getOverbankMaxGrain(), gmax);

    // A wavelength of exactly twice the width passes; below it the sequence is refused.
    sim->getParameters()->setParamDouble("CHNL_WAVELENGTH", 2. * width);
    EXPECT_EQ(sim->newSequence(), MP_STATUS_OK);
    g_trace.clear();
    sim->getParameters()->setParamDouble("CHNL_WAVELENGTH", 2. * width - 1.);
    EXPECT_EQ(sim->newSequence(), MP_STATUS_INCONSISTENT);
    EXPECT_TRUE(contains(g_trace, "Channel wavelength MUST be greater than 2 times channel width."));

    // clear forgets the model; init builds a new one.
    EXPECT_TRUE(sim->clear());
    EXPECT_FALSE(sim->ready(false));
    EXPECT_EQ(sim->overbankProcess(), nullptr);
    EXPECT_FALSE(sim->sequenceOpen());
    EXPECT_EQ(sim->run(1), MP_STATUS_NOT_READY);
    sim->getParameters()->setParamDouble("CHNL_WAVELENGTH", 375.);
    EXPECT_EQ(sim->init(false), MP_STATUS_OK);
    EXPECT_TRUE(sim->ready(false));
    EXPECT_EQ(sim->getAge(), 0u);
}

TEST(Simulator, ExtrapolatedTopographyIsSavedOverTheMargins)
{
    auto sim = small_simulator();
    testing_support::TempDir dir;
    EXPECT_FALSE(sim->saveExtraTopo(dir.file("extra.f2g"), GRID_FORMAT_F2G, "+Y +X +Z"));
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    const Domain& domain = *sim->domain();
    ASSERT_GT(domain.get_mx(), 0);
    ASSERT_TRUE(sim->saveExtraTopo(dir.file("extra.f2g"), GRID_FORMAT_F2G, "+Y +X +Z"))
        << sim->getLastMessage();
    ASSERT_TRUE(sim->saveTopo(dir.file("topo.f2g"), GRID_FORMAT_F2G, "+Y +X +Z"));
    Topo extra, topo;
    ASSERT_TRUE(extra.read(dir.file("extra.f2g"))) << extra.getError();
    ASSERT_TRUE(topo.read(dir.file("topo.f2g")));
    ASSERT_EQ(extra.getNx(), domain.getNx() + 2 * domain.get_mx());
    ASSERT_EQ(extra.getNy(), domain.getNy() + 2 * domain.get_my());
    // Inside the margins the surface is the topography itself.
    for (int j = 0; j < domain.getNy(); j += 7)
        for (int i = 0; i < domain.getNx(); i += 9)
        {
            double a = 0., b = 0.;
            ASSERT_TRUE(extra.get_at(i + domain.get_mx(), j + domain.get_my(), a));
            ASSERT_TRUE(topo.get_at(i, j, b));
            EXPECT_NEAR(a, b, 1e-6);
        }
    EXPECT_FALSE(sim->saveExtraTopo(dir.file("missing/extra.f2g"), GRID_FORMAT_F2G, "+Y +X +Z"));
    EXPECT_TRUE(contains(sim->getLastMessage(), "Cannot save extrapolated topography into file "));
}

TEST(Simulator, TimeProcessesAreKeptUnlessTheirParametersChange)
{
    auto sim = small_simulator();
    iParameters* p = sim->getParameters();
    p->setParamInt("AV_LOC_FREQ", MP_PROCESS_PERIODIC);
    p->setParamInt("AV_LOC_PERIOD", 40);
    p->setParamInt("AV_REG_FREQ", MP_PROCESS_PERIODIC);
    p->setParamInt("AV_REG_PERIOD", 90);
    p->setParamInt("AG_OB_DIST", MP_DIST_UNIFORM);
    p->setParamDouble("AG_OB_MIN", 0.1);
    p->setParamDouble("AG_OB_MAX", 0.3);
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    ASSERT_NE(sim->localAvulsionProcess(), nullptr);
    EXPECT_EQ(next_age(sim->localAvulsionProcess()), 0u);
    EXPECT_EQ(sim->localAvulsionProcess()->mean_interval(), 40.);
    EXPECT_DOUBLE_EQ(sim->overbankDistribution()->mean(), 0.2);
    EXPECT_DOUBLE_EQ(sim->getObDistMean(), 0.2);
    EXPECT_EQ(sim->getObPeriod(), sim->overbankProcess()->mean_interval());

    // Same parameters at a later age: every clock keeps its schedule.
    sim->setAge(100);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    EXPECT_EQ(next_age(sim->localAvulsionProcess()), 0u);
    EXPECT_EQ(next_age(sim->regionalAvulsionProcess()), 0u);
    EXPECT_EQ(next_age(sim->overbankProcess()), 0u);
    EXPECT_EQ(sim->getNextLocalAllowed(), 0u);

    // A new period rebuilds that clock only, starting at the present age.
    p->setParamInt("AV_LOC_PERIOD", 50);
    p->setParamDouble("AG_OB_MAX", 0.5);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    EXPECT_EQ(next_age(sim->localAvulsionProcess()), 100u);
    EXPECT_EQ(sim->localAvulsionProcess()->mean_interval(), 50.);
    EXPECT_EQ(sim->getNextLocalAllowed(), 125u);
    EXPECT_EQ(next_age(sim->regionalAvulsionProcess()), 0u);
    EXPECT_EQ(sim->getNextRegionalAllowed(), 0u);
    EXPECT_DOUBLE_EQ(sim->overbankDistribution()->mean(), 0.3);
    EXPECT_DOUBLE_EQ(sim->channelScaleDistribution()->mean(), 100.);

    // Without aggradation the overbank clock never fires; the period reads 0 then.
    p->setParamInt("AG_TYPE", 0);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    EXPECT_EQ(sim->overbankProcess()->mean_interval(), 0.);
    EXPECT_EQ(sim->getObPeriod(), 0u);

    // endSequence hands the generator's seed and the profile level back to the registry.
    EXPECT_EQ(sim->endSequence(), MP_STATUS_OK);
    EXPECT_EQ(p->getParamInt("SIM_SEED"), sim->getCurrentSeed());
    EXPECT_EQ(p->getParamDouble("AG_EP_INIT_ELEV"), sim->getCurrentEP());
}

TEST(Simulator, UpperLimitReachedAtOnceStopsTheRun)
{
    for (int zul_type : {1, 2})
    {
        auto sim = small_simulator();
        ASSERT_EQ(sim->init(false), MP_STATUS_OK);
        ASSERT_TRUE(sim->replaceTopoFromCst(ZREF + 10., SURF_FILL, 8, false)) << sim->getLastMessage();
        EXPECT_NEAR(top_geo(*sim, 3, 4), ZREF + 10., 0.011);
        ASSERT_TRUE(sim->loadUpperLimitFromCst(ZREF + 4., zul_type)) << sim->getLastMessage();
        EXPECT_EQ(sim->getParameters()->getParamInt("ZUL_TYPE"), zul_type);
        EXPECT_LE(sim->getUpperLimitRatio(), 0.);
        ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
        EXPECT_EQ(sim->run(5), MP_STATUS_UPPER_LIMIT) << zul_type;
        EXPECT_EQ(sim->getLastMessage(), "Upper limit has been reached");
        EXPECT_EQ(sim->getChannel(), nullptr);
        if (zul_type == 2)
        {
            // Eroded down to the limit first, which counts as one iteration.
            EXPECT_NEAR(top_geo(*sim, 3, 4), ZREF + 4., 0.011);
            EXPECT_EQ(sim->getAge(), 1u);
        }
        else
        {
            EXPECT_NEAR(top_geo(*sim, 3, 4), ZREF + 10., 0.011);
            EXPECT_EQ(sim->getAge(), 0u);
        }
        // Without a limit the ratio is the undefined integer.
        sim->resetUpperLimit();
        EXPECT_EQ(sim->getUpperLimitRatio(), 2147483647.);
    }
}

// A run until a stop made of pieces (the batch's F2G_IT) gives up at the
// bound of one run until a stop: the pieces since the sequence began count.
TEST(Simulator, AnUpperLimitOutOfReachStopsARunInPieces)
{
    struct Row
    {
        unsigned int piece;
        int pieces_before_failure;
    };
    for (const Row& row : {Row{3000, 3}, Row{6000, 1}})
    {
        auto sim = testing_support::simulator_on_grid(30, 20);
        ASSERT_EQ(sim->init(false), MP_STATUS_OK);
        ASSERT_TRUE(sim->loadUpperLimitFromCst(1e29, 1)) << sim->getLastMessage();
        ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
        for (int i = 0; i < row.pieces_before_failure; ++i)
            ASSERT_EQ(sim->runPiece(row.piece), MP_STATUS_OK) << row.piece << " " << sim->getLastMessage();
        EXPECT_EQ(sim->runPiece(row.piece), MP_STATUS_FAILURE) << row.piece;
        EXPECT_EQ(sim->getAge(), 10000u) << row.piece;
        EXPECT_TRUE(contains(sim->getLastMessage(), "The upper limit was not reached after 10000 iterations"))
            << row.piece << " " << sim->getLastMessage();
        // A finite run is not bounded, and a new sequence counts afresh.
        EXPECT_EQ(sim->run(2), MP_STATUS_OK) << sim->getLastMessage();
        ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
        EXPECT_EQ(sim->runPiece(2), MP_STATUS_OK) << sim->getLastMessage();
        EXPECT_EQ(sim->getAge(), 10004u);
    }
}

// A run of a small sloping plain; empty when the run cannot proceed. `before`
// receives the block as it stood before the first iteration.
std::string run_block(unsigned int iterations, std::string& before, std::string& why)
{
    auto sim = small_simulator();
    sim->getTracer()->setTraceLevel(TRACE_ERROR);
    if (sim->init(false) != MP_STATUS_OK)
    {
        why = "init: " + sim->getLastMessage();
        return std::string();
    }
    Topo topo(sim->domain()->getGridParams());
    for (int j = 0; j < topo.getNy(); ++j)
        for (int i = 0; i < topo.getNx(); ++i)
            topo.set_at(i, j, ZREF + 20. - 0.01 * i * 10.);
    if (!sim->replaceTopo(topo, SURF_ERODE_FILL, 8, false) || sim->newSequence() != MP_STATUS_OK)
    {
        why = "preparation: " + sim->getLastMessage();
        return std::string();
    }
    // run(0) prepares the channel and makes no iteration.
    if (sim->run(0) != MP_STATUS_OK || sim->getChannel() == nullptr || sim->getAge() != 0u)
    {
        why = "channel creation: " + sim->getLastMessage();
        return std::string();
    }
    std::ostringstream start;
    sim->domain()->binary_output(start);
    before = start.str();
    const int status = sim->run(iterations);
    if (status != MP_STATUS_OK || sim->getChannel() == nullptr)
    {
        why = "run: status " + std::to_string(status) + " " + sim->getLastMessage();
        return std::string();
    }
    if (sim->getAge() != iterations)
    {
        why = "age " + std::to_string(sim->getAge());
        return std::string();
    }
    std::ostringstream block;
    sim->domain()->binary_output(block);
    return block.str();
}

TEST(Simulator, TwoRunsFromOneSeedGiveTheSameBlock)
{
    std::string why, before;
    const std::string first = run_block(30, before, why);
    ASSERT_FALSE(first.empty()) << "the channel cannot run (" << why << ")";
    EXPECT_NE(first, before) << "thirty iterations left no deposit";
    std::string again;
    const std::string second = run_block(30, again, why);
    ASSERT_FALSE(second.empty()) << why;
    EXPECT_EQ(before, again);
    EXPECT_EQ(first, second);
}

} // namespace

namespace
{
Simulator* g_failing = nullptr;

// An iteration that always fails the same way, as a full disk would.
bool failing_iteration(int)
{
    g_failing->getTracer()->error("Cannot write the statistics line");
    return true;
}
} // namespace

TEST(Simulator, AFailureBackAtEveryIterationStopsTheRun)
{
    auto sim = small_simulator();
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    g_failing = sim.get();
    sim->getTracer()->setProgressFunction(failing_iteration);
    g_trace.clear();
    // Seen first at iteration 1, then back in 3 iterations in a row.
    EXPECT_EQ(sim->run(50), MP_STATUS_FAILURE);
    EXPECT_EQ(sim->getAge(), 4u);
    EXPECT_EQ(sim->getLastMessage(), "Simulator::run : the same error came back in 3 iterations in a row: "
                                     "the run is stopped at iteration 4");
    sim->getTracer()->setProgressFunction(nullptr);
}
