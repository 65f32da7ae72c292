// Migration of the centerline: the step, the bank erodibility it sees, the
// smoothing of elevations, the well statuses and the bilinear lookups.

#include "kernel/channel/Channel.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/common/Constants.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"
#include "kernel/wells/Well.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;
using testing_support::silent;

namespace
{

constexpr double TOP = testing_support::ReachParts::REACH_TOP;
constexpr double YEAR = 31557600.;

class MigrationTest : public ::testing::Test, protected testing_support::ReachParts
{
protected:
    MigrationTest()
    {
        tracer.setTraceFunction(silent);
        proportions = params.getSedProportions();
    }

    std::vector<double> proportions;
};

// Largest distance of the interior points from the axis y = y0.
double amplitude(const Channel& channel, double y0, double xmin, double xmax)
{
    double a = 0.;
    for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next())
        if (cp->get_abscissa() > xmin && cp->get_abscissa() < xmax)
            a = std::max(a, std::fabs(cp->get_ordinate() - y0));
    return a;
}

} // namespace

TEST_F(MigrationTest, TimeStepIsFormedInThirtyTwoBits)
{
    EXPECT_EQ(Channel::migration_time_step(1), YEAR);
    EXPECT_EQ(Channel::migration_time_step(136), 136. * YEAR);
    // 137 years overflow 2^32 seconds and wrap.
    EXPECT_EQ(Channel::migration_time_step(137), 137. * YEAR - 4294967296.);
}

TEST_F(MigrationTest, SmoothingUsesValuesBeforeSmoothing)
{
    std::vector<Point3D> points = straight(4, 0., 10., 0.);
    const double z[] = {0., 3., 9., 3.};
    for (int i = 0; i < 4; i++)
        points[i].set_elevation(z[i]);
    Channel channel(&mc, points);
    channel.smooth_elevations();
    EXPECT_DOUBLE_EQ(channel.get_point(0)->get_elevation(), 1.);
    EXPECT_DOUBLE_EQ(channel.get_point(1)->get_elevation(), 4.);
    EXPECT_DOUBLE_EQ(channel.get_point(2)->get_elevation(), 5.);
    EXPECT_DOUBLE_EQ(channel.get_point(3)->get_elevation(), 5.);

    Channel empty(&mc);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { empty.smooth_elevations(); }), "_first != NULL"));
    Channel single(&mc, straight(2, 0., 10., 0.));
    single.delete_between(single.last(), single.last());
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { single.smooth_elevations(); }), "_first != _last"));
}

TEST_F(MigrationTest, BankErodibilityHeightAndGrainFactors)
{
    auto domain = make_domain(20, 20, 10.);
    const double erod = domain->getObject(5, 5).get_erodibility();
    ASSERT_GT(erod, 0.);
    ChannelPoint cp(&mc, proportions, 30., Point3D(50., 50., TOP), nullptr, nullptr);
    const double h = 2.;

    // Level bank: factor 1. The cell looked at is the one ahead of the bank.
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(50., 50.), Vector2D(1., 0.), h), erod);
    domain->getObject(6, 6).deposit_thickness(3., Facies(Overbank::_fd.id()), 0u, &mb);
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(50., 50.), Vector2D(1., 0.), h),
                     erod * h / (h + 3.));
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(50., 50.), Vector2D(1., -1.), h), erod);
    // Moving backwards the bank's own cell is taken: (5, 5) is level.
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(60., 60.), Vector2D(-1., -1.), h),
                     erod * h / (h + 3.));
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(61., 61.), Vector2D(-1., 0.), h), erod);
    // A bank lower than the channel top is not easier to cut.
    ChannelPoint high(&mc, proportions, 30., Point3D(50., 50., TOP + 5.), nullptr, nullptr);
    EXPECT_DOUBLE_EQ(high.find_erodibility(domain.get(), Point2D(50., 50.), Vector2D(0., 1.), h), erod);

    // On the way out of the grid: the extrapolated value, without the height factor.
    for (int j = 0; j < 20; j++)
        domain->getObject(19, j).deposit_thickness(5., Facies(Overbank::_fd.id()), 0u, &mb);
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(185., 50.), Vector2D(1., 0.), h),
                     domain->get_erodibility_extrapolated(19, 5));
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(185., 50.), Vector2D(1., 0.), h), erod);

    // Grain factor from the mean grain of the bank over its height.
    params.setBankErodCoeff(0.4);
    DepositionSet& bank = domain->getObject(8, 6);
    const double mean = bank.mean_granulo(TOP - h, TOP);
    ASSERT_NE(mean, MP_UNDEF_REAL);
    EXPECT_DOUBLE_EQ(cp.find_erodibility(domain.get(), Point2D(70., 50.), Vector2D(1., 0.), h),
                     (2. * 0.4 * mean + 0.6) * erod);
}

