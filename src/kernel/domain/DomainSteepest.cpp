// Steepest-descent course finding on the domain: a new course is grown node by
// node down the pseudo-topography, each step drawn among the eligible
// neighbours with a weight that favours steep slopes and a straight course.
//
// Bookkeeping of the walk (see doc/COURSE_FINDING.md):
// - The steering surface is the pseudo-topography; the height limit of a step
//   (the caller's hmax) and the slopes are read on it. The true topography
//   (with water) bounds a descending walk: a node may only be entered below the
//   level z_ref, the true elevation of the current node.
// - A first pass only allows steps that advance along the flow (is_valid_dir).
//   If it leaves no candidate, relaxed passes raise z_ref by a quarter of hmax
//   at a time, up to hmax, still advancing: the water fills a pit by at most
//   one channel depth and spills over the sill ahead. A last pass at z_ref +
//   hmax allows any direction. A climbing walk has its first pass and the last
//   one only. No cell is ever retraced.
// - After each step the node is tested in this order: on the path already
//   ("Self intersection"); on the old channel of the route grid, the caller's
//   first step excepted ("Cutoff"); beyond the target margin (success); beyond
//   the other margin ("Exit upstream or downstream"); beyond the lateral sides
//   of the flow-aligned rectangle that holds the domain and its margins ("Path
//   goes outside extrapolated domain"). No candidate left after all passes is a
//   "Depression trap".

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/DistributionGenerator.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>
#include <utility>

namespace
{

// Turning angles of a step against the last one, with the digits the system keeps.
constexpr double ANGLE_STRAIGHT = 0.;
constexpr double ANGLE_DIAGONAL = 0.7853981625;
constexpr double ANGLE_SQUARE = 1.570796325;
constexpr double ANGLE_WIDE = 2.3561944875;
constexpr double ANGLE_REVERSAL = 6.2831853;

constexpr int RELAXED_PASSES = 4;

typedef std::pair<int, int> Node;

Node node_of(const Point2D& p)
{
    return Node(static_cast<int>(std::lround(p.get_abscissa())),
                static_cast<int>(std::lround(p.get_ordinate())));
}

// Angle between two grid steps, in multiples of 45 degrees.
double turning_angle(const Vector2D& last, const Vector2D& step)
{
    const double nl = last.length();
    if (nl < MP_EPSILON)
        return ANGLE_STRAIGHT;
    const double c = std::max(-1., std::min(1., last.scalar(step) / (nl * step.length())));
    static const double angles[5] = {ANGLE_STRAIGHT, ANGLE_DIAGONAL, ANGLE_SQUARE, ANGLE_WIDE,
                                     ANGLE_REVERSAL};
    const int k = static_cast<int>(std::lround(std::acos(c) / (MP_PI / 4.)));
    return angles[std::max(0, std::min(4, k))];
}

// Straight ahead counts fully, a square turn a quarter, a reversal nothing.
double angle_factor(double angle)
{
    if (angle >= ANGLE_REVERSAL)
        return 0.;
    const double w = (1. + std::cos(angle)) / 2.;
    return w * w;
}

} // namespace

std::string Domain::steepest_error(int error)
{
    switch (error)
    {
    case STEEPEST_CUTOFF:
        return "Cutoff";
    case STEEPEST_OK:
        return "OK";
    case STEEPEST_SELF_INTERSECTION:
        return "Self intersection";
    case STEEPEST_EXIT_WRONG_MARGIN:
        return "Exit upstream or downstream";
    case STEEPEST_TOO_SHORT:
        return "New path too short";
    case STEEPEST_DEPRESSION_TRAP:
        return "Depression trap";
    case STEEPEST_OUTSIDE_DOMAIN:
        return "Path goes outside extrapolated domain";
    case STEEPEST_BOTH_IN_MARGINS:
        return "Both old and new path are in margins";
    case STEEPEST_INCOMPLETE:
        return "Unable to complete path up to margins";
    default:
        return "Unknown reason";
    }
}

// ---------------------------------------------------------------------------
// Margins and directions

bool Domain::is_inside_upstream_margin(const Point2D& p) const
{
    return get_flow_direction().scalar(p - _upstream_apex) < 0.;
}

bool Domain::is_inside_downstream_margin(const Point2D& p) const
{
    return get_flow_direction().scalar(p - _downstream_apex) > 0.;
}

bool Domain::is_beyond_upstream_margin(const Point2D& p) const
{
    return get_flow_direction().scalar(p - _upstream_corner) < 0.;
}

bool Domain::is_beyond_downstream_margin(const Point2D& p) const
{
    return get_flow_direction().scalar(p - _downstream_corner) > 0.;
}

bool Domain::cutoff_ok(const Point2D& p, bool downstream) const
{
    return downstream ? !is_inside_downstream_margin(p) : !is_inside_upstream_margin(p);
}

