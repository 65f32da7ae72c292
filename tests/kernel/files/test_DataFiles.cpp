#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include "TestSupport.h"

#include <iomanip>

using testing_support::TempDir;
using testing_support::write_file;

namespace
{

// Writes `content` to a fresh file of `dir` and returns its path.
std::string make_file(const TempDir& dir, const std::string& content)
{
    const std::string path = dir.file("data.txt");
    write_file(path, content);
    return path;
}

} // namespace

TEST(DataFiles, LineClassification)
{
    BaseDataFile base("x");
    EXPECT_TRUE(base.is_comment("  \t# note"));
    EXPECT_FALSE(base.is_comment("value # note"));
    EXPECT_FALSE(base.is_comment(" \r\n"));

    EXPECT_TRUE(base.is_section(" ~Ascii\r", "Ascii"));
    EXPECT_TRUE(base.is_section("~AsciiData", "Ascii"));
    EXPECT_FALSE(base.is_section("~ Ascii", "Ascii"));
    EXPECT_FALSE(base.is_section("~ascii", "Ascii"));
    EXPECT_FALSE(base.is_section("Ascii", "Ascii"));

    std::string value = "kept";
    EXPECT_TRUE(base.is_keyword("  KEY  =  some value \t", "KEY", value));
    EXPECT_EQ(value, "some value");
    EXPECT_FALSE(base.is_keyword("key = 1", "KEY"));
    EXPECT_FALSE(base.is_keyword("KEYWORD = 1", "KEY"));
    EXPECT_FALSE(base.is_keyword("KEY 1", "KEY"));
    EXPECT_FALSE(base.is_keyword("   ", "KEY"));
    // The first separator splits: the rest may hold more of them.
    EXPECT_TRUE(base.is_keyword("A=b=c", "A", value));
    EXPECT_EQ(value, "b=c");
    // A keyword with nothing after it matches and leaves the value alone.
    value = "kept";
    EXPECT_TRUE(base.is_keyword("KEY =  ", "KEY", value));
    EXPECT_EQ(value, "kept");

    base.setKeySeparator(0);
    EXPECT_TRUE(base.is_keyword("KEY  12 13", "KEY", value));
    EXPECT_EQ(value, "12 13");
    // Without separator a keyword is a prefix of its line.
    EXPECT_TRUE(base.is_keyword("KEYWORD value", "KEY", value));
    EXPECT_EQ(value, "ORD value");
    value = "kept";
    EXPECT_TRUE(base.is_keyword("KEY", "KEY", value));
    EXPECT_EQ(value, "kept");
    EXPECT_FALSE(base.is_keyword("KE", "KEY"));
}

TEST(DataFiles, NextLineSkipsBlanksAndWholeLineComments)
{
    TempDir dir;
    {
        InDataFile in(make_file(dir, "# only\n\n   \t\n  # comments\r\n"));
        ASSERT_TRUE(in.is_open());
        std::string text = "stale";
        EXPECT_FALSE(in.next_line(text));
        EXPECT_EQ(text, "");
        EXPECT_EQ(in.get_line(), "");
    }

    InDataFile in(make_file(dir, "NX 3\n# between keyword and data\n  1 2 3 # data\r\nlast"));
    in.setKeySeparator(0);
    ASSERT_TRUE(in.seek_keyword("NX"));
    // A raw read of the stream sees the comment that next_line skips.
    std::string raw;
    std::getline(in, raw);
    EXPECT_EQ(raw, "# between keyword and data");

    ASSERT_TRUE(in.seek_keyword("NX"));
    std::string text;
    ASSERT_TRUE(in.next_line(text));
    EXPECT_EQ(text, "1 2 3 # data");
    EXPECT_EQ(in.get_line(), text);
    ASSERT_TRUE(in.next_line(text));
    EXPECT_EQ(text, "last");
    EXPECT_FALSE(in.next_line(text));
    EXPECT_EQ(in.get_line(), "");

    in.rewind();
    ASSERT_TRUE(in.next_line());
    EXPECT_EQ(in.get_line(), "NX 3");
}

