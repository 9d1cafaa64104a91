// The counts that joints and blend groups keep of their points, brought along where points come and go.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/model.h"

namespace pelt {

// What counts a point: one of them, or neither for one that its own line binds, or nothing.
struct PointCounter {
    Joint* joint;
    BlendWeight* blend;
};

// Of each of the points, in their order.
std::vector<PointCounter> point_counters(Model* model, const std::vector<int32_t>& ids);

// Raises the count of each, or lowers it; a blend group that comes to 0 goes. To be called behind change_model.
void raise_counts(Model* model, const std::vector<PointCounter>& counters);
void lower_counts(Model* model, const std::vector<PointCounter>& counters);

}  // namespace pelt
