// The load-error record: the latest reason why a load failed, with the place in the file that is being read.
#pragma once

#include <cstdint>

namespace pelt {

// Says where the read in progress stands: the file name and the line number, both owned by the reader, which calls
// again with nulls when it ends. While a place is known, load_error_set adds it to the text.
void load_error_watch(const char* file_name, const int32_t* line_number);

// Replaces the record by the text and its place ("%s (file: %s, line: %d)"), cut to 255 bytes. Null clears it.
void load_error_set(const char* text);

// The same for a text with one parameter: format holds one "%s".
void load_error_set_format(const char* format, const char* parameter);

// The text, owned by the record and valid until the next set; null when there is none.
const char* load_error_get();

}  // namespace pelt
