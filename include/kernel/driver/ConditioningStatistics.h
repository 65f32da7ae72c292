#pragma once
// How well the block honours its conditioning wells: each well's log set
// against the simulated column it stands on, over the height where both say
// something. Display-free: the desktop draws it, scripts read it.

#include <string>
#include <vector>

class Core;
class CoreList;

class ConditioningStatistics
{
public:
    struct WellMatch
    {
        std::string name;
        double x = 0.;
        double y = 0.;
        // Height where both the log and the column have a defined facies.
        double compared = 0.;
        // Shares of the compared height: the same facies family; both sand
        // or both not sand; sand in the log; sand in the column. 0 when
        // nothing is compared.
        double faciesMatch = 0.;
        double sandMatch = 0.;
        double wellSand = 0.;
        double simulatedSand = 0.;
    };

    // `columns` holds, in the order of `wells`, the column under each well
    // (an empty log where there is none). Elevations are those of the logs.
    static ConditioningStatistics compare(const CoreList& wells, const CoreList& columns);
    // One log against one column.
    static WellMatch compare(const Core& well, const Core& column);

    const std::vector<WellMatch>& wells() const { return _wells; }
    // All wells together, weighted by their compared heights, named "All wells".
    const WellMatch& overall() const { return _overall; }

private:
    std::vector<WellMatch> _wells;
    WellMatch _overall;
};
