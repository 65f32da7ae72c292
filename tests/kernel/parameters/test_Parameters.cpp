#include "kernel/common/Tracer.h"
#include "kernel/parameters/Parameters.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

using testing_support::capture;
using testing_support::clear_trace;
using testing_support::g_trace;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

// Values at the bounds each expert setter accepts.
void accept_all(Parameters& p)
{
    p.setBankErodCoeff(1.);
    p.setCondMigWells(5);
    p.setCurvaturePointsNumber(20);
    p.setSinuoInterval(1000);
    p.setFrictionCoeff(0.);
    p.setScourFactor(2.5);
    p.setTurbAggHeightCoeff(0.5);
    p.setMinGrainsize(0);
    p.setMaxGrainsize(14);
}

std::string error_line(const std::string& text)
{
    return "##  ERROR  ## : " + text + "\n";
}

} // namespace

TEST(Parameters, EveryDeclaredNameIsRegisteredWithItsType)
{
    Tracer tracer;
    tracer.setTraceFunction(capture);
    clear_trace();
    Parameters p(&tracer);
    EXPECT_TRUE(g_trace.empty());

    const char* reals[] = {"DOMAIN_OX",
                           "DOMAIN_OY",
                           "DOMAIN_DX",
                           "DOMAIN_DY",
                           "DOMAIN_GRID_DIR",
                           "DOMAIN_ZREF",
                           "DOMAIN_SLOPE",
                           "CHNL_WIDTH",
                           "CHNL_MAX_DEPTH",
                           "CHNL_WAVELENGTH",
                           "CHNL_MARGIN",
                           "CHNL_FLW_DIR",
                           "CHNL_SCALE_CONST",
                           "CHNL_SCALE_MIN",
                           "CHNL_SCALE_MAX",
                           "CHNL_SCALE_NORM_MEAN",
                           "CHNL_SCALE_NORM_STDEV",
                           "CHNL_SCALE_LOGNORM_MEAN",
                           "CHNL_SCALE_LOGNORM_STDEV",
                           "EROD_COEF",
                           "EROD_OFFSET",
                           "AV_LOC_PROB1",
                           "AV_LOC_PROB2",
                           "AG_EXP_DEC_THICK",
                           "AG_LV_WIDTH",
                           "AG_OB_CONST",
                           "AG_OB_MIN",
                           "AG_OB_MAX",
                           "AG_OB_NORM_MEAN",
                           "AG_OB_NORM_STDEV",
                           "AG_OB_LOGNORM_MEAN",
                           "AG_OB_LOGNORM_STDEV",
                           "AG_OB_PEAT",
                           "AG_OB_PEL_DRAP_INT",
                           "AG_EP_INIT_ELEV",
                           "AG_EP_CONST",
                           "AG_EP_MIN",
                           "AG_EP_MAX",
                           "AG_EP_NORM_MEAN",
                           "AG_EP_NORM_STDEV",
                           "AG_EP_LOGNORM_MEAN",
                           "AG_EP_LOGNORM_STDEV",
                           "COND_WELL_RELAX",
                           "COND_WELL_CLOSURE",
                           "SED_LOAD_MEAN",
                           "MASS_BAL_COEF",
                           "GR_THRESHOLD",
                           "GR_PB_OPTIM_ALPHA"};
    for (const char* name : reals)
    {
        EXPECT_NE(p.getParamDouble(name), 1e30) << name;
        EXPECT_EQ(p.getParamInt(name), INT_MAX) << name;
    }
    const char* ints[] = {
        "DOMAIN_NX",     "DOMAIN_NY",      "SIM_SEED",     "CHNL_SCALE_DIST", "ZUL_TYPE",       "AV_LOC_FREQ",
        "AV_LOC_PERIOD", "AV_LOC_POISSON", "AV_REG_FREQ",  "AV_REG_PERIOD",   "AV_REG_POISSON", "AG_TYPE",
        "AG_DRAP",       "AG_OB_FREQ",     "AG_OB_PERIOD", "AG_OB_POISSON",   "AG_OB_DIST",     "AG_EP_FREQ",
        "AG_EP_PERIOD",  "AG_EP_POISSON",  "AG_EP_DIST",   "GR_PB_OPTIM_MIN", "GR_PB_OPTIM_MAX"};
    for (const char* name : ints)
    {
        EXPECT_NE(p.getParamInt(name), INT_MAX) << name;
        EXPECT_EQ(p.getParamDouble(name), 1e30) << name;
    }
    const char* bools[] = {
        "AV_LV_OB",        "AV_NO_SPLAY", "AG_RAND_LAMBDA", "COND_WELL_CLOSURE_ON", "COND_WELL_STOP_HONORED",
        "MASS_BAL_ACTIVE", "GR_PB",       "GR_QUICK_C0",    "GR_PB_PROXY",          "GR_PB_OPTIM"};
    for (const char* name : bools)
    {
        EXPECT_EQ(p.getParamBool(name), std::string(name) == "AG_RAND_LAMBDA") << name;
        EXPECT_TRUE(p.setParamBool(name, true)) << name;
        EXPECT_EQ(p.getParamDouble(name), 1e30) << name;
    }
    EXPECT_EQ(p.getParamString("SIM_TYPE"), "Fluvial");
    EXPECT_EQ(p.getParamDefString("SIM_TYPE"), "Fluvial");
    EXPECT_TRUE(p.usingFluvi());
    EXPECT_FALSE(p.usingTurbiOrLobes());
}

