// Reads a text, from a file or from memory, line by line, cut into classified tokens. Knows nothing of any format:
// the callback pulls what it wants through the accessors, which serve the innermost read in progress.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/text.h"

namespace pelt {

inline constexpr int READER_LINE_SIZE = 1024;
inline constexpr int READER_TOKEN_LIMIT = 256;
inline constexpr int READER_TOKEN_SIZE = 256;

// The tokens of the line in hand, private to the functions below. It stands here so that the accessors can be inlined:
// a line of a model asks ten times or so, and the calls showed in the profile of a load.
struct ReaderTokens {
    int32_t count;  // the arrays are filled so far and no further
    const char* texts[READER_TOKEN_LIMIT];
    WordClass classes[READER_TOKEN_LIMIT];
    int32_t ints[READER_TOKEN_LIMIT];
    float floats[READER_TOKEN_LIMIT];
};
extern const ReaderTokens* reader_tokens;  // of the innermost read; without one, a record without tokens

using LineCallback = void (*)(void* context);

// 1 when everything was read without an abort, else 0 (also for a file that cannot be opened, without any text).
int reader_run_file(const char* path, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context);
int reader_run_data(const char* text, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context);
// A text in memory by the rules of a file: a lone CR ends no line, and a line without a byte counts. With a file name
// it is taken for what was read from that file.
int reader_run_text(std::string_view text, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context, const char* file_name = nullptr);

void reader_abort();  // ends the read behind the running callback
// For a callback that goes on where its format would end: 1 when the read was to end, which it then does not.
int reader_take_abort_back();
// 1 when the line in hand holds a token beyond READER_TOKEN_LIMIT, which no accessor reaches.
int reader_has_more_tokens();
int reader_token_equals(const char* text, int32_t index);

inline bool reader_has_token(int32_t index) { return index >= 0 && index < reader_tokens->count; }
inline bool reader_has_class(int32_t index, WordClass wanted) {
    return reader_has_token(index) && reader_tokens->classes[index] == wanted;
}
inline int32_t reader_token_count() { return reader_tokens->count; }
inline int reader_is_int(int32_t index) { return reader_has_class(index, WORD_INT); }
inline int reader_is_float(int32_t index) { return reader_has_class(index, WORD_FLOAT); }
inline int reader_is_text(int32_t index) { return reader_has_class(index, WORD_TEXT); }
// 0 unless the token is an integer.
inline int32_t reader_int(int32_t index) { return reader_is_int(index) ? reader_tokens->ints[index] : 0; }
// 0.0 unless the token is a number.
inline float reader_float(int32_t index) {
    return reader_is_int(index) || reader_is_float(index) ? reader_tokens->floats[index] : 0.0f;
}
// Null when there is no such token.
inline const char* reader_text(int32_t index) {
    return reader_has_token(index) ? reader_tokens->texts[index] : nullptr;
}

// The same as a text of its own; nothing when there is no such token.
inline std::optional<std::string> reader_text_if_any(int32_t index) {
    const char* text = reader_text(index);
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

// Bytes of the line in hand, or of the text that reader_run_text reads. The end is that behind the last byte.
struct TextPlace {
    size_t begin;
    size_t end;
};

// Where the line in hand stands in the text of reader_run_text: behind a byte-order mark, before its line end.
TextPlace reader_line_place();
// Where its tokens stand in it, with their quotes.
std::vector<TextPlace> reader_token_places();

const char* reader_line();
int32_t reader_line_number();
const char* reader_file_name();

}  // namespace pelt
