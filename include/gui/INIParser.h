#pragma once
// A small INI-like file: "[section]" headers and "key=value" lines. Lines it
// does not understand are dropped on save; the file is rewritten whole.

#include <map>
#include <string>

class INIParser
{
public:
    explicit INIParser(const std::string& path);

    // False when the file exists but cannot be read; a missing file is empty.
    bool Load();
    // Makes the folder when missing; false with the reason in `getError`.
    bool Save();

    // `fallback` when the key is absent.
    std::string GetValue(const std::string& section, const std::string& key,
                         const std::string& fallback = "") const;
    void SetValue(const std::string& section, const std::string& key, const std::string& value);
    // True when the key was there.
    bool RemoveValue(const std::string& section, const std::string& key);

    const std::string& getPath() const { return _path; }
    const std::string& getError() const { return _error; }

private:
    std::string _path;
    std::string _error;
    std::map<std::string, std::map<std::string, std::string>> _sections;
};
