#pragma once
// The regular block as a VTK XML file for 3D viewers: image data (".vti") when
// the domain is not rotated, a structured grid (".vts") with its rotated
// corners otherwise. Coordinates are geographic; the cell arrays are the
// facies family, the grain-size class, the grain size and the age, written as
// zlib-compressed raw binary appended data. Void cells are hidden.

#include <string>

class RegularBlock;

class VtkWriter
{
public:
    explicit VtkWriter(const RegularBlock& block);

    // True when the block needs a structured grid, that is when it is rotated.
    bool is_structured() const;
    // `path` with the suffix of the dataset written (".vti" or ".vts") in place
    // of its own.
    std::string file_name(const std::string& path) const;
    // False with the reason in `getError`; the file is written under `path`
    // as given, the caller having chosen its suffix with `file_name`.
    bool write(const std::string& path);
    const std::string& getError() const { return _error; }

private:
    std::string header() const;
    std::string appended_arrays(std::string& arrays) const;

    const RegularBlock& _block;
    std::string _error;
};
