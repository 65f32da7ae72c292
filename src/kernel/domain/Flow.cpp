#include "kernel/domain/Flow.h"

#include "kernel/domain/RouseSumTable.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace
{

// 2 g (s - 1): turns a width over a concentration into a superelevation scale.
constexpr double SUPERELEVATION_FACTOR = 32.373;
// sqrt of the bed drag coefficient 0.005.
constexpr double SQRT_BED_DRAG = 0.07071067811865475;
constexpr double VON_KARMAN = 0.4;
// Relative density of the transported grains.
constexpr double LOAD_DENSITY = 2.65;
// Reference height of the Rouse profile, as a fraction of the flow height.
constexpr double ROUSE_REFERENCE = 0.01;
// First sample height of the normalisation, in metres.
constexpr double C0_FIRST_HEIGHT = 0.01;
constexpr int C0_SAMPLES = 100;
// Coefficients of the fitted reference concentration.
constexpr double C0_QUICK_FACTOR = 0.00704;
constexpr double C0_QUICK_USTAR_EXP = 1.71;
constexpr double C0_QUICK_FROUDE_EXP = 1.81;
// Smallest vertical step of a discretized grain-size profile, in metres.
constexpr double PROFILE_MIN_STEP = 0.1;
constexpr int PROFILE_STEPS = 10;

// Appends a layer of grain g ending at height h.
void store(std::vector<double>& grains, std::vector<double>& heights, double g, double h)
{
    grains.push_back(g);
    heights.push_back(h);
}

void trace_null(iTracer* tracer, double grain, const char* text)
{
    if (tracer != nullptr && grain == 0. && tracer->traceLevel(TRACE_DEBUG))
        tracer->debug(text);
}

// Walks from a to b and cuts a layer wherever grain_at changes value; each
// layer ends at the height where the next one starts, the last one at b.
template <typename GrainAt>
void discretize_profile(double a, double b, std::vector<double>& grains, std::vector<double>& heights,
                        iTracer* tracer, GrainAt grain_at)
{
    if (a >= b)
        return;
    if (b - a < MP_EPSILON)
    {
        const double g = grain_at(b);
        trace_null(tracer, g, "d50 is null");
        store(grains, heights, g, b);
        return;
    }
    const double ga = grain_at(a);
    const double gb = grain_at(b);
    trace_null(tracer, ga, "d50_min is null");
    trace_null(tracer, gb, "d50_max is null");
    if (ga == gb)
    {
        store(grains, heights, ga, b);
        return;
    }
    const double step = std::max(PROFILE_MIN_STEP, (b - a) / PROFILE_STEPS);
    double current = ga;
    for (int k = 1; a + k * step < b - MP_EPSILON; k++)
    {
        const double z = a + k * step;
        const double g = grain_at(z);
        trace_null(tracer, g, "d50 is null");
        if (g != current)
        {
            store(grains, heights, current, z);
            current = g;
        }
    }
    store(grains, heights, current, b);
}

} // namespace

Flow::Flow(MeanderCalculator const* mc)
    : _width(0.), _hmean(0.), _hflow_max(0.), _se_gen(0.), _superelevation(0.), _u0(0.), _u1(0.), _cmean(0.),
      _cf(0.), _skin_friction(0.), _pde_a(0.), _pde_b(0.), _pde_c(0.), _pde_d(0.), _mc(mc)
{
}

Flow::Flow(MeanderCalculator const* mc, const Flow& other) : Flow(other)
{
    _mc = mc;
}

Flow& Flow::operator=(const Flow& flow)
{
    MP_ASSERT_TEXT(_mc == flow._mc, "_mc == flow._mc");
    if (this == &flow)
        return *this;
    _width = flow._width;
    _hmean = flow._hmean;
    _hflow_max = flow._hflow_max;
    _se_gen = flow._se_gen;
    _superelevation = flow._superelevation;
    _u0 = flow._u0;
    _u1 = flow._u1;
    _cmean = flow._cmean;
    _cf = flow._cf;
    _skin_friction = flow._skin_friction;
    _pde_a = flow._pde_a;
    _pde_b = flow._pde_b;
    _pde_c = flow._pde_c;
    _pde_d = flow._pde_d;
    _sed_load = flow._sed_load;
    _c0 = flow._c0;
    return *this;
}

