#include "kernel/driver/Simulator.h"

#include "SimulatorSupport.h"
#include "TestSupport.h"
#include "kernel/channel/Centerline.h"
#include "kernel/channel/Channel.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionUnit.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/FaciesProportions.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using testing_support::capture;
using testing_support::g_trace;
using testing_support::silent;

constexpr int NX = 121;
constexpr int NY = 81;
constexpr double DX = 10.;
constexpr double WIDTH = 30.;

std::unique_ptr<Simulator> simulator()
{
    auto sim = std::make_unique<Simulator>();
    sim->getTracer()->setTraceFunction(silent);
    iParameters* p = sim->getParameters();
    p->setParamInt("DOMAIN_NX", NX);
    p->setParamInt("DOMAIN_NY", NY);
    p->setParamDouble("DOMAIN_DX", DX);
    p->setParamDouble("DOMAIN_DY", DX);
    return sim;
}

// y = y0 + a sin(2 pi x / wavelength), from beyond the upstream margin to beyond the downstream one.
Centerline sine_centerline(double a, double wavelength, double y0 = 400.)
{
    Centerline cl;
    for (double x = -200.; x <= NX * DX + 200.; x += 5.)
        cl.add(x, y0 + a * std::sin(MP_TWO_PI * x / wavelength), 0.);
    return cl;
}

void stack(Domain& domain, int i, int j, unsigned char family, unsigned char steps)
{
    domain.getObject(i, j).units().push_back(DepositionUnit(Facies(family), steps, 0));
}

} // namespace

TEST(SimulatorMeasures, SineChannelSinuosityWavelengthAndBelt)
{
    Tracer tracer;
    tracer.setTraceFunction(silent);
    Parameters params(&tracer);
    MeanderCalculator mc(&params, &tracer);
    const double a = 40.;
    const double wavelength = 400.;
    const double step = 5.;
    std::vector<Point3D> points;
    for (double x = 0.; x <= 6. * wavelength + 1e-9; x += step)
        points.emplace_back(x, a * std::sin(MP_TWO_PI * x / wavelength), 0.);
    Channel channel(&mc, points);
    channel.init_geom(3., WIDTH, wavelength, 0.001);
    channel.curvatures(3);

    // Arc length of the sine by fine quadrature; the channel resamples the
    // curve into chords a few metres long, which the tolerance covers.
    double arc = 0.;
    const int n = 600000;
    const double h = 6. * wavelength / n;
    for (int k = 0; k < n; ++k)
    {
        const double slope = a * MP_TWO_PI / wavelength * std::cos(MP_TWO_PI * (k + 0.5) * h / wavelength);
        arc += h * std::sqrt(1. + slope * slope);
    }
    EXPECT_NEAR(channel.compute_real_sinuosity(false, nullptr), arc / (6. * wavelength), 5e-3);
    EXPECT_GT(arc / (6. * wavelength), 1.09);
    // Inflexion chords are half wavelengths on the axis.
    EXPECT_NEAR(channel.compute_real_wavelength(), wavelength, 0.1 * wavelength);
    EXPECT_NEAR(channel.compute_sand_body_extension(), 2. * a + WIDTH, 1.);
}

