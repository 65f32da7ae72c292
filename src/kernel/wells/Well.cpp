#include "kernel/wells/Well.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/channel/ChannelPoint.h"
#include "kernel/common/Assert.h"
#include "kernel/common/BinaryDump.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/UserClassList.h"
#include "kernel/geometry/GridParams.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

namespace
{
constexpr double GAUSS_SCALE = 1.73;
// Share of the channel depth that a live channel can still scour below its top.
constexpr double SCOUR_SHARE = 0.98;
// Share of the channel depth of basement that may stand under the log's bottom.
constexpr double BASEMENT_SLACK = 0.1;
// Largest number of wells one record may announce.
constexpr int32_t MAX_LINKED_WELLS = 1 << 16;

std::string text_of(double value)
{
    std::ostringstream s;
    s << value;
    return s.str();
}
} // namespace

Well::Well(iParameters* parameters, iTracer* tracer, Well* parent)
    : WellUnitCollection(0.), _parameters(parameters), _tracer(tracer), _parent(parent)
{
    if (parent != nullptr)
        _config = parent->_config;
}

Well::~Well()
{
    if (_channelPoint != nullptr && _channelPoint->well() == this)
        _channelPoint->well(nullptr);
}

void Well::init(const Point2D& geoLocation, const Point2D& location)
{
    _location_geo = geoLocation;
    _location = location;
    _ab = 0;
    _al = _zbot;
    _zdom = _zbot;
    update_ab_limits();
}

bool Well::init_facies(const Core& core)
{
    if (core.empty())
        return false;
    clear_units(geo_to_rel(core.bottom_elevation()));
    const std::vector<CoreSample>& samples = core.getSamples();
    for (auto s = samples.rbegin(); s != samples.rend(); ++s)
        add_unit(WellUnit(Facies(s->getFacies()), s->getHeight(), s->getAge()));
    if (_name == "Unknown" && !core.getName().empty())
        _name = core.getName();
    init(core.top_location(), _location);
    return true;
}

bool Well::apply_user_class_list(const UserClassList& classes, iTracer* tracer, Core& core)
{
    if (core.isStandardFacies())
        return true;
    const int matched = classes.apply(core);
    if (matched == 0 && tracer != nullptr)
        tracer->warning("No sample of well " + core.getName() + " matches a user class");
    return matched > 0;
}

bool Well::load(iParameters* parameters, iTracer* tracer, const std::string& name, const Core& core,
                const UserClassList& classes, const GridParams& grid, double zref, int number,
                CoreList* others)
{
    _parameters = parameters;
    _tracer = tracer;
    _name = !name.empty() ? name : (!core.getName().empty() ? core.getName() : std::string("Unknown"));
    Core log(core);
    log.setName(_name);
    log.setTracer(tracer);
    apply_user_class_list(classes, tracer, log);
    if (!log.isVertical())
    {
        CoreList pieces;
        if (!log.split(grid, pieces) || pieces.empty())
        {
            if (tracer != nullptr)
                tracer->error("Cannot split deviated well " + _name);
            return false;
        }
        log = pieces.at(0);
        for (int k = 1; others != nullptr && k < pieces.size(); ++k)
            others->add(pieces.at(k));
    }
    log.concatenate(true);
    log.trim();
    set_zref(zref);
    clear_units(0.);
    if (log.empty())
    {
        if (tracer != nullptr)
            tracer->warning("Empty well ignored #" + std::to_string(number) +
                            "\nDid you forget to define user classes?");
        return false;
    }
    if (!log.is_top_inside(grid))
    {
        if (tracer != nullptr)
        {
            std::ostringstream text;
            text << "Well " << _name << " head at [" << log.top_location().get_abscissa() << ", "
                 << log.top_location().get_ordinate() << ", " << log.top_elevation()
                 << "]m is not inside the grid!";
            tracer->error(text.str());
        }
        return false;
    }
    _location = grid.geo2Rel(log.top_location());
    init_facies(log);
    if (tracer != nullptr && tracer->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << "Well " << _name << " loaded with " << _units.size() << " deposition units ["
             << rel_to_geo(_zbot) << ", " << rel_to_geo(_ztop) << "] (Height = " << height() << ")";
        tracer->debug(text.str());
    }
    return true;
}

