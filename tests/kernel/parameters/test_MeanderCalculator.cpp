#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include "TestSupport.h"

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using testing_support::capture;
using testing_support::g_trace;

namespace
{

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream s(text);
    for (std::string line; std::getline(s, line);)
        lines.push_back(line);
    return lines;
}

using Settings = std::vector<std::pair<std::string, double>>;
using Setup = std::function<void(Parameters&)>;

// Gives named parameters new values, whatever their type.
void set_params(Parameters& params, const Settings& settings)
{
    for (const auto& s : settings)
        ASSERT_TRUE(params.setParam(s.first, s.second)) << s.first;
}

// A case setup that only gives named parameters new values.
Setup setting(const Settings& settings)
{
    return [settings](Parameters& params) { set_params(params, settings); };
}

// The factors that differ between rivers and turbidity currents, in a fixed order.
std::vector<double> system_factors(MeanderCalculator& mc)
{
    return {mc.default_d2w_factor(), mc.default_w2wl_factor(), mc.default_w2lob_factor(),
            mc.default_kob(),        mc.default_kmig(),        mc.default_kvp(),
            mc.default_tau_cut(),    mc.default_sinuo(true),   mc.default_sinuo(false)};
}

class MeanderCalculatorTest : public ::testing::Test
{
protected:
    MeanderCalculatorTest() : params(&tracer), mc(&params, &tracer)
    {
        tracer.setTraceFunction(&capture);
        g_trace.clear();
    }
    ~MeanderCalculatorTest() override { MeanderCalculator::_use_standard = true; }

    void use_turbidite()
    {
        params.setUsingTurbi();
        params.reset(true);
        ASSERT_TRUE(params.usingTurbiOrLobes());
        g_trace.clear();
    }

    Tracer tracer;
    Parameters params;
    MeanderCalculator mc;
};

TEST_F(MeanderCalculatorTest, FactorsAndDefaultsFollowTheSystemType)
{
    EXPECT_EQ(mc.default_hmax(), 3.);
    EXPECT_EQ(mc.default_wavelength(), 375.);
    EXPECT_EQ(mc.default_levee_width(), 6.);
    EXPECT_EQ(mc.default_slope(), 0.001);
    EXPECT_EQ(mc.global_concentration(), 0.01);
    EXPECT_EQ(mc.default_erod_coef(), 4e-08);
    EXPECT_EQ(mc.max_erod_coef(), 2e-07);
    EXPECT_EQ(system_factors(mc), (std::vector<double>{15, 12.5, 30, 0.6, 0.75, 0.87, 2.53e-09, 1.5, 2.71}));
    MeanderCalculator::_use_standard = false;
    EXPECT_EQ(mc.default_kmig(), 0.65);
    MeanderCalculator::_use_standard = true;

    use_turbidite();
    EXPECT_EQ(mc.default_hmax(), 40.);
    EXPECT_EQ(mc.default_wavelength(), 4000.);
    EXPECT_EQ(mc.global_concentration(), 0.1);
    EXPECT_EQ(mc.default_slope(), 0.005);
    EXPECT_EQ(system_factors(mc), (std::vector<double>{30, 5, 10, 1.25, 0.95, 0.75, 4.85e-09, 1.5, 2.05}));
    MeanderCalculator::_use_standard = false;
    EXPECT_EQ(mc.default_kmig(), 0.4);
}

