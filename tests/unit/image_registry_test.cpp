#include "images/image_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/load_error.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::TempDir;

class ImageRegistry : public testing::Test {
protected:
    ImageRegistry() { load_error_set(nullptr); }
    ~ImageRegistry() override { EXPECT_EQ(list_count(image_registry()), 0) << "an image was left behind"; }

    std::string picture(const std::string& name, const std::string& pixels) {
        test::TgaForm form;
        form.width = static_cast<int>(pixels.size() / 3);
        return dir.write(name, test::tga_bytes(form, pixels));
    }
    unsigned char* load(const std::string& path) { return image_load(path.c_str(), &width, &height); }

    TempDir dir;
    int32_t width = -1;
    int32_t height = -1;
};

TEST_F(ImageRegistry, SharesAnImageByPath) {
    const std::string path = picture("a.tga", "abcdef");
    unsigned char* first = load(path);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(first[0], 'c');
    width = height = 0;
    EXPECT_EQ(load(path), first);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(image_find(path.c_str())->ref_count, 2);
    EXPECT_EQ(list_count(image_registry()), 1);

    EXPECT_EQ(image_release(path.c_str()), 1);
    EXPECT_EQ(image_find(path.c_str())->pixels, first) << "still used once";
    EXPECT_EQ(image_release(path.c_str()), 1);
    EXPECT_EQ(image_find(path.c_str()), nullptr);
    EXPECT_EQ(image_release(path.c_str()), 0);
}

TEST_F(ImageRegistry, IdsRiseAndFindTheirImage) {
    const std::string a = picture("a.tga", "abc");
    const std::string b = picture("b.tga", "abc");
    load(a);
    const int32_t first = image_find(a.c_str())->id;
    load(b);
    const int32_t second = image_find(b.c_str())->id;
    EXPECT_EQ(second, first + 1);
    EXPECT_EQ(image_find_id(second), image_find(b.c_str()));
    EXPECT_EQ(image_release_id(first), 1);
    EXPECT_EQ(image_find_id(first), nullptr);
    EXPECT_EQ(image_release_id(first), 0);
    load(a);
    EXPECT_EQ(image_find(a.c_str())->id, second + 1) << "an id never comes back";
    EXPECT_EQ(image_find(a.c_str())->ref_count, 1);
    EXPECT_EQ(image_find(a.c_str())->keyed_pixels, nullptr);
    image_release(a.c_str());
    image_release(b.c_str());
}

TEST_F(ImageRegistry, PathsAreComparedWithCase) {
    const std::string path = picture("a.tga", "abc");
    load(path);
    const std::string other = dir.file("A.tga");
    EXPECT_EQ(image_find(other.c_str()), nullptr);
    EXPECT_EQ(image_release(other.c_str()), 0);
    image_release(path.c_str());
}

// One image can be named in as many ways as there are words in a model, each an entry of its own.
TEST_F(ImageRegistry, EachOfThousandsOfSpellingsIsAnEntryOfItsOwn) {
    constexpr int MANY = 10000;
    constexpr int SPELLING_BITS = 14;
    picture("a.tga", "abc");
    std::vector<std::string> paths;
    for (int i = 0; i < MANY; ++i) {
        std::string path = dir.path() + "/";
        for (int bit = 0; bit < SPELLING_BITS; ++bit) path += (i >> bit & 1) != 0 ? ".//" : "./";
        paths.push_back(path + "a.tga");
        ASSERT_NE(load(paths.back()), nullptr);
    }
    EXPECT_EQ(list_count(image_registry()), MANY);
    for (const std::string& path : paths) EXPECT_EQ(image_find(path.c_str())->path, path);
    for (const std::string& path : paths) EXPECT_EQ(image_release(path.c_str()), 1);
    EXPECT_EQ(image_find(paths.front().c_str()), nullptr);
}

TEST_F(ImageRegistry, AFailureSetsTheLoadErrorAndZeroSizes) {
    const std::string path = dir.file("none.tga");
    EXPECT_EQ(load(path), nullptr);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(std::string(load_error_get()).substr(0, 22), "cannot open TGA file: ");
}

