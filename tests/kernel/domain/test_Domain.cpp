#include "kernel/domain/Domain.h"

#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/EMap.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>

namespace
{

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::is_assertion_of;

int g_progress_calls = 0;
int g_progress_limit = 0;

// Answers true for the first g_progress_limit calls, false afterwards.
bool limited_progress(int)
{
    return ++g_progress_calls <= g_progress_limit;
}

constexpr double ZREF = 100.;
constexpr double ROTATION = 30.;
const double DEG = 3.14159265 / 180.;

struct Kernel
{
    Kernel()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        tracer.setTraceLevel(TRACE_DEBUG);
    }
    std::unique_ptr<Domain> make(int nx, int ny, const Topo* flat = nullptr, double dx = 20., double dy = 10.)
    {
        return std::make_unique<Domain>(&mc, &seed, &mb, flat, dx, dy, nx, ny, Point2D(1000., 2000.),
                                        ROTATION, ZREF, 0u, Facies(8));
    }
    Tracer tracer;
    Parameters params{&tracer};
    MeanderCalculator mc{&params, &tracer};
    SeedGenerator seed;
    MassBalance mb;
};

// A surface on the domain's own grid, geographic values from f(i, j).
template <typename F> Topo surface_on(const Domain& dom, F f)
{
    Topo topo(dom.getGridParams());
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
            topo.set_at(i, j, f(i, j));
    return topo;
}

void set_top(Domain& dom, int i, int j, double z)
{
    dom.getObject(i, j).set_zbot(std::min(z, 0.));
    dom.getObject(i, j).set_ztop(z);
}

std::string dump(const Domain& dom)
{
    std::ostringstream out(std::ios::binary);
    EXPECT_TRUE(dom.binary_output(out));
    return out.str();
}

} // namespace

TEST(Domain, ConstructionPlacesNodesInBothFrames)
{
    Kernel k;
    auto dom = k.make(10, 6);
    EXPECT_EQ(dom->getX0(), 0.);
    EXPECT_EQ(dom->getY0(), 0.);
    EXPECT_DOUBLE_EQ(dom->get_diagonal(), std::sqrt(500.));
    EXPECT_EQ(dom->getZref(), ZREF);
    const double c = std::cos(ROTATION * DEG), s = std::sin(ROTATION * DEG);
    for (int j : {0, 5})
        for (int i : {0, 3, 9})
        {
            const DepositionSet& ds = dom->getObject(i, j);
            EXPECT_EQ(ds.get_location(), Point2D(i * 20., j * 10.));
            EXPECT_NEAR(ds.get_location_geo().get_abscissa(), c * i * 20. - s * j * 10. + 1000., 1e-9);
            EXPECT_NEAR(ds.get_location_geo().get_ordinate(), s * i * 20. + c * j * 10. + 2000., 1e-9);
            EXPECT_EQ(ds.get_zref(), ZREF);
            EXPECT_EQ(ds.get_facies().family(), 8);
            EXPECT_EQ(ds.get_erod(), std::vector<double>(1, 4e-8));
            EXPECT_EQ(dom->getTopoGeo(i, j, false), ZREF);
        }
    EXPECT_EQ(dom->get_erod_default(), 4e-8);
    EXPECT_EQ(dom->get_mx(), MP_UNDEF_INT);
    EXPECT_EQ(dom->getGridPointFromGeo(dom->grid2Geo(7, 4)), Point2D(7, 4));
    EXPECT_EQ(dom->getGridPointFromRel(Point2D(49., 16.)), Point2D(2, 2));
    EXPECT_TRUE(dom->isValid(9, 5));
    EXPECT_FALSE(dom->isValid(10, 0));
    EXPECT_FALSE(dom->isValid(0, -1));
}

