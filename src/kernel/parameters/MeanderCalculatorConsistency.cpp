// The consistency check of the hydraulic parameters: the rules a set of
// values must keep, each broken or doubtful one named in the report.

#include "kernel/parameters/MeanderCalculator.h"

#include "MeanderCalculatorSupport.h"

#include "interface/iParameters.h"
#include "kernel/common/Constants.h"
#include "kernel/parameters/ParameterCodes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
using meander_support::Domain2D;
using meander_support::domain_of;
using meander_support::event_interval;
using meander_support::mean_overbank_intensity;
using meander_support::text;

// Consistency status of the rules.
constexpr int CONSISTENT = 0;
constexpr int WARNING = 5;
constexpr int BROKEN = 6;

// Grids with more nodes than this cannot be held in memory with their stacks.
constexpr long long MAX_NODES_HARD = 10000000LL;
// Above this, an iteration takes seconds instead of milliseconds.
constexpr long long MAX_NODES_SOFT = 1000000LL;

// Thickness ratio at the levee edge below which the overbank deposit falls
// under the 0.01 m thickness step of the stacks for any usual flood height.
constexpr double MIN_LEVEE_EDGE_RATIO = 0.01;

// Collects the items of the consistency check and the worst status met.
class Findings
{
public:
    void warn(const std::string& item) { add(item, WARNING); }
    void fail(const std::string& item) { add(item, BROKEN); }
    int status() const { return _status; }
    std::string message() const
    {
        std::string msg;
        for (const auto& item : _items)
            msg += (msg.empty() ? "" : "\n") + item;
        return msg;
    }

private:
    void add(const std::string& item, int status)
    {
        _items.push_back(item);
        _status = std::max(_status, status);
    }
    std::vector<std::string> _items;
    int _status = CONSISTENT;
};
} // namespace

// ---- Consistency -------------------------------------------------------