TEST_F(ImageRegistry, NullsAreRefusedWithoutAText) {
    const std::string path = picture("a.tga", "abc");
    EXPECT_EQ(image_load(nullptr, &width, &height), nullptr);
    EXPECT_EQ(image_load(path.c_str(), nullptr, &height), nullptr);
    EXPECT_EQ(image_load(path.c_str(), &width, nullptr), nullptr);
    EXPECT_EQ(image_release(nullptr), 0);
    EXPECT_EQ(image_find(nullptr), nullptr);
    EXPECT_EQ(image_keyed(nullptr, 0, 0, 0), nullptr);
    EXPECT_EQ(image_release_id(0), 0);
    EXPECT_EQ(image_release_id(-1), 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(ImageRegistry, TheKeyIsComparedExactly) {
    // Blue, green, red in the file.
    const std::string path = picture("a.tga", {"\x03\x02\x01" "\x03\x02\x02" "\x03\x02\x01", 9});
    load(path);
    const unsigned char* keyed = image_keyed(path.c_str(), 1, 2, 3);
    ASSERT_NE(keyed, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(keyed), 12),
              std::string("\x01\x02\x03\x00\x02\x02\x03\xFF\x01\x02\x03\x00", 12));
    image_release(path.c_str());
}

TEST_F(ImageRegistry, TheFirstKeyIsTheKeyOfAllUsers) {
    const std::string path = picture("a.tga", {"\x03\x02\x01", 3});
    load(path);
    unsigned char* keyed = image_keyed(path.c_str(), 1, 2, 3);
    EXPECT_EQ(image_keyed(path.c_str(), 9, 9, 9), keyed);
    EXPECT_EQ(keyed[3], 0);
    image_release(path.c_str());
}

TEST_F(ImageRegistry, AnUnknownPathHasNoKeyedPixels) {
    EXPECT_EQ(image_keyed(dir.file("none.tga").c_str(), 0, 0, 0), nullptr);
}

TEST_F(ImageRegistry, APictureWithoutAPixelCanBeKeyed) {
    const std::string path = picture("a.tga", "");
    ASSERT_NE(load(path), nullptr);
    EXPECT_NE(image_keyed(path.c_str(), 0, 0, 0), nullptr);
    image_release(path.c_str());
}

class Ps2Files : public ImageRegistry {
protected:
    Ps2Files() { load(path); }
    ~Ps2Files() override { image_release(path.c_str()); }
    void companion(char depth, const std::string& palette) {
        std::string bytes(32, '\0');
        bytes[4] = depth;
        bytes.replace(16, palette.size(), palette);
        dir.write("a.p2i", bytes);
    }
    std::string path = picture("a.tga", "abc");
};

TEST_F(ImageRegistry, AnEmptyRegistryPassesTheCheckOfCompanions) { EXPECT_EQ(image_check_ps2_files(), 1); }

TEST_F(Ps2Files, AMissingCompanionFails) {
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_EQ(load_error_get(), "cannot find PS2 image file: " + dir.file("a.p2i"));
}

TEST_F(Ps2Files, AShortCompanionFails) {
    dir.write("a.p2i", std::string(31, '\0'));
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_EQ(load_error_get(), "read failed PS2 image file: " + dir.file("a.p2i"));
}

TEST_F(Ps2Files, ADepthOfSixteenNeedsNoPalette) {
    companion(16, "");
    EXPECT_EQ(image_check_ps2_files(), 1);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(Ps2Files, ALowerDepthNeedsItsPaletteFile) {
    companion(15, "no_such_palette");
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_STREQ(load_error_get(), "cannot find PS2 colormap file: no_such_palette");
}

TEST_F(Ps2Files, APaletteNameWithoutAnEndStaysInTheHeader) {
    companion(8, "sixteen_letters_");
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_STREQ(load_error_get(), "cannot find PS2 colormap file: sixteen_letters_");
}

TEST_F(Ps2Files, APaletteFileIsLookedForFromTheCurrentDirectory) {
    companion(8, "palette");
    const auto before = std::filesystem::current_path();
    dir.write("palette.p2c", "");
    std::filesystem::current_path(dir.path());
    EXPECT_EQ(image_check_ps2_files(), 1);
    std::filesystem::current_path(before);
}

}  // namespace
}  // namespace pelt
