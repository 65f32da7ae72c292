#pragma once
// The application's window and the owner of run control. The kernel runs on
// this thread: a run binds `idle` to the idle event and each idle round
// advances the model by `refreshPeriod` iterations, so that the views read
// the kernel's data between rounds with no lock.

#include "gui/GraphicWindows.h"
#include "gui/ParameterGroups.h"
#include "gui/ProgressCounter.h"

#include "interface/iTracer.h"

#include <wx/frame.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class DomainParameters;
class PlotData;
class iSimulator;
class iParameters;
class iUserDialogs;
class MeanderCalculator;
class Network;
class Project;
class MessageWindow;
class ParameterPanel;
class wxButton;
class wxMenu;
class wxNotebook;
class wxProgressDialog;
class wxRadioBox;
class wxStaticText;

class MainFrame : public wxFrame
{
public:
    // Identifiers of the commands, shared by menus, buttons and tests.
    enum CommandId
    {
        ID_NEW_PROJECT = wxID_HIGHEST + 1,
        ID_OPEN_PROJECT,
        ID_SAVE_PROJECT_AS,
        ID_SAVE_PROJECT,
        ID_BACKWARD,
        ID_FORWARD,
        ID_LAUNCH_JOURNAL,
        ID_BATCH,
        ID_SEQUENCE,
        ID_SKIP,
        ID_JEXIT,
        ID_LAUNCH_BATCH,
        ID_NEW_GRAPHIC,
        ID_LAUNCH,
        ID_LAUNCH_UNTIL,
        ID_REFRESH_LOOP,
        ID_PAUSE,
        ID_RESET,
        ID_MESSAGES,
        ID_EXIT,
        ID_EXPORT_WELL,
        ID_EXPORT_TOPO,
        ID_EXPORT_EMAP,
        ID_EXPORT_CENTERLINE,
        ID_EXPORT_DISC_CENTERLINE,
        ID_EXPORT_SIMU,
        ID_EXPORT_EMAP_CP,
        ID_EXPORT_AGE_HORIZON,
        ID_EXPORT_EXTRA_TOPO,
        ID_CHANGE_COLOURS,
        ID_RESTORE_COLOURS,
        ID_LOAD_COLOURS,
        ID_SAVE_COLOURS,
        ID_REFRESH_PERIOD,
        ID_SIMU_VPC,
        ID_SIMU_PM,
        ID_SIMU_HISTO,
        ID_SIMU_HISTO_CUMUL,
        ID_WELL_VPC,
        ID_WELL_HISTO,
        ID_WELL_HISTO_CUMUL,
        ID_STACOND,
        ID_USERS_GUIDE,
        ID_LICENSE,
        ID_CITE,
        ID_REGISTER,
        ID_ABOUT,
        ID_SYSTEM,
        ID_RESTORE,
        ID_NEXT_SEQUENCE,
        ID_RECENT_FIRST,
        ID_RECENT_LAST = ID_RECENT_FIRST + 16
    };

    // Without `dialogs` the frame asks through wx dialogs of its own.
    MainFrame(iSimulator* simulator, const wxString& title, iUserDialogs* dialogs = nullptr);
    ~MainFrame() override;

    // Menus, pages and the temporary project: the frame ready for use.
    bool create();

    // --- Accessors
    iParameters* parameters() const;
    MeanderCalculator* meander_calculator() const;
    iTracer* tracer() const;
    const Network* network() const;
    double wavelength() const;
    Project* project() const { return _project.get(); }
    iSimulator* simulator() const { return _simulator; }
    MessageWindow* message_window() const { return _messages; }
    GraphicWindows& graphic_windows() { return _graphics; }
    wxNotebook* notebook() const { return _notebook; }
    bool isPaused() const { return _paused; }
    bool isBatchMode() const { return _batchMode; }
    bool isSequenceMode() const { return _sequenceMode; }
    uint32_t getUntilIteration() const { return _untilIteration; }
    uint32_t getRefreshPeriod() const { return _refreshPeriod; }
    void setRefreshPeriod(uint32_t period) { _refreshPeriod = period; }
    ParameterPanel* panel_of(const std::string& name) const;

    // --- Run
    void launch(uint32_t until);
    // One idle round; the idle handler calls it while a run goes on.
    void idle_round();
    void pause_function();
    void end_sequence();
    void next_sequence();
    void reset();
    void refresh(bool full);
    // Duration of the last idle round, in milliseconds.
    double last_round_ms() const { return _lastRoundMs; }

    // --- State display
    void set_lock();
    void set_status();
    void set_title();
    void summary();
    void update_forecast();

    // --- Progress, from the kernel through the free functions.
    void start_progress(const wxString& title, const wxString& message);
    bool update_progress(int n);
    void end_progress();
    static bool update_progress_function(int n);
    static void trace_function(const char* text, TraceLevel level);

    // --- Projects
    bool open_temp_project();
    bool open_project_from_dir(const std::string& path);
    std::vector<std::string> get_recent_projects() const;
    void save_recent_projects(const std::string& path);
    void remove_from_recent_projects(const std::string& path);
    void update_recent_history();
    // Where "Reset" and start-up put the temporary project.
    static std::string temp_project_parent();

