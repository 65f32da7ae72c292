#pragma once
// A coarse grid of channel widths holding, per cell, the chain indices of the
// channel points that fall in it, so that the search for points of the chain
// that come near each other only compares points of neighbouring cells.

#include "kernel/geometry/Grid2D.h"

#include <map>
#include <vector>

class Channel;
class ChannelPoint;
class CutOff;

// A pair of grid indices.
struct IPos
{
    int x = 0;
    int y = 0;
};

class ChannelGrid : public Grid2D<std::map<int, ChannelPoint*>>
{
public:
    ChannelGrid(double x0, double y0, int nx, int ny, double dx, double dy);
    ~ChannelGrid() override = default;

    // Empties every cell map and the list of visited cells; the array stays.
    void clear() override;
    // Puts every point of `channel`, numbered from 0 in chain order, in its cell.
    void initialize(const Channel& channel);
    // Pairs of points far apart along the chain but nearer than one width on
    // the plane, upstream end first, non-overlapping, in chain order.
    void get_intersections(const Channel& channel, std::vector<CutOff>& cuts);
    // Entries left in the cell maps (only initialize fills them).
    int count() const;

    const std::vector<IPos>& cells() const { return _cells; }

private:
    void empty_filled_cells();

    // The cell of each point, in chain order.
    std::vector<IPos> _cells;
};
