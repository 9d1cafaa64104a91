#include "render/scene_draw.h"

#include <algorithm>

#include "motion/root_models.h"
#include "support/layer_scene.h"

namespace pelt {
namespace {

class SceneDraw : public LayerScene {};

// ---- The model

TEST_F(SceneDraw, NoModelDrawsNothing) {
    EXPECT_EQ(model_draw(session, nullptr), 0);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(SceneDraw, AnUntexturedModelMakesExactlyTheseCalls) {
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(1, {untextured()}));
    EXPECT_EQ(recording_gl::matrix_mode(), static_cast<GLenum>(GL_MODELVIEW));
}

TEST_F(SceneDraw, ARootIsPlacedByItsStateWhichKeepsTheCountWithoutTheChildren) {
    session_add_root(session, model, nullptr);
    ModelState* state = model_state(session, model);
    state->gl_matrix.m[12] = 5.0f;
    state->triangle_count = 77;
    Model* child = model_create("child.mod", model);
    model_add_layer(child, "body", 127, 127, 127, 0, 0, 0);
    for (int id = 1; id <= 3; ++id) { model_set_point(child, id, id, id * id, 0, 1.0f); }
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
    EXPECT_EQ(lines(), layer_lines(0.75f, {untextured()}));
    EXPECT_TRUE(recording_gl::count_calls("glBlendFunc") == 0);
}

// Intended: alpha 0 does not blend, so that the layer is solid.
TEST_F(SceneDraw, AFullyTransparentUntexturedLayerIsDrawnWithoutBlending) {
    layer->transparency = 1.0f;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(0, {untextured()}));
    EXPECT_FALSE(recording_gl::enabled(GL_BLEND));
}

TEST_F(SceneDraw, AFullyTransparentTexturedLayerIsBlendedToNothing) {
    layer->transparency = 1.0f;
    fill(add_image(), 0);
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(0, {textured("base", 2, BLENDED)}));
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
    EXPECT_EQ(lines(), layer_lines(1, {textured("base", 2, SOLID)}));
}

TEST_F(SceneDraw, TexturesSwitchedOffMakeNoCall) {
    fill(add_image(), 0);
    session->display_textures = 0;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(1, {triangle(false, false)}));
}

TEST_F(SceneDraw, AnImageWithoutPixelsIsNoTexture) {
    add_image();
    draw();
    EXPECT_EQ(lines(), layer_lines(1, {untextured()}));
}

TEST_F(SceneDraw, AColourKeyBlendsAndUploadsFourBytes) {
    layer->invisible = 1;
    fill(add_image(), 0, 4);
    draw();
    EXPECT_EQ(lines(), layer_lines(1, {textured("base", 2, KEYED)}));
}

TEST_F(SceneDraw, AColourKeyWithTransparencyOffDoesNotBlend) {
    layer->invisible = 1;
    session->display_transparency = 0;
    fill(add_image(), 0, 4);
    draw();
    EXPECT_EQ(lines(), layer_lines(1, {textured("base", 2, KEYED_OFF)}));
}

// The key came after the image, whose pixels have three bytes each.
TEST_F(SceneDraw, AnImageLoadedBeforeItsColourKeyIsUploadedAsThreeBytes) {
    layer->invisible = 1;
    fill(add_image(), 0, 3);
    draw();
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, SOLID).back()});
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
    EXPECT_EQ(lines(), layer_lines(0.5f, {textured("base", 2, BLENDED)}));
}

// ---- Which routine draws

class Routines : public SceneDraw {
protected:
    void SetUp() override {
        SceneDraw::SetUp();
        for (Triangle& t : list_elements<Triangle>(layer->triangles)) { only_triangle = &t; }
        // Type 1 with its defaults: the corners shape their own edges.
        only_triangle->curve_type = 1;
        for (int i = 0; i < 6; ++i) { only_triangle->controls[i] = static_cast<int16_t>(i / 2 % 3 + 1); }
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
    const Lines expected = {"glBegin GL_TRIANGLES", "glBegin GL_LINES",     "glBegin GL_TRIANGLES",
                            "glBegin GL_LINES",     "glBegin GL_TRIANGLES", "glBegin GL_TRIANGLE_STRIP",
                            "glBegin GL_LINES"};
    EXPECT_EQ(only({"glBegin"}), expected);
}

}  // namespace
}  // namespace pelt
