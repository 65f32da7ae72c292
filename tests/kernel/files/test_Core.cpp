// Logs as lists of intervals: construction, ordering, trimming, closing of
// thin gaps, cutting, splitting of deviated wells, comparison, shifts and
// translation of user attributes into facies.
#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/UserClassList.h"
#include "kernel/geometry/GridParams.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using testing_support::capture;
using testing_support::g_trace;

namespace
{
// Top at 10: point bar 10-8, overbank 8-5, channel lag 5-4.
Core three_layers()
{
    Core core(100., 200., 10., "W1");
    core.add(2, 2.);
    core.add(8, 3.);
    core.add(1, 1.);
    return core;
}
} // namespace

TEST(CoreSample, ConstructionClampsFaciesAndHeight)
{
    const CoreSample thin(2, 0., 0., 5., Point2D(1., 2.));
    EXPECT_DOUBLE_EQ(thin.getHeight(), 0.01);
    EXPECT_EQ(thin.getFacies(), 2);
    EXPECT_EQ(thin.getGrainClass(), 10); // point bar's default class
    EXPECT_EQ(CoreSample(14, 1., 1., 0., Point2D()).getFacies(), 0);
    EXPECT_EQ(CoreSample(13, 1., 1., 0., Point2D()).getFacies(), 13);
    EXPECT_FALSE(thin.hasAttributeValue());
    EXPECT_DOUBLE_EQ(CoreSample(1, 0.02, 0., 0., Point2D()).getHeight(), 0.02);
}

TEST(Core, AddFormsPlaceSamplesBelowEachOther)
{
    Core core(1., 2., 10., "W");
    EXPECT_TRUE(core.empty());
    EXPECT_TRUE(core.has_discrete_attribute());
    EXPECT_DOUBLE_EQ(core.bottom_elevation(), 10.);
    EXPECT_DOUBLE_EQ(core.height(), 0.);

    ASSERT_TRUE(core.add(2, 1.5));
    ASSERT_TRUE(core.add(8, 2., 3.));
    EXPECT_DOUBLE_EQ(core.getSample(1).getZ(), 6.5);
    EXPECT_DOUBLE_EQ(core.getSample(1).getLength(), 3.);
    EXPECT_DOUBLE_EQ(core.height(), 3.5);

    // The x, y, z form measures from the previous bottom.
    ASSERT_TRUE(core.add(1, 4., 6., 4.5));
    const CoreSample& last = core.getSample(2);
    EXPECT_DOUBLE_EQ(last.getHeight(), 2.);
    EXPECT_DOUBLE_EQ(last.getLength(), std::sqrt(9. + 16. + 4.));
    EXPECT_DOUBLE_EQ(core.bottom_location().get_abscissa(), 4.);

    EXPECT_FALSE(core.add(14, 1.));
    EXPECT_EQ(core.getError(), "Invalid facies for sample #4 (unknown facies identifier: 14)");
    EXPECT_EQ(core.size(), 3);

    CoreSampleTags tags;
    tags.attributeValue = 2.5;
    core.add(3, 1., tags);
    EXPECT_FALSE(core.has_discrete_attribute());
    EXPECT_EQ(core.key(), Point2D(1., 2.).debug());

    Core copy = core;
    copy.clear();
    EXPECT_EQ(core.size(), 4);
}

TEST(Core, MakeDownwardOrdersAndChecksContiguity)
{
    Core core = three_layers();
    std::swap(core.getSamples()[0], core.getSamples()[2]);
    ASSERT_TRUE(core.make_downward());
    EXPECT_EQ(core.getSample(0).getFacies(), 2);
    EXPECT_EQ(core.getSample(2).getFacies(), 1);

    Core gap = three_layers();
    gap.getSamples()[1].setHeight(2.);
    EXPECT_FALSE(gap.make_downward());
    EXPECT_EQ(gap.getError(), "Non consecutive core samples in well W1");

    Core high = three_layers();
    high.set_top_elevation(11.);
    EXPECT_FALSE(high.make_downward());
    EXPECT_EQ(high.getError(), "Inconsistent top elevation in well W1");
}

