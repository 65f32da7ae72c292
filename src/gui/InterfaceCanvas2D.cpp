// The 2D views: the map from above and the two vertical sections.

#include "gui/InterfaceCanvas.h"

#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "kernel/parameters/MeanderCalculator.h"
#include "kernel/wells/Well.h"
#include "view/ColumnBoxes.h"

#include <GL/freeglut.h>

#include <cmath>

namespace
{
void color(const ViewColor& c)
{
    glColor3ub(c.red, c.green, c.blue);
}
} // namespace

void InterfaceCanvas::display_function_2D()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glLoadIdentity();
    for (GLuint list :
         {_list_map, _list_channel_grid, _list_channel_real, _list_sections, _list_wells, _list_ruler})
        if (list != 0)
            glCallList(list);
    draw_2D_horizontal_scale();
    draw_2D_vertical_scale();
    if (_list_legend != 0)
        glCallList(_list_legend);
    display_copyright();
}

// One quad per node, coloured by the deposit at the slice (the surface, or
// the surface eroded by the Z cut surface, when there is no slice).
void InterfaceCanvas::create_2D_deposit_map()
{
    if (!_view_2D_deposit_map)
        return;
    const Domain& dom = *domain();
    const double dx = dom.getDx();
    const double dy = dom.getDy();
    const bool cut = _view_zcut && _zcut.size() == static_cast<size_t>(dom.getNx()) * dom.getNy();
    begin_list(_list_map);
    glBegin(GL_QUADS);
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
        {
            const DepositionSet& set = dom.getObject(i, j);
            Facies facies;
            uint32_t age = 0;
            if (_slice_z < 1e29)
                set.slice_info(_slice_z, facies, age);
            else if (cut && _zcut[static_cast<size_t>(j) * dom.getNx() + i] < set.get_ztop_geo())
                set.slice_info(_zcut[static_cast<size_t>(j) * dom.getNx() + i] - 1e-6, facies, age);
            else
                ColumnBoxes::top_info(set, facies, age);
            color(_colors.facies_color(facies, age, _colors_coding));
            const float x0 = static_cast<float>((i - 0.5) * dx);
            const float y0 = static_cast<float>((j - 0.5) * dy);
            glVertex2f(x0, y0);
            glVertex2f(x0 + static_cast<float>(dx), y0);
            glVertex2f(x0 + static_cast<float>(dx), y0 + static_cast<float>(dy));
            glVertex2f(x0, y0 + static_cast<float>(dy));
        }
    glEnd();
    glEndList();
}

void InterfaceCanvas::create_2D_erodibility_map()
{
    if (!_view_2D_erodibility_map)
        return;
    const Domain& dom = *domain();
    double low = 1e30, high = -1e30;
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
        {
            low = std::min(low, dom.getErodibility(i, j));
            high = std::max(high, dom.getErodibility(i, j));
        }
    _colors.setErodibilityRange(low, high);
    begin_list(_list_map);
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
        {
            color(_colors.erodibility_color(dom.getErodibility(i, j)));
            glRectf(static_cast<float>((i - 0.5) * dom.getDx()), static_cast<float>((j - 0.5) * dom.getDy()),
                    static_cast<float>((i + 0.5) * dom.getDx()), static_cast<float>((j + 0.5) * dom.getDy()));
        }
    glEndList();
}

void InterfaceCanvas::create_2D_channel_grid()
{
    if (!_view_channel_grid || _network->grid_points().empty())
        return;
    const Domain& dom = *domain();
    begin_list(_list_channel_grid);
    glColor3f(0.1f, 0.2f, 0.7f);
    glLineWidth(1.f);
    for (const ChannelGridPoint& p : _network->grid_points())
    {
        const float x = static_cast<float>(p.ix * dom.getDx());
        const float y = static_cast<float>(p.iy * dom.getDy());
        const float hx = static_cast<float>(0.4 * dom.getDx());
        const float hy = static_cast<float>(0.4 * dom.getDy());
        glBegin(GL_LINE_LOOP);
        glVertex2f(x - hx, y - hy);
        glVertex2f(x + hx, y - hy);
        glVertex2f(x + hx, y + hy);
        glVertex2f(x - hx, y + hy);
        glEnd();
    }
    glEndList();
}

