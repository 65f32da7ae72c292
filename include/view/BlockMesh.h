#pragma once
// The visible faces of the block in perspective, as quads ready for one
// vertex array: each column's boxes (adjacent equal facies merged), of which
// only the faces that border empty space are kept. The face between two
// filled cells, above, below or beside, is never seen and never drawn.
//
// Positions are relative metres, node (i, j) at the centre of its cell, so
// that the vertical exaggeration is a scale of the view, not a rebuild.

#include "view/ColumnBoxes.h"
#include "view/FaciesColorMap.h"

#include <cstddef>
#include <vector>

class Domain;

class BlockMesh
{
public:
    void build(const Domain& domain, const FaciesColorMap& colors, int coding);
    void clear();

    // The way a face looks: up, down, +x, -x, +y, -y.
    enum Side
    {
        TOP,
        BOTTOM,
        EAST,
        WEST,
        NORTH,
        SOUTH
    };
    static constexpr int SIDES = 6;

    // The quads facing one way, four vertices each: xyz and rgb. The light
    // is in the colours: a face is shaded by the way it faces, as under a
    // light from above, which saves the renderer its lighting of every vertex.
    const std::vector<float>& vertices(Side side) const { return _vertices[side]; }
    const std::vector<unsigned char>& colors(Side side) const { return _colors[side]; }
    size_t quad_count(Side side) const { return _vertices[side].size() / 12; }
    size_t quad_count() const;
    size_t box_count() const { return _boxes.size(); }

    // Whether faces looking `side` can be seen from `eye` (in the mesh's
    // frame, z unexaggerated): a face looking +x is seen only from beyond
    // its own x, so from beyond the block's least x.
    bool may_face(Side side, const double (&eye)[3]) const;
    static ViewColor shaded(const ViewColor& color, Side side);

private:
    void add_quad(const float (&corners)[4][3], Side side, const ViewColor& color);
    void add_column(int i, int j, double dx, double dy);
    void add_side(const ColumnBox& box, int ni, int nj, float x0, float y0, float x1, float y1, Side side);

    int _nx = 0;
    int _ny = 0;
    // The boxes of all columns, column k's from _first[k] to _first[k + 1].
    std::vector<ColumnBox> _boxes;
    std::vector<size_t> _first;
    std::vector<float> _vertices[SIDES];
    std::vector<unsigned char> _colors[SIDES];
    // The block's bounds.
    double _lo[3] = {0., 0., 0.};
    double _hi[3] = {0., 0., 0.};
};
