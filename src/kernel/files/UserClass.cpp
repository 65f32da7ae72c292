#include "kernel/files/UserClass.h"

#include "kernel/common/Constants.h"

#include <sstream>

UserClass::UserClass(unsigned char facies, const std::string& attribute)
    : _type(USER_CLASS_DISCRETE), _facies(facies), _attribute(attribute), _min(MP_UNDEF_REAL),
      _max(MP_UNDEF_REAL)
{
}

UserClass::UserClass(unsigned char facies, double min, double max)
    : _type(USER_CLASS_CONTINUOUS), _facies(facies), _min(min), _max(max)
{
}

std::string UserClass::getName() const
{
    if (_type == USER_CLASS_DISCRETE)
        return _attribute;
    std::ostringstream out;
    out << "[" << _min << ", " << _max << "]";
    return out.str();
}

bool UserClass::matches(const CoreSample& sample) const
{
    if (_type == USER_CLASS_DISCRETE)
        return sample.getAttributeText() == _attribute;
    double value = sample.getAttributeValue();
    if (!sample.hasAttributeValue())
    {
        std::istringstream in(sample.getAttributeText());
        in >> value;
        if (in.fail() || !(in >> std::ws).eof())
            return false;
    }
    return value >= _min && value <= _max;
}
