#include "view/FaciesColorMap.h"

#include "kernel/common/StagedFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>

namespace
{

unsigned char to_byte(double intensity)
{
    return static_cast<unsigned char>(std::lround(255. * std::clamp(intensity, 0., 1.)));
}

ViewColor mix(const ViewColor& a, const ViewColor& b, double t)
{
    auto channel = [t](unsigned char x, unsigned char y)
    { return static_cast<unsigned char>(std::lround(x + (y - x) * std::clamp(t, 0., 1.))); };
    return ViewColor{channel(a.red, b.red), channel(a.green, b.green), channel(a.blue, b.blue)};
}

ViewColor scaled(const ViewColor& c, double factor)
{
    return mix(ViewColor{0, 0, 0}, c, factor);
}

// A ramp through the given stops, t in [0, 1].
template <size_t N> ViewColor ramp(const ViewColor (&stops)[N], double t)
{
    const double x = std::clamp(t, 0., 1.) * (N - 1);
    const size_t k = std::min(static_cast<size_t>(x), N - 2);
    return mix(stops[k], stops[k + 1], x - static_cast<double>(k));
}

// Fine grains dark brown, coarse ones bright yellow, as sediment looks.
ViewColor grain_color(double t)
{
    static const ViewColor stops[] = {{70, 40, 20}, {150, 90, 40}, {225, 160, 50}, {255, 240, 90}};
    return ramp(stops, t);
}

// Old deposits blue, young ones red.
ViewColor age_color(double t)
{
    static const ViewColor stops[] = {
        {40, 40, 200}, {40, 200, 220}, {60, 210, 60}, {240, 220, 40}, {220, 40, 30}};
    return ramp(stops, t);
}

} // namespace

FaciesColorMap::FaciesColorMap()
{
    restoreDefaults();
}

ViewColor FaciesColorMap::defaultColor(unsigned char family)
{
    if (family == 0)
        return no_deposit_color();
    const KemoColor c = Facies::description(family).color();
    return ViewColor{to_byte(c.red()), to_byte(c.green()), to_byte(c.blue())};
}

void FaciesColorMap::restoreDefaults()
{
    for (unsigned char f = 0; f < _colors.size(); ++f)
        _colors[f] = defaultColor(f);
    ++_revision;
}

void FaciesColorMap::setColor(unsigned char family, const ViewColor& color)
{
    _colors[family & 0x0F] = color;
    ++_revision;
}

void FaciesColorMap::setAgeRange(uint32_t oldest, uint32_t youngest)
{
    _oldest = oldest;
    _youngest = std::max(youngest, oldest + 1);
}

void FaciesColorMap::setErodibilityRange(double low, double high)
{
    _erod_low = low;
    _erod_high = high > low ? high : low + 1.;
}

ViewColor FaciesColorMap::facies_color(const Facies& facies, uint32_t age, int coding) const
{
    if (facies.family() == 0)
        return no_deposit_color();
    const double grain = facies.granulo_class() / 14.; // classes 0 to 14
    const double when = (static_cast<double>(age) - _oldest) / static_cast<double>(_youngest - _oldest);
    const ViewColor own = _colors[facies.family()];
    switch (coding)
    {
    case CODING_GRAIN:
        return grain_color(grain);
    case CODING_FACIES_GRAIN:
        return scaled(own, 0.45 + 0.55 * grain);
    case CODING_FACIES_GRAIN_AGE:
        return scaled(own, (0.45 + 0.55 * grain) * (0.55 + 0.45 * std::clamp(when, 0., 1.)));
    case CODING_AGE:
        return age_color(when);
    default:
        return own;
    }
}

ViewColor FaciesColorMap::erodibility_color(double value) const
{
    static const ViewColor stops[] = {{235, 235, 235}, {240, 180, 80}, {180, 30, 30}};
    return ramp(stops, (value - _erod_low) / (_erod_high - _erod_low));
}

std::string FaciesColorMap::text() const
{
    std::ostringstream out;
    out << "# Facies colours: short name, then red, green and blue as six hexadecimal digits\n";
    for (unsigned char f = 1; f < _colors.size(); ++f)
    {
        std::string name;
        if (Facies::facies_register().is_registered(f, name))
            out << name << ' ' << _colors[f].hex() << '\n';
    }
    return out.str();
}

bool FaciesColorMap::parse(const std::string& text, const std::string& source, std::string& message)
{
    std::array<ViewColor, 16> colors = _colors;
    std::istringstream in(text);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number)
    {
        line = line.substr(0, line.find('#'));
        std::istringstream words(line);
        std::string name;
        std::string hex;
        if (!(words >> name))
            continue;
        const std::string where = "Colour map file " + source + ", line " + std::to_string(number) + ": ";
        unsigned char family = 0;
        if (!Facies::facies_register().is_registered(name, family) || family == 0)
        {
            message = where + "unknown facies '" + name + "'";
            return false;
        }
        std::string rest;
        ViewColor color;
        if (!(words >> hex) || !color.hex(hex) || (words >> rest))
        {
            message = where + "the colour of " + name + " must be six hexadecimal digits (rrggbb)";
            return false;
        }
        colors[family] = color;
    }
    _colors = colors;
    ++_revision;
    return true;
}

bool FaciesColorMap::load(const std::string& path, std::string& message)
{
    std::ifstream in(path);
    if (!in)
    {
        message = "Cannot open colour map file " + path + ": " + std::strerror(errno);
        return false;
    }
    std::ostringstream content;
    content << in.rdbuf();
    return parse(content.str(), path, message);
}

bool FaciesColorMap::save(const std::string& path, std::string& message) const
{
    StagedFile staged(path);
    {
        std::ofstream out(staged.path());
        out << text();
        out.flush();
        if (!out)
        {
            message = "Cannot write colour map file " + path;
            return false;
        }
    }
    if (!staged.commit())
    {
        message = "Cannot write colour map file " + path;
        return false;
    }
    return true;
}
