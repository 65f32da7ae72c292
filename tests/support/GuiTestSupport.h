#pragma once
// Shared start-up of the desktop's tests: a wx application without an event
// loop of its own, a user who answers from a script and records every box,
// commands sent as the menus send them, idle rounds pumped by hand, and
// screenshots of windows into the build tree.

#include "gui/iUserDialogs.h"

#include <gtest/gtest.h>

#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/timer.h>
#include <wx/window.h>

#include <cstring>
#include <deque>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace testing_support
{

// Answers each question with the next scripted answer; an empty script
// cancels. Every box and question is recorded.
class RecordingUserDialogs : public iUserDialogs
{
public:
    void showMessage(const std::string& title, const std::string& text) override
    {
        boxes.emplace_back(title, text);
    }
    bool askYesNo(const std::string& title, const std::string& question) override
    {
        boxes.emplace_back(title, question);
        return yes;
    }
    bool askNumber(const std::string& title, const std::string&, long, long, long, long& answer) override
    {
        std::string text;
        if (!next(title, text))
            return false;
        answer = std::stol(text);
        return true;
    }
    bool askText(const std::string& title, const std::string&, const std::string&,
                 std::string& answer) override
    {
        return next(title, answer);
    }
    bool askChoice(const std::string& title, const std::string&, const std::vector<std::string>&,
                   int& answer) override
    {
        std::string text;
        if (!next(title, text))
            return false;
        answer = std::stoi(text);
        return true;
    }
    bool askOpenFile(const std::string& title, const std::string&, std::string& path) override
    {
        return next(title, path);
    }
    bool askSaveFile(const std::string& title, const std::string&, const std::string&,
                     std::string& path) override
    {
        return next(title, path);
    }
    bool askDirectory(const std::string& title, std::string& path) override { return next(title, path); }
    bool openDocument(const std::string& path) override
    {
        opened.push_back(path);
        return true;
    }

    // True when a box of that title showed exactly `text`.
    bool saw(const std::string& title, const std::string& text) const
    {
        for (const auto& box : boxes)
            if (box.first == title && box.second == text)
                return true;
        return false;
    }
    bool sawTitle(const std::string& title) const
    {
        for (const auto& box : boxes)
            if (box.first == title)
                return true;
        return false;
    }
    std::string all() const
    {
        std::string text;
        for (const auto& box : boxes)
            text += "[" + box.first + "] " + box.second + "\n";
        return text;
    }

    std::vector<std::pair<std::string, std::string>> boxes;
    std::vector<std::string> asked;
    std::vector<std::string> opened;
    std::deque<std::string> answers;
    bool yes = true;

private:
    bool next(const std::string& title, std::string& answer)
    {
        asked.push_back(title);
        if (answers.empty())
            return false;
        answer = answers.front();
        answers.pop_front();
        return true;
    }
};

// Sends a command as a menu item does.
inline void command(wxWindow* window, int id)
{
    wxCommandEvent event(wxEVT_MENU, id);
    event.SetEventObject(window);
    window->GetEventHandler()->ProcessEvent(event);
}

// Idle rounds and pending events until `done` holds, at most `rounds` times;
// true when it held.
template <typename Done> bool pump(Done done, int rounds = 10000)
{
    for (int k = 0; k < rounds; k++)
    {
        wxTheApp->ProcessPendingEvents();
        if (done() && !wxTheApp->HasPendingEvents())
            return true;
        wxTheApp->ProcessIdle();
    }
    return done();
}

// Lets the toolkit lay out and draw what is shown.
inline void settle()
{
    // The toolkit draws on its frame clock, which only a running loop turns.
    wxGUIEventLoop loop;
    wxTimer timer;
    timer.Bind(wxEVT_TIMER, [&loop](wxTimerEvent&) { loop.Exit(); });
    timer.StartOnce(300);
    loop.Run();
}

inline std::string screenshot_dir()
{
    const std::string dir = "screenshots";
    std::filesystem::create_directories(dir);
    return dir;
}

// The client area of the window as a PNG under screenshots/; false when it
// could not be drawn.
inline bool save_screenshot(wxWindow* window, const std::string& name)
{
    // Shown anew, the window is drawn whole: under a virtual display a
    // change is not always drawn again in time.
    window->Layout();
    for (int attempt = 0; attempt < 4; attempt++)
    {
        window->Hide();
        settle();
        window->Show();
        settle();
        const wxSize size = window->GetClientSize();
        wxBitmap bitmap(size.x, size.y, 24);
        wxMemoryDC memory(bitmap);
        wxClientDC source(window);
        memory.Blit(0, 0, size.x, size.y, &source, 0, 0);
        memory.SelectObject(wxNullBitmap);
        // A picture of one colour is a window not drawn yet.
        const wxImage image = bitmap.ConvertToImage();
        bool drawn = false;
        for (int k = 1; k < image.GetWidth() * image.GetHeight() && !drawn; k++)
            drawn = std::memcmp(image.GetData(), image.GetData() + 3 * k, 3) != 0;
        if (drawn)
            return bitmap.SaveFile(wxString::FromUTF8(screenshot_dir() + "/" + name + ".png"),
                                   wxBITMAP_TYPE_PNG);
    }
    return false;
}

class GuiTestApp : public wxApp
{
public:
    bool OnInit() override
    {
        wxInitAllImageHandlers();
        return true;
    }
};

// The main of a desktop test: the toolkit up, the tests, the toolkit down.
inline int run_gui_tests(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    wxApp::SetInstance(new GuiTestApp);
    if (!wxEntryStart(argc, argv) || !wxTheApp->CallOnInit())
    {
        fprintf(stderr, "Cannot start the toolkit: is there a display (run under xvfb-run)?\n");
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    wxTheApp->OnExit();
    wxEntryCleanup();
    return result;
}

} // namespace testing_support
