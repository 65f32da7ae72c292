// Reading grids: the formats told from a file's first line, the orders of
// the axes, and the F2G, GSLIB, plain ASCII and CPS-3 readers.

#include "kernel/files/GridReal.h"

#include "GridRealSupport.h"

#include "kernel/common/Constants.h"
#include "kernel/files/InDataFile.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

namespace
{
using grid_real_support::OrderTerm;
using grid_real_support::OrderWalk;
using grid_real_support::parse_order;
using grid_real_support::split_order;

// Node counts accepted per axis by the readers that take the geometry from the file.
constexpr int MIN_NODES_PER_AXIS = 2;
constexpr int MAX_NODES_PER_AXIS = 5000;
// A header may still ask for 5000 x 5000 x 5000 nodes: one terabyte. Readers refuse
// more than 50 million nodes in all (400 MB of values), which keeps every 5000 x 5000
// surface and any reasonable block while a corrupt header cannot allocate gigabytes.
constexpr size_t MAX_READ_NODES = 50000000;

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
} // namespace

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