TEST_F(MigrationTest, EachPointMovesAlongItsNormalByItsOwnStep)
{
    auto domain = make_domain(40, 40, 10.);
    const double erod = domain->getObject(0, 0).get_erodibility();
    // Raise the left bank (y > 200) so that the two banks differ by their height factor.
    for (int j = 22; j < 40; j++)
        for (int i = 0; i < 40; i++)
            domain->getObject(i, j).deposit_thickness(2., Facies(Overbank::_fd.id()), 0u, &mb);

    Channel channel(&mc, straight(5, 0., 15., 200.));
    channel.init_geom(3., 30., 375., 0.001);
    channel.init_flow();
    const double u1[] = {0.2, -0.2, 0., 0.2, 0.2};
    int i = 0;
    for (ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
    {
        cp->set_elevation(TOP);
        cp->normal(Vector2D(0., 1.));
        cp->flow().u1(u1[i]);
    }
    // A factor without a status is ignored; status 1 and 2 apply it.
    channel.get_point(3)->mig_factor(3.);
    channel.get_point(4)->status(2);
    channel.get_point(4)->mig_factor(0.5);
    const double dt = 1000.;
    std::vector<double> x0;
    for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next())
        x0.push_back(cp->get_abscissa());

    channel.migrate_all_points(domain.get(), dt);

    const double h = channel.get_point(0)->getFlowHmax();
    const double left = erod * h / (h + 2.);
    const double expected_dy[] = {dt * left * 0.2, -dt * erod * 0.2, 0., dt * left * 0.2,
                                  dt * left * 0.2 * 0.5};
    i = 0;
    for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
    {
        EXPECT_DOUBLE_EQ(cp->get_abscissa(), x0[i]) << i;
        EXPECT_NEAR(cp->get_ordinate() - 200., expected_dy[i], 1e-12) << i;
        EXPECT_EQ(cp->get_elevation(), TOP) << i;
    }
    Point2D lo, hi;
    channel.get_bounding_box(lo, hi);
    EXPECT_DOUBLE_EQ(lo.get_ordinate(), 200. + expected_dy[1]);
    EXPECT_DOUBLE_EQ(hi.get_ordinate(), 200. + expected_dy[0]);

    // Free migration ignores the erodibility.
    channel.migrate_free(10.);
    EXPECT_NEAR(channel.get_point(1)->get_ordinate() - 200., expected_dy[1] - 2., 1e-12);
}

TEST_F(MigrationTest, SineChannelGrowsItsBendsAndKeepsItsSpacing)
{
    auto domain = make_domain(301, 201, 10.);
    const double y0 = 1000.;
    const double wavelength = 600.;
    std::vector<Point3D> points;
    for (double x = 0.; x <= 3000.; x += 10.)
        points.emplace_back(x, y0 + 30. * std::sin(MP_TWO_PI * x / wavelength), TOP);
    auto channel = make_channel(points);
    const double w2 = channel->half_width();

    channel->compute_velocity_perturbation();
    const double a0 = amplitude(*channel, y0, 600., 2400.);
    const double s0 = channel->compute_real_sinuosity(false, nullptr);
    for (int step = 0; step < 300; step++)
    {
        channel->migrate(domain.get(), YEAR);
        channel->compute_velocity_perturbation();
        // The spacing rule holds after every resampling.
        for (const ChannelPoint* cp = channel->first()->next(); cp != channel->last(); cp = cp->next())
        {
            const double ds = cp->distance2D(*cp->next());
            ASSERT_GE(ds, 0.5 * w2 - 1e-9) << "step " << step;
            ASSERT_LE(ds, 1.5 * w2 + 1e-9) << "step " << step;
        }
    }
    const double a1 = amplitude(*channel, y0, 600., 2400.);
    const double s1 = channel->compute_real_sinuosity(false, nullptr);
    EXPECT_GT(a1, a0 * 1.2);
    EXPECT_GT(s1, s0);
    // Migration moves the plan form only: elevations stay those of a flat channel.
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        EXPECT_NEAR(cp->get_elevation(), TOP, 1e-9);
}