TEST(Domain, FlowDirectionSetsCornersLinesAndMargins)
{
    Kernel k;
    auto dom = k.make(10, 6);
    dom->set_margins(2, 3);
    // Absolute 60 degrees on a grid turned by 30 runs along +x of the grid.
    dom->update_slope(0.002, 60.);
    EXPECT_NEAR(dom->get_flow_angle(), 0., 1e-12);
    EXPECT_NEAR(dom->get_slope_x(), 0.002, 1e-12);
    EXPECT_NEAR(dom->get_slope_y(), 0., 1e-12);
    EXPECT_NEAR(dom->get_scalar_dir(4), 1., 1e-12);
    EXPECT_NEAR(dom->get_scalar_dir(3), -1., 1e-12);
    EXPECT_NEAR(dom->get_scalar_dir(7), 1., 1e-12);
    EXPECT_EQ(dom->get_upstream_corner(), Point2D(-40., -30.));
    EXPECT_EQ(dom->get_downstream_corner(), Point2D(220., 80.));
    EXPECT_EQ(dom->get_upstream_apex(), Point2D(0., 0.));
    EXPECT_EQ(dom->get_downstream_apex(), Point2D(180., 50.));
    EXPECT_NEAR(dom->get_upstream_line().distance(Point2D(-40., 500.)), 0., 1e-9);
    EXPECT_NEAR(dom->get_downstream_line().distance(Point2D(220., -70.)), 0., 1e-9);
    const Point2D rectangle[4] = {Point2D(-40., -30.), Point2D(220., -30.), Point2D(220., 80.),
                                  Point2D(-40., 80.)};
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(dom->get_corner(c).distance(rectangle[c]), 0., 1e-9) << c;

    // Against the grid axes: the upstream corner is at high x.
    dom->update_slope(0.002, 90. - ROTATION - 180.);
    EXPECT_EQ(dom->get_upstream_corner(), Point2D(220., -30.));
    EXPECT_EQ(dom->get_downstream_corner(), Point2D(-40., 80.));
    EXPECT_EQ(dom->get_upstream_apex(), Point2D(180., 0.));
    EXPECT_EQ(dom->get_downstream_apex(), Point2D(0., 50.));

    // Oblique flows: corners from the table, and the rectangle along the flow holds the grid.
    for (double relative : {45., 225., 300., 120.})
    {
        dom->update_slope(0.002, 90. - ROTATION - relative);
        const double ux = std::cos(relative * DEG), uy = std::sin(relative * DEG);
        const Point2D up(ux > 0 ? -40. : 220., uy > 0 ? -30. : 80.);
        const Point2D down(ux > 0 ? 220. : -40., uy > 0 ? 80. : -30.);
        EXPECT_EQ(dom->get_upstream_corner(), up) << relative;
        EXPECT_EQ(dom->get_downstream_corner(), down) << relative;
        const Point2D a(down.get_abscissa(), up.get_ordinate()), b(up.get_abscissa(), down.get_ordinate());
        const Point2D u(ux, uy);
        const Point2D expected[4] = {a + u * (up - a).scalar(u), a + u * (down - a).scalar(u),
                                     b + u * (down - b).scalar(u), b + u * (up - b).scalar(u)};
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(dom->get_corner(c).distance(expected[c]), 0., 1e-7) << relative << " " << c;
        // Every grid corner with margins lies between the two lines.
        for (const Point2D& p : {up, down, a, b})
        {
            EXPECT_GE((p - up).scalar(u), -1e-7);
            EXPECT_LE((p - down).scalar(u), 1e-7);
        }
    }
    // New margins move the corners at once.
    dom->update_slope(0.002, 60.);
    dom->set_margins(0, 1);
    EXPECT_EQ(dom->get_upstream_corner(), Point2D(0., -10.));
    EXPECT_EQ(dom->get_downstream_corner(), Point2D(180., 60.));
}

TEST(Domain, MarginIndexFoldsBackIntoTheGrid)
{
    auto fold = [](int n, int i, int m, int& out_m)
    {
        const bool flag = Domain::margin_idx(n, i, m);
        out_m = m;
        return std::make_pair(i, flag);
    };
    int m = 0;
    EXPECT_EQ(fold(10, 10, 3, m), std::make_pair(8, true));
    EXPECT_EQ(fold(10, 13, 3, m), std::make_pair(7, false));
    EXPECT_EQ(fold(10, 15, 3, m), std::make_pair(9, true));
    EXPECT_EQ(fold(10, -1, 3, m), std::make_pair(1, true));
    EXPECT_EQ(fold(10, -4, 3, m), std::make_pair(2, false));
    EXPECT_EQ(fold(10, -6, 3, m), std::make_pair(0, true));
    EXPECT_EQ(fold(10, 4, 3, m), std::make_pair(4, false));
    // m = 0 works as m = 1; m beyond the grid is clamped to n - 1.
    EXPECT_EQ(fold(10, 11, 0, m), fold(10, 11, 1, m));
    EXPECT_EQ(m, 1);
    EXPECT_EQ(fold(10, -3, 0, m), fold(10, -3, 1, m));
    fold(5, 7, 40, m);
    EXPECT_EQ(m, 4);
}

