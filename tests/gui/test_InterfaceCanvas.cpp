// The block view drawn on a virtual display and read back: what the views
// show must be what the stacks hold, and the keyboard must do what its help says.

#include "SimulatorSupport.h"
#include "gui/GraphicWindow.h"
#include "gui/InterfaceCanvas.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/network/Network.h"
#include "kernel/wells/Well.h"
#include "view/ColumnBoxes.h"

#include <gtest/gtest.h>
#include <wx/image.h>
#include <wx/wx.h>

#include <filesystem>
#include <memory>

using namespace testing_support;

namespace
{

// A seeded block of nx x ny nodes of 10 m after some iterations, with a
// well of point bar over overbank at (x, y) when `well` is set.
std::unique_ptr<Simulator> small_block(bool turbidite, int nx, int ny, unsigned int iterations,
                                       bool well = false)
{
    auto sim = simulator_on_grid(nx, ny);
    if (turbidite)
        sim->getParameters()->setUsingTurbi();
    sim->getParameters()->setParamInt("SIM_SEED", 165426111);
    const int status = sim->init(true);
    EXPECT_TRUE(status == MP_STATUS_OK || status == MP_STATUS_CONSISTENCY_WARNING) << g_trace;
    if (well)
    {
        Core core(300., 250., 0., "W1");
        core.add(2, 1.5);
        core.add(8, 0.5);
        EXPECT_TRUE(sim->addWell(core, "W1")) << g_trace;
    }
    EXPECT_EQ(sim->newSequence(), MP_STATUS_OK) << g_trace;
    EXPECT_EQ(sim->run(iterations), MP_STATUS_OK) << sim->getLastMessage();
    return sim;
}

// A window showing one view of a network.
struct View
{
    View(const Network* network, FaciesColorMap& colors, int width = 640, int height = 480)
    {
        window = new GraphicWindow(nullptr, network, &colors, "test view");
        window->SetClientSize(width, height);
        window->Show();
        for (int k = 0; k < 20 && !canvas()->IsShownOnScreen(); ++k)
            wxYield();
        wxYield();
        canvas()->render();
    }
    ~View() { window->Destroy(); }
    InterfaceCanvas* canvas() const { return window->canvas(); }

    // The colour of the drawn pixel at a point of the 2D view's world.
    ViewColor at(double wx, double wy)
    {
        if (rgb.empty())
        {
            EXPECT_TRUE(canvas()->readPixels(rgb, width, height));
        }
        int px = 0, py = 0;
        EXPECT_TRUE(canvas()->world_to_pixel(wx, wy, px, py)) << wx << ", " << wy;
        const size_t k = (static_cast<size_t>(py) * width + px) * 3;
        return ViewColor{rgb[k], rgb[k + 1], rgb[k + 2]};
    }
    void redraw() { rgb.clear(); }

    GraphicWindow* window;
    std::vector<unsigned char> rgb;
    int width = 0;
    int height = 0;
};

wxKeyEvent key(int code, bool shift = false, int unicode = WXK_NONE)
{
    wxKeyEvent event(wxEVT_KEY_DOWN);
    event.m_keyCode = code;
    event.m_uniChar = unicode != WXK_NONE ? unicode : (code < 127 ? code : WXK_NONE);
    event.m_shiftDown = shift;
    return event;
}

class InterfaceCanvasTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { sim = small_block(false, 60, 50, 150, true).release(); }
    static void TearDownTestSuite() { delete sim; }
    const Network* network() const { return sim->network(); }
    const Domain& domain() const { return *sim->domain(); }
    static Simulator* sim;
    FaciesColorMap colors;
};
Simulator* InterfaceCanvasTest::sim = nullptr;

} // namespace

