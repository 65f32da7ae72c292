// The Compute menu: proportion curves, histograms and the conditioning
// statistics, each in a graphic window of its own.

#include "gui/MainFrame.h"

void MainFrame::not_available_yet(const wxString& what)
{
    show_message("Information!", (what + ": not available yet.").utf8_string());
}

void MainFrame::compute_simu_vpc(wxCommandEvent&)
{
    not_available_yet("Simulation Vertical Proportion Curve");
}

void MainFrame::compute_simu_pm(wxCommandEvent&)
{
    not_available_yet("Simulation Proportion Matrix");
}

void MainFrame::compute_simu_histo(wxCommandEvent&)
{
    not_available_yet("Simulation Facies-Crossing Histogram");
}

void MainFrame::compute_simu_histo_cumul(wxCommandEvent&)
{
    not_available_yet("Simulation Sand-Crossing Cumulative Histogram");
}

void MainFrame::compute_well_vpc(wxCommandEvent&)
{
    not_available_yet("Wells Vertical Proportion Curve");
}

void MainFrame::compute_well_histo(wxCommandEvent&)
{
    not_available_yet("Wells Facies-Crossing Histogram");
}

void MainFrame::compute_well_histo_cumul(wxCommandEvent&)
{
    not_available_yet("Wells Sand-Crossing Cumulative Histogram");
}

void MainFrame::compute_stacond(wxCommandEvent&)
{
    not_available_yet("Conditioning Statistics");
}
