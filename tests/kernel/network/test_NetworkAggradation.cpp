// The distance map of a flood, the records that carry a flood from node to
// node, and the moves of the channel towards its equilibrium elevation.

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

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
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

class AggradationTest : public ::testing::Test, protected testing_support::NetworkParts
{
protected:
    AggradationTest()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        set_channel(30., 3., 375., 2.);
        make_domain(NX, NY, DX, Facies(Draping::_fd.id()));
        domain->deposit_uniform_thickness(TOP, Facies(Draping::_fd.id(), 1), 0u);
        domain->forget_remaining();
        make_network();
    }

    // A channel through the given points (x, y, z), with its geometry and flow.
    void adopt(const std::vector<Point3D>& points)
    {
        network->adopt_channel(new Channel(&mc, points));
        network->init_geom_and_flow(3., 30., 375., 0.001);
    }

    // A channel of exactly these points, without geometry or flow.
    void raw(const std::vector<Point3D>& points) { network->adopt_channel(new Channel(&mc, points)); }

    // A straight channel along x from x0 to x1 at ordinate y, its top at z.
    void straight(double y, double z, double x0 = -150., double x1 = NX * DX + 150.)
    {
        std::vector<Point3D> points;
        for (double x = x0; x <= x1 + 1e-9; x += 15.)
            points.emplace_back(x, y, z);
        adopt(points);
    }

    static std::vector<double> elevations(const Channel& ch)
    {
        std::vector<double> z;
        for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
            z.push_back(cp->get_elevation());
        return z;
    }
};

// ---------------------------------------------------------------------------
// Distance transform

// Squared distance, in index units, from (i, j) to the nearest source.
long long brute_force(const std::vector<IPos>& sources, int i, int j)
{
    long long best = -1;
    for (const IPos& s : sources)
    {
        const long long d = 1LL * (i - s.x) * (i - s.x) + 1LL * (j - s.y) * (j - s.y);
        if (best < 0 || d < best)
            best = d;
    }
    return best;
}

// Every node ends with a vector that leads to a source, so it is never
// shorter than the true distance; it is never longer by more than one mesh,
// and exact on more than 99 % of the nodes (the misses are the transform's
// known corner cases, mostly on the first and last columns).
TEST_F(AggradationTest, DanielssonFindsTheNearestSourceWithinOneMesh)
{
    struct Case
    {
        int nx, ny, sources;
    };
    const Case cases[] = {{40, 40, 1}, {40, 40, 5},   {50, 30, 40}, {7, 80, 3},
                          {90, 6, 4},  {25, 25, 200}, {2, 30, 1}};
    std::mt19937 rng(12345);
    int nodes = 0, misses = 0;
    for (const Case& c : cases)
        for (int trial = 0; trial < 4; ++trial)
        {
            Grid2D<IPos> grid(1., 1., c.nx, c.ny);
            grid.initialize(IPos{c.nx + 1, 0});
            std::vector<IPos> sources;
            std::uniform_int_distribution<int> ri(0, c.nx - 1), rj(0, c.ny - 1);
            for (int k = 0; k < c.sources; ++k)
            {
                const IPos s{ri(rng), rj(rng)};
                sources.push_back(s);
                grid.getObject(s.x, s.y) = IPos{0, 0};
            }
            network->danielsson(grid);
            for (int j = 0; j < c.ny; ++j)
                for (int i = 0; i < c.nx; ++i)
                {
                    const IPos v = grid.getObject(i, j);
                    const int si = i - v.x, sj = j - v.y;
                    ASSERT_TRUE(si >= 0 && si < c.nx && sj >= 0 && sj < c.ny) << c.nx << "x" << c.ny;
                    const IPos& target = grid.getObject(si, sj);
                    ASSERT_TRUE(target.x == 0 && target.y == 0) << "vector of (" << i << ", " << j << ")";
                    const double got = std::sqrt(1. * v.x * v.x + 1. * v.y * v.y);
                    const double truth = std::sqrt(static_cast<double>(brute_force(sources, i, j)));
                    EXPECT_GE(got, truth - 1e-12);
                    EXPECT_LE(got, truth + 1. + 1e-9) << c.nx << "x" << c.ny << " node " << i << ", " << j;
                    ++nodes;
                    if (got > truth + 1e-9)
                        ++misses;
                }
        }
    EXPECT_LT(misses * 100, nodes) << misses << " of " << nodes;
}

