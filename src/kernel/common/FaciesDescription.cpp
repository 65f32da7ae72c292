#include "kernel/common/FaciesDescription.h"

#include "kernel/common/Facies.h"
#include "kernel/common/FaciesRegister.h"

#include <istream>
#include <ostream>

std::ostream& operator<<(std::ostream& out, const KemoColor& color)
{
    return out << color.red() << ' ' << color.green() << ' ' << color.blue();
}

std::istream& operator>>(std::istream& in, KemoColor& color)
{
    double red = 0.;
    double green = 0.;
    double blue = 0.;
    if (in >> red >> green >> blue)
        color = KemoColor(red, green, blue);
    return in;
}

FaciesDescription::FaciesDescription()
    : _short_name("UD"), _long_name("Undefined"), _color(0.6, 0.6, 0.9), _id(0), _granulo_class(0)
{
}

FaciesDescription::FaciesDescription(const std::string& short_name, const std::string& long_name,
                                     const KemoColor& color, unsigned char id, unsigned char granulo_class)
    : _short_name(short_name), _long_name(long_name), _color(color), _id(id), _granulo_class(granulo_class)
{
    Facies::facies_register().add(*this);
}

FaciesDescription FaciesDescription::unregistered(const std::string& short_name, const std::string& long_name,
                                                  const KemoColor& color, unsigned char id,
                                                  unsigned char granulo_class)
{
    FaciesDescription description;
    description._short_name = short_name;
    description._long_name = long_name;
    description._color = color;
    description._id = id;
    description._granulo_class = granulo_class;
    return description;
}
