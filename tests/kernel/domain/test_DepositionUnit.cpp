#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/DepositUnit.h"
#include "kernel/domain/DepositionUnit.h"
#include "kernel/domain/DepositionUnitCollection.h"
#include "kernel/geometry/VCollection.h"

#include "TestSupport.h"

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace
{

unsigned char uc(int value)
{
    return static_cast<unsigned char>(value);
}

std::string bytes_of(const DepositionUnitCollection& c)
{
    std::ostringstream out(std::ios::binary);
    c.binary_output(out);
    return out.str();
}

DepositionUnitCollection sample_collection()
{
    DepositionUnitCollection c(-12.5);
    c.set_zref(350.25);
    c.set_ztop(-9.1);
    c.units().emplace_back(Facies(uc(1), uc(13)), uc(40), uc(0));
    c.units().emplace_back(Facies(uc(2), uc(14)), uc(255), uc(255));
    c.units().emplace_back(Facies(uc(8)), uc(0), uc(7));
    return c;
}

template <typename T> T read_at(const std::string& bytes, size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

} // namespace

TEST(DepositionUnit, CompactLayoutAndSteps)
{
    static_assert(sizeof(DepositionUnit) == 3);
    std::vector<DepositionUnit> units(1000);
    EXPECT_EQ(reinterpret_cast<const char*>(units.data() + 1000) -
                  reinterpret_cast<const char*>(units.data()),
              3000);
    EXPECT_EQ(DepositionUnit::_thratio, 0.01);
    EXPECT_EQ(DepositionUnit::_maxstut, 255u);
    EXPECT_EQ(DepositionUnit::_maxagut, 255u);

    const DepositionUnit empty;
    EXPECT_EQ(empty.facies().facies_full_id(), 0);
    EXPECT_EQ(empty.thickness_steps(), 0);
    EXPECT_EQ(empty.age_delta(), 0);

    const DepositionUnit thickest(Facies(uc(2)), uc(255), uc(9));
    EXPECT_NEAR(thickest.thickness(), 2.55, 1e-12);
    EXPECT_EQ(thickest.facies().granulo_class(), 10);
    EXPECT_EQ(thickest.age_delta(), 9);
    EXPECT_EQ(thickest.debug(), "PB (10) / 2.55m / 9 it (delta)");
    std::ostringstream out;
    out << DepositionUnit(Facies(uc(13), uc(0)), uc(25), uc(200));
    EXPECT_EQ(out.str(), "PL (0) / 0.25m / 200 it (delta)");
}

TEST(DepositionUnit, FamiliesMatchTheirRegisteredRows)
{
    const FaciesDescription* fds[] = {
        &ChannelLag::_fd, &PointBar::_fd, &SandPlug::_fd, &CrevasseI::_fd, &CrevasseChannel::_fd,
        &CrevasseII::_fd, &Levee::_fd,    &Overbank::_fd, &MudPlug::_fd,   &HemipelagicPlug::_fd,
        &Wetland::_fd,    &Draping::_fd,  &Pelagic::_fd};
    for (int k = 0; k < 13; ++k)
    {
        EXPECT_EQ(fds[k]->id(), k + 1);
        const FaciesDescription registered = Facies::facies_register().at(fds[k]->short_name());
        EXPECT_EQ(registered.id(), fds[k]->id());
        EXPECT_EQ(registered.granulo_class(), fds[k]->granulo_class());
        EXPECT_EQ(Facies(uc(k + 1)).granulo_class(), fds[k]->granulo_class());
    }
}

TEST(DepositionUnit, BinaryRecordIsThreeBytes)
{
    for (int family = 0; family < 14; ++family)
    {
        for (int gr = 0; gr < 15; ++gr)
        {
            const DepositionUnit unit(Facies(uc(family), uc(gr)), uc(17 * gr + family), uc(255 - gr));
            std::stringstream io(std::ios::in | std::ios::out | std::ios::binary);
            unit.binary_output(io);
            const std::string bytes = io.str();
            ASSERT_EQ(bytes.size(), 3u);
            EXPECT_EQ(uc(bytes[0]), gr * 16 + family);
            EXPECT_EQ(uc(bytes[1]), 17 * gr + family);
            EXPECT_EQ(uc(bytes[2]), 255 - gr);
            DepositionUnit back;
            ASSERT_TRUE(back.binary_input(io));
            EXPECT_EQ(back.facies().facies_full_id(), unit.facies().facies_full_id());
            EXPECT_EQ(back.thickness_steps(), unit.thickness_steps());
            EXPECT_EQ(back.age_delta(), unit.age_delta());
        }
    }
    for (size_t cut = 0; cut < 3; ++cut)
    {
        std::istringstream in(std::string("\x12\x34\x56", cut), std::ios::binary);
        DepositionUnit unit;
        EXPECT_FALSE(unit.binary_input(in)) << cut;
    }
}

TEST(DepositionUnitCollection, BinaryRoundTripAndLayout)
{
    const DepositionUnitCollection source = sample_collection();
    const std::string bytes = bytes_of(source);
    ASSERT_EQ(bytes.size(), 3 * 8 + 4 + 3 * 3u);
    EXPECT_EQ(read_at<double>(bytes, 0), 350.25);
    EXPECT_EQ(read_at<double>(bytes, 8), -12.5);
    EXPECT_EQ(read_at<double>(bytes, 16), -9.1);
    EXPECT_EQ(read_at<int32_t>(bytes, 24), 3);
    EXPECT_EQ(uc(bytes[28]), 13 * 16 + 1);
    EXPECT_EQ(uc(bytes[32]), 255);

    // The reader replaces the units but leaves what the owner sets.
    DepositionUnitCollection target(4.);
    target.units().resize(7);
    target.set_flat_delta(2.);
    target.set_zul_rel(33.);
    target.set_location(Point2D(5., 6.));
    std::istringstream in(bytes, std::ios::binary);
    ASSERT_TRUE(target.binary_input(in));
    EXPECT_EQ(target.get_zref(), 350.25);
    EXPECT_EQ(target.get_zbot(), -12.5);
    EXPECT_EQ(target.get_ztop(), -9.1);
    EXPECT_EQ(target.get_flat_delta(), 2.);
    EXPECT_EQ(target.get_zul(), 33.);
    EXPECT_EQ(target.get_location(), Point2D(5., 6.));
    ASSERT_EQ(target.size(), 3u);
    EXPECT_EQ(bytes_of(target), bytes);

    DepositionUnitCollection empty(1.);
    DepositionUnitCollection back;
    std::istringstream in_empty(bytes_of(empty), std::ios::binary);
    EXPECT_TRUE(back.binary_input(in_empty));
    EXPECT_TRUE(back.empty());
    EXPECT_EQ(back.get_ztop(), 1.);
}

TEST(DepositionUnitCollection, DamagedRecordsFailWithoutCrash)
{
    const std::string bytes = bytes_of(sample_collection());
    for (size_t cut = 0; cut < bytes.size(); ++cut)
    {
        DepositionUnitCollection c;
        c.units().resize(5);
        std::istringstream in(bytes.substr(0, cut), std::ios::binary);
        EXPECT_FALSE(c.binary_input(in)) << cut;
        // Reading stops at the first incomplete unit and keeps the whole ones before it.
        const size_t whole_units = cut < 28 ? 0 : (cut - 28) / 3;
        EXPECT_EQ(c.size(), whole_units) << cut;
    }

    for (int32_t count : {-1, INT32_MAX})
    {
        std::string corrupt = bytes;
        std::memcpy(&corrupt[24], &count, sizeof(count));
        DepositionUnitCollection c;
        std::istringstream in(corrupt, std::ios::binary);
        EXPECT_FALSE(c.binary_input(in)) << count;
        EXPECT_LE(c.size(), 3u);
    }
}

TEST(VCollection, ElevationFrames)
{
    VCollection v(-5., 3.);
    EXPECT_EQ(v.get_zul(), 1e30);
    EXPECT_EQ(v.get_zref(), 0.);
    EXPECT_EQ(v.get_flat_delta(), 0.);
    EXPECT_EQ(v.get_location(), Point2D(0., 0.));
    EXPECT_EQ(v.get_location_geo(), Point2D(0., 0.));

    v.set_zref(100.);
    const double geo_bot = v.get_zbot_geo();
    const double geo_top = v.get_ztop_geo();
    EXPECT_EQ(geo_bot, 95.);
    EXPECT_EQ(geo_top, 103.);
    v.set_zul_rel(20.);
    for (double delta : {7., -2.5, 0., 12.})
    {
        v.set_flat_delta(delta);
        EXPECT_EQ(v.get_flat_delta(), delta);
        EXPECT_DOUBLE_EQ(v.get_zbot_geo(), geo_bot) << delta;
        EXPECT_DOUBLE_EQ(v.get_ztop_geo(), geo_top) << delta;
        EXPECT_DOUBLE_EQ(v.get_zref() + v.get_flat_delta() + v.get_zbot(), geo_bot);
        EXPECT_EQ(v.get_zul(), 20.) << "the upper limit does not follow the flattening";
    }
    EXPECT_DOUBLE_EQ(v.get_zbot(), -17.);
    EXPECT_DOUBLE_EQ(v.get_ztop(), -9.);

    // An upper limit given in geographic elevation is stored relative.
    v.set_zul_geo(130.);
    EXPECT_DOUBLE_EQ(v.get_zul(), 130. - 100. - 12.);
    EXPECT_DOUBLE_EQ(v.rel_to_geo(v.get_zul()), 130.);
}

TEST(DepositionUnitCollection, CopyTakesPlacementAndUnits)
{
    const DepositionUnitCollection source = sample_collection();
    DepositionUnitCollection copy(77.);
    copy = source;
    EXPECT_EQ(copy.get_zref(), 350.25);
    EXPECT_EQ(copy.get_zbot(), -12.5);
    EXPECT_EQ(bytes_of(copy), bytes_of(source));

    VCollection* base = &copy;
    base->set_flat_delta(1.);
    EXPECT_EQ(copy.get_zbot(), -13.5);

    const DepositUnit record(uc(2), 0.25, 40u, 0.6875);
    EXPECT_EQ(record.family(), 2);
    EXPECT_EQ(record.thickness(), 0.25);
    EXPECT_EQ(record.age(), 40u);
    EXPECT_EQ(record.granulo(), 0.6875);
    DepositUnit other = record;
    EXPECT_EQ(other, record);
    other.age(41u);
    EXPECT_NE(other, record);
}
