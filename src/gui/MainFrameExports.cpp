// The Export menu: each item asks for a file and writes it through the
// kernel's own writers, as the batch path does.

#include "gui/MainFrame.h"

#include "gui/Project.h"
#include "gui/iUserDialogs.h"
#include "interface/iSimulator.h"
#include "kernel/files/GridReal.h"

#include <cstdlib>
#include <sstream>

namespace
{
const char* const LOOK = "Look at the Message Window for more details.\n";
const char* const GRID_WILDCARD =
    "F2G grid (*.f2g)|*.f2g|GSLIB grid (*.gslib)|*.gslib|Plain ascii grid (*.txt)|*.txt";
const double UNDEFINED = 1e30;

// The grid format a file name asks for: F2G unless its suffix names another.
int grid_format(const std::string& path)
{
    const auto ends = [&path](const std::string& suffix)
    {
        return path.size() >= suffix.size() &&
               path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
    };
    if (ends(".gslib") || ends(".gs"))
        return GRID_FORMAT_GSLIB;
    if (ends(".txt") || ends(".asc"))
        return GRID_FORMAT_ASCII;
    return GRID_FORMAT_F2G;
}

std::string order_of(int format)
{
    return GridReal::get_default_order(format);
}
} // namespace

bool MainFrame::export_ready()
{
    if (_simulator->getDomain() != nullptr && _paused)
        return true;
    show_message("Warning!", "Warning: There is no simulation to export yet: launch one first.");
    return false;
}

bool MainFrame::ask_export_path(const std::string& title, const std::string& wildcard,
                                const std::string& name, std::string& path)
{
    if (!dialogs().askSaveFile(title, wildcard, name, path))
        return false;
    start_progress(wxString::FromUTF8(title), "Writing " + wxString::FromUTF8(path));
    return true;
}

void MainFrame::export_done(bool good, const std::string& path)
{
    end_progress();
    if (good)
    {
        tracer()->info("Saved " + path);
        return;
    }
    tracer()->error("Cannot write " + path + "\n" + _simulator->getLastMessage());
    show_message("Error!", "Error: Cannot write " + path + "\n" + LOOK);
}

void MainFrame::save_topo(wxCommandEvent&)
{
    std::string path;
    if (!export_ready() || !ask_export_path("Export Topography", GRID_WILDCARD, "topography.f2g", path))
        return;
    const int format = grid_format(path);
    export_done(_simulator->saveTopo(path, format, order_of(format)), path);
}

void MainFrame::save_extra_topo(wxCommandEvent&)
{
    std::string path;
    if (!export_ready() || !ask_export_path("Export Extrapolated Topography", GRID_WILDCARD,
                                            "extrapolated_topography.f2g", path))
        return;
    const int format = grid_format(path);
    export_done(_simulator->saveExtraTopo(path, format, order_of(format)), path);
}

void MainFrame::save_emap(wxCommandEvent&)
{
    std::string path;
    if (!export_ready() || !ask_export_path("Export Erodibility Map", GRID_WILDCARD, "erodibility.f2g", path))
        return;
    const int format = grid_format(path);
    export_done(_simulator->saveEMap(path, format, order_of(format)), path);
}

void MainFrame::save_emap_built_CP(wxCommandEvent&)
{
    if (!export_ready())
        return;
    std::string factors;
    if (!dialogs().askText("Export Erodibility Map built from CenterLine",
                           "Channel width factors along X and Y (two numbers)", "1 1", factors))
        return;
    std::istringstream in(factors);
    double ax = 0.;
    double ay = 0.;
    if (!(in >> ax >> ay) || ax <= 0. || ay <= 0.)
    {
        show_message("Error!", "Error: The width factors \"" + factors + "\" must be two numbers above 0.");
        return;
    }
    std::string path;
    if (!ask_export_path("Export Erodibility Map built from CenterLine", GRID_WILDCARD, "erodibility_cp.f2g",
                         path))
        return;
    const int format = grid_format(path);
    export_done(_simulator->saveEMapBuiltFromCenterline(path, ax, ay, format, order_of(format)), path);
}

void MainFrame::save_centerline(wxCommandEvent&)
{
    std::string path;
    if (!export_ready() || !ask_export_path("Export Centerline", "*.txt", "centerline.txt", path))
        return;
    export_done(_simulator->saveCenterline(path), path);
}

void MainFrame::save_discrete_centerline(wxCommandEvent&)
{
    std::string path;
    if (!export_ready() ||
        !ask_export_path("Export Discrete Centerline", GRID_WILDCARD, "discrete_centerline.f2g", path))
        return;
    export_done(_simulator->saveCenterlineDisc(path), path);
}

void MainFrame::save_age_horizon(wxCommandEvent&)
{
    if (!export_ready())
        return;
    long age = 0;
    const long current = static_cast<long>(_simulator->getAge());
    if (!dialogs().askNumber("Export Age Horizon", "Age of the horizon (iteration)", current, 0, current,
                             age))
        return;
    std::string path;
    if (!ask_export_path("Export Age Horizon", GRID_WILDCARD, "horizon_" + std::to_string(age) + ".f2g",
                         path))
        return;
    const int format = grid_format(path);
    export_done(_simulator->saveAgeHorizon(path, static_cast<unsigned int>(age), format, order_of(format)),
                path);
}

void MainFrame::save_simu(wxCommandEvent&)
{
    if (!export_ready())
        return;
    std::string step;
    if (!dialogs().askText("Export 3D Simulation Block", "Vertical step of the block (m)", "0.5", step))
        return;
    char* end = nullptr;
    const double dz = std::strtod(step.c_str(), &end);
    if (end == step.c_str() || *end != '\0' || !(dz > 0.))
    {
        show_message("Error!", "Error: The vertical step \"" + step + "\" must be a number above 0.");
        return;
    }
    std::string path;
    if (!ask_export_path("Export 3D Simulation Block", "F2G block (*.f2g)|*.f2g", "simulation.f2g", path))
        return;
    export_done(
        _simulator->saveSimuF2G(path, dz, true, true, true, UNDEFINED, UNDEFINED, order_of(GRID_FORMAT_F2G)),
        path);
}

void MainFrame::save_well(wxCommandEvent&)
{
    if (!export_ready())
        return;
    const auto& wells = _project->getWells();
    if (wells.empty())
    {
        show_message("Warning!", "Warning: The project has no conditioning well to export.");
        return;
    }
    std::vector<std::string> names;
    for (const auto& well : wells)
        names.push_back(well.first);
    int chosen = 0;
    if (!dialogs().askChoice("Export Well", "Well to export", names, chosen))
        return;
    std::string path;
    if (!ask_export_path("Export Well", "*.flw", names[chosen] + ".flw", path))
        return;
    export_done(_simulator->saveWell(names[chosen], path), path);
}
