// Curved primitives made flat.
#include <gtest/gtest.h>

#include "formats/layer_image.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "reduce/tessellate.h"
#include "support/edit_model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"
#include "surfaces/patch.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;
using List = std::vector<Ids>;
using Strips = std::vector<Strip>;

class Tessellate : public EditTest {
protected:
    // Corners 1 to 4 in the plane z = 0; 5 to 8 hold normals of their own, so that new points begin at 9.
    Tessellate() {
        put_points(model.get(), {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}, {100, 100, 0}});
        for (int id = 5; id <= 8; ++id) { put_point(model.get(), id, {500, 500, 500}, {0, 0, 1}); }
        put_layer(model.get());
    }

    int bake(const Ids& corners, int curve_type) {
        Triangle* triangle = put_triangle(model.get(), "body", corners, {5, 6, 7, 8}, curve_type);
        return triangle_bake(model.get(), layer_of(model.get(), "body"), triangle, 1, 9);
    }
    Strips strips() { return strips_of(model.get(), "body"); }
    Vec3 place(int32_t id) { return point_of(model.get(), id)->position; }

    Owned model = empty_model();
};

// ---- what takes the place of each form ----

TEST_F(Tessellate, triangle_of_type_1_becomes_a_strip_of_four) {
    EXPECT_EQ(bake({1, 2, 3}, 1), 1);
    EXPECT_EQ(strips(), (Strips{{{1, 9, 3, 2}, {5, 9, 7, 6}}}));
}

TEST_F(Tessellate, triangle_of_type_2_becomes_a_strip_of_five) {
    EXPECT_EQ(bake({1, 2, 3}, 2), 2);
    EXPECT_EQ(strips(), (Strips{{{1, 9, 10, 2, 3}, {5, 9, 10, 6, 7}}}));
}

TEST_F(Tessellate, triangle_of_type_3_becomes_a_strip_and_a_triangle) {
    EXPECT_EQ(bake({1, 2, 3}, 3), 3);
    EXPECT_EQ(strips(), (Strips{{{1, 9, 10, 11, 3}, {5, 9, 10, 11, 7}}}));
    EXPECT_EQ(triangles_of(model.get(), "body").back(), (Ids{9, 2, 11}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body").back(), (Ids{9, 6, 11}));
}

TEST_F(Tessellate, triangle_of_type_4_counts_as_type_3) {
    EXPECT_EQ(bake({1, 2, 3}, 4), 3);
    EXPECT_EQ(strips(), (Strips{{{1, 9, 10, 11, 3}, {5, 9, 10, 11, 7}}}));
}

TEST_F(Tessellate, quad_of_type_2_becomes_a_strip_of_six) {
    EXPECT_EQ(bake({1, 2, 3, 4}, 2), 2);
    EXPECT_EQ(strips(), (Strips{{{2, 4, 9, 10, 1, 3}, {6, 8, 9, 10, 5, 7}}}));
}

TEST_F(Tessellate, quad_of_type_4_becomes_two_strips_of_six) {
    EXPECT_EQ(bake({1, 2, 3, 4}, 4), 5);
    EXPECT_EQ(strips(), (Strips{{{1, 10, 9, 11, 3, 12}, {5, 10, 9, 11, 7, 12}},
                                {{10, 2, 11, 13, 12, 4}, {10, 6, 11, 13, 12, 8}}}));
}

// Flat primitives: the middle of an edge is the sum of its ends times 0.49999625, a hair short of the half.
TEST_F(Tessellate, new_points_lie_on_their_edges_cut_towards_zero) {
    bake({1, 2, 3, 4}, 4);
    expect_vector(place(9), {0, 49, 0});
    expect_vector(place(10), {49, 0, 0});
    expect_vector(place(11), {49, 49, 0});
    expect_vector(place(12), {49, 99, 0});
    expect_vector(place(13), {99, 49, 0});
}

TEST_F(Tessellate, points_of_a_triangle_lie_on_its_three_edges) {
    bake({1, 2, 3}, 3);
    expect_vector(place(9), {49, 0, 0});
    expect_vector(place(10), {0, 49, 0});
    expect_vector(place(11), {49, 49, 0});
}

TEST_F(Tessellate, negative_places_are_cut_towards_zero_too) {
    point_of(model.get(), 2)->position = {-101, 0, 0};  // middle at -50.49962
    bake({1, 2, 3}, 1);
    expect_vector(place(9), {-50, 0, 0});
}

TEST_F(Tessellate, a_curved_edge_bulges_by_its_control_normals) {
    point_of(model.get(), 1)->normal = {-0.6f, 0, 0.8f};
    point_of(model.get(), 2)->normal = {0.6f, 0, 0.8f};
    bake({1, 2, 3}, 1);
    // Control points (64, 0, 48) and (236, 0, 48), each times 0.33333; three eighths of them, an eighth of the ends.
    expect_vector(place(9), {49, 0, 11});
    expect_vector(point_of(model.get(), 9)->normal, {0, 0, 1}, 1e-6f);
    EXPECT_EQ(model->has_normals, 1);
}

// ---- the whole model ----

TEST_F(Tessellate, curved_triangle_of_type_3_is_four_triangles_and_five_when_split) {
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    EXPECT_EQ(model_tessellate(model.get(), 1), 1);
    EXPECT_EQ(list_count(&model->points), 8 + 3);
    EXPECT_EQ(model_count_triangles(model.get(), "body"), 4);
    model_triangulate(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 9, 10}, {9, 2, 11}, {10, 9, 11}, {10, 11, 3}, {10, 11, 3}}));
}

