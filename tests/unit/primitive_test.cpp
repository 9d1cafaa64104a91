// Adding triangles, quads, polygons, lines and uvees.
#include "scene/primitive.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/load_error.h"
#include "scene/ids.h"
#include "scene/model.h"

namespace pelt {
namespace {

// As the program starts, before any test.
const int32_t FIRST_IDS[] = {next_triangle_id, next_polygon_id, next_line_id};

class PrimitiveTest : public ::testing::Test {
protected:
    PrimitiveTest() : model(model_create("made.mod", nullptr)) {
        for (int id = 1; id <= 8; ++id) { model_set_point(model, id, 10 * id, 20 * id, 30 * id, 1.0f); }
        model_add_layer(model, "skin", 1, 2, 3, 0, 0, 0);
        load_error_set(nullptr);
    }
    ~PrimitiveTest() override { model_release(model); }

    Layer* layer(const char* name = "skin") { return model_find_layer(model, name); }

    const Triangle* triangle(int slot = 0) { return list_at<Triangle>(&layer()->triangles, slot, 0); }

    int add(int quad, std::vector<int32_t> points, int curve_type = 0, const int32_t* normals = nullptr,
            const int32_t* controls = nullptr) {
        points.resize(4);
        return model_add_triangle(model, "skin", quad, points.data(), normals, controls, curve_type);
    }

    void expect_refused(int result, const char* text, int32_t counter_before) {
        EXPECT_EQ(result, 0);
        EXPECT_STREQ(text, load_error_get());
        EXPECT_EQ(counter_before, next_triangle_id);
        EXPECT_EQ(list_count(&layer()->triangles), 0);
        load_error_set(nullptr);
    }

