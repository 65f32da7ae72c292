#include "kernel/domain/Domain.h"

#include "ColumnSupport.h"
#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>

using testing_support::build_column;

namespace
{

using testing_support::assertion_text;
using testing_support::capture;
using testing_support::g_trace;
using testing_support::is_assertion_of;

constexpr double ZREF = 100.;
constexpr unsigned char VOID = 255;

struct Kernel : testing_support::KernelParts
{
    Kernel()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        tracer.setTraceLevel(TRACE_DEBUG);
    }
    std::unique_ptr<Domain> make(int nx, int ny, double rotation = 0., const Point2D& origin = Point2D())
    {
        return std::make_unique<Domain>(&mc, &seed, &mb, nullptr, 10., 20., nx, ny, origin, rotation, ZREF,
                                        0u, Facies(8));
    }
};

// Column (0, 0): 2 m of point bar (class 10, age 1) under 1 m of overbank (class 3, age 5),
// base at relative 0, so geographic 100 to 103. Other columns: empty at relative 0.
std::unique_ptr<Domain> two_layer_domain(Kernel& k)
{
    auto dom = k.make(2, 1);
    build_column(dom->getObject(0, 0), 0.,
                 {DepositionUnit(Facies(2, 10), 200, 1), DepositionUnit(Facies(8, 3), 100, 4)});
    return dom;
}

TEST(DomainSampling, VerticalDiscretizationCentresSamplesOnTheBlock)
{
    Kernel k;
    auto dom = two_layer_domain(k);
    Domain::VerticalDiscretizationPolicy policy;

    // Block 100..103 by 0.5: six whole steps, no leftover, centres from 100.25.
    double zmin = 0., zmax = 0.;
    int nz = 0;
    dom->discretize_elevation(0.5, zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 6);
    EXPECT_NEAR(zmin, 100.25, 1e-9);
    EXPECT_NEAR(zmax, 102.75, 1e-9);

    // By 0.8: n = 3, leftover 0.6 > 0.4, so a fourth sample and the grid spreads by 0.3 below.
    dom->discretize_elevation(0.8, zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 4);
    EXPECT_NEAR(zmin, 100. - 0.3 + 0.4, 1e-9);
    EXPECT_NEAR(zmax, zmin + 3 * 0.8, 1e-9);

    // By 0.7: n = 4, leftover 0.2 <= 0.35, so the grid moves up by 0.1.
    dom->discretize_elevation(0.7, zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 4);
    EXPECT_NEAR(zmin, 100. + 0.1 + 0.35, 1e-9);

    // Mode 1: zmin given, count to the top: round((103 - 101 + 0.25) / 0.5) = 5 (4.5 rounds up).
    policy.mode = 1;
    zmin = 101.;
    dom->discretize_elevation(0.5, zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 5);
    EXPECT_NEAR(zmax, 103., 1e-9);

    // Mode 3: nz given, zmin from the block.
    policy.mode = 3;
    policy.nz = 2;
    dom->discretize_elevation(1., zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 2);
    EXPECT_NEAR(zmin, 100.5, 1e-9);
    EXPECT_NEAR(zmax, 101.5, 1e-9);

    // A step larger than the block: mode 0 gives no sample and warns.
    policy.mode = 0;
    g_trace.clear();
    dom->discretize_elevation(7., zmin, zmax, nz, policy);
    EXPECT_EQ(nz, 0);
    EXPECT_NE(g_trace.find("will return 0 sample"), std::string::npos);

    policy.mode = 7;
    EXPECT_EQ(assertion_text([&] { dom->discretize_elevation(1., zmin, zmax, nz, policy); }),
              "Wrong vertical discretization policy");
    EXPECT_TRUE(is_assertion_of(
        assertion_text([&] { dom->discretize_elevation(0., zmin, zmax, nz, policy); }), "dz > 0"));
    // A flat block has no thickness to sample.
    auto flat = k.make(2, 2);
    policy.mode = 0;
    EXPECT_TRUE(is_assertion_of(
        assertion_text([&] { flat->discretize_elevation(1., zmin, zmax, nz, policy); }), "minz < maxz"));
}

