// Whole runs of the real driver through its interface: determinism of the
// exports, the lifecycle's status codes, cutoffs, the channel's confinement
// and the geography of the exports on a rotated domain.
#include "kernel/driver/Simulator.h"

#include "TestSupport.h"
#include "interface/iChannel.h"
#include "interface/iChannelPoint.h"
#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositUnit.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MassBalance.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

using testing_support::capture;
using testing_support::g_trace;
using testing_support::read_file;
using testing_support::TempDir;

namespace
{

constexpr unsigned char SAND_PLUG = 3;
constexpr unsigned char MUD_PLUG = 9;
constexpr double DX = 10.;

struct Deleter
{
    void operator()(iSimulator* sim) const { iSimulator::deleteSimulator(sim); }
};
using SimPtr = std::unique_ptr<iSimulator, Deleter>;

// A small fluvial model, built but with no sequence open yet.
SimPtr small_model(int seed, int nx = 70, int ny = 60)
{
    SimPtr sim(iSimulator::createSimulator());
    sim->getTracer()->setTraceFunction(capture);
    sim->getTracer()->setTraceLevel(TRACE_INFO);
    iParameters* p = sim->getParameters();
    p->setParamInt("DOMAIN_NX", nx);
    p->setParamInt("DOMAIN_NY", ny);
    p->setParamDouble("DOMAIN_DX", DX);
    p->setParamDouble("DOMAIN_DY", DX);
    p->setParamInt("SIM_SEED", seed);
    g_trace.clear();
    return sim;
}

int open_sequence(iSimulator& sim)
{
    const int status = sim.init(true);
    if (status != MP_STATUS_OK && status != MP_STATUS_CONSISTENCY_WARNING)
        return status;
    return sim.newSequence();
}

std::string export_block(iSimulator& sim, const TempDir& dir, const std::string& name)
{
    const std::string path = dir.file(name);
    EXPECT_TRUE(sim.saveSimuF2G(path, 0.25, true, true, true, MP_UNDEF_REAL, MP_UNDEF_REAL, "+Y +X +Z"))
        << sim.getLastMessage();
    return read_file(path);
}

std::string seeded_block(int seed, const TempDir& dir, const std::string& name)
{
    SimPtr sim = small_model(seed);
    EXPECT_EQ(open_sequence(*sim), MP_STATUS_OK) << g_trace;
    EXPECT_EQ(sim->run(150), MP_STATUS_OK) << sim->getLastMessage();
    EXPECT_EQ(sim->endSequence(), MP_STATUS_OK);
    return export_block(*sim, dir, name);
}

std::string header_value(const std::string& f2g, const std::string& key)
{
    std::istringstream in(f2g);
    std::string line;
    while (std::getline(in, line) && line != "F2G_VALUES ")
        if (line.compare(0, key.size() + 1, key + " ") == 0)
            return line.substr(key.size() + 1);
    return "";
}

std::vector<double> numbers(const std::string& text)
{
    std::istringstream in(text);
    std::vector<double> values;
    double value = 0.;
    while (in >> value)
        values.push_back(value);
    return values;
}

void expect_location(const std::string& f2g, double x, double y, bool three_d)
{
    const std::vector<double> location = numbers(header_value(f2g, "F2G_LOCATION"));
    ASSERT_EQ(location.size(), 3u) << header_value(f2g, "F2G_LOCATION");
    EXPECT_EQ(location[0], x);
    EXPECT_EQ(location[1], y);
    if (three_d)
    {
        EXPECT_LT(location[2], MP_UNDEF_REAL);
    }
}

bool block_holds_family(const iDomain& domain, unsigned char family)
{
    const GridParams& grid = domain.getGridParams();
    for (int j = 0; j < grid.getNy(); ++j)
        for (int i = 0; i < grid.getNx(); ++i)
            for (const DepositUnit& unit : domain.getStack(i, j))
                if (unit.family() == family && unit.thickness() > 0.)
                    return true;
    return false;
}

} // namespace

TEST(WholeRun, SameSeedSameBytesOtherSeedOtherBlock)
{
    TempDir dir;
    const std::string first = seeded_block(4242, dir, "a.f2g");
    const std::string again = seeded_block(4242, dir, "b.f2g");
    const std::string other = seeded_block(4243, dir, "c.f2g");
    ASSERT_FALSE(first.empty());
    EXPECT_TRUE(first == again) << "two runs with one seed gave different blocks";
    EXPECT_FALSE(first == other) << "another seed gave the same block";
}

