// Avulsions: a levee breached at a chosen bend, on topographies carved so
// that the new course goes where each case needs it, and regional avulsions
// that give up the channel for a new course from the upstream edge.

#include "kernel/network/Network.h"

#include "NetworkParts.h"
#include "TestSupport.h"
#include "kernel/channel/Channel.h"
#include "kernel/channel/WellConfig.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/network/Splay.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"
#include "kernel/wells/Well.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using testing_support::capture;
using testing_support::g_trace;
using testing_support::traced;

namespace
{

constexpr double DX = 10.;
constexpr int NX = 40;
constexpr int NY = 31;
// Row and ordinate of the channel axis.
constexpr int ROW = 15;
constexpr double Y0 = ROW * DX;
// Fall of the valley per cell along the flow, and of the flanks per cell across it.
constexpr double FALL = 0.05;
constexpr double FLANK = 0.3;
// A perturbation far above any mean velocity: the velocity toss always passes.
constexpr double STRONG = 1e6;

typedef std::function<double(int, int)> Surface;

// The channel sits on a ridge; on its lower (-y) side the land falls for
// `depth` rows to a trough, then rises again. The upper side is high.
double ridge(int i, int j, int depth = 5)
{
    const int d = ROW - j;
    double lateral;
    if (d <= 0)
        lateral = -d * 1.0;
    else if (d <= depth)
        lateral = -FLANK * d;
    else
        lateral = -FLANK * depth + FLANK * (d - depth);
    return -FALL * i + lateral;
}

class Avulsion : public ::testing::Test, protected testing_support::NetworkParts
{
protected:
    Avulsion()
    {
        g_trace.clear();
        tracer.setTraceFunction(capture);
        tracer.setTraceLevel(TRACE_DEBUG);
        tracer.setTraceAvuls(true);
        set_channel(24., 3., 300., 1.);
        build(NX, NY);
    }

    void build(int nx, int ny)
    {
        make_domain(nx, ny, DX, Facies(8));
        make_network();
    }

    // True and pseudo elevations, and an erodibility equal to the default one.
    void shape(const Surface& z, double erodibility_ratio = 1.)
    {
        const double e = domain->get_erod_default() * erodibility_ratio;
        for (int j = 0; j < domain->getNy(); j++)
            for (int i = 0; i < domain->getNx(); i++)
            {
                DepositionSet& ds = domain->getObject(i, j);
                ds.set_zbot(std::min(z(i, j), 0.) - 20.);
                ds.set_ztop(z(i, j));
                ds.set_topo_altered(z(i, j));
                ds.set_erod({e}, 1e30, 0.);
            }
        domain->compute_border_zmin();
        domain->compute_border_zmax();
    }

    // A channel through the given points (relative frame), its points then set
    // on the surface of `z` along the axis row, with no perturbation anywhere.
    Channel* lay(const std::vector<Point2D>& polyline, const Surface& z)
    {
        std::vector<Point3D> points;
        for (std::size_t k = 0; k + 1 < polyline.size(); k++)
        {
            const Point2D& a = polyline[k];
            const Point2D& b = polyline[k + 1];
            const int n = std::max(1, static_cast<int>(std::lround(a.distance(b) / DX)));
            for (int s = 0; s < n; s++)
                points.emplace_back(a + (b - a) * (static_cast<double>(s) / n), 0.);
        }
        points.emplace_back(polyline.back(), 0.);
        network->adopt_channel(new Channel(&mc, points));
        network->channel_just_created();
        Channel* channel = network->channel();
        for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        {
            cp->set_elevation(z(static_cast<int>(std::lround(cp->getX() / DX)), ROW));
            cp->flow().u1(0.);
        }
        return channel;
    }

    Channel* straight(const Surface& z) { return lay({Point2D(-30., Y0), Point2D((NX + 2) * DX, Y0)}, z); }

