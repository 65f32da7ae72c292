#pragma once
// Read-only view of the current channel, as the interface sees it.

#include "interface/iChannelPoint.h"

class iDomain;

class iChannel
{
public:
    virtual ~iChannel() {}

    virtual double width() const = 0;
    virtual double slope() const = 0;
    virtual double mean_elevation() const = 0;
    virtual double max_elevation() const = 0;
    virtual double min_elevation() const = 0;
    virtual double mean_flow_velocity() const = 0;
    // Computes the perturbation first when it is not known yet.
    virtual double mean_velocity_perturbation() = 0;
    virtual double mean_depth() const = 0;
    virtual double compute_real_sinuosity(bool use_domain, iDomain const* domain) = 0;
    virtual double compute_real_sinuosity_allen() = 0;
    virtual double compute_real_tortuosity(bool use_domain, iDomain const* domain) = 0;
    virtual double compute_real_wavelength() = 0;
    virtual double compute_sand_body_extension() = 0;
    virtual int number_of_points() const = 0;
    // 0 is the upstream end, -1 the downstream end.
    virtual iChannelPoint* get_point(int idx) const = 0;
    virtual void compute_velocity_perturbation() = 0;
    virtual void max_depth_limits(double& lo, double& hi) const = 0;
};
