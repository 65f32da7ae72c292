#pragma once
// A displacement in the horizontal plane.

#include "kernel/geometry/Point2D.h"

class Vector2D : public Point2D
{
public:
    Vector2D() = default;
    Vector2D(double x, double y) : Point2D(x, y) {}
    Vector2D(const Point2D& p) : Point2D(p) {}
    // The vector from `from` to `to`.
    Vector2D(const Point2D& from, const Point2D& to) : Point2D(to - from) {}

    double length() const;
    // Unit length, unless the vector is too short to have a direction (1e-6),
    // in which case it is left as it is.
    Vector2D& normalize();
    // The same, for a caller that has already measured the length.
    Vector2D& normalize(double length);
};
