// This suite deliberately does not include the header of the facies families:
// a program that only uses Facies must still see every family registered.

#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesDescription.h"
#include "kernel/common/FaciesRegister.h"

#include "TestSupport.h"

#include <cmath>
#include <sstream>
#include <string>

using testing_support::assertion_text;
using testing_support::is_assertion_of;

namespace
{

struct Row
{
    const char* short_name;
    const char* long_name;
    int granulo_class;
    double r, g, b;
};

const Row ROWS[] = {
    {"UD", "Undefined", 0, 0.6, 0.6, 0.9},
    {"CL", "Channel Lag", 13, 1, 0.5, 0},
    {"PB", "Point Bar / LAPs", 10, 1, 1, 0},
    {"SP", "Sand Plug", 9, 0.75, 0.75, 0.55},
    {"CSI", "Crevasse Splay I", 9, 0.8, 0.5, 0.2},
    {"CCh", "Splay II Channels", 8, 0.8, 1, 0.2},
    {"CSII", "Crevasse Splay II", 7, 0.8, 0.8, 0.2},
    {"LV", "Levee", 6, 0.4, 0.8, 0.2},
    {"OB", "Overbank", 3, 0, 1, 0},
    {"MP", "Mud Plug", 2, 0, 0.8, 0.5},
    {"HP", "Hemipelagic Plug", 2, 0.5, 0.5, 0.5},
    {"WL", "Wetland", 1, 0.85, 0.45, 0.85},
    {"DR", "Draping", 1, 0.6, 0.8, 0.9},
    {"PL", "Pelagic", 1, 1, 0.8, 1},
};

unsigned char uc(int value)
{
    return static_cast<unsigned char>(value);
}

FaciesDescription loose(const std::string& name, int id)
{
    return FaciesDescription::unregistered(name, name + " long", KemoColor(0.1, 0.2, 0.3), uc(id), 4);
}

} // namespace

TEST(Facies, ProgramRegisterHoldsEveryFamily)
{
    ASSERT_EQ(Facies::number_of_facies(), 14u);
    const FaciesRegister& reg = Facies::facies_register();
    EXPECT_EQ(reg.number_of_facies(), 14u);
    std::string expected_details;
    for (int id = 0; id < 14; ++id)
    {
        const Row& row = ROWS[id];
        SCOPED_TRACE(row.short_name);
        for (const FaciesDescription& d :
             {reg.at(uc(id)), reg.at(row.short_name), Facies::description(uc(id))})
        {
            EXPECT_EQ(d.id(), id);
            EXPECT_EQ(d.short_name(), row.short_name);
            EXPECT_EQ(d.long_name(), row.long_name);
            EXPECT_EQ(d.granulo_class(), row.granulo_class);
            EXPECT_EQ(d.color(), KemoColor(row.r, row.g, row.b));
        }
        unsigned char found_id = 99;
        EXPECT_TRUE(reg.is_registered(row.short_name, found_id));
        EXPECT_EQ(found_id, id);
        // A full byte carrying a grain-size class still names its family.
        std::string found_name;
        EXPECT_TRUE(reg.is_registered(uc(0xB0 | id), found_name));
        EXPECT_EQ(found_name, row.short_name);
        expected_details += std::string("  - ") + row.short_name + " : " + row.long_name + "\n";
    }
    EXPECT_EQ(reg.details(), expected_details);

    unsigned char id = 42;
    std::string name = "kept";
    EXPECT_FALSE(reg.is_registered("XX", id));
    EXPECT_FALSE(reg.is_registered(uc(14), name));
    EXPECT_EQ(id, 42);
    EXPECT_EQ(name, "kept");
}

TEST(Facies, UnknownKeysGiveTheUndefinedDescription)
{
    const FaciesRegister& reg = Facies::facies_register();
    EXPECT_EQ(reg.at("XX").short_name(), "UD");
    EXPECT_EQ(reg.at("").id(), 0);
    EXPECT_EQ(reg.at(uc(14)).short_name(), "UD");
    EXPECT_EQ(reg.at(uc(255)).long_name(), "Undefined");
    EXPECT_EQ(FaciesDescription().short_name(), "UD");
    EXPECT_EQ(FaciesDescription().color(), KemoColor(0.6, 0.6, 0.9));
}

