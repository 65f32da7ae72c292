#include "kernel/channel/Channel.h"
#include "kernel/channel/ChannelPoint.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/domain/SteepestError.h"
#include "kernel/network/EntryPoints.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include "NetworkParts.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace
{

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;

constexpr int NX = 30;
constexpr int NY = 11;
constexpr double DX = 10.;
constexpr int MARGIN = 2;
constexpr double HMAX = 2.;
// Fall of the tilted plane per cell along x.
constexpr double FALL = 0.05;

struct Kernel : testing_support::KernelParts
{
    Kernel()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        tracer.setTraceLevel(TRACE_DEBUG);
    }
    // A domain with the flow along the given azimuth (90: towards +x).
    std::unique_ptr<Domain> make(double azimuth = 90.)
    {
        auto dom = std::make_unique<Domain>(&mc, &seed, &mb, nullptr, DX, DX, NX, NY, Point2D(0., 0.), 0., 0.,
                                            0u, Facies(8));
        dom->set_margins(MARGIN, MARGIN);
        dom->update_slope(0.001, azimuth);
        return dom;
    }
};

// Sets the same true and pseudo elevation z(i, j) and erodibility e(i, j) on every node.
void shape(Domain& dom, const std::function<double(int, int)>& z, const std::function<double(int, int)>& e)
{
    for (int j = 0; j < dom.getNy(); j++)
        for (int i = 0; i < dom.getNx(); i++)
        {
            DepositionSet& ds = dom.getObject(i, j);
            ds.set_zbot(std::min(z(i, j), 0.) - 10.);
            ds.set_ztop(z(i, j));
            ds.set_topo_altered(z(i, j));
            ds.set_erod({e(i, j)}, 1e30, 0.);
        }
    dom.compute_border_zmin();
    dom.compute_border_zmax();
}

double tilted(int i, int)
{
    return -FALL * i;
}

double erodible(int, int)
{
    return 1e-8;
}

struct Result
{
    bool ok = false;
    SteepestError error = STEEPEST_OK;
    ChannelPoint* join = nullptr;
    std::vector<Point3D> path;
};

Result walk(const Domain& dom, SeedGenerator& seed, int ix0, int iy0, int ix1, int iy1, bool upward = false,
            const Domain::RouteGrid* route = nullptr)
{
    UniformDistributionGenerator uniform(&seed, 0., 1.);
    Result r;
    r.ok = dom.find_steepest(route, &uniform, ix0, iy0, ix1, iy1, r.join, r.path, r.error, HMAX, upward);
    return r;
}

int ix(const Point3D& p)
{
    return static_cast<int>(p.get_abscissa());
}
int iy(const Point3D& p)
{
    return static_cast<int>(p.get_ordinate());
}

} // namespace

TEST(Steepest, ErrorTexts)
{
    const char* texts[] = {"Cutoff",
                           "OK",
                           "Self intersection",
                           "Exit upstream or downstream",
                           "New path too short",
                           "Depression trap",
                           "Path goes outside extrapolated domain",
                           "Both old and new path are in margins",
                           "Unable to complete path up to margins"};
    for (int e = -1; e <= 7; e++)
        EXPECT_EQ(Domain::steepest_error(e), texts[e + 1]);
    EXPECT_EQ(Domain::steepest_error(8), "Unknown reason");
    EXPECT_EQ(Domain::steepest_error(-2), "Unknown reason");
}

