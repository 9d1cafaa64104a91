// .cur files, whole and broken. The files are put together here, byte by byte.
#include "window/x11/cursor_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "window/x11/builtin_cursors.h"

namespace pelt {
namespace {

using Bytes = std::vector<uint8_t>;

void put_16(Bytes* out, uint32_t value) {
    out->push_back(static_cast<uint8_t>(value));
    out->push_back(static_cast<uint8_t>(value >> 8));
}
void put_32(Bytes* out, uint32_t value) {
    put_16(out, value & 0xFFFF);
    put_16(out, value >> 16);
}
void set_32(Bytes* bytes, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) { (*bytes)[at + i] = static_cast<uint8_t>(value >> 8 * i); }
}
void append(Bytes* out, const Bytes& more) { out->insert(out->end(), more.begin(), more.end()); }

// A bitmap: header, palette, rows of colours from the bottom, rows of the mask from the bottom.
Bytes bitmap(uint32_t width, uint32_t height, uint32_t bits, const Bytes& palette, const Bytes& rows) {
    Bytes out;
    put_32(&out, 40);
    put_32(&out, width);
    put_32(&out, 2 * height);
    put_16(&out, 1);
    put_16(&out, bits);
    for (int i = 0; i < 6; ++i) { put_32(&out, 0); }
    append(&out, palette);
    append(&out, rows);
    return out;
}

struct Picture {
    uint8_t width, height;
    uint32_t hot_x, hot_y;
    Bytes data;
};

Bytes file_of(const std::vector<Picture>& pictures) {
    Bytes out;
    put_16(&out, 0);
    put_16(&out, 2);
    put_16(&out, static_cast<uint32_t>(pictures.size()));
    size_t offset = 6 + 16 * pictures.size();
    for (const Picture& picture : pictures) {
        append(&out, {picture.width, picture.height, 0, 0});
        put_16(&out, picture.hot_x);
        put_16(&out, picture.hot_y);
        put_32(&out, static_cast<uint32_t>(picture.data.size()));
        put_32(&out, static_cast<uint32_t>(offset));
        offset += picture.data.size();
    }
    for (const Picture& picture : pictures) { append(&out, picture.data); }
    return out;
}

// The bytes stand in a block of exactly their size, so that a read behind them is seen by the sanitizers.
bool parse(const Bytes& bytes, CursorImage* image) {
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return cursor_file_parse(copy.get(), bytes.size(), image);
}

std::vector<uint32_t> pixels_of(const Bytes& bytes) {
    CursorImage image{};
    if (!parse(bytes, &image)) { return {}; }
    const std::vector<uint32_t> pixels(image.pixels, image.pixels + image.width * image.height);
    cursor_image_free(&image);
    return pixels;
}

const Bytes BLACK_AND_WHITE = {0, 0, 0, 0, 255, 255, 255, 0};

// 3 x 2, one bit. Top row: black, white, transparent. Bottom row: inverting, transparent, white.
Bytes one_bit_file() {
    return file_of({{3, 2, 1, 1,
                     bitmap(3, 2, 1, BLACK_AND_WHITE,
                            {0b10100000, 0, 0, 0, 0b01000000, 0, 0, 0,       // colours: bottom, top
                             0b11000000, 0, 0, 0, 0b00100000, 0, 0, 0})}});  // mask: bottom, top
}

TEST(CursorFile, OneBitWithMaskFromTheBottomUp) {
    const std::vector<uint32_t> expected = {0xFF000000, 0xFFFFFFFF, 0, 0xFF000000, 0, 0xFFFFFFFF};
    EXPECT_EQ(pixels_of(one_bit_file()), expected);
}

TEST(CursorFile, SizeAndHotSpotAreTold) {
    CursorImage image{};
    ASSERT_TRUE(parse(one_bit_file(), &image));
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.hot_x, 1);
    EXPECT_EQ(image.hot_y, 1);
    cursor_image_free(&image);
    EXPECT_EQ(image.pixels, nullptr);
    cursor_image_free(&image);
}

