// The keyboard, the mouse and the dialogs of the view.

#include "gui/InterfaceCanvas.h"

#include "gui/GraphicWindow.h"
#include "gui/SliderInputDialog.h"
#include "interface/iTracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Topo.h"
#include "kernel/network/Network.h"

#include <cmath>

KeyPress InterfaceCanvas::key_press(const wxKeyEvent& event)
{
    KeyPress key;
    const int code = event.GetKeyCode();
    if (code >= WXK_NUMPAD0 && code <= WXK_NUMPAD9)
    {
        key.special = KeyPress::KEYPAD;
        key.character = '0' + (code - WXK_NUMPAD0);
        return key;
    }
    switch (code)
    {
    case WXK_NUMPAD_ADD:
        key.special = KeyPress::KEYPAD;
        key.character = '+';
        return key;
    case WXK_NUMPAD_SUBTRACT:
        key.special = KeyPress::KEYPAD;
        key.character = '-';
        return key;
    case WXK_SHIFT:
    case WXK_ALT:
    case WXK_CONTROL:
    case WXK_CAPITAL:
    case WXK_NUMLOCK:
    case WXK_WINDOWS_LEFT:
    case WXK_WINDOWS_RIGHT:
    case WXK_WINDOWS_MENU:
        key.special = KeyPress::MODIFIER;
        return key;
    case WXK_UP:
        key.special = KeyPress::UP;
        return key;
    case WXK_DOWN:
        key.special = KeyPress::DOWN;
        return key;
    case WXK_LEFT:
        key.special = KeyPress::LEFT;
        return key;
    case WXK_RIGHT:
        key.special = KeyPress::RIGHT;
        return key;
    case WXK_ESCAPE:
        key.special = KeyPress::ESCAPE;
        return key;
    default:
        break;
    }
    // Letters come upper case: the shift state tells the case.
    if (code >= 'A' && code <= 'Z')
    {
        key.character = event.ShiftDown() ? code : code - 'A' + 'a';
        return key;
    }
    const int unicode = event.GetUnicodeKey();
    if (unicode != WXK_NONE && unicode > 32 && unicode < 127)
    {
        key.character = unicode;
        return key;
    }
    key.special = KeyPress::OTHER;
    return key;
}

void InterfaceCanvas::on_key(wxKeyEvent& event)
{
    _shift = event.ShiftDown();
    _control = event.ControlDown();
    run_command(KeyboardTable::command(key_press(event)));
}

