// Regular vertical sampling of the block, its export as a 3D grid, the logs
// drawn from its columns and the thickness measures over ranges of columns.

#include "kernel/common/Assert.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/RegularBlockGrid.h"
#include "kernel/geometry/RegularBlock.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <sstream>

namespace
{
constexpr unsigned char VOID_SAMPLE_FACIES = 255;

bool is_undefined(double value)
{
    return value == MP_UNDEF_REAL;
}

// The stack of a node as a log, from the top down: consecutive units of one
// family make one sample; samples thinner than a log can hold are dropped but
// still lower the running elevation.
void stack_to_core(const DepositionSet& ds, Core& core)
{
    core.clear();
    const Point2D location = ds.get_location_geo();
    core.set_top_location(location);
    core.set_top_elevation(ds.get_ztop_geo());
    const std::vector<DepositionUnit>& units = ds.units();
    double z = ds.get_ztop_geo();
    unsigned int age = ds.get_age();
    auto it = units.rbegin();
    while (it != units.rend())
    {
        const Facies facies = it->facies();
        CoreSampleTags tags;
        tags.age = age;
        tags.grainClass = facies.granulo_class();
        tags.attributeText = facies.description().long_name();
        double thickness = 0.;
        for (; it != units.rend() && !(it->facies() != facies); ++it)
        {
            thickness += it->thickness();
            age = age >= it->age_delta() ? age - it->age_delta() : 0u;
        }
        z -= thickness;
        if (thickness < CoreSample::MP_MIN_SAMPLE_HEIGHT)
            continue;
        core.getSamples().emplace_back(facies.family(), thickness, thickness, z, location, tags);
    }
}

template <typename Value, typename Extract>
std::vector<Value> all_units(const Domain& domain, Extract extract)
{
    std::vector<Value> out;
    for (int j = 0; j < domain.getNy(); ++j)
        for (int i = 0; i < domain.getNx(); ++i)
            for (const DepositUnit& unit : domain.getObject(i, j).get_irregular())
                out.push_back(extract(unit));
    return out;
}
} // namespace

// ---------------------------------------------------------------------------
// Vertical discretization

void Domain::discretize_elevation(double dz, double& zmin, double& zmax, int& nz,
                                  const VerticalDiscretizationPolicy& policy) const
{
    MP_ASSERT_TEXT(dz > 0., "dz > 0");
    switch (policy.mode)
    {
    case 0:
    {
        min_and_max_elevation_geo(zmin, zmax);
        MP_ASSERT_TEXT(zmin < zmax, "minz < maxz");
        const double count = std::floor((zmax - zmin) / dz);
        if (!(count < INT_MAX))
            throw std::string("Sampling of the block by ") + std::to_string(dz) +
                " m would need more levels than can be held";
        const int n = static_cast<int>(count);
        nz = n;
        const double delta = zmax - zmin - n * dz;
        MP_ASSERT_TEXT(delta >= -MP_EPSILON, "delta >= -MP_EPSILON");
        // Centre the samples on the block: the leftover is shared between both ends.
        if (delta <= dz / 2. + MP_EPSILON)
            zmin += delta / 2.;
        else
        {
            nz = n + 1;
            zmin -= delta / 2.;
        }
        zmin += dz / 2.;
        break;
    }
    case 1:
        zmax = max_elevation_geo();
        {
            const double count = std::round((zmax - zmin + dz / 2.) / dz);
            if (!(count < INT_MAX))
                throw std::string("Sampling of the block by ") + std::to_string(dz) +
                    " m would need more levels than can be held";
            nz = static_cast<int>(count);
        }
        break;
    case 2:
        nz = policy.nz;
        break;
    case 3:
        nz = policy.nz;
        zmin = min_elevation_geo() + dz / 2.;
        break;
    default:
        if (_tracer != nullptr)
            _tracer->trace(iTracer::formLines(MP_TRACE_PREFIX_ERROR, "Wrong vertical discretization policy"),
                           TRACE_FATAL);
        throw std::string("Wrong vertical discretization policy");
    }
    if (nz < 1)
    {
        std::ostringstream text;
        text << "Vertical discretization between [" << zmin << ", " << zmax << "] will return 0 sample";
        warning(text.str());
    }
    else
        zmax = zmin + (nz - 1) * dz;
}

