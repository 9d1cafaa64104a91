// Points of a model: setting, finding, colours, and the box around them. What surprises: a point is created by its
// first mention, also by a normal alone, and is then looked for in the children too.
#include "scene/point.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/load_error.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr float WEIGHT_MIN = -1.0f;
constexpr float WEIGHT_MAX = 2.0f;
constexpr unsigned char DEFAULT_CHANNEL = 127;
constexpr float NO_COLOUR = 255.0f;  // every channel of an absent point

// The point, about to be changed.
Point* find_or_create_point(Model* model, int32_t id) {
    if (model == nullptr || id < 1) { return nullptr; }
    change_model(model);
    change_key(model, nullptr, CONTENT_POINTS, id);
    Point* point = list_find<Point>(&model->points, id);
    if (point != nullptr) { return point; }
    point = list_add<Point>(&model->points, id);
    if (point != nullptr) {
        // Intended: weight and joint_b have no default and stay as the slot holds them, zero in a fresh one.
        point->position = Vec3{0.0f, 0.0f, 0.0f};
        point->gouraud[0] = point->gouraud[1] = point->gouraud[2] = DEFAULT_CHANNEL;
        point->gouraud[3] = 0;
        point->normal = Vec3{0.0f, 0.0f, 1.0f};
        point->joint_a = nullptr;
        point->state_index = -1;
    }
    return point;
}

float clamp_weight(float weight) {
    return weight > WEIGHT_MAX ? WEIGHT_MAX : weight < WEIGHT_MIN ? WEIGHT_MIN : weight;
}

unsigned char low_byte(int value) { return static_cast<unsigned char>(value & 0xFF); }

bool same_place(const Vec3& a, float x, float y, float z) { return a.x == x && a.y == y && a.z == z; }

}  // namespace

int model_set_point(Model* model, int32_t id, int32_t x, int32_t y, int32_t z, float weight) {
    Point* point = find_or_create_point(model, id);
    if (point == nullptr) { return 0; }
    point->position = Vec3{static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
    point->weight = clamp_weight(weight);
    model_grow_bounds(model, point->position.x, point->position.y, point->position.z);
    return 1;
}

int model_set_normal(Model* model, int32_t id, float x, float y, float z) {
    Point* point = find_or_create_point(model, id);
    if (point == nullptr) { return 0; }
    point->normal = Vec3{x, y, z};
    vec_normalise(&point->normal);
    model->has_normals = 1;
    return 1;
}

int model_set_point_joints(Model* model, int32_t id, const char* joint_a, const char* joint_b) {
    Point* point = find_or_create_point(model, id);
    if (point == nullptr) { return 0; }
    point->joint_a = model_find_joint(model, joint_a);
    point->joint_b = model_find_joint(model, joint_b);
    return 1;
}

int model_set_gouraud(Model* model, int32_t id, int red, int green, int blue, int transparency) {
    if (model == nullptr || id < 1) { return 0; }
    Model* owner = nullptr;
    Point* point = model_find_owned_point(model, id, &owner);
    if (point == nullptr) {
        load_error_set("gouraud colour defined for non existant point");
        return 0;
    }
    // The flag is this model's, the colour that of whoever has the point.
    change_fields(model);
    change_model(owner);
    change_point(owner, point);
    point->gouraud[0] = low_byte(red);
    point->gouraud[1] = low_byte(green);
    point->gouraud[2] = low_byte(blue);
    point->gouraud[3] = low_byte(transparency);
    model->has_gouraud = 1;
    return 1;
}

const Point* model_find_point(const Model* model, int32_t id) {
    if (model == nullptr) { return nullptr; }
    if (const Point* point = list_find<Point>(&model->points, id)) { return point; }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (const Point* point = model_find_point(link.model, id)) { return point; }
    }
    return nullptr;
}

Point* model_find_owned_point(Model* model, int32_t id, Model** owner) {
    if (model == nullptr) { return nullptr; }
    if (auto* point = list_find<Point>(&model->points, id)) {
        *owner = model;
        return point;
    }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (Point* point = model_find_owned_point(link.model, id, owner)) { return point; }
    }
    return nullptr;
}

