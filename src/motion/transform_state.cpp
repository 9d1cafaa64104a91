// The run-time records of models, child links and points: each is made on first use and found through its owner's slot.
#include "motion/transform_state.h"

#include <cstring>

#include "scene/change.h"

namespace pelt {

ModelState* model_state(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return nullptr; }
    if (model->state_index != -1) { return list_at<ModelState>(&session->model_states, model->state_index, 0); }
    change_scene_slot(session, SCENE_MODEL_STATES, list_slot_for(&session->model_states, next_model_state_id));
    ModelState* state = add_state<ModelState>(&session->model_states, &next_model_state_id, &model->state_index);
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

ChildState* child_state(Session* session, ChildLink* link) {
    if (session == nullptr || link == nullptr) { return nullptr; }
    if (link->state_index != -1) { return list_at<ChildState>(&session->child_states, link->state_index, 0); }
    ChildState* state = add_state<ChildState>(&session->child_states, &next_child_state_id, &link->state_index);
    if (state == nullptr) { return nullptr; }
    state->time = TIME_NEVER;
    state->link = link;
    child_state_rebuild(state);
    return state;
}

PointState* point_state(Session* session, Point* point) {
    if (session == nullptr || point == nullptr) { return nullptr; }
    if (point->state_index != -1) { return list_at<PointState>(&session->point_states, point->state_index, 0); }
    PointState* state = add_state<PointState>(&session->point_states, &next_point_state_id, &point->state_index);
    if (state == nullptr) { return nullptr; }
    state->position = point->position;
    state->normal = point->normal;
    return state;
}

void child_state_rebuild(ChildState* state) {
    if (state == nullptr || state->link == nullptr) { return; }
    state->matrix = child_placement(state->link);
    state->gl_matrix = *mat_to_gl(&state->matrix);
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
