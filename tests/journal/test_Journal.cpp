// The interface journal: its line format, the reading rules ("*", comments,
// levels, booleans, literals), the parameter groups written and read back, and
// bad journals that must give up cleanly.

#include "TestSupport.h"

#include "gui/DomainParameters.h"
#include "gui/InputJournalFile.h"
#include "gui/OutputJournalFile.h"
#include "gui/ParameterGroups.h"
#include "kernel/common/FaciesDescription.h"
#include "kernel/common/Tracer.h"
#include "kernel/parameters/Parameters.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

const std::string CORRUPTED =
    "Journal file seems to be corrupted. Please, look at sample journal files in data directory!";

std::string g_text(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%g", value);
    return buffer;
}

// Every registry entry by name, with the map it lives in found by probing.
enum class Kind
{
    Real,
    Int,
    Bool,
    Text
};

std::map<std::string, Kind> registry_names(Parameters& params, const TempDir& dir)
{
    const std::string path = dir.file("all.par");
    EXPECT_TRUE(params.write(path));
    std::istringstream lines(read_file(path));
    std::map<std::string, Kind> names;
    std::string line;
    while (std::getline(lines, line))
    {
        const std::size_t equal = line.rfind('=');
        if (equal == std::string::npos)
            continue;
        std::string name = line.substr(0, equal);
        name.erase(name.find_last_not_of(" \t") + 1);
        if (params.setParamDouble(name, params.getParamDouble(name)))
            names[name] = Kind::Real;
        else if (params.setParamInt(name, params.getParamInt(name)))
            names[name] = Kind::Int;
        else if (params.setParamBool(name, params.getParamBool(name)))
            names[name] = Kind::Bool;
        else
            names[name] = Kind::Text;
    }
    return names;
}

bool write_journal(Parameters& params, const std::string& path, bool sequence = false)
{
    OutputJournalFile journal(path);
    if (!journal.initiate())
        return false;
    ParameterGroupList groups(&params);
    const bool good = groups.saveInJnl(journal, sequence);
    journal.close();
    return good;
}

bool read_journal(Parameters& params, const std::string& path, std::string& message, bool sequence = false)
{
    InputJournalFile journal(path);
    if (!journal.open())
    {
        message = journal.getMessage();
        return false;
    }
    ParameterGroupList groups(&params);
    const bool good = groups.readFromJnl(journal, sequence);
    message = journal.getMessage();
    return good;
}

} // namespace

TEST(OutputJournalFile, LinesHoldValueFieldThenLabelsOfOpenLevels)
{
    TempDir dir;
    const std::string path = dir.file("out.jnl");
    OutputJournalFile journal(path);
    ASSERT_TRUE(journal.initiate());
    journal.upLevel("Domain");
    journal.upLevel("Origin");
    EXPECT_TRUE(journal.addReal("X (m)", 1234567.0));
    journal.downLevel();
    EXPECT_EQ(journal.getLevel(), 1);
    journal.addInt("N", -7);
    journal.addBool("On", true);
    journal.addBool("Off", false);
    journal.setComment("Comment label");
    journal.addString("Fluvial");
    journal.addColor(KemoColor(0.5, 0.25, 1.));
    journal.downLevel();
    journal.downLevel(); // one too many is harmless
    journal.addReal("Pi", 3.14159265358979);
    journal.close();

    const std::string expected = "1.23457e+06     # Domain / Origin / X (m)\n"
                                 "-7              # Domain / N\n"
                                 "true            # Domain / On\n"
                                 "false           # Domain / Off\n"
                                 "Fluvial         # Domain / Comment label\n"
                                 "0.5 0.25 1      # Domain / Comment label\n"
                                 "3.14159         # Pi\n";
    EXPECT_EQ(read_file(path), expected);

    // open() appends; initiate() empties.
    ASSERT_TRUE(journal.open());
    EXPECT_TRUE(journal.open());
    journal.addInt("More", 1);
    journal.close();
    EXPECT_EQ(read_file(path), expected + "1               # More\n");
    ASSERT_TRUE(journal.initiate());
    journal.close();
    EXPECT_EQ(read_file(path), "");

    OutputJournalFile nowhere(dir.file("missing/dir/x.jnl"));
    EXPECT_FALSE(nowhere.initiate());
    EXPECT_EQ(nowhere.getMessage(), "Warning: Unable to initiate the output journal file " +
                                        dir.file("missing/dir/x.jnl") + " for writing");
    EXPECT_FALSE(nowhere.open());
    EXPECT_EQ(nowhere.getMessage(), "Warning: Unable to open the output journal file " +
                                        dir.file("missing/dir/x.jnl") + " for writing");
    EXPECT_FALSE(nowhere.addInt("Lost", 1));
}