Flow operator+(const Flow& a, const Flow& b)
{
    Flow r(a);
    r._hmean += b._hmean;
    r._hflow_max += b._hflow_max;
    r._superelevation += b._superelevation;
    r._u0 += b._u0;
    r._u1 += b._u1;
    r._cmean += b._cmean;
    return r;
}

Flow operator*(const Flow& f, double k)
{
    Flow r(f);
    r._hmean *= k;
    r._hflow_max *= k;
    r._superelevation *= k;
    r._u0 *= k;
    r._u1 *= k;
    r._cmean *= k;
    return r;
}

Flow Flow::weighted_sum(const Flow& a, double ka, const Flow& b, double kb)
{
    Flow r(a._mc);
    r.assign_weighted_sum(a, ka, b, kb);
    return r;
}

void Flow::assign_weighted_sum(const Flow& a, double ka, const Flow& b, double kb)
{
    // Computed before the copy, which may overwrite b.
    const double hmean = a._hmean * ka + b._hmean * kb;
    const double hflow_max = a._hflow_max * ka + b._hflow_max * kb;
    const double superelevation = a._superelevation * ka + b._superelevation * kb;
    const double u0 = a._u0 * ka + b._u0 * kb;
    const double u1 = a._u1 * ka + b._u1 * kb;
    const double cmean = a._cmean * ka + b._cmean * kb;
    *this = a;
    _hmean = hmean;
    _hflow_max = hflow_max;
    _superelevation = superelevation;
    _u0 = u0;
    _u1 = u1;
    _cmean = cmean;
}

Flow operator/(const Flow& f, double k)
{
    if (k == 0.)
        return f;
    Flow r(f);
    r._hmean /= k;
    r._hflow_max /= k;
    r._superelevation /= k;
    r._u0 /= k;
    r._u1 /= k;
    r._cmean /= k;
    return r;
}

bool Flow::turbidite() const
{
    return _mc->parameters()->usingTurbiOrLobes();
}

void Flow::init_flow(double width, double hmean, double u0, double u1, double cf,
                     const std::vector<double>& proportions)
{
    _cf = cf;
    _cmean = _mc->global_concentration();
    // The generator is taken before the new width is stored, from the width
    // the point had so far.
    cmp_superelevation_generator();
    _width = width;
    _hmean = hmean;
    _hflow_max = _mc->hflow_max_from_hmax(MeanderCalculator::hmax_from_hmean(_hmean));
    _u0 = u0;
    _superelevation = 0.;
    cmp_pde_parameters();
    _skin_friction = _cf;
    _u1 = u1;
    init_sed_load(proportions);
}

void Flow::update_flow(double width, double hmean, double u0, double curvature)
{
    _width = width;
    _hmean = hmean;
    _hflow_max = _mc->hflow_max_from_hmax(MeanderCalculator::hmax_from_hmean(_hmean));
    _u0 = u0;
    superelevation(curvature);
    cmp_pde_parameters();
    _skin_friction = _cf;
}

// A dense turbidity current banks up on the outer side of a bend in
// proportion to its centrifugal acceleration.
void Flow::superelevation(double curvature)
{
    _superelevation = turbidite() ? _se_gen * _u0 * _u0 * std::fabs(curvature) : 0.;
}

void Flow::cmp_pde_parameters()
{
    _mc->compute_pde_parameters(_width, _hmean, _u0, _cf, _cmean, _pde_a, _pde_b, _pde_c, _pde_d);
}

void Flow::cmp_superelevation_generator()
{
    MP_ASSERT(_cmean > 0);
    _se_gen = _width / (SUPERELEVATION_FACTOR * _cmean);
}

// Part of the flow above the bank that spills over it, the current thinning
// geometrically with its concentration over n lengths.
double Flow::overspill_thickness(double top, double base, int side, double n) const
{
    if (side != 1)
        return 0.;
    const double surface = _superelevation + base;
    const double t = std::pow(1. - _cmean, n) * (top - surface) + surface - top;
    return t < MP_EPSILON ? 0. : t;
}

double Flow::cmp_bed_shear_velocity(int side) const
{
    double u = _u0;
    if (side == 1)
        u = _u0 + std::fabs(_u1);
    else if (side == -1)
        u = _u0 - std::fabs(_u1);
    return SQRT_BED_DRAG * std::fabs(u);
}

