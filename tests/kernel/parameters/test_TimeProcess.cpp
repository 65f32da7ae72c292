#include "kernel/parameters/TimeProcess.h"

#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"
#include "kernel/parameters/SeedGenerator.h"

#include "TestSupport.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using testing_support::read_file;
using testing_support::TempDir;

namespace
{

constexpr std::int64_t M = 2147483647;

// The outputs of a generator reset to s0, from the plain congruence in 64 bits:
// s_1 first, then s_33, s_34, ...
class ClosedFormStream
{
public:
    explicit ClosedFormStream(std::int64_t s0) : _s(s0)
    {
        _s = (16807 * _s) % M;
        _first = _s;
        for (int i = 1; i < 33; ++i)
            _s = (16807 * _s) % M;
    }
    std::int64_t next()
    {
        if (_first != 0)
        {
            const std::int64_t first = _first;
            _first = 0;
            return first;
        }
        const std::int64_t out = _s;
        _s = (16807 * _s) % M;
        return out;
    }

private:
    std::int64_t _s;
    std::int64_t _first = 0;
};

std::vector<unsigned int> fired(TimeProcess& process, unsigned int from, unsigned int to)
{
    std::vector<unsigned int> ages;
    for (unsigned int age = from; age <= to; ++age)
        if (process.occurs(age))
            ages.push_back(age);
    return ages;
}

TimeProcessParamType record(int type, unsigned int period, unsigned int mean)
{
    TimeProcessParamType param;
    param._type = type;
    param._period = period;
    param._poisson_mean = mean;
    return param;
}

// What a driver does at each new sequence: keep a clock whose parameters did
// not change, otherwise rebuild it at the present age.
void renew(std::unique_ptr<TimeProcess>& process, SeedGenerator* seed, const TimeProcessParamType& param,
           unsigned int age)
{
    if (process && *process != param)
        process.reset();
    if (!process)
        process = TimeProcess::createInstance(seed, param, age);
}

struct BareProcess : TimeProcess
{
    TimeProcessParamType getParam() const override { return {}; }
    bool serialize(const std::string&, OutDataFile&) const override { return true; }
    bool deserialize(const std::string&, InDataFile&) override { return true; }
};

} // namespace

TEST(TimeProcess, BaseDefaultsNeverFire)
{
    BareProcess bare;
    EXPECT_EQ(bare.next(), 0u);
    EXPECT_EQ(bare.mean_interval(), 0.0);
    EXPECT_TRUE(fired(bare, 0, 50).empty());
    EXPECT_FALSE(bare == record(MP_PROCESS_NEVER, 0, 0));
    EXPECT_TRUE(bare != record(MP_PROCESS_NEVER, 0, 0));
}

TEST(TimeProcess, PeriodicScheduleAndLostEvents)
{
    ConstantTimeProcess every3(10, 3);
    EXPECT_EQ(every3.mean_interval(), 3.0);
    EXPECT_EQ(fired(every3, 11, 25), (std::vector<unsigned int>{13, 16, 19, 22, 25}));

    // Period 0 never fires after its start.
    ConstantTimeProcess never(5, 0);
    EXPECT_EQ(never.mean_interval(), 0.0);
    EXPECT_TRUE(fired(never, 6, 500).empty());

    // The age jumps over the event at 5: the schedule stays stuck there.
    ConstantTimeProcess every5(0, 5);
    EXPECT_FALSE(every5.occurs(3));
    EXPECT_FALSE(every5.occurs(7));
    EXPECT_TRUE(fired(every5, 8, 200).empty());
    EXPECT_EQ(every5.getNextAge(), 5u);
}

TEST(TimeProcess, ResetStartsOneIntervalAfterTheGivenAge)
{
    ConstantTimeProcess every4(0, 4);
    EXPECT_EQ(fired(every4, 1, 9), (std::vector<unsigned int>{4, 8}));
    every4.reset(10);
    EXPECT_TRUE(every4.isDrawPending());
    EXPECT_EQ(fired(every4, 10, 22), (std::vector<unsigned int>{14, 18, 22}));

    // Unstuck by a reset after a lost event.
    ConstantTimeProcess every5(0, 5);
    EXPECT_FALSE(every5.occurs(9));
    every5.reset(9);
    EXPECT_EQ(fired(every5, 10, 20), (std::vector<unsigned int>{14, 19}));
}

