// Writer of the .mod text format. It lays a model out as the reader wants it, and is not its exact inverse: what does
// not survive is told by write_losses.h.
#pragma once

#include <string>

namespace pelt {

struct Model;

// Writes the model, without its children, to a file of its own name in the current directory. Reports nothing: a null
// model or a file that cannot be opened writes nothing.
void model_write(const Model* model);

// The same text in memory, empty for a null model; the file name only stands in the comment at its head.
std::string model_write_text(const Model* model, const char* file_name);

// The name that model_write gives its file: with ".mod" unless the name ends in an extension of three characters.
std::string model_file_name(const Model* model);

// The word of an axis code; "x" for any other number.
const char* axis_word(int code);

// Whether the writer leaves a layer out: it counts neither a triangle nor a line in it.
bool model_writer_skips_layer(const Model* model, const char* layer);

}  // namespace pelt