TEST(InputJournalFile, KeepValueCommentsLiteralsAndColors)
{
    TempDir dir;
    const std::string path = dir.file("in.jnl");
    write_file(path, "# a journal made by hand\n"
                     "*              # kept int\n"
                     "   42          # int\n"
                     "# a comment between two values\n"
                     "\n"
                     "*              # kept real\n"
                     "2.5e3          # real\n"
                     "hello world    # one word only\n"
                     "  My literal text   # literal\n"
                     "*              # kept literal\n"
                     "0.1 0.2 0.3    # colour\n"
                     "17             # unsigned\n"
                     "* 99           # star then junk on the label side\n"
                     "last literal");
    InputJournalFile journal(path);
    ASSERT_TRUE(journal.open());
    int number = 5;
    EXPECT_EQ(journal.getInt(number), 0);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(journal.getInt(number), 0);
    EXPECT_EQ(number, 42);
    double real = 1.5;
    EXPECT_EQ(journal.getReal(real), 0);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(journal.getReal(real), 0);
    EXPECT_EQ(real, 2500.);
    std::string word;
    EXPECT_EQ(journal.getString(word), 0);
    EXPECT_EQ(word, "hello");
    std::string literal = "before";
    EXPECT_EQ(journal.getLiteral(literal), 0);
    EXPECT_EQ(literal, "My literal text");
    EXPECT_EQ(journal.getLiteral(literal), 0);
    EXPECT_EQ(literal, "My literal text");
    KemoColor color;
    EXPECT_EQ(journal.getColor(color), 0);
    EXPECT_EQ(color, KemoColor(0.1, 0.2, 0.3));
    unsigned int count = 0;
    EXPECT_EQ(journal.getUInt(count), 0);
    EXPECT_EQ(count, 17u);
    EXPECT_EQ(journal.getInt(number), 0);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(journal.getLiteral(literal), 0);
    EXPECT_EQ(literal, "last literal");
    // Nothing left: reported, never a crash.
    EXPECT_EQ(journal.getInt(number), 1);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(journal.getMessage(), CORRUPTED);
    EXPECT_EQ(journal.getLiteral(literal), 1);
    EXPECT_EQ(literal, "last literal");
}

TEST(InputJournalFile, BooleanForms)
{
    TempDir dir;
    const std::string path = dir.file("bool.jnl");
    write_file(path, "true\n1\nt\nTrue\nTRUE\nT\nfalse\n0\nFalse\nFALSE\n*\nmaybe # not a boolean\n");
    InputJournalFile journal(path);
    ASSERT_TRUE(journal.open());
    for (int i = 0; i < 6; i++)
    {
        bool value = false;
        std::string text;
        EXPECT_EQ(journal.getBool(value, &text), 0) << i;
        EXPECT_TRUE(value) << text;
    }
    for (int i = 0; i < 4; i++)
    {
        bool value = true;
        EXPECT_EQ(journal.getBool(value), 0) << i;
        EXPECT_FALSE(value) << i;
    }
    bool kept = true;
    EXPECT_EQ(journal.getBool(kept), 0);
    EXPECT_TRUE(kept);
    EXPECT_EQ(journal.getBool(kept), 1);
    EXPECT_TRUE(kept);
    EXPECT_EQ(journal.getMessage(), CORRUPTED);
}

