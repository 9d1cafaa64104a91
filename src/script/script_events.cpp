// Calls back into the script. What surprises: the procedure is script text, so that it may be any command prefix, but
// a status text is data. Each of its words arrives as one argument, whatever characters a file put into it.
#include "script/script_events.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include <tcl.h>

#include "application/application.h"
#include "foundation/text.h"
#include "script/tcl_glue.h"
#include "window/input.h"

namespace pelt {

namespace {

// Where the pointer was at the last event, and how far it has come since.
int32_t last_x, last_y, delta_x, delta_y;

int status_depth = 0;

// The difference as 32-bit arithmetic has it, without an overflow.
int32_t difference(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// A call of that many bytes; none is made when it was cut, because what is left would be another call.
int eval_whole(const char (&script)[EVENT_SCRIPT_SIZE], int length) {
    if (length < 0 || static_cast<size_t>(length) >= EVENT_SCRIPT_SIZE) { return 0; }
    return tcl_eval_aside(system_to_tcl(script).c_str());
}

bool parts_words(char c) { return c == ' ' || (c >= '\t' && c <= '\r' && c != '\n'); }

// Appends each word as one element: cut where Tcl would cut, everything else in it being data.
void append_words(const std::string& words, Tcl_DString* script) {
    for (size_t at = 0; at < words.size();) {
        size_t end = at;
        while (end < words.size() && !parts_words(words[end])) { end += words[end] == '\\' ? 2 : 1; }
        end = std::min(end, words.size());
        if (end > at) { Tcl_DStringAppendElement(script, tcl_resolve_backslashes(words.substr(at, end - at)).c_str()); }
        at = end + 1;
    }
}

}  // namespace

void view_input(WindowHandle, int32_t, const void* event) {
    if (event == nullptr) { return; }
    const int32_t code = *static_cast<const int32_t*>(event);  // both kinds of record begin with it
    if (code != INPUT_MOUSE_MOVE && code != INPUT_MOUSE_BUTTON) { return; }

    // A copy: the script may serve further events, which fill the one record anew.
    const MouseEvent mouse = *static_cast<const MouseEvent*>(event);
    const bool drag = code == INPUT_MOUSE_MOVE && mouse.pressed;
    if (drag) {
        delta_x = difference(mouse.x, last_x);
        delta_y = difference(mouse.y, last_y);
    }
    // Before the script runs, so that an event it serves measures from here.
    last_x = mouse.x;
    last_y = mouse.y;

    if (drag) {
        script_mouse_event(mouse.button, mouse.x, mouse.y, delta_x, delta_y);
    } else {
        script_mouse_event(mouse.pressed ? mouse.button : 0, 0, 0, 0, 0);
    }
}

int script_mouse_event(int32_t button, int32_t x, int32_t y, int32_t dx, int32_t dy) {
    const char* procedure = application()->mouse_proc;
    if (procedure == nullptr) { return 0; }
    char script[EVENT_SCRIPT_SIZE];
    const int length = std::snprintf(script, sizeof script, "%s %d %d %d %d %d\n", procedure, button, x, y, dx, dy);
    return eval_whole(script, length);
}

int script_key_event(char character) {
    const char* procedure = application()->keyboard_proc;
    if (procedure == nullptr) { return 0; }
    char script[EVENT_SCRIPT_SIZE];
    const int length = std::snprintf(script, sizeof script, "%s %c\n", procedure, character);
    return eval_whole(script, length);
}

int script_status(const char* text) {
    const char* procedure = application()->status_proc;
    if (procedure == nullptr || text == nullptr || tcl_interp() == nullptr) { return 0; }
    if (status_depth >= STATUS_DEPTH_LIMIT) { return 0; }
    char cut[STATUS_SCRIPT_SIZE];
    text_format(cut, sizeof cut, "%s %s", procedure, text);
    const size_t procedure_length = std::strlen(procedure);
    if (procedure_length >= std::strlen(cut)) {
        return 0;  // cut itself, it would be another one
    }

    Tcl_DString script;
    Tcl_DStringInit(&script);
    Tcl_DStringAppend(&script, system_to_tcl(std::string(cut, procedure_length).c_str()).c_str(), -1);
    append_words(system_to_tcl(cut + procedure_length), &script);
    ++status_depth;
    const int result = tcl_eval_aside(Tcl_DStringValue(&script));
    --status_depth;
    Tcl_DStringFree(&script);
    return result;
}

void status_report(const char* text) { script_status(text); }

}  // namespace pelt
