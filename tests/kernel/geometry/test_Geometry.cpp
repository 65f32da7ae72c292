#include "kernel/geometry/ConvexPolyedra2D.h"
#include "kernel/geometry/Grid2DGeom.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Line2D.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/geometry/Vector3D.h"

#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;

namespace
{

constexpr double NINE_DIGIT_PI = 3.14159265;

void expect_near_point(const Point2D& p, double x, double y, double tol = 1e-9)
{
    EXPECT_NEAR(p.get_abscissa(), x, tol);
    EXPECT_NEAR(p.get_ordinate(), y, tol);
}

} // namespace

TEST(Point2D, RotationsTurnCounterClockwiseAndInvert)
{
    Point2D p(1., 0.);
    p.rotate(Point2D(0., 0.), NINE_DIGIT_PI / 2.);
    expect_near_point(p, 0., 1., 1e-8);

    // About an off-origin centre, by a generic angle, against the closed form.
    const Point2D centre(2., 3.);
    const double angle = 0.7;
    Point2D q(5., -1.);
    q.rotate(centre, angle);
    expect_near_point(q, std::cos(angle) * 3. - std::sin(angle) * -4. + 2.,
                      std::sin(angle) * 3. + std::cos(angle) * -4. + 3.);
    q.rotate_inv(centre, std::cos(angle), std::sin(angle));
    expect_near_point(q, 5., -1.);

    Point2D h(3., 7.);
    h.rotate_half_pi();
    EXPECT_EQ(h, Point2D(-7., 3.));
    h.rotate_pi();
    EXPECT_EQ(h, Point2D(7., -3.));

    // The cross product is positive from x to y.
    EXPECT_DOUBLE_EQ(Point2D(1., 0.).vectorial(Point2D(0., 1.)), 1.);
    EXPECT_DOUBLE_EQ(Point2D(2., 3.).scalar(Point2D(4., -1.)), 5.);
    EXPECT_DOUBLE_EQ(Point2D(0., 0.).distance(Point2D(3., 4.)), 5.);
}

TEST(Point2D, TransformShiftsThenScalesAndRoundsHalfAwayFromZero)
{
    Point2D p(1., 2.);
    p.transform(Point2D(1., 1.), Point2D(2., 3.), false);
    EXPECT_EQ(p, Point2D(4., 9.));

    Point2D a(2.5, -2.5);
    a.transform(Point2D(0., 0.), Point2D(1., 1.), true);
    EXPECT_EQ(a, Point2D(3., -3.));
    Point2D b(0.5, -0.5);
    b.transform(Point2D(0., 0.), Point2D(1., 1.), true);
    EXPECT_EQ(b, Point2D(1., -1.));

    Point2D c(1., 1.);
    c += Point2D(2., 3.);
    c *= 2.;
    c -= Point2D(1., 1.);
    c /= 5.;
    EXPECT_EQ(c, Point2D(1., 1.4));
    EXPECT_NE(c, Point2D(1., 1.));
    c.reset();
    EXPECT_EQ(c, Point2D(0., 0.));
    EXPECT_EQ(Point2D(1.5, -2.).debug(), "(1.5, -2)");
}

TEST(Vector2D, NormalizeLeavesTinyVectorsAlone)
{
    Vector2D v(3., 4.);
    Vector2D& r = v.normalize();
    EXPECT_EQ(&r, &v);
    expect_near_point(v, 0.6, 0.8, 1e-15);

    Vector2D tiny(1e-7, 0.);
    tiny.normalize();
    EXPECT_EQ(tiny, Vector2D(1e-7, 0.));
    Vector2D just_above(2e-6, 0.);
    just_above.normalize();
    EXPECT_DOUBLE_EQ(just_above.get_abscissa(), 1.);

    Vector3D w(0., 3., 4.);
    w.normalize();
    EXPECT_NEAR(w.length(), 1., 1e-15);
}

