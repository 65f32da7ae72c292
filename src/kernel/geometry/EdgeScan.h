#pragma once
// The even-odd test of a point against a polygon's edges, split so that what
// depends on the row only is worked out once per row of integer ordinates.
// The polygon scan and the grid's quadrilateral scan share it, so that both
// find exactly the same nodes.

#include "kernel/geometry/ConvexPolyedra2D.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace edge_scan
{
struct Edge
{
    double x1, y1, x2, y2, slope;
    // Worked out once for all rows: the ordinate range, |x1|, |y1| and |slope|.
    double y_lo, y_hi, ax1, ay1, aslope;
    bool horizontal;

    // Filled in place: a scan sets up its edges at every call.
    void set(double from_x, double from_y, double to_x, double to_y)
    {
        x1 = from_x;
        y1 = from_y;
        x2 = to_x;
        y2 = to_y;
        horizontal = std::fabs(y2 - y1) <= ConvexPolyedra2D::HORIZONTAL_EDGE_TOLERANCE;
        // Divided in any case and then selected: a third of section edges are horizontal.
        const double ratio = (x2 - x1) / (y2 - y1);
        slope = horizontal ? 0. : ratio;
        y_lo = std::min(y1, y2);
        y_hi = std::max(y1, y2);
        ax1 = std::fabs(x1);
        ay1 = std::fabs(y1);
        aslope = std::fabs(slope);
    }

    static Edge between(double x1, double y1, double x2, double y2)
    {
        Edge e;
        e.set(x1, y1, x2, y2);
        return e;
    }
};

// An edge as a row at ordinate y meets it. Each kind of edge holds values
// that fail the other kind's tests, so that a point is tested against every
// edge without a branch on its kind.
struct RowEdge
{
    bool crosses;
    double lo, hi;           // horizontal: the edge's abscissae; slanted: +inf, -inf
    double x_edge, ax1, bsl; // slanted: crossing, |x1|, (|y1| + |y|) |slope|; horizontal: +inf, 0, 0
    bool horizontal() const { return lo <= hi; }
};

// False when the edge plays no part in row y.
inline bool meet_row(const Edge& e, double y, RowEdge& out)
{
    constexpr double INF = std::numeric_limits<double>::infinity();
    if (e.horizontal)
    {
        if (std::fabs(y - e.y1) > ConvexPolyedra2D::ON_HORIZONTAL_EDGE_TOLERANCE)
            return false;
        out.crosses = false;
        out.lo = std::min(e.x1, e.x2);
        out.hi = std::max(e.x1, e.x2);
        out.x_edge = INF;
        out.ax1 = 0.;
        out.bsl = 0.;
        return true;
    }
    if (y < e.y_lo || y > e.y_hi)
        return false;
    // Half-open rule on the ordinates so that a ray through a vertex counts once.
    out.crosses = (e.y1 > y) != (e.y2 > y);
    out.lo = INF;
    out.hi = -INF;
    out.x_edge = e.x1 + (y - e.y1) * e.slope;
    out.ax1 = e.ax1;
    out.bsl = (e.ay1 + std::fabs(y)) * e.aslope;
    return true;
}

// A row edge that passes no test of `includes`: a scan may test a fixed
// number of edges, the ones that play no part in the row left inert.
inline RowEdge inert()
{
    constexpr double INF = std::numeric_limits<double>::infinity();
    return RowEdge{false, INF, -INF, INF, 0., 0.};
}

// Rounding tolerance of a slanted row edge at abscissa x.
inline double tolerance(const RowEdge& r, double x)
{
    return ConvexPolyedra2D::SLANTED_EDGE_RELATIVE_TOLERANCE * (r.ax1 + std::fabs(x) + r.bsl);
}

// Whether (x, y) is inside or on the polygon whose edges met row y as `row`:
// on an edge, or past an odd number of crossings. Every edge is tested, with
// bit operations rather than branches, which are hard to foresee here.
inline bool includes(const RowEdge* row, int active, double x)
{
    bool on_edge = false;
    bool inside = false;
    for (int k = 0; k < active; ++k)
    {
        const RowEdge& r = row[k];
        on_edge |= (x >= r.lo) & (x <= r.hi);
        on_edge |= std::fabs(x - r.x_edge) < tolerance(r, x);
        inside ^= r.crosses & (r.x_edge > x);
    }
    return on_edge | inside;
}
} // namespace edge_scan