    ChannelPoint* nearest(double x, double y = Y0) const
    {
        ChannelPoint* best = nullptr;
        for (ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
            if (best == nullptr || cp->distance2D(Point2D(x, y)) < best->distance2D(Point2D(x, y)))
                best = cp;
        return best;
    }

    // Makes `cp` the one locus, with the sign that puts the breach on the -y bank.
    void breach_at(ChannelPoint* cp, double strength = STRONG)
    {
        const Channel* channel = network->channel();
        const bool right_low = channel->right_bank_2D(cp).get_ordinate() < cp->getY();
        cp->flow().u1(right_low ? -strength : strength);
    }

    // Bank node A and outer node B of the -y bank at `cp`, as the breach finds them.
    void bank_nodes(const ChannelPoint* cp, int& ia, int& ja, int& ib, int& jb) const
    {
        const Channel* channel = network->channel();
        Point2D bank = channel->right_bank_2D(cp);
        if (bank.get_ordinate() > cp->getY())
            bank = channel->left_bank_2D(cp);
        ia = static_cast<int>(std::lround(bank.get_abscissa() / DX));
        ja = static_cast<int>(std::lround(bank.get_ordinate() / DX));
        Vector2D n(*cp, bank);
        n.normalize();
        n *= std::sqrt(2.) * DX;
        const Point2D b = Point2D(ia * DX, ja * DX) + n;
        ib = static_cast<int>(std::lround(b.get_abscissa() / DX));
        jb = static_cast<int>(std::lround(b.get_ordinate() / DX));
    }

    std::vector<Point3D> snapshot() const
    {
        std::vector<Point3D> points;
        for (const ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
            points.emplace_back(*cp);
        return points;
    }

    void expect_same_course(const std::vector<Point3D>& before) const
    {
        const std::vector<Point3D> after = snapshot();
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t k = 0; k < after.size(); k++)
        {
            EXPECT_EQ(after[k].get_abscissa(), before[k].get_abscissa());
            EXPECT_EQ(after[k].get_ordinate(), before[k].get_ordinate());
        }
    }

    // Units of a family anywhere in the block.
    int count_family(unsigned char family) const
    {
        int n = 0;
        for (int j = 0; j < domain->getNy(); j++)
            for (int i = 0; i < domain->getNx(); i++)
                for (const DepositUnit& unit : domain->getStack(i, j))
                    n += unit.family() == family ? 1 : 0;
        return n;
    }

    void expect_linked() const
    {
        const Channel* channel = network->channel();
        int n = 0;
        for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next(), n++)
            if (cp->next() != nullptr)
            {
                ASSERT_EQ(cp->next()->prev(), cp);
            }
        EXPECT_EQ(n, channel->number_of_points());
    }
};

// The splays are laid by a class of their own, which may still refuse to work.
const std::string INFO = "    Info      : ";
const std::string DEBUG = "    Debug     : ";

} // namespace

TEST_F(Avulsion, NothingWithoutAChannel)
{
    network->local_avulsion(true, 0., 0., true);
    EXPECT_FALSE(network->regional_avulsion(1.));
    EXPECT_FALSE(network->has_channel());
    EXPECT_EQ(network->nb_avulsions(), 0u);
}

TEST_F(Avulsion, BreachLeavesTheChannelForANewCourseDownstream)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    straight(z);
    ChannelPoint* p = nearest(100.);
    breach_at(p);
    const Point2D before_p = *p->prev();
    network->setAge(50);
    network->last_avulsion_iter(20);
    network->avulsion_iter_sum(5);

    network->local_avulsion(true, 0., 0., true);

    EXPECT_TRUE(traced(DEBUG + "     Forced Levee Breach at point: No toss on erodibility and velocity.\n"))
        << g_trace;
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - New path downstream\n")) << g_trace;
    EXPECT_EQ(network->nb_avulsions(), 1u);
    EXPECT_EQ(network->last_avulsion_iter(), 50u);
    EXPECT_EQ(network->avulsion_iter_sum(), 35u);
    EXPECT_EQ(network->nb_chute_cutoffs(), 0u);
    EXPECT_EQ(network->channel()->birth_iter(), 50u);
    // No splay was asked for.
    EXPECT_FALSE(traced("Crevasse Splay"));
    EXPECT_EQ(count_family(4), 0);
    EXPECT_EQ(count_family(6), 0);

    // Upstream of the breach the course stays; below it, it runs down the trough.
    const Channel* channel = network->channel();
    expect_linked();
    EXPECT_NEAR(channel->first()->getY(), Y0, 1e-9);
    bool kept = false;
    for (const ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
    {
        if (cp->distance2D(before_p) < 1e-9)
            kept = true;
        if (cp->getX() > before_p.get_abscissa() + 60.)
        {
            EXPECT_LT(cp->getY(), Y0 - 25.) << cp->getX();
        }
    }
    EXPECT_TRUE(kept);
    EXPECT_GT(channel->last()->getX(), (NX - 1) * DX);
}

