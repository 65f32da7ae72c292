#pragma once
// Read-only view of the simulated block for the graphic side: its geometry,
// its surfaces, the deposits of each column and the elevation extremes.
// Indices are grid indices (i along x, j along y).

#include "kernel/domain/DepositUnit.h"
#include "kernel/geometry/GridParams.h"

#include <vector>

class iDomain
{
public:
    virtual ~iDomain() {}

    // Geometry: mesh, node counts, location (with the reference elevation) and rotation.
    virtual const GridParams& getGridParams() const = 0;
    // Margins around the grid in which channels run without depositing, in nodes.
    virtual int getMarginX() const = 0;
    virtual int getMarginY() const = 0;
    // Flow direction relative to the grid, radians, and regional slope.
    virtual double getFlowAngle() const = 0;
    virtual double getSlope() const = 0;
    // Elevation of the location: geographic elevation = reference + flattening shift + relative.
    virtual double getZref() const = 0;

    // Surfaces at a node.
    virtual double getTopoRel(int i, int j, bool with_water) const = 0;
    virtual double getTopoGeo(int i, int j, bool with_water) const = 0;
    virtual double getWaterDepth(int i, int j) const = 0;
    // Erodibility coefficient in force at the top of the column.
    virtual double getErodibility(int i, int j) const = 0;
    // Geographic upper limit of deposits, 1e30 where none is set.
    virtual double getUpperLimitGeo(int i, int j) const = 0;
    // Topography continued into the margins (2147483647 for a margin means the domain's own).
    virtual double get_topo_extrapolated(bool rel, bool with_water, int i, int j, int mx = 2147483647,
                                         int my = 2147483647, bool flatten = false) const = 0;

    // Units of a column, bottom first, each with the age of its base.
    virtual std::vector<DepositUnit> getStack(int i, int j) const = 0;
    // Facies byte and age of the deposit at geographic elevation z; false where there is none.
    virtual bool getSliceInfo(int i, int j, double z, unsigned char& facies, unsigned int& age) const = 0;

    // Elevation extremes: lowest base and highest top of the columns.
    virtual double min_elevation_rel() const = 0;
    virtual double max_elevation_rel() const = 0;
    virtual void min_and_max_elevation_rel(double& zmin, double& zmax) const = 0;
    virtual void min_and_max_elevation_geo(double& zmin, double& zmax) const = 0;
    virtual double mean_topo_geo(bool with_water) const = 0;
    // Age of the oldest deposit left in the block, 2147483647 when there is none.
    virtual unsigned int oldest_age() const = 0;
};
