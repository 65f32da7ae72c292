// The network's care of its channel: ends held at the margins, margins and
// scale from the parameters, and a channel that migrates for many steps
// without leaving the domain and its margins.

#include "kernel/network/Network.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/channel/Centerline.h"
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

using testing_support::capture;
using testing_support::g_trace;
using testing_support::silent;

namespace
{

constexpr double TOP = 10.;
constexpr double DX = 10.;
constexpr int NX = 60;
constexpr int NY = 40;

class NetworkTest : public ::testing::Test, protected testing_support::NetworkParts
{
protected:
    NetworkTest()
    {
        tracer.setTraceFunction(silent);
        set_channel(30., 3., 375., 2.);
        make_domain(NX, NY, DX, Facies(Overbank::_fd.id()));
        domain->deposit_uniform_thickness(TOP, Facies(Overbank::_fd.id()), 0u);
        make_network();
    }

    std::unique_ptr<Channel> make_channel(const std::vector<Point3D>& points)
    {
        return std::make_unique<Channel>(&mc, points);
    }

    static std::vector<Point3D> xs(const std::vector<double>& x)
    {
        std::vector<Point3D> points;
        for (double v : x)
            points.emplace_back(v, 0., TOP);
        return points;
    }

    // A centerline across the domain and beyond its margins, as y = y0 + a sin(2 pi x / wavelength).
    static Centerline crossing(double a, double y0 = 200.)
    {
        Centerline cl;
        for (double x = -150.; x <= NX * DX + 150.; x += 15.)
            cl.add(x, y0 + a * std::sin(6.2831853 * x / 375.), TOP);
        return cl;
    }

    double upstream_x() const { return domain->get_upstream_corner().get_abscissa(); }
    double downstream_x() const { return domain->get_downstream_corner().get_abscissa(); }

    // An end never lies beyond its margin line, nor farther inside than the
    // half width from which it would be grown back.
    void expect_ends_at_margins(const Channel& channel) const
    {
        const double w2 = channel.half_width();
        EXPECT_GE(channel.first()->getX(), upstream_x() - 1e-6);
        EXPECT_LE(channel.first()->getX(), upstream_x() + w2);
        EXPECT_LE(channel.last()->getX(), downstream_x() + 1e-6);
        EXPECT_GE(channel.last()->getX(), downstream_x() - w2);
    }

    // Every point within the domain and its margins, give or take `slack`.
    void expect_inside_with_margins(const Channel& channel, double slack = 0.) const
    {
        const double xlo = -domain->get_mx() * DX - slack, xhi = (NX - 1 + domain->get_mx()) * DX + slack;
        const double ylo = -domain->get_my() * DX - slack, yhi = (NY - 1 + domain->get_my()) * DX + slack;
        for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next())
        {
            EXPECT_GE(cp->getX(), xlo - 1e-6);
            EXPECT_LE(cp->getX(), xhi + 1e-6);
            EXPECT_GE(cp->getY(), ylo - 1e-6);
            EXPECT_LE(cp->getY(), yhi + 1e-6);
        }
    }
};

