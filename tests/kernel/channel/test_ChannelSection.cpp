// The channel's section and its imprint on the stacks: depth functions, the
// grid nodes of a segment, erosion and point bars while the channel moves,
// and the sand and mud plugs of an abandoned reach.

#include "kernel/channel/Channel.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/common/Constants.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/Grid2D.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::is_assertion_of;

namespace
{

constexpr double TOP = testing_support::ReachParts::REACH_TOP;
constexpr double YEAR = 31557600.;
// Thickness resolution of the stacks.
constexpr double STEP = 0.01;

class SectionTest : public ::testing::Test, protected testing_support::ReachParts
{
protected:
    SectionTest()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
    }

    const Facies overbank{Overbank::_fd.id()};
    const unsigned char pb = PointBar::_fd.id();
    const unsigned char sp = SandPlug::_fd.id();
    const unsigned char mp = MudPlug::_fd.id();
};

double family_thickness(const DepositionSet& stack, unsigned char family)
{
    return stack.cumulative_thickness(Facies(family), stack.get_zbot() - 1., stack.get_ztop() + 1.);
}

// One pass of the moving channel over the stacks, as the network runs it:
// the cells under the channel before the move, the move, the sections at the
// new place, and the fill of the cells that the channel has left.
void moving_step(Channel& channel, Domain& domain, MassBalance& mb, unsigned int age)
{
    std::vector<ChannelGridPoint> before;
    channel.find_grid_points(domain, before);
    channel.compute_velocity_perturbation();
    channel.migrate(&domain, YEAR);
    for (const ChannelGridPoint& p : before)
        domain.getObject(p.ix, p.iy).set_under_channel(false);
    channel.make_point_bar(&domain, &mb, age, true);
    for (const ChannelGridPoint& p : before)
    {
        DepositionSet& stack = domain.getObject(p.ix, p.iy);
        const double wd = stack.water_depth();
        if (wd != 0. && !stack.is_under_channel())
        {
            stack.water_depth(0.);
            stack.deposit_thickness(wd, Facies(PointBar::_fd.id(), 10), age, &mb);
        }
    }
    for (const ChannelGridPoint& p : before)
        domain.getObject(p.ix, p.iy).set_under_channel(false);
}

} // namespace

TEST_F(SectionTest, QuarticSectionHasItsMeanDepthAndDryBanks)
{
    auto channel = make_channel(straight(5, 0., 15., 0.));
    const double w2 = channel->half_width();
    const double h = channel->mean_depth();
    const double c0 = 5. / (6. * w2);
    EXPECT_DOUBLE_EQ(channel->poly()[0], c0);
    EXPECT_DOUBLE_EQ(channel->polynomial_4_cross_section_depth(0., 0.), 1.25 * h);
    for (double c : {-0.2, -0.01, 0., 0.01, 0.2})
    {
        EXPECT_NEAR(channel->polynomial_4_cross_section_depth(c, w2), 0., 1e-12) << c;
        EXPECT_NEAR(channel->polynomial_4_cross_section_depth(c, -w2), 0., 1e-12) << c;
        // Mean depth h across the section, by the midpoint rule.
        const int n = 2000;
        double sum = 0.;
        for (int k = 0; k < n; k++)
            sum += channel->polynomial_4_cross_section_depth(c, -w2 + (k + 0.5) * 2. * w2 / n);
        EXPECT_NEAR(sum / n, h, 1e-5 * h) << c;
    }
    // Curvature beyond the limit is the limit; a bend deepens the side of positive n when C > 0.
    EXPECT_DOUBLE_EQ(channel->polynomial_4_cross_section_depth(5. * c0, 4.),
                     channel->polynomial_4_cross_section_depth(c0, 4.));
    EXPECT_GT(channel->polynomial_4_cross_section_depth(0.02, 7.),
              channel->polynomial_4_cross_section_depth(0.02, -7.));

    // The closed-form maximum is the maximum.
    ChannelPoint* cp = channel->get_point(2);
    for (double c : {0., 0.005, 0.02, -0.03, 0.1})
    {
        cp->curvature(c);
        double best = 0.;
        for (double x = -w2; x <= w2; x += 1e-3)
            best = std::max(best, channel->polynomial_4_cross_section_depth(c, x));
        EXPECT_NEAR(channel->maximum_polynomial_4_cross_section_depth(cp), best, 1e-6) << c;
    }

    EXPECT_EQ(channel->polynomial_4_cross_section_depth(0., w2 + 0.1), 0.);
    EXPECT_NE(g_trace.find("Polynomial_4_section_depth : normal abscissa given falls outside the channel !"),
              std::string::npos);

    // The parabola of the stacks: 1.5 h at the axis, dry banks, mean h.
    EXPECT_DOUBLE_EQ(channel->cross_section_depth_old(0., -1.), 1.5 * h);
    EXPECT_DOUBLE_EQ(channel->cross_section_depth_old(0., 4.), 6.);
    EXPECT_EQ(channel->cross_section_depth_old(w2, -1.), 0.);
    EXPECT_EQ(channel->cross_section_depth_old(w2 + 1., -1.), 0.);
    double sum = 0.;
    for (int k = 0; k < 1000; k++)
        sum += channel->cross_section_depth_old(-w2 + (k + 0.5) * 2. * w2 / 1000, -1.);
    EXPECT_NEAR(sum / 1000, h, 1e-5 * h);
}

