// Writer of the .mod text format that is the inverse of the reader: what it writes reads back as the same model.
#pragma once

#include <string>

namespace pelt {

struct Model;

// The text of a file that the reader makes this model of, in the sense of model_difference, without its children; the
// file name only stands in the comment at its head. Empty, with the reason in *refused (which is else emptied), for a
// model that the format cannot hold; every model that was read and not changed can be held.
//
// Points come out in the order of the model where its counts of points deal them right, otherwise joint by joint; the
// counts are then those that model_settle_counts (whole_layout.h) gives it. A primitive that names a point above 32767
// by its low 16 bits names a point whose id has these.
std::string model_write_whole(const Model* model, const char* file_name, std::string* refused);

}  // namespace pelt