TEST(Steepest, MarginsAndSteps)
{
    Kernel k;
    auto dom = k.make();
    // Flow towards +x: the domain proper spans x in [0, 290], the margins 20 m more on each side.
    EXPECT_TRUE(dom->is_inside_upstream_margin(Point2D(-1., 50.)));
    EXPECT_FALSE(dom->is_inside_upstream_margin(Point2D(0., 50.)));
    EXPECT_FALSE(dom->is_beyond_upstream_margin(Point2D(-20., 50.)));
    EXPECT_TRUE(dom->is_beyond_upstream_margin(Point2D(-20.5, 50.)));
    EXPECT_TRUE(dom->is_inside_downstream_margin(Point2D(291., 50.)));
    EXPECT_FALSE(dom->is_inside_downstream_margin(Point2D(290., 50.)));
    EXPECT_FALSE(dom->is_beyond_downstream_margin(Point2D(310., 50.)));
    EXPECT_TRUE(dom->is_beyond_downstream_margin(Point2D(311., 50.)));
    EXPECT_FALSE(dom->cutoff_ok(Point2D(-1., 50.), false));
    EXPECT_TRUE(dom->cutoff_ok(Point2D(-1., 50.), true));
    EXPECT_FALSE(dom->cutoff_ok(Point2D(295., 50.), true));
    EXPECT_TRUE(dom->steepest_stop(-3, 5, true));
    EXPECT_FALSE(dom->steepest_stop(-2, 5, true));
    EXPECT_TRUE(dom->steepest_stop(NX + MARGIN, 5, false));
    EXPECT_FALSE(dom->steepest_stop(NX + MARGIN - 1, 5, false));
    EXPECT_FALSE(dom->is_outside_extrapolated(Point2D(100., -20.)));
    EXPECT_TRUE(dom->is_outside_extrapolated(Point2D(100., -21.)));
    EXPECT_TRUE(dom->is_outside_extrapolated(Point2D(100., 121.)));

    int i = 5, j = 5;
    dom->next_steepest_node(i, j, false);
    EXPECT_EQ(i, 6);
    EXPECT_EQ(j, 5);
    dom->next_steepest_node(i, j, true);
    dom->next_steepest_node(i, j, true);
    EXPECT_EQ(i, 4);
    EXPECT_EQ(j, 5);
    // Azimuth 45 runs diagonally up the grid; azimuth 180 (south) down it.
    auto diag = k.make(45.);
    diag->next_steepest_node(i, j, false);
    EXPECT_EQ(i, 5);
    EXPECT_EQ(j, 6);
    auto south = k.make(180.);
    south->next_steepest_node(i, j, false);
    EXPECT_EQ(i, 5);
    EXPECT_EQ(j, 5);

    // Direction rule, flow along +x.
    const Vector2D ahead(1., 0.), back(-1., 0.), side(0., 1.), ahead_side(1., 1.), back_side(-1., 1.);
    EXPECT_TRUE(dom->is_valid_dir(false, false, ahead, back));
    EXPECT_TRUE(dom->is_valid_dir(true, false, ahead, ahead_side));
    EXPECT_FALSE(dom->is_valid_dir(true, false, ahead, side));
    EXPECT_FALSE(dom->is_valid_dir(true, false, ahead, back_side));
    // After a step exactly against the flow only steps against it stay valid.
    EXPECT_TRUE(dom->is_valid_dir(true, false, back, back_side));
    EXPECT_FALSE(dom->is_valid_dir(true, false, back, ahead));
    // A reversed rule is the mirror.
    EXPECT_TRUE(dom->is_valid_dir(true, true, back, back_side));
    EXPECT_FALSE(dom->is_valid_dir(true, true, back_side, side));
}

TEST(Steepest, NeighbourWeights)
{
    Kernel k;
    auto dom = k.make();
    const double straight = 1., diagonal = std::pow((1. + std::cos(0.7853981625)) / 2., 2.),
                 square = std::pow((1. + std::cos(1.570796325)) / 2., 2.),
                 wide = std::pow((1. + std::cos(2.3561944875)) / 2., 2.);

    // Flat plane: only the turning angle orders the draw; the reversal is never a candidate.
    shape(
        *dom, [](int, int) { return 0.; }, erodible);
    std::vector<Point2D> cells;
    std::vector<double> weights;
    dom->select_steepest_neighbors(Point2D(5, 5), 0., HMAX, {Point2D(4, 5)}, true, true, 0., cells, weights,
                                   false);
    ASSERT_EQ(cells.size(), 7u);
    auto weight_of = [&](int i, int j)
    {
        for (std::size_t c = 0; c < cells.size(); c++)
            if (cells[c] == Point2D(i, j))
                return weights[c];
        return -1.;
    };
    EXPECT_EQ(weight_of(4, 5), -1.);
    const double unit = weight_of(6, 5);
    EXPECT_NEAR(weight_of(6, 4) / unit, diagonal, 1e-9);
    EXPECT_NEAR(weight_of(6, 6) / unit, diagonal, 1e-9);
    EXPECT_NEAR(weight_of(5, 4) / unit, square, 1e-9);
    EXPECT_NEAR(weight_of(4, 6) / unit, wide, 1e-9);

    // Tilted plane, descending and advancing: three candidates weighted by angle times slope.
    shape(*dom, tilted, erodible);
    const double z = tilted(5, 5);
    dom->select_steepest_neighbors(Point2D(5, 5), z, HMAX, {Point2D(4, 5)}, false, false, z, cells, weights);
    ASSERT_EQ(cells.size(), 3u);
    EXPECT_NEAR(weight_of(6, 5), straight * FALL / DX, 1e-12);
    EXPECT_NEAR(weight_of(6, 6), diagonal * FALL / (DX * std::sqrt(2.)), 1e-12);

    // A node below the reference is refused to a rising walk, a step higher than dz_max to all.
    dom->select_steepest_neighbors(Point2D(5, 5), z, HMAX, {Point2D(4, 5)}, false, true, z, cells, weights);
    EXPECT_TRUE(cells.empty());
    dom->select_steepest_neighbors(Point2D(5, 5), z, FALL / 2., {Point2D(4, 5)}, false, false, z, cells,
                                   weights);
    EXPECT_TRUE(cells.empty());
    // A cell of no erodibility is never entered.
    dom->getObject(6, 5).set_erod({0.}, 1e30, 0.);
    dom->select_steepest_neighbors(Point2D(5, 5), z, HMAX, {Point2D(4, 5)}, false, false, z, cells, weights);
    EXPECT_EQ(cells.size(), 2u);
    EXPECT_EQ(weight_of(6, 5), -1.);
}

