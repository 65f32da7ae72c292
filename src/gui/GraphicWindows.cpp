#include "gui/GraphicWindows.h"

#include "gui/GraphicWindow.h"

#include <algorithm>

GraphicWindow* GraphicWindows::add(wxWindow* parent, const Network* network, const wxString& title)
{
    auto* window = new GraphicWindow(parent, network, &_colours, title);
    wxWindow* base = window;
    base->Bind(wxEVT_DESTROY,
               [this, window, base](wxWindowDestroyEvent& event)
               {
                   if (event.GetEventObject() == base)
                       forget(window);
                   event.Skip();
               });
    _windows.push_back(window);
    base->Show();
    return window;
}

void GraphicWindows::observe(const Network* network)
{
    for (GraphicWindow* window : _windows)
        window->observe(network);
}

void GraphicWindows::refresh(bool full)
{
    for (GraphicWindow* window : _windows)
        window->refresh(full);
}

void GraphicWindows::forget(GraphicWindow* window)
{
    _windows.erase(std::remove(_windows.begin(), _windows.end(), window), _windows.end());
}