void InterfaceCanvas::run_command(ViewCommand command)
{
    if (!_full_version && KeyboardTable::freeRefusal(command) != nullptr)
    {
        warn(KeyboardTable::freeRefusal(command));
        return;
    }
    switch (command)
    {
    case ViewCommand::NONE:
        return;
    case ViewCommand::UNKNOWN:
        warn(KeyboardTable::unknownKeyText());
        return;
    case ViewCommand::AERIAL_VIEW:
        setViewType(aerial);
        break;
    case ViewCommand::TOPO_VIEW:
        setViewType(topo);
        break;
    case ViewCommand::X_SECTION_VIEW:
        setViewType(x_section);
        break;
    case ViewCommand::Y_SECTION_VIEW:
        setViewType(y_section);
        break;
    case ViewCommand::Z_SLICE:
        zSlice();
        break;
    case ViewCommand::ASK_X_SECTION:
        ask_x_section();
        break;
    case ViewCommand::ASK_Y_SECTION:
        ask_y_section();
        break;
    case ViewCommand::H_SCALE_AT_MOUSE:
    case ViewCommand::H_SCALE_DEFAULT:
        move_horizontal_scale(command == ViewCommand::H_SCALE_AT_MOUSE);
        break;
    case ViewCommand::V_SCALE_AT_MOUSE:
    case ViewCommand::V_SCALE_DEFAULT:
        move_vertical_scale(command == ViewCommand::V_SCALE_AT_MOUSE);
        break;
    case ViewCommand::RULER:
        triggerRuler();
        break;
    case ViewCommand::LEAVE_RULER:
        if (_ruler_mode)
            triggerRuler();
        break;
    case ViewCommand::ASK_EXAGGERATION:
        ask_vertical_exaggeration();
        break;
    case ViewCommand::EXAGGERATION_DOWN:
        zZoom(-1);
        return;
    case ViewCommand::EXAGGERATION_UP:
        zZoom(1);
        return;
    case ViewCommand::ARROW_UP:
    case ViewCommand::ARROW_DOWN:
    case ViewCommand::ARROW_LEFT:
    case ViewCommand::ARROW_RIGHT:
        move_sections(command);
        return;
    case ViewCommand::CODING_FACIES:
    case ViewCommand::CODING_GRAIN:
    case ViewCommand::CODING_FACIES_GRAIN:
    case ViewCommand::CODING_FACIES_GRAIN_AGE:
    case ViewCommand::CODING_AGE:
    case ViewCommand::CODING_ERODIBILITY:
        setColorsCoding(static_cast<int>(command) - static_cast<int>(ViewCommand::CODING_FACIES));
        break;
    case ViewCommand::TOGGLE_EQUILIBRIUM_PROFILE:
        setEP(!_view_equilibrium_profile);
        break;
    case ViewCommand::TOGGLE_WELL_FACIES:
        setRealWellFacies(!_view_real_well_facies);
        break;
    case ViewCommand::TOGGLE_WELL_LABELS:
        if (_view_3D)
            warn("Well labels cannot be displayed");
        setWellLabels(!_view_well_labels);
        break;
    case ViewCommand::TOGGLE_UPPER_LIMIT:
        setUpperLimit(!_view_upper_limit);
        break;
    case ViewCommand::TOGGLE_CHANNEL_GRID:
        setChannelGrid(!_view_channel_grid);
        break;
    case ViewCommand::TOGGLE_CHANNEL_REAL:
        setChannelReal(!_view_channel_real);
        break;
    case ViewCommand::TOGGLE_PERTURBATIONS:
        setChannelPerturbations(!_view_channel_perturbations);
        break;
    case ViewCommand::TOGGLE_SECTIONS:
        setSections(!_view_sections_position);
        break;
    case ViewCommand::TOGGLE_CUBE:
        setCube(!_view_3D_view_cube);
        break;
    case ViewCommand::TOGGLE_EXTRA_DOMAIN:
        setExtraDomain(!_view_3D_view_extra_domain);
        break;
    case ViewCommand::TOGGLE_ZCUT:
        zCut();
        break;
    case ViewCommand::TOGGLE_TRUE_TOPO:
        setTrueTopo(!_view_true_topo);
        break;
    case ViewCommand::TOGGLE_VIDEO:
        _video = !_video;
        break;
    case ViewCommand::GO_FRONT:
        move_3D(90.);
        return;
    case ViewCommand::GO_BACK:
        move_3D(270.);
        return;
    case ViewCommand::GO_LEFT:
        move_3D(180.);
        return;
    case ViewCommand::GO_RIGHT:
        move_3D(0.);
        return;
    case ViewCommand::TURN_LEFT:
    case ViewCommand::TURN_RIGHT:
        if (_view_3D)
            _rot_z.increment(command == ViewCommand::TURN_LEFT ? -5 : 5);
        break;
    case ViewCommand::TURN_DOWN:
    case ViewCommand::TURN_UP:
        if (_view_3D)
            _rot_x.increment(command == ViewCommand::TURN_DOWN ? -5 : 5);
        break;
    case ViewCommand::GO_DOWN:
    case ViewCommand::GO_UP:
        if (_view_3D)
            _cam_z += (command == ViewCommand::GO_UP ? 1. : -1.) * _distance.step() * 5.;
        break;
    case ViewCommand::RESET_CAMERA:
        _cam_x = _cam_y = _cam_z = 0.;
        _rot_x.reset();
        _rot_z.reset();
        _distance.reset();
        break;
    case ViewCommand::RESET_VIEW:
        reset(true);
        create_all();
        break;
    case ViewCommand::SNAPSHOT:
        snapshot();
        return;
    case ViewCommand::HELP:
        info(std::string(KeyboardTable::helpTitle()) + "\n" + KeyboardTable::help());
        return;
    }
    render();
}

// The arrows step the section cursors; the first one shows them.
void InterfaceCanvas::move_sections(ViewCommand key)
{
    const bool horizontal = key == ViewCommand::ARROW_LEFT || key == ViewCommand::ARROW_RIGHT;
    const int direction = key == ViewCommand::ARROW_UP || key == ViewCommand::ARROW_RIGHT ? 1 : -1;
    Attribute<int>* cursor = nullptr;
    if (_view_3D || _view_type == aerial || _view_type == y_section)
        cursor = horizontal ? &_x_section : &_y_section;
    else
        cursor = horizontal ? &_y_section : &_x_section;
    _view_sections_position = true;
    cursor->increment(direction);
    create_all();
    render();
}

// Walks the camera in the ground plane, the move's angle taken from the heading.
void InterfaceCanvas::move_3D(double angle)
{
    if (!_view_3D)
        return;
    double heading = -_rot_z.value() + angle;
    heading = std::fmod(heading, 360.);
    if (heading < 0.)
        heading += 360.;
    const double radians = heading * 0.0174532925;
    const double step = 5. * _distance.step();
    _cam_x += step * std::cos(radians);
    _cam_y += step * std::sin(radians);
    render();
}

void InterfaceCanvas::zZoom(int direction)
{
    if (_view_3D)
        _zscale_3D.increment(direction);
    else if (_view_type != aerial)
        _zscale_2D.increment(direction);
    else
        return;
    apply_vscale();
}

void InterfaceCanvas::apply_vscale()
{
    create_all();
    render();
}

void InterfaceCanvas::apply_section()
{
    create_all();
    render();
}

