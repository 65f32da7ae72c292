// Neck cutoffs: the cell bookkeeping of the channel grid, the search for
// points that come within a width of each other, and the removal of the loops
// with the cutoff counters.

#include "kernel/channel/ChannelGrid.h"
#include "kernel/channel/CutOff.h"
#include "kernel/network/Network.h"

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
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::silent;

namespace
{

constexpr double WIDTH = 30.;

class CutOffTest : public ::testing::Test
{
protected:
    CutOffTest()
    {
        tracer.setTraceFunction(silent);
        // Width, depth and spacing come from a straight channel given its geometry.
        std::vector<Point3D> line;
        for (int i = 0; i < 5; ++i)
            line.emplace_back(i * 100., 0., 10.);
        model = std::make_unique<Channel>(&mc, line);
        model->init_geom(3., WIDTH, 375., 0.001);
    }

    // A channel through exactly these points (no respacing), with the model's
    // width and the abscissa of each point its length along the chain.
    std::unique_ptr<Channel> make_channel(const std::vector<Point2D>& positions) const
    {
        std::vector<Point3D> points;
        for (const Point2D& p : positions)
            points.emplace_back(p, 10.);
        auto channel = std::make_unique<Channel>(&mc, *model, points);
        double s = 0.;
        for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        {
            if (cp->prev() != nullptr)
                s += cp->distance2D(*cp->prev());
            cp->s(s);
            cp->hmean(2.);
            // Bends of alternating sign, so that the meander measures exist.
            cp->curvature(std::sin(s / 60.) * 0.01);
        }
        return channel;
    }

    static ChannelGrid grid_for(const Channel& channel)
    {
        Point2D lo, hi;
        double xmin = 1e30, ymin = 1e30, xmax = -1e30, ymax = -1e30;
        for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next())
        {
            xmin = std::min(xmin, cp->getX());
            ymin = std::min(ymin, cp->getY());
            xmax = std::max(xmax, cp->getX());
            ymax = std::max(ymax, cp->getY());
        }
        const int nx = static_cast<int>(std::ceil((xmax - xmin) / WIDTH)) + 1;
        const int ny = static_cast<int>(std::ceil((ymax - ymin) / WIDTH)) + 1;
        return ChannelGrid(std::floor(xmin), std::floor(ymin), nx, ny, WIDTH, WIDTH);
    }

    static int index_of(const Channel& channel, const ChannelPoint* cp)
    {
        int i = 0;
        for (const ChannelPoint* p = channel.first(); p != nullptr; p = p->next(), ++i)
            if (p == cp)
                return i;
        return -1;
    }

    // Chain indices of the cuts found on `positions`.
    std::vector<std::pair<int, int>> cuts_of(const std::vector<Point2D>& positions) const
    {
        auto channel = make_channel(positions);
        ChannelGrid grid = grid_for(*channel);
        grid.initialize(*channel);
        std::vector<CutOff> cuts;
        grid.get_intersections(*channel, cuts);
        EXPECT_EQ(grid.count(), 0);
        std::vector<std::pair<int, int>> out;
        for (const CutOff& cut : cuts)
            out.emplace_back(index_of(*channel, cut.upstream()), index_of(*channel, cut.downstream()));
        return out;
    }

    Tracer tracer;
    Parameters params{&tracer};
    MeanderCalculator mc{&params, &tracer};
    SeedGenerator seed;
    MassBalance mb;
    std::unique_ptr<Channel> model;
};

// A hairpin: out along y = 0 in steps of 10 m, then back along y = gap.
std::vector<Point2D> hairpin(double gap)
{
    std::vector<Point2D> points;
    for (int i = 0; i <= 5; ++i)
        points.emplace_back(10. * i, 0.);
    for (int i = 0; i <= 5; ++i)
        points.emplace_back(50. - 10. * i, gap);
    return points;
}

