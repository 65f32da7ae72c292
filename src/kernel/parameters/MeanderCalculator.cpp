#include "kernel/parameters/MeanderCalculator.h"

#include "MeanderCalculatorSupport.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/parameters/ParameterCodes.h"

#include <algorithm>
#include <cmath>
#include <vector>

std::string MeanderCalculator::_msg;
bool MeanderCalculator::_use_standard = true;

namespace
{
using meander_support::Domain2D;
using meander_support::domain_of;
using meander_support::event_interval;
using meander_support::mean_overbank_intensity;
using meander_support::text;

// Coefficients of the forecasts and the tables of typical values by grain
// size class, fitted on short runs of the simulator itself by
// bench/calibration/calibrate.py, which rewrites this block.
// clang-format off
// -- calibrated constants --
constexpr double CAL_KVP = 0.53493;
constexpr double CAL_KMIG = 0.986559;
constexpr double CAL_KMIG_EXP = -0.470009;
constexpr double CAL_KOB = 0.127146;
constexpr double CAL_KSAND = 0.563489;
constexpr double CAL_KPB = 0.905068;
constexpr double CAL_ISBX_0 = 20.2637;
constexpr double CAL_ISBX_A = 14.7411;
constexpr double CAL_ISBX_B = 0.753642;
constexpr double CAL_SAND_EXP = 0.132054;
constexpr double CAL_KPLUG = 0.343027;
constexpr double CAL_PLUG_EXP = -0.417946;
constexpr double CAL_OB_EXP = 0.132054;
constexpr double CAL_FINES_DEPTH_EXP = 0.2;
constexpr double CAL_DEFAULT_ISBX[15] = {70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42, 70.42};
constexpr double CAL_DEFAULT_SAND[15] = {0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117, 0.5117};
// -- end calibrated constants --
// clang-format on

// Resonant wave number for the default scour factor of 7.
constexpr double BETA_PRIME_DEFAULT = 2.1178482887682417;
constexpr double DEFAULT_SCOUR = 7.0;

bool undefined(double value)
{
    return value >= MP_UNDEF_REAL;
}

double round_to(double value, double factor)
{
    return std::round(value * factor) / factor;
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

// ---- Forecasts ---------------------------------------------------------

namespace
{
constexpr double PER_10000 = 10000.;
// Spread of the overbank intensity relative to its mean, as in the defaults.
constexpr double OB_RELATIVE_STDEV = 0.3;
// Bounds of the periods the inference sets, in iterations.
constexpr double MIN_PERIOD = 10.;
constexpr double MAX_PERIOD = 1000000.;
// Gap between the net to gross asked and its forecast worth a warning.
constexpr double SAND_TOLERANCE = 0.01;
// Precision of the search of the smallest index that delivers a net to gross.
constexpr double ISBX_SEARCH_STEP = 0.1;

double clamp_to(double value, double lo, double hi)
{
    return std::max(lo, std::min(hi, value));
}

// Mean interval of the regional avulsions, 0 when they never happen.
int regional_interval(iParameters const* p)
{
    return event_interval(p, "AV_REG_FREQ", "AV_REG_PERIOD", "AV_REG_POISSON");
}
} // namespace

double MeanderCalculator::kvp_fitted()
{
    return CAL_KVP;
}
double MeanderCalculator::kmig_fitted()
{
    return CAL_KMIG;
}
double MeanderCalculator::kpb_fitted()
{
    return CAL_KPB;
}

double MeanderCalculator::default_isbx(int gr)
{
    return CAL_DEFAULT_ISBX[std::max(0, std::min(MD_NB_CLASS_GR - 1, gr))];
}

double MeanderCalculator::default_sand(int gr)
{
    return CAL_DEFAULT_SAND[std::max(0, std::min(MD_NB_CLASS_GR - 1, gr))];
}

// Uniform flow in the channel of the registry, its sinuosity not known yet.
double MeanderCalculator::forecast_velocity() const
{
    const double hmean = hmean_from_hmax(_params->getParamDouble("CHNL_MAX_DEPTH"));
    const double cf = cf_from_hmean_and_wavelength(hmean, _params->getParamDouble("CHNL_WAVELENGTH"));
    return velocity_from_hmean_and_cf(hmean, cf, _params->getParamDouble("DOMAIN_SLOPE"), MP_UNDEF_REAL);
}

// The bank velocity perturbation scales with the velocity times the width
// over the bend radius, the radius scaling with the wavelength.
double MeanderCalculator::velocity_perturbation_base() const
{
    const double wavelength = _params->getParamDouble("CHNL_WAVELENGTH");
    if (wavelength <= 0.)
        return 0.;
    return forecast_velocity() * _params->getParamDouble("CHNL_WIDTH") * MP_TWO_PI / wavelength;
}

double MeanderCalculator::forecast_mean_velocity_perturbation() const
{
    return CAL_KVP * velocity_perturbation_base();
}

// Banks retreat by erodibility times velocity perturbation over one year per iteration.
double MeanderCalculator::migration_base(double mean_velocity_perturbation) const
{
    return _params->getParamDouble("EROD_COEF") * mean_velocity_perturbation * MP_SECONDS_PER_YEAR *
           PER_10000;
}

// Banks of deeper channels retreat less for the same base (fitted power of
// the depth relative to the default one).
double MeanderCalculator::forecast_migration_rate() const
{
    const double depth = _params->getParamDouble("CHNL_MAX_DEPTH") / default_hmax();
    return CAL_KMIG * std::pow(std::max(depth, MP_EPSILON), CAL_KMIG_EXP) *
           migration_base(forecast_mean_velocity_perturbation());
}

// Thickness the floods bring at the channel per 10000 iterations.
double MeanderCalculator::overbank_base() const
{
    const int ag_type = _params->getParamInt("AG_TYPE");
    if (ag_type != AG_OVERBANK && ag_type != AG_DRAPING)
        return 0.;
    const int interval = event_interval(_params, "AG_OB_FREQ", "AG_OB_PERIOD", "AG_OB_POISSON");
    if (interval <= 0)
        return 0.;
    return std::max(0., mean_overbank_intensity(_params)) * PER_10000 / interval;
}

double MeanderCalculator::transverse_extent() const
{
    const Domain2D dom = domain_of(_params);
    const double angle = relative_flow_direction(_params->getParamDouble("DOMAIN_GRID_DIR"),
                                                 _params->getParamDouble("CHNL_FLW_DIR"));
    return std::fabs(dom.length * std::sin(angle)) + std::fabs(dom.width * std::cos(angle));
}

double MeanderCalculator::widths_between_avulsions() const
{
    const int interval = regional_interval(_params);
    const double width = _params->getParamDouble("CHNL_WIDTH");
    if (interval <= 0 || width <= 0.)
        return MAX_WIDTHS;
    return clamp_to(interval * forecast_migration_rate() / (PER_10000 * width), MIN_WIDTHS, MAX_WIDTHS);
}

double MeanderCalculator::sweep_base() const
{
    const double extent = transverse_extent();
    if (extent <= 0. || _params->getParamDouble("CHNL_WIDTH") <= 0.)
        return 0.;
    return _params->getParamDouble("CHNL_MAX_DEPTH") * forecast_migration_rate() / extent;
}

double MeanderCalculator::overbank_factor() const
{
    return CAL_KOB * std::pow(widths_between_avulsions(), CAL_OB_EXP) * fines_depth_factor();
}

// Deeper channels keep more fines for the sand they lay (fitted power of the
// depth relative to the default one).
double MeanderCalculator::fines_depth_factor() const
{
    const double depth = _params->getParamDouble("CHNL_MAX_DEPTH") / default_hmax();
    return std::pow(std::max(depth, MP_EPSILON), CAL_FINES_DEPTH_EXP);
}

// Point bars sweep a channel depth of sand over the area the channel migrates
// across; a channel that avulses before it has swept a few widths keeps less
// of it.
double MeanderCalculator::forecast_sand_rate() const
{
    return CAL_KSAND * sweep_base() * std::pow(widths_between_avulsions(), CAL_SAND_EXP);
}

// Each avulsion leaves a channel section across the domain, which the floods
// fill with mud: the more often the channel avulses for the distance it
// migrates, the more mud.
double MeanderCalculator::forecast_plug_rate() const
{
    if (regional_interval(_params) <= 0)
        return 0.;
    return CAL_KPLUG * sweep_base() * std::pow(widths_between_avulsions(), CAL_PLUG_EXP) *
           fines_depth_factor();
}

// Fines of the floods (the more often the channel avulses, the more of the
// floodplain it recuts), of the abandoned channels they fill and of the
// background rain, plus the channel sands.
double MeanderCalculator::forecast_aggradation_rate() const
{
    const int ag_type = _params->getParamInt("AG_TYPE");
    double floods = overbank_base();
    if (ag_type == AG_OVERBANK)
        floods = overbank_factor() * floods + forecast_plug_rate();
    return floods + _params->getParamDouble("AG_OB_PEL_DRAP_INT") + forecast_sand_rate();
}

double MeanderCalculator::forecast_sand_proportion() const
{
    const double total = forecast_aggradation_rate();
    if (total <= 0.)
        return 0.;
    return forecast_sand_rate() / total;
}

// A channel is born with a belt (the spread of its first course); its sand
// body widens with the distance it migrates between two avulsions, counted
// in channel widths.
double MeanderCalculator::forecast_isbx() const
{
    if (regional_interval(_params) <= 0 || _params->getParamDouble("CHNL_WIDTH") <= 0.)
        return MAX_ISBX;
    return std::min(MAX_ISBX, CAL_ISBX_0 + CAL_ISBX_A * std::pow(widths_between_avulsions(), CAL_ISBX_B));
}

// ---- Non-expert inference ----------------------------------------------

namespace
{
struct NexusInput
{
    double hmax;
    double isbx;
    double sand;
};

bool is_given(const std::vector<double>& values, size_t k)
{
    return k < values.size() && values[k] < MP_UNDEF_REAL;
}

// Values not given take the registry's depth and the typical values of the
// sediment's median class; values out of range are listed.
bool read_nexus(iParameters const* p, const std::vector<double>& nexus, NexusInput& in, std::string& message)
{
    const int gr = p->getSedMedianClass();
    in.hmax = is_given(nexus, 0) ? nexus[0] : p->getParamDouble("CHNL_MAX_DEPTH");
    in.isbx = is_given(nexus, 1) ? nexus[1] : MeanderCalculator::default_isbx(gr);
    in.sand = is_given(nexus, 2) ? nexus[2] : MeanderCalculator::default_sand(gr);
    const double hmin = p->getParamMinDouble("CHNL_MAX_DEPTH");
    const double hmax = p->getParamMaxDouble("CHNL_MAX_DEPTH");
    std::string items;
    auto refuse = [&items](const std::string& name, double value, double lo, double hi)
    {
        if (value >= lo && value <= hi)
            return;
        items += "\n- " + name + " (" + text(value) + ") must be within [" + text(lo) + ", " + text(hi) + "]";
    };
    refuse("Channel maximum depth", in.hmax, hmin, hmax);
    refuse("Sand bodies extension index", in.isbx, MeanderCalculator::MIN_ISBX, MeanderCalculator::MAX_ISBX);
    refuse("Net to gross", in.sand, MeanderCalculator::MIN_SAND, MeanderCalculator::MAX_SAND);
    if (items.empty())
        return true;
    message = "Following parameters are out of range:" + items;
    return false;
}

// The channel natural to the depth: width, wavelength, erodibility, and a
// valley slope that gets gentler as rivers get deeper.
void set_geometry(iParameters* p, const MeanderCalculator& mc, double hmax)
{
    const double width = mc.width_from_hmean(MeanderCalculator::hmean_from_hmax(hmax));
    const double wavelength = mc.wavelength_from_width(width);
    p->setParamDouble("CHNL_MAX_DEPTH", hmax);
    p->setParamDouble("CHNL_WIDTH", width);
    p->setParamDouble("CHNL_WAVELENGTH", wavelength);
    p->setParamDouble("EROD_COEF", mc.erod_from_wavelength(wavelength));
    const double slope = mc.default_slope() * mc.default_hmax() / hmax;
    p->setParamDouble("DOMAIN_SLOPE", clamp_to(slope, p->getParamMinDouble("DOMAIN_SLOPE"),
                                               p->getParamMaxDouble("DOMAIN_SLOPE")));
}

// The default grid keeps its node counts; its lags follow the channel width.
void set_grid(iParameters* p, const MeanderCalculator& mc)
{
    const double mesh = std::max(1., mc.mesh_from_width(p->getParamDouble("CHNL_WIDTH")));
    p->setParamDouble("DOMAIN_DX", mesh);
    p->setParamDouble("DOMAIN_DY", mesh);
    p->setParamInt("DOMAIN_NX", p->getParamDefInt("DOMAIN_NX"));
    p->setParamInt("DOMAIN_NY", p->getParamDefInt("DOMAIN_NY"));
}

// Events the inference does not steer go back to their defaults, so that the
// same request always gives the same configuration.
void set_event_defaults(iParameters* p)
{
    for (const char* name : {"CHNL_SCALE_DIST", "AG_EP_FREQ"})
        p->setParamInt(name, p->getParamDefInt(name));
    for (const char* name :
         {"CHNL_SCALE_CONST", "CHNL_SCALE_MIN", "CHNL_SCALE_MAX", "CHNL_SCALE_NORM_MEAN",
          "CHNL_SCALE_NORM_STDEV", "CHNL_SCALE_LOGNORM_MEAN", "CHNL_SCALE_LOGNORM_STDEV", "AV_LOC_PROB1",
          "AV_LOC_PROB2", "AG_LV_WIDTH", "AG_EP_INIT_ELEV", "AG_OB_PEAT", "AG_OB_PEL_DRAP_INT"})
        p->setParamDouble(name, p->getParamDefDouble(name));
    for (const char* name : {"AV_LV_OB", "AV_NO_SPLAY", "AG_RAND_LAMBDA"})
        p->setParamBool(name, p->getParamDefBool(name));
    p->setParamInt("AG_TYPE", AG_OVERBANK);
    // The flood deposit reaches as far, in channel widths, as in the default system.
    const double default_width = p->getParamDefDouble("CHNL_WIDTH");
    if (default_width > 0.)
        p->setParamDouble("AG_EXP_DEC_THICK", p->getParamDefDouble("AG_EXP_DEC_THICK") *
                                                  p->getParamDouble("CHNL_WIDTH") / default_width);
}

void set_period(iParameters* p, const std::string& prefix, double period)
{
    const int value = static_cast<int>(std::lround(clamp_to(period, MIN_PERIOD, MAX_PERIOD)));
    if (p->getParamInt(prefix + "_FREQ") != MP_PROCESS_PERIODIC)
        p->setParamInt(prefix + "_FREQ", MP_PROCESS_POISSON);
    p->setParamInt(prefix + "_PERIOD", value);
    p->setParamInt(prefix + "_POISSON", value);
}

// Regional avulsions every period that lets the channel widen its sand body
// to the index asked; local ones keep their default ratio to them.
void set_avulsion_periods(iParameters* p, const MeanderCalculator& mc, double isbx)
{
    const double width = p->getParamDouble("CHNL_WIDTH");
    const double rate = std::max(MP_EPSILON, mc.forecast_migration_rate());
    // A channel is born with a belt of CAL_ISBX_0: a smaller index needs the
    // shortest interval.
    const double x = isbx > CAL_ISBX_0 ? std::pow((isbx - CAL_ISBX_0) / CAL_ISBX_A, 1. / CAL_ISBX_B)
                                       : MeanderCalculator::MIN_WIDTHS;
    const double regional = x * PER_10000 * width / rate;
    const double ratio = static_cast<double>(p->getParamDefInt("AV_LOC_PERIOD")) /
                         std::max(1, p->getParamDefInt("AV_REG_PERIOD"));
    set_period(p, "AV_REG", regional);
    set_period(p, "AV_LOC", regional * ratio);
}

// Fines the floods must lay on the floodplain, beside the forecast channel
// sands and the mud of the abandoned channels, for the net to gross asked.
double fines_needed(const MeanderCalculator& mc, iParameters const* p, double sand)
{
    return mc.forecast_sand_rate() * (1. - sand) / sand - mc.forecast_plug_rate() -
           p->getParamDouble("AG_OB_PEL_DRAP_INT");
}

int shortest_avulsion_interval(iParameters const* p)
{
    int shortest = static_cast<int>(MAX_PERIOD);
    for (const char* prefix : {"AV_REG", "AV_LOC"})
    {
        const std::string base(prefix);
        const int interval = event_interval(p, base + "_FREQ", base + "_PERIOD", base + "_POISSON");
        if (interval > 0)
            shortest = std::min(shortest, interval);
    }
    return shortest;
}

// Floods at their default period (levees are built before they are
// breached), of the intensity that brings the fines needed.
void set_overbank_intensity(iParameters* p, const MeanderCalculator& mc, double sand)
{
    const int period =
        std::max(1, std::min(p->getParamDefInt("AG_OB_PERIOD"), shortest_avulsion_interval(p)));
    // When the abandoned channels alone bring more mud than asked, the floods
    // lay none: this is the closest the inference gets.
    const double intensity =
        std::max(0., fines_needed(mc, p, sand)) * period / (PER_10000 * mc.overbank_factor());
    p->setParamInt("AG_OB_FREQ", MP_PROCESS_POISSON);
    p->setParamInt("AG_OB_PERIOD", period);
    p->setParamInt("AG_OB_POISSON", period);
    p->setParamInt("AG_OB_DIST", MP_DIST_GAUSSIAN);
    p->setParamDouble("AG_OB_CONST", intensity);
    p->setParamDouble("AG_OB_NORM_MEAN", intensity);
    p->setParamDouble("AG_OB_NORM_STDEV", intensity * OB_RELATIVE_STDEV);
    p->setParamDouble("AG_OB_LOGNORM_MEAN", intensity);
    p->setParamDouble("AG_OB_LOGNORM_STDEV", intensity * OB_RELATIVE_STDEV);
}

// The flood period that brings the fines needed with the intensity in force.
void set_overbank_period(iParameters* p, const MeanderCalculator& mc, double sand)
{
    const double fines = fines_needed(mc, p, sand);
    const double intensity = mean_overbank_intensity(p);
    const double period = fines > 0. ? mc.overbank_factor() * intensity * PER_10000 / fines : MAX_PERIOD;
    set_period(p, "AG_OB", period);
}

// A channel that avulses before it has swept a width leaves mostly mud-filled
// channels behind: a high net to gross cannot go with a low index.
void warn_if_out_of_reach(iTracer* tracer, const MeanderCalculator& mc, double sand)
{
    const double forecast = mc.forecast_sand_proportion();
    if (tracer == nullptr || std::fabs(forecast - sand) < SAND_TOLERANCE ||
        !tracer->traceLevel(TRACE_WARNING))
        return;
    tracer->warning("Net to gross of " + text(100. * sand) +
                    " % out of reach with this sand bodies extension index: forecast " +
                    text(std::round(1000. * forecast) / 10.) + " %");
}

// The smallest index from `lo` up whose abandoned channels leave room for a
// net to gross of `sand` (MAX_ISBX when none does); fines_needed falls as the
// avulsions are spaced out, so a bisection finds it.
double smallest_isbx_for(iParameters* p, const MeanderCalculator& mc, double lo, double sand)
{
    set_avulsion_periods(p, mc, lo);
    if (sand <= 0. || fines_needed(mc, p, sand) >= 0.)
        return lo;
    double hi = MeanderCalculator::MAX_ISBX;
    set_avulsion_periods(p, mc, hi);
    if (fines_needed(mc, p, sand) < 0.)
        return hi;
    while (hi - lo > ISBX_SEARCH_STEP)
    {
        const double mid = 0.5 * (lo + hi);
        set_avulsion_periods(p, mc, mid);
        (fines_needed(mc, p, sand) >= 0. ? hi : lo) = mid;
    }
    return hi;
}

// The net to gross is what a reservoir is judged by, the index only a shape:
// when the abandoned channels of the index asked bring more mud than the net
// to gross allows, the avulsions are spaced out. Raising every such request
// to that floor would give them all one index, so the requests below it are
// spread over the indices from the floor of the net to gross less
// SAND_GIVEN_FOR_ISBX up to the floor: a lower index asked still gives closer
// avulsions, and costs at most that much net to gross. Returns the index in
// force, its avulsion periods set.
double isbx_for_sand(iParameters* p, iTracer* tracer, const MeanderCalculator& mc, double isbx, double sand)
{
    const double floor = smallest_isbx_for(p, mc, isbx, sand);
    if (floor <= isbx)
        return isbx;
    const double lowest =
        smallest_isbx_for(p, mc, MeanderCalculator::MIN_ISBX, sand - MeanderCalculator::SAND_GIVEN_FOR_ISBX);
    const double share = (isbx - MeanderCalculator::MIN_ISBX) / (floor - MeanderCalculator::MIN_ISBX);
    const double chosen = lowest + (floor - lowest) * share;
    set_avulsion_periods(p, mc, chosen);
    if (tracer != nullptr && tracer->traceLevel(TRACE_WARNING))
        tracer->warning("Sand bodies extension index raised from " + text(isbx) + " to " +
                        text(round_to(chosen, 10.)) + ": below " + text(round_to(floor, 10.)) +
                        " the abandoned channels bring more mud than a net to gross of " + text(100. * sand) +
                        " % allows");
    return chosen;
}
} // namespace

bool MeanderCalculator::apply_nexus(iParameters* parameters, iTracer* tracer,
                                    const std::vector<double>& nexus, bool adaptGrid, std::string& message)
{
    NexusInput in{};
    if (!read_nexus(parameters, nexus, in, message))
        return false;
    const MeanderCalculator mc(parameters, tracer);
    set_geometry(parameters, mc, in.hmax);
    if (adaptGrid)
        set_grid(parameters, mc);
    set_event_defaults(parameters);
    isbx_for_sand(parameters, tracer, mc, in.isbx, in.sand);
    set_overbank_intensity(parameters, mc, in.sand);
    warn_if_out_of_reach(tracer, mc, in.sand);
    message.clear();
    return true;
}

bool MeanderCalculator::apply_neqsus(iParameters* parameters, iTracer* tracer,
                                     const std::vector<double>& nexus, bool adaptGrid, std::string& message)
{
    NexusInput in{};
    if (!read_nexus(parameters, nexus, in, message))
        return false;
    const MeanderCalculator mc(parameters, tracer);
    if (adaptGrid)
        set_grid(parameters, mc);
    isbx_for_sand(parameters, tracer, mc, in.isbx, in.sand);
    set_overbank_period(parameters, mc, in.sand);
    warn_if_out_of_reach(tracer, mc, in.sand);
    message.clear();
    return true;
}

// A channel fill is at most one channel deep: the median channel sand body
// tells the depth, the thicknesses the net to gross, and the grain size of
// the sands the typical extension.
bool MeanderCalculator::nexus_from_wells(iParameters const* parameters, const CoreList& cores,
                                         std::vector<double>& nexus, std::string& message)
{
    double sand = 0.;
    double total = 0.;
    std::vector<double> bodies;
    std::vector<int> classes;
    for (const Core& core : cores)
    {
        double body = 0.;
        for (const CoreSample& sample : core.getSamples())
        {
            const unsigned char family = sample.getFacies();
            if (family == 0 || sample.getHeight() >= MP_UNDEF_REAL)
            {
                body = 0.;
                continue;
            }
            total += sample.getHeight();
            if (sample.isSand())
            {
                sand += sample.getHeight();
                classes.push_back(sample.getGrainClass());
            }
            if (Facies::is_channel_sand(family))
                body += sample.getHeight();
            else if (body > 0.)
            {
                bodies.push_back(body);
                body = 0.;
            }
        }
        if (body > 0.)
            bodies.push_back(body);
    }
    if (total <= 0.)
    {
        message = "no deposit in wells";
        return false;
    }
    if (bodies.empty())
    {
        message = "no channel sand in wells";
        return false;
    }
    std::sort(bodies.begin(), bodies.end());
    std::sort(classes.begin(), classes.end());
    const double depth = bodies[bodies.size() / 2];
    const int gr = classes.empty() ? parameters->getSedMedianClass() : classes[classes.size() / 2];
    nexus = {clamp_to(depth, parameters->getParamMinDouble("CHNL_MAX_DEPTH"),
                      parameters->getParamMaxDouble("CHNL_MAX_DEPTH")),
             default_isbx(gr), clamp_to(sand / total, MIN_SAND, MAX_SAND)};
    message.clear();
    return true;
}
