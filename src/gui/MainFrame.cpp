// The frame's layout, its state display, its progress dialog and the trace.

#include "gui/MainFrame.h"

#include "gui/DomainParameters.h"
#include "gui/MessageWindow.h"
#include "gui/ParameterPanel.h"
#include "gui/Project.h"
#include "gui/WxUserDialogs.h"
#include "interface/iChannel.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "kernel/driver/Simulator.h"

#include <wx/button.h>
#include <wx/menu.h>
#include <wx/notebook.h>
#include <wx/panel.h>
#include <wx/progdlg.h>
#include <wx/radiobox.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>
#include <wx/wrapsizer.h>

#include <filesystem>
#include <iostream>
#include <sstream>

namespace
{
// The frame the kernel's free functions reach; one per process.
MainFrame* g_frame = nullptr;

const char* const SYSTEM_TYPES[] = {"Fluvial", "Turbidite"};

// Pages of the notebook and the groups each shows, by their names.
struct PageLayout
{
    const char* title;
    std::vector<std::string> groups;
};
const std::vector<PageLayout>& page_layouts()
{
    static const std::vector<PageLayout> layouts = {
        {"Initialization", {"Domain", "Surfaces"}},
        {"Channel", {"Channel", "Erodibility"}},
        {"Aggradation", {"Aggradation"}},
        {"Avulsions", {"Avulsions"}},
        {"Equilibrium Profile", {"Equilibrium Profile"}},
        {"Miscellaneous", {"Grain Size", "Sediment Load", "Mass Balance", "Wells"}},
        {"Seed", {"Simulation Parameters"}},
    };
    return layouts;
}
} // namespace

MainFrame::MainFrame(iSimulator* simulator, const wxString& title, iUserDialogs* dialogs)
    : wxFrame(nullptr, wxID_ANY, title, wxDefaultPosition, wxSize(1000, 720)), _simulator(simulator),
      _dialogs(dialogs)
{
    if (_dialogs == nullptr)
    {
        _ownDialogs = std::make_unique<WxUserDialogs>(this);
        _dialogs = _ownDialogs.get();
    }
    _groups = std::make_unique<ParameterGroupList>(_simulator->getParameters());
    g_frame = this;
}

MainFrame::~MainFrame()
{
    // The graphic windows tell the set when they go: before the set goes.
    DestroyChildren();
    // The temporary project goes with the session that made it.
    if (_project != nullptr && _project->getParentPath() == temp_project_parent())
    {
        const std::string path = _project->getPath();
        _project->removeDirectory(path);
        std::error_code ec;
        std::filesystem::remove(temp_project_parent(), ec);
    }
    if (g_frame == this)
    {
        g_frame = nullptr;
        _simulator->getTracer()->setProgressFunction(nullptr);
    }
}

bool MainFrame::create()
{
    _messages = new MessageWindow(this);
    create_gui();
    bind_commands();
    const bool opened = open_temp_project();
    update_recent_history();
    set_lock();
    set_status();
    set_title();
    summary();
    return opened;
}

// ---------------------------------------------------------------------------
// Layout

void MainFrame::create_gui()
{
    create_menus();
    CreateStatusBar(2);
    auto* panel = new wxPanel(this);
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    _notebook = new wxNotebook(panel, wxID_ANY);
    page_setup();
    sizer->Add(_notebook, 1, wxEXPAND | wxALL, 4);
    create_std_buttons(panel, sizer);
    panel->SetSizer(sizer);
}

