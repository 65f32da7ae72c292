#include "PngWriter.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace
{
std::string temp_path(const std::string& name)
{
    return (std::filesystem::temp_directory_path() / ("sarvo_png_" + name)).string();
}

// Decodes an 8-bit RGB file with libpng's simplified reader.
bool read_back(const std::string& path, RgbImage& image)
{
    png_image decoded{};
    decoded.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&decoded, path.c_str()))
        return false;
    decoded.format = PNG_FORMAT_RGB;
    image.width = static_cast<int>(decoded.width);
    image.height = static_cast<int>(decoded.height);
    image.rgb.assign(PNG_IMAGE_SIZE(decoded), 0);
    const bool ok = png_image_finish_read(&decoded, nullptr, image.rgb.data(), 0, nullptr) != 0;
    png_image_free(&decoded);
    return ok;
}

unsigned char channel(const RgbImage& image, int x, int y, int c)
{
    return image.rgb[(static_cast<size_t>(y) * image.width + x) * 3 + c];
}
} // namespace

TEST(PngWriter, WrittenImageDecodesToTheSamePixels)
{
    // A 7 x 3 image, wider than high, so that swapped axes would show.
    RgbImage image;
    image.width = 7;
    image.height = 3;
    image.rgb.resize(7 * 3 * 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 7; ++x)
        {
            const size_t k = (static_cast<size_t>(y) * 7 + x) * 3;
            image.rgb[k] = static_cast<unsigned char>(30 * x);
            image.rgb[k + 1] = static_cast<unsigned char>(80 * y);
            image.rgb[k + 2] = static_cast<unsigned char>(x == y ? 255 : 0);
        }
    const std::string path = temp_path("round.png");
    PngWriter writer;
    std::string message = "stale";
    ASSERT_TRUE(writer.writePng(path, image, message)) << message;
    EXPECT_TRUE(message.empty());

    RgbImage back;
    ASSERT_TRUE(read_back(path, back));
    EXPECT_EQ(back.width, 7);
    EXPECT_EQ(back.height, 3);
    EXPECT_EQ(back.rgb, image.rgb);
    EXPECT_EQ(channel(back, 6, 0, 0), 180);
    EXPECT_EQ(channel(back, 0, 2, 1), 160);
    EXPECT_EQ(channel(back, 2, 2, 2), 255);
    std::remove(path.c_str());
}

TEST(PngWriter, RefusesBadImagesAndUnwritablePaths)
{
    PngWriter writer;
    std::string message;
    RgbImage wrong;
    wrong.width = 4;
    wrong.height = 2;
    wrong.rgb.resize(5);
    EXPECT_FALSE(writer.writePng(temp_path("wrong.png"), wrong, message));
    EXPECT_EQ(message, "Invalid image of 4 x 2 pixels with 5 bytes");
    EXPECT_FALSE(std::filesystem::exists(temp_path("wrong.png")));

    RgbImage empty;
    EXPECT_FALSE(writer.writePng(temp_path("empty.png"), empty, message));

    RgbImage good;
    good.width = 1;
    good.height = 1;
    good.rgb = {1, 2, 3};
    EXPECT_FALSE(writer.writePng("/nonexistent-dir/x.png", good, message));
    EXPECT_EQ(message.rfind("Cannot open file /nonexistent-dir/x.png for writing: ", 0), 0u) << message;
}
