#include "kernel/channel/Channel.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/channel/Centerline.h"
#include "kernel/channel/WellConfig.h"
#include "kernel/channel/iChannelWell.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace
{
int chain_length(const ChannelPoint* cp)
{
    int n = 0;
    for (; cp != nullptr; cp = cp->next())
        n++;
    return n;
}

ChannelPoint* chain_tail(ChannelPoint* cp)
{
    while (cp->next() != nullptr)
        cp = cp->next();
    return cp;
}

// Text of one pair of points that breaks the spacing rule.
void describe_pair(std::ostringstream& out, int i, const ChannelPoint* p1, const ChannelPoint* p2,
                   const char* what, double d, const char* sign, double limit)
{
    out << "  Point #" << i << " and #" << i + 1 << what << d << sign << limit << "\n";
    out << "    P1 : " << p1->get_string_descr() << "\n";
    out << "    P2 : " << p2->get_string_descr() << "\n";
}
} // namespace

Channel::Channel(MeanderCalculator const* mc)
    : _half_width(0.), _wavelength(0.), _cf(0.), _velocity(0.), _hmean(0.), _slope(0.), _flow0(0.),
      _hmean0(0.), _velocity0(0.), _birth_iter(0), _mean_u1(MP_MAX_REAL_VALUE),
      _segments_length(MP_MAX_REAL_VALUE), _nb_segments(MP_UNDEF_INT), _first(nullptr), _last(nullptr),
      _nb_cp(0), _bbox_min(MP_MAX_REAL_VALUE, MP_MAX_REAL_VALUE),
      _bbox_max(MP_MIN_REAL_VALUE, MP_MIN_REAL_VALUE), _min_elevation(MP_MAX_REAL_VALUE),
      _max_elevation(MP_MIN_REAL_VALUE), _mc(mc),
      _tracer(mc != nullptr ? mc->tracer() : nullptr), _poly{0., 0., 0., 0., 0.}
{
}

Channel::Channel(MeanderCalculator const* mc, const Channel& other, bool copy_points) : Channel(mc)
{
    init_scalars(other);
    if (copy_points)
        init_path(other._first, true);
}

Channel::Channel(MeanderCalculator const* mc, const Channel& other, ChannelPoint* cp)
    : Channel(mc, other, false)
{
    MP_ASSERT_TEXT(cp != nullptr, "cp != NULL");
    init_path(cp, false);
}

Channel::Channel(MeanderCalculator const* mc, const std::vector<Point3D>& points) : Channel(mc)
{
    init_points(points);
}

Channel::Channel(MeanderCalculator const* mc, const Channel& other, const std::vector<Point3D>& points)
    : Channel(mc)
{
    init_scalars(other);
    init_points(points);
}

Channel::~Channel()
{
    delete_path();
}

void Channel::init_scalars(const Channel& other)
{
    _half_width = other._half_width;
    _wavelength = other._wavelength;
    _cf = other._cf;
    _velocity = other._velocity;
    _hmean = other._hmean;
    _slope = other._slope;
    _flow0 = other._flow0;
    _hmean0 = other._hmean0;
    _velocity0 = other._velocity0;
    _birth_iter = other._birth_iter;
    _wells = other._wells;
    std::copy(other._poly, other._poly + 5, _poly);
}

void Channel::init_points(const std::vector<Point3D>& points)
{
    MP_ASSERT_TEXT(points.size() > 1, "v.size() > 1");
    // Only the constructors build from points, on an empty channel.
    MP_ASSERT_TEXT(_first == nullptr, "_first == NULL");
    append(ChannelPoint::make_chain(_mc, _mc->parameters()->getSedProportions(), width(), points));
}

void Channel::check_three_points() const
{
    MP_ASSERT_TEXT(_first != nullptr, "_first != NULL");
    MP_ASSERT_TEXT(_last != nullptr, "_last != NULL");
    MP_ASSERT(_first != _last);
    MP_ASSERT(_first->next() != _last);
}

// ---------------------------------------------------------------- chain

ChannelPoint* Channel::get_point(int idx) const
{
    const int nb_cp = _nb_cp;
    if (idx >= 0)
    {
        MP_ASSERT(idx < nb_cp);
        ChannelPoint* cp = _first;
        for (int i = 0; i < idx; i++)
            cp = cp->next();
        return cp;
    }
    MP_ASSERT(-idx <= nb_cp);
    ChannelPoint* cp = _last;
    for (int i = -1; i > idx; i--)
        cp = cp->prev();
    return cp;
}

