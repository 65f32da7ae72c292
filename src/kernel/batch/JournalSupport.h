#pragma once
// Small helpers shared by the batch reader's files (NewJournalFile and
// NewJournalSequence): whether a keyword was given, whether the tier allows
// it, and numbers in messages.

#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/common/Constants.h"
#include "kernel/parameters/ParameterCodes.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <sstream>
#include <string>
#include <vector>

namespace journal_support
{

// The last facies family a batch may name.
constexpr int LAST_FACIES_FAMILY = FILL_LAST;

// A keyword left out keeps the undefined value.
inline bool is_set(int value)
{
    return value != MP_UNDEF_INT;
}

inline bool is_set(double value)
{
    return value != MP_UNDEF_REAL;
}

// Whether the distribution tier lets `key` be used; an error says why not.
inline bool tier_allows(iSimulator* simulator, const std::string& key, bool notInFree, bool researchOnly)
{
    const iParameters* params = simulator->getParameters();
    if (notInFree && params->usingFree())
    {
        simulator->getTracer()->error(key + " keyword is not available in Free version");
        return false;
    }
    if (researchOnly && !params->usingResearch())
    {
        simulator->getTracer()->error(key + " keyword is only authorized for our research partners");
        return false;
    }
    return true;
}

// Reads keyword lines, each handed to `read(key, value, line, number)`, up to
// the next section marker (left in `line`) or the end of the file (`line`
// empty); `number` counts the lines of the file read so far. False when the
// stream broke.
template <typename Read>
bool read_section(std::istream& stream, std::string& line, int& number, iTracer* tracer, Read read)
{
    while (NewJournalFile::nextLine(stream, line, tracer, &number))
    {
        if (NewJournalFile::isMarker(line))
            return true;
        std::string key;
        std::string value;
        if (!NewJournalFile::splitLine(line, key, value))
        {
            tracer->warning("Bad formated line ignored: " + line + " (line " + std::to_string(number) + ")");
            continue;
        }
        read(key, value, line, number);
    }
    if (stream.bad())
    {
        tracer->error("Error reading batch file (not good)");
        return false;
    }
    line.clear();
    return true;
}

// " (file, line N)" after a message about a line of the batch file; the file
// is left out when unknown.
inline std::string where(const std::string& file, int number)
{
    if (number <= 0)
        return file.empty() ? "" : " (" + file + ")";
    return " (" + (file.empty() ? std::string() : file + ", ") + "line " + std::to_string(number) + ")";
}

// The names of the registry, read from its full report ("NAME = value" lines).
inline std::vector<std::string> parameter_names(const iParameters* params)
{
    std::vector<std::string> names;
    std::istringstream report(params->getParamsDesc("", true));
    std::string row;
    while (std::getline(report, row))
    {
        const std::string::size_type equal = row.find(" = ");
        if (equal == std::string::npos)
            continue;
        const std::string name = NewJournalFile::trim(row.substr(0, equal));
        const bool upper =
            !name.empty() &&
            std::all_of(name.begin(), name.end(),
                        [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; });
        if (upper)
            names.push_back(name);
    }
    return names;
}

inline size_t edit_distance(const std::string& a, const std::string& b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i)
    {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j)
        {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// ", did you mean NAME?" for the closest name when it is close enough to be a
// slip of the keyboard, empty otherwise.
inline std::string suggestion(const std::string& key, const std::vector<std::string>& names)
{
    std::string best;
    size_t distance = std::string::npos;
    for (const std::string& name : names)
    {
        const size_t d = edit_distance(key, name);
        if (d < distance)
        {
            distance = d;
            best = name;
        }
    }
    const size_t tolerance = std::max<size_t>(2, key.size() / 3);
    if (best.empty() || distance > tolerance)
        return "";
    return ", did you mean " + best + "?";
}

// A grid reader's reason, or what it leaves unsaid when it does not know the format.
inline std::string grid_reason(const std::string& error)
{
    return error.empty() ? "its format is not recognised (F2G, GSLIB, CPS3 or plain ascii expected)" : error;
}

// For a tracer that must stay silent.
inline void trace_nothing(const char*, TraceLevel) {}

inline std::string int_text(int value)
{
    return std::to_string(value);
}

// An elevation for a message, to the micrometre: the noise of sums of reals
// (4.03844e-15 for 0) is not shown.
inline std::string elevation_text(double z)
{
    return NewJournalFile::text(std::round(z / MP_EPSILON) * MP_EPSILON + 0.);
}

} // namespace journal_support
