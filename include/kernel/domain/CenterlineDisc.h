#pragma once
// The raster form of a channel: on the domain grid, -1 away from the channel
// and, under it, the channel elevation rescaled to a chosen range.

#include "kernel/files/GridReal.h"

class CenterlineDisc : public GridReal
{
public:
    CenterlineDisc();
    explicit CenterlineDisc(const GridParams& params);
    ~CenterlineDisc() override;
    CenterlineDisc(const CenterlineDisc&) = default;
    CenterlineDisc& operator=(const CenterlineDisc&) = default;
};
