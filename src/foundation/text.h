// Small text utilities: word classes, number conversion that never overflows, heap copies.
// All texts are zero-terminated bytes; heap texts are released with str_free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace pelt {

// The class of a word, decided by its characters alone (see word_class).
enum WordClass : int { WORD_NONE = 0, WORD_INT = 1, WORD_FLOAT = 2, WORD_TEXT = 3 };

// WORD_INT when every character is a digit or '-' (the empty text too), WORD_FLOAT when there is exactly one '.'
// among them, WORD_TEXT otherwise, WORD_NONE for null. "+1" and "1e3" are texts.
WordClass word_class(const char* text);

// Decimal integer at the start of the text; 0 when there is none. Saturates at the limits of 32 bits.
int32_t text_to_int(const char* text);

// Decimal number at the start of the text, always with '.' whatever the locale; 0 when there is none.
double text_to_double(const char* text);

// Cuts towards zero. Saturates at the limits of 32 bits; a non-number gives 0.
int32_t float_to_int(double value);

// Narrows to a 32-bit float without an out-of-range conversion (too large becomes an infinity).
float to_float(double value);

// Writes a number with the given count of decimals, as "%.*f" does; a non-number is always "nan", without a sign.
// Cuts to size (which counts the terminator); returns the length written.
size_t float_to_text(double value, int decimals, char* buffer, size_t size);
std::string float_to_text(double value, int decimals);  // uncut

// Field n (from 0) of the text between separators, as a new heap text; null when there is no such field or it is empty.
char* str_field(const char* text, char separator, int n);

// Replaces a character everywhere, in place. Returns the text; null gives null.
char* str_replace_char(char* text, char from, char to);

// New heap copy, owned by the caller; null gives null.
char* str_dup(const char* text);

// Releases a heap text; null is accepted.
void str_free(char* text);

// How much of a text stays when it is cut to so many bytes: no less than a whole character of UTF-8 at its end. Bytes
// that are no UTF-8 count as they stand.
size_t text_cut_length(const char* text, size_t length);

// As snprintf, but for the result, cut between characters: the length written.
size_t text_format(char* buffer, size_t size, const char* format, ...) __attribute__((format(printf, 3, 4)));

// Copies at most size - 1 bytes and terminates, source first, cut between characters. A null source writes an empty
// text. Returns false when the source had to be cut.
bool str_copy(const char* source, char* destination, size_t size);

template <size_t Size>
bool str_copy(const char* source, char (&destination)[Size]) {
    return str_copy(source, destination, Size);
}

// Lower case, upper case, in place, for the letters A to Z alone. Null gives null.
char* str_lower(char* text);
char* str_upper(char* text);

// Equal texts; two nulls are not equal.
bool str_equal(const char* a, const char* b);

// Equal but for the case of A to Z.
bool str_equal_ignoring_case(const char* a, const char* b);

// Decimal digits with a leading minus sign for a negative value. The buffer has room for 12 bytes. Always 1.
int int_to_text(int32_t value, char* buffer);

}  // namespace pelt
