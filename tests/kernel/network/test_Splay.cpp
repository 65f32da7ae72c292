#include "kernel/network/Splay.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace
{

using testing_support::assertion_text;
using testing_support::is_assertion_of;

struct Kernel : testing_support::KernelParts
{
    // A flat dry domain at relative elevation 0 with square cells of `d` metres.
    std::unique_ptr<Domain> make(int nx, int ny, double d = 10.)
    {
        return std::make_unique<Domain>(&mc, &seed, &mb, nullptr, d, d, nx, ny, Point2D(0., 0.), 0., 0., 0u,
                                        Facies(8));
    }
};

// Length 100, aspect 0.5, level 1, thickness 2, apex ratio 0.3, neck 0.1, neck length 0.2, sharpness 1.
Splay lobe(Kernel& k, const Point2D& apex = Point2D(0., 0.), const Vector2D& dir = Vector2D(1., 0.),
           double level = 1.)
{
    return Splay(apex, dir, 100., 0.5, level, 2., 0.3, 0.1, 0.2, 1., &k.seed, &k.mc);
}

} // namespace

TEST(Splay, OutlineIsWidestAtTheApexRatio)
{
    Kernel k;
    const Splay s = lobe(k);
    EXPECT_NEAR(s.dilate(30., 0.), 50., 1e-12);
    EXPECT_NEAR(s.dilate(30., 100.), 50., 1e-12);
    EXPECT_NEAR(s.dilate(0., 100.), 0., 1e-12);
    EXPECT_NEAR(s.dilate(100., 100.), 100., 1e-12);
    // Far from the neck the bump vanishes and the half width is A L / 2 plus the neck's share.
    const double b = (1. + std::tanh(-(30. - 20.))) / 2.;
    const double expected = std::sqrt(b / 4. * 100. + (1. - b) * 0.25 * 50. * 50.);
    EXPECT_NEAR(s.ordinate(30., 1.), expected, 1e-9);
    EXPECT_NEAR(s.ordinate(30., 1.), 25., 1e-6);
    // In the neck the half width is n L / 2.
    EXPECT_NEAR(s.bump(-50., 1.), 1., 1e-12);
    EXPECT_NEAR(s.ordinate(-50., 1.), 5., 1e-9);
}

TEST(Splay, ThicknessIsFullAtTheApexAndFallsAwayFromTheAxis)
{
    Kernel k;
    const Splay s = lobe(k);
    EXPECT_DOUBLE_EQ(s.thickness(0., 0.), 2.);
    EXPECT_EQ(s.thickness(100.5, 0.), 0.);
    EXPECT_EQ(s.thickness(-0.5, 0.), 0.);
    EXPECT_EQ(s.thickness(50., 50.1), 0.);
    for (double x = 0.; x <= 100.; x += 2.5)
    {
        double previous = s.thickness(x, 0.);
        for (double y = 0.; y <= 51.; y += 0.5)
        {
            const double th = s.thickness(x, y);
            EXPECT_LE(th, previous + 1e-12) << x << " " << y;
            EXPECT_DOUBLE_EQ(th, s.thickness(x, -y));
            // Twentieths of T only.
            EXPECT_NEAR(th / 0.1, std::round(th / 0.1), 1e-9);
            previous = th;
        }
    }
    // Thinner down the axis too.
    EXPECT_GT(s.thickness(10., 0.), s.thickness(90., 0.));
}

TEST(Splay, GrainSizeRunsBetweenTheClasses)
{
    Kernel k;
    Splay s = lobe(k);
    s.grainsize_distribution(12, 6, 0.5);
    EXPECT_EQ(s.grainsize(1.), Facies::granulo_to_class(Facies::class_to_granulo(12)));
    EXPECT_EQ(s.grainsize(0.), Facies::granulo_to_class(Facies::class_to_granulo(6)));
    EXPECT_EQ(s.grainsize(0.5),
              Facies::granulo_to_class((Facies::class_to_granulo(12) + Facies::class_to_granulo(6)) / 2.));
    for (int n = 0; n < 20; ++n)
        EXPECT_LE(s.grainsize(n / 20.), s.grainsize((n + 1) / 20.));

    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.grainsize(1.1); }), "z_ratio >= 0. && z_ratio <= 1."));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { s.grainsize(-0.1); }), "z_ratio >= 0. && z_ratio <= 1."));
    const std::string limits =
        "grmax <= FACIES_MAX_GRAIN && grmin <= FACIES_MAX_GRAIN && z_halfgr > 0. && z_halfgr < 1.";
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.grainsize_distribution(16, 3, 0.5); }), limits));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.grainsize_distribution(10, 3, 1.); }), limits));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.grainsize_distribution(10, 3, 0.); }), limits));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { s.grainsize_distribution(3, 10, 0.5); }), "grmax >= grmin"));
}

