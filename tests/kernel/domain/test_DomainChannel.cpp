// The domain's side of the channel's imprint: point bars on the nodes the
// channel has left, and the channel rasterised on the grid.

#include "TestSupport.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/CenterlineDisc.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using testing_support::capture;
using testing_support::g_trace;

namespace
{

constexpr double TOP = 10.;
class DomainChannelTest : public ::testing::Test
{
protected:
    DomainChannelTest()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        domain = std::make_unique<Domain>(&mc, &seed, &mb, nullptr, 10., 10., 40, 30, Point2D(0., 0.), 0., 0.,
                                          0u, Facies(Overbank::_fd.id()));
        domain->set_margins(2, 2);
        domain->deposit_uniform_thickness(TOP, Facies(Overbank::_fd.id()), 0u);
        domain->update_slope(0.001, 0.);
    }

    ChannelGridPoint cell(int ix, int iy, double bed) const
    {
        ChannelGridPoint p(&mc);
        p.ix = ix;
        p.iy = iy;
        p.z = TOP;
        p.bed = bed;
        return p;
    }

    Tracer tracer;
    Parameters params{&tracer};
    MeanderCalculator mc{&params, &tracer};
    SeedGenerator seed;
    MassBalance mb;
    std::unique_ptr<Domain> domain;
};

} // namespace

TEST_F(DomainChannelTest, LeftNodesFillTheirWaterWithPointBarOthersAreUntouched)
{
    DepositionSet& left = domain->getObject(5, 5);
    left.erode_down_to(TOP - 2., &mb);
    left.water_depth(2.);
    DepositionSet& under = domain->getObject(6, 5);
    under.erode_down_to(TOP - 2., &mb);
    under.water_depth(2.);
    under.set_under_channel(true);
    const size_t dry_units = domain->getObject(7, 5).size();

    domain->make_point_bar({cell(5, 5, TOP - 3.), cell(6, 5, TOP - 3.), cell(7, 5, TOP - 3.)}, 4u);

    EXPECT_EQ(left.water_depth(), 0.);
    EXPECT_NEAR(left.get_ztop(), TOP, 1e-9);
    EXPECT_EQ(left.get_facies().family(), PointBar::_fd.id());
    EXPECT_EQ(left.units().back().facies().granulo_class(), 10);
    EXPECT_EQ(under.water_depth(), 2.);
    EXPECT_NEAR(under.get_ztop(), TOP - 2., 1e-9);
    EXPECT_EQ(domain->getObject(7, 5).size(), dry_units);
}

TEST_F(DomainChannelTest, GrainProfileBarsStopAtTheDryNeighboursAndFineUpward)
{
    params.setParamBool("GR_PB", true);
    params.setParamBool("GR_PB_OPTIM", true);
    DepositionSet& left = domain->getObject(5, 5);
    left.erode_down_to(TOP - 3., &mb);
    left.water_depth(4.); // more water than the dry neighbours allow
    ChannelGridPoint p = cell(5, 5, TOP - 3.);
    p.z = TOP + 1.;
    Channel channel(&mc);

    domain->make_point_bar_new(channel, {p}, 4u);

    EXPECT_EQ(left.water_depth(), 0.);
    EXPECT_NEAR(left.get_ztop(), TOP, 1e-6) << "a bar never builds above its dry neighbours";
    // The bar's units, bottom to top, never coarsen upward and span several classes.
    const auto& units = left.units();
    std::vector<int> classes;
    for (const auto& u : units)
        if (u.facies().family() == PointBar::_fd.id())
            classes.push_back(u.facies().granulo_class());
    ASSERT_GE(classes.size(), 2u);
    for (size_t k = 1; k < classes.size(); ++k)
        EXPECT_LE(classes[k], classes[k - 1]);
    EXPECT_LT(classes.back(), classes.front());
}

TEST_F(DomainChannelTest, CenterlineDiscScalesTheChannelReliefAndRefusesAFlatOne)
{
    std::vector<Point3D> points;
    for (int i = 0; i < 30; ++i)
        points.emplace_back(20. + i * 10., 150., TOP);
    Channel flat(&mc, points);
    flat.init_geom(3., 30., 375., 0.001);
    CenterlineDisc disc;
    // A channel that covers no node of the grid has no relief to scale.
    std::vector<Point3D> outside;
    for (int i = 0; i < 30; ++i)
        outside.emplace_back(5000. + i * 10., 5000., TOP);
    Channel planar(&mc, outside);
    planar.init_geom(3., 30., 375., 0.001);
    EXPECT_FALSE(domain->getCenterlineDisc(disc, planar));
    EXPECT_NE(g_trace.find("Error calculating discretized channel"), std::string::npos);

    ASSERT_TRUE(domain->getCenterlineDisc(disc, flat));
    double lowest = 1e30, highest = -1e30;
    int marked = 0;
    for (int j = 0; j < 30; ++j)
        for (int i = 0; i < 40; ++i)
        {
            double v;
            disc.get_at(i, j, v);
            if (v == -1.)
                continue;
            ++marked;
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
        }
    EXPECT_GT(marked, 20);
    EXPECT_NEAR(lowest, 0., 1e-9);
    EXPECT_NEAR(highest, 255., 1e-9);
}
