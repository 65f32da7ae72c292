#include "kernel/files/GrdeclWriter.h"
#include "kernel/common/StagedFile.h"

#include "kernel/common/Facies.h"
#include "kernel/geometry/RegularBlock.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>

namespace
{
// Values per line: simulators read lines of at most 132 characters.
constexpr int MP_GRDECL_PER_LINE = 6;
constexpr int MP_GRDECL_FAMILIES = 16;

// One keyword and its values, runs of equal values written "count*value".
class KeywordText
{
public:
    // Without `runs`, every value is written out (pillars read better so).
    KeywordText(std::ostringstream& out, const std::string& keyword, int precision, bool runs = true)
        : _out(out), _precision(precision), _runs(runs)
    {
        _out << keyword << "\n";
    }
    void add(double value, size_t count = 1)
    {
        if (_runs && _count > 0 && value == _value)
        {
            _count += count;
            return;
        }
        flush();
        _value = value;
        _count = count;
    }
    void close()
    {
        flush();
        if (_onLine > 0)
            _out << "\n";
        _out << "/\n\n";
    }

private:
    void flush()
    {
        if (_count == 0)
            return;
        // printf's %g is the stream's default notation at this precision.
        char token[64];
        int length = 0;
        if (_count > 1)
            length = std::snprintf(token, sizeof(token), " %zu*%.*g", _count, _precision, _value);
        else
            length = std::snprintf(token, sizeof(token), " %.*g", _precision, _value);
        _out.write(token, length);
        if (++_onLine == MP_GRDECL_PER_LINE)
        {
            _out << "\n";
            _onLine = 0;
        }
        _count = 0;
    }

    std::ostringstream& _out;
    int _precision;
    bool _runs;
    double _value = 0.;
    size_t _count = 0;
    int _onLine = 0;
};
} // namespace

GrdeclWriter::GrdeclWriter(const RegularBlock& block) : _block(block), _rocks(default_rocks()) {}

std::vector<GrdeclWriter::Rock> GrdeclWriter::default_rocks()
{
    // Coarse fluvial analogues: channel sands best, splays and levees fair,
    // floodplain fines and plugs tight.
    std::vector<Rock> rocks(MP_GRDECL_FAMILIES, Rock{0.05, 0.01, 0.001});
    rocks[0] = {0.10, 1., 0.1};      // basement
    rocks[1] = {0.22, 800., 80.};    // channel lag
    rocks[2] = {0.25, 500., 100.};   // point bar
    rocks[3] = {0.24, 300., 60.};    // sand plug
    rocks[4] = {0.20, 100., 10.};    // crevasse splay I
    rocks[5] = {0.22, 200., 20.};    // splay II channels
    rocks[6] = {0.15, 20., 2.};      // crevasse splay II
    rocks[7] = {0.12, 5., 0.5};      // levee
    rocks[8] = {0.08, 0.5, 0.05};    // overbank
    rocks[9] = {0.05, 0.01, 0.001};  // mud plug
    rocks[10] = {0.05, 0.01, 0.001}; // hemipelagic plug
    rocks[11] = {0.06, 0.1, 0.01};   // wetland
    rocks[12] = {0.05, 0.05, 0.005}; // draping
    rocks[13] = {0.04, 0.01, 0.001}; // pelagic
    return rocks;
}

bool GrdeclWriter::is_valid(int family, const Rock& rock)
{
    return family >= 0 && family < MP_GRDECL_FAMILIES && rock.porosity >= 0. && rock.porosity <= 1. &&
           rock.kh >= 0. && rock.kv >= 0.;
}

bool GrdeclWriter::set_rock(int family, const Rock& rock)
{
    if (!is_valid(family, rock))
        return false;
    _rocks[static_cast<size_t>(family)] = rock;
    return true;
}

std::string GrdeclWriter::grid_keywords() const
{
    const GridParams& g = _block.geometry;
    const int nx = g.getNx();
    const int ny = g.getNy();
    const int nz = g.getNz();
    // Depth of the top of file layer k (layer 0 holds the highest samples).
    auto depth = [&](int k) { return -(g.getZ0() + (nz - k - 0.5) * g.getDz()); };
    std::ostringstream out;
    out << "-- Sarvo block: " << nx << " x " << ny << " x " << nz
        << " cells; depths are minus geographic elevations, in metres\n\n";
    out << "GRIDUNIT\n 'METRES' /\n\n";
    out << "SPECGRID\n " << nx << " " << ny << " " << nz << " 1 F /\n\n";
    {
        KeywordText coord(out, "COORD", 12, false);
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i)
            {
                const double x = (g.getX0() + i - 0.5) * g.getDx();
                const double y = (g.getY0() + j - 0.5) * g.getDy();
                const double gx = g.getCosine() * x - g.getSine() * y + g.getLocation().get_abscissa();
                const double gy = g.getSine() * x + g.getCosine() * y + g.getLocation().get_ordinate();
                for (double value : {gx, gy, depth(0), gx, gy, depth(nz)})
                    coord.add(value);
            }
        coord.close();
    }
    {
        // Every corner of a layer's face stands at the same depth.
        KeywordText zcorn(out, "ZCORN", 12);
        const size_t face = 4 * static_cast<size_t>(nx) * static_cast<size_t>(ny);
        for (int k = 0; k < nz; ++k)
        {
            zcorn.add(depth(k), face);
            zcorn.add(depth(k + 1), face);
        }
        zcorn.close();
    }
    return out.str();
}

std::string GrdeclWriter::property_keywords() const
{
    const int nx = _block.nx();
    const int ny = _block.ny();
    const int nz = _block.nz();
    std::ostringstream out;
    // Cells i fastest, then j, then layers from the top; void cells get `empty`.
    auto keyword = [&](const std::string& name, double empty, const std::function<double(size_t)>& value)
    {
        KeywordText text(out, name, 6);
        for (int k = nz - 1; k >= 0; --k)
            for (int j = 0; j < ny; ++j)
                for (int i = 0; i < nx; ++i)
                {
                    const size_t n = _block.index(i, j, k);
                    text.add(_block.is_void(n) ? empty : value(n));
                }
        text.close();
    };
    auto rock = [&](size_t n) { return _rocks[Facies::family(_block.facies[n])]; };
    keyword("ACTNUM", 0., [](size_t) { return 1.; });
    keyword("FACIES", -1., [&](size_t n) { return Facies::family(_block.facies[n]); });
    keyword("GRAINSZ", -1., [&](size_t n) { return _block.grain[n]; });
    keyword("AGE", -1., [&](size_t n) { return static_cast<double>(_block.age[n]); });
    keyword("PORO", 0., [&](size_t n) { return rock(n).porosity; });
    keyword("PERMX", 0., [&](size_t n) { return rock(n).kh; });
    keyword("PERMY", 0., [&](size_t n) { return rock(n).kh; });
    keyword("PERMZ", 0., [&](size_t n) { return rock(n).kv; });
    return out.str();
}

bool GrdeclWriter::write(const std::string& path)
{
    _error.clear();
    StagedFile staged(path);
    std::ofstream file(staged.path());
    if (!file)
    {
        _error = "Cannot write GRDECL file " + path;
        return false;
    }
    file << grid_keywords() << property_keywords();
    file.close();
    if (!file.good() || !staged.commit())
    {
        _error = "Cannot write GRDECL file " + path;
        return false;
    }
    return true;
}
