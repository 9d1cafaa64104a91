// What a baked layer takes over from its source besides its primitives.
#pragma once

namespace pelt {

struct Layer;
struct Model;

// Gives the layer called target the transparency (where it lies in 0.0 to 1.0) and the colour key of the source. The
// key takes effect on images added later.
void carry_settings(Model* model, const char* target, const Layer& source);

}  // namespace pelt
