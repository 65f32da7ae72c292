// The canvas's state, its lists and its drawing cycle.

#include "gui/InterfaceCanvas.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <GL/freeglut.h>
#include <GL/glu.h>

#include <chrono>
#include <sstream>

wxBEGIN_EVENT_TABLE(InterfaceCanvas, wxGLCanvas) EVT_PAINT(InterfaceCanvas::on_paint)
    EVT_SIZE(InterfaceCanvas::on_size) EVT_ERASE_BACKGROUND(InterfaceCanvas::on_erase)
        EVT_MOUSE_EVENTS(InterfaceCanvas::on_mouse) EVT_KEY_DOWN(InterfaceCanvas::on_key) wxEND_EVENT_TABLE()

            int InterfaceCanvas::_screenshot = 0;
bool InterfaceCanvas::_full_version = true;
double InterfaceCanvas::_3D_zScale_Max = 1000.;

namespace
{
const int MP_GL_ATTRIBUTES[] = {WX_GL_RGBA, WX_GL_DOUBLEBUFFER, WX_GL_DEPTH_SIZE, 24, 0};

// freeglut draws the texts; it is set up once, with no window of its own.
void init_glut()
{
    if (glutGet(GLUT_INIT_STATE) == 0)
    {
        int argc = 1;
        char name[] = "sarvo";
        char* argv[] = {name, nullptr};
        glutInit(&argc, argv);
    }
}
} // namespace

InterfaceCanvas::InterfaceCanvas(const Network* network, FaciesColorMap& colors, wxWindow* parent,
                                 const wxSize& size, const wxString& title)
    : wxGLCanvas(parent, wxID_ANY, MP_GL_ATTRIBUTES, wxDefaultPosition, size, wxWANTS_CHARS),
      _network(network), _colors(colors), _title(title)
{
    _context = new wxGLContext(this);
    init_glut();
    reset(true);
}

InterfaceCanvas::~InterfaceCanvas()
{
    if (_setup && _context != nullptr)
    {
        SetCurrent(*_context);
        for (GLuint* list : {&_list_map, &_list_channel_grid, &_list_channel_real, &_list_sections,
                             &_list_wells, &_list_cube, &_list_extra, &_list_legend, &_list_ruler})
            delete_list(*list);
        for (GLuint& list : _list_block)
            delete_list(list);
    }
    delete _context;
}

const Domain* InterfaceCanvas::domain() const
{
    return _network != nullptr ? _network->domain() : nullptr;
}

bool InterfaceCanvas::turbiditic() const
{
    return _network != nullptr && _network->parameters() != nullptr && _network->parameters()->usingTurbi();
}

void InterfaceCanvas::observe(const Network* network)
{
    _network = network;
    model_changed();
    init();
}

void InterfaceCanvas::init()
{
    reset(true);
    create_all();
}

void InterfaceCanvas::warn(const std::string& text) const
{
    if (_network != nullptr && _network->tracer() != nullptr)
        _network->tracer()->trace(text, TRACE_WARNING);
}

void InterfaceCanvas::info(const std::string& text) const
{
    if (_network != nullptr && _network->tracer() != nullptr)
        _network->tracer()->trace(text, TRACE_INFO);
}

void InterfaceCanvas::error(const std::string& text) const
{
    if (_network != nullptr && _network->tracer() != nullptr)
        _network->tracer()->trace(text, TRACE_ERROR);
}

void InterfaceCanvas::refuse(const wxString& text) const
{
    wxMessageBox(text, "Warning!", wxOK | wxICON_WARNING, const_cast<InterfaceCanvas*>(this));
}

void InterfaceCanvas::setViewType(int type)
{
    _ruler_points.clear();
    switch (type)
    {
    case aerial:
        _view_3D = false;
        _view_type = aerial;
        break;
    case x_section:
    case y_section:
        _view_3D = false;
        _view_2D_deposit_map = true;
        _view_type = type;
        break;
    case topo:
        _view_3D = true;
        _view_2D_deposit_map = true;
        _view_type = aerial;
        break;
    default:
        error("Unknown type of view");
        return;
    }
    create_all();
}

void InterfaceCanvas::setColorsCoding(int coding)
{
    if (coding < FaciesColorMap::CODING_ERODIBILITY && coding >= 0)
    {
        _colors_coding = coding;
        _view_2D_deposit_map = true;
        _view_2D_erodibility_map = false;
    }
    else if (coding == FaciesColorMap::CODING_ERODIBILITY && !_view_3D && _view_type == aerial)
    {
        _colors_coding = coding;
        _view_2D_deposit_map = false;
        _view_2D_erodibility_map = true;
    }
    create_all();
}

