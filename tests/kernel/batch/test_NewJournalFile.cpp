#include "kernel/batch/NewJournalFile.h"

#include "FakeSimulator.h"
#include "TestSupport.h"
#include "kernel/batch/KeywordDeclarations.h"
#include "kernel/files/Core.h"
#include "kernel/files/GridReal.h"

#include <random>
#include <sys/stat.h>

using testing_support::clear_trace;
using testing_support::FakeSimulator;
using testing_support::g_trace;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::traced;
using testing_support::write_file;

namespace
{

const char* SEQUENCE = "[NEW_SEQ]\nLAUNCH_IT = 10\n";

// Loads `content` written as "run.bat" in `dir`.
bool load_batch(FakeSimulator& sim, const TempDir& dir, const std::string& content)
{
    write_file(dir.file("run.bat"), content);
    clear_trace();
    NewJournalFile file(&sim);
    return file.load(dir.file("run.bat"));
}

// A surface that covers the default grid of either simulation type.
void write_f2g(const std::string& path, double value)
{
    GridReal grid(20000., 20000., 4, 3);
    grid.fill(value);
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_F2G));
}

// A surface of nx x ny nodes 10 m apart, the spacing of the default fluvial grid.
void write_surface(const std::string& path, int nx, int ny, double value)
{
    GridReal grid(10., 10., nx, ny);
    grid.fill(value);
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_F2G));
}

void write_centerline(const std::string& path, const std::string& points, int count)
{
    write_file(path, "N_DIMENSIONS = 2\nN_POINTS = " + std::to_string(count) + "\nN_VARIABLES = 0\n~Ascii\n" +
                         points);
}

} // namespace

TEST(NewJournalFile, StructureOfTheFile)
{
    TempDir dir;
    FakeSimulator sim;
    NewJournalFile file(&sim);
    EXPECT_FALSE(file.load(dir.file("absent.bat")));
    EXPECT_TRUE(traced("Loading batch file: " + dir.file("absent.bat")));
    EXPECT_TRUE(traced("##  ERROR  ## : Error opening batch file: " + dir.file("absent.bat")));

    EXPECT_FALSE(load_batch(sim, dir, "# nothing\n\nF2G_DZ = 1\n[NEW_SEQ]\nLAUNCH_IT = 1\n"));
    EXPECT_TRUE(traced("Missing [GLOBAL] section"));
    EXPECT_FALSE(load_batch(sim, dir, ""));
    EXPECT_TRUE(traced("Missing [GLOBAL] section"));

    EXPECT_FALSE(load_batch(sim, dir, "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n"));
    EXPECT_TRUE(traced("Missing [NEW_SEQ] section"));
    EXPECT_FALSE(load_batch(sim, dir, "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n[OTHER]\n"));
    EXPECT_TRUE(traced("Missing [NEW_SEQ] section"));

    // Spaces, tabs and carriage returns around lines and keys are not part of them.
    EXPECT_TRUE(load_batch(sim, dir,
                           "  \t[GLOBAL]\r\n# a comment\r\n F2G_DZ\t=  0.5 \r\nF2G_FACIES=1\n\n[NEW_SEQ]\r\n"
                           "LAUNCH_IT = 3\n[NEW_SEQ]\nLAUNCH_IT = 4\n"));
    NewJournalFile file2(&sim);
    ASSERT_TRUE(file2.load(dir.file("run.bat")));
    ASSERT_EQ(file2.getSequences().size(), 2u);
    EXPECT_EQ(file2.getSequences()[0].getLaunchIt(), 3);
    EXPECT_EQ(file2.getSequences()[1].getLaunchIt(), 4);
    EXPECT_EQ(file2.getSequences()[1].getIndex(), 2);

    // A section marker that is not a sequence after the sequences is refused.
    EXPECT_FALSE(
        load_batch(sim, dir, "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n[NEW_SEQ]\nLAUNCH_IT = 1\n[NEW]\n"));
}

// The reference and the reader name the same keywords: none that the reference
// declares is unknown to the reader of its section.
TEST(NewJournalFile, EveryDeclaredKeywordIsRead)
{
    TempDir dir;
    FakeSimulator sim;
    for (const KeywordDeclaration& declared : KeywordDeclarations::all())
    {
        const std::string name = declared.name;
        const std::string line = name + " = 1\n";
        if (declared.section == SECTION_GLOBAL)
        {
            load_batch(sim, dir,
                       "[GLOBAL]\n" + line + "F2G_FILE = b.f2g\nF2G_DZ = 1\nF2G_FACIES = 1\n" + SEQUENCE);
            EXPECT_FALSE(traced("Unknown keyword: " + name + " ")) << g_trace;
        }
        else
        {
            load_batch(sim, dir,
                       "[GLOBAL]\nF2G_FILE = b.f2g\nF2G_DZ = 1\nF2G_FACIES = 1\n" + std::string(SEQUENCE) +
                           line);
            EXPECT_FALSE(traced("Unknown parameter :" + name)) << g_trace;
        }
    }
}

TEST(NewJournalFile, LineDialect)
{
    std::string key;
    std::string value;
    EXPECT_TRUE(NewJournalFile::splitLine("A = b = c", key, value));
    EXPECT_EQ(key, "A");
    EXPECT_EQ(value, "b = c");
    EXPECT_FALSE(NewJournalFile::splitLine("no equal", key, value));
    EXPECT_EQ(NewJournalFile::splitList(" 1 ; 2;;3 "), (std::vector<std::string>{"1", "2", "", "3"}));
    int i = 0;
    double r = 0.;
    EXPECT_TRUE(NewJournalFile::toInt(" -12 ", i));
    EXPECT_EQ(i, -12);
    EXPECT_FALSE(NewJournalFile::toInt("12.5", i));
    EXPECT_FALSE(NewJournalFile::toInt("99999999999", i));
    EXPECT_FALSE(NewJournalFile::toInt("", i));
    EXPECT_TRUE(NewJournalFile::toReal("1e3", r));
    EXPECT_DOUBLE_EQ(r, 1000.);
    EXPECT_FALSE(NewJournalFile::toReal("3m", r));
    EXPECT_FALSE(NewJournalFile::toReal("nan", r));
    EXPECT_FALSE(NewJournalFile::toFlag("2", i));
    EXPECT_EQ(NewJournalFile::directory("a/b/c.bat"), "a/b");
    EXPECT_EQ(NewJournalFile::directory("c.bat"), ".");
}

