#include "Main.h"

#include "kernel/Parameters.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

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

TEST(Main, FatalTraceLevelThrows)
{
    EXPECT_THROW(Main::trace_function("x", TRACE_FATAL), int);
    testing::internal::CaptureStdout();
    EXPECT_NO_THROW(Main::trace_function("line\n", TRACE_ERROR));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "line\n");
}
