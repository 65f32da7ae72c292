#include "tools/ComputeTools.h"

#include "PlotSupport.h"
#include "TestSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/files/CoreList.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace
{
using testing_support::block_with_wells;
using testing_support::read_file;
using testing_support::TempDir;

using Tool = std::function<bool(const iSimulator&, PlotData&, std::string&)>;

struct NamedTool
{
    std::string name;
    Tool tool;
    bool needsWells;
};

std::vector<NamedTool> all_tools()
{
    const double dz = ComputeTools::MP_DEFAULT_STEP;
    using namespace std::placeholders;
    return {
        {"simulation_vpc", std::bind(ComputeTools::simulation_vpc, _1, dz, _2, _3), false},
        {"simulation_pm", ComputeTools::simulation_pm, false},
        {"simulation_histo", std::bind(ComputeTools::simulation_histo, _1, dz, _2, _3), false},
        {"simulation_histo_cumul", std::bind(ComputeTools::simulation_histo_cumul, _1, dz, _2, _3), false},
        {"well_vpc", std::bind(ComputeTools::well_vpc, _1, dz, _2, _3), true},
        {"well_histo", std::bind(ComputeTools::well_histo, _1, dz, _2, _3), true},
        {"well_histo_cumul", std::bind(ComputeTools::well_histo_cumul, _1, dz, _2, _3), true},
        {"conditioning_statistics", ComputeTools::conditioning_statistics, true},
    };
}

const PlotSeries* series_named(const PlotData& plot, const std::string& name)
{
    for (const PlotSeries& s : plot.series)
        if (s.name == name)
            return &s;
    return nullptr;
}

double sum(const std::vector<double>& values)
{
    double total = 0.;
    for (double v : values)
        total += v;
    return total;
}
} // namespace

TEST(ComputeTools, WithoutABlockOrWellsEachToolSaysWhy)
{
    auto sim = testing_support::simulator_on_grid(70, 60);
    for (const NamedTool& t : all_tools())
    {
        PlotData plot;
        std::string error;
        EXPECT_FALSE(t.tool(*sim, plot, error)) << t.name;
        if (t.needsWells)
            EXPECT_EQ(error, "There is no conditioning well: import wells first.") << t.name;
        else
            EXPECT_FALSE(error.empty()) << t.name;
    }
    PlotData plot;
    std::string error;
    ASSERT_EQ(sim->init(false), MP_STATUS_OK);
    EXPECT_FALSE(ComputeTools::simulation_vpc(*sim, 0., plot, error));
    EXPECT_EQ(error, "Wrong step 0 (must be > 0.)");
    EXPECT_FALSE(ComputeTools::well_histo(*sim, -1., plot, error));
    EXPECT_EQ(error, "Wrong step -1 (must be > 0.)");
}

TEST(ComputeTools, EveryToolDescribesTheSeededBlockAndItsWells)
{
    auto sim = block_with_wells();
    ASSERT_NE(sim, nullptr) << testing_support::g_trace;
    std::map<std::string, PlotData> plots;
    for (const NamedTool& t : all_tools())
    {
        std::string error;
        ASSERT_TRUE(t.tool(*sim, plots[t.name], error)) << t.name << ": " << error;
        EXPECT_FALSE(plots[t.name].title.empty()) << t.name;
    }
    // Shares of the families make up each slice with deposits.
    for (const std::string name : {"simulation_vpc", "well_vpc"})
    {
        const PlotData& vpc = plots[name];
        ASSERT_FALSE(vpc.series.empty()) << name;
        const size_t slices = vpc.series.front().x.size();
        ASSERT_GT(slices, 2u) << name;
        for (size_t k = 0; k < slices; ++k)
        {
            double total = 0.;
            for (const PlotSeries& s : vpc.series)
                total += s.y.at(k);
            EXPECT_NEAR(total, 1., 1e-9) << name << " slice " << k;
        }
    }
    // One value per node, a share.
    const PlotData& pm = plots["simulation_pm"];
    ASSERT_EQ(pm.mapX.size(), 70u);
    ASSERT_EQ(pm.mapY.size(), 60u);
    double lo = 0., hi = 0.;
    ASSERT_TRUE(pm.value_range(lo, hi));
    EXPECT_GE(lo, 0.);
    EXPECT_LE(hi, 1.);
    EXPECT_GT(hi, 0.);

    // The point bars crossed by the columns, counted from the joined facies sequences.
    CoreList columns;
    ASSERT_TRUE(sim->getVCollections(columns, 0, 69, 0, 59, MP_UNDEF_REAL, MP_UNDEF_REAL));
    int pointBars = 0;
    for (const Core& column : columns)
    {
        int previous = -1;
        for (const CoreSample& s : column.getSamples())
        {
            const int f = Facies::family(s.getFacies());
            pointBars += f == 2 && previous != 2 ? 1 : 0;
            previous = f;
        }
    }
    const PlotSeries* pb = series_named(plots["simulation_histo"], "PB");
    ASSERT_NE(pb, nullptr);
    EXPECT_EQ(sum(pb->y), pointBars);

    // Cumulative shares grow to the whole.
    for (const std::string name : {"simulation_histo_cumul", "well_histo_cumul"})
        for (const PlotSeries& s : plots[name].series)
        {
            for (size_t k = 1; k < s.y.size(); ++k)
                EXPECT_GE(s.y[k], s.y[k - 1]) << name;
            EXPECT_NEAR(s.y.back(), 1., 1e-9) << name << " " << s.name;
        }

    // The drawn wells stand on their own columns; the made-up one does not.
    const PlotData& stats = plots["conditioning_statistics"];
    ASSERT_EQ(stats.categories, (std::vector<std::string>{"E1", "E2", "M", "All wells"}));
    const PlotSeries* match = series_named(stats, "Facies match");
    ASSERT_NE(match, nullptr);
    ASSERT_EQ(match->y.size(), 4u);
    EXPECT_NEAR(match->y[0], 1., 1e-9);
    EXPECT_NEAR(match->y[1], 1., 1e-9);
    EXPECT_LT(match->y[2], 1.);
    EXPECT_LT(match->y[3], 1.);
}

TEST(ComputeTools, OneSeedGivesTheSameTables)
{
    TempDir dir;
    std::vector<std::string> tables[2];
    for (auto& run : tables)
    {
        auto sim = block_with_wells();
        ASSERT_NE(sim, nullptr);
        for (const NamedTool& t : all_tools())
        {
            PlotData plot;
            std::string error;
            ASSERT_TRUE(t.tool(*sim, plot, error)) << error;
            ASSERT_TRUE(plot.write_csv(dir.file(t.name + ".csv"), error)) << error;
            run.push_back(read_file(dir.file(t.name + ".csv")));
        }
    }
    EXPECT_EQ(tables[0], tables[1]);
}
