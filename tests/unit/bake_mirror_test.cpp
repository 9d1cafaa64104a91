// Mirrored layers made real, against plain expectations and against the search that the index stands for.
#include <gtest/gtest.h>

#include "formats/layer_image.h"
#include "foundation/text.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "support/edit_model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;
using List = std::vector<Ids>;

class BakeMirror : public EditTest {
protected:
    void square(int axis) {
        put_points(model.get(), {{1, 2, 3}, {4, 2, 3}, {1, 5, 3}, {4, 5, 3}});
        put_layer(model.get(), "body", axis);
    }
    Owned model = empty_model();
};

TEST_F(BakeMirror, triangle_is_turned_over_at_mirrored_places) {
    square(AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(layer_names(model.get()), (std::vector<std::string>{"body", "body_mirror"}));
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{5, 6, 7}}));
    expect_vector(point_of(model.get(), 5)->position, {-1, 2, 3});
    expect_vector(point_of(model.get(), 6)->position, {-1, 5, 3});  // corner 2 comes second
    expect_vector(point_of(model.get(), 7)->position, {-4, 2, 3});
    EXPECT_EQ(point_of(model.get(), 5)->weight, 1.0f);
    EXPECT_EQ(point_of(model.get(), 5)->joint_a, nullptr);
    EXPECT_EQ(layer_of(model.get(), "body")->mirror, 0);
    EXPECT_EQ(layer_of(model.get(), "body_mirror")->mirror, 0);
}

TEST_F(BakeMirror, quad_keeps_its_fourth_corner_and_curve_type) {
    square(AXIS_Z);
    put_triangle(model.get(), "body", {1, 2, 3, 4}, {}, 2);
    model_bake_mirror(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{5, 6, 7, 8}}));
    expect_vector(point_of(model.get(), 8)->position, {4, 5, -3});
    const Triangle* made = last_triangle(layer_of(model.get(), "body_mirror"));
    EXPECT_EQ(made->curve_type, 2);
    EXPECT_EQ(Ids(made->controls, made->controls + 8), (Ids{5, 6, 6, 8, 8, 7, 7, 5}));
}

TEST_F(BakeMirror, curved_triangle_gets_the_ring_of_its_corners_as_controls) {
    square(AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3}, {}, 3);
    model_bake_mirror(model.get());
    const Triangle* made = last_triangle(layer_of(model.get(), "body_mirror"));
    EXPECT_EQ(Ids(made->controls, made->controls + 8), (Ids{5, 6, 6, 7, 7, 5, 0, 0}));
}

TEST_F(BakeMirror, layer_takes_colour_and_sides) {
    square(AXIS_Y);
    model_bake_mirror(model.get());
    const Layer* made = layer_of(model.get(), "body_mirror");
    EXPECT_EQ(made->colour[0], 10);
    EXPECT_EQ(made->colour[2], 30);
    EXPECT_EQ(made->singlesided, 1);
}

TEST_F(BakeMirror, points_on_the_mirror_plane_are_their_own_image) {
    put_points(model.get(), {{0, 1, 0}, {0, 2, 0}, {0, 1, 5}});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    model_bake_mirror(model.get());
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 2, 3}));
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{1, 3, 2}}));
}

TEST_F(BakeMirror, first_point_in_list_order_at_the_place_is_taken) {
    put_points(model.get(), {{1, 0, 0}, {1, 2, 0}, {1, 0, 3}, {-1, 2, 0}, {-1, 2, 0}});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    model_bake_mirror(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{6, 7, 4}}));
}

TEST_F(BakeMirror, new_places_are_cut_towards_zero) {
    put_point(model.get(), 1, {-1.9f, 0, -1.9f});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 1, 1});
    model_bake_mirror(model.get());
    expect_vector(point_of(model.get(), 2)->position, {1, 0, -1});
}

TEST_F(BakeMirror, a_fraction_gets_a_new_point_each_time_it_is_met) {
    put_point(model.get(), 1, {-1.5f, 0, 0});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 1, 1});
    model_bake_mirror(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{2, 3, 4}}));
}

