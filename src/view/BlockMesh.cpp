#include "view/BlockMesh.h"

#include "kernel/domain/Domain.h"

#include <algorithm>

void BlockMesh::clear()
{
    _boxes.clear();
    _first.clear();
    for (int side = 0; side < SIDES; ++side)
    {
        _vertices[side].clear();
        _colors[side].clear();
    }
}

void BlockMesh::build(const Domain& domain, const FaciesColorMap& colors, int coding)
{
    clear();
    _nx = domain.getNx();
    _ny = domain.getNy();
    _first.reserve(static_cast<size_t>(_nx) * _ny + 1);
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
        {
            _first.push_back(_boxes.size());
            ColumnBoxes::append(domain.getObject(i, j), colors, coding, _boxes);
        }
    _first.push_back(_boxes.size());
    for (int k = 0; k < 3; ++k)
    {
        _lo[k] = 1e30;
        _hi[k] = -1e30;
    }
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            add_column(i, j, domain.getDx(), domain.getDy());
}

ViewColor BlockMesh::shaded(const ViewColor& color, Side side)
{
    static const double brightness[] = {1., 0.55, 0.8, 0.88, 0.8, 0.92};
    const double f = brightness[side];
    return ViewColor{static_cast<unsigned char>(color.red * f + 0.5),
                     static_cast<unsigned char>(color.green * f + 0.5),
                     static_cast<unsigned char>(color.blue * f + 0.5)};
}

void BlockMesh::add_quad(const float (&corners)[4][3], Side side, const ViewColor& color)
{
    const ViewColor c = shaded(color, side);
    for (const auto& corner : corners)
    {
        _vertices[side].insert(_vertices[side].end(), corner, corner + 3);
        _colors[side].insert(_colors[side].end(), {c.red, c.green, c.blue});
        for (int k = 0; k < 3; ++k)
        {
            _lo[k] = std::min(_lo[k], static_cast<double>(corner[k]));
            _hi[k] = std::max(_hi[k], static_cast<double>(corner[k]));
        }
    }
}

size_t BlockMesh::quad_count() const
{
    size_t n = 0;
    for (int side = 0; side < SIDES; ++side)
        n += quad_count(static_cast<Side>(side));
    return n;
}

bool BlockMesh::may_face(Side side, const double (&eye)[3]) const
{
    switch (side)
    {
    case TOP:
        return eye[2] > _lo[2];
    case BOTTOM:
        return eye[2] < _hi[2];
    case EAST:
        return eye[0] > _lo[0];
    case WEST:
        return eye[0] < _hi[0];
    case NORTH:
        return eye[1] > _lo[1];
    default:
        return eye[1] < _hi[1];
    }
}

void BlockMesh::add_column(int i, int j, double dx, double dy)
{
    const size_t k = static_cast<size_t>(j) * _nx + i;
    const float x0 = static_cast<float>((i - 0.5) * dx);
    const float x1 = static_cast<float>((i + 0.5) * dx);
    const float y0 = static_cast<float>((j - 0.5) * dy);
    const float y1 = static_cast<float>((j + 0.5) * dy);
    for (size_t b = _first[k]; b < _first[k + 1]; ++b)
    {
        const ColumnBox& box = _boxes[b];
        const float zb = static_cast<float>(box.zbot);
        const float zt = static_cast<float>(box.ztop);
        const bool covered_above = b + 1 < _first[k + 1] && _boxes[b + 1].zbot <= box.ztop + 1e-9;
        const bool covered_below = b > _first[k] && _boxes[b - 1].ztop >= box.zbot - 1e-9;
        if (!covered_above)
            add_quad({{x0, y0, zt}, {x1, y0, zt}, {x1, y1, zt}, {x0, y1, zt}}, TOP, box.color);
        if (!covered_below)
            add_quad({{x0, y0, zb}, {x0, y1, zb}, {x1, y1, zb}, {x1, y0, zb}}, BOTTOM, box.color);
        add_side(box, i + 1, j, x1, y0, x1, y1, EAST);
        add_side(box, i - 1, j, x0, y1, x0, y0, WEST);
        add_side(box, i, j + 1, x1, y1, x0, y1, NORTH);
        add_side(box, i, j - 1, x0, y0, x1, y0, SOUTH);
    }
}

// The parts of the box's side not against the neighbour's filled height.
void BlockMesh::add_side(const ColumnBox& box, int ni, int nj, float x0, float y0, float x1, float y1,
                         Side side)
{
    double covered_bot = box.ztop;
    double covered_top = box.ztop;
    if (ni >= 0 && ni < _nx && nj >= 0 && nj < _ny)
    {
        const size_t n = static_cast<size_t>(nj) * _nx + ni;
        if (_first[n + 1] > _first[n])
        {
            covered_bot = _boxes[_first[n]].zbot;
            covered_top = _boxes[_first[n + 1] - 1].ztop;
        }
    }
    auto piece = [&](double za, double zb)
    {
        if (zb - za <= 1e-6)
            return;
        const float a = static_cast<float>(za);
        const float b = static_cast<float>(zb);
        add_quad({{x0, y0, a}, {x1, y1, a}, {x1, y1, b}, {x0, y0, b}}, side, box.color);
    };
    if (covered_top <= covered_bot)
    {
        piece(box.zbot, box.ztop);
        return;
    }
    piece(box.zbot, std::min(box.ztop, covered_bot));
    piece(std::max(box.zbot, covered_top), box.ztop);
}
