#include "view/ViewColor.h"

#include <cctype>
#include <cstdio>

std::string ViewColor::hex() const
{
    char text[8];
    std::snprintf(text, sizeof text, "%02x%02x%02x", red, green, blue);
    return text;
}

bool ViewColor::hex(const std::string& text)
{
    if (text.size() != 6)
        return false;
    for (char c : text)
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return false;
    const unsigned long value = std::stoul(text, nullptr, 16);
    red = static_cast<unsigned char>(value >> 16);
    green = static_cast<unsigned char>(value >> 8);
    blue = static_cast<unsigned char>(value);
    return true;
}