TEST(SimulatorMeasures, ProportionsAndRatesOfABlockBuiltByHand)
{
    auto sim = simulator();
    // Nothing to measure before the model exists.
    EXPECT_EQ(sim->getSandProportion(), MP_UNDEF_REAL);
    EXPECT_EQ(sim->getAggradationRate(), MP_UNDEF_REAL);
    EXPECT_EQ(sim->getSinuosity(), MP_UNDEF_REAL);
    EXPECT_EQ(sim->getMigrationRate(), MP_UNDEF_REAL);
    ASSERT_EQ(sim->init(false), 0);
    Domain& domain = *sim->domain();
    // Every node: 2 m of initial fill, 0.5 m of channel lag, 1 m of point
    // bar, 1.5 m of overbank fines; half the nodes also 1 m of crevasse splay.
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < NX; ++i)
        {
            stack(domain, i, j, 0, 200);
            stack(domain, i, j, 1, 50);
            stack(domain, i, j, 2, 100);
            stack(domain, i, j, 8, 150);
            if (i % 2 == 0 && j % 2 == 0)
                stack(domain, i, j, 4, 100);
        }
    const double splay = static_cast<double>(((NX + 1) / 2) * ((NY + 1) / 2)) / (NX * NY);
    const std::vector<double> families = sim->familyThicknesses();
    ASSERT_EQ(families.size(), 14u);
    EXPECT_NEAR(families[0], 2., 1e-9);
    EXPECT_NEAR(families[4], splay, 1e-9);
    const double total = 3. + splay;
    EXPECT_NEAR(sim->getSandProportion(), (1.5 + splay) / total, 1e-9);
    EXPECT_NEAR(sim->getPBProportion(), 1. / total, 1e-9);
    // No age, no rate; 200 iterations for the whole block.
    EXPECT_EQ(sim->getAggradationRate(), MP_UNDEF_REAL);
    sim->setAge(200);
    EXPECT_NEAR(sim->getAggradationRate(), total * 10000. / 200., 1e-6);
}

