// The desktop's settings file and its recent projects.

#include "gui/RegistryUtility.h"

#include "TestSupport.h"
#include "gui/INIParser.h"
#include "gui/ProgressCounter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace
{
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

struct Settings
{
    Settings() { setenv("SARVO_SETTINGS", dir.file("config/sarvo/settings.ini").c_str(), 1); }
    ~Settings() { unsetenv("SARVO_SETTINGS"); }
    TempDir dir;
};
} // namespace

TEST(RegistryUtility, ValuesSurviveInTheFileAndBadLinesAreDropped)
{
    Settings settings;
    const std::string path = RegistryUtility::settingsPath();
    EXPECT_EQ("", RegistryUtility::get_value("View", "ZOOM", ""));
    // The folder is made on the first write.
    ASSERT_TRUE(RegistryUtility::set_value("View", "ZOOM", "2.5"));
    ASSERT_TRUE(RegistryUtility::set_value("Paths", "LAST", "/data/a b=c.prj"));
    EXPECT_EQ("2.5", RegistryUtility::get_value("View", "ZOOM"));
    EXPECT_EQ("/data/a b=c.prj", RegistryUtility::get_value("Paths", "LAST"));
    write_file(path, read_file(path) + "garbage line\n[View]\n  COLOR =  red \n");
    EXPECT_EQ("red", RegistryUtility::get_value("View", "COLOR"));
    EXPECT_EQ("2.5", RegistryUtility::get_value("View", "ZOOM"));
    ASSERT_TRUE(RegistryUtility::remove_value("View", "ZOOM"));
    EXPECT_EQ("none", RegistryUtility::get_value("View", "ZOOM", "none"));
    EXPECT_EQ(std::string::npos, read_file(path).find("garbage"));
}

TEST(RegistryUtility, AnUnwritableSettingsFileKeepsWhatItHad)
{
    TempDir dir;
    // A folder where the file should be: nothing can be written there.
    std::filesystem::create_directories(dir.file("settings.ini"));
    INIParser ini(dir.file("settings.ini"));
    ini.SetValue("A", "B", "C");
    EXPECT_FALSE(ini.Save());
    EXPECT_NE(std::string::npos, ini.getError().find("settings.ini"));
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("settings.ini")));
}

TEST(RegistryUtility, RecentProjectsMoveToTheFrontAndAreBounded)
{
    Settings settings;
    for (int k = 0; k < RegistryUtility::MP_MAX_RECENT_PROJECTS + 3; k++)
        ASSERT_TRUE(RegistryUtility::save_recent_projects("/p/" + std::to_string(k) + ".prj"));
    std::vector<std::string> recent = RegistryUtility::get_recent_projects();
    ASSERT_EQ(static_cast<size_t>(RegistryUtility::MP_MAX_RECENT_PROJECTS), recent.size());
    EXPECT_EQ("/p/10.prj", recent.front());
    EXPECT_EQ("/p/3.prj", recent.back());
    ASSERT_TRUE(RegistryUtility::save_recent_projects("/p/5.prj"));
    recent = RegistryUtility::get_recent_projects();
    EXPECT_EQ("/p/5.prj", recent.front());
    EXPECT_EQ(static_cast<size_t>(RegistryUtility::MP_MAX_RECENT_PROJECTS), recent.size());
    ASSERT_TRUE(RegistryUtility::remove_from_recent_projects("/p/5.prj"));
    recent = RegistryUtility::get_recent_projects();
    EXPECT_EQ("/p/10.prj", recent.front());
    EXPECT_EQ(static_cast<size_t>(RegistryUtility::MP_MAX_RECENT_PROJECTS - 1), recent.size());
    EXPECT_EQ("/p/10.prj", RegistryUtility::get_value("RecentProjects", "LAST_PROJECT_0"));
}

TEST(ProgressCounter, OpensCountsAndClosesAsTheKernelReports)
{
    ProgressCounter counter;
    EXPECT_EQ(ProgressCounter::CLOSED, counter.progress(1));
    EXPECT_EQ(ProgressCounter::UPDATE, counter.progress(-3));
    EXPECT_EQ(3, counter.total());
    EXPECT_EQ(ProgressCounter::UPDATE, counter.progress(1));
    EXPECT_EQ(ProgressCounter::UPDATE, counter.progress(1));
    EXPECT_EQ(ProgressCounter::DONE, counter.progress(1));
    EXPECT_EQ(ProgressCounter::DONE, counter.progress(1));
    // A new opening starts the count again.
    EXPECT_EQ(ProgressCounter::UPDATE, counter.progress(-2));
    EXPECT_EQ(0, counter.count());
    counter.close();
    EXPECT_EQ(ProgressCounter::CLOSED, counter.progress(1));
}
