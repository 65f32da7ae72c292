#include "kernel/domain/DepositionUnitCollection.h"

#include "kernel/common/BinaryDump.h"

#include <cstdint>
#include <istream>
#include <ostream>

DepositionUnitCollection::DepositionUnitCollection(double z) : VCollection(z) {}

DepositionUnitCollection::~DepositionUnitCollection() = default;

void DepositionUnitCollection::binary_output(std::ostream& out) const
{
    dump::write(out, _zref);
    dump::write(out, _zbot);
    dump::write(out, _ztop);
    dump::write(out, static_cast<int32_t>(_units.size()));
    for (const DepositionUnit& unit : _units)
        unit.binary_output(out);
}

bool DepositionUnitCollection::binary_input(std::istream& in)
{
    _units.clear();
    int32_t count = 0;
    if (!dump::read(in, _zref) || !dump::read(in, _zbot) || !dump::read(in, _ztop) || !dump::read(in, count))
        return false;
    if (count < 0)
    {
        in.setstate(std::ios::failbit);
        return false;
    }
    // A corrupt count must not allocate the machine away: grow as units come.
    _units.reserve(static_cast<std::size_t>(count < dump::MAX_DUMP_RESERVE ? count : dump::MAX_DUMP_RESERVE));
    for (int32_t k = 0; k < count; ++k)
    {
        DepositionUnit unit;
        if (!unit.binary_input(in))
            return false;
        _units.push_back(unit);
    }
    return static_cast<bool>(in);
}
