#pragma once
// A rule that turns the attribute of a user's log into a facies: a discrete
// class matches one attribute text, a continuous class an interval of values.

#include "kernel/files/CoreSample.h"

#include <string>

enum UserClassType
{
    USER_CLASS_DISCRETE = 2,
    USER_CLASS_CONTINUOUS = 3
};

class UserClass
{
public:
    // A discrete class.
    UserClass(unsigned char facies, const std::string& attribute);
    // A continuous class over [min, max].
    UserClass(unsigned char facies, double min, double max);
    virtual ~UserClass() = default;
    UserClass(const UserClass&) = default;
    UserClass& operator=(const UserClass&) = default;

    int getType() const { return _type; }
    unsigned char getFacies() const { return _facies; }
    const std::string& getAttribute() const { return _attribute; }
    double getMin() const { return _min; }
    double getMax() const { return _max; }
    // The attribute, or the interval as "[min, max]".
    std::string getName() const;
    // A continuous class reads the sample's value, or its text when that is a number.
    bool matches(const CoreSample& sample) const;

private:
    int _type;
    unsigned char _facies;
    std::string _attribute;
    double _min;
    double _max;
};
