#include "kernel/domain/DepositionSet.h"

#include "kernel/domain/iColumnWell.h"

#include "kernel/common/Assert.h"
#include "kernel/common/BinaryDump.h"
#include "kernel/common/Constants.h"
#include "kernel/parameters/MassBalance.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <ostream>
#include <utility>

namespace
{

constexpr double THRATIO = DepositionUnit::_thratio;
constexpr long long MAXSTUT = DepositionUnit::_maxstut;
constexpr uint32_t MAXAGUT = DepositionUnit::_maxagut;
constexpr double FULL_UNIT_THICKNESS = MAXSTUT * THRATIO;

constexpr unsigned char VOID_FACIES = 255;
constexpr double VOID_GRANULO = -1.;

unsigned char as_byte(long long value)
{
    return static_cast<unsigned char>(value);
}

// The whole steps in a thickness, floor(th / THRATIO). Written out because
// a floor turned straight into an integer is compiled as a call to the
// library, in the column's busiest function.
long long whole_steps(double th)
{
    const double steps = th / THRATIO;
    const long long n = static_cast<long long>(steps);
    return static_cast<double>(n) > steps ? n - 1 : n;
}

} // namespace

DepositionSet::DepositionSet(double z) : DepositionUnitCollection(z) {}

DepositionSet::~DepositionSet() = default;

void DepositionSet::resetFrom(const DepositionSet& other)
{
    *this = other;
    _well = nullptr;
}

void DepositionSet::set_zul_rel(double z)
{
    VCollection::set_zul_rel(z);
    tell_well_placement(&iColumnWell::set_zul_rel, z);
}

void DepositionSet::set_zul_geo(double z)
{
    VCollection::set_zul_geo(z);
    tell_well_placement(&iColumnWell::set_zul_geo, z);
}

void DepositionSet::set_zref(double zref)
{
    VCollection::set_zref(zref);
    tell_well_placement(&iColumnWell::set_zref, zref);
}

void DepositionSet::set_flat_delta(double delta)
{
    VCollection::set_flat_delta(delta);
    tell_well_placement(&iColumnWell::set_flat_delta, delta);
}

void DepositionSet::adopt_flat_delta(double delta)
{
    VCollection::adopt_flat_delta(delta);
    tell_well_placement(&iColumnWell::set_flat_delta, delta);
}

void DepositionSet::water_depth(double wd)
{
    MP_ASSERT_TEXT(wd >= 0., "wd >= 0.");
    _water_depth = wd;
    tell_well_wet();
}

void DepositionSet::well(iColumnWell* well)
{
    _well = well;
    tell_well_placement(&iColumnWell::set_zul_rel, _zul);
    tell_well_placement(&iColumnWell::set_flat_delta, _flat_delta);
    tell_well_wet();
}

void DepositionSet::apply_tecto(int steps)
{
    const double dz = steps * _tecto;
    _zbot += dz;
    _ztop += dz;
}

void DepositionSet::set_erod(const std::vector<double>& erod, double dz, double z0)
{
    MP_ASSERT(!erod.empty());
    _erod = erod;
    _erod_dz = dz;
    _erod_z0 = z0;
    update_erodibility();
}

void DepositionSet::update_erodibility()
{
    const int last = static_cast<int>(_erod.size()) - 1;
    if (last <= 0)
    {
        _erod_index = 0;
        return;
    }
    const double slice = std::floor((_ztop - _erod_z0) / _erod_dz);
    // Compared as a real first: a far elevation must not overflow the index.
    if (!(slice > 0.))
        _erod_index = 0;
    else if (slice >= last)
        _erod_index = last;
    else
        _erod_index = static_cast<int>(slice);
}

// ---------------------------------------------------------------------------
// Deposits
// ---------------------------------------------------------------------------

void DepositionSet::deposit_thickness(double th, Facies facies, uint32_t age, MassBalance* mb)
{
    deposit(th, facies, nullptr, age, mb);
}

void DepositionSet::deposit_thickness(double th, Facies facies, double granulo, uint32_t age, MassBalance* mb)
{
    deposit(th, facies, &granulo, age, mb);
}

void DepositionSet::deposit_up_to(double z, Facies facies, uint32_t age, MassBalance* mb)
{
    deposit(z - _ztop, facies, nullptr, age, mb);
}

void DepositionSet::deposit_up_to(double z, Facies facies, double granulo, uint32_t age, MassBalance* mb)
{
    deposit(z - _ztop, facies, &granulo, age, mb);
}

