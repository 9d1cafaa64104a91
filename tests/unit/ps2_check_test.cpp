// The check of an image's console companions over several images, and the forms of their header.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

class Ps2Check : public testing::Test {
protected:
    Ps2Check() : before(std::filesystem::current_path()) {
        std::filesystem::current_path(dir.path());
        load_error_set(nullptr);
    }
    ~Ps2Check() override {
        for (const std::string& path : loaded) { image_release(path.c_str()); }
        EXPECT_EQ(list_count(image_registry()), 0);
        std::filesystem::current_path(before);
    }
    const ImageData* load(const std::string& name) {
        const std::string path = dir.write(name, test::solid_tga(1, 1, 1, 2, 3));
        int32_t width = 0;
        int32_t height = 0;
        EXPECT_NE(image_load(path.c_str(), &width, &height), nullptr);
        loaded.push_back(path);
        return image_find(path.c_str());
    }
    // The depth is written byte by byte, lowest first.
    void companion(const std::string& name, const std::string& depth, const std::string& palette = "") {
        std::string bytes(32, '\xEE');
        bytes.replace(4, 4, depth);
        bytes.replace(16, 16, (palette + std::string(16, '\0')).substr(0, 16));
        dir.write(name, bytes);
    }
    static std::string error() { return load_error_get() != nullptr ? load_error_get() : "none"; }

    test::TempDir dir;
    const std::filesystem::path before;
    std::vector<std::string> loaded;
};

const std::string DEPTH_16("\x10\0\0\0", 4);
const std::string DEPTH_8("\x08\0\0\0", 4);

TEST_F(Ps2Check, AllImagesMustPassAndTheFirstThatDoesNotIsNamed) {
    load("a.tga");
    load("b.tga");
    load("c.tga");
    companion("a.p2i", DEPTH_16);
    companion("c.p2i", DEPTH_16);
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_EQ(error(), "cannot find PS2 image file: " + dir.file("b.p2i"));
    companion("b.p2i", DEPTH_16);
    EXPECT_EQ(image_check_ps2_files(), 1);
}

TEST_F(Ps2Check, OneImageCanBeCheckedAlone) {
    const ImageData* good = load("a.tga");
    const ImageData* bad = load("b.tga");
    companion("a.p2i", DEPTH_16);
    EXPECT_EQ(image_check_ps2_file(good), 1);
    EXPECT_EQ(image_check_ps2_file(bad), 0);
    EXPECT_EQ(error(), "cannot find PS2 image file: " + dir.file("b.p2i"));
    EXPECT_EQ(image_check_ps2_file(nullptr), 0);
}

TEST_F(Ps2Check, TheDepthHas32BitsLowestByteFirst) {
    load("a.tga");
    companion("a.p2i", std::string("\0\x01\0\0", 4));
    EXPECT_EQ(image_check_ps2_files(), 1) << "256";
    companion("a.p2i", std::string("\0\0\0\x80", 4), "p");
    EXPECT_EQ(image_check_ps2_files(), 0) << "a negative depth is below 16";
    EXPECT_EQ(error(), "cannot find PS2 colormap file: p");
}

TEST_F(Ps2Check, ThePaletteNameHasItsExtensionAddedWhateverItHolds) {
    load("a.tga");
    companion("a.p2i", DEPTH_8, "wood.x");
    dir.write("wood.x.p2c", "");
    EXPECT_EQ(image_check_ps2_files(), 1);
}

TEST_F(Ps2Check, ThePaletteIsNotLookedForBesideTheImage) {
    load("sub/a.tga");
    companion("sub/a.p2i", DEPTH_8, "wood");
    dir.write("sub/wood.p2c", "");
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_EQ(error(), "cannot find PS2 colormap file: wood");
    dir.write("wood.p2c", "");
    EXPECT_EQ(image_check_ps2_files(), 1);
}

TEST_F(Ps2Check, AnImageWithoutAnExtensionHasItsCompanionNamedBehindTheWholeName) {
    load("picture");
    companion("picturep2i", DEPTH_16);
    EXPECT_EQ(image_check_ps2_files(), 1);
}

TEST_F(Ps2Check, ADirectoryIsNoCompanion) {
    load("a.tga");
    dir.make_dir("a.p2i");
    EXPECT_EQ(image_check_ps2_files(), 0);
    EXPECT_EQ(error(), "cannot find PS2 image file: " + dir.file("a.p2i"));
}

}  // namespace
}  // namespace pelt