TEST_F(MeanderCalculatorTest, DepthAndWidthRelationsRoundAsStated)
{
    EXPECT_DOUBLE_EQ(mc.hmean_from_width(30.), 2.);
    EXPECT_DOUBLE_EQ(mc.hmean_from_width(35.), 2.3);
    EXPECT_DOUBLE_EQ(mc.hmax_from_width(30.), 3.);
    EXPECT_EQ(mc.width_from_hmean(2.), 30.);
    EXPECT_EQ(mc.width_from_hmean(2.3), 35.); // 34.5 rounds away from zero
    EXPECT_EQ(mc.mesh_from_width(30.), 10.);
    EXPECT_EQ(mc.mesh_from_width(32.9), 10.);
    EXPECT_EQ(mc.wavelength_from_width(30.), 375.);
    EXPECT_EQ(mc.wavelength_from_width(30.1), 376.);
    EXPECT_EQ(mc.lambda_from_width(30.), 900.);
    EXPECT_DOUBLE_EQ(mc.iob_from_hmean(2.), 0.1);
    EXPECT_DOUBLE_EQ(mc.iob_from_hmean(0.5), 0.04);
    EXPECT_DOUBLE_EQ(mc.iob_from_hmean(1.3), 0.065);
    EXPECT_DOUBLE_EQ(mc.ios_from_iob(0.1), 0.03);
    EXPECT_DOUBLE_EQ(MeanderCalculator::hmax_from_hmean(2.), 3.);
    EXPECT_DOUBLE_EQ(MeanderCalculator::hmean_from_hmax(3.), 2.);
    // A river flows over its whole depth: effective thickness is the mean depth.
    EXPECT_DOUBLE_EQ(mc.hflow_max_from_hmax(3.), 3.);
    EXPECT_DOUBLE_EQ(mc.hfloweff_from_hmean(2.), 2.);
    EXPECT_DOUBLE_EQ(mc.hflow_max_from_hflow_eff(mc.hflow_eff_from_hflow_max(7.)), 7.);

    use_turbidite();
    EXPECT_EQ(mc.hmean_from_width(800.), 27.);
    EXPECT_EQ(mc.hmean_from_width(35.), 1.);
    EXPECT_EQ(mc.hmax_from_width(800.), 41.); // 1.5 x 27 = 40.5 rounds away from zero
    EXPECT_EQ(mc.mesh_from_width(803.), 200.);
    EXPECT_EQ(mc.wavelength_from_width(800.), 4000.);
    EXPECT_EQ(mc.lambda_from_width(800.), 8000.);
    EXPECT_DOUBLE_EQ(mc.iob_from_hmean(20.), 1.5);
    EXPECT_DOUBLE_EQ(mc.iob_from_hmean(2.), 0.4);
    // A turbidity current is three times deeper than its channel.
    EXPECT_DOUBLE_EQ(mc.hflow_max_from_hmax(40.), 120.);
    EXPECT_DOUBLE_EQ(mc.hflow_eff_from_hflow_max(120.), 40.);
    EXPECT_DOUBLE_EQ(mc.hfloweff_from_hmean(20.), 30.);
    EXPECT_DOUBLE_EQ(mc.hflow_max_from_hflow_eff(mc.hflow_eff_from_hflow_max(7.)), 7.);
    EXPECT_TRUE(g_trace.empty()) << g_trace;
}

TEST_F(MeanderCalculatorTest, NullMeanDepthIsTracedAndReplacedByTheDefault)
{
    EXPECT_DOUBLE_EQ(mc.hfloweff_from_hmean(0.), 2.);
    EXPECT_NE(g_trace.find("##  ERROR  ## : "), std::string::npos) << g_trace;
    use_turbidite();
    EXPECT_DOUBLE_EQ(mc.hfloweff_from_hmean(-1.), 40.);
    EXPECT_NE(g_trace.find("##  ERROR  ## : "), std::string::npos) << g_trace;
}

TEST_F(MeanderCalculatorTest, UnknownSinuosityMeansTheReferenceState)
{
    const double unknown = MP_UNDEF_REAL;
    EXPECT_EQ(mc.hmean_from_hmean0_and_sinuosity(2., unknown), 2.);
    EXPECT_EQ(mc.velocity_from_velocity0_and_sinuosity(1.3, unknown), 1.3);
    EXPECT_DOUBLE_EQ(MeanderCalculator::channel_slope(0.003, unknown), 0.002);
    EXPECT_DOUBLE_EQ(mc.velocity_from_hmean_and_cf(2., 0.0158, 0.001, unknown),
                     mc.velocity_from_hmean_and_cf(2., 0.0158, 0.001, 1.5));
    // Eight times the reference sinuosity doubles the depth and halves the velocity.
    EXPECT_DOUBLE_EQ(mc.hmean_from_hmean0_and_sinuosity(2., 12.), 4.);
    EXPECT_DOUBLE_EQ(mc.velocity_from_velocity0_and_sinuosity(1.3, 12.), 0.65);
    EXPECT_DOUBLE_EQ(MeanderCalculator::channel_slope(0.003, 2.), 0.0015);
    EXPECT_TRUE(g_trace.empty()) << g_trace;
}