TEST_F(Tessellate, split_strips_keep_the_winding_of_the_primitive) {
    const auto area = [this](const Ids& t) {
        const Vec3 a = place(t[0]), b = place(t[1]), c = place(t[2]);
        return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    };
    for (const auto& [corners, type] : {std::pair{Ids{1, 2, 3}, 1},
                                        {Ids{1, 2, 3}, 2},
                                        {Ids{1, 2, 3}, 3},
                                        {Ids{1, 2, 3, 4}, 2},
                                        {Ids{1, 2, 3, 4}, 4}}) {
        put_triangle(model.get(), "body", corners, {}, type);
    }
    model_tessellate(model.get(), 1);
    model_triangulate(model.get());
    const List triangles = triangles_of(model.get(), "body");
    EXPECT_EQ(triangles.size(), 2u + 4u + 5u + 4u + 8u);
    for (const Ids& triangle : triangles) { EXPECT_GT(area(triangle), 0) << testing::PrintToString(triangle); }
}

TEST_F(Tessellate, level_of_detail_has_no_effect) {
    std::vector<std::string> texts;
    for (const int lod : {-5, 0, 1, 6, 99}) {
        Owned each = empty_model();
        put_points(each.get(), {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}, {100, 100, 50}});
        put_layer(each.get());
        put_triangle(each.get(), "body", {1, 2, 3, 4}, {}, 4);
        put_triangle(each.get(), "body", {1, 2, 4}, {}, 3);
        EXPECT_EQ(model_tessellate(each.get(), lod), 1);
        texts.push_back(model_text(each.get()));
    }
    for (const std::string& text : texts) { EXPECT_EQ(text, texts[2]); }
}

TEST_F(Tessellate, flat_primitives_stay_and_curved_ones_go) {
    put_triangle(model.get(), "body", {1, 2, 3});
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 1);
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    put_polygon(model.get(), "body", {4, 3, 2});
    model_tessellate(model.get(), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3}, {1, 2, 3, 4}}));
    EXPECT_EQ(strips().size(), 2u);
}

TEST_F(Tessellate, neighbours_share_no_new_points) {
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 1);
    put_triangle(model.get(), "body", {2, 1, 4}, {}, 1);
    model_tessellate(model.get(), 1);
    EXPECT_EQ(strips()[0].points, (Ids{1, 9, 3, 2}));
    EXPECT_EQ(strips()[1].points, (Ids{2, 10, 4, 1}));
    expect_vector(place(10), place(9));
}

TEST_F(Tessellate, an_unresolved_primitive_leaves_nothing) {
    put_point(model.get(), 20, {0, 0, 0});
    put_triangle(model.get(), "body", {1, 2, 3}, {5, 6, 7}, 3);
    put_triangle(model.get(), "body", {1, 2, 4}, {}, 3);
    Triangle* controls = put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    controls->controls[2] = 0;
    model_remove_point(model.get(), 4);
    model_remove_point(model.get(), 7);
    EXPECT_EQ(model_tessellate(model.get(), 1), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), List{});
    EXPECT_EQ(strips(), Strips{});
    EXPECT_EQ(list_count(&model->points), 7);
}

TEST_F(Tessellate, degenerate_and_non_finite_corners_give_defined_places) {
    point_of(model.get(), 2)->position = {INFINITY, std::nanf(""), 0};
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    put_triangle(model.get(), "body", {1, 1, 1}, {}, 3);
    put_triangle(model.get(), "body", {1, 2, 3, 3}, {}, 4);
    EXPECT_EQ(model_tessellate(model.get(), 1), 1);
    EXPECT_EQ(place(9).y, 0.0f);  // a non-number
}