TEST(Core, TrimRemovesUndefinedEnds)
{
    Core core(0., 0., 10., "W");
    core.add(0, 1.);
    core.add(0, 1.);
    core.add(2, 2.);
    core.add(0, 1.);
    core.add(8, 1.);
    core.add(0, 3.);
    core.trim();
    ASSERT_EQ(core.size(), 3);
    EXPECT_DOUBLE_EQ(core.top_elevation(), 8.);
    EXPECT_EQ(core.getSample(1).getFacies(), 0); // inner undefined stays
    EXPECT_DOUBLE_EQ(core.bottom_elevation(), 4.);

    Core allUndefined(0., 0., 5.);
    allUndefined.add(0, 2.);
    allUndefined.trim();
    EXPECT_TRUE(allUndefined.empty());
}

TEST(Core, ClosureSharesThinGapsBetweenSands)
{
    // PB 10-8, OB 8-7.7, MP 7.7-7.5, CL 7.5-6.5, then OB below: the last gap has no sand under it.
    Core core(0., 0., 10., "W");
    core.add(2, 2.);
    core.add(8, 0.3);
    core.add(9, 0.2);
    core.add(1, 1.);
    core.add(8, 0.1);

    Core unchanged = core;
    unchanged.closure(0.);
    EXPECT_EQ(unchanged.size(), 5);
    unchanged.closure(0.5); // a gap of exactly the threshold stays
    EXPECT_EQ(unchanged.size(), 5);

    core.closure(1.);
    ASSERT_EQ(core.size(), 3);
    const double share = 2. / 3.;
    EXPECT_NEAR(core.getSample(0).getHeight(), 2. + 0.5 * share, 1e-12);
    EXPECT_NEAR(core.getSample(0).getZ(), 8. - 0.5 * share, 1e-12);
    EXPECT_NEAR(core.getSample(1).getHeight(), 1. + 0.5 * (1. - share), 1e-12);
    EXPECT_NEAR(core.getSample(1).getLength(), 1. + 0.5 * (1. - share), 1e-12);
    EXPECT_EQ(core.getSample(2).getFacies(), 8);
    EXPECT_TRUE(core.make_downward());

    // A gap at the top lacks a sand above it.
    Core topGap(0., 0., 10.);
    topGap.add(8, 0.1);
    topGap.add(2, 1.);
    topGap.closure(5.);
    EXPECT_EQ(topGap.size(), 2);

    // Deviated: the upper sand's bottom slides along the line to the lower sand.
    Core deviated(0., 0., 10.);
    deviated.setVertical(false);
    deviated.add(2, 0., 0., 9.);
    deviated.add(8, 3., 0., 8.);
    deviated.add(1, 3., 0., 7.);
    deviated.closure(2.);
    ASSERT_EQ(deviated.size(), 2);
    EXPECT_NEAR(deviated.getSample(0).getLocation().get_abscissa(), 1.5, 1e-12);
    EXPECT_NEAR(deviated.getSample(0).getZ(), 8.5, 1e-12);
}

TEST(Core, ConcatenateAndCleanAttributes)
{
    Core core(0., 0., 10.);
    CoreSampleTags a;
    a.attributeText = "sand";
    a.age = 7;
    CoreSampleTags b;
    b.attributeText = "shale";
    core.add(2, 1., a);
    core.add(2, 1., b);
    core.add(8, 1.);
    Core byAttribute = core;
    byAttribute.concatenate(false);
    EXPECT_EQ(byAttribute.size(), 3);
    core.concatenate(true);
    ASSERT_EQ(core.size(), 2);
    EXPECT_DOUBLE_EQ(core.getSample(0).getHeight(), 2.);
    EXPECT_DOUBLE_EQ(core.getSample(0).getZ(), 8.);
    EXPECT_EQ(core.getSample(0).getAge(), 7u);
    core.setStandardFacies(false);
    core.clean_attributes(true);
    EXPECT_EQ(core.getSample(0).getAttributeText(), "PB");
    EXPECT_TRUE(core.isStandardFacies());
}

