// Batch files driving the real simulator: good files produce their exports,
// bad ones give the reader's messages and statuses and never crash.
#include "kernel/batch/NewJournalFile.h"

#include "kernel/files/GridReal.h"

#include "TestSupport.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/Point3D.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using testing_support::capture;
using testing_support::g_trace;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::traced;
using testing_support::write_file;

namespace
{

struct Deleter
{
    void operator()(iSimulator* sim) const { iSimulator::deleteSimulator(sim); }
};
using SimPtr = std::unique_ptr<iSimulator, Deleter>;

SimPtr quiet_simulator()
{
    SimPtr sim(iSimulator::createSimulator());
    sim->getTracer()->setTraceFunction(capture);
    sim->getTracer()->setTraceLevel(TRACE_INFO);
    // The research tier, as the program runs by default.
    sim->getParameters()->setUsingDistrib(2);
    g_trace.clear();
    return sim;
}

// Exports of a small fluvial run, written under `out`.
std::string global_section(const std::string& out)
{
    return "[GLOBAL]\n"
           "F2G_FILE = " +
           out +
           "/block.f2g\nF2G_DZ = 0.5\nF2G_FACIES = 1\nF2G_AGE = 1\n"
           "TOPO_FILE = " +
           out + "/topo.f2g\nSLICE_Z = -1\nSLICE_FILE = " + out + "/slice.f2g\n";
}

const std::string SMALL_SEQUENCE = "[NEW_SEQ]\nSIM_SEED = 1234\nDOMAIN_NX = 50\nDOMAIN_NY = 40\n"
                                   "DOMAIN_DX = 10\nDOMAIN_DY = 10\nAV_NO_SPLAY = 1\nLAUNCH_IT = 40\n";

struct Outcome
{
    bool loaded = false;
    int status = -1;
    RunSummary summary;
    std::vector<std::string> written;
};

// Loads `content` as run.bat in `dir` and launches it when it loads.
Outcome run_batch(const TempDir& dir, const std::string& content)
{
    write_file(dir.file("run.bat"), content);
    SimPtr sim = quiet_simulator();
    NewJournalFile file(sim.get());
    Outcome outcome;
    outcome.loaded = file.load(dir.file("run.bat"));
    if (outcome.loaded)
    {
        outcome.status = file.launch();
        sim->getRunSummary(outcome.summary);
        outcome.written = file.writtenFiles();
    }
    return outcome;
}

bool is_f2g(const std::string& path)
{
    const std::string text = read_file(path);
    return text.compare(0, 9, "F2G_DIM 3") == 0 || text.compare(0, 9, "F2G_DIM 2") == 0;
}

} // namespace

