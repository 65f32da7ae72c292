#include "kernel/batch/NewJournalSequence.h"

#include "FakeSimulator.h"
#include "TestSupport.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/channel/Centerline.h"
#include "kernel/files/GridReal.h"

#include <sstream>
#include <streambuf>

using testing_support::clear_trace;
using testing_support::FakeSimulator;
using testing_support::g_trace;
using testing_support::TempDir;
using testing_support::traced;
using testing_support::write_file;

namespace
{

// Reads one section from `content`; `line` is left on what stopped it.
bool load_section(NewJournalSequence& sequence, const std::string& content, std::string& line,
                  const TempDir& dir, bool first = true)
{
    std::istringstream stream(content);
    sequence.setDirectory(dir.path().string());
    sequence.setSource("", 0, nullptr);
    clear_trace();
    return sequence.load(stream, line, 3, first);
}

bool load_section(NewJournalSequence& sequence, const std::string& content, const TempDir& dir,
                  bool first = true)
{
    std::string line;
    return load_section(sequence, content, line, dir, first);
}

void write_f2g(const std::string& path, double value)
{
    GridReal grid(10., 10., 5, 4);
    grid.fill(value);
    ASSERT_TRUE(grid.write(path, nullptr, GRID_FORMAT_F2G));
}

// A stream whose reading breaks down after the first line.
class BrokenBuffer : public std::streambuf
{
public:
    BrokenBuffer() : _text("LAUNCH_IT = 4\n") { setg(&_text[0], &_text[0], &_text[0] + _text.size()); }

protected:
    int_type underflow() override { throw std::runtime_error("device failure"); }

private:
    std::string _text;
};

} // namespace

TEST(NewJournalSequence, ReadsUpToTheNextMarker)
{
    TempDir dir;
    FakeSimulator sim;
    NewJournalSequence sequence(&sim);
    std::string line;
    ASSERT_TRUE(load_section(
        sequence, "LAUNCH_IT = 12\nCHNL_WIDTH = 55\nAG_TYPE=2\n[NEW_SEQ]\nLAUNCH_IT = 1\n", line, dir));
    EXPECT_EQ(line, "[NEW_SEQ]");
    EXPECT_TRUE(traced("Loading Sequence # 3"));
    EXPECT_EQ(sequence.getLaunchIt(), 12);
    EXPECT_EQ(sequence.getUserParams(),
              (std::map<std::string, double>{{"AG_TYPE", 2.}, {"CHNL_WIDTH", 55.}}));
    ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 2\n", line, dir));
    EXPECT_EQ(line, "");
    EXPECT_TRUE(sequence.getUserParams().empty());

    NewJournalSequence broken(&sim);
    BrokenBuffer buffer;
    std::istream stream(&buffer);
    clear_trace();
    EXPECT_FALSE(broken.load(stream, line, 1, true));
    EXPECT_TRUE(traced("##  ERROR  ## : Error reading batch file (not good)"));
}

