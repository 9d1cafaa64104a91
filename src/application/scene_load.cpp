// Loading beside the scene. What surprises: between the first report and the last nothing may be reported, because a
// report runs scripts, and these would find a scene that is neither the old one nor the new one.
#include "application/scene_load.h"

#include <memory>
#include <utility>

#include "application/application.h"
#include "application/problem.h"
#include "edit/bounds.h"
#include "edit/selection.h"
#include "formats/file_kind.h"
#include "formats/model_reader.h"
#include "formats/scene_list.h"
#include "foundation/file_access.h"
#include "images/image_registry.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"

namespace pelt {

namespace {

// What was read beside the scene, and is released unless the scene takes it over.
struct Staged {
    std::vector<RootModel> roots;
    float duration = 0.0f;
    std::vector<LoadFailure> problems;  // that no line tells of
    std::string list_path;              // empty for a model
    std::string list_base;

    Staged() = default;
    Staged(const Staged&) = delete;
    Staged& operator=(const Staged&) = delete;
    ~Staged() {
        for (const RootModel& root : roots) {
            model_release(root.model);
            animation_release(root.animation);
        }
    }
};

void fail_with(const char* format, const std::string& path) {
    load_error_set_format(format, path.c_str());
    load_failure_in(path.c_str());
}

bool stage_model(const std::string& path, Staged* staged) {
    Model* model = model_load(path.c_str(), nullptr, true);
    if (model != nullptr) { staged->roots.push_back(RootModel{model, nullptr, 0}); }
    return model != nullptr;
}

// A clip in a clip that could not be read moves nothing, and says nothing.
void note_unread_clips(const AnimationClip& clip, std::vector<LoadFailure>* problems) {
    if (clip.unread_path != nullptr && problems->size() < LOAD_PROBLEM_LIMIT) {
        const bool is_there = file_exists(clip.unread_path) != 0;
        problems->push_back(
            {is_there ? "the clip cannot be used" : "could not find animation file", clip.unread_path, 0, {}});
    }
    for (int32_t i = 0; i < clip.subclip_count; ++i) { note_unread_clips(clip.subclips[i], problems); }
}

bool stage_list(const std::string& path, const std::string& base, Staged* staged) {
    const std::unique_ptr<AnimationSet> set(animation_load(path.c_str(), {base.c_str(), true}));
    if (set == nullptr) { return false; }
    for (int32_t row = 0; row < set->count; ++row) {
        staged->roots.push_back(RootModel{set->models[row], set->animations[row], row + 1});
    }
    staged->duration = set->duration;
    staged->list_path = path;
    staged->list_base = base;
    for (const RootModel& root : staged->roots) {
        if (root.animation != nullptr) { note_unread_clips(root.animation->clip, &staged->problems); }
    }
    return true;
}

bool stage(const std::string& path, FileKind kind, Staged* staged) {
    switch (kind) {
        case FILE_KIND_MODEL: return stage_model(path, staged);
        case FILE_KIND_SCENE: return stage_list(path, path.substr(0, path_directory_length(path.c_str())), staged);
        case FILE_KIND_MISSING: fail_with("could not find: %s", path); return false;
        case FILE_KIND_OTHER: break;
    }
    fail_with("neither a model nor a scene list", path);
    return false;
}

// Runs a read for which no image counts as loaded yet. Whatever failed before is forgotten.
template <typename Read>
bool read_beside(SceneLoad* out, const char* file, const Staged& staged, Read read) {
    image_paths_begin();
    load_problems_begin();
    load_error_set(nullptr);
    const bool good = read();
    out->problems = load_problems_end();
    out->problems.insert(out->problems.end(), staged.problems.begin(), staged.problems.end());
    if (out->problems.size() > LOAD_PROBLEM_LIMIT) { out->problems.resize(LOAD_PROBLEM_LIMIT); }
    image_paths_end(good);
    if (!good) { problem_set_load(file); }
    return good;
}

// Tells of a failure; what it was stays asked for even if a script loads something else meanwhile.
bool tell_failure(Session* session) {
    const Problem problem = problem_last();
    session_say(session, problem.what.text.c_str());
    session_say(session, "Load failed");
    problem_set(problem.kind.c_str(), problem.what);
    return false;
}

void fill_result(const Session* session, const std::vector<int32_t>& ids, SceneLoad* out) {
    out->ids = ids;
    for (const int32_t id : ids) {
        const ModelState* state = list_find<const ModelState>(&session->model_states, id);
        if (state != nullptr) { out->triangles += model_tree_triangles(state->model); }
    }
}

void enter_list(Session* session, const Staged& staged) {
    if (staged.list_path.empty()) { return; }
    change_scene_fields(session);
    session->anim_end = staged.duration;
    session_set_animation_path(session, staged.list_path.c_str(), staged.list_base.c_str());
}

void hold_time(Session* session) {
    if (!(session->anim_time <= session->anim_end)) { session->anim_time = session->anim_end; }
}

// The scene takes over all that was read.
std::vector<int32_t> enter(Session* session, Staged* staged) {
    std::vector<int32_t> ids;
    for (const RootModel& root : std::exchange(staged->roots, {})) {
        ids.push_back(session_add_root(session, root.model, root.animation, root.row));
        session_grow_radius(session, root.model);
    }
    enter_list(session, *staged);
    hold_time(session);
    scene_evaluate(session);
    return ids;
}

void reset_view(ViewState* view) {
    view->pan_x = view->pan_y = 0.0f;
    view->angle = view->pitch = 0.0f;
    view_reset(view);
}

void report_replaced(Session* session) {
    session_status(session, "Closing currently open Model file");
    session_status(session, "Ready");
    session_status(session, "Ready");
}

// ---- reading again ----

int32_t state_id(const Session* session, const RootModel& root) {
    const ModelState* state = list_at<const ModelState>(&session->model_states, root.model->state_index, 0);
    return state != nullptr ? state->id : 0;
}

// What is to be read again.
struct Again {
    std::vector<int32_t> keys;  // of the roots that were loaded by themselves
    bool list = false;          // with one row of a scene list go all its rows
};

Again what_again(const Session* session, int32_t id) {
    Again again;
    // A list without rows stands for no root, and may have some again.
    again.list = id == 0 && session->animation_path != nullptr;
    const auto roots = list_elements<RootModel>(session->root_models);
    for (auto root = roots.begin(); root != roots.end(); ++root) {
        if (id != 0 && state_id(session, *root) != id) { continue; }
        if (root->row > 0) {
            again.list = true;
        } else if (!model_file(root->model).empty()) {
            again.keys.push_back(root.int_key());
        }
    }
    return again;
}

bool stage_again(const Session* session, const Again& again, Staged* models, Staged* list) {
    for (const int32_t key : again.keys) {
        const std::string path = model_file(list_find<RootModel>(&session->root_models, key)->model);
        if (!stage_model(path, models)) {
            load_failure_in(path.c_str());
            return false;
        }
    }
    const char* base = session->animation_base != nullptr ? session->animation_base : "";
    return !again.list || stage_list(session->animation_path, base, list);
}

std::vector<FreshRoot> fresh_models(const Again& again, Staged* models) {
    std::vector<FreshRoot> all;
    for (const RootModel& root : std::exchange(models->roots, {})) {
        all.push_back({again.keys[all.size()], root.model, nullptr});
    }
    return all;
}

void exchange_rows(Session* session, Staged* list, std::vector<LostPart>* lost) {
    std::vector<int32_t> keys(ANIMATION_ROW_LIMIT + 1, 0);
    std::vector<int32_t> gone;
    const auto roots = list_elements<RootModel>(session->root_models);
    for (auto root = roots.begin(); root != roots.end(); ++root) {
        if (root->row > static_cast<int32_t>(list->roots.size())) {
            gone.push_back(root.int_key());
            lost->push_back({"model", root->model->name, state_id(session, *root), false});
        } else if (root->row > 0) {
            keys[static_cast<size_t>(root->row)] = root.int_key();
        }
    }
    std::vector<FreshRoot> all;
    for (const RootModel& fresh : std::exchange(list->roots, {})) {
        const int32_t key = keys[static_cast<size_t>(fresh.row)];
        if (key != 0) {
            all.push_back({key, fresh.model, fresh.animation});
        } else {
            session_add_root(session, fresh.model, fresh.animation, fresh.row);
        }
    }
    session_exchange_roots(session, all, lost);
    for (const int32_t key : gone) { session_remove_root(session, key); }
    enter_list(session, *list);
}

void measure(Session* session) {
    change_scene_fields(session);
    session->radius = EMPTY_SCENE_RADIUS;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        session_grow_radius(session, root.model);
    }
}

bool refuse(const char* kind, const std::string& text) {
    problem_set(kind, LoadFailure{text, {}, 0, {}});
    return false;
}

// Changes to the models that would be read again.
int64_t changes_to_lose(const Session* session, const Again& again) {
    int64_t changes = 0;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (root.row > 0 && again.list) { changes += model_tree_changes(root.model); }
    }
    for (const int32_t key : again.keys) {
        changes += model_tree_changes(list_find<RootModel>(&session->root_models, key)->model);
    }
    return changes;
}

