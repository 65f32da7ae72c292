// The batch file's line dialect: comments and continuations, key = value
// lines, lists and the numbers and flags they hold.

#include "kernel/batch/NewJournalFile.h"

#include "JournalSupport.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <istream>
#include <sstream>

// ---------------------------------------------------------------------------
// Line dialect

std::string NewJournalFile::trim(const std::string& text)
{
    const char* blanks = " \t\r\n";
    const std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return "";
    const std::string::size_type last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

bool NewJournalFile::nextLine(std::istream& stream, std::string& line, iTracer* tracer, int* number)
{
    // Editors on other systems start the file with a byte-order mark.
    static const std::string BOM = "\xEF\xBB\xBF";
    std::string raw;
    while (std::getline(stream, raw))
    {
        if (number)
            ++*number;
        if (raw.compare(0, BOM.size(), BOM) == 0)
            raw.erase(0, BOM.size());
        line = trim(raw);
        if (line.empty())
            continue;
        if (tracer)
            tracer->debug("  Reading line: " + line);
        if (line[0] == '#')
            continue;
        // A marker may carry a comment: "[NEW_SEQ] # first".
        const std::string::size_type comment = line.find('#');
        if (isMarker(line) && comment != std::string::npos)
            line = trim(line.substr(0, comment));
        return true;
    }
    line.clear();
    return false;
}

bool NewJournalFile::splitLine(const std::string& line, std::string& key, std::string& value)
{
    const std::string::size_type equal = line.find('=');
    if (equal == std::string::npos)
        return false;
    key = trim(line.substr(0, equal));
    value = trim(line.substr(equal + 1));
    return true;
}

std::vector<std::string> NewJournalFile::splitList(const std::string& value, char separator)
{
    std::vector<std::string> items;
    std::string::size_type start = 0;
    for (;;)
    {
        const std::string::size_type end = value.find(separator, start);
        items.push_back(
            trim(value.substr(start, end == std::string::npos ? std::string::npos : end - start)));
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    return items;
}

bool NewJournalFile::toInt(const std::string& text, int& value)
{
    const std::string item = trim(text);
    if (item.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    const long converted = std::strtol(item.c_str(), &end, 10);
    if (*end != '\0' || errno != 0 || converted > INT_MAX || converted < INT_MIN)
        return false;
    value = static_cast<int>(converted);
    return true;
}

bool NewJournalFile::toReal(const std::string& text, double& value)
{
    const std::string item = trim(text);
    if (item.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    const double converted = std::strtod(item.c_str(), &end);
    if (*end != '\0' || errno != 0 || !std::isfinite(converted))
        return false;
    value = converted;
    return true;
}

bool NewJournalFile::toFlag(const std::string& text, int& value)
{
    int converted = 0;
    if (!toInt(text, converted) || (converted != 0 && converted != 1))
        return false;
    value = converted;
    return true;
}

std::string NewJournalFile::text(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}
