// Materials and images of other formats: colours, transparency, sides, textures and their coordinates.
#include <gtest/gtest.h>

#include <assimp/GltfMaterial.h>

#include <cmath>
#include <map>

#include "images/tga.h"
#include "interchange/source_image.h"
#include "support/scene_maker.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::at_scale;
using test::Imported;
using test::only_layer;
using test::OwnedModel;
using test::SceneMaker;
using test::triangles_of;
using test::Triple;

const std::vector<Triple> SQUARE = {{0, 0, 0}, {100, 0, 0}, {100, 100, 0}, {0, 100, 0}};
const std::vector<std::vector<unsigned>> TWO = {{0, 1, 2}, {0, 2, 3}};

// A square with a material of its own.
aiMesh* add_square(SceneMaker& maker, float z = 0.0f) {
    std::vector<Triple> places = SQUARE;
    for (Triple& place : places) { place[2] = z; }
    return maker.add_mesh(places, TWO, nullptr, maker.scene.mNumMaterials - 1);
}

void set_value(aiMaterial* material, float value, const char* key) { material->AddProperty(&value, 1, key, 0, 0); }

TEST(ImportLooks, ColoursAreCountedTo127) {
    SceneMaker maker;
    SceneMaker::set_colour(maker.add_material("paint"), aiColor4D(1.0f, 0.5f, 0.0f, 1.0f));
    add_square(maker);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr) << made.result.error;
    EXPECT_STREQ(only_layer(model)->name, "paint");
    EXPECT_EQ(only_layer(model)->colour[0], 127);
    EXPECT_EQ(only_layer(model)->colour[1], 64);
    EXPECT_EQ(only_layer(model)->colour[2], 0);
}

TEST(ImportLooks, ColoursThatCountLightBecomeThoseOfAScreen) {
    SceneMaker maker;
    const aiColor4D half(0.5f, 0.5f, 0.5f, 1.0f);
    maker.add_material("paint")->AddProperty(&half, 1, AI_MATKEY_BASE_COLOR);
    add_square(maker);
    const Imported made(maker.scene, at_scale(1), "gltf");
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr);
    EXPECT_EQ(only_layer(model)->colour[0],
              static_cast<int>(std::lround(127.0 * (1.055 * std::pow(0.5, 1.0 / 2.4) - 0.055))));
}

TEST(ImportLooks, ColoursOfVerticesAreMultipliedByThatOfTheMaterial) {
    SceneMaker maker;
    SceneMaker::set_colour(maker.add_material("tinted"), aiColor4D(1.0f, 0.5f, 1.0f, 1.0f));
    aiMesh* mesh = add_square(maker);
    SceneMaker::set_colours(mesh, {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}});
    SceneMaker::set_colour(maker.add_material("plain"), aiColor4D(0.0f, 0.0f, 1.0f, 1.0f));
    add_square(maker, 50);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->has_gouraud, 1);
    const auto colour_at = [&](float x, float y, float z) {
        const Point* point = model_find_point(model.get(), model_point_at(model.get(), x, y, z));
        return std::array<int, 3>{point->gouraud[0], point->gouraud[1], point->gouraud[2]};
    };
    EXPECT_EQ(colour_at(100, 0, 0), (std::array<int, 3>{0, 128, 0}));
    EXPECT_EQ(colour_at(0, 0, 0), (std::array<int, 3>{255, 0, 0}));
    // Beside coloured points all need a colour: these have that of their layer.
    EXPECT_EQ(colour_at(100, -50, 0), (std::array<int, 3>{0, 0, 255}));
}

TEST(ImportLooks, WhiteVerticesAreNoColours) {
    SceneMaker maker;
    maker.add_material("plain");
    SceneMaker::set_colours(add_square(maker), std::vector<aiColor4D>(4, aiColor4D(1, 1, 1, 1)));
    EXPECT_EQ(Imported(maker.scene, at_scale(1)).load()->has_gouraud, 0);
}

TEST(ImportLooks, TransparentLayersComeLastAndHaveAnImageThatLetsThemShow) {
    SceneMaker maker;
    set_value(maker.add_material("glass"), 0.25f, "$mat.opacity");
    add_square(maker);
    maker.add_material("wall");
    add_square(maker, 50);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    std::vector<std::string> names;
    for (const Layer& layer : list_elements<Layer>(model->layers)) { names.push_back(layer.name); }
    EXPECT_EQ(names, (std::vector<std::string>{"wall", "glass"}));
    const Layer* glass = model_find_layer(model.get(), "glass");
    EXPECT_FLOAT_EQ(glass->transparency, 0.75f);
    ASSERT_NE(layer_first_image(glass), nullptr);
    EXPECT_STREQ(layer_first_image(glass)->names[IMAGE_SLOT_BASE], "made_white.tga");
    ASSERT_NE(layer_first_image(glass)->pixels[IMAGE_SLOT_BASE], nullptr);
    EXPECT_EQ(layer_first_image(glass)->pixels[IMAGE_SLOT_BASE][0], 255);
    for (const Triangle& triangle : triangles_of(glass)) {
        for (int corner = 0; corner < 3; ++corner) { EXPECT_TRUE(std::isfinite(triangle.uvs[corner][0])); }
    }
}

