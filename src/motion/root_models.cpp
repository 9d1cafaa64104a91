// The models that stand directly in the scene. What surprises: every removal takes its entries out of the session
// before it releases anything, since a report around it runs script code that may close or load in its turn; and a
// root that goes first empties what points at it from the roots that stay.
#include "motion/root_models.h"

#include <unordered_set>

#include "formats/animation.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "scene/ids.h"

namespace pelt {

namespace {

using ModelSet = std::unordered_set<const Model*>;

// The model and all that it owns below it.
void collect_owned(const Model* model, ModelSet* owned) {
    if (model == nullptr) { return; }
    owned->insert(model);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { collect_owned(link.model, owned); }
    }
}

void empty_links_to(Session* session, Model* model, const ModelSet& going) {
    if (model == nullptr) { return; }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) {
            empty_links_to(session, link.model, going);
        } else if (going.count(link.model) != 0) {
            change_element(model, nullptr, CONTENT_CHILDREN, &link);
            session_forget_child(session, &link);
            link.model = nullptr;
        }
    }
}

// What hung on a joint or a model that goes stands in the scene by itself.
void empty_animation_parent(ModelAnimation* animation, const ModelSet& going, const ModelAnimation* going_animation) {
    if (animation == nullptr) { return; }
    const bool model_goes = going.count(animation->parent_model) != 0;
    const bool animation_goes = going_animation != nullptr && animation->parent_animation == going_animation;
    if (model_goes || animation_goes) {
        animation->parent_model = nullptr;
        animation->parent_animation = nullptr;
        animation->parent_joint = nullptr;
    }
}

void empty_references(Session* session, const RootModel& going) {
    ModelSet owned;
    collect_owned(going.model, &owned);
    const auto roots = list_elements<RootModel>(session->root_models);
    for (auto root = roots.begin(); root != roots.end(); ++root) {
        empty_links_to(session, root->model, owned);
        change_scene_slot(session, SCENE_ANIMATIONS, root.slot());
        empty_animation_parent(root->animation, owned, going.animation);
    }
}

}  // namespace

int32_t session_add_root(Session* session, Model* model, ModelAnimation* animation, int32_t row) {
    if (session == nullptr || model == nullptr) {
        animation_release(animation);
        return 0;
    }
    const int32_t key = take_id(&next_root_id);
    change_scene_slot(session, SCENE_ROOTS, list_slot_for(&session->root_models, key));
    RootModel* root = list_add<RootModel>(&session->root_models, key);
    root->model = model;
    root->animation = animation;
    root->row = row;
    change_watch(model);
    const ModelState* state = model_state(session, model);
    return state != nullptr ? state->id : 0;
}

RootModel* session_root_of(Session* session, const Model* model) {
    if (session == nullptr || model == nullptr) { return nullptr; }
    while (model->parent != nullptr) { model = model->parent; }
    for (RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (root.model == model) { return &root; }
    }
    return nullptr;
}

int session_remove_root(Session* session, int32_t key) {
    if (session == nullptr) { return 0; }
    const RootModel* found = list_find<RootModel>(&session->root_models, key);
    if (found == nullptr) { return 0; }
    const RootModel root = *found;
    change_scene_slot(session, SCENE_ROOTS, list_index_of(&session->root_models, key, 0));
    list_remove(&session->root_models, key);
    empty_references(session, root);
    session_forget_model(session, root.model);
    if (!change_keeps_root(session, root)) {
        model_release(root.model);
        animation_release(root.animation);
    }
    return 1;
}

int session_remove_child(Session* session, Model* owner, ChildLink* link) {
    if (session == nullptr || owner == nullptr || link == nullptr) { return 0; }
    const int32_t slot = list_slot_of_element(&owner->children, link);
    if (slot < 0) { return 0; }
    Model* model = link->borrowed ? nullptr : link->model;
    change_model(owner);
    change_slot(owner, nullptr, CONTENT_CHILDREN, slot);
    session_forget_child(session, link);
    list_remove_slot(&owner->children, slot);
    if (model == nullptr) { return 1; }
    empty_references(session, RootModel{model, nullptr, 0});
    session_forget_model(session, model);
    if (!change_keeps_model(model)) { model_release(model); }
    return 1;
}

void session_release_roots(Session* session) {
    if (session == nullptr) { return; }
    change_scene_replaced(session);
    KeyedList going = session->root_models;
    list_init(&session->root_models, sizeof(RootModel), KEY_INT);
    // All are forgotten before any is released: roots may lend models to each other.
    for (const RootModel& root : list_elements<RootModel>(going)) { session_forget_model(session, root.model); }
    for (const RootModel& root : list_elements<RootModel>(going)) {
        model_release(root.model);
        animation_release(root.animation);
    }
    list_free(&going);
    session->anim_end = 0.0f;
    session_set_animation_path(session, nullptr, nullptr);
}

int session_close_all(Session* session) {
    session_status(session, "Closing currently open Model file");
    if (session != nullptr) {
        session_release_roots(session);
        session_clear_bounds(session);
        session_status(session, "Ready");
    }
    return 1;
}

}  // namespace pelt