TEST(NewJournalSequence, BadValuesAreLoadErrors)
{
    TempDir dir;
    FakeSimulator sim;
    NewJournalSequence sequence(&sim);
    // Each malformed value refuses the section and names the keyword, the value and the line.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"NEW_TOPO_MODE = x", "Bad formated value for NEW_TOPO_MODE = x: an integer is expected (line 2)"},
        {"ZUL_TOPO = high", "Bad formated value for ZUL_TOPO = high: a number is expected (line 2)"},
        {"CHNL_WIDTH = 30m", "Bad formated value for CHNL_WIDTH = 30m: a number is expected (line 2)"},
        {"CHNL_WIDTH = abc", "Bad formated value for CHNL_WIDTH = abc: a number is expected"},
        {"CHNL_WIDTH = nan", "Bad formated value for CHNL_WIDTH = nan: a number is expected"},
        {"CHNL_WIDTH = inf", "Bad formated value for CHNL_WIDTH = inf: a number is expected"},
        {"CHNL_WIDTH = 1e400", "Bad formated value for CHNL_WIDTH = 1e400: a number is expected"},
        {"DOMAIN_NX = 40.9", "Bad formated value for DOMAIN_NX = 40.9: an integer is expected (line 2)"},
        {"SIM_SEED = 1e12", "Bad formated value for SIM_SEED = 1e12: an integer is expected"},
        {"AV_NO_SPLAY = 2", "Bad formated value for AV_NO_SPLAY = 2: 0 or 1 is expected"},
        {"NEXUS_GRID = 2", "Bad formated value for NEXUS_GRID = 2: 0 or 1 is expected"},
        {"LAUNCH_IT = -4", "Bad formated value for LAUNCH_IT = -4: -1 or a positive count is expected"},
        {"NEW_CL_POINT = 1 2 3", "Bad formated line for NEW_CL_POINT: NEW_CL_POINT = 1 2 3: two coordinates"},
        {"SED_LOAD_VOL = 1;2;3", "Bad formated line for SED_LOAD_VOL: SED_LOAD_VOL = 1;2;3: 15 integer"},
        {"CHNL_WIDHT = 30", "Unknown parameter :CHNL_WIDHT (line 2), did you mean CHNL_WIDTH?"},
        {"LAUNCH_ITS = 30", "Unknown parameter :LAUNCH_ITS (line 2), did you mean LAUNCH_IT?"},
        {"SIM_TYPE = 1", "SIM_TYPE cannot be set in a sequence (line 2)"},
    };
    for (const auto& entry : cases)
    {
        EXPECT_FALSE(load_section(sequence, "\n" + entry.first + "\nLAUNCH_IT = 5\n", dir)) << entry.first;
        EXPECT_TRUE(traced("##  ERROR  ## : " + entry.second)) << entry.first << g_trace;
    }
    // A name far from any gets no proposal; a line without "=" stays a warning.
    EXPECT_FALSE(load_section(sequence, "LAUNCH_IT = 5\nQQQQQQQQQQQQQ = 1\n", dir));
    EXPECT_FALSE(traced("did you mean"));
    EXPECT_TRUE(load_section(sequence, "LAUNCH_IT = 5\nno equal sign\n", dir));
    EXPECT_TRUE(traced("#  WARNING  # : Bad formated line ignored: no equal sign (line 2)"));

    EXPECT_FALSE(load_section(sequence, "LAUNCH_IT = 5\nLAUNCH_ZUL = 30\n", dir));
    EXPECT_TRUE(traced("##  ERROR  ## : LAUNCH_ZUL keyword is deprecated. Please, use LAUNCH_IT = -1 and "
                       "ZUL_FILE/ZUL_TOPO = 30"));

    // An erodibility map meets a limit that builds its own erodibility.
    write_f2g(dir.file("emap.f2g"), 1.);
    EXPECT_TRUE(
        load_section(sequence, "LAUNCH_IT = 5\nEMAP_FILE = emap.f2g\nZUL_TOPO = 9\nZUL_TYPE = 3\n", dir));
    EXPECT_TRUE(traced("#  WARNING  # : EMap file will be ignored because upper limit is stratigraphic"));
    EXPECT_EQ(sequence.launch(nullptr), 0);
    EXPECT_FALSE(sim.called("loadEMap"));
}