TEST(TimeProcess, ScheduleAcrossSequences)
{
    SeedGenerator seed;
    std::unique_ptr<TimeProcess> kept;
    renew(kept, &seed, record(MP_PROCESS_PERIODIC, 4, 9), 0);
    EXPECT_EQ(fired(*kept, 1, 10), (std::vector<unsigned int>{4, 8}));
    TimeProcess* before = kept.get();
    // Same parameters: the object and its schedule are kept (the unused Poisson
    // mean plays no part).
    renew(kept, &seed, record(MP_PROCESS_PERIODIC, 4, 3), 10);
    EXPECT_EQ(kept.get(), before);
    EXPECT_EQ(fired(*kept, 11, 20), (std::vector<unsigned int>{12, 16, 20}));
    // New period: the first event is one interval after the change.
    renew(kept, &seed, record(MP_PROCESS_PERIODIC, 6, 0), 21);
    EXPECT_EQ(fired(*kept, 22, 40), (std::vector<unsigned int>{27, 33, 39}));

    // A Poisson clock with the same mean keeps its drawn schedule too.
    std::unique_ptr<TimeProcess> poisson;
    renew(poisson, &seed, record(MP_PROCESS_POISSON, 2, 5), 0);
    fired(*poisson, 1, 30);
    const unsigned int next_age = dynamic_cast<DiscreteTimeProcess&>(*poisson).getNextAge();
    before = poisson.get();
    renew(poisson, &seed, record(MP_PROCESS_POISSON, 7, 5), 30);
    EXPECT_EQ(poisson.get(), before);
    EXPECT_EQ(dynamic_cast<DiscreteTimeProcess&>(*poisson).getNextAge(), next_age);
}

TEST(TimeProcess, PoissonIntervalsFollowTheStream)
{
    SeedGenerator seed;
    seed.reset(2024);
    ClosedFormStream expected(2024);
    PoissonTimeProcess poisson(&seed, 100, 7);
    EXPECT_EQ(poisson.mean_interval(), 7.0);

    // Event ages are the start plus the running sum of
    // round(0.5 - ln(u) (mean - 0.5)), u being each output over the modulus.
    std::vector<unsigned int> events;
    unsigned int age = 100;
    const unsigned int last_age = 20000;
    while (true)
    {
        const double u = static_cast<double>(expected.next()) / static_cast<double>(M);
        age += static_cast<unsigned int>(std::round(0.5 - std::log(u) * 6.5));
        if (age > last_age)
            break;
        events.push_back(age);
    }
    EXPECT_EQ(fired(poisson, 101, last_age), events);
    EXPECT_NEAR(static_cast<double>(last_age - 100) / static_cast<double>(events.size()), 7.0, 0.5);
}

TEST(TimeProcess, PoissonMeanOneGivesIntervalsOfAtLeastOne)
{
    SeedGenerator seed;
    seed.reset(99);
    ClosedFormStream expected(99);
    PoissonTimeProcess poisson(&seed, 0, 1);
    int ones = 0;
    for (int i = 0; i < 5000; ++i)
    {
        const unsigned int interval = poisson.next();
        const double u = static_cast<double>(expected.next()) / static_cast<double>(M);
        ASSERT_EQ(interval, static_cast<unsigned int>(std::round(0.5 + 0.5 * -std::log(u))));
        ASSERT_GE(interval, 1u);
        ones += interval == 1 ? 1 : 0;
    }
    EXPECT_GT(ones, 2500);
}

