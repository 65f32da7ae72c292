#pragma once
// A displacement in space.

#include "kernel/geometry/Point3D.h"

class Vector3D : public Point3D
{
public:
    Vector3D() = default;
    Vector3D(double x, double y, double z) : Point3D(x, y, z) {}
    Vector3D(const Point3D& p) : Point3D(p) {}
    // The vector from `from` to `to`.
    Vector3D(const Point3D& from, const Point3D& to) : Point3D(to - from) {}

    double length() const;
    // Unit length, unless shorter than 1e-6, in which case it is left as it is.
    Vector3D& normalize();
};
