// Copies of points and faces, in place and drawn out.
#include "edit/duplicate.h"

#include <gtest/gtest.h>

#include <map>

#include "edit/move_points.h"
#include "support/modelling_scene.h"

namespace pelt {
namespace {

using namespace edit_model;

class DuplicateTest : public ModellingTest {
protected:
    DuplicateTest() {
        put_points(model, {{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}, {20, 5, 0}, {5, 5, 30}});
        put_layer(model, "body");
    }
    bool copy_points(const std::vector<int32_t>& ids) {
        return edit_duplicate_points(&session, model, ids, &made, &refused);
    }
    bool copy_faces(const std::vector<PrimitiveName>& names) {
        return edit_duplicate_primitives(&session, model, names, &made, &refused);
    }
    bool extrude(const std::vector<PrimitiveName>& names, const Vec3& by) {
        return edit_extrude(&session, model, names, by, &made, &refused);
    }

    // How often each edge is gone along in each direction; a closed surface has each once each way.
    std::map<std::pair<int, int>, int> edges() {
        std::map<std::pair<int, int>, int> found;
        for (const Ids& t : triangles_of(model, "body")) {
            const Ids ring = t.size() == 4 ? Ids{t[0], t[1], t[3], t[2]} : t;
            for (size_t i = 0; i < ring.size(); ++i) { ++found[{ring[i], ring[(i + 1) % ring.size()]}]; }
        }
        return found;
    }
    bool is_closed() {
        const auto found = edges();
        return std::all_of(found.begin(), found.end(), [&](const auto& edge) {
            const auto back = found.find({edge.first.second, edge.first.first});
            return edge.second == 1 && back != found.end() && back->second == 1;
        });
    }

    MadeParts made;
};

TEST_F(DuplicateTest, PointsTakeFacesAndLinesThatAreWhollyTheirs) {
    put_triangle(model, "body", {1, 2, 3}, {1, 2, 6, 0});
    put_triangle(model, "body", {1, 2, 6});
    put_polygon(model, "body", {1, 2, 4, 3});
    put_line("body", {4, 1});
    put_line("body", {4, 5});
    model_add_uvee(model, "body", 3, 0.5f, 0.25f);
    model_set_gouraud(model, 3, 127, 9, 127, 0);
    point_of(model, 3)->weight = 0.5f;
    expect_step([&] { return copy_points({3, 1, 2, 4}); });
    EXPECT_EQ(made.points, (Ids{7, 8, 9, 10}));
    EXPECT_EQ(made.primitives.size(), 3u);
    expect_vector(point_of(model, 7)->position, {10, 10, 0});
    EXPECT_EQ(point_of(model, 7)->gouraud[1], 9);
    EXPECT_EQ(point_of(model, 7)->weight, 0.5f);
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 2, 3}, {1, 2, 6}, {8, 9, 7}}));
    EXPECT_EQ(triangle_normals_of(model, "body")[2], (Ids{8, 9, 6}));
    EXPECT_EQ(strips_of(model, "body")[1].points, (Ids{8, 9, 10, 7}));
    EXPECT_EQ(lines_of("body"), (std::vector<Ids>{{4, 1}, {4, 5}, {10, 8}}));
    const Uvee* uvee = list_find<Uvee>(&layer_of(model, "body")->uvees, 7);
    ASSERT_NE(uvee, nullptr);
    EXPECT_EQ(uvee->u, 0.5f);
}

TEST_F(DuplicateTest, FacesTakeTheirPoints) {
    put_triangle(model, "body", {1, 3, 5});
    const PrimitiveName first = last("body");
    put_triangle(model, "body", {5, 3, 4});
    expect_step([&] { return copy_faces({last("body"), first}); });
    EXPECT_EQ(made.points, (Ids{7, 8, 9, 10}));  // of 1, 3, 4 and 5
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 3, 5}, {5, 3, 4}, {7, 8, 10}, {10, 8, 9}}));
}

TEST_F(DuplicateTest, IdsFollowTheHighestAndEndWithWhatFacesCanName) {
    put_point(model, 32766, {1, 1, 1});
    EXPECT_TRUE(copy_points({1}));
    EXPECT_EQ(made.points, (Ids{32767}));
    expect_refused([&] { return copy_points({1}); }, "32767");
    EXPECT_EQ(refused.kind, EDIT_STATE);
    put_triangle(model, "body", {1, 2, 3});
    expect_refused([&] { return copy_faces({last("body")}); }, "32767");
    expect_refused([&] { return extrude({last("body")}, {0, 0, 1}); }, "32767");
}

TEST_F(DuplicateTest, BoundPointsAreCounted) {
    Joint* arm = put_joint(model, "arm");
    arm->point_count = 1;
    point_of(model, 1)->joint_a = arm;
    expect_step([&] { return copy_points({1, 2}); });
    EXPECT_EQ(point_of(model, 7)->joint_a, arm);
    EXPECT_EQ(arm->point_count, 2);
}

