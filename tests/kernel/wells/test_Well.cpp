#include "kernel/wells/Well.h"

#include "TestSupport.h"
#include "kernel/channel/ChannelPoint.h"
#include "kernel/common/Constants.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/UserClassList.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"

#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

using testing_support::capture;
using testing_support::g_trace;
using testing_support::traced;

namespace
{
const unsigned char UD = 0, CL = 1, PB = 2, CSI = 4, LV = 7, OB = 8, MP = 9;

class WellTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        tracer.setTraceLevel(TRACE_DEBUG);
        params.setCondMigWells(2);
        params.setCondAvWells(true);
        params.setCondNewAlgo(true);
        config.channelDepth = 3.;
        config.channelWidth = 30.;
        config.leveeWidth = 6.;
        config.influence = 60.;
    }

    // Bricks (family, thickness) stacked upward from 0, under the fixture's configuration.
    void stack(Well& w, const std::vector<std::pair<unsigned char, double>>& bricks,
               const Point2D& geoLocation = Point2D(), const Point2D& location = Point2D())
    {
        w.clear_units(0.);
        for (const auto& brick : bricks)
            w.add_unit(WellUnit(Facies(brick.first), brick.second));
        w.set_well_config(config);
        w.init(geoLocation, location);
    }

    // Bottom at 0: PB [0,2], OB [2,3], CL [3,4], UD [4,5], PB [5,6].
    void build(Well& w, const std::string& name = "W1")
    {
        w.name(name);
        stack(w, {{PB, 2.}, {OB, 1.}, {CL, 1.}, {UD, 1.}, {PB, 1.}}, Point2D(1000., 2000.), Point2D(0., 0.));
    }

    void set_closure(Well& w, double closure)
    {
        config.closure = closure;
        w.set_well_config(config);
    }

    // Deposits and returns the case labels traced for it.
    std::string dep(Well& w, unsigned char family, double zb, double zt, double wd = 0.,
                    const DepositionSet* column = nullptr)
    {
        g_trace.clear();
        w.deposit(Facies(family), zt - zb, zb, wd, column);
        std::string labels;
        for (size_t p = g_trace.find("Dep. Case "); p != std::string::npos;
             p = g_trace.find("Dep. Case ", p + 1))
        {
            const size_t start = p + 10;
            labels +=
                (labels.empty() ? "" : "|") + g_trace.substr(start, g_trace.find(" al=", start) - start);
        }
        return labels;
    }

    Tracer tracer;
    Parameters params{&tracer};
    WellConfig config;
};

// Two deposition units stacked from 0: family f1 over th1 metres, then f2 over th2.
DepositionSet column_of(unsigned char f1, double th1, unsigned char f2, double th2)
{
    DepositionSet col(0.);
    col.units().push_back(DepositionUnit(Facies(f1), static_cast<unsigned char>(std::lround(th1 * 100)), 0));
    col.units().push_back(DepositionUnit(Facies(f2), static_cast<unsigned char>(std::lround(th2 * 100)), 0));
    col.set_ztop(th1 + th2);
    return col;
}
} // namespace

TEST_F(WellTest, SmallFunctionsAndBrickWalk)
{
    EXPECT_DOUBLE_EQ(Well::repulsion_factor(1., 1., 1.), 1.);
    EXPECT_DOUBLE_EQ(Well::repulsion_factor(0.99, 1., 1.), 0.);
    EXPECT_DOUBLE_EQ(Well::repulsion_factor(1.5, 1., 2.), 0.5);
    EXPECT_DOUBLE_EQ(Well::attraction_factor(3., 1., 2.), 2.);
    EXPECT_TRUE(testing_support::is_assertion_of(
        testing_support::assertion_text([] { Well::repulsion_factor(0., 2., 1.); }), "lim1 <= lim2"));
    EXPECT_DOUBLE_EQ(Well::gauss_cov(10., 10.), std::exp(-1.73 * 1.73));

    Well w(&params, &tracer);
    build(w);
    EXPECT_EQ(w.active_brick(), 0u);
    EXPECT_DOUBLE_EQ(w.active_level(), 0.);
    EXPECT_DOUBLE_EQ(w.height(), 6.);
    // A level on a brick's top honours that brick.
    EXPECT_FALSE(w.set_al(3.));
    EXPECT_EQ(w.active_brick(), 2u);
    EXPECT_EQ(w.nb_honored_units(), 2u);
    EXPECT_DOUBLE_EQ(w.botab(), 3.);
    EXPECT_DOUBLE_EQ(w.topab(), 4.);
    EXPECT_TRUE(w.set_al(-1.));
    EXPECT_EQ(w.active_brick(), 0u);
    EXPECT_DOUBLE_EQ(w.active_level(), 0.);
    EXPECT_TRUE(w.set_al(6.));
    EXPECT_TRUE(w.is_finished());
    EXPECT_NE(w.debug().find(" >> Well honored <<\n"), std::string::npos);
    EXPECT_FALSE(w.set_al(5.5));
    EXPECT_EQ(w.active_brick(), 4u);

    double a, b, aa, ab, d, e;
    config.flowX = 0.6;
    config.flowY = 0.8;
    w.set_well_config(config);
    w.distance(Point2D(3., 4.), a, b, aa, ab, d, e);
    EXPECT_NEAR(a, 5., 1e-12);
    EXPECT_NEAR(b, 0., 1e-12);
    EXPECT_NEAR(e, 5., 1e-12);
    w.distance(Point2D(-4., 3.), a, b, aa, ab, d, e);
    EXPECT_NEAR(b, 5., 1e-12);
    EXPECT_NEAR(e, 10., 1e-12);
}

