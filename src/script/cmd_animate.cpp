// The verb "animate". What surprises: nothing here draws. A script steps the clock and then says "draw".
#include "application/application.h"
#include "application/open_and_fit.h"
#include "motion/animation_clock.h"
#include "script/commands.h"
#include "script/messages.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

void run_next(Words) { animate_next(&application()->session); }
void run_prev(Words) { animate_prev(&application()->session); }

void run_step(Words words) {
    int32_t rate = 0;
    if (!arg_read(&rate, words[1], ARG_INT)) {
        msg_info("sorvel: usage: sorvel animate step <nsteps>");
        return;
    }
    animate_set_rate(&application()->session, rate);
}

void run_open(Words words) {
    const char* file_name = nullptr;
    if (!arg_read(&file_name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel animate open <filename>");
        return;
    }
    const int32_t opened = animate_open(application(), file_name);
    tcl_result_text(fmt_int(opened));
    if (opened == 0) { msg_info("sorvel: animate open failed"); }
}

constexpr Command FORMS[] = {
    {"next", run_next},
    {"open", run_open},
    {"prev", run_prev},
    {"step", run_step},
};

}  // namespace

void cmd_animate(Words words) { command_run_sub(words, "animate", UNKNOWN_COMMAND, FORMS); }

}  // namespace pelt
