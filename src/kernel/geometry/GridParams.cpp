#include "kernel/geometry/GridParams.h"

#include "kernel/common/BinaryDump.h"
#include "kernel/common/Constants.h"

#include <cmath>
#include <cstdint>
#include <iomanip>
#include <ostream>
#include <sstream>

GridParams::GridParams(double dx, double dy, int nx, int ny, double x0, double y0)
    : _dx(dx), _dy(dy), _nx(nx), _ny(ny), _nz(1), _x0(x0), _y0(y0)
{
}

GridParams::GridParams(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0,
                       double z0)
    : _dx(dx), _dy(dy), _dz(dz), _nx(nx), _ny(ny), _nz(nz), _x0(x0), _y0(y0), _z0(z0)
{
}

void GridParams::clear()
{
    GridParams::operator=(GridParams());
}

void GridParams::reset(const GridParams& other)
{
    GridParams::operator=(other);
    setRotation(other._rotation);
}

void GridParams::setOrigin(double x0, double y0, double z0)
{
    _x0 = x0;
    _y0 = y0;
    _z0 = z0;
}

void GridParams::setRotation(double degrees)
{
    // Pi is the nine-digit literal so that cosine and sine match stored grids to the last digit.
    _rotation = degrees;
    // Whole turns are no turn: 360 or -720 degrees give the cosine and sine of 0
    // exactly, not those of the rounded pi times two.
    const double radians = std::fmod(degrees, 360.) * MP_PI / 180.;
    _cosine = std::cos(radians);
    _sine = std::sin(radians);
}

bool GridParams::is3D() const
{
    return _nz >= 2 && _dz < MP_UNDEF_REAL;
}

void GridParams::convertTo2D()
{
    _nz = 1;
    _z0 = 0.;
    _dz = MP_UNDEF_REAL;
    _location.set_elevation(0.);
}

Point2D GridParams::rel2Geo(const Point2D& rel) const
{
    const double x = rel.get_abscissa();
    const double y = rel.get_ordinate();
    return Point2D(_cosine * x - _sine * y + _location.get_abscissa(),
                   _sine * x + _cosine * y + _location.get_ordinate());
}

Point2D GridParams::geo2Rel(const Point2D& geo) const
{
    const double dx = geo.get_abscissa() - _location.get_abscissa();
    const double dy = geo.get_ordinate() - _location.get_ordinate();
    return Point2D(_cosine * dx + _sine * dy, _cosine * dy - _sine * dx);
}

Point2D GridParams::rel2Grid(const Point2D& rel, bool round) const
{
    Point2D p(rel.get_abscissa(), rel.get_ordinate());
    p.transform(Point2D(-_x0, -_y0), Point2D(1. / _dx, 1. / _dy), round);
    return p;
}

Point2D GridParams::grid2Rel(const Point2D& grid) const
{
    // Shift before scale: grids read from files keep their origin this way.
    Point2D p(grid.get_abscissa(), grid.get_ordinate());
    p.transform(Point2D(_x0, _y0), Point2D(_dx, _dy), false);
    return p;
}

Point2D GridParams::grid2Rel(double i, double j) const
{
    return grid2Rel(Point2D(i, j));
}

Point2D GridParams::geo2Grid(const Point2D& geo, bool round) const
{
    return rel2Grid(geo2Rel(geo), round);
}

Point2D GridParams::grid2Geo(const Point2D& grid) const
{
    return rel2Geo(grid2Rel(grid));
}

Point2D GridParams::grid2Geo(double i, double j) const
{
    return rel2Geo(grid2Rel(i, j));
}

ConvexPolyedra2D GridParams::rel2Grid(const ConvexPolyedra2D& rel) const
{
    ConvexPolyedra2D poly(rel);
    poly.transform(Point2D(-_x0, -_y0), Point2D(1. / _dx, 1. / _dy));
    return poly;
}

