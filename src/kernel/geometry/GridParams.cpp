#include "kernel/geometry/GridParams.h"

#include "EdgeScan.h"

#include "kernel/common/BinaryDump.h"
#include "kernel/common/Constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <ostream>
#include <sstream>

namespace
{
// Beyond this size in grid units a quadrilateral goes through the general polygon.
constexpr double QUAD_FAST_LIMIT = 1e6;
// Bound on an edge's rounding tolerance under which a row's nodes lie at or
// past ceil(leftmost crossing - ROW_TOLERANCE_BOUND).
constexpr double ROW_TOLERANCE_BOUND = 0.25;

// std::round, half away from zero, of a finite value well below 2^52, without a library call.
double round_half_away(double v)
{
    const double t = static_cast<double>(static_cast<long long>(v));
    const double fraction = v - t; // exact
    // Selected rather than branched on: the fractions of section corners are random.
    const double up = fraction >= 0.5 ? 1. : 0.;
    const double down = fraction <= -0.5 ? 1. : 0.;
    return std::copysign(t + up - down, v); // exact: |t| + 1 is well below 2^52
}

void keep_on_grid(const std::vector<Point2D>& points, int nx, int ny, std::vector<std::pair<int, int>>& nodes)
{
    for (const Point2D& node : points)
    {
        const double x = node.get_abscissa();
        const double y = node.get_ordinate();
        if (x >= 0. && x < nx && y >= 0. && y < ny)
            nodes.emplace_back(static_cast<int>(x), static_cast<int>(y));
    }
}

// The scan of find_points_with_integer_coordinates_inside over a quadrilateral
// with rounded (integer) vertices vx, vy and unrounded box, limited to the
// rows and columns of an nx by ny grid: the same tests in the same order.
// A closed polygon crosses a row an even number of times, so a node is inside
// only at or past the leftmost crossing; near an edge it is within the
// edge's tolerance of it. Columns before leftmost - ROW_TOLERANCE_BOUND are
// skipped when every tolerance of the row is below that bound.
void scan_quad(const double (&vx)[4], const double (&vy)[4], double min_x, double min_y, double max_x,
               double max_y, int nx, int ny, std::vector<std::pair<int, int>>& nodes)
{
    constexpr double SLANTED = ConvexPolyedra2D::SLANTED_EDGE_RELATIVE_TOLERANCE;
    constexpr double MARGIN = ConvexPolyedra2D::INTEGER_SCAN_MARGIN;
    using edge_scan::Edge;
    using edge_scan::RowEdge;
    Edge edges[4];
    for (int k = 0; k < 4; ++k)
        edges[k].set(vx[k], vy[k], vx[(k + 1) & 3], vy[(k + 1) & 3]);
    RowEdge row[4];

    const double x_end = max_x + MARGIN;
    const double y_end = max_y + MARGIN;
    const double x_start = std::floor(min_x - MARGIN);
    const double x_stop = std::min(x_end, static_cast<double>(nx));
    const double reach = std::max(std::fabs(x_start), std::fabs(x_end)) + 1.;
    // Rows off the rounded vertices' ordinates meet no edge.
    const double y_stop = std::min(std::min(y_end, static_cast<double>(ny)),
                                   std::max(std::max(vy[0], vy[1]), std::max(vy[2], vy[3])) + 1.);
    const double y_first = std::max(std::min(std::min(vy[0], vy[1]), std::min(vy[2], vy[3])), 0.);
    for (double y = std::max(std::floor(min_y - MARGIN), y_first); y < y_stop; y += 1.)
    {
        // Four edges always tested: the loop over them then has no exit to foresee.
        for (RowEdge& r : row)
            r = edge_scan::inert();
        int active = 0;
        double leftmost = std::numeric_limits<double>::infinity();
        bool bounded = true;
        for (const Edge& e : edges)
        {
            RowEdge& r = row[active];
            if (!edge_scan::meet_row(e, y, r))
                continue;
            ++active;
            // A row edge's other-kind abscissa is +inf: the least of both is its own.
            leftmost = std::min(leftmost, std::min(r.lo, r.x_edge));
            bounded &= e.horizontal | !(SLANTED * (r.ax1 + reach + r.bsl) >= ROW_TOLERANCE_BOUND);
        }
        if (active == 0)
            continue;
        auto included = [&](double x) { return edge_scan::includes(row, 4, x); };
        // The quadrilateral's nodes in a row are contiguous: the first gap ends the row.
        bool found_in_row = false;
        const double first = bounded ? std::max(x_start, std::ceil(leftmost - ROW_TOLERANCE_BOUND)) : x_start;
        for (double x = first; x < x_stop; x += 1.)
        {
            if (included(x))
            {
                if (x >= 0.)
                    nodes.emplace_back(static_cast<int>(x), static_cast<int>(y));
                found_in_row = true;
            }
            else if (found_in_row)
                break;
        }
    }
}
} // namespace

