// Points of their own for corners with a normal from elsewhere.
#include <gtest/gtest.h>

#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

class SplitNormals : public EditTest {
protected:
    SplitNormals() {
        put_points(model.get(), {{0, 0, 0}, {10, 0, 0}, {0, 10.9f, -1.9f}, {10, 10, 0}});
        put_point(model.get(), 9, {7, 7, 7}, {0, 1, 0}, 0.25f);
        put_layer(model.get());
    }
    Owned model = empty_model();
};

TEST_F(SplitNormals, corner_gets_a_point_at_its_place_with_the_other_normal) {
    put_triangle(model.get(), "body", {1, 2, 3}, {1, 2, 9});
    EXPECT_EQ(model_split_normals(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 10}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 10}}));
    const Point* made = point_of(model.get(), 10);
    expect_vector(made->position, {0, 10, -1});  // cut towards zero
    expect_vector(made->normal, {0, 1, 0});
    EXPECT_EQ(made->weight, 0.25f);
    EXPECT_EQ(made->gouraud[0], 127);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3, 4, 9, 10}));
}

TEST_F(SplitNormals, every_corner_of_every_primitive_gets_its_own) {
    put_triangle(model.get(), "body", {1, 2, 3, 4}, {9, 2, 3, 9});
    put_triangle(model.get(), "body", {1, 2, 3}, {9, 2, 3});
    model_split_normals(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{10, 2, 3, 11}, {12, 2, 3}}));
}

TEST_F(SplitNormals, where_two_joints_meet_only_the_normal_moves) {
    Joint* arm = put_joint(model.get(), "arm");
    Joint* hand = put_joint(model.get(), "hand", "arm");
    point_of(model.get(), 1)->joint_a = arm;
    point_of(model.get(), 2)->joint_a = hand;
    point_of(model.get(), 9)->joint_a = hand;
    put_triangle(model.get(), "body", {1, 2, 3}, {9, 9, 9});
    model_split_normals(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 11, 3}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (std::vector<Ids>{{10, 11, 12}}));
    for (const int id : {10, 11, 12}) { EXPECT_EQ(point_of(model.get(), id)->joint_a, hand); }
    EXPECT_EQ(hand->point_count, 3);
    EXPECT_EQ(arm->point_count, 0);
}

TEST_F(SplitNormals, the_fourth_places_of_a_triangle_do_not_count) {
    Triangle* triangle = put_triangle(model.get(), "body", {1, 2, 3});
    triangle->points[3] = 4;
    triangle->normals[3] = 9;
    model_split_normals(model.get());
    EXPECT_EQ(list_count(&model->points), 5);
}

TEST_F(SplitNormals, corners_with_a_missing_point_stay) {
    put_triangle(model.get(), "body", {1, 2, 3}, {1, 9, 4});
    model_remove_point(model.get(), 9);
    model_remove_point(model.get(), 3);
    EXPECT_EQ(model_split_normals(model.get()), 1);
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (std::vector<Ids>{{1, 9, 4}}));
    EXPECT_EQ(list_count(&model->points), 3);
}

TEST_F(SplitNormals, polygons_stay) {
    put_polygon(model.get(), "body", {1, 2, 3}, {9, 9, 9});
    model_split_normals(model.get());
    EXPECT_EQ(strips_of(model.get(), "body"), (std::vector<Strip>{{{1, 2, 3}, {9, 9, 9}}}));
}

TEST_F(SplitNormals, places_that_are_no_numbers_become_zero_or_saturate) {
    point_of(model.get(), 1)->position = {std::nanf(""), INFINITY, -INFINITY};
    put_triangle(model.get(), "body", {1, 2, 3}, {9, 2, 3});
    EXPECT_EQ(model_split_normals(model.get()), 1);
    expect_vector(point_of(model.get(), 10)->position, {0.0f, 2147483648.0f, -2147483648.0f});
}

TEST_F(SplitNormals, ids_up_to_the_limit_are_given_and_none_beyond) {
    put_point(model.get(), POINT_ID_LIMIT - 1, {0, 0, 0});
    put_triangle(model.get(), "body", {1, 2, 3}, {9, 2, 3});
    EXPECT_EQ(model_split_normals(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{POINT_ID_LIMIT, 2, 3}}));
    put_triangle(model.get(), "body", {1, 2, 4}, {9, 2, 4});
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_split_normals(model.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(SplitNormals, nothing_to_split_is_no_failure_beyond_the_limit) {
    put_point(model.get(), 40000, {0, 0, 0});
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_split_normals(model.get()), 1);
}

TEST_F(SplitNormals, null_and_empty_models) {
    EXPECT_EQ(model_split_normals(nullptr), 0);
    EXPECT_EQ(model_split_normals(empty_model().get()), 1);
}

}  // namespace
