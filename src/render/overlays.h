// Line and marker drawings over the surface: points with numbers, skeleton, polylines, normals, control nets.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

void points_draw(Session* session, Model* model);
void skeleton_draw(Session* session, Model* model);
void line_draw(Session* session, Model* model, Line* line);
void triangle_normals_draw(Session* session, Model* model, Triangle* triangle);
void polygon_normals_draw(Session* session, Model* model, Polygon* polygon);
void patch_normals_draw(Session* session, Model* model, Triangle* triangle, int count, const Vec3* positions,
                        const Vec3* normals);

// The control net of a patch: slots of a TrianglePatch, or of a QuadPatch with the quad list.
void patch_net_draw(const Vec3* slots, bool quad);

float triangle_mean_edge(const Vec3* a, const Vec3* b, const Vec3* c);
void session_set_points_color(Session* session, int32_t index);  // -1 to 5; anything else is dropped

}  // namespace pelt
