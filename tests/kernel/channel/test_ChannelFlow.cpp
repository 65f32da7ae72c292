#include "kernel/channel/Channel.h"
#include "kernel/channel/ChannelPoint.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include "TestSupport.h"

#include <cmath>
#include <list>
#include <memory>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;
using testing_support::silent;

namespace
{

constexpr double WIDTH = 20.;
constexpr double HMAX = 3.;
constexpr double WAVELENGTH = 250.;
constexpr double SLOPE = 0.001;
// Point spacing: the half-width, within the resampling limits.
constexpr double STEP = 10.;

std::vector<Point3D> straight_line(int n)
{
    std::vector<Point3D> points;
    for (int i = 0; i < n; i++)
        points.emplace_back(100. + i * STEP, 50., 0.);
    return points;
}

// Points every STEP of arc on a circle of radius r around (cx, cy), turning
// counter-clockwise (to the left) or clockwise.
std::vector<Point3D> arc(double r, int n, bool left, double cx = 0., double cy = 0.)
{
    std::vector<Point3D> points;
    const double dtheta = STEP / r;
    for (int i = 0; i < n; i++)
    {
        const double t = i * dtheta;
        points.emplace_back(cx + r * std::sin(t), cy + (left ? -r : r) * std::cos(t), 0.);
    }
    return points;
}

// Sine-generated curve: heading omega * sin(2 pi s / m), a point every STEP of
// arc, integrated finely so that the chords match the arc.
std::vector<Point3D> sine_generated(double omega, double m, int n)
{
    std::vector<Point3D> points;
    double x = 0., y = 0.;
    const int sub = 100;
    const double h = STEP / sub;
    for (int i = 0; i < n; i++)
    {
        points.emplace_back(x, y, 0.);
        for (int k = 0; k < sub; k++)
        {
            const double s = i * STEP + (k + 0.5) * h;
            const double theta = omega * std::sin(MP_TWO_PI * s / m);
            x += h * std::cos(theta);
            y += h * std::sin(theta);
        }
    }
    return points;
}

class ChannelFlowTest : public ::testing::Test
{
protected:
    ChannelFlowTest() : params(&tracer), mc(&params, &tracer) { tracer.setTraceFunction(&silent); }

    std::unique_ptr<Channel> make(const std::vector<Point3D>& points, bool flow = true)
    {
        auto c = std::make_unique<Channel>(&mc, points);
        c->init_geom(HMAX, WIDTH, WAVELENGTH, SLOPE);
        if (flow)
            c->init_flow();
        return c;
    }

    static std::vector<ChannelPoint*> points_of(const Channel& c)
    {
        std::vector<ChannelPoint*> v;
        for (ChannelPoint* cp = c.first(); cp != nullptr; cp = cp->next())
            v.push_back(cp);
        return v;
    }

    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
};

} // namespace

