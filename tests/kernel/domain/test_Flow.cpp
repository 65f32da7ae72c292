#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Flow.h"
#include "kernel/domain/RouseSumTable.h"
#include "kernel/parameters/Grainsize.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include "TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::is_assertion_of;

namespace
{

// Diameter of a class in metres, written from the base-2 millimetre scale.
double expected_diameter(int c)
{
    switch (c)
    {
    case 15:
        return 0.128;
    case 14:
        return 0.016;
    case 2:
        return std::pow(2., -9.5) * 1e-3;
    case 1:
        return 1e-6;
    case 0:
        return 1e-3;
    default:
        return std::ldexp(1., c - 11) * 1e-3;
    }
}

// Settling velocity of a quartz grain in water from its dimensionless diameter.
double expected_ws(double d)
{
    const double dstar = 2.5295949400213478 * d / 1e-4;
    return (std::sqrt(100. + dstar * dstar * dstar) - 10.) * 1e-6 / d;
}

std::vector<double> one_class(int index)
{
    std::vector<double> p(MD_NB_CLASS_GR, 0.);
    p[index] = 1.;
    return p;
}

class FlowTest : public ::testing::Test
{
protected:
    FlowTest() : params(&tracer), mc(&params, &tracer)
    {
        tracer.setTraceFunction(&capture);
        g_trace.clear();
    }

    // A flow 2 m deep (3 m maximum), 40 m wide, at 1.2 m/s.
    Flow make_flow(double u1 = 0.3) const
    {
        Flow f(&mc);
        f.init_flow(40., 2., 1.2, u1, 0.01, params.getSedProportions());
        return f;
    }

    // Mean of the profile over the heights the normalisation samples.
    double sampled_mean(const Flow& f, const Grainsize& g, double c0, double ustar) const
    {
        const double h = f.hflow_max();
        double sum = 0.;
        int n = 0;
        for (double z = 0.01; z <= h; z += h / 100.)
        {
            sum += f.rouse_profile_at(g, z, c0, ustar);
            n++;
        }
        return sum / n;
    }

    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
};

} // namespace

TEST(Grainsize, DiameterVelocityAndClassFollowTheClosedForms)
{
    for (int c = 0; c <= 15; c++)
    {
        const Grainsize g(c, 0.25, 2.65);
        const double d = expected_diameter(c);
        EXPECT_EQ(g.get_class(), c);
        EXPECT_NEAR(g.diameter(), d, 1e-12 * d) << c;
        EXPECT_NEAR(g.diameter_adim(), 2.5295949400213478 * d / 1e-4, 1e-9 * g.diameter_adim()) << c;
        EXPECT_NEAR(g.settling_velocity(), expected_ws(d), 1e-9 * expected_ws(d)) << c;
        EXPECT_NEAR(g.settling_velocity_max(), std::sqrt(d * 4. * 9.81 * 1.65 / 3.), 1e-4) << c;
        EXPECT_EQ(g.critical_shear_velocity(), g.settling_velocity());
        EXPECT_EQ(g.proportion(), 0.25);
        EXPECT_EQ(g.density(), 2.65);
    }
    // Coarser grains fall faster, from silt to pebbles.
    for (int c = 3; c < 15; c++)
        EXPECT_LT(Grainsize(c, 0., 2.65).settling_velocity(), Grainsize(c + 1, 0., 2.65).settling_velocity());
    // Fine sand, 0.125 mm, settles at about a centimetre per second.
    EXPECT_NEAR(Grainsize(8, 0., 2.65).settling_velocity(), 0.012, 0.002);

    for (int c = 2; c <= 15; c++)
        EXPECT_EQ(Grainsize::cmp_class_from_d(expected_diameter(c)), c) << c;
    EXPECT_EQ(Grainsize::cmp_class_from_d(1e-6), 2);
    EXPECT_EQ(Grainsize::cmp_class_from_d(1e-9), 1);
    EXPECT_EQ(Grainsize::cmp_class_from_d(0.), 1);
    EXPECT_EQ(Grainsize::cmp_class_from_d(-1.), 0);
    EXPECT_EQ(Grainsize::cmp_class_from_d(1.), 15);

    // A diameter gives its class, and the class its own diameter.
    const Grainsize from_d(0.0003, 0.5, 2.65);
    EXPECT_EQ(from_d.get_class(), 9);
    EXPECT_DOUBLE_EQ(from_d.diameter(), 0.25e-3);
    EXPECT_EQ(from_d.proportion(), 0.5);
}