TEST(Domain, TopographyExtrapolatedIsContinuousAndMirrored)
{
    Kernel k;
    auto dom = k.make(8, 6);
    // Rising with i inside; the last row holds the border extremes 0 and 20.
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            set_top(*dom, i, j, j == 5 ? (i == 7 ? 20. : 0.) : 5. + i);

    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { dom->get_topo_extrapolated(true, true, -1, 2); }), "false"));
    EXPECT_NE(g_trace.find("Domain border elevations not yet computed... Is there any valid domain?"),
              std::string::npos);

    dom->set_margins(2, 2);
    dom->update_slope(0.001, 60.);
    EXPECT_EQ(dom->get_zmin_border(), 0.);
    EXPECT_EQ(dom->get_zmax_border(), 20.);
    EXPECT_EQ(dom->get_topo_extrapolated(true, true, 3, 2), 8.);
    // One node out: odd reflection about the edge, faded by (1/m)^2.
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, -1, 2), 2 * 5. - (0.75 * 6. + 0.25 * 5.));
    // At the margin's depth the edge value, then back up the unflipped half of the fold.
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, -2, 2), 5.);
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, -3, 2), 0.75 * 6. + 0.25 * 5.);
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, -4, 2), 5.);
    // The high side mirrors the same way: 2 * 12 - (0.75 * 11 + 0.25 * 12).
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, 8, 1), 24. - (0.75 * 11. + 0.25 * 12.));
    // Margins given explicitly replace the domain's: with m = 4, g = 1/16.
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, -1, 2, 4, 4), 10. - (15. / 16. * 6. + 5. / 16.));
    // Constant along j: mirroring in j gives the column's value back.
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, 3, -1), 8.);
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(true, true, 3, -3), 8.);
    // Results stay within the border extremes.
    for (int j = -6; j < 12; ++j)
        for (int i = -6; i < 14; ++i)
        {
            const double z = dom->get_topo_extrapolated(true, true, i, j);
            EXPECT_GE(z, 0.);
            EXPECT_LE(z, 20.);
        }

    // The pseudo-topography with the regional slope taken out, indices as given.
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            dom->getObject(i, j).set_topo_altered(dom->getObject(i, j).get_ztop());
    dom->compute_border_zmin();
    dom->compute_border_zmax();
    EXPECT_EQ(dom->get_zmin_border_altered(), 0.);
    EXPECT_DOUBLE_EQ(dom->get_topo_extrapolated(false, true, 3, 2, MP_UNDEF_INT, MP_UNDEF_INT, true),
                     8. - 3 * 20. * 0.001);
    EXPECT_NEAR(dom->get_topo_extrapolated(false, true, -1, 2, MP_UNDEF_INT, MP_UNDEF_INT, true),
                10. - (0.75 * 6. + 0.25 * 5.) + 20. * 0.001, 1e-12);
    EXPECT_EQ(dom->get_topo_extrapolated(true, true, 3, 2, MP_UNDEF_INT, MP_UNDEF_INT, true), 8.);

    // The exported surface: the grid widened by the margins, its first node at
    // the domain's node (-2, -2), geographic values.
    Topo extra;
    dom->get_extra_topo(extra);
    ASSERT_EQ(extra.getNx(), 12);
    ASSERT_EQ(extra.getNy(), 10);
    EXPECT_DOUBLE_EQ(extra.getRotation(), ROTATION);
    const Point2D corner = dom->grid2Geo(-2, -2);
    EXPECT_NEAR(extra.grid2Geo(0, 0).distance(corner), 0., 1e-9);
    EXPECT_NEAR(extra.grid2Geo(2, 2).distance(dom->grid2Geo(0, 0)), 0., 1e-9);
    auto at = [&extra](int i, int j)
    {
        double z = 0.;
        EXPECT_TRUE(extra.get_at(i, j, z));
        return z;
    };
    for (int j = -2; j < 8; ++j)
        for (int i = -2; i < 10; ++i)
            EXPECT_DOUBLE_EQ(at(i + 2, j + 2), ZREF + dom->get_topo_extrapolated(true, false, i, j));
    EXPECT_DOUBLE_EQ(at(5, 4), ZREF + 8.);
}

TEST(Domain, ErodibilityExtrapolatedAndDryNeighbours)
{
    Kernel k;
    auto dom = k.make(8, 6);
    dom->set_margins(2, 2);
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            dom->getObject(i, j).set_erod(std::vector<double>(1, i * 1e-8), MP_UNDEF_REAL, 0.);
    // Linear from 0 at the edge: the reflection would be negative and becomes 0.
    EXPECT_EQ(dom->get_erodibility_extrapolated(-1, 3), 0.);
    EXPECT_DOUBLE_EQ(dom->get_erodibility_extrapolated(-3, 3), 0.75e-8);
    EXPECT_DOUBLE_EQ(dom->get_erodibility_extrapolated(8, 3), 14e-8 - (0.75 * 6e-8 + 0.25 * 7e-8));
    EXPECT_DOUBLE_EQ(dom->get_erodibility_extrapolated(4, 3), 4e-8);

    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            set_top(*dom, i, j, i + 10. * j);
    dom->update_slope(0.001, 60.);
    // Highest dry neighbour of (3, 2) is (4, 3) until it is flooded.
    EXPECT_EQ(dom->get_topo_neigh_dry(3, 2), 34.);
    dom->getObject(4, 3).water_depth(1.);
    dom->getObject(3, 3).water_depth(1.);
    EXPECT_EQ(dom->get_topo_neigh_dry(3, 2), 32.);
    // A corner sees only its three neighbours; with all of them wet, its own value.
    dom->getObject(1, 0).water_depth(0.5);
    dom->getObject(0, 1).water_depth(0.5);
    dom->getObject(1, 1).water_depth(0.5);
    EXPECT_EQ(dom->get_topo_neigh_dry(0, 0), 0.);
}

