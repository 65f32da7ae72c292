#include "kernel/files/Topo.h"

#include "kernel/common/Constants.h"

#include <iostream>

namespace
{

GridParams flat_topo_geometry(const GridParams& params)
{
    GridParams geometry(params);
    if (geometry.is3D())
    {
        std::cout << "Topo::Topo: Create a Topo from a 3D grid is not supported" << std::endl;
        geometry.convertTo2D();
    }
    return geometry;
}

} // namespace

Topo::Topo(const GridParams& params) : GridReal(flat_topo_geometry(params)) {}

Topo::Topo(double dx, double dy, int nx, int ny, double x0, double y0) : GridReal(dx, dy, nx, ny, x0, y0) {}

bool Topo::shift_down(const GridReal& other)
{
    return shift(other, -1., "Topo::shift_down");
}

bool Topo::shift_up(const GridReal& other)
{
    return shift(other, 1., "Topo::shift_up");
}

bool Topo::shift(const GridReal& other, double sign, const std::string& name)
{
    if (!isCompatibleWith(other, false, true))
        return fail(name + ": Topo grids are not compatible");
    if (is3D())
        return fail(name + ": This method is not available for 3D grids");
    int mi = 0, mj = 0;
    const double base = other.get_min(mi, mj);
    if (base == MP_UNDEF_REAL)
        return fail(name + ": Cannot get minimum value from the given topography");
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            double here = MP_UNDEF_REAL, there = MP_UNDEF_REAL;
            get_at(i, j, here);
            other.get_at(i, j, there);
            if (here == MP_UNDEF_REAL || there == MP_UNDEF_REAL)
                continue;
            if (!set_at(i, j, here + sign * (there - base)))
                return false;
        }
    return true;
}