void Well::set_column(const DepositionSet* column)
{
    _column = column;
    for (const auto& child : _children)
        child->set_column(column);
}

void Well::resetFrom(const Well& well)
{
    WellUnitCollection::operator=(well);
    _name = well._name;
    _al = well._al;
    _ab = well._ab;
    _botab = well._botab;
    _topab = well._topab;
    _zdom = well._zdom;
    _wet = well._wet;
    _config = well._config;
    _column = nullptr;
    channel_point(nullptr);
    _children.clear();
    for (const auto& child : well._children)
        new_child()->resetFrom(*child);
}

void Well::to_core(Core& core) const
{
    core.clear();
    core.setName(_name);
    core.setVertical(true);
    core.setStandardFacies(true);
    core.set_top_location(_location_geo);
    core.set_top_elevation(rel_to_geo(_ztop));
    for (auto u = _units.rbegin(); u != _units.rend(); ++u)
    {
        CoreSampleTags tags;
        tags.age = u->age();
        core.add(u->facies().family(), u->thickness(), tags);
    }
}

Well* Well::new_child()
{
    _children.push_back(std::make_unique<Well>(_parameters, _tracer, this));
    return _children.back().get();
}

void Well::add_child(std::unique_ptr<Well> child)
{
    MP_ASSERT(child != nullptr);
    child->_parent = this;
    child->_config = _config;
    _children.push_back(std::move(child));
}

std::vector<std::unique_ptr<Well>> Well::release_children()
{
    std::vector<std::unique_ptr<Well>> children;
    children.swap(_children);
    for (auto& child : children)
        child->_parent = nullptr;
    return children;
}

void Well::set_well_config(const WellConfig& config)
{
    _config = config;
    for (auto& child : _children)
        child->set_well_config(config);
}

void Well::set_wet(bool wet)
{
    const bool dried = _wet && !wet;
    _wet = wet;
    if (dried)
        catch_up();
    for (auto& child : _children)
        child->set_wet(wet);
}

bool Well::all_honored() const
{
    if (!is_finished())
        return false;
    for (const auto& child : _children)
        if (!child->all_honored())
            return false;
    return true;
}

void Well::set_zul_rel(double z)
{
    VCollection::set_zul_rel(z);
    for (auto& child : _children)
        child->set_zul_rel(z);
}

void Well::set_zul_geo(double z)
{
    VCollection::set_zul_geo(z);
    for (auto& child : _children)
        child->set_zul_geo(z);
}

void Well::set_zref(double zref)
{
    VCollection::set_zref(zref);
    for (auto& child : _children)
        child->set_zref(zref);
}

void Well::set_flat_delta(double delta)
{
    const double shift = _flat_delta - delta;
    _al += shift;
    _botab += shift;
    _topab += shift;
    _zdom += shift;
    VCollection::set_flat_delta(delta);
    for (auto& child : _children)
        child->set_flat_delta(delta);
}

// ---------------------------------------------------------------- channel point

void Well::channel_point(ChannelPoint* point)
{
    ChannelPoint* old = _channelPoint;
    _channelPoint = nullptr;
    // The point left behind keeps no factor of ours.
    if (old != nullptr && old != point && old->well() == this)
        old->reset_status();
    if (point == nullptr)
        return;
    const double factor = correct_mig(*point);
    point->mig_factor(factor);
    point->status(factor > 1. ? POINT_SPEEDED_UP : (factor < 1. ? POINT_SLOWED_DOWN : POINT_FREE));
    point->well(this);
    _channelPoint = point;
}

// ---------------------------------------------------------------- small functions

double Well::repulsion_factor(double v, double lim1, double lim2)
{
    MP_ASSERT(lim1 <= lim2);
    if (v < lim1)
        return 0.;
    if (v >= lim2)
        return 1.;
    return (v - lim1) / (lim2 - lim1);
}

double Well::attraction_factor(double v, double lim1, double lim2)
{
    return 1. + repulsion_factor(v, lim1, lim2);
}

double Well::gauss_cov(double h, double range)
{
    const double x = GAUSS_SCALE * h / range;
    return std::exp(-x * x);
}

