// Pulls texture coordinates in from the border of their image.
#pragma once

namespace pelt {

struct Model;

int model_inset_uvees(Model* model, float low, float high);  // 0 for null, else 1

}  // namespace pelt
