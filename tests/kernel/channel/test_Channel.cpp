// Channel points, the chain of a channel and its text and exchange forms.

#include "kernel/channel/Centerline.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/Tracer.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/wells/Well.h"

#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;

namespace
{

class ChannelTest : public ::testing::Test
{
protected:
    ChannelTest() : params(&tracer), mc(&params, &tracer) { proportions = params.getSedProportions(); }

    // A straight channel along x with points `step` apart, elevation 100 - x.
    std::vector<Point3D> straight(int n, double step) const
    {
        std::vector<Point3D> points;
        for (int i = 0; i < n; i++)
            points.emplace_back(i * step, 0., 100. - i * step);
        return points;
    }

    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
    std::vector<double> proportions;
};

// Every link agrees with its mirror, the ends are open and the count is right.
void expect_consistent(const Channel& ch)
{
    int n = 0;
    const ChannelPoint* before = nullptr;
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
    {
        EXPECT_EQ(cp->prev(), before) << "at point " << n;
        before = cp;
        n++;
    }
    EXPECT_EQ(before, ch.last());
    EXPECT_EQ(n, ch.number_of_points());
    if (ch.first() != nullptr)
    {
        EXPECT_EQ(ch.first()->prev(), nullptr);
    }
}

std::vector<double> abscissae(const Channel& ch)
{
    std::vector<double> xs;
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
        xs.push_back(cp->get_abscissa());
    return xs;
}

} // namespace

TEST_F(ChannelTest, PointsLinkThemselvesAndAverageTheirNeighbours)
{
    ChannelPoint a(&mc, proportions, 10., Point2D(0., 0.), nullptr, nullptr);
    ChannelPoint c(&mc, proportions, 10., Point3D(2., 0., 7.), &a, nullptr);
    EXPECT_EQ(a.next(), &c);
    EXPECT_EQ(c.prev(), &a);
    EXPECT_DOUBLE_EQ(a.get_elevation(), 0.);
    EXPECT_DOUBLE_EQ(c.get_elevation(), 7.);
    // Without depth at the neighbours nothing is averaged and the flow stays empty.
    EXPECT_EQ(c.getHmean(), 0.);
    EXPECT_EQ(c.getFlowU0(), 0.);
    EXPECT_EQ(c.getFlowHmax(), 0.);
    EXPECT_EQ(c.getC(), 0.);
    EXPECT_EQ(c.normal(), Vector2D(0., 1.));
    EXPECT_EQ(c.mig_factor(), 1.);
    EXPECT_EQ(c.status(), 0);
    EXPECT_EQ(c.well(), nullptr);

    a.slope(0.002);
    a.hmean(2.);
    a.flow().init_flow(10., 2., 1.0, 0.2, 0.01, proportions);
    c.slope(0.004);
    c.hmean(4.);
    c.flow().init_flow(10., 4., 3.0, 0.6, 0.03, proportions);

    // Inserted between the two: averages of both, friction from downstream.
    ChannelPoint b(&mc, proportions, 10., Point2D(1., 0.), &a, &c);
    EXPECT_EQ(a.next(), &b);
    EXPECT_EQ(b.prev(), &a);
    EXPECT_EQ(b.next(), &c);
    EXPECT_EQ(c.prev(), &b);
    EXPECT_DOUBLE_EQ(b.getI(), 0.003);
    EXPECT_DOUBLE_EQ(b.getHmean(), 3.);
    EXPECT_DOUBLE_EQ(b.getFlowHmean(), 3.);
    EXPECT_DOUBLE_EQ(b.getFlowU0(), 2.0);
    EXPECT_DOUBLE_EQ(b.getFlowU1(), 0.4);
    EXPECT_DOUBLE_EQ(b.flow().cf(), 0.03);
    EXPECT_EQ(b.getS(), 0.);

    // Only an upstream neighbour: its values, its friction.
    ChannelPoint d(&mc, proportions, 10., Point2D(3., 0.), &c, nullptr);
    EXPECT_DOUBLE_EQ(d.getHmean(), 4.);
    EXPECT_DOUBLE_EQ(d.flow().cf(), 0.03);

    // The copy keeps the local state but not the conditioning.
    b.curvature(0.05);
    b.ds(1.5);
    b.s(12.);
    b.normal(Vector2D(1., 0.));
    b.aggrad_increase(0.3);
    b.mig_factor(1.7);
    b.status(1);
    ChannelPoint copy(&mc, b, nullptr, nullptr);
    EXPECT_EQ(static_cast<const Point3D&>(copy), static_cast<const Point3D&>(b));
    EXPECT_EQ(copy.getC(), 0.05);
    EXPECT_EQ(copy.ds(), 1.5);
    EXPECT_EQ(copy.getS(), 12.);
    EXPECT_EQ(copy.normal(), Vector2D(1., 0.));
    EXPECT_EQ(copy.aggrad_increase(), 0.3);
    EXPECT_EQ(copy.mig_factor(), 1.7);
    EXPECT_EQ(copy.status(), 0);
    EXPECT_EQ(copy.getFlowU1(), b.getFlowU1());
    EXPECT_EQ(copy.prev(), nullptr);
    EXPECT_EQ(copy.next(), nullptr);
}

