#pragma once
// The colours in which the views paint the block: one colour per facies
// family, kept in a colour map file, and the codings that mix them with the
// grain size and the age, or paint the erodibility.
//
// The file is text: '#' starts a comment, and each other line is a facies'
// short name and its colour as six hexadecimal digits, e.g. "PB ffff00".
// Families the file does not name keep their colour.

#include "kernel/common/Facies.h"
#include "view/ViewColor.h"

#include <array>
#include <cstdint>
#include <string>

class FaciesColorMap
{
public:
    // ColorsCoding values.
    enum Coding
    {
        CODING_FACIES = 0,
        CODING_GRAIN = 1,
        CODING_FACIES_GRAIN = 2,
        CODING_FACIES_GRAIN_AGE = 3,
        CODING_AGE = 4,
        CODING_ERODIBILITY = 5
    };

    // The facies' own colours.
    FaciesColorMap();

    // The colour of a deposit under a coding 0 to 4; white for family 0 (no deposit).
    ViewColor facies_color(const Facies& facies, uint32_t age, int coding) const;
    // The colour of an erodibility coefficient over the current range.
    ViewColor erodibility_color(double value) const;
    static ViewColor no_deposit_color() { return ViewColor(); }

    // The ages the age codings spread their colours over.
    void setAgeRange(uint32_t oldest, uint32_t youngest);
    void setErodibilityRange(double low, double high);

    // Counts the changes of the colours, so that a view knows when to repaint.
    unsigned int revision() const { return _revision; }

    ViewColor getColor(unsigned char family) const { return _colors[family & 0x0F]; }
    void setColor(unsigned char family, const ViewColor& color);
    void restoreDefaults();
    static ViewColor defaultColor(unsigned char family);

    // False with a complete message, the colours unchanged, when the file
    // can't be read or a line is not a known facies with a colour.
    bool load(const std::string& path, std::string& message);
    // Written beside its name first, so that a failure leaves the user's file.
    bool save(const std::string& path, std::string& message) const;
    // The file's content.
    std::string text() const;
    bool parse(const std::string& text, const std::string& source, std::string& message);

private:
    std::array<ViewColor, 16> _colors;
    unsigned int _revision = 0;
    uint32_t _oldest = 0;
    uint32_t _youngest = 1;
    double _erod_low = 0.;
    double _erod_high = 1.;
};
