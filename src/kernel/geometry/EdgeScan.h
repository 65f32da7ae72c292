#pragma once
// The even-odd test of a point against a polygon's edges, split so that what
// depends on the row only is worked out once per row of integer ordinates.
// The polygon scan and the grid's quadrilateral scan share it, so that both
// find exactly the same nodes.

#include "kernel/geometry/ConvexPolyedra2D.h"

#include <algorithm>
#include <cmath>

namespace edge_scan
{
struct Edge
{
    double x1, y1, x2, y2, slope;
    bool horizontal;

    static Edge between(double x1, double y1, double x2, double y2)
    {
        Edge e{x1, y1, x2, y2, 0., false};
        e.horizontal = std::fabs(e.y2 - e.y1) <= ConvexPolyedra2D::HORIZONTAL_EDGE_TOLERANCE;
        e.slope = e.horizontal ? 0. : (e.x2 - e.x1) / (e.y2 - e.y1);
        return e;
    }
};

// An edge as a row at ordinate y meets it.
struct RowEdge
{
    bool horizontal;
    bool crosses;
    double lo, hi;           // horizontal: the edge's abscissae
    double x_edge, ax1, bsl; // slanted: crossing, |x1|, (|y1| + |y|) |slope|
};

// False when the edge plays no part in row y.
inline bool meet_row(const Edge& e, double y, RowEdge& out)
{
    if (e.horizontal)
    {
        if (std::fabs(y - e.y1) > ConvexPolyedra2D::ON_HORIZONTAL_EDGE_TOLERANCE)
            return false;
        out = RowEdge{true, false, std::min(e.x1, e.x2), std::max(e.x1, e.x2), 0., 0., 0.};
        return true;
    }
    if (y < std::min(e.y1, e.y2) || y > std::max(e.y1, e.y2))
        return false;
    // Half-open rule on the ordinates so that a ray through a vertex counts once.
    out = RowEdge{false,
                  (e.y1 > y) != (e.y2 > y),
                  0.,
                  0.,
                  e.x1 + (y - e.y1) * e.slope,
                  std::fabs(e.x1),
                  (std::fabs(e.y1) + std::fabs(y)) * std::fabs(e.slope)};
    return true;
}

// Rounding tolerance of a slanted row edge at abscissa x.
inline double tolerance(const RowEdge& r, double x)
{
    return ConvexPolyedra2D::SLANTED_EDGE_RELATIVE_TOLERANCE * (r.ax1 + std::fabs(x) + r.bsl);
}

// Whether (x, y) is inside or on the polygon whose edges met row y as `row`.
inline bool includes(const RowEdge* row, int active, double x)
{
    bool inside = false;
    for (int k = 0; k < active; ++k)
    {
        const RowEdge& r = row[k];
        if (r.horizontal)
        {
            if (x >= r.lo && x <= r.hi)
                return true;
            continue;
        }
        if (std::fabs(x - r.x_edge) < tolerance(r, x))
            return true;
        if (r.crosses && r.x_edge > x)
            inside = !inside;
    }
    return inside;
}
} // namespace edge_scan