TEST_F(FlowTest, InitAndUpdateSetDepthsCoefficientsAndLoad)
{
    Flow f = make_flow();
    EXPECT_EQ(f.width(), 40.);
    EXPECT_EQ(f.hmean(), 2.);
    EXPECT_DOUBLE_EQ(f.hflow_max(), 3.);
    EXPECT_EQ(f.u0(), 1.2);
    EXPECT_EQ(f.u1(), 0.3);
    EXPECT_EQ(f.cf(), 0.01);
    EXPECT_EQ(f.skin_friction(), 0.01);
    EXPECT_EQ(f.cmean(), mc.global_concentration());
    EXPECT_EQ(f.superelevation(), 0.);
    // The generator of a new flow comes from the width it had before, none.
    EXPECT_EQ(f.se_gen(), 0.);
    double a, b, c, d;
    mc.compute_pde_parameters(40., 2., 1.2, 0.01, f.cmean(), a, b, c, d);
    EXPECT_EQ(f.pde_a(), a);
    EXPECT_EQ(f.pde_b(), b);
    EXPECT_EQ(f.pde_c(), c);
    EXPECT_EQ(f.pde_d(), d);
    EXPECT_DOUBLE_EQ(f.pde_b(), 2. * 0.01 * 1.2 / (3. / 1.5));
    EXPECT_DOUBLE_EQ(f.pde_c(), -20. * 1.44);
    EXPECT_DOUBLE_EQ(f.get_effective_height(), 2.);

    ASSERT_EQ(f.sed_load().size(), 15u);
    const std::vector<double> p = params.getSedProportions();
    for (int i = 0; i < 15; i++)
    {
        EXPECT_EQ(f.sed_load()[i].get_class(), i);
        EXPECT_EQ(f.sed_load()[i].proportion(), p[i]);
    }

    f.init_flow(40., 2., 1.2, 0.3, 0.01, p);
    EXPECT_DOUBLE_EQ(f.se_gen(), 40. / (32.373 * f.cmean()));

    // Fluvial flows keep a flat surface; U1 survives an update.
    f.update_flow(30., 4., 2., 0.01);
    EXPECT_EQ(f.superelevation(), 0.);
    EXPECT_EQ(f.u1(), 0.3);
    EXPECT_DOUBLE_EQ(f.hflow_max(), 6.);
    mc.compute_pde_parameters(30., 4., 2., 0.01, f.cmean(), a, b, c, d);
    EXPECT_EQ(f.pde_d(), d);
    EXPECT_EQ(f.sed_load().size(), 15u);

    params.setUsingTurbi();
    f.update_flow(30., 4., 2., -0.01);
    EXPECT_DOUBLE_EQ(f.hflow_max(), 18.);
    EXPECT_DOUBLE_EQ(f.superelevation(), f.se_gen() * 4. * 0.01);
    f.superelevation(0.02);
    EXPECT_DOUBLE_EQ(f.superelevation(), f.se_gen() * 4. * 0.02);
    EXPECT_NE(f.get_string_descr().find("u1= 0.3"), std::string::npos);
}