TEST(DataFiles, SeekingAlwaysStartsFromTheTop)
{
    TempDir dir;
    InDataFile in(make_file(dir, "FIRST = 1\n~Ascii\n10 20\nSECOND = 2\n"));
    ASSERT_TRUE(in.seek_keyword("SECOND"));
    EXPECT_EQ(in.get_line(), "SECOND = 2");
    std::string value;
    ASSERT_TRUE(in.seek_keyword("FIRST", value));
    EXPECT_EQ(value, "1");

    ASSERT_TRUE(in.seek_section("Ascii"));
    EXPECT_EQ(in.get_line(), "~Ascii");
    ASSERT_TRUE(in.next_line());
    EXPECT_EQ(in.get_line(), "10 20");

    // A failed search leaves the stream usable at the start of the file.
    EXPECT_FALSE(in.seek_section("Binary"));
    EXPECT_FALSE(in.seek_keyword("THIRD", value));
    EXPECT_EQ(value, "1");
    ASSERT_TRUE(in.next_line());
    EXPECT_EQ(in.get_line(), "FIRST = 1");
}

TEST(DataFiles, KeyValuesAreCleanedByType)
{
    TempDir dir;
    InDataFile in(make_file(dir, "NAME = abc def\n"
                                 "PATH = :/data/run_1\n"
                                 "DEPTH = depth 12.5\n"
                                 "WIDTH = about 12.5 m\n"
                                 "COUNT = n: -3 items\n"
                                 "SIZE = -5\n"
                                 "EXP = x 1.5e2\n"
                                 "EMPTY =\n"
                                 "JUNK = ***\n"));
    std::string text;
    EXPECT_TRUE(in.get_key_value("NAME", text));
    EXPECT_EQ(text, "abc");
    EXPECT_TRUE(in.get_key_value("PATH", text));
    EXPECT_EQ(text, "/data/run_1");
    // Without cleaning the leading colon ends the text at once.
    EXPECT_FALSE(in.get_key_value("PATH", text, false));
    EXPECT_EQ(text, "??");

    double real = 0.0;
    // The "e" of "depth" ends the leading cut, and "epth" does not convert.
    EXPECT_FALSE(in.get_key_value("DEPTH", real));
    EXPECT_TRUE(in.get_key_value("WIDTH", real));
    EXPECT_DOUBLE_EQ(real, 12.5);
    EXPECT_FALSE(in.get_key_value("WIDTH", real, false));
    EXPECT_TRUE(in.get_key_value("EXP", real));
    EXPECT_DOUBLE_EQ(real, 150.0);

    int integer = 0;
    EXPECT_TRUE(in.get_key_value("COUNT", integer));
    EXPECT_EQ(integer, -3);
    // The minus sign is not part of an unsigned value: it is cut away.
    unsigned int count = 0;
    EXPECT_TRUE(in.get_key_value("SIZE", count));
    EXPECT_EQ(count, 5u);

    EXPECT_FALSE(in.get_key_value("EMPTY", text));
    EXPECT_EQ(text, "??");
    EXPECT_FALSE(in.get_key_value("EMPTY", real));
    EXPECT_FALSE(in.get_key_value("JUNK", integer));
    EXPECT_FALSE(in.get_key_value("JUNK", text));
    EXPECT_EQ(text, "??");

    // Not found: the documented undefined values.
    EXPECT_FALSE(in.get_key_value("MISSING", real));
    EXPECT_EQ(real, 1e30);
    EXPECT_FALSE(in.get_key_value("MISSING", integer));
    EXPECT_EQ(integer, 2147483647);
    EXPECT_FALSE(in.get_key_value("MISSING", count));
    EXPECT_EQ(count, 2147483647u);
    text = "x";
    EXPECT_FALSE(in.get_key_value("MISSING", text));
    EXPECT_EQ(text, "??");
}

TEST(DataFiles, FieldsOfTheCurrentLine)
{
    TempDir dir;
    InDataFile in(make_file(dir, "GRID  12abc   -4.5\t name\nA;;3.25;x y;\n"));
    in.setKeySeparator(0);
    ASSERT_TRUE(in.seek_keyword("GRID"));

    std::string text;
    EXPECT_TRUE(in.get_value(0, text));
    EXPECT_EQ(text, "GRID");
    EXPECT_TRUE(in.get_value(1, text));
    EXPECT_EQ(text, "GRID");
    int integer = 0;
    EXPECT_TRUE(in.get_value(2, integer));
    EXPECT_EQ(integer, 12);
    double real = 0.0;
    EXPECT_TRUE(in.get_value(3, real));
    EXPECT_DOUBLE_EQ(real, -4.5);
    EXPECT_TRUE(in.get_value(4, text));
    EXPECT_EQ(text, "name");
    EXPECT_FALSE(in.get_value(5, text));
    EXPECT_FALSE(in.get_value(4, real));

    ASSERT_TRUE(in.next_line());
    EXPECT_TRUE(in.get_value(1, text, ';'));
    EXPECT_EQ(text, "A");
    EXPECT_FALSE(in.get_value(2, real, ';'));
    EXPECT_TRUE(in.get_value(3, real, ';'));
    EXPECT_DOUBLE_EQ(real, 3.25);
    EXPECT_TRUE(in.get_value(4, text, ';'));
    EXPECT_EQ(text, "x");
    EXPECT_FALSE(in.get_value(5, text, ';'));
    EXPECT_FALSE(in.get_value(0, text, ';'));
    EXPECT_FALSE(in.get_value(-1, text, ';'));
    unsigned int count = 0;
    EXPECT_FALSE(in.get_value(1, count, ';'));
}

