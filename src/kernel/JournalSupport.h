#pragma once
// Small helpers shared by the batch reader's files (NewJournalFile and
// NewJournalSequence): whether a keyword was given, whether the tier allows
// it, and numbers in messages.

#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/Constants.h"
#include "kernel/NewJournalFile.h"
#include "kernel/ParameterCodes.h"

#include <cmath>
#include <istream>

#include <string>

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

// Reads keyword lines, each handed to `read(key, value, line)`, up to the next
// section marker (left in `line`) or the end of the file (`line` empty).
// False when the stream broke.
template <typename Read>
bool read_section(std::istream& stream, std::string& line, iTracer* tracer, Read read)
{
    while (NewJournalFile::nextLine(stream, line, tracer))
    {
        if (NewJournalFile::isMarker(line))
            return true;
        std::string key;
        std::string value;
        if (!NewJournalFile::splitLine(line, key, value))
        {
            tracer->warning("Bad formated line ignored: " + line);
            continue;
        }
        read(key, value, line);
    }
    if (stream.bad())
    {
        tracer->error("Error reading batch file (not good)");
        return false;
    }
    line.clear();
    return true;
}

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
