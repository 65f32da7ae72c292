#include "kernel/files/FaciesImage.h"

#include "interface/iDomain.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/geometry/GridParams.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace
{

constexpr int GLYPH_WIDTH = 5;
constexpr int GLYPH_HEIGHT = 7;
constexpr int TEXT_SCALE = 2;
constexpr int SWATCH = GLYPH_HEIGHT * TEXT_SCALE;
constexpr int PAD = 8;
constexpr unsigned char WHITE[3] = {255, 255, 255};
constexpr unsigned char BLACK[3] = {0, 0, 0};
// Room under a picture for the tick values and the axis name.
constexpr int PLOT_BOTTOM = 56;
constexpr int PLOT_GAP = 24;
constexpr int TICK = 5;
// Sections are at most this many pixels high, and at least the lower bound.
constexpr int MAX_ROWS = 400;
constexpr int MIN_ROWS = 80;
constexpr double NONE_REAL = 1e30;

// Preview colours by family id. They keep the hue of the register's colours
// where it reads well and move the families a reader confused: splay
// channels (red) away from point bars (yellow), overbank (pale green) away
// from levees (olive), sand plugs (tan) away from overbank, and
// draping away from undefined.
constexpr unsigned char PALETTE[][3] = {
    {160, 140, 230}, // undefined
    {255, 128, 0},   // channel lag
    {255, 235, 0},   // point bar
    {205, 170, 125}, // sand plug
    {160, 82, 45},   // crevasse splay I
    {220, 20, 60},   // splay II channels
    {180, 140, 0},   // crevasse splay II
    {100, 150, 20},  // levee
    {165, 230, 145}, // overbank
    {0, 140, 130},   // mud plug
    {128, 128, 128}, // hemipelagic plug
    {150, 60, 180},  // wetland
    {120, 210, 240}, // draping
    {255, 190, 220}, // pelagic
};

struct Glyph
{
    char c;
    const char* rows; // 7 rows of 5 columns, '#' for ink
};

// A plain 5 x 7 font: enough for family names, titles and numbers.
const Glyph FONT[] = {
    {'A', ".###.#...##...#######...##...##...#"},
    {'B', "####.#...##...#####.#...##...#####."},
    {'C', ".###.#...##....#....#....#...#.###."},
    {'D', "####.#...##...##...##...##...#####."},
    {'E', "######....#....####.#....#....#####"},
    {'F', "######....#....####.#....#....#...."},
    {'G', ".###.#...##....#.####...##...#.####"},
    {'H', "#...##...##...#######...##...##...#"},
    {'I', ".###...#....#....#....#....#...###."},
    {'J', "..###...#....#....#....#.#..#..##.."},
    {'K', "#...##..#.#.#..##...#.#..#..#.#...#"},
    {'L', "#....#....#....#....#....#....#####"},
    {'M', "#...###.###.#.##.#.##...##...##...#"},
    {'N', "#...##...###..##.#.##..###...##...#"},
    {'O', ".###.#...##...##...##...##...#.###."},
    {'P', "####.#...##...#####.#....#....#...."},
    {'Q', ".###.#...##...##...##.#.##..#..##.#"},
    {'R', "####.#...##...#####.#.#..#..#.#...#"},
    {'S', ".#####....#.....###.....#....#####."},
    {'T', "#####..#....#....#....#....#....#.."},
    {'U', "#...##...##...##...##...##...#.###."},
    {'V', "#...##...##...##...##...#.#.#...#.."},
    {'W', "#...##...##...##.#.##.#.##.#.#.#.#."},
    {'X', "#...##...#.#.#...#...#.#.#...##...#"},
    {'Y', "#...##...#.#.#...#....#....#....#.."},
    {'Z', "#####....#...#...#...#...#....#####"},
    {'0', ".###.#...##..###.#.###..##...#.###."},
    {'1', "..#...##....#....#....#....#...###."},
    {'2', ".###.#...#....#...#...#...#...#####"},
    {'3', "#####...#...#.....#.....##...#.###."},
    {'4', "...#...##..#.#.#..#.#####...#....#."},
    {'5', "######....####.....#....##...#.###."},
    {'6', "..##..#...#....####.#...##...#.###."},
    {'7', "#####....#...#...#...#....#....#..."},
    {'8', ".###.#...##...#.###.#...##...#.###."},
    {'9', ".###.#...##...#.####....#...#..##.."},
    {' ', "..................................."},
    {'/', "....#....#...#...#...#...#....#...."},
    {'.', "..........................##...##.."},
    {',', ".....................##....#...#..."},
    {'-', "...............#####..............."},
    {'=', "..........#####.....#####.........."},
    {':', "......##...##........##...##......."},
    {'(', "...#...#...#....#....#.....#.....#."},
    {')', ".#.....#.....#....#....#...#...#..."},
    {'_', "..............................#####"},
    {'+', ".......#....#..#####..#....#......."},
    {'?', ".###.#...#....#...#...#.........#.."},
    // Lower case only where upper case would mislead: metres and "times".
    {'m', "..........##.#.#.#.##.#.##.#.##...#"},
    {'x', "..........#...#.#.#...#...#.#.#...#"},

};

const Glyph* find_glyph(char c)
{
    for (const Glyph& g : FONT)
        if (g.c == c)
            return &g;
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (const Glyph& g : FONT)
        if (g.c == upper)
            return &g;
    for (const Glyph& g : FONT)
        if (g.c == '?')
            return &g;
    return nullptr;
}

RgbImage blank(int width, int height)
{
    RgbImage image;
    image.width = width;
    image.height = height;
    image.rgb.assign(static_cast<size_t>(width) * static_cast<size_t>(height) * 3, 255);
    return image;
}

void put(RgbImage& image, int x, int y, const unsigned char rgb[3])
{
    if (x < 0 || y < 0 || x >= image.width || y >= image.height)
        return;
    const size_t k = (static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x)) * 3;
    image.rgb[k] = rgb[0];
    image.rgb[k + 1] = rgb[1];
    image.rgb[k + 2] = rgb[2];
}

