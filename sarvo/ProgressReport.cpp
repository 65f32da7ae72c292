#include "ProgressReport.h"

#include "interface/iDomain.h"
#include "interface/iSimulator.h"
#include "interface/iTracer.h"
#include "kernel/geometry/GridParams.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <sstream>

namespace
{

using Clock = std::chrono::steady_clock;

// Redraws at most this often: the line stays readable and costs nothing.
constexpr double REDRAW_SECONDS = 0.25;
constexpr double NONE = 1e30;

struct State
{
    iSimulator* simulator = nullptr;
    ProgressFunction previous = nullptr;
    unsigned int planned = 0;
    bool started = false;
    unsigned int start_age = 0;
    unsigned int last_age = 0;
    // Largest height left below the upper limit when the line was first
    // drawn: how fast it shrinks tells the time left.
    double start_gap = NONE;
    Clock::time_point start_time;
    Clock::time_point last_draw;
    bool shown = false;
};

State& state()
{
    static State s;
    return s;
}

double seconds_since(Clock::time_point t)
{
    return std::chrono::duration<double>(Clock::now() - t).count();
}

// Mean and lowest top of the block (water surface where the channel is, as
// the upper limit test sees it), mean upper limit, and the largest height
// left between a top and its limit (the run ends when it is gone), metres.
void measure(const iDomain& domain, double& mean_top, double& lowest_top, double& limit, double& gap)
{
    const GridParams& grid = domain.getGridParams();
    double top_sum = 0.;
    double limit_sum = 0.;
    long long limits = 0;
    lowest_top = NONE;
    gap = NONE;
    for (int j = 0; j < grid.getNy(); ++j)
        for (int i = 0; i < grid.getNx(); ++i)
        {
            const double top = domain.getTopoGeo(i, j, true);
            top_sum += top;
            lowest_top = std::min(lowest_top, top);
            const double zul = domain.getUpperLimitGeo(i, j);
            if (zul != NONE)
            {
                limit_sum += zul;
                gap = gap == NONE ? zul - top : std::max(gap, zul - top);
                ++limits;
            }
        }
    const long long nodes = static_cast<long long>(grid.getNx()) * grid.getNy();
    mean_top = nodes > 0 ? top_sum / static_cast<double>(nodes) : NONE;
    limit = limits > 0 ? limit_sum / static_cast<double>(limits) : NONE;
}

std::string metres(double value)
{
    std::ostringstream out;
    // No "-0.0" for a value that rounds to nothing.
    out << std::fixed << std::setprecision(1) << (std::fabs(value) < 0.05 ? 0. : value) << " m";
    return out.str();
}

} // namespace

bool ProgressReport::install(iSimulator* simulator, unsigned int planned)
{
    if (simulator == nullptr || !isatty(STDERR_FILENO))
        return false;
    State& s = state();
    s = State();
    s.simulator = simulator;
    s.planned = planned;
    s.previous = simulator->getTracer()->getProgressFunction();
    s.start_time = Clock::now();
    s.last_draw = s.start_time;
    simulator->getTracer()->setProgressFunction(on_progress);
    return true;
}

void ProgressReport::finish()
{
    State& s = state();
    if (s.simulator == nullptr)
        return;
    erase();
    s.simulator->getTracer()->setProgressFunction(s.previous);
    s.simulator = nullptr;
}

void ProgressReport::erase()
{
    State& s = state();
    if (!s.shown)
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    s.shown = false;
}

bool ProgressReport::on_progress(int n)
{
    State& s = state();
    const bool go_on = s.previous == nullptr || s.previous(n);
    // Only iterations move the age: calls while files are written change nothing.
    const unsigned int age = s.simulator->getAge();
    if (age == s.last_age)
        return go_on;
    s.last_age = age;
    if (!s.started)
    {
        s.started = true;
        s.start_age = age - 1;
    }
    if (seconds_since(s.last_draw) >= REDRAW_SECONDS)
        draw();
    return go_on;
}

void ProgressReport::draw()
{
    State& s = state();
    s.last_draw = Clock::now();
    const iDomain* domain = s.simulator->getDomain();
    if (domain == nullptr)
        return;
    double mean_top = NONE;
    double lowest_top = NONE;
    double limit = NONE;
    double gap = NONE;
    measure(*domain, mean_top, lowest_top, limit, gap);
    if (s.start_gap == NONE)
        s.start_gap = gap;
    const unsigned int done = s.last_age - s.start_age;
    const double elapsed = seconds_since(s.start_time);
    double left = -1.;
    if (s.planned > 0 && done > 0 && done <= s.planned)
        left = elapsed * (s.planned - done) / done;
    else if (s.planned == 0 && gap != NONE && gap < s.start_gap)
        left = elapsed * std::max(gap, 0.) / (s.start_gap - gap);
    const std::string text = line(s.last_age, done, s.planned, mean_top, lowest_top, limit, left);
    std::fputs(("\r" + text + "\033[K").c_str(), stderr);
    std::fflush(stderr);
    s.shown = true;
}

std::string ProgressReport::line(unsigned int iteration, unsigned int done, unsigned int planned,
                                 double mean_top, double lowest_top, double limit, double seconds_left)
{
    std::ostringstream out;
    out << "Iteration " << iteration;
    if (planned > 0)
        out << " (" << done << "/" << planned << ")";
    if (mean_top != NONE)
        out << " | top " << metres(mean_top) << " mean, " << metres(lowest_top) << " lowest";
    if (limit != NONE)
        out << " | limit " << metres(limit);
    out << " | " << (seconds_left >= 0. ? duration(seconds_left) + " left" : "time left unknown");
    return out.str();
}

std::string ProgressReport::duration(double seconds)
{
    const long long s = std::llround(std::max(seconds, 0.));
    std::ostringstream out;
    out << std::setfill('0');
    if (s < 60)
        out << s << " s";
    else if (s < 3600)
        out << s / 60 << " min " << std::setw(2) << s % 60 << " s";
    else
        out << s / 3600 << " h " << std::setw(2) << (s % 3600) / 60 << " min";
    return out.str();
}
