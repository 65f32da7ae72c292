#include "kernel/network/Network.h"
#include "NetworkSupport.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/channel/Centerline.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <cmath>
#include <cstring>
#include <new>
#include <sstream>

using network_support::delete_chain;

namespace
{
// Parameters that a change of channel scale multiplies.
const char* const SCALED_PARAMS[] = {
    "CHNL_WIDTH", "CHNL_MAX_DEPTH", "CHNL_WAVELENGTH", "EROD_COEF",           "AG_OB_CONST",
    "AG_OB_MIN",  "AG_OB_MAX",      "AG_OB_NORM_MEAN", "AG_OB_LOGNORM_STDEV", "AG_LV_WIDTH"};

// Turns a chain around in place and gives its new head.
ChannelPoint* reverse_chain(ChannelPoint* head)
{
    ChannelPoint* cp = head;
    ChannelPoint* new_head = head;
    while (cp != nullptr)
    {
        ChannelPoint* next = cp->next();
        cp->next(cp->prev());
        cp->prev(next);
        new_head = cp;
        cp = next;
    }
    return new_head;
}

ChannelPoint* chain_tail(ChannelPoint* head)
{
    ChannelPoint* cp = head;
    while (cp != nullptr && cp->next() != nullptr)
        cp = cp->next();
    return cp;
}

// Deletes the chain's head and gives the new head, unlinked.
ChannelPoint* drop_head(ChannelPoint* head)
{
    ChannelPoint* next = head->next();
    if (next != nullptr)
        next->prev(nullptr);
    head->next(nullptr);
    delete head;
    return next;
}
} // namespace

// ---------------------------------------------------------------------------
// Construction

Network::Network(MeanderCalculator* mc, iParameters* params, Domain* domain, SeedGenerator* seed,
                 MassBalance* mb, UniformDistributionGenerator* uniform)
    : _mc(mc), _params(params), _tracer(mc != nullptr ? mc->tracer() : nullptr), _domain(domain), _seed(seed),
      _mb(mb), _uniform(uniform)
{
    if (_tracer == nullptr && domain != nullptr)
        _tracer = domain->getTracer();
}

Network::~Network()
{
    delete_channel();
    end_ghost_migration();
    delete _ghost;
    _ghost = nullptr;
}

void Network::init_network()
{
    if (_domain == nullptr)
        return;
    update_slope_and_flow_direction();
    update_margins();
    if (_entry_points.empty())
        _entry_points.calculate(*_domain, _ch != nullptr);
}

void Network::clear()
{
    delete_channel();
    delete _ghost;
    _ghost = nullptr;
    _ghost_rise = 0.;
    _erode = true;
    _cg.reset();
    _amap.reset();
    _grid_points.clear();
    _grid_points_inputs.clear();
    _entry_points.clear();
    _iteration = 0;
    _margin = -1.;
    _margin_width = -1.;
    _scaled_params.clear();
    _scale = 1.;
    set_counters(0, 0, 0, 0, 0);
    _nb_floods = 0;
    _nb_splays = 0;
    _avulsion_iter_sum = 0;
    _last_avulsion_iter = 0;
    _last_flood_iter = 0;
    reset_first_cutoff();
    _ep_elevation = 100000.;
}

void Network::resetFrom(const Network& other)
{
    if (this == &other)
        return;
    clear();
    _iteration = other._iteration;
    if (other._ch != nullptr)
        _ch = new Channel(_mc, *other._ch, true);
    _erode = other._erode;
    _grid_points = other._grid_points;
    _grid_points_inputs.clear();
    _margin = other._margin;
    _margin_width = other._margin_width;
    _scaled_params = other._scaled_params;
    _scale = other._scale;
    set_counters(other._nb_cutoffs, other._nb_chute_cutoffs, other._nb_avulsions, other._nb_cutoffs_avuls,
                 other._nb_cutoffs_total);
    _nb_floods = other._nb_floods;
    _nb_splays = other._nb_splays;
    _avulsion_iter_sum = other._avulsion_iter_sum;
    _last_avulsion_iter = other._last_avulsion_iter;
    _last_flood_iter = other._last_flood_iter;
    set_first_cutoff(other._first_cutoff_iter, other._first_cutoff_time, other._first_cutoff_sinuosity,
                     other._first_cutoff_allen, other._first_cutoff_tortuosity,
                     other._first_cutoff_wavelength, other._first_cutoff_extension);
    _ep_elevation = other._ep_elevation;
    if (_domain != nullptr && !other._entry_points.empty())
        _entry_points.calculate(*_domain, _ch != nullptr);
    create_intersection_grid();
}

