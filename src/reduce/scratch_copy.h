// A copy of a model to work on where the model itself must stay as it is.
#pragma once

namespace pelt {

struct Model;

// Points, layers with their surfaces, uvees and image settings, and child links, all of them borrowed. Joints, lines
// and pixels are left out: no image is referred to. To be released by model_release; null for null.
Model* model_scratch_copy(const Model* source);

}  // namespace pelt
