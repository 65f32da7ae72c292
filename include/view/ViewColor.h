#pragma once
// A colour of the views as three bytes, red, green and blue.

#include <string>

struct ViewColor
{
    unsigned char red = 255;
    unsigned char green = 255;
    unsigned char blue = 255;

    bool operator==(const ViewColor& other) const
    {
        return red == other.red && green == other.green && blue == other.blue;
    }
    bool operator!=(const ViewColor& other) const { return !(*this == other); }

    // "rrggbb" in lower-case hexadecimal.
    std::string hex() const;
    // False, with the colour unchanged, unless `text` is six hexadecimal digits.
    bool hex(const std::string& text);
};
