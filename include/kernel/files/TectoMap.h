#pragma once
// A tectonic map: the deformation rate on each node of a 2D grid.

#include "kernel/files/GridReal.h"

class TectoMap : public GridReal
{
public:
    TectoMap() = default;
    // A 3D geometry is announced on standard output and flattened to its first layer's plane.
    explicit TectoMap(const GridParams& params);
    TectoMap(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.);
    ~TectoMap() override = default;
    TectoMap(const TectoMap&) = default;
    TectoMap& operator=(const TectoMap&) = default;
};
