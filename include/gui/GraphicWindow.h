#pragma once
// A window of the application holding one block view, with its own view
// state, which it saves and restores.

#include <wx/wx.h>

#include <string>

class FaciesColorMap;
class InterfaceCanvas;
class Network;

class GraphicWindow : public wxFrame
{
public:
    GraphicWindow(wxWindow* parent, const Network* network, FaciesColorMap* colours, const wxString& title);
    ~GraphicWindow() override;

    void observe(const Network* network);
    // full: rebuild the lists from the model, then draw; otherwise draw only.
    void refresh(bool full);

    InterfaceCanvas* canvas() const { return _canvas; }
    // The surface that the Z cut view erodes the topography with ("" when none).
    std::string get_zcut_parameters() const { return _zcut_file; }
    void set_zcut_parameters(const std::string& file) { _zcut_file = file; }

    std::string saveState() const;
    void loadState(const std::string& state);

private:
    void create_menu();
    void on_close(wxCloseEvent& event);

    InterfaceCanvas* _canvas;
    std::string _zcut_file;
    // The view state as it was when the window closed, for the next window.
    static std::string _last_state;
};
