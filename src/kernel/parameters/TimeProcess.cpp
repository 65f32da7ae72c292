#include "kernel/parameters/TimeProcess.h"

#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include <cmath>
#include <limits>

std::unique_ptr<TimeProcess> TimeProcess::createInstance(SeedGenerator* seed,
                                                         const TimeProcessParamType& param, unsigned int age)
{
    switch (param._type)
    {
    case MP_PROCESS_PERIODIC:
        return std::make_unique<ConstantTimeProcess>(age, param._period);
    case MP_PROCESS_POISSON:
        return std::make_unique<PoissonTimeProcess>(seed, age, param._poisson_mean);
    default:
        return std::make_unique<ConstantTimeProcess>(age, 0u);
    }
}

// ---------------------------------------------------------------------------

DiscreteTimeProcess::DiscreteTimeProcess(unsigned int age) : _next_age(age), _draw(true) {}

bool DiscreteTimeProcess::occurs(unsigned int age)
{
    if (_draw)
    {
        _next_age += next();
        _draw = false;
    }
    if (age != _next_age)
        return false;
    _next_age += next();
    return true;
}

void DiscreteTimeProcess::reset(unsigned int age)
{
    _next_age = age;
    _draw = true;
}

bool DiscreteTimeProcess::serialize(const std::string& prefix, OutDataFile& file) const
{
    file.key_value(prefix + "_INIT", _draw ? 1 : 0);
    file.key_value(prefix + "_NEXT", _next_age);
    return !file.fail();
}

bool DiscreteTimeProcess::deserialize(const std::string& prefix, InDataFile& file)
{
    int draw = 0;
    unsigned int next_age = 0;
    if (!file.get_key_value(prefix + "_INIT", draw) || !file.get_key_value(prefix + "_NEXT", next_age))
        return false;
    _draw = draw != 0;
    _next_age = next_age;
    return true;
}

// ---------------------------------------------------------------------------

ConstantTimeProcess::ConstantTimeProcess(unsigned int age, unsigned int period)
    : DiscreteTimeProcess(age), _period(period)
{
}

// A period of 0 is also what any unknown type builds.
bool ConstantTimeProcess::operator==(const TimeProcessParamType& param) const
{
    if (param._type == MP_PROCESS_PERIODIC)
        return param._period == _period;
    return param._type != MP_PROCESS_POISSON && _period == 0;
}

TimeProcessParamType ConstantTimeProcess::getParam() const
{
    TimeProcessParamType param;
    param._type = MP_PROCESS_PERIODIC;
    param._period = _period;
    return param;
}

// ---------------------------------------------------------------------------

PoissonTimeProcess::PoissonTimeProcess(SeedGenerator* seed, unsigned int age, unsigned int mean)
    : DiscreteTimeProcess(age), _mean(mean), _uniform(seed, 0.0, 1.0)
{
}

// Exponential interval shifted so that, once rounded half away from zero, it
// is at least one iteration for a mean of 1 or more.
unsigned int PoissonTimeProcess::next()
{
    const double u = _uniform();
    const double interval = std::round(0.5 - std::log(u) * (static_cast<double>(_mean) - 0.5));
    if (interval <= 0.0)
        return 0;
    if (interval >= static_cast<double>(std::numeric_limits<unsigned int>::max()))
        return std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(interval);
}

bool PoissonTimeProcess::operator==(const TimeProcessParamType& param) const
{
    return param._type == MP_PROCESS_POISSON && param._poisson_mean == _mean;
}

TimeProcessParamType PoissonTimeProcess::getParam() const
{
    TimeProcessParamType param;
    param._type = MP_PROCESS_POISSON;
    param._poisson_mean = _mean;
    return param;
}
