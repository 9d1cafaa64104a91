// The motion of one track at one time. Rotations are checked by where they take a point, worked out by hand.
#include "motion/animation_sample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include "support/animation_fixture.h"

namespace pelt {
namespace {

using test::ClipBuilder;
using test::place_key;
using test::turn_key;

constexpr int32_t TRANSLATE = 0;
constexpr int32_t ROTATE = 1;
constexpr int32_t TRACK = 2;
constexpr int32_t SLOTS = 3;
constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

Mat4 marked() {
    Mat4 m;
    for (int i = 0; i < 16; ++i) { m.m[i] = 100.0f + static_cast<float>(i); }
    return m;
}

bool same(const Mat4& a, const Mat4& b) { return std::memcmp(&a, &b, sizeof(Mat4)) == 0; }

Vec3 applied(const Mat4& m, Vec3 p) {
    return {p.x * m.m[0] + p.y * m.m[1] + p.z * m.m[2] + m.m[3], p.x * m.m[4] + p.y * m.m[5] + p.z * m.m[6] + m.m[7],
            p.x * m.m[8] + p.y * m.m[9] + p.z * m.m[10] + m.m[11]};
}

void expect_place(const Mat4& m, float x, float y, float z) {
    EXPECT_FLOAT_EQ(m.m[3], x);
    EXPECT_FLOAT_EQ(m.m[7], y);
    EXPECT_FLOAT_EQ(m.m[11], z);
}

// A turn about x takes the y axis to (0, cos, sin).
void expect_turn_about_x(const Mat4& m, double degrees, double tolerance = 1e-5) {
    const double radians = degrees / 180.0 * std::numbers::pi;
    const Vec3 y = applied(m, {0.0f, 1.0f, 0.0f});
    EXPECT_NEAR(y.x, 0.0, tolerance);
    EXPECT_NEAR(y.y, std::cos(radians), tolerance);
    EXPECT_NEAR(y.z, std::sin(radians), tolerance);
}

// No value: 0, and the matrix as it was.
void expect_nothing(float time, AnimationClip* clip, int32_t slot) {
    Mat4 out = marked();
    EXPECT_EQ(animation_sample(time, clip, slot, &out), 0) << "time " << time << " slot " << slot;
    EXPECT_TRUE(same(out, marked()));
}

Mat4 sampled(float time, AnimationClip* clip, int32_t slot) {
    Mat4 out = marked();
    EXPECT_EQ(animation_sample(time, clip, slot, &out), 1) << "time " << time << " slot " << slot;
    return out;
}

TEST(AnimationSample, TranslationIsLinearBetweenKeysAndExactAtThem) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(2, 4, -6)}}).frame(1.0f, {{TRANSLATE, place_key(4, 10, 6)}});
    expect_place(sampled(0.0f, &clip, TRANSLATE), 2, 4, -6);
    expect_place(sampled(0.5f, &clip, TRANSLATE), 3, 7, 0);
    expect_place(sampled(0.25f, &clip, TRANSLATE), 2.5f, 5.5f, -3);
    expect_place(sampled(1.0f, &clip, TRANSLATE), 4, 10, 6);
    EXPECT_EQ(sampled(0.5f, &clip, TRANSLATE).m[15], 1.0f);
}

TEST(AnimationSample, TheEndItselfIsInsideAndBehindItNothingMoves) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(1, 0, 0)}}).frame(1.0f, {{TRANSLATE, place_key(2, 0, 0)}});
    expect_place(sampled(1.0f, &clip, TRANSLATE), 2, 0, 0);
    expect_nothing(1.0001f, &clip, TRANSLATE);
}

TEST(AnimationSample, TheStartItselfIsInsideAndBeforeItNothingMoves) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(2.0f, {{TRANSLATE, place_key(1, 0, 0)}}).frame(3.0f, {{TRANSLATE, place_key(2, 0, 0)}}).start(2.0f);
    expect_place(sampled(2.0f, &clip, TRANSLATE), 1, 0, 0);
    expect_nothing(1.9999f, &clip, TRANSLATE);
}