TEST_F(ChannelFlowTest, CurvatureOfACircleAndItsExtrapolatedEnds)
{
    const double r = 200.;
    for (bool left : {true, false})
        for (int n : {1, 3})
        {
            auto c = make(arc(r, 40, left, 500., 500.));
            c->curvatures(n);
            const std::vector<ChannelPoint*> p = points_of(*c);
            ASSERT_EQ(p.size(), 40u);
            const double expected = left ? -1. / r : 1. / r;
            for (std::size_t i = 1; i + 1 < p.size(); i++)
                EXPECT_NEAR(p[i]->curvature(), expected, 1e-9) << n << " " << i;
            // The ends are extrapolated with 1.9, not 2: even a perfect arc
            // does not keep its curvature there.
            EXPECT_NEAR(p.front()->curvature(), 0.9 * expected, 1e-9);
            EXPECT_NEAR(p.back()->curvature(), 0.9 * expected, 1e-9);
        }

    // Collinear points have no curvature; the ends follow the same rule.
    auto s = make(straight_line(10));
    s->curvatures(3);
    for (ChannelPoint* cp : points_of(*s))
        EXPECT_EQ(cp->curvature(), 0.);

    // A kink seen by the plain stencil only at its apex, by the wide one around it.
    std::vector<Point3D> kink = straight_line(21);
    for (int i = 11; i < 21; i++)
        kink[i] = Point3D(kink[10].get_abscissa() + (i - 10) * STEP * std::cos(0.3),
                          50. + (i - 10) * STEP * std::sin(0.3), 0.);
    auto k = make(kink, false);
    k->curvatures(1);
    std::vector<ChannelPoint*> kp = points_of(*k);
    EXPECT_LT(kp[10]->curvature(), 0.);
    EXPECT_EQ(kp[9]->curvature(), 0.);
    EXPECT_EQ(kp[11]->curvature(), 0.);
    EXPECT_DOUBLE_EQ(kp.front()->curvature(), 1.9 * kp[1]->curvature() - kp[2]->curvature());
    EXPECT_DOUBLE_EQ(kp.back()->curvature(), 1.9 * kp[19]->curvature() - kp[18]->curvature());
    k->curvatures(3);
    kp = points_of(*k);
    for (int i = 8; i <= 12; i++)
        EXPECT_LT(kp[i]->curvature(), 0.) << i;
    EXPECT_EQ(kp[6]->curvature(), 0.);
    EXPECT_EQ(kp[14]->curvature(), 0.);
    // Near the ends the stencil is narrower: point 1 sees only its neighbours.
    EXPECT_EQ(kp[1]->curvature(), 0.);

    // It closes symmetrically downstream: with a kink at 17 of 0..20, point
    // 18 spans 16..20 and sees it, point 19 spans 18..20 and does not.
    std::vector<Point3D> late = straight_line(21);
    for (int i = 18; i < 21; i++)
        late[i] = Point3D(late[17].get_abscissa() + (i - 17) * STEP * std::cos(0.3),
                          50. + (i - 17) * STEP * std::sin(0.3), 0.);
    auto l = make(late, false);
    l->curvatures(3);
    const std::vector<ChannelPoint*> lp = points_of(*l);
    ASSERT_EQ(lp.size(), 21u);
    EXPECT_LT(lp[16]->curvature(), 0.);
    EXPECT_LT(lp[18]->curvature(), 0.);
    EXPECT_EQ(lp[19]->curvature(), 0.);
    EXPECT_EQ(lp[13]->curvature(), 0.);
}

TEST_F(ChannelFlowTest, PerturbationDecaysOnAStraightChannel)
{
    auto c = make(straight_line(30));
    std::vector<ChannelPoint*> p = points_of(*c);
    // The wave leaving the channel enters it again.
    p[p.size() - 2]->flow().u1(0.5);
    c->curvatures(3);
    c->velocity_perturbations();
    p = points_of(*c);
    EXPECT_EQ(p.front()->flow().u1(), 0.5);
    double mean = 0.5;
    for (std::size_t i = 1; i < p.size(); i++)
    {
        const Flow& f = p[i]->flow();
        const double factor = (f.pde_a() - f.pde_b() * p[i]->ds()) / f.pde_a();
        EXPECT_GT(factor, 0.);
        EXPECT_LT(factor, 1.);
        EXPECT_NEAR(f.u1(), factor * p[i - 1]->flow().u1(), 1e-12) << i;
        mean += std::fabs(f.u1());
    }
    EXPECT_NEAR(c->mean_velocity_perturbation(), mean / p.size(), 1e-12);
    std::vector<double> v;
    c->velocity_perturbations(v);
    ASSERT_EQ(v.size(), p.size());
    EXPECT_EQ(v[3], p[3]->flow().u1());

    // Inflow sign: flipped when the entry bend turns the other way than the
    // outgoing one and is not negligible against it, kept otherwise.
    auto entry_u1 = [&](double c_first, double c_out)
    {
        for (ChannelPoint* cp : points_of(*c))
            cp->curvature(0.);
        c->first()->curvature(c_first);
        c->last()->prev()->curvature(c_out);
        c->last()->prev()->flow().u1(0.5);
        c->velocity_perturbations();
        return c->first()->flow().u1();
    };
    EXPECT_EQ(entry_u1(0.01, -0.02), -0.5);
    EXPECT_EQ(entry_u1(-0.01, -0.02), 0.5);
    EXPECT_EQ(entry_u1(0.001, -0.02), 0.5);
    EXPECT_EQ(entry_u1(0.004, -0.02), -0.5);
    EXPECT_EQ(entry_u1(0., -0.02), 0.5);
    EXPECT_EQ(entry_u1(-0.001, 0.), -0.5);
}

