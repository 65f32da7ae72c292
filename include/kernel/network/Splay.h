#pragma once
// A crevasse splay seen from above: a lobe in a frame with its origin at the
// levee breach, built as nested growth contours, and the fan of small
// distributary channels of a mature splay.

#include "kernel/channel/ChannelGrid.h"
#include "kernel/geometry/Point2D.h"
#include "kernel/geometry/Vector2D.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/ParameterCodes.h"

#include <vector>

class Domain;
class MassBalance;
class MeanderCalculator;
class SeedGenerator;

class Splay
{
public:
    Splay(const Point2D& point, const Vector2D& dir, double length, double aspect, double level, double thick,
          double apex_ratio, double neck, double neck_length, double neck_sharpness, SeedGenerator* seed,
          MeanderCalculator* mc);

    double dilate(double x, double l) const;
    double bump(double x, double t) const;
    double ordinate(double x, double t) const;
    double thickness(double x, double y) const;
    void grainsize_distribution(int grmax, int grmin, double z_halfgr);
    int grainsize(double r) const;
    static void domain_elevation(const Domain* domain, const Point2D& p, double& z, Vector2D& slope);
    void update(Domain* domain, MassBalance* mb, unsigned int age, int family,
                std::vector<IPos>* out = nullptr);
    void mature(Domain* domain, MassBalance* mb, unsigned int age, double Q, double S, double Cf, double W,
                double p, std::vector<IPos>* out = nullptr);

    const Point2D& get_point() const { return _point; }
    const Vector2D& get_direction() const { return _dir; }
    double get_level() const { return _zlevel; }
    double get_length() const { return _length; }
    double get_thick() const { return _thick; }
    double get_maxgr() const { return _maxgr; }
    double get_mingr() const { return _mingr; }
    // Number of distributaries drawn by the last call to mature.
    int get_nb_distributaries() const { return _nb_distributaries; }

private:
    // Cuts and refills the parabolic section of a distributary between two points of its course.
    void carve_section(Domain* domain, MassBalance* mb, unsigned int age, const Point2D& p0, double z0,
                       const Point2D& p1, double z1, double q, double w, double u,
                       std::vector<IPos>* out) const;
    // True while a point of the relative frame lies inside the full-grown outline.
    bool inside_lobe(const Point2D& p) const;

    Point2D _point;
    Vector2D _dir;
    double _zlevel;
    double _length;
    double _aspect;
    double _thick;
    double _apex_ratio;
    double _neck;
    double _neck_length;
    double _neck_sharpness;
    double _maxgr;
    double _mingr;
    double _halfgr = 0.5;
    int _nb_distributaries = 0;
    SeedGenerator* _seed;
    MeanderCalculator* _mc;
    GaussianDistributionGenerator _gauss;
    UniformDistributionGenerator _uniform;
    UniformDistributionGenerator _discharge_share;
};
