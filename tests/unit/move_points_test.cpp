// Points moved, scaled and turned, as they are drawn.
#include "edit/move_points.h"

#include <gtest/gtest.h>

#include <cmath>

#include "application/session_lifecycle.h"
#include "edit/point_settings.h"
#include "formats/animation.h"
#include "formats/texture_map.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "support/edit_model.h"

namespace pelt {
namespace {

using namespace edit_model;

class MovePointsTest : public ::testing::Test {
protected:
    MovePointsTest() : model(model_create("made.mod", nullptr)) {
        session_init(&session);
        session_add_root(&session, model, nullptr);
        put_points(model, {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}});
        model->version = 1;
    }
    ~MovePointsTest() override { session_reset(&session, 1); }

    bool change(const std::vector<int32_t>& ids, const PlaceChange& by, const DragSpace& space = {}) {
        return edit_point_places(&session, model, ids, by, space, &refused);
    }
    Vec3 at(int32_t id) { return point_of(model, id)->position; }

    // A joint whose skin is the given one, with the points bound to it and posed.
    Joint* pose(const char* name, const Mat4& skin, const std::vector<int32_t>& ids, float weight = 1.0f) {
        Joint* joint = put_joint(model, name);
        JointState* state = joint_state(&session, model, joint);
        state->skin = skin;
        state->normal_matrix = skin;
        mat_drop_translation(&state->normal_matrix);
        state->time = 0.0f;
        for (const int32_t id : ids) {
            Point* point = point_of(model, id);
            point->joint_a = joint;
            point->weight = weight;
            point_pose_anew(&session, model, point);
        }
        return joint;
    }

    static Mat4 turned_z(float degrees, Vec3 then = {0, 0, 0}) {
        Mat4 m;
        mat_identity(&m);
        mat_translate(&m, then.x, then.y, then.z);
        mat_rotate(&m, 0, 0, degrees);
        return m;
    }

