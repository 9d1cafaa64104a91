// What a model hangs together by: joints, blend groups, and links to child models.
#pragma once

#include <concepts>
#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

struct Model;
struct Point;

struct Joint {
    int32_t id;
    char name[128];
    char parent_name[128];  // a joint's name, or "world"
    Vec3 position;
    int32_t parent_index;  // rank of the parent, -1 for none; set by the reader when the whole file is read
    int32_t point_count;
    int32_t state_index;  // slot in Session::joint_states, -1 for none
};

struct BlendWeight {
    int32_t point_count;
    Joint* joint_a;
    Joint* joint_b;
};

struct ChildLink {
    int32_t id;
    char name[128];  // model file, without directory and extension
    Model* model;    // null until it is loaded
    Vec3 position;
    Vec3 scale;
    char rotate[3][8];
    int32_t state_index;  // slot in Session::child_states, -1 for none
    int32_t borrowed;     // 1: the model is owned by its own root and is not released with this link
};

// 1, or 0 with a load error (name taken, own parent). A parent that does not exist yet is no error.
int model_add_joint(Model* model, const char* name, int32_t x, int32_t y, int32_t z, const char* parent,
                    int32_t point_count);
const Joint* model_find_joint(const Model* model, const char* name);  // null for "world" and unknown names
template <std::same_as<Model> Owner>
Joint* model_find_joint(Owner* model, const char* name) {
    return const_cast<Joint*>(model_find_joint(static_cast<const Model*>(model), name));
}
int32_t model_joint_index(const Model* model, const char* name);  // rank, -1 when absent
void joint_gain_point(Joint* joint);  // counts one point more; the highest count, which a file may state, stays
BlendWeight* model_add_blend(Model* model, const char* joint_a, const char* joint_b, int32_t count);

// Changes of a skeleton that stands. They look at nothing: names are such as the file can hold and no two joints share
// one, parents go in no circle. The points, joints and blend groups that a change concerns follow.

// A joint behind all others, without points; null with nothing done for a null argument.
Joint* model_append_joint(Model* model, const char* name, const Vec3& place, const char* parent);
void model_rename_joint(Model* model, Joint* joint, const char* name);
void model_move_joint(Model* model, Joint* joint, const Vec3& place);
// Points that were shared with the parent are shared with the new one.
void model_set_joint_parent(Model* model, Joint* joint, const char* parent);
// Its points and the joints below it go to its parent; without one its points keep their share of the other joint that
// they have, and stand still otherwise. Blend groups of it go.
void model_remove_joint(Model* model, Joint* joint);
// A point of the model that follows two joints by their shares; null for one that stands still.
void model_bind_point(Model* model, Point* point, Joint* joint_a, Joint* joint_b, float weight);

// The new link, null for a null name. The rotation texts are cut to 7 characters; null is an empty text.
ChildLink* model_add_child(Model* model, Model* child, const char* name, float x, float y, float z, float scale_x,
                           float scale_y, float scale_z, const char* rotate_x, const char* rotate_y,
                           const char* rotate_z);
void model_rename_child(Model* model, ChildLink* link, const char* name);  // its line names the file in other words
// A link like the other one, under a new id and without a run-time record, behind all others.
ChildLink* model_append_child(Model* model, const ChildLink& like);
ChildLink* model_find_child(Model* model, const char* name);      // of this model only; load error when absent
int32_t model_child_index(const Model* model, const char* name);  // depth-first number below the model, or -1

// Where the file placed a child in its parent: scaled, then turned, then moved. Of a bad rotation text and those behind
// it nothing is turned.
Mat4 child_placement(const ChildLink* link);

}  // namespace pelt
