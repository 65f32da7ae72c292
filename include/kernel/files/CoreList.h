#pragma once
// An ordered list of well logs, as the split of a deviated well or the logs
// drawn from a region of the block give them.

#include "kernel/files/Core.h"

#include <string>
#include <vector>

class CoreList
{
public:
    CoreList() = default;
    virtual ~CoreList() = default;
    CoreList(const CoreList&) = default;
    CoreList& operator=(const CoreList&) = default;

    void add(const Core& core) { _cores.push_back(core); }
    void clear() { _cores.clear(); }
    bool empty() const { return _cores.empty(); }
    int size() const { return static_cast<int>(_cores.size()); }
    const Core& at(int index) const { return _cores.at(static_cast<size_t>(index)); }
    Core& at(int index) { return _cores.at(static_cast<size_t>(index)); }
    // The first log at the location `key` identifies, or null.
    Core* find(const std::string& key);
    const Core* find(const std::string& key) const;
    // Total height of each facies family over all logs, by identifier 0 to 13.
    std::vector<double> facies_heights() const;

    std::vector<Core>::const_iterator begin() const { return _cores.begin(); }
    std::vector<Core>::const_iterator end() const { return _cores.end(); }
    std::vector<Core>::iterator begin() { return _cores.begin(); }
    std::vector<Core>::iterator end() { return _cores.end(); }

private:
    std::vector<Core> _cores;
};
