// Placements by a script's word. What surprises: that of a model is the scene's alone, that of a child is content of
// the model above it, and so of every model that was read from the same file.
#include "edit/edit_placement.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "edit/bounds.h"
#include "edit/ranks.h"
#include "formats/animation.h"
#include "formats/name_rules.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr size_t LINE_ROTATION_MOST = sizeof(ChildLink::rotate[0]) - 1;

bool is_rotation(const std::array<std::string, 3>& texts, Mat4* turn) {
    mat_identity(turn);
    for (const std::string& text : texts) {
        if (text.empty()) { return false; }
    }
    return mat_rotate_text(turn, texts[0].c_str(), texts[1].c_str(), texts[2].c_str()) != 0 &&
           std::all_of(std::begin(turn->m), std::end(turn->m), [](float value) { return std::isfinite(value); });
}

bool refuse_rotation(const std::array<std::string, 3>& texts, EditRefusal* refused) {
    return edit_refuse(refused, EDIT_ARGUMENT,
                       "bad rotation \"" + texts[0] + " " + texts[1] + " " + texts[2] +
                           "\": must be three angles, each with or without x, y or z in front");
}

void place_link(Session* session, Model* owner, ChildLink* link, const PlaceEdit& edit) {
    change_model(owner);
    change_element(owner, nullptr, CONTENT_CHILDREN, link);
    if (edit.translation) { link->position = *edit.translation; }
    if (edit.scale) { link->scale = *edit.scale; }
    for (size_t i = 0; edit.rotation && i < 3; ++i) { str_copy((*edit.rotation)[i].c_str(), link->rotate[i]); }
    child_place_anew(session, owner, link);
}

}  // namespace

bool child_rotation_fits(const std::array<std::string, 3>& rotation, EditRefusal* refused) {
    Mat4 turn;
    if (!is_rotation(rotation, &turn)) { return refuse_rotation(rotation, refused); }
    for (const std::string& text : rotation) {
        if (text.size() > LINE_ROTATION_MOST) {
            return edit_refuse(refused, EDIT_ARGUMENT,
                               "bad rotation \"" + text + "\": must have at most " +
                                   std::to_string(LINE_ROTATION_MOST) + " characters, as the line of a child");
        }
    }
    return true;
}

Model* session_link_owner(Session* session, const ChildLink* link) {
    if (session == nullptr) { return nullptr; }
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (Model* owner = model_tree_link_owner(root.model, link)) { return owner; }
    }
    return nullptr;
}

void child_place_anew(Session* session, Model* owner, ChildLink* link) {
    if (link->state_index == -1) { return; }
    child_state_rebuild(child_state(session, link));
    const RootModel* root = session_root_of(session, owner);
    if (root != nullptr) { model_evaluate(session, session->anim_time, root->model, root->animation); }
}

bool edit_place_model(Session* session, Model* model, const PlaceEdit& edit, EditRefusal* refused) {
    const RootModel* root = session_root_of(session, model);
    if (root == nullptr || root->model != model) {
        return edit_refuse(refused, EDIT_STATE, "the model stands in the scene as a child alone");
    }
    if (root->animation != nullptr && root->animation->enabled != 0) {
        return edit_refuse(refused, EDIT_STATE, "the model is placed by its row of the scene list");
    }
    Mat4 turn;
    if (edit.rotation && !is_rotation(*edit.rotation, &turn)) { return refuse_rotation(*edit.rotation, refused); }
    ModelState* state = model_state(session, model);
    if (state == nullptr) { return edit_refuse(refused, EDIT_STATE, "the model has no placement"); }
    change_scene_slot(session, SCENE_MODEL_STATES, model->state_index);
    if (edit.translation) { state->translate = *edit.translation; }
    if (edit.scale) { state->scale = *edit.scale; }
    if (edit.rotation) { state->rotation = turn; }
    model_state_rebuild(state);
    session_grow_radius(session, model);
    return true;
}

bool edit_place_child(Session* session, ChildLink* link, const PlaceEdit& edit, EditRefusal* refused) {
    if (edit.rotation && !child_rotation_fits(*edit.rotation, refused)) { return false; }
    Model* owner = session_link_owner(session, link);
    if (owner == nullptr) { return edit_refuse(refused, EDIT_STATE, "the child is not in the scene"); }
    std::vector<Model*> targets;
    if (!edit_targets(session, owner, &targets, refused)) { return false; }
    const int32_t rank = rank_in(owner->children, link);
    for (Model* target : targets) { place_link(session, target, at_rank<ChildLink>(target->children, rank), edit); }
    models_changed_alike(targets);
    return true;
}

int32_t edit_new_model(Session* session, const std::string& name, EditRefusal* refused) {
    if (!name_fits_line(name, FILE_NAME_MOST) || name.find_first_of("/\\") != std::string::npos) {
        edit_refuse(
            refused, EDIT_ARGUMENT,
            "bad name of a model \"" + name + "\": must be " + name_rule(FILE_NAME_MOST) + ", and no directory");
        return 0;
    }
    Model* model = model_create("", nullptr);
    str_copy(name.c_str(), model->name);
    return session_add_root(session, model, nullptr);
}

}  // namespace pelt
