// The perspective view: the block's visible faces, the surface, the channel.

#include "gui/InterfaceCanvas.h"

#include "kernel/domain/Domain.h"
#include "kernel/network/Network.h"
#include "view/ColumnBoxes.h"

#include <GL/glu.h>

#include <cmath>

void InterfaceCanvas::display_function_3D()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glLoadIdentity();
    set_3D_camera();
    glEnable(GL_LIGHTING);
    for (GLuint list : {_list_cube, _list_sections, _list_extra, _list_map})
        if (list != 0)
            glCallList(list);
    double eye[3];
    eye_in_block(eye);
    for (int side = 0; side < BlockMesh::SIDES; ++side)
        if (_view_3D_block && _list_block[side] != 0 &&
            _mesh.may_face(static_cast<BlockMesh::Side>(side), eye))
            glCallList(_list_block[side]);
    for (GLuint list : {_list_channel_grid, _list_channel_real})
        if (list != 0)
            glCallList(list);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    // The legend and the copyright stand on the screen, not in the block.
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    const wxSize size = GetClientSize();
    gluOrtho2D(0., size.x, 0., size.y);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (_list_legend != 0)
        glCallList(_list_legend);
    display_copyright();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

void InterfaceCanvas::set_3D_camera()
{
    const GLfloat ambient[] = {0.45f, 0.45f, 0.45f, 1.f};
    const GLfloat diffuse[] = {0.65f, 0.65f, 0.65f, 1.f};
    const GLfloat position[] = {0.3f, -0.5f, 1.f, 0.f};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, position);
    glEnable(GL_LIGHT0);
    const GLfloat specular[] = {0.f, 0.f, 0.f, 1.f};
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);
    gluLookAt(_cam_x, _cam_y - _distance.value(), _cam_z, _cam_x, _cam_y, _cam_z, 0., 0., 1.);
    glRotatef(static_cast<float>(_rot_x.value()), 1.f, 0.f, 0.f);
    glRotatef(static_cast<float>(_rot_z.value()), 0.f, 0.f, 1.f);
    const Domain* dom = domain();
    if (dom == nullptr)
        return;
    const double centre_z = 0.5 * (dom->min_elevation_rel() + dom->max_elevation_rel());
    glScalef(1.f, 1.f, static_cast<float>(get_scale_3D()));
    glTranslatef(static_cast<float>(-0.5 * (dom->getNx() - 1) * dom->getDx()),
                 static_cast<float>(-0.5 * (dom->getNy() - 1) * dom->getDy()), static_cast<float>(-centre_z));
}

// The frame of the domain and an arrow along the flow at its top.
void InterfaceCanvas::create_3D_cube()
{
    if (!_view_3D_view_cube)
        return;
    const Domain& dom = *domain();
    double zmin, zmax;
    dom.min_and_max_elevation_rel(zmin, zmax);
    const double x0 = -0.5 * dom.getDx(), x1 = (dom.getNx() - 0.5) * dom.getDx();
    const double y0 = -0.5 * dom.getDy(), y1 = (dom.getNy() - 0.5) * dom.getDy();
    begin_list(_list_cube);
    glDisable(GL_LIGHTING);
    glColor3f(0.2f, 0.2f, 0.2f);
    glBegin(GL_LINES);
    for (double z : {zmin, zmax})
    {
        glVertex3d(x0, y0, z), glVertex3d(x1, y0, z), glVertex3d(x1, y0, z), glVertex3d(x1, y1, z);
        glVertex3d(x1, y1, z), glVertex3d(x0, y1, z), glVertex3d(x0, y1, z), glVertex3d(x0, y0, z);
    }
    for (double x : {x0, x1})
        for (double y : {y0, y1})
            glVertex3d(x, y, zmin), glVertex3d(x, y, zmax);
    glEnd();
    const double a = dom.getFlowAngle() * 0.0174532925 - dom.getRotation() * 0.0174532925;
    const double cx = 0.5 * (x0 + x1), cy = 0.5 * (y0 + y1);
    const double len = 0.15 * (x1 - x0);
    glColor3f(0.9f, 0.1f, 0.1f);
    glLineWidth(3.f);
    glBegin(GL_LINES);
    glVertex3d(cx, cy, zmax);
    glVertex3d(cx + len * std::cos(a), cy + len * std::sin(a), zmax);
    glEnd();
    glLineWidth(1.f);
    glEnable(GL_LIGHTING);
    glEndList();
}

