// Well files: FLW written and read back, LAS logs placed along a trajectory,
// format detection, every refusal with its exact message, and damaged files
// that must be refused or read without a crash.
#include "kernel/common/Tracer.h"
#include "kernel/files/Core.h"
#include "kernel/files/UserClassList.h"

#include "../support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using testing_support::capture;
using testing_support::edited;
using testing_support::g_trace;
using testing_support::read_file;
using testing_support::replaced;
using testing_support::TempDir;
using testing_support::traced;
using testing_support::write_file;

namespace
{
const std::string FLW = "# comment\n"
                        "X_WELL=100\n"
                        "Y_WELL=200\n"
                        "Z_BOTTOM=5.0000\n"
                        "Z_TOP=10.0000\n"
                        "ATTRIBUTE_COLUMN=1\n"
                        "DEPTH_COLUMN=2\n"
                        "HEIGHT_COLUMN=3\n"
                        "AGE_COLUMN=4\n"
                        "DISCRETE_ATTRIBUTE=1\n"
                        "STANDARD_FACIES=1\n"
                        "~Ascii\n"
                        "  2  2.0000  2.0000  12  PB\n"
                        "  8  5.0000  3.0000  10  OB\n";

const std::string LAS = "~Version\n"
                        "VERS.   2.0 : version\n"
                        "WRAP.   NO : one line per step\n"
                        "~Well\n"
                        "STRT.M   1.0 : start\n"
                        "STOP.M   4.0 : stop\n"
                        "STEP.M   1.0 : step\n"
                        "NULL.    -999.25 : null\n"
                        "WELL.    LW1 : well\n"
                        "ELEV.M   50.0 : head\n"
                        "~Parameter\n"
                        "XWELL.M  1000.0 : x\n"
                        "YWELL.M  2000.0 : y\n"
                        "~Curve\n"
                        "DEPT.M   : depth\n"
                        "FACIES.  : code\n"
                        "~A\n"
                        "1.0 sand\n"
                        "2.0 sand\n"
                        "3.0 shale\n"
                        "4.0 -999.25\n";

const std::string TRAJ = "~Version\n"
                         "WRAP. NO :\n"
                         "~Well\n"
                         "STRT.M 0.0 :\n"
                         "STOP.M 6.0 :\n"
                         "NULL. -999.25 :\n"
                         "WELL. LW1 :\n"
                         "ELEV.M 50.0 :\n"
                         "~Curve\n"
                         "MD.M :\n"
                         "X.M :\n"
                         "Y.M :\n"
                         "TVD.M :\n"
                         "~A\n"
                         "0.0 1000.0 2000.0 0.0\n"
                         "2.0 1000.0 2000.0 2.0\n"
                         "6.0 1003.0 2004.0 5.0\n";

// A sound text damaged by one replacement, and the exact message its reading is refused with.
struct Refusal
{
    std::string base, from, to, message;
};

// Writes each damaged text to `damaged`; reading it into a new core `name` must fail with the message.
void expect_refusals(const std::string& damaged, const std::vector<Refusal>& cases, const std::string& name,
                     const std::function<bool(Core&)>& read)
{
    for (const Refusal& c : cases)
    {
        SCOPED_TRACE(c.from + " -> " + c.to);
        write_file(damaged, replaced(c.base, c.from, c.to));
        Core core(name);
        EXPECT_FALSE(read(core));
        EXPECT_EQ(core.getError(), c.message);
    }
}

// Deterministic generator for the damaged files.
struct Lcg
{
    uint64_t state;
    uint32_t next()
    {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(state >> 33);
    }
};

Core standard_core()
{
    Core core(100., 200., 10., "W");
    CoreSampleTags tags;
    tags.age = 12;
    core.add(2, 2., tags);
    tags.age = 10;
    core.add(8, 3., tags);
    tags.age = 3;
    core.add(1, 0.25, tags);
    return core;
}
} // namespace

