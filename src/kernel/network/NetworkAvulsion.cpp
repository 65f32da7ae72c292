// How the channel leaves its bed: regional avulsions that trace a new course
// from an entry point, and local ones that breach a levee.

#include "NetworkSupport.h"
#include "kernel/network/Network.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/channel/iChannelWell.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/network/Splay.h"
#include "kernel/parameters/DistributionGenerator.h"

#include <cmath>
#include <sstream>

using network_support::attempt_text;
using network_support::delete_chain;
using network_support::round_index;

namespace
{

// Avulsion traces follow their own switch on top of the level.
bool tracing(const iTracer* tracer, TraceLevel level)
{
    return tracer != nullptr && tracer->traceAvuls() && tracer->traceLevel(level);
}

void trace_debug(iTracer* tracer, const std::string& text)
{
    if (tracing(tracer, TRACE_DEBUG))
        tracer->debug(text);
}

void trace_info(iTracer* tracer, const std::string& text)
{
    if (tracing(tracer, TRACE_INFO))
        tracer->info(text);
}

int chain_length(const ChannelPoint* head)
{
    int n = 0;
    for (; head != nullptr; head = head->next())
        ++n;
    return n;
}

int margin_x(const Domain& domain)
{
    return domain.get_mx() == MP_UNDEF_INT ? 0 : domain.get_mx();
}

int margin_y(const Domain& domain)
{
    return domain.get_my() == MP_UNDEF_INT ? 0 : domain.get_my();
}

// The domain widened by its margins, with the channel marked on it.
RouteGrid channel_route(const Domain& domain, const Channel& channel)
{
    const int mx = margin_x(domain), my = margin_y(domain);
    const double dx = domain.getDx(), dy = domain.getDy();
    RouteGrid route(dx, dy, domain.getNx() + 2 * mx, domain.getNy() + 2 * my, -mx * dx, -my * dy);
    route.initialize(std::pair<ChannelPoint*, ChannelPoint*>(nullptr, nullptr));
    channel.put_route_on_grid(route);
    return route;
}

// Whether the marked channel crosses the domain proper.
bool route_crosses_domain(const RouteGrid& route, const Domain& domain)
{
    const int mx = margin_x(domain), my = margin_y(domain);
    for (int j = my; j < domain.getNy() + my; ++j)
        for (int i = mx; i < domain.getNx() + mx; ++i)
        {
            const std::pair<ChannelPoint*, ChannelPoint*>& cell = route.getObject(i, j);
            if (cell.first != nullptr || cell.second != nullptr)
                return true;
        }
    return false;
}

// The mean time between avulsions is kept as a running sum.
void count_avulsion(Network& network)
{
    const unsigned int age = network.getAge();
    network.avulsion_iter_sum(network.avulsion_iter_sum() + age - network.last_avulsion_iter());
    network.set_counters(network.nb_cutoffs(), network.nb_chute_cutoffs(), network.nb_avulsions() + 1,
                         network.nb_cutoffs_avuls(), network.nb_cutoffs_total());
    network.last_avulsion_iter(age);
}

void count_chute_cutoff(Network& network)
{
    network.set_counters(network.nb_cutoffs(), network.nb_chute_cutoffs() + 1, network.nb_avulsions(),
                         network.nb_cutoffs_avuls(), network.nb_cutoffs_total());
}

// Fall per metre between two places, the regional slope added back, so that
// courses running across or against the slope compare fairly.
double corrected_slope(const Domain& domain, const Point2D& from, double z_from, const Point2D& to,
                       double z_to, double length)
{
    if (!(length > 0.))
        return 0.;
    return (domain.get_slope_y() * (to.get_ordinate() - from.get_ordinate()) +
            domain.get_slope_x() * (to.get_abscissa() - from.get_abscissa()) + (z_from - z_to)) /
           length;
}

// What an attempt did to the list of loci.
enum BreachOutcome
{
    BREACH_NONE,   // nothing changed; the locus is still first in the list
    BREACH_MOVED,  // the channel changed and the list was emptied
    BREACH_JOINED, // the channel changed; connect took the locus out of the list
};

// One local avulsion: the loci of a channel tried one after the other.
class LeveeBreach
{
public:
    LeveeBreach(Network& network, DistributionGenerator& uniform, bool no_splay, double p_splay2,
                double p_distrib, bool forced)
        : _net(network), _domain(*network.domain()), _ch(*network.channel()), _tracer(network.tracer()),
          _uniform(uniform), _no_splay(no_splay), _p_splay2(p_splay2), _p_distrib(p_distrib), _forced(forced)
    {
    }

