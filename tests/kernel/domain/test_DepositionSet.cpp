#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/wells/Well.h"

#include "TestSupport.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;

namespace
{

Facies fam(int family)
{
    return Facies(static_cast<unsigned char>(family));
}

Facies fam(int family, int gr)
{
    return Facies(static_cast<unsigned char>(family), static_cast<unsigned char>(gr));
}

int total_steps(const DepositionSet& s)
{
    int n = 0;
    for (const DepositionUnit& u : s.units())
        n += u.thickness_steps();
    return n;
}

uint32_t sum_deltas(const DepositionSet& s)
{
    uint32_t d = 0;
    for (const DepositionUnit& u : s.units())
        d += u.age_delta();
    return d;
}

// Age at the top of each unit, bottom first.
std::vector<uint32_t> top_ages(const DepositionSet& s)
{
    std::vector<uint32_t> ages(s.size());
    uint32_t a = s.get_age();
    for (std::size_t k = s.size(); k-- > 0;)
    {
        ages[k] = a;
        a -= s.units()[k].age_delta();
    }
    return ages;
}

std::vector<int> steps_of(const DepositionSet& s)
{
    std::vector<int> v;
    for (const DepositionUnit& u : s.units())
        v.push_back(u.thickness_steps());
    return v;
}

std::vector<int> deltas_of(const DepositionSet& s)
{
    std::vector<int> v;
    for (const DepositionUnit& u : s.units())
        v.push_back(u.age_delta());
    return v;
}

std::string bytes_of(const DepositionSet& s)
{
    std::ostringstream out(std::ios::binary);
    s.binary_output(out);
    return out.str();
}

// Small deterministic generator, so that the sequences are the same everywhere.
class Lcg
{
public:
    explicit Lcg(uint64_t seed) : _state(seed) {}
    uint32_t next()
    {
        _state = _state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(_state >> 33);
    }
    double uniform(double lo, double hi) { return lo + (hi - lo) * (next() / 2147483648.0); }
    int below(int n) { return static_cast<int>(next() % static_cast<uint32_t>(n)); }

private:
    uint64_t _state;
};

} // namespace

TEST(DepositionSet, RemainingIsCarriedWithinAFamilyAndDroppedOnAnother)
{
    MassBalance mb(false);
    DepositionSet s;
    s.set_facies(fam(2));
    s.deposit_thickness(0.004, fam(2), 1, &mb);
    EXPECT_TRUE(s.empty());
    EXPECT_NEAR(s.get_remaining(), 0.004, 1e-12);
    EXPECT_EQ(s.get_age(), 0u); // no unit, so the age is not taken
    s.deposit_thickness(0.004, fam(2), 2, &mb);
    EXPECT_TRUE(s.empty());
    EXPECT_NEAR(s.get_remaining(), 0.008, 1e-12);
    s.deposit_thickness(0.004, fam(2), 3, &mb);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(s.units()[0].thickness_steps(), 1);
    EXPECT_NEAR(s.get_remaining(), 0.002, 1e-12);
    EXPECT_EQ(s.get_age(), 3u);
    EXPECT_EQ(s.units()[0].age_delta(), 3);
    EXPECT_NEAR(s.get_ztop(), 0.01, 1e-12);

    // Another family: nothing adds up and the stack's facies never changes.
    DepositionSet o;
    o.set_facies(fam(8));
    for (int k = 0; k < 3; ++k)
    {
        o.deposit_thickness(0.004, fam(2), 1, &mb);
        EXPECT_NEAR(o.get_remaining(), 0.004, 1e-12);
        EXPECT_EQ(o.get_facies().family(), 8);
    }
    EXPECT_TRUE(o.empty());

    // A family change drops what was carried.
    s.deposit_thickness(0.009, fam(2), 4, &mb);
    EXPECT_NEAR(s.get_remaining(), 0.001, 1e-12);
    s.deposit_thickness(0.0095, fam(8), 5, &mb);
    EXPECT_EQ(s.size(), 2u) << "0.002 + 0.009 made one step";
    EXPECT_NEAR(s.get_remaining(), 0.0095, 1e-12);

    // Floors, not rounding: 0.0299 makes two steps and carries the rest.
    DepositionSet f;
    f.deposit_thickness(0.0299, fam(7), 1, &mb);
    ASSERT_EQ(steps_of(f), std::vector<int>({2}));
    EXPECT_NEAR(f.get_remaining(), 0.0099, 1e-12);
    f.deposit_thickness(0.0002, fam(7), 2, &mb);
    EXPECT_EQ(steps_of(f), std::vector<int>({2, 1}));

    // Any erosion call with th >= 0 clears the carry, even of no step.
    f.deposit_thickness(0.005, fam(7), 3, &mb);
    EXPECT_GT(f.get_remaining(), 0.);
    f.erode_thickness(0., &mb);
    EXPECT_EQ(f.get_remaining(), 0.);
    f.deposit_thickness(0.005, fam(7), 3, &mb);
    f.erode_thickness(-1., &mb);
    EXPECT_GT(f.get_remaining(), 0.) << "negative erosion does nothing";

    // Non-positive deposits do nothing at all.
    const std::string before = bytes_of(f);
    f.deposit_thickness(0., fam(7), 9, &mb);
    f.deposit_thickness(-3., fam(7), 9, &mb);
    f.deposit_up_to(f.get_ztop() - 1., fam(7), 9, &mb);
    EXPECT_EQ(bytes_of(f), before);
}

