// The way of a frame through the scene, for whoever asks what a frame shows. What surprises: a lent model may lead
// back to one that is being visited.
#include "motion/scene_walk.h"

#include "motion/transform_state.h"

namespace pelt {

namespace {

using Visit = std::function<void(const ScenePlace&)>;

bool may_enter(const ScenePlace* above, const Model* model) {
    int depth = 0;
    for (; above != nullptr; above = above->above, ++depth) {
        if (above->model == model) { return false; }
    }
    return model != nullptr && depth <= MODEL_TREE_DEPTH_LIMIT;
}

void walk(Session* session, ScenePlace here, const Visit& visit) {
    if (!may_enter(here.above, here.model)) { return; }
    const ModelState* state = list_at<const ModelState>(&session->model_states, here.model->state_index, 0);
    if (state != nullptr) { mat_multiply(&state->matrix, &here.place, &here.place); }
    visit(here);
    for (ChildLink& link : list_elements<ChildLink>(here.model->children)) {
        const ChildState* child = child_state(session, &link);
        if (child == nullptr) { continue; }
        ScenePlace below{link.model, &link, {}, &here};
        mat_multiply(&child->matrix, &here.place, &below.place);
        walk(session, below, visit);
    }
}

}  // namespace

void scene_walk(Session* session, const Visit& visit) {
    Mat4 world;
    mat_identity(&world);
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        walk(session, ScenePlace{root.model, nullptr, world, nullptr}, visit);
    }
}

}  // namespace pelt
