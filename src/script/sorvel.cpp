// Entry of the library and of each call of its one command. What surprises: a call first serves everything that waits
// in the event queue, so that the interface stays alive while a script runs in a loop. Scripts can thus run, and call
// sorvel, before the call's own words are even looked at.
#include "script/sorvel.h"

#include <cstring>

#include "application/application.h"
#include "application/session_lifecycle.h"
#include "edit/history.h"
#include "render/frame.h"
#include "script/arguments.h"
#include "script/commands.h"
#include "script/event_drain.h"
#include "script/messages.h"
#include "script/scene_call.h"
#include "script/script_events.h"

#include <tcl.h>

namespace pelt {

namespace {

constexpr int DRAIN_DEPTH_LIMIT = 64;  // calls nested deeper serve no events

int32_t sorvel_initialised = 0;
int call_depth = 0;

void run_call(int argc, const char* argv[]) {
    Application* app = application();
    app->in_command = 1;
    if (call_depth <= DRAIN_DEPTH_LIMIT) {
        drain_events();
        tcl_result_reset();  // what event handlers left is not this call's result
    }
    if (tcl_interp() == nullptr) { return; }
    WordTable table;
    words_split(&table, argc, argv, tcl_to_system);
    if (table.words[0] == nullptr) {
        return;  // in_command stays 1; nothing reads it
    }
    history_command_begin("change", false);
    cmd_dispatch(table.words.data());
    history_command_end();
    app->in_command = 0;
}

}  // namespace

}  // namespace pelt

using namespace pelt;

int Sorvel_Init(Tcl_Interp* interp) {
    if (sorvel_initialised != 0) { return TCL_OK; }
    sorvel_initialised = 1;
    if (tcl_glue_init(interp) != 0 || !tcl_add_command("sorvel", sorvel, nullptr)) {
        sorvel_initialised = 0;  // a later load may find what was missing
        return TCL_ERROR;
    }
    Application* app = application();
    std::memset(static_cast<void*>(app), 0, sizeof *app);
    gl_system_init(tk_instance());
    session_init(&app->session);
    session_set_status_callback(&app->session, status_report);
    // Its texts come from files.
    session_set_message_callback(&app->session, msg_info_data);
    frame_bind(&app->session, &app->view);
    history_attach(&app->session);
    return TCL_OK;
}

int sorvel(void*, Tcl_Interp*, int argc, const char* argv[]) {
    Tcl_Interp* interp = tcl_interp();
    if (interp == nullptr) { return TCL_OK; }
    Tcl_Preserve(interp);
    int code = TCL_OK;
    ++call_depth;
    // Only this word, in this place, is looked at before the rest is cut into words.
    if (argc > 1 && std::strcmp(argv[1], "scene") == 0) {
        code = scene_command(argc - 2, argv + 2);
    } else {
        run_call(argc, argv);
    }
    --call_depth;
    Tcl_Release(interp);
    return code;
}
