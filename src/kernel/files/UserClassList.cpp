#include "kernel/files/UserClassList.h"

#include "kernel/common/Facies.h"
#include "kernel/files/Core.h"

#include <sstream>

bool UserClassList::add(int type, int facies, const std::string& attribute, double min, double max,
                        std::string& error)
{
    if (type == USER_CLASS_DISCRETE)
        return addDiscrete(facies, attribute, error);
    if (type == USER_CLASS_CONTINUOUS)
        return addContinuous(facies, min, max, error);
    error = "Unknown user class type " + std::to_string(type) + " (discrete (2) or continue (3))";
    return false;
}

namespace
{
bool check_facies(int facies, std::string& error)
{
    if (facies >= 0 && facies <= CoreSample::MP_MAX_FACIES_ID)
        return true;
    error = "Unknown facies identifier " + std::to_string(facies) + " for a user class";
    return false;
}

bool check_type(int held, int type, std::string& error)
{
    if (held == 0 || held == type)
        return true;
    error = "User classes must all be discrete or all continuous";
    return false;
}
} // namespace

bool UserClassList::addDiscrete(int facies, const std::string& attribute, std::string& error)
{
    if (!check_facies(facies, error) || !check_type(getType(), USER_CLASS_DISCRETE, error))
        return false;
    if (attribute.empty())
    {
        error = "Empty attribute for a discrete user class";
        return false;
    }
    for (const UserClass& other : _classes)
        if (other.getAttribute() == attribute)
        {
            error = "Attribute " + attribute + " already given to a user class";
            return false;
        }
    _classes.emplace_back(static_cast<unsigned char>(facies), attribute);
    return true;
}

bool UserClassList::addContinuous(int facies, double min, double max, std::string& error)
{
    if (!check_facies(facies, error) || !check_type(getType(), USER_CLASS_CONTINUOUS, error))
        return false;
    const UserClass added(static_cast<unsigned char>(facies), min, max);
    if (!(min < max) || min <= MP_MIN_REAL_VALUE || max >= MP_MAX_REAL_VALUE)
    {
        error = "Invalid interval " + added.getName() + " for a continuous user class";
        return false;
    }
    // Classes may touch at a bound but not overlap.
    for (const UserClass& other : _classes)
        if (min < other.getMax() && other.getMin() < max)
        {
            error = "Interval " + added.getName() + " overlaps user class " + other.getName();
            return false;
        }
    _classes.push_back(added);
    return true;
}

const UserClass* UserClassList::find(const CoreSample& sample) const
{
    for (const UserClass& userClass : _classes)
        if (userClass.matches(sample))
            return &userClass;
    return nullptr;
}

int UserClassList::apply(Core& core) const
{
    int matched = 0;
    for (CoreSample& sample : core.getSamples())
    {
        const UserClass* userClass = find(sample);
        const unsigned char facies = userClass == nullptr ? 0 : userClass->getFacies();
        sample.setFacies(facies);
        sample.setGrainClass(Facies::facies_register().default_granulo_class(facies));
        sample.setAttributeName(userClass == nullptr ? Facies::description(0).long_name()
                                                     : userClass->getName());
        if (userClass != nullptr)
            ++matched;
    }
    core.setStandardFacies(true);
    return matched;
}