// Two layers of known facies over the whole block, and a sand cap on its west half.
TEST(SimulatorMeasures, ProportionCurvesAndMatrixOfALayeredBlock)
{
    auto sim = simulator();
    FaciesProportions table;
    EXPECT_FALSE(sim->getProportionMatrix(table));
    ASSERT_EQ(sim->init(false), 0);
    Domain& domain = *sim->domain();
    double zmin = 0., zmax = 0.;
    domain.min_and_max_elevation_geo(zmin, zmax);
    ASSERT_EQ(zmin, zmax);
    domain.deposit_uniform_thickness(2., Facies(PointBar::_fd.id()), 1);
    domain.deposit_uniform_thickness(3., Facies(Overbank::_fd.id()), 2);
    const int west = NX / 2;
    for (int j = 0; j < NY; ++j)
        for (int i = 0; i < west; ++i)
            domain.getObject(i, j).deposit_thickness(1., Facies(ChannelLag::_fd.id()), 3,
                                                     domain.getMassBalance());

    struct Slice
    {
        double bottom, top, columns, point_bar, overbank, lag;
    };
    const double all = NX * NY;
    const double half = west * NY;
    const struct
    {
        double dz;
        std::vector<Slice> slices;
    } cases[] = {
        {1.,
         {{0, 1, all, 1, 0, 0},
          {1, 2, all, 1, 0, 0},
          {2, 3, all, 0, 1, 0},
          {3, 4, all, 0, 1, 0},
          {4, 5, all, 0, 1, 0},
          {5, 6, half, 0, 0, 1}}},
        // Slices across the layer boundaries mix them by thickness.
        {2.5, {{0, 2.5, all, 0.8, 0.2, 0}, {2.5, 5, all, 0, 1, 0}, {5, 7.5, half, 0, 0, 1}}},
        {10.,
         {{0, 10, all, 2. / (5. + half / all), 3. / (5. + half / all), (half / all) / (5. + half / all)}}},
    };
    for (const auto& c : cases)
    {
        ASSERT_TRUE(sim->getVerticalProportions(c.dz, table));
        ASSERT_EQ(table.rows(), static_cast<int>(c.slices.size())) << c.dz;
        for (int k = 0; k < table.rows(); ++k)
        {
            const Slice& s = c.slices[static_cast<size_t>(k)];
            EXPECT_NEAR(table.labels(k)[0], zmin + s.bottom, 1e-9) << c.dz << " " << k;
            EXPECT_NEAR(table.labels(k)[1], zmin + s.top, 1e-9) << c.dz << " " << k;
            EXPECT_EQ(table.labels(k)[2], s.columns) << c.dz << " " << k;
            EXPECT_NEAR(table.share(k, PointBar::_fd.id()), s.point_bar, 1e-9) << c.dz << " " << k;
            EXPECT_NEAR(table.share(k, Overbank::_fd.id()), s.overbank, 1e-9) << c.dz << " " << k;
            EXPECT_NEAR(table.share(k, ChannelLag::_fd.id()), s.lag, 1e-9) << c.dz << " " << k;
            EXPECT_NEAR(table.sand_share(k), s.point_bar + s.lag, 1e-9) << c.dz << " " << k;
        }
    }
    EXPECT_FALSE(sim->getVerticalProportions(0., table));

    // The matrix: one row per node, j slowest, shares over the column.
    ASSERT_TRUE(sim->getProportionMatrix(table));
    ASSERT_EQ(table.rows(), NX * NY);
    for (const auto& node : {std::make_pair(0, 0), std::make_pair(west, 3), std::make_pair(NX - 1, NY - 1)})
    {
        const int row = node.second * NX + node.first;
        const bool capped = node.first < west;
        EXPECT_EQ(table.labels(row)[0], node.first);
        EXPECT_EQ(table.labels(row)[1], node.second);
        EXPECT_NEAR(table.labels(row)[2], domain.grid2Geo(node.first, node.second).get_abscissa(), 1e-9);
        EXPECT_NEAR(table.thickness(row), capped ? 6. : 5., 1e-9);
        EXPECT_NEAR(table.sand_share(row), capped ? 0.5 : 0.4, 1e-9);
        EXPECT_NEAR(table.share(row, Overbank::_fd.id()), capped ? 0.5 : 0.6, 1e-9);
    }

    // The files: a header line, then one line per row.
    testing_support::TempDir dir;
    ASSERT_TRUE(sim->saveVerticalProportions(dir.file("vpc.csv"), 2.5));
    const std::vector<std::string> lines =
        testing_support::lines_of(testing_support::read_file(dir.file("vpc.csv")));
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0],
              "z_bottom;z_top;nb_columns;thickness;prop_sand;prop_UD;prop_CL;prop_PB;prop_SP;prop_CSI;"
              "prop_CCh;prop_CSII;prop_LV;prop_OB;prop_MP;prop_HP;prop_WL;prop_DR;prop_PL");
    std::ostringstream first;
    first << zmin << ";" << zmin + 2.5 << ";" << NX * NY << ";" << 2.5 * NX * NY
          << ";0.8;0;0;0.8;0;0;0;0;0;0.2;0;0;0;0;0";
    EXPECT_EQ(lines[1], first.str());
    ASSERT_TRUE(sim->saveProportionMatrix(dir.file("pm.csv")));
    const std::vector<std::string> rows =
        testing_support::lines_of(testing_support::read_file(dir.file("pm.csv")));
    ASSERT_EQ(rows.size(), static_cast<size_t>(NX * NY + 1));
    EXPECT_EQ(rows[0].substr(0, 30), "i;j;x;y;thickness;prop_sand;pr");

    // Without wells their curve is the header alone; an unwritable file is refused with its name.
    sim->getTracer()->setTraceFunction(capture);
    g_trace.clear();
    EXPECT_TRUE(sim->saveWellVerticalProportions(dir.file("wells.csv"), 1.));
    EXPECT_EQ(testing_support::read_file(dir.file("wells.csv")), lines[0] + "\n");
    EXPECT_NE(g_trace.find("No conditioning well: the vertical proportion curve in " + dir.file("wells.csv") +
                           " is empty"),
              std::string::npos);
    EXPECT_FALSE(sim->saveProportionMatrix(dir.file("none/pm.csv")));
    EXPECT_EQ(sim->getLastMessage(), "Cannot open proportion file " + dir.file("none/pm.csv"));
}

