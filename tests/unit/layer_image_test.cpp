#include "formats/layer_image.h"

#include <gtest/gtest.h>

#include <string>

#include "formats/model_reader.h"
#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "scene/model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::solid_tga;
using test::TempDir;

class LayerImages : public testing::Test {
protected:
    LayerImages() {
        dir.write("a.tga", solid_tga(2, 1, 255, 0, 127));
        dir.write("b.tga", solid_tga(3, 4, 9, 9, 9));
        model = model_create(dir.file("m.mod").c_str(), nullptr);
        read("points\n1 0 0 0\n2 10 0 0\n3 0 10 0\n");
        add_layer("one");
        add_layer("two");
        load_error_set(nullptr);
    }
    ~LayerImages() override {
        model_release(model);
        EXPECT_EQ(list_count(image_registry()), 0) << "an image was left behind";
    }

    void read(const std::string& lines) { ASSERT_EQ(model_read_data(model, lines.c_str()), 1) << load_error_get(); }
    void add_layer(const std::string& name) { read("layer " + name + " 1 2 3 x\ntriangles\n0 1 2 3\n"); }
    int add(const char* layer, int slot, const char* name) {
        return model_add_image(model, layer, slot, name, AXIS_X, AXIS_Y);
    }
    LayerImage& record(const char* layer) { return *layer_first_image(model_find_layer(model, layer)); }
    int32_t references(const std::string& name) {
        const ImageData* image = image_find(dir.file(name).c_str());
        return image != nullptr ? image->ref_count : 0;
    }

    TempDir dir;
    Model* model;
};

TEST_F(LayerImages, ASlotHoldsThePictureAndItsReference) {
    EXPECT_EQ(add("one", IMAGE_SLOT_BASE, "a.tga"), 1);
    const LayerImage& image = record("one");
    const ImageData* registered = image_find(dir.file("a.tga").c_str());
    ASSERT_NE(registered, nullptr);
    EXPECT_STREQ(image.names[0], "a.tga");
    EXPECT_EQ(image.width[0], 2);
    EXPECT_EQ(image.height[0], 1);
    EXPECT_EQ(image.pixels[0], registered->pixels);
    EXPECT_EQ(image.image_id[0], registered->id);
    EXPECT_EQ(image.bytes_per_pixel[0], 3);
    EXPECT_EQ(model_find_layer(model, "one")->image_axis_u, AXIS_X);
    EXPECT_EQ(model_find_layer(model, "one")->image_axis_v, AXIS_Y);
}

TEST_F(LayerImages, TwoLayersShareOnePicture) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("two", IMAGE_SLOT_BASE, "a.tga");
    EXPECT_EQ(references("a.tga"), 2);
    EXPECT_EQ(list_count(image_registry()), 1);
    EXPECT_EQ(model_delete_layer(model, "one"), 1);
    EXPECT_EQ(references("a.tga"), 1);
    EXPECT_EQ(record("two").pixels[0][0], 255) << "the pixels of the other layer stay valid";
}

TEST_F(LayerImages, AnInvisibleColourMakesKeyedPixels) {
    ASSERT_EQ(model_set_invisible(model, "one", 1.0f, 0.0f, 0.5f), 1);  // 127 when cut
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("one", IMAGE_SLOT_MIRROR, "b.tga");
    add("one", IMAGE_SLOT_REFLECTION, "a.tga");
    const LayerImage& image = record("one");
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_BASE], 4);
    EXPECT_EQ(image.pixels[IMAGE_SLOT_BASE], image_find(dir.file("a.tga").c_str())->keyed_pixels);
    EXPECT_EQ(image.pixels[IMAGE_SLOT_BASE][3], 0);
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_MIRROR], 4);
    EXPECT_EQ(image.pixels[IMAGE_SLOT_MIRROR][3], 255);
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_REFLECTION], 3);
    EXPECT_EQ(image.pixels[IMAGE_SLOT_REFLECTION], image_find(dir.file("a.tga").c_str())->pixels);
}

TEST_F(LayerImages, InvisibleBehindTheImageLeavesThreeBytesAPixel) {
    read("layer three 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga x y\ninvisible 1.0 0 0.5\n");
    EXPECT_EQ(model_find_layer(model, "three")->invisible, 1);
    EXPECT_EQ(record("three").bytes_per_pixel[0], 3);
    EXPECT_EQ(record("three").pixels[0], image_find(dir.file("a.tga").c_str())->pixels);
}

