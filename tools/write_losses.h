// What a model loses when model_write writes it and the reader reads the file back.
#pragma once

#include <string>
#include <vector>

namespace pelt {

struct Model;

struct WriteLoss {
    std::string text;  // names the layer, joint or point it is about
    bool unreadable;   // the file that is written does not load
};

// Everything that this model, without its children, loses; empty for one that survives. Empty for null too.
std::vector<WriteLoss> model_write_losses(const Model* model);

}  // namespace pelt
