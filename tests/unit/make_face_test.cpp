// Faces made, turned over, and their normals.
#include "edit/make_face.h"

#include <gtest/gtest.h>

#include <cmath>

#include "edit/rebuild_normals.h"
#include "support/modelling_scene.h"

namespace pelt {
namespace {

using namespace edit_model;

class MakeFaceTest : public ModellingTest {
protected:
    MakeFaceTest() {
        put_points(model, {{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}, {20, 5, 0}, {5, 5, 30}});
        put_layer(model, "body");
        put_layer(model, "roof");
    }
    bool face(const char* layer, FaceForm form, const std::vector<int32_t>& ids, int32_t type = 0) {
        return edit_add_face(&session, model, layer_of(model, layer), {form, type, ids}, &made, &refused);
    }
    bool flip(const std::vector<PrimitiveName>& names) { return edit_flip(&session, model, names, &refused); }
    Vec3 normal(int32_t id) { return point_of(model, id)->normal; }

    // The sum of cross products of the triangles of a strip: which way it faces, however it is cut.
    Vec3 facing(const std::vector<int>& strip) {
        Vec3 sum{0, 0, 0};
        for (size_t i = 0; i + 2 < strip.size(); ++i) {
            const Vec3 a = point_of(model, strip[i])->position;
            const Vec3 u = vec_subtract(point_of(model, strip[i + 1])->position, a);
            const Vec3 v = vec_subtract(point_of(model, strip[i + 2])->position, a);
            const float sign = i % 2 == 0 ? 1.0f : -1.0f;
            sum.x += sign * (u.y * v.z - u.z * v.y);
            sum.y += sign * (u.z * v.x - u.x * v.z);
            sum.z += sign * (u.x * v.y - u.y * v.x);
        }
        return sum;
    }

    PrimitiveName made{};
};

TEST_F(MakeFaceTest, TriangleStandsAsItWasToldBehindTheOthers) {
    put_triangle(model, "roof", {1, 2, 3});
    put_triangle(model, "roof", {2, 3, 4});
    list_remove_slot(&layer_of(model, "roof")->triangles, 0);
    expect_step([&] { return face("roof", FaceForm::TRIANGLE, {4, 5, 6}); });
    EXPECT_EQ(triangles_of(model, "roof"), (std::vector<Ids>{{2, 3, 4}, {4, 5, 6}}));
    EXPECT_EQ(triangle_normals_of(model, "roof").back(), (Ids{4, 5, 6}));
    EXPECT_EQ(made.kind, PrimitiveKind::TRIANGLE);
    EXPECT_EQ(made.id, last("roof").id);
}

TEST_F(MakeFaceTest, AQuadsOutlineIsStoredInTheOrderOfAStrip) {
    expect_step([&] { return face("body", FaceForm::QUAD, {1, 2, 3, 4}); });
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 2, 4, 3}}));
}

TEST_F(MakeFaceTest, APolygonsOutlineIsLaidFromSideToSide) {
    expect_step([&] { return face("body", FaceForm::POLYGON, {1, 2, 3, 5, 4}); });
    EXPECT_EQ(strips_of(model, "body"), (std::vector<Strip>{{{1, 2, 4, 3, 5}, {1, 2, 4, 3, 5}}}));
    EXPECT_EQ(made.kind, PrimitiveKind::POLYGON);
    // Twice the area of the square and the triangle beside it; clockwise from above.
    expect_vector(facing({1, 2, 4, 3, 5}), {0, 0, -300});
}

TEST_F(MakeFaceTest, CurvedFacesTakeTheNormalsAtTheEndsOfTheirEdges) {
    expect_step([&] { return face("body", FaceForm::CURVED, {1, 2, 3}, 2); });
    const Triangle* triangle = last_triangle(layer_of(model, "body"));
    EXPECT_EQ(triangle->curve_type, 2);
    EXPECT_EQ(Ids(triangle->controls, triangle->controls + 6), (Ids{1, 2, 2, 3, 3, 1}));
    expect_step([&] { return face("body", FaceForm::CURVED, {1, 2, 3, 4}, 4); });
    const Triangle* quad = last_triangle(layer_of(model, "body"));
    EXPECT_EQ(Ids(quad->points, quad->points + 4), (Ids{1, 2, 4, 3}));
    EXPECT_EQ(Ids(quad->controls, quad->controls + 8), (Ids{1, 2, 2, 3, 3, 4, 4, 1}));
}

