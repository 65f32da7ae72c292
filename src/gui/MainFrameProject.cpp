// Projects: the temporary one, new, open, recent, save, save as, the history
// of saved iterations, and the journal and batch files run in a project.

#include "gui/MainFrame.h"

#include "gui/Project.h"
#include "gui/RegistryUtility.h"
#include "gui/iUserDialogs.h"
#include "interface/iSimulator.h"

#include <wx/menu.h>

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{
const char* const PROJECT_LOOK = "Look at the Message Window for more details.\n";

bool valid_project_name(const std::string& name)
{
    return !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
}
} // namespace

std::string MainFrame::temp_project_parent()
{
    std::error_code ec;
    fs::path base = fs::temp_directory_path(ec);
    if (ec)
        base = "/tmp";
    return (base / ("sarvo-" + std::to_string(getpid()))).string();
}

bool MainFrame::alloc_project(const std::string& parent, const std::string& name, bool create)
{
    auto project = std::make_unique<Project>(_simulator, _dialogs, parent, name);
    // The project left behind is not touched: only the model is dropped.
    _project.reset();
    reset();
    if (!(create ? project->create() : project->open()))
    {
        set_title();
        return false;
    }
    _project = std::move(project);
    std::vector<unsigned int> saved;
    _project->getIterList(saved);
    if (!create && !saved.empty())
        _project->load();
    after_project_change();
    return true;
}

void MainFrame::after_project_change()
{
    _graphics.observe(network());
    update_interface_parameters();
    set_lock();
    set_status();
    set_title();
    summary();
    refresh(false);
}

bool MainFrame::open_temp_project()
{
    const std::string parent = temp_project_parent();
    std::error_code ec;
    fs::create_directories(parent, ec);
    if (alloc_project(parent, "", true))
        return true;
    tracer()->error("Cannot open default temporary project.Please unlock folder " + parent);
    show_message("Error!", std::string("Error: Could not run program!\n") + PROJECT_LOOK);
    return false;
}

bool MainFrame::project_replacement_confirmed()
{
    if (!_paused)
        pause_function();
    return _simulator->getAge() == 0 ||
           ask_confirm(
               "The current simulation will not be saved in the current project.\nDo you want to continue ?");
}

void MainFrame::new_project(wxCommandEvent&)
{
    if (!project_replacement_confirmed())
        return;
    std::string parent;
    std::string name;
    if (!dialogs().askDirectory("Folder for the new project", parent) ||
        !dialogs().askText("New Project", "Name for the new project", "", name))
        return;
    std::error_code ec;
    if (!valid_project_name(name) || fs::exists(parent + "/" + name + ".prj", ec))
    {
        show_message("Error!", "Bad name or project already exists.\nChoose another name.");
        return;
    }
    if (alloc_project(parent, name, true))
        save_recent_projects(_project->getPath());
    else
        open_temp_project();
}

void MainFrame::open_project(wxCommandEvent&)
{
    if (!project_replacement_confirmed())
        return;
    std::string path;
    if (dialogs().askDirectory("Choose a project folder (.prj)", path))
        open_project_from_dir(path);
}

bool MainFrame::open_project_from_dir(const std::string& path)
{
    fs::path dir = fs::path(path).lexically_normal();
    if (dir.filename().empty())
        dir = dir.parent_path();
    std::string name = dir.filename().string();
    if (dir.extension() == ".prj")
        name = dir.stem().string();
    if (alloc_project(dir.parent_path().string(), name, false))
    {
        save_recent_projects(_project->getPath());
        return true;
    }
    remove_from_recent_projects(path);
    open_temp_project();
    return false;
}

void MainFrame::open_recent_project(wxCommandEvent& event)
{
    const size_t index = static_cast<size_t>(event.GetId() - ID_RECENT_FIRST);
    if (index >= _recent.size() || !project_replacement_confirmed())
        return;
    open_project_from_dir(_recent[index]);
}

std::vector<std::string> MainFrame::get_recent_projects() const
{
    return RegistryUtility::get_recent_projects();
}

void MainFrame::save_recent_projects(const std::string& path)
{
    if (!RegistryUtility::save_recent_projects(path))
        tracer()->warning("Cannot write the settings file " + RegistryUtility::settingsPath());
    update_recent_history();
}

