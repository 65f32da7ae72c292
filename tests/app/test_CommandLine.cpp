#include "CommandLine.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

struct Parsed
{
    bool ok;
    CommandLineOptions options;
    std::string error;
};

Parsed parse(std::vector<const char*> args)
{
    args.insert(args.begin(), "sarvo");
    Parsed p;
    p.ok = CommandLine::parse(static_cast<int>(args.size()), args.data(), p.options, p.error);
    return p;
}

} // namespace

TEST(CommandLine, OptionTableHasTheDocumentedRowsInOrder)
{
    ASSERT_EQ(g_cmdLineDescSize, 8);
    const char* shorts = "hfpvsbkV";
    for (int k = 0; k < g_cmdLineDescSize; ++k)
        EXPECT_EQ(g_cmdLineDesc[k].short_name[0], shorts[k]);
    EXPECT_FALSE(g_cmdLineDesc[5].is_switch);
    EXPECT_STREQ(g_cmdLineDesc[5].description, "Launch in Batch mode");
}

TEST(CommandLine, ShortLongAndGluedFormsAreAccepted)
{
    for (auto args : std::vector<std::vector<const char*>>{
             {"-b", "a.bat"}, {"-batch", "a.bat"}, {"--batch", "a.bat"}, {"--batch=a.bat"}, {"-ba.bat"}})
    {
        Parsed p = parse(args);
        ASSERT_TRUE(p.ok) << p.error;
        EXPECT_EQ(p.options.batch_file, "a.bat");
    }
    Parsed p = parse({"-v", "-nosplash", "--free", "-p"});
    ASSERT_TRUE(p.ok);
    EXPECT_TRUE(p.options.verbose && p.options.no_splash && p.options.free && p.options.premium);
    p = parse({"-vs"});
    ASSERT_TRUE(p.ok);
    EXPECT_TRUE(p.options.verbose && p.options.no_splash);
    p = parse({"--keywords", "-V"});
    ASSERT_TRUE(p.ok);
    EXPECT_TRUE(p.options.keywords && p.options.version && !p.options.verbose);
}

TEST(CommandLine, EmptyBatchValueMeansNoBatch)
{
    Parsed p = parse({"-b", ""});
    ASSERT_TRUE(p.ok);
    EXPECT_TRUE(p.options.batch_file.empty());
}

TEST(CommandLine, MalformedCommandLinesAreRefusedWithAMessage)
{
    EXPECT_EQ(parse({"-x"}).error, "Unknown option 'x'");
    EXPECT_EQ(parse({"--verbos"}).error, "Unknown option 'verbos'");
    EXPECT_EQ(parse({"-b"}).error, "Option 'b' requires a value.");
    EXPECT_EQ(parse({"file.bat"}).error, "Unexpected parameter 'file.bat'");
    EXPECT_EQ(parse({"-v=1"}).error, "Unexpected value for switch 'v'");
}

TEST(CommandLine, UsageListsEveryOptionAndTheExitStatuses)
{
    const std::string text = CommandLine::usage("sarvo");
    for (int k = 0; k < g_cmdLineDescSize; ++k)
        EXPECT_NE(text.find(g_cmdLineDesc[k].description), std::string::npos);
    EXPECT_NE(text.find("1  the batch file failed to load"), std::string::npos);
    EXPECT_NE(text.find("2  the batch was loaded but its launch failed"), std::string::npos);
    EXPECT_NE(text.find("--keywords"), std::string::npos);
    EXPECT_NE(text.find("--version"), std::string::npos);
    EXPECT_NE(text.find("doc/USERS_GUIDE.md"), std::string::npos);
    EXPECT_NE(text.find("4  the batch ran to its end, but with errors"), std::string::npos);
}
