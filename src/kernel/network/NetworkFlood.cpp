// What the river lays outside its channel: overbank floods, background
// draping and pelagic rain, and peat in the low parts of the floodplain.

#include "kernel/network/Network.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/DistributionGenerator.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

namespace
{
// Peat accumulation: rate per iteration since the last flood, and share of the gap filled.
constexpr double WETLAND_RATE = 0.05;
constexpr double WETLAND_FACTOR = 0.6;

// A wet node of a turbidite run floods from above the channel, by a height
// that grows with the flow, on the outer bank more than on the inner one.
void turbidite_source(const ChannelGridPoint& pt, double z_dry, double depth, double height_coeff, double h0,
                      double gr, double thdec, double grdec, bool quick, double threshold, AggradInfo& rec,
                      double& h)
{
    const double z_bed = pt.z - depth;
    h = height_coeff * pt.flow.hflow_max() - depth;
    MP_ASSERT_TEXT(h > 0., "h_above_ch > 0.");
    if (h0 <= 0.)
        h0 = 2.;
    const int side = pt.side;
    double ratio = (5. * side * pt.flow.superelevation() / h + 1.) * (h0 / h);
    if (ratio < 1e-9)
        ratio = 0.;

    Flow flow(pt.flow);
    flow.cmp_c0(side, quick);
    double grain = flow.flow_percent_grainsize_at(z_dry - z_bed, threshold, side);
    if (grain < 1e-9)
        grain = gr;

    const double u0 = pt.flow.u0();
    if (std::fabs(u0) > 1e-6)
    {
        const double f = std::min(4., std::max(0.25, 1. + (side * std::fabs(pt.flow.u1()) / u0) / 2.));
        thdec *= f;
        grdec *= f;
    }
    rec.ratio = ratio;
    rec.gr = grain;
    rec.thdec = thdec;
    rec.grdec = grdec;
}
} // namespace

double Network::next_extension(double extension, bool rand)
{
    if (!rand)
        return extension;
    double g = 0.;
    if (_uniform != nullptr)
    {
        // One standard normal draw from two uniform ones (Box-Muller).
        const double u1 = (*_uniform)();
        const double u2 = (*_uniform)();
        g = std::sqrt(-2. * std::log(u1)) * std::cos(MP_TWO_PI * u2);
    }
    // The factor is lognormal with mean 1.
    const double e = (extension - 1.) * std::exp(0.1 * g - 0.005) + 1.;
    if (_tracer != nullptr && _tracer->traceAggrad() && _tracer->traceLevel(TRACE_INFO))
    {
        std::ostringstream text;
        text << "Overbank extension: " << e;
        printout(text.str());
    }
    return e;
}

void Network::make_overbank(double extension, double grdec, double gr, double h0, bool rand)
{
    if (_domain == nullptr || _ch == nullptr)
        return;
    ++_nb_floods;
    int ny_below = 0;
    std::vector<ChannelGridPoint> points;
    create_aggrad_map(ny_below, points);
    if (_amap == nullptr)
        return;

    const double thdec0 = next_extension(extension, rand);
    const bool quick = _params->getParamBool("GR_QUICK_C0");
    const double threshold = param("GR_THRESHOLD");
    const bool turbidite = _params->usingTurbi();
    const double depth = turbidite ? param("CHNL_MAX_DEPTH") : 0.;
    const double height_coeff = turbidite ? _params->getTurbAggHeightCoeff() : 0.;
    const int mx = (_amap->getNx() - _domain->getNx()) / 2;

    for (const ChannelGridPoint& pt : points)
    {
        AggradInfo& rec = _amap->getObject(pt.ix, pt.iy);
        rec.status = -2;
        double h = 0.;
        if (turbidite)
        {
            const double z_dry = _domain->get_topo_neigh_dry(pt.ix - mx, pt.iy - ny_below);
            turbidite_source(pt, z_dry, depth, height_coeff, h0, gr, thdec0, grdec, quick, threshold, rec, h);
        }
        else
        {
            rec.gr = gr;
            rec.thdec = thdec0;
            rec.grdec = grdec;
            rec.ratio = 1.;
        }
        rec.zmax = pt.z + h;
    }
    compute_aggrad_map(ny_below, points);
    release_aggrad_map();
    _last_flood_iter = _iteration;
}

void Network::make_pel_drap(double interval)
{
    if (interval <= 0. || _domain == nullptr)
        return;
    const int dt = static_cast<int>(_iteration) - static_cast<int>(_last_flood_iter);
    _domain->deposit_pel_drap(dt, interval, _iteration);
}

void Network::make_draping(double thickness, int family)
{
    if (_domain == nullptr)
        return;
    Facies facies;
    if (family == Draping::_fd.id())
        facies = Facies(Draping::_fd.id(), 1);
    else if (family == Pelagic::_fd.id())
        facies = Facies(Pelagic::_fd.id(), 1);
    _domain->deposit_uniform_thickness(thickness, facies, _iteration);
    if (_ch != nullptr && thickness > 0.)
        _ch->shift_elevation(thickness);
}

// Peat fills the lowest share of the floodplain towards the level of that
// share, the faster the longer the plain has not been flooded.
void Network::make_wetland(double fraction)
{
    if (_domain == nullptr || !_params->usingFluvi() || fraction <= 0.)
        return;
    fraction = std::min(fraction, 1.);
    const int dt = static_cast<int>(_iteration) - static_cast<int>(_last_flood_iter);
    if (dt <= 0)
        return;

    std::vector<std::pair<double, DepositionSet*>> dry;
    dry.reserve(_domain->node_count());
    for (int j = 0; j < _domain->getNy(); ++j)
        for (int i = 0; i < _domain->getNx(); ++i)
        {
            DepositionSet& ds = _domain->getObject(i, j);
            if (ds.water_depth() == 0.)
                dry.emplace_back(ds.get_topo_rel(false), &ds);
        }
    const std::size_t n = dry.size();
    if (n == 0)
        return;
    std::size_t m = static_cast<std::size_t>(n * fraction);
    if (m >= n)
        m -= 1;
    // Only the level of the m-th lowest matters: every node below it fills on its own.
    auto by_level = [](const std::pair<double, DepositionSet*>& a, const std::pair<double, DepositionSet*>& b)
    { return a.first < b.first; };
    std::nth_element(dry.begin(), dry.begin() + static_cast<std::ptrdiff_t>(m), dry.end(), by_level);
    const double zq = dry[m].first;
    const double share = (1. - std::exp(-dt * WETLAND_RATE)) * WETLAND_FACTOR * 0.1;
    const Facies peat(Wetland::_fd.id(), 1);
    for (const auto& node : dry)
        if (zq - node.first > 0.)
            node.second->deposit_thickness((zq - node.first) * share, peat, _iteration, _mb);
}
