// Stands in for Tk where the script layer runs without a display: one window of the name ".f", which is whatever the
// target says it is. What surprises: these are Tk's own function names, found by the linker in place of the library.
#include "fuzz/fake_tk.h"

#include <cstring>

#include <tcl.h>
// Behind everything of ours, for the macros of Xlib.
#include <tk.h>

namespace pelt::fuzz {

WindowHandle tk_frame = 0;

}  // namespace pelt::fuzz

extern "C" {

Tk_Window Tk_MainWindow(Tcl_Interp*) { return reinterpret_cast<Tk_Window>(std::uintptr_t{1}); }

Tk_Window Tk_NameToWindow(Tcl_Interp* interp, const char* name, Tk_Window) {
    if (std::strcmp(name, ".f") == 0) { return reinterpret_cast<Tk_Window>(pelt::fuzz::tk_frame); }
    Tcl_AppendResult(interp, "bad window path name \"", name, "\"", nullptr);
    return nullptr;
}

Tk_RestrictProc* Tk_RestrictEvents(Tk_RestrictProc*, ClientData, ClientData*) { return nullptr; }

const char* Tk_PkgInitStubsCheck(Tcl_Interp*, const char* version, int) { return version; }
}
