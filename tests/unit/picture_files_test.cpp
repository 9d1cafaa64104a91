// Pictures as files, read back by others: a PNG by the library that reads such files, a TGA by the reader of textures.
#include "images/picture_files.h"

#include <gtest/gtest.h>
#include <png.h>

#include <string>
#include <vector>

#include "images/tga.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

// Every pixel another one, so that rows and channels cannot be taken for each other.
uint8_t value_at(int32_t x, int32_t y, int32_t channel) {
    return static_cast<uint8_t>((x * 7 + y * 31 + channel * 101 + x * y) & 0xFF);
}

Picture make_picture(int32_t width, int32_t height, int32_t channels) {
    Picture picture;
    EXPECT_TRUE(picture_make(width, height, channels, &picture));
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            for (int32_t channel = 0; channel < channels; ++channel) {
                picture.row(y)[x * channels + channel] = value_at(x, y, channel);
            }
        }
    }
    return picture;
}

struct Source {
    const uint8_t* bytes;
    size_t left;
};

void read_from(png_structp reader, png_bytep to, size_t size) {
    auto* source = static_cast<Source*>(png_get_io_ptr(reader));
    if (size > source->left) { png_error(reader, "the file is too short"); }
    std::copy_n(source->bytes, size, to);
    source->bytes += size;
    source->left -= size;
}

// What such a file holds.
struct Read {
    uint32_t width = 0, height = 0;
    int bits = 0, colours = 0;
    uint32_t per_metre = 0;
    size_t left = 0;
    std::vector<uint8_t> pixels;
};

Read read_png(const PictureFile& file) {
    Read read;
    Source source{file.bytes.get(), file.size};
    png_structp reader = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(reader);
    png_set_read_fn(reader, &source, read_from);
    png_read_info(reader, info);
    read.width = png_get_image_width(reader, info);
    read.height = png_get_image_height(reader, info);
    read.bits = png_get_bit_depth(reader, info);
    read.colours = png_get_color_type(reader, info);
    read.per_metre = png_get_x_pixels_per_meter(reader, info);
    const size_t row_size = png_get_rowbytes(reader, info);
    read.pixels.resize(row_size * read.height);
    for (uint32_t y = 0; y < read.height; ++y) { png_read_row(reader, &read.pixels[y * row_size], nullptr); }
    png_read_end(reader, nullptr);
    png_destroy_read_struct(&reader, &info, nullptr);
    read.left = source.left;
    return read;
}

std::vector<uint8_t> pixels_of(const Picture& picture) {
    return {picture.pixels.get(), picture.pixels.get() + picture.row_size() * static_cast<size_t>(picture.height)};
}

TEST(PictureFiles, APngHoldsThePictureAndNothingBehindIt) {
    for (const int32_t channels : {3, 4}) {
        const Picture picture = make_picture(37, 23, channels);
        PictureFile file;
        std::string failure;
        ASSERT_TRUE(picture_to_png(picture, 0, &file, &failure)) << failure;
        const Read read = read_png(file);
        EXPECT_EQ(read.width, 37u);
        EXPECT_EQ(read.height, 23u);
        EXPECT_EQ(read.bits, 8);
        EXPECT_EQ(read.colours, channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
        EXPECT_EQ(read.per_metre, 0u);
        EXPECT_EQ(read.left, 0u);
        EXPECT_EQ(read.pixels, pixels_of(picture));
    }
}

TEST(PictureFiles, APngTellsTheDotsPerInchInThoseOfAMetre) {
    const Picture picture = make_picture(3, 2, 3);
    PictureFile file;
    std::string failure;
    ASSERT_TRUE(picture_to_png(picture, 300, &file, &failure));
    EXPECT_EQ(read_png(file).per_metre, 11811u);
    ASSERT_TRUE(picture_to_png(picture, 1, &file, &failure));
    EXPECT_EQ(read_png(file).per_metre, 39u);
}

TEST(PictureFiles, APngOfOnePixelAndOneThatOutgrowsItsFirstMemory) {
    PictureFile file;
    std::string failure;
    const Picture one = make_picture(1, 1, 3);
    ASSERT_TRUE(picture_to_png(one, 0, &file, &failure));
    EXPECT_EQ(read_png(file).pixels, pixels_of(one));

    Picture noise = make_picture(400, 400, 3);
    uint32_t seed = 1;
    for (uint8_t* at = noise.row(0); at < noise.row(400); ++at) {
        seed = seed * 1664525u + 1013904223u;
        *at = static_cast<uint8_t>(seed >> 24);
    }
    ASSERT_TRUE(picture_to_png(noise, 0, &file, &failure));
    EXPECT_GT(file.size, 400000u);
    EXPECT_EQ(read_png(file).pixels, pixels_of(noise));
}

TEST(PictureFiles, APictureThatThePngLibraryRefusesIsAFailureWithItsText) {
    Picture picture = make_picture(1, 1, 3);
    picture.width = 0x7FFFFFFF;  // more than such a file may have by the library's own limit; no pixel is looked at
    PictureFile file;
    std::string failure;
    EXPECT_FALSE(picture_to_png(picture, 0, &file, &failure));
    EXPECT_NE(failure, "");
    EXPECT_NE(failure, "no memory for the file");
}

TEST(PictureFiles, ATgaIsOneThatTheReaderOfTexturesReads) {
    const test::TempDir dir;
    const Picture picture = make_picture(300, 5, 3);
    PictureFile file;
    std::string failure;
    ASSERT_TRUE(picture_to_tga(picture, &file, &failure));
    EXPECT_EQ(file.size, 18u + 300 * 5 * 3);
    const std::string path =
        dir.write("picture.tga", std::string(reinterpret_cast<const char*>(file.bytes.get()), file.size));
    const char* error = nullptr;
    TgaImage* image = tga_read(path.c_str(), &error);
    ASSERT_NE(image, nullptr) << error;
    EXPECT_EQ(image->width, 300);
    EXPECT_EQ(image->height, 5);
    // The record has the last row of the file first, which is the upper one.
    EXPECT_EQ(std::vector<uint8_t>(image->pixels, image->pixels + 300 * 5 * 3), pixels_of(picture));
    tga_free(image);
}

TEST(PictureFiles, ATgaWithAlphaSaysSoInItsHeader) {
    const Picture picture = make_picture(2, 1, 4);
    PictureFile file;
    std::string failure;
    ASSERT_TRUE(picture_to_tga(picture, &file, &failure));
    const std::vector<int> bytes(file.bytes.get(), file.bytes.get() + file.size);
    const std::vector<int> header = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0, 32, 8};
    EXPECT_EQ(std::vector<int>(bytes.begin(), bytes.begin() + 18), header);
    const std::vector<int> pixels = {value_at(0, 0, 2), value_at(0, 0, 1), value_at(0, 0, 0), value_at(0, 0, 3),
                                     value_at(1, 0, 2), value_at(1, 0, 1), value_at(1, 0, 0), value_at(1, 0, 3)};
    EXPECT_EQ(std::vector<int>(bytes.begin() + 18, bytes.end()), pixels);
}

}  // namespace
}  // namespace pelt
