#pragma once
// The block sampled on a regular 3D grid, as every exporter and the Python
// bridge take it: one sample per cell centre, column after column (i slowest,
// then j), each column bottom up. Void samples carry the facies byte 255.

#include "kernel/geometry/GridParams.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class RegularBlock
{
public:
    static constexpr unsigned char MP_VOID_FACIES = 255;

    // Cells in x, y, z; the origin (x0, y0) is the first column's grid index and
    // z0 the geographic elevation of the lowest sample's centre.
    GridParams geometry;
    // The full facies byte (family and grain-size class).
    std::vector<unsigned char> facies;
    // -1 for void samples.
    std::vector<double> grain;
    // 0 for void samples.
    std::vector<uint32_t> age;

    int nx() const { return geometry.getNx(); }
    int ny() const { return geometry.getNy(); }
    int nz() const { return geometry.getNz(); }
    size_t size() const { return facies.size(); }
    size_t index(int i, int j, int k) const
    {
        return (static_cast<size_t>(i) * static_cast<size_t>(ny()) + static_cast<size_t>(j)) *
                   static_cast<size_t>(nz()) +
               static_cast<size_t>(k);
    }
    bool is_void(size_t n) const { return facies[n] == MP_VOID_FACIES; }
};
