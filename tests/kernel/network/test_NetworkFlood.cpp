// Overbank floods over the land, background rain and peat: what each lays,
// where, and how much.

#include "kernel/network/Network.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::is_assertion_of;

namespace
{

constexpr double TOP = 10.;
constexpr double DX = 10.;
constexpr int NX = 30;
constexpr int NY = 30;
// The straight test channel lies at y = 150: its wet rows are y = 140, 150, 160.
constexpr double CHANNEL_Y = 150.;

class FloodTest : public ::testing::Test, protected testing_support::NetworkParts
{
protected:
    FloodTest()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        set_channel_params();
        make_domain(NX, NY, DX, Facies(Draping::_fd.id()));
        domain->deposit_uniform_thickness(TOP, Facies(Draping::_fd.id(), 1), 0u);
        domain->forget_remaining();
        make_network();
        network->setAge(1);
        snapshot();
    }

    void set_channel_params() { set_channel(30., 3., 375., 2.); }

    // A straight channel along x at ordinate y, its top at z, with its geometry and flow.
    void straight(double y, double z, double x0 = -150., double x1 = NX * DX + 150.)
    {
        std::vector<Point3D> points;
        for (double x = x0; x <= x1 + 1e-9; x += 15.)
            points.emplace_back(x, y, z);
        network->adopt_channel(new Channel(&mc, points));
        network->init_geom_and_flow(3., 30., 375., 0.001);
    }

    // Raises node (i, j) by th of draping and forgets the rest of the unit.
    void raise(int i, int j, double th)
    {
        domain->getObject(i, j).deposit_thickness(th, Facies(Draping::_fd.id(), 1), 0u, &mb);
        domain->getObject(i, j).forget_remaining();
    }

    void snapshot()
    {
        _before.clear();
        _rest.clear();
        for (int j = 0; j < NY; ++j)
            for (int i = 0; i < NX; ++i)
            {
                _before.push_back(domain->getObject(i, j).get_topo_rel(false));
                _rest.push_back(domain->getObject(i, j).get_remaining());
            }
    }

    // What node (i, j) received since the snapshot, whole units and the rest
    // kept for the next deposit alike.
    double laid(int i, int j) const
    {
        const DepositionSet& ds = domain->getObject(i, j);
        return ds.get_topo_rel(false) - _before[j * NX + i] + ds.get_remaining() - _rest[j * NX + i];
    }

    // Distance from node row j to the nearest wet row of the test channel.
    static double distance_to_channel(int j)
    {
        const double y = j * DX;
        return y > CHANNEL_Y + DX ? y - CHANNEL_Y - DX : (y < CHANNEL_Y - DX ? CHANNEL_Y - DX - y : 0.);
    }

    std::vector<double> _before;
    std::vector<double> _rest;
};

const double GR8 = Facies::class_to_granulo(8);

// ---------------------------------------------------------------------------
// Overbank

TEST_F(FloodTest, FlatLandReceivesHExpMinusDOverThdecDownToOneMillimetre)
{
    const double H = 0.5, thdec = 20.;
    straight(CHANNEL_Y, TOP + H);
    network->setAge(7);
    network->make_overbank(thdec, 100., GR8, 1., false);
    EXPECT_EQ(network->last_flood_iter(), 7u);
    EXPECT_EQ(network->aggrad_map(), nullptr);
    int stopped = 0, reached_far = 0;
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
        {
            const double d = distance_to_channel(j);
            double want = d == 0. ? 0. : H * std::exp(-d / thdec);
            if (d > 0. && want < AggradInfo::min_th)
            {
                want = 0.;
                ++stopped;
            }
            else if (d >= 120.)
                ++reached_far;
            EXPECT_NEAR(laid(i, j), want, 1e-9) << i << ", " << j;
        }
    // Rows 130 and 140 m away lie past the cut (0.5 e^-6.5 < 0.001 < 0.5 e^-6).
    EXPECT_EQ(stopped, 3 * NX);
    EXPECT_EQ(reached_far, 2 * NX);
}

