#pragma once
// Draws a PlotData on any wxDC: title, axes with ticks and numbers, axis
// labels, legend, curves and bars of a chart, or the coloured cells of a map
// with their values where they fit. The window and its saved images share it.

#include "tools/PlotData.h"

#include <wx/bitmap.h>
#include <wx/dc.h>

class PlotPainter
{
public:
    explicit PlotPainter(const PlotData& data) : _data(data) {}

    void draw(wxDC& dc, const wxSize& size) const;
    // The drawing on a white bitmap of that size.
    wxBitmap render(const wxSize& size) const;

private:
    const PlotData& _data;
};
