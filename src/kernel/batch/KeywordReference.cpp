#include "kernel/batch/KeywordReference.h"

#include "kernel/batch/KeywordDeclarations.h"
#include "kernel/common/Constants.h"
#include "kernel/parameters/ParameterDeclarations.h"

#include <sstream>
#include <vector>

namespace
{

const char* const TIER_NAMES[] = {"Free", "Premium", "Research"};

std::string number(ParameterType type, double value)
{
    std::ostringstream s;
    if (type == PARAM_INT || type == PARAM_BOOL)
        s << static_cast<long long>(value);
    else
        s << value;
    return s.str();
}

const char* type_text(ParameterType type)
{
    switch (type)
    {
    case PARAM_STRING:
        return "text";
    case PARAM_BOOL:
        return "0 or 1";
    case PARAM_INT:
        return "int";
    case PARAM_REAL:
        return "real";
    }
    return "";
}

// A value, and the turbiditic one after it when it differs.
std::string both(const std::string& fluvial, const std::string& turbiditic)
{
    return fluvial == turbiditic ? fluvial : fluvial + " (turbiditic: " + turbiditic + ")";
}

// The groups in the order of their first row.
template <typename Rows, typename Accept> std::vector<std::string> groups_of(const Rows& rows, Accept accept)
{
    std::vector<std::string> groups;
    for (const auto& row : rows)
    {
        if (!accept(row))
            continue;
        bool seen = false;
        for (const std::string& group : groups)
            seen = seen || group == row.group;
        if (!seen)
            groups.emplace_back(row.group);
    }
    return groups;
}

void keyword_section(std::ostringstream& s, KeywordSection section)
{
    const auto& rows = KeywordDeclarations::all();
    const auto in_section = [section](const KeywordDeclaration& row) { return row.section == section; };
    for (const std::string& group : groups_of(rows, in_section))
    {
        s << "\n### " << group << "\n\n";
        s << "| Keyword | Value | Default | Unit | Tier | Description |\n";
        s << "|---|---|---|---|---|---|\n";
        for (const KeywordDeclaration& row : rows)
        {
            if (!in_section(row) || group != row.group)
                continue;
            s << "| `" << row.name << "` | " << row.type << " | " << row.def << " | " << row.unit << " | "
              << TIER_NAMES[row.tier] << " | " << row.help << " |\n";
        }
    }
}

std::string parameter_name(const ParameterDeclaration& row)
{
    if (row.count == 0)
        return std::string("`") + row.name + "`";
    return std::string("`") + row.name + "_0` to `" + row.name + "_" + std::to_string(row.count - 1) + "`";
}

std::string parameter_default(const ParameterDeclaration& row)
{
    if (row.count > 0)
        return "by class, as `SED_LOAD_VOL`";
    return both(number(row.type, row.def), number(row.type, row.turbiditic_differs ? row.turb_def : row.def));
}

std::string parameter_range(const ParameterDeclaration& row)
{
    if (row.type == PARAM_BOOL)
        return "";
    const std::string fluvial = ParameterDeclarations::rangeText(row.type, row.min, row.max);
    if (!row.turbiditic_differs)
        return fluvial;
    return both(fluvial, ParameterDeclarations::rangeText(row.type, row.turb_min, row.turb_max));
}

std::string parameter_help(const ParameterDeclaration& row)
{
    std::string help = row.help;
    if (std::string(row.control).empty())
        return help;
    return help + "; counts while `" + row.control + "` = " + std::to_string(row.control_value);
}

void parameter_section(std::ostringstream& s)
{
    const auto& rows = ParameterDeclarations::all();
    // Text parameters are chosen by their own keywords (USE_TURBIDITE), not by name.
    const auto settable = [](const ParameterDeclaration& row) { return row.type != PARAM_STRING; };
    for (const std::string& group : groups_of(rows, settable))
    {
        s << "\n### " << group << "\n\n";
        s << "| Parameter | Type | Default | Range | Unit | Tier | Description |\n";
        s << "|---|---|---|---|---|---|---|\n";
        for (const ParameterDeclaration& row : rows)
        {
            if (!settable(row) || group != row.group)
                continue;
            s << "| " << parameter_name(row) << " | " << type_text(row.type) << " | "
              << parameter_default(row) << " | " << parameter_range(row) << " | " << row.unit << " | "
              << TIER_NAMES[row.tier] << " | " << parameter_help(row) << " |\n";
        }
    }
}

} // namespace

std::string KeywordReference::markdown()
{
    std::ostringstream s;
    s << "# Batch keywords\n\n";
    s << "This reference is printed by `sarvo --keywords`; doc/KEYWORDS.md is generated from it by\n";
    s << "`scripts/update-keywords.sh`. How to write a batch file is told in doc/USERS_GUIDE.md.\n\n";
    s << "A batch file holds one \"[GLOBAL]\" section, then one or more \"[NEW_SEQ]\" sections. A line is\n";
    s << "`KEYWORD = value`; lists are separated by \";\"; a line starting with \"#\" is a comment. The "
         "tier\n";
    s << "is the lowest distribution that accepts the keyword: a lower one ignores it with an error line.\n";
    s << "\n## Global section: [GLOBAL]\n";
    keyword_section(s, SECTION_GLOBAL);
    s << "\n## Sequence section: [NEW_SEQ]\n";
    keyword_section(s, SECTION_SEQUENCE);
    s << "\n## Parameters\n\n";
    s << "Any other keyword of a sequence sets the parameter of that name before the sequence runs. The\n";
    s << "defaults are those of a fluvial system, with the turbiditic ones (\"Turbidite\" and \"Lobes\") "
         "where\n";
    s << "they differ. A value out of its range stops the run; a parameter that counts only under a law or\n";
    s << "clock is checked only while that law or clock is chosen.\n";
    parameter_section(s);
    return s.str();
}
