// Lateral migration of the centerline: each point moves along its normal by
// the time step times the erodibility of the bank it attacks times its
// near-bank velocity perturbation; and the small companions of that step
// (elevation smoothing, well steering, tectonics, bilinear lookups, the ends
// held at the reference lines, the distances to the equilibrium elevation).

#include "kernel/channel/Channel.h"

#include "interface/iParameters.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// ---------------------------------------------------------------- wells
#include "kernel/channel/iChannelWell.h"

namespace
{
Point2D well_location(const iChannelWell* well)
{
    return well->location();
}

// Attaching computes the point's factor and status, or detaches a neutral well.
void attach_well(iChannelWell* well, ChannelPoint* cp)
{
    well->channel_point(cp);
}
} // namespace

namespace
{
int sign_of(double value)
{
    return value < 0. ? -1 : 1;
}

// The four nodes around a grid position and their bilinear weights.
struct BilinearCell
{
    BilinearCell(const Domain& domain, const Point2D& p)
    {
        const Point2D g = domain.getGridPointFromRel(p);
        const double fx0 = std::floor(g.get_abscissa());
        const double fy0 = std::floor(g.get_ordinate());
        ix = static_cast<int>(fx0);
        iy = static_cast<int>(fy0);
        fx = g.get_abscissa() - fx0;
        fy = g.get_ordinate() - fy0;
    }
    template <typename Sample> double mix(Sample sample) const
    {
        return (1. - fx) * (1. - fy) * sample(ix, iy) + fx * (1. - fy) * sample(ix + 1, iy) +
               fx * fy * sample(ix + 1, iy + 1) + (1. - fx) * fy * sample(ix, iy + 1);
    }
    int ix;
    int iy;
    double fx;
    double fy;
};
} // namespace

// ---------------------------------------------------------------- one step

double Channel::migration_time_step(unsigned int years)
{
    // Formed in 32 bits: a step of 137 years or more wraps, and the migration
    // rates and every stored block depend on that product as it stands.
    const uint32_t seconds = static_cast<uint32_t>(years) * static_cast<uint32_t>(MP_SECONDS_PER_YEAR);
    return static_cast<double>(seconds);
}

void Channel::migrate(Domain* domain, double dt)
{
    smooth_elevations();
    migrate_all_points(domain, dt);
}

void Channel::migrate_conditioning(Domain* domain, double dt)
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        cp->reset_status();
    smooth_elevations();
    project_wells(domain);
    keep_one_well_by_meander();
    propagate_status();
    migrate_all_points(domain, dt);
}

void Channel::migrate_all_points(Domain* domain, double dt)
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const Vector2D& n = cp->normal();
        const double u1 = cp->getFlowU1();
        // The bank under attack is the one towards which the perturbation pushes.
        const bool right = u1 < 0.;
        const Vector2D direction = right ? Vector2D(-n) : n;
        const Point2D bank = *cp + direction * _half_width;
        double erodibility = cp->find_erodibility(domain, bank, direction, cp->getFlowHmax());
        if (cp->status() == POINT_SPEEDED_UP || cp->status() == POINT_SLOWED_DOWN)
            erodibility *= cp->mig_factor();
        const Point2D moved = *cp + n * (dt * erodibility * u1);
        cp->reset(moved.get_abscissa(), moved.get_ordinate(), cp->get_elevation());
    }
    update_bounding_box();
}

void Channel::migrate_free(double factor)
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const Point2D moved = *cp + cp->normal() * (cp->getFlowU1() * factor);
        cp->reset(moved.get_abscissa(), moved.get_ordinate(), cp->get_elevation());
    }
    update_bounding_box();
}

