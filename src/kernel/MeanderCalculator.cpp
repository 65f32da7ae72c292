#include "kernel/MeanderCalculator.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/Constants.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <vector>

std::string MeanderCalculator::_msg;
bool MeanderCalculator::_use_standard = true;

namespace
{

// Resonant wave number for the default scour factor of 7.
constexpr double BETA_PRIME_DEFAULT = 2.1178482887682417;
constexpr double DEFAULT_SCOUR = 7.0;

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

bool undefined(double value)
{
    return value >= MP_UNDEF_REAL;
}

double round_to(double value, double factor)
{
    return std::round(value * factor) / factor;
}

std::string text(double value)
{
    std::ostringstream s;
    s << value;
    return s.str();
}

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

// Mean interval in iterations of an event group, 0 when it never happens.
int event_interval(iParameters const* p, const std::string& freq, const std::string& period,
                   const std::string& poisson)
{
    switch (p->getParamInt(freq))
    {
    case 1:
        return p->getParamInt(period);
    case 2:
        return p->getParamInt(poisson);
    default:
        return 0;
    }
}

// Mean of the overbank intensity law in force.
double mean_overbank_intensity(iParameters const* p)
{
    switch (p->getParamInt("AG_OB_DIST"))
    {
    case 0:
        return p->getParamDouble("AG_OB_CONST");
    case 1:
        return 0.5 * (p->getParamDouble("AG_OB_MIN") + p->getParamDouble("AG_OB_MAX"));
    case 2:
        return p->getParamDouble("AG_OB_NORM_MEAN");
    default:
        return p->getParamDouble("AG_OB_LOGNORM_MEAN");
    }
}

struct Domain2D
{
    double dx, dy, length, width;
    long long nodes;
};

Domain2D domain_of(iParameters const* p)
{
    const int nx = p->getParamInt("DOMAIN_NX");
    const int ny = p->getParamInt("DOMAIN_NY");
    const double dx = p->getParamDouble("DOMAIN_DX");
    const double dy = p->getParamDouble("DOMAIN_DY");
    return {dx, dy, (nx - 1) * dx, (ny - 1) * dy, static_cast<long long>(nx) * ny};
}

} // namespace

MeanderCalculator::MeanderCalculator(iParameters const* parameters, iTracer* tracer)
    : _params(parameters), _tracer(tracer)
{
}

bool MeanderCalculator::turbidite() const
{
    return _params->usingTurbiOrLobes();
}

double MeanderCalculator::scour_factor() const
{
    const double a = _params->getScourFactor();
    return a > 0. ? a : DEFAULT_SCOUR;
}

void MeanderCalculator::error(const std::string& text) const
{
    if (_tracer)
        _tracer->error(text);
}

// ---- Defaults ----------------------------------------------------------

double MeanderCalculator::default_hmax() const
{
    return _params->getParamDefDouble("CHNL_MAX_DEPTH");
}
double MeanderCalculator::default_erod_coef() const
{
    return _params->getParamDefDouble("EROD_COEF");
}
double MeanderCalculator::max_erod_coef() const
{
    return _params->getParamMaxDouble("EROD_COEF");
}
double MeanderCalculator::global_concentration() const
{
    return _params->getParamDefDouble("SED_LOAD_MEAN");
}
double MeanderCalculator::default_wavelength() const
{
    return _params->getParamDefDouble("CHNL_WAVELENGTH");
}
double MeanderCalculator::default_levee_width() const
{
    return _params->getParamDefDouble("AG_LV_WIDTH");
}
double MeanderCalculator::default_slope() const
{
    return _params->getParamDefDouble("DOMAIN_SLOPE");
}

double MeanderCalculator::default_d2w_factor() const
{
    return turbidite() ? 30. : 15.;
}
double MeanderCalculator::default_w2wl_factor() const
{
    return turbidite() ? 5. : 12.5;
}
double MeanderCalculator::default_w2lob_factor() const
{
    return turbidite() ? 10. : 30.;
}
double MeanderCalculator::default_kob() const
{
    return turbidite() ? 1.25 : 0.6;
}

double MeanderCalculator::default_kmig() const
{
    if (turbidite())
        return _use_standard ? 0.95 : 0.4;
    return _use_standard ? 0.75 : 0.65;
}

double MeanderCalculator::default_kvp() const
{
    return turbidite() ? 0.75 : 0.87;
}
double MeanderCalculator::default_tau_cut() const
{
    return turbidite() ? 4.85e-09 : 2.53e-09;
}

