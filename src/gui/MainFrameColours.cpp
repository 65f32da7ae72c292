// The colours of the facies in the views, from the Edit menu.

#include "gui/MainFrame.h"

void MainFrame::change_facies_colourmap(wxCommandEvent&)
{
    not_available_yet("Change colors");
}

void MainFrame::restore_facies_colourmap(wxCommandEvent&)
{
    not_available_yet("Restore colors");
}

void MainFrame::load_facies_colourmap(wxCommandEvent&)
{
    not_available_yet("Load facies colors");
}

void MainFrame::save_facies_colourmap(wxCommandEvent&)
{
    not_available_yet("Save facies colors");
}