TEST(Domain, PseudoTopographyFollowsErodibility)
{
    Kernel k;
    auto dom = k.make(8, 6);
    dom->set_margins(2, 2);
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            set_top(*dom, i, j, 0.1 * i);
    // A strip twice as erodible as the default.
    for (int j = 0; j < 6; ++j)
        dom->getObject(5, j).set_erod(std::vector<double>(1, 8e-8), MP_UNDEF_REAL, 0.);
    ConstantDistributionGenerator zero(&k.seed, 0.);
    dom->compute_pseudo_topo(2., zero);
    // range = max(2, 0.7): the strip sinks by one range more than the rest, and the
    // highest altered node is brought level with the highest top.
    double highest = -1e30;
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
        {
            const double lowered = dom->getObject(i, j).get_ztop() - dom->getObject(i, j).get_topo_altered();
            EXPECT_NEAR(lowered, i == 5 ? 2. : 0., 3e-5) << i << " " << j;
            highest = std::max(highest, dom->getObject(i, j).get_topo_altered());
        }
    EXPECT_NEAR(highest, 0.7, 1e-12);
    EXPECT_EQ(dom->get_zmax_border_altered(), highest);

    // The same seeds give the same surface; the noise comes from the domain's seed generator.
    auto again = k.make(8, 6);
    again->resetFrom(*dom);
    for (Domain* d : {dom.get(), again.get()})
    {
        SeedGenerator own;
        own.reset(42);
        UniformDistributionGenerator weights(&own, 0., 1.);
        k.seed.reset(7);
        d->compute_pseudo_topo(1., weights);
    }
    for (int j = 0; j < 6; ++j)
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(dom->getObject(i, j).get_topo_altered(), again->getObject(i, j).get_topo_altered());
}

TEST(Domain, LoadTopoModes)
{
    Kernel k;
    auto dom = k.make(10, 6);
    const Facies overbank(8);
    const std::string before = dump(*dom);

    EXPECT_FALSE(dom->load_topo(surface_on(*dom, [](int, int) { return 102.; }), SURF_EXCD, 1, 8));
    EXPECT_NE(g_trace.find("SURF_EXCD mode not supported to replace topography!"), std::string::npos);
    EXPECT_FALSE(dom->load_topo(surface_on(*dom, [](int, int) { return 102.; }), 7, 1, 8));
    EXPECT_NE(g_trace.find("Unknown mode (7) to replace topography!"), std::string::npos);
    // Not covering the domain: nothing is changed.
    Topo small(20., 10., 3, 3);
    small.setLocation(Point3D(1000., 2000., 0.));
    small.setRotation(ROTATION);
    small.fill(103.);
    EXPECT_FALSE(dom->load_topo(small, SURF_FILL, 1, 8));
    EXPECT_NE(g_trace.find("At Domain location {0,5} the topography is not defined!"), std::string::npos);
    EXPECT_NE(g_trace.find("Cannot migrate input topography!"), std::string::npos);
    EXPECT_TRUE(dump(*dom) == before);

    // Fill only: 2 m everywhere, of the filling facies.
    ASSERT_TRUE(dom->load_topo(surface_on(*dom, [](int, int) { return 102.; }), SURF_FILL, 1, 8));
    for (int i : {0, 9})
    {
        EXPECT_NEAR(dom->getTopoGeo(i, 3, false), 102., 1e-9);
        EXPECT_EQ(dom->getObject(i, 3).get_facies(), overbank);
        EXPECT_EQ(dom->getObject(i, 3).get_age(), 1u);
    }
    // Erode and fill: above the top it deposits only, below it erodes only.
    auto split = [](int i, int) { return i < 5 ? 103.5 : 100.5; };
    ASSERT_TRUE(dom->load_topo(surface_on(*dom, split), SURF_ERODE_FILL, 2, 2));
    EXPECT_NEAR(dom->getTopoRel(1, 1, false), 3.5, 1e-9);
    EXPECT_EQ(dom->getObject(1, 1).get_facies().family(), 2);
    EXPECT_NEAR(dom->getTopoRel(7, 1, false), 0.5, 0.0101);
    EXPECT_EQ(dom->getObject(7, 1).get_facies(), overbank);
    // Erode only leaves the low side alone and cuts the high one.
    ASSERT_TRUE(dom->load_topo(surface_on(*dom, [](int, int) { return 101.; }), SURF_ERODE, 3, 8));
    EXPECT_NEAR(dom->getTopoRel(1, 1, false), 1., 0.0101);
    EXPECT_NEAR(dom->getTopoRel(7, 1, false), 0.5, 0.0101);
    // Raising the base of the block up to the surface.
    ASSERT_TRUE(dom->load_topo(surface_on(*dom, [](int, int) { return 100.25; }), SURF_ERODE_BOTTOM, 4, 0));
    EXPECT_NEAR(dom->getObject(1, 1).get_zbot(), 0.25, 0.0101);
    EXPECT_NEAR(dom->getTopoRel(1, 1, false), 1., 0.0101);

    // A surface on another grid that covers the domain is resampled.
    Topo wide(50., 50., 20, 20);
    wide.setLocation(Point3D(700., 1800., 0.));
    wide.fill(104.);
    ASSERT_TRUE(dom->load_topo(wide, SURF_FILL, 5, 8));
    EXPECT_NEAR(dom->getTopoGeo(9, 5, false), 104., 0.0101);
}

