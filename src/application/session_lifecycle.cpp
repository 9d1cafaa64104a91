// The life of the scene: set up, reset, load, reload, rename, find. What surprises: almost every step reports to the
// script, and a script may load, reload or reset from there. So nothing here keeps a pointer into the scene across a
// report, and a reload works on variables of its own, which it puts back only when it fails.
#include "application/session_lifecycle.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "application/problem.h"
#include "edit/bounds.h"
#include "edit/selection.h"
#include "formats/layer_image.h"
#include "formats/model_reader.h"
#include "formats/scene_list.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr float DEFAULT_STEP_SECONDS = 1.0f;
constexpr const char* MODEL_EXTENSION = ".mod";

struct ModelToLoad {
    std::string path;
    bool long_paths;
};

struct AnimationToLoad {
    std::string path;
    std::optional<std::string> base;  // with one its models may have long paths
};

// What a reload has to load: an animation, which goes first, or a list of model files.
struct ReloadWork {
    std::optional<AnimationToLoad> animation;
    std::vector<ModelToLoad> models;
};

// What a failed reload left behind for the next one. Never destroyed: scripts may still run while the process ends.
ReloadWork& reload_left_over() {
    static ReloadWork& left_over = *new ReloadWork;
    return left_over;
}

void init_lists(Session* session) {
    list_init(&session->model_states, sizeof(ModelState), KEY_INT);
    list_init(&session->triangle_caches, sizeof(TriangleCache), KEY_INT);
    list_init(&session->point_states, sizeof(PointState), KEY_INT);
    list_init(&session->joint_states, sizeof(JointState), KEY_INT);
    list_init(&session->child_states, sizeof(ChildState), KEY_INT);
    list_init(&session->root_models, sizeof(RootModel), KEY_INT);
}

// The name under which a model is read again: as it was opened, unless it was renamed since. Intended: a file that was
// opened under another extension is not found again, unless its paths may be long.
std::string reload_path(const Model* model) {
    const std::string opened = model_file(model);
    const size_t extension = opened.size() - std::min(opened.size(), std::strlen(MODEL_EXTENSION));
    return str_equal_ignoring_case(opened.c_str() + extension, MODEL_EXTENSION) ||
                   (model->long_paths != 0 && !opened.empty())
               ? opened
               : model_directory(model) + model->name + MODEL_EXTENSION;
}

// Intended: what an earlier failure left stays in force where this scene says nothing about it, and a left-over
// animation even wins over the models of this scene.
void list_what_stands(const Session* session, ReloadWork* work) {
    if (list_count(&session->root_models) == 0) { return; }
    if (session->animation_path != nullptr) {
        work->animation = AnimationToLoad{session->animation_path, std::nullopt};
        if (session->animation_base != nullptr) { work->animation->base = session->animation_base; }
        return;
    }
    work->models.clear();
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        work->models.push_back({reload_path(root.model), root.model->long_paths != 0});
    }
}

// The one way of a loaded model into the scene.
int32_t enter_model(Session* session, Model* model) {
    session_grow_radius(session, model);
    const int32_t id = session_add_root(session, model, nullptr);
    session_status(session, "Ready");
    return id;
}

void enter_animation(Session* session, const AnimationSet* set, int keep_radius) {
    for (int32_t row = 0; row < set->count && row < ANIMATION_ROW_LIMIT; ++row) {
        session_add_root(session, set->models[row], set->animations[row], row + 1);
        if (!keep_radius) { session_grow_radius(session, set->models[row]); }
    }
    change_scene_fields(session);
    session->anim_end = set->duration;
    if (session->anim_time > session->anim_end) { session->anim_time = session->anim_end; }
}

int32_t load_model(Session* session, const ModelToLoad& wanted) {
    session_status(session, "Loading...");
    load_error_set(nullptr);
    if (Model* model = model_load(wanted.path.c_str(), nullptr, wanted.long_paths)) {
        return enter_model(session, model);
    }
    problem_set_load(wanted.path.c_str());
    session_message(session, load_error_get());
    session_message(session, "Load failed");
    return 0;
}

int load_animation(Session* session, const AnimationToLoad& wanted, int keep_radius) {
    session_close_all(session);
    session_status(session, "Loading...");
    const char* base = wanted.base ? wanted.base->c_str() : nullptr;
    AnimationSet* set = animation_load(wanted.path.c_str(), {base, base != nullptr});
    if (set == nullptr) {
        problem_set_load(wanted.path.c_str());
        session_message(session, animation_error());
        return 0;
    }
    enter_animation(session, set, keep_radius);
    scene_evaluate(session);
    session_set_animation_path(session, wanted.path.c_str(), base);
    delete set;
    session_status(session, "Ready");
    return 1;
}

