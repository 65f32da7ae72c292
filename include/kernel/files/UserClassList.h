#pragma once
// The user's classes, all of one type, through which logs of arbitrary
// attributes become logs of facies.

#include "kernel/files/UserClass.h"

#include <string>
#include <vector>

class Core;

class UserClassList
{
public:
    UserClassList() = default;
    virtual ~UserClassList() = default;
    UserClassList(const UserClassList&) = default;
    UserClassList& operator=(const UserClassList&) = default;

    // `type` is 2 (discrete, `attribute` used) or 3 (continuous, `min` and `max` used).
    // False with the reason in `error` for a bad type, facies, attribute or interval,
    // or a class that clashes with one already held.
    bool add(int type, int facies, const std::string& attribute, double min, double max, std::string& error);
    bool addDiscrete(int facies, const std::string& attribute, std::string& error);
    bool addContinuous(int facies, double min, double max, std::string& error);

    void clear() { _classes.clear(); }
    bool empty() const { return _classes.empty(); }
    int size() const { return static_cast<int>(_classes.size()); }
    const UserClass& at(int index) const { return _classes.at(static_cast<size_t>(index)); }
    // The type of the classes held, 0 when there is none.
    int getType() const { return _classes.empty() ? 0 : _classes.front().getType(); }

    // The first class matching the sample, or null.
    const UserClass* find(const CoreSample& sample) const;
    // Gives each sample the facies of its class (0 when none matches) and the
    // class's name; the log then holds system facies. Returns the number of matches.
    int apply(Core& core) const;

private:
    std::vector<UserClass> _classes;
};