TEST(Domain, UpperLimitSurface)
{
    Kernel k;
    auto dom = k.make(20, 10);
    EXPECT_EQ(dom->upper_limit_zul(), 0);
    EXPECT_TRUE(dom->upper_limit_reached());
    // With no limit, a built map is lo everywhere.
    ASSERT_TRUE(dom->build_emap_zul(4e-8));
    EXPECT_DOUBLE_EQ(dom->getErodibility(3, 3), 2e-8);
    EXPECT_NEAR(dom->get_erod_mean(), 2e-8, 1e-20);

    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int) { return 101. + i; })));
    EXPECT_EQ(dom->upper_limit_zul(), 100);
    EXPECT_DOUBLE_EQ(dom->getUpperLimitGeo(4, 2), 105.);
    Topo back;
    dom->get_zul(back);
    double v = 0.;
    back.get_at(7, 9, v);
    EXPECT_DOUBLE_EQ(v, 108.);
    // The limit mapped on [lo, hi] by the room left under it.
    ASSERT_TRUE(dom->build_emap_zul(4e-8));
    EXPECT_DOUBLE_EQ(dom->getErodibility(0, 0), 2e-8);
    EXPECT_DOUBLE_EQ(dom->getErodibility(19, 0), 6e-8);
    EXPECT_NEAR(dom->getErodibility(10, 4), 2e-8 + 10. / 19. * 4e-8, 1e-20);

    // 37 nodes of 200 below the limit: 18 %.
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int j) { return j * 20 + i < 37 ? 101. : 99.; })));
    EXPECT_EQ(dom->upper_limit_zul(), 18);
    // One node of 200: under 1 % but not none.
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int j) { return i == 3 && j == 4 ? 101. : 99.; })));
    EXPECT_EQ(dom->upper_limit_zul(), 1);
    // The quick test agrees with the count as the last node below moves around.
    EXPECT_FALSE(dom->upper_limit_reached());
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int j) { return i == 17 && j == 1 ? 101. : 99.; })));
    EXPECT_FALSE(dom->upper_limit_reached());
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int j) { return i == 0 && j == 0 ? 101. : 99.; })));
    EXPECT_FALSE(dom->upper_limit_reached());
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int, int) { return 99.; })));
    EXPECT_EQ(dom->upper_limit_zul(), 0);
    EXPECT_TRUE(dom->upper_limit_reached());
    ASSERT_TRUE(dom->load_zul(surface_on(*dom, [](int i, int j) { return i == 3 && j == 4 ? 101. : 99.; })));
    Topo hole = surface_on(*dom, [](int, int) { return 120.; });
    hole.set_at(4, 7, MP_UNDEF_REAL);
    EXPECT_FALSE(dom->load_zul(hole));
    EXPECT_NE(g_trace.find("At Domain location {4,7} the topography is not defined!"), std::string::npos);
    EXPECT_NE(g_trace.find("Cannot migrate input upper limit topography!"), std::string::npos);
    EXPECT_EQ(dom->upper_limit_zul(), 1);
}

