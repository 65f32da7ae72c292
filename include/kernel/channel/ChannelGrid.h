#pragma once
// A coarse grid of channel widths holding, per cell, the chain indices of the
// channel points that fall in it, so that the search for points of the chain
// that come near each other only compares points of neighbouring cells.

#include "kernel/geometry/Grid2D.h"

#include <cstddef>
#include <utility>
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

// The points of one cell by increasing chain index; the search takes them
// out from the front only, so a cell keeps its storage from one iteration
// to the next and taking out is moving `head`.
struct ChannelGridCell
{
    std::vector<std::pair<int, ChannelPoint*>> entries;
    std::size_t head = 0;

    bool empty() const { return head == entries.size(); }
    std::size_t size() const { return entries.size() - head; }
    // 1 when the point of chain index `idx` is in the cell, else 0.
    std::size_t count(int idx) const;
    // The point of chain index `idx`, which must be in the cell.
    ChannelPoint* at(int idx) const;
    void clear()
    {
        entries.clear();
        head = 0;
    }
    // Takes out the points of index below `idx`.
    void drop_before(int idx)
    {
        while (head < entries.size() && entries[head].first < idx)
            ++head;
    }
};

class ChannelGrid : public Grid2D<ChannelGridCell>
{
public:
    ChannelGrid(double x0, double y0, int nx, int ny, double dx, double dy);
    ~ChannelGrid() override = default;

    // Empties every cell and the list of visited cells; the array stays.
    void clear() override;
    // Puts every point of `channel`, numbered from 0 in chain order, in its cell.
    void initialize(const Channel& channel);
    // Pairs of points far apart along the chain but nearer than one width on
    // the plane, upstream end first, non-overlapping, in chain order.
    void get_intersections(const Channel& channel, std::vector<CutOff>& cuts);
    // Entries left in the cells (only initialize fills them).
    int count() const;

    const std::vector<IPos>& cells() const { return _cells; }

private:
    void empty_filled_cells();

    // The cell of each point, in chain order.
    std::vector<IPos> _cells;
};