void InterfaceCanvas::ask_x_section()
{
    info("Controlling X section motion...");
    SliderInputDialog<int, InterfaceCanvas> dialog(this, "X Section Position", _x_section, this,
                                                   &InterfaceCanvas::apply_section,
                                                   std::max(_x_section.max() - _x_section.min(), 1));
    dialog.ShowModal();
}

void InterfaceCanvas::ask_y_section()
{
    info("Controlling X section motion...");
    SliderInputDialog<int, InterfaceCanvas> dialog(this, "Y Section Position", _y_section, this,
                                                   &InterfaceCanvas::apply_section,
                                                   std::max(_y_section.max() - _y_section.min(), 1));
    dialog.ShowModal();
}

void InterfaceCanvas::ask_vertical_exaggeration()
{
    if (_view_3D)
    {
        SliderInputDialog<double, InterfaceCanvas> dialog(this, "3D Vertical Exaggeration", _zscale_3D, this,
                                                          &InterfaceCanvas::apply_vscale, 1000);
        dialog.ShowModal();
    }
    else
    {
        SliderInputDialog<double, InterfaceCanvas> dialog(this, "2D Vertical Exaggeration", _zscale_2D, this,
                                                          &InterfaceCanvas::apply_vscale, 1000);
        dialog.ShowModal();
    }
}

void InterfaceCanvas::setSliceElevation(double z)
{
    _slice_z = z;
    create_all();
}

void InterfaceCanvas::zSlice()
{
    const Domain* dom = domain();
    if (dom == nullptr || _view_3D || _view_type != aerial)
        return;
    double zmin, zmax;
    dom->min_and_max_elevation_geo(zmin, zmax);
    Attribute<double> slice(_slice_z < 1e29 ? _slice_z : 0.5 * (zmin + zmax), 0.01, zmin, zmax);
    slice.value(slice.default_value());
    struct Apply
    {
        InterfaceCanvas* canvas;
        Attribute<double>* slice;
        void apply() { canvas->setSliceElevation(slice->value()), canvas->render(); }
    } apply{this, &slice};
    _slice_z = slice.value();
    SliderInputDialog<double, Apply> dialog(this, "Z Slice Position (m)", slice, &apply, &Apply::apply, 1000);
    if (dialog.ShowModal() != wxID_OK)
        close_zslide();
}

void InterfaceCanvas::close_zslide()
{
    _slice_z = 1e30;
    create_all();
    render();
}

// The topography eroded by the imported surface of the graphic window.
void InterfaceCanvas::zCut()
{
    if (_view_zcut)
    {
        _view_zcut = false;
        create_all();
        return;
    }
    auto* window = dynamic_cast<GraphicWindow*>(GetParent());
    const std::string path = window != nullptr ? window->get_zcut_parameters() : std::string();
    if (path.empty())
    {
        warn("No imported surface file defined for zCut option.");
        return;
    }
    const Domain* dom = domain();
    Topo surface;
    if (dom == nullptr || !surface.read(path))
    {
        error("Cannot read the Z cut surface " + path);
        return;
    }
    if (surface.getNx() != dom->getNx() || surface.getNy() != dom->getNy() ||
        std::abs(surface.getDx() - dom->getDx()) > 1e-6 || std::abs(surface.getDy() - dom->getDy()) > 1e-6)
    {
        refuse(wxString(path) + " is not compatible with current domain.\n" +
               "(Zcut option doesn't support grid rotation and translation");
        return;
    }
    _zcut = surface.getValues();
    _view_zcut = true;
    create_all();
}

void InterfaceCanvas::move_horizontal_scale(bool at_mouse)
{
    _hscale_default = !at_mouse;
    _hscale_at = _mouse;
    render();
}

void InterfaceCanvas::move_vertical_scale(bool at_mouse)
{
    _vscale_default = !at_mouse;
    _vscale_at = _mouse;
    render();
}

void InterfaceCanvas::update_scale()
{
    render();
}

void InterfaceCanvas::on_mouse(wxMouseEvent& event)
{
    _shift = event.ShiftDown();
    _control = event.ControlDown();
    const wxSize size = GetClientSize();
    const wxPoint at(std::clamp(event.GetX(), 0, std::max(size.x - 1, 0)),
                     std::clamp(event.GetY(), 0, std::max(size.y - 1, 0)));
    if (!_view_3D)
    {
        if (event.ButtonDown() || event.ButtonUp())
        {
            _mouse = at;
            mouse_function_2D(event);
        }
        else if (event.Dragging() || event.Moving())
        {
            _mouse = at;
            mouse_motion_function_2D(event);
            if (_ruler_mode)
                render();
        }
        return;
    }
    if (event.LeftDown() || event.RightDown())
    {
        _drag_left = event.LeftDown();
        _drag_right = event.RightDown();
        _mouse = at;
        SetFocus();
    }
    else if (event.LeftUp() || event.RightUp())
        _drag_left = _drag_right = false;
    else if (event.Dragging() && (_drag_left || _drag_right))
    {
        mouse_motion_function_3D(event);
        _mouse = at;
        render();
    }
}
