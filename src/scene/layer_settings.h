// The settings of a layer that are its own record's, changed together.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace pelt {

struct Layer;
struct Model;

// What is not given stays as it is.
struct LayerSettings {
    std::optional<std::array<int32_t, 3>> colour;
    std::optional<int32_t> sides;   // 1 or 2
    std::optional<int32_t> mirror;  // AxisCode, 0 for none
    std::optional<float> transparency;
    std::optional<float> reflection;  // kept by layers with an image record alone

    bool operator==(const LayerSettings&) const = default;
};

// Stores the values as they are, and tells of the change first; nothing where nothing is given.
void layer_change_settings(Model* model, Layer* layer, const LayerSettings& settings);

}  // namespace pelt