TEST_F(DuplicateTest, ADragOfWhatTheSameStepMadeRoundsOnce) {
    std::string name;
    const auto move = [&](float x) {
        history_command_begin("move", true);
        EXPECT_TRUE(edit_point_places(&session, model, {7}, moved_by({x, 0, 0}), {}, &refused));
        history_command_end();
    };
    ASSERT_TRUE(history_step_begin("copy"));
    history_command_begin("duplicate", true);
    ASSERT_TRUE(copy_points({1}));
    history_command_end();
    for (int i = 1; i <= 10; ++i) { move(0.3f * static_cast<float>(i)); }
    expect_vector(point_of(model, 7)->position, {3, 0, 0});
    ASSERT_TRUE(history_step_end(&name));
    move(2);
    expect_vector(point_of(model, 7)->position, {5, 0, 0});
}

TEST_F(DuplicateTest, ASquareDrawnOutIsABoxWithoutAFloor) {
    put_triangle(model, "body", {1, 2, 4, 3});
    put_line("body", {5, 6});
    expect_step([&] { return extrude({last("body")}, {0, 0, 7}); });
    EXPECT_EQ(made.points, (Ids{7, 8, 9, 10}));
    EXPECT_EQ(made.primitives.size(), 4u);
    expect_vector(point_of(model, 7)->position, {0, 0, 7});
    ASSERT_EQ(triangles_of(model, "body").size(), 5u);
    EXPECT_EQ(triangles_of(model, "body")[0], (Ids{7, 8, 10, 9}));
    const auto found = edges();
    // What is open is the outline of the floor, in the direction in which the square ran.
    for (const auto& [edge, count] : found) {
        const bool floor = edge.first <= 4 && edge.second <= 4;
        EXPECT_EQ(count, 1);
        EXPECT_EQ(found.count({edge.second, edge.first}), floor ? 0u : 1u) << edge.first << " " << edge.second;
    }
    // Its top faces up, and its sides outwards: each corner of the top leans out.
    const Vec3 corner = point_of(model, 7)->normal;
    EXPECT_LT(corner.x, -0.5f);
    EXPECT_LT(corner.y, -0.5f);
    EXPECT_GT(corner.z, 0.5f);
    EXPECT_LT(point_of(model, 1)->normal.x, -0.5f);
    EXPECT_NEAR(point_of(model, 1)->normal.z, 0.0f, 1e-6f);
    expect_vector(model->bounds_max, {20, 10, 30});
}

TEST_F(DuplicateTest, FacesSideBySideAreDrawnOutAsOne) {
    put_triangle(model, "body", {1, 2, 3});
    const PrimitiveName first = last("body");
    put_triangle(model, "body", {1, 3, 4});
    const PrimitiveName second = last("body");
    put_triangle(model, "body", {2, 1, 4});  // the floor, with which it is closed
    put_triangle(model, "body", {2, 4, 3});
    ASSERT_TRUE(is_closed());
    expect_step([&] { return extrude({second, first}, {0, 0, 5}); });
    EXPECT_EQ(triangles_of(model, "body").size(), 8u);
    EXPECT_TRUE(is_closed());
    EXPECT_EQ(made.points.size(), 4u);
}

TEST_F(DuplicateTest, WhatIsLeftWithoutAFaceGoes) {
    // Five points: the corners and the middle of a fan.
    put_point(model, 7, {5, 5, 0});
    std::vector<PrimitiveName> fan;
    for (const Ids& ids : {Ids{1, 2, 7}, Ids{2, 3, 7}, Ids{3, 4, 7}, Ids{4, 1, 7}}) {
        put_triangle(model, "body", ids);
        fan.push_back(last("body"));
    }
    expect_step([&] { return extrude(fan, {0, 0, 5}); });
    EXPECT_EQ(made.points, (Ids{8, 9, 10, 11, 12}));
    EXPECT_EQ(point_ids(model), (Ids{1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12}));
}

TEST_F(DuplicateTest, APolygonIsDrawnOutAlongItsOutline) {
    put_polygon(model, "body", {1, 2, 4, 3, 5});  // around: 1, 2, 3, 5, 4
    expect_step([&] { return extrude({last("body", PrimitiveKind::POLYGON)}, {0, 0, 5}); });
    EXPECT_EQ(triangles_of(model, "body").size(), 5u);
    EXPECT_EQ(strips_of(model, "body")[0].points, (Ids{7, 8, 10, 9, 11}));
    std::vector<std::pair<int, int>> floor;
    for (const auto& [edge, count] : edges()) {
        if (edge.first <= 5 && edge.second <= 5) { floor.push_back(edge); }
    }
    EXPECT_EQ(floor, (std::vector<std::pair<int, int>>{{1, 2}, {2, 3}, {3, 5}, {4, 1}, {5, 4}}));
}

}  // namespace
}  // namespace pelt
