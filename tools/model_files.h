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
    std::string path;               // "-" for standard output
    std::string lay_out = "whole";  // or "described", which loses what the other would refuse
    bool force = false;             // also when it does not read back
};

// Writes the model, so that the file reads back as the same model, or else the reason why it cannot be written is told.
// In the described lay-out each joint comes with the count of the points that name it, and there is a warning for all
// that does not survive. In both there is one for images and children that will not be found beside the new file. What
// does not read back is not written, unless forced. The status of the command.
int save_model(Model* model, const std::string& input, const ModelOutput& output);

// The name of a path behind its last separator.
std::string file_part(const std::string& path);

}  // namespace pelt::tool