TEST_F(BakeMirror, places_that_are_no_numbers_are_never_found) {
    put_point(model.get(), 1, {0, std::nanf(""), INFINITY});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 1, 1});
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    expect_vector(point_of(model.get(), 4)->position, {0, 0, 2147483648.0f});
}

TEST_F(BakeMirror, own_normals_are_mirrored_into_the_mirrored_points) {
    square(AXIS_X);
    point_of(model.get(), 1)->normal = {0.6f, 0.8f, 0};
    put_triangle(model.get(), "body", {1, 2, 3});
    model_bake_mirror(model.get());
    expect_vector(point_of(model.get(), 5)->normal, {-0.6f, 0.8f, 0}, 1e-6f);
    EXPECT_EQ(triangle_normals_of(model.get(), "body_mirror"), (List{{5, 6, 7}}));
    EXPECT_EQ(model->has_normals, 1);
}

TEST_F(BakeMirror, a_point_on_the_plane_has_its_own_normal_turned_by_each_primitive) {
    put_points(model.get(), {{0, 1, 0}, {0, 2, 0}, {0, 1, 5}});
    point_of(model.get(), 1)->normal = {1, 0, 0};
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    put_layer(model.get(), "other", AXIS_X);
    put_triangle(model.get(), "other", {1, 2, 3});
    put_triangle(model.get(), "other", {1, 2, 3});
    model_bake_mirror(model.get());
    expect_vector(point_of(model.get(), 1)->normal, {-1, 0, 0});  // three times
}

TEST_F(BakeMirror, a_normal_from_elsewhere_is_found_or_made_at_the_origin) {
    square(AXIS_X);
    put_point(model.get(), 10, {9, 9, 9}, {1, 0, 0});
    put_point(model.get(), 11, {9, 9, 8}, {-1, 0, 0});
    put_point(model.get(), 12, {9, 9, 7}, {0.6f, 0.8f, 0});
    put_triangle(model.get(), "body", {1, 2, 3}, {10, 12, 10});
    model_bake_mirror(model.get());
    // 13 and 14 for the places of corners 0 and 2, 15 for that of corner 1, 16 for its normal.
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{13, 14, 15}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body_mirror"), (List{{11, 11, 16}}));
    expect_vector(point_of(model.get(), 16)->position, {0, 0, 0});
    expect_vector(point_of(model.get(), 16)->normal, {-0.6f, 0.8f, 0}, 1e-6f);
    EXPECT_EQ(point_of(model.get(), 16)->weight, 0.0f);
}

TEST_F(BakeMirror, polygon_leaves_a_triangle_and_the_rest_of_the_strip) {
    square(AXIS_X);
    put_polygon(model.get(), "body", {1, 2, 3, 4}, {1, 1, 3, 4});
    model_bake_mirror(model.get());
    // Normals of 5 to 8 are all (0, 0, 1), which point 1 has first.
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{5, 7, 6}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body_mirror"), (List{{5, 7, 1}}));
    EXPECT_EQ(strips_of(model.get(), "body_mirror"), (std::vector<Strip>{{{6, 7, 8}, {1, 7, 8}}}));
}

TEST_F(BakeMirror, mirrored_strip_turns_every_triangle_over) {
    square(AXIS_X);
    put_point(model.get(), 5, {1, 8, 3});
    put_polygon(model.get(), "body", {1, 2, 3, 4, 5});
    model_bake_mirror(model.get());
    model_triangulate(model.get());
    // Of 1 2 3, 3 2 4, 3 4 5, whose images are 6 to 10. The strip that is left has four vertices.
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{6, 8, 7}, {7, 8, 9}, {9, 8, 10}}));
}

TEST_F(BakeMirror, polygon_of_three_leaves_one_of_two_which_draws_nothing) {
    square(AXIS_X);
    put_polygon(model.get(), "body", {1, 2, 3});
    model_bake_mirror(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{5, 7, 6}}));
    EXPECT_EQ(strips_of(model.get(), "body_mirror"), (std::vector<Strip>{{{6, 7}, {6, 7}}}));
    EXPECT_EQ(model_count_triangles(model.get(), "body_mirror"), 1);
    model_triangulate(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{5, 7, 6}}));
}