TEST(NewJournalSequence, TierGates)
{
    TempDir dir;
    write_f2g(dir.file("map.f2g"), 3.);
    const std::string content = "LAUNCH_IT = 5\nEMAP_FILE = map.f2g\nEMAP_OFFSET = 1\nTECTO_FILE = map.f2g\n"
                                "SNAP_LOAD_DIR = snap\nSNAP_SAVE_DIR = snap\nSED_LOAD_VOL = "
                                "0;0;0;0;0;0;10;20;40;20;10;0;0;0;0\n"
                                "SINUOSITY_INTERVAL = 3\nCURVATURE_PTS_NB = 4\nSCOUR_FACTOR = 2\n"
                                "FRICTION_COEFF = 0.01\nBANK_EROD_COEFF = 0.5\nTURB_AGG_HEIGHT_COEF = 1\n"
                                "COND_MIG_WELLS_FACTOR = 3\nCOND_AV_WELLS = 1\nCOND_WELLS_NEW_ALGO = 0\n"
                                "COND_WELLS_AV_MP = 1\nCOND_WELLS_BLOCK_AV = 1\nCHNL_SCALE_MAX = 120\n"
                                "MASS_BAL_COEF = 2\nGR_PB_PROXY = 1\nSED_LOAD_MEAN = 0.1\nGR_THRESHOLD = 2\n";
    FakeSimulator free(0);
    NewJournalSequence sequence(&free);
    EXPECT_TRUE(load_section(sequence, content, dir));
    for (const char* key :
         {"EMAP_FILE", "EMAP_OFFSET", "SED_LOAD_VOL", "TURB_AGG_HEIGHT_COEF", "COND_MIG_WELLS_FACTOR",
          "COND_AV_WELLS", "COND_WELLS_NEW_ALGO", "COND_WELLS_AV_MP", "COND_WELLS_BLOCK_AV"})
        EXPECT_TRUE(
            traced(std::string("##  ERROR  ## : ") + key + " keyword is not available in Free version"))
            << key;
    for (const char* key : {"TECTO_FILE", "SNAP_LOAD_DIR", "SNAP_SAVE_DIR", "SINUOSITY_INTERVAL",
                            "CURVATURE_PTS_NB", "SCOUR_FACTOR", "FRICTION_COEFF", "GR_PB_PROXY"})
        EXPECT_TRUE(traced(std::string(key) + " keyword is only authorized for our research partners"))
            << key;
    EXPECT_TRUE(traced("CHNL_SCALE* keywords are not available in Free version"));
    EXPECT_TRUE(traced("MASS_BAL* keywords are only available for our Research partners"));
    EXPECT_TRUE(traced("SED* and GR* keywords are not available in Free version"));
    EXPECT_FALSE(traced("BANK_EROD_COEFF keyword"));
    EXPECT_TRUE(sequence.getUserParams().empty());

    FakeSimulator premium(1);
    NewJournalSequence second(&premium);
    EXPECT_TRUE(load_section(second, content, dir));
    EXPECT_FALSE(traced("not available in Free version"));
    EXPECT_TRUE(traced("TECTO_FILE keyword is only authorized for our research partners"));
    EXPECT_EQ(second.getUserParams(),
              (std::map<std::string, double>{
                  {"CHNL_SCALE_MAX", 120.}, {"GR_THRESHOLD", 2.}, {"SED_LOAD_MEAN", 0.1}}));

    // Research takes all: expert settings reach the registry at launch.
    FakeSimulator research(2);
    NewJournalSequence third(&research);
    std::filesystem::create_directory(dir.file("snap"));
    write_file(dir.file("snap/params.txt"), "");
    ASSERT_TRUE(load_section(third, content, dir)) << g_trace;
    EXPECT_EQ(third.getUserParams().size(), 5u);
    EXPECT_EQ(third.launch(nullptr), 0) << g_trace;
    const Parameters& params = research.parameters();
    EXPECT_EQ(params.sinuoInterval(), 3u);
    EXPECT_EQ(params.curvaturePointsNumber(), 4);
    EXPECT_DOUBLE_EQ(params.getScourFactor(), 2.);
    EXPECT_DOUBLE_EQ(params.getFrictionCoeff(), 0.01);
    EXPECT_DOUBLE_EQ(params.getBankErodCoeff(), 0.5);
    EXPECT_DOUBLE_EQ(params.getTurbAggHeightCoeff(), 1.);
    EXPECT_EQ(params.getCondMigWellsFactor(), 3);
    EXPECT_TRUE(params.usingCondAvWells());
    EXPECT_FALSE(params.usingCondNewAlgo());
    EXPECT_TRUE(params.usingCondAvMP());
    EXPECT_TRUE(params.usingCondBlockAv());
    EXPECT_EQ(params.getSedVolumes()[8], 40);
    EXPECT_DOUBLE_EQ(params.getParamDouble("EROD_OFFSET"), 1.);
    EXPECT_TRUE(traced("Sediment template parameters:"));
    EXPECT_TRUE(traced("  SED_LOAD_VOL[8] = 40"));
    EXPECT_EQ(research.calls.front(), "load(" + dir.file("snap") + ")");
    EXPECT_EQ(research.calls.back(), "save(" + dir.file("snap") + ")");
}

