#include "kernel/driver/CrossingHistogram.h"

#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{
using Samples = std::vector<std::pair<unsigned char, double>>;

// A vertical log with its top at elevation 10, samples given from the top down.
Core log_of(const Samples& samples)
{
    Core core(0., 0., 10., "L");
    for (const auto& s : samples)
        core.add(s.first, s.second);
    return core;
}

CoreList logs_of(const std::vector<Samples>& logs)
{
    CoreList list;
    for (const Samples& s : logs)
        list.add(log_of(s));
    return list;
}

// (family, thickness) of each body, from the top down.
std::vector<std::pair<int, double>> bodies(const Core& log, bool sands)
{
    std::vector<std::pair<int, double>> out;
    for (const CrossingHistogram::Body& b : CrossingHistogram::bodies_of(log, sands))
        out.emplace_back(b.family, b.thickness());
    return out;
}

constexpr int SAND = CrossingHistogram::MP_SAND_BODY;
} // namespace

TEST(CrossingHistogram, BodiesAreRunsOfOneFamilyOrOfSands)
{
    struct Case
    {
        std::string what;
        Samples log;
        bool sands;
        std::vector<std::pair<int, double>> expected;
    };
    const std::vector<Case> cases = {
        {"neighbours of one family join", {{2, 1.}, {2, 0.5}, {8, 2.}}, false, {{2, 1.5}, {8, 2.}}},
        {"undefined facies ends a body", {{2, 1.}, {0, 0.5}, {2, 1.}}, false, {{2, 1.}, {2, 1.}}},
        {"families differ", {{1, 0.25}, {2, 1.}, {3, 0.75}}, false, {{1, 0.25}, {2, 1.}, {3, 0.75}}},
        {"sands join across families",
         {{1, 0.25}, {2, 1.}, {4, 0.75}, {8, 1.}, {2, 2.}},
         true,
         {{SAND, 2.}, {SAND, 2.}}},
        {"no sand, no sand body", {{8, 1.}, {9, 2.}}, true, {}},
        {"an empty log", {}, false, {}},
    };
    for (const Case& c : cases)
    {
        const auto got = bodies(log_of(c.log), c.sands);
        ASSERT_EQ(got.size(), c.expected.size()) << c.what;
        for (size_t k = 0; k < got.size(); ++k)
        {
            EXPECT_EQ(got[k].first, c.expected[k].first) << c.what;
            EXPECT_NEAR(got[k].second, c.expected[k].second, 1e-9) << c.what;
        }
    }
    // A gap between two samples of one family leaves two bodies.
    Core gapped(0., 0., 10., "G");
    gapped.add(2, 0., 0., 9.);
    gapped.add(2, 0., 0., 7.);
    gapped.getSamples().back().setZ(7.5);
    gapped.getSamples().back().setHeight(0.5);
    EXPECT_EQ(bodies(gapped, false).size(), 2u);
    // Grain-size classes in the high bits do not split a family.
    Core graded = log_of({{2, 1.}, {2, 1.}});
    graded.getSamples()[0].setFacies(0x52);
    graded.getSamples()[1].setFacies(0x32);
    EXPECT_EQ(bodies(graded, false), (std::vector<std::pair<int, double>>{{2, 2.}}));
}

TEST(CrossingHistogram, ClassesCountBodiesAndTheirThickness)
{
    // Point bars of 0.5, 1.5 and 3 m, channel lags of 0.25 and 1 m, one overbank of 2 m.
    const CoreList logs = logs_of({{{1, 0.25}, {2, 0.5}, {8, 2.}, {2, 1.5}}, {{2, 3.}, {1, 1.}}});
    const CrossingHistogram facies = CrossingHistogram::facies_crossing(logs, 1., 0);
    ASSERT_EQ(facies.classes(), 3);
    ASSERT_EQ(facies.kinds(), CrossingHistogram::MP_NB_FAMILIES);
    EXPECT_EQ(facies.kind_name(2), "PB");
    // Upper bounds belong to their class: (0, 1], (1, 2], (2, 3].
    const std::vector<std::pair<int, std::vector<int>>> counts = {
        {1, {2, 0, 0}}, {2, {1, 1, 1}}, {8, {0, 1, 0}}, {9, {0, 0, 0}}};
    for (const auto& row : counts)
        for (int k = 0; k < 3; ++k)
            EXPECT_EQ(facies.count(row.first, k), row.second[static_cast<size_t>(k)])
                << "family " << row.first << " class " << k;
    EXPECT_NEAR(facies.thickness(1, 0), 1.25, 1e-9);
    EXPECT_NEAR(facies.total_thickness(2), 5., 1e-9);

    // Fewer classes than bodies need: the last takes the thicker ones.
    const CrossingHistogram two = CrossingHistogram::facies_crossing(logs, 1., 2);
    EXPECT_EQ(two.count(2, 1), 2);

    // Sand bodies: 0.75 (CL + PB), 1.5, 4 (PB + CL) by 0.5 m: classes 1, 2 and 7 of 8.
    const CrossingHistogram sand = CrossingHistogram::sand_crossing(logs, 0.5, 0);
    ASSERT_EQ(sand.kinds(), 1);
    EXPECT_EQ(sand.kind_name(0), "Sand");
    ASSERT_EQ(sand.classes(), 8);
    EXPECT_EQ(sand.total_count(0), 3);
    const std::vector<double> bodies_share = {0., 1. / 3, 2. / 3, 2. / 3, 2. / 3, 2. / 3, 2. / 3, 1.};
    const std::vector<double> thickness_share = {0.,          0.75 / 6.25, 2.25 / 6.25, 2.25 / 6.25,
                                                 2.25 / 6.25, 2.25 / 6.25, 2.25 / 6.25, 1.};
    for (int k = 0; k < 8; ++k)
    {
        EXPECT_NEAR(sand.cumulative_count_share(0, k), bodies_share[static_cast<size_t>(k)], 1e-9) << k;
        EXPECT_NEAR(sand.cumulative_thickness_share(0, k), thickness_share[static_cast<size_t>(k)], 1e-9)
            << k;
    }
}

TEST(CrossingHistogram, NothingToCountGivesEmptyShares)
{
    EXPECT_EQ(CrossingHistogram::facies_crossing(CoreList(), 0., 5).classes(), 0);
    const CrossingHistogram none = CrossingHistogram::sand_crossing(logs_of({{{8, 2.}}}), 0.5, 0);
    ASSERT_EQ(none.classes(), 1);
    EXPECT_EQ(none.total_count(0), 0);
    EXPECT_EQ(none.cumulative_count_share(0, 0), 0.);
    EXPECT_EQ(none.cumulative_thickness_share(0, 0), 0.);
}
