#pragma once
// A small seeded block with wells for the Compute tools, and a comparison of
// plots for their round trips through tables.

#include "SimulatorSupport.h"
#include "kernel/domain/Domain.h"
#include "kernel/files/Core.h"
#include "tools/PlotData.h"

#include <cmath>
#include <memory>
#include <sstream>
#include <string>

namespace testing_support
{

// The first column, scanning every fifth node, holding more than `samples` samples.
inline bool rich_column(const Simulator& sim, int samples, int skip, Core& column)
{
    const int nx = sim.domain()->getNx(), ny = sim.domain()->getNy();
    for (int j = 2; j < ny; j += 5)
        for (int i = 2; i < nx; i += 5)
            if (sim.extractWell(i, j, column, MP_UNDEF_REAL, MP_UNDEF_REAL) && column.size() > samples &&
                skip-- == 0)
                return true;
    return false;
}

// 150 iterations of a fluvial block of 70 x 60 nodes of 10 m from seed 4242,
// then three wells: two logs drawn from columns of the block ("E1", "E2"), and
// one made up ("M") that the block cannot all honour. Null when the run fails.
inline std::unique_ptr<Simulator> block_with_wells()
{
    auto sim = simulator_on_grid(70, 60);
    sim->getParameters()->setParamInt("SIM_SEED", 4242);
    if (sim->init(false) != MP_STATUS_OK || sim->checkConsistency() == MP_STATUS_INCONSISTENT ||
        sim->newSequence() != MP_STATUS_OK || sim->run(150) != MP_STATUS_OK)
        return nullptr;
    for (int k : {1, 2})
    {
        Core column;
        if (!rich_column(*sim, 3, 3 * (k - 1), column))
            return nullptr;
        column.trim();
        if (!sim->addWell(column, "E" + std::to_string(k)))
            return nullptr;
    }
    const Point2D at = sim->domain()->grid2Geo(35, 30);
    const double top = sim->domain()->getTopoGeo(35, 30, false);
    Core made(at.get_abscissa(), at.get_ordinate(), top, "M");
    for (unsigned char f : {8, 2, 2, 1, 8, 2})
        made.add(f, 0.75);
    if (!sim->addWell(made, "M"))
        return nullptr;
    return sim;
}

// What differs between two plots (numbers to 1e-9 relative), empty when none.
inline std::string plot_differences(const PlotData& a, const PlotData& b)
{
    std::ostringstream out;
    auto near = [](double x, double y) { return std::fabs(x - y) <= 1e-9 * std::max(1., std::fabs(x)); };
    auto same = [&](const std::vector<double>& x, const std::vector<double>& y, const std::string& what)
    {
        bool ok = x.size() == y.size();
        for (size_t k = 0; ok && k < x.size(); ++k)
            ok = near(x[k], y[k]);
        if (!ok)
            out << what << " differ; ";
    };
    if (a.kind != b.kind || a.title != b.title || a.xLabel != b.xLabel || a.yLabel != b.yLabel ||
        a.keyVertical != b.keyVertical || a.categories != b.categories || a.valueLabel != b.valueLabel)
        out << "texts or layout differ; ";
    same({a.barWidth, a.valueMin, a.valueMax}, {b.barWidth, b.valueMin, b.valueMax}, "bar width or range");
    same(a.mapX, b.mapX, "map columns");
    same(a.mapY, b.mapY, "map rows");
    same(a.values, b.values, "map values");
    if (a.series.size() != b.series.size())
        out << "numbers of series differ; ";
    for (size_t s = 0; s < std::min(a.series.size(), b.series.size()); ++s)
    {
        const PlotSeries& x = a.series[s];
        const PlotSeries& y = b.series[s];
        if (x.name != y.name || x.style != y.style || x.colour != y.colour)
            out << "series " << s << " named or drawn differently; ";
        same(x.x, y.x, "keys of series " + x.name);
        same(x.y, y.y, "values of series " + x.name);
    }
    return out.str();
}

} // namespace testing_support
