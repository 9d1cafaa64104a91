// The passes of a layer: reflection, mirror, further images, lines.
#include "support/layer_scene.h"

namespace pelt {
namespace {

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

class LayerPasses : public LayerScene {
protected:
    static Lines reflection(float alpha, Blend blend, bool mirrored) {
        Lines out = {colour(alpha)};
        append(out, upload("reflection", 6, blend));
        out.push_back("glEnable GL_TEXTURE_2D");
        append(out, reflected(mirrored));
        return out;
    }
};

TEST_F(LayerPasses, APartOfReflectionIsASecondPassThatCountsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 0.5f;
    layer->transparency = 0.5f;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(0.5f, {textured("base", 2, BLENDED), reflection(0.25f, BLENDED, false)}));
}

TEST_F(LayerPasses, AFullReflectionReplacesTheBaseAndCountsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(lines(),
              layer_lines(1, {upload("base", 2, SOLID), {"glEnable GL_TEXTURE_2D"}, reflection(1, SOLID, false)}));
}

TEST_F(LayerPasses, AFullReflectionWithReflectionsOffDrawsItsBaseAndCounts) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 1.0f;
    session->display_reflect = 0;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(1, {textured("base", 2, SOLID)}));
}

// Intended: the base goes although there is nothing in its place.
TEST_F(LayerPasses, AFullReflectionWithoutAMapDrawsNothing) {
    LayerImage* image = add_image();
    fill(image, 0);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 0);
}

TEST_F(LayerPasses, AReflectionOfZeroDrawsNoPass) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, SOLID).back()});
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 1);
}

TEST_F(LayerPasses, TheReflectionOfAnUntexturedLayerSwitchesTexturesOnForItselfAlone) {
    LayerImage* image = add_image();
    fill(image, 2);
    image->reflection = 0.5f;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(), layer_lines(1, {untextured(), reflection(0.5f, BLENDED, false), {"glDisable GL_TEXTURE_2D"}}));
}

// What is filtered takes no coordinates of the reflection: those of its corners are sent, also where its layer has no
// image and the pass before sent none.
TEST_F(LayerPasses, TheReflectionOfAnUntexturedLayerUnderTheFilterSendsTheCoordinatesOfTheCorners) {
    LayerImage* image = add_image();
    fill(image, 2);
    image->reflection = 0.5f;
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    session->display_mirror = 1;
    session->display_pnfilter = 1;
    session->display_lod = 1;
    const int32_t generated = 4;  // two segments an edge
    EXPECT_EQ(draw(), 2 * generated);
    // Four passes: plain and mirrored, of which the two of the reflection are textured.
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 4 * 3 * generated);
    EXPECT_EQ(recording_gl::count_calls("glTexCoord2f"), 2 * 3 * generated);
    EXPECT_EQ(recording_gl::count_lines("glTexCoord2f 0 0"), 2 * 3 * generated);
}

TEST_F(LayerPasses, WithTexturesOffTheReflectionStillRunsAndSwitchesThemOffAgain) {
    LayerImage* image = add_image();
    fill(image, 0);
    fill(image, 2);
    image->reflection = 0.5f;
    session->display_textures = 0;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(lines(),
              layer_lines(1, {triangle(false, false), reflection(0.5f, BLENDED, false), {"glDisable GL_TEXTURE_2D"}}));
}

// ---- Mirrors

Lines mirror_head(const char* scale, const std::string& colour) { return {"glPushMatrix", scale, colour}; }

TEST_F(LayerPasses, AMirroredLayerIsDrawnTwiceAndCountsTwice) {
    const struct {
        int code;
        const char* scale;
    } axes[] = {{AXIS_X, "glScalef -1 1 1"},      {AXIS_Y, "glScalef 1 -1 1"},      {AXIS_Z, "glScalef 1 1 -1"},
                {AXIS_MINUS_X, "glScalef 1 1 1"}, {AXIS_MINUS_Y, "glScalef 1 1 1"}, {AXIS_MINUS_Z, "glScalef 1 1 1"}};
    layer->mirror = 1;
    for (const auto& axis : axes) {
        layer->mirror_axis = axis.code;
        EXPECT_EQ(draw(), 2);
        EXPECT_EQ(
            lines(),
            layer_lines(1, {untextured(), mirror_head(axis.scale, colour(1)), triangle(false, true), {"glPopMatrix"}}))
            << axis.code;
    }
}

TEST_F(LayerPasses, MirrorsSwitchedOffDrawOnce) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    session->display_mirror = 0;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(recording_gl::count_calls("glScalef"), 0);
}

