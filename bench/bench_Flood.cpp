// One overbank flood alone on the default domain: the default fluvial run is
// brought to a few hundred iterations, then the flood of its channel is
// repeated (map, distances, spread and deposits) without moving anything else.

#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/Simulator.h"
#include "kernel/network/Network.h"

#include <benchmark/benchmark.h>

#include <string>

namespace
{

constexpr unsigned int WARM_UP_ITERATIONS = 300;

void quiet(const char*, TraceLevel) {}

void BM_Flood(benchmark::State& state)
{
    iSimulator* handle = iSimulator::createSimulator();
    auto* sim = dynamic_cast<Simulator*>(handle);
    handle->getTracer()->setTraceFunction(quiet);
    handle->getParameters()->setParamInt("SIM_SEED", 165426111);
    if (sim == nullptr || handle->init(true) != MP_STATUS_OK || handle->newSequence() != MP_STATUS_OK ||
        handle->run(WARM_UP_ITERATIONS) != MP_STATUS_OK)
    {
        const std::string reason = "the default run did not start: " + handle->getLastMessage();
        state.SkipWithError(reason.c_str());
        iSimulator::deleteSimulator(handle);
        return;
    }
    Network* network = sim->network();
    const iParameters* params = handle->getParameters();
    const double extension = params->getParamDouble("AG_EXP_DEC_THICK");
    const double decay = sim->getOverbankDecayLength();
    const double grain = sim->getOverbankMaxGrain();
    for (auto _ : state)
        network->make_overbank(extension, decay, grain, 0., false);
    const iDomain* domain = handle->getDomain();
    state.counters["nodes"] = domain->getGridParams().getNx() * domain->getGridParams().getNy();
    state.counters["floods/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    handle->endSequence();
    iSimulator::deleteSimulator(handle);
}

} // namespace

BENCHMARK(BM_Flood)->Unit(benchmark::kMillisecond);
