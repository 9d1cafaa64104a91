// The load-error record: the latest reason why a load failed, with the place in the file that is being read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

// Says where the read in progress stands: the file name, the line number and the line's text, all owned by the reader,
// which calls again with nulls when it ends. While a place is known, load_error_set adds it to the text.
void load_error_watch(const char* file_name, const int32_t* line_number, const char* line = nullptr);

// Replaces the record by the text and its place ("%s (file: %s, line: %d)"), cut to 255 bytes. Null clears it.
void load_error_set(const char* text);

// The same for a text with one parameter: format holds one "%s".
void load_error_set_format(const char* format, const char* parameter);

// The text, owned by the record and valid until the next set; null when there is none.
const char* load_error_get();

// The same reason in parts and uncut, for those who need no one text. What a text says of its place is never looked at:
// a file can shape it.
struct LoadFailure {
    std::string text;
    std::string file;    // that is at fault, as the reader was told it; empty when that is not known
    int32_t line = 0;    // from 1; 0 for none
    std::string source;  // text of the line
};
const LoadFailure& load_failure();  // all empty when there is none
void load_failure_clear();

// Sets the record with the place of the read in progress. load_error_set does so by itself.
void load_failure_set(const char* text);

// Names the place of a failure that has none yet.
void load_failure_in(const char* file, int32_t line = 0, const char* source = "");

// What a read meets and goes on behind is gathered between the two calls: the last failure or note of each line, at
// most LOAD_PROBLEM_LIMIT of them. Failures outside a file are none.
inline constexpr size_t LOAD_PROBLEM_LIMIT = 100;
void load_problems_begin();
std::vector<LoadFailure> load_problems_end();
void load_problem_note(const char* text);  // of the line in hand, which is no failure

}  // namespace pelt
