// Layers by a script's word: what becomes of the model is what a file says that a person wrote.
#include "edit/edit_layers.h"

#include "scene/measure.h"
#include "support/edited_scene.h"

namespace pelt {
namespace {

using test::EditedScene;

const std::string POINTS = "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\n4 10 10 4\n";
const std::string BODY = "layer body 127 127 127 doublesided\ntriangles\n0 1 2 3\n1 1 2 3 4\n";
const std::string ROOF = "layer roof 1 2 3 singlesided\ntriangles\n0 2 3 4\n2 1 2 3 4\n";

class EditLayers : public EditedScene {
protected:
    bool edit(Model* model, const std::vector<const char*>& names, const LayerEdit& wanted) {
        std::vector<const Layer*> layers;
        for (const char* name : names) { layers.push_back(layer_of(model, name)); }
        return edit_layers(&session, model, layers, wanted, &refused);
    }
    bool put(Model* model, const char* layer, const PictureEdit& wanted) {
        return edit_picture(&session, model, layer_of(model, layer), wanted, &refused);
    }
};

TEST_F(EditLayers, SettingsOfSeveralLayersAtOnce) {
    Model* model = open(POINTS + BODY + ROOF);
    LayerEdit wanted;
    wanted.settings.colour = {{9, 8, 7}};
    wanted.settings.sides = 1;
    wanted.settings.transparency = 0.25f;
    wanted.key = KeyChange{true, {255, 0, 128}};
    ASSERT_TRUE(edit(model, {"body", "roof"}, wanted));
    const std::string head = " 9 8 7 singlesided\ntransparency 0.25\ninvisible 1.0 0.0 0.502\n";
    expect_says(model, POINTS + "layer body" + head + "triangles\n0 1 2 3\n1 1 2 3 4\nlayer roof" + head +
                           "triangles\n0 2 3 4\n2 1 2 3 4\n");
}

TEST_F(EditLayers, AMirrorMakesTheBoxAnewBothWays) {
    Model* model = open(POINTS + BODY);
    LayerEdit wanted;
    wanted.settings.mirror = AXIS_X;
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    expect_says(model, POINTS + "layer body 127 127 127 doublesided mirror x\ntriangles\n0 1 2 3\n1 1 2 3 4\n");
    EXPECT_EQ(model->bounds_min.x, -10.0f);
    wanted.settings.mirror = 0;
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    expect_says(model, POINTS + BODY);
    EXPECT_EQ(model->bounds_min.x, 0.0f) << "a box that shrinks again";
}

TEST_F(EditLayers, MirrorsOfLinesAndStripsCount) {
    Model* model = open(POINTS + "layer wire 1 2 3 x mirror z\nlines\n2 1 4\nlayer strip 1 2 3 x mirror y\n" +
                        "triangles\n2 1 2 3\n");
    model->bounds_min = Vec3{-500.0f, -500.0f, -500.0f};
    model_measure(model);
    EXPECT_EQ(box(model), (std::vector<float>{0, -10, -4, 10, 10, 4}));
}

TEST_F(EditLayers, ANewNameStaysInItsPlaceAndTakesNoOther) {
    Model* model = open(POINTS + "layer a 1 2 3 x\n" + BODY + ROOF);
    ASSERT_EQ(model_delete_layer(model, "a"), 1);  // leaves a hole in front
    LayerEdit wanted;
    wanted.name = "the hull";
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    EXPECT_EQ(names_in_order<Layer>(model->layers), (std::vector<std::string>{"the hull", "roof"}));
    expect_says(model, POINTS + "layer \"the hull\" 127 127 127 doublesided\ntriangles\n0 1 2 3\n1 1 2 3 4\n" + ROOF);
    wanted.name = "roof";
    EXPECT_FALSE(edit(model, {"the hull"}, wanted));
    EXPECT_EQ(refused.kind, EDIT_STATE);
    EXPECT_FALSE(edit(model, {"the hull", "roof"}, wanted));
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    for (const char* bad : {"", "a\nb", "\"a", "a b\"", "01234567890123456789012345678901"}) {
        wanted.name = bad;
        EXPECT_FALSE(edit(model, {"the hull"}, wanted)) << bad;
        EXPECT_EQ(refused.kind, EDIT_ARGUMENT) << bad;
    }
    wanted.name = "0123456789012345678901234567890";  // 31
    EXPECT_TRUE(edit(model, {"the hull"}, wanted));
    expect_can_be_saved(model);
}

TEST_F(EditLayers, ANewLayerGoesBehindAllOthers) {
    Model* model = open(POINTS + "layer a 1 2 3 x\n" + BODY + ROOF);
    ASSERT_EQ(model_delete_layer(model, "body"), 1);
    LayerEdit wanted;
    wanted.settings.colour = {{1, 1, 1}};
    ASSERT_TRUE(edit_new_layer(&session, model, "fresh", wanted, &refused));
    expect_says(model, POINTS + "layer a 1 2 3 x\n" + ROOF + "layer fresh 1 1 1 singlesided\n");
    EXPECT_FALSE(edit_new_layer(&session, model, "fresh", {}, &refused));
    wanted.axes = {{1, 2}};
    EXPECT_FALSE(edit_new_layer(&session, model, "other", wanted, &refused));
    EXPECT_EQ(list_count(&model->layers), 3);
}

TEST_F(EditLayers, ALayerOfALongNameIsReachedToo) {
    const std::string name(40, 'n');
    Model* model = open("layer " + name + " 1 2 3 x\n");
    LayerEdit wanted;
    wanted.settings.sides = 2;
    const auto* layer = list_at<const Layer>(&model->layers, 0, 1);
    ASSERT_TRUE(edit_layers(&session, model, {layer}, wanted, &refused));
    EXPECT_EQ(layer->singlesided, 0);
    wanted.name = "short";
    ASSERT_TRUE(edit_layers(&session, model, {layer}, wanted, &refused));
    expect_says(model, "layer short 1 2 3 doublesided\n");
}

// ---- images ----

TEST_F(EditLayers, AnImageIsLaidAsALoadWouldLayIt) {
    Model* model = open(POINTS + BODY + ROOF);
    ASSERT_TRUE(put(model, "body", {IMAGE_SLOT_BASE, "a.tga", {}, {}}));
    ASSERT_TRUE(put(model, "roof", {IMAGE_SLOT_BASE, "b.tga", {{AXIS_MINUS_Z, AXIS_Y}}, RepeatChange{true, -2, 3}}));
    ASSERT_TRUE(put(model, "roof", {IMAGE_SLOT_MIRROR, "a.tga", {}, {}}));
    expect_says(model,
                POINTS + BODY + "image a.tga x y\n" + ROOF + "image b.tga -z y repeat -2 3\nmirrorimage a.tga\n");
    LayerEdit wanted;
    wanted.axes = {{AXIS_X, AXIS_MINUS_Y}};
    wanted.repeat = RepeatChange{false, 0, 0};
    ASSERT_TRUE(edit(model, {"roof"}, wanted));
    expect_says(model, POINTS + BODY + "image a.tga x y\n" + ROOF + "image b.tga x -y\nmirrorimage a.tga\n");
    ASSERT_TRUE(put(model, "roof", {IMAGE_SLOT_BASE, "a.tga", {}, {}})) << "it lies as the one before";
    expect_says(model, POINTS + BODY + "image a.tga x y\n" + ROOF + "image a.tga x -y\nmirrorimage a.tga\n");
}

TEST_F(EditLayers, AnImageThatIsTakenAwayLeavesNothing) {
    Model* model = open(POINTS + BODY + "image a.tga x y repeat 2 2\nreflect b.tga 0.5\n");
    ASSERT_TRUE(put(model, "body", {IMAGE_SLOT_BASE, "", {}, {}}));
    expect_says(model, POINTS + BODY + "reflect b.tga 0.5\n");
    EXPECT_EQ(coordinates(model), std::vector<float>(14, 0.0f));
    ASSERT_TRUE(put(model, "body", {IMAGE_SLOT_REFLECTION, "", {}, {}}));
    expect_says(model, POINTS + BODY);
    EXPECT_EQ(list_count(&layer_of(model, "body")->images), 0);
    EXPECT_EQ(list_count(image_registry()), 0);
    EXPECT_TRUE(put(model, "body", {IMAGE_SLOT_BASE, "", {}, {}})) << "there is nothing to take away";
}

TEST_F(EditLayers, WhatCannotBeAnImageIsRefused) {
    Model* model = open(POINTS + BODY + "layer bare 1 2 3 x\nlines\n2 1 2\n");
    const uint64_t version = model->version;
    EXPECT_FALSE(put(model, "body", {IMAGE_SLOT_BASE, "nowhere.tga", {}, {}}));
    EXPECT_EQ(refused.kind, EDIT_FILE);
    EXPECT_EQ(refused.file, dir.file("nowhere.tga"));
    EXPECT_FALSE(put(model, "bare", {IMAGE_SLOT_BASE, "a.tga", {}, {}})) << "there is nothing for it to lie on";
    EXPECT_EQ(refused.kind, EDIT_STATE);
    for (const std::string& bad : {std::string("none"), std::string("a\n"), std::string(128, 'a')}) {
        EXPECT_FALSE(put(model, "body", {IMAGE_SLOT_BASE, bad, {}, {}})) << bad;
        EXPECT_EQ(refused.kind, EDIT_ARGUMENT) << bad;
    }
    LayerEdit wanted;
    wanted.axes = {{AXIS_X, AXIS_Y}};
    EXPECT_FALSE(edit(model, {"body"}, wanted)) << "no image, no axes";
    LayerEdit strength;
    strength.settings.reflection = 0.5f;
    EXPECT_FALSE(edit(model, {"body"}, strength)) << "no reflection map, no strength";
    EXPECT_EQ(model->version, version) << "nothing was changed";
    EXPECT_EQ(list_count(image_registry()), 0);
}

TEST_F(EditLayers, AReflectionMapAndItsStrength) {
    Model* model = open(POINTS + BODY);
    ASSERT_TRUE(put(model, "body", {IMAGE_SLOT_REFLECTION, "a.tga", {}, {}}));
    LayerEdit wanted;
    wanted.settings.reflection = 0.75f;
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    expect_says(model, POINTS + BODY + "reflect a.tga 0.75\n");
}

TEST_F(EditLayers, AColourKeyIsSeenAtOnce) {
    Model* model = open(POINTS + BODY + "image a.tga x y\nreflect a.tga 1\n");
    const LayerImage& image = *layer_first_image(layer_of(model, "body"));
    const auto alpha = [&] { return static_cast<int>(image.pixels[IMAGE_SLOT_BASE][3]); };
    LayerEdit wanted;
    wanted.key = KeyChange{true, {1, 2, 3}};
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_BASE], 4);
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_REFLECTION], 3) << "a reflection map has no key";
    EXPECT_EQ(alpha(), 0);
    wanted.key = KeyChange{true, {9, 9, 9}};
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    EXPECT_EQ(alpha(), 255) << "also behind another key";
    wanted.key = KeyChange{true, {1, 2, 3}};
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    EXPECT_EQ(alpha(), 0);
    expect_can_be_saved(model);
    wanted.key = KeyChange{false, {}};
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    EXPECT_EQ(image.bytes_per_pixel[IMAGE_SLOT_BASE], 3);
    EXPECT_EQ(image.pixels[IMAGE_SLOT_BASE][0], 1);
    expect_says(model, POINTS + BODY + "image a.tga x y\nreflect a.tga 1\n");
}

