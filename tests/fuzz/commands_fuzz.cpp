// Lines of words for the script command, over files of the input, with a frame after each; in a real Tcl that has a
// few commands only; a line of tabs is a call of the verb "scene". What surprises: no line of the input may hold a
// bracket, so that a bracketed word that is run can only have come out of a file, and that is a finding.
//
// After each line the last step is taken back and done again: the scene must be what it was before the line, and then
// what it was behind it.
//
// The file "commands" of the input holds the lines. A line that begins with '!' is an event of the window, one that
// begins with '?' is kept for the next callback, which runs it from inside.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include "application/application.h"
#include "edit/history.h"
#include "fuzz/fake_tk.h"
#include "fuzz/stage.h"
#include "motion/transform_state.h"
#include "render/frame.h"
#include "render/marks.h"
#include "script/messages.h"
#include "script/pointer_events.h"
#include "script/script_events.h"
#include "script/sorvel.h"
#include "support/native_null.h"
#include "support/recording_gl.h"
#include "support/scene_dump.h"

#include <tcl.h>

namespace pelt::fuzz {

namespace {

constexpr int LINE_LIMIT = 60;
constexpr int CALLBACK_LINE_LIMIT = 200;

Tcl_Interp* interp = nullptr;
std::deque<std::string> callback_lines;
int callback_lines_run = 0;

// A line that begins with "scene" is cut at tabs into the arguments of that verb; any other is one argument.
void run_words(const std::string& line) {
    std::vector<std::string> words;
    if (line.rfind("scene\t", 0) == 0 || line == "scene") {
        std::istringstream rest(line);
        for (std::string word; std::getline(rest, word, '\t');) { words.push_back(word); }
    } else {
        words.push_back(line);
    }
    std::vector<const char*> argv{"sorvel"};
    for (const std::string& word : words) { argv.push_back(word.c_str()); }
    sorvel(nullptr, interp, static_cast<int>(argv.size()), argv.data());
}

// The status procedure, the mouse procedure and the message box: each reads its words and runs a kept line.
int callback(ClientData, Tcl_Interp*, int argc, const char* argv[]) {
    size_t length = 0;
    for (int i = 0; i < argc; ++i) { length += std::strlen(argv[i]); }
    if (length > MESSAGE_SCRIPT_SIZE) { finding("a callback got more than its buffer holds"); }
    if (!callback_lines.empty() && callback_lines_run < CALLBACK_LINE_LIMIT) {
        ++callback_lines_run;
        const std::string line = callback_lines.front();
        callback_lines.pop_front();
        run_words(line);
    }
    return argc % 5 == 4 ? TCL_ERROR : TCL_OK;
}

int touched(ClientData, Tcl_Interp*, int, const char*[]) { finding("text out of a file was run"); }

// Nothing that a substitution could reach may touch the machine: the interpreter has no command but these.
void make_interpreter() {
    interp = Tcl_CreateInterp();
    Tcl_MakeSafe(interp);
    Tcl_Eval(interp, "foreach c [info commands] { if {$c ne {rename} && $c ne {foreach}} { rename $c {} } }");
    Tcl_Eval(interp, "rename foreach {}; rename rename {}");
    Tcl_CreateCommand(interp, "touched", touched, nullptr, nullptr);
    for (const char* name : {"report", "pointer", "tk_messageBox"}) {
        Tcl_CreateCommand(interp, name, callback, nullptr, nullptr);
    }
    Tcl_PkgProvide(interp, "Tk", "8.6");  // the one that stands in for it
    tcl_glue_init(interp);
    tcl_glue()->interp = interp;
    Tcl_CreateCommand(interp, "sorvel", sorvel, nullptr, nullptr);
}

void run_event(const char* line) {
    char what = 0;
    long numbers[4] = {};
    std::sscanf(line, "%c %ld %ld %ld %ld", &what, &numbers[0], &numbers[1], &numbers[2], &numbers[3]);
    const WindowHandle window = application()->view.window;
    switch (what) {
        case 'r':
            null_resize(tk_frame, static_cast<int32_t>(numbers[0] % 4096), static_cast<int32_t>(numbers[1] % 4096));
            break;
        case 'e': null_expose(window); break;
        case 'd': null_destroy_tree(tk_frame); break;
        case 'm':
            window_procedure(window, static_cast<uint32_t>(numbers[0]), static_cast<std::uintptr_t>(numbers[1]),
                             numbers[2]);
            break;
        default: break;
    }
    null_run();
}

// Writing stays in the directory of the process, and a line cannot do by itself what is looked for.
bool is_harmless(const std::string& line) {
    const bool writes = line.find("savescreen") != std::string::npos;
    const bool leaves = line.find_first_of("/\\") != std::string::npos || line.find("..") != std::string::npos;
    return !(writes && leaves) && line.find("touched") == std::string::npos;
}

// ---- taking back ----

// Gives every link the id that scripts would ask for, so that two dumps of one scene are equal.
void know_children(Session* session, Model* model) {
    if (model == nullptr) { return; }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        child_state(session, &link);
        if (!link.borrowed) { know_children(session, link.model); }
    }
}

struct Moment {
    std::string dump;
    HistoryState history;
    int callbacks;
};

Moment this_moment() {
    Session* session = &application()->session;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) { know_children(session, root.model); }
    test::SceneDump dump(session);
    Moment moment{dump.text(), history_state(), callback_lines_run};
    if (!dump.faults().empty()) { finding(dump.faults().c_str()); }
    return moment;
}