TEST_F(ChannelTest, PointElevationGridAndWellDistance)
{
    ChannelPoint p(&mc, proportions, 10., Point3D(25., 14., 50.), nullptr, nullptr);
    p.increase_elevation_by(2.);
    EXPECT_DOUBLE_EQ(p.get_elevation(), 52.);
    EXPECT_DOUBLE_EQ(p.aggrad_increase(), 2.);
    p.decrease_elevation_by(0.5);
    EXPECT_DOUBLE_EQ(p.get_elevation(), 51.5);
    EXPECT_EQ(p.aggrad_increase(), 0.);
    p.aggrad_increase(4.);
    p.decrease_elevation_by(0.);
    EXPECT_EQ(p.aggrad_increase(), 0.);

    p.mig_factor(2.);
    p.status(2);
    p.reset_status();
    EXPECT_EQ(p.status(), 0);
    EXPECT_EQ(p.mig_factor(), 1.);

    // Nodes 10 m apart: (25, 14) rounds to (3, 1); outside the grid clamps.
    GridParams grid(10., 10., 4, 3);
    int ix = -1;
    int iy = -1;
    p.get_grid_indices(grid, ix, iy);
    EXPECT_EQ(ix, 3);
    EXPECT_EQ(iy, 1);
    ChannelPoint far(&mc, proportions, 10., Point2D(500., -40.), nullptr, nullptr);
    far.get_grid_indices(grid, ix, iy);
    EXPECT_EQ(ix, 3);
    EXPECT_EQ(iy, 0);

    // Bed elevation: top minus 1.5 times the mean depth.
    p.hmean(2.);
    EXPECT_DOUBLE_EQ(p.elevation_custom(nullptr, false, false), 51.5);
    EXPECT_DOUBLE_EQ(p.elevation_custom(nullptr, false, true), 48.5);

    // A point ahead of the well along the flow is nearer than one behind it.
    ChannelPoint ahead(&mc, proportions, 10., Point2D(3., 0.), nullptr, nullptr);
    ChannelPoint behind(&mc, proportions, 10., Point2D(-3., 0.), nullptr, nullptr);
    const Point2D well(0., 0.);
    EXPECT_DOUBLE_EQ(ahead.get_distance_von_mises(well, 1., 0.), 3. / std::exp(-1.));
    EXPECT_DOUBLE_EQ(behind.get_distance_von_mises(well, 1., 0.), 3. / std::exp(1.));
    EXPECT_LT(behind.get_distance_von_mises(well, 1., 0.), ahead.get_distance_von_mises(well, 1., 0.));
}

