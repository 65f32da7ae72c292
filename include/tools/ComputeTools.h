#pragma once
// The desktop's Compute menu, without the window: each tool reads the
// simulator through its interface, computes, and gives what to draw. False
// with a message for the user when there is nothing to compute from.

#include "tools/PlotData.h"

#include <string>

class iSimulator;

class ComputeTools
{
public:
    // Slice height of the proportion curves and class width of the
    // histograms, in metres, when the user keeps the proposed value.
    static constexpr double MP_DEFAULT_STEP = 0.5;

    // "Simulation Vertical Proportion Curve": slices of `dz` from the base of the block.
    static bool simulation_vpc(const iSimulator& simulator, double dz, PlotData& plot, std::string& error);
    // "Simulation Proportion Matrix": the sand share of every column.
    static bool simulation_pm(const iSimulator& simulator, PlotData& plot, std::string& error);
    // "Wells Vertical Proportion Curve": slices of `dz` over the conditioning wells.
    static bool well_vpc(const iSimulator& simulator, double dz, PlotData& plot, std::string& error);
    // "Simulation Facies-Crossing Histogram" and "Simulation Sand-Crossing
    // Cumulative Histogram": bodies crossed by every column of the block, by
    // classes of `dz` up to the thickest.
    static bool simulation_histo(const iSimulator& simulator, double dz, PlotData& plot, std::string& error);
    static bool simulation_histo_cumul(const iSimulator& simulator, double dz, PlotData& plot,
                                       std::string& error);
    // The same over the conditioning wells' logs.
    static bool well_histo(const iSimulator& simulator, double dz, PlotData& plot, std::string& error);
    static bool well_histo_cumul(const iSimulator& simulator, double dz, PlotData& plot, std::string& error);
    // "Conditioning Statistics": each well against the column it stands on.
    static bool conditioning_statistics(const iSimulator& simulator, PlotData& plot, std::string& error);
};