bool Domain::is_outside_extrapolated(const Point2D& p) const
{
    const Vector2D across(-_dir_y, _dir_x);
    double lo = MP_MAX_REAL_VALUE, hi = MP_MIN_REAL_VALUE;
    for (const Point2D& c : _corner)
    {
        lo = std::min(lo, across.scalar(c));
        hi = std::max(hi, across.scalar(c));
    }
    const double l = across.scalar(p);
    return l < lo - MP_EPSILON || l > hi + MP_EPSILON;
}

bool Domain::is_valid_dir(bool use, bool reverse, const Vector2D& previous, const Vector2D& next) const
{
    if (!use)
        return true;
    Vector2D f = get_flow_direction();
    if (reverse)
        f *= -1.;
    const double a = previous.scalar(f);
    const double b = next.scalar(f);
    const double x = previous.vectorial(f);
    // A last step exactly against the flow may only be followed by another one against it.
    if (a < 0. && std::fabs(x) <= 1e-6)
        return b < 0.;
    return b > 0.;
}

void Domain::get_vector(double angle, int& di, int& dj)
{
    const double eighth = MP_PI / 4.;
    const long k = std::lround(angle / eighth);
    const double a = static_cast<double>(k) * eighth;
    di = static_cast<int>(std::lround(std::cos(a)));
    dj = static_cast<int>(std::lround(std::sin(a)));
}

void Domain::next_steepest_node(int& ix, int& iy, bool upstream) const
{
    int di = 0, dj = 0;
    get_vector(_flow_angle + (upstream ? MP_PI : 0.), di, dj);
    ix += di;
    iy += dj;
}

bool Domain::steepest_stop(int ix, int iy, bool upstream) const
{
    const Point2D p(ix * _dx, iy * _dy);
    return upstream ? is_beyond_upstream_margin(p) : is_beyond_downstream_margin(p);
}

// ---------------------------------------------------------------------------
// Neighbour selection

void Domain::select_steepest_neighbors(const Point2D& p, double z, double dz_max,
                                       const std::vector<Point2D>& previous, bool upward, bool rising,
                                       double z_ref, std::vector<Point2D>& cells,
                                       std::vector<double>& weights, bool use_dir) const
{
    cells.clear();
    weights.clear();
    const Node cur = node_of(p);
    const bool has_prev = !previous.empty();
    const Node prev = has_prev ? node_of(previous.back()) : cur;
    const bool has_before = previous.size() > 1;
    const Node before = has_before ? node_of(previous[previous.size() - 2]) : cur;
    const Vector2D last =
        has_prev ? Vector2D(cur.first - prev.first, cur.second - prev.second) : Vector2D(0., 0.);

    std::vector<double> angles, slopes, rises;
    bool wanted = false;
    for (int k = 0; k < 8; k++)
    {
        const Vector2D& step = _grid_vectors[k];
        const Node cand(cur.first + static_cast<int>(step.get_abscissa()),
                        cur.second + static_cast<int>(step.get_ordinate()));
        if ((has_prev && cand == prev) || (has_before && cand == before))
            continue;
        if (!is_valid_dir(use_dir, upward, last, step))
            continue;
        const double t = get_topo_extrapolated(false, true, cand.first, cand.second);
        if (!(get_erodibility_extrapolated(cand.first, cand.second) > 0.))
            continue;
        if (!(std::fabs(t - z) < dz_max))
            continue;
        if (!upward)
        {
            const double tt = get_topo_extrapolated(true, true, cand.first, cand.second);
            if (rising ? !(tt > z_ref) : !(tt < z_ref))
                continue;
        }
        cells.emplace_back(cand.first, cand.second);
        angles.push_back(turning_angle(last, step));
        const double length = step.get_abscissa() == 0. ? _dy : (step.get_ordinate() == 0. ? _dx : _diagonal);
        const double s = (t - z) / length;
        slopes.push_back(s);
        rises.push_back(t - z);
        if (rising ? s > 0. : s < 0.)
            wanted = true;
    }

    for (std::size_t k = 0; k < cells.size(); k++)
    {
        const double w = angle_factor(angles[k]);
        if (wanted)
        {
            const bool right_sign = rising ? slopes[k] > 0. : slopes[k] < 0.;
            weights.push_back(right_sign ? w * std::fabs(slopes[k]) : 0.);
        }
        else
            // No slope helps: the walk leaves a flat or a pit by the easiest exit.
            weights.push_back(w / std::max(std::fabs(rises[k]), 1e-6));
    }
}

// ---------------------------------------------------------------------------
// The walk

namespace
{

struct Walk
{
    std::set<Node> visited;
    std::vector<Point2D> trail; // nodes before the current one
};

} // namespace