TEST_F(SectionTest, NodesOfASectionAndTheirElevation)
{
    auto domain = make_domain(20, 20, 10.);
    auto channel = make_channel(straight(5, 20., 15., 50.));
    ChannelPoint* a = channel->get_point(0);
    ChannelPoint* b = channel->get_point(1);
    a->set_elevation(TOP);
    b->set_elevation(TOP - 3.);

    // Corners (20, 35)-(35, 65) in metres: the vertices round to 2..4 by 4..7,
    // but the scan stays inside the unrounded box 2..3.5 by 3.5..6.5.
    std::vector<std::pair<int, int>> cells;
    channel->find_grid_points_for_section(a, b, *domain, cells);
    std::set<std::pair<int, int>> expected;
    for (int i = 2; i <= 3; i++)
        for (int j = 4; j <= 6; j++)
            expected.insert({i, j});
    const std::set<std::pair<int, int>> found(cells.begin(), cells.end());
    EXPECT_EQ(found, expected);
    EXPECT_EQ(cells.size(), expected.size());

    // Elevation: interpolated top minus the parabola of the node's offset.
    const double h = a->getHmean();
    for (const auto& cell : cells)
    {
        double depth;
        const double e = channel->cross_section_elevation(domain.get(), cell.first, cell.second, a, b, depth);
        const double x = cell.first * 10.;
        const double n = cell.second * 10. - 50.;
        const double t = std::min(1., std::max(0., (x - 20.) / 15.));
        EXPECT_NEAR(depth, MeanderCalculator::parabolic_cross_section_depth(n, 30., h), 1e-9);
        EXPECT_NEAR(e, TOP - 3. * t - depth, 1e-9);
    }

    // A section off the grid has no node; one across the edge keeps the nodes on it.
    auto outside = make_channel(straight(5, 500., 15., 50.));
    outside->find_grid_points_for_section(outside->get_point(0), outside->get_point(1), *domain, cells);
    EXPECT_TRUE(cells.empty());
    auto edge = make_channel(straight(5, 185., 15., 50.));
    edge->find_grid_points_for_section(edge->get_point(0), edge->get_point(1), *domain, cells);
    for (const auto& cell : cells)
        EXPECT_EQ(cell.first, 19);
    EXPECT_EQ(cells.size(), 3u);

    // Nodes shared by two sections are listed for each; a route keeps the later segment.
    std::vector<ChannelGridPoint> points;
    channel->find_grid_points(*domain, points);
    std::set<std::pair<int, int>> distinct;
    for (const ChannelGridPoint& p : points)
        distinct.insert({p.ix, p.iy});
    EXPECT_GT(points.size(), distinct.size());
    Grid2D<std::pair<ChannelPoint*, ChannelPoint*>> route(10., 10., 20, 20);
    route.initialize({nullptr, nullptr});
    channel->put_route_on_grid(route);
    EXPECT_EQ(route.getObject(4, 5).first, channel->get_point(1));
    EXPECT_EQ(route.getObject(2, 5).first, channel->get_point(0));

    // The nodes kept from one call to the next are found again when a point
    // moves, an elevation changes or the grid changes: the same points as a
    // fresh copy of the channel gives. The record of what they are found from
    // follows every such change.
    const auto same_points = [&](const Domain& grid)
    {
        std::vector<ChannelGridPoint> kept;
        std::vector<ChannelGridPoint> fresh;
        channel->find_grid_points(grid, kept);
        Channel(&mc, *channel, true).find_grid_points(grid, fresh);
        ASSERT_EQ(kept.size(), fresh.size());
        for (std::size_t k = 0; k < kept.size(); ++k)
        {
            EXPECT_EQ(kept[k].ix, fresh[k].ix);
            EXPECT_EQ(kept[k].iy, fresh[k].iy);
            EXPECT_EQ(kept[k].z, fresh[k].z);
        }
    };
    std::vector<double> record;
    std::vector<double> changed;
    channel->grid_points_inputs(*domain, record);
    channel->grid_points_inputs(*domain, changed);
    EXPECT_EQ(record, changed);
    // A record written over a longer or shorter one, or one that differs in its
    // last value, is the same as a fresh one.
    std::vector<double> tail = record;
    tail.push_back(0.);
    std::vector<double> last = record;
    last.back() += 1.;
    std::vector<double> cut(record.begin(), record.end() - 1);
    for (const std::vector<double>& stale :
         {std::vector<double>(), std::vector<double>(3, 7.), std::vector<double>(1000, 7.), tail, last, cut})
    {
        changed = stale;
        channel->grid_points_inputs(*domain, changed);
        EXPECT_EQ(record, changed) << stale.size();
    }
    auto smaller = make_domain(4, 6, 10.);
    const std::function<void()> changes[] = {
        [&] { b->reset(b->getX() + 7., b->getY() + 4., b->get_elevation()); },
        [&] { a->set_elevation(TOP + 1.); }, [] {}};
    for (const auto& change : changes)
    {
        same_points(*domain);
        change();
        channel->grid_points_inputs(*domain, changed);
        if (&change != &changes[2])
        {
            EXPECT_NE(record, changed);
        }
        record = changed;
        same_points(*domain);
        same_points(*smaller);
        channel->grid_points_inputs(*smaller, changed);
        EXPECT_NE(record, changed);
    }

    a->hmean(0.);
    double depth;
    EXPECT_TRUE(is_assertion_of(
        assertion_text([&] { channel->cross_section_elevation(domain.get(), 3, 5, a, b, depth); }),
        "cp1->getHmean() > 0. && cp2->getHmean() > 0."));
}

