// Words in, values out, results back. What surprises: a word is cut at blanks alone and an argument ends at its first
// empty field, so that two blanks in a row lose the rest. Scripts pass whole lists as one argument and rely on the
// first; the second is intended too.
#include "script/arguments.h"

#include <cstring>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t LONGEST_VALUE = 64;  // more than the longest formatted float takes, its blank included
char result_scratch[RESULT_LIST_LIMIT + LONGEST_VALUE];

void append_word(WordTable* table, const char* word, size_t length, WordConverter converter) {
    table->starts.push_back(table->text.size());
    if (converter != nullptr) {
        converter(word, length, &table->text);
    } else {
        table->text.append(word, length);
    }
    table->text.push_back('\0');
}

}  // namespace

void words_split(WordTable* table, int argc, const char* const* argv, WordConverter converter) {
    table->text.clear();
    table->starts.clear();
    for (int i = 0; i < argc; ++i) {
        const char* field = argv[i];
        while (field != nullptr && table->starts.size() < WORD_LIMIT) {
            const char* blank = std::strchr(field, ' ');
            const size_t length = blank != nullptr ? static_cast<size_t>(blank - field) : std::strlen(field);
            if (length == 0) { break; }
            append_word(table, field, length, converter);
            field = blank != nullptr ? blank + 1 : nullptr;
        }
    }
    // Only now, because the text moved while it grew.
    table->words.clear();
    for (const size_t start : table->starts) { table->words.push_back(table->text.data() + start); }
    table->words.push_back(nullptr);
}

namespace {

int read_int(void* destination, const char* word) {
    if (word_class(word) != WORD_INT) { return 0; }
    *static_cast<int32_t*>(destination) = text_to_int(word);
    return 1;
}

int read_float(void* destination, const char* word) {
    const WordClass kind = word_class(word);
    if (kind != WORD_INT && kind != WORD_FLOAT) { return 0; }
    *static_cast<float*>(destination) = to_float(text_to_double(word));
    return 1;
}

int read_flag(void* destination, const char* word) {
    if (str_equal(word, "on") || str_equal(word, "true")) {
        *static_cast<int32_t*>(destination) = 1;
        return 1;
    }
    if (str_equal(word, "off") || str_equal(word, "false")) {
        *static_cast<int32_t*>(destination) = 0;
        return 1;
    }
    return read_int(destination, word);  // a number is kept as it is: 7 stays 7
}

}  // namespace

int arg_read(void* destination, const char* word, int kind) {
    if (destination == nullptr || word == nullptr) { return 0; }
    switch (kind) {
        case ARG_INT: return read_int(destination, word);
        case ARG_FLOAT: return read_float(destination, word);
        case ARG_TEXT: *static_cast<const char**>(destination) = word; return 1;
        case ARG_FLAG: return read_flag(destination, word);
        default: return 1;
    }
}

namespace {

template <typename Value>
int read_all(Words words, Value* out, int count, int kind) {
    for (int i = 0; i < count; ++i) {
        if (!arg_read(&out[i], words[i], kind)) { return 0; }
    }
    return 1;
}

template <typename Value>
const char* format_list(const Value* values, int32_t count, size_t (*format)(Value value, char* buffer)) {
    if (count < 0) { return nullptr; }
    size_t position = 0;
    for (int32_t i = 0; i < count; ++i) {
        position += format(values[i], result_scratch + position);
        result_scratch[position++] = ' ';
        result_scratch[position] = '\0';
        if (position > RESULT_LIST_LIMIT) { return nullptr; }
    }
    return result_scratch;
}

size_t format_int(int32_t value, char* buffer) {
    int_to_text(value, buffer);
    return std::strlen(buffer);
}

size_t format_float(float value, char* buffer) { return float_to_text(value, 6, buffer, LONGEST_VALUE - 1); }

}  // namespace

int args_read_ints(Words words, int32_t* out, int count) { return read_all(words, out, count, ARG_INT); }
int args_read_floats(Words words, float* out, int count) { return read_all(words, out, count, ARG_FLOAT); }
int args_read_texts(Words words, const char** out, int count) { return read_all(words, out, count, ARG_TEXT); }

const char* fmt_on_off(int32_t flag) { return flag != 0 ? "on" : "off"; }

const char* fmt_int(int32_t value) {
    int_to_text(value, result_scratch);
    return result_scratch;
}

const char* fmt_int_list(const int32_t* values, int32_t count) { return format_list(values, count, format_int); }

const char* fmt_float_list(const float* values, int32_t count) { return format_list(values, count, format_float); }

const char* fmt_matrix(const float* values) {
    constexpr int ELEMENTS = 16;
    if (fmt_float_list(values, ELEMENTS) == nullptr) { return nullptr; }
    result_scratch[std::strlen(result_scratch) - 1] = '\0';  // no blank at the end
    return result_scratch;
}

}  // namespace pelt
