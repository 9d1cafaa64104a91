// New records behind the last one of their list, never in a hole that something left: the order of a model's lists is
// that of its file. Whoever calls these has made all checks and called change_model.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/model.h"

namespace pelt {

inline constexpr int32_t POINT_ID_MOST = 32767;  // what a primitive can name

// The lowest id above all that are in use.
int32_t model_next_point(const Model* model);

// A point with what the other one holds, which may lie in the same list, and without a run-time record. The id is free.
Point* model_append_point(Model* model, int32_t id, const Point& like);

// A primitive like the other one under the next running number; texture coordinates as they stand there.
Triangle* layer_append_triangle(Model* model, Layer* layer, const Triangle& like);
Polygon* layer_append_polygon(Model* model, Layer* layer, const std::vector<PolygonVertex>& vertices);
Line* layer_append_line(Model* model, Layer* layer, const std::vector<int32_t>& points);

// In place of what the layer has for this point, else behind the last.
Uvee* layer_append_uvee(Model* model, Layer* layer, const Uvee& uvee);

// Take what stands in the slot out of the layer, with what it owns. A triangle's run-time record is forgotten before.
void layer_remove_triangle(Model* model, Layer* layer, int32_t slot);
void layer_remove_polygon(Model* model, Layer* layer, int32_t slot);
void layer_remove_line(Model* model, Layer* layer, int32_t slot);
void layer_remove_uvee(Model* model, Layer* layer, int32_t slot);

}  // namespace pelt
