#include "scene/vertex.h"

#include <gtest/gtest.h>

#include <cmath>

#include "application/session_lifecycle.h"
#include "motion/transform_state.h"

namespace pelt {
namespace {

class Vertices : public testing::Test {
protected:
    void SetUp() override {
        session_init(&session);
        model = model_create("vertex.mod", nullptr);
        model_add_layer(model, "body", 127, 127, 127, 0, 0, 0);
    }
    void TearDown() override {
        session_forget_model(&session, model);
        model_release(model);
        session_reset(&session, 0);
    }

    Point* add_point(int32_t id, int32_t x, int32_t y, int32_t z) {
        model_set_point(model, id, x, y, z, 1.0f);
        return list_find<Point>(&model->points, id);
    }

    Triangle* add_triangle(int quad, const int32_t* points, const int32_t* normals = nullptr,
                           const int32_t* controls = nullptr, int curve_type = 0) {
        EXPECT_EQ(model_add_triangle(model, "body", quad, points, normals, controls, curve_type), 1);
        Triangle* last = nullptr;
        for (Triangle& t : list_elements<Triangle>(model_find_layer(model, "body")->triangles)) { last = &t; }
        return last;
    }

    // Points 10 to 13, so that id and slot differ: a square in the plane z = 0, in strip order.
    void add_square() {
        add_point(10, 0, 0, 0);
        add_point(11, 2, 0, 0);
        add_point(12, 0, 2, 0);
        add_point(13, 2, 2, 4);
    }

    Session session{};
    Model* model = nullptr;
};

void expect_vector(const Vec3& v, double x, double y, double z) {
    EXPECT_NEAR(v.x, x, 1e-6);
    EXPECT_NEAR(v.y, y, 1e-6);
    EXPECT_NEAR(v.z, z, 1e-6);
}

TEST_F(Vertices, CacheOfATriangleHoldsSlotsAndTheFaceNormal) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 0};
    const int32_t normals[4] = {13, 10, 11, 0};
    Triangle* triangle = add_triangle(0, points, normals);
    const int32_t id = next_triangle_cache_id;
    const TriangleCache* cache = triangle_cache_get(&session, model, triangle);
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(cache->id, id);
    EXPECT_EQ(next_triangle_cache_id, id + 1);
    EXPECT_EQ(cache->triangle, triangle);
    EXPECT_EQ(triangle->state_index, list_index_of(&session.triangle_caches, id, 0));
    const int32_t point_slots[4] = {0, 1, 2, -1};
    const int32_t normal_slots[4] = {3, 0, 1, -1};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(cache->point_slots[i], point_slots[i]);
        EXPECT_EQ(cache->normal_slots[i], normal_slots[i]);
    }
    for (const int32_t slot : cache->control_slots) { EXPECT_EQ(slot, -1); }
    // u = (1, 0, 0), v = (0, 1, 0), normal = v cross u
    expect_vector(cache->face_normal, 0, 0, -1);
    expect_vector(cache->face_normal_2, 0, 0, 0);
    EXPECT_EQ(cache->joint_span, 1);
}

TEST_F(Vertices, CacheOfAQuadHasTheNormalOfItsSecondHalf) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 13};
    const TriangleCache* cache = triangle_cache_get(&session, model, add_triangle(1, points));
    for (int i = 0; i < 4; ++i) { EXPECT_EQ(cache->point_slots[i], i); }
    expect_vector(cache->face_normal, 0, 0, -1);
    // Corners 2, 1, 3: u = (2, -2, 0), v = (2, 0, 4), v cross u = (8, 8, -4), length 12.
    expect_vector(cache->face_normal_2, 8.0 / 12, 8.0 / 12, -4.0 / 12);
}