TEST(Facies, ConstructionChecksFamilyAndClass)
{
    EXPECT_EQ(Facies().facies_full_id(), 0);
    for (int family = 0; family < 14; ++family)
    {
        const Facies f(uc(family));
        EXPECT_EQ(f.family(), family);
        EXPECT_EQ(f.granulo_class(), ROWS[family].granulo_class);
        EXPECT_EQ(f.description().short_name(), ROWS[family].short_name);
    }
    EXPECT_TRUE(is_assertion_of(assertion_text([] { Facies f(uc(14)); }), "family < number_of_facies()"));
    EXPECT_TRUE(is_assertion_of(assertion_text([] { Facies f(uc(255)); }), "family < number_of_facies()"));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([] { Facies f(uc(14), uc(3)); }), "family < number_of_facies()"));
    EXPECT_TRUE(is_assertion_of(assertion_text([] { Facies f(uc(13), uc(15)); }), "gr < MD_NB_CLASS_GR"));
    EXPECT_EQ(assertion_text([] { Facies f(uc(13), uc(14)); }), "");
}

TEST(Facies, ByteHoldsFamilyLowAndClassHigh)
{
    for (int family = 0; family < 14; ++family)
    {
        for (int gr = 0; gr < MD_NB_CLASS_GR; ++gr)
        {
            const Facies f(uc(family), uc(gr));
            ASSERT_EQ(f.facies_full_id(), gr * 16 + family);
            Facies back;
            back.facies_full_id(f.facies_full_id());
            EXPECT_EQ(back.family(), family);
            EXPECT_EQ(back.granulo_class(), gr);
            EXPECT_EQ(Facies::family(f.facies_full_id()), family);
            EXPECT_EQ(Facies::description(f.facies_full_id()).id(), family);
            EXPECT_DOUBLE_EQ(f.granulo_value(), (gr + 1) / 16.);
        }
        // Class 15 only arises from a value; it must not spill into the family.
        Facies top(uc(family));
        top.granulo(uc(15));
        EXPECT_EQ(top.facies_full_id(), 0xF0 | family);
        top.granulo(uc(2));
        EXPECT_EQ(top.facies_full_id(), 0x20 | family);
    }
}

TEST(Facies, ClassAndValueAreNotExactInverses)
{
    for (int c = 0; c <= 15; ++c)
        EXPECT_EQ(Facies::class_to_granulo(c), (c + 1) / 16.);
    EXPECT_EQ(Facies::class_to_granulo(16), 1.0);
    EXPECT_EQ(Facies::class_to_granulo(200), 1.0);

    for (int c = 0; c <= 14; ++c)
        EXPECT_EQ(Facies::granulo_to_class((c + 1) * 0.0625), c) << "class " << c;
    EXPECT_EQ(Facies::granulo_to_class(1.0), 15);
    EXPECT_EQ(Facies::granulo_to_class(1.5), 15);
    EXPECT_EQ(Facies::granulo_to_class(0.05), 0);
    EXPECT_EQ(Facies::granulo_to_class(-3.), 0);
    EXPECT_EQ(Facies::granulo_to_class(0.5), 7);
    EXPECT_EQ(Facies::class_to_granulo(7), 0.5);

    // Inside [0.0625, 1] the class c is the one with c/15 <= g < (c+1)/15.
    for (int k = 0; k <= 1000; ++k)
    {
        const double g = 0.0625 + k * (1. - 0.0625) / 1000.;
        const int c = Facies::granulo_to_class(g);
        EXPECT_LE(c / 15., g + 1e-12);
        EXPECT_LT(g, (c + 1) / 15. + 1e-12);
    }

    Facies f(uc(2));
    f.granulo(1.0);
    EXPECT_EQ(f.granulo_class(), 15);
    EXPECT_EQ(f.granulo_value(), 1.0);
    EXPECT_EQ(f.family(), 2);
    f.granulo(0.05);
    EXPECT_EQ(f.granulo_class(), 0);
    EXPECT_EQ(f.granulo_value(), 0.0625);
    f.granulo(1.5);
    EXPECT_EQ(f.granulo_class(), 15);
    f.granulo(0.5);
    EXPECT_EQ(f.granulo_class(), 7);
    EXPECT_EQ(f.family(), 2);
}

TEST(Facies, ComparisonLooksAtFamilyOnly)
{
    EXPECT_TRUE(Facies(uc(1), uc(3)) == Facies(uc(1), uc(9)));
    EXPECT_FALSE(Facies(uc(1), uc(3)) != Facies(uc(1), uc(9)));
    EXPECT_FALSE(Facies(uc(1), uc(3)) < Facies(uc(1), uc(9)));
    EXPECT_FALSE(Facies(uc(1), uc(9)) < Facies(uc(1), uc(3)));
    EXPECT_TRUE(Facies(uc(1), uc(3)) != Facies(uc(2), uc(3)));
    EXPECT_TRUE(Facies(uc(1), uc(14)) < Facies(uc(2), uc(0)));
    EXPECT_FALSE(Facies(uc(2), uc(0)) < Facies(uc(1), uc(14)));
}