const Vec3* model_point_position(const Model* model, int32_t id) {
    static Vec3 position;
    const Point* point = model_find_point(model, id);
    if (point == nullptr) {
        load_error_set("point does not exist");
        return nullptr;
    }
    position = point->position;
    return &position;
}

const Vec3* model_find_normal(const Model* model, int32_t id) {
    static Vec3 normal;
    const Point* point = model_find_point(model, id);
    if (point == nullptr) {
        load_error_set("normal does not exist");
        return nullptr;
    }
    normal = point->normal;
    return &normal;
}

const unsigned char* model_point_colour(const Model* model, int32_t id) {
    static unsigned char colour[4];
    const Point* point = model_find_point(model, id);
    if (point == nullptr) { return nullptr; }
    // Intended: green and blue change places.
    colour[0] = point->gouraud[0];
    colour[1] = point->gouraud[2];
    colour[2] = point->gouraud[1];
    colour[3] = point->gouraud[3];
    return colour;
}

void point_get_position(Vec3* out, const Point* point) {
    if (out != nullptr) { *out = point != nullptr ? point->position : Vec3{}; }
}

void point_get_normal(Vec3* out, const Point* point) {
    if (out != nullptr) { *out = point != nullptr ? point->normal : Vec3{}; }
}

void point_get_colour(float out[4], const Point* point) {
    if (out == nullptr) { return; }
    for (int channel = 0; channel < 4; ++channel) {
        out[channel] = point != nullptr ? static_cast<float>(point->gouraud[channel]) : NO_COLOUR;
    }
}

int32_t model_point_at(const Model* model, float x, float y, float z) {
    if (model == nullptr) { return -1; }
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (same_place(point->position, x, y, z)) { return point.int_key(); }
    }
    return -1;
}

int32_t model_point_with_normal(const Model* model, float x, float y, float z) {
    if (model == nullptr) { return -1; }
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (same_place(point->normal, x, y, z)) { return point.int_key(); }
    }
    return -1;
}

namespace {

float rounded(float value) {
    constexpr float MOST = 2147483648.0f;
    return std::fabs(value) < MOST ? std::round(value) : value;  // a non-number stays too
}

Vec3 rounded(const Vec3& place) { return {rounded(place.x), rounded(place.y), rounded(place.z)}; }

float largest_shift(const Vec3& a, const Vec3& b) {
    float largest = 0.0f;
    for (const float shift : {a.x - b.x, a.y - b.y, a.z - b.z}) {
        if (std::fabs(shift) > largest) { largest = std::fabs(shift); }
    }
    return largest;
}

template <typename Element>
float round_all(Model* model, KeyedList& list, ContentList content, bool* told) {
    float largest = 0.0f;
    for (Element& element : list_elements<Element>(list)) {
        const Vec3 place = rounded(element.position);
        const float shift = largest_shift(place, element.position);
        if (shift == 0.0f) { continue; }
        if (!std::exchange(*told, true)) { change_model(model); }
        change_element(model, nullptr, content, &element);
        element.position = place;
        largest = std::max(largest, shift);
    }
    return largest;
}

}  // namespace

float model_round_places(Model* model) {
    if (model == nullptr) { return 0.0f; }
    bool told = false;
    return std::max(round_all<Point>(model, model->points, CONTENT_POINTS, &told),
                    round_all<Joint>(model, model->joints, CONTENT_JOINTS, &told));
}

int32_t model_highest_point(const Model* model) {
    int32_t highest = -1;
    if (model == nullptr) { return highest; }
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        highest = point.int_key() > highest ? point.int_key() : highest;
    }
    return highest;
}

int model_remove_point(Model* model, int32_t id) {
    if (model == nullptr || id < 1 || list_find<Point>(&model->points, id) == nullptr) { return 0; }
    change_model(model);
    change_key(model, nullptr, CONTENT_POINTS, id);
    return list_remove(&model->points, id);
}

void model_grow_bounds(Model* model, float x, float y, float z) {
    if (model == nullptr) { return; }
    change_fields(model);
    // Intended: with one point the box is reset by every call, also by that of a mirrored copy.
    if (list_count(&model->points) == 1) {
        model->bounds_min = model->bounds_max = Vec3{x, y, z};
        return;
    }
    box_take_in(Vec3{x, y, z}, &model->bounds_min, &model->bounds_max);
}

}  // namespace pelt