TEST(NewJournalFile, WarningsKeepTheReadingGoing)
{
    TempDir dir;
    FakeSimulator sim;
    const std::string tail = "F2G_DZ = 1\nF2G_FACIES = 1\n";
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nFOO = 3\n" + tail + SEQUENCE));
    EXPECT_TRUE(traced("#  WARNING  # : Unknown keyword: FOO ignored..."));
    EXPECT_TRUE(traced("Unknown keyword for global section ignored: FOO = 3"));

    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nwhat is this\n" + tail + SEQUENCE));
    EXPECT_TRUE(traced("#  WARNING  # : Bad formated line ignored: what is this"));

    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nEXP_WELL = 1;2;3\n" + tail + SEQUENCE));
    EXPECT_TRUE(traced("Bad formated line for EXP_WELL ignored: EXP_WELL = 1;2;3"));
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nEXP_WELL = 1;x;3;4\n" + tail + SEQUENCE));
    EXPECT_TRUE(traced("Bad formated values for EXP_WELL ignored: EXP_WELL = 1;x;3;4"));

    // Keywords the tier refuses are skipped with an error line only.
    FakeSimulator free(0);
    EXPECT_TRUE(load_batch(free, dir,
                           "[GLOBAL]\nWELL_FILE = w.flw\nUSER_CLASS_TYPE = 2\nFLATTENING_FILE = f.f2g\n"
                           "STATS_COND_FILE = c.csv\n" +
                               tail + SEQUENCE));
    EXPECT_TRUE(traced("WELL_FILE keyword is not available in Free version"));
    EXPECT_TRUE(traced("USER_CLASS_TYPE keyword is not available in Free version"));
    EXPECT_TRUE(traced("FLATTENING_FILE keyword is not available in Free version"));
    EXPECT_TRUE(traced("STATS_COND_FILE keyword is not available in Free version"));
    FakeSimulator premium(1);
    EXPECT_TRUE(load_batch(premium, dir, "[GLOBAL]\nSTATS_IT = 10\nSTATS_FILE = s.csv\n" + tail + SEQUENCE));
    EXPECT_TRUE(traced("STATS_IT keyword is only authorized for our research partners"));
    EXPECT_TRUE(traced("STATS_FILE keyword is only authorized for our research partners"));

    // VERBOSE and TRACE_LEVEL act at once on the tracer.
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nTRACE_LEVEL = 5\n" + tail + SEQUENCE));
    EXPECT_EQ(sim.tracer().getTraceLevel(), TRACE_DEBUG);
    EXPECT_TRUE(traced("    Debug     :   Reading line: F2G_DZ = 1"));
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nVERBOSE = 0\n" + tail + SEQUENCE));
    EXPECT_EQ(sim.tracer().getTraceLevel(), TRACE_WARNING);
}

