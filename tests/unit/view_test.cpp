#include "render/view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "scene/session.h"

namespace pelt {
namespace {

ViewState make_view(int32_t width, int32_t height) {
    ViewState view{};
    view.width = width;
    view.height = height;
    view.zoom = 1.0f;
    view.extent_x = 4.0f;
    view.extent_y = 2.0f;
    view.extent_z = 600.0f;
    return view;
}

bool extents_are_finite(const ViewState& view) {
    return std::isfinite(view.extent_x) && std::isfinite(view.extent_y) && std::isfinite(view.extent_z);
}

TEST(ViewZoom, ZeroBecomesTheSmallestFactor) {
    ViewState view = make_view(400, 300);
    view_set_zoom(&view, 0.0f);
    EXPECT_EQ(view.zoom, 0.001f);
}

TEST(ViewZoom, NegativeBecomesTheSmallestFactor) {
    ViewState view = make_view(400, 300);
    view_set_zoom(&view, -5.0f);
    EXPECT_EQ(view.zoom, 0.001f);
}

TEST(ViewZoom, AThousandBecomesAHundred) {
    ViewState view = make_view(400, 300);
    view_set_zoom(&view, 1000.0f);
    EXPECT_EQ(view.zoom, 100.0f);
}

TEST(ViewZoom, ValuesInRangeAreStoredAsTheyAre) {
    ViewState view = make_view(400, 300);
    for (const float factor : {0.001f, 2.5f, 100.0f}) {
        view_set_zoom(&view, factor);
        EXPECT_EQ(view.zoom, factor);
    }
}

TEST(ViewZoom, ANonNumberBecomesTheSmallestFactorAndInfinityTheLargest) {
    ViewState view = make_view(400, 300);
    view_set_zoom(&view, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(view.zoom, 0.001f);
    view_set_zoom(&view, std::numeric_limits<float>::infinity());
    EXPECT_EQ(view.zoom, 100.0f);
}

TEST(ViewFit, AWideWindowShowsMoreInWidth) {
    ViewState view = make_view(400, 200);
    view.zoom = 3.0f;
    view_fit(&view, 10.0f, false);
    EXPECT_FLOAT_EQ(view.extent_x, 21.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 10.5f);
    EXPECT_FLOAT_EQ(view.extent_z, 21.0f);
    EXPECT_EQ(view.zoom, 3.0f);  // not touched
}

TEST(ViewFit, ATallWindowShowsMoreInHeight) {
    ViewState view = make_view(100, 300);
    view_fit(&view, 2.0f, false);
    EXPECT_FLOAT_EQ(view.extent_x, 2.1f);
    EXPECT_FLOAT_EQ(view.extent_y, 6.3f);
    EXPECT_FLOAT_EQ(view.extent_z, 4.2f);
}

TEST(ViewFit, ASquareWindowHasEqualExtents) {
    ViewState view = make_view(300, 300);
    view_fit(&view, 100.0f, false);
    EXPECT_FLOAT_EQ(view.extent_x, 105.0f);
    EXPECT_EQ(view.extent_x, view.extent_y);
}

TEST(ViewFit, KeepWithASmallerSceneChangesNothing) {
    ViewState view = make_view(400, 200);
    view.extent_x = 42.0f;
    view.extent_y = 21.0f;
    view.extent_z = 42.0f;
    view.zoom = 1.5f;
    const ViewState before = view;
    view_fit(&view, 10.0f, true);
    EXPECT_EQ(view.extent_x, before.extent_x);
    EXPECT_EQ(view.extent_y, before.extent_y);
    EXPECT_EQ(view.extent_z, before.extent_z);
    EXPECT_EQ(view.zoom, before.zoom);
}

TEST(ViewFit, KeepWithALargerSceneGrowsTheExtentsAndMakesUpByTheZoom) {
    ViewState view = make_view(300, 300);
    view_fit(&view, 10.0f, false);
    view.zoom = 2.0f;
    view_fit(&view, 40.0f, true);
    EXPECT_FLOAT_EQ(view.extent_x, 42.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 42.0f);
    EXPECT_FLOAT_EQ(view.extent_z, 84.0f);
    EXPECT_FLOAT_EQ(view.zoom, 0.5f);  // 21 / 84 * 2: extent times zoom, what is on the screen, stays
}

TEST(ViewFit, KeepGrowsAllThreeWhenOnlyOneIsTooSmall) {
    ViewState view = make_view(300, 300);
    view.extent_x = 1000.0f;
    view.extent_y = 1000.0f;
    view.extent_z = 10.0f;
    view_fit(&view, 10.0f, true);
    EXPECT_FLOAT_EQ(view.extent_x, 10.5f);
    EXPECT_FLOAT_EQ(view.extent_z, 21.0f);
    EXPECT_FLOAT_EQ(view.zoom, 10.0f / 21.0f);
}

TEST(ViewFit, WithoutASizeTheRatioIsOne) {
    ViewState view{};
    view_fit(&view, 10.0f, false);
    EXPECT_FLOAT_EQ(view.extent_x, 10.5f);
    EXPECT_FLOAT_EQ(view.extent_y, 10.5f);
}

TEST(ViewFit, AHeightOfZeroCountsAsOne) {
    ViewState view = make_view(5, 0);
    view_fit(&view, 10.0f, false);
    EXPECT_FLOAT_EQ(view.extent_x, 52.5f);
    EXPECT_TRUE(extents_are_finite(view));
}

TEST(ViewFit, ARadiusWithoutAFiniteResultChangesNothing) {
    for (const bool keep : {false, true}) {
        for (const float radius : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(),
                                   std::numeric_limits<float>::max()}) {
            ViewState view = make_view(400, 300);
            view_fit(&view, radius, keep);
            EXPECT_EQ(view.extent_x, 4.0f);
            EXPECT_EQ(view.extent_y, 2.0f);
            EXPECT_EQ(view.extent_z, 600.0f);
            EXPECT_EQ(view.zoom, 1.0f);
        }
    }
}

TEST(ViewReset, FitsTheRadiusOfAnEmptySceneAndReturnsToTheOrigin) {
    ViewState view = make_view(400, 200);
    view.focus = {1.0f, 2.0f, 3.0f};
    view.zoom = 7.0f;
    view.fixed_size = 1;
    view.freerotate = 1;
    view_reset(&view);
    EXPECT_FLOAT_EQ(view.extent_x, 21.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 10.5f);
    EXPECT_FLOAT_EQ(view.extent_z, 21.0f);
    EXPECT_EQ(view.focus.x, 0.0f);
    EXPECT_EQ(view.focus.y, 0.0f);
    EXPECT_EQ(view.focus.z, 0.0f);
    EXPECT_EQ(view.zoom, 7.0f);
    EXPECT_EQ(view.fixed_size, 1);
    EXPECT_EQ(view.freerotate, 1);
}

TEST(ViewFitScene, KeepsAViewThatIsLargeEnoughAndGrowsASmallerOne) {
    Session session{};
    session.radius = 20.0f;
    ViewState view = make_view(300, 300);
    view_fit(&view, 30.0f, false);
    view_fit_scene(&view, &session);
    EXPECT_FLOAT_EQ(view.extent_x, 31.5f);
    session.radius = 60.0f;
    view_fit_scene(&view, &session);
    EXPECT_FLOAT_EQ(view.extent_x, 63.0f);
    EXPECT_FLOAT_EQ(view.zoom, 0.5f);
}

TEST(ViewPan, ZeroByZeroRecentres) {
    ViewState view = make_view(400, 200);
    view.pan_x = 3.0f;
    view.pan_y = -4.0f;
    view_pan_pixels(&view, 0.0f, 0.0f, 1);
    EXPECT_EQ(view.pan_x, 0.0f);
    EXPECT_EQ(view.pan_y, 0.0f);
}

TEST(ViewPan, RelativeMovesAgainstTheDragInXAndWithItInY) {
    ViewState view = make_view(400, 200);
    view.zoom = 2.0f;
    view.pan_x = 1.0f;
    view.pan_y = 1.0f;
    view_pan_pixels(&view, 100.0f, 50.0f, 1);
    EXPECT_FLOAT_EQ(view.pan_x, 0.0f);  // 1 - 100/400 * 4 * 0.5 * 2
    EXPECT_FLOAT_EQ(view.pan_y, 1.5f);  // 1 + 50/200 * 2 * 0.5 * 2
}

TEST(ViewPan, OneOfTheTwoMayBeZero) {
    ViewState view = make_view(400, 200);
    view.pan_y = 5.0f;
    view_pan_pixels(&view, 200.0f, 0.0f, 1);
    EXPECT_FLOAT_EQ(view.pan_x, -1.0f);
    EXPECT_EQ(view.pan_y, 5.0f);
}

TEST(ViewPan, AbsoluteStoresTheDistance) {
    ViewState view = make_view(400, 200);
    view.pan_x = 100.0f;
    view.pan_y = 100.0f;
    view_pan_pixels(&view, 100.0f, 100.0f, 0);
    EXPECT_FLOAT_EQ(view.pan_x, 0.5f);
    EXPECT_FLOAT_EQ(view.pan_y, 0.5f);
}

TEST(ViewPan, WithoutASizeStaysFinite) {
    ViewState view = make_view(0, 0);
    view_pan_pixels(&view, 10.0f, 10.0f, 1);
    EXPECT_FLOAT_EQ(view.pan_x, -20.0f);
    EXPECT_FLOAT_EQ(view.pan_y, 10.0f);
}

TEST(ViewFocus, StoresTheThreeValues) {
    ViewState view = make_view(400, 300);
    view_set_focus(&view, 1.0f, -2.0f, 3.5f);
    EXPECT_EQ(view.focus.x, 1.0f);
    EXPECT_EQ(view.focus.y, -2.0f);
    EXPECT_EQ(view.focus.z, 3.5f);
}

TEST(ViewFreerotate, OnlyStoresTheFlag) {
    ViewState view = make_view(400, 300);
    view.angle = 30.0f;
    view_set_freerotate(&view, 1);
    EXPECT_EQ(view.freerotate, 1);
    EXPECT_EQ(view.angle, 30.0f);
    view_set_freerotate(&view, 0);
    EXPECT_EQ(view.freerotate, 0);
}

TEST(ViewSizeRatio, CountsSizesBelowOneAsOne) {
    EXPECT_FLOAT_EQ(view_size_ratio(300, 200), 1.5f);
    EXPECT_FLOAT_EQ(view_size_ratio(300, 0), 300.0f);
    EXPECT_FLOAT_EQ(view_size_ratio(0, 300), 1.0f / 300.0f);
    EXPECT_FLOAT_EQ(view_size_ratio(-7, -9), 1.0f);
}

TEST(ViewTakeSize, TheFirstRealSizeClearsWhatAFitWithoutOneLeft) {
    ViewState view = make_view(1, 1);
    view_fit(&view, 100.0f, false);
    EXPECT_GT(view.unsized_radius, 0.0f);
    view_take_size(&view, 1, 0, view_resized_extents(&view, 1, 0));
    EXPECT_GT(view.unsized_radius, 0.0f);
    view_take_size(&view, 600, 300, view_resized_extents(&view, 600, 300));
    EXPECT_EQ(view.unsized_radius, 0.0f);
    EXPECT_EQ(view.width, 600);
    EXPECT_EQ(view.height, 300);
    EXPECT_FLOAT_EQ(view.extent_x, 210.0f);  // a radius of 100 with its margin, twice as wide as high
    EXPECT_FLOAT_EQ(view.extent_y, 105.0f);
}

TEST(ViewScaledExtent, StaysWhereTheProductWouldNotBeFinite) {
    EXPECT_FLOAT_EQ(view_scaled_extent(2.0f, 1.5f), 3.0f);
    EXPECT_EQ(view_scaled_extent(1e38f, 1000.0f), 1e38f);
}

}  // namespace
}  // namespace pelt