TEST(DepositionSet, LongDepositsSplitAndLongGapsBecomeHiatusUnits)
{
    MassBalance mb(false);
    DepositionSet s(-4.);
    EXPECT_EQ(s.oldest_deposit_age(), MP_UNDEF_UINT) << "nothing deposited yet";
    s.deposit_thickness(6., fam(2), 7, &mb);
    EXPECT_EQ(s.oldest_deposit_age(), 7u);
    EXPECT_EQ(steps_of(s), std::vector<int>({255, 255, 90}));
    EXPECT_EQ(deltas_of(s), std::vector<int>({7, 0, 0}));
    EXPECT_NEAR(s.get_ztop(), 2., 1e-9);
    EXPECT_EQ(s.get_facies().facies_full_id(), fam(2).facies_full_id());

    // 600 iterations later: two empty units of 255, then a delta of 90.
    s.deposit_thickness(0.5, fam(8), 607, &mb);
    EXPECT_EQ(steps_of(s), std::vector<int>({255, 255, 90, 0, 0, 50}));
    EXPECT_EQ(deltas_of(s), std::vector<int>({7, 0, 0, 255, 255, 90}));
    EXPECT_EQ(s.units()[3].facies().family(), 8);
    EXPECT_EQ(top_ages(s).back(), 607u);
    EXPECT_EQ(s.oldest_deposit_age(), 7u);
    // Hiatus units below the first deposit hold no sediment: the deposit's age counts.
    DepositionSet late(0.);
    late.deposit_thickness(0.5, fam(8), 600, &mb);
    EXPECT_EQ(deltas_of(late), std::vector<int>({255, 255, 90}));
    EXPECT_EQ(late.oldest_deposit_age(), 600u);

    // A gap of exactly 255 fits in the unit; 510 is all hiatus.
    s.deposit_thickness(0.1, fam(8), 862, &mb);
    EXPECT_EQ(s.units().back().age_delta(), 255);
    const std::size_t n = s.size();
    s.deposit_thickness(0.1, fam(8), 1372, &mb);
    ASSERT_EQ(s.size(), n + 3);
    EXPECT_EQ(s.units()[n].age_delta(), 255);
    EXPECT_EQ(s.units()[n + 1].age_delta(), 255);
    EXPECT_EQ(s.units()[n + 2].age_delta(), 0);

    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { s.deposit_thickness(1., fam(8), 1000, &mb); }), "a >= _age"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.stack_hiatus(300, fam(8)); }), "t % T == 0"));

    // The forced form sets the class of every unit of the deposit.
    s.deposit_thickness(3., fam(1), 0.5, 1400, &mb);
    EXPECT_EQ(s.units().back().facies().granulo_class(), 7);
    EXPECT_EQ(s.units()[s.size() - 2].facies().granulo_class(), 7);
    EXPECT_EQ(s.get_facies().granulo_class(), 7);

    // deposit_up_to fills up to the level.
    s.deposit_up_to(s.get_ztop() + 0.37, fam(4), 1401, &mb);
    EXPECT_EQ(s.units().back().thickness_steps(), 37);
}

