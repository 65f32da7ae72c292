#pragma once
// One brick of a conditioning log: a facies over a thickness, with the age
// the log gives it.

#include "kernel/common/Facies.h"

#include <cstdint>
#include <iosfwd>

class WellUnit
{
public:
    WellUnit() = default;
    WellUnit(const Facies& facies, double thickness, uint32_t age = 0)
        : _facies(facies), _thickness(thickness), _age(age)
    {
    }

    const Facies& facies() const { return _facies; }
    void facies(const Facies& facies) { _facies = facies; }
    double thickness() const { return _thickness; }
    void thickness(double thickness) { _thickness = thickness; }
    uint32_t age() const { return _age; }
    void age(uint32_t age) { _age = age; }

    // Full facies byte, thickness (double), age (32 bits).
    void binary_output(std::ostream& out) const;
    bool binary_input(std::istream& in);

private:
    Facies _facies;
    double _thickness = 0.;
    uint32_t _age = 0;
};