TEST(AnimationSample, BeforeTheFirstKeyTheFirstKeyHolds) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.5f, {{TRANSLATE, place_key(7, 8, 9)}}).frame(1.0f, {{TRANSLATE, place_key(0, 0, 0)}});
    expect_place(sampled(0.2f, &clip, TRANSLATE), 7, 8, 9);
}

TEST(AnimationSample, BehindTheLastKeyTheLastKeyHoldsUntilTheEnd) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(0, 0, 0)}}).frame(1.0f, {{TRANSLATE, place_key(5, 0, 0)}}).end(4.0f);
    expect_place(sampled(3.5f, &clip, TRANSLATE), 5, 0, 0);
    expect_place(sampled(4.0f, &clip, TRANSLATE), 5, 0, 0);
    expect_nothing(4.5f, &clip, TRANSLATE);
}

TEST(AnimationSample, KeysCloserThanATenThousandthAreNotBlended) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(1.0f, {{TRANSLATE, place_key(0, 0, 0)}}).frame(1.00009f, {{TRANSLATE, place_key(10, 0, 0)}});
    build.end(2.0f);
    expect_place(sampled(1.00004f, &clip, TRANSLATE), 10, 0, 0);
}

TEST(AnimationSample, KeysATenThousandthApartAreBlended) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    // 1/8192 is above 0.0001, and its half is exact in 32 bits.
    build.frame(1.0f, {{TRANSLATE, place_key(0, 0, 0)}})
        .frame(1.0f + 1.0f / 8192.0f, {{TRANSLATE, place_key(10, 0, 0)}});
    expect_place(sampled(1.0f + 1.0f / 16384.0f, &clip, TRANSLATE), 5, 0, 0);
}

TEST(AnimationSample, RotationHalfwayBetween0And90DegreesIs45) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, turn_key(1, 0, 0, 0)}}).frame(1.0f, {{ROTATE, turn_key(1, 0, 0, 90)}});
    expect_turn_about_x(sampled(0.0f, &clip, ROTATE), 0);
    expect_turn_about_x(sampled(0.5f, &clip, ROTATE), 45);
    expect_turn_about_x(sampled(1.0f, &clip, ROTATE), 90);
}

TEST(AnimationSample, RotationIsEvenInAngleNotAlongTheChord) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 0)}}).frame(1.0f, {{TRACK, turn_key(1, 0, 0, 120)}});
    expect_turn_about_x(sampled(0.25f, &clip, TRACK), 30);
    expect_turn_about_x(sampled(0.75f, &clip, TRACK), 90);
}

TEST(AnimationSample, Rotation10To350DegreesGoesTheShortWayThroughZero) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, {0.0872f, 0, 0, 0.9962f}}}).frame(1.0f, {{ROTATE, {-0.0872f, 0, 0, 0.9962f}}});
    expect_turn_about_x(sampled(0.5f, &clip, ROTATE), 0, 0.01);
    const Vec3 early = applied(sampled(0.25f, &clip, ROTATE), {0, 1, 0});
    EXPECT_NEAR(early.z, std::sin(5.0 / 180.0 * std::numbers::pi), 0.01);
}

TEST(AnimationSample, OppositeKeysFlipTheSignOfTheFirstInStorageAndStayThere) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    // 100 and 260 degrees as the reader stores them: w is never negative, so the second stands as -100.
    const AnimationKey from = turn_key(1, 0, 0, 100);
    const AnimationKey to = turn_key(1, 0, 0, -100);
    ASSERT_LT(from.x * to.x + from.w * to.w, 0.0f);
    build.frame(0.0f, {{ROTATE, from}}).frame(1.0f, {{ROTATE, to}});
    const Mat4 first = sampled(0.25f, &clip, ROTATE);
    EXPECT_EQ(build.key(0, ROTATE)->x, -from.x);
    EXPECT_EQ(build.key(0, ROTATE)->w, -from.w);
    EXPECT_EQ(build.key(1, ROTATE)->x, to.x);
    EXPECT_TRUE(same(first, sampled(0.25f, &clip, ROTATE)));
    EXPECT_EQ(build.key(0, ROTATE)->x, -from.x);
    expect_turn_about_x(first, 140);  // 100 to 260 the short way, a quarter of 160 degrees on
    expect_turn_about_x(sampled(0.5f, &clip, ROTATE), 180);
}

