// Whether the reader takes what was written, and makes of it what it was written from.
#pragma once

#include <string>

#include "scene/model.h"

namespace pelt::tool {

// Why the reader refuses this text of the model as a file, with the line; empty when it does not. Whether the images
// and child models that it names will lie beside it is not asked.
std::string refusal_of_text(const std::string& text, const Model* model);

// The same, or what the file would differ in from the model.
std::string difference_of_text(const std::string& text, const Model* model);

}  // namespace pelt::tool
