#include "kernel/parameters/DistributionGenerator.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include <cmath>

namespace
{
const char* const KEY_GAUSS_SECOND = "GAUSS_SECOND";
const char* const KEY_GAUSS_RADIUS = "GAUSS_RADIUS";
const char* const KEY_GAUSS_ANGLE = "GAUSS_ANGLE";

constexpr double RAW_RANGE = static_cast<double>(SeedGenerator::_modulus);

// Seventeen significant digits give back the same double on reading.
void write_exact(OutDataFile& file, const char* key, double value)
{
    const std::streamsize old_precision = file.precision(17);
    file.key_value(key, value);
    file.precision(old_precision);
}

bool is_one_of_the_laws(int type)
{
    return type == MP_DIST_UNIFORM || type == MP_DIST_GAUSSIAN || type == MP_DIST_LOGNORMAL;
}
} // namespace

// ---------------------------------------------------------------------------

DistributionGenerator::DistributionGenerator(SeedGenerator* seed, bool positive)
    : _seed(seed), _positive(positive)
{
}

bool DistributionGenerator::serialize(OutDataFile& file) const
{
    return !file.fail();
}

bool DistributionGenerator::deserialize(InDataFile& /*file*/)
{
    return true;
}

std::unique_ptr<DistributionGenerator>
DistributionGenerator::createInstance(SeedGenerator* seed, const DistGenParamType& param, bool positive)
{
    switch (param._type)
    {
    case MP_DIST_GAUSSIAN:
        return std::make_unique<GaussianDistributionGenerator>(seed, param._norm_mean, param._norm_stdev,
                                                               positive);
    case MP_DIST_LOGNORMAL:
    {
        double mu = 0.0;
        double s = 0.0;
        Lognormal_Z_to_Y(param._lognorm_mean, param._lognorm_stdev, mu, s);
        return std::make_unique<LognormalDistributionGenerator>(seed, mu, s, positive);
    }
    case MP_DIST_UNIFORM:
        return std::make_unique<UniformDistributionGenerator>(seed, param._min, param._max, positive);
    default:
        return std::make_unique<ConstantDistributionGenerator>(seed, param._constant, positive);
    }
}

// ---------------------------------------------------------------------------

RandomDistributionGenerator::RandomDistributionGenerator(SeedGenerator* seed, bool positive)
    : DistributionGenerator(seed, positive)
{
    MP_ASSERT(seed != nullptr);
}

double RandomDistributionGenerator::operator()()
{
    return static_cast<double>(_seed->get_next());
}

double RandomDistributionGenerator::mean() const
{
    return RAW_RANGE * 0.5;
}

// The raw stream is the uniform law on [0, modulus].
bool RandomDistributionGenerator::operator==(const DistGenParamType& param) const
{
    return param._type == MP_DIST_UNIFORM && param._min == 0.0 && param._max == RAW_RANGE;
}

DistGenParamType RandomDistributionGenerator::getParam() const
{
    DistGenParamType param;
    param._type = MP_DIST_UNIFORM;
    param._min = 0.0;
    param._max = RAW_RANGE;
    return param;
}

// ---------------------------------------------------------------------------

UniformDistributionGenerator::UniformDistributionGenerator(SeedGenerator* seed, double min, double max,
                                                           bool positive)
    : RandomDistributionGenerator(seed, positive), _min(min), _max(max), _diff(max - min)
{
}

double UniformDistributionGenerator::operator()()
{
    const double val = RandomDistributionGenerator::operator()() * _diff / RAW_RANGE + _min;
    // The bounds are not sorted, so a draw can only be wrong by not being a
    // number at all (infinite bounds).
    MP_ASSERT_TEXT(!std::isnan(val), "val >= _min || val <= _max");
    return positive(val);
}

double UniformDistributionGenerator::mean() const
{
    return positive((_min + _max) * 0.5);
}

bool UniformDistributionGenerator::operator==(const DistGenParamType& param) const
{
    return param._type == MP_DIST_UNIFORM && param._min == _min && param._max == _max;
}

DistGenParamType UniformDistributionGenerator::getParam() const
{
    DistGenParamType param;
    param._type = MP_DIST_UNIFORM;
    param._min = _min;
    param._max = _max;
    return param;
}

// ---------------------------------------------------------------------------

GaussianDistributionGenerator::GaussianDistributionGenerator(SeedGenerator* seed, double mean, double stdev,
                                                             bool positive)
    : RandomDistributionGenerator(seed, positive), _mean(mean), _stdev(std::fabs(stdev)),
      _uniform(seed, 0.0, 1.0)
{
}