TEST(NewJournalSequence, ChecksRefuseTheSection)
{
    TempDir dir;
    write_f2g(dir.file("ok.f2g"), 1.);
    const std::string nofile = dir.file("none.f2g");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"CHNL_WIDTH = 3\n", "Number of iterations not defined"},
        {"LAUNCH_IT = 0\n", "Number of iterations cannot be null"},
        {"LAUNCH_IT = 2\nNEXUS_SAND = 0.3\nNEQSUS_HMAX = 3\n", "Cannot apply Nexus and Neqsus"},
        {"LAUNCH_IT = -1\n", "Use ZUL_FILE or ZUL_TOPO keyword if you want to use Upper Limit"},
        {"LAUNCH_IT = 2\nNEW_TOPO_MODE = 2\n", "Topography not defined"},
        {"LAUNCH_IT = 2\nNEW_TOPO_FACIES = 2\n", "Topography not defined"},
        {"LAUNCH_IT = 2\nNEW_TOPO = 1\nNEW_TOPO_MODE = 7\n", "Topography mode 7] out of range"},
        {"LAUNCH_IT = 2\nNEW_TOPO = 1\nNEW_TOPO_MODE = 0\n", "Topography mode 0] out of range"},
        {"LAUNCH_IT = 2\nNEW_TOPO = 1\nNEW_TOPO_FACIES = 14\n", "Topography facies 14] out of range"},
        {"LAUNCH_IT = 2\nNEW_TOPO = none.f2g\n", "Topography file " + nofile + " is not readable"},
        {"LAUNCH_IT = 2\nNEW_CL_FILE =\n", "Centerline file or point not defined"},
        {"LAUNCH_IT = 2\nNEW_CL_FILE = none.f2g\n", "Centerline file " + nofile + " is not readable"},
        {"LAUNCH_IT = 2\nTECTO_FILE =\n", "Tectonic deformation file not defined"},
        {"LAUNCH_IT = 2\nTECTO_FILE = none.f2g\n",
         "Tectonic deformation file " + nofile + " is not readable"},
        {"LAUNCH_IT = 2\nZUL_TYPE = 2\n", "Upper limit topography not defined"},
        {"LAUNCH_IT = 2\nZUL_FILE =\n", "Upper limit topography not defined"},
        {"LAUNCH_IT = 2\nZUL_TOPO = 3\nZUL_TYPE = 4\n",
         "Upper limit type value out of range. 4 keyword value."},
        {"LAUNCH_IT = 2\nZUL_FILE = none.f2g\n",
         "Upper limit topography file " + nofile + " is not readable"},
        {"LAUNCH_IT = 2\nEMAP_OFFSET = 3\n", "Erodibility map file not defined"},
        {"LAUNCH_IT = 2\nEMAP_FILE =\n", "Erodibility map file not defined"},
        {"LAUNCH_IT = 2\nEMAP_FILE = none.f2g\n", "Erodibility map file " + nofile + " is not readable"},
        {"LAUNCH_IT = 2\nSNAP_LOAD_DIR = nosnap\n",
         "Snapshot directory " + dir.file("nosnap") + " does not hold params.txt"},
    };
    for (const auto& entry : cases)
    {
        FakeSimulator sim;
        NewJournalSequence sequence(&sim);
        EXPECT_FALSE(load_section(sequence, entry.first, dir)) << entry.first;
        EXPECT_TRUE(traced("##  ERROR  ## : " + entry.second)) << entry.first << g_trace;
    }
    // The same keywords well formed pass; a known limit lets ZUL_TYPE stand alone.
    FakeSimulator sim;
    NewJournalSequence sequence(&sim);
    sequence.setUpperLimitKnown(true);
    EXPECT_TRUE(
        load_section(sequence,
                     "LAUNCH_IT = -1\nZUL_TYPE = 2\nNEW_TOPO = ok.f2g\nNEW_TOPO_MODE = 4\n"
                     "NEW_TOPO_FACIES = 13\nEMAP_FILE = ok.f2g\nEMAP_OFFSET = 0.5\nNEXUS_SAND = 0.3\n",
                     dir))
        << g_trace;
    EXPECT_FALSE(sequence.definesUpperLimit());
}