TEST(Parameters, FluvialDefaultsAndRanges)
{
    Parameters p(nullptr);
    EXPECT_EQ(p.getParamInt("SIM_SEED"), 165426111);
    EXPECT_EQ(p.getParamMinInt("SIM_SEED"), 1);
    // A seed equal to the generator's modulus would draw zeros forever.
    EXPECT_EQ(p.getParamMaxInt("SIM_SEED"), INT_MAX - 1);
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 30.);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("CHNL_WIDTH"), 5.);
    EXPECT_DOUBLE_EQ(p.getParamMaxDouble("CHNL_WIDTH"), 500.);
    EXPECT_DOUBLE_EQ(p.getParamDefDouble("DOMAIN_SLOPE"), 0.001);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("DOMAIN_SLOPE"), 0.0001);
    EXPECT_DOUBLE_EQ(p.getParamDouble("EROD_COEF"), 4e-08);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("EROD_OFFSET"), -1e30);
    EXPECT_EQ(p.getParamInt("AV_LOC_PERIOD"), 280);
    EXPECT_EQ(p.getParamInt("AG_DRAP"), 12);
    EXPECT_DOUBLE_EQ(p.getParamDouble("AG_EXP_DEC_THICK"), 919.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("AG_OB_MIN"), 0.07);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("AG_OB_MAX"), 0.03);
    EXPECT_DOUBLE_EQ(p.getParamDouble("AG_EP_INIT_ELEV"), 9999.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("COND_WELL_CLOSURE"), 0.1);
    EXPECT_EQ(p.getParamMaxInt("GR_PB_OPTIM_MAX"), 13);
    EXPECT_EQ(p.getParamInt("DOMAIN_NX"), 251);
    EXPECT_EQ(p.getParamInt("DOMAIN_NY"), 201);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DX"), 10.);
    EXPECT_EQ(p.getParamMaxInt("DOMAIN_NX"), 5000);

    const std::vector<int> fluvial = {0, 0, 0, 0, 2, 3, 6, 13, 27, 26, 10, 8, 5, 0, 0};
    EXPECT_EQ(p.getSedVolumes(), fluvial);
    for (int i = 0; i < 15; i++)
    {
        EXPECT_EQ(p.getParamDefIntIdx("SED_LOAD_VOL", i), fluvial[i]);
        EXPECT_EQ(p.getParamMinIntIdx("SED_LOAD_VOL", i), 0);
        EXPECT_EQ(p.getParamMaxIntIdx("SED_LOAD_VOL", i), 100);
    }
    // The indexed family is a set of plain entries.
    EXPECT_EQ(p.getParamInt("SED_LOAD_VOL_8"), 27);
    EXPECT_TRUE(p.setParamInt("SED_LOAD_VOL_8", 40));
    EXPECT_EQ(p.getParamIntIdx("SED_LOAD_VOL", 8), 40);

    std::string message = "stale";
    EXPECT_FALSE(p.check(message));
    EXPECT_EQ(message, "");
}

TEST(Parameters, TurbiditeAndLobesReplaceDefaults)
{
    Parameters p(nullptr);
    p.setParamDouble("CHNL_WIDTH", 77.);
    p.setUsingTurbi();
    EXPECT_TRUE(p.usingTurbi());
    EXPECT_TRUE(p.usingTurbiOrLobes());
    EXPECT_FALSE(p.usingFluvi());
    EXPECT_EQ(p.getParamString("SIM_TYPE"), "Turbidite");
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 800.);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("CHNL_WIDTH"), 20.);
    EXPECT_DOUBLE_EQ(p.getParamMaxDouble("CHNL_WIDTH"), 4000.);
    EXPECT_DOUBLE_EQ(p.getParamMaxDouble("DOMAIN_SLOPE"), 0.5);
    EXPECT_EQ(p.getParamInt("AV_REG_POISSON"), 470);
    EXPECT_EQ(p.getParamInt("AG_DRAP"), 13);
    EXPECT_DOUBLE_EQ(p.getParamMinDouble("AG_EXP_DEC_THICK"), 100.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("AG_OB_LOGNORM_STDEV"), 0.6);
    EXPECT_DOUBLE_EQ(p.getParamMaxDouble("COND_WELL_CLOSURE"), 10.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("MASS_BAL_COEF"), 0.8);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DX"), 200.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DY"), 200.);
    // Not in the replacement column: unchanged.
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_FLW_DIR"), 90.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("GR_THRESHOLD"), 0.75);
    const std::vector<int> turbiditic = {0, 1, 2, 3, 4, 8, 17, 25, 22, 8, 5, 3, 2, 0, 0};
    EXPECT_EQ(p.getSedVolumes(), turbiditic);
    EXPECT_EQ(p.getParamDefIntIdx("SED_LOAD_VOL", 7), 25);
    // The replacements keep the controls of the common table.
    p.setParamDouble("AG_OB_MIN", -5.);
    std::string message;
    EXPECT_FALSE(p.check(message));

    EXPECT_TRUE(p.setParamString("SIM_TYPE", "Lobes"));
    p.reset(true);
    EXPECT_TRUE(p.usingLobes());
    EXPECT_TRUE(p.usingTurbiOrLobes());
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_MAX_DEPTH"), 40.);
    EXPECT_EQ(p.getSedVolumes(), turbiditic);

    p.setUsingFluvi();
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_MAX_DEPTH"), 3.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DX"), 10.);
    EXPECT_EQ(p.getSedVolumes()[4], 2);
}

