#include "kernel/driver/CrossingHistogram.h"

#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <algorithm>
#include <cmath>

namespace
{
// Samples touch when one's bottom is the other's top to rounding: heights
// are whole centimetres.
bool touching(double bottom, double top)
{
    return std::fabs(bottom - top) <= MP_EPSILON;
}

// What body a sample belongs to, or nothing (family 0, or a non-sand when
// only sand bodies are counted).
bool body_kind(unsigned char facies, bool sandsJoined, int& kind)
{
    const unsigned char family = Facies::family(facies);
    if (Facies::is_neutral(family) || family >= CrossingHistogram::MP_NB_FAMILIES)
        return false;
    if (!sandsJoined)
    {
        kind = family;
        return true;
    }
    kind = CrossingHistogram::MP_SAND_BODY;
    return Facies::is_sand(family);
}
} // namespace

std::vector<CrossingHistogram::Body> CrossingHistogram::bodies_of(const Core& log, bool sandsJoined)
{
    std::vector<CoreSample> samples = log.getSamples();
    std::stable_sort(samples.begin(), samples.end(),
                     [](const CoreSample& a, const CoreSample& b) { return a.getTop() > b.getTop(); });
    std::vector<Body> bodies;
    bool open = false;
    for (const CoreSample& sample : samples)
    {
        int kind = 0;
        if (!body_kind(sample.getFacies(), sandsJoined, kind))
        {
            open = false;
            continue;
        }
        if (open && bodies.back().family == kind && touching(bodies.back().bottom, sample.getTop()))
            bodies.back().bottom = sample.getZ();
        else
            bodies.push_back({kind, sample.getZ(), sample.getTop()});
        open = true;
    }
    return bodies;
}

CrossingHistogram CrossingHistogram::facies_crossing(const CoreList& logs, double dz, int nz)
{
    return build(logs, dz, nz, false);
}

CrossingHistogram CrossingHistogram::sand_crossing(const CoreList& logs, double dz, int nz)
{
    return build(logs, dz, nz, true);
}

CrossingHistogram CrossingHistogram::build(const CoreList& logs, double dz, int nz, bool sandsJoined)
{
    CrossingHistogram histogram;
    if (!(dz > 0.))
        return histogram;
    std::vector<Body> bodies;
    for (const Core& log : logs)
    {
        const std::vector<Body> some = bodies_of(log, sandsJoined);
        bodies.insert(bodies.end(), some.begin(), some.end());
    }
    if (nz <= 0)
    {
        double thickest = 0.;
        for (const Body& body : bodies)
            thickest = std::max(thickest, body.thickness());
        nz = static_cast<int>(std::ceil(thickest / dz - MP_EPSILON));
    }
    histogram._dz = dz;
    histogram._nz = std::max(1, nz);
    const int nkinds = sandsJoined ? 1 : MP_NB_FAMILIES;
    for (int kind = 0; kind < nkinds; ++kind)
    {
        Kind k;
        k.family = sandsJoined ? MP_SAND_BODY : kind;
        k.counts.assign(static_cast<size_t>(histogram._nz), 0);
        k.thicknesses.assign(static_cast<size_t>(histogram._nz), 0.);
        histogram._kinds.push_back(k);
    }
    for (const Body& body : bodies)
    {
        Kind& kind = histogram._kinds[sandsJoined ? 0 : static_cast<size_t>(body.family)];
        const size_t k = static_cast<size_t>(histogram.class_of(body.thickness()));
        kind.counts[k] += 1;
        kind.thicknesses[k] += body.thickness();
    }
    return histogram;
}

int CrossingHistogram::class_of(double thickness) const
{
    // Upper bounds belong to their class: a body of exactly dz is in the first.
    const int k = static_cast<int>(std::ceil(thickness / _dz - MP_EPSILON)) - 1;
    return std::clamp(k, 0, _nz - 1);
}

std::string CrossingHistogram::kind_name(int kind) const
{
    const int f = family(kind);
    if (f == MP_SAND_BODY)
        return "Sand";
    return Facies::description(static_cast<unsigned char>(f)).short_name();
}

int CrossingHistogram::count(int kind, int k) const
{
    return kind_at(kind).counts.at(static_cast<size_t>(k));
}

double CrossingHistogram::thickness(int kind, int k) const
{
    return kind_at(kind).thicknesses.at(static_cast<size_t>(k));
}

int CrossingHistogram::total_count(int kind) const
{
    int sum = 0;
    for (int c : kind_at(kind).counts)
        sum += c;
    return sum;
}

double CrossingHistogram::total_thickness(int kind) const
{
    double sum = 0.;
    for (double t : kind_at(kind).thicknesses)
        sum += t;
    return sum;
}

double CrossingHistogram::cumulative_count_share(int kind, int k) const
{
    const int total = total_count(kind);
    if (total == 0)
        return 0.;
    int sum = 0;
    for (int c = 0; c <= k; ++c)
        sum += count(kind, c);
    return static_cast<double>(sum) / total;
}

double CrossingHistogram::cumulative_thickness_share(int kind, int k) const
{
    const double total = total_thickness(kind);
    if (!(total > 0.))
        return 0.;
    double sum = 0.;
    for (int c = 0; c <= k; ++c)
        sum += thickness(kind, c);
    return sum / total;
}
