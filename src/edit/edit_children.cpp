// Children by a script's word. What surprises: each of the models of a file gets a child of its own, read again for it,
// as a load would do.
#include "edit/edit_children.h"

#include "edit/bounds.h"
#include "edit/ranks.h"
#include "formats/model_reader.h"
#include "formats/name_rules.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "scene/change.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr const char* MODEL_EXTENSION = ".mod";

// Clips count the children of a tree.
bool check_clips(Session* session, const std::vector<Model*>& targets, EditRefusal* refused) {
    for (const Model* target : targets) {
        const RootModel* root = session_root_of(session, target);
        if (root != nullptr && root->animation != nullptr) {
            return edit_refuse(refused, EDIT_STATE,
                               "a model of a scene list keeps its children: the tracks of clips are counted by them");
        }
    }
    return true;
}

bool check_trees(const Session* session, const std::vector<Model*>& parents, const Model* added, EditRefusal* refused) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (!model_tree_fits_with(root.model, parents, added)) {
            return edit_refuse(refused, EDIT_STATE, "too many child models, or nested too deeply");
        }
    }
    return true;
}

ChildLink link_at(const std::string& name, const PlaceEdit& place) {
    ChildLink link{};
    str_copy(name.c_str(), link.name);
    link.position = place.translation.value_or(Vec3{0.0f, 0.0f, 0.0f});
    link.scale = place.scale.value_or(Vec3{1.0f, 1.0f, 1.0f});
    for (size_t i = 0; i < 3; ++i) { str_copy(place.rotation ? (*place.rotation)[i].c_str() : "0", link.rotate[i]); }
    return link;
}

// A child for each of the parents; none is left when one cannot be read.
bool read_children(const std::vector<Model*>& parents, const std::string& name, std::vector<Model*>* children,
                   EditRefusal* refused) {
    for (Model* parent : parents) {
        const std::string path = model_directory(parent) + name + MODEL_EXTENSION;
        Model* child = model_read_child(path.c_str(), parent);
        if (child == nullptr) {
            for (Model* each : *children) { model_release(each); }
            return edit_refuse(refused, EDIT_FILE, "the child cannot be read", path);
        }
        children->push_back(child);
    }
    return true;
}

}  // namespace

bool edit_add_child(Session* session, Model* parent, const std::string& name, const PlaceEdit& place, ChildLink** link,
                    EditRefusal* refused) {
    if (!name_fits_line(name, FILE_NAME_MOST)) {
        return edit_refuse(refused, EDIT_ARGUMENT,
                           "bad name of a child \"" + name + "\": must be " + name_rule(FILE_NAME_MOST));
    }
    std::vector<Model*> targets;
    std::vector<Model*> children;
    if ((place.rotation && !child_rotation_fits(*place.rotation, refused)) ||
        !edit_targets(session, parent, &targets, refused) || !check_clips(session, targets, refused) ||
        !read_children(targets, name, &children, refused)) {
        return false;
    }
    if (!check_trees(session, targets, children[0], refused)) {
        for (Model* child : children) { model_release(child); }
        return false;
    }
    for (size_t i = 0; i < targets.size(); ++i) {
        ChildLink wanted = link_at(name, place);
        wanted.model = children[i];
        ChildLink* added = model_append_child(targets[i], wanted);
        if (targets[i] == parent) { *link = added; }
        const RootModel* root = session_root_of(session, targets[i]);
        if (root != nullptr) { session_grow_radius(session, root->model); }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_remove_child(Session* session, ChildLink* link, EditRefusal* refused) {
    Model* owner = session_link_owner(session, link);
    if (owner == nullptr) { return edit_refuse(refused, EDIT_STATE, "the child is not in the scene"); }
    std::vector<Model*> targets;
    if (!edit_targets(session, owner, &targets, refused) || !check_clips(session, targets, refused)) { return false; }
    const int32_t rank = rank_in(owner->children, link);
    for (Model* target : targets) { session_remove_child(session, target, at_rank<ChildLink>(target->children, rank)); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
