#include "kernel/files/PointsSet.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/InDataFile.h"
#include "kernel/files/OutDataFile.h"

#include <sstream>

namespace
{

std::string variable_key(long long number)
{
    return "VAR" + std::to_string(number) + "_NAME";
}

std::string coordinates_text(double x, double y)
{
    std::ostringstream out;
    out << x << ", " << y;
    return out.str();
}

} // namespace

bool PointsSet::fail(const std::string& message)
{
    _message = message;
    return false;
}

double PointsSet::elevation(int index) const
{
    const size_t i = static_cast<size_t>(index);
    return i < _z.size() ? _z[i] : MP_UNDEF_REAL;
}

bool PointsSet::get_at(int index, double& x, double& y) const
{
    if (index < 0 || index >= size())
        return false;
    x = _x[static_cast<size_t>(index)];
    y = _y[static_cast<size_t>(index)];
    return true;
}

bool PointsSet::get_at(int index, double& x, double& y, double& z) const
{
    if (!get_at(index, x, y))
        return false;
    z = elevation(index);
    return true;
}

bool PointsSet::get_at(int index, double& x, double& y, double& z, std::vector<double>& values) const
{
    if (!get_at(index, x, y, z))
        return false;
    values.assign(_v.size(), MP_UNDEF_REAL);
    for (size_t k = 0; k < _v.size(); ++k)
        if (static_cast<size_t>(index) < _v[k].size())
            values[k] = _v[k][static_cast<size_t>(index)];
    return true;
}

Point3D PointsSet::get_at(int index) const
{
    double x = MP_UNDEF_REAL;
    double y = MP_UNDEF_REAL;
    double z = MP_UNDEF_REAL;
    get_at(index, x, y, z);
    return Point3D(x, y, z);
}

void PointsSet::add(double x, double y, double z, const std::vector<double>& values)
{
    // Variables first seen here are created before the point, so that they are
    // undefined exactly at the points already present.
    if (!values.empty())
        fix_aux(static_cast<int>(values.size()) - 1);
    _x.push_back(x);
    _y.push_back(y);
    if (z != MP_UNDEF_REAL)
    {
        _z.push_back(z);
        _is3D = true;
    }
    for (size_t k = 0; k < _v.size(); ++k)
        _v[k].push_back(k < values.size() ? values[k] : MP_UNDEF_REAL);
}

void PointsSet::fix_aux(int index)
{
    const MP_int n_aux = static_cast<MP_int>(_names.size());
    MP_ASSERT_TEXT(n_aux == static_cast<MP_int>(_v.size()), "n_aux == (MP_int)_v.size()");
    if (index < 0 || index < n_aux)
        return;
    while (static_cast<int>(_v.size()) <= index)
    {
        _v.emplace_back(_x.size(), MP_UNDEF_REAL);
        _names.push_back("V" + std::to_string(_v.size()));
    }
}

bool PointsSet::set_name(int index, const std::string& name)
{
    fix_aux(index);
    if (index < 0)
        return false;
    _names[static_cast<size_t>(index)] = name;
    return true;
}

std::string PointsSet::get_name(int index) const
{
    if (index < 0 || index >= get_nb_variables())
        return MP_UNDEF_STRING;
    return _names[static_cast<size_t>(index)];
}

void PointsSet::clear()
{
    _x.clear();
    _y.clear();
    _z.clear();
    _is3D = false;
    _v.clear();
    _names.clear();
    _message.clear();
}

bool PointsSet::read(const std::string& path)
{
    _message.clear();
    InDataFile file(path);
    if (!file.is_open())
        return fail("Unable to read points set from file " + path);

    int n_dim = 0;
    if (!file.get_key_value("N_DIMENSIONS", n_dim))
        return fail("Error while parsing N_DIMENSIONS");
    if (n_dim != 2 && n_dim != 3)
        return fail("Invalid value for N_DIMENSIONS: should be 2D or 3D");
    int n_points = 0;
    if (!file.get_key_value("N_POINTS", n_points))
        return fail("Error while parsing N_POINTS");
    if (n_points <= 0)
        return fail("Invalid value for N_POINTS: should be > 0 ");
    // A missing count stays at the undefined integer: the first absent name then stops the read.
    int n_vars = 0;
    file.get_key_value("N_VARIABLES", n_vars);

    // Filled aside so that a refused file leaves the set as it was; nothing is
    // sized from the counts, each name and point must be present in the file.
    PointsSet result;
    for (long long i = 1; i <= n_vars; ++i)
    {
        const std::string key = variable_key(i);
        std::string name;
        if (!file.get_key_value(key, name))
            return fail("Error while parsing " + key);
        result.set_name(static_cast<int>(i - 1), name);
    }

    if (!file.seek_section("Ascii"))
        return fail("Error when loading the points set: can't find 'Ascii' section");
    const int n_aux = result.get_nb_variables();
    std::vector<double> values(static_cast<size_t>(n_aux));
    for (int p = 0; p < n_points; ++p)
    {
        if (!file.next_line())
            return fail("Input points set file has not enough samples");
        double x = 0.;
        double y = 0.;
        double z = MP_UNDEF_REAL;
        bool ok = file.get_value(1, x) && file.get_value(2, y);
        if (ok && n_dim == 3)
            ok = file.get_value(3, z);
        // The variables start in the fourth column whatever the dimension.
        for (int k = 0; ok && k < n_aux; ++k)
            ok = file.get_value(4 + k, values[static_cast<size_t>(k)]);
        if (!ok)
            return fail("Wrong line format for point#" + std::to_string(p));
        result.add(x, y, z, values);
    }
    *this = std::move(result);
    return true;
}