TEST(Steepest, TiltedPlaneCourseRunsDownslope)
{
    Kernel k;
    auto dom = k.make();
    shape(*dom, tilted, erodible);
    k.seed.reset(4242);
    const Result r = walk(*dom, k.seed, 0, 5, 1, 5);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.error, STEEPEST_OK);
    ASSERT_EQ(r.path.size(), static_cast<std::size_t>(NX + MARGIN));
    int i = 0, j = 5;
    for (const Point3D& p : r.path)
    {
        EXPECT_EQ(ix(p), i + 1);
        EXPECT_LE(std::abs(iy(p) - j), 1);
        EXPECT_FALSE(dom->is_outside_extrapolated(Point2D(ix(p) * DX, iy(p) * DX)));
        if (dom->isValid(ix(p), iy(p)))
        {
            EXPECT_NEAR(p.get_elevation(), tilted(ix(p), iy(p)), 1e-12);
        }
        i = ix(p);
        j = iy(p);
    }
    EXPECT_TRUE(dom->steepest_stop(i, j, false));

    // Same seed, same course; other seeds give other courses.
    k.seed.reset(4242);
    const Result again = walk(*dom, k.seed, 0, 5, 1, 5);
    ASSERT_EQ(again.path.size(), r.path.size());
    for (std::size_t n = 0; n < r.path.size(); n++)
        EXPECT_EQ(again.path[n], r.path[n]);
    int different = 0;
    for (int s = 1; s <= 5; s++)
    {
        k.seed.reset(4242 + s);
        const Result other = walk(*dom, k.seed, 0, 5, 1, 5);
        bool same = other.path.size() == r.path.size();
        for (std::size_t n = 0; same && n < r.path.size(); n++)
            same = other.path[n] == r.path[n];
        different += same ? 0 : 1;
    }
    EXPECT_GE(different, 4);

    // Climbing from the middle reaches the upstream margin.
    const Result up = walk(*dom, k.seed, 15, 5, 14, 5, true);
    ASSERT_TRUE(up.ok);
    EXPECT_TRUE(dom->steepest_stop(ix(up.path.back()), iy(up.path.back()), true));
}

