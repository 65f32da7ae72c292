#include "kernel/files/FaciesImage.h"

#include "ColumnSupport.h"
#include "NetworkParts.h"
#include "TestSupport.h"
#include "interface/iParameters.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/Simulator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>

using testing_support::build_column;
using testing_support::silent;

namespace
{

constexpr double ZREF = 100.;
constexpr unsigned char NONE = FaciesImage::NO_DEPOSIT;
typedef std::array<int, 3> Rgb;

struct Kernel : testing_support::KernelParts
{
    Kernel() { tracer.setTraceFunction(silent); }
};

// A 4 x 3 block, base at relative 0 (geographic 100):
//   (0, 0): 2 m point bar under 1 m overbank (top 103);
//   (3, 2): 1 m channel lag under 1 m levee (top 102);
//   (1, 1): 3 m sand plug in two units (top 103);
//   every other column empty.
std::unique_ptr<Domain> make_block(Kernel& k)
{
    auto dom = std::make_unique<Domain>(&k.mc, &k.seed, &k.mb, nullptr, 10., 10., 4, 3, Point2D(), 0., ZREF,
                                        0u, Facies(8));
    build_column(dom->getObject(0, 0), 0.,
                 {DepositionUnit(Facies(2), 200, 1), DepositionUnit(Facies(8), 100, 1)});
    build_column(dom->getObject(3, 2), 0.,
                 {DepositionUnit(Facies(1), 100, 1), DepositionUnit(Facies(7), 100, 1)});
    build_column(dom->getObject(1, 1), 0.,
                 {DepositionUnit(Facies(3), 150, 1), DepositionUnit(Facies(3), 150, 0)});
    return dom;
}

// The preview colour of the families of the test block.
Rgb expected(unsigned char family)
{
    static const std::map<int, Rgb> table = {{1, {255, 128, 0}},
                                             {2, {255, 235, 0}},
                                             {3, {205, 170, 125}},
                                             {7, {100, 150, 20}},
                                             {8, {165, 230, 145}}};
    if (family == NONE)
        return {255, 255, 255};
    return table.at(family);
}

Rgb pixel(const RgbImage& image, int x, int y)
{
    const size_t k = (static_cast<size_t>(y) * image.width + x) * 3;
    return {image.rgb[k], image.rgb[k + 1], image.rgb[k + 2]};
}

std::set<Rgb> colours(const RgbImage& image)
{
    std::set<Rgb> out;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            out.insert(pixel(image, x, y));
    return out;
}

// Counts the pixels that are neither white nor black: a legend should have ink and swatches only.
bool only_colours(const RgbImage& image, std::set<Rgb> allowed)
{
    allowed.insert({255, 255, 255});
    allowed.insert({0, 0, 0});
    for (const Rgb& c : colours(image))
        if (allowed.count(c) == 0)
            return false;
    return true;
}

class FakeWriter : public iImageWriter
{
public:
    bool writePng(const std::string& path, const RgbImage& image, std::string& message) override
    {
        written[std::filesystem::path(path).filename().string()] = image;
        if (fail)
            message = "disk full";
        return !fail;
    }
    std::map<std::string, RgbImage> written;
    bool fail = false;
};

} // namespace

TEST(FaciesImage, TopMapHasNorthUpAndThePreviewColours)
{
    Kernel k;
    auto dom = make_block(k);
    const FaciesImage images(*dom, 3, 10);

    const std::vector<unsigned char> top = images.top_families();
    ASSERT_EQ(top.size(), 12u);
    EXPECT_EQ(top[0], 8);
    EXPECT_EQ(top[1 * 4 + 1], 3);
    EXPECT_EQ(top[2 * 4 + 3], 7);
    EXPECT_EQ(top[1], NONE);

    const RgbImage map = images.top_map();
    ASSERT_EQ(map.width, 12);
    ASSERT_EQ(map.height, 9);
    ASSERT_EQ(map.rgb.size(), 12u * 9u * 3u);
    // Node (i, j) covers pixels [3i, 3i + 3) x [3 (2 - j), 3 (2 - j) + 3).
    for (int d = 0; d < 3; ++d)
    {
        EXPECT_EQ(pixel(map, 0 + d, 6 + d), expected(8)); // (0, 0): bottom left
        EXPECT_EQ(pixel(map, 9 + d, 0 + d), expected(7)); // (3, 2): top right
        EXPECT_EQ(pixel(map, 3 + d, 3 + d), expected(3)); // (1, 1)
    }
    EXPECT_EQ(pixel(map, 9, 6), expected(NONE));
    EXPECT_EQ(colours(map), (std::set<Rgb>{expected(3), expected(7), expected(8), expected(NONE)}));
}

