#pragma once
// A column of deposition units, bottom first, placed by its VCollection.

#include "kernel/domain/DepositionUnit.h"
#include "kernel/geometry/VCollection.h"

#include <cstddef>
#include <iosfwd>
#include <vector>

class DepositionUnitCollection : public VCollection
{
public:
    // An empty column with bottom and top at z.
    explicit DepositionUnitCollection(double z = 0.);
    DepositionUnitCollection(const DepositionUnitCollection&) = default;
    DepositionUnitCollection& operator=(const DepositionUnitCollection&) = default;
    ~DepositionUnitCollection() override;

    const std::vector<DepositionUnit>& units() const { return _units; }
    std::vector<DepositionUnit>& units() { return _units; }
    std::size_t size() const { return _units.size(); }
    bool empty() const { return _units.empty(); }

    // _zref, _zbot, _ztop, a 32-bit count, then the units. Location, flattening
    // and upper limit are left to the owner.
    void binary_output(std::ostream& out) const;
    // False at the first field or unit that cannot be read.
    bool binary_input(std::istream& in);

protected:
    std::vector<DepositionUnit> _units;
};
