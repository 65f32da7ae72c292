// The legend, the scales and the texts of the views.

#include "gui/InterfaceCanvas.h"

#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "kernel/wells/Well.h"
#include "view/ScaleSteps.h"

#include <GL/freeglut.h>
#include <GL/glu.h>

#include <cmath>
#include <set>

void InterfaceCanvas::draw_text(double x, double y, const std::string& text) const
{
    glRasterPos2d(x, y);
    glutBitmapString(GLUT_BITMAP_HELVETICA_12, reinterpret_cast<const unsigned char*>(text.c_str()));
}

std::vector<std::string> InterfaceCanvas::legend_lines() const
{
    char line[128];
    std::vector<std::string> lines;
    const int zscale2 = static_cast<int>(std::lround(_zscale_2D.value()));
    const int zscale3 = static_cast<int>(std::lround(_zscale_3D.value()));
    if (_view_3D)
    {
        std::snprintf(line, sizeof line, "Z Scale: %d", zscale3);
        lines.push_back(line);
    }
    else if (_view_type == aerial)
    {
        if (_slice_z < 1e29)
        {
            std::snprintf(line, sizeof line, "Z Slice: %g", _slice_z);
            lines.push_back(line);
        }
        if (_ruler_points.empty() || !_ruler_mode)
            std::snprintf(line, sizeof line, "Sections: %d,%d", _x_section.value() + 1,
                          _y_section.value() + 1);
        else
        {
            double wx, wy;
            pixel_to_world(_ruler_points[0].x, _ruler_points[0].y, wx, wy);
            const Domain* dom = domain();
            std::snprintf(line, sizeof line, "Sections: %d,%d {%d,%d}", _x_section.value() + 1,
                          _y_section.value() + 1, static_cast<int>(std::lround(wx / dom->getDx())) + 1,
                          static_cast<int>(std::lround(wy / dom->getDy())) + 1);
        }
        lines.push_back(line);
    }
    else if (_view_type == x_section)
    {
        std::snprintf(line, sizeof line, "X Section #%d [Y:%d] / Z Scale: %d", _x_section.value() + 1,
                      _y_section.value() + 1, zscale2);
        lines.push_back(line);
    }
    else
    {
        std::snprintf(line, sizeof line, "Y Section #%d [X:%d] / Z Scale: %d", _y_section.value() + 1,
                      _x_section.value() + 1, zscale2);
        lines.push_back(line);
    }
    if (!_view_3D)
        lines.push_back(_view_upper_limit ? "Upper Limit: Shown" : "Upper Limit: Hidden");
    return lines;
}

// The view's lines at the top left, and the families the view can show
// with their colours along the top, in window pixels.
void InterfaceCanvas::create_legend()
{
    if (!_setup)
        return;
    const wxSize size = GetClientSize();
    begin_list(_list_legend);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0., size.x, 0., size.y);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glColor3f(0.f, 0.f, 0.f);
    int y = size.y - 16;
    for (const std::string& line : legend_lines())
    {
        draw_text(8., y, line);
        y -= 15;
    }
    if (_colors_coding == FaciesColorMap::CODING_FACIES ||
        _colors_coding == FaciesColorMap::CODING_FACIES_GRAIN)
    {
        int x = 260;
        int row = size.y - 18;
        for (unsigned char f = 1; f < Facies::number_of_facies(); ++f)
        {
            const std::string name = Facies::description(f).long_name();
            const int width = 26 + 7 * static_cast<int>(name.size());
            if (x + width > size.x)
            {
                x = 260;
                row -= 18;
            }
            const ViewColor c = _colors.getColor(f);
            glColor3ub(c.red, c.green, c.blue);
            glRectf(x, row, x + 12, row + 12);
            glColor3f(0.f, 0.f, 0.f);
            glBegin(GL_LINE_LOOP);
            glVertex2f(x, row), glVertex2f(x + 12, row), glVertex2f(x + 12, row + 12),
                glVertex2f(x, row + 12);
            glEnd();
            draw_text(x + 16, row + 1, name);
            x += width;
        }
    }
    else
    {
        static const char* names[] = {"",
                                      "Grain size: fine to coarse",
                                      "Facies, darker when finer",
                                      "Facies, darker when finer and older",
                                      "Age: old (blue) to young (red)",
                                      "Erodibility: low to high"};
        draw_text(260., size.y - 16, names[_colors_coding]);
    }
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glEndList();
}

