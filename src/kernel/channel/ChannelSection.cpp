// The channel's imprint on the grid: the shape of its cross-section, the grid
// nodes under each segment, the erosion, channel lag and point bars written
// while it moves, and the sand and mud plugs that fill an abandoned reach.

#include "kernel/channel/Channel.h"

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Assert.h"
#include "kernel/common/Constants.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/geometry/Grid2D.h"
#include "kernel/geometry/GridParams.h"
#include "kernel/parameters/MeanderCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

namespace
{
// Samples across the channel in the drawn section.
constexpr int SECTION_SAMPLES = 20;
// Fraction of the flow height below which a node counts as the thalweg.
constexpr double THALWEG_RATIO = 0.99;
// Rise of the thalweg bed per pass, as a fraction of the flow height.
constexpr double THALWEG_RISE = 0.01;
// Grain values used when no profile is available.
constexpr double COARSE_GRAIN = 0.875;
constexpr double BAR_GRAIN = 0.6875;
// Grain-size classes of the channel deposits.
constexpr unsigned char POINT_BAR_CLASS = 10;
constexpr unsigned char CHANNEL_LAG_CLASS = 13;
constexpr unsigned char PLUG_CLASS = 2;
constexpr unsigned char SAND_PLUG_CLASS = 9;
// Lengths of the sand plugs of an abandoned reach, in channel widths.
constexpr double UPSTREAM_PLUG_WIDTHS = 12.;
constexpr double DOWNSTREAM_PLUG_WIDTHS = 6.;
// Decay rate of the sand fraction over one plug length.
constexpr double PLUG_DECAY = 3.;

// Bit for bit, as memcmp, but inline: the records compared are short and
// compared often.
bool same_bits(const double* a, const double* b, std::size_t n)
{
    for (std::size_t k = 0; k < n; ++k)
    {
        std::uint64_t x;
        std::uint64_t y;
        std::memcpy(&x, a + k, sizeof x);
        std::memcpy(&y, b + k, sizeof y);
        if (x != y)
            return false;
    }
    return true;
}

double clamp01(double t)
{
    return std::min(1., std::max(0., t));
}

double mix(double a, double b, double t)
{
    return (1. - t) * a + t * b;
}

Facies facies_of(const FaciesDescription& description, unsigned char gr)
{
    return Facies(description.id(), gr);
}

double clamped_curvature(double curvature, double limit)
{
    return std::min(limit, std::max(-limit, curvature));
}

double signed_cbrt(double value)
{
    return value < 0. ? -std::pow(-value, 1. / 3.) : std::pow(value, 1. / 3.);
}

// Fraction of a point along a segment, measured between the normals of its
// ends so that nodes in a bend share out smoothly between consecutive
// segments; the plain projection when the normals give no answer. What
// depends on the segment alone is worked out once, for all its nodes.
class SegmentFraction
{
public:
    SegmentFraction(const ChannelPoint* a, const ChannelPoint* b)
        : _a(a), _b(b), _pa(*a), _pb(*b), _na(a->normal()), _nb(b->normal()), _chord(*a, *b),
          _chord2(_chord.scalar(_chord)),
          _a_normal(_chord2 > MP_EPSILON && a->normal().scalar(a->normal()) > MP_EPSILON),
          _b_normal(b->normal().scalar(b->normal()) > MP_EPSILON), _d1(a->normal().vectorial(_chord)),
          _d2(b->normal().vectorial(_chord))
    {
    }

