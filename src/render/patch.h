// Geometry of curved primitives: control nets, evaluation on a grid, index lists, attributes, blending of weights.
// No OpenGL, no records of the scene: other rooms bake with it.
#pragma once

#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

inline constexpr int PATCH_LOD_LIMIT = 6;
inline constexpr int PATCH_VERTEX_LIMIT = 72;    // above the 64 of the finest square grid
inline constexpr int PATCH_TRIANGLE_LIMIT = 98;
inline constexpr int PATCH_NORMAL_PLACES = 12;   // corner normals 0 to 3, edge normals from 4 on
inline constexpr int PATCH_ATTRIBUTE_LIMIT = 5;  // u, v, red, green, blue

// Ten control points, then three corner and three mid normals.
struct TrianglePatch {
    Vec3 slots[16];
};

// A net of 4 rows of 4, then four corner and four mid normals.
struct QuadPatch {
    Vec3 slots[24];
};

int patch_edge_points(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3 out[2]);
int patch_edge_normal(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3* out);
int patch_centre(const Vec3 boundary[9], Vec3* out);
void patch_build_triangle(const Vec3 corners[3], const Vec3 normals[PATCH_NORMAL_PLACES], TrianglePatch* out);
void patch_build_quad(const Vec3 corners[4], const Vec3 normals[PATCH_NORMAL_PLACES], QuadPatch* out);

// Vertex counts. level is held to 1 to 6. A type without a rule for triangles counts as 3.
int patch_eval_triangle(const TrianglePatch* patch, int type, int level, Vec3* positions, Vec3* normals);
int patch_eval_quad(const QuadPatch* patch, int type, int level, Vec3* positions, Vec3* normals);

// Triangle counts.
int patch_index_triangle(int type, int level, int16_t (*out)[3]);
int patch_index_quad(int type, int level, int16_t (*out)[3]);

// table: for each attribute its values at the 3 (or 4) corners. out: all attributes of a vertex together.
// Floats written.
int patch_attributes_triangle(const float* table, int attribute_count, int type, int level, float* out);
int patch_attributes_quad(const float* table, int attribute_count, int type, int level, float* out);

void bezier_cubic(const Vec3* p0, const Vec3* p1, const Vec3* p2, const Vec3* p3, float t, Vec3* out);
void patch_point_quad(const QuadPatch* patch, float s, float t, Vec3* out);
void patch_normal_quad(const QuadPatch* patch, float s, float t, Vec3* out);

}  // namespace pelt