TEST_F(NetworkTest, EndsSlideOntoOrDropBeyondTheReferenceLines)
{
    const Point2D up(0., 0.), down(100., 0.);

    // On the line: r = 0, the point stays. Far inside: |r| >= 1.5, it stays too.
    auto on_line = make_channel(xs({0., 10., 20., 30.}));
    EXPECT_FALSE(on_line->constrain_extremities(up, down, 1., 0.));
    EXPECT_EQ(on_line->first()->getX(), 0.);
    EXPECT_EQ(on_line->last()->getX(), 30.);

    // A first segment across the flow has a null denominator, held at 1e-6: the point stays.
    auto across = make_channel({{5., 0., TOP}, {5., 10., TOP}, {20., 10., TOP}, {90., 10., TOP}});
    EXPECT_FALSE(across->constrain_extremities(up, down, 1., 0.));
    EXPECT_EQ(across->first()->getX(), 5.);
    EXPECT_EQ(across->first()->getY(), 0.);

    // Beyond by 3 m with a follower inside: slides along its segment, elevation too.
    auto slide =
        make_channel({{-3., 0., 10.}, {7., 0., 20.}, {50., 0., 20.}, {96., 0., 20.}, {106., 2., 30.}});
    EXPECT_FALSE(slide->constrain_extremities(up, down, 1., 0.));
    EXPECT_NEAR(slide->first()->getX(), 0., 1e-12);
    EXPECT_NEAR(slide->first()->getZ(), 13., 1e-12);
    // Downstream mirror: r = (100 - 106) / 10 = -0.6.
    EXPECT_NEAR(slide->last()->getX(), 100., 1e-12);
    EXPECT_NEAR(slide->last()->getY(), 0.8, 1e-12);
    EXPECT_NEAR(slide->last()->getZ(), 24., 1e-12);
    EXPECT_EQ(slide->number_of_points(), 5);

    // Beyond with its follower: one point dropped at each end per call.
    auto drop = make_channel(xs({-20., -5., 10., 50., 103., 110.}));
    EXPECT_TRUE(drop->constrain_extremities(up, down, 1., 0.));
    EXPECT_EQ(drop->number_of_points(), 4);
    EXPECT_EQ(drop->first()->getX(), -5.);
    EXPECT_EQ(drop->first()->prev(), nullptr);
    EXPECT_EQ(drop->last()->getX(), 103.);
    EXPECT_EQ(drop->last()->next(), nullptr);
    // The next call slides the new ends onto the lines.
    EXPECT_FALSE(drop->constrain_extremities(up, down, 1., 0.));
    EXPECT_NEAR(drop->first()->getX(), 0., 1e-12);
    EXPECT_NEAR(drop->last()->getX(), 100., 1e-12);

    // Against a flow running towards -x the roles of the lines follow the flow.
    auto reverse = make_channel(xs({110., 103., 50., 10., -5., -20.}));
    EXPECT_TRUE(reverse->constrain_extremities(down, up, -1., 0.));
    EXPECT_EQ(reverse->first()->getX(), 103.);
    EXPECT_EQ(reverse->last()->getX(), -5.);
}

TEST_F(NetworkTest, NothingToManageWithoutAChannel)
{
    EXPECT_FALSE(network->has_channel());
    EXPECT_FALSE(network->manage_extremities(nullptr));
    EXPECT_FALSE(network->constrain_extremities(nullptr));
    EXPECT_FALSE(network->complete_upstream(nullptr));
    EXPECT_FALSE(network->complete_downstream(nullptr));
    EXPECT_FALSE(network->check_intersections(nullptr, false));
    // The cycle without a channel does nothing and does not fail.
    network->migrate(1);
    network->channel_points_moved();
    EXPECT_FALSE(network->has_channel());
    Centerline cl;
    EXPECT_FALSE(network->get_centerline(cl));
}

TEST_F(NetworkTest, MarginsAreWholeCellsHoldingMarginTimesWidth)
{
    // 2 widths of 30 m on a 10 m mesh: exactly 6 cells.
    EXPECT_EQ(domain->get_mx(), 6);
    EXPECT_EQ(domain->get_my(), 6);
    EXPECT_FALSE(network->margins_changed());
    EXPECT_DOUBLE_EQ(upstream_x(), -60.);
    EXPECT_DOUBLE_EQ(downstream_x(), (NX - 1 + 6) * DX);

    params.setParamDouble("CHNL_WIDTH", 35.);
    EXPECT_TRUE(network->margins_changed());
    network->update_margins();
    EXPECT_EQ(domain->get_mx(), 7);
    EXPECT_FALSE(network->margins_changed());
    EXPECT_FALSE(network->entry_points().empty());

    params.setParamDouble("CHNL_MARGIN", 1.);
    network->update_margins();
    EXPECT_EQ(domain->get_mx(), 4);
}

