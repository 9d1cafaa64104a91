// Splitting quads and polygons into triangles.
#include <gtest/gtest.h>

#include "formats/layer_image.h"
#include "formats/line_reader.h"
#include "reduce/flatten.h"
#include "support/edit_model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

class Triangulate : public EditTest {
protected:
    Triangulate() {
        put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 2, 0}, {1, 2, 0}, {0, 3, 0}});
        put_layer(model.get());
    }

    std::vector<Ids> split_polygon(const Ids& points) {
        put_polygon(model.get(), "body", points);
        EXPECT_EQ(model_triangulate(model.get()), 1);
        EXPECT_EQ(list_count(&layer_of(model.get(), "body")->polygons), 0);
        return triangles_of(model.get(), "body");
    }

    Owned model = empty_model();
};

using List = std::vector<Ids>;

TEST_F(Triangulate, quad_becomes_two_triangles_with_its_normals) {
    put_triangle(model.get(), "body", {1, 2, 3, 4}, {5, 6, 7, 1});
    EXPECT_EQ(model_triangulate(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3}, {3, 2, 4}}));
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (List{{5, 6, 7}, {7, 6, 1}}));
    EXPECT_EQ(list_at<Triangle>(&layer_of(model.get(), "body")->triangles, 0, 0)->points[3], 0);
}

TEST_F(Triangulate, second_halves_stand_behind_all_that_was_there) {
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    put_triangle(model.get(), "body", {1, 2, 5});
    put_triangle(model.get(), "body", {3, 4, 5, 6});
    model_triangulate(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3}, {1, 2, 5}, {3, 4, 5}, {3, 2, 4}, {5, 4, 6}}));
}

TEST_F(Triangulate, second_half_takes_the_lowest_free_slot) {
    const Triangle* first = put_triangle(model.get(), "body", {1, 2, 5});
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    list_remove(&layer_of(model.get(), "body")->triangles, first->id);
    model_triangulate(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{3, 2, 4}, {1, 2, 3}}));
}

TEST_F(Triangulate, curved_quad_stays) {
    put_triangle(model.get(), "body", {1, 2, 3, 4}, {}, 4);
    model_triangulate(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3, 4}}));
}

TEST_F(Triangulate, polygon_of_three_leaves_its_triangle_twice) {
    EXPECT_EQ(split_polygon({1, 2, 3}), (List{{1, 2, 3}, {1, 2, 3}}));
}

TEST_F(Triangulate, polygon_of_four_alternates_the_winding) {
    EXPECT_EQ(split_polygon({1, 2, 3, 4}), (List{{1, 2, 3}, {3, 2, 4}}));
}

TEST_F(Triangulate, polygon_of_five_doubles_the_last_triangle) {
    EXPECT_EQ(split_polygon({1, 2, 3, 4, 5}), (List{{1, 2, 3}, {3, 2, 4}, {3, 4, 5}, {3, 4, 5}}));
}

TEST_F(Triangulate, polygon_of_six_becomes_four_triangles) {
    EXPECT_EQ(split_polygon({1, 2, 3, 4, 5, 6}), (List{{1, 2, 3}, {3, 2, 4}, {3, 4, 5}, {5, 4, 6}}));
}

TEST_F(Triangulate, polygon_of_fewer_than_three_leaves_nothing) {
    put_polygon(model.get(), "body", {});
    put_polygon(model.get(), "body", {1});
    EXPECT_EQ(split_polygon({1, 2}), List{});
}

TEST_F(Triangulate, triangles_of_a_polygon_take_the_normals_of_their_corners) {
    put_polygon(model.get(), "body", {1, 2, 3, 4}, {5, 6, 7, 1});
    model_triangulate(model.get());
    EXPECT_EQ(triangle_normals_of(model.get(), "body"), (List{{1, 2, 3}, {3, 2, 4}}));
}

TEST_F(Triangulate, texture_coordinates_are_mapped_anew) {
    const test::TempDir dir;
    dir.write("a.tga", test::solid_tga(1, 1, 1, 2, 3));
    std::snprintf(model->path, sizeof model->path, "%s/", dir.path().c_str());
    put_polygon(model.get(), "body", {1, 2, 3, 4});
    ASSERT_EQ(model_add_image(model.get(), "body", 0, "a.tga", AXIS_MINUS_X, AXIS_Y), 1);
    model_triangulate(model.get());
    const Triangle* last = last_triangle(layer_of(model.get(), "body"));
    ASSERT_EQ(last->points[2], 4);  // at the upper end of both axes of a box from 0 to 1
    EXPECT_EQ(last->uvs[2][0], 1.0f);
    EXPECT_EQ(last->uvs[2][1], 1.0f);
    model.reset();
}

TEST_F(Triangulate, a_triangle_that_cannot_be_added_ends_a_read_in_progress) {
    put_polygon(model.get(), "body", {1, 2, 3});
    model_remove_point(model.get(), 2);
    static int lines;
    lines = 0;
    const LineCallback callback = [](void* context) {
        ++lines;
        EXPECT_EQ(model_triangulate(static_cast<Model*>(context)), 1);
    };
    EXPECT_EQ(reader_run_data("a\nb\n", "#", 1, callback, model.get()), 0);
    EXPECT_EQ(lines, 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), List{});
    EXPECT_EQ(list_count(&layer_of(model.get(), "body")->polygons), 0);
}

TEST_F(Triangulate, a_quad_with_a_missing_fourth_corner_leaves_its_first_half) {
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    model_remove_point(model.get(), 4);
    EXPECT_EQ(model_triangulate(model.get()), 1);
    EXPECT_EQ(triangles_of(model.get(), "body"), (List{{1, 2, 3}}));
    EXPECT_EQ(error_text(), "point does not exist");
}

TEST_F(Triangulate, layer_that_cannot_be_found_by_its_name_stays_as_it_is) {
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    const std::string name(40, 'n');
    ASSERT_EQ(model_rename_layer(model.get(), "body", name.c_str()), 1);
    EXPECT_EQ(model_triangulate(model.get()), 1);
    const Layer& layer = *list_elements<Layer>(model->layers).begin();
    EXPECT_EQ((*list_elements<Triangle>(layer.triangles).begin()).quad, 1);
}

TEST_F(Triangulate, null_and_empty_models) {
    EXPECT_EQ(model_triangulate(nullptr), 0);
    EXPECT_EQ(model_triangulate(empty_model().get()), 1);
}

}  // namespace
