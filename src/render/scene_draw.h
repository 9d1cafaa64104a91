// Walks the scene: models, layers, passes, children.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

void scene_draw(Session* session);
int32_t model_draw(Session* session, Model* model);  // triangles drawn, children included; 0 for null
// A triangle or quad in the form that it is shown in, flat or curved.
int32_t surface_draw(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored, bool reflection);
int32_t layer_draw(Session* session, Model* model, Layer* layer, float alpha, bool textured, bool mirrored,
                   bool reflection);
void layer_set_texture(Session* session, const unsigned char* texels, int32_t width, int32_t height, bool invisible,
                       float alpha);

}  // namespace pelt
