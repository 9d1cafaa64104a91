// Points: everything that belongs to a vertex. A normal has no record of its own, it is named by the id of the point
// that holds it.
#pragma once

#include <concepts>
#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

struct Joint;
struct Model;

// From a byte of a point's colour to an intensity: 255 is full here, unlike in the colour of a layer.
inline constexpr float GOURAUD_SCALE = 0.00392157f;

struct Point {
    Vec3 position;
    float weight;              // share of joint_a, -1.0 to 2.0
    unsigned char gouraud[4];  // red, green, blue, transparency; 255 is full
    Vec3 normal;
    Joint* joint_a;       // null for a point that no joint moves
    Joint* joint_b;       // second joint of a blend, or null
    int32_t state_index;  // slot in Session::point_states, -1 for none
};

// Find or create a point in this model (never in a child); 0 for an id below 1 or a null model.
int model_set_point(Model* model, int32_t id, int32_t x, int32_t y, int32_t z, float weight);
// Stores the vector divided by its length, whatever that is.
int model_set_normal(Model* model, int32_t id, float x, float y, float z);
// Unknown names give null joints.
int model_set_point_joints(Model* model, int32_t id, const char* joint_a, const char* joint_b);
// Finds the point across the children. 0 silently for an id below 1, with a load error for an absent point.
int model_set_gouraud(Model* model, int32_t id, int red, int green, int blue, int transparency);

// The point in the model or, depth first, in its children; null when absent.
const Point* model_find_point(const Model* model, int32_t id);
template <std::same_as<Model> Owner>
Point* model_find_point(Owner* model, int32_t id) {
    return const_cast<Point*>(model_find_point(static_cast<const Model*>(model), id));
}

// The same with the model that holds it: a change of the point is one of that model.
Point* model_find_owned_point(Model* model, int32_t id, Model** owner);

// Pointers to static copies, valid until the next call; null with the load error set when absent.
const Vec3* model_point_position(const Model* model, int32_t id);
const Vec3* model_find_normal(const Model* model, int32_t id);

// Four static bytes in the order red, blue, green, transparency (the middle two change places); null when absent.
const unsigned char* model_point_colour(const Model* model, int32_t id);

// Zeros, and 255.0 four times, for a null point.
void point_get_position(Vec3* out, const Point* point);
void point_get_normal(Vec3* out, const Point* point);
void point_get_colour(float out[4], const Point* point);

// Id of the first point at exactly this place or with exactly this normal, -1 when there is none.
int32_t model_point_at(const Model* model, float x, float y, float z);
int32_t model_point_with_normal(const Model* model, float x, float y, float z);

// Brings every place of points and joints to the nearest whole numbers, as files have them; returns by how much the one
// that moved furthest did along an axis. 0 when there is nothing to do. What is no number or beyond 32 bits stays.
float model_round_places(Model* model);

int32_t model_highest_point(const Model* model);  // -1 without points
int model_remove_point(Model* model, int32_t id);

// Widens the model's box; with a single point in the model the box becomes the place.
void model_grow_bounds(Model* model, float x, float y, float z);

}  // namespace pelt