TEST_F(Avulsion, LeveeTooHighOrLandNotFallingKeepsTheChannel)
{
    // The channel top 2 m below the bank: the levee is too high.
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    straight(z);
    ChannelPoint* p = nearest(100.);
    breach_at(p);
    p->set_elevation(p->getZ() - 2.);
    std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(DEBUG + "       The levee is too high (")) << g_trace;
    EXPECT_FALSE(traced("Possible Levee Breach"));
    expect_same_course(before);

    // Flat land beside the channel: the outer node is no lower, the levee holds.
    g_trace.clear();
    const Surface flat = [](int i, int) { return -FALL * i; };
    shape(flat);
    straight(flat);
    breach_at(nearest(100.));
    before = snapshot();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(DEBUG + "       The levee is Ok (")) << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);
}

TEST_F(Avulsion, LocusInAMarginIsDroppedWithoutADraw)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    straight(z);
    // Same start twice: no locus at all, then one locus beyond the upstream edge.
    seed.reset(12345);
    network->local_avulsion(true, 0., 0., false);
    const int without = seed.getSeed();
    breach_at(nearest(-20.));
    seed.reset(12345);
    network->local_avulsion(true, 0., 0., false);
    EXPECT_EQ(seed.getSeed(), without);
    EXPECT_FALSE(traced("Possible Levee Breach")) << g_trace;
    EXPECT_FALSE(traced("levee")) << g_trace;
}

TEST_F(Avulsion, TossOnErodibilityUnlessForced)
{
    // No erodibility at the bank: the toss can never pass.
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z, 0.);
    straight(z);
    breach_at(nearest(100.));
    const std::vector<Point3D> before = snapshot();
    network->setAge(77);
    network->local_avulsion(true, 0., 0., false);
    // Nothing changed: the channel was not rebuilt.
    EXPECT_EQ(network->channel()->birth_iter(), 0u);
    EXPECT_TRUE(traced(DEBUG + "     Possible Levee Breach at ")) << g_trace;
    EXPECT_TRUE(traced(DEBUG + "     No Levee Breach at point: Toss on erodibility or velocity.\n"))
        << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);
}

TEST_F(Avulsion, RepulsiveWellPreventsTheBreachUnlessForced)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    Channel* channel = straight(z);
    ChannelPoint* p = nearest(100.);
    breach_at(p);
    // A log with fine overbank at the level of the channel, 55 m from the point.
    params.setCondMigWells(2);
    params.setCondNewAlgo(true);
    WellConfig config;
    config.channelDepth = 3.;
    config.channelWidth = 30.;
    config.leveeWidth = 6.;
    config.influence = 60.;
    Well well(&params, &tracer);
    well.clear_units(p->getZ() - 4.5);
    well.add_unit(WellUnit(Facies(2), 2.));
    well.add_unit(WellUnit(Facies(8), 1.));
    well.add_unit(WellUnit(Facies(2), 4.));
    well.set_well_config(config);
    well.init(Point2D(), Point2D(p->getX(), p->getY() - 55.));
    well.set_al(p->getZ() - 2.);
    ASSERT_LT(well.correct_mig(*p), 1.);
    channel->add_well(&well);

    const std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., false);
    EXPECT_TRUE(traced(DEBUG + "     No Levee Breach at point: Repulsive well too close.\n")) << g_trace;
    EXPECT_FALSE(traced("Toss on erodibility"));
    expect_same_course(before);

    // Forced, the well is not heeded.
    g_trace.clear();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_FALSE(traced("Repulsive well")) << g_trace;
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - New path downstream\n")) << g_trace;
    network->channel()->clear_wells();
}

TEST_F(Avulsion, ForcedBreachStillNeedsANewCourse)
{
    // Every neighbour of the outer node stands far above it: a depression trap.
    const ChannelPoint* p = nullptr;
    const Surface base = [](int i, int j) { return ridge(i, j); };
    shape(base);
    straight(base);
    p = nearest(100.);
    int ia, ja, ib, jb;
    bank_nodes(p, ia, ja, ib, jb);
    const Surface trap = [=](int i, int j)
    {
        const bool around = std::abs(i - ib) <= 1 && std::abs(j - jb) <= 1 && !(i == ib && j == jb);
        return around && !(i == ia && j == ja) ? 10. : ridge(i, j);
    };
    shape(trap);
    breach_at(const_cast<ChannelPoint*>(p));
    const std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(DEBUG + "     Local Avulsion Failure: Depression trap\n")) << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);
}

