// Every command of the menus and buttons, bound to its handler.

#include "gui/MainFrame.h"

#include "gui/MessageWindow.h"

#include <wx/radiobox.h>

namespace
{
typedef void (MainFrame::*Handler)(wxCommandEvent&);
}

void MainFrame::bind_commands()
{
    const std::pair<int, Handler> commands[] = {
        {ID_NEW_PROJECT, &MainFrame::new_project},
        {ID_OPEN_PROJECT, &MainFrame::open_project},
        {ID_SAVE_PROJECT_AS, &MainFrame::save_project},
        {ID_SAVE_PROJECT, &MainFrame::save_project},
        {ID_BACKWARD, &MainFrame::backward_project},
        {ID_FORWARD, &MainFrame::forward_project},
        {ID_LAUNCH_JOURNAL, &MainFrame::launch_journal},
        {ID_BATCH, &MainFrame::on_batch},
        {ID_SEQUENCE, &MainFrame::on_sequence},
        {ID_SKIP, &MainFrame::on_skip},
        {ID_JEXIT, &MainFrame::on_jexit},
        {ID_LAUNCH_BATCH, &MainFrame::launch_batch},
        {ID_NEW_GRAPHIC, &MainFrame::add_graphic_window},
        {ID_LAUNCH, &MainFrame::on_launch},
        {ID_LAUNCH_UNTIL, &MainFrame::on_launch_until},
        {ID_REFRESH_LOOP, &MainFrame::on_refresh_period},
        {ID_PAUSE, &MainFrame::on_pause},
        {ID_RESET, &MainFrame::on_reset},
        {ID_EXPORT_WELL, &MainFrame::save_well},
        {ID_EXPORT_TOPO, &MainFrame::save_topo},
        {ID_EXPORT_EMAP, &MainFrame::save_emap},
        {ID_EXPORT_CENTERLINE, &MainFrame::save_centerline},
        {ID_EXPORT_DISC_CENTERLINE, &MainFrame::save_discrete_centerline},
        {ID_EXPORT_SIMU, &MainFrame::save_simu},
        {ID_EXPORT_EMAP_CP, &MainFrame::save_emap_built_CP},
        {ID_EXPORT_AGE_HORIZON, &MainFrame::save_age_horizon},
        {ID_EXPORT_EXTRA_TOPO, &MainFrame::save_extra_topo},
        {ID_CHANGE_COLOURS, &MainFrame::change_facies_colourmap},
        {ID_RESTORE_COLOURS, &MainFrame::restore_facies_colourmap},
        {ID_LOAD_COLOURS, &MainFrame::load_facies_colourmap},
        {ID_SAVE_COLOURS, &MainFrame::save_facies_colourmap},
        {ID_REFRESH_PERIOD, &MainFrame::on_refresh_period},
        {ID_SIMU_VPC, &MainFrame::compute_simu_vpc},
        {ID_SIMU_PM, &MainFrame::compute_simu_pm},
        {ID_SIMU_HISTO, &MainFrame::compute_simu_histo},
        {ID_SIMU_HISTO_CUMUL, &MainFrame::compute_simu_histo_cumul},
        {ID_WELL_VPC, &MainFrame::compute_well_vpc},
        {ID_WELL_HISTO, &MainFrame::compute_well_histo},
        {ID_WELL_HISTO_CUMUL, &MainFrame::compute_well_histo_cumul},
        {ID_STACOND, &MainFrame::compute_stacond},
        {ID_USERS_GUIDE, &MainFrame::on_users_guide},
        {ID_LICENSE, &MainFrame::on_license},
        {ID_CITE, &MainFrame::on_cite},
        {ID_REGISTER, &MainFrame::on_register},
        {ID_ABOUT, &MainFrame::on_about},
        {ID_RESTORE, &MainFrame::on_restore},
        {ID_NEXT_SEQUENCE, &MainFrame::on_next_sequence},
    };
    for (const auto& command : commands)
    {
        Bind(wxEVT_MENU, command.second, this, command.first);
        Bind(wxEVT_BUTTON, command.second, this, command.first);
    }
    Bind(wxEVT_RADIOBOX, &MainFrame::on_system, this, ID_SYSTEM);
    Bind(wxEVT_MENU, &MainFrame::open_recent_project, this, ID_RECENT_FIRST, ID_RECENT_LAST);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent&)
        {
            _messages->Show();
            _messages->Raise();
        },
        ID_MESSAGES);
    const auto exit = [this](wxCommandEvent&) { Close(); };
    Bind(wxEVT_MENU, exit, ID_EXIT);
    Bind(wxEVT_BUTTON, exit, ID_EXIT);
    Bind(wxEVT_CLOSE_WINDOW, &MainFrame::on_close, this);
}
