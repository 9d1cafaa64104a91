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
    ASSERT_EQ(1, model_add_joint(model, "hip", 1, -2, 3, "world", 4));
    ASSERT_EQ(1, model_add_joint(model, "knee", 5, 6, 7, "hip", 8));
    const Joint* hip = model_find_joint(model, "hip");
    const Joint* knee = model_find_joint(model, "knee");
    ASSERT_NE(nullptr, hip);
    ASSERT_NE(nullptr, knee);
    EXPECT_STREQ("hip", hip->name);
    EXPECT_STREQ("world", hip->parent_name);
    EXPECT_EQ(-2.0f, hip->position.y);
    EXPECT_EQ(4, hip->point_count);
    EXPECT_EQ(-1, hip->state_index);
    EXPECT_EQ(-1, hip->parent_index);
    EXPECT_EQ(hip->id + 1, knee->id);
    EXPECT_EQ(2, model_count_joints(model));
}

TEST_F(SkeletonTest, ParentIndexIsItsOwnRankUntilTheReaderCorrectsIt) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 0);
    ASSERT_EQ(1, model_add_joint(model, "knee", 0, 0, 0, "hip", 0));
    EXPECT_EQ(1, model_find_joint(model, "knee")->parent_index);
}

TEST_F(SkeletonTest, JointWithAnUnknownParentIsAccepted) {
    EXPECT_EQ(1, model_add_joint(model, "knee", 0, 0, 0, "nobody", 0));
    EXPECT_EQ(nullptr, load_error_get());
}

TEST_F(SkeletonTest, JointWithoutAParentTextStandsByItself) {
    EXPECT_EQ(1, model_add_joint(model, "hip", 0, 0, 0, nullptr, 0));
    EXPECT_STREQ("", model_find_joint(model, "hip")->parent_name);
    EXPECT_EQ(-1, model_find_joint(model, "hip")->parent_index);
}

TEST_F(SkeletonTest, JointNameTakenFails) {
    model_add_joint(model, "hip", 1, 1, 1, "world", 0);
    EXPECT_EQ(0, model_add_joint(model, "hip", 2, 2, 2, "world", 0));
    EXPECT_EQ("duplicate joint name not allowed", error());
    EXPECT_EQ(1.0f, model_find_joint(model, "hip")->position.x);
}

TEST_F(SkeletonTest, JointThatIsItsOwnParentFails) {
    EXPECT_EQ(0, model_add_joint(model, "hip", 0, 0, 0, "hip", 0));
    EXPECT_EQ("Bad joint parent", error());
    EXPECT_EQ(0, model_count_joints(model));
}

TEST_F(SkeletonTest, WorldIsNoJointEvenIfOneOfThatNameWasAdded) {
    EXPECT_EQ(1, model_add_joint(model, "world", 1, 0, 0, "hip", 0));
    EXPECT_EQ(nullptr, model_find_joint(model, "world"));
    EXPECT_EQ(1, model_count_joints(model));
}

TEST_F(SkeletonTest, ASecondJointCalledWorldIsWrittenOverTheFirst) {
    model_add_joint(model, "world", 1, 0, 0, "hip", 0);
    EXPECT_EQ(1, model_add_joint(model, "world", 2, 0, 0, "hip", 0));
    EXPECT_EQ(1, model_count_joints(model));
    EXPECT_EQ(2.0f, static_cast<Joint*>(list_at(&model->joints, 0, 0))->position.x);
}

TEST_F(SkeletonTest, JointWithALongNameIsAddedWithinBoundsAndNotFoundAgain) {
    const std::string name(200, 'j');
    EXPECT_EQ(1, model_add_joint(model, name.c_str(), 1, 2, 3, std::string(300, 'p').c_str(), 5));
    EXPECT_EQ(nullptr, model_find_joint(model, name.c_str()));
    EXPECT_EQ(-1, model_joint_index(model, name.c_str()));
    const Joint* joint = static_cast<Joint*>(list_at(&model->joints, 0, 0));
    EXPECT_EQ(std::string(127, 'j'), joint->name);
    EXPECT_EQ(std::string(127, 'p'), joint->parent_name);
    EXPECT_EQ(1.0f, joint->position.x);
    EXPECT_EQ(5, joint->point_count);
}

TEST_F(SkeletonTest, JointIndexIsTheRank) {
    model_add_joint(model, "a", 0, 0, 0, "world", 0);
    model_add_joint(model, "b", 0, 0, 0, "world", 0);
    EXPECT_EQ(0, model_joint_index(model, "a"));
    EXPECT_EQ(1, model_joint_index(model, "b"));
    EXPECT_EQ(-1, model_joint_index(model, "c"));
}

