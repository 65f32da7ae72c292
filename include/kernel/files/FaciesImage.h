#pragma once
// Pictures of the block for a quick look without the desktop application:
// maps of the facies families seen from above and vertical sections, read
// as a geological figure: axes in metres (geographic ones when the grid is
// not rotated), a legend of the families shown in colours that can be told
// apart, a scale bar, the north and the flow on maps, the section's place
// and its vertical exaggeration on sections. Maps have i to the right and j
// up; sections have the elevation up.

#include "interface/iImageWriter.h"

#include <string>
#include <vector>

class iDomain;

class FaciesImage
{
public:
    // Family value of a place where nothing was deposited.
    static constexpr unsigned char NO_DEPOSIT = 255;
    // Blank border around a picture, in pixels.
    static constexpr int MARGIN = 8;
    // Height of one line of the legend, in pixels.
    static constexpr int LEGEND_LINE = 20;
    // Top-left pixel of the bare picture in a preview: room for the axes.
    static constexpr int PLOT_LEFT = 112;
    static constexpr int PLOT_TOP = 32;

    // `cell` pixels per node on maps and along sections, `rows` pixels of
    // elevation on sections; 0 lets the size of the grid choose (sections
    // then get a round vertical exaggeration).
    explicit FaciesImage(const iDomain& domain, int cell = 0, int rows = 0);

    int cell() const { return _cell; }
    int rows() const { return _rows; }

    // --- Families, NO_DEPOSIT where there is none.
    // The family of the topmost unit of each column, i fastest.
    std::vector<unsigned char> top_families() const;
    // The family at geographic elevation z of each column, i fastest.
    std::vector<unsigned char> slice_families(double z) const;
    // The section through row j (along x) or column i (along y): `rows()`
    // lines from the highest top down to the lowest base, one value per node.
    std::vector<unsigned char> section_families(bool along_x, int index) const;
    // Geographic elevations spanned by sections (equal on an empty block).
    void section_range(double& zmin, double& zmax) const;
    // Vertical over horizontal scale of a section; 1 on an empty block.
    double vertical_exaggeration(bool along_x) const;

    // --- Bare pictures, one block of cell x cell pixels per node.
    RgbImage top_map() const;
    RgbImage slice_map(double z) const;
    RgbImage section_x(int j) const;
    RgbImage section_y(int i) const;

    // --- Previews: a bare picture framed at (PLOT_LEFT, PLOT_TOP) with its
    // axes, its legend on the right.
    RgbImage top_preview() const;
    RgbImage slice_preview(double z) const;
    // Through the middle row and the middle column.
    RgbImage section_x_preview() const;
    RgbImage section_y_preview() const;

    // --- Pieces
    // The families found in `values`, by id, without NO_DEPOSIT.
    static std::vector<unsigned char> families_present(const std::vector<unsigned char>& values);
    // The same, then NO_DEPOSIT when a place has none: what a legend lists.
    static std::vector<unsigned char> legend_families(const std::vector<unsigned char>& values);
    // The colour of a family in previews: the hue of the register's colour,
    // set apart where two families would look alike; white for NO_DEPOSIT.
    static void family_colour(unsigned char family, unsigned char rgb[3]);
    // A round step for about `count` ticks over `range`: 1, 2 or 5 times a power of ten.
    static double tick_step(double range, int count);
    // Title lines, then one line per family: a swatch and the family's long
    // name ("No deposit" for NO_DEPOSIT, in white).
    static RgbImage legend(const std::vector<std::string>& title, const std::vector<unsigned char>& families);
    // Top-left pixel of the swatch of the n-th family in a legend with `title_lines` lines of title.
    static void swatch_position(int title_lines, int n, int& x, int& y);
    // Value of an axis at its first and last pixel edge, and its name.
    struct Axis
    {
        double first;
        double last;
        std::string name;
    };
    // The picture at (PLOT_LEFT, PLOT_TOP), framed, with ticks and values
    // along its bottom (`x`) and left (`y`, `y.first` at the bottom) sides,
    // and the legend on its right.
    static RgbImage compose(const RgbImage& picture, const Axis& x, const Axis& y, const RgbImage& legend);
    // Upper-case text in a built-in 5 x 7 font magnified `scale` times.
    static void draw_text(RgbImage& image, int x, int y, const std::string& text, int scale);
    static int text_width(const std::string& text, int scale);

private:
    // `families` holds `lines` lines of `columns` values; with `north_up` the
    // first line is the bottom of the picture.
    RgbImage paint(const std::vector<unsigned char>& families, int columns, int lines, int line_height,
                   bool north_up) const;
    int middle(bool along_x) const;
    // Axes of maps and sections in metres; geographic when the grid is not rotated.
    bool geographic() const;
    Axis map_axis(bool along_x) const;
    // Where a section along x (through row `index`) or along y lies, in words.
    std::string section_place(bool along_x, int index) const;
    // Map legend: families, then a scale bar, the north and the flow.
    RgbImage map_legend(const std::string& title, const std::vector<unsigned char>& families) const;
    RgbImage section_preview(bool along_x) const;

    const iDomain& _domain;
    int _nx;
    int _ny;
    int _cell;
    int _rows;
};