// The visible faces of the block, one vertex array per way they look.
void InterfaceCanvas::create_3D_block()
{
    if (!_view_3D_block)
        return;
    BlockKey key;
    key.network = _network;
    key.model = _model_revision;
    key.age = _age;
    key.coding = _colors_coding == FaciesColorMap::CODING_ERODIBILITY ? 0 : _colors_coding;
    key.colors = _colors.revision();
    if (_block_built && key == _block_key)
        return;
    _block_key = key;
    _block_built = true;
    ++_block_builds;
    _mesh.build(*domain(), _colors, key.coding);
    for (int k = 0; k < BlockMesh::SIDES; ++k)
    {
        const auto side = static_cast<BlockMesh::Side>(k);
        begin_list(_list_block[k]);
        // The mesh carries its shading: no lighting per vertex.
        glDisable(GL_LIGHTING);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glVertexPointer(3, GL_FLOAT, 0, _mesh.vertices(side).data());
        glColorPointer(3, GL_UNSIGNED_BYTE, 0, _mesh.colors(side).data());
        glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(4 * _mesh.quad_count(side)));
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glEnable(GL_LIGHTING);
        glEndList();
    }
}

// The model-view matrix is affine: the eye, at the origin of eye space, is
// at -A^-1 t in the block's frame.
void InterfaceCanvas::eye_in_block(double (&eye)[3]) const
{
    GLdouble m[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, m);
    // Column-major: A(r, c) = m[c * 4 + r], t = m[12..14].
    auto a = [&m](int r, int c) { return m[c * 4 + r]; };
    const double det = a(0, 0) * (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) -
                       a(0, 1) * (a(1, 0) * a(2, 2) - a(1, 2) * a(2, 0)) +
                       a(0, 2) * (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0));
    if (std::abs(det) < 1e-300)
    {
        eye[0] = eye[1] = eye[2] = 0.;
        return;
    }
    const double t[3] = {-m[12], -m[13], -m[14]};
    // Cramer's rule for A eye = -t.
    for (int k = 0; k < 3; ++k)
    {
        double b[3][3];
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                b[r][c] = c == k ? t[r] : a(r, c);
        eye[k] = (b[0][0] * (b[1][1] * b[2][2] - b[1][2] * b[2][1]) -
                  b[0][1] * (b[1][0] * b[2][2] - b[1][2] * b[2][0]) +
                  b[0][2] * (b[1][0] * b[2][1] - b[1][1] * b[2][0])) /
                 det;
    }
}

void InterfaceCanvas::create_3D_extra_domain()
{
    if (!_view_3D_view_extra_domain)
        return;
    const Domain& dom = *domain();
    const int mx = dom.get_mx() == MP_UNDEF_INT ? 0 : dom.get_mx();
    const int my = dom.get_my() == MP_UNDEF_INT ? 0 : dom.get_my();
    begin_list(_list_extra);
    glDisable(GL_LIGHTING);
    glColor4f(0.6f, 0.6f, 0.6f, 0.5f);
    for (int j = -my; j < dom.getNy() + my - 1; ++j)
    {
        glBegin(GL_LINE_STRIP);
        for (int i = -mx; i < dom.getNx() + mx; ++i)
            glVertex3d(i * dom.getDx(), j * dom.getDy(), dom.get_topo_extrapolated(true, false, i, j));
        glEnd();
        j += std::max(1, dom.getNy() / 40);
    }
    glEnable(GL_LIGHTING);
    glEndList();
}

void InterfaceCanvas::create_3D_sections_position()
{
    if (!_view_sections_position)
        return;
    const Domain& dom = *domain();
    double zmin, zmax;
    dom.min_and_max_elevation_rel(zmin, zmax);
    const double x = _x_section.value() * dom.getDx();
    const double y = _y_section.value() * dom.getDy();
    begin_list(_list_sections);
    glDisable(GL_LIGHTING);
    glLineWidth(2.f);
    glBegin(GL_LINE_LOOP);
    glColor3f(0.9f, 0.f, 0.f);
    glVertex3d(x, 0., zmin), glVertex3d(x, (dom.getNy() - 1) * dom.getDy(), zmin);
    glVertex3d(x, (dom.getNy() - 1) * dom.getDy(), zmax), glVertex3d(x, 0., zmax);
    glEnd();
    glBegin(GL_LINE_LOOP);
    glColor3f(0.f, 0.f, 0.9f);
    glVertex3d(0., y, zmin), glVertex3d((dom.getNx() - 1) * dom.getDx(), y, zmin);
    glVertex3d((dom.getNx() - 1) * dom.getDx(), y, zmax), glVertex3d(0., y, zmax);
    glEnd();
    glLineWidth(1.f);
    glEnable(GL_LIGHTING);
    glEndList();
}

