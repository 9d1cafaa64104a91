// The colour palette of displays that need one.
#include "window/palette.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/native_null.h"
#include "window/messages.h"

namespace pelt {
namespace {

constexpr NativeFormat THREE_THREE_TWO{NATIVE_FORMAT_NEEDS_PALETTE, 8, 3, 0, 3, 3, 2, 6};

void draw(WindowHandle window, int32_t, const void*) { gl_begin_paint(window); }

class PaletteTest : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        parent = null_add_window(100, 100);
        null_system.format = THREE_THREE_TWO;
    }
    WindowHandle create() { return gl_window_create("view", parent, nullptr, nullptr, draw, nullptr, 0); }
    WindowHandle create_with_palette() {
        null_system.fail_format = true;
        null_system.displaced_palette = 0x99;
        const WindowHandle window = create();
        null_system.selections.clear();
        null_system.realizes = 0;
        null_system.defaults.clear();
        return window;
    }
    WindowHandle parent = 0;
};

TEST(PaletteComponent, OneBitIsOffOrFull) {
    EXPECT_EQ(palette_component(0b1000, 1, 3), 255);
    EXPECT_EQ(palette_component(0b0111, 1, 3), 0);
}

TEST(PaletteComponent, TwoBitsAreThirds) {
    const uint8_t expected[] = {0, 85, 170, 255};
    for (uint32_t i = 0; i < 4; ++i) { EXPECT_EQ(palette_component(i << 6 | 0x3F, 2, 6), expected[i]); }
}

TEST(PaletteComponent, ThreeBitsAreSevenths) {
    const uint8_t expected[] = {0, 36, 73, 109, 146, 182, 219, 255};
    for (uint32_t i = 0; i < 8; ++i) { EXPECT_EQ(palette_component(0xC0 | i << 3 | 7, 3, 3), expected[i]); }
}

TEST(PaletteComponent, AnyOtherBitCountIsZero) {
    for (const int bits : {-1, 0, 4, 5, 8, 32, 1000}) { EXPECT_EQ(palette_component(0xFFFFFFFF, bits, 0), 0); }
}

TEST(PaletteComponent, AShiftOutOfRangeIsZero) {
    for (const int shift : {-1, -1000, 32, 33, 255, 2147483647}) {
        EXPECT_EQ(palette_component(0xFFFFFFFF, 3, shift), 0);
    }
    EXPECT_EQ(palette_component(0x80000000, 1, 31), 255);
}

TEST(PaletteEntries, TwelveEntriesOfTheThreeThreeTwoPaletteAreTheSystems) {
    const int expected[12][4] = {{3, 128, 0, 0},       {24, 0, 128, 0},      {27, 128, 128, 0},    {64, 0, 0, 128},
                                 {67, 128, 0, 128},    {88, 0, 128, 128},    {173, 192, 192, 192}, {181, 192, 220, 192},
                                 {236, 166, 202, 240}, {247, 255, 251, 240}, {164, 160, 160, 164}, {91, 128, 128, 128}};
    PaletteEntry entries[256];
    ASSERT_EQ(palette_entries(THREE_THREE_TWO, entries), 256);
    std::vector<bool> replaced(256, false);
    for (const auto& row : expected) {
        const PaletteEntry& entry = entries[row[0]];
        EXPECT_EQ(entry.red, row[1]) << row[0];
        EXPECT_EQ(entry.green, row[2]) << row[0];
        EXPECT_EQ(entry.blue, row[3]) << row[0];
        EXPECT_EQ(entry.flags, 0) << row[0];
        replaced[static_cast<size_t>(row[0])] = true;
    }
    // All others hold their component: red in bits 0 to 2, green in 3 to 5, blue in 6 and 7, rounded to 255.
    for (int i = 0; i < 256; ++i) {
        if (replaced[static_cast<size_t>(i)]) { continue; }
        EXPECT_EQ(entries[i].red, (255 * (i % 8) * 2 + 7) / 14) << i;
        EXPECT_EQ(entries[i].green, (255 * (i / 8 % 8) * 2 + 7) / 14) << i;
        EXPECT_EQ(entries[i].blue, 85 * (i / 64)) << i;
        EXPECT_EQ(entries[i].flags, 0);
    }
}

TEST(PaletteEntries, AnotherLayoutKeepsItsOwnColours) {
    const NativeFormat format{NATIVE_FORMAT_NEEDS_PALETTE, 8, 3, 5, 3, 2, 2, 0};
    PaletteEntry entries[256];
    ASSERT_EQ(palette_entries(format, entries), 256);
    EXPECT_EQ(entries[3].red, 0);
    EXPECT_EQ(entries[3].green, 0);
    EXPECT_EQ(entries[3].blue, 255);
}