TEST(WholeRun, LifecycleStatusCodes)
{
    SimPtr sim = small_model(11);
    EXPECT_EQ(sim->run(5), MP_STATUS_NOT_READY);
    ASSERT_EQ(sim->init(true), MP_STATUS_OK) << g_trace;
    EXPECT_EQ(sim->run(5), MP_STATUS_NOT_READY);
    EXPECT_EQ(sim->getLastMessage(), "Simulator::run : not ready ! Call newSequence first");

    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    const unsigned int start = sim->getAge();
    EXPECT_EQ(sim->run(0), MP_STATUS_OK);
    EXPECT_EQ(sim->getAge(), start) << "run(0) must not turn the loop";
    EXPECT_EQ(sim->run(20), MP_STATUS_OK);
    const unsigned int age = sim->getAge();
    EXPECT_GE(age, 20u);
    EXPECT_EQ(sim->endSequence(), MP_STATUS_OK);

    // An upper limit below the surface is reached at once: no iteration runs
    // and, without erosion, the surface stays where it was.
    const iDomain* domain = sim->getDomain();
    const double before = domain->getTopoGeo(10, 10, false);
    const double limit = domain->getZref() - 20.;
    ASSERT_TRUE(sim->loadUpperLimitFromCst(limit, 1));
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    EXPECT_LE(sim->getUpperLimitRatio(), 0.);
    EXPECT_EQ(sim->run(50), MP_STATUS_UPPER_LIMIT);
    EXPECT_EQ(sim->getAge(), age);
    EXPECT_DOUBLE_EQ(domain->getTopoGeo(10, 10, false), before);
    EXPECT_EQ(sim->endSequence(), MP_STATUS_OK);

    // With erosion to the limit the surface is cut down to it everywhere.
    ASSERT_TRUE(sim->loadUpperLimitFromCst(limit, 2));
    ASSERT_EQ(sim->newSequence(), MP_STATUS_OK);
    EXPECT_EQ(sim->run(50), MP_STATUS_UPPER_LIMIT);
    const GridParams& grid = domain->getGridParams();
    for (int j = 0; j < grid.getNy(); j += 7)
        for (int i = 0; i < grid.getNx(); i += 7)
            EXPECT_LE(domain->getTopoGeo(i, j, false), limit + 1e-6) << i << " " << j;
}

TEST(WholeRun, LongRunCutsOffLoopsAndStaysInItsDomain)
{
    SimPtr sim = small_model(165426111, 80, 70);
    ASSERT_EQ(open_sequence(*sim), MP_STATUS_OK) << g_trace;
    const iDomain* domain = sim->getDomain();
    const GridParams& grid = domain->getGridParams();
    const double mx = domain->getMarginX() * DX;
    const double my = domain->getMarginY() * DX;
    // Only the two ends are cut back to the margin lines after a move: an
    // inner bend may bulge past a line, by less than a meander wavelength.
    const double bulge = sim->getParameters()->getParamDouble("CHNL_WAVELENGTH");
    const double xmax = (grid.getNx() - 1) * DX + mx;
    const double ymax = (grid.getNy() - 1) * DX + my;
    auto inside = [&](const iChannelPoint* point, double tolerance)
    {
        return point->getX() >= -mx - tolerance && point->getX() <= xmax + tolerance &&
               point->getY() >= -my - tolerance && point->getY() <= ymax + tolerance;
    };

    for (int chunk = 0; chunk < 30; ++chunk)
    {
        ASSERT_EQ(sim->run(100), MP_STATUS_OK) << sim->getLastMessage();
        const iChannel* channel = sim->getChannel();
        ASSERT_NE(channel, nullptr);
        const int n = channel->number_of_points();
        ASSERT_GT(n, 2);
        // The ends slide on their segments up to the lines: within one segment of them.
        const double segment = 2. * sim->getParameters()->getParamDouble("CHNL_WIDTH");
        EXPECT_TRUE(inside(channel->get_point(0), segment)) << "chunk " << chunk;
        EXPECT_TRUE(inside(channel->get_point(n - 1), segment)) << "chunk " << chunk;
        for (int k = 0; k < n; ++k)
            ASSERT_TRUE(inside(channel->get_point(k), bulge)) << "chunk " << chunk << " point " << k;
    }
    EXPECT_EQ(sim->endSequence(), MP_STATUS_OK);
    EXPECT_GT(sim->getNbCutoff(), 0u) << "no cutoff in 3000 iterations";
    // Abandoned loops are plugged: sand or mud plugs lie in the block.
    EXPECT_TRUE(block_holds_family(*domain, SAND_PLUG) || block_holds_family(*domain, MUD_PLUG));
}

