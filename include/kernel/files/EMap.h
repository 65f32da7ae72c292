#pragma once
// An erodibility map: relative erodibility on each node, brought to a mean of
// one by an offset and a coefficient so that the map only modulates the bank erosion rate.

#include "kernel/files/GridReal.h"

class EMap : public GridReal
{
public:
    EMap() = default;
    explicit EMap(const GridParams& params) : GridReal(params) {}
    EMap(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.)
        : GridReal(dx, dy, nx, ny, x0, y0)
    {
    }
    ~EMap() override = default;
    EMap(const EMap&) = default;
    EMap& operator=(const EMap&) = default;

    // Reads the file, then converts it with coefficient `a` and offset `b`.
    virtual bool readConv(const std::string& path, double a, double b);
    // Each defined value v becomes (v - b) * a / meanConv(b).
    virtual bool convert(double a, double b);

    // Mean over defined nodes of the value less b.
    double meanConv(double b) const;
    double convertValue(double a, double b, double value);
    double convertValue(double a, double b, double mean, double value) const;

private:
    // meanConv, replaced by 1 (with an error left) when it is too small to divide by.
    double usable_mean(double b);
};
