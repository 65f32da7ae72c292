// How the channel rises and sinks towards its equilibrium elevation, and how a
// flood thickness spreads from the channel over the land.

#include "kernel/network/Network.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/Domain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace
{
// Applies `op` to the seven fields that a flood carries.
template <typename Op> void each_flood_field(AggradInfo& a, const AggradInfo& b, Op op)
{
    op(a.thdec, b.thdec);
    op(a.thmax, b.thmax);
    op(a.th, b.th);
    op(a.ratio, b.ratio);
    op(a.zmax, b.zmax);
    op(a.gr, b.gr);
    op(a.grdec, b.grdec);
}

// The neighbours of a map node, in the order in which they may feed it; bit
// k of a mask stands for the neighbour at FEEDER_OFFSETS[k].
const int FEEDER_OFFSETS[8][2] = {{0, -1}, {0, 1}, {-1, 0}, {-1, -1}, {-1, 1}, {1, 0}, {1, -1}, {1, 1}};

// How many nodes ahead of its turn a flood record is fetched.
constexpr std::size_t PREFETCH_AHEAD = 8;

// Asks for every cache line of `object` ahead of its use.
template <typename T> void prefetch_for_write(const T* object)
{
    constexpr std::size_t LINE = 64;
    const char* bytes = reinterpret_cast<const char*>(object);
    for (std::size_t offset = 0; offset < sizeof(T); offset += LINE)
        __builtin_prefetch(bytes + offset, 1);
    __builtin_prefetch(bytes + sizeof(T) - 1, 1);
}

int margin_x(const Domain& domain)
{
    return domain.get_mx() == MP_UNDEF_INT ? 0 : domain.get_mx();
}

long long length2(const IPos& p)
{
    return static_cast<long long>(p.x) * p.x + static_cast<long long>(p.y) * p.y;
}

// Ranks by distance every vector (|x|, |y|) of a box of pairs on a grid of
// meshes dx, dy; equal distances share a rank.
void rank_pairs(std::size_t width, std::size_t height, double dx, double dy, FloodDistanceRanks& ranks)
{
    std::vector<std::pair<double, std::size_t>> distances;
    distances.reserve(width * height);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x)
        {
            const double ax = static_cast<int>(x) * dx;
            const double ay = static_cast<int>(y) * dy;
            distances.emplace_back(std::sqrt(ax * ax + ay * ay), y * width + x);
        }
    std::sort(distances.begin(), distances.end());
    ranks.pair_rank.assign(width * height, 0);
    ranks.rank_distance.clear();
    for (const auto& d : distances)
    {
        if (ranks.rank_distance.empty() || d.first != ranks.rank_distance.back())
            ranks.rank_distance.push_back(d.first);
        ranks.pair_rank[d.second] = static_cast<int>(ranks.rank_distance.size()) - 1;
    }
    ranks.dx = dx;
    ranks.dy = dy;
    ranks.width = width;
    ranks.height = height;
}

// The map nodes in increasing distance to the channel, ties by index, and
// the distance of each. A distance depends only on |x| and |y| of the vector
// to the nearest source (a negated product squares to the same bits): every
// pair of the map's box is ranked once, kept from flood to flood, and the
// nodes counted into their rank (a counting sort, stable in index order).
// The order's vectors are the caller's, kept between floods.
struct DistanceOrder
{
    std::vector<int>& nodes;
    std::vector<int>& node_rank;
    const std::vector<double>& rank_distance;
    double distance(int index) const { return rank_distance[node_rank[index]]; }
};

void nodes_by_distance(const Grid2D<IPos>& vectors, FloodDistanceRanks& ranks, std::vector<int>& start,
                       DistanceOrder& order)
{
    const int n = static_cast<int>(vectors.node_count());
    const IPos* v = vectors.pointer(0, 0);
    int wx = 0, wy = 0;
    for (int k = 0; k < n; ++k)
    {
        wx = std::max(wx, std::abs(v[k].x));
        wy = std::max(wy, std::abs(v[k].y));
    }
    const double dx = vectors.getDx();
    const double dy = vectors.getDy();
    if (ranks.dx != dx || ranks.dy != dy || ranks.width <= static_cast<std::size_t>(wx) ||
        ranks.height <= static_cast<std::size_t>(wy))
        rank_pairs(static_cast<std::size_t>(std::max(wx + 1, vectors.getNx())),
                   static_cast<std::size_t>(std::max(wy + 1, vectors.getNy())), dx, dy, ranks);
    const std::size_t width = ranks.width;
    auto pair_of = [&](const IPos& p)
    { return static_cast<std::size_t>(std::abs(p.y)) * width + std::abs(p.x); };

    start.assign(ranks.rank_distance.size() + 1, 0);
    order.node_rank.resize(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k)
    {
        const int r = ranks.pair_rank[pair_of(v[k])];
        order.node_rank[k] = r;
        ++start[r + 1];
    }
    for (std::size_t r = 1; r < start.size(); ++r)
        start[r] += start[r - 1];
    order.nodes.resize(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k)
        order.nodes[start[order.node_rank[k]]++] = k;
}