    Session session{};
    Model* model;
    EditRefusal refused;
};

TEST_F(MovePointsTest, MoveAddsToThoseNamedAndNoOthers) {
    ASSERT_TRUE(change({2, 4}, moved_by({1, -2, 3})));
    expect_vector(at(1), {0, 0, 0});
    expect_vector(at(2), {11, -2, 3});
    expect_vector(at(3), {0, 10, 0});
    expect_vector(at(4), {1, -2, 13});
}

TEST_F(MovePointsTest, WholeNumbersComeOut) {
    point_of(model, 2)->position = {9.6f, 0.2f, -0.2f};
    ASSERT_TRUE(change({2, 3}, moved_by({0.3f, 0.4f, -0.4f})));
    expect_vector(at(2), {10, 1, -1});
    expect_vector(at(3), {0, 10, 0});
}

TEST_F(MovePointsTest, PlacesBeyondTheNumbersOfAFileStopAtTheirEnd) {
    ASSERT_TRUE(change({1}, moved_by({3e38f, -3e38f, 0})));
    expect_vector(at(1), {2147483520.0f, -2147483520.0f, 0});
}

TEST_F(MovePointsTest, ScaleIsAboutThePlace) {
    ASSERT_TRUE(change({1, 2, 3}, scaled_about({2, 4, 0}, {3, 0.5f, -1})));
    expect_vector(at(1), {-4, 2, 0});
    expect_vector(at(2), {26, 2, 0});
    expect_vector(at(3), {-4, 7, 0});
    ASSERT_TRUE(change({4}, scaled_about({0, 0, 3}, {1, 1, 0})));
    expect_vector(at(4), {0, 0, 3});
}

TEST_F(MovePointsTest, TurnIsAboutThePlaceAndTheAxisAndCounterclockwise) {
    PlaceChange turn;
    ASSERT_TRUE(turned_about({0, 0, 0}, {0, 0, 5}, 90, &turn));
    ASSERT_TRUE(change({2, 3, 4}, turn));
    expect_vector(at(2), {0, 10, 0});
    expect_vector(at(3), {-10, 0, 0});
    expect_vector(at(4), {0, 0, 10});
    ASSERT_TRUE(turned_about({0, 10, 0}, {1, 0, 0}, 180, &turn));
    ASSERT_TRUE(change({1}, turn));
    expect_vector(at(1), {0, 20, 0});
    // A third of a turn about the diagonal of a cube exchanges its edges.
    ASSERT_TRUE(turned_about({0, 0, 0}, {1, 1, 1}, 120, &turn));
    ASSERT_TRUE(change({4}, turn));
    expect_vector(at(4), {10, 0, 0});
    EXPECT_FALSE(turned_about({0, 0, 0}, {0, 0, 0}, 90, &turn));
}

TEST_F(MovePointsTest, ADragOfAPosedPointGoesBackThroughItsPose) {
    pose("arm", turned_z(90, {100, 0, 0}), {2});
    ASSERT_TRUE(change({1, 2}, moved_by({5, 0, 0})));
    expect_vector(at(1), {5, 0, 0});
    expect_vector(at(2), {10, -5, 0});
    // It is drawn where the drag led: at rest (10, -5), turned (5, 10), shifted by 100.
    const PointState* state = point_state(&session, point_of(model, 2));
    expect_vector(state->position, {105, 10, 0}, 1e-3f);
}

TEST_F(MovePointsTest, ScalingAPosedPointIsAboutAPlaceInThePose) {
    pose("arm", turned_z(90, {100, 0, 0}), {2});  // drawn at (100, 10, 0)
    ASSERT_TRUE(change({2}, scaled_about({100, 0, 0}, {1, 3, 1})));
    expect_vector(at(2), {30, 0, 0});
}

TEST_F(MovePointsTest, ABlendIsUndoneAsItWasMade) {
    pose("arm", turned_z(90), {2}, 0.5f);
    // Half of a quarter turn and half of nothing: x becomes (0.5, 0.5), y (-0.5, 0.5).
    ASSERT_TRUE(change({2}, moved_by({10, 0, 0})));
    expect_vector(at(2), {20, -10, 0});
}

TEST_F(MovePointsTest, ASingularPoseIsRefusedAndNothingMoves) {
    pose("arm", turned_z(180), {2}, 0.5f);
    EXPECT_FALSE(change({1, 2}, moved_by({10, 0, 0})));
    EXPECT_EQ(refused.kind, EDIT_STATE);
    EXPECT_NE(refused.text.find("point 2"), std::string::npos) << refused.text;
    expect_vector(at(1), {0, 0, 0});
    expect_vector(at(2), {10, 0, 0});
    EXPECT_TRUE(change({1}, moved_by({10, 0, 0})));
}

TEST_F(MovePointsTest, WithoutAWeightTheSecondJointOrNothingPosesIt) {
    pose("arm", turned_z(90), {2, 3}, 0.0f);
    point_of(model, 3)->joint_b = put_joint(model, "hand");
    joint_state(&session, model, point_of(model, 3)->joint_b)->skin = turned_z(-90);
    ASSERT_TRUE(change({2, 3}, moved_by({10, 0, 0})));
    expect_vector(at(2), {20, 0, 0});
    expect_vector(at(3), {0, 20, 0});
}

TEST_F(MovePointsTest, TheMirroredHalfMovesTheOtherWay) {
    const Layer* layer = put_layer(model, "body", AXIS_Y);
    ASSERT_TRUE(change({2}, moved_by({1, 5, 2}), {nullptr, false, layer}));
    expect_vector(at(2), {11, -5, 2});
    // Drawn at (0, -10): twice as far from (0, 2) is (0, -22).
    ASSERT_TRUE(change({3}, scaled_about({0, 2, 0}, {2, 2, 2}), {nullptr, false, layer}));
    expect_vector(at(3), {0, 22, 0});
}

TEST_F(MovePointsTest, ADragInTheSceneGoesBackThroughThePlacement) {
    ModelState* state = model_state(&session, model);
    state->scale = {2, 2, 2};
    mat_rotate(&state->rotation, 0, 0, 90);
    model_state_rebuild(state);
    ASSERT_TRUE(change({2}, moved_by({10, 0, 0}), {nullptr, true, nullptr}));
    expect_vector(at(2), {10, -5, 0});
    ASSERT_TRUE(change({3}, moved_by({10, 0, 0})));
    expect_vector(at(3), {10, 10, 0});
    state->scale = {2, 0, 2};
    model_state_rebuild(state);
    EXPECT_FALSE(change({2}, moved_by({10, 0, 0}), {nullptr, true, nullptr}));
    EXPECT_TRUE(change({2}, moved_by({10, 0, 0})));
}

TEST_F(MovePointsTest, AChildIsMovedAsTheLinkThatWasNamedStands) {
    Model* child = model_create("child.mod", nullptr);
    put_points(child, {{1, 0, 0}});
    model_add_child(model, child, "child", 0, 0, 0, 4, 4, 4, "0", "0", "0");
    ChildLink* link = model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "90");
    link->borrowed = 1;
    EditRefusal why;
    ASSERT_TRUE(edit_point_places(&session, child, {1}, moved_by({8, 0, 0}), {link, true, nullptr}, &why));
    expect_vector(point_of(child, 1)->position, {1, -8, 0});
    ASSERT_TRUE(edit_point_places(&session, child, {1}, moved_by({8, 0, 0}), {nullptr, true, nullptr}, &why));
    expect_vector(point_of(child, 1)->position, {3, -8, 0});
}