// Thicknesses below one step are carried to the next deposit of the same
// family, and every deposit that reaches one step pushes new units, so that
// the age of each layer is kept.
void DepositionSet::deposit(double th, Facies facies, const double* forced_granulo, uint32_t age,
                            MassBalance* mb)
{
    if (th <= 0.)
        return;
    MP_ASSERT(mb != nullptr);
    if (facies == _facies)
        th += _remaining;

    long long n = 1;
    double r = 0.;
    if (th != THRATIO)
    {
        n = whole_steps(th);
        r = th - n * THRATIO;
    }
    _remaining = r < 0. ? 0. : r;
    if (r >= THRATIO)
    {
        _remaining = 0.;
        ++n;
    }
    if (n <= 0)
        return;

    MP_ASSERT_TEXT(age >= _age, "a >= _age");
    uint32_t delta = age - _age;
    _age = age;
    if (delta > MAXAGUT)
    {
        stack_hiatus(MAXAGUT * (delta / MAXAGUT), facies);
        delta %= MAXAGUT;
    }

    GranuloList parts;
    mb->deposited_accounts(th, facies, parts);
    if (forced_granulo != nullptr)
        facies.granulo(*forced_granulo);
    for (const GranuloThickness& part : parts)
    {
        if (forced_granulo == nullptr)
            facies.granulo(part.granulo);
        const long long steps = whole_steps(part.thickness);
        push_units(steps < 0 ? 0 : steps, facies, delta);
    }
    _facies = facies;
    tell_well_deposit(facies, th);
    update_erodibility();
}

// Splits a deposit into units of at most 255 steps; only the first one
// carries the age delta.
void DepositionSet::push_units(long long steps, const Facies& facies, uint32_t& age_delta)
{
    while (steps > MAXSTUT)
    {
        _units.emplace_back(facies, as_byte(MAXSTUT), as_byte(age_delta));
        _ztop += FULL_UNIT_THICKNESS;
        steps -= MAXSTUT;
        age_delta = 0;
    }
    _units.emplace_back(facies, as_byte(steps), as_byte(age_delta));
    _ztop += steps * THRATIO;
    age_delta = 0;
}

void DepositionSet::stack_hiatus(uint32_t t, const Facies& facies)
{
    MP_ASSERT_TEXT(t % MAXAGUT == 0, "t % T == 0");
    for (uint32_t k = t / MAXAGUT; k > 0; --k)
        _units.emplace_back(facies, as_byte(0), as_byte(MAXAGUT));
}

// ---------------------------------------------------------------------------
// Erosion
// ---------------------------------------------------------------------------

void DepositionSet::erode_down_to(double z, MassBalance* mb)
{
    erode_thickness(_ztop - z, mb);
}

// Erosion truncates to whole steps where deposits floor: the two do not round
// alike. Below the units the column is cut into the basement.
void DepositionSet::erode_thickness(double th, MassBalance* mb)
{
    if (th < 0.)
        return;
    double n = std::trunc(th / THRATIO);
    if (_units.empty())
    {
        _ztop -= n * THRATIO;
        _facies = Facies();
    }
    else if (n == 0.)
    {
        _facies = _units.back().facies();
    }
    else
    {
        while (true)
        {
            DepositionUnit& u = _units.back();
            if (u.thickness_steps() > n)
            {
                if (mb != nullptr)
                    mb->eroded_accounts(n * THRATIO, u.facies());
                u.thickness_steps(as_byte(u.thickness_steps() - static_cast<long long>(n)));
                _ztop -= n * THRATIO;
                _facies = u.facies();
                break;
            }
            MP_ASSERT_TEXT(u.age_delta() <= _age, "du.age_delta() <= _age");
            if (mb != nullptr)
                mb->eroded_accounts(u.thickness(), u.facies());
            _age -= u.age_delta();
            n -= u.thickness_steps();
            _ztop -= u.thickness();
            _units.pop_back();
            if (_units.empty())
            {
                _ztop -= n * THRATIO;
                _facies = Facies();
                break;
            }
            if (n == 0.)
            {
                _facies = _units.back().facies();
                break;
            }
        }
    }
    if (_zbot > _ztop)
        _zbot = _ztop;
    tell_well_eroded_down();
    _remaining = 0.;
    update_erodibility();
}

void DepositionSet::erode_up_to(double z)
{
    erode_thickness_from_bottom(z - _zbot);
}