TEST(ImportLooks, SidesAreWhatTheFileSaysAndBothWhereItSaysNothing) {
    struct Case {
        int said;  // -1 for nothing
        ImportSides wanted;
        int singlesided;
    };
    for (const Case& each : {Case{-1, SIDES_OF_FILE, 0}, Case{0, SIDES_OF_FILE, 1}, Case{1, SIDES_OF_FILE, 0},
                             Case{-1, SIDES_ONE, 1}, Case{0, SIDES_BOTH, 0}}) {
        SceneMaker maker;
        aiMaterial* material = maker.add_material("m");
        if (each.said >= 0) { material->AddProperty(&each.said, 1, AI_MATKEY_TWOSIDED); }
        add_square(maker);
        ImportOptions options = at_scale(1);
        options.sides = each.wanted;
        const OwnedModel model = Imported(maker.scene, options).load();
        ASSERT_NE(only_layer(model), nullptr);
        EXPECT_EQ(only_layer(model)->singlesided, each.singlesided) << each.said << " " << each.wanted;
    }
}

TEST(ImportLooks, NamesOfLayersAreWordsThatAreFoundAgain) {
    SceneMaker maker;
    for (const char* name : {"a b\"c", "a b\"c", "", "a name that is much longer than any key of a list may be"}) {
        maker.add_material(name);
        add_square(maker, static_cast<float>(maker.scene.mNumMaterials));
    }
    const OwnedModel model = Imported(maker.scene, at_scale(1)).load();
    ASSERT_NE(model, nullptr);
    std::vector<std::string> names;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        names.push_back(layer.name);
        EXPECT_EQ(model_find_layer(model.get(), layer.name), &layer);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"a_b_c", "a_b_c_2", "surface", "a_name_that_is_much_longer_than"}));
}

TEST(ImportLooks, WhatALayerCannotSayIsTold) {
    SceneMaker maker;
    aiMaterial* material = maker.add_material("m");
    const aiString path("x.png");
    material->AddProperty(&path, AI_MATKEY_TEXTURE(aiTextureType_NORMALS, 0));
    const aiColor3D glow(1, 0, 0);
    material->AddProperty(&glow, 1, AI_MATKEY_COLOR_EMISSIVE);
    add_square(maker);
    const Imported made(maker.scene, at_scale(1));
    EXPECT_TRUE(made.has_loss("maps of normals left out: 1")) << made.losses();
    EXPECT_TRUE(made.has_loss("surfaces that lose their glow: 1")) << made.losses();
    EXPECT_FALSE(made.has_loss("shine"));
}

// ---- textures ----

const std::vector<aiTexel> FOUR_TEXELS = {{1, 2, 3, 255}, {4, 5, 6, 255}, {7, 8, 9, 255}, {10, 11, 12, 255}};

// A scene with one textured square whose image lies in the scene.
struct TexturedSquare {
    explicit TexturedSquare(const std::vector<std::array<float, 2>>& uvs,
                            const std::vector<aiTexel>& texels = FOUR_TEXELS) {
        maker.add_texels(2, 2, texels);
        material = maker.add_material("picture");
        SceneMaker::set_texture(material, "*0");
        mesh = add_square(maker);
        SceneMaker::set_coordinates(mesh, uvs);
    }
    SceneMaker maker;
    aiMaterial* material;
    aiMesh* mesh;
};

// What each corner of the model's surface shows, by place: u and v.
std::map<std::array<float, 2>, std::array<float, 2>> shown_at(const OwnedModel& model) {
    std::map<std::array<float, 2>, std::array<float, 2>> shown;
    for (const Triangle& triangle : triangles_of(only_layer(model))) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            const Vec3 place = model_find_point(model.get(), triangle.points[corner])->position;
            shown[{place.x, place.z}] = {triangle.uvs[corner][0], triangle.uvs[corner][1]};
        }
    }
    return shown;
}

