#pragma once
// One interval of a well log: what was deposited, how thick it is, and where
// its bottom lies.

#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/geometry/Point2D.h"

#include <string>

// The optional descriptions of a sample, grouped so that the ways of adding a
// sample to a log differ only by their geometry.
struct CoreSampleTags
{
    unsigned int age = 0;
    // 255 asks for the facies' default grain-size class.
    unsigned char grainClass = 255;
    std::string attributeText;
    double attributeValue = MP_UNDEF_REAL;
    std::string attributeName;
};

class CoreSample
{
public:
    // Highest facies identifier a log may carry.
    static constexpr unsigned char MP_MAX_FACIES_ID = 13;
    // Thinnest sample a log may hold.
    static constexpr double MP_MIN_SAMPLE_HEIGHT = 0.01;

    CoreSample();
    // A facies above 13 becomes 0, a height below 0.01 becomes 0.01.
    CoreSample(unsigned char facies, double height, double length, double z, const Point2D& location,
               const CoreSampleTags& tags = CoreSampleTags());
    virtual ~CoreSample() = default;
    CoreSample(const CoreSample&) = default;
    CoreSample& operator=(const CoreSample&) = default;

    unsigned char getFacies() const { return _facies; }
    double getHeight() const { return _height; }
    double getLength() const { return _length; }
    // Elevation of the bottom.
    double getZ() const { return _z; }
    // Elevation of the top: bottom plus height.
    double getTop() const { return _z + _height; }
    const Point2D& getLocation() const { return _location; }
    unsigned int getAge() const { return _age; }
    unsigned char getGrainClass() const { return _grainClass; }
    const std::string& getAttributeText() const { return _attributeText; }
    double getAttributeValue() const { return _attributeValue; }
    const std::string& getAttributeName() const { return _attributeName; }
    bool hasAttributeValue() const { return _attributeValue != MP_UNDEF_REAL; }
    // Sands: channel lag, point bar, sand plug and crevasse splay I.
    bool isSand() const { return Facies::is_sand(_facies); }

    // The setters take the value as given: thin remainders of a cut stay thin.
    void setFacies(unsigned char facies) { _facies = facies; }
    void setHeight(double height) { _height = height; }
    void setLength(double length) { _length = length; }
    void setZ(double z) { _z = z; }
    void setLocation(const Point2D& location) { _location = location; }
    void setAge(unsigned int age) { _age = age; }
    void setGrainClass(unsigned char grainClass) { _grainClass = grainClass; }
    void setAttributeText(const std::string& text) { _attributeText = text; }
    void setAttributeValue(double value) { _attributeValue = value; }
    void setAttributeName(const std::string& name) { _attributeName = name; }

    // Facies, elevations, height and attributes on one line.
    std::string debug() const;

private:
    unsigned char _facies;
    double _height;
    double _length;
    double _z;
    Point2D _location;
    unsigned int _age;
    unsigned char _grainClass;
    std::string _attributeText;
    double _attributeValue;
    std::string _attributeName;
};