TEST_F(SectionTest, ProjectionBetweenNormalsAndOuterSide)
{
    // A left turn: the normals converge on the inner (left) side.
    auto channel = make_channel({Point3D(0., 0., TOP), Point3D(15., 0., TOP), Point3D(27., 9., TOP),
                                 Point3D(34., 22., TOP), Point3D(36., 37., TOP)});
    ChannelPoint* a = channel->get_point(1);
    ChannelPoint* b = channel->get_point(2);
    for (double k : {-10., -4., 0., 6., 12.})
    {
        EXPECT_NEAR(channel->norm_proj_new(*a + a->normal() * k, a, b), 0., 1e-9) << k;
        EXPECT_NEAR(channel->norm_proj_new(*b + b->normal() * k, a, b), 1., 1e-9) << k;
    }
    const Point2D middle = (*a + *b) / 2.;
    const double t = channel->norm_proj_new(middle, a, b);
    EXPECT_GT(t, 0.3);
    EXPECT_LT(t, 0.7);

    channel->compute_velocity_perturbation();
    ASSERT_LT(a->getC(), 0.);
    ASSERT_LT(b->getC(), 0.);
    EXPECT_EQ(channel->point_at_outer_side(middle - a->normal() * 5., a, b), 1);
    EXPECT_EQ(channel->point_at_outer_side(middle + a->normal() * 5., a, b), -1);

    std::vector<ChannelGridPoint> points;
    auto domain = make_domain(10, 10, 5.);
    channel->find_grid_points_new(*domain, points);
    ASSERT_FALSE(points.empty());
    for (const ChannelGridPoint& p : points)
    {
        EXPECT_LE(p.bed, p.z);
        EXPECT_LT(p.curvature, 0.);
        EXPECT_GT(p.flow.u0(), 0.);
    }
    // The points are written over in place: a list that held other points,
    // more or fewer, ends equal to a fresh one, field by field.
    std::vector<ChannelGridPoint> fewer(points.begin(),
                                        points.begin() + static_cast<std::ptrdiff_t>(points.size() / 2));
    std::vector<ChannelGridPoint> more = points;
    more.insert(more.end(), points.begin(), points.end());
    for (ChannelGridPoint& p : fewer)
    {
        p.bed = p.curvature = 99.;
        p.side = 7;
        p.flow = Flow(p.flow.mc());
    }
    for (std::vector<ChannelGridPoint>* reused : {&fewer, &more})
    {
        channel->find_grid_points_new(*domain, *reused);
        ASSERT_EQ(reused->size(), points.size());
        for (std::size_t k = 0; k < points.size(); k++)
        {
            const ChannelGridPoint& p = points[k];
            const ChannelGridPoint& q = (*reused)[k];
            EXPECT_TRUE(p.ix == q.ix && p.iy == q.iy && p.z == q.z && p.bed == q.bed &&
                        p.curvature == q.curvature && p.side == q.side && p.flow.u0() == q.flow.u0() &&
                        p.flow.u1() == q.flow.u1() && p.flow.hflow_max() == q.flow.hflow_max() &&
                        p.flow.sed_load().size() == q.flow.sed_load().size())
                << k;
        }
    }
}

