#include "gui/ParameterRows.h"

#include "interface/iParameters.h"
#include "kernel/parameters/ParameterDeclarations.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

namespace
{
bool fixed_at_start(const ParameterDeclaration* declaration)
{
    return declaration != nullptr && (declaration->geometry || std::string(declaration->name) == "SIM_SEED");
}

// A short text that reads back to the same double, so that a value the
// panel only shows comes back to the registry unchanged.
std::string real_text(double value)
{
    for (int precision = 15; precision <= 17; precision++)
    {
        std::ostringstream out;
        out.precision(precision);
        out << value;
        if (std::strtod(out.str().c_str(), nullptr) == value || precision == 17)
            return out.str();
    }
    return "";
}

bool parse_number(const std::string& text, bool integer, double& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    if (integer)
        value = static_cast<double>(std::strtol(begin, &end, 10));
    else
        value = std::strtod(begin, &end);
    while (end != nullptr && (*end == ' ' || *end == '\t'))
        end++;
    return end != begin && end != nullptr && *end == '\0' && errno == 0 && std::isfinite(value);
}
} // namespace

ParameterRows::ParameterRows(const ParameterGroup& group) : _group(group), _groupName(group.getName())
{
    const std::vector<JournalEntry>& entries = group.getEntries();
    int depth = 0;
    for (size_t index = 0; index < entries.size(); index++)
    {
        const JournalEntry& entry = entries[index];
        if (entry.kind == JournalEntry::LEVEL_DOWN)
        {
            depth--;
            continue;
        }
        ParameterRow row;
        row.depth = depth;
        row.label = entry.label;
        row.entry = index;
        if (entry.kind == JournalEntry::LEVEL_UP)
        {
            row.heading = true;
            depth++;
            // The group's own level repeats the page's name.
            if (index > 0)
                _rows.push_back(row);
            continue;
        }
        row.kind = entry.kind;
        if (entry.getter == nullptr)
        {
            row.name = entry.name;
            const ParameterDeclaration* declaration = ParameterDeclarations::find(entry.name);
            if (declaration != nullptr)
                row.unit = declaration->unit;
            row.fixedAtStart = fixed_at_start(declaration);
        }
        _rows.push_back(row);
    }
}

std::string ParameterRows::valueText(const iParameters& params, size_t row) const
{
    const ParameterRow& r = _rows.at(row);
    if (r.heading)
        return "";
    const double value = _group.getEntries()[r.entry].value(params);
    if (r.kind == JournalEntry::REAL)
        return real_text(value);
    return std::to_string(static_cast<long>(value));
}

bool ParameterRows::bounds(const iParameters& params, const ParameterRow& row, double& min, double& max) const
{
    if (row.heading || row.name.empty())
        return false;
    const JournalEntry& entry = _group.getEntries()[row.entry];
    switch (row.kind)
    {
    case JournalEntry::INTEGER:
        min = entry.index < 0 ? params.getParamMinInt(row.name)
                              : params.getParamMinIntIdx(row.name, entry.index);
        max = entry.index < 0 ? params.getParamMaxInt(row.name)
                              : params.getParamMaxIntIdx(row.name, entry.index);
        return true;
    case JournalEntry::REAL:
        min = params.getParamMinDouble(row.name);
        max = params.getParamMaxDouble(row.name);
        return true;
    default:
        return false;
    }
}

std::string ParameterRows::rangeText(const iParameters& params, size_t row) const
{
    const ParameterRow& r = _rows.at(row);
    double min = 0.;
    double max = 0.;
    if (!bounds(params, r, min, max))
        return "";
    return ParameterDeclarations::rangeText(r.kind == JournalEntry::INTEGER ? PARAM_INT : PARAM_REAL, min,
                                            max);
}

bool ParameterRows::apply(iParameters& params, size_t row, const std::string& text,
                          std::string& message) const
{
    const ParameterRow& r = _rows.at(row);
    if (r.heading)
        return true;
    double value = 0.;
    if (!parse_number(text, r.kind != JournalEntry::REAL, value) ||
        (r.kind == JournalEntry::BOOLEAN && value != 0. && value != 1.))
    {
        message = r.label + ": \"" + text + "\" is not " +
                  (r.kind == JournalEntry::REAL      ? "a number"
                   : r.kind == JournalEntry::INTEGER ? "a whole number"
                                                     : "0 or 1");
        return false;
    }
    double min = 0.;
    double max = 0.;
    if (bounds(params, r, min, max) && (value < min || value > max))
    {
        message = r.label + ": " + text + " is out of range (" + rangeText(params, row) + ")";
        return false;
    }
    _group.getEntries()[r.entry].apply(params, value);
    return true;
}

bool ParameterRows::locked(const ParameterRow& row, bool running, unsigned int age)
{
    return running || (row.fixedAtStart && age > 0);
}