TEST(CoreFiles, FormatDetectionAndNames)
{
    TempDir dir;
    const std::string flw = dir.file("w.flw");
    const std::string las = dir.file("w.las");
    write_file(flw, FLW);
    write_file(las, LAS);
    write_file(dir.file("plain.txt"), "X_WELL=1\n");
    write_file(dir.file("neither.txt"), "~Ascii\n1 2\n");
    EXPECT_EQ(Core::get_format(flw), 0);
    EXPECT_EQ(Core::get_format(las), 1);
    EXPECT_EQ(Core::get_format(dir.file("missing")), 3);
    EXPECT_EQ(Core::get_format(dir.file("plain.txt")), 3);
    EXPECT_EQ(Core::get_format(dir.file("neither.txt")), 3);
    EXPECT_EQ(Core::get_format_label(0), "FLW");
    EXPECT_EQ(Core::get_format_label(1), "LAS");
    EXPECT_EQ(Core::get_format_label(3), "UNDEFINED");

    std::string name;
    EXPECT_TRUE(Core::get_name(las, "dflt", name));
    EXPECT_EQ(name, "LW1");
    EXPECT_TRUE(Core::get_name(flw, "dflt", name));
    EXPECT_EQ(name, "dflt");
    EXPECT_FALSE(Core::get_name(dir.file("missing"), "dflt", name));
    EXPECT_EQ(name, "??");
    write_file(las, replaced(LAS, "WELL.    LW1 : well", "WELL.    : well"));
    EXPECT_FALSE(Core::get_name(las, "dflt", name));

    Core core;
    EXPECT_FALSE(core.read(dir.file("plain.txt"), ""));
    EXPECT_EQ(core.getError(), "Unknown format of well file " + dir.file("plain.txt"));
}

TEST(CoreFiles, FlwRoundTrips)
{
    TempDir dir;
    const std::string path = dir.file("out.flw");

    const Core core = standard_core();
    ASSERT_TRUE(core.write(path, "made by a test"));
    const std::string text = read_file(path);
    EXPECT_EQ(text.rfind("# =====", 0), 0u);
    EXPECT_NE(text.find("# made by a test\n# Coordinates, depth and thickness are expressed in meters\n"),
              std::string::npos);
    EXPECT_NE(text.find("Z_BOTTOM=4.7500\n# Top elevation\nZ_TOP=10.0000\n"), std::string::npos);
    EXPECT_NE(text.find("AGE_COLUMN=4\nFACIES_ID=5\n# Standard well format:\n"), std::string::npos);
    EXPECT_NE(text.find("~Ascii\n  2  2.0000  2.0000       12   PB\n"), std::string::npos) << text;

    Core back("W");
    ASSERT_TRUE(back.read(path, "")) << back.getError();
    ASSERT_EQ(back.size(), 3);
    EXPECT_TRUE(back.isVertical());
    EXPECT_TRUE(back.isStandardFacies());
    EXPECT_DOUBLE_EQ(back.top_location().get_abscissa(), 100.);
    EXPECT_DOUBLE_EQ(back.top_elevation(), 10.);
    for (int k = 0; k < 3; ++k)
    {
        EXPECT_EQ(back.getSample(k).getFacies(), core.getSample(k).getFacies());
        EXPECT_NEAR(back.getSample(k).getZ(), core.getSample(k).getZ(), 1e-9);
        EXPECT_NEAR(back.getSample(k).getHeight(), core.getSample(k).getHeight(), 1e-9);
        EXPECT_EQ(back.getSample(k).getAge(), core.getSample(k).getAge());
    }

    // User attributes, discrete then continuous.
    Core discrete(5., 6., 20., "D");
    discrete.setStandardFacies(false);
    for (const char* attribute : {"sand", "shale"})
    {
        CoreSampleTags tags;
        tags.attributeText = attribute;
        discrete.add(0, 1.5, tags);
    }
    ASSERT_TRUE(discrete.write(path, ""));
    EXPECT_NE(read_file(path).find("DISCRETE_ATTRIBUTE=1\nSTANDARD_FACIES=0\n"), std::string::npos);
    ASSERT_TRUE(back.read(path, "")) << back.getError();
    EXPECT_FALSE(back.isStandardFacies());
    ASSERT_EQ(back.size(), 2);
    EXPECT_EQ(back.getSample(1).getAttributeText(), "shale");
    EXPECT_DOUBLE_EQ(back.bottom_elevation(), 17.);

    Core continuous = discrete;
    continuous.getSamples()[0].setAttributeValue(45.125);
    continuous.getSamples()[1].setAttributeValue(-3.5);
    ASSERT_TRUE(continuous.write(path, ""));
    ASSERT_TRUE(back.read(path, "")) << back.getError();
    EXPECT_FALSE(back.has_discrete_attribute());
    EXPECT_DOUBLE_EQ(back.getSample(0).getAttributeValue(), 45.125);
    EXPECT_DOUBLE_EQ(back.getSample(1).getAttributeValue(), -3.5);

    // Deviated: the written age column is the height column, so the age read is the height's integer part.
    Core deviated(0., 0., 10., "V");
    deviated.setVertical(false);
    CoreSampleTags tags;
    tags.age = 40;
    deviated.add(2, 1., 2., 7.5, tags);
    deviated.add(9, 2., 2.5, 4., tags);
    ASSERT_TRUE(deviated.write(path, ""));
    ASSERT_TRUE(back.read(path, "")) << back.getError();
    EXPECT_FALSE(back.isVertical());
    ASSERT_EQ(back.size(), 2);
    EXPECT_DOUBLE_EQ(back.getSample(1).getLocation().get_ordinate(), 2.5);
    EXPECT_DOUBLE_EQ(back.getSample(0).getHeight(), 2.5);
    EXPECT_EQ(back.getSample(0).getAge(), 2u);
    EXPECT_EQ(back.getSample(1).getAge(), 3u);

    Core inverted = standard_core();
    inverted.set_top_elevation(1.);
    EXPECT_FALSE(inverted.write(path, ""));
    EXPECT_EQ(inverted.getError(),
              "Invalid core elevations: top elevation (1) is lower than bottom elevation (4.75)");
    EXPECT_FALSE(core.write(dir.file("no/such/dir.flw"), ""));
    EXPECT_EQ(core.getError(), "Cannot write well file " + dir.file("no/such/dir.flw"));
}

