// Small models for the tests of editing: built by hand, read back as plain numbers, and written out whole as a text, so
// that two models can be compared and a refusal can be shown to have changed nothing.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "scene/model.h"

namespace pelt::edit_model {

struct Release {
    void operator()(Model* model) const { model_release(model); }
};
using Owned = std::unique_ptr<Model, Release>;
using Ids = std::vector<int>;

inline Owned empty_model(const char* name = "model") {
    Owned model(model_create("", nullptr));
    std::snprintf(model->name, sizeof model->name, "%s", name);
    return model;
}

inline Point* point_of(Model* model, int32_t id) { return list_find<Point>(&model->points, id); }

// A point with a place that need not be whole, as only edits make it.
inline Point* put_point(Model* model, int32_t id, Vec3 place, Vec3 normal = {0, 0, 1}, float weight = 1.0f) {
    model_set_point(model, id, 0, 0, 0, weight);
    Point* point = point_of(model, id);
    point->position = place;
    point->normal = normal;
    return point;
}

// Points with the ids 1, 2, 3 and so on.
inline void put_points(Model* model, std::initializer_list<Vec3> places) {
    int32_t id = 0;
    for (const Vec3& place : places) { put_point(model, ++id, place); }
}

inline Layer* layer_of(Model* model, const char* name) { return list_find<Layer>(&model->layers, name); }

inline Layer* put_layer(Model* model, const char* name = "body", int mirror_axis = 0) {
    EXPECT_EQ(model_add_layer(model, name, 10, 20, 30, 1, mirror_axis != 0, mirror_axis != 0 ? mirror_axis : 1), 1);
    return layer_of(model, name);
}

inline Triangle* last_triangle(Layer* layer) {
    Triangle* last = nullptr;
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) { last = &triangle; }
    return last;
}

// Three or four corners. Normals are those of the corners where none are given; controls are the ring of the corners.
inline Triangle* put_triangle(Model* model, const char* layer, Ids points, Ids normals = {}, int curve_type = 0) {
    const bool quad = points.size() == 4;
    const Ids ring = quad ? Ids{points[0], points[1], points[1], points[3], points[3], points[2], points[2], points[0]}
                          : Ids{points[0], points[1], points[1], points[2], points[2], points[0]};
    points.resize(4);
    EXPECT_EQ(model_add_triangle(model, layer, quad, points.data(), normals.empty() ? nullptr : normals.data(),
                                 ring.data(), curve_type),
              1);
    return last_triangle(layer_of(model, layer));
}

inline void put_polygon(Model* model, const char* layer, Ids points, Ids normals = {}) {
    const int count = static_cast<int>(points.size());
    points.reserve(1);  // an empty list is no null
    EXPECT_EQ(model_add_polygon(model, layer, count, points.data(), normals.empty() ? nullptr : normals.data()), 1);
}

inline Joint* put_joint(Model* model, const char* name, const char* parent = "world") {
    EXPECT_EQ(model_add_joint(model, name, 0, 0, 0, parent, 0), 1);
    Joint* joint = model_find_joint(model, name);
    joint->parent_index = model_joint_index(model, parent);
    return joint;
}

// Corners of the triangles and quads of a layer, in list order.
inline std::vector<Ids> triangles_of(Model* model, const char* layer) {
    std::vector<Ids> out;
    for (const Triangle& t : list_elements<Triangle>(layer_of(model, layer)->triangles)) {
        out.emplace_back(t.points, t.points + triangle_corners(&t));
    }
    return out;
}

inline std::vector<Ids> triangle_normals_of(Model* model, const char* layer) {
    std::vector<Ids> out;
    for (const Triangle& t : list_elements<Triangle>(layer_of(model, layer)->triangles)) {
        out.emplace_back(t.normals, t.normals + triangle_corners(&t));
    }
    return out;
}

struct Strip {
    Ids points;
    Ids normals;
    bool operator==(const Strip&) const = default;
};

inline std::vector<Strip> strips_of(Model* model, const char* layer) {
    std::vector<Strip> out;
    for (const Polygon& polygon : list_elements<Polygon>(layer_of(model, layer)->polygons)) {
        out.emplace_back();
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            out.back().points.push_back(vertex.point);
            out.back().normals.push_back(vertex.normal);
        }
        EXPECT_EQ(static_cast<size_t>(polygon.vertex_count), out.back().points.size());
    }
    return out;
}

inline std::vector<std::string> layer_names(const Model* model) {
    std::vector<std::string> out;
    for (const Layer& layer : list_elements<Layer>(model->layers)) { out.emplace_back(layer.name); }
    return out;
}

inline Ids point_ids(const Model* model) {
    Ids out;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) { out.push_back(point.int_key()); }
    return out;
}