TEST_F(LayerImages, TheFirstKeyServesAllLayers) {
    model_set_invisible(model, "one", 1.0f, 0.0f, 0.5f);
    model_set_invisible(model, "two", 0.0f, 0.0f, 0.0f);
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("two", IMAGE_SLOT_BASE, "a.tga");
    EXPECT_EQ(record("two").pixels[0], record("one").pixels[0]);
    EXPECT_EQ(record("two").pixels[0][3], 0);
}

TEST_F(LayerImages, ANewImageReplacesTheOldOne) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    EXPECT_EQ(add("one", IMAGE_SLOT_BASE, "b.tga"), 1);
    EXPECT_EQ(references("a.tga"), 0);
    EXPECT_EQ(references("b.tga"), 1);
    EXPECT_EQ(record("one").width[0], 3);
    EXPECT_EQ(list_count(&model_find_layer(model, "one")->images), 1);
}

TEST_F(LayerImages, AFailedReplacementLeavesTheSlotWithoutPixels) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("two", IMAGE_SLOT_BASE, "a.tga");
    EXPECT_EQ(add("one", IMAGE_SLOT_BASE, "none.tga"), 0);
    EXPECT_EQ(load_error_get(), "cannot open TGA file: " + dir.file("none.tga"));
    EXPECT_EQ(record("one").pixels[0], nullptr);
    EXPECT_EQ(record("one").image_id[0], 0);
    EXPECT_STREQ(record("one").names[0], "none.tga");
    EXPECT_EQ(references("a.tga"), 1);
}

// The slot of a failed load holds nothing, so that it can take nothing from others who load the file later.
TEST_F(LayerImages, ASlotWhoseLoadFailedGivesNothingBack) {
    EXPECT_EQ(add("one", IMAGE_SLOT_BASE, "late.tga"), 0);
    dir.write("late.tga", solid_tga(1, 1, 0, 0, 0));
    EXPECT_EQ(add("two", IMAGE_SLOT_BASE, "late.tga"), 1);
    EXPECT_EQ(model_delete_layer(model, "one"), 1);
    EXPECT_EQ(references("late.tga"), 1);
}

TEST_F(LayerImages, ReferencesAreGivenBackAfterARenameOfTheModel) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("two", IMAGE_SLOT_REFLECTION, "b.tga");
    model_rename(model, "/elsewhere/other.mod");
    EXPECT_EQ(model_delete_layer(model, "one"), 1);
    EXPECT_EQ(references("a.tga"), 0);
    EXPECT_EQ(references("b.tga"), 1);
}

TEST_F(LayerImages, ReferencesAreGivenBackWhenALayerIsRenamedOntoAnother) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("two", IMAGE_SLOT_BASE, "b.tga");
    EXPECT_EQ(model_rename_layer(model, "one", "two"), 1);
    EXPECT_EQ(references("b.tga"), 0);
    EXPECT_EQ(references("a.tga"), 1);
}

TEST_F(LayerImages, TheSameFileInAllThreeSlotsIsHeldThreeTimes) {
    for (const int slot : {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR, IMAGE_SLOT_REFLECTION}) {
        EXPECT_EQ(add("one", slot, "a.tga"), 1);
    }
    EXPECT_EQ(references("a.tga"), 3);
    EXPECT_EQ(add("one", IMAGE_SLOT_MIRROR, "b.tga"), 1);
    EXPECT_EQ(references("a.tga"), 2);
}

TEST_F(LayerImages, BadArgumentsAreRefusedWithoutAText) {
    EXPECT_EQ(add(nullptr, 0, "a.tga"), 0);
    EXPECT_EQ(add("one", 0, nullptr), 0);
    EXPECT_EQ(add("one", 0, ""), 0);
    EXPECT_EQ(add("one", -1, "a.tga"), 0);
    EXPECT_EQ(add("one", 3, "a.tga"), 0);
    EXPECT_EQ(model_add_image(nullptr, "one", 0, "a.tga", 1, 2), 0);
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_EQ(layer_first_image(model_find_layer(model, "one")), nullptr);
}

TEST_F(LayerImages, AnAbsentLayerIsReported) {
    EXPECT_EQ(add("three", 0, "a.tga"), 0);
    EXPECT_STREQ(load_error_get(), "layer does not exist");
}