TEST_F(Vertices, ControlsOfACurvedTriangleAreSixAndOfAQuadEight) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 13};
    const int32_t controls[8] = {13, 12, 11, 10, 13, 12, 11, 10};
    const TriangleCache* six = triangle_cache_get(&session, model, add_triangle(0, points, nullptr, controls, 3));
    const int32_t expected_six[8] = {3, 2, 1, 0, 3, 2, -1, -1};
    for (int i = 0; i < 8; ++i) { EXPECT_EQ(six->control_slots[i], expected_six[i]); }
    const TriangleCache* eight = triangle_cache_get(&session, model, add_triangle(1, points, nullptr, controls, 4));
    const int32_t expected_eight[8] = {3, 2, 1, 0, 3, 2, 1, 0};
    for (int i = 0; i < 8; ++i) { EXPECT_EQ(eight->control_slots[i], expected_eight[i]); }
}

TEST_F(Vertices, ASecondCallGivesTheSameCache) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 0};
    Triangle* triangle = add_triangle(0, points);
    TriangleCache* cache = triangle_cache_get(&session, model, triangle);
    const int32_t id = next_triangle_cache_id;
    EXPECT_EQ(triangle_cache_get(&session, model, triangle), cache);
    EXPECT_EQ(next_triangle_cache_id, id);
    EXPECT_EQ(list_count(&session.triangle_caches), 1);
}

TEST_F(Vertices, CornersWithDifferentFirstJointsSpanTwo) {
    add_square();
    model_add_joint(model, "hip", 0, 0, 0, "world", 1);
    list_find<Point>(&model->points, 11)->joint_a = model_find_joint(model, "hip");
    const int32_t points[4] = {10, 11, 12, 0};
    EXPECT_EQ(triangle_cache_get(&session, model, add_triangle(0, points))->joint_span, 2);
}

TEST_F(Vertices, OnlyTheFourthCornerOfAQuadCountsForTheSpan) {
    add_square();
    model_add_joint(model, "hip", 0, 0, 0, "world", 1);
    list_find<Point>(&model->points, 13)->joint_a = model_find_joint(model, "hip");
    const int32_t points[4] = {10, 11, 12, 13};
    EXPECT_EQ(triangle_cache_get(&session, model, add_triangle(0, points))->joint_span, 1);
    EXPECT_EQ(triangle_cache_get(&session, model, add_triangle(1, points))->joint_span, 2);
}

// Intended: the slots stand until the model is forgotten.
TEST_F(Vertices, CacheIsNotRefreshedUntilTheModelIsForgotten) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 0};
    Triangle* triangle = add_triangle(0, points);
    triangle_cache_get(&session, model, triangle);
    triangle->points[0] = 13;
    EXPECT_EQ(triangle_cache_get(&session, model, triangle)->point_slots[0], 0);
    session_forget_model(&session, model);
    EXPECT_EQ(triangle->state_index, -1);
    EXPECT_EQ(triangle_cache_get(&session, model, triangle)->point_slots[0], 3);
}

TEST_F(Vertices, ACacheInASlotUsedBeforeShowsNothingOfItsFormerTenant) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 13};
    const int32_t controls[8] = {13, 12, 11, 10, 13, 12, 11, 10};
    Triangle* first = add_triangle(1, points, nullptr, controls, 4);
    triangle_cache_get(&session, model, first);
    session_forget_model(&session, model);
    const TriangleCache* cache = triangle_cache_get(&session, model, add_triangle(0, points));
    expect_vector(cache->face_normal_2, 0, 0, 0);
    EXPECT_EQ(cache->point_slots[3], -1);
    EXPECT_EQ(cache->control_slots[0], -1);
}

TEST_F(Vertices, AnIndexThatLeadsNowhereMakesANewCache) {
    add_square();
    const int32_t points[4] = {10, 11, 12, 0};
    Triangle* triangle = add_triangle(0, points);
    triangle->state_index = 1000;
    const TriangleCache* cache = triangle_cache_get(&session, model, triangle);
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(cache->triangle, triangle);
    EXPECT_NE(triangle->state_index, 1000);
}

// The check of an added triangle finds a point of a child too, which no slot of this model stands for.
TEST_F(Vertices, AReferenceToAPointOfAChildHasNoSlot) {
    add_square();
    Model* child = model_create("child.mod", model);
    model_set_point(child, 77, 5, 5, 5, 1.0f);
    model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    const int32_t points[4] = {10, 11, 77, 0};
    const TriangleCache* cache = triangle_cache_get(&session, model, add_triangle(0, points));
    EXPECT_EQ(cache->point_slots[2], -1);
    EXPECT_EQ(point_position(&session, model, cache->point_slots[2], true), nullptr);
}