TEST(CursorFile, FourBitsTakeTheHighHalfFirst) {
    Bytes palette(16 * 4, 0);
    palette[4 * 2] = 0x10;      // entry 2: blue
    palette[4 * 9 + 2] = 0x20;  // entry 9: red
    const Bytes file = file_of({{2, 1, 0, 0, bitmap(2, 1, 4, palette, {0x29, 0, 0, 0, 0, 0, 0, 0})}});
    EXPECT_EQ(pixels_of(file), (std::vector<uint32_t>{0xFF000010, 0xFF200000}));
}

TEST(CursorFile, EightBits) {
    Bytes palette(256 * 4, 0);
    palette[4 * 200 + 1] = 0x77;
    const Bytes file = file_of({{2, 1, 0, 0, bitmap(2, 1, 8, palette, {200, 0, 0, 0, 0b01000000, 0, 0, 0})}});
    EXPECT_EQ(pixels_of(file), (std::vector<uint32_t>{0xFF007700, 0}));
}

TEST(CursorFile, TwentyFourBitsAreBlueGreenRed) {
    const Bytes file = file_of({{1, 1, 0, 0, bitmap(1, 1, 24, {}, {1, 2, 3, 0, 0, 0, 0, 0})}});
    EXPECT_EQ(pixels_of(file), std::vector<uint32_t>{0xFF030201});
}

TEST(CursorFile, ThirtyTwoBitsKeepTheirAlpha) {
    const Bytes file = file_of({{2, 1, 0, 0, bitmap(2, 1, 32, {}, {1, 2, 3, 0x80, 4, 5, 6, 0, 0xC0, 0, 0, 0})}});
    EXPECT_EQ(pixels_of(file), (std::vector<uint32_t>{0x80030201, 0x00060504}));
}

TEST(CursorFile, ThirtyTwoBitsWithoutAnyAlphaGoByTheMask) {
    const Bytes file = file_of({{2, 1, 0, 0, bitmap(2, 1, 32, {}, {1, 2, 3, 0, 0, 0, 0, 0, 0x40, 0, 0, 0})}});
    EXPECT_EQ(pixels_of(file), (std::vector<uint32_t>{0xFF030201, 0}));
}

TEST(CursorFile, OfSeveralPicturesTheOneNearestTo32Counts) {
    const auto picture = [](uint8_t size, uint8_t blue) {
        const size_t row = (size_t{size} * 3 + 3) / 4 * 4;
        Bytes rows(row * size, blue);
        append(&rows, Bytes((size_t{size} + 31) / 32 * 4 * size, 0));
        return Picture{size, size, 0, 0, bitmap(size, size, 24, {}, rows)};
    };
    const std::vector<uint32_t> pixels = pixels_of(file_of({picture(16, 1), picture(30, 2), picture(48, 3)}));
    ASSERT_EQ(pixels.size(), 900u);
    EXPECT_EQ(pixels[0], 0xFF020202u);
}

TEST(CursorFile, AHotSpotOutsideIsHeldInThePicture) {
    Bytes file = one_bit_file();
    file[10] = 200;
    file[12] = 255;
    file[13] = 255;
    CursorImage image{};
    ASSERT_TRUE(parse(file, &image));
    EXPECT_EQ(image.hot_x, 2);
    EXPECT_EQ(image.hot_y, 1);
    cursor_image_free(&image);
}

TEST(CursorFile, AShortPaletteLeavesTheOtherIndicesBlack) {
    Bytes file = file_of({{2, 1, 0, 0, bitmap(2, 1, 8, {9, 9, 9, 0}, {0, 77, 0, 0, 0, 0, 0, 0})}});
    set_32(&file, 22 + 32, 1);
    EXPECT_EQ(pixels_of(file), (std::vector<uint32_t>{0xFF090909, 0xFF000000}));
}

TEST(CursorFile, AFileCutShortAnywhereIsRefused) {
    const BuiltinCursor& cursor = BUILTIN_CURSORS[0];
    const Bytes whole(cursor.bytes, cursor.bytes + cursor.size);
    for (size_t size = 0; size < whole.size(); ++size) {
        CursorImage image{};
        EXPECT_FALSE(parse(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), &image)) << size;
        EXPECT_EQ(image.pixels, nullptr);
    }
}

