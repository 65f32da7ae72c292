#include "kernel/parameters/ParameterDeclarations.h"

#include "kernel/common/Constants.h"
#include "kernel/parameters/ParameterCodes.h"
#include "kernel/parameters/SeedGenerator.h"

#include <sstream>

namespace
{

constexpr double ANY_MIN = MP_ANY_INT_MIN;
constexpr double ANY_MAX = MP_ANY_INT_MAX;
constexpr double HUGE_REAL = MP_MAX_REAL_VALUE;

// One row of the table, written as a chain: name, type, fluvial default and
// range first, then what differs.
class Row
{
public:
    Row(const char* name, ParameterType type, double def, double min, double max)
        : _d{name, type, def, min, max, false, def, min, max, "", 0, false, "", "", TIER_FREE, "", "", "", 0}
    {
    }
    Row& turbi(double def, double min, double max)
    {
        _d.turbiditic_differs = true;
        _d.turb_def = def;
        _d.turb_min = min;
        _d.turb_max = max;
        return *this;
    }
    Row& when(const char* control, int value)
    {
        _d.control = control;
        _d.control_value = value;
        return *this;
    }
    Row& geometry()
    {
        _d.geometry = true;
        return *this;
    }
    Row& unit(const char* unit)
    {
        _d.unit = unit;
        return *this;
    }
    Row& tier(ParameterTier tier)
    {
        _d.tier = tier;
        return *this;
    }
    Row& text(const char* text)
    {
        _d.text = text;
        return *this;
    }
    Row& count(int count)
    {
        _d.count = count;
        return *this;
    }
    Row& doc(const char* group, const char* label, const char* help)
    {
        _d.group = group;
        _d.label = label;
        _d.help = help;
        return *this;
    }
    operator ParameterDeclaration() const { return _d; }

private:
    ParameterDeclaration _d;
};

Row real(const char* name, double def, double min, double max)
{
    return Row(name, PARAM_REAL, def, min, max);
}

Row integer(const char* name, double def, double min, double max)
{
    return Row(name, PARAM_INT, def, min, max);
}

Row code(const char* name, double def)
{
    return Row(name, PARAM_INT, def, ANY_MIN, ANY_MAX);
}

Row flag(const char* name, bool def)
{
    return Row(name, PARAM_BOOL, def ? 1. : 0., 0., 1.);
}

// The seed of the congruence stays at 0 forever from its modulus: the
// largest seed is one below it.
constexpr double SEED_MAX = SeedGenerator::_modulus - 1;

const char* const FREQ_LABEL = "Frequency (0 never, 1 periodic, 2 Poisson)";
const char* const PERIOD_LABEL = "Period (iterations)";
const char* const POISSON_LABEL = "Poisson mean (iterations)";
const char* const DIST_LABEL = "Distribution (0 constant, 1 uniform, 2 Gaussian, 3 lognormal)";

std::vector<ParameterDeclaration> declare_geometry()
{
    const char* g = "Domain";
    return {
        real("DOMAIN_OX", 0., -HUGE_REAL, HUGE_REAL)
            .geometry()
            .unit("m")
            .doc(g, "X (m)", "Geographic X of the grid's origin node (m)"),
        real("DOMAIN_OY", 0., -HUGE_REAL, HUGE_REAL)
            .geometry()
            .unit("m")
            .doc(g, "Y (m)", "Geographic Y of the grid's origin node (m)"),
        integer("DOMAIN_NX", 251, 20, 5000)
            .geometry()
            .unit("nodes")
            .doc(g, "Number of nodes along X", "Number of grid nodes along X, the mean flow axis (nodes)"),
        integer("DOMAIN_NY", 201, 20, 5000)
            .geometry()
            .unit("nodes")
            .doc(g, "Number of nodes along Y", "Number of grid nodes across the flow (nodes)"),
        real("DOMAIN_DX", 10., 1., HUGE_REAL)
            .turbi(200., 1., HUGE_REAL)
            .geometry()
            .unit("m")
            .doc(g, "Lag X (m)", "Distance between two grid nodes along X (m)"),
        real("DOMAIN_DY", 10., 1., HUGE_REAL)
            .turbi(200., 1., HUGE_REAL)
            .geometry()
            .unit("m")
            .doc(g, "Lag Y (m)", "Distance between two grid nodes along Y (m)"),
        real("DOMAIN_GRID_DIR", 0., -360., 360.)
            .geometry()
            .unit("degrees")
            .doc(g, "Grid Direction (degrees)",
                 "Rotation of the grid, counter-clockwise from the east (degrees)"),
        real("DOMAIN_ZREF", 0., -HUGE_REAL, HUGE_REAL)
            .geometry()
            .unit("m")
            .doc("Surfaces", "Reference Elevation (m)",
                 "Geographic elevation of the relative zero of the block (m)"),
    };
}

std::vector<ParameterDeclaration> declare_channel()
{
    const char* g = "Channel";
    const char* s = "Channel scale";
    return {
        real("DOMAIN_SLOPE", 0.001, 0.0001, 0.1)
            .turbi(0.005, 0.0001, 0.5)
            .unit("m/m")
            .doc("Surfaces", "Slope", "Regional slope of the initial surface along the flow (m/m)"),
        real("CHNL_WIDTH", 30., 5., 500.)
            .turbi(800., 20., 4000.)
            .unit("m")
            .doc(g, "Width (m)", "Bankfull width of the channel (m)"),
        real("CHNL_MAX_DEPTH", 3., 0.5, 15.)
            .turbi(40., 10., 500.)
            .unit("m")
            .doc(g, "Maximum Depth (m)", "Bankfull depth of the channel at its thalweg (m)"),
        real("CHNL_WAVELENGTH", 375., 10., 10000.)
            .turbi(4000., 100., 20000.)
            .unit("m")
            .doc(g, "Wavelength (m)", "Wavelength of the meanders of a young channel (m)"),
        real("CHNL_MARGIN", 12., 1., 100.)
            .turbi(5., 1., 100.)
            .unit("channel widths")
            .doc(g, "Margin (%)",
                 "Extra channel length upstream and downstream of the domain (channel widths)"),
        real("CHNL_FLW_DIR", 90., -360., 360.)
            .unit("degrees")
            .doc(g, "Flow Direction (degrees)",
                 "Mean direction of the flow, counter-clockwise from the east (degrees)"),
        code("CHNL_SCALE_DIST", MP_DIST_CONSTANT)
            .tier(TIER_PREMIUM)
            .doc(s, "Distribution (0 constant, 1 uniform, 2 Gaussian, 3 lognormal)",
                 "Law of the size of a new channel after a regional avulsion (0 constant, 1 uniform, 2 "
                 "Gaussian, 3 "
                 "lognormal)"),
        real("CHNL_SCALE_CONST", 100., 80., 120.)
            .when("CHNL_SCALE_DIST", MP_DIST_CONSTANT)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Constant", "Size of a new channel, constant law (% of the declared channel)"),
        real("CHNL_SCALE_MIN", 80., 50., 100.)
            .when("CHNL_SCALE_DIST", MP_DIST_UNIFORM)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Minimum", "Smallest size of a new channel, uniform law (% of the declared channel)"),
        real("CHNL_SCALE_MAX", 120., 100., 150.)
            .when("CHNL_SCALE_DIST", MP_DIST_UNIFORM)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Maximum", "Largest size of a new channel, uniform law (% of the declared channel)"),
        real("CHNL_SCALE_NORM_MEAN", 100., 90., 110.)
            .when("CHNL_SCALE_DIST", MP_DIST_GAUSSIAN)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Gaussian mean", "Mean size of a new channel, Gaussian law (% of the declared channel)"),
        real("CHNL_SCALE_NORM_STDEV", 20., 0., 40.)
            .when("CHNL_SCALE_DIST", MP_DIST_GAUSSIAN)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Gaussian standard deviation",
                 "Spread of the size of a new channel, Gaussian law (% of the declared channel)"),
        real("CHNL_SCALE_LOGNORM_MEAN", 100., 90., 110.)
            .when("CHNL_SCALE_DIST", MP_DIST_LOGNORMAL)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Lognormal mean",
                 "Mean size of a new channel, lognormal law (% of the declared channel)"),
        real("CHNL_SCALE_LOGNORM_STDEV", 20., 0., 40.)
            .when("CHNL_SCALE_DIST", MP_DIST_LOGNORMAL)
            .tier(TIER_PREMIUM)
            .unit("%")
            .doc(s, "Lognormal standard deviation",
                 "Spread of the size of a new channel, lognormal law (% of the declared channel)"),
        real("EROD_COEF", 4e-08, 0., 2e-07)
            .turbi(4e-08, 0., 2e-07)
            .doc("Erodibility", "Coefficient",
                 "Bank erodibility: how fast the outer banks retreat under the flow"),
        real("EROD_OFFSET", 0., -HUGE_REAL, HUGE_REAL)
            .doc("Erodibility", "Offset", "Offset added to the values of an erodibility map"),
        code("ZUL_TYPE", ZUL_NONE)
            .doc("Surfaces", "Upper Limit Type",
                 "What the upper limit surface does (0 none, 1 stop there, 2 stop and erode down to it, 3 "
                 "stratigraphic)"),
    };
}

