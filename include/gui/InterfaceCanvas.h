#pragma once
// The OpenGL view of the block as it grows: from above, along a section or
// in perspective, with the channel, the wells, the section cursors, scales
// and a legend; the keyboard and the mouse drive it. It reads the network
// and the domain directly between two chunks of iterations, and turns what
// it reads into display lists in create_all: render only calls the lists.

#include "view/Attribute.h"
#include "view/BlockMesh.h"
#include "view/FaciesColorMap.h"
#include "view/KeyboardTable.h"

#include <wx/glcanvas.h>
#include <wx/wx.h>

#include <GL/gl.h>

#include <string>
#include <vector>

class Domain;
class Network;

class InterfaceCanvas : public wxGLCanvas
{
public:
    enum type_of_view
    {
        aerial = 0,
        x_section = 1,
        y_section = 2,
        topo = 3
    };

    InterfaceCanvas(const Network* network, FaciesColorMap& colors, wxWindow* parent, const wxSize& size,
                    const wxString& title);
    ~InterfaceCanvas() override;

    void observe(const Network* network);
    // The model changed (a chunk ran, a surface was replaced): the next
    // create_all rebuilds the 3D block too. Toggles and camera moves don't.
    void model_changed() { ++_model_revision; }
    // How many times the 3D block was built.
    unsigned int block_builds() const { return _block_builds; }
    const Network* network() const { return _network; }

    void setViewType(int type);
    void setColorsCoding(int coding);
    int getViewType() const { return _view_3D ? topo : _view_type; }
    int getColorsCoding() const { return _colors_coding; }

    // Toggles: each sets its flag and rebuilds.
    void setChannelReal(bool on);
    void setChannelGrid(bool on);
    void setEP(bool on);
    void setWellLabels(bool on);
    void setView3DBlock(bool on);
    void setChannelPerturbations(bool on);
    void setUpperLimit(bool on);
    void setCube(bool on);
    void setSections(bool on);
    void setRealWellFacies(bool on);
    void setTrueTopo(bool on);
    void setExtraDomain(bool on);

    void init();
    void reset(bool full);
    void create_all();
    void render();
    void snapshot();
    // The next snapshot's proposed name, "image%03i.tif", counted across all views.
    wxString snapshot_name();
    // Draws the view and writes it as a TIFF (a PNG when the name ends so);
    // false with the reason traced.
    bool printScreen(const wxString& path);
    // Draws the view and reads it back, rows bottom first.
    bool readPixels(std::vector<unsigned char>& rgb, int& width, int& height);
    void zCut();
    void zSlice();
    void close_zslide();
    // The aerial view shows the deposits at this geographic elevation (1e30: the surface).
    void setSliceElevation(double z);
    void zZoom(int direction);
    void apply_vscale();
    void apply_section();
    void move_sections(ViewCommand key);
    void move_3D(double angle);
    void ask_x_section();
    void ask_y_section();
    void ask_vertical_exaggeration();
    void move_horizontal_scale(bool at_mouse);
    void move_vertical_scale(bool at_mouse);
    void triggerRuler();
    void update_scale();
    void trace(const std::string& title) const;

    void on_paint(wxPaintEvent& event);
    void on_size(wxSizeEvent& event);
    void on_erase(wxEraseEvent& event);
    void on_mouse(wxMouseEvent& event);
    void on_key(wxKeyEvent& event);
    // The key of an event as the keyboard table reads it.
    static KeyPress key_press(const wxKeyEvent& event);
    void run_command(ViewCommand command);

    // View state saved by the graphic window, one "name=value" per line.
    std::string saveState() const;
    void loadState(const std::string& state);

    // --- What tests and the window read back.
    // The pixel (origin bottom left) of a point of a 2D view's world: metres
    // across, and metres of exaggerated elevation up (sections) or metres of y (aerial).
    bool world_to_pixel(double wx, double wy, int& px, int& py) const;
    // The z of the 2D section views' world for a relative elevation.
    double section_world_z(double z) const { return z * _zscale_2D.value(); }
    Attribute<double>& zscale_2D() { return _zscale_2D; }
    Attribute<double>& zscale_3D() { return _zscale_3D; }
    Attribute<double>& rotation_x() { return _rot_x; }
    Attribute<double>& rotation_z() { return _rot_z; }
    Attribute<double>& distance() { return _distance; }
    Attribute<int>& x_section_position() { return _x_section; }
    Attribute<int>& y_section_position() { return _y_section; }
    double camera_x() const { return _cam_x; }
    double camera_y() const { return _cam_y; }
    bool video() const { return _video; }
    bool ruler() const { return _ruler_mode; }
    static int screenshotCount() { return _screenshot; }
    const BlockMesh& block_mesh() const { return _mesh; }
    // The rebuild and the render of the last calls, in seconds.
    double last_create_seconds() const { return _create_seconds; }

    // Refusals of the distribution tier apply when false.
    static bool _full_version;
    // The largest 3D exaggeration.
    static double _3D_zScale_Max;

private:
    const Domain* domain() const;
    bool turbiditic() const;
    bool draw();
    bool write_picture(const wxString& path);
    void reshape_function();
    void set_projection_mode();
    void update_view_parameters();
    void world_box(double& x0, double& x1, double& y0, double& y1) const;
    double get_scale_3D() const { return _zscale_3D.value(); }
    void begin_list(GLuint& list);
    void delete_list(GLuint& list);
    void warn(const std::string& text) const;
    void info(const std::string& text) const;
    void error(const std::string& text) const;
    void refuse(const wxString& text) const;

