// A fixture of one layer with one triangle, and the OpenGL lines that each step of drawing it makes.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "render/scene_draw.h"
#include "support/drawing_scene.h"

namespace pelt {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

// A layer of colour 127, 32, 64 with one triangle at (0, 0, 0), (1, 0, 0), (0, 1, 0).
class LayerScene : public testing::Test {
protected:
    void SetUp() override {
        session = &scene.session;
        model = scene.model;
        layer = scene.layer;
        layer->colour[1] = 32;
        layer->colour[2] = 64;
        const Vec3 corners[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        for (int i = 0; i < 3; ++i) { scene.add_point(i + 1, corners[i]); }
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
        for (LayerImage& image : list_elements<LayerImage>(layer->images)) { image = LayerImage{}; }
    }

    void add_triangle() {
        const int32_t points[4] = {1, 2, 3, 0};
        ASSERT_EQ(model_add_triangle(model, "body", 0, points, nullptr, nullptr, 0), 1);
    }

    LayerImage* add_image(int32_t key = 1) {
        auto* image = list_add<LayerImage>(&layer->images, key);
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
        Lines out = {"glMatrixMode GL_MODELVIEW", "glPushMatrix",           "glDisable GL_TEXTURE_2D",
                     "glDisable GL_NORMALIZE",    "glShadeModel GL_SMOOTH", "glEnable GL_LIGHTING"};
        append(out, inner);
        out.push_back("glPopMatrix");
        return out;
    }
    static std::string colour(float alpha) {
        constexpr float scale = 0.007874f;
        return gl("glColor4f", 127 * scale, 32 * scale, 64 * scale, alpha);
    }
    // Steps of a layer before its texture is looked at.
    static Lines head(float alpha) {
        Lines out = {"glDepthMask GL_TRUE", "glDisable GL_BLEND", colour(alpha)};
        if (alpha > 0) { out.push_back("glEnable GL_BLEND"); }
        out.push_back("glPolygonMode GL_FRONT_AND_BACK GL_FILL");
        return out;
    }
    static Lines no_lines(float alpha = 1) { return {"glDepthMask GL_TRUE", "glDisable GL_BLEND", colour(alpha)}; }
    static Lines triangle(bool textured, bool mirrored) {
        Lines out = {"glBegin GL_TRIANGLES"};
        const char* const corners[3] = {"glVertex3f 0 0 0", mirrored ? "glVertex3f 1 0 0" : "glVertex3f 0 1 0",
                                        mirrored ? "glVertex3f 0 1 0" : "glVertex3f 1 0 0"};
        for (const char* corner : corners) {
            if (textured) { out.push_back("glTexCoord2f 0 0"); }
            append(out, {"glNormal3f 0 0 1", corner});
        }
        out.push_back("glEnd");
        return out;
    }
    enum Blend { SOLID, BLENDED, KEYED, KEYED_OFF };
    static Lines upload(const char* name, int width, Blend blend) {
        Lines out = {gl("glTexParameterf", "GL_TEXTURE_2D", "GL_TEXTURE_MIN_FILTER", "GL_NEAREST"),
                     gl("glTexParameterf", "GL_TEXTURE_2D", "GL_TEXTURE_MAG_FILTER", "GL_NEAREST")};
        const char* const function = "glBlendFunc GL_SRC_ALPHA GL_ONE_MINUS_SRC_ALPHA";
        if (blend == SOLID || blend == KEYED_OFF) { append(out, {"glDepthMask GL_TRUE", "glDisable GL_BLEND"}); }
        if (blend == BLENDED) { append(out, {"glEnable GL_BLEND", function, "glDepthMask GL_TRUE"}); }
        if (blend == KEYED) { append(out, {"glEnable GL_BLEND", "glDepthMask GL_TRUE", function}); }
        const char* const format = blend == KEYED || blend == KEYED_OFF ? "GL_RGBA" : "GL_RGB";
        out.push_back(gl("glTexImage2D", "GL_TEXTURE_2D", 0, 4, width, 1, 0, format, "GL_UNSIGNED_BYTE", name));
        return out;
    }
    // One drawing of the layer with a texture, and one without.
    static Lines textured(const char* name, int width, Blend blend) {
        Lines out = upload(name, width, blend);
        out.push_back("glEnable GL_TEXTURE_2D");
        append(out, triangle(true, false));
        return out;
    }
    static Lines untextured() {
        Lines out = {"glDisable GL_TEXTURE_2D"};
        append(out, triangle(false, false));
        return out;
    }
    // The whole of a model whose layer has this alpha, made of these parts between its head and the lines pass.
    static Lines layer_lines(float alpha, std::initializer_list<Lines> parts) {
        Lines inner = head(alpha);
        for (const Lines& part : parts) { append(inner, part); }
        append(inner, no_lines(alpha));
        return model_lines(inner);
    }
    // Only calls with these names.
    static Lines only(std::initializer_list<const char*> names) {
        Lines out;
        for (const std::string& line : lines()) {
            for (const char* name : names) {
                if (line == name || line.rfind(std::string(name) + ' ', 0) == 0) { out.push_back(line); }
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

}  // namespace pelt
