#pragma once
// The kernel objects a test stands on: the parameters and the services every
// kernel object draws on; for channel tests a flat reach of overbank; for
// network tests a grid of empty stacks and the network over it.

#include "kernel/channel/Channel.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/DistributionGenerator.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <memory>
#include <vector>

namespace testing_support
{

struct KernelParts
{
    Tracer tracer;
    Parameters params{&tracer};
    MeanderCalculator mc{&params, &tracer};
    SeedGenerator seed;
    MassBalance mb;
};

// A flat reach: a domain of REACH_TOP metres of overbank on every node, and
// channels along it at that elevation with their geometry and flow.
struct ReachParts : KernelParts
{
    static constexpr double REACH_TOP = 10.;

    std::unique_ptr<Domain> make_domain(int nx, int ny, double dx)
    {
        const Facies overbank(Overbank::_fd.id());
        auto domain = std::make_unique<Domain>(&mc, &seed, &mb, nullptr, dx, dx, nx, ny, Point2D(0., 0.), 0.,
                                               0., 0u, overbank);
        domain->set_margins(12, 12);
        domain->deposit_uniform_thickness(REACH_TOP, overbank, 0u);
        domain->update_slope(0.001, 0.);
        return domain;
    }

    std::unique_ptr<Channel> make_channel(const std::vector<Point3D>& points, double width = 30.)
    {
        auto channel = std::make_unique<Channel>(&mc, points);
        channel->init_geom(3., width, 375., 0.001);
        channel->init_flow();
        channel->update_flow_sinuosity();
        return channel;
    }

    // Points `step` apart along y = y0 from x0, at elevation REACH_TOP.
    static std::vector<Point3D> straight(int n, double x0, double step, double y0)
    {
        std::vector<Point3D> points;
        for (int i = 0; i < n; i++)
            points.emplace_back(x0 + i * step, y0, REACH_TOP);
        return points;
    }
};

struct NetworkParts : KernelParts
{
    // A channel flowing along x on a slope of 0.001, margins in channel widths.
    void set_channel(double width, double depth, double wavelength, double margin)
    {
        params.setParamDouble("CHNL_WIDTH", width);
        params.setParamDouble("CHNL_MAX_DEPTH", depth);
        params.setParamDouble("CHNL_WAVELENGTH", wavelength);
        params.setParamDouble("DOMAIN_SLOPE", 0.001);
        params.setParamDouble("CHNL_FLW_DIR", 90.);
        params.setParamDouble("CHNL_MARGIN", margin);
    }

    // A grid of nx x ny square nodes of dx at the origin, sloping along x,
    // its stacks empty on a base of `base`; any network on it is dropped.
    void make_domain(int nx, int ny, double dx, Facies base)
    {
        network.reset();
        domain = std::make_unique<Domain>(&mc, &seed, &mb, nullptr, dx, dx, nx, ny, Point2D(0., 0.), 0., 0.,
                                          0u, base);
        domain->update_slope(0.001, 90.);
    }

    void make_network()
    {
        network = std::make_unique<Network>(&mc, &params, domain.get(), &seed, &mb, &uniform);
        network->init_network();
    }

    UniformDistributionGenerator uniform{&seed, 0., 1.};
    std::unique_ptr<Domain> domain;
    std::unique_ptr<Network> network;
};

} // namespace testing_support