TEST(DepositionSet, ErosionFromTheTop)
{
    MassBalance mb(false);
    DepositionSet s(10.);
    s.deposit_thickness(1., fam(2), 5, &mb);   // 100 steps, top age 5
    s.deposit_thickness(0.5, fam(8), 9, &mb);  // 50 steps, top age 9
    s.deposit_thickness(0.3, fam(7), 20, &mb); // 30 steps, top age 20

    // Truncation: 0.019 m is one step.
    s.erode_thickness(0.019, &mb);
    EXPECT_EQ(steps_of(s), std::vector<int>({100, 50, 29}));
    EXPECT_EQ(s.get_age(), 20u) << "a unit cut in part keeps its age";

    // Through a whole unit into the next.
    s.erode_thickness(0.39, &mb);
    EXPECT_EQ(steps_of(s), std::vector<int>({100, 40}));
    EXPECT_EQ(s.get_age(), 9u);
    EXPECT_EQ(s.get_facies().family(), 8);
    EXPECT_NEAR(s.get_ztop(), 11.4, 1e-9);
    EXPECT_NEAR(s.get_zbot(), 10., 1e-12);

    // Exactly to a unit's top.
    s.erode_down_to(11., &mb);
    EXPECT_EQ(steps_of(s), std::vector<int>({100}));
    EXPECT_EQ(s.get_age(), 5u);
    EXPECT_EQ(s.oldest_deposit_age(), 5u);
    EXPECT_EQ(s.get_facies().family(), 2);

    // n = 0 restores the facies from the stack.
    s.set_facies(fam(11));
    s.erode_thickness(0.004, &mb);
    EXPECT_EQ(s.get_facies().family(), 2);

    // Below the units: no unit, undefined facies, bottom follows the top, age of the old bottom.
    s.erode_thickness(3., &mb);
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(s.get_facies().facies_full_id(), 0);
    EXPECT_NEAR(s.get_ztop(), 8., 1e-9);
    EXPECT_EQ(s.get_zbot(), s.get_ztop());
    EXPECT_EQ(s.get_age(), 0u);
    EXPECT_EQ(s.oldest_deposit_age(), MP_UNDEF_UINT);

    // An empty column is cut into the basement.
    s.erode_down_to(7.5, &mb);
    EXPECT_NEAR(s.get_ztop(), 7.5, 1e-9);
    EXPECT_EQ(s.get_zbot(), s.get_ztop());

    // An age delta above the age is a broken stack.
    DepositionSet b;
    b.deposit_thickness(0.2, fam(2), 10, &mb);
    b.set_age(4);
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { b.erode_thickness(0.5, &mb); }), "du.age_delta() <= _age"));
}

TEST(DepositionSet, ErosionFromTheBottom)
{
    MassBalance mb(true);
    DepositionSet s(0.);
    s.deposit_thickness(0.5, fam(8), 3, &mb);  // 50
    s.deposit_thickness(0.2, fam(7), 8, &mb);  // 20
    s.deposit_thickness(0.3, fam(6), 12, &mb); // 30
    const MassBalance booked = mb;

    s.erode_thickness_from_bottom(0.2);
    EXPECT_EQ(steps_of(s), std::vector<int>({30, 20, 30}));
    EXPECT_NEAR(s.get_zbot(), 0.2, 1e-12);
    s.erode_up_to(0.8);
    EXPECT_EQ(steps_of(s), std::vector<int>({20}));
    EXPECT_EQ(deltas_of(s), std::vector<int>({4}));
    EXPECT_EQ(s.get_age(), 12u);
    EXPECT_EQ(s.oldest_deposit_age(), 12u) << "the older units went with the base";
    EXPECT_EQ(s.get_facies().family(), 6);
    EXPECT_NEAR(s.get_zbot(), 0.8, 1e-9);
    EXPECT_NEAR(s.get_ztop(), 1., 1e-9);
    EXPECT_EQ(mb.getEroded(), booked.getEroded()) << "no mass is booked from below";

    // Past the top: the column runs empty and the carry loses the gap.
    s.deposit_thickness(0.0049, fam(6), 13, &mb);
    EXPECT_NEAR(s.get_remaining(), 0.0049, 1e-12);
    s.erode_thickness_from_bottom(0.203);
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(s.get_facies().facies_full_id(), 0);
    EXPECT_NEAR(s.get_zbot(), 1.0, 1e-9); // 0.203 truncates to 20 steps
    EXPECT_EQ(s.get_ztop(), s.get_zbot());
    EXPECT_EQ(s.get_age(), 12u);

    DepositionSet g(0.);
    g.deposit_thickness(0.1, fam(6), 1, &mb);
    g.deposit_thickness(0.0049, fam(6), 2, &mb);
    g.erode_thickness_from_bottom(0.125); // 2 steps beyond the top
    EXPECT_NEAR(g.get_zbot(), 0.12, 1e-12);
    EXPECT_EQ(g.get_ztop(), g.get_zbot());
    EXPECT_EQ(g.get_remaining(), 0.) << "the carry is less than the gap";

    DepositionSet h(0.);
    h.deposit_thickness(0.1, fam(6), 1, &mb);
    h.deposit_thickness(0.009, fam(6), 2, &mb);
    h.set_ztop(0.095); // a column whose units outreach its frame
    h.erode_thickness_from_bottom(0.105);
    EXPECT_NEAR(h.get_remaining(), 0.009 - 0.005, 1e-12) << "the carry covers the gap";
    EXPECT_NEAR(h.get_ztop(), 0.1, 1e-12);

    // Negative thickness: nothing.
    const std::string before = bytes_of(h);
    h.erode_thickness_from_bottom(-1.);
    EXPECT_EQ(bytes_of(h), before);
}

