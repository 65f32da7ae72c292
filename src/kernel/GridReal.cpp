#include "kernel/GridReal.h"

#include "interface/iTracer.h"
#include "kernel/Assert.h"
#include "kernel/BaseDataFile.h"
#include "kernel/Constants.h"
#include "kernel/InDataFile.h"
#include "kernel/OutDataFile.h"
#include "kernel/StagedFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

namespace
{

// Node counts accepted per axis by the readers that take the geometry from the file.
constexpr int MIN_NODES_PER_AXIS = 2;
constexpr int MAX_NODES_PER_AXIS = 5000;
// A header may still ask for 5000 x 5000 x 5000 nodes: one terabyte. Readers refuse
// more than 50 million nodes in all (400 MB of values), which keeps every 5000 x 5000
// surface and any reasonable block while a corrupt header cannot allocate gigabytes.
constexpr size_t MAX_READ_NODES = 50000000;

const int MAX_MIGRATE_WARNINGS = 10;

std::string text_of(double value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string read_count_sentence(size_t read, size_t expected)
{
    std::ostringstream out;
    out << "We read " << read << " values (" << expected << " expected).";
    return out.str();
}

// Field n of the current line; `value` changes only when the field converts.
template <typename T> bool field(InDataFile& file, int n, T& value)
{
    T read{};
    if (!file.get_value(n, read))
        return false;
    value = read;
    return true;
}

bool count_in_range(int n)
{
    return n >= MIN_NODES_PER_AXIS && n <= MAX_NODES_PER_AXIS;
}

bool total_in_range(int nx, int ny, int nz)
{
    return static_cast<size_t>(nx) * static_cast<size_t>(ny) * static_cast<size_t>(nz) <= MAX_READ_NODES;
}

// Axis letter (0 x, 1 y, 2 z) and direction of one term of an order string.
struct OrderTerm
{
    int axis = 0;
    bool descending = false;
};

bool parse_term(const std::string& term, OrderTerm& parsed)
{
    std::string upper = BaseDataFile::trim(term);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (upper.size() != 2 || (upper[0] != '+' && upper[0] != '-'))
        return false;
    if (upper[1] < 'X' || upper[1] > 'Z')
        return false;
    parsed.axis = upper[1] - 'X';
    parsed.descending = upper[0] == '-';
    return true;
}

// The three terms of an order, fastest first, with three distinct axes.
bool parse_order(const std::string& o1, const std::string& o2, const std::string& o3, OrderTerm terms[3])
{
    if (!parse_term(o1, terms[0]) || !parse_term(o2, terms[1]) || !parse_term(o3, terms[2]))
        return false;
    return terms[0].axis != terms[1].axis && terms[0].axis != terms[2].axis && terms[1].axis != terms[2].axis;
}

bool split_order(const std::string& order, std::string& o1, std::string& o2, std::string& o3)
{
    const std::string text = BaseDataFile::trim(order);
    const size_t first = text.find(' ');
    if (first == std::string::npos)
        return false;
    const size_t second = text.find(' ', first + 1);
    if (second == std::string::npos)
        return false;
    o1 = BaseDataFile::trim(text.substr(0, first));
    o2 = BaseDataFile::trim(text.substr(first + 1, second - first - 1));
    o3 = BaseDataFile::trim(text.substr(second + 1));
    return true;
}

// Walks the nodes of a grid in the order of three terms: position a[t] along
// term t becomes the index of the term's axis, counted from the far end when descending.
class OrderWalk
{
public:
    OrderWalk(const OrderTerm terms[3], int nx, int ny, int nz) : _counts{nx, ny, nz}
    {
        std::copy(terms, terms + 3, _terms);
    }
    int count(int term) const { return _counts[_terms[term].axis]; }
    void node(int a1, int a2, int a3, int& i, int& j, int& k) const
    {
        const int a[3] = {a1, a2, a3};
        int ijk[3] = {0, 0, 0};
        for (int t = 0; t < 3; ++t)
        {
            const int n = _counts[_terms[t].axis];
            ijk[_terms[t].axis] = _terms[t].descending ? n - 1 - a[t] : a[t];
        }
        i = ijk[0];
        j = ijk[1];
        k = ijk[2];
    }
    // Calls visit(i, j, k) on every node in walk order until it answers false.
    template <typename F> void visit(F visit) const
    {
        for (int a3 = 0; a3 < count(2); ++a3)
            for (int a2 = 0; a2 < count(1); ++a2)
                for (int a1 = 0; a1 < count(0); ++a1)
                {
                    int i = 0, j = 0, k = 0;
                    node(a1, a2, a3, i, j, k);
                    if (!visit(i, j, k))
                        return;
                }
    }

private:
    OrderTerm _terms[3];
    int _counts[3];
};

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

// ---------------------------------------------------------------------------
// Formats and orders

int GridReal::get_format(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open())
        return GRID_FORMAT_UNKNOWN;
    file.setKeySeparator(0);
    if (file.seek_keyword("FSASCI"))
        return GRID_FORMAT_CPS3;
    if (file.seek_keyword("F2G_DIM"))
        return GRID_FORMAT_F2G;
    if (file.seek_keyword("SPECGRID"))
        return GRID_FORMAT_GRDECL;
    file.rewind();
    int first = 0;
    if (!file.next_line())
        return GRID_FORMAT_UNKNOWN;
    if (file.get_value(1, first))
        return GRID_FORMAT_ASCII_DETECTED;
    if (!file.next_line())
        return GRID_FORMAT_UNKNOWN;
    std::string second;
    if (file.get_value(1, first) && !file.get_value(2, second))
        return GRID_FORMAT_GSLIB;
    return GRID_FORMAT_UNKNOWN;
}

std::string GridReal::get_format_label(int format)
{
    switch (format)
    {
    case GRID_FORMAT_F2G:
        return "F2G";
    case GRID_FORMAT_GSLIB:
        return "GSLIB";
    case GRID_FORMAT_CPS3:
        return "CPS-3";
    case GRID_FORMAT_GRDECL:
        return "GRDECL";
    default:
        return "UNDEFINED";
    }
}

std::string GridReal::get_default_order(int format)
{
    return format == GRID_FORMAT_GSLIB ? "+X +Y +Z" : "+Y +X +Z";
}

bool GridReal::is_order_valid(const std::string& order)
{
    std::string o1, o2, o3;
    return is_order_valid(order, o1, o2, o3);
}

bool GridReal::is_order_valid(const std::string& order, std::string& o1, std::string& o2, std::string& o3)
{
    return split_order(order, o1, o2, o3) && is_order_valid(o1, o2, o3);
}

bool GridReal::is_order_valid(const std::string& o1, const std::string& o2, const std::string& o3)
{
    OrderTerm terms[3];
    return parse_order(o1, o2, o3, terms);
}

// ---------------------------------------------------------------------------
// Reading

bool GridReal::read_on(const std::string& path, const GridParams& geometry)
{
    const int format = get_format(path);
    if (format == GRID_FORMAT_GSLIB || format == GRID_FORMAT_ASCII_DETECTED)
        reset(geometry);
    return read(path);
}

bool GridReal::read(const std::string& path)
{
    switch (get_format(path))
    {
    case GRID_FORMAT_F2G:
        return read_f2g(path);
    case GRID_FORMAT_GSLIB:
        return read_gslib(path);
    case GRID_FORMAT_CPS3:
        return read_cps3(path);
    case GRID_FORMAT_ASCII_DETECTED:
        return read_ascii(path);
    case GRID_FORMAT_GRDECL:
        return fail("GRDECL grid format is not supported while reading files!");
    default:
        // Unrecognised: the caller words the failure, the last error stays.
        return false;
    }
}

bool GridReal::read_f2g_header(InDataFile& file, GridParams& geometry, std::string& order, std::string& undef)
{
    int dim = 0;
    if (!file.seek_keyword("F2G_DIM"))
        return fail("Invalid F2G file: could not find F2G_DIM keyword");
    if (!field(file, 2, dim))
        return fail("Invalid F2G file: Wrong value for F2G_DIM");
    if (dim != 2 && dim != 3)
        return fail("Invalid F2G file: Wrong value for F2G_DIM (must be 2 or 3)");
    const bool three_d = dim == 3;

    int version = 0;
    if (!file.seek_keyword("F2G_VERSION"))
        return fail("Invalid F2G file: could not find F2G_VERSION keyword");
    if (!field(file, 2, version))
        return fail("Invalid F2G file: Wrong value for F2G_VERSION");
    if (version != 1)
        return fail("Invalid F2G file: Wrong value for F2G_VERSION (must be 1)");

    // The elevation of the location is only read for a 3D grid.
    double x = 0., y = 0., z = 0.;
    if (!file.seek_keyword("F2G_LOCATION"))
        return fail("Invalid F2G file: could not find F2G_LOCATION keyword");
    if (!field(file, 2, x) || !field(file, 3, y) || (three_d && !field(file, 4, z)))
        return fail("Invalid F2G file: Wrong values for F2G_LOCATION");

    double rotation = 0.;
    if (!file.seek_keyword("F2G_ROTATION"))
        return fail("Invalid F2G file: could not find F2G_ROTATION keyword");
    if (!field(file, 2, rotation))
        return fail("Invalid F2G file: Wrong value for F2G_ROTATION");

    double ox = 0., oy = 0., oz = 0.;
    if (!file.seek_keyword("F2G_ORIGIN"))
        return fail("Invalid F2G file: could not find F2G_ORIGIN keyword");
    if (!field(file, 2, ox) || !field(file, 3, oy) || (three_d && !field(file, 4, oz)))
        return fail("Invalid F2G file: Wrong values for F2G_ORIGIN");

    int nx = 0, ny = 0, nz = 1;
    if (!file.seek_keyword("F2G_NB_NODES"))
        return fail("Invalid F2G file: could not find F2G_NB_NODES keyword");
    const bool nodes_read = field(file, 2, nx) && field(file, 3, ny) && (!three_d || field(file, 4, nz));
    if (!nodes_read || !count_in_range(nx) || !count_in_range(ny) || (three_d && !count_in_range(nz)) ||
        !total_in_range(nx, ny, nz))
    {
        std::ostringstream out;
        out << "Invalid F2G file: Wrong value for F2G_NB_NODES:\n  NX = " << nx << "\n  NY = " << ny;
        if (three_d)
            out << "\n  NZ = " << nz;
        return fail(out.str());
    }

    double dx = 0., dy = 0., dz = MP_UNDEF_REAL;
    if (!file.seek_keyword("F2G_LAGS"))
        return fail("Invalid F2G file: could not find F2G_LAGS keyword");
    if (three_d)
        dz = 0.;
    const bool lags_read = field(file, 2, dx) && field(file, 3, dy) && (!three_d || field(file, 4, dz));
    if (!lags_read || !(dx > 0.) || !(dy > 0.) || !(dz > 0.))
    {
        std::ostringstream out;
        out << "Invalid F2G file: Wrong value for F2G_LAGS:\n  LAGX = " << dx << "\n  LAGY = " << dy;
        if (three_d)
            out << "\n LAGZ = " << dz;
        return fail(out.str());
    }

    std::string o1, o2, o3;
    if (!file.seek_keyword("F2G_ORDER"))
        return fail("Invalid F2G file: could not find F2G_ORDER keyword");
    if (!field(file, 2, o1) || !field(file, 3, o2) || !field(file, 4, o3))
        return fail(
            "Invalid F2G file: Wrong values for F2G_ORDER (All three axis must be defined even for 2D "
            "grids)");
    if (!is_order_valid(o1, o2, o3))
        return fail("Invalid F2G file: Wrong value for F2G_ORDER:\n  #1 = " + o1 + "\n  #2 = " + o2 +
                    "\n  #3 = " + o3);
    order = o1 + " " + o2 + " " + o3;

    int nb_variables = 0;
    if (!file.seek_keyword("F2G_NB_VARIABLES"))
        return fail("Invalid F2G file: could not find F2G_NB_VARIABLES keyword");
    if (!field(file, 2, nb_variables) || nb_variables < 1 || nb_variables > 3)
        return fail("Invalid F2G file: Wrong value for F2G_NB_VARIABLES");

    if (!file.seek_keyword("F2G_VARIABLE_1"))
        return fail("Invalid F2G file: could not find F2G_VARIABLE_1 keyword");
    if (!file.seek_keyword("F2G_UNDEFINED_1"))
        return fail("Invalid F2G file: could not find F2G_UNDEFINED_1 keyword");
    if (!field(file, 2, undef))
        return fail("Invalid F2G file: Wrong value for F2G_UNDEFINED_1");
    // Further variables must be announced, but only the first one is loaded.
    for (int v = 2; v <= nb_variables; ++v)
    {
        const std::string number = std::to_string(v);
        if (!file.seek_keyword("F2G_VARIABLE_" + number))
            return fail("Invalid F2G file: could not find F2G_VARIABLE_" + number + " keyword");
        if (!file.seek_keyword("F2G_UNDEFINED_" + number))
            return fail("Invalid F2G file: could not find F2G_UNDEFINED_" + number + " keyword");
    }

    if (three_d)
        geometry = GridParams(dx, dy, dz, nx, ny, nz, ox, oy, oz);
    else
        geometry = GridParams(dx, dy, nx, ny, ox, oy);
    geometry.setLocation(Point3D(x, y, z));
    geometry.setRotation(rotation);
    return true;
}

bool GridReal::read_f2g(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read grid file " + path);
    file.setKeySeparator(0);
    GridParams geometry;
    std::string order, undef;
    if (!read_f2g_header(file, geometry, order, undef))
        return false;
    if (!file.seek_keyword("F2G_VALUES"))
        return fail("Invalid F2G file: could not find F2G_VALUES keyword");

    reset(geometry);
    _undefinedText = undef;
    _undefinedValue = MP_UNDEF_REAL;

    std::string o1, o2, o3;
    OrderTerm terms[3];
    split_order(order, o1, o2, o3);
    parse_order(o1, o2, o3, terms);
    // Values are raw lines: a comment here is a value, and only the first column is loaded.
    size_t count = 0;
    bool refused = false;
    OrderWalk(terms, _nx, _ny, _nz)
        .visit(
            [&](int i, int j, int k)
            {
                std::string raw;
                if (!std::getline(file, raw))
                    return false;
                ++count;
                std::istringstream line(raw);
                std::string first;
                line >> first;
                double value = MP_UNDEF_REAL;
                std::istringstream number(first);
                if (first == _undefinedText || !(number >> value))
                    value = MP_UNDEF_REAL;
                refused = !set_at(i, j, k, value);
                return !refused;
            });
    if (refused)
        return false;
    if (count < node_count())
        return fail("Invalid F2G file: Wrong number of values!\n" + read_count_sentence(count, node_count()));
    return true;
}

bool GridReal::read_gslib(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read grid file " + path);
    if (node_count() == 0)
        return fail("Invalid GSLIB file " + path + ": the file holds no grid geometry, and none was given.");
    file.setKeySeparator(0);
    int nb_variables = 0;
    if (!file.next_line() || !file.next_line() || !field(file, 1, nb_variables) || nb_variables < 1)
        return fail("Invalid GSLIB file: wrong 2nd line (should contain number of variables).");
    for (int v = 0; v < nb_variables; ++v)
        if (!file.next_line())
            break;

    // The file gives no geometry: the values fill the grid as it stands.
    reset(GridParams(*this));
    size_t count = 0;
    bool going = true;
    for (int k = 0; k < _nz && going; ++k)
        for (int j = 0; j < _ny && going; ++j)
            for (int i = 0; i < _nx && going; ++i)
            {
                // The count rises before the stream is tested, as the message expects.
                ++count;
                double value = 0.;
                file >> value;
                going = set_at(i, j, k, value) && !file.fail();
            }
    if (count != node_count())
        return fail("Invalid GSLIB file: wrong number of values! Do you have NA ?\n" +
                    read_count_sentence(count, node_count()));
    return true;
}

bool GridReal::read_ascii(const std::string& path)
{
    std::ifstream file(path);
    if (!file.is_open())
        return fail("Cannot read grid file " + path);
    if (node_count() == 0)
        return fail("Plain ascii grid file " + path + " holds no grid geometry, and none was given.");
    reset(GridParams(*this));
    // No header: z slowest, then x, y fastest.
    const OrderTerm terms[3] = {{1, false}, {0, false}, {2, false}};
    size_t count = 0;
    OrderWalk(terms, _nx, _ny, _nz)
        .visit(
            [&](int i, int j, int k)
            {
                double value = 0.;
                if (!(file >> value) || !set_at(i, j, k, value))
                    return false;
                ++count;
                return true;
            });
    if (count != node_count())
        return fail("Error while reading data from the input data ASCII file"
                    "(no CPS3, GSLIB or F2G format detected).\n" +
                    read_count_sentence(count, node_count()));
    return true;
}

bool GridReal::read_cps3(const std::string& path)
{
    InDataFile file(path);
    if (!file.is_open())
        return fail("Cannot read grid file " + path);
    file.setKeySeparator(0);

    int version = 0;
    double undef = -1.;
    if (!file.seek_keyword("FSASCI"))
        return fail("Invalid CPS3 file: could not find FSASCI keyword");
    if (!field(file, 5, version))
        return fail("Invalid CPS3 file: could not determine version (number after COMPUTED)");
    field(file, 6, undef);

    if (!file.seek_keyword("FSATTR"))
        return fail("Invalid CPS3 file: could not find FSATTR keyword");

    double xmin = 0., xmax = 0., ymin = 0., ymax = 0.;
    const bool found = file.seek_keyword("FSLIMI");
    if (!found || !field(file, 2, xmin) || !field(file, 3, xmax) || !field(file, 4, ymin) ||
        !field(file, 5, ymax) || !(xmin < xmax) || !(ymin < ymax))
    {
        std::ostringstream out;
        out << "Invalid CPS3 file: could not find X & Y consistent limits:\n  XMIN = " << xmin
            << "\n  XMAX = " << xmax << "\n  YMIN = " << ymin << "\n  YMAX = " << ymax;
        return fail(out.str());
    }
    // Four more limits make a 3D file (z, then values); two make a 2D one (values).
    double f6 = 0., f7 = 0., f8 = 0., f9 = 0.;
    const bool has_67 = field(file, 6, f6) && field(file, 7, f7);
    const bool three_d = has_67 && field(file, 8, f8) && field(file, 9, f9);
    if (!has_67)
        return false;
    double zmin = 0., zmax = 0., vmin = f6, vmax = f7;
    if (three_d)
    {
        zmin = f6;
        zmax = f7;
        vmin = f8;
        vmax = f9;
        if (!(zmin < zmax))
        {
            std::ostringstream out;
            out << "Invalid CPS3 file: could not find Z consistent limits:\n  ZMIN = " << zmin
                << "\n  ZMAX = " << zmax;
            return fail(out.str());
        }
    }
    if (!(vmin <= vmax))
    {
        std::ostringstream out;
        out << "Invalid CPS3 file: could not find Value consistent limits:\n  VMIN = " << vmin
            << "\n  VMAX = " << vmax;
        return fail(out.str());
    }

    // Version 1 gives columns then rows; every other version rows then columns.
    const int first = version == 1 ? 2 : 3;
    const int second = version == 1 ? 3 : 2;
    int nx = 0, ny = 0, nz = 1;
    const bool rows_found = file.seek_keyword("FSNROW");
    const bool sizes_read =
        rows_found && field(file, first, nx) && field(file, second, ny) && (!three_d || field(file, 4, nz));
    if (!sizes_read || !count_in_range(nx) || !count_in_range(ny) || (three_d && !count_in_range(nz)) ||
        !total_in_range(nx, ny, nz))
    {
        std::ostringstream out;
        out << "Invalid CPS3 file: The grid size is not correct:\n  NX = " << nx << "\n  NY = " << ny;
        if (three_d)
            out << "\n  NZ = " << nz;
        return fail(out.str());
    }

    double dx = 0., dy = 0., dz = three_d ? 0. : MP_UNDEF_REAL;
    const bool inc_found = file.seek_keyword("FSXINC");
    const bool lags_read =
        inc_found && field(file, first, dx) && field(file, second, dy) && (!three_d || field(file, 4, dz));
    if (!lags_read || !(dx > 0.) || !(dy > 0.) || !(dz > 0.))
    {
        std::ostringstream out;
        out << "Invalid CPS3 file: Bad grid lags:\n  LAGX = " << dx << "\n  LAGY = " << dy;
        if (three_d)
            out << "\n LAGZ = " << dz;
        return fail(out.str());
    }

    if (!file.seek_keyword("->MSMODL"))
        return fail("Invalid CPS3 file: keyword 'MSMODL' not found!");

    GridParams geometry =
        three_d ? GridParams(dx, dy, dz, nx, ny, nz, 0., 0., 0.) : GridParams(dx, dy, nx, ny);
    geometry.setLocation(Point3D(xmin, ymin, zmin));
    reset(geometry);

    // Rows run from north to south. Attempts are counted, not successes: a
    // short file goes unnoticed and its missing nodes stay undefined.
    size_t count = 0;
    const int outer = version == 1 ? nx : ny;
    const int inner = version == 1 ? ny : nx;
    for (int k = 0; k < nz; ++k)
        for (int a = 0; a < outer; ++a)
            for (int b = 0; b < inner; ++b)
            {
                ++count;
                const int i = version == 1 ? a : b;
                const int r = version == 1 ? b : a;
                double value = 0.;
                if (file.fail() || !(file >> value))
                    continue;
                if (value == undef)
                    value = MP_UNDEF_REAL;
                set_at(i, ny - 1 - r, k, value);
            }
    if (count != node_count())
        return fail("Invalid CPS3 file: wrong number of values!\n" +
                    read_count_sentence(count, node_count()));
    return true;
}

// ---------------------------------------------------------------------------
// Writing

bool GridReal::write(const std::string& path, iTracer* tracer, int format, const std::string& order)
{
    switch (format)
    {
    case GRID_FORMAT_F2G:
        return write_f2g(path, tracer, order);
    case GRID_FORMAT_GSLIB:
        return write_gslib(path, tracer);
    case GRID_FORMAT_CPS3:
        return fail("Cannot export CPS3 file format yet!");
    case GRID_FORMAT_GRDECL:
        if (tracer != nullptr)
            tracer->error("Writing GRDECL not supported yet!");
        return fail("Writing GRDECL not supported yet!");
    default:
        return write_ascii(path, tracer);
    }
}

namespace
{
// Six significant digits in the shortest of fixed and scientific forms, as a
// default-formatted stream writes them, but without the stream's cost per
// value and whatever the locale.
void append_number(std::string& text, double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 6);
    text.append(buffer, result.ptr);
}
} // namespace