TEST(NewJournalFile, BadValuesAndEndOfGlobalChecks)
{
    TempDir dir;
    write_file(dir.file("w1.flw"), "x");
    write_file(dir.file("w2.flw"), "x");
    write_file(dir.file("t1.txt"), "x");
    const std::string f2g = "F2G_DZ = 1\nF2G_FACIES = 1\n";
    const std::string wells = "WELL_FILE = w1.flw\nWELL_FILE = w2.flw\n";
    // Missing folders are made at launch: a folder that cannot be made is refused.
    const std::string missing = dir.file("t1.txt") + "/nodir/out.f2g";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"TRACE_LEVEL = high\n" + f2g, "Bad formatted value: high"},
        {"VERBOSE = 3\n" + f2g, "Bad formatted value: 3"},
        {"USE_TURBIDITE = 2\n" + f2g, "Wrong turbidite option (use 0 or 1 as 2 is now deprecated)"},
        {"F2G_DZ = 0\nF2G_FACIES = 1\n", "Wrong F2G_DZ value (must be > 0.)"},
        {"F2G_ORDER = +Q +X +Z\n" + f2g, "F2G_ORDER value +Q +X +Z is not valid"},
        {"HISTO_DZ = -1\nHISTO_NZ = 3\n", "Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)"},
        {"HISTO_NZ = 3\n", "Wrong HISTO_DZ or HISTO_NZ value (must be > 0.)"},
        {wells + "WELL_NAME = a\n" + f2g, "Please, provide the same number of well names than well files"},
        {wells + "WELL_TRAJ = t1.txt\n" + f2g,
         "Please, provide the same number of well trajectories than well files"},
        {"USER_CLASS_FAC_ID = 1;2\n" + f2g,
         "Please, indicate the appropriate user class type (discrete (2) or continue (3))"},
        {"USER_CLASS_TYPE = 2\nUSER_CLASS_FAC_ID = 1;2\nUSER_CLASS_ATT = a\n" + f2g,
         "Using user class type 2 (discrete), facies id and attribute sizes mismatch"},
        {"USER_CLASS_TYPE = 3\nUSER_CLASS_FAC_ID = 1;2\nUSER_CLASS_MIN_ITV = 0;1\nUSER_CLASS_MAX_ITV = 1\n" +
             f2g,
         "Using user class type 3 (continue), facies id and interval sizes mismatch"},
        {"WELL_FILE = nowell.flw\n" + f2g, "Well file " + dir.file("nowell.flw") + " is not readable"},
        {"WELL_FILE = w1.flw\nWELL_TRAJ = t9.txt\n" + f2g,
         "Well trajectory file " + dir.file("t9.txt") + " is not readable"},
        {"BASEMENT_TOPO = b.f2g\n" + f2g,
         "Basement topography file " + dir.file("b.f2g") + " is not readable"},
        {"FLATTENING_FILE = f.f2g\n" + f2g,
         "Flattening surface file " + dir.file("f.f2g") + " is not readable"},
        {"BASEMENT_FACIES = 14\n" + f2g, "Basement facies 14 is not valid"},
        {"F2G_FILE = " + missing + "\n" + f2g, "F2G_FILE " + missing + " is not writable"},
        {"TOPO_FILE = " + missing + "\n" + f2g, "TOPO_FILE " + missing + " is not writable"},
        {"STATS_IT = 5\nSTATS_FILE = " + missing + "\n", "STATS_FILE " + missing + " is not writable"},
        {"STATS_IT = 5\nSTATS_CL = 1\nSTATS_CL_FILE = " + missing + "\n",
         "STATS_CL_FILE " + missing + " is not writable"},
        {wells + "STATS_COND_FILE = " + missing + "\n", "STATS_COND_FILE " + missing + " is not writable"},
        {"SLICE_Z = 1\nSLICE_FILE = " + missing + "\n", "SLICE_FILE " + missing + " is not writable"},
        {"HISTO_DZ = 1\nHISTO_NZ = 2\nHISTO_FILE = " + missing + "\n",
         "HISTO_FILE " + missing + " is not writable"},
        {wells + "HISTO_DZ = 1\nHISTO_NZ = 2\nHISTO_FILE = " + dir.file("t1.txt") + "/h\n",
         "HISTO_FILE " + dir.file("t1.txt") + "/h is not writable"},
        {"F2G_DZ = 1\n", "F2G_FACIES or F2G_GRAIN or F2G_AGE keyword is missing"},
        {"F2G_DZ = 1\nF2G_FACIES = 0\n", "F2G_FACIES or F2G_GRAIN or F2G_AGE keyword is missing"},
        {"STATS_PROPS = 1\n" + f2g, "STATS_IT, STATS_AV or STATS_COND_FILE keyword is missing"},
        {"STATS_IT = 5\nSTATS_AV = 2\n", "Only one out of STATS_IT or STATS_AV keyword must be used"},
        {"STATS_IT = 1001\nSTATS_FILE = s.csv\n",
         "STATS_IT = 1001 is too large: statistics are written at most every 1000 iterations"},
        {"STATS_AV = 5000\nSTATS_FILE = s.csv\n",
         "STATS_AV = 5000 is too large: statistics are written at most every 1000 regional avulsions"},
        {"STATS_COND_FILE = c.csv\n",
         "You must import some wells using WELL_FILE keyword for exporting conditioning statistics"},
        {"SLICE_Z = 1\nSLICE_Z = 2\nSLICE_FILE = s1.f2g\n",
         "Please, provide the same number of slices file name than required slices"},
        {"TOPO_FILE = t.f2g\n",
         "Nothing to export (please use STATS_IT, STATS_AV, SLICE_Z, HISTO_DZ, HISTO_NZ, F2G_DZ, "
         "EXP_WELL or STATS_COND_FILE)"},
        {"F2G_IT = 10\n", "Wrong F2G_DZ value (must be > 0.)"},
        {"VPC_FILE = vpc.csv\n", "VPC_DZ keyword is missing (VPC_FILE and WELL_VPC_FILE need it)"},
        {"WELL_VPC_FILE = w.csv\n", "VPC_DZ keyword is missing (VPC_FILE and WELL_VPC_FILE need it)"},
        {"VPC_DZ = 0\nPM_FILE = pm.csv\n", "Wrong VPC_DZ value (must be > 0.)"},
        {"VPC_DZ = thin\nPM_FILE = pm.csv\n", "Bad formatted value: thin"},
        {"PM_FILE = " + missing + "\n", "PM_FILE " + missing + " is not writable"},
        {"VPC_DZ = 1\nVPC_FILE = " + missing + "\n", "VPC_FILE " + missing + " is not writable"},
    };
    for (const auto& entry : cases)
    {
        FakeSimulator sim;
        EXPECT_FALSE(load_batch(sim, dir, "[GLOBAL]\n" + entry.first + SEQUENCE)) << entry.first;
        EXPECT_TRUE(traced("##  ERROR  ## : " + entry.second)) << entry.first << "\n" << g_trace;
    }

    // An existing file that cannot be written is refused too.
    if (::geteuid() != 0)
    {
        write_file(dir.file("locked.f2g"), "");
        ::chmod(dir.file("locked.f2g").c_str(), 0444);
        FakeSimulator sim;
        EXPECT_FALSE(load_batch(sim, dir, "[GLOBAL]\nF2G_FILE = locked.f2g\n" + f2g + SEQUENCE));
        EXPECT_TRUE(traced("F2G_FILE " + dir.file("locked.f2g") + " is not writable"));
    }

    // The good forms of the same keywords pass, and F2G_IT overrides F2G_FILE with a warning.
    FakeSimulator sim;
    EXPECT_TRUE(load_batch(sim, dir,
                           "[GLOBAL]\n" + wells +
                               "WELL_NAME = a\nWELL_NAME = b\nUSER_CLASS_TYPE = 2\nUSER_CLASS_FAC_ID = 1;2\n"
                               "USER_CLASS_ATT = sand;shale\nF2G_IT = 5\nF2G_FILE = out.f2g\n" +
                               f2g + SEQUENCE));
    EXPECT_TRUE(traced("#  WARNING  # : F2G_FILE keyword is ignored while using F2G_IT."));
    // A proportion matrix alone is something to export.
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\nPM_FILE = pm.csv\n" + std::string(SEQUENCE))) << g_trace;
}

TEST(NewJournalFile, SequencesAreCheckedAtLoad)
{
    TempDir dir;
    FakeSimulator sim;
    const std::string global = "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n";
    EXPECT_FALSE(load_batch(sim, dir, global + "[NEW_SEQ]\nCOND_WELL_STOP_HONORED = 1\nLAUNCH_IT = 4\n"));
    EXPECT_TRUE(traced("You must define some wells in order to use 'COND_WELL_STOP_HONORED'"));
    EXPECT_FALSE(load_batch(sim, dir, global + "[NEW_SEQ]\nCHNL_WIDTH = 50\n"));
    EXPECT_TRUE(traced("Number of iterations not defined"));

    // An upper limit loaded by an earlier sequence lets a later one run up to it.
    EXPECT_TRUE(load_batch(sim, dir,
                           global + "[NEW_SEQ]\nLAUNCH_IT = 4\nZUL_TOPO = 30\n[NEW_SEQ]\nLAUNCH_IT = -1\n"));
    EXPECT_FALSE(
        load_batch(sim, dir, global + "[NEW_SEQ]\nLAUNCH_IT = -1\n[NEW_SEQ]\nLAUNCH_IT = 2\nZUL_TOPO = 3\n"));
    EXPECT_TRUE(traced("Use ZUL_FILE or ZUL_TOPO keyword if you want to use Upper Limit"));
}

