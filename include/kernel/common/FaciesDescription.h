#pragma once
// What the block knows of one facies family: its names, its colour and the
// grain-size class it takes when nothing better is known.

#include <iosfwd>
#include <string>

// A colour as three intensities in 0..1, red, green and blue.
class KemoColor
{
public:
    KemoColor(double red = 0., double green = 0., double blue = 0.) : _red(red), _green(green), _blue(blue) {}

    double red() const { return _red; }
    double green() const { return _green; }
    double blue() const { return _blue; }
    void red(double value) { _red = value; }
    void green(double value) { _green = value; }
    void blue(double value) { _blue = value; }

    bool operator==(const KemoColor& other) const
    {
        return _red == other._red && _green == other._green && _blue == other._blue;
    }
    bool operator!=(const KemoColor& other) const { return !(*this == other); }

private:
    double _red;
    double _green;
    double _blue;
};

// Written and read as the three intensities separated by spaces.
std::ostream& operator<<(std::ostream& out, const KemoColor& color);
std::istream& operator>>(std::istream& in, KemoColor& color);

class FaciesDescription
{
public:
    // The undefined family (id 0); registers nothing.
    FaciesDescription();
    // Describes a family and enters it in the facies register.
    FaciesDescription(const std::string& short_name, const std::string& long_name, const KemoColor& color,
                      unsigned char id, unsigned char granulo_class);
    FaciesDescription(const FaciesDescription&) = default;
    FaciesDescription& operator=(const FaciesDescription&) = default;

    // The same description as the registering constructor, kept out of the register.
    static FaciesDescription unregistered(const std::string& short_name, const std::string& long_name,
                                          const KemoColor& color, unsigned char id,
                                          unsigned char granulo_class);

    const std::string& short_name() const { return _short_name; }
    const std::string& long_name() const { return _long_name; }
    const KemoColor& color() const { return _color; }
    unsigned char id() const { return _id; }
    unsigned char granulo_class() const { return _granulo_class; }

private:
    std::string _short_name;
    std::string _long_name;
    KemoColor _color;
    unsigned char _id;
    unsigned char _granulo_class;
};
