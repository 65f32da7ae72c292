#include "Main.h"
#include "ProgressReport.h"
#include "RunReport.h"

#include "TestSupport.h"
#include "kernel/parameters/Parameters.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/wait.h>
#include <vector>

using testing_support::edited;
using testing_support::read_file;
using testing_support::replaced;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

size_t occurrences(const std::string& text, const std::string& what)
{
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

struct Outcome
{
    int status;
    std::string out;
};

Outcome run_main(std::vector<const char*> args, Main* app = nullptr)
{
    args.insert(args.begin(), "sarvo");
    Main local;
    Main& m = app ? *app : local;
    testing::internal::CaptureStdout();
    const int status = m.run(static_cast<int>(args.size()), const_cast<char**>(args.data()));
    return {status, testing::internal::GetCapturedStdout()};
}

} // namespace

TEST(Main, HelpAndBadCommandLines)
{
    Outcome o = run_main({"-h"});
    EXPECT_EQ(o.status, Main::EXIT_DONE);
    EXPECT_NE(o.out.find("Launch in Batch mode"), std::string::npos);

    o = run_main({"-q"});
    EXPECT_EQ(o.status, Main::EXIT_REFUSED);
    EXPECT_EQ(o.out.rfind("Unknown option 'q'", 0), 0u);
}

TEST(Main, VersionAndKeywordReferenceNeedNoBatch)
{
    Main premium;
    Outcome o = run_main({"-p", "--version"}, &premium);
    EXPECT_EQ(o.status, Main::EXIT_DONE);
    // The tier the command line settles on, and nothing else: no trace line.
    EXPECT_EQ(o.out, "Sarvo " + premium.parameters().getFullVersion() + "\n");
    EXPECT_NE(o.out.find(" Premium "), std::string::npos);

    o = run_main({"--keywords"});
    EXPECT_EQ(o.status, Main::EXIT_DONE);
    EXPECT_EQ(o.out.rfind("# Batch keywords\n", 0), 0u);
    for (const char* row : {"| `LAUNCH_IT` | int |", "| `F2G_DZ` | real |",
                            "| `SIM_SEED` | int | 165426111 | between 1 and 2147483646 |"})
        EXPECT_NE(o.out.find(row), std::string::npos) << row;
}

TEST(Main, TierIsResearchUnlessLowered)
{
    Main research, premium, free, both;
    run_main({"-b", "x.bat"}, &research);
    EXPECT_TRUE(research.parameters().usingResearch());
    run_main({"-p", "-b", "x.bat"}, &premium);
    EXPECT_TRUE(premium.parameters().usingPremium());
    run_main({"-p", "-f", "-b", "x.bat"}, &both);
    EXPECT_TRUE(both.parameters().usingFree());
}

TEST(Main, BatchOnTheFreeTierIsRefusedBeforeReadingTheFile)
{
    const Outcome o = run_main({"-f", "-b", "/nonexistent/run.bat"});
    EXPECT_EQ(o.status, Main::EXIT_REFUSED);
    EXPECT_NE(o.out.find("##  ERROR  ## : Batch mode is not available in Free version!\n"),
              std::string::npos);
}

// The version line goes to the most verbose trace only, before anything else is said.
TEST(Main, VersionLineOnlyWhenVerbose)
{
    const struct
    {
        std::vector<const char*> args;
        bool shown;
    } cases[] = {{{"-v", "-f", "-b", "x.bat"}, true}, {{"-f", "-b", "x.bat"}, false}};
    for (const auto& c : cases)
    {
        Main app;
        const std::string line =
            "Sarvo (" + app.parameters().getVersionStr() + ") / " + app.parameters().getVersionDate() + "\n";
        const Outcome o = run_main(c.args, &app);
        EXPECT_EQ(o.out.rfind(line, 0) == 0, c.shown) << o.out;
    }
}

TEST(Main, FatalTraceLevelThrows)
{
    EXPECT_THROW(Main::trace_function("x", TRACE_FATAL), int);
    testing::internal::CaptureStdout();
    EXPECT_NO_THROW(Main::trace_function("line\n", TRACE_ERROR));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "line\n");
}

TEST(Main, ProgressLineAndRunReportTexts)
{
    const struct
    {
        double seconds;
        const char* text;
    } durations[] = {{0.4, "0 s"},         {42.4, "42 s"},        {59.6, "1 min 00 s"},
                     {185., "3 min 05 s"}, {7620., "2 h 07 min"}, {-3., "0 s"}};
    for (const auto& row : durations)
        EXPECT_EQ(ProgressReport::duration(row.seconds), row.text) << row.seconds;

    const double none = 1e30;
    const struct
    {
        unsigned int iteration, done, planned;
        double mean, lowest, limit, left;
        const char* text;
    } lines[] = {
        {1200, 1200, 0, 4.25, 1.5, 9., 65.,
         "Iteration 1200 | top 4.2 m mean, 1.5 m lowest | limit 9.0 m | 1 min 05 s left"},
        {350, 150, 500, 104., 99.96, none, 12.,
         "Iteration 350 (150/500) | top 104.0 m mean, 100.0 m lowest | 12 s left"},
        {1, 1, 0, -0.01, -3., none, -1., "Iteration 1 | top 0.0 m mean, -3.0 m lowest | time left unknown"},
    };
    for (const auto& row : lines)
        EXPECT_EQ(ProgressReport::line(row.iteration, row.done, row.planned, row.mean, row.lowest, row.limit,
                                       row.left),
                  row.text);

    RunSummary summary;
    summary.iterations = 800;
    summary.cutoffs = 12;
    summary.avulsions = 3;
    summary.floods = 40;
    summary.splays = 5;
    summary.net_to_gross = 0.3456;
    summary.wells = {{"W1", 9, 12}, {"W2", 0, 0}};
    EXPECT_EQ(RunReport::text(summary, 75., {"out/a.f2g", "out/png/top.png"}),
              "Run summary\n"
              "Iterations: 800\n"
              "Events: 12 cutoffs, 3 avulsions, 40 floods, 5 splays\n"
              "Net to gross: 34.6 %\n"
              "Well W1: 9 of 12 units honoured (75.0 %)\n"
              "Well W2: 0 of 0 units honoured\n"
              "Wall time: 1 min 15 s\n"
              "Files written: 2\n"
              "  out/a.f2g\n"
              "  out/png/top.png");
    summary.net_to_gross = none;
    summary.wells.clear();
    EXPECT_NE(RunReport::text(summary, 1., {}).find("Net to gross: no deposit\n"), std::string::npos);
}

