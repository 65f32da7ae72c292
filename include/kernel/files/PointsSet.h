#pragma once
// An ordered list of 2D or 3D points, each carrying any number of named
// auxiliary real values, with its text file form.

#include "kernel/geometry/Point3D.h"

#include <string>
#include <vector>

class GridReal;

class PointsSet
{
public:
    PointsSet() = default;
    virtual ~PointsSet() = default;
    PointsSet(const PointsSet&) = default;
    PointsSet& operator=(const PointsSet&) = default;

    int size() const { return static_cast<int>(_x.size()); }
    bool is_3d() const { return _is3D; }

    // False for an index out of range; a missing elevation reads as 1e30.
    bool get_at(int index, double& x, double& y) const;
    bool get_at(int index, double& x, double& y, double& z) const;
    bool get_at(int index, double& x, double& y, double& z, std::vector<double>& values) const;
    // Out of range gives a point with undefined coordinates.
    Point3D get_at(int index) const;

    // An undefined z (1e30) is not stored; value k goes to variable k.
    void add(double x, double y, double z, const std::vector<double>& values = {});

    // Variables are counted from 0; a negative index names nothing and gives false.
    bool set_name(int index, const std::string& name);
    // Creates the missing variables up to `index`, named "V" + their number from 1
    // and undefined at the points already present.
    void fix_aux(int index);

    int get_nb_variables() const { return static_cast<int>(_names.size()); }
    // "??" for a variable that does not exist.
    std::string get_name(int index) const;

    void clear();

    // Both leave the reason of a false result in get_message().
    bool read(const std::string& path);
    bool write(const std::string& path, const std::string& title);

    // Move the elevations with the relief of `topo` above its minimum (3D sets only).
    bool shift_down(const GridReal& topo);
    bool shift_up(const GridReal& topo);

    const std::string& get_message() const { return _message; }

protected:
    bool fail(const std::string& message);
    // Elevation at `index`, 1e30 where none was stored.
    double elevation(int index) const;
    // Signed relief of `topo` under each point added to its elevation; the
    // messages carry the name of the calling operation.
    bool shift(const GridReal& topo, double sign, const std::string& caller);

    std::vector<double> _x;
    std::vector<double> _y;
    std::vector<double> _z;
    bool _is3D = false;
    // One inner vector per auxiliary variable, each as long as the coordinates.
    std::vector<std::vector<double>> _v;
    std::vector<std::string> _names;
    std::string _message;
};
