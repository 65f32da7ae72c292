#pragma once
// Where a vertical column stands: its node in both frames and its
// elevations. Elevations are relative; the geographic elevation of a relative
// z is _zref + _flat_delta + z.

#include "kernel/geometry/Point2D.h"

class VCollection
{
public:
    // Bottom and top both at z.
    explicit VCollection(double z = 0.);
    VCollection(double zbot, double ztop);
    VCollection(const VCollection&) = default;
    VCollection& operator=(const VCollection&) = default;
    virtual ~VCollection();

    virtual void set_zul_rel(double z);
    virtual void set_zul_geo(double z);
    virtual void set_zref(double zref);
    // Moves the relative frame so that geographic elevations stay where they are.
    virtual void set_flat_delta(double delta);
    // The delta of a column that already stands where that delta puts it, as
    // a column read back from a dump does: nothing moves.
    void adopt_flat_delta(double delta) { _flat_delta = delta; }

    const Point2D& get_location() const { return _location; }
    const Point2D& get_location_geo() const { return _location_geo; }
    void set_location(const Point2D& location) { _location = location; }
    void set_location_geo(const Point2D& location) { _location_geo = location; }

    double get_zref() const { return _zref; }
    double get_flat_delta() const { return _flat_delta; }
    double get_zbot() const { return _zbot; }
    double get_ztop() const { return _ztop; }
    double get_zul() const { return _zul; }
    void set_zbot(double z) { _zbot = z; }
    void set_ztop(double z) { _ztop = z; }

    double get_zbot_geo() const { return rel_to_geo(_zbot); }
    double get_ztop_geo() const { return rel_to_geo(_ztop); }
    // Relative elevation z in the geographic frame, and back.
    double rel_to_geo(double z) const { return _zref + _flat_delta + z; }
    double geo_to_rel(double z) const { return z - _zref - _flat_delta; }

protected:
    Point2D _location;
    Point2D _location_geo;
    double _zref = 0.;
    double _flat_delta = 0.;
    double _zbot;
    double _ztop;
    double _zul = 1e30;
};