TEST(CoreFiles, FlwMessages)
{
    TempDir dir;
    const std::string p = dir.file("w.flw");
    const std::string user = replaced(FLW, "STANDARD_FACIES=1", "STANDARD_FACIES=0");
    const std::string continuous = replaced(user, "DISCRETE_ATTRIBUTE=1", "DISCRETE_ATTRIBUTE=0");
    const std::vector<Refusal> cases = {
        {FLW, "X_WELL=100", "X_WELL=", "Error when parsing X_WELL in file " + p},
        {FLW, "Y_WELL=200", "", "Error when parsing Y_WELL in file " + p},
        {FLW, "Z_BOTTOM=5.0000", "", "Error when parsing Z_BOTTOM in file " + p},
        {FLW, "Z_TOP=10.0000", "", "Error when parsing Z_TOP in file " + p},
        {FLW, "Z_BOTTOM=5.0000", "Z_BOTTOM=11", "Error: Z_TOP < Z_BOTTOM in file " + p},
        {FLW, "ATTRIBUTE_COLUMN=1", "", "Error when parsing ATTRIBUTE_COLUMN keyword in file " + p},
        {FLW, "STANDARD_FACIES=1", "",
         "Error when parsing DISCRETE_ATTRIBUTE or STANDARD_FACIES keyword in file " + p},
        {FLW, "DEPTH_COLUMN=2", "XS_BOT=2", "Error when parsing YS_BOT keyword in file " + p},
        {FLW, "DEPTH_COLUMN=2", "XS_BOT=2\nYS_BOT=3", "Error when parsing ZS_BOT keyword in file " + p},
        {FLW, "DEPTH_COLUMN=2", "", "Error when parsing DEPTH_COLUMN keyword in file " + p},
        {FLW, "~Ascii", "~ASCII", "Error when parsing input file. Ascii section was not found in file " + p},
        {FLW, "  8  5.0000", "  x8  5.0000",
         "Error: facies is not an integer in file " + p + " x8  5.0000  3.0000  10  OB"},
        {FLW, "  8  5.0000", "  2.5  5.0000",
         "Error: facies is not an integer in file " + p + " 2.5  5.0000  3.0000  10  OB"},
        {FLW, "  8  5.0000", "  14  5.0000",
         "Error: facies id out of range in file " + p + " 14  5.0000  3.0000  10  OB"},
        {FLW, "  8  5.0000", "  -1  5.0000",
         "Error: facies id out of range in file " + p + " -1  5.0000  3.0000  10  OB"},
        {user, "ATTRIBUTE_COLUMN=1", "ATTRIBUTE_COLUMN=9",
         "Error: attribute is empty in file " + p + " 2  2.0000  2.0000  12  PB"},
        {continuous, "  2  2.0000", "  abc  2.0000",
         "Error: value is not a number in file " + p + " abc  2.0000  2.0000  12  PB"},
        {continuous, "  2  2.0000", "  1e999  2.0000",
         "Error: value is not a number in file " + p + " 1e999  2.0000  2.0000  12  PB"},
        {FLW, "  8  5.0000", "  8  five",
         "Error: value is not a number in file " + p + " 8  five  3.0000  10  OB"},
        {FLW, "  2  2.0000  2.0000  12  PB\n  8  5.0000  3.0000  10  OB\n", "", "Error: no deposits read"},
        {FLW, "Z_BOTTOM=5.0000", "Z_BOTTOM=4",
         "The bottom of the well has not been reached! Well Bottom = 4 Last Sample Bottom = 5 in file " + p},
    };
    expect_refusals(p, cases, "W", [&](Core& core) { return core.read(p); });
    // A facies column name gives a standard log without the two flags.
    write_file(p, edited(FLW, {{"ATTRIBUTE_COLUMN=1", "FACIES_COLUMN=1"}, {"STANDARD_FACIES=1", ""}}));
    Core core("W");
    EXPECT_TRUE(core.read(p)) << core.getError();
    EXPECT_EQ(core.getSample(1).getFacies(), 8);

    // A sample of null length is only traced.
    write_file(p, replaced(FLW, "  8  5.0000", "  9  2.0000  0.0000  1  MP\n  8  5.0000"));
    g_trace.clear();
    Tracer tracer;
    tracer.setTraceFunction(capture);
    Core traced("W", &tracer);
    ASSERT_TRUE(traced.read(p)) << traced.getError();
    EXPECT_EQ(traced.size(), 2);
    EXPECT_NE(g_trace.find("Core sample with null length is ignored in well file " + p +
                           " 9  2.0000  0.0000  1  MP"),
              std::string::npos)
        << g_trace;
}