void fill(RgbImage& image, int x, int y, int width, int height, const unsigned char rgb[3])
{
    for (int v = y; v < y + height; ++v)
        for (int u = x; u < x + width; ++u)
            put(image, u, v, rgb);
}

// A one-pixel line just outside the rectangle, so that blank places stay visible.
void frame(RgbImage& image, int x, int y, int width, int height)
{
    fill(image, x - 1, y - 1, width + 2, 1, BLACK);
    fill(image, x - 1, y + height, width + 2, 1, BLACK);
    fill(image, x - 1, y - 1, 1, height + 2, BLACK);
    fill(image, x + width, y - 1, 1, height + 2, BLACK);
}

void paste(RgbImage& target, const RgbImage& source, int x, int y)
{
    for (int v = 0; v < source.height; ++v)
        for (int u = 0; u < source.width; ++u)
            put(target, x + u, y + v, &source.rgb[(static_cast<size_t>(v) * source.width + u) * 3]);
}

unsigned char to_byte(double intensity)
{
    return static_cast<unsigned char>(std::lround(std::clamp(intensity, 0., 1.) * 255.));
}

std::string number(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

// A value on an axis with as many decimals as its step needs.
std::string axis_number(double value, double step)
{
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    std::ostringstream out;
    out << std::fixed << std::setprecision(decimals) << (std::fabs(value) < step * 1e-6 ? 0. : value);
    return out.str();
}

void line(RgbImage& image, double x0, double y0, double x1, double y1, int thickness)
{
    const int steps = static_cast<int>(std::ceil(std::max(std::fabs(x1 - x0), std::fabs(y1 - y0)))) + 1;
    for (int k = 0; k <= steps; ++k)
    {
        const double t = static_cast<double>(k) / steps;
        const int x = static_cast<int>(std::lround(x0 + t * (x1 - x0))) - thickness / 2;
        const int y = static_cast<int>(std::lround(y0 + t * (y1 - y0))) - thickness / 2;
        fill(image, x, y, thickness, thickness, BLACK);
    }
}

// An arrow of `length` pixels centred on (cx, cy), pointing along (ux, uy) in pixels.
void arrow(RgbImage& image, double cx, double cy, double ux, double uy, double length)
{
    const double norm = std::hypot(ux, uy);
    if (!(norm > 0.))
        return;
    ux /= norm;
    uy /= norm;
    const double tx = cx + ux * length / 2;
    const double ty = cy + uy * length / 2;
    line(image, cx - ux * length / 2, cy - uy * length / 2, tx, ty, 3);
    // Head: two strokes at 30 degrees either side of the shaft.
    const double head = length / 3;
    const double c = std::cos(MP_PI / 6);
    const double s = std::sin(MP_PI / 6);
    line(image, tx, ty, tx - head * (ux * c - uy * s), ty - head * (uy * c + ux * s), 3);
    line(image, tx, ty, tx - head * (ux * c + uy * s), ty - head * (uy * c - ux * s), 3);
}

} // namespace

