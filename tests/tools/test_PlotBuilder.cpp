#include "tools/PlotBuilder.h"

#include "kernel/driver/ConditioningStatistics.h"
#include "kernel/driver/CrossingHistogram.h"
#include "kernel/driver/FaciesProportions.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{
using Samples = std::vector<std::pair<unsigned char, double>>;

Core log_of(const std::string& name, double top, const Samples& samples)
{
    Core core(0., 0., top, name);
    for (const auto& s : samples)
        core.add(s.first, s.second);
    return core;
}

// Names of the series, and each one's keys and values.
std::string described(const PlotData& plot)
{
    std::string text;
    for (const PlotSeries& s : plot.series)
    {
        text += s.name + (s.style == PlotSeries::MP_BARS ? "[bars]" : "") + ":";
        for (size_t k = 0; k < s.x.size(); ++k)
            text += " " + std::to_string(s.x[k]).substr(0, 5) + "=" + std::to_string(s.y[k]).substr(0, 5);
        text += "; ";
    }
    return text;
}
} // namespace

TEST(PlotBuilder, EachResultBecomesItsChart)
{
    CoreList logs;
    // From elevation 10 down: 1 m of point bar, a 1 m gap, then overbank over channel lag.
    logs.add(log_of("A", 10., {{2, 1.}}));
    logs.add(log_of("B", 8., {{8, 0.5}, {1, 0.5}}));
    struct Case
    {
        std::string what;
        PlotData plot;
        std::string series;
    };
    const std::vector<Case> cases = {
        // Slices of 1 m from 7: the empty slice [8, 9] has no point; families absent have no curve.
        {"curves along the slices with deposits",
         PlotBuilder::vertical_proportions(FaciesProportions::vertical_curve(logs, 1.), "VPC"),
         "CL: 7.500=0.500 9.500=0.000; PB: 7.500=0.000 9.500=1.000; OB: 7.500=0.500 9.500=0.000; "},
        {"bars by class for the families crossed",
         PlotBuilder::facies_crossing(CrossingHistogram::facies_crossing(logs, 0.5, 0), "F"),
         "CL[bars]: 0.250=1.000 0.750=0.000; PB[bars]: 0.250=0.000 0.750=1.000; "
         "OB[bars]: 0.250=1.000 0.750=0.000; "},
        {"cumulative bars of sand bodies and sand thickness",
         PlotBuilder::sand_crossing(CrossingHistogram::sand_crossing(logs, 0.5, 0), "S"),
         "Sand bodies[bars]: 0.250=0.500 0.750=1.000; Sand thickness[bars]: 0.250=0.333 0.750=1.000; "},
    };
    for (const Case& c : cases)
        EXPECT_EQ(described(c.plot), c.series) << c.what;
    EXPECT_TRUE(cases[0].plot.keyVertical);
    EXPECT_EQ(cases[1].plot.barWidth, 0.5);
    EXPECT_EQ(cases[1].plot.series[0].colour, 1) << "a family's series takes its colour";
}

TEST(PlotBuilder, AWellWithNothingComparedKeepsItsPlace)
{
    CoreList wells, columns;
    wells.add(log_of("OFF", 10., {{2, 1.}}));
    columns.add(Core());
    wells.add(log_of("ON", 10., {{2, 1.}, {8, 1.}}));
    columns.add(log_of("", 10., {{2, 2.}}));
    const PlotData plot = PlotBuilder::conditioning(ConditioningStatistics::compare(wells, columns), "C");
    EXPECT_EQ(plot.categories, (std::vector<std::string>{"OFF", "ON", "All wells"}));
    EXPECT_EQ(described(plot), "Facies match[bars]: 1.000=0.500 2.000=0.500; "
                               "Sand match[bars]: 1.000=0.500 2.000=0.500; "
                               "Sand in well[bars]: 1.000=0.500 2.000=0.500; "
                               "Sand in block[bars]: 1.000=1.000 2.000=1.000; ");
}