TEST(FaciesImage, SliceMapShowsTheFamilyAtTheElevation)
{
    Kernel k;
    auto dom = make_block(k);
    const FaciesImage images(*dom, 2, 10);

    // At 101.5 (geographic): point bar at (0, 0), levee at (3, 2), sand plug at (1, 1).
    const RgbImage low = images.slice_map(ZREF + 1.5);
    ASSERT_EQ(low.width, 8);
    ASSERT_EQ(low.height, 6);
    EXPECT_EQ(pixel(low, 1, 5), expected(2));
    EXPECT_EQ(pixel(low, 7, 0), expected(7));
    EXPECT_EQ(pixel(low, 2, 2), expected(3));
    // At 100.5: channel lag at (3, 2). Above every top: nothing.
    EXPECT_EQ(pixel(images.slice_map(ZREF + 0.5), 6, 1), expected(1));
    const std::vector<unsigned char> above = images.slice_families(ZREF + 10.);
    EXPECT_EQ(FaciesImage::families_present(above), std::vector<unsigned char>());
}

TEST(FaciesImage, SectionsRunFromTheHighestTopDownToTheLowestBase)
{
    Kernel k;
    auto dom = make_block(k);
    // 6 lines over [100, 103]: half a metre each, sampled at their middle.
    const FaciesImage images(*dom, 2, 6);
    double zmin = 0.;
    double zmax = 0.;
    images.section_range(zmin, zmax);
    EXPECT_DOUBLE_EQ(zmin, ZREF);
    EXPECT_DOUBLE_EQ(zmax, ZREF + 3.);

    // Along x through row 0: column 0 is overbank over point bar, the others empty.
    const RgbImage sx = images.section_x(0);
    ASSERT_EQ(sx.width, 8);
    ASSERT_EQ(sx.height, 6);
    EXPECT_EQ(pixel(sx, 0, 0), expected(8));
    EXPECT_EQ(pixel(sx, 1, 1), expected(8));
    EXPECT_EQ(pixel(sx, 0, 2), expected(2));
    EXPECT_EQ(pixel(sx, 1, 5), expected(2));
    EXPECT_EQ(pixel(sx, 2, 5), expected(NONE));

    // Along y through column 3: row 2 (x = 4..5) is levee over channel lag, below 102.
    const RgbImage sy = images.section_y(3);
    ASSERT_EQ(sy.width, 6);
    ASSERT_EQ(sy.height, 6);
    EXPECT_EQ(pixel(sy, 4, 1), expected(NONE));
    EXPECT_EQ(pixel(sy, 5, 2), expected(7));
    EXPECT_EQ(pixel(sy, 4, 5), expected(1));
    EXPECT_EQ(pixel(sy, 0, 5), expected(NONE));

    EXPECT_FALSE(testing_support::assertion_text([&] { images.section_families(true, 3); }).empty());
}

TEST(FaciesImage, PreviewsFrameThePictureAndListThePresentFamilies)
{
    Kernel k;
    auto dom = make_block(k);
    const FaciesImage images(*dom, 3, 10);

    const RgbImage top = images.top_preview();
    // The bare map sits at (PLOT_LEFT, PLOT_TOP), framed in black.
    const int l = FaciesImage::PLOT_LEFT;
    const int t = FaciesImage::PLOT_TOP;
    EXPECT_EQ(pixel(top, l + 0, t + 6), expected(8));
    EXPECT_EQ(pixel(top, l + 9, t + 0), expected(7));
    EXPECT_EQ(pixel(top, l - 1, t - 1), (Rgb{0, 0, 0}));
    EXPECT_TRUE(only_colours(top, {expected(3), expected(7), expected(8)}));

    // The legend of the top lists sand plug, levee and overbank by id, then the
    // columns without deposit, after its title line.
    const std::vector<unsigned char> families = FaciesImage::legend_families(images.top_families());
    EXPECT_EQ(families, (std::vector<unsigned char>{3, 7, 8, NONE}));
    const RgbImage legend = FaciesImage::legend({"Top"}, families);
    for (int n = 0; n < 4; ++n)
    {
        int x = 0;
        int y = 0;
        FaciesImage::swatch_position(1, n, x, y);
        EXPECT_EQ(pixel(legend, x + 2, y + 2), expected(families[static_cast<size_t>(n)])) << n;
    }
    // Long names are written in full: the legend is wide enough for the longest.
    EXPECT_GE(legend.width, FaciesImage::text_width("Sand Plug", 2));
    EXPECT_GE(legend.height, 5 * FaciesImage::LEGEND_LINE);

    // A section's legend shows only what the section crosses: the middle row
    // crosses the sand plug, the middle column (i = 2) nothing.
    EXPECT_TRUE(only_colours(images.section_x_preview(), {expected(3)}));
    EXPECT_EQ(colours(images.section_x_preview()).count(expected(3)), 1u);
    EXPECT_TRUE(only_colours(images.section_y_preview(), {}));
}

