// The verb "select": fills the selection, names the selected layer, and transforms what is selected. What surprises:
// "select layer" has its result set behind the message box, so that the script gets 0 and not what the box returned.
#include "application/application.h"
#include "edit/bounds.h"
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

void select_all(Words) { selection_all(session()); }
void select_clear(Words) { selection_clear(session()); }
void select_copy(Words) { selection_copy(session()); }
void select_cut(Words) { selection_cut(session()); }
void select_paste(Words) { selection_paste(); }
void select_pancake(Words) { selection_pancake(session()); }

void select_centre(Words) {
    const Vec3 centre = selection_centre(session());
    const float values[3] = {centre.x, centre.y, centre.z};
    tcl_result_text(fmt_float_list(values, 3));
}

void select_model(Words words) {
    int32_t id = 0;
    if (!arg_read(&id, words[1], ARG_INT)) {
        msg_info("sorvel: usage: sorvel select model <id>");
    } else if (!selection_add_model(session(), id)) {
        msg_info("sorvel: model id not found");
    }
}

void select_child(Words words) {
    int32_t id = 0;
    if (!arg_read(&id, words[1], ARG_INT)) {
        msg_info("sorvel: usage: sorvel select child <id>");
    } else if (!selection_add_child(session(), id)) {
        msg_info("sorvel: child id not found");
    }
}

void select_layer(Words words) {
    const char* name = nullptr;
    if (!arg_read(&name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel select layer <name>");
        return;
    }
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

void select_delete(Words) {
    Application* app = application();
    selection_delete(&app->session);
    app->view.focus = scene_centre(&app->session);
}

void select_translate(Words words) {
    Application* app = application();
    float v[3] = {};
    if (!args_read_floats(words + 1, v, 3)) {
        msg_info("sorvel: usage: sorvel select translate <x> <y> <z>");
        return;
    }
    if (!selection_translate(&app->session, v[0], v[1], v[2], ABSOLUTE)) {
        msg_info("sorvel: translate failed");
        return;
    }
    view_fit_scene(&app->view, &app->session);
}

void select_scale(Words words) {
    float v[3] = {};
    if (!args_read_floats(words + 1, v, 3)) {
        msg_info("sorvel: usage: sorvel select scale <x> <y> <z>");
    } else if (!selection_scale(session(), v[0], v[1], v[2], ABSOLUTE)) {
        msg_info("sorvel: scale failed");
    }
}

void rotate_centre(Words words) {
    float v[3] = {};
    if (!args_read_floats(words, v, 3)) {
        msg_info("sorvel: usage: sorvel select rotate centre <x> <y> <z>");
    } else if (!selection_set_centre(session(), v[0], v[1], v[2])) {
        msg_info("sorvel: rotate centre failed");
    }
}

void rotate_axis(Words words) {
    float v[3] = {};
    if (!args_read_floats(words, v, 3)) {
        msg_info("sorvel: usage: sorvel select rotate axis <x> <y> <z>");
    } else if (!selection_set_axis(session(), v[0], v[1], v[2])) {
        msg_info("sorvel: rotate axis failed");
    }
}

void select_rotate(Words words) {
    const char* angles[3] = {};
    if (str_equal(words[1], "centre") || str_equal(words[1], "center")) {
        rotate_centre(words + 2);
    } else if (str_equal(words[1], "axis")) {
        rotate_axis(words + 2);
    } else if (!args_read_texts(words + 1, angles, 3)) {
        msg_info("sorvel: usage: sorvel select rotate <a1> <a2> <a3>");
    } else if (!selection_rotate(session(), angles[0], angles[1], angles[2], ABSOLUTE)) {
        msg_info("sorvel: rotate failed");
    }
}

void select_add(Words words) {
    const char* what = nullptr;
    if (!arg_read(&what, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel select add <what> <args>");
        return;
    }
    if (str_equal(what, "data")) {
        const char* input = nullptr;
        if (!arg_read(&input, words[2], ARG_TEXT)) {
            msg_info("sorvel: usage: sorvel select add data <input>");
        } else {
            selection_add_data(session(), input);
        }
    } else if (str_equal(what, "child")) {
        int32_t id = 0;
        if (!arg_read(&id, words[2], ARG_INT)) {
            msg_info("sorvel: usage: sorvel select add child <id>");
        } else {
            selection_add_child_model(session(), id);
        }
    }
    // Intended: any other word does nothing and shows nothing.
}

constexpr Command FORMS[] = {
    {"add", select_add},       {"all", select_all},         {"centre", select_centre},
    {"child", select_child},   {"clear", select_clear},     {"copy", select_copy},
    {"cut", select_cut},       {"delete", select_delete},   {"layer", select_layer},
    {"model", select_model},   {"pancake", select_pancake}, {"paste", select_paste},
    {"rotate", select_rotate}, {"scale", select_scale},     {"translate", select_translate},
};

}  // namespace

void cmd_select(Words words) { command_run_sub(words, "select", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
