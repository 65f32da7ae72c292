#include "kernel/parameters/Grainsize.h"

#include <cmath>

namespace
{

// Dimensionless diameter per metre of quartz (relative density 2.65) in water,
// ((s - 1) g / nu^2)^(1/3), scaled to the 0.1 mm reference.
constexpr double D_ADIM_FACTOR = 2.5295949400213478;
constexpr double D_ADIM_REFERENCE = 0.0001;
// Kinematic viscosity of water, m2/s.
constexpr double WATER_VISCOSITY = 1e-6;
// 4 g (s - 1): scale of the largest settling velocity of a grain.
constexpr double WS_MAX_FACTOR = 64.746;
// Finest diameter the load keeps, one micrometre.
constexpr double MIN_DIAMETER = 1e-6;

} // namespace

Grainsize::Grainsize(int gr_class, double proportion, double density)
    : _class(gr_class), _d(0.), _d_adim(0.), _density(density), _ws(0.), _ws_max(0.), _ucr(0.),
      _proportion(proportion)
{
    cmp_all();
}

Grainsize::Grainsize(double d, double proportion, double density)
    : Grainsize(cmp_class_from_d(d), proportion, density)
{
}

void Grainsize::cmp_all()
{
    cmp_grainsize();
    cmp_grainsize_adim();
    cmp_settling_velocity();
    cmp_critical_shear_velocity();
}

double Grainsize::diameter_of_class(int gr_class)
{
    if (gr_class == 15)
        return std::pow(2., 7.) / 1000.;
    if (gr_class == 14)
        return std::pow(2., 4.) / 1000.;
    if (gr_class >= 3 && gr_class <= 13)
        return std::fmax(std::pow(2., -(11. - gr_class)) / 1000., MIN_DIAMETER);
    if (gr_class == 2)
        return std::pow(2., -9.5) / 1000.;
    if (gr_class == 1)
        return MIN_DIAMETER;
    return std::pow(2., 0.) / 1000.;
}

int Grainsize::cmp_class_from_d(double d)
{
    const double l = std::log2(1000. * d);
    if (std::isnan(l))
        return 0;
    if (l > 5.)
        return 15;
    if (l > 2.)
        return 14;
    if (l > -9.)
        return static_cast<int>(std::trunc(l + 11.));
    if (l > -11.)
        return 2;
    return 1;
}

void Grainsize::cmp_grainsize()
{
    _d = diameter_of_class(_class);
}

void Grainsize::cmp_grainsize_adim()
{
    _d_adim = D_ADIM_FACTOR * _d / D_ADIM_REFERENCE;
}

// Settling velocity of natural grains from the dimensionless diameter, a
// fit that goes from Stokes' law for silt to a drag-dominated fall for gravel.
void Grainsize::cmp_settling_velocity()
{
    if (_d < MIN_DIAMETER)
    {
        _ws = 0.;
        _ws_max = 0.;
        return;
    }
    _ws = (std::sqrt(100. + _d_adim * _d_adim * _d_adim) - 10.) * (WATER_VISCOSITY / _d);
    _ws_max = std::sqrt(_d * WS_MAX_FACTOR / 3.);
}

// A grain is set in motion once the bed shear velocity reaches its fall velocity.
void Grainsize::cmp_critical_shear_velocity()
{
    _ucr = _ws;
}