// Whether `grid` has the geometry of the flood map of these parameters.
bool has_map_geometry(const GridParams& grid, double dx, double dy, int nx, int ny, double x0, double y0)
{
    return grid.getDx() == dx && grid.getDy() == dy && grid.getNx() == nx && grid.getNy() == ny &&
           grid.getX0() == x0 && grid.getY0() == y0 && grid.getRotation() == 0.;
}

// Overbank fines, coarser ones near the channel making the levee.
Facies flood_facies(double granulo)
{
    const int c = Facies::granulo_to_class(granulo);
    if (c == 0)
        return Facies(Overbank::_fd.id(), 1);
    if (c > 4)
        return Facies(Levee::_fd.id(), static_cast<unsigned char>(c));
    return Facies(Overbank::_fd.id(), static_cast<unsigned char>(c));
}
} // namespace

// ---------------------------------------------------------------------------
// Flood records

AggradInfo& AggradInfo::operator+=(const AggradInfo& other)
{
    each_flood_field(*this, other, [](double& a, double b) { a += b; });
    return *this;
}

AggradInfo& AggradInfo::operator*=(const AggradInfo& other)
{
    each_flood_field(*this, other, [](double& a, double b) { a *= b; });
    return *this;
}

AggradInfo& AggradInfo::operator/=(const AggradInfo& other)
{
    each_flood_field(*this, other,
                     [](double& a, double b)
                     {
                         if (b > 0.)
                             a /= b;
                     });
    return *this;
}

void AggradInfo::copy_deposit_info(const AggradInfo& other)
{
    each_flood_field(*this, other, [](double& a, double b) { a = b; });
    status = other.status;
}

// The flood thins exponentially with distance, and its surface falls by what it lost.
void AggradInfo::decrease(double delta)
{
    MP_ASSERT_TEXT(delta < 0., "delta < 0");
    MP_ASSERT_TEXT(thdec > 0., "mean.thdec > 0");
    const double e = std::exp(delta / thdec);
    const double new_thmax = e * thmax;
    zmax -= thmax - new_thmax;
    thmax = new_thmax;
    th = new_thmax;
    MP_ASSERT_TEXT(grdec > 0., "grdec > 0");
    gr *= std::exp(delta / grdec);
}

// Summing values in `sum` and squares here makes the final ratio a
// contraharmonic mean, in which thick feeders weigh more than thin ones.
// The feeder's flood is carried here as decrease() does, field by field and
// only as far as needed: most offers are turned down on the way.
bool AggradInfo::add(const AggradInfo& feeder, AggradInfo& sum)
{
    MP_ASSERT_TEXT(status == 0, "mean.status == 0");
    MP_ASSERT_TEXT(feeder.status != -1, "feeder.status != -1");
    MP_ASSERT_TEXT(feeder.dch < dch, "feeder.dch < dch");
    // A source floods by the height of its surface above this node.
    const bool source = feeder.status == -2;
    const double source_th = feeder.zmax - z;
    if (source ? source_th < min_th : feeder.th < min_th)
        return false;
    const double feeder_thmax = source ? source_th : feeder.thmax;

    const double delta = feeder.dch - dch;
    MP_ASSERT_TEXT(delta < 0., "delta < 0");
    MP_ASSERT_TEXT(feeder.thdec > 0., "mean.thdec > 0");
    MP_ASSERT_TEXT(feeder.grdec > 0., "grdec > 0");
    // The surface only falls on the way (the factor is at most 1): land above
    // the feeder's surface turns the offer down without it.
    if (z > feeder.zmax && feeder_thmax >= 0. && std::isfinite(feeder_thmax))
        return false;
    const double thmax_here = std::exp(delta / feeder.thdec) * feeder_thmax;
    const double zmax_here = feeder.zmax - (feeder_thmax - thmax_here);
    if (z > zmax_here)
        return false;

    // Rising ground takes a share of the flood on top of the lower surface.
    double th_here = thmax_here;
    if (z > feeder.z)
    {
        const double w = std::exp(delta / (2. * feeder.thdec));
        if (th_here + z > feeder.th * w + feeder.z)
        {
            th_here -= w * (z - feeder.z);
            if (th_here < 0.)
                return false;
        }
    }
    if (z + th_here > zmax_here)
        th_here = zmax_here - z;
    MP_ASSERT_TEXT(th_here >= 0., "fi.th >= 0");
    const double gr_here = feeder.gr * std::exp(delta / feeder.grdec);

    auto accumulate = [](double& total, double& squares, double value)
    {
        total += value;
        squares += value * value;
    };
    accumulate(sum.thdec, thdec, feeder.thdec);
    accumulate(sum.thmax, thmax, thmax_here);
    accumulate(sum.th, th, th_here);
    accumulate(sum.ratio, ratio, feeder.ratio);
    accumulate(sum.zmax, zmax, zmax_here);
    accumulate(sum.gr, gr, gr_here);
    accumulate(sum.grdec, grdec, feeder.grdec);
    return true;
}

