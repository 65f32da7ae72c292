#include "kernel/geometry/Vector3D.h"

#include <cmath>

namespace
{
constexpr double MIN_NORMALIZABLE_LENGTH_3D = 1e-6;
}

double Vector3D::length() const
{
    return std::sqrt(scalar(*this));
}

Vector3D& Vector3D::normalize()
{
    const double len = length();
    if (len > MIN_NORMALIZABLE_LENGTH_3D)
        *this /= len;
    return *this;
}
