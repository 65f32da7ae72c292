#include "kernel/Domain.h"

#include "interface/iChannel.h"
#include "interface/iChannelPoint.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/Assert.h"
#include "kernel/DistributionGenerator.h"
#include "kernel/EMap.h"
#include "kernel/FaciesFamilies.h"
#include "kernel/MassBalance.h"
#include "kernel/MeanderCalculator.h"
#include "kernel/Point3D.h"
#include "kernel/TectoMap.h"
#include "kernel/Topo.h"
#include "kernel/Well.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <ostream>
#include <sstream>
#include <utility>

const Vector2D Domain::_grid_vectors[8] = {Vector2D(-1, -1), Vector2D(0, -1), Vector2D(1, -1),
                                           Vector2D(-1, 0),  Vector2D(1, 0),  Vector2D(-1, 1),
                                           Vector2D(0, 1),   Vector2D(1, 1)};

namespace
{

// Lowest erodibility coefficient an imported map may hold.
constexpr double MIN_EROD_COEF = 0.;
// Coefficient given to a bound of a built map that exceeds the largest allowed one.
constexpr double FALLBACK_EROD_COEF = 2e-7;

std::string node_text(int i, int j)
{
    std::ostringstream out;
    out << "{" << i << "," << j << "}";
    return out.str();
}

double clamp_to(double z, double zmin, double zmax)
{
    return std::min(std::max(z, zmin), zmax);
}

// Bounds of a built erodibility map around a mean coefficient.
void built_map_bounds(double coef, double max_coef, double& lo, double& hi)
{
    lo = std::max(0., coef / 2.);
    hi = std::max(0., 1.5 * coef);
    if (lo > max_coef)
        lo = FALLBACK_EROD_COEF;
    if (hi > max_coef)
        hi = FALLBACK_EROD_COEF;
}

} // namespace

// ---------------------------------------------------------------------------
// Construction

Domain::Domain(MeanderCalculator* mc, SeedGenerator* seed, MassBalance* mb, const Topo* flat, double dx,
               double dy, int nx, int ny, const Point2D& origin, double rotation, double zref,
               unsigned int age, const Facies& facies)
    : Grid2D<DepositionSet>(dx, dy, nx, ny, 0., 0., 1), _diagonal(std::sqrt(dx * dx + dy * dy)),
      _upstream_line(Point2D(0., 0.), Vector2D(1., 0.)), _downstream_line(Point2D(0., 0.), Vector2D(1., 0.)),
      _mc(mc), _tracer(nullptr), _seed(seed), _mb(mb), _flat(flat)
{
    MP_ASSERT_TEXT(mc != nullptr, "mc != NULL");
    _tracer = mc->tracer();
    _erod_default = mc->default_erod_coef();
    _erod_mean = _erod_default;
    setLocation(Point3D(origin.get_abscissa(), origin.get_ordinate(), zref));
    setRotation(rotation);
    const std::vector<double> erod(1, _erod_default);
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            ds.set_age(age);
            ds.set_facies(facies);
            ds.set_erod(erod, MP_UNDEF_REAL, 0.);
            ds.set_location(grid2Rel(i, j));
            ds.set_location_geo(grid2Geo(i, j));
            ds.set_zref(zref);
        }
    updateFlattening();
}

Domain::~Domain() = default;

void Domain::resetFrom(const Domain& dom)
{
    MP_ASSERT_TEXT(isCompatibleWith(dom, true), "isCompatibleWith(dom, true)");
    if (this == &dom)
        return;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).resetFrom(dom.getObject(i, j));
    _mx = dom._mx;
    _my = dom._my;
    _diagonal = dom._diagonal;
    _slope = dom._slope;
    _dir_x = dom._dir_x;
    _dir_y = dom._dir_y;
    _slope_x = dom._slope_x;
    _slope_y = dom._slope_y;
    _erod_default = dom._erod_default;
    _erod_mean = dom._erod_mean;
    _flow_angle = dom._flow_angle;
    _zmin_border = dom._zmin_border;
    _zmin_border_altered = dom._zmin_border_altered;
    _zmax_border = dom._zmax_border;
    _zmax_border_altered = dom._zmax_border_altered;
    std::copy(dom._scalar_dir, dom._scalar_dir + 8, _scalar_dir);
    _upstream_corner = dom._upstream_corner;
    _downstream_corner = dom._downstream_corner;
    _upstream_line = dom._upstream_line;
    _downstream_line = dom._downstream_line;
    _upstream_apex = dom._upstream_apex;
    _downstream_apex = dom._downstream_apex;
    std::copy(dom._corner, dom._corner + 4, _corner);
    _mc = dom._mc;
    _tracer = dom._tracer;
    _seed = dom._seed;
    _mb = dom._mb;
    _flat = dom._flat;
}