TEST(Domain, TectonicMap)
{
    Kernel k;
    auto dom = k.make(6, 5);
    TectoMap map(dom->getGridParams());
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 6; ++i)
            map.set_at(i, j, 0.001 * (i + 1));
    map.set_at(2, 3, MP_UNDEF_REAL);
    ASSERT_TRUE(dom->load_tecto(map));
    EXPECT_NE(g_trace.find("Domain not fully covered by Imported Tectonic Map at : "), std::string::npos);
    // The hole takes the first defined node of its block, i outer: (1, 2).
    EXPECT_DOUBLE_EQ(dom->getObject(2, 3).get_tecto(), 0.002);
    EXPECT_DOUBLE_EQ(dom->getObject(4, 1).get_tecto(), 0.005);
    dom->apply_tecto(10);
    EXPECT_DOUBLE_EQ(dom->getTopoRel(4, 1, false), 0.05);
    EXPECT_DOUBLE_EQ(dom->getObject(4, 1).get_zbot(), 0.05);
    TectoMap back;
    dom->get_tecto_map(back);
    double v = 0.;
    back.get_at(5, 4, v);
    EXPECT_DOUBLE_EQ(v, 0.006);

    // A block with no defined value ends the load and changes nothing.
    for (int i = 0; i < 3; ++i)
        for (int j = 2; j < 5; ++j)
            map.set_at(i, j, MP_UNDEF_REAL);
    map.set_at(4, 1, 0.5);
    EXPECT_FALSE(dom->load_tecto(map));
    EXPECT_NE(g_trace.find("At location iX=0,iY=3 the tectonic value is not defined!"), std::string::npos);
    EXPECT_DOUBLE_EQ(dom->getObject(4, 1).get_tecto(), 0.005);
}

TEST(Domain, ErodibilityMaps)
{
    Kernel k;
    auto dom = k.make(6, 5);
    EMap map(dom->getGridParams());
    map.fill(5e-8);
    map.set_at(1, 1, MP_UNDEF_REAL);
    map.set_at(2, 2, 3e-7);
    map.set_at(3, 3, -1e-8);
    ASSERT_TRUE(dom->load_emap(map));
    const double mean = map.get_mean();
    EXPECT_DOUBLE_EQ(dom->getErodibility(1, 1), mean);
    EXPECT_NE(g_trace.find("Erodibility map value at [1,1] is undefined and has been set to emap mean value"),
              std::string::npos);
    EXPECT_DOUBLE_EQ(dom->getErodibility(2, 2), 2e-7);
    EXPECT_NE(g_trace.find("] is > to maximal value "), std::string::npos);
    EXPECT_EQ(dom->getErodibility(3, 3), 0.);
    EXPECT_NE(g_trace.find("] is < to minimal value "), std::string::npos);
    EXPECT_NE(g_trace.find("and has been set to "), std::string::npos);
    EXPECT_NEAR(dom->get_erod_mean(), (27. * 5e-8 + mean + 2e-7 + 0.) / 30., 1e-20);
    EMap back;
    dom->get_emap(back);
    double v = 0.;
    back.get_at(2, 2, v);
    EXPECT_DOUBLE_EQ(v, 2e-7);

    // Three dimensions: slices of 2 m centred from 101 m, the reference being 100 m.
    EMap cube(GridParams(20., 10., 2., 6, 5, 4, 0., 0., 101.));
    cube.setLocation(Point3D(1000., 2000., 0.));
    cube.setRotation(ROTATION);
    for (int kz = 0; kz < 4; ++kz)
        for (int j = 0; j < 5; ++j)
            for (int i = 0; i < 6; ++i)
                cube.set_at(i, j, kz, (kz + 1) * 1e-8);
    ASSERT_TRUE(dom->load_emap(cube));
    const DepositionSet& ds = dom->getObject(2, 1);
    EXPECT_EQ(ds.get_erod().size(), 4u);
    EXPECT_EQ(ds.get_erod_dz(), 2.);
    EXPECT_DOUBLE_EQ(ds.get_erod_z0(), 0.);
    EXPECT_DOUBLE_EQ(dom->getErodibility(2, 1), 1e-8);
    dom->getObject(2, 1).deposit_thickness(5., Facies(8), 1, &k.mb);
    EXPECT_DOUBLE_EQ(dom->getErodibility(2, 1), 3e-8);
    EXPECT_DOUBLE_EQ(dom->get_erod_mean(), 2.5e-8);

    // A map smaller than the domain leaves the rest at its mean.
    EMap part(20., 10., 3, 3);
    part.setLocation(Point3D(1000., 2000., 0.));
    part.setRotation(ROTATION);
    part.fill(6e-8);
    part.set_at(0, 0, 1.2e-7);
    ASSERT_TRUE(dom->load_emap(part));
    EXPECT_NE(g_trace.find("Domain not fully covered by Imported Emap at : "), std::string::npos);
    EXPECT_DOUBLE_EQ(dom->getErodibility(0, 0), 1.2e-7);
    EXPECT_DOUBLE_EQ(dom->getErodibility(5, 4), part.get_mean());

    EMap empty(dom->getGridParams());
    EXPECT_FALSE(dom->load_emap(empty));
    EXPECT_DOUBLE_EQ(dom->getErodibility(0, 0), 1.2e-7);

    // A channel marked on the map: hi on the centerline, lo far from it.
    EMap built;
    dom->get_emap_built_CP(built, {Point2D(0., 20.), Point2D(60., 20.)}, 10., 4e-8, 1., 1.);
    built.get_at(2, 2, v);
    EXPECT_DOUBLE_EQ(v, 6e-8);
    built.get_at(2, 3, v);
    EXPECT_DOUBLE_EQ(v, std::exp(-1.) * 4e-8 + 2e-8);
    // Beyond the end of the segment the distance runs from its end point.
    built.get_at(4, 2, v);
    EXPECT_NEAR(v, std::exp(-4.) * 4e-8 + 2e-8, 1e-20);
    built.get_at(0, 0, v);
    EXPECT_NEAR(v, 2e-8 + std::exp(-4.) * 4e-8, 1e-20);
}