TEST(NewJournalSequence, LaunchOrderOfActions)
{
    TempDir dir;
    write_f2g(dir.file("topo.f2g"), 5.);
    write_f2g(dir.file("zul.f2g"), 50.);
    write_f2g(dir.file("emap.f2g"), 2.);
    write_f2g(dir.file("tecto.f2g"), 0.1);
    Centerline centerline;
    centerline.add(0., 0., 1.);
    centerline.add(10., 5., 1.);
    centerline.add(20., 5., 1.);
    ASSERT_TRUE(centerline.write(dir.file("cl.txt")));
    FakeSimulator sim;
    sim.isReady = true;
    sim.setAge(40);
    NewJournalSequence sequence(&sim);
    ASSERT_TRUE(
        load_section(sequence,
                     "LAUNCH_IT = 30\nZUL_FILE = zul.f2g\nZUL_TYPE = 2\nNEW_TOPO = topo.f2g\n"
                     "NEW_TOPO_MODE = 3\nNEW_TOPO_FACIES = 8\nEMAP_FILE = emap.f2g\nEMAP_OFFSET = 0.5\n"
                     "TECTO_FILE = tecto.f2g\nNEW_CL_FILE = cl.txt\nNEW_CL_POINT = 15 25\n"
                     "ERASE_FACIES = 3\nERASE_FACIES_FK = 4\nNEQSUS_SAND = 0.4\nNEQSUS_ISBX = 2\n"
                     "CHNL_WIDTH = 70\nSIM_SEED = 165426111\n",
                     dir, false))
        << g_trace;
    clear_trace();
    ASSERT_EQ(sequence.launch(nullptr), 0) << g_trace;
    const std::vector<std::string> expected = {
        "applyNeqsus()",        "checkConsistency()",
        "loadEMap(0.5,1)",      "loadTectoMap()",
        "replaceTopo(5,3,8,1)", "loadUpperLimit(50,2)",
        "replaceCenterline(1)", "replaceCenterlineFromPoint((15, 25),1)",
        "eraseFacies(3,1)",     "eraseFaciesFake(4)",
        "newSequence()",        "run(30)",
        "endSequence()",
    };
    EXPECT_EQ(sim.calls, expected);
    EXPECT_EQ(sim.nexusGiven, (std::vector<double>{MP_UNDEF_REAL, 2., 0.4}));
    EXPECT_DOUBLE_EQ(sim.parameters().getParamDouble("CHNL_WIDTH"), 70.);
    const std::vector<std::string> lines = {
        "Preparing sequence #3 for #IT = 30it with ZUL = " + dir.file("zul.f2g"),
        "Calculating Neqsus for HMAX = undefined, ISBX = 2, SAND = 0.4",
        "User defined parameters:",
        "  CHNL_WIDTH = 70",
        // An integer reads as one, not as 1.65426e+08.
        "  SIM_SEED = 165426111",
        "  Forecast Net to Gross (%): 25",
        "  Forecast Aggradation Rate (m/10000 it): 1.5",
        "  Forecast Migration Rate (m/10000 it): 2.5",
        "New topography",
        "New centerline",
        "Launching sequence #3",
        "New Sequence Preparation",
        "Sequence Run",
        "Sequence Termination",
        "End of sequence #3",
        "  Global Net to Gross (%): 50",
        "  Oldest Age (# it): 0",
        "  Mean Topography (m): 12.5",
        "  Global Aggradation Rate (m/10000 it): 3",
        "  Mean Sand Bodies Extension Index: NA",
    };
    std::string::size_type at = 0;
    for (const std::string& text : lines)
    {
        const std::string::size_type found = g_trace.find("    Info      : " + text + "\n", at);
        ASSERT_NE(found, std::string::npos) << text << "\n" << g_trace;
        at = found;
    }
}