void Well::channel_bottom(double z, double& zb, double& z98) const
{
    zb = z - _config.channelDepth;
    z98 = z - SCOUR_SHARE * _config.channelDepth;
}

double Well::above_active_level(double z) const
{
    return (z - _al) / _config.channelDepth;
}

void Well::update_ab_limits()
{
    if (is_finished())
    {
        _ab = _units.size();
        _botab = _ztop;
        _topab = _ztop;
        return;
    }
    _botab = brick_bottom(_ab);
    _topab = _botab + _units[_ab].thickness();
}

void Well::next_ab()
{
    if (is_finished())
        return;
    ++_ab;
    update_ab_limits();
}

void Well::prev_ab()
{
    if (_ab == 0)
        return;
    --_ab;
    update_ab_limits();
}

bool Well::set_al(double z)
{
    // A level on a brick's top already belongs to the brick above: the one below is honoured.
    while (!is_finished() && z >= _topab - MP_EPSILON)
        next_ab();
    while (_ab > 0 && z < _botab - MP_EPSILON)
        prev_ab();
    if (is_finished())
    {
        _al = _ztop;
        return true;
    }
    if (z < _zbot)
    {
        _al = _zbot;
        return true;
    }
    _al = std::min(std::max(z, _botab), _topab);
    MP_ASSERT_TEXT(_al >= _botab && _al <= _topab, "_al >= _botab || _al <= _topab");
    return false;
}

void Well::distance(const Point2D& point, double& a, double& b, double& absa, double& absb, double& d,
                    double& e) const
{
    const double px = point.get_abscissa() - _location.get_abscissa();
    const double py = point.get_ordinate() - _location.get_ordinate();
    a = _config.flowX * px + _config.flowY * py;
    b = _config.flowX * py - _config.flowY * px;
    absa = std::fabs(a);
    absb = std::fabs(b);
    d = std::sqrt(px * px + py * py);
    e = std::sqrt(4. * b * b + a * a);
}

// ---------------------------------------------------------------- the log's demands

Facies Well::nature(std::size_t brick) const
{
    if (brick >= _units.size())
        return Facies();
    const Facies own = _units[brick].facies();
    if (_config.closure <= 0.)
        return own;
    // A channel-fill brick thinner than the threshold under another channel fill
    // cannot be told apart by the simulation: it asks for what its upper neighbour asks.
    if (own.is_erodable() && _units[brick].thickness() < _config.closure && brick + 1 < _units.size() &&
        _units[brick + 1].facies().is_erodable())
        return nature(brick + 1);
    if (own.is_sand())
        return own;
    // A thin run of non-sands between two sands is a gap the simulation may close.
    std::size_t lo = brick;
    while (lo > 0 && !_units[lo - 1].facies().is_sand())
        --lo;
    std::size_t hi = brick;
    while (hi + 1 < _units.size() && !_units[hi + 1].facies().is_sand())
        ++hi;
    if (lo == 0 || hi + 1 >= _units.size())
        return own;
    double run = 0.;
    for (std::size_t k = lo; k <= hi; ++k)
        run += _units[k].thickness();
    return run < _config.closure ? Facies() : own;
}

double Well::avoidance(double z98, double z) const
{
    if (_units.empty())
        return 0.;
    std::size_t k = is_finished() ? _units.size() - 1 : _ab;
    while (k > 0 && nature(k).is_erodable() && brick_bottom(k) > z98)
        --k;
    if (nature(k).is_erodable())
        return 0.;
    const double r = (z - brick_top(k)) / _config.channelDepth;
    const double half = 0.5 * _config.channelWidth;
    if (r < 0.)
        return half;
    if (r < 1.)
        return half * std::sqrt(1. - r);
    return 0.;
}

double Well::gap_up(double zb, double z) const
{
    const double reach = z + 0.5 * _config.channelDepth;
    for (std::size_t k = _ab; k < _units.size(); ++k)
    {
        const double bottom = brick_bottom(k);
        if (bottom > reach)
            break;
        // Bricks the channel bottom no longer reaches are out of its way.
        if (brick_top(k) <= zb)
            continue;
        const Facies n = nature(k);
        if (!n.is_erodable() && !n.is_neutral())
            return bottom - z;
    }
    return 2. * _config.channelDepth;
}

