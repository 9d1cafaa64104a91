// The verbs "add" and "delete", which work on the current model. What surprises: their failures inside the model, such
// as a layer name that is taken, show nothing; only a missing model or argument does.
#include "application/application.h"
#include "edit/selection.h"
#include "scene/layer.h"
#include "scene/session.h"
#include "script/commands.h"

namespace pelt {

namespace {

constexpr int FULL_COLOUR = 127;

constexpr VertexTexts ADD_VERTEX_TEXTS = {
    "sorvel: usage: sorvel add vertex <args>",
    "sorvel: unknown add vertex argument: %s",
    "sorvel: usage: sorvel add vertex point <n> <x> <y> <z>",
    "sorvel: usage: sorvel add vertex normal <n> <x> <y> <z>",
    "sorvel: usage: sorvel add vertex color <n> <r> <g> <b>",
    "sorvel: usage: sorvel add vertex transparency <n> <f>",
};

void cmd_add_layer(Words words) {
    Model* model = command_current_model();
    const char* name = nullptr;
    if (model != nullptr &&
        args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel add layer <name>")) {
        model_add_layer(model, name, FULL_COLOUR, FULL_COLOUR, FULL_COLOUR, 1, 0, 0);
    }
}

void cmd_add_vertex(Words words) { cmd_vertex(words, ADD_VERTEX_TEXTS); }

void cmd_delete_layer(Words words) {
    const char* name = nullptr;
    if (!args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel delete layer <name>")) { return; }
    Session* session = &application()->session;
    session_delete_layer(session, selection_current_model(session), name);
}

constexpr Command ADD_FORMS[] = {
    {"layer", cmd_add_layer, "new layer"},
    {"vertex", cmd_add_vertex},
};

constexpr Command DELETE_FORMS[] = {
    {"layer", cmd_delete_layer, "delete layer"},
};

}  // namespace

void cmd_add(Words words) { command_run_sub(words, "add", UNKNOWN_ATTRIBUTE, ADD_FORMS); }

void cmd_delete(Words words) {
    // The model comes first here: without one the words are not looked at.
    if (command_current_model() != nullptr) { command_run_sub(words, "delete", UNKNOWN_ATTRIBUTE, DELETE_FORMS); }
}

}  // namespace pelt
