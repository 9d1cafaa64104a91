// Joints, blend groups and child links.
#include "scene/skeleton.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/load_error.h"
#include "scene/model.h"

namespace pelt {
namespace {

class SkeletonTest : public ::testing::Test {
protected:
    SkeletonTest() : model(model_create("made.mod", nullptr)) { load_error_set(nullptr); }
    ~SkeletonTest() override { model_release(model); }

    std::string error() const { return load_error_get() != nullptr ? load_error_get() : ""; }

    ChildLink* link(Model* parent, Model* child, const char* name) {
        return model_add_child(parent, child, name, 1, 2, 3, 4, 5, 6, "7", "x8", "9");
    }

    Model* model;
};

TEST_F(SkeletonTest, JointStoresWhatIsGiven) {
    ASSERT_EQ(model_add_joint(model, "hip", 1, -2, 3, "world", 4), 1);
    ASSERT_EQ(model_add_joint(model, "knee", 5, 6, 7, "hip", 8), 1);
    const Joint* hip = model_find_joint(model, "hip");
    const Joint* knee = model_find_joint(model, "knee");
    ASSERT_NE(hip, nullptr);
    ASSERT_NE(knee, nullptr);
    EXPECT_STREQ(hip->name, "hip");
    EXPECT_STREQ(hip->parent_name, "world");
    EXPECT_EQ(hip->position.y, -2.0f);
    EXPECT_EQ(hip->point_count, 4);
    EXPECT_EQ(hip->state_index, -1);
    EXPECT_EQ(hip->parent_index, -1);
    EXPECT_EQ(hip->id + 1, knee->id);
    EXPECT_EQ(model_count_joints(model), 2);
}

TEST_F(SkeletonTest, ParentIndexIsItsOwnRankUntilTheReaderCorrectsIt) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 0);
    ASSERT_EQ(model_add_joint(model, "knee", 0, 0, 0, "hip", 0), 1);
    EXPECT_EQ(model_find_joint(model, "knee")->parent_index, 1);
}

