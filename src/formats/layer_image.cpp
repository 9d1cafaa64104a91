// Images of layers: loading a file into one of the three slots, the repeat factors, the list of names.
//
// What surprises: a failed load leaves the name in the slot, without pixels; and an image stays attached when the
// map of the texture coordinates behind it fails.
#include "formats/layer_image.h"

#include <cstring>
#include <string>

#include "formats/texture_map.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "images/image_registry.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr size_t NAMES_TEXT_SIZE = 1024;
constexpr size_t NAMES_MARGIN = 3;  // room that stays free behind a name
constexpr int LISTED_SLOTS = 2;     // the reflection map is not listed
constexpr int RGB_BYTES = 3;
constexpr int RGBA_BYTES = 4;
constexpr int32_t IMAGE_RECORD_KEY = 1;  // any: the record is reached as the first of its list

// The layer's image record, made on first use, with the slot empty.
LayerImage* record_with_empty_slot(Model* model, Layer* layer, int slot) {
    LayerImage* image = layer_first_image(layer);
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    change_key(model, layer, CONTENT_IMAGES, IMAGE_RECORD_KEY);
    if (image != nullptr) {
        layer_image_release_slot(image, slot);
        return image;
    }
    image = list_add<LayerImage>(&layer->images, IMAGE_RECORD_KEY);
    if (image != nullptr) { *image = LayerImage{}; }
    return image;
}

bool load_slot(const Layer& layer, LayerImage& image, int slot, const char* path) {
    image.pixels[slot] = image_load(path, &image.width[slot], &image.height[slot]);
    if (image.pixels[slot] == nullptr) { return false; }
    image.image_id[slot] = image_find(path)->id;
    image.bytes_per_pixel[slot] = RGB_BYTES;
    if (layer.invisible && slot != IMAGE_SLOT_REFLECTION) {
        const int32_t* key = layer.invisible_colour;
        image.pixels[slot] = image_keyed(path, key[0], key[1], key[2]);
        if (image.pixels[slot] == nullptr) {
            load_error_set("out of memory");
            return false;
        }
        image.bytes_per_pixel[slot] = RGBA_BYTES;
    }
    return true;
}

bool name_slot(const Layer& layer, LayerImage& image, int slot, const char*) {
    static unsigned char no_pixels[RGBA_BYTES];
    image.pixels[slot] = no_pixels;
    image.bytes_per_pixel[slot] = layer.invisible && slot != IMAGE_SLOT_REFLECTION ? RGBA_BYTES : RGB_BYTES;
    return true;
}

int attach_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v,
                 bool (*fill)(const Layer& layer, LayerImage& image, int slot, const char* path)) {
    if (layer == nullptr || name == nullptr || name[0] == '\0' || slot < 0 || slot >= LAYER_IMAGE_SLOTS) { return 0; }
    Layer* target = model_find_layer(model, layer);
    LayerImage* image = target != nullptr ? record_with_empty_slot(model, target, slot) : nullptr;
    if (image == nullptr) { return 0; }
    const std::string path = model_file_path(model, name);
    str_copy(name, image->names[slot]);
    if (!fill(*target, *image, slot, path.c_str())) { return 0; }
    if (slot != IMAGE_SLOT_BASE) { return 1; }
    target->image_axis_u = axis_u;
    target->image_axis_v = axis_v;
    return layer_map_uvees(model, layer);
}

// Appends a blank and each name that fits; returns the position reached.
size_t append_layer_names(const LayerImage& image, char* text, size_t position) {
    for (int slot = 0; slot < LISTED_SLOTS; ++slot) {
        const size_t length = std::strlen(image.names[slot]);
        if (position + length + NAMES_MARGIN < NAMES_TEXT_SIZE) {
            text[position] = ' ';  // an empty slot adds its blank too: intended
            std::memcpy(text + position + 1, image.names[slot], length + 1);
            position += length + 1;
        }
    }
    return position;
}

size_t append_names(const Model& model, char* text, size_t position) {
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        if (const LayerImage* image = layer_first_image(&layer)) {
            position = append_layer_names(*image, text, position);
        }
    }
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        if (link.model != nullptr) { position = append_names(*link.model, text, position); }
    }
    return position;
}

}  // namespace

int model_add_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v) {
    return attach_image(model, layer, slot, name, axis_u, axis_v, load_slot);
}

int model_name_image(Model* model, const char* layer, int slot, const char* name, int axis_u, int axis_v) {
    return attach_image(model, layer, slot, name, axis_u, axis_v, name_slot);
}

int model_set_image_repeat(Model* model, const char* layer, int flag, float u, float v) {
    if (model == nullptr || layer == nullptr) { return 0; }
    auto* target = list_find<Layer>(&model->layers, layer);
    if (target == nullptr) { return 0; }
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, target);
    target->image_repeat = flag;
    if (flag != 0) {
        target->repeat_u = u;
        target->repeat_v = v;
    }
    return layer_map_uvees(model, layer);
}

const char* model_image_names(const Model* model) {
    static char text[NAMES_TEXT_SIZE];
    if (model == nullptr || append_names(*model, text, 0) == 0) { return nullptr; }
    return text;
}

}  // namespace pelt