void InterfaceCanvas::create_3D_channel_grid()
{
    if (!_view_channel_grid || _network->grid_points().empty())
        return;
    const Domain& dom = *domain();
    begin_list(_list_channel_grid);
    glDisable(GL_LIGHTING);
    glColor3f(0.3f, 0.5f, 1.f);
    glPointSize(3.f);
    glBegin(GL_POINTS);
    for (const ChannelGridPoint& p : _network->grid_points())
        glVertex3d(p.ix * dom.getDx(), p.iy * dom.getDy(), p.z + 0.05);
    glEnd();
    glEnable(GL_LIGHTING);
    glEndList();
}

void InterfaceCanvas::create_3D_channel_real()
{
    if (!_view_channel_real || !_network->has_channel())
        return;
    begin_list(_list_channel_real);
    glDisable(GL_LIGHTING);
    glColor3f(0.f, 0.25f, 0.9f);
    glLineWidth(3.f);
    glBegin(GL_LINE_STRIP);
    for (const ChannelPoint* p = _network->channel()->first(); p != nullptr; p = p->next())
        glVertex3d(p->getX(), p->getY(), p->getZ() + 0.05);
    glEnd();
    glLineWidth(1.f);
    glEnable(GL_LIGHTING);
    glEndList();
}

// The surface, lit by its normals, when the block is not drawn.
void InterfaceCanvas::create_3D_deposit_map()
{
    if (!_view_2D_deposit_map || _view_3D_block)
        return;
    const Domain& dom = *domain();
    const int nx = dom.getNx(), ny = dom.getNy();
    auto z = [&](int i, int j)
    { return _view_true_topo ? dom.getObject(i, j).get_ztop() : dom.getObject(i, j).get_topo_altered(); };
    begin_list(_list_map);
    for (int j = 0; j + 1 < ny; ++j)
    {
        glBegin(GL_TRIANGLE_STRIP);
        for (int i = 0; i < nx; ++i)
            for (int jj : {j + 1, j})
            {
                // calculate_normal: the gradient by centred differences.
                const int i0 = std::max(i - 1, 0), i1 = std::min(i + 1, nx - 1);
                const int j0 = std::max(jj - 1, 0), j1 = std::min(jj + 1, ny - 1);
                const double gx = (z(i1, jj) - z(i0, jj)) / ((i1 - i0) * dom.getDx());
                const double gy = (z(i, j1) - z(i, j0)) / ((j1 - j0) * dom.getDy());
                glNormal3d(-gx, -gy, 1.);
                Facies facies;
                uint32_t age = 0;
                ColumnBoxes::top_info(dom.getObject(i, jj), facies, age);
                const ViewColor c = _colors.facies_color(facies, age, _colors_coding);
                glColor3ub(c.red, c.green, c.blue);
                glVertex3d(i * dom.getDx(), jj * dom.getDy(), z(i, jj));
            }
        glEnd();
    }
    glEndList();
}

void InterfaceCanvas::mouse_motion_function_3D(const wxMouseEvent& event)
{
    const int dx = event.GetX() - _mouse.x;
    const int dy = event.GetY() - _mouse.y;
    if (_drag_left)
    {
        for (int k = 0; k < std::abs(dx); ++k)
            _rot_z.increment(dx > 0 ? 1 : -1);
        for (int k = 0; k < std::abs(dy); ++k)
            _rot_x.increment(dy > 0 ? 1 : -1);
    }
    else if (_drag_right)
    {
        for (int k = 0; k < std::abs(dy); ++k)
            _distance.increment(dy > 0 ? 1 : -1);
    }
    _rot_x.constrain_value();
    _rot_z.constrain_value();
    _distance.constrain_value();
}