// ---------------------------------------------------------------------------
// Flood records

TEST(AggradInfoTest, ArithmeticLeavesPlaceDistanceAndStatusAlone)
{
    AggradInfo a;
    a.i = 3;
    a.z = 5.;
    a.dch = 7.;
    a.th = 4.;
    a.zmax = 6.;
    a.grdec = 8.;
    AggradInfo b = a;
    b.th = -2.;
    b.zmax = 0.;
    b.status = 0;

    AggradInfo s = a;
    s += b;
    s *= a;
    EXPECT_EQ(s.th, 8.);
    EXPECT_EQ(s.grdec, 128.);
    EXPECT_TRUE(s.i == 3 && s.z == 5. && s.dch == 7. && s.status == -1);
    // A divisor that is not positive leaves its field as it is.
    s /= b;
    EXPECT_EQ(s.th, 8.);
    EXPECT_EQ(s.zmax, 36.);
    EXPECT_EQ(s.grdec, 16.);

    AggradInfo c;
    c.copy_deposit_info(b);
    EXPECT_TRUE(c.status == 0 && c.th == -2. && c.grdec == 8. && c.z == 0. && c.dch == 0.);
}

TEST(AggradInfoTest, DecreaseThinsTheFloodAndLowersItsSurface)
{
    AggradInfo f;
    f.thdec = 20.;
    f.thmax = 2.;
    f.th = 2.;
    f.zmax = 12.;
    f.gr = 0.5;
    f.grdec = 40.;
    f.decrease(-10.);
    EXPECT_NEAR(f.thmax, 2. * std::exp(-0.5), 1e-12);
    EXPECT_EQ(f.th, f.thmax);
    EXPECT_NEAR(f.zmax, 10. + 2. * std::exp(-0.5), 1e-12);
    EXPECT_NEAR(f.gr, 0.5 * std::exp(-0.25), 1e-12);

    EXPECT_TRUE(is_assertion_of(assertion_text([&] { f.decrease(0.); }), "delta < 0"));
    f.thdec = 0.;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { f.decrease(-1.); }), "mean.thdec > 0"));
    f.thdec = 1.;
    f.grdec = 0.;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { f.decrease(-1.); }), "grdec > 0"));
}

// A node computed at C (dch 10) from feeders at dch 0.
AggradInfo node_at(double z)
{
    AggradInfo c;
    c.z = z;
    c.dch = 10.;
    c.status = 0;
    return c;
}

AggradInfo computed_feeder(double th, double grdec)
{
    AggradInfo f;
    f.status = 0;
    f.thdec = 10.;
    f.thmax = th;
    f.th = th;
    f.zmax = th;
    f.ratio = 1.;
    f.gr = 0.5;
    f.grdec = grdec;
    return f;
}

AggradInfo source(double zmax)
{
    AggradInfo s = computed_feeder(0., 50.);
    s.status = -2;
    s.zmax = zmax;
    return s;
}

TEST(AggradInfoTest, MeanOfFeedersIsContraharmonicWithTheDefaultInTheSum)
{
    AggradInfo mean = node_at(0.);
    AggradInfo sum = mean;
    ASSERT_TRUE(mean.add(computed_feeder(1., 4.), sum));
    ASSERT_TRUE(mean.add(computed_feeder(3., 4.), sum));
    mean /= sum;
    const double e = std::exp(-1.);
    EXPECT_NEAR(mean.th, (1. + 9.) * e * e / ((1. + 3.) * e), 1e-12);
    EXPECT_NEAR(mean.thdec, 10., 1e-12);
    // grdec is the one field whose default (1) stays in both sums.
    EXPECT_NEAR(mean.grdec, (1. + 16. + 16.) / (1. + 4. + 4.), 1e-12);
}

