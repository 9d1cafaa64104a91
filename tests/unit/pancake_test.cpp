// Laying models flat.
#include "edit/pancake.h"

#include <gtest/gtest.h>

#include <cmath>

#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "motion/root_models.h"

namespace pelt {
namespace {

class PancakeTest : public ::testing::Test {
protected:
    PancakeTest() : model(model_create("made.mod", nullptr)) {
        session_init(&session);
        id = session_add_root(&session, model, nullptr);
    }
    ~PancakeTest() override { session_reset(&session, 1); }

    void point(int32_t point_id, int x, int y, int z) { model_set_point(model, point_id, x, y, z, 1.0f); }
    void layer(const char* name) { model_add_layer(model, name, 1, 2, 3, 0, 0, 0); }

    void triangle(const char* name, int32_t a, int32_t b, int32_t c, int32_t d = 0) {
        const int32_t ids[] = {a, b, c, d};
        ASSERT_EQ(model_add_triangle(model, name, d != 0 ? 1 : 0, ids, nullptr, nullptr, 0), 1);
    }

    void expect_at(int32_t point_id, float x, float y, float z) {
        const Point* found = model_find_point(model, point_id);
        ASSERT_NE(found, nullptr);
        EXPECT_NEAR(x, found->position.x, 1e-3) << point_id;
        EXPECT_NEAR(y, found->position.y, 1e-3) << point_id;
        EXPECT_EQ(z, found->position.z) << point_id;
    }

    Session session{};
    Model* model;
    int32_t id;
};

TEST_F(PancakeTest, PointIsLaidAtItsFullDistanceInItsOwnDirection) {
    Point a{};
    a.position = Vec3{1, 1, 0};
    Point b{};
    b.position = Vec3{4, 1, 4};  // distance 5, direction x
    b.weight = 0.5f;
    b.gouraud[2] = 77;
    b.normal = Vec3{0, 1, 0};
    b.state_index = 9;
    Point out{};
    pancake_point(&a, &b, &out);
    EXPECT_FLOAT_EQ(out.position.x, 6.0f);
    EXPECT_FLOAT_EQ(out.position.y, 1.0f);
    EXPECT_EQ(out.position.z, 0.0f);
    EXPECT_EQ(out.weight, 0.5f);
    EXPECT_EQ(out.gouraud[2], 77);
    EXPECT_EQ(out.normal.y, 1.0f);
    EXPECT_EQ(out.state_index, 9);
}

TEST_F(PancakeTest, AnUprightEdgeGivesANonFinitePlace) {
    Point a{};
    Point b{};
    b.position = Vec3{0, 0, 4};
    Point out{};
    pancake_point(&a, &b, &out);
    EXPECT_FALSE(std::isfinite(out.position.x));
    EXPECT_FALSE(std::isfinite(out.position.y));
    EXPECT_EQ(out.position.z, 0.0f);
}

TEST_F(PancakeTest, AChainKeepsTheLengthOfEachEdgeFromTheStoredPointBefore) {
    point(1, 0, 0, 7);
    point(2, 3, 0, 11);  // 5 from point 1
    point(3, 3, 6, 19);  // 10 from point 2, direction y
    layer("skin");
    triangle("skin", 1, 2, 3);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(1, 0, 0, 0);
    expect_at(2, 5, 0, 0);
    // Laid from where point 2 stood, (3, 0), not from where it lies now, (5, 0).
    expect_at(3, 3, 10, 0);
}

TEST_F(PancakeTest, TheFirstStepOfALaterChainStartsFromTheFlattenedPlace) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    point(3, 0, 8, 0);
    point(4, 6, 0, 8);  // from point 2 as laid, (5, 0, 0): d = (1, 0, 8)
    layer("skin");
    triangle("skin", 1, 2, 3);
    triangle("skin", 2, 4, 3);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(2, 5, 0, 0);
    expect_at(4, 5.0f + std::sqrt(65.0f), 0, 0);
}

TEST_F(PancakeTest, TheFirstChainThatReachesAPointDecidesItsPlace) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    point(3, 0, 8, 0);
    point(4, 0, -100, 50);
    layer("skin");
    triangle("skin", 1, 2, 3);
    triangle("skin", 4, 2, 3);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(2, 5, 0, 0);
    expect_at(4, 0, -100, 0);
}

TEST_F(PancakeTest, PolygonsOfALayerComeBeforeItsTriangles) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    point(3, 0, 8, 0);
    layer("skin");
    triangle("skin", 1, 2, 3);
    const int32_t ids[] = {3, 2, 1};
    ASSERT_EQ(model_add_polygon(model, "skin", 3, ids, nullptr), 1);
    EXPECT_EQ(model_pancake(model), 1);
    // Point 2 from point 3: d = (3, -8, 4), full sqrt(89), flat sqrt(73).
    const float ratio = std::sqrt(89.0f) / std::sqrt(73.0f);
    expect_at(2, 3.0f * ratio, 8.0f - 8.0f * ratio, 0);
}

TEST_F(PancakeTest, AQuadIsWalkedWithFourPoints) {
    point(1, 0, 0, 0);
    point(2, 10, 0, 0);
    point(3, 0, 10, 0);
    point(4, 0, 13, 4);
    layer("skin");
    triangle("skin", 1, 2, 3, 4);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(4, 0, 15, 0);
}

TEST_F(PancakeTest, AFlatModelKeepsItsPositions) {
    point(1, 0, 0, 0);
    point(2, 10, 3, 0);
    point(3, -7, 10, 0);
    layer("skin");
    triangle("skin", 1, 2, 3);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(1, 0, 0, 0);
    expect_at(2, 10, 3, 0);
    expect_at(3, -7, 10, 0);
}

