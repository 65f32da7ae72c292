#include "kernel/files/InDataFile.h"

#include "kernel/common/Constants.h"

#include <sstream>

InDataFile::InDataFile(const std::string& path) : std::ifstream(path), BaseDataFile(path) {}

bool InDataFile::next_line(std::string& text)
{
    text.clear();
    for (;;)
    {
        if (rdstate() != std::ios::goodbit)
        {
            text.clear();
            _line = text;
            return false;
        }
        std::string raw;
        std::getline(*this, raw);
        text = trim(raw);
        if (!text.empty() && !is_comment(text))
        {
            _line = text;
            return true;
        }
    }
}

bool InDataFile::next_line()
{
    std::string text;
    return next_line(text);
}

void InDataFile::rewind()
{
    clear();
    seekg(0, std::ios::beg);
}

bool InDataFile::seek_section(const std::string& name)
{
    rewind();
    while (next_line())
        if (is_section(_line, name))
            return true;
    rewind();
    return false;
}

bool InDataFile::seek_keyword(const std::string& key)
{
    rewind();
    while (next_line())
        if (is_keyword(_line, key))
            return true;
    rewind();
    return false;
}

bool InDataFile::seek_keyword(const std::string& key, std::string& value)
{
    rewind();
    while (next_line())
        if (is_keyword(_line, key, value))
            return true;
    rewind();
    return false;
}

template <typename T>
bool InDataFile::extract_key_value(const std::string& key, T& value, bool clean, const std::string& valid)
{
    std::string text;
    if (!seek_keyword(key, text))
        return false;
    if (clean)
    {
        // Whatever stands before the first character the type can use is dropped.
        const size_t first = text.find_first_of(valid);
        text = first == std::string::npos ? std::string() : text.substr(first);
    }
    if (text.empty())
        return false;
    std::istringstream in(text);
    in >> value;
    return !in.fail() && !in.bad();
}

bool InDataFile::get_key_value(const std::string& key, double& value, bool clean)
{
    value = MP_UNDEF_REAL;
    return extract_key_value(key, value, clean, _valid_for_real);
}

bool InDataFile::get_key_value(const std::string& key, int& value, bool clean)
{
    value = MP_UNDEF_INT;
    return extract_key_value(key, value, clean, _valid_for_int);
}

bool InDataFile::get_key_value(const std::string& key, unsigned int& value, bool clean)
{
    value = MP_UNDEF_UINT;
    return extract_key_value(key, value, clean, _valid_for_ulong);
}

bool InDataFile::get_key_value(const std::string& key, std::string& value, bool clean)
{
    value = MP_UNDEF_STRING;
    std::string text;
    if (!seek_keyword(key, text))
        return false;
    if (clean)
    {
        const size_t first = text.find_first_of(_valid_for_string);
        text = first == std::string::npos ? std::string() : text.substr(first);
    }
    // A text value always ends at its first character outside the valid set.
    const size_t stop = text.find_first_not_of(_valid_for_string);
    if (stop != std::string::npos)
        text.erase(stop);
    if (text.empty())
        return false;
    value = text;
    return true;
}

template <typename T> bool InDataFile::extract_field(int n, T& value, char separator) const
{
    std::istringstream in(_line);
    if (separator == 0)
    {
        std::string skipped;
        for (int k = 1; k < n; ++k)
            in >> skipped;
        in >> value;
        return !in.fail() && !in.bad();
    }
    if (n <= 0)
        return false;
    std::string field;
    for (int k = 0; k < n; ++k)
        if (!std::getline(in, field, separator))
            return false;
    std::istringstream convert(field);
    convert >> value;
    return !convert.fail() && !convert.bad();
}

bool InDataFile::get_value(int n, std::string& value, char separator)
{
    return extract_field(n, value, separator);
}

bool InDataFile::get_value(int n, double& value, char separator)
{
    return extract_field(n, value, separator);
}

bool InDataFile::get_value(int n, int& value, char separator)
{
    return extract_field(n, value, separator);
}

bool InDataFile::get_value(int n, unsigned int& value, char separator)
{
    return extract_field(n, value, separator);
}