TEST_F(Avulsion, JoinNextToTheBreachIsRefused)
{
    // Walled in but for a step back onto the channel, beside the breach itself.
    const Surface base = [](int i, int j) { return ridge(i, j); };
    shape(base);
    straight(base);
    const ChannelPoint* p = nearest(100.);
    int ia, ja, ib, jb;
    bank_nodes(p, ia, ja, ib, jb);
    const Surface pit = [=](int i, int j)
    {
        if (i == ib - 1 && j == jb + 1)
            return ridge(ib, jb) - 1.;
        const bool around = std::abs(i - ib) <= 1 && std::abs(j - jb) <= 1 && !(i == ib && j == jb);
        return around && !(i == ia && j == ja) ? 10. : ridge(i, j);
    };
    shape(pit);
    breach_at(const_cast<ChannelPoint*>(p));
    const std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(DEBUG + "     Local Avulsion Attempt: Cutoff\n")) << g_trace;
    EXPECT_TRUE(traced(DEBUG + "   Local Avulsion Failure: Cutoff near levee breach point\n")) << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_chute_cutoffs(), 0u);
}

TEST_F(Avulsion, CourseMeetingTheChannelUpstreamIsRefused)
{
    // Down one reach, back up the valley on a second one, down again on a third:
    // from the second reach the land falls towards the first.
    const Surface z = [](int i, int j) { return -FALL * i + FLANK * (j - ROW); };
    shape(z);
    lay({Point2D(-30., 60.), Point2D(300., 60.), Point2D(300., 150.), Point2D(100., 150.),
         Point2D(100., 240.), Point2D((NX + 2) * DX, 240.)},
        z);
    ChannelPoint* p = nearest(200., 150.);
    for (ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
        cp->set_elevation(z(static_cast<int>(std::lround(cp->getX() / DX)),
                            static_cast<int>(std::lround(cp->getY() / DX))));
    breach_at(p);
    const std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(DEBUG + "   Local Avulsion Failure: Upstream cutoff\n")) << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);
}

namespace
{
// The trough of the ridge, and a channel that comes down into it downstream.
const std::vector<Point2D> RETURNING = {Point2D(-30., Y0), Point2D(300., Y0), Point2D(350., 100.),
                                        Point2D((NX + 2) * DX, 100.)};
} // namespace

TEST_F(Avulsion, NearJoinDownstreamIsAChuteCutoff)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    lay(RETURNING, z);
    ChannelPoint* p = nearest(200.);
    breach_at(p);
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - Chute cutoff (no splay)\n")) << g_trace;
    EXPECT_EQ(network->nb_chute_cutoffs(), 1u);
    EXPECT_EQ(network->nb_avulsions(), 0u);
    // The reach between breach and join is gone: nothing left near (250, Y0).
    expect_linked();
    for (const ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
        EXPECT_GT(cp->distance2D(Point2D(260., Y0)), 20.);
    EXPECT_NEAR(network->channel()->last()->getY(), 100., 1e-6);
}

TEST_F(Avulsion, FarJoinDownstreamIsANewPathJoiningTheChannel)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    lay(RETURNING, z);
    breach_at(nearest(40.));
    network->setAge(9);
    network->local_avulsion(true, 0., 0., true);
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - New path joining current channel\n")) << g_trace;
    EXPECT_EQ(network->nb_avulsions(), 1u);
    EXPECT_EQ(network->nb_chute_cutoffs(), 0u);
    EXPECT_EQ(network->avulsion_iter_sum(), 9u);
    expect_linked();
    for (const ChannelPoint* cp = network->channel()->first(); cp != nullptr; cp = cp->next())
        EXPECT_GT(cp->distance2D(Point2D(200., Y0)), 20.);
    EXPECT_NEAR(network->channel()->last()->getY(), 100., 1e-6);
}

