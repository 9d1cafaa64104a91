// Boxes made anew. What grows with what is added is only ever too large behind a change; these make it right.
#pragma once

namespace pelt {

struct Model;

// The model's box as a read of its points and primitives would grow it: around all points, and around the mirrored
// corners of layers that have a mirror. Tells of the change where there is one.
void model_measure(Model* model);

}  // namespace pelt
