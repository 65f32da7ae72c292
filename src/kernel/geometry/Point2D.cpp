#include "kernel/geometry/Point2D.h"

#include <cmath>
#include <iomanip>
#include <sstream>

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
