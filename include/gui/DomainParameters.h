#pragma once
// The simulation type and the geometry of the domain grid.

#include "gui/ParameterGroup.h"

class DomainParameters : public ParameterGroup
{
public:
    explicit DomainParameters(iParameters* params);

    // The simulation type comes first, as a literal, then the grid.
    bool saveInJnl(OutputJournalFile& journal, bool sequence) const override;
    // The grid is fixed once a project started: a sequence record is read
    // through but leaves type and geometry as they are.
    bool readFromJnl(InputJournalFile& journal, bool sequence) override;

    std::string getName() const override { return "Domain"; }
    const std::vector<JournalEntry>& getEntries() const override;

    // "Fluvial", "Turbidite" or "Turbidite (Research)" for lobes.
    static std::string systemTypeText(const iParameters& params);

private:
    bool apply_system_type(const std::string& text);
};
