#pragma once
// One layer of a vertical stack, in three bytes: a block holds tens of
// millions of them, so there is no padding and no virtual table.

#include "kernel/common/Facies.h"

#include <iosfwd>
#include <string>

class DepositionUnit
{
public:
    // Metres per thickness step.
    static constexpr double _thratio = 0.01;
    // Largest thickness step count of one unit.
    static constexpr unsigned int _maxstut = 255;
    // Largest age delta of one unit.
    static constexpr unsigned int _maxagut = 255;

    DepositionUnit() : _thickness(0), _age_delta(0) {}
    DepositionUnit(const Facies& facies, unsigned char thickness_steps, unsigned char age_delta)
        : _facies(facies), _thickness(thickness_steps), _age_delta(age_delta)
    {
    }

    const Facies& facies() const { return _facies; }
    void facies(const Facies& facies) { _facies = facies; }

    unsigned char thickness_steps() const { return _thickness; }
    void thickness_steps(unsigned char steps) { _thickness = steps; }
    // Thickness in metres.
    double thickness() const { return _thratio * _thickness; }

    // Iterations between this unit and the one below it.
    unsigned char age_delta() const { return _age_delta; }
    void age_delta(unsigned char delta) { _age_delta = delta; }

    // Three bytes: full facies id, thickness steps, age delta.
    void binary_output(std::ostream& out) const;
    bool binary_input(std::istream& in);

    // "<facies> / <thickness>m / <age delta> it (delta)".
    std::string debug() const;

private:
    Facies _facies;
    unsigned char _thickness;
    unsigned char _age_delta;
};

static_assert(sizeof(Facies) == 1, "a facies is one byte");
static_assert(sizeof(DepositionUnit) == 3, "a deposition unit is three bytes");

std::ostream& operator<<(std::ostream& out, const DepositionUnit& unit);
