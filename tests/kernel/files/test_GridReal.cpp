#include "kernel/common/Tracer.h"
#include "kernel/files/EMap.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"

#include "TestSupport.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using testing_support::assertion_text;
using testing_support::edited;
using testing_support::is_assertion_of;
using testing_support::read_file;
using testing_support::replaced;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

// Keeps what the kernel says and answers progress calls until told to stop.
class RecordingTracer : public Tracer
{
public:
    void trace(const std::string& text, TraceLevel level) override { lines.push_back({text, level}); }
    bool progress(int n) override
    {
        calls.push_back(n);
        return static_cast<int>(calls.size()) <= allowed_calls;
    }
    struct Line
    {
        std::string text;
        TraceLevel level;
    };
    std::vector<Line> lines;
    std::vector<int> calls;
    int allowed_calls = 1 << 30;
};

// A value told apart for every node, exactly representable with six digits.
double node_value(int i, int j, int k)
{
    return 100. * k + 10. * j + i + 0.5;
}

GridReal with_node_values(GridReal grid)
{
    for (int k = 0; k < grid.getNz(); ++k)
        for (int j = 0; j < grid.getNy(); ++j)
            for (int i = 0; i < grid.getNx(); ++i)
                grid.set_at(i, j, k, node_value(i, j, k));
    return grid;
}

GridReal make_grid_2d(int nx, int ny)
{
    GridReal grid(10., 20., nx, ny, 1.5, -2.5);
    grid.setLocation(Point3D(1000., 2000., 55.));
    grid.setRotation(30.);
    return with_node_values(grid);
}

GridReal make_grid_3d(int nx, int ny, int nz)
{
    GridReal grid(10., 20., 2.5, nx, ny, nz, 1.5, -2.5, 7.);
    grid.setLocation(Point3D(1000., 2000., 55.));
    grid.setRotation(-15.);
    return with_node_values(grid);
}

// The value of a node, of the first layer when no layer is given; a node that cannot be read fails the test.
double value_at(const GridReal& grid, int i, int j, int k = -1)
{
    double value = 0.;
    const bool read = k < 0 ? grid.get_at(i, j, value) : grid.get_at(i, j, k, value);
    if (!read)
        ADD_FAILURE() << "cannot read node " << i << "," << j << "," << k << ": " << grid.getError();
    return value;
}

void expect_same_values(const GridReal& a, const GridReal& b, const std::string& context)
{
    ASSERT_EQ(a.getNx(), b.getNx()) << context;
    ASSERT_EQ(a.getNy(), b.getNy()) << context;
    ASSERT_EQ(a.getNz(), b.getNz()) << context;
    for (int k = 0; k < a.getNz(); ++k)
        for (int j = 0; j < a.getNy(); ++j)
            for (int i = 0; i < a.getNx(); ++i)
            {
                double va = 0., vb = 0.;
                ASSERT_TRUE(a.get_at(i, j, k, va));
                ASSERT_TRUE(b.get_at(i, j, k, vb));
                ASSERT_EQ(va, vb) << context << " at " << i << "," << j << "," << k;
            }
}

// Every order string: six permutations of the axes times eight sign choices.
std::vector<std::string> all_orders()
{
    const char* perms[6][3] = {{"X", "Y", "Z"}, {"X", "Z", "Y"}, {"Y", "X", "Z"},
                               {"Y", "Z", "X"}, {"Z", "X", "Y"}, {"Z", "Y", "X"}};
    std::vector<std::string> orders;
    for (const auto& p : perms)
        for (int signs = 0; signs < 8; ++signs)
        {
            std::string order;
            for (int t = 0; t < 3; ++t)
                order += std::string(t ? " " : "") + ((signs >> t) & 1 ? "-" : "+") + p[t];
            orders.push_back(order);
        }
    return orders;
}

const char* const VALID_F2G_2D = "F2G_DIM 2\n"
                                 "F2G_VERSION 1\n"
                                 "F2G_LOCATION 100 200 0\n"
                                 "F2G_ROTATION 30\n"
                                 "F2G_ORIGIN 0 0\n"
                                 "F2G_NB_NODES 3 2\n"
                                 "F2G_LAGS 10 20\n"
                                 "F2G_ORDER +Y +X +Z\n"
                                 "F2G_NB_VARIABLES 1\n"
                                 "F2G_VARIABLE_1 Var\n"
                                 "F2G_UNDEFINED_1 NA\n"
                                 "F2G_VALUES \n"
                                 "1\n2\n3\n4\n5\n6\n";

// A header edit and the exact message the reader refuses the edited file with.
struct Refusal
{
    std::string from, to, message;
};

void expect_refusals(const std::string& path, const std::string& base, const std::vector<Refusal>& cases,
                     const std::function<bool(GridReal&)>& read)
{
    for (const Refusal& c : cases)
    {
        SCOPED_TRACE(c.from + " -> " + c.to);
        write_file(path, replaced(base, c.from, c.to));
        GridReal grid;
        EXPECT_FALSE(read(grid));
        EXPECT_EQ(grid.getError(), c.message);
    }
}

// The number writer of the grid files, reached from outside.
struct NumberWriter : GridReal
{
    static std::string text_of(double value)
    {
        std::string text = "<";
        append_number(text, value);
        return text.substr(1);
    }
};

// The text of six significant digits in the general form, straight from the standard library.
std::string general_six(double value)
{
    char buffer[64];
    return std::string(
        buffer, std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6).ptr);
}

} // namespace