TEST(Core, CutKeepsTheInterval)
{
    Core core = three_layers();
    ASSERT_TRUE(core.cut(6., 9.));
    ASSERT_EQ(core.size(), 2);
    EXPECT_DOUBLE_EQ(core.top_elevation(), 9.);
    EXPECT_DOUBLE_EQ(core.getSample(0).getHeight(), 1.);
    EXPECT_DOUBLE_EQ(core.getSample(0).getLength(), 1.);
    EXPECT_DOUBLE_EQ(core.getSample(1).getZ(), 6.);
    EXPECT_DOUBLE_EQ(core.getSample(1).getHeight(), 2.);
    EXPECT_TRUE(core.make_downward());

    Core whole = three_layers();
    ASSERT_TRUE(whole.cut(MP_UNDEF_REAL, MP_UNDEF_REAL));
    EXPECT_EQ(whole.size(), 3);
    EXPECT_FALSE(whole.cut(5., 4.));
    EXPECT_EQ(whole.getError(), "Wrong arguments: zb > zt");
    ASSERT_TRUE(whole.cut(20., 30.));
    EXPECT_TRUE(whole.empty());
}

TEST(Core, FaciesMatch)
{
    const Core a = three_layers();
    Core b(0., 0., 10.);
    b.add(2, 3.);
    b.add(8, 2.);
    // Same facies over 10-8 and 7-5 of 5-10.
    EXPECT_NEAR(a.facies_match(b, 5., 10.), 0.8, 1e-12);
    EXPECT_NEAR(a.facies_match(b, MP_UNDEF_REAL, MP_UNDEF_REAL), 0.8, 1e-12);
    EXPECT_NEAR(a.facies_match(b, 0., 10.), 0.4, 1e-12);
    EXPECT_DOUBLE_EQ(a.facies_match(b, 0., 4.), 0.);
    EXPECT_DOUBLE_EQ(a.facies_match(a, MP_UNDEF_REAL, MP_UNDEF_REAL), 1.);

    EXPECT_DOUBLE_EQ(a.facies_match(b, 9., 6.), -1.);
    EXPECT_EQ(a.getError(), "Wrong arguments: zb > zt");
    Core deviated = b;
    deviated.setVertical(false);
    EXPECT_DOUBLE_EQ(a.facies_match(deviated, 5., 10.), -1.);

    Core holed = three_layers();
    holed.getSamples()[1].setHeight(1.);
    EXPECT_DOUBLE_EQ(holed.facies_match(b, 5., 10.), -1.);
    EXPECT_EQ(holed.getError(), "Wrong intersection length size");
}

TEST(Core, HeightMeasures)
{
    const Core core = three_layers();
    double hmin = 0.;
    double hmax = 0.;
    ASSERT_TRUE(core.min_and_max_height(hmin, hmax, true));
    EXPECT_DOUBLE_EQ(hmin, 1.);
    EXPECT_DOUBLE_EQ(hmax, 2.);
    EXPECT_DOUBLE_EQ(core.max_height(), 3.);
    EXPECT_DOUBLE_EQ(core.match_non_sand_height(6., 20.), 2.);
    EXPECT_FALSE(Core().min_and_max_height(hmin, hmax));
}