// Logs at different elevations: each slice counts the logs it crosses.
TEST(SimulatorMeasures, VerticalProportionCurveOfLogs)
{
    Core a(0., 0., 13., "A");
    a.add(Overbank::_fd.id(), 1.);
    a.add(PointBar::_fd.id(), 2.);
    Core b(50., 0., 12., "B");
    b.add(ChannelLag::_fd.id(), 1.);
    CoreList logs;
    logs.add(a);
    logs.add(b);
    const FaciesProportions curve = FaciesProportions::vertical_curve(logs, 1.);
    ASSERT_EQ(curve.rows(), 3);
    EXPECT_EQ(curve.labels(0), (std::vector<double>{10., 11., 1.}));
    EXPECT_EQ(curve.labels(1), (std::vector<double>{11., 12., 2.}));
    EXPECT_EQ(curve.labels(2), (std::vector<double>{12., 13., 1.}));
    EXPECT_DOUBLE_EQ(curve.share(0, PointBar::_fd.id()), 1.);
    EXPECT_DOUBLE_EQ(curve.share(1, PointBar::_fd.id()), 0.5);
    EXPECT_DOUBLE_EQ(curve.share(1, ChannelLag::_fd.id()), 0.5);
    EXPECT_DOUBLE_EQ(curve.thickness(1), 2.);
    EXPECT_DOUBLE_EQ(curve.share(2, Overbank::_fd.id()), 1.);
    // A top on a slice border opens no slice; no log, no slice.
    EXPECT_EQ(FaciesProportions::vertical_curve(logs, 1.5).rows(), 2);
    EXPECT_EQ(FaciesProportions::vertical_curve(CoreList(), 1.).rows(), 0);
}

TEST(SimulatorMeasures, IsbxFollowsTheBeltOfTheChannelLife)
{
    auto sim = simulator();
    ASSERT_EQ(sim->init(false), 0);
    // A straight channel along the flow has no sand body beyond its own width.
    ASSERT_TRUE(sim->replaceCenterline(sine_centerline(0., 375.), false));
    const double width = sim->network()->channel()->width();
    EXPECT_LT(sim->getIsbx(), 1.);
    const auto shift = [&](double dy)
    {
        for (ChannelPoint* cp = sim->network()->channel()->first(); cp != nullptr; cp = cp->next())
            cp->set_ordinate(cp->get_ordinate() + dy);
    };
    // Reading takes no sample: a position only read and left is not in the belt.
    sim->sampleChannelMeasures();
    shift(50.);
    EXPECT_NEAR(sim->getIsbx(), 10. * 50. / width, 0.5);
    shift(-50.);
    EXPECT_LT(sim->getIsbx(), 1.);
    // Drifting 30 m sideways in 60 iterations from the sample, it widens the belt of its life.
    shift(30.);
    sim->setAge(sim->getAge() + 60);
    EXPECT_NEAR(sim->getMigrationRate(), 30. * 10000. / 60., 1.);
    EXPECT_NEAR(sim->getIsbx(), 10. * 30. / width, 0.5);

    // A new channel starts a new life: meanders of amplitude a make a belt
    // 2a wide beyond the channel, and no migration is known yet.
    const double a = 45.;
    ASSERT_TRUE(sim->replaceCenterline(sine_centerline(a, 375.), false));
    EXPECT_EQ(sim->getMigrationRate(), MP_UNDEF_REAL);
    EXPECT_NEAR(sim->getIsbx(), 10. * 2. * a / width, 1.5);
    EXPECT_GT(sim->getSandBodyExtension(), 2. * a + width);
    EXPECT_GT(sim->getSinuosity(), 1.05);
}

