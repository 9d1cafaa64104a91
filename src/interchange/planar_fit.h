// Texture coordinates that are those of a planar map.
#pragma once

#include <cstdint>
#include <optional>

#include "interchange/soup.h"

namespace pelt {

struct PlanarFit {
    int axis_u;  // AxisCode
    int axis_v;
    float repeat_u = 1.0f;
    float repeat_v = 1.0f;
};

// The axes and factors by which the map of a layer gives every corner of this look its coordinates, within a quarter of
// a pixel of an image of 1024; none where there are no such.
std::optional<PlanarFit> fit_planar(const SoupPart& part, int32_t look);

// Axes for an image that is of one colour: along the longest side, where a map gives numbers.
PlanarFit any_planar(const SoupPart& part, int32_t look);

}  // namespace pelt
