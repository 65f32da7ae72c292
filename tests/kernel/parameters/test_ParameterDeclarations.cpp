#include "kernel/batch/KeywordDeclarations.h"
#include "kernel/parameters/ParameterDeclarations.h"
#include "kernel/parameters/Parameters.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>

namespace
{

// A text that fits one cell of a Markdown table on one line.
bool one_cell(const std::string& text)
{
    return !text.empty() && text.find('\n') == std::string::npos && text.find('|') == std::string::npos;
}

bool is_code(const ParameterDeclaration& row)
{
    return row.type == PARAM_INT && row.min == INT_MIN && row.max == INT_MAX;
}

} // namespace

TEST(ParameterDeclarations, EveryRowIsCompleteAndConsistent)
{
    std::set<std::string> names;
    for (const ParameterDeclaration& row : ParameterDeclarations::all())
    {
        const std::string name = row.name;
        EXPECT_TRUE(names.insert(name).second) << "declared twice: " << name;
        EXPECT_TRUE(one_cell(row.help)) << name;
        EXPECT_TRUE(one_cell(row.group)) << name;
        EXPECT_TRUE(one_cell(row.label)) << name;
        EXPECT_EQ(ParameterDeclarations::find(name), &row);
        // A default outside its own range would fail the first check of every run.
        if (row.type == PARAM_INT || row.type == PARAM_REAL)
        {
            EXPECT_LE(row.min, row.def) << name;
            EXPECT_LE(row.def, row.max) << name;
            EXPECT_LE(row.turb_min, row.turb_def) << name;
            EXPECT_LE(row.turb_def, row.turb_max) << name;
        }
        // A control must name an enumeration, whose values the row depends on.
        if (std::string(row.control).empty())
            continue;
        const ParameterDeclaration* control = ParameterDeclarations::find(row.control);
        ASSERT_NE(control, nullptr) << name;
        EXPECT_TRUE(is_code(*control)) << name;
    }
    EXPECT_EQ(ParameterDeclarations::find("NOPE"), nullptr);
    EXPECT_EQ(ParameterDeclarations::sedimentVolumes(false).size(), 15u);
    EXPECT_EQ(ParameterDeclarations::sedimentVolumes(true).size(), 15u);
}

TEST(ParameterDeclarations, ControlsDecideWhatTheCheckSees)
{
    // Each controlled row counts under its control value only, in both kinds of system.
    for (bool turbiditic : {false, true})
    {
        for (const ParameterDeclaration& row : ParameterDeclarations::all())
        {
            if (std::string(row.control).empty())
                continue;
            Parameters p(nullptr);
            if (turbiditic)
                p.setUsingTurbi();
            const double min = turbiditic ? row.turb_min : row.min;
            // A row with no lower bound has nothing to break from below.
            if (min <= -1e30)
                continue;
            const double below = min - 1.;
            ASSERT_TRUE(p.setParam(row.name, below)) << row.name;
            std::string message;
            p.setParamInt(row.control, row.control_value + 1);
            EXPECT_FALSE(p.check(message)) << row.name << ": " << message;
            p.setParamInt(row.control, row.control_value);
            EXPECT_TRUE(p.check(message)) << row.name;
            EXPECT_NE(message.find(std::string("  - ") + row.name + " = "), std::string::npos) << message;
        }
    }
}

TEST(ParameterDeclarations, KeywordsAreCompleteAndDistinctFromParameters)
{
    std::set<std::string> seen;
    for (const KeywordDeclaration& row : KeywordDeclarations::all())
    {
        const std::string name = row.name;
        const std::string key = (row.section == SECTION_GLOBAL ? "G:" : "S:") + name;
        EXPECT_TRUE(seen.insert(key).second) << "declared twice: " << name;
        EXPECT_TRUE(one_cell(row.help)) << name;
        EXPECT_TRUE(one_cell(row.def)) << name;
        EXPECT_EQ(KeywordDeclarations::find(name, row.section), &row);
        // A sequence keyword that shares a parameter's name hides it: only these two do, on purpose.
        if (row.section == SECTION_SEQUENCE && ParameterDeclarations::find(name) != nullptr)
        {
            EXPECT_TRUE(name == "ZUL_TYPE" || name == "SED_LOAD_VOL") << name;
        }
    }
    EXPECT_EQ(KeywordDeclarations::find("LAUNCH_IT", SECTION_GLOBAL), nullptr);
    EXPECT_NE(KeywordDeclarations::find("LAUNCH_IT", SECTION_SEQUENCE), nullptr);
}

TEST(ParameterDeclarations, RangeTextLeavesUnsetBoundsOut)
{
    struct Row
    {
        ParameterType type;
        double min;
        double max;
        const char* text;
    };
    const Row rows[] = {
        {PARAM_REAL, 0., 1., "between 0 and 1"},
        {PARAM_REAL, 0.0001, 0.1, "between 0.0001 and 0.1"},
        {PARAM_REAL, 5., 1e30, "at least 5"},
        {PARAM_REAL, -1e30, 99., "at most 99"},
        {PARAM_REAL, -1e30, 1e30, "any"},
        {PARAM_INT, 1., INT_MAX, "at least 1"},
        {PARAM_INT, 1., 2147483646., "between 1 and 2147483646"},
        {PARAM_INT, INT_MIN, INT_MAX, "any code"},
        {PARAM_INT, INT_MIN, 5., "at most 5"},
        {PARAM_BOOL, 0., 1., "0 or 1"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ParameterDeclarations::rangeText(row.type, row.min, row.max), row.text) << row.text;
}