TEST(GridReal, NodesExtremesAndUndefined)
{
    GridReal grid(1., 1., 1., 3, 2, 2, 0., 0., 0.);
    EXPECT_TRUE(grid.is3D());
    ASSERT_EQ(grid.getValues().size(), 12u);
    for (double v : grid.getValues())
        EXPECT_EQ(v, 1e30);
    EXPECT_EQ(grid.getName(), "Var");
    EXPECT_EQ(grid.getUndefinedText(), "NA");
    EXPECT_EQ(grid.getUndefinedValue(), 1e30);
    EXPECT_FALSE(grid.has_values());
    int i = 0, j = 0;
    EXPECT_EQ(grid.get_min(i, j), 1e30);
    EXPECT_EQ(i, 2147483647);
    EXPECT_EQ(grid.get_max(i, j), -1e30);
    EXPECT_EQ(j, 2147483647);
    EXPECT_TRUE(std::isnan(grid.get_mean()));

    // A column write reaches every layer; node (i, j, k) sits at (k * ny + j) * nx + i.
    ASSERT_TRUE(grid.set_at(2, 1, 4.));
    EXPECT_EQ(grid.getValues()[(0 * 2 + 1) * 3 + 2], 4.);
    EXPECT_EQ(grid.getValues()[(1 * 2 + 1) * 3 + 2], 4.);
    ASSERT_TRUE(grid.set_at(1, 0, 1, -3.));
    EXPECT_EQ(grid.getValues()[(1 * 2 + 0) * 3 + 1], -3.);
    std::vector<double> column;
    ASSERT_TRUE(grid.get_at(1, 0, column));
    EXPECT_EQ(column, (std::vector<double>{1e30, -3.}));
    EXPECT_EQ(grid.get_min(i, j), -3.);
    EXPECT_EQ(i, 1);
    EXPECT_EQ(j, 0);
    EXPECT_EQ(grid.get_max(i, j), 4.);
    EXPECT_EQ(i, 2);
    EXPECT_EQ(j, 1);

    // Extremes only widen: overwriting the minimum leaves it in place.
    ASSERT_TRUE(grid.set_at(1, 0, 1, 0.));
    EXPECT_EQ(grid.get_min(i, j), -3.);
    EXPECT_DOUBLE_EQ(grid.get_mean(), (4. + 4. + 0.) / 3.);
    EXPECT_EQ(grid.get_nb_positive(), 2);
    EXPECT_EQ(grid.get_nb_negative(), 0);

    // Beyond the bounds: clamped, and a value above 1e30 becomes undefined.
    ASSERT_TRUE(grid.set_at(0, 0, 0, 5e30));
    double value = 0.;
    EXPECT_EQ(value_at(grid, 0, 0, 0), 1e30);
    ASSERT_TRUE(grid.set_at(0, 1, 0, -7e31));
    EXPECT_EQ(value_at(grid, 0, 1, 0), -1e30);
    EXPECT_EQ(grid.get_min(i, j), -1e30);
    double big = 2e30;
    EXPECT_FALSE(grid.check(big, false));
    EXPECT_EQ(big, 2e30);
    EXPECT_TRUE(grid.check(big, true));
    EXPECT_EQ(big, 1e30);

    EXPECT_FALSE(grid.set_at(3, 0, 1.));
    EXPECT_EQ(grid.getError(), "Indexes [3,0] out of range [3,2]");
    EXPECT_FALSE(grid.set_at(0, 0, 2, 1.));
    EXPECT_EQ(grid.getError(), "Indexes [0,0,2] out of range [3,2,2]");
    EXPECT_FALSE(grid.get_at(-1, 0, value));
    EXPECT_EQ(grid.getError(), "Indexes [-1,0] out of range [3,2]");

    // add() touches undefined nodes too (1e30 + 1 is 1e30) and not the extremes.
    grid.add(10.);
    EXPECT_EQ(value_at(grid, 2, 1, 0), 14.);
    EXPECT_EQ(value_at(grid, 0, 0, 1), 1e30);
    EXPECT_EQ(grid.get_max(i, j), 4.);

    GridReal extra(grid);
    ASSERT_TRUE(grid.add_variable(&extra));
    EXPECT_FALSE(grid.add_variable(nullptr));
    GridReal other(2., 1., 1., 3, 2, 2, 0., 0., 0.);
    EXPECT_FALSE(grid.add_variable(&other));
    grid.setName("Depth");
    grid.reset(1., 1., 4, 4);
    EXPECT_EQ(extra.getNx(), 4);
    EXPECT_FALSE(extra.has_values());
    EXPECT_EQ(grid.get_min(i, j), 1e30);
    EXPECT_EQ(grid.getName(), "Depth");
    grid.setError("old");
    grid.clear();
    EXPECT_EQ(grid.getName(), "Var");
    EXPECT_EQ(grid.getError(), "");
    EXPECT_TRUE(grid.getVariables().empty());
    EXPECT_TRUE(grid.getValues().empty());
    EXPECT_TRUE(extra.getValues().empty());
}

TEST(GridReal, ArraysInTheirOrders)
{
    GridReal grid(1., 1., 1., 2, 3, 4, 0., 0., 0.);
    const int n = 2 * 3 * 4;
    std::vector<double> yxz(n), zyx(n);
    for (int k = 0; k < 4; ++k)
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 3; ++j)
                yxz[(k * 2 + i) * 3 + j] = node_value(i, j, k);
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 4; ++k)
                zyx[(i * 3 + j) * 4 + k] = node_value(i, j, k);
    grid.fill_yxz(n, yxz.data());
    for (int k = 0; k < 4; ++k)
        for (int j = 0; j < 3; ++j)
            for (int i = 0; i < 2; ++i)
            {
                EXPECT_EQ(value_at(grid, i, j, k), node_value(i, j, k));
            }
    EXPECT_EQ(grid.get_values_zyx(), zyx);
    GridReal copy(1., 1., 1., 2, 3, 4, 0., 0., 0.);
    copy.fill_zyx(n, zyx.data());
    expect_same_values(grid, copy, "fill_zyx");

    const std::string text = assertion_text([&] { grid.fill_yxz(n - 1, yxz.data()); });
    EXPECT_TRUE(is_assertion_of(text, "size == _nx * _ny * _nz")) << text;
    EXPECT_NE(text.find("src/kernel/files/GridReal"), std::string::npos) << text;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { grid.fill_zyx(n + 1, zyx.data()); }),
                                "size == _nx * _ny * _nz"));

    // Rows: nx is the number of rows, ny the length of a row.
    GridReal rows({{1., 2., 3.}, {4., 5., 6.}});
    EXPECT_EQ(rows.getNx(), 2);
    EXPECT_EQ(rows.getNy(), 3);
    EXPECT_EQ(rows.getNz(), 1);
    EXPECT_EQ(value_at(rows, 1, 2), 6.);
    EXPECT_EQ(rows.getError(), "");
    GridReal ragged({{1., 2.}, {3.}});
    EXPECT_EQ(ragged.getError(), "Wrong 2D array size");
    EXPECT_FALSE(rows.fill_2D({{1.}, {2., 3.}}));
    EXPECT_EQ(rows.getError(), "Wrong 2D array size");

    ASSERT_TRUE(rows.fill(-2.));
    EXPECT_EQ(rows.get_nb_negative(), 6);
    EXPECT_EQ(rows.get_mean(), -2.);
}

