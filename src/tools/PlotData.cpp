#include "tools/PlotData.h"

#include "kernel/common/Constants.h"
#include "kernel/common/StagedFile.h"

#include <algorithm>
#include <fstream>
#include <locale>
#include <sstream>

namespace
{
constexpr char SEPARATOR = ';';

// A cell holds no separator; text cells lose theirs.
std::string cell_text(std::string text)
{
    std::replace(text.begin(), text.end(), SEPARATOR, ',');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// Numbers in the classic form whatever the desktop's locale.
std::string number(double value)
{
    if (value == MP_UNDEF_REAL)
        return "";
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(12);
    text << value;
    return text.str();
}

bool to_number(const std::string& text, double& value)
{
    if (text.empty())
    {
        value = MP_UNDEF_REAL;
        return true;
    }
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    in >> value;
    return !in.fail() && (in >> std::ws).eof();
}

std::vector<std::string> cells_of(const std::string& line)
{
    std::vector<std::string> cells;
    std::string cell;
    std::istringstream in(line);
    while (std::getline(in, cell, SEPARATOR))
        cells.push_back(cell);
    if (!line.empty() && line.back() == SEPARATOR)
        cells.emplace_back();
    return cells;
}

// The rest of a "#" line after its key, separators included.
std::string rest_of(const std::vector<std::string>& cells)
{
    std::string text;
    for (size_t k = 1; k < cells.size(); ++k)
        text += (k > 1 ? ";" : "") + cells[k];
    return text;
}

// The keys of all the series, in increasing order, each once.
std::vector<double> chart_keys(const PlotData& data)
{
    std::vector<double> keys;
    for (const PlotSeries& s : data.series)
        keys.insert(keys.end(), s.x.begin(), s.x.end());
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

std::string value_at(const PlotSeries& s, double key)
{
    for (size_t k = 0; k < s.x.size(); ++k)
        if (s.x[k] == key)
            return number(s.y[k]);
    return "";
}

void write_chart(std::ostream& out, const PlotData& data)
{
    out << "# style";
    for (const PlotSeries& s : data.series)
        out << SEPARATOR << (s.style == PlotSeries::MP_BARS ? "bars" : "line");
    out << "\n# colour";
    for (const PlotSeries& s : data.series)
        out << SEPARATOR << s.colour;
    out << "\n# keys" << SEPARATOR << (data.categories.empty() ? "numbers" : "names") << "\n"
        << (data.categories.empty() ? "x" : "category");
    for (const PlotSeries& s : data.series)
        out << SEPARATOR << cell_text(s.name);
    out << "\n";
    // Every name keeps its row, so that ranks survive the round trip.
    std::vector<double> keys = chart_keys(data);
    if (!data.categories.empty())
    {
        keys.clear();
        for (size_t rank = 0; rank < data.categories.size(); ++rank)
            keys.push_back(static_cast<double>(rank));
    }
    for (double key : keys)
    {
        out << (data.categories.empty() ? number(key) : cell_text(data.categories[static_cast<size_t>(key)]));
        for (const PlotSeries& s : data.series)
            out << SEPARATOR << value_at(s, key);
        out << "\n";
    }
}

void write_map(std::ostream& out, const PlotData& data)
{
    out << "# value" << SEPARATOR << cell_text(data.valueLabel) << "\ny\\x";
    for (double x : data.mapX)
        out << SEPARATOR << number(x);
    out << "\n";
    for (size_t r = 0; r < data.mapY.size(); ++r)
    {
        out << number(data.mapY[r]);
        for (size_t c = 0; c < data.mapX.size(); ++c)
            out << SEPARATOR << number(data.value(static_cast<int>(c), static_cast<int>(r)));
        out << "\n";
    }
}

// --- Reading

struct Reader
{
    PlotData& data;
    std::vector<std::string> styles;
    std::vector<std::string> colours;
    bool header = false;
    // The keys are names, not numbers.
    bool named = false;

    bool meta(const std::vector<std::string>& cells);
    bool chart_header(const std::vector<std::string>& cells);
    bool chart_row(const std::vector<std::string>& cells);
    bool map_header(const std::vector<std::string>& cells);
    bool map_row(const std::vector<std::string>& cells);
    bool line(const std::string& text);
};

bool Reader::meta(const std::vector<std::string>& cells)
{
    const std::string key = cells.front().substr(2);
    const std::string rest = rest_of(cells);
    if (key == "title")
        data.title = rest;
    else if (key == "kind")
        data.kind = rest == "map" ? PlotData::MP_MAP : PlotData::MP_CHART;
    else if (key == "x")
        data.xLabel = rest;
    else if (key == "y")
        data.yLabel = rest;
    else if (key == "value")
        data.valueLabel = rest;
    else if (key == "keys")
        named = rest == "names";
    else if (key == "layout")
        data.keyVertical = rest == "vertical";
    else if (key == "bar_width")
        return to_number(rest, data.barWidth);
    else if (key == "range")
        return cells.size() == 3 && to_number(cells[1], data.valueMin) && to_number(cells[2], data.valueMax);
    else if (key == "style")
        styles.assign(cells.begin() + 1, cells.end());
    else if (key == "colour")
        colours.assign(cells.begin() + 1, cells.end());
    return true;
}

bool Reader::chart_header(const std::vector<std::string>& cells)
{
    if (styles.size() + 1 != cells.size() || colours.size() + 1 != cells.size())
        return false;
    for (size_t k = 1; k < cells.size(); ++k)
    {
        PlotSeries s;
        s.name = cells[k];
        s.style = styles[k - 1] == "bars" ? PlotSeries::MP_BARS : PlotSeries::MP_LINE;
        double colour = 0.;
        if (!to_number(colours[k - 1], colour))
            return false;
        s.colour = static_cast<int>(colour);
        data.series.push_back(s);
    }
    return true;
}

bool Reader::chart_row(const std::vector<std::string>& cells)
{
    if (cells.size() > data.series.size() + 1)
        return false;
    double key = static_cast<double>(data.categories.size());
    if (named)
        data.categories.push_back(cells.front());
    else if (cells.front().empty() || !to_number(cells.front(), key))
        return false;
    for (size_t k = 1; k < cells.size(); ++k)
    {
        double value = 0.;
        if (!to_number(cells[k], value))
            return false;
        if (value != MP_UNDEF_REAL)
            data.series[k - 1].add(key, value);
    }
    return true;
}

bool Reader::map_header(const std::vector<std::string>& cells)
{
    for (size_t k = 1; k < cells.size(); ++k)
    {
        double x = 0.;
        if (!to_number(cells[k], x))
            return false;
        data.mapX.push_back(x);
    }
    return true;
}

bool Reader::map_row(const std::vector<std::string>& cells)
{
    double y = 0.;
    if (cells.size() > data.mapX.size() + 1 || !to_number(cells.front(), y))
        return false;
    data.mapY.push_back(y);
    for (size_t k = 1; k <= data.mapX.size(); ++k)
    {
        double value = MP_UNDEF_REAL;
        if (k < cells.size() && !to_number(cells[k], value))
            return false;
        data.values.push_back(value);
    }
    return true;
}

bool Reader::line(const std::string& text)
{
    if (text.empty())
        return true;
    const std::vector<std::string> cells = cells_of(text);
    if (text.rfind("# ", 0) == 0)
        return meta(cells);
    const bool map = data.kind == PlotData::MP_MAP;
    if (!header)
    {
        header = true;
        return map ? map_header(cells) : chart_header(cells);
    }
    return map ? map_row(cells) : chart_row(cells);
}
} // namespace

double PlotData::value(int column, int row) const
{
    const size_t k = static_cast<size_t>(row) * mapX.size() + static_cast<size_t>(column);
    return k < values.size() ? values[k] : MP_UNDEF_REAL;
}

bool PlotData::key_range(double& lo, double& hi) const
{
    lo = MP_MAX_REAL_VALUE;
    hi = MP_MIN_REAL_VALUE;
    for (const PlotSeries& s : series)
        for (double x : s.x)
        {
            lo = std::min(lo, x);
            hi = std::max(hi, x);
        }
    return lo <= hi;
}

bool PlotData::value_range(double& lo, double& hi) const
{
    lo = MP_MAX_REAL_VALUE;
    hi = MP_MIN_REAL_VALUE;
    auto take = [&](double v)
    {
        if (v == MP_UNDEF_REAL)
            return;
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    };
    if (kind == MP_MAP)
        std::for_each(values.begin(), values.end(), take);
    else
        for (const PlotSeries& s : series)
            std::for_each(s.y.begin(), s.y.end(), take);
    return lo <= hi;
}

bool PlotData::write_csv(const std::string& path, std::string& error) const
{
    StagedFile staged(path);
    std::ofstream out(staged.path());
    if (!out)
    {
        error = "Cannot open the table file " + path;
        return false;
    }
    out << "# title" << SEPARATOR << cell_text(title) << "\n# kind" << SEPARATOR
        << (kind == MP_MAP ? "map" : "chart") << "\n# x" << SEPARATOR << cell_text(xLabel) << "\n# y"
        << SEPARATOR << cell_text(yLabel) << "\n# layout" << SEPARATOR
        << (keyVertical ? "vertical" : "horizontal") << "\n# bar_width" << SEPARATOR << number(barWidth)
        << "\n# range" << SEPARATOR << number(valueMin) << SEPARATOR << number(valueMax) << "\n";
    if (kind == MP_MAP)
        write_map(out, *this);
    else
        write_chart(out, *this);
    out.close();
    if (!out || !staged.commit())
    {
        error = "Cannot write the table file " + path;
        return false;
    }
    return true;
}

bool PlotData::read_csv(const std::string& path, PlotData& data, std::string& error)
{
    std::ifstream in(path);
    if (!in)
    {
        error = "Cannot open the table file " + path;
        return false;
    }
    data = PlotData();
    Reader reader{data, {}, {}, false, false};
    std::string text;
    for (int number = 1; std::getline(in, text); ++number)
    {
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        if (!reader.line(text))
        {
            error = "Bad line " + std::to_string(number) + " in the table file " + path + ": " + text;
            return false;
        }
    }
    return true;
}
