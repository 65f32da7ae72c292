#pragma once
// Small helpers shared by the files of Core: numbers in messages, the
// sections of a LAS file, and the fields of a data line.

#include "kernel/files/InDataFile.h"

#include <sstream>
#include <string>
#include <vector>

namespace core_support
{
inline std::string text_of(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

inline bool seek_any_section(InDataFile& file, const char* const* names)
{
    for (; *names != nullptr; ++names)
        if (file.seek_section(*names))
            return true;
    return false;
}

const char* const ASCII_SECTIONS[] = {"Ascii", "ASCII", "A", nullptr};
const char* const VERSION_SECTIONS[] = {"Version", "VERSION", "V", nullptr};
const char* const WELL_SECTIONS[] = {"Well", "WELL", "W", nullptr};
const char* const CURVE_SECTIONS[] = {"Curve", "CURVE", "C", nullptr};

// The fields of one data line, split on whitespace (separator 0) or on a character.
class Fields
{
public:
    Fields(const std::string& line, char separator) : _separator(separator)
    {
        std::istringstream in(line);
        std::string field;
        if (separator == 0)
            while (in >> field)
                _fields.push_back(field);
        else
            while (std::getline(in, field, separator))
                _fields.push_back(field);
    }
    // Field n from 1, converted as a stream extraction would; with whitespace
    // splitting any n below 1 means the first field.
    template <typename T> bool get(int n, T& value) const
    {
        if (n < 1)
        {
            if (_separator != 0)
                return false;
            n = 1;
        }
        if (static_cast<size_t>(n) > _fields.size())
            return false;
        std::istringstream in(_fields[static_cast<size_t>(n) - 1]);
        in >> value;
        return !in.fail() && !in.bad();
    }

private:
    char _separator;
    std::vector<std::string> _fields;
};

// The whole text is one number.
template <typename Number> bool full_number(const std::string& text, Number& value)
{
    std::istringstream in(text);
    in >> value;
    if (in.fail())
        return false;
    in >> std::ws;
    return in.eof();
}
} // namespace core_support