TEST(NewJournalSequence, InferenceAndModelBuilding)
{
    TempDir dir;
    {
        // Before the first iteration the grid may follow the inference: the model is rebuilt.
        FakeSimulator sim;
        sim.isReady = true;
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nNEXUS_HMAX = 4\nNEXUS_GRID = 1\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), 0);
        EXPECT_EQ(sim.names(), (std::vector<std::string>{"applyNexus", "checkConsistency", "init",
                                                         "newSequence", "run", "endSequence"}));
        EXPECT_EQ(sim.calls[0], "applyNexus(grid)");
    }
    {
        FakeSimulator sim;
        sim.isReady = true;
        sim.setAge(10);
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nNEXUS_HMAX = 4\nNEXUS_GRID = 1\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE);
        EXPECT_TRUE(traced("Nexus cannot update grid (simulation is started, please use NEXUS_GRID = 0)"));
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nNEQSUS_HMAX = 4\nNEQSUS_GRID = 1\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE);
        EXPECT_TRUE(traced("Neqsus cannot update grid (simulation is started, please use NEQSUS_GRID = 0)"));
        EXPECT_TRUE(sim.calls.empty());
    }
    {
        FakeSimulator sim;
        sim.isReady = true;
        sim.failing = {"applyNexus", "applyNeqsus"};
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nNEXUS_SAND = 2\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE);
        EXPECT_TRUE(traced("##  ERROR  ## : Error calculating Nexus:\n"
                           "              : Following parameters are out of range:\n"
                           "              : - Net to gross (2)"));
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nNEQSUS_SAND = 2\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE);
        EXPECT_TRUE(traced("Error calculating Neqsus:\n"));
        EXPECT_FALSE(sim.called("newSequence"));
    }
    {
        // A model that does not exist yet is built after the consistency check.
        FakeSimulator sim;
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), 0);
        EXPECT_EQ(sim.names(), (std::vector<std::string>{"checkConsistency", "init", "newSequence", "run",
                                                         "endSequence"}));
        FakeSimulator broken;
        broken.failing.insert("init");
        NewJournalSequence other(&broken);
        ASSERT_TRUE(load_section(other, "LAUNCH_IT = 3\n", dir));
        EXPECT_EQ(other.launch(nullptr), MP_STATUS_FAILURE);
        EXPECT_TRUE(traced("Problem with simulator action: init"));
    }
}