TEST(GridReal, OrderStringsAndLabels)
{
    std::string o1, o2, o3;
    EXPECT_TRUE(GridReal::is_order_valid("  +y -X +z \r\n", o1, o2, o3));
    EXPECT_EQ(o1, "+y");
    EXPECT_EQ(o2, "-X");
    EXPECT_EQ(o3, "+z");
    for (const std::string& order : all_orders())
        EXPECT_TRUE(GridReal::is_order_valid(order)) << order;
    for (const char* bad : {"+Y +X", "+Y +Y +Z", "Y +X +Z", "+YX +X +Z", "*Y +X +Z", "+Y +X +W", "",
                            "+Y  +X +Z", "+Y\t+X\t+Z", "+Y +X +Z +X"})
        EXPECT_FALSE(GridReal::is_order_valid(bad)) << bad;
    EXPECT_TRUE(GridReal::is_order_valid("-z", "+X", "-y"));
    EXPECT_FALSE(GridReal::is_order_valid("+X", "+X", "+Z"));

    EXPECT_EQ(GridReal::get_format_label(0), "F2G");
    EXPECT_EQ(GridReal::get_format_label(1), "GSLIB");
    EXPECT_EQ(GridReal::get_format_label(2), "CPS-3");
    EXPECT_EQ(GridReal::get_format_label(3), "GRDECL");
    EXPECT_EQ(GridReal::get_format_label(4), "UNDEFINED");
    EXPECT_EQ(GridReal::get_format_label(-1), "UNDEFINED");
    EXPECT_EQ(GridReal::get_default_order(GRID_FORMAT_F2G), "+Y +X +Z");
    EXPECT_EQ(GridReal::get_default_order(GRID_FORMAT_GSLIB), "+X +Y +Z");
}

TEST(GridReal, FormatDetection)
{
    TempDir dir;
    const auto format_of = [&](const std::string& content)
    {
        write_file(dir.file("g.txt"), content);
        return GridReal::get_format(dir.file("g.txt"));
    };
    EXPECT_EQ(GridReal::get_format(dir.file("absent.txt")), -1);
    EXPECT_EQ(format_of("F2G_DIM 2\n"), 0);
    EXPECT_EQ(format_of("title\n1\nVar\n1.5\n"), 1);
    EXPECT_EQ(format_of("# head\nFSASCI 0 1 COMPUTED 0 1e30\n"), 2);
    EXPECT_EQ(format_of("SPECGRID\n 10 10 1 1 F /\n"), 3);
    EXPECT_EQ(format_of("1.5\n2.5\n"), -2);
    EXPECT_EQ(format_of("# comment first\n\n0.5 text\n"), -2);
    EXPECT_EQ(format_of("title\n1 2\n"), -1);
    EXPECT_EQ(format_of("title\nVar\n"), -1);
    EXPECT_EQ(format_of("   \n\t\n"), -1);
    // Keyword searches win over the data-line rules, FSASCI over F2G_DIM.
    EXPECT_EQ(format_of("1\n2\n3\nF2G_DIM 2\n"), 0);
    EXPECT_EQ(format_of("F2G_DIM 2\nFSASCI 0 1 COMPUTED 0\n"), 2);
    EXPECT_EQ(format_of("title\n1\nF2G_DIMENSION 3\n"), 0);

    // Unrecognised: read fails and keeps the last error.
    GridReal grid;
    write_file(dir.file("blank.txt"), "  \n\n");
    EXPECT_FALSE(grid.read(dir.file("blank.txt")));
    EXPECT_EQ(grid.getError(), "");
    grid.setError("before");
    EXPECT_FALSE(grid.read(dir.file("absent.txt")));
    EXPECT_EQ(grid.getError(), "before");
    write_file(dir.file("grdecl.txt"), "SPECGRID\n 3 2 1 1 F /\n");
    EXPECT_FALSE(grid.read(dir.file("grdecl.txt")));
    EXPECT_EQ(grid.getError(), "GRDECL grid format is not supported while reading files!");
}

TEST(GridReal, F2GRoundTripsInEveryOrder)
{
    TempDir dir;
    RecordingTracer tracer;
    GridReal grid2 = make_grid_2d(4, 3);
    grid2.set_at(2, 1, 1e30);
    GridReal grid3 = make_grid_3d(3, 4, 2);
    grid3.set_at(1, 2, 1, 1e30);
    for (const std::string& order : all_orders())
        for (const GridReal* source : {&grid2, &grid3})
        {
            const std::string path = dir.file("grid.f2g");
            GridReal copy = *source;
            ASSERT_TRUE(copy.write(path, &tracer, GRID_FORMAT_F2G, order)) << copy.getError();
            EXPECT_EQ(GridReal::get_format(path), 0);
            GridReal back;
            back.setName("Kept");
            ASSERT_TRUE(back.read(path)) << order << ": " << back.getError();
            expect_same_values(*source, back, order);
            EXPECT_EQ(back.getName(), "Kept");
            EXPECT_EQ(back.is3D(), source->is3D());
            EXPECT_TRUE(back.isCompatibleWith(*source, true, true)) << order;
            EXPECT_EQ(back.getRotation(), source->getRotation());
            // A 2D file keeps the location's x and y, not its elevation.
            EXPECT_EQ(back.getLocation().get_elevation(), source->is3D() ? 55. : 0.);
            int i = 0, j = 0;
            EXPECT_EQ(back.get_max(i, j), source->get_max(i, j));
        }
}