TEST_F(ChannelTest, ConstructionIndexingAndAssertions)
{
    Channel empty(&mc);
    EXPECT_EQ(empty.number_of_points(), 0);
    EXPECT_EQ(empty.first(), nullptr);
    EXPECT_EQ(empty.last(), nullptr);
    EXPECT_EQ(empty.width(), 0.);
    Point2D lo;
    Point2D hi;
    empty.get_bounding_box(lo, hi);
    EXPECT_EQ(lo, Point2D(1e30, 1e30));
    EXPECT_EQ(hi, Point2D(-1e30, -1e30));
    EXPECT_EQ(empty.min_elevation(), 1e30);
    EXPECT_EQ(empty.max_elevation(), -1e30);
    EXPECT_TRUE(std::isnan(empty.mean_maximum_flow_depth()));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { empty.get_point(0); }), "idx < nb_cp"));

    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { Channel c(&mc, std::vector<Point3D>(1)); }), "v.size() > 1"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { Channel c(&mc, empty, std::vector<Point3D>()); }),
                                "v.size() > 1"));
    EXPECT_TRUE(is_assertion_of(
        assertion_text([&] { Channel c(&mc, empty, static_cast<ChannelPoint*>(nullptr)); }), "cp != NULL"));

    Channel ch(&mc, straight(5, 1.));
    expect_consistent(ch);
    EXPECT_EQ(ch.get_point(0), ch.first());
    EXPECT_EQ(ch.get_point(-1), ch.last());
    EXPECT_EQ(ch.get_point(-5), ch.first());
    EXPECT_EQ(ch.get_point(2)->get_abscissa(), 2.);
    EXPECT_EQ(ch.get_point(-2)->get_abscissa(), 3.);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { ch.get_point(5); }), "idx < nb_cp"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { ch.get_point(-6); }), "-idx <= nb_cp"));

    EXPECT_EQ(ch.index(ch.first()), 1);
    EXPECT_EQ(ch.index(ch.last()), 5);
    EXPECT_EQ(ch.index(ch.get_point(1), ch.get_point(3)), 3);
    EXPECT_EQ(ch.index(ch.get_point(3), ch.get_point(1)), 0);
    Channel other(&mc, straight(3, 1.));
    EXPECT_EQ(ch.index(other.get_point(1)), 0);
    EXPECT_EQ(ch.next_point(ch.first()), ch.get_point(1));
    EXPECT_EQ(ch.previous_point(ch.first()), nullptr);
    EXPECT_EQ(ch.next_point(ch.last()), nullptr);

    // A deep copy: same positions, no shared point.
    Channel copy(&mc, ch, true);
    expect_consistent(copy);
    EXPECT_EQ(abscissae(copy), abscissae(ch));
    for (int i = 0; i < 5; i++)
        EXPECT_NE(copy.get_point(i), ch.get_point(i));
    Channel scalars_only(&mc, ch, false);
    EXPECT_EQ(scalars_only.number_of_points(), 0);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { copy.init_path(ch.first(), true); }), "_first == NULL"));
}

TEST_F(ChannelTest, DeletionKeepsTheChainConsistent)
{
    Channel ch(&mc, straight(8, 1.));
    // One interior point.
    ChannelPoint* p3 = ch.get_point(3);
    ch.delete_between(p3, p3);
    expect_consistent(ch);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{0, 1, 2, 4, 5, 6, 7}));
    EXPECT_EQ(ch.get_point(2)->next(), ch.get_point(3));
    EXPECT_EQ(ch.get_point(3)->prev(), ch.get_point(2));

    // From the upstream end: the new first point has no predecessor.
    ch.delete_between(ch.first(), ch.get_point(1));
    expect_consistent(ch);
    EXPECT_EQ(ch.first()->get_abscissa(), 2.);
    EXPECT_EQ(ch.first()->prev(), nullptr);

    // To the downstream end.
    ch.delete_from(ch.get_point(-2));
    expect_consistent(ch);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{2, 4, 5}));
    EXPECT_EQ(ch.last()->next(), nullptr);

    ch.delete_between(ch.first(), ch.last());
    EXPECT_EQ(ch.number_of_points(), 0);
    EXPECT_EQ(ch.first(), nullptr);
    EXPECT_EQ(ch.last(), nullptr);

    Channel other(&mc, straight(4, 1.));
    ch.set_new_path(other.get_point(1));
    expect_consistent(ch);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(other.number_of_points(), 4);
    ch.delete_path();
    EXPECT_EQ(ch.number_of_points(), 0);
    EXPECT_EQ(ch.first(), nullptr);
}

