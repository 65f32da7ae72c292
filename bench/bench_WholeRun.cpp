// Whole runs through the batch reader, reported as iterations per second,
// wall time, peak memory and peak memory per grid node: the default fluvial
// example to its upper limit three channel depths above the start, the same
// with variable point-bar grain size, and 4000 iterations on the default
// extent at two grid steps.

#include "interface/iChannel.h"
#include "interface/iDomain.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/batch/NewJournalFile.h"
#include "kernel/common/Tracer.h"
#include "kernel/geometry/GridParams.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

void quiet(const char*, TraceLevel) {}

// Peak resident memory of the process, in MiB (ru_maxrss counts KiB on Linux).
double peak_memory_mib()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.;
}

// The default example's batch file with its exports sent to `dir`, and
// `sequence` added to its sequence's keywords.
std::string default_batch(const std::filesystem::path& dir, const std::string& sequence)
{
    const std::string out = (dir / "default").string();
    return "[GLOBAL]\nF2G_FILE = " + out +
           ".f2g\nF2G_DZ = 0.1\nF2G_FACIES = 1\nF2G_GRAIN = 1\nF2G_AGE = 1\n" + "TOPO_FILE = " + out +
           "_topo.f2g\nSLICE_Z = 4.5\nSLICE_FILE = " + out + "_slice.f2g\n" +
           "[NEW_SEQ]\nSIM_SEED = 165426111\n" + sequence;
}

// Runs the batch once per benchmark iteration and reports its rate, its time,
// the process's peak memory and that peak per grid node. The peak is the
// process's: run one benchmark per process (--benchmark_filter) to read it.
void run_batch(benchmark::State& state, const std::string& sequence)
{
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("sarvo_bench_wholerun_" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string batch = (dir / "default.bat").string();
    std::ofstream(batch) << default_batch(dir, sequence);

    int nx = 0;
    int ny = 0;
    int points = 0;
    double iterations = 0.;
    double seconds = 0.;
    for (auto _ : state)
    {
        iSimulator* sim = iSimulator::createSimulator();
        sim->getTracer()->setTraceFunction(quiet);
        NewJournalFile file(sim);
        const auto start = std::chrono::steady_clock::now();
        const bool ran = file.load(batch) && file.launch() == MP_STATUS_OK;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!ran)
        {
            const std::string reason = "the batch did not run to its end: " + sim->getLastMessage();
            state.SkipWithError(reason.c_str());
            iSimulator::deleteSimulator(sim);
            break;
        }
        const GridParams& grid = sim->getDomain()->getGridParams();
        nx = grid.getNx();
        ny = grid.getNy();
        points = sim->getChannel() ? sim->getChannel()->number_of_points() : 0;
        iterations += sim->getAge();
        iSimulator::deleteSimulator(sim);
    }
    std::filesystem::remove_all(dir);

    const double runs = static_cast<double>(state.iterations());
    state.counters["iterations/s"] = seconds > 0. ? iterations / seconds : 0.;
    state.counters["iterations_run"] = iterations / runs;
    state.counters["wall_s"] = seconds / runs;
    state.counters["peak_MiB"] = peak_memory_mib();
    state.counters["bytes/node"] = nx * ny > 0 ? peak_memory_mib() * 1024. * 1024. / (nx * ny) : 0.;
    state.counters["nx"] = nx;
    state.counters["ny"] = ny;
    state.counters["channel_points"] = points;
    state.SetLabel("grid " + std::to_string(nx) + " x " + std::to_string(ny) + ", channel " +
                   std::to_string(points) + " points");
}

// The default example to its upper limit, three channel depths up.
void BM_DefaultExample(benchmark::State& state)
{
    run_batch(state, "LAUNCH_IT = -1\nZUL_TOPO = 9\n");
}

// The same with the point bars' grain size following the flow (fining upward).
void BM_DefaultExampleVariableGrain(benchmark::State& state)
{
    run_batch(state, "GR_PB = 1\nLAUNCH_IT = -1\nZUL_TOPO = 9\n");
}

// 4000 iterations on the default extent at 10 m (argument 1) or at 5 m
// (argument 2, four times the nodes): the cost should grow with the nodes, no faster.
void BM_Refined(benchmark::State& state)
{
    const int refine = static_cast<int>(state.range(0));
    const int nx = 250 * refine + 1;
    const int ny = 200 * refine + 1;
    const double step = 10. / refine;
    std::string sequence = "DOMAIN_NX = " + std::to_string(nx) + "\nDOMAIN_NY = " + std::to_string(ny) +
                           "\nDOMAIN_DX = " + std::to_string(step) + "\nDOMAIN_DY = " + std::to_string(step) +
                           "\nLAUNCH_IT = 4000\n";
    run_batch(state, sequence);
}

} // namespace

BENCHMARK(BM_DefaultExample)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_DefaultExampleVariableGrain)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Refined)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->Iterations(1);
