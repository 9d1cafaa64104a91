// Formatted text on its way to a file: pieces of any length.
#pragma once

#include <cstddef>
#include <string>

namespace pelt {

// Takes the next bytes of the text; false when they could not be taken.
using TextTaker = bool (*)(void* context, const char* bytes, size_t size);

struct TextOutput {
    TextTaker take;
    void* context;
    std::string waiting;  // written and not yet handed on
    bool failed;          // something was not taken; nothing more is handed on
};

// Text that goes to a slot of the table of open files, which is not closed here.
TextOutput text_output_to_slot(const int* slot);

// Text that is appended to a string, which outlives the output.
TextOutput text_output_to_string(std::string* text);

// Appends the format with the values in their places, as printf does. Only for whole numbers and texts: a number with
// decimals is put as its text (float_to_text), because the library takes the decimal point from the locale. No text is
// null.
void text_put(TextOutput& out, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Hands on what is waiting. True when everything since the beginning was taken.
bool text_finish(TextOutput& out);

// A name for a comment: bytes that would end or garble its line stand as '?'.
std::string text_for_comment(const char* name);

}  // namespace pelt
