// Run control: a run is a chain of idle rounds, each advancing the model by
// a chunk of iterations, between a launch and a pause.

#include "gui/MainFrame.h"

#include "gui/ParameterPanel.h"
#include "gui/Project.h"
#include "gui/iUserDialogs.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"

#include <wx/app.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sstream>

namespace
{
const char* const RUN_LOOK = "Look at the Message Window for more details.\n";
}

void MainFrame::bind_idle(bool on)
{
    if (on == _idleBound)
        return;
    if (on)
        Bind(wxEVT_IDLE, &MainFrame::on_idle, this);
    else
        Unbind(wxEVT_IDLE, &MainFrame::on_idle, this);
    _idleBound = on;
}

void MainFrame::on_idle(wxIdleEvent& event)
{
    idle_round();
    if (_idleBound)
        event.RequestMore();
}

void MainFrame::launch(uint32_t until)
{
    if (_project == nullptr || !(_paused || _batchMode))
        return;
    const unsigned int age = _simulator->getAge();
    if (until > 0 && until <= age)
    {
        std::ostringstream text;
        text << "Warning: Current iteration is " << age << "\n"
             << "You should choose an iteration number greater than this.";
        show_message("Warning!", text.str());
        return;
    }
    _untilIteration = until;
    if (age == 0)
    {
        if (!load_interface_parameters())
            return;
        if (!_project->initSimulator(parameters()->getParamInt("SIM_SEED")))
        {
            tracer()->error("Cannot initialize simulator");
            show_message("Error!", std::string("Error: Cannot initialize simulator.\n") + RUN_LOOK);
            reset();
            return;
        }
        if (!_project->save())
        {
            tracer()->error("Cannot save iteration 0 of project");
            show_message("Error!", std::string("Error: Cannot save initial parameters.\n") + RUN_LOOK);
            reset();
            return;
        }
    }
    else if (!load_interface_parameters())
        return;
    if (!_project->newSequence())
    {
        tracer()->error("Cannot prepare new sequence of iteration");
        _batchMode = false;
        set_lock();
        set_status();
        return;
    }
    if (_graphics.empty())
        _graphics.add(this, network(), "Block");
    _graphics.observe(network());
    update_forecast();
    _paused = false;
    set_lock();
    set_status();
    bind_idle(true);
}

void MainFrame::idle_round()
{
    if (_paused)
        return;
    const unsigned int age = _simulator->getAge();
    unsigned int n = _refreshPeriod;
    if (_untilIteration > 0)
        n = std::min<unsigned int>(n, _untilIteration > age ? _untilIteration - age : 0);
    const auto start = std::chrono::steady_clock::now();
    const int code = _project->launch(n);
    _lastRoundMs =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    if (tracer()->traceLevel(TRACE_DEBUG))
    {
        std::ostringstream text;
        text << "Idle round: " << n << " iterations in " << _lastRoundMs << " ms";
        tracer()->debug(text.str());
    }
    if (code == Project::LAUNCH_RUN_ENDED)
        pause_function();
    else if (code == Project::LAUNCH_CHUNK_DONE || code == Project::LAUNCH_STOPPED || code == 4)
    {
        if (code != Project::LAUNCH_CHUNK_DONE || _simulator->getAge() != age + n)
        {
            pause_function();
            if (!_batchMode)
                show_message("Information!",
                             "Current sequence has stopped:\n" + _simulator->getLastMessage());
        }
        else if (_untilIteration == 0 || _simulator->getAge() < _untilIteration)
        {
            refresh(true);
            return;
        }
        else if (!_paused)
            pause_function();
    }
    else
    {
        // The project has shown its error in a box already.
        _batchMode = false;
        pause_function();
        if (_simulator->getAge() == 0)
            reset();
        refresh(true);
        return;
    }
    if (!_batchMode)
    {
        refresh(true);
        return;
    }
    if (_project->isInputJournalActive() && _project->getNextSequenceIterations() > 0)
    {
        wxCommandEvent next(wxEVT_MENU, ID_NEXT_SEQUENCE);
        next.SetEventObject(this);
        GetEventHandler()->AddPendingEvent(next);
    }
    else
        _batchMode = false;
    refresh(true);
}

void MainFrame::pause_function()
{
    bind_idle(false);
    if (!_paused)
        end_sequence();
}