TEST_F(ChannelFlowTest, PerturbationReachesItsSteadyValueAlongAnArc)
{
    const double r = 1000.;
    auto c = make(arc(r, 300, false));
    c->compute_velocity_perturbation();
    const std::vector<ChannelPoint*> p = points_of(*c);
    // With dC/ds = 0 and dU1/ds = 0 the equation leaves b U1 = d C.
    for (std::size_t i = 150; i < 290; i += 20)
    {
        const Flow& f = p[i]->flow();
        EXPECT_NEAR(p[i]->curvature(), 1. / r, 1e-9);
        EXPECT_NEAR(f.u1(), f.pde_d() / r / f.pde_b(), 1e-9) << i;
    }
    EXPECT_GT(p[200]->flow().u1(), 0.);
    EXPECT_LT(c->mean_velocity_perturbation(), MP_MAX_REAL_VALUE);

    auto two = std::make_unique<Channel>(&mc, straight_line(2));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { two->compute_velocity_perturbation(); }),
                                "_first->next() != _last"));
    Channel empty(&mc);
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { empty.compute_velocity_perturbation(); }), "_first != NULL"));
}

TEST_F(ChannelFlowTest, ExtremaOfThePerturbation)
{
    auto c = make(straight_line(9));
    const double u[] = {0., 1., 3., 2., 2., 5., 1., -1., 0.};
    std::vector<ChannelPoint*> p = points_of(*c);
    ASSERT_EQ(p.size(), 9u);
    for (int i = 0; i < 9; i++)
        p[i]->flow().u1(u[i]);
    std::list<std::pair<double, ChannelPoint*>> loci{{9., nullptr}};
    c->maximum_velocity_perturbation_loci(loci);
    // A value equal to a neighbour's is no extremum; the ends are never listed.
    ASSERT_EQ(loci.size(), 3u);
    auto it = loci.begin();
    EXPECT_EQ(it->first, 3.);
    EXPECT_EQ(it->second, p[2]);
    ++it;
    EXPECT_EQ(it->second, p[5]);
    ++it;
    EXPECT_EQ(it->first, -1.);
    EXPECT_EQ(it->second, p[7]);
}

TEST_F(ChannelFlowTest, FlowSetUpAndSinuosityFeedback)
{
    auto c = make(sine_generated(1.0, 1000., 301));
    const double hmean0 = MeanderCalculator::hmean_from_hmax(HMAX);
    const double cf = mc.cf_from_hmean_and_wavelength(hmean0, WAVELENGTH);
    const double u0 = mc.velocity_from_hmean_and_cf(hmean0, cf, SLOPE, 1.0);
    EXPECT_EQ(c->cf(), cf);
    EXPECT_EQ(c->velocity0(), u0);
    EXPECT_EQ(c->flow0(), mc.flow_from_width_hmean_and_velocity(WIDTH, hmean0, u0));
    for (ChannelPoint* cp : points_of(*c))
    {
        EXPECT_EQ(cp->flow().u0(), u0);
        EXPECT_EQ(cp->flow().u1(), 0.);
        EXPECT_EQ(cp->flow().hmean(), hmean0);
    }

    // No sinuosity schedule: the straight depth and velocity stay.
    params.setSinuoInterval(0);
    c->update_flow_sinuosity();
    EXPECT_EQ(c->mean_depth(), hmean0);
    EXPECT_EQ(c->mean_flow_velocity(), u0);

    params.setSinuoInterval(10);
    c->reset_caches();
    c->update_flow_sinuosity();
    const double s = c->compute_real_sinuosity_allen();
    EXPECT_GT(s, 1.3);
    EXPECT_NEAR(c->mean_depth(), hmean0 * std::cbrt(s / 1.5), 1e-12);
    EXPECT_NEAR(c->mean_flow_velocity(), u0 / std::cbrt(s / 1.5), 1e-12);
    for (ChannelPoint* cp : points_of(*c))
    {
        EXPECT_EQ(cp->hmean(), c->mean_depth());
        EXPECT_EQ(cp->flow().u0(), c->mean_flow_velocity());
        EXPECT_DOUBLE_EQ(cp->flow().hmean(), c->mean_depth());
    }

    // Local form: a straight reach has a sinuosity of 1.
    auto line = make(straight_line(60));
    line->update_flow_local_sinuosity();
    const std::vector<ChannelPoint*> p = points_of(*line);
    EXPECT_NEAR(p[30]->flow().hmean(), hmean0 * std::cbrt(1. / 1.5), 1e-12);
    EXPECT_NEAR(p[30]->flow().u0(), u0 / std::cbrt(1. / 1.5), 1e-12);
}