TEST(ImportTextures, CoordinatesOfAPlaneBecomeAxes) {
    const TexturedSquare square({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    const Imported made(square.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr) << made.result.error;
    EXPECT_EQ(list_count(&only_layer(model)->uvees), 0);
    const auto shown = shown_at(model);
    // v runs down here: the source's (0, 1), its upper left, is (0, 0).
    EXPECT_EQ(shown.at({0, 100}), (std::array<float, 2>{0, 0}));
    EXPECT_EQ(shown.at({100, 100}), (std::array<float, 2>{1, 0}));
    EXPECT_EQ(shown.at({100, 0}), (std::array<float, 2>{1, 1}));
}

TEST(ImportTextures, RepeatedCoordinatesOfAPlaneBecomeAxesWithFactors) {
    const TexturedSquare square({{0, 1 - 2}, {3, 1 - 2}, {3, 1}, {0, 1}});
    const Imported made(square.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr) << made.result.error;
    EXPECT_EQ(list_count(&only_layer(model)->uvees), 0);
    EXPECT_FLOAT_EQ(only_layer(model)->repeat_u, 3.0f);
    EXPECT_FLOAT_EQ(only_layer(model)->repeat_v, 2.0f);
    EXPECT_EQ(shown_at(model).at({100, 0}), (std::array<float, 2>{3, 2}));
}

TEST(ImportTextures, OtherCoordinatesBecomeUvees) {
    const TexturedSquare square({{0, 0}, {1, 0.25f}, {1, 1}, {0.5f, 1}});
    const Imported made(square.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr);
    EXPECT_EQ(list_count(&only_layer(model)->uvees), 4);
    const auto shown = shown_at(model);
    EXPECT_EQ(shown.at({100, 0}), (std::array<float, 2>{1, 0.75f}));
    EXPECT_EQ(shown.at({0, 100}), (std::array<float, 2>{0.5f, 0}));
}

// Two squares side by side that share an edge, with these coordinates on both sides of it.
int32_t points_of_two_squares(float left_v, float right_v, unsigned right_material) {
    SceneMaker maker;
    maker.add_texels(2, 2, FOUR_TEXELS);
    for (const char* name : {"a", "b"}) { SceneMaker::set_texture(maker.add_material(name), "*0"); }
    aiMesh* left = maker.add_mesh(SQUARE, TWO, nullptr, 0);
    SceneMaker::set_coordinates(left, {{0, 0.1f}, {0.5f, left_v}, {0.7f, 1}, {0.2f, 1}});
    std::vector<Triple> places = SQUARE;
    for (Triple& place : places) { place[0] += 100; }
    aiMesh* right = maker.add_mesh(places, TWO, nullptr, right_material);
    SceneMaker::set_coordinates(right, {{0.5f, right_v}, {1, 0.3f}, {1, 0.9f}, {0.7f, 1}});
    const Imported made(maker.scene, at_scale(1));
    return model_count_points(made.load().get());
}

TEST(ImportTextures, PointsAreDoubledAtSeamsAndNoMoreThanNeeded) {
    EXPECT_EQ(points_of_two_squares(0.0f, 0.0f, 0), 6);
    EXPECT_EQ(points_of_two_squares(0.0f, 0.5f, 0), 7);
    // Coordinates belong to a layer: in another one the same point has others.
    EXPECT_EQ(points_of_two_squares(0.0f, 0.5f, 1), 6);
}

TEST(ImportTextures, TexelsOfTheSceneLieBesideTheModel) {
    const TexturedSquare square({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    const Imported made(square.maker.scene, at_scale(1));
    const char* error = nullptr;
    TgaImage* image = tga_read(made.dir.file("made_picture.tga").c_str(), &error);
    ASSERT_NE(image, nullptr) << error;
    // A texel of the library says blue, green, red, alpha; its first is the upper left.
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(std::vector<int>(image->pixels, image->pixels + 6), (std::vector<int>{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(std::vector<int>(image->pixels + 6, image->pixels + 12), (std::vector<int>{9, 8, 7, 12, 11, 10}));
    tga_free(image);
}

TEST(ImportTextures, ImagesAreFoundWhateverTheirCaseAndTheirDirectoryOfOld) {
    for (const char* path : {"Wood.TGA", "C:\\work\\wood.tga", "maps/../wood.tga", "w%6Fod.tga"}) {
        const test::TempDir images;
        images.write("wood.tga", test::solid_tga(3, 2, 10, 20, 30));
        images.make_dir("maps");
        SceneMaker maker;
        SceneMaker::set_texture(maker.add_material("m"), path);
        SceneMaker::set_coordinates(add_square(maker), {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
        const Imported made(maker.scene, at_scale(1), "obj", images.path());
        EXPECT_EQ(made.losses(), "") << path;
        EXPECT_TRUE(made.dir.exists("made_wood.tga") || made.dir.exists("made_Wood.tga")) << path;
        EXPECT_EQ(made.result.sources.size(), 1u);
    }
}

TEST(ImportTextures, AnImageThatIsMissingOrBrokenIsToldAndTheRestIsMade) {
    const test::TempDir images;
    images.write("broken.png", "no picture at all");
    SceneMaker maker;
    for (const char* path : {"missing.png", "broken.png"}) {
        SceneMaker::set_texture(maker.add_material(path), path);
        SceneMaker::set_coordinates(add_square(maker, static_cast<float>(maker.scene.mNumMaterials)),
                                    {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    }
    const Imported made(maker.scene, at_scale(1), "obj", images.path());
    EXPECT_NE(made.load(), nullptr);
    EXPECT_TRUE(made.has_loss("image is missing: missing.png")) << made.losses();
    EXPECT_TRUE(made.has_loss("image cannot be used, it is of a kind that is not known: broken.png")) << made.losses();
}

TEST(ImportTextures, LargeImagesAreMadeSmallerUnlessAskedOtherwise) {
    const test::TempDir images;
    images.write("wide.tga", test::solid_tga(100, 50, 10, 20, 30));
    for (const int32_t most : {40, 100}) {
        SceneMaker maker;
        SceneMaker::set_texture(maker.add_material("m"), "wide.tga");
        SceneMaker::set_coordinates(add_square(maker), {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
        ImportOptions options = at_scale(1);
        options.max_texture = most;
        const Imported made(maker.scene, options, "obj", images.path());
        const OwnedModel model = made.load();
        ASSERT_NE(only_layer(model), nullptr);
        const LayerImage* image = layer_first_image(only_layer(model));
        EXPECT_EQ(image->width[0], most);
        EXPECT_EQ(image->height[0], most / 2);
        EXPECT_EQ(image->pixels[0][0], 10);
        EXPECT_EQ(made.has_loss("100 x 50 pixels is made smaller"), most == 40) << made.losses();
    }
}

// ---- alpha ----

TEST(ImportAlpha, HalfTransparentPlacesBecomeAKeyAndAreTold) {
    const TexturedSquare square({{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                                {{1, 2, 3, 255}, {4, 5, 6, 0}, {7, 8, 9, 100}, {10, 11, 12, 200}});
    const Imported made(square.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr) << made.result.error;
    EXPECT_EQ(only_layer(model)->invisible, 1);
    const LayerImage* image = layer_first_image(only_layer(model));
    ASSERT_EQ(image->bytes_per_pixel[0], 4);
    std::vector<int> alphas;
    for (int i = 0; i < 4; ++i) { alphas.push_back(image->pixels[0][4 * i + 3]); }
    EXPECT_EQ(alphas, (std::vector<int>{255, 0, 0, 255}));
    EXPECT_TRUE(made.has_loss("image loses its half transparent places: made_picture.tga")) << made.losses();
}

TEST(ImportAlpha, AThresholdOfTheSourceIsNoLoss) {
    TexturedSquare square({{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                          {{1, 2, 3, 255}, {4, 5, 6, 0}, {7, 8, 9, 100}, {10, 11, 12, 60}});
    const aiString mask("MASK");
    square.material->AddProperty(&mask, AI_MATKEY_GLTF_ALPHAMODE);
    set_value(square.material, 0.3f, "$mat.gltf.alphaCutoff");
    const Imported made(square.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr);
    const unsigned char* pixels = layer_first_image(only_layer(model))->pixels[0];
    EXPECT_EQ(pixels[4 * 2 + 3], 255);  // 100 of 255 is more than 0.3
    EXPECT_EQ(pixels[4 * 3 + 3], 0);
    EXPECT_EQ(made.losses(), "");
}

TEST(ImportAlpha, AnOpaqueSurfaceHeedsNoAlpha) {
    TexturedSquare square({{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                          {{1, 2, 3, 0}, {4, 5, 6, 99}, {7, 8, 9, 0}, {1, 1, 1, 255}});
    const aiString opaque("OPAQUE");
    square.material->AddProperty(&opaque, AI_MATKEY_GLTF_ALPHAMODE);
    const Imported made(square.maker.scene, at_scale(1));
    EXPECT_EQ(only_layer(made.load())->invisible, 0);
    EXPECT_EQ(made.losses(), "");
}

TEST(ImportAlpha, TheKeyIsAColourThatNothingOpaqueHas) {
    SourceImage image{2, 1, true, {255, 0, 255, 255, 9, 9, 9, 0}};
    const KeyedPicture keyed = key_image(&image, 0.5f);
    ASSERT_TRUE(keyed.has_key);
    EXPECT_EQ(keyed.key, (std::array<int32_t, 3>{255, 0, 254}));
    EXPECT_EQ(image.pixels[4 + 2], 254);
    EXPECT_EQ(image.pixels[2], 255);
    EXPECT_FALSE(keyed.was_smooth);
}

}  // namespace
}  // namespace pelt
