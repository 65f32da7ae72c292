#include "kernel/network/Splay.h"

#include "kernel/common/Assert.h"
#include "kernel/common/Facies.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/domain/Domain.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr int NB_CONTOURS = 20;
constexpr double CONTOUR_STEP = 0.05;
constexpr int MAX_DISTRIBUTARIES = 13;
constexpr double GRAVITY = 9.81;
// A distributary never runs longer than this many lobe lengths, even if it circles.
constexpr double MAX_COURSE_IN_LENGTHS = 10.;

// Growth stage of the contour at level index k (level k * 0.05).
double stage(int k)
{
    return 1.05 - k * CONTOUR_STEP;
}

unsigned char splay_family(int family)
{
    if (family == CrevasseI::_fd.id())
        return CrevasseI::_fd.id();
    if (family == CrevasseII::_fd.id())
        return CrevasseII::_fd.id();
    return CrevasseChannel::_fd.id();
}

void add_node(std::vector<IPos>* out, int i, int j)
{
    if (out != nullptr)
        out->push_back(IPos{i, j});
}

} // namespace

Splay::Splay(const Point2D& point, const Vector2D& dir, double length, double aspect, double level,
             double thick, double apex_ratio, double neck, double neck_length, double neck_sharpness,
             SeedGenerator* seed, MeanderCalculator* mc)
    : _point(point), _dir(dir), _zlevel(level), _length(length), _aspect(aspect), _thick(thick),
      _apex_ratio(apex_ratio), _neck(neck), _neck_length(neck_length), _neck_sharpness(neck_sharpness),
      _maxgr(Facies::class_to_granulo(11)), _mingr(Facies::class_to_granulo(8)), _seed(seed), _mc(mc),
      _gauss(seed, 0., 0.001), _uniform(seed, 0., 1.), _discharge_share(seed, 0.08, 0.09)
{
    _dir.normalize();
}

double Splay::dilate(double x, double l) const
{
    if (l == 0.)
        l = _length;
    const double a = _apex_ratio;
    if (x < a * l)
        return x / (2. * a);
    return (l + (x - a * l) / (1. - a)) / 2.;
}

double Splay::bump(double x, double t) const
{
    return (1. + std::tanh(-_neck_sharpness * (x - _neck_length * t * _length))) / 2.;
}

double Splay::ordinate(double x, double t) const
{
    double l = t * _length;
    if (l == 0.)
        l = _length;
    const double d = dilate(x, l);
    const double b = bump(x, t);
    const double neck = _length * _neck;
    const double y2 = (b / 4.) * neck * neck + (1. - b) * _aspect * _aspect * d * (l - d);
    return std::sqrt(std::max(0., y2));
}

double Splay::thickness(double x, double y) const
{
    const double L = _length;
    const double ay = std::fabs(y);
    if (x < 0. || x > L || ay > L * _aspect)
        return 0.;
    const double y0 = ordinate(x, 1.);
    int k = NB_CONTOURS;
    while (k > 0 && x > L * stage(k))
        --k;
    double m = (k != 0) ? std::min(y0, ordinate(x, stage(k))) : y0;
    if (ay <= m)
        return k * CONTOUR_STEP * _thick;
    while (k > 0)
    {
        --k;
        while (k > 0 && x > L * stage(k))
            --k;
        if (k == 0)
            return 0.;
        const double c = std::min(y0, ordinate(x, stage(k)));
        if (c <= m)
            continue;
        if (ay <= c)
            return k * CONTOUR_STEP * _thick;
        m = c;
    }
    return 0.;
}

void Splay::grainsize_distribution(int grmax, int grmin, double z_halfgr)
{
    MP_ASSERT_TEXT(
        grmax <= 15 && grmin <= 15 && z_halfgr > 0. && z_halfgr < 1.,
        "grmax <= FACIES_MAX_GRAIN && grmin <= FACIES_MAX_GRAIN && z_halfgr > 0. && z_halfgr < 1.");
    MP_ASSERT(grmax >= grmin);
    _maxgr = Facies::class_to_granulo(grmax);
    _mingr = Facies::class_to_granulo(grmin);
    _halfgr = z_halfgr;
}

int Splay::grainsize(double r) const
{
    MP_ASSERT_TEXT(r >= 0. && r <= 1., "z_ratio >= 0. && z_ratio <= 1.");
    const double m = (_maxgr + _mingr) / 2.;
    double gr;
    if (r < _halfgr)
        gr = m + (m - _mingr) * (r - _halfgr) / _halfgr;
    else
        gr = m + (_maxgr - m) * (r - _halfgr) / (1. - _halfgr);
    MP_ASSERT(gr >= _mingr && gr <= _maxgr);
    return Facies::granulo_to_class(gr);
}

