// From a primitive to its vertices: the caches of slots, and look-ups of posed positions, normals and colours.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

TriangleCache* triangle_cache_get(Session* session, Model* model, Triangle* triangle);

// A reference is a slot of the model's points (by_slot) or a point id. The posed value where the point has a state.
// Null when there is no such point.
const Vec3* point_position(Session* session, Model* model, int32_t reference, bool by_slot);
const Vec3* point_normal(Session* session, Model* model, int32_t reference, bool by_slot);
const unsigned char* point_colour(Session* session, Model* model, int32_t reference, bool by_slot);

// The posed position and normal of a point in hand.
const Vec3* point_posed_position(const Session* session, const Point* point);
const Vec3* point_posed_normal(const Session* session, const Point* point);

}  // namespace pelt