void Well::require_new_algo() const
{
    MP_ASSERT_TEXT(_parameters->usingCondNewAlgo(), "COND_WELLS_NEW_ALGO == 1");
}

// ---------------------------------------------------------------- steering

double Well::correct_mig(const Point3D& point) const
{
    if (!_parameters->usingCondMigWells())
        return 1.;
    require_new_algo();
    const double z = point.get_elevation();
    double zb = 0., z98 = 0.;
    channel_bottom(z, zb, z98);
    if (_zbot > z || (is_finished() && zb > _ztop))
        return 1.;
    double a, b, absa, absb, d, e;
    distance(point, a, b, absa, absb, d, e);
    const double W = _config.channelWidth;
    const double db = d - 0.5 * W;
    if (db > _config.influence)
        return 1.;
    const Facies nat = ab_nature();
    if (!is_finished() && _wet)
        return nat.is_erodable() ? 1. : 2.;
    if (nat.is_fine())
        return repulsion_factor(db, 2. * W, 6. * W);
    if (nat.is_splay_or_levee())
    {
        if (db < 2.5 * W)
            return repulsion_factor(db, 1.5 * W, 2.5 * W);
        const double lv = 0.75 * _config.leveeWidth;
        if (db < _config.influence && db > lv)
            return attraction_factor(db, lv, _config.leveeWidth);
        return 1.;
    }
    const double av = _al > z98 ? avoidance(z98, z) : 0.;
    if (av > db * std::sqrt(2.))
        return 0.;
    if (is_finished() || nat.is_neutral())
        return 1.;
    if (nat.is_plug() && _wet)
        return 0.5;
    const double g = gap_up(zb, z);
    const double t = _parameters->usingTurbi() || _parameters->usingLobes() ? 2.8000000000000003 : 0.2;
    if (g < t)
        return 2. - repulsion_factor(g, 0.1, 0.2);
    const double r = above_active_level(z);
    if (r > 0.735)
        return attraction_factor(r, 0.735, 0.98);
    return 1.;
}

double Well::correct_avl(const Point3D& point, bool* local, bool* regional, bool* aggradationOk) const
{
    if (aggradationOk != nullptr)
        *aggradationOk = true;
    if (local != nullptr)
        *local = false;
    if (regional != nullptr)
        *regional = false;
    if (!_parameters->usingCondAvWells())
        return 0.;
    require_new_algo();
    const double z = point.get_elevation();
    double zb = 0., z98 = 0.;
    channel_bottom(z, zb, z98);
    if (_zbot > z || (is_finished() && zb > _ztop))
        return 0.;
    double a, b, absa, absb, d, e;
    distance(point, a, b, absa, absb, d, e);
    const Facies nat = ab_nature();
    if (!is_finished() && _wet && !nat.is_erodable() && !nat.is_neutral() && aggradationOk != nullptr)
        *aggradationOk = false;
    const double W = _config.channelWidth;
    if (nat.is_fine())
        return -gauss_cov(e, 11. * W);
    if (nat.is_splay_or_levee())
        return 0.1 * gauss_cov(e, 12. * W) - 1.1 * gauss_cov(e, 4. * W);
    const double av = _al > z98 ? avoidance(z98, z) : 0.;
    if (av > d)
        return -2.;
    if (is_finished() || nat.is_neutral())
        return 0.;
    const double g = gap_up(zb, z);
    const double r = above_active_level(z);
    const bool asked = local != nullptr || regional != nullptr;
    const bool deep = _parameters->usingTurbi() || _parameters->usingLobes();
    // The attached point asks for a local avulsion only when it is near enough to matter.
    const auto ask_avulsion = [&]()
    {
        if (local != nullptr)
            *local =
                _channelPoint == nullptr || _channelPoint->Point2D::distance(_location) < _config.influence;
        if (regional != nullptr)
            *regional = true;
    };
    if (_parameters->usingCondAvMP() && asked && _wet && nat.is_plug())
        ask_avulsion();
    if (asked)
    {
        const double t = deep ? 0.7000000000000001 : 0.05;
        if (g < t || r > 0.9555)
        {
            if (aggradationOk != nullptr)
                *aggradationOk = false;
            if (!_wet)
                ask_avulsion();
            if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
                _tracer->debug(_name + ": above_al(" + text_of(r) + ") > CDR*0.975");
        }
    }
    const double t2 = deep ? 1.4000000000000001 : 0.1;
    if (g >= t2 && r <= 0.875 * 0.98)
    {
        if (r > 0.735)
        {
            const double x = GAUSS_SCALE * absb / (4. * W + absa);
            return r / 2. * std::exp(-x * x);
        }
        return 0.;
    }
    // A sinuous corridor along the flow through the well.
    const double x = (W * std::cos(6.2831853 * a / (20. * W)) + b - W) * GAUSS_SCALE / (4. * W + absa);
    return std::exp(-x * x);
}

