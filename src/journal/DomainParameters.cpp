#include "gui/DomainParameters.h"

#include "gui/InputJournalFile.h"
#include "gui/OutputJournalFile.h"
#include "interface/iParameters.h"

namespace
{

const char* const FLUVIAL = "Fluvial";
const char* const TURBIDITE = "Turbidite";
const char* const TURBIDITE_RESEARCH = "Turbidite (Research)";

} // namespace

DomainParameters::DomainParameters(iParameters* params) : ParameterGroup(params) {}

const std::vector<JournalEntry>& DomainParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = {
        JournalEntry::up("Domain"),
        JournalEntry::up("Origin"),
        JournalEntry::declared("DOMAIN_OX"),
        JournalEntry::declared("DOMAIN_OY"),
        JournalEntry::down(),
        JournalEntry::up("Dimensions"),
        JournalEntry::declared("DOMAIN_NX"),
        JournalEntry::declared("DOMAIN_NY"),
        JournalEntry::down(),
        JournalEntry::up("Lags"),
        JournalEntry::declared("DOMAIN_DX"),
        JournalEntry::declared("DOMAIN_DY"),
        JournalEntry::down(),
        JournalEntry::declared("DOMAIN_GRID_DIR"),
        JournalEntry::down(),
    };
    return entries;
}

std::string DomainParameters::systemTypeText(const iParameters& params)
{
    if (params.usingLobes())
        return TURBIDITE_RESEARCH;
    if (params.usingTurbi())
        return TURBIDITE;
    return FLUVIAL;
}

bool DomainParameters::saveInJnl(OutputJournalFile& journal, bool) const
{
    journal.upLevel("Simulation");
    const bool good = journal.addString("System Type", systemTypeText(*_params));
    journal.downLevel();
    return save_entries(journal) && good;
}

bool DomainParameters::readFromJnl(InputJournalFile& journal, bool sequence)
{
    std::string type = systemTypeText(*_params);
    if (journal.getLiteral(type) != 0)
        return false;
    if (type != FLUVIAL && type != TURBIDITE && type != TURBIDITE_RESEARCH)
    {
        journal.setCorrupted();
        return false;
    }
    std::vector<double> values;
    if (!read_entries(journal, values))
        return false;
    if (sequence)
        return true;
    apply_system_type(type);
    apply_entries(values);
    return true;
}

// A new type brings its own defaults and ranges; the seed, read before this
// group, is the one value in force that must survive the reset.
bool DomainParameters::apply_system_type(const std::string& text)
{
    if (text == systemTypeText(*_params))
        return false;
    const int seed = _params->getParamInt("SIM_SEED");
    if (text == FLUVIAL)
        _params->setUsingFluvi();
    else if (text == TURBIDITE)
        _params->setUsingTurbi();
    else
    {
        _params->setParamString("SIM_TYPE", "Lobes");
        _params->reset(true);
    }
    _params->setParamInt("SIM_SEED", seed);
    return true;
}
