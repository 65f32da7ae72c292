#pragma once
// The window of all trace text: the detail behind every box.

#include "interface/iTracer.h"

#include <wx/frame.h>

class wxTextCtrl;

class MessageWindow : public wxFrame
{
public:
    explicit MessageWindow(wxWindow* parent);

    // Appends the text; an error or a fatal text also brings the window up.
    void trace_message(const char* text, TraceLevel level);
    wxString getText() const;

private:
    // Closing only hides: the trace goes on.
    void on_close(wxCloseEvent& event);

    wxTextCtrl* _text;
};