TEST_F(FloodTest, GrainSizeMakesLeveeNearTheChannelAndOverbankFarther)
{
    straight(CHANNEL_Y, TOP + 2.);
    network->make_overbank(40., 100., GR8, 1., false);
    // 10 m away: 0.5625 e^-0.1 is class 7; 80 m away, 0.5625 e^-0.8 is class 3.
    for (int i = 0; i < NX; ++i)
    {
        const Facies near = domain->getObject(i, 17).get_facies();
        EXPECT_EQ(near.family(), Levee::_fd.id());
        EXPECT_EQ(near.granulo_class(), 7);
        const Facies far = domain->getObject(i, 24).get_facies();
        EXPECT_EQ(far.family(), Overbank::_fd.id());
        EXPECT_EQ(far.granulo_class(), 3);
        // The wet nodes are the flood's sources and keep their top.
        EXPECT_EQ(laid(i, 15), 0.);
    }
}

TEST_F(FloodTest, ANodeRingedByHigherGroundReceivesNothingAndShadowsTheNodeBehind)
{
    const int ci = 15, cj = 25;
    for (int dj = -1; dj <= 1; ++dj)
        for (int di = -1; di <= 1; ++di)
            if (di != 0 || dj != 0)
                raise(ci + di, cj + dj, 3.);
    snapshot();
    straight(CHANNEL_Y, TOP + 1.);

    int ny_below = 0;
    std::vector<ChannelGridPoint> points;
    network->create_aggrad_map(ny_below, points);
    ASSERT_NE(network->aggrad_map(), nullptr);
    Grid2D<AggradInfo>& map = *network->aggrad_map();
    for (const ChannelGridPoint& pt : points)
    {
        AggradInfo& rec = map.getObject(pt.ix, pt.iy);
        rec.status = -2;
        rec.gr = GR8;
        rec.thdec = 100.;
        rec.grdec = 100.;
        rec.ratio = 1.;
        rec.zmax = pt.z;
    }
    network->compute_aggrad_map(ny_below, points);
    const int mx = (map.getNx() - NX) / 2;
    auto rec = [&](int i, int j) -> const AggradInfo& { return map.getObject(i + mx, j + ny_below); };

    // No neighbour of the node took the flood: it is never reached.
    EXPECT_EQ(rec(ci, cj).status, -1);
    EXPECT_EQ(rec(ci, cj).th, 0.);
    EXPECT_EQ(laid(ci, cj), 0.);
    // The node straight behind the ring has only ring nodes as feeders.
    EXPECT_EQ(rec(ci, cj + 2).th, 0.);
    EXPECT_EQ(laid(ci, cj + 2), 0.);
    // The flood comes round the ring further on, and lies on the open plain at the same distance.
    EXPECT_GT(laid(ci, cj + 3), 0.);
    EXPECT_NEAR(laid(5, cj), std::exp(-0.9), 1e-9);
    for (int dj = -1; dj <= 1; ++dj)
        EXPECT_EQ(laid(ci - 1, cj + dj), 0.);
}

TEST_F(FloodTest, AWholeOverbankConservesMassByClass)
{
    mb.setActive(true);
    mb.setInitialVolume(std::vector<double>(MD_NB_CLASS_GR, 50.));
    const MassBalance::ByClass input = mb.getInput();
    const MassBalance::ByClass eroded = mb.getEroded();
    straight(CHANNEL_Y + 3., TOP + 1.5);
    network->make_overbank(60., 80., GR8, 1., false);

    std::vector<double> by_class(MD_NB_CLASS_GR, 0.);
    int levee = 0, overbank = 0;
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
        {
            const DepositionSet& ds = domain->getObject(i, j);
            // A deposit under one unit is kept for later and booked then.
            if (ds.get_topo_rel(false) == _before[j * NX + i])
                continue;
            const Facies f = ds.get_facies();
            ASSERT_TRUE(f.family() == Levee::_fd.id() || f.family() == Overbank::_fd.id());
            (f.family() == Levee::_fd.id() ? levee : overbank)++;
            by_class[f.granulo_class()] += laid(i, j);
        }
    EXPECT_GT(levee, 0);
    EXPECT_GT(overbank, 0);
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
    {
        EXPECT_NEAR(mb.getDeposited()[c], by_class[c], 1e-9) << "class " << c;
        EXPECT_NEAR(mb.getAvailable()[c], input[c] + eroded[c] - mb.getDeposited()[c], 1e-9) << "class " << c;
    }
}

