#include "render/scene_draw.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "motion/root_models.h"
#include "support/drawing_scene.h"

namespace pelt {
namespace {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

constexpr const char* UNFILTERED = "GL_NEAREST";

// A layer of colour 127, 0, 64 with one triangle at (0, 0, 0), (1, 0, 0), (0, 1, 0).
class SceneDraw : public testing::Test {
protected:
    void SetUp() override {
        session = &scene.session;
        model = scene.model;
        layer = scene.layer;
        layer->colour[1] = 0;
        layer->colour[2] = 64;
        const Vec3 corners[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        for (int i = 0; i < 3; ++i) scene.add_point(i + 1, corners[i]);
        add_triangle();
        recording_gl::name_data(pixels[0], "base");
        recording_gl::name_data(pixels[1], "mirror");
        recording_gl::name_data(pixels[2], "reflection");
        recording_gl::name_data(second_pixels, "second");
        glMatrixMode(GL_PROJECTION);  // whatever was selected before
        recording_gl::clear();
    }
    void TearDown() override {
        EXPECT_EQ(recording_gl::joined(recording_gl::errors()), "");
        for (LayerImage& image : list_elements<LayerImage>(layer->images)) image = LayerImage{};
    }

    void add_triangle() {
        const int32_t points[4] = {1, 2, 3, 0};
        ASSERT_EQ(model_add_triangle(model, "body", 0, points, nullptr, nullptr, 0), 1);
    }

    LayerImage* add_image(int32_t key = 1) {
        auto* image = static_cast<LayerImage*>(list_add(&layer->images, key));
        *image = LayerImage{};
        return image;
    }
    void fill(LayerImage* image, int slot, int32_t bytes = 3) {
        image->pixels[slot] = pixels[slot];
        image->width[slot] = 2 * (slot + 1);
        image->height[slot] = 1;
        image->bytes_per_pixel[slot] = bytes;
    }

    int32_t draw() {
        recording_gl::clear();
        return model_draw(session, model);
    }

    // The whole of a model whose layer loop and lines pass are given.
    static Lines model_lines(const Lines& inner) {
        Lines out = {"glMatrixMode GL_MODELVIEW", "glPushMatrix",          "glDisable GL_TEXTURE_2D",
                     "glDisable GL_NORMALIZE",    "glShadeModel GL_SMOOTH", "glEnable GL_LIGHTING"};
        append(out, inner);
        out.push_back("glPopMatrix");
        return out;
    }
    static std::string colour(float alpha) {
        constexpr float scale = 0.007874f;
        return gl("glColor4f", 127 * scale, 0, 64 * scale, alpha);
    }
    // Steps of a layer before its texture is looked at.
    static Lines head(float alpha) {
        Lines out = {"glDepthMask GL_TRUE", "glDisable GL_BLEND", colour(alpha)};
        if (alpha > 0) out.push_back("glEnable GL_BLEND");
        out.push_back("glPolygonMode GL_FRONT_AND_BACK GL_FILL");
        return out;
    }
    static Lines no_lines(float alpha = 1) { return {"glDepthMask GL_TRUE", "glDisable GL_BLEND", colour(alpha)}; }
    static Lines triangle(bool textured, bool mirrored) {
        Lines out = {"glBegin GL_TRIANGLES"};
        const char* const corners[3] = {"glVertex3f 0 0 0", mirrored ? "glVertex3f 1 0 0" : "glVertex3f 0 1 0",
                                        mirrored ? "glVertex3f 0 1 0" : "glVertex3f 1 0 0"};
        for (const char* corner : corners) {
            if (textured) out.push_back("glTexCoord2f 0 0");
            append(out, {"glNormal3f 0 0 1", corner});
        }
        out.push_back("glEnd");
        return out;
    }
    enum Blend { OPAQUE, BLENDED, KEYED, KEYED_OFF };
    static Lines upload(const char* name, int width, Blend blend) {
        Lines out = {gl("glTexParameterf", "GL_TEXTURE_2D", "GL_TEXTURE_MIN_FILTER", UNFILTERED),
                     gl("glTexParameterf", "GL_TEXTURE_2D", "GL_TEXTURE_MAG_FILTER", UNFILTERED)};
        const char* const function = "glBlendFunc GL_SRC_ALPHA GL_ONE_MINUS_SRC_ALPHA";
        if (blend == OPAQUE || blend == KEYED_OFF) append(out, {"glDepthMask GL_TRUE", "glDisable GL_BLEND"});
        if (blend == BLENDED) append(out, {"glEnable GL_BLEND", function, "glDepthMask GL_TRUE"});
        if (blend == KEYED) append(out, {"glEnable GL_BLEND", "glDepthMask GL_TRUE", function});
        const char* const format = blend == KEYED || blend == KEYED_OFF ? "GL_RGBA" : "GL_RGB";
        out.push_back(gl("glTexImage2D", "GL_TEXTURE_2D", 0, 4, width, 1, 0, format, "GL_UNSIGNED_BYTE", name));
        return out;
    }
    // Only calls with these names.
    static Lines only(std::initializer_list<const char*> names) {
        Lines out;
        for (const std::string& line : lines()) {
            for (const char* name : names) {
                if (line == name || line.rfind(std::string(name) + ' ', 0) == 0) out.push_back(line);
            }
        }
        return out;
    }

    Scene scene;
    Session* session = nullptr;
    Model* model = nullptr;
    Layer* layer = nullptr;
    unsigned char pixels[3][32] = {};
    unsigned char second_pixels[32] = {};
};

// ---- The model

TEST_F(SceneDraw, NoModelDrawsNothing) {
    EXPECT_EQ(model_draw(session, nullptr), 0);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(SceneDraw, AnUntexturedModelMakesExactlyTheseCalls) {
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, triangle(false, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
    EXPECT_EQ(recording_gl::matrix_mode(), static_cast<GLenum>(GL_MODELVIEW));
}

TEST_F(SceneDraw, ARootIsPlacedByItsStateWhichKeepsTheCountWithoutTheChildren) {
    session_add_root(session, model, nullptr);
    ModelState* state = model_state(session, model);
    state->gl_matrix.m[12] = 5.0f;
    state->triangle_count = 77;
    Model* child = model_create("child.mod", model);
    model_add_layer(child, "body", 127, 127, 127, 0, 0, 0);
    for (int id = 1; id <= 3; ++id) model_set_point(child, id, id, id * id, 0, 1.0f);
    const int32_t points[4] = {1, 2, 3, 0};
    model_add_triangle(child, "body", 0, points, nullptr, nullptr, 0);
    model_add_child(model, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    recording_gl::clear();
    scene_draw(session);
    EXPECT_EQ(lines()[2], "glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 5 0 0 1");
    EXPECT_EQ(state->triangle_count, 1);
    EXPECT_EQ(session->triangles_drawn, 2);
    list_clear(&session->root_models);  // the scene of the test releases the model
}

TEST_F(SceneDraw, AllRootsAreCountedAnewInEachFrame) {
    Model* other = model_create("other.mod", nullptr);
    session_add_root(session, model, nullptr);
    session_add_root(session, other, nullptr);
    scene_draw(session);
    scene_draw(session);
    EXPECT_EQ(session->triangles_drawn, 1);
    list_clear(&session->root_models);
    session_forget_model(session, other);
    model_release(other);
}

TEST_F(SceneDraw, LightingIsSwitchedOff) {
    session->display_lighting = 0;
    draw();
    EXPECT_EQ(only({"glEnable", "glDisable"})[2], "glDisable GL_LIGHTING");
}

TEST_F(SceneDraw, OverlaysComeFirstUnderTheMatrixOfTheModel) {
    session->display_points = 1;
    session->display_skeleton = 1;
    model_add_joint(model, "hip", 1, 2, 3, "world", 0);
    draw();
    const Lines all = lines();
    const auto at = [&](const char* line) { return std::find(all.begin(), all.end(), line) - all.begin(); };
    EXPECT_EQ(at("glShadeModel GL_SMOOTH"), 4);
    EXPECT_LT(at("glShadeModel GL_SMOOTH"), at("glBegin GL_POINTS"));
    EXPECT_LT(at("glBegin GL_POINTS"), at("glBegin GL_LINES"));
    EXPECT_LT(at("glBegin GL_LINES"), at("glDepthMask GL_TRUE"));
    EXPECT_LT(at("glBegin GL_LINES"), at("glBegin GL_TRIANGLES"));
}

TEST_F(SceneDraw, LightingOffHoldsBehindTheOverlaysThatSwitchItOn) {
    session->display_points = 1;
    session->display_lighting = 0;
    draw();
    EXPECT_FALSE(recording_gl::enabled(GL_LIGHTING));
}

TEST_F(SceneDraw, TrianglesOffLeavesLinesPointsAndSkeleton) {
    session->display_triangles = 0;
    session->display_points = 1;
    session->display_skeleton = 1;
    model_add_joint(model, "hip", 1, 2, 3, "world", 0);
    const int32_t points[2] = {1, 2};
    model_add_line(model, "body", 2, points);
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_TRIANGLES"), 0);
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_POINTS"), 1);
    EXPECT_GE(recording_gl::count_lines("glBegin GL_LINES"), 1);
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_LINE_STRIP"), 1);
}

// ---- Transparency and sides

TEST_F(SceneDraw, ATransparentUntexturedLayerBlendsWithoutAFunction) {
    layer->transparency = 0.25f;
    draw();
    Lines inner = head(0.75f);
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, triangle(false, false));
    append(inner, no_lines(0.75f));
    EXPECT_EQ(lines(), model_lines(inner));
    EXPECT_TRUE(recording_gl::count_calls("glBlendFunc") == 0);
}

// Intended: alpha 0 does not blend, so that the layer is solid.
TEST_F(SceneDraw, AFullyTransparentUntexturedLayerIsDrawnWithoutBlending) {
    layer->transparency = 1.0f;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(0);
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, triangle(false, false));
    append(inner, no_lines(0));
    EXPECT_EQ(lines(), model_lines(inner));
    EXPECT_FALSE(recording_gl::enabled(GL_BLEND));
}

TEST_F(SceneDraw, AFullyTransparentTexturedLayerIsBlendedToNothing) {
    layer->transparency = 1.0f;
    fill(add_image(), 0);
    EXPECT_EQ(draw(), 1);
    Lines inner = head(0);
    append(inner, upload("base", 2, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines(0));
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, TransparencySwitchedOffLeavesTheLayerOpaque) {
    layer->transparency = 0.25f;
    session->display_transparency = 0;
    draw();
    EXPECT_EQ(only({"glColor4f"})[0], colour(1));
}

TEST_F(SceneDraw, WireframeDrawsLinesOnBothSides) {
    session->display_wireframe = 1;
    draw();
    EXPECT_EQ(only({"glPolygonMode"}), Lines{"glPolygonMode GL_FRONT_AND_BACK GL_LINE"});
}

TEST_F(SceneDraw, BackFacesOfASinglesidedLayerBecomeLines) {
    layer->singlesided = 1;
    session->display_backfaces = 0;
    draw();
    const Lines expected = {"glPolygonMode GL_FRONT GL_FILL", "glPolygonMode GL_BACK GL_LINE"};
    EXPECT_EQ(only({"glPolygonMode"}), expected);
    session->display_backfaces = 1;
    draw();
    EXPECT_EQ(only({"glPolygonMode"}), Lines{"glPolygonMode GL_FRONT_AND_BACK GL_FILL"});
    layer->singlesided = 0;
    session->display_backfaces = 0;
    draw();
    EXPECT_EQ(only({"glPolygonMode"}), Lines{"glPolygonMode GL_FRONT_AND_BACK GL_FILL"});
}

TEST_F(SceneDraw, ASinglesidedLayerWithoutBackFacesInWireframeIsAllLines) {
    layer->singlesided = 1;
    session->display_backfaces = 0;
    session->display_wireframe = 1;
    draw();
    EXPECT_EQ(only({"glPolygonMode"}), Lines{"glPolygonMode GL_FRONT_AND_BACK GL_LINE"});
}

// ---- Textures

TEST_F(SceneDraw, ATexturedLayerUploadsItsImage) {
    fill(add_image(), 0);
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    append(inner, upload("base", 2, OPAQUE));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, TexturesSwitchedOffMakeNoCall) {
    fill(add_image(), 0);
    session->display_textures = 0;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    append(inner, triangle(false, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AnImageWithoutPixelsIsNoTexture) {
    add_image();
    draw();
    Lines inner = head(1);
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, triangle(false, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AColourKeyBlendsAndUploadsFourBytes) {
    layer->invisible = 1;
    fill(add_image(), 0, 4);
    draw();
    Lines inner = head(1);
    append(inner, upload("base", 2, KEYED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AColourKeyWithTransparencyOffDoesNotBlend) {
    layer->invisible = 1;
    session->display_transparency = 0;
    fill(add_image(), 0, 4);
    draw();
    Lines inner = head(1);
    append(inner, upload("base", 2, KEYED_OFF));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

// The key came after the image, whose pixels have three bytes each.
TEST_F(SceneDraw, AnImageLoadedBeforeItsColourKeyIsUploadedAsThreeBytes) {
    layer->invisible = 1;
    fill(add_image(), 0, 3);
    draw();
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, OPAQUE).back()});
}

TEST_F(SceneDraw, SmoothTexturesAreLinear) {
    session->display_smooth = 1;
    fill(add_image(), 0);
    draw();
    const Lines expected = {"glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MIN_FILTER GL_LINEAR",
                            "glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MAG_FILTER GL_LINEAR"};
    EXPECT_EQ(only({"glTexParameterf"}), expected);
}

TEST_F(SceneDraw, ATransparentTexturedLayerBlends) {
    layer->transparency = 0.5f;
    fill(add_image(), 0);
    draw();
    Lines inner = head(0.5f);
    append(inner, upload("base", 2, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines(0.5f));
    EXPECT_EQ(lines(), model_lines(inner));
}

// ---- Reflection

// The pass over the base, with the matrices of a fresh context: at (0, 0, 0) the place counts nothing.
Lines reflected(bool mirrored) {
    Lines out = {"glGetFloatv GL_MODELVIEW_MATRIX", "glGetFloatv GL_PROJECTION_MATRIX", "glBegin GL_TRIANGLES"};
    const Lines right = {mirrored ? "glTexCoord2f 1.375 1.5" : "glTexCoord2f 1.625 1.5", "glNormal3f 0 0 1",
                         "glVertex3f 1 0 0"};
    const Lines up = {"glTexCoord2f 1.5 1.375", "glNormal3f 0 0 1", "glVertex3f 0 1 0"};
    append(out, {"glTexCoord2f 1.5 1.5", "glNormal3f 0 0 1", "glVertex3f 0 0 0"});
    append(out, mirrored ? right : up);
    append(out, mirrored ? up : right);
    out.push_back("glEnd");
    return out;
}

TEST_F(SceneDraw, APartOfReflectionIsASecondPassThatCountsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 0.5f;
    layer->transparency = 0.5f;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(0.5f);
    append(inner, upload("base", 2, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    inner.push_back(colour(0.25f));
    append(inner, upload("reflection", 6, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(false));
    append(inner, no_lines(0.5f));
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AFullReflectionReplacesTheBaseAndCountsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    Lines inner = head(1);
    append(inner, upload("base", 2, OPAQUE));
    inner.push_back("glEnable GL_TEXTURE_2D");
    inner.push_back(colour(1));
    append(inner, upload("reflection", 6, OPAQUE));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AFullReflectionWithReflectionsOffDrawsItsBaseAndCounts) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 1.0f;
    session->display_reflect = 0;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    append(inner, upload("base", 2, OPAQUE));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

// Intended: the base goes although there is nothing in its place.
TEST_F(SceneDraw, AFullReflectionWithoutAMapDrawsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 0);
}

TEST_F(SceneDraw, AReflectionOfZeroDrawsNoPass) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, OPAQUE).back()});
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 1);
}

TEST_F(SceneDraw, TheReflectionOfAnUntexturedLayerSwitchesTexturesOnForItselfAlone) {
    LayerImage* image = add_image();
    fill(image, 2);
    image->reflection = 0.5f;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, triangle(false, false));
    inner.push_back(colour(0.5f));
    append(inner, upload("reflection", 6, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(false));
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, WithTexturesOffTheReflectionStillRunsAndSwitchesThemOffAgain) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 0.5f;
    session->display_textures = 0;
    EXPECT_EQ(draw(), 1);
    Lines inner = head(1);
    append(inner, triangle(false, false));
    inner.push_back(colour(0.5f));
    append(inner, upload("reflection", 6, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(false));
    inner.push_back("glDisable GL_TEXTURE_2D");
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

// ---- Mirrors

Lines mirror_head(const char* scale, const std::string& colour) { return {"glPushMatrix", scale, colour}; }

TEST_F(SceneDraw, AMirroredLayerIsDrawnTwiceAndCountsTwice) {
    const struct {
        int code;
        const char* scale;
    } axes[] = {{AXIS_X, "glScalef -1 1 1"},      {AXIS_Y, "glScalef 1 -1 1"},      {AXIS_Z, "glScalef 1 1 -1"},
                {AXIS_MINUS_X, "glScalef 1 1 1"}, {AXIS_MINUS_Y, "glScalef 1 1 1"}, {AXIS_MINUS_Z, "glScalef 1 1 1"}};
    layer->mirror = 1;
    for (const auto& axis : axes) {
        layer->mirror_axis = axis.code;
        EXPECT_EQ(draw(), 2);
        Lines inner = head(1);
        inner.push_back("glDisable GL_TEXTURE_2D");
        append(inner, triangle(false, false));
        append(inner, mirror_head(axis.scale, colour(1)));
        append(inner, triangle(false, true));
        inner.push_back("glPopMatrix");
        append(inner, no_lines());
        EXPECT_EQ(lines(), model_lines(inner)) << axis.code;
    }
}

TEST_F(SceneDraw, MirrorsSwitchedOffDrawOnce) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    session->display_mirror = 0;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(recording_gl::count_calls("glScalef"), 0);
}

TEST_F(SceneDraw, AMirroredTexturedLayerUploadsItsImageAgain) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    layer->transparency = 0.5f;
    fill(add_image(), 0);
    EXPECT_EQ(draw(), 2);
    Lines inner = head(0.5f);
    append(inner, upload("base", 2, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    append(inner, mirror_head("glScalef -1 1 1", colour(0.5f)));
    append(inner, upload("base", 2, BLENDED));
    append(inner, triangle(true, true));
    inner.push_back("glPopMatrix");
    append(inner, no_lines(0.5f));
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AMirrorImageTakesThePlaceOfTheImage) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    layer->invisible = 1;
    LayerImage* image = add_image();
    fill(image, 0, 4);
    fill(image, 1, 3);  // each slot is uploaded as its own pixels are
    EXPECT_EQ(draw(), 2);
    const Lines expected = {upload("base", 2, KEYED).back(), upload("mirror", 4, OPAQUE).back()};
    EXPECT_EQ(only({"glTexImage2D"}), expected);
}

TEST_F(SceneDraw, AMirrorImageWithoutAnImageIsNotUsed) {
    layer->mirror = 1;
    fill(add_image(), 1);
    EXPECT_EQ(draw(), 2);
    EXPECT_EQ(recording_gl::count_calls("glTexImage2D"), 0);
}

TEST_F(SceneDraw, AMirroredLayerReflectsOnBothSidesWithFourUploads) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    LayerImage* image = add_image();
    for (int slot = 0; slot < 3; ++slot) fill(image, slot);
    image->reflection = 0.5f;
    EXPECT_EQ(draw(), 2);
    Lines inner = head(1);
    append(inner, upload("base", 2, OPAQUE));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, triangle(true, false));
    inner.push_back(colour(0.5f));
    append(inner, upload("reflection", 6, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(false));
    append(inner, mirror_head("glScalef -1 1 1", colour(1)));
    append(inner, upload("mirror", 4, OPAQUE));
    append(inner, triangle(true, true));
    inner.push_back(colour(0.5f));
    append(inner, upload("reflection", 6, BLENDED));
    inner.push_back("glEnable GL_TEXTURE_2D");
    append(inner, reflected(true));
    inner.push_back("glPopMatrix");
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
}

TEST_F(SceneDraw, AFullyReflectingMirroredLayerCountsNothing) {
    layer->mirror = 1;
    LayerImage* image = add_image();
    fill(image, 2);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 2);
}

// Intended: a second image shows only while the layer is mirrored.
TEST_F(SceneDraw, ASecondImageShowsOnlyWhileTheLayerIsMirrored) {
    LayerImage* first = add_image(1);
    fill(first, 0);
    LayerImage* second = add_image(2);
    fill(second, 0);
    second->pixels[0] = second_pixels;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, OPAQUE).back()});
    layer->mirror = 1;
    layer->mirror_axis = AXIS_Y;
    EXPECT_EQ(draw(), 4);
    Lines inner = head(1);
    for (const char* name : {"base", "second"}) {
        append(inner, upload(name, 2, OPAQUE));
        inner.push_back("glEnable GL_TEXTURE_2D");
        append(inner, triangle(true, false));
        append(inner, mirror_head("glScalef 1 -1 1", colour(1)));
        append(inner, upload(name, 2, OPAQUE));
        append(inner, triangle(true, true));
        inner.push_back("glPopMatrix");
    }
    append(inner, no_lines());
    EXPECT_EQ(lines(), model_lines(inner));
    session->display_textures = 0;
    EXPECT_EQ(draw(), 2);
}

// ---- Lines

TEST_F(SceneDraw, TheLinesPassDrawsEachLineAndItsMirror) {
    const int32_t points[2] = {1, 2};
    model_add_line(model, "body", 2, points);
    layer->transparency = 0.5f;
    layer->mirror = 1;
    layer->mirror_axis = AXIS_Z;
    session->display_triangles = 0;
    EXPECT_EQ(draw(), 0);
    const Lines line = {"glGetIntegerv GL_LIGHTING", "glGetIntegerv GL_TEXTURE_2D", "glDisable GL_LIGHTING",
                        "glDisable GL_TEXTURE_2D",   "glBegin GL_LINE_STRIP",       "glVertex3f 0 0 0",
                        "glVertex3f 1 0 0",          "glEnd",                       "glEnable GL_LIGHTING"};
    Lines inner = no_lines(0.5f);
    append(inner, line);
    append(inner, {"glPushMatrix", "glScalef 1 1 -1"});
    append(inner, line);
    inner.push_back("glPopMatrix");
    EXPECT_EQ(lines(), model_lines(inner));
    session->display_mirror = 0;
    draw();
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_LINE_STRIP"), 1);
}

TEST_F(SceneDraw, LinesSwitchedOffMakeNoCall) {
    const int32_t points[2] = {1, 2};
    model_add_line(model, "body", 2, points);
    session->display_lines = 0;
    session->display_triangles = 0;
    draw();
    EXPECT_EQ(lines(), model_lines({}));
}

// ---- Which routine draws

class Routines : public SceneDraw {
protected:
    void SetUp() override {
        SceneDraw::SetUp();
        for (Triangle& t : list_elements<Triangle>(layer->triangles)) only_triangle = &t;
        // Type 1 with its defaults: the corners shape their own edges.
        only_triangle->curve_type = 1;
        for (int i = 0; i < 6; ++i) only_triangle->controls[i] = static_cast<int16_t>(i / 2 % 3 + 1);
    }
    int32_t draw_layer(bool textured = false, bool reflection = false) {
        recording_gl::clear();
        return layer_draw(session, model, layer, 1.0f, textured, false, reflection);
    }
    Triangle* only_triangle = nullptr;
};

TEST_F(Routines, ACurvedTriangleIsGenerated) { EXPECT_GT(draw_layer(), 1); }

TEST_F(Routines, LodZeroDrawsEveryTriangleFlat) {
    session->display_lod = 0;
    EXPECT_EQ(draw_layer(), 1);
    EXPECT_EQ(lines(), triangle(false, false));
}

TEST_F(Routines, CurvesOffDrawsEveryTriangleFlat) {
    session->display_curves = 0;
    EXPECT_EQ(draw_layer(), 1);
    EXPECT_EQ(lines(), triangle(false, false));
}

TEST_F(Routines, AFlatTriangleStaysFlatWithCurvesOn) {
    only_triangle->curve_type = 0;
    EXPECT_EQ(draw_layer(), 1);
    EXPECT_EQ(lines(), triangle(false, false));
}

TEST_F(Routines, ThePnFilterCurvesFlatTrianglesToo) {
    only_triangle->curve_type = 0;
    session->display_pnfilter = 1;
    EXPECT_GT(draw_layer(), 1);
}

TEST_F(Routines, ThePnFilterWithLodZeroDrawsFlat) {
    session->display_pnfilter = 1;
    session->display_lod = 0;
    EXPECT_EQ(draw_layer(), 1);
    EXPECT_EQ(lines(), triangle(false, false));
}

// Intended: the filter has no reflection coordinates.
TEST_F(Routines, AReflectionPassOverFilteredTrianglesUsesTheirUvees) {
    session->display_pnfilter = 1;
    draw_layer(true, true);
    EXPECT_EQ(recording_gl::count_lines("glGetFloatv GL_PROJECTION_MATRIX"), 0);
    EXPECT_EQ(recording_gl::count_lines("glTexCoord2f 0 0"), recording_gl::count_calls("glTexCoord2f"));
    EXPECT_GT(recording_gl::count_calls("glTexCoord2f"), 0);
}

TEST_F(Routines, PolygonsComeAfterTrianglesAndCountTheirTriangles) {
    session->display_lod = 0;
    scene.add_point(4, {1, 1, 0});
    const int32_t points[4] = {1, 2, 3, 4};
    model_add_polygon(model, "body", 4, points, nullptr);
    EXPECT_EQ(draw_layer(), 3);
    const Lines expected = {"glBegin GL_TRIANGLES", "glBegin GL_TRIANGLES", "glBegin GL_TRIANGLE_STRIP"};
    EXPECT_EQ(only({"glBegin"}), expected);
}

TEST_F(Routines, NormalsFollowEachPrimitiveAtOnce) {
    session->display_lod = 0;
    session->display_normals = 1;
    add_triangle();
    const int32_t points[3] = {1, 2, 3};
    model_add_polygon(model, "body", 3, points, nullptr);
    draw_layer();
    const Lines expected = {"glBegin GL_TRIANGLES", "glBegin GL_LINES",          "glBegin GL_TRIANGLES",
                            "glBegin GL_LINES",     "glBegin GL_TRIANGLES",      "glBegin GL_TRIANGLE_STRIP",
                            "glBegin GL_LINES"};
    EXPECT_EQ(only({"glBegin"}), expected);
}

// ---- Children

// A model with one triangle whose first corner, sent first, is (0, 0, mark).
Model* make_marked_model(int32_t mark) {
    Model* made = model_create("marked.mod", nullptr);
    model_add_layer(made, "body", 127, 127, 127, 0, 0, 0);
    const int32_t points[4] = {1, 2, 3, 0};
    for (int id = 1; id <= 3; ++id) model_set_point(made, id, id == 2, id == 3, mark, 1.0f);
    model_add_triangle(made, "body", 0, points, nullptr, nullptr, 0);
    return made;
}

ChildLink* link_child(Model* parent, Model* child, float x) {
    return model_add_child(parent, child, "child", x, 0, 0, 1, 1, 1, "0", "0", "0");
}

// Where each marked triangle was drawn: mark and the x of the matrix, followed through the calls. Every matrix of these
// tests is a translation along x.
std::vector<std::pair<int, float>> drawn_places() {
    std::vector<std::pair<int, float>> out;
    std::vector<float> stack = {0};
    bool first = false;
    for (const recording_gl::Call& call : recording_gl::calls()) {
        const std::string name = recording_gl::function_name(call.function);
        if (name == "glPushMatrix") stack.push_back(float(stack.back()));
        if (name == "glPopMatrix") stack.pop_back();
        if (name == "glMultMatrixf") stack.back() += static_cast<float>(call.arguments[12]);
        if (name == "glLoadMatrixf") stack.back() = static_cast<float>(call.arguments[12]);
        if (name == "glBegin") first = true;
        if (name == "glVertex3f" && first) {
            first = false;
            out.emplace_back(static_cast<int>(call.arguments[2]), stack.back());
        }
    }
    return out;
}

TEST_F(SceneDraw, AChildIsDrawnUnderItsLinkAndSetsAllStateAgain) {
    Model* child = make_marked_model(5);
    ChildLink* link = model_add_child(model, child, "child", 1, 2, 3, 1, 1, 1, "0", "0", "0");
    layer->mirror = 1;
    session->display_triangles = 0;
    session->display_lines = 0;
    EXPECT_EQ(link->state_index, -1);
    draw();
    EXPECT_NE(link->state_index, -1);  // made on first use
    const Lines expected = model_lines({"glPushMatrix", "glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 1 2 3 1",
                                        "glMatrixMode GL_MODELVIEW", "glPushMatrix", "glDisable GL_TEXTURE_2D",
                                        "glDisable GL_NORMALIZE", "glShadeModel GL_SMOOTH", "glEnable GL_LIGHTING",
                                        "glPopMatrix", "glPopMatrix"});
    EXPECT_EQ(lines(), expected);
    session->display_triangles = 1;
    EXPECT_EQ(draw(), 3);  // nothing of the parent's mirror
}

TEST_F(SceneDraw, ALinkWithoutAModelDrawsNothing) {
    link_child(model, nullptr, 5);
    EXPECT_EQ(draw(), 1);
}

TEST_F(SceneDraw, SiblingsStayInPlace) {
    link_child(model, make_marked_model(7), 10);
    link_child(model, make_marked_model(8), 20);
    draw();
    const std::vector<std::pair<int, float>> expected = {{0, 0}, {7, 10}, {8, 20}};
    EXPECT_EQ(drawn_places(), expected);
}

// At every level a child that goes on and behind it one that does not.
TEST_F(SceneDraw, DeepTreesNeverPassTheStackAndSiblingsStayInPlace) {
    layer->mirror = 1;  // the deepest use of the stack in a level
    Model* parent = model;
    std::vector<std::pair<int, float>> down, up;
    for (int level = 1; level < MODEL_TREE_DEPTH_LIMIT; ++level) {
        const auto x = static_cast<float>(level);
        Model* chain = make_marked_model(level);
        list_elements<Layer>(chain->layers).begin()->mirror = 1;
        link_child(parent, chain, 1);
        link_child(parent, make_marked_model(100 + level), 1000);
        for (int copy = 0; copy < 2; ++copy) down.emplace_back(level, x);
        up.insert(up.begin(), {100 + level, 1000 + x - 1});
        parent = chain;
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();  // that of a frame
    recording_gl::clear();
    EXPECT_EQ(model_draw(session, model), 2 + 31 * 3);
    std::vector<std::pair<int, float>> expected = {{0, 0}, {0, 0}};
    expected.insert(expected.end(), down.begin(), down.end());
    expected.insert(expected.end(), up.begin(), up.end());
    EXPECT_EQ(drawn_places(), expected);
    EXPECT_LE(recording_gl::deepest_modelview(), 32);
    EXPECT_EQ(recording_gl::modelview_depth(), 2);
    EXPECT_EQ(recording_gl::modelview()[12], 0.0f);
}

TEST_F(SceneDraw, TheStackIsUsedForThirteenLevelsAndNotBelow) {
    Model* parent = model;
    for (int level = 1; level <= 14; ++level) {
        Model* child = make_marked_model(level);
        link_child(parent, child, 1);
        parent = child;
        draw();
        EXPECT_EQ(recording_gl::count_calls("glLoadMatrixf"), level <= 13 ? 0 : 2) << level;
        EXPECT_EQ(recording_gl::count_calls("glPushMatrix"), 1 + 2 * std::min(level, 13)) << level;
    }
}

TEST_F(SceneDraw, AModelThatIsItsOwnDescendantIsDrawnOnce) {
    Model* child = make_marked_model(3);
    link_child(model, child, 1);
    link_child(child, model, 1)->borrowed = 1;
    link_child(child, child, 1)->borrowed = 1;
    EXPECT_EQ(draw(), 2);
}

TEST_F(SceneDraw, ATreeTooDeepIsDrawnToItsLimit) {
    Model* parent = model;
    for (int level = 1; level <= 60; ++level) {
        Model* child = make_marked_model(level);
        link_child(parent, child, 1);
        parent = child;
    }
    EXPECT_EQ(draw(), MODEL_TREE_DEPTH_LIMIT + 1);
}

}  // namespace
}  // namespace pelt
