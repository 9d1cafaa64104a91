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

namespace pelt {

namespace {

void cmd_file_add(Words words) {
    const char* file_name = nullptr;
    if (args_or_usage(arg_read(&file_name, words[1], ARG_TEXT), "sorvel: usage: sorvel file add <filename>")) {
        command_result_id(file_add(application(), file_name), "sorvel: file add failed");
    }
}

void cmd_file_open(Words words) {
    const char* file_name = nullptr;
    if (args_or_usage(arg_read(&file_name, words[1], ARG_TEXT), "sorvel: usage: sorvel file open <filename>")) {
        command_result_id(file_open_model(application(), file_name), "sorvel: file open failed");
    }
}

void cmd_file_reload(Words) { file_reload(application()); }

void cmd_file_rename(Words words) {
    int32_t id = 0;
    const char* name = nullptr;
    if (args_or_usage(arg_read(&id, words[1], ARG_INT) && arg_read(&name, words[2], ARG_TEXT),
                      "sorvel: usage: sorvel file rename <id> <name>")) {
        session_rename_model(&application()->session, id, name);
    }
}

void cmd_file_save(Words words) {
    const char* what = nullptr;
    int32_t id = 0;  // read, and not used
    if (!args_or_usage(arg_read(&what, words[1], ARG_TEXT), "sorvel: usage: sorvel file save <args>")) { return; }
    if (str_equal(what, "all") || str_equal(what, "selected")) {
        return;  // intended: nothing is done or shown
    }
    if (!str_equal(what, "model")) {
        msg_info("sorvel: file save failed");
    } else if (args_or_usage(arg_read(&id, words[2], ARG_INT), "sorvel: usage: sorvel file save model <id>")) {
        session_save_model(&application()->session);
    }
}

void cmd_file_savescreen(Words words) {
    const char* file_name = nullptr;
    if (!args_or_usage(arg_read(&file_name, words[1], ARG_TEXT), "sorvel: usage: sorvel file savescreen <filename>")) {
        return;
    }
    const ViewState& view = application()->view;
    const int32_t borders = view.fixed_size ? 0 : CAPTURE_BORDERS;
    screen_capture(file_name, view.width - borders, view.height - borders);
}

constexpr Command FORMS[] = {
    {"add", cmd_file_add, "add model"},          {"open", cmd_file_open}, {"reload", cmd_file_reload},
    {"rename", cmd_file_rename, "rename model"}, {"save", cmd_file_save}, {"saveas", cmd_file_save},
    {"savescreen", cmd_file_savescreen},
};

}  // namespace

void cmd_file(Words words) { command_run_sub(words, "file", UNKNOWN_COMMAND, FORMS); }

void cmd_reset(Words) { application_reset(application()); }

void cmd_reload(Words) { session_reload(&application()->session); }

void cmd_draw(Words) { frame_draw(); }

}  // namespace pelt
