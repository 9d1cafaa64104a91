// Layers: adding, finding, renaming, deleting, and their settings.
#include "scene/layer.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "formats/layer_image.h"
#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "scene/model.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

class LayerTest : public ::testing::Test {
protected:
    LayerTest() : model(model_create("made.mod", nullptr)) { load_error_set(nullptr); }
    ~LayerTest() override { model_release(model); }

    void add(const char* name, int mirror = 0, int axis = 0) {
        ASSERT_EQ(model_add_layer(model, name, 10, 20, 30, 1, mirror, axis), 1);
    }

    void add_triangle(const char* layer) {
        for (int id = 1; id <= 3; ++id) { model_set_point(model, id, id == 2 ? 10 : 0, id == 3 ? 10 : 0, 0, 1.0f); }
        const int32_t ids[] = {1, 2, 3, 0};
        ASSERT_EQ(model_add_triangle(model, layer, 0, ids, nullptr, nullptr, 0), 1);
    }

    std::string error() const { return load_error_get() != nullptr ? load_error_get() : ""; }

    Model* model;
};

// An uncompressed picture of 2 x 2 pixels, 24 bits.
std::string tiny_tga() {
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = 2;
    bytes[14] = 2;
    bytes[16] = 24;
    return bytes + std::string(12, '\x40');
}

TEST_F(LayerTest, AddStoresWhatIsGivenAndClearsTheRest) {
    ASSERT_EQ(model_add_layer(model, "skin", 10, 20, 30, 1, 1, AXIS_Y), 1);
    const Layer* layer = model_find_layer(model, "skin");
    ASSERT_NE(layer, nullptr);
    EXPECT_STREQ(layer->name, "skin");
    EXPECT_EQ(layer->colour[0], 10);
    EXPECT_EQ(layer->colour[1], 20);
    EXPECT_EQ(layer->colour[2], 30);
    EXPECT_EQ(layer->singlesided, 1);
    EXPECT_EQ(layer->mirror, 1);
    EXPECT_EQ(layer->mirror_axis, AXIS_Y);
    EXPECT_EQ(layer->transparency, 0.0f);
    EXPECT_EQ(layer->invisible, 0);
    EXPECT_EQ(layer->image_repeat, 0);
}