TEST(DepositionSet, ReplaceFaciesCountsMetresAsSteps)
{
    MassBalance mb(false);
    DepositionSet s(2.);
    s.deposit_thickness(3.7, fam(2), 600, &mb);
    s.replace_facies(fam(8));
    // 600 = 2 * 255 + 90; 3.7 m high gives 3 steps of 0.01 m.
    EXPECT_EQ(steps_of(s), std::vector<int>({0, 0, 3}));
    EXPECT_EQ(deltas_of(s), std::vector<int>({255, 255, 90}));
    for (const DepositionUnit& u : s.units())
        EXPECT_EQ(u.facies().facies_full_id(), fam(8).facies_full_id());
    EXPECT_NEAR(s.get_zbot(), 2., 1e-12);
    EXPECT_NEAR(s.get_ztop(), 5.7, 1e-9);

    // 300 m high: units of 255 and 45 steps, the first with the whole age.
    DepositionSet t(0.);
    t.deposit_thickness(0.5, fam(2), 40, &mb);
    t.set_ztop(300.);
    t.replace_facies(fam(9));
    EXPECT_EQ(steps_of(t), std::vector<int>({255, 45}));
    EXPECT_EQ(deltas_of(t), std::vector<int>({40, 0}));

    // Below one metre nothing is left; an empty stack stays as it is.
    DepositionSet u(0.);
    u.deposit_thickness(0.8, fam(2), 10, &mb);
    u.replace_facies(fam(9));
    EXPECT_TRUE(u.empty());
    EXPECT_NEAR(u.get_ztop(), 0.8, 1e-12);
    const std::string before = bytes_of(u);
    u.replace_facies(fam(3));
    EXPECT_EQ(bytes_of(u), before);
}

TEST(DepositionSet, RandomSequencesKeepUnitsElevationsAndAges)
{
    MassBalance mb(false);
    Lcg rng(20240611);
    std::vector<DepositionSet> stacks(8, DepositionSet(-20.));
    std::vector<uint32_t> clock(stacks.size(), 0);
    const std::array<uint32_t, 9> gaps = {0, 1, 3, 254, 255, 256, 509, 600, 1021};

    for (int step = 0; step < 20000; ++step)
    {
        const std::size_t k = static_cast<std::size_t>(rng.below(static_cast<int>(stacks.size())));
        DepositionSet& s = stacks[k];
        const std::vector<uint32_t> ages_before = top_ages(s);
        const std::size_t size_before = s.size();
        const uint32_t bottom_age_before = s.get_age() - sum_deltas(s);
        const int op = rng.below(10);
        SCOPED_TRACE("step " + std::to_string(step) + " op " + std::to_string(op));

        if (op < 5)
        {
            clock[k] += gaps[rng.below(static_cast<int>(gaps.size()))];
            const double th = rng.below(8) == 0 ? rng.uniform(-0.02, 0.012) : rng.uniform(0., 6.);
            const Facies f = fam(1 + rng.below(13));
            const uint32_t age_before = s.get_age();
            if (op == 4)
                s.deposit_up_to(s.get_ztop() + th, f, clock[k], &mb);
            else
                s.deposit_thickness(th, f, clock[k], &mb);
            EXPECT_GE(s.get_remaining(), 0.);
            EXPECT_LT(s.get_remaining(), DepositionUnit::_thratio);
            if (s.size() > size_before)
            {
                EXPECT_EQ(s.get_age(), clock[k]);
                EXPECT_EQ(s.get_facies(), f);
                const std::vector<uint32_t> ages = top_ages(s);
                for (std::size_t u = 0; u < size_before; ++u)
                    ASSERT_EQ(ages[u], ages_before[u]);
                EXPECT_EQ(ages.back(), clock[k]);
            }
            else
            {
                EXPECT_EQ(s.get_age(), age_before);
            }
        }
        else if (op < 9)
        {
            const double th = op == 8 ? rng.uniform(0., 40.) : rng.uniform(-0.05, 3.);
            s.erode_thickness(th, &mb);
            if (th >= 0.)
            {
                EXPECT_EQ(s.get_remaining(), 0.);
            }
            const std::vector<uint32_t> ages = top_ages(s);
            ASSERT_LE(s.size(), size_before);
            for (std::size_t u = 0; u < s.size(); ++u)
                ASSERT_EQ(ages[u], ages_before[u]) << "unit " << u;
            if (s.empty() && size_before > 0)
            {
                EXPECT_EQ(s.get_age(), bottom_age_before);
            }
            if (!s.empty())
            {
                EXPECT_EQ(s.get_facies().facies_full_id(), s.units().back().facies().facies_full_id());
            }
        }
        else
        {
            const uint32_t age_before = s.get_age();
            s.erode_thickness_from_bottom(rng.uniform(-0.1, 1.5));
            EXPECT_EQ(s.get_age(), age_before);
            const std::vector<uint32_t> ages = top_ages(s);
            const std::size_t removed = size_before - s.size();
            for (std::size_t u = 0; u < s.size(); ++u)
                ASSERT_EQ(ages[u], ages_before[u + removed]);
        }

        // Elevations and units agree, whatever happened.
        ASSERT_NEAR(total_steps(s) * DepositionUnit::_thratio, s.get_ztop() - s.get_zbot(), 1e-6);
        ASSERT_LE(s.get_zbot(), s.get_ztop());
        ASSERT_LE(sum_deltas(s), s.get_age());
    }
}

