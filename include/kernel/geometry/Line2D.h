#pragma once
// An unbounded straight line in the plane: a point and a direction.

#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Vector2D.h"

class Line2D
{
public:
    Line2D(const Point2D& point, const Vector2D& direction);
    // The line through `from` and `to`, directed from the first to the second.
    Line2D(const Point2D& from, const Point2D& to);
    virtual ~Line2D() = default;

    const Point2D& get_point() const { return _point; }
    const Vector2D& get_direction() const { return _direction; }
    // Squared length of the direction.
    double get_norm() const { return _norm; }

    double distance(const Point2D& p) const;
    Point2D projection(const Point2D& p) const;
    // False, leaving `result` untouched, for parallel lines.
    bool intersection(const Line2D& other, Point2D& result) const;

private:
    void check_direction();

    Point2D _point;
    Vector2D _direction;
    double _norm = 0.;
};
