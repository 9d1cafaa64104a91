#include "images/tga.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::TempDir;
using test::tga_bytes;
using test::TgaForm;

struct ImageDeleter {
    void operator()(TgaImage* image) const { tga_free(image); }
};
using Image = std::unique_ptr<TgaImage, ImageDeleter>;

class Tga : public testing::Test {
protected:
    Image read(const std::string& bytes) {
        path = dir.write("picture.tga", bytes);
        return read_path(path);
    }
    Image read_path(const std::string& name) {
        error = nullptr;
        return Image(tga_read(name.c_str(), &error));
    }
    void expect_failure(const std::string& bytes, const std::string& text) {
        EXPECT_EQ(read(bytes), nullptr);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error, text + path);
    }
    void expect_pixels(const std::string& bytes, const std::string& expected) {
        const Image image = read(bytes);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(pixels(image), expected);
    }
    static std::string pixels(const Image& image) {
        const auto size = static_cast<size_t>(image->width) * static_cast<size_t>(image->height) * 3;
        return std::string(reinterpret_cast<const char*>(image->pixels), size);
    }

    TempDir dir;
    std::string path;
    const char* error = nullptr;
};

TgaForm form(int width, int height, int depth = 24) {
    TgaForm result;
    result.width = width;
    result.height = height;
    result.depth = depth;
    return result;
}

TgaForm with_id(TgaForm form, const std::string& id_field) {
    form.id_field = id_field;
    return form;
}

TEST_F(Tga, TurnsBlueGreenRedAroundAndTheRowsOver) {
    const Image image = read(tga_bytes(form(2, 2), "abcdefghijkl"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(pixels(image), "ihglkjcbafed");
}

TEST_F(Tga, DropsTheFourthByteOfAPixel) { expect_pixels(tga_bytes(form(2, 1, 32), "abc!def!"), "cbafed"); }

TEST_F(Tga, ReadsAThreeByThreePictureWithoutPadding) {
    expect_pixels(tga_bytes(form(3, 3), "aaabbbcccdddeeefffggghhhiii"), "ggghhhiiidddeeefffaaabbbccc");
}

TEST_F(Tga, TheOriginBitHasNoEffect) {
    TgaForm with_bit = form(1, 2);
    with_bit.descriptor = 0x20;
    expect_pixels(tga_bytes(with_bit, "abcdef"), "fedcba");
}

// The last byte of the id field stays in front of the pixels: intended.
TEST_F(Tga, AnIdFieldPutsThePixelsOneByteOutOfStep) {
    expect_pixels(tga_bytes(with_id(form(2, 1), "WXYZ"), "abcdef"), "baZedc");
}

TEST_F(Tga, AnIdFieldOfOneByteIsNotPassedOverAtAll) {
    expect_pixels(tga_bytes(with_id(form(1, 1), "Z"), "abc"), "baZ");
}

TEST_F(Tga, AnIdFieldEndsBehindALineFeed) {
    expect_pixels(tga_bytes(with_id(form(2, 1), "W\nXYZ"), "abcdef"), "ZYXcba");
}

TEST_F(Tga, AnIdFieldOfTheGreatestLengthRotatesTheChannels) {
    expect_pixels(tga_bytes(with_id(form(2, 1), std::string(255, 'i')), "abcdef"), "baiedc");
}

TEST_F(Tga, AMissingFileCannotBeOpened) {
    path = dir.file("none.tga");
    EXPECT_EQ(read_path(path), nullptr);
    EXPECT_EQ(error, "cannot open TGA file: " + path);
}

TEST_F(Tga, ADirectoryCannotBeOpened) {
    path = dir.make_dir("folder.tga");
    EXPECT_EQ(read_path(path), nullptr);
    EXPECT_EQ(error, "cannot open TGA file: " + path);
}

TEST_F(Tga, NoPathAndNoErrorOutputAreRefusedQuietly) {
    EXPECT_EQ(tga_read(nullptr, &error), nullptr);
    EXPECT_STREQ(error, "cannot open TGA file: ");
    EXPECT_EQ(tga_read(dir.file("none.tga").c_str(), nullptr), nullptr);
    tga_free(nullptr);
}

TEST_F(Tga, AShortHeaderFails) { expect_failure(std::string(17, '\x02'), "TGA read failed: "); }

TEST_F(Tga, AnEmptyFileFails) { expect_failure("", "TGA read failed: "); }

TEST_F(Tga, AnyOtherTypeFails) {
    for (const int type : {0, 1, 3, 10}) {
        TgaForm other = form(1, 1);
        other.type = type;
        expect_failure(tga_bytes(other, "abc"), "TGA file is not type 2 (true color, uncompressed): ");
    }
}

TEST_F(Tga, AnyOtherDepthFails) {
    for (const int depth : {0, 8, 16, 25, 255}) {
        expect_failure(tga_bytes(form(1, 1, depth), "abcd"), "TGA image is not 24 or 32 bits per pixel: ");
    }
}

TEST_F(Tga, ShortPixelsFail) { expect_failure(tga_bytes(form(2, 2), "abcdefghijk"), "TGA read failed: "); }

// Missing are the last rows of the file, which come first in the picture.
TEST_F(Tga, A32BitFileShortByAQuarterHasABlackTail) {
    const Image image = read(tga_bytes(form(1, 4, 32), "abc!def!ghi!"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(pixels(image), std::string(3, '\0') + "ihgfedcba");
}

TEST_F(Tga, A32BitFileShortByMoreThanAQuarterFails) {
    expect_failure(tga_bytes(form(1, 4, 32), "abc!def!ghi"), "TGA read failed: ");
}

TEST_F(Tga, APictureWithoutAPixelIsAPicture) {
    for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 5}, std::pair{7, 0}}) {
        const Image image = read(tga_bytes(form(width, height), ""));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->width, width);
        EXPECT_EQ(image->height, height);
        EXPECT_NE(image->pixels, nullptr);
    }
}

TEST_F(Tga, NegativeSizesFail) {
    expect_failure(tga_bytes(form(-2, 2), std::string(64, 'x')), "TGA read failed: ");
    expect_failure(tga_bytes(form(2, -2), std::string(64, 'x')), "TGA read failed: ");
    expect_failure(tga_bytes(form(-2, -2), std::string(64, 'x')), "TGA read failed: ");
    expect_failure(tga_bytes(form(-32768, 0), std::string(64, 'x')), "TGA read failed: ");
}

TEST_F(Tga, EnormousSizesFailWithoutAskingForTheMemory) {
    expect_failure(tga_bytes(form(32767, 32767, 32), std::string(64, 'x')), "TGA read failed: ");
    expect_failure(tga_bytes(form(32767, 32767, 24), std::string(64, 'x')), "TGA read failed: ");
}

TEST_F(Tga, AVeryLongPathIsReportedWhole) {
    const std::string name = dir.file(std::string(3000, 'n'));
    EXPECT_EQ(read_path(name), nullptr);
    EXPECT_EQ(error, "cannot open TGA file: " + name);
}

#ifndef _WIN32
TEST_F(Tga, IsFoundIgnoringCaseAndAcrossBackslashes) {
    dir.write("Skins/Red.TGA", test::solid_tga(1, 1, 200, 0, 0));
    const Image image = read_path(dir.path() + "/skins\\red.tga");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixels[0], 200);
}
#endif

}  // namespace
}  // namespace pelt