TEST(BatchRun, GoodFilesProduceTheirExports)
{
    TempDir dir;
    const std::string out = dir.file("out");
    std::filesystem::create_directories(out);
    const Outcome one = run_batch(dir, global_section(out) + SMALL_SEQUENCE);
    ASSERT_TRUE(one.loaded) << g_trace;
    EXPECT_EQ(one.status, MP_STATUS_OK) << g_trace;
    EXPECT_TRUE(traced("End of sequence #1"));
    EXPECT_TRUE(traced("End of batch!"));
    for (const char* name : {"block.f2g", "topo.f2g", "slice.f2g"})
        EXPECT_TRUE(is_f2g(out + "/" + name)) << name;
    EXPECT_NE(read_file(out + "/block.f2g").find("F2G_VARIABLE_2 Age"), std::string::npos);
    // The report of the run: every export, and counts that agree with the event lines.
    EXPECT_EQ(one.written,
              (std::vector<std::string>{out + "/block.f2g", out + "/topo.f2g", out + "/slice.f2g"}));
    EXPECT_EQ(one.summary.iterations, 40u);
    size_t floods = 0;
    for (size_t at = g_trace.find(": Overbank Flow"); at != std::string::npos;
         at = g_trace.find(": Overbank Flow", at + 1))
        ++floods;
    EXPECT_GT(floods, 0u);
    EXPECT_EQ(one.summary.floods, floods);
    EXPECT_EQ(one.summary.splays, 0u); // AV_NO_SPLAY
    EXPECT_GE(one.summary.net_to_gross, 0.);
    EXPECT_LE(one.summary.net_to_gross, 1.);
    EXPECT_TRUE(one.summary.wells.empty());

    // Two sequences, the second changing parameters, and a channel read from a file.
    write_file(dir.file("cl.txt"), "N_DIMENSIONS = 2\nN_POINTS = 3\nN_VARIABLES = 0\n~Ascii\n"
                                   "250 0\n260 200\n250 390\n");
    const std::string out2 = dir.file("out2");
    std::filesystem::create_directories(out2);
    const Outcome two =
        run_batch(dir, global_section(out2) +
                           "[NEW_SEQ]\nSIM_SEED = 5\nDOMAIN_NX = 50\nDOMAIN_NY = 40\nDOMAIN_DX = 10\n"
                           "DOMAIN_DY = 10\nAV_NO_SPLAY = 1\nNEW_CL_FILE = cl.txt\nLAUNCH_IT = 20\n"
                           "[NEW_SEQ]\nCHNL_WIDTH = 32\nBANK_EROD_COEFF = 0.5\nLAUNCH_IT = 20\n");
    ASSERT_TRUE(two.loaded) << g_trace;
    EXPECT_EQ(two.status, MP_STATUS_OK) << g_trace;
    EXPECT_TRUE(traced("New centerline"));
    EXPECT_TRUE(traced("  CHNL_WIDTH = 32"));
    EXPECT_TRUE(traced("End of sequence #2"));
    EXPECT_TRUE(is_f2g(out2 + "/block.f2g"));
}

TEST(BatchRun, BadFilesAreRefusedWithTheirMessage)
{
    TempDir dir;
    const std::string out = dir.file("out");
    std::filesystem::create_directories(out);

    {
        SimPtr sim = quiet_simulator();
        NewJournalFile file(sim.get());
        EXPECT_FALSE(file.load(dir.file("absent.bat")));
        EXPECT_TRUE(traced("Error opening batch file: " + dir.file("absent.bat")));
        EXPECT_EQ(sim->launchBatch(dir.file("absent.bat")), MP_STATUS_FAILURE);
    }

    EXPECT_FALSE(run_batch(dir, "").loaded);
    EXPECT_TRUE(traced("Missing [GLOBAL] section"));
    EXPECT_FALSE(run_batch(dir, global_section(out)).loaded);
    EXPECT_TRUE(traced("Missing [NEW_SEQ] section"));

    // An unknown keyword of the global section is only a warning.
    Outcome outcome = run_batch(dir, global_section(out) + "NOT_A_KEY = 3\n" + SMALL_SEQUENCE);
    EXPECT_TRUE(outcome.loaded);
    EXPECT_EQ(outcome.status, MP_STATUS_OK);
    EXPECT_TRUE(traced("Unknown keyword: NOT_A_KEY ignored..."));

    // An unknown parameter in a sequence stops the batch before any run.
    std::filesystem::remove(out + "/block.f2g");
    outcome = run_batch(dir, global_section(out) + SMALL_SEQUENCE + "NOT_A_PARAMETER = 2\n");
    EXPECT_TRUE(!outcome.loaded || outcome.status != MP_STATUS_OK);
    EXPECT_TRUE(traced("Unknown parameter :NOT_A_PARAMETER"));
    EXPECT_FALSE(std::filesystem::exists(out + "/block.f2g"));

    EXPECT_FALSE(run_batch(dir, "[GLOBAL]\nF2G_FILE = " + out + "/b.f2g\nF2G_DZ = -1\nF2G_FACIES = 1\n" +
                                    SMALL_SEQUENCE)
                     .loaded);
    EXPECT_TRUE(traced("Wrong F2G_DZ value (must be > 0.)"));
    EXPECT_FALSE(run_batch(dir, global_section(out) + "[NEW_SEQ]\nLAUNCH_IT = 0\n").loaded);
    EXPECT_TRUE(traced("Number of iterations cannot be null"));

    // Inputs that are missing or not what they claim to be.
    EXPECT_FALSE(
        run_batch(dir, global_section(out) + "[NEW_SEQ]\nNEW_TOPO = nowhere.f2g\nLAUNCH_IT = 5\n").loaded);
    EXPECT_TRUE(traced("Topography file " + dir.file("nowhere.f2g") + " is not readable")) << g_trace;
    write_file(dir.file("garbage.f2g"), "this is not a grid\n");
    outcome = run_batch(dir, global_section(out) + "[NEW_SEQ]\nNEW_TOPO = garbage.f2g\nLAUNCH_IT = 5\n");
    EXPECT_TRUE(!outcome.loaded || outcome.status != MP_STATUS_OK);
    EXPECT_TRUE(traced("Cannot read topography from input file: ")) << g_trace;
    write_file(dir.file("garbage.txt"), "N_DIMENSIONS = 7\n");
    outcome = run_batch(dir, global_section(out) + SMALL_SEQUENCE + "NEW_CL_FILE = garbage.txt\n");
    EXPECT_TRUE(!outcome.loaded || outcome.status != MP_STATUS_OK);
    EXPECT_TRUE(traced("Cannot read centerline from input file: ")) << g_trace;

    // An output directory that cannot be made or cannot be written.
    write_file(dir.file("plain"), "a file\n");
    EXPECT_FALSE(run_batch(dir, global_section(dir.file("plain/dir")) + SMALL_SEQUENCE).loaded);
    EXPECT_TRUE(traced("F2G_FILE " + dir.file("plain/dir") + "/block.f2g is not writable"));
    if (::geteuid() != 0)
    {
        const std::string locked = dir.file("locked");
        std::filesystem::create_directories(locked);
        ::chmod(locked.c_str(), 0500);
        EXPECT_FALSE(run_batch(dir, global_section(locked) + SMALL_SEQUENCE).loaded);
        EXPECT_TRUE(traced("is not writable"));
        ::chmod(locked.c_str(), 0700);
    }
}