    double at(const Point2D& p) const
    {
        // The crossings of the normals with the line through p along the
        // chord lie on one line, so their distances are in the ratio of
        // their parameters.
        if (_a_normal && _d1 != 0.)
        {
            const double l1 = _na.vectorial(_pa - p) / _d1;
            if (_b_normal && _d2 != 0.)
            {
                const double l2 = _nb.vectorial(_pb - p) / _d2;
                if (l1 != l2)
                    return std::fabs(l1) / std::fabs(l1 - l2);
            }
            const double denominator = _a->distance2D(p) / _b->ds();
            if (denominator > 0.)
                return std::fabs(l1) * std::sqrt(_chord2) / denominator;
        }
        return Channel::norm_proj(p, _pa, _pb);
    }

private:
    const ChannelPoint* _a;
    const ChannelPoint* _b;
    // Copies of the ends and their normals: read at every node, they stay
    // near this frame instead of being fetched from the points each time.
    Point2D _pa;
    Point2D _pb;
    Vector2D _na;
    Vector2D _nb;
    Vector2D _chord;
    double _chord2;
    bool _a_normal;
    bool _b_normal;
    double _d1; // the normals' cross products with the chord
    double _d2;
};

// What a section needs at each of its nodes, computed once per section.
struct SectionFrame
{
    SectionFrame(const ChannelPoint* first, const ChannelPoint* second)
        : cp1(first), cp2(second), across(*first, *second), fraction(first, second)
    {
        across.normalize();
        across.rotate_half_pi();
    }
    const ChannelPoint* cp1;
    const ChannelPoint* cp2;
    Vector2D across;
    SegmentFraction fraction;
};

// Elevation of the section's bed at p, whose clamped fraction along the
// segment is t: the interpolated top minus the parabola of the interpolated
// mean depth.
double section_elevation_at(const SectionFrame& frame, const Point2D& p, double t, double width,
                            double& depth)
{
    const ChannelPoint* cp1 = frame.cp1;
    const ChannelPoint* cp2 = frame.cp2;
    // *cp1 * (1 - t) + *cp2 * t in the plane, without the elevations' share of it.
    const Point2D& a = *cp1;
    const Point2D& b = *cp2;
    const double u = 1. - t;
    const Point2D q(a.get_abscissa() * u + b.get_abscissa() * t, a.get_ordinate() * u + b.get_ordinate() * t);
    MP_ASSERT_TEXT(cp1->getHmean() > 0. && cp2->getHmean() > 0.,
                   "cp1->getHmean() > 0. && cp2->getHmean() > 0.");
    const double h = mix(cp1->getHmean(), cp2->getHmean(), t);
    const double n = frame.across.scalar(p - q);
    const double d = MeanderCalculator::parabolic_cross_section_depth(n, width, h);
    MP_ASSERT_TEXT(!std::isnan(d), "!std::isnan(d)");
    depth = d;
    return mix(cp1->get_elevation(), cp2->get_elevation(), t) - d;
}

// The same, the fraction worked out here.
double section_elevation(const SectionFrame& frame, const Point2D& p, double width, double& depth)
{
    return section_elevation_at(frame, p, clamp01(frame.fraction.at(p)), width, depth);
}
} // namespace

// ---------------------------------------------------------------- depth

void Channel::polynomial_4_cross_section_calculate_coefficients()
{
    const double w2 = _half_width;
    const double h = _hmean;
    if (w2 == 0. && _tracer != nullptr)
        _tracer->error("Polynomial_4_section_calculate_coefficients : channel half width is null !");
    _poly[0] = 5. / (6. * w2);
    _poly[1] = 1.25 * h;
    _poly[2] = 3. * h;
    _poly[3] = -3. * h / (w2 * w2);
    _poly[4] = -1.25 * h / (w2 * w2 * w2 * w2);
}

double Channel::polynomial_4_cross_section_depth(double curvature, double n) const
{
    if (std::fabs(n) > _half_width)
    {
        if (_tracer != nullptr)
            _tracer->error("Polynomial_4_section_depth : normal abscissa given falls outside the channel !");
        return 0.;
    }
    if (_half_width == 0.)
    {
        if (_tracer != nullptr)
            _tracer->error("Polynomial_4_section_depth : channel half width is null !");
        return 0.;
    }
    // Symmetric quartic of mean depth h, skewed towards the outer bank by the curvature.
    const double c = clamped_curvature(curvature, _poly[0]);
    return _poly[1] + _poly[2] * c * n + _poly[3] * c * n * n * n + _poly[4] * n * n * n * n;
}

double Channel::maximum_polynomial_4_cross_section_depth(const ChannelPoint* cp) const
{
    const double w2 = _half_width;
    const double h = _hmean;
    if (_tracer != nullptr)
    {
        if (w2 == 0.)
            _tracer->error("Maximum_polynomial_4_section_depth : channel half width is null !");
        if (h == 0.)
            _tracer->error("Maximum_polynomial_4_section_depth : channel depth is null !");
    }
    // Root of the derivative of the quartic, by Cardano's formula.
    const double c = clamped_curvature(cp->getC(), _poly[0]);
    const double p = -3. * h * c;
    const double q = p / (2.5 * h / w2);
    const double a = 0.5 * q * w2;
    const double b = 2. * a * (a * a - w2 * w2 / 2.);
    const double d = std::sqrt(std::fabs(1. - q * q)) * a * w2 * w2;
    const double t1 = d > b ? -signed_cbrt((d - b) / 2.) : signed_cbrt((b - d) / 2.);
    const double t2 = b + d >= 0. ? signed_cbrt((b + d) / 2.) : -signed_cbrt(-(b + d) / 2.);
    const double n = a + t1 + t2;
    return _poly[1] + _poly[2] * c * n + _poly[3] * c * n * n * n + _poly[4] * n * n * n * n;
}

double Channel::cross_section_depth_old(double n, double h) const
{
    return MeanderCalculator::parabolic_cross_section_depth(n, width(), h < 0. ? _hmean : h);
}

// ---------------------------------------------------------------- along a segment