std::vector<ParameterDeclaration> declare_avulsions()
{
    const char* g = "Avulsions";
    return {
        code("AV_LOC_FREQ", MP_PROCESS_POISSON)
            .doc(g, FREQ_LABEL,
                 "Clock of the local avulsions, levee breaches that build crevasse splays (0 never, 1 "
                 "periodic, 2 "
                 "Poisson)"),
        integer("AV_LOC_PERIOD", 280, 1, ANY_MAX)
            .turbi(288, 1, ANY_MAX)
            .when("AV_LOC_FREQ", MP_PROCESS_PERIODIC)
            .unit("iterations")
            .doc(g, PERIOD_LABEL, "Time between two local avulsions, periodic clock (iterations)"),
        integer("AV_LOC_POISSON", 280, 1, ANY_MAX)
            .turbi(288, 1, ANY_MAX)
            .when("AV_LOC_FREQ", MP_PROCESS_POISSON)
            .unit("iterations")
            .doc(g, POISSON_LABEL, "Mean time between two local avulsions, Poisson clock (iterations)"),
        real("AV_LOC_PROB1", 0.5, 0., 1.)
            .unit("probability")
            .doc(g, "Probability 1",
                 "Chance that a crevasse splay grows into a second, larger splay (0 to 1)"),
        real("AV_LOC_PROB2", 0.9, 0., 1.)
            .unit("probability")
            .doc(g, "Probability 2",
                 "How many distributary channels a second splay spreads: 0 none, 1 the most (0 to 1)"),
        code("AV_REG_FREQ", MP_PROCESS_POISSON)
            .doc(g, FREQ_LABEL,
                 "Clock of the regional avulsions, where the channel takes a new course (0 never, 1 "
                 "periodic, 2 "
                 "Poisson)"),
        integer("AV_REG_PERIOD", 500, 1, ANY_MAX)
            .turbi(470, 1, ANY_MAX)
            .when("AV_REG_FREQ", MP_PROCESS_PERIODIC)
            .unit("iterations")
            .doc(g, PERIOD_LABEL, "Time between two regional avulsions, periodic clock (iterations)"),
        integer("AV_REG_POISSON", 500, 1, ANY_MAX)
            .turbi(470, 1, ANY_MAX)
            .when("AV_REG_FREQ", MP_PROCESS_POISSON)
            .unit("iterations")
            .doc(g, POISSON_LABEL, "Mean time between two regional avulsions, Poisson clock (iterations)"),
    };
}