bool may_read_again(const Session* session, const Again& again, bool force) {
    const int64_t changes = force ? 0 : changes_to_lose(session, again);
    return changes == 0 || refuse(PROBLEM_UNSAVED, "a reload would lose " + std::to_string(changes) +
                                                       " unsaved change" + (changes > 1 ? "s" : "") + ": say -force");
}

}  // namespace

bool scene_open(Application* app, const char* path, SceneLoad* out) {
    const std::string name = path_with_separators(path);
    Session* session = &app->session;
    session_status(session, "Loading...");
    const FileKind kind = file_kind(name.c_str());
    Staged staged;
    if (!read_beside(out, name.c_str(), staged, [&] { return stage(name, kind, &staged); })) {
        return tell_failure(session);
    }
    selection_clear(session);
    session_release_roots(session);
    session_clear_bounds(session);
    reset_view(&app->view);
    const std::vector<int32_t> ids = enter(session, &staged);
    view_fit(&app->view, session->radius, false);
    app->view.focus = scene_centre(session);
    fill_result(session, ids, out);
    report_replaced(session);
    return true;
}

bool scene_add(Application* app, const char* path, SceneLoad* out) {
    const std::string name = path_with_separators(path);
    Session* session = &app->session;
    session_status(session, "Loading...");
    const FileKind kind = file_kind(name.c_str());
    // Before it is read, so that its images never come into the registry.
    if (kind == FILE_KIND_SCENE && session->animation_path != nullptr) {
        refuse(PROBLEM_STATE, "the scene has a scene list already");
        return tell_failure(session);
    }
    Staged staged;
    if (!read_beside(out, name.c_str(), staged, [&] { return stage(name, kind, &staged); })) {
        return tell_failure(session);
    }
    const std::vector<int32_t> ids = enter(session, &staged);
    view_fit_scene(&app->view, session);
    fill_result(session, ids, out);
    session_status(session, "Ready");
    return true;
}