TEST(Splay, DomainElevationIsBilinear)
{
    Kernel k;
    auto dom = k.make(4, 3);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)
            dom->getObject(i, j).set_ztop(2. * i - 3. * j);
    double z = 0.;
    Vector2D slope;
    Splay::domain_elevation(dom.get(), Point2D(15., 12.), z, slope);
    EXPECT_NEAR(z, 2. * 1.5 - 3. * 1.2, 1e-9);
    EXPECT_NEAR(slope.get_abscissa(), -0.2, 1e-9);
    EXPECT_NEAR(slope.get_ordinate(), 0.3, 1e-9);
    Splay::domain_elevation(dom.get(), Point2D(-40., 500.), z, slope);
    EXPECT_NEAR(z, -6., 1e-9);
    EXPECT_EQ(slope.get_abscissa(), 0.);
    EXPECT_EQ(slope.get_ordinate(), 0.);
}

TEST(Splay, UpdateOnAFlatDomainLaysTheLobe)
{
    Kernel k;
    auto dom = k.make(15, 11);
    const Point2D apex(10., 50.);
    Splay s = lobe(k, apex, Vector2D(2., 0.), 5.);
    s.grainsize_distribution(11, 8, 0.5);
    std::vector<IPos> out{IPos{99, 99}};
    s.update(dom.get(), &k.mb, 3, CrevasseII::_fd.id(), &out);
    ASSERT_FALSE(out.empty());
    int laid = 0;
    for (int j = 0; j < 11; ++j)
        for (int i = 0; i < 15; ++i)
        {
            const double x = i * 10. - 10.;
            const double y = j * 10. - 50.;
            const double th = s.thickness(x, y);
            const DepositionSet& set = dom->getObject(i, j);
            // The ground stands below level - T: nothing to scour, the lobe lies on it.
            EXPECT_NEAR(set.get_ztop(), th, 0.011) << i << " " << j;
            EXPECT_EQ(set.is_under_channel(), th > 0.);
            if (th > 0.)
            {
                ++laid;
                EXPECT_EQ(set.get_facies().family(), CrevasseII::_fd.id());
            }
        }
    EXPECT_EQ(static_cast<int>(out.size()), laid);
    for (const IPos& n : out)
        EXPECT_GT(s.thickness(n.x * 10. - 10., n.y * 10. - 50.), 0.);
}

TEST(Splay, NeckIsScouredAndWetNodesAreNotFilled)
{
    Kernel k;
    auto dom = k.make(15, 11);
    Splay s = lobe(k, Point2D(10., 50.), Vector2D(1., 0.), 1.);
    // Neck node (x = 10 from the apex) standing above the level, and a wet node in the lobe.
    dom->getObject(2, 5).set_ztop(4.);
    dom->getObject(6, 5).set_ztop(-3.);
    dom->getObject(6, 5).water_depth(2.);
    dom->getObject(2, 5).water_depth(0.);
    s.update(dom.get(), &k.mb, 2, CrevasseI::_fd.id());
    // Lowered to level - T = -1 then refilled by its share, up to the level at most.
    EXPECT_NEAR(dom->getObject(2, 5).get_ztop(), std::min(-1. + s.thickness(10., 0.), 1.), 0.011);
    EXPECT_EQ(dom->getObject(2, 5).get_facies().family(), CrevasseI::_fd.id());
    EXPECT_NEAR(dom->getObject(6, 5).get_ztop(), -3., 1e-9);
    EXPECT_FALSE(dom->getObject(6, 5).is_under_channel());
}

TEST(Splay, DistributariesFollowTheProbabilityAndTheSeed)
{
    auto run = [](double p, std::vector<IPos>& out, int* count = nullptr)
    {
        Kernel k;
        auto dom = k.make(40, 30, 10.);
        Splay s(Point2D(20., 150.), Vector2D(1., 0.), 300., 0.4, 0., 1., 0.3, 0.1, 0.2, 1., &k.seed, &k.mc);
        s.mature(dom.get(), &k.mb, 4, 500., 0.001, 0.005, 30., p, &out);
        if (count != nullptr)
            *count = s.get_nb_distributaries();
        std::vector<double> tops;
        for (int j = 0; j < 30; ++j)
            for (int i = 0; i < 40; ++i)
                tops.push_back(dom->getObject(i, j).get_ztop());
        return tops;
    };
    std::vector<IPos> out;
    int count = -1;
    const std::vector<double> none = run(0., out, &count);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(out.empty());
    for (double z : none)
        EXPECT_EQ(z, 0.);

    std::vector<IPos> out1, out2;
    const std::vector<double> a = run(1., out1, &count);
    EXPECT_EQ(count, 13);
    const std::vector<double> b = run(1., out2);
    EXPECT_EQ(a, b);
    ASSERT_EQ(out1.size(), out2.size());
    EXPECT_FALSE(out1.empty());
    int cut = 0;
    for (double z : a)
        cut += z < 0. ? 1 : 0;
    EXPECT_GT(cut, 0);
}
