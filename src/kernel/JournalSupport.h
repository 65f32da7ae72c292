#pragma once
// Small helpers shared by the batch reader's files (NewJournalFile and
// NewJournalSequence): whether a keyword was given, whether the tier allows
// it, and numbers in messages.

#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/Constants.h"

#include <string>

namespace journal_support
{

// The last facies family a batch may name.
constexpr int LAST_FACIES_FAMILY = 13;

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

inline std::string int_text(int value)
{
    return std::to_string(value);
}

} // namespace journal_support
