// The writers of the block for other tools, on a hand-made block. Their files
// are read back by VTK's and OPM's own readers in the Python tests; here the
// file names, the counts behind the corner-point keywords and the refusals.

#include "kernel/files/GrdeclWriter.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/RegularBlockGrid.h"
#include "kernel/files/VtkWriter.h"
#include "kernel/geometry/RegularBlock.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <charconv>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

using namespace testing_support;

namespace
{
// 3 x 2 columns of 2 samples; the top sample of column (2, 1) is void.
RegularBlock small_block(double rotation)
{
    RegularBlock block;
    block.geometry = GridParams(10., 20., 0.5, 3, 2, 2, 0., 0., -1.);
    block.geometry.setRotation(rotation);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 2; ++j)
            for (int k = 0; k < 2; ++k)
            {
                const bool empty = i == 2 && j == 1 && k == 1;
                block.facies.push_back(empty ? RegularBlock::MP_VOID_FACIES
                                             : static_cast<unsigned char>((3 << 4) | (k == 0 ? 2 : 8)));
                block.grain.push_back(empty ? -1. : 0.25);
                block.age.push_back(empty ? 0u : static_cast<uint32_t>(10 * (k + 1)));
            }
    return block;
}

// Every number of each keyword of a GRDECL text, "n*v" runs expanded.
std::map<std::string, std::vector<double>> grdecl_values(const std::string& text)
{
    std::map<std::string, std::vector<double>> values;
    std::istringstream in(text);
    std::string token;
    std::string keyword;
    while (in >> token)
    {
        if (token == "--")
            std::getline(in, token);
        else if (token == "/")
            keyword.clear();
        else if (keyword.empty())
            keyword = token;
        else if (keyword != "GRIDUNIT" && token != "F")
        {
            const size_t star = token.find('*');
            const int count = star == std::string::npos ? 1 : std::stoi(token.substr(0, star));
            const double value = std::stod(star == std::string::npos ? token : token.substr(star + 1));
            values[keyword].insert(values[keyword].end(), static_cast<size_t>(count), value);
        }
    }
    return values;
}
} // namespace

TEST(BlockWriters, FileNamesCountsAndRefusals)
{
    TempDir dir;
    const RegularBlock flat = small_block(0.);
    const RegularBlock turned = small_block(30.);
    struct NameCase
    {
        const RegularBlock* block;
        std::string given;
        std::string expected;
    };
    for (const NameCase& c : std::vector<NameCase>{{&flat, "out/b.vti", "out/b.vti"},
                                                   {&flat, "out/b.vts", "out/b.vti"},
                                                   {&flat, "out.d/b", "out.d/b.vti"},
                                                   {&turned, "out/b.vtk", "out/b.vts"},
                                                   {&turned, "b", "b.vts"}})
        EXPECT_EQ(VtkWriter(*c.block).file_name(c.given), c.expected) << c.given;

    VtkWriter vtk(turned);
    EXPECT_FALSE(vtk.write(dir.file("missing/b.vts")));
    EXPECT_EQ(vtk.getError(), "Cannot write VTK file " + dir.file("missing/b.vts"));
    ASSERT_TRUE(vtk.write(dir.file("b.vts"))) << vtk.getError();
    EXPECT_NE(read_file(dir.file("b.vts")).find("<StructuredGrid WholeExtent=\"0 3 0 2 0 2\">"),
              std::string::npos);

    GrdeclWriter grdecl(turned);
    EXPECT_FALSE(grdecl.write(dir.file("missing/b.grdecl")));
    EXPECT_EQ(grdecl.getError(), "Cannot write GRDECL file " + dir.file("missing/b.grdecl"));
    for (const auto& [family, rock, valid] :
         std::vector<std::tuple<int, GrdeclWriter::Rock, bool>>{{8, {0.3, 10., 1.}, true},
                                                                {15, {0., 0., 0.}, true},
                                                                {16, {0.3, 10., 1.}, false},
                                                                {-1, {0.3, 10., 1.}, false},
                                                                {2, {1.2, 10., 1.}, false},
                                                                {2, {0.3, -1., 1.}, false}})
        EXPECT_EQ(grdecl.set_rock(family, rock), valid) << family;
    ASSERT_TRUE(grdecl.write(dir.file("b.grdecl"))) << grdecl.getError();
    auto values = grdecl_values(read_file(dir.file("b.grdecl")));
    EXPECT_EQ(values["SPECGRID"], (std::vector<double>{3, 2, 2, 1}));
    EXPECT_EQ(values["COORD"].size(), 6u * 4 * 3);
    EXPECT_EQ(values["ZCORN"].size(), 8u * 3 * 2 * 2);
    // Layers from the top: the void sample is the last cell of the first layer.
    std::vector<double> active(12, 1.);
    active[5] = 0.;
    EXPECT_EQ(values["ACTNUM"], active);
    EXPECT_EQ(values["ZCORN"].front(), 0.25) << "depth of the top, minus its elevation";
    EXPECT_EQ(values["ZCORN"].back(), 1.25);
    EXPECT_EQ(values["PORO"][0], 0.3) << "overbank (8) on top as set";
    EXPECT_EQ(values["PERMZ"][11], GrdeclWriter::default_rocks()[2].kv) << "point bar at the bottom";
    EXPECT_EQ(values["AGE"][5], -1.);
    EXPECT_EQ(values["FACIES"][0], 8.);

    // An export only: the grid reader still refuses the format.
    GridReal grid;
    EXPECT_EQ(GridReal::get_format(dir.file("b.grdecl")), GRID_FORMAT_GRDECL);
    EXPECT_FALSE(grid.read(dir.file("b.grdecl")));
    EXPECT_EQ(grid.getError(), "GRDECL grid format is not supported while reading files!");
}

