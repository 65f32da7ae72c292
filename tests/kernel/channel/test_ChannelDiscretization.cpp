// Resampling of a centerline to its spacing limits, abscissae and normals.

#include "kernel/channel/Channel.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include "TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::capture_warnings;
using testing_support::g_trace;
using testing_support::is_assertion_of;

namespace
{

class DiscretizationTest : public ::testing::Test
{
protected:
    DiscretizationTest() : params(&tracer), mc(&params, &tracer)
    {
        g_trace.clear();
        tracer.setTraceFunction(capture_warnings);
    }

    // A channel of half-width `w2` through the given points.
    Channel* make(const std::vector<Point3D>& points, double w2)
    {
        auto* ch = new Channel(&mc, points);
        ch->init_geom(3., 2. * w2, 100. * w2, 0.001);
        return ch;
    }

    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
};

std::vector<Point2D> positions(const Channel& ch)
{
    std::vector<Point2D> out;
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
        out.emplace_back(cp->get_abscissa(), cp->get_ordinate());
    return out;
}

// The normal at cp from the three positions alone, every length measured
// afresh: the sweep, which reuses the lengths it has measured, must agree bit
// for bit, also where it has just added or removed points.
Vector2D fresh_normal(const Point2D& prev, const Point2D& cp, const Point2D& next)
{
    const Vector2D a(prev, cp);
    const Vector2D b(cp, next);
    Vector2D chord = b;
    chord.normalize();
    chord.rotate_half_pi();
    Vector2D n = chord;
    if (std::fabs(a.vectorial(b)) >= MP_EPSILON)
    {
        Vector2D ua = a;
        Vector2D ub = b;
        n = Vector2D(ua.normalize() - ub.normalize());
        n.normalize();
        if (n.scalar(n) < MP_EPSILON)
            n = chord;
    }
    if (a.vectorial(Vector2D(prev, next)) > 0.)
        n *= -1.;
    return n;
}

// Everything a sweep promises: links, spacing, abscissae and unit normals.
// The last point counts its segment twice, unless the sweep removed the
// former last point for being too close.
void expect_discretized(const Channel& ch, const std::string& when, bool last_doubled = true)
{
    SCOPED_TRACE(when);
    const double w2 = ch.half_width();
    int n = 1;
    ASSERT_EQ(ch.first()->prev(), nullptr);
    EXPECT_EQ(ch.first()->getS(), 0.);
    EXPECT_EQ(ch.first()->ds(), 0.);
    for (const ChannelPoint* cp = ch.first()->next(); cp != nullptr; cp = cp->next(), n++)
    {
        const ChannelPoint* before = cp->prev();
        ASSERT_EQ(before->next(), cp);
        const double d = cp->distance2D(*before);
        EXPECT_GE(d, 0.5 * w2) << "segment " << n;
        EXPECT_LE(d, 1.5 * w2) << "segment " << n;
        EXPECT_NEAR(cp->ds(), d, 1e-9);
        EXPECT_GT(cp->getS(), before->getS());
        const double expected = before->getS() + (cp == ch.last() && last_doubled ? 2. : 1.) * d;
        EXPECT_NEAR(cp->getS(), expected, 1e-9) << "point " << n;
    }
    EXPECT_EQ(n, ch.number_of_points());
    for (const ChannelPoint* cp = ch.first(); cp != nullptr; cp = cp->next())
        EXPECT_NEAR(std::hypot(cp->normal().get_abscissa(), cp->normal().get_ordinate()), 1., 1e-9);
    for (const ChannelPoint* cp = ch.first()->next(); cp != ch.last(); cp = cp->next())
        EXPECT_EQ(cp->normal(), fresh_normal(*cp->prev(), *cp, *cp->next())) << "point " << ch.index(cp);
}

} // namespace

TEST_F(DiscretizationTest, StraightChannelKeepsItsPointsAndDoublesTheLastSegment)
{
    std::vector<Point3D> points;
    for (int i = 0; i < 6; i++)
        points.emplace_back(2. * i, 0., 0.);
    // Points spaced one half-width apart: nothing to add or remove.
    std::unique_ptr<Channel> ch(make(points, 2.));
    ASSERT_EQ(ch->number_of_points(), 6);
    expect_discretized(*ch, "straight");
    double sum = 0.;
    for (const ChannelPoint* cp = ch->first(); cp != nullptr; cp = cp->next())
        sum += cp->ds();
    EXPECT_DOUBLE_EQ(sum, 10.);
    EXPECT_DOUBLE_EQ(ch->last()->getS(), 12.);
    EXPECT_DOUBLE_EQ(ch->get_point(-2)->getS(), 8.);
    // The normal of a straight run is the chord turned to the left.
    for (const ChannelPoint* cp = ch->first(); cp != nullptr; cp = cp->next())
        EXPECT_EQ(cp->normal(), Vector2D(0., 1.));
    // A sweep again changes nothing but the doubled total.
    ch->discretization();
    EXPECT_EQ(ch->number_of_points(), 6);
    EXPECT_DOUBLE_EQ(ch->last()->getS(), 12.);
    EXPECT_TRUE(g_trace.empty()) << g_trace;
}