TEST_F(SkeletonTest, JointWithAnUnknownParentIsAccepted) {
    EXPECT_EQ(model_add_joint(model, "knee", 0, 0, 0, "nobody", 0), 1);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(SkeletonTest, JointWithoutAParentTextStandsByItself) {
    EXPECT_EQ(model_add_joint(model, "hip", 0, 0, 0, nullptr, 0), 1);
    EXPECT_STREQ(model_find_joint(model, "hip")->parent_name, "");
    EXPECT_EQ(model_find_joint(model, "hip")->parent_index, -1);
}

TEST_F(SkeletonTest, JointNameTakenFails) {
    model_add_joint(model, "hip", 1, 1, 1, "world", 0);
    EXPECT_EQ(model_add_joint(model, "hip", 2, 2, 2, "world", 0), 0);
    EXPECT_EQ(error(), "duplicate joint name not allowed");
    EXPECT_EQ(model_find_joint(model, "hip")->position.x, 1.0f);
}

TEST_F(SkeletonTest, JointThatIsItsOwnParentFails) {
    EXPECT_EQ(model_add_joint(model, "hip", 0, 0, 0, "hip", 0), 0);
    EXPECT_EQ(error(), "Bad joint parent");
    EXPECT_EQ(model_count_joints(model), 0);
}

TEST_F(SkeletonTest, WorldIsNoJointEvenIfOneOfThatNameWasAdded) {
    EXPECT_EQ(model_add_joint(model, "world", 1, 0, 0, "hip", 0), 1);
    EXPECT_EQ(model_find_joint(model, "world"), nullptr);
    EXPECT_EQ(model_count_joints(model), 1);
}

TEST_F(SkeletonTest, ASecondJointCalledWorldIsWrittenOverTheFirst) {
    model_add_joint(model, "world", 1, 0, 0, "hip", 0);
    EXPECT_EQ(model_add_joint(model, "world", 2, 0, 0, "hip", 0), 1);
    EXPECT_EQ(model_count_joints(model), 1);
    EXPECT_EQ(list_at<Joint>(&model->joints, 0, 0)->position.x, 2.0f);
}

TEST_F(SkeletonTest, JointWithALongNameIsAddedWithinBoundsAndNotFoundAgain) {
    const std::string name(200, 'j');
    EXPECT_EQ(model_add_joint(model, name.c_str(), 1, 2, 3, std::string(300, 'p').c_str(), 5), 1);
    EXPECT_EQ(model_find_joint(model, name.c_str()), nullptr);
    EXPECT_EQ(model_joint_index(model, name.c_str()), -1);
    const Joint* joint = list_at<Joint>(&model->joints, 0, 0);
    EXPECT_EQ(std::string(127, 'j'), joint->name);
    EXPECT_EQ(std::string(127, 'p'), joint->parent_name);
    EXPECT_EQ(joint->position.x, 1.0f);
    EXPECT_EQ(joint->point_count, 5);
}

TEST_F(SkeletonTest, JointIndexIsTheRank) {
    model_add_joint(model, "a", 0, 0, 0, "world", 0);
    model_add_joint(model, "b", 0, 0, 0, "world", 0);
    EXPECT_EQ(model_joint_index(model, "a"), 0);
    EXPECT_EQ(model_joint_index(model, "b"), 1);
    EXPECT_EQ(model_joint_index(model, "c"), -1);
}

TEST_F(SkeletonTest, NullArgumentsFailSilently) {
    EXPECT_EQ(model_add_joint(nullptr, "a", 0, 0, 0, "world", 0), 0);
    EXPECT_EQ(model_add_joint(model, nullptr, 0, 0, 0, "world", 0), 0);
    EXPECT_EQ(model_find_joint(model, nullptr), nullptr);
    EXPECT_EQ(model_joint_index(nullptr, "a"), -1);
    EXPECT_EQ(model_add_blend(model, nullptr, "a", 1), nullptr);
    EXPECT_EQ(model_add_blend(model, "a", nullptr, 1), nullptr);
    EXPECT_EQ(link(model, nullptr, nullptr), nullptr);
    EXPECT_EQ(link(nullptr, nullptr, "a"), nullptr);
    EXPECT_EQ(model_find_child(model, nullptr), nullptr);
    EXPECT_EQ(model_child_index(nullptr, "a"), -1);
    EXPECT_EQ(model_child_index(model, nullptr), -1);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(SkeletonTest, BlendLooksItsJointsUpAndTakesUnknownOnes) {
    model_add_joint(model, "a", 0, 0, 0, "world", 0);
    const BlendWeight* blend = model_add_blend(model, "a", "nobody", 3);
    ASSERT_NE(blend, nullptr);
    EXPECT_EQ(blend->point_count, 3);
    EXPECT_EQ(model_find_joint(model, "a"), blend->joint_a);
    EXPECT_EQ(blend->joint_b, nullptr);
    EXPECT_EQ(list_count(&model->blends), 1);
}

TEST_F(SkeletonTest, BlendOfNoPointsFails) {
    EXPECT_EQ(model_add_blend(model, "a", "b", 0), nullptr);
    EXPECT_EQ(model_add_blend(model, "a", "b", -1), nullptr);
    EXPECT_EQ(list_count(&model->blends), 0);
}

TEST_F(SkeletonTest, JointsStayInPlaceWhileMoreAreAdded) {
    model_add_joint(model, "first", 0, 0, 0, "world", 0);
    const Joint* first = model_find_joint(model, "first");
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(model_add_joint(model, ("joint" + std::to_string(i)).c_str(), 0, 0, 0, "first", 0), 1);
    }
    EXPECT_EQ(first, model_find_joint(model, "first"));
}

TEST_F(SkeletonTest, ChildStoresWhatIsGiven) {
    const ChildLink* child = link(model, nullptr, "arm");
    ASSERT_NE(child, nullptr);
    EXPECT_STREQ(child->name, "arm");
    EXPECT_EQ(child->model, nullptr);
    EXPECT_EQ(child->position.y, 2.0f);
    EXPECT_EQ(child->scale.z, 6.0f);
    EXPECT_STREQ(child->rotate[0], "7");
    EXPECT_STREQ(child->rotate[1], "x8");
    EXPECT_STREQ(child->rotate[2], "9");
    EXPECT_EQ(child->state_index, -1);
    EXPECT_EQ(child->borrowed, 0);
    EXPECT_EQ(child->id + 1, link(model, nullptr, "leg")->id);
}

TEST_F(SkeletonTest, ChildTextsAreCutWithinBounds) {
    const ChildLink* child = model_add_child(model, nullptr, std::string(300, 'c').c_str(), 1, 2, 3, 4, 5, 6,
                                             "123456789", "1234567", nullptr);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(std::string(127, 'c'), child->name);
    EXPECT_STREQ(child->rotate[0], "1234567");
    EXPECT_STREQ(child->rotate[1], "1234567");
    EXPECT_STREQ(child->rotate[2], "");
    EXPECT_EQ(child->position.x, 1.0f);
}

TEST_F(SkeletonTest, FindChildLooksInThisModelOnly) {
    Model* arm = model_create("arm.mod", model);
    ChildLink* child = link(model, arm, "arm");
    link(arm, nullptr, "hand");
    EXPECT_EQ(child, model_find_child(model, "arm"));
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_EQ(model_find_child(model, "hand"), nullptr);
    EXPECT_EQ(error(), "child does not exist");
}

TEST_F(SkeletonTest, ChildIndexCountsALinkBeforeItsSubTree) {
    Model* arm = model_create("arm.mod", model);
    link(model, nullptr, "empty");
    link(model, arm, "arm");
    link(arm, nullptr, "hand");
    link(arm, nullptr, "ring");
    link(model, nullptr, "leg");
    EXPECT_EQ(model_child_index(model, "empty"), 0);
    EXPECT_EQ(model_child_index(model, "arm"), 1);
    EXPECT_EQ(model_child_index(model, "hand"), 2);
    EXPECT_EQ(model_child_index(model, "ring"), 3);
    EXPECT_EQ(model_child_index(model, "leg"), 4);
    EXPECT_EQ(model_child_index(model, "nobody"), -1);
}

TEST_F(SkeletonTest, AJointCountAtItsLimitStaysThere) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 2147483646);
    Joint* hip = model_find_joint(model, "hip");
    joint_gain_point(hip);
    EXPECT_EQ(hip->point_count, 2147483647);
    joint_gain_point(hip);
    EXPECT_EQ(hip->point_count, 2147483647);
}