void Network::delete_channel()
{
    delete _ch;
    _ch = nullptr;
}

double Network::param(const char* name) const
{
    return _params->getParamDouble(name);
}

void Network::printout(const std::string& text) const
{
    if (_tracer == nullptr || !_tracer->traceLevel(TRACE_INFO))
        return;
    _tracer->info("Iteration " + std::to_string(_iteration) + " : " + text);
}

// ---------------------------------------------------------------------------
// Channel lifecycle

bool Network::create_channel(std::string& message)
{
    printout("Automatic channel creation");
    if (!construct_steepest_channel() || _ch == nullptr)
    {
        message = "Cannot construct initial route for the channel. Check your topography/erodibility file or "
                  "please, build the channel centerline manually!";
        return false;
    }
    channel_just_created();
    return true;
}

bool Network::load_centerline(const Centerline& centerline)
{
    if (_domain == nullptr)
        return false;
    try
    {
        _domain->compute_pseudo_topo(channel_max_depth(), *_uniform);
        std::vector<Point3D> points;
        Channel::from_centerline(centerline, *_domain, points);
        for (Point3D& p : points)
        {
            const Point2D g = _domain->getGridPointFromRel(p);
            p.set_elevation(_domain->get_topo_extrapolated(true, true, static_cast<int>(g.get_abscissa()),
                                                           static_cast<int>(g.get_ordinate())));
        }
        return install_channel(points);
    }
    catch (const std::bad_alloc&)
    {
        return creation_failed("Memory problem creating the centerline!");
    }
    catch (const std::string& text)
    {
        // An internal check's text says nothing of the file: it stays at debug level.
        if (_tracer != nullptr && text.find(" failed at [") != std::string::npos)
        {
            if (_tracer->traceLevel(TRACE_DEBUG))
                _tracer->debug(text);
            return creation_failed("The centerline (" + std::to_string(centerline.size()) +
                                   " points) cannot make a channel in the domain: it needs at least 2 points "
                                   "inside the domain");
        }
        return creation_failed(text);
    }
}

bool Network::load_centerline(const Point2D& point)
{
    if (_domain == nullptr)
        return false;
    try
    {
        // The point is given in the frame of the centerline files.
        const Point2D rel = _domain->geo2Rel(point);
        const Point2D g = _domain->getGridPointFromRel(rel);
        if (!_domain->isValid(static_cast<int>(g.get_abscissa()), static_cast<int>(g.get_ordinate())))
        {
            if (_tracer != nullptr)
                _tracer->error("Centerline point is not inside the domain!");
            return false;
        }
        _domain->compute_pseudo_topo(channel_max_depth(), *_uniform);
        const Vector2D f = _domain->get_flow_direction();
        const Point2D step = f * _domain->get_diagonal();
        ChannelPoint* join = nullptr;
        SteepestError error = STEEPEST_OK;
        const Point2D start = _domain->getGridPointFromRel(rel);
        ChannelPoint* down = find_new_course(rel, start, _domain->getGridPointFromRel(rel + step), join,
                                             error, nullptr, nullptr, false);
        ChannelPoint* up = nullptr;
        if (down != nullptr)
        {
            join = nullptr;
            error = STEEPEST_OK;
            up = find_new_course(rel, start, _domain->getGridPointFromRel(rel - step), join, error, nullptr,
                                 nullptr, true);
        }
        if (down == nullptr || up == nullptr)
        {
            delete_chain(down);
            delete_chain(up);
            if (_tracer != nullptr)
                _tracer->error("Cannot create the centerline from the given point!");
            return false;
        }
        // Upstream course, turned to run with the flow, then the point, then the downstream course.
        if (chain_tail(up)->distance2D(rel) > up->distance2D(rel))
            up = reverse_chain(up);
        if (down->distance2D(rel) > chain_tail(down)->distance2D(rel))
            down = reverse_chain(down);
        std::vector<Point3D> points;
        for (ChannelPoint* cp = up; cp != nullptr; cp = cp->next())
            if (cp->distance2D(rel) > 0.5 * _domain->get_diagonal())
                points.push_back(Point3D(*cp, cp->get_elevation()));
        points.push_back(Point3D(rel, Channel::bilinear_elevation(_domain, rel)));
        for (ChannelPoint* cp = down; cp != nullptr; cp = cp->next())
            if (cp->distance2D(rel) > 0.5 * _domain->get_diagonal())
                points.push_back(Point3D(*cp, cp->get_elevation()));
        delete_chain(down);
        delete_chain(up);
        return install_channel(points);
    }
    catch (const std::bad_alloc&)
    {
        return creation_failed("Memory problem creating the centerline!");
    }
    catch (const std::string& text)
    {
        return creation_failed(text);
    }
}

