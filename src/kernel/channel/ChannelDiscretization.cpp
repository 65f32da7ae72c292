// Resampling of the centerline to its spacing limits, with the abscissae and
// normals measured in the same sweep.

#include "kernel/channel/Channel.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <cmath>
#include <sstream>

namespace
{
constexpr double MAX_ABSCISSA = 1e6;

// The sweep measures every segment once, as the distance between its ends:
// the same length a normalisation would measure.
Vector2D normalized(const Vector2D& v, double length)
{
    Vector2D n = v;
    return n.normalize(length);
}

// The chord, of length `length`, turned a quarter to the left.
Vector2D rotated_chord(const Vector2D& b, double length)
{
    Vector2D n = normalized(b, length);
    n.rotate_half_pi();
    return n;
}

// Unit normal at a point, pointing to the left of the downstream direction;
// `length_a` and `length_b` are the lengths of prev-cp and cp-next.
Vector2D point_normal(const Point2D& prev, const Point2D& cp, const Point2D& next, double length_a,
                      double length_b)
{
    const Vector2D a(prev, cp);
    const Vector2D b(cp, next);
    const Vector2D c(prev, next);
    Vector2D n;
    if (std::fabs(a.vectorial(b)) < MP_EPSILON)
        n = rotated_chord(b, length_b);
    else
    {
        // The outer bisector of the bend.
        n = Vector2D(normalized(a, length_a) - normalized(b, length_b));
        n.normalize();
        if (n.scalar(n) < MP_EPSILON)
            n = rotated_chord(b, length_b);
    }
    if (a.vectorial(c) > 0.)
        n *= -1.;
    return n;
}

// Removes `cp` from the chain it lies in; its neighbours are joined.
void unlink(ChannelPoint* cp)
{
    ChannelPoint* before = cp->prev();
    ChannelPoint* after = cp->next();
    if (before != nullptr)
        before->next(after);
    if (after != nullptr)
        after->prev(before);
}
} // namespace

void Channel::init_geom(double hmax, double width, double wavelength, double slope)
{
    check_three_points();
    _slope = slope;
    _wavelength = wavelength;
    _hmean0 = MeanderCalculator::hmean_from_hmax(hmax);
    _hmean = _hmean0;
    _half_width = width / 2.;
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        cp->slope(_slope);
        cp->hmean(_hmean);
    }
    discretization();
    polynomial_4_cross_section_calculate_coefficients();
    update_bounding_box();
    update_min_max_elevations();
}

void Channel::discretization()
{
    const std::vector<double> proportions = _mc->parameters()->getSedProportions();
    // A null abscissa (equal points) is reported and survived. A channel
    // longer than the bound cannot be resampled: the sweep would add a point
    // every half-width without end, so it stops at the first such abscissa.
    auto check_abscissa = [this](double s)
    {
        if (s > MAX_ABSCISSA)
        {
            std::ostringstream text;
            text << "Error while computing discretization: the channel is longer than " << MAX_ABSCISSA
                 << " m (check DOMAIN_DX and DOMAIN_DY)";
            throw text.str();
        }
        if (s <= 0. && _tracer != nullptr)
            _tracer->error("Error while computing discretization");
    };

    _first->ds(0.);
    _first->s(0.);
    ChannelPoint* next = _first->next();
    double ds = _first->distance2D(*next);
    discretize_segment(proportions, _first, next, ds);
    next->ds(ds);
    next->s(_first->s() + ds);
    check_abscissa(next->s());

    ChannelPoint* cp = _first->next();
    Point2D prev = *_first;
    // discretize_segment leaves in ds the distance from cp to its (new) next point.
    double ds_before = ds;
    while (cp != _last)
    {
        next = cp->next();
        ds = cp->distance2D(*next);
        discretize_segment(proportions, cp, next, ds);
        MP_ASSERT_TEXT(ds >= 0. && ds < MP_MAX_REAL_VALUE, "ds >= 0. && ds < MP_MAX_REAL_VALUE");
        next->ds(ds);
        next->s(cp->s() + ds);
        check_abscissa(next->s());
        cp->normal(point_normal(prev, *cp, *next, ds_before, ds));
        prev = *cp;
        ds_before = ds;
        cp = next;
    }

    if (0.5 * _half_width > ds)
    {
        ChannelPoint* before = _last->prev();
        before->next(nullptr);
        delete _last;
        _last = before;
        _nb_cp--;
    }
    else
    {
        // The last segment was already counted by the sweep: it is counted
        // once more here, and the sinuosities are calibrated on this length.
        _last->ds(ds);
        _last->s(_last->s() + ds);
    }
    check_abscissa(_last->s());

    _last->normal(_last->prev()->normal());
    _first->normal(_first->next()->normal());
}

void Channel::discretize_segment(const std::vector<double>& proportions, ChannelPoint* cp,
                                 ChannelPoint*& next, double& ds)
{
    const double w2 = _half_width;
    if (ds > 1.5 * w2)
    {
        // One point a half-width downstream, bent halfway towards the straight
        // continuation of the previous segment so that bends stay smooth.
        const Vector2D a(*cp, *next);
        const Point2D p1 = *cp + a * (w2 / a.length());
        Point2D p2 = p1;
        Point2D p_new = p1;
        if (cp->prev() != nullptr)
        {
            const Vector2D v(*cp->prev(), *cp);
            p2 = *cp + v * (w2 / v.length());
            p_new = (p1 + p2) / 2.;
        }
        const double d1 = Vector2D(*cp, p_new).length();
        if (std::isinf(d1) || d1 < MP_EPSILON)
        {
            ChannelPoint* after = next->next();
            if (_tracer != nullptr && _tracer->traceLevel(TRACE_WARNING))
            {
                std::ostringstream text;
                text << "Error while adding a channel point (d1 is " << (std::isinf(d1) ? "infinite" : "null")
                     << ")\n";
                text << "Interval ]" << cp->Point2D::debug() << ", " << next->Point2D::debug() << "[\n";
                text << "p_new=" << p_new.debug() << ", p_new1=" << p1.debug() << ", p_new2=" << p2.debug()
                     << ", d1=" << d1 << "\n";
                text << "Deleting point: (" << next->get_abscissa() << ", " << next->get_ordinate()
                     << ") between (" << cp->get_abscissa() << ", " << cp->get_ordinate() << ") and (";
                if (after != nullptr)
                    text << after->get_abscissa() << ", " << after->get_ordinate();
                text << ")";
                _tracer->warning(text.str());
            }
            // The two directions cancel: the far point is lost instead of a
            // point gained. The downstream end has no follower and is kept.
            if (after != nullptr)
            {
                unlink(next);
                delete next;
                _nb_cp--;
                next = after;
                ds = cp->distance2D(*next);
            }
        }
        else
        {
            ChannelPoint* added = new ChannelPoint(_mc, proportions, width(), p_new, cp, next);
            _nb_cp++;
            const double d2 = Vector2D(p_new, *next).length();
            added->set_elevation((d1 * next->get_elevation() + d2 * cp->get_elevation()) / (d1 + d2));
            ds = d1;
            next = added;
        }
    }
    else
    {
        while (next != _last && ds < 0.5 * w2)
        {
            do
            {
                ChannelPoint* after = next->next();
                unlink(next);
                delete next;
                _nb_cp--;
                next = after;
                ds = cp->distance2D(*next);
            } while (ds < MP_EPSILON && next != _last);
            MP_ASSERT_TEXT(!std::isinf(ds), "!std::isinf(ds)");
            MP_ASSERT_TEXT(ds >= MP_EPSILON, "ds >= MP_EPSILON");
        }
    }
    next->ds(ds);
}