TEST(InputJournalFile, BadValuesAndLongLinesAreReportedByTheNextGet)
{
    TempDir dir;
    const std::string path = dir.file("bad.jnl");
    write_file(path, "abc            # not a number\n"
                     "12             # " +
                         std::string(300, 'x') +
                         "\n"
                         "-5             # not unsigned\n");
    InputJournalFile journal(path);
    ASSERT_TRUE(journal.open());
    int number = 3;
    EXPECT_EQ(journal.getInt(number), 1);
    EXPECT_EQ(number, 3);
    EXPECT_EQ(journal.getMessage(), CORRUPTED);
    EXPECT_EQ(journal.getInt(number), 1); // the error is cleared and reported

    // The label overflows the line buffer: the value is read, the next get fails.
    InputJournalFile longer(path);
    ASSERT_TRUE(longer.open());
    std::string skipped;
    ASSERT_TRUE(longer.getLine());
    EXPECT_EQ(longer.getInt(number), 0);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(longer.getInt(number), 1);
    EXPECT_EQ(number, 12);

    std::string long_literal = "kept";
    write_file(path, std::string(400, 'y') + "\n");
    InputJournalFile literal(path);
    ASSERT_TRUE(literal.open());
    EXPECT_EQ(literal.getLiteral(long_literal), 1);
    EXPECT_EQ(long_literal, "kept");

    write_file(path, "-5 # negative\n");
    InputJournalFile unsigned_journal(path);
    ASSERT_TRUE(unsigned_journal.open());
    unsigned int count = 8;
    EXPECT_EQ(unsigned_journal.getUInt(count), 1);
    EXPECT_EQ(count, 8u);

    InputJournalFile missing(dir.file("none.jnl"));
    EXPECT_FALSE(missing.open());
    EXPECT_EQ(missing.getMessage(),
              "Warning: Unable to open the input journal file " + dir.file("none.jnl") + " for reading");
    EXPECT_EQ(missing.getInt(number), 1);
    EXPECT_FALSE(missing.upLevel());
    EXPECT_EQ(missing.getLiteral(skipped), 1);
}

TEST(InputJournalFile, LevelsFollowBracesAndStopAtTheEnd)
{
    TempDir dir;
    const std::string path = dir.file("levels.jnl");
    write_file(path, "Channel group\n{\n  5   # a\n  {\n    6 # b\n  }\n}\n7 # c\n");
    InputJournalFile journal(path);
    ASSERT_TRUE(journal.open());
    int value = 0;
    EXPECT_TRUE(journal.upLevel());
    EXPECT_EQ(journal.getLevel(), 1);
    EXPECT_EQ(journal.getInt(value), 0);
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(journal.upLevel());
    EXPECT_EQ(journal.getInt(value), 0);
    EXPECT_EQ(value, 6);
    EXPECT_TRUE(journal.downLevel());
    EXPECT_TRUE(journal.downLevel());
    EXPECT_EQ(journal.getLevel(), 0);
    EXPECT_EQ(journal.getInt(value), 0);
    EXPECT_EQ(value, 7);
    // No brace left: both stop at the end with the stream usable.
    EXPECT_FALSE(journal.upLevel());
    EXPECT_FALSE(journal.downLevel());
    EXPECT_EQ(journal.getInt(value), 1);
}

TEST(ParameterGroups, DomainGroupFollowsTheDocumentedLines)
{
    TempDir dir;
    Tracer tracer;
    Parameters params(&tracer);
    params.setParamDouble("DOMAIN_OX", 1000.5);
    const std::string path = dir.file("domain.jnl");
    OutputJournalFile out(path);
    ASSERT_TRUE(out.initiate());
    DomainParameters domain(&params);
    ASSERT_TRUE(domain.saveInJnl(out, false));
    out.close();
    EXPECT_EQ(read_file(path), "Fluvial         # Simulation / System Type\n"
                               "1000.5          # Domain / Origin / X (m)\n"
                               "0               # Domain / Origin / Y (m)\n"
                               "251             # Domain / Dimensions / Number of nodes along X\n"
                               "201             # Domain / Dimensions / Number of nodes along Y\n"
                               "10              # Domain / Lags / Lag X (m)\n"
                               "10              # Domain / Lags / Lag Y (m)\n"
                               "0               # Domain / Grid Direction (degrees)\n");
    EXPECT_EQ(out.getLevel(), 0);

    Parameters lobes(&tracer);
    lobes.setParamString("SIM_TYPE", "Lobes");
    EXPECT_EQ(DomainParameters::systemTypeText(lobes), "Turbidite (Research)");
    lobes.setUsingTurbi();
    EXPECT_EQ(DomainParameters::systemTypeText(lobes), "Turbidite");

    // An unknown type is refused and leaves the registry alone.
    write_file(path, "Marine basin    # Simulation / System Type\n" + read_file(path).substr(48));
    InputJournalFile in(path);
    ASSERT_TRUE(in.open());
    Parameters other(&tracer);
    other.setParamDouble("DOMAIN_OX", 7.);
    EXPECT_FALSE(DomainParameters(&other).readFromJnl(in, false));
    EXPECT_EQ(in.getMessage(), CORRUPTED);
    EXPECT_EQ(other.getParamDouble("DOMAIN_OX"), 7.);
}

