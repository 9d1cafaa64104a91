// Tells the text files from each other. A line that is neither is passed over, as the readers of both do.
#include "formats/file_kind.h"

#include <algorithm>
#include <cstring>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "foundation/file_access.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr const char* COMMENT_CHARS = "#";
constexpr const char* MODEL_EXTENSION = ".mod";

struct Look {
    FileKind kind = FILE_KIND_MODEL;  // of a file without lines
};

bool names_model_file(const char* word) {
    const size_t length = word != nullptr ? std::strlen(word) : 0;
    const size_t ending = std::min(length, std::strlen(MODEL_EXTENSION));
    return length > 0 && str_equal_ignoring_case(word + length - ending, MODEL_EXTENSION);
}

void look_at_line(void* context) {
    auto* look = static_cast<Look*>(context);
    look->kind = model_knows_keyword(reader_text(0)) ? FILE_KIND_MODEL
                 : names_model_file(reader_text(1))  ? FILE_KIND_SCENE
                                                     : FILE_KIND_OTHER;
    if (look->kind != FILE_KIND_OTHER) { reader_abort(); }
}

}  // namespace

FileKind file_kind(const char* path) {
    if (!file_exists(path)) { return FILE_KIND_MISSING; }
    Look look;
    reader_run_file(path, COMMENT_CHARS, 1, look_at_line, &look);
    return look.kind;
}

}  // namespace pelt
