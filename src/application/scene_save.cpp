// Saving a model. What surprises: a file may have been read several times, once for each link to it; all those models
// are one file, which is only written where they say the same.
#include "application/scene_save.h"

#include <algorithm>
#include <vector>

#include "application/application.h"
#include "application/files_of_scene.h"
#include "application/name_beside.h"
#include "application/problem.h"
#include "application/save_file.h"
#include "edit/history.h"
#include "formats/model_compare.h"
#include "formats/model_save.h"
#include "foundation/file_access.h"
#include "foundation/file_text.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* MODEL_EXTENSION = ".mod";
constexpr size_t NAME_ROOM = sizeof ChildLink::name;

void gather_models(Model* model, std::vector<Model*>* all) {
    if (model == nullptr) { return; }
    all->push_back(model);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { gather_models(link.model, all); }
    }
}

std::vector<Model*> models_in_scene(Session* session) {
    std::vector<Model*> all;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) { gather_models(root.model, &all); }
    return all;
}

// The model and all others that were read from its file.
std::vector<Model*> copies_of(Session* session, Model* model) {
    std::vector<Model*> copies{model};
    for (Model* each : models_in_scene(session)) {
        if (each != model && save_same_file(model_file(each), model_file(model))) { copies.push_back(each); }
    }
    return copies;
}

bool copies_agree(const std::vector<Model*>& copies) {
    for (const Model* copy : copies) {
        const std::string difference = model_difference(copies[0], copy, false);
        if (!difference.empty()) {
            return save_refuse(PROBLEM_STATE, std::string(copies[0]->name) + " was read " +
                                                  std::to_string(copies.size()) +
                                                  " times, and what was read no longer says the same: " + difference);
        }
    }
    return true;
}

// ---- another file ----

const RootModel* root_of(Session* session, const Model* model) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (root.model == model) { return &root; }
    }
    return nullptr;
}

bool may_go_elsewhere(Session* session, const Model* model, const std::string& target) {
    const RootModel* root = root_of(session, model);
    if (root == nullptr) {
        return save_refuse(PROBLEM_STATE, std::string("the child ") + model->name +
                                              " belongs to the file that the line of its link names");
    }
    if (root->row > 0) {
        return save_refuse(PROBLEM_STATE,
                           std::string(model->name) + " belongs to the file that the row of its scene list names");
    }
    for (const Model* each : models_in_scene(session)) {
        if (each != model && save_same_file(model_file(each), target)) {
            return save_refuse(PROBLEM_STATE, std::string("this is the file of the model ") + each->name, target);
        }
    }
    return save_spares_scene(*session, target);
}

bool refuse_name(const std::string& of, const std::string& target) {
    return save_refuse(PROBLEM_STATE, of + ": it has no name that leads to it from beside this file", target);
}

bool rename_images(Model* model, const std::string& target) {
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            const LayerImage* image = layer_first_image(&layer);
            if (image == nullptr || image->names[slot][0] == '\0') { continue; }
            const std::string file = file_resolve(model_file_path(model, image->names[slot]).c_str());
            if (file.empty()) { continue; }  // one that is missing stays so
            const std::string name = name_beside(target, file);
            if (name.empty() || name.size() >= NAME_ROOM) { return refuse_name("image " + file, target); }
            layer_image_rename(model, &layer, slot, name.c_str());
        }
    }
    return true;
}

std::string file_of_child(const Model* model, const ChildLink& link) {
    const std::string file = model_file(link.model);
    return !file.empty() ? file : model_directory(model) + link.name + MODEL_EXTENSION;
}

bool rename_children(Model* model, const std::string& target) {
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        const std::string file = file_of_child(model, link);
        const std::string name = child_name_of(name_beside(target, file));
        if (name.empty() || name.size() >= NAME_ROOM) { return refuse_name("child " + file, target); }
        model_rename_child(model, &link, name.c_str());
    }
    return true;
}

// Names what lies beside the model from beside its new file.
bool move_to(Model* model, const std::string& target) {
    const std::string old = model_directory(model) + model->name;
    if (!lie_together(old, target) && !(rename_images(model, target) && rename_children(model, target))) {
        return false;
    }
    model_set_file(model, target.c_str());
    return true;
}

// A model that is lent to this one lies where it lies: the line of the link has to lead there.
bool lent_children_are_found(const Model* model) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        const std::string named = model_directory(model) + link.name + MODEL_EXTENSION;
        if (link.borrowed != 0 && !save_same_file(model_file(link.model), named)) {
            return save_refuse(
                PROBLEM_STATE,
                std::string("child ") + link.name + ": the file that its line would name is not that of the model",
                named);
        }
    }
    return true;
}

// ---- writing ----

bool disk_allows(const Model* model, bool force) {
    const std::string path = model_file(model);
    if (force || model->text == nullptr || path.empty()) { return true; }
    return file_text_state(*model->text, path) != FileState::CHANGED ||
           save_refuse(PROBLEM_UNSAVED, "the file changed on disk since it was read: say -force", path);
}

// The text of the file, which was read and compared.
bool make_text(const Model* model, const std::string& path, bool whole, std::string* text) {
    const bool anew = whole || model->text == nullptr;
    const ModelSave save = anew ? model_save_whole(model, path.c_str() + path_directory_length(path.c_str()))
                                : model_save(model, model->text->view());
    if (!save.refused.empty()) {
        return save_refuse(save.by_layout ? PROBLEM_LAYOUT : PROBLEM_STATE,
                           save.refused + (save.by_layout ? " (-whole lays the file out anew)" : ""));
    }
    *text = save.text;
    return true;
}

void note_written(Session* session, const std::vector<Model*>& models, const std::string& path,
                  const std::string& text) {
    const std::string file = file_resolve(path.c_str());
    for (Model* model : models) {
        if (model->text == nullptr) { model->text = file_text_of(text); }
        if (model->text != nullptr) { file_text_note_written(*model->text, file, text); }
        history_mark_saved(session, model);
    }
}

}  // namespace

bool scene_save(Application* app, const SaveWish& wish, SaveDone* done) {
    Session* session = &app->session;
    const std::string own = model_file(wish.model);
    const std::string target = wish.file.empty() ? own : path_with_separators(wish.file.c_str());
    if (target.empty()) {
        return save_refuse(PROBLEM_STATE, std::string(wish.model->name) + " has no file yet: name one");
    }
    const bool moves = !save_same_file(own, target);
    const std::vector<Model*> models = moves ? std::vector<Model*>{wish.model} : copies_of(session, wish.model);
    if (!save_target_is_good(target) || !copies_agree(models)) { return false; }
    if (moves ? !may_go_elsewhere(session, wish.model, target) : !disk_allows(wish.model, wish.force)) { return false; }
    for (Model* model : models) {
        if (wish.round) { done->shift = std::max(done->shift, model_round_places(model)); }
    }
    if (moves && !move_to(wish.model, target)) { return false; }
    std::string text;
    done->path = moves ? target : own;
    if (!lent_children_are_found(wish.model) || !make_text(wish.model, done->path, wish.whole, &text)) { return false; }
    if (!save_write(done->path, text)) { return false; }
    note_written(session, models, done->path, text);
    return true;
}

}  // namespace pelt