TEST(Point3D, SpaceOperations)
{
    const Point3D x(1., 0., 0.);
    const Point3D y(0., 1., 0.);
    const Point3D z = x.vectorial(y);
    EXPECT_EQ(z, Point3D(0., 0., 1.));
    EXPECT_EQ(y.vectorial(x), Point3D(0., 0., -1.));
    const Point3D a(1., 2., 3.);
    const Point3D b(4., 6., 15.);
    EXPECT_DOUBLE_EQ(a.distance(b), 13.);
    EXPECT_DOUBLE_EQ(a.distance2D(b), 5.);
    EXPECT_DOUBLE_EQ(a.scalar(b), 4. + 12. + 45.);
    EXPECT_EQ(a + b, Point3D(5., 8., 18.));
    EXPECT_NE(a, Point3D(1., 2., 4.));
}

TEST(Line2D, ConstructionDistanceProjectionIntersection)
{
    // Two points closer than 1e-3: squared length not above 1e-6.
    const std::string text = assertion_text([] { Line2D l(Point2D(0., 0.), Point2D(0.0005, 0.0008)); });
    EXPECT_TRUE(is_assertion_of(text, "_norm > MP_EPSILON")) << text;
    EXPECT_TRUE(is_assertion_of(assertion_text([] { Line2D l(Point2D(1., 1.), Vector2D(0., 0.)); }),
                                "_norm > MP_EPSILON"));

    const Line2D diagonal(Point2D(0., 0.), Point2D(2., 2.));
    EXPECT_DOUBLE_EQ(diagonal.get_norm(), 8.);
    EXPECT_NEAR(diagonal.distance(Point2D(0., 2.)), std::sqrt(2.), 1e-15);
    expect_near_point(diagonal.projection(Point2D(0., 2.)), 1., 1.);

    const Line2D other(Point2D(0., 4.), Vector2D(1., -1.));
    Point2D cross;
    ASSERT_TRUE(diagonal.intersection(other, cross));
    expect_near_point(cross, 2., 2.);

    Point2D untouched(-7., 9.);
    const Line2D parallel(Point2D(5., 0.), Vector2D(3., 3.));
    EXPECT_FALSE(diagonal.intersection(parallel, untouched));
    EXPECT_EQ(untouched, Point2D(-7., 9.));

    // Random pairs: the intersection lies on both lines.
    std::mt19937 gen(12345);
    std::uniform_real_distribution<double> u(-50., 50.);
    for (int n = 0; n < 200; ++n)
    {
        const Line2D l1(Point2D(u(gen), u(gen)), Point2D(u(gen), u(gen)));
        const Line2D l2(Point2D(u(gen), u(gen)), Point2D(u(gen), u(gen)));
        Point2D p;
        if (std::fabs(l1.get_direction().vectorial(l2.get_direction())) < 1.)
            continue;
        ASSERT_TRUE(l1.intersection(l2, p));
        EXPECT_NEAR(l1.distance(p), 0., 1e-8);
        EXPECT_NEAR(l2.distance(p), 0., 1e-8);
    }
}

namespace
{

ConvexPolyedra2D make_polygon(const std::vector<Point2D>& vertices)
{
    ConvexPolyedra2D poly;
    for (const Point2D& v : vertices)
        poly.add_vertex(v);
    return poly;
}

// Strictly inside a convex polygon given counter-clockwise, with a margin.
bool strictly_inside(const std::vector<Point2D>& v, const Point2D& p, double margin)
{
    for (std::size_t k = 0; k < v.size(); ++k)
    {
        const Point2D& a = v[k];
        const Point2D& b = v[(k + 1) % v.size()];
        const Point2D edge = b - a;
        if (edge.vectorial(p - a) / std::sqrt(edge.scalar(edge)) <= margin)
            return false;
    }
    return true;
}

} // namespace

TEST(ConvexPolyedra2D, Preconditions)
{
    ConvexPolyedra2D poly = make_polygon({{0., 0.}, {1., 0.}, {1., 1.}, {0., 1.}});
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { poly.add_vertex(Point2D(2., 2.)); }), "B_offset <= 3"));
    EXPECT_EQ(poly.get_number_of_vertices(), 4);

    const ConvexPolyedra2D triangle = make_polygon({{0., 0.}, {4., 0.}, {0., 4.}});
    std::vector<Point2D> points(3);
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { triangle.find_points_with_integer_coordinates_inside(points); }),
                        "_offset == 4"));
}