    // --- Parameters
    bool load_interface_parameters();
    void update_interface_parameters();
    void load_default_parameters(bool full);

    // Asks "Confirm" with the given text; true for yes.
    bool ask_confirm(const wxString& text);

private:
    // Layout
    void create_gui();
    void create_menus();
    void page_setup();
    void create_std_buttons(wxWindow* parent, wxSizer* sizer);
    void bind_commands();
    iUserDialogs& dialogs() const { return *_dialogs; }
    void show_message(const std::string& title, const std::string& text);
    void on_idle(wxIdleEvent& event);
    void bind_idle(bool on);

    // Run commands
    void on_launch(wxCommandEvent&);
    void on_launch_until(wxCommandEvent&);
    void on_pause(wxCommandEvent&);
    void on_sequence(wxCommandEvent&);
    void on_batch(wxCommandEvent&);
    void on_next_sequence(wxCommandEvent&);
    void on_skip(wxCommandEvent&);
    void on_reset(wxCommandEvent&);
    void on_jexit(wxCommandEvent&);
    void on_refresh_period(wxCommandEvent&);
    void on_close(wxCloseEvent& event);
    void start_sequence();

    // Project commands
    void new_project(wxCommandEvent&);
    void open_project(wxCommandEvent&);
    void open_recent_project(wxCommandEvent& event);
    void save_project(wxCommandEvent& event);
    void backward_project(wxCommandEvent&);
    void forward_project(wxCommandEvent&);
    void launch_journal(wxCommandEvent&);
    void launch_batch(wxCommandEvent&);
    void add_graphic_window(wxCommandEvent&);
    bool alloc_project(const std::string& parent, const std::string& name, bool create);
    bool save_project_as();
    bool save_current();
    bool project_replacement_confirmed();
    void after_project_change();

    // Parameters
    void on_system(wxCommandEvent&);
    void on_restore(wxCommandEvent&);

    // Exports (MainFrameExports.cpp)
    void save_topo(wxCommandEvent&);
    void save_emap(wxCommandEvent&);
    void save_centerline(wxCommandEvent&);
    void save_discrete_centerline(wxCommandEvent&);
    void save_age_horizon(wxCommandEvent&);
    void save_simu(wxCommandEvent&);
    void save_well(wxCommandEvent&);
    void save_emap_built_CP(wxCommandEvent&);
    void save_extra_topo(wxCommandEvent&);
    bool export_ready();
    bool ask_export_path(const std::string& title, const std::string& wildcard, const std::string& name,
                         std::string& path);
    void export_done(bool good, const std::string& path);

    // Colours (MainFrameColours.cpp)
    void save_facies_colourmap(wxCommandEvent&);
    void load_facies_colourmap(wxCommandEvent&);
    void change_facies_colourmap(wxCommandEvent&);
    void restore_facies_colourmap(wxCommandEvent&);

    // Tools (MainFrameTools.cpp)
    void compute_simu_vpc(wxCommandEvent&);
    void compute_simu_pm(wxCommandEvent&);
    void compute_simu_histo(wxCommandEvent&);
    void compute_simu_histo_cumul(wxCommandEvent&);
    void compute_well_vpc(wxCommandEvent&);
    void compute_well_histo(wxCommandEvent&);
    void compute_well_histo_cumul(wxCommandEvent&);
    void compute_stacond(wxCommandEvent&);
    bool may_navigate();
    bool ask_starting_file(const std::string& refusal, const std::string& title, const std::string& pattern,
                           std::string& path);
    bool ask_tool_step(const std::string& title, double& step);
    void show_tool(const std::string& title, bool computed, const PlotData& plot, const std::string& error);
    void run_step_tool(const std::string& title,
                       bool (*tool)(const iSimulator&, double, PlotData&, std::string&));
    void run_whole_tool(const std::string& title, bool (*tool)(const iSimulator&, PlotData&, std::string&));

    // Help (MainFrameHelp.cpp)
    void on_users_guide(wxCommandEvent&);
    void on_license(wxCommandEvent&);
    void on_cite(wxCommandEvent&);
    void on_register(wxCommandEvent&);
    void on_about(wxCommandEvent&);
    std::string users_guide_path() const;

    iSimulator* _simulator;
    std::unique_ptr<iUserDialogs> _ownDialogs;
    iUserDialogs* _dialogs;
    std::unique_ptr<Project> _project;
    std::unique_ptr<ParameterGroupList> _groups;
    DomainParameters* _domainGroup = nullptr;

    bool _paused = true;
    bool _sequenceMode = false;
    bool _batchMode = false;
    bool _idleBound = false;
    uint32_t _untilIteration = 0;
    uint32_t _refreshPeriod = 10;
    double _lastRoundMs = 0.;

    wxNotebook* _notebook = nullptr;
    std::vector<ParameterPanel*> _panels;
    wxRadioBox* _system = nullptr;
    wxStaticText* _summary = nullptr;
    wxMenu* _recentMenu = nullptr;
    std::vector<std::string> _recent;
    std::vector<wxButton*> _buttons;
    GraphicWindows _graphics;
    MessageWindow* _messages = nullptr;

    ProgressCounter _progress;
    wxProgressDialog* _progressDialog = nullptr;
    wxString _progressTitle;
    wxString _progressMessage;
};