// ---------------------------------------------------------------------------
// Slope, flow direction, margins

void Domain::update_slope(double slope, double angle)
{
    _flow_angle = MeanderCalculator::relative_flow_direction(_rotation, angle);
    _dir_x = std::cos(_flow_angle);
    _dir_y = std::sin(_flow_angle);
    _slope = slope;
    _slope_x = _slope * _dir_x;
    _slope_y = _slope * _dir_y;
    const Vector2D dir(_dir_x, _dir_y);
    for (int k = 0; k < 8; ++k)
        _scalar_dir[k] = dir.scalar(_grid_vectors[k]);
    compute_corners();
    compute_border_zmin();
    compute_border_zmax();
}

void Domain::set_margins(int mx, int my)
{
    _mx = mx;
    _my = my;
    if (_dir_x != MP_UNDEF_REAL)
        compute_corners();
}

// The upstream and downstream ends of the domain seen along the flow: the
// extreme grid corners, with and without margins, and the lines normal to the
// flow through them.
void Domain::compute_corners()
{
    // Margins not yet set count as none.
    const double mx = _mx == MP_UNDEF_INT ? 0. : _mx;
    const double my = _my == MP_UNDEF_INT ? 0. : _my;
    const double X0 = -mx, X1 = _nx + mx - 1., Y0 = -my, Y1 = _ny + my - 1.;
    const double nx1 = _nx - 1., ny1 = _ny - 1.;
    const bool zero_x = std::fabs(_dir_x) < MP_EPSILON;
    const bool zero_y = std::fabs(_dir_y) < MP_EPSILON;
    // Corner choice: which of the four grid corners lies upstream.
    bool up_high_x = false, up_high_y = false;
    if (zero_x)
        up_high_y = _dir_y < 0.;
    else if (zero_y)
        up_high_x = _dir_x < 0.;
    else
    {
        up_high_x = _dir_x <= 0.;
        up_high_y = _dir_y <= 0.;
    }
    _upstream_corner = grid2Rel(up_high_x ? X1 : X0, up_high_y ? Y1 : Y0);
    _downstream_corner = grid2Rel(up_high_x ? X0 : X1, up_high_y ? Y0 : Y1);
    _upstream_apex = grid2Rel(up_high_x ? nx1 : 0., up_high_y ? ny1 : 0.);
    _downstream_apex = grid2Rel(up_high_x ? 0. : nx1, up_high_y ? 0. : ny1);

    const Vector2D along(_dir_x, _dir_y);
    Vector2D normal = along;
    normal.rotate_half_pi();
    _upstream_line = Line2D(_upstream_corner, normal);
    _downstream_line = Line2D(_downstream_corner, normal);
    const Line2D side_a(Point2D(_downstream_corner.get_abscissa(), _upstream_corner.get_ordinate()), along);
    const Line2D side_b(Point2D(_upstream_corner.get_abscissa(), _downstream_corner.get_ordinate()), along);
    side_a.intersection(_upstream_line, _corner[0]);
    side_a.intersection(_downstream_line, _corner[1]);
    side_b.intersection(_downstream_line, _corner[2]);
    side_b.intersection(_upstream_line, _corner[3]);
}

// ---------------------------------------------------------------------------
// Border extremes

// Every node of the first and last rows and columns (corners twice).
template <typename Visit> void Domain::for_each_border_node(Visit visit) const
{
    for (int i = 0; i < _nx; ++i)
    {
        visit(i, 0);
        visit(i, _ny - 1);
    }
    for (int j = 0; j < _ny; ++j)
    {
        visit(0, j);
        visit(_nx - 1, j);
    }
}

void Domain::compute_border_zmin()
{
    _zmin_border = MP_MAX_REAL_VALUE;
    _zmin_border_altered = MP_MAX_REAL_VALUE;
    auto visit = [this](int i, int j)
    {
        const DepositionSet& ds = getObject(i, j);
        _zmin_border = std::min(_zmin_border, ds.get_topo_rel(true));
        _zmin_border_altered = std::min(_zmin_border_altered, ds.get_topo_altered());
    };
    for_each_border_node(visit);
}

void Domain::compute_border_zmax()
{
    _zmax_border = MP_MIN_REAL_VALUE;
    _zmax_border_altered = MP_MIN_REAL_VALUE;
    auto visit = [this](int i, int j)
    {
        const DepositionSet& ds = getObject(i, j);
        _zmax_border = std::max(_zmax_border, ds.get_topo_rel(true));
        _zmax_border_altered = std::max(_zmax_border_altered, ds.get_topo_altered());
    };
    for_each_border_node(visit);
}

