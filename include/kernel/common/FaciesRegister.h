#pragma once
// The families known to the program, by short name and by id. The families
// fit in four bits, hence at most sixteen of them.

#include "kernel/common/FaciesDescription.h"

#include <array>
#include <map>
#include <string>

class FaciesRegister
{
public:
    static constexpr unsigned int MAX_FACIES = 16;

    // Holds the undefined family (id 0) from the start.
    FaciesRegister();

    // False, with nothing changed, when full or when the name or the id is taken.
    bool add(const FaciesDescription& description);

    bool is_registered(const std::string& name, unsigned char& id) const;
    // The id may be a full facies byte: only its family is looked at.
    bool is_registered(unsigned char id, std::string& name) const;

    // Unknown keys give the undefined family's description.
    FaciesDescription at(const std::string& name) const;
    FaciesDescription at(unsigned char id) const;

    // Default grain-size class of a family, without copying its description.
    unsigned char default_granulo_class(unsigned char id) const;

    // One line "  - <short name> : <long name>" per family, by id.
    std::string details() const;

    unsigned int number_of_facies() const { return static_cast<unsigned int>(_by_id.size()); }

private:
    std::map<std::string, FaciesDescription> _by_name;
    std::map<unsigned char, FaciesDescription> _by_id;
    std::array<unsigned char, MAX_FACIES> _default_class{};
};