#ifdef SARVO_EXECUTABLE
// The built program on small batch files: every exit status of batch mode, as
// a shell or a scheduler sees it.
TEST(Main, ExitStatusesOfTheProgram)
{
    TempDir dir;
    write_file(dir.file("bad.flw"), "nothing to read here\n");
    write_file(dir.file("cl.txt"), "N_DIMENSIONS = 2\nN_POINTS = 4\nN_VARIABLES = 0\n~Ascii\n"
                                   "0 100\n0 100\n150 110\n290 100\n");
    const std::string wells = "[GLOBAL]\nWELL_FILE = bad.flw\n";
    const std::string model = "[GLOBAL]\nF2G_FILE = block.f2g\nF2G_DZ = 1\nF2G_FACIES = "
                              "1\n[NEW_SEQ]\nSIM_SEED = 3\nDOMAIN_NX = 30\nDOMAIN_NY = 20\n"
                              "DOMAIN_DX = 10\nDOMAIN_DY = 10\nAV_NO_SPLAY = 1\n";
    struct Row
    {
        const char* what;
        std::string options;
        std::string batch;
        int status;
        const char* said; // a text the trace must hold
    };
    const Row rows[] = {
        {"a good run", "", model + "LAUNCH_IT = 5\n", 0, "End of batch!"},
        {"an upper limit within reach", "", model + "LAUNCH_IT = -1\nZUL_TOPO = 1\n", 0,
         "Upper limit has been reached"},
        {"no iteration count", "", model, 1, "Number of iterations not defined"},
        {"an upper limit out of reach", "", model + "LAUNCH_IT = -1\nZUL_TOPO = 1e29\n", 2,
         "The upper limit was not reached after 10000 iterations"},
        {"an upper limit out of reach, run in pieces", "",
         replaced(model, "[GLOBAL]\n", "[GLOBAL]\nF2G_IT = 3000\n") + "LAUNCH_IT = -1\nZUL_TOPO = 1e29\n", 2,
         "The upper limit was not reached after 10000 iterations"},
        {"a discretization that fails at every turn", "",
         edited(model,
                {{"[GLOBAL]\n", "[GLOBAL]\nFORCE_SIMU = 1\n"}, {"DOMAIN_DX = 10", "DOMAIN_DX = 1e12"}}) +
             "LAUNCH_IT = 50\n",
         2, "Error while computing discretization"},
        {"the free tier", "-f", model + "LAUNCH_IT = 5\n", 3, "Batch mode is not available in Free version!"},
        {"a refused parameter the run survives", "", model + "BANK_EROD_COEFF = 2\nLAUNCH_IT = 5\n", 4,
         "The batch ran to its end with errors"},
        {"a refused well the run survives", "", replaced(model, "[GLOBAL]\n", wells) + "LAUNCH_IT = 5\n", 4,
         "  - Error loading well: "},
        {"a centerline with equal first points", "", model + "NEW_CL_FILE = cl.txt\nLAUNCH_IT = 5\n", 4,
         "  - Channel first points are equal"},
        {"a stop on honored wells without a well", "",
         replaced(model, "[GLOBAL]\n", wells) + "COND_WELL_STOP_HONORED = 1\nLAUNCH_IT = 5\n", 1,
         "'COND_WELL_STOP_HONORED' has no well to honor"},
    };
    for (const Row& row : rows)
    {
        write_file(dir.file("run.bat"), row.batch);
        const std::string command = "cd " + dir.path().string() + " && " + SARVO_EXECUTABLE + " " +
                                    row.options + " -b run.bat > trace.txt 2>&1";
        const int raw = std::system(command.c_str());
        ASSERT_TRUE(WIFEXITED(raw)) << row.what;
        const std::string trace = read_file(dir.file("trace.txt"));
        EXPECT_EQ(WEXITSTATUS(raw), row.status) << row.what << "\n" << trace.substr(0, 4000);
        EXPECT_NE(trace.find(row.said), std::string::npos) << row.what << "\n" << trace.substr(0, 4000);
        // A failure that repeats is told once, not at every turn.
        EXPECT_LE(occurrences(trace, "Error while computing discretization"), 1u) << row.what;
        EXPECT_LE(occurrences(trace, "The upper limit was not reached"), 1u) << row.what;
    }
    // Without a display the desktop path refuses in words, whether the build
    // has a desktop or not: nothing was run.
    const std::string desktop = "cd " + dir.path().string() + " && env -u DISPLAY -u WAYLAND_DISPLAY " +
                                SARVO_EXECUTABLE + " -s > trace.txt 2>&1";
    const int raw = std::system(desktop.c_str());
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(3, WEXITSTATUS(raw)) << read_file(dir.file("trace.txt"));
    EXPECT_NE(read_file(dir.file("trace.txt")).find("desktop application"), std::string::npos);
}
#endif
