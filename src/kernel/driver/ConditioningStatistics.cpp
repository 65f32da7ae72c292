#include "kernel/driver/ConditioningStatistics.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <algorithm>

namespace
{
// Family of the sample covering z, 0 (undefined) when none does.
unsigned char family_at(const Core& log, double z)
{
    for (const CoreSample& sample : log.getSamples())
        if (sample.getZ() <= z && z <= sample.getTop())
            return Facies::family(sample.getFacies());
    return 0;
}

void add_limits(const Core& log, std::vector<double>& limits)
{
    for (const CoreSample& sample : log.getSamples())
    {
        limits.push_back(sample.getZ());
        limits.push_back(sample.getTop());
    }
}

// Heights summed into shares of the compared height.
void to_shares(ConditioningStatistics::WellMatch& match)
{
    if (!(match.compared > MP_EPSILON))
    {
        match.faciesMatch = match.sandMatch = match.wellSand = match.simulatedSand = 0.;
        return;
    }
    match.faciesMatch /= match.compared;
    match.sandMatch /= match.compared;
    match.wellSand /= match.compared;
    match.simulatedSand /= match.compared;
}
} // namespace

ConditioningStatistics::WellMatch ConditioningStatistics::compare(const Core& well, const Core& column)
{
    WellMatch match;
    match.name = well.getName();
    match.x = well.top_location().get_abscissa();
    match.y = well.top_location().get_ordinate();
    // Both logs are constant between two consecutive sample bounds of either.
    std::vector<double> limits;
    add_limits(well, limits);
    add_limits(column, limits);
    std::sort(limits.begin(), limits.end());
    for (size_t k = 0; k + 1 < limits.size(); ++k)
    {
        const double height = limits[k + 1] - limits[k];
        if (height <= MP_EPSILON)
            continue;
        const double middle = 0.5 * (limits[k] + limits[k + 1]);
        const unsigned char logged = family_at(well, middle);
        const unsigned char simulated = family_at(column, middle);
        if (Facies::is_neutral(logged) || Facies::is_neutral(simulated))
            continue;
        match.compared += height;
        match.faciesMatch += logged == simulated ? height : 0.;
        match.sandMatch += Facies::is_sand(logged) == Facies::is_sand(simulated) ? height : 0.;
        match.wellSand += Facies::is_sand(logged) ? height : 0.;
        match.simulatedSand += Facies::is_sand(simulated) ? height : 0.;
    }
    to_shares(match);
    return match;
}

ConditioningStatistics ConditioningStatistics::compare(const CoreList& wells, const CoreList& columns)
{
    MP_ASSERT(wells.size() == columns.size());
    ConditioningStatistics statistics;
    WellMatch& all = statistics._overall;
    all.name = "All wells";
    for (int w = 0; w < wells.size(); ++w)
    {
        const WellMatch match = compare(wells.at(w), columns.at(w));
        statistics._wells.push_back(match);
        all.compared += match.compared;
        all.faciesMatch += match.faciesMatch * match.compared;
        all.sandMatch += match.sandMatch * match.compared;
        all.wellSand += match.wellSand * match.compared;
        all.simulatedSand += match.simulatedSand * match.compared;
    }
    to_shares(all);
    return statistics;
}