std::vector<ParameterDeclaration> declare_aggradation()
{
    const char* g = "Aggradation";
    const char* o = "Overbank";
    const char* h = "m";
    std::vector<ParameterDeclaration> rows = {
        code("AG_TYPE", AG_OVERBANK)
            .doc(g, "Type (0 none, 1 draping, 2 overbank, 3 ghost migration, 4 erosive)",
                 "How the floodplain builds up (0 none, 1 draping, 2 overbank floods, 3 ghost migration, 4 "
                 "erosive)"),
        code("AG_DRAP", DRAPING_DRAPING)
            .turbi(DRAPING_PELAGIC, ANY_MIN, ANY_MAX)
            .doc(g, "Draping Facies", "Facies family of the background drape (12 draping, 13 pelagic)"),
        real("AG_EXP_DEC_THICK", 919., 5., HUGE_REAL)
            .turbi(8107., 100., HUGE_REAL)
            .unit("m")
            .doc(g, "Exponential Decrease Thickness (m)",
                 "Distance from the channel over which overbank deposits thin exponentially (m)"),
        real("AG_LV_WIDTH", 6., 0.05, HUGE_REAL)
            .turbi(2., 0.05, HUGE_REAL)
            .unit("channel widths")
            .doc(g, "Levee Width", "Width of the levees on each side of the channel (channel widths)"),
        code("AG_OB_FREQ", MP_PROCESS_POISSON)
            .doc(o, FREQ_LABEL, "Clock of the overbank floods (0 never, 1 periodic, 2 Poisson)"),
        integer("AG_OB_PERIOD", 70, 1, ANY_MAX)
            .turbi(24, 1, ANY_MAX)
            .when("AG_OB_FREQ", MP_PROCESS_PERIODIC)
            .unit("iterations")
            .doc(o, PERIOD_LABEL, "Time between two overbank floods, periodic clock (iterations)"),
        integer("AG_OB_POISSON", 70, 1, ANY_MAX)
            .turbi(24, 1, ANY_MAX)
            .when("AG_OB_FREQ", MP_PROCESS_POISSON)
            .unit("iterations")
            .doc(o, POISSON_LABEL, "Mean time between two overbank floods, Poisson clock (iterations)"),
        code("AG_OB_DIST", MP_DIST_GAUSSIAN)
            .doc(o, DIST_LABEL,
                 "Law of the thickness a flood lays at the levee crest (0 constant, 1 uniform, 2 Gaussian, 3 "
                 "lognormal)"),
        real("AG_OB_CONST", 0.1, 0., HUGE_REAL)
            .turbi(2., 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_CONSTANT)
            .unit(h)
            .doc(o, "Constant", "Thickness laid by one flood, constant law (m)"),
        real("AG_OB_MIN", 0.07, 0., HUGE_REAL)
            .turbi(1.4, 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_UNIFORM)
            .unit(h)
            .doc(o, "Minimum", "Smallest thickness laid by one flood, uniform law (m)"),
        real("AG_OB_MAX", 0.13, 0.03, HUGE_REAL)
            .turbi(2.6, 0.03, HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_UNIFORM)
            .unit(h)
            .doc(o, "Maximum", "Largest thickness laid by one flood, uniform law (m)"),
        real("AG_OB_NORM_MEAN", 0.1, 0., HUGE_REAL)
            .turbi(2., 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_GAUSSIAN)
            .unit(h)
            .doc(o, "Gaussian mean", "Mean thickness laid by one flood, Gaussian law (m)"),
        real("AG_OB_NORM_STDEV", 0.03, 0., HUGE_REAL)
            .turbi(0.6, 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_GAUSSIAN)
            .unit(h)
            .doc(o, "Gaussian standard deviation",
                 "Spread of the thickness laid by one flood, Gaussian law (m)"),
        real("AG_OB_LOGNORM_MEAN", 0.1, 0., HUGE_REAL)
            .turbi(2., 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_LOGNORMAL)
            .unit(h)
            .doc(o, "Lognormal mean", "Mean thickness laid by one flood, lognormal law (m)"),
        real("AG_OB_LOGNORM_STDEV", 0.03, 0., HUGE_REAL)
            .turbi(0.6, 0., HUGE_REAL)
            .when("AG_OB_DIST", MP_DIST_LOGNORMAL)
            .unit(h)
            .doc(o, "Lognormal standard deviation",
                 "Spread of the thickness laid by one flood, lognormal law (m)"),
    };
    rows.push_back(
        real("AG_OB_PEAT", 0., 0., 99.)
            .unit("%")
            .doc(o, "Peat (%)", "Share of the low dry places that fill with peat at each flood (%)"));
    rows.push_back(real("AG_OB_PEL_DRAP_INT", 0., 0., 100.)
                       .unit("m/10000 iterations")
                       .doc(o, "Pelagic Draping Interval",
                            "Rate of the pelagic or draping rain on dry land between floods, 0 for none "
                            "(m/10000 iterations)"));
    return rows;
}

