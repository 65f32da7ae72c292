#pragma once
// Turns the results of the Compute tools into what the desktop draws: one
// builder per kind of result, each naming its axes in the user's terms.

#include "tools/PlotData.h"

#include <string>

class ConditioningStatistics;
class CrossingHistogram;
class FaciesProportions;

class PlotBuilder
{
public:
    // One curve per facies family present: its share by slice, along the
    // elevation of the slices' middles.
    static PlotData vertical_proportions(const FaciesProportions& curve, const std::string& title);
    // The sand share of each node of the block, over nodes (i, j); none where nothing was deposited.
    static PlotData proportion_matrix(const FaciesProportions& matrix, const std::string& title);
    // Bars of the number of bodies by thickness class, one series per family crossed.
    static PlotData facies_crossing(const CrossingHistogram& histogram, const std::string& title);
    // Cumulative shares of the sand bodies and of their thickness, by thickness class.
    static PlotData sand_crossing(const CrossingHistogram& histogram, const std::string& title);
    // Per well, then all wells: facies match, sand match, and the sand shares of log and column.
    static PlotData conditioning(const ConditioningStatistics& statistics, const std::string& title);
};
