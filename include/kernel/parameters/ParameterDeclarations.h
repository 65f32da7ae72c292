#pragma once
// The table of every named parameter, in the order of declaration: the one
// place where a parameter's type, defaults, range, unit, group, tier, panel
// label and help text are written.

#include "kernel/parameters/ParameterDeclaration.h"

#include <string>
#include <vector>

class ParameterDeclarations
{
public:
    static const std::vector<ParameterDeclaration>& all();
    // Null when no parameter has this name (indexed names are found by their family name).
    static const ParameterDeclaration* find(const std::string& name);
    // Default percentages of the grain size classes behind SED_LOAD_VOL.
    static const std::vector<int>& sedimentVolumes(bool turbiditic);
    // "between 0 and 1", "at least 1", "at most 5", "any" (or "any code" for an
    // enumeration): the bounds that
    // stand for no bound (1e30, the whole int range) are left out.
    static std::string rangeText(ParameterType type, double min, double max);
};