// Raises the base of the block: no mass is booked and the age of the top stays.
void DepositionSet::erode_thickness_from_bottom(double th)
{
    if (th < 0.)
        return;
    double n = std::trunc(th / THRATIO);
    if (_units.empty())
    {
        _zbot += n * THRATIO;
    }
    else
    {
        std::size_t removed = 0;
        while (n > 0. && removed < _units.size())
        {
            DepositionUnit& u = _units[removed];
            if (u.thickness_steps() > n)
            {
                u.thickness_steps(as_byte(u.thickness_steps() - static_cast<long long>(n)));
                _zbot += n * THRATIO;
                n = 0.;
                break;
            }
            n -= u.thickness_steps();
            _zbot += u.thickness();
            ++removed;
        }
        _units.erase(_units.begin(), _units.begin() + static_cast<std::ptrdiff_t>(removed));
        if (_units.empty())
        {
            _facies = Facies();
            _zbot += n * THRATIO;
        }
        else
        {
            _facies = _units.back().facies();
        }
    }
    if (_zbot > _ztop)
    {
        const double gap = _zbot - _ztop;
        _remaining = _ztop + _remaining > _zbot ? _remaining - gap : 0.;
        _ztop = _zbot;
    }
    tell_well_eroded_up();
    update_erodibility();
}

// The count of steps is the column height taken in metres: the rebuilt units
// hold less than the frame, which is left as it is.
void DepositionSet::replace_facies(const Facies& facies)
{
    if (_units.empty())
        return;
    _units.clear();
    uint32_t first_delta = _age;
    if (_age > MAXAGUT)
    {
        stack_hiatus(MAXAGUT * (_age / MAXAGUT), facies);
        first_delta = _age % MAXAGUT;
    }
    for (double c = std::trunc(_ztop - _zbot); c >= 1.; c -= MAXSTUT)
    {
        const long long steps = c < MAXSTUT ? static_cast<long long>(c) : MAXSTUT;
        _units.emplace_back(facies, as_byte(steps), as_byte(first_delta));
        first_delta = 0;
    }
}

// ---------------------------------------------------------------------------
// Queries
// ---------------------------------------------------------------------------

uint32_t DepositionSet::bottom_age() const
{
    uint32_t deltas = 0;
    for (const DepositionUnit& u : _units)
        deltas += u.age_delta();
    return deltas > _age ? 0 : _age - deltas;
}

// Hiatus units hold no sediment: the oldest deposit is the first unit with steps.
uint32_t DepositionSet::oldest_deposit_age() const
{
    uint32_t age = bottom_age();
    for (const DepositionUnit& u : _units)
    {
        age += u.age_delta();
        if (u.thickness_steps() > 0)
            return age;
    }
    return MP_UNDEF_UINT;
}

void DepositionSet::slice_info(double z, Facies& facies, uint32_t& age) const
{
    age = _age;
    const double top = get_ztop_geo();
    if (_units.empty() || z >= top || z < get_zbot_geo())
    {
        facies = Facies();
        return;
    }
    double zlim = top;
    for (auto it = _units.rbegin(); it != _units.rend(); ++it)
    {
        zlim -= it->thickness();
        age -= it->age_delta();
        if (zlim <= z)
        {
            facies = it->facies();
            age += it->age_delta();
            return;
        }
    }
    facies = Facies();
}

void DepositionSet::age_info(uint32_t age, double& z, Facies& facies) const
{
    z = get_ztop_geo();
    if (age >= _age)
    {
        facies = _facies;
        return;
    }
    if (age == 0 || _units.empty())
    {
        z = MP_UNDEF_REAL;
        facies = Facies();
        return;
    }
    uint32_t counter = _age;
    for (std::size_t k = _units.size() - 1; k > 0; --k)
    {
        const DepositionUnit& u = _units[k];
        counter = counter > u.age_delta() ? counter - u.age_delta() : 0;
        z -= u.thickness();
        if (counter <= age)
            return;
    }
    // The horizon lies in or under the first unit, whose base has no age of its own.
    z = MP_UNDEF_REAL;
    facies = Facies();
}

double DepositionSet::cumulative_thickness(const Facies& facies, double z1, double z2) const
{
    if (z1 > z2)
        std::swap(z1, z2);
    if (z1 == z2)
        return 0.;
    double sum = 0.;
    double zb = _zbot;
    for (const DepositionUnit& u : _units)
    {
        if (zb >= z2)
            break;
        const double zt = zb + u.thickness();
        if (u.facies() == facies)
        {
            const double overlap = std::min(zt, z2) - std::max(zb, z1);
            if (overlap > 0.)
                sum += overlap;
        }
        zb = zt;
    }
    return sum;
}

double DepositionSet::mean_granulo(double z1, double z2) const
{
    const double dist = z2 - z1;
    MP_ASSERT_TEXT(dist > 0., "dist > 0.");
    double weighted = 0.;
    double covered = 0.;
    double zb = _zbot;
    for (const DepositionUnit& u : _units)
    {
        if (zb >= z2)
            break;
        const double zt = zb + u.thickness();
        const double overlap = std::min(zt, z2) - std::max(zb, z1);
        if (overlap > 0.)
        {
            weighted += overlap * u.facies().granulo_value();
            covered += overlap;
        }
        zb = zt;
    }
    return covered > 0. ? weighted / covered : MP_UNDEF_REAL;
}