TEST_F(BakeMirror, polygon_of_fewer_than_three_leaves_nothing) {
    square(AXIS_X);
    put_polygon(model.get(), "body", {});
    put_polygon(model.get(), "body", {1});
    put_polygon(model.get(), "body", {1, 2});
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(list_count(&layer_of(model.get(), "body_mirror")->polygons), 0);
    EXPECT_EQ(list_count(&model->points), 4);
}

TEST_F(BakeMirror, primitive_with_a_missing_point_leaves_nothing) {
    square(AXIS_X);
    put_point(model.get(), 9, {9, 9, 9});  // so that the missing number is not given anew
    put_triangle(model.get(), "body", {1, 2, 4});
    put_triangle(model.get(), "body", {1, 2, 3}, {1, 4, 3});
    put_polygon(model.get(), "body", {1, 2, 4, 3});
    put_triangle(model.get(), "body", {1, 2, 3});
    model_remove_point(model.get(), 4);
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body_mirror").size(), 1u);
    EXPECT_EQ(list_count(&layer_of(model.get(), "body_mirror")->polygons), 0);
    EXPECT_EQ(list_count(&model->points), 7);
}

TEST_F(BakeMirror, an_axis_beyond_the_three_doubles_the_layer_in_place) {
    square(AXIS_MINUS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    model_bake_mirror(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{1, 3, 2}}));
}

TEST_F(BakeMirror, a_layer_of_the_new_name_is_added_to) {
    square(AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    put_layer(model.get(), "body_mirror");
    put_triangle(model.get(), "body_mirror", {1, 2, 4});
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{1, 2, 4}, {5, 6, 7}}));
}

TEST_F(BakeMirror, lines_are_not_mirrored) {
    square(AXIS_X);
    const int32_t ids[] = {1, 2};
    model_add_line(model.get(), "body", 2, ids);
    model_bake_mirror(model.get());
    EXPECT_EQ(list_count(&layer_of(model.get(), "body_mirror")->lines), 0);
}

