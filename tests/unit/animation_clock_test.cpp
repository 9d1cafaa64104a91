// The clock of the animation: steps, wraps, snapping to a rate.
#include "motion/animation_clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "support/animation_fixture.h"

namespace pelt {
namespace {

using test::ClipBuilder;
using test::place_key;

constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

int reports = 0;

// One figure that moves along x by one unit a second, for a hundred seconds.
class Clock : public ::testing::Test {
protected:
    void SetUp() override {
        test::set_up_lists(&session);
        session.anim_step = 1.0f;
        session.anim_rate = 25;
        reports = 0;
        session.status_callback = session.message_callback = [](const char*) { ++reports; };
        figure = model_create("figure.mod", nullptr);
        animation = animation_create(figure);
        clip = new ClipBuilder(&animation->clip, animation->slot_count);
        clip->frame(0, {{0, place_key(0, 0, 0)}}).frame(100, {{0, place_key(100, 0, 0)}});
        session_add_root(&session, figure, animation);
    }
    void TearDown() override {
        delete clip;
        animation_release(animation);
        model_release(figure);
        test::free_lists(&session);
    }
    // Where the figure stands: the time of the last evaluation.
    float shown() { return model_state(&session, figure)->matrix.m[3]; }

    Session session{};
    Model* figure = nullptr;
    ModelAnimation* animation = nullptr;
    ClipBuilder* clip = nullptr;
};

TEST_F(Clock, NextAndPrevMoveByAStepAndEvaluate) {
    session.anim_end = 10.0f;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 1.0f);
    EXPECT_FLOAT_EQ(shown(), 1.0f);
    session.anim_step = 0.25f;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 1.25f);
    animate_prev(&session);
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, 0.75f);
    EXPECT_FLOAT_EQ(shown(), 0.75f);
}

TEST_F(Clock, WithoutAnAnimationNextAndPrevLeaveTheTimeAsItIs) {
    session.anim_end = 0.0f;
    session.anim_time = 7.5f;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 7.5f);
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, 7.5f);
}

TEST_F(Clock, WithoutAnAnimationNextEvaluatesNothingThatMoves) {
    Session still{};
    test::set_up_lists(&still);
    Model* model = model_create("still.mod", nullptr);
    model_set_point(model, 1, 1, 2, 3, 1.0f);
    session_add_root(&still, model, nullptr);
    animate_next(&still);
    EXPECT_EQ(list_count(&still.point_states), 0);
    EXPECT_EQ(model_state(&still, model)->matrix.m[3], 0.0f);
    model_release(model);
    test::free_lists(&still);
}

TEST_F(Clock, NextAndPrevEvaluateEvenWhenTheClockStandsStill) {
    session.anim_end = 0.0f;
    session.anim_time = 7.5f;
    animate_next(&session);
    EXPECT_FLOAT_EQ(shown(), 7.5f);
    session.anim_time = 8.5f;
    animate_prev(&session);
    EXPECT_FLOAT_EQ(shown(), 8.5f);
}

TEST_F(Clock, TheEndIsShownAndTheNextStepWraps) {
    session.anim_end = 2.0f;
    session.anim_step = 0.5f;
    session.anim_time = 1.5f;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 2.0f);
    EXPECT_FLOAT_EQ(shown(), 2.0f);
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 0.5f);
}

TEST_F(Clock, PrevAtZeroWrapsToTheEndLessAStep) {
    session.anim_end = 2.0f;
    session.anim_step = 0.5f;
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, 1.5f);
}

TEST_F(Clock, PrevToExactlyZeroDoesNotWrap) {
    session.anim_end = 2.0f;
    session.anim_step = 0.5f;
    session.anim_time = 0.5f;
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, 0.0f);
}

TEST_F(Clock, TheRemainderCarriesOverTheWrap) {
    session.anim_end = 1.0f;
    session.anim_step = 0.3f;
    for (float expected : {0.3f, 0.6f, 0.9f, 0.2f}) {
        animate_next(&session);
        EXPECT_NEAR(session.anim_time, expected, 1e-6f);
    }
}

TEST_F(Clock, OneWrapOnlyForAStepLongerThanTheAnimation) {
    session.anim_end = 1.0f;
    session.anim_step = 3.0f;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 2.0f);
    session.anim_time = 0.0f;
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, -2.0f);
}