void expect_equal(const Moment& wanted, const std::string& line, const char* what) {
    const std::string difference = test::dump_difference(wanted.dump, this_moment().dump);
    if (!difference.empty()) { finding((line + ": " + what + ":\n" + difference).c_str()); }
}

// The line made one step, or nothing: an event or a callback may have made more, and taken back and forth.
bool is_one_command(const std::string& line, const Moment& before, const Moment& after) {
    const bool moves = line[0] == '!' || line[0] == '?' || line.rfind("scene\tundo", 0) == 0 ||
                       line.rfind("scene\tredo", 0) == 0 || line.rfind("scene\tstep", 0) == 0;
    // The clock moves what clips move, and this is no step.
    const bool evaluates = line.find("animate") != std::string::npos || line.find("clock") != std::string::npos;
    return !moves && !evaluates && before.callbacks == after.callbacks &&
           before.history.beginnings == after.history.beginnings && before.history.dropped == after.history.dropped &&
           after.history.limit > 0;
}

void check_history(const std::string& line, const Moment& before) {
    if (history_step_is_open()) { return; }
    const Moment after = this_moment();
    const bool one_command = is_one_command(line, before, after);
    const bool is_step = after.history.position != before.history.position;
    if (one_command && !is_step) { expect_equal(before, line, "changed without a step"); }
    std::string name;
    if (after.history.position == 0) { return; }
    history_undo(&name);
    if (one_command && is_step) { expect_equal(before, line, "not taken back"); }
    scene_draw_checked();
    if (history_state().dropped != after.history.dropped) { return; }
    history_redo(&name);
    if (history_state().dropped == after.history.dropped) { expect_equal(after, line, "not done again"); }
    scene_draw_checked();
}

void run_line(std::string line) {
    std::replace(line.begin(), line.end(), '[', '(');
    line.resize(std::strlen(line.c_str()));
    if (line.empty() || !is_harmless(line)) { return; }
    const bool was_open = history_step_is_open();
    const Moment before = this_moment();
    if (line[0] == '!') {
        run_event(line.c_str() + 1);
    } else if (line[0] == '?') {
        callback_lines.push_back(line.substr(1));
    } else {
        run_words(line);
    }
    if (!was_open) { check_history(line, before); }
    recording_gl::clear();
    run_words("draw");
    if (!recording_gl::errors().empty()) { finding(recording_gl::joined(recording_gl::errors()).c_str()); }
    recording_gl::clear();
}

void run_lines(const std::string& text) {
    size_t at = 0;
    for (int count = 0; at < text.size() && count < LINE_LIMIT; ++count) {
        const size_t end = std::min(text.find('\n', at), text.size());
        run_line(text.substr(at, end - at));
        at = end + 1;
    }
}

}  // namespace

}  // namespace pelt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt;
    using namespace pelt::fuzz;
    if (interp == nullptr) { make_interpreter(); }
    const std::vector<File> files = split_files(data, size);
    stage_files(files);
    callback_lines.clear();
    callback_lines_run = 0;
    tk_frame = scene_begin(view_input);
    session_set_status_callback(&application()->session, status_report);
    session_set_message_callback(&application()->session, msg_info_data);
    *marks() = Marks{};
    pointer_events_to("");
    for (const File& file : files) {
        if (file.name == "commands") { run_lines(file.content); }
    }
    callback_lines.clear();
    scene_end();
    return 0;
}
