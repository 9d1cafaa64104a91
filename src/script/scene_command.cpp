// The verb "scene": finding the form, its help, its failures. What surprises: unlike every other verb it serves no
// events, takes each argument as one word and raises errors.
#include "script/scene_call.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

#include "application/application.h"
#include "edit/history.h"
#include "foundation/text.h"
#include "motion/transform_state.h"
#include "scene/layer.h"
#include "scene/model.h"
#include "script/scene_reply.h"
#include "script/tcl_glue.h"

#include <tcl.h>

namespace pelt {

namespace {

constexpr char CHILD_LETTER = 'c';
constexpr size_t SHOWN_WORD = 60;  // bytes of a wrong word that a message repeats

Problem refusal;  // of the call in hand; its kind is empty while there is none

Tcl_Obj* run_help(const SceneWords& words);

constexpr SceneForm OWN_FORMS[] = {
    {"help", "?WORD?", 0, 1, "the forms with their arguments and what they do; of one form its text", run_help},
};

std::span<const SceneForm> scene_own_forms() { return OWN_FORMS; }

// The tables of the forms, one a file.
constexpr std::span<const SceneForm> (*TABLES[])() = {
    scene_file_forms,         scene_model_forms,        scene_view_forms,         scene_picture_forms,
    scene_pick_forms,         scene_mark_forms,         scene_history_forms,      scene_point_change_forms,
    scene_face_change_forms,  scene_layer_change_forms, scene_place_change_forms, scene_joint_change_forms,
    scene_child_change_forms, scene_paste_forms,        scene_save_forms,         scene_own_forms,
};

std::vector<const SceneForm*> all_forms() {
    std::vector<const SceneForm*> forms;
    for (const auto table : TABLES) {
        for (const SceneForm& form : table()) { forms.push_back(&form); }
    }
    return forms;
}

const SceneForm* find_form(const char* word) {
    for (const auto table : TABLES) {
        for (const SceneForm& form : table()) {
            if (std::strcmp(form.word, word) == 0) { return &form; }
        }
    }
    return nullptr;
}

std::string form_usage(const SceneForm& form) {
    return std::string(form.word) + (form.arguments[0] != '\0' ? " " : "") + form.arguments;
}

std::string known_words() {
    std::string words;
    for (const SceneForm* form : all_forms()) { words += (words.empty() ? "" : ", ") + std::string(form->word); }
    return words;
}

Tcl_Obj* refuse_word(const char* word) { return scene_refuse_argument("word", word, known_words()); }

Tcl_Obj* run_help(const SceneWords& words) {
    if (words.has(0)) {
        const SceneForm* form = find_form(words.raw(0));
        if (form == nullptr) { return refuse_word(words.raw(0)); }
        return reply_text(form_usage(*form) + ": " + form->help);
    }
    ReplyList list;
    for (const SceneForm* form : all_forms()) {
        list.add(ReplyList()
                     .add("word", reply_text(form->word))
                     .add("arguments", reply_text(form->arguments))
                     .add("help", reply_text(form->help))
                     .value());
    }
    return list.value();
}

Tcl_Obj* run_form(int argc, const char* const* argv) {
    const SceneForm* form = argc > 0 ? find_form(argv[0]) : nullptr;
    if (argc == 0) {
        return scene_refuse(PROBLEM_ARGUMENT, "wrong # args: should be \"sorvel scene WORD ?argument ...?\"");
    }
    if (form == nullptr) { return refuse_word(argv[0]); }
    const SceneWords words{argc - 1, argv + 1};
    if (words.count < form->least || words.count > form->most) {
        return scene_refuse(PROBLEM_ARGUMENT, "wrong # args: should be \"sorvel scene " + form_usage(*form) + "\"");
    }
    history_command_begin(form->word, true);
    Tcl_Obj* result = form->run(words);
    if (result == nullptr) { history_put_back(); }
    history_command_end();
    return result;
}

// A whole text as a number of the type.
template <typename Number>
bool read_number(const char* word, Number* value) {
    const char* end = word + std::strlen(word);
    const auto read = std::from_chars(word, end, *value);
    return read.ec == std::errc{} && read.ptr == end && word != end;
}

std::string shown(const char* word) {
    if (std::strlen(word) <= SHOWN_WORD) { return word; }
    return std::string(word, text_cut_length(word, SHOWN_WORD)) + "...";
}

// Raises what the refusal says. errorCode has its parts, for programs.
int raise(Tcl_Interp* interp, const Problem& problem) {
    ReplyList code;
    code.add(reply_text("PELT"))
        .add(reply_text(problem.kind))
        .add(reply_text(problem.what.file))
        .add(reply_int(problem.what.line))
        .add(reply_text(problem.what.source));
    Tcl_SetObjErrorCode(interp, code.value());
    std::string text = problem.what.text;
    if (!problem.what.file.empty() && text.find(problem.what.file) == std::string::npos) {
        text += " (" + problem.what.file;
        if (problem.what.line > 0) { text += ", line " + std::to_string(problem.what.line); }
        text += ")";
    }
    Tcl_SetObjResult(interp, reply_text(text));
    return TCL_ERROR;
}

}  // namespace

std::string SceneWords::text(int index) const {
    std::string text;
    tcl_to_system(words[index], std::strlen(words[index]), &text);
    return text;
}

int scene_command(int argc, const char* const* argv) {
    Tcl_Interp* interp = tcl_interp();
    if (interp == nullptr) { return TCL_OK; }
    Tcl_ResetResult(interp);
    refusal = Problem{};
    Tcl_Obj* result = run_form(argc, argv);
    if (result == nullptr) {
        const Problem problem = refusal;
        return tcl_interp() != nullptr ? raise(interp, problem) : TCL_OK;
    }
    Tcl_SetObjResult(interp, result);
    return TCL_OK;
}

Tcl_Obj* scene_refuse(const char* kind, const std::string& text) {
    refusal = Problem{kind, LoadFailure{text, {}, 0, {}}};
    problem_set(kind, refusal.what);
    return nullptr;
}

Tcl_Obj* scene_refuse_argument(const std::string& what, const char* word, const std::string& allowed) {
    std::string given;
    tcl_to_system(word, std::strlen(word), &given);
    return scene_refuse(PROBLEM_ARGUMENT, "bad " + what + " \"" + shown(given.c_str()) + "\": must be " + allowed);
}

Tcl_Obj* scene_refuse_load() {
    refusal = problem_last();
    return nullptr;
}

bool scene_read_int(const char* what, const char* word, int32_t least, int32_t most, int32_t* value) {
    int32_t number = 0;
    if (!read_number(word, &number) || number < least || number > most) {
        scene_refuse_argument(what, word,
                              "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
        return false;
    }
    *value = number;
    return true;
}

bool scene_read_real(const char* what, const char* word, float least, float most, float* value) {
    float number = 0.0f;
    if (!read_number(word, &number) || !(number >= least && number <= most)) {
        scene_refuse_argument(what, word, "a number from " + real_text(least) + " to " + real_text(most));
        return false;
    }
    *value = number;
    return true;
}

bool scene_read_flag(const char* what, const char* word, bool* value) {
    int flag = 0;
    if (Tcl_GetBoolean(nullptr, const_cast<char*>(word), &flag) != TCL_OK) {
        scene_refuse_argument(what, word, "on or off");
        return false;
    }
    *value = flag != 0;
    return true;
}

bool scene_read_place(const char* word, SceneModel* found) {
    *found = SceneModel{};
    const Session& session = application()->session;
    const bool is_child = word[0] == CHILD_LETTER;
    int32_t id = 0;
    if (!read_number(word + (is_child ? 1 : 0), &id) || id < 1) {
        scene_refuse_argument("id", word, "the number of a model, or c and the number of a child");
        return false;
    }
    if (is_child) {
        if (const ChildState* state = list_find<const ChildState>(&session.child_states, id)) {
            *found = SceneModel{state->link != nullptr ? state->link->model : nullptr, state->link};
        }
    } else if (const ModelState* state = list_find<const ModelState>(&session.model_states, id)) {
        found->model = state->model;
    }
    if (found->model != nullptr || found->link != nullptr) { return true; }
    scene_refuse_argument("id", word, std::string("that of a ") + (is_child ? "child" : "model") + " in the scene");
    return false;
}

bool scene_read_model(const char* word, SceneModel* found) {
    if (!scene_read_place(word, found)) { return false; }
    if (found->model != nullptr) { return true; }
    scene_refuse(PROBLEM_STATE, "the child " + std::string(word) + " has no model");
    return false;
}

bool scene_read_layer(const Model* model, const SceneWords& words, int index, const Layer** layer) {
    *layer = list_find<const Layer>(&model->layers, words.text(index).c_str());
    if (*layer != nullptr) { return true; }
    // A name that is none in the system's encoding goes by what is told of it.
    for (const Layer& each : list_elements<Layer>(model->layers)) {
        if (system_to_tcl(each.name) == words.raw(index)) {
            *layer = &each;
            return true;
        }
    }
    std::string names;
    for (const Layer& each : list_elements<Layer>(model->layers)) {
        if (names.size() > 400) {
            names += ", ...";
            break;
        }
        names += (names.empty() ? "" : ", ") + std::string(each.name);
    }
    scene_refuse_argument("layer", words.raw(index), names.empty() ? "a layer, of which this model has none" : names);
    return false;
}

Tcl_Obj* scene_reply_id(Model* model, ChildLink* link) {
    Session* session = &application()->session;
    if (link != nullptr) {
        const ChildState* state = child_state(session, link);
        return reply_text(scene_child_name(state != nullptr ? state->id : 0));
    }
    const ModelState* state = model_state(session, model);
    return reply_int(state != nullptr ? state->id : 0);
}

std::string scene_child_name(int32_t id) { return CHILD_LETTER + std::to_string(id); }

}  // namespace pelt