TEST(Parameters, DefaultsAndRangesAsTheyWereBeforeTheTable)
{
    // name, default, min, max for a fluvial system, then for a turbiditic one.
    struct Row
    {
        const char* name;
        double def, min, max, tdef, tmin, tmax;
    };
    constexpr double H = 1e30;
    constexpr double LO = INT_MIN;
    constexpr double HI = INT_MAX;
    const Row rows[] = {
        {"SIM_SEED", 165426111, 1, 2147483646, 165426111, 1, 2147483646},
        {"DOMAIN_NY", 201, 20, 5000, 201, 20, 5000},
        {"DOMAIN_GRID_DIR", 0, -360, 360, 0, -360, 360},
        {"DOMAIN_ZREF", 0, -H, H, 0, -H, H},
        {"CHNL_MARGIN", 12, 1, 100, 5, 1, 100},
        {"CHNL_WAVELENGTH", 375, 10, 10000, 4000, 100, 20000},
        {"CHNL_SCALE_DIST", 0, LO, HI, 0, LO, HI},
        {"CHNL_SCALE_LOGNORM_STDEV", 20, 0, 40, 20, 0, 40},
        {"EROD_COEF", 4e-08, 0, 2e-07, 4e-08, 0, 2e-07},
        {"ZUL_TYPE", 0, LO, HI, 0, LO, HI},
        {"AV_LOC_POISSON", 280, 1, HI, 288, 1, HI},
        {"AV_LOC_PROB2", 0.9, 0, 1, 0.9, 0, 1},
        {"AG_TYPE", 2, LO, HI, 2, LO, HI},
        {"AG_DRAP", 12, LO, HI, 13, LO, HI},
        {"AG_LV_WIDTH", 6, 0.05, H, 2, 0.05, H},
        {"AG_OB_PERIOD", 70, 1, HI, 24, 1, HI},
        {"AG_OB_PEAT", 0, 0, 99, 0, 0, 99},
        {"AG_OB_PEL_DRAP_INT", 0, 0, 100, 0, 0, 100},
        {"AG_EP_INIT_ELEV", 9999, -H, H, 9999, -H, H},
        {"AG_EP_FREQ", 0, LO, HI, 0, LO, HI},
        {"AG_EP_LOGNORM_MEAN", 0.1, -H, H, 2, -H, H},
        {"AG_EP_NORM_STDEV", 0.03, 0, H, 0.6, 0, H},
        {"COND_WELL_RELAX", 20, 0, 100, 20, 0, 100},
        {"SED_LOAD_MEAN", 0.01, 0.001, 0.5, 0.1, 0.001, 0.5},
        {"GR_PB_OPTIM_MIN", 6, 1, 10, 6, 1, 10},
        {"GR_PB_OPTIM_ALPHA", 0.25, 0.05, 0.95, 0.25, 0.05, 0.95},
        {"SED_LOAD_VOL_5", 3, 0, 100, 8, 0, 100},
    };
    Parameters p(nullptr);
    for (bool turbiditic : {false, true})
    {
        if (turbiditic)
            p.setUsingTurbi();
        for (const Row& row : rows)
        {
            const bool real = p.getParamDouble(row.name) != 1e30;
            const double def = real ? p.getParamDefDouble(row.name) : p.getParamDefInt(row.name);
            const double min = real ? p.getParamMinDouble(row.name) : p.getParamMinInt(row.name);
            const double max = real ? p.getParamMaxDouble(row.name) : p.getParamMaxInt(row.name);
            EXPECT_EQ(def, turbiditic ? row.tdef : row.def) << row.name << " turbiditic " << turbiditic;
            EXPECT_EQ(min, turbiditic ? row.tmin : row.min) << row.name << " turbiditic " << turbiditic;
            EXPECT_EQ(max, turbiditic ? row.tmax : row.max) << row.name << " turbiditic " << turbiditic;
            EXPECT_EQ(p.getParam(row.name), def) << row.name;
        }
    }
}

TEST(Parameters, ValueTextReadsAsTheUserWroteIt)
{
    Parameters p(nullptr);
    p.setParamDouble("AG_OB_MIN", 0.125);
    p.setParamBool("GR_PB", true);
    const std::pair<const char*, const char*> rows[] = {
        {"SIM_SEED", "165426111"}, {"DOMAIN_NX", "251"},    {"CHNL_WIDTH", "30"},
        {"EROD_COEF", "4e-08"},    {"AG_OB_MIN", "0.125"},  {"GR_PB", "1"},
        {"AV_LV_OB", "0"},         {"SIM_TYPE", "Fluvial"}, {"NOPE", "??"},
        {"SED_LOAD_VOL_8", "27"},
    };
    for (const auto& [name, text] : rows)
        EXPECT_EQ(p.getParamText(name), text) << name;
}

