#pragma once
// The window of one Compute tool's result: the plot drawn to the window's
// size, and its saving as a PNG image or a semicolon-separated table.

#include "tools/PlotData.h"

#include <wx/frame.h>

class wxPanel;

class PlotWindow : public wxFrame
{
public:
    PlotWindow(wxWindow* parent, const PlotData& data);

    const PlotData& data() const { return _data; }
    // The plot as drawn now, at the size of the drawing area; false with a
    // message naming the file.
    bool savePng(const wxString& path, wxString& error) const;
    bool saveCsv(const wxString& path, wxString& error) const;

private:
    void on_paint(wxPaintEvent& event);
    void on_save_png(wxCommandEvent& event);
    void on_save_csv(wxCommandEvent& event);
    // Asks for a file name; empty when the user cancels.
    wxString ask_path(const wxString& title, const wxString& pattern, const wxString& suffix);

    PlotData _data;
    wxPanel* _canvas;
};

// Opens a window on the plot beside `parent` (any window, or null).
void show_plot(wxWindow* parent, const PlotData& data);
