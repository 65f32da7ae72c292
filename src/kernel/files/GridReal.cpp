#include "kernel/files/GridReal.h"

#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

namespace
{
const int MAX_MIGRATE_WARNINGS = 10;

std::string text_of(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

// Truncates a grid coordinate, keeping coordinates far off the grid off it.
// A coordinate within a millionth of a cell of a node is that node: the
// rounding of a rotation (360, -360, 1e-12 degrees) must not shift a grid by
// one cell.
int truncate_index(double x)
{
    if (!(x > -1e9 && x < 1e9))
        return x > 0. ? 1000000000 : -1000000000;
    const double nearest = std::round(x);
    if (std::fabs(x - nearest) < MP_EPSILON)
        return static_cast<int>(nearest);
    return static_cast<int>(x);
}
} // namespace

GridReal::GridReal() : GridReal(GridParams()) {}

GridReal::GridReal(const GridParams& params)
    : _min(MP_MAX_REAL_VALUE),
      _max(MP_MIN_REAL_VALUE), _minAt{MP_UNDEF_INT, MP_UNDEF_INT}, _maxAt{MP_UNDEF_INT, MP_UNDEF_INT},
      _undefinedValue(MP_UNDEF_REAL)
{
    GridReal::reset(params);
}

GridReal::GridReal(double dx, double dy, int nx, int ny, double x0, double y0)
    : GridReal(GridParams(dx, dy, nx, ny, x0, y0))
{
}

GridReal::GridReal(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0, double z0)
    : GridReal(GridParams(dx, dy, dz, nx, ny, nz, x0, y0, z0))
{
}

GridReal::GridReal(const std::vector<std::vector<double>>& rows) : GridReal()
{
    GridReal::fill_2D(rows);
}

// ---------------------------------------------------------------------------
// Geometry and state

size_t GridReal::node_count() const
{
    if (_nx <= 0 || _ny <= 0 || _nz <= 0)
        return 0;
    return static_cast<size_t>(_nx) * static_cast<size_t>(_ny) * static_cast<size_t>(_nz);
}

size_t GridReal::index_of(int i, int j, int k) const
{
    return (static_cast<size_t>(k) * _ny + j) * _nx + i;
}

bool GridReal::fail(const std::string& message)
{
    _error = message;
    return false;
}

void GridReal::reset_extremes()
{
    _min = MP_MAX_REAL_VALUE;
    _max = MP_MIN_REAL_VALUE;
    _minAt[0] = _minAt[1] = MP_UNDEF_INT;
    _maxAt[0] = _maxAt[1] = MP_UNDEF_INT;
}

void GridReal::widen_extremes(int i, int j, double value)
{
    if (value == MP_UNDEF_REAL)
        return;
    if (value < _min)
    {
        _min = value;
        _minAt[0] = i;
        _minAt[1] = j;
    }
    if (value > _max)
    {
        _max = value;
        _maxAt[0] = i;
        _maxAt[1] = j;
    }
}

void GridReal::clear()
{
    GridParams::clear();
    _values.clear();
    _name = "Var";
    _undefinedText = "NA";
    _undefinedValue = MP_UNDEF_REAL;
    _error.clear();
    reset_extremes();
    for (GridReal* variable : _variables)
        if (variable != this)
            variable->clear();
    _variables.clear();
}

void GridReal::reset(const GridParams& params)
{
    GridParams::reset(params);
    reset_extremes();
    _values.assign(node_count(), MP_UNDEF_REAL);
    for (GridReal* variable : _variables)
        if (variable != this)
            variable->reset(params);
}

void GridReal::reset(double dx, double dy, int nx, int ny, double x0, double y0)
{
    reset(GridParams(dx, dy, nx, ny, x0, y0));
}

void GridReal::reset(double dx, double dy, double dz, int nx, int ny, int nz, double x0, double y0, double z0)
{
    reset(GridParams(dx, dy, dz, nx, ny, nz, x0, y0, z0));
}

// ---------------------------------------------------------------------------
// Node access

bool GridReal::check(double& value, bool clamp) const
{
    if (value == MP_UNDEF_REAL || (value >= MP_MIN_REAL_VALUE && value <= MP_MAX_REAL_VALUE))
        return true;
    if (clamp)
    {
        // A value beyond the top bound, or no number at all, ends up undefined.
        value = value < MP_MIN_REAL_VALUE ? MP_MIN_REAL_VALUE : MP_MAX_REAL_VALUE;
    }
    return clamp;
}

bool GridReal::set_at(int i, int j, double value)
{
    if (i < 0 || i >= _nx || j < 0 || j >= _ny)
    {
        std::ostringstream out;
        out << "Indexes [" << i << "," << j << "] out of range [" << _nx << "," << _ny << "]";
        return fail(out.str());
    }
    if (!check(value, true))
        return fail("Value " + text_of(value) + " at [" + std::to_string(i) + "," + std::to_string(j) +
                    "] out of range");
    for (int k = 0; k < _nz; ++k)
        _values[index_of(i, j, k)] = value;
    widen_extremes(i, j, value);
    return true;
}

bool GridReal::set_at(int i, int j, int k, double value)
{
    if (i < 0 || i >= _nx || j < 0 || j >= _ny || k < 0 || k >= _nz)
    {
        std::ostringstream out;
        out << "Indexes [" << i << "," << j << "," << k << "] out of range [" << _nx << "," << _ny << ","
            << _nz << "]";
        return fail(out.str());
    }
    if (!check(value, true))
        return fail("Value " + text_of(value) + " at [" + std::to_string(i) + "," + std::to_string(j) +
                    "] out of range");
    _values[index_of(i, j, k)] = value;
    widen_extremes(i, j, value);
    return true;
}

bool GridReal::get_at(int& index, double* value) const
{
    if (value == nullptr || index < 0 || static_cast<size_t>(index) >= _values.size())
        return false;
    *value = _values[static_cast<size_t>(index)];
    return true;
}

bool GridReal::get_at(int i, int j, double& value) const
{
    if (i < 0 || i >= _nx || j < 0 || j >= _ny || _nz < 1)
    {
        std::ostringstream out;
        out << "Indexes [" << i << "," << j << "] out of range [" << _nx << "," << _ny << "]";
        _error = out.str();
        return false;
    }
    value = _values[index_of(i, j, 0)];
    return true;
}

bool GridReal::get_at(int i, int j, std::vector<double>& column) const
{
    double first = 0.;
    if (!get_at(i, j, first))
        return false;
    column.resize(static_cast<size_t>(_nz));
    for (int k = 0; k < _nz; ++k)
        column[static_cast<size_t>(k)] = _values[index_of(i, j, k)];
    return true;
}

bool GridReal::get_at(int i, int j, int k, double& value) const
{
    if (i < 0 || i >= _nx || j < 0 || j >= _ny || k < 0 || k >= _nz)
    {
        std::ostringstream out;
        out << "Indexes [" << i << "," << j << "," << k << "] out of range [" << _nx << "," << _ny << ","
            << _nz << "]";
        _error = out.str();
        return false;
    }
    value = _values[index_of(i, j, k)];
    return true;
}

// ---------------------------------------------------------------------------
// Filling

bool GridReal::fill(double value)
{
    for (int k = 0; k < _nz; ++k)
        for (int j = 0; j < _ny; ++j)
            for (int i = 0; i < _nx; ++i)
                if (!set_at(i, j, k, value))
                    return false;
    return true;
}

bool GridReal::fill_2D(const std::vector<std::vector<double>>& rows)
{
    const size_t length = rows.empty() ? 0 : rows.front().size();
    for (const std::vector<double>& row : rows)
        if (row.size() != length)
            return fail("Wrong 2D array size");
    GridParams geometry(*this);
    geometry.setNx(static_cast<int>(rows.size()));
    geometry.setNy(static_cast<int>(length));
    geometry.setNz(1);
    geometry.setDz(MP_UNDEF_REAL);
    reset(geometry);
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
            if (!set_at(i, j, rows[static_cast<size_t>(i)][static_cast<size_t>(j)]))
                return false;
    return true;
}

void GridReal::fill_yxz(int size, const double* data)
{
    MP_ASSERT(size == _nx * _ny * _nz);
    size_t n = 0;
    for (int k = 0; k < _nz; ++k)
        for (int i = 0; i < _nx; ++i)
            for (int j = 0; j < _ny; ++j)
                set_at(i, j, k, data[n++]);
}

void GridReal::fill_zyx(int size, const double* data)
{
    MP_ASSERT(size == _nx * _ny * _nz);
    size_t n = 0;
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
            for (int k = 0; k < _nz; ++k)
                set_at(i, j, k, data[n++]);
}

void GridReal::add(double value)
{
    for (double& v : _values)
        v = std::min(MP_MAX_REAL_VALUE, std::max(MP_MIN_REAL_VALUE, v + value));
}

// ---------------------------------------------------------------------------
// Statistics

std::vector<double> GridReal::get_values_zyx() const
{
    std::vector<double> result;
    result.reserve(_values.size());
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
            for (int k = 0; k < _nz; ++k)
                result.push_back(_values[index_of(i, j, k)]);
    return result;
}

double GridReal::get_mean() const
{
    double sum = 0.;
    double count = 0.;
    for (double v : _values)
        if (v != MP_UNDEF_REAL)
        {
            sum += v;
            count += 1.;
        }
    return sum / count;
}

int GridReal::get_nb_positive() const
{
    return static_cast<int>(
        std::count_if(_values.begin(), _values.end(), [](double v) { return v != MP_UNDEF_REAL && v > 0.; }));
}

int GridReal::get_nb_negative() const
{
    return static_cast<int>(std::count_if(_values.begin(), _values.end(), [](double v) { return v < 0.; }));
}

bool GridReal::has_values() const
{
    return std::any_of(_values.begin(), _values.end(), [](double v) { return v != MP_UNDEF_REAL; });
}

double GridReal::get_min(int& i, int& j) const
{
    i = _minAt[0];
    j = _minAt[1];
    return _min;
}

double GridReal::get_max(int& i, int& j) const
{
    i = _maxAt[0];
    j = _maxAt[1];
    return _max;
}

bool GridReal::add_variable(GridReal* grid)
{
    // Columns must line up node for node, layers included.
    if (grid == nullptr || !isCompatibleWith(*grid) || grid->getNz() != _nz)
        return false;
    _variables.push_back(grid);
    return true;
}

// ---------------------------------------------------------------------------
// Resampling

bool GridReal::migrate(const GridReal& source, bool strict, bool warn, iTracer* tracer)
{
    if (is3D() || source.is3D())
        return fail("GridReal::migrate: This method is not available for 3D grids");
    int uncovered = 0;
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
        {
            const Point2D at = source.geo2Grid(grid2Geo(i, j), false);
            const int si = truncate_index(at.get_abscissa());
            const int sj = truncate_index(at.get_ordinate());
            double value = MP_UNDEF_REAL;
            if (source.is_on_grid(si, sj))
                source.get_at(si, sj, value);
            else if (warn && tracer != nullptr && ++uncovered <= MAX_MIGRATE_WARNINGS + 1 &&
                     tracer->traceLevel(TRACE_WARNING))
            {
                if (uncovered <= MAX_MIGRATE_WARNINGS)
                {
                    std::ostringstream out;
                    out << "Domain at {" << i << "," << j << "} not fully covered by Imported Surface at {"
                        << si << "," << sj << "}";
                    tracer->warning(out.str());
                }
                else
                    tracer->warning("...");
            }
            // A hole in the source is bridged by the nearest defined node of the 5 x 5 square around.
            for (int di = -2; di <= 2 && value == MP_UNDEF_REAL; ++di)
                for (int dj = -2; dj <= 2 && value == MP_UNDEF_REAL; ++dj)
                    if (source.is_on_grid(si + di, sj + dj))
                        source.get_at(si + di, sj + dj, value);
            if (value == MP_UNDEF_REAL)
            {
                std::ostringstream out;
                out << "At location {" << i << "," << j << "} the grid value is not defined!";
                if (warn && tracer != nullptr)
                    tracer->error(out.str());
                if (strict)
                    return fail(out.str());
            }
            set_at(i, j, value);
        }
    return true;
}