GridParams::GridParams(double dx, double dy, int nx, int ny, double x0, double y0)
    : _dx(dx), _dy(dy), _nx(nx), _ny(ny), _nz(1), _x0(x0), _y0(y0)
{
}

GridParams::GridParams(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0,
                       double z0)
    : _dx(dx), _dy(dy), _dz(dz), _nx(nx), _ny(ny), _nz(nz), _x0(x0), _y0(y0), _z0(z0)
{
}

void GridParams::clear()
{
    GridParams::operator=(GridParams());
}

void GridParams::reset(const GridParams& other)
{
    GridParams::operator=(other);
    setRotation(other._rotation);
}

void GridParams::setOrigin(double x0, double y0, double z0)
{
    _x0 = x0;
    _y0 = y0;
    _z0 = z0;
}

void GridParams::setRotation(double degrees)
{
    // Pi is the nine-digit literal so that cosine and sine match stored grids to the last digit.
    _rotation = degrees;
    // Whole turns are no turn: 360 or -720 degrees give the cosine and sine of 0
    // exactly, not those of the rounded pi times two.
    const double radians = std::fmod(degrees, 360.) * MP_PI / 180.;
    _cosine = std::cos(radians);
    _sine = std::sin(radians);
}

bool GridParams::is3D() const
{
    return _nz >= 2 && _dz < MP_UNDEF_REAL;
}

void GridParams::convertTo2D()
{
    _nz = 1;
    _z0 = 0.;
    _dz = MP_UNDEF_REAL;
    _location.set_elevation(0.);
}

Point2D GridParams::rel2Geo(const Point2D& rel) const
{
    const double x = rel.get_abscissa();
    const double y = rel.get_ordinate();
    return Point2D(_cosine * x - _sine * y + _location.get_abscissa(),
                   _sine * x + _cosine * y + _location.get_ordinate());
}

Point2D GridParams::geo2Rel(const Point2D& geo) const
{
    const double dx = geo.get_abscissa() - _location.get_abscissa();
    const double dy = geo.get_ordinate() - _location.get_ordinate();
    return Point2D(_cosine * dx + _sine * dy, _cosine * dy - _sine * dx);
}

Point2D GridParams::rel2Grid(const Point2D& rel, bool round) const
{
    Point2D p(rel.get_abscissa(), rel.get_ordinate());
    p.transform(Point2D(-_x0, -_y0), Point2D(1. / _dx, 1. / _dy), round);
    return p;
}

Point2D GridParams::grid2Rel(const Point2D& grid) const
{
    // Shift before scale: grids read from files keep their origin this way.
    Point2D p(grid.get_abscissa(), grid.get_ordinate());
    p.transform(Point2D(_x0, _y0), Point2D(_dx, _dy), false);
    return p;
}

Point2D GridParams::geo2Grid(const Point2D& geo, bool round) const
{
    return rel2Grid(geo2Rel(geo), round);
}

Point2D GridParams::grid2Geo(const Point2D& grid) const
{
    return rel2Geo(grid2Rel(grid));
}

Point2D GridParams::grid2Geo(double i, double j) const
{
    return rel2Geo(grid2Rel(i, j));
}

ConvexPolyedra2D GridParams::rel2Grid(const ConvexPolyedra2D& rel) const
{
    ConvexPolyedra2D poly(rel);
    poly.transform(Point2D(-_x0, -_y0), Point2D(1. / _dx, 1. / _dy));
    return poly;
}

ConvexPolyedra2D GridParams::grid2Rel(const ConvexPolyedra2D& grid) const
{
    ConvexPolyedra2D poly(grid);
    poly.transform(Point2D(_x0, _y0), Point2D(_dx, _dy));
    return poly;
}

void GridParams::nodes_in_quad(const Point2D (&corners)[4], std::vector<std::pair<int, int>>& nodes) const
{
    nodes.clear();
    // The box as ConvexPolyedra2D keeps it, then moved to the grid frame unrounded.
    double min_x = corners[0].get_abscissa();
    double min_y = corners[0].get_ordinate();
    double max_x = min_x;
    double max_y = min_y;
    for (int k = 1; k < 4; ++k)
    {
        min_x = std::min(min_x, corners[k].get_abscissa());
        min_y = std::min(min_y, corners[k].get_ordinate());
        max_x = std::max(max_x, corners[k].get_abscissa());
        max_y = std::max(max_y, corners[k].get_ordinate());
    }
    const double shift_x = -_x0;
    const double shift_y = -_y0;
    const double scale_x = 1. / _dx;
    const double scale_y = 1. / _dy;
    min_x = (min_x + shift_x) * scale_x;
    min_y = (min_y + shift_y) * scale_y;
    max_x = (max_x + shift_x) * scale_x;
    max_y = (max_y + shift_y) * scale_y;
    if (max_x < -0.5 || max_y < -0.5 || min_x > _nx + 0.5 || min_y > _ny + 0.5)
        return;
    double gx[4];
    double gy[4];
    bool moderate = true;
    for (int k = 0; k < 4; ++k)
    {
        gx[k] = (corners[k].get_abscissa() + shift_x) * scale_x;
        gy[k] = (corners[k].get_ordinate() + shift_y) * scale_y;
        moderate = moderate && std::fabs(gx[k]) < QUAD_FAST_LIMIT && std::fabs(gy[k]) < QUAD_FAST_LIMIT;
    }
    if (!moderate)
    {
        ConvexPolyedra2D quad;
        for (const Point2D& corner : corners)
            quad.add_vertex(corner);
        static thread_local std::vector<Point2D> points;
        rel2Grid(quad).find_points_with_integer_coordinates_inside(points);
        keep_on_grid(points, _nx, _ny, nodes);
        return;
    }
    constexpr double MARGIN = ConvexPolyedra2D::INTEGER_SCAN_MARGIN;
    if (std::floor(max_x + MARGIN) < std::floor(min_x) + 1 ||
        std::floor(max_y + MARGIN) < std::floor(min_y) + 1)
        return;
    double vx[4];
    double vy[4];
    for (int k = 0; k < 4; ++k)
    {
        vx[k] = round_half_away(gx[k]);
        vy[k] = round_half_away(gy[k]);
    }
    scan_quad(vx, vy, min_x, min_y, max_x, max_y, _nx, _ny, nodes);
}

