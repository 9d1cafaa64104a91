// The exchange of roots. Run-time records that scripts know by their ids are handed over by moving the slot number
// from the old owner to the new one; all others are forgotten with the old model and made again when they are asked
// for.
#include "motion/root_exchange.h"

#include <unordered_map>

#include "formats/animation.h"
#include "motion/transform_state.h"
#include "scene/change.h"

namespace pelt {

namespace {

struct Successors {
    std::unordered_map<const Model*, Model*> models;  // null for one that is lost
    std::unordered_map<const ChildLink*, ChildLink*> links;
};

// The model whose children and layers are compared, as scripts know it.
struct Owner {
    int32_t id;
    bool is_child;
};

void hand_over(int32_t* from, int32_t* to) {
    *to = *from;
    *from = -1;
}

void hand_over_layers(const Model& old, Model* fresh, Owner owner, std::vector<LostPart>* lost) {
    for (const Layer& layer : list_elements<Layer>(old.layers)) {
        if (Layer* successor = list_find<Layer>(&fresh->layers, layer.name)) {
            successor->hidden = layer.hidden;
        } else {
            lost->push_back({"layer", layer.name, owner.id, owner.is_child});
        }
    }
}

int32_t child_id(const Session* session, const ChildLink& link) {
    const ChildState* state = list_at<const ChildState>(&session->child_states, link.state_index, 0);
    return state != nullptr ? state->id : 0;
}

// All that the old model owns is without a successor until one is found.
void enter_lost(const Model* old, Successors* successors) {
    if (old == nullptr) { return; }
    successors->models.emplace(old, nullptr);
    for (const ChildLink& link : list_elements<ChildLink>(old->children)) {
        if (!link.borrowed) { enter_lost(link.model, successors); }
    }
}

void hand_over_model(Session* session, Model* old, Model* fresh, Owner owner, Successors* successors,
                     std::vector<LostPart>* lost);

void hand_over_link(Session* session, ChildLink* old, ChildLink* fresh, Successors* successors,
                    std::vector<LostPart>* lost) {
    const Owner owner{child_id(session, *old), true};
    successors->links.emplace(old, fresh);
    hand_over(&old->state_index, &fresh->state_index);
    if (ChildState* state = list_at<ChildState>(&session->child_states, fresh->state_index, 0)) {
        state->link = fresh;
        state->time = TIME_NEVER;
        child_state_rebuild(state);
    }
    if (old->model != nullptr && fresh->model != nullptr && !old->borrowed) {
        hand_over_model(session, old->model, fresh->model, owner, successors, lost);
    }
}

void hand_over_model(Session* session, Model* old, Model* fresh, Owner owner, Successors* successors,
                     std::vector<LostPart>* lost) {
    successors->models[old] = fresh;
    hand_over(&old->state_index, &fresh->state_index);
    if (ModelState* state = list_at<ModelState>(&session->model_states, fresh->state_index, 0)) {
        state->model = fresh;
        state->time = TIME_NEVER;
    }
    hand_over_layers(*old, fresh, owner, lost);
    // Of several links of one name the first goes to the first.
    std::vector<ChildLink*> links;
    for (ChildLink& link : list_elements<ChildLink>(fresh->children)) { links.push_back(&link); }
    std::unordered_map<std::string, std::vector<ChildLink*>> by_name;
    for (auto link = links.rbegin(); link != links.rend(); ++link) { by_name[(*link)->name].push_back(*link); }
    for (ChildLink& link : list_elements<ChildLink>(old->children)) {
        std::vector<ChildLink*>& left = by_name[link.name];
        if (left.empty() || link.borrowed) {
            lost->push_back({"child", link.name, child_id(session, link), true});
        } else {
            hand_over_link(session, &link, left.back(), successors, lost);
            left.pop_back();
        }
    }
}

// What is lent from the old tree comes from the new one, or from nowhere.
void follow_loans(Session* session, Model* model, const Successors& successors) {
    if (model == nullptr) { return; }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) {
            follow_loans(session, link.model, successors);
            continue;
        }
        const auto found = successors.models.find(link.model);
        if (found == successors.models.end()) { continue; }
        if (found->second == nullptr) { session_forget_child(session, &link); }
        link.model = found->second;
    }
}

void follow_selection(SelectionSet* set, const Successors& successors) {
    for (SelectedModel& entry : list_elements<SelectedModel>(set->models)) {
        const auto found = successors.models.find(entry.model);
        if (found == successors.models.end() || entry.serial != found->first->serial) { continue; }
        entry = SelectedModel{found->second, found->second != nullptr ? found->second->serial : 0};
    }
    for (SelectedChild& entry : list_elements<SelectedChild>(set->children)) {
        const auto found = successors.links.find(entry.link);
        if (found != successors.links.end()) { entry.link = found->second; }
    }
}

// The new model and animation stand where the old ones stood, which are returned.
RootModel enter_root(Session* session, const FreshRoot& fresh, Successors* successors, std::vector<LostPart>* lost) {
    RootModel* root = list_find<RootModel>(&session->root_models, fresh.key);
    const RootModel old = *root;
    const ModelState* state = list_at<const ModelState>(&session->model_states, old.model->state_index, 0);
    const Owner owner{state != nullptr ? state->id : 0, false};
    enter_lost(old.model, successors);
    hand_over_model(session, old.model, fresh.model, owner, successors, lost);
    root->model = fresh.model;
    change_watch(fresh.model);
    root->animation = fresh.animation;
    // What no clip moves any more goes back to where scripts put it.
    if (old.animation != nullptr && fresh.animation == nullptr) {
        model_state_rebuild(model_state(session, fresh.model));
    }
    return old;
}

}  // namespace

bool session_exchange_roots(Session* session, const std::vector<FreshRoot>& all, std::vector<LostPart>* lost) {
    if (session == nullptr || lost == nullptr) { return false; }
    for (const FreshRoot& fresh : all) {
        const RootModel* root = list_find<const RootModel>(&session->root_models, fresh.key);
        if (root == nullptr || root->model == nullptr || fresh.model == nullptr) { return false; }
    }
    change_scene_replaced(session);
    Successors successors;
    std::vector<RootModel> former;
    for (const FreshRoot& fresh : all) { former.push_back(enter_root(session, fresh, &successors, lost)); }
    // Once for all of them: each of these steps walks over the whole scene.
    follow_selection(&session->selection, successors);
    follow_selection(&session->clipboard, successors);
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        follow_loans(session, root.model, successors);
    }
    // All are forgotten before any is released: they may lend models to each other.
    for (const RootModel& old : former) { session_forget_model(session, old.model); }
    for (const RootModel& old : former) {
        model_release(old.model);
        animation_release(old.animation);
    }
    return true;
}

}  // namespace pelt
