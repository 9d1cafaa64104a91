// Events of the mouse on their way to the script. What surprises: the procedure may do anything, take itself away or
// the window with it, so that nothing is looked at again behind the call.
#include "script/pointer_events.h"

#include "script/tcl_glue.h"
#include "window/input.h"
#include "window/messages.h"

#include <tcl.h>

namespace pelt {

namespace {

std::string procedure;

constexpr const char* KIND_WORDS[] = {"press", "release", "move", "drag", "wheel", "leave"};

struct ModifierWord {
    uint32_t held;
    const char* word;
};
constexpr ModifierWord MODIFIERS[] = {{HELD_SHIFT, "shift"}, {HELD_CONTROL, "control"}, {HELD_ALT, "alt"}};

std::string modifier_words(uint32_t held) {
    std::string words;
    for (const ModifierWord& each : MODIFIERS) {
        if ((held & each.held) != 0) { words += (words.empty() ? "" : " ") + std::string(each.word); }
    }
    return words;
}

void call_procedure(const PointerEvent& event) {
    Tcl_Interp* interp = tcl_interp();
    if (interp == nullptr || procedure.empty()) { return; }
    Tcl_DString script;
    Tcl_DStringInit(&script);
    Tcl_DStringAppend(&script, procedure.c_str(), -1);
    const std::string words[] = {KIND_WORDS[static_cast<int>(event.kind)],
                                 std::to_string(event.button),
                                 std::to_string(event.x),
                                 std::to_string(event.y),
                                 modifier_words(event.held),
                                 std::to_string(event.clicks),
                                 std::to_string(event.wheel)};
    for (const std::string& word : words) { Tcl_DStringAppendElement(&script, word.c_str()); }
    Tcl_Preserve(interp);
    Tcl_SavedResult saved;
    Tcl_SaveResult(interp, &saved);
    if (Tcl_GlobalEval(interp, Tcl_DStringValue(&script)) == TCL_ERROR) { Tcl_BackgroundError(interp); }
    Tcl_RestoreResult(interp, &saved);
    Tcl_Release(interp);
    Tcl_DStringFree(&script);
}

}  // namespace

void pointer_events_to(const std::string& wanted) {
    procedure = wanted;
    input_listen(procedure.empty() ? nullptr : call_procedure);
}

const std::string& pointer_events_procedure() { return procedure; }

}  // namespace pelt
