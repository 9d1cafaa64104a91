// Texture coordinates of a layer: planar map, explicit uvees, repeat.
#pragma once

#include "foundation/math3d.h"
#include "scene/primitive.h"

namespace pelt {

struct Layer;
struct Model;

// Stores u and v in every corner of the layer. 1, or 0 when there is nothing to map or a point is missing.
int layer_map_uvees(Model* model, const char* layer);

// The same for a layer of the model, whatever its name.
int layer_map(Model* model, Layer* layer);

// Empties u and v of every corner, as in a layer that never had an image.
void layer_unmap(Model* model, Layer* layer);

// Box around the points of the layer's primitives, stored in the layer. 1 or 0.
int layer_compute_bounds(Model* model, const char* layer);

UvPair planar_uv(float x, float y, float z, const Vec3* bounds_min, const Vec3* bounds_max, int axis_u, int axis_v);

// Folds a coordinate of any size back and forth into 0 to 1, in constant time; a non-finite one gives 0.
float fold_uv(float x);

}  // namespace pelt
