#include "gui/GraphicWindow.h"

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

GraphicWindow::GraphicWindow(wxWindow* parent, const Network* network, FaciesColorMap* colours,
                             const wxString& title)
    : wxFrame(parent, wxID_ANY, title, wxDefaultPosition, wxSize(480, 360)), _network(network),
      _colours(colours)
{
    auto* panel = new wxPanel(this);
    _label = new wxStaticText(panel, wxID_ANY, "");
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(_label, 0, wxALL, 12);
    panel->SetSizer(sizer);
    refresh(false);
}

void GraphicWindow::observe(const Network* network)
{
    _network = network;
    refresh(false);
}

void GraphicWindow::refresh(bool full)
{
    if (full)
        _refreshCount++;
    _label->SetLabel(_network == nullptr ? wxString("No model yet.")
                                         : wxString::Format("Block view: %u refreshes.", _refreshCount));
}