TEST(Steepest, EachErrorFromAConstructedTopography)
{
    Kernel k;
    auto dom = k.make();

    // Cutoff: the old channel crosses the plane at x = 150 m.
    shape(*dom, tilted, erodible);
    std::vector<double> props(MD_NB_CLASS_GR, 1. / MD_NB_CLASS_GR);
    ChannelPoint a(&k.mc, props, 20., Point2D(150., 0.), nullptr, nullptr);
    ChannelPoint b(&k.mc, props, 20., Point2D(150., 100.), &a, nullptr);
    Domain::RouteGrid route(DX, DX, NX + 2 * MARGIN, NY + 2 * MARGIN, -MARGIN * DX, -MARGIN * DX);
    route.initialize(std::pair<ChannelPoint*, ChannelPoint*>(nullptr, nullptr));
    for (int j = 0; j < route.getNy(); j++)
        route.getObject(15 + MARGIN, j) = std::make_pair(&a, &b);
    Result r = walk(*dom, k.seed, 0, 5, 1, 5, false, &route);
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.error, STEEPEST_CUTOFF);
    EXPECT_EQ(r.join, &b);
    EXPECT_EQ(ix(r.path.back()), 14);

    // Depression trap: a pit walled higher than a channel depth.
    shape(
        *dom, [](int i, int j) { return (j == 5 && (i == 10 || i == 11)) ? 0. : 3. * HMAX; }, erodible);
    r = walk(*dom, k.seed, 10, 5, 11, 5);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, STEEPEST_DEPRESSION_TRAP);
    EXPECT_EQ(r.path.size(), 1u);

    // Depression trap: an erodible corridor with a dead end; the walk turns
    // sideways only after the relaxed passes, and traces it.
    auto corridor = [](int i, int j) { return (j == 5 && i <= 5) ? 1e-8 : 0.; };
    shape(*dom, tilted, corridor);
    g_trace.clear();
    r = walk(*dom, k.seed, 1, 5, 2, 5);
    EXPECT_EQ(r.error, STEEPEST_DEPRESSION_TRAP);
    EXPECT_EQ(ix(r.path.back()), 5);
    EXPECT_EQ(g_trace.find("Leaving depression"), std::string::npos);

    // Self intersection: the corridor hooks back onto itself.
    auto hook = [](int i, int j)
    { return ((j == 5 && i <= 5) || (j == 6 && (i == 4 || i == 5))) ? 1e-8 : 0.; };
    shape(*dom, tilted, hook);
    for (int s = 1; s <= 4; s++)
    {
        k.seed.reset(s);
        g_trace.clear();
        r = walk(*dom, k.seed, 1, 5, 2, 5);
        EXPECT_FALSE(r.ok);
        EXPECT_EQ(r.error, STEEPEST_SELF_INTERSECTION);
        EXPECT_NE(g_trace.find("     Leaving depression ("), std::string::npos);
        EXPECT_NE(g_trace.find(" true_topo_cur = "), std::string::npos);
    }

    // Exit upstream: a corridor falling against the flow leads out through the upstream margin.
    shape(
        *dom, [](int i, int) { return FALL * i; },
        [](int i, int j) { return (j == 5 && i <= 3) ? 1e-8 : 0.; });
    r = walk(*dom, k.seed, 3, 5, 2, 5);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, STEEPEST_EXIT_WRONG_MARGIN);
    EXPECT_EQ(ix(r.path.back()), -MARGIN - 1);

    // Outside: a corridor across the flow leads out through the side.
    shape(
        *dom, [](int, int j) { return 0.01 * j; }, [](int i, int) { return i == 5 ? 1e-8 : 0.; });
    r = walk(*dom, k.seed, 5, 2, 5, 1);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, STEEPEST_OUTSIDE_DOMAIN);
    EXPECT_EQ(iy(r.path.back()), -MARGIN - 1);
}

TEST(EntryPoints, CellsOfTheUpstreamEdge)
{
    Kernel k;
    struct Case
    {
        double azimuth;
        int count;
        int fixed_i;
        int fixed_j;
    };
    // +x, -x, +y, -y and an oblique flow mostly along +x.
    const Case cases[] = {
        {90., NY, 0, -1}, {270., NY, NX - 1, -1}, {0., NX, -1, 0}, {180., NX, -1, NY - 1}, {60., NY, 0, -1}};
    for (const Case& c : cases)
    {
        auto dom = k.make(c.azimuth);
        EntryPoints entries;
        entries.calculate(*dom, false);
        ASSERT_EQ(static_cast<int>(entries.size()), c.count) << c.azimuth;
        std::set<std::pair<int, int>> distinct;
        for (const PairTopoIndex& e : entries)
        {
            EXPECT_TRUE(dom->isValid(e.ix, e.iy));
            if (c.fixed_i >= 0)
            {
                EXPECT_EQ(e.ix, c.fixed_i);
            }
            if (c.fixed_j >= 0)
            {
                EXPECT_EQ(e.iy, c.fixed_j);
            }
            distinct.insert({e.ix, e.iy});
        }
        EXPECT_EQ(distinct.size(), entries.size());
    }
}