TEST_F(ChannelTest, JoiningAndDividing)
{
    Channel ch(&mc, straight(3, 1.));
    Channel* tail = new Channel(&mc, std::vector<Point3D>{Point3D(3., 0., 0.), Point3D(4., 0., 0.)});
    ch.append(tail);
    expect_consistent(ch);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{0, 1, 2, 3, 4}));
    EXPECT_EQ(tail->first(), nullptr);
    EXPECT_EQ(tail->last(), nullptr);
    EXPECT_EQ(tail->number_of_points(), 2);
    delete tail;
    ch.append(static_cast<Channel*>(nullptr));
    EXPECT_EQ(ch.number_of_points(), 5);

    // A loose chain of two points after the end, then one before the start.
    auto* a = new ChannelPoint(&mc, proportions, 0., Point2D(5., 0.), nullptr, nullptr);
    new ChannelPoint(&mc, proportions, 0., Point2D(6., 0.), a, nullptr);
    ch.append(a);
    expect_consistent(ch);
    EXPECT_EQ(ch.last()->get_abscissa(), 6.);
    ch.prepend(new ChannelPoint(&mc, proportions, 0., Point2D(-1., 0.), nullptr, nullptr));
    expect_consistent(ch);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{-1, 0, 1, 2, 3, 4, 5, 6}));

    Channel head(&mc, std::vector<Point3D>{Point3D(-3., 0., 0.), Point3D(-2., 0., 0.)});
    ch.prepend(&head);
    expect_consistent(ch);
    EXPECT_EQ(ch.number_of_points(), 10);
    EXPECT_EQ(ch.first()->get_abscissa(), -3.);
    EXPECT_EQ(head.first(), nullptr);

    // Prepending a channel to an empty one sets both ends.
    Channel empty(&mc);
    Channel two(&mc, straight(2, 1.));
    empty.prepend(&two);
    expect_consistent(empty);
    EXPECT_EQ(empty.last()->get_abscissa(), 1.);

    // Dividing before the first point changes nothing, and the answer is not the caller's.
    EXPECT_EQ(ch.divide(ch.first()), &ch);
    EXPECT_FALSE(ch.owns_tail(&ch));
    EXPECT_EQ(ch.number_of_points(), 10);
    Channel stranger(&mc, straight(3, 1.));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { ch.divide(stranger.get_point(1)); }), "idx != 0"));

    ChannelPoint* cut = ch.get_point(4);
    Channel* down = ch.divide(cut);
    ASSERT_NE(down, &ch);
    EXPECT_TRUE(ch.owns_tail(down));
    expect_consistent(ch);
    expect_consistent(*down);
    EXPECT_EQ(abscissae(ch), (std::vector<double>{-3, -2, -1, 0}));
    EXPECT_EQ(abscissae(*down), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(down->first(), cut);
    delete down;
}

TEST_F(ChannelTest, QueriesOverThePoints)
{
    Channel ch(&mc, std::vector<Point3D>{Point3D(0., 0., 10.), Point3D(3., 4., 20.), Point3D(6., -2., 30.)});
    EXPECT_DOUBLE_EQ(ch.mean_elevation(), 20.);
    ch.shift_elevation(5.);
    EXPECT_DOUBLE_EQ(ch.mean_elevation(), 25.);

    ch.get_point(0)->hmean(2.);
    ch.get_point(1)->hmean(4.);
    ch.get_point(2)->hmean(3.);
    double lo = 0.;
    double hi = 0.;
    ch.max_depth_limits(lo, hi);
    EXPECT_DOUBLE_EQ(lo, 3.);
    EXPECT_DOUBLE_EQ(hi, 6.);

    ch.update_bounding_box();
    ch.update_min_max_elevations();
    Point2D bmin;
    Point2D bmax;
    ch.get_bounding_box(bmin, bmax);
    EXPECT_EQ(bmin, Point2D(0., -2.));
    EXPECT_EQ(bmax, Point2D(6., 4.));
    EXPECT_EQ(ch.min_elevation(), 15.);
    EXPECT_EQ(ch.max_elevation(), 35.);
    // The bounds only widen.
    ch.get_point(1)->reset(1., 1., 0.);
    ch.update_bounding_box();
    ch.get_bounding_box(bmin, bmax);
    EXPECT_EQ(bmax, Point2D(6., 4.));

    std::vector<double> v;
    ch.vertices(v);
    EXPECT_EQ(v, (std::vector<double>{0., 0., 1., 1., 6., -2.}));

    EXPECT_EQ(Channel::get_side(Point2D(0., 0.), Point2D(1., 0.), Point2D(0.5, -1.)), 1);
    EXPECT_EQ(Channel::get_side(Point2D(0., 0.), Point2D(1., 0.), Point2D(0.5, 1.)), -1);
    EXPECT_EQ(Channel::get_side(Point2D(0., 0.), Point2D(1., 0.), Point2D(3., 0.)), 0);

    std::vector<std::pair<double, ChannelPoint*>> nearest(2, std::make_pair(1e30, nullptr));
    nearest[1].first = 0.5;
    ch.find_nearest({Point2D(5., -1.), Point2D(0., 3.)}, nearest);
    EXPECT_EQ(nearest[0].second, ch.last());
    EXPECT_DOUBLE_EQ(nearest[0].first, std::sqrt(2.));
    EXPECT_EQ(nearest[1].second, nullptr);
}

