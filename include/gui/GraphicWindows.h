#pragma once
// The graphic windows of the frame. A window the user closes leaves the set.

#include "view/FaciesColorMap.h"

#include <wx/string.h>

#include <vector>

class GraphicWindow;
class Network;
class wxWindow;

class GraphicWindows
{
public:
    GraphicWindows() = default;
    GraphicWindows(const GraphicWindows&) = delete;
    GraphicWindows& operator=(const GraphicWindows&) = delete;

    GraphicWindow* add(wxWindow* parent, const Network* network, const wxString& title);
    // Every window follows `network`.
    void observe(const Network* network);
    void refresh(bool full);
    size_t size() const { return _windows.size(); }
    bool empty() const { return _windows.empty(); }
    GraphicWindow* at(size_t index) const { return _windows.at(index); }
    // The one colour map every window paints with.
    FaciesColorMap& colours() { return _colours; }

private:
    void forget(GraphicWindow* window);

    std::vector<GraphicWindow*> _windows;
    FaciesColorMap _colours;
};
