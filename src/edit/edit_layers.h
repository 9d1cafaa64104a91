// Changes of layers as a script asks for them: all checks come first, and then the change is made in every model that
// was read from the same file. False, with nothing changed, for a refusal.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "edit/refusal.h"
#include "formats/layer_image.h"
#include "scene/layer_settings.h"
#include "scene/session.h"

namespace pelt {

// A colour that is left out of the images, or none.
struct KeyChange {
    bool on;
    std::array<int32_t, 3> colour;  // 0 to 255 each
};

struct RepeatChange {
    bool on;
    float u, v;
};

// What is not given stays.
struct LayerEdit {
    LayerSettings settings;
    std::optional<std::string> name;
    std::optional<KeyChange> key;
    std::optional<std::array<int, 2>> axes;  // AxisCode
    std::optional<RepeatChange> repeat;
};

// The layers belong to the model. A name is for one layer alone.
bool edit_layers(Session* session, Model* model, const std::vector<const Layer*>& layers, const LayerEdit& edit,
                 EditRefusal* refused);

// A layer behind all others.
bool edit_new_layer(Session* session, Model* model, const std::string& name, const LayerEdit& edit,
                    EditRefusal* refused);

// An image for a slot (ImageSlot); an empty name takes away what is there. Of slot 0 alone what is given of the way it
// lies; what is not stays as it is, and begins with the axes x and y.
struct PictureEdit {
    int slot;
    std::string name;
    std::optional<std::array<int, 2>> axes;
    std::optional<RepeatChange> repeat;
};
bool edit_picture(Session* session, Model* model, const Layer* layer, const PictureEdit& edit, EditRefusal* refused);

// A texture coordinate of its own for a point of the model in a layer, or none.
struct UveeEdit {
    int32_t point;
    bool on;
    float u, v;
};
bool edit_uvee(Session* session, Model* model, const Layer* layer, const UveeEdit& edit, EditRefusal* refused);

}  // namespace pelt
