#include "kernel/parameters/MassBalance.h"

#include "TestSupport.h"

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

std::vector<double> volumes_with(std::initializer_list<std::pair<int, double>> entries)
{
    std::vector<double> v(MD_NB_CLASS_GR, 0.);
    for (const auto& e : entries)
        v[e.first] = e.second;
    return v;
}

std::vector<GranuloThickness> parts_of(const GranuloList& list)
{
    return std::vector<GranuloThickness>(list.begin(), list.end());
}

} // namespace

TEST(MassBalance, ChannelFillsWithdrawCoarsestFirstAndRunIntoDebtOnClassZero)
{
    MassBalance mb(true);
    mb.setMeshArea(4.);
    // 4 and 8 cubic metres over 4 square metres: 1 m of class 14 and 2 m of class 5.
    mb.setInitialVolume(volumes_with({{14, 4.}, {5, 8.}}));
    EXPECT_DOUBLE_EQ(mb.getAvailable()[14], 1.);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[5], 2.);

    GranuloList list;
    mb.deposited_accounts(2.5, fam(2), list);
    auto parts = parts_of(list);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_DOUBLE_EQ(parts[0].granulo, 0.9375);
    EXPECT_DOUBLE_EQ(parts[0].thickness, 1.);
    EXPECT_DOUBLE_EQ(parts[1].granulo, 0.375);
    EXPECT_DOUBLE_EQ(parts[1].thickness, 1.5);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[14], 0.);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[5], 0.5);
    EXPECT_DOUBLE_EQ(mb.getDeposited()[14], 1.);
    EXPECT_DOUBLE_EQ(mb.getDeposited()[5], 1.5);
    EXPECT_DOUBLE_EQ(mb.getInput()[5], 2.);

    // What class 5 cannot supply is taken on class 0, which goes negative.
    list.clear();
    mb.deposited_accounts(2., fam(9), list);
    parts = parts_of(list);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_DOUBLE_EQ(parts[0].granulo, 0.375);
    EXPECT_DOUBLE_EQ(parts[0].thickness, 0.5);
    EXPECT_DOUBLE_EQ(parts[1].granulo, 0.0625);
    EXPECT_DOUBLE_EQ(parts[1].thickness, 1.5);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[0], -1.5);
    EXPECT_DOUBLE_EQ(mb.getDeposited()[0], 1.5);

    // Erosion makes sediment available again, to the next fill.
    mb.eroded_accounts(0.75, fam(2, 10));
    EXPECT_DOUBLE_EQ(mb.getEroded()[10], 0.75);
    list.clear();
    mb.deposited_accounts(0.5, fam(1), list);
    parts = parts_of(list);
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_DOUBLE_EQ(parts[0].granulo, Facies::class_to_granulo(10));
    EXPECT_DOUBLE_EQ(mb.getAvailable()[10], 0.25);

    // A fill of no thickness books and appends nothing.
    list.clear();
    mb.deposited_accounts(0., fam(3), list);
    EXPECT_TRUE(list.empty());

    // Every class holds input + eroded - deposited.
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
        EXPECT_DOUBLE_EQ(mb.getAvailable()[c], mb.getInput()[c] + mb.getEroded()[c] - mb.getDeposited()[c])
            << c;
}

TEST(MassBalance, EmptyAccountGivesTheFinestClassToAPointBar)
{
    MassBalance mb(true);
    GranuloList list;
    mb.deposited_accounts(0.3, fam(2), list);
    ASSERT_EQ(list.size(), 1);
    EXPECT_DOUBLE_EQ(list[0].granulo, 0.0625);
    EXPECT_DOUBLE_EQ(list[0].thickness, 0.3);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[0], -0.3);
}

TEST(MassBalance, OtherFamiliesKeepTheirClassAndExternalOnesAreNotBooked)
{
    MassBalance mb(true);
    GranuloList list;
    // Overbank keeps class 3 although nothing of it is available.
    mb.deposited_accounts(0.4, fam(8), list);
    ASSERT_EQ(list.size(), 1);
    EXPECT_DOUBLE_EQ(list[0].granulo, Facies::class_to_granulo(3));
    EXPECT_DOUBLE_EQ(mb.getDeposited()[3], 0.4);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[3], -0.4);

    // Wetland, draping and pelagic come from outside the load.
    const MassBalance before = mb;
    for (int f : {11, 12, 13})
    {
        list.clear();
        mb.deposited_accounts(0.2, fam(f, 4), list);
        ASSERT_EQ(list.size(), 1);
        EXPECT_DOUBLE_EQ(list[0].granulo, Facies::class_to_granulo(4));
        mb.eroded_accounts(0.2, fam(f, 4));
    }
    EXPECT_EQ(mb.getDeposited(), before.getDeposited());
    EXPECT_EQ(mb.getEroded(), before.getEroded());
    EXPECT_EQ(mb.getAvailable(), before.getAvailable());
}

