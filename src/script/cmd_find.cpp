// The verb "find": an unknown model is no failure but the id 0, and unknown images leave the result as it was.
#include "application/application.h"
#include "application/session_lifecycle.h"
#include "script/commands.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

void cmd_find_images(Words words) {
    int32_t id = 0;
    if (args_or_usage(arg_read(&id, words[1], ARG_INT), "sorvel: usage: sorvel find images <id>")) {
        tcl_result_text(session_find_images(&application()->session, id));
    }
}

void cmd_find_model(Words words) {
    const char* name = nullptr;
    if (!args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel find model <name>")) { return; }
    const int32_t id = session_find_model(&application()->session, name);
    tcl_result_text(fmt_int_list(&id, 1));
}

constexpr Command FORMS[] = {
    {"images", cmd_find_images},
    {"model", cmd_find_model},
};

}  // namespace

void cmd_find(Words words) { command_run_sub(words, "find", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