// ---------------------------------------------------------------------------
// Extrapolation

bool Domain::margin_idx(int n, int& i, int& m)
{
    m = std::max(1, std::min(m, n - 1));
    if (i >= n)
    {
        const int r = (i - n + 1) % (2 * m);
        if (r > m)
        {
            i = n + r - 1 - 2 * m;
            return false;
        }
        i = n - r - 1;
        return true;
    }
    if (i < 0)
    {
        const int r = i % (2 * m);
        i = -r;
        if (i <= m)
            return true;
        i = r + 2 * m;
        return false;
    }
    return false;
}

double Domain::topo_value(bool rel, bool with_water, int i, int j) const
{
    const DepositionSet& ds = getObject(i, j);
    return rel ? ds.get_topo_rel(with_water) : ds.get_topo_altered();
}

// Beyond the border the field is a mirror image of the grid that fades into
// the edge value over the margin, turned upside down in the mirrored half of
// the fold, so that it stays continuous in value and slope at the border.
template <typename Value>
double Domain::extrapolate(const Value& value, int i, int j, int mx, int my, bool clamp, double zmin,
                           double zmax) const
{
    auto bound = [&](double z) { return clamp ? clamp_to(z, zmin, zmax) : z; };
    const bool out_i = i < 0 || i >= _nx;
    const bool out_j = j < 0 || j >= _ny;
    int fi = i, fj = j;
    const bool fx = margin_idx(_nx, fi, mx);
    const bool fy = margin_idx(_ny, fj, my);

    double z1 = value(fi, fj);
    double f = 0.;
    const int edge_j = j < 0 ? 0 : _ny - 1;
    if (out_j)
    {
        const double d = j < 0 ? fj : _ny - 1 - fj;
        f = (d / my) * (d / my);
        const double ze = value(fi, edge_j);
        z1 = bound((1. - f) * z1 + f * ze);
        if (fy)
            z1 = bound(2. * ze - z1);
    }
    if (!out_i)
        return z1;

    const int edge_i = i < 0 ? 0 : _nx - 1;
    double zx = value(edge_i, fj);
    if (out_j)
    {
        const double zxe = value(edge_i, edge_j);
        zx = (1. - f) * zx + f * zxe;
        if (fy)
            zx = 2. * zxe - zx;
    }
    const double d = i < 0 ? fi : _nx - 1 - fi;
    const double g = (d / mx) * (d / mx);
    double z = bound((1. - g) * z1 + g * zx);
    if (fx)
        z = bound(2. * zx - z);
    return z;
}

double Domain::get_topo_extrapolated(bool rel, bool with_water, int i, int j, int mx, int my,
                                     bool flatten) const
{
    const double slope_term = flatten && !rel ? i * _dx * _slope_x + j * _dy * _slope_y : 0.;
    if (isValid(i, j))
        return topo_value(rel, with_water, i, j) - slope_term;

    if (mx == MP_UNDEF_INT)
        mx = _mx;
    if (my == MP_UNDEF_INT)
        my = _my;
    const double zmin = rel ? _zmin_border : _zmin_border_altered;
    const double zmax = rel ? _zmax_border : _zmax_border_altered;
    if (zmin == MP_MAX_REAL_VALUE || zmax == MP_MIN_REAL_VALUE)
    {
        warning("Domain border elevations not yet computed... Is there any valid domain?");
        MP_ASSERT(false);
    }
    auto value = [&](int a, int b) { return topo_value(rel, with_water, a, b); };
    return extrapolate(value, i, j, mx, my, true, zmin, zmax) - slope_term;
}

double Domain::get_erodibility_extrapolated(int i, int j) const
{
    auto value = [this](int a, int b) { return getObject(a, b).get_erodibility(); };
    if (isValid(i, j))
        return value(i, j);
    const double e = extrapolate(value, i, j, _mx, _my, false, 0., 0.);
    return e < 0. ? 0. : e;
}

double Domain::get_topo_neigh_dry(int i, int j) const
{
    bool found = false;
    double highest = MP_MIN_REAL_VALUE;
    for (const Vector2D& v : _grid_vectors)
    {
        const int ni = i + static_cast<int>(v.get_abscissa());
        const int nj = j + static_cast<int>(v.get_ordinate());
        if (!isValid(ni, nj) || getObject(ni, nj).water_depth() != 0.)
            continue;
        highest = std::max(highest, get_topo_extrapolated(true, true, ni, nj));
        found = true;
    }
    return found ? highest : get_topo_extrapolated(true, true, i, j);
}