// Replaces the channel by one through these points, its ends held at the margins.
bool Network::install_channel(const std::vector<Point3D>& points)
{
    Channel* channel = new Channel(_mc, points);
    clear_channel();
    _ch = channel;
    manage_extremities(_ch);
    channel_just_created();
    return true;
}

bool Network::creation_failed(const std::string& text) const
{
    if (_tracer != nullptr)
        _tracer->error(text);
    return false;
}

bool Network::get_centerline(Centerline& centerline) const
{
    if (_ch == nullptr || _domain == nullptr)
        return false;
    _ch->to_centerline(*_domain, centerline);
    return true;
}

void Network::adopt_channel(Channel* channel)
{
    if (channel == _ch)
        return;
    delete_channel();
    _ch = channel;
}

void Network::clear_channel(AddPlug plug)
{
    if (_ch == nullptr)
        return;
    if (_domain != nullptr)
    {
        if (_params->usingDryChannel())
            _ch->abandon(_domain, _mb, _iteration, ADD_PLUG_NONE, -1.0);
        else
            _ch->abandon(_domain, _mb, _iteration, plug, 0.005);
    }
    delete_channel();
    _grid_points.clear();
    _grid_points_inputs.clear();
}

void Network::init_geom_and_flow(double hmax, double width, double wavelength, double slope)
{
    _ch->init_geom(hmax, width, wavelength, slope);
    _ch->birth_iter(_iteration);
    _ch->init_flow();
    _ch->update_flow_sinuosity();
}

// A channel that has just been given its points gets its spacing and flow,
// and the cells it covers, without laying any deposit yet.
void Network::channel_just_created()
{
    const double width = param("CHNL_WIDTH");
    const double hmax = param("CHNL_MAX_DEPTH");
    const double wavelength = param("CHNL_WAVELENGTH");
    const double slope = param("DOMAIN_SLOPE");
    if (_ch == nullptr || _domain == nullptr)
        return;
    init_geom_and_flow(hmax, width, wavelength, slope);
    create_intersection_grid();
    _ch->compute_velocity_perturbation();
    _ch->update_bounding_box();
    _ch->update_min_max_elevations();
    collect_wet_cells();
}

void Network::channel_points_created()
{
    const double width = param("CHNL_WIDTH");
    const double hmax = param("CHNL_MAX_DEPTH");
    const double wavelength = param("CHNL_WAVELENGTH");
    const double slope = param("DOMAIN_SLOPE");
    if (_ch != nullptr && _domain != nullptr)
        init_geom_and_flow(hmax, width, wavelength, slope);
    create_intersection_grid();
    channel_points_moved();
}

void Network::channel_points_moved()
{
    // A rebuilt end needs a new spacing, which comes back here; the depth
    // bounds a completion that would never settle.
    if (_moved_depth < 8 && manage_extremities(_ch))
    {
        ++_moved_depth;
        try
        {
            channel_points_created();
        }
        catch (...)
        {
            --_moved_depth;
            throw;
        }
        --_moved_depth;
        return;
    }
    check_intersections(_ch, false);
    if (_ch != nullptr)
    {
        if (_ch->sinuo_occurs(_iteration, _domain))
            _ch->update_flow_sinuosity();
        _ch->compute_velocity_perturbation();
        _ch->update_bounding_box();
        _ch->update_min_max_elevations();
    }
    if (_domain != nullptr)
        update_domain();
    collect_wet_cells();
}

// ---------------------------------------------------------------------------
// Ends of the channel

