#include "kernel/geometry/Point2D.h"

#include <cmath>
#include <iomanip>
#include <sstream>

double Point2D::distance(const Point2D& other) const
{
    return std::hypot(_x - other._x, _y - other._y);
}

double Point2D::scalar(const Point2D& other) const
{
    return _x * other._x + _y * other._y;
}

double Point2D::vectorial(const Point2D& other) const
{
    return _x * other._y - _y * other._x;
}

Point2D& Point2D::operator+=(const Point2D& other)
{
    _x += other._x;
    _y += other._y;
    return *this;
}

Point2D& Point2D::operator-=(const Point2D& other)
{
    _x -= other._x;
    _y -= other._y;
    return *this;
}

Point2D& Point2D::operator*=(double factor)
{
    _x *= factor;
    _y *= factor;
    return *this;
}

Point2D& Point2D::operator/=(double divisor)
{
    _x /= divisor;
    _y /= divisor;
    return *this;
}

void Point2D::rotate_half_pi()
{
    const double x = _x;
    _x = -_y;
    _y = x;
}

void Point2D::rotate_pi()
{
    _x = -_x;
    _y = -_y;
}

void Point2D::transform(const Point2D& shift, const Point2D& scale, bool round)
{
    _x = (_x + shift._x) * scale._x;
    _y = (_y + shift._y) * scale._y;
    if (round)
    {
        _x = std::round(_x);
        _y = std::round(_y);
    }
}

void Point2D::rotate(const Point2D& centre, double angle)
{
    rotate(centre, std::cos(angle), std::sin(angle));
}

void Point2D::rotate(const Point2D& centre, double cosine, double sine)
{
    const double dx = _x - centre._x;
    const double dy = _y - centre._y;
    _x = cosine * dx - sine * dy + centre._x;
    _y = sine * dx + cosine * dy + centre._y;
}

void Point2D::rotate_inv(const Point2D& centre, double cosine, double sine)
{
    const double dx = _x - centre._x;
    const double dy = _y - centre._y;
    _x = cosine * dx + sine * dy + centre._x;
    _y = cosine * dy - sine * dx + centre._y;
}

std::string Point2D::debug() const
{
    std::ostringstream text;
    text << std::setprecision(12) << "(" << _x << ", " << _y << ")";
    return text.str();
}

Point2D operator+(const Point2D& a, const Point2D& b)
{
    Point2D r(a);
    return r += b;
}

Point2D operator-(const Point2D& a, const Point2D& b)
{
    Point2D r(a);
    return r -= b;
}

Point2D operator-(const Point2D& a)
{
    return Point2D(-a.get_abscissa(), -a.get_ordinate());
}

Point2D operator*(const Point2D& p, double factor)
{
    Point2D r(p);
    return r *= factor;
}

Point2D operator*(double factor, const Point2D& p)
{
    return p * factor;
}

Point2D operator/(const Point2D& p, double divisor)
{
    Point2D r(p);
    return r /= divisor;
}
