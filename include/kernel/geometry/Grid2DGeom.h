#pragma once
// Geometry of a 2D grid, possibly refined from a coarser description.

#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"

class Grid2DGeom : public GridParams
{
public:
    Grid2DGeom() = default;
    Grid2DGeom(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0., int ratio = 1);

    // Each coarse cell is split into ratio x ratio cells; the origin stays.
    void init(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0., int ratio = 1);

    // Whether a walker at `p` (grid frame) moving along `vector` is still in play.
    // Moving backwards it may stand on [0, n), moving forwards on [-1, n - 1).
    bool is_on_grid_on_the_way(const Point2D& p, const Point2D& vector) const;
};
