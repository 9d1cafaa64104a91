// Merging children, and the whole of flattening.
#include <gtest/gtest.h>

#include "formats/layer_image.h"
#include "foundation/text.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "reduce/tessellate.h"
#include "support/edit_model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;
using List = std::vector<Ids>;
using Names = std::vector<std::string>;

// A triangle of three points in one layer.
Owned simple(const char* name, const char* layer = "body") {
    Owned model = empty_model(name);
    put_points(model.get(), {{1, 2, 3}, {11, 2, 3}, {1, 12, 3}});
    put_layer(model.get(), layer);
    put_triangle(model.get(), layer, {1, 2, 3});
    return model;
}

ChildLink* link(Model* parent, Owned child) {
    Model* model = child.release();
    return model_add_child(parent, model, model->name, 0, 0, 0, 1, 1, 1, "0", "0", "0");
}

ChildLink* lend(Model* parent, Model* child) {
    ChildLink* made = model_add_child(parent, child, child->name, 0, 0, 0, 1, 1, 1, "0", "0", "0");
    made->borrowed = 1;
    return made;
}

class Flatten : public EditTest {
protected:
    int merge(Model* child, const char* x = "0", const char* y = "0", const char* z = "0") {
        return model_merge_child(model.get(), child, position.x, position.y, position.z, scale.x, scale.y, scale.z, x,
                                 y, z, &counter);
    }
    Vec3 place(int32_t id) { return point_of(model.get(), id)->position; }

    Owned model = empty_model();
    Vec3 position{0, 0, 0};
    Vec3 scale{1, 1, 1};
    int32_t counter = 1;
};

// ---- without children ----

TEST_F(Flatten, a_quad_without_children_becomes_two_triangles) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    put_layer(model.get());
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    EXPECT_EQ(model_flatten(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3}, {3, 2, 4}}));
    EXPECT_EQ(list_count(&layer_of(model.get(), "body")->uvees), 4);
}

TEST_F(Flatten, null_and_empty_models) {
    EXPECT_EQ(model_flatten(nullptr), 0);
    EXPECT_EQ(model_flatten(model.get()), 1);
    EXPECT_EQ(model_merge_children(nullptr, &counter), 0);
    EXPECT_EQ(model_merge_children(model.get(), nullptr), 0);
    EXPECT_EQ(model_merge_children(model.get(), &counter), 1);
    EXPECT_EQ(counter, 1);
}

// ---- one child ----

TEST_F(Flatten, ids_of_the_child_stand_above_those_of_the_parent) {
    put_points(model.get(), {{0, 0, 0}, {0, 0, 0}});
    Owned child = simple("child");
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 4, 5, 6}));  // k + 3
    EXPECT_EQ(triangles_of(model.get(), "1_body"), (List{{4, 5, 6}}));
    expect_vector(place(5), {11, 2, 3});
    EXPECT_EQ(counter, 2);
}

TEST_F(Flatten, a_parent_without_points_leaves_the_ids_as_they_are) {
    Owned child = simple("child");
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3}));
}

TEST_F(Flatten, places_are_scaled_then_turned_then_moved) {
    Owned child = simple("child");
    position = {100, 200, 300};
    scale = {2, 3, -1};
    EXPECT_EQ(merge(child.get(), "0", "0", "90"), 1);
    // Point 2 at (11, 2, 3): scaled (22, 6, -3), turned about z (-6, 22, -3).
    EXPECT_NEAR(place(2).x, 94, 1);  // sines of a quarter turn are not quite whole
    EXPECT_NEAR(place(2).y, 222, 1);
    EXPECT_EQ(place(2).z, 297);
    for (const Point& point : list_elements<Point>(model->points)) {
        EXPECT_EQ(point.position.x, std::trunc(point.position.x));
    }
}

TEST_F(Flatten, places_are_cut_towards_zero) {
    Owned child = simple("child");
    point_of(child.get(), 1)->position = {1.9f, 0, -1.9f};
    EXPECT_EQ(merge(child.get()), 1);
    expect_vector(place(1), {1, 0, -1});
}

TEST_F(Flatten, rotation_texts_may_name_their_axis) {
    Owned child = simple("child");
    point_of(child.get(), 1)->position = {0, 1000, 0};
    EXPECT_EQ(merge(child.get(), "x90", "0", "0"), 1);
    EXPECT_NEAR(place(1).z, 1000, 1);
}