// ---------------------------------------------------------------------------
// Equilibrium elevation

// A step shaves the points farthest from the equilibrium first, so that a
// channel with relief flattens before it moves as a whole.
void Network::go_to_ep(double step)
{
    if (step < 0. || _ch == nullptr)
        return;
    std::vector<std::pair<ChannelPoint*, std::pair<double, double>>> raw;
    _ch->abs_elevation_to_ep(_ep_elevation, raw);
    if (raw.empty())
        return;
    std::vector<AbsElevationInfo> list;
    list.reserve(raw.size());
    for (const auto& entry : raw)
        list.push_back(AbsElevationInfo{entry.second.first, entry.second.second, entry.first});
    std::stable_sort(list.begin(), list.end(),
                     [](const AbsElevationInfo& a, const AbsElevationInfo& b)
                     { return a.distance < b.distance; });

    const double t = std::max(0., list.back().distance - step);
    std::size_t k = list.size();
    for (; k > 0 && list[k - 1].distance > t; --k)
    {
        const AbsElevationInfo& info = list[k - 1];
        const double d = info.distance - t;
        if (info.elevation > _ep_elevation)
            info.point->decrease_elevation_by(d);
        else
            info.point->increase_elevation_by(d);
    }
    for (std::size_t m = 0; m < k; ++m)
        list[m].point->aggrad_increase(0.);
}

void Network::make_channel_lag(double step)
{
    MP_ASSERT_TEXT(_ch != nullptr, "_ch != NULL");
    go_to_ep(step);
    if (_domain != nullptr)
        _ch->make_channel_lag(_domain, _mb, _iteration);
}

void Network::make_incision(double step)
{
    if (_domain == nullptr || _ch == nullptr)
        return;
    const double m = _ch->mean_elevation();
    if (m - step < _ep_elevation)
        _ep_elevation = m - step;
    go_to_ep(step);
    _last_flood_iter = _iteration;
}

// ---------------------------------------------------------------------------
// Ghost migration: the turbidite channel fills while a copy of it keeps meandering

void Network::make_ghost_migration(unsigned int years, double thickness)
{
    _erode = false;
    if (_ch == nullptr || _domain == nullptr)
        return;
    if (_ghost == nullptr)
    {
        _ghost = new Channel(_mc, *_ch, true);
        _ghost_rise = 0.;
    }
    const double depth = channel_current_max_depth();
    if (_ghost_rise < depth)
    {
        const double t = std::min(thickness, depth - _ghost_rise);
        _ch->make_ghost_migration(_domain, _mb, _iteration, t);
        _ghost_rise += t;
    }
    if (_ghost->sinuo_occurs(_iteration, _domain))
        _ghost->update_flow_sinuosity();
    _ghost->migrate(_domain, Channel::migration_time_step(years));
    check_intersections(_ghost, true);
    _ghost->compute_velocity_perturbation();
}

void Network::end_ghost_migration()
{
    delete _ghost;
    _ghost = nullptr;
    _ghost_rise = 0.;
    _erode = true;
}

// ---------------------------------------------------------------------------
// Flood map

