// Layers of a model: colour, sides, mirror, images and the primitives.
#pragma once

#include <concepts>
#include <cstdint>

#include "foundation/keyed_list.h"
#include "foundation/math3d.h"

namespace pelt {

struct Model;

inline constexpr int LAYER_IMAGE_SLOTS = 3;
enum ImageSlot : int { IMAGE_SLOT_BASE = 0, IMAGE_SLOT_MIRROR = 1, IMAGE_SLOT_REFLECTION = 2 };

// Axis codes, for mirrors and image axes alike.
enum AxisCode : int { AXIS_X = 1, AXIS_Y = 2, AXIS_Z = 3, AXIS_MINUS_X = 4, AXIS_MINUS_Y = 5, AXIS_MINUS_Z = 6 };

// The mirror image of a place or direction. Any code but the first three leaves it as it is: intended.
inline Vec3 mirrored_along(const Vec3& v, int axis_code) {
    return {axis_code == AXIS_X ? -v.x : v.x, axis_code == AXIS_Y ? -v.y : v.y, axis_code == AXIS_Z ? -v.z : v.z};
}

struct LayerImage {
    char names[LAYER_IMAGE_SLOTS][128];  // file names as the model file says them, without its directory
    int32_t width[LAYER_IMAGE_SLOTS];
    int32_t height[LAYER_IMAGE_SLOTS];
    unsigned char* pixels[LAYER_IMAGE_SLOTS];    // in the image registry; null when the slot is empty
    int32_t image_id[LAYER_IMAGE_SLOTS];         // the reference that the slot holds, 0 for none
    int32_t bytes_per_pixel[LAYER_IMAGE_SLOTS];  // 3, or 4 for pixels with a colour key
    float reflection;
};

// What stands before the lists are the settings; what stands behind them is of this run of the program.
struct Layer {
    char name[128];
    int32_t colour[3];  // 127 is full intensity
    int32_t singlesided;
    float transparency;  // 0.0 opaque to 1.0
    int32_t mirror;
    int32_t mirror_axis;  // AxisCode
    int32_t invisible;    // the images have a colour key
    int32_t invisible_colour[3];
    int32_t image_axis_u;
    int32_t image_axis_v;
    int32_t image_repeat;
    float repeat_u;
    float repeat_v;
    Vec3 bounds_min;
    Vec3 bounds_max;
    KeyedList triangles;   // Triangle, KEY_INT
    KeyedList polygons;    // Polygon, KEY_INT
    KeyedList lines;       // Line, KEY_INT
    KeyedList uvees;       // Uvee, KEY_INT, by point id
    KeyedList images;      // LayerImage, KEY_INT, at most one
    uint64_t serial;       // of the process: tells the layer from another one that had, or has, its slot or its name
    int32_t holds_images;  // 1: it is out of the scene, and its images are held (image_hold) instead of referred to
    int32_t hidden;        // neither drawn nor picked; of this run alone, no file holds it
};

inline bool layer_has_surface(const Layer& layer) {
    return list_count(&layer.triangles) > 0 || list_count(&layer.polygons) > 0;
}

// 1, or 0 with a load error when the name is taken.
int model_add_layer(Model* model, const char* name, int red, int green, int blue, int singlesided, int mirror,
                    int mirror_axis);
const Layer* model_find_layer(const Model* model, const char* name);  // null with a load error when absent
template <std::same_as<Model> Owner>
Layer* model_find_layer(Owner* model, const char* name) {
    return const_cast<Layer*>(model_find_layer(static_cast<const Model*>(model), name));
}
int model_delete_layer(Model* model, const char* name);  // 0 when absent, without a text

// Releases all that a layer holds; the record stays. For whoever took it over (change_keeps_layer).
void layer_release_content(Layer* layer);

// A layer behind all others with nothing in it: colour 127, one side. The name is one that the model's layers do not
// have. Null, with nothing done, for a null argument.
Layer* model_append_layer(Model* model, const char* name);

// Gives a layer another name in its own slot. The name is one that the other layers do not have.
void model_rename_layer_in_place(Model* model, Layer* layer, const char* new_name);

// Releases what a layer holds (images, vertex lists) and frees its slot, whatever its name.
void model_delete_layer_slot(Model* model, int32_t slot);

// 1; 0 when the new name is empty or the layer is absent. A layer that had the new name is released.
int model_rename_layer(Model* model, const char* old_name, const char* new_name);

void model_layer_colour(const Model* model, const char* name, float out[4]);  // 255.0 four times when absent
int model_set_layer_colour(Model* model, const char* name, int red, int green, int blue);
int model_layer_sides(const Model* model, const char* name);  // 1 or 2; 1 when absent
int model_set_layer_sides(Model* model, const char* name, int sides);
int model_layer_mirror(const Model* model, const char* name);  // axis code, 0 for none
int model_set_layer_mirror(Model* model, const char* name, int code);
float model_layer_transparency(const Model* model, const char* name);
int model_set_layer_transparency(Model* model, const char* name, float value);  // any value
int model_set_transparency(Model* model, const char* name, float value);        // 0.0 to 1.0 only
int model_set_invisible(Model* model, const char* name, float red, float green, float blue);
int model_set_reflection(Model* model, const char* name, float value);

// The layer's one image record, or null.
const LayerImage* layer_first_image(const Layer* layer);
template <std::same_as<Layer> Owner>
LayerImage* layer_first_image(Owner* layer) {
    return const_cast<LayerImage*>(layer_first_image(static_cast<const Layer*>(layer)));
}

// Another name for what the slot holds already.
void layer_image_rename(Model* model, Layer* layer, int slot, const char* name);

// Gives back the reference that a slot of the record holds and empties its pixels. The name stays.
void layer_image_release_slot(LayerImage* image, int slot);

}  // namespace pelt