TEST_F(LayerPasses, AMirroredTexturedLayerUploadsItsImageAgain) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    layer->transparency = 0.5f;
    fill(add_image(), 0);
    EXPECT_EQ(draw(), 2);
    EXPECT_EQ(lines(), layer_lines(0.5f, {textured("base", 2, BLENDED),
                                          mirror_head("glScalef -1 1 1", colour(0.5f)),
                                          upload("base", 2, BLENDED),
                                          triangle(true, true),
                                          {"glPopMatrix"}}));
}

TEST_F(LayerPasses, AMirrorImageTakesThePlaceOfTheImage) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    layer->invisible = 1;
    LayerImage* image = add_image();
    fill(image, 0, 4);
    fill(image, 1, 3);  // each slot is uploaded as its own pixels are
    EXPECT_EQ(draw(), 2);
    const Lines expected = {upload("base", 2, KEYED).back(), upload("mirror", 4, SOLID).back()};
    EXPECT_EQ(only({"glTexImage2D"}), expected);
}

TEST_F(LayerPasses, AMirrorImageWithoutAnImageIsNotUsed) {
    layer->mirror = 1;
    fill(add_image(), 1);
    EXPECT_EQ(draw(), 2);
    EXPECT_EQ(recording_gl::count_calls("glTexImage2D"), 0);
}

TEST_F(LayerPasses, AMirroredLayerReflectsOnBothSidesWithFourUploads) {
    layer->mirror = 1;
    layer->mirror_axis = AXIS_X;
    LayerImage* image = add_image();
    for (int slot = 0; slot < 3; ++slot) { fill(image, slot); }
    image->reflection = 0.5f;
    EXPECT_EQ(draw(), 2);
    EXPECT_EQ(lines(), layer_lines(1, {textured("base", 2, SOLID),
                                       reflection(0.5f, BLENDED, false),
                                       mirror_head("glScalef -1 1 1", colour(1)),
                                       upload("mirror", 4, SOLID),
                                       triangle(true, true),
                                       reflection(0.5f, BLENDED, true),
                                       {"glPopMatrix"}}));
}

TEST_F(LayerPasses, AFullyReflectingMirroredLayerCountsNothing) {
    layer->mirror = 1;
    LayerImage* image = add_image();
    fill(image, 2);
    image->reflection = 1.0f;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(recording_gl::count_calls("glBegin"), 2);
}

// Intended: a second image shows only while the layer is mirrored.
TEST_F(LayerPasses, ASecondImageShowsOnlyWhileTheLayerIsMirrored) {
    LayerImage* first = add_image(1);
    fill(first, 0);
    LayerImage* second = add_image(2);
    fill(second, 0);
    second->pixels[0] = second_pixels;
    EXPECT_EQ(draw(), 1);
    EXPECT_EQ(only({"glTexImage2D"}), Lines{upload("base", 2, SOLID).back()});
    layer->mirror = 1;
    layer->mirror_axis = AXIS_Y;
    EXPECT_EQ(draw(), 4);
    Lines both;
    for (const char* name : {"base", "second"}) {
        append(both, textured(name, 2, SOLID));
        append(both, mirror_head("glScalef 1 -1 1", colour(1)));
        append(both, upload(name, 2, SOLID));
        append(both, triangle(true, true));
        both.push_back("glPopMatrix");
    }
    EXPECT_EQ(lines(), layer_lines(1, {both}));
    session->display_textures = 0;
    EXPECT_EQ(draw(), 2);
}

// ---- Lines

TEST_F(LayerPasses, TheLinesPassDrawsEachLineAndItsMirror) {
    const int32_t points[2] = {1, 2};
    model_add_line(model, "body", 2, points);
    layer->transparency = 0.5f;
    layer->mirror = 1;
    layer->mirror_axis = AXIS_Z;
    session->display_triangles = 0;
    EXPECT_EQ(draw(), 0);
    const Lines line = {"glGetIntegerv GL_LIGHTING", "glGetIntegerv GL_TEXTURE_2D",
                        "glDisable GL_LIGHTING",     "glDisable GL_TEXTURE_2D",
                        "glBegin GL_LINE_STRIP",     "glVertex3f 0 0 0",
                        "glVertex3f 1 0 0",          "glEnd",
                        "glEnable GL_LIGHTING"};
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

TEST_F(LayerPasses, LinesSwitchedOffMakeNoCall) {
    const int32_t points[2] = {1, 2};
    model_add_line(model, "body", 2, points);
    session->display_lines = 0;
    session->display_triangles = 0;
    draw();
    EXPECT_EQ(lines(), model_lines({}));
}

}  // namespace
}  // namespace pelt
