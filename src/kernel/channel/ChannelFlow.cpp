// The flow along the channel: curvature, the near-bank velocity perturbation
// that drives migration, the feedback of sinuosity on depth and velocity, the
// measures of the meander train, and the grain-size profiles of its deposits.

#include "kernel/channel/Channel.h"

#include "interface/iDomain.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace
{
// Abscissa above which a channel length is not trusted.
constexpr double MAX_ABSCISSA = 1e6;
// Deliberately under 2 so that the extrapolated end curvatures stay damped.
constexpr double END_CURVATURE_FACTOR = 1.9;
// Below this ratio of curvatures the incoming bend is too weak to flip the
// wave that re-enters the channel.
constexpr double INFLOW_SIGN_RATIO = 0.2;
constexpr int PROXY_LAYERS = 10;

int curvature_sign(double c)
{
    return c < 0. ? -1 : 1;
}

// Signed curvature of the circle through a, b, c: negative for a left turn.
double circle_curvature(const Point2D& pa, const Point2D& pb, const Point2D& pc)
{
    const double ax = pa.get_abscissa(), ay = pa.get_ordinate();
    const double bx = pb.get_abscissa(), by = pb.get_ordinate();
    const double cx = pc.get_abscissa(), cy = pc.get_ordinate();
    const double cross = (bx - ax) * (cy - by) - (by - ay) * (cx - bx);
    if (std::fabs(cross) < MP_EPSILON)
        return 0.;
    const double a2 = ax * ax + ay * ay;
    const double b2 = bx * bx + by * by;
    const double c2 = cx * cx + cy * cy;
    const double ox = (a2 * (by - cy) + b2 * (cy - ay) + c2 * (ay - by)) / (2. * cross);
    const double oy = (a2 * (cx - bx) + b2 * (ax - cx) + c2 * (bx - ax)) / (2. * cross);
    const double lr = std::hypot(bx - ox, by - oy);
    MP_ASSERT_TEXT(lr > 0., "lr > 0.");
    return cross > 0. ? -1. / lr : 1. / lr;
}
} // namespace

// ---------------------------------------------------------------- perturbation

void Channel::compute_velocity_perturbation()
{
    check_three_points();
    MP_ASSERT(_hmean < MP_MAX_REAL_VALUE && _hmean > MP_MIN_REAL_VALUE);
    discretization();
    curvatures(_mc->parameters()->curvaturePointsNumber());
    velocity_perturbations();
}

// The stencil widens from the ends to n points on each side, so that the
// curvature of a finely sampled bend is not dominated by small kinks.
void Channel::curvatures(int n)
{
    ChannelPoint* left = _first;
    ChannelPoint* center = left->next();
    ChannelPoint* right = center->next();
    int k = 1;
    while (center != _last)
    {
        center->curvature(circle_curvature(*left, *center, *right));
        if (k == n)
            left = left->next();
        if (right != _last)
        {
            center = center->next();
            right = right->next();
            if (k < n && right != _last)
            {
                right = right->next();
                k++;
            }
        }
        else
        {
            left = left->next();
            center = center->next();
        }
    }
    const ChannelPoint* before_last = _last->prev();
    _last->curvature(END_CURVATURE_FACTOR * before_last->curvature() - before_last->prev()->curvature());
    const ChannelPoint* second = _first->next();
    _first->curvature(END_CURVATURE_FACTOR * second->curvature() - second->next()->curvature());
}

// Explicit upstream integration of a dU1/ds + b U1 = c dC/ds + d C; the wave
// leaving the channel re-enters it, so that a periodic train keeps its phase.
void Channel::velocity_perturbations()
{
    _mean_u1 = 0.;
    const ChannelPoint* p = _last->prev();
    const double c0 = _first->curvature();
    const double cp = p->curvature();
    double u1 = p->flow().u1();
    if (std::fabs(c0) >= INFLOW_SIGN_RATIO * std::fabs(cp))
        u1 *= curvature_sign(c0) * curvature_sign(cp);
    _first->flow().u1(u1);
    _mean_u1 += std::fabs(p->flow().u1());

    for (ChannelPoint* q = _first->next(); q != nullptr; q = q->next())
    {
        const ChannelPoint* before = q->prev();
        const Flow& f = q->flow();
        const double ds = q->ds();
        const double next_u1 =
            ((f.pde_a() - f.pde_b() * ds) * before->flow().u1() +
             (f.pde_d() * ds - f.pde_c()) * before->curvature() + f.pde_c() * q->curvature()) /
            f.pde_a();
        q->flow().u1(next_u1);
        _mean_u1 += std::fabs(next_u1);
    }
    _mean_u1 /= _nb_cp;
}

void Channel::maximum_velocity_perturbation_loci(std::list<std::pair<double, ChannelPoint*>>& list) const
{
    list.clear();
    if (_first == nullptr)
        return;
    for (ChannelPoint* cp = _first->next(); cp != nullptr && cp != _last; cp = cp->next())
    {
        const double u = cp->flow().u1();
        if ((u - cp->next()->flow().u1()) * (u - cp->prev()->flow().u1()) > 0.)
            list.emplace_back(u, cp);
    }
}