TEST_F(MeanderCalculatorTest, BetaPrimeUsesTheStoredConstantForTheDefaultScour)
{
    const double stored = 2.1178482887682417;
    EXPECT_EQ(mc.beta_prime(), stored);
    EXPECT_NEAR(std::sqrt(4. * std::sqrt(4.5) - 4.), stored, 1e-12);
    params.setScourFactor(7.);
    EXPECT_EQ(mc.beta_prime(), stored);
    params.setScourFactor(3.);
    EXPECT_DOUBLE_EQ(mc.beta_prime(), std::sqrt(4. * std::sqrt(2.5) - 4.));
}

TEST_F(MeanderCalculatorTest, FrictionFollowsResonantWavelength)
{
    // 2 pi x 2 / (375 x 2.11785) = 0.0158229
    EXPECT_DOUBLE_EQ(mc.cf_from_hmean_and_wavelength(2., 375.), 0.0158);
    EXPECT_DOUBLE_EQ(mc.cf_from_hmean_and_wavelength(2., 750.), 0.0079);
    EXPECT_TRUE(g_trace.empty()) << g_trace;

    const double fallback = mc.cf_from_hmean_and_wavelength(2., 0.);
    EXPECT_NE(g_trace.find("##  ERROR  ## : Wavelength cannot be negative or null\n"), std::string::npos)
        << g_trace;
    EXPECT_DOUBLE_EQ(fallback, 0.0158);

    params.setFrictionCoeff(0.012345);
    EXPECT_DOUBLE_EQ(mc.cf_from_hmean_and_wavelength(2., 375.), 0.0123);

    use_turbidite();
    // 2 pi x 30 / (4000 x 2.11785) = 0.0222517
    EXPECT_DOUBLE_EQ(mc.cf_from_hmean_and_wavelength(20., 4000.), 0.0123);
    params.setFrictionCoeff(-1.);
    EXPECT_DOUBLE_EQ(mc.cf_from_hmean_and_wavelength(20., 4000.), 0.0223);
}

TEST_F(MeanderCalculatorTest, VelocityAndFroudeMatchUniformFlow)
{
    EXPECT_DOUBLE_EQ(mc.velocity_from_hmean_and_cf(2., 0.0158, 0.001, 1.),
                     std::sqrt(9.81 * 2. * 0.001 / 0.0158));
    EXPECT_DOUBLE_EQ(mc.velocity_from_hmean_and_cf(2., 0.0158, 0.001, 2.),
                     std::sqrt(9.81 * 2. * 0.0005 / 0.0158));
    EXPECT_DOUBLE_EQ(mc.froude_from_hmean_and_velocity(2., 1.5, MP_UNDEF_REAL), 2.25 / (9.81 * 2.));
    EXPECT_DOUBLE_EQ(mc.flow_discharge_from_width_hmean_and_velocity(30., 2., 1.5), 90.);
    EXPECT_DOUBLE_EQ(mc.flow_from_width_hmean_and_velocity(30., 2., 1.5), 90.);
    EXPECT_TRUE(g_trace.empty()) << g_trace;

    const double u = mc.velocity_from_hmean_and_cf(2., 0., 0.001, 1.);
    EXPECT_NE(g_trace.find("##  ERROR  ## : "), std::string::npos);
    EXPECT_TRUE(std::isfinite(u) && u > 0.);

    use_turbidite();
    // The reduced gravity uses the default concentration, whatever the current one.
    params.setParamDouble("SED_LOAD_MEAN", 0.3);
    EXPECT_DOUBLE_EQ(mc.velocity_from_hmean_and_cf(20., 0.02, 0.006, 1.5),
                     std::sqrt(9.81 * 1.65 * 0.1 * 30. * 0.004 / 0.02));
    EXPECT_DOUBLE_EQ(mc.froude_from_hmean_and_velocity(20., 2., 0.2), 4. / (9.81 * 1.65 * 0.2 * 30.));
    EXPECT_DOUBLE_EQ(mc.froude_from_hmean_and_velocity(20., 2., MP_UNDEF_REAL),
                     4. / (9.81 * 1.65 * 0.1 * 30.));
    EXPECT_DOUBLE_EQ(mc.flow_discharge_from_width_hmean_and_velocity(800., 20., 2.), 800. * 30. * 2.);
}