TEST(ConvexPolyedra2D, BoxAndTransform)
{
    ConvexPolyedra2D poly = make_polygon({{1.4, 0.4}, {2.6, 0.6}, {2.4, 2.6}, {0.6, 2.2}});
    expect_near_point(poly.get_min(), 0.6, 0.4);
    expect_near_point(poly.get_max(), 2.6, 2.6);

    // Vertices are rounded, the box is not.
    poly.transform(Point2D(1., 0.), Point2D(2., 1.));
    EXPECT_EQ(poly.get_vertex(0), Point2D(5., 0.));
    EXPECT_EQ(poly.get_vertex(1), Point2D(7., 1.));
    EXPECT_EQ(poly.get_vertex(2), Point2D(7., 3.));
    EXPECT_EQ(poly.get_vertex(3), Point2D(3., 2.));
    expect_near_point(poly.get_min(), 3.2, 0.4);
    expect_near_point(poly.get_max(), 7.2, 2.6);
}

TEST(ConvexPolyedra2D, IntegerPointsEdgeCases)
{
    // Between two rows: nothing, and no failure.
    std::vector<Point2D> points{Point2D(9., 9.)};
    make_polygon({{0.2, 2.1}, {5.7, 2.2}, {5.6, 2.9}, {0.1, 2.8}})
        .find_points_with_integer_coordinates_inside(points);
    EXPECT_TRUE(points.empty());

    // The quick rejection needs the box to reach past the next integer on both axes:
    // nodes on the lower edge of a box shorter than one cell are not looked for.
    const ConvexPolyedra2D thin = make_polygon({{0., 2.}, {3., 2.}, {3., 2.9}, {0., 2.9}});
    EXPECT_TRUE(thin.is_included(Point2D(1., 2.)));
    EXPECT_FALSE(thin.can_there_be_integer_coordinates_inside());
    thin.find_points_with_integer_coordinates_inside(points);
    EXPECT_TRUE(points.empty());
    EXPECT_TRUE(
        make_polygon({{0., 1.9}, {3., 1.9}, {3., 2.}, {0., 2.}}).can_there_be_integer_coordinates_inside());

    // A top edge a hair below a row still reaches it.
    make_polygon({{0., 2.2}, {3., 2.2}, {3., 2.9999997}, {0., 2.9999997}})
        .find_points_with_integer_coordinates_inside(points);
    ASSERT_EQ(points.size(), 4u);
    EXPECT_EQ(points[3], Point2D(3., 3.));

    // A square on the nodes keeps its boundary nodes, row after row.
    make_polygon({{0., 0.}, {2., 0.}, {2., 2.}, {0., 2.}})
        .find_points_with_integer_coordinates_inside(points);
    ASSERT_EQ(points.size(), 9u);
    for (int k = 0; k < 9; ++k)
        EXPECT_EQ(points[k], Point2D(k % 3, k / 3));

    // Points within the tolerances of an edge count as inside.
    const ConvexPolyedra2D slanted = make_polygon({{0., 0.}, {4., 1.}, {4., 5.}, {0., 4.}});
    EXPECT_TRUE(slanted.is_included(Point2D(2., 0.5)));
    EXPECT_TRUE(slanted.is_included(Point2D(2., 0.5 + 1e-9)));
    EXPECT_FALSE(slanted.is_included(Point2D(2., 0.5 - 1e-5)));
    const ConvexPolyedra2D flat = make_polygon({{0., 1.}, {4., 1. + 4e-8}, {4., 3.}, {0., 3.}});
    EXPECT_TRUE(flat.is_included(Point2D(2., 1. - 4e-7)));
    EXPECT_FALSE(flat.is_included(Point2D(2., 1. - 1e-6)));
    EXPECT_FALSE(flat.is_included(Point2D(4.5, 1.)));
}