TEST_F(SectionTest, MovingBendBuildsPointBarsInsideAndErodesOutside)
{
    for (bool variable : {false, true})
    {
        SCOPED_TRACE(variable ? "variable grain size" : "fixed grain size");
        params.setParamBool("GR_PB", variable);
        const double dx = 5.;
        const int nx = 321;
        const int ny = 101;
        auto domain = make_domain(nx, ny, dx);
        const double y0 = 250.;
        const double amplitude = 30.;
        const double k = MP_TWO_PI / 600.;
        std::vector<Point3D> points;
        for (double x = 0.; x <= 1600.; x += 10.)
            points.emplace_back(x, y0 + amplitude * std::sin(k * x), TOP);
        auto channel = make_channel(points);
        const double w2 = channel->half_width();

        channel->compute_velocity_perturbation();
        channel->make_point_bar(domain.get(), &mb, 1, true);
        std::vector<ChannelGridPoint> first;
        channel->find_grid_points(*domain, first);
        for (const ChannelGridPoint& p : first)
            domain->getObject(p.ix, p.iy).set_under_channel(false);
        for (unsigned int age = 2; age < 120; age++)
            moving_step(*channel, *domain, mb, age);
        channel->compute_velocity_perturbation();

        // Sides of the present course, in its bends, away from the ends: the
        // normal points left, and a left turn has a negative curvature.
        double cmax = 0.;
        for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
            if (cp->get_abscissa() > 300. && cp->get_abscissa() < 1300.)
                cmax = std::max(cmax, std::fabs(cp->getC()));
        int bar_inner = 0, bar_outer = 0, cut_inner = 0, cut_outer = 0;
        std::set<double> bar_grains;
        for (int j = 0; j < ny; j++)
            for (int i = 60; i <= 260; i++)
            {
                const Point2D p(i * dx, j * dx);
                const ChannelPoint* nearest = channel->first();
                for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
                    if (cp->distance2D(p) < nearest->distance2D(p))
                        nearest = cp;
                const double offset = nearest->normal().scalar(p - *nearest);
                if (std::fabs(nearest->getC()) < 0.5 * cmax || std::fabs(offset) < 3. ||
                    nearest->distance2D(p) > 2. * w2)
                    continue;
                const bool inner = offset * nearest->getC() < 0.;
                const DepositionSet& stack = domain->getObject(i, j);
                for (const DepositUnit& unit : stack.get_irregular())
                    if (unit.family() == pb && unit.thickness() > 0.)
                        bar_grains.insert(unit.granulo());
                if (family_thickness(stack, pb) > 0.)
                    (inner ? bar_inner : bar_outer)++;
                else if (stack.get_ztop() < TOP - 0.1)
                    (inner ? cut_inner : cut_outer)++;
            }
        // Bars take their grain from the flow when asked to, class 10 otherwise.
        if (variable)
            EXPECT_GT(bar_grains.size(), 3u);
        else
            EXPECT_EQ(bar_grains, std::set<double>{Facies::class_to_granulo(10)});
        EXPECT_GT(bar_inner, 50);
        EXPECT_LT(bar_outer, bar_inner / 10);
        EXPECT_GT(cut_outer, 50);
        EXPECT_LT(cut_inner, cut_outer / 10);

        // Beyond the banks of the first course, only the outer banks of its bends were cut.
        int cut_beyond_outer = 0, cut_beyond_inner = 0;
        for (int j = 0; j < ny; j++)
            for (int i = 60; i < 260; i++)
            {
                const double s = std::sin(k * i * dx);
                const double offset = j * dx - (y0 + amplitude * s);
                if (std::fabs(s) < 0.95 || std::fabs(offset) < w2 + dx)
                    continue;
                if (domain->getObject(i, j).get_ztop() < TOP - 0.1)
                    (offset * s > 0. ? cut_beyond_outer : cut_beyond_inner)++;
            }
        EXPECT_GT(cut_beyond_outer, 10);
        EXPECT_EQ(cut_beyond_inner, 0);
    }
}

