#include "kernel/MeanderCalculator.h"

#include "kernel/Constants.h"
#include "kernel/Parameters.h"
#include "kernel/Tracer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

void silent(const char*, TraceLevel) {}

struct Registry
{
    Registry() : params(&tracer), mc(&params, &tracer) { tracer.setTraceFunction(silent); }
    bool nexus(double hmax, double isbx, double sand)
    {
        std::string message;
        return MeanderCalculator::apply_nexus(&params, &tracer, {hmax, isbx, sand}, true, message) &&
               message.empty();
    }
    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
};

} // namespace

TEST(NexusInversion, ForecastsOfTheChosenParametersGiveBackTheRequest)
{
    for (double hmax : {2., 6., 10.})
        for (double isbx : {30., 80., 150.})
            for (double sand : {0.2, 0.4, 0.6, 0.8})
            {
                Registry r;
                ASSERT_TRUE(r.nexus(hmax, isbx, sand));
                SCOPED_TRACE("depth " + std::to_string(hmax) + ", ISBX " + std::to_string(isbx) + ", NTG " +
                             std::to_string(sand));
                // Avulsion periods are whole iterations.
                EXPECT_NEAR(r.mc.forecast_isbx(), isbx, 0.02 * isbx);
                const double intensity = r.params.getParamDouble("AG_OB_NORM_MEAN");
                EXPECT_GE(intensity, 0.);
                if (intensity > 0.)
                    EXPECT_NEAR(r.mc.forecast_sand_proportion(), sand, 2e-3);
                else
                    // Unreachable: the abandoned channels alone bring too much mud.
                    EXPECT_LT(r.mc.forecast_sand_proportion(), sand);
                EXPECT_NEAR(r.mc.forecast_sand_proportion(),
                            r.mc.forecast_sand_rate() / r.mc.forecast_aggradation_rate(), 1e-12);
            }
}

TEST(NexusInversion, UnreachableNetToGrossStopsTheFloodsAtTheBoundOfThePlugs)
{
    Registry r;
    // Avulsions before the channel has moved: mud plugs everywhere.
    ASSERT_TRUE(r.nexus(2., MeanderCalculator::MIN_ISBX, MeanderCalculator::MAX_SAND));
    EXPECT_EQ(r.params.getParamDouble("AG_OB_NORM_MEAN"), 0.);
    const double sand = r.mc.forecast_sand_rate();
    const double plugs = r.mc.forecast_plug_rate();
    ASSERT_GT(plugs, 0.);
    EXPECT_NEAR(r.mc.forecast_sand_proportion(), sand / (sand + plugs), 1e-12);
    EXPECT_LT(r.mc.forecast_sand_proportion(), MeanderCalculator::MAX_SAND);
    // Any flood would only lower it further.
    r.params.setParamDouble("AG_OB_NORM_MEAN", 0.01);
    EXPECT_LT(r.mc.forecast_sand_proportion(), sand / (sand + plugs));
}

TEST(NexusInversion, WithoutAvulsionsNoChannelIsAbandoned)
{
    Registry r;
    ASSERT_TRUE(r.nexus(3., 80., 0.5));
    EXPECT_GT(r.mc.forecast_plug_rate(), 0.);
    r.params.setParamInt("AV_REG_FREQ", 0);
    EXPECT_EQ(r.mc.forecast_plug_rate(), 0.);
    EXPECT_EQ(r.mc.widths_between_avulsions(), MeanderCalculator::MAX_WIDTHS);
    EXPECT_EQ(r.mc.forecast_isbx(), MeanderCalculator::MAX_ISBX);
}