// ---------------------------------------------------------------- questions

template <typename Answer> bool Well::any_linked(Answer answer) const
{
    if (answer(*this))
        return true;
    for (const auto& child : _children)
        if (answer(*child))
            return true;
    return false;
}

namespace
{
struct Answers
{
    bool local = false;
    bool regional = false;
    bool aggradationOk = true;
};

// All three questions are asked at once, as the search of a course asks them.
Answers ask(const Well& w)
{
    Answers answers;
    w.correct_avl(Point3D(w.location(), w.zdom()), &answers.local, &answers.regional, &answers.aggradationOk);
    return answers;
}
} // namespace

bool Well::aggrade_ok() const
{
    return ask(*this).aggradationOk;
}

bool Well::reg_avulsion() const
{
    return ask(*this).regional;
}

bool Well::loc_avulsion() const
{
    return ask(*this).local;
}

bool Well::want_reg_avulsion() const
{
    return any_linked([](const Well& w) { return w.reg_avulsion(); });
}

bool Well::want_loc_avulsion() const
{
    return any_linked([](const Well& w) { return w.loc_avulsion(); });
}

bool Well::block_aggradation() const
{
    if (!_parameters->usingCondNewAlgo())
        return false;
    return any_linked([](const Well& w) { return !w.aggrade_ok(); });
}

bool Well::block_avulsion() const
{
    if (!_parameters->usingCondBlockAv())
        return false;
    return any_linked([](const Well& w) { return w.wet_and_sandy_ab(); });
}

bool Well::wet_and_sandy_ab() const
{
    return _wet && ab_nature().is_sand();
}

// ---------------------------------------------------------------- following the column

void Well::trace_case(const std::string& label, double zt) const
{
    if (_tracer == nullptr || !_tracer->traceLevel(TRACE_DEBUG))
        return;
    _tracer->debug(_name + ": Dep. Case " + label + " al=" + text_of(_al) + " zdom=" + text_of(_zdom) +
                   " zdep=" + text_of(zt));
}

bool Well::column_agrees(const DepositionSet* column, double z1, double z2) const
{
    if (z2 <= z1 + MP_EPSILON)
        return true;
    if (column == nullptr)
        return false;
    const std::vector<DepositionUnit>& units = column->units();
    double top = column->get_ztop();
    for (auto u = units.rbegin(); u != units.rend() && top > z1 + MP_EPSILON; ++u)
    {
        const double bottom = top - u->thickness();
        const double lo = std::max(bottom, z1);
        const double hi = std::min(top, z2);
        for (std::size_t k = brick_at(lo); hi > lo + MP_EPSILON && k < _units.size(); ++k)
        {
            if (brick_bottom(k) >= hi - MP_EPSILON)
                break;
            if (!agrees(u->facies(), u->thickness(), nature(k)))
                return false;
        }
        top = bottom;
    }
    // Below the units lies the basement. A thin slice of it under the log is
    // the scour the channel did not reach this time, and agrees like a neutral deposit.
    return top <= z1 + MP_EPSILON + BASEMENT_SLACK * _config.channelDepth;
}

bool Well::agrees(const Facies& facies, double thickness, const Facies& asked) const
{
    if (facies.is_neutral() || asked.is_neutral() || facies == asked)
        return true;
    // A lag or a sliver of bar thinner than the closure inside the sands of a
    // channel body is the base of the next bar, as a log could not tell apart.
    return _config.closure > 0. && thickness < _config.closure && facies.is_channel_sand() &&
           asked.is_channel_sand();
}