int reload_animation(Session* session, ReloadWork* work) {
    if (!load_animation(session, *work->animation, 1)) {
        session_close_all(session);
        reload_left_over() = std::move(*work);
        return 0;
    }
    ReloadWork& left_over = reload_left_over();
    if (!work->models.empty() && left_over.models.empty()) { left_over.models = std::move(work->models); }
    scene_evaluate(session);
    return 1;
}

int reload_models(Session* session, ReloadWork* work) {
    size_t loaded = 0;
    for (const ModelToLoad& wanted : work->models) { loaded += load_model(session, wanted) > 0 ? 1 : 0; }
    if (loaded < work->models.size()) {
        session_close_all(session);
        reload_left_over() = std::move(*work);
        return 0;
    }
    return 1;
}

}  // namespace

void session_init(Session* session) {
    if (session == nullptr) { return; }
    file_table_init();
    *session = Session{};
    init_lists(session);
    selection_init(session);
    session_build_digits(session);
    session_reset(session, 1);
}

void session_reset(Session* session, int restore_display) {
    if (session == nullptr) { return; }
    selection_clear(session);
    clipboard_clear(session);
    session_close_all(session);
    // A report of the closing may have run a script that loaded something.
    session_release_roots(session);
    for (KeyedList* list : {&session->model_states, &session->triangle_caches, &session->point_states,
                            &session->joint_states, &session->child_states, &session->root_models}) {
        list_clear(list);
    }
    if (restore_display) { session_restore_display(session); }
    session->anim_step = DEFAULT_STEP_SECONDS;
    session_clear_bounds(session);
}

int32_t session_load_model(Session* session, const char* path) {
    if (session == nullptr || path == nullptr) { return 0; }
    return load_model(session, {path, false});  // copied: the report may run what releases the text
}

int32_t session_add_model(Session* session, Model* model) {
    return session != nullptr && model != nullptr ? enter_model(session, model) : 0;
}

int session_load_animation(Session* session, const char* path, int keep_radius) {
    if (session == nullptr || path == nullptr) { return 0; }
    // Copied: it may be the path that closing the scene releases.
    return load_animation(session, {path, std::nullopt}, keep_radius);
}

int session_reload(Session* session) {
    if (session == nullptr) { return 0; }
    ReloadWork work = std::exchange(reload_left_over(), ReloadWork{});
    list_what_stands(session, &work);
    session_close_all(session);
    return work.animation ? reload_animation(session, &work) : reload_models(session, &work);
}

int session_rename_model(Session* session, int32_t id, const char* path) {
    if (session == nullptr || path == nullptr) { return 0; }
    const ModelState* state = list_find<ModelState>(&session->model_states, id);
    if (state == nullptr) { return 0; }
    if (!path_fits(path)) {
        load_error_set_format(PATH_TOO_LONG, path);
        session_message(session, load_error_get());
        return 0;
    }
    return model_rename(state->model, path);
}

void session_save_model(Session* session) { session_message(session, "Save not implemented"); }

int32_t session_find_model(Session* session, const char* name) {
    if (session == nullptr || name == nullptr) { return 0; }
    list_clear(&session->file_list);
    for (const ModelState& state : list_elements<ModelState>(session->model_states)) {
        if (state.model != nullptr && str_equal(state.model->name, name)) { return state.id; }
    }
    for (const ChildState& state : list_elements<ChildState>(session->child_states)) {
        const Model* model = state.link != nullptr ? state.link->model : nullptr;
        if (model != nullptr && str_equal(model->name, name)) { return state.id; }
    }
    return 0;
}

const char* session_find_images(Session* session, int32_t id) {
    if (session == nullptr) { return nullptr; }
    const ModelState* state = list_find<ModelState>(&session->model_states, id);
    return state != nullptr && state->model != nullptr ? model_image_names(state->model) : nullptr;
}

int session_replace_model(Session* session, const char* name) {
    if (session == nullptr) { return 0; }
    // Made first: closing may release the text of the name.
    Model* model = model_create(name, nullptr);
    if (model == nullptr) { return 0; }
    session_close_all(session);
    return session_add_model(session, model);
}

}  // namespace pelt
