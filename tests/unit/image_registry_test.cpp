#include "images/image_registry.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
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

TEST_F(ImageRegistry, PathsThatArePutAsideAreLookedAtAfresh) {
    const std::string path = picture("a.tga", "abcdef");
    const std::string other = picture("b.tga", "abc");
    load(path);
    load(other);
    const int32_t first = image_find(path.c_str())->id;
    const int32_t untouched = image_find(other.c_str())->id;
    picture("a.tga", "ghijklmno");

    image_paths_begin();
    EXPECT_EQ(image_find(path.c_str()), nullptr);
    load(path);
    EXPECT_EQ(width, 3) << "what the file holds now";
    const int32_t second = image_find(path.c_str())->id;
    image_paths_end(true);
    EXPECT_EQ(image_find(path.c_str())->id, second);
    EXPECT_EQ(image_find(other.c_str())->id, untouched);
    EXPECT_EQ(image_find_id(first)->width, 2) << "stays with those who use it";

    EXPECT_EQ(image_release_id(first), 1);
    EXPECT_EQ(image_find(path.c_str())->id, second) << "the former one took its own path away only";
    EXPECT_EQ(image_release_id(second), 1);
    EXPECT_EQ(image_find(path.c_str()), nullptr);
    image_release_id(untouched);
}

TEST_F(ImageRegistry, AReadThatFailsLeavesThePathsAsTheyWere) {
    const std::string path = picture("a.tga", "abcdef");
    load(path);
    const int32_t first = image_find(path.c_str())->id;
    image_paths_begin();
    load(path);
    const int32_t second = image_find(path.c_str())->id;
    EXPECT_NE(second, first);
    image_release_id(second);
    image_paths_end(false);
    EXPECT_EQ(image_find(path.c_str())->id, first);
    image_release_id(first);
}

TEST_F(ImageRegistry, AnImageReleasedWhilePathsArePutAsideIsFoundNoMore) {
    const std::string path = picture("a.tga", "abcdef");
    load(path);
    const int32_t first = image_find(path.c_str())->id;
    image_paths_begin();
    image_release_id(first);
    image_paths_end(true);
    EXPECT_EQ(image_find(path.c_str()), nullptr);
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
        for (int bit = 0; bit < SPELLING_BITS; ++bit) { path += (i >> bit & 1) != 0 ? ".//" : "./"; }
        paths.push_back(path + "a.tga");
        ASSERT_NE(load(paths.back()), nullptr);
    }
    EXPECT_EQ(list_count(image_registry()), MANY);
    for (const std::string& path : paths) { EXPECT_EQ(image_find(path.c_str())->path, path); }
    for (const std::string& path : paths) { EXPECT_EQ(image_release(path.c_str()), 1); }
    EXPECT_EQ(image_find(paths.front().c_str()), nullptr);
}

TEST_F(ImageRegistry, SpellingsAndNamesOfOneFileHaveTheirPixelsInCommon) {
    const std::string path = picture("a.tga", "abcdef");
    const std::string spelling = dir.path() + "/./a.tga";
    const std::string link = dir.file("link.tga");
    std::filesystem::create_hard_link(path, link);
    const std::string alike = picture("alike.tga", "abcdef");
    unsigned char* pixels = load(path);
    EXPECT_EQ(load(spelling), pixels);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(load(link), pixels);
    EXPECT_NE(load(alike), pixels) << "a file of its own";
    EXPECT_EQ(list_count(image_registry()), 4);
    EXPECT_EQ(image_find(path.c_str())->ref_count, 1);
    EXPECT_NE(image_find(path.c_str())->id, image_find(spelling.c_str())->id);
    for (const std::string& used : {path, link, alike}) { EXPECT_EQ(image_release(used.c_str()), 1); }
    EXPECT_EQ(image_find(spelling.c_str())->pixels, pixels);
    EXPECT_EQ(pixels[0], 'c');
    EXPECT_EQ(image_release(spelling.c_str()), 1);
}

TEST_F(ImageRegistry, SpellingsHaveKeyedPixelsInCommonWhereTheirKeysAreAlike) {
    const std::string path = picture("a.tga", {"\x03\x02\x01", 3});
    const std::string second = dir.path() + "/./a.tga";
    const std::string third = dir.path() + "/././a.tga";
    for (const std::string& used : {path, second, third}) { load(used); }
    const unsigned char* keyed = image_keyed(path.c_str(), 1, 2, 3);
    EXPECT_EQ(image_keyed(second.c_str(), 1, 2, 3), keyed);
    const unsigned char* other = image_keyed(third.c_str(), 9, 9, 9);
    EXPECT_NE(other, keyed);
    EXPECT_EQ(other[3], 255);
    EXPECT_EQ(image_keyed(third.c_str(), 1, 2, 3), other) << "the first key of a spelling stays its key";
    image_release(path.c_str());
    EXPECT_EQ(keyed[3], 0);
    image_release(second.c_str());
    EXPECT_EQ(image_keyed(third.c_str(), 1, 2, 3), other);
    image_release(third.c_str());
}

// The times of a file move in steps: a change right behind a load need not show in them.
TEST_F(ImageRegistry, AFileThatChangedIsReadAgainUnderAnotherSpelling) {
    const std::string path = picture("a.tga", "aaaaaa");
    const std::string spelling = dir.path() + "/./a.tga";
    for (const std::string& pixels : {std::string("bbbbbb"), std::string("cccccc"), std::string("dddddd")}) {
        const unsigned char* before = load(path);
        const unsigned char kept = before[0];
        picture("a.tga", pixels);
        ASSERT_NE(load(spelling), nullptr);
        EXPECT_EQ(image_find(spelling.c_str())->pixels[0], static_cast<unsigned char>(pixels[0]));
        EXPECT_EQ(before[0], kept) << "the one that is in use stays";
        image_release(path.c_str());
        image_release(spelling.c_str());
    }
}

