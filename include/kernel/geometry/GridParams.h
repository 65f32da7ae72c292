#pragma once
// Description of a regular grid and of its three frames: grid indices,
// relative metres (axes along the grid) and geographic metres (rotated
// counter-clockwise by the rotation and shifted by the location).

#include "kernel/geometry/ConvexPolyedra2D.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Point3D.h"

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

class GridParams
{
public:
    GridParams() = default;
    // A 2D grid: one layer, no vertical mesh.
    GridParams(double dx, double dy, int nx, int ny, double x0 = 0., double y0 = 0.);
    GridParams(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0, double z0);
    virtual ~GridParams() = default;
    GridParams(const GridParams&) = default;
    GridParams& operator=(const GridParams&) = default;

    // Back to the defaults.
    virtual void clear();
    // Takes every field of `other`; cosine and sine are computed again from the rotation.
    virtual void reset(const GridParams& other);

    double getDx() const { return _dx; }
    double getDy() const { return _dy; }
    double getDz() const { return _dz; }
    int getNx() const { return _nx; }
    int getNy() const { return _ny; }
    int getNz() const { return _nz; }
    double getX0() const { return _x0; }
    double getY0() const { return _y0; }
    double getZ0() const { return _z0; }
    Point2D getOrigin() const { return Point2D(_x0, _y0); }
    const Point3D& getLocation() const { return _location; }
    double getRotation() const { return _rotation; }
    double getCosine() const { return _cosine; }
    double getSine() const { return _sine; }

    void setDx(double dx) { _dx = dx; }
    void setDy(double dy) { _dy = dy; }
    void setDz(double dz) { _dz = dz; }
    void setNx(int nx) { _nx = nx; }
    void setNy(int ny) { _ny = ny; }
    void setNz(int nz) { _nz = nz; }
    void setOrigin(double x0, double y0, double z0 = 0.);
    void setLocation(const Point3D& location) { _location = location; }
    // Rotation in degrees, counter-clockwise.
    void setRotation(double degrees);

    // Three-dimensional only with at least two layers and a defined vertical mesh.
    bool is3D() const;
    void convertTo2D();

    Point2D rel2Geo(const Point2D& rel) const;
    Point2D geo2Rel(const Point2D& geo) const;
    // (x - x0) / dx, rounded half away from zero if asked.
    Point2D rel2Grid(const Point2D& rel, bool round) const;
    // (i + x0) * dx: the inverse of rel2Grid only for a zero origin.
    Point2D grid2Rel(const Point2D& grid) const;
    // Inline: the channel's imprint asks it at every node of every section.
    Point2D grid2Rel(double i, double j) const { return Point2D((i + _x0) * _dx, (j + _y0) * _dy); }
    Point2D geo2Grid(const Point2D& geo, bool round) const;
    Point2D grid2Geo(const Point2D& grid) const;
    Point2D grid2Geo(double i, double j) const;
    ConvexPolyedra2D rel2Grid(const ConvexPolyedra2D& rel) const;
    ConvexPolyedra2D grid2Rel(const ConvexPolyedra2D& grid) const;
    // Nodes (i, j) of this grid covered by the quadrilateral of these corners,
    // given in turn in the relative frame: the integer points that
    // find_points_with_integer_coordinates_inside finds in rel2Grid of the
    // polygon, in the same order, none when the box lies half a cell or more
    // off the grid. Worked out on the stack: a run asks this of every section.
    void nodes_in_quad(const Point2D (&corners)[4], std::vector<std::pair<int, int>>& nodes) const;

    // Outer corners of the cells around the nodes, counter-clockwise from (x0 - dx/2, y0 - dy/2).
    void getApexRel(Point2D& a, Point2D& b, Point2D& c, Point2D& d) const;

    // Grid frame tests.
    bool is_on_grid(const Point2D& p) const;
    bool is_on_grid(int i, int j) const;
    bool is_on_grid_nearest(const Point2D& p) const;

    bool isCompatibleWith(const GridParams& other, bool with_location = false,
                          bool with_vertical = false) const;

    // dx, dy, nx, ny, x0, y0 for a 2D grid; dx, dy, dz, nx, ny, nz, x0, y0, z0 for a 3D one.
    void binary_output(std::ostream& out) const;
    // Reads the record written for a 2D grid, or for a 3D one when `three_d`.
    bool binary_input(std::istream& in, bool three_d);
    // The same fields as text, separated by spaces.
    std::string debug() const;

protected:
    double _dx = 1.;
    double _dy = 1.;
    double _dz = 1e30;
    int _nx = 0;
    int _ny = 0;
    int _nz = 0;
    double _x0 = 0.;
    double _y0 = 0.;
    double _z0 = 0.;
    Point3D _location;
    double _rotation = 0.;
    double _cosine = 1.;
    double _sine = 0.;
};

std::ostream& operator<<(std::ostream& out, const GridParams& params);