TEST(DepositionSet, ActiveAccountConservesEachClass)
{
    // Thicknesses are multiples of 0.25 m, so every step count is exact.
    MassBalance mb(true);
    std::vector<double> volumes(MD_NB_CLASS_GR, 0.);
    volumes[14] = 2.;
    volumes[11] = 1.5;
    volumes[6] = 0.75;
    mb.setInitialVolume(volumes);

    Lcg rng(7);
    std::vector<DepositionSet> stacks(6, DepositionSet(0.));
    uint32_t age = 0;
    const int fills[] = {1, 2, 3, 9, 10};
    for (int step = 0; step < 4000; ++step)
    {
        DepositionSet& s = stacks[static_cast<std::size_t>(rng.below(6))];
        age += static_cast<uint32_t>(rng.below(300));
        const double th = 0.25 * (1 + rng.below(10));
        const int op = rng.below(6);
        if (op < 2)
            s.deposit_thickness(th, fam(fills[rng.below(5)]), age, &mb);
        else if (op == 2)
            s.deposit_thickness(th, fam(4 + rng.below(9)), age, &mb); // includes wetland, draping, pelagic
        else if (op == 3)
            s.erode_down_to(s.get_ztop() - th, &mb);
        else
            s.erode_thickness(th * (1 + rng.below(3)), &mb);
    }

    std::array<long, MD_NB_CLASS_GR> held{};
    for (const DepositionSet& s : stacks)
        for (const DepositionUnit& u : s.units())
        {
            const int f = u.facies().family();
            if (f < 11)
                held[u.facies().granulo_class()] += u.thickness_steps();
        }
    double moved = 0.;
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
    {
        EXPECT_NEAR(mb.getDeposited()[c] - mb.getEroded()[c], held[c] * DepositionUnit::_thratio, 1e-9) << c;
        EXPECT_NEAR(mb.getAvailable()[c], mb.getInput()[c] + mb.getEroded()[c] - mb.getDeposited()[c], 1e-9);
        moved += mb.getEroded()[c];
    }
    EXPECT_GT(moved, 100.) << "the sequence must erode and redeposit a lot";
}

TEST(DepositionSet, ChannelFillTakesWhatErosionMadeAvailableCoarsestFirst)
{
    MassBalance mb(false);
    std::vector<double> volumes(MD_NB_CLASS_GR, 0.);
    volumes[14] = 0.25;
    mb.setInitialVolume(volumes);

    DepositionSet s(0.);
    s.deposit_thickness(1., fam(8, 5), 1, &mb); // not booked while inactive
    mb.setActive(true);
    s.erode_thickness(0.5, &mb);              // 0.5 m of class 5 available
    s.deposit_thickness(1.5, fam(3), 2, &mb); // sand plug: 14, 5, then debt on 0
    ASSERT_EQ(steps_of(s), std::vector<int>({50, 25, 50, 75}));
    EXPECT_EQ(s.units()[1].facies().granulo_class(), 14);
    EXPECT_EQ(s.units()[2].facies().granulo_class(), 5);
    EXPECT_EQ(s.units()[3].facies().granulo_class(), 0);
    EXPECT_EQ(deltas_of(s), std::vector<int>({1, 1, 0, 0}));
    EXPECT_EQ(s.get_facies().facies_full_id(), fam(3, 0).facies_full_id());
    EXPECT_NEAR(s.get_ztop(), 2., 1e-9);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[0], -0.75);
}