TEST_F(FlowTest, CopiesArithmeticAndRefusals)
{
    Flow f1 = make_flow(0.2);
    Flow f2(&mc);
    f2.init_flow(60., 4., 2.0, 0.6, 0.02, params.getSedProportions());

    const Flow mid = (f1 + f2) / 2.;
    EXPECT_DOUBLE_EQ(mid.hmean(), 3.);
    EXPECT_DOUBLE_EQ(mid.hflow_max(), 4.5);
    EXPECT_DOUBLE_EQ(mid.u0(), 1.6);
    EXPECT_DOUBLE_EQ(mid.u1(), 0.4);
    EXPECT_DOUBLE_EQ(mid.cmean(), f1.cmean());
    EXPECT_EQ(mid.width(), 40.);
    EXPECT_EQ(mid.cf(), 0.01);
    EXPECT_EQ(mid.pde_b(), f1.pde_b());
    const Flow scaled = f1 * 0.25 + f2 * 0.75;
    EXPECT_DOUBLE_EQ(scaled.u0(), 0.3 + 1.5);
    // The one-copy blend of the sections gives the operators' values bit for bit.
    for (double t : {0., 0.1, 0.37, 0.5, 0.93, 1.})
    {
        const Flow ops = f1 * (1. - t) + f2 * t;
        const Flow blend = Flow::weighted_sum(f1, 1. - t, f2, t);
        EXPECT_EQ(blend.hmean(), ops.hmean()) << t;
        EXPECT_EQ(blend.hflow_max(), ops.hflow_max()) << t;
        EXPECT_EQ(blend.superelevation(), ops.superelevation()) << t;
        EXPECT_EQ(blend.u0(), ops.u0()) << t;
        EXPECT_EQ(blend.u1(), ops.u1()) << t;
        EXPECT_EQ(blend.cmean(), ops.cmean()) << t;
        EXPECT_EQ(blend.width(), ops.width()) << t;
        EXPECT_EQ(blend.pde_b(), ops.pde_b()) << t;
    }
    const Flow same = f1 / 0.;
    EXPECT_EQ(same.hmean(), f1.hmean());
    EXPECT_EQ(same.u1(), f1.u1());

    MeanderCalculator other_mc(&params, &tracer);
    Flow moved(&other_mc, f1);
    EXPECT_EQ(moved.mc(), &other_mc);
    EXPECT_EQ(moved.u1(), 0.2);
    EXPECT_EQ(moved.sed_load().size(), 15u);
    Flow copy(f2);
    copy = f1;
    EXPECT_EQ(copy.width(), 40.);
    EXPECT_EQ(copy.u1(), 0.2);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { moved = f1; }), "_mc == flow._mc"));

    Flow empty(&mc);
    EXPECT_EQ(empty.hmean(), 0.);
    EXPECT_TRUE(empty.sed_load().empty());
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { empty.cmp_superelevation_generator(); }), "_cmean > 0"));
}

TEST_F(FlowTest, ShearVelocityAndOverspill)
{
    Flow f = make_flow(-0.3);
    const double k = std::sqrt(0.005);
    EXPECT_DOUBLE_EQ(f.cmp_bed_shear_velocity(1), k * 1.5);
    EXPECT_DOUBLE_EQ(f.cmp_bed_shear_velocity(-1), k * 0.9);
    EXPECT_DOUBLE_EQ(f.cmp_bed_shear_velocity(0), k * 1.2);
    EXPECT_DOUBLE_EQ(f.cmp_bed_shear_velocity(7), k * 1.2);
    // The inner bank of a perturbation stronger than the base flow reverses it.
    Flow strong = make_flow(2.0);
    EXPECT_DOUBLE_EQ(strong.cmp_bed_shear_velocity(-1), k * 0.8);

    EXPECT_EQ(f.overspill_thickness(10., 2., -1, 3.), 0.);
    EXPECT_EQ(f.overspill_thickness(10., 2., 0, 3.), 0.);
    // With a flat surface the current drops below a top it already lies under.
    EXPECT_EQ(f.overspill_thickness(10., 2., 1, 3.), 0.);
    const double c = f.cmean();
    const double t = std::pow(1. - c, 3.) * (2. - 10.) + 10. - 2.;
    EXPECT_DOUBLE_EQ(f.overspill_thickness(2., 10., 1, 3.), t);
}

