#include "gui/PlotPainter.h"

#include "kernel/common/Constants.h"
#include "tools/PlotPalette.h"

#include <wx/dcmemory.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
constexpr int MP_GAP = 8;
constexpr int MP_SWATCH = 14;

wxColour colour_of(const PlotColour& c)
{
    return wxColour(c.red, c.green, c.blue);
}

// A range of numbers with round ticks.
struct Axis
{
    double lo = 0.;
    double hi = 1.;
    double step = 0.1;
    int decimals = 1;

    // Ticks about `count` apart at most, on 1, 2 or 5 times a power of ten.
    void fit(double a, double b, int count, bool snap)
    {
        if (!(b > a))
        {
            const double pad = std::max(1., std::fabs(a) * 0.1);
            a -= pad;
            b += pad;
        }
        const double raw = (b - a) / std::max(1, count);
        const double power = std::pow(10., std::floor(std::log10(raw)));
        step = power * (raw <= power ? 1. : raw <= 2. * power ? 2. : raw <= 5. * power ? 5. : 10.);
        lo = snap ? std::floor(a / step + 1e-9) * step : a;
        hi = snap ? std::ceil(b / step - 1e-9) * step : b;
        decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    }
    std::vector<double> ticks() const
    {
        std::vector<double> t;
        for (double v = std::ceil(lo / step - 1e-9) * step; v <= hi + step * 1e-9; v += step)
            t.push_back(std::fabs(v) < step * 1e-9 ? 0. : v);
        return t;
    }
    wxString label(double v) const { return wxString::Format("%.*f", decimals, v); }
    double share(double v) const { return (v - lo) / (hi - lo); }
};

// The frame of the plot on the device: where the key and value axes go.
struct Frame
{
    wxRect area;
    bool keyVertical = false;
    Axis key;
    Axis value;

    wxPoint at(double k, double v) const
    {
        const double a = key.share(k), b = value.share(v);
        if (keyVertical)
            return {area.x + static_cast<int>(std::lround(b * area.width)),
                    area.GetBottom() - static_cast<int>(std::lround(a * area.height))};
        return {area.x + static_cast<int>(std::lround(a * area.width)),
                area.GetBottom() - static_cast<int>(std::lround(b * area.height))};
    }
};

class Painter
{
public:
    Painter(wxDC& dc, const wxSize& size, const PlotData& data) : _dc(dc), _size(size), _data(data)
    {
        _dc.SetFont(*wxNORMAL_FONT);
        _text = _dc.GetCharHeight();
    }
    void draw();

private:
    int draw_title();
    void draw_chart(wxRect area);
    void draw_map(wxRect area);
    void fit_chart_axes(Frame& frame, const wxRect& area) const;
    void draw_grid(const Frame& frame);
    void draw_chart_axes(const Frame& frame);
    void draw_key_ticks(const Frame& frame);
    void draw_value_ticks(const Frame& frame);
    void draw_axis_labels(const wxRect& area, const wxString& horizontal, const wxString& vertical, int below,
                          int left);
    void draw_series(const Frame& frame);
    int legend_width() const;
    void draw_legend(const wxRect& area);
    double bar_group_width() const;

    wxDC& _dc;
    wxSize _size;
    const PlotData& _data;
    int _text = 12;
};

void Painter::draw()
{
    _dc.SetBackground(*wxWHITE_BRUSH);
    _dc.Clear();
    const int top = draw_title();
    const wxRect area(MP_GAP, top, _size.x - 2 * MP_GAP, _size.y - top - MP_GAP);
    if (area.width < 50 || area.height < 50)
        return;
    if (_data.kind == PlotData::MP_MAP)
        draw_map(area);
    else
        draw_chart(area);
}

int Painter::draw_title()
{
    wxFont bold = _dc.GetFont().Bold().Scaled(1.2f);
    _dc.SetFont(bold);
    const wxSize extent = _dc.GetTextExtent(_data.title);
    _dc.SetTextForeground(*wxBLACK);
    _dc.DrawText(_data.title, (_size.x - extent.x) / 2, MP_GAP);
    _dc.SetFont(*wxNORMAL_FONT);
    return MP_GAP * 2 + extent.y;
}

