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

    // Four vertices per quad: xyz, a normal, rgb.
    const std::vector<float>& vertices() const { return _vertices; }
    const std::vector<float>& normals() const { return _normals; }
    const std::vector<unsigned char>& colors() const { return _colors; }
    size_t quad_count() const { return _vertices.size() / 12; }
    size_t box_count() const { return _boxes.size(); }

private:
    void add_quad(const float (&corners)[4][3], const float (&normal)[3], const ViewColor& color);
    void add_column(int i, int j, double dx, double dy);
    void add_side(const ColumnBox& box, int ni, int nj, float x0, float y0, float x1, float y1,
                  const float (&normal)[3]);

    int _nx = 0;
    int _ny = 0;
    // The boxes of all columns, column k's from _first[k] to _first[k + 1].
    std::vector<ColumnBox> _boxes;
    std::vector<size_t> _first;
    std::vector<float> _vertices;
    std::vector<float> _normals;
    std::vector<unsigned char> _colors;
};