TEST(AggradInfoTest, RisingGroundTakesTheFloodAwayTwice)
{
    const double e = std::exp(-1.), w = std::exp(-0.5);

    // A source flooding to 1 m over a node 0.3 m up: surface and slope both take their share.
    AggradInfo mean = node_at(0.3);
    AggradInfo sum = mean;
    ASSERT_TRUE(mean.add(source(1.), sum));
    EXPECT_NEAR(sum.th, 0.7 * e - 0.3 * w, 1e-12);
    EXPECT_NEAR(sum.zmax, 1. - 0.7 * (1. - e), 1e-12);

    // Higher still, the slope takes more than the flood brings.
    mean = node_at(0.5);
    sum = mean;
    EXPECT_FALSE(mean.add(source(1.), sum));
    EXPECT_EQ(sum.th, 0.);

    // Above the lowered surface of the flood, nothing comes.
    mean = node_at(1.);
    sum = mean;
    EXPECT_FALSE(mean.add(computed_feeder(2., 4.), sum));

    // A source under min_th above the node, or a thin computed node, feeds nothing.
    mean = node_at(0.);
    sum = mean;
    EXPECT_FALSE(mean.add(source(0.0009), sum));
    EXPECT_FALSE(mean.add(computed_feeder(0.0009, 4.), sum));
    EXPECT_TRUE(mean.add(source(0.0011), sum));
}

TEST(AggradInfoTest, FeedersMustBeReachedAndStrictlyCloser)
{
    AggradInfo mean = node_at(0.);
    AggradInfo sum = mean;
    AggradInfo same = computed_feeder(1., 4.);
    same.dch = 10.;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { mean.add(same, sum); }), "feeder.dch < dch"));
    AggradInfo unreached = computed_feeder(1., 4.);
    unreached.status = -1;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { mean.add(unreached, sum); }), "feeder.status != -1"));
    mean.status = -1;
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { mean.add(computed_feeder(1., 4.), sum); }), "mean.status == 0"));
}

// ---------------------------------------------------------------------------
// Flood map

TEST_F(AggradationTest, EqualDistancesNeverFeedEachOther)
{
    straight(150., TOP + 1.);
    int ny_below = 0;
    std::vector<ChannelGridPoint> points;
    network->create_aggrad_map(ny_below, points);
    Grid2D<AggradInfo>* map = network->aggrad_map();
    ASSERT_NE(map, nullptr);
    map->initialize(AggradInfo());
    for (int j = 0; j < map->getNy(); ++j)
        for (int i = 0; i < map->getNx(); ++i)
        {
            map->getObject(i, j).i = i;
            map->getObject(i, j).j = j;
            map->getObject(i, j).dch = 100.;
        }
    AggradInfo& local = map->getObject(5, 5);
    // Thick, high floods all around, at the same distance: no deposit.
    for (int dj = -1; dj <= 1; ++dj)
        for (int di = -1; di <= 1; ++di)
            if (di != 0 || dj != 0)
            {
                AggradInfo& n = map->getObject(5 + di, 5 + dj);
                n = computed_feeder(1., 4.);
                n.i = 5 + di;
                n.j = 5 + dj;
                n.dch = 100.;
                n.zmax = 50.;
            }
    EXPECT_FALSE(network->compute_deposit(&local));
    EXPECT_EQ(local.status, 0);
    EXPECT_EQ(local.th, 0.);
    // Computed or source nodes are left alone.
    EXPECT_FALSE(network->compute_deposit(&local));

    // One neighbour strictly closer feeds it.
    local.status = -1;
    map->getObject(5, 4).dch = 90.;
    EXPECT_TRUE(network->compute_deposit(&local));
    EXPECT_EQ(local.status, 0);
    EXPECT_NEAR(local.th, std::exp(-1.), 1e-12);

    // A record already holding a thickness is a broken state.
    local.status = -1;
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { network->compute_deposit(&local); }), "local->th == 0."));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { network->compute_deposit(nullptr); }), "local != NULL"));
}

