#pragma once
// An adjustable number of a view (an exaggeration, a section position, a
// camera angle): its default, its value, the step of one key press or one
// pixel of drag, its bounds, its period (0 for none) and a value remembered
// before a dialog so that Cancel can restore it.

#include <cmath>
#include <sstream>
#include <string>

template <typename T> class Attribute
{
public:
    Attribute(T def = T(), T step = T(1), T min = T(), T max = T(), T period = T())
        : _default(def), _value(def), _step(step), _min(min), _max(max), _period(period), _remembered(def)
    {
    }

    T value() const { return _value; }
    void value(T v)
    {
        _value = v;
        constrain_value();
    }
    T step() const { return _step; }
    T min() const { return _min; }
    T max() const { return _max; }
    T period() const { return _period; }
    T default_value() const { return _default; }
    void bounds(T min, T max)
    {
        _min = min;
        _max = max;
        constrain_value();
    }
    void default_value(T def) { _default = def; }
    void reset() { value(_default); }
    void remember() { _remembered = _value; }
    void restore() { _value = _remembered; }
    T remembered() const { return _remembered; }

    // The wrap comes first, so that an angle turns round while a scale with
    // no period stops at its bound.
    void constrain_value()
    {
        if (_period != T())
        {
            const double period = static_cast<double>(_period);
            while ((static_cast<double>(_value) - _min) / period > 1.)
                _value -= _period;
            while ((static_cast<double>(_value) - _min) / period < 0.)
                _value += _period;
        }
        if (_value < _min)
            _value = _min;
        if (_value > _max)
            _value = _max;
    }

    // Adds n steps (n < 0 takes them off), then constrains.
    void increment(int n)
    {
        _value += static_cast<T>(n) * _step;
        constrain_value();
    }

    // The seven fields in order, separated by spaces.
    std::string serialize() const
    {
        std::ostringstream out;
        out.precision(17);
        out << _default << ' ' << _value << ' ' << _step << ' ' << _min << ' ' << _max << ' ' << _period
            << ' ' << _remembered;
        return out.str();
    }

    // False, with nothing changed, unless the text holds the seven fields.
    bool deserialize(const std::string& text)
    {
        std::istringstream in(text);
        T fields[7];
        for (T& field : fields)
            if (!(in >> field))
                return false;
        std::string rest;
        if (in >> rest)
            return false;
        if (fields[3] > fields[4] || fields[5] < T())
            return false;
        _default = fields[0];
        _value = fields[1];
        _step = fields[2];
        _min = fields[3];
        _max = fields[4];
        _period = fields[5];
        _remembered = fields[6];
        constrain_value();
        return true;
    }

private:
    T _default;
    T _value;
    T _step;
    T _min;
    T _max;
    T _period;
    T _remembered;
};
