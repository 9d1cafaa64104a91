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
        ASSERT_EQ(1, model_add_layer(model, name, 10, 20, 30, 1, mirror, axis));
    }

    void add_triangle(const char* layer) {
        for (int id = 1; id <= 3; ++id) {
            model_set_point(model, id, id == 2 ? 10 : 0, id == 3 ? 10 : 0, 0, 1.0f);
        }
        const int32_t ids[] = {1, 2, 3, 0};
        ASSERT_EQ(1, model_add_triangle(model, layer, 0, ids, nullptr, nullptr, 0));
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
    ASSERT_EQ(1, model_add_layer(model, "skin", 10, 20, 30, 1, 1, AXIS_Y));
    const Layer* layer = model_find_layer(model, "skin");
    ASSERT_NE(nullptr, layer);
    EXPECT_STREQ("skin", layer->name);
    EXPECT_EQ(10, layer->colour[0]);
    EXPECT_EQ(20, layer->colour[1]);
    EXPECT_EQ(30, layer->colour[2]);
    EXPECT_EQ(1, layer->singlesided);
    EXPECT_EQ(1, layer->mirror);
    EXPECT_EQ(AXIS_Y, layer->mirror_axis);
    EXPECT_EQ(0.0f, layer->transparency);
    EXPECT_EQ(0, layer->invisible);
    EXPECT_EQ(0, layer->image_repeat);
}

TEST_F(LayerTest, AddClearsTheTextThatALookUpLeft) {
    EXPECT_EQ(nullptr, model_find_layer(model, "skin"));
    EXPECT_STREQ("layer does not exist", load_error_get());
    add("skin");
    EXPECT_EQ(nullptr, load_error_get());
}

TEST_F(LayerTest, AddingTheSameNameTwiceFailsAndKeepsTheFirst) {
    add("skin");
    EXPECT_EQ(0, model_add_layer(model, "skin", 1, 1, 1, 0, 0, 0));
    EXPECT_EQ("duplicate layer name not allowed", error());
    EXPECT_EQ(1, model_count_layers(model));
    EXPECT_EQ(10, model_find_layer(model, "skin")->colour[0]);
}