TEST(DepositionSet, QueriesOnAConstructedColumn)
{
    MassBalance mb(false);
    DepositionSet s(-5.);
    s.set_zref(100.);
    s.set_flat_delta(2.); // relative frame moves down by 2: bottom at -7, geographic 95
    EXPECT_NEAR(s.get_zbot(), -7., 1e-12);
    s.deposit_thickness(1., fam(2, 10), 10, &mb); // geo 95..96, top age 10
    s.deposit_thickness(0.5, fam(8, 3), 14, &mb); // 96..96.5, top age 14
    s.deposit_thickness(2., fam(2, 12), 30, &mb); // 96.5..98.5, top age 30
    s.water_depth(1.5);
    EXPECT_NEAR(s.get_topo_geo(false), 98.5, 1e-9);
    EXPECT_NEAR(s.get_topo_geo(true), 100., 1e-9);
    EXPECT_NEAR(s.get_topo_rel(true), -3.5 + 1.5, 1e-9);

    Facies f;
    uint32_t a = 0;
    s.slice_info(96.2, f, a);
    EXPECT_EQ(f.family(), 8);
    EXPECT_EQ(a, 14u);
    s.slice_info(96.5, f, a); // on a unit's base: that unit
    EXPECT_EQ(f.granulo_class(), 12);
    EXPECT_EQ(a, 30u);
    s.slice_info(95.01, f, a);
    EXPECT_EQ(f.granulo_class(), 10);
    EXPECT_EQ(a, 10u);
    for (double z : {98.5, 99., 94.99})
    {
        s.slice_info(z, f, a);
        EXPECT_EQ(f.facies_full_id(), 0) << z;
        EXPECT_EQ(a, 30u);
    }

    double z = 0.;
    f = fam(5);
    s.age_info(14, z, f);
    EXPECT_NEAR(z, 96.5, 1e-9);
    EXPECT_EQ(f.family(), 5) << "the facies is left untouched";
    s.age_info(20, z, f);
    EXPECT_NEAR(z, 96.5, 1e-9);
    s.age_info(10, z, f); // exactly the first unit's top
    EXPECT_NEAR(z, 96., 1e-9);
    s.age_info(9, z, f); // below it
    EXPECT_EQ(z, 1e30);
    EXPECT_EQ(f.facies_full_id(), 0);
    s.age_info(0, z, f);
    EXPECT_EQ(z, 1e30);
    s.age_info(30, z, f);
    EXPECT_NEAR(z, 98.5, 1e-9);
    EXPECT_EQ(f.granulo_class(), 12);

    // Relative limits: bottom at -7, units -7..-6 PB, -6..-5.5 OB, -5.5..-3.5 PB.
    EXPECT_NEAR(s.cumulative_thickness(fam(2), -6.5, -4.), 0.5 + 1.5, 1e-9);
    EXPECT_NEAR(s.cumulative_thickness(fam(2), -4., -6.5), 2., 1e-9);
    EXPECT_NEAR(s.cumulative_thickness(fam(8), -100., 100.), 0.5, 1e-9);
    EXPECT_EQ(s.cumulative_thickness(fam(2), -5., -5.), 0.);
    EXPECT_EQ(s.cumulative_thickness(fam(2), 0., 10.), 0.);

    const double g10 = Facies::class_to_granulo(10), g3 = Facies::class_to_granulo(3),
                 g12 = Facies::class_to_granulo(12);
    EXPECT_NEAR(s.mean_granulo(-6.5, -5.), (0.5 * g10 + 0.5 * g3 + 0.5 * g12) / 1.5, 1e-12);
    EXPECT_NEAR(s.mean_granulo(-8., -6.5), g10, 1e-12) << "below the units is left out";
    EXPECT_NEAR(s.mean_granulo(-4., 10.), g12, 1e-12) << "above the top is left out";
    EXPECT_EQ(s.mean_granulo(0., 1.), 1e30);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.mean_granulo(1., 1.); }), "dist > 0."));

    const std::vector<DepositUnit> units = s.get_irregular();
    ASSERT_EQ(units.size(), 3u);
    const DepositUnit expected[3] = {DepositUnit(2, 1., 0, g10), DepositUnit(8, 0.5, 10, g3),
                                     DepositUnit(2, 2., 14, g12)};
    for (int k = 0; k < 3; ++k)
    {
        EXPECT_EQ(units[k].family(), expected[k].family());
        EXPECT_NEAR(units[k].thickness(), expected[k].thickness(), 1e-12);
        EXPECT_EQ(units[k].age(), expected[k].age());
        EXPECT_EQ(units[k].granulo(), expected[k].granulo());
    }

    // Samples every 0.5 m from 94.25: two below, then the units, then above the top.
    std::vector<unsigned char> fv;
    std::vector<uint32_t> av;
    std::vector<double> gv;
    s.get_regular(94.25, 10, 0.5, &fv, &av, &gv, false);
    EXPECT_EQ(fv, std::vector<unsigned char>({255, 255, 2, 2, 8, 2, 2, 2, 2, 255}));
    EXPECT_EQ(av, std::vector<uint32_t>({0, 0, 10, 10, 14, 30, 30, 30, 30, 0}));
    EXPECT_EQ(gv, std::vector<double>({-1, -1, g10, g10, g3, g12, g12, g12, g12, -1}));
    // Each unit's limit loses the tolerance again: just under a top is already the unit above.
    s.get_regular(96. - 1.5e-6, 1, 0.5, &fv, &av, nullptr, false);
    EXPECT_EQ(fv, std::vector<unsigned char>({8}));
    s.get_regular(96. - 2.5e-6, 1, 0.5, &fv, &av, nullptr, false);
    EXPECT_EQ(fv, std::vector<unsigned char>({2}));
    s.get_regular(97., 2, 0.5, &fv, nullptr, nullptr, true);
    EXPECT_EQ(fv.size(), 3u);
    EXPECT_EQ(av.size(), 1u);
    s.get_regular(97., 0, 0.5, &fv, &av, nullptr, false);
    EXPECT_TRUE(fv.empty());
    EXPECT_TRUE(av.empty());
}

