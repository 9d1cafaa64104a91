// Images of layers: attaching them, their names.
#pragma once

#include <cstdint>

namespace pelt {

struct Model;

// Loads an image into a slot (ImageSlot) of a layer, in place of what the slot held; slot 0 maps the texture
// coordinates too. 1, or 0 with the reason in the load-error record where there is one.
int model_add_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v);

// The same without the file: the slot holds pixels that are none, for a model that is only read or compared.
int model_name_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v);

// 1, or 0 for an absent layer or a failed map.
int model_set_image_repeat(Model* model, const char* layer, int flag, float u, float v);

// Names of images and mirror images of the model and its children, a blank before each, in a static text; null when
// there are none.
const char* model_image_names(const Model* model);

}  // namespace pelt