TEST_F(DiscretizationTest, LimitsAreInclusive)
{
    // Segments of exactly 1.5 and 0.5 half-widths are kept.
    std::unique_ptr<Channel> ch(make({Point3D(0., 0., 0.), Point3D(3., 0., 0.), Point3D(4., 0., 0.),
                                      Point3D(7., 0., 0.), Point3D(8., 0., 0.)},
                                     2.));
    EXPECT_EQ(ch->number_of_points(), 5);
    EXPECT_EQ(positions(*ch)[3], Point2D(7., 0.));
}

TEST_F(DiscretizationTest, LongSegmentIsFilledOnePointPerTurn)
{
    // Four half-widths from the upstream end: the first new point is one
    // half-width along the chord, as cp has no predecessor.
    std::unique_ptr<Channel> ch(make({Point3D(0., 0., 10.), Point3D(4., 0., 20.), Point3D(5., 0., 20.)}, 1.));
    const std::vector<Point2D> at = positions(*ch);
    ASSERT_EQ(at.size(), 6U);
    for (int i = 0; i < 6; i++)
        EXPECT_NEAR(at[i].get_abscissa(), i, 1e-12);
    // Elevations are interpolated by distance: a quarter of the way gives 12.5.
    EXPECT_DOUBLE_EQ(ch->get_point(1)->get_elevation(), 12.5);
    EXPECT_DOUBLE_EQ(ch->get_point(2)->get_elevation(), 15.);
    EXPECT_DOUBLE_EQ(ch->get_point(3)->get_elevation(), 17.5);
    // New points take slope and depth from their neighbours.
    EXPECT_DOUBLE_EQ(ch->get_point(2)->getHmean(), 2.);
    EXPECT_DOUBLE_EQ(ch->get_point(2)->getI(), 0.001);
    expect_discretized(*ch, "filled");
}

TEST_F(DiscretizationTest, NewPointLeansTowardsThePreviousDirection)
{
    // After a left turn, the new point is halfway between the chord point and
    // the straight continuation of the previous segment.
    std::unique_ptr<Channel> ch(
        make({Point3D(0., 0., 0.), Point3D(1., 0., 0.), Point3D(1., 3., 0.), Point3D(1., 4., 0.)}, 1.));
    const ChannelPoint* added = ch->get_point(2);
    EXPECT_NEAR(added->get_abscissa(), 1.5, 1e-12);
    EXPECT_NEAR(added->get_ordinate(), 0.5, 1e-12);
    // A left bend: the normal points to the inner (left) side.
    const Vector2D n = ch->get_point(1)->normal();
    EXPECT_LT(n.get_abscissa(), 0.);
    EXPECT_GT(n.get_ordinate(), 0.);
}

TEST_F(DiscretizationTest, ShortSegmentsLoseTheirFarPoint)
{
    // With half-width 2, anything under 1 is merged into the next segment;
    // the last point goes when its own segment is too short.
    std::unique_ptr<Channel> ch(
        make({Point3D(0., 0., 0.), Point3D(2., 0., 0.), Point3D(2.4, 0., 0.), Point3D(2.8, 0., 0.),
              Point3D(4., 0., 0.), Point3D(6., 0., 0.), Point3D(6.5, 0., 0.)},
             2.));
    EXPECT_EQ(positions(*ch),
              (std::vector<Point2D>{Point2D(0., 0.), Point2D(2., 0.), Point2D(4., 0.), Point2D(6., 0.)}));
    EXPECT_EQ(ch->number_of_points(), 4);
    EXPECT_EQ(ch->last()->next(), nullptr);
    // The removed last point left its predecessor's abscissa as the sweep set it.
    EXPECT_DOUBLE_EQ(ch->last()->getS(), 6.);
    expect_discretized(*ch, "last removed", false);
}