TEST_F(EditLayers, AKeyOfOneLayerIsNotThatOfAnother) {
    Model* model = open(POINTS + BODY + "image a.tga x y\n" + ROOF + "image a.tga x y\n");
    LayerEdit wanted;
    wanted.key = KeyChange{true, {1, 2, 3}};
    ASSERT_TRUE(edit(model, {"body"}, wanted));
    wanted.key = KeyChange{true, {4, 4, 4}};
    ASSERT_TRUE(edit(model, {"roof"}, wanted));
    EXPECT_EQ(layer_first_image(layer_of(model, "body"))->pixels[0][3], 0);
    EXPECT_EQ(layer_first_image(layer_of(model, "roof"))->pixels[0][3], 255);
}

// ---- texture coordinates of their own ----

TEST_F(EditLayers, AUveeIsPutAndTakenAway) {
    Model* model = open(POINTS + BODY + "uvees\n1 0.5 0.5\n2 0.25 1\nimage a.tga x y\n");
    const auto uvee = [&](const UveeEdit& wanted) {
        return edit_uvee(&session, model, layer_of(model, "body"), wanted, &refused);
    };
    ASSERT_TRUE(uvee({1, false, 0, 0}));
    ASSERT_TRUE(uvee({2, true, -3.5f, 7.0f}));
    ASSERT_TRUE(uvee({4, true, 0.125f, 0.0f}));
    expect_says(model, POINTS + BODY + "uvees\n2 -3.5 7.0\n4 0.125 0.0\nimage a.tga x y\n");
    EXPECT_EQ(list_index_of(&layer_of(model, "body")->uvees, 4, 0), 2) << "behind the last, not in the hole";
    EXPECT_FALSE(uvee({1, false, 0, 0})) << "there is none";
    EXPECT_FALSE(uvee({9, true, 0, 0})) << "there is no such point";
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
}

