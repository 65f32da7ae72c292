#pragma once
// One keyword of the batch file that is not a registry parameter, as the
// reference shows it.

#include "kernel/parameters/ParameterDeclaration.h"

enum KeywordSection
{
    SECTION_GLOBAL,  // "[GLOBAL]": what to read and what to export
    SECTION_SEQUENCE // "[NEW_SEQ]": actions and expert settings of a sequence
};

struct KeywordDeclaration
{
    const char* name;
    KeywordSection section;
    // The heading under which the reference lists it.
    const char* group;
    // What the value looks like: "int", "real", "0 or 1", "path", "text", "list"...
    const char* type;
    // What holds when the keyword is left out.
    const char* def;
    const char* unit;
    ParameterTier tier;
    const char* help;
};