TEST_F(Flatten, a_bad_rotation_text_leaves_what_was_built_before_it) {
    Owned child = simple("child");
    point_of(child.get(), 1)->position = {0, 1000, 0};
    EXPECT_EQ(merge(child.get(), "x90", "abc", "z90"), 1);
    EXPECT_NEAR(place(1).z, 1000, 1);
    EXPECT_NEAR(place(1).x, 0, 1);
}

TEST_F(Flatten, places_that_are_no_numbers_become_zero_or_saturate) {
    Owned child = simple("child");
    point_of(child.get(), 1)->position = {std::nanf(""), 0, 0};
    point_of(child.get(), 2)->position = {3e30f, 0, 0};
    scale = {1e30f, 1, 1};
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(place(1).x, 0.0f);
    EXPECT_EQ(place(2).x, 2147483648.0f);
}

TEST_F(Flatten, normals_are_turned_but_not_scaled) {
    Owned child = simple("child");
    model_set_normal(child.get(), 1, 1, 0, 0);
    scale = {5, 7, 9};
    merge(child.get(), "0", "0", "90");
    EXPECT_EQ(model->has_normals, 1);
    expect_vector(point_of(model.get(), 1)->normal, {0, 1, 0}, 1e-6f);
}

TEST_F(Flatten, without_normals_in_either_the_default_stays) {
    Owned child = simple("child");
    point_of(child.get(), 1)->normal = {1, 0, 0};
    merge(child.get());
    EXPECT_EQ(model->has_normals, 0);
    expect_vector(point_of(model.get(), 1)->normal, {0, 0, 1});
}

TEST_F(Flatten, a_parent_with_normals_takes_those_of_a_child_without) {
    model->has_normals = 1;
    Owned child = simple("child");
    point_of(child.get(), 1)->normal = {1, 0, 0};
    merge(child.get());
    expect_vector(point_of(model.get(), 1)->normal, {1, 0, 0});
}

TEST_F(Flatten, colours_and_weights_come_along) {
    Owned child = simple("child");
    model_set_gouraud(child.get(), 2, 1, 2, 3, 4);
    point_of(child.get(), 2)->weight = 0.25f;
    merge(child.get());
    EXPECT_EQ(model->has_gouraud, 1);
    const Point* point = point_of(model.get(), 2);
    EXPECT_EQ(point->gouraud[0], 1);
    EXPECT_EQ(point->gouraud[2], 3);
    EXPECT_EQ(point->gouraud[3], 4);
    EXPECT_EQ(point->weight, 0.25f);
}

TEST_F(Flatten, joints_and_lines_are_not_carried) {
    put_joint(model.get(), "arm");
    Owned child = simple("child");
    point_of(child.get(), 1)->joint_a = put_joint(child.get(), "arm");
    const int32_t ids[] = {1, 2};
    model_add_line(child.get(), "body", 2, ids);
    merge(child.get());
    EXPECT_EQ(list_count(&model->joints), 1);
    EXPECT_EQ(point_of(model.get(), 1)->joint_a, nullptr);
    EXPECT_EQ(list_count(&layer_of(model.get(), "1_body")->lines), 0);
}

TEST_F(Flatten, layer_takes_colour_sides_transparency_and_key) {
    Owned child = simple("child");
    layer_of(child.get(), "body")->transparency = 0.25f;
    model_set_invisible(child.get(), "body", 1, 0, 1);
    merge(child.get());
    const Layer* layer = layer_of(model.get(), "1_body");
    EXPECT_EQ(layer->colour[1], 20);
    EXPECT_EQ(layer->singlesided, 1);
    EXPECT_EQ(layer->mirror, 0);
    EXPECT_EQ(layer->transparency, 0.25f);
    EXPECT_EQ(layer->invisible, 1);
    EXPECT_EQ(layer->invisible_colour[2], 255);
}

TEST_F(Flatten, layers_without_triangles_are_left_out) {
    Owned child = simple("child");
    put_layer(child.get(), "empty");
    put_layer(child.get(), "thin");
    put_polygon(child.get(), "thin", {1, 2});
    merge(child.get());
    EXPECT_EQ(layer_names(model.get()), (Names{"1_body"}));
}

TEST_F(Flatten, a_layer_of_the_new_name_is_added_to) {
    model = simple("model", "1_body");
    Owned child = simple("child");
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "1_body"), (List{{1, 2, 3}, {5, 6, 7}}));
}