void MainFrame::create_menus()
{
    auto* file = new wxMenu;
    file->Append(ID_NEW_PROJECT, "New Project...\tCtrl-n");
    file->Append(ID_OPEN_PROJECT, "Open Project...\tCtrl-o");
    _recentMenu = new wxMenu;
    file->AppendSubMenu(_recentMenu, "Open Recent Project");
    file->Append(ID_SAVE_PROJECT_AS, "Save Project As...\tCtrl-a");
    file->Append(ID_SAVE_PROJECT, "&Save Project\tCtrl-s");
    file->AppendSeparator();
    file->Append(ID_BACKWARD, "Project Navigate &Backward\tCtrl-b");
    file->Append(ID_FORWARD, "Project Navigate &Forward\tCtrl-f");
    file->AppendSeparator();
    file->Append(ID_LAUNCH_JOURNAL, "Launch journal file");
    file->Append(ID_BATCH, "Batch");
    file->Append(ID_SEQUENCE, "Iteration Sequence");
    file->Append(ID_SKIP, "Skip Sequence");
    file->Append(ID_JEXIT, "Journal Exit");
    file->Append(ID_LAUNCH_BATCH, "Launch batch file");
    file->AppendSeparator();
    file->Append(ID_NEW_GRAPHIC, "&New graphic window\tCtrl-g");
    file->Append(ID_LAUNCH, "&Launch\tCtrl-l");
    file->Append(ID_LAUNCH_UNTIL, "&Launch Until\tCtrl-u");
    file->Append(ID_REFRESH_LOOP, "&Refreshment Loop\tCtrl-1");
    file->Append(ID_PAUSE, "&Pause\tCtrl-p");
    file->Append(ID_RESET, "&Reset\tCtrl-r");
    file->AppendSeparator();
    file->Append(ID_MESSAGES, "Messages Window");
    file->Append(ID_EXIT, "Exit");

    auto* exports = new wxMenu;
    exports->Append(ID_EXPORT_WELL, "Export Well");
    exports->Append(ID_EXPORT_TOPO, "Export Topography");
    exports->Append(ID_EXPORT_EMAP, "Export Erodibility Map");
    exports->Append(ID_EXPORT_CENTERLINE, "Export Centerline");
    exports->Append(ID_EXPORT_DISC_CENTERLINE, "Export Discrete Centerline");
    exports->Append(ID_EXPORT_SIMU, "Export 3D Simulation Block");
    exports->Append(ID_EXPORT_EMAP_CP, "Export Erodibility Map built from CenterLine");
    exports->Append(ID_EXPORT_AGE_HORIZON, "Export Age Horizon");

    auto* edit = new wxMenu;
    edit->Append(ID_CHANGE_COLOURS, "Change colors");
    edit->Append(ID_RESTORE_COLOURS, "Restore colors");
    edit->Append(ID_LOAD_COLOURS, "Load facies colors");
    edit->Append(ID_SAVE_COLOURS, "Save facies colors");
    edit->AppendSeparator();
    edit->Append(ID_REFRESH_PERIOD, "Refreshment period");

    auto* compute = new wxMenu;
    compute->Append(ID_SIMU_VPC, "Simulation Vertical Proportion Curve");
    compute->Append(ID_SIMU_PM, "Simulation Proportion Matrix");
    compute->Append(ID_SIMU_HISTO, "Simulation Facies-Crossing Histogram");
    compute->Append(ID_SIMU_HISTO_CUMUL, "Simulation Sand-Crossing Cumulative Histogram");
    compute->AppendSeparator();
    compute->Append(ID_WELL_VPC, "Wells Vertical Proportion Curve");
    compute->Append(ID_WELL_HISTO, "Wells Facies-Crossing Histogram");
    compute->Append(ID_WELL_HISTO_CUMUL, "Wells Sand-Crossing Cumulative Histogram");
    compute->AppendSeparator();
    compute->Append(ID_STACOND, "Conditioning Statistics");

    auto* help = new wxMenu;
    help->Append(ID_USERS_GUIDE, "Users Guide\tCtrl-h");
    help->Append(ID_LICENSE, "End User License Agreement");
    help->Append(ID_CITE, "How to Cite?");
    help->Append(ID_REGISTER, "Register the Software");
    help->AppendSeparator();
    help->Append(ID_ABOUT, "About Software");

    auto* bar = new wxMenuBar;
    bar->Append(file, "&File");
    bar->Append(exports, "&Export");
    bar->Append(edit, "&Edit");
    bar->Append(compute, "&Compute");
    bar->Append(help, "&Help");
    SetMenuBar(bar);
    // Added apart, once the bar stands.
    exports->Append(ID_EXPORT_EXTRA_TOPO, "Export Extrapolated Topography");
}