std::vector<DepositUnit> DepositionSet::get_irregular() const
{
    std::vector<DepositUnit> out;
    out.reserve(_units.size());
    uint32_t base_age = bottom_age();
    for (const DepositionUnit& u : _units)
    {
        out.emplace_back(u.facies().family(), u.thickness(), base_age, u.facies().granulo_value());
        base_age += u.age_delta();
    }
    return out;
}

void DepositionSet::get_regular(double zstart, int n, double dz, std::vector<unsigned char>* facies,
                                std::vector<uint32_t>* age, std::vector<double>* granulo, bool append) const
{
    if (!append)
    {
        facies->clear();
        if (age != nullptr)
            age->clear();
        if (granulo != nullptr)
            granulo->clear();
    }
    if (n <= 0)
        return;

    int count = 0;
    auto emit = [&](unsigned char f, uint32_t a, double g)
    {
        facies->push_back(f);
        if (age != nullptr)
            age->push_back(a);
        if (granulo != nullptr)
            granulo->push_back(g);
        ++count;
    };

    const double lo = get_zbot_geo() - MP_EPSILON;
    const double hi = get_ztop_geo() + MP_EPSILON;
    double z = zstart;
    uint32_t counter = bottom_age();
    while (z < lo && count < n)
    {
        emit(VOID_FACIES, 0, VOID_GRANULO);
        z += dz;
    }
    // Each unit ends at a running limit that loses the tolerance again, so a
    // sample on a unit's top falls in the unit above.
    double t = lo;
    for (auto it = _units.begin(); it != _units.end() && count < n; ++it)
    {
        t += it->thickness() - MP_EPSILON;
        counter += it->age_delta();
        while (z < t && z < hi && count < n)
        {
            emit(it->facies().family(), counter, it->facies().granulo_value());
            z += dz;
        }
    }
    while (count < n)
        emit(VOID_FACIES, 0, VOID_GRANULO);
}

// ---------------------------------------------------------------------------
// Binary record
// ---------------------------------------------------------------------------

void DepositionSet::binary_output(std::ostream& out) const
{
    dump::write(out, _facies.facies_full_id());
    dump::write(out, _age);
    dump::write(out, _water_depth);
    dump::write(out, _remaining);
    dump::write(out, _erod_dz);
    dump::write(out, _erod_z0);
    dump::write_array(out, _erod);
    dump::write(out, _topo_altered);
    dump::write(out, static_cast<uint8_t>(_under_channel ? 1 : 0));
    DepositionUnitCollection::binary_output(out);
}

bool DepositionSet::binary_input(std::istream& in)
{
    unsigned char facies_id = 0;
    uint8_t under_channel = 0;
    bool ok = dump::read(in, facies_id) && dump::read(in, _age) && dump::read(in, _water_depth) &&
              dump::read(in, _remaining) && dump::read(in, _erod_dz) && dump::read(in, _erod_z0) &&
              dump::read_array(in, _erod) && dump::read(in, _topo_altered) && dump::read(in, under_channel);
    _facies.facies_full_id(facies_id);
    _under_channel = under_channel != 0;
    // A column always has an erodibility in force.
    if (_erod.empty())
    {
        if (ok)
            in.setstate(std::ios::failbit);
        ok = false;
        _erod.assign(1, MP_UNDEF_REAL);
    }
    ok = ok && DepositionUnitCollection::binary_input(in);
    update_erodibility();
    return ok && static_cast<bool>(in);
}

// ---------------------------------------------------------------------------
// Attached well
//
// The column tells its conditioning well everything through the hooks below
// and nowhere else.
// ---------------------------------------------------------------------------

void DepositionSet::tell_well_placement(void (iColumnWell::*setter)(double), double value)
{
    if (_well == nullptr)
        return;
    (_well->*setter)(value);
}

void DepositionSet::tell_well_wet()
{
    if (_well == nullptr)
        return;
    _well->set_wet(_water_depth != 0.);
}

void DepositionSet::tell_well_deposit(const Facies& facies, double th)
{
    if (_well == nullptr)
        return;
    _well->deposit(facies, th, _ztop - th, _water_depth, this);
}

void DepositionSet::tell_well_eroded_down()
{
    if (_well == nullptr)
        return;
    _well->erode_down_to(_ztop, _water_depth, this);
}

void DepositionSet::tell_well_eroded_up()
{
    if (_well == nullptr)
        return;
    _well->erode_up_to(_zbot, _water_depth);
}