TEST_F(SkeletonTest, NullArgumentsFailSilently) {
    EXPECT_EQ(0, model_add_joint(nullptr, "a", 0, 0, 0, "world", 0));
    EXPECT_EQ(0, model_add_joint(model, nullptr, 0, 0, 0, "world", 0));
    EXPECT_EQ(nullptr, model_find_joint(model, nullptr));
    EXPECT_EQ(-1, model_joint_index(nullptr, "a"));
    EXPECT_EQ(nullptr, model_add_blend(model, nullptr, "a", 1));
    EXPECT_EQ(nullptr, model_add_blend(model, "a", nullptr, 1));
    EXPECT_EQ(nullptr, link(model, nullptr, nullptr));
    EXPECT_EQ(nullptr, link(nullptr, nullptr, "a"));
    EXPECT_EQ(nullptr, model_find_child(model, nullptr));
    EXPECT_EQ(-1, model_child_index(nullptr, "a"));
    EXPECT_EQ(-1, model_child_index(model, nullptr));
    EXPECT_EQ(nullptr, load_error_get());
}

TEST_F(SkeletonTest, BlendLooksItsJointsUpAndTakesUnknownOnes) {
    model_add_joint(model, "a", 0, 0, 0, "world", 0);
    const BlendWeight* blend = model_add_blend(model, "a", "nobody", 3);
    ASSERT_NE(nullptr, blend);
    EXPECT_EQ(3, blend->point_count);
    EXPECT_EQ(model_find_joint(model, "a"), blend->joint_a);
    EXPECT_EQ(nullptr, blend->joint_b);
    EXPECT_EQ(1, list_count(&model->blends));
}

TEST_F(SkeletonTest, BlendOfNoPointsFails) {
    EXPECT_EQ(nullptr, model_add_blend(model, "a", "b", 0));
    EXPECT_EQ(nullptr, model_add_blend(model, "a", "b", -1));
    EXPECT_EQ(0, list_count(&model->blends));
}

TEST_F(SkeletonTest, JointsStayInPlaceWhileMoreAreAdded) {
    model_add_joint(model, "first", 0, 0, 0, "world", 0);
    const Joint* first = model_find_joint(model, "first");
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(1, model_add_joint(model, ("joint" + std::to_string(i)).c_str(), 0, 0, 0, "first", 0));
    }
    EXPECT_EQ(first, model_find_joint(model, "first"));
}

TEST_F(SkeletonTest, ChildStoresWhatIsGiven) {
    const ChildLink* child = link(model, nullptr, "arm");
    ASSERT_NE(nullptr, child);
    EXPECT_STREQ("arm", child->name);
    EXPECT_EQ(nullptr, child->model);
    EXPECT_EQ(2.0f, child->position.y);
    EXPECT_EQ(6.0f, child->scale.z);
    EXPECT_STREQ("7", child->rotate[0]);
    EXPECT_STREQ("x8", child->rotate[1]);
    EXPECT_STREQ("9", child->rotate[2]);
    EXPECT_EQ(-1, child->state_index);
    EXPECT_EQ(0, child->borrowed);
    EXPECT_EQ(child->id + 1, link(model, nullptr, "leg")->id);
}

TEST_F(SkeletonTest, ChildTextsAreCutWithinBounds) {
    const ChildLink* child = model_add_child(model, nullptr, std::string(300, 'c').c_str(), 1, 2, 3, 4, 5, 6,
                                             "123456789", "1234567", nullptr);
    ASSERT_NE(nullptr, child);
    EXPECT_EQ(std::string(127, 'c'), child->name);
    EXPECT_STREQ("1234567", child->rotate[0]);
    EXPECT_STREQ("1234567", child->rotate[1]);
    EXPECT_STREQ("", child->rotate[2]);
    EXPECT_EQ(1.0f, child->position.x);
}

TEST_F(SkeletonTest, FindChildLooksInThisModelOnly) {
    Model* arm = model_create("arm.mod", model);
    ChildLink* child = link(model, arm, "arm");
    link(arm, nullptr, "hand");
    EXPECT_EQ(child, model_find_child(model, "arm"));
    EXPECT_EQ(nullptr, load_error_get());
    EXPECT_EQ(nullptr, model_find_child(model, "hand"));
    EXPECT_EQ("child does not exist", error());
}

TEST_F(SkeletonTest, ChildIndexCountsALinkBeforeItsSubTree) {
    Model* arm = model_create("arm.mod", model);
    link(model, nullptr, "empty");
    link(model, arm, "arm");
    link(arm, nullptr, "hand");
    link(arm, nullptr, "ring");
    link(model, nullptr, "leg");
    EXPECT_EQ(0, model_child_index(model, "empty"));
    EXPECT_EQ(1, model_child_index(model, "arm"));
    EXPECT_EQ(2, model_child_index(model, "hand"));
    EXPECT_EQ(3, model_child_index(model, "ring"));
    EXPECT_EQ(4, model_child_index(model, "leg"));
    EXPECT_EQ(-1, model_child_index(model, "nobody"));
}

TEST_F(SkeletonTest, AJointCountAtItsLimitStaysThere) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 2147483646);
    Joint* hip = model_find_joint(model, "hip");
    joint_gain_point(hip);
    EXPECT_EQ(2147483647, hip->point_count);
    joint_gain_point(hip);
    EXPECT_EQ(2147483647, hip->point_count);
}

}  // namespace
}  // namespace pelt
