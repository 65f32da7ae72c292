#pragma once
// The kernel renders its previews into memory; an image writer outside the
// kernel turns them into files, so the kernel needs no image library.

#include <string>
#include <vector>

struct RgbImage
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb; // 3 bytes per pixel, rows top to bottom
};

class iImageWriter
{
public:
    virtual ~iImageWriter() = default;
    // False, with the reason in `message`, when the file cannot be written.
    virtual bool writePng(const std::string& path, const RgbImage& image, std::string& message) = 0;
};
