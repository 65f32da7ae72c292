#include "kernel/geometry/Point3D.h"

#include <cmath>
#include <iomanip>
#include <sstream>

double Point3D::distance(const Point3D& other) const
{
    const double dx = _x - other._x;
    const double dy = _y - other._y;
    const double dz = _z - other._z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double Point3D::distance2D(const Point2D& other) const
{
    return Point2D::distance(other);
}

double Point3D::scalar(const Point3D& other) const
{
    return Point2D::scalar(other) + _z * other._z;
}

Point3D Point3D::vectorial(const Point3D& other) const
{
    return Point3D(_y * other._z - _z * other._y, _z * other._x - _x * other._z,
                   _x * other._y - _y * other._x);
}

Point3D& Point3D::operator+=(const Point3D& other)
{
    Point2D::operator+=(other);
    _z += other._z;
    return *this;
}

Point3D& Point3D::operator-=(const Point3D& other)
{
    Point2D::operator-=(other);
    _z -= other._z;
    return *this;
}

Point3D& Point3D::operator*=(double factor)
{
    Point2D::operator*=(factor);
    _z *= factor;
    return *this;
}

Point3D& Point3D::operator/=(double divisor)
{
    Point2D::operator/=(divisor);
    _z /= divisor;
    return *this;
}

std::string Point3D::debug() const
{
    std::ostringstream text;
    text << std::setprecision(12) << "(" << _x << ", " << _y << ", " << _z << ")";
    return text.str();
}

Point3D operator+(const Point3D& a, const Point3D& b)
{
    Point3D r(a);
    return r += b;
}

Point3D operator-(const Point3D& a, const Point3D& b)
{
    Point3D r(a);
    return r -= b;
}

Point3D operator*(const Point3D& p, double factor)
{
    Point3D r(p);
    return r *= factor;
}

Point3D operator*(double factor, const Point3D& p)
{
    return p * factor;
}

Point3D operator/(const Point3D& p, double divisor)
{
    Point3D r(p);
    return r /= divisor;
}