TEST(ConvexPolyedra2D, IntegerPointsMatchBruteForceOnRandomQuadrilaterals)
{
    std::mt19937 gen(2024);
    std::uniform_real_distribution<double> unit(0., 1.);
    int checked_points = 0;
    for (int n = 0; n < 500; ++n)
    {
        // Four angles in increasing order on a rotated ellipse give a convex counter-clockwise quadrilateral.
        std::vector<double> angles(4);
        for (double& a : angles)
            a = unit(gen) * 2. * NINE_DIGIT_PI;
        std::sort(angles.begin(), angles.end());
        const double cx = -20. + 40. * unit(gen);
        const double cy = -20. + 40. * unit(gen);
        const double rx = 0.3 + 6. * unit(gen);
        const double ry = 0.3 + 6. * unit(gen);
        const double tilt = unit(gen) * NINE_DIGIT_PI;
        std::vector<Point2D> vertices;
        for (double a : angles)
        {
            Point2D v(cx + rx * std::cos(a), cy + ry * std::sin(a));
            v.rotate(Point2D(cx, cy), tilt);
            vertices.push_back(v);
        }
        const ConvexPolyedra2D poly = make_polygon(vertices);

        std::vector<Point2D> found;
        poly.find_points_with_integer_coordinates_inside(found);
        std::set<std::pair<int, int>> found_set;
        for (const Point2D& p : found)
        {
            EXPECT_EQ(p.get_abscissa(), std::floor(p.get_abscissa()));
            EXPECT_TRUE(found_set.insert({int(p.get_abscissa()), int(p.get_ordinate())}).second);
        }

        for (int j = int(std::floor(poly.get_min().get_ordinate())) - 2;
             j <= poly.get_max().get_ordinate() + 2; ++j)
            for (int i = int(std::floor(poly.get_min().get_abscissa())) - 2;
                 i <= poly.get_max().get_abscissa() + 2; ++i)
            {
                const Point2D p(i, j);
                const bool inside = strictly_inside(vertices, p, 1e-6);
                const bool outside = !strictly_inside(vertices, p, -1e-6);
                if (inside)
                {
                    EXPECT_EQ(found_set.count({i, j}), 1u) << "missed " << p.debug() << " in polygon " << n;
                    ++checked_points;
                }
                else if (outside)
                {
                    EXPECT_EQ(found_set.count({i, j}), 0u) << "extra " << p.debug() << " in polygon " << n;
                }
            }
    }
    EXPECT_GT(checked_points, 1000);
}

namespace
{

GridParams rotated_grid(double x0, double y0)
{
    GridParams g(10., 20., 30, 40, x0, y0);
    g.setLocation(Point3D(1000., 2000., 50.));
    g.setRotation(30.);
    return g;
}

} // namespace

namespace
{

// The nodes of a section as the general polygon gives them: the reference for nodes_in_quad.
std::vector<std::pair<int, int>> polygon_nodes(const GridParams& g, const Point2D (&corners)[4])
{
    std::vector<std::pair<int, int>> nodes;
    ConvexPolyedra2D quad;
    for (const Point2D& c : corners)
        quad.add_vertex(c);
    const ConvexPolyedra2D grid = g.rel2Grid(quad);
    if (grid.get_max().get_abscissa() < -0.5 || grid.get_max().get_ordinate() < -0.5 ||
        grid.get_min().get_abscissa() > g.getNx() + 0.5 || grid.get_min().get_ordinate() > g.getNy() + 0.5)
        return nodes;
    std::vector<Point2D> points;
    grid.find_points_with_integer_coordinates_inside(points);
    for (const Point2D& p : points)
        if (p.get_abscissa() >= 0. && p.get_abscissa() < g.getNx() && p.get_ordinate() >= 0. &&
            p.get_ordinate() < g.getNy())
            nodes.emplace_back(int(p.get_abscissa()), int(p.get_ordinate()));
    return nodes;
}

} // namespace