// ---------------------------------------------------------------- flow set-up

void Channel::init_flow()
{
    _cf = _mc->cf_from_hmean_and_wavelength(_hmean0, _wavelength);
    _velocity0 = _mc->velocity_from_hmean_and_cf(_hmean0, _cf, _slope, 1.0);
    _flow0 = _mc->flow_from_width_hmean_and_velocity(width(), _hmean0, _velocity0);
    const std::vector<double> proportions = _mc->parameters()->getSedProportions();
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        cp->flow().init_flow(width(), _hmean0, _velocity0, 0.0, _cf, proportions);
}

// A more sinuous channel runs on a gentler slope: it deepens and slows down
// at constant discharge.
void Channel::update_flow_sinuosity()
{
    check_three_points();
    MP_ASSERT(_hmean < MP_MAX_REAL_VALUE && _hmean > MP_MIN_REAL_VALUE);
    if (_mean_u1 == MP_MAX_REAL_VALUE)
        compute_velocity_perturbation();
    double sinuosity = MP_UNDEF_REAL;
    if (_mc->parameters()->sinuoInterval() != 0)
        sinuosity = compute_real_sinuosity_allen();
    _hmean = _mc->hmean_from_hmean0_and_sinuosity(_hmean0, sinuosity);
    _velocity = _mc->velocity_from_velocity0_and_sinuosity(_velocity0, sinuosity);
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        cp->hmean(_hmean);
        cp->flow().update_flow(width(), _hmean, _velocity, cp->curvature());
    }
}

// The same feedback from the sinuosity of about one wavelength around cp.
void Channel::update_channel_point_flow(ChannelPoint* cp)
{
    double span = _wavelength / 2.;
    const ChannelPoint* up = find_channel_point_at(cp, -span);
    if (up == nullptr)
    {
        up = _first;
        span *= 2.;
    }
    const ChannelPoint* down = find_channel_point_at(cp, span);
    if (down == nullptr)
    {
        down = _last;
        span *= 2.;
        up = find_channel_point_at(cp, -span);
        if (up == nullptr)
            up = _first;
    }
    const double sinuosity = compute_real_sinuosity_from_to(true, up, down);
    const double hmean = _mc->hmean_from_hmean0_and_sinuosity(_hmean0, sinuosity);
    const double velocity = _mc->velocity_from_velocity0_and_sinuosity(_velocity0, sinuosity);
    cp->flow().update_flow(width(), hmean, velocity, cp->curvature());
}

void Channel::update_all_channel_point_flow()
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        update_channel_point_flow(cp);
}

void Channel::update_flow_local_sinuosity()
{
    if (_mean_u1 == MP_MAX_REAL_VALUE)
        compute_velocity_perturbation();
    update_all_channel_point_flow();
}

ChannelPoint* Channel::find_channel_point_at(ChannelPoint* cp, double distance) const
{
    if (cp == _first || cp == _last)
        return nullptr;
    const bool downstream = distance >= 0.;
    const double target = std::fabs(distance);
    ChannelPoint* p = downstream ? cp : cp->prev();
    while (p != nullptr)
    {
        const bool reached = std::fabs(p->s() - cp->s()) >= target;
        p = downstream ? p->next() : p->prev();
        if (reached)
            return p;
    }
    return nullptr;
}

// ---------------------------------------------------------------- measures

namespace
{
// Length held at the downstream end, traced when it cannot be trusted.
double channel_length(const ChannelPoint* last, iTracer* tracer)
{
    const double s = last->s();
    if ((s <= 0. || s > MAX_ABSCISSA) && tracer != nullptr)
        tracer->error("Cannot calculate sinuosity");
    return s;
}

double reference_length(const ChannelPoint* first, const ChannelPoint* last, bool use_domain,
                        iDomain const* domain)
{
    if (!use_domain)
        return first->distance2D(*last);
    const Domain* domp = dynamic_cast<const Domain*>(domain);
    MP_ASSERT_TEXT(domp != nullptr, "domp != NULL");
    return domp->get_upstream_corner().distance(domp->get_downstream_corner());
}
} // namespace

double Channel::compute_real_sinuosity(bool use_domain, iDomain const* domain)
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    const double s = channel_length(_last, _tracer);
    const double length = reference_length(_first, _last, use_domain, domain);
    if (length <= 0.)
        return 1.0;
    MP_ASSERT(s > 0.);
    return s / length;
}

double Channel::compute_real_sinuosity_allen()
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    const double s = channel_length(_last, _tracer);
    if (_segments_length == MP_MAX_REAL_VALUE)
        _segments_length = compute_meander_segments_length(_nb_segments);
    if (_segments_length <= 0.)
        return 1.0;
    MP_ASSERT(s > 0.);
    return s / _segments_length;
}