FaciesImage::FaciesImage(const iDomain& domain, int cell, int rows)
    : _domain(domain), _nx(domain.getGridParams().getNx()), _ny(domain.getGridParams().getNy()), _cell(cell),
      _rows(rows)
{
    MP_ASSERT(_nx > 0 && _ny > 0);
    // About 900 pixels across the larger side, at most 8 pixels per node:
    // channels of the default block are then several pixels wide.
    if (_cell <= 0)
        _cell = std::clamp(900 / std::max(_nx, _ny), 1, 8);
    if (_rows > 0)
        return;
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    _rows = 200;
    if (!(zmin < zmax))
        return;
    // The largest round exaggeration (1, 2, 5, 10, ...) that fits the height.
    const double pixels_per_metre = _cell / domain.getGridParams().getDx() * (zmax - zmin);
    double chosen = MAX_ROWS;
    for (double ve = 1.; ve <= 1e6; ve *= 10.)
        for (double factor : {1., 2., 5.})
            if (ve * factor * pixels_per_metre <= MAX_ROWS)
                chosen = ve * factor * pixels_per_metre;
    _rows = std::clamp(static_cast<int>(std::lround(chosen)), MIN_ROWS, MAX_ROWS);
}

std::vector<unsigned char> FaciesImage::top_families() const
{
    std::vector<unsigned char> out(static_cast<size_t>(_nx) * static_cast<size_t>(_ny), NO_DEPOSIT);
    size_t k = 0;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i, ++k)
        {
            const std::vector<DepositUnit> stack = _domain.getStack(i, j);
            // Units too thin to hold a step of thickness do not show at the surface.
            for (auto it = stack.rbegin(); it != stack.rend(); ++it)
                if (it->thickness() > 0.)
                {
                    out[k] = it->family();
                    break;
                }
        }
    return out;
}

std::vector<unsigned char> FaciesImage::slice_families(double z) const
{
    std::vector<unsigned char> out(static_cast<size_t>(_nx) * static_cast<size_t>(_ny), NO_DEPOSIT);
    size_t k = 0;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i, ++k)
        {
            unsigned char facies = 0;
            unsigned int age = 0;
            if (_domain.getSliceInfo(i, j, z, facies, age))
                out[k] = Facies::family(facies);
        }
    return out;
}

void FaciesImage::section_range(double& zmin, double& zmax) const
{
    _domain.min_and_max_elevation_geo(zmin, zmax);
    if (!(zmin < zmax))
        zmax = zmin;
}

double FaciesImage::vertical_exaggeration(bool along_x) const
{
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    if (!(zmin < zmax))
        return 1.;
    const GridParams& grid = _domain.getGridParams();
    const double horizontal = _cell / (along_x ? grid.getDx() : grid.getDy());
    return (_rows / (zmax - zmin)) / horizontal;
}

std::vector<unsigned char> FaciesImage::section_families(bool along_x, int index) const
{
    const int n = along_x ? _nx : _ny;
    MP_ASSERT(index >= 0 && index < (along_x ? _ny : _nx));
    std::vector<unsigned char> out(static_cast<size_t>(n) * static_cast<size_t>(_rows), NO_DEPOSIT);
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    if (!(zmin < zmax))
        return out;
    // Each line samples the middle of its slab of elevation.
    const double dz = (zmax - zmin) / _rows;
    for (int r = 0; r < _rows; ++r)
    {
        const double z = zmax - (r + 0.5) * dz;
        for (int k = 0; k < n; ++k)
        {
            unsigned char facies = 0;
            unsigned int age = 0;
            const int i = along_x ? k : index;
            const int j = along_x ? index : k;
            if (_domain.getSliceInfo(i, j, z, facies, age))
                out[static_cast<size_t>(r) * n + k] = Facies::family(facies);
        }
    }
    return out;
}

RgbImage FaciesImage::paint(const std::vector<unsigned char>& families, int columns, int lines,
                            int line_height, bool north_up) const
{
    RgbImage image = blank(columns * _cell, lines * line_height);
    for (int l = 0; l < lines; ++l)
    {
        const int y = (north_up ? lines - 1 - l : l) * line_height;
        for (int c = 0; c < columns; ++c)
        {
            unsigned char rgb[3];
            family_colour(families[static_cast<size_t>(l) * columns + c], rgb);
            fill(image, c * _cell, y, _cell, line_height, rgb);
        }
    }
    return image;
}

