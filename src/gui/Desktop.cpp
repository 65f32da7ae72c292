// The desktop path of the program: the toolkit's application object, GLUT,
// the splash image and the main frame. Nothing here runs in batch mode, so a
// batch never needs a display.

#include "gui/Desktop.h"

#include "gui/MainFrame.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"

#include <GL/freeglut.h>

#include <wx/app.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/splash.h>
#include <wx/stdpaths.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "sarvo_icon.xpm"

namespace
{

class DesktopApp : public wxApp
{
public:
    DesktopApp(iSimulator* simulator, bool noSplash) : _simulator(simulator), _noSplash(noSplash) {}
    ~DesktopApp() override
    {
        for (char* arg : _glutArgs)
            std::free(arg);
    }

    // The command line was read before the toolkit started.
    bool OnInit() override
    {
        delete wxLog::SetActiveTarget(new wxLogGui);
        init_glut();
        wxInitAllImageHandlers();
        {
            // A machine without the English locale still runs, in its own.
            wxLogNull quiet;
            wxLocale locale;
            locale.Init(wxLANGUAGE_ENGLISH, wxLOCALE_LOAD_DEFAULT);
        }
        _simulator->getTracer()->setTraceFunction(MainFrame::trace_function);
        auto* frame = new MainFrame(_simulator, "Sarvo");
        frame->create();
        if (!_noSplash)
            show_splash();
        frame->SetIcon(wxIcon(sarvo_icon_xpm));
        frame->Show();
        SetTopWindow(frame);
        return true;
    }

private:
    void init_glut()
    {
        if (!_glutArgs.empty())
            return;
        for (int k = 0; k < argc; k++)
            _glutArgs.push_back(strdup(wxString(argv[k]).ToAscii()));
        _glutArgs.push_back(nullptr);
        int count = static_cast<int>(_glutArgs.size()) - 1;
        glutInit(&count, _glutArgs.data());
    }

    // A missing image is skipped without a word.
    void show_splash()
    {
        const wxString dir = wxFileName(wxStandardPaths::Get().GetExecutablePath()).GetPath();
        const wxString path = dir + "/../doc/sarvo_splash.png";
        if (!wxFileName::FileExists(path))
            return;
        wxBitmap bitmap;
        if (!bitmap.LoadFile(path, wxBITMAP_TYPE_PNG))
            return;
        auto* splash =
            new wxSplashScreen(bitmap, wxSPLASH_CENTRE_ON_SCREEN | wxSPLASH_TIMEOUT, 5000, nullptr, wxID_ANY);
        wxYield();
        wxSleep(5);
        delete splash;
    }

    iSimulator* _simulator;
    bool _noSplash;
    std::vector<char*> _glutArgs;
};

} // namespace

int runDesktop(iSimulator* simulator, int argc, char** argv, bool noSplash)
{
    // Without a display the toolkit would abort while telling so.
    const char* x11 = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if ((x11 == nullptr || *x11 == '\0') && (wayland == nullptr || *wayland == '\0'))
    {
        simulator->getTracer()->error(
            "The desktop application needs a display (DISPLAY is not set): run a batch "
            "file with -b <file>, or start it under X.");
        return 3;
    }
    // Until the toolkit is up its complaints go to standard error: a box
    // about a display that cannot be opened would abort the program.
    wxLogStderr* early = new wxLogStderr;
    delete wxLog::SetActiveTarget(early);
    wxApp::SetInstance(new DesktopApp(simulator, noSplash));
    // The toolkit says itself when there is no display; nothing was run then.
    const int status = wxEntry(argc, argv);
    return status == 0 ? 0 : 3;
}