void Well::avoid_scour(double zt, double wd)
{
    if (!_wet || is_finished())
        return;
    const double limit = zt + wd - SCOUR_SHARE * _config.channelDepth;
    if (_al > limit + MP_EPSILON)
    {
        set_al(std::max(limit, _zbot));
        trace_case("F1", zt);
    }
    else
        trace_case("F2", zt);
}

void Well::deposit(const Facies& facies, double th, double zb, double wd, const DepositionSet* column)
{
    const double zt = zb + th;
    _zdom = zt;
    if (column != nullptr)
        _column = column;
    try
    {
        MP_ASSERT_TEXT((wd > 0. && is_wet()) || !is_wet(), "(wd > 0. && is_wet()) || !is_wet()");
        deposit_cases(facies, zb, zt, column);
        avoid_scour(zt, wd);
    }
    catch (const std::string& text)
    {
        if (_tracer != nullptr)
            _tracer->trace("### FATAL ### : " + text + "\n", TRACE_FATAL);
    }
    for (auto& child : _children)
        child->deposit(facies, th, zb, wd, column);
}

void Well::deposit_cases(const Facies& facies, double zb, double zt, const DepositionSet* column)
{
    if (zt <= zb + MP_EPSILON)
        return trace_case("E", zt);
    if (is_finished())
        return trace_case("G0", zt);
    if (zt <= _zbot + MP_EPSILON)
        return trace_case("G1", zt);
    if (zt > _ztop + MP_EPSILON)
    {
        set_al(_ztop);
        trace_case("G2", zt);
        if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
            _tracer->debug(debug());
        return;
    }
    if (zb < _zbot)
    {
        zb = _zbot;
        trace_case("D", zt);
    }
    if (zt <= _al + MP_EPSILON)
        return trace_case("G3", zt);
    if (zb < _al - MP_EPSILON)
    {
        zb = _al;
        trace_case("C", zt);
    }
    if (zb > _al + MP_EPSILON)
    {
        // What lies between the level and the deposit must agree before the level may pass it.
        if (!column_agrees(column, _al, zb))
            return trace_case("A4", zt);
        set_al(zb);
        trace_case("A3", zt);
        if (is_finished())
            return;
    }
    deposit_from_level(facies, zt);
}

void Well::deposit_from_level(const Facies& facies, double zt)
{
    if (facies.is_neutral())
    {
        trace_case("H1 or H2 for neutral deposit", zt);
        const bool inside = zt < _topab - MP_EPSILON;
        set_al(zt);
        return trace_case(inside ? "H1" : "H2", zt);
    }
    const double thickness = zt - _al;
    while (!is_finished() && zt > _al + MP_EPSILON)
    {
        const Facies nat = ab_nature();
        if (nat.is_neutral())
        {
            set_al(std::min(zt, _topab));
            trace_case("H3", zt);
            continue;
        }
        if (!agrees(facies, thickness, nat))
            return trace_case(_wet ? "B2" : "B1", zt);
        if (zt < _topab + MP_EPSILON)
        {
            set_al(zt);
            return trace_case("A1", zt);
        }
        set_al(_topab);
        if (is_finished())
            return trace_case("A2a", zt);
        if (!agrees(facies, thickness, ab_nature()))
            return trace_case("A2b", zt);
        trace_case("A2a", zt);
    }
}

void Well::erode_up_to(double z, double depth)
{
    if (z > _zdom)
        _zdom = z;
    if (z > _al && z < _ztop)
        set_al(z);
    for (auto& child : _children)
        child->erode_up_to(z, depth);
}

bool Well::climb_while_agreeing(const DepositionSet* column, double z)
{
    const double start = _al;
    // Brick by brick, as far as the column agrees with the log.
    while (!is_finished() && z > _al + MP_EPSILON)
    {
        const double step = std::min(z, _topab);
        if (!column_agrees(column, _al, step))
            break;
        set_al(step);
    }
    return _al > start + MP_EPSILON;
}

void Well::catch_up()
{
    if (_column == nullptr || is_finished())
        return;
    if (climb_while_agreeing(_column, std::min(_column->get_ztop(), _ztop)) && _tracer != nullptr &&
        _tracer->traceLevel(TRACE_DEBUG))
        _tracer->debug(_name + ": Dry level catches up al=" + text_of(_al) + " zdom=" + text_of(_zdom));
}

