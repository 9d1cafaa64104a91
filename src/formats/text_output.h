// Formatted text on its way to a file: pieces of any length, always with '.' in numbers whatever the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
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

// Text that goes to a slot of the table of open files, and to a stream of the system. Neither is closed here.
TextOutput text_output_to_slot(const int* slot);
TextOutput text_output_to_stream(std::FILE* stream);

// Text that is appended to a string, which outlives the output.
TextOutput text_output_to_string(std::string* text);

// A value that a format asks for: an integer for %d, a number for %f, a text (not copied) for %s.
struct TextValue {
    enum Kind { INTEGER, NUMBER, TEXT } kind;
    int32_t integer;
    double number;
    const char* text;

    TextValue(int32_t value) : kind(INTEGER), integer(value), number(value), text("") {}
    TextValue(double value) : kind(NUMBER), integer(0), number(value), text("") {}
    TextValue(float value) : TextValue(double{value}) {}
    TextValue(const char* value) : kind(TEXT), integer(0), number(0.0), text(value != nullptr ? value : "") {}
};

// Appends the format with the values in their places. It knows %d, %f and %s with '-', a width and, for %f, a count
// of decimals; a non-number is "nan". A width is a least one: nothing is ever cut.
void text_put(TextOutput& out, const char* format, std::initializer_list<TextValue> values = {});

// Hands on what is waiting. True when everything since the beginning was taken.
bool text_finish(TextOutput& out);

// A name for a comment: bytes that would end or garble its line stand as '?'.
std::string text_for_comment(const char* name);

}  // namespace pelt
