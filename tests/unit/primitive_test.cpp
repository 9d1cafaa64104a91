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
        for (int id = 1; id <= 8; ++id) {
            model_set_point(model, id, 10 * id, 20 * id, 30 * id, 1.0f);
        }
        model_add_layer(model, "skin", 1, 2, 3, 0, 0, 0);
        load_error_set(nullptr);
    }
    ~PrimitiveTest() override { model_release(model); }

    Layer* layer(const char* name = "skin") { return model_find_layer(model, name); }

    const Triangle* triangle(int slot = 0) {
        return static_cast<Triangle*>(list_at(&layer()->triangles, slot, 0));
    }

    int add(int quad, std::vector<int32_t> points, int curve_type = 0, const int32_t* normals = nullptr,
            const int32_t* controls = nullptr) {
        points.resize(4);
        return model_add_triangle(model, "skin", quad, points.data(), normals, controls, curve_type);
    }

    void expect_refused(int result, const char* text, int32_t counter_before) {
        EXPECT_EQ(0, result);
        EXPECT_STREQ(text, load_error_get());
        EXPECT_EQ(counter_before, next_triangle_id);
        EXPECT_EQ(0, list_count(&layer()->triangles));
        load_error_set(nullptr);
    }

    Model* model;
};

TEST_F(PrimitiveTest, IdsStartAtOne) {
    for (const int32_t id : FIRST_IDS) {
        EXPECT_EQ(1, id);
    }
}

TEST_F(PrimitiveTest, TriangleWithoutNormalsTakesItsCornersAsNormals) {
    const int32_t id = next_triangle_id;
    ASSERT_EQ(1, add(0, {1, 2, 3, 7}));
    const Triangle* t = triangle();
    EXPECT_EQ(id, t->id);
    EXPECT_EQ(id + 1, next_triangle_id);
    EXPECT_EQ(0, t->quad);
    EXPECT_EQ(0, t->curve_type);
    EXPECT_EQ(-1, t->state_index);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(i + 1, t->points[i]);
        EXPECT_EQ(i + 1, t->normals[i]);
    }
    EXPECT_EQ(0, t->points[3]);
    EXPECT_EQ(0, t->normals[3]);
    for (const int16_t control : t->controls) {
        EXPECT_EQ(0, control);
    }
    EXPECT_EQ(0.0f, t->uvs[3][1]);
    EXPECT_EQ(3, triangle_corners(t));
}

TEST_F(PrimitiveTest, QuadStoresFourCornersAndNormals) {
    const int32_t normals[] = {5, 6, 7, 8};
    ASSERT_EQ(1, add(1, {1, 2, 3, 4}, 0, normals));
    const Triangle* t = triangle();
    EXPECT_EQ(1, t->quad);
    EXPECT_EQ(4, t->points[3]);
    EXPECT_EQ(8, t->normals[3]);
    EXPECT_EQ(4, triangle_corners(t));
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
    EXPECT_EQ(1, add(0, {1, 2, 3, 99}, 0, bad_fourth));
    EXPECT_EQ(1, add(0, {1, 2, 3, 4}, 2, nullptr, bad_last_control));
    EXPECT_EQ(1, add(0, {1, 2, 3, 4}, 0, nullptr, bad_controls)) << "a flat one does not look at its controls";
}

TEST_F(PrimitiveTest, CurveTypesOutOfRangeAreRefusedWithoutAText) {
    expect_refused(add(0, {1, 2, 3}, -1), nullptr, next_triangle_id);
    expect_refused(add(0, {1, 2, 3}, 5), nullptr, next_triangle_id);
}

