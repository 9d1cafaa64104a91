// Layers of a model. What surprises: a rename moves the record to another slot, lists and all.
#include "scene/layer.h"

#include <initializer_list>

#include "foundation/load_error.h"
#include "foundation/text.h"
#include "images/image_registry.h"
#include "scene/change.h"

namespace pelt {

namespace {

uint64_t layers_made = 0;

constexpr int32_t FULL_COLOUR = 127;
constexpr float NO_COLOUR = 255.0f;         // every channel of the colour of an absent layer
constexpr float COLOUR_KEY_SCALE = 255.0f;  // from 0.0 to 1.0 in a file to a byte

// Without a text: for operations whose failure is silent.
template <typename AnyModel>
auto find_layer_silently(AnyModel* model, const char* name) {
    return model != nullptr && name != nullptr ? list_find<Layer>(&model->layers, name) : nullptr;
}

// The settings of a layer are about to change.
void change_layer(Model* model, const Layer* layer) {
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
}

bool is_unit_range(float value) { return value >= 0.0f && value <= 1.0f; }

// What a layer owns, where it goes out of a model.
void part_with_layer_content(Model* model, Layer* layer) {
    if (!change_keeps_layer(model, layer)) { layer_release_content(layer); }
}

void init_layer_lists(Layer* layer) {
    list_init(&layer->triangles, sizeof(Triangle), KEY_INT);
    list_init(&layer->polygons, sizeof(Polygon), KEY_INT);
    list_init(&layer->lines, sizeof(Line), KEY_INT);
    list_init(&layer->uvees, sizeof(Uvee), KEY_INT);
    list_init(&layer->images, sizeof(LayerImage), KEY_INT);
}

// What a new layer has that depends on nothing.
void start_layer(Layer* layer, const char* name) {
    str_copy(name, layer->name);
    layer->transparency = 0.0f;
    layer->invisible = 0;
    for (int32_t& channel : layer->invisible_colour) { channel = 0; }
    layer->bounds_min = Vec3{};
    layer->bounds_max = Vec3{};
    init_layer_lists(layer);
    layer->serial = ++layers_made;
    layer->holds_images = 0;
    layer->hidden = 0;
}

}  // namespace

int model_add_layer(Model* model, const char* name, int red, int green, int blue, int singlesided, int mirror,
                    int mirror_axis) {
    if (model == nullptr || name == nullptr) { return 0; }
    if (find_layer_silently(model, name) != nullptr) {
        load_error_set("duplicate layer name not allowed");
        return 0;
    }
    load_error_set(nullptr);
    change_model(model);
    change_key(model, nullptr, CONTENT_LAYERS, name);
    Layer* layer = list_add<Layer>(&model->layers, name);
    if (layer == nullptr) { return 0; }
    // Intended: image axes and repeat are not written, a slot used again keeps those of the layer before.
    start_layer(layer, name);
    layer->colour[0] = red;
    layer->colour[1] = green;
    layer->colour[2] = blue;
    layer->singlesided = singlesided;
    layer->mirror = mirror;
    layer->mirror_axis = mirror_axis;
    return 1;
}

Layer* model_append_layer(Model* model, const char* name) {
    if (model == nullptr || name == nullptr) { return nullptr; }
    const int32_t slot = list_end_slot(&model->layers);
    change_model(model);
    change_slot(model, nullptr, CONTENT_LAYERS, slot);
    auto* layer = static_cast<Layer*>(list_add_at(&model->layers, slot, name));
    if (layer == nullptr) { return nullptr; }
    *layer = Layer{};
    start_layer(layer, name);
    for (int32_t& channel : layer->colour) { channel = FULL_COLOUR; }
    layer->singlesided = 1;
    layer->mirror_axis = AXIS_X;
    return layer;
}

const Layer* model_find_layer(const Model* model, const char* name) {
    if (model == nullptr || name == nullptr) { return nullptr; }
    const Layer* layer = find_layer_silently(model, name);
    if (layer == nullptr) { load_error_set("layer does not exist"); }
    return layer;
}

int model_delete_layer(Model* model, const char* name) {
    if (find_layer_silently(model, name) == nullptr) { return 0; }
    change_model(model);
    model_delete_layer_slot(model, list_index_of(&model->layers, name, 0));
    return 1;
}

void layer_release_content(Layer* layer) {
    for (LayerImage& image : list_elements<LayerImage>(layer->images)) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) { layer_image_release_slot(&image, slot); }
    }
    for (Polygon& polygon : list_elements<Polygon>(layer->polygons)) { list_free(&polygon.vertices); }
    for (Line& line : list_elements<Line>(layer->lines)) { list_free(&line.vertices); }
    for (KeyedList* list : {&layer->triangles, &layer->polygons, &layer->lines, &layer->images, &layer->uvees}) {
        list_free(list);
    }
}

void model_delete_layer_slot(Model* model, int32_t slot) {
    Layer* layer = model != nullptr ? list_at<Layer>(&model->layers, slot, 0) : nullptr;
    if (layer != nullptr) {
        change_slot(model, nullptr, CONTENT_LAYERS, slot);
        part_with_layer_content(model, layer);
        list_remove_slot(&model->layers, slot);
    }
}

int model_rename_layer(Model* model, const char* old_name, const char* new_name) {
    const Layer* layer = find_layer_silently(model, old_name);
    if (layer == nullptr || new_name == nullptr || new_name[0] == '\0') { return 0; }
    Layer* replaced = find_layer_silently(model, new_name);
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    if (replaced != nullptr && replaced != layer) {
        change_element(model, nullptr, CONTENT_LAYERS, replaced);
        part_with_layer_content(model, replaced);
    }
    Layer renamed = *layer;
    str_copy(new_name, renamed.name);
    // The names may lie in the records themselves, so the new key is a copy.
    char key[sizeof renamed.name];
    str_copy(new_name, key);
    list_remove(&model->layers, old_name);
    change_key(model, nullptr, CONTENT_LAYERS, static_cast<const char*>(key));
    *list_add<Layer>(&model->layers, key) = renamed;
    return 1;
}

