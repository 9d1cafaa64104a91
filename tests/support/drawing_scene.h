// A scene made by hand and the OpenGL lines expected of it, for tests of what is drawn. Link with the recording OpenGL.
#pragma once

#include <charconv>
#include <cmath>
#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "application/session_lifecycle.h"
#include "motion/transform_state.h"
#include "scene/session.h"
#include "support/recording_gl.h"

namespace drawing_scene {

using Lines = std::vector<std::string>;

// One argument of a line as the recording OpenGL writes it.
inline std::string argument(const char* name) { return name; }
template <typename Number>
    requires(std::integral<Number> || std::floating_point<Number>)
std::string argument(Number number) {
    const double value = static_cast<double>(number);
    if (std::isnan(value)) { return "nan"; }
    if (value == 0.0) { return "0"; }
    char text[64];
    const bool whole = value == std::floor(value) && std::fabs(value) < 1e15;
    const auto end = whole ? std::to_chars(text, text + sizeof text, static_cast<long long>(value))
                           : std::to_chars(text, text + sizeof text, static_cast<float>(number));
    return std::string(text, end.ptr);
}

// The line of one call: gl("glVertex3f", 1, 2.5f, 3).
template <typename... Arguments>
std::string gl(const char* name, Arguments... arguments) {
    std::string line = name;
    ((line += ' ', line += argument(arguments)), ...);
    return line;
}

inline std::string gl_vertex(const pelt::Vec3& v) { return gl("glVertex3f", v.x, v.y, v.z); }
inline std::string gl_normal(const pelt::Vec3& v) { return gl("glNormal3f", v.x, v.y, v.z); }

inline void append(Lines& to, const Lines& more) { to.insert(to.end(), more.begin(), more.end()); }

inline pelt::Vec3 unit(float x, float y, float z) {
    const float length = std::sqrt(x * x + y * y + z * z);
    return {x / length, y / length, z / length};
}

// A session with one model that has one layer, "body". Starts with a fresh recording.
struct Scene {
    pelt::Session session{};
    pelt::Model* model = nullptr;
    pelt::Layer* layer = nullptr;

    Scene() {
        recording_gl::reset();
        pelt::session_init(&session);
        model = pelt::model_create("scene.mod", nullptr);
        pelt::model_add_layer(model, "body", 127, 127, 127, 0, 0, 0);
        layer = pelt::model_find_layer(model, "body");
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene() {
        recording_gl::set_mode(recording_gl::Mode::record);
        pelt::session_forget_model(&session, model);
        pelt::model_release(model);
        for (pelt::KeyedList* list : {&session.model_states, &session.point_states, &session.triangle_caches,
                                      &session.joint_states, &session.child_states, &session.root_models}) {
            pelt::list_free(list);
        }
    }

    pelt::Point* point(int32_t id) { return pelt::model_find_point(model, id); }

    pelt::Point* add_point(int32_t id, const pelt::Vec3& position, const pelt::Vec3& normal = {0, 0, 1}) {
        pelt::model_set_point(model, id, 0, 0, 0, 1.0f);
        pelt::Point* added = point(id);
        added->position = position;
        added->normal = normal;
        return added;
    }

    // Adds a point state with another position and normal.
    void pose(int32_t id, const pelt::Vec3& position, const pelt::Vec3& normal) {
        pelt::PointState* state = pelt::point_state(&session, point(id));
        state->position = position;
        state->normal = normal;
    }

    // Corners 1 to 4 in strip order, each with a normal of its own; corner normals 11 to 14; control normals 21 to 28.
    void add_curved_points() {
        using pelt::Vec3;
        const Vec3 corners[4] = {{-1, -1, 0.125f}, {1.5f, -1, 0}, {-1, 2, 0.25f}, {1, 1, -0.5f}};
        const Vec3 own[4] = {unit(-1, -1, 1), unit(1, -1, 1), unit(-1, 1, 1), unit(1, 1, 1)};
        const Vec3 named[4] = {unit(-1, -1, 2), unit(1, -1, 3), unit(-1, 1, 2), unit(1, 1, 4)};
        const Vec3 controls[8] = {unit(-1, -0.5f, 2), unit(1, -0.25f, 2), unit(1, 0, 1),  unit(0.125f, 1, 1),
                                  unit(0.5f, 2, 3),   unit(-1, 0.25f, 3), unit(-1, 1, 4), unit(-2, -1, 5)};
        for (int i = 0; i < 4; ++i) {
            add_point(1 + i, corners[i], own[i]);
            add_point(11 + i, {0, 0, 0}, named[i]);
        }
        for (int i = 0; i < 8; ++i) { add_point(21 + i, {0, 0, 0}, controls[i]); }
    }

    // A primitive over those points, with texture coordinates of its own; curve type 0 makes a flat one.
    pelt::Triangle* add_primitive(int quad, int curve_type) {
        const int32_t points[4] = {1, 2, 3, 4};
        const int32_t normals[4] = {11, 12, 13, 14};
        const int32_t controls[8] = {21, 22, 23, 24, 25, 26, 27, 28};
        if (!pelt::model_add_triangle(model, "body", quad, points, normals, controls, curve_type)) { return nullptr; }
        pelt::Triangle* added = nullptr;
        for (pelt::Triangle& triangle : pelt::list_elements<pelt::Triangle>(layer->triangles)) { added = &triangle; }
        const float uvs[4][2] = {{0, 0.25f}, {1, 0}, {0.125f, 1}, {0.75f, 0.5f}};
        for (int i = 0; i < 4; ++i) {
            added->uvs[i][0] = uvs[i][0];
            added->uvs[i][1] = uvs[i][1];
        }
        return added;
    }

    // Gouraud colours for the corners, the fourth byte of each being a transparency.
    void add_colours() {
        const unsigned char colours[4][4] = {{255, 0, 51, 10}, {0, 255, 102, 20}, {153, 0, 255, 30}, {1, 2, 3, 40}};
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) { point(1 + i)->gouraud[j] = colours[i][j]; }
        }
        model->has_gouraud = 1;
    }
};

}  // namespace drawing_scene
