#include "kernel/files/BaseDataFile.h"

namespace
{

const char* const WHITESPACE = " \t\r\n";

} // namespace

BaseDataFile::BaseDataFile(const std::string& path) : _path(path) {}

std::string BaseDataFile::trim(const std::string& text)
{
    const size_t first = text.find_first_not_of(WHITESPACE);
    if (first == std::string::npos)
        return std::string();
    const size_t last = text.find_last_not_of(WHITESPACE);
    return text.substr(first, last - first + 1);
}

bool BaseDataFile::is_comment(const std::string& line) const
{
    const std::string text = trim(line);
    return !text.empty() && text[0] == _commentChar;
}

bool BaseDataFile::is_section(const std::string& line, const std::string& name) const
{
    const std::string text = trim(line);
    return !text.empty() && text[0] == _sectionChar && text.compare(1, name.size(), name) == 0;
}

bool BaseDataFile::is_keyword(const std::string& line, const std::string& key, std::string& value) const
{
    const std::string text = trim(line);
    if (text.empty())
        return false;
    size_t pos = key.size();
    if (_keySeparator != 0)
    {
        pos = text.find(_keySeparator);
        if (pos == std::string::npos)
            return false;
    }
    if (trim(text.substr(0, pos)) != key)
        return false;
    // The character at pos (separator or the one after a prefix keyword) is skipped.
    if (pos + 1 < text.size())
        value = trim(text.substr(pos + 1));
    return true;
}

bool BaseDataFile::is_keyword(const std::string& line, const std::string& key) const
{
    std::string ignored;
    return is_keyword(line, key, ignored);
}
