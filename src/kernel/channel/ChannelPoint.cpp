#include "kernel/channel/ChannelPoint.h"

#include "kernel/domain/Domain.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MeanderCalculator.h"

#include "kernel/channel/iChannelWell.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <sstream>

namespace
{
// The well forgets the point it was steering.
void tell_point_lost(iChannelWell* well)
{
    if (well != nullptr)
        well->channel_point(nullptr);
}

void link_between(ChannelPoint* cp, ChannelPoint* prev, ChannelPoint* next)
{
    cp->prev(prev);
    cp->next(next);
    if (prev != nullptr)
        prev->next(cp);
    if (next != nullptr)
        next->prev(cp);
}

int clamp_index(double value, int size)
{
    const int index = static_cast<int>(value);
    return std::max(0, std::min(index, size - 1));
}
} // namespace

ChannelPoint::ChannelPoint(MeanderCalculator const* mc, const std::vector<double>& proportions, double width,
                           const Point2D& position, ChannelPoint* prev, ChannelPoint* next)
    : ChannelPoint(mc, proportions, width, Point3D(position, 0.), prev, next)
{
}

ChannelPoint::ChannelPoint(MeanderCalculator const* mc, const std::vector<double>& proportions, double width,
                           const Point3D& position, ChannelPoint* prev, ChannelPoint* next)
    : LinkedElement1D<Point3D>(position), _mc(mc), _flow(mc)
{
    init_fields();
    link_between(this, prev, next);
    init_from_points(width, proportions, prev, next);
}

ChannelPoint::ChannelPoint(MeanderCalculator const* mc, const ChannelPoint& other, ChannelPoint* prev,
                           ChannelPoint* next)
    : LinkedElement1D<Point3D>(static_cast<const Point3D&>(other)), _slope(other._slope),
      _hmean(other._hmean), _curvature(other._curvature), _ds(other._ds), _s(other._s),
      _normal(other._normal), _aggrad_increase(other._aggrad_increase), _mig_factor(other._mig_factor),
      _well(nullptr), _status(POINT_FREE), _mc(mc), _flow(mc, other._flow)
{
    link_between(this, prev, next);
}

ChannelPoint::~ChannelPoint()
{
    tell_point_lost(_well);
}

ChannelPoint* ChannelPoint::make_chain(MeanderCalculator const* mc, const std::vector<double>& proportions,
                                       double width, const std::vector<Point3D>& points)
{
    ChannelPoint* head = nullptr;
    ChannelPoint* last = nullptr;
    for (const Point3D& p : points)
    {
        last = new ChannelPoint(mc, proportions, width, p, last, nullptr);
        if (head == nullptr)
            head = last;
    }
    return head;
}

void ChannelPoint::init_fields()
{
    _slope = 0.;
    _hmean = 0.;
    _curvature = 0.;
    _ds = 0.;
    _s = 0.;
    _normal = Vector2D(0., 1.);
    _aggrad_increase = 0.;
    _mig_factor = 1.;
    _well = nullptr;
    _status = POINT_FREE;
}

void ChannelPoint::init_from_points(double width, const std::vector<double>& proportions, ChannelPoint* prev,
                                    ChannelPoint* next)
{
    _slope = 0.;
    _hmean = 0.;
    _curvature = 0.;
    _ds = 0.;
    _s = 0.;
    _normal = Vector2D(0., 1.);

    double slope = 0.;
    double hmean = 0.;
    double u0 = 0.;
    double u1 = 0.;
    double cf = 0.;
    int count = 0;
    for (const ChannelPoint* neighbour : {prev, next})
    {
        if (neighbour == nullptr)
            continue;
        slope += neighbour->_slope;
        hmean += neighbour->_hmean;
        u0 += neighbour->_flow.u0();
        u1 += neighbour->_flow.u1();
        count++;
    }
    if (next != nullptr)
        cf = next->_flow.cf();
    else if (prev != nullptr)
        cf = prev->_flow.cf();
    if (count == 0 || hmean <= 0.)
        return;

    _slope = slope / count;
    _hmean = hmean / count;
    _flow.init_flow(width, _hmean, u0 / count, u1 / count, cf, proportions);
}

void ChannelPoint::increase_elevation_by(double d)
{
    _z += d;
    _aggrad_increase = d;
}

void ChannelPoint::decrease_elevation_by(double d)
{
    _z -= d;
    _aggrad_increase = 0.;
}

void ChannelPoint::reset_status()
{
    iChannelWell* old = _well;
    _well = nullptr;
    tell_point_lost(old);
    _status = POINT_FREE;
    _mig_factor = 1.;
}

void ChannelPoint::well(iChannelWell* well)
{
    iChannelWell* old = _well;
    _well = well;
    if (old != well)
        tell_point_lost(old);
}

void ChannelPoint::get_grid_indices(const GridParams& geom, int& ix, int& iy) const
{
    const Point2D g = geom.rel2Grid(*this, true);
    ix = clamp_index(g.get_abscissa(), geom.getNx());
    iy = clamp_index(g.get_ordinate(), geom.getNy());
}

double ChannelPoint::elevation_custom(const Domain* domain, bool use_slope, bool bed) const
{
    double correction = 0.;
    if (use_slope && domain != nullptr)
        correction = _x * domain->get_slope_x() - _y * domain->get_slope_y();
    double z = _z - correction;
    if (bed)
        z -= MeanderCalculator::hmax_from_hmean(_hmean);
    return z;
}

double ChannelPoint::get_distance_von_mises(const Point2D& p, double cx, double cy) const
{
    const double dx = _x - p.get_abscissa();
    const double dy = _y - p.get_ordinate();
    const double d = std::sqrt(dx * dx + dy * dy);
    // A well standing on the point is as near as can be.
    if (d == 0.)
        return 0.;
    return d / std::exp(-(cy * dy + cx * dx) / d);
}

std::string ChannelPoint::get_string_descr() const
{
    std::ostringstream out;
    out << "Pt= (" << _x << ", " << _y << ", " << _z << ") ";
    if (_ds < 99999.)
        out << "ds= " << _ds << " ";
    else
        out << "ds=    NaN ";
    if (_s < 99999999999999.)
        out << "s= " << _s << " ";
    else
        out << "s=         NaN ";
    out << "C= " << _curvature << " ";
    if (std::fabs(_curvature) > 1e-6)
        out << "R= " << 1. / _curvature << " ";
    else
        out << "R=       NaN ";
    out << "N= (" << _normal.get_abscissa() << ", " << _normal.get_ordinate() << ") ";
    out << "I= " << _slope << " ";
    out << _flow.get_string_descr();
    return out.str();
}

std::string ChannelPoint::debug() const
{
    std::ostringstream out;
    out << "X=" << _x << ", Y=" << _y;
    return out.str();
}

std::ostream& operator<<(std::ostream& out, const ChannelPoint& cp)
{
    return out << cp.get_string_descr();
}
