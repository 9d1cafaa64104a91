// Reads a text, from a file or from memory, line by line, cut into classified tokens. Knows nothing of any format:
// the callback pulls what it wants through the accessors, which serve the innermost read in progress.
#pragma once

#include <cstdint>

namespace pelt {

inline constexpr int READER_LINE_SIZE = 1024;
inline constexpr int READER_TOKEN_LIMIT = 256;
inline constexpr int READER_TOKEN_SIZE = 256;

using LineCallback = void (*)(void* context);

// 1 when everything was read without an abort, else 0 (also for a file that cannot be opened, without any text).
int reader_run_file(const char* path, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context);
int reader_run_data(const char* text, const char* comment_chars, int32_t comment_count, LineCallback callback,
                    void* context);

void reader_abort();  // ends the read behind the running callback
int32_t reader_token_count();
int reader_token_equals(const char* text, int32_t index);
int reader_is_int(int32_t index);
int reader_is_float(int32_t index);
int reader_is_text(int32_t index);
int32_t reader_int(int32_t index);      // 0 unless the token is an integer
float reader_float(int32_t index);      // 0.0 unless the token is a number
const char* reader_text(int32_t index);  // null when there is no such token
const char* reader_line();
int32_t reader_line_number();
const char* reader_file_name();

}  // namespace pelt