// A scale bar along the bottom, ticks on round steps of metres.
void InterfaceCanvas::draw_2D_horizontal_scale()
{
    double x0, x1, y0, y1;
    world_box(x0, x1, y0, y1);
    const wxSize size = GetClientSize();
    const double per_pixel = (x1 - x0) / size.x;
    double sx = x0 + 70. * per_pixel, sy = y0 + 25. * (y1 - y0) / size.y;
    if (!_hscale_default)
        pixel_to_world(_hscale_at.x, _hscale_at.y, sx, sy);
    const Domain* dom = domain();
    const double length =
        dom != nullptr ? (_view_type == x_section ? dom->getNy() * dom->getDy() : dom->getNx() * dom->getDx())
                       : 1.;
    const double step = ScaleSteps::tick_step(length, length / per_pixel, 60.);
    const int ticks = std::max(1, static_cast<int>(std::floor(0.5 * length / step)));
    const double tick_h = 5. * (y1 - y0) / size.y;
    glColor3f(0.f, 0.f, 0.f);
    glBegin(GL_LINES);
    glVertex2d(sx, sy);
    glVertex2d(sx + ticks * step, sy);
    for (int k = 0; k <= ticks; ++k)
        glVertex2d(sx + k * step, sy), glVertex2d(sx + k * step, sy + tick_h);
    glEnd();
    char text[64];
    std::snprintf(text, sizeof text, "%g m", ticks * step);
    draw_text(sx + ticks * step + 4. * per_pixel, sy, text);
    draw_text(sx, sy - 15. * (y1 - y0) / size.y, "0");
}

// Elevations along the left side of a section, in metres.
void InterfaceCanvas::draw_2D_vertical_scale()
{
    const Domain* dom = domain();
    if (_view_type == aerial || dom == nullptr)
        return;
    double x0, x1, y0, y1;
    world_box(x0, x1, y0, y1);
    const wxSize size = GetClientSize();
    double zmin, zmax;
    dom->min_and_max_elevation_rel(zmin, zmax);
    if (!(zmax > zmin))
        return;
    const double per_pixel_z = (y1 - y0) / size.y / _zscale_2D.value();
    const double step = ScaleSteps::tick_step(zmax - zmin, (zmax - zmin) / per_pixel_z, 30.);
    double sx = x0 + 60. * (x1 - x0) / size.x, unused = 0.;
    if (!_vscale_default)
        pixel_to_world(_vscale_at.x, _vscale_at.y, sx, unused);
    const double first = std::ceil(zmin / step) * step;
    const double tick_w = 5. * (x1 - x0) / size.x;
    glColor3f(0.f, 0.f, 0.f);
    glBegin(GL_LINES);
    glVertex2d(sx, section_world_z(zmin));
    glVertex2d(sx, section_world_z(zmax));
    for (double z = first; z <= zmax + 1e-9; z += step)
        glVertex2d(sx - tick_w, section_world_z(z)), glVertex2d(sx, section_world_z(z));
    glEnd();
    const double zref = dom->getZref();
    for (double z = first; z <= zmax + 1e-9; z += step)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%g", zref + z);
        draw_text(sx - 55. * (x1 - x0) / size.x, section_world_z(z) - 4. * (y1 - y0) / size.y, text);
    }
}

void InterfaceCanvas::display_copyright()
{
    const wxSize size = GetClientSize();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0., size.x, 0., size.y);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glColor3f(0.4f, 0.4f, 0.4f);
    draw_text(size.x - 60., 6., "Sarvo");
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

// Green for a well the simulation honours, red for one it does not yet.
void InterfaceCanvas::well_properties(const Well& well, bool, float rgb[3]) const
{
    const bool honored = well.all_honored();
    rgb[0] = honored ? 0.f : 0.85f;
    rgb[1] = honored ? 0.6f : 0.f;
    rgb[2] = 0.f;
}
