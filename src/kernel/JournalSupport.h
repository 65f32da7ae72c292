#pragma once
// Small helpers shared by the batch reader's files (NewJournalFile and
// NewJournalSequence): whether a keyword was given, and numbers in messages.

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

inline std::string int_text(int value)
{
    return std::to_string(value);
}

} // namespace journal_support
