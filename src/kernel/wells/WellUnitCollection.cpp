#include "kernel/wells/WellUnitCollection.h"

#include "kernel/common/BinaryDump.h"

#include <cstdint>

WellUnitCollection::WellUnitCollection(double zbot) : VCollection(zbot) {}

WellUnitCollection::~WellUnitCollection() = default;

void WellUnitCollection::add_unit(const WellUnit& unit)
{
    _units.push_back(unit);
    _ztop += unit.thickness();
}

void WellUnitCollection::clear_units(double zbot)
{
    _units.clear();
    _zbot = zbot;
    _ztop = zbot;
}

double WellUnitCollection::brick_bottom(std::size_t k) const
{
    double z = _zbot;
    for (std::size_t i = 0; i < k && i < _units.size(); ++i)
        z += _units[i].thickness();
    return z;
}

double WellUnitCollection::brick_top(std::size_t k) const
{
    if (k >= _units.size())
        return brick_bottom(k);
    return brick_bottom(k) + _units[k].thickness();
}

std::size_t WellUnitCollection::brick_at(double z) const
{
    double top = _zbot;
    for (std::size_t k = 0; k < _units.size(); ++k)
    {
        top += _units[k].thickness();
        if (z < top)
            return k;
    }
    return _units.size();
}

void WellUnitCollection::binary_output(std::ostream& out) const
{
    dump::write(out, _zref);
    dump::write(out, _zbot);
    dump::write(out, _ztop);
    dump::write(out, static_cast<int32_t>(_units.size()));
    for (const WellUnit& u : _units)
        u.binary_output(out);
}

bool WellUnitCollection::binary_input(std::istream& in)
{
    _units.clear();
    int32_t count = 0;
    if (!dump::read(in, _zref) || !dump::read(in, _zbot) || !dump::read(in, _ztop) ||
        !dump::read(in, count) || count < 0)
        return false;
    _units.reserve(static_cast<std::size_t>(count < dump::MAX_DUMP_RESERVE ? count : dump::MAX_DUMP_RESERVE));
    for (int32_t k = 0; k < count; ++k)
    {
        WellUnit u;
        if (!u.binary_input(in))
            return false;
        _units.push_back(u);
    }
    return true;
}