TEST_F(ChannelTest, BanksFollowTheNormal)
{
    Channel ch(&mc, straight(4, 1.));
    ch.init_geom(3., 4., 100., 0.001);
    ChannelPoint* cp = ch.get_point(1);
    EXPECT_EQ(ch.left_bank_2D(cp), Point2D(1., 2.));
    EXPECT_EQ(ch.right_bank_2D(cp), Point2D(1., -2.));
    double lo = 0.;
    double hi = 0.;
    ch.calculate_y_bounds(lo, hi);
    EXPECT_EQ(lo, -2.);
    EXPECT_EQ(hi, 2.);
    std::vector<Point2D> banks;
    ch.border_vertices_2D(banks);
    ASSERT_EQ(banks.size(), 8U);
    EXPECT_EQ(banks[6], Point2D(3., 2.));
    EXPECT_EQ(banks[7], Point2D(3., -2.));
    std::vector<double> flat;
    ch.border_vertices_2D(flat);
    EXPECT_EQ(flat.size(), 16U);
    EXPECT_EQ(flat[13], 2.);
}

TEST_F(ChannelTest, SinuosityScheduleCountsFromBirth)
{
    Channel ch(&mc, straight(3, 1.));
    ch.birth_iter(10);
    params.setSinuoInterval(0);
    for (unsigned int it = 0; it < 40; it++)
        EXPECT_FALSE(ch.sinuo_occurs(it, nullptr));
    params.setSinuoInterval(5);
    EXPECT_TRUE(ch.sinuo_occurs(11, nullptr));
    EXPECT_FALSE(ch.sinuo_occurs(12, nullptr));
    EXPECT_TRUE(ch.sinuo_occurs(16, nullptr));
    EXPECT_FALSE(ch.sinuo_occurs(13, nullptr));
    // Before birth the difference wraps: 2^32 - 1 is a multiple of 5, 2^32 - 4 one of 3.
    EXPECT_TRUE(ch.sinuo_occurs(10, nullptr));
    params.setSinuoInterval(3);
    EXPECT_TRUE(ch.sinuo_occurs(7, nullptr));
    EXPECT_FALSE(ch.sinuo_occurs(8, nullptr));
}

TEST_F(ChannelTest, TextForms)
{
    ChannelPoint p(&mc, proportions, 10., Point3D(1.5, -2., 3.), nullptr, nullptr);
    std::string text = p.get_string_descr();
    EXPECT_EQ(text.rfind("Pt= (1.5, -2, 3) ds= 0 s= 0 C= 0 R=       NaN N= (0, 1) I= 0 ", 0), 0U) << text;
    p.ds(1e6);
    p.s(1e15);
    p.curvature(0.01);
    text = p.get_string_descr();
    EXPECT_NE(text.find("ds=    NaN s=         NaN C= 0.01 R= 100 "), std::string::npos) << text;
    EXPECT_EQ(p.debug(), "X=1.5, Y=-2");
    std::ostringstream streamed;
    streamed << p;
    EXPECT_EQ(streamed.str(), p.get_string_descr());

    Channel ch(&mc, straight(4, 1.));
    ch.init_geom(3., 4., 100., 0.001);
    text = ch.trace("probe", true);
    EXPECT_EQ(text.rfind("  Trace Channel (probe):\n    Half-width: 2\n    Slope: 0.001\n"
                         "    Initial mean depth: 2\n",
                         0),
              0U)
        << text;
    EXPECT_NE(text.find("    Current mean depth: 2\n"), std::string::npos);
    EXPECT_NE(text.find("    [4] Pt= (3, 0, 97)"), std::string::npos) << text;
    EXPECT_EQ(ch.trace("", false).rfind("  Trace Channel:\n", 0), 0U);
}