TEST_F(AggradationTest, MapFollowsTheChannelInYAndReachesTheMarginsInX)
{
    const int mx = domain->get_mx();
    ASSERT_GT(mx, 0);

    // Far below the domain: the map reaches down to it.
    straight(-300., TOP);
    int ny_below = 0;
    std::vector<ChannelGridPoint> points;
    network->create_aggrad_map(ny_below, points);
    ASSERT_NE(network->aggrad_map(), nullptr);
    EXPECT_EQ(ny_below, 31); // trunc(315 / 10)
    const Grid2D<AggradInfo>& map = *network->aggrad_map();
    EXPECT_EQ(map.getNx(), NX + 2 * mx);
    EXPECT_EQ(map.getNy(), NY + 31 + 1);
    EXPECT_DOUBLE_EQ(map.getY0(), -310.);
    EXPECT_DOUBLE_EQ(map.getX0(), -mx * DX);
    ASSERT_FALSE(points.empty());
    for (const ChannelGridPoint& p : points)
    {
        EXPECT_GE(p.iy, 0);
        EXPECT_LE(p.iy, 2); // map rows of y = -310 ... -290
    }
    // Node elevations come from the land, water included, and over the margins from its extrapolation.
    EXPECT_NEAR(network->flood_map_elevation(mx + 3, 31 + 4, ny_below), TOP, 1e-9);
    EXPECT_NEAR(network->flood_map_elevation(0, 0, ny_below), TOP, 1e-9);

    // On uneven, partly flooded land, the whole map read at once gives each
    // node's value to the bit, margins and rows beyond the domain included.
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
        {
            domain->getObject(i, j).deposit_thickness(0.01 * ((i * 7 + j * 13) % 23),
                                                      Facies(Draping::_fd.id(), 1), 0u, &mb);
            if ((i + 2 * j) % 5 == 0)
                domain->getObject(i, j).water_depth(0.1 * (i % 4));
        }
    auto expect_whole_map_read_as_nodes = [&](int below)
    {
        domain->compute_border_zmin();
        domain->compute_border_zmax();
        const Grid2D<AggradInfo>& m = *network->aggrad_map();
        const int my = std::max(below, m.getNy() - NY - below);
        std::vector<double> land;
        domain->fill_topo_extrapolated(true, true, -mx, -below, m.getNx(), m.getNy(), mx, my, true, land);
        ASSERT_EQ(land.size(), m.node_count());
        int differ = 0;
        for (int j = 0; j < m.getNy(); ++j)
            for (int i = 0; i < m.getNx(); ++i)
                differ += land[static_cast<std::size_t>(j) * m.getNx() + i] !=
                          network->flood_map_elevation(i, j, below);
        EXPECT_EQ(differ, 0) << "ny_below " << below;
    };
    expect_whole_map_read_as_nodes(ny_below);

    // Far above: the rows above the domain follow it.
    straight(NY * DX + 205., TOP);
    network->create_aggrad_map(ny_below, points);
    ASSERT_NE(network->aggrad_map(), nullptr);
    EXPECT_EQ(ny_below, 1);
    EXPECT_EQ(network->aggrad_map()->getNy(), NY + 1 + 22); // trunc(220 / 10)
    expect_whole_map_read_as_nodes(ny_below);
    EXPECT_TRUE(g_trace.empty()) << g_trace;

    // Beyond the margins in x: no wet node, no map, the info text.
    straight(150., TOP, (NX + mx) * DX + 100., (NX + mx) * DX + 500.);
    network->create_aggrad_map(ny_below, points);
    EXPECT_EQ(network->aggrad_map(), nullptr);
    EXPECT_TRUE(points.empty());
    EXPECT_NE(g_trace.find("    Info      :    Channel is too far from the domain: no aggradation\n"),
              std::string::npos)
        << g_trace;
}