double MeanderCalculator::default_sinuo(bool flag) const
{
    if (flag)
        return 1.5;
    return turbidite() ? 2.05 : 2.71;
}

// ---- Depth and width ---------------------------------------------------

double MeanderCalculator::hmax_from_hmean(double hmean)
{
    return 1.5 * hmean;
}
double MeanderCalculator::hmean_from_hmax(double hmax)
{
    return 2. / 3. * hmax;
}

// A turbidity current overflows its channel: the flow is three times deeper.
double MeanderCalculator::hflow_max_from_hmax(double hmax) const
{
    return turbidite() ? 3. * hmax : hmax;
}

double MeanderCalculator::hflow_eff_from_hflow_max(double hflow_max) const
{
    return turbidite() ? hflow_max / 3. : hflow_max / 1.5;
}

double MeanderCalculator::hflow_max_from_hflow_eff(double hflow_eff) const
{
    return turbidite() ? hflow_eff * 3. : hflow_eff * 1.5;
}

double MeanderCalculator::hfloweff_from_hmean(double hmean) const
{
    if (hmean < MP_EPSILON)
    {
        error("Mean depth cannot be negative or null: default mean depth is used");
        hmean = hmean_from_hmax(default_hmax());
    }
    return hflow_eff_from_hflow_max(hflow_max_from_hmax(hmax_from_hmean(hmean)));
}

double MeanderCalculator::width_from_hmean(double hmean) const
{
    return std::round(hmean * default_d2w_factor());
}

double MeanderCalculator::hmean_from_width(double width) const
{
    const double f = turbidite() ? 1. : 10.;
    return round_to(width / default_d2w_factor(), f);
}

double MeanderCalculator::hmax_from_width(double width) const
{
    const double f = turbidite() ? 1. : 10.;
    return round_to(1.5 * hmean_from_width(width), f);
}

double MeanderCalculator::mesh_from_width(double width) const
{
    return std::floor(width / (turbidite() ? 4. : 3.));
}

double MeanderCalculator::wavelength_from_width(double width) const
{
    return std::round(width * default_w2wl_factor());
}

double MeanderCalculator::lambda_from_width(double width) const
{
    return width * default_w2lob_factor();
}

double MeanderCalculator::iob_from_hmean(double hmean) const
{
    if (turbidite())
        return std::max(0.4, round_to(3. * hmean / 40., 100.));
    return std::max(0.04, round_to(hmean / 20., 1000.));
}

double MeanderCalculator::ios_from_iob(double iob)
{
    return round_to(0.3 * iob, 100.);
}

// At constant discharge and width, a longer channel flows slower and deeper.
double MeanderCalculator::hmean_from_hmean0_and_sinuosity(double hmean0, double sinuosity) const
{
    if (undefined(sinuosity))
        return hmean0;
    if (sinuosity <= 0.)
    {
        error("Sinuosity cannot be negative or null: reference mean depth is used");
        return hmean0;
    }
    return hmean0 * std::pow(sinuosity / 1.5, 1. / 3.);
}

double MeanderCalculator::velocity_from_velocity0_and_sinuosity(double velocity0, double sinuosity) const
{
    if (undefined(sinuosity))
        return velocity0;
    if (sinuosity <= 0.)
    {
        error("Sinuosity cannot be negative or null: reference velocity is used");
        return velocity0;
    }
    return velocity0 * std::pow(sinuosity / 1.5, -1. / 3.);
}

// ---- Directions, time, slope -------------------------------------------

// Flow directions are azimuths in degrees (clockwise from north); the
// relative direction is the trigonometric angle in the grid's frame.
double MeanderCalculator::relative_flow_direction(double grid_direction, double flow_direction)
{
    return (90. - flow_direction - grid_direction) * MP_PI / 180.;
}

double MeanderCalculator::absolute_flow_direction(double grid_direction, double relative_direction)
{
    return std::round(90. - grid_direction - relative_direction * 180. / MP_PI);
}

double MeanderCalculator::erod_year(double erod_coef)
{
    return erod_coef * MP_SECONDS_PER_YEAR;
}

// The channel runs along its own length: its slope is the valley slope over
// the sinuosity. A measured sinuosity below 1 counts as a straight channel.
double MeanderCalculator::channel_slope(double slope, double sinuosity)
{
    if (undefined(sinuosity))
        return slope / 1.5;
    return slope / std::max(1., sinuosity);
}

// ---- Flow --------------------------------------------------------------