void Splay::domain_elevation(const Domain* domain, const Point2D& p, double& z, Vector2D& slope)
{
    const int nx = domain->getNx();
    const int ny = domain->getNy();
    const Point2D g = domain->rel2Grid(p, false);
    const double gx = g.get_abscissa();
    const double gy = g.get_ordinate();
    if (gx < 0. || gy < 0. || gx > nx - 1 || gy > ny - 1)
    {
        // Outside, the nearest border node holds the elevation and the land is taken as level.
        const int i = std::clamp(static_cast<int>(std::lround(gx)), 0, nx - 1);
        const int j = std::clamp(static_cast<int>(std::lround(gy)), 0, ny - 1);
        z = domain->getObject(i, j).get_topo_rel(true);
        slope = Vector2D(0., 0.);
        return;
    }
    const int i0 = std::min(static_cast<int>(std::floor(gx)), std::max(nx - 2, 0));
    const int j0 = std::min(static_cast<int>(std::floor(gy)), std::max(ny - 2, 0));
    const int i1 = std::min(i0 + 1, nx - 1);
    const int j1 = std::min(j0 + 1, ny - 1);
    const double u = gx - i0;
    const double v = gy - j0;
    const double z00 = domain->getObject(i0, j0).get_topo_rel(true);
    const double z10 = domain->getObject(i1, j0).get_topo_rel(true);
    const double z01 = domain->getObject(i0, j1).get_topo_rel(true);
    const double z11 = domain->getObject(i1, j1).get_topo_rel(true);
    z = z00 * (1. - u) * (1. - v) + z10 * u * (1. - v) + z01 * (1. - u) * v + z11 * u * v;
    slope = Vector2D(((z00 - z10) * (1. - v) + (z01 - z11) * v) / domain->getDx(),
                     ((z00 - z01) * (1. - u) + (z10 - z11) * u) / domain->getDy());
}

void Splay::update(Domain* domain, MassBalance* mb, unsigned int age, int family, std::vector<IPos>* out)
{
    if (out != nullptr)
        out->clear();
    const double half = _length * _aspect;
    const Vector2D normal(-_dir.get_ordinate(), _dir.get_abscissa());
    const Point2D end(_point.get_abscissa() + _length * _dir.get_abscissa(),
                      _point.get_ordinate() + _length * _dir.get_ordinate());
    double xmin = MP_MAX_REAL_VALUE, xmax = MP_MIN_REAL_VALUE, ymin = MP_MAX_REAL_VALUE,
           ymax = MP_MIN_REAL_VALUE;
    for (const Point2D& c : {_point, end})
        for (double side : {-1., 1.})
        {
            const double x = c.get_abscissa() + side * half * normal.get_abscissa();
            const double y = c.get_ordinate() + side * half * normal.get_ordinate();
            xmin = std::min(xmin, x);
            xmax = std::max(xmax, x);
            ymin = std::min(ymin, y);
            ymax = std::max(ymax, y);
        }
    const double dx = domain->getDx();
    const double dy = domain->getDy();
    const int imin = std::max(0, static_cast<int>(std::ceil(xmin / dx)));
    const int imax = std::min(domain->getNx() - 1, static_cast<int>(std::floor(xmax / dx)));
    const int jmin = std::max(0, static_cast<int>(std::ceil(ymin / dy)));
    const int jmax = std::min(domain->getNy() - 1, static_cast<int>(std::floor(ymax / dy)));
    const unsigned char fam = splay_family(family);
    for (int i = imin; i <= imax; ++i)
        for (int j = jmin; j <= jmax; ++j)
        {
            const Vector2D rel(_point, Point2D(i * dx, j * dy));
            const double x = _dir.scalar(rel);
            const double y = _dir.vectorial(rel);
            const double th = thickness(x, y);
            if (th == 0.)
                continue;
            DepositionSet& set = domain->getObject(i, j);
            bool touched = false;
            // The neck scours a trench down to one full thickness below the lobe's level.
            if (x < _neck_length * _length && set.get_ztop() > _zlevel - _thick)
            {
                set.erode_down_to(_zlevel - _thick, mb);
                touched = true;
            }
            if (set.get_ztop() < _zlevel && set.water_depth() == 0.)
            {
                const Facies facies(fam, static_cast<unsigned char>(grainsize(th / _thick)));
                if (set.get_ztop() + th >= _zlevel)
                    set.deposit_up_to(_zlevel, facies, age, mb);
                else
                    set.deposit_thickness(th, facies, age, mb);
                set.set_under_channel(true);
                touched = true;
            }
            if (touched)
                add_node(out, i, j);
        }
}