TEST(DomainSampling, RegularSamplingGivesFaciesAgeAndGrainAtKnownHeights)
{
    Kernel k;
    auto dom = two_layer_domain(k);
    std::vector<unsigned char> facies;
    std::vector<uint32_t> age;
    std::vector<double> granulo;
    double zmin = 99.5;
    int nz = 5; // samples at 99.5, 100.5, 101.5, 102.5, 103.5
    ASSERT_TRUE(dom->getRegular(0, 1, 0, 0, 1., &facies, &age, &granulo, &zmin, &nz));
    ASSERT_EQ(facies.size(), 10u);
    const std::vector<unsigned char> expected_facies{VOID, 2, 2, 8, VOID, VOID, VOID, VOID, VOID, VOID};
    EXPECT_EQ(facies, expected_facies);
    const std::vector<uint32_t> expected_age{0, 1, 1, 5, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(age, expected_age);
    EXPECT_EQ(granulo[0], -1.);
    EXPECT_DOUBLE_EQ(granulo[1], Facies::class_to_granulo(10));
    EXPECT_DOUBLE_EQ(granulo[3], Facies::class_to_granulo(3));

    // Whole-domain forms agree with the ranged one.
    EXPECT_EQ(dom->getRegularFacies(1., 99.5, 5), expected_facies);
    EXPECT_EQ(dom->getRegularAge(1., 99.5, 5), expected_age);
    EXPECT_EQ(dom->getRegularGrain(1., 99.5, 5), granulo);

    // Without zmin or nz, the block's own centred grid: 100.5, 101.5, 102.5.
    zmin = MP_UNDEF_REAL;
    nz = MP_UNDEF_INT;
    ASSERT_TRUE(dom->getRegularPile(0, 0, 1., &facies, nullptr, nullptr, &zmin, &nz));
    EXPECT_EQ(nz, 3);
    EXPECT_NEAR(zmin, 100.5, 1e-9);
    EXPECT_EQ(facies, (std::vector<unsigned char>{2, 2, 8}));

    // An empty stack gives nz void samples; wrong indices are refused.
    zmin = 100.5;
    nz = 3;
    ASSERT_TRUE(dom->getRegularPile(1, 0, 1., &facies, nullptr, nullptr, &zmin, &nz));
    EXPECT_EQ(facies, std::vector<unsigned char>(3, VOID));
    g_trace.clear();
    EXPECT_FALSE(dom->getRegularPile(2, 0, 1., &facies, nullptr, nullptr, &zmin, &nz));
    EXPECT_NE(g_trace.find("Wrong indices!"), std::string::npos);

    // Columns run i outer, j inner: (0,0), (0,1), (1,0), (1,1).
    auto square = k.make(2, 2);
    build_column(square->getObject(0, 1), 0., {DepositionUnit(Facies(7, 6), 100, 1)});
    zmin = 100.5;
    nz = 1;
    ASSERT_TRUE(square->getRegular(0, 1, 0, 1, 1., &facies, nullptr, nullptr, &zmin, &nz));
    EXPECT_EQ(facies, (std::vector<unsigned char>{VOID, 7, VOID, VOID}));

    // Per-unit lists: bottom first with the age of each base.
    EXPECT_EQ(dom->getAllFacies(), (std::vector<unsigned char>{2, 8}));
    EXPECT_EQ(dom->getAllAge(), (std::vector<unsigned int>{0, 1}));
    EXPECT_EQ(dom->getAllGrainsizeClass(),
              (std::vector<unsigned char>{Facies::granulo_to_class(Facies::class_to_granulo(10)),
                                          Facies::granulo_to_class(Facies::class_to_granulo(3))}));
    ASSERT_EQ(dom->getAllThickness().size(), 2u);
    EXPECT_NEAR(dom->getAllThickness()[0], 2., 1e-9);
}

TEST(DomainSampling, ColumnsBecomeLogsMergingOneFamily)
{
    Kernel k;
    auto dom = k.make(2, 2, 30., Point2D(500., 700.));
    // Bottom up: 1 m point bar class 9, 0.5 m point bar class 11 (one family), 0.005 m overbank, 1 m levee.
    build_column(dom->getObject(1, 1), 0.,
                 {DepositionUnit(Facies(2, 9), 100, 2), DepositionUnit(Facies(2, 11), 50, 3),
                  DepositionUnit(Facies(8, 3), 0, 1), DepositionUnit(Facies(7, 6), 100, 4)});
    Core core;
    ASSERT_TRUE(dom->to_core(1, 1, core, MP_UNDEF_REAL, MP_UNDEF_REAL));
    ASSERT_EQ(core.size(), 2);
    EXPECT_NEAR(core.top_elevation(), ZREF + 2.5, 1e-9);
    const Point2D geo = dom->grid2Geo(1., 1.);
    EXPECT_NEAR(core.top_location().get_abscissa(), geo.get_abscissa(), 1e-9);
    EXPECT_NEAR(core.top_location().get_ordinate(), geo.get_ordinate(), 1e-9);
    const CoreSample& levee = core.getSample(0);
    EXPECT_EQ(levee.getFacies(), 7);
    EXPECT_NEAR(levee.getZ(), ZREF + 1.5, 1e-9);
    EXPECT_EQ(levee.getAge(), 10u);
    const CoreSample& bar = core.getSample(1);
    EXPECT_EQ(bar.getFacies(), 2);
    EXPECT_NEAR(bar.getHeight(), 1.5, 1e-9);
    EXPECT_NEAR(bar.getZ(), ZREF, 1e-9);
    EXPECT_EQ(bar.getGrainClass(), 11); // the class of the upper unit
    EXPECT_EQ(bar.getAge(), 5u);
    EXPECT_EQ(bar.getAttributeText(), "Point Bar / LAPs");

    // Cut to a window and gathered over a range.
    ASSERT_TRUE(dom->to_core(1, 1, core, ZREF + 1., MP_UNDEF_REAL));
    EXPECT_NEAR(core.bottom_elevation(), ZREF + 1., 1e-9);
    CoreList list;
    ASSERT_TRUE(dom->vcollections(list, 0, 1, 1, 1, MP_UNDEF_REAL, MP_UNDEF_REAL));
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list.at(1).getName(), "Well_at_1_1");
    EXPECT_TRUE(list.at(0).empty());

    g_trace.clear();
    EXPECT_FALSE(dom->to_core(2, 0, core, MP_UNDEF_REAL, MP_UNDEF_REAL));
    EXPECT_NE(g_trace.find("Core indices [2, 0] out of range ["), std::string::npos);
}