TEST(Core, SplitDeviatedWell)
{
    g_trace.clear();
    Tracer tracer;
    tracer.setTraceFunction(capture);
    GridParams grid(10., 10., 5, 5);
    grid.setLocation(Point3D(1000., 2000., 0.));

    Core core(1000., 2000., 100., "D", &tracer);
    core.setVertical(false);
    core.add(2, 1001., 2000., 98.); // column (0, 0)
    core.add(8, 1012., 2000., 95.); // column (1, 0)
    core.add(1, 1017., 2000., 90.); // column (1, 0)
    core.add(9, 1025., 2000., 85.); // column (2, 0)
    core.add(3, 1004., 2000., 80.); // back into column (1, 0), below
    CoreList cores;
    ASSERT_TRUE(core.split(grid, cores));
    ASSERT_EQ(cores.size(), 3);
    const Core& first = cores.at(0);
    EXPECT_TRUE(first.isVertical());
    EXPECT_EQ(first.key(), Point2D(1000., 2000.).debug());
    EXPECT_DOUBLE_EQ(first.top_elevation(), 100.);
    const Core* second = cores.find(Point2D(1010., 2000.).debug());
    ASSERT_NE(second, nullptr);
    // 98-95 OB, 95-90 CL, an unknown 90-85, then the return 85-80 SP.
    ASSERT_EQ(second->size(), 4);
    EXPECT_DOUBLE_EQ(second->top_elevation(), 98.);
    EXPECT_EQ(second->getSample(2).getFacies(), 0);
    EXPECT_DOUBLE_EQ(second->getSample(2).getHeight(), 5.);
    EXPECT_EQ(second->getSample(3).getFacies(), 3);
    EXPECT_DOUBLE_EQ(second->bottom_elevation(), 80.);
    EXPECT_TRUE(g_trace.empty());

    Core outside(0., 0., 10., "O", &tracer);
    EXPECT_FALSE(outside.split(grid, cores));
    EXPECT_EQ(outside.getError(), "Head of well O not inside the grid. Well split aborted.");
}

TEST(Core, SplitWarnings)
{
    Tracer tracer;
    tracer.setTraceFunction(capture);
    const GridParams grid(10., 10., 3, 3);
    CoreList cores;

    g_trace.clear();
    Core empty(0., 0., 10., "E", &tracer);
    empty.setVertical(false);
    empty.add(2, 0., 0., 10.); // no extent along the hole
    empty.add(2, 10., 0., 5.);
    ASSERT_TRUE(empty.split(grid, cores));
    EXPECT_NE(g_trace.find("Core #1 of well E is empty. Core ignored"), std::string::npos) << g_trace;
    EXPECT_EQ(cores.size(), 1);

    g_trace.clear();
    Core leaving(0., 0., 10., "L", &tracer);
    leaving.setVertical(false);
    leaving.add(2, 0., 0., 8.);
    leaving.add(8, 60., 0., 5.);
    ASSERT_TRUE(leaving.split(grid, cores));
    EXPECT_NE(g_trace.find("Top of core #2 of well L is not inside the grid. Core ignored"),
              std::string::npos);
    EXPECT_EQ(cores.size(), 1);

    // A well climbing back over the elevations it already crossed in a column.
    g_trace.clear();
    Core climbing(0., 0., 100., "C", &tracer);
    climbing.setVertical(false);
    climbing.add(2, 0., 0., 95.);
    climbing.add(8, 10., 0., 90.);
    CoreSample back(1, 1., 5., 97., Point2D(-1., 0.));
    back.setHeight(-7.);
    climbing.getSamples().push_back(back);
    ASSERT_TRUE(climbing.split(grid, cores));
    EXPECT_NE(g_trace.find("Core #3 of well C overlaps around 90 at cell " + Point2D(0., 0.).debug()),
              std::string::npos)
        << g_trace;
    EXPECT_EQ(cores.size(), 2);
}

