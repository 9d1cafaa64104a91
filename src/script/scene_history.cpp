// The forms of "scene" that take back what was done and do it again.
#include <cstring>

#include "application/application.h"
#include "edit/history.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr int32_t LIMIT_MOST = INT32_MAX;

Session* session() { return &application()->session; }

Tcl_Obj* refuse_step() {
    return scene_refuse(PROBLEM_STATE, history_step_is_open() ? "a step is open: end or cancel it first"
                                                              : "another command is at work");
}

Tcl_Obj* take(bool (*move)(std::string* name)) {
    std::string name;
    return move(&name) ? reply_text(name) : refuse_step();
}

Tcl_Obj* undo(const SceneWords&) { return take(history_undo); }

Tcl_Obj* redo(const SceneWords&) { return take(history_redo); }

Tcl_Obj* tell_history() {
    const HistoryState state = history_state();
    ReplyList names;
    for (const std::string& name : state.names) { names.add(reply_text(name)); }
    return ReplyList()
        .add("names", names.value())
        .add("position", reply_int(state.position))
        .add("bytes", reply_int(state.bytes))
        .add("limit", reply_int(state.limit))
        .add("dropped", reply_int(state.dropped))
        .value();
}

Tcl_Obj* ask_history(const SceneWords& words) {
    if (!words.has(0)) { return tell_history(); }
    if (std::strcmp(words.raw(0), "-limit") != 0) { return scene_refuse_argument("option", words.raw(0), "-limit"); }
    if (!words.has(1)) { return scene_refuse_argument("option", words.raw(0), "followed by a number of bytes"); }
    int32_t limit = 0;
    if (!scene_read_int("limit", words.raw(1), 0, LIMIT_MOST, &limit)) { return nullptr; }
    history_set_limit(limit);
    return tell_history();
}

Tcl_Obj* begin_step(const SceneWords& words) {
    if (!words.has(1) || words.raw(1)[0] == '\0') {
        return scene_refuse_argument("name", words.has(1) ? words.raw(1) : "", "the name of the step");
    }
    return history_step_begin(words.text(1)) ? reply_text("") : refuse_step();
}

Tcl_Obj* refuse_end() {
    return history_step_is_open() ? scene_refuse(PROBLEM_STATE, "another command is at work")
                                  : scene_refuse(PROBLEM_STATE, "no step was begun");
}

Tcl_Obj* end_step(const SceneWords&) {
    std::string name;
    return history_step_end(&name) ? reply_text(name) : refuse_end();
}

Tcl_Obj* cancel_step(const SceneWords&) { return history_step_cancel() ? reply_text("") : refuse_end(); }

Tcl_Obj* run_step(const SceneWords& words) {
    const char* what = words.raw(0);
    const bool begins = std::strcmp(what, "begin") == 0;
    if (begins) { return begin_step(words); }
    if (std::strcmp(what, "end") != 0 && std::strcmp(what, "cancel") != 0) {
        return scene_refuse_argument("word", what, "begin, end or cancel");
    }
    if (words.has(1)) { return scene_refuse_argument("word", words.raw(1), "left out"); }
    return what[0] == 'e' ? end_step(words) : cancel_step(words);
}

Tcl_Obj* ask_changed(const SceneWords& words) {
    if (!words.has(0)) { return reply_int(history_changes(session())); }
    SceneModel found{};
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    return reply_int(history_file_changes(session(), found.model));
}

constexpr SceneForm FORMS[] = {
    {"undo", "", 0, 0, "takes the last step back: its name, or nothing where there is none", undo},
    {"redo", "", 0, 0, "does the last step that was taken back again: its name, or nothing", redo},
    {"history", "?-limit BYTES?", 0, 2, "the steps that can be taken back, and what they cost", ask_history},
    {"step", "WORD ?NAME?", 1, 2, "begin with a name, then end or cancel: one step of several calls, or none of them",
     run_step},
    {"changed", "?ID?", 0, 1, "how many changes the files of the scene, or that of one model, have not got",
     ask_changed},
};

}  // namespace

std::span<const SceneForm> scene_history_forms() { return FORMS; }

}  // namespace pelt
