// The points that the primitives of a layer name as corners.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/model.h"

namespace pelt {

// Call take(id) for each corner, so that some points come more than once.
template <typename Take>
void for_each_surface_corner(const Layer& layer, Take take) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) { take(triangle.points[corner]); }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) { take(vertex.point); }
    }
}

template <typename Take>
void for_each_corner(const Layer& layer, Take take) {
    for_each_surface_corner(layer, take);
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { take(line_point_id(stored)); }
    }
}

// By slot, whether a point is out of sight because none but hidden layers use it. Empty where no layer is hidden.
std::vector<bool> model_hidden_points(const Model* model);

}  // namespace pelt