void MainFrame::page_setup()
{
    std::vector<const ParameterGroup*> all;
    for (const auto& group : _groups->getGroups())
        all.push_back(group.get());
    for (const PageLayout& layout : page_layouts())
    {
        std::vector<const ParameterGroup*> groups;
        for (const std::string& name : layout.groups)
            for (const ParameterGroup* group : all)
                if (group->getName() == name)
                    groups.push_back(group);
        if (layout.groups.front() == "Domain")
            _domainGroup = dynamic_cast<DomainParameters*>(const_cast<ParameterGroup*>(groups.front()));
        auto* page = new wxPanel(_notebook);
        auto* sizer = new wxBoxSizer(wxVERTICAL);
        if (_domainGroup != nullptr && _system == nullptr)
        {
            const wxString types[] = {SYSTEM_TYPES[0], SYSTEM_TYPES[1]};
            _system = new wxRadioBox(page, ID_SYSTEM, "System Type:", wxDefaultPosition, wxDefaultSize,
                                     WXSIZEOF(types), types, 1, wxRA_SPECIFY_ROWS);
            sizer->Add(_system, 0, wxALL, 6);
            auto* restore = new wxButton(page, ID_RESTORE, "Restore Default Parameters");
            sizer->Add(restore, 0, wxLEFT | wxBOTTOM, 6);
            _buttons.push_back(restore);
        }
        auto* panel = new ParameterPanel(page, _simulator->getParameters(), groups);
        panel->SetName(layout.title);
        sizer->Add(panel, 1, wxEXPAND);
        page->SetSizer(sizer);
        _panels.push_back(panel);
        _notebook->AddPage(page, layout.title);
    }
    auto* page = new wxPanel(_notebook);
    _summary = new wxStaticText(page, wxID_ANY, "");
    _summary->SetFont(wxFont(wxFontInfo(10).Family(wxFONTFAMILY_TELETYPE)));
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(_summary, 1, wxEXPAND | wxALL, 8);
    page->SetSizer(sizer);
    _notebook->AddPage(page, "Summary");
}

void MainFrame::create_std_buttons(wxWindow* parent, wxSizer* sizer)
{
    const std::pair<int, const char*> buttons[] = {
        {ID_LAUNCH, "Launch"},
        {ID_LAUNCH_UNTIL, "Launch Until..."},
        {ID_PAUSE, "Pause"},
        {ID_RESET, "Reset"},
        {ID_SEQUENCE, "Iter. Sequence"},
        {ID_BATCH, "Batch"},
        {ID_SKIP, "Skip Sequence"},
        {ID_JEXIT, "Jnl Exit"},
        {ID_REFRESH_LOOP, "Refresh. Loop"},
        {ID_EXIT, "Exit"},
    };
    auto* row = new wxWrapSizer(wxHORIZONTAL);
    for (const auto& button : buttons)
    {
        auto* b = new wxButton(parent, button.first, button.second);
        row->Add(b, 0, wxALL, 3);
        _buttons.push_back(b);
    }
    sizer->Add(row, 0, wxEXPAND | wxALL, 4);
}

ParameterPanel* MainFrame::panel_of(const std::string& name) const
{
    for (ParameterPanel* panel : _panels)
        if (panel->GetName() == name)
            return panel;
    return nullptr;
}

// ---------------------------------------------------------------------------
// Accessors

iParameters* MainFrame::parameters() const
{
    return _simulator->getParameters();
}

MeanderCalculator* MainFrame::meander_calculator() const
{
    return _simulator->getMeanderCalculator();
}

iTracer* MainFrame::tracer() const
{
    return _simulator->getTracer();
}

const Network* MainFrame::network() const
{
    const auto* simulator = dynamic_cast<const Simulator*>(_simulator);
    return simulator != nullptr ? simulator->network() : nullptr;
}

double MainFrame::wavelength() const
{
    return _simulator->getDomain() != nullptr ? _simulator->getWavelength() : 0.;
}

void MainFrame::show_message(const std::string& title, const std::string& text)
{
    dialogs().showMessage(title, text);
}