// Wave number of the bend instability at resonance, a function of the scour.
double MeanderCalculator::beta_prime() const
{
    const double a = scour_factor();
    if (a == DEFAULT_SCOUR)
        return BETA_PRIME_DEFAULT;
    return std::sqrt(4. * std::sqrt(0.5 * a + 1.) - 4.);
}

// Meanders grow at the resonant wavelength, which fixes the friction.
double MeanderCalculator::cf_from_hmean_and_wavelength(double hmean, double wavelength) const
{
    if (wavelength <= 0.)
    {
        error("Wavelength cannot be negative or null");
        wavelength = default_wavelength();
    }
    const double e = hfloweff_from_hmean(hmean);
    double cf = MP_TWO_PI * e / (wavelength * beta_prime());
    const double forced = _params->getFrictionCoeff();
    if (forced > 0.)
        cf = forced;
    return round_to(cf, 10000.);
}

// Uniform flow (Chezy): gravity along the bed balances bed friction; a
// turbidity current is driven by its reduced gravity only.
double MeanderCalculator::velocity_from_hmean_and_cf(double hmean, double cf, double slope,
                                                     double sinuosity) const
{
    const double e = hfloweff_from_hmean(hmean);
    if (cf < MP_EPSILON)
    {
        error("Friction coefficient cannot be negative or null: default friction is used");
        cf = cf_from_hmean_and_wavelength(hmean, default_wavelength());
    }
    if (slope <= 0.)
    {
        error("Slope cannot be negative or null: default slope is used");
        slope = default_slope();
    }
    const double s = channel_slope(slope, sinuosity);
    double g = MP_GRAVITY;
    if (turbidite())
        g *= MP_SUBMERGED_DENSITY * global_concentration();
    return std::sqrt(g * e * s / cf);
}

double MeanderCalculator::froude_from_hmean_and_velocity(double hmean, double velocity,
                                                         double concentration) const
{
    const double e = hfloweff_from_hmean(hmean);
    double g = MP_GRAVITY;
    if (turbidite())
    {
        if (undefined(concentration))
            concentration = global_concentration();
        else if (concentration <= 0.)
        {
            error("Sediment concentration cannot be negative or null: default concentration is used");
            concentration = global_concentration();
        }
        g *= MP_SUBMERGED_DENSITY * concentration;
    }
    return velocity * velocity / (g * e);
}

double MeanderCalculator::flow_discharge_from_width_hmean_and_velocity(double width, double hmean,
                                                                       double velocity) const
{
    return width * hfloweff_from_hmean(hmean) * velocity;
}

double MeanderCalculator::flow_from_width_hmean_and_velocity(double width, double hmean,
                                                             double velocity) const
{
    return flow_discharge_from_width_hmean_and_velocity(width, hmean, velocity);
}

// Coefficients of the linear equation of the bank velocity perturbation:
// advection, friction damping, curvature forcing, and scour/inertia forcing.
void MeanderCalculator::compute_pde_parameters(double width, double hmean, double velocity, double cf,
                                               double concentration, double& a, double& b, double& d,
                                               double& e) const
{
    const double h = hfloweff_from_hmean(hmean);
    const double u2 = velocity * velocity;
    a = velocity;
    b = 2. * cf * velocity / h;
    d = -0.5 * width * u2;
    e = 0.5 * width * cf * u2 / h;
    const double scour = scour_factor();
    const double froude = froude_from_hmean_and_velocity(hmean, velocity, concentration);
    e *= froude * froude + scour - 1.;
}

// Bank erodibility grows with the square root of the meander size.
double MeanderCalculator::erod_from_wavelength(double wavelength) const
{
    if (wavelength <= 0.)
    {
        error("Wavelength cannot be negative or null");
        wavelength = default_wavelength();
    }
    const double unit = 1e-08;
    const double coef = default_erod_coef() * std::sqrt(wavelength / default_wavelength());
    return round_to(coef / unit, 100.) * unit;
}

double MeanderCalculator::parabolic_cross_section_depth(double n, double width, double hmean)
{
    const double half = width / 2.;
    if (half <= 0. || std::fabs(n) > half)
        return 0.;
    const double r = n / half;
    return 1.5 * hmean * (1. - r * r);
}

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
    const bool overbank = ag_type == 2;
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
    const bool aggrading = ag_type == 2 || ag_type == 4;
    const double ob_mean = p->getParamDouble("AG_OB_NORM_MEAN");
    const double ob_stdev = p->getParamDouble("AG_OB_NORM_STDEV");
    if (aggrading && p->getParamInt("AG_OB_DIST") == 2 && ob_stdev > ob_mean / 2.)
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
