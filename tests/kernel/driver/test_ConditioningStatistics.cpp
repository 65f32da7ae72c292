#include "kernel/driver/ConditioningStatistics.h"

#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{
using Samples = std::vector<std::pair<unsigned char, double>>;

// A vertical log at (x, y) from its top down.
Core log_of(const std::string& name, double top, const Samples& samples, double x = 0., double y = 0.)
{
    Core core(x, y, top, name);
    for (const auto& s : samples)
        core.add(s.first, s.second);
    return core;
}
} // namespace

TEST(ConditioningStatistics, SharesOfTheComparedHeight)
{
    struct Case
    {
        std::string what;
        Core well;
        Core column;
        double compared, facies, sand, wellSand, simulatedSand;
    };
    const std::vector<Case> cases = {
        {"identical", log_of("W", 10., {{2, 1.}, {8, 1.}}), log_of("C", 10., {{2, 1.}, {8, 1.}}), 2., 1., 1.,
         0.5, 0.5},
        // PB over OB against CL over PB over OB: families agree on 1 m of 2, sands on 1.5 m.
        {"shifted contact", log_of("W", 10., {{2, 1.}, {8, 1.}}),
         log_of("C", 10., {{1, 0.5}, {2, 1.}, {8, 0.5}}), 2., 0.5, 0.75, 0.5, 0.75},
        // The well reaches 2 m above the deposits: only the lower 2 m are compared.
        {"well above the block", log_of("W", 12., {{8, 3.}, {2, 1.}}), log_of("C", 10., {{8, 1.}, {2, 1.}}),
         2., 1., 1., 0.5, 0.5},
        // Undefined facies tell nothing.
        {"undefined in the log", log_of("W", 10., {{0, 1.}, {2, 1.}}), log_of("C", 10., {{2, 2.}}), 1., 1.,
         1., 1., 1.},
        {"no column", log_of("W", 10., {{2, 1.}}), Core(), 0., 0., 0., 0., 0.},
        {"no overlap", log_of("W", 10., {{2, 1.}}), log_of("C", 5., {{2, 1.}}), 0., 0., 0., 0., 0.},
    };
    for (const Case& c : cases)
    {
        const auto m = ConditioningStatistics::compare(c.well, c.column);
        EXPECT_NEAR(m.compared, c.compared, 1e-9) << c.what;
        EXPECT_NEAR(m.faciesMatch, c.facies, 1e-9) << c.what;
        EXPECT_NEAR(m.sandMatch, c.sand, 1e-9) << c.what;
        EXPECT_NEAR(m.wellSand, c.wellSand, 1e-9) << c.what;
        EXPECT_NEAR(m.simulatedSand, c.simulatedSand, 1e-9) << c.what;
    }
}

TEST(ConditioningStatistics, AllWellsWeighByComparedHeight)
{
    CoreList wells, columns;
    wells.add(log_of("A", 10., {{2, 1.}}, 100., 200.));
    columns.add(log_of("", 10., {{2, 1.}}));
    wells.add(log_of("B", 10., {{2, 3.}}));
    columns.add(log_of("", 10., {{8, 3.}}));
    const ConditioningStatistics stats = ConditioningStatistics::compare(wells, columns);
    ASSERT_EQ(stats.wells().size(), 2u);
    EXPECT_EQ(stats.wells()[0].name, "A");
    EXPECT_EQ(stats.wells()[0].x, 100.);
    EXPECT_EQ(stats.wells()[0].y, 200.);
    EXPECT_EQ(stats.overall().name, "All wells");
    EXPECT_NEAR(stats.overall().compared, 4., 1e-9);
    EXPECT_NEAR(stats.overall().faciesMatch, 0.25, 1e-9);
    EXPECT_NEAR(stats.overall().simulatedSand, 0.25, 1e-9);
    EXPECT_NEAR(stats.overall().wellSand, 1., 1e-9);
    // A column per well, or the caller is wrong.
    columns.clear();
    EXPECT_THROW(ConditioningStatistics::compare(wells, columns), std::string);
}
