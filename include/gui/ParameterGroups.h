#pragma once
// The parameter groups of the interface other than the domain, each a fixed
// list of registry values and expert settings, and the whole journal record
// made of all groups in their order.

#include "gui/ParameterGroup.h"

#include <memory>
#include <vector>

class SimuParamParameters : public ParameterGroup
{
public:
    explicit SimuParamParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Simulation Parameters"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class SurfaceParameters : public ParameterGroup
{
public:
    explicit SurfaceParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Surfaces"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class WellsParameters : public ParameterGroup
{
public:
    explicit WellsParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Wells"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class NetworkParameters : public ParameterGroup
{
public:
    explicit NetworkParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Channel"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class ErodibilityParameters : public ParameterGroup
{
public:
    explicit ErodibilityParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Erodibility"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class AvulsionParameters : public ParameterGroup
{
public:
    explicit AvulsionParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Avulsions"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class EquilibriumProfileParameters : public ParameterGroup
{
public:
    explicit EquilibriumProfileParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Equilibrium Profile"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class GrainsizeParameters : public ParameterGroup
{
public:
    explicit GrainsizeParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Grain Size"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class SedimentParameters : public ParameterGroup
{
public:
    explicit SedimentParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Sediment Load"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class MassBalanceParameters : public ParameterGroup
{
public:
    explicit MassBalanceParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Mass Balance"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

class AggradationParameters : public ParameterGroup
{
public:
    explicit AggradationParameters(iParameters* params) : ParameterGroup(params) {}
    std::string getName() const override { return "Aggradation"; }
    const std::vector<JournalEntry>& getEntries() const override;
};

// All groups in the order of a journal record: simulation, domain, surfaces,
// wells, channel, erodibility, avulsions, equilibrium profile, grain size,
// sediment load, mass balance, aggradation.
class ParameterGroupList
{
public:
    explicit ParameterGroupList(iParameters* params);

    bool saveInJnl(OutputJournalFile& journal, bool sequence) const;
    // Stops at the first group that does not read whole.
    bool readFromJnl(InputJournalFile& journal, bool sequence);
    const std::vector<std::unique_ptr<ParameterGroup>>& getGroups() const { return _groups; }

private:
    std::vector<std::unique_ptr<ParameterGroup>> _groups;
};
