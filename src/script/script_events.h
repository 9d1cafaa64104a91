// What goes to the script by itself: mouse events and status texts, each to the procedure that the script registered.
// Without a procedure nothing happens; a procedure that fails is ignored, and its result never becomes a command's.
#pragma once

#include <cstddef>
#include <cstdint>

#include "window/gl_window.h"

namespace pelt {

inline constexpr size_t EVENT_SCRIPT_SIZE = 512;    // the script of a mouse or key event, terminator included
inline constexpr size_t STATUS_SCRIPT_SIZE = 1024;  // procedure and text of a status report

// Status procedures that may run inside one another. A report of a deeper level is dropped: a procedure that calls
// the command at each report would otherwise run at twice as many with every level, and never end.
inline constexpr int STATUS_DEPTH_LIMIT = 3;

// Event procedure of the window: turns mouse records into calls of the script's procedure; key records end here.
void view_input(WindowHandle window, int32_t zero, const void* event);

// As tcl_eval; 0 without a procedure, and when the call does not fit its size: none is made then.
int script_mouse_event(int32_t button, int32_t x, int32_t y, int32_t dx, int32_t dy);
int script_key_event(char character);  // no path calls it: the keyboard procedure is stored and never run
int script_status(const char* text);

void status_report(const char* text);  // the Session's status callback

}  // namespace pelt
