// Pictures of any size, drawn in tiles behind a window, on an OpenGL that records.
#include "render/picture_draw.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "render/frame.h"
#include "support/native_null.h"
#include "support/recording_gl.h"

namespace pelt {
namespace {

Session session;
ViewState view;

class PictureDraw : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        recording_gl::reset();
        session_init(&session);
        view = ViewState{};
        frame_bind(&session, &view);
    }
    void TearDown() override {
        EXPECT_EQ(recording_gl::joined(recording_gl::errors()), "");
        null_reset();
    }
    void open(int32_t width, int32_t height) {
        window = gl_window_create("view", null_add_window(width, height), view_init, nullptr, view_resize, nullptr, 0);
        recording_gl::clear();
    }
    // The lines that begin with a name.
    static std::vector<std::string> lines_of(const std::string& name) {
        std::vector<std::string> found;
        for (const std::string& line : recording_gl::lines()) {
            if (line.rfind(name + " ", 0) == 0) { found.push_back(line); }
        }
        return found;
    }
    static std::array<int, 3> pixel(const Picture& picture, int32_t x, int32_t from_top) {
        const uint8_t* at = picture.row(from_top) + x * picture.channels;
        return {at[0], at[1], at[2]};
    }

    Picture picture;
    std::string failure;
    WindowHandle window = 0;
};

TEST_F(PictureDraw, APictureCostsTheFrameOfTheWindowAndItsOwnAndSwapsNothing) {
    open(102, 82);
    EXPECT_EQ(null_window(window)->swaps, 1);
    PictureWish wish;
    wish.width = 50;
    wish.height = 40;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure)) << failure;
    EXPECT_EQ(null_window(window)->swaps, 1);
    // One for the picture, and one because what a capture reads lies in the same buffer.
    EXPECT_EQ(recording_gl::count_calls("glClear"), 2);
    EXPECT_EQ(recording_gl::count_calls("glReadPixels"), 1);
}

TEST_F(PictureDraw, WithoutASizeItIsThatOfTheView) {
    open(102, 82);
    ASSERT_TRUE(picture_draw(PictureWish{}, &picture, &failure));
    EXPECT_EQ(picture.width, 102);
    EXPECT_EQ(picture.height, 82);
    EXPECT_EQ(picture.channels, 3);
}

TEST_F(PictureDraw, TilesAreCutOutOfTheViewportOfTheWholePicture) {
    open(42, 32);  // the drawing area has 40 by 30
    PictureWish wish;
    wish.width = 100;
    wish.height = 45;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    const std::vector<std::string> viewports = {
        "glViewport 0 0 100 45",     "glViewport -40 0 100 45",   "glViewport -80 0 100 45", "glViewport 0 -30 100 45",
        "glViewport -40 -30 100 45", "glViewport -80 -30 100 45", "glViewport 0 0 42 32"};
    EXPECT_EQ(lines_of("glViewport"), viewports);
    const std::vector<std::string> reads = {
        "glReadPixels 0 0 40 30 GL_RGBA GL_UNSIGNED_BYTE", "glReadPixels 0 0 40 30 GL_RGBA GL_UNSIGNED_BYTE",
        "glReadPixels 0 0 20 30 GL_RGBA GL_UNSIGNED_BYTE", "glReadPixels 0 0 40 15 GL_RGBA GL_UNSIGNED_BYTE",
        "glReadPixels 0 0 40 15 GL_RGBA GL_UNSIGNED_BYTE", "glReadPixels 0 0 20 15 GL_RGBA GL_UNSIGNED_BYTE"};
    EXPECT_EQ(lines_of("glReadPixels"), reads);
}

TEST_F(PictureDraw, EachTileHasItsPlaceAndTheTopRowComesFirst) {
    open(42, 32);
    // The colour at a place of the window: every tile reads the same, so that its seams are seen.
    recording_gl::set_read_pattern([](int x, int y) {
        return std::array<unsigned char, 3>{static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7};
    });
    PictureWish wish;
    wish.width = 100;
    wish.height = 45;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    for (int32_t y = 0; y < 45; ++y) {
        for (int32_t x = 0; x < 100; ++x) {
            const std::array<int, 3> expected = {x % 40, (44 - y) % 30, 7};
            ASSERT_EQ(pixel(picture, x, y), expected) << x << " " << y;
        }
    }
}

TEST_F(PictureDraw, BeyondTheLargestViewportATileHasOneOfItsOwnThatShowsItsPart) {
    open(402, 52);
    view.pan_x = 3.0f;
    view.zoom = 2.0f;
    PictureWish wish;
    wish.width = 1600;  // the driver stops at 1000
    wish.height = 40;
    recording_gl::clear();
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    const std::vector<std::string> viewports = lines_of("glViewport");
    ASSERT_EQ(viewports.size(), 5u);
    EXPECT_EQ(viewports[0], "glViewport -64 -64 528 168");
    // The picture shows 1600 pixels; what a pixel shows must be the same in each tile, and so must the place of its
    // middle: extents are of four half sizes.
    const double pixels_per_unit = 1600.0 / (0.5 * view.zoom * (view.extent_x * (1600.0 / 402.0) / (40.0 / 52.0)));
    const std::vector<std::string> scales = lines_of("glScalef");
    const std::vector<std::string> shifts = lines_of("glTranslatef");
    ASSERT_GE(scales.size(), 4u);
    float scale = 0.0f;
    ASSERT_EQ(std::sscanf(scales[0].c_str(), "glScalef %f", &scale), 1);
    EXPECT_NEAR(scale * 528.0 / 2.0, pixels_per_unit, 0.01);
    for (size_t tile = 0; tile < 4; ++tile) {
        float shift = 0.0f;
        ASSERT_EQ(std::sscanf(shifts[2 * tile].c_str(), "glTranslatef %f", &shift), 1);
        const double middle = 400.0 * static_cast<double>(tile) + 200.0 - 800.0;
        EXPECT_NEAR(shift, -3.0 - middle / pixels_per_unit, 0.01) << tile;
    }
}