TEST_F(Flatten, normals_and_controls_of_primitives_are_moved_too) {
    put_points(model.get(), {{0, 0, 0}});  // ids of the child move by 2
    Owned child = simple("child");
    put_triangle(child.get(), "body", {1, 2, 3}, {3, 1, 2}, 3);
    merge(child.get());
    EXPECT_EQ(triangle_normals_of(model.get(), "1_body").back(), (Ids{5, 3, 4}));
    const Triangle* made = last_triangle(layer_of(model.get(), "1_body"));
    EXPECT_EQ(made->curve_type, 3);
    EXPECT_EQ(Ids(made->controls, made->controls + 6), (Ids{3, 4, 4, 5, 5, 3}));
}

TEST_F(Flatten, curved_quads_stay_quads) {
    Owned child = simple("child");
    put_point(child.get(), 4, {11, 12, 3});
    put_triangle(child.get(), "body", {1, 2, 3, 4}, {}, 4);
    merge(child.get());
    EXPECT_EQ(triangles_of(model.get(), "1_body").back(), (Ids{1, 2, 3, 4}));
}

TEST_F(Flatten, texture_coordinates_come_as_uvees) {
    put_points(model.get(), {{0, 0, 0}});
    Owned child = simple("child");
    Triangle* triangle = last_triangle(layer_of(child.get(), "body"));
    triangle->uvs[1][0] = 0.5f;
    triangle->uvs[1][1] = 0.25f;
    put_point(child.get(), 7, {0, 0, 0});
    model_add_uvee(child.get(), "body", 7, 4, 5);  // of a point that no corner uses
    merge(child.get());
    const Layer* layer = layer_of(model.get(), "1_body");
    const auto* corner = list_find<Uvee>(&layer->uvees, 4);
    ASSERT_NE(corner, nullptr);
    EXPECT_EQ(corner->u, 0.5f);
    EXPECT_EQ(corner->v, 0.25f);
    const auto* other = list_find<Uvee>(&layer->uvees, 9);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->v, 5.0f);
    EXPECT_EQ(list_count(&layer->uvees), 4);
    // The corners themselves wait for the next map.
    EXPECT_EQ(last_triangle(layer_of(model.get(), "1_body"))->uvs[1][0], 0.0f);
}

TEST_F(Flatten, the_child_is_prepared_in_place) {
    Owned child = simple("child");
    layer_of(child.get(), "body")->mirror = 1;
    merge(child.get());
    EXPECT_EQ(layer_names(child.get()), (Names{"body", "body_mirror"}));
    EXPECT_EQ(layer_names(model.get()), (Names{"1_body", "1_body_mirror"}));
    EXPECT_EQ(triangles_of(model.get(), "1_body_mirror"), (List{{4, 5, 6}}));
    expect_vector(place(6), {-11, 2, 3});
}

TEST_F(Flatten, normals_that_only_baking_made_are_not_announced) {
    Owned child = simple("child");
    layer_of(child.get(), "body")->mirror = 1;
    merge(child.get());
    EXPECT_EQ(child->has_normals, 1);
    EXPECT_EQ(model->has_normals, 0);
}

// A number that the child does not know may be a point of the parent.
TEST_F(Flatten, references_that_the_child_cannot_resolve_do_not_reach_the_parents_points) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    Owned child = simple("child");
    put_triangle(child.get(), "body", {1, 2, 3});
    last_triangle(layer_of(child.get(), "body"))->points[2] = -1;  // would be 3 in the parent
    *list_add<Uvee>(&layer_of(child.get(), "body")->uvees, 2147483647) = Uvee{2147483647, 1, 1};
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "1_body"), (List{{5, 6, 7}}));
}