int MeanderCalculator::check_consistency() const
{
    Findings found;
    const iParameters* p = _params;
    const double slope = p->getParamDouble("DOMAIN_SLOPE");
    const double width = p->getParamDouble("CHNL_WIDTH");
    const double hmax = p->getParamDouble("CHNL_MAX_DEPTH");
    const double wavelength = p->getParamDouble("CHNL_WAVELENGTH");
    const double margin = p->getParamDouble("CHNL_MARGIN");
    const double levee = p->getParamDouble("AG_LV_WIDTH");
    const int ag_type = p->getParamInt("AG_TYPE");
    const bool overbank = ag_type == AG_OVERBANK;
    const Domain2D dom = domain_of(p);

    // Slope within one order of magnitude of the default slope of the system type.
    const double slope_lo = default_slope() / 10.;
    const double slope_hi = default_slope() * 10.;
    if (slope < slope_lo || slope > slope_hi)
        found.warn("- Domain slope (" + text(slope) + ") should be greater than " + text(slope_lo) +
                   " and lesser than " + text(slope_hi));

    // The section needs mesh_from_width nodes across the channel to be drawn
    // (warning); with fewer than two nodes across, the channel can slip between
    // nodes and leave nothing (broken).
    const double lag = std::max(dom.dx, dom.dy);
    if (lag > mesh_from_width(width))
    {
        const std::string item = "- Inconsistency between channel width and domain resolution. "
                                 "The lags (along X (" +
                                 text(dom.dx) + "m) and along Y (" + text(dom.dy) +
                                 "m)) of the domain are too large for the given channel width (" +
                                 text(width) + "m)";
        if (lag > width / 2.)
            found.fail(item);
        else
            found.warn(item);
    }

    // A meander belt is about one natural wavelength wide, and two loops
    // along the flow are needed to see one whole.
    const double natural_wavelength = wavelength_from_width(width);
    const std::string not_displayed = "m). Meander loops will not be fully displayed on the domain";
    if (dom.width < natural_wavelength)
        found.warn("- The domain width (" + text(dom.width) +
                   "m) is too narrow for the given channel width (" + text(width) + not_displayed);
    if (dom.length < 2. * natural_wavelength)
        found.warn("- The domain length (" + text(dom.length) +
                   "m) is too short for the given channel width (" + text(width) + not_displayed);

    // The channel stretch outside the domain should not exceed the domain.
    const double domain_min = std::min(dom.width, dom.length);
    if (margin * width > domain_min)
        found.warn("- Inconsistency between margin size and domain size. "
                   "The margin which is " +
                   text(margin) + " times channel width (" + text(margin * width) +
                   "m) is bigger than domain width or length (" + text(domain_min) + "m)");

    // Memory bound (broken) and speed bound (warning) on the number of stacks.
    if (dom.nodes >= MAX_NODES_HARD)
        found.fail("- Number of grid nodes (NX*NY)=" + std::to_string(dom.nodes) + " must be less than " +
                   std::to_string(MAX_NODES_HARD) + " nodes.");
    else if (dom.nodes >= MAX_NODES_SOFT)
        found.warn("- Number of grid nodes (NX*NY)=" + std::to_string(dom.nodes) + " should be less than " +
                   std::to_string(MAX_NODES_SOFT) + " nodes. Simulation will be very slow.");

    // The overbank thickness decays exponentially away from the channel; at the
    // levee edge it must still reach MIN_LEVEE_EDGE_RATIO of the flood height.
    const double decay = p->getParamDouble("AG_EXP_DEC_THICK");
    const double min_decay = levee * width / std::log(1. / MIN_LEVEE_EDGE_RATIO);
    if (overbank && decay < min_decay)
        found.fail("- Inconsistency between thickness exponential decrease and levee width."
                   " No overbank will be deposited. For a levee width of " +
                   text(levee) + " and a channel width of " + text(width) +
                   "m the thickness exponential decrease must be greater than " + text(min_decay) + "m");

    // Wavelength within a factor 2 of the natural wavelength of the width.
    const double wl_lo = natural_wavelength / 2.;
    const double wl_hi = natural_wavelength * 2.;
    if (wavelength < wl_lo || wavelength > wl_hi)
        found.warn("- Inconsistency between width and wavelength of the channel. "
                   "For a channel width of " +
                   text(width) + "m, channel wavelength should be greater than " + text(wl_lo) +
                   "m and less than " + text(wl_hi) + "m");

    // The width natural to the depth, and its wavelength; a channel four times
    // narrower or a wavelength four times shorter is outside the model's range.
    const double depth_width = width_from_hmean(hmean_from_hmax(hmax));
    const double min_wavelength = wavelength_from_width(depth_width) / 4.;
    if (wavelength < min_wavelength)
        found.fail("- Inconsistency between width and mean depth of the channel. "
                   "For a channel maximum depth of " +
                   text(hmax) + "m, channel wavelength must be greater than " + text(min_wavelength) + "m");
    const double min_width = depth_width / 4.;
    if (width < min_width)
        found.fail("- Inconsistency between width and maximum depth of the channel. "
                   "For a channel maximum depth of " +
                   text(hmax) + "m, channel width (" + text(width) + "m) must be greater than " +
                   text(min_width) + "m");

    // Wells attract the channel within their influence distance only.
    if (p->usingCondMigWells() && levee > p->getCondMigWellsFactor())
        found.warn("- Inconsistency between levee width (width x " + text(levee) +
                   ") and well influence limitation factor (width x" +
                   std::to_string(p->getCondMigWellsFactor()) +
                   "). Levee facies in wells won't attract the channel anymore.");

    // Below mean - 2 sigma, a Gaussian law gives negative values.
    const bool aggrading = ag_type == AG_OVERBANK || ag_type == AG_EROSIVE;
    const double ob_mean = p->getParamDouble("AG_OB_NORM_MEAN");
    const double ob_stdev = p->getParamDouble("AG_OB_NORM_STDEV");
    if (aggrading && p->getParamInt("AG_OB_DIST") == MP_DIST_GAUSSIAN && ob_stdev > ob_mean / 2.)
        found.warn("- Aggradation intensity normal standard deviation " + text(ob_stdev) +
                   "m. More than 2,3% of intensity values will be negative.");

    // Background sedimentation should stay well below the overbank rate.
    const int ob_interval = event_interval(p, "AG_OB_FREQ", "AG_OB_PERIOD", "AG_OB_POISSON");
    const double pel_drap = p->getParamDouble("AG_OB_PEL_DRAP_INT");
    if (overbank && ob_interval > 0)
    {
        const double half_rate = 0.5 * mean_overbank_intensity(p) * 10000. / ob_interval;
        if (pel_drap > half_rate)
            found.warn("- Inconsistency between overbank intensity and Pelagic/Draping intensity."
                       " Pelagic/Draping intensity should be less than half mean overbank intensity (" +
                       text(half_rate) + " m/10000it)");
    }

    // Levees must be built by a flood before an avulsion can breach them.
    if (overbank && ob_interval > 0)
    {
        const int reg = event_interval(p, "AV_REG_FREQ", "AV_REG_PERIOD", "AV_REG_POISSON");
        if (reg > 0 && reg < ob_interval)
            found.warn("- Inconsistency between overbank period and regional avulsion period."
                       " Interval between regional avulsions (" +
                       std::to_string(reg) +
                       " iterations) should be greater or equal than interval"
                       " between overbank flow (" +
                       std::to_string(ob_interval) + " iterations)");
        const int loc = event_interval(p, "AV_LOC_FREQ", "AV_LOC_PERIOD", "AV_LOC_POISSON");
        if (loc > 0 && loc < ob_interval)
            found.warn("- Inconsistency between overbank period and local avulsion period."
                       " Interval between local avulsions (" +
                       std::to_string(loc) +
                       " iterations) should be greater or equal than interval"
                       " between overbank flow (" +
                       std::to_string(ob_interval) + " iterations)");
    }

    _msg = found.message();
    return found.status();
}
