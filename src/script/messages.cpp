// The boxes. What surprises: one form lets Tcl substitute in the text and the other hands it over as one list element.
// Escaping brackets in the second would not do, because a backslash already in a file's text would undo the escape. And
// there may be no boxes, in a Tcl without Tk: the text is then a line of standard error, in which nothing is
// substituted.
#include "script/messages.h"

#include <algorithm>
#include <string>

#include <tcl.h>

#include "foundation/text.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

constexpr char BOX_COMMAND[] = "tk_messageBox";
constexpr char INFO_SCRIPT[] = "tk_messageBox -type ok -title Information -icon info -message";
constexpr char ERROR_SCRIPT[] = "tk_messageBox -type ok -title Error -icon error -message";
constexpr size_t QUOTING = 3;  // a blank and two double quotes around the text

// The text as the box gets it: in Tcl's form, without double quotes, cut to what the script's buffer leaves.
std::string box_text(const char* text, size_t script_length) {
    std::string result = system_to_tcl(text);
    str_replace_char(result.data(), '"', '\'');
    const size_t room = MESSAGE_SCRIPT_SIZE - 1 - QUOTING - script_length;
    if (result.size() > room) { result.resize(text_cut_length(result.data(), room)); }
    return result;
}

std::string script_with_substitution(const char* script, const char* text) {
    const std::string start = script;
    return start + " \"" + box_text(text, start.size()) + "\"";
}

// Whether the text went to standard error, because the script has no boxes. The result is that of a box.
bool told_without_box(const char* text) {
    if (tcl_has_command(BOX_COMMAND)) { return false; }
    std::string line = system_to_tcl(text);
    // One line, and nothing in it that a terminal would obey: texts come from files.
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
    std::replace_if(line.begin(), line.end(), is_control, ' ');
    tcl_error_line(line);
    tcl_result_text("ok");
    return true;
}

std::string format_text(const char* format, const char* first, const char* second) {
    char buffer[MESSAGE_SIZE];
    text_format(buffer, sizeof buffer, format, first != nullptr ? first : "", second != nullptr ? second : "");
    return buffer;
}

}  // namespace

void msg_info(const char* text) {
    if (text == nullptr || told_without_box(text)) { return; }
    tcl_eval(script_with_substitution(INFO_SCRIPT, text).c_str());
}

void msg_error(const char* text) {
    if (text == nullptr) { text = "unknown"; }
    if (told_without_box(text)) { return; }
    const std::string script = script_with_substitution(ERROR_SCRIPT, text);
    tcl_result_reset();
    tcl_eval(script.c_str());
}

void msg_info_data(const char* text) {
    if (text == nullptr || tcl_interp() == nullptr || told_without_box(text)) { return; }
    Tcl_DString script;
    Tcl_DStringInit(&script);
    Tcl_DStringAppend(&script, INFO_SCRIPT, -1);
    const std::string shown = tcl_resolve_backslashes(box_text(text, sizeof INFO_SCRIPT - 1));
    Tcl_DStringAppendElement(&script, shown.c_str());
    tcl_eval(Tcl_DStringValue(&script));
    Tcl_DStringFree(&script);
}

void msg_info_format(const char* format, const char* first, const char* second) {
    msg_info(format_text(format, first, second).c_str());
}

void msg_info_data_format(const char* format, const char* first) {
    msg_info_data(format_text(format, first, nullptr).c_str());
}

}  // namespace pelt
