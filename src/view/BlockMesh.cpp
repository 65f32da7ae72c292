#include "view/BlockMesh.h"

#include "kernel/Domain.h"

#include <algorithm>

void BlockMesh::clear()
{
    _boxes.clear();
    _first.clear();
    _vertices.clear();
    _normals.clear();
    _colors.clear();
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
    for (int j = 0; j < _ny; ++j)
        for (int i = 0; i < _nx; ++i)
            add_column(i, j, domain.getDx(), domain.getDy());
}

void BlockMesh::add_quad(const float (&corners)[4][3], const float (&normal)[3], const ViewColor& color)
{
    for (const auto& c : corners)
    {
        _vertices.insert(_vertices.end(), c, c + 3);
        _normals.insert(_normals.end(), normal, normal + 3);
        _colors.insert(_colors.end(), {color.red, color.green, color.blue});
    }
}

void BlockMesh::add_column(int i, int j, double dx, double dy)
{
    const size_t k = static_cast<size_t>(j) * _nx + i;
    const float x0 = static_cast<float>((i - 0.5) * dx);
    const float x1 = static_cast<float>((i + 0.5) * dx);
    const float y0 = static_cast<float>((j - 0.5) * dy);
    const float y1 = static_cast<float>((j + 0.5) * dy);
    static const float up[3] = {0.f, 0.f, 1.f};
    static const float down[3] = {0.f, 0.f, -1.f};
    static const float east[3] = {1.f, 0.f, 0.f};
    static const float west[3] = {-1.f, 0.f, 0.f};
    static const float north[3] = {0.f, 1.f, 0.f};
    static const float south[3] = {0.f, -1.f, 0.f};
    for (size_t b = _first[k]; b < _first[k + 1]; ++b)
    {
        const ColumnBox& box = _boxes[b];
        const float zb = static_cast<float>(box.zbot);
        const float zt = static_cast<float>(box.ztop);
        const bool covered_above = b + 1 < _first[k + 1] && _boxes[b + 1].zbot <= box.ztop + 1e-9;
        const bool covered_below = b > _first[k] && _boxes[b - 1].ztop >= box.zbot - 1e-9;
        if (!covered_above)
            add_quad({{x0, y0, zt}, {x1, y0, zt}, {x1, y1, zt}, {x0, y1, zt}}, up, box.color);
        if (!covered_below)
            add_quad({{x0, y0, zb}, {x0, y1, zb}, {x1, y1, zb}, {x1, y0, zb}}, down, box.color);
        add_side(box, i + 1, j, x1, y0, x1, y1, east);
        add_side(box, i - 1, j, x0, y1, x0, y0, west);
        add_side(box, i, j + 1, x1, y1, x0, y1, north);
        add_side(box, i, j - 1, x0, y0, x1, y0, south);
    }
}

// The parts of the box's side not against the neighbour's filled height.
void BlockMesh::add_side(const ColumnBox& box, int ni, int nj, float x0, float y0, float x1, float y1,
                         const float (&normal)[3])
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
        add_quad({{x0, y0, a}, {x1, y1, a}, {x1, y1, b}, {x0, y0, b}}, normal, box.color);
    };
    if (covered_top <= covered_bot)
    {
        piece(box.zbot, box.ztop);
        return;
    }
    piece(box.zbot, std::min(box.ztop, covered_bot));
    piece(std::max(box.zbot, covered_top), box.ztop);
}