bool Domain::find_steepest(const RouteGrid* route, DistributionGenerator* uniform, int ix0, int iy0, int ix1,
                           int iy1, ChannelPoint*& join, std::vector<Point3D>& path, SteepestError& error,
                           double hmax, bool upward) const
{
    MP_ASSERT_TEXT(uniform != nullptr, "uniform != NULL");
    join = nullptr;
    path.clear();
    error = STEEPEST_OK;

    Walk walk;
    walk.visited.insert(Node(ix0, iy0));
    walk.trail.emplace_back(ix0, iy0);

    // Tests of a node just added to the path; true when the walk goes on.
    auto place = [&](int i, int j, bool first) -> bool
    {
        path.emplace_back(i, j, get_topo_extrapolated(true, true, i, j));
        const Point2D rel(i * _dx, j * _dy);
        if (walk.visited.count(Node(i, j)) > 0)
        {
            error = STEEPEST_SELF_INTERSECTION;
            return false;
        }
        if (route != nullptr && !first)
        {
            const Point2D r = route->rel2Grid(rel, true);
            const int ri = static_cast<int>(r.get_abscissa());
            const int rj = static_cast<int>(r.get_ordinate());
            if (route->is_on_grid(ri, rj))
            {
                const std::pair<ChannelPoint*, ChannelPoint*>& seg = route->getObject(ri, rj);
                if (seg.first != nullptr || seg.second != nullptr)
                {
                    join = seg.second != nullptr ? seg.second : seg.first;
                    path.pop_back();
                    error = STEEPEST_CUTOFF;
                    return false;
                }
            }
        }
        if (steepest_stop(i, j, upward))
            return false;
        if (steepest_stop(i, j, !upward))
        {
            error = STEEPEST_EXIT_WRONG_MARGIN;
            return false;
        }
        if (is_outside_extrapolated(rel))
        {
            error = STEEPEST_OUTSIDE_DOMAIN;
            return false;
        }
        walk.visited.insert(Node(i, j));
        return true;
    };

    if (!place(ix1, iy1, true))
        return error == STEEPEST_OK || error == STEEPEST_CUTOFF;

    const bool rising = upward;
    std::vector<Point2D> cells;
    std::vector<double> weights;
    Point2D cur(ix1, iy1);
    for (;;)
    {
        const int ci = static_cast<int>(cur.get_abscissa());
        const int cj = static_cast<int>(cur.get_ordinate());
        const double z = get_topo_extrapolated(false, true, ci, cj);
        const double zt = get_topo_extrapolated(true, true, ci, cj);
        double total = 0.;
        // Passes that still advance along the flow, then one in any direction.
        const int forward_passes = upward ? 1 : RELAXED_PASSES + 1;
        for (int pass = 0; pass <= forward_passes && total <= 0.; pass++)
        {
            const double z_ref = zt + std::min(pass, RELAXED_PASSES) * hmax / RELAXED_PASSES;
            select_steepest_neighbors(cur, z, hmax, walk.trail, upward, rising, z_ref, cells, weights,
                                      pass < forward_passes);
            total = 0.;
            for (double w : weights)
                total += w;
            if (pass > 0 && total > 0. && tracing(TRACE_DEBUG))
                trace_leaving(ci, cj, ix0, iy0, walk.trail.back(), upward);
        }
        if (!(total > 0.))
        {
            error = STEEPEST_DEPRESSION_TRAP;
            return false;
        }

        const double alea = (*uniform)() * total;
        std::size_t k = 0;
        double tot = weights[0];
        while (tot < alea && k + 1 < weights.size())
            tot += weights[++k];
        walk.trail.push_back(cur);
        cur = cells[k];
        if (!place(static_cast<int>(cur.get_abscissa()), static_cast<int>(cur.get_ordinate()), false))
            return error == STEEPEST_OK || error == STEEPEST_CUTOFF;
    }
}

void Domain::trace_leaving(int ix, int iy, int ix0, int iy0, const Point2D& prev, bool upward) const
{
    const int pi = static_cast<int>(prev.get_abscissa());
    const int pj = static_cast<int>(prev.get_ordinate());
    std::ostringstream text;
    text << (upward ? "     Leaving bump (" : "     Leaving depression (") << ix << ", " << iy << ")\n"
         << "     Current point (" << ix << ", " << iy << ")\n"
         << "     Start point (" << ix0 << ", " << iy0 << ")\n"
         << " true_topo_cur = " << get_topo_extrapolated(true, true, ix, iy)
         << " true_topo_prev = " << get_topo_extrapolated(true, true, pi, pj)
         << " true_erod_cur = " << get_erodibility_extrapolated(ix, iy)
         << " true_erod_prev = " << get_erodibility_extrapolated(pi, pj);
    debug(text.str());
}
