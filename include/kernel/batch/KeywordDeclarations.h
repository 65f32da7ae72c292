#pragma once
// The table of the batch keywords of "[GLOBAL]" and "[NEW_SEQ]" that are not
// registry parameters, in the order of the reference. Any other keyword of a
// sequence is a parameter of ParameterDeclarations.

#include "kernel/batch/KeywordDeclaration.h"

#include <string>
#include <vector>

class KeywordDeclarations
{
public:
    static const std::vector<KeywordDeclaration>& all();
    // Null when no keyword of that section has this name.
    static const KeywordDeclaration* find(const std::string& name, KeywordSection section);
};