TEST(FaciesImage, EveryFamilyHasAColourOfItsOwn)
{
    // Colours a reader can tell apart: every two families (and "no deposit")
    // are at least 30 apart in CIE L*a*b* (sRGB, D65), where 2.3 is barely visible.
    const auto lab = [](unsigned char family)
    {
        unsigned char rgb[3];
        FaciesImage::family_colour(family, rgb);
        double c[3];
        for (int k = 0; k < 3; ++k)
        {
            const double v = rgb[k] / 255.;
            c[k] = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        }
        const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16. / 116.; };
        const double x = f((0.4124 * c[0] + 0.3576 * c[1] + 0.1805 * c[2]) / 0.95047);
        const double y = f(0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]);
        const double z = f((0.0193 * c[0] + 0.1192 * c[1] + 0.9505 * c[2]) / 1.08883);
        return std::array<double, 3>{116. * y - 16., 500. * (x - y), 200. * (y - z)};
    };
    std::vector<unsigned char> families;
    for (unsigned char f = 0; f < 14; ++f)
        families.push_back(f);
    families.push_back(NONE);
    for (size_t a = 0; a < families.size(); ++a)
        for (size_t b = a + 1; b < families.size(); ++b)
        {
            const std::array<double, 3> la = lab(families[a]);
            const std::array<double, 3> lb = lab(families[b]);
            EXPECT_GE(std::hypot(la[0] - lb[0], la[1] - lb[1], la[2] - lb[2]), 30.)
                << int(families[a]) << " and " << int(families[b]);
        }
}

TEST(FaciesImage, SectionsGetARoundExaggerationAndAxesGetRoundTicks)
{
    Kernel k;
    auto dom = make_block(k);
    // Given rows: 10 pixels over 3 m, against 3 pixels per 10 m node.
    EXPECT_NEAR(FaciesImage(*dom, 3, 10).vertical_exaggeration(true), (10. / 3.) / 0.3, 1e-9);
    // Chosen rows: 8 pixels per node (the grid is small), and the largest
    // round exaggeration that keeps the section within 400 pixels: 100.
    const FaciesImage automatic(*dom);
    EXPECT_EQ(automatic.cell(), 8);
    EXPECT_EQ(automatic.rows(), 240);
    EXPECT_NEAR(automatic.vertical_exaggeration(true), 100., 1e-9);
    EXPECT_NEAR(automatic.vertical_exaggeration(false), 100., 1e-9);

    const struct
    {
        double range;
        int count;
        double step;
    } ticks[] = {{2510., 5, 500.}, {12.3, 5, 2.}, {1., 4, 0.2}, {0.03, 3, 0.01}, {7., 7, 1.}, {0., 4, 1.}};
    for (const auto& row : ticks)
        EXPECT_DOUBLE_EQ(FaciesImage::tick_step(row.range, row.count), row.step) << row.range;
}