TEST_F(FlowTest, RouseProfileAndReferenceConcentration)
{
    const Flow f = make_flow();
    const Grainsize& sand = f.sed_load()[8];
    const double ustar = f.cmp_bed_shear_velocity(1);
    const double h = f.hflow_max();

    // Concentration decays upward, starts at c0 on the reference height,
    // and is held at its 0.99 H value near the surface.
    EXPECT_DOUBLE_EQ(f.rouse_profile_at(sand, 0.01 * h, 2., ustar), 2.);
    EXPECT_DOUBLE_EQ(f.rouse_profile_at(sand, 0., 2., ustar), 2.);
    double previous = 3.;
    for (double z = 0.05; z < h; z += 0.1)
    {
        const double c = f.rouse_profile_at(sand, z, 2., ustar);
        EXPECT_LT(c, previous) << z;
        EXPECT_GT(c, 0.);
        previous = c;
    }
    EXPECT_EQ(f.rouse_profile_at(sand, h, 2., ustar), f.rouse_profile_at(sand, 0.99 * h, 2., ustar));
    EXPECT_EQ(f.rouse_profile_at(sand, h + 5., 2., ustar), f.rouse_profile_at(sand, 0.99 * h, 2., ustar));
    EXPECT_EQ(f.rouse_profile_at(sand, 1., 2., 0.), 0.);
    const double z = 1.;
    const double expected =
        2. * std::pow((0.03 / (h - 0.03)) * ((h - z) / z), sand.settling_velocity() / (0.4 * ustar));
    EXPECT_NEAR(f.rouse_profile_at(sand, z, 2., ustar), expected, 1e-12);
    // Coarser grains stay nearer the bed.
    EXPECT_LT(f.rouse_profile_at(f.sed_load()[11], z, 1., ustar), f.rouse_profile_at(sand, z, 1., ustar));

    // The reference concentration makes the mean over depth the class's share.
    for (int side : {-1, 0, 1})
        for (int i : {4, 8, 12})
        {
            const Grainsize& g = f.sed_load()[i];
            const double c0 = f.cmp_c0(g, side);
            const double share = mc.global_concentration() * g.proportion();
            EXPECT_GT(c0, share);
            // Within the interpolation bound of the tabulated normalisation.
            EXPECT_NEAR(sampled_mean(f, g, c0, f.cmp_bed_shear_velocity(side)), share, 2e-9 * share)
                << side << " " << i;
        }

    // Still water, or a flow thinner than a centimetre, carries the share as it is.
    Flow still(&mc);
    still.init_flow(40., 2., 0., 0., 0.01, params.getSedProportions());
    EXPECT_DOUBLE_EQ(still.cmp_c0(still.sed_load()[8], 0), mc.global_concentration() * 0.27);
    Flow thin(&mc);
    thin.init_flow(40., 0.005, 1., 0., 0.01, params.getSedProportions());
    EXPECT_DOUBLE_EQ(thin.cmp_c0(thin.sed_load()[8], 1), mc.global_concentration() * 0.27);

    // The fitted form.
    const double froude = mc.froude_from_hmean_and_velocity(2., 1.2, 1e30);
    const double quick = mc.global_concentration() * sand.proportion() * 0.00704 *
                         std::pow(ustar / sand.settling_velocity_max(), 1.71) * std::pow(froude, 1.81);
    EXPECT_NEAR(f.cmp_c0_quick(sand, 1), quick, 1e-15);

    Flow g = make_flow();
    for (bool q : {false, true})
    {
        g.cmp_c0(1, q);
        ASSERT_EQ(g.c0().size(), 15u);
        for (int i = 0; i < 15; i++)
        {
            const Grainsize& s = g.sed_load()[i];
            if (s.proportion() == 0.)
                EXPECT_EQ(g.c0()[i], 0.) << i;
            else
                EXPECT_EQ(g.c0()[i], q ? g.cmp_c0_quick(s, 1) : g.cmp_c0(s, 1)) << i;
        }
    }
}

