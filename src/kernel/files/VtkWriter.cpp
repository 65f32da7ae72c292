#include "kernel/files/VtkWriter.h"
#include "kernel/common/StagedFile.h"

#include "kernel/common/Facies.h"
#include "kernel/geometry/RegularBlock.h"

#include <zlib.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>
#include <vector>

namespace
{
// Viewers hide cells flagged this way (the hidden-cell bit of the ghost array).
constexpr unsigned char MP_VTK_HIDDEN_CELL = 32;
// The size of the pieces compressed one by one, as VTK's own writers do.
constexpr size_t MP_VTK_BLOCK_SIZE = 32768;

std::string real_text(double value)
{
    std::ostringstream out;
    out.precision(std::numeric_limits<double>::max_digits10);
    out << value;
    return out.str();
}

template <typename T> void append_raw(std::vector<unsigned char>& bytes, T value)
{
    unsigned char raw[sizeof(T)];
    std::memcpy(raw, &value, sizeof(T));
    bytes.insert(bytes.end(), raw, raw + sizeof(T));
}

// One compressed array: a header of 64-bit counts (blocks, block size, size of
// the last partial block or 0, then each compressed size), then the blocks.
bool compress_array(const std::vector<unsigned char>& raw, std::string& out)
{
    const size_t blocks = raw.empty() ? 0 : (raw.size() + MP_VTK_BLOCK_SIZE - 1) / MP_VTK_BLOCK_SIZE;
    const size_t last = raw.size() % MP_VTK_BLOCK_SIZE;
    std::vector<unsigned char> header;
    std::vector<unsigned char> body;
    std::vector<uint64_t> sizes;
    std::vector<unsigned char> buffer(compressBound(MP_VTK_BLOCK_SIZE));
    for (size_t b = 0; b < blocks; ++b)
    {
        const size_t begin = b * MP_VTK_BLOCK_SIZE;
        const size_t length = std::min(MP_VTK_BLOCK_SIZE, raw.size() - begin);
        uLongf compressed = static_cast<uLongf>(buffer.size());
        if (compress2(buffer.data(), &compressed, raw.data() + begin, static_cast<uLong>(length),
                      Z_DEFAULT_COMPRESSION) != Z_OK)
            return false;
        sizes.push_back(compressed);
        body.insert(body.end(), buffer.begin(), buffer.begin() + static_cast<long>(compressed));
    }
    append_raw<uint64_t>(header, blocks);
    append_raw<uint64_t>(header, MP_VTK_BLOCK_SIZE);
    append_raw<uint64_t>(header, last);
    for (uint64_t size : sizes)
        append_raw<uint64_t>(header, size);
    out.append(header.begin(), header.end());
    out.append(body.begin(), body.end());
    return true;
}

bool little_endian()
{
    const uint16_t one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
}
} // namespace

VtkWriter::VtkWriter(const RegularBlock& block) : _block(block) {}

bool VtkWriter::is_structured() const
{
    return _block.geometry.getRotation() != 0.;
}

std::string VtkWriter::file_name(const std::string& path) const
{
    const std::string suffix = is_structured() ? ".vts" : ".vti";
    const size_t slash = path.find_last_of('/');
    const size_t dot = path.find_last_of('.');
    const bool has_suffix = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    return (has_suffix ? path.substr(0, dot) : path) + suffix;
}

std::string VtkWriter::header() const
{
    const GridParams& g = _block.geometry;
    std::ostringstream extent;
    extent << "0 " << g.getNx() << " 0 " << g.getNy() << " 0 " << g.getNz();
    std::ostringstream out;
    out << "<?xml version=\"1.0\"?>\n"
        << "<VTKFile type=\"" << (is_structured() ? "StructuredGrid" : "ImageData")
        << "\" version=\"1.0\" byte_order=\"LittleEndian\" header_type=\"UInt64\""
        << " compressor=\"vtkZLibDataCompressor\">\n";
    if (is_structured())
        out << "  <StructuredGrid WholeExtent=\"" << extent.str() << "\">\n";
    else
    {
        // The corner of the first cell: samples stand at cell centres.
        const double x = g.getLocation().get_abscissa() + (g.getX0() - 0.5) * g.getDx();
        const double y = g.getLocation().get_ordinate() + (g.getY0() - 0.5) * g.getDy();
        const double z = g.getZ0() - 0.5 * g.getDz();
        out << "  <ImageData WholeExtent=\"" << extent.str() << "\" Origin=\"" << real_text(x) << " "
            << real_text(y) << " " << real_text(z) << "\" Spacing=\"" << real_text(g.getDx()) << " "
            << real_text(g.getDy()) << " " << real_text(g.getDz()) << "\">\n";
    }
    out << "    <Piece Extent=\"" << extent.str() << "\">\n";
    return out.str();
}

