#include "kernel/driver/FaciesProportions.h"
#include "kernel/common/StagedFile.h"

#include "kernel/common/Constants.h"
#include "kernel/common/Facies.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "kernel/files/CoreList.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <utility>

namespace
{
// The slice of elevation z, slices of height dz from z0.
int slice_of(double z, double z0, double dz)
{
    return static_cast<int>(std::floor((z - z0) / dz));
}
} // namespace

FaciesProportions FaciesProportions::vertical_curve(const CoreList& logs, double dz, double z0)
{
    FaciesProportions curve({"z_bottom", "z_top", "nb_columns"});
    double zmin = MP_MAX_REAL_VALUE;
    double zmax = MP_MIN_REAL_VALUE;
    for (const Core& log : logs)
        for (const CoreSample& sample : log.getSamples())
        {
            zmin = std::min(zmin, sample.getZ());
            zmax = std::max(zmax, sample.getTop());
        }
    if (!(dz > 0.) || zmin >= zmax)
        return curve;
    if (z0 != MP_UNDEF_REAL)
        zmin = std::min(z0, zmax);
    // Slice bounds on whole micrometres, free of the rounding of summed thicknesses.
    zmin = std::round(zmin / MP_EPSILON) * MP_EPSILON;
    // A top that lies on a slice border (to rounding) does not open a slice of its own.
    const int nz = std::max(1, static_cast<int>(std::ceil((zmax - zmin) / dz - MP_EPSILON)));
    curve._rows.resize(static_cast<size_t>(nz));
    std::vector<int> columns(static_cast<size_t>(nz), 0);
    for (int k = 0; k < nz; ++k)
        curve._rows[static_cast<size_t>(k)].labels = {zmin + k * dz, zmin + (k + 1) * dz, 0.};
    for (const Core& log : logs)
    {
        std::vector<bool> seen(static_cast<size_t>(nz), false);
        for (const CoreSample& sample : log.getSamples())
        {
            const unsigned char family = Facies::family(sample.getFacies());
            if (family >= MP_NB_FAMILIES)
                continue;
            const int k0 = std::clamp(slice_of(sample.getZ(), zmin, dz), 0, nz - 1);
            const int k1 = std::clamp(slice_of(sample.getTop(), zmin, dz), 0, nz - 1);
            for (int k = k0; k <= k1; ++k)
            {
                const double zb = zmin + k * dz;
                const double overlap = std::min(sample.getTop(), zb + dz) - std::max(sample.getZ(), zb);
                // Thicknesses are whole centimetres: less than a micrometre is rounding.
                if (overlap <= MP_EPSILON)
                    continue;
                curve._rows[static_cast<size_t>(k)].thickness[family] += overlap;
                seen[static_cast<size_t>(k)] = true;
            }
        }
        for (int k = 0; k < nz; ++k)
            columns[static_cast<size_t>(k)] += seen[static_cast<size_t>(k)] ? 1 : 0;
    }
    for (int k = 0; k < nz; ++k)
        curve._rows[static_cast<size_t>(k)].labels[2] = columns[static_cast<size_t>(k)];
    return curve;
}

FaciesProportions FaciesProportions::matrix(const Domain& domain)
{
    FaciesProportions matrix({"i", "j", "x", "y"});
    matrix._rows.reserve(static_cast<size_t>(domain.getNx()) * static_cast<size_t>(domain.getNy()));
    for (int j = 0; j < domain.getNy(); ++j)
        for (int i = 0; i < domain.getNx(); ++i)
        {
            const Point2D at = domain.grid2Geo(i, j);
            Row row;
            row.labels = {static_cast<double>(i), static_cast<double>(j), at.get_abscissa(),
                          at.get_ordinate()};
            for (const DepositionUnit& unit : domain.getObject(i, j).units())
                if (unit.facies().family() < MP_NB_FAMILIES)
                    row.thickness[unit.facies().family()] += unit.thickness();
            matrix._rows.push_back(std::move(row));
        }
    return matrix;
}

double FaciesProportions::thickness(int row) const
{
    const Row& r = _rows.at(static_cast<size_t>(row));
    double sum = 0.;
    for (double t : r.thickness)
        sum += t;
    return sum;
}

double FaciesProportions::share(int row, unsigned char family) const
{
    const double total = thickness(row);
    if (family >= MP_NB_FAMILIES || !(total > 0.))
        return 0.;
    return _rows.at(static_cast<size_t>(row)).thickness[family] / total;
}

double FaciesProportions::sand_share(int row) const
{
    double sum = 0.;
    for (int f = 0; f < MP_NB_FAMILIES; ++f)
        if (Facies::is_sand(static_cast<unsigned char>(f)))
            sum += share(row, static_cast<unsigned char>(f));
    return sum;
}

bool FaciesProportions::write(const std::string& path, std::string& error) const
{
    StagedFile staged(path);
    std::ofstream out(staged.path());
    if (!out)
    {
        error = "Cannot open proportion file " + path;
        return false;
    }
    for (const std::string& name : _label_names)
        out << name << ";";
    out << "thickness;prop_sand";
    for (int f = 0; f < MP_NB_FAMILIES; ++f)
        out << ";prop_" << Facies::description(static_cast<unsigned char>(f)).short_name();
    out << "\n" << std::setprecision(10);
    for (int r = 0; r < rows(); ++r)
    {
        for (double label : _rows[static_cast<size_t>(r)].labels)
            out << label << ";";
        out << thickness(r) << ";" << sand_share(r);
        for (int f = 0; f < MP_NB_FAMILIES; ++f)
            out << ";" << share(r, static_cast<unsigned char>(f));
        out << "\n";
    }
    out.close();
    if (!out || !staged.commit())
    {
        error = "Cannot write proportion file " + path;
        return false;
    }
    return true;
}
