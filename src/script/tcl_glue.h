// The connection to the one Tcl interpreter that loaded the library: commands, evaluation, results; and to Tk, if any.
//
// Texts on this side are bytes in the system's encoding, Tcl's are UTF-8; the operations here convert, but for
// scripts, which are in Tcl's form. Once the interpreter is gone every operation does nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "window/gl_window.h"

struct Tcl_Interp;
struct Tcl_Obj;

namespace pelt {

inline constexpr size_t SCRIPT_DIRECTORY_SIZE = 512;

struct TclGlue {
    Tcl_Interp* interp;        // null before the load and after the interpreter's end
    const char* script_dir_a;  // directory parts of tcl_source_file; null, or one of the buffers below
    const char* script_dir_b;
    char buffer_a[SCRIPT_DIRECTORY_SIZE];
    char buffer_b[SCRIPT_DIRECTORY_SIZE];
};

using TclCommandProc = int (*)(void* client_data, Tcl_Interp* interp, int argc, const char* argv[]);
using TclObjectProc = int (*)(void* client_data, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]);

// Binds the interpreter and the stubs of Tcl, and those of Tk where that is there. 1 when those of Tcl were not to be
// had (the interpreter's result says why), else 0.
int tcl_glue_init(Tcl_Interp* interp);
TclGlue* tcl_glue();
Tcl_Interp* tcl_interp();  // null when it is gone or going

// Whether Tk can be called. A script may bring it at any time, so whatever cannot do without it asks with tk_bind,
// which takes its stubs once the package is present. Tk is never loaded from here.
bool tk_bind();
bool tk_is_bound();

// What the window system knows this program by: the module on Windows, else the interpreter, whose main window names
// the display. 0 as long as Tk is not bound.
std::uintptr_t tk_instance();

// 0 for a null name or procedure, or without an interpreter; else 1. There is no delete procedure.
int tcl_add_command(const char* name, TclCommandProc procedure, void* client_data);
int tcl_add_obj_command(const char* name, TclObjectProc procedure, void* client_data);

// Run a script at global level. 0 when it raised an error, else 1.
int tcl_eval(const char* script);
int tcl_eval_aside(const char* script);  // the interpreter's result stays what it was before

void tcl_result_text(const char* text);  // null and the empty text leave the result as it is
void tcl_result_reset();

bool tcl_has_command(const char* name);        // at global level
void tcl_error_line(const std::string& text);  // a line of standard error, in Tcl's form; nothing where there is none

// Native window of a Tk path, made if Tk had not made it yet. 0 when the path names none: Tk's text about that is
// then the interpreter's result. 0 too as long as Tk is not bound.
WindowHandle tk_native_window(const char* path);

// Between Tcl's UTF-8 and the system's encoding. A word that the system's encoding cannot hold keeps its UTF-8 bytes.
// Once there was such a word, a text on the way back that is UTF-8 and that the encoding cannot hold is taken for one.
void tcl_to_system(const char* word, size_t length, std::string* out);
std::string system_to_tcl(const char* text);

// Every backslash sequence of a text in Tcl's form resolved as Tcl's own parser does; nothing else is touched.
std::string tcl_resolve_backslashes(const std::string& text);

// Toolbox that no command uses.
void msg_script_error(const char* what, const char* reason);
int tcl_source_file(const char* name);            // as tcl_eval
Tcl_Interp* tcl_start_interp(const char* argv0);  // a new interpreter with Tk, bound to the glue; null on failure

}  // namespace pelt