double ChannelPoint::find_erodibility(const Domain* domain, const Point2D& bank_point,
                                      const Vector2D& direction, double h) const
{
    const Point2D g = domain->rel2Grid(bank_point, true);
    const int gx = static_cast<int>(std::trunc(g.get_abscissa()));
    const int gy = static_cast<int>(std::trunc(g.get_ordinate()));
    if (!domain->is_on_grid_on_the_way(g, direction))
        return domain->get_erodibility_extrapolated(gx, gy);

    // The cell ahead of the bank is the one being cut.
    const int ix = gx + (direction.get_abscissa() >= 0. ? 1 : 0);
    const int iy = gy + (direction.get_ordinate() >= 0. ? 1 : 0);
    const DepositionSet& cell = domain->getObject(ix, iy);
    const double top = cell.get_topo_rel(false);
    const double z = get_elevation();

    // A bank standing above the channel top resists in proportion to its height.
    const double height_factor = top - z > 0. ? h / (h + top - z) : 1.;

    // Coarse banks erode faster than fine ones when the bank coefficient is on.
    double grain_factor = 1.;
    const iParameters* params = _mc->parameters();
    if (params->usingBankErodCoeff() && top > z - h)
    {
        const double k = params->getBankErodCoeff();
        const double mean = cell.mean_granulo(z - h, top);
        if (mean != MP_UNDEF_REAL)
            grain_factor = 2. * k * mean + (1. - k);
    }
    return grain_factor * cell.get_erodibility() * height_factor;
}

// ---------------------------------------------------------------- elevations

void ChannelPoint::smooth_elevations(bool last)
{
    const ChannelPoint* before = prev();
    const ChannelPoint* after = last ? nullptr : next();
    const double z = get_elevation();
    if (before == nullptr && after != nullptr)
        set_elevation((2. * z + after->get_elevation()) / 3.);
    else if (before != nullptr && after == nullptr)
        set_elevation((before->get_elevation() + 2. * z) / 3.);
    else if (before != nullptr)
        set_elevation((before->get_elevation() + z + after->get_elevation()) / 3.);
}

void Channel::smooth_elevations()
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    MP_ASSERT_TEXT(_first != _last, "_first != _last");
    // Every mean is taken over values before smoothing, so each result waits
    // until its successor has read the original value.
    ChannelPoint* held = nullptr;
    double held_z = 0.;
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const double original = cp->get_elevation();
        cp->smooth_elevations(cp == _last);
        const double smoothed = cp->get_elevation();
        cp->set_elevation(original);
        if (held != nullptr)
            held->set_elevation(held_z);
        held = cp;
        held_z = smoothed;
    }
    held->set_elevation(held_z);
}

void Channel::apply_tecto(Domain* domain, double steps)
{
    MP_ASSERT_TEXT(domain != nullptr, "dom != NULL");
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const Point2D g = domain->getGridPointFromRel(*cp);
        if (!domain->is_on_grid(g))
            continue;
        const int ix = static_cast<int>(std::trunc(g.get_abscissa()));
        const int iy = static_cast<int>(std::trunc(g.get_ordinate()));
        cp->set_elevation(cp->get_elevation() + steps * domain->getObject(ix, iy).get_tecto());
    }
}

double Channel::norm_proj(const Point2D& p, const Point2D& a, const Point2D& b)
{
    const Point2D ab = b - a;
    const double length2 = ab.scalar(ab);
    if (length2 <= 0.)
        return 0.;
    return ab.scalar(p - a) / length2;
}

// ---------------------------------------------------------------- wells

void Channel::project_wells(Domain* domain)
{
    if (_first == nullptr || domain == nullptr)
        return;
    const Vector2D flow = domain->get_flow_direction();
    for (iChannelWell* well : _wells)
    {
        attach_well(well, nullptr);
        const Point2D position = well_location(well);
        ChannelPoint* nearest = nullptr;
        double best = MP_MAX_REAL_VALUE;
        for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        {
            const double d = cp->get_distance_von_mises(position, flow.get_abscissa(), flow.get_ordinate());
            if (nearest == nullptr || d < best)
            {
                nearest = cp;
                best = d;
            }
        }
        const Point2D tangent =
            nearest == _first ? Point2D(*nearest->next() - *nearest) : Point2D(*nearest - *nearest->prev());
        const double side = tangent.vectorial(position - *nearest);
        // Only a point moving towards its well, or not moving, is steered by it.
        if (nearest->getFlowU1() * side >= 0.)
            attach_well(well, nearest);
    }
}