bool MainFrame::ask_confirm(const wxString& text)
{
    return dialogs().askYesNo("Confirm", text.utf8_string());
}

// ---------------------------------------------------------------------------
// State display

void MainFrame::set_lock()
{
    const bool running = !_paused;
    const unsigned int age = _simulator->getAge();
    const bool journal = _project != nullptr && _project->isInputJournalActive();
    for (ParameterPanel* panel : _panels)
        panel->setLocked(running, age);
    if (_system != nullptr)
        _system->Enable(!running && age == 0);
    wxMenuBar* bar = GetMenuBar();
    const std::pair<int, bool> states[] = {
        {ID_NEW_PROJECT, !running},
        {ID_OPEN_PROJECT, !running},
        {ID_SAVE_PROJECT_AS, !running},
        {ID_SAVE_PROJECT, !running && age > 0},
        {ID_BACKWARD, !running},
        {ID_FORWARD, !running},
        {ID_LAUNCH_JOURNAL, !running && age == 0},
        {ID_LAUNCH_BATCH, !running && age == 0},
        {ID_BATCH, !running && journal},
        {ID_SEQUENCE, !running && journal},
        {ID_SKIP, !running && journal},
        {ID_JEXIT, !running && journal},
        {ID_LAUNCH, !running},
        {ID_LAUNCH_UNTIL, !running},
        {ID_PAUSE, running},
        {ID_RESET, !running},
        {ID_RESTORE, !running && age == 0},
    };
    for (const auto& state : states)
    {
        if (bar != nullptr && bar->FindItem(state.first) != nullptr)
            bar->Enable(state.first, state.second);
        for (wxButton* button : _buttons)
            if (button->GetId() == state.first)
                button->Enable(state.second);
    }
    if (bar != nullptr)
    {
        const int exports[] = {ID_EXPORT_WELL,
                               ID_EXPORT_TOPO,
                               ID_EXPORT_EMAP,
                               ID_EXPORT_CENTERLINE,
                               ID_EXPORT_DISC_CENTERLINE,
                               ID_EXPORT_SIMU,
                               ID_EXPORT_EMAP_CP,
                               ID_EXPORT_AGE_HORIZON,
                               ID_EXPORT_EXTRA_TOPO};
        for (int id : exports)
            bar->Enable(id, !running);
    }
}

void MainFrame::set_status()
{
    const unsigned int age = _simulator->getAge();
    wxString state = !_paused ? "Running" : age == 0 ? "Ready" : "Paused";
    if (!_paused && _batchMode)
        state += " (batch)";
    else if (!_paused && _sequenceMode)
        state += " (sequence)";
    SetStatusText(wxString::Format("Iteration: %u", age), 0);
    SetStatusText(
        _untilIteration > 0 && !_paused ? wxString::Format("%s until %u", state, _untilIteration) : state, 1);
}

void MainFrame::set_title()
{
    wxString title = "Sarvo - ";
    title += _project != nullptr ? wxString::FromUTF8(_project->getPath()) : wxString("no project");
    SetTitle(title);
}

void MainFrame::summary()
{
    if (_summary == nullptr)
        return;
    std::ostringstream out;
    const iParameters* p = parameters();
    out << "System type            : " << DomainParameters::systemTypeText(*p) << "\n";
    out << "Project                : " << (_project != nullptr ? _project->getPath() : "none") << "\n";
    out << "Iteration              : " << _simulator->getAge() << "\n";
    out << "Grid                   : " << p->getParamInt("DOMAIN_NX") << " x " << p->getParamInt("DOMAIN_NY")
        << " nodes of " << p->getParamDouble("DOMAIN_DX") << " x " << p->getParamDouble("DOMAIN_DY")
        << " m\n";
    out << "Seed                   : " << p->getParamInt("SIM_SEED") << "\n";
    out << "Refreshment period     : " << _refreshPeriod << " iterations\n";
    RunSummary run;
    if (_simulator->getDomain() != nullptr && _simulator->getRunSummary(run))
    {
        out << "Sand proportion        : " << _simulator->getSandProportion() << "\n";
        out << "Point bar proportion   : " << _simulator->getPBProportion() << "\n";
        out << "Sinuosity              : " << _simulator->getSinuosity() << "\n";
        out << "Cutoffs                : " << _simulator->getNbCutoff() << "\n";
    }
    _summary->SetLabel(wxString::FromUTF8(out.str()));
}