TEST_F(Flatten, null_arguments_and_a_model_into_itself_are_refused) {
    Owned child = simple("child");
    EXPECT_EQ(model_merge_child(nullptr, child.get(), 0, 0, 0, 1, 1, 1, "0", "0", "0", &counter), 0);
    EXPECT_EQ(model_merge_child(model.get(), nullptr, 0, 0, 0, 1, 1, 1, "0", "0", "0", &counter), 0);
    EXPECT_EQ(model_merge_child(model.get(), child.get(), 0, 0, 0, 1, 1, 1, nullptr, "0", "0", &counter), 0);
    EXPECT_EQ(model_merge_child(model.get(), child.get(), 0, 0, 0, 1, 1, 1, "0", nullptr, "0", &counter), 0);
    EXPECT_EQ(model_merge_child(model.get(), child.get(), 0, 0, 0, 1, 1, 1, "0", "0", nullptr, &counter), 0);
    EXPECT_EQ(model_merge_child(model.get(), child.get(), 0, 0, 0, 1, 1, 1, "0", "0", "0", nullptr), 0);
    EXPECT_EQ(model_merge_child(child.get(), child.get(), 0, 0, 0, 1, 1, 1, "0", "0", "0", &counter), 0);
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(list_count(&model->points), 0);
}

TEST_F(Flatten, a_child_without_anything_counts_all_the_same) {
    put_point(model.get(), POINT_ID_LIMIT, {0, 0, 0});
    Owned child = empty_model("child");
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(counter, 2);
}

TEST_F(Flatten, counter_at_its_end_begins_again) {
    counter = 2147483647;
    Owned child = simple("child");
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(layer_names(model.get()), (Names{"2147483647_body"}));
}

TEST_F(Flatten, ids_beyond_the_limit_are_refused_and_neither_model_changed) {
    Owned child = simple("child");
    layer_of(child.get(), "body")->mirror = 1;  // three points more
    put_point(model.get(), POINT_ID_LIMIT - 6, {0, 0, 0});
    const std::string before = model_text(model.get());
    const std::string child_before = model_text(child.get());
    EXPECT_EQ(merge(child.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
    EXPECT_EQ(model_text(child.get()), child_before);
    EXPECT_EQ(counter, 1);
    model_remove_point(model.get(), POINT_ID_LIMIT - 6);
    put_point(model.get(), POINT_ID_LIMIT - 7, {0, 0, 0});
    EXPECT_EQ(merge(child.get()), 1);
    EXPECT_EQ(model_highest_point(model.get()), POINT_ID_LIMIT);
}

TEST_F(Flatten, a_parent_beyond_the_limit_takes_no_child_with_points) {
    put_point(model.get(), 2147483647, {0, 0, 0});
    Owned child = simple("child");
    EXPECT_EQ(merge(child.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
}

TEST_F(Flatten, a_layer_name_that_would_not_be_found_again_is_refused_and_nothing_changed) {
    const std::string name(30, 'n');
    Owned child = simple("child", name.c_str());
    const std::string before = model_text(child.get());
    EXPECT_EQ(merge(child.get()), 0);
    EXPECT_EQ(error_text(), "layer name too long: 1_" + name);
    EXPECT_EQ(model_text(child.get()), before);
    EXPECT_EQ(list_count(&model->layers), 0);
    Owned fitting = simple("child", name.substr(1).c_str());
    EXPECT_EQ(merge(fitting.get()), 1);
}

// ---- trees ----

TEST_F(Flatten, layers_of_the_same_name_are_told_apart) {
    link(model.get(), simple("left"));
    link(model.get(), simple("right"));
    EXPECT_EQ(model_flatten(model.get()), 1);
    EXPECT_EQ(layer_names(model.get()), (Names{"1_body", "2_body"}));
    EXPECT_EQ(list_count(&model->children), 0);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3, 5, 6, 7}));
}

TEST_F(Flatten, the_counter_runs_across_the_tree_depth_first) {
    Owned wing = simple("wing", "skin");
    link(wing.get(), simple("flap", "hinge"));
    link(model.get(), std::move(wing));
    link(model.get(), simple("tail", "fin"));
    EXPECT_EQ(model_merge_children(model.get(), &counter), 1);
    EXPECT_EQ(layer_names(model.get()), (Names{"2_skin", "2_1_hinge", "3_fin"}));
    EXPECT_EQ(counter, 4);
}

TEST_F(Flatten, placements_of_a_chain_add_up) {
    Owned wing = simple("wing");
    link(wing.get(), simple("flap", "hinge"))->position = {10, 0, 0};
    ChildLink* outer = link(model.get(), std::move(wing));
    outer->position = {0, 100, 0};
    outer->scale = {2, 2, 2};
    model_flatten(model.get());
    const Ids hinge = triangles_of(model.get(), "2_1_hinge")[0];
    expect_vector(place(hinge[0]), {22, 104, 6});  // (1 + 10, 2, 3) doubled, then moved
}

TEST_F(Flatten, a_link_without_a_model_is_refused_and_nothing_changed) {
    link(model.get(), simple("left"));
    Owned right = simple("right");
    model_add_child(right.get(), nullptr, "gone", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    link(model.get(), std::move(right));
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_merge_children(model.get(), &counter), 0);
    EXPECT_EQ(error_text(), "child without a model: gone");
    EXPECT_EQ(model_flatten(model.get()), 0);
    EXPECT_EQ(model_text(model.get()), before);
    EXPECT_EQ(list_count(&model->children), 2);
    EXPECT_EQ(counter, 1);
}

TEST_F(Flatten, a_child_is_turned_by_its_three_texts_in_the_order_written) {
    ChildLink* turned = link(model.get(), simple("child"));
    str_copy("90", turned->rotate[0]);
    str_copy("-90", turned->rotate[1]);
    str_copy("180", turned->rotate[2]);
    turned->scale = {10, 20, 30};
    turned->position = {0.5f, 0.5f, 0.5f};  // a turn is a little short of its angle, and places are cut to integers
    ASSERT_EQ(model_flatten(model.get()), 1);
    // (1, 2, 3) scaled to (10, 40, 90), by the half turn about z to (-10, -40, 90), by the quarter back about y
    // to (-90, -40, -10), by that about x to (-90, 10, -40); half a step further and cut.
    expect_vector(place(triangles_of(model.get(), "1_body")[0][0]), {-89, 10, -39});
}

TEST_F(Flatten, a_borrowed_model_is_merged_as_a_copy_and_not_released) {
    Owned guest = simple("guest");
    layer_of(guest.get(), "body")->mirror = 1;
    put_polygon(guest.get(), "body", {1, 2, 3});
    link(guest.get(), simple("inner", "core"));
    const std::string before = model_text(guest.get());
    lend(model.get(), guest.get());
    lend(model.get(), guest.get());
    EXPECT_EQ(model_flatten(model.get()), 1);
    EXPECT_EQ(model_text(guest.get()), before);
    EXPECT_EQ(layer_names(model.get()),
              (Names{"2_body", "2_1_core", "2_body_mirror", "4_body", "4_3_core", "4_body_mirror"}));
}

TEST_F(Flatten, a_tree_that_goes_in_a_circle_is_refused_and_nothing_changed) {
    Owned wing = simple("wing");
    lend(wing.get(), model.get());
    link(model.get(), std::move(wing));
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    put_layer(model.get());
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    EXPECT_EQ(model_flatten(model.get()), 0);
    EXPECT_EQ(error_text(), "child models nested too deeply");
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3, 4}}));
    EXPECT_EQ(model_merge_children(model.get(), &counter), 0);
    EXPECT_EQ(list_count(&model->children), 1);
}