void GridReal::append_node_line(std::string& text, size_t index) const
{
    if (_values[index] == _undefinedValue)
        text += _undefinedText;
    else
        append_number(text, _values[index]);
    for (const GridReal* variable : _variables)
    {
        text += ' ';
        if (index >= variable->_values.size() || variable->_values[index] == variable->_undefinedValue)
            text += variable->_undefinedText;
        else
            append_number(text, variable->_values[index]);
    }
    text += '\n';
}

bool GridReal::write_values(std::string& text, iTracer* tracer, const std::string& order)
{
    std::string o1, o2, o3;
    OrderTerm terms[3];
    if (!split_order(order, o1, o2, o3) || !parse_order(o1, o2, o3, terms))
        return fail("Order string is not valid!");
    const OrderWalk walk(terms, _nx, _ny, _nz);
    if (tracer != nullptr)
        tracer->progress(-walk.count(2));
    text.clear();
    for (int a3 = 0; a3 < walk.count(2); ++a3)
    {
        for (int a2 = 0; a2 < walk.count(1); ++a2)
            for (int a1 = 0; a1 < walk.count(0); ++a1)
            {
                int i = 0, j = 0, k = 0;
                walk.node(a1, a2, a3, i, j, k);
                append_node_line(text, index_of(i, j, k));
            }
        if (tracer != nullptr && !tracer->progress(1))
            return false;
    }
    return true;
}