std::vector<ParameterDeclaration> declare_profile()
{
    const char* g = "Equilibrium profile";
    const char* h = "m";
    return {
        real("AG_EP_INIT_ELEV", 9999., -HUGE_REAL, HUGE_REAL)
            .unit("m")
            .doc(g, "Initial Elevation (m)",
                 "Geographic elevation of the equilibrium profile at the start (m)"),
        code("AG_EP_FREQ", MP_PROCESS_NEVER)
            .doc(g, FREQ_LABEL,
                 "Clock of the changes of the equilibrium profile (0 never, 1 periodic, 2 Poisson)"),
        integer("AG_EP_PERIOD", 70, 1, ANY_MAX)
            .turbi(24, 1, ANY_MAX)
            .when("AG_EP_FREQ", MP_PROCESS_PERIODIC)
            .unit("iterations")
            .doc(g, PERIOD_LABEL, "Time between two profile changes, periodic clock (iterations)"),
        integer("AG_EP_POISSON", 70, 1, ANY_MAX)
            .turbi(24, 1, ANY_MAX)
            .when("AG_EP_FREQ", MP_PROCESS_POISSON)
            .unit("iterations")
            .doc(g, POISSON_LABEL, "Mean time between two profile changes, Poisson clock (iterations)"),
        code("AG_EP_DIST", MP_DIST_CONSTANT)
            .doc(g, DIST_LABEL,
                 "Law of the rise (or fall) of the profile at each change (0 constant, 1 uniform, 2 "
                 "Gaussian, 3 "
                 "lognormal)"),
        real("AG_EP_CONST", 0.1, -HUGE_REAL, HUGE_REAL)
            .turbi(2., -HUGE_REAL, HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_CONSTANT)
            .unit(h)
            .doc(g, "Constant", "Rise of the profile at each change, constant law (m)"),
        real("AG_EP_MIN", 0.07, -HUGE_REAL, HUGE_REAL)
            .turbi(1.4, -HUGE_REAL, HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_UNIFORM)
            .unit(h)
            .doc(g, "Minimum", "Smallest rise of the profile, uniform law (m)"),
        real("AG_EP_MAX", 0.13, -HUGE_REAL, HUGE_REAL)
            .turbi(2.6, -HUGE_REAL, HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_UNIFORM)
            .unit(h)
            .doc(g, "Maximum", "Largest rise of the profile, uniform law (m)"),
        real("AG_EP_NORM_MEAN", 0.1, -HUGE_REAL, HUGE_REAL)
            .turbi(2., -HUGE_REAL, HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_GAUSSIAN)
            .unit(h)
            .doc(g, "Gaussian mean", "Mean rise of the profile, Gaussian law (m)"),
        real("AG_EP_NORM_STDEV", 0.03, 0., HUGE_REAL)
            .turbi(0.6, 0., HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_GAUSSIAN)
            .unit(h)
            .doc(g, "Gaussian standard deviation", "Spread of the rise of the profile, Gaussian law (m)"),
        real("AG_EP_LOGNORM_MEAN", 0.1, -HUGE_REAL, HUGE_REAL)
            .turbi(2., -HUGE_REAL, HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_LOGNORMAL)
            .unit(h)
            .doc(g, "Lognormal mean", "Mean rise of the profile, lognormal law (m)"),
        real("AG_EP_LOGNORM_STDEV", 0.03, 0., HUGE_REAL)
            .turbi(0.6, 0., HUGE_REAL)
            .when("AG_EP_DIST", MP_DIST_LOGNORMAL)
            .unit(h)
            .doc(g, "Lognormal standard deviation", "Spread of the rise of the profile, lognormal law (m)"),
    };
}