TEST_F(SectionTest, FillSectionPutsSandUnderPlug)
{
    auto domain = make_domain(20, 20, 10.);
    auto channel = make_channel(straight(5, 20., 15., 50.));
    ChannelPoint* a = channel->get_point(0);
    ChannelPoint* b = channel->get_point(1);
    channel->make_channel_lag(domain.get(), &mb, 1);
    double d;
    const double e = channel->cross_section_elevation(domain.get(), 3, 5, a, b, d);
    ASSERT_GT(d, 1.);
    EXPECT_NEAR(domain->getObject(3, 5).get_ztop(), e, STEP);
    EXPECT_DOUBLE_EQ(domain->getObject(3, 5).water_depth(), d);

    struct Case
    {
        double fraction;
        double sand;
    };
    unsigned int age = 2;
    for (Case c : {Case{1., 1.}, Case{0., 0.}, Case{0.25, 0.25}, Case{1.7, 1.}, Case{-1., 0.}})
    {
        SCOPED_TRACE(c.fraction);
        channel->fill_section(domain.get(), &mb, a, b, c.fraction, age++);
        const DepositionSet& stack = domain->getObject(3, 5);
        EXPECT_EQ(stack.water_depth(), 0.);
        EXPECT_NEAR(stack.get_ztop(), e + d, 2. * STEP);
        EXPECT_NEAR(family_thickness(stack, sp), c.sand * d, 2. * STEP);
        EXPECT_NEAR(family_thickness(stack, mp), (1. - c.sand) * d, 2. * STEP);
        // Sand at the bottom of the fill, plug above it.
        EXPECT_EQ(stack.get_facies().family(), c.sand < 1. ? mp : sp);
        EXPECT_EQ(stack.get_facies().granulo_class(), c.sand < 1. ? 2 : 9);
    }

    // A stack already written at this age is not cut again; an older one is.
    const double top = domain->getObject(3, 5).get_ztop();
    channel->fill_section(domain.get(), &mb, a, b, 1., age - 1);
    EXPECT_EQ(domain->getObject(3, 5).get_ztop(), top);
    EXPECT_EQ(family_thickness(domain->getObject(3, 5), sp), 0.);
    channel->fill_section(domain.get(), &mb, a, b, 1., age);
    EXPECT_NEAR(family_thickness(domain->getObject(3, 5), sp), d, 2. * STEP);
    EXPECT_NEAR(family_thickness(domain->getObject(3, 5), mp), 0., 2. * STEP);
}