// New courses are sought on the topography lowered where the bed is easy to
// erode, with a faint noise that breaks ties between equal nodes.
void Domain::compute_pseudo_topo(double hmax, DistributionGenerator& generator)
{
    double lowest = MP_MAX_REAL_VALUE, highest = MP_MIN_REAL_VALUE;
    // Each well weighs on the courses with its own random strength.
    std::vector<std::pair<const Well*, double>> wells;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const DepositionSet& ds = getObject(i, j);
            const double z = ds.get_topo_rel(false);
            lowest = std::min(lowest, z);
            highest = std::max(highest, z);
            if (ds.well() != nullptr)
                wells.emplace_back(ds.well(), generator() + 1.);
        }
    const double range = std::max(hmax, highest - lowest);
    UniformDistributionGenerator noise(_seed, -1e-5, 1e-5);
    const double f = generator() + 1.;

    double highest_altered = MP_MIN_REAL_VALUE;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            const Point3D node(grid2Rel(i, j), ds.get_topo_rel(true));
            double attraction = 0.;
            for (const auto& well : wells)
                attraction += well.first->correct_avl(node, nullptr, nullptr, nullptr) * well.second;
            const double altered = ds.get_topo_rel(true) + noise() -
                                   (ds.get_erodibility() * f / _erod_default + attraction) * range;
            ds.set_topo_altered(altered);
            highest_altered = std::max(highest_altered, altered);
        }
    const double shift = highest_altered - highest;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            ds.set_topo_altered(ds.get_topo_altered() - shift);
        }
    compute_border_zmin();
    compute_border_zmax();
}

// ---------------------------------------------------------------------------
// Surfaces and maps loaded

bool Domain::migrate_topo(const Topo& in, Topo& out) const
{
    Topo work;
    const GridReal* source = &in;
    if (!in.isCompatibleWith(*this, true))
    {
        work.reset(static_cast<const GridParams&>(*this));
        if (!work.migrate(in, false, false, _tracer))
        {
            error("Error while migrating topography");
            return false;
        }
        source = &work;
    }
    std::vector<double> values(static_cast<size_t>(_nx) * static_cast<size_t>(_ny), MP_UNDEF_REAL);
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
        {
            double v = MP_UNDEF_REAL;
            source->get_at(i, j, v);
            if (v == MP_UNDEF_REAL)
            {
                error("At Domain location " + node_text(i, j) + " the topography is not defined!");
                return false;
            }
            values[index(i, j)] = v - _location.get_elevation();
        }
    out.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            out.set_at(i, j, values[index(i, j)]);
    if (_flat != nullptr && _flat->has_values() && !out.shift_down(*_flat))
    {
        error("Cannot shift down topography: " + out.getError());
        return false;
    }
    return true;
}

bool Domain::load_topo(const Topo& topo, int mode, unsigned int age, unsigned char family)
{
    if (mode == SURF_EXCD)
    {
        error("SURF_EXCD mode not supported to replace topography!");
        return false;
    }
    Topo surface;
    if (!migrate_topo(topo, surface))
    {
        error("Cannot migrate input topography!");
        return false;
    }
    if (mode < SURF_ERODE_FILL || mode > SURF_ERODE_BOTTOM)
    {
        error("Unknown mode (" + std::to_string(mode) + ") to replace topography!");
        return false;
    }
    const Facies facies(family);
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            double n = 0.;
            surface.get_at(i, j, n);
            const double z = ds.get_topo_rel(true);
            switch (mode)
            {
            case SURF_ERODE_FILL:
                ds.erode_thickness(z - n, _mb);
                ds.deposit_thickness(n - z, facies, age, _mb);
                break;
            case SURF_FILL:
                ds.deposit_thickness(n - z, facies, age, _mb);
                break;
            case SURF_ERODE:
                ds.erode_thickness(z - n, _mb);
                break;
            default:
                ds.erode_thickness_from_bottom(n - ds.get_zbot());
                break;
            }
        }
    compute_border_zmin();
    compute_border_zmax();
    return true;
}

bool Domain::load_zul(const Topo& topo)
{
    Topo surface;
    if (!migrate_topo(topo, surface))
    {
        error("Cannot migrate input upper limit topography!");
        return false;
    }
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            double z = MP_UNDEF_REAL;
            surface.get_at(i, j, z);
            getObject(i, j).set_zul_rel(z);
        }
    return true;
}