RgbImage FaciesImage::top_map() const
{
    return paint(top_families(), _nx, _ny, _cell, true);
}

RgbImage FaciesImage::slice_map(double z) const
{
    return paint(slice_families(z), _nx, _ny, _cell, true);
}

RgbImage FaciesImage::section_x(int j) const
{
    return paint(section_families(true, j), _nx, _rows, 1, false);
}

RgbImage FaciesImage::section_y(int i) const
{
    return paint(section_families(false, i), _ny, _rows, 1, false);
}

int FaciesImage::middle(bool along_x) const
{
    return (along_x ? _ny : _nx) / 2;
}

bool FaciesImage::geographic() const
{
    return _domain.getGridParams().getRotation() == 0.;
}

FaciesImage::Axis FaciesImage::map_axis(bool along_x) const
{
    const GridParams& grid = _domain.getGridParams();
    const Point2D origin = geographic() ? grid.grid2Geo(Point2D(0., 0.)) : grid.grid2Rel(0., 0.);
    const double at_first = along_x ? origin.get_abscissa() : origin.get_ordinate();
    const double step = along_x ? grid.getDx() : grid.getDy();
    const int n = along_x ? _nx : _ny;
    // A node's value is at the middle of its pixels.
    std::string name = along_x ? "X (m)" : "Y (m)";
    if (!geographic())
        name = along_x ? "X along the grid (m)" : "Y along the grid (m)";
    return {at_first - step / 2, at_first + (n - 0.5) * step, name};
}

std::string FaciesImage::section_place(bool along_x, int index) const
{
    const Axis across = map_axis(!along_x);
    const GridParams& grid = _domain.getGridParams();
    const double step = along_x ? grid.getDy() : grid.getDx();
    const double at = across.first + (index + 0.5) * step;
    // On a rotated grid the axes are the grid's, and the title says so.
    const std::string frame = geographic() ? "" : "grid ";
    return "Section along " + frame + (along_x ? "X" : "Y") + " at " + frame + (along_x ? "Y" : "X") + " = " +
           number(at) + " m";
}

RgbImage FaciesImage::map_legend(const std::string& title, const std::vector<unsigned char>& families) const
{
    std::vector<std::string> lines = {title};
    const GridParams& grid = _domain.getGridParams();
    if (!geographic())
        lines.push_back("Grid rotated " + number(grid.getRotation()) + " deg");
    const RgbImage base = legend(lines, families);
    const int below = 150;
    RgbImage image = blank(std::max(base.width, 240), base.height + below);
    paste(image, base, 0, 0);

    // Scale bar: a round length near a quarter of the map, in two halves.
    const double metres_per_pixel = grid.getDx() / _cell;
    double length = tick_step(_nx * grid.getDx(), 4);
    while (length / metres_per_pixel > image.width - 3 * PAD && length > grid.getDx())
        length /= 2;
    const int bar = std::max(2, static_cast<int>(std::lround(length / metres_per_pixel)));
    const int bar_y = base.height + PAD;
    fill(image, PAD, bar_y, bar / 2, 8, BLACK);
    frame(image, PAD, bar_y, bar, 8);
    draw_text(image, PAD, bar_y + 14, "0", TEXT_SCALE);
    const std::string end = number(length) + " m";
    draw_text(image,
              std::max(PAD + bar - text_width(end, TEXT_SCALE) / 2, PAD + 2 * TEXT_SCALE * GLYPH_WIDTH),
              bar_y + 14, end, TEXT_SCALE);

    // North, then the flow, as arrows on the picture's axes.
    const int arrows_y = bar_y + 14 + GLYPH_HEIGHT * TEXT_SCALE + 40;
    const double rotation = grid.getRotation() * MP_PI / 180.;
    const double north_x = PAD + 24;
    arrow(image, north_x, arrows_y, std::sin(rotation), -std::cos(rotation), 40);
    draw_text(image, static_cast<int>(north_x) - TEXT_SCALE * GLYPH_WIDTH / 2, arrows_y + 24 + TEXT_SCALE,
              "N", TEXT_SCALE);
    const double flow = _domain.getFlowAngle();
    if (flow != NONE_REAL)
    {
        const double flow_x = PAD + 120;
        arrow(image, flow_x, arrows_y, std::cos(flow), -std::sin(flow), 40);
        draw_text(image, static_cast<int>(flow_x) - text_width("Flow", TEXT_SCALE) / 2,
                  arrows_y + 24 + TEXT_SCALE, "Flow", TEXT_SCALE);
    }
    return image;
}

