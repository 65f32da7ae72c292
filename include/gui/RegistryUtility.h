#pragma once
// The desktop's settings: one INI file, by default
// "$XDG_CONFIG_HOME/sarvo/settings.ini" (or "~/.config/sarvo/settings.ini").
// SARVO_SETTINGS names another file, which tests use.

#include <string>
#include <vector>

class RegistryUtility
{
public:
    static std::string settingsPath();

    static std::string get_value(const std::string& section, const std::string& key,
                                 const std::string& fallback = "");
    // Each writes the file at once; false when it cannot.
    static bool set_value(const std::string& section, const std::string& key, const std::string& value);
    static bool remove_value(const std::string& section, const std::string& key);

    // The recent projects under "LAST_PROJECT_<i>", most recent first.
    static constexpr int MP_MAX_RECENT_PROJECTS = 8;
    static std::vector<std::string> get_recent_projects();
    // Moves `path` to the front, keeping at most MP_MAX_RECENT_PROJECTS.
    static bool save_recent_projects(const std::string& path);
    static bool remove_from_recent_projects(const std::string& path);

private:
    static bool write_recent_projects(const std::vector<std::string>& paths);
};