Owned chain(int depth) {
    Owned model = simple("m", "a");
    for (int i = 0; i < depth; ++i) {
        Owned parent = empty_model("m");
        link(parent.get(), std::move(model));
        model = std::move(parent);
    }
    return model;
}

TEST_F(Flatten, a_tree_deeper_than_its_bounds_is_refused) {
    Owned deep = chain(MODEL_TREE_DEPTH_LIMIT + 1);
    EXPECT_EQ(model_flatten(deep.get()), 0);
    EXPECT_EQ(error_text(), "child models nested too deeply");
}

TEST_F(Flatten, a_layer_name_that_grows_too_long_in_the_tree_is_refused_and_nothing_changed) {
    Owned deep = chain(15);
    const std::string before = model_text(deep.get());
    EXPECT_EQ(model_flatten(deep.get()), 0);
    // Each level puts its number in front: "9_8_7_..." and so on.
    EXPECT_EQ(error_text().rfind("layer name too long: ", 0), 0u);
    EXPECT_EQ(model_text(deep.get()), before);
    Owned shallow = chain(12);
    EXPECT_EQ(model_flatten(shallow.get()), 1);
    EXPECT_EQ(layer_names(shallow.get()), (Names{"12_11_10_9_8_7_6_5_4_3_2_1_a"}));
}

TEST_F(Flatten, ids_that_run_out_at_a_later_child_leave_the_tree_as_it_was) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    put_layer(model.get());
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    link(model.get(), simple("left"));
    Owned large = simple("large");
    put_point(large.get(), POINT_ID_LIMIT - 8, {0, 0, 0});  // its ids move by 9
    link(model.get(), std::move(large));
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_flatten(model.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
    EXPECT_EQ(model_merge_children(model.get(), &counter), 0);
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(model_text(model.get()), before);
}