bool Domain::load_tecto(const TectoMap& map)
{
    TectoMap work;
    const GridReal* source = &map;
    if (!map.isCompatibleWith(*this, true))
    {
        work.reset(static_cast<const GridParams&>(*this));
        work.migrate(map, false, false, nullptr);
        source = &work;
    }
    std::vector<double> rates(node_count(), MP_UNDEF_REAL);
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
        {
            double v = MP_UNDEF_REAL;
            source->get_at(i, j, v);
            if (v == MP_UNDEF_REAL)
            {
                if (tracing(TRACE_WARNING))
                    warning("Domain not fully covered by Imported Tectonic Map at : " + node_text(i, j));
                for (int di = -1; di <= 1 && v == MP_UNDEF_REAL; ++di)
                    for (int dj = -1; dj <= 1 && v == MP_UNDEF_REAL; ++dj)
                        if (source->is_on_grid(i + di, j + dj))
                            source->get_at(i + di, j + dj, v);
            }
            if (v == MP_UNDEF_REAL)
            {
                error("At location iX=" + std::to_string(i) + ",iY=" + std::to_string(j) +
                      " the tectonic value is not defined!");
                return false;
            }
            rates[index(i, j)] = v;
        }
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).set_tecto(rates[index(i, j)]);
    return true;
}

bool Domain::load_emap(const EMap& map)
{
    const bool three_d = map.getNz() > 1 && map.getDz() < MP_UNDEF_REAL;
    const MP_int f_nz = three_d ? map.getNz() : 1;
    if (!map.has_values())
    {
        error("Erodibility map has no defined value!");
        return false;
    }
    const double mean = map.get_mean();
    const double max_coef = _mc->max_erod_coef();
    const bool same_grid = map.isCompatibleWith(*this, true);
    const bool flattened = _flat != nullptr && _flat->has_values();
    const double flat_ref = flattened ? flattening_reference() : 0.;
    const double z0_base =
        map.getLocation().get_elevation() + map.getZ0() - map.getDz() / 2. - _location.get_elevation();

    std::vector<std::vector<double>> columns(node_count());
    std::vector<double> z0s(node_count(), z0_base);
    double sum = 0.;
    double count = 0.;
    for (int i = 0; i < _nx; ++i)
        for (int j = 0; j < _ny; ++j)
        {
            int mi = i, mj = j;
            if (!same_grid)
            {
                const Point2D at = map.geo2Grid(grid2Geo(i, j), true);
                mi = static_cast<int>(at.get_abscissa());
                mj = static_cast<int>(at.get_ordinate());
            }
            std::vector<double> f_erod;
            if (map.is_on_grid(mi, mj))
                map.get_at(mi, mj, f_erod);
            else
            {
                if (tracing(TRACE_WARNING))
                    warning("Domain not fully covered by Imported Emap at : " + node_text(i, j));
                f_erod.assign(static_cast<size_t>(f_nz), mean);
            }
            MP_ASSERT_TEXT((MP_int)f_erod.size() == f_nz, "(MP_int)f_erod.size() == f_nz");
            for (MP_int k = 0; k < f_nz; ++k)
            {
                double& v = f_erod[static_cast<size_t>(k)];
                auto at = [&]()
                {
                    std::ostringstream out;
                    out << "[" << i << "," << j;
                    if (three_d)
                        out << "," << k;
                    out << "]";
                    return out.str();
                };
                if (v == MP_UNDEF_REAL)
                {
                    if (tracing(TRACE_DEBUG))
                        debug("Erodibility map value at " + at() +
                              " is undefined and has been set to emap mean value");
                    v = mean;
                }
                if (v < MIN_EROD_COEF || v > max_coef)
                {
                    const bool low = v < MIN_EROD_COEF;
                    const double limit = low ? MIN_EROD_COEF : max_coef;
                    if (tracing(TRACE_WARNING))
                    {
                        std::ostringstream out;
                        out << "Erodibility map value " << v << " at " << at()
                            << (low ? " is < to minimal value " : " is > to maximal value ") << limit
                            << "\nand has been set to " << limit;
                        warning(out.str());
                    }
                    v = limit;
                }
                sum += v;
                count += 1.;
            }
            if (flattened)
            {
                double fv = MP_UNDEF_REAL;
                if (!flattening_value(i, j, fv))
                {
                    error("Flattening surface not defined at [" + std::to_string(i) + "," +
                          std::to_string(j) + "]");
                    return false;
                }
                z0s[index(i, j)] -= fv - flat_ref;
            }
            columns[index(i, j)] = std::move(f_erod);
        }
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).set_erod(columns[index(i, j)], map.getDz(), z0s[index(i, j)]);
    _erod_mean = sum / count;
    return true;
}