TEST(BlockWriters, F2GLinesOfTheBlockValueByValue)
{
    // One column of samples whose grain sizes repeat, change sign only, or come back.
    const std::vector<double> grains = {0.25, 0.25, 0., -0., -0., 0., 1e6, 0.1, 0.25, -1.};
    const std::vector<uint32_t> ages = {0u, 7u, 999999u, 1000000u, 1234567u, 4294967295u, 3u, 3u, 17976u, 0u};
    RegularBlock block;
    block.geometry = GridParams(10., 10., 0.5, 1, 1, static_cast<int>(grains.size()), 0., 0., 0.);
    block.grain = grains;
    block.age = ages;
    for (size_t k = 0; k < grains.size(); ++k)
        block.facies.push_back(k + 1 == grains.size() ? RegularBlock::MP_VOID_FACIES
                                                      : static_cast<unsigned char>((k << 4) | k));
    TempDir dir;
    RegularBlockGrid grid(block, true, true, true, "-99");
    ASSERT_TRUE(grid.write(dir.file("b.f2g"), nullptr, GRID_FORMAT_F2G, "+Y +X +Z")) << grid.getError();
    const auto general_six = [](double value)
    {
        char buffer[64];
        return std::string(
            buffer, std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6).ptr);
    };
    std::string expected = "F2G_VALUES \n";
    for (size_t k = 0; k + 1 < grains.size(); ++k)
        expected += general_six(static_cast<double>(block.facies[k] & 15)) + ' ' + general_six(grains[k]) +
                    ' ' + general_six(ages[k]) + '\n';
    expected += "-99 -99 -99\n";
    const std::string text = read_file(dir.file("b.f2g"));
    EXPECT_EQ(text.substr(text.find("F2G_VALUES")), expected);
    EXPECT_NE(expected.find("3 -0 1e+06\n4 -0 1.23457e+06\n5 0 4.29497e+09\n"), std::string::npos);

    // Walked in any order, the lines are those of the same values in grids of doubles.
    const RegularBlock tall = small_block(0.);
    RegularBlockGrid from_block(tall, true, true, true, "-99");
    GridReal facies(tall.geometry), grain(tall.geometry), age(tall.geometry);
    for (GridReal* column : {&facies, &grain, &age})
        column->setUndefinedText("-99");
    for (int i = 0; i < tall.nx(); ++i)
        for (int j = 0; j < tall.ny(); ++j)
            for (int k = 0; k < tall.nz(); ++k)
                if (!tall.is_void(tall.index(i, j, k)))
                {
                    facies.set_at(i, j, k, tall.facies[tall.index(i, j, k)] & 15);
                    grain.set_at(i, j, k, tall.grain[tall.index(i, j, k)]);
                    age.set_at(i, j, k, tall.age[tall.index(i, j, k)]);
                }
    ASSERT_TRUE(facies.add_variable(&grain) && facies.add_variable(&age));
    for (const std::string order : {"+Y +X +Z", "-Y -X -Z", "+Z -Y +X", "-X +Z -Y"})
    {
        ASSERT_TRUE(from_block.write(dir.file("b.f2g"), nullptr, GRID_FORMAT_F2G, order));
        ASSERT_TRUE(facies.write(dir.file("g.f2g"), nullptr, GRID_FORMAT_F2G, order));
        const std::string block_text = read_file(dir.file("b.f2g"));
        const std::string grid_text = read_file(dir.file("g.f2g"));
        EXPECT_EQ(block_text.substr(block_text.find("F2G_VALUES")),
                  grid_text.substr(grid_text.find("F2G_VALUES")))
            << order;
    }
}