double Painter::bar_group_width() const
{
    if (!_data.categories.empty())
        return 0.8;
    if (_data.barWidth > 0.)
        return _data.barWidth * 0.9;
    // Bars share the smallest gap between neighbouring keys.
    std::vector<double> keys;
    for (const PlotSeries& s : _data.series)
        keys.insert(keys.end(), s.x.begin(), s.x.end());
    std::sort(keys.begin(), keys.end());
    double gap = MP_MAX_REAL_VALUE;
    for (size_t k = 1; k < keys.size(); ++k)
        if (keys[k] > keys[k - 1])
            gap = std::min(gap, keys[k] - keys[k - 1]);
    return gap < MP_MAX_REAL_VALUE ? 0.8 * gap : 0.8;
}

void Painter::fit_chart_axes(Frame& frame, const wxRect& area) const
{
    const bool bars = std::any_of(_data.series.begin(), _data.series.end(),
                                  [](const PlotSeries& s) { return s.style == PlotSeries::MP_BARS; });
    double klo = 0., khi = 1., vlo = 0., vhi = 1.;
    if (!_data.categories.empty())
    {
        klo = -0.5;
        khi = static_cast<double>(_data.categories.size()) - 0.5;
    }
    else if (double lo = 0., hi = 0.; _data.key_range(lo, hi))
    {
        // Bars keep their whole width inside; curves keep off the frame.
        const double half = bars ? 0.5 * bar_group_width() / 0.9 : 0.03 * (hi - lo);
        klo = lo - half;
        khi = hi + half;
    }
    if (double lo = 0., hi = 0.; _data.value_range(lo, hi))
        vlo = lo, vhi = hi;
    if (bars)
        vlo = std::min(vlo, 0.);
    if (_data.valueMin != MP_UNDEF_REAL)
        vlo = _data.valueMin;
    if (_data.valueMax != MP_UNDEF_REAL)
        vhi = std::max(_data.valueMax, vhi);
    const int keyLength = frame.keyVertical ? area.height : area.width;
    const int valueLength = frame.keyVertical ? area.width : area.height;
    // Curves run from their first key to their last.
    frame.key.fit(klo, khi, std::max(2, keyLength / 70), false);
    if (!_data.categories.empty())
        frame.key.step = 1., frame.key.decimals = 0;
    frame.value.fit(vlo, vhi, std::max(2, valueLength / 60), true);
    // Counts are whole: no tick between two numbers of bodies.
    const bool whole = std::all_of(
        _data.series.begin(), _data.series.end(),
        [](const PlotSeries& s)
        { return std::all_of(s.y.begin(), s.y.end(), [](double v) { return v == std::floor(v); }); });
    if (whole && frame.value.step < 1.)
        frame.value.fit(vlo, std::max(vhi, vlo + 1.), static_cast<int>(std::ceil(std::max(vhi - vlo, 1.))),
                        true);
}

void Painter::draw_chart(wxRect area)
{
    Frame frame;
    frame.keyVertical = _data.keyVertical;
    // Room for the numbers, the axis labels and the legend: the numbers on
    // the left are those of a first fit.
    const int below = 2 * _text + 3 * MP_GAP;
    const int legend = legend_width();
    int left = _dc.GetTextExtent("-0.00").x + _text + 3 * MP_GAP;
    for (int pass = 0; pass < 2; ++pass)
    {
        frame.area = wxRect(area.x + left, area.y, area.width - left - legend - MP_GAP, area.height - below);
        if (frame.area.width < 40 || frame.area.height < 40)
            return;
        fit_chart_axes(frame, frame.area);
        const Axis& vertical = frame.keyVertical ? frame.key : frame.value;
        int widest = 0;
        for (double t : vertical.ticks())
            widest = std::max(widest, _dc.GetTextExtent(vertical.label(t)).x);
        left = widest + _text + 3 * MP_GAP;
    }
    draw_grid(frame);
    draw_series(frame);
    if (_data.series.empty())
    {
        const wxString none = "Nothing to show";
        const wxSize extent = _dc.GetTextExtent(none);
        _dc.DrawText(none, frame.area.x + (frame.area.width - extent.x) / 2,
                     frame.area.y + (frame.area.height - extent.y) / 2);
    }
    draw_chart_axes(frame);
    const wxString keyLabel = _data.xLabel, valueLabel = _data.yLabel;
    draw_axis_labels(frame.area, frame.keyVertical ? valueLabel : keyLabel,
                     frame.keyVertical ? keyLabel : valueLabel, below, left);
    draw_legend(wxRect(frame.area.GetRight() + 2 * MP_GAP, frame.area.y, legend, frame.area.height));
}

