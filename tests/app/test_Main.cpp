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
