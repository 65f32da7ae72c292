#pragma once
// The boxes a view draws for one column of the block: its units bottom up,
// adjacent units of one colour merged into one box, the void units (family
// 0) left out.

#include "kernel/common/Facies.h"
#include "view/FaciesColorMap.h"
#include "view/ViewColor.h"

#include <cstdint>
#include <vector>

class DepositionSet;

struct ColumnBox
{
    // Relative elevations.
    double zbot = 0.;
    double ztop = 0.;
    Facies facies;
    // Age of the top of the box's uppermost unit.
    uint32_t age = 0;
    ViewColor color;
};

class ColumnBoxes
{
public:
    // Appends the column's boxes to `out`, bottom first.
    static void append(const DepositionSet& set, const FaciesColorMap& colors, int coding,
                       std::vector<ColumnBox>& out);
    // The top deposit of a column (family 0 when there is none) and its age.
    static void top_info(const DepositionSet& set, Facies& facies, uint32_t& age);
};