TEST_F(Clock, RateOutOfRangeChangesAndEvaluatesNothing) {
    session.anim_end = 10.0f;
    session.anim_time = 3.7f;
    for (int32_t n : {0, 61, -1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
        animate_set_rate(&session, n);
        EXPECT_EQ(session.anim_step, 1.0f);
        EXPECT_EQ(session.anim_rate, 25);
        EXPECT_EQ(session.anim_time, 3.7f);
        EXPECT_EQ(shown(), 0.0f);
    }
}

TEST_F(Clock, RateOf60IsAStepOfASixtieth) {
    session.anim_end = 10.0f;
    animate_set_rate(&session, 60);
    EXPECT_EQ(session.anim_step, 1.0f / 60.0f);
    EXPECT_EQ(session.anim_rate, 60);
    animate_set_rate(&session, 1);
    EXPECT_EQ(session.anim_step, 1.0f);
    EXPECT_EQ(session.anim_rate, 1);
}

TEST_F(Clock, RateSnapsTheTimeDownToAMultipleOfTheStepAndEvaluates) {
    session.anim_end = 10.0f;
    session.anim_time = 0.37f;
    animate_set_rate(&session, 10);
    EXPECT_NEAR(session.anim_time, 0.3f, 1e-6f);
    EXPECT_NEAR(shown(), 0.3f, 1e-5f);
}

TEST_F(Clock, TheQuotientOfASnapIsRoundedTo32BitsFirst) {
    session.anim_end = 10.0f;
    session.anim_time = 1.0f;
    animate_set_rate(&session, 10);  // 1.0 / 0.100000001 is 10 in 32 bits, and below it in more
    EXPECT_EQ(session.anim_time, 1.0f);
}

TEST_F(Clock, RatePutsATimeBeyondTheEndToTheEnd) {
    session.anim_end = 2.25f;
    session.anim_time = 9.0f;
    animate_set_rate(&session, 1);
    EXPECT_EQ(session.anim_time, 2.25f);
}

TEST_F(Clock, RatePutsATimeBeforeTheStartToZero) {
    session.anim_end = 2.0f;
    for (float time : {-3.0f, -0.5f, -0.0f}) {  // the last two are no whole step before it: the status reads 0.00 then
        session.anim_time = time;
        animate_set_rate(&session, 1);
        EXPECT_EQ(session.anim_time, 0.0f);
        EXPECT_FALSE(std::signbit(session.anim_time));
    }
}

TEST_F(Clock, RateWithoutAnAnimationPutsTheClockToZero) {
    session.anim_end = 0.0f;
    session.anim_time = 5.0f;
    animate_set_rate(&session, 10);
    EXPECT_EQ(session.anim_time, 0.0f);
    EXPECT_EQ(session.anim_rate, 10);
}

TEST_F(Clock, RateAtNonFiniteAndEnormousTimesStaysInRange) {
    session.anim_end = 2.0f;
    for (float time : {INFINITE, 3e38f}) {
        session.anim_time = time;
        animate_set_rate(&session, 60);
        EXPECT_EQ(session.anim_time, 2.0f);
    }
    for (float time : {-INFINITE, -3e38f, NOT_A_NUMBER}) {
        session.anim_time = time;
        animate_set_rate(&session, 60);
        EXPECT_EQ(session.anim_time, 0.0f);
    }
}

TEST_F(Clock, EndBeyondAnyFloatDoesNotHang) {
    session.anim_end = INFINITE;
    animate_next(&session);
    EXPECT_EQ(session.anim_time, 1.0f);
    animate_prev(&session);
    animate_prev(&session);
    EXPECT_EQ(session.anim_time, INFINITE);
    animate_set_rate(&session, 10);
    EXPECT_EQ(session.anim_time, INFINITE);
}

TEST_F(Clock, ASnapHasMoreStepsThanAnIntegerCanCount) {
    session.anim_end = 1e10f;
    session.anim_time = 1e9f;  // 6e10 steps
    animate_set_rate(&session, 60);
    EXPECT_EQ(session.anim_time, 1e9f);
    session.anim_time = 2147483648.0f;  // one step more than the highest integer
    animate_set_rate(&session, 1);
    EXPECT_EQ(session.anim_time, 2147483648.0f);
}

TEST_F(Clock, NothingIsReported) {
    session.anim_end = 2.0f;
    animate_next(&session);
    animate_prev(&session);
    animate_set_rate(&session, 10);
    EXPECT_EQ(reports, 0);
}

TEST_F(Clock, NoSessionIsAccepted) {
    animate_next(nullptr);
    animate_prev(nullptr);
    animate_set_rate(nullptr, 10);
    SUCCEED();
}

}  // namespace
}  // namespace pelt