void GridParams::getApexRel(Point2D& a, Point2D& b, Point2D& c, Point2D& d) const
{
    a = Point2D(_x0 - _dx / 2., _y0 - _dy / 2.);
    b = a + Point2D(0., _ny * _dy);
    c = b + Point2D(_nx * _dx, 0.);
    d = a + Point2D(_nx * _dx, 0.);
}

bool GridParams::is_on_grid(const Point2D& p) const
{
    const double x = p.get_abscissa();
    const double y = p.get_ordinate();
    return x >= 0. && x <= _nx - 1 && y >= 0. && y <= _ny - 1;
}

bool GridParams::is_on_grid(int i, int j) const
{
    return i >= 0 && i < _nx && j >= 0 && j < _ny;
}

bool GridParams::is_on_grid_nearest(const Point2D& p) const
{
    const double x = p.get_abscissa();
    const double y = p.get_ordinate();
    return x >= -0.5 && x <= _nx - 0.5 && y >= -0.5 && y <= _ny - 0.5;
}

bool GridParams::isCompatibleWith(const GridParams& other, bool with_location, bool with_vertical) const
{
    if (_dx != other._dx || _dy != other._dy || _nx != other._nx || _ny != other._ny || _x0 != other._x0 ||
        _y0 != other._y0)
        return false;
    const bool both_3d = is3D() && other.is3D();
    if (with_vertical && both_3d && (_nz != other._nz || _dz != other._dz || _z0 != other._z0))
        return false;
    if (with_location)
    {
        if (_location.get_abscissa() != other._location.get_abscissa() ||
            _location.get_ordinate() != other._location.get_ordinate() || _rotation != other._rotation)
            return false;
        if (with_vertical && both_3d && _location.get_elevation() != other._location.get_elevation())
            return false;
    }
    return true;
}

void GridParams::binary_output(std::ostream& out) const
{
    const bool three_d = is3D();
    dump::write(out, _dx);
    dump::write(out, _dy);
    if (three_d)
        dump::write(out, _dz);
    dump::write(out, static_cast<int32_t>(_nx));
    dump::write(out, static_cast<int32_t>(_ny));
    if (three_d)
        dump::write(out, static_cast<int32_t>(_nz));
    dump::write(out, _x0);
    dump::write(out, _y0);
    if (three_d)
        dump::write(out, _z0);
}

bool GridParams::binary_input(std::istream& in, bool three_d)
{
    // Read into a copy so that a short record leaves this geometry as it was.
    GridParams read(*this);
    int32_t nx = 0;
    int32_t ny = 0;
    int32_t nz = 1;
    read._dz = MP_UNDEF_REAL;
    read._z0 = 0.;
    dump::read(in, read._dx);
    dump::read(in, read._dy);
    if (three_d)
        dump::read(in, read._dz);
    dump::read(in, nx);
    dump::read(in, ny);
    if (three_d)
        dump::read(in, nz);
    dump::read(in, read._x0);
    dump::read(in, read._y0);
    if (three_d)
        dump::read(in, read._z0);
    if (!in)
        return false;
    read._nx = nx;
    read._ny = ny;
    read._nz = nz;
    GridParams::operator=(read);
    return true;
}

std::string GridParams::debug() const
{
    std::ostringstream text;
    text << std::setprecision(12) << _dx << " " << _dy << " ";
    if (is3D())
        text << _dz << " " << _nx << " " << _ny << " " << _nz << " " << _x0 << " " << _y0 << " " << _z0;
    else
        text << _nx << " " << _ny << " " << _x0 << " " << _y0;
    return text.str();
}

std::ostream& operator<<(std::ostream& out, const GridParams& params)
{
    return out << params.debug();
}