void Channel::keep_one_well_by_meander()
{
    if (_first == nullptr)
        return;
    int sign = sign_of(_first->getFlowU1());
    ChannelPoint* kept = nullptr;
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        if (cp->getFlowU1() * sign < 0.)
        {
            sign = -sign;
            kept = cp->well() != nullptr ? cp : nullptr;
            continue;
        }
        if (cp->well() == nullptr)
            continue;
        if (kept == nullptr)
        {
            kept = cp;
            continue;
        }
        if (cp->status() == POINT_SLOWED_DOWN && kept->mig_factor() > cp->mig_factor())
        {
            kept->reset_status();
            kept = cp;
        }
        else if (cp->status() == POINT_SPEEDED_UP && kept->status() == POINT_SPEEDED_UP &&
                 cp->mig_factor() > kept->mig_factor())
        {
            kept->reset_status();
            kept = cp;
        }
        else
            cp->reset_status();
    }
}

void Channel::propagate_status()
{
    ChannelPoint* cp = _first;
    while (cp != nullptr)
    {
        if (cp->status() == POINT_FREE)
        {
            cp = cp->next();
            continue;
        }
        // The whole meander, as far as U1 keeps the sign it has at the well, follows it.
        const double sign = cp->getFlowU1() < 0. ? -1. : 1.;
        for (ChannelPoint* q = cp->prev(); q != nullptr && q->getFlowU1() * sign > 0.; q = q->prev())
        {
            q->status(cp->status());
            q->mig_factor(cp->mig_factor());
        }
        ChannelPoint* q = cp->next();
        for (; q != nullptr && q->getFlowU1() * sign > 0.; q = q->next())
        {
            q->status(cp->status());
            q->mig_factor(cp->mig_factor());
        }
        cp = q;
    }
}

// ---------------------------------------------------------------- lookups

double Channel::bilinear_erodibility_ratio(const Domain* domain, const Point2D& p)
{
    if (domain == nullptr)
        return 0.;
    const BilinearCell cell(*domain, p);
    const double mixed =
        cell.mix([domain](int i, int j) { return domain->get_erodibility_extrapolated(i, j); });
    return mixed / domain->get_erod_default();
}

double Channel::bilinear_elevation(const Domain* domain, const Point2D& p)
{
    if (domain == nullptr)
        return 0.;
    const BilinearCell cell(*domain, p);
    return cell.mix(
        [domain](int i, int j)
        { return domain->get_topo_extrapolated(true, true, i, j, MP_UNDEF_INT, MP_UNDEF_INT, true); });
}

// ---------------------------------------------------------------------------
// Ends held at the reference lines across the flow

bool Channel::constrain_extremities(const Point2D& up_ref, const Point2D& down_ref, double fx, double fy)
{
    if (_first == nullptr || _last == nullptr || _first == _last)
        return false;
    const Vector2D f(fx, fy);
    const int count = _nb_cp;
    // Upstream: drop a point standing beyond the line with its follower, or
    // slide it along the first segment onto the line.
    ChannelPoint* p0 = _first;
    ChannelPoint* p1 = p0->next();
    if (f.scalar(*p0 - up_ref) < 0. && f.scalar(*p1 - up_ref) < 0. && _nb_cp > 2)
    {
        _first = p1;
        p1->prev(nullptr);
        p0->next(nullptr);
        delete p0;
        --_nb_cp;
    }
    else
    {
        const Point3D seg = *p1 - *p0;
        const double r = f.scalar(up_ref - *p0) / std::max(f.scalar(seg), 1e-6);
        if (std::fabs(r) < 1.5)
            static_cast<Point3D&>(*p0) = *p0 + seg * r;
    }
    // Downstream, the mirror.
    ChannelPoint* pn = _last;
    ChannelPoint* pm = pn->prev();
    if (f.scalar(*pn - down_ref) > 0. && f.scalar(*pm - down_ref) > 0. && _nb_cp > 2)
    {
        _last = pm;
        pm->next(nullptr);
        pn->prev(nullptr);
        delete pn;
        --_nb_cp;
    }
    else
    {
        const Point3D seg = *pn - *pm;
        const double r = f.scalar(down_ref - *pn) / std::max(f.scalar(seg), 1e-6);
        if (std::fabs(r) < 1.5)
            static_cast<Point3D&>(*pn) = *pn + seg * r;
    }
    return _nb_cp != count;
}

// ---------------------------------------------------------------------------
// Elevations against the equilibrium profile

void Channel::abs_elevation_to_ep(
    double ep, std::vector<std::pair<ChannelPoint*, std::pair<double, double>>>& list) const
{
    list.clear();
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        list.emplace_back(cp, std::make_pair(cp->get_elevation(), std::fabs(cp->get_elevation() - ep)));
}