bool Network::manage_extremities(Channel* channel)
{
    if (channel == nullptr || _domain == nullptr)
        return false;
    const bool trace = _tracer != nullptr && _tracer->traceConstruct() && _tracer->traceLevel(TRACE_DEBUG);
    if (trace)
        _tracer->debug(channel->trace("Channel before extremities management", true));
    const bool up = complete_upstream(channel);
    const bool down = complete_downstream(channel);
    const bool removed = constrain_extremities(channel);
    if (trace)
        _tracer->debug(channel->trace("Channel after extremities management", true));
    return removed || up || down;
}

bool Network::constrain_extremities(Channel* channel)
{
    if (channel == nullptr || _domain == nullptr)
        return false;
    const Vector2D f = _domain->get_flow_direction();
    return channel->constrain_extremities(_domain->get_upstream_corner(), _domain->get_downstream_corner(),
                                          f.get_abscissa(), f.get_ordinate());
}

bool Network::beyond_margin(const Point2D& p, bool upstream) const
{
    const Vector2D f = _domain->get_flow_direction();
    if (upstream)
        return f.scalar(p - _domain->get_upstream_corner()) < 0.;
    return f.scalar(p - _domain->get_downstream_corner()) > 0.;
}

bool Network::complete_upstream(Channel* channel)
{
    return complete_end(channel, true);
}

bool Network::complete_downstream(Channel* channel)
{
    return complete_end(channel, false);
}

// Grows the end of the channel up (or down) the topography until it reaches
// the margin, so that the flow enters and leaves the domain through its margins.
bool Network::complete_end(Channel* channel, bool upstream)
{
    if (channel == nullptr || _domain == nullptr || channel->first() == nullptr)
        return false;
    const bool trace = _tracer != nullptr && _tracer->traceConstruct() && _tracer->traceLevel(TRACE_DEBUG);
    if (trace)
        _tracer->debug(upstream ? "   Channel Upstream Completion" : "   Channel Downstream Completion");

    ChannelPoint* p = upstream ? channel->first() : channel->last();
    ChannelPoint* q = upstream ? p->next() : p->prev();
    const Vector2D f = _domain->get_flow_direction();
    Vector2D d = upstream ? Vector2D(-f.get_abscissa(), -f.get_ordinate()) : f;
    if (q == nullptr)
    {
        if (_tracer != nullptr)
            _tracer->error("Not enough channel points!");
    }
    else if (p->distance2D(*q) == 0.)
    {
        if (_tracer != nullptr)
            _tracer->error((upstream ? "Channel first points are equal: first="
                                     : "Channel last points are equal: last=") +
                           p->debug());
    }
    else
        d = Vector2D(*q, *p);
    d.normalize();
    d *= _domain->get_diagonal();

    const Point2D here(*p);
    const Line2D& line = upstream ? _domain->get_upstream_line() : _domain->get_downstream_line();
    if (beyond_margin(here, upstream) || line.distance(here) < channel->half_width())
        return false;
    const Point2D ahead = here + d;
    if (beyond_margin(ahead, upstream))
        return false;

    const int mx = _domain->get_mx() == MP_UNDEF_INT ? 0 : _domain->get_mx();
    const int my = _domain->get_my() == MP_UNDEF_INT ? 0 : _domain->get_my();
    const double dx = _domain->getDx(), dy = _domain->getDy();
    RouteGrid route(dx, dy, _domain->getNx() + 2 * mx, _domain->getNy() + 2 * my, -mx * dx, -my * dy);
    route.initialize(std::pair<ChannelPoint*, ChannelPoint*>(nullptr, nullptr));
    channel->put_route_on_grid(route);

    ChannelPoint* join = nullptr;
    SteepestError error = STEEPEST_OK;
    ChannelPoint* path =
        find_new_course(here, _domain->getGridPointFromRel(here), _domain->getGridPointFromRel(ahead), join,
                        error, &route, channel, upstream);
    if (path == nullptr)
    {
        if (trace)
            _tracer->debug(
                (upstream ? "     Upstream Completion Failed: " : "     Downstream Completion Failed: ") +
                Domain::steepest_error(error));
        return false;
    }
    // The new points run away from the end; they are put in flow order, and a
    // point standing on the end itself is dropped.
    ChannelPoint* tail = chain_tail(path);
    if (upstream ? path->distance2D(here) < tail->distance2D(here)
                 : path->distance2D(here) > tail->distance2D(here))
        path = reverse_chain(path);
    if (upstream)
    {
        path = reverse_chain(path);
        while (path != nullptr && path->distance2D(here) < 0.5 * _domain->get_diagonal())
            path = drop_head(path);
        path = path != nullptr ? reverse_chain(path) : nullptr;
    }
    else
    {
        while (path != nullptr && path->distance2D(here) < 0.5 * _domain->get_diagonal())
            path = drop_head(path);
    }
    if (path == nullptr)
        return false;
    if (upstream)
        channel->prepend(path);
    else
        channel->append(path);
    return true;
}