Vec3 placed(const ChildLink* link, Vec3 place) {
    const Mat4 matrix = child_placement(link);
    Vec3 out;
    mat_transform_point(&matrix, &place, &out);
    return out;
}

TEST_F(SkeletonTest, AChildIsScaledThenTurnedThenMoved) {
    const Vec3 x = placed(model_add_child(model, nullptr, "a", 1, 2, 3, 4, 5, 6, "0", "0", "90"), {1, 0, 0});
    EXPECT_NEAR(x.x, 1.0f, 1e-5f);  // four times as far, a quarter about z, moved
    EXPECT_NEAR(x.y, 6.0f, 1e-5f);
    EXPECT_NEAR(x.z, 3.0f, 1e-5f);
    const Vec3 z = placed(model_add_child(model, nullptr, "b", 0, 0, 0, 1, 1, 2, "x90", "0", "0"), {0, 0, 1});
    EXPECT_NEAR(z.y, -2.0f, 1e-5f);
    EXPECT_NEAR(z.z, 0.0f, 1e-5f);
}

// Intended: what stands before the bad text counts.
TEST_F(SkeletonTest, ABadRotationTextEndsTheTurning) {
    const Vec3 x = placed(model_add_child(model, nullptr, "a", 0, 0, 0, 1, 1, 1, "z90", "?", "z90"), {1, 0, 0});
    EXPECT_NEAR(x.x, 0.0f, 1e-5f);
    EXPECT_NEAR(x.y, 1.0f, 1e-5f);
}

}  // namespace
}  // namespace pelt