void model_rename_layer_in_place(Model* model, Layer* layer, const char* new_name) {
    if (model == nullptr || layer == nullptr || new_name == nullptr) { return; }
    char key[sizeof layer->name];
    str_copy(new_name, key);  // it may lie in the record
    const int32_t slot = list_slot_of_element(&model->layers, layer);
    change_layer(model, layer);
    list_remove_slot(&model->layers, slot);
    list_add_at(&model->layers, slot, static_cast<const char*>(key));
    str_copy(key, layer->name);
}

void model_layer_colour(const Model* model, const char* name, float out[4]) {
    if (out == nullptr) { return; }
    const Layer* layer = model_find_layer(model, name);
    for (int channel = 0; channel < 4; ++channel) { out[channel] = NO_COLOUR; }
    if (layer != nullptr) {
        for (int channel = 0; channel < 3; ++channel) { out[channel] = static_cast<float>(layer->colour[channel]); }
        out[3] = 0.0f;
    }
}

int model_set_layer_colour(Model* model, const char* name, int red, int green, int blue) {
    Layer* layer = model_find_layer(model, name);
    if (layer == nullptr) { return 0; }
    change_layer(model, layer);
    layer->colour[0] = red;
    layer->colour[1] = green;
    layer->colour[2] = blue;
    return 1;
}

int model_layer_sides(const Model* model, const char* name) {
    const Layer* layer = model_find_layer(model, name);
    return layer == nullptr || layer->singlesided ? 1 : 2;
}

int model_set_layer_sides(Model* model, const char* name, int sides) {
    Layer* layer = model_find_layer(model, name);
    if (layer == nullptr) { return 0; }
    change_layer(model, layer);
    layer->singlesided = sides > 1 ? 0 : 1;
    return 1;
}

int model_layer_mirror(const Model* model, const char* name) {
    const Layer* layer = model_find_layer(model, name);
    return layer != nullptr && layer->mirror ? layer->mirror_axis : 0;
}

int model_set_layer_mirror(Model* model, const char* name, int code) {
    Layer* layer = model_find_layer(model, name);
    if (layer == nullptr) { return 0; }
    change_layer(model, layer);
    // Intended: any code but these four changes nothing and still counts as success.
    if (code == 0) {
        layer->mirror = 0;
    } else if (code == AXIS_X || code == AXIS_Y || code == AXIS_Z) {
        layer->mirror = 1;
        layer->mirror_axis = code;
    }
    return 1;
}

float model_layer_transparency(const Model* model, const char* name) {
    const Layer* layer = model_find_layer(model, name);
    return layer != nullptr ? layer->transparency : 0.0f;
}

int model_set_layer_transparency(Model* model, const char* name, float value) {
    Layer* layer = model_find_layer(model, name);
    if (layer == nullptr) { return 0; }
    change_layer(model, layer);
    layer->transparency = value;
    return 1;
}

int model_set_transparency(Model* model, const char* name, float value) {
    return is_unit_range(value) ? model_set_layer_transparency(model, name, value) : 0;
}

int model_set_invisible(Model* model, const char* name, float red, float green, float blue) {
    if (model == nullptr || name == nullptr) { return 0; }
    if (!is_unit_range(red) || !is_unit_range(green) || !is_unit_range(blue)) {
        load_error_set("invisible color out of range (should be 0.0 to 1.0)");
        return 0;
    }
    Layer* layer = model_find_layer(model, name);
    if (layer == nullptr) { return 0; }
    change_layer(model, layer);
    layer->invisible = 1;
    layer->invisible_colour[0] = float_to_int(red * COLOUR_KEY_SCALE);
    layer->invisible_colour[1] = float_to_int(green * COLOUR_KEY_SCALE);
    layer->invisible_colour[2] = float_to_int(blue * COLOUR_KEY_SCALE);
    return 1;
}

int model_set_reflection(Model* model, const char* name, float value) {
    if (!is_unit_range(value)) { return 0; }
    Layer* layer = model_find_layer(model, name);
    LayerImage* image = layer_first_image(layer);
    if (image == nullptr) { return 0; }
    change_model(model);
    change_element(model, layer, CONTENT_IMAGES, image);
    image->reflection = value;
    return 1;
}

const LayerImage* layer_first_image(const Layer* layer) {
    if (layer == nullptr) { return nullptr; }
    return list_at<LayerImage>(&layer->images, list_next_slot(&layer->images, 0), 0);
}

void layer_image_rename(Model* model, Layer* layer, int slot, const char* name) {
    LayerImage* image = layer_first_image(layer);
    if (image == nullptr || slot < 0 || slot >= LAYER_IMAGE_SLOTS) { return; }
    change_model(model);
    change_element(model, layer, CONTENT_IMAGES, image);
    str_copy(name, image->names[slot]);
}

void layer_image_release_slot(LayerImage* image, int slot) {
    if (image == nullptr || slot < 0 || slot >= LAYER_IMAGE_SLOTS) { return; }
    // By the id of the reference: the path that led to it may have changed since.
    if (image->image_id[slot] > 0) { image_release_id(image->image_id[slot]); }
    image->image_id[slot] = 0;
    image->pixels[slot] = nullptr;
    image->bytes_per_pixel[slot] = 0;
}

}  // namespace pelt