TEST_F(FloodTest, NoFloodWithoutAChannelOrWhenItLiesBeyondTheMargins)
{
    network->make_overbank(50., 100., GR8, 1., false);
    const int mx = domain->get_mx();
    straight(CHANNEL_Y, TOP + 2., (NX + mx) * DX + 100., (NX + mx) * DX + 400.);
    network->setAge(9);
    network->make_overbank(50., 100., GR8, 1., false);
    EXPECT_NE(g_trace.find("   Channel is too far from the domain: no aggradation"), std::string::npos);
    EXPECT_EQ(network->last_flood_iter(), 0u);
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
            ASSERT_EQ(laid(i, j), 0.);
}

TEST_F(FloodTest, AChannelFarOffTheDomainInYFloodsOnlyWhatItReaches)
{
    // 100 m below the domain, with thdec 10: 2 e^-10 at the first row is below 1 mm.
    straight(-100., TOP + 2.);
    network->make_overbank(10., 100., GR8, 1., false);
    for (int i = 0; i < NX; ++i)
        EXPECT_EQ(laid(i, 0), 0.);
    // With thdec 100 the flood crosses the gap: 2 e^-0.9 on the first row.
    network->make_overbank(100., 100., GR8, 1., false);
    for (int i = 0; i < NX; ++i)
        EXPECT_NEAR(laid(i, 0), 2. * std::exp(-0.9), 1e-9);
}

TEST_F(FloodTest, TurbiditeFloodNeedsAHeightAboveTheChannel)
{
    params.setUsingTurbi();
    set_channel_params();
    straight(CHANNEL_Y, TOP + 1.);
    params.setTurbAggHeightCoeff(0.01);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { network->make_overbank(50., 100., GR8, 1., false); }),
                                "h_above_ch > 0."));
    params.setTurbAggHeightCoeff(3.);
    network->make_overbank(50., 100., GR8, 1., false);
    double total = 0.;
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
        {
            EXPECT_GE(laid(i, j), 0.);
            total += laid(i, j);
        }
    EXPECT_GT(total, 0.);
}

TEST_F(FloodTest, NextExtensionHasAFactorOfMeanOne)
{
    EXPECT_EQ(network->next_extension(300., false), 300.);
    EXPECT_EQ(network->next_extension(1., true), 1.);
    EXPECT_TRUE(g_trace.empty());
    double sum = 0.;
    const int n = 20000;
    for (int k = 0; k < n; ++k)
        sum += (network->next_extension(101., true) - 1.) / 100.;
    EXPECT_NEAR(sum / n, 1., 0.005);
    tracer.setTraceAggrad(true);
    network->next_extension(101., true);
    EXPECT_FALSE(g_trace.empty());
}

// ---------------------------------------------------------------------------
// Background rain and peat

TEST_F(FloodTest, PelagicOrDrapingRainFallsOnDryNodesOnly)
{
    domain->getObject(4, 4).water_depth(2.);
    network->last_flood_iter(10);
    network->setAge(30);
    network->make_pel_drap(50.);
    EXPECT_NEAR(laid(0, 0), 20. * 50. / 10000., 1e-9);
    EXPECT_EQ(domain->getObject(0, 0).get_facies().family(), Draping::_fd.id());
    EXPECT_EQ(domain->getObject(0, 0).get_facies().granulo_class(), 1);
    EXPECT_EQ(laid(4, 4), 0.);

    snapshot();
    network->make_pel_drap(0.);
    EXPECT_EQ(laid(0, 0), 0.);
    network->last_flood_iter(30);
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { network->make_pel_drap(50.); }), "dt > 0 && pel_drap_int > 0"));

    params.setUsingTurbi();
    network->last_flood_iter(20);
    network->make_pel_drap(50.);
    EXPECT_EQ(domain->getObject(0, 0).get_facies().family(), Pelagic::_fd.id());
    EXPECT_NEAR(laid(1, 1), 10. * 50. / 10000., 1e-9);
}