TEST_F(LayerImages, ALayerWithNothingToMapKeepsTheImageAndFails) {
    read("layer bare 1 2 3 x\n");
    EXPECT_EQ(add("bare", IMAGE_SLOT_BASE, "a.tga"), 0);
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_NE(record("bare").pixels[0], nullptr);
    EXPECT_EQ(add("bare", IMAGE_SLOT_MIRROR, "a.tga"), 1) << "other slots map nothing";
}

TEST_F(LayerImages, ALongNameIsCutInTheSlotAndLoadsWhole) {
    const std::string name = std::string(150, 'n') + ".tga";
    dir.write(name, solid_tga(1, 1, 0, 0, 0));
    EXPECT_EQ(add("one", IMAGE_SLOT_BASE, name.c_str()), 1);
    EXPECT_EQ(record("one").names[0], std::string(127, 'n'));
    EXPECT_EQ(model_delete_layer(model, "one"), 1);
    EXPECT_EQ(references(name), 0);
}

TEST_F(LayerImages, RepeatFactorsAreStoredWithTheirFlag) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    const Layer& layer = *model_find_layer(model, "one");
    EXPECT_EQ(model_set_image_repeat(model, "one", 1, 2.0f, 3.0f), 1);
    EXPECT_EQ(layer.image_repeat, 1);
    EXPECT_EQ(layer.repeat_u, 2.0f);
    EXPECT_EQ(layer.repeat_v, 3.0f);
    EXPECT_EQ(model_set_image_repeat(model, "one", 0, 7.0f, 8.0f), 1);
    EXPECT_EQ(layer.image_repeat, 0);
    EXPECT_EQ(layer.repeat_u, 2.0f) << "without the flag the factors stay";
}

TEST_F(LayerImages, RepeatFactorsOfAnAbsentLayerFailWithoutAText) {
    EXPECT_EQ(model_set_image_repeat(model, "three", 1, 2.0f, 3.0f), 0);
    EXPECT_EQ(model_set_image_repeat(model, nullptr, 1, 2.0f, 3.0f), 0);
    EXPECT_EQ(model_set_image_repeat(nullptr, "one", 1, 2.0f, 3.0f), 0);
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_EQ(model_set_image_repeat(model, "one", 1, 2.0f, 3.0f), 0) << "no image to map";
    EXPECT_EQ(model_find_layer(model, "one")->image_repeat, 1) << "stored all the same";
}

// ---- the list of names ----

TEST_F(LayerImages, AnEmptyMirrorSlotAddsItsBlank) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    EXPECT_STREQ(model_image_names(model), " a.tga ");
}

TEST_F(LayerImages, TheReflectionMapIsNotListed) {
    add("one", IMAGE_SLOT_REFLECTION, "a.tga");
    EXPECT_STREQ(model_image_names(model), "  ");
}

TEST_F(LayerImages, NamesFollowTheLayersAndThenTheChildren) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    add("one", IMAGE_SLOT_MIRROR, "b.tga");
    add("two", IMAGE_SLOT_BASE, "b.tga");
    Model* child = model_create(dir.file("c.mod").c_str(), model);
    ASSERT_EQ(model_read_data(child,
                              "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\nlayer l 1 2 3 x\ntriangles\n0 1 2 3\n"
                              "image a.tga x y\n"),
              1);
    model_add_child(model, nullptr, "absent", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    model_add_child(model, child, "c", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    EXPECT_STREQ(model_image_names(model), " a.tga b.tga b.tga  a.tga ");
}

TEST_F(LayerImages, AModelWithoutImagesHasNoNames) {
    add("one", IMAGE_SLOT_BASE, "a.tga");
    ASSERT_NE(model_image_names(model), nullptr);
    model_delete_layer(model, "one");
    EXPECT_EQ(model_image_names(model), nullptr);
    EXPECT_EQ(model_image_names(nullptr), nullptr);
}

TEST_F(LayerImages, NamesThatDoNotFitAreLeftOut) {
    const std::string name = std::string(96, 'n') + ".tga";  // 101 bytes with the blank, and a blank for the mirror
    dir.write(name, solid_tga(1, 1, 0, 0, 0));
    for (int i = 0; i < 14; ++i) {
        const std::string layer = "layer" + std::to_string(i);
        add_layer(layer);
        add(layer.c_str(), IMAGE_SLOT_BASE, name.c_str());
    }
    // Ten layers of 102 bytes reach 1020. No further name fits; one more blank does, as 1020 + 3 is below 1024.
    EXPECT_EQ(std::string(model_image_names(model)).size(), 1021u);
}

}  // namespace
}  // namespace pelt