TEST_F(InterfaceCanvasTest, AerialViewShowsTheTopOrTheSliceOfEachNode)
{
    View view(network(), colors);
    view.canvas()->setChannelReal(false);
    view.canvas()->setWellLabels(false);
    view.canvas()->setViewType(InterfaceCanvas::aerial);
    const Domain& dom = domain();
    double zmin, zmax;
    dom.min_and_max_elevation_geo(zmin, zmax);
    for (double slice : {1e30, 0.5 * (zmin + zmax)})
    {
        view.canvas()->setSliceElevation(slice);
        view.redraw();
        int checked = 0;
        for (int j = 2; j < dom.getNy(); j += 5)
            for (int i = 1; i < dom.getNx(); i += 4)
            {
                Facies facies;
                uint32_t age = 0;
                if (slice < 1e29)
                    dom.getObject(i, j).slice_info(slice, facies, age);
                else
                    ColumnBoxes::top_info(dom.getObject(i, j), facies, age);
                EXPECT_EQ(view.at(i * dom.getDx(), j * dom.getDy()).hex(),
                          colors.facies_color(facies, age, 0).hex())
                    << "node " << i << ", " << j << " slice " << slice;
                ++checked;
            }
        EXPECT_GT(checked, 100);
    }
}

TEST_F(InterfaceCanvasTest, SectionsShowTheStacksBaseToTop)
{
    View view(network(), colors);
    view.canvas()->setChannelReal(false);
    view.canvas()->setUpperLimit(false);
    view.canvas()->setWellLabels(false);
    view.canvas()->zscale_2D().value(200.);
    const Domain& dom = domain();
    for (int type : {InterfaceCanvas::x_section, InterfaceCanvas::y_section})
    {
        view.canvas()->setViewType(type);
        view.redraw();
        const bool along_y = type == InterfaceCanvas::x_section;
        const int index = along_y ? view.canvas()->x_section_position().value()
                                  : view.canvas()->y_section_position().value();
        int boxes_checked = 0;
        for (int k = 1; k < (along_y ? dom.getNy() : dom.getNx()); k += 3)
        {
            const DepositionSet& set = along_y ? dom.getObject(index, k) : dom.getObject(k, index);
            std::vector<ColumnBox> boxes;
            ColumnBoxes::append(set, colors, 0, boxes);
            const double h = k * (along_y ? dom.getDy() : dom.getDx());
            for (const ColumnBox& box : boxes)
            {
                int p0 = 0, p1 = 0, unused = 0;
                view.canvas()->world_to_pixel(h, view.canvas()->section_world_z(box.zbot), unused, p0);
                view.canvas()->world_to_pixel(h, view.canvas()->section_world_z(box.ztop), unused, p1);
                if (p1 - p0 < 3)
                    continue;
                const double mid = view.canvas()->section_world_z(0.5 * (box.zbot + box.ztop));
                EXPECT_EQ(view.at(h, mid).hex(), box.color.hex())
                    << (along_y ? "x" : "y") << " section, column " << k << ", box " << box.zbot << "-"
                    << box.ztop;
                ++boxes_checked;
            }
        }
        EXPECT_GT(boxes_checked, 10);
    }
}

TEST_F(InterfaceCanvasTest, SectionsShowTheInterpretedFaciesOfTheirWells)
{
    const Domain& dom = domain();
    int wi = -1, wj = -1;
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
            if (dom.getObject(i, j).well() != nullptr)
                wi = i, wj = j;
    ASSERT_GE(wi, 0) << "the well W1 stands on no column";
    const Well& well = dynamic_cast<const Well&>(*dom.getObject(wi, wj).well());
    ASSERT_EQ(well.units().size(), 2u);
    View view(network(), colors);
    view.canvas()->setChannelReal(false);
    view.canvas()->zscale_2D().value(200.);
    view.canvas()->x_section_position().value(wi);
    view.canvas()->setViewType(InterfaceCanvas::x_section);
    double z = well.get_zbot();
    for (const WellUnit& unit : well.units())
    {
        const double mid = view.canvas()->section_world_z(z + 0.5 * unit.thickness());
        EXPECT_EQ(view.at((wj + 1.2) * dom.getDy(), mid).hex(),
                  colors.facies_color(unit.facies(), 0, 0).hex())
            << unit.facies().debug() << " at " << z;
        z += unit.thickness();
    }
    view.canvas()->setRealWellFacies(false);
    view.redraw();
    EXPECT_NE(view.at((wj + 1.2) * dom.getDy(), view.canvas()->section_world_z(z - 0.2)).hex(),
              colors.facies_color(well.units().back().facies(), 0, 0).hex())
        << "'n' hides the interpreted facies";
}

