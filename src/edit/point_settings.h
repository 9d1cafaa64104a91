// What a point holds, set for one or many.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "edit/refusal.h"
#include "scene/session.h"

namespace pelt {

// What is not given stays.
struct PointSettings {
    std::optional<Vec3> place;                     // comes out in whole numbers
    std::optional<Vec3> normal;                    // of any length but 0
    std::optional<std::array<int32_t, 3>> colour;  // 0 to 255 each
    std::optional<float> transparency;             // 0 to 1
    std::optional<float> weight;                   // -1 to 2
};

// False, with nothing changed, for a normal without a direction, and as edit_targets.
bool edit_points(Session* session, Model* model, const std::vector<int32_t>& ids, const PointSettings& settings,
                 EditRefusal* refused);

// The nearest whole numbers that a file can say.
float whole_number(double value);

}  // namespace pelt