#define SARVO_TOGGLE(setter, flag)                                                                           \
    void InterfaceCanvas::setter(bool on)                                                                    \
    {                                                                                                        \
        flag = on;                                                                                           \
        create_all();                                                                                        \
    }
SARVO_TOGGLE(setChannelReal, _view_channel_real)
SARVO_TOGGLE(setChannelGrid, _view_channel_grid)
SARVO_TOGGLE(setEP, _view_equilibrium_profile)
SARVO_TOGGLE(setWellLabels, _view_well_labels)
SARVO_TOGGLE(setView3DBlock, _view_3D_block)
SARVO_TOGGLE(setChannelPerturbations, _view_channel_perturbations)
SARVO_TOGGLE(setUpperLimit, _view_upper_limit)
SARVO_TOGGLE(setCube, _view_3D_view_cube)
SARVO_TOGGLE(setSections, _view_sections_position)
SARVO_TOGGLE(setRealWellFacies, _view_real_well_facies)
SARVO_TOGGLE(setTrueTopo, _view_true_topo)
SARVO_TOGGLE(setExtraDomain, _view_3D_view_extra_domain)
#undef SARVO_TOGGLE

void InterfaceCanvas::reset(bool full)
{
    delete_list(_list_ruler);
    _ruler_points.clear();
    _ruler_mode = false;
    _drag_left = _drag_right = false;
    if (!full)
        return;
    _3D_zScale_Factor = turbiditic() ? 1000. : 100.;
    _zscale_2D = Attribute<double>(20., 1., 1., 10000.);
    _zscale_3D = Attribute<double>(10., 1., 1., _3D_zScale_Max);
    update_view_parameters();
    _cam_x = _cam_y = _cam_z = 0.;
    _rot_x.reset();
    _rot_z.reset();
    _distance.reset();
}

// Exaggerations and cursors from the block: a section as thick as the channel is
// deep shows it; the cursors start in the middle.
void InterfaceCanvas::update_view_parameters()
{
    const Domain* dom = domain();
    if (dom == nullptr)
        return;
    const int nx = dom->getNx();
    const int ny = dom->getNy();
    _x_section = Attribute<int>(nx / 2, 1, 0, nx - 1);
    _y_section = Attribute<int>(ny / 2, 1, 0, ny - 1);
    const double width = nx * dom->getDx();
    const double depth = ny * dom->getDy();
    double zmin = dom->min_elevation_rel();
    double zmax = dom->max_elevation_rel();
    double hmax = 1.;
    if (_network->has_channel())
        hmax = MeanderCalculator::hmax_from_hmean(_network->channel()->mean_depth());
    const double thickness = std::max(zmax - zmin, hmax);
    // Sections about a third as tall as they are long, the block in
    // perspective about a seventh as tall as its diagonal.
    const double length = std::max(width, depth);
    _zscale_2D.default_value(std::clamp(std::round(0.3 * length / thickness), 1., _zscale_2D.max()));
    _zscale_2D.reset();
    const double diagonal = std::hypot(width, depth);
    _zscale_3D.default_value(std::clamp(std::round(0.15 * diagonal / thickness), 1., _3D_zScale_Factor));
    _zscale_3D.bounds(1., _3D_zScale_Factor);
    _zscale_3D.reset();
    _distance = Attribute<double>(1.7 * diagonal, diagonal / 200., diagonal / 20., 10. * diagonal);
}

void InterfaceCanvas::begin_list(GLuint& list)
{
    if (list != 0 && glIsList(list))
        glDeleteLists(list, 1);
    list = glGenLists(1);
    glNewList(list, GL_COMPILE);
}

void InterfaceCanvas::delete_list(GLuint& list)
{
    if (list != 0 && _setup && glIsList(list))
        glDeleteLists(list, 1);
    list = 0;
}

