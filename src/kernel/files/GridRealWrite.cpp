// Writing grids in F2G, GSLIB and plain ASCII (CPS-3 is read only), values
// in any order of the three axes.

#include "kernel/files/GridReal.h"

#include "GridRealSupport.h"

#include "interface/iTracer.h"
#include "kernel/common/StagedFile.h"
#include "kernel/files/OutDataFile.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <ostream>

namespace
{
using grid_real_support::OrderTerm;
using grid_real_support::OrderWalk;
using grid_real_support::parse_order;
using grid_real_support::split_order;

} // namespace

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

char* GridReal::put_whole(char* out, int value)
{
    if (value < 0)
        *out++ = '-';
    unsigned int magnitude =
        value < 0 ? 0u - static_cast<unsigned int>(value) : static_cast<unsigned int>(value);
    char digits[8];
    int count = 0;
    do
    {
        digits[count++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    while (count > 0)
        *out++ = digits[--count];
    return out;
}

// Six significant digits in the shortest of fixed and scientific forms, as a
// default-formatted stream writes them, but without the stream's cost per
// value and whatever the locale.
char* GridReal::put_number(char* out, double value)
{
    // Whole values of at most six digits are written as they stand, which is
    // what to_chars writes too, at a fraction of its cost; -0 is left to
    // to_chars, which keeps its sign.
    if (value > -MP_WHOLE_LIMIT && value < MP_WHOLE_LIMIT)
    {
        const int whole = static_cast<int>(value);
        if (whole == value && (whole != 0 || !std::signbit(value)))
            return put_whole(out, whole);
    }
    return std::to_chars(out, out + MP_NUMBER_CHARS, value, std::chars_format::general, 6).ptr;
}

void GridReal::append_number(std::string& text, double value)
{
    char buffer[MP_NUMBER_CHARS];
    text.append(buffer, put_number(buffer, value));
}

void GridReal::append_node_line(std::string& text, int i, int j, int k) const
{
    const size_t index = index_of(i, j, k);
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

std::vector<std::pair<std::string, std::string>> GridReal::columns() const
{
    std::vector<std::pair<std::string, std::string>> out{{_name, _undefinedText}};
    for (const GridReal* variable : _variables)
        out.emplace_back(variable->_name, variable->_undefinedText);
    return out;
}

bool GridReal::write_values(std::string& text, iTracer* tracer, const std::string& order, std::ostream* sink)
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
                append_node_line(text, i, j, k);
            }
        // A block's text is several times its values: it goes out layer by layer.
        if (sink != nullptr)
        {
            *sink << text;
            text.clear();
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
    const auto names = columns();
    file.key_value("F2G_NB_VARIABLES", static_cast<int>(names.size()));
    for (size_t v = 0; v < names.size(); ++v)
    {
        const std::string number = std::to_string(v + 1);
        file.key_value("F2G_VARIABLE_" + number, names[v].first);
        file.key_value("F2G_UNDEFINED_" + number, names[v].second);
    }
    file.key_value("F2G_VALUES", std::string());
    std::string values;
    if (!write_values(values, tracer, order, &file))
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
    const auto names = columns();
    file << names.size() << '\n';
    for (const auto& name : names)
        file << name.first << '\n';
    std::string values;
    if (!write_values(values, tracer, get_default_order(GRID_FORMAT_GSLIB), &file))
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
    if (!write_values(values, tracer, get_default_order(GRID_FORMAT_ASCII), &file))
        return false;
    file << values;
    file.close();
    return (!file.fail() && staged.commit()) || fail("Cannot write grid file " + path);
}
