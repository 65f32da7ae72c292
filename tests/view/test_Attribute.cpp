// The adjustable numbers of the views and the steps of their scales.

#include "view/Attribute.h"
#include "view/ScaleSteps.h"

#include <gtest/gtest.h>

TEST(Attribute, IncrementWrapsWithAPeriodAndStopsWithout)
{
    struct Row
    {
        double value, step, min, max, period;
        int n;
        double expected;
    };
    const Row rows[] = {
        {350., 5., 0., 360., 360., 4, 10.},      // an angle turns round past its maximum
        {10., 5., 0., 360., 360., -4, 350.},     // and below its minimum
        {360., 5., 0., 360., 360., 0, 360.},     // the maximum itself stays
        {9990., 1., 1., 10000., 0., 50, 10000.}, // an exaggeration stops at its maximum
        {3., 1., 1., 10000., 0., -5, 1.},        // and at its minimum
        {20., 1., 1., 10000., 0., -1, 19.},      {-170., 10., -180., 180., 360., -2, 170.},
    };
    for (const Row& r : rows)
    {
        Attribute<double> a(r.value, r.step, r.min, r.max, r.period);
        a.increment(r.n);
        EXPECT_DOUBLE_EQ(a.value(), r.expected) << r.value << " + " << r.n << " x " << r.step;
    }
    Attribute<int> section(0, 1, 0, 9);
    section.increment(-1);
    EXPECT_EQ(section.value(), 0);
    section.increment(12);
    EXPECT_EQ(section.value(), 9);
}

TEST(Attribute, SerializeRoundTripsAndRefusesBadText)
{
    Attribute<double> a(10., 1., 1., 500., 0.);
    a.value(42.5);
    a.remember();
    a.value(43.5);
    Attribute<double> b;
    ASSERT_TRUE(b.deserialize(a.serialize()));
    EXPECT_EQ(b.serialize(), a.serialize());
    b.restore();
    EXPECT_DOUBLE_EQ(b.value(), 42.5);
    for (const char* bad :
         {"", "1 2 3", "1 2 3 4 5 6 7 8", "10 20 1 50 5 0 20", "a b c d e f g", "1 2 1 0 5 -1 2"})
    {
        Attribute<double> c(10., 1., 1., 500., 0.);
        EXPECT_FALSE(c.deserialize(bad)) << bad;
        EXPECT_DOUBLE_EQ(c.value(), 10.) << bad;
    }
}

TEST(ScaleSteps, SubdividesAPowerOfTenByHalfHalfAndTwoFifths)
{
    struct Row
    {
        double range, pixels, gap, step;
    };
    const Row rows[] = {
        {2500., 1000., 400., 1000.}, // 1000 m is 400 px: 500 m would be 200 px
        {2500., 1000., 200., 500.},  {2500., 1000., 100., 250.}, {2500., 1000., 40., 100.},
        {2500., 1000., 20., 50.},    {7., 700., 20., 0.25}, // 0.25 m is 25 px, 0.1 m would be 10 px
        {0., 100., 10., 1.},                                // nothing to scale
    };
    for (const Row& r : rows)
        EXPECT_DOUBLE_EQ(ScaleSteps::tick_step(r.range, r.pixels, r.gap), r.step) << r.range << " " << r.gap;
}
