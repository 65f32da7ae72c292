#pragma once
// Pictures of the block for a quick look without the desktop application:
// maps of the facies families seen from above and vertical sections, each
// beside a legend of the families it shows, in the colours of the facies
// register. Maps have north up and i to the right; sections have the
// elevation up.

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

    // `cell` pixels per node on maps and along sections, `rows` pixels of
    // elevation on sections; 0 lets the size of the grid choose.
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

    // --- Bare pictures, one block of cell x cell pixels per node.
    RgbImage top_map() const;
    RgbImage slice_map(double z) const;
    RgbImage section_x(int j) const;
    RgbImage section_y(int i) const;

    // --- Previews: a bare picture framed at (MARGIN, MARGIN), its legend on the right.
    RgbImage top_preview() const;
    RgbImage slice_preview(double z) const;
    // Through the middle row and the middle column.
    RgbImage section_x_preview() const;
    RgbImage section_y_preview() const;

    // --- Pieces
    // The families found in `values`, by id, without NO_DEPOSIT.
    static std::vector<unsigned char> families_present(const std::vector<unsigned char>& values);
    // The register's colour of a family; white for NO_DEPOSIT.
    static void family_colour(unsigned char family, unsigned char rgb[3]);
    // Title lines, then one line per family: a swatch and the family's long name.
    static RgbImage legend(const std::vector<std::string>& title, const std::vector<unsigned char>& families);
    // Top-left pixel of the swatch of the n-th family in a legend with `title_lines` lines of title.
    static void swatch_position(int title_lines, int n, int& x, int& y);
    static RgbImage compose(const RgbImage& picture, const RgbImage& legend);
    // Upper-case text in a built-in 5 x 7 font magnified `scale` times.
    static void draw_text(RgbImage& image, int x, int y, const std::string& text, int scale);
    static int text_width(const std::string& text, int scale);

private:
    // `families` holds `lines` lines of `columns` values; with `north_up` the
    // first line is the bottom of the picture.
    RgbImage paint(const std::vector<unsigned char>& families, int columns, int lines, int line_height,
                   bool north_up) const;
    int middle(bool along_x) const;

    const iDomain& _domain;
    int _nx;
    int _ny;
    int _cell;
    int _rows;
};