TEST_F(Avulsion, SlopeRatioDecidesUnforcedBreaches)
{
    // The old course drops 1000 m to its end: it keeps the flow.
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    Channel* channel = straight(z);
    ChannelPoint* p = nearest(100.);
    breach_at(p);
    const double xmax = (NX - 1) * DX;
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        if (cp->getX() >= xmax)
            cp->set_elevation(-1000.);
    std::vector<Point3D> before = snapshot();
    network->local_avulsion(true, 0., 0., false);
    EXPECT_TRUE(traced(DEBUG + "   Local Avulsion Success - No new path downstream : Slope ratio too high\n"))
        << g_trace;
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);

    // The old course exactly as steep as the regional slope: its corrected
    // fall is nil, the ratio 0, and the new course is always taken.
    g_trace.clear();
    channel = straight(z);
    p = nearest(100.);
    breach_at(p);
    const ChannelPoint* q = p;
    while (q->getX() < xmax)
        q = q->next();
    const double zq = p->getZ() + domain->get_slope_x() * (q->getX() - p->getX()) +
                      domain->get_slope_y() * (q->getY() - p->getY());
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        if (cp->getX() >= xmax)
            cp->set_elevation(zq);
    network->local_avulsion(true, 0., 0., false);
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - New path downstream\n")) << g_trace;
    EXPECT_EQ(network->nb_avulsions(), 1u);

    // A breach on the last column of the domain: the ratio is 1, the old course stays.
    // The avulsion above filled the old reach: the surface is laid again.
    g_trace.clear();
    shape(z);
    straight(z);
    p = nearest(xmax);
    ASSERT_EQ(p->getX(), xmax);
    breach_at(p);
    before = snapshot();
    network->local_avulsion(true, 0., 0., false);
    EXPECT_TRUE(
        traced(DEBUG + "   Slope ratio at maximal value - Centerline breach point out of the domain!\n"))
        << g_trace;
    EXPECT_TRUE(traced("Slope ratio too high")) << g_trace;
    expect_same_course(before);
}

// ---------------------------------------------------------------------------
// Crevasse splays

TEST_F(Avulsion, ForcedBreachLaysBothSplays)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    straight(z);
    breach_at(nearest(100.));
    // Even with no chance of a second splay, a forced breach lays it.
    network->local_avulsion(false, 0., 0.5, true);
    EXPECT_TRUE(traced(DEBUG + "   Crevasse Splay Type I\n")) << g_trace;
    EXPECT_TRUE(traced(DEBUG + "   Crevasse Splay Type II\n")) << g_trace;
    EXPECT_TRUE(traced(INFO + "   Local Avulsion Success - New path downstream\n")) << g_trace;
    EXPECT_GT(count_family(4), 0);
    EXPECT_GT(count_family(6), 0);
}

TEST_F(Avulsion, SplaysStayWhenTheOldCourseKeepsTheFlow)
{
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z);
    Channel* channel = straight(z);
    breach_at(nearest(100.));
    for (ChannelPoint* cp = channel->first(); cp != nullptr; cp = cp->next())
        if (cp->getX() >= (NX - 1) * DX)
            cp->set_elevation(-1000.);
    const std::vector<Point3D> before = snapshot();
    // No chance of a second splay: the draw would have to exceed 1.
    network->local_avulsion(false, 0., 0.5, false);
    EXPECT_TRUE(traced(DEBUG + "   Crevasse Splay Type I\n")) << g_trace;
    EXPECT_TRUE(traced(DEBUG + "   No Splay II evaluation : User toss\n")) << g_trace;
    EXPECT_FALSE(traced("Crevasse Splay Type II"));
    EXPECT_TRUE(traced("Slope ratio too high")) << g_trace;
    expect_same_course(before);
    EXPECT_GT(count_family(4), 0);
    EXPECT_EQ(count_family(6), 0);
}

// ---------------------------------------------------------------------------
// Regional avulsions