TEST_F(NetworkTest, ChangeOfScaleMultipliesTheChannelParametersAndIsUndone)
{
    const char* names[] = {"CHNL_WIDTH", "CHNL_MAX_DEPTH", "CHNL_WAVELENGTH",
                           "EROD_COEF",  "AG_OB_MAX",      "AG_LV_WIDTH"};
    std::vector<double> before;
    for (const char* name : names)
        before.push_back(params.getParamDouble(name));

    network->change_channel_scale(1.);
    for (std::size_t k = 0; k < before.size(); ++k)
        EXPECT_EQ(params.getParamDouble(names[k]), before[k]);

    tracer.setTraceLevel(TRACE_DEBUG);
    tracer.setTraceFunction(capture);
    g_trace.clear();
    network->change_channel_scale(1.5);
    EXPECT_NE(g_trace.find("   New Channel Width: 45m (150%)"), std::string::npos) << g_trace;
    for (std::size_t k = 0; k < before.size(); ++k)
        EXPECT_DOUBLE_EQ(params.getParamDouble(names[k]), 1.5 * before[k]) << names[k];

    // A second change scales the original values, not the scaled ones.
    network->change_channel_scale(0.5);
    EXPECT_DOUBLE_EQ(params.getParamDouble("CHNL_WIDTH"), 15.);

    network->restore_channel_scale();
    for (std::size_t k = 0; k < before.size(); ++k)
        EXPECT_EQ(params.getParamDouble(names[k]), before[k]) << names[k];
    tracer.setTraceFunction(silent);
}

TEST_F(NetworkTest, PrintoutNamesTheIteration)
{
    tracer.setTraceFunction(capture);
    g_trace.clear();
    network->setAge(7);
    network->printout("Draping");
    EXPECT_EQ(g_trace, "    Info      : Iteration 7 : Draping\n");
    tracer.setTraceFunction(silent);
}

TEST_F(NetworkTest, LoadedCenterlineKeepsItsEndsAtTheMarginsAfterMoves)
{
    ASSERT_TRUE(network->load_centerline(crossing(0.)));
    Channel* channel = network->channel();
    ASSERT_NE(channel, nullptr);
    EXPECT_GT(channel->width(), 0.);

    // Points moved by hand along and across the flow: the ends come back to
    // the margin lines, grown when pulled inside, trimmed when pushed beyond.
    const double shifts[] = {7., -4., 7., -45., 3., 60., -2.};
    for (double shift : shifts)
    {
        for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        {
            cp->set_abscissa(cp->get_abscissa() + shift);
            cp->set_ordinate(cp->get_ordinate() + 3.);
        }
        network->channel_points_moved();
        channel = network->channel();
        ASSERT_NE(channel, nullptr);
        expect_ends_at_margins(*channel);
        expect_inside_with_margins(*channel);
    }

    // The exchange form gives the points back in the geographic frame.
    Centerline out;
    ASSERT_TRUE(network->get_centerline(out));
    EXPECT_EQ(static_cast<int>(out.size()), channel->number_of_points());
}

TEST_F(NetworkTest, MigratingChannelStaysInsideTheDomainAndItsMargins)
{
    ASSERT_TRUE(network->load_centerline(crossing(25.)));
    auto amplitude = [this]()
    {
        double a = 0.;
        for (const ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
            a = std::max(a, std::fabs(cp->getY() - 200.));
        return a;
    };
    const double amplitude0 = amplitude();
    for (int it = 0; it < 400; ++it)
    {
        network->incrementAge();
        network->migrate(1);
        Channel* channel = network->channel();
        ASSERT_NE(channel, nullptr);
        ASSERT_GE(channel->number_of_points(), 3);
        expect_ends_at_margins(*channel);
        // Only the ends are held on the margin lines: a point next to an end may
        // stand a little beyond, never by a channel width.
        expect_inside_with_margins(*channel, channel->width());
        // The chain stays linked both ways.
        int n = 0;
        for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next(), ++n)
        {
            if (cp->next() != nullptr)
            {
                ASSERT_EQ(cp->next()->prev(), cp);
            }
        }
        ASSERT_EQ(n, channel->number_of_points());
    }
    // The meanders did grow.
    EXPECT_GT(amplitude(), amplitude0 + 50.);
}

} // namespace

TEST_F(NetworkTest, CreatedChannelCrossesTheDomainAndIsCompletedToTheMargins)
{
    std::string message;
    ASSERT_TRUE(network->create_channel(message));
    EXPECT_TRUE(message.empty());
    ASSERT_TRUE(network->has_channel());
    EXPECT_EQ(network->channel()->birth_iter(), 0u);
    EXPECT_DOUBLE_EQ(network->channel()->width(), 30.);
    network->update_channel();
    ASSERT_TRUE(network->has_channel());
    expect_ends_at_margins(*network->channel());
    expect_inside_with_margins(*network->channel(), network->channel()->width());
}