TEST_F(ChannelFlowTest, FindingAPointAtADistance)
{
    auto c = make(straight_line(30));
    const std::vector<ChannelPoint*> p = points_of(*c);
    // The walk returns the point one step beyond the distance.
    EXPECT_EQ(c->find_channel_point_at(p[10], 25.), p[14]);
    EXPECT_EQ(c->find_channel_point_at(p[10], 20.), p[13]);
    EXPECT_EQ(c->find_channel_point_at(p[10], -25.), p[6]);
    EXPECT_EQ(c->find_channel_point_at(p[10], -20.), p[7]);
    EXPECT_EQ(c->find_channel_point_at(p[10], 1e4), nullptr);
    EXPECT_EQ(c->find_channel_point_at(p[10], -85.), p[0]);
    EXPECT_EQ(c->find_channel_point_at(p[10], -95.), nullptr);
    EXPECT_EQ(c->find_channel_point_at(p[0], 25.), nullptr);
    EXPECT_EQ(c->find_channel_point_at(p.back(), -25.), nullptr);
}

TEST_F(ChannelFlowTest, SinuositiesOfALineAndOfASineGeneratedCurve)
{
    auto line = make(straight_line(41));
    const std::vector<ChannelPoint*> lp = points_of(*line);
    line->curvatures(3);
    EXPECT_DOUBLE_EQ(line->compute_real_sinuosity_from_to(false, nullptr, lp[39]), 1.);
    EXPECT_DOUBLE_EQ(line->compute_real_sinuosity_from_to(true, lp[3], lp[20]), 1.);
    // The total length held at the last point counts its segment twice.
    EXPECT_DOUBLE_EQ(line->compute_real_sinuosity(false, nullptr), 410. / 400.);
    // No meander, no inflexion chord.
    EXPECT_EQ(line->compute_real_sinuosity_allen(), 1.);
    int count = -1;
    EXPECT_EQ(line->compute_meander_segments_length(count), 0.);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(line->compute_real_wavelength(), 2. * WIDTH);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { line->compute_real_tortuosity(false, nullptr); }),
                                "tortuosity > 0."));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { line->compute_real_sinuosity(true, nullptr); }),
                                "domp != NULL"));
    EXPECT_TRUE(is_assertion_of(
        assertion_text([&] { line->compute_real_sinuosity_from_to(false, lp[10], lp[5]); }), "s > 0."));
    EXPECT_DOUBLE_EQ(line->compute_sand_body_extension(), WIDTH);

    // The stored flow direction goes to the cosine as it is, the straight
    // length being divided by it; a negative cosine gives the answer 1.
    params.setParamDouble("CHNL_FLW_DIR", 91.);
    EXPECT_DOUBLE_EQ(line->compute_real_sinuosity_from_to(true, lp[3], lp[20]), std::cos(1.));
    params.setParamDouble("CHNL_FLW_DIR", 93.);
    EXPECT_EQ(line->compute_real_sinuosity_from_to(true, lp[3], lp[20]), 1.);

    // Sine-generated meanders: sinuosity 1 / J0(omega) between two
    // inflexions that lie on the axis, four wavelengths apart.
    const double omega = 1.0;
    const double m = 1000.;
    auto c = make(sine_generated(omega, m, 501));
    c->curvatures(3);
    const std::vector<ChannelPoint*> p = points_of(*c);
    ASSERT_EQ(p.size(), 501u);
    const double j0 = std::cyl_bessel_j(0., omega);
    EXPECT_NEAR(c->compute_real_sinuosity_from_to(false, p[25], p[425]), 1. / j0, 2e-3);

    // Inflexions at m/4 + k m/2: ten on five wavelengths. The first opens
    // the walk and the chord after it is one step long.
    EXPECT_NEAR(c->compute_meander_segments_length(count), 4.5 * m * j0 + STEP, 2. * STEP);
    EXPECT_EQ(count, 10);
    const double length = c->compute_meander_segments_length(count);
    EXPECT_NEAR(c->compute_real_wavelength(), 2. * length / count, 1e-9);
    EXPECT_NEAR(c->compute_real_sinuosity_allen(), p.back()->s() / length, 1e-12);
    EXPECT_NEAR(c->compute_real_tortuosity(false, nullptr), length / p.front()->distance2D(*p.back()), 1e-12);

    // The belt spans the swing of the curve across its axis.
    double lo = 0., hi = 0.;
    for (ChannelPoint* cp : p)
    {
        lo = std::min(lo, cp->get_ordinate());
        hi = std::max(hi, cp->get_ordinate());
    }
    EXPECT_NEAR(c->compute_sand_body_extension(), hi - lo + WIDTH, 1.);
}

