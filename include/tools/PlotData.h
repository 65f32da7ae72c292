#pragma once
// What a Compute tool shows, free of any window: a chart of series over a key
// axis (numbers or named categories), or a map of values on a grid of nodes.
// Saved as a semicolon-separated table that spreadsheets read, with its
// titles on leading "#" lines, and read back from it.

#include "tools/PlotSeries.h"

#include <string>
#include <vector>

class PlotData
{
public:
    enum Kind
    {
        MP_CHART = 0,
        MP_MAP = 1
    };

    int kind = MP_CHART;
    std::string title;
    // The key axis (x of the points, columns of a map) and the value axis
    // (y of the points, rows of a map), whichever way they are drawn.
    std::string xLabel;
    std::string yLabel;
    // Charts: the key axis runs upward (a curve along elevation).
    bool keyVertical = false;
    // Charts: named keys; point keys are then their ranks 0, 1, ...
    std::vector<std::string> categories;
    // Charts: width of a bar along the key axis, shared by the bar series;
    // 0 packs the bars between neighbouring keys.
    double barWidth = 0.;
    std::vector<PlotSeries> series;
    // Fixed range of the value axis (of the values of a map); 1e30 for
    // either bound follows the data.
    double valueMin = 1e30;
    double valueMax = 1e30;

    // Maps: keys of the columns and of the rows, the value name, and the
    // values row by row (1e30 where there is none).
    std::vector<double> mapX;
    std::vector<double> mapY;
    std::string valueLabel;
    std::vector<double> values;

    double value(int column, int row) const;
    // Smallest and largest key and value of the chart, or of the map's
    // values; false when there is none.
    bool key_range(double& lo, double& hi) const;
    bool value_range(double& lo, double& hi) const;

    // The table through a staged file; false with a message naming the file.
    bool write_csv(const std::string& path, std::string& error) const;
    static bool read_csv(const std::string& path, PlotData& data, std::string& error);
};
