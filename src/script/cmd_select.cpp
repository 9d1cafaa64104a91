// The verb "select": fills the selection, names the selected layer, and transforms what is selected. What surprises:
// "select layer" has its result set behind the message box, so that the script gets 0 and not what the box returned.
#include "application/application.h"
#include "edit/bounds.h"
#include "edit/history.h"
#include "edit/pancake.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "scene/layer.h"
#include "script/commands.h"
#include "script/messages.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

constexpr int ABSOLUTE = 0;

Session* session() { return &application()->session; }

void cmd_select_all(Words) { selection_all(session()); }
void cmd_select_clear(Words) { selection_clear(session()); }
void cmd_select_copy(Words) { selection_copy(session()); }
void cmd_select_cut(Words) { selection_cut(session()); }
void cmd_select_paste(Words) { selection_paste(); }
void cmd_select_pancake(Words) { selection_pancake(session()); }
void cmd_select_centre(Words) { command_result_vector(selection_centre(session())); }

void cmd_select_model(Words words) {
    int32_t id = 0;
    if (args_or_usage(arg_read(&id, words[1], ARG_INT), "sorvel: usage: sorvel select model <id>") &&
        !selection_add_model(session(), id)) {
        msg_info("sorvel: model id not found");
    }
}

void cmd_select_child(Words words) {
    int32_t id = 0;
    if (args_or_usage(arg_read(&id, words[1], ARG_INT), "sorvel: usage: sorvel select child <id>") &&
        !selection_add_child(session(), id)) {
        msg_info("sorvel: child id not found");
    }
}

void cmd_select_layer(Words words) {
    const char* name = nullptr;
    if (!args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel select layer <name>")) { return; }
    Application* app = application();
    app->selected_layer[0] = '\0';
    const Model* model = selection_current_model(&app->session);
    if (model == nullptr || model_find_layer(model, name) == nullptr) {
        msg_info_data_format("sorvel: could not select layer: %s", name);
        tcl_result_text("0");
        return;
    }
    str_copy(name, app->selected_layer);
    tcl_result_text("1");
}

void cmd_select_delete(Words) {
    Application* app = application();
    selection_delete(&app->session);
    app->view.focus = scene_centre(&app->session);
}

void cmd_select_translate(Words words) {
    float v[3] = {};
    if (!args_or_usage(args_read_floats(words + 1, v, 3), "sorvel: usage: sorvel select translate <x> <y> <z>")) {
        return;
    }
    if (selection_translate(session(), v[0], v[1], v[2], ABSOLUTE)) {
        view_fit_scene(&application()->view, session());
    } else {
        msg_info("sorvel: translate failed");
    }
}

void cmd_select_scale(Words words) {
    float v[3] = {};
    if (args_or_usage(args_read_floats(words + 1, v, 3), "sorvel: usage: sorvel select scale <x> <y> <z>") &&
        !selection_scale(session(), v[0], v[1], v[2], ABSOLUTE)) {
        msg_info("sorvel: scale failed");
    }
}

void cmd_select_rotate_centre(Words words) {
    float v[3] = {};
    if (args_or_usage(args_read_floats(words, v, 3), "sorvel: usage: sorvel select rotate centre <x> <y> <z>") &&
        !selection_set_centre(session(), v[0], v[1], v[2])) {
        msg_info("sorvel: rotate centre failed");
    }
}

void cmd_select_rotate_axis(Words words) {
    float v[3] = {};
    if (args_or_usage(args_read_floats(words, v, 3), "sorvel: usage: sorvel select rotate axis <x> <y> <z>") &&
        !selection_set_axis(session(), v[0], v[1], v[2])) {
        msg_info("sorvel: rotate axis failed");
    }
}

void cmd_select_rotate(Words words) {
    const char* angles[3] = {};
    if (str_equal(words[1], "centre") || str_equal(words[1], "center")) {
        cmd_select_rotate_centre(words + 2);
    } else if (str_equal(words[1], "axis")) {
        cmd_select_rotate_axis(words + 2);
    } else if (args_or_usage(args_read_texts(words + 1, angles, 3),
                             "sorvel: usage: sorvel select rotate <a1> <a2> <a3>") &&
               !selection_rotate(session(), angles[0], angles[1], angles[2], ABSOLUTE)) {
        msg_info("sorvel: rotate failed");
    }
}

void cmd_select_add(Words words) {
    const char* what = nullptr;
    const char* input = nullptr;
    int32_t id = 0;
    if (!args_or_usage(arg_read(&what, words[1], ARG_TEXT), "sorvel: usage: sorvel select add <what> <args>")) {
        return;
    }
    // Intended: another word does nothing and shows nothing.
    if (str_equal(what, "data")) {
        if (args_or_usage(arg_read(&input, words[2], ARG_TEXT), "sorvel: usage: sorvel select add data <input>")) {
            history_command_name("add data");
            selection_add_data(session(), input);
        }
    } else if (str_equal(what, "child")) {
        if (args_or_usage(arg_read(&id, words[2], ARG_INT), "sorvel: usage: sorvel select add child <id>")) {
            history_command_name("add child");
            selection_add_child_model(session(), id);
        }
    }
}

constexpr Command FORMS[] = {
    {"add", cmd_select_add},
    {"all", cmd_select_all},
    {"centre", cmd_select_centre},
    {"child", cmd_select_child},
    {"clear", cmd_select_clear},
    {"copy", cmd_select_copy},
    {"cut", cmd_select_cut},
    {"delete", cmd_select_delete, "delete model"},
    {"layer", cmd_select_layer},
    {"model", cmd_select_model},
    {"pancake", cmd_select_pancake, "pancake"},
    {"paste", cmd_select_paste},
    {"rotate", cmd_select_rotate, "rotate"},
    {"scale", cmd_select_scale, "scale"},
    {"translate", cmd_select_translate, "move"},
};

}  // namespace

void cmd_select(Words words) { command_run_sub(words, "select", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