TEST_F(SectionTest, PlugsFollowTheirDecayAlongTheReach)
{
    auto domain = make_domain(80, 20, 15.);
    auto channel = make_channel(straight(41, 0., 15., 150.));
    const double w = channel->width();
    channel->make_channel_lag(domain.get(), &mb, 1);
    const double d = 1.5 * channel->get_point(5)->getHmean();

    // Sand at the axis node of each column; column i is filled by the section ending at point i.
    auto sand_at = [&](int i) { return family_thickness(domain->getObject(i, 10), sp); };

    ChannelPoint* a = channel->get_point(0);
    ChannelPoint* b = channel->get_point(20);
    const double length = b->s() - a->s();
    ASSERT_NEAR(length, 10. * w, 1e-9);
    channel->fill_oxbow_new(domain.get(), &mb, a, b, 2);
    double f = 0.;
    for (int i = 1; i < 20; i++)
    {
        const double cum = channel->get_point(i)->s() - a->s();
        // Ten widths: upstream and downstream halves of five widths, with decay
        // scales of 5 and 6 widths; exactly at the middle the sand fraction is kept.
        if (cum < 5. * w)
            f = std::exp(-3. * cum / (5. * w));
        else if (cum > 5. * w)
            f = std::exp(-3. * (length - cum) / (6. * w));
        EXPECT_NEAR(sand_at(i), f * d, 2. * STEP) << i;
    }
    EXPECT_EQ(sand_at(20), 0.);
    EXPECT_GT(sand_at(19) - sand_at(1), 0.05);

    // A downstream plug: only mud until six widths from the end.
    ChannelPoint* c = channel->get_point(20);
    ChannelPoint* end = channel->last();
    const double span = end->s() - c->s();
    channel->fill_channel_new(domain.get(), &mb, c, end, 3, ADD_PLUG_DOWNSTREAM);
    for (int i = 21; i < 40; i++)
    {
        const double cum = channel->get_point(i)->s() - c->s();
        const double f = cum > span - 6. * w ? std::exp(-3. * (span - cum) / (6. * w)) : 0.;
        EXPECT_NEAR(sand_at(i), f * d, 2. * STEP) << i;
        EXPECT_NEAR(family_thickness(domain->getObject(i, 10), mp), (1. - f) * d, 2. * STEP) << i;
    }
    EXPECT_EQ(sand_at(40), 0.);

    // Nothing to do without a reach.
    channel->fill_channel_new(domain.get(), &mb, nullptr, end, 4, ADD_PLUG_UPSTREAM);
    channel->fill_channel_new(domain.get(), &mb, end, end, 4, ADD_PLUG_UPSTREAM);
    channel->fill_channel_new(domain.get(), &mb, end, nullptr, 4, ADD_PLUG_UPSTREAM);
    EXPECT_EQ(sand_at(40), 0.);
}

