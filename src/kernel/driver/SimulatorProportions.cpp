// The driver's proportion curves and matrix: what the batch writes and the
// desktop's Compute menu shows.

#include "kernel/driver/Simulator.h"

#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/FaciesProportions.h"
#include "kernel/files/CoreList.h"

#include <sstream>

namespace
{
std::string step_refused(double dz)
{
    std::ostringstream text;
    text << "Wrong vertical proportion step " << dz << " (must be > 0.)";
    return text.str();
}
} // namespace

bool Simulator::getVerticalProportions(double dz, FaciesProportions& curve) const
{
    if (!(dz > 0.))
        return fail(step_refused(dz), false);
    if (!ready(true))
        return false;
    CoreList columns;
    if (!_domain->vcollections(columns, 0, _domain->getNx() - 1, 0, _domain->getNy() - 1, MP_UNDEF_REAL,
                               MP_UNDEF_REAL))
        return fail(std::string("Cannot read the columns of the block"), false);
    // Slices start at the base of the block, not at a rounding of it.
    double zmin = 0., zmax = 0.;
    _domain->min_and_max_elevation_geo(zmin, zmax);
    curve = FaciesProportions::vertical_curve(columns, dz, zmin);
    return true;
}

bool Simulator::getProportionMatrix(FaciesProportions& matrix) const
{
    if (!ready(true))
        return false;
    matrix = FaciesProportions::matrix(*_domain);
    return true;
}

bool Simulator::getWellVerticalProportions(double dz, FaciesProportions& curve) const
{
    if (!(dz > 0.))
        return fail(step_refused(dz), false);
    // Without any well (all may have been refused at loading) the curve has
    // no slice, so that a batch keeps its other outputs.
    CoreList logs;
    getAllWells(logs);
    curve = FaciesProportions::vertical_curve(logs, dz);
    return true;
}

bool Simulator::saveVerticalProportions(const std::string& path, double dz)
{
    FaciesProportions curve;
    std::string error;
    if (!getVerticalProportions(dz, curve))
        return false;
    if (!curve.write(path, error))
        return fail(error, false);
    return true;
}

bool Simulator::saveProportionMatrix(const std::string& path)
{
    FaciesProportions matrix;
    std::string error;
    if (!getProportionMatrix(matrix))
        return false;
    if (!matrix.write(path, error))
        return fail(error, false);
    return true;
}

bool Simulator::saveWellVerticalProportions(const std::string& path, double dz)
{
    FaciesProportions curve;
    std::string error;
    if (!getWellVerticalProportions(dz, curve))
        return false;
    if (curve.rows() == 0)
        _tracer->warning("No conditioning well: the vertical proportion curve in " + path + " is empty");
    if (!curve.write(path, error))
        return fail(error, false);
    return true;
}
