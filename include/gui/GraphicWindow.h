#pragma once
// A window that shows the block of a network. This one is a plain panel
// that names what it observes, until the block view takes its place.

#include <wx/frame.h>

class Network;
class FaciesColorMap;
class wxStaticText;

class GraphicWindow : public wxFrame
{
public:
    GraphicWindow(wxWindow* parent, const Network* network, FaciesColorMap* colours, const wxString& title);

    // Follows another network (null before the model exists).
    void observe(const Network* network);
    // `full` after iterations ran, otherwise a redraw of what is known.
    void refresh(bool full);

private:
    const Network* _network;
    FaciesColorMap* _colours;
    wxStaticText* _label;
    unsigned int _refreshCount = 0;
};
