// What the program says: lines of its output, and on standard error what it says beside that. What stands in a file or
// in a name is no command to the terminal: all of it passes through shown.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace pelt::tool {

// The text with '?' for each control character but the tab, and for each byte that is no UTF-8.
std::string shown(const std::string& text);

// A line of output; a progress line makes way for it.
void print_line(const std::string& line);

// Output for programs, as it stands; a progress line makes way for it.
void print_bytes(const std::string& bytes);

// "PROGRAM: text".
void print_error(const std::string& text);

// "file: warning: text".
void print_warning(const std::string& file, const std::string& text);

// A line on standard error; a progress line makes way for it.
void print_report(const std::string& line);

// Works on one file after the other; the greatest status. Says on a terminal which of several is being worked on;
// nowhere else, and not for a single one.
int for_each_file(const std::vector<std::string>& files, const std::function<int(const std::string&)>& work);

}  // namespace pelt::tool