TEST(Parameters, SimTypeChangeWithoutResetKeepsOldDefaults)
{
    Parameters p(nullptr);
    EXPECT_TRUE(p.setParamString("SIM_TYPE", "Turbidite"));
    EXPECT_TRUE(p.usingTurbi());
    EXPECT_DOUBLE_EQ(p.getParamDefDouble("CHNL_WIDTH"), 30.);
    EXPECT_EQ(p.getSedVolumes()[8], 27);

    // A partial reset leaves the geometry alone.
    p.setParamDouble("DOMAIN_DX", 3.);
    p.reset(false);
    EXPECT_DOUBLE_EQ(p.getParamDefDouble("CHNL_WIDTH"), 800.);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DX"), 3.);
    EXPECT_DOUBLE_EQ(p.getParamDefDouble("DOMAIN_DX"), 10.);
    p.reset(true);
    EXPECT_DOUBLE_EQ(p.getParamDouble("DOMAIN_DX"), 200.);
}

TEST(Parameters, CheckHonoursControlsAndFormatsTheMessage)
{
    Parameters p(nullptr);
    std::string message;
    // Out of range values are stored as given.
    EXPECT_TRUE(p.setParamDouble("AG_OB_MIN", -1.));
    EXPECT_DOUBLE_EQ(p.getParamDouble("AG_OB_MIN"), -1.);

    EXPECT_TRUE(p.setParamInt("AG_OB_DIST", 0));
    EXPECT_FALSE(p.check(message));
    EXPECT_EQ(message, "");

    EXPECT_TRUE(p.setParamInt("AG_OB_DIST", 1));
    EXPECT_TRUE(p.check(message));
    EXPECT_EQ(message, "Following parameters are out of range:\n  - AG_OB_MIN = -1 out of [0, 1e+30]");

    // Integers are listed before reals, each map in name order; an
    // uncontrolled parameter always counts.
    p.setParamInt("AV_LOC_FREQ", 1);
    p.setParamInt("AV_LOC_PERIOD", 0);
    p.setParamInt("AV_LOC_POISSON", 0); // controlled by AV_LOC_FREQ = 2: ignored
    p.setParamDouble("CHNL_WIDTH", 600.5);
    p.setParamInt("SED_LOAD_VOL_3", 101);
    EXPECT_TRUE(p.check(message));
    EXPECT_EQ(message, "Following parameters are out of range:"
                       "\n  - AV_LOC_PERIOD = 0 out of [1, 2147483647]"
                       "\n  - SED_LOAD_VOL_3 = 101 out of [0, 100]"
                       "\n  - AG_OB_MIN = -1 out of [0, 1e+30]"
                       "\n  - CHNL_WIDTH = 600.5 out of [5, 500]");

    // The bounds themselves are in range.
    p.reset(true);
    p.setParamDouble("CHNL_WIDTH", 500.);
    p.setParamDouble("DOMAIN_SLOPE", 0.0001);
    EXPECT_FALSE(p.check(message));
    EXPECT_EQ(message, "");
}

TEST(Parameters, MissingNamesGiveNeutralAnswers)
{
    Parameters p(nullptr);
    EXPECT_EQ(p.getParamString("NOPE"), "??");
    EXPECT_FALSE(p.getParamBool("NOPE"));
    EXPECT_EQ(p.getParamInt("NOPE"), 2147483647);
    EXPECT_EQ(p.getParamDouble("NOPE"), 1e30);
    EXPECT_EQ(p.getParam("NOPE"), 1e30);
    EXPECT_EQ(p.getParamDefString("NOPE"), "??");
    EXPECT_FALSE(p.getParamDefBool("NOPE"));
    EXPECT_EQ(p.getParamDefInt("NOPE"), 2147483647);
    EXPECT_EQ(p.getParamDefDouble("NOPE"), 1e30);
    EXPECT_EQ(p.getParamMinInt("NOPE"), 2147483647);
    EXPECT_EQ(p.getParamMaxDouble("NOPE"), 1e30);
    EXPECT_EQ(p.getParamDoubleIdx("CHNL_WIDTH", 0), 1e30);

    EXPECT_FALSE(p.setParamString("NOPE", "x"));
    EXPECT_FALSE(p.setParamBool("NOPE", true));
    EXPECT_FALSE(p.setParamInt("NOPE", 1));
    EXPECT_FALSE(p.setParamDouble("NOPE", 1.));
    EXPECT_FALSE(p.setParam("NOPE", 1.));
    EXPECT_FALSE(p.setParamDoubleIdx("CHNL_WIDTH", 0, 1.));
    EXPECT_EQ(p.getParam("NOPE"), 1e30);

    // Each typed setter sees only its own map.
    EXPECT_FALSE(p.setParamDouble("AG_TYPE", 1.));
    EXPECT_FALSE(p.setParamInt("CHNL_WIDTH", 1));
    EXPECT_FALSE(p.setParamString("CHNL_WIDTH", "1"));
    EXPECT_FALSE(p.setParamBool("AG_TYPE", true));
    EXPECT_EQ(p.getParamInt("AG_TYPE"), 2);
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 30.);

    // There is no sixteenth grain size class.
    EXPECT_FALSE(p.setParamIntIdx("SED_LOAD_VOL", 15, 10));
    EXPECT_FALSE(p.setParamIntIdx("SED_LOAD_VOL", -1, 10));
    EXPECT_EQ(p.getParamIntIdx("SED_LOAD_VOL", 15), 2147483647);
    EXPECT_TRUE(p.setParamIntIdx("SED_LOAD_VOL", 14, 10));
    EXPECT_EQ(p.getParamIntIdx("SED_LOAD_VOL", 14), 10);
}