TEST(ParameterGroups, WholeJournalRoundTripsEveryParameterToSixDigits)
{
    TempDir dir;
    Tracer tracer;
    Parameters source(&tracer);
    source.setUsingTurbi();
    const std::map<std::string, Kind> names = registry_names(source, dir);
    ASSERT_GT(names.size(), 90u);

    // A distinct value for every entry, with more digits than the journal keeps.
    int k = 0;
    for (const auto& [name, kind] : names)
    {
        k++;
        if (kind == Kind::Real)
            source.setParamDouble(name, (k % 2 ? 1. : -1.) * 1.23456789 * std::pow(10., k % 7 - 2) + k);
        else if (kind == Kind::Int)
            source.setParamInt(name, 1000 + 37 * k);
        else if (kind == Kind::Bool)
            source.setParamBool(name, !source.getParamDefBool(name));
    }
    source.setSinuoInterval(250);
    source.setCurvaturePointsNumber(7);
    source.setCondMigWells(4);
    source.setCondAvWells(false);
    source.setCondNewAlgo(false);
    source.setCondAvMP(true);
    source.setCondBlockAv(false);
    source.setDryChannel(true);
    source.setOldFilling(true);
    source.setBankErodCoeff(0.123456789);
    source.setTurbAggHeightCoeff(2.5);
    source.setScourFactor(0.75);
    source.setFrictionCoeff(0.0125);
    source.setMinGrainsize(3);
    source.setMaxGrainsize(11);

    const std::string path = dir.file("all.jnl");
    ASSERT_TRUE(write_journal(source, path));

    // Read into a fluvial registry: the type changes, and the seed read first survives it.
    Parameters target(&tracer);
    std::string message;
    ASSERT_TRUE(read_journal(target, path, message)) << message;
    EXPECT_TRUE(target.usingTurbi());
    EXPECT_EQ(target.getParamDefDouble("CHNL_WIDTH"), 800.);
    for (const auto& [name, kind] : names)
    {
        if (kind == Kind::Real)
        {
            const double written = source.getParamDouble(name);
            EXPECT_EQ(target.getParamDouble(name), std::stod(g_text(written))) << name;
            EXPECT_NEAR(target.getParamDouble(name), written, 5e-6 * std::fabs(written)) << name;
        }
        else if (kind == Kind::Int)
            EXPECT_EQ(target.getParamInt(name), source.getParamInt(name)) << name;
        else if (kind == Kind::Bool)
            EXPECT_EQ(target.getParamBool(name), source.getParamBool(name)) << name;
        else
            EXPECT_EQ(target.getParamString(name), source.getParamString(name)) << name;
    }
    EXPECT_EQ(target.sinuoInterval(), 250u);
    EXPECT_EQ(target.curvaturePointsNumber(), 7);
    EXPECT_EQ(target.getCondMigWellsFactor(), 4);
    EXPECT_FALSE(target.usingCondAvWells());
    EXPECT_FALSE(target.usingCondNewAlgo());
    EXPECT_TRUE(target.usingCondAvMP());
    EXPECT_FALSE(target.usingCondBlockAv());
    EXPECT_TRUE(target.usingDryChannel());
    EXPECT_TRUE(target.usingOldFilling());
    EXPECT_DOUBLE_EQ(target.getBankErodCoeff(), 0.123457);
    EXPECT_EQ(target.getTurbAggHeightCoeff(), 2.5);
    EXPECT_EQ(target.getScourFactor(), 0.75);
    EXPECT_EQ(target.getFrictionCoeff(), 0.0125);
    EXPECT_EQ(target.getMinGrainsize(), 3);
    EXPECT_EQ(target.getMaxGrainsize(), 11);

    // Written again, the journal is the same text: nothing drifts.
    const std::string again = dir.file("again.jnl");
    ASSERT_TRUE(write_journal(target, again));
    EXPECT_EQ(read_file(again), read_file(path));
}