void MainFrame::remove_from_recent_projects(const std::string& path)
{
    RegistryUtility::remove_from_recent_projects(path);
    update_recent_history();
}

void MainFrame::update_recent_history()
{
    if (_recentMenu == nullptr)
        return;
    while (_recentMenu->GetMenuItemCount() > 0)
        _recentMenu->Destroy(_recentMenu->FindItemByPosition(0));
    _recent = get_recent_projects();
    for (size_t index = 0;
         index < _recent.size() && ID_RECENT_FIRST + static_cast<int>(index) <= ID_RECENT_LAST; index++)
        _recentMenu->Append(ID_RECENT_FIRST + static_cast<int>(index), wxString::FromUTF8(_recent[index]));
}

bool MainFrame::save_current()
{
    if (_simulator->getAge() == 0 || _simulator->getDomain() == nullptr)
        return true;
    return _project->save();
}

void MainFrame::save_project(wxCommandEvent& event)
{
    if (_project == nullptr || !_paused)
        return;
    // The temporary project is named on its first save.
    if (event.GetId() == ID_SAVE_PROJECT_AS || _project->getParentPath() == temp_project_parent())
        save_project_as();
    else if (save_current())
        show_message("Information!",
                     "Project saved at iteration " + std::to_string(_simulator->getAge()) + ".");
    set_lock();
    set_title();
}

bool MainFrame::save_project_as()
{
    std::string parent;
    std::string name;
    if (!dialogs().askDirectory("Folder for the project", parent) ||
        !dialogs().askText("Save Project As", "Name for the project", "", name))
        return false;
    std::error_code ec;
    if (!valid_project_name(name) || fs::exists(parent + "/" + name + ".prj", ec))
    {
        show_message("Error!", "Bad name or project already exists.\nChoose another name.");
        return false;
    }
    if (!save_current() || !_project->saveProjectAs(parent, name))
        return false;
    save_recent_projects(_project->getPath());
    set_title();
    return true;
}

// Navigation needs a paused project with saved iterations.
bool MainFrame::may_navigate()
{
    if (_project == nullptr || !_paused)
        return false;
    std::vector<unsigned int> saved;
    _project->getIterList(saved);
    if (saved.empty())
    {
        show_message("Warning!", "Warning: You must start an existing project before.");
        return false;
    }
    return true;
}

void MainFrame::backward_project(wxCommandEvent&)
{
    if (!may_navigate())
        return;
    if (!_project->loadPrevious())
        show_message("Warning!", "Warning: Journal file seems to be corrupted!");
    after_project_change();
}

void MainFrame::forward_project(wxCommandEvent&)
{
    if (!may_navigate())
        return;
    if (!_project->loadNext())
        show_message(
            "Warning!",
            "Warning: You have reached the last sequence or the next sequence seems to be corrupted.");
    after_project_change();
}

// A journal or a batch file starts a simulation of its own: refused once one has started.
bool MainFrame::ask_starting_file(const std::string& refusal, const std::string& title,
                                  const std::string& pattern, std::string& path)
{
    if (_project == nullptr)
        return false;
    if (!_paused || _simulator->getAge() > 0)
    {
        show_message("Warning!", refusal);
        return false;
    }
    return dialogs().askOpenFile(title, pattern, path);
}

void MainFrame::launch_journal(wxCommandEvent&)
{
    std::string path;
    if (!ask_starting_file("Journal file can't be launched when the simulation is already started.",
                           "Choose Journal File", "*.jnl", path))
        return;
    _project->setInputJournal(path);
    if (!_project->readInitFromInputJnl())
        show_message(
            "Error!",
            "Journal file seems to be corrupted. Please, look at sample journal files in data directory!");
    update_interface_parameters();
    set_lock();
    summary();
}

void MainFrame::launch_batch(wxCommandEvent&)
{
    std::string path;
    if (!ask_starting_file("Batch file can't be launched when the simulation is already started.",
                           "Choose batch File", "*.*", path))
        return;
    _project->launch_batch(path);
    _graphics.observe(network());
    update_interface_parameters();
    refresh(true);
    set_lock();
    summary();
}

void MainFrame::add_graphic_window(wxCommandEvent&)
{
    _graphics.add(this, network(), wxString::Format("Block %zu", _graphics.size() + 1));
}
