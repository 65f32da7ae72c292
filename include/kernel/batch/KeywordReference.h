#pragma once
// The reference of every batch keyword, as Markdown tables built from the
// declarations: what `sarvo --keywords` prints and doc/KEYWORDS.md holds.

#include <string>

class KeywordReference
{
public:
    static std::string markdown();
};