TEST(EntryPoints, ValuateAndDraw)
{
    Kernel k;
    auto dom = k.make();
    shape(
        *dom, [](int, int j) { return 0.1 * j; }, erodible);
    EntryPoints entries;
    EXPECT_EQ(assertion_text([&] { entries.valuate(*dom, 1.); }).rfind("!empty()", 0), 0u);
    PairTopoIndex entry;
    EXPECT_FALSE(entries.select_next(&k.seed, entry));

    entries.calculate(*dom, false);
    entries.valuate(*dom, 2.);
    // Weight = highest elevation + 0.01 * value - elevation.
    double sum = 0.;
    for (const PairTopoIndex& e : entries)
    {
        EXPECT_NEAR(e.weight, 0.1 * (NY - 1) + 0.02 - 0.1 * e.iy, 1e-12);
        sum += e.weight;
    }
    EXPECT_DOUBLE_EQ(entries.upper_bound(), sum);
    EXPECT_EQ(entries.lower_bound(), 0.);

    // Each draw gives an upstream-edge cell not tried before; all tried gives false.
    std::set<int> rows;
    int draws = 0;
    while (entries.select_next(&k.seed, entry))
    {
        ++draws;
        EXPECT_EQ(entry.ix, 0);
        EXPECT_TRUE(rows.insert(entry.iy).second);
    }
    EXPECT_GE(draws, 1);
    for (const PairTopoIndex& e : entries)
        EXPECT_EQ(e.tried, rows.count(e.iy) == 1);
    for (PairTopoIndex& e : entries)
        e.tried = true;
    EXPECT_FALSE(entries.select_next(&k.seed, entry));

    // With value 0 the highest cell weighs nothing and is never drawn.
    entries.valuate(*dom, 0.);
    EXPECT_EQ(entries.back().weight, 0.);
    for (int s = 1; s <= 50; s++)
    {
        k.seed.reset(s);
        entries.valuate(*dom, 0.);
        ASSERT_TRUE(entries.select_next(&k.seed, entry));
        EXPECT_NE(entry.iy, NY - 1);
    }
    // Same seed, same sequence of entries.
    auto sequence = [&](int s)
    {
        k.seed.reset(s);
        entries.valuate(*dom, 2.);
        std::vector<int> out;
        while (entries.select_next(&k.seed, entry))
            out.push_back(entry.iy);
        return out;
    };
    EXPECT_EQ(sequence(7), sequence(7));
}

namespace
{

struct NetworkKernel : Kernel
{
    NetworkKernel()
    {
        params.setParamDouble("CHNL_MAX_DEPTH", HMAX);
        params.setParamDouble("CHNL_WIDTH", 20.);
        params.setParamDouble("CHNL_MARGIN", 1.);
        params.setParamDouble("CHNL_FLW_DIR", 90.);
        params.setParamDouble("DOMAIN_SLOPE", 0.001);
        dom = make();
        shape(*dom, tilted, erodible);
        net = std::make_unique<Network>(&mc, &params, dom.get(), &seed, &mb, &uniform);
        net->init_network();
    }
    UniformDistributionGenerator uniform{&seed, 0., 1.};
    std::unique_ptr<Domain> dom;
    std::unique_ptr<Network> net;
};

std::vector<Point2D> chain_of(ChannelPoint* head)
{
    std::vector<Point2D> out;
    for (ChannelPoint* cp = head; cp != nullptr; cp = cp->next())
        out.emplace_back(cp->get_abscissa(), cp->get_ordinate());
    return out;
}

void delete_chain(ChannelPoint* head)
{
    while (head != nullptr)
    {
        ChannelPoint* next = head->next();
        delete head;
        head = next;
    }
}

} // namespace

TEST(Steepest, ConstructedChannelCrossesTheDomain)
{
    NetworkKernel k;
    ASSERT_EQ(k.dom->get_mx(), MARGIN);
    k.seed.reset(99);
    ASSERT_TRUE(k.net->construct_steepest_channel());
    const Channel* ch = k.net->channel();
    ASSERT_NE(ch, nullptr);
    EXPECT_EQ(ch->first()->get_abscissa(), 0.);
    EXPECT_TRUE(k.dom->is_beyond_downstream_margin(*ch->last()));
    EXPECT_NE(g_trace.find("   Steepest Channel Creation Success"), std::string::npos);
    EXPECT_NE(g_trace.find("   Attempt for Creating New Channel Iter 0 #1 from [0, "), std::string::npos);
    std::vector<Point2D> first;
    for (const ChannelPoint* cp = ch->first(); cp != nullptr; cp = cp->next())
        first.emplace_back(cp->get_abscissa(), cp->get_ordinate());

    NetworkKernel again;
    again.seed.reset(99);
    ASSERT_TRUE(again.net->construct_steepest_channel());
    std::vector<Point2D> second;
    for (const ChannelPoint* cp = again.net->channel()->first(); cp != nullptr; cp = cp->next())
        second.emplace_back(cp->get_abscissa(), cp->get_ordinate());
    EXPECT_EQ(first, second);
}