TEST_F(SectionTest, AbandonmentFillsOrDriesAndDeletes)
{
    auto domain = make_domain(80, 20, 15.);
    auto channel = make_channel(straight(41, 0., 15., 150.));
    channel->make_channel_lag(domain.get(), &mb, 1);
    ASSERT_GT(domain->getObject(10, 10).water_depth(), 0.);

    // An upstream plug on the path from point 30: the first columns get the most sand.
    channel->abandon_from(channel->get_point(30), domain.get(), &mb, 2, 0.005);
    EXPECT_EQ(channel->number_of_points(), 30);
    EXPECT_EQ(channel->last()->next(), nullptr);
    const double d = 1.5 * channel->get_point(5)->getHmean();
    EXPECT_NEAR(family_thickness(domain->getObject(31, 10), sp),
                std::exp(-3. * 15. / (12. * channel->width())) * d, 2. * STEP);

    // Dry abandonment between two points only clears the water.
    channel->abandon_between(channel->get_point(10), channel->get_point(20), domain.get(), &mb, 3, -1.);
    EXPECT_EQ(channel->number_of_points(), 19);
    EXPECT_EQ(domain->getObject(15, 10).water_depth(), 0.);
    EXPECT_EQ(family_thickness(domain->getObject(15, 10), sp) +
                  family_thickness(domain->getObject(15, 10), mp),
              0.);
    EXPECT_GT(domain->getObject(5, 10).water_depth(), 0.);

    // The old filling of the whole channel decays from upstream.
    params.setOldFilling(true);
    channel->abandon(domain.get(), &mb, 4, ADD_PLUG_NONE, 0.5);
    EXPECT_EQ(channel->number_of_points(), 0);
    EXPECT_EQ(channel->first(), nullptr);
    const double decay = 0.5 / 15.;
    EXPECT_NEAR(family_thickness(domain->getObject(2, 10), sp), std::exp(-30. * decay) * d, 2. * STEP);
    EXPECT_EQ(domain->getObject(5, 10).water_depth(), 0.);
}

TEST_F(SectionTest, GhostFillRisesByItsLimitAndLoweringErodes)
{
    auto domain = make_domain(20, 20, 10.);
    auto channel = make_channel(straight(5, 20., 15., 50.));
    channel->make_channel_lag(domain.get(), &mb, 1);
    double d;
    const double e =
        channel->cross_section_elevation(domain.get(), 3, 5, channel->get_point(0), channel->get_point(1), d);
    const double top0 = domain->getObject(3, 5).get_ztop();
    for (int j = 0; j < 20; j++)
        for (int i = 0; i < 20; i++)
            domain->getObject(i, j).set_under_channel(false);

    channel->make_ghost_migration(domain.get(), &mb, 2, 0.5);
    const DepositionSet& stack = domain->getObject(3, 5);
    EXPECT_NEAR(stack.get_ztop(), top0 + 0.5, STEP);
    EXPECT_NEAR(stack.water_depth(), e + d - top0 - 0.5, 1e-9);
    EXPECT_EQ(stack.get_facies().family(), HemipelagicPlug::_fd.id());
    for (unsigned int age = 3; age < 20; age++)
        channel->make_ghost_migration(domain.get(), &mb, age, 0.5);
    EXPECT_NEAR(stack.get_ztop(), e + d, STEP);
    EXPECT_EQ(stack.water_depth(), 0.);

    // Lowering: nothing when the depth reaches the channel's full depth.
    const double hmax = MeanderCalculator::hmax_from_hmean(channel->hmean0());
    channel->move_channel_down(domain.get(), &mb, hmax);
    EXPECT_EQ(channel->get_point(0)->get_elevation(), TOP);
    channel->move_channel_down(domain.get(), &mb, hmax - 1.);
    EXPECT_DOUBLE_EQ(channel->get_point(0)->get_elevation(), TOP - 1.);
    EXPECT_NEAR(stack.get_ztop(), e, STEP);
    EXPECT_DOUBLE_EQ(stack.water_depth(), d > 1. ? d - 1. : 0.);
}