// The tabulated sum of the Rouse factors against the direct sum, over depths
// and exponents across the table and beyond it, and independent of the order
// in which its nodes were first needed.
TEST_F(FlowTest, RouseSumTableMatchesTheDirectSum)
{
    for (double h : {0.011, 0.3, 0.99, 1., 3.05, 7.5, 40.})
    {
        RouseSumTable forward(Flow::c0_log_factors(h));
        RouseSumTable backward(Flow::c0_log_factors(h));
        std::vector<double> rs;
        for (double lr = -13.; lr <= 6.; lr += 0.0173)
            rs.push_back(std::exp(lr));
        std::vector<double> values;
        for (double r : rs)
        {
            const double direct = forward.log_sum_direct(r);
            const double v = forward.log_sum(r);
            values.push_back(v);
            // ln F within 2e-9: the sum itself within a relative 2e-9.
            ASSERT_NEAR(v, direct, 2e-9) << h << " " << r;
            if (r < 1e-5 || r > 200.)
            {
                EXPECT_EQ(v, direct) << h << " " << r;
            }
        }
        for (std::size_t k = rs.size(); k-- > 0;)
            EXPECT_EQ(backward.log_sum(rs[k]), values[k]) << h << " " << rs[k];
        // With a null exponent every factor counts 1.
        EXPECT_NEAR(std::exp(forward.log_sum(0.)), static_cast<double>(forward.log_factors().size()), 1e-9);
        EXPECT_EQ(&RouseSumTable::for_depth(h, &Flow::c0_log_factors),
                  &RouseSumTable::for_depth(h, &Flow::c0_log_factors));
    }
}

TEST_F(FlowTest, PercentGrainsizeFinesUpward)
{
    Flow f = make_flow();
    EXPECT_TRUE(assertion_text([&] { f.flow_percent_grainsize_at(1., 0.5, 1); }).find(" failed at [") !=
                std::string::npos);
    f.cmp_c0(1, false);
    const double h = f.hflow_max();
    double previous = 2.;
    for (double z = 0.; z <= h; z += 0.05)
    {
        const double g = f.flow_percent_grainsize_at(z, 0.5, 1);
        EXPECT_LE(g, previous) << z;
        previous = g;
    }
    EXPECT_LT(f.flow_percent_grainsize_at(0.95 * h, 0.5, 1), f.flow_percent_grainsize_at(0.05, 0.5, 1));
    // A higher percentile reaches a coarser class.
    EXPECT_GT(f.flow_percent_grainsize_at(0.5, 0.95, 1), f.flow_percent_grainsize_at(0.5, 0.05, 1));

    // A single class is the answer at every height; a still flow answers with
    // the first class it carries.
    Flow single(&mc);
    single.init_flow(40., 2., 1.2, 0., 0.01, one_class(9));
    single.cmp_c0(1, false);
    EXPECT_EQ(single.flow_percent_grainsize_at(0.3, 0.5, 1), Facies::class_to_granulo(10));
    Flow still(&mc);
    std::vector<double> p(15, 0.);
    p[5] = 0.5;
    p[10] = 0.5;
    still.init_flow(40., 2., 0., 0., 0.01, p);
    still.cmp_c0(0, false);
    EXPECT_EQ(still.flow_percent_grainsize_at(1., 0.9, 0), Facies::class_to_granulo(6));

    // The discretized profile: layers fine upward and end at b.
    std::vector<double> grains, heights;
    f.discretized_grainsize_profile(0.05, 0.95 * h, grains, heights, 0.5, 1, &tracer);
    ASSERT_GE(grains.size(), 2u);
    EXPECT_EQ(grains.front(), f.flow_percent_grainsize_at(0.05, 0.5, 1));
    EXPECT_DOUBLE_EQ(heights.back(), 0.95 * h);
    for (std::size_t i = 1; i < grains.size(); i++)
    {
        EXPECT_LT(grains[i], grains[i - 1]);
        EXPECT_GT(heights[i], heights[i - 1]);
    }
    EXPECT_GT(heights.front(), 0.05);

    grains.clear();
    heights.clear();
    f.discretized_grainsize_profile(1., 1., grains, heights, 0.5, 1, &tracer);
    f.discretized_grainsize_profile(2., 1., grains, heights, 0.5, 1, &tracer);
    EXPECT_TRUE(grains.empty());
    f.discretized_grainsize_profile(1., 1. + 1e-7, grains, heights, 0.5, 1, &tracer);
    ASSERT_EQ(grains.size(), 1u);
    EXPECT_EQ(heights[0], 1. + 1e-7);
    EXPECT_EQ(grains[0], f.flow_percent_grainsize_at(1. + 1e-7, 0.5, 1));
    grains.clear();
    heights.clear();
    single.discretized_grainsize_profile(0.1, 2.5, grains, heights, 0.5, 1, &tracer);
    ASSERT_EQ(grains.size(), 1u);
    EXPECT_EQ(heights[0], 2.5);

    // A flow that carries nothing reports the null grain at debug level.
    Flow none(&mc);
    none.init_flow(40., 2., 1.2, 0., 0.01, std::vector<double>(15, 0.));
    none.cmp_c0(1, false);
    tracer.setTraceLevel(TRACE_DEBUG);
    grains.clear();
    heights.clear();
    none.discretized_grainsize_profile(0.1, 2., grains, heights, 0.5, 1, &tracer);
    EXPECT_NE(g_trace.find("d50_min is null"), std::string::npos);
    EXPECT_NE(g_trace.find("d50_max is null"), std::string::npos);
}