// Sections drawn at random over grids of several meshes and origins, many of
// them degenerate (no width, one end, crossed, on the nodes, on rounding ties,
// nearly flat, astride the grid's border, far away or not finite): the quick
// rasterization gives the polygon's nodes, in its order.
TEST(GridParams, NodesInQuadAreThoseOfThePolygon)
{
    const GridParams grids[] = {GridParams(10., 10., 251, 201), GridParams(3., 7., 20, 15, -7.3, 2.9),
                                GridParams(1., 1., 8, 8), GridParams(0.7, 1.3, 40, 30, 1e5, -2e5)};
    std::mt19937 gen(77);
    std::uniform_real_distribution<double> unit(0., 1.);
    std::uniform_int_distribution<int> kind(0, 11);
    int non_empty = 0;
    int cases = 0;
    for (const GridParams& g : grids)
        for (int n = 0; n < 6000; ++n)
        {
            // A section in the grid frame: two ends, their normals, a half width.
            const double span_x = g.getNx() + 4.;
            const double span_y = g.getNy() + 4.;
            double ax = -2. + span_x * unit(gen);
            double ay = -2. + span_y * unit(gen);
            const double heading = 2. * NINE_DIGIT_PI * unit(gen);
            double length = 3. * unit(gen);
            double half = 0.2 + 2.5 * unit(gen);
            double turn_a = 0.6 * (unit(gen) - 0.5);
            double turn_b = 0.6 * (unit(gen) - 0.5);
            const int k = kind(gen);
            if (k == 0)
                half = 0.;
            else if (k == 1)
                length = 0.;
            else if (k == 2)
                turn_b = NINE_DIGIT_PI - turn_b; // crossed quadrilateral
            else if (k == 3)
                ax = std::round(ax), ay = std::round(ay), length = std::round(length),
                half = std::round(half);
            else if (k == 4)
                ax = std::floor(ax) + 0.5, ay = std::floor(ay) + 0.5, half = 0.5, length = 1.;
            else if (k == 5)
                turn_a = turn_b = 0., half = 1e-8 * unit(gen);
            else if (k == 6)
                ax = -1. + 2. * unit(gen), ay = g.getNy() - 1. + 2. * unit(gen);
            else if (k == 7)
                ax = 3e6 * unit(gen), ay = -3e6 * unit(gen);
            const double bx = ax + length * std::cos(heading);
            const double by = ay + length * std::sin(heading);
            Point2D corners[4] = {
                {ax - half * std::sin(heading + turn_a), ay + half * std::cos(heading + turn_a)},
                {bx - half * std::sin(heading + turn_b), by + half * std::cos(heading + turn_b)},
                {bx + half * std::sin(heading + turn_b), by - half * std::cos(heading + turn_b)},
                {ax + half * std::sin(heading + turn_a), ay - half * std::cos(heading + turn_a)}};
            if (k == 8)
                for (Point2D& c : corners) // corners exactly on nodes or halfway between them
                    c.reset(std::round(2. * c.get_abscissa()) / 2., std::round(2. * c.get_ordinate()) / 2.);
            else if (k == 9)
                corners[1] = corners[2] = Point2D(ax, ay); // a triangle with a repeated corner
            else if (k == 10)
                corners[2].set_ordinate(corners[3].get_ordinate() + 1e-9); // a nearly flat edge
            for (Point2D& c : corners)
                c = g.grid2Rel(c);
            if (k == 11 && n % 2 == 0)
                corners[n % 4].set_abscissa(std::nan(""));
            std::vector<std::pair<int, int>> quick{{-9, -9}};
            g.nodes_in_quad(corners, quick);
            const std::vector<std::pair<int, int>> expected = polygon_nodes(g, corners);
            ASSERT_EQ(quick, expected) << "section " << n << " of kind " << k << " on grid " << g.debug();
            non_empty += expected.empty() ? 0 : 1;
            ++cases;
        }
    EXPECT_GT(non_empty, cases / 3);
}