// ---- images ----

class FlattenImages : public Flatten {
protected:
    FlattenImages() {
        dir.write("a.tga", test::solid_tga(1, 1, 255, 0, 0));
        set_path(model.get());
    }
    ~FlattenImages() override { model.reset(); }
    void set_path(Model* each) {
        std::snprintf(each->path, sizeof each->path, "%s", test::native_path(dir.path() + "/").c_str());
    }
    Owned textured(const char* name) {
        Owned child = simple(name);
        set_path(child.get());
        EXPECT_EQ(model_set_invisible(child.get(), "body", 1, 0, 0), 1);
        EXPECT_EQ(model_add_image(child.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_Y, AXIS_MINUS_X), 1);
        return child;
    }
    test::TempDir dir;
};

TEST_F(FlattenImages, image_comes_along_with_axes_x_and_y_and_the_childs_reference_goes) {
    link(model.get(), textured("left"));
    ASSERT_EQ(model_flatten(model.get()), 1);
    const Layer* layer = layer_of(model.get(), "1_body");
    EXPECT_EQ(layer->image_axis_u, AXIS_X);  // the child has y
    EXPECT_EQ(layer->image_axis_v, AXIS_Y);  // and -x
    EXPECT_STREQ(layer_first_image(layer)->names[0], "a.tga");
    EXPECT_EQ(layer_first_image(layer)->bytes_per_pixel[0], 4);  // here the key comes before the image
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 1);
    const auto* uvee = list_find<Uvee>(&layer->uvees, 2);
    EXPECT_EQ(uvee->u, 0.0f);
    EXPECT_EQ(uvee->v, 1.0f);
}

TEST_F(FlattenImages, a_borrowed_model_keeps_its_image) {
    Owned guest = textured("guest");
    lend(model.get(), guest.get());
    ASSERT_EQ(model_flatten(model.get()), 1);
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 2);
    guest.reset();
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 1);
}

TEST_F(FlattenImages, a_refused_merge_takes_no_image) {
    link(model.get(), textured("left"));
    Owned large = simple("large");
    put_point(large.get(), POINT_ID_LIMIT, {0, 0, 0});
    link(model.get(), std::move(large));
    EXPECT_EQ(model_flatten(model.get()), 0);
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 1);
}

TEST_F(FlattenImages, an_image_that_is_not_in_the_parents_directory_is_no_failure) {
    link(model.get(), textured("left"));
    std::snprintf(model->path, sizeof model->path, "%s/elsewhere/", dir.path().c_str());
    EXPECT_EQ(model_flatten(model.get()), 1);
    const LayerImage* image = layer_first_image(layer_of(model.get(), "1_body"));
    EXPECT_STREQ(image->names[0], "a.tga");
    EXPECT_EQ(image->pixels[0], nullptr);
    EXPECT_EQ(list_count(image_registry()), 0);
}

// ---- children as they were read ----

// A curved triangle whose edges are straight: their middles lie at 20.5 and are cut to 20.
Owned curved(const char* name, int mirror_axis = 0) {
    Owned model = empty_model(name);
    put_points(model.get(), {{0, 0, 0}, {41, 0, 0}, {0, 41, 0}});
    put_layer(model.get(), "body", mirror_axis);
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    return model;
}

std::vector<float> places_along_x(const Model* model) {
    std::vector<float> out;
    for (const Point& point : list_elements<Point>(model->points)) { out.push_back(point.position.x); }
    return out;
}

TEST_F(Flatten, baked_children_become_flat_before_they_are_placed) {
    Owned wing = empty_model("wing");
    link(wing.get(), curved("tip"))->scale = {2, 1, 1};
    link(model.get(), std::move(wing));
    EXPECT_EQ(model_flatten_baked(model.get()), 1);
    // 40 is twice 20; a curve that was merged first would have its middle at 41.
    EXPECT_EQ(places_along_x(model.get()), (std::vector<float>{0, 82, 0, 40, 0, 40}));
    EXPECT_EQ(layer_names(model.get()), (Names{"2_1_body"}));
    for (const Triangle& triangle : list_elements<Triangle>(layer_of(model.get(), "2_1_body")->triangles)) {
        EXPECT_EQ(triangle.curve_type, 0);
    }
    EXPECT_EQ(list_count(&model->children), 0);
}

