#include "kernel/files/TectoMap.h"

#include <iostream>

namespace
{

GridParams flat_geometry(const GridParams& params)
{
    GridParams geometry(params);
    if (geometry.is3D())
    {
        std::cout << "TectoMap::TectoMap: Create a TectoMap from a 3D grid is not supported" << std::endl;
        geometry.convertTo2D();
    }
    return geometry;
}

} // namespace

TectoMap::TectoMap(const GridParams& params) : GridReal(flat_geometry(params)) {}

TectoMap::TectoMap(double dx, double dy, int nx, int ny, double x0, double y0)
    : GridReal(dx, dy, nx, ny, x0, y0)
{
}