inline void expect_vector(const Vec3& actual, const Vec3& expected, float tolerance = 0.0f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

inline std::string error_text() { return load_error_get() != nullptr ? load_error_get() : "(none)"; }

// ---- the whole model as a text ----

inline void write_number(std::string& out, double value) {
    char text[40];
    std::snprintf(text, sizeof text, " %a", std::isnan(value) ? 0.0 : value);
    out += std::isnan(value) ? " nan" : text;
}

inline void write_numbers(std::string& out, std::initializer_list<double> values) {
    for (const double value : values) { write_number(out, value); }
}

inline void write_vector(std::string& out, const Vec3& v) { write_numbers(out, {v.x, v.y, v.z}); }

inline std::string triangle_text(const Triangle& t) {
    std::string out = t.quad ? "quad" : "triangle";
    out += " type " + std::to_string(t.curve_type) + ":";
    for (const int16_t id : t.points) { out += " " + std::to_string(id); }
    out += " /";
    for (const int16_t id : t.normals) { out += " " + std::to_string(id); }
    out += " /";
    for (const int16_t id : t.controls) { out += " " + std::to_string(id); }
    out += " /";
    for (const auto& uv : t.uvs) { write_numbers(out, {uv[0], uv[1]}); }
    return out + "\n";
}

inline std::string layer_text(const Layer& layer) {
    std::string out = std::string("layer ") + layer.name;
    write_numbers(out, {double(layer.colour[0]), double(layer.colour[1]), double(layer.colour[2]),
                        double(layer.singlesided), layer.transparency, double(layer.mirror), double(layer.mirror_axis),
                        double(layer.invisible), double(layer.image_axis_u), double(layer.image_axis_v)});
    out += "\n";
    for (const Triangle& t : list_elements<Triangle>(layer.triangles)) { out += triangle_text(t); }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        out += "polygon";
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            out += " " + std::to_string(vertex.point) + "/" + std::to_string(vertex.normal);
        }
        out += "\n";
    }
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        out += "uvee " + std::to_string(uvee.int_key()) + " " + std::to_string(uvee->point);
        write_numbers(out, {uvee->u, uvee->v});
        out += "\n";
    }
    for (const LayerImage& image : list_elements<LayerImage>(layer.images)) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            out += "image " + std::string(image.names[slot]) + " " + std::to_string(image.image_id[slot]) + "\n";
        }
    }
    return out;
}

inline std::string model_text(const Model* model) {
    std::string out =
        "gouraud " + std::to_string(model->has_gouraud) + " normals " + std::to_string(model->has_normals) + " box";
    write_vector(out, model->bounds_min);
    write_vector(out, model->bounds_max);
    out += "\n";
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        out += "point " + std::to_string(point.slot()) + " " + std::to_string(point.int_key());
        write_vector(out, point->position);
        write_vector(out, point->normal);
        write_number(out, point->weight);
        for (const unsigned char channel : point->gouraud) { out += " " + std::to_string(channel); }
        out += point->joint_a != nullptr ? std::string(" ") + point->joint_a->name + "\n" : "\n";
    }
    for (const Joint& joint : list_elements<Joint>(model->joints)) {
        out += std::string("joint ") + joint.name + " " + std::to_string(joint.point_count) + "\n";
    }
    for (const Layer& layer : list_elements<Layer>(model->layers)) { out += layer_text(layer); }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        out += std::string("child ") + link.name + "\n";
        if (link.model != nullptr) { out += model_text(link.model); }
    }
    return out;
}

// Every test ends by looking for images that were left behind.
class EditTest : public testing::Test {
protected:
    EditTest() { load_error_set(nullptr); }
    ~EditTest() override { EXPECT_EQ(list_count(image_registry()), 0) << "an image was left behind"; }
};

// ---- random models ----

// Points at few places, so that many coincide or mirror each other, some of them fractions, negative zeros or no
// numbers; with holes in their list; in layers with triangles, quads and polygons, some with normals from elsewhere.
class RandomModel {
public:
    explicit RandomModel(unsigned seed) : random_(seed) {}

    Owned make(int point_count, int layer_count) {
        Owned model = empty_model();
        for (int32_t id = 1; id <= point_count; ++id) {
            put_point(model.get(), id, {place(), place(), place()}, {direction(), direction(), direction()});
        }
        for (int i = 0; i < point_count / 8; ++i) { model_remove_point(model.get(), pick(1, point_count)); }
        ids_ = point_ids(model.get());
        for (int i = 0; i < layer_count; ++i) {
            const std::string name = "layer" + std::to_string(i);
            put_layer(model.get(), name.c_str(), pick(0, 6));
            fill(model.get(), name.c_str());
        }
        return model;
    }

private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

    float place() {
        switch (pick(0, 19)) {
            case 0: return -0.0f;
            case 1: return 1.5f;
            case 2: return -1.5f;
            case 3: return pick(0, 4) == 0 ? std::nanf("") : 2.25f;
            default: return static_cast<float>(pick(-3, 3));
        }
    }

    float direction() {
        static constexpr float VALUES[] = {0.0f, -0.0f, 1.0f, -1.0f, 0.6f, -0.6f, 0.8f, -0.8f};
        return pick(0, 39) == 0 ? std::nanf("") : VALUES[pick(0, 7)];
    }

    int id() { return ids_[static_cast<size_t>(pick(0, static_cast<int>(ids_.size()) - 1))]; }

    Ids some(int count) {
        Ids out;
        for (int i = 0; i < count; ++i) { out.push_back(id()); }
        return out;
    }

    void fill(Model* model, const char* layer) {
        for (int i = pick(0, 20); i > 0; --i) {
            const int corners = pick(3, 4);
            put_triangle(model, layer, some(corners), pick(0, 1) ? some(4) : Ids{}, pick(0, 5) == 0 ? 2 : 0);
        }
        for (int i = pick(0, 4); i > 0; --i) {
            const int count = pick(1, 9);
            put_polygon(model, layer, some(count), pick(0, 1) ? some(count) : Ids{});
        }
    }

    std::mt19937 random_;
    Ids ids_;
};

}  // namespace pelt::edit_model