    Model* model;
};

TEST_F(PrimitiveTest, IdsStartAtOne) {
    for (const int32_t id : FIRST_IDS) { EXPECT_EQ(id, 1); }
}

TEST_F(PrimitiveTest, TriangleWithoutNormalsTakesItsCornersAsNormals) {
    const int32_t id = next_triangle_id;
    ASSERT_EQ(add(0, {1, 2, 3, 7}), 1);
    const Triangle* t = triangle();
    EXPECT_EQ(id, t->id);
    EXPECT_EQ(id + 1, next_triangle_id);
    EXPECT_EQ(t->quad, 0);
    EXPECT_EQ(t->curve_type, 0);
    EXPECT_EQ(t->state_index, -1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(i + 1, t->points[i]);
        EXPECT_EQ(i + 1, t->normals[i]);
    }
    EXPECT_EQ(t->points[3], 0);
    EXPECT_EQ(t->normals[3], 0);
    for (const int16_t control : t->controls) { EXPECT_EQ(control, 0); }
    EXPECT_EQ(t->uvs[3][1], 0.0f);
    EXPECT_EQ(triangle_corners(t), 3);
}

TEST_F(PrimitiveTest, QuadStoresFourCornersAndNormals) {
    const int32_t normals[] = {5, 6, 7, 8};
    ASSERT_EQ(add(1, {1, 2, 3, 4}, 0, normals), 1);
    const Triangle* t = triangle();
    EXPECT_EQ(t->quad, 1);
    EXPECT_EQ(t->points[3], 4);
    EXPECT_EQ(t->normals[3], 8);
    EXPECT_EQ(triangle_corners(t), 4);
}

TEST_F(PrimitiveTest, PointZeroCannotExist) {
    expect_refused(add(0, {0, 1, 2}), "point does not exist", next_triangle_id);
}

TEST_F(PrimitiveTest, MissingCornersNormalsAndControlsAreRefusedWithoutATrace) {
    const int32_t before = next_triangle_id;
    const Vec3 lower = model->bounds_min;
    const int32_t bad_normals[] = {1, 2, 99, 4};
    const int32_t bad_fourth[] = {1, 2, 3, 99};
    const int32_t bad_controls[] = {1, 2, 3, 4, 5, 99, 1, 1};
    const int32_t bad_last_control[] = {1, 2, 3, 4, 5, 6, 7, 99};
    expect_refused(add(0, {1, 2, 99}), "point does not exist", before);
    expect_refused(add(1, {1, 2, 3, 99}), "point does not exist", before);
    expect_refused(add(0, {1, 2, 3}, 0, bad_normals), "normal does not exist", before);
    expect_refused(add(1, {1, 2, 3, 4}, 0, bad_fourth), "normal does not exist", before);
    expect_refused(add(0, {1, 2, 3}, 2, nullptr, bad_controls), "normal does not exist", before);
    expect_refused(add(1, {1, 2, 3, 4}, 2, nullptr, bad_last_control), "normal does not exist", before);
    EXPECT_EQ(lower.x, model->bounds_min.x);
    EXPECT_EQ(add(0, {1, 2, 3, 99}, 0, bad_fourth), 1);
    EXPECT_EQ(add(0, {1, 2, 3, 4}, 2, nullptr, bad_last_control), 1);
    EXPECT_EQ(add(0, {1, 2, 3, 4}, 0, nullptr, bad_controls), 1) << "a flat one does not look at its controls";
}

TEST_F(PrimitiveTest, CurveTypesOutOfRangeAreRefusedWithoutAText) {
    expect_refused(add(0, {1, 2, 3}, -1), nullptr, next_triangle_id);
    expect_refused(add(0, {1, 2, 3}, 5), nullptr, next_triangle_id);
}

TEST_F(PrimitiveTest, QuadTakesCurveTypesTwoAndFourAndATriangleAll) {
    expect_refused(add(1, {1, 2, 3, 4}, 1), nullptr, next_triangle_id);
    expect_refused(add(1, {1, 2, 3, 4}, 3), nullptr, next_triangle_id);
    EXPECT_EQ(add(1, {1, 2, 3, 4}, 2), 1);
    EXPECT_EQ(add(1, {1, 2, 3, 4}, 4), 1);
    for (int type = 0; type <= 4; ++type) { EXPECT_EQ(add(0, {1, 2, 3, 4}, type), 1); }
}

TEST_F(PrimitiveTest, DefaultControlsOfATriangleEndInTheFourthPlaceOfItsPoints) {
    ASSERT_EQ(add(0, {1, 2, 3, 8}, 3), 1);
    const int16_t expected[8] = {1, 2, 2, 3, 3, 8, 0, 0};
    for (int i = 0; i < 8; ++i) { EXPECT_EQ(expected[i], triangle()->controls[i]) << i; }
    EXPECT_EQ(triangle()->curve_type, 3);
}

TEST_F(PrimitiveTest, DefaultControlsOfAQuadGoRoundItsOutline) {
    ASSERT_EQ(add(1, {1, 2, 3, 4}, 2), 1);
    const int16_t expected[8] = {1, 2, 2, 4, 4, 3, 3, 1};
    for (int i = 0; i < 8; ++i) { EXPECT_EQ(expected[i], triangle()->controls[i]) << i; }
}

TEST_F(PrimitiveTest, GivenControlsAreStoredSixOrEight) {
    const int32_t controls[] = {8, 7, 6, 5, 4, 3, 2, 1};
    ASSERT_EQ(add(0, {1, 2, 3}, 1, nullptr, controls), 1);
    ASSERT_EQ(add(1, {1, 2, 3, 4}, 2, nullptr, controls), 1);
    EXPECT_EQ(triangle(0)->controls[5], 3);
    EXPECT_EQ(triangle(0)->controls[6], 0);
    EXPECT_EQ(triangle(1)->controls[7], 1);
}

TEST_F(PrimitiveTest, IdsAreLookedUpIn32BitsAndStoredIn16) {
    model_set_point(model, 65537, 1, 1, 1, 1.0f);
    model_set_point(model, 40000, 1, 1, 1, 1.0f);
    ASSERT_EQ(add(0, {65537, 40000, 3}), 1);
    EXPECT_EQ(triangle()->points[0], 1);
    EXPECT_EQ(40000 - 65536, triangle()->points[1]);
    EXPECT_EQ(add(0, {65538, 2, 3}), 0) << "its low half names a point, the whole does not";
}

TEST_F(PrimitiveTest, AbsentLayerAndNullsAreRefused) {
    const int32_t ids[] = {1, 2, 3, 4};
    EXPECT_EQ(model_add_triangle(nullptr, "skin", 0, ids, nullptr, nullptr, 0), 0);
    EXPECT_EQ(model_add_triangle(model, nullptr, 0, ids, nullptr, nullptr, 0), 0);
    EXPECT_EQ(model_add_polygon(model, nullptr, 3, ids, nullptr), 0);
    EXPECT_EQ(model_add_line(model, nullptr, 3, ids), 0);
    EXPECT_EQ(model_add_uvee(model, nullptr, 1, 0, 0), 0);
    EXPECT_EQ(model_add_uvee(nullptr, "skin", 1, 0, 0), 0);
    EXPECT_EQ(model_add_triangle(model, "skin", 0, nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(model_add_polygon(model, "skin", 3, nullptr, nullptr), 0);
    EXPECT_EQ(model_add_line(model, "skin", 3, nullptr), 0);
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_EQ(model_add_triangle(model, "none", 0, ids, nullptr, nullptr, 0), 0);
    EXPECT_STREQ(load_error_get(), "layer does not exist");
    EXPECT_EQ(model_add_uvee(model, "none", 1, 0, 0), 0);
}

TEST_F(PrimitiveTest, PolygonStoresItsVertices) {
    const int32_t ids[] = {1, 2, 3, 4, 5};
    const int32_t normals[] = {5, 4, 3, 2, 1};
    const int32_t id = next_polygon_id;
    ASSERT_EQ(model_add_polygon(model, "skin", 5, ids, nullptr), 1);
    ASSERT_EQ(model_add_polygon(model, "skin", 5, ids, normals), 1);
    const Polygon* plain = list_at<Polygon>(&layer()->polygons, 0, 0);
    const Polygon* other = list_at<Polygon>(&layer()->polygons, 1, 0);
    EXPECT_EQ(id, plain->id);
    EXPECT_EQ(plain->vertex_count, 5);
    EXPECT_EQ(plain->state_index, -1);
    ASSERT_EQ(list_count(&plain->vertices), 5);
    EXPECT_EQ(list_at<PolygonVertex>(&plain->vertices, 2, 0)->normal, 3);
    EXPECT_EQ(list_at<PolygonVertex>(&other->vertices, 4, 0)->point, 5);
    EXPECT_EQ(list_at<PolygonVertex>(&other->vertices, 4, 0)->normal, 1);
}

TEST_F(PrimitiveTest, PolygonWithAMissingPointOrNormalIsRefused) {
    const int32_t ids[] = {1, 2, 99};
    const int32_t good[] = {1, 2, 3};
    const int32_t before = next_polygon_id;
    EXPECT_EQ(model_add_polygon(model, "skin", 3, ids, nullptr), 0);
    EXPECT_STREQ(load_error_get(), "point does not exist");
    EXPECT_EQ(model_add_polygon(model, "skin", 3, good, ids), 0);
    EXPECT_STREQ(load_error_get(), "normal does not exist");
    EXPECT_EQ(list_count(&layer()->polygons), 0);
    EXPECT_EQ(before, next_polygon_id);
}

TEST_F(PrimitiveTest, PolygonOfAnyCountStaysWithinItsSixteenBits) {
    const std::vector<int32_t> ids(40000, 1);
    EXPECT_EQ(model_add_polygon(model, "skin", 40000, ids.data(), nullptr), 1);
    EXPECT_EQ(model_add_polygon(model, "skin", 0, ids.data(), nullptr), 1);
    EXPECT_EQ(model_add_polygon(model, "skin", -3, ids.data(), nullptr), 1);
    const Polygon* large = list_at<Polygon>(&layer()->polygons, 0, 0);
    EXPECT_EQ(large->vertex_count, 32767);
    EXPECT_EQ(list_count(&large->vertices), 32767);
    EXPECT_EQ(list_at<Polygon>(&layer()->polygons, 2, 0)->vertex_count, 0);
}

TEST_F(PrimitiveTest, LineStoresWholeIdsThatAreReadThroughTheirLowHalf) {
    model_set_point(model, 65537, 1, 1, 1, 1.0f);
    const int32_t ids[] = {65537, 2, 3};
    ASSERT_EQ(model_add_line(model, "skin", 3, ids), 1);
    const Line* line = list_at<Line>(&layer()->lines, 0, 0);
    EXPECT_EQ(line->vertex_count, 3);
    EXPECT_EQ(line->state_index, -1);
    const int32_t stored = *list_at<int32_t>(&line->vertices, 0, 0);
    EXPECT_EQ(stored, 65537);
    EXPECT_EQ(line_point_id(stored), 1);
    EXPECT_EQ(line_point_id(0xFFFF), -1);
    const int32_t bad[] = {1, 99};
    EXPECT_EQ(model_add_line(model, "skin", 2, bad), 0);
    EXPECT_STREQ(load_error_get(), "point does not exist");
}

TEST_F(PrimitiveTest, UveeGivenTwiceKeepsTheSecond) {
    EXPECT_EQ(model_add_uvee(model, "skin", 3, 0.1f, 0.2f), 1);
    EXPECT_EQ(model_add_uvee(model, "skin", 3, 0.3f, 0.4f), 1);
    ASSERT_EQ(list_count(&layer()->uvees), 1);
    const Uvee* uvee = list_find<Uvee>(&layer()->uvees, 3);
    ASSERT_NE(uvee, nullptr);
    EXPECT_EQ(uvee->point, 3);
    EXPECT_EQ(uvee->u, 0.3f);
    EXPECT_EQ(uvee->v, 0.4f);
}

TEST_F(PrimitiveTest, UveeOfAnUnknownPointIsRefused) {
    EXPECT_EQ(model_add_uvee(model, "skin", 99, 0.1f, 0.2f), 0);
    EXPECT_STREQ(load_error_get(), "uvee point not found in model");
    EXPECT_EQ(list_count(&layer()->uvees), 0);
}

TEST_F(PrimitiveTest, PointsOfAChildMayBeNamed) {
    Model* child = model_create("child.mod", model);
    model_set_point(child, 50, 1, 2, 3, 1.0f);
    model_add_child(model, nullptr, "empty", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    EXPECT_EQ(add(0, {1, 2, 50}), 1);
    EXPECT_EQ(model_add_uvee(model, "skin", 50, 0, 0), 1);
}

struct MirrorCase {
    int axis;
    Vec3 expected;  // the corner (10, 20, 30) mirrored
};

TEST_F(PrimitiveTest, MirroredCornersGrowTheBoxAndOtherAxisCodesTakeThemAsTheyAre) {
    const MirrorCase cases[] = {
        {AXIS_X, {-10, 20, 30}},      {AXIS_Y, {10, -20, 30}},      {AXIS_Z, {10, 20, -30}},
        {AXIS_MINUS_X, {10, 20, 30}}, {AXIS_MINUS_Y, {10, 20, 30}}, {AXIS_MINUS_Z, {10, 20, 30}},
    };
    for (const MirrorCase& each : cases) {
        Model* mirrored = model_create("mirrored.mod", nullptr);
        for (int id = 1; id <= 3; ++id) { model_set_point(mirrored, id, 10, 20, 30, 1.0f); }
        model_add_layer(mirrored, "m", 0, 0, 0, 0, 1, each.axis);
        const int32_t ids[] = {1, 2, 3, 0};
        EXPECT_EQ(mirrored->bounds_min.x, 10.0f) << "not before the triangle is added";
        ASSERT_EQ(model_add_triangle(mirrored, "m", 0, ids, nullptr, nullptr, 0), 1);
        EXPECT_EQ(each.expected.x, mirrored->bounds_min.x) << each.axis;
        EXPECT_EQ(each.expected.y, mirrored->bounds_min.y) << each.axis;
        EXPECT_EQ(each.expected.z, mirrored->bounds_min.z) << each.axis;
        EXPECT_EQ(mirrored->bounds_max.x, 10.0f) << each.axis;
        model_release(mirrored);
    }
}

TEST_F(PrimitiveTest, PolygonsAndLinesOfAMirroredLayerGrowTheBoxToo) {
    model_add_layer(model, "m", 0, 0, 0, 0, 1, AXIS_X);
    model_add_layer(model, "n", 0, 0, 0, 0, 1, AXIS_Z);
    const int32_t ids[] = {1, 2, 3};
    ASSERT_EQ(model_add_polygon(model, "m", 3, ids, nullptr), 1);
    EXPECT_EQ(model->bounds_min.x, -30.0f);
    ASSERT_EQ(model_add_line(model, "n", 2, ids), 1);
    EXPECT_EQ(model->bounds_min.z, -60.0f);
}

TEST_F(PrimitiveTest, ACounterBeginsAgainInsteadOfOverflowing) {
    int32_t counter = 2147483646;
    EXPECT_EQ(take_id(&counter), 2147483646);
    EXPECT_EQ(take_id(&counter), 2147483647);
    EXPECT_EQ(take_id(&counter), 1);
}

TEST_F(PrimitiveTest, AStripHasTheVerticesThatItsCountNames) {
    const int32_t ids[] = {1, 2, 3, 4};
    const int32_t normals[] = {5, 6, 7, 8};
    ASSERT_EQ(model_add_polygon(model, "skin", 4, ids, normals), 1);
    Polygon polygon = *list_at<Polygon>(&layer()->polygons, 0, 0);
    ASSERT_EQ(polygon_strip(polygon).size(), 4u);
    EXPECT_EQ(polygon_strip(polygon)[3].point, 4);
    EXPECT_EQ(polygon_strip(polygon)[3].normal, 8);
    polygon.vertex_count = 2;
    EXPECT_EQ(polygon_strip(polygon).size(), 2u);
    polygon.vertex_count = 9;
    EXPECT_EQ(polygon_strip(polygon).size(), 4u);
}

}  // namespace
}  // namespace pelt
