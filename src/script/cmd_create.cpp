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

int create_cursor(const char* file_name) {
    const int32_t id = cursor_create("pelt", file_name);
    tcl_result_text(fmt_int(id));
    return id != 0;
}

int create_model(const char* name) {
    Model* model = model_create(name, nullptr);
    if (model == nullptr) {
        tcl_result_text("0");
        return 0;
    }
    tcl_result_text(fmt_int(session_add_model(&application()->session, model)));
    return 1;
}

int create_window(const char* name, const char* parent) {
    Application* app = application();
    if (app->view.window != 0) {
        msg_error("sorvel: can only support 1 window at the moment.");
        return 0;
    }
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

void run_cursor(Words words) {
    const char* file_name = nullptr;
    if (!arg_read(&file_name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel create cursor <filename>");
    } else if (!create_cursor(file_name)) {
        msg_info("sorvel: create cursor failed");
    }
}

void run_model(Words words) {
    const char* name = nullptr;
    if (!arg_read(&name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel create model <name>");
    } else if (!create_model(name)) {
        msg_info("sorvel: create model failed");
    }
}

void run_window(Words words) {
    const char* names[2] = {};
    if (!args_read_texts(words + 1, names, 2)) {
        msg_info("sorvel: usage: sorvel create window <name> <parent>");
    } else if (!create_window(names[0], names[1])) {
        msg_info("sorvel: create window failed");
    }
}

constexpr Command FORMS[] = {
    {"cursor", run_cursor},
    // Intended: no word is that of this row, so that neither "create model" nor "create name" gets here.
    {"", run_model},
    {"window", run_window},
};

}  // namespace

void cmd_create(Words words) { command_run_sub(words, "create", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