TEST(GridReal, F2GFileContentAndItsAsymmetries)
{
    TempDir dir;
    const std::string path = dir.file("grid.f2g");
    GridReal grid(10., 20., 2, 2, 1.5, -2.5);
    grid.setLocation(Point3D(1000., 2000., 55.));
    grid.setRotation(30.);
    grid.setName("Depth");
    grid.fill_2D({{1.23456789, -2.}, {1e30, 123456789.}});
    GridReal second(grid);
    second.setName("Second");
    second.setUndefinedText("-999");
    second.fill(7.);
    second.set_at(0, 1, 1e30);
    ASSERT_TRUE(grid.add_variable(&second));
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_F2G, "-y +X +Z"));
    EXPECT_EQ(read_file(path), "F2G_DIM 2\n"
                               "F2G_VERSION 1\n"
                               "F2G_LOCATION 1000 2000 55\n"
                               "F2G_ROTATION 30\n"
                               "F2G_ORIGIN 1.5 -2.5\n"
                               "F2G_NB_NODES 2 2\n"
                               "F2G_LAGS 10 20\n"
                               "F2G_ORDER -y +X +Z\n"
                               "F2G_NB_VARIABLES 2\n"
                               "F2G_VARIABLE_1 Depth\n"
                               "F2G_UNDEFINED_1 NA\n"
                               "F2G_VARIABLE_2 Second\n"
                               "F2G_UNDEFINED_2 -999\n"
                               "F2G_VALUES \n"
                               "-2 -999\n"
                               "1.23457 7\n"
                               "1.23457e+08 7\n"
                               "NA 7\n");
    // Only the first column is loaded, to six significant digits.
    GridReal back;
    ASSERT_TRUE(back.read(path)) << back.getError();
    EXPECT_EQ(value_at(back, 0, 0), 1.23457);
    EXPECT_EQ(value_at(back, 1, 1), 1.23457e8);
    EXPECT_EQ(value_at(back, 1, 0), 1e30);
    EXPECT_TRUE(back.getVariables().empty());

    // More than two extra variables make a file this reader refuses.
    GridReal third(second), fourth(second);
    ASSERT_TRUE(grid.add_variable(&third));
    ASSERT_TRUE(grid.add_variable(&fourth));
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_F2G, "+Y +X +Z"));
    EXPECT_FALSE(back.read(path));
    EXPECT_EQ(back.getError(), "Invalid F2G file: Wrong value for F2G_NB_VARIABLES");

    // Values are raw lines: a comment among them is a node, and a last line needs no line end.
    std::string text = replaced(VALID_F2G_2D, "2\n3\n", "2\n# note\n3\n");
    text.pop_back();
    write_file(path, text);
    ASSERT_TRUE(back.read(path)) << back.getError();
    EXPECT_EQ(value_at(back, 1, 0), 1e30);
    EXPECT_EQ(value_at(back, 2, 1), 5.);
    write_file(path, replaced(VALID_F2G_2D, "6\n", "6"));
    ASSERT_TRUE(back.read(path)) << back.getError();
    EXPECT_EQ(value_at(back, 2, 1), 6.);
    EXPECT_EQ(back.getLocation().get_abscissa(), 100.);
    EXPECT_EQ(back.getUndefinedText(), "NA");

    // A descending fastest axis fills from the far end.
    write_file(path, replaced(VALID_F2G_2D, "F2G_ORDER +Y +X +Z", "F2G_ORDER -x +Y +Z"));
    ASSERT_TRUE(back.read(path)) << back.getError();
    expect_same_values(GridReal({{3., 6.}, {2., 5.}, {1., 4.}}), back, "descending read");

    // A keyword is a line prefix, and keywords may stand in any order.
    write_file(path, edited(VALID_F2G_2D, {{"F2G_DIM 2\n", ""},
                                           {"F2G_LAGS 10 20\n", "F2G_LAGS 10 20\nF2G_DIMENSION 2\n"}}));
    EXPECT_TRUE(back.read(path)) << back.getError();

    EXPECT_FALSE(grid.write(path, nullptr, GRID_FORMAT_F2G, "+Y +X"));
    EXPECT_EQ(grid.getError(), "Order string is not valid!");
    const std::string bad = dir.file("no/such/dir/grid.f2g");
    EXPECT_FALSE(grid.write(bad, nullptr, GRID_FORMAT_F2G, "+Y +X +Z"));
    EXPECT_EQ(grid.getError(), "Cannot write grid file " + bad);
    EXPECT_FALSE(back.read_f2g(bad));
    EXPECT_EQ(back.getError(), "Cannot read grid file " + bad);
}