TEST(NewJournalFile, LaunchCallsTheSimulatorInOrder)
{
    TempDir dir;
    FakeSimulator sim;
    write_file(dir.file("w1.flw"), "x");
    write_file(dir.file("run.bat"), "[GLOBAL]\nFORCE_SIMU = 0\nWELL_FILE = w1.flw\nWELL_NAME = first\n"
                                    "F2G_DZ = 0.5\nF2G_FACIES = 1\nF2G_AGE = 1\nF2G_ZBOT = -10\n"
                                    "TOPO_FILE = topo.f2g\nSLICE_Z = 2.5\nSTATS_COND_FILE = cond.csv\n"
                                    "HISTO_DZ = 0.5\nHISTO_NZ = 20\nEXP_WELL = 1; 2; ; 8\n"
                                    "VPC_FILE = vpc.csv\nVPC_DZ = 0.25\nPM_FILE = pm.csv\n"
                                    "WELL_VPC_FILE = wvpc.csv\n"
                                    "[NEW_SEQ]\nLAUNCH_IT = 10\nCHNL_WIDTH = 60\n"
                                    "[NEW_SEQ]\nLAUNCH_IT = 5\nNEW_TOPO = 4.5\n");
    NewJournalFile file(&sim);
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    ASSERT_EQ(file.launch(), 0) << g_trace;
    const std::string base = dir.file("run");
    const std::vector<std::string> expected = {
        "init(0)",
        "addWellFromFile(" + dir.file("w1.flw") + ",,first)",
        "getAllWells()",
        "nexusFromWells(1)",
        "checkConsistency()",
        "newSequence()",
        "run(10)",
        "endSequence()",
        "checkConsistency()",
        "replaceTopoFromCst(4.5,1,0,1)",
        "newSequence()",
        "run(5)",
        "endSequence()",
        "saveSimuF2G(" + base + ".f2g,0.5,F-A,-10,1e+30,+Y +X +Z)",
        "saveTopo(" + dir.file("topo.f2g") + ",0,+Y +X +Z)",
        "getSlice(2.5)",
        "saveConditioningStats(" + dir.file("cond.csv") + ")",
        "saveVerticalProportions(" + dir.file("vpc.csv") + ",0.25)",
        "saveProportionMatrix(" + dir.file("pm.csv") + ")",
        "saveWellVerticalProportions(" + dir.file("wvpc.csv") + ",0.25)",
        "getAllWells()",
        "saveHistogram(" + base + "_inw_histo.csv,1,0.5,20)",
        "extractWell(1,2,1e+30,8)",
        "nexusFromWells(1)",
        "saveHistogram(" + base + "_outw_histo.csv,1,0.5,20)",
    };
    EXPECT_EQ(sim.calls, expected);
    EXPECT_DOUBLE_EQ(sim.parameters().getParamDouble("CHNL_WIDTH"), 60.);
    EXPECT_TRUE(traced("Nexus automatic inference from input wells gives NEXUS_HMAX = 2.5, NEXUS_ISBX = 3, "
                       "NEXUS_SAND = 0.4"));
    // The unset top is the block's own top.
    EXPECT_TRUE(traced("Saving " + base + ".f2g between {-10, 1m} by 0.5m..."));
    EXPECT_TRUE(traced("Extracting well at indices [1, 2]..."));
    EXPECT_TRUE(traced("End of the simulation..."));
    EXPECT_TRUE(traced("End of batch!"));

    // The slice is a grid over the domain, the extracted well a readable log.
    const std::string slice = read_file(base + ".slice_z=2.5.f2g");
    EXPECT_NE(slice.find("Slice_at_2.5"), std::string::npos);
    GridReal grid;
    ASSERT_TRUE(grid.read(base + ".slice_z=2.5.f2g"));
    EXPECT_EQ(grid.getNx(), 5);
    EXPECT_DOUBLE_EQ(grid.get_mean(), 3.);
    const std::string well = read_file(dir.file("EXP_WELL1_2.flw"));
    EXPECT_NE(well.find("Well automatically extracted by Sarvo at (10, 20)"), std::string::npos);
    Core core;
    ASSERT_TRUE(core.read(dir.file("EXP_WELL1_2.flw")));
    EXPECT_EQ(core.size(), 2);

    // A first sequence that sets the grid has the model built once, on that grid.
    FakeSimulator regrid;
    write_file(dir.file("grid.bat"),
               "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n[NEW_SEQ]\nDOMAIN_NX = 40\nLAUNCH_IT = 3\n");
    NewJournalFile gridFile(&regrid);
    ASSERT_TRUE(gridFile.load(dir.file("grid.bat")));
    ASSERT_EQ(gridFile.launch(), 0) << g_trace;
    EXPECT_EQ(regrid.names(), (std::vector<std::string>{"checkConsistency", "init", "newSequence", "run",
                                                        "endSequence", "saveSimuF2G"}));
}