TEST_F(LayerTest, AddClearsTheTextThatALookUpLeft) {
    EXPECT_EQ(model_find_layer(model, "skin"), nullptr);
    EXPECT_STREQ(load_error_get(), "layer does not exist");
    add("skin");
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LayerTest, AddingTheSameNameTwiceFailsAndKeepsTheFirst) {
    add("skin");
    EXPECT_EQ(model_add_layer(model, "skin", 1, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(error(), "duplicate layer name not allowed");
    EXPECT_EQ(model_count_layers(model), 1);
    EXPECT_EQ(model_find_layer(model, "skin")->colour[0], 10);
}

TEST_F(LayerTest, NullNamesFailSilently) {
    EXPECT_EQ(model_add_layer(nullptr, "a", 0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(model_add_layer(model, nullptr, 0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(model_find_layer(model, nullptr), nullptr);
    EXPECT_EQ(model_delete_layer(model, nullptr), 0);
    EXPECT_EQ(model_rename_layer(model, nullptr, "a"), 0);
    EXPECT_EQ(model_set_layer_colour(model, nullptr, 1, 2, 3), 0);
    EXPECT_EQ(model_set_invisible(model, nullptr, 2.0f, 0.0f, 0.0f), 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LayerTest, FindOfAnAbsentLayerLeavesAText) {
    EXPECT_EQ(model_find_layer(model, "skin"), nullptr);
    EXPECT_EQ(error(), "layer does not exist");
}

TEST_F(LayerTest, NameOf32BytesIsAddedAndNotFoundAgain) {
    const std::string name(32, 'n');
    add(name.c_str());
    EXPECT_EQ(model_count_layers(model), 1);
    EXPECT_EQ(model_find_layer(model, name.c_str()), nullptr);
    EXPECT_EQ(model_delete_layer(model, name.c_str()), 0);
    add(std::string(31, 'm').c_str());
    EXPECT_NE(model_find_layer(model, std::string(31, 'm').c_str()), nullptr);
}

TEST_F(LayerTest, NameLongerThanItsFieldIsCutWithinBounds) {
    add(std::string(500, 'n').c_str());
    const Layer* layer = list_at<Layer>(&model->layers, 0, 0);
    EXPECT_EQ(std::string(127, 'n'), layer->name);
    EXPECT_EQ(layer->colour[0], 10);
}

TEST_F(LayerTest, LayerWithALongNameIsReleasedByItsSlot) {
    add(std::string(40, 'n').c_str());
    model_delete_layer_slot(model, 0);
    EXPECT_EQ(model_count_layers(model), 0);
    model_delete_layer_slot(model, 0);
    model_delete_layer_slot(model, -1);
    model_delete_layer_slot(nullptr, 0);
    EXPECT_EQ(model_count_layers(model), 0);
}

TEST_F(LayerTest, DeleteOfAnAbsentLayerLeavesNoText) {
    EXPECT_EQ(model_delete_layer(model, "skin"), 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LayerTest, ALayerInTheSlotOfADeletedOneKeepsFiveOfItsFields) {
    add("old");
    Layer* old = model_find_layer(model, "old");
    old->image_axis_u = AXIS_Z;
    old->image_axis_v = AXIS_MINUS_X;
    old->image_repeat = 1;
    old->repeat_u = 2.5f;
    old->repeat_v = 3.5f;
    old->transparency = 0.5f;
    old->invisible = 1;
    old->invisible_colour[1] = 9;
    old->bounds_min = Vec3{-1, -2, -3};
    old->bounds_max = Vec3{1, 2, 3};
    ASSERT_EQ(model_delete_layer(model, "old"), 1);
    add("new");
    const Layer* fresh = model_find_layer(model, "new");
    ASSERT_EQ(old, fresh) << "the slot is used again";
    EXPECT_EQ(fresh->image_axis_u, AXIS_Z);
    EXPECT_EQ(fresh->image_axis_v, AXIS_MINUS_X);
    EXPECT_EQ(fresh->image_repeat, 1);
    EXPECT_EQ(fresh->repeat_u, 2.5f);
    EXPECT_EQ(fresh->repeat_v, 3.5f);
    EXPECT_EQ(fresh->transparency, 0.0f);
    EXPECT_EQ(fresh->invisible, 0);
    EXPECT_EQ(fresh->invisible_colour[1], 0);
    for (const Vec3& corner : {fresh->bounds_min, fresh->bounds_max}) {
        EXPECT_EQ(corner.x, 0.0f);
        EXPECT_EQ(corner.y, 0.0f);
        EXPECT_EQ(corner.z, 0.0f);
    }
}

TEST_F(LayerTest, RenameKeepsTheContent) {
    add("old");
    add_triangle("old");
    EXPECT_EQ(model_rename_layer(model, "old", "new"), 1);
    EXPECT_EQ(model_find_layer(model, "old"), nullptr);
    const Layer* layer = model_find_layer(model, "new");
    ASSERT_NE(layer, nullptr);
    EXPECT_STREQ(layer->name, "new");
    EXPECT_EQ(list_count(&layer->triangles), 1);
    EXPECT_EQ(model_count_layers(model), 1);
}

TEST_F(LayerTest, RenameToItsOwnNameKeepsTheLayer) {
    add("same");
    add_triangle("same");
    EXPECT_EQ(model_rename_layer(model, "same", "same"), 1);
    const Layer* layer = model_find_layer(model, "same");
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(list_count(&layer->triangles), 1);
    EXPECT_EQ(model_count_layers(model), 1);
}

TEST_F(LayerTest, RenameWithNamesOutOfTheRecordsThemselves) {
    add("one");
    add("two");
    Layer* one = model_find_layer(model, "one");
    Layer* two = model_find_layer(model, "two");
    EXPECT_EQ(model_rename_layer(model, one->name, two->name), 1);
    EXPECT_EQ(model_count_layers(model), 1);
    EXPECT_NE(model_find_layer(model, "two"), nullptr);
}

TEST_F(LayerTest, RenameOntoAnotherLayerDestroysThatOne) {
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    add_triangle("two");
    const int32_t ids[] = {1, 2, 3};
    ASSERT_EQ(model_add_polygon(model, "two", 3, ids, nullptr), 1);
    ASSERT_EQ(model_add_line(model, "two", 3, ids), 1);
    EXPECT_EQ(model_rename_layer(model, "one", "two"), 1);
    EXPECT_EQ(model_count_layers(model), 1);
    const Layer* layer = model_find_layer(model, "two");
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(list_count(&layer->triangles), 1);
    EXPECT_EQ(list_count(&layer->polygons), 0);
}

TEST_F(LayerTest, RenameToAnEmptyNameOrOfAnAbsentLayerFails) {
    add("old");
    EXPECT_EQ(model_rename_layer(model, "old", ""), 0);
    EXPECT_EQ(model_rename_layer(model, "none", "new"), 0);
    EXPECT_NE(model_find_layer(model, "old"), nullptr);
}

TEST_F(LayerTest, ColourIsReadBackWithAFourthZero) {
    add("skin");
    float colour[4] = {};
    model_layer_colour(model, "skin", colour);
    EXPECT_EQ(colour[0], 10.0f);
    EXPECT_EQ(colour[1], 20.0f);
    EXPECT_EQ(colour[2], 30.0f);
    EXPECT_EQ(colour[3], 0.0f);
    EXPECT_EQ(model_set_layer_colour(model, "skin", 1, 2, 3), 1);
    model_layer_colour(model, "skin", colour);
    EXPECT_EQ(colour[2], 3.0f);
}

TEST_F(LayerTest, ColourOfAnAbsentLayerIs255FourTimes) {
    float colour[4] = {};
    model_layer_colour(model, "none", colour);
    for (const float channel : colour) { EXPECT_EQ(channel, 255.0f); }
    float other[4] = {};
    model_layer_colour(nullptr, nullptr, other);
    EXPECT_EQ(other[3], 255.0f);
    model_layer_colour(model, "none", nullptr);
}

TEST_F(LayerTest, SidesAreOneWhenSingleSidedOrAbsentElseTwo) {
    add("skin");
    EXPECT_EQ(model_layer_sides(model, "skin"), 1);
    EXPECT_EQ(model_set_layer_sides(model, "skin", 2), 1);
    EXPECT_EQ(model_layer_sides(model, "skin"), 2);
    EXPECT_EQ(model_set_layer_sides(model, "skin", 1), 1);
    EXPECT_EQ(model_layer_sides(model, "skin"), 1);
    EXPECT_EQ(model_set_layer_sides(model, "skin", -5), 1);
    EXPECT_EQ(model_find_layer(model, "skin")->singlesided, 1);
    EXPECT_EQ(model_layer_sides(model, "none"), 1);
    EXPECT_EQ(model_set_layer_sides(model, "none", 2), 0);
}

TEST_F(LayerTest, AnyNumberOfSidesAboveOneIsTwo) {
    for (const int sides : {2, 3, 4, 127, std::numeric_limits<int>::max()}) {
        add("skin");
        ASSERT_EQ(model_layer_sides(model, "skin"), 1);
        EXPECT_EQ(model_set_layer_sides(model, "skin", sides), 1);
        EXPECT_EQ(model_layer_sides(model, "skin"), 2) << sides;
        EXPECT_EQ(model_find_layer(model, "skin")->singlesided, 0);
        EXPECT_EQ(model_set_layer_sides(model, "skin", 0), 1);
        EXPECT_EQ(model_layer_sides(model, "skin"), 1);
        model_delete_layer(model, "skin");
    }
}

TEST_F(LayerTest, MirrorCodesOneToThreeSetAndZeroClears) {
    add("skin");
    for (const int code : {AXIS_X, AXIS_Y, AXIS_Z}) {
        EXPECT_EQ(model_set_layer_mirror(model, "skin", code), 1);
        EXPECT_EQ(code, model_layer_mirror(model, "skin"));
    }
    EXPECT_EQ(model_set_layer_mirror(model, "skin", 0), 1);
    EXPECT_EQ(model_layer_mirror(model, "skin"), 0);
    EXPECT_EQ(model_set_layer_mirror(model, "none", 1), 0);
}

TEST_F(LayerTest, MirrorCodeFourLeavesTheLayerAndSucceeds) {
    add("skin", 1, AXIS_Y);
    for (const int code : {4, 5, 6, 7, -1}) {
        EXPECT_EQ(model_set_layer_mirror(model, "skin", code), 1);
        EXPECT_EQ(model_layer_mirror(model, "skin"), AXIS_Y);
    }
}

TEST_F(LayerTest, TransparencyOfALayerTakesAnyValue) {
    add("skin");
    EXPECT_EQ(model_set_layer_transparency(model, "skin", 7.5f), 1);
    EXPECT_EQ(model_layer_transparency(model, "skin"), 7.5f);
    EXPECT_EQ(model_layer_transparency(model, "none"), 0.0f);
    EXPECT_EQ(model_set_layer_transparency(model, "none", 1.0f), 0);
}

TEST_F(LayerTest, TransparencyFromAFileIsHeldToItsRangeWithoutAText) {
    add("skin");
    EXPECT_EQ(model_set_transparency(model, "skin", 1.0f), 1);
    EXPECT_EQ(model_set_transparency(model, "skin", 0.0f), 1);
    EXPECT_EQ(model_set_transparency(model, "skin", 0.25f), 1);
    EXPECT_EQ(model_set_transparency(model, "skin", 1.01f), 0);
    EXPECT_EQ(model_set_transparency(model, "skin", -0.01f), 0);
    EXPECT_EQ(model_set_transparency(model, "skin", std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(model_layer_transparency(model, "skin"), 0.25f);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LayerTest, InvisibleColourIsCutToBytes) {
    add("skin");
    EXPECT_EQ(model_set_invisible(model, "skin", 0.0f, 0.5f, 1.0f), 1);
    const Layer* layer = model_find_layer(model, "skin");
    EXPECT_EQ(layer->invisible, 1);
    EXPECT_EQ(layer->invisible_colour[0], 0);
    EXPECT_EQ(layer->invisible_colour[1], 127);  // 127.5 cut
    EXPECT_EQ(layer->invisible_colour[2], 255);
}

TEST_F(LayerTest, InvisibleColourOutOfRangeIsRefusedBeforeTheLayerIsLookedFor) {
    const char* text = "invisible color out of range (should be 0.0 to 1.0)";
    add("skin");
    for (const float bad : {-0.1f, 1.1f, std::numeric_limits<float>::quiet_NaN()}) {
        load_error_set(nullptr);
        EXPECT_EQ(model_set_invisible(model, "none", bad, 0.0f, 0.0f), 0);
        EXPECT_EQ(text, error());
        EXPECT_EQ(model_set_invisible(model, "skin", 0.0f, bad, 0.0f), 0);
        EXPECT_EQ(model_set_invisible(model, "skin", 0.0f, 0.0f, bad), 0);
    }
    EXPECT_EQ(model_find_layer(model, "skin")->invisible, 0);
    EXPECT_EQ(model_set_invisible(model, "none", 0.0f, 0.0f, 0.0f), 0);
    EXPECT_EQ(error(), "layer does not exist");
}

TEST_F(LayerTest, ReflectionNeedsAnImageAndARange) {
    add("skin");
    EXPECT_EQ(model_set_reflection(model, "skin", 0.5f), 0);
    Layer* layer = model_find_layer(model, "skin");
    LayerImage* image = list_add<LayerImage>(&layer->images, 1);
    EXPECT_EQ(image, layer_first_image(layer));
    load_error_set(nullptr);
    EXPECT_EQ(model_set_reflection(model, "skin", 0.5f), 1);
    EXPECT_EQ(model_set_reflection(model, "skin", 1.5f), 0);
    EXPECT_EQ(model_set_reflection(model, "skin", -0.5f), 0);
    EXPECT_EQ(image->reflection, 0.5f);
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_EQ(layer_first_image(nullptr), nullptr);
}

TEST_F(LayerTest, DeletingALayerWithImagesGivesItsReferencesBackAndLeavesThoseOfOthers) {
    const test::TempDir dir;
    const std::string file = dir.write("skin.tga", tiny_tga());
    ASSERT_EQ(model_rename(model, dir.file("made.mod").c_str()), 1);
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    ASSERT_EQ(model_add_image(model, "one", IMAGE_SLOT_BASE, "skin.tga", AXIS_X, AXIS_Y), 1) << error();
    ASSERT_EQ(model_add_image(model, "two", IMAGE_SLOT_BASE, "skin.tga", AXIS_X, AXIS_Y), 1) << error();
    ASSERT_NE(image_find(file.c_str()), nullptr);
    EXPECT_EQ(image_find(file.c_str())->ref_count, 2);
    EXPECT_EQ(model_delete_layer(model, "one"), 1);
    ASSERT_NE(image_find(file.c_str()), nullptr);
    EXPECT_EQ(image_find(file.c_str())->ref_count, 1);
    EXPECT_EQ(model_delete_layer(model, "two"), 1);
    EXPECT_EQ(image_find(file.c_str()), nullptr);
}

TEST_F(LayerTest, ImageReferencesGoBackAfterARenameOfTheModelAndOfALayerOntoAnother) {
    const test::TempDir dir;
    const std::string first = dir.write("first.tga", tiny_tga());
    const std::string second = dir.write("second.tga", tiny_tga());
    ASSERT_EQ(model_rename(model, dir.file("made.mod").c_str()), 1);
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    ASSERT_EQ(model_add_image(model, "one", IMAGE_SLOT_BASE, "first.tga", AXIS_X, AXIS_Y), 1) << error();
    ASSERT_EQ(model_add_image(model, "two", IMAGE_SLOT_BASE, "second.tga", AXIS_X, AXIS_Y), 1) << error();
    ASSERT_EQ(model_rename(model, "else/where.mod"), 1);
    EXPECT_EQ(model_rename_layer(model, "one", "two"), 1);
    EXPECT_EQ(image_find(second.c_str()), nullptr);
    ASSERT_NE(image_find(first.c_str()), nullptr);
    EXPECT_EQ(image_find(first.c_str())->ref_count, 1);
    EXPECT_EQ(model_delete_layer(model, "two"), 1);
    EXPECT_EQ(image_find(first.c_str()), nullptr);
}

TEST_F(LayerTest, ReleaseOfAnImageSlotEmptiesItAndKeepsTheName) {
    LayerImage image{};
    image.names[1][0] = 'n';
    layer_image_release_slot(&image, 1);
    layer_image_release_slot(&image, 3);
    layer_image_release_slot(&image, -1);
    layer_image_release_slot(nullptr, 0);
    EXPECT_STREQ(image.names[1], "n");
    EXPECT_EQ(image.image_id[1], 0);
    EXPECT_EQ(image.pixels[1], nullptr);
}

}  // namespace
}  // namespace pelt