TEST(SimulatorMeasures, CutoffCountsAndIsbxHistory)
{
    auto sim = simulator();
    EXPECT_EQ(sim->getNbCutoff(), 0u);
    EXPECT_EQ(sim->getMeanNbCutoff(), MP_UNDEF_REAL);
    // Only the forecast is told before the model exists, then the record of the first cutoff.
    std::ostringstream tau;
    tau << sim->getMeanderCalculator()->default_tau_cut();
    const std::string forecast = "Forecast First Cutoff Abstract Time: " + tau.str() + "\n";
    EXPECT_EQ(sim->getTauCutStats(), forecast);
    ASSERT_EQ(sim->init(false), 0);
    EXPECT_EQ(sim->getTauCutStats(), forecast + "No meander cutoff yet\n");
    sim->network()->set_first_cutoff(120, 0.5, 1.25, 1.5, 1.75, 400., 90.);
    EXPECT_EQ(sim->getTauCutStats(),
              forecast + "First Cutoff Iteration: 120\nFirst Cutoff Abstract Time: 0.5\n"
                         "Sinuosity at First Cutoff: 1.25\nAllen Sinuosity at First Cutoff: 1.5\n"
                         "Tortuosity at First Cutoff: 1.75\nWavelength at First Cutoff (m): 400\n"
                         "Sand Bodies Extension at First Cutoff: 90\n");
    sim->network()->set_counters(2, 1, 2, 0, 9);
    EXPECT_EQ(sim->getNbCutoff(), 9u);
    // Three channel lives for two avulsions.
    EXPECT_DOUBLE_EQ(sim->getMeanNbCutoff(), 3.);
    EXPECT_EQ(sim->getMeanIsbx(), MP_UNDEF_REAL);

    sim->getParameters()->setParamInt("AV_LOC_FREQ", 0);
    sim->getParameters()->setParamInt("AV_REG_FREQ", 0);
    ASSERT_EQ(sim->checkConsistency() == 6, false);
    ASSERT_EQ(sim->newSequence(), 0);
    ASSERT_EQ(sim->run(200), 0) << sim->getLastMessage();
    ASSERT_EQ(sim->getIsbxHistory().size(), 2u);
    const double mean = (sim->getIsbxHistory()[0] + sim->getIsbxHistory()[1]) / 2.;
    EXPECT_DOUBLE_EQ(sim->getMeanIsbx(), mean);
    EXPECT_GE(mean, 0.);
    EXPECT_LT(mean, 200.);
}

TEST(SimulatorMeasures, ForecastsFollowTheirRelations)
{
    Tracer tracer;
    tracer.setTraceFunction(silent);
    Parameters params(&tracer);
    MeanderCalculator mc(&params, &tracer);
    // Migration: erodibility times perturbation over a year per iteration.
    const double vp = mc.forecast_mean_velocity_perturbation();
    EXPECT_GT(vp, 0.);
    EXPECT_NEAR(mc.forecast_migration_rate(),
                MeanderCalculator::kmig_fitted() * 4e-08 * vp * MP_SECONDS_PER_YEAR * 10000., 1e-9);
    // Floods at the default period of 70 with 0.1 m: the base rate at the channel.
    EXPECT_NEAR(mc.overbank_base(), 0.1 * 10000. / 70., 1e-9);
    // Along x, the domain is 200 cells wide across the flow.
    EXPECT_NEAR(mc.transverse_extent(), 200. * 10., 1e-6);

    const double sand = mc.forecast_sand_proportion();
    EXPECT_GT(sand, 0.);
    EXPECT_LT(sand, 1.);
    EXPECT_NEAR(sand, mc.forecast_sand_rate() / mc.forecast_aggradation_rate(), 1e-12);
    // Stronger floods dilute the sands; without floods nothing dilutes them.
    params.setParamDouble("AG_OB_NORM_MEAN", 0.3);
    EXPECT_LT(mc.forecast_sand_proportion(), sand);
    params.setParamInt("AG_TYPE", 0);
    EXPECT_DOUBLE_EQ(mc.forecast_sand_proportion(), 1.);
    // Avulsions twice as rare let the sand bodies grow.
    const double isbx = mc.forecast_isbx();
    params.setParamInt("AV_REG_POISSON", 1000);
    EXPECT_GT(mc.forecast_isbx(), isbx);
    params.setParamInt("AV_REG_FREQ", 0);
    EXPECT_EQ(mc.forecast_isbx(), MeanderCalculator::MAX_ISBX);
}

