// One migration step of a channel of about 500 points on the default domain:
// the velocity perturbation, the move, and the sections written into the stacks.

#include "kernel/channel/Channel.h"
#include "kernel/common/FaciesFamilies.h"
#include "kernel/common/Tracer.h"
#include "kernel/domain/DepositionSet.h"
#include "kernel/domain/Domain.h"
#include "kernel/parameters/MassBalance.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/parameters/Parameters.h"
#include "kernel/parameters/SeedGenerator.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace
{

constexpr double YEAR = 31557600.;
constexpr double TOP = 10.;
constexpr int STEPS_PER_COURSE = 50;

void quiet(const char*, TraceLevel) {}

// A sine course across the domain, points about `step` metres apart along it.
std::vector<Point3D> sine_course(double length, double y0, double amplitude, double wavelength, double step)
{
    std::vector<Point3D> points;
    double along = 0.;
    double x = 0.;
    double y = y0;
    points.emplace_back(x, y, TOP);
    const double dx = 0.05;
    for (double nx = dx; nx <= length; nx += dx)
    {
        const double ny = y0 + amplitude * std::sin(6.2831853 * nx / wavelength);
        along += std::hypot(nx - x, ny - y);
        x = nx;
        y = ny;
        if (along >= step)
        {
            points.emplace_back(x, y, TOP);
            along = 0.;
        }
    }
    return points;
}

void migration_step(benchmark::State& state, bool variable)
{
    Tracer tracer;
    tracer.setTraceFunction(quiet);
    Parameters params(&tracer);
    params.setParamBool("GR_PB", variable);
    MeanderCalculator mc(&params, &tracer);
    SeedGenerator seed;
    MassBalance mb;
    const int nx = params.getParamInt("DOMAIN_NX");
    const int ny = params.getParamInt("DOMAIN_NY");
    const double dx = params.getParamDouble("DOMAIN_DX");
    Domain domain(&mc, &seed, &mb, nullptr, dx, params.getParamDouble("DOMAIN_DY"), nx, ny, Point2D(0., 0.),
                  0., 0., 0u, Facies(Overbank::_fd.id()));
    domain.set_margins(12, 12);
    domain.deposit_uniform_thickness(TOP, Facies(Overbank::_fd.id()), 0u);
    domain.update_slope(0.001, 0.);

    const double width = params.getParamDouble("CHNL_WIDTH");
    // About 500 points, 10 m apart, on a course twice as long as the domain.
    Channel start(&mc, sine_course(nx * dx - 10., ny * dx / 2., 300., 750., 10.));
    start.init_geom(params.getParamDouble("CHNL_MAX_DEPTH"), width, params.getParamDouble("CHNL_WAVELENGTH"),
                    0.001);
    start.init_flow();
    start.update_flow_sinuosity();
    start.compute_velocity_perturbation();
    start.make_point_bar(&domain, &mb, 1, true);
    Channel channel(&mc, start, true);

    std::vector<ChannelGridPoint> before;
    unsigned int age = 1;
    int64_t points = 0;
    int64_t nodes = 0;
    int steps = 0;
    for (auto _ : state)
    {
        // The course is brought back now and then, so that its size stays that of the start.
        if (++steps % STEPS_PER_COURSE == 0)
        {
            state.PauseTiming();
            channel.set_new_path(start.first());
            state.ResumeTiming();
        }
        channel.find_grid_points(domain, before);
        channel.compute_velocity_perturbation();
        channel.migrate(&domain, YEAR);
        for (const ChannelGridPoint& p : before)
            domain.getObject(p.ix, p.iy).set_under_channel(false);
        channel.make_point_bar(&domain, &mb, ++age, true);
        for (const ChannelGridPoint& p : before)
            domain.getObject(p.ix, p.iy).set_under_channel(false);
        points += channel.number_of_points();
        nodes += static_cast<int64_t>(before.size());
    }
    state.counters["points"] = channel.number_of_points();
    state.counters["wet_nodes"] = static_cast<double>(before.size());
    // Seconds per channel point and per wet node, printed with their SI prefix.
    state.counters["time_per_point"] = benchmark::Counter(
        static_cast<double>(points), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["time_per_wet_node"] = benchmark::Counter(
        static_cast<double>(nodes), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_MigrationStep(benchmark::State& state)
{
    migration_step(state, false);
}

void BM_MigrationStepVariableGrain(benchmark::State& state)
{
    migration_step(state, true);
}

} // namespace

BENCHMARK(BM_MigrationStep)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MigrationStepVariableGrain)->Unit(benchmark::kMillisecond);
