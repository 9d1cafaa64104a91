// Curved primitives as OpenGL calls. Each returns the number of generated triangles.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

int32_t triangle_draw_pn(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored);
int32_t triangle_draw_curved(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                             bool reflection);
int32_t triangle_draw_skinned(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored);

}  // namespace pelt