TEST(Facies, FamilyGroupsPartitionTheFamilies)
{
    for (int family = 0; family < 14; ++family)
    {
        const bool erodable = family == 1 || family == 2 || family == 3 || family == 9 || family == 10;
        const Facies f(uc(family), uc(5));
        EXPECT_EQ(Facies::is_erodable(uc(family)), erodable) << family;
        EXPECT_EQ(Facies::is_neutral(uc(family)), family == 0) << family;
        EXPECT_EQ(Facies::is_non_erodable(uc(family)), !erodable && family != 0) << family;
        EXPECT_EQ(f.is_erodable(), erodable);
        EXPECT_EQ(f.is_non_erodable(), Facies::is_non_erodable(uc(family)));
        EXPECT_EQ(f.is_neutral(), family == 0);
    }
    EXPECT_FALSE(Facies::is_non_erodable(uc(14)));
    EXPECT_FALSE(Facies::is_erodable(uc(15)));
}

TEST(FaciesRegister, RefusesAndChangesNothing)
{
    FaciesRegister reg;
    ASSERT_EQ(reg.number_of_facies(), 1u);
    EXPECT_FALSE(reg.add(FaciesDescription()));
    EXPECT_FALSE(reg.add(loose("UD", 5)));  // name taken
    EXPECT_FALSE(reg.add(loose("NEW", 0))); // id taken
    unsigned char id = 0;
    EXPECT_FALSE(reg.is_registered("NEW", id));
    EXPECT_EQ(reg.at(uc(5)).short_name(), "UD");
    EXPECT_EQ(reg.number_of_facies(), 1u);

    for (int k = 1; k < 16; ++k)
        ASSERT_TRUE(reg.add(loose("F" + std::to_string(k), k)));
    EXPECT_EQ(reg.number_of_facies(), 16u);
    const std::string before = reg.details();

    EXPECT_FALSE(reg.add(loose("F16", 16)));
    EXPECT_EQ(reg.number_of_facies(), 16u);
    EXPECT_FALSE(reg.is_registered("F16", id));
    EXPECT_EQ(reg.at("F16").short_name(), "UD");
    EXPECT_EQ(reg.details(), before);
    EXPECT_EQ(reg.at(uc(9)).short_name(), "F9");
    EXPECT_EQ(reg.at("F9").long_name(), "F9 long");
    EXPECT_EQ(reg.default_granulo_class(uc(9)), 4);
}

TEST(FaciesRegister, DescriptionsRegisterThemselvesUnlessRefused)
{
    // Not registering: the default description, copies, and loose descriptions.
    const FaciesDescription undefined;
    const FaciesDescription copy = Facies::facies_register().at("PB");
    const FaciesDescription free_one = loose("ZZ", 14);
    EXPECT_EQ(Facies::number_of_facies(), 14u);
    // A registering description with a taken name is refused by the register.
    const FaciesDescription clash("PB", "Another point bar", KemoColor(), uc(14), uc(3));
    EXPECT_EQ(Facies::number_of_facies(), 14u);
    EXPECT_EQ(Facies::facies_register().at(uc(14)).short_name(), "UD");
    EXPECT_EQ(Facies::facies_register().at("PB").long_name(), "Point Bar / LAPs");
}

TEST(Facies, TextForms)
{
    EXPECT_EQ(Facies(uc(2)).debug(), "PB (10)");
    std::ostringstream out;
    out << Facies(uc(13), uc(0));
    EXPECT_EQ(out.str(), "PL (0)");

    std::stringstream colors;
    colors << KemoColor(0.85, 0.45, 1) << "\n";
    EXPECT_EQ(colors.str(), "0.85 0.45 1\n");
    KemoColor read;
    colors >> read;
    EXPECT_EQ(read, KemoColor(0.85, 0.45, 1));
    std::istringstream bad("0.1 x");
    KemoColor kept(0.3, 0.3, 0.3);
    bad >> kept;
    EXPECT_TRUE(bad.fail());
    EXPECT_EQ(kept, KemoColor(0.3, 0.3, 0.3));
}