TEST_F(WellTest, NatureClosesThinGapsBetweenSands)
{
    Well w(&params, &tracer);
    stack(w, {{PB, 1.}, {OB, 0.3}, {LV, 0.3}, {CL, 1.}, {OB, 0.2}});
    EXPECT_EQ(w.nature(1).family(), OB);
    EXPECT_EQ(w.nature(5).family(), UD);
    set_closure(w, 1.);
    EXPECT_TRUE(w.nature(1).is_neutral());
    EXPECT_TRUE(w.nature(2).is_neutral());
    // The top one lacks a sand above it.
    EXPECT_EQ(w.nature(4).family(), OB);
    set_closure(w, 0.5);
    EXPECT_EQ(w.nature(2).family(), LV);
}

TEST_F(WellTest, DepositCasesMoveTheLevel)
{
    Well w(&params, &tracer);
    build(w);
    EXPECT_EQ(dep(w, PB, 0., 0.), "E");
    EXPECT_EQ(dep(w, PB, -5., -4.), "G1");
    EXPECT_DOUBLE_EQ(w.active_level(), 0.);
    EXPECT_DOUBLE_EQ(w.zdom(), -4.);
    EXPECT_EQ(dep(w, PB, -1., 1.), "D|A1");
    EXPECT_DOUBLE_EQ(w.active_level(), 1.);
    // The part beyond the point bar contradicts the overbank above it.
    EXPECT_EQ(dep(w, PB, 1., 2.5), "A2b");
    EXPECT_DOUBLE_EQ(w.active_level(), 2.);
    EXPECT_EQ(w.nb_honored_units(), 1u);
    EXPECT_EQ(dep(w, PB, 2., 2.5), "B1");
    EXPECT_DOUBLE_EQ(w.active_level(), 2.);
    EXPECT_EQ(dep(w, OB, 1., 1.5), "G3");
    EXPECT_EQ(dep(w, OB, 1.5, 3.), "C|A1");
    EXPECT_EQ(w.active_brick(), 2u);
    // Channel lag passes the neutral brick and stops inside the next one.
    EXPECT_EQ(dep(w, CL, 3., 4.5), "A2a|H3");
    EXPECT_DOUBLE_EQ(w.active_level(), 4.5);
    EXPECT_EQ(dep(w, OB, 4.5, 6.5), "G2");
    EXPECT_TRUE(w.is_finished());
    EXPECT_NE(g_trace.find(" >> Well honored <<"), std::string::npos);
    EXPECT_EQ(dep(w, OB, 6.5, 7.), "G0");
}

TEST_F(WellTest, DepositAboveTheLevelNeedsAnAgreeingColumn)
{
    Well w(&params, &tracer);
    build(w);
    w.set_al(2.);
    DepositionSet agreeing = column_of(PB, 2.5, OB, 0.5);
    EXPECT_EQ(dep(w, OB, 2.5, 3., 0., &agreeing), "A4");
    EXPECT_DOUBLE_EQ(w.active_level(), 2.);
    DepositionSet good = column_of(PB, 2., OB, 1.);
    EXPECT_EQ(dep(w, OB, 2.5, 3., 0., &good), "A3|A1");
    EXPECT_EQ(w.active_brick(), 2u);
    EXPECT_EQ(dep(w, OB, 3.5, 3.8, 0., nullptr), "A4");
}