TEST(Core, Shifts)
{
    GridReal topo(10., 10., 3, 3);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            topo.set_at(i, j, 50. + i + j);
    Core core = three_layers();
    core.set_top_location(Point2D(20., 10.)); // node (2, 1): 3 above the minimum
    ASSERT_TRUE(core.shift_down(topo));
    EXPECT_DOUBLE_EQ(core.top_elevation(), 7.);
    EXPECT_DOUBLE_EQ(core.bottom_elevation(), 1.);
    ASSERT_TRUE(core.shift_up(topo));
    EXPECT_DOUBLE_EQ(core.bottom_elevation(), 4.);

    core.set_top_location(Point2D(100., 10.));
    EXPECT_FALSE(core.shift_down(topo));
    EXPECT_EQ(core.getError(), "Core::shift_down: [100, 10] not in the given topography");

    core.set_top_location(Point2D(0., 0.));
    topo.set_at(0, 0, MP_UNDEF_REAL);
    EXPECT_FALSE(core.shift_up(topo));
    EXPECT_EQ(core.getError(), "Core::shift_up: Value is undefined at [0, 0]");

    GridReal flat(topo);
    flat.setNz(0);
    EXPECT_FALSE(core.shift_down(flat));
    EXPECT_EQ(core.getError(), "Core::shift_down: Cannot get a value at [0, 0]");

    const GridReal blank(10., 10., 3, 3);
    EXPECT_FALSE(core.shift_down(blank));
    EXPECT_EQ(core.getError(), "Core::shift_down: Cannot get minimum value from the given topography");
}

TEST(UserClassList, DiscreteAndContinuousClasses)
{
    std::string error;
    UserClassList discrete;
    ASSERT_TRUE(discrete.add(USER_CLASS_DISCRETE, 2, "sand", 0., 0., error));
    ASSERT_TRUE(discrete.addDiscrete(8, "shale", error));
    EXPECT_FALSE(discrete.addDiscrete(9, "sand", error));
    EXPECT_FALSE(discrete.addDiscrete(14, "mud", error));
    EXPECT_FALSE(discrete.addDiscrete(9, "", error));
    EXPECT_FALSE(discrete.addContinuous(9, 0., 1., error));
    EXPECT_FALSE(discrete.add(4, 1, "x", 0., 0., error));
    EXPECT_EQ(discrete.size(), 2);

    Core core(0., 0., 10.);
    core.setStandardFacies(false);
    for (const char* text : {"sand", "shale", "coal"})
    {
        CoreSampleTags tags;
        tags.attributeText = text;
        core.add(0, 1., tags);
    }
    EXPECT_EQ(discrete.apply(core), 2);
    EXPECT_EQ(core.getSample(0).getFacies(), 2);
    EXPECT_EQ(core.getSample(1).getFacies(), 8);
    EXPECT_EQ(core.getSample(2).getFacies(), 0);
    EXPECT_TRUE(core.isStandardFacies());

    UserClassList continuous;
    ASSERT_TRUE(continuous.addContinuous(2, 0., 50., error));
    ASSERT_TRUE(continuous.addContinuous(8, 50., 150., error)); // touching bounds are allowed
    EXPECT_FALSE(continuous.addContinuous(9, 100., 200., error));
    EXPECT_FALSE(continuous.addContinuous(9, 300., 200., error));
    Core gammaRay(0., 0., 10.);
    for (double value : {20., 50., 120., 400.})
    {
        CoreSampleTags tags;
        tags.attributeValue = value;
        gammaRay.add(0, 1., tags);
    }
    CoreSampleTags textual;
    textual.attributeText = "75";
    gammaRay.add(0, 1., textual);
    EXPECT_EQ(continuous.apply(gammaRay), 4);
    EXPECT_EQ(gammaRay.getSample(0).getFacies(), 2);
    EXPECT_EQ(gammaRay.getSample(1).getFacies(), 2); // the first class holding a bound wins
    EXPECT_EQ(gammaRay.getSample(2).getFacies(), 8);
    EXPECT_EQ(gammaRay.getSample(3).getFacies(), 0);
    EXPECT_EQ(gammaRay.getSample(4).getFacies(), 8);
    EXPECT_EQ(gammaRay.getSample(2).getAttributeName(), "[50, 150]");
}
