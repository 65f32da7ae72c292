#include "view/ScaleSteps.h"

#include <cmath>

double ScaleSteps::tick_step(double range, double pixels, double min_gap)
{
    if (!(range > 0.) || !(pixels > 0.))
        return 1.;
    const double pixels_per_metre = pixels / range;
    double step = std::pow(10., std::ceil(std::log10(range)));
    for (int k = 0; k < 64; ++k)
    {
        const double next = step * factors[k % 3];
        if (next * pixels_per_metre < min_gap)
            break;
        step = next;
    }
    return step;
}
