// What was done to the scene, step by step.
//
// What surprises: what a command changes goes into a set of its own, also inside a step that a script has begun, so
// that a command that fails half way can be put back alone.
#include "edit/history.h"

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <utility>

#include "edit/change_set.h"
#include "edit/parked.h"
#include "images/image_registry.h"
#include "scene/change.h"

namespace pelt {

namespace {

struct Step {
    std::string name;
    ChangeSet changes;

    int64_t bytes() const { return static_cast<int64_t>(sizeof *this + name.capacity()) + changes.bytes(); }
};

struct History {
    explicit History(Session* kept) : session(kept), command(kept, &parked), open_step(kept, &parked) {}

    Session* session;
    Parked parked;            // before the sets, which name what is in it
    ChangeSet command;        // of the command at work
    ChangeSet open_step;      // of the commands before it in the step that a script has begun
    std::deque<Step> done;    // the last one is taken back first
    std::deque<Step> undone;  // the first one is done again first
    std::string command_name;
    std::string step_name;
    bool step_open = false;
    bool muted = false;   // until the command at work ends: all that stood was replaced
    bool whole = false;   // the command at work is to be kept whatever the limit is
    bool joined = false;  // another command ran inside it
    bool exchanging = false;
    int32_t depth = 0;  // commands at work, one inside the other
    int64_t limit = HISTORY_LIMIT;
    int64_t step_bytes = 0;  // of all steps
    int64_t dropped = 0;
    int64_t beginnings = 0;
};

// Plain storage would be destroyed while scripts may still run at the end of the process.
std::unique_ptr<History>& slot() {
    static auto& history = *new std::unique_ptr<History>;
    return history;
}

void forget_steps(History* history) {
    // Outside of everything first: what is parked goes with the last that names it.
    history->command.clear();
    history->open_step.clear();
    history->done.clear();
    history->undone.clear();
    history->step_bytes = 0;
}

int64_t kept_bytes(const History& history) {
    return history.step_bytes + history.parked.bytes() + image_held_bytes() + history.open_step.bytes();
}

// What was done first goes first, and behind all of that what would be done again last.
void hold_limit(History* history) {
    while (kept_bytes(*history) > history->limit && !(history->done.empty() && history->undone.empty())) {
        std::deque<Step>& steps = history->done.empty() ? history->undone : history->done;
        const bool oldest = !history->done.empty();
        history->step_bytes -= oldest ? steps.front().bytes() : steps.back().bytes();
        oldest ? steps.pop_front() : steps.pop_back();
        ++history->dropped;
    }
}

void add_step(History* history, const std::string& name, ChangeSet* changes) {
    for (const Step& step : history->undone) { history->step_bytes -= step.bytes(); }
    history->undone.clear();
    history->done.push_back(Step{name, std::move(*changes)});
    history->step_bytes += history->done.back().bytes();
    hold_limit(history);
}

// ---- what is heard ----

// Whether what is told now is to be kept. A change that no command makes leaves nothing that could be put back in
// order.
bool listens(History* history) {
    if (history->exchanging || history->muted) { return false; }
    if (history->depth > 0) { return history->limit > 0 || history->step_open || history->whole; }
    forget_steps(history);
    ++history->beginnings;
    return false;
}

void hear(void* context, uint64_t model_serial, Model* model, Layer* layer, int32_t kind, int32_t place_slot) {
    auto* history = static_cast<History*>(context);
    if (!listens(history)) { return; }
    const uint64_t layer_serial = layer != nullptr ? layer->serial : 0;
    history->command.note(ChangePlace{model_serial, layer_serial, kind, place_slot}, model, layer);
}

void hear_fields(void* context, Model* model) { hear(context, model->serial, model, nullptr, PLACE_FIELDS, 0); }

void hear_slot(void* context, Model* model, Layer* layer, ContentList list, int32_t place_slot) {
    hear(context, model->serial, model, layer, list, place_slot);
}

void hear_scene_fields(void* context, Session* session) {
    if (session == static_cast<History*>(context)->session) {
        hear(context, 0, nullptr, nullptr, PLACE_SCENE_FIELDS, 0);
    }
}

void hear_scene_slot(void* context, Session* session, SceneList list, int32_t place_slot) {
    constexpr PlaceKind KINDS[] = {PLACE_ROOT, PLACE_MODEL_STATE, PLACE_ANIMATION};
    auto* history = static_cast<History*>(context);
    // A state that comes to be because it is asked for is no change.
    const bool asked_for = list == SCENE_MODEL_STATES && history->depth == 0;
    if (session == history->session && !asked_for) { hear(context, 0, nullptr, nullptr, KINDS[list], place_slot); }
}

bool keep_layer(void* context, Model*, Layer* layer) {
    auto* history = static_cast<History*>(context);
    if (!listens(history) || !history->parked.is_named_layer(layer->serial)) { return false; }
    history->parked.put_layer(*layer);
    return true;
}

bool keep_model(void* context, Model* model) {
    auto* history = static_cast<History*>(context);
    if (!listens(history) || !history->parked.is_named_model(model->serial)) { return false; }
    history->parked.put_model(model);
    return true;
}

bool keep_root(void* context, Session* session, const RootModel& root) {
    auto* history = static_cast<History*>(context);
    const bool named =
        session == history->session && listens(history) && history->parked.is_named_model(root.model->serial);
    if (named) { history->parked.put_model(root.model, root.animation); }
    return named;
}

void hear_scene_replaced(void* context, Session* session) {
    auto* history = static_cast<History*>(context);
    if (session != history->session || history->exchanging) { return; }
    forget_steps(history);
    history->step_open = false;
    history->dropped = 0;
    ++history->beginnings;
    history->muted = history->depth > 0;
}

ChangeListener listener{nullptr,    hear_fields, hear_slot, hear_scene_fields,  hear_scene_slot,
                        keep_layer, keep_model,  keep_root, hear_scene_replaced};

void exchange(History* history, ChangeSet* changes) {
    history->exchanging = true;
    changes->exchange();
    history->exchanging = false;
}

// A command inside another one finds a scene that is being changed.
bool is_free(const History& history) { return history.depth <= 1 && history.command.empty(); }

// Moves one step between the two lists.
bool take_step(std::string* name, bool back) {
    History* history = slot().get();
    name->clear();
    if (history == nullptr) { return true; }
    if (history->step_open || !is_free(*history)) { return false; }
    std::deque<Step>& from = back ? history->done : history->undone;
    if (from.empty()) { return true; }
    Step& taken = back ? from.back() : from.front();
    history->step_bytes -= taken.bytes();
    exchange(history, &taken.changes);
    history->step_bytes += taken.bytes();
    *name = taken.name;
    if (back) {
        history->undone.push_front(std::move(taken));
        from.pop_back();
    } else {
        history->done.push_back(std::move(taken));
        from.pop_front();
    }
    hold_limit(history);
    return true;
}

bool same_file(const Model& model, const Model& other) {
    if (&model == &other) { return true; }
    const std::string file = model_file(&model);
    return !file.empty() && file == model_file(&other);
}

template <typename Visit>
void for_each_model(Model* model, const Visit& visit) {
    if (model == nullptr) { return; }
    visit(model);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { for_each_model(link.model, visit); }
    }
}

template <typename Visit>
void for_each_in_scene(const Session* session, const Visit& visit) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) { for_each_model(root.model, visit); }
}

}  // namespace