TEST(BatchRun, MistakesOfLaterSequencesAreRefusedBeforeAnyRun)
{
    TempDir dir;
    const std::string out = dir.file("out");
    std::filesystem::create_directories(out);
    write_file(dir.file("one.txt"), "N_DIMENSIONS = 2\nN_POINTS = 1\nN_VARIABLES = 0\n~Ascii\n250 100\n");
    write_file(dir.file("bad.f2g"), "F2G_DIM 2\nF2G_NX 3\n");
    GridReal small(10., 10., 50, 40);
    small.fill(2.);
    ASSERT_TRUE(small.write(dir.file("flat.f2g"), nullptr, GRID_FORMAT_F2G));
    const std::string later = "[NEW_SEQ]\nLAUNCH_IT = 5\n";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {SMALL_SEQUENCE + later + "NEW_TOPO = bad.f2g\n", "Cannot read topography from input file: "},
        {SMALL_SEQUENCE + later + "NEW_CL_FILE = one.txt\n", "has 1 point(s): a channel needs at least 2"},
        {SMALL_SEQUENCE + later + "CHNL_WIDTH = 30m\n", "Bad formated value for CHNL_WIDTH = 30m"},
        {SMALL_SEQUENCE + later + "CHNL_WIDHT = 30\n", "did you mean CHNL_WIDTH?"},
        {SMALL_SEQUENCE + later + "DOMAIN_NX = 40.9\n", "an integer is expected"},
        {SMALL_SEQUENCE + later + "ZUL_FILE = flat.f2g\nDOMAIN_NX = 60\n", "the grid cannot change"},
        {"EXP_WELL = -1; 0; ;\n" + SMALL_SEQUENCE, "Extract well indices [-1, 0] out of range [49, 39]"},
    };
    for (const auto& entry : cases)
    {
        const Outcome outcome = run_batch(dir, global_section(out) + entry.first);
        EXPECT_FALSE(outcome.loaded) << entry.first;
        EXPECT_TRUE(traced(entry.second)) << entry.first << g_trace;
        EXPECT_FALSE(traced("failed at [")) << g_trace;
    }
    // A centerline spoiled between load and launch is refused in the user's terms, not the program's.
    write_file(dir.file("cl.txt"),
               "N_DIMENSIONS = 2\nN_POINTS = 2\nN_VARIABLES = 0\n~Ascii\n250 0\n250 390\n");
    write_file(dir.file("run.bat"), global_section(out) + SMALL_SEQUENCE + "NEW_CL_FILE = cl.txt\n");
    {
        SimPtr sim = quiet_simulator();
        NewJournalFile file(sim.get());
        ASSERT_TRUE(file.load(dir.file("run.bat"))) << g_trace;
        write_file(dir.file("cl.txt"), "N_DIMENSIONS = 2\nN_POINTS = 1\nN_VARIABLES = 0\n~Ascii\n250 100\n");
        EXPECT_NE(file.launch(), MP_STATUS_OK);
        EXPECT_TRUE(traced("##  ERROR  ## : ")) << g_trace;
        EXPECT_FALSE(traced("failed at [")) << g_trace;
    }
    // A step too fine for the block's own range is known only at the end: the export says so, the run fails.
    const Outcome fine = run_batch(dir, "[GLOBAL]\nF2G_FILE = " + out +
                                            "/fine.f2g\nF2G_DZ = 1e-300\nF2G_FACIES = 1\n" + SMALL_SEQUENCE);
    ASSERT_TRUE(fine.loaded) << g_trace;
    EXPECT_NE(fine.status, MP_STATUS_OK);
    EXPECT_TRUE(traced("more than can be held")) << g_trace;
    EXPECT_FALSE(std::filesystem::exists(out + "/fine.f2g"));
    // A flattening surface on the grid the sequence sets is used; on the default grid it would not cover.
    const Outcome flat =
        run_batch(dir, global_section(out) + "FLATTENING_FILE = flat.f2g\n" + SMALL_SEQUENCE);
    ASSERT_TRUE(flat.loaded) << g_trace;
    EXPECT_EQ(flat.status, MP_STATUS_OK) << g_trace;
}