TEST(NewJournalSequence, FailedSurfaceActions)
{
    TempDir dir;
    write_f2g(dir.file("ok.f2g"), 5.);
    write_file(dir.file("bad.f2g"), "F2G but not really\n");
    const std::string bad = dir.file("bad.f2g");
    const std::string ok = dir.file("ok.f2g");
    struct Case
    {
        std::string section;
        std::string failing;
        std::vector<std::string> messages;
    };
    const std::vector<Case> cases = {
        {"EMAP_FILE = bad.f2g\n",
         "",
         {"Error loading erodibility map", "Cannot read erodibility map from input file: " + bad}},
        {"EMAP_FILE = ok.f2g\nEMAP_OFFSET = 5\n",
         "",
         {"Error loading erodibility map", "Cannot convert erodibility map from input file: " + ok}},
        {"EMAP_FILE = ok.f2g\n",
         "loadEMap",
         {"Error loading erodibility map", "Error loading erodibility map from file: " + ok}},
        {"TECTO_FILE = bad.f2g\n", "", {"Cannot read tectonic deformation map from input file: " + bad}},
        {"TECTO_FILE = ok.f2g\n",
         "loadTectoMap",
         {"Error loading tectonic deformation map from file: " + ok}},
        {"NEW_TOPO = 3\n", "replaceTopoFromCst", {"Error replacing topography by a constant value"}},
        {"NEW_TOPO = bad.f2g\n", "", {"Cannot read topography from input file: " + bad}},
        {"NEW_TOPO = ok.f2g\n", "replaceTopo", {"Error replacing topography from file: " + ok}},
        {"ZUL_TOPO = 3\n", "loadUpperLimitFromCst", {"Error loading constant upper limit"}},
        {"ZUL_FILE = bad.f2g\n", "", {"Cannot read upper limit topography from input file: " + bad}},
        {"ZUL_FILE = ok.f2g\n", "loadUpperLimit", {"Error loading upper limit topography from file: " + ok}},
        {"NEW_CL_FILE = bad.f2g\n", "", {"Cannot read centerline from input file: " + bad}},
        {"NEW_CL_POINT = 1 2\n",
         "replaceCenterlineFromPoint",
         {"Error replacing centerline from point: (1, 2)"}},
        {"ERASE_FACIES = 2\n", "eraseFacies", {"Cannot erase facies"}},
        {"ERASE_FACIES_FK = 2\n", "eraseFaciesFake", {"Cannot (fake) erase facies"}},
        {"SNAP_SAVE_DIR = snapout\n", "save", {"Cannot save the snapshot"}},
        {"SNAP_SAVE_DIR = ok.f2g/inside\n", "", {"Cannot create the snapshot directory"}},
    };
    for (const Case& entry : cases)
    {
        FakeSimulator sim;
        sim.isReady = true;
        if (!entry.failing.empty())
            sim.failing.insert(entry.failing);
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\n" + entry.section, dir))
            << entry.section << g_trace;
        EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE) << entry.section;
        for (const std::string& message : entry.messages)
        {
            EXPECT_TRUE(traced("##  ERROR  ## : " + message)) << entry.section << "\n" << g_trace;
            // A reader's refusal shows the reader's own reason under it.
            if (message.compare(0, 11, "Cannot read") == 0)
            {
                EXPECT_TRUE(traced(message + "\n              : ")) << entry.section << "\n" << g_trace;
            }
        }
    }
    // A snapshot that cannot be loaded stops before anything else.
    std::filesystem::create_directory(dir.file("snap"));
    write_file(dir.file("snap/params.txt"), "");
    FakeSimulator sim;
    sim.failing.insert("load");
    NewJournalSequence sequence(&sim);
    ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nSNAP_LOAD_DIR = snap/\n", dir));
    EXPECT_EQ(sequence.launch(nullptr), MP_STATUS_FAILURE);
    EXPECT_TRUE(traced("Error loading snapshot"));
    EXPECT_EQ(sim.calls, (std::vector<std::string>{"load(" + dir.file("snap") + ")"}));
}

TEST(NewJournalSequence, RunStatuses)
{
    TempDir dir;
    for (int status : {MP_STATUS_UPPER_LIMIT, MP_STATUS_WELLS_HONORED})
    {
        FakeSimulator sim;
        sim.isReady = true;
        sim.statuses["run"] = status;
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), status);
        EXPECT_TRUE(sim.called("endSequence"));
        EXPECT_FALSE(traced("Problem with simulator action"));
    }
    for (int status : {MP_STATUS_FAILURE, MP_STATUS_NOT_READY, MP_STATUS_USER_STOP})
    {
        FakeSimulator sim;
        sim.isReady = true;
        sim.statuses["run"] = status;
        NewJournalSequence sequence(&sim);
        ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\n", dir));
        EXPECT_EQ(sequence.launch(nullptr), status);
        EXPECT_FALSE(sim.called("endSequence"));
        EXPECT_TRUE(traced("Problem with simulator action: run"));
    }
    // The point and the constant forms of the actions carry their values.
    FakeSimulator sim;
    sim.isReady = true;
    NewJournalSequence sequence(&sim);
    ASSERT_TRUE(
        load_section(sequence, "LAUNCH_IT = 3\nNEW_TOPO = -2.5\nZUL_TOPO = 14\nZUL_TYPE = 1\n", dir, true));
    EXPECT_EQ(sequence.launch(nullptr), 0);
    EXPECT_TRUE(sim.called("replaceTopoFromCst(-2.5,1,0,0)"));
    EXPECT_TRUE(sim.called("loadUpperLimitFromCst(14,1)"));
    EXPECT_TRUE(traced("Preparing sequence #3 for #IT = 3it with ZUL = 14"));
    // ZUL_TYPE alone changes the kind of a limit already loaded.
    sequence.setUpperLimitKnown(true);
    ASSERT_TRUE(load_section(sequence, "LAUNCH_IT = 3\nZUL_TYPE = 3\n", dir));
    EXPECT_EQ(sequence.launch(nullptr), 0);
    EXPECT_EQ(sim.parameters().getParamInt("ZUL_TYPE"), 3);
}
