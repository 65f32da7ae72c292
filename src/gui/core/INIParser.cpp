#include "gui/INIParser.h"

#include "kernel/common/StagedFile.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
std::string trimmed(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return "";
    const size_t last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}
} // namespace

INIParser::INIParser(const std::string& path) : _path(path) {}

bool INIParser::Load()
{
    _sections.clear();
    std::error_code ec;
    if (!fs::exists(_path, ec))
        return true;
    std::ifstream in(_path);
    if (!in)
    {
        _error = "Cannot read the settings file " + _path;
        return false;
    }
    std::string section;
    std::string line;
    while (std::getline(in, line))
    {
        line = trimmed(line);
        if (line.empty() || line[0] == '#' || line[0] == ';')
            continue;
        if (line.front() == '[' && line.back() == ']')
        {
            section = trimmed(line.substr(1, line.size() - 2));
            continue;
        }
        const size_t equal = line.find('=');
        if (equal != std::string::npos)
            _sections[section][trimmed(line.substr(0, equal))] = trimmed(line.substr(equal + 1));
    }
    return true;
}

bool INIParser::Save()
{
    std::error_code ec;
    const fs::path parent = fs::path(_path).parent_path();
    if (!parent.empty())
        fs::create_directories(parent, ec);
    // Written beside and renamed, so that a failed write keeps the old settings.
    StagedFile staged(_path);
    {
        std::ofstream out(staged.path());
        for (const auto& section : _sections)
        {
            out << "[" << section.first << "]\n";
            for (const auto& entry : section.second)
                out << entry.first << "=" << entry.second << "\n";
        }
        if (!out.flush())
        {
            _error = "Cannot write the settings file " + _path;
            return false;
        }
    }
    if (!staged.commit())
    {
        _error = "Cannot write the settings file " + _path;
        return false;
    }
    return true;
}

std::string INIParser::GetValue(const std::string& section, const std::string& key,
                                const std::string& fallback) const
{
    const auto found = _sections.find(section);
    if (found == _sections.end())
        return fallback;
    const auto entry = found->second.find(key);
    return entry == found->second.end() ? fallback : entry->second;
}

void INIParser::SetValue(const std::string& section, const std::string& key, const std::string& value)
{
    _sections[section][key] = value;
}

bool INIParser::RemoveValue(const std::string& section, const std::string& key)
{
    const auto found = _sections.find(section);
    return found != _sections.end() && found->second.erase(key) > 0;
}
