#include "render/screen_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

#include "application/session_lifecycle.h"
#include "images/tga.h"
#include "render/frame.h"
#include "support/native_null.h"
#include "support/recording_gl.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

constexpr size_t HEADER = 273;

Session session;
ViewState view;

std::array<unsigned char, 3> colour_at(int x, int y) {
    return {static_cast<unsigned char>(x), static_cast<unsigned char>(y), static_cast<unsigned char>(200 + x % 7)};
}

class ScreenCapture : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        recording_gl::reset();
        session_init(&session);
        view = ViewState{};
        frame_bind(&session, &view);
        recording_gl::set_read_pattern(colour_at);
    }
    void TearDown() override {
        EXPECT_EQ(recording_gl::joined(recording_gl::errors()), "");
        null_reset();
    }
    void open(int32_t width, int32_t height) {
        parent = null_add_window(width, height);
        window = gl_window_create("view", parent, view_init, nullptr, view_resize, nullptr, 0);
        recording_gl::clear();
    }
    std::string capture(int32_t width, int32_t height) {
        recording_gl::clear();
        screen_capture(dir.file("screen.tga").c_str(), width, height);
        return dir.read("screen.tga");
    }
    static int byte(const std::string& file, size_t at) { return static_cast<unsigned char>(file.at(at)); }
    static int width_of(const std::string& file) { return byte(file, 12) + 256 * byte(file, 13); }
    static int height_of(const std::string& file) { return byte(file, 14) + 256 * byte(file, 15); }

    // The pixel as red, green, blue.
    static std::array<unsigned char, 3> pixel(const std::string& file, int x, int y) {
        const size_t at =
            HEADER + (static_cast<size_t>(y) * static_cast<size_t>(width_of(file)) + static_cast<size_t>(x)) * 3;
        return {static_cast<unsigned char>(byte(file, at + 2)), static_cast<unsigned char>(byte(file, at + 1)),
                static_cast<unsigned char>(byte(file, at))};
    }

    test::TempDir dir;
    WindowHandle parent = 0;
    WindowHandle window = 0;
};

TEST_F(ScreenCapture, MakesExactlyTheseCalls) {
    open(402, 302);
    capture(400, 300);
    const std::vector<std::string> expected = {"glGetIntegerv GL_VIEWPORT",
                                               "glReadPixels 0 0 400 300 GL_RGB GL_UNSIGNED_BYTE"};
    EXPECT_EQ(recording_gl::lines(), expected);
}

TEST_F(ScreenCapture, AWindowOf402By302GivesAFileOf400By300) {
    open(402, 302);
    const std::string file = capture(402 - 2, 302 - 2);
    EXPECT_EQ(width_of(file), 400);
    EXPECT_EQ(height_of(file), 300);
    EXPECT_EQ(file.size(), 400u * 300u * 3u + 273u);
}

TEST_F(ScreenCapture, AWindowOf403By303GivesAFileOf400By300) {
    open(403, 303);
    const std::string file = capture(401, 301);
    EXPECT_EQ(width_of(file), 400);
    EXPECT_EQ(height_of(file), 300);
}

TEST_F(ScreenCapture, TheHeaderSaysTrueColourOf24BitsFromTheLowerLeft) {
    open(402, 302);
    const std::string file = capture(400, 300);
    const unsigned char expected[18] = {255, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 144, 1, 44, 1, 24, 0};
    for (size_t i = 0; i < 18; ++i) { EXPECT_EQ(byte(file, i), expected[i]) << i; }
}

TEST_F(ScreenCapture, TheIdSaysWhatThePictureIsAndWhoWroteIt) {
    open(402, 302);
    const std::string id = capture(400, 300).substr(18, 255);
    const std::string text = id.substr(0, id.find('\0'));
    EXPECT_NE(text.find("OpenGL screen image"), std::string::npos);
    EXPECT_NE(text.find("pelt"), std::string::npos);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_EQ(id.find_first_not_of('\0', text.size()), std::string::npos);
}

TEST_F(ScreenCapture, PixelsAreBlueGreenRedFromTheBottomRowUp) {
    open(42, 22);
    const std::string file = capture(40, 20);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 40; ++x) { ASSERT_EQ(pixel(file, x, y), colour_at(x, y)) << x << ' ' << y; }
    }
    EXPECT_EQ(byte(file, HEADER), 200);  // blue of the first pixel comes first
}

// The reader of images leaves the last byte of such an id in front of the pixels.
TEST_F(ScreenCapture, ReadAsATextureThePictureIsShiftedByOneByte) {
    open(42, 22);
    capture(40, 20);
    const char* error = nullptr;
    TgaImage* image = tga_read(dir.file("screen.tga").c_str(), &error);
    ASSERT_NE(image, nullptr) << error;
    EXPECT_EQ(image->width, 40);
    EXPECT_EQ(image->height, 20);
    const unsigned char* last_row = image->pixels + 19 * 40 * 3;  // the first of the file
    EXPECT_EQ(last_row[0], colour_at(0, 0)[1]);                   // red is what was green
    EXPECT_EQ(last_row[1], colour_at(0, 0)[2]);                   // green is what was blue
    EXPECT_EQ(last_row[2], 0);                                    // blue is the last byte of the id
    EXPECT_EQ(last_row[3], colour_at(1, 0)[1]);
    EXPECT_EQ(last_row[5], colour_at(0, 0)[0]);
    tga_free(image);
}