void Flow::cmp_skin_friction()
{
    _skin_friction = _cf;
}

double Flow::get_effective_height() const
{
    return _mc->hfloweff_from_hmean(_hmean);
}

void Flow::init_sed_load(const std::vector<double>& proportions)
{
    auto load = std::make_shared<std::vector<Grainsize>>();
    load->reserve(MD_NB_CLASS_GR);
    for (int i = 0; i < MD_NB_CLASS_GR; i++)
        load->emplace_back(i, proportions.at(i), LOAD_DENSITY);
    _sed_load = std::move(load);
}

const std::vector<Grainsize>& Flow::no_load()
{
    static const std::vector<Grainsize> none;
    return none;
}

// Rouse's suspension profile: turbulence holds a grain up against its fall,
// so the concentration decays from the reference height with a power set by
// the ratio of fall velocity to shear velocity.
double Flow::rouse_profile_at(const Grainsize& grainsize, double z, double c0, double ustar) const
{
    const double h = _hflow_max;
    const double a = ROUSE_REFERENCE * h;
    if (ustar <= 0. || h - a <= MP_EPSILON)
        return 0.;
    z = std::max(z, a);
    if (h - z < MP_EPSILON)
        z = 0.99 * h;
    const double rouse = grainsize.settling_velocity() / (VON_KARMAN * ustar);
    return c0 * std::pow((a / (h - a)) * ((h - z) / z), rouse);
}

// The logarithm of the height factor (a / (H - a)) * ((H - z) / z) of the
// Rouse profile at each sample height of the normalisation, for a depth H of
// at least C0_FIRST_HEIGHT. It does not depend on the class, so the classes
// of one flow share it.
std::vector<double> Flow::c0_log_factors(double h)
{
    MP_ASSERT(h >= C0_FIRST_HEIGHT);
    std::vector<double> factors;
    const double a = ROUSE_REFERENCE * h;
    const double step = h / C0_SAMPLES;
    factors.reserve(C0_SAMPLES + 2);
    for (double z = C0_FIRST_HEIGHT; z <= h; z += step)
    {
        double zc = std::max(z, a);
        if (h - zc < MP_EPSILON)
            zc = 0.99 * h;
        factors.push_back(std::log((a / (h - a)) * ((h - zc) / zc)));
    }
    return factors;
}

// The reference concentration that makes the depth-averaged profile carry
// the class's share of the mean load. The sum of the Rouse factors over the
// sample heights comes from the depth's table (null when too shallow).
double Flow::cmp_c0(const Grainsize& grainsize, double ustar, RouseSumTable* table,
                    double concentration) const
{
    const double base = concentration * grainsize.proportion();
    if (table == nullptr || ustar <= 0.)
        return std::max(0., base);
    const double rouse = grainsize.settling_velocity() / (VON_KARMAN * ustar);
    const double sum = std::exp(table->log_sum(rouse));
    if (!(sum > 0.))
        return std::max(0., base);
    return std::max(0., base / (sum / static_cast<double>(table->log_factors().size())));
}

RouseSumTable* Flow::rouse_sum_table() const
{
    if (_hflow_max < C0_FIRST_HEIGHT)
        return nullptr;
    return &RouseSumTable::for_depth(_hflow_max, &Flow::c0_log_factors);
}

double Flow::cmp_c0(const Grainsize& grainsize, int side) const
{
    return cmp_c0(grainsize, cmp_bed_shear_velocity(side), rouse_sum_table(), _mc->global_concentration());
}

// Fitted reference concentration: grows with the excess of shear velocity
// over the grain's fall scale and with the Froude number.
double Flow::cmp_c0_quick(const Grainsize& grainsize, int side) const
{
    const double froude = _mc->froude_from_hmean_and_velocity(_hmean, _u0, MP_UNDEF_REAL);
    const double ustar = cmp_bed_shear_velocity(side);
    return _mc->global_concentration() * grainsize.proportion() * C0_QUICK_FACTOR *
           std::pow(ustar / grainsize.settling_velocity_max(), C0_QUICK_USTAR_EXP) *
           std::pow(froude, C0_QUICK_FROUDE_EXP);
}

