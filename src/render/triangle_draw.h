// Primitives as OpenGL calls. Each returns the number of triangles drawn, 0 for a primitive with a reference that
// cannot be resolved.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

// Coordinates into a reflection map, one pair for each vertex.
void reflection_coords(const Vec3* const* positions, const Vec3* const* normals, UvPair* uvs, int count);
int32_t triangle_draw(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                      bool reflection);
int32_t polygon_draw(Session* session, Model* model, Polygon* polygon, bool textured, bool mirrored, bool reflection);

}  // namespace pelt