TEST(ParameterGroups, SequenceRecordKeepsTheGridAndStarsKeepValues)
{
    TempDir dir;
    Tracer tracer;
    Parameters source(&tracer);
    source.setParamInt("DOMAIN_NX", 400);
    source.setParamDouble("CHNL_WIDTH", 55.);
    source.setParamDouble("CHNL_MAX_DEPTH", 4.5);
    const std::string path = dir.file("seq.jnl");
    ASSERT_TRUE(write_journal(source, path, true));

    // A sequence record reads through the domain lines without applying them.
    Parameters target(&tracer);
    std::string message;
    ASSERT_TRUE(read_journal(target, path, message, true)) << message;
    EXPECT_EQ(target.getParamInt("DOMAIN_NX"), 251);
    EXPECT_EQ(target.getParamDouble("CHNL_WIDTH"), 55.);

    // "*" in place of the width keeps the width in force; the depth after it is still read.
    std::string text = read_file(path);
    const std::size_t width = text.find("55 ");
    ASSERT_NE(width, std::string::npos);
    text.replace(width, 2, "* ");
    write_file(path, text);
    Parameters starred(&tracer);
    starred.setParamDouble("CHNL_WIDTH", 31.);
    ASSERT_TRUE(read_journal(starred, path, message)) << message;
    EXPECT_EQ(starred.getParamDouble("CHNL_WIDTH"), 31.);
    EXPECT_EQ(starred.getParamDouble("CHNL_MAX_DEPTH"), 4.5);
    EXPECT_EQ(starred.getParamInt("DOMAIN_NX"), 400);
}

TEST(ParameterGroups, BadJournalsGiveUpWithTheMessage)
{
    TempDir dir;
    Tracer tracer;
    Parameters source(&tracer);
    source.setParamDouble("CHNL_WIDTH", 55.);
    const std::string path = dir.file("good.jnl");
    ASSERT_TRUE(write_journal(source, path));
    const std::string good = read_file(path);
    std::string message;

    // A bad value in the channel group: that group is left as it was.
    std::string text = good;
    const std::size_t depth = text.find("3               # Channel / Maximum Depth");
    ASSERT_NE(depth, std::string::npos);
    text.replace(depth, 1, "x");
    write_file(path, text);
    Parameters target(&tracer);
    EXPECT_FALSE(read_journal(target, path, message));
    EXPECT_EQ(message, CORRUPTED);
    EXPECT_EQ(target.getParamDouble("CHNL_WIDTH"), 30.);

    // Truncated anywhere, empty, missing or binary: false, never a crash.
    const std::size_t last_line = good.rfind('\n', good.size() - 2) + 1;
    for (std::size_t cut : {std::size_t(0), good.size() / 3, last_line})
    {
        write_file(path, good.substr(0, cut));
        Parameters cut_target(&tracer);
        EXPECT_FALSE(read_journal(cut_target, path, message)) << cut;
        EXPECT_EQ(message, CORRUPTED) << cut;
    }
    write_file(path, std::string("\0\xff\x01*#\n{\n", 8) + std::string(1000, '\xfe'));
    Parameters binary(&tracer);
    EXPECT_FALSE(read_journal(binary, path, message));
    Parameters nothing(&tracer);
    EXPECT_FALSE(read_journal(nothing, dir.file("absent.jnl"), message));
    EXPECT_EQ(message,
              "Warning: Unable to open the input journal file " + dir.file("absent.jnl") + " for reading");
}
