#include "tools/ComputeTools.h"

#include "interface/iDomain.h"
#include "interface/iSimulator.h"
#include "kernel/common/Constants.h"
#include "kernel/driver/ConditioningStatistics.h"
#include "kernel/driver/CrossingHistogram.h"
#include "kernel/driver/FaciesProportions.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/geometry/GridParams.h"
#include "tools/PlotBuilder.h"

#include <sstream>

namespace
{
constexpr const char* NO_WELL = "There is no conditioning well: import wells first.";

// The simulator's own reason, or a general one.
bool failed(const iSimulator& simulator, const std::string& what, std::string& error)
{
    const std::string& reason = simulator.getLastMessage();
    error = "Cannot compute the " + what + (reason.empty() ? "." : ":\n" + reason);
    return false;
}

bool step_refused(double dz, std::string& error)
{
    if (dz > 0.)
        return false;
    std::ostringstream text;
    text << "Wrong step " << dz << " (must be > 0.)";
    error = text.str();
    return true;
}

bool block_columns(const iSimulator& simulator, CoreList& columns, std::string& error)
{
    const iDomain* domain = simulator.getDomain();
    if (domain == nullptr || !simulator.ready(false))
    {
        error = "There is no simulation yet: launch it first.";
        return false;
    }
    const GridParams& grid = domain->getGridParams();
    if (!simulator.getVCollections(columns, 0, grid.getNx() - 1, 0, grid.getNy() - 1, MP_UNDEF_REAL,
                                   MP_UNDEF_REAL))
        return failed(simulator, "columns of the block", error);
    return true;
}

bool well_logs(const iSimulator& simulator, CoreList& logs, std::string& error)
{
    if (!simulator.getAllWells(logs) || logs.empty())
    {
        error = NO_WELL;
        return false;
    }
    return true;
}

template <typename Logs>
bool crossing(const iSimulator& simulator, double dz, bool sand, const std::string& title, Logs logs_of,
              PlotData& plot, std::string& error)
{
    CoreList logs;
    if (step_refused(dz, error) || !logs_of(simulator, logs, error))
        return false;
    plot = sand ? PlotBuilder::sand_crossing(CrossingHistogram::sand_crossing(logs, dz, 0), title)
                : PlotBuilder::facies_crossing(CrossingHistogram::facies_crossing(logs, dz, 0), title);
    return true;
}
} // namespace

bool ComputeTools::simulation_vpc(const iSimulator& simulator, double dz, PlotData& plot, std::string& error)
{
    FaciesProportions curve;
    if (step_refused(dz, error))
        return false;
    if (!simulator.getVerticalProportions(dz, curve))
        return failed(simulator, "vertical proportion curve", error);
    plot = PlotBuilder::vertical_proportions(curve, "Simulation Vertical Proportion Curve");
    return true;
}

bool ComputeTools::simulation_pm(const iSimulator& simulator, PlotData& plot, std::string& error)
{
    FaciesProportions matrix;
    if (!simulator.getProportionMatrix(matrix))
        return failed(simulator, "proportion matrix", error);
    plot = PlotBuilder::proportion_matrix(matrix, "Simulation Proportion Matrix");
    return true;
}

bool ComputeTools::well_vpc(const iSimulator& simulator, double dz, PlotData& plot, std::string& error)
{
    FaciesProportions curve;
    CoreList logs;
    if (step_refused(dz, error) || !well_logs(simulator, logs, error))
        return false;
    if (!simulator.getWellVerticalProportions(dz, curve))
        return failed(simulator, "vertical proportion curve of the wells", error);
    plot = PlotBuilder::vertical_proportions(curve, "Wells Vertical Proportion Curve");
    return true;
}

bool ComputeTools::simulation_histo(const iSimulator& simulator, double dz, PlotData& plot,
                                    std::string& error)
{
    return crossing(simulator, dz, false, "Simulation Facies-Crossing Histogram", block_columns, plot, error);
}

bool ComputeTools::simulation_histo_cumul(const iSimulator& simulator, double dz, PlotData& plot,
                                          std::string& error)
{
    return crossing(simulator, dz, true, "Simulation Sand-Crossing Cumulative Histogram", block_columns, plot,
                    error);
}

bool ComputeTools::well_histo(const iSimulator& simulator, double dz, PlotData& plot, std::string& error)
{
    return crossing(simulator, dz, false, "Wells Facies-Crossing Histogram", well_logs, plot, error);
}

bool ComputeTools::well_histo_cumul(const iSimulator& simulator, double dz, PlotData& plot,
                                    std::string& error)
{
    return crossing(simulator, dz, true, "Wells Sand-Crossing Cumulative Histogram", well_logs, plot, error);
}

bool ComputeTools::conditioning_statistics(const iSimulator& simulator, PlotData& plot, std::string& error)
{
    CoreList logs, columns;
    if (!well_logs(simulator, logs, error))
        return false;
    if (!simulator.ready(false))
    {
        error = "There is no simulation yet: launch it first.";
        return false;
    }
    for (const Core& log : logs)
    {
        // A well off the block stands on no column: it shows with nothing compared.
        Core column;
        if (!simulator.extractWellAt(log.top_location(), column, MP_UNDEF_REAL, MP_UNDEF_REAL))
            column.clear();
        columns.add(column);
    }
    plot =
        PlotBuilder::conditioning(ConditioningStatistics::compare(logs, columns), "Conditioning Statistics");
    return true;
}