TEST_F(CutOffTest, GridKeepsOneEntryPerPointInItsCellAndTheSearchEmptiesIt)
{
    std::vector<Point2D> points;
    for (int i = 0; i < 12; ++i)
        points.emplace_back(17. * i, 3. * i);
    auto channel = make_channel(points);
    ChannelGrid grid = grid_for(*channel);
    grid.initialize(*channel);
    ASSERT_EQ(grid.cells().size(), 12u);
    EXPECT_EQ(grid.count(), 12);
    int idx = 0;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next(), ++idx)
    {
        const IPos cell = grid.cells()[idx];
        int ix = 0, iy = 0;
        cp->get_grid_indices(grid, ix, iy);
        EXPECT_EQ(cell.x, ix);
        EXPECT_EQ(cell.y, iy);
        const auto& map = grid.getObject(cell.x, cell.y);
        ASSERT_EQ(map.count(idx), 1u);
        EXPECT_EQ(map.at(idx), cp);
    }

    // Refilling starts from empty cells.
    grid.initialize(*channel);
    EXPECT_EQ(grid.count(), 12);
    std::vector<CutOff> cuts{CutOff(nullptr, nullptr)};
    grid.get_intersections(*channel, cuts);
    EXPECT_TRUE(cuts.empty());
    EXPECT_EQ(grid.count(), 0);

    grid.clear();
    EXPECT_TRUE(grid.cells().empty());
    EXPECT_EQ(grid.count(), 0);
    grid.get_intersections(*channel, cuts);
    EXPECT_TRUE(cuts.empty());

    // Points outside the grid are clamped to its border cells.
    ChannelGrid small(0., 0., 2, 2, WIDTH, WIDTH);
    small.initialize(*channel);
    EXPECT_EQ(small.count(), 12);
    EXPECT_EQ(small.cells().back().x, 1);
    EXPECT_EQ(small.cells().back().y, 1);
}

TEST_F(CutOffTest, OnlyPointsStrictlyNearerThanAWidthAndFarAlongTheChainCut)
{
    // Exactly one width apart: no cut.
    EXPECT_TRUE(cuts_of(hairpin(WIDTH)).empty());

    // Just nearer: the first point cuts to the farthest point within a width,
    // although two more points of the return leg are also nearer than a width.
    const auto cuts = cuts_of(hairpin(20.));
    ASSERT_EQ(cuts.size(), 1u);
    EXPECT_EQ(cuts[0], std::make_pair(0, 11));

    // Neighbours up to three links away never cut, however close.
    const std::vector<Point2D> tight{{0., 0.},   {10., 0.},  {10., 1.},  {0., 1.},
                                     {-40., 1.}, {-80., 1.}, {-120., 1.}};
    EXPECT_TRUE(cuts_of(tight).empty());
    // The fourth does.
    const std::vector<Point2D> tight4{{0., 0.}, {10., 0.}, {20., 1.}, {10., 2.}, {0., 2.}, {-40., 2.}};
    const auto cuts4 = cuts_of(tight4);
    ASSERT_EQ(cuts4.size(), 1u);
    EXPECT_EQ(cuts4[0], std::make_pair(0, 4));
}

// Two loops touching at one point: up from A to B, down from B to C.
std::vector<Point2D> double_loop()
{
    return {{-25., 0.},  {0., 0.},  {0., 40.},   {0., 80.},   {12., 120.},  {25., 80.},
            {25., 40.},  {25., 0.}, {25., -40.}, {25., -80.}, {37., -120.}, {50., -80.},
            {50., -40.}, {50., 0.}, {75., 0.},   {100., 0.}};
}

TEST_F(CutOffTest, ChainedCutsAreFoundInOrderAndDoNotOverlap)
{
    const auto cuts = cuts_of(double_loop());
    ASSERT_EQ(cuts.size(), 2u);
    EXPECT_EQ(cuts[0], std::make_pair(1, 7));
    EXPECT_EQ(cuts[1], std::make_pair(7, 13));
}

class NetworkCutOffTest : public CutOffTest
{
protected:
    NetworkCutOffTest()
    {
        params.setParamDouble("CHNL_WIDTH", WIDTH);
        params.setParamDouble("CHNL_MARGIN", 2.);
        params.setParamDouble("DOMAIN_SLOPE", 0.001);
        params.setParamDouble("CHNL_FLW_DIR", 0.);
        params.setParamDouble("EROD_COEF", 2e-8);
        // A domain far from the loops, so that the test sees the chain only.
        domain = std::make_unique<Domain>(&mc, &seed, &mb, nullptr, 10., 10., 10, 10, Point2D(0., 0.), 0., 0.,
                                          0u, Facies(Overbank::_fd.id()));
        domain->update_slope(0.001, 0.);
        domain->set_margins(1, 1);
        network = std::make_unique<Network>(&mc, &params, domain.get(), &seed, &mb, &uniform);
    }

