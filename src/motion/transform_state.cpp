// The run-time records of everything that moves, and their evaluation at a time: joints, then points, then child links,
// then the placement of the model itself, which may hang on a joint of another model.
//
// What surprises: nothing here recurses along data that a file supplies. Joints and models climb to the top of their
// chain first and are evaluated downwards. A circle of joints is cut when the records are made, so that the parents of
// JointStates never form one; a circle of models is cut while climbing.
#include "motion/transform_state.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "formats/animation.h"
#include "motion/animation_sample.h"
#include "scene/ids.h"

namespace pelt {

namespace {

// A new element under the next id that the list does not hold, whose slot goes to the owner. Null when the list is not
// set up.
template <typename State>
State* new_state(KeyedList* list, int32_t* next_id, int32_t* owner_slot) {
    int32_t id = take_id(next_id);
    while (list_find(list, id) != nullptr) { id = take_id(next_id); }
    State* state = list_add<State>(list, id);
    if (state == nullptr) { return nullptr; }
    *owner_slot = list_index_of(list, id, 0);
    state->id = id;
    return state;
}

template <typename State>
State* existing_state(const KeyedList* list, int32_t slot) {
    return list_at<State>(list, slot, 0);
}

// Everything of a joint's record that does not depend on its parent.
JointState* new_joint_state(Session* session, const Model* model, Joint* joint) {
    JointState* state = new_state<JointState>(&session->joint_states, &next_joint_state_id, &joint->state_index);
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

Joint* joint_parent(const Model* model, const Joint* joint) {
    return joint->parent_name[0] == '\0' ? nullptr : model_find_joint(model, joint->parent_name);
}

// The joint of a circle whose link is left out: the one that hangs on the member standing first in the model's list,
// so that the result does not depend on where a walk came into the circle. All members have their records.
Joint* circle_closer(const Session* session, const Model* model, Joint* member) {
    Joint* closer = member;
    int32_t first_slot = std::numeric_limits<int32_t>::max();
    Joint* joint = member;
    do {
        Joint* parent = joint_parent(model, joint);
        const int32_t slot = existing_state<JointState>(&session->joint_states, parent->state_index)->slot;
        if (slot < first_slot) {
            first_slot = slot;
            closer = joint;
        }
        joint = parent;
    } while (joint != member);
    return closer;
}

void link_joint_state(Session* session, Joint* joint, Joint* parent) {
    JointState* state = existing_state<JointState>(&session->joint_states, joint->state_index);
    if (state == nullptr) { return; }
    state->parent = parent;
    state->offset = parent == nullptr ? joint->position : vec_subtract(joint->position, parent->position);
}

// Makes the records of a joint and of all its ancestors that have none, so that each link is followed once in the life
// of a record and a circle shows itself as a record made in this very walk.
void make_joint_states(Session* session, const Model* model, Joint* joint) {
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
    float* normal = state->normal_matrix.m;
    normal[3] = normal[7] = normal[11] = 0.0f;
    normal[12] = normal[13] = normal[14] = 0.0f;
    normal[15] = 1.0f;
    mat_transform_point(&state->skin, &joint->position, &state->position);
}

void pose_by_one(const Point& point, const JointState* joint, PointState* state) {
    mat_transform_point(&joint->skin, &point.position, &state->position);
    mat_transform_point(&joint->normal_matrix, &point.normal, &state->normal);
}

// The share of a second joint that is absent goes to the place at rest.
void pose_by_two(const Point& point, const JointState* joint_a, const JointState* joint_b, PointState* state) {
    Vec3 position_a, normal_a;
    Vec3 position_b = point.position;
    Vec3 normal_b = point.normal;
    mat_transform_point(&joint_a->skin, &point.position, &position_a);
    mat_transform_point(&joint_a->normal_matrix, &point.normal, &normal_a);
    if (joint_b != nullptr) {
        mat_transform_point(&joint_b->skin, &point.position, &position_b);
        mat_transform_point(&joint_b->normal_matrix, &point.normal, &normal_b);
    }
    const float rest = 1.0f - point.weight;
    state->position = vec_weighted(position_a, point.weight, position_b, rest);
    state->normal = vec_weighted(normal_a, point.weight, normal_b, rest);  // not made unit length again; intended
}

// The record of the joint that was asked for last: points of one joint mostly follow each other.
struct JointLookup {
    Session* session;
    Model* model;
    Joint* joint = nullptr;
    const JointState* state = nullptr;

    const JointState* operator()(Joint* wanted) {
        if (wanted != joint) {
            joint = wanted;
            state = joint_state(session, model, wanted);
        }
        return state;
    }
};

// A walk over the links below one model. The budget bounds it where borrowed links lead back to where they came from.
struct ChildWalk {
    Session* session;
    float time;
    ModelAnimation* animation;
    int32_t budget;
};

int32_t evaluate_link(ChildWalk* walk, ChildLink* link, int32_t number, int depth) {
    --walk->budget;
    ChildState* state = child_state(walk->session, link);
    if (state != nullptr) {
        state->time = walk->time;
        mat_identity(&state->matrix);
        // Links added after the animation was read have no track.
        if (walk->animation != nullptr && number >= 0 && number < walk->animation->child_count) {
            animation_sample(walk->time, animation_clip(walk->animation),
                             walk->animation->joint_count + ANIMATION_FIRST_JOINT_SLOT + number, &state->matrix);
        }
        state->gl_matrix = *mat_to_gl(&state->matrix);
    }
    int32_t next = number < std::numeric_limits<int32_t>::max() ? number + 1 : number;
    if (link->model == nullptr || depth >= MODEL_TREE_DEPTH_LIMIT) { return next; }
    for (ChildLink& below : list_elements<ChildLink>(link->model->children)) {
        if (walk->budget < 1) { break; }
        next = evaluate_link(walk, &below, next, depth + 1);
    }
    return next;
}

struct AnimatedModel {
    Model* model;
    ModelAnimation* animation;
};

using AnimatedModels = std::vector<AnimatedModel>;

bool holds(const AnimatedModels& models, const ModelAnimation* animation) {
    return std::any_of(models.begin(), models.end(),
                       [animation](const AnimatedModel& entry) { return entry.animation == animation; });
}

bool moves(Session* session, float time, Model* model, const ModelAnimation* animation) {
    if (model == nullptr || animation == nullptr || animation->enabled == 0) { return false; }
    const ModelState* state = model_state(session, model);
    // The time in a ModelState never changes, so that only the time of "never" stops here; intended.
    return state != nullptr && state->time != time;
}

// Model space to scene for a model that hangs on nothing: turned about its own origin, then moved.
Mat4 own_placement(float time, ModelAnimation* animation) {
    Mat4 place, turn, result;
    mat_identity(&place);
    mat_identity(&turn);
    AnimationClip* clip = animation_clip(animation);
    animation_sample(time, clip, ANIMATION_TRANSLATE_SLOT, &place);
    animation_sample(time, clip, ANIMATION_ROTATE_SLOT, &turn);
    mat_multiply(&turn, &place, &result);
    return result;
}

// Evaluates one model. What it hangs on stands at this time already, or hangs_on_world says to leave it out.
void evaluate_model(Session* session, float time, const AnimatedModel& entry, bool hangs_on_world) {
    joints_evaluate(session, time, entry.model, entry.animation);
    points_evaluate(session, time, entry.model);
    int32_t number = 0;
    for (ChildLink& link : list_elements<ChildLink>(entry.model->children)) {
        number = child_evaluate(session, time, &link, entry.animation, number);
    }
    Mat4 result = own_placement(time, entry.animation);
    Model* parent = hangs_on_world ? nullptr : entry.animation->parent_model;
    if (parent != nullptr) {
        const JointState* joint = joint_state(session, parent, entry.animation->parent_joint);
        if (joint != nullptr) { mat_multiply(&result, &joint->world, &result); }
        const ModelState* placement = model_state(session, parent);
        if (placement != nullptr) { mat_multiply(&result, &placement->matrix, &result); }
    }
    ModelState* state = model_state(session, entry.model);
    if (state == nullptr) { return; }
    state->matrix = result;
    state->gl_matrix = *mat_to_gl(&result);
}

// Evaluates a model and, before it, those that it hangs on, but for those done already; adds all of them to done.
void evaluate_chain(Session* session, float time, AnimatedModel entry, AnimatedModels* done) {
    AnimatedModels chain;
    bool circle = false;
    while (moves(session, time, entry.model, entry.animation) && !holds(*done, entry.animation)) {
        circle = holds(chain, entry.animation);
        if (circle) { break; }
        chain.push_back(entry);
        entry = {entry.animation->parent_model, entry.animation->parent_animation};
    }
    for (size_t i = chain.size(); i-- > 0;) {
        const bool closes_circle = circle && i + 1 == chain.size();
        evaluate_model(session, time, chain[i], closes_circle);
        done->push_back(chain[i]);
    }
}

}  // namespace

ModelState* model_state(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return nullptr; }
    if (model->state_index != -1) { return existing_state<ModelState>(&session->model_states, model->state_index); }
    ModelState* state = new_state<ModelState>(&session->model_states, &next_model_state_id, &model->state_index);
    if (state == nullptr) { return nullptr; }
    state->time = TIME_NEVER;
    state->translate = {0.0f, 0.0f, 0.0f};
    state->scale = {1.0f, 1.0f, 1.0f};
    std::memset(state->rotate, 0, sizeof(state->rotate));
    for (char* text : {state->rotate[0], state->rotate[1], state->rotate[2]}) { text[0] = '0'; }
    mat_identity(&state->matrix);
    mat_identity(&state->rotation);
    state->gl_matrix = *mat_to_gl(&state->matrix);
    state->reserved = 0;
    state->model = model;
    return state;
}

JointState* joint_state(Session* session, Model* model, Joint* joint) {
    if (session == nullptr || model == nullptr || joint == nullptr) { return nullptr; }
    if (joint->state_index == -1) { make_joint_states(session, model, joint); }
    return existing_state<JointState>(&session->joint_states, joint->state_index);
}

ChildState* child_state(Session* session, ChildLink* link) {
    if (session == nullptr || link == nullptr) { return nullptr; }
    if (link->state_index != -1) { return existing_state<ChildState>(&session->child_states, link->state_index); }
    ChildState* state = new_state<ChildState>(&session->child_states, &next_child_state_id, &link->state_index);
    if (state == nullptr) { return nullptr; }
    state->time = TIME_NEVER;
    mat_identity(&state->matrix);
    mat_translate(&state->matrix, link->position.x, link->position.y, link->position.z);
    Mat4 turn;
    mat_rotate_text(&turn, link->rotate[0], link->rotate[1], link->rotate[2]);
    mat_multiply(&turn, &state->matrix, &state->matrix);
    mat_scale(&state->matrix, link->scale.x, link->scale.y, link->scale.z);
    state->gl_matrix = *mat_to_gl(&state->matrix);
    state->link = link;
    return state;
}

PointState* point_state(Session* session, Point* point) {
    if (session == nullptr || point == nullptr) { return nullptr; }
    if (point->state_index != -1) { return existing_state<PointState>(&session->point_states, point->state_index); }
    PointState* state = new_state<PointState>(&session->point_states, &next_point_state_id, &point->state_index);
    if (state == nullptr) { return nullptr; }
    state->position = point->position;
    state->normal = point->normal;
    return state;
}

// A model on which several others hang is evaluated once.
void scene_evaluate(Session* session) {
    if (session == nullptr) { return; }
    AnimatedModels done;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        evaluate_chain(session, session->anim_time, {root.model, root.animation}, &done);
    }
}