TEST_F(MigrationTest, StatusSpreadsOverTheMeanderOfItsPoint)
{
    Channel channel(&mc, straight(8, 0., 15., 0.));
    channel.init_geom(3., 30., 375., 0.001);
    const double u1[] = {0.1, -0.1, -0.2, -0.3, -0.1, 0., 0.2, 0.1};
    int i = 0;
    for (ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
        cp->flow().u1(u1[i]);
    channel.get_point(3)->status(2);
    channel.get_point(3)->mig_factor(0.25);
    channel.get_point(7)->status(1);
    channel.get_point(7)->mig_factor(4.);
    channel.propagate_status();
    const int status[] = {0, 2, 2, 2, 2, 0, 1, 1};
    const double factor[] = {1., 0.25, 0.25, 0.25, 0.25, 1., 4., 4.};
    i = 0;
    for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
    {
        EXPECT_EQ(cp->status(), status[i]) << i;
        EXPECT_EQ(cp->mig_factor(), factor[i]) << i;
    }
}

TEST_F(MigrationTest, OneWellIsKeptByMeander)
{
    // The wells outlive the channel whose points they are attached to.
    std::vector<std::unique_ptr<Well>> wells;
    for (int k = 0; k < 8; ++k)
        wells.push_back(std::make_unique<Well>(&params, &tracer));
    Channel channel(&mc, straight(8, 0., 15., 0.));
    channel.init_geom(3., 30., 375., 0.001);
    const double u1[] = {0.1, 0.2, 0.1, 0.3, -0.1, -0.2, -0.1, -0.3};
    int i = 0;
    for (ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
        cp->flow().u1(u1[i]);
    auto hold = [&](int k, int status, double factor)
    {
        ChannelPoint* cp = channel.get_point(k);
        cp->well(wells[k].get());
        cp->status(status);
        cp->mig_factor(factor);
    };
    // First meander: two holding wells of equal factor, then a pushing one.
    hold(0, 2, 0.5);
    hold(2, 2, 0.5);
    hold(3, 1, 2.);
    // Second meander: a pushing well replaced by a stronger one, then a holding one.
    hold(4, 1, 2.);
    hold(5, 1, 3.);
    hold(6, 2, 0.9);
    channel.keep_one_well_by_meander();
    const bool kept[] = {true, false, false, false, false, false, true, false};
    i = 0;
    for (const ChannelPoint* cp = channel.first(); cp != nullptr; cp = cp->next(), i++)
    {
        EXPECT_EQ(cp->well() != nullptr, kept[i]) << i;
        if (!kept[i])
        {
            EXPECT_EQ(cp->status(), 0) << i;
            EXPECT_EQ(cp->mig_factor(), 1.) << i;
        }
    }
}

TEST_F(MigrationTest, TectonicsAndBilinearLookups)
{
    auto domain = make_domain(10, 10, 10.);
    for (int j = 0; j < 10; j++)
        for (int i = 0; i < 10; i++)
            domain->getObject(i, j).set_tecto(0.01 * i);
    Channel channel(&mc, {Point3D(20., 50., TOP), Point3D(34., 50., TOP), Point3D(500., 50., TOP)});
    channel.apply_tecto(domain.get(), 100.);
    // (34, 50) rounds to node (3, 5); the last point is off the grid.
    EXPECT_DOUBLE_EQ(channel.get_point(0)->get_elevation(), TOP + 2.);
    EXPECT_DOUBLE_EQ(channel.get_point(1)->get_elevation(), TOP + 3.);
    EXPECT_DOUBLE_EQ(channel.get_point(2)->get_elevation(), TOP);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { channel.apply_tecto(nullptr, 1.); }), "dom != NULL"));

    EXPECT_EQ(Channel::bilinear_elevation(nullptr, Point2D(0., 0.)), 0.);
    EXPECT_EQ(Channel::bilinear_erodibility_ratio(nullptr, Point2D(0., 0.)), 0.);
    EXPECT_DOUBLE_EQ(Channel::bilinear_erodibility_ratio(domain.get(), Point2D(44., 52.)),
                     domain->getObject(4, 5).get_erodibility() / domain->get_erod_default());
    EXPECT_DOUBLE_EQ(Channel::bilinear_elevation(domain.get(), Point2D(44., 52.)),
                     domain->get_topo_extrapolated(true, true, 4, 5, MP_UNDEF_INT, MP_UNDEF_INT, true));

    EXPECT_DOUBLE_EQ(Channel::norm_proj(Point2D(5., 7.), Point2D(0., 0.), Point2D(10., 0.)), 0.5);
    EXPECT_DOUBLE_EQ(Channel::norm_proj(Point2D(-5., 1.), Point2D(0., 0.), Point2D(10., 0.)), -0.5);
}