TEST_F(NetworkTest, LoadingFromAPointOrABadCenterline)
{
    tracer.setTraceFunction(capture);
    g_trace.clear();
    EXPECT_FALSE(network->load_centerline(Point2D(-500., 100.)));
    EXPECT_NE(g_trace.find("Centerline point is not inside the domain!"), std::string::npos) << g_trace;
    EXPECT_FALSE(network->has_channel());

    ASSERT_TRUE(network->load_centerline(Point2D(300., 200.)));
    Channel* channel = network->channel();
    ASSERT_NE(channel, nullptr);
    expect_ends_at_margins(*channel);
    // The course passes near the point.
    double nearest = 1e30;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        nearest = std::min(nearest, cp->distance2D(Point2D(300., 200.)));
    EXPECT_LT(nearest, channel->width());

    // A centerline of one point is refused and the channel in place stays.
    const int before = channel->number_of_points();
    Centerline bad;
    bad.add(10., 10., TOP);
    EXPECT_FALSE(network->load_centerline(bad));
    EXPECT_EQ(network->channel(), channel);
    EXPECT_EQ(channel->number_of_points(), before);
    tracer.setTraceFunction(silent);
}

TEST_F(NetworkTest, ChannelIsLoweredOnlyBelowAQuarterOfItsDepth)
{
    ASSERT_TRUE(network->load_centerline(crossing(10.)));
    tracer.setTraceLevel(TRACE_DEBUG);
    tracer.setTraceFunction(capture);
    const double quarter = 0.25 * network->channel_current_max_depth();
    params.setParamDouble("CHNL_MAX_DEPTH", quarter);
    g_trace.clear();
    network->update_channel();
    EXPECT_EQ(g_trace.find("move_channel_down"), std::string::npos);

    params.setParamDouble("CHNL_MAX_DEPTH", 0.24 * network->channel_current_max_depth());
    g_trace.clear();
    network->update_channel();
    EXPECT_NE(g_trace.find("move_channel_down"), std::string::npos);
    tracer.setTraceFunction(silent);
}

TEST_F(NetworkTest, ClearAndResetFrom)
{
    ASSERT_TRUE(network->load_centerline(crossing(10.)));
    network->setAge(12);
    network->set_counters(3, 1, 2, 4, 5);
    network->set_first_cutoff(7, 0.5, 1.2, 1.3, 1.4, 300., 40.);

    Network copy(&mc, &params, domain.get(), &seed, &mb, &uniform);
    copy.resetFrom(*network);
    ASSERT_TRUE(copy.has_channel());
    EXPECT_NE(copy.channel(), network->channel());
    EXPECT_EQ(copy.channel()->number_of_points(), network->channel()->number_of_points());
    EXPECT_EQ(copy.channel()->last()->getX(), network->channel()->last()->getX());
    EXPECT_EQ(copy.getAge(), 12u);
    EXPECT_EQ(copy.nb_cutoffs(), 3u);
    EXPECT_EQ(copy.nb_chute_cutoffs(), 1u);
    EXPECT_EQ(copy.nb_avulsions(), 2u);
    EXPECT_EQ(copy.nb_cutoffs_avuls(), 4u);
    EXPECT_EQ(copy.nb_cutoffs_total(), 5u);
    EXPECT_EQ(copy.first_cutoff_iter(), 7u);
    EXPECT_EQ(copy.first_cutoff_extension(), 40.);
    EXPECT_NE(copy.channel_grid(), nullptr);

    network->clear();
    EXPECT_FALSE(network->has_channel());
    EXPECT_EQ(network->getAge(), 0u);
    EXPECT_EQ(network->nb_cutoffs_total(), 0u);
    EXPECT_EQ(network->first_cutoff_time(), 0.);
    EXPECT_EQ(network->channel_grid(), nullptr);
    // The copy keeps its own channel.
    EXPECT_TRUE(copy.has_channel());
}
