// The plot windows of the Compute tools on a virtual display: each tool's
// result drawn, saved as an image into the build tree for a look, and saved
// as a table that reads back the same.

#include "gui/PlotWindow.h"

#include "PlotSupport.h"
#include "TestSupport.h"
#include "tools/ComputeTools.h"
#include "tools/PlotPalette.h"

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/image.h>
#include <wx/init.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace
{
using testing_support::plot_differences;

// Where the images stay after the test, for a look.
std::string output_dir()
{
    const std::string dir = std::string(SARVO_GUI_OUTPUT) + "/plots";
    std::filesystem::create_directories(dir);
    return dir;
}

void settle()
{
    for (int k = 0; k < 5; ++k)
        wxTheApp->Yield(true);
}

bool has_colour(const wxImage& image, const PlotColour& colour)
{
    const unsigned char* p = image.GetData();
    const size_t n = static_cast<size_t>(image.GetWidth()) * static_cast<size_t>(image.GetHeight());
    for (size_t k = 0; k < n; ++k, p += 3)
        if (p[0] == colour.red && p[1] == colour.green && p[2] == colour.blue)
            return true;
    return false;
}

struct Tool
{
    std::string name;
    std::function<bool(const iSimulator&, PlotData&, std::string&)> compute;
};

std::vector<Tool> tools()
{
    using namespace std::placeholders;
    const double dz = ComputeTools::MP_DEFAULT_STEP;
    return {
        {"simulation_vpc", std::bind(ComputeTools::simulation_vpc, _1, dz, _2, _3)},
        {"simulation_pm", ComputeTools::simulation_pm},
        {"simulation_histo", std::bind(ComputeTools::simulation_histo, _1, dz, _2, _3)},
        {"simulation_histo_cumul", std::bind(ComputeTools::simulation_histo_cumul, _1, dz, _2, _3)},
        {"well_vpc", std::bind(ComputeTools::well_vpc, _1, dz, _2, _3)},
        {"well_histo", std::bind(ComputeTools::well_histo, _1, dz, _2, _3)},
        {"well_histo_cumul", std::bind(ComputeTools::well_histo_cumul, _1, dz, _2, _3)},
        {"conditioning_statistics", ComputeTools::conditioning_statistics},
    };
}
} // namespace

TEST(PlotWindow, EveryToolIsDrawnSavedAndReadBack)
{
    auto sim = testing_support::block_with_wells();
    ASSERT_NE(sim, nullptr) << testing_support::g_trace;
    const std::string dir = output_dir();
    for (const Tool& tool : tools())
    {
        PlotData data;
        std::string error;
        ASSERT_TRUE(tool.compute(*sim, data, error)) << tool.name << ": " << error;
        PlotWindow* window = new PlotWindow(nullptr, data);
        window->Show();
        settle();
        EXPECT_EQ(window->GetTitle(), wxString(data.title)) << tool.name;

        const std::string png = dir + "/" + tool.name + ".png";
        wxString message;
        ASSERT_TRUE(window->savePng(png, message)) << message;
        wxImage image;
        ASSERT_TRUE(image.LoadFile(png, wxBITMAP_TYPE_PNG)) << png;
        EXPECT_GE(image.GetWidth(), 400) << tool.name;
        // Something is drawn in each series' colour (a map's in its ramp's darkest).
        if (data.kind == PlotData::MP_MAP)
        {
            EXPECT_TRUE(has_colour(image, PlotPalette::ramp(0.))) << tool.name;
        }
        for (size_t rank = 0; rank < data.series.size(); ++rank)
            EXPECT_TRUE(
                has_colour(image, PlotPalette::series(data.series[rank].colour, static_cast<int>(rank))))
                << tool.name << ": " << data.series[rank].name;

        // At the smallest size the window allows, for a look at what crowds.
        window->SetSize(window->GetMinSize());
        settle();
        ASSERT_TRUE(window->savePng(dir + "/" + tool.name + "_small.png", message)) << message;

        const std::string csv = dir + "/" + tool.name + ".csv";
        ASSERT_TRUE(window->saveCsv(csv, message)) << message;
        PlotData back;
        ASSERT_TRUE(PlotData::read_csv(csv, back, error)) << error;
        EXPECT_EQ(plot_differences(back, data), "") << tool.name;
        window->Destroy();
        settle();
    }
}

TEST(PlotWindow, ShowPlotOpensAWindowAndSavingFailuresAreTold)
{
    PlotData data;
    data.title = "Nothing yet";
    const size_t before = wxTopLevelWindows.GetCount();
    show_plot(nullptr, data);
    settle();
    ASSERT_EQ(wxTopLevelWindows.GetCount(), before + 1);
    PlotWindow* window = dynamic_cast<PlotWindow*>(wxTopLevelWindows.GetLast()->GetData());
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->data().title, "Nothing yet");
    // An empty plot still draws its frame and saves.
    wxString message;
    EXPECT_TRUE(window->savePng(output_dir() + "/empty.png", message)) << message;
    const std::string nowhere = output_dir() + "/missing/plot";
    EXPECT_FALSE(window->savePng(nowhere + ".png", message));
    EXPECT_EQ(message, "Cannot save the image " + nowhere + ".png");
    EXPECT_FALSE(window->saveCsv(nowhere + ".csv", message));
    EXPECT_EQ(message, "Cannot open the table file " + nowhere + ".csv");
    window->Destroy();
    settle();
}

TEST(PlotWindow, LargeCellsOfAMapShowTheirValues)
{
    PlotData map;
    map.kind = PlotData::MP_MAP;
    map.title = "Small map";
    map.xLabel = "i (node)";
    map.yLabel = "j (node)";
    map.valueLabel = "Sand proportion";
    map.valueMin = 0.;
    map.valueMax = 1.;
    map.mapX = {0., 1., 2., 3., 4.};
    map.mapY = {0., 1., 2.};
    for (int k = 0; k < 15; ++k)
        map.values.push_back(k == 7 ? 1e30 : k / 14.);
    PlotWindow* window = new PlotWindow(nullptr, map);
    window->Show();
    settle();
    wxString message;
    const std::string png = output_dir() + "/small_map.png";
    ASSERT_TRUE(window->savePng(png, message)) << message;
    wxImage image;
    ASSERT_TRUE(image.LoadFile(png, wxBITMAP_TYPE_PNG));
    // Values are written white on the darkest cells.
    EXPECT_TRUE(has_colour(image, PlotPalette::ramp(1.)));
    window->Destroy();
    settle();
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // A GUI application object, so that wx opens the display.
    wxApp::SetInstance(new wxApp);
    if (!wxEntryStart(argc, argv))
    {
        std::cerr << "Cannot start wxWidgets (no display?)" << std::endl;
        return 1;
    }
    wxInitAllImageHandlers();
    const int status = RUN_ALL_TESTS();
    wxEntryCleanup();
    return status;
}
