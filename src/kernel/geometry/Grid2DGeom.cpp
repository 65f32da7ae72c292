#include "kernel/geometry/Grid2DGeom.h"

#include "kernel/common/Assert.h"

Grid2DGeom::Grid2DGeom(double dx, double dy, int nx, int ny, double x0, double y0, int ratio)
{
    init(dx, dy, nx, ny, x0, y0, ratio);
}

void Grid2DGeom::init(double dx, double dy, int nx, int ny, double x0, double y0, int ratio)
{
    MP_ASSERT_TEXT(dx != 0, "idx != 0");
    MP_ASSERT(dy != 0);
    MP_ASSERT(nx > 0);
    MP_ASSERT(nx > 0 && ny > 0);
    MP_ASSERT(ratio > 0);
    _dx = dx / ratio;
    _dy = dy / ratio;
    _nx = nx * ratio;
    _ny = ny * ratio;
    _nz = 1;
    _x0 = x0;
    _y0 = y0;
}

namespace
{
bool in_play_along(double position, double direction, int count)
{
    if (direction < 0.)
        return position >= 0. && position < count;
    return position >= -1. && position < count - 1;
}
} // namespace

bool Grid2DGeom::is_on_grid_on_the_way(const Point2D& p, const Point2D& vector) const
{
    MP_ASSERT(vector.get_abscissa() != 0 || vector.get_ordinate() != 0);
    return in_play_along(p.get_abscissa(), vector.get_abscissa(), _nx) &&
           in_play_along(p.get_ordinate(), vector.get_ordinate(), _ny);
}
