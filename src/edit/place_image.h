// The content of places as bytes: how the entries of a change set are laid out. Behind the key of a slot (an integer,
// or a text with its end) comes what is named here; nothing for a free slot but where its next tenant sees the bytes of
// the former one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "edit/change_set.h"
#include "formats/animation.h"

namespace pelt {

// A layer: its settings as they stand before the lists, and which one it is. Of a free slot what a next layer finds
// there (model_add_layer).
inline constexpr size_t LAYER_SETTINGS_SIZE = offsetof(Layer, triangles);
inline constexpr size_t LAYER_LEFT_OVER = offsetof(Layer, image_axis_u);
inline constexpr size_t LAYER_LEFT_OVER_END = offsetof(Layer, bounds_min);
struct LayerImageOfSlot {
    unsigned char settings[LAYER_SETTINGS_SIZE];
    uint64_t serial;
};

// A child link. Its model is owned unless the link is borrowed, and its state is what scripts know it by.
struct LinkImage {
    ChildLink link;
    uint64_t model;  // serial, 0 for none
    int32_t state_id;
    int32_t state_slot;
};

struct RootImage {
    RootModel root;
    uint64_t model;
};

struct StateImage {
    ModelState state;
    uint64_t model;
};

// What the animation of a root hangs on.
struct HangingImage {
    ModelAnimation* animation;
    Model* parent_model;
    ModelAnimation* parent_animation;
    Joint* parent_joint;
};

// The fields of a model; the texts of opened_path and long_directory follow, each with its end where it is there.
// Where a step did not change the names, they are left as they are: a model may belong to another file since.
struct FieldsImage {
    char path[sizeof Model::path];
    char name[sizeof Model::name];
    int32_t leaves_names;
    int32_t tag;
    int32_t has_gouraud;
    int32_t has_normals;
    int32_t long_paths;
    Vec3 bounds_min;
    Vec3 bounds_max;
    int32_t has_opened_path;
    int32_t has_long_directory;
    int64_t changes;
    uint64_t version;
};

// Of the session; the texts of the animation's path and base follow in the same way.
struct SceneFieldsImage {
    float anim_end;
    float radius;
    int32_t has_path;
    int32_t has_base;
};

// What is the same for all places of a kind.
struct PlaceForm {
    size_t key_size;     // 0 for a place that is no slot with a key
    bool is_plain;       // the bytes of the element tell all
    size_t state_index;  // where a plain element has the number of its run-time record, 0 for none
    size_t vertices;     // where an element has a list of vertices, 0 for none
};
const PlaceForm& place_form(int32_t kind);

// The list that the slot of the place is in; null for a place that is no slot, or whose layer is not there.
KeyedList* place_list(Session* session, const ChangePlace& place, Model* model, Layer* layer);

// Reads a record out of bytes, wherever they stand.
template <typename Record>
Record image_read(const unsigned char* bytes) {
    Record record;
    std::memcpy(static_cast<void*>(&record), bytes, sizeof record);
    return record;
}

}  // namespace pelt
