// From a primitive to its vertices: the caches of slots, and look-ups of posed positions, normals and colours.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

// Whether the colours of the points are shown.
inline bool gouraud_on(const Session* session, const Model* model) {
    return model->has_gouraud != 0 && session->display_gouraud != 0;
}

TriangleCache* triangle_cache_make(Session* session, Model* model, Triangle* triangle);

// The triangle's cache, made on first use. Null when the session is not set up.
inline TriangleCache* triangle_cache_get(Session* session, Model* model, Triangle* triangle) {
    auto* cache = list_at<TriangleCache>(&session->triangle_caches, triangle->state_index, 0);
    return cache != nullptr ? cache : triangle_cache_make(session, model, triangle);
}

// A reference is a slot of the model's points (by_slot) or a point id. The posed value where the point has a state.
// Null when there is no such point.
const Vec3* point_position(Session* session, Model* model, int32_t reference, bool by_slot);
const Vec3* point_normal(Session* session, Model* model, int32_t reference, bool by_slot);
const unsigned char* point_colour(Session* session, Model* model, int32_t reference, bool by_slot);

// The run-time record of a point in hand, null for one at rest.
inline const PointState* point_posed(const Session* session, const Point* point) {
    return list_at<const PointState>(&session->point_states, point->state_index, 0);
}

// The posed position and normal of a point in hand.
inline const Vec3* point_posed_position(const Session* session, const Point* point) {
    const PointState* state = point_posed(session, point);
    return state != nullptr ? &state->position : &point->position;
}
inline const Vec3* point_posed_normal(const Session* session, const Point* point) {
    const PointState* state = point_posed(session, point);
    return state != nullptr ? &state->normal : &point->normal;
}

}  // namespace pelt
