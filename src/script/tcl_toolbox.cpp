// Helpers of the connection that no command uses: they are kept for programs that build on this layer. What surprises:
// tcl_start_interp needs a Tcl and Tk that are bound already, because the library itself holds neither.
#include <cstdio>

#include "foundation/text.h"
#include "script/messages.h"
#include "script/tcl_glue.h"

#include <tcl.h>
// Behind everything of ours, for the macros of Xlib.
#include <tk.h>

namespace pelt {

void msg_script_error(const char* what, const char* reason) {
    char text[MESSAGE_SIZE];
    std::snprintf(text, sizeof text, "tcl/tk script error: %s\nreason: %s", what != nullptr ? what : "unknown",
                  reason != nullptr ? reason : "unknown");
    msg_error(text);
}

int tcl_source_file(const char* name) {
    if (name == nullptr) return 0;
    const TclGlue* glue = tcl_glue();
    static char path[2 * SCRIPT_DIRECTORY_SIZE + 512];
    std::snprintf(path, sizeof path, "%s%s%s", glue->script_dir_a != nullptr ? glue->script_dir_a : "",
                  glue->script_dir_b != nullptr ? glue->script_dir_b : "", name);
    str_replace_char(path, '\\', '/');
    const std::string script = "source \"" + system_to_tcl(path) + "\"";
    return tcl_eval(script.c_str());
}

namespace {

struct StartVariable {
    const char* array;  // null for a plain variable
    const char* name;
    const char* value;
};

void set_start_variables(Tcl_Interp* interp, const char* argv0) {
    const StartVariable variables[] = {
        {nullptr, "argv", ""},
        {nullptr, "argc", "0"},
        {nullptr, "tcl_interactive", "0"},
        {nullptr, "argv0", argv0},
        {nullptr, "tcl_library", "lib/tcl"},
        {nullptr, "tcl_libPath", "lib/tcl"},
        {nullptr, "tk_library", "lib/tk"},
        {"env", "TCL_LIBRARY", "lib/tcl"},
        {"env", "TK_LIBRARY", "lib/tk"},
    };
    for (const StartVariable& variable : variables) {
        if (variable.array != nullptr) {
            Tcl_SetVar2(interp, variable.array, variable.name, variable.value, TCL_GLOBAL_ONLY);
        } else {
            Tcl_SetVar(interp, variable.name, variable.value, TCL_GLOBAL_ONLY);
        }
    }
}

}  // namespace

Tcl_Interp* tcl_start_interp(const char* argv0) {
    if (argv0 == nullptr || tclStubsPtr == nullptr || tkStubsPtr == nullptr) return nullptr;
    Tcl_FindExecutable(argv0);
    Tcl_Interp* interp = Tcl_CreateInterp();
    set_start_variables(interp, argv0);
    if (Tcl_Init(interp) == TCL_OK) {
        Tcl_GlobalEval(interp, "source [file join $tcl_library tclIndex]");
        if (tkStubsPtr->tk_Init(interp) == TCL_OK) {
            Tcl_StaticPackage(interp, "Tk", tkStubsPtr->tk_Init, nullptr);
            if (tcl_glue_init(interp) == 0) return interp;
        }
    }
    Tcl_DeleteInterp(interp);
    return nullptr;
}

}  // namespace pelt
