#pragma once
// What a parameter panel shows of one parameter group, without any widget: a
// heading per level of the group and a row per value, with its label, unit,
// range and whether it is fixed once the model exists. The desktop's one
// generic panel draws these rows; servers test them.

#include "gui/ParameterGroup.h"

#include <string>
#include <vector>

class iParameters;

struct ParameterRow
{
    bool heading = false;
    // Nesting of the row inside the group's levels.
    int depth = 0;
    std::string label;
    // The registry name; empty for an expert setting.
    std::string name;
    std::string unit;
    JournalEntry::Kind kind = JournalEntry::REAL;
    // The geometry and the seed make the model: fixed once it exists.
    bool fixedAtStart = false;
    // Index of the entry in the group.
    size_t entry = 0;
};

class ParameterRows
{
public:
    explicit ParameterRows(const ParameterGroup& group);

    const std::vector<ParameterRow>& rows() const { return _rows; }
    const std::string& groupName() const { return _groupName; }

    // The value in force, as the panel writes it ("1"/"0" for a boolean).
    std::string valueText(const iParameters& params, size_t row) const;
    // "between 0 and 1", "at least 1"... from the registry's bounds in force
    // (they differ between systems); empty for an expert setting.
    std::string rangeText(const iParameters& params, size_t row) const;
    // Parses `text`, checks the bounds and writes the registry. False with a
    // message naming the parameter and what is wrong, the registry unchanged.
    bool apply(iParameters& params, size_t row, const std::string& text, std::string& message) const;

    // Nothing is edited while a run goes on; the fixed rows once the age is above 0.
    static bool locked(const ParameterRow& row, bool running, unsigned int age);

private:
    bool bounds(const iParameters& params, const ParameterRow& row, double& min, double& max) const;

    const ParameterGroup& _group;
    std::string _groupName;
    std::vector<ParameterRow> _rows;
};
