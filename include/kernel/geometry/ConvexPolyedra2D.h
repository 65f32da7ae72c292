#pragma once
// A small convex polygon (at most four vertices, given in turn) with its
// bounding box, used to find the grid nodes that a channel section covers.

#include "kernel/geometry/Point2D.h"

#include <vector>

class ConvexPolyedra2D
{
public:
    static constexpr int MAX_VERTICES = 4;
    // Below this difference of ordinates an edge is horizontal.
    static constexpr double HORIZONTAL_EDGE_TOLERANCE = 5e-8;
    // A point this close in ordinate to a horizontal edge lies on it.
    static constexpr double ON_HORIZONTAL_EDGE_TOLERANCE = 5e-7;
    // Relative rounding tolerance on the abscissa of a slanted edge.
    static constexpr double SLANTED_EDGE_RELATIVE_TOLERANCE = 5e-8;
    // Widening of the box when looking for integer coordinates.
    static constexpr double INTEGER_SCAN_MARGIN = 1e-6;

    ConvexPolyedra2D() = default;
    virtual ~ConvexPolyedra2D() = default;

    void clear();
    void add_vertex(const Point2D& vertex);
    int get_number_of_vertices() const { return _offset; }
    const Point2D& get_vertex(int k) const;
    // Corners of the bounding box: (min x, min y) and (max x, max y).
    const Point2D& get_min() const { return _min; }
    const Point2D& get_max() const { return _max; }

    // Vertices are shifted, scaled and rounded; the box is shifted and scaled only.
    void transform(const Point2D& shift, const Point2D& scale);
    // Even-odd test, generous by a rounding tolerance on the edges.
    bool is_included(const Point2D& p) const;
    bool can_there_be_integer_coordinates_inside() const;
    void find_points_with_integer_coordinates_inside(std::vector<Point2D>& result) const;

private:
    Point2D _vertices[MAX_VERTICES];
    int _offset = 0;
    Point2D _min;
    Point2D _max;
};