TEST(NewJournalFile, InitializeBuildsTheModel)
{
    TempDir dir;
    write_file(dir.file("w1.flw"), "x");
    write_f2g(dir.file("flat.f2g"), 2.);
    write_f2g(dir.file("base.f2g"), 7.);
    write_file(dir.file("bad.f2g"), "not a grid");
    write_file(dir.file("ascii.txt"), "1 2 3\n");
    FakeSimulator sim;
    write_file(dir.file("run.bat"),
               "[GLOBAL]\nUSE_TURBIDITE = 1\nSTATS_IT = 20\nSTATS_PROPS = 1\nSTATS_CL = 1\n"
               "FLATTENING_FILE = flat.f2g\nBASEMENT_TOPO = base.f2g\nBASEMENT_FACIES = 12\n"
               "USER_CLASS_TYPE = 3\nUSER_CLASS_FAC_ID = 1;8\nUSER_CLASS_MIN_ITV = 0;50\n"
               "USER_CLASS_MAX_ITV = 50;150\n" +
                   std::string(SEQUENCE));
    NewJournalFile file(&sim);
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    ASSERT_EQ(file.initialize(), 0) << g_trace;
    EXPECT_TRUE(sim.parameters().usingTurbi());
    EXPECT_TRUE(sim.tracer().generateStatsIt());
    EXPECT_FALSE(sim.tracer().generateStatsAv());
    EXPECT_TRUE(sim.tracer().generateStatsProps());
    EXPECT_TRUE(sim.tracer().generateCenterlineStats());
    EXPECT_EQ(sim.tracer().statsInterval(), 20u);
    EXPECT_EQ(sim.calls, (std::vector<std::string>{"init(0)", "loadFlattening(2)", "setUserClassList(3,2)",
                                                   "replaceTopo(7,1,12,0)"}));
    EXPECT_TRUE(
        traced("BASEMENT_TOPO now deprecated. Please use NEW_TOPO & NEW_TOPO_FACIES and the value 1 for "
               "NEW_TOPO_MODE in the first sequence"));

    struct Case
    {
        std::string global;
        std::string failing;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"F2G_DZ = 1\nF2G_FACIES = 1\n", "init", "Problem with simulator action: init"},
        {"EXP_WELL = 5;0;;\n", "", "Extract well indices [5, 0] out of range [4, 3]"},
        {"FLATTENING_FILE = flat.f2g\nF2G_DZ = 1\nF2G_FACIES = 1\n", "loadFlattening",
         "Error loading flattening surface from file: " + dir.file("flat.f2g")},
        {"USER_CLASS_TYPE = 2\nUSER_CLASS_FAC_ID = 1\nUSER_CLASS_ATT = a\nF2G_DZ = 1\nF2G_FACIES = 1\n",
         "setUserClassList", "Error loading user classes"},
        {"BASEMENT_TOPO = base.f2g\nF2G_DZ = 1\nF2G_FACIES = 1\n", "replaceTopo",
         "Cannot load basement topography from input file: " + dir.file("base.f2g")},
    };
    for (const Case& entry : cases)
    {
        FakeSimulator failing;
        if (!entry.failing.empty())
            failing.failing.insert(entry.failing);
        write_file(dir.file("case.bat"), "[GLOBAL]\n" + entry.global + SEQUENCE);
        NewJournalFile batch(&failing);
        ASSERT_TRUE(batch.load(dir.file("case.bat"))) << entry.global << g_trace;
        EXPECT_NE(batch.launch(), 0) << entry.global;
        EXPECT_TRUE(traced("##  ERROR  ## : " + entry.message)) << entry.global << g_trace;
        EXPECT_TRUE(traced("Problem with simulator action: launch")) << entry.global;
        EXPECT_FALSE(failing.called("newSequence")) << entry.global;
    }

    // A basement file that disappears after the load cannot be accessed.
    write_f2g(dir.file("gone.f2g"), 1.);
    write_file(dir.file("case.bat"),
               "[GLOBAL]\nBASEMENT_TOPO = gone.f2g\nF2G_DZ = 1\nF2G_FACIES = 1\n" + std::string(SEQUENCE));
    FakeSimulator gone;
    NewJournalFile batch(&gone);
    ASSERT_TRUE(batch.load(dir.file("case.bat")));
    std::remove(dir.file("gone.f2g").c_str());
    EXPECT_NE(batch.initialize(), 0);
    EXPECT_TRUE(traced("Cannot access to basement topography file: " + dir.file("gone.f2g")));

    // A well file that cannot feed the inference only warns.
    FakeSimulator noNexus;
    noNexus.failing.insert("nexusFromWells");
    write_file(dir.file("case.bat"),
               "[GLOBAL]\nWELL_FILE = w1.flw\nF2G_DZ = 1\nF2G_FACIES = 1\n" + std::string(SEQUENCE));
    NewJournalFile nexusBatch(&noNexus);
    ASSERT_TRUE(nexusBatch.load(dir.file("case.bat")));
    EXPECT_EQ(nexusBatch.initialize(), 0);
    EXPECT_TRUE(traced("#  WARNING  # : Cannot calculate Nexus from input wells: no sand in wells"));

    // A bad well is refused alone: the model is still built and runs.
    FakeSimulator badWell;
    badWell.failing.insert("addWellFromFile");
    NewJournalFile wellBatch(&badWell);
    ASSERT_TRUE(wellBatch.load(dir.file("case.bat")));
    EXPECT_EQ(wellBatch.launch(), 0);
    EXPECT_TRUE(traced("##  ERROR  ## : Error loading well: " + dir.file("w1.flw")));
    EXPECT_TRUE(badWell.called("newSequence"));
}

TEST(NewJournalFile, ForceSimuGovernsConsistencyErrors)
{
    TempDir dir;
    const std::string body = "F2G_DZ = 1\nF2G_FACIES = 1\n[NEW_SEQ]\nLAUNCH_IT = 10\n";
    {
        FakeSimulator sim;
        sim.statuses["checkConsistency"] = MP_STATUS_INCONSISTENT;
        write_file(dir.file("run.bat"), "[GLOBAL]\n" + body);
        NewJournalFile file(&sim);
        ASSERT_TRUE(file.load(dir.file("run.bat")));
        EXPECT_EQ(file.launch(), MP_STATUS_INCONSISTENT);
        EXPECT_TRUE(traced("##  ERROR  ## : Consistency errors!... Batch stops!"));
        EXPECT_TRUE(traced("##  ERROR  ## : Use FORCE_SIMU = 1 if you want to ignore consistency errors"));
        EXPECT_FALSE(sim.called("newSequence"));
        EXPECT_FALSE(sim.called("saveSimuF2G"));
    }
    {
        FakeSimulator sim;
        sim.statuses["checkConsistency"] = MP_STATUS_INCONSISTENT;
        write_file(dir.file("run.bat"), "[GLOBAL]\nFORCE_SIMU = 1\n" + body);
        NewJournalFile file(&sim);
        ASSERT_TRUE(file.load(dir.file("run.bat")));
        EXPECT_EQ(file.launch(), 0);
        EXPECT_TRUE(traced("#  WARNING  # : Consistency errors!... Batch continues (FORCE_SIMU=1)!"));
        EXPECT_TRUE(traced("Consistency errors: batch continues (FORCE_SIMU = 1):\n"
                           "              : Some parameters are out of the usual range of values:"));
        EXPECT_EQ(sim.calls.front(), "init(1)");
        EXPECT_TRUE(sim.called("run(10)"));
    }
    {
        FakeSimulator sim;
        sim.statuses["checkConsistency"] = MP_STATUS_CONSISTENCY_WARNING;
        write_file(dir.file("run.bat"), "[GLOBAL]\n" + body);
        NewJournalFile file(&sim);
        ASSERT_TRUE(file.load(dir.file("run.bat")));
        EXPECT_EQ(file.launch(), 0);
        EXPECT_TRUE(traced("Ignoring consistency warnings... Batch continues!"));
    }
}