TEST_F(ScreenCapture, BytesOfLineEndsPassAsTheyAre) {
    open(42, 22);
    recording_gl::set_read_pattern([](int, int) { return std::array<unsigned char, 3>{10, 13, 10}; });
    const std::string file = capture(40, 20);
    EXPECT_EQ(file.size(), 40u * 20u * 3u + HEADER);
    EXPECT_EQ(pixel(file, 39, 19), (std::array<unsigned char, 3>{10, 13, 10}));
}

TEST_F(ScreenCapture, AViewportSmallerThanTheWishLimitsThePicture) {
    open(402, 302);
    view_set_size(102, 51);
    const std::string file = capture(400, 300);
    EXPECT_EQ(width_of(file), 100);
    EXPECT_EQ(height_of(file), 48);
    EXPECT_EQ(pixel(file, 0, 0), colour_at(0, 0));
    EXPECT_EQ(recording_gl::lines().back(), "glReadPixels 0 0 100 48 GL_RGB GL_UNSIGNED_BYTE");
}

TEST_F(ScreenCapture, ThePictureStartsAtTheLowerLeftOfTheViewport) {
    open(402, 302);
    glViewport(8, 5, 100, 80);
    const std::string file = capture(400, 300);
    EXPECT_EQ(width_of(file), 100);
    EXPECT_EQ(height_of(file), 80);
    EXPECT_EQ(pixel(file, 0, 0), colour_at(8, 5));
    EXPECT_EQ(pixel(file, 99, 79), colour_at(107, 84));
}

TEST_F(ScreenCapture, WhatLiesOutsideTheWindowIsBlackAndNotRead) {
    open(51, 41);  // drawing area of 49 by 39
    view_set_size(100, 80);
    const std::string file = capture(100, 80);
    EXPECT_EQ(width_of(file), 100);
    EXPECT_EQ(height_of(file), 80);
    EXPECT_EQ(recording_gl::lines().back(), "glReadPixels 0 0 49 39 GL_RGB GL_UNSIGNED_BYTE");
    const std::array<unsigned char, 3> black = {0, 0, 0};
    for (int y = 0; y < 80; ++y) {
        for (int x = 0; x < 100; ++x) {
            ASSERT_EQ(pixel(file, x, y), x < 49 && y < 39 ? colour_at(x, y) : black) << x << ' ' << y;
        }
    }
}

TEST_F(ScreenCapture, AViewportWhollyOutsideTheWindowIsBlack) {
    open(51, 41);
    glViewport(1000, 0, 20, 20);
    const std::string file = capture(20, 20);
    EXPECT_EQ(file.size(), 20u * 20u * 3u + HEADER);
    EXPECT_EQ(file.find_first_not_of('\0', HEADER), std::string::npos);
    EXPECT_EQ(recording_gl::count_calls("glReadPixels"), 0);
}

TEST_F(ScreenCapture, ASizeSmallerThanTheBorderIsAHeaderOfNothing) {
    open(402, 302);
    for (const auto& size : {std::pair{-1, -1}, {0, 0}, {1, 3}, {-2, 3}, {INT_MIN, INT_MIN}}) {
        const std::string file = capture(size.first, size.second);
        EXPECT_EQ(file.size(), HEADER);
        EXPECT_EQ(width_of(file), 0);
        EXPECT_EQ(height_of(file), 0);
        EXPECT_EQ(recording_gl::count_calls("glReadPixels"), 0);
    }
}

TEST_F(ScreenCapture, ASizeOfZeroInOneDirectionWritesTheHeaderAlone) {
    open(402, 302);
    const std::string file = capture(3, 100);
    EXPECT_EQ(file.size(), HEADER);
    EXPECT_EQ(width_of(file), 0);
    EXPECT_EQ(height_of(file), 100);
}

TEST_F(ScreenCapture, AnEnormousWishIsLimitedByTheViewport) {
    open(402, 302);
    const std::string file = capture(INT_MAX, INT_MAX);
    EXPECT_EQ(width_of(file), 400);
    EXPECT_EQ(height_of(file), 300);
}

TEST_F(ScreenCapture, WithoutAContextNothingIsWritten) {
    capture(100, 100);
    EXPECT_FALSE(dir.exists("screen.tga"));
    open(402, 302);
    null_destroy_tree(parent);
    capture(100, 100);
    EXPECT_FALSE(dir.exists("screen.tga"));
    EXPECT_EQ(recording_gl::lines(), std::vector<std::string>{});
    frame_bind(nullptr, nullptr);
    capture(100, 100);
    EXPECT_FALSE(dir.exists("screen.tga"));
}

TEST_F(ScreenCapture, AFileThatCannotBeOpenedOrNamedIsNoMatter) {
    open(402, 302);
    screen_capture(dir.file("missing/screen.tga").c_str(), 100, 100);
    screen_capture(nullptr, 100, 100);
    EXPECT_FALSE(dir.exists("missing"));
}

TEST_F(ScreenCapture, ASwapThatLosesThePictureMakesItDrawnAgainWithoutASwap) {
    open(402, 302);
    null_system.keeps_back_buffer = false;
    const int swaps = null_window(window)->swaps;
    capture(400, 300);
    const std::vector<std::string> all = recording_gl::lines();
    EXPECT_EQ(all.front(), "glClear GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT");
    EXPECT_EQ(all[all.size() - 2], "glGetIntegerv GL_VIEWPORT");
    EXPECT_EQ(all.back(), "glReadPixels 0 0 400 300 GL_RGB GL_UNSIGNED_BYTE");
    EXPECT_EQ(null_window(window)->swaps, swaps);
}

TEST_F(ScreenCapture, ASwapThatKeepsThePictureDrawsNothing) {
    open(402, 302);
    capture(400, 300);
    EXPECT_EQ(recording_gl::count_calls("glClear"), 0);
}

}  // namespace
}  // namespace pelt