TEST_F(PrimitiveTest, QuadTakesCurveTypesTwoAndFourAndATriangleAll) {
    expect_refused(add(1, {1, 2, 3, 4}, 1), nullptr, next_triangle_id);
    expect_refused(add(1, {1, 2, 3, 4}, 3), nullptr, next_triangle_id);
    EXPECT_EQ(1, add(1, {1, 2, 3, 4}, 2));
    EXPECT_EQ(1, add(1, {1, 2, 3, 4}, 4));
    for (int type = 0; type <= 4; ++type) {
        EXPECT_EQ(1, add(0, {1, 2, 3, 4}, type));
    }
}

TEST_F(PrimitiveTest, DefaultControlsOfATriangleEndInTheFourthPlaceOfItsPoints) {
    ASSERT_EQ(1, add(0, {1, 2, 3, 8}, 3));
    const int16_t expected[8] = {1, 2, 2, 3, 3, 8, 0, 0};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(expected[i], triangle()->controls[i]) << i;
    }
    EXPECT_EQ(3, triangle()->curve_type);
}

TEST_F(PrimitiveTest, DefaultControlsOfAQuadGoRoundItsOutline) {
    ASSERT_EQ(1, add(1, {1, 2, 3, 4}, 2));
    const int16_t expected[8] = {1, 2, 2, 4, 4, 3, 3, 1};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(expected[i], triangle()->controls[i]) << i;
    }
}

TEST_F(PrimitiveTest, GivenControlsAreStoredSixOrEight) {
    const int32_t controls[] = {8, 7, 6, 5, 4, 3, 2, 1};
    ASSERT_EQ(1, add(0, {1, 2, 3}, 1, nullptr, controls));
    ASSERT_EQ(1, add(1, {1, 2, 3, 4}, 2, nullptr, controls));
    EXPECT_EQ(3, triangle(0)->controls[5]);
    EXPECT_EQ(0, triangle(0)->controls[6]);
    EXPECT_EQ(1, triangle(1)->controls[7]);
}

TEST_F(PrimitiveTest, IdsAreLookedUpIn32BitsAndStoredIn16) {
    model_set_point(model, 65537, 1, 1, 1, 1.0f);
    model_set_point(model, 40000, 1, 1, 1, 1.0f);
    ASSERT_EQ(1, add(0, {65537, 40000, 3}));
    EXPECT_EQ(1, triangle()->points[0]);
    EXPECT_EQ(40000 - 65536, triangle()->points[1]);
    EXPECT_EQ(0, add(0, {65538, 2, 3})) << "its low half names a point, the whole does not";
}