void Flow::cmp_c0(int side, bool quick)
{
    _c0.clear();
    const double ustar = cmp_bed_shear_velocity(side);
    RouseSumTable* table = quick ? nullptr : rouse_sum_table();
    // Read once for all the classes: a registry look-up costs more than a class.
    const double concentration = _mc->global_concentration();
    for (const Grainsize& g : sed_load())
    {
        if (g.proportion() == 0.)
            _c0.push_back(0.);
        else
            _c0.push_back(quick ? cmp_c0_quick(g, side) : cmp_c0(g, ustar, table, concentration));
    }
}

// The grain below which `percent` of the suspended load at height z lies,
// accumulating the classes in their order.
double Flow::flow_percent_grainsize_at(double z, double percent, int side) const
{
    MP_ASSERT(_c0.size() == sed_load().size());
    const double ustar = cmp_bed_shear_velocity(side);
    std::array<double, MD_NB_CLASS_GR> conc{};
    MP_ASSERT(sed_load().size() <= conc.size());
    // The Rouse rule with its height factor x taken once for all the classes,
    // x^r as exp(r ln x).
    const double h = _hflow_max;
    const double a = ROUSE_REFERENCE * h;
    const bool carried = ustar > 0. && h - a > MP_EPSILON;
    double log_x = 0.;
    if (carried)
    {
        double zc = std::max(z, a);
        if (h - zc < MP_EPSILON)
            zc = 0.99 * h;
        log_x = std::log((a / (h - a)) * ((h - zc) / zc));
    }
    int first = -1;
    double sum = 0.;
    for (std::size_t i = 0; i < sed_load().size(); i++)
    {
        if (sed_load()[i].proportion() == 0.)
            continue;
        if (first < 0)
            first = static_cast<int>(i);
        if (carried)
            conc[i] = _c0[i] * std::exp(sed_load()[i].settling_velocity() / (VON_KARMAN * ustar) * log_x);
        sum += conc[i];
    }
    if (first < 0)
        return 0.;
    if (sum == 0.)
        return Facies::class_to_granulo(first + 1);
    double share = 0.;
    int reached = first;
    for (std::size_t i = 0; i < sed_load().size(); i++)
    {
        if (conc[i] == 0.)
            continue;
        reached = static_cast<int>(i);
        share += conc[i] / sum;
        if (share >= percent)
            break;
    }
    return Facies::class_to_granulo(reached + 1);
}

void Flow::discretized_grainsize_profile(double a, double b, std::vector<double>& grains,
                                         std::vector<double>& heights, double percent, int side,
                                         iTracer* tracer) const
{
    discretize_profile(a, b, grains, heights, tracer,
                       [&](double z) { return flow_percent_grainsize_at(z, percent, side); });
}

// A point bar fines upward: the class falls from GR_PB_OPTIM_MAX on the bed
// to GR_PB_OPTIM_MIN at the top of the flow, following
//   class(z) = round(max - (max - min) * (z / H)^alpha),
// z / H clamped to [0, 1], H the maximum flow height and alpha
// GR_PB_OPTIM_ALPHA: the smaller alpha, the faster the grain fines above the
// bed. The grain is Facies::class_to_granulo(class). The profile does not
// depend on the curvature, which no rule ties to the vertical sorting.
void Flow::discretized_grainsize_profile_optim(double a, double b, std::vector<double>& grains,
                                               std::vector<double>& heights, double /*curvature*/,
                                               iTracer* tracer) const
{
    iParameters const* params = _mc->parameters();
    const int c1 = params->getParamInt("GR_PB_OPTIM_MIN");
    const int c2 = params->getParamInt("GR_PB_OPTIM_MAX");
    const double alpha = params->getParamDouble("GR_PB_OPTIM_ALPHA");
    const int coarse = std::max(c1, c2);
    const int fine = std::min(c1, c2);
    const double h = _hflow_max > MP_EPSILON ? _hflow_max : b;
    auto grain_at = [&](double z)
    {
        const double r = std::clamp(z / h, 0., 1.);
        const double k = coarse - (coarse - fine) * std::pow(r, alpha);
        const int gr = std::clamp(static_cast<int>(std::lround(k)), fine, coarse);
        return Facies::class_to_granulo(gr);
    };
    discretize_profile(a, b, grains, heights, tracer, grain_at);
}

std::string Flow::get_string_descr() const
{
    std::ostringstream s;
    s << "u0= " << _u0 << " hmean= " << _hmean << " u1= " << _u1;
    return s.str();
}