TEST(DepositionSet, EmptyColumnQueries)
{
    DepositionSet s(3.);
    Facies f = fam(4);
    uint32_t a = 99;
    s.set_age(12);
    s.slice_info(3., f, a);
    EXPECT_EQ(f.facies_full_id(), 0);
    EXPECT_EQ(a, 12u);
    double z = 0.;
    s.age_info(5, z, f);
    EXPECT_EQ(z, 1e30);
    std::vector<unsigned char> fv;
    std::vector<uint32_t> av;
    std::vector<double> gv;
    s.get_regular(0., 7, 1., &fv, &av, &gv, false);
    EXPECT_EQ(fv, std::vector<unsigned char>(7, 255));
    EXPECT_EQ(av, std::vector<uint32_t>(7, 0));
    EXPECT_EQ(gv, std::vector<double>(7, -1.));
    EXPECT_TRUE(s.get_irregular().empty());
    EXPECT_EQ(s.mean_granulo(0., 10.), 1e30);
}

TEST(DepositionSet, ErodibilityTectonicsWaterAndPlacement)
{
    MassBalance mb(false);
    DepositionSet s(-12.);
    EXPECT_EQ(s.get_erodibility(), 1e30);
    s.set_erod({0.5, 1., 2., 4.}, 2., -10.);
    EXPECT_EQ(s.get_erod_index(), 0) << "below slice 0";
    s.deposit_up_to(-9.5, fam(8), 1, &mb);
    EXPECT_EQ(s.get_erod_index(), 0);
    s.deposit_up_to(-7.9, fam(8), 2, &mb);
    EXPECT_EQ(s.get_erod_index(), 1);
    EXPECT_EQ(s.get_erodibility(), 1.);
    s.deposit_up_to(30., fam(8), 3, &mb);
    EXPECT_EQ(s.get_erod_index(), 3);
    s.erode_down_to(-5.5, &mb);
    EXPECT_EQ(s.get_erod_index(), 2);
    s.erode_up_to(-11.); // the base rises, the top stays
    EXPECT_EQ(s.get_erod_index(), 2);

    // Tectonics moves the frame, not the units nor the slice in force.
    s.set_tecto(0.002);
    const std::size_t n = s.size();
    const double top = s.get_ztop(), bottom = s.get_zbot();
    s.apply_tecto(1000);
    EXPECT_NEAR(s.get_ztop(), top + 2., 1e-9);
    EXPECT_NEAR(s.get_zbot(), bottom + 2., 1e-9);
    EXPECT_EQ(s.size(), n);
    EXPECT_EQ(s.get_erod_index(), 2);
    s.update_erodibility();
    EXPECT_EQ(s.get_erod_index(), 3);

    EXPECT_TRUE(is_assertion_of(assertion_text([&] { s.water_depth(-1.); }), "wd >= 0."));
    s.water_depth(0.);
    EXPECT_EQ(s.water_depth(), 0.);

    // Placement setters keep their collection behaviour.
    s.set_zref(50.);
    s.set_zul_geo(60.);
    EXPECT_NEAR(s.get_zul(), 10., 1e-12);
    s.set_flat_delta(1.);
    EXPECT_NEAR(s.get_ztop(), top + 1., 1e-9);
    EXPECT_NEAR(s.get_zul(), 10., 1e-12);
    s.set_zul_rel(3.);
    EXPECT_EQ(s.get_zul(), 3.);

    // The well link is stored, told the placement, cleared, and never copied by resetFrom.
    Tracer tracer;
    Parameters params(&tracer);
    Well well(&params, &tracer);
    Well* w = &well;
    s.well(w);
    EXPECT_EQ(s.well(), w);
    s.set_zul_rel(4.);
    EXPECT_EQ(well.get_zul(), 4.);
    DepositionSet copy;
    copy.resetFrom(s);
    EXPECT_EQ(copy.well(), nullptr);
    EXPECT_EQ(bytes_of(copy), bytes_of(s));
    EXPECT_EQ(copy.get_tecto(), s.get_tecto());
    s.erase_well();
    EXPECT_EQ(s.well(), nullptr);
}