TEST(GridReal, NumbersWrittenWithSixSignificantDigits)
{
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<double, std::string>> cases = {
        {0., "0"},
        {-0., "-0"},
        {1., "1"},
        {-1., "-1"},
        {17976., "17976"},
        {999999., "999999"},
        {-999999., "-999999"},
        {1e6, "1e+06"},
        {-1e6, "-1e+06"},
        {1000001., "1e+06"},
        {1234567., "1.23457e+06"},
        {999999.5, "1e+06"},
        {999998.9, "999999"},
        {0.5, "0.5"},
        {-0.5, "-0.5"},
        {0.6875, "0.6875"},
        {1e-5, "1e-05"},
        {2147483648., "2.14748e+09"},
        {-2147483649., "-2.14748e+09"},
        {4294967295., "4.29497e+09"},
        {1e30, "1e+30"},
        {inf, "inf"},
        {-inf, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {std::numeric_limits<double>::denorm_min(), "4.94066e-324"},
    };
    for (const auto& [value, expected] : cases)
    {
        EXPECT_EQ(NumberWriter::text_of(value), expected) << expected;
        EXPECT_EQ(general_six(value), expected) << expected;
    }
    // Every whole value about the bound of a million, then values of every kind at random.
    for (int whole = -1000010; whole <= 1000010; ++whole)
        ASSERT_EQ(NumberWriter::text_of(whole), general_six(whole)) << whole;
    std::mt19937_64 random(20261125);
    for (int n = 0; n < 200000; ++n)
    {
        const uint64_t bits = random();
        double any = 0.;
        std::memcpy(&any, &bits, sizeof any);
        const double near_whole = static_cast<double>(static_cast<int64_t>(bits % 4000001) - 2000000) / 16.;
        for (double value : {any, near_whole, -near_whole, std::ldexp(1., static_cast<int>(bits % 64)) - 1.})
            ASSERT_EQ(NumberWriter::text_of(value), general_six(value)) << value;
    }
}

TEST(GridReal, F2GMalformedHeaders)
{
    TempDir dir;
    const std::string path = dir.file("bad.f2g");
    const std::string three_d = edited(VALID_F2G_2D, {{"F2G_DIM 2", "F2G_DIM 3"},
                                                      {"F2G_NB_NODES 3 2", "F2G_NB_NODES 3 2 1"},
                                                      {"F2G_LAGS 10 20", "F2G_LAGS 10 20 5"},
                                                      {"F2G_ORIGIN 0 0", "F2G_ORIGIN 0 0 0"}});
    const std::string V = "Invalid F2G file: ";
    const std::vector<Refusal> cases = {
        {"F2G_DIM 2\n", "", V + "could not find F2G_DIM keyword"},
        {"F2G_DIM 2", "F2G_DIM two", V + "Wrong value for F2G_DIM"},
        {"F2G_DIM 2", "F2G_DIM 4", V + "Wrong value for F2G_DIM (must be 2 or 3)"},
        {"F2G_VERSION 1\n", "", V + "could not find F2G_VERSION keyword"},
        {"F2G_VERSION 1", "F2G_VERSION", V + "Wrong value for F2G_VERSION"},
        {"F2G_VERSION 1", "F2G_VERSION 2", V + "Wrong value for F2G_VERSION (must be 1)"},
        {"F2G_LOCATION 100 200 0\n", "", V + "could not find F2G_LOCATION keyword"},
        {"F2G_LOCATION 100 200 0", "F2G_LOCATION 100", V + "Wrong values for F2G_LOCATION"},
        {"F2G_ROTATION 30\n", "", V + "could not find F2G_ROTATION keyword"},
        {"F2G_ROTATION 30", "F2G_ROTATION deg", V + "Wrong value for F2G_ROTATION"},
        {"F2G_ORIGIN 0 0\n", "", V + "could not find F2G_ORIGIN keyword"},
        {"F2G_ORIGIN 0 0", "F2G_ORIGIN 0", V + "Wrong values for F2G_ORIGIN"},
        {"F2G_NB_NODES 3 2\n", "", V + "could not find F2G_NB_NODES keyword"},
        {"F2G_NB_NODES 3 2", "F2G_NB_NODES 1 2", V + "Wrong value for F2G_NB_NODES:\n  NX = 1\n  NY = 2"},
        {"F2G_NB_NODES 3 2", "F2G_NB_NODES 3 5001",
         V + "Wrong value for F2G_NB_NODES:\n  NX = 3\n  NY = 5001"},
        {"F2G_LAGS 10 20\n", "", V + "could not find F2G_LAGS keyword"},
        {"F2G_LAGS 10 20", "F2G_LAGS 10 -1", V + "Wrong value for F2G_LAGS:\n  LAGX = 10\n  LAGY = -1"},
        {"F2G_ORDER +Y +X +Z\n", "", V + "could not find F2G_ORDER keyword"},
        {"F2G_ORDER +Y +X +Z", "F2G_ORDER +Y +X",
         V + "Wrong values for F2G_ORDER (All three axis must be defined even for 2D grids)"},
        {"F2G_ORDER +Y +X +Z", "F2G_ORDER +Y -y +Z",
         V + "Wrong value for F2G_ORDER:\n  #1 = +Y\n  #2 = -y\n  #3 = +Z"},
        {"F2G_NB_VARIABLES 1\n", "", V + "could not find F2G_NB_VARIABLES keyword"},
        {"F2G_NB_VARIABLES 1", "F2G_NB_VARIABLES 0", V + "Wrong value for F2G_NB_VARIABLES"},
        {"F2G_VARIABLE_1 Var\n", "", V + "could not find F2G_VARIABLE_1 keyword"},
        {"F2G_UNDEFINED_1 NA\n", "", V + "could not find F2G_UNDEFINED_1 keyword"},
        {"F2G_UNDEFINED_1 NA", "F2G_UNDEFINED_1", V + "Wrong value for F2G_UNDEFINED_1"},
        {"F2G_NB_VARIABLES 1", "F2G_NB_VARIABLES 2", V + "could not find F2G_VARIABLE_2 keyword"},
        {"F2G_NB_VARIABLES 1\n",
         "F2G_NB_VARIABLES 3\nF2G_VARIABLE_2 a\nF2G_UNDEFINED_2 b\nF2G_VARIABLE_3 c\n",
         V + "could not find F2G_UNDEFINED_3 keyword"},
        {"F2G_VALUES \n", "", V + "could not find F2G_VALUES keyword"},
        {"5\n6\n", "", V + "Wrong number of values!\nWe read 4 values (6 expected)."},
    };
    expect_refusals(path, VALID_F2G_2D, cases, [&](GridReal& fresh) { return fresh.read_f2g(path); });
    // In 3D the third counts and lags are read too, and a header asking for
    // billions of nodes is refused before anything is allocated.
    const std::vector<Refusal> cases3 = {
        {"F2G_NB_NODES 3 2 1", "F2G_NB_NODES 3 2 1",
         V + "Wrong value for F2G_NB_NODES:\n  NX = 3\n  NY = 2\n  NZ = 1"},
        {"F2G_NB_NODES 3 2 1", "F2G_NB_NODES 5000 5000 5000",
         V + "Wrong value for F2G_NB_NODES:\n  NX = 5000\n  NY = 5000\n  NZ = 5000"},
        {"F2G_NB_NODES 3 2 1", "F2G_NB_NODES 3 2",
         V + "Wrong value for F2G_NB_NODES:\n  NX = 3\n  NY = 2\n  NZ = 1"},
        {"F2G_NB_NODES 3 2 1\nF2G_LAGS 10 20 5", "F2G_NB_NODES 3 2 2\nF2G_LAGS 10 20 0",
         V + "Wrong value for F2G_LAGS:\n  LAGX = 10\n  LAGY = 20\n LAGZ = 0"},
        {"F2G_NB_NODES 3 2 1", "F2G_NB_NODES 3 1 2",
         V + "Wrong value for F2G_NB_NODES:\n  NX = 3\n  NY = 1\n  NZ = 2"},
        {"F2G_ORIGIN 0 0 0", "F2G_ORIGIN 0 0", V + "Wrong values for F2G_ORIGIN"},
        {"F2G_LOCATION 100 200 0", "F2G_LOCATION 100 200", V + "Wrong values for F2G_LOCATION"},
    };
    expect_refusals(path, three_d, cases3,
                    [&](GridReal& fresh)
                    {
                        const bool read = fresh.read(path);
                        EXPECT_TRUE(fresh.getValues().empty());
                        return read;
                    });
}

TEST(GridReal, GslibAndAsciiNeedTheGeometry)
{
    TempDir dir;
    const std::string path = dir.file("grid.gslib");
    GridReal grid = with_node_values(GridReal(1., 1., 1., 2, 2, 2, 0., 0., 0.));
    grid.setName("Facies");
    GridReal age(grid);
    age.setName("Age");
    age.fill(3.);
    ASSERT_TRUE(grid.add_variable(&age));
    // The order given serves F2G only: GSLIB is always x fastest.
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_GSLIB, "-Z +Y +X"));
    EXPECT_EQ(read_file(path), "GSLIB file generated by Sarvo: NXxNYxNZ=2x2x2\n2\nFacies\nAge\n"
                               "0.5 3\n1.5 3\n10.5 3\n11.5 3\n100.5 3\n101.5 3\n110.5 3\n111.5 3\n");
    EXPECT_EQ(GridReal::get_format(path), 1);

    // Several columns are read interleaved.
    GridReal back(1., 1., 1., 2, 2, 2, 0., 0., 0.);
    ASSERT_TRUE(back.read(path)) << back.getError();
    EXPECT_EQ(value_at(back, 1, 0, 0), 3.);
    EXPECT_EQ(value_at(back, 0, 1, 0), 1.5);

    // One column round-trips with the geometry given.
    GridReal single = make_grid_3d(3, 2, 2);
    ASSERT_TRUE(single.write(path, nullptr, GRID_FORMAT_GSLIB, ""));
    GridReal same(1., 1., 1., 3, 2, 2, 0., 0., 0.);
    ASSERT_TRUE(same.read(path)) << same.getError();
    expect_same_values(single, same, "gslib");

    // Without a geometry there is nothing to fill: said, not read as an empty grid. Read on a
    // geometry, the file fills it; an F2G file keeps its own.
    GridReal bare;
    EXPECT_FALSE(bare.read(path));
    EXPECT_EQ(bare.getError(),
              "Invalid GSLIB file " + path + ": the file holds no grid geometry, and none was given.");
    ASSERT_TRUE(bare.read_on(path, GridParams(1., 1., 1., 3, 2, 2, 0., 0., 0.))) << bare.getError();
    expect_same_values(single, bare, "gslib on a geometry");
    ASSERT_TRUE(single.write(dir.file("own.f2g"), nullptr, GRID_FORMAT_F2G, "+X +Y +Z"));
    ASSERT_TRUE(bare.read_on(dir.file("own.f2g"), GridParams(5., 5., 7, 7)));
    EXPECT_EQ(bare.getNx(), 3);

    // "NA" stops the number reader: a GSLIB file with undefined nodes cannot be read back.
    single.set_at(1, 1, 0, 1e30);
    ASSERT_TRUE(single.write(path, nullptr, GRID_FORMAT_GSLIB, ""));
    EXPECT_FALSE(same.read(path));
    EXPECT_EQ(same.getError(), "Invalid GSLIB file: wrong number of values! Do you have NA ?\n"
                               "We read 5 values (12 expected).");
    // A failure at the very last node is not noticed, and the node holds 0.
    std::string text = "t\n1\nv\n1\n2\n3\n4\n5\nNA\n";
    write_file(path, text);
    GridReal small(1., 1., 3, 2);
    ASSERT_TRUE(small.read(path)) << small.getError();
    EXPECT_EQ(value_at(small, 2, 1), 0.);
    write_file(path, "t\nzero\nv\n1\n");
    EXPECT_FALSE(small.read_gslib(path));
    EXPECT_EQ(small.getError(), "Invalid GSLIB file: wrong 2nd line (should contain number of variables).");
    write_file(path, "t\n0\n1\n");
    EXPECT_FALSE(small.read_gslib(path));
    EXPECT_EQ(small.getError(), "Invalid GSLIB file: wrong 2nd line (should contain number of variables).");

    // Plain ascii: values only, y fastest, then x, z slowest, both ways.
    const std::string apath = dir.file("grid.asc");
    GridReal plain = make_grid_3d(2, 3, 2);
    ASSERT_TRUE(plain.write(apath, nullptr, 7, "+X +Y +Z"));
    std::string expected;
    for (int k = 0; k < 2; ++k)
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 3; ++j)
            {
                std::ostringstream line;
                line << node_value(i, j, k) << '\n';
                expected += line.str();
            }
    EXPECT_EQ(read_file(apath), expected);
    EXPECT_EQ(GridReal::get_format(apath), -2);
    GridReal no_geometry;
    EXPECT_FALSE(no_geometry.read(apath));
    EXPECT_EQ(no_geometry.getError(),
              "Plain ascii grid file " + apath + " holds no grid geometry, and none was given.");
    GridReal plain_back(1., 1., 1., 2, 3, 2, 0., 0., 0.);
    ASSERT_TRUE(plain_back.read(apath)) << plain_back.getError();
    expect_same_values(plain, plain_back, "ascii");
    plain.set_at(0, 2, 0, 1e30);
    ASSERT_TRUE(plain.write(apath, nullptr, GRID_FORMAT_ASCII, ""));
    EXPECT_FALSE(plain_back.read(apath));
    EXPECT_EQ(plain_back.getError(),
              "Error while reading data from the input data ASCII file"
              "(no CPS3, GSLIB or F2G format detected).\nWe read 2 values (12 expected).");
}