TEST(FaciesImage, TextUsesTheBuiltInFontInBlack)
{
    RgbImage image;
    image.width = 40;
    image.height = 20;
    image.rgb.assign(40 * 20 * 3, 255);
    FaciesImage::draw_text(image, 1, 1, "L", 2);
    // "L": a full left stroke and a full bottom line of 5 x 7 cells, each 2 x 2 pixels.
    for (int r = 0; r < 7; ++r)
        EXPECT_EQ(pixel(image, 1, 1 + 2 * r), (Rgb{0, 0, 0})) << r;
    for (int c = 0; c < 5; ++c)
        EXPECT_EQ(pixel(image, 1 + 2 * c + 1, 1 + 12 + 1), (Rgb{0, 0, 0})) << c;
    EXPECT_EQ(pixel(image, 5, 5), (Rgb{255, 255, 255}));
    EXPECT_EQ(FaciesImage::text_width("ab", 1), 11);
    // Lower case is drawn as upper case; an unknown character as a question mark.
    RgbImage lower = image;
    RgbImage upper = image;
    FaciesImage::draw_text(lower, 20, 1, "b", 1);
    FaciesImage::draw_text(upper, 20, 1, "B", 1);
    EXPECT_EQ(lower.rgb, upper.rgb);
    // But a lone "m" (metres) or "x" (times) keeps its own glyph, and inside a word it does not.
    RgbImage unit = image;
    RgbImage word = image;
    RgbImage capital = image;
    FaciesImage::draw_text(unit, 1, 1, "m", 1);
    FaciesImage::draw_text(word, 1, 1, "mu", 1);
    FaciesImage::draw_text(capital, 1, 1, "M", 1);
    EXPECT_NE(unit.rgb, capital.rgb);
    FaciesImage::draw_text(capital, 7, 1, "U", 1);
    EXPECT_EQ(word.rgb, capital.rgb);
}

TEST(FaciesImage, SimulatorWritesEveryPreviewThroughItsWriter)
{
    testing_support::TempDir tmp;
    Simulator sim;
    sim.tracer()->setTraceFunction(silent);
    iParameters* p = sim.getParameters();
    p->setParamInt("DOMAIN_NX", 20);
    p->setParamInt("DOMAIN_NY", 10);
    p->setParamDouble("DOMAIN_DX", 10.);
    p->setParamDouble("DOMAIN_DY", 10.);
    p->setParamDouble("DOMAIN_ZREF", ZREF);
    FakeWriter writer;
    const std::string dir = tmp.path().string() + "/previews/run";

    // Without a writer, or without a block, nothing is written and the reason is kept.
    EXPECT_FALSE(sim.savePreviews(dir, {}));
    EXPECT_NE(sim.getLastMessage().find("no image writer"), std::string::npos);
    sim.setImageWriter(&writer);
    EXPECT_FALSE(sim.savePreviews(dir, {}));
    EXPECT_TRUE(writer.written.empty());

    ASSERT_EQ(sim.init(true), MP_STATUS_OK) << sim.getLastMessage();
    // Two metres of overbank everywhere.
    ASSERT_TRUE(sim.replaceTopoFromCst(ZREF + 2., SURF_FILL, 8, false)) << sim.getLastMessage();
    ASSERT_TRUE(sim.savePreviews(dir, {ZREF + 1., 12.5})) << sim.getLastMessage();
    EXPECT_TRUE(std::filesystem::is_directory(dir));
    std::set<std::string> names;
    for (const auto& file : writer.written)
    {
        names.insert(file.first);
        EXPECT_EQ(file.second.rgb.size(), static_cast<size_t>(file.second.width) * file.second.height * 3);
    }
    const std::string z = []
    {
        std::ostringstream out;
        out << "slice_" << ZREF + 1. << ".png";
        return out.str();
    }();
    EXPECT_EQ(names,
              (std::set<std::string>{"top.png", z, "slice_12.5.png", "section_x.png", "section_y.png"}));
    // The top and the slice through the deposit show overbank in the map; the slice below shows nothing.
    const int l = FaciesImage::PLOT_LEFT + 1;
    const int t = FaciesImage::PLOT_TOP + 1;
    EXPECT_EQ(pixel(writer.written["top.png"], l, t), expected(8));
    EXPECT_EQ(pixel(writer.written[z], l, t), expected(8));
    EXPECT_EQ(pixel(writer.written["slice_12.5.png"], l, t), expected(NONE));
    EXPECT_EQ(pixel(writer.written["section_x.png"], l, t), expected(8));

    // A failing writer, and a directory that cannot be made, give false with the reason.
    writer.fail = true;
    EXPECT_FALSE(sim.savePreviews(dir, {}));
    EXPECT_NE(sim.getLastMessage().find("disk full"), std::string::npos);
    writer.fail = false;
    testing_support::write_file(tmp.path().string() + "/plain", "x");
    EXPECT_FALSE(sim.savePreviews(tmp.path().string() + "/plain/sub", {}));
    EXPECT_NE(sim.getLastMessage().find("Cannot create preview directory"), std::string::npos);
}
