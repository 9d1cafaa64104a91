// The verbs "file", "reset", "reload" and "draw". What surprises: no form writes a model. "file save model" shows that
// it is not implemented, and "file save all" does nothing without a word.
#include "application/application.h"
#include "application/open_and_fit.h"
#include "application/session_lifecycle.h"
#include "foundation/text.h"
#include "render/frame.h"
#include "render/screen_capture.h"
#include "script/commands.h"
#include "script/messages.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

void run_add(Words words) {
    const char* file_name = nullptr;
    if (!arg_read(&file_name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel file add <filename>");
        return;
    }
    const int32_t id = file_add(application(), file_name);
    tcl_result_text(fmt_int(id));
    if (id == 0) { msg_info("sorvel: file add failed"); }
}

void run_open(Words words) {
    const char* file_name = nullptr;
    if (!arg_read(&file_name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel file open <filename>");
        return;
    }
    const int32_t id = file_open_model(application(), file_name);
    tcl_result_text(fmt_int(id));
    if (id == 0) { msg_info("sorvel: file open failed"); }
}

void run_reload(Words) { file_reload(application()); }

void run_rename(Words words) {
    int32_t id = 0;
    const char* name = nullptr;
    if (!arg_read(&id, words[1], ARG_INT) || !arg_read(&name, words[2], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel file rename <id> <name>");
        return;
    }
    session_rename_model(&application()->session, id, name);
}

void run_save(Words words) {
    const char* what = nullptr;
    if (!arg_read(&what, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel file save <args>");
        return;
    }
    if (str_equal(what, "all") || str_equal(what, "selected")) {
        return;  // intended: nothing is done or shown
    }
    if (!str_equal(what, "model")) {
        msg_info("sorvel: file save failed");
        return;
    }
    int32_t id = 0;
    if (!arg_read(&id, words[2], ARG_INT)) {
        msg_info("sorvel: usage: sorvel file save model <id>");
        return;
    }
    session_save_model(&application()->session);  // the id is not used
}

void run_savescreen(Words words) {
    const char* file_name = nullptr;
    if (!arg_read(&file_name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel file savescreen <filename>");
        return;
    }
    const ViewState& view = application()->view;
    const int32_t borders = view.fixed_size ? 0 : CAPTURE_BORDERS;
    screen_capture(file_name, view.width - borders, view.height - borders);
}

constexpr Command FORMS[] = {
    {"add", run_add},   {"open", run_open},   {"reload", run_reload},         {"rename", run_rename},
    {"save", run_save}, {"saveas", run_save}, {"savescreen", run_savescreen},
};

}  // namespace

void cmd_file(Words words) { command_run_sub(words, "file", UNKNOWN_COMMAND, FORMS); }

void cmd_reset(Words) { application_reset(application()); }

void cmd_reload(Words) { session_reload(&application()->session); }

void cmd_draw(Words) { frame_draw(); }

}  // namespace pelt