TEST(NewJournalFile, F2GItCutsSequencesIntoPieces)
{
    TempDir dir;
    FakeSimulator sim;
    write_file(dir.file("run.bat"), "[GLOBAL]\nF2G_IT = 10\nF2G_DZ = 2\nF2G_GRAIN = 1\n"
                                    "[NEW_SEQ]\nLAUNCH_IT = 25\n[NEW_SEQ]\nLAUNCH_IT = 7\n");
    NewJournalFile file(&sim);
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    ASSERT_EQ(file.launch(), 0) << g_trace;
    std::vector<std::string> runs;
    for (const std::string& call : sim.calls)
        if (call.rfind("run(", 0) == 0 || call.rfind("saveSimuF2G(", 0) == 0)
            runs.push_back(call.substr(0, call.find(',')));
    const std::string base = dir.file("run");
    // Blocks fall on every multiple of ten of the age, across sequences, then one at the end.
    EXPECT_EQ(runs, (std::vector<std::string>{"run(10)", "saveSimuF2G(" + base + "_it10.f2g", "run(10)",
                                              "saveSimuF2G(" + base + "_it20.f2g", "run(5)", "run(5)",
                                              "saveSimuF2G(" + base + "_it30.f2g", "run(2)",
                                              "saveSimuF2G(" + base + "_it32.f2g"}));

    // A block that cannot be written stops the sequence.
    FakeSimulator failing;
    failing.failing.insert("saveSimuF2G");
    NewJournalFile stopped(&failing);
    ASSERT_TRUE(stopped.load(dir.file("run.bat")));
    EXPECT_EQ(stopped.launch(), MP_STATUS_FAILURE);
    EXPECT_TRUE(traced("Cannot save the simulation in " + base + "_it10.f2g"));
    EXPECT_TRUE(traced("Cannot save the simulation in F2G file"));
    EXPECT_FALSE(failing.called("endSequence"));
}

TEST(NewJournalFile, FailedExportsStopTheBatch)
{
    TempDir dir;
    write_file(dir.file("w1.flw"), "x");
    const std::string global =
        "[GLOBAL]\nWELL_FILE = w1.flw\nF2G_DZ = 1\nF2G_FACIES = 1\nTOPO_FILE = topo.f2g\n"
        "SLICE_Z = 1\nSTATS_COND_FILE = c.csv\nHISTO_DZ = 1\nHISTO_NZ = 4\n"
        "EXP_WELL = 0;0;;\nVPC_DZ = 2\nVPC_FILE = v.csv\nPM_FILE = p.csv\nWELL_VPC_FILE = w.csv\n";
    write_file(dir.file("run.bat"), global + SEQUENCE);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"saveSimuF2G", "Cannot save the simulation in " + dir.file("run.f2g")},
        {"saveTopo", "Cannot save the topography in " + dir.file("topo.f2g")},
        {"getSlice", "Cannot retrieve the slice"},
        {"saveConditioningStats", "Cannot save conditioning wells statistics in " + dir.file("c.csv")},
        {"saveVerticalProportions", "Cannot save the vertical proportion curve in " + dir.file("v.csv")},
        {"saveProportionMatrix", "Cannot save the proportion matrix in " + dir.file("p.csv")},
        {"saveWellVerticalProportions",
         "Cannot save the vertical proportion curve of wells in " + dir.file("w.csv")},
        {"saveHistogram", "Cannot save histogram in " + dir.file("run_inw_histo.csv")},
        {"extractWell", "Cannot retrieve the well EXP_WELL0_0"},
        {"run", "Problem with simulator action: run"},
        {"newSequence", "Problem with simulator action: newSequence"},
        {"endSequence", "Problem with simulator action: endSequence"},
    };
    for (const auto& entry : cases)
    {
        FakeSimulator sim;
        sim.failing.insert(entry.first);
        NewJournalFile file(&sim);
        ASSERT_TRUE(file.load(dir.file("run.bat")));
        EXPECT_NE(file.launch(), 0) << entry.first;
        EXPECT_TRUE(traced("##  ERROR  ## : " + entry.second)) << entry.first << g_trace;
        EXPECT_FALSE(traced("End of batch!")) << entry.first;
    }
    FakeSimulator wrongSize;
    wrongSize.sliceSize = 7;
    NewJournalFile file(&wrongSize);
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    EXPECT_NE(file.launch(), 0);
    EXPECT_TRUE(traced("Wrong slice size"));

    // A well that cannot be written: its file has become a directory.
    FakeSimulator blocked;
    NewJournalFile blockedFile(&blocked);
    ASSERT_TRUE(blockedFile.load(dir.file("run.bat")));
    std::filesystem::create_directory(dir.file("EXP_WELL0_0.flw"));
    EXPECT_NE(blockedFile.launch(), 0);
    EXPECT_TRUE(traced("Cannot save the well " + dir.file("EXP_WELL0_0.flw")));

    // No input well left (all refused at loading): the histogram is written empty.
    std::filesystem::remove(dir.file("EXP_WELL0_0.flw"));
    FakeSimulator noWells;
    noWells.failing.insert("getAllWells");
    NewJournalFile withoutWells(&noWells);
    ASSERT_TRUE(withoutWells.load(dir.file("run.bat")));
    EXPECT_EQ(withoutWells.launch(), 0);
    EXPECT_TRUE(
        traced("No conditioning well: the histogram in " + dir.file("run_inw_histo.csv") + " is empty"));
    EXPECT_TRUE(noWells.called("saveHistogram"));
}

TEST(NewJournalFile, RegularStopsGoOnToTheNextSequence)
{
    TempDir dir;
    FakeSimulator sim;
    sim.limitAge = 8;
    write_file(dir.file("run.bat"), "[GLOBAL]\nF2G_DZ = 1\nF2G_FACIES = 1\n"
                                    "[NEW_SEQ]\nLAUNCH_IT = -1\nZUL_TOPO = 40\n[NEW_SEQ]\nLAUNCH_IT = 3\n");
    NewJournalFile file(&sim);
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    EXPECT_EQ(file.launch(), 0);
    EXPECT_TRUE(traced("Preparing sequence #1 for ZUL = 40"));
    EXPECT_TRUE(traced("Preparing sequence #2 for #IT = 3"));
    EXPECT_TRUE(sim.called("run(" + std::to_string(UINT_MAX) + ")"));
    EXPECT_EQ(std::count(sim.calls.begin(), sim.calls.end(), "endSequence()"), 2);
}

