// Images of layers: attaching them, their names.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace pelt {

struct Layer;
struct Model;

// Loads an image into a slot (ImageSlot) of a layer, in place of what the slot held; slot 0 maps the texture
// coordinates too. 1, or 0 with the reason in the load-error record where there is one.
int model_add_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v);

// The same without the file: the slot holds pixels that are none, for a model that is only read or compared.
int model_name_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v);

// 1, or 0 for an absent layer or a failed map.
int model_set_image_repeat(Model* model, const char* layer, int flag, float u, float v);

// How a layer's image lies on it.
struct ImageLay {
    int axis_u, axis_v;  // AxisCode
    bool repeated;
    float repeat_u, repeat_v;  // of no use where nothing is repeated
};
inline constexpr float IMAGE_REPEAT_MOST = 128.0f;  // either way from 0

// Puts an image (a name from 1 to 127 bytes) into a slot of a layer of the model, or with an empty name takes away what
// is there. Slot 0 goes with the way it lies, which maps the layer anew. Unlike the operations above it looks before it
// writes: false, with nothing changed and the reason in the load-error record, when the image cannot be loaded.
bool layer_put_image(Model* model, Layer* layer, int slot, const std::string& name, const ImageLay& lay);

// Lays the image of a layer anew.
void layer_lay_image(Model* model, Layer* layer, const ImageLay& lay);
ImageLay layer_image_lay(const Layer* layer);

// Gives the layer a colour key, 0 to 255 each, or takes it away, and its loaded images their pixels by it. False, with
// nothing changed, without memory for these.
bool layer_change_key(Model* model, Layer* layer, const std::optional<std::array<int32_t, 3>>& key);

// Names of images and mirror images of the model and its children, a blank before each, in a static text; null when
// there are none.
const char* model_image_names(const Model* model);

}  // namespace pelt