TEST(TimeProcess, CreateInstanceAndComparison)
{
    SeedGenerator seed;
    auto periodic = TimeProcess::createInstance(&seed, record(MP_PROCESS_PERIODIC, 6, 2), 3);
    auto* constant = dynamic_cast<ConstantTimeProcess*>(periodic.get());
    ASSERT_NE(constant, nullptr);
    EXPECT_EQ(constant->getPeriod(), 6u);
    EXPECT_EQ(fired(*periodic, 4, 15), (std::vector<unsigned int>{9, 15}));
    EXPECT_TRUE(*periodic == record(MP_PROCESS_PERIODIC, 6, 0));
    EXPECT_TRUE(*periodic != record(MP_PROCESS_PERIODIC, 5, 0));
    EXPECT_TRUE(*periodic != record(MP_PROCESS_POISSON, 6, 6));
    EXPECT_TRUE(*periodic != record(MP_PROCESS_NEVER, 6, 0));

    auto poisson = TimeProcess::createInstance(&seed, record(MP_PROCESS_POISSON, 6, 11), 0);
    auto* p = dynamic_cast<PoissonTimeProcess*>(poisson.get());
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->getMean(), 11u);
    EXPECT_EQ(poisson->mean_interval(), 11.0);
    EXPECT_TRUE(*poisson == record(MP_PROCESS_POISSON, 0, 11));
    EXPECT_TRUE(*poisson != record(MP_PROCESS_POISSON, 0, 12));
    EXPECT_TRUE(*poisson != record(MP_PROCESS_PERIODIC, 11, 11));

    for (int type : {MP_PROCESS_NEVER, 3, -1})
    {
        auto never = TimeProcess::createInstance(&seed, record(type, 8, 8), 4);
        auto* c = dynamic_cast<ConstantTimeProcess*>(never.get());
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(c->getPeriod(), 0u);
        EXPECT_EQ(never->mean_interval(), 0.0);
        EXPECT_TRUE(fired(*never, 5, 100).empty());
        // A clock that never fires equals every record that builds one.
        EXPECT_TRUE(*never == record(MP_PROCESS_NEVER, 3, 3));
        EXPECT_TRUE(*never == record(MP_PROCESS_PERIODIC, 0, 3));
        EXPECT_TRUE(*never != record(MP_PROCESS_POISSON, 0, 0));
    }

    // getParam builds back an equal clock.
    for (const TimeProcess* process : {periodic.get(), poisson.get()})
    {
        auto rebuilt = TimeProcess::createInstance(&seed, process->getParam(), 0);
        EXPECT_TRUE(*process == rebuilt->getParam());
        EXPECT_EQ(rebuilt->getParam()._type, process->getParam()._type);
    }
}

TEST(TimeProcess, SerializeRoundTripContinuesTheSchedules)
{
    TempDir dir;
    const std::string path = dir.file("dyn.txt");
    SeedGenerator seed;
    seed.reset(5150);
    ConstantTimeProcess periodic(0, 3);
    PoissonTimeProcess poisson(&seed, 0, 4);
    ConstantTimeProcess untouched(7, 2);
    fired(periodic, 1, 7);
    fired(poisson, 1, 40);
    {
        OutDataFile out(path);
        ASSERT_TRUE(seed.serialize(out));
        EXPECT_TRUE(periodic.serialize("EP", out));
        EXPECT_TRUE(poisson.serialize("LAV", out));
        EXPECT_TRUE(untouched.serialize("STATS", out));
        out.close();
    }
    const std::string text = read_file(path);
    EXPECT_NE(text.find("EP_INIT=0\nEP_NEXT=9\n"), std::string::npos);
    EXPECT_NE(text.find("STATS_INIT=1\nSTATS_NEXT=7\n"), std::string::npos);

    SeedGenerator seed2;
    ConstantTimeProcess periodic2(0, 3);
    PoissonTimeProcess poisson2(&seed2, 0, 4);
    ConstantTimeProcess untouched2(0, 2);
    InDataFile in(path);
    ASSERT_TRUE(seed2.deserialize(in));
    ASSERT_TRUE(periodic2.deserialize("EP", in));
    ASSERT_TRUE(poisson2.deserialize("LAV", in));
    ASSERT_TRUE(untouched2.deserialize("STATS", in));
    EXPECT_TRUE(untouched2.isDrawPending());

    EXPECT_EQ(fired(periodic2, 8, 60), fired(periodic, 8, 60));
    EXPECT_EQ(fired(poisson2, 41, 2000), fired(poisson, 41, 2000));
    EXPECT_EQ(fired(untouched2, 8, 30), fired(untouched, 8, 30));

    ConstantTimeProcess absent(0, 3);
    EXPECT_FALSE(absent.deserialize("AGG", in));
    EXPECT_EQ(absent.getNextAge(), 0u);
    EXPECT_TRUE(absent.isDrawPending());
}