// ---------------------------------------------------------------------------
// Updates from the parameters

void Network::update_channel()
{
    const double hmax = param("CHNL_MAX_DEPTH");
    const double width = param("CHNL_WIDTH");
    const double wavelength = param("CHNL_WAVELENGTH");
    const double slope = param("DOMAIN_SLOPE");
    if (_ch == nullptr || _domain == nullptr)
        return;
    if (hmax < 0.25 * channel_current_max_depth() || width < 0.25 * channel_width())
    {
        if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
            _tracer->debug("move_channel_down");
        _ch->move_channel_down(_domain, _mb, hmax);
    }
    _ch->init_geom(hmax, width, wavelength, slope);
    _ch->init_flow();
    _ch->update_flow_sinuosity();
    channel_points_moved();
}

bool Network::margins_changed() const
{
    return param("CHNL_MARGIN") != _margin || param("CHNL_WIDTH") != _margin_width;
}

void Network::update_margins()
{
    if (_domain == nullptr || !margins_changed())
        return;
    _margin = param("CHNL_MARGIN");
    _margin_width = param("CHNL_WIDTH");
    const double size = _margin * _margin_width;
    // Margins are whole cells that hold at least the requested distance.
    const int mx = static_cast<int>(std::ceil(size / _domain->getDx() - MP_EPSILON));
    const int my = static_cast<int>(std::ceil(size / _domain->getDy() - MP_EPSILON));
    _domain->set_margins(mx, my);
    _entry_points.calculate(*_domain, _ch != nullptr);
    create_intersection_grid();
}

bool Network::slope_changed() const
{
    return _domain != nullptr && param("DOMAIN_SLOPE") != _domain->get_slope();
}

bool Network::flow_dir_changed() const
{
    if (_domain == nullptr)
        return false;
    const double angle =
        MeanderCalculator::relative_flow_direction(_domain->getRotation(), param("CHNL_FLW_DIR"));
    return angle != _domain->get_flow_angle();
}

void Network::update_slope_and_flow_direction()
{
    if (_domain == nullptr || (!slope_changed() && !flow_dir_changed()))
        return;
    _domain->update_slope(param("DOMAIN_SLOPE"), param("CHNL_FLW_DIR"));
    _entry_points.calculate(*_domain, _ch != nullptr);
    create_intersection_grid();
    if (_ch != nullptr)
        update_channel();
}

void Network::update_flow_parameters()
{
    if (_ch != nullptr && _ch->sinuo_occurs(_iteration, _domain))
        _ch->update_flow_sinuosity();
}

// ---------------------------------------------------------------------------
// Channel scale

void Network::change_channel_scale(double factor)
{
    if (factor == 1.)
        return;
    if (_scaled_params.empty())
        for (const char* name : SCALED_PARAMS)
            _scaled_params.emplace_back(name, param(name));
    for (const auto& saved : _scaled_params)
        _params->setParamDouble(saved.first, saved.second * factor);
    _scale = factor;
    if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << "   New Channel Width: " << param("CHNL_WIDTH") << "m (" << factor * 100. << "%)";
        _tracer->debug(text.str());
    }
    if (_ch != nullptr)
        _ch->update_well_config();
}

void Network::restore_channel_scale()
{
    for (const auto& saved : _scaled_params)
        _params->setParamDouble(saved.first, saved.second);
    const bool changed = !_scaled_params.empty();
    _scaled_params.clear();
    _scale = 1.;
    if (changed && _ch != nullptr)
        _ch->update_well_config();
}

// The present values become the unscaled ones.
void Network::update_scaled_params()
{
    _scaled_params.clear();
    _scale = 1.;
}

// ---------------------------------------------------------------------------
// Channel measures