// Erodibility rising with the room left under the upper limit, so that
// channels are drawn to where the block can still grow.
bool Domain::build_emap_zul(double coef)
{
    double lo = 0., hi = 0.;
    built_map_bounds(coef, _mc->max_erod_coef(), lo, hi);
    std::vector<double> room(node_count(), 0.);
    double tmin = MP_MAX_REAL_VALUE, tmax = MP_MIN_REAL_VALUE;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const double zul = getObject(i, j).get_zul();
            const double t =
                zul != MP_UNDEF_REAL ? std::max(zul - get_topo_extrapolated(true, true, i, j), 0.) : 0.;
            room[index(i, j)] = t;
            tmin = std::min(tmin, t);
            tmax = std::max(tmax, t);
        }
    EMap map(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const double t = room[index(i, j)];
            const double v = tmax == tmin ? lo : (lo * tmax - hi * tmin + t * (hi - lo)) / (tmax - tmin);
            map.set_at(i, j, v);
        }
    return load_emap(map);
}

// Erodibility falling off as a Gaussian of the distance to the centerline,
// scaled by the channel width along each axis.
void Domain::get_emap_built_CP(EMap& emap, const std::vector<Point2D>& centerline, double width, double coef,
                               double ax, double ay) const
{
    const double wx = width * ax;
    const double wy = width * ay;
    MP_ASSERT(wx > 0. && wy > 0.);
    double lo = 0., hi = 0.;
    built_map_bounds(coef, _mc->max_erod_coef(), lo, hi);
    emap.reset(static_cast<const GridParams&>(*this));
    std::vector<double> values(node_count(), lo);
    for (size_t s = 1; s < centerline.size(); ++s)
    {
        const Point2D& a = centerline[s - 1];
        const Point2D& b = centerline[s];
        const Point2D ab = b - a;
        const double len2 = ab.scalar(ab);
        const double xmin = std::min(a.get_abscissa(), b.get_abscissa()) - 3. * wx;
        const double xmax = std::max(a.get_abscissa(), b.get_abscissa()) + 3. * wx;
        const double ymin = std::min(a.get_ordinate(), b.get_ordinate()) - 3. * wy;
        const double ymax = std::max(a.get_ordinate(), b.get_ordinate()) + 3. * wy;
        const int imin = std::max(0, static_cast<int>(std::ceil(xmin / _dx)));
        const int imax = std::min(_nx - 1, static_cast<int>(std::floor(xmax / _dx)));
        const int jmin = std::max(0, static_cast<int>(std::ceil(ymin / _dy)));
        const int jmax = std::min(_ny - 1, static_cast<int>(std::floor(ymax / _dy)));
        for (int j = jmin; j <= jmax; ++j)
            for (int i = imin; i <= imax; ++i)
            {
                const Point2D p(i * _dx, j * _dy);
                const double t = len2 > 0. ? clamp_to((p - a).scalar(ab) / len2, 0., 1.) : 0.;
                const Point2D q = a + ab * t;
                const double ex = (p.get_abscissa() - q.get_abscissa()) / wx;
                const double ey = (p.get_ordinate() - q.get_ordinate()) / wy;
                const double v = std::exp(-ex * ex - ey * ey) * (hi - lo) + lo;
                double& kept = values[index(i, j)];
                kept = std::max(kept, v);
            }
    }
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            emap.set_at(i, j, values[index(i, j)]);
}

void Domain::get_emap_built_CP(EMap& emap, const iChannel& channel, double coef, double ax, double ay) const
{
    std::vector<Point2D> centerline;
    centerline.reserve(static_cast<size_t>(std::max(0, channel.number_of_points())));
    for (int k = 0; k < channel.number_of_points(); ++k)
    {
        if (const iChannelPoint* p = channel.get_point(k))
            centerline.emplace_back(p->getX(), p->getY());
    }
    get_emap_built_CP(emap, centerline, channel.width(), coef, ax, ay);
}

// ---------------------------------------------------------------------------
// Flattening

// The surface's lowest value is the datum of the flattened frame.
double Domain::flattening_reference() const
{
    return _flat->get_min();
}

bool Domain::flattening_value(int i, int j, double& value) const
{
    value = MP_UNDEF_REAL;
    return _flat != nullptr && _flat->get_at(i, j, value) && value != MP_UNDEF_REAL;
}

void Domain::updateFlattening()
{
    if (_flat == nullptr || !_flat->has_values())
        return;
    const double ref = flattening_reference();
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            double v = MP_UNDEF_REAL;
            if (flattening_value(i, j, v))
                getObject(i, j).set_flat_delta(v - ref);
        }
}

