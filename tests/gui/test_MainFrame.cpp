// The main frame driven by its own commands on a small seeded project: run
// control through idle rounds and its edge cases, locks, projects, exports,
// every menu item once, and a desktop run whose block equals the batch run.

#include "gui/MainFrame.h"
#include "view/FaciesColorMap.h"

#include "GuiTestSupport.h"
#include "TestSupport.h"
#include "gui/MessageWindow.h"
#include "gui/ParameterPanel.h"
#include "gui/Project.h"
#include "gui/RegistryUtility.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/NewJournalFile.h"

#include <wx/menu.h>
#include <wx/notebook.h>
#include <wx/radiobox.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>

#include <functional>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

namespace
{
namespace fs = std::filesystem;
using testing_support::command;
using testing_support::contains;
using testing_support::pump;
using testing_support::read_file;
using testing_support::RecordingUserDialogs;
using testing_support::TempDir;
using testing_support::write_file;

const std::string LOOK = "Look at the Message Window for more details.\n";

struct Deleter
{
    void operator()(iSimulator* sim) const { iSimulator::deleteSimulator(sim); }
};

// A 40 x 30 plain with frequent events, so that short runs meet them.
const std::pair<const char*, int> SMALL_MODEL[] = {
    {"DOMAIN_NX", 40}, {"DOMAIN_NY", 30}, {"SIM_SEED", 777}, {"AV_LOC_POISSON", 25}, {"AV_REG_POISSON", 30},
};

class Desktop : public ::testing::Test
{
protected:
    void SetUp() override
    {
        setenv("SARVO_SETTINGS", dir.file("settings.ini").c_str(), 1);
        sim.reset(iSimulator::createSimulator());
        sim->getTracer()->setTraceFunction(MainFrame::trace_function);
        sim->getTracer()->setTraceLevel(TRACE_WARNING);
        sim->getParameters()->setUsingFluvi();
        // The tier of a desktop without licence server, as the program sets it.
        sim->getParameters()->setUsingDistrib(2);
        for (const auto& value : SMALL_MODEL)
            sim->getParameters()->setParamInt(value.first, value.second);
        sim->getParameters()->setParamDouble("DOMAIN_DX", 10.);
        sim->getParameters()->setParamDouble("DOMAIN_DY", 10.);
        frame = new MainFrame(sim.get(), "Sarvo", &user);
        ASSERT_TRUE(frame->create()) << user.all();
        frame->update_interface_parameters();
        frame->SetPosition(wxPoint(0, 0));
        frame->Show();
        user.boxes.clear();
    }
    void TearDown() override
    {
        if (frame != nullptr)
        {
            frame->reset();
            delete frame;
        }
        unsetenv("SARVO_SETTINGS");
    }

    unsigned int age() const { return sim->getAge(); }
    // A run to `until` through idle rounds, as the event loop would turn them.
    void run_until(uint32_t until)
    {
        frame->launch(until);
        ASSERT_TRUE(pump([this] { return frame->isPaused(); })) << user.all();
        ASSERT_EQ(until, age()) << user.all();
    }
    bool enabled(int id) const { return frame->GetMenuBar()->IsEnabled(id); }
    wxWindow* entry(const std::string& page, const std::string& name) const
    {
        ParameterPanel* panel = frame->panel_of(page);
        return panel != nullptr ? panel->findEntry(name) : nullptr;
    }
    // Every command of the menu bar, its submenus included.
    std::vector<int> menu_commands() const
    {
        std::vector<int> ids;
        std::function<void(wxMenu*)> walk = [&](wxMenu* menu)
        {
            for (wxMenuItem* item : menu->GetMenuItems())
            {
                if (item->IsSubMenu())
                    walk(item->GetSubMenu());
                else if (!item->IsSeparator())
                    ids.push_back(item->GetId());
            }
        };
        for (size_t k = 0; k < frame->GetMenuBar()->GetMenuCount(); k++)
            walk(frame->GetMenuBar()->GetMenu(k));
        return ids;
    }

