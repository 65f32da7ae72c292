#pragma once
// A point (or the components of a vector) in the horizontal plane.

#include <cmath>
#include <string>

class Point2D
{
public:
    Point2D() = default;
    Point2D(double x, double y) : _x(x), _y(y) {}
    virtual ~Point2D() = default;
    Point2D(const Point2D&) = default;
    Point2D& operator=(const Point2D&) = default;

    double get_abscissa() const { return _x; }
    double get_ordinate() const { return _y; }
    void set_abscissa(double x) { _x = x; }
    void set_ordinate(double y) { _y = y; }

    // Back to the origin, or to the given coordinates.
    void reset()
    {
        _x = 0.;
        _y = 0.;
    }
    void reset(double x, double y)
    {
        _x = x;
        _y = y;
    }

    // Inline: these sit in the innermost loops of the channel's imprint.
    // The same plain root as Vector2D::length, so that a segment measured
    // either way has the same length.
    double distance(const Point2D& other) const
    {
        const double dx = _x - other._x;
        const double dy = _y - other._y;
        return std::sqrt(dx * dx + dy * dy);
    }
    double scalar(const Point2D& other) const { return _x * other._x + _y * other._y; }
    // Two-dimensional cross product: x * other.y - y * other.x.
    double vectorial(const Point2D& other) const { return _x * other._y - _y * other._x; }

    Point2D& operator+=(const Point2D& other)
    {
        _x += other._x;
        _y += other._y;
        return *this;
    }
    Point2D& operator-=(const Point2D& other)
    {
        _x -= other._x;
        _y -= other._y;
        return *this;
    }
    Point2D& operator*=(double factor)
    {
        _x *= factor;
        _y *= factor;
        return *this;
    }
    Point2D& operator/=(double divisor)
    {
        _x /= divisor;
        _y /= divisor;
        return *this;
    }
    bool operator==(const Point2D& other) const { return _x == other._x && _y == other._y; }
    bool operator!=(const Point2D& other) const { return !(*this == other); }

    // (x, y) -> (-y, x): a quarter turn counter-clockwise about the origin.
    void rotate_half_pi();
    // (x, y) -> (-x, -y).
    void rotate_pi();

    // Shift first, then scale per axis; optionally round half away from zero.
    void transform(const Point2D& shift, const Point2D& scale, bool round)
    {
        _x = (_x + shift._x) * scale._x;
        _y = (_y + shift._y) * scale._y;
        if (round)
        {
            _x = std::round(_x);
            _y = std::round(_y);
        }
    }
    // Counter-clockwise turn about `centre` (angle in radians).
    void rotate(const Point2D& centre, double angle);
    void rotate(const Point2D& centre, double cosine, double sine);
    // The turn of `rotate(centre, cosine, sine)` undone.
    void rotate_inv(const Point2D& centre, double cosine, double sine);

    // Text form "(x, y)".
    std::string debug() const;

protected:
    double _x = 0.;
    double _y = 0.;
};

inline Point2D operator+(const Point2D& a, const Point2D& b)
{
    Point2D r(a);
    return r += b;
}

inline Point2D operator-(const Point2D& a, const Point2D& b)
{
    Point2D r(a);
    return r -= b;
}

inline Point2D operator-(const Point2D& a)
{
    return Point2D(-a.get_abscissa(), -a.get_ordinate());
}

inline Point2D operator*(const Point2D& p, double factor)
{
    Point2D r(p);
    return r *= factor;
}

inline Point2D operator*(double factor, const Point2D& p)
{
    return p * factor;
}

inline Point2D operator/(const Point2D& p, double divisor)
{
    Point2D r(p);
    return r /= divisor;
}