std::vector<ParameterDeclaration> declare_wells_and_sediment()
{
    const char* w = "Wells";
    const char* gr = "Grain size";
    return {
        real("COND_WELL_RELAX", 20., 0., 100.)
            .unit("%")
            .doc(w, "Relaxation (%)", "Chance that an event the wells refuse takes place all the same (%)"),
        real("COND_WELL_CLOSURE", 0.1, 0.01, 1.)
            .turbi(1.4, 0.1, 10.)
            .unit("m")
            .doc(w, "Closure", "Thin non-sand gaps between well sands, thinner than this, are closed (m)"),
        real("SED_LOAD_MEAN", 0.01, 0.001, 0.5)
            .turbi(0.1, 0.001, 0.5)
            .tier(TIER_PREMIUM)
            .doc("Sediment load", "Mean Load",
                 "Mean concentration of sediment carried by the flow (volume fraction)"),
        real("MASS_BAL_COEF", 0.2, 0., HUGE_REAL)
            .turbi(0.8, 0., HUGE_REAL)
            .tier(TIER_RESEARCH)
            .doc("Mass balance", "Coefficient",
                 "Factor on the volume the flow carries (mean load times channel volume) that the channel "
                 "may deposit"),
        real("GR_THRESHOLD", 0.75, 0.05, 0.95)
            .tier(TIER_PREMIUM)
            .doc(gr, "Threshold",
                 "Cumulated share of the suspended load, finest first, that sets the grain of a deposit (0 "
                 "to 1)"),
        integer("GR_PB_OPTIM_MIN", 6, 1, 10)
            .tier(TIER_RESEARCH)
            .unit("class")
            .doc(gr, "Optimization Minimum Class",
                 "Finest grain size class the point bar profile may use (class)"),
        integer("GR_PB_OPTIM_MAX", 13, 3, 13)
            .tier(TIER_RESEARCH)
            .unit("class")
            .doc(gr, "Optimization Maximum Class",
                 "Coarsest grain size class the point bar profile may use (class)"),
        real("GR_PB_OPTIM_ALPHA", 0.25, 0.05, 0.95)
            .tier(TIER_RESEARCH)
            .doc(gr, "Optimization Alpha",
                 "Tuning coefficient of the optimised point bar grain profile (0 to 1)"),
    };
}

