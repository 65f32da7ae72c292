#pragma once
// The small grids the simulator tests run on, their trace captured.

#include "TestSupport.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/driver/Simulator.h"

#include <memory>
#include <string>

namespace testing_support
{

// A simulator on nx x ny nodes of 10 m at info level, its trace captured
// from an empty g_trace.
inline std::unique_ptr<Simulator> simulator_on_grid(int nx, int ny)
{
    auto sim = std::make_unique<Simulator>();
    sim->getTracer()->setTraceFunction(capture);
    sim->getTracer()->setTraceLevel(TRACE_INFO);
    iParameters* p = sim->getParameters();
    p->setParamInt("DOMAIN_NX", nx);
    p->setParamInt("DOMAIN_NY", ny);
    p->setParamDouble("DOMAIN_DX", 10.);
    p->setParamDouble("DOMAIN_DY", 10.);
    clear_trace();
    return sim;
}

} // namespace testing_support
