// Cursors by number, the built-in ones, and the pointer.
#include "window/cursor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "support/native_null.h"
#include "window/gl_system.h"
#include "window/messages.h"
#include "window/x11/builtin_cursors.h"
#include "window/x11/cursor_file.h"

namespace pelt {
namespace {

class CursorTest : public testing::Test {
protected:
    void SetUp() override { null_reset(); }
};

TEST_F(CursorTest, EachBuiltInNameLoadsItsGroup) {
    const std::vector<std::pair<const char*, int32_t>> expected = {
        {"rotate", 106}, {"pan", 104}, {"zoom", 101}, {"x", 105}, {"y", 103}, {"z", 107}, {"pick", 102}};
    for (const auto& [name, group] : expected) {
        null_system.builtin_loads.clear();
        EXPECT_GT(cursor_create("pelt", name), 0) << name;
        EXPECT_EQ(null_system.builtin_loads, std::vector<int32_t>{group}) << name;
    }
    EXPECT_TRUE(null_system.file_loads.empty());
}

TEST_F(CursorTest, NamesAreComparedExactly) {
    for (const char* name : {"Pan", "pan ", "pa", "", "X"}) { EXPECT_EQ(cursor_create("pelt", name), 0) << name; }
    EXPECT_EQ(null_system.file_loads.size(), 5u);
}

TEST_F(CursorTest, TheSameNameGivesANewIdEachTimeAndNoIdComesTwice) {
    const int32_t first = cursor_create("pelt", "pan");
    const int32_t second = cursor_create("pelt", "pan");
    EXPECT_GE(first, 1);
    EXPECT_EQ(second, first + 1);
    gl_system_init(0);
    EXPECT_EQ(cursor_create("pelt", "pan"), second + 1);
}

TEST_F(CursorTest, AFailedLoadGivesZeroAndUsesNoId) {
    const int32_t first = cursor_create("pelt", "pan");
    EXPECT_EQ(cursor_create("pelt", "no such cursor"), 0);
    EXPECT_EQ(cursor_create("pelt", nullptr), 0);
    EXPECT_EQ(cursor_create("pelt", "pan"), first + 1);
}

TEST_F(CursorTest, TheKeyIsNotLookedAt) {
    EXPECT_GT(cursor_create(nullptr, "pan"), 0);
    EXPECT_GT(cursor_create("anything", "pan"), 0);
}

TEST_F(CursorTest, APathInForwardSlashesFindsTheFile) {
    null_system.cursor_files = {path_join("pictures", "hand.cur")};
    EXPECT_GT(cursor_create("pelt", "pictures/hand.cur"), 0);
}

TEST_F(CursorTest, WhereOnlyABackslashSeparatesTheSlashesBecomeOne) {
    char path[PATH_BUFFER_SIZE];
    cursor_path("a/b\\c/d.cur", path, PATH_RULES_WIN32);
    EXPECT_STREQ(path, "a\\b\\c\\d.cur");
    cursor_path("a/b\\c/d.cur", path, PATH_RULES_POSIX);
    EXPECT_STREQ(path, "a/b\\c/d.cur");
}

TEST_F(CursorTest, ALongPathIsCutToTheBuffer) {
    EXPECT_EQ(cursor_create("pelt", std::string(5000, 'p').c_str()), 0);
    ASSERT_EQ(null_system.file_loads.size(), 1u);
    EXPECT_EQ(null_system.file_loads[0], std::string(511, 'p'));
}

TEST_F(CursorTest, ApplyPutsTheCursorInForce) {
    const int32_t pan = cursor_create("pelt", "pan");
    EXPECT_EQ(cursor_apply(pan), 1);
    EXPECT_EQ(gl_system.current_cursor, pan);
    EXPECT_EQ(null_system.cursors_applied, std::vector<NativeCursor>{104});
}

TEST_F(CursorTest, ZeroReturnsToTheArrow) {
    cursor_apply(cursor_create("pelt", "pan"));
    EXPECT_EQ(cursor_apply(0), 1);
    EXPECT_EQ(gl_system.current_cursor, 0);
    EXPECT_EQ(null_system.cursors_applied.back(), 0u);
}

TEST_F(CursorTest, AnUnknownOrNegativeIdKeepsTheOldCursor) {
    const int32_t pan = cursor_create("pelt", "pan");
    cursor_apply(pan);
    null_system.cursors_applied.clear();
    for (const int32_t id :
         {pan + 1, -1, -pan, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(cursor_apply(id), 0) << id;
    }
    EXPECT_EQ(gl_system.current_cursor, pan);
    EXPECT_TRUE(null_system.cursors_applied.empty());
}

TEST_F(CursorTest, TheCursorInForceIsAppliedAgainAtEachMouseMessage) {
    const WindowHandle window =
        gl_window_create("view", null_add_window(50, 50), nullptr, nullptr, nullptr, nullptr, 0);
    cursor_apply(cursor_create("pelt", "zoom"));
    null_system.cursors_applied.clear();
    window_procedure(window, MESSAGE_MOUSE_MOVE, 0, 0);
    window_procedure(window, MESSAGE_MOUSE_MOVE, 0, 0);
    window_procedure(window, MESSAGE_SET_FOCUS, 0, 0);
    EXPECT_EQ(null_system.cursors_applied, (std::vector<NativeCursor>{101, 101, 101}));
}

TEST_F(CursorTest, ThePointerIsReadAndSet) {
    EXPECT_EQ(pointer_set(-5, 2000000000), 1);
    int32_t x = 0, y = 0;
    EXPECT_EQ(pointer_get(&x, &y), 1);
    EXPECT_EQ(x, -5);
    EXPECT_EQ(y, 2000000000);
}

TEST_F(CursorTest, ANullOutputOrARefusalGivesZero) {
    int32_t x = 3;
    EXPECT_EQ(pointer_get(nullptr, &x), 0);
    EXPECT_EQ(pointer_get(&x, nullptr), 0);
    null_system.fail_pointer = true;
    EXPECT_EQ(pointer_get(&x, &x), 0);
    EXPECT_EQ(pointer_set(1, 1), 0);
    EXPECT_EQ(x, 3);
}

// ---- The built-in pictures.

TEST(BuiltinCursors, TheBytesAreThoseOfTheFiles) {
    for (const BuiltinCursor& cursor : BUILTIN_CURSORS) {
        const std::string path = std::string(PELT_SOURCE_DIR "/src/window/cursors/") + cursor.name + ".cur";
        std::ifstream file(path, std::ios::binary);
        ASSERT_TRUE(file) << path;
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        EXPECT_EQ(bytes, std::vector<uint8_t>(cursor.bytes, cursor.bytes + cursor.size)) << path;
    }
}

TEST(BuiltinCursors, EachIsAPictureOf32PixelsInBlackAndWhiteWithItsHotSpot) {
    struct Expected {
        int32_t group;
        std::string name;
        int32_t hot_x, hot_y;
    };
    const Expected expected[] = {{101, "zoom", 16, 0}, {102, "pick", 15, 15},   {103, "y", 17, 6}, {104, "pan", 17, 21},
                                 {105, "x", 17, 6},    {106, "rotate", 25, 15}, {107, "z", 17, 6}};
    for (int i = 0; i < BUILTIN_CURSOR_COUNT; ++i) {
        const BuiltinCursor& cursor = BUILTIN_CURSORS[i];
        EXPECT_EQ(cursor.group, expected[i].group);
        EXPECT_EQ(cursor.name, expected[i].name);
        CursorImage image{};
        ASSERT_TRUE(cursor_file_parse(cursor.bytes, cursor.size, &image)) << cursor.name;
        EXPECT_EQ(image.width, 32);
        EXPECT_EQ(image.height, 32);
        EXPECT_EQ(image.hot_x, expected[i].hot_x) << cursor.name;
        EXPECT_EQ(image.hot_y, expected[i].hot_y) << cursor.name;
        const auto count = [&](uint32_t colour) { return std::count(image.pixels, image.pixels + 32 * 32, colour); };
        EXPECT_EQ(count(0) + count(0xFF000000) + count(0xFFFFFFFF), 32 * 32) << cursor.name;
        EXPECT_GT(count(0), 300) << cursor.name;
        EXPECT_GT(count(0xFF000000), 60) << cursor.name;
        EXPECT_GT(count(0xFFFFFFFF), 60) << cursor.name;
        cursor_image_free(&image);
    }
}

TEST(BuiltinCursors, ThePictureStandsUprightAndUnmirrored) {
    CursorImage image{};
    const BuiltinCursor& zoom = BUILTIN_CURSORS[0];
    ASSERT_TRUE(cursor_file_parse(zoom.bytes, zoom.size, &image));
    EXPECT_EQ(image.pixels[0 * 32 + 16], 0xFF000000u);  // the tip of the arrow is the hot spot
    EXPECT_EQ(image.pixels[0 * 32 + 10], 0u);
    cursor_image_free(&image);
    const BuiltinCursor& pan = BUILTIN_CURSORS[3];
    ASSERT_TRUE(cursor_file_parse(pan.bytes, pan.size, &image));
    EXPECT_EQ(image.pixels[16 * 32 + 5], 0xFFFFFFFFu);  // the thumb is on the left
    EXPECT_EQ(image.pixels[16 * 32 + 27], 0u);
    EXPECT_EQ(image.pixels[31 * 32 + 15], 0xFF000000u);  // the wrist is at the bottom
    cursor_image_free(&image);
}

}  // namespace
}  // namespace pelt