std::vector<ParameterDeclaration> declare_switches()
{
    const char* gr = "Grain size";
    return {
        flag("AV_LV_OB", false)
            .doc("Avulsions", "Levee Overbank", "Whether overbank floods may also breach the levees"),
        flag("AV_NO_SPLAY", false)
            .doc("Avulsions", "No Crevasse Splay", "Whether local avulsions build no crevasse splay"),
        flag("AG_RAND_LAMBDA", true)
            .doc("Aggradation", "Random Lambda",
                 "Whether the thinning distance of overbank deposits varies at random along the channel"),
        flag("COND_WELL_CLOSURE_ON", false)
            .doc("Wells", "Closure Active", "Whether thin non-sand gaps in the wells are closed"),
        flag("COND_WELL_STOP_HONORED", false)
            .doc("Wells", "Stop When All Wells Honored", "Whether the run stops once every well is honoured"),
        flag("MASS_BAL_ACTIVE", false)
            .tier(TIER_RESEARCH)
            .doc("Mass balance", "Active", "Whether the channel deposits only what the flow carries"),
        flag("GR_PB", false)
            .tier(TIER_PREMIUM)
            .doc(gr, "Variable Point Bar Grain Size", "Whether point bars fine upwards"),
        flag("GR_QUICK_C0", false)
            .tier(TIER_PREMIUM)
            .doc(gr, "Quick C0", "Whether the near-bed sediment concentration uses the quick fitted formula"),
        flag("GR_PB_PROXY", false)
            .tier(TIER_RESEARCH)
            .doc(gr, "Proxy", "Whether the point bar grain profile comes from a proxy of the flow depth"),
        flag("GR_PB_OPTIM", false)
            .tier(TIER_RESEARCH)
            .doc(gr, "Optimization", "Whether the point bar grain profile is optimised"),
    };
}