void Painter::draw_chart_axes(const Frame& frame)
{
    _dc.SetPen(wxPen(*wxBLACK, 1));
    _dc.SetBrush(*wxTRANSPARENT_BRUSH);
    _dc.DrawRectangle(frame.area);
    draw_key_ticks(frame);
    draw_value_ticks(frame);
}

void Painter::draw_key_ticks(const Frame& frame)
{
    const bool named = !_data.categories.empty();
    int last = -100000;
    for (double t : frame.key.ticks())
    {
        const wxPoint p = frame.at(t, frame.value.lo);
        wxString text = frame.key.label(t);
        if (named)
        {
            const long rank = std::lround(t);
            if (rank < 0 || rank >= static_cast<long>(_data.categories.size()))
                continue;
            text = _data.categories[static_cast<size_t>(rank)];
        }
        const wxSize extent = _dc.GetTextExtent(text);
        if (frame.keyVertical)
        {
            _dc.DrawLine(p.x, p.y, p.x - 5, p.y);
            _dc.DrawText(text, p.x - 8 - extent.x, p.y - extent.y / 2);
            continue;
        }
        _dc.DrawLine(p.x, p.y, p.x, p.y + 5);
        // Names that would overlap their left neighbour are left out.
        if (p.x - extent.x / 2 < last + 4)
            continue;
        _dc.DrawText(text, p.x - extent.x / 2, p.y + 7);
        last = p.x + extent.x / 2;
    }
}

// Light lines across the plot at the value ticks, under the data.
void Painter::draw_grid(const Frame& frame)
{
    _dc.SetPen(wxPen(wxColour(225, 225, 225), 1));
    for (double t : frame.value.ticks())
    {
        const wxPoint p = frame.at(frame.key.lo, t);
        if (frame.keyVertical)
            _dc.DrawLine(p.x, frame.area.y, p.x, frame.area.GetBottom());
        else
            _dc.DrawLine(frame.area.x, p.y, frame.area.GetRight(), p.y);
    }
}

void Painter::draw_value_ticks(const Frame& frame)
{
    _dc.SetPen(wxPen(*wxBLACK, 1));
    for (double t : frame.value.ticks())
    {
        const wxPoint p = frame.at(frame.key.lo, t);
        const wxString text = frame.value.label(t);
        const wxSize extent = _dc.GetTextExtent(text);
        if (frame.keyVertical)
        {
            _dc.DrawLine(p.x, p.y, p.x, p.y + 5);
            _dc.DrawText(text, p.x - extent.x / 2, p.y + 7);
        }
        else
        {
            _dc.DrawLine(p.x, p.y, p.x - 5, p.y);
            _dc.DrawText(text, p.x - 8 - extent.x, p.y - extent.y / 2);
        }
    }
}

void Painter::draw_axis_labels(const wxRect& area, const wxString& horizontal, const wxString& vertical,
                               int below, int left)
{
    _dc.SetTextForeground(*wxBLACK);
    const wxSize h = _dc.GetTextExtent(horizontal);
    _dc.DrawText(horizontal, area.x + (area.width - h.x) / 2, area.GetBottom() + below - MP_GAP - h.y);
    // Centred along the axis, but never off the image.
    const wxSize v = _dc.GetTextExtent(vertical);
    const int bottom = std::clamp(area.y + (area.height + v.x) / 2, std::min(v.x, _size.y), _size.y - 1);
    _dc.DrawRotatedText(vertical, area.x - left + MP_GAP / 2, bottom, 90.);
}

