// The rows of the parameter panels: every group's values shown with unit
// and range, a value written and read back unchanged, what is refused, and
// what is locked by the state of the run.

#include "gui/ParameterRows.h"

#include "TestSupport.h"
#include "gui/ParameterGroups.h"
#include "interface/iParameters.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
struct Deleter
{
    void operator()(iSimulator* sim) const { iSimulator::deleteSimulator(sim); }
};

struct Registry
{
    Registry() : sim(iSimulator::createSimulator()), groups(sim->getParameters())
    {
        sim->getTracer()->setTraceFunction(testing_support::silent);
    }
    iParameters& params() { return *sim->getParameters(); }
    const ParameterGroup& group(const std::string& name)
    {
        for (const auto& group : groups.getGroups())
            if (group->getName() == name)
                return *group;
        throw std::runtime_error("no group " + name);
    }
    std::unique_ptr<iSimulator, Deleter> sim;
    ParameterGroupList groups;
};

size_t row_of(const ParameterRows& rows, const std::string& name)
{
    for (size_t index = 0; index < rows.rows().size(); index++)
        if (rows.rows()[index].name == name)
            return index;
    throw std::runtime_error("no row " + name);
}
} // namespace

// Every value of every group reads back unchanged through its own text, so
// that committing an untouched panel never moves the registry.
TEST(ParameterRows, EveryValueRoundTripsThroughItsText)
{
    Registry registry;
    for (const auto& group : registry.groups.getGroups())
    {
        ParameterRows rows(*group);
        EXPECT_FALSE(rows.rows().empty()) << group->getName();
        for (size_t index = 0; index < rows.rows().size(); index++)
        {
            const ParameterRow& row = rows.rows()[index];
            if (row.heading)
                continue;
            const double before = group->getEntries()[row.entry].value(registry.params());
            std::string message;
            EXPECT_TRUE(
                rows.apply(registry.params(), index, rows.valueText(registry.params(), index), message))
                << group->getName() << " / " << row.label << ": " << message;
            EXPECT_EQ(before, group->getEntries()[row.entry].value(registry.params())) << row.label;
            if (!row.name.empty() && row.kind != JournalEntry::BOOLEAN)
            {
                EXPECT_FALSE(rows.rangeText(registry.params(), index).empty()) << row.label;
            }
        }
    }
}

TEST(ParameterRows, EntriesAreCheckedBeforeTheRegistryIsWritten)
{
    struct Case
    {
        const char* group;
        const char* name;
        const char* text;
        bool accepted;
        const char* message;
    };
    const Case cases[] = {
        {"Domain", "DOMAIN_NX", "120", true, ""},
        {"Domain", "DOMAIN_NX", "12.5", false, "is not a whole number"},
        {"Domain", "DOMAIN_NX", "", false, "is not a whole number"},
        {"Domain", "DOMAIN_NX", "0", false, "is out of range"},
        {"Channel", "CHNL_WIDTH", "55.25", true, ""},
        {"Channel", "CHNL_WIDTH", "wide", false, "is not a number"},
        {"Channel", "CHNL_WIDTH", "-3", false, "is out of range"},
        {"Channel", "CHNL_WIDTH", "1e400", false, "is not a number"},
        {"Mass Balance", "MASS_BAL_ACTIVE", "1", true, ""},
        {"Mass Balance", "MASS_BAL_ACTIVE", "2", false, "is not 0 or 1"},
    };
    for (const Case& c : cases)
    {
        Registry registry;
        ParameterRows rows(registry.group(c.group));
        const size_t index = row_of(rows, c.name);
        const std::string before = rows.valueText(registry.params(), index);
        std::string message;
        EXPECT_EQ(c.accepted, rows.apply(registry.params(), index, c.text, message))
            << c.name << " " << c.text;
        if (c.accepted)
            EXPECT_EQ(c.text, rows.valueText(registry.params(), index)) << c.name;
        else
        {
            EXPECT_TRUE(testing_support::contains(message, c.message)) << message;
            EXPECT_TRUE(testing_support::contains(message, rows.rows()[index].label)) << message;
            EXPECT_EQ(before, rows.valueText(registry.params(), index)) << c.name << " " << c.text;
        }
    }
}

TEST(ParameterRows, GeometryAndSeedAreFixedOnceTheModelExists)
{
    Registry registry;
    ParameterRows domain(registry.group("Domain"));
    ParameterRows channel(registry.group("Channel"));
    ParameterRows seed(registry.group("Simulation Parameters"));
    const ParameterRow& nx = domain.rows()[row_of(domain, "DOMAIN_NX")];
    const ParameterRow& width = channel.rows()[row_of(channel, "CHNL_WIDTH")];
    const ParameterRow& simSeed = seed.rows()[row_of(seed, "SIM_SEED")];
    EXPECT_EQ("m", width.unit);
    struct Case
    {
        bool running;
        unsigned int age;
        bool fixedLocked;
        bool otherLocked;
    };
    const Case cases[] = {
        {false, 0, false, false}, {true, 0, true, true}, {false, 30, true, false}, {true, 30, true, true}};
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.fixedLocked, ParameterRows::locked(nx, c.running, c.age)) << c.running << " " << c.age;
        EXPECT_EQ(c.fixedLocked, ParameterRows::locked(simSeed, c.running, c.age))
            << c.running << " " << c.age;
        EXPECT_EQ(c.otherLocked, ParameterRows::locked(width, c.running, c.age)) << c.running << " " << c.age;
    }
}