TEST_F(MakeFaceTest, WhatAFaceCannotBeIsRefused) {
    const auto no_face = [&](FaceForm form, const std::vector<int32_t>& ids, const char* text, int32_t type = 0) {
        expect_refused([&] { return face("body", form, ids, type); }, text);
    };
    no_face(FaceForm::TRIANGLE, {1, 2}, "three corners");
    no_face(FaceForm::TRIANGLE, {1, 2, 3, 4}, "three corners");
    no_face(FaceForm::QUAD, {1, 2, 3}, "four corners");
    no_face(FaceForm::POLYGON, {1, 2}, "3 to 255");
    no_face(FaceForm::POLYGON, std::vector<int32_t>(256, 1), "3 to 255");
    no_face(FaceForm::TRIANGLE, {1, 2, 1}, "point 1 as a corner once");
    no_face(FaceForm::TRIANGLE, {1, 2, 99}, "no point 99");
    no_face(FaceForm::CURVED, {1, 2, 3}, "type 1, 2 or 3", 4);
    no_face(FaceForm::CURVED, {1, 2, 3, 4}, "2 or 4", 3);
    put_point(model, 40000, {1, 1, 1});
    no_face(FaceForm::TRIANGLE, {1, 2, 40000}, "point 40000");
    EXPECT_EQ(refused.kind, EDIT_STATE);
}

TEST_F(MakeFaceTest, ANewFaceGivesItsPointsANormalAndLeavesThoseOfOthers) {
    put_triangle(model, "roof", {1, 2, 3});
    point_of(model, 1)->normal = {1, 0, 0};
    // Clockwise from above: its front is up.
    expect_step([&] { return face("body", FaceForm::TRIANGLE, {1, 3, 4}); });
    expect_vector(normal(1), {1, 0, 0});
    expect_vector(normal(4), {0, 0, 1});
    EXPECT_EQ(model->has_normals, 1);
    expect_step([&] { return face("body", FaceForm::TRIANGLE, {5, 4, 6}); });
    expect_vector(normal(4), {0, 0, 1});
    // (20,5,0), (10,0,0), (5,5,30): the cross product of the edges is (-150, 300, -75) or its opposite.
    const float size = std::sqrt(150.0f * 150 + 300.0f * 300 + 75.0f * 75);
    expect_vector(normal(5), {150 / size, -300 / size, 75 / size}, 1e-6f);
    expect_vector(normal(6), normal(5));
}

TEST_F(MakeFaceTest, AFaceWithoutADirectionLeavesNormalsAlone) {
    put_point(model, 7, {1, 2, 3});
    put_point(model, 8, {2, 4, 6});
    expect_step([&] { return face("body", FaceForm::TRIANGLE, {1, 7, 8}); });
    expect_vector(normal(8), {0, 0, 1});
}

TEST_F(MakeFaceTest, FlipTurnsEachKindOver) {
    put_triangle(model, "body", {1, 2, 3}, {4, 5, 6, 0});
    const PrimitiveName triangle = last("body");
    put_triangle(model, "body", {1, 2, 4, 3});
    const PrimitiveName quad = last("body");
    put_polygon(model, "roof", {1, 2, 4, 3, 5});
    const PrimitiveName five = last("roof", PrimitiveKind::POLYGON);
    put_polygon(model, "roof", {1, 2, 4, 3});
    const PrimitiveName four = last("roof", PrimitiveKind::POLYGON);
    expect_step([&] { return flip({triangle, quad, five, four}); });
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 3, 2}, {1, 4, 2, 3}}));
    EXPECT_EQ(triangle_normals_of(model, "body")[0], (Ids{4, 6, 5}));
    const std::vector<Strip> strips = strips_of(model, "roof");
    EXPECT_EQ(strips[1].points, (Ids{1, 4, 2, 3}));
    expect_vector(facing(strips[0].points), {0, 0, 300});
    expect_vector(facing(strips[1].points), {0, 0, 200});
    // Twice is not at all.
    ASSERT_TRUE(flip({triangle, quad, five, four}));
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 2, 3}, {1, 2, 4, 3}}));
    EXPECT_EQ(strips_of(model, "roof")[0].points, (Ids{1, 2, 4, 3, 5}));
}

TEST_F(MakeFaceTest, FlipOfALongEvenStripFacesTheOtherWay) {
    put_point(model, 7, {0, 20, 0});
    put_point(model, 8, {10, 20, 0});
    put_polygon(model, "body", {4, 1, 3, 2, 8, 7});
    const Vec3 before = facing({4, 1, 3, 2, 8, 7});
    expect_step([&] { return flip({last("body", PrimitiveKind::POLYGON)}); });
    expect_vector(facing(strips_of(model, "body")[0].points), {-before.x, -before.y, -before.z});
}