TEST_F(MovePointsTest, TheBoxOfTheModelShrinksToo) {
    const Layer* layer = put_layer(model, "body", AXIS_X);
    put_triangle(model, "body", {1, 2, 3});
    ASSERT_TRUE(change({2}, moved_by({-4, 0, 0})));
    expect_vector(model->bounds_min, {-6, 0, 0});
    expect_vector(model->bounds_max, {6, 10, 10});
    EXPECT_NE(layer->mirror, 0);
}

TEST_F(MovePointsTest, TextureCoordinatesAndTheBoxOfTheLayerFollow) {
    Layer* layer = put_layer(model);
    put_triangle(model, "body", {1, 2, 3});
    list_add<LayerImage>(&layer->images, 1);
    layer->image_axis_u = AXIS_MINUS_X;
    layer->image_axis_v = AXIS_Y;
    layer_map(model, layer);
    ASSERT_TRUE(change({2}, moved_by({-30, 5, 0})));
    expect_vector(layer->bounds_min, {-20, 0, 0});
    const Triangle* triangle = last_triangle(layer);
    EXPECT_EQ(triangle->uvs[0][0], 1.0f);
    EXPECT_EQ(triangle->uvs[1][0], 0.0f);
    EXPECT_EQ(triangle->uvs[1][1], 0.5f);
}

TEST_F(MovePointsTest, WhatTheFrameKnewOfMovedCornersIsForgotten) {
    put_layer(model);
    list_init(&session.triangle_caches, sizeof(TriangleCache), KEY_INT);
    Triangle* far = put_triangle(model, "body", {1, 3, 4});
    Triangle* near = put_triangle(model, "body", {1, 2, 3});
    for (Triangle* each : {far, near}) {
        add_state<TriangleCache>(&session.triangle_caches, &next_triangle_cache_id, &each->state_index);
    }
    ASSERT_TRUE(change({2}, moved_by({1, 0, 0})));
    EXPECT_EQ(near->state_index, -1);
    EXPECT_NE(far->state_index, -1);
}

TEST_F(MovePointsTest, OneChangeIsCountedOnce) {
    const int64_t before = model->changes;
    ASSERT_TRUE(change({1, 2, 3, 4}, moved_by({1, 0, 0})));
    EXPECT_EQ(model->changes, before + 1);
}

TEST_F(MovePointsTest, AnUnknownPointIsRefused) {
    EXPECT_FALSE(change({1, 77}, moved_by({1, 0, 0})));
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    expect_vector(at(1), {0, 0, 0});
}

TEST_F(MovePointsTest, SettingsAreStoredAndWhatIsNotGivenStays) {
    PointSettings settings;
    settings.normal = Vec3{0, 3e20f, -4e20f};
    settings.colour = {1, 2, 255};
    ASSERT_TRUE(edit_points(&session, model, {2, 3}, settings, &refused));
    const Point* point = point_of(model, 3);
    expect_vector(point->normal, {0, 0.6f, -0.8f}, 1e-6f);
    expect_vector(point->position, {0, 10, 0});
    EXPECT_EQ((std::vector<int>(point->gouraud, point->gouraud + 4)), (std::vector<int>{1, 2, 255, 0}));
    EXPECT_EQ(model->has_normals, 1);
    EXPECT_EQ(model->has_gouraud, 1);
    settings = {};
    settings.place = Vec3{1.4f, -1.6f, 0};
    settings.transparency = 0.5f;
    settings.weight = -1.0f;
    ASSERT_TRUE(edit_points(&session, model, {3}, settings, &refused));
    expect_vector(point->position, {1, -2, 0});
    EXPECT_EQ(point->gouraud[3], 128);
    EXPECT_EQ(point->gouraud[2], 255);
    EXPECT_EQ(point->weight, -1.0f);
    expect_vector(model->bounds_max, {10, 0, 10});
}

TEST_F(MovePointsTest, ANormalWithoutADirectionIsRefused) {
    PointSettings settings;
    settings.normal = Vec3{0, 0, 0};
    settings.weight = 2.0f;
    EXPECT_FALSE(edit_points(&session, model, {1}, settings, &refused));
    EXPECT_EQ(point_of(model, 1)->weight, 1.0f);
    EXPECT_EQ(model->has_normals, 0);
}

TEST_F(MovePointsTest, APosedPointIsPosedAnewWithItsNormal) {
    pose("arm", turned_z(90), {2});
    PointSettings settings;
    settings.normal = Vec3{1, 0, 0};
    settings.weight = 2.0f;
    ASSERT_TRUE(edit_points(&session, model, {2}, settings, &refused));
    expect_vector(point_state(&session, point_of(model, 2))->normal, {0, 1, 0}, 1e-6f);
}

}  // namespace
}  // namespace pelt