TEST_F(FlowTest, OptimProfileFinesBetweenItsBounds)
{
    const Flow f = make_flow();
    const double h = f.hflow_max();
    auto grain_at = [&](double z)
    {
        std::vector<double> g, hh;
        f.discretized_grainsize_profile_optim(z - 1e-7, z, g, hh, 0.01, nullptr);
        return g.at(0);
    };
    for (auto bounds : {std::pair<int, int>{6, 13}, {2, 9}, {10, 3}})
    {
        params.setParamInt("GR_PB_OPTIM_MIN", bounds.first);
        params.setParamInt("GR_PB_OPTIM_MAX", bounds.second);
        const int fine = std::min(bounds.first, bounds.second);
        const int coarse = std::max(bounds.first, bounds.second);
        std::vector<double> grains, heights;
        f.discretized_grainsize_profile_optim(0., h, grains, heights, 0.01, &tracer);
        ASSERT_GE(grains.size(), 2u);
        EXPECT_EQ(grains.front(), Facies::class_to_granulo(coarse));
        EXPECT_DOUBLE_EQ(heights.back(), h);
        for (std::size_t i = 0; i < grains.size(); i++)
        {
            EXPECT_GE(grains[i], Facies::class_to_granulo(fine));
            EXPECT_LE(grains[i], Facies::class_to_granulo(coarse));
            if (i > 0)
            {
                EXPECT_LT(grains[i], grains[i - 1]);
                EXPECT_GT(heights[i], heights[i - 1]);
            }
        }
        EXPECT_EQ(grain_at(1e-6), Facies::class_to_granulo(coarse));
        EXPECT_EQ(grain_at(h), Facies::class_to_granulo(fine));
        EXPECT_EQ(grain_at(2. * h), Facies::class_to_granulo(fine));
    }

    // Alpha sets how fast the grain fines above the bed.
    params.setParamInt("GR_PB_OPTIM_MIN", 6);
    params.setParamInt("GR_PB_OPTIM_MAX", 13);
    params.setParamDouble("GR_PB_OPTIM_ALPHA", 0.95);
    const double slow = grain_at(0.1 * h);
    EXPECT_EQ(slow, Facies::class_to_granulo(static_cast<int>(std::lround(13. - 7. * std::pow(0.1, 0.95)))));
    params.setParamDouble("GR_PB_OPTIM_ALPHA", 0.05);
    const double fast = grain_at(0.1 * h);
    EXPECT_EQ(fast, Facies::class_to_granulo(static_cast<int>(std::lround(13. - 7. * std::pow(0.1, 0.05)))));
    EXPECT_LT(fast, slow);
}