TEST(AnimationSample, HalfTurnKeyStoredPastTheHalfTurnGoesBackwards) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, {0, 0, 0, 1}}}).frame(1.0f, {{ROTATE, {-1, 0, 0, 2.3e-8f}}});
    expect_turn_about_x(sampled(0.5f, &clip, ROTATE), -90);
}

TEST(AnimationSample, SlotZeroAloneReadsItsKeysAsPlaces) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, turn_key(1, 0, 0, 90)}, {TRACK, turn_key(1, 0, 0, 90)}}).end(1.0f);
    expect_place(sampled(0.0f, &clip, TRANSLATE), std::sqrt(0.5f), 0, 0);
    expect_place(sampled(0.0f, &clip, TRACK), 0, 0, 0);
    expect_turn_about_x(sampled(0.0f, &clip, TRACK), 90);
}

TEST(AnimationSample, SubclipActsFromItsStartToItsEnd) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(1.0f, {{TRANSLATE, place_key(0, 1, 0)}}).frame(2.0f, {{TRANSLATE, place_key(0, 3, 0)}}).start(1.0f);
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(10, 0, 0)}}).frame(5.0f, {{TRANSLATE, place_key(10, 0, 0)}});
    build.subclips(&subclips);
    expect_place(sampled(0.9f, &clip, TRANSLATE), 10, 0, 0);
    expect_place(sampled(1.0f, &clip, TRANSLATE), 10, 1, 0);
    expect_place(sampled(1.5f, &clip, TRANSLATE), 10, 2, 0);
    expect_place(sampled(2.0f, &clip, TRANSLATE), 10, 3, 0);
    expect_place(sampled(2.1f, &clip, TRANSLATE), 10, 0, 0);
}

TEST(AnimationSample, SubclipRotationIsMultipliedBehindThatOfTheClip) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(0.0f, {{ROTATE, turn_key(0, 0, 1, 90)}}).end(1.0f);
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, turn_key(1, 0, 0, 90)}}).end(1.0f).subclips(&subclips);
    // The clip's turn about x first: y goes to z; the sub-clip's turn about z leaves it there. x goes to y.
    const Mat4 m = sampled(0.0f, &clip, ROTATE);
    EXPECT_NEAR(applied(m, {0, 1, 0}).z, 1.0f, 1e-5);
    EXPECT_NEAR(applied(m, {1, 0, 0}).y, 1.0f, 1e-5);
    EXPECT_NEAR(applied(m, {0, 0, 1}).x, 1.0f, 1e-5);  // z to -y by the first, -y to x by the second
}

TEST(AnimationSample, SubclipAloneGivesTheValueWhereTheClipHasNone) {
    std::vector<AnimationClip> subclips(2);
    AnimationClip clip;
    ClipBuilder first(&subclips[0], SLOTS);
    first.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 30)}}).end(1.0f);
    ClipBuilder second(&subclips[1], SLOTS);
    second.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 15)}}).end(2.0f);
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, turn_key(1, 0, 0, 5)}}).end(2.0f).subclips(&subclips);
    expect_turn_about_x(sampled(0.5f, &clip, TRACK), 45);  // both sub-clips together
    expect_turn_about_x(sampled(1.5f, &clip, TRACK), 15);  // the second alone
    expect_turn_about_x(sampled(0.5f, &clip, ROTATE), 5);
}

TEST(AnimationSample, SubclipsOutsideTheirParentsTimesAreNotAsked) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(0.0f, {{TRANSLATE, place_key(1, 1, 1)}}).end(9.0f);
    ClipBuilder build(&clip, SLOTS);
    build.end(2.0f).subclips(&subclips);
    expect_place(sampled(2.0f, &clip, TRANSLATE), 1, 1, 1);
    expect_nothing(3.0f, &clip, TRANSLATE);
}

TEST(AnimationSample, HoldTimeFreezesAClipAtEveryTime) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(0, 0, 0)}}).frame(2.0f, {{TRANSLATE, place_key(8, 0, 0)}}).hold(0.5f);
    for (float time : {0.0f, 0.5f, 1.0f, 100.0f, -5.0f}) { expect_place(sampled(time, &clip, TRANSLATE), 2, 0, 0); }
}