TEST_F(Vertices, SlotsBeyondSixteenBitsAreKept) {
    for (int32_t id = 40001; id <= 80000; ++id) { add_point(id, 0, 0, 0); }
    add_square();
    const int32_t points[4] = {10, 11, 12, 0};
    const TriangleCache* cache = triangle_cache_get(&session, model, add_triangle(0, points));
    EXPECT_EQ(cache->point_slots[0], 40000);
    EXPECT_EQ(cache->point_slots[2], 40002);
    EXPECT_FLOAT_EQ(point_position(&session, model, cache->point_slots[1], true)->x, 2.0f);
}

TEST_F(Vertices, PointsAreFoundBySlotAndById) {
    add_square();
    EXPECT_EQ(point_position(&session, model, 1, true)->x, 2.0f);
    EXPECT_EQ(point_position(&session, model, 13, false)->z, 4.0f);
    EXPECT_EQ(point_position(&session, model, 1, false), nullptr);
    EXPECT_EQ(point_position(&session, model, 13, true), nullptr);
}

TEST_F(Vertices, NegativeAndStaleReferencesGiveNull) {
    add_square();
    model_remove_point(model, 12);
    for (const int32_t slot : {-1, -2, INT32_MIN, 2, 4, 15, 16, 1000, INT32_MAX}) {
        EXPECT_EQ(point_position(&session, model, slot, true), nullptr) << slot;
        EXPECT_EQ(point_normal(&session, model, slot, true), nullptr) << slot;
        EXPECT_EQ(point_colour(&session, model, slot, true), nullptr) << slot;
    }
    for (const int32_t id : {-1, 0, 12, 99, INT32_MAX}) {
        EXPECT_EQ(point_position(&session, model, id, false), nullptr) << id;
        EXPECT_EQ(point_normal(&session, model, id, false), nullptr) << id;
        EXPECT_EQ(point_colour(&session, model, id, false), nullptr) << id;
    }
}

TEST_F(Vertices, APointWithoutAStateIsAtRest) {
    Point* point = add_point(10, 1, 2, 3);
    model_set_normal(model, 10, 0, 2, 0);
    EXPECT_EQ(point_position(&session, model, 10, false), &point->position);
    EXPECT_EQ(point_normal(&session, model, 10, false), &point->normal);
}

TEST_F(Vertices, TheStateOfAPointWins) {
    Point* point = add_point(10, 1, 2, 3);
    PointState* state = point_state(&session, point);
    state->position = {7, 8, 9};
    state->normal = {1, 0, 0};
    for (const bool by_slot : {true, false}) {
        const int32_t reference = by_slot ? 0 : 10;
        EXPECT_EQ(point_position(&session, model, reference, by_slot)->x, 7.0f);
        EXPECT_EQ(point_normal(&session, model, reference, by_slot)->x, 1.0f);
    }
    EXPECT_EQ(point_posed_position(&session, point), &state->position);
    EXPECT_EQ(point_posed_normal(&session, point), &state->normal);
}

TEST_F(Vertices, AStateThatIsGoneLeavesThePointAtRest) {
    Point* point = add_point(10, 1, 2, 3);
    point->state_index = 500;
    EXPECT_EQ(point_position(&session, model, 10, false), &point->position);
    point->state_index = -1;
}

TEST_F(Vertices, ColoursAreThoseOfThePointInStoredOrder) {
    add_point(10, 1, 2, 3);
    model_set_gouraud(model, 10, 11, 22, 33, 44);
    const unsigned char* colour = point_colour(&session, model, 10, false);
    ASSERT_NE(colour, nullptr);
    EXPECT_EQ(colour[0], 11);
    EXPECT_EQ(colour[1], 22);
    EXPECT_EQ(colour[2], 33);
    EXPECT_EQ(colour[3], 44);
}

}  // namespace
}  // namespace pelt
