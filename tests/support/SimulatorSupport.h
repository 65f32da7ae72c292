#pragma once
// The trace of a test's simulators gathered as text, and the small grids the
// simulator tests run on.

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/Simulator.h"

#include <memory>
#include <string>

namespace testing_support
{

inline std::string g_trace;

// A trace function that appends to g_trace.
inline void capture(const char* text, TraceLevel)
{
    g_trace += text;
}

inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

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
    g_trace.clear();
    return sim;
}

} // namespace testing_support