TEST_F(WellTest, NeutralDepositsAndWetChannel)
{
    Well w(&params, &tracer);
    build(w);
    EXPECT_EQ(dep(w, UD, 0., 1.), "H1 or H2 for neutral deposit|H1");
    EXPECT_EQ(dep(w, UD, 1., 2.5), "H1 or H2 for neutral deposit|H2");
    EXPECT_EQ(w.active_brick(), 1u);

    Well v(&params, &tracer);
    build(v, "W2");
    v.set_wet(true);
    // Under a live channel the level stays out of its scour.
    EXPECT_EQ(dep(v, PB, 0., 1.5, 1.), "A1|F1");
    EXPECT_DOUBLE_EQ(v.active_level(), 0.);
    EXPECT_EQ(dep(v, PB, 0., 1.5, 3.), "A1|F2");
    EXPECT_DOUBLE_EQ(v.active_level(), 1.5);
    v.set_al(2.);
    EXPECT_EQ(dep(v, PB, 2., 2.5, 3.), "B2|F2");
    // Wet with no water is a broken invariant, reported and survived.
    g_trace.clear();
    v.deposit(Facies(PB), 0.5, 2.5, 0., nullptr);
    EXPECT_NE(g_trace.find("### FATAL ### : (wd > 0. && is_wet()) || !is_wet() failed at ["),
              std::string::npos);
}

TEST_F(WellTest, ErosionMovesTheLevel)
{
    Well w(&params, &tracer);
    build(w);
    dep(w, PB, 0., 1.5);
    dep(w, CSI, 1.5, 1.8);
    EXPECT_DOUBLE_EQ(w.active_level(), 1.5);
    w.erode_down_to(1.2, 0., nullptr);
    EXPECT_DOUBLE_EQ(w.active_level(), 1.2);
    EXPECT_DOUBLE_EQ(w.zdom(), 1.2);
    // Erosion removed the contradiction: the point bar left in the column is the log's.
    w.set_al(0.5);
    DepositionSet col = column_of(PB, 1., PB, 0.8);
    w.erode_down_to(1.8, 0., &col);
    EXPECT_DOUBLE_EQ(w.active_level(), 1.8);
    DepositionSet bad = column_of(PB, 1.8, OB, 0.4);
    w.erode_down_to(2.2, 0., &bad);
    EXPECT_DOUBLE_EQ(w.active_level(), 1.8);

    w.set_al(6.);
    ASSERT_TRUE(w.is_finished());
    w.erode_down_to(3.5, 0., nullptr);
    EXPECT_FALSE(w.is_finished());
    EXPECT_EQ(w.nb_honored_units(), 2u);

    w.erode_up_to(4.5, 0.);
    EXPECT_DOUBLE_EQ(w.active_level(), 4.5);
    EXPECT_DOUBLE_EQ(w.zdom(), 4.5);
    w.erode_up_to(9., 0.);
    EXPECT_DOUBLE_EQ(w.active_level(), 4.5);
    EXPECT_DOUBLE_EQ(w.zdom(), 9.);
}

TEST_F(WellTest, MigrationFactor)
{
    Well w(&params, &tracer);
    build(w);
    // Point 75 m across the flow: the bank is 60 m away, exactly the influence.
    w.set_al(2.5);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 75., 4.)), Well::repulsion_factor(60., 60., 180.));
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 75.1, 4.)), 1.);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 30., -1.)), 1.);
    // Fine brick: repelled between 2W and 6W from the bank.
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 15. + 70., 4.)), 1.);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 15. + 40., 4.)), 0.);
    w.set_wet(true);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 40., 4.)), 2.);
    w.set_wet(false);
    // Fill brick under the channel, the overbank 0.15 m above it.
    w.set_al(0.);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 40., 1.85)), 2. - Well::repulsion_factor(0.15, 0.1, 0.2));
    // A thick fill: attracted by the level's lag.
    Well deep(&params, &tracer);
    stack(deep, {{PB, 10.}});
    const double r = 2.8 / 3.;
    EXPECT_DOUBLE_EQ(deep.correct_mig(Point3D(0., 40., 2.8)), Well::attraction_factor(r, 0.735, 0.98));
    EXPECT_DOUBLE_EQ(deep.correct_mig(Point3D(0., 40., 2.)), 1.);
    params.setCondMigWells(MP_UNDEF_INT);
    EXPECT_DOUBLE_EQ(w.correct_mig(Point3D(0., 0., 2.8)), 1.);
    params.setCondMigWells(2);
    params.setCondNewAlgo(false);
    EXPECT_TRUE(testing_support::is_assertion_of(
        testing_support::assertion_text([&] { w.correct_mig(Point3D(0., 0., 2.8)); }),
        "COND_WELLS_NEW_ALGO == 1"));
}

