#include "kernel/geometry/Vector2D.h"

#include <cmath>

namespace
{
constexpr double MIN_NORMALIZABLE_LENGTH = 1e-6;
}

// A plain root of the sum of squares: hypot's care against overflow costs
// several times as much, and no length here comes near the limits.
double Vector2D::length() const
{
    return std::sqrt(_x * _x + _y * _y);
}

Vector2D& Vector2D::normalize()
{
    return normalize(length());
}

Vector2D& Vector2D::normalize(double len)
{
    if (len > MIN_NORMALIZABLE_LENGTH)
        *this /= len;
    return *this;
}