// ---------------------------------------------------------------------------
// Regular sampling

bool Domain::getRegular(int imin, int imax, int jmin, int jmax, double dz, std::vector<unsigned char>* facies,
                        std::vector<uint32_t>* age, std::vector<double>* granulo, double* zmin, int* nz) const
{
    if (!isValid(imin, jmin) || !isValid(imax, jmax))
    {
        error("Wrong indices!");
        return false;
    }
    VerticalDiscretizationPolicy policy;
    double z0 = zmin != nullptr ? *zmin : MP_UNDEF_REAL;
    const bool z_given = !is_undefined(z0);
    const bool n_given = nz != nullptr && *nz != MP_UNDEF_INT;
    policy.mode = n_given ? (z_given ? 2 : 3) : (z_given ? 1 : 0);
    policy.nz = n_given ? *nz : MP_UNDEF_INT;
    double z1 = MP_UNDEF_REAL;
    int n = 0;
    discretize_elevation(dz, z0, z1, n, policy);
    if (zmin != nullptr)
        *zmin = z0;
    if (nz != nullptr)
        *nz = n;
    facies->clear();
    if (age != nullptr)
        age->clear();
    if (granulo != nullptr)
        granulo->clear();
    // Sized once: grown sample by sample, a block's vectors would hold up to
    // twice their size, and three times while they move.
    const size_t samples = static_cast<size_t>(imax - imin + 1) * static_cast<size_t>(jmax - jmin + 1) *
                           static_cast<size_t>(std::max(n, 0));
    facies->reserve(samples);
    if (age != nullptr)
        age->reserve(samples);
    if (granulo != nullptr)
        granulo->reserve(samples);
    for (int i = imin; i <= imax; ++i)
        for (int j = jmin; j <= jmax; ++j)
            getObject(i, j).get_regular(z0, n, dz, facies, age, granulo, true);
    return true;
}

bool Domain::getRegularPile(int i, int j, double dz, std::vector<unsigned char>* facies,
                            std::vector<uint32_t>* age, std::vector<double>* granulo, double* zmin,
                            int* nz) const
{
    if (!is_on_grid(i, j))
    {
        error("Wrong indices!");
        return false;
    }
    return getRegular(i, i, j, j, dz, facies, age, granulo, zmin, nz);
}

std::vector<unsigned char> Domain::getRegularFacies(double dz, double zmin, int nz) const
{
    std::vector<unsigned char> facies;
    getRegular(0, _nx - 1, 0, _ny - 1, dz, &facies, nullptr, nullptr, &zmin, &nz);
    return facies;
}

std::vector<double> Domain::getRegularGrain(double dz, double zmin, int nz) const
{
    std::vector<unsigned char> facies;
    std::vector<double> granulo;
    getRegular(0, _nx - 1, 0, _ny - 1, dz, &facies, nullptr, &granulo, &zmin, &nz);
    return granulo;
}

std::vector<uint32_t> Domain::getRegularAge(double dz, double zmin, int nz) const
{
    std::vector<unsigned char> facies;
    std::vector<uint32_t> age;
    getRegular(0, _nx - 1, 0, _ny - 1, dz, &facies, &age, nullptr, &zmin, &nz);
    return age;
}

// ---------------------------------------------------------------------------
// Per-unit lists

std::vector<unsigned char> Domain::getAllFacies() const
{
    return all_units<unsigned char>(*this, [](const DepositUnit& u) { return u.family(); });
}

std::vector<unsigned int> Domain::getAllAge() const
{
    return all_units<unsigned int>(*this, [](const DepositUnit& u) { return u.age(); });
}

std::vector<double> Domain::getAllThickness() const
{
    return all_units<double>(*this, [](const DepositUnit& u) { return u.thickness(); });
}

std::vector<double> Domain::getAllGrainsize() const
{
    return all_units<double>(*this, [](const DepositUnit& u) { return u.granulo(); });
}

std::vector<unsigned char> Domain::getAllGrainsizeClass() const
{
    return all_units<unsigned char>(*this, [](const DepositUnit& u)
                                    { return Facies::granulo_to_class(u.granulo()); });
}

// ---------------------------------------------------------------------------
// Logs of columns

