// Joints by a script's word: what becomes of the model is what a file says that a person wrote.
#include "edit/edit_joints.h"

#include "formats/animation.h"
#include "motion/transform_state.h"
#include "support/edited_scene.h"

namespace pelt {
namespace {

using test::EditedScene;

const std::string JOINTS = "joint hip 0 0 0 world 2\njoint knee 0 -10 0 hip 2\njoint foot 0 -20 0 knee 1\n";
const std::string POINTS = "points\n1 0 0 0\n2 1 0 0\n3 0 -10 0 0.5\n4 1 -10 0\n5 0 -20 0\n6 9 9 9\n";
const std::string LEG = JOINTS + POINTS;

class EditJoints : public EditedScene {
protected:
    bool edit(Model* model, const char* joint, const JointEdit& wanted) {
        return edit_joint(&session, model, joint_named(model, joint), wanted, &refused);
    }
    bool remove(Model* model, const char* joint) {
        return edit_remove_joint(&session, model, joint_named(model, joint), &refused);
    }
    bool bind(Model* model, const std::vector<int32_t>& points, const char* a, const char* b, float share) {
        return edit_bind(&session, model, points, {joint_named(model, a), joint_named(model, b), share}, &refused);
    }
    static JointEdit place(float x, float y, float z) {
        JointEdit wanted;
        wanted.place = Vec3{x, y, z};
        return wanted;
    }
    static JointEdit parent(const char* name) {
        JointEdit wanted;
        wanted.parent = name;
        return wanted;
    }
};

TEST_F(EditJoints, APlaceBecomesWholeNumbersAndMovesThePivotAlone) {
    Model* model = open(LEG);
    ASSERT_TRUE(edit(model, "knee", place(1.5f, -7.4f, 1e20f)));
    expect_says(model,
                "joint hip 0 0 0 world 2\njoint knee 2 -7 2147483647 hip 2\njoint foot 0 -20 0 knee 1\n" + POINTS);
}

TEST_F(EditJoints, WhatHangsOnAJointCanGoWithIt) {
    Model* model = open(LEG + "layer skin 1 2 3 x\ntriangles\n0 1 3 5\nimage a.tga y z\n");
    JointEdit wanted = place(0, -12, 5);
    wanted.follow = true;
    ASSERT_TRUE(edit(model, "knee", wanted));
    expect_says(model,
                "joint hip 0 0 0 world 2\njoint knee 0 -12 5 hip 2\njoint foot 0 -22 5 knee 1\n"
                "points\n1 0 0 0\n2 1 0 0\n3 0 -12 5 0.5\n4 1 -12 5\n5 0 -22 5\n6 9 9 9\n"
                "layer skin 1 2 3 x\ntriangles\n0 1 3 5\nimage a.tga y z\n");
}

TEST_F(EditJoints, ANewNameIsFollowedByPointsJointsAndBlendGroups) {
    Model* model = open(JOINTS + "blend knee foot 1\n" + POINTS);
    JointEdit wanted;
    wanted.name = "left knee";
    ASSERT_TRUE(edit(model, "knee", wanted));
    expect_says(model,
                "joint hip 0 0 0 world 2\njoint \"left knee\" 0 -10 0 hip 2\njoint foot 0 -20 0 \"left knee\" 1\n"
                "blend \"left knee\" foot 1\n" +
                    POINTS);
    for (const char* bad : {"", "world", "a\nb", "01234567890123456789012345678901"}) {
        wanted.name = bad;
        EXPECT_FALSE(edit(model, "hip", wanted)) << bad;
        EXPECT_EQ(refused.kind, EDIT_ARGUMENT) << bad;
    }
    wanted.name = "foot";
    EXPECT_FALSE(edit(model, "hip", wanted));
    EXPECT_EQ(refused.kind, EDIT_STATE);
}

TEST_F(EditJoints, ANewParentTakesTheOtherShareOfItsPoints) {
    Model* model = open(LEG);
    ASSERT_TRUE(edit(model, "knee", parent("world")));
    expect_says(model, "joint hip 0 0 0 world 2\njoint knee 0 -10 0 world 2\njoint foot 0 -20 0 knee 1\n" + POINTS);
    ASSERT_TRUE(edit(model, "knee", parent("hip")));
    expect_says(model, LEG);
    EXPECT_FALSE(edit(model, "hip", parent("foot"))) << "it would hang on itself";
    EXPECT_EQ(refused.kind, EDIT_STATE);
    EXPECT_FALSE(edit(model, "hip", parent("hip")));
    EXPECT_FALSE(edit(model, "hip", parent("nobody")));
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    expect_says(model, LEG);
}

TEST_F(EditJoints, ANewJointGoesBehindTheOthersAndHasNoPoints) {
    Model* model = open(LEG);
    JointEdit wanted = place(3, 4, 5);
    wanted.parent = "foot";
    ASSERT_TRUE(edit_new_joint(&session, model, "toe", wanted, &refused));
    expect_says(model, JOINTS + "joint toe 3 4 5 foot 0\n" + POINTS);
    ASSERT_TRUE(edit_new_joint(&session, model, "root", {}, &refused));
    expect_says(model, JOINTS + "joint toe 3 4 5 foot 0\njoint root 0 0 0 world 0\n" + POINTS);
    EXPECT_FALSE(edit_new_joint(&session, model, "toe", {}, &refused)) << "there is one";
}

TEST_F(EditJoints, APlaceInTheMiddleStaysFree) {
    Model* model = open(LEG);
    ASSERT_TRUE(remove(model, "hip"));
    ASSERT_TRUE(edit_new_joint(&session, model, "spine", {}, &refused));
    EXPECT_EQ(names_in_order<Joint>(model->joints), (std::vector<std::string>{"knee", "foot", "spine"}));
}

TEST_F(EditJoints, WhatHungOnAJointThatGoesHangsOnItsParent) {
    Model* model = open(LEG);
    ASSERT_TRUE(remove(model, "knee"));
    expect_says(model,
                "joint hip 0 0 0 world 4\njoint foot 0 -20 0 hip 1\n"
                "points\n1 0 0 0\n2 1 0 0\n3 0 -10 0\n4 1 -10 0\n5 0 -20 0\n6 9 9 9\n");
    ASSERT_TRUE(remove(model, "hip"));
    expect_says(model,
                "joint foot 0 -20 0 world 1\npoints\n5 0 -20 0\n1 0 0 0\n2 1 0 0\n3 0 -10 0\n4 1 -10 0\n6 9 9 9\n");
}

TEST_F(EditJoints, ASharedPointKeepsItsOtherShare) {
    const std::string points =
        "points\n1 0 0 0\n2 1 0 0 0.25 arm leg\n3 1 0 0 0.25 leg arm\n4 1 0 0 1 arm leg\n"
        "5 1 0 0 0 arm leg\n";
    Model* model = open("joint arm 0 0 0 world 0\njoint leg 0 0 0 world 0\n" + points);
    ASSERT_TRUE(remove(model, "arm"));
    expect_says(model, "joint leg 0 0 0 world 3\npoints\n2 1 0 0 0.75\n3 1 0 0 0.25\n5 1 0 0\n1 0 0 0\n4 1 0 0\n");
}

TEST_F(EditJoints, ACircleThatAFileHoldsCanBeOpened) {
    Model* model = open("joint a 0 0 0 b 1\njoint b 0 0 0 a 1\npoints\n1 0 0 0 0.5\n2 0 0 0 0.5\n");
    ASSERT_TRUE(remove(model, "a"));
    expect_says(model, "joint b 0 0 0 world 2\npoints\n1 0 0 0\n2 0 0 0\n");
}

TEST_F(EditJoints, PointsAreBoundAndCounted) {
    Model* model = open(LEG);
    ASSERT_TRUE(bind(model, {6, 3}, "foot", "", 1.0f));
    expect_says(model,
                "joint hip 0 0 0 world 2\njoint knee 0 -10 0 hip 1\njoint foot 0 -20 0 knee 3\n"
                "points\n1 0 0 0\n2 1 0 0\n4 1 -10 0\n3 0 -10 0\n5 0 -20 0\n6 9 9 9\n");
    ASSERT_TRUE(bind(model, {1, 2}, "", "", 1.0f));
    expect_says(model,
                "joint hip 0 0 0 world 0\njoint knee 0 -10 0 hip 1\njoint foot 0 -20 0 knee 3\n"
                "points\n4 1 -10 0\n3 0 -10 0\n5 0 -20 0\n6 9 9 9\n1 0 0 0\n2 1 0 0\n");
    ASSERT_TRUE(bind(model, {1}, "hip", "foot", 0.25f));
    ASSERT_TRUE(edit_weight(&session, model, {4}, -0.5f, &refused));
    expect_says(model,
                "joint hip 0 0 0 world 0\njoint knee 0 -10 0 hip 1\njoint foot 0 -20 0 knee 3\n"
                "points\n4 1 -10 0 -0.5\n3 0 -10 0\n5 0 -20 0\n6 9 9 9\n1 0 0 0 0.25 hip foot\n2 1 0 0\n");
    EXPECT_FALSE(bind(model, {1}, "hip", "hip", 0.5f));
    EXPECT_FALSE(bind(model, {1}, "", "hip", 0.5f));
}

TEST_F(EditJoints, ABlendGroupWithoutPointsGoes) {
    Model* model = open(
        "joint a 0 0 0 world 0\njoint b 0 0 0 world 0\nblend a b 2\nblend b a 1\n"
        "points\n1 0 0 0 0.5\n2 0 0 0 0.5\n3 0 0 0 0.5\n");
    ASSERT_TRUE(bind(model, {1, 2}, "b", "a", 0.5f));
    expect_says(model,
                "joint a 0 0 0 world 0\njoint b 0 0 0 world 0\nblend b a 3\n"
                "points\n1 0 0 0 0.5\n2 0 0 0 0.5\n3 0 0 0 0.5\n");
}

TEST_F(EditJoints, PosesAreMadeAnew) {
    Model* model = open(LEG);
    auto* root = list_at<RootModel>(&session.root_models, 0, 0);
    root->animation = animation_create(model);
    scene_evaluate(&session);
    const auto posed = [&](int32_t id) {
        return point_state(&session, list_find<Point>(&model->points, id))->position;
    };
    const auto inverse = [&] {
        return joint_state(&session, model, list_find<Joint>(&model->joints, "knee"))->inverse_base;
    };
    ASSERT_TRUE(edit(model, "knee", place(0, -15, 0)));
    EXPECT_EQ(inverse().m[7], 15.0f);
    EXPECT_EQ(posed(4).y, -10.0f) << "a joint without keys moves nothing";
    ASSERT_TRUE(bind(model, {6}, "knee", "", 1.0f));
    EXPECT_EQ(posed(6).x, 9.0f);
    EXPECT_FALSE(remove(model, "knee")) << "clips count the joints";
    EXPECT_EQ(refused.kind, EDIT_STATE);
    root->animation->parent_model = nullptr;
}

TEST_F(EditJoints, AllModelsOfAFileChangeTogether) {
    open(LEG, "leg.mod");
    Model* body = open("child leg 0 0 0 1 1 1 0 0 0\nchild leg 5 0 0 1 1 1 0 0 0\n", "body.mod");
    Model* leg = list_at<ChildLink>(&body->children, 1, 0)->model;
    ASSERT_TRUE(remove(leg, "foot"));
    ASSERT_TRUE(bind(leg, {6}, "hip", "", 1.0f));
    const std::string said =
        "joint hip 0 0 0 world 3\njoint knee 0 -10 0 hip 3\n"
        "points\n1 0 0 0\n2 1 0 0\n6 9 9 9\n3 0 -10 0 0.5\n4 1 -10 0\n5 0 -20 0\n";
    expect_says(leg, said);
    expect_says(list_at<ChildLink>(&body->children, 0, 0)->model, said);
    expect_says(list_at<RootModel>(&session.root_models, 0, 0)->model, said);
}

}  // namespace
}  // namespace pelt
