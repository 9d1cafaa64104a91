// What a curved primitive of a drawing scene must send: its patch, made once more beside the one that is drawn, as
// lines of the recording OpenGL. What a patch computes is proved by the unit tests; here it is taken as given.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "render/patch_draw.h"
#include "support/drawing_scene.h"
#include "surfaces/patch.h"

namespace pelt::curved_scene {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::gl_normal;
using drawing_scene::gl_vertex;
using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

inline constexpr float COLOUR_BYTE = 0.00392157f;

// A patch of its own, from points of the scene, beside the one that the drawing makes.
struct Expected {
    bool quad;
    int type;
    int level;
    Vec3 corners[4];
    Vec3 normals[PATCH_NORMAL_PLACES];
    int vertex_count;
    int triangle_count;
    Vec3 net[24];
    Vec3 places[PATCH_VERTEX_LIMIT];
    Vec3 directions[PATCH_VERTEX_LIMIT];
    int16_t triangles[PATCH_TRIANGLE_LIMIT][3];

    void make() {
        if (quad) {
            QuadPatch patch;
            patch_build_quad(corners, normals, &patch);
            std::copy(std::begin(patch.slots), std::end(patch.slots), net);
            vertex_count = patch_eval_quad(&patch, type, level, places, directions);
            triangle_count = patch_index_quad(type, level, triangles);
        } else {
            TrianglePatch patch;
            patch_build_triangle(corners, normals, &patch);
            std::copy(std::begin(patch.slots), std::end(patch.slots), net);
            vertex_count = patch_eval_triangle(&patch, type, level, places, directions);
            triangle_count = patch_index_triangle(type, level, triangles);
        }
    }
};

// What a primitive of the scene becomes by its own controls.
inline Expected curved(Scene& scene, bool quad, int type, int level) {
    Expected out{};
    out.quad = quad;
    out.type = type;
    out.level = level;
    const int corners = quad ? 4 : 3;
    for (int i = 0; i < corners; ++i) {
        out.corners[i] = scene.point(1 + i)->position;
        out.normals[i] = scene.point(11 + i)->normal;
    }
    for (int i = 0; i < 2 * corners; ++i) { out.normals[4 + i] = scene.point(21 + i)->normal; }
    out.make();
    return out;
}

// What three points become by their own normals.
inline Expected filtered(Scene& scene, const int (&ids)[3], int level) {
    Expected out{};
    out.type = 3;
    out.level = level;
    for (int i = 0; i < 3; ++i) {
        out.corners[i] = scene.point(ids[i])->position;
        out.normals[i] = scene.point(ids[i])->normal;
    }
    const int ends[6] = {0, 1, 1, 2, 2, 0};
    for (int i = 0; i < 6; ++i) { out.normals[4 + i] = out.normals[ends[i]]; }
    out.make();
    return out;
}

// What goes with the vertices: texture coordinates, colours, as the lines in front of the normal.
using Extras = std::vector<Lines>;

inline Extras attribute_lines(const Expected& patch, const float (*uvs)[2], const unsigned char (*colours)[4]) {
    float table[PATCH_ATTRIBUTE_LIMIT * 4];
    int count = 0;
    const int corners = patch.quad ? 4 : 3;
    for (int axis = 0; uvs && axis < 2; ++axis) {
        for (int i = 0; i < corners; ++i) { table[count++] = uvs[i][axis]; }
    }
    for (int part = 0; colours && part < 3; ++part) {
        for (int i = 0; i < corners; ++i) { table[count++] = static_cast<float>(colours[i][part]) * COLOUR_BYTE; }
    }
    const int attributes = count / corners;
    float out[PATCH_VERTEX_LIMIT * PATCH_ATTRIBUTE_LIMIT];
    (patch.quad ? patch_attributes_quad : patch_attributes_triangle)(table, attributes, patch.type, patch.level, out);
    Extras extras;
    for (int i = 0; i < patch.vertex_count; ++i) {
        const float* value = out + i * attributes;
        Lines own;
        if (uvs) { own.push_back(gl("glTexCoord2f", value[0], value[1])); }
        if (uvs) { value += 2; }
        if (colours) { own.push_back(gl("glColor3f", value[0], value[1], value[2])); }
        extras.push_back(own);
    }
    return extras;
}

struct Sending {
    bool mirrored = false;
    bool hide_diagonals = false;
    bool flag_first = false;  // glEdgeFlag behind glBegin
    bool flag_behind = true;  // glEdgeFlag behind glEnd
};

inline Lines sent(const Expected& patch, const Extras& extras, const Sending& how) {
    Lines out{"glBegin GL_TRIANGLES"};
    if (how.flag_first) { out.push_back("glEdgeFlag GL_TRUE"); }
    for (int i = 0; i < patch.triangle_count; ++i) {
        const int order[3] = {0, how.mirrored ? 1 : 2, how.mirrored ? 2 : 1};
        for (int k = 0; k < 3; ++k) {
            const int vertex = patch.triangles[i][order[k]];
            if (how.hide_diagonals && k == 1) { out.push_back("glEdgeFlag GL_FALSE"); }
            if (how.hide_diagonals && k == 2) { out.push_back("glEdgeFlag GL_TRUE"); }
            if (!extras.empty()) { append(out, extras[static_cast<size_t>(vertex)]); }
            out.push_back(gl_normal(patch.directions[vertex]));
            out.push_back(gl_vertex(patch.places[vertex]));
        }
    }
    out.push_back("glEnd");
    if (how.flag_behind) { out.push_back("glEdgeFlag GL_TRUE"); }
    return out;
}

inline constexpr unsigned char SCENE_COLOURS[4][4] = {
    {255, 0, 51, 10}, {0, 255, 102, 20}, {153, 0, 255, 30}, {1, 2, 3, 40}};
inline constexpr float SCENE_UVS[4][2] = {{0, 0.25f}, {1, 0}, {0.125f, 1}, {0.75f, 0.5f}};

// The flags of every vertex sent, as OpenGL would apply them: the current flag when the vertex comes.
inline std::vector<bool> edge_flags() {
    std::vector<bool> out;
    bool flag = true;
    for (const std::string& line : lines()) {
        if (line == "glEdgeFlag GL_TRUE") { flag = true; }
        if (line == "glEdgeFlag GL_FALSE") { flag = false; }
        if (line.starts_with("glVertex3f")) { out.push_back(flag); }
    }
    return out;
}

class CurvedDraw : public testing::Test {
protected:
    CurvedDraw() { scene.add_curved_points(); }
    ~CurvedDraw() override { EXPECT_TRUE(recording_gl::errors().empty()); }

    int32_t draw(Triangle* triangle, bool textured = false, bool mirrored = false, bool reflection = false) {
        recording_gl::clear();
        return triangle_draw_curved(&scene.session, scene.model, triangle, textured, mirrored, reflection);
    }

    Scene scene;
};

}  // namespace pelt::curved_scene