void Painter::draw_series(const Frame& frame)
{
    int barSeries = 0;
    for (const PlotSeries& s : _data.series)
        barSeries += s.style == PlotSeries::MP_BARS ? 1 : 0;
    const double group = bar_group_width();
    int barRank = 0;
    _dc.SetClippingRegion(frame.area.Inflate(1, 1));
    for (size_t rank = 0; rank < _data.series.size(); ++rank)
    {
        const PlotSeries& s = _data.series[rank];
        const wxColour colour = colour_of(PlotPalette::series(s.colour, static_cast<int>(rank)));
        if (s.style == PlotSeries::MP_BARS)
        {
            const double width = group / std::max(1, barSeries);
            const double offset = -0.5 * group + barRank * width;
            _dc.SetPen(wxPen(colour.ChangeLightness(70), 1));
            _dc.SetBrush(wxBrush(colour));
            for (size_t k = 0; k < s.x.size(); ++k)
            {
                const wxPoint a = frame.at(s.x[k] + offset, std::max(frame.value.lo, 0.));
                const wxPoint b = frame.at(s.x[k] + offset + width, s.y[k]);
                wxRect bar(wxPoint(std::min(a.x, b.x), std::min(a.y, b.y)),
                           wxPoint(std::max(a.x, b.x), std::max(a.y, b.y)));
                _dc.DrawRectangle(bar);
            }
            ++barRank;
            continue;
        }
        _dc.SetPen(wxPen(colour, 2));
        _dc.SetBrush(wxBrush(colour));
        std::vector<wxPoint> points;
        for (size_t k = 0; k < s.x.size(); ++k)
            points.push_back(frame.at(s.x[k], s.y[k]));
        if (points.size() > 1)
            _dc.DrawLines(static_cast<int>(points.size()), points.data());
        else if (points.size() == 1)
            _dc.DrawCircle(points.front(), 3);
    }
    _dc.DestroyClippingRegion();
}

int Painter::legend_width() const
{
    int width = 0;
    for (const PlotSeries& s : _data.series)
        width = std::max(width, _dc.GetTextExtent(s.name).x);
    return width == 0 ? 0 : width + MP_SWATCH + 3 * MP_GAP;
}

void Painter::draw_legend(const wxRect& area)
{
    if (_data.series.empty())
        return;
    const int line = std::max(_text, MP_SWATCH) + 4;
    const int height = static_cast<int>(_data.series.size()) * line + MP_GAP;
    _dc.SetPen(wxPen(wxColour(160, 160, 160), 1));
    _dc.SetBrush(*wxWHITE_BRUSH);
    _dc.DrawRectangle(area.x, area.y, area.width - MP_GAP, std::min(height, area.height));
    for (size_t rank = 0; rank < _data.series.size(); ++rank)
    {
        const PlotSeries& s = _data.series[rank];
        const int y = area.y + MP_GAP / 2 + static_cast<int>(rank) * line;
        if (y + line > area.GetBottom())
            break;
        const wxColour colour = colour_of(PlotPalette::series(s.colour, static_cast<int>(rank)));
        _dc.SetPen(wxPen(colour.ChangeLightness(70), 1));
        _dc.SetBrush(wxBrush(colour));
        if (s.style == PlotSeries::MP_BARS)
            _dc.DrawRectangle(area.x + MP_GAP / 2, y + 2, MP_SWATCH, MP_SWATCH - 2);
        else
        {
            _dc.SetPen(wxPen(colour, 3));
            _dc.DrawLine(area.x + MP_GAP / 2, y + line / 2, area.x + MP_GAP / 2 + MP_SWATCH, y + line / 2);
        }
        _dc.SetTextForeground(*wxBLACK);
        _dc.DrawText(s.name, area.x + MP_GAP + MP_SWATCH, y + (line - _text) / 2);
    }
}