TEST_F(InterfaceCanvasTest, PerspectiveDrawsOnlyTheVisibleFacesOfTheBlock)
{
    View view(network(), colors);
    view.canvas()->setViewType(InterfaceCanvas::topo);
    std::vector<unsigned char> rgb;
    int w = 0, h = 0;
    ASSERT_TRUE(view.canvas()->readPixels(rgb, w, h));
    size_t drawn = 0;
    for (size_t k = 0; k < rgb.size(); k += 3)
        drawn += rgb[k] != 255 || rgb[k + 1] != 255 || rgb[k + 2] != 255;
    EXPECT_GT(drawn, rgb.size() / 3 / 5) << "the block should cover a fifth of the view";
    // Toggles and camera moves reuse the block; a new coding, new colours or a
    // changed model rebuild it.
    InterfaceCanvas& c = *view.canvas();
    const unsigned int builds = c.block_builds();
    c.setChannelReal(false);
    c.setCube(false);
    c.setViewType(InterfaceCanvas::aerial);
    c.setViewType(InterfaceCanvas::topo);
    c.run_command(ViewCommand::TURN_LEFT);
    EXPECT_EQ(c.block_builds(), builds);
    c.setColorsCoding(4);
    EXPECT_EQ(c.block_builds(), builds + 1);
    colors.setColor(2, ViewColor{1, 2, 3});
    c.create_all();
    EXPECT_EQ(c.block_builds(), builds + 2);
    view.window->refresh(true);
    EXPECT_EQ(c.block_builds(), builds + 3);
    c.setView3DBlock(false);
    c.setView3DBlock(true);
    EXPECT_EQ(c.block_builds(), builds + 3);
    const BlockMesh& mesh = view.canvas()->block_mesh();
    // Every column has a top; most inner sides and all bottoms but the lowest are hidden.
    EXPECT_GE(mesh.quad_count(), static_cast<size_t>(domain().getNx() * domain().getNy()));
    EXPECT_LT(mesh.quad_count(), 6 * mesh.box_count());
}

