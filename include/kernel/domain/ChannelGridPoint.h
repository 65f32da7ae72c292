#pragma once
// A grid node under the channel, with what the channel's section tells of it.

#include "kernel/domain/Flow.h"

class MeanderCalculator;

struct ChannelGridPoint
{
    explicit ChannelGridPoint(MeanderCalculator const* mc) : flow(mc) {}

    int ix = 0;
    int iy = 0;
    // Channel top interpolated at the node.
    double z = 0.;
    double bed = 0.;
    double curvature = 0.;
    // Outer bank 1, inner bank -1, on the axis 0.
    int side = 0;
    Flow flow;
};