TEST(MassBalance, InactiveAccountGrowsOnErosionOnly)
{
    MassBalance mb(false);
    mb.setInitialVolume(volumes_with({{7, 3.}}));
    mb.eroded_accounts(0.5, fam(2, 7));
    EXPECT_DOUBLE_EQ(mb.getEroded()[7], 0.5);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[7], 3.5);

    GranuloList list;
    mb.deposited_accounts(2., fam(1, 13), list);
    ASSERT_EQ(list.size(), 1);
    EXPECT_DOUBLE_EQ(list[0].granulo, Facies::class_to_granulo(13));
    EXPECT_DOUBLE_EQ(list[0].thickness, 2.);
    for (int c = 0; c < MD_NB_CLASS_GR; ++c)
        EXPECT_EQ(mb.getDeposited()[c], 0.) << c;
    EXPECT_DOUBLE_EQ(mb.getAvailable()[7], 3.5);

    // Activation is the caller's switch; the accounts carry over.
    mb.setActive(true);
    list.clear();
    mb.deposited_accounts(1., fam(1), list);
    EXPECT_DOUBLE_EQ(list[0].granulo, Facies::class_to_granulo(7));
    EXPECT_DOUBLE_EQ(mb.getAvailable()[7], 2.5);

    mb.resetVolume();
    EXPECT_DOUBLE_EQ(mb.getAvailable()[7], 3.);
    EXPECT_EQ(mb.getEroded()[7], 0.);
    EXPECT_EQ(mb.getDeposited()[7], 0.);
}

TEST(MassBalance, InitialVolumeFromTotalAndSharesIsPerMesh)
{
    MassBalance mb(true);
    mb.setMeshArea(50.);
    std::vector<double> shares(MD_NB_CLASS_GR, 0.);
    shares[2] = 0.25;
    shares[12] = 0.75;
    mb.setInitialVolume(1000., shares);
    EXPECT_DOUBLE_EQ(mb.getInput()[2], 5.);
    EXPECT_DOUBLE_EQ(mb.getInput()[12], 15.);
    EXPECT_DOUBLE_EQ(mb.getAvailable()[12], 15.);
    EXPECT_FALSE(assertion_text([&] { mb.setInitialVolume(std::vector<double>(3, 1.)); }).empty());
}

TEST(MassBalance, AssertionsOnClassAndThickness)
{
    MassBalance mb(true);
    Facies coarse = fam(2);
    coarse.granulo(1.0); // class 15, beyond the accounts
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { mb.eroded_accounts(0.1, coarse); }),
                                "icl >= 0 && icl < MD_NB_CLASS_GR"));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { mb.eroded_accounts(-0.1, fam(2)); }), "thickness >= 0."));
    // External families are not booked, so not checked either.
    EXPECT_EQ(assertion_text([&] { mb.eroded_accounts(-0.1, fam(12)); }), "");
}

TEST(MassBalance, TextTable)
{
    MassBalance mb(true);
    mb.setMeshArea(2.);
    mb.setInitialVolume(volumes_with({{0, 3.}, {14, 2468.}}));
    mb.eroded_accounts(0.0617, fam(8, 0)); // 0.1234 m3
    std::ostringstream out;
    out.precision(9);
    out << mb;
    EXPECT_EQ(out.precision(), 9);

    std::vector<std::string> lines;
    std::istringstream in(out.str());
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 17u);
    EXPECT_EQ(lines[0], "  Gr. Class | Input Vol. |     Eroded |  Deposited | Eroded-Dep.|  Avail. Vol.");
    EXPECT_EQ(lines[1], "          0 |          3 |      0.123 |          0 |      0.123 |       3.12");
    EXPECT_EQ(lines[2], "          1 |          0 |          0 |          0 |          0 |          0");
    EXPECT_EQ(lines[15], "         14 |   2.47e+03 |          0 |          0 |          0 |   2.47e+03");
    EXPECT_EQ(lines[16], "        All |   2.47e+03 |      0.123 |          0 |      0.123 |   2.47e+03");
    EXPECT_EQ(out.str().back(), '\n');
}
