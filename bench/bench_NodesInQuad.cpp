// The grid nodes of channel sections as the default run asks for them: a
// 30 m wide channel (half width 1.5 cells) cut into sections of half a cell to one and a half
// cells on the 251 x 201 grid of 10 m, at every heading and slightly turned.

#include "kernel/geometry/GridParams.h"
#include "kernel/geometry/Point2D.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace
{

constexpr int SECTIONS = 4096;

struct Section
{
    Point2D corners[4];
};

std::vector<Section> default_sections(const GridParams& g)
{
    std::mt19937 gen(2026);
    std::uniform_real_distribution<double> unit(0., 1.);
    std::vector<Section> sections(SECTIONS);
    for (Section& s : sections)
    {
        const double ax = 2. + (g.getNx() - 4.) * unit(gen);
        const double ay = 2. + (g.getNy() - 4.) * unit(gen);
        const double heading = 6.28318530 * unit(gen);
        const double length = 0.5 + unit(gen);
        const double half = 1.5;
        const double turn_a = 0.2 * (unit(gen) - 0.5);
        const double turn_b = 0.2 * (unit(gen) - 0.5);
        const double bx = ax + length * std::cos(heading);
        const double by = ay + length * std::sin(heading);
        const Point2D grid[4] = {
            {ax - half * std::sin(heading + turn_a), ay + half * std::cos(heading + turn_a)},
            {bx - half * std::sin(heading + turn_b), by + half * std::cos(heading + turn_b)},
            {bx + half * std::sin(heading + turn_b), by - half * std::cos(heading + turn_b)},
            {ax + half * std::sin(heading + turn_a), ay - half * std::cos(heading + turn_a)}};
        for (int k = 0; k < 4; ++k)
            s.corners[k] = g.grid2Rel(grid[k]);
    }
    return sections;
}

void BM_NodesInQuad(benchmark::State& state)
{
    const GridParams g(10., 10., 251, 201);
    const std::vector<Section> sections = default_sections(g);
    std::vector<std::pair<int, int>> nodes;
    std::size_t found = 0;
    for (auto _ : state)
        for (const Section& s : sections)
        {
            g.nodes_in_quad(s.corners, nodes);
            found += nodes.size();
        }
    benchmark::DoNotOptimize(found);
    state.SetItemsProcessed(state.iterations() * SECTIONS);
    state.counters["nodes_per_section"] =
        static_cast<double>(found) / static_cast<double>(state.iterations() * SECTIONS);
}
BENCHMARK(BM_NodesInQuad);

} // namespace
