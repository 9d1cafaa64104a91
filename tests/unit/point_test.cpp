// Points: setting, finding across children, colours, normals, the box.
#include "scene/point.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "foundation/load_error.h"
#include "scene/model.h"

namespace pelt {
namespace {

void expect_vec(float x, float y, float z, const Vec3& v) {
    EXPECT_EQ(x, v.x);
    EXPECT_EQ(y, v.y);
    EXPECT_EQ(z, v.z);
}

class PointTest : public ::testing::Test {
protected:
    PointTest() : model(model_create("made.mod", nullptr)) { load_error_set(nullptr); }
    ~PointTest() override { model_release(model); }

    Model* add_child() {
        Model* child = model_create("child.mod", model);
        model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        return child;
    }

    std::string error() const { return load_error_get() != nullptr ? load_error_get() : ""; }

    Model* model;
};

TEST_F(PointTest, NewPointHasItsDefaults) {
    ASSERT_EQ(model_set_point(model, 7, 1, -2, 3, 1.0f), 1);
    const Point* point = model_find_point(model, 7);
    ASSERT_NE(point, nullptr);
    expect_vec(1, -2, 3, point->position);
    expect_vec(0, 0, 1, point->normal);
    EXPECT_EQ(point->weight, 1.0f);
    EXPECT_EQ(point->gouraud[0], 127);
    EXPECT_EQ(point->gouraud[1], 127);
    EXPECT_EQ(point->gouraud[2], 127);
    EXPECT_EQ(point->gouraud[3], 0);
    EXPECT_EQ(point->joint_a, nullptr);
    EXPECT_EQ(point->joint_b, nullptr);
    EXPECT_EQ(point->state_index, -1);
}

TEST_F(PointTest, IdBelowOneIsRefusedSilently) {
    for (const int32_t id : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(model_set_point(model, id, 1, 2, 3, 1.0f), 0);
        EXPECT_EQ(model_set_normal(model, id, 0, 0, 1), 0);
        EXPECT_EQ(model_set_point_joints(model, id, "a", "b"), 0);
        EXPECT_EQ(model_set_gouraud(model, id, 1, 2, 3, 4), 0);
    }
    EXPECT_EQ(model_count_points(model), 0);
    EXPECT_EQ(model->has_normals, 0);
    EXPECT_EQ(model->has_gouraud, 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(PointTest, NullModelIsRefusedSilently) {
    EXPECT_EQ(model_set_point(nullptr, 1, 1, 2, 3, 1.0f), 0);
    EXPECT_EQ(model_set_normal(nullptr, 1, 0, 0, 1), 0);
    EXPECT_EQ(model_set_point_joints(nullptr, 1, "a", "b"), 0);
    EXPECT_EQ(model_set_gouraud(nullptr, 1, 1, 2, 3, 4), 0);
    EXPECT_EQ(model_find_point(nullptr, 1), nullptr);
    EXPECT_EQ(model_point_colour(nullptr, 1), nullptr);
    EXPECT_EQ(model_point_at(nullptr, 0, 0, 0), -1);
    EXPECT_EQ(model_point_with_normal(nullptr, 0, 0, 1), -1);
    EXPECT_EQ(model_highest_point(nullptr), -1);
    EXPECT_EQ(model_remove_point(nullptr, 1), 0);
    model_grow_bounds(nullptr, 1, 2, 3);
}

TEST_F(PointTest, NormalAloneCreatesAPointAtTheOriginWithWeightZero) {
    ASSERT_EQ(model_set_normal(model, 3, 0.0f, 3.0f, 4.0f), 1);
    const Point* point = model_find_point(model, 3);
    ASSERT_NE(point, nullptr);
    expect_vec(0, 0, 0, point->position);
    EXPECT_EQ(point->weight, 0.0f);
    EXPECT_EQ(point->gouraud[0], 127);
    EXPECT_FLOAT_EQ(point->normal.y, 0.6f);
    EXPECT_FLOAT_EQ(point->normal.z, 0.8f);
    EXPECT_EQ(model->has_normals, 1);
}

TEST_F(PointTest, NormalLeavesPositionAndBoxAlone) {
    model_set_point(model, 1, 5, 6, 7, 1.0f);
    model_set_normal(model, 1, 1, 0, 0);
    model_set_normal(model, 2, 1, 0, 0);
    expect_vec(5, 6, 7, model_find_point(model, 1)->position);
    expect_vec(5, 6, 7, model->bounds_min);
    expect_vec(5, 6, 7, model->bounds_max);
}

TEST_F(PointTest, NormalOfLengthZeroIsNotCaught) {
    ASSERT_EQ(model_set_normal(model, 1, 0, 0, 0), 1);
    EXPECT_TRUE(std::isnan(model_find_point(model, 1)->normal.x));
}

TEST_F(PointTest, WeightIsClamped) {
    model_set_point(model, 1, 0, 0, 0, 5.0f);
    model_set_point(model, 2, 0, 0, 0, -3.0f);
    model_set_point(model, 3, 0, 0, 0, 0.5f);
    EXPECT_EQ(model_find_point(model, 1)->weight, 2.0f);
    EXPECT_EQ(model_find_point(model, 2)->weight, -1.0f);
    EXPECT_EQ(model_find_point(model, 3)->weight, 0.5f);
}

TEST_F(PointTest, SettingAgainOverwritesThePointAndNeverShrinksTheBox) {
    model_set_point(model, 1, 0, 0, 0, 1.0f);
    model_set_point(model, 2, 100, 0, 0, 1.0f);
    model_set_point(model, 2, 1, 1, 1, 1.0f);
    EXPECT_EQ(model_count_points(model), 2);
    expect_vec(1, 1, 1, model_find_point(model, 2)->position);
    expect_vec(100, 1, 1, model->bounds_max);
}

TEST_F(PointTest, FirstPointSetsTheBoxExactlyAlsoFarFromTheOrigin) {
    model_set_point(model, 1, 100, 200, 300, 1.0f);
    expect_vec(100, 200, 300, model->bounds_min);
    expect_vec(100, 200, 300, model->bounds_max);
}

TEST_F(PointTest, WithASinglePointEveryGrowthResetsTheBox) {
    model_set_point(model, 1, 100, 200, 300, 1.0f);
    model_grow_bounds(model, -1, -2, -3);
    expect_vec(-1, -2, -3, model->bounds_min);
    expect_vec(-1, -2, -3, model->bounds_max);
}

TEST_F(PointTest, BoxGrowsPerAxis) {
    model_set_point(model, 1, 0, 0, 0, 1.0f);
    model_set_point(model, 2, 5, -6, 0, 1.0f);
    model_grow_bounds(model, -1, 2, 7);
    expect_vec(-1, -6, 0, model->bounds_min);
    expect_vec(5, 2, 7, model->bounds_max);
}

TEST_F(PointTest, JointsOfAPointAreLookedUpAndUnknownOnesAreNull) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 0);
    ASSERT_EQ(model_set_point_joints(model, 1, "hip", "world"), 1);
    EXPECT_EQ(model_find_joint(model, "hip"), model_find_point(model, 1)->joint_a);
    EXPECT_EQ(model_find_point(model, 1)->joint_b, nullptr);
    ASSERT_EQ(model_set_point_joints(model, 1, "nobody", "hip"), 1);
    EXPECT_EQ(model_find_point(model, 1)->joint_a, nullptr);
}

TEST_F(PointTest, GouraudForAnUnknownPointFailsAndCreatesNone) {
    EXPECT_EQ(model_set_gouraud(model, 5, 1, 2, 3, 4), 0);
    EXPECT_EQ(error(), "gouraud colour defined for non existant point");
    EXPECT_EQ(model_count_points(model), 0);
    EXPECT_EQ(model->has_gouraud, 0);
}

TEST_F(PointTest, GouraudIsCutToBytes) {
    model_set_point(model, 1, 0, 0, 0, 1.0f);
    ASSERT_EQ(model_set_gouraud(model, 1, 256 + 7, -1, 255, 512), 1);
    const Point* point = model_find_point(model, 1);
    EXPECT_EQ(point->gouraud[0], 7);
    EXPECT_EQ(point->gouraud[1], 255);
    EXPECT_EQ(point->gouraud[2], 255);
    EXPECT_EQ(point->gouraud[3], 0);
    EXPECT_EQ(model->has_gouraud, 1);
}

TEST_F(PointTest, PointsOfChildrenAreFoundDepthFirstAndOwnOnesWin) {
    model_add_child(model, nullptr, "empty", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    Model* child = add_child();
    Model* leaf = model_create("leaf.mod", child);
    model_add_child(child, leaf, "leaf", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    Model* second = add_child();
    model_set_point(leaf, 1, 10, 0, 0, 1.0f);
    model_set_point(second, 1, 20, 0, 0, 1.0f);
    EXPECT_EQ(model_find_point(model, 1)->position.x, 10.0f);
    model_set_point(model, 1, 30, 0, 0, 1.0f);
    EXPECT_EQ(model_find_point(model, 1)->position.x, 30.0f);
    EXPECT_EQ(model_find_point(model, 2), nullptr);
}

TEST_F(PointTest, SetPointNeverWritesIntoAChild) {
    Model* child = add_child();
    model_set_point(child, 1, 10, 0, 0, 1.0f);
    model_set_point(model, 1, 20, 0, 0, 1.0f);
    EXPECT_EQ(model_find_point(child, 1)->position.x, 10.0f);
    EXPECT_EQ(model_count_points(model), 1);
}

TEST_F(PointTest, GouraudReachesAPointOfAChild) {
    Model* child = add_child();
    model_set_point(child, 1, 10, 0, 0, 1.0f);
    EXPECT_EQ(model_set_gouraud(model, 1, 9, 8, 7, 6), 1);
    EXPECT_EQ(model_find_point(child, 1)->gouraud[0], 9);
    EXPECT_EQ(model_count_points(model), 0);
}

TEST_F(PointTest, AbsentPositionAndNormalLeaveTheirTexts) {
    EXPECT_EQ(model_point_position(model, 1), nullptr);
    EXPECT_EQ(error(), "point does not exist");
    EXPECT_EQ(model_find_normal(model, 1), nullptr);
    EXPECT_EQ(error(), "normal does not exist");
    EXPECT_EQ(model_point_colour(model, 1), nullptr);
}

TEST_F(PointTest, PositionAndNormalAreCopies) {
    model_set_point(model, 1, 1, 2, 3, 1.0f);
    const Vec3* position = model_point_position(model, 1);
    const Vec3* normal = model_find_normal(model, 1);
    ASSERT_NE(position, nullptr);
    ASSERT_NE(normal, nullptr);
    expect_vec(1, 2, 3, *position);
    expect_vec(0, 0, 1, *normal);
    EXPECT_NE(&model_find_point(model, 1)->position, position);
    EXPECT_NE(&model_find_point(model, 1)->normal, normal);
}

TEST_F(PointTest, ColourChangesGreenAndBlueOver) {
    model_set_point(model, 1, 0, 0, 0, 1.0f);
    model_set_gouraud(model, 1, 10, 20, 30, 40);
    const unsigned char* colour = model_point_colour(model, 1);
    ASSERT_NE(colour, nullptr);
    EXPECT_EQ(colour[0], 10);
    EXPECT_EQ(colour[1], 30);
    EXPECT_EQ(colour[2], 20);
    EXPECT_EQ(colour[3], 40);
}

TEST_F(PointTest, GettersOfAPointInHandKeepTheStoredOrder) {
    model_set_point(model, 1, 1, 2, 3, 1.0f);
    model_set_gouraud(model, 1, 10, 20, 30, 40);
    const Point* point = model_find_point(model, 1);
    Vec3 position{};
    Vec3 normal{};
    float colour[4] = {};
    point_get_position(&position, point);
    point_get_normal(&normal, point);
    point_get_colour(colour, point);
    expect_vec(1, 2, 3, position);
    expect_vec(0, 0, 1, normal);
    EXPECT_EQ(colour[1], 20.0f);
    EXPECT_EQ(colour[2], 30.0f);
    EXPECT_EQ(colour[3], 40.0f);
}

TEST_F(PointTest, GettersOfANullPointGiveZerosAnd255) {
    Vec3 position{9, 9, 9};
    Vec3 normal{9, 9, 9};
    float colour[4] = {};
    point_get_position(&position, nullptr);
    point_get_normal(&normal, nullptr);
    point_get_colour(colour, nullptr);
    expect_vec(0, 0, 0, position);
    expect_vec(0, 0, 0, normal);
    for (const float channel : colour) { EXPECT_EQ(channel, 255.0f); }
}

TEST_F(PointTest, SearchByPlaceAndNormalFindsTheFirstInListOrder) {
    model_set_point(model, 9, 1, 2, 3, 1.0f);
    model_set_point(model, 4, 1, 2, 3, 1.0f);
    model_set_normal(model, 4, 2, 0, 0);
    EXPECT_EQ(model_point_at(model, 1, 2, 3), 9);
    EXPECT_EQ(model_point_at(model, 1, 2, 4), -1);
    EXPECT_EQ(model_point_with_normal(model, 1, 0, 0), 4);
    EXPECT_EQ(model_point_with_normal(model, 0, 1, 0), -1);
}

TEST_F(PointTest, HighestPointIsTheHighestId) {
    EXPECT_EQ(model_highest_point(model), -1);
    model_set_point(model, 90000, 0, 0, 0, 1.0f);
    model_set_point(model, 4, 0, 0, 0, 1.0f);
    EXPECT_EQ(model_highest_point(model), 90000);
}

TEST_F(PointTest, RemovePointTakesOneAway) {
    model_set_point(model, 1, 0, 0, 0, 1.0f);
    EXPECT_EQ(model_remove_point(model, 1), 1);
    EXPECT_EQ(model_remove_point(model, 1), 0);
    EXPECT_EQ(model_find_point(model, 1), nullptr);
}

TEST_F(PointTest, APointInTheSlotOfARemovedOneKeepsWeightAndSecondJointOnly) {
    model_add_joint(model, "hip", 0, 0, 0, "world", 0);
    model_set_point(model, 1, 1, 2, 3, 0.5f);
    model_set_point_joints(model, 1, "hip", "hip");
    model_remove_point(model, 1);
    model_set_normal(model, 2, 0, 0, 1);
    const Point* point = model_find_point(model, 2);
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(point->weight, 0.5f);
    EXPECT_EQ(model_find_joint(model, "hip"), point->joint_b);
    EXPECT_EQ(point->joint_a, nullptr);
    expect_vec(0, 0, 0, point->position);
}

TEST_F(PointTest, RoundingGoesToTheNearestWholeNumbersAndTellsTheLargestStep) {
    model_set_point(model, 1, 1, 2, 3, 1.0f);
    model_set_point(model, 2, 4, 5, 6, 1.0f);
    model_add_joint(model, "hip", 0, 0, 0, "world", 0);
    const int64_t changes = model->changes;
    EXPECT_EQ(model_round_places(model), 0.0f);
    EXPECT_EQ(model->changes, changes);
    model_find_point(model, 1)->position = {1.25f, -2.5f, 3.0f};
    model_find_point(model, 2)->position = {std::nanf(""), 1e30f, 5.75f};
    model_find_joint(model, "hip")->position.y = 0.375f;
    EXPECT_EQ(model_round_places(model), 0.5f);
    EXPECT_EQ(model->changes, changes + 1);
    expect_vec(1, -3, 3, model_find_point(model, 1)->position);
    EXPECT_TRUE(std::isnan(model_find_point(model, 2)->position.x));
    EXPECT_EQ(model_find_point(model, 2)->position.y, 1e30f);
    EXPECT_EQ(model_find_joint(model, "hip")->position.y, 0.0f);
    EXPECT_EQ(model_round_places(nullptr), 0.0f);
}

}  // namespace
}  // namespace pelt
