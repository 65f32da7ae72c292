#pragma once
// Builds deposit columns by hand, for tests that need a known block.

#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/DepositionUnit.h"

#include <cstdint>
#include <initializer_list>

namespace testing_support
{

// Stacks units of (facies, steps of 1 cm, age delta) on a column whose base is at relative zbot.
inline void build_column(DepositionSet& ds, double zbot, std::initializer_list<DepositionUnit> units)
{
    ds.units().clear();
    ds.set_zbot(zbot);
    double top = zbot;
    uint32_t age = 0;
    for (const DepositionUnit& unit : units)
    {
        ds.units().push_back(unit);
        top += unit.thickness();
        age += unit.age_delta();
    }
    ds.set_ztop(top);
    ds.set_age(age);
}

} // namespace testing_support
