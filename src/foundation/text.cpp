// Small text utilities: word classes, number conversion that never overflows, heap copies.
#include "foundation/text.h"

#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

namespace pelt {

namespace {

constexpr int DECIMALS_DEFAULT = 6;  // what "%.*f" takes for a negative count
constexpr int DECIMALS_LIMIT = 120;
constexpr size_t NUMBER_SIZE = 512;  // sign, 309 digits, point and decimals
constexpr int64_t EXPONENT_LIMIT = 1000000;
constexpr size_t UTF8_LENGTH_MAX = 4;  // bytes of a character

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Behind blanks and one plus sign, which the library does not take.
const char* number_start(const char* text) {
    while (is_space(*text)) { ++text; }
    return *text == '+' && text[1] != '-' ? text + 1 : text;
}

// The value of a decimal number too large or too small for a double: only its sign and direction are left.
double out_of_range_value(const char* text) {
    const bool negative = *text == '-';
    text += negative ? 1 : 0;
    int64_t exponent = 0;
    bool seen_point = false;
    bool seen_digit = false;
    for (; is_digit(*text) || (*text == '.' && !seen_point); ++text) {
        if (*text == '.') {
            seen_point = true;
            continue;
        }
        seen_digit = seen_digit || *text != '0';
        exponent += seen_digit && !seen_point ? 1 : 0;
        exponent -= !seen_digit && seen_point ? 1 : 0;
    }
    if (*text == 'e' || *text == 'E') {
        const bool minus = text[1] == '-';
        text += minus || text[1] == '+' ? 2 : 1;
        int64_t written = 0;
        for (; is_digit(*text) && written < EXPONENT_LIMIT; ++text) { written = written * 10 + (*text - '0'); }
        exponent += minus ? -written : written;
    }
    const double value = exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -value : value;
}

}  // namespace

WordClass word_class(const char* text) {
    if (text == nullptr) { return WORD_NONE; }
    bool seen_point = false;
    for (; *text != '\0'; ++text) {
        if (*text == '.') {
            if (seen_point) { return WORD_TEXT; }
            seen_point = true;
        } else if (!is_digit(*text) && *text != '-') {
            return WORD_TEXT;
        }
    }
    return seen_point ? WORD_FLOAT : WORD_INT;
}

int32_t text_to_int(const char* text) {
    if (text == nullptr) { return 0; }
    text = number_start(text);
    int32_t value = 0;
    const auto result = std::from_chars(text, text + std::strlen(text), value);
    if (result.ec != std::errc::result_out_of_range) { return value; }
    return *text == '-' ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int32_t>::max();
}

double text_to_double(const char* text) {
    if (text == nullptr) { return 0.0; }
    text = number_start(text);
    const char* digits = *text == '-' ? text + 1 : text;
    if (!is_digit(*digits) && !(*digits == '.' && is_digit(digits[1]))) {
        return 0.0;  // the library would take "inf" and "nan" for numbers
    }
    double value = 0.0;
    const auto result = std::from_chars(text, text + std::strlen(text), value);
    return result.ec == std::errc::result_out_of_range ? out_of_range_value(text) : value;
}

int32_t float_to_int(double value) {
    if (std::isnan(value)) { return 0; }
    if (value >= 2147483647.0) { return std::numeric_limits<int32_t>::max(); }
    if (value <= -2147483648.0) { return std::numeric_limits<int32_t>::min(); }
    return static_cast<int32_t>(value);
}

float to_float(double value) {
    constexpr double LARGEST = std::numeric_limits<float>::max();
    constexpr double ROUNDS_UP = 0x1.ffffffp127;  // half a step above the largest float
    const double magnitude = std::fabs(value);
    if (magnitude > LARGEST) {
        const float result =
            magnitude < ROUNDS_UP ? std::numeric_limits<float>::max() : std::numeric_limits<float>::infinity();
        return value < 0.0 ? -result : result;
    }
    return static_cast<float>(value);
}

size_t float_to_text(double value, int decimals, char* buffer, size_t size) {
    if (buffer == nullptr || size == 0) { return 0; }
    char number[NUMBER_SIZE];
    size_t length = 3;
    if (std::isnan(value)) {
        std::memcpy(number, "nan", length);
    } else {
        decimals = decimals < 0 ? DECIMALS_DEFAULT : decimals > DECIMALS_LIMIT ? DECIMALS_LIMIT : decimals;
        const auto result = std::to_chars(number, number + NUMBER_SIZE, value, std::chars_format::fixed, decimals);
        length = static_cast<size_t>(result.ptr - number);
    }
    length = length < size ? length : size - 1;
    std::memcpy(buffer, number, length);
    buffer[length] = '\0';
    return length;
}

std::string float_to_text(double value, int decimals) {
    char number[NUMBER_SIZE];
    return std::string(number, float_to_text(value, decimals, number, sizeof number));
}

char* str_field(const char* text, char separator, int n) {
    if (text == nullptr || n < 0) { return nullptr; }
    const char* start = text;
    for (int passed = 0; passed < n; ++passed) {
        while (*start != '\0' && *start != separator) { ++start; }
        if (*start == '\0') { return nullptr; }
        ++start;
    }
    const char* end = start;
    while (*end != '\0' && *end != separator) { ++end; }
    if (end == start) { return nullptr; }
    const auto length = static_cast<size_t>(end - start);
    auto* field = new char[length + 1];
    std::memcpy(field, start, length);
    field[length] = '\0';
    return field;
}

char* str_replace_char(char* text, char from, char to) {
    if (text != nullptr && from != '\0') {
        for (char* c = text; *c != '\0'; ++c) {
            if (*c == from) { *c = to; }
        }
    }
    return text;
}

char* str_dup(const char* text) {
    if (text == nullptr) { return nullptr; }
    const size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}

void str_free(char* text) { delete[] text; }

size_t text_cut_length(const char* text, size_t length) {
    const size_t farthest = length < UTF8_LENGTH_MAX - 1 ? length : UTF8_LENGTH_MAX - 1;
    for (size_t back = 1; back <= farthest; ++back) {
        const auto byte = static_cast<unsigned char>(text[length - back]);
        if ((byte & 0xC0) == 0x80) {
            continue;  // inside a character: its first byte says how long it is
        }
        const size_t needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return needed > back ? length - back : length;
    }
    return length;
}

size_t text_format(char* buffer, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    if (size == 0 || written < 0) { return 0; }
    const auto length = static_cast<size_t>(written);
    if (length < size) { return length; }
    const size_t kept = text_cut_length(buffer, size - 1);
    buffer[kept] = '\0';
    return kept;
}

bool str_copy(const char* source, char* destination, size_t size) {
    if (destination == nullptr || size == 0) { return false; }
    if (source == nullptr) {
        destination[0] = '\0';
        return true;
    }
    const void* end = std::memchr(source, 0, size);
    const size_t length = end == nullptr ? size : static_cast<size_t>(static_cast<const char*>(end) - source);
    const size_t copied = length < size ? length : text_cut_length(source, size - 1);
    std::memmove(destination, source, copied);
    destination[copied] = '\0';
    return length < size;
}

char* str_lower(char* text) {
    if (text != nullptr) {
        for (char* c = text; *c != '\0'; ++c) { *c = lower(*c); }
    }
    return text;
}

char* str_upper(char* text) {
    if (text != nullptr) {
        for (char* c = text; *c != '\0'; ++c) { *c = *c >= 'a' && *c <= 'z' ? static_cast<char>(*c - 'a' + 'A') : *c; }
    }
    return text;
}

bool str_equal(const char* a, const char* b) { return a != nullptr && b != nullptr && std::strcmp(a, b) == 0; }

bool str_equal_ignoring_case(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) { return false; }
    for (; *a != '\0' && lower(*a) == lower(*b); ++a, ++b) {}
    return lower(*a) == lower(*b);
}

int int_to_text(int32_t value, char* buffer) {
    if (buffer == nullptr) { return 1; }
    char digits[10];
    int count = 0;
    auto rest = value < 0 ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
    do {
        digits[count++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (value < 0) { *buffer++ = '-'; }
    while (count > 0) { *buffer++ = digits[--count]; }
    *buffer = '\0';
    return 1;
}

}  // namespace pelt