TEST(PaletteEntries, AtMostEightColourBits) {
    PaletteEntry entries[256];
    NativeFormat format{};
    for (const int bits : {-1, -2147483647, 9, 16, 24, 31, 32, 2147483647}) {
        format.color_bits = bits;
        EXPECT_EQ(palette_entries(format, entries), 0) << bits;
    }
    format.color_bits = 4;
    EXPECT_EQ(palette_entries(format, entries), 16);
}

TEST_F(PaletteTest, AFormatThatWasSetMakesNoPaletteWhateverTheDepth) {
    const WindowHandle window = create();
    EXPECT_EQ(null_system.palettes, 0);
    null_system.defaults.clear();
    EXPECT_EQ(window_procedure(window, MESSAGE_QUERY_PALETTE, 0, 0), 0);
    EXPECT_TRUE(null_system.defaults.empty());
}

TEST_F(PaletteTest, AFormatThatFailedGetsAPaletteOfWhatTheDeviceHas) {
    null_system.fail_format = true;
    create();
    EXPECT_EQ(null_system.palettes, 1);
    ASSERT_EQ(null_system.palette.size(), 256u);
    EXPECT_EQ(null_system.palette[3].red, 128);
    EXPECT_EQ(null_system.selections, std::vector<NativePalette>{0x501});
    EXPECT_EQ(null_system.realizes, 1);
}

TEST_F(PaletteTest, ADeviceThatNeedsNoneGetsNone) {
    null_system.fail_format = true;
    null_system.format.flags = ~NATIVE_FORMAT_NEEDS_PALETTE;
    create();
    EXPECT_EQ(null_system.palettes, 0);
}

TEST_F(PaletteTest, ADeviceOfMoreThanEightBitsGetsNone) {
    null_system.fail_format = true;
    null_system.format.color_bits = 16;
    create();
    EXPECT_EQ(null_system.palettes, 0);
}

TEST_F(PaletteTest, QueryTakesThePaletteRepaintsAndPutsTheOldOneBack) {
    const WindowHandle window = create_with_palette();
    const int painted = null_window(window)->paints_begun;
    const int devices = null_window(window)->devices;
    EXPECT_EQ(window_procedure(window, MESSAGE_QUERY_PALETTE, 0, 0), 1);
    EXPECT_EQ(null_system.selections, (std::vector<NativePalette>{0x501, 0x99}));
    EXPECT_EQ(null_system.realizes, 1);
    EXPECT_EQ(null_system.invalidations, 1);
    EXPECT_EQ(null_window(window)->paints_begun, painted + 1);
    EXPECT_EQ(null_window(window)->devices, devices);
    EXPECT_EQ(null_system.colour_updates, 0);
    EXPECT_TRUE(null_system.defaults.empty());
}

TEST_F(PaletteTest, WithoutADisplacedPaletteNoneIsPutBack) {
    const WindowHandle window = create_with_palette();
    null_system.displaced_palette = 0;
    EXPECT_EQ(window_procedure(window, MESSAGE_QUERY_PALETTE, 0, 0), 1);
    EXPECT_EQ(null_system.selections, std::vector<NativePalette>{0x501});
}

TEST_F(PaletteTest, AChangeByAnotherWindowIsFollowedAndGoesToTheSystem) {
    const WindowHandle window = create_with_palette();
    EXPECT_EQ(window_procedure(window, MESSAGE_PALETTE_CHANGED, 1, 0), null_system.default_result);
    EXPECT_EQ(null_system.selections, (std::vector<NativePalette>{0x501, 0x99}));
    EXPECT_EQ(null_system.colour_updates, 1);
    EXPECT_EQ(null_system.invalidations, 0);
    ASSERT_EQ(null_system.defaults.size(), 1u);
}

TEST_F(PaletteTest, AHandleBeyondSixteenBitsNeverLooksLikeItsOwnChange) {
    const WindowHandle window = create_with_palette();
    ASSERT_GT(window, 0xFFFFu);
    window_procedure(window, MESSAGE_PALETTE_CHANGED, window, 0);
    EXPECT_EQ(null_system.colour_updates, 1);
}

TEST_F(PaletteTest, AChangeByAWindowWhoseHandleFitsIsItsOwn) {
    create_with_palette();
    window_procedure(0x1234, MESSAGE_PALETTE_CHANGED, 0x55551234, 0);
    EXPECT_EQ(null_system.colour_updates, 0);
    window_procedure(0x1234, MESSAGE_PALETTE_CHANGED, 0x1235, 0);
    EXPECT_EQ(null_system.colour_updates, 1);
}

TEST_F(PaletteTest, WithoutAPaletteAChangeDoesNothingButGoesToTheSystem) {
    const WindowHandle window = create();
    null_system.defaults.clear();
    EXPECT_EQ(window_procedure(window, MESSAGE_PALETTE_CHANGED, 1, 0), null_system.default_result);
    EXPECT_TRUE(null_system.selections.empty());
    EXPECT_EQ(null_system.colour_updates, 0);
}

}  // namespace
}  // namespace pelt