    // 2D (InterfaceCanvas2D.cpp)
    void display_function_2D();
    void create_2D_deposit_map();
    void create_2D_erodibility_map();
    void create_2D_channel_grid();
    void create_2D_channel_real();
    void create_2D_sections_position();
    void create_2D_well_labels();
    void draw_well_facies(const class Well& well, double h);
    void create_2D_x_section();
    void create_2D_y_section();
    void create_2D_section(bool along_y, int index);
    void create_2D_x_channel_grid();
    void create_2D_y_channel_grid();
    void create_2D_x_channel_real();
    void create_2D_y_channel_real();
    void create_2D_section_channel(bool along_y, int index, bool real);
    void create_2D_xsection_position();
    void create_2D_ysection_position();
    void create_2D_ruler();
    void mouse_function_2D(const wxMouseEvent& event);
    void mouse_motion_function_2D(const wxMouseEvent& event);
    bool pixel_to_world(int px, int py, double& wx, double& wy) const;

    // 3D (InterfaceCanvas3D.cpp)
    void display_function_3D();
    void set_3D_camera();
    // The eye in the block's frame, from the current model-view matrix.
    void eye_in_block(double (&eye)[3]) const;
    void create_3D_cube();
    void create_3D_block();
    void create_3D_extra_domain();
    void create_3D_sections_position();
    void create_3D_channel_grid();
    void create_3D_channel_real();
    void create_3D_deposit_map();
    void mouse_motion_function_3D(const wxMouseEvent& event);

    // Legend, scales, text (InterfaceCanvasLegend.cpp)
    void create_legend();
    void draw_2D_horizontal_scale();
    void draw_2D_vertical_scale();
    void display_copyright();
    void draw_text(double x, double y, const std::string& text) const;
    std::vector<std::string> legend_lines() const;
    void well_properties(const class Well& well, bool with_status, float rgb[3]) const;

    const Network* _network;
    FaciesColorMap& _colors;
    wxString _title;
    wxGLContext* _context = nullptr;
    bool _setup = false;
    unsigned int _age = 0;

    int _view_type = aerial;
    int _colors_coding = FaciesColorMap::CODING_FACIES;
    bool _view_3D = false;
    bool _view_3D_block = true;
    bool _view_3D_view_cube = true;
    bool _view_3D_view_extra_domain = false;
    bool _view_channel_real = true;
    bool _view_channel_grid = false;
    bool _view_channel_perturbations = false;
    bool _view_real_well_facies = true;
    bool _view_well_labels = true;
    bool _view_sections_position = false;
    bool _view_2D_erodibility_map = false;
    bool _view_2D_deposit_map = true;
    bool _view_zcut = false;
    bool _view_true_topo = true;
    bool _view_upper_limit = true;
    bool _view_equilibrium_profile = false;

    Attribute<double> _zscale_2D{20., 1., 1., 10000.};
    Attribute<double> _zscale_3D{10., 1., 1., 100.};
    Attribute<int> _x_section{0, 1, 0, 0};
    Attribute<int> _y_section{0, 1, 0, 0};
    // Camera of the perspective view: tilt, heading (degrees) and distance (m).
    Attribute<double> _rot_x{55., 1., -360., 360., 360.};
    Attribute<double> _rot_z{340., 1., 0., 360., 360.};
    Attribute<double> _distance{3000., 10., 10., 1e6};
    double _cam_x = 0.;
    double _cam_y = 0.;
    double _cam_z = 0.;
    double _3D_zScale_Factor = 100.;

    double _slice_z = 1e30;
    std::vector<double> _zcut;

    // Display lists, 0 until built.
    GLuint _list_map = 0;
    GLuint _list_channel_grid = 0;
    GLuint _list_channel_real = 0;
    GLuint _list_sections = 0;
    GLuint _list_wells = 0;
    GLuint _list_cube = 0;
    // The block's faces, one list per way they look, drawn when the eye may see them.
    GLuint _list_block[BlockMesh::SIDES] = {0, 0, 0, 0, 0, 0};
    // What the block's lists were built from: rebuilt only when one changes.
    struct BlockKey
    {
        const Network* network = nullptr;
        unsigned int model = 0;
        unsigned int age = 0;
        int coding = -1;
        unsigned int colors = 0;
        bool operator==(const BlockKey& o) const
        {
            return network == o.network && model == o.model && age == o.age && coding == o.coding &&
                   colors == o.colors;
        }
    };
    BlockKey _block_key;
    bool _block_built = false;
    unsigned int _model_revision = 0;
    unsigned int _block_builds = 0;
    GLuint _list_extra = 0;
    GLuint _list_legend = 0;
    GLuint _list_ruler = 0;
    BlockMesh _mesh;

    bool _ruler_mode = false;
    std::vector<wxPoint> _ruler_points;
    bool _hscale_default = true;
    bool _vscale_default = true;
    wxPoint _hscale_at;
    wxPoint _vscale_at;
    wxPoint _mouse;
    bool _shift = false;
    bool _control = false;
    bool _drag_left = false;
    bool _drag_right = false;
    bool _video = false;
    int _video_count = 0;
    double _create_seconds = 0.;

    static int _screenshot;

    wxDECLARE_EVENT_TABLE();
};