TEST(SimulatorMeasures, NexusReachesWhatWasAsked)
{
    auto sim = simulator();
    iParameters* p = sim->getParameters();
    MeanderCalculator* mc = sim->getMeanderCalculator();
    std::string message = "old";
    ASSERT_TRUE(sim->applyNexus({6., 60., 0.4}, true, message)) << message;
    EXPECT_TRUE(message.empty());
    // The channel natural to a 6 m depth.
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_MAX_DEPTH"), 6.);
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_WIDTH"), 60.);
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_WAVELENGTH"), 750.);
    EXPECT_DOUBLE_EQ(p->getParamDouble("DOMAIN_SLOPE"), 0.0005);
    EXPECT_NEAR(p->getParamDouble("EROD_COEF"), 4e-08 * std::sqrt(2.), 1e-10);
    EXPECT_DOUBLE_EQ(p->getParamDouble("DOMAIN_DX"), 20.);
    EXPECT_EQ(p->getParamInt("DOMAIN_NX"), 251);
    EXPECT_EQ(p->getParamInt("AG_TYPE"), 2);
    // The forecasts give back the index and the net to gross asked (periods are whole iterations).
    EXPECT_NEAR(mc->forecast_isbx(), 60., 0.6);
    EXPECT_NEAR(mc->forecast_sand_proportion(), 0.4, 1e-3);
    EXPECT_NEAR(sim->getForecastSand(), 0.4, 1e-3);
    EXPECT_LE(p->getParamInt("AG_OB_POISSON"), p->getParamInt("AV_LOC_POISSON"));
    EXPECT_EQ(sim->checkConsistency() == 6, false) << sim->getLastMessage();

    // Values not given: the depth in force and the typical values of the sediment.
    ASSERT_TRUE(sim->applyNexus({MP_UNDEF_REAL, MP_UNDEF_REAL, MP_UNDEF_REAL}, false, message)) << message;
    const int gr = p->getSedMedianClass();
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_MAX_DEPTH"), 6.);
    EXPECT_NEAR(mc->forecast_sand_proportion(), MeanderCalculator::default_sand(gr), 1e-3);
    EXPECT_NEAR(mc->forecast_isbx(), MeanderCalculator::default_isbx(gr),
                0.01 * MeanderCalculator::default_isbx(gr));
}

TEST(SimulatorMeasures, NeqsusOnlyTunesThePeriods)
{
    auto sim = simulator();
    iParameters* p = sim->getParameters();
    std::string message;
    ASSERT_TRUE(sim->applyNeqsus({MP_UNDEF_REAL, 80., 0.7}, false, message)) << message;
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_WIDTH"), 30.);
    EXPECT_DOUBLE_EQ(p->getParamDouble("AG_OB_NORM_MEAN"), 0.1);
    EXPECT_DOUBLE_EQ(p->getParamDouble("DOMAIN_DX"), DX);
    EXPECT_EQ(p->getParamInt("AV_REG_PERIOD"), p->getParamInt("AV_REG_POISSON"));
    EXPECT_NEAR(sim->getMeanderCalculator()->forecast_isbx(), 80., 0.8);
    EXPECT_NEAR(sim->getForecastSand(), 0.7, 2e-3);
}

TEST(SimulatorMeasures, OutOfRangeRequestsAreRefusedWithTheirList)
{
    auto sim = simulator();
    iParameters* p = sim->getParameters();
    std::string message;
    EXPECT_FALSE(sim->applyNexus({20., 500., 2.}, true, message));
    EXPECT_EQ(message, "Following parameters are out of range:\n"
                       "- Channel maximum depth (20) must be within [0.5, 15]\n"
                       "- Sand bodies extension index (500) must be within [1, 200]\n"
                       "- Net to gross (2) must be within [0.05, 0.95]");
    // Nothing was changed.
    EXPECT_DOUBLE_EQ(p->getParamDouble("CHNL_MAX_DEPTH"), 3.);
    EXPECT_DOUBLE_EQ(p->getParamDouble("DOMAIN_DX"), DX);
    EXPECT_EQ(p->getParamInt("AV_REG_POISSON"), 500);

    // Only what is wrong is listed; Neqsus checks the same.
    EXPECT_FALSE(sim->applyNeqsus({3., 50., -0.1}, false, message));
    EXPECT_EQ(message,
              "Following parameters are out of range:\n- Net to gross (-0.1) must be within [0.05, 0.95]");
    EXPECT_FALSE(sim->applyNexus({0.2, MP_UNDEF_REAL, MP_UNDEF_REAL}, false, message));
    EXPECT_EQ(
        message,
        "Following parameters are out of range:\n- Channel maximum depth (0.2) must be within [0.5, 15]");
    EXPECT_EQ(p->getParamInt("AG_OB_POISSON"), 70);
}

