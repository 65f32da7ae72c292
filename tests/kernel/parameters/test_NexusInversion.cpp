#include "kernel/parameters/MeanderCalculator.h"

#include "TestSupport.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/parameters/Parameters.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing_support::capture_warnings;
using testing_support::g_trace;

namespace
{

struct Registry
{
    Registry() : params(&tracer), mc(&params, &tracer) { tracer.setTraceFunction(capture_warnings); }
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
    constexpr double GIVEN = MeanderCalculator::SAND_GIVEN_FOR_ISBX;
    for (double hmax : {2., 6., 10.})
        for (double sand : {0.2, 0.4, 0.6, 0.8})
        {
            double previous = 0.;
            for (double isbx : {30., 80., 150.})
            {
                Registry r;
                ASSERT_TRUE(r.nexus(hmax, isbx, sand));
                SCOPED_TRACE("depth " + std::to_string(hmax) + ", ISBX " + std::to_string(isbx) + ", NTG " +
                             std::to_string(sand));
                // Avulsion periods are whole iterations.
                const double chosen = r.mc.forecast_isbx();
                EXPECT_GE(chosen, 0.98 * isbx);
                // A higher index asked always spaces the avulsions out more.
                EXPECT_GT(chosen, previous);
                previous = chosen;
                const double intensity = r.params.getParamDouble("AG_OB_NORM_MEAN");
                EXPECT_GE(intensity, 0.);
                const double forecast = r.mc.forecast_sand_proportion();
                if (chosen > 1.02 * isbx)
                {
                    // Raised towards what the net to gross needs, the plugs
                    // alone bringing the fines: short by at most what the
                    // index may cost.
                    EXPECT_GE(forecast, sand - GIVEN - 5e-3);
                    EXPECT_LT(forecast, sand + 5e-3);
                    EXPECT_LT(intensity, 1e-3);
                }
                else if (intensity > 0.)
                    EXPECT_NEAR(forecast, sand, 2e-3);
                else
                {
                    // Short of the request, never by more than the index may cost.
                    EXPECT_LT(forecast, sand);
                    EXPECT_GE(forecast, sand - GIVEN - 5e-3);
                }
                EXPECT_NEAR(forecast, r.mc.forecast_sand_rate() / r.mc.forecast_aggradation_rate(), 1e-12);
            }
        }
}

TEST(NexusInversion, AHighNetToGrossRaisesALowIndexAndSaysSo)
{
    Registry r;
    g_trace.clear();
    ASSERT_TRUE(r.nexus(2., 30., 0.8));
    EXPECT_NE(g_trace.find("Sand bodies extension index raised from 30 to "), std::string::npos) << g_trace;
    const double raised = r.mc.forecast_isbx();
    EXPECT_GT(raised, 40.);
    EXPECT_LT(raised, 80.);
    // Every request below the floor keeps its place among the others.
    double previous = 0.;
    for (double isbx = MeanderCalculator::MIN_ISBX; isbx <= 80.; isbx += 5.)
    {
        Registry each;
        ASSERT_TRUE(each.nexus(6., isbx, 0.8));
        EXPECT_GT(each.mc.forecast_isbx(), previous + 0.5) << "ISBX " << isbx;
        previous = each.mc.forecast_isbx();
    }
    // Neqsus spaces the avulsions out the same way.
    Registry q;
    std::string message;
    ASSERT_TRUE(MeanderCalculator::apply_neqsus(&q.params, &q.tracer, {2., 30., 0.8}, true, message));
    EXPECT_GT(q.mc.forecast_isbx(), 40.);
    // A net to gross the plugs allow leaves the index asked alone.
    g_trace.clear();
    Registry low;
    ASSERT_TRUE(low.nexus(2., 30., 0.4));
    EXPECT_EQ(g_trace.find("raised"), std::string::npos);
    EXPECT_NEAR(low.mc.forecast_isbx(), 30., 0.6);
}

TEST(NexusInversion, UnreachableNetToGrossStopsTheFloodsAtTheBoundOfThePlugs)
{
    Registry r;
    // Even spaced out to the largest index, the avulsions leave more mud than 95 % allows.
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