double Network::channel_current_sinuosity() const
{
    if (_ch != nullptr && _ch->first() != nullptr)
        return _ch->compute_real_sinuosity(true, _domain);
    return 1.;
}

double Network::channel_current_max_depth() const
{
    if (_ch != nullptr)
        return MeanderCalculator::hmax_from_hmean(_ch->mean_depth());
    return param("CHNL_MAX_DEPTH");
}

double Network::channel_max_depth() const
{
    return param("CHNL_MAX_DEPTH");
}

double Network::channel_width() const
{
    if (_ch != nullptr)
        return _ch->width();
    return param("CHNL_WIDTH");
}

void Network::compute_velocity_perturbations()
{
    if (_ch != nullptr)
        _ch->compute_velocity_perturbation();
}

// ---------------------------------------------------------------------------
// Migration and imprint

void Network::migrate(unsigned int step)
{
    migrate_with(step, false);
}

void Network::migrate_conditioning(unsigned int step)
{
    migrate_with(step, true);
}

void Network::migrate_with(unsigned int step, bool conditioning)
{
    if (_ch == nullptr)
        return;
    const double dt = Channel::migration_time_step(step);
    if (_tracer != nullptr && _tracer->traceMigrat())
        printout(conditioning ? "Conditional Migration" : "Free Migration");
    // The cells under the channel before it moves become point bar.
    collect_wet_cells();
    if (conditioning)
        _ch->migrate_conditioning(_domain, dt);
    else
        _ch->migrate(_domain, dt);
    channel_points_moved();
}

void Network::apply_tecto(int steps)
{
    if (_domain == nullptr)
        return;
    _domain->apply_tecto(steps);
    _domain->compute_pseudo_topo(channel_max_depth(), *_uniform);
    if (_ch != nullptr)
    {
        _ch->apply_tecto(_domain, steps);
        channel_points_moved();
    }
}

double Network::get_bilinear_erodibility_ratio(const Point2D& p) const
{
    return Channel::bilinear_erodibility_ratio(_domain, p);
}

double Network::get_bilinear_elevation(const Point2D& p) const
{
    return Channel::bilinear_elevation(_domain, p);
}

void Network::fill_grid_points(std::vector<ChannelGridPoint>& out) const
{
    if (_ch == nullptr || _domain == nullptr)
    {
        out.clear();
        return;
    }
    if (_params->usingVariablePBGrainsize())
        _ch->find_grid_points_new(*_domain, out);
    else
        _ch->find_grid_points(*_domain, out);
}

void Network::collect_wet_cells()
{
    if (_ch == nullptr || _domain == nullptr || _params->usingVariablePBGrainsize())
    {
        _grid_points_inputs.clear();
        if (_ch == nullptr)
            _grid_points.clear();
        else
            fill_grid_points(_grid_points);
        return;
    }
    // A migration starts from where the last one left the channel: unless a
    // drape or a flood has moved it since, its cells are those found then.
    std::vector<double>& inputs = _grid_points_inputs_now;
    _ch->grid_points_inputs(*_domain, inputs);
    if (!_grid_points_inputs.empty() && inputs.size() == _grid_points_inputs.size() &&
        std::memcmp(inputs.data(), _grid_points_inputs.data(), inputs.size() * sizeof(double)) == 0)
        return;
    fill_grid_points(_grid_points);
    _grid_points_inputs.swap(inputs);
}

void Network::update_domain()
{
    if (_ch == nullptr || _domain == nullptr)
        return;
    for (const ChannelGridPoint& gp : _grid_points)
        _domain->getObject(gp.ix, gp.iy).set_under_channel(false);
    _ch->make_point_bar(_domain, _mb, _iteration, _erode);
    if (_params->usingVariablePBGrainsize())
        _domain->make_point_bar_new(*_ch, _grid_points, _iteration);
    else
        _domain->make_point_bar(_grid_points, _iteration);
    for (const ChannelGridPoint& gp : _grid_points)
        _domain->getObject(gp.ix, gp.iy).set_under_channel(false);
}

void Network::compute_pseudo_topo()
{
    if (_domain == nullptr)
        return;
    const double h =
        _ch != nullptr ? MeanderCalculator::hmax_from_hmean(_ch->mean_depth()) : param("CHNL_MAX_DEPTH");
    _domain->compute_pseudo_topo(h, *_uniform);
}