TEST(DataFiles, MissingAndEmptyFilesGiveFalse)
{
    TempDir dir;
    for (const std::string& path : {dir.file("absent.txt"), make_file(dir, "")})
    {
        InDataFile in(path);
        EXPECT_EQ(in.is_open(), path != dir.file("absent.txt"));
        EXPECT_FALSE(in.next_line());
        EXPECT_FALSE(in.seek_section("Ascii"));
        EXPECT_FALSE(in.seek_keyword("KEY"));
        double real = 0.0;
        EXPECT_FALSE(in.get_key_value("KEY", real));
        EXPECT_EQ(real, 1e30);
        std::string text;
        EXPECT_FALSE(in.get_value(1, text));
        EXPECT_FALSE(in.get_value(1, text, ';'));
    }
    OutDataFile out(dir.file("no/such/dir/out.txt"));
    EXPECT_FALSE(out.is_open());
}

TEST(DataFiles, WrittenFileReadsBack)
{
    TempDir dir;
    const std::string path = dir.file("out.txt");
    write_file(path, "old content that must disappear\n");
    {
        OutDataFile out(path);
        ASSERT_TRUE(out.is_open());
        out.separator();
        out.comment("Centerline");
        out.key_value("NAME", std::string("run_1"));
        out.key_value("N_POINTS", -2);
        out.key_value("N_VARIABLES", 4u);
        out.key_value("VERSION", 3.14159265, 3);
        out.key_value("RATIO", 0.1234567);
        out << std::scientific << std::setprecision(2);
        out.key_value("FIXED", 2.0, 1);
        EXPECT_EQ(out.precision(), 2);
        EXPECT_TRUE(out.flags() & std::ios::scientific);
        out.key_value("SCI", 12345.0);
        out.section("Ascii");
        out.word("1.5");
        out.word("2");
        out << '\n';
        out.close();
    }
    const std::string expected = "# " + std::string(69, '=') +
                                 "\n# Centerline\nNAME=run_1\nN_POINTS=-2\nN_VARIABLES=4\n"
                                 "VERSION=3.142\nRATIO=0.123457\nFIXED=2.0\nSCI=1.23e+04\n~Ascii\n1.5 2 \n";
    EXPECT_EQ(testing_support::read_file(path), expected);

    InDataFile in(path);
    std::string text;
    EXPECT_TRUE(in.get_key_value("NAME", text));
    EXPECT_EQ(text, "run_1");
    int integer = 0;
    EXPECT_TRUE(in.get_key_value("N_POINTS", integer));
    EXPECT_EQ(integer, -2);
    unsigned int count = 0;
    EXPECT_TRUE(in.get_key_value("N_VARIABLES", count));
    EXPECT_EQ(count, 4u);
    double real = 0.0;
    EXPECT_TRUE(in.get_key_value("VERSION", real));
    EXPECT_DOUBLE_EQ(real, 3.142);
    EXPECT_TRUE(in.get_key_value("SCI", real));
    EXPECT_DOUBLE_EQ(real, 12300.0);
    ASSERT_TRUE(in.seek_section("Ascii"));
    ASSERT_TRUE(in.next_line());
    EXPECT_TRUE(in.get_value(2, integer));
    EXPECT_EQ(integer, 2);

    // With no separator the key is followed by a blank, as prefix readers expect.
    {
        OutDataFile out(path);
        out.setKeySeparator(0);
        out.key_value("NX", 7);
        out.close();
    }
    EXPECT_EQ(testing_support::read_file(path), "NX 7\n");
    InDataFile grid(path);
    grid.setKeySeparator(0);
    EXPECT_TRUE(grid.get_key_value("NX", integer));
    EXPECT_EQ(integer, 7);
}