double GaussianDistributionGenerator::normal_draw()
{
    if (_has_second)
    {
        _has_second = false;
        return _mean + _stdev * _radius * std::sin(_angle);
    }
    const double u1 = _uniform();
    _radius = std::sqrt(-2.0 * std::log(u1));
    const double u2 = _uniform();
    _angle = u2 * MP_TWO_PI;
    _has_second = true;
    return _mean + _stdev * _radius * std::cos(_angle);
}

double GaussianDistributionGenerator::operator()()
{
    return positive(normal_draw());
}

double GaussianDistributionGenerator::mean() const
{
    return positive(_mean);
}

bool GaussianDistributionGenerator::operator==(const DistGenParamType& param) const
{
    return param._type == MP_DIST_GAUSSIAN && param._norm_mean == _mean &&
           std::fabs(param._norm_stdev) == _stdev;
}

DistGenParamType GaussianDistributionGenerator::getParam() const
{
    DistGenParamType param;
    param._type = MP_DIST_GAUSSIAN;
    param._norm_mean = _mean;
    param._norm_stdev = _stdev;
    return param;
}

bool GaussianDistributionGenerator::serialize(OutDataFile& file) const
{
    file.key_value(KEY_GAUSS_SECOND, _has_second ? 1 : 0);
    write_exact(file, KEY_GAUSS_RADIUS, _radius);
    write_exact(file, KEY_GAUSS_ANGLE, _angle);
    return !file.fail();
}

bool GaussianDistributionGenerator::deserialize(InDataFile& file)
{
    int second = 0;
    double radius = 0.0;
    double angle = 0.0;
    if (!file.get_key_value(KEY_GAUSS_SECOND, second) || !file.get_key_value(KEY_GAUSS_RADIUS, radius) ||
        !file.get_key_value(KEY_GAUSS_ANGLE, angle))
        return false;
    _has_second = second != 0;
    _radius = radius;
    _angle = angle;
    return true;
}

// ---------------------------------------------------------------------------

LognormalDistributionGenerator::LognormalDistributionGenerator(SeedGenerator* seed, double mu, double s,
                                                               bool positive)
    : GaussianDistributionGenerator(seed, mu, s, positive)
{
}

double LognormalDistributionGenerator::operator()()
{
    return std::exp(normal_draw());
}

double LognormalDistributionGenerator::mean() const
{
    return std::exp(_mean) * std::exp(0.5 * _stdev * _stdev);
}

double LognormalDistributionGenerator::standard_deviation() const
{
    const double e = std::exp(_stdev * _stdev);
    return std::sqrt(std::exp(2.0 * _mean) * e * (e - 1.0));
}

bool LognormalDistributionGenerator::operator==(const DistGenParamType& param) const
{
    if (param._type != MP_DIST_LOGNORMAL)
        return false;
    double mu = 0.0;
    double s = 0.0;
    Lognormal_Z_to_Y(param._lognorm_mean, param._lognorm_stdev, mu, s);
    return mu == _mean && s == _stdev;
}

DistGenParamType LognormalDistributionGenerator::getParam() const
{
    DistGenParamType param;
    param._type = MP_DIST_LOGNORMAL;
    param._norm_mean = _mean;
    param._norm_stdev = _stdev;
    param._lognorm_mean = mean();
    param._lognorm_stdev = standard_deviation();
    return param;
}

// ---------------------------------------------------------------------------

ConstantDistributionGenerator::ConstantDistributionGenerator(SeedGenerator* seed, double value, bool positive)
    : DistributionGenerator(seed, positive), _value(value)
{
}

double ConstantDistributionGenerator::operator()()
{
    return positive(_value);
}

double ConstantDistributionGenerator::mean() const
{
    return positive(_value);
}

bool ConstantDistributionGenerator::operator==(const DistGenParamType& param) const
{
    return !is_one_of_the_laws(param._type) && param._constant == _value;
}

DistGenParamType ConstantDistributionGenerator::getParam() const
{
    DistGenParamType param;
    param._type = MP_DIST_CONSTANT;
    param._constant = _value;
    return param;
}

// ---------------------------------------------------------------------------

void Lognormal_Z_to_Y(double m, double v, double& mu, double& s)
{
    if (m > 0.0)
    {
        const double q = std::log(v * v / (m * m) + 1.0);
        mu = std::log(m) - 0.5 * q;
        s = std::sqrt(q);
    }
    else
    {
        mu = 0.0;
        s = 0.0;
    }
}
