#include "tools/PlotPalette.h"

#include <algorithm>
#include <cmath>

namespace
{
// Close to the families' own hues, darkened where a pale hue would vanish
// on white (point bar, sand plug, pelagic).
constexpr PlotColour FACIES[] = {
    {128, 128, 128}, // undefined
    {230, 120, 0},   // channel lag
    {200, 170, 0},   // point bar
    {150, 130, 70},  // sand plug
    {190, 90, 30},   // crevasse splay I
    {120, 170, 20},  // splay II channels
    {170, 160, 40},  // crevasse splay II
    {70, 140, 40},   // levee
    {0, 160, 0},     // overbank
    {0, 150, 110},   // mud plug
    {90, 90, 90},    // hemipelagic plug
    {170, 70, 170},  // wetland
    {70, 140, 190},  // draping
    {210, 110, 190}, // pelagic
};

constexpr PlotColour RANKS[] = {
    {31, 119, 180},  {214, 39, 40}, {44, 160, 44},  {255, 127, 14},
    {148, 103, 189}, {140, 86, 75}, {23, 190, 207}, {127, 127, 127},
};

unsigned char mix(unsigned char a, unsigned char b, double t)
{
    return static_cast<unsigned char>(std::lround(a + (b - a) * t));
}
} // namespace

PlotColour PlotPalette::facies(int family)
{
    if (family < 0 || family >= static_cast<int>(sizeof(FACIES) / sizeof(FACIES[0])))
        return FACIES[0];
    return FACIES[family];
}

PlotColour PlotPalette::by_rank(int rank)
{
    const int n = static_cast<int>(sizeof(RANKS) / sizeof(RANKS[0]));
    return RANKS[((rank % n) + n) % n];
}

PlotColour PlotPalette::series(int colour, int rank)
{
    return colour >= 0 ? facies(colour) : by_rank(rank);
}

PlotColour PlotPalette::ramp(double t)
{
    static constexpr PlotColour STOPS[] = {{255, 250, 205}, {245, 160, 40}, {110, 50, 10}};
    t = std::clamp(std::isfinite(t) ? t : 0., 0., 1.);
    const int k = t < 0.5 ? 0 : 1;
    const double u = (t - 0.5 * k) / 0.5;
    const PlotColour& a = STOPS[k];
    const PlotColour& b = STOPS[k + 1];
    return {mix(a.red, b.red, u), mix(a.green, b.green, u), mix(a.blue, b.blue, u)};
}