TEST(BatchRun, AnExportLostAfterTheRunIsReported)
{
    // The directory is replaced by a file before the batch runs: the batch
    // must say that the export cannot be made instead of claiming success.
    TempDir dir;
    const std::string out = dir.file("out");
    std::filesystem::create_directories(out);
    write_file(dir.file("run.bat"), global_section(out) + SMALL_SEQUENCE);
    SimPtr sim = quiet_simulator();
    NewJournalFile file(sim.get());
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    std::filesystem::remove_all(out);
    write_file(out, "not a folder\n");
    EXPECT_NE(file.launch(), MP_STATUS_OK);
    EXPECT_TRUE(traced("Cannot create the folder " + out + " of F2G_FILE")) << g_trace;
    EXPECT_FALSE(traced("End of batch!"));
}

TEST(BatchRun, SnapshotAcrossBatchesGivesTheBlockOfOneBatch)
{
    TempDir dir;
    const std::string model = "[NEW_SEQ]\nSIM_SEED = 1234\nDOMAIN_NX = 50\nDOMAIN_NY = 40\n"
                              "DOMAIN_DX = 10\nDOMAIN_DY = 10\nAG_OB_POISSON = 15\nAV_LOC_POISSON = 30\n"
                              "AV_REG_POISSON = 45\nLAUNCH_IT = 60\n";
    for (const char* out : {"whole", "first", "second"})
        std::filesystem::create_directories(dir.file(out));

    // One batch of two sequences, then the same cut in two batches.
    const Outcome whole =
        run_batch(dir, global_section(dir.file("whole")) + model + "[NEW_SEQ]\nLAUNCH_IT = 60\n");
    ASSERT_TRUE(whole.loaded) << g_trace;
    ASSERT_EQ(whole.status, MP_STATUS_OK) << g_trace;
    ASSERT_TRUE(traced("Overbank Flow"));

    const Outcome first = run_batch(dir, global_section(dir.file("first")) + model +
                                             "SNAP_SAVE_DIR = " + dir.file("snap") + "\n");
    ASSERT_TRUE(first.loaded) << g_trace;
    ASSERT_EQ(first.status, MP_STATUS_OK) << g_trace;
    ASSERT_TRUE(std::filesystem::exists(dir.file("snap") + "/dyparams.txt")) << g_trace;

    const Outcome second =
        run_batch(dir, global_section(dir.file("second")) + "[NEW_SEQ]\nSNAP_LOAD_DIR = " + dir.file("snap") +
                           "\nLAUNCH_IT = 60\n");
    ASSERT_TRUE(second.loaded) << g_trace;
    ASSERT_EQ(second.status, MP_STATUS_OK) << g_trace;
    for (const char* name : {"block.f2g", "topo.f2g", "slice.f2g"})
        EXPECT_TRUE(read_file(dir.file("second") + "/" + name) == read_file(dir.file("whole") + "/" + name))
            << name << " differs after the restart";
}