TEST(CoreFiles, LasAlongTrajectory)
{
    TempDir dir;
    const std::string las = dir.file("w.las");
    const std::string traj = dir.file("w.traj");
    write_file(las, LAS);
    write_file(traj, TRAJ);
    Core core;
    ASSERT_TRUE(core.read(las, traj)) << core.getError();
    EXPECT_EQ(core.getName(), "LW1");
    EXPECT_FALSE(core.isVertical());
    EXPECT_FALSE(core.isStandardFacies());
    EXPECT_DOUBLE_EQ(core.top_elevation(), 50.);
    // Undefined above the start, sand to 2.5, shale to 3.5, undefined (null) to the stop at 4.
    ASSERT_EQ(core.size(), 4);
    EXPECT_EQ(core.getSample(1).getAttributeText(), "sand");
    EXPECT_EQ(core.getSample(2).getAttributeText(), "shale");
    EXPECT_EQ(core.getSample(3).getAttributeText(), "UD");
    EXPECT_EQ(core.getSample(0).getFacies(), 0);
    // Between MD 2 (1000, 2000, tvd 2) and MD 6 (1003, 2004, tvd 5).
    const double mds[] = {1., 2.5, 3.5, 4.};
    for (int k = 0; k < 4; ++k)
    {
        const double md = mds[k];
        const double t = md <= 2. ? 0. : (md - 2.) / 4.;
        const double tvd = md <= 2. ? md : 2. + 3. * t;
        const CoreSample& sample = core.getSample(k);
        EXPECT_NEAR(sample.getLocation().get_abscissa(), 1000. + 3. * t, 1e-9) << k;
        EXPECT_NEAR(sample.getLocation().get_ordinate(), 2000. + 4. * t, 1e-9) << k;
        EXPECT_NEAR(sample.getZ(), 50. - tvd, 1e-9) << k;
    }
    EXPECT_NEAR(core.getSample(2).getHeight(), 0.75, 1e-9);
    EXPECT_NEAR(core.getSample(2).getLength(), std::sqrt(0.75 * 0.75 + 1. + 0.75 * 0.75), 1e-9);
    // Facies come from the user's classes; the undefined ends then go.
    UserClassList classes;
    std::string error;
    ASSERT_TRUE(classes.addDiscrete(2, "sand", error));
    ASSERT_TRUE(classes.addDiscrete(8, "shale", error));
    EXPECT_EQ(classes.apply(core), 2);
    core.trim();
    ASSERT_EQ(core.size(), 2);
    EXPECT_EQ(core.getSample(1).getFacies(), 8);
    EXPECT_DOUBLE_EQ(core.top_elevation(), 49.);

    // Comma-separated rows, elevations given directly, and no head position in either file.
    write_file(las, edited(LAS, {{"WRAP.   NO : one line per step", "WRAP. NO :\nDLM. COMMA :"},
                                 {"1.0 sand", "1.0,sand"},
                                 {"2.0 sand", "2.0, sand"},
                                 {"3.0 shale", "3.0,shale"},
                                 {"4.0 -999.25", "4.0,-999.25"},
                                 {"XWELL.M  1000.0 : x\nYWELL.M  2000.0 : y\n", ""}}));
    write_file(traj, edited(TRAJ, {{"TVD.M :", "Z.M :"},
                                   {"0.0 1000.0 2000.0 0.0", "0.0 1000.0 2000.0 50.0"},
                                   {"2.0 1000.0 2000.0 2.0", "2.0 1000.0 2000.0 48.0"},
                                   {"6.0 1003.0 2004.0 5.0", "6.0 1003.0 2004.0 45.0"}}));
    Core comma;
    ASSERT_TRUE(comma.read(las, traj)) << comma.getError();
    ASSERT_EQ(comma.size(), 4);
    EXPECT_NEAR(comma.getSample(2).getZ(), 50. - 3.125, 1e-9);
    EXPECT_EQ(comma.getSample(1).getAttributeText(), "sand");
}