double Channel::norm_proj_new(const Point2D& p, const ChannelPoint* a, const ChannelPoint* b) const
{
    return SegmentFraction(a, b).at(p);
}

double Channel::get_elevation_at_point(const Point2D& p, const ChannelPoint* cp1,
                                       const ChannelPoint* cp2) const
{
    const double t = clamp01(norm_proj_new(p, cp1, cp2));
    return mix(cp1->get_elevation(), cp2->get_elevation(), t);
}

double Channel::get_bed_elevation_at_point(const Point2D& p, const ChannelPoint* cp1,
                                           const ChannelPoint* cp2) const
{
    const double t = clamp01(norm_proj_new(p, cp1, cp2));
    return mix(cp1->get_elevation(), cp2->get_elevation(), t) -
           mix(cp1->getFlowHmax(), cp2->getFlowHmax(), t);
}

double Channel::get_curvature_at_point(const Point2D& p, const ChannelPoint* cp1,
                                       const ChannelPoint* cp2) const
{
    const double t = clamp01(norm_proj_new(p, cp1, cp2));
    return mix(cp1->getC(), cp2->getC(), t);
}

Flow Channel::get_flow_at_point(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const
{
    const double t = clamp01(norm_proj_new(p, cp1, cp2));
    return Flow::weighted_sum(cp1->flow(), 1. - t, cp2->flow(), t);
}

int Channel::point_at_outer_side(const Point2D& p, const ChannelPoint* cp1, const ChannelPoint* cp2) const
{
    const double c = get_curvature_at_point(p, cp1, cp2);
    const double s = static_cast<double>(get_side(*cp1, *cp2, p));
    if (s * c < 0.)
        return 1;
    if (s * c > 0.)
        return -1;
    return 0;
}

double Channel::cross_section_elevation(const Domain* domain, int ix, int iy, const ChannelPoint* cp1,
                                        const ChannelPoint* cp2, double& depth) const
{
    return section_elevation(SectionFrame(cp1, cp2), domain->grid2Rel(ix, iy), width(), depth);
}

// ---------------------------------------------------------------- grid nodes

namespace
{
void section_corners(const ChannelPoint* cp1, const ChannelPoint* cp2, double half_width,
                     Point2D (&corners)[4])
{
    corners[0] = *cp1 + cp1->normal() * half_width;
    corners[1] = *cp2 + cp2->normal() * half_width;
    corners[2] = *cp2 - cp2->normal() * half_width;
    corners[3] = *cp1 - cp1->normal() * half_width;
}
} // namespace

void Channel::find_grid_points_for_section(const ChannelPoint* cp1, const ChannelPoint* cp2,
                                           const GridParams& geom,
                                           std::vector<std::pair<int, int>>& cells) const
{
    Point2D corners[4];
    section_corners(cp1, cp2, _half_width, corners);
    geom.nodes_in_quad(corners, cells);
}

const std::vector<std::pair<int, int>>& Channel::section_nodes(std::size_t k, const ChannelPoint* cp1,
                                                               const ChannelPoint* cp2,
                                                               const GridParams& geom) const
{
    if (_section_nodes.size() <= k)
        _section_nodes.resize(k + 1);
    SectionNodes& entry = _section_nodes[k];
    Point2D corners[4];
    section_corners(cp1, cp2, _half_width, corners);
    const double key[SectionNodes::KEY_SIZE] = {corners[0].get_abscissa(),
                                                corners[0].get_ordinate(),
                                                corners[1].get_abscissa(),
                                                corners[1].get_ordinate(),
                                                corners[2].get_abscissa(),
                                                corners[2].get_ordinate(),
                                                corners[3].get_abscissa(),
                                                corners[3].get_ordinate(),
                                                geom.getX0(),
                                                geom.getY0(),
                                                geom.getDx(),
                                                geom.getDy(),
                                                static_cast<double>(geom.getNx()),
                                                static_cast<double>(geom.getNy())};
    // Bit for bit: the nodes depend on nothing else.
    if (entry.known && same_bits(entry.key, key, SectionNodes::KEY_SIZE))
        return entry.nodes;
    geom.nodes_in_quad(corners, entry.nodes);
    std::memcpy(entry.key, key, sizeof key);
    entry.known = true;
    return entry.nodes;
}

void Channel::find_grid_points(const GridParams& geom, std::vector<ChannelGridPoint>& out) const
{
    collect_grid_points(geom, out, false);
}

void Channel::find_grid_points_new(const GridParams& geom, std::vector<ChannelGridPoint>& out) const
{
    collect_grid_points(geom, out, true);
}

namespace
{
constexpr std::size_t INPUTS_HEAD = 8;
constexpr std::size_t INPUTS_PER_POINT = 6;

// INPUTS_PER_POINT values.
void point_inputs(const ChannelPoint* cp, double* values)
{
    values[0] = cp->get_abscissa();
    values[1] = cp->get_ordinate();
    values[2] = cp->normal().get_abscissa();
    values[3] = cp->normal().get_ordinate();
    values[4] = cp->ds();
    values[5] = cp->get_elevation();
}
} // namespace

void Channel::head_inputs(const GridParams& geom, double* values) const
{
    // The grid points' flows are built with the calculator.
    double calculator = 0.;
    static_assert(sizeof(_mc) <= sizeof(calculator), "a pointer fits in a double's bits");
    std::memcpy(&calculator, &_mc, sizeof(_mc));
    values[0] = calculator;
    values[1] = _half_width;
    values[2] = geom.getX0();
    values[3] = geom.getY0();
    values[4] = geom.getDx();
    values[5] = geom.getDy();
    values[6] = static_cast<double>(geom.getNx());
    values[7] = static_cast<double>(geom.getNy());
}

void Channel::grid_points_inputs(const GridParams& geom, std::vector<double>& out) const
{
    // Written in place, at the length the point count gives (checked as the
    // chain is walked), and reusing the record's storage.
    out.resize(INPUTS_HEAD + INPUTS_PER_POINT * static_cast<std::size_t>(std::max(_nb_cp, 0)));
    head_inputs(geom, out.data());
    std::size_t end = INPUTS_HEAD;
    for (const ChannelPoint* cp = _first; cp != nullptr; cp = cp->next(), end += INPUTS_PER_POINT)
    {
        if (end + INPUTS_PER_POINT > out.size())
            out.resize(end + INPUTS_PER_POINT);
        point_inputs(cp, out.data() + end);
    }
    out.resize(end);
}

// The nodes under each section with the channel's elevation there; `full`
// adds the bed, the curvature, the flow and the side.
void Channel::collect_grid_points(const GridParams& geom, std::vector<ChannelGridPoint>& out, bool full) const
{
    // With `full`, the points already in `out` are written over, so that
    // their flows keep their storage from one iteration to the next.
    if (!full)
        out.clear();
    std::size_t count = 0;
    if (_first == nullptr)
    {
        out.clear();
        return;
    }
    // Read once: the stores into `out` would make the compiler read them again at every node.
    const double dx = geom.getDx();
    const double dy = geom.getDy();
    const Point2D origin = geom.getOrigin();
    std::size_t k = 0;
    for (const ChannelPoint* cp = _first->next(); cp != nullptr; cp = cp->next(), ++k)
    {
        const ChannelPoint* prev = cp->prev();
        const SegmentFraction fraction(prev, cp);
        const double z1 = prev->get_elevation();
        const double z2 = cp->get_elevation();
        for (const auto& cell : section_nodes(k, prev, cp, geom))
        {
            const Point2D position = Point2D(cell.first * dx, cell.second * dy) + origin;
            // One fraction along the segment serves every field (the *_at_point helpers
            // would each compute it again).
            const double t = clamp01(fraction.at(position));
            const double z = mix(z1, z2, t);
            // Built in place: a grid point carries a whole flow.
            ChannelGridPoint& point = count < out.size() ? out[count] : out.emplace_back(_mc);
            count++;
            point.ix = cell.first;
            point.iy = cell.second;
            point.z = z;
            if (full)
            {
                point.bed = mix(z1, z2, t) - mix(prev->getFlowHmax(), cp->getFlowHmax(), t);
                const double c = mix(prev->getC(), cp->getC(), t);
                point.curvature = c;
                point.flow.assign_weighted_sum(prev->flow(), 1. - t, cp->flow(), t);
                const double s = static_cast<double>(get_side(*prev, *cp, position));
                point.side = s * c < 0. ? 1 : (s * c > 0. ? -1 : 0);
            }
        }
    }
    out.erase(out.begin() + static_cast<std::ptrdiff_t>(count), out.end());
}

void Channel::put_route_on_grid(Grid2D<std::pair<ChannelPoint*, ChannelPoint*>>& grid) const
{
    if (_first == nullptr)
        return;
    std::vector<std::pair<int, int>> cells;
    for (ChannelPoint* cp = _first->next(); cp != nullptr; cp = cp->next())
    {
        find_grid_points_for_section(cp->prev(), cp, grid, cells);
        for (const auto& cell : cells)
            grid.getObject(cell.first, cell.second) = std::make_pair(cp->prev(), cp);
    }
}

void Channel::section_vertices_2D(std::vector<double>& out) const
{
    out.clear();
    for (int k = 0; k <= SECTION_SAMPLES; k++)
    {
        const double n = _half_width * (2. * k / SECTION_SAMPLES - 1.);
        out.push_back(n);
        out.push_back(-cross_section_depth_old(n, -1.));
    }
}

// ---------------------------------------------------------------- moving channel

namespace
{
void prefetch_columns(const Domain& domain, const std::vector<std::pair<int, int>>& cells)
{
    for (const auto& cell : cells)
        domain.getObject(cell.first, cell.second).prefetch();
}

void prefetch_top_units(const Domain& domain, const std::vector<std::pair<int, int>>& cells)
{
    for (const auto& cell : cells)
        domain.getObject(cell.first, cell.second).prefetch_top_unit();
}
} // namespace

void Channel::update_section(Domain* domain, MassBalance* mb, const ChannelPoint* cp1,
                             const ChannelPoint* cp2, unsigned int age, Facies facies, bool erode,
                             double limit, const std::vector<std::pair<int, int>>& cells)
{
    const bool ghost = facies == facies_of(HemipelagicPlug::_fd, PLUG_CLASS);
    const SectionFrame frame(cp1, cp2);
    for (const auto& cell : cells)
    {
        double d;
        const double e = section_elevation(frame, domain->grid2Rel(cell.first, cell.second), width(), d);
        DepositionSet& stack = domain->getObject(cell.first, cell.second);
        const double top = stack.get_topo_rel(false);
        if (ghost)
        {
            // A ghost channel fills its bed slowly, by at most `limit` per pass.
            const double channel_top = e + d;
            const double reach = top + limit;
            if (reach > channel_top)
            {
                stack.water_depth(0.);
                stack.deposit_up_to(channel_top, facies, age, mb);
            }
            else
            {
                stack.water_depth(channel_top - top - limit);
                stack.deposit_up_to(reach, facies, age, mb);
            }
        }
        else if (top > e)
        {
            if (erode)
            {
                stack.water_depth(d);
                stack.erode_down_to(e, mb);
            }
        }
        else if (!stack.is_under_channel())
        {
            stack.water_depth(d);
            stack.deposit_up_to(e, facies, age, mb);
        }
        stack.set_under_channel(true);
    }
}

// The parameters are read once a pass, not once a section: each read is a look-up by name.
struct Channel::VariableGrainPass
{
    explicit VariableGrainPass(const MeanderCalculator* mc) : flow(mc)
    {
        const iParameters* params = mc->parameters();
        optim = params->usingVarPBGrainOptim();
        proxy = params->usingVarPBGrainProxy();
        quick = params->getParamBool("GR_QUICK_C0");
        coarsest = Facies::class_to_granulo(params->getParamInt("GR_PB_OPTIM_MAX"));
        threshold = params->getParamDouble("GR_THRESHOLD");
    }
    bool optim;
    bool proxy;
    bool quick;
    double coarsest;
    double threshold;
    std::vector<double> grains;
    std::vector<double> heights;
    std::vector<double> profile_grains;
    std::vector<double> profile_heights;
    // Each node's flow, written whole at each node.
    Flow flow;
};

void Channel::update_section_new(Domain* domain, MassBalance* mb, const ChannelPoint* cp1,
                                 const ChannelPoint* cp2, unsigned int age, Facies facies, bool erode,
                                 const std::vector<std::pair<int, int>>& cells, VariableGrainPass& pass)
{
    const bool optim = pass.optim;
    const bool proxy = pass.proxy;
    const bool quick = pass.quick;
    const double coarsest = pass.coarsest;
    const double threshold = pass.threshold;
    const bool point_bar = facies == facies_of(PointBar::_fd, POINT_BAR_CLASS);
    const bool lag = facies == facies_of(ChannelLag::_fd, CHANNEL_LAG_CLASS);

    std::vector<double>& grains = pass.grains;
    std::vector<double>& heights = pass.heights;
    std::vector<double>& profile_grains = pass.profile_grains;
    std::vector<double>& profile_heights = pass.profile_heights;
    const SectionFrame frame(cp1, cp2);
    Flow& flow = pass.flow;
    for (const auto& cell : cells)
    {
        const int ix = cell.first;
        const int iy = cell.second;
        const Point2D p = domain->grid2Rel(ix, iy);
        // One fraction along the segment for every field (the *_at_point helpers
        // would each compute it again).
        const double t = clamp01(frame.fraction.at(p));
        double d;
        double e = section_elevation_at(frame, p, t, width(), d);
        const double bed = mix(cp1->get_elevation(), cp2->get_elevation(), t) -
                           mix(cp1->getFlowHmax(), cp2->getFlowHmax(), t);
        DepositionSet& stack = domain->getObject(ix, iy);
        double top = stack.get_topo_rel(false);
        const double hflow = e + d - bed;
        MP_ASSERT_TEXT(hflow >= d - MP_EPSILON, "hflow >= wd - MP_EPSILON");

        grains.clear();
        heights.clear();
        if (d > THALWEG_RATIO * hflow)
        {
            // At the thalweg the bed keeps its coarsest load and rises slowly.
            grains.push_back(optim ? coarsest : COARSE_GRAIN);
            top = std::min(top + THALWEG_RISE * hflow, e);
            heights.push_back(top - bed);
        }
        if (point_bar)
        {
            // A bar does not build above its dry neighbours.
            const double dry = domain->get_topo_neigh_dry(ix, iy);
            if (e > dry)
            {
                d = e - dry;
                e = dry;
            }
        }
        if (top >= e)
        {
            if (erode)
            {
                stack.water_depth(d);
                stack.erode_down_to(e, mb);
            }
            // Marked as written, so that the fill of the nodes the channel has left passes it by.
            stack.set_under_channel(true);
            continue;
        }
        if (stack.is_under_channel())
            continue;

        // get_flow_at_point, into the storage of the section's one flow.
        flow.assign_weighted_sum(cp1->flow(), 1. - t, cp2->flow(), t);
        const double a = top - bed;
        const double b = e - bed;
        if (proxy)
            get_grainsize_profile_proxy(flow, a, b, profile_grains, profile_heights);
        else
        {
            // point_at_outer_side and get_curvature_at_point.
            const double curvature = mix(cp1->getC(), cp2->getC(), t);
            const double s = static_cast<double>(get_side(*cp1, *cp2, p));
            const int side = s * curvature < 0. ? 1 : (s * curvature > 0. ? -1 : 0);
            if (optim)
                get_grainsize_profile_optim(flow, curvature, side, a, b, hflow, profile_grains,
                                            profile_heights);
            else
            {
                flow.cmp_c0(side, quick);
                get_grainsize_profile(flow, curvature, side, a, b, threshold, profile_grains,
                                      profile_heights);
            }
        }
        grains.insert(grains.end(), profile_grains.begin(), profile_grains.end());
        heights.insert(heights.end(), profile_heights.begin(), profile_heights.end());

        stack.water_depth(d);
        if (!grains.empty())
        {
            for (std::size_t i = 0; i < grains.size(); i++)
                stack.deposit_up_to(bed + heights[i], facies, grains[i], age, mb);
        }
        else
        {
            const double g = lag ? (optim ? coarsest : COARSE_GRAIN) : BAR_GRAIN;
            stack.deposit_up_to(e, facies, g, age, mb);
        }
        stack.set_under_channel(true);
    }
}

void Channel::make_point_bar(Domain* domain, MassBalance* mb, unsigned int age, bool erode)
{
    lay_sections(domain, mb, age, facies_of(PointBar::_fd, POINT_BAR_CLASS), erode);
}

void Channel::make_channel_lag(Domain* domain, MassBalance* mb, unsigned int age)
{
    lay_sections(domain, mb, age, facies_of(ChannelLag::_fd, CHANNEL_LAG_CLASS), true);
}

void Channel::lay_sections(Domain* domain, MassBalance* mb, unsigned int age, Facies facies, bool erode)
{
    if (_first == nullptr)
        return;
    const bool variable = _mc->parameters()->usingVariablePBGrainsize();
    std::unique_ptr<VariableGrainPass> pass;
    if (variable)
        pass = std::make_unique<VariableGrainPass>(_mc);
    ChannelPoint* cp = _first->next();
    if (cp == nullptr)
        return;
    // A column's fields come from memory, and only then its top unit: the
    // nodes of each section are found two sections ahead, their columns
    // asked of the cache then and their top units one section later, so
    // that each wait overlaps the work on the sections before.
    prefetch_columns(*domain, section_nodes(0, _first, cp, *domain));
    if (cp->next() != nullptr)
        prefetch_columns(*domain, section_nodes(1, cp, cp->next(), *domain));
    prefetch_top_units(*domain, _section_nodes[0].nodes);
    for (std::size_t k = 0; cp != nullptr; cp = cp->next(), ++k)
    {
        const ChannelPoint* next = cp->next();
        if (next != nullptr)
        {
            prefetch_top_units(*domain, _section_nodes[k + 1].nodes);
            if (next->next() != nullptr)
                prefetch_columns(*domain, section_nodes(k + 2, next, next->next(), *domain));
        }
        // Indexed again: finding the nodes ahead may have moved the entries.
        const auto& cells = _section_nodes[k].nodes;
        if (variable)
            update_section_new(domain, mb, cp->prev(), cp, age, facies, erode, cells, *pass);
        else
            update_section(domain, mb, cp->prev(), cp, age, facies, erode, 0.1, cells);
    }
}

void Channel::make_ghost_migration(Domain* domain, MassBalance* mb, unsigned int age, double thickness)
{
    if (_first == nullptr)
        return;
    const Facies facies = facies_of(HemipelagicPlug::_fd, PLUG_CLASS);
    std::size_t k = 0;
    for (ChannelPoint* cp = _first->next(); cp != nullptr; cp = cp->next(), ++k)
        update_section(domain, mb, cp->prev(), cp, age, facies, false, thickness,
                       section_nodes(k, cp->prev(), cp, *domain));
}

// ---------------------------------------------------------------- filling

void Channel::fill_section(Domain* domain, MassBalance* mb, const ChannelPoint* cp1, const ChannelPoint* cp2,
                           double fraction, unsigned int age)
{
    fraction = clamp01(fraction);
    const iParameters* params = _mc->parameters();
    double sand_class = SAND_PLUG_CLASS;
    if (params->usingVarPBGrainOptim())
    {
        const int lo = params->getParamInt("GR_PB_OPTIM_MIN");
        const int hi = params->getParamInt("GR_PB_OPTIM_MAX");
        sand_class = lo + static_cast<unsigned char>(hi - lo) * 0.5;
    }
    else if (params->usingVariablePBGrainsize())
        sand_class = params->getSedMedianClass();
    const Facies sand = facies_of(SandPlug::_fd, static_cast<unsigned char>(sand_class));
    const Facies plug = params->usingTurbiOrLobes() ? facies_of(HemipelagicPlug::_fd, PLUG_CLASS)
                                                    : facies_of(MudPlug::_fd, PLUG_CLASS);

    const SectionFrame frame(cp1, cp2);
    std::vector<std::pair<int, int>> cells;
    find_grid_points_for_section(cp1, cp2, *domain, cells);
    for (const auto& cell : cells)
    {
        double d;
        double e = section_elevation(frame, domain->grid2Rel(cell.first, cell.second), width(), d);
        DepositionSet& stack = domain->getObject(cell.first, cell.second);
        stack.water_depth(0.);
        // A stack already written at this age keeps what was laid on it.
        if (stack.get_topo_rel(false) > e && stack.get_age() != age)
            stack.erode_down_to(e, mb);
        if (fraction > 0.)
        {
            e += d * fraction;
            stack.deposit_up_to(e, sand, age, mb);
        }
        if (fraction < 1.)
        {
            e += (1. - fraction) * d;
            stack.deposit_up_to(e, plug, age, mb);
        }
    }
}

namespace
{
// Walks the sections from `a` to the one before the section ending at `b`,
// calling `visit(prev, p, cum)` with cum the abscissa of p counted from a.
template <typename Visit> void walk_reach(ChannelPoint* a, ChannelPoint* b, Visit visit)
{
    if (a == nullptr || a == b)
        return;
    double cum = 0.;
    for (ChannelPoint* p = a->next(); p != nullptr && p != b; p = p->next())
    {
        cum += p->ds();
        visit(p->prev(), p, cum);
    }
}
} // namespace

void Channel::fill_channel(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b,
                           unsigned int age, double decay)
{
    walk_reach(a, b,
               [&](ChannelPoint* prev, ChannelPoint* p, double cum)
               { fill_section(domain, mb, prev, p, std::exp(-cum * decay), age); });
}

void Channel::fill_oxbow(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b, unsigned int age,
                         double decay)
{
    if (a == nullptr || b == nullptr)
        return;
    // Sand at both ends of the cut-off loop, mud towards its middle.
    const double length = b->s() - a->s();
    walk_reach(a, b,
               [&](ChannelPoint* prev, ChannelPoint* p, double cum)
               {
                   const double f =
                       cum < length / 2. ? std::exp(-cum * decay) : std::exp(-(length - cum) * decay);
                   fill_section(domain, mb, prev, p, f, age);
               });
}

void Channel::fill_channel_new(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b,
                               unsigned int age, AddPlug plug)
{
    if (a == nullptr || a == b || a->next() == nullptr)
        return;
    const double w = width();
    const double length = (b != nullptr ? b->s() : _last->s()) - a->s();
    double upstream = 0.;
    double downstream = 0.;
    double scale = 1.;
    if (plug == ADD_PLUG_UPSTREAM)
    {
        upstream = std::min(UPSTREAM_PLUG_WIDTHS * w, length);
        scale = UPSTREAM_PLUG_WIDTHS * w;
    }
    else if (plug == ADD_PLUG_DOWNSTREAM)
    {
        downstream = std::min(DOWNSTREAM_PLUG_WIDTHS * w, length);
        scale = DOWNSTREAM_PLUG_WIDTHS * w;
    }
    double f = 0.;
    walk_reach(a, b,
               [&](ChannelPoint* prev, ChannelPoint* p, double cum)
               {
                   if (cum < upstream)
                       f = std::exp(-PLUG_DECAY * cum / scale);
                   else if (cum > length - downstream)
                       f = std::exp(-PLUG_DECAY * (length - cum) / scale);
                   fill_section(domain, mb, prev, p, f, age);
               });
}

void Channel::fill_oxbow_new(Domain* domain, MassBalance* mb, ChannelPoint* a, ChannelPoint* b,
                             unsigned int age)
{
    if (a == nullptr || b == nullptr)
        return;
    const double w = width();
    const double length = b->s() - a->s();
    double upstream;
    double downstream;
    if (length > (UPSTREAM_PLUG_WIDTHS + DOWNSTREAM_PLUG_WIDTHS) * w)
    {
        upstream = UPSTREAM_PLUG_WIDTHS * w;
        downstream = DOWNSTREAM_PLUG_WIDTHS * w;
    }
    else if (length > UPSTREAM_PLUG_WIDTHS * w)
    {
        upstream = length - DOWNSTREAM_PLUG_WIDTHS * w;
        downstream = DOWNSTREAM_PLUG_WIDTHS * w;
    }
    else
    {
        upstream = length / 2.;
        downstream = length / 2.;
    }
    double f = 0.;
    walk_reach(a, b,
               [&](ChannelPoint* prev, ChannelPoint* p, double cum)
               {
                   if (cum < upstream)
                       f = std::exp(-PLUG_DECAY * cum / upstream);
                   else if (cum > length - downstream)
                       f = std::exp(-PLUG_DECAY * (length - cum) / (DOWNSTREAM_PLUG_WIDTHS * w));
                   fill_section(domain, mb, prev, p, f, age);
               });
}

void Channel::dry_section(Domain* domain, const ChannelPoint* cp1, const ChannelPoint* cp2)
{
    std::vector<std::pair<int, int>> cells;
    find_grid_points_for_section(cp1, cp2, *domain, cells);
    for (const auto& cell : cells)
        domain->getObject(cell.first, cell.second).water_depth(0.);
}

void Channel::dry_channel(Domain* domain, ChannelPoint* a, ChannelPoint* b)
{
    walk_reach(a, b, [&](ChannelPoint* prev, ChannelPoint* p, double) { dry_section(domain, prev, p); });
}

// ---------------------------------------------------------------- abandonment

void Channel::abandon_between(ChannelPoint* a, ChannelPoint* b, Domain* domain, MassBalance* mb,
                              unsigned int age, double decay)
{
    if (decay < 0.)
        dry_channel(domain, a, b);
    else if (_mc->parameters()->usingOldFilling())
        fill_oxbow(domain, mb, a, b, age, decay / _half_width);
    else
        fill_oxbow_new(domain, mb, a, b, age);
    delete_between(a, b);
}

void Channel::abandon(Domain* domain, MassBalance* mb, unsigned int age, AddPlug plug, double decay)
{
    if (_first == nullptr)
        return;
    if (decay < 0.)
        dry_channel(domain, _first, _last);
    else if (_mc->parameters()->usingOldFilling())
        fill_channel(domain, mb, _first, _last, age, decay / _half_width);
    else
        fill_channel_new(domain, mb, _first, _last, age, plug);
    delete_path();
}

void Channel::abandon_from(ChannelPoint* cp, Domain* domain, MassBalance* mb, unsigned int age, double decay)
{
    if (cp == nullptr)
        return;
    if (decay < 0.)
        dry_channel(domain, cp, _last);
    else if (_mc->parameters()->usingOldFilling())
        fill_channel(domain, mb, cp, _last, age, decay / _half_width);
    else
        fill_channel_new(domain, mb, cp, _last, age, ADD_PLUG_UPSTREAM);
    delete_between(cp, _last);
}

// ---------------------------------------------------------------- lowering

void Channel::move_section_down(Domain* domain, MassBalance* mb, const ChannelPoint* cp1,
                                const ChannelPoint* cp2, double d)
{
    const SectionFrame frame(cp1, cp2);
    std::vector<std::pair<int, int>> cells;
    find_grid_points_for_section(cp1, cp2, *domain, cells);
    for (const auto& cell : cells)
    {
        double depth;
        const double e = section_elevation(frame, domain->grid2Rel(cell.first, cell.second), width(), depth);
        DepositionSet& stack = domain->getObject(cell.first, cell.second);
        stack.water_depth(depth > d ? depth - d : 0.);
        stack.erode_down_to(e, mb);
    }
}

void Channel::move_channel_down(Domain* domain, MassBalance* mb, double depth)
{
    check_three_points();
    const double hmax = MeanderCalculator::hmax_from_hmean(_hmean0);
    if (depth >= hmax)
        return;
    const double d = hmax - depth;
    for (ChannelPoint* cp = _first->next(); cp != nullptr; cp = cp->next())
        move_section_down(domain, mb, cp->prev(), cp, d);
    for (ChannelPoint* cp = _first; cp != nullptr; cp = cp->next())
        cp->set_elevation(cp->get_elevation() - d);
}
