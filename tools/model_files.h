// Models on their way in and out of the program.
#pragma once

#include <memory>
#include <string>

#include "scene/model.h"

namespace pelt::tool {

struct ModelReleaser {
    void operator()(Model* model) const { model_release(model); }
};
using ModelOwner = std::unique_ptr<Model, ModelReleaser>;

// The model with all its children; null with the reason printed, its file and line first.
ModelOwner load_model(const std::string& path);

// Writes the model, with a warning for all that does not survive and for images and children that will not be found
// beside the new file. The status of the command.
int save_model(const Model* model, const std::string& input, const std::string& output);

// The name of a path behind its last separator.
std::string file_part(const std::string& path);

}  // namespace pelt::tool