void InterfaceCanvas::create_all()
{
    if (!_setup || _context == nullptr)
        return;
    const auto start = std::chrono::steady_clock::now();
    SetCurrent(*_context);
    _age = _network != nullptr ? _network->getAge() : 0;
    _colors.setAgeRange(0, _age);
    reshape_function();
    set_projection_mode();
    for (GLuint* list : {&_list_map, &_list_channel_grid, &_list_channel_real, &_list_sections, &_list_wells,
                         &_list_cube, &_list_extra})
        delete_list(*list);
    if (domain() != nullptr)
    {
        if (_view_3D)
        {
            create_3D_cube();
            create_3D_block();
            create_3D_extra_domain();
            create_3D_sections_position();
            create_3D_channel_grid();
            create_3D_channel_real();
            create_3D_deposit_map();
        }
        else if (_view_type == aerial)
        {
            create_2D_deposit_map();
            create_2D_erodibility_map();
            create_2D_channel_grid();
            create_2D_channel_real();
            create_2D_sections_position();
            create_2D_well_labels();
        }
        else if (_view_type == x_section)
        {
            create_2D_x_section();
            create_2D_x_channel_grid();
            create_2D_x_channel_real();
            create_2D_ysection_position();
            create_2D_well_labels();
        }
        else if (_view_type == y_section)
        {
            create_2D_y_section();
            create_2D_y_channel_grid();
            create_2D_y_channel_real();
            create_2D_xsection_position();
            create_2D_well_labels();
        }
        else
            error("Unknown type of view");
    }
    create_legend();
    _create_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void InterfaceCanvas::render()
{
    if (!draw())
        return;
    if (_video)
    {
        char suffix[32];
        std::snprintf(suffix, sizeof suffix, "_%03i.tif", _video_count++);
        write_picture(wxString("shot_") + _title + suffix);
    }
    SwapBuffers();
}

bool InterfaceCanvas::draw()
{
    if (_context == nullptr || !IsShownOnScreen())
        return false;
    SetCurrent(*_context);
    glClearColor(1.f, 1.f, 1.f, 1.f);
    glShadeModel(GL_SMOOTH);
    if (!_setup)
    {
        _setup = true;
        create_all();
    }
    reshape_function();
    set_projection_mode();
    if (_view_3D)
        display_function_3D();
    else
        display_function_2D();
    glFlush();
    return true;
}

void InterfaceCanvas::reshape_function()
{
    const wxSize size = GetClientSize();
    glViewport(0, 0, std::max(size.x, 1), std::max(size.y, 1));
}

void InterfaceCanvas::set_projection_mode()
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    const wxSize size = GetClientSize();
    if (_view_3D)
    {
        const double diagonal = _distance.value() / 1.7;
        gluPerspective(40., std::max(size.x, 1) / double(std::max(size.y, 1)), diagonal / 100.,
                       diagonal * 20.);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    else if (_view_type == aerial || _view_type == x_section || _view_type == y_section)
    {
        double x0, x1, y0, y1;
        world_box(x0, x1, y0, y1);
        gluOrtho2D(x0, x1, y0, y1);
        glDisable(GL_BLEND);
    }
    else
        error("Wrong type of view");
    glMatrixMode(GL_MODELVIEW);
}

// The world window of a 2D view: the drawing with a margin, widened to the
// canvas's proportions, so that metres are square (exaggerated in sections).
void InterfaceCanvas::world_box(double& x0, double& x1, double& y0, double& y1) const
{
    x0 = 0.;
    x1 = y1 = 1.;
    y0 = 0.;
    const Domain* dom = domain();
    if (dom != nullptr)
    {
        const double dx = dom->getDx();
        const double dy = dom->getDy();
        if (_view_type == aerial)
        {
            x0 = -0.5 * dx;
            x1 = (dom->getNx() - 0.5) * dx;
            y0 = -0.5 * dy;
            y1 = (dom->getNy() - 0.5) * dy;
        }
        else
        {
            const bool along_y = _view_type == x_section;
            const double d = along_y ? dy : dx;
            const int n = along_y ? dom->getNy() : dom->getNx();
            x0 = -0.5 * d;
            x1 = (n - 0.5) * d;
            double zmin, zmax;
            dom->min_and_max_elevation_rel(zmin, zmax);
            if (!(zmax > zmin))
                zmax = zmin + 1.;
            y0 = section_world_z(zmin);
            y1 = section_world_z(zmax);
        }
    }
    const wxSize size = GetClientSize();
    const double w = std::max(size.x, 1);
    const double h = std::max(size.y, 1);
    // Room around the drawing for the scales (left, bottom) and the legend (top).
    const double left = 70., right = 20., bottom = 50., top = 70.;
    const double per_pixel =
        std::max((x1 - x0) / std::max(w - left - right, 10.), (y1 - y0) / std::max(h - bottom - top, 10.));
    const double cx = 0.5 * (x0 + x1) + 0.5 * (right - left) * per_pixel;
    const double cy = 0.5 * (y0 + y1) + 0.5 * (top - bottom) * per_pixel;
    x0 = cx - 0.5 * w * per_pixel;
    x1 = cx + 0.5 * w * per_pixel;
    y0 = cy - 0.5 * h * per_pixel;
    y1 = cy + 0.5 * h * per_pixel;
}

bool InterfaceCanvas::world_to_pixel(double wx, double wy, int& px, int& py) const
{
    if (_view_3D)
        return false;
    double x0, x1, y0, y1;
    world_box(x0, x1, y0, y1);
    const wxSize size = GetClientSize();
    px = static_cast<int>(std::floor((wx - x0) / (x1 - x0) * size.x));
    py = static_cast<int>(std::floor((wy - y0) / (y1 - y0) * size.y));
    return px >= 0 && px < size.x && py >= 0 && py < size.y;
}

bool InterfaceCanvas::pixel_to_world(int px, int py, double& wx, double& wy) const
{
    if (_view_3D)
        return false;
    double x0, x1, y0, y1;
    world_box(x0, x1, y0, y1);
    const wxSize size = GetClientSize();
    wx = x0 + (px + 0.5) / size.x * (x1 - x0);
    wy = y0 + (size.y - py - 0.5) / size.y * (y1 - y0);
    return true;
}

void InterfaceCanvas::on_paint(wxPaintEvent&)
{
    wxPaintDC dc(this);
    render();
}

void InterfaceCanvas::on_size(wxSizeEvent& event)
{
    if (_setup && _context != nullptr && IsShownOnScreen())
    {
        SetCurrent(*_context);
        reshape_function();
        create_legend();
    }
    Refresh(false);
    event.Skip();
}

void InterfaceCanvas::on_erase(wxEraseEvent&) {}

void InterfaceCanvas::trace(const std::string& title) const
{
    if (_network == nullptr || _network->tracer() == nullptr || !_network->tracer()->traceLevel(TRACE_DEBUG))
        return;
    std::ostringstream out;
    out << "  Interface Canvas dumped (" << title << " (new +CL2D):\n";
    const std::pair<const char*, bool> flags[] = {
        {"_view_3D", _view_3D},
        {"_view_3D_block", _view_3D_block},
        {"_view_3D_view_cube", _view_3D_view_cube},
        {"_view_3D_view_extra_domain", _view_3D_view_extra_domain},
        {"_view_channel_real", _view_channel_real},
        {"_view_channel_grid", _view_channel_grid},
        {"_view_channel_perturbations", _view_channel_perturbations},
        {"_view_real_well_facies", _view_real_well_facies},
        {"_view_well_labels", _view_well_labels},
        {"_view_sections_position", _view_sections_position},
        {"_view_2D_erodibility_map", _view_2D_erodibility_map},
        {"_view_2D_deposit_map", _view_2D_deposit_map},
        {"_view_zcut", _view_zcut},
        {"_view_true_topo", _view_true_topo},
        {"_view_upper_limit", _view_upper_limit},
        {"_view_equilibrium_profile", _view_equilibrium_profile},
    };
    for (const auto& flag : flags)
        out << "    " << flag.first << "=" << flag.second << "\n";
    out << "    _view_type=" << _view_type;
    _network->tracer()->trace(out.str(), TRACE_DEBUG);
}

namespace
{
// A saved attribute gives its value only: the bounds and the defaults are
// those of the block now shown, which may not be the one it was saved on.
template <typename T> void take_value(Attribute<T>& attribute, const std::string& text)
{
    Attribute<T> saved;
    if (saved.deserialize(text))
        attribute.value(saved.value());
}
} // namespace

std::string InterfaceCanvas::saveState() const
{
    std::ostringstream out;
    out << "view_type=" << getViewType() << "\ncolors_coding=" << _colors_coding
        << "\nzscale_2D=" << _zscale_2D.serialize() << "\nzscale_3D=" << _zscale_3D.serialize()
        << "\nx_section=" << _x_section.serialize() << "\ny_section=" << _y_section.serialize()
        << "\nrotation_x=" << _rot_x.serialize() << "\nrotation_z=" << _rot_z.serialize()
        << "\ndistance=" << _distance.serialize() << "\n";
    return out.str();
}

void InterfaceCanvas::loadState(const std::string& state)
{
    std::istringstream in(state);
    std::string line;
    int type = getViewType();
    while (std::getline(in, line))
    {
        const size_t eq = line.find('=');
        if (eq == std::string::npos)
            continue;
        const std::string key = line.substr(0, eq);
        const std::string value = line.substr(eq + 1);
        if (key == "view_type")
            type = std::atoi(value.c_str());
        else if (key == "colors_coding")
            _colors_coding = std::clamp(std::atoi(value.c_str()), 0, 4);
        else if (key == "zscale_2D")
            take_value(_zscale_2D, value);
        else if (key == "zscale_3D")
            take_value(_zscale_3D, value);
        else if (key == "x_section")
            take_value(_x_section, value);
        else if (key == "y_section")
            take_value(_y_section, value);
        else if (key == "rotation_x")
            take_value(_rot_x, value);
        else if (key == "rotation_z")
            take_value(_rot_z, value);
        else if (key == "distance")
            take_value(_distance, value);
    }
    if (type >= aerial && type <= topo)
        setViewType(type);
}