TEST(Domain, FlatteningKeepsGeographicElevations)
{
    Kernel k;
    Topo flat(20., 10., 6, 5);
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 6; ++i)
            flat.set_at(i, j, 50. + i + 0.5 * j);
    flat.setLocation(Point3D(1000., 2000., 0.));
    flat.setRotation(ROTATION);
    auto dom = k.make(6, 5, &flat);
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 6; ++i)
        {
            EXPECT_DOUBLE_EQ(dom->getObject(i, j).get_flat_delta(), i + 0.5 * j);
            EXPECT_DOUBLE_EQ(dom->getTopoGeo(i, j, false), ZREF);
        }
    // A geographic surface lands at the same geographic elevation everywhere.
    ASSERT_TRUE(dom->load_topo(surface_on(*dom, [](int, int) { return 102.; }), SURF_FILL, 1, 8));
    EXPECT_NEAR(dom->getTopoGeo(4, 3, false), 102., 0.0101);
    EXPECT_NEAR(dom->getTopoRel(4, 3, false), 2. - 5.5, 0.0101);
    Topo top;
    dom->getTopo(top, false);
    double v = 0.;
    top.get_at(5, 4, v);
    EXPECT_NEAR(v, 102., 0.0101);
    // The erodibility slices follow the flattened frame.
    EMap cube(GridParams(20., 10., 2., 6, 5, 3, 0., 0., 101.));
    cube.setLocation(Point3D(1000., 2000., 0.));
    cube.setRotation(ROTATION);
    cube.fill(4e-8);
    ASSERT_TRUE(dom->load_emap(cube));
    EXPECT_DOUBLE_EQ(dom->getObject(4, 3).get_erod_z0(), -5.5);
    // A hole in the flattening surface stops the load.
    flat.set_at(2, 1, MP_UNDEF_REAL);
    EXPECT_FALSE(dom->load_emap(cube));
    EXPECT_NE(g_trace.find("Flattening surface not defined at [2,1]"), std::string::npos);
}