TEST(Parameters, CrossTypeGetAndSet)
{
    Parameters p(nullptr);
    EXPECT_TRUE(p.setParam("CHNL_WIDTH", 45.5));
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 45.5);
    EXPECT_DOUBLE_EQ(p.getParam("CHNL_WIDTH"), 45.5);

    EXPECT_TRUE(p.setParam("AG_TYPE", 3.9));
    EXPECT_EQ(p.getParamInt("AG_TYPE"), 3);
    EXPECT_TRUE(p.setParam("AG_EP_DIST", -2.7));
    EXPECT_EQ(p.getParamInt("AG_EP_DIST"), -2);
    EXPECT_DOUBLE_EQ(p.getParam("AG_EP_DIST"), -2.);
    EXPECT_TRUE(p.setParam("AG_DRAP", 1e30));
    EXPECT_EQ(p.getParamInt("AG_DRAP"), INT_MAX);
    EXPECT_TRUE(p.setParam("SED_LOAD_VOL_0", 7.));
    EXPECT_EQ(p.getParamIntIdx("SED_LOAD_VOL", 0), 7);

    EXPECT_TRUE(p.setParam("GR_PB", 0.5));
    EXPECT_TRUE(p.getParamBool("GR_PB"));
    EXPECT_DOUBLE_EQ(p.getParam("GR_PB"), 1.);
    EXPECT_TRUE(p.setParam("AG_RAND_LAMBDA", 0.));
    EXPECT_FALSE(p.getParamBool("AG_RAND_LAMBDA"));
    EXPECT_DOUBLE_EQ(p.getParam("AG_RAND_LAMBDA"), 0.);

    // Strings are not reached by the numeric forms.
    EXPECT_FALSE(p.setParam("SIM_TYPE", 1.));
    EXPECT_EQ(p.getParam("SIM_TYPE"), 1e30);
    EXPECT_EQ(p.getParamString("SIM_TYPE"), "Fluvial");

    EXPECT_TRUE(p.setParamDoubleIdx("DOMAIN", 0, 1.) == false);
    EXPECT_TRUE(p.usingVariablePBGrainsize());
    EXPECT_FALSE(p.usingVarPBGrainOptim());
    EXPECT_FALSE(p.usingVarPBGrainProxy());
    p.setParamBool("GR_PB_OPTIM", true);
    p.setParamBool("GR_PB_PROXY", true);
    EXPECT_TRUE(p.usingVarPBGrainOptim());
    EXPECT_TRUE(p.usingVarPBGrainProxy());
    p.setParamBool("GR_PB", false);
    EXPECT_FALSE(p.usingVarPBGrainOptim());
    EXPECT_FALSE(p.usingVarPBGrainProxy());
}