void MainFrame::end_sequence()
{
    update_forecast();
    _paused = true;
    set_lock();
    set_status();
    if (!_project->endSequence())
        return;
    if (ParameterPanel* panel = panel_of("Seed"))
        panel->updateParams();
    if (ParameterPanel* panel = panel_of("Equilibrium Profile"))
        panel->updateParams();
    if ((_sequenceMode || _batchMode) && _project->isInputJournalActive() &&
        !_project->readSequenceFromInputJnl())
    {
        // A batch ends at its journal's end with no box.
        if (_batchMode)
            tracer()->info("No further sequence in the journal file.");
        else
            show_message("Warning!", "Warning: No further sequence in the journal file.");
    }
    update_interface_parameters();
    summary();
    refresh(false);
    set_lock();
}

void MainFrame::start_sequence()
{
    if (_project == nullptr)
        return;
    const int iterations = _project->getNextSequenceIterations();
    if (iterations <= 0)
        return;
    launch(_simulator->getAge() + static_cast<uint32_t>(iterations));
}

void MainFrame::next_sequence()
{
    start_sequence();
}

void MainFrame::on_launch(wxCommandEvent&)
{
    launch(0);
}

void MainFrame::on_launch_until(wxCommandEvent&)
{
    if (_project == nullptr || !(_paused || _batchMode))
        return;
    long until = 0;
    const long age = static_cast<long>(_simulator->getAge());
    if (!dialogs().askNumber("Launch Until", "Launch until iteration", age + _refreshPeriod, 0, 100000000,
                             until))
        return;
    if (until <= age)
    {
        std::ostringstream text;
        text << "Warning: Current iteration is " << age << "\n"
             << "You should choose an iteration number greater than this.";
        show_message("Warning!", text.str());
        return;
    }
    launch(static_cast<uint32_t>(until));
}

void MainFrame::on_pause(wxCommandEvent&)
{
    pause_function();
    _batchMode = false;
    set_status();
}

void MainFrame::on_sequence(wxCommandEvent&)
{
    _sequenceMode = true;
    start_sequence();
}

void MainFrame::on_batch(wxCommandEvent&)
{
    _batchMode = true;
    start_sequence();
    if (_paused)
        _batchMode = false;
}

void MainFrame::on_next_sequence(wxCommandEvent&)
{
    next_sequence();
}

void MainFrame::on_skip(wxCommandEvent&)
{
    if (_project == nullptr || !_paused || !_project->isInputJournalActive())
        return;
    if (!_project->readSequenceFromInputJnl())
        show_message("Warning!", "Warning: No further sequence in the journal file.");
    update_interface_parameters();
    set_lock();
}

void MainFrame::on_jexit(wxCommandEvent&)
{
    if (_project == nullptr)
        return;
    _project->exitFromInputJnl();
    _sequenceMode = false;
    _batchMode = false;
    set_lock();
}

void MainFrame::on_reset(wxCommandEvent&)
{
    if (!_paused)
        return;
    if (_simulator->getAge() > 0 &&
        !ask_confirm(
            "The current simulation will not be saved in the current project.\nDo you want to reset it ?"))
        return;
    reset();
}

void MainFrame::reset()
{
    bind_idle(false);
    _paused = true;
    _sequenceMode = false;
    _batchMode = false;
    _untilIteration = 0;
    if (_project != nullptr)
    {
        // A second reset finds the journal already turned: it is kept.
        std::error_code ec;
        const bool journal = std::filesystem::exists(_project->getJournalPath(), ec);
        const bool replay = journal && _project->turnCurrentJnlIntoInputJnl();
        if (journal && !replay)
            show_message("Warning!",
                         "Warning: Could not turn the Current Journal File into Input Journal File!");
        _project->reset();
        // The next launch repeats the sequences of the input journal from its start.
        if (replay || _project->isInputJournalActive())
            _project->readInitFromInputJnl();
    }
    else
        _simulator->clear();
    _graphics.observe(nullptr);
    update_interface_parameters();
    set_lock();
    set_status();
    summary();
}

void MainFrame::refresh(bool full)
{
    _graphics.refresh(full);
    set_status();
    if (!full)
        summary();
}

void MainFrame::on_refresh_period(wxCommandEvent&)
{
    long period = 0;
    if (!dialogs().askNumber("Refreshment period", "Number of iterations between two refreshments",
                             _refreshPeriod, 1, 1000000, period))
        return;
    _refreshPeriod = static_cast<uint32_t>(period);
    summary();
}

void MainFrame::on_close(wxCloseEvent& event)
{
    if (!_paused)
        pause_function();
    if (event.CanVeto() && _simulator->getAge() > 0 &&
        !ask_confirm(
            "The current simulation will not be saved in the current project.\nDo you want to quit ?"))
    {
        event.Veto();
        return;
    }
    bind_idle(false);
    Destroy();
}