    // Gives the network a channel through `positions`, shifted far below the domain.
    Channel* install(std::vector<Point2D> positions, double dy = -2000.)
    {
        for (Point2D& p : positions)
            p += Point2D(0., dy);
        Channel* channel = make_channel(positions).release();
        network->adopt_channel(channel);
        network->create_intersection_grid();
        return channel;
    }

    static std::vector<Point2D> positions_of(const Channel& channel)
    {
        std::vector<Point2D> out;
        for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next())
            out.emplace_back(cp->getX(), cp->getY() + 2000.);
        return out;
    }

    UniformDistributionGenerator uniform{&seed, 0., 1.};
    std::unique_ptr<Domain> domain;
    std::unique_ptr<Network> network;
};

} // namespace

TEST_F(NetworkCutOffTest, MergedLoopIsRemovedAndCountedOnce)
{
    Channel* channel = install(double_loop());
    ASSERT_NE(network->channel_grid(), nullptr);
    EXPECT_TRUE(network->check_intersections(channel, false));
    // A at index 1 to C at index 13 left the chain, both included.
    const std::vector<Point2D> left = positions_of(*channel);
    ASSERT_EQ(left.size(), 3u);
    EXPECT_EQ(left[0], Point2D(-25., 0.));
    EXPECT_EQ(left[1], Point2D(75., 0.));
    EXPECT_EQ(left[2], Point2D(100., 0.));
    EXPECT_EQ(channel->first()->next()->prev(), channel->first());
    EXPECT_EQ(network->nb_cutoffs(), 1u);
    EXPECT_EQ(network->nb_cutoffs_total(), 1u);

    // Nothing left to cut.
    EXPECT_FALSE(network->check_intersections(channel, false));
    EXPECT_EQ(network->nb_cutoffs(), 1u);
}

TEST_F(NetworkCutOffTest, GridCoversTheRunningBoxOfTheChannel)
{
    Channel* channel = install(double_loop());
    channel->update_bounding_box();
    // The loops move 500 m north: the box keeps where they were, and so does the grid.
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        cp->reset(cp->getX(), cp->getY() + 500., cp->get_elevation());
    channel->update_bounding_box();
    network->create_intersection_grid();
    const ChannelGrid* grid = network->channel_grid();
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->getY0(), -2120.);
    EXPECT_EQ(grid->getX0(), std::floor(std::min(-25., domain->get_upstream_corner().get_abscissa())));
    const double top = std::max(domain->get_upstream_corner().get_ordinate(),
                                domain->get_downstream_corner().get_ordinate());
    EXPECT_EQ(grid->getNy(), static_cast<int>(std::ceil((top + 2120.) / WIDTH)) + 1);
    // The cuts are those of the points where they stand now.
    EXPECT_TRUE(network->check_intersections(channel, false));
    EXPECT_EQ(network->nb_cutoffs(), 1u);
    EXPECT_EQ(channel->number_of_points(), 3);
}

TEST_F(NetworkCutOffTest, ShortLoopIsRemovedWithoutCounting)
{
    // A loop of 42 m, shorter than two widths: filled and removed, not a meander cutoff.
    const std::vector<Point2D> points{{-10., -40.}, {0., 0.},  {10., 0.},  {20., 5.},
                                      {10., 10.},   {0., 10.}, {-10., 60.}};
    Channel* channel = install(points);
    EXPECT_TRUE(network->check_intersections(channel, false));
    EXPECT_EQ(channel->number_of_points(), 2);
    EXPECT_EQ(network->nb_cutoffs(), 0u);
    EXPECT_EQ(network->first_cutoff_iter(), 0u);
}