TEST(DomainSampling, ThicknessMeasuresAndProportions)
{
    Kernel k;
    auto dom = two_layer_domain(k);
    // Column (0,0) holds 3 m, column (1,0) nothing: mean 1.5 m over the block.
    EXPECT_NEAR(dom->volume1D(MP_UNDEF_REAL, MP_UNDEF_REAL), 1.5, 1e-9);
    EXPECT_NEAR(dom->volume1D(ZREF + 2.5, ZREF + 1.), 0.75, 1e-9); // swapped limits
    EXPECT_EQ(dom->volume1D(ZREF + 5., ZREF + 9.), 0.);            // above the block
    EXPECT_EQ(dom->volume1D(ZREF + 1., ZREF + 1.), 0.);
    EXPECT_NEAR(dom->volume1D(Facies(2), MP_UNDEF_REAL, MP_UNDEF_REAL), 1., 1e-9);
    EXPECT_NEAR(dom->volume3D(MP_UNDEF_REAL, MP_UNDEF_REAL), 1.5 * 10. * 20., 1e-6);
    EXPECT_NEAR(dom->getProportionFull(2, MP_UNDEF_REAL, MP_UNDEF_REAL), 2. / 3., 1e-9);
    EXPECT_NEAR(dom->getProportion(8, 0, 0, 0, 0, ZREF + 1., ZREF + 3.), 0.5, 1e-9);
    EXPECT_EQ(dom->getProportion(8, 1, 1, 0, 0, MP_UNDEF_REAL, MP_UNDEF_REAL), 0.);
    g_trace.clear();
    EXPECT_EQ(dom->volume1D(0, 3, 0, 0, MP_UNDEF_REAL, MP_UNDEF_REAL), 0.);
    EXPECT_NE(g_trace.find("Error in volume1D!"), std::string::npos);
}