TEST(NewJournalFile, PreviewsAreSavedLastWithTheSliceHeights)
{
    TempDir dir;
    // The only export: the directory is made at the end, the slice heights go with it.
    FakeSimulator sim;
    sim.sliceSize = 20;
    write_file(dir.file("run.bat"),
               std::string("[GLOBAL]\nPNG_DIR = png/\nSLICE_Z = 2.5\nSLICE_Z = -1\n") + SEQUENCE);
    NewJournalFile file(&sim);
    ASSERT_TRUE(file.load(dir.file("run.bat"))) << g_trace;
    ASSERT_EQ(file.launch(), 0) << g_trace;
    EXPECT_EQ(sim.calls.back(), "savePreviews(" + dir.file("png") + ",2.5;-1)");
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("png")));
    EXPECT_TRUE(traced("Saving previews in " + dir.file("png")));

    FakeSimulator failing;
    failing.failing.insert("savePreviews");
    NewJournalFile failed(&failing);
    ASSERT_TRUE(failed.load(dir.file("run.bat")));
    EXPECT_EQ(failed.launch(), 1);
    EXPECT_TRUE(traced("##  ERROR  ## : Cannot save the previews in " + dir.file("png")));
    EXPECT_FALSE(traced("End of batch!"));

    // A directory that cannot be made is refused when the file is read.
    write_file(dir.file("plain"), "x");
    FakeSimulator refused;
    EXPECT_FALSE(load_batch(refused, dir, std::string("[GLOBAL]\nPNG_DIR = plain/sub\n") + SEQUENCE));
    EXPECT_TRUE(traced("PNG_DIR " + dir.file("plain/sub") + " is not writable"));
}

TEST(NewJournalFile, WhatTheBatchFileIs)
{
    TempDir dir;
    write_file(dir.file("binary.bat"), std::string("[GLOBAL]\0\x01\x02", 12));
    const std::vector<std::pair<std::string, std::string>> refused = {
        {dir.file("absent.bat"), "no such file"},
        {dir.path().string(), "is a directory"},
        {"/dev/zero", "not a text file"},
        {dir.file("binary.bat"), "not a text file"},
    };
    for (const auto& entry : refused)
    {
        FakeSimulator sim;
        NewJournalFile file(&sim);
        EXPECT_FALSE(file.load(entry.first)) << entry.first;
        EXPECT_TRUE(traced("##  ERROR  ## : Error opening batch file: " + entry.first + ": " + entry.second))
            << g_trace;
    }
    // A byte-order mark, Windows line ends and comments after the markers are accepted.
    FakeSimulator sim;
    EXPECT_TRUE(load_batch(sim, dir,
                           "\xEF\xBB\xBF[GLOBAL] # exports\r\nF2G_DZ = 1\r\nF2G_FACIES = 1\r\n"
                           "[NEW_SEQ] # first\r\nLAUNCH_IT = 10\r\n[NEW_SEQ]#second\r\nLAUNCH_IT = 2\r\n"))
        << g_trace;
    EXPECT_FALSE(load_batch(sim, dir, "F2G_DZ = 1\n[GLOBAL]\n"));
    EXPECT_TRUE(traced("Missing [GLOBAL] section: the file must start with it, not with F2G_DZ = 1"));
}