TEST_F(BakeMirror, a_name_that_would_not_be_found_again_is_refused_and_nothing_changed) {
    square(AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    const std::string name(25, 'n');  // 32 bytes with the ending
    put_layer(model.get(), name.c_str(), AXIS_X);
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
    EXPECT_EQ(error_text(), "layer name too long: " + name + "_mirror");
    EXPECT_EQ(model_text(model.get()), before);
    model_rename_layer(model.get(), name.c_str(), name.substr(1).c_str());
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_NE(layer_of(model.get(), (name.substr(1) + "_mirror").c_str()), nullptr);
}

TEST_F(BakeMirror, ids_up_to_the_limit_are_given_and_none_beyond) {
    square(AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    put_point(model.get(), POINT_ID_LIMIT - 3, {100, 100, 100});
    put_layer(model.get(), "more", AXIS_X);
    put_triangle(model.get(), "more", {1, 2, 4});  // needs one id more than there are
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
    EXPECT_EQ(error_text(), "new point ids would pass 32767");
    EXPECT_EQ(model_text(model.get()), before);
    model_delete_layer(model.get(), "more");
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"),
              (List{{POINT_ID_LIMIT - 2, POINT_ID_LIMIT - 1, POINT_ID_LIMIT}}));
}

TEST_F(BakeMirror, ids_beyond_the_limit_are_no_hindrance_where_no_new_ones_are_needed) {
    put_points(model.get(), {{0, 1, 0}, {0, 2, 0}, {0, 1, 5}});
    put_point(model.get(), 2147483647, {100, 100, 100});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body_mirror"), (List{{1, 3, 2}}));
    point_of(model.get(), 3)->position.x = 4;
    layer_of(model.get(), "body")->mirror = 1;
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
}

TEST_F(BakeMirror, mirrored_layers_that_are_added_to_are_counted_with_what_they_get) {
    put_points(model.get(), {{1.5f, 0, 0}, {2.5f, 0, 0}, {3.5f, 0, 0}});
    put_point(model.get(), POINT_ID_LIMIT - 5, {100, 100, 100});
    put_layer(model.get(), "body", AXIS_Y);
    put_triangle(model.get(), "body", {1, 2, 3});  // none: the places lie on the plane
    put_layer(model.get(), "body_mirror", AXIS_X);
    // Nothing of its own; what it gets from body takes three ids, and its image's image again.
    put_triangle(model.get(), "body_mirror", {1, 2, 3});
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
    EXPECT_EQ(model_text(model.get()), before);
    put_point(model.get(), POINT_ID_LIMIT - 6, {100, 100, 100});
    model_remove_point(model.get(), POINT_ID_LIMIT - 5);
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(model_highest_point(model.get()), POINT_ID_LIMIT);
}

TEST_F(BakeMirror, ids_for_a_triangle_that_goes_through_three_mirrors_are_counted) {
    put_points(model.get(), {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}});
    put_layer(model.get(), "body", AXIS_X);
    put_triangle(model.get(), "body", {1, 2, 3});
    put_layer(model.get(), "body_mirror", AXIS_Y);
    put_layer(model.get(), "body_mirror_mirror", AXIS_Z);
    put_point(model.get(), POINT_ID_LIMIT - 8, {100, 100, 100});  // nine are needed
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(BakeMirror, null_and_empty_models) {
    EXPECT_EQ(model_bake_mirror(nullptr), 0);
    EXPECT_EQ(model_bake_mirror(empty_model().get()), 1);
    square(AXIS_X);
    EXPECT_EQ(model_bake_mirror(model.get()), 1);  // a layer without primitives
    EXPECT_EQ(layer_names(model.get()).size(), 2u);
}

// ---- images ----

class BakeMirrorImages : public BakeMirror {
protected:
    BakeMirrorImages() {
        dir.write("a.tga", test::solid_tga(1, 1, 255, 0, 0));
        dir.write("b.tga", test::solid_tga(2, 2, 0, 255, 0));
        std::snprintf(model->path, sizeof model->path, "%s", test::native_path(dir.path() + "/").c_str());
        square(AXIS_X);
        put_triangle(model.get(), "body", {1, 2, 3, 4});
    }
    // The base class looks at the registry when the model is gone.
    ~BakeMirrorImages() override { model.reset(); }
    LayerImage* image_of(const char* layer) { return layer_first_image(layer_of(model.get(), layer)); }
    test::TempDir dir;
};

TEST_F(BakeMirrorImages, the_mirror_image_moves_to_the_new_layer) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 1);
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_MIRROR, "b.tga", 0, 0), 1);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_STREQ(image_of("body_mirror")->names[IMAGE_SLOT_BASE], "b.tga");
    EXPECT_STREQ(image_of("body_mirror")->names[IMAGE_SLOT_MIRROR], "");
    EXPECT_STREQ(image_of("body")->names[IMAGE_SLOT_BASE], "a.tga");
    EXPECT_STREQ(image_of("body")->names[IMAGE_SLOT_MIRROR], "");
    EXPECT_EQ(image_of("body")->pixels[IMAGE_SLOT_MIRROR], nullptr);
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 1);
    EXPECT_EQ(image_find(dir.file("b.tga").c_str())->ref_count, 1);
}

TEST_F(BakeMirrorImages, without_a_mirror_image_both_layers_share_the_image) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 1);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_STREQ(image_of("body_mirror")->names[IMAGE_SLOT_BASE], "a.tga");
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 2);
}