// The families are read from the block once, for the picture and its legend.
RgbImage FaciesImage::top_preview() const
{
    const std::vector<unsigned char> families = top_families();
    return compose(paint(families, _nx, _ny, _cell, true), map_axis(true), map_axis(false),
                   map_legend("Top of the deposits", legend_families(families)));
}

RgbImage FaciesImage::slice_preview(double z) const
{
    const std::vector<unsigned char> families = slice_families(z);
    return compose(paint(families, _nx, _ny, _cell, true), map_axis(true), map_axis(false),
                   map_legend("Slice at Z = " + number(z) + " m", legend_families(families)));
}

RgbImage FaciesImage::section_preview(bool along_x) const
{
    const int index = middle(along_x);
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    std::ostringstream exaggeration;
    exaggeration << "Vertical exaggeration x" << std::setprecision(3) << vertical_exaggeration(along_x);
    const std::vector<std::string> title = {section_place(along_x, index), exaggeration.str()};
    const std::vector<unsigned char> families = section_families(along_x, index);
    const RgbImage picture = paint(families, along_x ? _nx : _ny, _rows, 1, false);
    return compose(picture, map_axis(along_x), {zmin, zmax, "Z (m)"},
                   legend(title, legend_families(families)));
}

RgbImage FaciesImage::section_x_preview() const
{
    return section_preview(true);
}

RgbImage FaciesImage::section_y_preview() const
{
    return section_preview(false);
}

std::vector<unsigned char> FaciesImage::legend_families(const std::vector<unsigned char>& values)
{
    std::vector<unsigned char> out = families_present(values);
    if (std::find(values.begin(), values.end(), NO_DEPOSIT) != values.end())
        out.push_back(NO_DEPOSIT);
    return out;
}

std::vector<unsigned char> FaciesImage::families_present(const std::vector<unsigned char>& values)
{
    bool seen[256] = {};
    for (unsigned char v : values)
        seen[v] = true;
    std::vector<unsigned char> out;
    for (int f = 0; f < 256; ++f)
        if (seen[f] && f != NO_DEPOSIT)
            out.push_back(static_cast<unsigned char>(f));
    return out;
}

void FaciesImage::family_colour(unsigned char family, unsigned char rgb[3])
{
    if (family == NO_DEPOSIT)
    {
        std::copy(WHITE, WHITE + 3, rgb);
        return;
    }
    constexpr size_t known = sizeof(PALETTE) / sizeof(PALETTE[0]);
    if (family < known)
    {
        std::copy(PALETTE[family], PALETTE[family] + 3, rgb);
        return;
    }
    // A family beyond the table keeps the register's colour.
    const KemoColor color = Facies::description(family).color();
    rgb[0] = to_byte(color.red());
    rgb[1] = to_byte(color.green());
    rgb[2] = to_byte(color.blue());
}

void FaciesImage::swatch_position(int title_lines, int n, int& x, int& y)
{
    x = PAD;
    y = PAD + (title_lines + n) * LEGEND_LINE;
}

RgbImage FaciesImage::legend(const std::vector<std::string>& title,
                             const std::vector<unsigned char>& families)
{
    const int title_lines = static_cast<int>(title.size());
    const int text_x = PAD + SWATCH + PAD;
    int width = 0;
    for (const std::string& line : title)
        width = std::max(width, PAD + text_width(line, TEXT_SCALE));
    std::vector<std::string> names;
    for (unsigned char f : families)
    {
        names.push_back(f == NO_DEPOSIT ? "No deposit" : Facies::description(f).long_name());
        width = std::max(width, text_x + text_width(names.back(), TEXT_SCALE));
    }
    const int lines = title_lines + static_cast<int>(families.size());
    RgbImage image = blank(width + PAD, 2 * PAD + lines * LEGEND_LINE);
    for (int t = 0; t < title_lines; ++t)
        draw_text(image, PAD, PAD + t * LEGEND_LINE, title[static_cast<size_t>(t)], TEXT_SCALE);
    for (size_t n = 0; n < families.size(); ++n)
    {
        int x = 0;
        int y = 0;
        swatch_position(title_lines, static_cast<int>(n), x, y);
        unsigned char rgb[3];
        family_colour(families[n], rgb);
        fill(image, x, y, SWATCH, SWATCH, rgb);
        frame(image, x, y, SWATCH, SWATCH);
        draw_text(image, text_x, y, names[n], TEXT_SCALE);
    }
    return image;
}

