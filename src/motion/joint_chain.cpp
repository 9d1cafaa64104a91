// Joints: their run-time records, and their evaluation at a time, parents first. Nothing recurses along data that a
// file supplies: a joint climbs to the top of its chain, which is evaluated downwards. A circle of joints is cut when
// the records are made, so that the parents of JointStates never form one.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "formats/animation.h"
#include "motion/animation_sample.h"
#include "motion/transform_state.h"

namespace pelt {

namespace {

// Everything of a joint's record that does not depend on its parent.
JointState* new_joint_state(Session* session, const Model* model, Joint* joint) {
    JointState* state = add_state<JointState>(&session->joint_states, &next_joint_state_id, &joint->state_index);
    if (state == nullptr) { return nullptr; }
    state->time = TIME_NEVER;
    state->parent = nullptr;
    // A joint whose name is too long for a key has no rank and lands on the model's own rotate track; intended.
    state->slot = model_joint_index(model, joint->name) + ANIMATION_FIRST_JOINT_SLOT;
    mat_identity(&state->local);
    mat_identity(&state->world);
    mat_identity(&state->skin);
    mat_identity(&state->normal_matrix);
    Mat4 rest;
    mat_identity(&rest);
    mat_translate(&rest, joint->position.x, joint->position.y, joint->position.z);
    mat_inverse(&rest, &state->inverse_base);
    state->offset = joint->position;
    state->position = joint->position;
    return state;
}

Joint* joint_parent(Model* model, const Joint* joint) {
    return joint->parent_name[0] == '\0' ? nullptr : model_find_joint(model, joint->parent_name);
}

// The joint of a circle whose link is left out: the one that hangs on the member standing first in the model's list,
// so that the result does not depend on where a walk came into the circle. All members have their records.
Joint* circle_closer(const Session* session, Model* model, Joint* member) {
    Joint* closer = member;
    int32_t first_slot = std::numeric_limits<int32_t>::max();
    Joint* joint = member;
    do {
        Joint* parent = joint_parent(model, joint);
        const int32_t slot = list_at<JointState>(&session->joint_states, parent->state_index, 0)->slot;
        if (slot < first_slot) {
            first_slot = slot;
            closer = joint;
        }
        joint = parent;
    } while (joint != member);
    return closer;
}

void link_joint_state(Session* session, Joint* joint, Joint* parent) {
    JointState* state = list_at<JointState>(&session->joint_states, joint->state_index, 0);
    if (state == nullptr) { return; }
    state->parent = parent;
    state->offset = parent == nullptr ? joint->position : vec_subtract(joint->position, parent->position);
}

// Makes the records of a joint and of all its ancestors that have none, so that each link is followed once in the life
// of a record and a circle shows itself as a record made in this very walk.
void make_joint_states(Session* session, Model* model, Joint* joint) {
    std::vector<const Joint*> made;
    while (new_joint_state(session, model, joint) != nullptr) {
        made.push_back(joint);
        Joint* parent = joint_parent(model, joint);
        link_joint_state(session, joint, parent);
        if (parent == nullptr) { return; }
        if (parent->state_index != -1) {
            const bool circle = std::find(made.begin(), made.end(), parent) != made.end();
            if (circle) { link_joint_state(session, circle_closer(session, model, parent), nullptr); }
            return;
        }
        joint = parent;
    }
}

// Equal times, for which non-numbers are equal too: otherwise nothing would ever be current at one.
bool same_time(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// Evaluates one joint whose parent's record, if it has one, stands at this time already.
void evaluate_joint(float time, ModelAnimation* animation, const Joint* joint, JointState* state,
                    const JointState* parent) {
    state->time = time;
    mat_identity(&state->local);
    // A joint added after the animation was read would otherwise take the track of a child link.
    if (animation != nullptr && state->slot < animation->joint_count + ANIMATION_FIRST_JOINT_SLOT) {
        animation_sample(time, animation_clip(animation), state->slot, &state->local);
    }
    state->local.m[3] += state->offset.x;
    state->local.m[7] += state->offset.y;
    state->local.m[11] += state->offset.z;
    if (parent != nullptr) {
        mat_multiply(&state->local, &parent->world, &state->world);
    } else {
        mat_copy(&state->local, &state->world);
    }
    mat_multiply(&state->inverse_base, &state->world, &state->skin);
    mat_copy(&state->world, &state->normal_matrix);
    mat_drop_translation(&state->normal_matrix);
    mat_transform_point(&state->skin, &joint->position, &state->position);
}

}  // namespace

JointState* joint_state(Session* session, Model* model, Joint* joint) {
    if (session == nullptr || model == nullptr || joint == nullptr) { return nullptr; }
    if (joint->state_index == -1) { make_joint_states(session, model, joint); }
    return list_at<JointState>(&session->joint_states, joint->state_index, 0);
}

void joints_evaluate(Session* session, float time, Model* model, ModelAnimation* animation) {
    if (session == nullptr || model == nullptr) { return; }
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        joint_evaluate(session, time, model, animation, &joint);
    }
}

void joint_evaluate(Session* session, float time, Model* model, ModelAnimation* animation, Joint* joint) {
    JointState* state = joint_state(session, model, joint);
    if (state == nullptr || same_time(state->time, time)) { return; }
    std::vector<Joint*> stale;  // ancestors to be evaluated, nearest first
    const JointState* parent = nullptr;
    // The bound is for circles that come about when the record of one joint alone is forgotten and made again.
    const size_t longest = static_cast<size_t>(list_count(&model->joints));
    for (Joint* above = state->parent; above != nullptr && stale.size() < longest;) {
        const JointState* known = joint_state(session, model, above);
        if (known == nullptr) { break; }
        if (same_time(known->time, time)) {
            parent = known;
            break;
        }
        stale.push_back(above);
        above = known->parent;
    }
    for (size_t i = stale.size(); i-- > 0;) {
        JointState* ancestor = joint_state(session, model, stale[i]);
        evaluate_joint(time, animation, stale[i], ancestor, parent);
        parent = ancestor;
    }
    evaluate_joint(time, animation, joint, state, parent);
}

}  // namespace pelt