    BreachOutcome attempt(LociList& loci);

private:
    struct Site
    {
        ChannelPoint* point = nullptr;
        double u = 0.;
        double zc = 0.;
        Point2D bank;
        Vector2D normal;
        int ia = 0, ja = 0, ib = 0, jb = 0;
    };

    bool levee_can_break(Site& site) const;
    bool repelled(const Site& site) const;
    bool toss(const Site& site);
    BreachOutcome take_join(LociList& loci, const Site& site, ChannelPoint* path, ChannelPoint* join);
    BreachOutcome new_course(LociList& loci, const Site& site, ChannelPoint* path, ChannelPoint* join);
    void lay_splays(const Site& site, const ChannelPoint* path, const ChannelPoint* join);
    double slope_ratio(const Site& site, const ChannelPoint* path, const ChannelPoint* join) const;
    double draw() { return _uniform(); }
    double draw(double lo, double hi) { return lo + (hi - lo) * _uniform(); }

    Network& _net;
    Domain& _domain;
    Channel& _ch;
    iTracer* _tracer;
    DistributionGenerator& _uniform;
    bool _no_splay;
    double _p_splay2;
    double _p_distrib;
    bool _forced;
};

BreachOutcome LeveeBreach::attempt(LociList& loci)
{
    Site site;
    site.u = loci.front().first;
    site.point = loci.front().second;
    const ChannelPoint& p = *site.point;
    if (_domain.is_inside_upstream_margin(p) || _domain.is_inside_downstream_margin(p))
        return BREACH_NONE;
    site.zc = p.get_elevation();
    if (!levee_can_break(site) || repelled(site) || !toss(site))
        return BREACH_NONE;

    RouteGrid route = channel_route(_domain, _ch);
    ChannelPoint* join = nullptr;
    SteepestError error = STEEPEST_OK;
    ChannelPoint* path = _net.find_new_course(site.bank, Point2D(site.ia, site.ja), Point2D(site.ib, site.jb),
                                              join, error, &route, nullptr, false);
    if (path == nullptr)
    {
        trace_debug(_tracer, "     Local Avulsion Failure: " + Domain::steepest_error(error));
        return BREACH_NONE;
    }
    trace_debug(_tracer, "     Local Avulsion Attempt: " + Domain::steepest_error(error));
    if (join == nullptr || join == _ch.last())
        return new_course(loci, site, path, join);
    return take_join(loci, site, path, join);
}

// The breach needs a bank low enough for the water to spill over, and land
// that falls away from it.
bool LeveeBreach::levee_can_break(Site& site) const
{
    const ChannelPoint& p = *site.point;
    site.bank = site.u < 0. ? _ch.right_bank_2D(&p) : _ch.left_bank_2D(&p);
    site.normal = Vector2D(p, site.bank);
    if (site.normal.length() < MP_EPSILON)
        return false;
    site.normal.normalize();
    site.normal *= std::sqrt(_domain.getDx() * _domain.getDx() + _domain.getDy() * _domain.getDy());

    const Point2D a = _domain.getGridPointFromRel(site.bank);
    site.ia = round_index(a.get_abscissa());
    site.ja = round_index(a.get_ordinate());
    const Point2D b = _domain.getGridPointFromRel(_domain.grid2Rel(site.ia, site.ja) + site.normal);
    site.ib = round_index(b.get_abscissa());
    site.jb = round_index(b.get_ordinate());

    const double zb = _net.get_bilinear_elevation(site.bank);
    const double z1 = _domain.get_topo_extrapolated(true, true, site.ia, site.ja);
    const double z2 = _domain.get_topo_extrapolated(true, true, site.ib, site.jb);
    const double top = site.zc + _net.channel_current_max_depth() / 5.;
    auto elevations = [&]()
    {
        std::ostringstream text;
        text << "zc=" << site.zc << ", zb=" << zb << ", z1=" << z1 << ", z2=" << z2 << ")";
        return text.str();
    };
    if (zb > top)
    {
        if (tracing(_tracer, TRACE_DEBUG))
            _tracer->debug("       The levee is too high (" + elevations());
        return false;
    }
    if (z1 > top || z2 >= zb - 1e-6 || z2 >= z1 - 1e-6)
    {
        if (tracing(_tracer, TRACE_DEBUG))
            _tracer->debug("       The levee is Ok (" + elevations());
        return false;
    }
    if (tracing(_tracer, TRACE_DEBUG))
    {
        std::ostringstream text;
        text << (site.u < 0. ? "     Possible Levee Breach at right bank point ["
                             : "     Possible Levee Breach at left bank point [")
             << site.bank.get_abscissa() << ", " << site.bank.get_ordinate() << "]";
        _tracer->debug(text.str());
    }
    return true;
}

bool LeveeBreach::repelled(const Site& site) const
{
    bool repulsive = false;
    for (const iChannelWell* well : _ch.get_wells())
        if (well->correct_mig(*site.point) < 1.)
        {
            repulsive = true;
            break;
        }
    if (!repulsive || _forced)
        return false;
    trace_debug(_tracer, "     No Levee Breach at point: Repulsive well too close.");
    return true;
}

// Breaching is likely where the bank is erodible and the near-bank velocity
// is high against the mean.
bool LeveeBreach::toss(const Site& site)
{
    if (_forced)
    {
        trace_debug(_tracer, "     Forced Levee Breach at point: No toss on erodibility and velocity.");
        return true;
    }
    const double e = _net.get_bilinear_erodibility_ratio(site.bank);
    const double v = _ch.mean_flow_velocity();
    const double au = std::fabs(site.u);
    if (draw() < e && draw() < au / (v + au))
        return true;
    trace_debug(_tracer, "     No Levee Breach at point: Toss on erodibility or velocity.");
    return false;
}

// A new course that meets the channel again away from its end.
BreachOutcome LeveeBreach::take_join(LociList& loci, const Site& site, ChannelPoint* path, ChannelPoint* join)
{
    ChannelPoint* p = site.point;
    if (join == p || join == p->prev() || join == p->next())
    {
        trace_debug(_tracer, "   Local Avulsion Failure: Cutoff near levee breach point");
        delete_chain(path);
        return BREACH_NONE;
    }
    for (const ChannelPoint* cp = _ch.first(); cp != nullptr && cp != p; cp = cp->next())
        if (cp == join)
        {
            trace_debug(_tracer, "   Local Avulsion Failure: Upstream cutoff");
            delete_chain(path);
            return BREACH_NONE;
        }
    if (join->distance2D(*p) < 20. * _ch.half_width())
    {
        _net.connect(&_ch, path, loci, join);
        trace_info(_tracer, "   Local Avulsion Success - Chute cutoff (no splay)");
        count_chute_cutoff(_net);
        return BREACH_JOINED;
    }
    return new_course(loci, site, path, join);
}

// A course that leaves the channel for good, or far enough to make a new reach.
BreachOutcome LeveeBreach::new_course(LociList& loci, const Site& site, ChannelPoint* path,
                                      ChannelPoint* join)
{
    if (chain_length(path) == 1)
    {
        trace_debug(_tracer, "     Local Avulsion Failure: " + Domain::steepest_error(STEEPEST_TOO_SHORT));
        delete_chain(path);
        return BREACH_NONE;
    }
    if (!_no_splay)
    {
        try
        {
            lay_splays(site, path, join);
            _net.count_splay();
        }
        catch (...)
        {
            delete_chain(path);
            throw;
        }
    }
    if (!_forced && draw() <= slope_ratio(site, path, join))
    {
        trace_debug(_tracer, "   Local Avulsion Success - No new path downstream : Slope ratio too high");
        delete_chain(path);
        return BREACH_NONE;
    }
    if (join == nullptr)
    {
        trace_info(_tracer, "   Local Avulsion Success - New path downstream");
        const double decay = _net.parameters()->usingDryChannel() ? -1. : 0.005;
        _ch.abandon_from(site.point, &_domain, _net.mass_balance(), _net.getAge(), decay);
        _ch.append(path);
        loci.clear();
        count_avulsion(_net);
        return BREACH_MOVED;
    }
    trace_info(_tracer, "   Local Avulsion Success - New path joining current channel");
    _net.connect(&_ch, path, loci, join);
    count_avulsion(_net);
    return BREACH_JOINED;
}

// A first splay at the breach, then possibly a second, larger one with its
// distributary channels.
void LeveeBreach::lay_splays(const Site& site, const ChannelPoint* path, const ChannelPoint* join)
{
    const bool second = _forced || draw() > 1. - _p_splay2;
    const Point2D start(*path);
    const double half_width = _ch.half_width();

    trace_debug(_tracer, "   Crevasse Splay Type I");
    const double thick = _ch.mean_depth() * draw();
    double length = half_width * draw(10., 15.);
    // The second splay may grow by up to 1.3 and must still stop short of the join.
    if (join != nullptr)
    {
        const double d = join->distance2D(start);
        if (d * 1.3 < length)
            length = d / 1.3;
    }
    const double level = site.zc - site.point->aggrad_increase();
    const double aspect = 1. / draw(3., 4.);
    Splay first(start, site.normal, length, aspect, level, thick, 0.7, _ch.width() / length, 0., 1.,
                _net.seed_generator(), _net.meander_calculator());
    first.grainsize_distribution(11, 8, 0.5);
    first.update(&_domain, _net.mass_balance(), _net.getAge(), 4);

    if (!second)
    {
        trace_debug(_tracer, "   No Splay II evaluation : User toss");
        return;
    }
    trace_debug(_tracer, "   Crevasse Splay Type II");
    length *= draw(1., 1.3);
    const double aspect2 = draw(0.5, 1.5);
    Splay mature(start, site.normal, length, aspect2, site.zc, _ch.mean_depth() * 0.1, 0.6,
                 4. * half_width / length, 0., 1., _net.seed_generator(), _net.meander_calculator());
    mature.grainsize_distribution(8, 5, 0.5);
    mature.update(&_domain, _net.mass_balance(), _net.getAge(), 6);
    mature.mature(&_domain, _net.mass_balance(), _net.getAge(), _ch.flow0(), _ch.slope(), _ch.cf(),
                  _ch.width(), _p_distrib);
}

// Share of the old course in the sum of the two slopes down to the same
// abscissa: the old course keeps the flow with this chance.
double LeveeBreach::slope_ratio(const Site& site, const ChannelPoint* path, const ChannelPoint* join) const
{
    const ChannelPoint* p = site.point;
    const ChannelPoint* stop = join != nullptr ? join : _ch.last();
    const double xmax = (_domain.getNx() - 1) * _domain.getDx();
    if (p->get_abscissa() >= xmax || p == stop)
    {
        trace_debug(_tracer, "   Slope ratio at maximal value - Centerline breach point out of the domain!");
        return 1.;
    }
    double length = 0.;
    const ChannelPoint* q = p;
    while (q != stop && q->next() != nullptr && (q == p || q->get_abscissa() < xmax))
    {
        length += q->distance2D(*q->next());
        q = q->next();
    }
    const double s_old = corrected_slope(_domain, *p, p->get_elevation(), *q, q->get_elevation(), length);

    double length_new = 0.;
    Point2D at = site.bank;
    const ChannelPoint* end = path;
    for (const ChannelPoint* cp = path; cp != nullptr; cp = cp->next())
    {
        length_new += cp->distance2D(at);
        at = *cp;
        end = cp;
        if (cp->get_abscissa() > q->get_abscissa())
            break;
    }
    const double s_new = corrected_slope(_domain, site.bank, site.zc, *end, end->get_elevation(), length_new);
    const double sum = s_new + s_old;
    // Two courses of no fall at all are even.
    return sum == 0. ? 0.5 : s_old / sum;
}

} // namespace

