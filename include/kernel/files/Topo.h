#pragma once
// A surface: one elevation per node of a 2D grid.

#include "kernel/files/GridReal.h"

class Topo : public GridReal
{
public:
    Topo() = default;
    // A 3D geometry is announced on standard output and flattened to its first layer's plane.
    explicit Topo(const GridParams& params);
    Topo(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.);
    ~Topo() override = default;
    Topo(const Topo&) = default;
    Topo& operator=(const Topo&) = default;

    // Lowers (raises) each node by the height of `other` there above its own minimum,
    // so that a surface follows the relief of another one.
    bool shift_down(const GridReal& other);
    bool shift_up(const GridReal& other);

private:
    bool shift(const GridReal& other, double sign, const std::string& name);
};