bool GridReal::write_f2g(const std::string& path, iTracer* tracer, const std::string& order)
{
    if (!is_order_valid(order))
        return fail("Order string is not valid!");
    OutDataFile file(path);
    if (!file.is_open())
        return fail("Cannot write grid file " + path);
    file.setKeySeparator(0);
    const bool three_d = is3D();
    file.key_value("F2G_DIM", three_d ? 3 : 2);
    file.key_value("F2G_VERSION", 1);
    file << "F2G_LOCATION " << _location.get_abscissa() << ' ' << _location.get_ordinate() << ' '
         << _location.get_elevation() << '\n';
    file.key_value("F2G_ROTATION", _rotation);
    file << "F2G_ORIGIN " << _x0 << ' ' << _y0;
    if (three_d)
        file << ' ' << _z0;
    file << "\nF2G_NB_NODES " << _nx << ' ' << _ny;
    if (three_d)
        file << ' ' << _nz;
    file << "\nF2G_LAGS " << _dx << ' ' << _dy;
    if (three_d)
        file << ' ' << _dz;
    file << '\n';
    file.key_value("F2G_ORDER", order);
    file.key_value("F2G_NB_VARIABLES", static_cast<int>(_variables.size()) + 1);
    file.key_value("F2G_VARIABLE_1", _name);
    file.key_value("F2G_UNDEFINED_1", _undefinedText);
    for (size_t v = 0; v < _variables.size(); ++v)
    {
        const std::string number = std::to_string(v + 2);
        file.key_value("F2G_VARIABLE_" + number, _variables[v]->_name);
        file.key_value("F2G_UNDEFINED_" + number, _variables[v]->_undefinedText);
    }
    file.key_value("F2G_VALUES", std::string());
    std::string values;
    if (!write_values(values, tracer, order))
        return false;
    file << values;
    file.close();
    return !file.fail() || fail("Cannot write grid file " + path);
}