// ---- several models of one file ----

TEST_F(EditLayers, AllModelsOfAFileChangeTogether) {
    const std::string text = POINTS + BODY + "image a.tga x y\n";
    open(text, "wheel.mod");
    Model* cart = open("child wheel 0 0 0 1 1 1 0 0 0\nchild wheel 5 0 0 1 1 1 0 0 0\n", "cart.mod");
    Model* wheel = list_at<ChildLink>(&cart->children, 1, 0)->model;
    LayerEdit wanted;
    wanted.settings.sides = 1;
    wanted.name = "rim";
    wanted.key = KeyChange{true, {1, 2, 3}};
    ASSERT_TRUE(edit(wheel, {"body"}, wanted));
    ASSERT_TRUE(put(wheel, "rim", {IMAGE_SLOT_BASE, "b.tga", {{AXIS_Y, AXIS_X}}, {}}));
    const std::string changed = POINTS + "layer rim 127 127 127 singlesided\ninvisible 0.004 0.008 0.012\n" +
                                "triangles\n0 1 2 3\n1 1 2 3 4\nimage b.tga y x\n";
    expect_says(wheel, changed);
    expect_says(list_at<ChildLink>(&cart->children, 0, 0)->model, changed);
    expect_says(list_at<RootModel>(&session.root_models, 0, 0)->model, changed);
    model_set_layer_sides(wheel, "rim", 2);  // as the described verbs do: this one alone
    EXPECT_FALSE(edit(wheel, {"rim"}, wanted));
    EXPECT_EQ(refused.kind, EDIT_STATE);
}

}  // namespace
}  // namespace pelt
