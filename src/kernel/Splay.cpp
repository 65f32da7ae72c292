// Crevasse splays are not laid yet: every operation refuses.

#include "kernel/Splay.h"

#include "kernel/Assert.h"

Splay::Splay(const Point2D&, const Vector2D&, double, double, double, double, double, double, double, double,
             SeedGenerator*, MeanderCalculator*)
{
}

double Splay::dilate(double, double) const { MP_ASSERT_TEXT(false, "Splay is not available yet"); return 0.; }
double Splay::bump(double, double) const { MP_ASSERT_TEXT(false, "Splay is not available yet"); return 0.; }
double Splay::ordinate(double, double) const { MP_ASSERT_TEXT(false, "Splay is not available yet"); return 0.; }
double Splay::thickness(double, double) const { MP_ASSERT_TEXT(false, "Splay is not available yet"); return 0.; }
void Splay::grainsize_distribution(int, int, double) { MP_ASSERT_TEXT(false, "Splay is not available yet"); }
int Splay::grainsize(double) const { MP_ASSERT_TEXT(false, "Splay is not available yet"); return 0; }
void Splay::domain_elevation(const Domain*, const Point2D&, double&, Vector2D&)
{
    MP_ASSERT_TEXT(false, "Splay is not available yet");
}
void Splay::update(Domain*, MassBalance*, unsigned int, int, std::vector<IPos>*)
{
    MP_ASSERT_TEXT(false, "Splay is not available yet");
}
void Splay::mature(Domain*, MassBalance*, unsigned int, double, double, double, double, double, std::vector<IPos>*)
{
    MP_ASSERT_TEXT(false, "Splay is not available yet");
}
