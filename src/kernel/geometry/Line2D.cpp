#include "kernel/geometry/Line2D.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"

#include <cmath>

Line2D::Line2D(const Point2D& point, const Vector2D& direction) : _point(point), _direction(direction)
{
    check_direction();
}

Line2D::Line2D(const Point2D& from, const Point2D& to) : _point(from), _direction(from, to)
{
    check_direction();
}

void Line2D::check_direction()
{
    _norm = _direction.scalar(_direction);
    MP_ASSERT(_norm > MP_EPSILON);
}

double Line2D::distance(const Point2D& p) const
{
    return std::fabs(_direction.vectorial(p - _point) / std::sqrt(_norm));
}

Point2D Line2D::projection(const Point2D& p) const
{
    return _point + _direction * (_direction.scalar(p - _point) / _norm);
}

bool Line2D::intersection(const Line2D& other, Point2D& result) const
{
    const double d = other._direction.vectorial(_direction);
    if (d == 0.)
        return false;
    result = _point + _direction * (other._direction.vectorial(other._point - _point) / d);
    return true;
}
