#include "PngWriter.h"

#include "kernel/common/StagedFile.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{

// libpng reports errors through a callback that must not return: the text is
// kept and control jumps back to the writer.
void on_error(png_structp png, png_const_charp text)
{
    auto* message = static_cast<std::string*>(png_get_error_ptr(png));
    if (message != nullptr)
        *message = text != nullptr ? text : "unknown error";
    png_longjmp(png, 1);
}

void on_warning(png_structp, png_const_charp) {}

// The encoding itself; no C++ object with a destructor lives in this frame
// across setjmp, since a longjmp would skip it.
bool encode(FILE* file, const RgbImage& image, std::string* error)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, error, on_error, on_warning);
    if (png == nullptr)
        return false;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr)
    {
        png_destroy_write_struct(&png, nullptr);
        return false;
    }
    if (setjmp(png_jmpbuf(png)))
    {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    const size_t stride = static_cast<size_t>(image.width) * 3;
    for (int y = 0; y < image.height; ++y)
        png_write_row(png, image.rgb.data() + static_cast<size_t>(y) * stride);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

} // namespace

bool PngWriter::writePng(const std::string& path, const RgbImage& image, std::string& message)
{
    if (image.width <= 0 || image.height <= 0 ||
        image.rgb.size() != static_cast<size_t>(image.width) * static_cast<size_t>(image.height) * 3)
    {
        message = "Invalid image of " + std::to_string(image.width) + " x " + std::to_string(image.height) +
                  " pixels with " + std::to_string(image.rgb.size()) + " bytes";
        return false;
    }
    StagedFile staged(path);
    FILE* file = std::fopen(staged.path().c_str(), "wb");
    if (file == nullptr)
    {
        message = "Cannot open file " + path + " for writing: " + std::strerror(errno);
        return false;
    }
    std::string error = "cannot initialise the PNG encoder";
    const bool encoded = encode(file, image, &error);
    const bool closed = std::fclose(file) == 0;
    if (!encoded || !closed || !staged.commit())
    {
        message = "Error while writing PNG file " + path + ": " +
                  (!encoded ? error
                   : closed ? std::string("cannot rename it")
                            : std::string("cannot close it"));
        return false;
    }
    message.clear();
    return true;
}