TEST(CursorFile, NoBytesAreNoCursor) {
    CursorImage image{};
    EXPECT_FALSE(cursor_file_parse(nullptr, 0, &image));
}

// One field of the good file gets a senseless value.
struct Broken {
    const char* what;
    size_t at;
    uint32_t value;
};

TEST(CursorFile, SenselessSizesOffsetsAndCountsAreRefused) {
    const Broken broken[] = {
        {"reserved word set, type 2", 0, 0x00020001},
        {"type of an icon", 0, 0x00010000},
        {"type 3", 0, 0x00030000},
        {"bytes of the picture: none", 14, 0},
        {"bytes of the picture: all there are", 14, 0xFFFFFFFF},
        {"offset behind the file", 18, 1000},
        {"offset at its end", 18, 22 + 64},
        {"offset of all bits", 18, 0xFFFFFFFF},
        {"header of 12 bytes", 22, 12},
        {"header of 39", 22, 39},
        {"header larger than the picture", 22, 0x7FFFFFFF},
        {"header of all bits", 22, 0xFFFFFFFF},
        {"width 0", 26, 0},
        {"width 257", 26, 257},
        {"width negative", 26, 0xFFFFFFFF},
        {"width largest", 26, 0x7FFFFFFF},
        {"height 0", 30, 0},
        {"height 1, of both halves", 30, 1},
        {"height odd", 30, 5},
        {"height beyond 256", 30, 514},
        {"height negative", 30, 0xFFFFFFFC},
        {"width beyond the bytes", 26, 200},
        {"height beyond the bytes", 30, 64},
        {"bits 0", 34, 0x00000001},
        {"bits 2", 34, 0x00020001},
        {"bits 16", 34, 0x00100001},
        {"bits 65535", 34, 0xFFFF0001},
        {"compressed", 38, 1},
        {"palette too large", 54, 3},
        {"palette of all bits", 54, 0xFFFFFFFF},
    };
    for (const Broken& each : broken) {
        Bytes file = one_bit_file();
        set_32(&file, each.at, each.value);
        CursorImage image{};
        EXPECT_FALSE(parse(file, &image)) << each.what;
        EXPECT_EQ(image.pixels, nullptr) << each.what;
    }
}

TEST(CursorFile, ADirectoryOfNoneOrOfTooManyIsRefused) {
    for (const uint32_t count : {0u, 6u, 1000u, 65535u}) {
        Bytes file = one_bit_file();
        file[4] = static_cast<uint8_t>(count);
        file[5] = static_cast<uint8_t>(count >> 8);
        CursorImage image{};
        EXPECT_FALSE(parse(file, &image)) << count;
    }
}

TEST(CursorFile, AnyChangedBytesAreReadInBoundsOrRefused) {
    const BuiltinCursor& cursor = BUILTIN_CURSORS[3];
    std::mt19937 random(7);
    int accepted = 0, refused = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes file(cursor.bytes, cursor.bytes + cursor.size);
        for (int change = 0; change < 3; ++change) { file[random() % 70] = static_cast<uint8_t>(random()); }
        CursorImage image{};
        if (!parse(file, &image)) {
            ++refused;
            continue;
        }
        ++accepted;
        ASSERT_GE(image.width, 1);
        ASSERT_LE(image.width, CURSOR_SIZE_MAX);
        ASSERT_GE(image.height, 1);
        ASSERT_LE(image.height, CURSOR_SIZE_MAX);
        ASSERT_LT(image.hot_x, image.width);
        ASSERT_LT(image.hot_y, image.height);
        cursor_image_free(&image);
    }
    EXPECT_GT(accepted, 0);
    EXPECT_GT(refused, 0);
}

// ---- cursor files of X ----

constexpr uint32_t X_PICTURE = 0xFFFD0002;

