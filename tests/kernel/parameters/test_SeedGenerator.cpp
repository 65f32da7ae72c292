#include "kernel/parameters/SeedGenerator.h"

#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include "TestSupport.h"

#include <cstdint>
#include <string>
#include <vector>

using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

constexpr std::int64_t M = 2147483647;

// s_n of the plain congruence s_{n+1} = 16807 s_n mod M, in 64-bit arithmetic.
std::int64_t power_step(std::int64_t s, int n)
{
    for (int i = 0; i < n; ++i)
        s = (16807 * s) % M;
    return s;
}

// After a filling from s_0 the table holds s_1..s_32 and the seed is s_32; the
// first output is slot 0, s_1, and each later one is the seed of the step
// before: s_33, s_34, ...
std::vector<int> expected_stream(std::int64_t s0, int count)
{
    std::vector<int> out;
    out.push_back(static_cast<int>(power_step(s0, 1)));
    std::int64_t s = power_step(s0, 33);
    while (static_cast<int>(out.size()) < count)
    {
        out.push_back(static_cast<int>(s));
        s = (16807 * s) % M;
    }
    return out;
}

std::vector<int> draw(SeedGenerator& gen, int count)
{
    std::vector<int> out;
    for (int i = 0; i < count; ++i)
        out.push_back(gen.get_next());
    return out;
}

} // namespace

TEST(SeedGenerator, SchrageStepIsTheExactCongruence)
{
    const std::vector<std::int64_t> seeds = {1,      2,         16807,      127772, 127773,
                                             127774, 165426111, 1043618065, M - 2,  M - 1};
    for (std::int64_t s : seeds)
        EXPECT_EQ(SeedGenerator::step(static_cast<int>(s)), power_step(s, 1)) << s;
    std::int64_t s = 987654321;
    for (int i = 0; i < 100000; ++i)
    {
        const int next = SeedGenerator::step(static_cast<int>(s));
        ASSERT_EQ(next, power_step(s, 1));
        s = next;
    }
    // The classic check value of the minimal standard generator.
    EXPECT_EQ(power_step(1, 10000), 1043618065);
}

TEST(SeedGenerator, DefaultStreamStartsOneStepAfterTheDefaultSeed)
{
    SeedGenerator gen;
    const std::int64_t s0 = 165426111;
    // Construction steps once before filling, so the filling starts from s_1.
    EXPECT_EQ(gen.getSeed(), power_step(s0, 33));
    ASSERT_EQ(gen.getTable().size(), 32u);
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(gen.getTable()[i], power_step(s0, i + 2)) << i;
    EXPECT_EQ(gen.getLast(), power_step(s0, 2));

    EXPECT_EQ(draw(gen, 5000), expected_stream(power_step(s0, 1), 5000));
    // Only slot 0 ever changes.
    for (int i = 1; i < 32; ++i)
        EXPECT_EQ(gen.getTable()[i], power_step(s0, i + 2));
}

TEST(SeedGenerator, ResetRestartsTheStreamFromTheGivenSeed)
{
    SeedGenerator gen;
    gen.reset(20231117);
    EXPECT_EQ(gen.getLast(), power_step(20231117, 1));
    EXPECT_EQ(gen.getSeed(), power_step(20231117, 32));
    const std::vector<int> first = draw(gen, 3000);
    EXPECT_EQ(first, expected_stream(20231117, 3000));

    gen.reset(20231117);
    EXPECT_EQ(draw(gen, 3000), first);

    // Resetting to the default seed is not the constructed state: construction
    // adds one step.
    SeedGenerator fresh;
    gen.reset(165426111);
    EXPECT_NE(gen.get_next(), fresh.get_next());
    gen.reset(static_cast<int>(power_step(165426111, 1)));
    SeedGenerator fresh2;
    EXPECT_EQ(draw(gen, 100), draw(fresh2, 100));

    for (int v : first)
    {
        EXPECT_GE(v, 1);
        EXPECT_LE(v, M - 1);
    }
}

TEST(SeedGenerator, UpdateSeedAndInitContinueFromTheCurrentSeed)
{
    SeedGenerator gen;
    gen.reset(42);
    EXPECT_EQ(gen.update_seed(), power_step(42, 33));
    // The pending slot 0 is unchanged; the later outputs skip one step.
    EXPECT_EQ(gen.get_next(), power_step(42, 1));
    EXPECT_EQ(gen.get_next(), power_step(42, 34));

    // The seed is now s_35; a new filling takes s_36..s_67.
    gen.init();
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(gen.getTable()[i], power_step(42, 36 + i));
    EXPECT_EQ(gen.get_next(), power_step(42, 36));
    EXPECT_EQ(gen.get_next(), power_step(42, 68));
}

TEST(SeedGenerator, SerializeRoundTripContinuesTheStream)
{
    TempDir dir;
    const std::string path = dir.file("dyn.txt");
    SeedGenerator gen;
    gen.reset(777);
    draw(gen, 123);
    {
        OutDataFile out(path);
        ASSERT_TRUE(out.is_open());
        EXPECT_TRUE(gen.serialize(out));
        out.close();
    }
    const std::string text = read_file(path);
    EXPECT_NE(text.find("SEED=" + std::to_string(gen.getSeed()) + "\n"), std::string::npos);
    EXPECT_NE(text.find("SHSEED=" + std::to_string(gen.getLast()) + "\n"), std::string::npos);
    for (int i = 0; i < 32; ++i)
        EXPECT_NE(text.find("SEED" + std::to_string(i) + "=" + std::to_string(gen.getTable()[i]) + "\n"),
                  std::string::npos)
            << i;

    SeedGenerator copy;
    InDataFile in(path);
    ASSERT_TRUE(in.is_open());
    ASSERT_TRUE(copy.deserialize(in));
    EXPECT_EQ(copy.getSeed(), gen.getSeed());
    EXPECT_EQ(copy.getLast(), gen.getLast());
    EXPECT_EQ(copy.getTable(), gen.getTable());
    EXPECT_EQ(draw(copy, 500), draw(gen, 500));
}

TEST(SeedGenerator, DeserializeRejectsIncompleteOrImpossibleStates)
{
    TempDir dir;
    std::string full;
    full += "SEED=100\nSHSEED=200\n";
    for (int i = 0; i < 32; ++i)
        full += "SEED" + std::to_string(i) + "=" + std::to_string(1000 + i) + "\n";

    const auto load = [&](const std::string& content, SeedGenerator& gen)
    {
        write_file(dir.file("d.txt"), content);
        InDataFile in(dir.file("d.txt"));
        return gen.deserialize(in);
    };

    SeedGenerator gen;
    ASSERT_TRUE(load(full, gen));
    EXPECT_EQ(gen.getSeed(), 100);
    EXPECT_EQ(gen.get_next(), 1000);

    const std::vector<std::string> broken = {
        full.substr(0, full.find("SEED31=")),                               // a missing slot
        full.substr(full.find("SHSEED=")),                                  // no seed
        std::string(full).replace(full.find("SEED5=1005"), 10, "SEED5=-3"), // never reachable
        std::string(full).replace(0, 8, "SEED=abc"),                        // not a number
    };
    for (const std::string& content : broken)
    {
        SeedGenerator other;
        other.reset(31);
        const std::vector<int> table = other.getTable();
        EXPECT_FALSE(load(content, other)) << content;
        EXPECT_EQ(other.getTable(), table);
        EXPECT_EQ(other.getSeed(), power_step(31, 32));
    }
}