void history_attach(Session* session) {
    history_detach();
    slot() = std::make_unique<History>(session);
    listener.context = slot().get();
    change_listener = &listener;
}

void history_detach() {
    change_listener = nullptr;
    if (slot() != nullptr) { forget_steps(slot().get()); }
    slot().reset();
}

void history_clear() {
    History* history = slot().get();
    if (history == nullptr) { return; }
    forget_steps(history);
    history->step_open = false;
    history->dropped = 0;
}

void history_command_begin(const char* name, bool whole) {
    History* history = slot().get();
    if (history == nullptr) { return; }
    history->joined = history->depth > 0;
    if (history->depth++ > 0) { return; }
    history->command_name = name;
    history->whole = whole;
}

void history_command_end() {
    History* history = slot().get();
    if (history == nullptr || history->depth == 0 || --history->depth > 0) { return; }
    if (history->muted) {
        history->muted = false;
        forget_steps(history);
    } else if (!history->command.empty()) {
        if (history->step_open) {
            history->open_step.merge(&history->command);
        } else {
            history->command.settle();
            if (!history->command.empty()) { add_step(history, history->command_name, &history->command); }
        }
    }
}

void history_command_name(const char* name) {
    History* history = slot().get();
    if (history != nullptr && history->depth == 1) { history->command_name = name; }
}