TEST(SimulatorMeasures, NexusFromWells)
{
    auto sim = simulator();
    CoreList cores;
    std::vector<double> nexus;
    std::string message;
    EXPECT_FALSE(sim->nexusFromWells(cores, nexus, message));
    EXPECT_EQ(message, "no deposit in wells");

    // From the top: fines, a 3 m point bar, fines, a 3.5 m body of lag and
    // point bar, fines; a second well with a 2 m sand plug between fines.
    Core a("a");
    a.add(8, 2.);
    a.add(2, 3.);
    a.add(7, 1.);
    a.add(1, 0.5);
    a.add(2, 3.);
    a.add(8, 4.);
    Core b("b");
    b.add(8, 1.);
    b.add(3, 2.);
    b.add(12, 0.5);
    cores.add(a);
    cores.add(b);
    ASSERT_TRUE(sim->nexusFromWells(cores, nexus, message)) << message;
    ASSERT_EQ(nexus.size(), 3u);
    // The median body is the 3 m point bar.
    EXPECT_DOUBLE_EQ(nexus[0], 3.);
    EXPECT_NEAR(nexus[2], 8.5 / 17., 1e-12);
    EXPECT_GE(nexus[1], MeanderCalculator::MIN_ISBX);
    EXPECT_LE(nexus[1], MeanderCalculator::MAX_ISBX);

    Core fines("fines");
    fines.add(8, 5.);
    CoreList muddy;
    muddy.add(fines);
    EXPECT_FALSE(sim->nexusFromWells(muddy, nexus, message));
    EXPECT_EQ(message, "no channel sand in wells");
}

TEST(SimulatorMeasures, BatchTellsWhatItForecastAndObtained)
{
    testing_support::TempDir dir;
    const std::string global = "[GLOBAL]\nSLICE_Z = -1\n[NEW_SEQ]\nDOMAIN_NX = 60\nDOMAIN_NY = 50\n";
    // Out of range: refused with the list, and nothing runs.
    testing_support::write_file(dir.file("bad.bat"),
                                global + "NEXUS_HMAX = 30\nNEXUS_SAND = 40\nLAUNCH_IT = 50\n");
    std::unique_ptr<iSimulator> bad_sim(iSimulator::createSimulator());
    iSimulator& bad = *bad_sim;
    bad.getTracer()->setTraceFunction(capture);
    g_trace.clear();
    EXPECT_NE(bad.launchBatch(dir.file("bad.bat")), 0);
    EXPECT_NE(g_trace.find("Error calculating Nexus:\n"
                           "              : Following parameters are out of range:\n"
                           "              : - Channel maximum depth (30) must be within [0.5, 15]\n"
                           "              : - Net to gross (40) must be within [0.05, 0.95]\n"),
              std::string::npos)
        << g_trace;
    // Refused when the batch is loaded, before any sequence is prepared.
    EXPECT_EQ(g_trace.find("Calculating Nexus for"), std::string::npos);
    EXPECT_EQ(bad.getAge(), 0u);
    EXPECT_EQ(g_trace.find("Launching sequence"), std::string::npos);

    testing_support::write_file(dir.file("good.bat"),
                                global + "NEXUS_HMAX = 2\nNEXUS_ISBX = 80\nNEXUS_SAND = 0.5\n"
                                         "AV_LOC_FREQ = 0\nAV_REG_FREQ = 0\nLAUNCH_IT = 50\n");
    std::unique_ptr<iSimulator> good_sim(iSimulator::createSimulator());
    iSimulator& good = *good_sim;
    good.getTracer()->setTraceFunction(capture);
    g_trace.clear();
    ASSERT_EQ(good.launchBatch(dir.file("good.bat")), 0) << g_trace;
    for (const char* line : {"Nexus parameters:", "  CHNL_WIDTH = 20",
                             "  Forecast Net to Gross (%): ", "  Forecast Sand Bodies Extension Index: ",
                             "  Global Net to Gross (%): ", "  Mean Sand Bodies Extension Index: "})
        EXPECT_NE(g_trace.find(line), std::string::npos) << line;
    EXPECT_EQ(good.getAge(), 50u);
}
