#pragma once
// A deposit's kind in one byte: the facies family in the low four bits and
// the grain-size class in the high four, since a block holds tens of millions.

#include "kernel/common/FaciesDescription.h"
#include "kernel/common/FaciesRegister.h"

#include <iosfwd>
#include <string>

class Facies
{
public:
    // Family 0, class 0.
    Facies() : _id(0) {}
    // The family's default grain-size class.
    Facies(unsigned char family);
    Facies(unsigned char family, unsigned char gr);

    unsigned char facies_full_id() const { return _id; }
    void facies_full_id(unsigned char id) { _id = id; }

    unsigned char family() const { return family(_id); }
    unsigned char granulo_class() const { return static_cast<unsigned char>(_id >> 4); }
    double granulo_value() const { return class_to_granulo(granulo_class()); }
    FaciesDescription description() const { return description(_id); }

    static unsigned char family(unsigned char full_id) { return static_cast<unsigned char>(full_id & 0x0F); }
    static FaciesDescription description(unsigned char full_id);

    // Values run from 0.0625 (class 0) to 1 (class 15) in sixteen steps.
    static double class_to_granulo(int gr);
    // Not the exact inverse of class_to_granulo: floor(g * 15), within 0..15.
    static unsigned char granulo_to_class(double value);

    void granulo(double value) { granulo(granulo_to_class(value)); }
    void granulo(unsigned char gr) { _id = static_cast<unsigned char>((gr << 4) | family()); }

    // Channel fills: channel lag, point bar, sand plug, mud plug, hemipelagic plug.
    bool is_erodable() const { return is_erodable(family()); }
    static bool is_erodable(unsigned char family);
    // Flood, splay and background deposits.
    bool is_non_erodable() const { return is_non_erodable(family()); }
    static bool is_non_erodable(unsigned char family);
    bool is_neutral() const { return is_neutral(family()); }
    static bool is_neutral(unsigned char family) { return family == 0; }
    // Sands: channel lag, point bar, sand plug and crevasse splay.
    bool is_sand() const { return is_sand(family()); }
    static bool is_sand(unsigned char family) { return family >= 1 && family <= 4; }
    // The sands of one channel body: channel lag, point bar and sand plug.
    bool is_channel_sand() const { return is_channel_sand(family()); }
    static bool is_channel_sand(unsigned char family) { return family >= 1 && family <= 3; }
    // What fills an abandoned channel: mud plug and hemipelagic plug.
    bool is_plug() const { return is_plug(family()); }
    static bool is_plug(unsigned char family) { return family == 9 || family == 10; }
    // Splays and levees: crevasse splay, its channel, its lobe and levee.
    bool is_splay_or_levee() const { return is_splay_or_levee(family()); }
    static bool is_splay_or_levee(unsigned char family) { return family >= 4 && family <= 7; }
    // Fines out of the channel: overbank, wetland, pelagic drape and draping.
    bool is_fine() const { return is_fine(family()); }
    static bool is_fine(unsigned char family)
    {
        return family == 8 || family == 11 || family == 12 || family == 13;
    }

    // Two facies of one family are the same facies, whatever their grain size.
    bool operator==(const Facies& other) const { return family() == other.family(); }
    bool operator!=(const Facies& other) const { return family() != other.family(); }
    bool operator<(const Facies& other) const { return family() < other.family(); }

    // Short name and grain-size class, e.g. "PB (10)".
    std::string debug() const;

    static FaciesRegister& facies_register();
    static unsigned int number_of_facies();

private:
    unsigned char _id;
};

std::ostream& operator<<(std::ostream& out, const Facies& facies);
