#include "kernel/FaciesImage.h"

#include "interface/iDomain.h"
#include "kernel/Assert.h"
#include "kernel/Facies.h"

#include <algorithm>
#include <cctype>
#include <cmath>
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

struct Glyph
{
    char c;
    const char* rows; // 7 rows of 5 columns, '#' for ink
};

// A plain 5 x 7 font: enough for family names, titles and numbers.
const Glyph FONT[] = {
    {'A', ".###.#...##...#######...##...##...#"}, {'B', "####.#...##...#####.#...##...#####."},
    {'C', ".###.#...##....#....#....#...#.###."}, {'D', "####.#...##...##...##...##...#####."},
    {'E', "######....#....####.#....#....#####"}, {'F', "######....#....####.#....#....#...."},
    {'G', ".###.#...##....#.####...##...#.####"}, {'H', "#...##...##...#######...##...##...#"},
    {'I', ".###...#....#....#....#....#...###."}, {'J', "..###...#....#....#....#.#..#..##.."},
    {'K', "#...##..#.#.#..##...#.#..#..#.#...#"}, {'L', "#....#....#....#....#....#....#####"},
    {'M', "#...###.###.#.##.#.##...##...##...#"}, {'N', "#...##...###..##.#.##..###...##...#"},
    {'O', ".###.#...##...##...##...##...#.###."}, {'P', "####.#...##...#####.#....#....#...."},
    {'Q', ".###.#...##...##...##.#.##..#..##.#"}, {'R', "####.#...##...#####.#.#..#..#.#...#"},
    {'S', ".#####....#.....###.....#....#####."}, {'T', "#####..#....#....#....#....#....#.."},
    {'U', "#...##...##...##...##...##...#.###."}, {'V', "#...##...##...##...##...#.#.#...#.."},
    {'W', "#...##...##...##.#.##.#.##.#.#.#.#."}, {'X', "#...##...#.#.#...#...#.#.#...##...#"},
    {'Y', "#...##...#.#.#...#....#....#....#.."}, {'Z', "#####....#...#...#...#...#....#####"},
    {'0', ".###.#...##..###.#.###..##...#.###."}, {'1', "..#...##....#....#....#....#...###."},
    {'2', ".###.#...#....#...#...#...#...#####"}, {'3', "#####...#...#.....#.....##...#.###."},
    {'4', "...#...##..#.#.#..#.#####...#....#."}, {'5', "######....####.....#....##...#.###."},
    {'6', "..##..#...#....####.#...##...#.###."}, {'7', "#####....#...#...#...#....#....#..."},
    {'8', ".###.#...##...#.###.#...##...#.###."}, {'9', ".###.#...##...#.####....#...#..##.."},
    {' ', "..................................."}, {'/', "....#....#...#...#...#...#....#...."},
    {'.', "..........................##...##.."}, {',', ".....................##....#...#..."},
    {'-', "...............#####..............."}, {'=', "..........#####.....#####.........."},
    {':', "......##...##........##...##......."}, {'(', "...#...#...#....#....#.....#.....#."},
    {')', ".#.....#.....#....#....#...#...#..."}, {'_', "..............................#####"},
    {'+', ".......#....#..#####..#....#......."}, {'?', ".###.#...#....#...#...#.........#.."},

};

const Glyph* find_glyph(char c)
{
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

} // namespace

FaciesImage::FaciesImage(const iDomain& domain, int cell, int rows)
    : _domain(domain), _nx(domain.getGridParams().getNx()), _ny(domain.getGridParams().getNy()), _cell(cell),
      _rows(rows)
{
    MP_ASSERT(_nx > 0 && _ny > 0);
    // About 600 pixels across the larger side, at most 8 pixels per node.
    if (_cell <= 0)
        _cell = std::clamp(600 / std::max(_nx, _ny), 1, 8);
    if (_rows <= 0)
        _rows = 200;
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

RgbImage FaciesImage::top_preview() const
{
    return compose(top_map(), legend({"Top of the deposits"}, families_present(top_families())));
}

RgbImage FaciesImage::slice_preview(double z) const
{
    return compose(slice_map(z), legend({"Slice at z = " + number(z)}, families_present(slice_families(z))));
}

RgbImage FaciesImage::section_x_preview() const
{
    const int j = middle(true);
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    const std::vector<std::string> title = {"Section along x, j = " + std::to_string(j),
                                            "z from " + number(zmin) + " to " + number(zmax)};
    return compose(section_x(j), legend(title, families_present(section_families(true, j))));
}

RgbImage FaciesImage::section_y_preview() const
{
    const int i = middle(false);
    double zmin = 0.;
    double zmax = 0.;
    section_range(zmin, zmax);
    const std::vector<std::string> title = {"Section along y, i = " + std::to_string(i),
                                            "z from " + number(zmin) + " to " + number(zmax)};
    return compose(section_y(i), legend(title, families_present(section_families(false, i))));
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
        names.push_back(Facies::description(f).long_name());
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

RgbImage FaciesImage::compose(const RgbImage& picture, const RgbImage& legend)
{
    const int width = MARGIN + picture.width + MARGIN + legend.width;
    const int height = std::max(2 * MARGIN + picture.height, legend.height);
    RgbImage image = blank(width, height);
    paste(image, picture, MARGIN, MARGIN);
    frame(image, MARGIN, MARGIN, picture.width, picture.height);
    paste(image, legend, 2 * MARGIN + picture.width, 0);
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
        const Glyph* glyph = find_glyph(text[n]);
        if (glyph == nullptr)
            continue;
        const int left = x + static_cast<int>(n) * (GLYPH_WIDTH + 1) * scale;
        for (int r = 0; r < GLYPH_HEIGHT; ++r)
            for (int c = 0; c < GLYPH_WIDTH; ++c)
                if (glyph->rows[r * GLYPH_WIDTH + c] == '#')
                    fill(image, left + c * scale, y + r * scale, scale, scale, BLACK);
    }
}