TEST_F(ImageRegistry, AFileThatChangedLongAfterItWasLoadedIsReadAgainUnderAnotherSpelling) {
    const std::string path = picture("a.tga", "aaaaaa");
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));  // its times are settled then
    const unsigned char* before = load(path);
    const std::string same = dir.path() + "/./a.tga";
    EXPECT_EQ(load(same), before);
    const auto time = std::filesystem::last_write_time(path);
    picture("a.tga", "bbbbbb");
    std::filesystem::last_write_time(path, time);  // as a copy that keeps the time does
    const std::string other = dir.path() + "/././a.tga";
    ASSERT_NE(load(other), nullptr);
    EXPECT_EQ(image_find(other.c_str())->pixels[0], 'b');
    for (const std::string& used : {path, same, other}) { image_release(used.c_str()); }
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
    const std::string path = picture("a.tga", {"\x03\x02\x01"
                                               "\x03\x02\x02"
                                               "\x03\x02\x01",
                                               9});
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

TEST_F(ImageRegistry, AnotherKeyIsThatOfAnotherEntryOfThePath) {
    const std::string path = picture("a.tga", "abcdef");
    ASSERT_NE(load(path), nullptr);
    const int32_t first = image_find(path.c_str())->id;
    const ImageData* keyed = image_with_key(first, 'c', 'b', 'a');
    ASSERT_NE(keyed, nullptr);
    EXPECT_EQ(keyed->id, first) << "it had no key yet";
    EXPECT_EQ(keyed->keyed_pixels[3], 0);
    const ImageData* other = image_with_key(first, 1, 1, 1);
    ASSERT_NE(other, nullptr);
    const int32_t second = other->id;
    EXPECT_NE(second, first);
    EXPECT_EQ(other->keyed_pixels[3], 255);
    EXPECT_EQ(other->pixels, image_find_id(first)->pixels);
    EXPECT_EQ(image_find(path.c_str())->id, second);
    EXPECT_EQ(image_with_key(first, 1, 1, 1)->id, second) << "the one that is found by the path has it";
    EXPECT_EQ(image_with_key(second, 'c', 'b', 'a')->ref_count, 1) << "neither it nor the one that is found has it";
    EXPECT_EQ(image_with_key(999999, 1, 1, 1), nullptr);
    const int32_t third = image_find(path.c_str())->id;
    EXPECT_EQ(image_find_id(first)->ref_count, 2);
    EXPECT_EQ(image_find_id(second)->ref_count, 2);
    for (const int32_t id : {first, second}) {
        image_release_id(id);
        image_release_id(id);
    }
    image_release_id(third);
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

// ---- holding ----

TEST_F(ImageRegistry, AHeldImageCountsAsNoReferenceAndIsFoundNoMoreWhenTheLastOneGoes) {
    const std::string path = picture("a.tga", "abcdef");
    unsigned char* pixels = load(path);
    const int32_t id = image_find(path.c_str())->id;
    EXPECT_TRUE(image_hold(id));
    EXPECT_EQ(image_find(path.c_str())->ref_count, 1);
    EXPECT_EQ(image_held_bytes(), 0) << "somebody else has them";
    image_release_id(id);
    EXPECT_EQ(image_find(path.c_str()), nullptr);
    EXPECT_EQ(image_find_id(id), nullptr);
    EXPECT_EQ(list_count(image_registry()), 0);
    EXPECT_EQ(image_held_bytes(), 2 * 3);

    EXPECT_TRUE(image_restore(id));
    EXPECT_EQ(image_find(path.c_str())->id, id);
    EXPECT_EQ(image_find_id(id)->pixels, pixels);
    EXPECT_EQ(image_find_id(id)->ref_count, 1);
    EXPECT_EQ(image_held_bytes(), 0);
    image_unhold(id);
    EXPECT_EQ(image_find_id(id)->pixels[0], 'c');
    image_release_id(id);
    EXPECT_FALSE(image_restore(id));
    EXPECT_FALSE(image_hold(id));
}

TEST_F(ImageRegistry, AFileThatChangedIsReadAfreshThoughAnImageOfItIsHeld) {
    const std::string path = picture("a.tga", "abcdef");
    load(path);
    const int32_t first = image_find(path.c_str())->id;
    image_hold(first);
    image_release_id(first);
    picture("a.tga", "ghijklmno");
    load(path);
    EXPECT_EQ(width, 3);
    const int32_t second = image_find(path.c_str())->id;
    image_restore(first);
    EXPECT_EQ(image_find(path.c_str())->id, second) << "the newer one is found";
    EXPECT_EQ(image_find_id(first)->width, 2);
    image_unhold(first);
    image_release_id(first);
    image_release_id(second);
}

TEST_F(ImageRegistry, KeyedPixelsThatCameAfterTheFirstHoldAreHeldByTheNext) {
    const std::string path = picture("a.tga", "abcdef");
    load(path);
    const int32_t id = image_find(path.c_str())->id;
    image_hold(id);
    unsigned char* keyed = image_keyed(path.c_str(), 'c', 'b', 'a');
    image_hold(id);
    image_release_id(id);
    EXPECT_EQ(image_held_bytes(), 2 * 3 + 2 * 4);
    image_restore(id);
    EXPECT_EQ(image_find_id(id)->keyed_pixels, keyed);
    EXPECT_EQ(keyed[3], 0) << "the key colour is left out";
    image_unhold(id);
    image_unhold(id);
    image_release_id(id);
    EXPECT_EQ(image_held_bytes(), 0);
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
