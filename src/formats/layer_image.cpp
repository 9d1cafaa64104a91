// Images of layers: loading a file into one of the three slots, the repeat factors, the list of names.
//
// What surprises: a failed load leaves the name in the slot, without pixels; and an image stays attached when the
// map of the texture coordinates behind it fails.
#include "formats/layer_image.h"

#include <algorithm>
#include <cstring>
#include <iterator>

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

// Takes over the contents of a slot of another record.
void move_slot(LayerImage* from, LayerImage* to, int slot) {
    layer_image_release_slot(to, slot);
    str_copy(from->names[slot], to->names[slot]);
    to->width[slot] = from->width[slot];
    to->height[slot] = from->height[slot];
    to->pixels[slot] = from->pixels[slot];
    to->image_id[slot] = from->image_id[slot];
    to->bytes_per_pixel[slot] = from->bytes_per_pixel[slot];
}

bool has_any_image(const LayerImage& image) {
    return std::any_of(std::begin(image.names), std::end(image.names),
                       [](const char* name) { return name[0] != '\0'; });
}

void store_lay(Layer* layer, const ImageLay& lay) {
    layer->image_axis_u = lay.axis_u;
    layer->image_axis_v = lay.axis_v;
    layer->image_repeat = lay.repeated ? 1 : 0;
    layer->repeat_u = lay.repeated ? lay.repeat_u : 0.0f;
    layer->repeat_v = lay.repeated ? lay.repeat_v : 0.0f;
}

void remove_image(Model* model, Layer* layer, int slot) {
    LayerImage* image = layer_first_image(layer);
    if (image == nullptr || image->names[slot][0] == '\0') { return; }
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    change_element(model, layer, CONTENT_IMAGES, image);
    LayerImage empty{};
    move_slot(&empty, image, slot);
    if (slot == IMAGE_SLOT_REFLECTION) { image->reflection = 0.0f; }
    if (!has_any_image(*image)) { list_remove_slot(&layer->images, list_slot_of_element(&layer->images, image)); }
    if (slot == IMAGE_SLOT_BASE) {
        store_lay(layer, ImageLay{});
        layer_unmap(model, layer);
    }
}

// What a key is made for.
constexpr int KEYED_SLOTS[] = {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR};

struct KeyedImages {
    ImageData* images[std::size(KEYED_SLOTS)];  // each with a reference; null for a slot that has none
};

// False, with nothing kept, when one could not be had.
bool take_keyed_images(const LayerImage& image, const std::array<int32_t, 3>& key, KeyedImages* taken) {
    *taken = KeyedImages{};
    for (const int slot : KEYED_SLOTS) {
        if (image.pixels[slot] == nullptr) { continue; }
        taken->images[slot] = image_with_key(image.image_id[slot], key[0], key[1], key[2]);
        if (taken->images[slot] != nullptr) { continue; }
        for (ImageData* each : taken->images) {
            if (each != nullptr) { image_release_id(each->id); }
        }
        load_error_set("out of memory");
        return false;
    }
    return true;
}

void store_keyed_image(LayerImage* image, int slot, const ImageData* keyed) {
    if (keyed == nullptr) { return; }
    layer_image_release_slot(image, slot);
    image->image_id[slot] = keyed->id;
    image->pixels[slot] = keyed->keyed_pixels;
    image->bytes_per_pixel[slot] = RGBA_BYTES;
}

void drop_key(LayerImage* image, int slot) {
    const ImageData* plain = image_find_id(image->image_id[slot]);
    if (image->pixels[slot] == nullptr || plain == nullptr) { return; }
    image->pixels[slot] = plain->pixels;
    image->bytes_per_pixel[slot] = RGB_BYTES;
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

bool layer_put_image(Model* model, Layer* layer, int slot, const std::string& name, const ImageLay& lay) {
    if (model == nullptr || layer == nullptr || slot < 0 || slot >= LAYER_IMAGE_SLOTS) { return false; }
    if (name.empty()) {
        remove_image(model, layer, slot);
        return true;
    }
    LayerImage loaded{};
    str_copy(name.c_str(), loaded.names[slot]);
    load_error_set(nullptr);
    if (!load_slot(*layer, loaded, slot, model_file_path(model, name.c_str()).c_str())) {
        layer_image_release_slot(&loaded, slot);
        return false;
    }
    LayerImage* image = record_with_empty_slot(model, layer, slot);
    move_slot(&loaded, image, slot);
    if (slot == IMAGE_SLOT_BASE) {
        store_lay(layer, lay);
        layer_map(model, layer);
    }
    return true;
}

void layer_lay_image(Model* model, Layer* layer, const ImageLay& lay) {
    if (model == nullptr || layer == nullptr) { return; }
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    store_lay(layer, lay);
    layer_map(model, layer);
}

ImageLay layer_image_lay(const Layer* layer) {
    if (layer == nullptr) { return ImageLay{}; }
    return ImageLay{layer->image_axis_u, layer->image_axis_v, layer->image_repeat != 0, layer->repeat_u,
                    layer->repeat_v};
}

bool layer_change_key(Model* model, Layer* layer, const std::optional<std::array<int32_t, 3>>& key) {
    if (model == nullptr || layer == nullptr) { return false; }
    LayerImage* image = layer_first_image(layer);
    KeyedImages keyed{};
    if (key && image != nullptr && !take_keyed_images(*image, *key, &keyed)) { return false; }
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    layer->invisible = key ? 1 : 0;
    for (size_t channel = 0; channel < 3; ++channel) { layer->invisible_colour[channel] = key ? (*key)[channel] : 0; }
    if (image == nullptr) { return true; }
    change_element(model, layer, CONTENT_IMAGES, image);
    for (const int slot : KEYED_SLOTS) {
        if (key) {
            store_keyed_image(image, slot, keyed.images[slot]);
        } else {
            drop_key(image, slot);
        }
    }
    return true;
}

const char* model_image_names(const Model* model) {
    static char text[NAMES_TEXT_SIZE];
    if (model == nullptr || append_names(*model, text, 0) == 0) { return nullptr; }
    return text;
}

}  // namespace pelt