std::string header_value(const std::string& text, const std::string& key)
{
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(key + " ", 0) == 0)
            return line.substr(key.size() + 1);
    return "<missing>";
}

TEST(DomainSampling, ExportWritesAThreeDimensionalGridOnTheRotatedDomain)
{
    Kernel k;
    auto dom = k.make(2, 2, 30., Point2D(1000., 2000.));
    build_column(dom->getObject(0, 0), 0.,
                 {DepositionUnit(Facies(2, 10), 200, 1), DepositionUnit(Facies(8, 3), 100, 4)});
    testing_support::TempDir dir;
    const std::string path = dir.file("block.f2g");
    ASSERT_TRUE(dom->saveF2G(path, 1., true, true, true, MP_UNDEF_REAL, MP_UNDEF_REAL, "+Y +X +Z"));
    const std::string text = testing_support::read_file(path);
    EXPECT_EQ(header_value(text, "F2G_DIM"), "3");
    EXPECT_EQ(header_value(text, "F2G_LOCATION"), "1000 2000 100");
    EXPECT_EQ(header_value(text, "F2G_ROTATION"), "30");
    EXPECT_EQ(header_value(text, "F2G_ORIGIN"), "0 0 100.5");
    EXPECT_EQ(header_value(text, "F2G_NB_NODES"), "2 2 3");
    EXPECT_EQ(header_value(text, "F2G_LAGS"), "10 20 1");
    EXPECT_EQ(header_value(text, "F2G_NB_VARIABLES"), "3");
    EXPECT_EQ(header_value(text, "F2G_VARIABLE_1"), "Facies");
    EXPECT_EQ(header_value(text, "F2G_VARIABLE_2"), "Grain Size");
    EXPECT_EQ(header_value(text, "F2G_VARIABLE_3"), "Age");
    EXPECT_EQ(header_value(text, "F2G_UNDEFINED_1"), "NA");

    // The grid reads back with the same geometry; void samples are undefined.
    GridReal back;
    ASSERT_TRUE(back.read(path)) << back.getError();
    EXPECT_EQ(back.getNz(), 3);
    EXPECT_NEAR(back.getRotation(), 30., 1e-9);
    double value = 0.;
    ASSERT_TRUE(back.get_at(0, 0, 0, value));
    EXPECT_EQ(value, 2.);
    ASSERT_TRUE(back.get_at(0, 0, 2, value));
    EXPECT_EQ(value, 8.);
    ASSERT_TRUE(back.get_at(1, 0, 0, value));
    EXPECT_EQ(value, back.getUndefinedValue());

    // A sub-range keeps the cells' place through its origin; only age asked gives one variable.
    ASSERT_TRUE(dom->save_simu(path, GRID_FORMAT_F2G, 1., 1, 1, 0, 0, false, false, true, 100.5, 102.5,
                               "+Y +X +Z", "NA"));
    const std::string sub = testing_support::read_file(path);
    EXPECT_EQ(header_value(sub, "F2G_ORIGIN"), "1 0 100.5");
    EXPECT_EQ(header_value(sub, "F2G_VARIABLE_1"), "Age");
    EXPECT_EQ(header_value(sub, "F2G_NB_VARIABLES"), "1");

    g_trace.clear();
    EXPECT_FALSE(dom->saveF2G(path, 0., true, false, false, MP_UNDEF_REAL, MP_UNDEF_REAL, "+Y +X +Z"));
    EXPECT_NE(g_trace.find("Vertical discretization step must be positive"), std::string::npos);
    EXPECT_FALSE(dom->saveF2G(path, 1., true, false, false, 102., 101., "+Y +X +Z"));
    EXPECT_NE(g_trace.find("Maximum elevation must be greater than minimum elevation"), std::string::npos);
    EXPECT_FALSE(dom->saveF2G(dir.file("missing/x.f2g"), 1., true, false, false, MP_UNDEF_REAL, MP_UNDEF_REAL,
                              "+Y +X +Z"));
    EXPECT_NE(g_trace.find("Error while writing simulation file:"), std::string::npos);
}

} // namespace
