// A module for the tests that makes commands of those operations of the script layer that no command of the library
// reaches. What surprises: it is bound to the interpreter that loads it, apart from the library; an argument "null"
// stands for a null pointer.
#include <cstring>
#include <string>

#include "application/application.h"
#include "foundation/text.h"
#include "script/messages.h"
#include "script/script_events.h"
#include "script/tcl_glue.h"
#include "window/input.h"

#include <tcl.h>

namespace pelt {

// The module has no window layer.
WindowHandle gl_window_of_tk(void*) { return 0; }

namespace {

const char* argument(const char* word) { return std::strcmp(word, "null") == 0 ? nullptr : word; }

void answer(Tcl_Interp* interp, int value) { Tcl_SetObjResult(interp, Tcl_NewIntObj(value)); }

int nothing(void*, Tcl_Interp*, int, const char*[]) { return TCL_OK; }

int count_words(void*, Tcl_Interp* interp, int objc, Tcl_Obj* const[]) {
    answer(interp, objc);
    return TCL_OK;
}

// Hands over an event record of the words from the code on, or none.
void input(int count, const char* const words[]) {
    int32_t fields[6] = {};
    for (int i = 0; i < count && i < 6; ++i) { fields[i] = text_to_int(words[i]); }
    const MouseEvent event{fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]};
    view_input(0, 0, argument(words[0]) != nullptr ? &event : nullptr);
}

// toolbox error TEXT | script_error WHAT REASON | eval SCRIPT | result TEXT | source DIRECTORY DIRECTORY NAME |
// key PROCEDURE CHARACTER | status TEXT | mouse PROCEDURE | input CODE [X Y BUTTON DOUBLE PRESSED] | command NAME |
// object_command NAME | start ARGV0 SCRIPT
int toolbox(void*, Tcl_Interp* interp, int argc, const char* argv[]) {
    const std::string word = argc > 2 ? argv[1] : "";
    const char* first = argc > 2 ? argument(argv[2]) : nullptr;
    const char* second = argc > 3 ? argument(argv[3]) : nullptr;
    if (word == "error") {
        msg_error(first);
    } else if (word == "script_error") {
        msg_script_error(first, second);
    } else if (word == "eval") {
        answer(interp, tcl_eval(first));
    } else if (word == "result") {
        tcl_result_text("before");
        tcl_result_text(first);
    } else if (word == "source") {
        TclGlue* glue = tcl_glue();
        glue->script_dir_a = first;
        glue->script_dir_b = second;
        answer(interp, tcl_source_file(argc > 4 ? argument(argv[4]) : nullptr));
    } else if (word == "key") {
        str_free(application()->keyboard_proc);
        application()->keyboard_proc = str_dup(first);
        answer(interp, script_key_event(second != nullptr ? second[0] : '\0'));
    } else if (word == "mouse") {
        str_free(application()->mouse_proc);
        application()->mouse_proc = str_dup(first);
    } else if (word == "input") {
        input(argc - 2, argv + 2);
    } else if (word == "status") {
        answer(interp, script_status(first));
    } else if (word == "command") {
        answer(interp, tcl_add_command(first, second != nullptr ? nothing : nullptr, nullptr));
    } else if (word == "object_command") {
        answer(interp, tcl_add_obj_command(first, second != nullptr ? count_words : nullptr, nullptr));
    } else if (word == "start") {
        Tcl_Interp* started = tcl_start_interp(first);
        std::string result = "none";
        if (started != nullptr) {
            result = tcl_eval(second) ? Tcl_GetStringResult(started) : "failed";
            Tcl_DeleteInterp(started);
        }
        tcl_glue_init(interp);
        tcl_result_text(result.c_str());
    }
    return TCL_OK;
}

}  // namespace

}  // namespace pelt

extern "C" __attribute__((visibility("default"))) int Toolbox_Init(Tcl_Interp* interp) {
    if (pelt::tcl_glue_init(interp) != 0) { return TCL_ERROR; }
    return pelt::tcl_add_command("toolbox", pelt::toolbox, nullptr) ? TCL_OK : TCL_ERROR;
}