TEST(GridParams, DefaultsAndDimension)
{
    const GridParams def;
    EXPECT_EQ(def.getDx(), 1.);
    EXPECT_EQ(def.getDy(), 1.);
    EXPECT_EQ(def.getDz(), 1e30);
    EXPECT_EQ(def.getNz(), 0);
    EXPECT_EQ(def.getCosine(), 1.);
    EXPECT_EQ(def.getSine(), 0.);
    EXPECT_EQ(GridParams(1., 1., 3, 4).getNz(), 1);

    GridParams g(1., 2., 3., 4, 5, 6, 7., 8., 9.);
    g.setLocation(Point3D(1., 2., 3.));
    EXPECT_TRUE(g.is3D());
    g.setDz(1e30);
    EXPECT_FALSE(g.is3D());
    g.setDz(3.);
    g.setNz(1);
    EXPECT_FALSE(g.is3D());
    g.setNz(6);
    g.convertTo2D();
    EXPECT_FALSE(g.is3D());
    EXPECT_EQ(g.getNz(), 1);
    EXPECT_EQ(g.getZ0(), 0.);
    EXPECT_EQ(g.getDz(), 1e30);
    EXPECT_EQ(g.getLocation(), Point3D(1., 2., 0.));
    g.clear();
    EXPECT_EQ(g.getNx(), 0);
    EXPECT_EQ(g.getLocation(), Point3D(0., 0., 0.));
}

TEST(GridParams, RotationUsesTheNineDigitPi)
{
    GridParams g;
    g.setRotation(180.);
    EXPECT_EQ(g.getSine(), std::sin(180. * NINE_DIGIT_PI / 180.));
    EXPECT_NE(g.getSine(), std::sin(std::acos(-1.)));
    GridParams copy;
    copy.reset(g);
    EXPECT_EQ(copy.getRotation(), 180.);
    EXPECT_EQ(copy.getCosine(), std::cos(NINE_DIGIT_PI));
    EXPECT_EQ(copy.getSine(), g.getSine());
}

TEST(GridParams, FramesOnARotatedShiftedGrid)
{
    const GridParams g = rotated_grid(0., 0.);
    const double c = std::cos(30. * NINE_DIGIT_PI / 180.);
    const double s = std::sin(30. * NINE_DIGIT_PI / 180.);

    // A positive rotation turns the relative x axis counter-clockwise on the map.
    const Point2D geo = g.rel2Geo(Point2D(100., 50.));
    expect_near_point(geo, c * 100. - s * 50. + 1000., s * 100. + c * 50. + 2000.);
    EXPECT_GT(g.rel2Geo(Point2D(100., 0.)).get_ordinate(), 2000.);
    expect_near_point(g.geo2Rel(geo), 100., 50.);

    // Node (i, j) stands at (i dx, j dy), and the frames come back.
    expect_near_point(g.grid2Rel(3, 4), 30., 80.);
    for (double i = -1.5; i < 31.; i += 2.75)
        for (double j = -2.25; j < 41.; j += 3.5)
        {
            const Point2D node(i, j);
            expect_near_point(g.rel2Grid(g.grid2Rel(node), false), i, j);
            expect_near_point(g.geo2Grid(g.grid2Geo(node), false), i, j);
            expect_near_point(g.grid2Geo(i, j), g.rel2Geo(g.grid2Rel(i, j)).get_abscissa(),
                              g.rel2Geo(g.grid2Rel(i, j)).get_ordinate());
            const Point2D rel(i * 7.3, j * -3.1);
            expect_near_point(g.geo2Rel(g.rel2Geo(rel)), rel.get_abscissa(), rel.get_ordinate());
        }

    // Rounded to the nearest node, half away from zero.
    const GridParams unit(1., 1., 10, 10);
    EXPECT_EQ(unit.rel2Grid(Point2D(2.5, -2.5), true), Point2D(3., -3.));
    EXPECT_EQ(g.geo2Grid(g.grid2Geo(7.4, 8.6), true), Point2D(7., 9.));
}