void model_evaluate(Session* session, float time, Model* model, ModelAnimation* animation) {
    AnimatedModels done;
    evaluate_chain(session, time, {model, animation}, &done);
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

void points_evaluate(Session* session, float, Model* model) {
    if (session == nullptr || model == nullptr) { return; }
    JointLookup lookup_a{session, model};
    JointLookup lookup_b{session, model};
    for (Point& point : list_elements<Point>(model->points)) {
        PointState* state = point_state(session, &point);
        if (state == nullptr) { continue; }
        if (point.joint_a == nullptr) {
            state->position = point.position;
            continue;
        }
        const JointState* joint_a = lookup_a(point.joint_a);
        if (joint_a == nullptr) { continue; }
        if (point.weight >= 1.0f) {
            pose_by_one(point, joint_a, state);
        } else if (point.weight > 0.0f) {
            pose_by_two(point, joint_a, lookup_b(point.joint_b), state);
        } else if (const JointState* joint_b = lookup_b(point.joint_b)) {
            pose_by_one(point, joint_b, state);
        }
    }
}

int32_t child_evaluate(Session* session, float time, ChildLink* link, ModelAnimation* animation, int32_t number) {
    if (session == nullptr || link == nullptr) { return number; }
    ChildWalk walk{session, time, animation, MODEL_TREE_NODE_LIMIT};
    return evaluate_link(&walk, link, number, 1);
}

// Scale, turn and translation act on a point in the reverse order: the translation comes first; intended, and unlike
// the placement of a child link.
void model_state_rebuild(ModelState* state) {
    if (state == nullptr) { return; }
    mat_identity(&state->matrix);
    mat_scale(&state->matrix, state->scale.x, state->scale.y, state->scale.z);
    mat_multiply(&state->rotation, &state->matrix, &state->matrix);
    mat_translate(&state->matrix, state->translate.x, state->translate.y, state->translate.z);
    state->gl_matrix = *mat_to_gl(&state->matrix);
}

}  // namespace pelt
