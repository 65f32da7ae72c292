#pragma once
// A point in space: a plane position and an elevation.

#include "kernel/geometry/Point2D.h"

#include <string>

class Point3D : public Point2D
{
public:
    Point3D() = default;
    Point3D(double x, double y, double z) : Point2D(x, y), _z(z) {}
    explicit Point3D(const Point2D& p, double z = 0.) : Point2D(p), _z(z) {}

    double get_elevation() const { return _z; }
    void set_elevation(double z) { _z = z; }

    void reset()
    {
        Point2D::reset();
        _z = 0.;
    }
    void reset(double x, double y, double z)
    {
        Point2D::reset(x, y);
        _z = z;
    }

    double distance(const Point3D& other) const;
    // Distance in the plane, whatever the elevations.
    double distance2D(const Point2D& other) const;
    double scalar(const Point3D& other) const;
    // Three-dimensional cross product.
    Point3D vectorial(const Point3D& other) const;

    Point3D& operator+=(const Point3D& other);
    Point3D& operator-=(const Point3D& other);
    Point3D& operator*=(double factor);
    Point3D& operator/=(double divisor);
    bool operator==(const Point3D& other) const { return Point2D::operator==(other) && _z == other._z; }
    bool operator!=(const Point3D& other) const { return !(*this == other); }

    // Text form "(x, y, z)".
    std::string debug() const;

protected:
    double _z = 0.;
};

Point3D operator+(const Point3D& a, const Point3D& b);
Point3D operator-(const Point3D& a, const Point3D& b);
Point3D operator*(const Point3D& p, double factor);
Point3D operator*(double factor, const Point3D& p);
Point3D operator/(const Point3D& p, double divisor);