TEST_F(PrimitiveTest, AbsentLayerAndNullsAreRefused) {
    const int32_t ids[] = {1, 2, 3, 4};
    EXPECT_EQ(0, model_add_triangle(nullptr, "skin", 0, ids, nullptr, nullptr, 0));
    EXPECT_EQ(0, model_add_triangle(model, nullptr, 0, ids, nullptr, nullptr, 0));
    EXPECT_EQ(0, model_add_polygon(model, nullptr, 3, ids, nullptr));
    EXPECT_EQ(0, model_add_line(model, nullptr, 3, ids));
    EXPECT_EQ(0, model_add_uvee(model, nullptr, 1, 0, 0));
    EXPECT_EQ(0, model_add_uvee(nullptr, "skin", 1, 0, 0));
    EXPECT_EQ(0, model_add_triangle(model, "skin", 0, nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(0, model_add_polygon(model, "skin", 3, nullptr, nullptr));
    EXPECT_EQ(0, model_add_line(model, "skin", 3, nullptr));
    EXPECT_EQ(nullptr, load_error_get());
    EXPECT_EQ(0, model_add_triangle(model, "none", 0, ids, nullptr, nullptr, 0));
    EXPECT_STREQ("layer does not exist", load_error_get());
    EXPECT_EQ(0, model_add_uvee(model, "none", 1, 0, 0));
}

TEST_F(PrimitiveTest, PolygonStoresItsVertices) {
    const int32_t ids[] = {1, 2, 3, 4, 5};
    const int32_t normals[] = {5, 4, 3, 2, 1};
    const int32_t id = next_polygon_id;
    ASSERT_EQ(1, model_add_polygon(model, "skin", 5, ids, nullptr));
    ASSERT_EQ(1, model_add_polygon(model, "skin", 5, ids, normals));
    const Polygon* plain = static_cast<Polygon*>(list_at(&layer()->polygons, 0, 0));
    const Polygon* other = static_cast<Polygon*>(list_at(&layer()->polygons, 1, 0));
    EXPECT_EQ(id, plain->id);
    EXPECT_EQ(5, plain->vertex_count);
    EXPECT_EQ(-1, plain->state_index);
    ASSERT_EQ(5, list_count(&plain->vertices));
    EXPECT_EQ(3, static_cast<PolygonVertex*>(list_at(&plain->vertices, 2, 0))->normal);
    EXPECT_EQ(5, static_cast<PolygonVertex*>(list_at(&other->vertices, 4, 0))->point);
    EXPECT_EQ(1, static_cast<PolygonVertex*>(list_at(&other->vertices, 4, 0))->normal);
}

TEST_F(PrimitiveTest, PolygonWithAMissingPointOrNormalIsRefused) {
    const int32_t ids[] = {1, 2, 99};
    const int32_t good[] = {1, 2, 3};
    const int32_t before = next_polygon_id;
    EXPECT_EQ(0, model_add_polygon(model, "skin", 3, ids, nullptr));
    EXPECT_STREQ("point does not exist", load_error_get());
    EXPECT_EQ(0, model_add_polygon(model, "skin", 3, good, ids));
    EXPECT_STREQ("normal does not exist", load_error_get());
    EXPECT_EQ(0, list_count(&layer()->polygons));
    EXPECT_EQ(before, next_polygon_id);
}

TEST_F(PrimitiveTest, PolygonOfAnyCountStaysWithinItsSixteenBits) {
    const std::vector<int32_t> ids(40000, 1);
    EXPECT_EQ(1, model_add_polygon(model, "skin", 40000, ids.data(), nullptr));
    EXPECT_EQ(1, model_add_polygon(model, "skin", 0, ids.data(), nullptr));
    EXPECT_EQ(1, model_add_polygon(model, "skin", -3, ids.data(), nullptr));
    const Polygon* large = static_cast<Polygon*>(list_at(&layer()->polygons, 0, 0));
    EXPECT_EQ(32767, large->vertex_count);
    EXPECT_EQ(32767, list_count(&large->vertices));
    EXPECT_EQ(0, static_cast<Polygon*>(list_at(&layer()->polygons, 2, 0))->vertex_count);
}

TEST_F(PrimitiveTest, LineStoresWholeIdsThatAreReadThroughTheirLowHalf) {
    model_set_point(model, 65537, 1, 1, 1, 1.0f);
    const int32_t ids[] = {65537, 2, 3};
    ASSERT_EQ(1, model_add_line(model, "skin", 3, ids));
    const Line* line = static_cast<Line*>(list_at(&layer()->lines, 0, 0));
    EXPECT_EQ(3, line->vertex_count);
    EXPECT_EQ(-1, line->state_index);
    const int32_t stored = *static_cast<int32_t*>(list_at(&line->vertices, 0, 0));
    EXPECT_EQ(65537, stored);
    EXPECT_EQ(1, line_point_id(stored));
    EXPECT_EQ(-1, line_point_id(0xFFFF));
    const int32_t bad[] = {1, 99};
    EXPECT_EQ(0, model_add_line(model, "skin", 2, bad));
    EXPECT_STREQ("point does not exist", load_error_get());
}

TEST_F(PrimitiveTest, UveeGivenTwiceKeepsTheSecond) {
    EXPECT_EQ(1, model_add_uvee(model, "skin", 3, 0.1f, 0.2f));
    EXPECT_EQ(1, model_add_uvee(model, "skin", 3, 0.3f, 0.4f));
    ASSERT_EQ(1, list_count(&layer()->uvees));
    const Uvee* uvee = static_cast<Uvee*>(list_find(&layer()->uvees, 3));
    ASSERT_NE(nullptr, uvee);
    EXPECT_EQ(3, uvee->point);
    EXPECT_EQ(0.3f, uvee->u);
    EXPECT_EQ(0.4f, uvee->v);
}

TEST_F(PrimitiveTest, UveeOfAnUnknownPointIsRefused) {
    EXPECT_EQ(0, model_add_uvee(model, "skin", 99, 0.1f, 0.2f));
    EXPECT_STREQ("uvee point not found in model", load_error_get());
    EXPECT_EQ(0, list_count(&layer()->uvees));
}

TEST_F(PrimitiveTest, PointsOfAChildMayBeNamed) {
    Model* child = model_create("child.mod", model);
    model_set_point(child, 50, 1, 2, 3, 1.0f);
    model_add_child(model, nullptr, "empty", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    EXPECT_EQ(1, add(0, {1, 2, 50}));
    EXPECT_EQ(1, model_add_uvee(model, "skin", 50, 0, 0));
}

struct MirrorCase {
    int axis;
    Vec3 expected;  // the corner (10, 20, 30) mirrored
};

TEST_F(PrimitiveTest, MirroredCornersGrowTheBoxAndOtherAxisCodesTakeThemAsTheyAre) {
    const MirrorCase cases[] = {
        {AXIS_X, {-10, 20, 30}},        {AXIS_Y, {10, -20, 30}},       {AXIS_Z, {10, 20, -30}},
        {AXIS_MINUS_X, {10, 20, 30}},   {AXIS_MINUS_Y, {10, 20, 30}},  {AXIS_MINUS_Z, {10, 20, 30}},
    };
    for (const MirrorCase& each : cases) {
        Model* mirrored = model_create("mirrored.mod", nullptr);
        for (int id = 1; id <= 3; ++id) {
            model_set_point(mirrored, id, 10, 20, 30, 1.0f);
        }
        model_add_layer(mirrored, "m", 0, 0, 0, 0, 1, each.axis);
        const int32_t ids[] = {1, 2, 3, 0};
        EXPECT_EQ(10.0f, mirrored->bounds_min.x) << "not before the triangle is added";
        ASSERT_EQ(1, model_add_triangle(mirrored, "m", 0, ids, nullptr, nullptr, 0));
        EXPECT_EQ(each.expected.x, mirrored->bounds_min.x) << each.axis;
        EXPECT_EQ(each.expected.y, mirrored->bounds_min.y) << each.axis;
        EXPECT_EQ(each.expected.z, mirrored->bounds_min.z) << each.axis;
        EXPECT_EQ(10.0f, mirrored->bounds_max.x) << each.axis;
        model_release(mirrored);
    }
}

TEST_F(PrimitiveTest, PolygonsAndLinesOfAMirroredLayerGrowTheBoxToo) {
    model_add_layer(model, "m", 0, 0, 0, 0, 1, AXIS_X);
    model_add_layer(model, "n", 0, 0, 0, 0, 1, AXIS_Z);
    const int32_t ids[] = {1, 2, 3};
    ASSERT_EQ(1, model_add_polygon(model, "m", 3, ids, nullptr));
    EXPECT_EQ(-30.0f, model->bounds_min.x);
    ASSERT_EQ(1, model_add_line(model, "n", 2, ids));
    EXPECT_EQ(-60.0f, model->bounds_min.z);
}

TEST_F(PrimitiveTest, ACounterBeginsAgainInsteadOfOverflowing) {
    int32_t counter = 2147483646;
    EXPECT_EQ(2147483646, take_id(&counter));
    EXPECT_EQ(2147483647, take_id(&counter));
    EXPECT_EQ(1, take_id(&counter));
}

}  // namespace
}  // namespace pelt
