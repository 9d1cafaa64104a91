// Points that go with points: what is linked with them, what lies around, what is like them. Nothing is changed.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/model.h"

namespace pelt {

// All in rising order.
std::vector<int32_t> points_linked(const Model* model, const std::vector<int32_t>& ids);  // through faces and lines
std::vector<int32_t> points_grown(const Model* model, const std::vector<int32_t>& ids);   // by those on the same ones
std::vector<int32_t> points_inverted(const Model* model, const std::vector<int32_t>& ids);

enum class PointLikeness { LAYER, NORMAL, COLOUR };  // used by one layer; the same direction; the same four channels

// Those that are like any of these, themselves included.
std::vector<int32_t> points_like(const Model* model, const std::vector<int32_t>& ids, PointLikeness likeness);

}  // namespace pelt