void Network::create_aggrad_map(int& ny_below, std::vector<ChannelGridPoint>& points)
{
    release_aggrad_map();
    if (_domain == nullptr || _ch == nullptr)
        return;
    const double dx = _domain->getDx();
    const double dy = _domain->getDy();
    const int nx = _domain->getNx();
    const int ny = _domain->getNy();

    double ymin = 0., ymax = 0.;
    _ch->calculate_y_bounds(ymin, ymax);
    ny_below = 1;
    if (ymin < 0.)
        ny_below = static_cast<int>(-ymin / dy);
    int ny_above = 1;
    if (ymax > ny * dy)
        ny_above = static_cast<int>((ymax - ny * dy) / dy);
    const int mx = margin_x(*_domain);
    const int map_nx = nx + 2 * mx;
    const int map_ny = ny + ny_below + ny_above;
    std::unique_ptr<Grid2D<AggradInfo>>& last = _flood.map;
    if (last != nullptr && last->isAllocated() &&
        has_map_geometry(*last, dx, dy, map_nx, map_ny, -mx * dx, -ny_below * dy))
    {
        _amap = std::move(last);
        _amap->initialize(AggradInfo());
    }
    else
    {
        last.reset();
        _amap = std::make_unique<Grid2D<AggradInfo>>(dx, dy, map_nx, map_ny, -mx * dx, -ny_below * dy);
    }

    points.clear();
    points.reserve(10 * static_cast<std::size_t>(_amap->getNx()));
    if (_params->usingTurbi() || _params->usingLobes())
        _ch->find_grid_points_new(*_amap, points);
    else
        _ch->find_grid_points(*_amap, points);
    if (points.empty())
    {
        if (_tracer != nullptr)
            _tracer->info("   Channel is too far from the domain: no aggradation");
        release_aggrad_map();
        return;
    }

    // The flood reads the land through the margins' extrapolation.
    _domain->compute_border_zmin();
    _domain->compute_border_zmax();
}

// Keeps the storage of the map for the next flood of its geometry.
void Network::release_aggrad_map()
{
    if (_amap != nullptr)
        _flood.map = std::move(_amap);
}

// Danielsson's vector distance mapping: each node ends with the index vector
// from its nearest source, propagated by two raster passes. A node still
// holding the marker (nx + 1, 0) has no information yet and offers nothing
// (no real vector is that long in x). The squared lengths are kept beside the
// vectors, the marker's as larger than any.
void Network::danielsson(Grid2D<IPos>& vectors) const
{
    std::vector<long long> lengths;
    danielsson(vectors, lengths);
}

void Network::danielsson(Grid2D<IPos>& vectors, std::vector<long long>& lengths) const
{
    const int nx = vectors.getNx();
    const int ny = vectors.getNy();
    if (nx <= 0 || ny <= 0 || !vectors.isAllocated())
        return;
    const int none = nx + 1;
    constexpr long long UNINFORMED = std::numeric_limits<long long>::max();
    IPos* grid = vectors.pointer(0, 0);
    lengths.resize(vectors.node_count());
    for (std::size_t k = 0; k < lengths.size(); ++k)
        lengths[k] = grid[k].x == none && grid[k].y == 0 ? UNINFORMED : length2(grid[k]);

    auto offer = [&](std::size_t node, std::size_t from, int ddx, int ddy)
    {
        // Without branches: which of the two wins is not predictable.
        const IPos candidate{grid[from].x + ddx, grid[from].y + ddy};
        const long long length = length2(candidate);
        const bool take = lengths[from] != UNINFORMED && length < lengths[node];
        grid[node].x = take ? candidate.x : grid[node].x;
        grid[node].y = take ? candidate.y : grid[node].y;
        lengths[node] = take ? length : lengths[node];
    };
    // `other` is the row the information comes from in y, or -1.
    auto sweep_right = [&](std::size_t row, long long other, int ddy)
    {
        for (int i = 1; i < nx; ++i)
        {
            offer(row + i, row + i - 1, 1, 0);
            if (other >= 0)
                offer(row + i, static_cast<std::size_t>(other) + i, 0, ddy);
        }
    };
    auto sweep_left = [&](std::size_t row, long long other, int ddy)
    {
        for (int i = nx - 2; i >= 0; --i)
        {
            offer(row + i, row + i + 1, -1, 0);
            if (other >= 0)
                offer(row + i, static_cast<std::size_t>(other) + i, 0, ddy);
        }
    };

    const std::size_t width = static_cast<std::size_t>(nx);
    // Downward: information from the sources above and in the row.
    for (int j = ny - 1; j >= 0; --j)
    {
        const std::size_t row = j * width;
        sweep_right(row, j == ny - 1 ? -1 : static_cast<long long>(row + width), -1);
        sweep_left(row, -1, 0);
    }
    // Upward: information from the sources below.
    for (int j = 0; j < ny; ++j)
    {
        const std::size_t row = j * width;
        sweep_left(row, j == 0 ? -1 : static_cast<long long>(row - width), 1);
        sweep_right(row, -1, 0);
    }
}

