#include "kernel/files/EMap.h"

#include "kernel/common/Constants.h"

bool EMap::readConv(const std::string& path, double a, double b)
{
    return read(path) && convert(a, b);
}

double EMap::meanConv(double b) const
{
    double sum = 0.;
    double count = 0.;
    for (double v : _values)
        if (v != MP_UNDEF_REAL)
        {
            sum += v - b;
            count += 1.;
        }
    return sum / count;
}

double EMap::usable_mean(double b)
{
    const double mean = meanConv(b);
    if (mean < MP_EPSILON)
    {
        _error = "File EMap shifted mean is null and has been set to 1.";
        return 1.;
    }
    return mean;
}

bool EMap::convert(double a, double b)
{
    const double mean = usable_mean(b);
    for (int k = 0; k < _nz; ++k)
        for (int j = 0; j < _ny; ++j)
            for (int i = 0; i < _nx; ++i)
            {
                const double v = _values[index_of(i, j, k)];
                if (v != MP_UNDEF_REAL && !set_at(i, j, k, convertValue(a, b, mean, v)))
                    return false;
            }
    return true;
}

double EMap::convertValue(double a, double b, double value)
{
    return convertValue(a, b, usable_mean(b), value);
}

double EMap::convertValue(double a, double b, double mean, double value) const
{
    if (value == MP_UNDEF_REAL)
        return value;
    return (value - b) * a / mean;
}
