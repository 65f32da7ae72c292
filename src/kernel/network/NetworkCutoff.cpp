// Neck cutoffs: the loops of the channel whose ends have come nearer than a
// channel width are removed and filled as oxbows.

#include "kernel/network/Network.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace
{
// Abstract time of one iteration: the bank erodibility times the regional
// slope, the rate at which meanders grow towards their cutoff.
double abstract_time_factor(double /*width*/, double /*wavelength*/, double slope, double erod_coef)
{
    return erod_coef * slope;
}
} // namespace

void Network::create_intersection_grid()
{
    if (_ch == nullptr || _domain == nullptr || _ch->first() == nullptr)
        return;
    _cg.reset();
    const double width = _ch->width();
    // The channel's running box: it only widens as the points move, so the
    // grid holds every place the channel has been. A box never widened yet
    // is empty and holds the two reference points only.
    Point2D bbox_min, bbox_max;
    _ch->get_bounding_box(bbox_min, bbox_max);
    double xmin = bbox_min.get_abscissa(), ymin = bbox_min.get_ordinate();
    double xmax = bbox_max.get_abscissa(), ymax = bbox_max.get_ordinate();
    auto hold = [&](const Point2D& p)
    {
        xmin = std::min(xmin, p.get_abscissa());
        xmax = std::max(xmax, p.get_abscissa());
        ymin = std::min(ymin, p.get_ordinate());
        ymax = std::max(ymax, p.get_ordinate());
    };
    hold(_domain->get_upstream_corner());
    hold(_domain->get_downstream_corner());
    const double x0 = std::floor(xmin);
    const double y0 = std::floor(ymin);
    const int nx = static_cast<int>(std::ceil((xmax - x0) / width)) + 1;
    const int ny = static_cast<int>(std::ceil((ymax - y0) / width)) + 1;
    MP_ASSERT_TEXT(nx > 0 && ny > 0, "nx > 0 && ny > 0");
    // Cells one width wide: points nearer than a width share a cell or touch.
    _cg.reset(new ChannelGrid(x0, y0, nx, ny, width, width));
}

bool Network::check_intersections(Channel* channel, bool ghost)
{
    if (_domain == nullptr || channel == nullptr || _cg == nullptr || channel->first() == nullptr)
        return false;
    std::vector<CutOff> cuts;
    _cg->initialize(*channel);
    _cg->get_intersections(*channel, cuts);
    const int left = _cg->count();
    if (left != 0 && _tracer != nullptr && _tracer->traceLevel(TRACE_WARNING))
        _tracer->warning("Channel grid is not empty (" + std::to_string(left) + ")");
    if (cuts.empty())
        return false;

    // Cuts that follow one another along the chain make one loop.
    std::vector<CutOff> merged;
    for (const CutOff& cut : cuts)
    {
        if (!merged.empty() && merged.back().downstream() == cut.upstream())
            merged.back().downstream(cut.downstream());
        else
            merged.push_back(cut);
    }

    const double width = channel->width();
    const double k = _params->usingTurbiOrLobes() ? 3. : 2.;
    for (const CutOff& cut : merged)
    {
        ChannelPoint* a = cut.upstream();
        ChannelPoint* b = cut.downstream();
        if (ghost)
        {
            channel->delete_between(a, b);
            continue;
        }
        const double length = b->s() - a->s();
        if (length > k * width)
        {
            if (_tracer != nullptr && _tracer->traceLevel(TRACE_DEBUG))
            {
                std::ostringstream text;
                text << "New meander cutoff at ds=" << length << " at age=" << _iteration;
                _tracer->debug(text.str());
            }
            first_cutoff_record(channel);
            ++_nb_cutoffs;
            ++_nb_cutoffs_total;
        }
        // Shorter reaches are filled too, but are not meander cutoffs.
        channel->abandon_between(a, b, _domain, _mb, _iteration, 0.2);
    }
    return true;
}

void Network::first_cutoff_record(Channel* channel)
{
    if (_first_cutoff_time != 0.)
        return;
    _first_cutoff_iter = _iteration;
    _first_cutoff_time = _iteration * abstract_time_factor(channel->width(), channel->wavelength(),
                                                           _domain->get_slope(), param("EROD_COEF"));
    _first_cutoff_sinuosity = channel->compute_real_sinuosity(true, _domain);
    _first_cutoff_allen = channel->compute_real_sinuosity_allen();
    _first_cutoff_tortuosity = channel->compute_real_tortuosity(true, _domain);
    _first_cutoff_wavelength = channel->compute_real_wavelength();
    _first_cutoff_extension = channel->compute_sand_body_extension();
}

void Network::reset_first_cutoff()
{
    set_first_cutoff(0, 0., 0., 0., 0., 0., 0.);
}

void Network::set_first_cutoff(unsigned int iter, double time, double sinuosity, double allen,
                               double tortuosity, double wavelength, double extension)
{
    _first_cutoff_iter = iter;
    _first_cutoff_time = time;
    _first_cutoff_sinuosity = sinuosity;
    _first_cutoff_allen = allen;
    _first_cutoff_tortuosity = tortuosity;
    _first_cutoff_wavelength = wavelength;
    _first_cutoff_extension = extension;
}

void Network::set_counters(unsigned int cutoffs, unsigned int chute, unsigned int avulsions,
                           unsigned int cutoffs_avuls, unsigned int cutoffs_total)
{
    _nb_cutoffs = cutoffs;
    _nb_chute_cutoffs = chute;
    _nb_avulsions = avulsions;
    _nb_cutoffs_avuls = cutoffs_avuls;
    _nb_cutoffs_total = cutoffs_total;
}

// A new path that returns to the old course: the reach between the breach and
// the join is abandoned, and the new path takes its place.
void Network::connect(Channel* channel, ChannelPoint* new_points, LociList& loci, ChannelPoint* join)
{
    MP_ASSERT_TEXT(join != nullptr, "join != NULL");
    MP_ASSERT(channel != nullptr);
    MP_ASSERT(!loci.empty());
    ChannelPoint* from = loci.front().second;
    // The path comes back below the breach: a join at or above it would make
    // the whole channel its own tail.
    MP_ASSERT_TEXT(channel->index(from, join) > 1, "join after breach");
    Channel* tail = channel->divide(join);
    for (auto it = loci.begin(); it != loci.end();)
    {
        if (channel->index(from, it->second) > 0)
            it = loci.erase(it);
        else
            ++it;
    }
    channel->abandon_between(from, channel->last(), _domain, _mb, _iteration, 0.05);
    channel->append(new_points);
    channel->append(tail);
    if (channel->owns_tail(tail))
        delete tail;
}

void Network::trace_array(const LociList& list, const std::string& title) const
{
    if (_tracer == nullptr || !_tracer->traceLevel(TRACE_DEBUG))
        return;
    std::ostringstream text;
    text << title << " <=> {";
    double max = 0.;
    for (const auto& locus : list)
    {
        text << "\n" << locus.first;
        max = std::max(max, std::fabs(locus.first));
    }
    text << "\n}  max=" << max;
    if (_ch != nullptr)
    {
        for (const auto& locus : list)
        {
            const ChannelPoint* cp = locus.second;
            const int idx = _ch->index(cp);
            char line[128];
            std::snprintf(line, sizeof line, "Sections: %d,%d {%d,%d}", idx - 1, idx, idx > 1 ? idx - 1 : 0,
                          cp->next() != nullptr ? idx + 1 : idx);
            text << "\n" << line;
        }
    }
    _tracer->debug(text.str());
}