TEST_F(InterfaceCanvasTest, KeysAndCodingsFollowTheirRules)
{
    View view(network(), colors);
    InterfaceCanvas& c = *view.canvas();
    auto press = [&c](wxKeyEvent event) { c.on_key(event); };

    // Coding 5 is for the aerial view only: a section keeps its coding.
    c.setViewType(InterfaceCanvas::x_section);
    c.setColorsCoding(2);
    c.setColorsCoding(5);
    EXPECT_EQ(c.getColorsCoding(), 2);
    c.setViewType(InterfaceCanvas::aerial);
    c.setColorsCoding(5);
    EXPECT_EQ(c.getColorsCoding(), 5);
    press(key('F'));
    EXPECT_EQ(c.getColorsCoding(), 0);
    press(key('G', true));
    EXPECT_EQ(c.getColorsCoding(), 2);

    // 'z' does nothing from above; in a section it lowers the 2D exaggeration.
    const double z2 = c.zscale_2D().value(), z3 = c.zscale_3D().value();
    press(key('Z'));
    EXPECT_EQ(c.zscale_2D().value(), z2);
    EXPECT_EQ(c.zscale_3D().value(), z3);
    press(key('X'));
    EXPECT_EQ(c.getViewType(), InterfaceCanvas::x_section);
    press(key('Z'));
    EXPECT_EQ(c.zscale_2D().value(), z2 - 1.);
    press(key('Z', true));
    EXPECT_EQ(c.zscale_2D().value(), z2);

    // In perspective: the exaggeration stops at its maximum, the heading turns round.
    press(key('D'));
    EXPECT_EQ(c.getViewType(), InterfaceCanvas::topo);
    c.zscale_3D().value(c.zscale_3D().max());
    press(key('Z', true));
    EXPECT_EQ(c.zscale_3D().value(), c.zscale_3D().max());
    c.rotation_z().value(358.);
    press(key(WXK_NUMPAD9));
    EXPECT_DOUBLE_EQ(c.rotation_z().value(), 3.);

    // The keypad navigates; the main keyboard's digits are unknown keys.
    const double x = c.camera_x(), y = c.camera_y();
    clear_trace();
    press(key('8'));
    EXPECT_EQ(c.camera_x(), x);
    EXPECT_EQ(c.camera_y(), y);
    EXPECT_TRUE(contains(g_trace, "This key is not defined. Press 'h' key for help.")) << g_trace;
    press(key(WXK_NUMPAD8));
    EXPECT_TRUE(c.camera_x() != x || c.camera_y() != y);
    press(key(WXK_NUMPAD0));
    EXPECT_EQ(c.camera_x(), 0.);

    // Modifiers alone say nothing; an unknown key warns; 'h' prints the help.
    clear_trace();
    for (int modifier : {WXK_SHIFT, WXK_CONTROL, WXK_ALT, WXK_CAPITAL, WXK_NUMLOCK, WXK_WINDOWS_LEFT})
        press(key(modifier));
    EXPECT_EQ(g_trace, "");
    press(key(WXK_F5));
    EXPECT_TRUE(contains(g_trace, "This key is not defined.")) << g_trace;
    clear_trace();
    press(key('H'));
    EXPECT_TRUE(contains(g_trace, "List of keyboard shortcuts for graphic windows")) << g_trace;
    EXPECT_TRUE(contains(g_trace, "    Arrows : Move the cursor location")) << g_trace;

    // The arrows move the cursors within their bounds and show them.
    press(key('A'));
    c.x_section_position().value(c.x_section_position().max());
    press(key(WXK_RIGHT));
    EXPECT_EQ(c.x_section_position().value(), c.x_section_position().max());
    const int y_cursor = c.y_section_position().value();
    press(key(WXK_DOWN));
    EXPECT_EQ(c.y_section_position().value(), y_cursor - 1);
    press(key('_', false, '_'));
    EXPECT_TRUE(c.ruler());
    press(key(WXK_ESCAPE));
    EXPECT_FALSE(c.ruler());
}

TEST_F(InterfaceCanvasTest, ANewWindowOpensWithTheViewOfTheLastOneClosed)
{
    std::string state;
    {
        View view(network(), colors);
        view.canvas()->setViewType(InterfaceCanvas::y_section);
        view.canvas()->zscale_2D().value(123.);
        view.canvas()->y_section_position().value(7);
        view.canvas()->setColorsCoding(4);
        state = view.window->saveState();
        view.window->Close(true);
        view.window = new GraphicWindow(nullptr, network(), &colors, "closed");
    }
    View view(network(), colors);
    EXPECT_EQ(view.window->saveState(), state);
    EXPECT_EQ(view.canvas()->getViewType(), InterfaceCanvas::y_section);
    EXPECT_EQ(view.canvas()->zscale_2D().value(), 123.);
    EXPECT_EQ(view.canvas()->y_section_position().value(), 7);
    EXPECT_EQ(view.canvas()->getColorsCoding(), 4);
    view.canvas()->loadState("view_type=3\nzscale_2D=not a number\n");
    EXPECT_EQ(view.canvas()->getViewType(), InterfaceCanvas::topo);
    EXPECT_EQ(view.canvas()->zscale_2D().value(), 123.) << "a bad field keeps its value";
}