void InterfaceCanvas::create_2D_channel_real()
{
    if (!_view_channel_real || !_network->has_channel())
        return;
    const Channel& channel = *_network->channel();
    begin_list(_list_channel_real);
    glColor3f(0.f, 0.25f, 0.9f);
    glLineWidth(2.f);
    glBegin(GL_LINE_STRIP);
    for (const ChannelPoint* p = channel.first(); p != nullptr; p = p->next())
        glVertex2d(p->getX(), p->getY());
    glEnd();
    glLineWidth(1.f);
    if (_view_channel_perturbations)
    {
        // The points, red where the flow pushes the bank outwards, blue inwards.
        glPointSize(4.f);
        glBegin(GL_POINTS);
        for (const ChannelPoint* p = channel.first(); p != nullptr; p = p->next())
        {
            const double u1 = p->getFlowU1();
            glColor3f(u1 > 0. ? 0.9f : 0.1f, 0.1f, u1 > 0. ? 0.1f : 0.9f);
            glVertex2d(p->getX(), p->getY());
        }
        glEnd();
    }
    glEndList();
}

void InterfaceCanvas::create_2D_sections_position()
{
    if (!_view_sections_position)
        return;
    const Domain& dom = *domain();
    const double x = _x_section.value() * dom.getDx();
    const double y = _y_section.value() * dom.getDy();
    begin_list(_list_sections);
    glLineWidth(2.f);
    glBegin(GL_LINES);
    glColor3f(0.9f, 0.f, 0.f);
    glVertex2d(x, -0.5 * dom.getDy());
    glVertex2d(x, (dom.getNy() - 0.5) * dom.getDy());
    glColor3f(0.f, 0.f, 0.9f);
    glVertex2d(-0.5 * dom.getDx(), y);
    glVertex2d((dom.getNx() - 0.5) * dom.getDx(), y);
    glEnd();
    glLineWidth(1.f);
    glEndList();
}

// The cursor of the other section, a vertical line across a section view.
void InterfaceCanvas::create_2D_ysection_position()
{
    if (!_view_sections_position)
        return;
    const Domain& dom = *domain();
    double zmin, zmax;
    dom.min_and_max_elevation_rel(zmin, zmax);
    const bool along_y = _view_type == x_section;
    const double h = along_y ? _y_section.value() * dom.getDy() : _x_section.value() * dom.getDx();
    begin_list(_list_sections);
    glColor3f(along_y ? 0.f : 0.9f, 0.f, along_y ? 0.9f : 0.f);
    glLineWidth(2.f);
    glBegin(GL_LINES);
    glVertex2d(h, section_world_z(zmin));
    glVertex2d(h, section_world_z(zmax));
    glEnd();
    glLineWidth(1.f);
    glEndList();
}

void InterfaceCanvas::create_2D_xsection_position()
{
    create_2D_ysection_position();
}

void InterfaceCanvas::create_2D_well_labels()
{
    if (!_view_well_labels)
        return;
    const Domain& dom = *domain();
    const bool aerial_view = _view_type == aerial;
    const int fixed = _view_type == x_section ? _x_section.value() : _y_section.value();
    bool any = false;
    for (int j = 0; j < dom.getNy(); ++j)
        for (int i = 0; i < dom.getNx(); ++i)
        {
            const DepositionSet& set = dom.getObject(i, j);
            const auto* well = dynamic_cast<const Well*>(set.well());
            if (well == nullptr)
                continue;
            if (!aerial_view && (_view_type == x_section ? i : j) != fixed)
                continue;
            if (!any)
                begin_list(_list_wells);
            any = true;
            float rgb[3];
            well_properties(*well, true, rgb);
            glColor3fv(rgb);
            if (aerial_view)
            {
                const double x = i * dom.getDx();
                const double y = j * dom.getDy();
                glRectd(x - dom.getDx(), y - dom.getDy(), x + dom.getDx(), y + dom.getDy());
                draw_text(x + 1.5 * dom.getDx(), y + 1.5 * dom.getDy(), well->name());
            }
            else
            {
                const double h = _view_type == x_section ? j * dom.getDy() : i * dom.getDx();
                glLineWidth(3.f);
                glBegin(GL_LINES);
                glVertex2d(h, section_world_z(set.get_zbot()));
                glVertex2d(h, section_world_z(set.get_ztop()));
                glEnd();
                glLineWidth(1.f);
                draw_text(h, section_world_z(set.get_ztop()) + 4., well->name());
                if (_view_real_well_facies)
                    draw_well_facies(*well, h);
            }
        }
    if (any)
        glEndList();
}