void Network::compute_aggrad_map(int ny_below, const std::vector<ChannelGridPoint>& pts)
{
    MP_ASSERT_TEXT(_amap != nullptr, "_amap != NULL");
    MP_ASSERT_TEXT(!pts.empty(), "!pts.empty()");
    MP_ASSERT_TEXT(_domain != nullptr, "_domain != NULL");
    const double dx = _amap->getDx();
    const double dy = _amap->getDy();
    const int nx = _amap->getNx();
    const int ny = _amap->getNy();
    MP_ASSERT(dx > 0);
    MP_ASSERT(dy > 0);
    MP_ASSERT(nx > 0 && ny > 0);

    DistanceOrder order{_flood.nodes, _flood.node_rank, _flood.ranks.rank_distance};
    {
        Grid2D<IPos>& vectors = _flood.vectors;
        if (!vectors.isAllocated() ||
            !has_map_geometry(vectors, dx, dy, nx, ny, _amap->getX0(), _amap->getY0()))
            vectors.reset(*_amap);
        vectors.initialize(IPos{nx + 1, 0});
        for (const ChannelGridPoint& pt : pts)
        {
            MP_ASSERT_TEXT(pt.ix >= 0 && pt.ix < nx, "pt->pos.x >= 0 && pt->pos.x < nx");
            MP_ASSERT_TEXT(pt.iy >= 0 && pt.iy < ny, "pt->pos.y >= 0 && pt->pos.y < ny");
            vectors.getObject(pt.ix, pt.iy) = IPos{0, 0};
        }
        danielsson(vectors, _flood.lengths);
        nodes_by_distance(vectors, _flood.ranks, _flood.rank_start, order);
    }

    // A record gets its place, distance and land elevation when the flood
    // comes to it; nothing is laid before the whole map is computed, so the
    // land it reads is the land of the start of the flood, read here at once.
    const int mx = (nx - _domain->getNx()) / 2;
    const int my = std::max(ny_below, ny - _domain->getNy() - ny_below);
    _domain->fill_topo_extrapolated(true, true, -mx, -ny_below, nx, ny, mx, my, true, _flood.land);
    AggradInfo* info = _amap->pointer(0, 0);
    auto place = [&](int index)
    {
        AggradInfo& rec = info[index];
        rec.i = index % nx;
        rec.j = index / nx;
        rec.dch = order.distance(index);
        rec.z = _flood.land[index];
    };

    // Only a live node (a source, or one that took a flood) can feed another:
    // each live node marks itself in its neighbours' masks, and a node whose
    // mask is empty when its turn comes cannot be fed and is left unreached.
    std::vector<unsigned char>& feeders = _flood.feeders;
    feeders.assign(_amap->node_count(), 0);
    int steps[8];
    for (int k = 0; k < 8; ++k)
        steps[k] = FEEDER_OFFSETS[k][1] * nx + FEEDER_OFFSETS[k][0];
    auto mark_neighbours = [&](const AggradInfo& rec)
    {
        const int index = rec.j * nx + rec.i;
        if (rec.i > 0 && rec.i < nx - 1 && rec.j > 0 && rec.j < ny - 1)
        {
            for (int k = 0; k < 8; ++k)
                feeders[index - steps[k]] |= static_cast<unsigned char>(1u << k);
            return;
        }
        for (int k = 0; k < 8; ++k)
        {
            const int ni = rec.i - FEEDER_OFFSETS[k][0];
            const int nj = rec.j - FEEDER_OFFSETS[k][1];
            if (ni >= 0 && ni < nx && nj >= 0 && nj < ny)
                feeders[index - steps[k]] |= static_cast<unsigned char>(1u << k);
        }
    };
    for (const ChannelGridPoint& pt : pts)
    {
        const int index = pt.iy * nx + pt.ix;
        if (info[index].status != -2)
            continue;
        place(index);
        mark_neighbours(info[index]);
    }

    std::vector<FloodDeposit>& deposits = _flood.deposits;
    deposits.clear();
    const std::size_t count = order.nodes.size();
    for (std::size_t n = 0; n < count; ++n)
    {
        // The nodes come in no memory order: the record of a node that can
        // already be fed is asked for ahead of its turn.
        if (n + PREFETCH_AHEAD < count && feeders[order.nodes[n + PREFETCH_AHEAD]] != 0)
            prefetch_for_write(info + order.nodes[n + PREFETCH_AHEAD]);
        const int index = order.nodes[n];
        const unsigned char mask = feeders[index];
        if (mask == 0)
            continue;
        AggradInfo& rec = info[index];
        if (rec.status == -1)
            place(index);
        if (!take_flood(rec, mask))
            continue;
        mark_neighbours(rec);
        const int di = rec.i - mx;
        const int dj = rec.j - ny_below;
        if (!_domain->isValid(di, dj))
            continue;
        const double d = rec.ratio;
        MP_ASSERT_TEXT(!std::isnan(d), "!std::isnan(d)");
        deposits.push_back(FloodDeposit{&_domain->getObject(di, dj), rec.th * d, flood_facies(rec.gr)});
    }
    // Laid in the flood's order (the mass balance sums them in it), each
    // column's deposit fields fetched ahead, as the channel's imprint does.
    for (std::size_t n = 0; n < deposits.size(); ++n)
    {
        if (n + PREFETCH_AHEAD < deposits.size())
            deposits[n + PREFETCH_AHEAD].set->prefetch();
        const FloodDeposit& deposit = deposits[n];
        deposit.set->deposit_thickness(deposit.thickness, deposit.facies, _iteration, _mb);
    }
}