TEST(Parameters, ExpertSettersRefuseWithTheirMessage)
{
    Tracer tracer;
    tracer.setTraceFunction(capture);
    clear_trace();
    Parameters p(&tracer);

    EXPECT_EQ(p.sinuoInterval(), 0u);
    EXPECT_EQ(p.curvaturePointsNumber(), 3);
    EXPECT_EQ(p.getCondMigWellsFactor(), 2147483647);
    EXPECT_FALSE(p.usingCondMigWells());
    EXPECT_TRUE(p.usingCondAvWells());
    EXPECT_TRUE(p.usingCondNewAlgo());
    EXPECT_FALSE(p.usingCondAvMP());
    EXPECT_TRUE(p.usingCondBlockAv());
    EXPECT_FALSE(p.usingDryChannel());
    EXPECT_FALSE(p.usingOldFilling());
    EXPECT_EQ(p.getBankErodCoeff(), 1e30);
    EXPECT_FALSE(p.usingBankErodCoeff());
    EXPECT_EQ(p.getTurbAggHeightCoeff(), 1.);
    EXPECT_EQ(p.getScourFactor(), -1.);
    EXPECT_EQ(p.getFrictionCoeff(), -1.);
    EXPECT_EQ(p.getMinGrainsize(), 6);
    EXPECT_EQ(p.getMaxGrainsize(), 13);

    // Accepted values, bounds included, say nothing.
    accept_all(p);
    EXPECT_EQ(g_trace, "");
    EXPECT_TRUE(p.usingBankErodCoeff());
    EXPECT_TRUE(p.usingCondMigWells());
    EXPECT_EQ(p.curvaturePointsNumber(), 20);
    EXPECT_EQ(p.sinuoInterval(), 1000u);
    EXPECT_EQ(p.getScourFactor(), 2.5);
    EXPECT_EQ(p.getTurbAggHeightCoeff(), 0.5);

    // Each refusal on settings that were all accepted: its message, and what it leaves.
    struct Refusal
    {
        std::function<void(Parameters&)> set;
        std::string message; // "" when the value is accepted
        std::function<bool(const Parameters&)> left;
    };
    const std::string BANK = "Bank erodibility coefficient is < 0 or > 1 -> Deactivated";
    const std::string CURVATURE = "Point number for curvature < 1 or > 20 -> Use default: 3";
    const auto no_bank = [](const Parameters& q) { return !q.usingBankErodCoeff(); };
    const auto no_mig = [](const Parameters& q) { return !q.usingCondMigWells(); };
    const auto curvature3 = [](const Parameters& q) { return q.curvaturePointsNumber() == 3; };
    const std::vector<Refusal> refusals = {
        {[](Parameters& q) { q.setBankErodCoeff(1.5); }, BANK, no_bank},
        {[](Parameters& q) { q.setBankErodCoeff(-0.1); }, BANK, no_bank},
        {[](Parameters& q) { q.setBankErodCoeff(1e30); }, "", no_bank},
        {[](Parameters& q) { q.setCondMigWells(-1); },
         "Mig factor for conditioning is negative -> Deactivated", no_mig},
        {[](Parameters& q) { q.setCondMigWells(0); }, "", no_mig},
        {[](Parameters& q) { q.setCurvaturePointsNumber(0); }, CURVATURE, curvature3},
        {[](Parameters& q) { q.setCurvaturePointsNumber(21); }, CURVATURE, curvature3},
        {[](Parameters& q) { q.setSinuoInterval(1001); }, "Sinuo interval > 1000 -> Deactivated",
         [](const Parameters& q) { return q.sinuoInterval() == 0u; }},
        {[](Parameters& q) { q.setFrictionCoeff(-1.); }, "",
         [](const Parameters& q) { return q.getFrictionCoeff() == -1.; }},
        {[](Parameters& q) { q.setFrictionCoeff(-0.5); }, "Friction coefficient is negative -> Deactivated",
         [](const Parameters& q) { return q.getFrictionCoeff() == -1.; }},
        {[](Parameters& q) { q.setScourFactor(-2.); }, "Scour factor is negative -> Deactivated",
         [](const Parameters& q) { return q.getScourFactor() == -1.; }},
        {[](Parameters& q) { q.setTurbAggHeightCoeff(0.); },
         "Turbidites aggradation height coefficient is <= 0 -> Set to default",
         [](const Parameters& q) { return q.getTurbAggHeightCoeff() == 1.; }},
        {[](Parameters& q) { q.setMinGrainsize(15); }, "Wrong minimum grain size index -> Use default",
         [](const Parameters& q) { return q.getMinGrainsize() == 6; }},
        {[](Parameters& q) { q.setMaxGrainsize(-1); }, "Wrong maximum grain size index -> Use default",
         [](const Parameters& q) { return q.getMaxGrainsize() == 13; }},
    };
    for (size_t row = 0; row < refusals.size(); ++row)
    {
        Parameters q(&tracer);
        accept_all(q);
        clear_trace();
        refusals[row].set(q);
        const std::string message = refusals[row].message;
        EXPECT_EQ(g_trace, message.empty() ? "" : error_line(message)) << "row " << row;
        EXPECT_TRUE(refusals[row].left(q)) << "row " << row;
    }
    clear_trace();

    const std::vector<int> before = p.getSedVolumes();
    EXPECT_FALSE(p.setSedVolumes(std::vector<int>(14, 5)));
    EXPECT_EQ(g_trace, error_line("Wrong number of grain size class"));
    clear_trace();
    EXPECT_EQ(p.getSedVolumes(), before);

    // Refusals are errors: a tracer set below the error level hears nothing.
    tracer.setTraceLevel(1);
    p.setSinuoInterval(5000);
    EXPECT_EQ(g_trace, "");

    // Without a tracer a refusal is still applied.
    Parameters silent(nullptr);
    silent.setCurvaturePointsNumber(99);
    EXPECT_EQ(silent.curvaturePointsNumber(), 3);
}

TEST(Parameters, SedimentVolumesProportionsAndMedian)
{
    Parameters p(nullptr);
    // Fluvial cumulative sums: 0 0 0 0 2 5 11 24 51 -> passes 50 at class 8.
    EXPECT_EQ(p.getSedMedianClass(), 9);

    std::vector<int> v(15, 0);
    v[0] = 50;
    v[14] = 50;
    ASSERT_TRUE(p.setSedVolumes(v));
    EXPECT_EQ(p.getSedVolumes(), v);
    // Exactly 50 is not past one half.
    EXPECT_EQ(p.getSedMedianClass(), 15);

    v[0] = 51;
    p.setSedVolumes(v);
    EXPECT_EQ(p.getSedMedianClass(), 1);

    std::fill(v.begin(), v.end(), 0);
    p.setSedVolumes(v);
    EXPECT_EQ(p.getSedMedianClass(), 0);

    std::fill(v.begin(), v.end(), 3); // 45 in all
    p.setSedVolumes(v);
    EXPECT_EQ(p.getSedMedianClass(), 0);

    v = {10, 20, 30, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 40};
    p.setSedVolumes(v);
    EXPECT_EQ(p.getSedMedianClass(), 3);
    const std::vector<double> prop = p.getSedProportions();
    ASSERT_EQ(prop.size(), 15u);
    EXPECT_DOUBLE_EQ(prop[0], 0.1);
    EXPECT_DOUBLE_EQ(prop[2], 0.3);
    EXPECT_DOUBLE_EQ(prop[14], 0.4);

    p.setUsingTurbi();
    // Turbiditic cumulative sums: 0 1 3 6 10 18 35 60 -> passes 50 at class 7.
    EXPECT_EQ(p.getSedMedianClass(), 8);
}

