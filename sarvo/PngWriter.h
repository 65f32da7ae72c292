#pragma once
// Writes the kernel's rendered previews as PNG files (8-bit RGB) with libpng.

#include "interface/iImageWriter.h"

#include <string>

class PngWriter : public iImageWriter
{
public:
    // False, with the reason in `message`, for an image whose size does not
    // match its pixels, a file that cannot be opened, or a failure of the encoder.
    bool writePng(const std::string& path, const RgbImage& image, std::string& message) override;
};
