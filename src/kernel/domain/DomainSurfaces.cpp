// The surfaces and maps a sequence loads onto the block (topography,
// erodibility and tectonic maps), the flattening, and the surfaces the block
// hands out.

#include "kernel/domain/Domain.h"

#include "DomainSupport.h"

#include "interface/iChannel.h"
#include "interface/iChannelPoint.h"
#include "kernel/common/Assert.h"
#include "kernel/files/EMap.h"
#include "kernel/files/TectoMap.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

namespace
{
using domain_support::clamp_to;
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
