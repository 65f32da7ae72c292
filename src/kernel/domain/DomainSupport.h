#pragma once
// Small helpers shared by the files of Domain.

#include <algorithm>

namespace domain_support
{
inline double clamp_to(double z, double zmin, double zmax)
{
    return std::min(std::max(z, zmin), zmax);
}
} // namespace domain_support
