#pragma once
// A conditioning log as bricks from the bottom upward, placed in the domain
// like a deposit column: its bottom is _zbot and its top _ztop, relative.

#include "kernel/geometry/VCollection.h"
#include "kernel/wells/WellUnit.h"

#include <cstddef>
#include <iosfwd>
#include <vector>

class WellUnitCollection : public VCollection
{
public:
    explicit WellUnitCollection(double zbot = 0.);
    WellUnitCollection(const WellUnitCollection&) = default;
    WellUnitCollection& operator=(const WellUnitCollection&) = default;
    ~WellUnitCollection() override;

    const std::vector<WellUnit>& units() const { return _units; }
    std::size_t size() const { return _units.size(); }
    bool empty() const { return _units.empty(); }
    const WellUnit& unit(std::size_t k) const { return _units.at(k); }

    // Stacks a brick on top; the top rises by its thickness.
    void add_unit(const WellUnit& unit);
    // Removes every brick; bottom and top both at zbot.
    void clear_units(double zbot);

    double height() const { return _ztop - _zbot; }
    // Relative bottom and top of brick k (k == size() gives the top twice).
    double brick_bottom(std::size_t k) const;
    double brick_top(std::size_t k) const;
    // The brick holding relative elevation z (its bottom included), or size() above the top.
    std::size_t brick_at(double z) const;

    // _zref, _zbot, _ztop, a 32-bit count, then the bricks.
    void binary_output(std::ostream& out) const;
    bool binary_input(std::istream& in);

protected:
    std::vector<WellUnit> _units;
};