// The control normals at the two ends of each edge, by corners.
std::vector<Ids> edge_controls(const Triangle& t) {
    std::vector<Ids> edges;
    const int* ends = triangle_edge_ends(&t);
    for (int i = 0; i < 2 * triangle_corners(&t); i += 2) {
        Ids edge{t.points[ends[i]], t.controls[i], t.points[ends[i + 1]], t.controls[i + 1]};
        if (edge[0] > edge[2]) { edge = {edge[2], edge[3], edge[0], edge[1]}; }
        edges.push_back(edge);
    }
    std::sort(edges.begin(), edges.end());
    return edges;
}

TEST_F(MakeFaceTest, FlipKeepsWhichEdgesAreCurvedAndHow) {
    struct Case {
        Ids corners;
        int type;
    };
    for (const Case& each :
         {Case{{1, 2, 3}, 1}, {{1, 2, 3}, 2}, {{1, 2, 3}, 3}, {{1, 2, 4, 3}, 2}, {{1, 2, 4, 3}, 4}}) {
        Triangle* curved = put_triangle(model, "body", each.corners, {}, each.type);
        const int16_t controls[] = {1, 2, 3, 4, 5, 6, 2, 5};
        std::copy(std::begin(controls), std::end(controls), curved->controls);
        const Triangle before = *curved;
        expect_step([&] { return flip({last("body")}); });
        const Triangle& after = *last_triangle(layer_of(model, "body"));
        EXPECT_EQ(edge_controls(after), edge_controls(before));
        const auto curved_edge = [](const Triangle& t, int i, int k) { return std::minmax(t.points[i], t.points[k]); };
        if (each.type == 1 || each.type == 2) {
            EXPECT_TRUE(curved_edge(before, 0, 1) == curved_edge(after, 0, 1) ||
                        curved_edge(before, 0, 1) == curved_edge(after, 0, 2));
        }
        if (before.quad && each.type == 2) { EXPECT_EQ(curved_edge(before, 2, 3), curved_edge(after, 2, 3)); }
        Ids strip(after.points, after.points + triangle_corners(&after));
        EXPECT_GT(facing(strip).z, 0.0f);
    }
}

TEST_F(MakeFaceTest, FlipTurnsNormalsThatNoOtherFaceUses) {
    put_triangle(model, "body", {1, 2, 3});
    const PrimitiveName first = last("body");
    put_triangle(model, "body", {1, 3, 4}, {1, 6, 4, 0});
    for (int32_t id = 1; id <= 6; ++id) { point_of(model, id)->normal = {0, 0.6f, 0.8f}; }
    model->has_normals = 1;
    expect_step([&] { return flip({first}); });
    expect_vector(normal(1), {0, 0.6f, 0.8f});
    expect_vector(normal(2), {0, -0.6f, -0.8f});
    expect_vector(normal(3), {0, 0.6f, 0.8f});
    expect_vector(normal(6), {0, 0.6f, 0.8f});
    EXPECT_FALSE(std::signbit(normal(2).x));
}

TEST_F(MakeFaceTest, NormalsAreThoseOfTheWholeRebuildForALayersCornersAlone) {
    // A corner of a cube: three sides, of which the roof has one.
    put_point(model, 7, {0, 0, -10});
    put_triangle(model, "body", {1, 4, 7});
    put_triangle(model, "body", {1, 7, 2});
    put_triangle(model, "roof", {1, 2, 4});
    expect_step([&] { return edit_rebuild_normals(&session, model, layer_of(model, "roof"), &refused); });
    const float third = 1.0f / std::sqrt(3.0f);
    EXPECT_NEAR(std::fabs(normal(1).x), third, 1e-6f);
    EXPECT_NEAR(std::fabs(normal(1).y), third, 1e-6f);
    EXPECT_NEAR(normal(1).z, third, 1e-6f);
    expect_vector(normal(7), {0, 0, 1});  // none of the roof's
    EXPECT_EQ(model->has_normals, 1);
    expect_step([&] { return edit_rebuild_normals(&session, model, nullptr, &refused); });
    EXPECT_NEAR(normal(7).z, 0.0f, 1e-6f);
    expect_vector(normal(5), {0, 0, 1});
}

}  // namespace
}  // namespace pelt