TEST(Steepest, NewCourseErrors)
{
    NetworkKernel k;
    ChannelPoint* join = nullptr;
    SteepestError error = STEEPEST_OK;

    // A first step on the start node is too short.
    EXPECT_EQ(k.net->find_new_course(Point2D(50., 50.), Point2D(5, 5), Point2D(5, 5), join, error, nullptr,
                                     nullptr, false),
              nullptr);
    EXPECT_EQ(error, STEEPEST_TOO_SHORT);

    // Downstream from the middle: the chain starts after the start node and ends beyond the margin.
    ChannelPoint* head = k.net->find_new_course(Point2D(150., 50.), Point2D(15, 5), Point2D(16, 5), join,
                                                error, nullptr, nullptr, false);
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(error, STEEPEST_OK);
    std::vector<Point2D> down = chain_of(head);
    EXPECT_EQ(down.front(), Point2D(160., 50.));
    EXPECT_TRUE(k.dom->is_beyond_downstream_margin(down.back()));
    delete_chain(head);

    // Upward: the chain runs from beyond the upstream margin down to the start.
    head = k.net->find_new_course(Point2D(150., 50.), Point2D(15, 5), Point2D(14, 5), join, error, nullptr,
                                  nullptr, true);
    ASSERT_NE(head, nullptr);
    std::vector<Point2D> up = chain_of(head);
    EXPECT_TRUE(k.dom->is_beyond_upstream_margin(up.front()));
    EXPECT_EQ(up.back(), Point2D(140., 50.));
    delete_chain(head);

    // Start and course both in the downstream margin.
    EXPECT_EQ(k.net->find_new_course(Point2D(300., 50.), Point2D(30, 5), Point2D(31, 5), join, error, nullptr,
                                     nullptr, false),
              nullptr);
    EXPECT_EQ(error, STEEPEST_BOTH_IN_MARGINS);

    // Completing a channel's end must not meet that channel.
    Channel ch(&k.mc, std::vector<Point3D>{Point3D(200., 0., 0.), Point3D(200., 100., 0.)});
    Domain::RouteGrid route(DX, DX, NX + 2 * MARGIN, NY + 2 * MARGIN, -MARGIN * DX, -MARGIN * DX);
    route.initialize(std::pair<ChannelPoint*, ChannelPoint*>(nullptr, nullptr));
    for (int j = 0; j < route.getNy(); j++)
        route.getObject(20 + MARGIN, j) = std::make_pair(ch.first(), ch.last());
    EXPECT_EQ(k.net->find_new_course(Point2D(150., 50.), Point2D(15, 5), Point2D(16, 5), join, error, &route,
                                     &ch, false),
              nullptr);
    EXPECT_EQ(error, STEEPEST_INCOMPLETE);
    EXPECT_EQ(join, nullptr);
    // Without a channel to complete, the same course is a cutoff onto it.
    head = k.net->find_new_course(Point2D(150., 50.), Point2D(15, 5), Point2D(16, 5), join, error, &route,
                                  nullptr, false);
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(error, STEEPEST_CUTOFF);
    EXPECT_EQ(join, ch.last());
    EXPECT_EQ(chain_of(head).back().get_abscissa(), 190.);
    delete_chain(head);
}

TEST(Steepest, ConstructionFailsWhenNoEntryLeadsOut)
{
    NetworkKernel k;
    // Nothing is erodible: every entry is trapped at once.
    shape(*k.dom, tilted, [](int, int) { return 0.; });
    EXPECT_FALSE(k.net->construct_steepest_channel());
    EXPECT_EQ(k.net->channel(), nullptr);
    EXPECT_NE(g_trace.find("     Steepest Channel Creation Attempt: Depression trap"), std::string::npos);
    EXPECT_NE(g_trace.find("     Steepest Channel Creation Failure: Depression trap"), std::string::npos);
    EXPECT_NE(g_trace.find("   Steepest Channel Creation Failed !!!"), std::string::npos);
    for (const PairTopoIndex& e : k.net->entry_points())
        EXPECT_TRUE(e.tried);
}