TEST_F(LayerTest, NullNamesFailSilently) {
    EXPECT_EQ(0, model_add_layer(nullptr, "a", 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(0, model_add_layer(model, nullptr, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(nullptr, model_find_layer(model, nullptr));
    EXPECT_EQ(0, model_delete_layer(model, nullptr));
    EXPECT_EQ(0, model_rename_layer(model, nullptr, "a"));
    EXPECT_EQ(0, model_set_layer_colour(model, nullptr, 1, 2, 3));
    EXPECT_EQ(0, model_set_invisible(model, nullptr, 2.0f, 0.0f, 0.0f));
    EXPECT_EQ(nullptr, load_error_get());
}

TEST_F(LayerTest, FindOfAnAbsentLayerLeavesAText) {
    EXPECT_EQ(nullptr, model_find_layer(model, "skin"));
    EXPECT_EQ("layer does not exist", error());
}

TEST_F(LayerTest, NameOf32BytesIsAddedAndNotFoundAgain) {
    const std::string name(32, 'n');
    add(name.c_str());
    EXPECT_EQ(1, model_count_layers(model));
    EXPECT_EQ(nullptr, model_find_layer(model, name.c_str()));
    EXPECT_EQ(0, model_delete_layer(model, name.c_str()));
    add(std::string(31, 'm').c_str());
    EXPECT_NE(nullptr, model_find_layer(model, std::string(31, 'm').c_str()));
}

TEST_F(LayerTest, NameLongerThanItsFieldIsCutWithinBounds) {
    add(std::string(500, 'n').c_str());
    const Layer* layer = static_cast<Layer*>(list_at(&model->layers, 0, 0));
    EXPECT_EQ(std::string(127, 'n'), layer->name);
    EXPECT_EQ(10, layer->colour[0]);
}

TEST_F(LayerTest, LayerWithALongNameIsReleasedByItsSlot) {
    add(std::string(40, 'n').c_str());
    model_delete_layer_slot(model, 0);
    EXPECT_EQ(0, model_count_layers(model));
    model_delete_layer_slot(model, 0);
    model_delete_layer_slot(model, -1);
    model_delete_layer_slot(nullptr, 0);
    EXPECT_EQ(0, model_count_layers(model));
}

TEST_F(LayerTest, DeleteOfAnAbsentLayerLeavesNoText) {
    EXPECT_EQ(0, model_delete_layer(model, "skin"));
    EXPECT_EQ(nullptr, load_error_get());
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
    ASSERT_EQ(1, model_delete_layer(model, "old"));
    add("new");
    const Layer* fresh = model_find_layer(model, "new");
    ASSERT_EQ(old, fresh) << "the slot is used again";
    EXPECT_EQ(AXIS_Z, fresh->image_axis_u);
    EXPECT_EQ(AXIS_MINUS_X, fresh->image_axis_v);
    EXPECT_EQ(1, fresh->image_repeat);
    EXPECT_EQ(2.5f, fresh->repeat_u);
    EXPECT_EQ(3.5f, fresh->repeat_v);
    EXPECT_EQ(0.0f, fresh->transparency);
    EXPECT_EQ(0, fresh->invisible);
    EXPECT_EQ(0, fresh->invisible_colour[1]);
    for (const Vec3& corner : {fresh->bounds_min, fresh->bounds_max}) {
        EXPECT_EQ(0.0f, corner.x);
        EXPECT_EQ(0.0f, corner.y);
        EXPECT_EQ(0.0f, corner.z);
    }
}

TEST_F(LayerTest, RenameKeepsTheContent) {
    add("old");
    add_triangle("old");
    EXPECT_EQ(1, model_rename_layer(model, "old", "new"));
    EXPECT_EQ(nullptr, model_find_layer(model, "old"));
    const Layer* layer = model_find_layer(model, "new");
    ASSERT_NE(nullptr, layer);
    EXPECT_STREQ("new", layer->name);
    EXPECT_EQ(1, list_count(&layer->triangles));
    EXPECT_EQ(1, model_count_layers(model));
}

TEST_F(LayerTest, RenameToItsOwnNameKeepsTheLayer) {
    add("same");
    add_triangle("same");
    EXPECT_EQ(1, model_rename_layer(model, "same", "same"));
    const Layer* layer = model_find_layer(model, "same");
    ASSERT_NE(nullptr, layer);
    EXPECT_EQ(1, list_count(&layer->triangles));
    EXPECT_EQ(1, model_count_layers(model));
}

TEST_F(LayerTest, RenameWithNamesOutOfTheRecordsThemselves) {
    add("one");
    add("two");
    Layer* one = model_find_layer(model, "one");
    Layer* two = model_find_layer(model, "two");
    EXPECT_EQ(1, model_rename_layer(model, one->name, two->name));
    EXPECT_EQ(1, model_count_layers(model));
    EXPECT_NE(nullptr, model_find_layer(model, "two"));
}

TEST_F(LayerTest, RenameOntoAnotherLayerDestroysThatOne) {
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    add_triangle("two");
    const int32_t ids[] = {1, 2, 3};
    ASSERT_EQ(1, model_add_polygon(model, "two", 3, ids, nullptr));
    ASSERT_EQ(1, model_add_line(model, "two", 3, ids));
    EXPECT_EQ(1, model_rename_layer(model, "one", "two"));
    EXPECT_EQ(1, model_count_layers(model));
    const Layer* layer = model_find_layer(model, "two");
    ASSERT_NE(nullptr, layer);
    EXPECT_EQ(1, list_count(&layer->triangles));
    EXPECT_EQ(0, list_count(&layer->polygons));
}

TEST_F(LayerTest, RenameToAnEmptyNameOrOfAnAbsentLayerFails) {
    add("old");
    EXPECT_EQ(0, model_rename_layer(model, "old", ""));
    EXPECT_EQ(0, model_rename_layer(model, "none", "new"));
    EXPECT_NE(nullptr, model_find_layer(model, "old"));
}

TEST_F(LayerTest, ColourIsReadBackWithAFourthZero) {
    add("skin");
    float colour[4] = {};
    model_layer_colour(model, "skin", colour);
    EXPECT_EQ(10.0f, colour[0]);
    EXPECT_EQ(20.0f, colour[1]);
    EXPECT_EQ(30.0f, colour[2]);
    EXPECT_EQ(0.0f, colour[3]);
    EXPECT_EQ(1, model_set_layer_colour(model, "skin", 1, 2, 3));
    model_layer_colour(model, "skin", colour);
    EXPECT_EQ(3.0f, colour[2]);
}

TEST_F(LayerTest, ColourOfAnAbsentLayerIs255FourTimes) {
    float colour[4] = {};
    model_layer_colour(model, "none", colour);
    for (const float channel : colour) {
        EXPECT_EQ(255.0f, channel);
    }
    float other[4] = {};
    model_layer_colour(nullptr, nullptr, other);
    EXPECT_EQ(255.0f, other[3]);
    model_layer_colour(model, "none", nullptr);
}

TEST_F(LayerTest, SidesAreOneWhenSingleSidedOrAbsentElseTwo) {
    add("skin");
    EXPECT_EQ(1, model_layer_sides(model, "skin"));
    EXPECT_EQ(1, model_set_layer_sides(model, "skin", 2));
    EXPECT_EQ(2, model_layer_sides(model, "skin"));
    EXPECT_EQ(1, model_set_layer_sides(model, "skin", 1));
    EXPECT_EQ(1, model_layer_sides(model, "skin"));
    EXPECT_EQ(1, model_set_layer_sides(model, "skin", -5));
    EXPECT_EQ(1, model_find_layer(model, "skin")->singlesided);
    EXPECT_EQ(1, model_layer_sides(model, "none"));
    EXPECT_EQ(0, model_set_layer_sides(model, "none", 2));
}

TEST_F(LayerTest, AnyNumberOfSidesAboveOneIsTwo) {
    for (const int sides : {2, 3, 4, 127, std::numeric_limits<int>::max()}) {
        add("skin");
        ASSERT_EQ(1, model_layer_sides(model, "skin"));
        EXPECT_EQ(1, model_set_layer_sides(model, "skin", sides));
        EXPECT_EQ(2, model_layer_sides(model, "skin")) << sides;
        EXPECT_EQ(0, model_find_layer(model, "skin")->singlesided);
        EXPECT_EQ(1, model_set_layer_sides(model, "skin", 0));
        EXPECT_EQ(1, model_layer_sides(model, "skin"));
        model_delete_layer(model, "skin");
    }
}

TEST_F(LayerTest, MirrorCodesOneToThreeSetAndZeroClears) {
    add("skin");
    for (const int code : {AXIS_X, AXIS_Y, AXIS_Z}) {
        EXPECT_EQ(1, model_set_layer_mirror(model, "skin", code));
        EXPECT_EQ(code, model_layer_mirror(model, "skin"));
    }
    EXPECT_EQ(1, model_set_layer_mirror(model, "skin", 0));
    EXPECT_EQ(0, model_layer_mirror(model, "skin"));
    EXPECT_EQ(0, model_set_layer_mirror(model, "none", 1));
}

TEST_F(LayerTest, MirrorCodeFourLeavesTheLayerAndSucceeds) {
    add("skin", 1, AXIS_Y);
    for (const int code : {4, 5, 6, 7, -1}) {
        EXPECT_EQ(1, model_set_layer_mirror(model, "skin", code));
        EXPECT_EQ(AXIS_Y, model_layer_mirror(model, "skin"));
    }
}

TEST_F(LayerTest, TransparencyOfALayerTakesAnyValue) {
    add("skin");
    EXPECT_EQ(1, model_set_layer_transparency(model, "skin", 7.5f));
    EXPECT_EQ(7.5f, model_layer_transparency(model, "skin"));
    EXPECT_EQ(0.0f, model_layer_transparency(model, "none"));
    EXPECT_EQ(0, model_set_layer_transparency(model, "none", 1.0f));
}

TEST_F(LayerTest, TransparencyFromAFileIsHeldToItsRangeWithoutAText) {
    add("skin");
    EXPECT_EQ(1, model_set_transparency(model, "skin", 1.0f));
    EXPECT_EQ(1, model_set_transparency(model, "skin", 0.0f));
    EXPECT_EQ(1, model_set_transparency(model, "skin", 0.25f));
    EXPECT_EQ(0, model_set_transparency(model, "skin", 1.01f));
    EXPECT_EQ(0, model_set_transparency(model, "skin", -0.01f));
    EXPECT_EQ(0, model_set_transparency(model, "skin", std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(0.25f, model_layer_transparency(model, "skin"));
    EXPECT_EQ(nullptr, load_error_get());
}

TEST_F(LayerTest, InvisibleColourIsCutToBytes) {
    add("skin");
    EXPECT_EQ(1, model_set_invisible(model, "skin", 0.0f, 0.5f, 1.0f));
    const Layer* layer = model_find_layer(model, "skin");
    EXPECT_EQ(1, layer->invisible);
    EXPECT_EQ(0, layer->invisible_colour[0]);
    EXPECT_EQ(127, layer->invisible_colour[1]);  // 127.5 cut
    EXPECT_EQ(255, layer->invisible_colour[2]);
}

TEST_F(LayerTest, InvisibleColourOutOfRangeIsRefusedBeforeTheLayerIsLookedFor) {
    const char* text = "invisible color out of range (should be 0.0 to 1.0)";
    add("skin");
    for (const float bad : {-0.1f, 1.1f, std::numeric_limits<float>::quiet_NaN()}) {
        load_error_set(nullptr);
        EXPECT_EQ(0, model_set_invisible(model, "none", bad, 0.0f, 0.0f));
        EXPECT_EQ(text, error());
        EXPECT_EQ(0, model_set_invisible(model, "skin", 0.0f, bad, 0.0f));
        EXPECT_EQ(0, model_set_invisible(model, "skin", 0.0f, 0.0f, bad));
    }
    EXPECT_EQ(0, model_find_layer(model, "skin")->invisible);
    EXPECT_EQ(0, model_set_invisible(model, "none", 0.0f, 0.0f, 0.0f));
    EXPECT_EQ("layer does not exist", error());
}

TEST_F(LayerTest, ReflectionNeedsAnImageAndARange) {
    add("skin");
    EXPECT_EQ(0, model_set_reflection(model, "skin", 0.5f));
    Layer* layer = model_find_layer(model, "skin");
    LayerImage* image = static_cast<LayerImage*>(list_add(&layer->images, 1));
    EXPECT_EQ(image, layer_first_image(layer));
    load_error_set(nullptr);
    EXPECT_EQ(1, model_set_reflection(model, "skin", 0.5f));
    EXPECT_EQ(0, model_set_reflection(model, "skin", 1.5f));
    EXPECT_EQ(0, model_set_reflection(model, "skin", -0.5f));
    EXPECT_EQ(0.5f, image->reflection);
    EXPECT_EQ(nullptr, load_error_get());
    EXPECT_EQ(nullptr, layer_first_image(nullptr));
}

TEST_F(LayerTest, DeletingALayerWithImagesGivesItsReferencesBackAndLeavesThoseOfOthers) {
    const test::TempDir dir;
    const std::string file = dir.write("skin.tga", tiny_tga());
    ASSERT_EQ(1, model_rename(model, dir.file("made.mod").c_str()));
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    ASSERT_EQ(1, model_add_image(model, "one", IMAGE_SLOT_BASE, "skin.tga", AXIS_X, AXIS_Y)) << error();
    ASSERT_EQ(1, model_add_image(model, "two", IMAGE_SLOT_BASE, "skin.tga", AXIS_X, AXIS_Y)) << error();
    ASSERT_NE(nullptr, image_find(file.c_str()));
    EXPECT_EQ(2, image_find(file.c_str())->ref_count);
    EXPECT_EQ(1, model_delete_layer(model, "one"));
    ASSERT_NE(nullptr, image_find(file.c_str()));
    EXPECT_EQ(1, image_find(file.c_str())->ref_count);
    EXPECT_EQ(1, model_delete_layer(model, "two"));
    EXPECT_EQ(nullptr, image_find(file.c_str()));
}

TEST_F(LayerTest, ImageReferencesGoBackAfterARenameOfTheModelAndOfALayerOntoAnother) {
    const test::TempDir dir;
    const std::string first = dir.write("first.tga", tiny_tga());
    const std::string second = dir.write("second.tga", tiny_tga());
    ASSERT_EQ(1, model_rename(model, dir.file("made.mod").c_str()));
    add("one");
    add("two");
    add_triangle("one");
    add_triangle("two");
    ASSERT_EQ(1, model_add_image(model, "one", IMAGE_SLOT_BASE, "first.tga", AXIS_X, AXIS_Y)) << error();
    ASSERT_EQ(1, model_add_image(model, "two", IMAGE_SLOT_BASE, "second.tga", AXIS_X, AXIS_Y)) << error();
    ASSERT_EQ(1, model_rename(model, "else/where.mod"));
    EXPECT_EQ(1, model_rename_layer(model, "one", "two"));
    EXPECT_EQ(nullptr, image_find(second.c_str()));
    ASSERT_NE(nullptr, image_find(first.c_str()));
    EXPECT_EQ(1, image_find(first.c_str())->ref_count);
    EXPECT_EQ(1, model_delete_layer(model, "two"));
    EXPECT_EQ(nullptr, image_find(first.c_str()));
}

TEST_F(LayerTest, ReleaseOfAnImageSlotEmptiesItAndKeepsTheName) {
    LayerImage image{};
    image.names[1][0] = 'n';
    layer_image_release_slot(&image, 1);
    layer_image_release_slot(&image, 3);
    layer_image_release_slot(&image, -1);
    layer_image_release_slot(nullptr, 0);
    EXPECT_STREQ("n", image.names[1]);
    EXPECT_EQ(0, image.image_id[1]);
    EXPECT_EQ(nullptr, image.pixels[1]);
}

}  // namespace
}  // namespace pelt
