#include "kernel/channel/ChannelGrid.h"

#include "kernel/channel/Channel.h"
#include "kernel/channel/CutOff.h"
#include "kernel/common/Assert.h"

#include <algorithm>
#include <utility>
#include <vector>

std::size_t ChannelGridCell::count(int idx) const
{
    for (std::size_t k = head; k < entries.size(); ++k)
        if (entries[k].first == idx)
            return 1;
    return 0;
}

ChannelPoint* ChannelGridCell::at(int idx) const
{
    for (std::size_t k = head; k < entries.size(); ++k)
        if (entries[k].first == idx)
            return entries[k].second;
    MP_ASSERT_TEXT(false, "cell holds idx");
    return nullptr;
}

ChannelGrid::ChannelGrid(double x0, double y0, int nx, int ny, double dx, double dy)
    : Grid2D<ChannelGridCell>(dx, dy, nx, ny, x0, y0)
{
}

void ChannelGrid::clear()
{
    _cells.clear();
    if (!isAllocated())
        return;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).clear();
}

// Only initialize fills cells, and only those of _cells: emptying these
// empties the grid without a sweep of every cell at each iteration.
void ChannelGrid::empty_filled_cells()
{
    if (isAllocated())
        for (const IPos& cell : _cells)
            getObject(cell.x, cell.y).clear();
    _cells.clear();
}

namespace
{
int clamped_index(double value, int size)
{
    const int index = static_cast<int>(value);
    return std::max(0, std::min(index, size - 1));
}
} // namespace

void ChannelGrid::initialize(const Channel& channel)
{
    empty_filled_cells();
    // ChannelPoint::get_grid_indices node by node, with the grid's shift and
    // scale formed once: the same operations on the same values.
    const Point2D shift(-getX0(), -getY0());
    const Point2D scale(1. / getDx(), 1. / getDy());
    int idx = 0;
    for (ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), ++idx)
    {
        Point2D g(cp->get_abscissa(), cp->get_ordinate());
        g.transform(shift, scale, true);
        const IPos cell{clamped_index(g.get_abscissa(), _nx), clamped_index(g.get_ordinate(), _ny)};
        _cells.push_back(cell);
        ChannelGridCell& cpis = getObject(cell.x, cell.y);
        // Indices come in increasing order: the cell stays sorted.
        MP_ASSERT_TEXT(cpis.entries.empty() || cpis.entries.back().first < idx,
                       "cpis.find(idx) == cpis.end()");
        cpis.entries.emplace_back(idx, cp);
    }
}

// Each point is compared with the points of the nine cells around its own,
// and the hit farthest along the chain is kept, so that it removes the longest
// loop; the search resumes past it, and every visited entry is erased.
void ChannelGrid::get_intersections(const Channel& channel, std::vector<CutOff>& cuts)
{
    cuts.clear();
    if (_cells.empty())
        return;
    const double width = channel.width();
    int cur_idx = 0;
    for (const IPos& cell : _cells)
    {
        ChannelGridCell& cpis = getObject(cell.x, cell.y);
        cpis.drop_before(cur_idx);
        while (!cpis.empty() && cpis.entries[cpis.head].first <= cur_idx)
        {
            MP_ASSERT_TEXT(cpis.entries[cpis.head].first == cur_idx, "itcg->begin()->first == cur_idx");
            ChannelPoint* p = cpis.entries[cpis.head].second;
            ++cpis.head;

            // A point lies in one cell only, and a cell's entries rise along the
            // chain: read from its back, a cell's first hit is its farthest, and
            // entries not beyond the best hit so far need no distance.
            int best = cur_idx + 3;
            ChannelPoint* hit = nullptr;
            const int i_begin = std::max(cell.x - 1, 0);
            const int columns = std::min(cell.x + 1, _nx - 1) - i_begin + 1;
            const int j_end = std::min(cell.y + 1, _ny - 1);
            for (int j = std::max(cell.y - 1, 0); j <= j_end; ++j)
            {
                // A row of the neighbourhood lies in one run of the array.
                const ChannelGridCell* row = &getObject(i_begin, j);
                for (int i = 0; i < columns; ++i)
                {
                    const ChannelGridCell& other = row[i];
                    const std::pair<int, ChannelPoint*>* begin = other.entries.data() + other.head;
                    for (const std::pair<int, ChannelPoint*>* e = other.entries.data() + other.entries.size();
                         e != begin && (e - 1)->first > best; --e)
                        if (p->distance2D(*(e - 1)->second) < width)
                        {
                            best = (e - 1)->first;
                            hit = (e - 1)->second;
                            break;
                        }
                }
            }
            if (hit != nullptr)
            {
                cuts.emplace_back(p, hit);
                cur_idx = best;
            }
            else
                ++cur_idx;
            cpis.drop_before(cur_idx);
        }
    }
}

int ChannelGrid::count() const
{
    if (!isAllocated())
        return 0;
    // No other cell than the filled ones holds entries; each is counted once.
    // After a search nearly all are empty, so the list of those counted stays short.
    std::vector<const ChannelGridCell*> counted;
    std::size_t n = 0;
    for (const IPos& cell : _cells)
    {
        const ChannelGridCell& entries = getObject(cell.x, cell.y);
        if (entries.empty() || std::find(counted.begin(), counted.end(), &entries) != counted.end())
            continue;
        counted.push_back(&entries);
        n += entries.size();
    }
    return static_cast<int>(n);
}