TEST_F(MeanderCalculatorTest, PdeCoefficientsOfTheVelocityPerturbation)
{
    double a, b, d, e;
    const double w = 30., h = 2., u = 1.2, cf = 0.0158;
    mc.compute_pde_parameters(w, h, u, cf, MP_UNDEF_REAL, a, b, d, e);
    const double f = u * u / (9.81 * h);
    EXPECT_DOUBLE_EQ(a, u);
    EXPECT_DOUBLE_EQ(b, 2. * cf * u / h);
    EXPECT_DOUBLE_EQ(d, -15. * u * u);
    EXPECT_DOUBLE_EQ(e, 15. * cf * u * u / h * (f * f + 6.));

    params.setScourFactor(3.);
    mc.compute_pde_parameters(w, h, u, cf, MP_UNDEF_REAL, a, b, d, e);
    EXPECT_DOUBLE_EQ(e, 15. * cf * u * u / h * (f * f + 2.));

    use_turbidite();
    params.setScourFactor(-1.);
    const double ht = 20., ut = 2., c = 0.05; // effective thickness 30
    mc.compute_pde_parameters(800., ht, ut, cf, c, a, b, d, e);
    const double ft = ut * ut / (9.81 * 1.65 * c * 30.);
    EXPECT_DOUBLE_EQ(b, 2. * cf * ut / 30.);
    EXPECT_DOUBLE_EQ(d, -400. * ut * ut);
    EXPECT_DOUBLE_EQ(e, 400. * cf * ut * ut / 30. * (ft * ft + 6.));
}

TEST_F(MeanderCalculatorTest, DirectionsTimeAndErodibility)
{
    EXPECT_DOUBLE_EQ(MeanderCalculator::relative_flow_direction(0., 90.), 0.);
    EXPECT_DOUBLE_EQ(MeanderCalculator::relative_flow_direction(30., 0.), 60. * 3.14159265 / 180.);
    for (double flow : {-270., 0., 47., 133., 359.})
        EXPECT_EQ(MeanderCalculator::absolute_flow_direction(
                      25., MeanderCalculator::relative_flow_direction(25., flow)),
                  flow);
    EXPECT_EQ(MeanderCalculator::absolute_flow_direction(0., 0.01), 89.); // 89.427 to a whole degree
    EXPECT_DOUBLE_EQ(MeanderCalculator::erod_year(4e-08), 4e-08 * 31557600.);

    EXPECT_DOUBLE_EQ(mc.erod_from_wavelength(375.), 4e-08);
    EXPECT_DOUBLE_EQ(mc.erod_from_wavelength(1500.), 8e-08);
    EXPECT_DOUBLE_EQ(mc.erod_from_wavelength(500.), 4.62e-08); // 4 x sqrt(4/3) = 4.6188
    EXPECT_TRUE(g_trace.empty()) << g_trace;
    EXPECT_DOUBLE_EQ(mc.erod_from_wavelength(0.), 4e-08);
    EXPECT_NE(g_trace.find("Wavelength cannot be negative or null"), std::string::npos);
}

TEST_F(MeanderCalculatorTest, ParabolicSectionIsDeepestOnTheAxis)
{
    EXPECT_DOUBLE_EQ(MeanderCalculator::parabolic_cross_section_depth(0., 30., 2.), 3.);
    EXPECT_DOUBLE_EQ(MeanderCalculator::parabolic_cross_section_depth(-7.5, 30., 2.), 2.25);
    EXPECT_DOUBLE_EQ(MeanderCalculator::parabolic_cross_section_depth(15., 30., 2.), 0.);
    EXPECT_EQ(MeanderCalculator::parabolic_cross_section_depth(15.5, 30., 2.), 0.);
    EXPECT_EQ(MeanderCalculator::parabolic_cross_section_depth(-20., 30., 2.), 0.);
}

// ---- Consistency ----

TEST_F(MeanderCalculatorTest, DefaultParametersAreConsistent)
{
    MeanderCalculator::_msg = "stale";
    EXPECT_EQ(mc.check_consistency(), 0) << MeanderCalculator::_msg;
    EXPECT_EQ(MeanderCalculator::_msg, "");
    use_turbidite();
    EXPECT_EQ(params.getParamDouble("DOMAIN_DX"), 200.);
    EXPECT_EQ(mc.check_consistency(), 0) << MeanderCalculator::_msg;
    EXPECT_EQ(MeanderCalculator::_msg, "");
}

struct Case
{
    const char* name;
    Setup setup;
    int status;
    const char* begins;
};