int Channel::index(const ChannelPoint* cp) const
{
    return index(_first, cp);
}

int Channel::index(const ChannelPoint* a, const ChannelPoint* b) const
{
    int i = 1;
    for (const ChannelPoint* p = a; p != nullptr; p = p->next(), i++)
        if (p == b)
            return i;
    return 0;
}

void Channel::init_path(ChannelPoint* cp, bool copy)
{
    MP_ASSERT_TEXT(_first == nullptr, "_first == NULL");
    MP_ASSERT_TEXT(_last == nullptr, "_last == NULL");
    _nb_cp = 0;
    if (cp == nullptr)
        return;
    if (copy)
    {
        for (const ChannelPoint* p = cp; p != nullptr; p = p->next())
        {
            _last = new ChannelPoint(_mc, *p, _last, nullptr);
            if (_first == nullptr)
                _first = _last;
            _nb_cp++;
        }
        return;
    }
    // An adopted chain starts here, whatever preceded it.
    cp->prev(nullptr);
    _first = cp;
    _last = chain_tail(cp);
    _nb_cp = chain_length(cp);
}

void Channel::set_new_path(ChannelPoint* cp)
{
    delete_path();
    init_path(cp, true);
}

void Channel::delete_path()
{
    ChannelPoint* cp = _first;
    while (cp != nullptr)
    {
        ChannelPoint* next = cp->next();
        delete cp;
        cp = next;
    }
    _first = nullptr;
    _last = nullptr;
    _nb_cp = 0;
}

void Channel::delete_between(ChannelPoint* a, ChannelPoint* b)
{
    if (a == _first && b == _last)
    {
        delete_path();
        return;
    }
    ChannelPoint* before = a->prev();
    ChannelPoint* after = b->next();
    for (ChannelPoint* cp = a;;)
    {
        ChannelPoint* next = cp->next();
        const bool end = (cp == b);
        delete cp;
        _nb_cp--;
        if (end || next == nullptr)
            break;
        cp = next;
    }
    if (a == _first)
    {
        _first = after;
        after->prev(nullptr);
    }
    else if (b == _last)
    {
        _last = before;
        before->next(nullptr);
    }
    else
    {
        before->next(after);
        after->prev(before);
    }
}

void Channel::delete_from(ChannelPoint* a)
{
    delete_between(a, _last);
}

void Channel::append(Channel* c)
{
    if (c == nullptr || c->_first == nullptr)
        return;
    if (_last == nullptr)
        _first = c->_first;
    else
    {
        _last->next(c->_first);
        c->_first->prev(_last);
    }
    _last = c->_last;
    _nb_cp += c->_nb_cp;
    c->_first = nullptr;
    c->_last = nullptr;
}

void Channel::append(ChannelPoint* cp)
{
    if (cp == nullptr)
        return;
    if (_last == nullptr)
        _first = cp;
    else
    {
        _last->next(cp);
        cp->prev(_last);
    }
    _last = chain_tail(cp);
    _nb_cp += chain_length(cp);
}

void Channel::prepend(Channel* c)
{
    if (c == nullptr || c->_first == nullptr)
        return;
    if (_first == nullptr)
        _last = c->_last;
    else
    {
        c->_last->next(_first);
        _first->prev(c->_last);
    }
    _first = c->_first;
    _nb_cp += c->_nb_cp;
    c->_first = nullptr;
    c->_last = nullptr;
}

void Channel::prepend(ChannelPoint* cp)
{
    if (cp == nullptr)
        return;
    ChannelPoint* tail = chain_tail(cp);
    const int length = chain_length(cp);
    // Unlike the form taking a channel, an empty channel gets no `_last` here.
    if (_first != nullptr)
    {
        tail->next(_first);
        _first->prev(tail);
    }
    _first = cp;
    _nb_cp += length;
}

Channel* Channel::divide(ChannelPoint* cp)
{
    if (cp == _first)
        return this;
    const int idx = index(cp);
    MP_ASSERT(idx != 0);
    Channel* downstream = new Channel(_mc, *this, false);
    downstream->_first = cp;
    downstream->_last = _last;
    downstream->_nb_cp = _nb_cp - idx + 1;
    ChannelPoint* before = cp->prev();
    cp->prev(nullptr);
    before->next(nullptr);
    _last = before;
    _nb_cp = idx - 1;
    return downstream;
}

