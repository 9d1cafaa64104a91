// Copies to work on.
#include <gtest/gtest.h>

#include <string>

#include "reduce/scratch_copy.h"
#include "support/edit_model.h"
#include "support/temp_dir.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

class ScratchCopy : public EditTest {
protected:
    ScratchCopy() {
        put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
        put_layer(model.get(), "first", AXIS_Y);
        put_layer(model.get(), "second");
        put_triangle(model.get(), "first", {1, 2, 3}, {}, 3);
        put_polygon(model.get(), "second", {1, 2, 3, 4}, {4, 3, 2, 1});
        model_add_uvee(model.get(), "second", 2, 0.5f, 0.25f);
    }
    Owned model = empty_model();
};

TEST_F(ScratchCopy, surfaces_are_the_same) {
    Owned copy(model_scratch_copy(model.get()));
    EXPECT_EQ(model_text(copy.get()), model_text(model.get()));
}

TEST_F(ScratchCopy, source_and_copy_change_apart) {
    const std::string before = model_text(model.get());
    {
        Owned copy(model_scratch_copy(model.get()));
        put_point(copy.get(), 9, {1, 1, 1});
        put_polygon(copy.get(), "second", {1, 9, 3});
        put_triangle(copy.get(), "first", {1, 9, 3});
        model_add_uvee(copy.get(), "second", 9, 0, 0);
        Polygon& polygon = *list_elements<Polygon>(layer_of(copy.get(), "second")->polygons).begin();
        (*list_elements<PolygonVertex>(polygon.vertices).begin()).point = 9;
        model_delete_layer(copy.get(), "first");
        EXPECT_EQ(model_text(model.get()), before);
    }
    EXPECT_EQ(model_text(model.get()), before);
}

TEST_F(ScratchCopy, a_long_directory_is_its_own) {
    const std::string directory = test::native_path(std::string(300, 'd') + "/");
    Owned deep(model_create_long((directory + "tree.mod").c_str(), nullptr));
    Owned copy(model_scratch_copy(deep.get()));
    deep.reset();
    EXPECT_EQ(model_directory(copy.get()), directory);
}

TEST_F(ScratchCopy, joints_and_lines_are_left_out) {
    point_of(model.get(), 1)->joint_a = put_joint(model.get(), "arm");
    const int32_t ids[] = {1, 2};
    model_add_line(model.get(), "first", 2, ids);
    Owned copy(model_scratch_copy(model.get()));
    EXPECT_EQ(list_count(&copy->joints), 0);
    EXPECT_EQ(point_of(copy.get(), 1)->joint_a, nullptr);
    EXPECT_EQ(list_count(&layer_of(copy.get(), "first")->lines), 0);
    EXPECT_EQ(list_count(&layer_of(model.get(), "first")->lines), 1);
}

TEST_F(ScratchCopy, no_reference_to_an_image_is_taken) {
    LayerImage* image = list_add<LayerImage>(&layer_of(model.get(), "first")->images, 1);
    *image = LayerImage{};
    image->image_id[0] = 77;
    std::snprintf(image->names[0], sizeof image->names[0], "a.tga");
    Owned copy(model_scratch_copy(model.get()));
    const LayerImage* copied = layer_first_image(layer_of(copy.get(), "first"));
    EXPECT_STREQ(copied->names[0], "a.tga");
    EXPECT_EQ(copied->image_id[0], 0);
    EXPECT_EQ(image->image_id[0], 77);
    image->image_id[0] = 0;
}

TEST_F(ScratchCopy, links_are_borrowed) {
    model_add_child(model.get(), empty_model("wing").release(), "wing", 1, 2, 3, 1, 1, 1, "0", "0", "0");
    {
        Owned copy(model_scratch_copy(model.get()));
        EXPECT_EQ((*list_elements<ChildLink>(copy->children).begin()).borrowed, 1);
    }
    EXPECT_EQ((*list_elements<ChildLink>(model->children).begin()).borrowed, 0);
    EXPECT_STREQ((*list_elements<ChildLink>(model->children).begin()).model->name, "wing");
}

TEST_F(ScratchCopy, null_gives_null) { EXPECT_EQ(model_scratch_copy(nullptr), nullptr); }

}  // namespace
