#pragma once
// One named set of points of a chart, drawn as a curve or as bars.

#include <string>
#include <vector>

struct PlotSeries
{
    enum Style
    {
        MP_LINE = 0,
        MP_BARS = 1
    };

    std::string name;
    int style = MP_LINE;
    // A facies family, whose colour the series takes; -1 takes a colour by
    // the series' rank.
    int colour = -1;
    // Key and value of each point; a key appears once in a series.
    std::vector<double> x;
    std::vector<double> y;

    void add(double key, double value)
    {
        x.push_back(key);
        y.push_back(value);
    }
};
