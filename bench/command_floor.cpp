// The floor of the command benchmark: a command in string form that serves the pending events, as sorvel does before
// every call, and does nothing else.
#include <tcl.h>

extern "C" __attribute__((visibility("default"))) int Floor_Init(Tcl_Interp* interp);

static int floor_command(ClientData, Tcl_Interp*, int, const char*[]) {
    while (Tcl_DoOneEvent(-1) != 0) {}
    return TCL_OK;
}

int Floor_Init(Tcl_Interp* interp) {
    if (Tcl_InitStubs(interp, "8.4", 0) == nullptr) { return TCL_ERROR; }
    Tcl_CreateCommand(interp, "floor", floor_command, nullptr, nullptr);
    return TCL_OK;
}