bool Splay::inside_lobe(const Point2D& p) const
{
    const Vector2D rel(_point, p);
    const double x = _dir.scalar(rel);
    const double y = _dir.vectorial(rel);
    return x >= 0. && x < _length && ordinate(x, 1.) - std::fabs(y) > 0.;
}

void Splay::carve_section(Domain* domain, MassBalance* mb, unsigned int age, const Point2D& p0, double z0,
                          const Point2D& p1, double z1, double q, double w, double u,
                          std::vector<IPos>* out) const
{
    const Vector2D seg(p0, p1);
    const double len2 = seg.scalar(seg);
    if (len2 <= 0.)
        return;
    const double len = std::sqrt(len2);
    const double dx = domain->getDx();
    const double dy = domain->getDy();
    const double xmin = std::min(p0.get_abscissa(), p1.get_abscissa()) - w;
    const double xmax = std::max(p0.get_abscissa(), p1.get_abscissa()) + w;
    const double ymin = std::min(p0.get_ordinate(), p1.get_ordinate()) - w;
    const double ymax = std::max(p0.get_ordinate(), p1.get_ordinate()) + w;
    const double depth = q / (2. * w * u);
    const Facies facies(CrevasseChannel::_fd.id(), 8);
    for (int i = static_cast<int>(std::ceil(xmin / dx)); i <= static_cast<int>(std::floor(xmax / dx)); ++i)
        for (int j = static_cast<int>(std::ceil(ymin / dy)); j <= static_cast<int>(std::floor(ymax / dy));
             ++j)
        {
            if (!domain->is_on_grid_nearest(Point2D(i, j)))
                continue;
            const Vector2D rel(p0, Point2D(i * dx, j * dy));
            const double t = seg.scalar(rel) / len2;
            const double s = std::fabs(seg.vectorial(rel)) / len;
            if (t < 0. || t > 1. || s > w)
                continue;
            // A parabolic bed, deepest on the axis.
            const double d = std::max(0., depth * (1. - s * s / (w * w)));
            const double zbed = z0 + t * (z1 - z0) - d;
            DepositionSet& set = domain->getObject(i, j);
            if (zbed < set.get_ztop())
            {
                set.erode_down_to(zbed, mb);
                add_node(out, i, j);
            }
            if (set.get_ztop() < zbed + d)
            {
                set.deposit_up_to(zbed + d, facies, age, mb);
                set.set_under_channel(true);
            }
        }
}

void Splay::mature(Domain* domain, MassBalance* mb, unsigned int age, double Q, double S, double Cf, double W,
                   double p, std::vector<IPos>* out)
{
    (void)W;
    if (out != nullptr)
        out->clear();
    _nb_distributaries = 0;
    for (int c = 0;; ++c)
    {
        const double r = _uniform();
        if (r <= 1. - p || c == MAX_DISTRIBUTARIES)
            break;
        _nb_distributaries = c + 1;
        const double q = Q * _discharge_share();
        if (!(q > 0.) || !(S > 0.) || !(Cf > 0.))
            continue;
        const double w = 3.5 * std::pow(q, 0.46);
        const double u = std::cbrt(q * GRAVITY * S / (2. * w * Cf));
        Point2D last = _point;
        Point2D previous = _point;
        double zlast = _zlevel;
        double phi = std::atan2(_dir.get_ordinate(), _dir.get_abscissa());
        int npoints = 1;
        const int max_steps = static_cast<int>(MAX_COURSE_IN_LENGTHS * _length / w) + 1;
        for (int step = 0; step < max_steps; ++step)
        {
            const Point2D next(last.get_abscissa() + w * std::cos(phi),
                               last.get_ordinate() + w * std::sin(phi));
            double zdom;
            Vector2D slope;
            domain_elevation(domain, next, zdom, slope);
            const double znext = std::min(_zlevel, zdom);
            carve_section(domain, mb, age, last, zlast, next, znext, q, w, u, out);
            previous = last;
            last = next;
            zlast = znext;
            ++npoints;
            // The channel turns towards the lateral fall of the land.
            const double g = _gauss();
            const Vector2D normal(-std::sin(phi), std::cos(phi));
            phi += ((g + slope.scalar(normal)) * GRAVITY * w) / (u * u);
            if (!inside_lobe(last))
                break;
        }
        if (npoints < 2)
            continue;
        Splay tip(last, Vector2D(previous, last), 15. * w, 1., zlast, 0.1, 0.12, 0.1, 0., 1., _seed, _mc);
        tip.grainsize_distribution(10, 7, 0.5);
        std::vector<IPos> tip_nodes;
        tip.update(domain, mb, age, CrevasseChannel::_fd.id(), &tip_nodes);
        if (out != nullptr)
            out->insert(out->end(), tip_nodes.begin(), tip_nodes.end());
    }
}
