// The verb "callback": which procedures of the script get mouse events and status texts. What surprises: a procedure
// can be replaced but never removed, and the one for the keyboard is stored and never run.
#include "application/application.h"
#include "foundation/text.h"
#include "script/commands.h"

namespace pelt {

namespace {

void store_procedure(char** slot, Words words) {
    const char* procedure = nullptr;
    if (!args_or_usage(arg_read(&procedure, words[1], ARG_TEXT), "sorvel: usage: sorvel callback <type> <proc>")) {
        return;
    }
    str_free(*slot);
    *slot = str_dup(procedure);
}

void cmd_callback_keyboard(Words words) { store_procedure(&application()->keyboard_proc, words); }
void cmd_callback_mouse(Words words) { store_procedure(&application()->mouse_proc, words); }
void cmd_callback_status(Words words) { store_procedure(&application()->status_proc, words); }

constexpr Command FORMS[] = {
    {"keyboard", cmd_callback_keyboard},
    {"mouse", cmd_callback_mouse},
    {"status", cmd_callback_status},
};

}  // namespace

void cmd_callback(Words words) { command_run_sub(words, "callback", UNKNOWN_ATTRIBUTE, FORMS); }

}  // namespace pelt