bool PointsSet::write(const std::string& path, const std::string& title)
{
    _message.clear();
    OutDataFile file(path);
    if (!file.is_open())
        return fail("Cannot open PointsSet file " + path);

    file.separator();
    file.comment(title + " saved by Sarvo");
    file.comment("");
    file.comment("");
    file.comment("Dimension of points set (2D or 3D)");
    file.key_value("N_DIMENSIONS", _is3D ? 3 : 2);
    file.comment("Number of points");
    file.key_value("N_POINTS", size());
    file.comment("Auxiliary variables");
    file.key_value("N_VARIABLES", get_nb_variables());
    for (int i = 0; i < get_nb_variables(); ++i)
        file.key_value(variable_key(i + 1), _names[static_cast<size_t>(i)]);
    file.section("Ascii");

    std::vector<double> values;
    for (int p = 0; p < size(); ++p)
    {
        double x = 0.;
        double y = 0.;
        double z = 0.;
        if (!get_at(p, x, y, z, values))
            return fail("Cannot write point #" + std::to_string(p) + " to file " + path);
        file << x << ' ' << y << ' ';
        if (_is3D)
            file << z << ' ';
        for (double value : values)
            file << value << ' ';
        file << '\n';
    }
    file.close();
    if (file.fail())
        return fail("Error while writing PointsSet file " + path);
    return true;
}

bool PointsSet::shift(const GridReal& topo, double sign, const std::string& caller)
{
    const bool down = sign < 0.;
    const std::string name = "PointsSet::" + caller + ": ";
    if (!_is3D)
        return fail(name + (down ? "This method is only available for 3D centerlines"
                                 : "This method is only available for 3D points sets"));
    const double minimum = topo.get_min();
    if (!(minimum < MP_UNDEF_REAL))
        return fail(name + "Cannot get minimum value from the given topography");

    std::string report;
    for (int p = 0; p < size(); ++p)
    {
        double x = 0.;
        double y = 0.;
        double z = 0.;
        if (!get_at(p, x, y, z))
        {
            if (down)
                continue;
            return fail(name + "Cannot shift up point #" + std::to_string(p));
        }
        const Point2D node = topo.geo2Grid(Point2D(x, y), true);
        if (!topo.is_on_grid(node))
        {
            // The point keeps its elevation; the others are still moved.
            report += (report.empty() ? "" : "\n") + name + "[" + coordinates_text(x, y) +
                      "] not in the given topography";
            continue;
        }
        double value = MP_UNDEF_REAL;
        const int i = static_cast<int>(node.get_abscissa());
        const int j = static_cast<int>(node.get_ordinate());
        if (!topo.get_at(i, j, value))
            return fail("PointsSet::shift_down: Cannot get value at [" + coordinates_text(x, y) + "]");
        if (value == MP_UNDEF_REAL || z == MP_UNDEF_REAL)
            continue;
        if (static_cast<size_t>(p) >= _z.size())
        {
            if (down)
                continue;
            return fail(name + "Cannot shift up at [" + coordinates_text(x, y) + "]");
        }
        _z[static_cast<size_t>(p)] = z + sign * (value - minimum);
    }
    if (!report.empty())
        return fail(report);
    return true;
}

bool PointsSet::shift_down(const GridReal& topo)
{
    _message.clear();
    return shift(topo, -1., "shift_down");
}

bool PointsSet::shift_up(const GridReal& topo)
{
    _message.clear();
    return shift(topo, 1., "shift_up");
}