Bytes x_picture(uint32_t width, uint32_t height, size_t pixels) {
    Bytes out;
    for (const uint32_t value : {uint32_t{36}, X_PICTURE, uint32_t{32}, uint32_t{1}, width, height}) {
        put_32(&out, value);
    }
    for (int i = 0; i < 3; ++i) { put_32(&out, 0); }
    out.resize(out.size() + 4 * pixels, 0xFF);
    return out;
}

// A head, an entry for each place, and what stands behind them.
Bytes x_file(const std::vector<uint32_t>& places, const Bytes& body, uint32_t kind = X_PICTURE) {
    Bytes out = {'X', 'c', 'u', 'r'};
    for (const size_t value : {size_t{16}, size_t{0x10000}, places.size()}) {
        put_32(&out, static_cast<uint32_t>(value));
    }
    for (const uint32_t place : places) {
        put_32(&out, kind);
        put_32(&out, 32);
        put_32(&out, place);
    }
    append(&out, body);
    return out;
}

bool x_is_sound(const Bytes& bytes) {
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return cursor_file_x_is_sound(copy.get(), bytes.size());
}

Bytes two_pictures() {
    Bytes body = x_picture(4, 2, 8);
    append(&body, x_picture(3, 1, 3));
    return x_file({16 + 24, 16 + 24 + 36 + 32}, body);
}

TEST(XCursorFile, PicturesThatStandInTheFileAreSound) { EXPECT_TRUE(x_is_sound(two_pictures())); }

TEST(XCursorFile, CutShortAnywhereItIsNot) {
    const Bytes whole = two_pictures();
    for (size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(x_is_sound(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
    }
}

TEST(XCursorFile, PictureWithoutItsPixelsIsRefusedWhateverItsSizesMultiplyTo) {
    for (const auto& [width, height] : std::vector<std::pair<uint32_t, uint32_t>>{
             {4, 3}, {32767, 32767}, {65536, 65536}, {0xFFFFFFFF, 0xFFFFFFFF}, {0x40000000, 4}, {0x80000001, 2}}) {
        EXPECT_FALSE(x_is_sound(x_file({28}, x_picture(width, height, 8)))) << width << " x " << height;
    }
}

TEST(XCursorFile, EntriesThatShareAPictureCountForEachOfThem) {
    EXPECT_TRUE(x_is_sound(x_file({28}, x_picture(8, 8, 64))));
    EXPECT_FALSE(x_is_sound(x_file({40, 40}, x_picture(8, 8, 64))));
    // What lies idle behind the picture is room for a second.
    EXPECT_TRUE(x_is_sound(x_file({40, 40}, x_picture(8, 8, 2 * 64 + 9))));
}

TEST(XCursorFile, EntriesOfOtherKindsAreNotLookedInto) {
    constexpr uint32_t COMMENT = 0xFFFE0001;
    EXPECT_TRUE(x_is_sound(x_file({0xFFFFFFFF, 7}, {}, COMMENT)));
    EXPECT_FALSE(x_is_sound(x_file({0xFFFFFFFF, 7}, {})));
}

TEST(XCursorFile, EntriesAreHeldAgainstTheFileAndALimit) {
    Bytes bytes = two_pictures();
    set_32(&bytes, 12, 0xFFFFFFFF);
    EXPECT_FALSE(x_is_sound(bytes));
    const Bytes room(4097 * 40, 0);
    std::vector<uint32_t> places(4096, 16 + 12 * 4096);
    Bytes body = x_picture(1, 1, 1);
    append(&body, room);
    EXPECT_TRUE(x_is_sound(x_file(places, body)));
    places.assign(4097, 16 + 12 * 4097);
    EXPECT_FALSE(x_is_sound(x_file(places, body)));
}

TEST(XCursorFile, HeadMayBeLongerButNotShorterThanItsFields) {
    Bytes bytes = x_file({}, {});
    EXPECT_TRUE(x_is_sound(bytes));
    set_32(&bytes, 4, 15);
    EXPECT_FALSE(x_is_sound(bytes));
    set_32(&bytes, 4, 17);
    EXPECT_FALSE(x_is_sound(bytes));
    bytes.push_back(0);
    EXPECT_TRUE(x_is_sound(bytes));
}

}  // namespace
}  // namespace pelt
