// Formatted text on its way to a file, for the writers of this folder.
#include "formats/text_output.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "foundation/file_access.h"

namespace pelt {

namespace {

constexpr size_t HAND_ON_SIZE = 65536;
constexpr size_t PIECE_SIZE = 512;  // most pieces are shorter

bool take_to_slot(void* context, const char* bytes, size_t size) {
    return file_write(*static_cast<const int*>(context), bytes, 1, size) == size;
}

bool take_to_string(void* context, const char* bytes, size_t size) {
    static_cast<std::string*>(context)->append(bytes, size);
    return true;
}

void hand_on(TextOutput& out) {
    if (!out.failed && !out.waiting.empty()) {
        out.failed = !out.take(out.context, out.waiting.data(), out.waiting.size());
    }
    out.waiting.clear();
}

}  // namespace

TextOutput text_output_to_slot(const int* slot) { return TextOutput{take_to_slot, const_cast<int*>(slot), {}, false}; }

TextOutput text_output_to_string(std::string* text) { return TextOutput{take_to_string, text, {}, false}; }

void text_put(TextOutput& out, const char* format, ...) {
    char piece[PIECE_SIZE];
    va_list values, again;
    va_start(values, format);
    va_copy(again, values);
    const int written = std::vsnprintf(piece, sizeof piece, format, values);
    const size_t length = written > 0 ? static_cast<size_t>(written) : 0;
    const size_t before = out.waiting.size();
    out.waiting.append(piece, std::min(length, sizeof piece - 1));
    if (length >= sizeof piece) {
        out.waiting.resize(before + length);
        std::vsnprintf(out.waiting.data() + before, length + 1, format, again);
    }
    va_end(again);
    va_end(values);
    if (out.waiting.size() >= HAND_ON_SIZE) { hand_on(out); }
}

bool text_finish(TextOutput& out) {
    hand_on(out);
    return !out.failed;
}

std::string text_for_comment(const char* name) {
    constexpr unsigned char BLANK = ' ';
    constexpr unsigned char DELETE = 0x7F;
    std::string text = name != nullptr ? name : "";
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < BLANK || byte == DELETE ? '?' : c;
    }
    return text;
}

}  // namespace pelt
