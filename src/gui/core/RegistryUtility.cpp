#include "gui/RegistryUtility.h"

#include "gui/INIParser.h"

#include <algorithm>
#include <cstdlib>

namespace
{
const char* const RECENT_SECTION = "RecentProjects";

std::string recent_key(int index)
{
    return "LAST_PROJECT_" + std::to_string(index);
}
} // namespace

std::string RegistryUtility::settingsPath()
{
    if (const char* path = std::getenv("SARVO_SETTINGS"); path != nullptr && *path != '\0')
        return path;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != '\0')
        return std::string(config) + "/sarvo/settings.ini";
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : ".") + "/.config/sarvo/settings.ini";
}

std::string RegistryUtility::get_value(const std::string& section, const std::string& key,
                                       const std::string& fallback)
{
    INIParser ini(settingsPath());
    ini.Load();
    return ini.GetValue(section, key, fallback);
}

bool RegistryUtility::set_value(const std::string& section, const std::string& key, const std::string& value)
{
    INIParser ini(settingsPath());
    ini.Load();
    ini.SetValue(section, key, value);
    return ini.Save();
}

bool RegistryUtility::remove_value(const std::string& section, const std::string& key)
{
    INIParser ini(settingsPath());
    ini.Load();
    return !ini.RemoveValue(section, key) || ini.Save();
}

std::vector<std::string> RegistryUtility::get_recent_projects()
{
    INIParser ini(settingsPath());
    ini.Load();
    std::vector<std::string> paths;
    for (int index = 0; index < MP_MAX_RECENT_PROJECTS; index++)
    {
        const std::string path = ini.GetValue(RECENT_SECTION, recent_key(index));
        if (!path.empty() && std::find(paths.begin(), paths.end(), path) == paths.end())
            paths.push_back(path);
    }
    return paths;
}

bool RegistryUtility::save_recent_projects(const std::string& path)
{
    std::vector<std::string> paths = get_recent_projects();
    paths.erase(std::remove(paths.begin(), paths.end(), path), paths.end());
    paths.insert(paths.begin(), path);
    if (paths.size() > static_cast<size_t>(MP_MAX_RECENT_PROJECTS))
        paths.resize(MP_MAX_RECENT_PROJECTS);
    return write_recent_projects(paths);
}

bool RegistryUtility::remove_from_recent_projects(const std::string& path)
{
    std::vector<std::string> paths = get_recent_projects();
    paths.erase(std::remove(paths.begin(), paths.end(), path), paths.end());
    return write_recent_projects(paths);
}

bool RegistryUtility::write_recent_projects(const std::vector<std::string>& paths)
{
    INIParser ini(settingsPath());
    ini.Load();
    for (int index = 0; index < MP_MAX_RECENT_PROJECTS; index++)
    {
        if (index < static_cast<int>(paths.size()))
            ini.SetValue(RECENT_SECTION, recent_key(index), paths[index]);
        else
            ini.RemoveValue(RECENT_SECTION, recent_key(index));
    }
    return ini.Save();
}