TEST_F(FloodTest, DrapingCoversEveryNodeAndLiftsTheChannel)
{
    network->adopt_channel(
        new Channel(&mc, std::vector<Point3D>{{0., 50., 9.}, {100., 50., 9.5}, {200., 50., 10.}}));
    domain->getObject(2, 2).water_depth(3.);
    network->make_draping(0.2, Pelagic::_fd.id());
    EXPECT_NEAR(laid(2, 2), 0.2, 1e-9);
    EXPECT_EQ(domain->getObject(2, 2).get_facies().family(), Pelagic::_fd.id());
    EXPECT_EQ(domain->getObject(7, 3).get_facies().granulo_class(), 1);
    EXPECT_NEAR(network->channel()->first()->get_elevation(), 9.2, 1e-12);
    EXPECT_NEAR(network->channel()->last()->get_elevation(), 10.2, 1e-12);

    network->make_draping(0.3, Draping::_fd.id());
    EXPECT_EQ(domain->getObject(2, 2).get_facies().family(), Draping::_fd.id());
    network->make_draping(0.1, 0);
    EXPECT_EQ(domain->getObject(2, 2).get_facies().family(), 0);
    EXPECT_NEAR(laid(0, 0), 0.6, 1e-9);
}

TEST_F(FloodTest, PeatFillsTheLowestShareOfTheDryPlainTowardsItsLevel)
{
    network->last_flood_iter(0);
    network->setAge(20);
    auto flood_all_but = [&](const std::vector<std::pair<int, int>>& dry)
    {
        for (int j = 0; j < NY; ++j)
            for (int i = 0; i < NX; ++i)
                domain->getObject(i, j).water_depth(1.);
        for (const auto& n : dry)
            domain->getObject(n.first, n.second).water_depth(0.);
    };
    auto nothing_laid = [&]
    {
        for (int j = 0; j < NY; ++j)
            for (int i = 0; i < NX; ++i)
                if (laid(i, j) != 0.)
                    return false;
        return true;
    };

    // All dry nodes level: nothing. One dry node: nothing.
    network->make_wetland(0.5);
    EXPECT_TRUE(nothing_laid());
    flood_all_but({{3, 3}});
    network->make_wetland(0.5);
    EXPECT_TRUE(nothing_laid());

    // Four dry nodes at 10, 11, 12 and 13 m; half of them: level 12.
    flood_all_but({{1, 1}, {2, 1}, {3, 1}, {4, 1}});
    raise(2, 1, 1.);
    raise(3, 1, 2.);
    raise(4, 1, 3.);
    snapshot();
    const double share = (1. - std::exp(-20. * 0.05)) * 0.6 * 0.1;
    network->make_wetland(0.5);
    EXPECT_NEAR(laid(1, 1), 2. * share, 1e-9);
    EXPECT_NEAR(laid(2, 1), 1. * share, 1e-9);
    EXPECT_EQ(laid(3, 1), 0.);
    EXPECT_EQ(laid(4, 1), 0.);
    EXPECT_EQ(domain->getObject(1, 1).get_facies().family(), Wetland::_fd.id());
    EXPECT_EQ(domain->getObject(1, 1).get_facies().granulo_class(), 1);

    // A fraction of 1 or more aims at the highest dry node.
    snapshot();
    network->make_wetland(3.);
    EXPECT_GT(laid(3, 1), 0.);
    EXPECT_EQ(laid(4, 1), 0.);

    // No time since the last flood, no fraction, or not a fluvial run: nothing.
    snapshot();
    network->last_flood_iter(20);
    network->make_wetland(0.5);
    network->last_flood_iter(0);
    network->make_wetland(0.);
    params.setUsingTurbi();
    network->make_wetland(0.5);
    EXPECT_TRUE(nothing_laid());
}

} // namespace
