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
    text_format(text, sizeof text, "tcl/tk script error: %s\nreason: %s", what != nullptr ? what : "unknown",
                reason != nullptr ? reason : "unknown");
    msg_error(text);
}

int tcl_source_file(const char* name) {
    if (name == nullptr) { return 0; }
    const TclGlue* glue = tcl_glue();
    static char path[2 * SCRIPT_DIRECTORY_SIZE + 512];
    std::snprintf(path, sizeof path, "%s%s%s", glue->script_dir_a != nullptr ? glue->script_dir_a : "",
                  glue->script_dir_b != nullptr ? glue->script_dir_b : "", name);
    str_replace_char(path, '\\', '/');
    const std::string script = "source \"" + system_to_tcl(path) + "\"";
    return tcl_eval(script.c_str());
}

namespace {

void copy_variable(Tcl_Interp* from, Tcl_Interp* to, const char* name) {
    const char* value = from != nullptr ? Tcl_GetVar(from, name, TCL_GLOBAL_ONLY) : nullptr;
    if (value != nullptr) { Tcl_SetVar(to, name, value, TCL_GLOBAL_ONLY); }
}

// The new interpreter finds its script libraries where the one that loaded this library found them.
void set_start_variables(Tcl_Interp* interp, const char* argv0) {
    Tcl_SetVar(interp, "argv", "", TCL_GLOBAL_ONLY);
    Tcl_SetVar(interp, "argc", "0", TCL_GLOBAL_ONLY);
    Tcl_SetVar(interp, "tcl_interactive", "0", TCL_GLOBAL_ONLY);
    Tcl_SetVar(interp, "argv0", argv0, TCL_GLOBAL_ONLY);
    Tcl_Interp* loader = tcl_interp();
    for (const char* name : {"tcl_library", "tcl_libPath", "tk_library"}) { copy_variable(loader, interp, name); }
    const char* tcl_library = Tcl_GetVar(interp, "tcl_library", TCL_GLOBAL_ONLY);
    const char* tk_library = Tcl_GetVar(interp, "tk_library", TCL_GLOBAL_ONLY);
    if (tcl_library != nullptr) { Tcl_SetVar2(interp, "env", "TCL_LIBRARY", tcl_library, TCL_GLOBAL_ONLY); }
    if (tk_library != nullptr) { Tcl_SetVar2(interp, "env", "TK_LIBRARY", tk_library, TCL_GLOBAL_ONLY); }
}

}  // namespace

Tcl_Interp* tcl_start_interp(const char* argv0) {
    if (argv0 == nullptr || tclStubsPtr == nullptr || tkStubsPtr == nullptr) { return nullptr; }
    tclStubsPtr->tcl_FindExecutable(argv0);
    Tcl_Interp* interp = Tcl_CreateInterp();
    set_start_variables(interp, argv0);
    if (Tcl_Init(interp) == TCL_OK) {
        Tcl_GlobalEval(interp, "source [file join $tcl_library tclIndex]");
        if (tkStubsPtr->tk_Init(interp) == TCL_OK) {
            tclStubsPtr->tcl_StaticPackage(interp, "Tk", tkStubsPtr->tk_Init, nullptr);
            if (tcl_glue_init(interp) == 0) { return interp; }
        }
    }
    Tcl_DeleteInterp(interp);
    return nullptr;
}

}  // namespace pelt