// ---------------------------------------------------------------- queries

double Channel::mean_velocity_perturbation()
{
    if (_mean_u1 == MP_MAX_REAL_VALUE)
        compute_velocity_perturbation();
    return _mean_u1;
}

double Channel::mean_elevation() const
{
    double sum = 0.;
    int n = 0;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next(), n++)
        sum += cp->get_elevation();
    return sum / n;
}

void Channel::max_depth_limits(double& lo, double& hi) const
{
    double low = MP_MAX_REAL_VALUE;
    double high = MP_MIN_REAL_VALUE;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        low = std::min(low, cp->getHmean());
        high = std::max(high, cp->getHmean());
    }
    lo = MeanderCalculator::hmax_from_hmean(low);
    hi = MeanderCalculator::hmax_from_hmean(high);
}

double Channel::mean_maximum_flow_depth() const
{
    double sum = 0.;
    int n = 0;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next(), n++)
        sum += cp->getFlowHmax();
    return n == 0 ? std::nan("") : sum / n;
}

void Channel::shift_elevation(double d)
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        cp->set_elevation(cp->get_elevation() + d);
    _min_elevation += d;
    _max_elevation += d;
}

Point2D Channel::left_bank_2D(const ChannelPoint* cp) const
{
    return static_cast<const Point2D&>(*cp) + cp->normal() * _half_width;
}

Point2D Channel::right_bank_2D(const ChannelPoint* cp) const
{
    return static_cast<const Point2D&>(*cp) - cp->normal() * _half_width;
}

int Channel::get_side(const Point2D& a, const Point2D& b, const Point2D& p)
{
    const double cross = (p - a).vectorial(b - a);
    return cross > 0. ? 1 : (cross < 0. ? -1 : 0);
}

void Channel::find_nearest(const std::vector<Point2D>& points,
                           std::vector<std::pair<double, ChannelPoint*>>& out) const
{
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        for (std::size_t j = 0; j < points.size() && j < out.size(); j++)
        {
            const double d = cp->distance2D(points[j]);
            if (d < out[j].first)
                out[j] = std::make_pair(d, cp);
        }
}

void Channel::calculate_y_bounds(double& lo, double& hi) const
{
    lo = MP_MAX_REAL_VALUE;
    hi = MP_MIN_REAL_VALUE;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        lo = std::min(lo, cp->get_ordinate() - _half_width);
        hi = std::max(hi, cp->get_ordinate() + _half_width);
    }
}

void Channel::get_bounding_box(Point2D& min, Point2D& max) const
{
    min = _bbox_min;
    max = _bbox_max;
}

void Channel::update_bounding_box()
{
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        _bbox_min.reset(std::min(_bbox_min.get_abscissa(), cp->get_abscissa()),
                        std::min(_bbox_min.get_ordinate(), cp->get_ordinate()));
        _bbox_max.reset(std::max(_bbox_max.get_abscissa(), cp->get_abscissa()),
                        std::max(_bbox_max.get_ordinate(), cp->get_ordinate()));
    }
    reset_caches();
}

void Channel::update_min_max_elevations()
{
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        _min_elevation = std::min(_min_elevation, cp->get_elevation());
        _max_elevation = std::max(_max_elevation, cp->get_elevation());
    }
}

void Channel::reset_caches()
{
    _mean_u1 = MP_MAX_REAL_VALUE;
    _segments_length = MP_MAX_REAL_VALUE;
    _nb_segments = MP_UNDEF_INT;
}

void Channel::vertices(std::vector<double>& v) const
{
    v.clear();
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        v.push_back(cp->get_abscissa());
        v.push_back(cp->get_ordinate());
    }
}

void Channel::velocity_perturbations(std::vector<double>& v) const
{
    v.clear();
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        v.push_back(cp->getFlowU1());
}

void Channel::border_vertices_2D(std::vector<Point2D>& out) const
{
    out.clear();
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        out.push_back(left_bank_2D(cp));
        out.push_back(right_bank_2D(cp));
    }
}

void Channel::border_vertices_2D(std::vector<double>& out) const
{
    out.clear();
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        for (const Point2D& bank : {left_bank_2D(cp), right_bank_2D(cp)})
        {
            out.push_back(bank.get_abscissa());
            out.push_back(bank.get_ordinate());
        }
}

