// Double clicks, for window systems that only report presses.
#include "window/x11/double_click.h"

#include <gtest/gtest.h>

#include <limits>

namespace pelt {
namespace {

TEST(DoubleClick, TheFirstPressIsNone) {
    ClickRecord last{};
    EXPECT_FALSE(click_is_double(&last, 1, 0, 0, 0));
    ClickRecord fresh{};
    EXPECT_FALSE(click_is_double(&fresh, 0, 0, 0, 0));
}

TEST(DoubleClick, TheSecondPressWithin500MillisecondsIs) {
    ClickRecord last{};
    click_is_double(&last, 1, 1000, 10, 10);
    EXPECT_TRUE(click_is_double(&last, 1, 1500, 10, 10));
    last = {};
    click_is_double(&last, 1, 1000, 10, 10);
    EXPECT_FALSE(click_is_double(&last, 1, 1501, 10, 10));
}

TEST(DoubleClick, TheSecondPressWithin4PixelsIs) {
    for (const int32_t distance : {-4, 4}) {
        ClickRecord last{};
        click_is_double(&last, 1, 0, 10, 10);
        EXPECT_TRUE(click_is_double(&last, 1, 1, 10 + distance, 10 - distance));
    }
    for (const int32_t distance : {-5, 5}) {
        ClickRecord last{};
        click_is_double(&last, 1, 0, 10, 10);
        EXPECT_FALSE(click_is_double(&last, 1, 1, 10 + distance, 10));
        last = {};
        click_is_double(&last, 1, 0, 10, 10);
        EXPECT_FALSE(click_is_double(&last, 1, 1, 10, 10 + distance));
    }
}

TEST(DoubleClick, AnotherButtonBreaksThePair) {
    ClickRecord last{};
    click_is_double(&last, 1, 0, 0, 0);
    EXPECT_FALSE(click_is_double(&last, 3, 10, 0, 0));
    EXPECT_FALSE(click_is_double(&last, 1, 20, 0, 0));
    EXPECT_TRUE(click_is_double(&last, 1, 30, 0, 0));
}

TEST(DoubleClick, AThirdPressIsAFirstOne) {
    ClickRecord last{};
    click_is_double(&last, 1, 0, 0, 0);
    EXPECT_TRUE(click_is_double(&last, 1, 10, 0, 0));
    EXPECT_FALSE(click_is_double(&last, 1, 20, 0, 0));
    EXPECT_TRUE(click_is_double(&last, 1, 30, 0, 0));
}

TEST(DoubleClick, ALatePressIsTheFirstOfTheNextPair) {
    ClickRecord last{};
    click_is_double(&last, 1, 0, 0, 0);
    EXPECT_FALSE(click_is_double(&last, 1, 600, 0, 0));
    EXPECT_TRUE(click_is_double(&last, 1, 700, 0, 0));
}

TEST(DoubleClick, TheClockMayWrapAround) {
    ClickRecord last{};
    click_is_double(&last, 1, 0xFFFFFF00u, 0, 0);
    EXPECT_TRUE(click_is_double(&last, 1, 0x10u, 0, 0));
}

TEST(DoubleClick, PositionsAtTheLimitsDoNotOverflow) {
    ClickRecord last{};
    click_is_double(&last, 1, 0, std::numeric_limits<int32_t>::min(), 0);
    EXPECT_FALSE(click_is_double(&last, 1, 1, std::numeric_limits<int32_t>::max(), 0));
}

}  // namespace
}  // namespace pelt