// The map and the work of a flood are kept from one flood to the next: each
// flood, after others of the same map geometry or not, starts from default
// records and spreads by its own channel's distances.
TEST_F(AggradationTest, FloodsInARowEachStartFromDefaultRecords)
{
    for (const double y : {150., 60., 150., -300., 150.})
    {
        straight(y, TOP + 1.);
        int ny_below = 0;
        std::vector<ChannelGridPoint> points;
        network->create_aggrad_map(ny_below, points);
        ASSERT_NE(network->aggrad_map(), nullptr);
        Grid2D<AggradInfo>& map = *network->aggrad_map();
        const AggradInfo* rec = map.pointer(0, 0);
        const AggradInfo fresh;
        int stale = 0;
        for (std::size_t k = 0; k < map.node_count(); ++k)
            stale += rec[k].status != fresh.status || rec[k].th != fresh.th || rec[k].dch != fresh.dch ||
                     rec[k].thmax != fresh.thmax || rec[k].grdec != fresh.grdec;
        EXPECT_EQ(stale, 0) << "channel at y " << y;
        for (const ChannelGridPoint& pt : points)
        {
            AggradInfo& source = map.getObject(pt.ix, pt.iy);
            source.status = -2;
            source.gr = 0.5;
            source.thdec = 100.;
            source.grdec = 100.;
            source.ratio = 1.;
            source.zmax = pt.z;
        }
        network->compute_aggrad_map(ny_below, points);
        // Every reached node is at the distance of a mapping on a grid of its own.
        Grid2D<IPos> vectors(map);
        vectors.initialize(IPos{map.getNx() + 1, 0});
        for (const ChannelGridPoint& pt : points)
            vectors.getObject(pt.ix, pt.iy) = IPos{0, 0};
        network->danielsson(vectors);
        int wrong = 0, reached = 0;
        for (int j = 0; j < map.getNy(); ++j)
            for (int i = 0; i < map.getNx(); ++i)
            {
                if (map.getObject(i, j).status != 0)
                    continue;
                ++reached;
                const double ax = std::abs(vectors.getObject(i, j).x) * DX;
                const double ay = std::abs(vectors.getObject(i, j).y) * DX;
                wrong += map.getObject(i, j).dch != std::sqrt(ax * ax + ay * ay);
            }
        EXPECT_GT(reached, 0) << "channel at y " << y;
        EXPECT_EQ(wrong, 0) << "channel at y " << y;
    }
}

TEST_F(AggradationTest, ComputeMapAssertsItsInputs)
{
    std::vector<ChannelGridPoint> none;
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { network->compute_aggrad_map(1, none); }), "_amap != NULL"));
    straight(150., TOP);
    int ny_below = 0;
    std::vector<ChannelGridPoint> points;
    network->create_aggrad_map(ny_below, points);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { network->compute_aggrad_map(ny_below, none); }),
                                "!pts.empty()"));
    ChannelGridPoint off(&mc);
    off.ix = network->aggrad_map()->getNx();
    std::vector<ChannelGridPoint> bad{off};
    const std::string text = assertion_text([&] { network->compute_aggrad_map(ny_below, bad); });
    EXPECT_EQ(text.rfind("pt->pos.x", 0), 0u) << text;
}

// ---------------------------------------------------------------------------
// Equilibrium elevation

