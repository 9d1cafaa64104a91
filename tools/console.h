// What the program says: lines of its output, and on standard error what it says beside that. What stands in a file or
// in a name is no command to the terminal: all of it passes through shown.
#pragma once

#include <cstddef>
#include <string>

namespace pelt::tool {

// The text with '?' for each control character but the tab, and for each byte that is no UTF-8.
std::string shown(const std::string& text);

// A line of output; a progress line makes way for it.
void print_line(const std::string& line);

// "pelt-model: text".
void print_error(const std::string& text);

// "file: warning: text".
void print_warning(const std::string& file, const std::string& text);

// A line on standard error; a progress line makes way for it.
void print_report(const std::string& line);

// Says on a terminal which of several files is being worked on; nowhere else, and not for a single one.
void show_progress(size_t number, size_t count, const std::string& file);
void clear_progress();

}  // namespace pelt::tool