TEST(NewJournalFile, WholeBatchIsCheckedAtLoad)
{
    TempDir dir;
    write_surface(dir.file("small.f2g"), 40, 30, 5.);
    write_surface(dir.file("full.f2g"), 251, 201, 5.);
    write_surface(dir.file("huge.f2g"), 40, 30, -1e35);
    write_surface(dir.file("deep.f2g"), 40, 30, -1e20);
    write_surface(dir.file("high.f2g"), 40, 30, 1e9);
    write_file(dir.file("bad.f2g"), "F2G_DIM 2\nnot a grid\n");
    write_file(dir.file("ascii.txt"), "1 2 3\n");
    write_centerline(dir.file("one.txt"), "100 100\n", 1);
    write_centerline(dir.file("away.txt"), "-900 -900\n-800 -900\n-700 -900\n", 3);
    write_centerline(dir.file("cl.txt"), "200 0\n210 150\n200 290\n", 3);
    std::filesystem::create_directory(dir.file("snap"));
    write_file(dir.file("snap/params.txt"), "DOMAIN_NX=40\n");
    write_file(dir.file("snap/simu.dat"), "x");
    write_file(dir.file("snap/dyparams.txt"), "AGE -5\n");
    const std::string exports = "F2G_DZ = 1\nF2G_FACIES = 1\n";
    const std::string small = "[NEW_SEQ]\nDOMAIN_NX = 40\nDOMAIN_NY = 30\nLAUNCH_IT = 250\n";
    const std::string bat = dir.file("run.bat");
    struct Case
    {
        std::string content;
        std::string message;
    };
    // Every row loads without its mistake; the mistake refuses the whole batch at load.
    const std::vector<Case> cases = {
        {small + "[NEW_SEQ]\nNEW_TOPO = bad.f2g\nLAUNCH_IT = 5\n",
         "Cannot read topography from input file: " + dir.file("bad.f2g") + " (" + bat + ", line 9)"},
        {small + "[NEW_SEQ]\nNEW_TOPO = huge.f2g\nLAUNCH_IT = 5\n",
         "the value -1e+30 at node (0, 0) is not a usable value"},
        {small + "NEW_TOPO = deep.f2g\n", "the elevation -1e+20 lies more than 10000 m from the reference"},
        {"BASEMENT_TOPO = high.f2g\n" + small, "the elevation 1e+09 lies more than 10000 m"},
        {small + "NEW_TOPO = 1e9\n", "NEW_TOPO = 1e+09 (" + bat + ", line 8): the elevation 1e+09 lies"},
        {small + "EMAP_FILE = small.f2g\nEMAP_OFFSET = 5\n",
         "Cannot convert erodibility map from input file: " + dir.file("small.f2g") + " (" + bat +
             ", line 8)"},
        {small + "ERASE_FACIES = -2e4\n", "ERASE_FACIES = -20000 (" + bat + ", line 8): the elevation"},
        {"[NEW_SEQ]\nLAUNCH_IT = 5\nZUL_FILE = small.f2g\n",
         "Cannot read upper limit topography from input file: " + dir.file("small.f2g")},
        {"[NEW_SEQ]\nLAUNCH_IT = 5\nZUL_FILE = small.f2g\n", "it does not cover the grid (251 x 201 nodes"},
        {small + "[NEW_SEQ]\nDOMAIN_NX = 50\nLAUNCH_IT = 5\n",
         "DOMAIN_NX = 50 (" + bat + ", line 9): the grid cannot change once the simulation has started"},
        {small + "[NEW_SEQ]\nNEXUS_HMAX = 4\nNEXUS_GRID = 1\nLAUNCH_IT = 5\n",
         "Nexus cannot update grid (simulation is started, please use NEXUS_GRID = 0)"},
        {"[NEW_SEQ]\nNEXUS_SAND = 2\nLAUNCH_IT = 5\n", "Error calculating Nexus:"},
        {small + "[NEW_SEQ]\nCHNL_WIDTH = 3000\nLAUNCH_IT = 5\n", "Following parameters are out of range:"},
        {small + "[NEW_SEQ]\nCHNL_WIDTH = 3000\nLAUNCH_IT = 5\n", "CHNL_WIDTH is set (" + bat + ", line 9)"},
        {small + "[NEW_SEQ]\nNEW_CL_FILE = one.txt\nLAUNCH_IT = 5\n",
         "has 1 point(s): a channel needs at least 2"},
        {small + "NEW_CL_FILE = away.txt\n",
         "lies outside the domain: 0 of its 3 points are inside the grid"},
        {small + "NEW_CL_POINT = 1000 100\n", "NEW_CL_POINT 1000 100 (" + bat + ", line 8) lies outside"},
        {"[NEW_SEQ]\nSNAP_LOAD_DIR = snap\nLAUNCH_IT = 5\n", "does not hold an AGE that is a count"},
        {"FLATTENING_FILE = small.f2g\n[NEW_SEQ]\nLAUNCH_IT = 5\n",
         "Cannot read flattening surface from input file: " + dir.file("small.f2g")},
        {"FLATTENING_FILE = bad.f2g\n" + small, "Cannot read flattening surface from input file: "},
        {"USER_CLASS_TYPE = 2\nUSER_CLASS_FAC_ID = 99\nUSER_CLASS_ATT = a\n" + small,
         "Error adding user class: "},
        {"BASEMENT_TOPO = ascii.txt\n" + small,
         "Basement topography file must be F2G format: " + dir.file("ascii.txt")},
        {"EXP_WELL = -1; 0; ;\n" + small, "Extract well indices [-1, 0] out of range [39, 29]"},
        {"EXP_WELL = 40; 0; ;\n" + small, "Extract well indices [40, 0] out of range [39, 29]"},
        {"F2G_ZBOT = -1e9\nF2G_ZTOP = 1e9\n" + small, "would need 2e+09 levels"},
        {"F2G_ZBOT = 0\nF2G_ZTOP = 10\nF2G_DZ = 1e-300\n" + small, "would need 1e+301 levels"},
        {"F2G_ZBOT = 10\nF2G_ZTOP = 10\n" + small, "F2G_ZBOT (10) must be below F2G_ZTOP (10)"},
        {"F2G_ZBOT = inf\n" + small, "Bad formatted value: inf for F2G_ZBOT (" + bat + ", line 4)"},
    };
    for (const Case& entry : cases)
    {
        FakeSimulator sim;
        EXPECT_FALSE(load_batch(sim, dir, "[GLOBAL]\n" + exports + entry.content)) << entry.content;
        EXPECT_TRUE(traced("##  ERROR  ## : ") && traced(entry.message)) << entry.content << g_trace;
        EXPECT_TRUE(sim.calls.empty()) << entry.content;
    }
    // The grid the sequences set is the one the files are checked against.
    const std::vector<std::string> accepted = {
        "FLATTENING_FILE = small.f2g\n" + small,
        "FLATTENING_FILE = full.f2g\n" + small,
        "BASEMENT_TOPO = small.f2g\nEXP_WELL = 39; 29; ;\n" + small + "NEW_CL_FILE = cl.txt\n",
        small + "[NEW_SEQ]\nNEW_TOPO = small.f2g\nZUL_FILE = full.f2g\nDOMAIN_NX = 40\nLAUNCH_IT = 5\n",
        "FORCE_SIMU = 1\n" + small + "[NEW_SEQ]\nCHNL_WIDTH = 3000\nLAUNCH_IT = 5\n",
        "F2G_ZBOT = -1e3\nF2G_ZTOP = 1e3\n" + small,
    };
    for (const std::string& content : accepted)
    {
        FakeSimulator sim;
        EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\n" + exports + content)) << content << g_trace;
    }
    // An unknown global keyword stays a warning, with its line and the nearest keyword.
    FakeSimulator sim;
    EXPECT_TRUE(load_batch(sim, dir, "[GLOBAL]\n" + exports + "F2G_DZZ = 1\n" + small));
    EXPECT_TRUE(traced("#  WARNING  # : Unknown keyword: F2G_DZZ ignored... (" + bat +
                       ", line 4), did you mean F2G_DZ?"));
}

TEST(NewJournalFile, NothingCrashesOnGarbage)
{
    TempDir dir;
    std::mt19937 draw(12345);
    const std::vector<std::string> pieces = {
        "[GLOBAL]",     "[NEW_SEQ]",    "=",    ";",        "LAUNCH_IT", "F2G_DZ", "EXP_WELL",
        "NEW_CL_POINT", "SED_LOAD_VOL", "-1",   "1e400",    "\t",        "#",      " ",
        "ZUL_TYPE",     "\n",           "\r\n", "\xff\xfe", "NEW_TOPO",  "1;2;3;4"};
    for (int round = 0; round < 300; ++round)
    {
        std::string content;
        const int count = static_cast<int>(draw() % 60);
        for (int k = 0; k < count; ++k)
            content += pieces[draw() % pieces.size()];
        FakeSimulator sim;
        write_file(dir.file("g.bat"), content);
        NewJournalFile file(&sim);
        bool loaded = false;
        EXPECT_NO_THROW(loaded = file.load(dir.file("g.bat")));
        if (loaded)
        {
            EXPECT_NO_THROW(file.launch());
        }
    }
    // A directory given as the batch file is not a batch file.
    FakeSimulator sim;
    NewJournalFile file(&sim);
    EXPECT_FALSE(file.load(dir.path().string()));
}
