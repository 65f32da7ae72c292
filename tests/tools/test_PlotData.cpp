#include "tools/PlotData.h"

#include "PlotSupport.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{
using testing_support::plot_differences;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

PlotSeries series(const std::string& name, int style, int colour, const std::vector<double>& x,
                  const std::vector<double>& y)
{
    PlotSeries s;
    s.name = name;
    s.style = style;
    s.colour = colour;
    s.x = x;
    s.y = y;
    return s;
}

PlotData vertical_curves()
{
    PlotData p;
    p.title = "Curves; with a separator";
    p.xLabel = "Elevation (m)";
    p.yLabel = "Proportion";
    p.keyVertical = true;
    p.valueMin = 0.;
    p.valueMax = 1.;
    // Keys of the series differ: each keeps only its own.
    p.series = {series("PB", PlotSeries::MP_LINE, 2, {-1.25, 0.75, 2.5}, {0.1, 1. / 3, 0.}),
                series("OB", PlotSeries::MP_LINE, 8, {0.75, 4.}, {2. / 3, 1e-7})};
    return p;
}

PlotData named_bars()
{
    PlotData p;
    p.title = "Bars";
    p.xLabel = "Well";
    p.yLabel = "Share";
    p.categories = {"W1", "All wells", "empty"};
    p.series = {series("Match", PlotSeries::MP_BARS, -1, {0., 1.}, {0.5, 0.25}),
                series("Sand", PlotSeries::MP_BARS, -1, {1.}, {1.})};
    return p;
}

PlotData map()
{
    PlotData p;
    p.kind = PlotData::MP_MAP;
    p.title = "Map";
    p.valueLabel = "Sand proportion";
    p.mapX = {0., 1., 2.};
    p.mapY = {5., 6.};
    p.values = {0., 0.5, 1e30, 1., 0.123456789012, 0.25};
    return p;
}
} // namespace

TEST(PlotData, TablesReadBackAsTheyWereWritten)
{
    TempDir dir;
    struct Case
    {
        std::string what;
        PlotData plot;
        std::vector<std::string> lines;
    };
    PlotData renamed = named_bars();
    renamed.title = "Bars; and more";
    const std::vector<Case> cases = {
        {"curves by elevation",
         vertical_curves(),
         {"x;PB;OB", "-1.25;0.1;", "0.75;0.333333333333;0.666666666667"}},
        {"named keys, one without a value",
         named_bars(),
         {"category;Match;Sand", "All wells;0.25;1", "empty;;"}},
        {"map with a missing value", map(), {"y\\x;0;1;2", "5;0;0.5;", "6;1;0.123456789012;0.25"}},
    };
    for (const Case& c : cases)
    {
        const std::string path = dir.file("plot.csv");
        std::string error;
        ASSERT_TRUE(c.plot.write_csv(path, error)) << error;
        const std::string text = read_file(path);
        for (const std::string& line : c.lines)
            EXPECT_NE(text.find("\n" + line + "\n"), std::string::npos) << c.what << ": " << line << "\n"
                                                                        << text;
        PlotData back;
        ASSERT_TRUE(PlotData::read_csv(path, back, error)) << c.what << ": " << error;
        PlotData expected = c.plot;
        // A title keeps its words, not its separators.
        std::replace(expected.title.begin(), expected.title.end(), ';', ',');
        EXPECT_EQ(plot_differences(back, expected), "") << c.what;
    }
}

TEST(PlotData, FailuresNameTheFileAndKeepTheOldOne)
{
    TempDir dir;
    std::string error;
    // No folder to write in.
    const std::string nowhere = dir.file("missing/plot.csv");
    EXPECT_FALSE(map().write_csv(nowhere, error));
    EXPECT_EQ(error, "Cannot open the table file " + nowhere);
    // A folder of that name stays as it was, with what it holds.
    const std::string folder = dir.file("folder");
    std::filesystem::create_directory(folder);
    write_file(folder + "/kept", "old");
    EXPECT_FALSE(map().write_csv(folder, error));
    EXPECT_EQ(error, "Cannot write the table file " + folder);
    EXPECT_EQ(read_file(folder + "/kept"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "a temporary is left";

    const std::vector<std::pair<std::string, std::string>> bad = {
        {"# kind;map\ny\\x;0;1\n5;0.5;x\n", "Bad line 3 in the table file "},
        {"# style;line\n# colour;1\nx;A\n1;2;3\n", "Bad line 4 in the table file "},
        {"# range;0\n", "Bad line 1 in the table file "},
    };
    for (const auto& b : bad)
    {
        const std::string path = dir.file("bad.csv");
        write_file(path, b.first);
        PlotData back;
        EXPECT_FALSE(PlotData::read_csv(path, back, error)) << b.first;
        EXPECT_EQ(error.rfind(b.second + path, 0), 0u) << error;
    }
    PlotData none;
    EXPECT_FALSE(PlotData::read_csv(dir.file("missing.csv"), none, error));
    EXPECT_EQ(error, "Cannot open the table file " + dir.file("missing.csv"));
}