TEST_F(PancakeTest, PointsOfLinesAloneOrOfNothingKeepTheirPlaceAndTheBoxStays) {
    point(1, 0, 0, 5);
    point(2, 3, 0, 9);
    point(3, 0, 8, 5);
    point(4, 1, 2, 3);
    point(5, 4, 5, 6);
    layer("skin");
    triangle("skin", 1, 2, 3);
    const int32_t ids[] = {1, 4};
    ASSERT_EQ(model_add_line(model, "skin", 2, ids), 1);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(1, 0, 0, 0);
    expect_at(4, 1, 2, 3);
    expect_at(5, 4, 5, 6);
    EXPECT_EQ(model->bounds_max.z, 9.0f);
    EXPECT_EQ(model->bounds_min.z, 3.0f);
}

TEST_F(PancakeTest, APolygonThatSaysFewerVerticesThanItHoldsIsWalkedAsFarAsItSays) {
    for (int32_t number = 1; number <= 4; ++number) { point(number, 10 * number, number, 5); }
    layer("skin");
    const int32_t ids[] = {1, 2, 3, 4};
    ASSERT_EQ(model_add_polygon(model, "skin", 4, ids, nullptr), 1);
    list_first<Polygon>(&model_find_layer(model, "skin")->polygons)->vertex_count = 3;
    ASSERT_EQ(model_pancake(model), 1);
    EXPECT_EQ(model_find_point(model, 3)->position.z, 0.0f);
    EXPECT_EQ(model_find_point(model, 4)->position.z, 5.0f);
}

TEST_F(PancakeTest, APointIsPlacedOnlyWhereAllThreeAreGiven) {
    Point a{};
    Point b{};
    b.position = Vec3{3, 0, 4};
    Point out{};
    pancake_point(nullptr, &b, &out);
    pancake_point(&a, nullptr, &out);
    EXPECT_EQ(out.position.x, 0.0f);
    pancake_point(&a, &b, nullptr);
    pancake_point(&a, &b, &out);
    EXPECT_EQ(out.position.x, 5.0f);
}

TEST_F(PancakeTest, NullOrAModelWithoutLayersFails) {
    EXPECT_EQ(model_pancake(nullptr), 0);
    EXPECT_EQ(model_pancake(model), 0);
    selection_add_model(&session, id);
    EXPECT_EQ(selection_pancake(&session), 0);
    EXPECT_EQ(selection_pancake(nullptr), 0);
}

TEST_F(PancakeTest, LayersWithoutTrianglesOrPolygonsSucceedAndChangeNothing) {
    point(1, 1, 2, 3);
    layer("skin");
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(1, 1, 2, 3);
}

TEST_F(PancakeTest, AChainWhoseFirstPointIsMissingIsSkippedAndALaterOnePassedOver) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    KeyedList flattened{};
    list_init(&flattened, sizeof(Point), KEY_INT);
    const int16_t missing_first[] = {9, 1, 2};
    const int16_t negative[] = {-5, 1};
    const int16_t missing_middle[] = {1, 9, 2};
    EXPECT_EQ(pancake_chain(model, &flattened, missing_first, 3), 0);
    EXPECT_EQ(pancake_chain(model, &flattened, negative, 2), 0);
    EXPECT_EQ(pancake_chain(model, &flattened, missing_middle, 0), 0);
    EXPECT_EQ(pancake_chain(model, &flattened, nullptr, 3), 0);
    EXPECT_EQ(pancake_chain(nullptr, &flattened, missing_middle, 3), 0);
    EXPECT_EQ(list_count(&flattened), 0);
    EXPECT_EQ(pancake_chain(model, &flattened, missing_middle, 3), 1);
    ASSERT_EQ(list_count(&flattened), 2);
    EXPECT_FLOAT_EQ(list_find<Point>(&flattened, 2)->position.x, 5.0f);
    list_free(&flattened);
}

TEST_F(PancakeTest, AMissingCornerDoesNotStopTheWalk) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    point(3, 0, 8, 4);
    point(4, 5, 5, 5);
    layer("skin");
    triangle("skin", 4, 1, 2);
    triangle("skin", 1, 2, 3);
    model_remove_point(model, 4);
    EXPECT_EQ(model_pancake(model), 1);
    expect_at(2, 5, 0, 0);
}

TEST_F(PancakeTest, SelectedModelsAreLaidFlatUntilOneFails) {
    point(1, 0, 0, 0);
    point(2, 3, 0, 4);
    point(3, 0, 8, 0);
    layer("skin");
    triangle("skin", 1, 2, 3);
    Model* bare = model_create("bare.mod", nullptr);
    const int32_t bare_id = session_add_root(&session, bare, nullptr);
    selection_add_model(&session, id);
    EXPECT_EQ(selection_pancake(&session), 1);
    expect_at(2, 5, 0, 0);
    selection_add_model(&session, bare_id);
    EXPECT_EQ(selection_pancake(&session), 0);
}

TEST_F(PancakeTest, CornersThatAChildHoldsAreLaidFlatInTheChild) {
    Model* child = model_create("child.mod", model);
    model_set_point(child, 7, 3, 0, 4, 1.0f);
    model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    point(1, 0, 0, 0);
    point(3, 0, 8, 0);
    layer("skin");
    triangle("skin", 1, 7, 3);
    EXPECT_EQ(model_pancake(model), 1);
    EXPECT_FLOAT_EQ(model_find_point(child, 7)->position.x, 5.0f);
    EXPECT_EQ(model_find_point(child, 7)->position.z, 0.0f);
}

}  // namespace
}  // namespace pelt