TEST_F(WellTest, QuestionsReachLinkedWells)
{
    Well w(&params, &tracer);
    build(w);
    // Dry over a point bar, far under the top: no demand.
    EXPECT_FALSE(w.want_reg_avulsion());
    EXPECT_FALSE(w.block_aggradation());
    params.setCondBlockAv(true);
    EXPECT_FALSE(w.block_avulsion());
    w.set_wet(true);
    EXPECT_TRUE(w.wet_and_sandy_ab());
    EXPECT_TRUE(w.block_avulsion());
    params.setCondBlockAv(false);
    EXPECT_FALSE(w.block_avulsion());
    w.set_wet(false);

    // The surface close below the top of the fill: an avulsion is wanted.
    dep(w, PB, 0., 1.5);
    EXPECT_EQ(dep(w, CSI, 1.5, 2.9), "B1");
    bool local = false, regional = false, ok = true;
    w.correct_avl(Point3D(0., 0., 2.9), &local, &regional, &ok);
    EXPECT_TRUE(regional);
    EXPECT_TRUE(local);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(w.want_reg_avulsion());
    EXPECT_TRUE(w.block_aggradation());

    Well* child = w.new_child();
    child->clear_units(10.);
    child->add_unit(WellUnit(Facies(OB), 1.));
    child->init(Point2D(1000., 2000.), Point2D(0., 0.));
    EXPECT_EQ(child->parent(), &w);
    EXPECT_DOUBLE_EQ(child->get_well_config().channelWidth, 30.);
    // Told what the parent is told.
    w.set_wet(true);
    EXPECT_TRUE(child->is_wet());
    EXPECT_FALSE(w.all_honored());
    w.deposit(Facies(OB), 1.5, 9.5, 1., nullptr);
    EXPECT_DOUBLE_EQ(child->zdom(), 11.);
    EXPECT_TRUE(child->is_finished());
    EXPECT_TRUE(w.all_honored());
    w.set_wet(false);
    w.erode_down_to(10.5, 0., nullptr);
    EXPECT_DOUBLE_EQ(child->active_level(), 10.5);
    EXPECT_FALSE(w.all_honored());
    config.channelDepth = 4.;
    w.set_well_config(config);
    EXPECT_DOUBLE_EQ(child->get_well_config().channelDepth, 4.);
    w.set_flat_delta(2.);
    EXPECT_DOUBLE_EQ(child->get_zbot(), 8.);
    EXPECT_DOUBLE_EQ(child->active_level(), 8.5);
}

TEST_F(WellTest, ChannelPointLink)
{
    MeanderCalculator mc{&params, &tracer};
    const std::vector<double> proportions(MD_NB_CLASS_GR, 1. / MD_NB_CLASS_GR);
    Well w(&params, &tracer);
    build(w);
    w.set_al(2.5);
    {
        ChannelPoint near(&mc, proportions, 10., Point3D(0., 40., 4.), nullptr, nullptr);
        ChannelPoint far(&mc, proportions, 10., Point3D(0., 500., 4.), nullptr, nullptr);
        w.channel_point(&near);
        EXPECT_EQ(near.well(), &w);
        EXPECT_EQ(near.status(), 2);
        EXPECT_DOUBLE_EQ(near.mig_factor(), 0.);
        // A neutral factor still attaches, and the former point is let go.
        w.channel_point(&far);
        EXPECT_EQ(far.status(), 0);
        EXPECT_EQ(far.well(), &w);
        EXPECT_EQ(near.well(), nullptr);
        EXPECT_DOUBLE_EQ(near.mig_factor(), 1.);
    }
    EXPECT_EQ(w.channel_point(), nullptr);
}