void Channel::border_vertices_3D(int n, std::vector<double>& out, double z) const
{
    out.clear();
    const int step = std::max(1, n);
    int i = 0;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next(), i++)
    {
        if (i % step != 0 && cp != _last)
            continue;
        for (const Point2D& bank : {left_bank_2D(cp), right_bank_2D(cp)})
        {
            out.push_back(bank.get_abscissa());
            out.push_back(bank.get_ordinate());
            out.push_back(cp->get_elevation() + z);
        }
    }
}

void Channel::add_well(iChannelWell* w)
{
    _wells.push_back(w);
}

// The wells steer with the channel's present size and the main flow direction.
void Channel::update_well_config()
{
    const iParameters& params = *_mc->parameters();
    const double angle = MeanderCalculator::relative_flow_direction(params.getParamDouble("DOMAIN_GRID_DIR"),
                                                                    params.getParamDouble("CHNL_FLW_DIR"));
    const WellConfig config = WellConfig::from_parameters(params, std::cos(angle), std::sin(angle));
    for (iChannelWell* w : _wells)
        w->set_well_config(config);
}

void Channel::erase_well(iChannelWell* w)
{
    const auto found = std::find(_wells.begin(), _wells.end(), w);
    if (found != _wells.end())
        _wells.erase(found);
}

bool Channel::sinuo_occurs(unsigned int iter, const Domain*) const
{
    const unsigned int interval = _mc->parameters()->sinuoInterval();
    if (interval == 0)
        return false;
    return (iter - 1U - _birth_iter) % interval == 0;
}

// ---------------------------------------------------------------- text forms

bool Channel::check_centerline(std::string& report) const
{
    std::ostringstream text;
    int errors = 0;
    bool passed = _hmean < 1000.;
    const double close_limit = 0.5 * _half_width;
    const double far_limit = 1.5 * _half_width;
    int i = 1;
    for (const ChannelPoint* p1 = _first; p1 != nullptr && p1->next() != nullptr; p1 = p1->next(), i++)
    {
        const ChannelPoint* p2 = p1->next();
        const double d = p1->distance2D(*p2);
        if (d < close_limit)
        {
            describe_pair(text, i, p1, p2, " too close: ", d, "<", close_limit);
            errors++;
        }
        else if (d > far_limit)
        {
            describe_pair(text, i, p1, p2, " too far: ", d, ">", far_limit);
            errors++;
            if (d >= 10000.)
                passed = false;
        }
    }
    if (!text.str().empty())
    {
        std::ostringstream out;
        out << "Errors detected while checking centerline: " << errors << "\n" << text.str();
        report = out.str();
    }
    return passed;
}

std::string Channel::trace(const std::string& title, bool all_points) const
{
    std::ostringstream out;
    if (title.empty())
        out << "  Trace Channel:\n";
    else
        out << "  Trace Channel (" << title << "):\n";
    out << "    Half-width: " << _half_width << "\n";
    out << "    Slope: " << _slope << "\n";
    out << "    Initial mean depth: " << _hmean0 << "\n";
    out << "    Initial flow (straight): " << _flow0 << "\n";
    out << "    Initial flow velocity (straight): " << _velocity0 << "\n";
    out << "    Friction coefficient: " << _cf << "\n";
    out << "    Current mean depth: " << _hmean << "\n";
    out << "    Current mean flow velocity: " << _velocity << "\n";
    if (all_points)
    {
        int i = 1;
        for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next(), i++)
            out << "    [" << i << "] " << cp->get_string_descr() << "\n";
    }
    std::string report;
    check_centerline(report);
    out << report;
    return out.str();
}

// ---------------------------------------------------------------- exchange form

void Channel::to_centerline(const GridParams& geom, Centerline& centerline) const
{
    centerline.clear();
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
    {
        const Point2D geo = geom.rel2Geo(*cp);
        centerline.add(geo.get_abscissa(), geo.get_ordinate(), cp->get_elevation());
    }
}

void Channel::from_centerline(const Centerline& centerline, const GridParams& geom,
                              std::vector<Point3D>& points)
{
    points.clear();
    for (int i = 0; i < centerline.size(); i++)
    {
        double x = 0.;
        double y = 0.;
        double z = MP_UNDEF_REAL;
        centerline.get_at(i, x, y, z);
        points.emplace_back(geom.geo2Rel(Point2D(x, y)), z);
    }
}
