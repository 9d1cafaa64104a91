// Changes to a text that leave every other byte of it as it is: tokens of lines, lines that go, lines that come.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/save_source.h"

namespace pelt {

struct TextEdits {
    struct Edit {
        size_t begin;
        size_t end;        // begin for what is only put in
        std::string text;  // a line without its end where is_line
        bool is_line;
    };
    std::vector<Edit> edits;
};

// Lines that come to stand at a place where a line begins, or at the end of the text; several in the order of the
// calls, and before what stands there. They get the line end of the line above them.
void edits_insert_line(TextEdits& edits, size_t at, std::string_view line);
void edits_delete_line(TextEdits& edits, const SourceLine& line);
std::string edits_apply(const TextEdits& edits, std::string_view text);

// What the tokens of a line are to the reader, one letter each; the last one stands for all behind it.
//   T text as it is   N name of 128 bytes   C text of 8 bytes   J name of a joint, or none
//   I whole number    L the low 16 bits of one, B the low byte   R number   H share of 1 that becomes a byte
//   W "singlesided" or not
struct LineWish {
    std::string line;    // as it would be written anew
    const char* senses;  // of its tokens
    size_t meaning;      // tokens of the old line that mean something; those behind them are a remark
    bool may_shrink;     // old ones that mean something and that the new line has not go
    const Model* model;  // in which J names joints
};

// Changes the tokens that the reader would take for something else, and no other. New tokens come behind those that
// mean something. Where the lengths allow, everything else on the line keeps its column.
void edits_change_line(TextEdits& edits, const SaveSource& source, int line, const LineWish& wish);

}  // namespace pelt
