#include "kernel/parameters/DistributionGenerator.h"

#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"
#include "kernel/parameters/SeedGenerator.h"

#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;
using testing_support::TempDir;

namespace
{

constexpr double M = 2147483647.0;

// Generator state, to count the draws a law takes.
struct State
{
    explicit State(const SeedGenerator& g) : seed(g.getSeed()), last(g.getLast()) {}
    bool operator==(const State& o) const { return seed == o.seed && last == o.last; }
    int seed;
    int last;
};

// Number of outputs taken between two states of a generator reset to s0.
int draws_between(int s0, const State& from, const State& to)
{
    SeedGenerator g;
    g.reset(s0);
    while (!(State(g) == from))
        g.get_next();
    int n = 0;
    while (!(State(g) == to) && n < 100)
    {
        g.get_next();
        ++n;
    }
    return n;
}

// Box-Muller pair computed from a twin generator.
std::pair<double, double> twin_pair(SeedGenerator& twin, double mean, double sd)
{
    const double u1 = twin.get_next() / M;
    const double u2 = twin.get_next() / M;
    const double r = std::sqrt(-2.0 * std::log(u1));
    const double a = u2 * 6.2831853;
    return {mean + sd * r * std::cos(a), mean + sd * r * std::sin(a)};
}

DistGenParamType record(int type)
{
    DistGenParamType p;
    p._type = type;
    p._constant = 2.5;
    p._min = -1.0;
    p._max = 3.0;
    p._norm_mean = 10.0;
    p._norm_stdev = 2.0;
    p._lognorm_mean = 4.0;
    p._lognorm_stdev = 1.5;
    return p;
}

} // namespace

TEST(DistributionGenerator, RandomAndUniformScaleTheRawStream)
{
    SeedGenerator seed;
    SeedGenerator twin;
    RandomDistributionGenerator raw(&seed);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(raw(), static_cast<double>(twin.get_next()));

    UniformDistributionGenerator uniform(&seed, -2.0, 6.0);
    EXPECT_EQ(uniform.mean(), 2.0);
    for (int i = 0; i < 1000; ++i)
    {
        const double v = uniform();
        ASSERT_EQ(v, twin.get_next() * 8.0 / M - 2.0);
        ASSERT_GT(v, -2.0);
        ASSERT_LT(v, 6.0);
    }

    // Inverted bounds are not sorted and do not fail.
    UniformDistributionGenerator inverted(&seed, 5.0, 2.0);
    EXPECT_EQ(inverted.mean(), 3.5);
    for (int i = 0; i < 1000; ++i)
    {
        const double v = inverted();
        ASSERT_EQ(v, twin.get_next() * -3.0 / M + 5.0);
        ASSERT_GE(v, 2.0);
        ASSERT_LE(v, 5.0);
    }

    // A degenerate draw is the one failure, with its exact text.
    const double inf = std::numeric_limits<double>::infinity();
    UniformDistributionGenerator unbounded(&seed, -inf, inf);
    const std::string text = assertion_text([&] { unbounded(); });
    EXPECT_TRUE(is_assertion_of(text, "val >= _min || val <= _max")) << text;
    EXPECT_NE(text.find("DistributionGenerator.cpp"), std::string::npos);
    UniformDistributionGenerator half_line(&seed, 0.0, inf);
    EXPECT_EQ(half_line(), inf);
    UniformDistributionGenerator nan(&seed, 0.0, std::nan(""));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { nan(); }), "val >= _min || val <= _max"));
}

TEST(DistributionGenerator, PositiveFlagClampsDrawsAndMeans)
{
    SeedGenerator seed;
    UniformDistributionGenerator below(&seed, -3.0, -1.0, true);
    EXPECT_EQ(below.mean(), 0.0);
    GaussianDistributionGenerator gauss(&seed, -50.0, 1.0, true);
    EXPECT_EQ(gauss.mean(), 0.0);
    ConstantDistributionGenerator constant(&seed, -4.0, true);
    EXPECT_EQ(constant(), 0.0);
    EXPECT_EQ(constant.mean(), 0.0);
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_EQ(below(), 0.0);
        EXPECT_EQ(gauss(), 0.0);
    }
    // Without the flag a negative law stays negative.
    GaussianDistributionGenerator free_gauss(&seed, -50.0, 1.0);
    EXPECT_LT(free_gauss(), 0.0);
    EXPECT_EQ(free_gauss.mean(), -50.0);
    ConstantDistributionGenerator free_constant(&seed, -4.0);
    EXPECT_EQ(free_constant(), -4.0);

    // Positive values pass untouched.
    UniformDistributionGenerator mixed(&seed, -1.0, 1.0, true);
    bool some_positive = false;
    for (int i = 0; i < 100; ++i)
    {
        const double v = mixed();
        EXPECT_GE(v, 0.0);
        some_positive = some_positive || v > 0.0;
    }
    EXPECT_TRUE(some_positive);
}

