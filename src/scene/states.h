// Run-time records that the Session keeps for the records of its models. Each is found through the slot number that
// its owner holds, and begins with the id that is its key.
#pragma once

#include <cstdint>

#include "foundation/keyed_list.h"
#include "foundation/math3d.h"
#include "scene/ids.h"

namespace pelt {

struct ChildLink;
struct Joint;
struct Model;
struct ModelAnimation;
struct Triangle;

inline constexpr float TIME_NEVER = -1.0f;  // a record that was never evaluated

struct ModelState {
    int32_t id;  // what scripts call the model
    float time;
    Vec3 translate;
    Vec3 scale;
    char rotate[3][8];
    Mat4 matrix;
    Mat4 rotation;
    int32_t triangle_count;
    Mat4 gl_matrix;  // matrix, transposed for OpenGL
    int32_t reserved;
    Model* model;
};

struct JointState {
    int32_t id;
    float time;
    Vec3 position;
    Joint* parent;
    Mat4 local;
    Mat4 world;
    Mat4 inverse_base;
    Mat4 skin;           // rest place to posed place, in model space
    Mat4 normal_matrix;  // world without its translation
    Vec3 offset;
    int32_t slot;  // track in the animation data
};

struct ChildState {
    int32_t id;
    float time;
    Mat4 matrix;
    Mat4 gl_matrix;
    ChildLink* link;
};

struct PointState {
    int32_t id;
    Vec3 position;
    Vec3 normal;
};

// Slots instead of ids, so that a frame never searches. -1 for a reference that the model does not hold.
struct TriangleCache {
    int32_t id;
    int32_t joint_span;
    Triangle* triangle;
    Vec3 face_normal;
    Vec3 face_normal_2;
    int32_t point_slots[4];
    int32_t normal_slots[4];
    int32_t control_slots[8];
};

struct RootModel {
    Model* model;               // owned
    ModelAnimation* animation;  // owned; null for a model loaded by itself
    int32_t row;                // of the scene list, from 1; 0 for a model loaded by itself
};

// A new element under the next id that the list does not hold, whose slot goes to the owner. Null when the list is not
// set up.
template <typename State>
State* add_state(KeyedList* list, int32_t* next_id, int32_t* owner_slot) {
    int32_t id = take_id(next_id);
    while (list_find(list, id) != nullptr) { id = take_id(next_id); }
    State* state = list_add<State>(list, id);
    if (state == nullptr) { return nullptr; }
    *owner_slot = list_index_of(list, id, 0);
    state->id = id;
    return state;
}

}  // namespace pelt