void MainFrame::update_forecast()
{
    if (_simulator->getDomain() == nullptr || !tracer()->traceLevel(TRACE_DEBUG))
        return;
    std::ostringstream out;
    out << "Forecast: sand " << _simulator->getForecastSand() << ", aggradation rate "
        << _simulator->getForecastAggradationRate() << ", migration rate "
        << _simulator->getForecastMigrationRate();
    tracer()->debug(out.str());
}

// ---------------------------------------------------------------------------
// Progress and trace

void MainFrame::start_progress(const wxString& title, const wxString& message)
{
    _progressTitle = title;
    _progressMessage = message;
    _progress.close();
    tracer()->setProgressFunction(update_progress_function);
}

bool MainFrame::update_progress(int n)
{
    switch (_progress.progress(n))
    {
    case ProgressCounter::CLOSED:
        return false;
    case ProgressCounter::DONE:
        return true;
    case ProgressCounter::UPDATE:
        break;
    }
    if (_progressDialog == nullptr)
        _progressDialog =
            new wxProgressDialog(_progressTitle, _progressMessage, std::max(1, _progress.total()), this,
                                 wxPD_APP_MODAL | wxPD_CAN_ABORT | wxPD_AUTO_HIDE);
    return _progressDialog->Update(std::min(_progress.count(), _progress.total()));
}

void MainFrame::end_progress()
{
    tracer()->setProgressFunction(nullptr);
    _progress.close();
    delete _progressDialog;
    _progressDialog = nullptr;
}

bool MainFrame::update_progress_function(int n)
{
    return g_frame != nullptr && g_frame->update_progress(n);
}

void MainFrame::trace_function(const char* text, TraceLevel level)
{
    if (g_frame != nullptr && g_frame->_messages != nullptr)
        g_frame->_messages->trace_message(text, level);
    if (text != nullptr)
        std::cout << text << std::flush;
    else
        std::cout.setstate(std::ios::badbit);
    if (level == TRACE_FATAL)
        throw -1;
}

// ---------------------------------------------------------------------------
// Parameters

bool MainFrame::load_interface_parameters()
{
    std::string message;
    bool good = true;
    for (ParameterPanel* panel : _panels)
        good = panel->commit(message) && good;
    if (!good)
        show_message("Error!", "Error: Some parameters are not valid:\n" + message);
    return good;
}

void MainFrame::update_interface_parameters()
{
    for (ParameterPanel* panel : _panels)
        panel->updateParams();
    if (_system != nullptr)
        _system->SetSelection(parameters()->usingTurbi() ? 1 : 0);
}

void MainFrame::load_default_parameters(bool full)
{
    const int seed = parameters()->getParamInt("SIM_SEED");
    parameters()->reset(full);
    parameters()->setParamInt("SIM_SEED", seed);
    update_interface_parameters();
}

void MainFrame::on_system(wxCommandEvent&)
{
    const int wanted = _system->GetSelection();
    const int current = parameters()->usingTurbi() ? 1 : 0;
    if (wanted == current)
        return;
    if (!ask_confirm(
            "You are about to change the system type. All parameters will be restored to there default "
            "values\n"))
    {
        _system->SetSelection(current);
        return;
    }
    const int seed = parameters()->getParamInt("SIM_SEED");
    if (wanted == 1)
        parameters()->setUsingTurbi();
    else
        parameters()->setUsingFluvi();
    load_default_parameters(false);
    parameters()->setParamInt("SIM_SEED", seed);
    update_interface_parameters();
    show_message("Information!", std::string("Using ") + SYSTEM_TYPES[wanted] + " System");
    summary();
}

void MainFrame::on_restore(wxCommandEvent&)
{
    if (!ask_confirm("You are about to restore all default parameters\nDo you want to continue ?"))
        return;
    load_default_parameters(false);
    summary();
}
