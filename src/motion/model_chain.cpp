// The scene at a time: of each model its joints, then points, then child links, then its own placement, which may hang
// on a joint of another model. A model climbs to the top of what it hangs on first; a circle of models is cut there.
#include <algorithm>
#include <limits>
#include <vector>

#include "formats/animation.h"
#include "motion/animation_sample.h"
#include "motion/transform_state.h"

namespace pelt {

namespace {

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

// Its joints, points and links.
void evaluate_parts(Session* session, float time, Model* model, ModelAnimation* animation) {
    joints_evaluate(session, time, model, animation);
    points_evaluate(session, time, model);
    int32_t number = 0;
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        number = child_evaluate(session, time, &link, animation, number);
    }
}

// Evaluates one model. What it hangs on stands at this time already, or hangs_on_world says to leave it out.
void evaluate_model(Session* session, float time, const AnimatedModel& entry, bool hangs_on_world) {
    evaluate_parts(session, time, entry.model, entry.animation);
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

// A model on which several others hang is evaluated once.
void scene_evaluate(Session* session) {
    if (session == nullptr) { return; }
    ++session->evaluations;
    AnimatedModels done;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        evaluate_chain(session, session->anim_time, {root.model, root.animation}, &done);
    }
}

void model_evaluate(Session* session, float time, Model* model, ModelAnimation* animation) {
    if (session == nullptr) { return; }
    ++session->evaluations;
    AnimatedModels done;
    evaluate_chain(session, time, {model, animation}, &done);
}

void model_pose(Session* session, float time, Model* model, ModelAnimation* animation) {
    if (session == nullptr || model == nullptr || animation == nullptr || animation->enabled == 0) { return; }
    for (Joint& joint : list_elements<Joint>(model->joints)) { session_forget_joint(session, &joint); }
    evaluate_parts(session, time, model, animation);
}

int32_t child_evaluate(Session* session, float time, ChildLink* link, ModelAnimation* animation, int32_t number) {
    if (session == nullptr || link == nullptr) { return number; }
    ChildWalk walk{session, time, animation, MODEL_TREE_NODE_LIMIT};
    return evaluate_link(&walk, link, number, 1);
}

}  // namespace pelt