bool Domain::to_core(int i, int j, Core& core, double zmin, double zmax) const
{
    if (!isValid(i, j))
    {
        std::ostringstream text;
        text << "Core indices [" << i << ", " << j << "] out of range [" << _nx << ", " << _ny << "]";
        error(text.str());
        return false;
    }
    try
    {
        stack_to_core(getObject(i, j), core);
    }
    catch (const std::string& reason)
    {
        error("Error when converting deposition into core:\n" + reason);
        return false;
    }
    return core.cut(zmin, zmax);
}

bool Domain::vcollections(CoreList& list, int imin, int imax, int jmin, int jmax, double zmin,
                          double zmax) const
{
    list.clear();
    for (int i = imin; i <= imax; ++i)
        for (int j = jmin; j <= jmax; ++j)
        {
            std::ostringstream name;
            name << "Well_at_" << i << "_" << j;
            Core core(name.str(), _tracer);
            if (!to_core(i, j, core, zmin, zmax))
                return false;
            list.add(core);
        }
    return true;
}

// ---------------------------------------------------------------------------
// Export

bool Domain::getRegularBlock(int imin, int imax, int jmin, int jmax, double dz, double zmin, double zmax,
                             RegularBlock& block) const
{
    if (dz <= 0.)
    {
        error("Vertical discretization step must be positive");
        return false;
    }
    if (!isValid(imin, jmin) || !isValid(imax, jmax) || imin > imax || jmin > jmax)
    {
        error("Wrong indices!");
        error("Error in saveSimu!");
        return false;
    }
    // Open limits take the block's own; an upper limit fixes the count of samples.
    if (is_undefined(zmin))
        zmin = min_elevation_geo() + dz / 2.;
    if (is_undefined(zmax))
        zmax = max_elevation_geo();
    if (zmax <= zmin)
    {
        error("Maximum elevation must be greater than minimum elevation");
        return false;
    }
    // A count beyond an int cannot be sampled: say so rather than wrap around.
    const double levels = std::round((zmax - zmin + dz / 2.) / dz);
    const double cells = levels * (imax - imin + 1) * (jmax - jmin + 1);
    if (!std::isfinite(levels) || levels > INT_MAX || cells > INT_MAX)
    {
        std::ostringstream text;
        text << "Sampling between [" << zmin << ", " << zmax << "] by " << dz << " would need " << levels
             << " levels (" << cells << " cells), more than can be held";
        error(text.str());
        return false;
    }
    int nz = static_cast<int>(levels);
    block.facies.clear();
    block.age.clear();
    block.grain.clear();
    try
    {
        if (!getRegular(imin, imax, jmin, jmax, dz, &block.facies, &block.age, &block.grain, &zmin, &nz))
        {
            error("Error in saveSimu!");
            return false;
        }
    }
    catch (const std::string& reason)
    {
        error("Error in saveSimu!\n" + reason);
        return false;
    }
    block.geometry = GridParams(_dx, _dy, dz, imax - imin + 1, jmax - jmin + 1, nz, imin, jmin, zmin);
    block.geometry.setLocation(getLocation());
    block.geometry.setRotation(getRotation());
    return true;
}

bool Domain::save_simu(const std::string& file, int format, double dz, int imin, int imax, int jmin, int jmax,
                       bool facies, bool grain, bool age, double zmin, double zmax, const std::string& order,
                       const std::string& undefined) const
{
    RegularBlock block;
    if (!getRegularBlock(imin, imax, jmin, jmax, dz, zmin, zmax, block))
        return false;
    const size_t nv = static_cast<size_t>(block.nx()) * block.ny() * block.nz();
    MP_ASSERT_TEXT(block.facies.size() == nv, "block.facies.size() == nv");
    MP_ASSERT_TEXT(!grain || block.grain.size() == nv, "!grain || block.grain.size() == nv");
    MP_ASSERT_TEXT(!age || block.age.size() == nv, "!age || block.age.size() == nv");
    // Written from the block itself: a block is the largest thing a run
    // allocates, and grids of doubles would need twice its room again.
    RegularBlockGrid grid(block, facies, grain, age, undefined);
    if (!grid.has_columns())
    {
        error("Error in saveSimu!");
        return false;
    }
    if (!grid.write(file, _tracer, format, order))
    {
        error("Error while writing simulation file:\n" + grid.getError());
        return false;
    }
    return true;
}