TEST(GridReal, Cps3Reading)
{
    TempDir dir;
    const std::string path = dir.file("grid.cps");
    // Version 0: rows first, y count and y lag before x; rows run north to south.
    const std::string v0 = "FSASCI 0 1 COMPUTED 0 -999\n"
                           "FSATTR 0 0\n"
                           "FSLIMI 1000 1020 2000 2005 1 9\n"
                           "FSNROW 2 3\n"
                           "FSXINC 5 10\n"
                           "->MSMODL: Surface\n"
                           "1 2 3\n4 -999 6\n";
    write_file(path, v0);
    GridReal grid;
    ASSERT_TRUE(grid.read(path)) << grid.getError();
    EXPECT_EQ(grid.getNx(), 3);
    EXPECT_EQ(grid.getNy(), 2);
    EXPECT_FALSE(grid.is3D());
    EXPECT_EQ(grid.getDx(), 10.);
    EXPECT_EQ(grid.getDy(), 5.);
    EXPECT_EQ(grid.getLocation().get_abscissa(), 1000.);
    EXPECT_EQ(grid.getLocation().get_ordinate(), 2000.);
    EXPECT_EQ(grid.getX0(), 0.);
    const GridReal expected({{4., 1.}, {1e30, 2.}, {6., 3.}});
    expect_same_values(expected, grid, "cps3 v0");

    // Version 1: columns first, x count and x lag first.
    const std::string v1 = "FSASCI 0 1 COMPUTED 1 -999\n"
                           "FSATTR 0 0\n"
                           "FSLIMI 1000 1020 2000 2005 1 9\n"
                           "FSNROW 3 2\n"
                           "FSXINC 10 5\n"
                           "->MSMODL: Surface\n"
                           "1 4 2\n-999 3 6\n";
    write_file(path, v1);
    ASSERT_TRUE(grid.read(path)) << grid.getError();
    expect_same_values(expected, grid, "cps3 v1");
    EXPECT_EQ(grid.getDx(), 10.);

    // Without an undefined value in the header, -1 means undefined.
    write_file(path, edited(v1, {{"COMPUTED 1 -999", "COMPUTED 1"}, {"-999 3", "-1 3"}}));
    ASSERT_TRUE(grid.read(path)) << grid.getError();
    expect_same_values(expected, grid, "cps3 no undefined");

    // 3D: z limits then value limits.
    write_file(path, "FSASCI 0 1 COMPUTED 1 1e30\nFSATTR 0 0\nFSLIMI 0 10 0 10 100 200 1 9\n"
                     "FSNROW 2 2 2\nFSXINC 10 10 50\n->MSMODL\n1 2 3 4 5 6 7 8\n");
    ASSERT_TRUE(grid.read(path)) << grid.getError();
    EXPECT_TRUE(grid.is3D());
    EXPECT_EQ(grid.getDz(), 50.);
    EXPECT_EQ(grid.getLocation().get_elevation(), 100.);
    EXPECT_EQ(value_at(grid, 1, 1, 1), 7.);

    // A short file is not detected.
    write_file(path, replaced(v0, "4 -999 6\n", "4\n"));
    EXPECT_TRUE(grid.read(path)) << grid.getError();

    const std::string C = "Invalid CPS3 file: ";
    const std::vector<Refusal> cases = {
        {"FSASCI 0 1 COMPUTED 0 -999", "FSASCI 0 1 COMPUTED",
         C + "could not determine version (number after COMPUTED)"},
        {"FSATTR 0 0\n", "", C + "could not find FSATTR keyword"},
        {"FSLIMI 1000 1020 2000 2005 1 9", "FSLIMI 1000 900 2000 2005 1 9",
         C + "could not find X & Y consistent limits:\n  XMIN = 1000\n  XMAX = 900\n"
             "  YMIN = 2000\n  YMAX = 2005"},
        {"FSLIMI 1000 1020 2000 2005 1 9\n", "",
         C + "could not find X & Y consistent limits:\n  XMIN = 0\n  XMAX = 0\n  YMIN = 0\n  YMAX = 0"},
        {"FSLIMI 1000 1020 2000 2005 1 9", "FSLIMI 1000 1020 2000 2005 9 1",
         C + "could not find Value consistent limits:\n  VMIN = 9\n  VMAX = 1"},
        {"FSLIMI 1000 1020 2000 2005 1 9", "FSLIMI 1000 1020 2000 2005 5 5 1 9",
         C + "could not find Z consistent limits:\n  ZMIN = 5\n  ZMAX = 5"},
        {"FSNROW 2 3", "FSNROW 1 3", C + "The grid size is not correct:\n  NX = 3\n  NY = 1"},
        {"FSNROW 2 3\n", "", C + "The grid size is not correct:\n  NX = 0\n  NY = 0"},
        {"FSXINC 5 10", "FSXINC 5 0", C + "Bad grid lags:\n  LAGX = 0\n  LAGY = 5"},
        {"->MSMODL: Surface\n", "", C + "keyword 'MSMODL' not found!"},
    };
    expect_refusals(path, v0, cases, [&](GridReal& fresh) { return fresh.read(path); });
    write_file(path, replaced(v0, "FSASCI 0 1 COMPUTED 0 -999\n", "FSATTR 1\n"));
    EXPECT_FALSE(grid.read_cps3(path));
    EXPECT_EQ(grid.getError(), C + "could not find FSASCI keyword");
    // 3D sizes and lags name the third axis; a 2D file without value limits fails silently.
    const std::string v3 = "FSASCI 0 1 COMPUTED 1 1e30\nFSATTR 0 0\nFSLIMI 0 10 0 10 100 200 1 9\n"
                           "FSNROW 2 2 5001\nFSXINC 10 10 -5\n->MSMODL\n1\n";
    write_file(path, v3);
    EXPECT_FALSE(grid.read(path));
    EXPECT_EQ(grid.getError(), C + "The grid size is not correct:\n  NX = 2\n  NY = 2\n  NZ = 5001");
    write_file(path, replaced(v3, "5001", "2"));
    EXPECT_FALSE(grid.read(path));
    EXPECT_EQ(grid.getError(), C + "Bad grid lags:\n  LAGX = 10\n  LAGY = 10\n LAGZ = -5");
    write_file(path, replaced(v0, "FSLIMI 1000 1020 2000 2005 1 9", "FSLIMI 1000 1020 2000 2005"));
    grid.setError("previous");
    EXPECT_FALSE(grid.read(path));
    EXPECT_EQ(grid.getError(), "previous");

    RecordingTracer tracer;
    EXPECT_FALSE(grid.write(path, &tracer, GRID_FORMAT_CPS3, "+Y +X +Z"));
    EXPECT_EQ(grid.getError(), "Cannot export CPS3 file format yet!");
    EXPECT_FALSE(grid.write(path, &tracer, GRID_FORMAT_GRDECL, "+Y +X +Z"));
    ASSERT_EQ(tracer.lines.size(), 1u);
    EXPECT_EQ(tracer.lines[0].text, "##  ERROR  ## : Writing GRDECL not supported yet!\n");
}

