// What the program says beside its output, all of it on standard error.
#pragma once

#include <cstddef>
#include <string>

namespace pelt::tool {

// "pelt-model: text".
void print_error(const std::string& text);

// "file: warning: text".
void print_warning(const std::string& file, const std::string& text);

// One line, with control characters as '?'; a progress line makes way for it.
void print_report(const std::string& line);

// Says on a terminal which of several files is being worked on; nowhere else, and not for a single one.
void show_progress(size_t number, size_t count, const std::string& file);
void clear_progress();

}  // namespace pelt::tool