TEST_F(MeanderCalculatorTest, EachRuleIsReachedAlone)
{
    const std::vector<Case> cases = {
        {"slope", setting({{"DOMAIN_SLOPE", 0.05}}), 5,
         "- Domain slope (0.05) should be greater than 0.0001 and lesser than 0.01"},
        {"coarse lags", setting({{"DOMAIN_DX", 12.}}), 5,
         "- Inconsistency between channel width and domain resolution. The lags (along X (12m) and along Y "
         "(10m)) of the domain are too large for the given channel width (30m)"},
        {"too coarse lags", setting({{"DOMAIN_DY", 16.}}), 6,
         "- Inconsistency between channel width and domain resolution."},
        {"narrow", setting({{"DOMAIN_NY", 30}, {"CHNL_MARGIN", 5.}}), 5,
         "- The domain width (290m) is too narrow for the given channel width (30m). Meander loops will "
         "not be fully displayed on the domain"},
        {"short", setting({{"DOMAIN_NX", 60}}), 5,
         "- The domain length (590m) is too short for the given channel width (30m). Meander loops"},
        {"margin", setting({{"CHNL_MARGIN", 100.}}), 5,
         "- Inconsistency between margin size and domain size. The margin which is 100 times channel width "
         "(3000m) is bigger than domain width or length (2000m)"},
        {"many nodes", setting({{"DOMAIN_NX", 1100}, {"DOMAIN_NY", 1000}}), 5,
         "- Number of grid nodes (NX*NY)=1100000 should be less than 1000000 nodes. Simulation will be "
         "very slow."},
        {"too many nodes", setting({{"DOMAIN_NX", 4000}, {"DOMAIN_NY", 2500}}), 6,
         "- Number of grid nodes (NX*NY)=10000000 must be less than 10000000 nodes."},
        {"decay", setting({{"AG_EXP_DEC_THICK", 30.}}), 6,
         "- Inconsistency between thickness exponential decrease and levee width. No overbank will be "
         "deposited. For a levee width of 6 and a channel width of 30m the thickness exponential decrease "
         "must be greater than 39.0865m"},
        {"wavelength", setting({{"CHNL_WAVELENGTH", 1000.}}), 5,
         "- Inconsistency between width and wavelength of the channel. For a channel width of 30m, channel "
         "wavelength should be greater than 187.5m and less than 750m"},
        {"depth and wavelength",
         setting({{"CHNL_WIDTH", 40.}, {"CHNL_MAX_DEPTH", 15.}, {"CHNL_WAVELENGTH", 300.}}), 6,
         "- Inconsistency between width and mean depth of the channel. For a channel maximum depth of 15m, "
         "channel wavelength must be greater than 468.75m"},
        {"depth and width", setting({{"CHNL_MAX_DEPTH", 15.}, {"CHNL_WAVELENGTH", 500.}}), 6,
         "- Inconsistency between width and maximum depth of the channel. For a channel maximum depth of "
         "15m, channel width (30m) must be greater than 37.5m"},
        {"wells", [](Parameters& p) { p.setCondMigWells(2); }, 5,
         "- Inconsistency between levee width (width x 6) and well influence limitation factor (width x2). "
         "Levee facies in wells won't attract the channel anymore."},
        {"deviation", setting({{"AG_OB_NORM_STDEV", 0.06}}), 5,
         "- Aggradation intensity normal standard deviation 0.06m. More than 2,3% of intensity values will "
         "be negative."},
        {"pelagic", setting({{"AG_OB_PEL_DRAP_INT", 10.}}), 5,
         "- Inconsistency between overbank intensity and Pelagic/Draping intensity. Pelagic/Draping "
         "intensity should be less than half mean overbank intensity (7.14286 m/10000it)"},
        {"regional", setting({{"AV_REG_POISSON", 50}}), 5,
         "- Inconsistency between overbank period and regional avulsion period. Interval between regional "
         "avulsions (50 iterations) should be greater or equal than interval between overbank flow (70 "
         "iterations)"},
        {"local", setting({{"AV_LOC_FREQ", 1}, {"AV_LOC_PERIOD", 69}}), 5,
         "- Inconsistency between overbank period and local avulsion period. Interval between local "
         "avulsions (69 iterations) should be greater or equal than interval between overbank flow (70 "
         "iterations)"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        Tracer t;
        Parameters p(&t);
        MeanderCalculator calc(&p, &t);
        c.setup(p);
        EXPECT_EQ(calc.check_consistency(), c.status) << MeanderCalculator::_msg;
        const auto lines = lines_of(MeanderCalculator::_msg);
        ASSERT_EQ(lines.size(), 1u) << MeanderCalculator::_msg;
        EXPECT_EQ(lines[0].rfind(c.begins, 0), 0u) << lines[0];
    }
}

TEST_F(MeanderCalculatorTest, RulesOfUnusedFeaturesStaySilent)
{
    params.setCondMigWells(6); // levee within the well influence distance
    set_params(params, {{"AG_OB_DIST", 3},
                        {"AG_OB_NORM_STDEV", 0.5}, // lognormal law in force
                        {"AV_REG_FREQ", 0},        // no regional avulsion
                        {"AV_REG_POISSON", 5}});
    EXPECT_EQ(mc.check_consistency(), 0) << MeanderCalculator::_msg;

    set_params(params, {{"AG_TYPE", 0}, // no overbank at all
                        {"AG_EXP_DEC_THICK", 5.},
                        {"AG_OB_PEL_DRAP_INT", 50.},
                        {"AV_LOC_POISSON", 5}});
    EXPECT_EQ(mc.check_consistency(), 0) << MeanderCalculator::_msg;
}

TEST_F(MeanderCalculatorTest, AllItemsComeInTheirOrder)
{
    set_params(params, {{"DOMAIN_SLOPE", 0.05},
                        {"DOMAIN_DX", 20.},
                        {"DOMAIN_DY", 15.},
                        {"DOMAIN_NX", 30},
                        {"DOMAIN_NY", 20},
                        {"AG_EXP_DEC_THICK", 10.},
                        {"CHNL_WAVELENGTH", 150.},
                        {"CHNL_MAX_DEPTH", 15.}});
    params.setCondMigWells(2);
    set_params(params, {{"AG_OB_NORM_STDEV", 0.06},
                        {"AG_OB_PEL_DRAP_INT", 10.},
                        {"AV_REG_FREQ", 1},
                        {"AV_REG_PERIOD", 50},
                        {"AV_LOC_POISSON", 60}});
    EXPECT_EQ(mc.check_consistency(), 6);
    const std::vector<std::string> begins = {
        "- Domain slope",
        "- Inconsistency between channel width and domain resolution.",
        "- The domain width (285m)",
        "- The domain length (580m)",
        "- Inconsistency between margin size and domain size.",
        "- Inconsistency between thickness exponential decrease and levee width.",
        "- Inconsistency between width and wavelength of the channel.",
        "- Inconsistency between width and mean depth of the channel.",
        "- Inconsistency between width and maximum depth of the channel.",
        "- Inconsistency between levee width",
        "- Aggradation intensity normal standard deviation",
        "- Inconsistency between overbank intensity and Pelagic/Draping intensity.",
        "- Inconsistency between overbank period and regional avulsion period.",
        "- Inconsistency between overbank period and local avulsion period.",
    };
    const auto lines = lines_of(MeanderCalculator::_msg);
    ASSERT_EQ(lines.size(), begins.size()) << MeanderCalculator::_msg;
    for (size_t k = 0; k < lines.size(); ++k)
        EXPECT_EQ(lines[k].rfind(begins[k], 0), 0u) << lines[k];
    EXPECT_NE(MeanderCalculator::_msg.back(), '\n');

    // Node count items sit between the margin and the levee items.
    set_params(params, {{"DOMAIN_NX", 1100},
                        {"DOMAIN_NY", 1000},
                        {"DOMAIN_DX", 0.5},
                        {"DOMAIN_DY", 0.2},
                        {"CHNL_MARGIN", 10.}});
    mc.check_consistency();
    const auto more = lines_of(MeanderCalculator::_msg);
    ASSERT_GE(more.size(), 6u) << MeanderCalculator::_msg;
    EXPECT_EQ(more[3].rfind("- Inconsistency between margin size", 0), 0u) << MeanderCalculator::_msg;
    EXPECT_EQ(more[4].rfind("- Number of grid nodes (NX*NY)=1100000 should", 0), 0u)
        << MeanderCalculator::_msg;
    EXPECT_EQ(more[5].rfind("- Inconsistency between thickness", 0), 0u) << MeanderCalculator::_msg;
}

} // namespace
