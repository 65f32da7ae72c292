#pragma once
// What the domain needs of the channel to lay its imprint: the nodes under
// it and the grain-size profile of a bar at a node. The channel lives above
// the domain, so the domain knows it only through this.

#include "kernel/domain/ChannelGridPoint.h"

#include <vector>

class Flow;
class GridParams;

class iChannelImprint
{
public:
    virtual ~iChannelImprint() = default;

    virtual void find_grid_points(const GridParams& geom, std::vector<ChannelGridPoint>& out) const = 0;
    // Grains and heights of a deposit from a to b above the bed, in the three
    // modes of the variable point-bar grain size.
    virtual void get_grainsize_profile(const Flow& flow, double curvature, int side, double a, double b,
                                       double percent, std::vector<double>& grains,
                                       std::vector<double>& heights) const = 0;
    virtual void get_grainsize_profile_optim(const Flow& flow, double curvature, int side, double a, double b,
                                             double hflow, std::vector<double>& grains,
                                             std::vector<double>& heights) const = 0;
    virtual void get_grainsize_profile_proxy(const Flow& flow, double a, double b,
                                             std::vector<double>& grains,
                                             std::vector<double>& heights) const = 0;
};
