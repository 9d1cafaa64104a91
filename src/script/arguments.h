// Words of a running command, the reading of typed arguments from them, and the formatting of results.
//
// Nothing here knows Tcl: a result text is handed to the script by tcl_result_text, a word comes in through a
// converter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

// A table of words: entries up to a terminating null. A handler gets a pointer to the entry of its own word.
using Words = const char* const*;

inline constexpr size_t WORD_LIMIT = 1024;  // words of one call; further ones are lost without a message

// Appends the system's form of a word of that many bytes to out.
using WordConverter = void (*)(const char* word, size_t length, std::string* out);

// The words of one call. The record belongs to the call, so that a call nested in it cannot disturb it.
struct WordTable {
    std::string text;                // all words, each with its terminator
    std::vector<size_t> starts;      // where each begins
    std::vector<const char*> words;  // the table itself; always ends in a null
};

// Cuts every argument at blanks, and at blanks only. An argument ends at its first empty field: two blanks in a row
// drop what is behind them, a leading blank drops the whole argument. A null converter takes the bytes as they are.
void words_split(WordTable* table, int argc, const char* const* argv, WordConverter converter);

enum ArgKind : int { ARG_INT = 1, ARG_FLOAT = 2, ARG_TEXT = 3, ARG_FLAG = 4 };

// Stores the value of a word in an int32_t (ARG_INT, ARG_FLAG), a float or a const char*, and returns 1. Returns 0,
// with the destination as it was, for a null word or destination and for a word that the kind does not accept.
// An unknown kind stores nothing and returns 1.
int arg_read(void* destination, const char* word, int kind);

// Read that many consecutive words. 0 at the first one that is missing or refused, with those before it stored;
// nothing behind the terminating null is looked at.
int args_read_ints(Words words, int32_t* out, int count);
int args_read_floats(Words words, float* out, int count);
int args_read_texts(Words words, const char** out, int count);

// Result texts. All but fmt_on_off lie in one buffer, valid until the next formatter runs.
inline constexpr size_t RESULT_LIST_LIMIT = 8150;  // characters; a list that becomes longer gives null

const char* fmt_on_off(int32_t flag);
const char* fmt_int(int32_t value);
// A blank behind every value. Null for a negative count; a count of 0 gives what the buffer held.
const char* fmt_int_list(const int32_t* values, int32_t count);
const char* fmt_float_list(const float* values, int32_t count);
const char* fmt_matrix(const float* values);  // 16 values, a blank between them

}  // namespace pelt
