// The lines of the .mod format: what each adds to a model. The reader of whole files builds on this.
#pragma once

#include <cstdint>

#include "formats/line_reader.h"

namespace pelt {

struct Model;

// How a line that begins with an integer is read; set by the section keywords.
enum LineMode : int32_t {
    LINE_MODE_NONE = 0,
    LINE_MODE_POINTS = 1,
    LINE_MODE_GOURAUD = 2,
    LINE_MODE_TRIANGLES = 4,
    LINE_MODE_UVEES = 8,
    LINE_MODE_NORMALS = 16,
    LINE_MODE_LINES = 32,
};

// State of one read of model lines.
struct ModelFileContext {
    Model* model;
    LineMode mode;
    char layer[READER_TOKEN_SIZE];  // name of the current layer, empty at the start
};

// Carries out the current line of the read in progress. A failure sets the load error, where there is a text for it,
// and aborts the read.
void model_parse_line(ModelFileContext* file);

// Whether a line that begins with this word means something to a model.
bool model_knows_keyword(const char* word);

}  // namespace pelt
