// A text that is to become a model file, read before it does.
#pragma once

#include <string>

namespace pelt {

struct Model;

// The model that a file of this text would be in the place of the other model's, without children; null, with the line
// and the reason in *refused (which is else emptied), when the reader would refuse it. An image that the other model
// names and that is not there stops nothing: its name stands in its layer, without pixels. Owned by the caller.
Model* model_read_back(const std::string& text, const Model* original, std::string* refused);

}  // namespace pelt