TEST_F(AggradationTest, GoToEpShavesTheExtremesFirst)
{
    raw({{0., 100., 10.}, {100., 100., 12.}, {200., 100., 15.}, {300., 100., 4.}, {400., 100., 10.}});
    network->ep_elevation(10.);
    Channel& ch = *network->channel();
    const std::vector<double> z0 = elevations(ch);
    auto mark = [&]
    {
        for (ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
            cp->aggrad_increase(7.);
    };
    auto expect_shaved_to = [&](double t)
    {
        std::vector<double> z = elevations(ch);
        ASSERT_EQ(z.size(), z0.size());
        for (std::size_t k = 0; k < z.size(); ++k)
        {
            const double d = std::fabs(z0[k] - 10.);
            const double want = d > t ? (z0[k] > 10. ? 10. + t : 10. - t) : z0[k];
            EXPECT_NEAR(z[k], want, 1e-12) << k;
        }
    };

    // A negative step does nothing at all.
    mark();
    network->go_to_ep(-1.);
    EXPECT_EQ(elevations(ch), z0);
    EXPECT_EQ(ch.first()->aggrad_increase(), 7.);

    // Step 0: nothing moves, every point forgets its last rise.
    network->go_to_ep(0.);
    EXPECT_EQ(elevations(ch), z0);
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
        EXPECT_EQ(cp->aggrad_increase(), 0.);

    // Largest distance 6 (the point at 4): a step of 3 brings everything within 3 of 10.
    mark();
    network->go_to_ep(3.);
    expect_shaved_to(3.);
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
    {
        // Raised points keep their rise; lowered and untouched ones forget it.
        const double want = std::fabs(cp->get_elevation() - 7.) < 1e-9 ? 3. : 0.;
        EXPECT_NEAR(cp->aggrad_increase(), want, 1e-12);
    }

    // A step past the largest distance puts every point on the equilibrium.
    network->go_to_ep(100.);
    for (double z : elevations(ch))
        EXPECT_NEAR(z, 10., 1e-12);
}

TEST_F(AggradationTest, IncisionNeverRaisesTheEquilibrium)
{
    raw({{0., 100., 10.}, {100., 100., 11.}, {200., 100., 12.}, {300., 100., 11.}});
    network->setAge(40);

    // Far below already: kept, and the channel moves down by the step where it stands farthest.
    network->ep_elevation(2.);
    network->make_incision(1.);
    EXPECT_EQ(network->ep_elevation(), 2.);
    EXPECT_EQ(network->last_flood_iter(), 40u);
    EXPECT_NEAR(elevations(*network->channel())[2], 11., 1e-12);

    // Above the channel: pulled down below its mean.
    network->ep_elevation(100.);
    const double mean = network->channel()->mean_elevation();
    network->make_incision(0.5);
    EXPECT_NEAR(network->ep_elevation(), mean - 0.5, 1e-12);
    for (double step : {0., 0.3, 2., 5.})
    {
        const double before = network->ep_elevation();
        network->make_incision(step);
        EXPECT_LE(network->ep_elevation(), before);
    }
}

TEST_F(AggradationTest, ChannelLagNeedsAChannelAndRaisesItFirst)
{
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { network->make_channel_lag(1.); }), "_ch != NULL"));
    straight(150., TOP);
    network->ep_elevation(TOP + 2.);
    network->make_channel_lag(0.5);
    for (double z : elevations(*network->channel()))
        EXPECT_NEAR(z, TOP + 0.5, 1e-9);
}

TEST_F(AggradationTest, GhostIsACopyThatLivesUntilTheMigrationEnds)
{
    straight(150., TOP);
    EXPECT_TRUE(network->erode());
    const double depth = network->channel_current_max_depth();
    for (int k = 0; k < 6; ++k)
        network->make_ghost_migration(1, depth / 2.5);
    ASSERT_NE(network->ghost_channel(), nullptr);
    EXPECT_FALSE(network->erode());
    network->end_ghost_migration();
    EXPECT_EQ(network->ghost_channel(), nullptr);
    EXPECT_TRUE(network->erode());
}

} // namespace
