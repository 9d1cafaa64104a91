// Modal message boxes. There are two kinds of text, and the difference matters:
//
// Words of the running command line that name nothing (an unknown verb, a wrong argument) go into the box with Tcl's
// substitution, as if the script had written them there. A text that comes out of a file, or names something in a
// model, is data: backslash sequences are resolved, and nothing in it is ever run.
//
// In both, a double quote shows as an apostrophe, and the script sees "ok" as the command's result.
//
// Where the interpreter has no command tk_messageBox, the text is one line of standard error as it stands, and the
// result is "ok" as well.
#pragma once

#include <cstddef>

namespace pelt {

inline constexpr size_t MESSAGE_SIZE = 512;          // a formatted text, terminator included
inline constexpr size_t MESSAGE_SCRIPT_SIZE = 2048;  // the whole script of a box

void msg_info(const char* text);   // null: no box
void msg_error(const char* text);  // null shows "unknown"; clears the interpreter's result first
void msg_info_data(const char* text);

// The same with texts put into the format (at most two "%s"), cut to MESSAGE_SIZE.
void msg_info_format(const char* format, const char* first, const char* second = nullptr);
void msg_info_data_format(const char* format, const char* first);

}  // namespace pelt