double FaciesImage::tick_step(double range, int count)
{
    if (!(range > 0.) || count < 1)
        return 1.;
    const double raw = range / count;
    const double power = std::pow(10., std::floor(std::log10(raw)));
    for (double factor : {1., 2., 5.})
        if (factor * power >= raw * 0.75)
            return factor * power;
    return 10. * power;
}

RgbImage FaciesImage::compose(const RgbImage& picture, const Axis& x, const Axis& y, const RgbImage& legend)
{
    const int width = PLOT_LEFT + picture.width + PLOT_GAP + legend.width;
    const int height = std::max(PLOT_TOP + picture.height + PLOT_BOTTOM, legend.height + MARGIN);
    RgbImage image = blank(width, height);
    paste(image, picture, PLOT_LEFT, PLOT_TOP);
    frame(image, PLOT_LEFT, PLOT_TOP, picture.width, picture.height);
    paste(image, legend, PLOT_LEFT + picture.width + PLOT_GAP, PLOT_TOP - PAD);
    const int glyph_height = GLYPH_HEIGHT * TEXT_SCALE;
    const int bottom = PLOT_TOP + picture.height;

    // Bottom axis: a tick under the frame and the value centred under it.
    if (x.last != x.first)
    {
        const double step = tick_step(std::fabs(x.last - x.first), std::max(2, picture.width / 130));
        for (double v = std::ceil(std::min(x.first, x.last) / step) * step; v <= std::max(x.first, x.last);
             v += step)
        {
            const int px =
                PLOT_LEFT + static_cast<int>(std::lround((v - x.first) / (x.last - x.first) * picture.width));
            fill(image, px, bottom + 1, 1, TICK, BLACK);
            const std::string label = axis_number(v, step);
            draw_text(image, px - text_width(label, TEXT_SCALE) / 2, bottom + TICK + 4, label, TEXT_SCALE);
        }
    }
    draw_text(image, PLOT_LEFT + (picture.width - text_width(x.name, TEXT_SCALE)) / 2,
              bottom + TICK + 4 + glyph_height + 8, x.name, TEXT_SCALE);

    // Left axis, first value at the bottom; values too wide for the room get the small font.
    if (y.last != y.first)
    {
        const double step = tick_step(std::fabs(y.last - y.first), std::max(2, picture.height / 60));
        for (double v = std::ceil(std::min(y.first, y.last) / step) * step; v <= std::max(y.first, y.last);
             v += step)
        {
            const int py =
                bottom - static_cast<int>(std::lround((v - y.first) / (y.last - y.first) * picture.height));
            fill(image, PLOT_LEFT - 1 - TICK, py, TICK, 1, BLACK);
            const std::string label = axis_number(v, step);
            const int scale = text_width(label, TEXT_SCALE) <= PLOT_LEFT - 2 * TICK - MARGIN ? TEXT_SCALE : 1;
            draw_text(image, PLOT_LEFT - 2 * TICK - 2 - text_width(label, scale),
                      py - GLYPH_HEIGHT * scale / 2, label, scale);
        }
    }
    draw_text(image, MARGIN, PLOT_TOP - glyph_height - 10, y.name, TEXT_SCALE);
    return image;
}

int FaciesImage::text_width(const std::string& text, int scale)
{
    if (text.empty())
        return 0;
    return static_cast<int>(text.size()) * (GLYPH_WIDTH + 1) * scale - scale;
}

void FaciesImage::draw_text(RgbImage& image, int x, int y, const std::string& text, int scale)
{
    for (size_t n = 0; n < text.size(); ++n)
    {
        // The lower-case glyphs stand for units and factors ("m", "x"), never inside a word.
        char c = text[n];
        const bool alone = (n == 0 || !std::isalpha(static_cast<unsigned char>(text[n - 1]))) &&
                           (n + 1 == text.size() || !std::isalpha(static_cast<unsigned char>(text[n + 1])));
        if (!alone)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        const Glyph* glyph = find_glyph(c);
        if (glyph == nullptr)
            continue;
        const int left = x + static_cast<int>(n) * (GLYPH_WIDTH + 1) * scale;
        for (int r = 0; r < GLYPH_HEIGHT; ++r)
            for (int c = 0; c < GLYPH_WIDTH; ++c)
                if (glyph->rows[r * GLYPH_WIDTH + c] == '#')
                    fill(image, left + c * scale, y + r * scale, scale, scale, BLACK);
    }
}