// One node at a time; the flood reads the whole map at once, to the same values.
double Network::flood_map_elevation(int i, int j, int ny_below) const
{
    const int mx = (_amap->getNx() - _domain->getNx()) / 2;
    const int my = std::max(ny_below, _amap->getNy() - _domain->getNy() - ny_below);
    return _domain->get_topo_extrapolated(true, true, i - mx, j - ny_below, mx, my, true);
}

// A node takes its flood from the neighbours strictly closer to the channel.
bool Network::compute_deposit(AggradInfo* local)
{
    MP_ASSERT_TEXT(local != nullptr, "local != NULL");
    return take_flood(*local, _amap != nullptr ? in_map_neighbours(local->i, local->j) : 0);
}

unsigned char Network::in_map_neighbours(int i, int j) const
{
    unsigned char mask = 0;
    for (int k = 0; k < 8; ++k)
    {
        const int ni = i + FEEDER_OFFSETS[k][0];
        const int nj = j + FEEDER_OFFSETS[k][1];
        if (ni >= 0 && ni < _amap->getNx() && nj >= 0 && nj < _amap->getNy())
            mask |= static_cast<unsigned char>(1u << k);
    }
    return mask;
}

// A neighbour out of `mask` is one that cannot feed: off the map, unreached, or dry.
bool Network::take_flood(AggradInfo& local, unsigned char mask)
{
    if (local.status == -2 || local.status == 0)
        return false;
    MP_ASSERT_TEXT(local.th == 0., "local->th == 0.");
    MP_ASSERT_TEXT(_amap != nullptr, "_amap != NULL");

    AggradInfo mean = local;
    mean.status = 0;
    AggradInfo sum = mean;
    const int nx = _amap->getNx();
    const AggradInfo* here = _amap->pointer(0, 0) + (static_cast<std::ptrdiff_t>(local.j) * nx + local.i);
    bool fed = false;
    for (int k = 0; k < 8; ++k)
    {
        if ((mask & (1u << k)) == 0)
            continue;
        const AggradInfo& neighbour = here[FEEDER_OFFSETS[k][1] * nx + FEEDER_OFFSETS[k][0]];
        if (neighbour.dch < local.dch && mean.add(neighbour, sum))
            fed = true;
    }
    if (!fed)
    {
        local.status = 0;
        return false;
    }
    MP_ASSERT_TEXT(mean.status == 0, "mean.status == 0");
    MP_ASSERT_TEXT(mean.th >= 0., "mean.th >= 0");
    mean /= sum;
    MP_ASSERT_TEXT(mean.thdec > 0., "mean.thdec > 0");
    if (mean.th < AggradInfo::min_th)
    {
        local.status = 0;
        return false;
    }
    local.copy_deposit_info(mean);
    return true;
}