TEST(Domain, DrapingDepositsAndStackActions)
{
    Kernel k;
    auto dom = k.make(4, 3);
    dom->getObject(1, 1).water_depth(2.);
    dom->deposit_uniform_thickness(0.5, Facies(12, 1), 3);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_NEAR(dom->getTopoRel(i, j, false), 0.5, 1e-9);
            EXPECT_EQ(dom->getObject(i, j).get_facies().family(), 12);
        }
    // dt * interval / 10000 on dry nodes only, draping in a fluvial run.
    k.params.setUsingFluvi();
    dom->deposit_pel_drap(100, 20., 5);
    EXPECT_NEAR(dom->getTopoRel(0, 0, false), 0.7, 1e-9);
    EXPECT_NEAR(dom->getTopoRel(1, 1, false), 0.5, 1e-9);
    const std::vector<DepositUnit> stack = dom->getStack(0, 0);
    ASSERT_EQ(stack.size(), 2u);
    EXPECT_EQ(stack.back().family(), 12);
    EXPECT_DOUBLE_EQ(stack.back().granulo(), 0.125);
    k.params.setUsingTurbi();
    dom->deposit_pel_drap(50, 20., 6);
    EXPECT_EQ(dom->getObject(0, 0).get_facies().family(), 13);
    EXPECT_EQ(dom->getObject(1, 1).get_facies().family(), 12);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { dom->deposit_pel_drap(0, 20., 7); }),
                                "dt > 0 && pel_drap_int > 0"));

    // The drape laid at age 3 everywhere is the oldest deposit, not the base of the block.
    EXPECT_EQ(dom->oldest_age(), 3u);
    EXPECT_DOUBLE_EQ(dom->mean_topo_geo(false), ZREF + (11. * 0.8 + 0.5) / 12.);
    double zmin = 0., zmax = 0.;
    dom->min_and_max_elevation_geo(zmin, zmax);
    EXPECT_DOUBLE_EQ(zmin, ZREF);
    EXPECT_NEAR(zmax, ZREF + 0.8, 1e-9);
    EXPECT_NEAR(dom->max_elevation_rel(), 0.8, 1e-9);
    EXPECT_EQ(dom->min_elevation_rel(), 0.);

    unsigned char facies = 0;
    unsigned int age = 0;
    EXPECT_TRUE(dom->getSliceInfo(0, 0, ZREF + 0.75, facies, age));
    EXPECT_EQ(Facies::family(facies), 13);
    EXPECT_FALSE(dom->getSliceInfo(0, 0, ZREF + 5., facies, age));

    dom->getObject(2, 2).deposit_thickness(0.004, Facies(13, 1), 8, &k.mb);
    EXPECT_GT(dom->getObject(2, 2).get_remaining(), 0.);
    dom->forget_remaining();
    EXPECT_EQ(dom->getObject(2, 2).get_remaining(), 0.);
    ASSERT_TRUE(dom->replace_facies(2));
    for (int i = 0; i < 4; ++i)
        for (const DepositUnit& u : dom->getStack(i, 2))
            EXPECT_EQ(u.family(), 2);
    EXPECT_FALSE(dom->replace_facies(14));
}

TEST(Domain, DumpRoundTripAndProgress)
{
    Kernel k;
    auto dom = k.make(7, 5);
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 7; ++i)
            dom->getObject(i, j).deposit_thickness(0.37 * (i + 1) + 0.11 * j, Facies(1 + (i + j) % 12), 2 + j,
                                                   &k.mb);
    dom->getObject(3, 3).water_depth(1.5);
    dom->set_margins(1, 1);
    dom->update_slope(0.001, 60.);
    const std::string first = dump(*dom);

    auto other = k.make(7, 5);
    other->set_margins(1, 1);
    other->update_slope(0.001, 60.);
    {
        std::istringstream in(first, std::ios::binary);
        ASSERT_TRUE(other->binary_input(in));
    }
    EXPECT_TRUE(dump(*other) == first);
    EXPECT_EQ(other->get_zmax_border(), dom->get_zmax_border());
    EXPECT_DOUBLE_EQ(other->getTopoGeo(6, 4, true), dom->getTopoGeo(6, 4, true));

    auto fresh = k.make(7, 5);
    const std::string empty_dump = dump(*fresh);

    // A progress answering false after two rows stops the dump there.
    g_progress_calls = 0;
    g_progress_limit = 2;
    k.tracer.setProgressFunction(limited_progress);
    std::ostringstream out(std::ios::binary);
    EXPECT_FALSE(dom->binary_output(out));
    EXPECT_EQ(g_progress_calls, 3);
    EXPECT_TRUE(out.str() == first.substr(0, out.str().size()));
    EXPECT_LT(out.str().size(), first.size());

    // Reading stopped the same way, or from a short stream, leaves the domain as it was.
    g_progress_calls = 0;
    {
        std::istringstream in(first, std::ios::binary);
        EXPECT_FALSE(fresh->binary_input(in));
    }
    k.tracer.setProgressFunction(nullptr);
    EXPECT_TRUE(dump(*fresh) == empty_dump);
    {
        std::istringstream in(first.substr(0, first.size() - 5), std::ios::binary);
        EXPECT_FALSE(fresh->binary_input(in));
    }
    EXPECT_TRUE(dump(*fresh) == empty_dump);

    // A copy of a compatible domain dumps the same; another location is refused.
    auto copy = k.make(7, 5);
    copy->resetFrom(*dom);
    EXPECT_TRUE(dump(*copy) == first);
    EXPECT_EQ(copy->get_upstream_corner(), dom->get_upstream_corner());
    Domain moved(&k.mc, &k.seed, &k.mb, nullptr, 20., 10., 7, 5, Point2D(0., 0.), ROTATION, ZREF, 0u,
                 Facies(8));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { moved.resetFrom(*dom); }), "isCompatibleWith(dom, true)"));
}