bool Domain::saveF2G(const std::string& file, double dz, bool facies, bool grain, bool age, double zmin,
                     double zmax, const std::string& order) const
{
    return save_simu(file, GRID_FORMAT_F2G, dz, 0, _nx - 1, 0, _ny - 1, facies, grain, age, zmin, zmax, order,
                     "NA");
}

// ---------------------------------------------------------------------------
// Thickness measures

namespace
{
// Limits put in order, 1e30 replaced by the block's own.
bool ordered_limits(const Domain& domain, double& zmin, double& zmax)
{
    if (is_undefined(zmin))
        zmin = domain.min_elevation_geo();
    if (is_undefined(zmax))
        zmax = domain.max_elevation_geo();
    if (zmin > zmax)
        std::swap(zmin, zmax);
    return zmax - zmin >= MP_EPSILON;
}

double overlap(double a0, double a1, double b0, double b1)
{
    return std::max(0., std::min(a1, b1) - std::max(a0, b0));
}
} // namespace

template <typename Thickness>
double Domain::mean_window_thickness(int imin, int imax, int jmin, int jmax, double zmin, double zmax,
                                     Thickness thickness) const
{
    if (!isValid(imin, jmin) || !isValid(imax, jmax) || imin > imax || jmin > jmax)
    {
        error("Wrong indices!");
        error("Error in volume1D!");
        return 0.;
    }
    if (!ordered_limits(*this, zmin, zmax))
        return 0.;
    double sum = 0.;
    for (int j = jmin; j <= jmax; ++j)
        for (int i = imin; i <= imax; ++i)
            sum += thickness(getObject(i, j), zmin, zmax);
    return sum / ((imax - imin + 1) * (jmax - jmin + 1));
}

double Domain::volume1D(int imin, int imax, int jmin, int jmax, double zmin, double zmax) const
{
    return mean_window_thickness(imin, imax, jmin, jmax, zmin, zmax,
                                 [](const DepositionSet& ds, double z0, double z1)
                                 { return overlap(ds.get_zbot_geo(), ds.get_ztop_geo(), z0, z1); });
}

double Domain::volume1D(const Facies& facies, int imin, int imax, int jmin, int jmax, double zmin,
                        double zmax) const
{
    return mean_window_thickness(
        imin, imax, jmin, jmax, zmin, zmax,
        [&facies](const DepositionSet& ds, double z0, double z1)
        { return ds.cumulative_thickness(facies, ds.geo_to_rel(z0), ds.geo_to_rel(z1)); });
}

double Domain::volume1D(double zmin, double zmax) const
{
    return volume1D(0, _nx - 1, 0, _ny - 1, zmin, zmax);
}

double Domain::volume1D(const Facies& facies, double zmin, double zmax) const
{
    return volume1D(facies, 0, _nx - 1, 0, _ny - 1, zmin, zmax);
}

double Domain::volume3D(int imin, int imax, int jmin, int jmax, double zmin, double zmax) const
{
    return volume1D(imin, imax, jmin, jmax, zmin, zmax) * _dx * _dy;
}

double Domain::volume3D(const Facies& facies, int imin, int imax, int jmin, int jmax, double zmin,
                        double zmax) const
{
    return volume1D(facies, imin, imax, jmin, jmax, zmin, zmax) * _dx * _dy;
}

double Domain::volume3D(double zmin, double zmax) const
{
    return volume1D(zmin, zmax) * _dx * _dy;
}

double Domain::volume3D(const Facies& facies, double zmin, double zmax) const
{
    return volume1D(facies, zmin, zmax) * _dx * _dy;
}

double Domain::getProportion(unsigned char family, int imin, int imax, int jmin, int jmax, double zmin,
                             double zmax) const
{
    const double total = volume1D(imin, imax, jmin, jmax, zmin, zmax);
    if (total <= MP_EPSILON)
        return 0.;
    return volume1D(Facies(family), imin, imax, jmin, jmax, zmin, zmax) / total;
}

double Domain::getProportionFull(unsigned char family, double zmin, double zmax) const
{
    return getProportion(family, 0, _nx - 1, 0, _ny - 1, zmin, zmax);
}