TEST(Parameters, WriteReadRoundTrip)
{
    TempDir dir;
    Parameters a(nullptr);
    a.setParamString("SIM_TYPE", "Lobes");
    a.setParamDouble("CHNL_WIDTH", 0.1);
    a.setParamDouble("EROD_COEF", 1. / 3. * 1e-7);
    a.setParamDouble("DOMAIN_ZREF", -1234.5678901234567);
    a.setParamDouble("AG_OB_MIN", -7.); // out of range, kept
    a.setParamDouble("EROD_OFFSET", 1e30);
    a.setParamInt("SIM_SEED", 42);
    a.setParamInt("AG_EP_DIST", -3);
    a.setParamIntIdx("SED_LOAD_VOL", 14, 99);
    a.setParamBool("AG_RAND_LAMBDA", false);
    a.setParamBool("GR_PB", true);
    const std::string path = dir.file("params.txt");
    ASSERT_TRUE(a.write(path));

    const std::string text = read_file(path);
    EXPECT_EQ(text.rfind("SIM_TYPE=Lobes\n", 0), 0u);
    EXPECT_NE(text.find("\nAG_RAND_LAMBDA=0\n"), std::string::npos);
    EXPECT_NE(text.find("\nGR_PB=1\n"), std::string::npos);
    EXPECT_NE(text.find("\nSIM_SEED=42\n"), std::string::npos);
    // Booleans come before integers, integers before reals.
    EXPECT_LT(text.find("GR_QUICK_C0="), text.find("AG_DRAP="));
    EXPECT_LT(text.find("ZUL_TYPE="), text.find("AG_EP_CONST="));

    Parameters b(nullptr);
    b.setParamDouble("CHNL_MARGIN", 55.); // not in a's changes: back to a's value
    ASSERT_TRUE(b.read(path));
    EXPECT_EQ(b.getParamString("SIM_TYPE"), "Lobes");
    EXPECT_EQ(b.getParamDouble("CHNL_WIDTH"), 0.1);
    EXPECT_EQ(b.getParamDouble("EROD_COEF"), 1. / 3. * 1e-7);
    EXPECT_EQ(b.getParamDouble("DOMAIN_ZREF"), -1234.5678901234567);
    EXPECT_EQ(b.getParamDouble("AG_OB_MIN"), -7.);
    EXPECT_EQ(b.getParamDouble("EROD_OFFSET"), 1e30);
    EXPECT_EQ(b.getParamDouble("CHNL_MARGIN"), 12.);
    EXPECT_EQ(b.getParamInt("SIM_SEED"), 42);
    EXPECT_EQ(b.getParamInt("AG_EP_DIST"), -3);
    EXPECT_EQ(b.getParamIntIdx("SED_LOAD_VOL", 14), 99);
    EXPECT_FALSE(b.getParamBool("AG_RAND_LAMBDA"));
    EXPECT_TRUE(b.getParamBool("GR_PB"));

    // Every value: the file written back is the same byte for byte.
    const std::string again = dir.file("again.txt");
    ASSERT_TRUE(b.write(again));
    EXPECT_EQ(read_file(again), text);

    EXPECT_FALSE(a.write(dir.file("no_such_dir/params.txt")));
}

TEST(Parameters, ReadToleratesBadFiles)
{
    TempDir dir;
    Parameters p(nullptr);
    p.setParamDouble("CHNL_WIDTH", 66.);

    EXPECT_FALSE(p.read(dir.file("missing.txt")));
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 66.);

    // An empty file resets everything to its default.
    const std::string empty = dir.file("empty.txt");
    write_file(empty, "");
    EXPECT_TRUE(p.read(empty));
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_WIDTH"), 30.);

    const std::string odd = dir.file("odd.txt");
    write_file(odd, "# a comment\r\n"
                    "UNKNOWN_KEY=3\n"
                    "no equal sign here\n"
                    "\n"
                    "  CHNL_MAX_DEPTH \t=  7.25 \r\n"
                    "=\n"
                    "AG_TYPE=4.8\n"
                    "AV_LV_OB=2\n"
                    "CHNL_MARGIN=abc\n"
                    "A=B=AG_DRAP=9\n"
                    "ZUL_TYPE=junk\n"
                    "DOMAIN_NX=300");
    EXPECT_TRUE(p.read(odd));
    EXPECT_DOUBLE_EQ(p.getParamDouble("CHNL_MAX_DEPTH"), 7.25);
    EXPECT_EQ(p.getParamInt("AG_TYPE"), 4);
    EXPECT_TRUE(p.getParamBool("AV_LV_OB"));
    EXPECT_EQ(p.getParamDouble("CHNL_MARGIN"), -1e30);
    EXPECT_EQ(p.getParamInt("AG_DRAP"), 12);
    EXPECT_EQ(p.getParamInt("DOMAIN_NX"), 300);
    // The unparsable fallback, truncated for an integer, stays in the int range.
    EXPECT_EQ(p.getParamInt("ZUL_TYPE"), INT_MIN);
    EXPECT_EQ(p.getParam("UNKNOWN_KEY"), 1e30);

    const std::string binary = dir.file("binary.txt");
    const char bytes[] = "\0\xff\x01=\x02\n=\n==\nSIM_TYPE=\n";
    write_file(binary, std::string(bytes, sizeof(bytes) - 1));
    EXPECT_TRUE(p.read(binary));
    EXPECT_EQ(p.getParamString("SIM_TYPE"), "");
}

