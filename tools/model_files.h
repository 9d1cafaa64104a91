// Models on their way in and out of the program.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "scene/model.h"

namespace pelt::tool {

struct ModelReleaser {
    void operator()(Model* model) const { model_release(model); }
};
using ModelOwner = std::unique_ptr<Model, ModelReleaser>;

// The model with all its children; null with the reason printed, its file and line first.
ModelOwner load_model(const std::string& path);

// Where a model is to be written.
struct ModelOutput {
    std::string path;    // "-" for standard output
    bool force = false;  // also when the reader refuses what comes out
};

// Writes the model, each joint with the count of the points that name it, with a warning for all that does not survive
// and for images and children that will not be found beside the new file. What the reader would refuse is not written,
// unless forced. The status of the command.
int save_model(Model* model, const std::string& input, const ModelOutput& output);

// The image files that a written model names.
std::set<std::string> image_names(const Model* model);

// The name of a path behind its last separator.
std::string file_part(const std::string& path);

}  // namespace pelt::tool
