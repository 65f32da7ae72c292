#include "kernel/geometry/ConvexPolyedra2D.h"

#include "EdgeScan.h"

#include "kernel/common/Assert.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double HORIZONTAL_EDGE_TOLERANCE = ConvexPolyedra2D::HORIZONTAL_EDGE_TOLERANCE;
constexpr double ON_HORIZONTAL_EDGE_TOLERANCE = ConvexPolyedra2D::ON_HORIZONTAL_EDGE_TOLERANCE;
constexpr double SLANTED_EDGE_RELATIVE_TOLERANCE = ConvexPolyedra2D::SLANTED_EDGE_RELATIVE_TOLERANCE;
constexpr double INTEGER_SCAN_MARGIN = ConvexPolyedra2D::INTEGER_SCAN_MARGIN;
} // namespace

void ConvexPolyedra2D::clear()
{
    _offset = 0;
    _min.reset();
    _max.reset();
}

void ConvexPolyedra2D::add_vertex(const Point2D& vertex)
{
    MP_ASSERT_TEXT(_offset <= 3, "B_offset <= 3");
    if (_offset == 0)
    {
        _min = vertex;
        _max = vertex;
    }
    else
    {
        _min.reset(std::min(_min.get_abscissa(), vertex.get_abscissa()),
                   std::min(_min.get_ordinate(), vertex.get_ordinate()));
        _max.reset(std::max(_max.get_abscissa(), vertex.get_abscissa()),
                   std::max(_max.get_ordinate(), vertex.get_ordinate()));
    }
    _vertices[_offset++] = vertex;
}

const Point2D& ConvexPolyedra2D::get_vertex(int k) const
{
    MP_ASSERT(k >= 0 && k < _offset);
    return _vertices[k];
}

void ConvexPolyedra2D::transform(const Point2D& shift, const Point2D& scale)
{
    for (int k = 0; k < _offset; ++k)
        _vertices[k].transform(shift, scale, true);
    _min.transform(shift, scale, false);
    _max.transform(shift, scale, false);
}

bool ConvexPolyedra2D::is_included(const Point2D& p) const
{
    const double px = p.get_abscissa();
    const double py = p.get_ordinate();
    bool inside = false;
    for (int k = 0; k < _offset; ++k)
    {
        const Point2D& a = _vertices[k];
        const Point2D& b = _vertices[(k + 1) % _offset];
        const double x1 = a.get_abscissa();
        const double y1 = a.get_ordinate();
        const double x2 = b.get_abscissa();
        const double y2 = b.get_ordinate();
        if (std::fabs(y2 - y1) <= HORIZONTAL_EDGE_TOLERANCE)
        {
            if (std::fabs(py - y1) <= ON_HORIZONTAL_EDGE_TOLERANCE && px >= std::min(x1, x2) &&
                px <= std::max(x1, x2))
                return true;
            continue;
        }
        if (py < std::min(y1, y2) || py > std::max(y1, y2))
            continue;
        const double slope = (x2 - x1) / (y2 - y1);
        const double x_edge = x1 + (py - y1) * slope;
        const double tolerance =
            SLANTED_EDGE_RELATIVE_TOLERANCE *
            (std::fabs(x1) + std::fabs(px) + (std::fabs(y1) + std::fabs(py)) * std::fabs(slope));
        if (std::fabs(px - x_edge) < tolerance)
            return true;
        // Half-open rule on the ordinates so that a ray through a vertex counts once.
        if ((y1 > py) != (y2 > py) && x_edge > px)
            inside = !inside;
    }
    return inside;
}

bool ConvexPolyedra2D::can_there_be_integer_coordinates_inside() const
{
    MP_ASSERT(_offset == 4);
    return std::floor(_max.get_abscissa() + INTEGER_SCAN_MARGIN) >= std::floor(_min.get_abscissa()) + 1 &&
           std::floor(_max.get_ordinate() + INTEGER_SCAN_MARGIN) >= std::floor(_min.get_ordinate()) + 1;
}

void ConvexPolyedra2D::find_points_with_integer_coordinates_inside(std::vector<Point2D>& result) const
{
    result.clear();
    if (!can_there_be_integer_coordinates_inside())
        return;
    // The even-odd test of is_included, with what depends on the row only
    // worked out once per row: the same operations in the same order.
    using edge_scan::Edge;
    using edge_scan::RowEdge;
    Edge edges[MAX_VERTICES];
    for (int k = 0; k < _offset; ++k)
    {
        const Point2D& a = _vertices[k];
        const Point2D& b = _vertices[k + 1 == _offset ? 0 : k + 1];
        edges[k] = Edge::between(a.get_abscissa(), a.get_ordinate(), b.get_abscissa(), b.get_ordinate());
    }
    RowEdge row[MAX_VERTICES];

    const double x_end = _max.get_abscissa() + INTEGER_SCAN_MARGIN;
    const double y_end = _max.get_ordinate() + INTEGER_SCAN_MARGIN;
    const double x_start = std::floor(_min.get_abscissa() - INTEGER_SCAN_MARGIN);
    for (double y = std::floor(_min.get_ordinate() - INTEGER_SCAN_MARGIN); y < y_end; y += 1.)
    {
        int active = 0;
        for (int k = 0; k < _offset; ++k)
            if (edge_scan::meet_row(edges[k], y, row[active]))
                ++active;
        auto included = [&](double x) { return edge_scan::includes(row, active, x); };
        // The polygon is convex: its nodes in a row are contiguous.
        bool found_in_row = false;
        for (double x = x_start; x < x_end; x += 1.)
        {
            if (included(x))
            {
                result.emplace_back(x, y);
                found_in_row = true;
            }
            else if (found_in_row)
                break;
        }
    }
}