TEST_F(NetworkCutOffTest, FirstCutoffRecordWaitsForANonZeroTime)
{
    tracer.setTraceLevel(TRACE_DEBUG);
    tracer.setTraceFunction(capture);
    g_trace.clear();
    Channel* channel = install(double_loop());
    EXPECT_TRUE(network->check_intersections(channel, false));
    EXPECT_NE(g_trace.find("New meander cutoff at ds=487.6"), std::string::npos) << g_trace;
    EXPECT_NE(g_trace.find(" at age=0"), std::string::npos) << g_trace;
    EXPECT_EQ(network->first_cutoff_iter(), 0u);
    EXPECT_EQ(network->first_cutoff_time(), 0.);

    // Time 0 means no record yet: the next cutoff writes it.
    network->setAge(5);
    channel = install(double_loop());
    EXPECT_TRUE(network->check_intersections(channel, false));
    EXPECT_EQ(network->first_cutoff_iter(), 5u);
    EXPECT_GT(network->first_cutoff_time(), 0.);
    const double time5 = network->first_cutoff_time();
    EXPECT_GT(network->first_cutoff_sinuosity(), 0.);

    network->setAge(9);
    channel = install(double_loop());
    EXPECT_TRUE(network->check_intersections(channel, false));
    EXPECT_EQ(network->first_cutoff_iter(), 5u);
    EXPECT_EQ(network->first_cutoff_time(), time5);
    EXPECT_EQ(network->nb_cutoffs(), 3u);
    EXPECT_EQ(network->nb_cutoffs_total(), 3u);

    network->reset_first_cutoff();
    EXPECT_EQ(network->first_cutoff_time(), 0.);
    tracer.setTraceFunction(silent);
}

TEST_F(NetworkCutOffTest, GhostLoopVanishesWithoutCountOrDeposit)
{
    Channel* channel = install(double_loop(), 0.);
    const double top_before = domain->getTopoRel(3, 3, true);
    EXPECT_TRUE(network->check_intersections(channel, true));
    EXPECT_EQ(channel->number_of_points(), 3);
    EXPECT_EQ(network->nb_cutoffs(), 0u);
    EXPECT_EQ(domain->getTopoRel(3, 3, true), top_before);
}

TEST_F(NetworkCutOffTest, NothingHappensWithoutChannelOrGrid)
{
    EXPECT_FALSE(network->check_intersections(nullptr, false));
    auto channel = make_channel(double_loop());
    // No grid has been made yet.
    EXPECT_FALSE(network->check_intersections(channel.get(), false));
    EXPECT_EQ(channel->number_of_points(), 16);
}

TEST_F(NetworkCutOffTest, ConnectReplacesTheReachBetweenBreachAndJoin)
{
    std::vector<Point2D> line;
    for (int i = 0; i < 10; ++i)
        line.emplace_back(100. * i, 0.);
    Channel* channel = install(line);
    std::vector<ChannelPoint*> cps;
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        cps.push_back(cp);

    // A new path of two points beside the old course.
    const std::vector<double> proportions = params.getSedProportions();
    ChannelPoint* head =
        new ChannelPoint(&mc, proportions, WIDTH, Point3D(300., -1950., 10.), nullptr, nullptr);
    new ChannelPoint(&mc, proportions, WIDTH, Point3D(500., -1950., 10.), head, nullptr);

    LociList loci{{0.3, cps[3]}, {0.2, cps[5]}, {0.1, cps[1]}};
    network->connect(channel, head, loci, cps[7]);

    // The breach point and the reach down to the join are gone; the upstream locus stays.
    ASSERT_EQ(loci.size(), 1u);
    EXPECT_EQ(loci.front().second, cps[1]);
    std::vector<double> xs;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
    {
        xs.push_back(cp->getX());
        if (cp->next() != nullptr)
        {
            EXPECT_EQ(cp->next()->prev(), cp);
        }
    }
    EXPECT_EQ(xs, (std::vector<double>{0., 100., 200., 300., 500., 700., 800., 900.}));
    EXPECT_EQ(channel->number_of_points(), 8);
    EXPECT_EQ(channel->last()->getX(), 900.);

    EXPECT_EQ(
        assertion_text([&]() { network->connect(channel, nullptr, loci, nullptr); }).find("join != NULL"),
        0u);

    // A join that is not downstream of the breach is refused before anything
    // changes; the first point once made the channel its own tail and deleted it.
    loci = {{0.3, channel->first()->next()->next()}};
    const std::vector<ChannelPoint*> joins{channel->first(), channel->first()->next(),
                                           channel->first()->next()->next()};
    for (ChannelPoint* join : joins)
    {
        EXPECT_TRUE(testing_support::is_assertion_of(
            assertion_text([&]() { network->connect(channel, nullptr, loci, join); }), "join after breach"));
        EXPECT_EQ(network->channel(), channel);
        EXPECT_EQ(channel->number_of_points(), 8);
        EXPECT_EQ(channel->last()->getX(), 900.);
    }
}