TEST(Parameters, VersionTierAndCopy)
{
    Tracer tracer;
    tracer.setTraceFunction(capture);
    clear_trace();
    Parameters p(&tracer);
    EXPECT_EQ(p.getVersionStr(), "8.502");
    EXPECT_DOUBLE_EQ(p.getVersion(), 8.502);
    EXPECT_FALSE(p.getVersionDate().empty());
    EXPECT_TRUE(g_trace.empty());

    const char* names[] = {"Free", "Premium", "Research"};
    for (int tier = 0; tier < 3; tier++)
    {
        p.setUsingDistrib(tier);
        EXPECT_EQ(p.getDistrib(), tier);
        EXPECT_EQ(p.getDistribStr(), names[tier]);
        EXPECT_EQ(p.usingFree(), tier == 0);
        EXPECT_EQ(p.usingPremium(), tier == 1);
        EXPECT_EQ(p.usingResearch(), tier == 2);
        EXPECT_NE(p.getFullVersion().find(names[tier]), std::string::npos);
        EXPECT_NE(p.getFullVersion().find("8.502"), std::string::npos);
    }
    p.setExpirationDate("2031-12-31");
    EXPECT_EQ(p.getExpirationDate(), "2031-12-31");
    EXPECT_NE(p.getFullVersion().find("2031-12-31"), std::string::npos);

    p.setUsingTurbi();
    p.setParamDouble("CHNL_WIDTH", 1234.);
    p.setParamBool("MASS_BAL_ACTIVE", true);
    p.setScourFactor(3.);
    p.setCondAvMP(true);
    p.setDryChannel(true);
    p.setSinuoInterval(7);
    Parameters q(nullptr);
    q.resetFrom(p);
    EXPECT_TRUE(q.usingTurbi());
    EXPECT_DOUBLE_EQ(q.getParamDouble("CHNL_WIDTH"), 1234.);
    EXPECT_DOUBLE_EQ(q.getParamDefDouble("CHNL_WIDTH"), 800.);
    EXPECT_TRUE(q.getParamBool("MASS_BAL_ACTIVE"));
    EXPECT_EQ(q.getScourFactor(), 3.);
    EXPECT_TRUE(q.usingCondAvMP());
    EXPECT_TRUE(q.usingDryChannel());
    EXPECT_EQ(q.sinuoInterval(), 7u);
    EXPECT_EQ(q.getSedVolumes(), p.getSedVolumes());
    EXPECT_EQ(q.getParamsDesc("", true), p.getParamsDesc("", true));
}

TEST(Parameters, DescriptionListsEverySettingBehindThePrefix)
{
    Parameters p(nullptr);
    p.setOldFilling(true);
    p.setDryChannel(true);
    const std::string expert = p.getParamsDesc("  ", false);
    EXPECT_NE(expert.find("  Real Sinuosity Computation Interval         = "), std::string::npos);
    EXPECT_NE(expert.find("  Number of Points for Curvatures Calculation = 3\n"), std::string::npos);
    EXPECT_NE(expert.find("  Maximum Well Influence Distance Factor      = Not used\n"), std::string::npos);
    EXPECT_NE(expert.find("  Avulsions Conditioned by Wells              = Yes\n"), std::string::npos);
    EXPECT_NE(expert.find("  Conditioning New Algorithm                  = Yes\n"), std::string::npos);
    EXPECT_NE(expert.find("  Fill Abandoned Channels                     = No\n"), std::string::npos);
    EXPECT_NE(expert.find("  Bank Erodibility Coefficient                = Not used\n"), std::string::npos);
    EXPECT_NE(expert.find("  Turbidites Aggradation Height Coefficient     = 1\n"), std::string::npos);
    EXPECT_NE(expert.find("  Using Old Filling Algorithm                 = Yes\n"), std::string::npos);
    EXPECT_NE(expert.find("  Scour Factor                                = "), std::string::npos);
    EXPECT_NE(expert.find("  Friction Coefficient                        = "), std::string::npos);
    EXPECT_EQ(expert.find("CHNL_WIDTH"), std::string::npos);

    p.setCondMigWells(4);
    EXPECT_NE(p.getParamsDesc("", false).find("Maximum Well Influence Distance Factor      = 4\n"),
              std::string::npos);

    const std::string all = p.getParamsDesc("> ", true);
    EXPECT_NE(all.find("CHNL_WIDTH"), std::string::npos);
    EXPECT_NE(all.find("SED_LOAD_VOL_14"), std::string::npos);
    // Integers read as integers, not as 1.65426e+08.
    EXPECT_NE(all.find(" = 165426111\n"), std::string::npos);
    EXPECT_NE(all.find("Fluvial"), std::string::npos);
    std::string::size_type start = 0;
    int lines = 0;
    while (start < all.size())
    {
        EXPECT_EQ(all.compare(start, 2, "> "), 0) << all.substr(start, 40);
        start = all.find('\n', start) + 1;
        ASSERT_NE(start, 0u);
        lines++;
    }
    // One line per registry entry at least: 10 booleans, 15 volumes.
    EXPECT_GT(lines, 100);
}
