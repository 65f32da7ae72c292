#pragma once
// The vertical column of one grid node: its deposition units, bottom and top,
// the water above it, its erodibility profile, its tectonic rate and an
// optional conditioning well. Every deposit and erosion of a simulation goes
// through this class, which keeps units, elevations, ages and mass accounts
// consistent.

#include "kernel/common/Facies.h"
#include "kernel/domain/DepositUnit.h"
#include "kernel/domain/DepositionUnitCollection.h"

#include <cstdint>
#include <iosfwd>
#include <vector>

class MassBalance;
class iColumnWell;

class DepositionSet : public DepositionUnitCollection
{
public:
    // An empty column with bottom and top at z.
    explicit DepositionSet(double z = 0.);
    DepositionSet(const DepositionSet&) = default;
    DepositionSet& operator=(const DepositionSet&) = default;
    ~DepositionSet() override;

    // Copies everything but the well link, which becomes null.
    void resetFrom(const DepositionSet& other);

    // Placement setters also reach the attached well.
    void set_zul_rel(double z) override;
    void set_zul_geo(double z) override;
    void set_zref(double zref) override;
    void set_flat_delta(double delta) override;
    void adopt_flat_delta(double delta);

    // Asks the cache for what a deposit or an erosion of this column reads,
    // ahead of the visit: the channel's imprint walks its nodes in a known order.
    void prefetch() const
    {
        __builtin_prefetch(&_zbot);
        __builtin_prefetch(&_remaining);
        __builtin_prefetch(&_well);
    }
    // The same for the top unit, which a deposit extends or an erosion cuts.
    void prefetch_top_unit() const
    {
        if (!_units.empty())
            __builtin_prefetch(&_units.back());
    }

    double get_topo_rel(bool with_water) const { return with_water ? _ztop + _water_depth : _ztop; }
    double get_topo_geo(bool with_water) const
    {
        return _zref + _ztop + _flat_delta + (with_water ? _water_depth : 0.);
    }
    double get_topo_altered() const { return _topo_altered; }
    void set_topo_altered(double z) { _topo_altered = z; }

    double water_depth() const { return _water_depth; }
    void water_depth(double wd);

    iColumnWell* well() const { return _well; }
    void well(iColumnWell* well);
    void erase_well() { _well = nullptr; }

    const Facies& get_facies() const { return _facies; }
    void set_facies(const Facies& facies) { _facies = facies; }
    uint32_t get_age() const { return _age; }
    void set_age(uint32_t age) { _age = age; }
    bool is_under_channel() const { return _under_channel; }
    void set_under_channel(bool under) { _under_channel = under; }
    double get_remaining() const { return _remaining; }
    void forget_remaining() { _remaining = 0.; }

    // Tectonic rate, metres per iteration, positive upward.
    double get_tecto() const { return _tecto; }
    void set_tecto(double rate) { _tecto = rate; }
    // Moves the column by `steps` iterations of its tectonic rate.
    void apply_tecto(int steps);

    // Erodibility profile: one coefficient per slice of height dz, slice 0
    // starting at relative elevation z0. Needs at least one value.
    void set_erod(const std::vector<double>& erod, double dz, double z0);
    const std::vector<double>& get_erod() const { return _erod; }
    double get_erod_dz() const { return _erod_dz; }
    double get_erod_z0() const { return _erod_z0; }
    int get_erod_index() const { return _erod_index; }
    // The coefficient in force at the current top.
    double get_erodibility() const { return _erod[_erod_index]; }
    void update_erodibility();

    // Deposits: the first forms take the grain size from the mass balance,
    // the second ones force it. Non-positive thicknesses do nothing.
    void deposit_thickness(double th, Facies facies, uint32_t age, MassBalance* mb);
    void deposit_thickness(double th, Facies facies, double granulo, uint32_t age, MassBalance* mb);
    void deposit_up_to(double z, Facies facies, uint32_t age, MassBalance* mb);
    void deposit_up_to(double z, Facies facies, double granulo, uint32_t age, MassBalance* mb);

    // Erosion from the top, booked in the mass balance. Negative thicknesses do nothing.
    void erode_thickness(double th, MassBalance* mb);
    void erode_down_to(double z, MassBalance* mb);
    // Erosion from the bottom, which raises the base of the block; books nothing.
    void erode_thickness_from_bottom(double th);
    void erode_up_to(double z);

    // Keeps an age gap t (a multiple of 255) as empty units of the facies.
    void stack_hiatus(uint32_t t, const Facies& facies);
    // Rebuilds the whole column as one facies.
    void replace_facies(const Facies& facies);

    // Age of the lowest unit that holds sediment; MP_UNDEF_UINT when none does.
    uint32_t oldest_deposit_age() const;
    // Facies and age at the top of the unit at geographic elevation z.
    void slice_info(double z, Facies& facies, uint32_t& age) const;
    // Geographic elevation of the horizon of the given age, 1e30 if not in the column.
    void age_info(uint32_t age, double& z, Facies& facies) const;
    // Thickness of the facies' family between two relative elevations.
    double cumulative_thickness(const Facies& facies, double z1, double z2) const;
    // Thickness-weighted grain size between two relative elevations, 1e30 if no unit overlaps.
    double mean_granulo(double z1, double z2) const;

    // Units bottom first, each with the age of its base.
    std::vector<DepositUnit> get_irregular() const;
    // Resamples the column at n geographic elevations from zstart by dz.
    // Void samples: facies 255, age 0, granulo -1. age and granulo may be null.
    void get_regular(double zstart, int n, double dz, std::vector<unsigned char>* facies,
                     std::vector<uint32_t>* age, std::vector<double>* granulo, bool append) const;

    void binary_output(std::ostream& out) const;
    // False if the stream failed or the record is not a column.
    bool binary_input(std::istream& in);

private:
    void deposit(double th, Facies facies, const double* forced_granulo, uint32_t age, MassBalance* mb);
    void push_units(long long steps, const Facies& facies, uint32_t& age_delta);
    uint32_t bottom_age() const;

    // Everything the column tells its attached well passes through these.
    void tell_well_placement(void (iColumnWell::*setter)(double), double value);
    void tell_well_wet();
    void tell_well_deposit(const Facies& facies, double th);
    void tell_well_eroded_down();
    void tell_well_eroded_up();

    // What a deposit or an erosion reads and writes comes first, next to the
    // elevations and units it inherits, so that it spans as few cache lines
    // as it can: the channel's imprint visits thousands of columns per pass.
    Facies _facies;
    bool _under_channel = false;
    uint32_t _age = 0;
    double _water_depth = 0.;
    double _remaining = 0.;
    int _erod_index = 0;
    double _erod_dz = 1e30;
    double _erod_z0 = 0.;
    iColumnWell* _well = nullptr;
    std::vector<double> _erod{1e30};
    double _topo_altered = 0.;
    double _tecto = 0.;
};