TEST(AnimationSample, HoldTimeIsWhatTheSubclipsSeeToo) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(0.0f, {{TRANSLATE, place_key(0, 0, 0)}}).frame(4.0f, {{TRANSLATE, place_key(0, 4, 0)}});
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(1, 0, 0)}}).subclips(&subclips).hold(3.0f);
    expect_place(sampled(1.0f, &clip, TRANSLATE), 1, 3, 0);
}

TEST(AnimationSample, HoldTimeBeforeTheStartNeverHasAnEffect) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(2.0f, {{TRANSLATE, place_key(0, 9, 0)}}).start(2.0f).hold(1.5f);
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(1, 0, 0)}}).end(9.0f).subclips(&subclips);
    for (float time : {0.0f, 1.5f, 2.0f, 3.0f, 8.0f}) { expect_place(sampled(time, &clip, TRANSLATE), 1, 0, 0); }
}

TEST(AnimationSample, OnlyTheFirstFrameTellsWhetherATrackIsThere) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{ROTATE, turn_key(1, 0, 0, 10)}});
    build.frame(1.0f, {{ROTATE, turn_key(1, 0, 0, 20)}, {TRACK, turn_key(1, 0, 0, 30)}});
    expect_nothing(1.0f, &clip, TRACK);
    expect_turn_about_x(sampled(1.0f, &clip, ROTATE), 20);
}

TEST(AnimationSample, MissingKeysAndFramesGiveNoValue) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 10)}}).frame(1.0f, {}).frame(2.0f, {{TRACK, turn_key(1, 0, 0, 50)}});
    build.end(3.0f);
    expect_turn_about_x(sampled(0.0f, &clip, TRACK), 10);
    expect_nothing(0.5f, &clip, TRACK);  // the second key is missing
    expect_nothing(1.0f, &clip, TRACK);  // the only key is missing
    expect_nothing(1.5f, &clip, TRACK);  // the first key is missing
    expect_turn_about_x(sampled(2.0f, &clip, TRACK), 50);
    build.empty_frame().empty_frame();
    expect_nothing(2.5f, &clip, TRACK);
    expect_nothing(0.5f, &clip, TRACK);
}

TEST(AnimationSample, MissingKeyOfAClipLeavesTheValueToItsSubclips) {
    std::vector<AnimationClip> subclips(1);
    AnimationClip clip;
    ClipBuilder sub(&subclips[0], SLOTS);
    sub.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 25)}}).end(3.0f);
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 10)}}).empty_frame().end(3.0f).subclips(&subclips);
    expect_turn_about_x(sampled(2.0f, &clip, TRACK), 25);
}

TEST(AnimationSample, SlotsOutOfRangeGiveNoValue) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    // The table has an entry at slot_count, which a track name may fill and no sample reads.
    build.frame(0.0f, {{TRACK, turn_key(1, 0, 0, 10)}, {SLOTS, turn_key(1, 0, 0, 10)}}).end(1.0f);
    for (int32_t slot :
         {-1, SLOTS, SLOTS + 1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
        expect_nothing(0.0f, &clip, slot);
    }
}

TEST(AnimationSample, NothingToSampleGivesNoValue) {
    AnimationClip empty{};
    expect_nothing(0.0f, nullptr, TRANSLATE);
    expect_nothing(0.0f, &empty, TRANSLATE);
    EXPECT_EQ(animation_sample(0.0f, &empty, TRANSLATE, nullptr), 0);
}

TEST(AnimationSample, NonFiniteAndEnormousTimesEnd) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(3, 0, 0)}}).frame(1.0f, {{TRANSLATE, place_key(4, 0, 0)}});
    for (float time : {INFINITE, -INFINITE, 3e38f, -3e38f}) { expect_nothing(time, &clip, TRANSLATE); }
    expect_place(sampled(NOT_A_NUMBER, &clip, TRANSLATE), 3, 0, 0);  // neither before nor behind: the first key
}

TEST(AnimationSample, ClipBeyondAnyFloatEnds) {
    AnimationClip clip;
    ClipBuilder build(&clip, SLOTS);
    build.frame(0.0f, {{TRANSLATE, place_key(3, 0, 0)}}).frame(INFINITE, {{TRANSLATE, place_key(4, 0, 0)}});
    expect_place(sampled(1.0f, &clip, TRANSLATE), 3, 0, 0);  // an endless interval is never left
    expect_place(sampled(INFINITE, &clip, TRANSLATE), 4, 0, 0);
}