TEST_F(DiscretizationTest, CancellingDirectionsLoseAPoint)
{
    // The third point lies straight back on the first segment: the chord point
    // and the continuation cancel, and the far point is deleted instead.
    std::unique_ptr<Channel> ch(make({Point3D(0., 0., 0.), Point3D(1., 0., 0.), Point3D(-1., 0., 0.),
                                      Point3D(1., 1., 0.), Point3D(2., 1., 0.), Point3D(3., 1., 0.)},
                                     1.));
    EXPECT_EQ(positions(*ch), (std::vector<Point2D>{Point2D(0., 0.), Point2D(1., 0.), Point2D(1., 1.),
                                                    Point2D(2., 1.), Point2D(3., 1.)}));
    EXPECT_EQ(ch->number_of_points(), 5);
    EXPECT_NE(g_trace.find("Error while adding a channel point (d1 is null)"), std::string::npos) << g_trace;
    EXPECT_NE(g_trace.find("Deleting point: (-1, 0) between (1, 0) and (1, 1)"), std::string::npos)
        << g_trace;
    EXPECT_EQ(g_trace.rfind("#  WARNING  # : ", 0), 0U);
    expect_discretized(*ch, "after the loss");
}

TEST_F(DiscretizationTest, ReversedCollinearRunGetsTheRotatedChord)
{
    std::unique_ptr<Channel> ch(
        make({Point3D(0., 0., 0.), Point3D(1., 0., 0.), Point3D(0.5, 0., 0.), Point3D(0.5, -1., 0.)}, 1.));
    ASSERT_EQ(ch->number_of_points(), 4);
    // B = (-0.5, 0) turned left is (0, -1); A x C is 0, so no flip.
    EXPECT_NEAR(ch->get_point(1)->normal().get_abscissa(), 0., 1e-12);
    EXPECT_NEAR(ch->get_point(1)->normal().get_ordinate(), -1., 1e-12);
    // The ends copy their neighbours.
    EXPECT_EQ(ch->first()->normal(), ch->get_point(1)->normal());
    EXPECT_EQ(ch->last()->normal(), ch->get_point(2)->normal());
}

TEST_F(DiscretizationTest, PreconditionsAndVanishingLastSegment)
{
    Channel two(&mc, std::vector<Point3D>{Point3D(0., 0., 0.), Point3D(1., 0., 0.)});
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { two.init_geom(3., 2., 100., 0.001); }),
                                "_first->next() != _last"));
    Channel empty(&mc);
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { empty.init_geom(3., 2., 100., 0.001); }), "_first != NULL"));

    // Merging reaches a last point standing on cp.
    Channel ch(&mc, std::vector<Point3D>{Point3D(0., 0., 0.), Point3D(1., 0., 0.), Point3D(1.2, 0., 0.),
                                         Point3D(1., 0., 0.)});
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { ch.init_geom(3., 2., 100., 0.001); }), "ds >= MP_EPSILON"));
}

TEST_F(DiscretizationTest, SpacingHoldsWhileTheChannelGrowsAndShrinks)
{
    // A gently meandering channel, half-width 10.
    const double w2 = 10.;
    std::vector<Point3D> points;
    for (int i = 0; i <= 40; i++)
        points.emplace_back(i * 10., 30. * std::sin(i * 10. / 120.), 50. - 0.01 * i);
    std::unique_ptr<Channel> ch(make(points, w2));
    expect_discretized(*ch, "initial");

    for (int sweep = 0; sweep < 12; sweep++)
    {
        const bool grow = (sweep % 4) < 2;
        // Move by hand: grow the bends along the normals, or squeeze the
        // channel towards its upstream end.
        int i = 0;
        for (ChannelPoint* cp = ch->first(); cp != nullptr; cp = cp->next(), i++)
        {
            if (grow)
            {
                const double push = 6. * std::sin(i * 0.15) + 2.;
                cp->reset(1.6 * cp->get_abscissa() + push * cp->normal().get_abscissa(),
                          1.2 * cp->get_ordinate() + push * cp->normal().get_ordinate(), cp->get_elevation());
            }
            else
                cp->reset(cp->get_abscissa() * 0.6, cp->get_ordinate() * 0.8, cp->get_elevation());
        }
        const int before = ch->number_of_points();
        const ChannelPoint* last = ch->last();
        ch->discretization();
        expect_discretized(*ch, "sweep " + std::to_string(sweep), ch->last() == last);
        if (grow)
        {
            EXPECT_GT(ch->number_of_points(), before) << "sweep " << sweep;
        }
        else
        {
            EXPECT_LT(ch->number_of_points(), before) << "sweep " << sweep;
        }
    }
    EXPECT_TRUE(g_trace.empty()) << g_trace;
}