void Domain::adoptFlattening()
{
    if (_flat == nullptr || !_flat->has_values())
        return;
    const double ref = flattening_reference();
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            double v = MP_UNDEF_REAL;
            if (flattening_value(i, j, v))
                getObject(i, j).adopt_flat_delta(v - ref);
        }
}

// ---------------------------------------------------------------------------
// Actions on all stacks

void Domain::apply_tecto(int t)
{
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).apply_tecto(t);
    compute_border_zmin();
    compute_border_zmax();
}

void Domain::forget_remaining()
{
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).forget_remaining();
}

bool Domain::replace_facies(unsigned char family)
{
    if (family >= Facies::number_of_facies())
        return false;
    const Facies facies(family);
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).replace_facies(facies);
    return true;
}

void Domain::deposit_uniform_thickness(double thickness, const Facies& facies, unsigned int age)
{
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).deposit_thickness(thickness, facies, age, _mb);
}

void Domain::deposit_pel_drap(int dt, double pel_drap_int, unsigned int age)
{
    MP_ASSERT(dt > 0 && pel_drap_int > 0);
    const double thickness = dt * pel_drap_int / 10000.;
    const iParameters* params = _mc->parameters();
    const bool fluvial = params == nullptr || params->usingFluvi();
    const Facies facies(fluvial ? Draping::_fd.id() : Pelagic::_fd.id(), 1);
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            DepositionSet& ds = getObject(i, j);
            if (ds.water_depth() == 0.)
                ds.deposit_thickness(thickness, facies, age, _mb);
        }
}

// ---------------------------------------------------------------------------
// Surfaces handed out

void Domain::getTopo(Topo& topo, bool with_water, unsigned int age) const
{
    if (age != 0)
    {
        get_age_horizon(topo, age);
        return;
    }
    topo.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            topo.set_at(i, j, getObject(i, j).get_topo_geo(with_water));
}

void Domain::get_extra_topo(Topo& topo) const
{
    // The grid grows by the margins on each side; its node (0, 0) lies at the
    // domain's node (-mx, -my).
    GridParams params(static_cast<const GridParams&>(*this));
    params.setNx(_nx + 2 * _mx);
    params.setNy(_ny + 2 * _my);
    const Point2D corner = grid2Geo(-_mx, -_my);
    params.setLocation(Point3D(corner.get_abscissa(), corner.get_ordinate(), getLocation().get_elevation()));
    topo.reset(params);
    for (int j = -_my; j < _ny + _my; ++j)
        for (int i = -_mx; i < _nx + _mx; ++i)
        {
            // Beyond the grid the flattening shift of the nearest border node holds.
            const DepositionSet& near = getObject(std::clamp(i, 0, _nx - 1), std::clamp(j, 0, _ny - 1));
            const double shift = near.get_topo_geo(false) - near.get_topo_rel(false);
            topo.set_at(i + _mx, j + _my, shift + get_topo_extrapolated(true, false, i, j));
        }
}

void Domain::get_age_horizon(Topo& topo, unsigned int age) const
{
    topo.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            double z = MP_UNDEF_REAL;
            Facies facies;
            getObject(i, j).age_info(age, z, facies);
            topo.set_at(i, j, z);
        }
}

void Domain::get_emap(EMap& emap) const
{
    emap.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            emap.set_at(i, j, getObject(i, j).get_erodibility());
}

void Domain::get_zul(Topo& topo) const
{
    topo.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            topo.set_at(i, j, getUpperLimitGeo(i, j));
}

void Domain::get_tecto_map(TectoMap& map) const
{
    map.reset(static_cast<const GridParams&>(*this));
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            map.set_at(i, j, getObject(i, j).get_tecto());
}

int Domain::upper_limit_zul() const
{
    long long below = 0;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const DepositionSet& ds = getObject(i, j);
            if (ds.get_zul() != MP_UNDEF_REAL && ds.get_zul() > ds.get_topo_rel(true))
                ++below;
        }
    if (below == 0)
        return 0;
    const int percent =
        static_cast<int>(100. * static_cast<double>(below) / static_cast<double>(node_count()));
    return percent < 1 ? 1 : percent;
}