bool Network::regional_avulsion(double scale)
{
    if (_domain == nullptr || _ch == nullptr)
        return false;
    MP_ASSERT_TEXT(_uniform != nullptr, "uniform != NULL");
    change_channel_scale(scale);
    const double hmax = channel_max_depth();
    const double width = channel_width();
    _domain->compute_pseudo_topo(hmax, *_uniform);

    const RouteGrid route = channel_route(*_domain, *_ch);
    const bool old_inside = route_crosses_domain(route, *_domain);
    const double margin_chance =
        2. * (margin_x(*_domain) + margin_y(*_domain)) / static_cast<double>(route.getNx() + route.getNy());
    const std::vector<double> proportions = _params->getSedProportions();

    const auto keep = [&](const PairTopoIndex& entry, bool found, ChannelPoint* join,
                          const std::vector<Point3D>& path, SteepestError error)
    {
        const bool cutoff = found && error == STEEPEST_CUTOFF;
        if (found && !old_inside)
        {
            bool new_inside = false;
            for (const Point3D& p : path)
                new_inside = new_inside ||
                             _domain->isValid(round_index(p.get_abscissa()), round_index(p.get_ordinate()));
            if (!new_inside)
            {
                // Courses wholly in the margins are kept in proportion to the margins' share of the grid.
                error = STEEPEST_BOTH_IN_MARGINS;
                found = (*_uniform)() < margin_chance;
            }
        }
        if (!found)
        {
            trace_debug(_tracer, "     Regional Avulsion Failure: " + Domain::steepest_error(error));
            return false;
        }

        ChannelPoint* head = ChannelPoint::make_chain(_mc, proportions, width, course_points(entry, path));
        Channel* channel = new Channel(_mc, *_ch, head);
        AddPlug plug = ADD_PLUG_NONE;
        if (cutoff)
        {
            MP_ASSERT_TEXT(join != nullptr, "cp_join != NULL");
            Channel* tail = _ch->divide(join);
            channel->append(tail);
            if (_ch->owns_tail(tail))
                delete tail;
            plug = ADD_PLUG_DOWNSTREAM;
        }
        clear_channel(plug);
        _ch = channel;
        count_avulsion(*this);
        channel_points_created();
        return true;
    };
    // The tries are traced with the other avulsion lines, under their switch.
    return try_entry_points("Regional Avulsion", &route, hmax, tracing(_tracer, TRACE_DEBUG), keep);
}

void Network::local_avulsion(bool no_splay, double p_splay2, double p_distrib, bool forced)
{
    if (_domain == nullptr || _ch == nullptr)
        return;
    MP_ASSERT_TEXT(_uniform != nullptr, "uniform != NULL");
    compute_pseudo_topo();
    LociList loci;
    _ch->maximum_velocity_perturbation_loci(loci);
    if (tracing(_tracer, TRACE_DEBUG))
        trace_array(loci, "Maximum velocity perturbation :");

    LeveeBreach breach(*this, *_uniform, no_splay, p_splay2, p_distrib, forced);
    bool changed = false;
    while (!loci.empty())
    {
        const ChannelPoint* locus = loci.front().second;
        const BreachOutcome outcome = breach.attempt(loci);
        changed = changed || outcome != BREACH_NONE;
        // The address is only compared: a joined locus may be deleted already.
        if (!loci.empty() && loci.front().second == locus)
            loci.pop_front();
    }
    if (changed)
        channel_points_created();
}
