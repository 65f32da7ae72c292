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
    create_menu();
    Bind(wxEVT_CLOSE_WINDOW, &GraphicWindow::on_close, this);
    _canvas->SetFocus();
}

GraphicWindow::~GraphicWindow() = default;

// The views and what has no key of its own; no accelerators, since every
// letter is already a key of the view.
void GraphicWindow::create_menu()
{
    auto* menu = new wxMenu;
    const std::pair<const char*, int> views[] = {{"Aerial View", InterfaceCanvas::aerial},
                                                 {"X Section", InterfaceCanvas::x_section},
                                                 {"Y Section", InterfaceCanvas::y_section},
                                                 {"Perspective", InterfaceCanvas::topo}};
    for (const auto& view : views)
    {
        const int type = view.second;
        Bind(
            wxEVT_MENU, [this, type](wxCommandEvent&) { _canvas->setViewType(type), _canvas->render(); },
            menu->Append(wxID_ANY, view.first)->GetId());
    }
    menu->AppendSeparator();
    wxMenuItem* block = menu->AppendCheckItem(wxID_ANY, "3D Block");
    block->Check(true);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent& event) { _canvas->setView3DBlock(event.IsChecked()), _canvas->render(); },
        block->GetId());
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { _canvas->snapshot(); },
        menu->Append(wxID_ANY, "Snapshot...")->GetId());
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { _canvas->run_command(ViewCommand::HELP); },
        menu->Append(wxID_ANY, "Keyboard Shortcuts")->GetId());
    auto* bar = new wxMenuBar;
    bar->Append(menu, "&View");
    SetMenuBar(bar);
}

void GraphicWindow::observe(const Network* network)
{
    _canvas->observe(network);
    _canvas->render();
}

void GraphicWindow::refresh(bool full)
{
    if (full)
    {
        _canvas->model_changed();
        _canvas->create_all();
    }
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
