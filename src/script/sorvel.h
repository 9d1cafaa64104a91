// The two functions that the library exports.
#pragma once

#include "script/tcl_glue.h"

#if defined(_WIN32)
#define PELT_EXPORT __declspec(dllexport)
#else
#define PELT_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

// Run by "load" under the name Sorvel. TCL_OK, or TCL_ERROR with the reason as the interpreter's result; the load can
// then be tried again. Only the first interpreter gets the command.
PELT_EXPORT int Sorvel_Init(Tcl_Interp* interp);

// The script command. Always TCL_OK: a failure shows a message box.
PELT_EXPORT int sorvel(void* client_data, Tcl_Interp* interp, int argc, const char* argv[]);
}