TEST(DistributionGenerator, GaussianKeepsTheSecondValueOfEachPair)
{
    SeedGenerator seed;
    seed.reset(31337);
    SeedGenerator twin;
    twin.reset(31337);
    GaussianDistributionGenerator gauss(&seed, 10.0, 3.0);
    for (int pair = 0; pair < 200; ++pair)
    {
        const auto expected = twin_pair(twin, 10.0, 3.0);
        const State before(seed);
        ASSERT_DOUBLE_EQ(gauss(), expected.first);
        EXPECT_TRUE(gauss.hasSecondValue());
        const State middle(seed);
        ASSERT_DOUBLE_EQ(gauss(), expected.second);
        EXPECT_FALSE(gauss.hasSecondValue());
        // Two uniforms for the first value, none for the second.
        ASSERT_TRUE(State(seed) == middle);
        if (pair < 3)
        {
            EXPECT_EQ(draws_between(31337, before, middle), 2);
        }
    }

    // A negative deviation is made positive: the same draws as its opposite.
    SeedGenerator a;
    SeedGenerator b;
    GaussianDistributionGenerator neg(&a, 1.0, -2.0);
    GaussianDistributionGenerator pos(&b, 1.0, 2.0);
    EXPECT_EQ(neg.getStdev(), 2.0);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(neg(), pos());

    // A deviation of 0 is a constant that still takes its draws.
    SeedGenerator c;
    GaussianDistributionGenerator flat(&c, 7.25, 0.0);
    const State start(c);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(flat(), 7.25);
    SeedGenerator d;
    for (int i = 0; i < 10; ++i)
        d.get_next();
    EXPECT_TRUE(State(c) == State(d));
}

TEST(DistributionGenerator, LognormalConversionAndDraws)
{
    double mu = 9.0;
    double s = 9.0;
    Lognormal_Z_to_Y(0.0, 5.0, mu, s);
    EXPECT_EQ(mu, 0.0);
    EXPECT_EQ(s, 0.0);
    Lognormal_Z_to_Y(-2.0, 5.0, mu, s);
    EXPECT_EQ(mu, 0.0);
    EXPECT_EQ(s, 0.0);

    Lognormal_Z_to_Y(4.0, 3.0, mu, s);
    EXPECT_DOUBLE_EQ(s, std::sqrt(std::log(9.0 / 16.0 + 1.0)));
    EXPECT_DOUBLE_EQ(mu, std::log(4.0) - 0.5 * std::log(25.0 / 16.0));
    SeedGenerator seed;
    SeedGenerator twin;
    LognormalDistributionGenerator logn(&seed, mu, s);
    EXPECT_NEAR(logn.mean(), 4.0, 1e-12);
    EXPECT_NEAR(logn.standard_deviation(), 3.0, 1e-12);
    for (int i = 0; i < 100; ++i)
    {
        const auto pair = twin_pair(twin, mu, s);
        ASSERT_DOUBLE_EQ(logn(), std::exp(pair.first));
        ASSERT_DOUBLE_EQ(logn(), std::exp(pair.second));
    }

    // Mean 0 gives exactly 1, draws still taken.
    DistGenParamType zero = record(MP_DIST_LOGNORMAL);
    zero._lognorm_mean = 0.0;
    auto one = DistributionGenerator::createInstance(&seed, zero);
    EXPECT_EQ(one->mean(), 1.0);
    const State before(seed);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ((*one)(), 1.0);
    EXPECT_FALSE(State(seed) == before);

    // The positive flag never touches the underlying normal law.
    LognormalDistributionGenerator small(&seed, -5.0, 0.5, true);
    for (int i = 0; i < 20; ++i)
    {
        const double v = small();
        EXPECT_GT(v, 0.0);
        EXPECT_LT(v, 0.1);
    }
}