TEST_F(Avulsion, RegionalAvulsionReplacesTheChannel)
{
    // A valley along the old channel: every new course falls into it.
    const Surface z = [](int i, int j) { return -FALL * i + 0.1 * std::abs(j - ROW); };
    shape(z);
    Channel* old = straight(z);
    const Point2D old_last = *old->last();
    network->setAge(30);
    network->last_avulsion_iter(10);
    ASSERT_TRUE(network->regional_avulsion(1.));
    EXPECT_TRUE(traced(DEBUG + "   Attempt for Regional Avulsion Iter 30 #1 from [0, ")) << g_trace;
    EXPECT_NE(network->channel(), nullptr);
    EXPECT_EQ(network->nb_avulsions(), 1u);
    EXPECT_EQ(network->avulsion_iter_sum(), 20u);
    EXPECT_EQ(network->last_avulsion_iter(), 30u);
    expect_linked();
    EXPECT_EQ(network->channel()->birth_iter(), 30u);
    // The new course met the old one and took over its downstream part.
    EXPECT_LT(network->channel()->last()->distance2D(old_last), DX);
    EXPECT_EQ(params.getParamDouble("CHNL_WIDTH"), 24.);
}

TEST_F(Avulsion, FailedRegionalAvulsionKeepsTheScaleChange)
{
    // Nothing erodible: no course can be found from any entry.
    const Surface z = [](int i, int j) { return ridge(i, j); };
    shape(z, 0.);
    straight(z);
    const std::vector<Point3D> before = snapshot();
    const Channel* channel = network->channel();
    EXPECT_FALSE(network->regional_avulsion(1.5));
    EXPECT_EQ(network->channel(), channel);
    expect_same_course(before);
    EXPECT_EQ(network->nb_avulsions(), 0u);
    EXPECT_DOUBLE_EQ(params.getParamDouble("CHNL_WIDTH"), 36.);
    EXPECT_DOUBLE_EQ(params.getParamDouble("CHNL_MAX_DEPTH"), 4.5);
    EXPECT_TRUE(traced(DEBUG + "     Regional Avulsion Failure: Depression trap\n")) << g_trace;
    network->restore_channel_scale();
    EXPECT_DOUBLE_EQ(params.getParamDouble("CHNL_WIDTH"), 24.);
}

TEST_F(Avulsion, RegionalAvulsionAwayFromTheOldChannel)
{
    // The old channel on a high flank, the new courses in a valley far from it.
    const Surface z = [](int i, int j) { return -FALL * i + 0.1 * std::abs(j - 5); };
    auto run = [&](int s)
    {
        build(NX, NY);
        shape(z);
        lay({Point2D(-30., 250.), Point2D((NX + 2) * DX, 250.)}, z);
        seed.reset(s);
        g_trace.clear();
        EXPECT_TRUE(network->regional_avulsion(1.));
        return snapshot();
    };
    const std::vector<Point3D> a = run(4242);
    EXPECT_FALSE(traced("Failure")) << g_trace;
    EXPECT_EQ(network->nb_avulsions(), 1u);
    expect_linked();
    for (const Point3D& p : a)
        EXPECT_LT(p.get_ordinate(), 200.);
    EXPECT_GT(a.back().get_abscissa(), (NX - 1) * DX);
    // The same seed gives the same course.
    const std::vector<Point3D> b = run(4242);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); k++)
    {
        EXPECT_EQ(a[k].get_abscissa(), b[k].get_abscissa());
        EXPECT_EQ(a[k].get_ordinate(), b[k].get_ordinate());
    }
}

TEST_F(Avulsion, BothCoursesInTheMarginsStandOnlyByChance)
{
    // The old channel and the one entry both lie in the lateral margins.
    int refused = 0, taken = 0;
    for (int k = 0; k < 24; k++)
    {
        build(NX, NY);
        // A bank along the top of the grid mirrors into a trough in the margin.
        const Surface z = [](int i, int j) { return -FALL * i + (j == NY - 3 ? 1. : 0.); };
        shape(z);
        lay({Point2D(-30., -25.), Point2D((NX + 2) * DX, -25.)}, z);
        EntryPoints& entries = network->entry_points();
        entries.clear();
        PairTopoIndex entry;
        entry.ix = 0;
        entry.iy = NY + 1;
        entries.push_back(entry);
        // Seeds far apart: nearby seeds give nearby draws at the same rank.
        seed.reset(1 + 104729 * k);
        g_trace.clear();
        const bool replaced = network->regional_avulsion(1.);
        EXPECT_EQ(network->nb_avulsions(), replaced ? 1u : 0u);
        if (traced(DEBUG + "     Regional Avulsion Failure: Both old and new path are in margins\n"))
            ++refused;
        if (replaced)
            ++taken;
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(taken, 0);
}