TEST(GridReal, ProgressAndCancelledWrites)
{
    TempDir dir;
    const std::string path = dir.file("grid.f2g");
    GridReal grid = make_grid_3d(3, 4, 2);
    RecordingTracer tracer;
    // The slowest axis of "+Z +X -Y" is y: 4 steps.
    ASSERT_TRUE(grid.write(path, &tracer, GRID_FORMAT_F2G, "+Z +X -Y"));
    EXPECT_EQ(tracer.calls, (std::vector<int>{-4, 1, 1, 1, 1}));
    tracer.calls.clear();
    ASSERT_TRUE(grid.write(path, &tracer, GRID_FORMAT_GSLIB, "+Z +X -Y"));
    EXPECT_EQ(tracer.calls, (std::vector<int>{-2, 1, 1}));

    // A cancel leaves the file written before as it was, and no temporary beside it.
    const std::string before = read_file(path);
    tracer.calls.clear();
    tracer.allowed_calls = 2;
    EXPECT_FALSE(grid.write(path, &tracer, GRID_FORMAT_F2G, "+Y +X +Z"));
    EXPECT_EQ(read_file(path), before);
    tracer.calls.clear();
    EXPECT_FALSE(grid.write(path, &tracer, GRID_FORMAT_GSLIB, "+Y +X +Z"));
    EXPECT_EQ(read_file(path), before);
    const auto entries =
        std::distance(std::filesystem::directory_iterator(dir.path()), std::filesystem::directory_iterator());
    EXPECT_EQ(entries, 1);
}