TEST(WholeRun, RotatedShiftedDomainExportsGeographicHeaders)
{
    TempDir dir;
    SimPtr sim = small_model(99, 50, 40);
    iParameters* p = sim->getParameters();
    p->setParamDouble("DOMAIN_OX", 452000.);
    p->setParamDouble("DOMAIN_OY", 6.1e6);
    p->setParamDouble("DOMAIN_GRID_DIR", 30.);
    ASSERT_EQ(open_sequence(*sim), MP_STATUS_OK) << g_trace;
    ASSERT_EQ(sim->run(60), MP_STATUS_OK) << sim->getLastMessage();
    ASSERT_EQ(sim->endSequence(), MP_STATUS_OK);

    const std::string block = export_block(*sim, dir, "rotated.f2g");
    EXPECT_EQ(header_value(block, "F2G_ROTATION"), "30");
    // The geographic place of the relative frame's origin is the location;
    // the origin itself stays relative, at the block's base.
    expect_location(block, 452000., 6.1e6, true);
    const std::vector<double> origin = numbers(header_value(block, "F2G_ORIGIN"));
    ASSERT_EQ(origin.size(), 3u);
    EXPECT_EQ(origin[0], 0.);
    EXPECT_EQ(origin[1], 0.);
    const std::string nodes = header_value(block, "F2G_NB_NODES");
    EXPECT_EQ(nodes.compare(0, 6, "50 40 "), 0) << nodes;
    EXPECT_EQ(header_value(block, "F2G_LAGS"), "10 10 0.25");

    ASSERT_TRUE(sim->saveTopo(dir.file("topo.f2g"), 0, "+Y +X +Z")) << sim->getLastMessage();
    const std::string topo = read_file(dir.file("topo.f2g"));
    EXPECT_EQ(header_value(topo, "F2G_ROTATION"), "30");
    expect_location(topo, 452000., 6.1e6, false);
    EXPECT_EQ(numbers(header_value(topo, "F2G_ORIGIN")), (std::vector<double>{0., 0.}));
}

TEST(WholeRun, EventsKeepTheStacksWholeAndTheAccountsBalancedByClass)
{
    SimPtr sim = small_model(4242, 60, 50);
    iParameters* p = sim->getParameters();
    p->setParamBool("MASS_BAL_ACTIVE", true);
    // Frequent floods and breaches so that every event reaches the stacks.
    p->setParamInt("AG_OB_POISSON", 10);
    p->setParamInt("AV_LOC_POISSON", 40);
    p->setParamInt("AV_REG_POISSON", 150);
    ASSERT_EQ(open_sequence(*sim), MP_STATUS_OK) << g_trace;
    const auto* kernel = dynamic_cast<const Simulator*>(sim.get());
    ASSERT_NE(kernel, nullptr);
    const MassBalance* mb = kernel->massBalance();
    ASSERT_TRUE(mb->isActive());

    double eroded = 0., deposited = 0.;
    for (int it = 0; it < 600; ++it)
    {
        ASSERT_EQ(sim->run(1), MP_STATUS_OK) << sim->getLastMessage();
        // Within an iteration, what is available is what came in, plus what
        // erosion freed, minus what was laid down, class by class.
        for (int c = 0; c < MD_NB_CLASS_GR; ++c)
        {
            const double expected = mb->getInput()[c] + mb->getEroded()[c] - mb->getDeposited()[c];
            ASSERT_NEAR(mb->getAvailable()[c], expected, 1e-9 * (1. + std::abs(expected)))
                << "iteration " << it << " class " << c;
            eroded += mb->getEroded()[c];
            deposited += mb->getDeposited()[c];
        }
    }
    EXPECT_GT(eroded, 0.);
    EXPECT_GT(deposited, 0.);
    for (const char* event : {"Overbank Flow", "Levee Breaches", "Regional Avulsion"})
        EXPECT_NE(g_trace.find(event), std::string::npos) << event;

    // Every column: no unit of negative thickness (hiatus units are empty),
    // ages rising upwards, and units that fill the column from base to top.
    const Domain* domain = kernel->domain();
    const GridParams& grid = domain->getGridParams();
    for (int j = 0; j < grid.getNy(); ++j)
        for (int i = 0; i < grid.getNx(); ++i)
        {
            const std::vector<DepositUnit> stack = domain->getStack(i, j);
            double total = 0.;
            unsigned int age = 0;
            for (const DepositUnit& unit : stack)
            {
                ASSERT_GE(unit.thickness(), 0.) << i << " " << j;
                ASSERT_GE(unit.age(), age) << i << " " << j;
                age = unit.age();
                total += unit.thickness();
            }
            const DepositionSet& column = domain->getObject(i, j);
            ASSERT_NEAR(column.get_ztop() - column.get_zbot(), total, 1e-6 + 1e-9 * stack.size())
                << i << " " << j;
        }
}