TEST_F(Tessellate, layer_that_cannot_be_found_by_its_name_stays_as_it_is) {
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    ASSERT_EQ(model_rename_layer(model.get(), "body", std::string(40, 'n').c_str()), 1);
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_tessellate(model.get(), 1), 1);
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(Tessellate, ids_up_to_the_limit_are_given_and_none_beyond) {
    put_point(model.get(), POINT_ID_LIMIT - 5, {0, 0, 0});
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 1);
    put_triangle(model.get(), "body", {1, 2, 3, 4}, {}, 4);
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_tessellate(model.get(), 1), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
    list_remove_slot(&layer_of(model.get(), "body")->triangles, 0);
    EXPECT_EQ(model_tessellate(model.get(), 1), 1);
    const int last = POINT_ID_LIMIT;
    EXPECT_EQ(strips()[1].points, (Ids{last - 3, 2, last - 2, last, last - 1, 4}));
}

TEST_F(Tessellate, baking_one_refuses_bad_arguments) {
    Layer* layer = layer_of(model.get(), "body");
    Triangle* flat = put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(triangle_bake(model.get(), layer, flat, 1, 9), 0);
    Triangle* curved = put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    const std::string before = model_text(model.get());
    EXPECT_EQ(triangle_bake(nullptr, layer, curved, 1, 9), 0);
    EXPECT_EQ(triangle_bake(model.get(), nullptr, curved, 1, 9), 0);
    EXPECT_EQ(triangle_bake(model.get(), layer, nullptr, 1, 9), 0);
    EXPECT_EQ(triangle_bake(model.get(), layer, curved, 1, 0), 0);
    EXPECT_EQ(error_text(), "(none)");
    EXPECT_EQ(triangle_bake(model.get(), layer, curved, 1, POINT_ID_LIMIT - 1), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(triangle_bake(model.get(), layer, curved, 1, 2147483647), 0);
    EXPECT_EQ(model_text(model.get()), before);
    EXPECT_EQ(triangle_bake(model.get(), layer, curved, 1, POINT_ID_LIMIT - 2), 3);
}

TEST_F(Tessellate, null_and_empty_models) {
    EXPECT_EQ(model_tessellate(nullptr, 1), 0);
    EXPECT_EQ(model_tessellate(empty_model().get(), 1), 1);
}

// ---- attributes ----

TEST_F(Tessellate, colours_are_blended_and_take_the_transparency_of_the_layer) {
    model_set_gouraud(model.get(), 1, 255, 0, 100, 200);
    model_set_gouraud(model.get(), 2, 0, 255, 50, 200);
    layer_of(model.get(), "body")->transparency = 0.5f;
    bake({1, 2, 3}, 1);
    const unsigned char* colour = point_of(model.get(), 9)->gouraud;
    EXPECT_EQ(colour[0], 127);
    EXPECT_EQ(colour[1], 127);
    EXPECT_EQ(colour[2], 75);
    EXPECT_EQ(colour[3], 127);
}

TEST_F(Tessellate, every_grey_stays_the_same_between_two_equal_corners) {
    for (int value = 0; value <= 255; ++value) {
        model_set_gouraud(model.get(), 1, value, value, value, 0);
        model_set_gouraud(model.get(), 2, value, value, value, 0);
        bake({1, 2, 3}, 1);
        EXPECT_EQ(point_of(model.get(), 9)->gouraud[1], value);
    }
}

TEST_F(Tessellate, without_gouraud_new_points_have_the_default_colour) {
    bake({1, 2, 3}, 1);
    EXPECT_EQ(model->has_gouraud, 0);
    EXPECT_EQ(point_of(model.get(), 9)->gouraud[0], 127);
}

TEST_F(Tessellate, new_points_get_uvees_where_the_layer_has_any) {
    Triangle* triangle = put_triangle(model.get(), "body", {1, 2, 3, 4}, {}, 4);
    const float uvs[4][2] = {{0, 0}, {1, 0.5f}, {0, 1}, {1, 2}};
    std::copy(&uvs[0][0], &uvs[0][0] + 8, &triangle->uvs[0][0]);
    model_add_uvee(model.get(), "body", 1, 0, 0);
    model_set_gouraud(model.get(), 1, 1, 2, 3, 4);  // colours stand behind the coordinates
    triangle_bake(model.get(), layer_of(model.get(), "body"), triangle, 1, 9);
    const auto uvee = [this](int32_t id) { return list_find<Uvee>(&layer_of(model.get(), "body")->uvees, id); };
    const float expected[5][2] = {{0, 0.5f}, {0.5f, 0.25f}, {0.5f, 0.875f}, {0.5f, 1.5f}, {1, 1.25f}};
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(uvee(9 + i), nullptr);
        EXPECT_FLOAT_EQ(uvee(9 + i)->u, expected[i][0]) << i;
        EXPECT_FLOAT_EQ(uvee(9 + i)->v, expected[i][1]) << i;
    }
}

