#pragma once
// Laws that give the size of an event (an aggradation step, an overbank
// thickness, a channel scale), each drawing from the shared SeedGenerator.

#include "kernel/parameters/ParameterCodes.h"
#include "kernel/parameters/SeedGenerator.h"

#include <memory>

class InDataFile;
class OutDataFile;

// The parameters of a law as the registry gives them.
struct DistGenParamType
{
    int _type = MP_DIST_CONSTANT;
    double _constant = 0.0;
    double _min = 0.0;
    double _max = 0.0;
    double _norm_mean = 0.0;
    double _norm_stdev = 0.0;
    double _lognorm_mean = 0.0;
    double _lognorm_stdev = 0.0;
};

class DistributionGenerator
{
public:
    DistributionGenerator(SeedGenerator* seed, bool positive = false);
    virtual ~DistributionGenerator() = default;

    virtual double operator()() = 0;
    virtual double mean() const = 0;
    // True when `param` would build this same law.
    virtual bool operator==(const DistGenParamType& param) const = 0;
    virtual bool operator!=(const DistGenParamType& param) const { return !(*this == param); }
    virtual DistGenParamType getParam() const = 0;
    // The state a draw leaves behind, if any; parameters come from the registry.
    virtual bool serialize(OutDataFile& file) const;
    virtual bool deserialize(InDataFile& file);

    // Type 2 Gaussian, 3 lognormal (converted from the user's mean and
    // deviation), 1 uniform, anything else constant.
    static std::unique_ptr<DistributionGenerator>
    createInstance(SeedGenerator* seed, const DistGenParamType& param, bool positive = false);

    SeedGenerator* getSeedGenerator() const { return _seed; }
    bool isPositive() const { return _positive; }
    void setPositive(bool positive) { _positive = positive; }

protected:
    // With the positive flag a negative value becomes 0.
    double positive(double value) const { return _positive && value < 0.0 ? 0.0 : value; }

    SeedGenerator* _seed;
    bool _positive;
};

// The raw output of the generator, in [1, 2147483646].
class RandomDistributionGenerator : public DistributionGenerator
{
public:
    RandomDistributionGenerator(SeedGenerator* seed, bool positive = false);

    double operator()() override;
    double mean() const override;
    bool operator==(const DistGenParamType& param) const override;
    DistGenParamType getParam() const override;
};

// Bounds are taken as given: an inverted pair draws between them all the same.
class UniformDistributionGenerator : public virtual RandomDistributionGenerator
{
public:
    UniformDistributionGenerator(SeedGenerator* seed, double min, double max, bool positive = false);

    double operator()() override;
    double mean() const override;
    bool operator==(const DistGenParamType& param) const override;
    DistGenParamType getParam() const override;

    double getMin() const { return _min; }
    double getMax() const { return _max; }

private:
    double _min;
    double _max;
    double _diff;
};

// Box-Muller, keeping the second value of each pair for the next draw.
class GaussianDistributionGenerator : public RandomDistributionGenerator
{
public:
    GaussianDistributionGenerator(SeedGenerator* seed, double mean, double stdev, bool positive = false);

    double operator()() override;
    double mean() const override;
    bool operator==(const DistGenParamType& param) const override;
    DistGenParamType getParam() const override;
    bool serialize(OutDataFile& file) const override;
    bool deserialize(InDataFile& file) override;

    double getStdev() const { return _stdev; }
    bool hasSecondValue() const { return _has_second; }

protected:
    // A draw of the normal law, before the positive flag.
    double normal_draw();

    double _mean;
    double _stdev;

private:
    double _radius = 0.0;
    double _angle = 0.0;
    bool _has_second = false;
    UniformDistributionGenerator _uniform;
};

// Exponential of a normal law of mean mu and deviation s.
class LognormalDistributionGenerator : public GaussianDistributionGenerator
{
public:
    LognormalDistributionGenerator(SeedGenerator* seed, double mu, double s, bool positive = false);

    double operator()() override;
    double mean() const override;
    double standard_deviation() const;
    bool operator==(const DistGenParamType& param) const override;
    DistGenParamType getParam() const override;

    double getMu() const { return _mean; }
    double getS() const { return _stdev; }
};

class ConstantDistributionGenerator : public DistributionGenerator
{
public:
    ConstantDistributionGenerator(SeedGenerator* seed, double value, bool positive = false);

    double operator()() override;
    double mean() const override;
    bool operator==(const DistGenParamType& param) const override;
    DistGenParamType getParam() const override;

private:
    double _value;
};

// Parameters (mu, s) of the normal law whose exponential has mean m and
// standard deviation v; a mean that is not positive gives (0, 0).
void Lognormal_Z_to_Y(double m, double v, double& mu, double& s);
