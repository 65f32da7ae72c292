#include "kernel/common/Facies.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/FaciesRegister.h"

#include <cmath>
#include <ostream>
#include <sstream>

FaciesRegister& Facies::facies_register()
{
    // Built on first use, so that it exists before the first family registers.
    static FaciesRegister the_register;
    return the_register;
}

// The families live in this unit, with the register: whoever builds a Facies
// links them, and they register before the program starts.
FaciesDescription ChannelLag::_fd("CL", "Channel Lag", KemoColor(1., 0.5, 0.), 1, 13);
FaciesDescription PointBar::_fd("PB", "Point Bar / LAPs", KemoColor(1., 1., 0.), 2, 10);
FaciesDescription SandPlug::_fd("SP", "Sand Plug", KemoColor(0.75, 0.75, 0.55), 3, 9);
FaciesDescription CrevasseI::_fd("CSI", "Crevasse Splay I", KemoColor(0.8, 0.5, 0.2), 4, 9);
FaciesDescription CrevasseChannel::_fd("CCh", "Splay II Channels", KemoColor(0.8, 1., 0.2), 5, 8);
FaciesDescription CrevasseII::_fd("CSII", "Crevasse Splay II", KemoColor(0.8, 0.8, 0.2), 6, 7);
FaciesDescription Levee::_fd("LV", "Levee", KemoColor(0.4, 0.8, 0.2), 7, 6);
FaciesDescription Overbank::_fd("OB", "Overbank", KemoColor(0., 1., 0.), 8, 3);
FaciesDescription MudPlug::_fd("MP", "Mud Plug", KemoColor(0., 0.8, 0.5), 9, 2);
FaciesDescription HemipelagicPlug::_fd("HP", "Hemipelagic Plug", KemoColor(0.5, 0.5, 0.5), 10, 2);
FaciesDescription Wetland::_fd("WL", "Wetland", KemoColor(0.85, 0.45, 0.85), 11, 1);
FaciesDescription Draping::_fd("DR", "Draping", KemoColor(0.6, 0.8, 0.9), 12, 1);
FaciesDescription Pelagic::_fd("PL", "Pelagic", KemoColor(1., 0.8, 1.), 13, 1);

unsigned int Facies::number_of_facies()
{
    return facies_register().number_of_facies();
}

Facies::Facies(unsigned char family)
{
    MP_ASSERT_TEXT(family < number_of_facies(), "family < number_of_facies()");
    _id = family;
    granulo(facies_register().default_granulo_class(family));
}

Facies::Facies(unsigned char family, unsigned char gr)
{
    MP_ASSERT_TEXT(family < number_of_facies(), "family < number_of_facies()");
    MP_ASSERT_TEXT(gr < MD_NB_CLASS_GR, "gr < MD_NB_CLASS_GR");
    _id = family;
    granulo(gr);
}

FaciesDescription Facies::description(unsigned char full_id)
{
    return facies_register().at(family(full_id));
}

double Facies::class_to_granulo(int gr)
{
    const int capped = gr > 15 ? 15 : gr;
    return (capped + 1) * 0.0625;
}

unsigned char Facies::granulo_to_class(double value)
{
    if (value < 0.0625)
        return 0;
    if (value > 1.)
        return 15;
    return static_cast<unsigned char>(std::floor(value * 15.));
}

bool Facies::is_erodable(unsigned char family)
{
    return family == 1 || family == 2 || family == 3 || family == 9 || family == 10;
}

bool Facies::is_non_erodable(unsigned char family)
{
    return (family >= 4 && family <= 8) || (family >= 11 && family <= 13);
}

std::string Facies::debug() const
{
    std::ostringstream text;
    text << description().short_name() << " (" << static_cast<unsigned int>(granulo_class()) << ")";
    return text.str();
}

std::ostream& operator<<(std::ostream& out, const Facies& facies)
{
    return out << facies.debug();
}
