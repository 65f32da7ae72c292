// New channel courses grown down (or up) the steepest slope of the domain:
// the first channel from an entry cell of the upstream edge, and the new
// stretches that complete an end or follow a breach.

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/DistributionGenerator.h"

#include "NetworkSupport.h"

#include <algorithm>
#include <cmath>
#include <sstream>

using network_support::attempt_text;
using network_support::round_index;

bool Network::construct_steepest_channel()
{
    if (_domain == nullptr)
        return false;
    MP_ASSERT_TEXT(_uniform != nullptr, "uniform != NULL");
    MP_ASSERT_TEXT(_tracer != nullptr, "tracer != NULL");
    const double hmax = channel_max_depth();
    _domain->compute_pseudo_topo(hmax, *_uniform);
    const auto keep = [this](const PairTopoIndex& entry, bool found, ChannelPoint*,
                             const std::vector<Point3D>& path, SteepestError error)
    {
        if (found)
        {
            const std::vector<Point3D> points = course_points(entry, path);
            if (_ch != nullptr)
                delete_channel();
            _ch = new Channel(_mc, points);
            _tracer->info("   Steepest Channel Creation Success");
            return true;
        }
        const bool last = std::all_of(_entry_points.begin(), _entry_points.end(),
                                      [](const PairTopoIndex& e) { return e.tried; });
        _tracer->debug(std::string(last ? "     Steepest Channel Creation Failure: "
                                        : "     Steepest Channel Creation Attempt: ") +
                       Domain::steepest_error(error));
        return false;
    };
    if (try_entry_points("Creating New Channel", nullptr, hmax, _tracer->traceLevel(TRACE_DEBUG), keep))
        return true;
    _tracer->info("   Steepest Channel Creation Failed !!!");
    return false;
}

bool Network::try_entry_points(const char* label, const RouteGrid* route, double hmax, bool trace_attempts,
                               const EntryCourse& keep)
{
    if (_entry_points.empty())
        _entry_points.calculate(*_domain, _ch != nullptr);
    if (_entry_points.empty())
        return false;
    _entry_points.valuate(*_domain, hmax);
    PairTopoIndex entry;
    int attempt = 0;
    while (_entry_points.select_next(_seed, entry))
    {
        ++attempt;
        int ix = entry.ix, iy = entry.iy;
        _domain->next_steepest_node(ix, iy, false);
        if (trace_attempts)
            _tracer->debug(attempt_text(label, _iteration, attempt, entry.ix, entry.iy, ix, iy));
        std::vector<Point3D> path;
        ChannelPoint* join = nullptr;
        SteepestError error = STEEPEST_OK;
        const bool found = _domain->find_steepest(route, _uniform, entry.ix, entry.iy, ix, iy, join, path,
                                                  error, hmax, false);
        if (keep(entry, found, join, path, error))
            return true;
    }
    return false;
}

std::vector<Point3D> Network::course_points(const PairTopoIndex& entry,
                                            const std::vector<Point3D>& path) const
{
    std::vector<Point3D> points;
    points.reserve(path.size() + 1);
    points.emplace_back(_domain->grid2Rel(entry.ix, entry.iy),
                        _domain->get_topo_extrapolated(true, true, entry.ix, entry.iy));
    for (const Point3D& p : path)
        points.emplace_back(_domain->grid2Rel(p.get_abscissa(), p.get_ordinate()), p.get_elevation());
    return points;
}

// `to` and `direction` are grid nodes: the start of the walk and its first
// step. The start node is kept in the chain unless it is the node of `from`.
// An upward course climbs to the upstream margin and its chain is ordered from
// that margin down to the start, ready to be prepended. When `channel` is
// given, the course completes that channel's end and must not meet it.
ChannelPoint* Network::find_new_course(const Point2D& from, const Point2D& to, const Point2D& direction,
                                       ChannelPoint*& join, SteepestError& error, RouteGrid* route,
                                       Channel* channel, bool upward)
{
    join = nullptr;
    error = STEEPEST_OK;
    if (_domain == nullptr)
    {
        error = STEEPEST_INCOMPLETE;
        return nullptr;
    }
    const double hmax = channel_max_depth();
    if (_tracer != nullptr && _tracer->traceConstruct() && _tracer->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << (upward ? "     Finding increasing steepest path from ["
                        : "     Finding decreasing steepest path from [")
             << from.get_abscissa() << ", " << from.get_ordinate() << "] => [" << to.get_abscissa() << ", "
             << to.get_ordinate() << "]...";
        _tracer->debug(text.str());
    }

    const int ix0 = round_index(to.get_abscissa()), iy0 = round_index(to.get_ordinate());
    const int ix1 = round_index(direction.get_abscissa()), iy1 = round_index(direction.get_ordinate());
    if (ix0 == ix1 && iy0 == iy1)
    {
        error = STEEPEST_TOO_SHORT;
        return nullptr;
    }
    const double z0 = _domain->get_topo_extrapolated(true, true, ix0, iy0);

    std::vector<Point3D> path;
    if (!_domain->find_steepest(route, _uniform, ix0, iy0, ix1, iy1, join, path, error, hmax, upward))
        return nullptr;
    if (error == STEEPEST_CUTOFF)
    {
        MP_ASSERT_TEXT(join != nullptr, "cp_join != NULL");
        if (channel != nullptr)
        {
            join = nullptr;
            error = STEEPEST_INCOMPLETE;
            return nullptr;
        }
    }

    const Point2D start = _domain->getGridPointFromRel(from);
    const bool start_is_from =
        round_index(start.get_abscissa()) == ix0 && round_index(start.get_ordinate()) == iy0;
    if (channel == nullptr)
    {
        bool inside = _domain->isValid(round_index(start.get_abscissa()), round_index(start.get_ordinate()));
        for (const Point3D& p : path)
            inside = inside || _domain->isValid(round_index(p.get_abscissa()), round_index(p.get_ordinate()));
        if (!inside)
        {
            join = nullptr;
            error = STEEPEST_BOTH_IN_MARGINS;
            return nullptr;
        }
    }

    std::vector<Point3D> points;
    if (!start_is_from)
        points.emplace_back(_domain->grid2Rel(ix0, iy0), z0);
    for (const Point3D& p : path)
        points.emplace_back(_domain->grid2Rel(p.get_abscissa(), p.get_ordinate()), p.get_elevation());
    if (points.empty())
    {
        join = nullptr;
        error = STEEPEST_TOO_SHORT;
        return nullptr;
    }
    if (upward)
        std::reverse(points.begin(), points.end());

    const double width = channel != nullptr ? channel->width() : channel_width();
    return ChannelPoint::make_chain(_mc, _params->getSedProportions(), width, points);
}
