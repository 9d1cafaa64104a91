// What the program says beside its output.
//
// What surprises: a progress line stands without an end until something else is to be said, and is wiped first.
#include "console.h"

#include <cstdio>

#include "system.h"

namespace pelt::tool {

namespace {

constexpr const char* PROGRAM = "pelt-model";
constexpr const char* WIPE_LINE = "\r\033[K";

bool progress_stands = false;

// What a file says is no command to the terminal.
std::string shown(const std::string& line) {
    constexpr unsigned char BLANK = ' ';
    constexpr unsigned char DELETE = 0x7F;
    std::string text = line;
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = (byte < BLANK && c != '\t') || byte == DELETE ? '?' : c;
    }
    return text;
}

}  // namespace

void print_error(const std::string& text) { print_report(std::string(PROGRAM) + ": " + text); }

void print_warning(const std::string& file, const std::string& text) { print_report(file + ": warning: " + text); }

void print_report(const std::string& line) {
    clear_progress();
    std::fflush(stdout);
    std::fputs((shown(line) + "\n").c_str(), stderr);
}

void show_progress(size_t number, size_t count, const std::string& file) {
    if (count > 1 && errors_go_to_a_terminal()) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s[%zu/%zu] %s", WIPE_LINE, number, count, file.c_str());
        progress_stands = true;
    }
}

void clear_progress() {
    if (progress_stands) {
        std::fputs(WIPE_LINE, stderr);
        progress_stands = false;
    }
}

}  // namespace pelt::tool
