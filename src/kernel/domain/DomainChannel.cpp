// The domain's side of the channel's imprint: point bars on the nodes the
// channel has left, and the channel rasterised on the domain grid.

#include "interface/iParameters.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/CenterlineDisc.h"
#include "kernel/domain/Domain.h"
#include "kernel/domain/iChannelImprint.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>

namespace
{

constexpr unsigned char POINT_BAR_CLASS = 10;
// Elevations of the disc are scaled to [0, this].
constexpr double CL_DISC_RANGE = 255.;

Facies point_bar()
{
    return Facies(PointBar::_fd.id(), POINT_BAR_CLASS);
}

} // namespace

namespace
{
// The regional plane at a node; no slope set yet counts as flat.
double plane(double slope)
{
    return slope == MP_UNDEF_REAL ? 0. : slope;
}
} // namespace

void Domain::make_point_bar(const std::vector<ChannelGridPoint>& points, unsigned int age)
{
    // Columns are asked of the cache a few points ahead of their visit.
    constexpr std::size_t AHEAD = 4;
    for (std::size_t k = 0; k < std::min(AHEAD, points.size()); ++k)
        getObject(points[k].ix, points[k].iy).prefetch();
    for (std::size_t k = 0; k < points.size(); ++k)
    {
        if (k + AHEAD < points.size())
            getObject(points[k + AHEAD].ix, points[k + AHEAD].iy).prefetch();
        const ChannelGridPoint& p = points[k];
        DepositionSet& stack = getObject(p.ix, p.iy);
        const double wd = stack.water_depth();
        if (wd == 0. || stack.is_under_channel())
            continue;
        // The channel has left this node: the water it held fills with bar.
        stack.water_depth(0.);
        stack.deposit_thickness(wd, point_bar(), age, _mb);
    }
}

void Domain::make_point_bar_new(const iChannelImprint& channel, const std::vector<ChannelGridPoint>& points,
                                unsigned int age)
{
    const iParameters* params = _mc->parameters();
    const bool optim = params->usingVarPBGrainOptim();
    const bool proxy = params->usingVarPBGrainProxy();
    const bool quick = params->getParamBool("GR_QUICK_C0");
    const double threshold = params->getParamDouble("GR_THRESHOLD");
    std::vector<double> grains;
    std::vector<double> heights;
    for (const ChannelGridPoint& p : points)
    {
        DepositionSet& stack = getObject(p.ix, p.iy);
        const double wd = stack.water_depth();
        if (wd == 0. || stack.is_under_channel())
            continue;
        const double top = stack.get_topo_rel(false);
        // A bar does not build above its highest dry neighbour.
        const double target = std::min(top + wd, std::max(top, get_topo_neigh_dry(p.ix, p.iy)));
        stack.water_depth(0.);
        const double a = top - p.bed;
        const double b = target - p.bed;
        if (proxy)
            channel.get_grainsize_profile_proxy(p.flow, a, b, grains, heights);
        else if (optim)
            channel.get_grainsize_profile_optim(p.flow, p.curvature, p.side, a, b, p.z - p.bed, grains,
                                                heights);
        else
        {
            Flow flow(p.flow);
            flow.cmp_c0(p.side, quick);
            channel.get_grainsize_profile(flow, p.curvature, p.side, a, b, threshold, grains, heights);
        }
        if (grains.empty())
        {
            stack.deposit_up_to(target, point_bar(), age, _mb);
            continue;
        }
        for (size_t k = 0; k < grains.size() && k < heights.size(); ++k)
            stack.deposit_up_to(p.bed + heights[k], point_bar(), grains[k], age, _mb);
    }
}

bool Domain::getCenterlineDisc(CenterlineDisc& disc, const iChannelImprint& channel) const
{
    return get_cl_disc(disc, channel, CL_DISC_RANGE);
}

bool Domain::get_cl_disc(CenterlineDisc& disc, const iChannelImprint& channel, double range) const
{
    disc.reset(static_cast<const GridParams&>(*this));
    disc.fill(-1.0);
    std::vector<ChannelGridPoint> cells;
    channel.find_grid_points(*this, cells);
    std::vector<double> values;
    values.reserve(cells.size());
    double lowest = MP_MAX_REAL_VALUE;
    double highest = MP_MIN_REAL_VALUE;
    for (const ChannelGridPoint& c : cells)
    {
        // Geographic elevation of the channel less the regional plane, so
        // that the disc shows the channel's own relief.
        const double v = getZref() + c.z + getObject(c.ix, c.iy).get_flat_delta() -
                         c.ix * getDx() * plane(_slope_x) + c.iy * getDy() * plane(_slope_y);
        values.push_back(v);
        lowest = std::min(lowest, v);
        highest = std::max(highest, v);
    }
    if (values.empty() || highest <= lowest + MP_EPSILON)
    {
        if (_tracer)
            _tracer->error("Error calculating discretized channel");
        return false;
    }
    for (size_t k = 0; k < cells.size(); ++k)
        disc.set_at(cells[k].ix, cells[k].iy, (values[k] - lowest) * range / (highest - lowest));
    return true;
}
