// Deposit and erosion on every node of a 251 x 201 grid, one unit per node and
// per call, as the channel and floods do at each iteration.

#include "kernel/domain/DepositionSet.h"
#include "kernel/parameters/MassBalance.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace
{

constexpr int NX = 251;
constexpr int NY = 201;
constexpr int NODES = NX * NY;
// Deposits between two resets: enough for a realistic stack height.
constexpr int DEPOSITS_PER_RESET = 200;

void report(benchmark::State& state)
{
    const int64_t operations = static_cast<int64_t>(state.iterations()) * NODES;
    state.SetItemsProcessed(operations);
    // Seconds per node operation, printed with its SI prefix (e.g. "45ns").
    state.counters["time_per_node"] = benchmark::Counter(
        static_cast<double>(operations), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Empties the stacks but keeps their storage, so that timed deposits measure
// the steady state and not the growth of the vectors.
void reset(std::vector<DepositionSet>& grid)
{
    for (DepositionSet& s : grid)
    {
        s.units().clear();
        s.set_ztop(s.get_zbot());
        s.set_age(0);
    }
}

void deposit_loop(benchmark::State& state, bool active)
{
    std::vector<DepositionSet> grid(NODES, DepositionSet(0.));
    MassBalance mb(active);
    std::vector<double> volumes(MD_NB_CLASS_GR, 1e6);
    mb.setInitialVolume(volumes);
    const Facies facies(static_cast<unsigned char>(active ? 2 : 8));
    uint32_t age = 0;
    for (auto _ : state)
    {
        if (++age > DEPOSITS_PER_RESET)
        {
            state.PauseTiming();
            reset(grid);
            age = 1;
            state.ResumeTiming();
        }
        for (DepositionSet& s : grid)
            s.deposit_thickness(0.1, facies, age, &mb);
        benchmark::ClobberMemory();
    }
    report(state);
}

void BM_Deposit(benchmark::State& state)
{
    deposit_loop(state, false);
}

// Channel fills drawing on the account by class.
void BM_DepositChannelFillActive(benchmark::State& state)
{
    deposit_loop(state, true);
}

// Each timed pass removes one whole unit from every node; an untimed pass puts it back.
void BM_Erode(benchmark::State& state)
{
    std::vector<DepositionSet> grid(NODES, DepositionSet(0.));
    MassBalance mb(false);
    const Facies facies(static_cast<unsigned char>(2));
    for (DepositionSet& s : grid)
        for (uint32_t a = 1; a <= 20; ++a)
            s.deposit_thickness(0.1, facies, a, &mb);
    uint32_t age = 20;
    for (auto _ : state)
    {
        state.PauseTiming();
        ++age;
        for (DepositionSet& s : grid)
            s.deposit_thickness(0.1, facies, age, &mb);
        state.ResumeTiming();
        for (DepositionSet& s : grid)
            s.erode_thickness(0.1, &mb);
        benchmark::ClobberMemory();
    }
    report(state);
}

// A deposit and a partial erosion on every node, as a migrating bank does.
void BM_DepositThenErode(benchmark::State& state)
{
    std::vector<DepositionSet> grid(NODES, DepositionSet(0.));
    MassBalance mb(true);
    const Facies facies(static_cast<unsigned char>(2));
    uint32_t age = 0;
    for (auto _ : state)
    {
        if (++age > DEPOSITS_PER_RESET)
        {
            state.PauseTiming();
            reset(grid);
            age = 1;
            state.ResumeTiming();
        }
        for (DepositionSet& s : grid)
        {
            s.deposit_thickness(0.15, facies, age, &mb);
            s.erode_thickness(0.05, &mb);
        }
        benchmark::ClobberMemory();
    }
    report(state);
}

} // namespace

BENCHMARK(BM_Deposit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepositChannelFillActive)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Erode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepositThenErode)->Unit(benchmark::kMillisecond);
