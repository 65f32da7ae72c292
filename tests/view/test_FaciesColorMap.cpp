// The colours of the block views and their colour map file.

#include "TestSupport.h"
#include "view/FaciesColorMap.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace testing_support;

TEST(FaciesColorMap, CodingsColourFaciesGrainAndAge)
{
    FaciesColorMap map;
    map.setAgeRange(100, 200);
    const Facies coarse_bar(2, 14);
    const Facies fine_bar(2, 0);
    const Facies overbank(8);
    // The facies coding ignores grain and age; family 0 is white.
    EXPECT_EQ(map.facies_color(coarse_bar, 100, 0).hex(), "ffff00");
    EXPECT_EQ(map.facies_color(fine_bar, 200, 0).hex(), "ffff00");
    EXPECT_EQ(map.facies_color(Facies(), 150, 2).hex(), "ffffff");
    // Grain size alone: two families of one class look alike, two classes differ.
    EXPECT_EQ(map.facies_color(Facies(8, 3), 100, 1), map.facies_color(Facies(2, 3), 150, 1));
    EXPECT_NE(map.facies_color(coarse_bar, 100, 1), map.facies_color(fine_bar, 100, 1));
    // Facies and grain: the facies' hue, darker when finer.
    EXPECT_EQ(map.facies_color(coarse_bar, 100, 2).hex(), "ffff00");
    EXPECT_LT(map.facies_color(fine_bar, 100, 2).red, 255);
    // With the age too: the same deposit is darker when older.
    EXPECT_LT(map.facies_color(coarse_bar, 100, 3).red, map.facies_color(coarse_bar, 200, 3).red);
    // Age alone: old blue, young red, whatever the facies.
    EXPECT_EQ(map.facies_color(overbank, 100, 4), map.facies_color(coarse_bar, 100, 4));
    EXPECT_GT(map.facies_color(overbank, 100, 4).blue, map.facies_color(overbank, 100, 4).red);
    EXPECT_GT(map.facies_color(overbank, 200, 4).red, map.facies_color(overbank, 200, 4).blue);
    map.setErodibilityRange(0., 2.);
    EXPECT_NE(map.erodibility_color(0.), map.erodibility_color(2.));
}

TEST(FaciesColorMap, FileRoundTripsAndBadFilesChangeNothing)
{
    const std::string dir = (std::filesystem::temp_directory_path() / "sarvo_test_colormap").string();
    std::filesystem::create_directories(dir);
    const std::string path = dir + "/colors.txt";
    FaciesColorMap map;
    map.setColor(2, ViewColor{1, 2, 3});
    std::string message;
    ASSERT_TRUE(map.save(path, message)) << message;
    EXPECT_TRUE(contains(read_file(path), "\nPB 010203\n"));
    FaciesColorMap other;
    ASSERT_TRUE(other.load(path, message)) << message;
    EXPECT_EQ(other.getColor(2).hex(), "010203");
    EXPECT_EQ(other.text(), map.text());
    other.restoreDefaults();
    EXPECT_EQ(other.getColor(2).hex(), "ffff00");

    struct Row
    {
        const char* content;
        const char* message;
    };
    const Row rows[] = {
        {"# partial maps keep the rest\nPB 00ff00\nXX 123456\n", ", line 3: unknown facies 'XX'"},
        {"PB 12345\n", ", line 1: the colour of PB must be six hexadecimal digits (rrggbb)"},
        {"PB 12345g\n", "the colour of PB must be six hexadecimal digits"},
        {"PB 123456 7\n", "the colour of PB must be six"},
        {"PB\n", "the colour of PB must be six"},
    };
    for (const Row& r : rows)
    {
        write_file(path, r.content);
        FaciesColorMap bad;
        EXPECT_FALSE(bad.load(path, message)) << r.content;
        EXPECT_TRUE(contains(message, "Colour map file " + path)) << message;
        EXPECT_TRUE(contains(message, r.message)) << message;
        EXPECT_EQ(bad.getColor(2).hex(), "ffff00") << r.content;
    }
    write_file(path, "# only the mud plug\n\n  MP   102030  # dark\n");
    ASSERT_TRUE(other.load(path, message)) << message;
    EXPECT_EQ(other.getColor(9).hex(), "102030");
    EXPECT_EQ(other.getColor(2).hex(), "ffff00");
    EXPECT_FALSE(other.load(dir + "/missing.txt", message));
    EXPECT_TRUE(contains(message, "Cannot open colour map file " + dir + "/missing.txt")) << message;
    // A save that cannot be written leaves the user's file as it was.
    EXPECT_FALSE(map.save(dir + "/no/such/dir/colors.txt", message));
    std::filesystem::remove_all(dir);
}