TEST(GridReal, MigrateResamplesThroughGeography)
{
    // The source covers the target, whose origin stands one cell further east.
    GridReal source = with_node_values(GridReal(10., 10., 6, 6));
    source.setLocation(Point3D(500., 300., 0.));
    GridReal target(10., 10., 4, 3);
    target.setLocation(Point3D(510., 300., 0.));
    RecordingTracer tracer;
    ASSERT_TRUE(target.migrate(source, true, true, &tracer));
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
        {
            EXPECT_EQ(value_at(target, i, j), node_value(i + 1, j, 0));
        }
    EXPECT_TRUE(tracer.lines.empty());

    // A hole is bridged by the first defined node of the square around, first index outer.
    source.set_at(3, 2, 1e30);
    source.set_at(1, 1, 1e30);
    ASSERT_TRUE(target.migrate(source, true, true, &tracer));
    EXPECT_EQ(value_at(target, 2, 2), node_value(1, 0, 0));

    // Off the source: ten warnings, then "...", then silence; undefined nodes give errors.
    GridReal wide(10., 10., 6, 3);
    wide.setLocation(Point3D(460., 300., 0.));
    GridReal holes(10., 10., 3, 3);
    holes.setLocation(Point3D(500., 300., 0.));
    holes.set_at(0, 0, 4.);
    ASSERT_TRUE(wide.migrate(holes, false, true, &tracer));
    // Nodes i = 0..3 lie off the 3 x 3 source (x from -4 to -1): 12 nodes.
    std::vector<std::string> warnings, errors;
    for (const auto& line : tracer.lines)
        (line.level == TRACE_WARNING ? warnings : errors).push_back(line.text);
    ASSERT_EQ(warnings.size(), 11u);
    EXPECT_EQ(warnings[0],
              "#  WARNING  # : Domain at {0,0} not fully covered by Imported Surface at {-4,0}\n");
    EXPECT_EQ(warnings[10], "#  WARNING  # : ...\n");
    EXPECT_EQ(value_at(wide, 2, 0), 4.);
    EXPECT_EQ(value_at(wide, 0, 0), 1e30);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[0], "##  ERROR  ## : At location {0,0} the grid value is not defined!\n");
    tracer.lines.clear();
    EXPECT_FALSE(wide.migrate(holes, true, false, &tracer));
    EXPECT_TRUE(tracer.lines.empty());

    GridReal block(1., 1., 1., 3, 3, 2, 0., 0., 0.);
    EXPECT_FALSE(block.migrate(source, false, false, nullptr));
    EXPECT_EQ(block.getError(), "GridReal::migrate: This method is not available for 3D grids");
    EXPECT_FALSE(target.migrate(block, false, false, nullptr));
}

TEST(GridReal, SurfaceKinds)
{
    const GridParams cube(1., 1., 1., 3, 3, 2, 0., 0., 0.);
    testing::internal::CaptureStdout();
    Topo topo(cube);
    TectoMap tecto(cube);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("Topo::Topo: Create a Topo from a 3D grid is not supported"), std::string::npos);
    EXPECT_NE(out.find("TectoMap::TectoMap: Create a TectoMap from a 3D grid is not supported"),
              std::string::npos);
    EXPECT_FALSE(topo.is3D());
    EXPECT_FALSE(tecto.is3D());

    // Shifts follow the relief of the other surface above its minimum.
    Topo base(10., 10., 2, 2);
    base.fill_2D({{5., 7.}, {6., 1e30}});
    Topo surface(10., 10., 2, 2);
    surface.fill_2D({{100., 100.}, {1e30, 100.}});
    ASSERT_TRUE(surface.shift_down(base));
    const GridReal down({{100., 98.}, {1e30, 100.}});
    expect_same_values(down, surface, "shift_down");
    ASSERT_TRUE(surface.shift_up(base));
    const GridReal up({{100., 100.}, {1e30, 100.}});
    expect_same_values(up, surface, "shift_up");

    Topo other(10., 10., 3, 2);
    EXPECT_FALSE(surface.shift_down(other));
    EXPECT_EQ(surface.getError(), "Topo::shift_down: Topo grids are not compatible");
    Topo empty(10., 10., 2, 2);
    EXPECT_FALSE(surface.shift_up(empty));
    EXPECT_EQ(surface.getError(), "Topo::shift_up: Cannot get minimum value from the given topography");
    Topo thick;
    thick.GridReal::reset(10., 10., 1., 2, 2, 2, 0., 0., 0.);
    EXPECT_FALSE(thick.shift_down(GridReal(10., 10., 1., 2, 2, 2, 0., 0., 0.)));
    EXPECT_EQ(thick.getError(), "Topo::shift_down: This method is not available for 3D grids");
}

TEST(GridReal, ErodibilityConversion)
{
    TempDir dir;
    EMap map(1., 1., 2, 2);
    map.fill_2D({{2., 4.}, {1e30, 6.}});
    // Mean of (v - 1) over defined nodes: (1 + 3 + 5) / 3 = 3.
    EXPECT_EQ(map.meanConv(1.), 3.);
    EXPECT_EQ(map.convertValue(2., 1., 3., 7.), 4.);
    EXPECT_EQ(map.convertValue(2., 1., 7.), 4.);
    ASSERT_TRUE(map.write(dir.file("emap.txt"), nullptr, GRID_FORMAT_F2G, "+Y +X +Z"));
    EMap read;
    ASSERT_TRUE(read.readConv(dir.file("emap.txt"), 2., 1.));
    const GridReal expected({{2. / 3., 2.}, {1e30, 10. / 3.}});
    expect_same_values(expected, read, "convert");
    EXPECT_EQ(read.getError(), "");

    // A null shifted mean is replaced by 1.
    EMap flat(1., 1., 2, 1);
    flat.fill(5.);
    ASSERT_TRUE(flat.convert(3., 5.));
    EXPECT_EQ(flat.getError(), "File EMap shifted mean is null and has been set to 1.");
    EXPECT_EQ(value_at(flat, 1, 0), 0.);
}