// The well's interpreted log as a strip of its facies beside its column,
// bottom up from the log's base, outlined in black.
void InterfaceCanvas::draw_well_facies(const Well& well, double h)
{
    const Domain& dom = *domain();
    const double d = _view_type == x_section ? dom.getDy() : dom.getDx();
    const double x0 = h + 0.7 * d;
    const double x1 = h + 1.7 * d;
    double z = well.get_zbot();
    for (const WellUnit& unit : well.units())
    {
        color(_colors.facies_color(unit.facies(), unit.age(), _colors_coding));
        glRectd(x0, section_world_z(z), x1, section_world_z(z + unit.thickness()));
        z += unit.thickness();
    }
    glColor3f(0.f, 0.f, 0.f);
    glBegin(GL_LINE_LOOP);
    glVertex2d(x0, section_world_z(well.get_zbot()));
    glVertex2d(x1, section_world_z(well.get_zbot()));
    glVertex2d(x1, section_world_z(z));
    glVertex2d(x0, section_world_z(z));
    glEnd();
}

void InterfaceCanvas::create_2D_x_section()
{
    create_2D_section(true, _x_section.value());
}

void InterfaceCanvas::create_2D_y_section()
{
    create_2D_section(false, _y_section.value());
}

// The columns met along a section, their boxes bottom up; the upper limit
// above them as a dashed line when it is set.
void InterfaceCanvas::create_2D_section(bool along_y, int index)
{
    const Domain& dom = *domain();
    const int n = along_y ? dom.getNy() : dom.getNx();
    const double d = along_y ? dom.getDy() : dom.getDx();
    std::vector<ColumnBox> boxes;
    begin_list(_list_map);
    glBegin(GL_QUADS);
    for (int k = 0; k < n; ++k)
    {
        const DepositionSet& set = along_y ? dom.getObject(index, k) : dom.getObject(k, index);
        boxes.clear();
        ColumnBoxes::append(set, _colors, _colors_coding, boxes);
        const float h0 = static_cast<float>((k - 0.5) * d);
        const float h1 = static_cast<float>((k + 0.5) * d);
        for (const ColumnBox& box : boxes)
        {
            color(box.color);
            const float z0 = static_cast<float>(section_world_z(box.zbot));
            const float z1 = static_cast<float>(section_world_z(box.ztop));
            glVertex2f(h0, z0);
            glVertex2f(h1, z0);
            glVertex2f(h1, z1);
            glVertex2f(h0, z1);
        }
    }
    glEnd();
    if (_view_upper_limit)
    {
        glColor3f(0.8f, 0.f, 0.f);
        glEnable(GL_LINE_STIPPLE);
        glLineStipple(2, 0x00FF);
        glBegin(GL_LINES);
        for (int k = 0; k < n; ++k)
        {
            const DepositionSet& set = along_y ? dom.getObject(index, k) : dom.getObject(k, index);
            const double zul = set.get_zul();
            if (zul >= 1e29 || zul <= -1e29)
                continue;
            glVertex2d((k - 0.5) * d, section_world_z(zul));
            glVertex2d((k + 0.5) * d, section_world_z(zul));
        }
        glEnd();
        glDisable(GL_LINE_STIPPLE);
    }
    // The elevation the channel rises or sinks towards, once it is set.
    const double ep = _network->ep_elevation();
    if (_view_equilibrium_profile && std::abs(ep) < 1e4)
    {
        glColor3f(0.f, 0.3f, 0.9f);
        glEnable(GL_LINE_STIPPLE);
        glLineStipple(1, 0xF0F0);
        glBegin(GL_LINES);
        glVertex2d(-0.5 * d, section_world_z(ep));
        glVertex2d((n - 0.5) * d, section_world_z(ep));
        glEnd();
        glDisable(GL_LINE_STIPPLE);
    }
    glEndList();
}

void InterfaceCanvas::create_2D_x_channel_grid()
{
    create_2D_section_channel(true, _x_section.value(), false);
}

void InterfaceCanvas::create_2D_y_channel_grid()
{
    create_2D_section_channel(false, _y_section.value(), false);
}

void InterfaceCanvas::create_2D_x_channel_real()
{
    create_2D_section_channel(true, _x_section.value(), true);
}