TEST(DepositionSet, BinaryRecordRoundTripAndTruncation)
{
    MassBalance mb(false);
    DepositionSet s(-3.);
    s.set_zref(250.5);
    s.set_erod({0.7, 1.3, 2.9}, 1.5, -4.);
    s.deposit_thickness(2.3, fam(2), 4, &mb);
    s.deposit_thickness(0.0451, fam(7), 800, &mb);
    s.water_depth(2.25);
    s.set_topo_altered(-1.75);
    s.set_under_channel(true);
    s.set_tecto(0.5); // not in the record

    const std::string bytes = bytes_of(s);
    // facies, age, 4 reals, count, 3 reals, real, flag; then zref, zbot, ztop, count, 3 bytes per unit.
    const std::size_t head = 1 + 4 + 4 * 8 + 4 + 3 * 8 + 8 + 1;
    ASSERT_EQ(bytes.size(), head + 3 * 8 + 4 + 3 * s.size());
    EXPECT_EQ(static_cast<unsigned char>(bytes[0]), s.get_facies().facies_full_id());
    uint32_t age = 0;
    std::memcpy(&age, bytes.data() + 1, 4);
    EXPECT_EQ(age, 800u);
    double remaining = 0.;
    std::memcpy(&remaining, bytes.data() + 13, 8);
    EXPECT_EQ(remaining, s.get_remaining());
    int32_t nz = 0;
    std::memcpy(&nz, bytes.data() + 37, 4);
    EXPECT_EQ(nz, 3);
    EXPECT_EQ(bytes[head - 1], 1);

    DepositionSet r;
    std::istringstream in(bytes, std::ios::binary);
    ASSERT_TRUE(r.binary_input(in));
    EXPECT_EQ(bytes_of(r), bytes);
    EXPECT_EQ(r.get_erod_index(), s.get_erod_index());
    EXPECT_EQ(r.get_erod(), s.get_erod());
    EXPECT_TRUE(r.is_under_channel());
    EXPECT_EQ(r.get_tecto(), 0.);
    EXPECT_EQ(r.water_depth(), 2.25);
    EXPECT_EQ(r.get_remaining(), s.get_remaining());
    EXPECT_EQ(steps_of(r), steps_of(s));
    EXPECT_EQ(deltas_of(r), deltas_of(s));

    for (std::size_t cut = 0; cut < bytes.size(); ++cut)
    {
        DepositionSet t;
        std::istringstream part(bytes.substr(0, cut), std::ios::binary);
        EXPECT_FALSE(t.binary_input(part)) << cut;
        EXPECT_FALSE(t.get_erod().empty());
    }

    // A record without erodibility is not a column.
    std::string no_erod = bytes;
    const int32_t zero = 0;
    std::memcpy(no_erod.data() + 37, &zero, 4);
    no_erod.erase(41, 24);
    DepositionSet t;
    std::istringstream bad(no_erod, std::ios::binary);
    EXPECT_FALSE(t.binary_input(bad));
    EXPECT_EQ(t.get_erod().size(), 1u);
}
