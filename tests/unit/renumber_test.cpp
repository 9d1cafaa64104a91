// Points in joint order, numbered from 1.
#include <gtest/gtest.h>

#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

class Renumber : public EditTest {
protected:
    Renumber() {
        arm = put_joint(model.get(), "arm");
        hand = put_joint(model.get(), "hand", "arm");
        put_layer(model.get());
    }
    void put(int32_t id, float x, Joint* joint) {
        Point* point = put_point(model.get(), id, {x, 0, 0});
        point->joint_a = joint;
        point->state_index = 7;
    }
    std::vector<float> places() const {
        std::vector<float> out;
        for (const Point& point : list_elements<Point>(model->points)) { out.push_back(point.position.x); }
        return out;
    }
    Owned model = empty_model();
    Joint* arm;
    Joint* hand;
};

TEST_F(Renumber, gaps_are_closed_and_references_follow) {
    put(2, 20, arm);
    put(5, 50, hand);
    put(9, 90, nullptr);
    put_triangle(model.get(), "body", {2, 5, 9}, {9, 9, 5}, 3);
    put_polygon(model.get(), "body", {9, 5, 2}, {2, 5, 9});
    EXPECT_EQ(model_renumber_points(model.get()), 1);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3}));
    EXPECT_EQ(places(), (std::vector<float>{20, 50, 90}));
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 3}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (std::vector<Ids>{{3, 3, 2}}));
    const Triangle* triangle = last_triangle(layer_of(model.get(), "body"));
    EXPECT_EQ(Ids(triangle->controls, triangle->controls + 8), (Ids{1, 2, 2, 3, 3, 1, 0, 0}));
    EXPECT_EQ(strips_of(model.get(), "body"), (std::vector<Strip>{{{3, 2, 1}, {1, 2, 3}}}));
    for (const Point& point : list_elements<Point>(model->points)) { EXPECT_EQ(point.state_index, -1); }
}

TEST_F(Renumber, points_are_ordered_by_joint_and_world_points_come_last) {
    put(1, 10, nullptr);
    put(2, 20, hand);
    put(3, 30, arm);
    put(4, 40, hand);
    EXPECT_EQ(model_renumber_points(model.get()), 1);
    EXPECT_EQ(places(), (std::vector<float>{30, 20, 40, 10}));
}

// Intended: right for models that stood in joint order before, and for no others.
TEST_F(Renumber, references_become_the_rank_in_the_old_order) {
    put(4, 40, nullptr);
    put(6, 60, arm);
    put(8, 80, arm);
    put_triangle(model.get(), "body", {4, 6, 8});
    model_renumber_points(model.get());
    EXPECT_EQ(places(), (std::vector<float>{60, 80, 40}));
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 3}}));
}

TEST_F(Renumber, rank_is_that_of_occupied_slots) {
    for (int id = 1; id <= 4; ++id) { put(id, static_cast<float>(id), arm); }
    model_remove_point(model.get(), 2);
    put_triangle(model.get(), "body", {1, 3, 4});
    model_renumber_points(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 3}}));
}

TEST_F(Renumber, a_point_of_a_joint_from_elsewhere_is_dropped) {
    Owned other = empty_model();
    put(1, 10, put_joint(other.get(), "arm"));
    put(2, 20, arm);
    model_renumber_points(model.get());
    EXPECT_EQ(places(), (std::vector<float>{20}));
}

TEST_F(Renumber, a_reference_to_no_point_becomes_zero) {
    put(1, 10, arm);
    put(2, 20, arm);
    put(3, 30, arm);
    put_triangle(model.get(), "body", {1, 2, 3});
    model_remove_point(model.get(), 1);
    model_renumber_points(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{0, 1, 2}}));
}

TEST_F(Renumber, lines_and_uvees_keep_their_numbers) {
    put(5, 50, arm);
    put(7, 70, arm);
    const int32_t ids[] = {5, 7};
    model_add_line(model.get(), "body", 2, ids);
    model_add_uvee(model.get(), "body", 7, 0.5f, 0.5f);
    model_renumber_points(model.get());
    const Layer* layer = layer_of(model.get(), "body");
    EXPECT_NE(list_find(&layer->uvees, 7), nullptr);
    const Line& line = *list_elements<Line>(layer->lines).begin();
    EXPECT_EQ(*list_elements<int32_t>(line.vertices).begin(), 5);
}