TEST_F(InterfaceCanvasTest, SnapshotsVideoAndTraceDumps)
{
    View view(network(), colors, 500, 400);
    InterfaceCanvas& c = *view.canvas();
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "sarvo_test_canvas";
    std::filesystem::create_directories(dir);
    const wxString first = c.snapshot_name();
    const wxString second = c.snapshot_name();
    EXPECT_EQ(second, wxString::Format("image%03i.tif", InterfaceCanvas::screenshotCount()));
    EXPECT_NE(first, second);
    const wxString path = (dir / second.ToStdString()).string();
    ASSERT_TRUE(c.printScreen(path));
    wxImage image;
    ASSERT_TRUE(image.LoadFile(path, wxBITMAP_TYPE_TIFF));
    EXPECT_EQ(image.GetWidth(), c.GetClientSize().x);
    EXPECT_EQ(image.GetHeight(), c.GetClientSize().y);

    const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::current_path(dir);
    c.on_key(*std::make_unique<wxKeyEvent>(key('O')));
    EXPECT_TRUE(c.video());
    c.render();
    c.render();
    std::filesystem::current_path(here);
    EXPECT_TRUE(std::filesystem::exists(dir / "shot_test view_000.tif"));
    EXPECT_TRUE(std::filesystem::exists(dir / "shot_test view_001.tif"));
    c.on_key(*std::make_unique<wxKeyEvent>(key('O')));

    c.setViewType(InterfaceCanvas::aerial);
    sim->getTracer()->setTraceLevel(TRACE_DEBUG);
    clear_trace();
    c.trace("probe");
    sim->getTracer()->setTraceLevel(TRACE_INFO);
    EXPECT_TRUE(contains(g_trace, "  Interface Canvas dumped (probe (new +CL2D):")) << g_trace;
    EXPECT_TRUE(contains(g_trace, "    _view_channel_real=1")) << g_trace;
    EXPECT_TRUE(contains(g_trace, "    _view_type=0")) << g_trace;
    std::filesystem::remove_all(dir);
}

// Pictures of every view of a fluvial and a turbiditic run, for the eye:
// written into the build tree (block_view_*.png).
TEST(InterfaceCanvasPictures, EveryViewOfAFluvialAndATurbiditicRun)
{
    for (bool turbidite : {false, true})
    {
        std::unique_ptr<Simulator> sim = small_block(turbidite, 251, 201, turbidite ? 600 : 2500);
        FaciesColorMap colors;
        View view(sim->network(), colors, 1000, 750);
        const std::string name = turbidite ? "turbidite" : "fluvial";
        const std::pair<int, const char*> views[] = {{InterfaceCanvas::aerial, "aerial"},
                                                     {InterfaceCanvas::x_section, "x_section"},
                                                     {InterfaceCanvas::y_section, "y_section"},
                                                     {InterfaceCanvas::topo, "perspective"}};
        // The view state left by the last window keeps this block's bounds.
        EXPECT_EQ(view.canvas()->x_section_position().max(), 250);
        EXPECT_EQ(view.canvas()->y_section_position().max(), 200);
        view.canvas()->setColorsCoding(0);
        for (const auto& v : views)
        {
            view.canvas()->setViewType(v.first);
            const std::string file = "block_view_" + name + "_" + v.second + ".png";
            EXPECT_TRUE(view.canvas()->printScreen(file)) << file;
            EXPECT_TRUE(std::filesystem::exists(file)) << file;
        }
    }
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    wxApp::SetInstance(new wxApp());
    // wxWidgets is given the program's name only: the other options are not its own.
    int wx_argc = 1;
    if (!wxEntryStart(wx_argc, argv))
    {
        std::fprintf(stderr, "Cannot start wxWidgets (is there a display?)\n");
        return 1;
    }
    wxTheApp->CallOnInit();
    wxInitAllImageHandlers();
    const int status = RUN_ALL_TESTS();
    wxEntryCleanup();
    return status;
}