void Well::erode_down_to(double z, double depth, const DepositionSet* column)
{
    _zdom = z;
    if (column != nullptr)
        _column = column;
    if (z < _al - MP_EPSILON)
    {
        set_al(z);
        if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
            _tracer->debug(_name + ": Ero. level falls al=" + text_of(_al) + " zdom=" + text_of(_zdom));
    }
    else if (!is_finished() && z > _al + MP_EPSILON && climb_while_agreeing(column, std::min(z, _ztop)))
    {
        // The erosion took away what contradicted the log: the level catches up.
        if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
            _tracer->debug(_name + ": Ero. level catches up al=" + text_of(_al) + " zdom=" + text_of(_zdom));
    }
    if (_wet && !is_finished() && depth > 0.)
    {
        const double limit = z + depth - SCOUR_SHARE * _config.channelDepth;
        if (_al > limit + MP_EPSILON)
            set_al(std::max(limit, _zbot));
    }
    for (auto& child : _children)
        child->erode_down_to(z, depth, column);
}

// ---------------------------------------------------------------- dump

void Well::output_record(std::ostream& out) const
{
    dump::write_text(out, _name);
    dump::write(out, _location_geo.get_abscissa());
    dump::write(out, _location_geo.get_ordinate());
    dump::write(out, _location.get_abscissa());
    dump::write(out, _location.get_ordinate());
    dump::write(out, _al);
    dump::write(out, _botab);
    dump::write(out, _topab);
    dump::write(out, static_cast<int32_t>(_ab));
    dump::write(out, _zdom);
    dump::write(out, static_cast<unsigned char>(_wet ? 1 : 0));
    WellUnitCollection::binary_output(out);
}

bool Well::input_record(std::istream& in)
{
    double gx, gy, x, y, botab, topab;
    int32_t ab = 0;
    unsigned char wet = 0;
    if (!dump::read_text(in, _name) || !dump::read(in, gx) || !dump::read(in, gy) || !dump::read(in, x) ||
        !dump::read(in, y) || !dump::read(in, _al) || !dump::read(in, botab) || !dump::read(in, topab) ||
        !dump::read(in, ab) || !dump::read(in, _zdom) || !dump::read(in, wet) ||
        !WellUnitCollection::binary_input(in))
        return false;
    if (ab < 0 || static_cast<std::size_t>(ab) > _units.size())
        return false;
    _location_geo = Point2D(gx, gy);
    _location = Point2D(x, y);
    _wet = wet != 0;
    _ab = static_cast<std::size_t>(ab);
    update_ab_limits();
    const bool trace = _tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG);
    if (std::fabs(botab - _botab) > MP_EPSILON && trace)
        _tracer->debug(_name + ": well::binary_input_well(): bottom of active brick " + text_of(botab) +
                       " doesn't match current active brick [" + text_of(_botab) + ", " + text_of(_topab) +
                       "]");
    if ((_al < _botab - MP_EPSILON || _al > _topab + MP_EPSILON) && trace)
        _tracer->debug(_name + ": well::binary_input_well(): active level " + text_of(_al) +
                       " out of active brick [" + text_of(_botab) + ", " + text_of(_topab) + "]");
    set_al(_al);
    return true;
}

void Well::binary_output(std::ostream& out) const
{
    dump::write(out, static_cast<int32_t>(1 + _children.size()));
    output_record(out);
    for (const auto& child : _children)
        child->output_record(out);
}

bool Well::binary_input(std::istream& in)
{
    _children.clear();
    int32_t count = 0;
    bool ok = dump::read(in, count) && count >= 1 && count <= MAX_LINKED_WELLS && input_record(in);
    for (int32_t k = 1; ok && k < count; ++k)
        ok = new_child()->input_record(in);
    if (!ok && _tracer != nullptr)
        _tracer->error("Binary well file format not correct for well " + _name);
    return ok;
}

std::string Well::debug() const
{
    std::ostringstream s;
    s << "Well " << _name << " al=" << _al << " brick " << _ab << "/" << _units.size() << " [" << _botab
      << ", " << _topab << "]";
    if (is_finished())
        s << " >> Well honored <<\n";
    return s.str();
}