void history_put_back() {
    History* history = slot().get();
    if (history == nullptr || history->command.empty() || history->joined || history->depth != 1) { return; }
    exchange(history, &history->command);
    history->command.clear();
}

bool history_step_begin(const std::string& name) {
    History* history = slot().get();
    if (history == nullptr || history->step_open || !is_free(*history)) { return false; }
    history->step_open = true;
    history->step_name = name;
    return true;
}

bool history_step_end(std::string* name) {
    History* history = slot().get();
    name->clear();
    if (history == nullptr || !history->step_open || !is_free(*history)) { return false; }
    history->step_open = false;
    history->open_step.settle();
    if (history->open_step.empty()) { return true; }
    *name = history->step_name;
    add_step(history, history->step_name, &history->open_step);
    return true;
}

bool history_step_cancel() {
    History* history = slot().get();
    if (history == nullptr || !history->step_open || !is_free(*history)) { return false; }
    history->step_open = false;
    exchange(history, &history->open_step);
    history->open_step.clear();
    return true;
}

bool history_step_is_open() { return slot() != nullptr && slot()->step_open; }

bool history_undo(std::string* name) { return take_step(name, true); }

bool history_redo(std::string* name) { return take_step(name, false); }

HistoryState history_state() {
    const History* history = slot().get();
    if (history == nullptr) { return {}; }
    HistoryState state;
    state.position = static_cast<int32_t>(history->done.size());
    state.bytes = kept_bytes(*history);
    state.limit = history->limit;
    state.dropped = history->dropped;
    state.beginnings = history->beginnings;
    for (const auto* steps : {&history->done, &history->undone}) {
        for (const Step& step : *steps) { state.names.push_back(step.name); }
    }
    return state;
}

void history_set_limit(int64_t bytes) {
    if (slot() == nullptr) { return; }
    slot()->limit = bytes;
    hold_limit(slot().get());
}

bool history_point_before(Model* model, int32_t id, Vec3* place) {
    if (model == nullptr) { return false; }
    const int32_t point_slot = list_slot_for(&model->points, id);
    const History* history = slot().get();
    if (history != nullptr) {
        if (history->step_open && history->open_step.knows_point(model->serial, point_slot)) {
            return history->open_step.point_before(model->serial, point_slot, id, place);
        }
        if (history->command.knows_point(model->serial, point_slot)) {
            return history->command.point_before(model->serial, point_slot, id, place);
        }
    }
    const Point* point = list_find<const Point>(&model->points, id);
    if (point != nullptr) { *place = point->position; }
    return point != nullptr;
}

void history_mark_saved(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return; }
    const bool differs = history_file_changes(session, model) != 0;
    for_each_in_scene(session, [model](Model* each) {
        if (same_file(*model, *each)) { model_mark_saved(each); }
    });
    model_mark_saved(model);
    if (!differs || slot() == nullptr) { return; }
    slot()->parked.for_each_model([model](Model* root) {
        for_each_model(root, [model](Model* each) {
            if (same_file(*model, *each)) { each->saved_version = VERSION_NOWHERE; }
        });
    });
}

int64_t history_file_changes(const Session* session, const Model* model) {
    if (session == nullptr || model == nullptr) { return 0; }
    int64_t most = model_unsaved_changes(model);
    for_each_in_scene(session, [model, &most](const Model* each) {
        if (same_file(*model, *each)) { most = std::max(most, model_unsaved_changes(each)); }
    });
    return most;
}

int64_t history_changes(const Session* session) {
    if (session == nullptr) { return 0; }
    std::map<std::string, int64_t> of_files;
    int64_t total = 0;
    for_each_in_scene(session, [&](const Model* each) {
        const int64_t changes = model_unsaved_changes(each);
        const std::string file = changes != 0 ? model_file(each) : std::string();
        if (file.empty()) {
            total += changes;
        } else {
            of_files[file] = std::max(of_files[file], changes);
        }
    });
    for (const auto& [file, changes] : of_files) { total += changes; }
    return total;
}

}  // namespace pelt