TEST_F(WellTest, BinaryRoundTripAndTruncation)
{
    Well w(&params, &tracer);
    build(w);
    dep(w, PB, 0., 1.25);
    w.set_wet(true);
    Well* child = w.new_child();
    child->name("W1-b");
    child->clear_units(-3.);
    child->add_unit(WellUnit(Facies(MP, 3), 0.7, 42));
    child->init(Point2D(5., 6.), Point2D(7., 8.));
    std::ostringstream out;
    w.binary_output(out);
    const std::string bytes = out.str();

    Well r(&params, &tracer);
    std::istringstream in(bytes);
    ASSERT_TRUE(r.binary_input(in));
    EXPECT_EQ(r.name(), "W1");
    EXPECT_EQ(r.geoLocation(), Point2D(1000., 2000.));
    EXPECT_DOUBLE_EQ(r.active_level(), 1.25);
    EXPECT_DOUBLE_EQ(r.zdom(), 1.25);
    EXPECT_TRUE(r.is_wet());
    EXPECT_EQ(r.size(), 5u);
    ASSERT_EQ(r.children().size(), 1u);
    const Well& rc = *r.children()[0];
    EXPECT_EQ(rc.name(), "W1-b");
    EXPECT_EQ(rc.location(), Point2D(7., 8.));
    EXPECT_EQ(rc.unit(0).facies().facies_full_id(), Facies(MP, 3).facies_full_id());
    EXPECT_EQ(rc.unit(0).age(), 42u);
    EXPECT_DOUBLE_EQ(rc.get_zbot(), -3.);
    std::ostringstream again;
    r.binary_output(again);
    EXPECT_EQ(again.str(), bytes);

    for (size_t cut : {size_t(0), size_t(3), size_t(20), bytes.size() / 2, bytes.size() - 1})
    {
        Well t(&params, &tracer);
        t.name("T");
        g_trace.clear();
        std::istringstream part(bytes.substr(0, cut));
        EXPECT_FALSE(t.binary_input(part)) << cut;
        EXPECT_NE(g_trace.find("Binary well file format not correct for well "), std::string::npos);
    }
}

TEST_F(WellTest, NatureJoinsThinChannelFillUpward)
{
    Well w(&params, &tracer);
    stack(w, {{CL, 0.2}, {MP, 0.2}, {PB, 1.}, {CL, 0.2}, {OB, 1.}});
    // Without a threshold every brick asks for its own facies.
    EXPECT_EQ(w.nature(0).family(), CL);
    EXPECT_EQ(w.nature(1).family(), MP);
    set_closure(w, 0.5);
    // Thin fills under fills ask for the first thick one above them.
    EXPECT_EQ(w.nature(0).family(), PB);
    EXPECT_EQ(w.nature(1).family(), PB);
    EXPECT_EQ(w.nature(2).family(), PB);
    // A thin fill under a fine deposit stays what it is.
    EXPECT_EQ(w.nature(3).family(), CL);
}

TEST_F(WellTest, ThinLagInsideABarAgreesOnlyUnderClosure)
{
    // A new bar's lag cutting into the bar the log asks for.
    Well strict(&params, &tracer);
    build(strict);
    EXPECT_EQ(dep(strict, CL, 0., 0.1), "B1");
    EXPECT_DOUBLE_EQ(strict.active_level(), 0.);

    config.closure = 0.3;
    Well w(&params, &tracer);
    build(w, "W2");
    EXPECT_EQ(dep(w, CL, 0., 0.1), "A1");
    EXPECT_DOUBLE_EQ(w.active_level(), 0.1);
    // Thicker than the closure, it is a contradiction again.
    EXPECT_EQ(dep(w, CL, 0.1, 0.6), "B1");
    EXPECT_DOUBLE_EQ(w.active_level(), 0.1);
    // A thin fine bed is no lag: the tolerance is for sands of a channel body only.
    EXPECT_EQ(dep(w, OB, 0.1, 0.2), "B1");
    // The column under a deposit above the level is judged the same way.
    w.set_al(0.);
    DepositionSet lag = column_of(CL, 0.1, PB, 0.9);
    EXPECT_EQ(dep(w, PB, 1., 1.5, 0., &lag), "A3|A1");
    EXPECT_DOUBLE_EQ(w.active_level(), 1.5);
}