// A batch that would write over a file it reads, over another of its outputs,
// or replace a folder of the user's by a snapshot, is refused when it loads,
// naming the file; the user's files stay as they were.
TEST(BatchRun, NoBatchWritesOverAFileOfTheUser)
{
    TempDir dir;
    const std::string d = dir.path().string();
    GridReal topo(10., 10., 50, 40);
    topo.fill(10.);
    ASSERT_TRUE(topo.write(dir.file("topo_in.f2g"), nullptr, GRID_FORMAT_F2G));
    std::filesystem::create_directories(dir.file("results"));
    write_file(dir.file("results/earlier.f2g"), "earlier result\n");
    // An older snapshot of the user's, without a mark.
    write_file(dir.file("results/params.txt"), "");
    write_file(dir.file("results/simu.dat"), "");
    write_file(dir.file("results/dyparams.txt"), "AGE=0\n");
    std::filesystem::create_symlink(dir.file("topo_in.f2g"), dir.file("link.f2g"));
    const std::string f2g = "F2G_DZ = 0.5\nF2G_FACIES = 1\n";
    // The grid of the surface, so that the surface itself is accepted.
    const std::string seq = "[NEW_SEQ]\nDOMAIN_NX = 50\nDOMAIN_NY = 40\nLAUNCH_IT = 10\n";
    const std::string topo_seq =
        "[NEW_SEQ]\nDOMAIN_NX = 50\nDOMAIN_NY = 40\nNEW_TOPO = topo_in.f2g\nLAUNCH_IT = 10\n";

    struct Case
    {
        std::string batch;
        std::string told;
    };
    const Case table[] = {
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\n" + seq + "SNAP_SAVE_DIR = .\n",
         "SNAP_SAVE_DIR of sequence #1: folder " + d + " holds files that are not a snapshot"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\n" + seq + "SNAP_SAVE_DIR = results/\n",
         "SNAP_SAVE_DIR of sequence #1: folder " + d + "/results holds files that are not a snapshot"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = out/b.f2g\n" + seq + "SNAP_SAVE_DIR = out\n",
         "SNAP_SAVE_DIR of sequence #1 " + d + "/out would replace F2G_FILE " + d + "/out/b.f2g"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = run.bat\n" + seq,
         "F2G_FILE " + d + "/run.bat would overwrite the input batch file"},
        {"[GLOBAL]\n" + f2g + "TOPO_FILE = topo_in.f2g\n" + topo_seq,
         "TOPO_FILE " + d + "/topo_in.f2g would overwrite the input NEW_TOPO of sequence #1"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = ./results/../topo_in.f2g\n" + topo_seq,
         "F2G_FILE " + d + "/topo_in.f2g would overwrite the input NEW_TOPO of sequence #1"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = link.f2g\n" + topo_seq,
         "F2G_FILE " + d + "/topo_in.f2g would overwrite the input NEW_TOPO of sequence #1"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\nTOPO_FILE = b.f2g\n" + seq,
         "F2G_FILE and TOPO_FILE would both write the file " + d + "/b.f2g"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\nSLICE_Z = 1\nSLICE_FILE = b.f2g\n" + seq,
         "F2G_FILE and SLICE_FILE would both write the file " + d + "/b.f2g"},
        {"[GLOBAL]\nEXP_WELL = 3;4;0;10\nEXP_WELL = 3;4;1;5\n" + seq,
         "EXP_WELL 3;4 and EXP_WELL 3;4 would both write the file " + d + "/EXP_WELL3_4.flw"},
        {"[GLOBAL]\nSLICE_Z = 1\nSLICE_Z = 1.0\n" + seq,
         "the slice at 1 and the slice at 1 would both write the file " + d + "/run.slice_z=1.f2g"},
        {"[GLOBAL]\n" + f2g + "F2G_IT = 5\nTOPO_FILE = run_it10.f2g\n" + seq,
         "F2G_IT and TOPO_FILE would both write the file " + d + "/run_it10.f2g"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = results/simu.dat\n" + seq + "SNAP_LOAD_DIR = results\n",
         "F2G_FILE " + d + "/results/simu.dat would overwrite the input SNAP_LOAD_DIR of sequence #1"},
        {"[GLOBAL]\n" + f2g + "GRDECL_FILE = topo_in.f2g\n" + topo_seq,
         "GRDECL_FILE " + d + "/topo_in.f2g would overwrite the input NEW_TOPO of sequence #1"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.vti\nVTK_FILE = b.f2g\n" + seq,
         "F2G_FILE and VTK_FILE would both write the file " + d + "/b.vti"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\nPM_FILE = b.f2g\n" + seq,
         "F2G_FILE and PM_FILE would both write the file " + d + "/b.f2g"},
        {"[GLOBAL]\n" + f2g + "F2G_FILE = b.f2g\n" + seq + "SNAP_SAVE_DIR = snap\n" + topo_seq +
             "SNAP_LOAD_DIR = snap\n" + "SNAP_SAVE_DIR = topo_in.f2g\n",
         "SNAP_SAVE_DIR of sequence #2: " + d + "/topo_in.f2g is a file, not a folder"},
    };
    const std::string user_files[] = {"topo_in.f2g", "results/earlier.f2g"};
    std::map<std::string, std::string> before;
    for (const std::string& name : user_files)
        before[name] = read_file(dir.file(name));
    for (const Case& c : table)
    {
        EXPECT_FALSE(run_batch(dir, c.batch).loaded) << c.batch;
        EXPECT_TRUE(traced("##  ERROR  ## : " + c.told)) << c.batch << "\n" << g_trace;
        EXPECT_EQ(read_file(dir.file("run.bat")), c.batch);
        for (const std::string& name : user_files)
            EXPECT_EQ(read_file(dir.file(name)), before[name]) << name;
    }
}

