// The verb "animate": opens an animation and moves the clock.
#include "application/application.h"
#include "application/open_and_fit.h"
#include "motion/animation_clock.h"
#include "script/commands.h"

namespace pelt {

namespace {

void cmd_animate_next(Words) { animate_next(&application()->session); }
void cmd_animate_prev(Words) { animate_prev(&application()->session); }

void cmd_animate_step(Words words) {
    int32_t rate = 0;
    if (args_or_usage(arg_read(&rate, words[1], ARG_INT), "sorvel: usage: sorvel animate step <nsteps>")) {
        animate_set_rate(&application()->session, rate);
    }
}

void cmd_animate_open(Words words) {
    const char* file_name = nullptr;
    if (args_or_usage(arg_read(&file_name, words[1], ARG_TEXT), "sorvel: usage: sorvel animate open <filename>")) {
        command_result_id(animate_open(application(), file_name), "sorvel: animate open failed");
    }
}

constexpr Command FORMS[] = {
    {"next", cmd_animate_next},
    {"open", cmd_animate_open},
    {"prev", cmd_animate_prev},
    {"step", cmd_animate_step},
};

}  // namespace

void cmd_animate(Words words) { command_run_sub(words, "animate", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
