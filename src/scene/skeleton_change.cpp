// Joints added, renamed, moved, hung elsewhere and taken out of a model that stands. What surprises: the points of a
// joint hold its parent too, as what their other share goes to, so that a joint that gets another parent, or goes,
// changes points as well.
#include "foundation/text.h"
#include "scene/change.h"
#include "scene/ids.h"

namespace pelt {

namespace {

constexpr const char* WORLD = "world";

void change_joint(Model* model, const Joint* joint) { change_element(model, nullptr, CONTENT_JOINTS, joint); }

int32_t parent_rank(const Model* model, const char* parent) {
    return model_find_joint(model, parent) != nullptr ? model_joint_index(model, parent) : -1;
}

// The ranks of parents behind a change of the list or of names.
void number_parents(Model* model) {
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        const int32_t rank = parent_rank(model, joint.parent_name);
        if (rank == joint.parent_index) { continue; }
        change_joint(model, &joint);
        joint.parent_index = rank;
    }
}

// The joints below this one hang on another from now on. In a circle that a file can hold that may be the joint itself.
void hang_joints(Model* model, const char* from, const char* to) {
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        if (!str_equal(joint.parent_name, from)) { continue; }
        change_joint(model, &joint);
        str_copy(str_equal(joint.name, to) ? WORLD : to, joint.parent_name);
    }
}

void store_binding(Point* point, Joint* joint_a, Joint* joint_b, float weight) {
    point->joint_a = joint_a;
    point->joint_b = joint_b;
    point->weight = weight;
}

// What a point that follows the joint follows when its parent, or nothing, takes its place.
void rebind_point(Model* model, Point* point, const Joint* joint, Joint* parent) {
    Joint* grandparent = parent != nullptr ? model_find_joint(model, parent->parent_name) : nullptr;
    if (grandparent == joint) { grandparent = nullptr; }
    Joint* joint_a = point->joint_a == joint ? parent : point->joint_a;
    Joint* joint_b = point->joint_b == joint ? parent : point->joint_b;
    const bool has_rest = joint_a == nullptr && point->weight >= 1.0f;
    if (joint_a == joint_b || has_rest) {
        store_binding(point, joint_a, joint_a != nullptr ? grandparent : nullptr, 1.0f);
    } else if (joint_a == nullptr) {
        // A point without a first joint stands still whatever its share says, so the second takes that place.
        store_binding(point, joint_b, nullptr, 1.0f - point->weight);
    } else {
        store_binding(point, joint_a, joint_b, point->weight);
    }
}

}  // namespace

Joint* model_append_joint(Model* model, const char* name, const Vec3& place, const char* parent) {
    if (model == nullptr || name == nullptr || parent == nullptr) { return nullptr; }
    const int32_t slot = list_end_slot(&model->joints);
    change_model(model);
    change_slot(model, nullptr, CONTENT_JOINTS, slot);
    auto* joint = static_cast<Joint*>(list_add_at(&model->joints, slot, name));
    if (joint == nullptr) { return nullptr; }
    *joint = Joint{};
    joint->id = take_id(&next_joint_id);
    str_copy(name, joint->name);
    str_copy(parent, joint->parent_name);
    joint->position = place;
    joint->state_index = -1;
    joint->parent_index = parent_rank(model, parent);
    number_parents(model);  // a parent of this name may have been missing so far
    return joint;
}

void model_rename_joint(Model* model, Joint* joint, const char* name) {
    if (model == nullptr || joint == nullptr || name == nullptr) { return; }
    char former[sizeof joint->name];
    str_copy(joint->name, former);
    const int32_t slot = list_slot_of_element(&model->joints, joint);
    change_model(model);
    change_joint(model, joint);
    list_remove_slot(&model->joints, slot);
    list_add_at(&model->joints, slot, name);
    str_copy(name, joint->name);
    hang_joints(model, former, name);
    number_parents(model);
}

void model_move_joint(Model* model, Joint* joint, const Vec3& place) {
    if (model == nullptr || joint == nullptr) { return; }
    change_model(model);
    change_joint(model, joint);
    joint->position = place;
}

void model_set_joint_parent(Model* model, Joint* joint, const char* parent) {
    if (model == nullptr || joint == nullptr || parent == nullptr) { return; }
    const Joint* former = model_find_joint(model, joint->parent_name);
    Joint* next = model_find_joint(model, parent);
    change_model(model);
    change_joint(model, joint);
    str_copy(parent, joint->parent_name);
    joint->parent_index = parent_rank(model, parent);
    for (Point& point : list_elements<Point>(model->points)) {
        if (point.joint_a != joint || point.joint_b != former) { continue; }
        change_point(model, &point);
        point.joint_b = next;
    }
}

void model_remove_joint(Model* model, Joint* joint) {
    if (model == nullptr || joint == nullptr) { return; }
    Joint* parent = model_find_joint(model, joint->parent_name);
    change_model(model);
    for (Point& point : list_elements<Point>(model->points)) {
        if (point.joint_a != joint && point.joint_b != joint) { continue; }
        change_point(model, &point);
        rebind_point(model, &point, joint, parent);
    }
    const auto blends = list_elements<BlendWeight>(model->blends);
    for (auto blend = blends.begin(); blend != blends.end(); ++blend) {
        if (blend->joint_a != joint && blend->joint_b != joint) { continue; }
        change_slot(model, nullptr, CONTENT_BLENDS, blend.slot());
        list_remove_slot(&model->blends, blend.slot());
    }
    char name[sizeof joint->name];
    char above[sizeof joint->parent_name];
    str_copy(joint->name, name);
    str_copy(joint->parent_name, above);
    change_joint(model, joint);
    list_remove_slot(&model->joints, list_slot_of_element(&model->joints, joint));
    hang_joints(model, name, above);
    number_parents(model);
}

void model_bind_point(Model* model, Point* point, Joint* joint_a, Joint* joint_b, float weight) {
    if (model == nullptr || point == nullptr) { return; }
    change_model(model);
    change_point(model, point);
    store_binding(point, joint_a, joint_b, weight);
}

}  // namespace pelt