bool GridReal::write_gslib(const std::string& path, iTracer* tracer)
{
    StagedFile staged(path);
    std::ofstream file(staged.path(), std::ios::out | std::ios::trunc);
    if (!file.is_open())
        return fail("Cannot write grid file " + path);
    file << "GSLIB file generated by Sarvo: NXxNYxNZ=" << _nx << 'x' << _ny << 'x' << _nz << '\n';
    file << _variables.size() + 1 << '\n' << _name << '\n';
    for (const GridReal* variable : _variables)
        file << variable->_name << '\n';
    std::string values;
    if (!write_values(values, tracer, get_default_order(GRID_FORMAT_GSLIB)))
        return false;
    file << values;
    file.close();
    return (!file.fail() && staged.commit()) || fail("Cannot write grid file " + path);
}

bool GridReal::write_ascii(const std::string& path, iTracer* tracer)
{
    StagedFile staged(path);
    std::ofstream file(staged.path(), std::ios::out | std::ios::trunc);
    if (!file.is_open())
        return fail("Cannot write grid file " + path);
    std::string values;
    if (!write_values(values, tracer, get_default_order(GRID_FORMAT_ASCII)))
        return false;
    file << values;
    file.close();
    return (!file.fail() && staged.commit()) || fail("Cannot write grid file " + path);
}
