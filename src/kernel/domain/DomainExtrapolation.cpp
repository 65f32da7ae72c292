// The topography read beyond the grid's border (margins extrapolated), the
// erodibility likewise, and the pseudo-topography under the channel.

#include "kernel/domain/Domain.h"

#include "DomainSupport.h"

#include "kernel/common/Assert.h"
#include "kernel/domain/iColumnWell.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/parameters/DistributionGenerator.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace
{
using domain_support::clamp_to;
} // namespace

// ---------------------------------------------------------------------------
// Extrapolation

bool Domain::margin_idx(int n, int& i, int& m)
{
    m = std::max(1, std::min(m, n - 1));
    if (i >= n)
    {
        const int r = (i - n + 1) % (2 * m);
        if (r > m)
        {
            i = n + r - 1 - 2 * m;
            return false;
        }
        i = n - r - 1;
        return true;
    }
    if (i < 0)
    {
        const int r = i % (2 * m);
        i = -r;
        if (i <= m)
            return true;
        i = r + 2 * m;
        return false;
    }
    return false;
}

double Domain::topo_value(bool rel, bool with_water, int i, int j) const
{
    const DepositionSet& ds = getObject(i, j);
    return rel ? ds.get_topo_rel(with_water) : ds.get_topo_altered();
}

// Beyond the border the field is a mirror image of the grid that fades into
// the edge value over the margin, turned upside down in the mirrored half of
// the fold, so that it stays continuous in value and slope at the border.
template <typename Value>
double Domain::extrapolate(const Value& value, int i, int j, int mx, int my, bool clamp, double zmin,
                           double zmax) const
{
    auto bound = [&](double z) { return clamp ? clamp_to(z, zmin, zmax) : z; };
    const bool out_i = i < 0 || i >= _nx;
    const bool out_j = j < 0 || j >= _ny;
    int fi = i, fj = j;
    const bool fx = margin_idx(_nx, fi, mx);
    const bool fy = margin_idx(_ny, fj, my);

    double z1 = value(fi, fj);
    double f = 0.;
    const int edge_j = j < 0 ? 0 : _ny - 1;
    if (out_j)
    {
        const double d = j < 0 ? fj : _ny - 1 - fj;
        f = (d / my) * (d / my);
        const double ze = value(fi, edge_j);
        z1 = bound((1. - f) * z1 + f * ze);
        if (fy)
            z1 = bound(2. * ze - z1);
    }
    if (!out_i)
        return z1;

    const int edge_i = i < 0 ? 0 : _nx - 1;
    double zx = value(edge_i, fj);
    if (out_j)
    {
        const double zxe = value(edge_i, edge_j);
        zx = (1. - f) * zx + f * zxe;
        if (fy)
            zx = 2. * zxe - zx;
    }
    const double d = i < 0 ? fi : _nx - 1 - fi;
    const double g = (d / mx) * (d / mx);
    double z = bound((1. - g) * z1 + g * zx);
    if (fx)
        z = bound(2. * zx - z);
    return z;
}

// A node's topography: `value` on the grid, its extrapolation beyond.
template <typename Value>
double Domain::topo_node(const Value& value, bool rel, int i, int j, int mx, int my, bool flatten) const
{
    const double slope_term = flatten && !rel ? i * _dx * _slope_x + j * _dy * _slope_y : 0.;
    if (isValid(i, j))
        return value(i, j) - slope_term;

    if (mx == MP_UNDEF_INT)
        mx = _mx;
    if (my == MP_UNDEF_INT)
        my = _my;
    const double zmin = rel ? _zmin_border : _zmin_border_altered;
    const double zmax = rel ? _zmax_border : _zmax_border_altered;
    if (zmin == MP_MAX_REAL_VALUE || zmax == MP_MIN_REAL_VALUE)
    {
        warning("Domain border elevations not yet computed... Is there any valid domain?");
        MP_ASSERT(false);
    }
    return extrapolate(value, i, j, mx, my, true, zmin, zmax) - slope_term;
}

