#pragma once
// Small helpers shared by the files of MeanderCalculator: numbers in
// messages, the mean interval of an event group, the mean overbank intensity
// and the extent of the domain.

#include "interface/iParameters.h"
#include "kernel/parameters/ParameterCodes.h"

#include <sstream>
#include <string>

namespace meander_support
{
inline std::string text(double value)
{
    std::ostringstream s;
    s << value;
    return s.str();
}

// Mean interval in iterations of an event group, 0 when it never happens.
inline int event_interval(iParameters const* p, const std::string& freq, const std::string& period,
                          const std::string& poisson)
{
    switch (p->getParamInt(freq))
    {
    case MP_PROCESS_PERIODIC:
        return p->getParamInt(period);
    case MP_PROCESS_POISSON:
        return p->getParamInt(poisson);
    default:
        return 0;
    }
}

// Mean of the overbank intensity law in force.
inline double mean_overbank_intensity(iParameters const* p)
{
    switch (p->getParamInt("AG_OB_DIST"))
    {
    case MP_DIST_CONSTANT:
        return p->getParamDouble("AG_OB_CONST");
    case MP_DIST_UNIFORM:
        return 0.5 * (p->getParamDouble("AG_OB_MIN") + p->getParamDouble("AG_OB_MAX"));
    case MP_DIST_GAUSSIAN:
        return p->getParamDouble("AG_OB_NORM_MEAN");
    default:
        return p->getParamDouble("AG_OB_LOGNORM_MEAN");
    }
}

struct Domain2D
{
    double dx, dy, length, width;
    long long nodes;
};

inline Domain2D domain_of(iParameters const* p)
{
    const int nx = p->getParamInt("DOMAIN_NX");
    const int ny = p->getParamInt("DOMAIN_NY");
    const double dx = p->getParamDouble("DOMAIN_DX");
    const double dy = p->getParamDouble("DOMAIN_DY");
    return {dx, dy, (nx - 1) * dx, (ny - 1) * dy, static_cast<long long>(nx) * ny};
}
} // namespace meander_support