TEST_F(Renumber, more_points_than_numbers_are_refused) {
    for (int id = 1; id <= POINT_ID_LIMIT; ++id) { put(id, 0, arm); }
    EXPECT_EQ(model_renumber_points(model.get()), 1);
    put(POINT_ID_LIMIT + 1, 0, arm);
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_renumber_points(model.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(Renumber, models_without_joints_fail) {
    EXPECT_EQ(model_renumber_points(nullptr), 0);
    Owned plain = empty_model();
    put_points(plain.get(), {{1, 2, 3}});
    EXPECT_EQ(model_renumber_points(plain.get()), 0);
    EXPECT_EQ(point_ids(plain.get()), (Ids{1}));
}

// ---- points in any order ----

TEST_F(Renumber, by_joint_every_reference_follows_its_point) {
    put(4, 40, nullptr);
    put(6, 60, hand);
    put(8, 80, arm);
    put_triangle(model.get(), "body", {4, 6, 8}, {8, 4, 6}, 3);
    put_polygon(model.get(), "body", {8, 6, 4}, {6, 8, 4});
    EXPECT_EQ(model_number_by_joint(model.get()), 1);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3}));
    EXPECT_EQ(places(), (std::vector<float>{80, 60, 40}));
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{3, 2, 1}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (std::vector<Ids>{{1, 3, 2}}));
    EXPECT_EQ(strips_of(model.get(), "body"), (std::vector<Strip>{{{1, 2, 3}, {2, 1, 3}}}));
    const Triangle* triangle = last_triangle(layer_of(model.get(), "body"));
    EXPECT_EQ(Ids(triangle->controls, triangle->controls + 6), (Ids{3, 2, 2, 1, 1, 3}));
    for (const Point& point : list_elements<Point>(model->points)) { EXPECT_EQ(point.state_index, -1); }
}

TEST_F(Renumber, by_joint_points_of_one_joint_keep_their_order) {
    put(1, 10, hand);
    put(2, 20, arm);
    put(3, 30, hand);
    put(4, 40, arm);
    put(5, 50, nullptr);
    put(6, 60, hand);
    EXPECT_EQ(model_number_by_joint(model.get()), 1);
    EXPECT_EQ(places(), (std::vector<float>{20, 40, 10, 30, 60, 50}));
}

TEST_F(Renumber, by_joint_lines_and_uvees_follow_too) {
    put(3, 30, nullptr);
    put(5, 50, hand);
    put(7, 70, arm);
    const int32_t ids[] = {3, 5, 7};
    model_add_line(model.get(), "body", 3, ids);
    model_add_uvee(model.get(), "body", 3, 0.25f, 0.5f);
    model_add_uvee(model.get(), "body", 7, 0.75f, 1.0f);
    EXPECT_EQ(model_number_by_joint(model.get()), 1);
    const Layer* layer = layer_of(model.get(), "body");
    Ids line;
    for (const int32_t id : list_elements<int32_t>(list_elements<Line>(layer->lines).begin()->vertices)) {
        line.push_back(id);
    }
    EXPECT_EQ(line, (Ids{3, 2, 1}));
    EXPECT_EQ(list_count(&layer->uvees), 2);
    const auto* world = list_find<const Uvee>(&layer->uvees, 3);
    const auto* bound = list_find<const Uvee>(&layer->uvees, 1);
    ASSERT_TRUE(world != nullptr && bound != nullptr);
    EXPECT_EQ(world->point, 3);
    EXPECT_EQ(world->u, 0.25f);
    EXPECT_EQ(bound->point, 1);
    EXPECT_EQ(bound->v, 1.0f);
}

TEST_F(Renumber, by_joint_what_refers_to_no_point_becomes_zero_and_such_uvees_go) {
    put(1, 10, hand);
    put(2, 20, arm);
    put(3, 30, arm);
    put_triangle(model.get(), "body", {1, 2, 3});
    const int32_t ids[] = {1, 2};
    model_add_line(model.get(), "body", 2, ids);
    model_add_uvee(model.get(), "body", 1, 0.5f, 0.5f);
    model_remove_point(model.get(), 1);
    EXPECT_EQ(model_number_by_joint(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{0, 1, 2}}));
    const Layer* layer = layer_of(model.get(), "body");
    EXPECT_EQ(*list_elements<int32_t>(list_elements<Line>(layer->lines).begin()->vertices).begin(), 0);
    EXPECT_EQ(list_count(&layer->uvees), 0);
}

TEST_F(Renumber, by_joint_a_point_of_a_joint_from_elsewhere_is_dropped) {
    Owned other = empty_model();
    put(1, 10, put_joint(other.get(), "arm"));
    put(2, 20, nullptr);
    put(3, 30, arm);
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_number_by_joint(model.get()), 1);
    EXPECT_EQ(places(), (std::vector<float>{30, 20}));
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{0, 2, 1}}));
}

TEST_F(Renumber, by_joint_more_points_than_numbers_are_refused) {
    for (int id = 1; id <= POINT_ID_LIMIT + 1; ++id) { put(id, 0, id % 2 == 0 ? arm : hand); }
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_number_by_joint(model.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(Renumber, by_joint_a_model_without_joints_stays_as_it_is) {
    EXPECT_EQ(model_number_by_joint(nullptr), 0);
    Owned plain = empty_model();
    put_points(plain.get(), {{1, 2, 3}, {4, 5, 6}});
    model_remove_point(plain.get(), 1);
    EXPECT_EQ(model_number_by_joint(plain.get()), 1);
    EXPECT_EQ(point_ids(plain.get()), (Ids{2}));
}

}  // namespace