TEST_F(Flatten, baked_children_lose_their_mirrors_first) {
    link(model.get(), curved("left", AXIS_X));
    EXPECT_EQ(model_flatten_baked(model.get()), 1);
    EXPECT_EQ(layer_names(model.get()), (Names{"1_body", "1_body_mirror"}));
    EXPECT_EQ(places_along_x(model.get()), (std::vector<float>{0, 41, 0, -41, 20, 0, 20, 0, -20, -20}));
}

TEST_F(Flatten, baked_borrowed_children_stay_as_they_were_with_their_owner) {
    Owned guest = curved("guest", AXIS_X);
    const std::string before = model_text(guest.get());
    lend(model.get(), guest.get());
    lend(model.get(), guest.get());
    EXPECT_EQ(model_flatten_baked(model.get()), 1);
    EXPECT_EQ(layer_names(model.get()), (Names{"1_body", "1_body_mirror", "2_body", "2_body_mirror"}));
    EXPECT_EQ(model_text(guest.get()), before);
}

TEST_F(Flatten, baked_trees_beyond_their_bounds_and_links_without_a_model_are_refused) {
    EXPECT_EQ(model_flatten_baked(nullptr), 0);
    model_add_child(model.get(), nullptr, "lost", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    EXPECT_EQ(model_flatten_baked(model.get()), 0);
    EXPECT_EQ(error_text(), "child without a model: lost");
    lend(model.get(), model.get());
    EXPECT_EQ(model_flatten_baked(model.get()), 0);
    EXPECT_EQ(error_text(), "child models nested too deeply");
}

TEST_F(FlattenImages, baked_merged_coordinates_reach_the_corners) {
    link(model.get(), textured("left"));
    ASSERT_EQ(model_flatten_baked(model.get()), 1);
    const Layer* layer = layer_of(model.get(), "1_body");
    const Triangle* triangle = last_triangle(layer_of(model.get(), "1_body"));
    ASSERT_EQ(list_count(&layer->uvees), 3);
    for (int corner = 0; corner < 3; ++corner) {
        const auto* uvee = list_find<const Uvee>(&layer->uvees, triangle->points[corner]);
        ASSERT_NE(uvee, nullptr);
        EXPECT_EQ(triangle->uvs[corner][0], uvee->u);
        EXPECT_EQ(triangle->uvs[corner][1], uvee->v);
    }
    EXPECT_EQ(triangle->uvs[1][1], 1.0f);
}

// ---- all of it ----

TEST_F(FlattenImages, the_whole_pipeline_leaves_triangles_alone) {
    put_points(model.get(), {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}, {100, 100, 0}});
    Joint* arm = put_joint(model.get(), "arm");
    for (Point& point : list_elements<Point>(model->points)) { point.joint_a = arm; }
    put_layer(model.get(), "skin", AXIS_X);
    put_triangle(model.get(), "skin", {1, 2, 3, 4}, {}, 4);
    put_polygon(model.get(), "skin", {1, 2, 3, 4}, {2, 2, 3, 4});
    link(model.get(), textured("left"))->position = {5, 5, 5};
    for (int pass = 0; pass < 2; ++pass) {  // a second time there is nothing left to do
        ASSERT_EQ(model_bake_mirror(model.get()), 1);
        ASSERT_EQ(model_tessellate(model.get(), 1), 1);
        ASSERT_EQ(model_flatten(model.get()), 1);
        ASSERT_EQ(model_split_normals(model.get()), 1);
        ASSERT_EQ(model_renumber_points(model.get()), 1);
    }
    EXPECT_EQ(layer_names(model.get()), (Names{"skin", "skin_mirror", "1_body"}));
    const int32_t points = list_count(&model->points);
    EXPECT_EQ(model_highest_point(model.get()), points);
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        EXPECT_EQ(layer.mirror, 0);
        EXPECT_EQ(list_count(&layer.polygons), 0);
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            EXPECT_EQ(triangle.quad, 0);
            EXPECT_EQ(triangle.curve_type, 0);
            for (int i = 0; i < 3; ++i) {
                EXPECT_GE(triangle.points[i], 1);
                EXPECT_LE(triangle.points[i], points);
            }
        }
    }
}

}  // namespace