bool Domain::upper_limit_reached() const
{
    const long long count = static_cast<long long>(_nx) * _ny;
    for (long long n = 0; n < count; ++n)
    {
        const long long k = (_zul_hint + n) % count;
        const DepositionSet& ds = getObject(static_cast<int>(k % _nx), static_cast<int>(k / _nx));
        if (ds.get_zul() != MP_UNDEF_REAL && ds.get_zul() > ds.get_topo_rel(true))
        {
            _zul_hint = k;
            return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------------------
// Elevation extremes

void Domain::min_and_max_elevation_rel(double& zmin, double& zmax) const
{
    zmin = MP_MAX_REAL_VALUE;
    zmax = MP_MIN_REAL_VALUE;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const DepositionSet& ds = getObject(i, j);
            zmin = std::min(zmin, ds.get_zbot());
            zmax = std::max(zmax, ds.get_ztop());
        }
}

void Domain::min_and_max_elevation_geo(double& zmin, double& zmax) const
{
    zmin = MP_MAX_REAL_VALUE;
    zmax = MP_MIN_REAL_VALUE;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            const DepositionSet& ds = getObject(i, j);
            zmin = std::min(zmin, ds.get_zbot_geo());
            zmax = std::max(zmax, ds.get_ztop_geo());
        }
}

double Domain::max_elevation_rel() const
{
    double zmin = 0., zmax = 0.;
    min_and_max_elevation_rel(zmin, zmax);
    return zmax;
}

double Domain::min_elevation_rel() const
{
    double zmin = 0., zmax = 0.;
    min_and_max_elevation_rel(zmin, zmax);
    return zmin;
}

double Domain::max_elevation_geo() const
{
    double zmin = 0., zmax = 0.;
    min_and_max_elevation_geo(zmin, zmax);
    return zmax;
}

double Domain::min_elevation_geo() const
{
    double zmin = 0., zmax = 0.;
    min_and_max_elevation_geo(zmin, zmax);
    return zmin;
}

double Domain::mean_topo_geo(bool with_water) const
{
    double sum = 0.;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            sum += getObject(i, j).get_topo_geo(with_water);
    return sum / static_cast<double>(node_count());
}

unsigned int Domain::oldest_age() const
{
    unsigned int oldest = MP_UNDEF_UINT;
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            oldest = std::min<unsigned int>(oldest, getObject(i, j).oldest_deposit_age());
    return oldest;
}

// ---------------------------------------------------------------------------
// Dump

bool Domain::binary_output(std::ostream& out) const
{
    for (int j = 0; j < _ny; ++j)
    {
        for (int i = 0; i < _nx; ++i)
            getObject(i, j).binary_output(out);
        if (_tracer != nullptr && !_tracer->progress(1))
            return false;
    }
    return static_cast<bool>(out);
}

bool Domain::binary_input(std::istream& in)
{
    // Read into a copy so that a failed transfer leaves the block as it was;
    // the copy keeps what the record does not hold (locations, limits, rates, wells).
    Grid2D<DepositionSet> staged;
    staged.copyFrom(*this);
    for (int j = 0; j < _ny; ++j)
    {
        for (int i = 0; i < _nx; ++i)
            if (!staged.getObject(i, j).binary_input(in))
                return false;
        if (_tracer != nullptr && !_tracer->progress(1))
            return false;
    }
    Grid2D<DepositionSet>::operator=(std::move(staged));
    compute_border_zmin();
    compute_border_zmax();
    updateFlattening();
    return true;
}

// ---------------------------------------------------------------------------
// iDomain

double Domain::getTopoRel(int i, int j, bool with_water) const
{
    return getObject(i, j).get_topo_rel(with_water);
}

double Domain::getTopoGeo(int i, int j, bool with_water) const
{
    return getObject(i, j).get_topo_geo(with_water);
}

double Domain::getWaterDepth(int i, int j) const
{
    return getObject(i, j).water_depth();
}

double Domain::getErodibility(int i, int j) const
{
    return getObject(i, j).get_erodibility();
}

double Domain::getUpperLimitGeo(int i, int j) const
{
    const DepositionSet& ds = getObject(i, j);
    return ds.get_zul() == MP_UNDEF_REAL ? MP_UNDEF_REAL : ds.rel_to_geo(ds.get_zul());
}

std::vector<DepositUnit> Domain::getStack(int i, int j) const
{
    return getObject(i, j).get_irregular();
}

bool Domain::getSliceInfo(int i, int j, double z, unsigned char& facies, unsigned int& age) const
{
    Facies f;
    uint32_t a = 0;
    getObject(i, j).slice_info(z, f, a);
    facies = f.facies_full_id();
    age = a;
    return !f.is_neutral();
}

// ---------------------------------------------------------------------------
// Messages

void Domain::error(const std::string& text) const
{
    if (_tracer != nullptr)
        _tracer->error(text);
}

void Domain::warning(const std::string& text) const
{
    if (_tracer != nullptr)
        _tracer->warning(text);
}

void Domain::debug(const std::string& text) const
{
    if (_tracer != nullptr)
        _tracer->debug(text);
}

bool Domain::tracing(TraceLevel level) const
{
    return _tracer != nullptr && _tracer->traceLevel(level);
}