TEST_F(PictureDraw, TheSmallerSideDecidesWhatIsShown) {
    open(200, 100);
    const float across = view.extent_x, up = view.extent_y;
    PictureWish wish;
    wish.width = 400;
    wish.height = 400;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    float x = 0.0f, y = 0.0f;
    ASSERT_EQ(std::sscanf(lines_of("glScalef")[0].c_str(), "glScalef %f %f", &x, &y), 2);
    EXPECT_FLOAT_EQ(x, 1.0f / (across * 0.25f)) << "all that was shown across is shown";
    EXPECT_FLOAT_EQ(y, 1.0f / (2.0f * up * 0.25f)) << "and twice as much up and down";
}

TEST_F(PictureDraw, ASupersampledPictureIsTheMeanOfItsFinePixels) {
    open(42, 32);
    recording_gl::set_read_pattern([](int x, int y) {
        return std::array<unsigned char, 3>{static_cast<unsigned char>(x), static_cast<unsigned char>(2 * y), 100};
    });
    PictureWish wish;
    wish.width = 13;
    wish.height = 10;
    wish.supersample = 3;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    EXPECT_EQ(lines_of("glViewport")[0], "glViewport 0 0 39 30");
    const std::array<int, 3> lowest_left = {1, 2, 100};
    EXPECT_EQ(pixel(picture, 0, 9), lowest_left);
    const std::array<int, 3> highest_right = {37, 56, 100};
    EXPECT_EQ(pixel(picture, 12, 0), highest_right);
}

TEST_F(PictureDraw, ATileHasWholePixelsOfASupersampledPicture) {
    open(42, 32);
    PictureWish wish;
    wish.width = 10;
    wish.height = 4;
    wish.supersample = 7;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    EXPECT_EQ(lines_of("glReadPixels")[0], "glReadPixels 0 0 35 28 GL_RGBA GL_UNSIGNED_BYTE");
    EXPECT_EQ(lines_of("glReadPixels").size(), 2u);
}

TEST_F(PictureDraw, AWindowSmallerThanOnePixelOfASupersampledPictureRefusesIt) {
    open(6, 6);
    PictureWish wish;
    wish.supersample = 8;
    EXPECT_FALSE(picture_draw(wish, &picture, &failure));
    EXPECT_EQ(failure, "the window is too small to draw a picture behind it");
}

// On black and on white by turns, as two draws of the same tile find them.
TEST_F(PictureDraw, ATransparentPictureHasAsAlphaWhatDiffersOnBlackAndOnWhite) {
    open(42, 32);
    recording_gl::set_read_pattern([](int x, int) {
        const bool on_white = recording_gl::count_lines("glClearColor 1 1 1 0") > 0;
        std::array<unsigned char, 3> colour{};
        if (x == 0 && on_white) { colour = {255, 255, 255}; }  // nothing
        if (x == 1) { colour = {200, 100, 50}; }               // opaque
        if (x == 2 && !on_white) { colour = {100, 50, 0}; }    // 200, 100, 0 of which half
        if (x == 2 && on_white) { colour = {228, 178, 128}; }
        return colour;
    });
    PictureWish wish;
    wish.width = 3;
    wish.height = 1;
    wish.transparent = true;
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    ASSERT_EQ(picture.channels, 4);
    const std::vector<int> bytes(picture.row(0), picture.row(0) + 12);
    const std::vector<int> expected = {0, 0, 0, 0, 200, 100, 50, 255, 201, 100, 0, 127};
    EXPECT_EQ(bytes, expected);
}

TEST_F(PictureDraw, TheViewTheClearColourAndTheViewportAreWhatTheyWere) {
    open(42, 32);
    view_set_background(&view, 0.25f, 0.5f, 0.75f);
    const ViewState before = view;
    PictureWish wish;
    wish.width = 100;
    wish.height = 100;
    wish.transparent = true;
    recording_gl::clear();
    ASSERT_TRUE(picture_draw(wish, &picture, &failure));
    EXPECT_EQ(lines_of("glClearColor").back(), "glClearColor 0.25 0.5 0.75 0");
    EXPECT_EQ(recording_gl::viewport(), (std::array<int, 4>{0, 0, 42, 32}));
    EXPECT_EQ(view.extent_x, before.extent_x);
    EXPECT_EQ(view.extent_y, before.extent_y);
    EXPECT_EQ(view.width, before.width);
    EXPECT_EQ(view.height, before.height);
    EXPECT_EQ(view.fixed_size, before.fixed_size);
    EXPECT_EQ(recording_gl::modelview_depth(), 1);
}

TEST_F(PictureDraw, APictureOfAFixedSizeHasTheBackgroundAllOver) {
    open(402, 302);
    view_set_size(200, 100);
    recording_gl::clear();
    ASSERT_TRUE(picture_draw(PictureWish{}, &picture, &failure));
    EXPECT_EQ(picture.width, 200);
    EXPECT_EQ(picture.height, 100);
    EXPECT_EQ(lines_of("glClearColor")[0], "glClearColor 0 0 0 0");
    EXPECT_EQ(view.fixed_size, 1);
}

}  // namespace
}  // namespace pelt