void InterfaceCanvas::create_2D_y_channel_real()
{
    create_2D_section_channel(false, _y_section.value(), true);
}

// Where the channel crosses the section: its parabolic section, as the real
// channel (outlined) or as the grid nodes it covers on the section (filled).
void InterfaceCanvas::create_2D_section_channel(bool along_y, int index, bool real)
{
    if (!(real ? _view_channel_real : _view_channel_grid) || !_network->has_channel())
        return;
    const Domain& dom = *domain();
    GLuint& list = real ? _list_channel_real : _list_channel_grid;
    begin_list(list);
    if (real)
    {
        const double at = along_y ? index * dom.getDx() : index * dom.getDy();
        const double half = _network->channel()->half_width();
        glColor3f(0.f, 0.25f, 0.9f);
        glLineWidth(2.f);
        for (const ChannelPoint* p = _network->channel()->first(); p != nullptr && p->next() != nullptr;
             p = p->next())
        {
            const ChannelPoint* q = p->next();
            const double a = along_y ? p->getX() : p->getY();
            const double b = along_y ? q->getX() : q->getY();
            if ((a - at) * (b - at) > 0. || a == b)
                continue;
            const double t = (at - a) / (b - a);
            const double h =
                along_y ? p->getY() + t * (q->getY() - p->getY()) : p->getX() + t * (q->getX() - p->getX());
            const double z = p->getZ() + t * (q->getZ() - p->getZ());
            const double depth = MeanderCalculator::hmax_from_hmean(_network->channel()->mean_depth());
            glBegin(GL_LINE_STRIP);
            for (int s = 0; s <= 20; ++s)
            {
                const double n = -1. + s / 10.;
                glVertex2d(h + n * half, section_world_z(z - depth * (1. - n * n)));
            }
            glEnd();
        }
        glLineWidth(1.f);
    }
    else
    {
        const double d = along_y ? dom.getDy() : dom.getDx();
        glColor3f(0.3f, 0.5f, 1.f);
        for (const ChannelGridPoint& p : _network->grid_points())
        {
            if ((along_y ? p.ix : p.iy) != index)
                continue;
            const int k = along_y ? p.iy : p.ix;
            glRectd((k - 0.4) * d, section_world_z(p.bed), (k + 0.4) * d, section_world_z(p.z));
        }
    }
    glEndList();
}

void InterfaceCanvas::triggerRuler()
{
    if (_view_3D)
    {
        warn("Type of view can not be handled");
        return;
    }
    _ruler_mode = !_ruler_mode;
    _ruler_points.clear();
    if (_setup)
    {
        SetCurrent(*_context);
        delete_list(_list_ruler);
    }
}

// The ruler's segment and its length in metres, elevations taken back from
// the exaggeration in the sections.
void InterfaceCanvas::create_2D_ruler()
{
    if (_ruler_points.empty())
        return;
    std::vector<wxPoint> points = _ruler_points;
    if (points.size() == 1)
        points.push_back(_mouse);
    double ax, ay, bx, by;
    pixel_to_world(points[0].x, points[0].y, ax, ay);
    pixel_to_world(points[1].x, points[1].y, bx, by);
    const double scale = _view_type == aerial ? 1. : _zscale_2D.value();
    const double distance = std::hypot(bx - ax, (by - ay) / scale);
    begin_list(_list_ruler);
    glColor3f(0.f, 0.f, 0.f);
    glLineWidth(2.f);
    glBegin(GL_LINES);
    glVertex2d(ax, ay);
    glVertex2d(bx, by);
    glEnd();
    glLineWidth(1.f);
    char text[64];
    std::snprintf(text, sizeof text, "Distance: %.2f", distance);
    draw_text(bx, by, text);
    glEndList();
}

void InterfaceCanvas::mouse_function_2D(const wxMouseEvent& event)
{
    if (!_ruler_mode || !event.LeftDown())
        return;
    if (_ruler_points.size() >= 2)
        _ruler_points.clear();
    _ruler_points.push_back(_mouse);
    SetCurrent(*_context);
    create_2D_ruler();
    render();
}

void InterfaceCanvas::mouse_motion_function_2D(const wxMouseEvent&)
{
    if (_ruler_mode && _ruler_points.size() == 1)
    {
        SetCurrent(*_context);
        create_2D_ruler();
    }
}