TEST_F(BakeMirrorImages, the_image_axis_of_the_mirror_is_turned) {
    struct Case {
        int mirror, axis, turned;
    };
    for (const Case& c : {Case{1, 1, 4},
                          {1, 4, 1},
                          {1, 2, 2},
                          {1, 5, 5},
                          {2, 2, 5},
                          {2, 5, 2},
                          {2, 1, 1},
                          {3, 3, 6},
                          {3, 6, 3},
                          {3, 4, 4},
                          {4, 1, 1},
                          {4, 4, 4},
                          {5, 5, 5}}) {
        ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", c.axis, AXIS_MINUS_Z), 1);
        layer_of(model.get(), "body")->mirror = 1;
        layer_of(model.get(), "body")->mirror_axis = c.mirror;
        ASSERT_EQ(model_bake_mirror(model.get()), 1);
        EXPECT_EQ(layer_of(model.get(), "body_mirror")->image_axis_u, c.turned) << c.mirror << " " << c.axis;
        EXPECT_EQ(layer_of(model.get(), "body_mirror")->image_axis_v, c.mirror == 3 ? AXIS_Z : AXIS_MINUS_Z);
        model_delete_layer(model.get(), "body_mirror");
    }
}

TEST_F(BakeMirrorImages, mirrored_corners_show_what_their_originals_show) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_MINUS_X, AXIS_Y), 1);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    const Triangle* from = last_triangle(layer_of(model.get(), "body"));
    const Triangle* made = last_triangle(layer_of(model.get(), "body_mirror"));
    for (const auto& [a, b] : {std::pair{0, 0}, {1, 2}, {2, 1}, {3, 3}}) {
        EXPECT_EQ(made->uvs[a][0], from->uvs[b][0]);
        EXPECT_EQ(made->uvs[a][1], from->uvs[b][1]);
    }
}

TEST_F(BakeMirrorImages, colour_key_and_transparency_go_along_but_not_into_the_pixels) {
    layer_of(model.get(), "body")->transparency = 0.5f;
    ASSERT_EQ(model_set_invisible(model.get(), "body", 1, 0, 0), 1);
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 1);
    ASSERT_EQ(image_of("body")->bytes_per_pixel[0], 4);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    const Layer* made = layer_of(model.get(), "body_mirror");
    EXPECT_EQ(made->transparency, 0.5f);
    EXPECT_EQ(made->invisible, 1);
    EXPECT_EQ(made->invisible_colour[0], 255);
    // Intended: the key comes behind the image.
    EXPECT_EQ(image_of("body_mirror")->bytes_per_pixel[0], 3);
}

TEST_F(BakeMirrorImages, without_an_image_neither_colour_key_nor_transparency_goes_along) {
    layer_of(model.get(), "body")->transparency = 0.5f;
    ASSERT_EQ(model_set_invisible(model.get(), "body", 1, 0, 0), 1);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    const Layer* made = layer_of(model.get(), "body_mirror");
    EXPECT_EQ(made->transparency, 0.0f);
    EXPECT_EQ(made->invisible, 0);
    EXPECT_EQ(layer_of(model.get(), "body")->transparency, 0.5f);
}

TEST_F(BakeMirrorImages, a_reflection_map_alone_is_not_carried) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_REFLECTION, "a.tga", 0, 0), 1);
    ASSERT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_EQ(image_of("body_mirror"), nullptr);
    EXPECT_NE(image_of("body")->pixels[IMAGE_SLOT_REFLECTION], nullptr);
}

TEST_F(BakeMirrorImages, a_missing_file_is_no_failure) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 1);
    EXPECT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_MIRROR, "gone.tga", 0, 0), 0);
    EXPECT_EQ(model_bake_mirror(model.get()), 1);
    EXPECT_STREQ(image_of("body_mirror")->names[0], "gone.tga");
    EXPECT_EQ(image_of("body_mirror")->pixels[0], nullptr);
    EXPECT_EQ(error_text(), "cannot open TGA file: " + dir.file("gone.tga"));
}

TEST_F(BakeMirrorImages, a_refused_bake_leaves_no_image) {
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 1);
    ASSERT_EQ(model_add_image(model.get(), "body", IMAGE_SLOT_MIRROR, "b.tga", 0, 0), 1);
    put_point(model.get(), POINT_ID_LIMIT, {100, 100, 100});
    const std::string before = model_text(model.get());
    EXPECT_EQ(model_bake_mirror(model.get()), 0);
    EXPECT_EQ(model_text(model.get()), before);
    EXPECT_EQ(image_find(dir.file("b.tga").c_str())->ref_count, 1);
}