double Domain::get_topo_extrapolated(bool rel, bool with_water, int i, int j, int mx, int my,
                                     bool flatten) const
{
    auto value = [&](int a, int b) { return topo_value(rel, with_water, a, b); };
    return topo_node(value, rel, i, j, mx, my, flatten);
}

// The same values as get_topo_extrapolated, node by node, but each column is
// read once and in memory order instead of once per request.
void Domain::fill_topo_extrapolated(bool rel, bool with_water, int i0, int j0, int nx, int ny, int mx, int my,
                                    bool flatten, std::vector<double>& out) const
{
    MP_ASSERT(nx >= 0 && ny >= 0);
    out.resize(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny));
    std::vector<double> grid(node_count());
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            grid[static_cast<std::size_t>(j) * _nx + i] = topo_value(rel, with_water, i, j);
    auto value = [&](int a, int b) { return grid[static_cast<std::size_t>(b) * _nx + a]; };
    double* node = out.data();
    for (int j = j0; j < j0 + ny; ++j)
        for (int i = i0; i < i0 + nx; ++i)
            *node++ = topo_node(value, rel, i, j, mx, my, flatten);
}

double Domain::get_erodibility_extrapolated(int i, int j) const
{
    auto value = [this](int a, int b) { return getObject(a, b).get_erodibility(); };
    if (isValid(i, j))
        return value(i, j);
    const double e = extrapolate(value, i, j, _mx, _my, false, 0., 0.);
    return e < 0. ? 0. : e;
}

double Domain::get_topo_neigh_dry(int i, int j) const
{
    // Read straight from the columns: on the grid the extrapolated topography
    // is the column's own, and a bar asks this of every node it builds on.
    bool found = false;
    double highest = MP_MIN_REAL_VALUE;
    for (const Vector2D& v : _grid_vectors)
    {
        const int ni = i + static_cast<int>(v.get_abscissa());
        const int nj = j + static_cast<int>(v.get_ordinate());
        if (!isValid(ni, nj))
            continue;
        const DepositionSet& neighbour = getObject(ni, nj);
        if (neighbour.water_depth() != 0.)
            continue;
        highest = std::max(highest, neighbour.get_topo_rel(true));
        found = true;
    }
    return found ? highest : get_topo_extrapolated(true, true, i, j);
}

// New courses are sought on the topography lowered where the bed is easy to
// erode, with a faint noise that breaks ties between equal nodes.
void Domain::compute_pseudo_topo(double hmax, DistributionGenerator& generator)
{
    double lowest = MP_MAX_REAL_VALUE, highest = MP_MIN_REAL_VALUE;
    // Each well weighs on the courses with its own random strength.
    std::vector<std::pair<const iColumnWell*, double>> wells;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const DepositionSet& ds = getObject(i, j);
            const double z = ds.get_topo_rel(false);
            lowest = std::min(lowest, z);
            highest = std::max(highest, z);
            if (ds.well() != nullptr)
                wells.emplace_back(ds.well(), generator() + 1.);
        }
    const double range = std::max(hmax, highest - lowest);
    UniformDistributionGenerator noise(_seed, -1e-5, 1e-5);
    const double f = generator() + 1.;

    double highest_altered = MP_MIN_REAL_VALUE;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            const Point3D node(grid2Rel(i, j), ds.get_topo_rel(true));
            double attraction = 0.;
            for (const auto& well : wells)
                attraction += well.first->correct_avl(node, nullptr, nullptr, nullptr) * well.second;
            const double altered = ds.get_topo_rel(true) + noise() -
                                   (ds.get_erodibility() * f / _erod_default + attraction) * range;
            ds.set_topo_altered(altered);
            highest_altered = std::max(highest_altered, altered);
        }
    const double shift = highest_altered - highest;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            ds.set_topo_altered(ds.get_topo_altered() - shift);
        }
    compute_border_zmin();
    compute_border_zmax();
}