TEST(CoreFiles, LasMessages)
{
    TempDir dir;
    const std::string p = dir.file("w.las");
    const std::string t = dir.file("w.traj");
    const std::string noStep = replaced(LAS, "STEP.M   1.0 : step\n", "");
    const std::vector<Refusal> facies = {
        {LAS, "WRAP.   NO : one line per step\n", "", "Error when parsing WRAP in file " + p},
        {LAS, "WRAP.   NO", "WRAP.   YES", "Error: WRAP must be NO in file " + p},
        {LAS, "~Well\n", "~Well\nDLM. PIPE :\n", "Error: DLM must be SPACE, TAB or COMMA in file " + p},
        {LAS, "~Well\n", "~Well\nDEPTH_TYPE. TVD :\n", "Error: DEPTH_TYPE must be MD in file " + p},
        {LAS, "STRT.M   1.0 : start\n", "", "Error when parsing STRT in file " + p},
        {LAS, "STOP.M   4.0 : stop\n", "", "Error when parsing STOP in file " + p},
        {LAS, "STRT.M   1.0", "STRT.M   5.0", "Error: STRT > STOP in file " + p},
        {LAS, "STEP.M   1.0", "STEP.M   0.001", "Error: STEP must be greater than 0.01m in file " + p},
        {LAS, "NULL.    -999.25 : null\n", "", "Error when parsing NULL in file " + p},
        {LAS, "WELL.    LW1 : well\n", "", "Error when parsing WELL in file " + p},
        {LAS, "YWELL.M  2000.0 : y\n", "", "Error when parsing XWELL and YWELL in file " + p},
        {LAS, "FACIES.  : code\n", "FACIES.  : code\nGR.  : gamma\n",
         "Error: Only one <attribute> column is authorized in file " + p},
        {LAS, "DEPT.M   : depth\n", "",
         "Error: DEPTH and <attribute> column positions not found in file " + p},
        {LAS, "1.0 sand", "1.5 sand",
         "Error: first measure depth (MD) is not equal to the start depth (STRT) in file " + p + " 1.5 sand"},
        {LAS, "2.0 sand", "abc sand", "Error: depth is not a number in file " + p + " abc sand"},
        {noStep, "3.0 shale", "1.5 shale", "Error: decreasing depth forbidden in well " + p + " 1.5 shale"},
        {LAS, "3.0 shale", "2.5 shale", "Error: well is not regular in well " + p + " 2.5 shale"},
        {LAS, "STOP.M   4.0", "STOP.M   2.0",
         "Error: sample bottom elevation is below well bottom in well " + p + " 2.0 sand"},
        {LAS, "2.0 sand", "2.0", "Error: attribute is not a valid string in file " + p + " 2.0"},
        {LAS, "1.0 sand\n2.0 sand\n3.0 shale\n", "1.0 -999.25\n2.0 -999.25\n3.0 -999.25\n",
         "Error: no defined sample in well " + p},
    };
    const auto read_both = [&](Core& core) { return core.read(p, t); };
    write_file(t, TRAJ);
    expect_refusals(p, facies, "", read_both);

    write_file(p, LAS);
    const std::string zTraj = replaced(TRAJ, "TVD.M :", "Z.M :");
    const std::vector<Refusal> trajectory = {
        {TRAJ, "WELL. LW1", "WELL. OTHER", "Error: LAS headers do not match in " + t},
        {TRAJ, "~Curve\n", "~Kurve\n",
         "Error when parsing input file. Curve section was not found in file " + t},
        {TRAJ, "MD.M :\nX.M :\nY.M :\nTVD.M :\n", "", "Cannot read column headers in trajectory file " + t},
        {TRAJ, "TVD.M :\n", "", "Not enough columns in trajectory file " + t},
        {TRAJ, "MD.M :", "DEPTH.M :", "Missing required columns (MD, X, Y) in trajectory file " + t},
        {TRAJ, "TVD.M :", "W.M :", "Missing required column (TVD or TVDRT or Z) in trajectory file " + t},
        {TRAJ, "~A\n", "~Data\n", "Error when parsing input file. Ascii section was not found in file " + t},
        {TRAJ, "0.0 1000.0 2000.0 0.0", "a 1000.0 2000.0 0.0",
         "Error: Wrong first MD value in trajectory file " + t + " a 1000.0 2000.0 0.0"},
        {TRAJ, "0.0 1000.0 2000.0 0.0", "1.0 1000.0 2000.0 0.0",
         "Error: First MD should be null in trajectory file " + t + " 1.0 1000.0 2000.0 0.0"},
        {TRAJ, "2.0 1000.0", "x 1000.0",
         "Error: Wrong MD value in trajectory file " + t + " x 1000.0 2000.0 2.0"},
        {TRAJ, "6.0 1003.0", "1.0 1003.0",
         "Error: Non increasing MD in trajectory file " + t + " 1.0 1003.0 2004.0 5.0"},
        {TRAJ, "6.0 1003.0", "2.0000001 1003.0",
         "Error: Consecutive MD too close in trajectory file " + t + " 2.0000001 1003.0 2004.0 5.0"},
        {TRAJ, "2.0 1000.0 2000.0", "2.0 x 2000.0",
         "Error: Wrong X value in trajectory file " + t + " 2.0 x 2000.0 2.0"},
        {TRAJ, "2.0 1000.0 2000.0", "2.0 1000.0 y",
         "Error: Wrong Y value in trajectory file " + t + " 2.0 1000.0 y 2.0"},
        {TRAJ, "2004.0 5.0", "2004.0 z",
         "Error: Wrong TVD or TVDRT value in trajectory file " + t + " 6.0 1003.0 2004.0 z"},
        {zTraj, "2004.0 5.0", "2004.0 z",
         "Error: Wrong Z value in trajectory file " + t + " 6.0 1003.0 2004.0 z"},
        {TRAJ, "6.0 1003.0", "3.0 1003.0", "Error: Not enough trajectory data in file " + t},
    };
    expect_refusals(t, trajectory, "", read_both);

    Core core;
    EXPECT_FALSE(core.read(p, ""));
    EXPECT_EQ(core.getError(), "Cannot import LAS well: facies and trajectory files must be defined");
    EXPECT_FALSE(core.read(p, dir.file("missing")));
    EXPECT_EQ(core.getError(), "Cannot read trajectory file " + dir.file("missing"));

    // Neither head coordinate is accepted; a tab-delimited file reads too.
    write_file(t, TRAJ);
    write_file(p, replaced(LAS, "XWELL.M  1000.0 : x\nYWELL.M  2000.0 : y\n", ""));
    EXPECT_TRUE(core.read(p, t)) << core.getError();
    write_file(p, edited(LAS, {{"~Well\n", "~Well\nDLM. TAB :\n"},
                               {"2.0 sand", "2.0\tsand"},
                               {"1.0 sand", "1.0\tsand"}}));
    EXPECT_FALSE(core.read(p, t)); // the other rows are not tab-delimited
    EXPECT_EQ(core.getError(), "Error: attribute is not a valid string in file " + p + " 3.0 shale");
}

