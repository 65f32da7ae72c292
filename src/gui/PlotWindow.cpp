#include "gui/PlotWindow.h"

#include "gui/PlotPainter.h"
#include "kernel/common/StagedFile.h"

#include <wx/dcbuffer.h>
#include <wx/filedlg.h>
#include <wx/image.h>
#include <wx/log.h>
#include <wx/menu.h>
#include <wx/msgdlg.h>
#include <wx/panel.h>
#include <wx/sizer.h>

#include <string>

namespace
{
enum
{
    ID_SAVE_PNG = wxID_HIGHEST + 1,
    ID_SAVE_CSV
};

// A file name without its pattern's suffix gets it.
wxString with_suffix(wxString path, const wxString& suffix)
{
    if (!path.Lower().EndsWith(suffix))
        path += suffix;
    return path;
}
} // namespace

PlotWindow::PlotWindow(wxWindow* parent, const PlotData& data)
    : wxFrame(parent, wxID_ANY, data.title, wxDefaultPosition, wxSize(820, 600)), _data(data)
{
    wxMenu* file = new wxMenu;
    file->Append(ID_SAVE_PNG, "Save as PNG...\tCtrl-s");
    file->Append(ID_SAVE_CSV, "Save as CSV...");
    file->AppendSeparator();
    file->Append(wxID_CLOSE, "Close\tCtrl-w");
    wxMenuBar* bar = new wxMenuBar;
    bar->Append(file, "&File");
    SetMenuBar(bar);

    _canvas = new wxPanel(this, wxID_ANY);
    // Painted whole at each paint, through a buffer: no flicker on resizing.
    _canvas->SetBackgroundStyle(wxBG_STYLE_PAINT);
    _canvas->Bind(wxEVT_PAINT, &PlotWindow::on_paint, this);
    _canvas->Bind(wxEVT_SIZE,
                  [this](wxSizeEvent& event)
                  {
                      _canvas->Refresh();
                      event.Skip();
                  });
    wxBoxSizer* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(_canvas, 1, wxEXPAND);
    SetSizer(sizer);
    SetMinSize(wxSize(400, 300));

    Bind(wxEVT_MENU, &PlotWindow::on_save_png, this, ID_SAVE_PNG);
    Bind(wxEVT_MENU, &PlotWindow::on_save_csv, this, ID_SAVE_CSV);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(); }, wxID_CLOSE);
}

void PlotWindow::on_paint(wxPaintEvent&)
{
    wxAutoBufferedPaintDC dc(_canvas);
    PlotPainter(_data).draw(dc, _canvas->GetClientSize());
}

bool PlotWindow::savePng(const wxString& path, wxString& error) const
{
    if (wxImage::FindHandler(wxBITMAP_TYPE_PNG) == nullptr)
        wxImage::AddHandler(new wxPNGHandler);
    wxSize size = _canvas->GetClientSize();
    if (size.x < 100 || size.y < 100)
        size = wxSize(800, 560);
    const wxBitmap bitmap = PlotPainter(_data).render(size);
    // The failure is told by the message, not by a log box.
    wxLogNull quiet;
    // Written beside its name first, so that a failure leaves the user's file.
    StagedFile staged(path.utf8_string());
    if (!bitmap.SaveFile(wxString::FromUTF8(staged.path().c_str()), wxBITMAP_TYPE_PNG) || !staged.commit())
    {
        error = "Cannot save the image " + path;
        return false;
    }
    return true;
}

bool PlotWindow::saveCsv(const wxString& path, wxString& error) const
{
    std::string text;
    if (_data.write_csv(path.ToStdString(), text))
        return true;
    error = wxString::FromUTF8(text.c_str());
    return false;
}

wxString PlotWindow::ask_path(const wxString& title, const wxString& pattern, const wxString& suffix)
{
    wxFileDialog dialog(this, title, "", _data.title + suffix, pattern, wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK)
        return "";
    return with_suffix(dialog.GetPath(), suffix);
}

void PlotWindow::on_save_png(wxCommandEvent&)
{
    const wxString path = ask_path("Save the plot as an image", "PNG images (*.png)|*.png", ".png");
    wxString error;
    if (!path.empty() && !savePng(path, error))
        wxMessageBox(error, "Error", wxOK | wxICON_ERROR, this);
}

void PlotWindow::on_save_csv(wxCommandEvent&)
{
    const wxString path = ask_path("Save the plot as a table", "Tables (*.csv)|*.csv", ".csv");
    wxString error;
    if (!path.empty() && !saveCsv(path, error))
        wxMessageBox(error, "Error", wxOK | wxICON_ERROR, this);
}

void show_plot(wxWindow* parent, const PlotData& data)
{
    PlotWindow* window = new PlotWindow(parent, data);
    window->Show();
    window->Raise();
}