TEST(GridParams, NonZeroOriginIsShiftedBeforeScaling)
{
    const GridParams g = rotated_grid(5., -2.);
    // grid2Rel: (i + x0) * dx; rel2Grid: (x - x0) / dx.
    expect_near_point(g.grid2Rel(1., 1.), 60., -20.);
    expect_near_point(g.rel2Grid(Point2D(60., -20.), false), 5.5, -0.9);
    expect_near_point(g.rel2Grid(g.grid2Rel(1., 1.), false), 5.5, -0.9);
    EXPECT_EQ(g.getOrigin(), Point2D(5., -2.));

    ConvexPolyedra2D poly = make_polygon({{0., 0.}, {1., 0.}, {1., 1.}, {0., 1.}});
    const ConvexPolyedra2D rel = g.grid2Rel(poly);
    EXPECT_EQ(rel.get_vertex(2), Point2D(60., -20.));
    const ConvexPolyedra2D back = g.rel2Grid(rel);
    EXPECT_EQ(back.get_vertex(2), Point2D(6., -1.)); // 5.5 and -0.9, rounded
    expect_near_point(back.get_max(), 5.5, -0.9);
}

TEST(GridParams, ApexAndOnGridTests)
{
    const GridParams g(10., 20., 30, 40, 5., -2.);
    Point2D a, b, c, d;
    g.getApexRel(a, b, c, d);
    EXPECT_EQ(a, Point2D(0., -12.));
    EXPECT_EQ(b, Point2D(0., 788.));
    EXPECT_EQ(c, Point2D(300., 788.));
    EXPECT_EQ(d, Point2D(300., -12.));

    EXPECT_TRUE(g.is_on_grid(Point2D(0., 0.)));
    EXPECT_TRUE(g.is_on_grid(Point2D(29., 39.)));
    EXPECT_FALSE(g.is_on_grid(Point2D(29.01, 1.)));
    EXPECT_FALSE(g.is_on_grid(Point2D(1., -0.01)));
    EXPECT_TRUE(g.is_on_grid(29, 39));
    EXPECT_FALSE(g.is_on_grid(30, 0));
    EXPECT_TRUE(g.is_on_grid_nearest(Point2D(-0.5, 39.5)));
    EXPECT_TRUE(g.is_on_grid_nearest(Point2D(29.5, -0.5)));
    EXPECT_FALSE(g.is_on_grid_nearest(Point2D(-0.51, 3.)));
    EXPECT_FALSE(g.is_on_grid_nearest(Point2D(3., 39.51)));
}

TEST(Grid2DGeom, OnTheWayIsAsymmetric)
{
    const Grid2DGeom g(1., 1., 10, 20);
    const Point2D back(-1., 0.);
    const Point2D forth(1., 0.);
    const Point2D still(0., 1.); // x component 0 counts as forwards
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(0., 5.), back));
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(9.999, 5.), back));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(-0.001, 5.), back));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(10., 5.), back));
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(-1., 5.), forth));
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(8.999, 5.), forth));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(-1.001, 5.), forth));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(9., 5.), still));
    // The same along y with ny.
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(3., 19.5), Point2D(0., -1.)));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(3., 19.), Point2D(0., 1.)));
    EXPECT_TRUE(g.is_on_grid_on_the_way(Point2D(3., -1.), Point2D(1., 1.)));
    EXPECT_FALSE(g.is_on_grid_on_the_way(Point2D(3., -0.5), Point2D(1., -1.)));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { g.is_on_grid_on_the_way(Point2D(1., 1.), Point2D(0., 0.)); }),
                        "vector.get_abscissa() != 0 || vector.get_ordinate() != 0"));
}

TEST(Grid2DGeom, RefinementAndPreconditions)
{
    const Grid2DGeom g(10., 20., 3, 4, 1., 2., 5);
    EXPECT_EQ(g.getDx(), 2.);
    EXPECT_EQ(g.getDy(), 4.);
    EXPECT_EQ(g.getNx(), 15);
    EXPECT_EQ(g.getNy(), 20);
    EXPECT_EQ(g.getNz(), 1);
    EXPECT_EQ(g.getOrigin(), Point2D(1., 2.));

    Grid2DGeom h;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { h.init(0., 1., 1, 1, 0., 0., 1); }), "idx != 0"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { h.init(1., 0., 1, 1, 0., 0., 1); }), "dy != 0"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { h.init(1., 1., 0, 1, 0., 0., 1); }), "nx > 0"));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { h.init(1., 1., 1, 0, 0., 0., 1); }), "nx > 0 && ny > 0"));
}

