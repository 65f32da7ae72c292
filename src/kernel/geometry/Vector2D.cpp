#include "kernel/geometry/Vector2D.h"

#include <cmath>

namespace
{
constexpr double MIN_NORMALIZABLE_LENGTH = 1e-6;
}

double Vector2D::length() const
{
    return std::hypot(_x, _y);
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
