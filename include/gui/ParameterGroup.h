#pragma once
// A group of the interface's parameters, as the journal keeps it. The group
// lists its values once, so that writing and reading walk the same order.

#include <string>
#include <vector>

class iParameters;
class InputJournalFile;
class OutputJournalFile;

// One line of a group: a level opened or closed, or a value. A value lives in
// the registry under `name` (and `index` for an indexed family), or, for an
// expert setting without a name, behind the two accessors.
struct JournalEntry
{
    enum Kind
    {
        LEVEL_UP,
        LEVEL_DOWN,
        INTEGER,
        REAL,
        BOOLEAN
    };
    typedef double (*Getter)(const iParameters&);
    typedef void (*Setter)(iParameters&, double);

    Kind kind;
    std::string label;
    std::string name;
    int index = -1;
    Getter getter = nullptr;
    Setter setter = nullptr;

    static JournalEntry up(const std::string& label);
    static JournalEntry down();
    static JournalEntry integer(const std::string& label, const std::string& name, int index = -1);
    static JournalEntry real(const std::string& label, const std::string& name);
    static JournalEntry boolean(const std::string& label, const std::string& name);
    static JournalEntry expert(Kind kind, const std::string& label, Getter getter, Setter setter);
    // The registry parameter `name` with the kind and label it is declared with.
    static JournalEntry declared(const std::string& name);

    bool isValue() const { return kind != LEVEL_UP && kind != LEVEL_DOWN; }
    double value(const iParameters& params) const;
    void apply(iParameters& params, double value) const;
};

class ParameterGroup
{
public:
    explicit ParameterGroup(iParameters* params);
    virtual ~ParameterGroup() = default;

    // `sequence` is true for the record of a sequence, false for the initial
    // record of a project; both hold the same values in the same order.
    virtual bool saveInJnl(OutputJournalFile& journal, bool sequence) const;
    // Reads every value of the group before applying any: a group that does
    // not read whole leaves the registry as it was and answers false.
    virtual bool readFromJnl(InputJournalFile& journal, bool sequence);

    virtual std::string getName() const = 0;
    virtual const std::vector<JournalEntry>& getEntries() const = 0;

protected:
    bool save_entries(OutputJournalFile& journal) const;
    // The values read, one per value entry, starting from those in force.
    bool read_entries(InputJournalFile& journal, std::vector<double>& values) const;
    void apply_entries(const std::vector<double>& values);

    iParameters* _params;
};