TEST(GridParams, Compatibility)
{
    GridParams a(1., 2., 3., 4, 5, 6, 0., 0., 10.);
    a.setLocation(Point3D(100., 200., 300.));
    GridParams b(a);
    EXPECT_TRUE(a.isCompatibleWith(b, true, true));

    b.setDx(1.5);
    EXPECT_FALSE(a.isCompatibleWith(b, false, false));
    b = a;
    b.setOrigin(0., 1., 10.);
    EXPECT_FALSE(a.isCompatibleWith(b, false, false));

    b = a;
    b.setNz(7);
    EXPECT_TRUE(a.isCompatibleWith(b, true, false));
    EXPECT_FALSE(a.isCompatibleWith(b, false, true));
    b.convertTo2D(); // vertical ignored unless both are 3D
    EXPECT_TRUE(a.isCompatibleWith(b, false, true));

    b = a;
    b.setRotation(10.);
    EXPECT_TRUE(a.isCompatibleWith(b, false, true));
    EXPECT_FALSE(a.isCompatibleWith(b, true, false));

    b = a;
    b.setLocation(Point3D(100., 200., 301.));
    EXPECT_TRUE(a.isCompatibleWith(b, true, false));
    EXPECT_TRUE(a.isCompatibleWith(b, false, true));
    EXPECT_FALSE(a.isCompatibleWith(b, true, true));
}

namespace
{

template <typename V> V read_at(const std::string& bytes, std::size_t offset)
{
    V v{};
    std::memcpy(&v, bytes.data() + offset, sizeof(V));
    return v;
}

} // namespace

TEST(GridParams, BinaryRecordFieldOrder)
{
    const GridParams flat(1.5, 2.5, 7, 8, -3., 4.);
    std::ostringstream out2;
    flat.binary_output(out2);
    const std::string r2 = out2.str();
    ASSERT_EQ(r2.size(), 40u);
    EXPECT_EQ(read_at<double>(r2, 0), 1.5);
    EXPECT_EQ(read_at<double>(r2, 8), 2.5);
    EXPECT_EQ(read_at<int32_t>(r2, 16), 7);
    EXPECT_EQ(read_at<int32_t>(r2, 20), 8);
    EXPECT_EQ(read_at<double>(r2, 24), -3.);
    EXPECT_EQ(read_at<double>(r2, 32), 4.);

    const GridParams block(1.5, 2.5, 0.5, 7, 8, 9, -3., 4., 6.);
    std::ostringstream out3;
    block.binary_output(out3);
    const std::string r3 = out3.str();
    ASSERT_EQ(r3.size(), 60u);
    EXPECT_EQ(read_at<double>(r3, 16), 0.5);
    EXPECT_EQ(read_at<int32_t>(r3, 24), 7);
    EXPECT_EQ(read_at<int32_t>(r3, 32), 9);
    EXPECT_EQ(read_at<double>(r3, 52), 6.);

    GridParams back2;
    std::istringstream in2(r2);
    ASSERT_TRUE(back2.binary_input(in2, false));
    EXPECT_TRUE(back2.isCompatibleWith(flat, false, true));
    EXPECT_FALSE(back2.is3D());
    GridParams back3;
    std::istringstream in3(r3);
    ASSERT_TRUE(back3.binary_input(in3, true));
    EXPECT_TRUE(back3.isCompatibleWith(block, false, true));
    EXPECT_TRUE(back3.is3D());

    std::istringstream truncated(r3.substr(0, 50));
    EXPECT_FALSE(back3.binary_input(truncated, true));
    EXPECT_TRUE(back3.isCompatibleWith(block, false, true));

    EXPECT_EQ(flat.debug(), "1.5 2.5 7 8 -3 4");
    std::ostringstream text;
    text << block;
    EXPECT_EQ(text.str(), "1.5 2.5 0.5 7 8 9 -3 4 6");
}
