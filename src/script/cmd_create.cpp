// The verb "create": the window, and cursors. What surprises: "create model" cannot be reached, and the window can be
// created once in the life of the process, also when it has been destroyed since.
#include "application/application.h"
#include "application/session_lifecycle.h"
#include "render/frame.h"
#include "scene/model.h"
#include "script/commands.h"
#include "script/messages.h"
#include "script/script_events.h"
#include "script/tcl_glue.h"
#include "window/cursor.h"
#include "window/gl_window.h"

namespace pelt {

namespace {

void cmd_create_cursor(Words words) {
    const char* file_name = nullptr;
    if (args_or_usage(arg_read(&file_name, words[1], ARG_TEXT), "sorvel: usage: sorvel create cursor <filename>")) {
        command_result_id(cursor_create("pelt", file_name), "sorvel: create cursor failed");
    }
}

void cmd_create_model(Words words) {
    const char* name = nullptr;
    if (!args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel create model <name>")) { return; }
    Model* model = model_create(name, nullptr);
    command_result_id(session_add_model(&application()->session, model), "sorvel: create model failed");
}

int create_window(const char* name, const char* parent) {
    Application* app = application();
    if (app->view.window != 0) {
        msg_error("sorvel: can only support 1 window at the moment.");
        return 0;
    }
    if (!tk_bind()) {
        msg_error("sorvel: a window needs Tk, and this interpreter has none: package require Tk");
        return 0;
    }
    gl_system_bind(tk_instance());
    const WindowHandle parent_window = tk_native_window(parent);
    if (parent_window == 0) {
        msg_error("sorvel: cannot get handle for parent window.");
        return 0;
    }
    app->view.window = gl_window_create(name, parent_window, view_init, nullptr, view_resize, view_input, 0);
    if (app->view.window == 0) { return 0; }
    // Without such a window Tk's complaint stays behind as the command's result; this is intended.
    app->status_window = tk_native_window(".status");
    return 1;
}

void cmd_create_window(Words words) {
    const char* names[2] = {};
    if (args_or_usage(args_read_texts(words + 1, names, 2), "sorvel: usage: sorvel create window <name> <parent>") &&
        !create_window(names[0], names[1])) {
        msg_info("sorvel: create window failed");
    }
}

constexpr Command FORMS[] = {
    {"cursor", cmd_create_cursor},
    // Intended: no word is that of this row, so that neither "create model" nor "create name" gets here.
    {"", cmd_create_model},
    {"window", cmd_create_window},
};

}  // namespace

void cmd_create(Words words) { command_run_sub(words, "create", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