double Channel::compute_real_sinuosity_from_to(bool use_direction, const ChannelPoint* a,
                                               const ChannelPoint* b) const
{
    if (a == nullptr)
        a = _first;
    if (b == nullptr)
        b = _last;
    double length = a->distance2D(*b);
    if (use_direction)
    {
        // The stored direction goes to the cosine in degrees as it is: the
        // local sinuosities of existing models depend on it.
        const double cosine = std::cos(_mc->parameters()->getParamDouble("CHNL_FLW_DIR") - 90.0);
        if (cosine != 0.)
            length /= cosine;
    }
    if (length <= 0.)
        return 1.0;
    const double s = b->s() - a->s();
    MP_ASSERT_TEXT(s > 0., "s > 0.");
    return s / length;
}

// Sum of the chords between successive inflexion points. The lobe state is
// left at the old sign after the first inflexion, which adds one short chord.
double Channel::compute_meander_segments_length(int& count) const
{
    count = 0;
    if (_first == nullptr || _first->next() == nullptr)
        return 0.;
    const ChannelPoint* start = _first->next();
    int state = curvature_sign(start->curvature());
    const ChannelPoint* p = start->next();
    while (p != nullptr && curvature_sign(p->curvature()) == state)
        p = p->next();
    if (p == nullptr)
        return 0.;
    double length = 0.;
    for (const ChannelPoint* q = p->next(); q != nullptr; q = q->next())
    {
        if (curvature_sign(q->curvature()) == state)
            continue;
        length += p->distance2D(*q);
        count++;
        p = q;
        state = curvature_sign(q->curvature());
    }
    return length;
}

double Channel::compute_real_tortuosity(bool use_domain, iDomain const* domain)
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    const double length = reference_length(_first, _last, use_domain, domain);
    if (_segments_length == MP_MAX_REAL_VALUE)
        _segments_length = compute_meander_segments_length(_nb_segments);
    const double tortuosity = _segments_length;
    MP_ASSERT(tortuosity > 0.);
    if (length <= 0.)
        return 1.0;
    return tortuosity / length;
}

double Channel::compute_real_wavelength()
{
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    if (_segments_length == MP_MAX_REAL_VALUE || _nb_segments == MP_UNDEF_INT)
        _segments_length = compute_meander_segments_length(_nb_segments);
    const double half = _nb_segments > 0 ? _segments_length / _nb_segments : _segments_length;
    return std::max(2. * half, 2. * width());
}

// Width of the meander belt: the spread of the points across the chord from
// the first to the last point, plus the channel's own width.
double Channel::compute_sand_body_extension()
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    const double chord = _first->distance2D(*_last);
    if (chord < MP_EPSILON)
        return width();
    const double ux = (_last->get_abscissa() - _first->get_abscissa()) / chord;
    const double uy = (_last->get_ordinate() - _first->get_ordinate()) / chord;
    double lo = 0.;
    double hi = 0.;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const double offset = ux * (cp->get_ordinate() - _first->get_ordinate()) -
                              uy * (cp->get_abscissa() - _first->get_abscissa());
        lo = std::min(lo, offset);
        hi = std::max(hi, offset);
    }
    return hi - lo + width();
}

// ---------------------------------------------------------------- grain size

void Channel::get_grainsize_profile(const Flow& flow, double /*curvature*/, int side, double a, double b,
                                    double percent, std::vector<double>& grains,
                                    std::vector<double>& heights) const
{
    grains.clear();
    heights.clear();
    flow.discretized_grainsize_profile(a, b, grains, heights, percent, side, _tracer);
    if (_tracer == nullptr || !_tracer->traceLevel(TRACE_DEBUG) || grains.empty())
        return;
    std::ostringstream text;
    text << "Grain size profile from " << a << " to " << b << ":";
    for (std::size_t i = 0; i < grains.size(); i++)
        text << "\n  up to " << heights[i] << ": " << grains[i];
    _tracer->debug(text.str());
}

void Channel::get_grainsize_profile_optim(const Flow& flow, double curvature, int /*side*/, double a,
                                          double b, double /*hflow*/, std::vector<double>& grains,
                                          std::vector<double>& heights) const
{
    grains.clear();
    heights.clear();
    flow.discretized_grainsize_profile_optim(a, b, grains, heights, curvature, _tracer);
}

// Regression of the grain on the perturbation and the height above the bed,
// fitted on full profiles, for runs where speed matters more than detail.
void Channel::get_grainsize_profile_proxy(const Flow& flow, double a, double b, std::vector<double>& grains,
                                          std::vector<double>& heights) const
{
    grains.clear();
    heights.clear();
    if (b <= a)
        return;
    const bool fluvial = _mc->parameters()->usingFluvi();
    const double u1 = std::fabs(flow.u1());
    const double step = (b - a) / PROXY_LAYERS;
    for (int k = 1; k <= PROXY_LAYERS; k++)
    {
        const double z = k == PROXY_LAYERS ? b : std::min(a + k * step, b);
        const double grain = fluvial
                                 ? 0.6908 - 0.05147 * u1 - 0.03872 * z
                                 : 0.7063 - 0.01238 * u1 - 0.001084 * z + 0.0006667 * flow.superelevation();
        grains.push_back(grain);
        heights.push_back(z);
        if (std::fabs(z - b) < MP_EPSILON)
            break;
    }
}
