// The Compute menu: proportion curves, histograms and the conditioning
// statistics, each computed without the window and shown in a plot window.

#include "gui/MainFrame.h"
#include "gui/PlotWindow.h"
#include "gui/iUserDialogs.h"
#include "tools/ComputeTools.h"

#include <cstdlib>
#include <sstream>

namespace
{
using StepTool = bool (*)(const iSimulator&, double, PlotData&, std::string&);
using WholeTool = bool (*)(const iSimulator&, PlotData&, std::string&);
} // namespace

// The slice height or class width, proposed at the tools' default.
bool MainFrame::ask_tool_step(const std::string& title, double& step)
{
    std::ostringstream proposed;
    proposed << ComputeTools::MP_DEFAULT_STEP;
    std::string answer;
    if (!dialogs().askText(title, "Step in metres", proposed.str(), answer))
        return false;
    char* end = nullptr;
    step = std::strtod(answer.c_str(), &end);
    if (end == answer.c_str() || *end != '\0' || !(step > 0.))
    {
        show_message("Warning!", "The step must be a positive number of metres, not \"" + answer + "\".");
        return false;
    }
    return true;
}

void MainFrame::show_tool(const std::string& title, bool computed, const PlotData& plot,
                          const std::string& error)
{
    if (!computed)
    {
        show_message(title, error);
        return;
    }
    show_plot(this, plot);
}

void MainFrame::run_step_tool(const std::string& title, StepTool tool)
{
    double step = 0.;
    if (!ask_tool_step(title, step))
        return;
    PlotData plot;
    std::string error;
    const bool computed = tool(*_simulator, step, plot, error);
    show_tool(title, computed, plot, error);
}

void MainFrame::run_whole_tool(const std::string& title, WholeTool tool)
{
    PlotData plot;
    std::string error;
    const bool computed = tool(*_simulator, plot, error);
    show_tool(title, computed, plot, error);
}

void MainFrame::compute_simu_vpc(wxCommandEvent&)
{
    run_step_tool("Simulation Vertical Proportion Curve", &ComputeTools::simulation_vpc);
}

void MainFrame::compute_simu_pm(wxCommandEvent&)
{
    run_whole_tool("Simulation Proportion Matrix", &ComputeTools::simulation_pm);
}

void MainFrame::compute_simu_histo(wxCommandEvent&)
{
    run_step_tool("Simulation Facies-Crossing Histogram", &ComputeTools::simulation_histo);
}

void MainFrame::compute_simu_histo_cumul(wxCommandEvent&)
{
    run_step_tool("Simulation Sand-Crossing Cumulative Histogram", &ComputeTools::simulation_histo_cumul);
}

void MainFrame::compute_well_vpc(wxCommandEvent&)
{
    run_step_tool("Wells Vertical Proportion Curve", &ComputeTools::well_vpc);
}

void MainFrame::compute_well_histo(wxCommandEvent&)
{
    run_step_tool("Wells Facies-Crossing Histogram", &ComputeTools::well_histo);
}

void MainFrame::compute_well_histo_cumul(wxCommandEvent&)
{
    run_step_tool("Wells Sand-Crossing Cumulative Histogram", &ComputeTools::well_histo_cumul);
}

void MainFrame::compute_stacond(wxCommandEvent&)
{
    run_whole_tool("Conditioning Statistics", &ComputeTools::conditioning_statistics);
}
