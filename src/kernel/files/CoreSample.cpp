#include "kernel/files/CoreSample.h"

#include "kernel/common/Facies.h"

#include <sstream>

CoreSample::CoreSample()
    : _facies(0), _height(MP_MIN_SAMPLE_HEIGHT), _length(0.), _z(0.), _age(0), _grainClass(0),
      _attributeValue(MP_UNDEF_REAL)
{
}

CoreSample::CoreSample(unsigned char facies, double height, double length, double z, const Point2D& location,
                       const CoreSampleTags& tags)
    : _facies(facies > MP_MAX_FACIES_ID ? 0 : facies),
      _height(height < MP_MIN_SAMPLE_HEIGHT ? MP_MIN_SAMPLE_HEIGHT : height), _length(length), _z(z),
      _location(location), _age(tags.age), _grainClass(tags.grainClass), _attributeText(tags.attributeText),
      _attributeValue(tags.attributeValue), _attributeName(tags.attributeName)
{
    if (_grainClass == 255)
        _grainClass = Facies::facies_register().default_granulo_class(_facies);
}

std::string CoreSample::debug() const
{
    std::ostringstream out;
    out << "facies " << static_cast<int>(_facies) << " [" << _z << ", " << getTop() << "] height " << _height
        << " length " << _length << " at " << _location.debug() << " age " << _age;
    if (!_attributeText.empty())
        out << " attribute '" << _attributeText << "'";
    if (hasAttributeValue())
        out << " value " << _attributeValue;
    return out.str();
}