TEST_F(WellTest, LoadBuildsBricksFromALog)
{
    GridParams grid(10., 10., 40, 30);
    grid.setLocation(Point3D(1000., 2000., 0.));
    UserClassList classes;
    // Top first: undefined (trimmed), two point bars (joined), an overbank.
    Core log(1105., 2203., 12., "L1");
    log.add(UD, 0.5);
    log.add(PB, 1.);
    log.add(PB, 0.5);
    log.add(OB, 2.);
    Well w(&params, &tracer);
    ASSERT_TRUE(w.load(&params, &tracer, "", log, classes, grid, 5., 1));
    EXPECT_EQ(w.name(), "L1");
    ASSERT_EQ(w.size(), 2u);
    EXPECT_EQ(w.unit(0).facies().family(), OB);
    EXPECT_DOUBLE_EQ(w.unit(1).thickness(), 1.5);
    // Relative elevations: geographic less the reference 5; the trimmed top is 11.5.
    EXPECT_DOUBLE_EQ(w.get_zbot(), 8. - 5.);
    EXPECT_DOUBLE_EQ(w.get_ztop(), 11.5 - 5.);
    EXPECT_DOUBLE_EQ(w.active_level(), w.get_zbot());
    EXPECT_DOUBLE_EQ(w.location().get_abscissa(), 105.);
    EXPECT_DOUBLE_EQ(w.location().get_ordinate(), 203.);
    EXPECT_DOUBLE_EQ(w.geoLocation().get_abscissa(), 1105.);

    g_trace.clear();
    Well far(&params, &tracer);
    EXPECT_FALSE(far.load(&params, &tracer, "FAR", Core(900., 2100., 1., "x"), classes, grid, 0., 2));
    EXPECT_EQ(
        g_trace,
        "#  WARNING  # : Empty well ignored #2\n              : Did you forget to define user classes?\n");
    Core outside(900., 2100., 1., "x");
    outside.add(PB, 1.);
    g_trace.clear();
    EXPECT_FALSE(far.load(&params, &tracer, "FAR", outside, classes, grid, 0., 3));
    EXPECT_EQ(g_trace, "##  ERROR  ## : Well FAR head at [900, 2100, 1]m is not inside the grid!\n");

    // A deviated log crossing two columns gives one well and one more piece.
    Core deviated(1101., 2101., 10., "D");
    deviated.setVertical(false);
    ASSERT_TRUE(deviated.add(PB, 1101., 2101., 8.));
    ASSERT_TRUE(deviated.add(OB, 1121., 2101., 6.));
    CoreList others;
    Well d(&params, &tracer);
    ASSERT_TRUE(d.load(&params, &tracer, "D", deviated, classes, grid, 0., 4, &others));
    EXPECT_EQ(d.size(), 1u);
    EXPECT_EQ(d.unit(0).facies().family(), PB);
    ASSERT_EQ(others.size(), 1);
    EXPECT_EQ(Facies::family(others.at(0).getSample(0).getFacies()), OB);
}

TEST_F(WellTest, ResetFromCopiesStateAndLinkedWells)
{
    Well w(&params, &tracer);
    build(w);
    w.new_child()->name("W1b");
    w.set_al(2.5);
    w.set_wet(true);
    Well copy(&params, &tracer);
    copy.resetFrom(w);
    EXPECT_EQ(copy.name(), "W1");
    EXPECT_EQ(copy.active_brick(), w.active_brick());
    EXPECT_DOUBLE_EQ(copy.active_level(), 2.5);
    EXPECT_TRUE(copy.is_wet());
    ASSERT_EQ(copy.children().size(), 1u);
    EXPECT_EQ(copy.children().front()->name(), "W1b");
    EXPECT_EQ(copy.children().front()->parent(), &copy);
    EXPECT_EQ(copy.size(), w.size());

    auto released = copy.release_children();
    ASSERT_EQ(released.size(), 1u);
    EXPECT_EQ(released.front()->parent(), nullptr);
    EXPECT_TRUE(copy.children().empty());
}

TEST_F(WellTest, DriedLevelClimbsToTheFirstContradiction)
{
    // Log: PB [0,2], OB [2,3], CL [3,4], UD [4,5], PB [5,6].
    for (double pointBar : {2., 2.5})
    {
        Well w(&params, &tracer);
        build(w);
        const DepositionSet column = column_of(PB, pointBar, OB, 3. - pointBar);
        w.set_wet(true);
        // Under the live channel the level stays below its scour reach.
        dep(w, PB, 0., 2., 1., &column);
        EXPECT_NEAR(w.active_level(), 2. + 1. - 0.98 * 3., 1e-9);
        w.set_wet(false);
        if (pointBar == 2.)
        {
            // The whole column agrees: the level reaches its top.
            EXPECT_DOUBLE_EQ(w.active_level(), 3.);
            EXPECT_EQ(w.nb_honored_units(), 2u);
        }
        else
        {
            // The point bar over the overbank brick stops the level on the brick's bottom.
            EXPECT_DOUBLE_EQ(w.active_level(), 2.);
            EXPECT_EQ(w.nb_honored_units(), 1u);
        }
    }
}
