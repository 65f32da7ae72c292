#include "gui/ParameterGroup.h"

#include "gui/InputJournalFile.h"
#include "gui/OutputJournalFile.h"
#include "interface/iParameters.h"
#include "kernel/common/Assert.h"
#include "kernel/parameters/ParameterDeclarations.h"

JournalEntry JournalEntry::up(const std::string& label)
{
    return JournalEntry{LEVEL_UP, label, "", -1, nullptr, nullptr};
}

JournalEntry JournalEntry::down()
{
    return JournalEntry{LEVEL_DOWN, "", "", -1, nullptr, nullptr};
}

JournalEntry JournalEntry::integer(const std::string& label, const std::string& name, int index)
{
    return JournalEntry{INTEGER, label, name, index, nullptr, nullptr};
}

JournalEntry JournalEntry::real(const std::string& label, const std::string& name)
{
    return JournalEntry{REAL, label, name, -1, nullptr, nullptr};
}

JournalEntry JournalEntry::boolean(const std::string& label, const std::string& name)
{
    return JournalEntry{BOOLEAN, label, name, -1, nullptr, nullptr};
}

JournalEntry JournalEntry::expert(Kind kind, const std::string& label, Getter getter, Setter setter)
{
    return JournalEntry{kind, label, "", -1, getter, setter};
}

JournalEntry JournalEntry::declared(const std::string& name)
{
    const ParameterDeclaration* row = ParameterDeclarations::find(name);
    MP_ASSERT(row != nullptr && row->count == 0);
    const Kind kind = row->type == PARAM_INT ? INTEGER : row->type == PARAM_REAL ? REAL : BOOLEAN;
    MP_ASSERT(row->type != PARAM_STRING);
    return JournalEntry{kind, row->label, name, -1, nullptr, nullptr};
}

double JournalEntry::value(const iParameters& params) const
{
    if (getter != nullptr)
        return getter(params);
    switch (kind)
    {
    case INTEGER:
        return index < 0 ? params.getParamInt(name) : params.getParamIntIdx(name, index);
    case REAL:
        return params.getParamDouble(name);
    case BOOLEAN:
        return params.getParamBool(name) ? 1. : 0.;
    default:
        return 0.;
    }
}

void JournalEntry::apply(iParameters& params, double value) const
{
    if (setter != nullptr)
    {
        setter(params, value);
        return;
    }
    switch (kind)
    {
    case INTEGER:
        if (index < 0)
            params.setParamInt(name, static_cast<int>(value));
        else
            params.setParamIntIdx(name, index, static_cast<int>(value));
        break;
    case REAL:
        params.setParamDouble(name, value);
        break;
    case BOOLEAN:
        params.setParamBool(name, value != 0.);
        break;
    default:
        break;
    }
}

ParameterGroup::ParameterGroup(iParameters* params) : _params(params) {}

bool ParameterGroup::saveInJnl(OutputJournalFile& journal, bool) const
{
    return save_entries(journal);
}

bool ParameterGroup::readFromJnl(InputJournalFile& journal, bool)
{
    std::vector<double> values;
    if (!read_entries(journal, values))
        return false;
    apply_entries(values);
    return true;
}

bool ParameterGroup::save_entries(OutputJournalFile& journal) const
{
    bool good = true;
    for (const JournalEntry& entry : getEntries())
    {
        const double value = entry.isValue() ? entry.value(*_params) : 0.;
        switch (entry.kind)
        {
        case JournalEntry::LEVEL_UP:
            journal.upLevel(entry.label);
            break;
        case JournalEntry::LEVEL_DOWN:
            journal.downLevel();
            break;
        case JournalEntry::INTEGER:
            good = journal.addInt(entry.label, static_cast<int>(value)) && good;
            break;
        case JournalEntry::REAL:
            good = journal.addReal(entry.label, value) && good;
            break;
        case JournalEntry::BOOLEAN:
            good = journal.addBool(entry.label, value != 0.) && good;
            break;
        }
    }
    return good;
}

// Levels are labels only in the journals we write: the reader skips them.
bool ParameterGroup::read_entries(InputJournalFile& journal, std::vector<double>& values) const
{
    values.clear();
    for (const JournalEntry& entry : getEntries())
    {
        if (!entry.isValue())
            continue;
        double value = entry.value(*_params);
        int status = 0;
        if (entry.kind == JournalEntry::INTEGER)
        {
            int number = static_cast<int>(value);
            status = journal.getInt(number);
            value = number;
        }
        else if (entry.kind == JournalEntry::REAL)
            status = journal.getReal(value);
        else
        {
            bool flag = value != 0.;
            status = journal.getBool(flag);
            value = flag ? 1. : 0.;
        }
        if (status != 0)
            return false;
        values.push_back(value);
    }
    return true;
}

void ParameterGroup::apply_entries(const std::vector<double>& values)
{
    std::size_t next = 0;
    for (const JournalEntry& entry : getEntries())
    {
        if (entry.isValue() && next < values.size())
            entry.apply(*_params, values[next++]);
    }
}
