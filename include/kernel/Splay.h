#pragma once
// A crevasse splay seen from above: a lobe in a frame with its origin at the
// levee breach, built as nested growth contours, and the fan of small
// distributary channels of a mature splay.

#include "kernel/ChannelGrid.h"
#include "kernel/DistributionGenerator.h"
#include "kernel/Point2D.h"
#include "kernel/Vector2D.h"

#include <vector>

class Domain;
class MassBalance;
class MeanderCalculator;
class SeedGenerator;

// Family id of a background deposit: none, draping or pelagic.
enum DrapingFacies
{
    DRAPING_NONE = 0,
    DRAPING_DRAPING = 12,
    DRAPING_PELAGIC = 13
};

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
    void update(Domain* domain, MassBalance* mb, unsigned int age, int family, std::vector<IPos>* out = nullptr);
    void mature(Domain* domain, MassBalance* mb, unsigned int age, double Q, double S, double Cf, double W,
                double p, std::vector<IPos>* out = nullptr);
};