std::vector<ParameterDeclaration> declare_all()
{
    std::vector<ParameterDeclaration> rows;
    rows.push_back(Row("SIM_TYPE", PARAM_STRING, 0., 0., 0.)
                       .text("Fluvial")
                       .doc("Simulation", "System Type", "Kind of system: Fluvial, Turbidite or Lobes"));
    rows.push_back(integer("SIM_SEED", 165426111, 1, SEED_MAX)
                       .doc("Simulation", "Seed",
                            "Seed of the random draws: equal parameters and seed give the same block"));
    for (const auto& part :
         {declare_geometry(), declare_channel(), declare_avulsions(), declare_aggradation(),
          declare_profile(), declare_wells_and_sediment(), declare_switches()})
        rows.insert(rows.end(), part.begin(), part.end());
    rows.push_back(integer("SED_LOAD_VOL", 0, 0, 100)
                       .count(MD_NB_CLASS_GR)
                       .tier(TIER_PREMIUM)
                       .unit("%")
                       .doc("Sediment load", "Volume by Class (%)",
                            "Share of each of the 15 grain size classes in the load, finest first (%)"));
    return rows;
}

bool unset_min(ParameterType type, double min)
{
    return type == PARAM_INT ? min <= MP_ANY_INT_MIN : min <= MP_MIN_REAL_VALUE;
}

bool unset_max(ParameterType type, double max)
{
    return type == PARAM_INT ? max >= MP_ANY_INT_MAX : max >= MP_MAX_REAL_VALUE;
}

std::string number(ParameterType type, double value)
{
    std::ostringstream s;
    if (type == PARAM_INT)
        s << static_cast<long long>(value);
    else
        s << value;
    return s.str();
}

} // namespace

const std::vector<ParameterDeclaration>& ParameterDeclarations::all()
{
    static const std::vector<ParameterDeclaration> rows = declare_all();
    return rows;
}

const ParameterDeclaration* ParameterDeclarations::find(const std::string& name)
{
    for (const ParameterDeclaration& row : all())
    {
        if (name == row.name)
            return &row;
    }
    return nullptr;
}

const std::vector<int>& ParameterDeclarations::sedimentVolumes(bool turbiditic)
{
    static const std::vector<int> fluvial = {0, 0, 0, 0, 2, 3, 6, 13, 27, 26, 10, 8, 5, 0, 0};
    static const std::vector<int> turbidite = {0, 1, 2, 3, 4, 8, 17, 25, 22, 8, 5, 3, 2, 0, 0};
    return turbiditic ? turbidite : fluvial;
}

std::string ParameterDeclarations::rangeText(ParameterType type, double min, double max)
{
    if (type == PARAM_BOOL)
        return "0 or 1";
    if (type == PARAM_STRING)
        return "";
    const bool low = !unset_min(type, min);
    const bool high = !unset_max(type, max);
    if (low && high)
        return "between " + number(type, min) + " and " + number(type, max);
    if (low)
        return "at least " + number(type, min);
    if (high)
        return "at most " + number(type, max);
    return type == PARAM_INT ? "any code" : "any";
}
