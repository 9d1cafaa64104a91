// What the program says beside its output.
//
// What surprises: a progress line stands without an end until something else is to be said, and is wiped first.
#include "console.h"

#include <algorithm>
#include <cstdio>

#include "system.h"

#ifndef PELT_PROGRAM
#define PELT_PROGRAM "pelt-model"
#endif

namespace pelt::tool {

namespace {

constexpr const char* PROGRAM = PELT_PROGRAM;
constexpr const char* WIPE_LINE = "\r\033[K";

bool progress_stands = false;

bool is_control(char32_t c) {
    constexpr char32_t BLANK = 0x20;
    constexpr char32_t DELETE = 0x7F;
    constexpr char32_t LAST_CONTROL = 0x9F;
    return (c < BLANK && c != '\t') || (c >= DELETE && c <= LAST_CONTROL);
}

// How many bytes the first character of a text takes, with its code; 0 for what is no UTF-8.
size_t take_character(const std::string& text, size_t place, char32_t* code) {
    constexpr char32_t SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};  // that a character of so many bytes may stand for
    const auto first = static_cast<unsigned char>(text[place]);
    const size_t longer = first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
    const size_t size = first < 0x80 ? 1 : first < 0xC0 ? 0 : longer;
    if (size == 0 || place + size > text.size()) { return 0; }
    char32_t value = size == 1 ? first : first & (0x7Fu >> size);
    for (size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[place + i]);
        if ((next & 0xC0) != 0x80) { return 0; }
        value = value << 6 | (next & 0x3Fu);
    }
    *code = value;
    const bool is_surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value >= SMALLEST[size] && value <= 0x10FFFF && !is_surrogate ? size : 0;
}

void clear_progress() {
    if (progress_stands) { std::fputs(WIPE_LINE, stderr); }
    progress_stands = false;
}

}  // namespace

std::string shown(const std::string& text) {
    std::string result;
    for (size_t place = 0; place < text.size();) {
        char32_t code = 0;
        const size_t size = take_character(text, place, &code);
        if (size == 0 || is_control(code)) {
            result += '?';
        } else {
            result.append(text, place, size);
        }
        place += size > 0 ? size : 1;
    }
    return result;
}

void print_line(const std::string& line) {
    clear_progress();
    std::printf("%s\n", shown(line).c_str());
}

void print_bytes(const std::string& bytes) {
    clear_progress();
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void print_error(const std::string& text) { print_report(std::string(PROGRAM) + ": " + text); }

void print_warning(const std::string& file, const std::string& text) { print_report(file + ": warning: " + text); }

void print_report(const std::string& line) {
    clear_progress();
    std::fflush(stdout);
    std::fputs((shown(line) + "\n").c_str(), stderr);
}

int for_each_file(const std::vector<std::string>& files, const std::function<int(const std::string&)>& work) {
    const bool shows_progress = files.size() > 1 && goes_to_a_terminal(stderr);
    int status = 0;
    for (size_t i = 0; i < files.size(); ++i) {
        if (shows_progress) {
            std::fflush(stdout);
            std::fprintf(stderr, "%s[%zu/%zu] %s", WIPE_LINE, i + 1, files.size(), shown(files[i]).c_str());
            progress_stands = true;
        }
        status = std::max(status, work(files[i]));
    }
    clear_progress();
    return status;
}

}  // namespace pelt::tool
