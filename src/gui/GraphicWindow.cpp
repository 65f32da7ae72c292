#include "gui/GraphicWindow.h"

#include "gui/InterfaceCanvas.h"

std::string GraphicWindow::_last_state;

GraphicWindow::GraphicWindow(wxWindow* parent, const Network* network, FaciesColorMap* colours,
                             const wxString& title)
    : wxFrame(parent, wxID_ANY, title, wxDefaultPosition, wxSize(900, 700))
{
    wxSize size(900, 700);
    _canvas = new InterfaceCanvas(network, *colours, this, size, title);
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(_canvas, 1, wxEXPAND);
    SetSizer(sizer);
    if (!_last_state.empty())
        _canvas->loadState(_last_state);
    Bind(wxEVT_CLOSE_WINDOW, &GraphicWindow::on_close, this);
    _canvas->SetFocus();
}

GraphicWindow::~GraphicWindow() = default;

void GraphicWindow::observe(const Network* network)
{
    _canvas->observe(network);
    _canvas->render();
}

void GraphicWindow::refresh(bool full)
{
    if (full)
        _canvas->create_all();
    _canvas->render();
}

std::string GraphicWindow::saveState() const
{
    return _canvas->saveState();
}

void GraphicWindow::loadState(const std::string& state)
{
    _canvas->loadState(state);
}

void GraphicWindow::on_close(wxCloseEvent& event)
{
    _last_state = saveState();
    event.Skip();
}
