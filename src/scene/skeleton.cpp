// Joints, blend groups and child links. What surprises: "world" is no joint even if one of that name was added, and
// a joint's parent index is its own rank until the reader has seen the whole file and corrects it.
#include "scene/skeleton.h"

#include "foundation/load_error.h"
#include "foundation/text.h"
#include "scene/change.h"
#include "scene/ids.h"

namespace pelt {

int32_t next_child_id = 1;
int32_t next_joint_id = 1;
int32_t next_blend_id = 1;

namespace {

constexpr const char* WORLD = "world";

// Counts links depth first into *number; true when the one with this name was met.
bool count_to_child(const Model* model, const char* name, int32_t* number) {
    if (model == nullptr) { return false; }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (str_equal(link.name, name)) { return true; }
        ++*number;
        if (count_to_child(link.model, name, number)) { return true; }
    }
    return false;
}

}  // namespace

int model_add_joint(Model* model, const char* name, int32_t x, int32_t y, int32_t z, const char* parent,
                    int32_t point_count) {
    if (model == nullptr || name == nullptr) { return 0; }
    if (model_find_joint(model, name) != nullptr) {
        load_error_set("duplicate joint name not allowed");
        return 0;
    }
    if (str_equal(name, parent)) {
        load_error_set("Bad joint parent");
        return 0;
    }
    // Intended: a second joint called "world" is not met above and is written over the first.
    change_model(model);
    change_key(model, nullptr, CONTENT_JOINTS, name);
    auto* joint = list_add<Joint>(&model->joints, name);
    if (joint == nullptr) { return 0; }
    str_copy(name, joint->name);
    str_copy(parent, joint->parent_name);
    joint->position = Vec3{static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
    joint->point_count = point_count;
    joint->state_index = -1;
    const bool on_world = parent == nullptr || str_equal(parent, WORLD);
    joint->parent_index = on_world ? -1 : list_index_of(&model->joints, name, 1);
    joint->id = take_id(&next_joint_id);
    return 1;
}

void joint_gain_point(Joint* joint) {
    if (joint->point_count < INT32_MAX) { ++joint->point_count; }
}

const Joint* model_find_joint(const Model* model, const char* name) {
    if (model == nullptr || name == nullptr || str_equal(name, WORLD)) { return nullptr; }
    return list_find<Joint>(&model->joints, name);
}

int32_t model_joint_index(const Model* model, const char* name) {
    return model != nullptr && name != nullptr ? list_index_of(&model->joints, name, 1) : -1;
}

BlendWeight* model_add_blend(Model* model, const char* joint_a, const char* joint_b, int32_t count) {
    if (model == nullptr || joint_a == nullptr || joint_b == nullptr || count <= 0) { return nullptr; }
    const int32_t id = take_id(&next_blend_id);
    change_model(model);
    change_key(model, nullptr, CONTENT_BLENDS, id);
    auto* blend = list_add<BlendWeight>(&model->blends, id);
    if (blend == nullptr) { return nullptr; }
    blend->point_count = count;
    blend->joint_a = model_find_joint(model, joint_a);
    blend->joint_b = model_find_joint(model, joint_b);
    return blend;
}

ChildLink* model_add_child(Model* model, Model* child, const char* name, float x, float y, float z, float scale_x,
                           float scale_y, float scale_z, const char* rotate_x, const char* rotate_y,
                           const char* rotate_z) {
    if (model == nullptr || name == nullptr) { return nullptr; }
    const int32_t id = take_id(&next_child_id);
    change_model(model);
    change_key(model, nullptr, CONTENT_CHILDREN, id);
    auto* link = list_add<ChildLink>(&model->children, id);
    if (link == nullptr) { return nullptr; }
    *link = ChildLink{};
    link->id = id;
    str_copy(name, link->name);
    link->model = child;
    link->position = Vec3{x, y, z};
    link->scale = Vec3{scale_x, scale_y, scale_z};
    str_copy(rotate_x, link->rotate[0]);
    str_copy(rotate_y, link->rotate[1]);
    str_copy(rotate_z, link->rotate[2]);
    link->state_index = -1;
    if (model->watched != 0) { change_watch(child); }
    return link;
}

void model_rename_child(Model* model, ChildLink* link, const char* name) {
    change_model(model);
    change_element(model, nullptr, CONTENT_CHILDREN, link);
    str_copy(name, link->name);
}

ChildLink* model_append_child(Model* model, const ChildLink& like) {
    if (model == nullptr) { return nullptr; }
    const int32_t slot = list_end_slot(&model->children);
    const int32_t id = take_id(&next_child_id);
    change_model(model);
    change_slot(model, nullptr, CONTENT_CHILDREN, slot);
    auto* link = static_cast<ChildLink*>(list_add_at(&model->children, slot, id));
    if (link == nullptr) { return nullptr; }
    *link = like;
    link->id = id;
    link->state_index = -1;
    if (model->watched != 0 && !link->borrowed) { change_watch(link->model); }
    return link;
}

ChildLink* model_find_child(Model* model, const char* name) {
    if (model == nullptr || name == nullptr) { return nullptr; }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (str_equal(link.name, name)) { return &link; }
    }
    load_error_set("child does not exist");
    return nullptr;
}

Mat4 child_placement(const ChildLink* link) {
    Mat4 matrix, turn;
    mat_identity(&matrix);
    mat_translate(&matrix, link->position.x, link->position.y, link->position.z);
    mat_rotate_text(&turn, link->rotate[0], link->rotate[1], link->rotate[2]);  // as far as it got: intended
    mat_multiply(&turn, &matrix, &matrix);
    mat_scale(&matrix, link->scale.x, link->scale.y, link->scale.z);
    return matrix;
}

int32_t model_child_index(const Model* model, const char* name) {
    int32_t number = 0;
    return name != nullptr && count_to_child(model, name, &number) ? number : -1;
}

}  // namespace pelt