TEST_F(ChannelTest, CheckCenterlineReportsWithoutFailing)
{
    Channel ch(&mc, straight(4, 1.));
    ch.init_geom(3., 4., 100., 0.001); // half-width 2: spacing 1 to 3 allowed
    std::string report = "untouched";
    EXPECT_TRUE(ch.check_centerline(report));
    EXPECT_EQ(report, "untouched");

    ch.get_point(1)->reset(0.5, 0., 0.); // 0.5 from point 1: too close
    ch.get_point(3)->reset(20., 0., 0.); // 18 from point 3: too far
    EXPECT_TRUE(ch.check_centerline(report));
    EXPECT_EQ(report.rfind("Errors detected while checking centerline: 2\n"
                           "  Point #1 and #2 too close: 0.5<1\n    P1 : Pt= (0, 0, 100)",
                           0),
              0U)
        << report;
    EXPECT_NE(report.find("\n  Point #3 and #4 too far: 18>3\n    P1 : Pt= (2, 0, 98)"), std::string::npos)
        << report;
    EXPECT_NE(report.find("\n    P2 : Pt= (20, 0, 0)"), std::string::npos);

    // Only an absurd gap fails the check.
    ch.get_point(3)->reset(2. + 10000., 0., 0.);
    report.clear();
    EXPECT_FALSE(ch.check_centerline(report));
    EXPECT_NE(report.find(" too far: 10000>3"), std::string::npos) << report;
}

TEST_F(ChannelTest, CenterlineRoundTrip)
{
    GridParams geom(10., 10., 20, 20);
    geom.setLocation(Point3D(1000., 2000., 0.));
    geom.setRotation(30.);
    std::vector<Point3D> points{Point3D(0., 0., 5.), Point3D(12., 3., 4.5), Point3D(25., -4., 4.)};
    Channel ch(&mc, points);
    Centerline cl;
    ch.to_centerline(geom, cl);
    ASSERT_EQ(cl.size(), 3);
    double x = 0.;
    double y = 0.;
    double z = 0.;
    ASSERT_TRUE(cl.get_at(1, x, y, z));
    // Relative (12, 3) turned by 30 degrees and moved to the location.
    const double c = std::cos(30. * M_PI / 180.);
    const double s = std::sin(30. * M_PI / 180.);
    EXPECT_NEAR(x, 1000. + 12. * c - 3. * s, 1e-6);
    EXPECT_NEAR(y, 2000. + 12. * s + 3. * c, 1e-6);
    EXPECT_EQ(z, 4.5);

    // In memory the way back is exact.
    std::vector<Point3D> rel;
    Channel::from_centerline(cl, geom, rel);
    ASSERT_EQ(rel.size(), points.size());
    for (std::size_t i = 0; i < points.size(); i++)
    {
        EXPECT_NEAR(rel[i].get_abscissa(), points[i].get_abscissa(), 1e-9);
        EXPECT_NEAR(rel[i].get_ordinate(), points[i].get_ordinate(), 1e-9);
        EXPECT_EQ(rel[i].get_elevation(), points[i].get_elevation());
    }

    // Through the file, six significant digits of geographic metres.
    testing_support::TempDir dir;
    ASSERT_TRUE(cl.write(dir.file("cl.txt")));
    Centerline back;
    ASSERT_TRUE(back.read(dir.file("cl.txt"))) << back.get_message();
    Channel::from_centerline(back, geom, rel);
    ASSERT_EQ(rel.size(), points.size());
    for (std::size_t i = 0; i < points.size(); i++)
    {
        EXPECT_NEAR(rel[i].get_abscissa(), points[i].get_abscissa(), 1e-2);
        EXPECT_NEAR(rel[i].get_ordinate(), points[i].get_ordinate(), 1e-2);
        EXPECT_NEAR(rel[i].get_elevation(), points[i].get_elevation(), 1e-4);
    }
    Channel again(&mc, rel);
    EXPECT_EQ(again.number_of_points(), 3);
}

TEST_F(ChannelTest, WellsTakeTheChannelSize)
{
    Channel channel(&mc);
    Well well(&params, &tracer);
    Well* child = well.new_child();
    channel.add_well(&well);
    channel.add_well(child);
    ASSERT_EQ(channel.get_nb_well(), 2);
    EXPECT_EQ(channel.get_wells()[1], child);

    params.setParamDouble("CHNL_WIDTH", 42.);
    params.setParamDouble("CHNL_FLW_DIR", 90.); // along +x on an unrotated grid
    channel.update_well_config();
    for (const Well* w : {static_cast<const Well*>(&well), static_cast<const Well*>(child)})
    {
        EXPECT_EQ(w->get_well_config().channelWidth, 42.);
        EXPECT_NEAR(w->get_well_config().flowX, 1., 1e-6);
        EXPECT_NEAR(w->get_well_config().flowY, 0., 1e-6);
    }
    channel.erase_well(child);
    EXPECT_EQ(channel.get_nb_well(), 1);
}
