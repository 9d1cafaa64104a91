// Curved primitives as OpenGL calls. Each returns the number of generated triangles.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

int32_t triangle_draw_pn(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored);
int32_t triangle_draw_curved(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                             bool reflection);
int32_t triangle_draw_skinned(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored);

// The control net: slots of a TrianglePatch, or of a QuadPatch with the quad list.
void patch_net_draw(const Vec3* slots, bool quad);

}  // namespace pelt