ConvexPolyedra2D GridParams::grid2Rel(const ConvexPolyedra2D& grid) const
{
    ConvexPolyedra2D poly(grid);
    poly.transform(Point2D(_x0, _y0), Point2D(_dx, _dy));
    return poly;
}

void GridParams::getApexRel(Point2D& a, Point2D& b, Point2D& c, Point2D& d) const
{
    a = Point2D(_x0 - _dx / 2., _y0 - _dy / 2.);
    b = a + Point2D(0., _ny * _dy);
    c = b + Point2D(_nx * _dx, 0.);
    d = a + Point2D(_nx * _dx, 0.);
}

bool GridParams::is_on_grid(const Point2D& p) const
{
    const double x = p.get_abscissa();
    const double y = p.get_ordinate();
    return x >= 0. && x <= _nx - 1 && y >= 0. && y <= _ny - 1;
}

bool GridParams::is_on_grid(int i, int j) const
{
    return i >= 0 && i < _nx && j >= 0 && j < _ny;
}

bool GridParams::is_on_grid_nearest(const Point2D& p) const
{
    const double x = p.get_abscissa();
    const double y = p.get_ordinate();
    return x >= -0.5 && x <= _nx - 0.5 && y >= -0.5 && y <= _ny - 0.5;
}

bool GridParams::isCompatibleWith(const GridParams& other, bool with_location, bool with_vertical) const
{
    if (_dx != other._dx || _dy != other._dy || _nx != other._nx || _ny != other._ny || _x0 != other._x0 ||
        _y0 != other._y0)
        return false;
    const bool both_3d = is3D() && other.is3D();
    if (with_vertical && both_3d && (_nz != other._nz || _dz != other._dz || _z0 != other._z0))
        return false;
    if (with_location)
    {
        if (_location.get_abscissa() != other._location.get_abscissa() ||
            _location.get_ordinate() != other._location.get_ordinate() || _rotation != other._rotation)
            return false;
        if (with_vertical && both_3d && _location.get_elevation() != other._location.get_elevation())
            return false;
    }
    return true;
}

void GridParams::binary_output(std::ostream& out) const
{
    const bool three_d = is3D();
    dump::write(out, _dx);
    dump::write(out, _dy);
    if (three_d)
        dump::write(out, _dz);
    dump::write(out, static_cast<int32_t>(_nx));
    dump::write(out, static_cast<int32_t>(_ny));
    if (three_d)
        dump::write(out, static_cast<int32_t>(_nz));
    dump::write(out, _x0);
    dump::write(out, _y0);
    if (three_d)
        dump::write(out, _z0);
}

bool GridParams::binary_input(std::istream& in, bool three_d)
{
    // Read into a copy so that a short record leaves this geometry as it was.
    GridParams read(*this);
    int32_t nx = 0;
    int32_t ny = 0;
    int32_t nz = 1;
    read._dz = MP_UNDEF_REAL;
    read._z0 = 0.;
    dump::read(in, read._dx);
    dump::read(in, read._dy);
    if (three_d)
        dump::read(in, read._dz);
    dump::read(in, nx);
    dump::read(in, ny);
    if (three_d)
        dump::read(in, nz);
    dump::read(in, read._x0);
    dump::read(in, read._y0);
    if (three_d)
        dump::read(in, read._z0);
    if (!in)
        return false;
    read._nx = nx;
    read._ny = ny;
    read._nz = nz;
    GridParams::operator=(read);
    return true;
}

std::string GridParams::debug() const
{
    std::ostringstream text;
    text << std::setprecision(12) << _dx << " " << _dy << " ";
    if (is3D())
        text << _dz << " " << _nx << " " << _ny << " " << _nz << " " << _x0 << " " << _y0 << " " << _z0;
    else
        text << _nx << " " << _ny << " " << _x0 << " " << _y0;
    return text.str();
}

std::ostream& operator<<(std::ostream& out, const GridParams& params)
{
    return out << params.debug();
}
