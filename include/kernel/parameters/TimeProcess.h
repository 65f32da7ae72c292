#pragma once
// Clocks that say at which iterations an event (avulsion, overbank flood,
// equilibrium profile change, statistics) takes place.

#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/ParameterCodes.h"

#include <memory>
#include <string>

class InDataFile;
class OutDataFile;

// The parameters of a clock as the registry gives them.
struct TimeProcessParamType
{
    int _type = MP_PROCESS_NEVER;
    unsigned int _period = 0;
    unsigned int _poisson_mean = 0;
};

class TimeProcess
{
public:
    virtual ~TimeProcess() = default;

    // Interval to the next event.
    virtual unsigned int next() { return 0; }
    // True when an event takes place at `age`.
    virtual bool occurs(unsigned int /*age*/) { return false; }
    // Restarts the schedule at `age`.
    virtual void reset(unsigned int /*age*/) {}
    virtual double mean_interval() const { return 0.0; }
    // True when `param` would build this same clock.
    virtual bool operator==(const TimeProcessParamType& /*param*/) const { return false; }
    virtual bool operator!=(const TimeProcessParamType& param) const { return !(*this == param); }
    virtual TimeProcessParamType getParam() const = 0;
    // The schedule, under keys that begin with `prefix`.
    virtual bool serialize(const std::string& prefix, OutDataFile& file) const = 0;
    virtual bool deserialize(const std::string& prefix, InDataFile& file) = 0;

    // Type 1 periodic, 2 Poisson; anything else a period of 0, which gives no
    // event after `age`, the start of the schedule.
    static std::unique_ptr<TimeProcess> createInstance(SeedGenerator* seed, const TimeProcessParamType& param,
                                                       unsigned int age);
};

// A clock whose events lie at ages separated by drawn intervals.
class DiscreteTimeProcess : public TimeProcess
{
public:
    explicit DiscreteTimeProcess(unsigned int age);

    // The age must equal the next event age exactly: an age that jumps past
    // it loses the event and leaves the schedule stuck there.
    bool occurs(unsigned int age) override;
    void reset(unsigned int age) override;
    // Keys prefix + "_INIT" (the pending draw) and prefix + "_NEXT" (next age).
    bool serialize(const std::string& prefix, OutDataFile& file) const override;
    bool deserialize(const std::string& prefix, InDataFile& file) override;

    unsigned int getNextAge() const { return _next_age; }
    bool isDrawPending() const { return _draw; }

private:
    unsigned int _next_age;
    bool _draw;
};

class ConstantTimeProcess : public DiscreteTimeProcess
{
public:
    ConstantTimeProcess(unsigned int age, unsigned int period);

    unsigned int next() override { return _period; }
    double mean_interval() const override { return static_cast<double>(_period); }
    bool operator==(const TimeProcessParamType& param) const override;
    TimeProcessParamType getParam() const override;

    unsigned int getPeriod() const { return _period; }

private:
    unsigned int _period;
};

// Memoryless events: exponential intervals of the given mean, rounded to
// whole iterations.
class PoissonTimeProcess : public DiscreteTimeProcess
{
public:
    PoissonTimeProcess(SeedGenerator* seed, unsigned int age, unsigned int mean);

    unsigned int next() override;
    double mean_interval() const override { return static_cast<double>(_mean); }
    bool operator==(const TimeProcessParamType& param) const override;
    TimeProcessParamType getParam() const override;

    unsigned int getMean() const { return _mean; }

private:
    unsigned int _mean;
    UniformDistributionGenerator _uniform;
};