TEST(CoreFiles, DamagedFilesNeverCrash)
{
    TempDir dir;
    Core reference = standard_core();
    const std::string flwPath = dir.file("ref.flw");
    ASSERT_TRUE(reference.write(flwPath, "reference"));
    const std::string flw = read_file(flwPath);
    const std::vector<std::pair<std::string, int>> sources = {{flw, 0}, {FLW, 0}, {LAS, 1}, {TRAJ, 2}};
    const std::string las = dir.file("d.las");
    const std::string traj = dir.file("d.traj");
    const std::string damaged = dir.file("d.flw");
    const char alphabet[] = "~.=#-+e0123456789 \t\n,:ASCIWV";
    Lcg lcg{20240611ULL};
    int variants = 0;
    int accepted = 0;
    for (const auto& source : sources)
    {
        const std::string& text = source.first;
        for (int v = 0; v < 100; ++v)
        {
            std::string bytes = text;
            if (v < 30)
                bytes = text.substr(0, lcg.next() % text.size());
            else
            {
                const int edits = 1 + static_cast<int>(lcg.next() % 4);
                for (int e = 0; e < edits; ++e)
                {
                    const size_t at = lcg.next() % bytes.size();
                    const uint32_t pick = lcg.next();
                    bytes[at] =
                        (pick & 1) ? alphabet[pick % (sizeof(alphabet) - 1)] : static_cast<char>(pick >> 8);
                }
            }
            Core core("F");
            bool ok = false;
            if (source.second == 0)
            {
                write_file(damaged, bytes);
                ok = core.read(damaged, "");
            }
            else
            {
                write_file(las, source.second == 1 ? bytes : LAS);
                write_file(traj, source.second == 2 ? bytes : TRAJ);
                ok = core.read(las, traj);
            }
            ++variants;
            if (ok)
            {
                ++accepted;
                EXPECT_FALSE(core.empty());
            }
            else
                EXPECT_FALSE(core.getError().empty());
        }
    }
    EXPECT_EQ(variants, 400);
    EXPECT_GT(accepted, 0);
    EXPECT_LT(accepted, variants);
}
