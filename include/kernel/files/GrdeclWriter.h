#pragma once
// The regular block as a corner-point grid for reservoir flow simulators
// (GRDECL keywords SPECGRID, COORD, ZCORN, ACTNUM and cell properties). Layers
// are numbered from the top and depths are minus the geographic elevations;
// pillars carry the domain's location and rotation. Void samples are inactive.
// Porosity and permeabilities come from a table by facies family.

#include <string>
#include <vector>

class RegularBlock;

class GrdeclWriter
{
public:
    // Rock properties of one facies family: porosity as a fraction, horizontal
    // and vertical permeabilities in millidarcy.
    struct Rock
    {
        double porosity;
        double kh;
        double kv;
    };

    // The default table (see the user's guide) for every family.
    explicit GrdeclWriter(const RegularBlock& block);

    // Replaces the properties of one family; false for a family out of 0..15 or
    // a porosity out of [0, 1] or a negative permeability.
    bool set_rock(int family, const Rock& rock);
    static bool is_valid(int family, const Rock& rock);
    const Rock& get_rock(int family) const { return _rocks[static_cast<size_t>(family)]; }
    static std::vector<Rock> default_rocks();

    // False with the reason in `getError`.
    bool write(const std::string& path);
    const std::string& getError() const { return _error; }

private:
    std::string grid_keywords() const;
    std::string property_keywords() const;

    const RegularBlock& _block;
    std::vector<Rock> _rocks;
    std::string _error;
};
