// Scene lists and clip files: what is read, what fails, and with which text.
#include "formats/clip_reader.h"
#include "formats/scene_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "motion/animation_sample.h"
#include "scene/model.h"
#include "support/long_path.h"
#include "support/temp_dir.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif
#ifdef __linux__
#include <dlfcn.h>

namespace {
// Grows a file when it is opened for the second time from here on. Nothing else can get between two passes of a read.
struct Growth {
    std::string path;
    std::string added;
    int opens = 0;
} growth;
}  // namespace

extern "C" FILE* fdopen(int descriptor, const char* mode) noexcept {
    if (!growth.path.empty() && mode[0] == 'r') {
        const std::filesystem::path opened = std::string("/proc/self/fd/").append(std::to_string(descriptor));
        std::error_code none;
        if (std::filesystem::read_symlink(opened, none) == growth.path && ++growth.opens == 2) {
            std::ofstream(growth.path, std::ios::app) << growth.added;
        }
    }
    static const auto real = reinterpret_cast<FILE* (*)(int, const char*)>(dlsym(RTLD_NEXT, "fdopen"));
    return real(descriptor, mode);
}
#endif

namespace pelt {
namespace {

constexpr int32_t TRANSLATE = 0;
constexpr int32_t ROTATE = 1;
constexpr int32_t JOINTS = 2;

std::string numbered(const char* name, int number) { return std::string(name).append(std::to_string(number)); }

std::string error() { return animation_error() == nullptr ? "(none)" : animation_error(); }

// A clip, read for a model with the joints hip and knee and the child link lamp.
class Clip : public ::testing::Test {
protected:
    void SetUp() override {
        model = model_create("figure.mod", nullptr);
        model_add_joint(model, "hip", 0, 0, 0, "world", 0);
        model_add_joint(model, "knee", 0, 10, 0, "hip", 0);
        model_add_child(model, nullptr, "lamp", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        animation = animation_create(model);
        clip = animation_clip(animation);
    }
    void TearDown() override {
        animation_release(animation);
        model_release(model);
    }
    // Reads a text as a clip in place of the last one.
    float read(const std::string& text, float start = 0.0f, float hold = HOLD_NONE) {
        dir.write("main", text);
        return read_file("main", start, hold);
    }
    float read_file(const char* name, float start = 0.0f, float hold = HOLD_NONE) {
        animation_release(animation);
        animation = animation_create(model);
        clip = animation_clip(animation);
        return animation_read_clip(model, clip, dir.path().c_str(), name, start, hold);
    }
    const AnimationKey* key(int frame, int32_t slot) {
        const int32_t track = animation_track(clip, slot);
        return track < 0 ? nullptr : clip->frames[frame].keys[track];
    }
    // A key whose rotation about one axis is as given, from half of the angle.
    void expect_turn(const AnimationKey* turned, double x, double y, double z, double degrees) {
        ASSERT_NE(turned, nullptr);
        const double half = degrees / 360.0 * std::numbers::pi;
        EXPECT_NEAR(turned->x, x * std::sin(half), 1e-6);
        EXPECT_NEAR(turned->y, y * std::sin(half), 1e-6);
        EXPECT_NEAR(turned->z, z * std::sin(half), 1e-6);
        EXPECT_NEAR(turned->w, std::cos(half), 1e-6);
    }
    void expect_key(const AnimationKey* stored, float x, float y, float z, float w) {
        ASSERT_NE(stored, nullptr);
        EXPECT_NEAR(stored->x, x, 1e-6f);
        EXPECT_NEAR(stored->y, y, 1e-6f);
        EXPECT_NEAR(stored->z, z, 1e-6f);
        EXPECT_NEAR(stored->w, w, 1e-6f);
    }

    test::TempDir dir;
    Model* model = nullptr;
    ModelAnimation* animation = nullptr;
    AnimationClip* clip = nullptr;
};

// Records.

TEST_F(Clip, RecordOfAModelCountsItsTracks) {
    EXPECT_EQ(animation->enabled, 1);
    EXPECT_EQ(animation->joint_count, 2);
    EXPECT_EQ(animation->child_count, 1);
    EXPECT_EQ(animation->slot_count, 5);
    EXPECT_EQ(animation->parent_model, nullptr);
    EXPECT_EQ(animation->clip.frame_count, 0);
    EXPECT_EQ(animation_create(nullptr), nullptr);
    EXPECT_EQ(animation_clip(nullptr), nullptr);
    EXPECT_EQ(animation_release(nullptr), 1);
}

TEST_F(Clip, ExampleMovesTheModelAndBendsTheKneeAlone) {
    EXPECT_EQ(read("names translate hip knee\n"
                   "0.0 0 0 0 0 0 0 0 0 0\n"
                   "1.0 0 10 0 0 0 0 x-45 0 0\n"),
              1.0f);
    EXPECT_EQ(std::string(clip->name), dir.file("main"));
    EXPECT_EQ(clip->start_time, 0.0f);
    EXPECT_EQ(clip->end_time, 1.0f);
    EXPECT_EQ(clip->hold_time, HOLD_NONE);
    ASSERT_EQ(clip->frame_count, 2);
    EXPECT_EQ(clip->frames[0].time, 0.0f);
    EXPECT_EQ(clip->frames[1].time, 1.0f);
    EXPECT_EQ(clip->subclip_count, 0);
    EXPECT_EQ(clip->subclips, nullptr);
    expect_key(key(1, TRANSLATE), 0, 10, 0, 1);
    expect_turn(key(1, JOINTS), 1, 0, 0, 0);
    expect_turn(key(1, JOINTS + 1), 1, 0, 0, -45);
    EXPECT_EQ(key(1, ROTATE), nullptr);
    EXPECT_EQ(key(1, 4), nullptr);
}

TEST_F(Clip, StartShiftsTheTimesOfTheFrames) {
    EXPECT_EQ(read("names translate\n0.5 1 0 0\n2.0 2 0 0\n", 10.0f), 12.0f);
    EXPECT_EQ(clip->start_time, 10.0f);
    EXPECT_EQ(clip->frames[0].time, 10.5f);
    EXPECT_EQ(clip->frames[1].time, 12.0f);
}

TEST_F(Clip, HoldTimeBecomesTheEnd) {
    EXPECT_EQ(read("names translate\n0.0 1 0 0\n2.0 2 0 0\n", 0.0f, 0.5f), 0.5f);
    EXPECT_EQ(clip->hold_time, 0.5f);
    EXPECT_EQ(clip->end_time, 0.5f);
}

// Keys.

TEST_F(Clip, RotationsAreStoredAsTheDocumentedQuaternions) {
    read("names rotate\n0.0 10 0 0\n1.0 350 0 0\n2.0 100 0 0\n3.0 260 0 0\n4.0 180 0 0\n5.0 360 0 0\n");
    ASSERT_EQ(clip->frame_count, 6);
    expect_key(key(0, ROTATE), 0.08715574f, 0, 0, 0.9961947f);  // sine and cosine of 5 degrees
    expect_key(key(1, ROTATE), -0.08715574f, 0, 0, 0.9961947f);
    expect_key(key(2, ROTATE), 0.76604444f, 0, 0, 0.64278761f);  // of 50 degrees
    expect_key(key(3, ROTATE), -0.76604444f, 0, 0, 0.64278761f);
    expect_key(key(4, ROTATE), -1, 0, 0, 0);  // a little past the half turn
    EXPECT_GE(key(4, ROTATE)->w, 0.0f);
    EXPECT_LT(key(4, ROTATE)->w, 1e-7f);
    expect_key(key(5, ROTATE), 0, 0, 0, 1);
}

TEST_F(Clip, ThreeTextsAreThreeRotationsInTheOrderWritten) {
    read("names rotate hip\n0.0 0 90 0 90 0 90\n1.0 z90 x90 0 x0 y30 0\n");
    expect_turn(key(0, ROTATE), 0, 1, 0, 90);
    // Quaternion products, with h the sine and cosine of 45 degrees: x then z and z then x differ in the sign of y.
    expect_key(key(0, JOINTS), 0.5f, -0.5f, 0.5f, 0.5f);
    expect_key(key(1, ROTATE), 0.5f, 0.5f, 0.5f, 0.5f);
    expect_turn(key(1, JOINTS), 0, 1, 0, 30);
}

TEST_F(Clip, TextThatIsNoRotationLeavesWhatWasBuiltBeforeIt) {
    EXPECT_EQ(read("names rotate\n1.0 x30 abc y40\n"), 1.0f);
    expect_turn(key(0, ROTATE), 1, 0, 0, 30);
}

TEST_F(Clip, RotationThatIsNotFiniteBecomesNoRotation) {
    const std::string huge(200, '9');
    EXPECT_EQ(read("names rotate hip\n1.0 " + huge + " 0 0 z" + huge + " 0 x30\n"), 1.0f);
    const AnimationKey* turned = key(0, ROTATE);
    EXPECT_EQ(turned->x, 0.0f);
    EXPECT_EQ(turned->y, 0.0f);
    EXPECT_EQ(turned->z, 0.0f);
    EXPECT_EQ(turned->w, 1.0f);
    EXPECT_EQ(key(0, JOINTS)->w, 1.0f);
}

TEST_F(Clip, TranslationTokenThatIsNoNumberIsZero) {
    EXPECT_EQ(read("names translate\n1.0 5 abc 1e5\n"), 1.0f);
    expect_key(key(0, TRANSLATE), 5, 0, 0, 1);
}

TEST_F(Clip, NumbersBeyondAnyFloatAreRead) {
    const std::string huge = std::string(200, '9') + ".0";
    EXPECT_EQ(read("names translate\n" + huge + " " + huge + " 0 0\n"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(key(0, TRANSLATE)->x, std::numeric_limits<float>::infinity());
}

TEST_F(Clip, TrackNamedTwiceTakesTheLaterColumn) {
    EXPECT_EQ(read("names hip hip\n1.0 10 0 0 0 20 0\n"), 1.0f);
    expect_turn(key(0, JOINTS), 0, 1, 0, 20);
}

// Track names.

TEST_F(Clip, NamesAreResolvedInTheOrderOfTheRules) {
    model_add_joint(model, "child2", 0, 0, 0, "world", 0);
    model_add_joint(model, "rotate", 0, 0, 0, "world", 0);
    ASSERT_EQ(read("names translate rotate hip knee child2 child0 lamp\n"
                   "1.0 1 0 0 2 0 0 3 0 0 4 0 0 5 0 0 6 0 0 7 0 0\n"),
              1.0f)
        << error();
    expect_key(key(0, 0), 1, 0, 0, 1);
    expect_turn(key(0, 1), 1, 0, 0, 2);  // the model's own track, not the joint of that name
    expect_turn(key(0, 2), 1, 0, 0, 3);
    expect_turn(key(0, 3), 1, 0, 0, 4);
    expect_turn(key(0, 4), 1, 0, 0, 5);  // a joint, although it looks like a child
    EXPECT_EQ(key(0, 5), nullptr);
    expect_turn(key(0, 6), 1, 0, 0, 7);  // child0 and lamp are the same track
}

TEST_F(Clip, ChildNamesWithoutANumberAreTheFirstChild) {
    for (const char* name : {"child", "children", "childx", "child0", "child-0"}) {
        EXPECT_EQ(read(std::string("names ") + name + "\n1.0 30 0 0\n"), 1.0f) << name;
        expect_turn(key(0, 4), 1, 0, 0, 30);
    }
}

TEST_F(Clip, ChildLinksDeepInTheTreeHaveTracks) {
    Model* child = model_create("lamp.mod", nullptr);
    model_add_child(child, nullptr, "bulb", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    model_find_child(model, "lamp")->model = child;
    model_add_child(model, nullptr, "shade", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    EXPECT_EQ(read("names lamp bulb shade child1\n1.0 10 0 0 20 0 0 30 0 0 40 0 0\n"), 1.0f);
    EXPECT_EQ(animation->slot_count, 7);
    expect_turn(key(0, 4), 1, 0, 0, 10);
    expect_turn(key(0, 5), 1, 0, 0, 40);
    expect_turn(key(0, 6), 1, 0, 0, 30);
}

TEST_F(Clip, SlotEqualToTheCountPassesAndGivesNoValueAndTheNextIsRefused) {
    ASSERT_EQ(animation->slot_count, 5);
    EXPECT_EQ(read("names child0\n1.0 30 0 0\n"), 1.0f);
    EXPECT_NE(key(0, 4), nullptr);
    EXPECT_EQ(read("names child1\n1.0 30 0 0\n"), 1.0f);
    EXPECT_NE(key(0, 5), nullptr);
    Mat4 out{};
    EXPECT_EQ(animation_sample(1.0f, clip, 5, &out), 0);
    EXPECT_EQ(clip_key_count(animation, clip), 0);
    EXPECT_EQ(read("names child2\n1.0 30 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "Slot overrun...");
    EXPECT_EQ(clip->frame_count, 0);
}

TEST_F(Clip, ChildNumbersOutOfRangeAreRefused) {
    for (const char* name : {"child128", "child-1", "child99999999999999999999", "child-99999999999999999999"}) {
        EXPECT_EQ(read(std::string("names ") + name + "\n1.0 30 0 0\n"), 0.0f) << name;
        EXPECT_EQ(error(), "Child offset out of range");
    }
    EXPECT_EQ(read("names child127\n1.0 30 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "Slot overrun...");
}

TEST_F(Clip, UnknownNameIsRefused) {
    EXPECT_EQ(read("names translate elbow\n1.0 0 0 0 0 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "Invalid animation name");
    EXPECT_EQ(read("names Translate\n1.0 0 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "Invalid animation name");
}

TEST_F(Clip, LongNamesAreBounded) {
    for (size_t length : {63u, 64u, 65u, 255u, 900u}) {
        EXPECT_EQ(read("names " + std::string(length, 'k') + "\n1.0 0 0 0\n"), 0.0f);
        EXPECT_EQ(error(), "Invalid animation name");
        EXPECT_EQ(read("names child" + std::string(length, '0') + "\n1.0 30 0 0\n"), 1.0f) << length;
    }
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) { all += text; }
    return all;
}

TEST_F(Clip, TrackLineOf128NamesIsAcceptedAndOf129Refused) {
    dir.write("sub", "names translate\n1.0 1 0 0\n3.0 2 0 0\n");
    EXPECT_EQ(read("names" + repeated(" rotate", 128) + "\n0.0 sub\n"), 3.0f) << error();
    EXPECT_EQ(read("names" + repeated(" rotate", 129) + "\n0.0 sub\n"), 0.0f);
    EXPECT_EQ(error(), "Too many names (memory buffer over-run)");
    EXPECT_EQ(read("names" + repeated(" hip", 250) + "\n0.0 sub\n"), 0.0f);
    EXPECT_EQ(error(), "Too many names (memory buffer over-run)");
}

TEST_F(Clip, TrackLineWithoutNamesLeavesRoomForSubclipsAlone) {
    dir.write("sub", "names translate\n1.0 1 0 0\n");
    EXPECT_EQ(read("names\n0.0 sub\n"), 1.0f);
    EXPECT_EQ(read("names\n1.0 0 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
}

TEST_F(Clip, SecondTrackLineReplacesTheFirst) {
    EXPECT_EQ(read("names translate hip\nnames knee\n1.0 30 0 0\n"), 1.0f);
    EXPECT_EQ(key(0, TRANSLATE), nullptr);
    EXPECT_EQ(key(0, JOINTS), nullptr);
    expect_turn(key(0, JOINTS + 1), 1, 0, 0, 30);
    EXPECT_EQ(read("names translate hip\n1.0 0 0 0 30 0 0\nnames knee\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
}

TEST_F(Clip, CommentsAndBlankLinesStandAnywhere) {
    EXPECT_EQ(read("# first\n\n  \nnames translate\n#1.0 1 1 1\n\n0.0 1 2 3\n# more\n2.0 4 5 6\n#\n"), 2.0f);
    ASSERT_EQ(clip->frame_count, 2);
    expect_key(key(1, TRANSLATE), 4, 5, 6, 1);
}

// Files without a track line.

TEST_F(Clip, WithoutATrackLineColumnsFillTheTracksInOrder) {
    EXPECT_EQ(read("1.0 7 8 9 10 0 0 20 0 0 30 0 0 40 0 0\n"), 1.0f);
    expect_key(key(0, 0), 7, 8, 9, 1);
    for (int slot = 1; slot < 5; ++slot) { expect_turn(key(0, slot), 1, 0, 0, slot * 10); }
}

TEST_F(Clip, WithoutATrackLineColumnsFromTheCountOnAreIgnored) {
    EXPECT_EQ(read("1.0 7 8 9" + repeated(" 10 0 0", 84) + "\n"), 1.0f) << error();  // 85 columns for 5 tracks
    expect_turn(key(0, 4), 1, 0, 0, 10);
    EXPECT_EQ(key(0, 5), nullptr);
}

TEST_F(Clip, WithoutATrackLineMoreTracksThanALineCanHoldAreBounded) {
    for (int i = 0; i < 300; ++i) { model_add_joint(model, numbered("j", i).c_str(), 0, 0, 0, "world", 0); }
    EXPECT_EQ(read("1.0" + repeated(" 1 0 0", 150) + "\n"), 1.0f);  // 451 words, of which a line holds 256
    EXPECT_NE(key(0, 84), nullptr);
    EXPECT_EQ(key(0, 85), nullptr);
}

TEST_F(Clip, WithoutATrackLineTheLastFrameLineSaysHowManyColumns) {
    EXPECT_EQ(read("0.0 1 2 3\n1.0 4 5 6 7 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
    EXPECT_EQ(read("1.0 1 2 3 4\n"), 0.0f);  // one column of three, and a word too many
    EXPECT_EQ(error(), "bad animation data");
}

// Frames that fail.

TEST_F(Clip, FrameLineOfOneTokenTooManyOrTooFewFails) {
    EXPECT_EQ(read("names translate hip\n1.0 0 0 0 0 0 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
    EXPECT_EQ(read("names translate hip\n1.0 0 0 0 0 0\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
}

TEST_F(Clip, ClipThatNeverGetsBeyondZeroHasNoLength) {
    EXPECT_EQ(read("names translate\n0.0 1 2 3\n"), 0.0f);
    EXPECT_EQ(read("names translate\n-5.0 1 2 3\n"), 0.0f);
    EXPECT_EQ(read("names translate\n"), 0.0f);
    EXPECT_EQ(read(""), 0.0f);
    EXPECT_EQ(error(), "(none)");
}

TEST_F(Clip, MissingFileOrArgumentFailsAndLeavesTheClipAsItWas) {
    EXPECT_EQ(read_file("nowhere"), 0.0f);
    EXPECT_EQ(clip->name, nullptr);
    EXPECT_EQ(animation_read_clip(nullptr, clip, ".", "x", 0, HOLD_NONE), 0.0f);
    EXPECT_EQ(animation_read_clip(model, nullptr, ".", "x", 0, HOLD_NONE), 0.0f);
    EXPECT_EQ(animation_read_clip(model, clip, nullptr, "x", 0, HOLD_NONE), 0.0f);
    EXPECT_EQ(animation_read_clip(model, clip, ".", nullptr, 0, HOLD_NONE), 0.0f);
    dir.make_dir("folder");
    EXPECT_EQ(read_file("folder"), 0.0f);
}

TEST_F(Clip, EachReadClearsTheErrorOfTheLast) {
    read("names elbow\n");
    ASSERT_EQ(error(), "Invalid animation name");
    read("names translate\n1.0 0 0 0\n");
    EXPECT_EQ(error(), "(none)");
}

TEST(AnimationError, IsACopyAndMaySetItself) {
    char text[] = "first";
    animation_set_error(text);
    text[0] = 'F';
    EXPECT_STREQ(animation_error(), "first");
    animation_set_error(animation_error());
    EXPECT_STREQ(animation_error(), "first");
    animation_set_error(nullptr);
    EXPECT_EQ(animation_error(), nullptr);
}

// Sub-clips.

constexpr const char* THREE_SECONDS = "names translate\n0.0 0 0 0\n3.0 0 6 0\n";

TEST_F(Clip, SubclipLengthensTheClipInAbsoluteTime) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read("names translate\n0.0 0 0 0\n2.0 0 0 0\n1.0 sub\n"), 4.0f);
    EXPECT_EQ(clip->end_time, 4.0f);
    ASSERT_EQ(clip->subclip_count, 1);
    EXPECT_EQ(clip->subclips[0].start_time, 1.0f);
    EXPECT_EQ(clip->subclips[0].end_time, 4.0f);
    EXPECT_EQ(clip->subclips[0].hold_time, HOLD_NONE);
    EXPECT_EQ(clip->subclips[0].frames[1].time, 4.0f);
    EXPECT_EQ(std::string(clip->subclips[0].name), dir.file("sub"));
}

TEST_F(Clip, SubclipWithAHoldTimeDoesNotLengthenTheClip) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read("names translate\n0.0 0 0 0\n2.0 0 0 0\n0.0 sub 2.5\n"), 2.0f);
    EXPECT_EQ(clip->subclips[0].hold_time, 2.5f);
    EXPECT_EQ(clip->subclips[0].end_time, 2.5f);
    Mat4 out{};
    ASSERT_EQ(animation_sample(0.5f, clip, TRANSLATE, &out), 1);
    EXPECT_FLOAT_EQ(out.m[7], 5.0f);  // 2.5 of 3 seconds to 6
}

TEST_F(Clip, StartOfASubclipIsNotShiftedByTheClipAroundIt) {
    dir.write("inner", THREE_SECONDS);
    dir.write("outer", "names translate\n0.0 0 0 0\n1.0 0 0 0\n2.0 inner\n");
    EXPECT_EQ(read("names translate\n0.0 0 0 0\n10.0 outer\n"), 11.0f);
    EXPECT_EQ(clip->subclips[0].subclips[0].start_time, 2.0f);
    EXPECT_EQ(clip->subclips[0].subclips[0].end_time, 5.0f);
}

TEST_F(Clip, FramesBehindASubclipLineAreRead) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n1.0 sub\n5.0 2 2 2\n"), 5.0f);
    expect_key(key(1, TRANSLATE), 2, 2, 2, 1);
}

TEST_F(Clip, ClipOfNothingButSubclipsHasTheirLength) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read("0.0 sub\n4.0 sub\n"), 7.0f);
    EXPECT_EQ(clip->frames, nullptr);
    EXPECT_EQ(clip->subclip_count, 2);
}

TEST_F(Clip, MissingSubclipIsPassedOver) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n2.0 2 2 2\n0.0 nowhere\n0.0 sub\n"), 3.0f);
    EXPECT_EQ(clip->subclips[0].name, nullptr);
    EXPECT_EQ(std::string(animation_clip_file(&clip->subclips[0])), dir.file("nowhere")) << "for whoever looks for it";
    EXPECT_EQ(std::string(animation_clip_file(&clip->subclips[1])), dir.file("sub"));
    EXPECT_EQ(clip->subclips[1].unread_path, nullptr);
    EXPECT_EQ(clip->subclips[1].end_time, 3.0f);
    Mat4 out{};
    EXPECT_EQ(animation_sample(2.0f, clip, TRANSLATE, &out), 1);
    EXPECT_FLOAT_EQ(out.m[7], 6.0f);
}

TEST_F(Clip, SubclipLineOfOneTokenHasNoFileAndIsPassedOver) {
    EXPECT_EQ(read("names translate\n1.0\n2.0 2 2 2\n"), 2.0f);
    EXPECT_EQ(clip->subclip_count, 1);
    EXPECT_EQ(clip->subclips[0].name, nullptr);
    EXPECT_EQ(animation_clip_file(&clip->subclips[0]), nullptr);
    EXPECT_EQ(animation_clip_file(nullptr), nullptr);
}

TEST_F(Clip, AClipThatCannotBeReadKeepsItsPathAndNothingElse) {
    EXPECT_EQ(read_file("nowhere"), 0.0f);
    EXPECT_EQ(std::string(clip->unread_path), dir.file("nowhere"));
    EXPECT_EQ(clip->name, nullptr);
    dir.write("bad", "names elbow\n5.0 1 1 1\n");
    EXPECT_EQ(read("1.0 1 1 1\n0.0 bad\n0.0 bad\n0.0 main\n"), 1.0f);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(std::string(animation_clip_file(&clip->subclips[i])), dir.file("bad"));
        EXPECT_EQ(clip->subclips[i].frame_count, 0);
    }
    EXPECT_EQ(std::string(animation_clip_file(&clip->subclips[2])), dir.file("main")) << "it is inside itself";
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
// Otherwise a few megabytes of files, a model and a clip of the same size, ask for more than a machine has.
TEST_F(Clip, KeysTakeAsMuchAsTheFileHasColumnsForWhateverTheModelHas) {
    constexpr int MANY_JOINTS = 20000;
    constexpr int MANY_FRAMES = 2000;
    constexpr size_t BYTES_A_FRAME = 256;  // a table of all joints would be 160,000
    for (int i = 0; i < MANY_JOINTS; ++i) {
        model_add_joint(model, ("j" + std::to_string(i)).c_str(), 0, 0, 0, "world", 0);
    }
    const std::string last = "j" + std::to_string(MANY_JOINTS - 1);
    std::string text = "names " + last + "\n";
    for (int i = 0; i < MANY_FRAMES; ++i) { text += std::to_string(i) + ".0 0 0 0\n"; }
    const struct mallinfo2 before = mallinfo2();
    EXPECT_EQ(read(text), static_cast<float>(MANY_FRAMES - 1));
    const struct mallinfo2 after = mallinfo2();
    EXPECT_LT(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd, MANY_FRAMES * BYTES_A_FRAME);
    EXPECT_NE(key(0, model_joint_index(model, last.c_str()) + 2), nullptr);
}
#endif

TEST_F(Clip, SubclipThatFailsHalfWayKeepsWhatItHasAndTheRestHasNoValue) {
    dir.write("sub", "names hip\n0.0 10 0 0\n1.0 20 0 0\n2.0 30 0 0 0\n3.0 40 0 0\n4.0 50 0 0\n");
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n9.0 2 2 2\n0.0 sub\n"), 9.0f);
    ASSERT_EQ(clip->subclip_count, 1);
    AnimationClip* sub = &clip->subclips[0];
    EXPECT_EQ(sub->frame_count, 5);
    EXPECT_NE(sub->frames[1].keys, nullptr);
    EXPECT_EQ(sub->frames[3].keys, nullptr);
    Mat4 out{};
    EXPECT_EQ(animation_sample(1.0f, clip, JOINTS, &out), 1);
    EXPECT_NEAR(out.m[9], std::sin(20.0 / 180.0 * std::numbers::pi), 1e-5);
    EXPECT_EQ(animation_sample(2.5f, clip, JOINTS, &out), 0);
    EXPECT_EQ(animation_sample(4.0f, clip, JOINTS, &out), 0);
    EXPECT_EQ(animation_sample(2.5f, clip, TRANSLATE, &out), 1);
}

TEST_F(Clip, SubclipWithABadNameIsPassedOver) {
    dir.write("sub", "names elbow\n5.0 1 1 1\n");
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n2.0 2 2 2\n0.0 sub\n"), 2.0f);
    EXPECT_EQ(clip->subclips[0].name, nullptr);
}

TEST_F(Clip, SubclipThatNamesItselfIsPassedOver) {
    dir.make_dir("here");
    std::vector<std::string> names = {"main", "./main", "../here/main"};
    std::error_code no_links;
    std::filesystem::create_symlink("main", dir.file("here/link"), no_links);
    if (!no_links) { names.push_back("link"); }
    for (const std::string& name : names) {
        dir.write("here/main", "names translate\n0.0 1 1 1\n2.0 2 2 2\n5.0 " + name + "\n");
        animation_release(animation);
        animation = animation_create(model);
        clip = animation_clip(animation);
        EXPECT_EQ(animation_read_clip(model, clip, dir.file("here").c_str(), "main", 0, HOLD_NONE), 2.0f) << name;
        ASSERT_EQ(clip->subclip_count, 1);
        EXPECT_EQ(clip->subclips[0].name, nullptr) << name;
    }
}

TEST_F(Clip, SubclipsThatNameEachOtherArePassedOverAtAnyDepth) {
    dir.write("b", "names translate\n0.0 0 0 0\n3.0 0 0 0\n0.0 c\n");
    dir.write("c", "names translate\n0.0 0 0 0\n4.0 0 0 0\n20.0 main\n30.0 b\n");
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n2.0 2 2 2\n0.0 b\n"), 4.0f);
    const AnimationClip& c = clip->subclips[0].subclips[0];
    ASSERT_EQ(c.subclip_count, 2);
    EXPECT_EQ(c.subclips[0].name, nullptr);
    EXPECT_EQ(c.subclips[1].name, nullptr);
}

TEST_F(Clip, TheSameFileMayBePulledInTwiceSideBySide) {
    dir.write("sub", THREE_SECONDS);
    dir.write("both", "0.0 sub\n1.0 sub\n");
    EXPECT_EQ(read("0.0 both\n2.0 sub\n"), 5.0f);
    EXPECT_NE(clip->subclips[0].subclips[1].name, nullptr);
    EXPECT_NE(clip->subclips[1].name, nullptr);
}

TEST_F(Clip, FiveOpenFilesBoundTheDepth) {
    for (int i = 1; i <= 5; ++i) {
        const std::string end = numbered("", 10 + i);
        const std::string next = numbered("c", i + 1);
        dir.write(numbered("c", i), "names translate\n0.0 0 0 0\n" + end + ".0 0 0 0\n0.0 " + next + "\n");
    }
    // The fifth file down would be the sixth open one.
    EXPECT_EQ(read("names translate\n0.0 1 1 1\n2.0 2 2 2\n0.0 c1\n"), 14.0f);
    const AnimationClip* deepest = clip;
    for (int i = 1; i <= 4; ++i) { deepest = &deepest->subclips[0]; }
    EXPECT_EQ(deepest->end_time, 14.0f);
    EXPECT_EQ(deepest->subclips[0].name, nullptr);
}

TEST_F(Clip, TreeOf4096SubclipsIsReadAndOf4097Fails) {
    dir.write("sub", "1.0 1 1 1\n");
    EXPECT_EQ(read(repeated("0.0 sub\n", 4096)), 1.0f);
    EXPECT_EQ(clip->subclip_count, 4096);
    EXPECT_EQ(read(repeated("0.0 sub\n", 4097)), 0.0f);
}

TEST_F(Clip, SubclipsAreCountedInTheWholeTree) {
    dir.write("sub", "1.0 1 1 1\n");
    dir.write("half", repeated("0.0 sub\n", 2047));
    EXPECT_EQ(read("names translate\n0.0 half\n0.0 half\n5.0 1 1 1\n"), 5.0f);
    dir.write("half", repeated("0.0 sub\n", 2048));
    EXPECT_EQ(read("names translate\n0.0 half\n0.0 half\n5.0 1 1 1\n"), 0.0f);
}

TEST_F(Clip, TreeThatMultipliesFailsSoon) {
    // Four levels of 60 would be thirteen million clips.
    for (int i = 1; i <= 4; ++i) {
        const std::string next = numbered("c", i + 1);
        dir.write(numbered("c", i), repeated("0.0 " + next + "\n", 60) + "1.0 1 1 1\n");
    }
    EXPECT_EQ(read("0.0 c1\n2.0 1 1 1\n"), 0.0f);
}

// A file that is pulled in more than once.

TEST_F(Clip, SubclipsOfOneFileShareItsKeysAndHaveTheirOwnTimes) {
    dir.write("sub", "names hip\n0.0 10 0 0\n1.5 20 0 0\n");
    EXPECT_EQ(read("1.0 sub\n0.25 ./sub\n2.0 sub 2.5\n"), 2.5f);
    ASSERT_EQ(clip->subclip_count, 3);
    const AnimationClip* first = &clip->subclips[0];
    const AnimationClip* second = &clip->subclips[1];
    EXPECT_EQ(first->frames[1].keys, second->frames[1].keys);
    EXPECT_EQ(first->frames[1].keys, clip->subclips[2].frames[1].keys);
    EXPECT_EQ(first->frames[1].time, 2.5f);
    EXPECT_EQ(second->frames[0].time, 0.25f);
    EXPECT_EQ(second->frames[1].time, 1.75f);
    EXPECT_EQ(second->frames[1].latest, 1.75f);
    EXPECT_EQ(second->end_time, 1.75f);
    EXPECT_EQ(second->track_count, 1);
    EXPECT_EQ(std::string(second->name), dir.path() + PATH_SEPARATOR + "./sub");
    EXPECT_EQ(clip->subclips[2].hold_time, 2.5f);
    Mat4 out{};
    EXPECT_EQ(animation_sample(1.75f, &clip->subclips[1], JOINTS, &out), 1);
    EXPECT_NEAR(out.m[9], std::sin(20.0 / 180.0 * std::numbers::pi), 1e-5);
}

TEST_F(Clip, SharedFileThatFailsHalfWayFailsAlikeEachTime) {
    dir.write("leaf", "1.0 1 1 1\n");
    dir.write("sub", "names hip\n0.0 10 0 0\n7.0 leaf\n2.0 30 0 0 0\n3.0 leaf\n");
    EXPECT_EQ(read("names translate\n9.0 1 1 1\n0.0 sub\n1.0 sub\n"), 9.0f);
    EXPECT_EQ(error(), "bad animation data");
    for (const int i : {0, 1}) {
        const AnimationClip& sub = clip->subclips[i];
        EXPECT_EQ(sub.frame_count, 2);
        EXPECT_NE(sub.frames[0].keys, nullptr);
        EXPECT_EQ(sub.frames[1].keys, nullptr);
        EXPECT_EQ(sub.end_time, 2.0f + static_cast<float>(i));
        ASSERT_EQ(sub.subclip_count, 2);
        EXPECT_EQ(sub.subclips[0].end_time, 8.0f);
        EXPECT_EQ(sub.subclips[1].name, nullptr);
    }
}

TEST_F(Clip, SharedFileWithABadNameFailsAlikeEachTime) {
    dir.write("sub", "names nobody\n1.0 1 1 1\n");
    EXPECT_EQ(read("names translate\n2.0 1 1 1\n0.0 sub\n1.0 sub\n"), 2.0f);
    EXPECT_EQ(error(), "Invalid animation name");
    EXPECT_EQ(clip->subclips[0].name, nullptr);
    EXPECT_EQ(clip->subclips[1].name, nullptr);
}

// What a shared file pulls in depends on where it stands.
TEST_F(Clip, SharedFileIsAsDeepAsItsPlaceAllows) {
    dir.write("leaf", "1.0 1 1 1\n");
    dir.write("pair", "0.0 leaf\n1.0 1 1 1\n");
    dir.write("c3", "0.0 pair\n1.0 1 1 1\n");
    dir.write("c2", "0.0 c3\n1.0 1 1 1\n");
    dir.write("c1", "0.0 c2\n1.0 1 1 1\n");
    const auto pair_below_c1 = [](const AnimationClip& c1) -> const AnimationClip& {
        return c1.subclips[0].subclips[0].subclips[0];
    };
    for (const bool deep_first : {true, false}) {
        EXPECT_EQ(read(deep_first ? "0.0 c1\n0.0 pair\n2.0 1 1 1\n" : "0.0 pair\n0.0 c1\n2.0 1 1 1\n"), 2.0f);
        const AnimationClip& deep = pair_below_c1(clip->subclips[deep_first ? 0 : 1]);
        const AnimationClip& shallow = clip->subclips[deep_first ? 1 : 0];
        EXPECT_EQ(deep.end_time, 1.0f);
        EXPECT_EQ(deep.subclips[0].name, nullptr) << "the sixth open file";
        EXPECT_NE(shallow.subclips[0].name, nullptr);
        EXPECT_EQ(shallow.subclips[0].end_time, 1.0f);
    }
}

TEST_F(Clip, SubclipsOfSharedFilesAreCountedInTheWholeTree) {
    dir.write("sub", "1.0 1 1 1\n");
    dir.write("third", repeated("0.0 sub\n", 1364));
    EXPECT_EQ(read("0.0 third\n0.0 third\n0.0 third\n5.0 1 1 1\n"), 5.0f);
    dir.write("third", repeated("0.0 sub\n", 1365));
    EXPECT_EQ(read("0.0 third\n0.0 third\n0.0 third\n5.0 1 1 1\n"), 0.0f);
    EXPECT_EQ(error(), "Too many sub-clips");
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
TEST_F(Clip, KeysOfOneFileAreHeldOnceHoweverOftenItIsPulledIn) {
    constexpr int FRAMES = 1000;
    constexpr size_t COLUMNS = 80;
    std::string sub = "names" + repeated(" hip", COLUMNS) + "\n";
    for (int i = 0; i < FRAMES; ++i) { sub += std::to_string(i) + repeated(" 0 0 0", COLUMNS) + "\n"; }
    dir.write("sub", sub);
    const auto bytes_of = [&](int subclips) {
        animation_release(animation);
        animation = animation_create(model);
        clip = animation_clip(animation);
        dir.write("main", repeated("0.0 sub\n", subclips));
        const struct mallinfo2 before = mallinfo2();
        EXPECT_EQ(animation_read_clip(model, clip, dir.path().c_str(), "main", 0.0f, HOLD_NONE), FRAMES - 1.0f);
        const struct mallinfo2 after = mallinfo2();
        return after.uordblks + after.hblkhd - before.uordblks - before.hblkhd;
    };
    const size_t once = bytes_of(1);
    EXPECT_GT(once, FRAMES * COLUMNS * sizeof(AnimationKey));
    EXPECT_LT(bytes_of(200) - once, 199 * (FRAMES * sizeof(AnimationFrame) + 1024));
}
#endif

#ifdef __linux__
TEST_F(Clip, FileThatIsPulledInOftenIsReadOnce) {
    growth = {dir.write("sub", "0.0 1 1 1\n1.0 2 2 2\n"), "", 0};
    EXPECT_EQ(read(repeated("0.0 sub\n", 50)), 1.0f);
    EXPECT_EQ(growth.opens, 2) << "once for each pass";
    growth = {};
}
#endif

#ifdef __linux__
class GrowingClip : public Clip {
protected:
    float read_growing(const std::string& text, const std::string& added) {
        dir.write("main", text);
        growth = {std::filesystem::canonical(dir.file("main")).string(), added, 0};
        const float length = read_file("main");
        EXPECT_EQ(growth.opens, 2);
        growth = {};
        return length;
    }
};

TEST_F(GrowingClip, MoreFramesInTheSecondPassFail) {
    EXPECT_EQ(read_growing("names translate\n0.0 1 1 1\n2.0 2 2 2\n", "3.0 3 3 3\n"), 0.0f);
    EXPECT_EQ(error(), "bad animation data");
    EXPECT_EQ(clip->frame_count, 2);
    expect_key(key(1, TRANSLATE), 2, 2, 2, 1);
}

TEST_F(GrowingClip, MoreSubclipsInTheSecondPassFail) {
    dir.write("sub", THREE_SECONDS);
    EXPECT_EQ(read_growing("names translate\n0.0 sub\n2.0 2 2 2\n", "0.0 sub\n"), 0.0f);
    EXPECT_EQ(clip->subclip_count, 1);
}

TEST_F(GrowingClip, ATrackLineInTheSecondPassIsPassedOver) {
    EXPECT_EQ(read_growing("names translate\n2.0 2 2 2\n", "names translate hip knee\n"), 2.0f);
}
#endif

// Scene lists.

class SceneList : public ::testing::Test {
protected:
    void SetUp() override {
        dir.write("models/body.mod", "joint shoulder 1 2 3 world 0\njoint hand 4 5 6 shoulder 0\n");
        dir.write("models/arm.mod", "# nothing\n");
        dir.write("models/leg.mod", "# nothing\n");
        dir.write("clips/walk", "names translate\n0.0 0 0 0\n2.0 1 0 0\n");
        dir.write("clips/wave", "names translate\n0.0 0 0 0\n5.0 1 0 0\n");
        models = dir.file("models");
        clips = dir.file("clips");
    }
    void TearDown() override { release(); }
    void release() {
        if (set == nullptr) { return; }
        for (int32_t i = 0; i < set->count; ++i) {
            animation_release(set->animations[i]);
            model_release(set->models[i]);
        }
        delete set;
        set = nullptr;
    }
    AnimationSet* load(const std::string& text) {
        release();
        dir.write("scene", text);
        set = animation_load(dir.file("scene").c_str());
        return set;
    }
    std::string row(const std::string& model, const std::string& clip, const std::string& rest) {
        return models + " " + model + " " + clips + " " + clip + " " + rest + "\n";
    }
    void expect_failure(const std::string& list, const std::string& text) {
        EXPECT_EQ(load(list), nullptr);
        EXPECT_EQ(error(), text);
    }

    test::TempDir dir;
    std::string models;
    std::string clips;
    AnimationSet* set = nullptr;
};

TEST_F(SceneList, ExampleHangsTheArmOnTheShoulder) {
    ASSERT_NE(load(row("body.mod", "walk", "world") + row("arm.mod", "wave", "body.mod shoulder")), nullptr) << error();
    EXPECT_EQ(set->count, 2);
    EXPECT_EQ(set->duration, 5.0f);
    EXPECT_STREQ(model_name(set->models[0]), "body");
    EXPECT_STREQ(model_name(set->models[1]), "arm");
    EXPECT_EQ(std::string(set->animations[0]->clip.name), dir.file("clips/walk"));
    EXPECT_EQ(set->animations[0]->parent_model, nullptr);
    const ModelAnimation* arm = set->animations[1];
    EXPECT_EQ(arm->parent_model, set->models[0]);
    EXPECT_EQ(arm->parent_animation, set->animations[0]);
    EXPECT_EQ(arm->parent_joint, model_find_joint(set->models[0], "shoulder"));
    EXPECT_EQ(arm->parent_slot, 2);
    EXPECT_EQ(error(), "(none)");
}

TEST_F(SceneList, MissingListSaysSo) {
    EXPECT_EQ(animation_load("no such list"), nullptr);
    EXPECT_EQ(error(), "file does not exist: no such list");
    EXPECT_EQ(animation_load(nullptr), nullptr);
    EXPECT_EQ(error(), "file does not exist: ");
}

TEST_F(SceneList, TextsOfAnyLengthAreWhole) {
    const std::string name(3000, 'n');
    EXPECT_EQ(animation_load(name.c_str()), nullptr);
    EXPECT_EQ(error(), "file does not exist: " + name);
}

TEST_F(SceneList, EmptyListIsAnEmptyScene) {
    ASSERT_NE(load("# nothing\n\nword\n"), nullptr);
    EXPECT_EQ(set->count, 0);
    EXPECT_EQ(set->duration, 0.0f);
}

TEST_F(SceneList, RowsBeyondThe24thAreIgnored) {
    std::string list;
    for (int i = 0; i < 24; ++i) { list += row("arm.mod", "walk", "world"); }
    ASSERT_NE(load(list + row("nowhere.mod", "walk", "world")), nullptr);
    EXPECT_EQ(set->count, 24);
    EXPECT_EQ(error(), "(none)");
}

TEST_F(SceneList, JointOfARowOnWorldIsNeverLookedAt) {
    ASSERT_NE(load(row("body.mod", "walk", "world nobody")), nullptr);
    EXPECT_EQ(set->animations[0]->parent_joint, nullptr);
}

TEST_F(SceneList, RowThatNamesItselfFindsNoParent) {
    expect_failure(row("body.mod", "walk", "body.mod"), "could not find parent: body.mod");
}

TEST_F(SceneList, UnknownParentFails) {
    expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "walk", "leg.mod"),
                   "could not find parent: leg.mod");
}

TEST_F(SceneList, ParentIsComparedExactly) {
    expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "walk", "Body.mod"),
                   "could not find parent: Body.mod");
    expect_failure(row("body.mod", "walk", "World"), "could not find parent: World");
}

TEST_F(SceneList, UnknownParentJointFails) {
    expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "walk", "body.mod knee"),
                   "could not find parent joint: knee");
    expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "walk", "body.mod world"),
                   "could not find parent joint: world");
}

TEST_F(SceneList, OfTwoRowsOfOneModelTheLaterIsTheParent) {
    ASSERT_NE(load(row("body.mod", "walk", "world") + row("body.mod", "wave", "world") +
                   row("arm.mod", "walk", "body.mod hand")),
              nullptr);
    EXPECT_EQ(set->animations[2]->parent_model, set->models[1]);
    EXPECT_EQ(set->animations[2]->parent_animation, set->animations[1]);
    EXPECT_EQ(set->animations[2]->parent_joint, model_find_joint(set->models[1], "hand"));
    EXPECT_EQ(set->animations[2]->parent_slot, 3);
}

TEST_F(SceneList, RowMayHangOnAnotherRowOfItsOwnModel) {
    ASSERT_NE(load(row("body.mod", "walk", "world") + row("body.mod", "wave", "body.mod hand")), nullptr);
    EXPECT_EQ(set->animations[1]->parent_model, set->models[0]);
    EXPECT_EQ(set->animations[1]->parent_animation, set->animations[0]);
}

TEST_F(SceneList, ParentMayStandBelowItsChild) {
    ASSERT_NE(load(row("arm.mod", "walk", "body.mod shoulder") + row("body.mod", "wave", "world")), nullptr);
    EXPECT_EQ(set->animations[0]->parent_model, set->models[1]);
}

TEST_F(SceneList, RowsThatHangOnEachOtherInACircleFail) {
    expect_failure(row("body.mod", "walk", "arm.mod") + row("arm.mod", "walk", "body.mod"),
                   "could not find parent: arm.mod");
    // The first row hangs on the circle and is no part of it.
    expect_failure(
        row("leg.mod", "walk", "body.mod") + row("body.mod", "walk", "arm.mod") + row("arm.mod", "walk", "body.mod"),
        "could not find parent: arm.mod");
}

TEST_F(SceneList, ChainOfRowsIsNoCircle) {
    ASSERT_NE(
        load(row("leg.mod", "walk", "arm.mod") + row("arm.mod", "walk", "body.mod") + row("body.mod", "walk", "world")),
        nullptr);
    EXPECT_EQ(set->count, 3);
}

TEST_F(SceneList, RowsOfTwoToFourTokensStandOnWorld) {
    ASSERT_NE(load(models + " body.mod\n" + models + " arm.mod " + clips + "\n" + row("leg.mod", "walk", "")), nullptr)
        << error();
    ASSERT_EQ(set->count, 3);
    EXPECT_EQ(set->animations[0], nullptr);
    EXPECT_EQ(set->animations[1], nullptr);
    ASSERT_NE(set->animations[2], nullptr);
    EXPECT_EQ(set->animations[2]->parent_model, nullptr);
    EXPECT_EQ(set->duration, 2.0f);
}

TEST_F(SceneList, RowMayHangOnAStillModel) {
    ASSERT_NE(load(models + " body.mod\n" + row("arm.mod", "walk", "body.mod hand")), nullptr);
    EXPECT_EQ(set->animations[1]->parent_model, set->models[0]);
    EXPECT_EQ(set->animations[1]->parent_animation, nullptr);
}

TEST_F(SceneList, MissingClipIsNamedWithABackslashWhateverSeparatesHere) {
    expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "run", "world"),
                   "could not find animation file: " + clips + "\\run");
}

TEST_F(SceneList, MissingClipInTheCurrentDirectoryIsNamedAlone) {
    expect_failure(models + " body.mod . no-such-clip world\n", "could not find animation file: no-such-clip");
}

TEST_F(SceneList, BadClipIsReportedAsAMissingOne) {
    const std::string missing = "could not find animation file: " + clips + "\\bad";
    for (const char* text : {"names translate\n1.0 0 0 0 0\n", "names elbow\n1.0 0 0 0\n", "names child77\n1.0 0 0 0\n",
                             "names translate\n0.0 0 0 0\n", "", "0.0 bad\n"}) {
        dir.write("clips/bad", text);
        expect_failure(row("body.mod", "walk", "world") + row("arm.mod", "bad", "world"), missing);
    }
    dir.write("clips/bad", "1.0 1 1 1\n" + repeated("0.0 walk\n", 4097));
    expect_failure(row("arm.mod", "bad", "world"), missing);
}

TEST_F(SceneList, MissingOrBadModelGivesItsLoadError) {
    EXPECT_EQ(load(row("body.mod", "walk", "world") + row("nowhere.mod", "walk", "world")), nullptr);
    EXPECT_NE(error().find("nowhere.mod"), std::string::npos) << error();
    dir.write("models/bad.mod", "joint a 0 0 0 a 0\n");
    EXPECT_EQ(load(row("bad.mod", "walk", "world")), nullptr);
    EXPECT_EQ(error().rfind("Bad joint parent (file: ", 0), 0u) << error();
}

TEST_F(SceneList, BackslashSeparatesInARowToo) {
    std::string list = row("body.mod", "walk", "world");
    std::replace(list.begin(), list.end(), '/', '\\');
    ASSERT_NE(load(list), nullptr) << error();
    EXPECT_EQ(set->count, 1);
}

TEST_F(SceneList, QuotedTokensMayHoldBlanks) {
    dir.write("my models/body.mod", "# nothing\n");
    const std::string directory = dir.file("my models");
    ASSERT_NE(load("\"" + directory + "\" body.mod " + clips + " walk world\n"), nullptr) << error();
    EXPECT_EQ(set->count, 1);
}

TEST_F(SceneList, RelativeDirectoriesOfRowsBeginAtTheBase) {
    const std::string deep = test::directory_of_length(dir, test::LONG_DIRECTORY);
    dir.write(deep + "models/body.mod", "joint hand 0 0 0 world 0\nchild lamp 0 0 0 1 1 1 0 0 0\n");
    dir.write(deep + "models/lamp.mod", "");
    dir.write(deep + "clips/main", "names hand child0\n0.0 0 0 0 0 0 0\n0.0 sub\n0.0 nowhere\n");
    dir.write(deep + "clips/sub", "4.0 1 1 1\n");
    dir.write(deep + "own", "3.0 1 1 1\n");
    const std::string list = "models body.mod clips main world\nmodels lamp.mod . own body.mod hand\n";
    const std::string base = dir.file(deep);
    const std::string file = dir.write(deep + "scene", list);
    set = animation_load(file.c_str(), {base.c_str(), true});
    ASSERT_NE(set, nullptr) << error();
    EXPECT_EQ(set->duration, 4.0f);
    const AnimationClip* clip = &set->animations[0]->clip;
    EXPECT_EQ(model_directory(set->models[0]), dir.file(deep + "models") + PATH_SEPARATOR);
    EXPECT_EQ(model_count_children(set->models[0]), 1);
    EXPECT_EQ(std::string(clip->name), dir.file(deep + "clips/main"));
    EXPECT_EQ(std::string(clip->subclips[0].name), dir.file(deep + "clips/sub"));
    EXPECT_EQ(std::string(animation_clip_file(&clip->subclips[1])), dir.file(deep + "clips/nowhere"));
    EXPECT_EQ(std::string(set->animations[1]->clip.name), base + "." + PATH_SEPARATOR + "own");
    EXPECT_EQ(set->animations[1]->parent_model, set->models[0]) << "parents are named as the rows name them";
    release();
    EXPECT_EQ(animation_load(file.c_str(), {base.c_str(), false}), nullptr);
    EXPECT_EQ(error().substr(0, 15), "path too long: ");
    EXPECT_EQ(animation_load(file.c_str()), nullptr);
    EXPECT_EQ(error(), "could not find: " + test::native_path("models/body.mod"));
}

TEST_F(SceneList, AbsoluteDirectoriesOfRowsStandAsTheyAreWhateverTheBase) {
    dir.write("scene", row("body.mod", "walk", "world"));
    set = animation_load(dir.file("scene").c_str(), {"no such base", true});
    ASSERT_NE(set, nullptr) << error();
    EXPECT_EQ(std::string(set->animations[0]->clip.name), dir.file("clips/walk"));
}

TEST_F(SceneList, LengthOfTheSceneIsThatOfItsLongestClip) {
    ASSERT_NE(load(row("body.mod", "wave", "world") + row("arm.mod", "walk", "world")), nullptr);
    EXPECT_EQ(set->duration, 5.0f);
}

// 20,000 frames in each of 500 clips are ten of the sixteen million keys that a scene may have.
TEST_F(SceneList, RowsTogetherHaveALimitOfKeys) {
    std::string sub;
    for (int i = 0; i < 20000; ++i) { sub += std::to_string(i) + " 1 1 1\n"; }
    dir.write("clips/sub", sub);
    std::string many;
    for (int i = 0; i < 500; ++i) { many += "0.0 sub\n"; }
    dir.write("clips/many", many);
    EXPECT_NE(load(row("body.mod", "many", "world")), nullptr) << error();
    expect_failure(row("body.mod", "many", "world") + row("arm.mod", "many", "world"),
                   "too many keys in the animation: many");
    EXPECT_NE(load(row("body.mod", "walk", "world")), nullptr) << error();
}

TEST_F(SceneList, SubclipsComeFromTheClipDirectoryOfTheRow) {
    dir.write("clips/main", "names translate\n0.0 0 0 0\n1.0 walk\n");
    ASSERT_NE(load(row("body.mod", "main", "world")), nullptr);
    EXPECT_EQ(set->duration, 3.0f);
}

}  // namespace
}  // namespace pelt
