#include "kernel/domain/Domain.h"

#include "interface/iParameters.h"
#include "kernel/common/Assert.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/files/Topo.h"
#include "kernel/geometry/Point3D.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <ostream>
#include <utility>

const Vector2D Domain::_grid_vectors[8] = {Vector2D(-1, -1), Vector2D(0, -1), Vector2D(1, -1),
                                           Vector2D(-1, 0),  Vector2D(1, 0),  Vector2D(-1, 1),
                                           Vector2D(0, 1),   Vector2D(1, 1)};

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
