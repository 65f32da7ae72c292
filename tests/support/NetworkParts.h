#pragma once
// The kernel objects a Network test stands on: the parameters, the services
// the network draws on, a grid of empty stacks and the network over it.

#include "kernel/DistributionGenerator.h"
#include "kernel/Domain.h"
#include "kernel/MassBalance.h"
#include "kernel/MeanderCalculator.h"
#include "kernel/Network.h"
#include "kernel/Parameters.h"
#include "kernel/SeedGenerator.h"
#include "kernel/Tracer.h"

#include <memory>

namespace testing_support
{

struct NetworkParts
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

    Tracer tracer;
    Parameters params{&tracer};
    MeanderCalculator mc{&params, &tracer};
    SeedGenerator seed;
    MassBalance mb;
    UniformDistributionGenerator uniform{&seed, 0., 1.};
    std::unique_ptr<Domain> domain;
    std::unique_ptr<Network> network;
};

} // namespace testing_support
