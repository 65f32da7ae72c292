// Batch files driving the real simulator: good files produce their exports,
// bad ones give the reader's messages and statuses and never crash.
#include "kernel/NewJournalFile.h"

#include "TestSupport.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/Point3D.h"
#include "kernel/Topo.h"
#include "kernel/Tracer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

std::string g_trace;

void capture(const char* text, TraceLevel)
{
    g_trace += text;
    g_trace += '\n';
}

bool traced(const std::string& text)
{
    return g_trace.find(text) != std::string::npos;
}

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
        outcome.status = file.launch();
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

    // An output directory that does not exist or cannot be written.
    EXPECT_FALSE(run_batch(dir, global_section(dir.file("missing/dir")) + SMALL_SEQUENCE).loaded);
    EXPECT_TRUE(traced("F2G_FILE " + dir.file("missing/dir") + "/block.f2g is not writable"));
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

TEST(BatchRun, AnExportLostAfterTheRunIsReported)
{
    // The directory disappears while the sequence runs: the batch must say
    // that the export failed instead of claiming success.
    TempDir dir;
    const std::string out = dir.file("out");
    std::filesystem::create_directories(out);
    write_file(dir.file("run.bat"), global_section(out) + SMALL_SEQUENCE);
    SimPtr sim = quiet_simulator();
    NewJournalFile file(sim.get());
    ASSERT_TRUE(file.load(dir.file("run.bat")));
    std::filesystem::remove_all(out);
    EXPECT_NE(file.launch(), MP_STATUS_OK);
    EXPECT_TRUE(traced("Cannot save the simulation in " + out + "/block.f2g")) << g_trace;
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
