#include "tools/PlotBuilder.h"

#include "kernel/common/Facies.h"
#include "kernel/driver/ConditioningStatistics.h"
#include "kernel/driver/CrossingHistogram.h"
#include "kernel/driver/FaciesProportions.h"

#include <algorithm>

namespace
{
std::string facies_name(int family)
{
    return Facies::description(static_cast<unsigned char>(family)).short_name();
}

PlotData chart(const std::string& title, const std::string& x, const std::string& y)
{
    PlotData data;
    data.title = title;
    data.xLabel = x;
    data.yLabel = y;
    return data;
}

PlotSeries bars(const std::string& name, int colour)
{
    PlotSeries s;
    s.name = name;
    s.style = PlotSeries::MP_BARS;
    s.colour = colour;
    return s;
}

// Position of a value among the sorted distinct values.
int rank_of(const std::vector<double>& sorted, double value)
{
    return static_cast<int>(std::lower_bound(sorted.begin(), sorted.end(), value) - sorted.begin());
}

std::vector<double> distinct(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}
} // namespace

PlotData PlotBuilder::vertical_proportions(const FaciesProportions& curve, const std::string& title)
{
    PlotData data = chart(title, "Elevation (m)", "Proportion");
    data.keyVertical = true;
    data.valueMin = 0.;
    data.valueMax = 1.;
    for (int f = 1; f < FaciesProportions::MP_NB_FAMILIES; ++f)
    {
        PlotSeries s;
        s.name = facies_name(f);
        s.colour = f;
        bool present = false;
        for (int r = 0; r < curve.rows(); ++r)
        {
            // Slices with no deposit have no share to show.
            if (!(curve.thickness(r) > 0.))
                continue;
            const std::vector<double>& labels = curve.labels(r);
            const double share = curve.share(r, static_cast<unsigned char>(f));
            s.add(0.5 * (labels[0] + labels[1]), share);
            present = present || share > 0.;
        }
        if (present)
            data.series.push_back(s);
    }
    return data;
}

PlotData PlotBuilder::proportion_matrix(const FaciesProportions& matrix, const std::string& title)
{
    PlotData data = chart(title, "i (node)", "j (node)");
    data.kind = PlotData::MP_MAP;
    data.valueLabel = "Sand proportion";
    data.valueMin = 0.;
    data.valueMax = 1.;
    std::vector<double> is, js;
    for (int r = 0; r < matrix.rows(); ++r)
    {
        is.push_back(matrix.labels(r)[0]);
        js.push_back(matrix.labels(r)[1]);
    }
    data.mapX = distinct(is);
    data.mapY = distinct(js);
    data.values.assign(data.mapX.size() * data.mapY.size(), 1e30);
    for (int r = 0; r < matrix.rows(); ++r)
    {
        if (!(matrix.thickness(r) > 0.))
            continue;
        const size_t k =
            static_cast<size_t>(rank_of(data.mapY, js[static_cast<size_t>(r)])) * data.mapX.size() +
            static_cast<size_t>(rank_of(data.mapX, is[static_cast<size_t>(r)]));
        data.values[k] = matrix.sand_share(r);
    }
    return data;
}

PlotData PlotBuilder::facies_crossing(const CrossingHistogram& histogram, const std::string& title)
{
    PlotData data = chart(title, "Body thickness (m)", "Number of bodies");
    data.barWidth = histogram.step();
    data.valueMin = 0.;
    for (int kind = 0; kind < histogram.kinds(); ++kind)
    {
        if (histogram.total_count(kind) == 0)
            continue;
        PlotSeries s = bars(histogram.kind_name(kind), histogram.family(kind));
        for (int k = 0; k < histogram.classes(); ++k)
            s.add(0.5 * (histogram.lower(k) + histogram.upper(k)), histogram.count(kind, k));
        data.series.push_back(s);
    }
    return data;
}

PlotData PlotBuilder::sand_crossing(const CrossingHistogram& histogram, const std::string& title)
{
    PlotData data = chart(title, "Sand body thickness (m)", "Cumulative share");
    data.barWidth = histogram.step();
    data.valueMin = 0.;
    data.valueMax = 1.;
    // The sand kind is the histogram's only one.
    if (histogram.kinds() > 0)
    {
        const int kind = 0;
        PlotSeries bodies = bars("Sand bodies", -1);
        PlotSeries thickness = bars("Sand thickness", -1);
        for (int k = 0; k < histogram.classes(); ++k)
        {
            const double key = 0.5 * (histogram.lower(k) + histogram.upper(k));
            bodies.add(key, histogram.cumulative_count_share(kind, k));
            thickness.add(key, histogram.cumulative_thickness_share(kind, k));
        }
        data.series.push_back(bodies);
        data.series.push_back(thickness);
    }
    return data;
}

PlotData PlotBuilder::conditioning(const ConditioningStatistics& statistics, const std::string& title)
{
    PlotData data = chart(title, "Well", "Share of the compared height");
    data.valueMin = 0.;
    data.valueMax = 1.;
    std::vector<ConditioningStatistics::WellMatch> rows = statistics.wells();
    rows.push_back(statistics.overall());
    PlotSeries facies = bars("Facies match", -1);
    PlotSeries sand = bars("Sand match", -1);
    PlotSeries logged = bars("Sand in well", -1);
    PlotSeries simulated = bars("Sand in block", -1);
    for (size_t k = 0; k < rows.size(); ++k)
    {
        const double key = static_cast<double>(k);
        data.categories.push_back(rows[k].name);
        // A well with nothing compared has nothing to show.
        if (!(rows[k].compared > 0.))
            continue;
        facies.add(key, rows[k].faciesMatch);
        sand.add(key, rows[k].sandMatch);
        logged.add(key, rows[k].wellSand);
        simulated.add(key, rows[k].simulatedSand);
    }
    data.series = {facies, sand, logged, simulated};
    return data;
}