// Missing output folders are made; a snapshot saved by one sequence may be
// loaded by a later one, and saved again over its own folder.
TEST(BatchRun, OutputFoldersAreMadeAndSnapshotsReused)
{
    TempDir dir;
    const std::string out = dir.file("new/deep");
    const std::string batch = global_section(out) + SMALL_SEQUENCE + "SNAP_SAVE_DIR = snap\n" +
                              "[NEW_SEQ]\nSNAP_LOAD_DIR = snap\nLAUNCH_IT = 10\nSNAP_SAVE_DIR = snap\n";
    for (int run = 0; run < 2; ++run)
    {
        const Outcome outcome = run_batch(dir, batch);
        ASSERT_TRUE(outcome.loaded) << g_trace;
        EXPECT_EQ(outcome.status, MP_STATUS_OK) << g_trace;
        for (const char* name : {"block.f2g", "topo.f2g", "slice.f2g"})
            EXPECT_TRUE(is_f2g(out + "/" + name)) << name;
        EXPECT_TRUE(std::filesystem::exists(dir.file("snap/sarvo_snapshot.txt")));
        EXPECT_FALSE(std::filesystem::exists(dir.file("snap.saving")));
    }
}

TEST(BatchRun, SurfacesWrittenInEveryFormatComeBackThroughTheBatch)
{
    // A surface written by Sarvo on the domain's own geometry (F2G carries it, GSLIB and
    // plain ascii take the domain's) must come back node for node, whatever whole or
    // vanishing turn an F2G file states.
    struct Row
    {
        const char* keyword;
        int format;
        double rotation;
    };
    const Row rows[] = {
        {"ZUL_FILE", GRID_FORMAT_F2G, 0.},     {"ZUL_FILE", GRID_FORMAT_GSLIB, 0.},
        {"ZUL_FILE", GRID_FORMAT_ASCII, 0.},   {"ZUL_FILE", GRID_FORMAT_F2G, 360.},
        {"ZUL_FILE", GRID_FORMAT_F2G, 720.},   {"ZUL_FILE", GRID_FORMAT_F2G, -360.},
        {"ZUL_FILE", GRID_FORMAT_F2G, 1e-12},  {"NEW_TOPO", GRID_FORMAT_GSLIB, 0.},
        {"NEW_TOPO", GRID_FORMAT_ASCII, 0.},   {"EMAP_FILE", GRID_FORMAT_GSLIB, 0.},
        {"TECTO_FILE", GRID_FORMAT_ASCII, 0.},
    };
    TempDir dir;
    for (const Row& row : rows)
    {
        const std::string label = std::string(row.keyword) + " format " + std::to_string(row.format) +
                                  " rotation " + std::to_string(row.rotation);
        Topo surface(10., 10., 24, 20);
        surface.setLocation(Point3D(1000., 2000., 0.));
        surface.setRotation(row.rotation);
        for (int i = 0; i < 24; ++i)
            for (int j = 0; j < 20; ++j)
                surface.set_at(i, j, 500. - 0.01 * i + 0.001 * j);
        const std::string path = dir.file("surface.txt");
        ASSERT_TRUE(surface.write(path, nullptr, row.format, "+Y +X +Z")) << surface.getError();

        write_file(
            dir.file("run.bat"),
            "[GLOBAL]\nF2G_FILE = " + dir.file("block.f2g") +
                "\nF2G_DZ = 1\nF2G_FACIES = 1\n[NEW_SEQ]\nSIM_SEED = 7\nDOMAIN_NX = 24\nDOMAIN_NY = 20\n"
                "DOMAIN_DX = 10\nDOMAIN_DY = 10\nDOMAIN_OX = 1000\nDOMAIN_OY = 2000\n"
                "AV_NO_SPLAY = 1\nLAUNCH_IT = 1\n" +
                std::string(row.keyword) + " = " + path + "\n");
        SimPtr sim = quiet_simulator();
        NewJournalFile file(sim.get());
        ASSERT_TRUE(file.load(dir.file("run.bat"))) << label << g_trace;
        EXPECT_EQ(file.launch(), MP_STATUS_OK) << label << g_trace;
        EXPECT_FALSE(traced("ERROR")) << label << g_trace;
        if (std::string(row.keyword) != "ZUL_FILE")
            continue;
        Topo back;
        ASSERT_TRUE(sim->getUpperLimit(back)) << label;
        ASSERT_EQ(back.getNx(), 24) << label;
        for (int i = 0; i < 24; ++i)
            for (int j = 0; j < 20; ++j)
            {
                double value = 0.;
                back.get_at(i, j, value);
                ASSERT_NEAR(value, 500. - 0.01 * i + 0.001 * j, 1e-6) << label << " at " << i << "," << j;
            }
    }
}