TEST_F(ChannelFlowTest, GrainSizeProfiles)
{
    auto c = make(straight_line(10));
    ChannelPoint* cp = c->get_point(4);
    Flow flow = cp->flow();
    flow.u1(0.4);
    std::vector<double> grains{7.}, heights{7.};

    // The proxy: ten layers of a regression on |U1| and height.
    c->get_grainsize_profile_proxy(flow, 0.5, 2.5, grains, heights);
    ASSERT_EQ(grains.size(), 10u);
    for (int k = 0; k < 10; k++)
    {
        const double z = 0.5 + (k + 1) * 0.2;
        EXPECT_NEAR(heights[k], z, 1e-12);
        EXPECT_NEAR(grains[k], 0.6908 - 0.05147 * 0.4 - 0.03872 * z, 1e-12);
    }
    EXPECT_EQ(heights.back(), 2.5);
    c->get_grainsize_profile_proxy(flow, 1., 1.003, grains, heights);
    EXPECT_EQ(grains.size(), 10u);
    params.setUsingTurbi();
    c->get_grainsize_profile_proxy(flow, 0., 10., grains, heights);
    EXPECT_NEAR(grains[0], 0.7063 - 0.01238 * 0.4 - 0.001084 * 1. + 0.0006667 * flow.superelevation(), 1e-12);
    c->get_grainsize_profile_proxy(flow, 2., 2., grains, heights);
    EXPECT_TRUE(grains.empty());
    params.setUsingFluvi();

    // The concentration profile: same layers as the flow gives, fining upward.
    flow.cmp_c0(1, false);
    std::vector<double> g2, h2;
    flow.discretized_grainsize_profile(0.05, 2.8, g2, h2, 0.5, 1, nullptr);
    grains.assign(3, 1.);
    c->get_grainsize_profile(flow, 0.01, 1, 0.05, 2.8, 0.5, grains, heights);
    EXPECT_EQ(grains, g2);
    EXPECT_EQ(heights, h2);
    for (std::size_t i = 1; i < grains.size(); i++)
        EXPECT_LT(grains[i], grains[i - 1]);

    c->get_grainsize_profile_optim(flow, 0.01, 1, 0., flow.hflow_max(), flow.hflow_max(), grains, heights);
    ASSERT_FALSE(grains.empty());
    EXPECT_EQ(grains.front(), Facies::class_to_granulo(params.getParamInt("GR_PB_OPTIM_MAX")));
    EXPECT_EQ(heights.back(), flow.hflow_max());
}
