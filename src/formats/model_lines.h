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
    bool names_only;                // images are taken by their names and never looked for
};

// Carries out the current line of the read in progress. A failure sets the load error, where there is a text for it,
// and aborts the read.
void model_parse_line(ModelFileContext* file);

// Whether a line that begins with this word means something to a model.
bool model_knows_keyword(const char* word);

// What the line in hand is to a read in this state.
enum ModelLineKind : uint8_t {
    LINE_IS_NOTHING,  // no line of the format, or data that is passed over
    LINE_IS_SECTION,  // a section keyword, whose mode is the line's
    LINE_IS_DATA,     // in the mode of the read
    LINE_IS_LAYER,
    LINE_IS_TRANSPARENCY,
    LINE_IS_REFLECT,
    LINE_IS_INVISIBLE,
    LINE_IS_JOINT,
    LINE_IS_BLEND,
    LINE_IS_IMAGE,
    LINE_IS_MIRROR_IMAGE,
    LINE_IS_CHILD,
};
struct ModelLine {
    ModelLineKind kind;
    LineMode mode;  // of a section or of data
};
ModelLine model_line_in_hand(const ModelFileContext& file);

// How many tokens of the line in hand, a primitive, mean something, and where its parts begin; 0 for a part that the
// line has not. The corners begin at token 1.
struct PrimitiveTokens {
    int32_t count;
    int32_t curve_at;
    int32_t normals_at;
    int32_t controls_at;
};
PrimitiveTokens model_primitive_tokens();

}  // namespace pelt