bool scene_reload(Application* app, int32_t id, bool force, SceneLoad* out) {
    Session* session = &app->session;
    if (!may_read_again(session, what_again(session, id), force)) { return false; }
    session_status(session, "Loading...");
    const Again again = what_again(session, id);
    if (id != 0 && again.keys.empty() && !again.list) {
        refuse(PROBLEM_STATE, "no file was read for this model");
        return tell_failure(session);
    }
    if (!may_read_again(session, again, force)) { return tell_failure(session); }
    Staged models;
    Staged list;
    if (!read_beside(out, "", list, [&] { return stage_again(session, again, &models, &list); })) {
        return tell_failure(session);
    }
    session_exchange_roots(session, fresh_models(again, &models), &out->lost);
    if (again.list) { exchange_rows(session, &list, &out->lost); }
    hold_time(session);
    measure(session);
    scene_evaluate(session);
    std::vector<int32_t> ids;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (id == 0 || state_id(session, root) == id || (again.list && root.row > 0)) {
            ids.push_back(state_id(session, root));
        }
    }
    fill_result(session, ids, out);
    report_replaced(session);
    return true;
}

int64_t model_tree_changes(const Model* model) {
    if (model == nullptr) { return 0; }
    int64_t changes = model_unsaved_changes(model);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { changes += model_tree_changes(link.model); }
    }
    return changes;
}

int64_t model_tree_triangles(const Model* model) {
    if (model == nullptr) { return 0; }
    int64_t total = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        total += model_count_triangles(model, layer.name);
    }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { total += model_tree_triangles(link.model); }
    }
    return total;
}

}  // namespace pelt