void Painter::draw_map(wxRect area)
{
    const int nx = static_cast<int>(_data.mapX.size()), ny = static_cast<int>(_data.mapY.size());
    if (nx == 0 || ny == 0)
        return;
    const int left = _dc.GetTextExtent("0000").x + _text + 2 * MP_GAP;
    const int below = 2 * _text + 3 * MP_GAP;
    // The colour scale: its bar and numbers, under the value's name.
    const int scale =
        std::max(_dc.GetTextExtent("0.00").x + 20, _dc.GetTextExtent(_data.valueLabel).x) + 3 * MP_GAP;
    const int cell = std::max(1, std::min((area.width - left - scale) / nx, (area.height - below) / ny));
    // The grid and its scale are centred across the width.
    const int spare = std::max(0, area.width - left - scale - cell * nx);
    const wxRect grid(area.x + left + spare / 2, area.y, cell * nx, cell * ny);
    double lo = _data.valueMin, hi = _data.valueMax;
    double dlo = 0., dhi = 1.;
    _data.value_range(dlo, dhi);
    lo = lo == MP_UNDEF_REAL ? dlo : lo;
    hi = hi == MP_UNDEF_REAL ? dhi : hi;
    if (!(hi > lo))
        hi = lo + 1.;
    // Values are written in the cells they fit in.
    const bool write = _dc.GetTextExtent("0.00").x + 4 <= cell && _text + 2 <= cell;
    for (int r = 0; r < ny; ++r)
        for (int c = 0; c < nx; ++c)
        {
            const double v = _data.value(c, r);
            const wxRect box(grid.x + c * cell, grid.GetBottom() + 1 - (r + 1) * cell, cell, cell);
            const wxColour colour = v == MP_UNDEF_REAL ? wxColour(235, 235, 235)
                                                       : colour_of(PlotPalette::ramp((v - lo) / (hi - lo)));
            _dc.SetPen(write ? wxPen(*wxWHITE, 1) : *wxTRANSPARENT_PEN);
            _dc.SetBrush(wxBrush(colour));
            _dc.DrawRectangle(box);
            if (!write || v == MP_UNDEF_REAL)
                continue;
            const wxString text = wxString::Format("%.2f", v);
            const wxSize extent = _dc.GetTextExtent(text);
            const bool dark = colour.Red() * 0.3 + colour.Green() * 0.59 + colour.Blue() * 0.11 < 128;
            _dc.SetTextForeground(dark ? *wxWHITE : *wxBLACK);
            _dc.DrawText(text, box.x + (cell - extent.x) / 2, box.y + (cell - extent.y) / 2);
        }
    _dc.SetTextForeground(*wxBLACK);
    _dc.SetPen(wxPen(*wxBLACK, 1));
    _dc.SetBrush(*wxTRANSPARENT_BRUSH);
    _dc.DrawRectangle(grid);
    // Node numbers every so many cells, so that they do not touch.
    const int every = std::max(1, (_dc.GetTextExtent("0000").x + 4) / cell + 1);
    for (int c = 0; c < nx; c += every)
    {
        const wxString text = wxString::Format("%g", _data.mapX[static_cast<size_t>(c)]);
        const int x = grid.x + c * cell + cell / 2;
        _dc.DrawLine(x, grid.GetBottom(), x, grid.GetBottom() + 5);
        _dc.DrawText(text, x - _dc.GetTextExtent(text).x / 2, grid.GetBottom() + 7);
    }
    const int everyRow = std::max(1, (_text + 4) / cell + 1);
    for (int r = 0; r < ny; r += everyRow)
    {
        const wxString text = wxString::Format("%g", _data.mapY[static_cast<size_t>(r)]);
        const int y = grid.GetBottom() + 1 - r * cell - cell / 2;
        _dc.DrawLine(grid.x, y, grid.x - 5, y);
        const wxSize extent = _dc.GetTextExtent(text);
        _dc.DrawText(text, grid.x - 8 - extent.x, y - extent.y / 2);
    }
    draw_axis_labels(grid, _data.xLabel, _data.yLabel, below, left);
    // The colour scale, with the value's name above it.
    const wxRect bar(grid.GetRight() + 2 * MP_GAP, grid.y + _text + MP_GAP, 20,
                     std::max(40, grid.height - _text - MP_GAP));
    for (int y = 0; y < bar.height; ++y)
    {
        _dc.SetPen(wxPen(colour_of(PlotPalette::ramp(1. - static_cast<double>(y) / bar.height)), 1));
        _dc.DrawLine(bar.x, bar.y + y, bar.GetRight() + 1, bar.y + y);
    }
    _dc.SetPen(wxPen(*wxBLACK, 1));
    _dc.SetBrush(*wxTRANSPARENT_BRUSH);
    _dc.DrawRectangle(bar);
    _dc.DrawText(_data.valueLabel, bar.x, grid.y);
    Axis axis;
    axis.fit(lo, hi, 5, false);
    for (double t : axis.ticks())
    {
        const int y = bar.GetBottom() - static_cast<int>(std::lround(axis.share(t) * bar.height));
        _dc.DrawLine(bar.GetRight(), y, bar.GetRight() + 5, y);
        _dc.DrawText(axis.label(t), bar.GetRight() + 7, y - _text / 2);
    }
}
} // namespace

void PlotPainter::draw(wxDC& dc, const wxSize& size) const
{
    Painter(dc, size, _data).draw();
}

wxBitmap PlotPainter::render(const wxSize& size) const
{
    wxBitmap bitmap(size, 24);
    wxMemoryDC dc(bitmap);
    draw(dc, size);
    dc.SelectObject(wxNullBitmap);
    return bitmap;
}