// The walk that the search stands for, written out.
struct Walked {
    int32_t previous;
    int32_t frame;
    bool ran_off;
};

Walked walk(float time, const AnimationClip& clip) {
    int32_t i = 0;
    int32_t previous = 0;
    while (i < clip.frame_count && clip.frames[i].time < time && clip.frames[i].time < clip.end_time) {
        previous = i++;
    }
    return i == clip.frame_count ? Walked{previous, i - 1, true} : Walked{previous, i, false};
}

// Where a walk from the front would find the time; the keys are the numbers of the frames.
float walked_value(float time, const AnimationClip& clip) {
    const Walked found = walk(time, clip);
    const float number = static_cast<float>(found.frame);
    const float at = clip.frames[found.frame].time;
    if (found.ran_off || at == time) { return number; }
    const float interval = at - clip.frames[found.previous].time;
    if (std::fabs(interval) < 0.0001f) { return number; }
    const float share = (time - clip.frames[found.previous].time) / interval;
    const float first = static_cast<float>(found.previous);
    return first + (number - first) * share;
}

TEST(AnimationSample, SearchFindsTheFrameOfAWalkAlsoForTimesOutOfOrder) {
    const std::vector<std::vector<float>> files = {
        {0, 1, 2, 3, 4, 5, 6}, {0, 3, 1, 2, 5, 4, 6, 6, 6, 7}, {5, 4, 3, 2, 1, 0},
        {1, 1, 1, 1},          {0, 2, NOT_A_NUMBER, 1, 3, 9},  {NOT_A_NUMBER, 1, 2},
        {-3, INFINITE, 2, 4},  {-INFINITE, 0, 0, 2},           {2},
    };
    for (const std::vector<float>& times : files) {
        for (float end : {0.5f, 2.0f, 3.5f, 100.0f}) {
            AnimationClip clip;
            ClipBuilder build(&clip, SLOTS);
            for (size_t i = 0; i < times.size(); ++i) {
                build.frame(times[i], {{TRANSLATE, place_key(static_cast<float>(i), 0, 0)}});
            }
            build.start(-10.0f).end(end);
            for (float time = -4.0f; time <= end; time += 0.25f) {
                const float expected = walked_value(time, clip);
                const float value = sampled(time, &clip, TRANSLATE).m[3];
                if (std::isnan(expected)) {
                    EXPECT_TRUE(std::isnan(value));
                } else {
                    EXPECT_EQ(value, expected) << "time " << time << " end " << end;
                }
            }
        }
    }
}

TEST(ClipKeys, CountAndSlotsOfTheFirstFrame) {
    ModelAnimation animation{};
    ClipBuilder build(&animation.clip, 6);
    build.frame(0.0f, {{1, turn_key(1, 0, 0, 1)}, {4, turn_key(1, 0, 0, 1)}});
    build.frame(1.0f, {{0, place_key(0, 0, 0)}});
    EXPECT_EQ(clip_key_count(&animation, &animation.clip), 2);
    EXPECT_EQ(clip_key_slot(&animation, &animation.clip, 0), 1);
    EXPECT_EQ(clip_key_slot(&animation, &animation.clip, 1), 4);
    EXPECT_EQ(clip_key_slot(&animation, &animation.clip, 2), 0);
    EXPECT_EQ(clip_key_slot(&animation, &animation.clip, -1), 0);
}

TEST(ClipKeys, NothingForNoClipOrNoFrames) {
    ModelAnimation animation{};
    EXPECT_EQ(clip_key_count(&animation, nullptr), 0);
    EXPECT_EQ(clip_key_slot(&animation, nullptr, 0), 0);
    animation.clip.slot_count = 3;
    EXPECT_EQ(clip_key_count(&animation, &animation.clip), 0);
    EXPECT_EQ(clip_key_slot(&animation, &animation.clip, 0), 0);
    ClipBuilder build(&animation.clip, 3);
    build.empty_frame();
    EXPECT_EQ(clip_key_count(&animation, &animation.clip), 0);
}

}  // namespace
}  // namespace pelt