TEST_F(Tessellate, no_uvees_are_made_where_the_layer_has_none) {
    bake({1, 2, 3}, 3);
    EXPECT_EQ(list_count(&layer_of(model.get(), "body")->uvees), 0);
}

TEST_F(Tessellate, texture_coordinates_are_mapped_anew) {
    const test::TempDir dir;
    dir.write("a.tga", test::solid_tga(1, 1, 1, 2, 3));
    std::snprintf(model->path, sizeof model->path, "%s/", dir.path().c_str());
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    ASSERT_EQ(model_add_image(model.get(), "body", 0, "a.tga", AXIS_MINUS_X, AXIS_Y), 1);
    model_tessellate(model.get(), 1);
    const Triangle* made = last_triangle(layer_of(model.get(), "body"));
    EXPECT_FLOAT_EQ(made->uvs[0][0], 0.49f);  // point 9 at x = 49 of 100
    model.reset();
}

// ---- joints ----

class TessellateJoints : public Tessellate {
protected:
    TessellateJoints()
        : arm(put_joint(model.get(), "arm")),
          hand(put_joint(model.get(), "hand", "arm")),
          finger(put_joint(model.get(), "finger", "hand")),
          tail(put_joint(model.get(), "tail")) {}

    void bind(const std::vector<Joint*>& joints, const std::vector<float>& weights = {1, 1, 1, 1}) {
        for (size_t i = 0; i < joints.size(); ++i) {
            Point* point = point_of(model.get(), static_cast<int32_t>(i) + 1);
            point->joint_a = joints[i];
            point->weight = weights[i];
        }
    }
    const char* joint(int32_t id) {
        const Joint* found = point_of(model.get(), id)->joint_a;
        return found != nullptr ? found->name : "(none)";
    }
    float weight(int32_t id) { return point_of(model.get(), id)->weight; }

    Joint* arm;
    Joint* hand;
    Joint* finger;
    Joint* tail;
};

TEST_F(TessellateJoints, a_point_between_parent_and_child_goes_to_the_child) {
    bind({arm, hand, arm}, {1, 0.25f, 1});
    bake({1, 2, 3}, 1);
    EXPECT_STREQ(joint(9), "hand");
    EXPECT_EQ(hand->point_count, 1);
    // Shares of arm: 1 at point 1, 0.75 at point 2; half way 0.875, so 0.125 of hand.
    EXPECT_FLOAT_EQ(weight(9), 0.125f);
}

TEST_F(TessellateJoints, a_point_between_child_and_parent_stays_with_the_first) {
    bind({hand, arm, hand}, {1, 1, 1});
    bake({1, 2, 3}, 1);
    EXPECT_STREQ(joint(9), "hand");
    // Shares of hand: 1, and 0 at a point that is all of arm.
    EXPECT_FLOAT_EQ(weight(9), 0.5f);
}

TEST_F(TessellateJoints, strangers_give_the_first_ends_joint) {
    bind({hand, tail, finger});
    bake({1, 2, 3}, 2);
    EXPECT_STREQ(joint(9), "hand");
    EXPECT_STREQ(joint(10), "finger");  // a child of hand
    EXPECT_FLOAT_EQ(weight(9), 0.5f);
    EXPECT_FLOAT_EQ(weight(10), 0.5f);
}

TEST_F(TessellateJoints, world_counts_as_the_parent_of_a_root_joint) {
    bind({nullptr, arm, hand});
    bake({1, 2, 3}, 2);
    EXPECT_STREQ(joint(9), "arm");
    EXPECT_STREQ(joint(10), "(none)");
    EXPECT_EQ(arm->point_count, 1);
}

TEST_F(TessellateJoints, an_end_without_a_joint_leaves_it_to_the_other) {
    bind({arm, nullptr, arm});
    bake({1, 2, 3}, 1);
    EXPECT_STREQ(joint(9), "arm");
}

TEST_F(TessellateJoints, each_edge_of_a_triangle_goes_by_its_own_ends) {
    bind({arm, hand, finger});
    bake({1, 2, 3}, 3);
    EXPECT_STREQ(joint(9), "hand");     // 1-2
    EXPECT_STREQ(joint(10), "arm");     // 1-3: finger hangs on hand
    EXPECT_STREQ(joint(11), "finger");  // 2-3
    EXPECT_EQ(arm->point_count + hand->point_count + finger->point_count, 3);
}