    TempDir dir;
    std::unique_ptr<iSimulator, Deleter> sim;
    RecordingUserDialogs user;
    MainFrame* frame = nullptr;
};

// --- Run control -----------------------------------------------------------

TEST_F(Desktop, LaunchUntilTheCurrentAgeOrBelowIsRefused)
{
    user.answers = {"12"};
    command(frame, MainFrame::ID_LAUNCH_UNTIL);
    ASSERT_TRUE(pump([this] { return frame->isPaused(); }));
    ASSERT_EQ(12u, age()) << user.all();
    for (const char* until : {"12", "5"})
    {
        user.boxes.clear();
        user.answers = {until};
        command(frame, MainFrame::ID_LAUNCH_UNTIL);
        EXPECT_TRUE(user.saw("Warning!",
                             "Warning: Current iteration is 12\nYou should choose an iteration number "
                             "greater than this."))
            << user.all();
        EXPECT_TRUE(frame->isPaused());
        EXPECT_EQ(12u, age());
    }
}

// Each row: the period, the limit and the age after each idle round; the
// round that reaches the limit ends the run.
TEST_F(Desktop, AChunkEndingAtTheLimitEndsTheRunInThatRound)
{
    struct Case
    {
        uint32_t period;
        uint32_t until;
        std::vector<unsigned int> ages;
    };
    const Case cases[] = {{5, 10, {5, 10}}, {4, 10, {4, 8, 10}}, {20, 7, {7}}};
    for (const Case& c : cases)
    {
        frame->reset();
        frame->setRefreshPeriod(c.period);
        frame->launch(c.until);
        for (size_t round = 0; round < c.ages.size(); round++)
        {
            ASSERT_FALSE(frame->isPaused()) << c.period << " " << round;
            frame->idle_round();
            EXPECT_EQ(c.ages[round], age()) << c.period << " " << round;
            EXPECT_EQ(round + 1 == c.ages.size(), frame->isPaused()) << c.period << " " << round;
        }
    }
}

// The kernel is stopped at the third iteration by its progress answer: in a
// batch the next sequence follows with no box; in a sequence the user is told.
const iSimulator* g_stopped_simulator = nullptr;
bool g_stopped = false;
bool stop_at_third(int)
{
    if (g_stopped || g_stopped_simulator->getAge() != 3)
        return true;
    g_stopped = true;
    return false;
}

TEST_F(Desktop, AStopInBatchModeMovesOnWithoutABox)
{
    for (const bool batch : {true, false})
    {
        frame->reset();
        // Two sequences of 8 iterations in the journal, replayed after a reset.
        run_until(8);
        run_until(16);
        frame->reset();
        ASSERT_TRUE(frame->project()->isInputJournalActive()) << user.all();
        ASSERT_EQ(8, frame->project()->getNextSequenceIterations());
        user.boxes.clear();
        g_stopped_simulator = sim.get();
        g_stopped = false;
        sim->getTracer()->setProgressFunction(stop_at_third);
        command(frame, batch ? MainFrame::ID_BATCH : MainFrame::ID_SEQUENCE);
        ASSERT_TRUE(pump([this] { return frame->isPaused() && !frame->isBatchMode(); })) << user.all();
        sim->getTracer()->setProgressFunction(nullptr);
        bool stopped_box = false;
        for (const auto& box : user.boxes)
            stopped_box = stopped_box || (box.first == "Information!" &&
                                          contains(box.second, "Current sequence has stopped:\n"));
        EXPECT_EQ(!batch, stopped_box) << user.all();
        // Stopped at 3; the batch then ran the second sequence whole.
        EXPECT_EQ(batch ? 11u : 3u, age()) << user.all();
    }
}

TEST_F(Desktop, AFailedSaveOfIterationZeroResetsTheFrame)
{
    // A file where the iteration's directory should go.
    write_file(frame->project()->getSimuPath(0), "in the way");
    command(frame, MainFrame::ID_LAUNCH);
    EXPECT_TRUE(user.saw("Error!", "Error: Cannot save initial parameters.\n" + LOOK)) << user.all();
    EXPECT_TRUE(frame->isPaused());
    EXPECT_EQ(0u, age());
    EXPECT_EQ(nullptr, sim->getDomain());
    EXPECT_TRUE(
        contains(frame->message_window()->getText().utf8_string(), "Cannot save iteration 0 of project"));
    EXPECT_TRUE(enabled(MainFrame::ID_LAUNCH));
}

TEST_F(Desktop, ClosingDuringARunPausesAndAsks)
{
    frame->launch(0);
    frame->idle_round();
    ASSERT_FALSE(frame->isPaused());
    user.yes = false;
    EXPECT_FALSE(frame->Close());
    EXPECT_TRUE(frame->isPaused());
    ASSERT_FALSE(user.boxes.empty());
    EXPECT_EQ("Confirm", user.boxes.back().first);
    EXPECT_EQ(0u, user.boxes.back().second.rfind("The current simulation will not be saved in the current "
                                                 "project.\n",
                                                 0));
    EXPECT_FALSE(frame->IsBeingDeleted());
}

// --- Locks -----------------------------------------------------------------

TEST_F(Desktop, LocksFollowTheStateOfTheRun)
{
    struct State
    {
        const char* name;
        bool launch, pause, geometry, channel, system, save;
    };
    const auto check = [this](const State& s)
    {
        auto* system = dynamic_cast<wxRadioBox*>(frame->FindWindow(MainFrame::ID_SYSTEM));
        ASSERT_NE(nullptr, system);
        EXPECT_EQ(s.launch, enabled(MainFrame::ID_LAUNCH)) << s.name;
        EXPECT_EQ(s.pause, enabled(MainFrame::ID_PAUSE)) << s.name;
        EXPECT_EQ(s.geometry, entry("Initialization", "DOMAIN_NX")->IsEnabled()) << s.name;
        EXPECT_EQ(s.geometry, entry("Seed", "SIM_SEED")->IsEnabled()) << s.name;
        EXPECT_EQ(s.channel, entry("Channel", "CHNL_WIDTH")->IsEnabled()) << s.name;
        EXPECT_EQ(s.system, system->IsEnabled()) << s.name;
        EXPECT_EQ(s.save, enabled(MainFrame::ID_SAVE_PROJECT)) << s.name;
    };
    check({"ready", true, false, true, true, true, false});
    frame->launch(0);
    check({"running", false, true, false, false, false, false});
    frame->idle_round();
    command(frame, MainFrame::ID_PAUSE);
    check({"paused", true, false, false, true, false, true});
    EXPECT_TRUE(contains(frame->GetStatusBar()->GetStatusText(0).utf8_string(), "Iteration: 10"));
    command(frame, MainFrame::ID_RESET);
    check({"reset", true, false, true, true, true, false});
    // A second reset keeps the journal the first one turned into the input.
    user.boxes.clear();
    command(frame, MainFrame::ID_RESET);
    EXPECT_TRUE(user.boxes.empty()) << user.all();
    EXPECT_EQ(10, frame->project()->getNextSequenceIterations());
}

TEST_F(Desktop, PanelsWriteTheRegistryAndRefuseBadEntries)
{
    auto* width = dynamic_cast<wxTextCtrl*>(entry("Channel", "CHNL_WIDTH"));
    ASSERT_NE(nullptr, width);
    width->ChangeValue("42.5");
    EXPECT_TRUE(frame->load_interface_parameters());
    EXPECT_EQ(42.5, sim->getParameters()->getParamDouble("CHNL_WIDTH"));
    width->ChangeValue("-1");
    command(frame, MainFrame::ID_LAUNCH);
    EXPECT_TRUE(frame->isPaused());
    EXPECT_EQ(0u, age());
    ASSERT_TRUE(user.sawTitle("Error!")) << user.all();
    EXPECT_TRUE(contains(user.boxes.back().second, "is out of range")) << user.all();
    EXPECT_EQ(42.5, sim->getParameters()->getParamDouble("CHNL_WIDTH"));
}

TEST_F(Desktop, SystemSwitchAsksAndRestoresTheDefaults)
{
    auto* system = dynamic_cast<wxRadioBox*>(frame->FindWindow(MainFrame::ID_SYSTEM));
    ASSERT_NE(nullptr, system);
    for (const bool yes : {false, true})
    {
        user.yes = yes;
        system->SetSelection(1);
        wxCommandEvent event(wxEVT_RADIOBOX, MainFrame::ID_SYSTEM);
        frame->GetEventHandler()->ProcessEvent(event);
        EXPECT_EQ(yes, sim->getParameters()->usingTurbi());
        EXPECT_EQ(yes ? 1 : 0, system->GetSelection());
        EXPECT_EQ(yes, user.saw("Information!", "Using Turbidite System")) << user.all();
    }
    EXPECT_EQ(777, sim->getParameters()->getParamInt("SIM_SEED"));
    sim->getParameters()->setParamDouble("CHNL_WIDTH", 77.);
    frame->update_interface_parameters();
    command(frame, MainFrame::ID_RESTORE);
    EXPECT_EQ(sim->getParameters()->getParamDefDouble("CHNL_WIDTH"),
              sim->getParameters()->getParamDouble("CHNL_WIDTH"));
}

// --- Projects --------------------------------------------------------------

TEST_F(Desktop, NewOpenRecentAndSavedIterations)
{
    const std::string parent = dir.path().string();
    user.answers = {parent, "alpha"};
    command(frame, MainFrame::ID_NEW_PROJECT);
    const std::string alpha = parent + "/alpha.prj";
    ASSERT_EQ(alpha, frame->project()->getPath()) << user.all();
    EXPECT_EQ("Sarvo - " + alpha, frame->GetTitle().utf8_string());
    EXPECT_EQ(alpha, RegistryUtility::get_recent_projects().front());
    user.answers = {parent, "alpha"};
    command(frame, MainFrame::ID_NEW_PROJECT);
    EXPECT_TRUE(user.saw("Error!", "Bad name or project already exists.\nChoose another name."))
        << user.all();
    run_until(6);
    command(frame, MainFrame::ID_SAVE_PROJECT);
    std::vector<unsigned int> saved;
    frame->project()->getIterList(saved);
    EXPECT_EQ((std::vector<unsigned int>{0, 6}), saved);
    // A project that no longer opens leaves the list.
    RegistryUtility::save_recent_projects(parent + "/gone.prj");
    frame->update_recent_history();
    user.yes = true;
    command(frame, MainFrame::ID_RECENT_FIRST);
    EXPECT_EQ(alpha, RegistryUtility::get_recent_projects().front());
    EXPECT_EQ(1u, RegistryUtility::get_recent_projects().size());
    command(frame, MainFrame::ID_RECENT_FIRST);
    EXPECT_EQ(alpha, frame->project()->getPath());
    EXPECT_EQ(6u, age());
    // The history ends at its last saved iteration.
    user.boxes.clear();
    command(frame, MainFrame::ID_FORWARD);
    EXPECT_TRUE(user.saw("Warning!",
                         "Warning: You have reached the last sequence or the next sequence seems to "
                         "be corrupted."))
        << user.all();
}

// Launch, pause, save, back and forward in the desktop; the block it exports
// is byte for byte the block of the batch run of the same sequences. Each
// idle round is one run of the kernel, which refreshes its channel at the
// start of every run: the rounds here are cut where the batch's sequences are.
TEST_F(Desktop, ARoundTripGivesTheBlockOfTheBatchRun)
{
    frame->setRefreshPeriod(12);
    run_until(12);
    run_until(24);
    frame->setRefreshPeriod(4);
    frame->launch(0);
    frame->idle_round();
    command(frame, MainFrame::ID_PAUSE);
    ASSERT_EQ(28u, age());
    user.answers = {dir.path().string(), "roundtrip"};
    command(frame, MainFrame::ID_SAVE_PROJECT);
    ASSERT_EQ(dir.file("roundtrip.prj"), frame->project()->getPath()) << user.all();
    command(frame, MainFrame::ID_BACKWARD);
    EXPECT_EQ(0u, age()) << user.all();
    command(frame, MainFrame::ID_FORWARD);
    ASSERT_EQ(28u, age()) << user.all();
    user.answers = {"0.5", dir.file("desktop.f2g")};
    command(frame, MainFrame::ID_EXPORT_SIMU);
    ASSERT_FALSE(user.sawTitle("Error!")) << user.all();

    std::string batch = "[GLOBAL]\nF2G_FILE = " + dir.file("batch.f2g") +
                        "\nF2G_DZ = 0.5\nF2G_FACIES = 1\nF2G_GRAIN = 1\nF2G_AGE = 1\n\n[NEW_SEQ]\n"
                        "DOMAIN_DX = 10\nDOMAIN_DY = 10\n";
    for (const auto& value : SMALL_MODEL)
        batch += std::string(value.first) + " = " + std::to_string(value.second) + "\n";
    batch += "LAUNCH_IT = 12\n\n[NEW_SEQ]\nLAUNCH_IT = 12\n\n[NEW_SEQ]\nLAUNCH_IT = 4\n";
    write_file(dir.file("run.bat"), batch);
    std::unique_ptr<iSimulator, Deleter> other(iSimulator::createSimulator());
    other->getTracer()->setTraceFunction(testing_support::silent);
    NewJournalFile journal(other.get());
    ASSERT_TRUE(journal.load(dir.file("run.bat")));
    ASSERT_EQ(0, journal.launch());
    const std::string desktop = read_file(dir.file("desktop.f2g"));
    ASSERT_FALSE(desktop.empty());
    const bool same = desktop == read_file(dir.file("batch.f2g"));
    EXPECT_TRUE(same) << "kept as roundtrip_desktop.f2g and roundtrip_batch.f2g";
    if (!same)
    {
        fs::copy_file(dir.file("desktop.f2g"), "roundtrip_desktop.f2g", fs::copy_options::overwrite_existing);
        fs::copy_file(dir.file("batch.f2g"), "roundtrip_batch.f2g", fs::copy_options::overwrite_existing);
    }
}

// --- Menus -----------------------------------------------------------------

TEST_F(Desktop, MenusStandInTheirOrder)
{
    wxMenuBar* bar = frame->GetMenuBar();
    const char* titles[] = {"&File", "&Export", "&Edit", "&Compute", "&Help"};
    ASSERT_EQ(5u, bar->GetMenuCount());
    for (size_t k = 0; k < 5; k++)
        EXPECT_EQ(titles[k], bar->GetMenuLabel(k).utf8_string());
    size_t items = 0;
    for (wxMenuItem* item : bar->GetMenu(0)->GetMenuItems())
        items += item->IsSeparator() ? 0 : 1;
    EXPECT_EQ(21u, items);
    EXPECT_EQ("Export Extrapolated Topography",
              bar->GetMenu(1)->FindItemByPosition(8)->GetItemLabelText().utf8_string());
    const char* pages[] = {"Initialization",      "Channel",       "Aggradation", "Avulsions",
                           "Equilibrium Profile", "Miscellaneous", "Seed",        "Summary"};
    ASSERT_EQ(8u, frame->notebook()->GetPageCount());
    for (size_t k = 0; k < 8; k++)
        EXPECT_EQ(pages[k], frame->notebook()->GetPageText(k).utf8_string());
}

TEST_F(Desktop, ComputeToolsAndColoursAnswerTheUser)
{
    run_until(6);
    const size_t windows = wxTopLevelWindows.GetCount();
    user.answers = {"0.5"};
    command(frame, MainFrame::ID_SIMU_VPC);
    EXPECT_EQ(windows + 1, wxTopLevelWindows.GetCount()) << user.all();
    user.answers = {"-2"};
    command(frame, MainFrame::ID_SIMU_HISTO);
    EXPECT_TRUE(user.saw("Warning!", "The step must be a positive number of metres, not \"-2\"."));
    // No well: the tool says why instead of drawing.
    command(frame, MainFrame::ID_STACOND);
    EXPECT_TRUE(user.sawTitle("Conditioning Statistics")) << user.all();

    FaciesColorMap& colours = frame->graphic_windows().colours();
    const std::string before = colours.text();
    user.answers = {"0", "ff0000"};
    command(frame, MainFrame::ID_CHANGE_COLOURS);
    EXPECT_NE(colours.text(), before);
    EXPECT_TRUE(contains(colours.text(), " ff0000"));
    user.answers = {"0", "red"};
    command(frame, MainFrame::ID_CHANGE_COLOURS);
    EXPECT_TRUE(user.sawTitle("Warning!"));
    command(frame, MainFrame::ID_RESTORE_COLOURS);
    EXPECT_EQ(colours.text(), before);
}

TEST_F(Desktop, EveryMenuItemAnswersOnce)
{
    run_until(6);
    user.yes = false;
    for (int id : menu_commands())
        if (id != MainFrame::ID_EXIT)
            command(frame, id);
    EXPECT_FALSE(user.opened.empty());
    EXPECT_TRUE(contains(user.opened.front(), "USERS_GUIDE.md"));
    // Unanswered, the tools that need a step and the colour items asked and stopped.
    for (const char* what : {"Simulation Vertical Proportion Curve", "Wells Facies-Crossing Histogram",
                             "Change colors", "Load facies colors", "Save facies colors"})
        EXPECT_NE(std::find(user.asked.begin(), user.asked.end(), what), user.asked.end()) << what;
    EXPECT_TRUE(contains(user.all(), "no licence server")) << user.all();
    EXPECT_TRUE(contains(user.all(), "Research")) << user.all();
    EXPECT_TRUE(contains(user.all(), sim->getParameters()->getFullVersion())) << user.all();
    EXPECT_TRUE(frame->isPaused());
    user.answers = {"25"};
    command(frame, MainFrame::ID_REFRESH_PERIOD);
    EXPECT_EQ(25u, frame->getRefreshPeriod());
    // Exit during a simulation asks first.
    command(frame, MainFrame::ID_EXIT);
    EXPECT_EQ("Confirm", user.boxes.back().first);
    EXPECT_FALSE(frame->IsBeingDeleted());
}

TEST_F(Desktop, ExportsWriteTheirFiles)
{
    run_until(10);
    struct Case
    {
        int id;
        std::vector<std::string> answers;
        const char* file;
    };
    const Case cases[] = {
        {MainFrame::ID_EXPORT_TOPO, {}, "topo.f2g"},
        {MainFrame::ID_EXPORT_TOPO, {}, "topo.gslib"},
        {MainFrame::ID_EXPORT_EMAP, {}, "emap.txt"},
        {MainFrame::ID_EXPORT_CENTERLINE, {}, "centerline.txt"},
        {MainFrame::ID_EXPORT_DISC_CENTERLINE, {}, "disc.f2g"},
        {MainFrame::ID_EXPORT_SIMU, {"1"}, "block.f2g"},
        {MainFrame::ID_EXPORT_EMAP_CP, {"1.5 2"}, "emap_cp.f2g"},
        {MainFrame::ID_EXPORT_AGE_HORIZON, {"5"}, "horizon.f2g"},
        {MainFrame::ID_EXPORT_EXTRA_TOPO, {}, "extra.f2g"},
    };
    for (const Case& c : cases)
    {
        user.boxes.clear();
        user.answers.assign(c.answers.begin(), c.answers.end());
        user.answers.push_back(dir.file(c.file));
        command(frame, c.id);
        EXPECT_FALSE(user.sawTitle("Error!")) << c.file << "\n" << user.all();
        EXPECT_GT(fs::file_size(dir.file(c.file)), 0u) << c.file;
    }
    command(frame, MainFrame::ID_EXPORT_WELL);
    EXPECT_TRUE(user.saw("Warning!", "Warning: The project has no conditioning well to export."))
        << user.all();
}

// --- Pictures and the interactive cost --------------------------------------

TEST_F(Desktop, ScreenshotsOfEveryPage)
{
    frame->SetSize(1100, 760);
    // The summary page last, after a run: a page is drawn when first shown.
    const size_t pages = frame->notebook()->GetPageCount();
    const auto shoot = [this](size_t page)
    {
        frame->notebook()->SetSelection(page);
        std::string name = frame->notebook()->GetPageText(page).utf8_string();
        for (char& c : name)
            c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        EXPECT_TRUE(testing_support::save_screenshot(frame, "page_" + std::to_string(page) + "_" + name));
    };
    for (size_t page = 0; page + 1 < pages; page++)
        shoot(page);
    // Idle rounds of the default period on the default domain, as a log line.
    frame->reset();
    sim->getParameters()->reset(true);
    frame->update_interface_parameters();
    frame->launch(0);
    ASSERT_FALSE(frame->isPaused()) << user.all();
    const int rounds = 5;
    double total = 0.;
    for (int round = 0; round < rounds; round++)
    {
        frame->idle_round();
        total += frame->last_round_ms();
    }
    EXPECT_EQ(rounds * frame->getRefreshPeriod(), age()) << user.all();
    std::cout << "Idle round of " << frame->getRefreshPeriod() << " iterations on the default domain ("
              << sim->getParameters()->getParamInt("DOMAIN_NX") << " x "
              << sim->getParameters()->getParamInt("DOMAIN_NY") << "): " << total / rounds
              << " ms on average of " << rounds << " rounds, the last " << frame->last_round_ms() << " ms"
              << std::endl;
    command(frame, MainFrame::ID_PAUSE);
    shoot(pages - 1);
}

} // namespace

int main(int argc, char** argv)
{
    return testing_support::run_gui_tests(argc, argv);
}