// ---- against the searches ----

// The operation as it is told: every point is looked for from the first one on. Primitives alone.
class Searching {
public:
    explicit Searching(Model* model) : model_(model), next_(model_highest_point(model) + 1) {}

    void run() {
        for (Layer* layer = next_mirrored(); layer != nullptr; layer = next_mirrored()) {
            const std::string name = std::string(layer->name) + "_mirror";
            model_add_layer(model_, name.c_str(), layer->colour[0], layer->colour[1], layer->colour[2],
                            layer->singlesided, 0, 1);
            axis_ = layer->mirror_axis;
            for (const Triangle& t : list_elements<Triangle>(layer->triangles)) { mirror(t, name.c_str()); }
            for (const Polygon& p : list_elements<Polygon>(layer->polygons)) { mirror(p, name.c_str()); }
            layer->mirror = 0;
        }
    }

private:
    Layer* next_mirrored() {
        for (Layer& layer : list_elements<Layer>(model_->layers)) {
            if (layer.mirror) { return &layer; }
        }
        return nullptr;
    }

    Vec3 turned(Vec3 v) const {
        if (axis_ == 1) { v.x = -v.x; }
        if (axis_ == 2) { v.y = -v.y; }
        if (axis_ == 3) { v.z = -v.z; }
        return v;
    }

    std::pair<int, int> corner(int p, int n) {
        const Vec3 place = turned(point_of(model_, p)->position);
        int id = model_point_at(model_, place.x, place.y, place.z);
        if (id == -1) {
            id = next_++;
            model_set_point(model_, id, float_to_int(place.x), float_to_int(place.y), float_to_int(place.z), 1.0f);
        }
        const Vec3 normal = turned(point_of(model_, n)->normal);
        if (p == n) {
            model_set_normal(model_, id, normal.x, normal.y, normal.z);
            return {id, id};
        }
        int normal_id = model_point_with_normal(model_, normal.x, normal.y, normal.z);
        if (normal_id == -1) {
            normal_id = next_++;
            model_set_normal(model_, normal_id, normal.x, normal.y, normal.z);
        }
        return {id, normal_id};
    }

    void mirror(const Triangle& t, const char* target) {
        int points[4], normals[4];
        const int order[4] = {0, 2, 1, 3};
        for (int i = 0; i < triangle_corners(&t); ++i) {
            std::tie(points[i], normals[i]) = corner(t.points[order[i]], t.normals[order[i]]);
        }
        if (!t.quad) { points[3] = points[0]; }
        model_add_triangle(model_, target, t.quad, points, normals, nullptr, t.curve_type);
    }

    void mirror(const Polygon& polygon, const char* target) {
        if (polygon.vertex_count < 3) { return; }
        Ids points, normals;
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            const auto [p, n] = corner(vertex.point, vertex.normal);
            points.push_back(p);
            normals.push_back(n);
        }
        const int p[3] = {points[0], points[2], points[1]};
        const int n[3] = {normals[0], normals[2], normals[1]};
        model_add_triangle(model_, target, 0, p, n, nullptr, 0);
        model_add_polygon(model_, target, polygon.vertex_count - 1, points.data() + 1, normals.data() + 1);
    }

    Model* model_;
    int next_;
    int axis_ = 0;
};

TEST_F(BakeMirror, random_models_come_out_as_by_searching) {
    int new_points = 0;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        Owned indexed = RandomModel(seed).make(60, 4);
        Owned searched = RandomModel(seed).make(60, 4);
        ASSERT_EQ(model_text(indexed.get()), model_text(searched.get()));
        const int before = list_count(&indexed->points);
        ASSERT_EQ(model_bake_mirror(indexed.get()), 1);
        Searching(searched.get()).run();
        ASSERT_EQ(model_text(indexed.get()), model_text(searched.get())) << "seed " << seed;
        new_points += list_count(&indexed->points) - before;
    }
    EXPECT_GT(new_points, 500);  // or the models were too plain
}

}  // namespace