TEST(DistributionGenerator, CreateInstanceAndComparison)
{
    SeedGenerator seed;
    auto constant = DistributionGenerator::createInstance(&seed, record(MP_DIST_CONSTANT));
    auto uniform = DistributionGenerator::createInstance(&seed, record(MP_DIST_UNIFORM));
    auto gauss = DistributionGenerator::createInstance(&seed, record(MP_DIST_GAUSSIAN), true);
    auto logn = DistributionGenerator::createInstance(&seed, record(MP_DIST_LOGNORMAL));
    auto other = DistributionGenerator::createInstance(&seed, record(17));

    ASSERT_NE(dynamic_cast<ConstantDistributionGenerator*>(constant.get()), nullptr);
    ASSERT_NE(dynamic_cast<ConstantDistributionGenerator*>(other.get()), nullptr);
    auto* u = dynamic_cast<UniformDistributionGenerator*>(uniform.get());
    ASSERT_NE(u, nullptr);
    EXPECT_EQ(u->getMin(), -1.0);
    EXPECT_EQ(u->getMax(), 3.0);
    auto* g = dynamic_cast<GaussianDistributionGenerator*>(gauss.get());
    ASSERT_NE(g, nullptr);
    EXPECT_EQ(dynamic_cast<LognormalDistributionGenerator*>(gauss.get()), nullptr);
    EXPECT_TRUE(g->isPositive());
    EXPECT_FALSE(uniform->isPositive());
    auto* l = dynamic_cast<LognormalDistributionGenerator*>(logn.get());
    ASSERT_NE(l, nullptr);

    EXPECT_EQ(constant->mean(), 2.5);
    EXPECT_EQ((*constant)(), 2.5);
    EXPECT_EQ(uniform->mean(), 1.0);
    EXPECT_EQ(gauss->mean(), 10.0);
    EXPECT_NEAR(logn->mean(), 4.0, 1e-12);
    EXPECT_NEAR(l->standard_deviation(), 1.5, 1e-12);

    // Each law equals the record that built it and nothing else.
    const std::vector<DistributionGenerator*> laws = {constant.get(), uniform.get(), gauss.get(), logn.get()};
    for (int i = 0; i < 4; ++i)
        for (int type = 0; type < 4; ++type)
            EXPECT_EQ(*laws[i] == record(type), i == type) << i << " " << type;
    EXPECT_TRUE(*other == record(MP_DIST_CONSTANT));

    // Only the fields of its own law matter.
    DistGenParamType p = record(MP_DIST_GAUSSIAN);
    p._constant = 99.0;
    p._min = 99.0;
    EXPECT_FALSE(*gauss != p);
    p._norm_stdev = -2.0;
    EXPECT_FALSE(*gauss != p);
    p._norm_mean = 10.5;
    EXPECT_TRUE(*gauss != p);
    p = record(MP_DIST_UNIFORM);
    p._max = 3.5;
    EXPECT_TRUE(*uniform != p);
    p = record(MP_DIST_LOGNORMAL);
    p._lognorm_stdev = 1.25;
    EXPECT_TRUE(*logn != p);
    p = record(MP_DIST_CONSTANT);
    p._constant = 2.0;
    EXPECT_TRUE(*constant != p);

    // getParam builds back the same law.
    for (DistributionGenerator* law : {constant.get(), uniform.get(), gauss.get()})
        EXPECT_TRUE(*law == law->getParam());
    const DistGenParamType lp = logn->getParam();
    EXPECT_EQ(lp._type, MP_DIST_LOGNORMAL);
    EXPECT_NEAR(lp._lognorm_mean, 4.0, 1e-12);
    EXPECT_NEAR(lp._lognorm_stdev, 1.5, 1e-12);
}

TEST(DistributionGenerator, SerializeRoundTripContinuesTheDraws)
{
    TempDir dir;
    for (int taken : {0, 1, 2, 7})
    {
        const std::string path = dir.file("dist" + std::to_string(taken) + ".txt");
        SeedGenerator seed;
        seed.reset(424242);
        GaussianDistributionGenerator gauss(&seed, 0.3, 1.7);
        UniformDistributionGenerator uniform(&seed, 0.0, 1.0);
        for (int i = 0; i < taken; ++i)
            gauss();
        {
            OutDataFile out(path);
            ASSERT_TRUE(seed.serialize(out));
            ASSERT_TRUE(gauss.serialize(out));
            ASSERT_TRUE(uniform.serialize(out));
            out.close();
        }
        SeedGenerator seed2;
        GaussianDistributionGenerator gauss2(&seed2, 0.3, 1.7);
        UniformDistributionGenerator uniform2(&seed2, 0.0, 1.0);
        InDataFile in(path);
        ASSERT_TRUE(seed2.deserialize(in));
        ASSERT_TRUE(gauss2.deserialize(in));
        ASSERT_TRUE(uniform2.deserialize(in));
        EXPECT_EQ(gauss2.hasSecondValue(), gauss.hasSecondValue());
        for (int i = 0; i < 50; ++i)
        {
            ASSERT_EQ(gauss2(), gauss()) << taken << " " << i;
            ASSERT_EQ(uniform2(), uniform());
        }
    }

    // A file without the Gaussian's state is refused and changes nothing.
    testing_support::write_file(dir.file("empty.txt"), "SEED=1\n");
    SeedGenerator seed;
    GaussianDistributionGenerator gauss(&seed, 0.0, 1.0);
    gauss();
    InDataFile in(dir.file("empty.txt"));
    EXPECT_FALSE(gauss.deserialize(in));
    EXPECT_TRUE(gauss.hasSecondValue());
}