TEST_F(TessellateJoints, second_edge_of_a_quad_of_type_2_looks_at_the_joint_of_the_first_corner) {
    bind({arm, arm, hand, finger});
    bake({1, 2, 3, 4}, 2);
    EXPECT_STREQ(joint(10), "hand");  // finger hangs on hand, but corner 0 is of arm
}

TEST_F(TessellateJoints, second_edge_of_a_quad_of_type_2_goes_to_a_child_of_the_first_corners_joint) {
    bind({arm, arm, tail, hand});
    bake({1, 2, 3, 4}, 2);
    EXPECT_STREQ(joint(10), "hand");
}

TEST_F(TessellateJoints, centre_of_a_quad_goes_by_the_points_of_two_edges) {
    bind({arm, hand, arm, hand});
    bake({1, 2, 3, 4}, 4);
    EXPECT_STREQ(joint(9), "arm");    // 1-3
    EXPECT_STREQ(joint(10), "hand");  // 1-2
    EXPECT_STREQ(joint(12), "hand");  // 3-4
    EXPECT_STREQ(joint(13), "hand");  // 2-4
    EXPECT_STREQ(joint(11), "hand");  // 13 hangs on the joint of 9
    EXPECT_EQ(arm->point_count, 1);
    EXPECT_EQ(hand->point_count, 4);
}

TEST_F(TessellateJoints, centre_of_a_quad_does_not_look_at_the_corners) {
    bind({arm, hand, hand, finger});
    bake({1, 2, 3, 4}, 4);
    EXPECT_STREQ(joint(9), "hand");
    EXPECT_STREQ(joint(13), "finger");
    EXPECT_STREQ(joint(11), "finger");
}

TEST_F(TessellateJoints, centre_between_strangers_takes_the_joint_of_the_first_edge) {
    bind({arm, tail, arm, tail});
    bake({1, 2, 3, 4}, 4);
    EXPECT_STREQ(joint(11), "arm");
}

TEST_F(TessellateJoints, weights_within_one_joint_are_blended_as_they_are) {
    bind({hand, hand, hand}, {1.0f, 0.5f, 0.0f});
    bake({1, 2, 3}, 2);
    EXPECT_FLOAT_EQ(weight(9), 0.75f);
    EXPECT_FLOAT_EQ(weight(10), 0.5f);
}

TEST_F(TessellateJoints, models_without_joints_blend_the_weights_alone) {
    Owned plain = empty_model();
    put_points(plain.get(), {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}});
    point_of(plain.get(), 2)->weight = 0.5f;
    put_layer(plain.get());
    put_triangle(plain.get(), "body", {1, 2, 3}, {}, 1);
    model_tessellate(plain.get(), 1);
    EXPECT_FLOAT_EQ(point_of(plain.get(), 4)->weight, 0.75f);
    EXPECT_EQ(point_of(plain.get(), 4)->joint_a, nullptr);
}

// The points of the surface that is drawn at level 1, for every form, on corners that are anything but flat.
TEST_F(Tessellate, new_points_are_those_of_the_surface_that_is_drawn) {
    const Vec3 normals[] = {{-0.6f, 0, 0.8f}, {0.48f, -0.6f, 0.64f}, {0, 0.6f, 0.8f}, {0.6f, 0.64f, 0.48f}};
    for (int i = 0; i < 4; ++i) { point_of(model.get(), 1 + i)->normal = normals[i]; }
    Vec3 corners[4], places[PATCH_NORMAL_PLACES] = {};
    for (int i = 0; i < 4; ++i) { corners[i] = place(1 + i); }
    for (int i = 0; i < 4; ++i) { places[i] = {0, 0, 1}; }
    const int ring[] = {0, 1, 1, 3, 3, 2, 2, 0};
    for (int i = 0; i < 8; ++i) { places[4 + i] = normals[ring[i]]; }
    QuadPatch patch;
    patch_build_quad(corners, places, &patch);
    Vec3 positions[PATCH_VERTEX_LIMIT], directions[PATCH_VERTEX_LIMIT];
    ASSERT_EQ(patch_eval_quad(&patch, 4, 1, positions, directions), 9);
    bake({1, 2, 3, 4}, 4);
    const int vertices[] = {1, 3, 4, 5, 7};
    for (int i = 0; i < 5; ++i) {
        const Vec3& expected = positions[vertices[i]];
        expect_vector(place(9 + i), {std::trunc(expected.x), std::trunc(expected.y), std::trunc(expected.z)});
        expect_vector(point_of(model.get(), 9 + i)->normal, directions[vertices[i]], 1e-6f);
    }
}

}  // namespace