// The arrays' descriptions go to `arrays`; their data are returned in file order.
std::string VtkWriter::appended_arrays(std::string& arrays) const
{
    const GridParams& g = _block.geometry;
    const int nx = g.getNx();
    const int ny = g.getNy();
    const int nz = g.getNz();
    const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny) * static_cast<size_t>(nz);
    std::vector<unsigned char> family, grain_class, ghost, grain, age;
    family.reserve(cells);
    grain_class.reserve(cells);
    ghost.reserve(cells);
    grain.reserve(cells * sizeof(double));
    age.reserve(cells * sizeof(double));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // Cells run x fastest, then y, then z; the block keeps columns together.
    for (int k = 0; k < nz; ++k)
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i)
            {
                const size_t n = _block.index(i, j, k);
                const bool empty = _block.is_void(n);
                const unsigned char byte = _block.facies[n];
                family.push_back(empty ? RegularBlock::MP_VOID_FACIES : Facies::family(byte));
                grain_class.push_back(empty ? RegularBlock::MP_VOID_FACIES
                                            : static_cast<unsigned char>(byte >> 4));
                ghost.push_back(empty ? MP_VTK_HIDDEN_CELL : 0);
                append_raw<double>(grain, empty ? nan : _block.grain[n]);
                append_raw<double>(age, empty ? nan : static_cast<double>(_block.age[n]));
            }
    std::string data;
    std::ostringstream cell_data;
    cell_data << "      <CellData Scalars=\"Facies\">\n";
    auto add =
        [&](const char* name, const char* type, const std::vector<unsigned char>& raw, int components = 1)
    {
        cell_data << "        <DataArray type=\"" << type << "\" Name=\"" << name
                  << "\" NumberOfComponents=\"" << components << "\" format=\"appended\" offset=\""
                  << data.size() << "\"/>\n";
        return compress_array(raw, data);
    };
    bool ok = add("Facies", "UInt8", family) && add("GrainSizeClass", "UInt8", grain_class) &&
              add("GrainSize", "Float64", grain) && add("Age", "Float64", age) &&
              add("vtkGhostType", "UInt8", ghost);
    cell_data << "      </CellData>\n";
    if (is_structured())
    {
        // Cell corners, rotated counter-clockwise about the domain's location.
        std::vector<unsigned char> points;
        points.reserve(static_cast<size_t>(nx + 1) * static_cast<size_t>(ny + 1) * (nz + 1) * 3 * 8);
        for (int k = 0; k <= nz; ++k)
            for (int j = 0; j <= ny; ++j)
                for (int i = 0; i <= nx; ++i)
                {
                    const double x = (g.getX0() + i - 0.5) * g.getDx();
                    const double y = (g.getY0() + j - 0.5) * g.getDy();
                    append_raw<double>(points,
                                       g.getCosine() * x - g.getSine() * y + g.getLocation().get_abscissa());
                    append_raw<double>(points,
                                       g.getSine() * x + g.getCosine() * y + g.getLocation().get_ordinate());
                    append_raw<double>(points, g.getZ0() + (k - 0.5) * g.getDz());
                }
        cell_data << "      <Points>\n";
        ok = ok && add("Points", "Float64", points, 3);
        cell_data << "      </Points>\n";
    }
    arrays = cell_data.str();
    return ok ? data : std::string();
}

bool VtkWriter::write(const std::string& path)
{
    _error.clear();
    if (!little_endian())
    {
        _error = "VTK export needs a little-endian machine";
        return false;
    }
    std::string arrays;
    const std::string data = appended_arrays(arrays);
    if (data.empty())
    {
        _error = "Cannot compress the block for VTK file " + path;
        return false;
    }
    StagedFile staged(path);
    std::ofstream file(staged.path(), std::ios::binary);
    if (!file)
    {
        _error = "Cannot write VTK file " + path;
        return false;
    }
    const char* kind = is_structured() ? "StructuredGrid" : "ImageData";
    file << header() << arrays << "    </Piece>\n  </" << kind << ">\n"
         << "  <AppendedData encoding=\"raw\">\n   _" << data << "\n  </AppendedData>\n</VTKFile>\n";
    file.close();
    if (!file.good() || !staged.commit())
    {
        _error = "Cannot write VTK file " + path;
        return false;
    }
    return true;
}
