// Geometry of curved primitives: control nets, evaluation on a grid, index lists, attributes, blending of weights.
// No OpenGL, no records of the scene: other rooms bake with it.
//
// level is the level of detail, held to 1 to 6: level + 1 segments on each curved edge. type is the curve type of the
// primitive. Vertices are numbered alike by the evaluation, the index lists, the attributes and the weights. Nothing
// is allocated and nothing is refused: degenerate edges, zero normals and non-finite numbers give non-finite vertices.
#pragma once

#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

inline constexpr int PATCH_LOD_LIMIT = 6;
inline constexpr int PATCH_VERTEX_LIMIT = 72;  // above the 64 of the finest square grid
inline constexpr int PATCH_TRIANGLE_LIMIT = 98;
inline constexpr int PATCH_NORMAL_PLACES = 12;   // corner normals 0 to 3, edge normals from 4 on
inline constexpr int PATCH_EDGE_NORMALS = 4;     // place of the first edge normal
inline constexpr int PATCH_ATTRIBUTE_LIMIT = 5;  // u, v, red, green, blue

// Ten control points, then three corner and three mid normals.
struct TrianglePatch {
    Vec3 slots[16];
};

// A net of 4 rows of 4, then four corner and four mid normals.
struct QuadPatch {
    Vec3 slots[24];
};

// The curve type by which a primitive that is no quad is evaluated and indexed: 1 and 2 stand for themselves,
// everything else (4 may come from a file) is a full triangle, 3.
inline constexpr int patch_triangle_type(int curve_type) { return curve_type == 1 || curve_type == 2 ? curve_type : 3; }

// The two inner control points of an edge. Exchanging the ends gives the same two points in the other order. 2.
int patch_edge_points(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3 out[2]);

// The normal in the middle of an edge. 1.
int patch_edge_normal(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3* out);

// The centre control point from the boundary in order: a corner, the two points of the edge behind it, and so on. 1.
int patch_centre(const Vec3 boundary[9], Vec3* out);

// normals: corner normals in places 0 to 2 (0 to 3 of a quad), then two for each edge from place 4 on, each at its
// end: edges 0-1, 1-2, 2-0 of a triangle, 0-1, 1-3, 3-2, 2-0 of a quad.
void patch_build_triangle(const Vec3 corners[3], const Vec3 normals[PATCH_NORMAL_PLACES], TrianglePatch* out);
void patch_build_quad(const Vec3 corners[4], const Vec3 normals[PATCH_NORMAL_PLACES], QuadPatch* out);

// Vertex counts; both arrays have room for PATCH_VERTEX_LIMIT. A type without a rule for triangles counts as 3.
int patch_eval_triangle(const TrianglePatch* patch, int type, int level, Vec3* positions, Vec3* normals);
int patch_eval_quad(const QuadPatch* patch, int type, int level, Vec3* positions, Vec3* normals);

// Triangle counts; out has room for PATCH_TRIANGLE_LIMIT. A type without a rule for triangles gives an empty list:
// see patch_triangle_type.
int patch_index_triangle(int type, int level, int16_t (*out)[3]);
int patch_index_quad(int type, int level, int16_t (*out)[3]);

// table: for each attribute its values at the 3 (or 4) corners. out: all attributes of a vertex together.
// Floats written.
int patch_attributes_triangle(const float* table, int attribute_count, int type, int level, float* out);
int patch_attributes_quad(const float* table, int attribute_count, int type, int level, float* out);

// Joint weights over a patch, in two steps. First, what is blended: from the weight of each corner (3, or 4 of a
// quad) and whether its first joint is that of corner 0, table has as many floats as corners.
void patch_weight_table(const float* weights, const bool* same_joint, int corners, float* table);

// Second, the share of the first joint at each vertex, 1 - the blended table. Floats written, one a vertex.
int patch_weights_triangle(const float* table, int type, int level, float* out);
int patch_weights_quad(const float* table, int type, int level, float* out);

// What the patch of a primitive is made of: its 3 corners, or 4 of a quad, in their order.
struct PatchCorners {
    int count;
    Vec3 positions[4];
    Vec3 normals[PATCH_NORMAL_PLACES];
    const float* uvs[4];  // two each
    const unsigned char* colours[4];
};

// A patch and its grid. Not to be copied: two pointers lead into it.
struct PatchSurface {
    bool quad;
    int type;
    int level;
    int vertex_count;
    int triangle_count;
    QuadPatch net;  // or a TrianglePatch in its first slots
    Vec3 positions[PATCH_VERTEX_LIMIT];
    Vec3 normals[PATCH_VERTEX_LIMIT];
    int16_t triangles[PATCH_TRIANGLE_LIMIT][3];
    float attributes[PATCH_VERTEX_LIMIT * PATCH_ATTRIBUTE_LIMIT];
    int attribute_count;
    const float* uvs;      // of vertex 0, the next attribute_count floats on; null when none are asked for
    const float* colours;  // the same
};

// No vertex of the surface lies farther than this from the hull of the corners.
float patch_bulge(const PatchCorners& corners);

// All of a surface but the attributes.
void patch_surface(const PatchCorners& corners, int curve_type, int level, PatchSurface* out);

// Its attributes: texture coordinates, and colours, their bytes times colour_scale, where they are asked for.
void patch_surface_attributes(const PatchCorners& corners, bool textured, bool coloured, float colour_scale,
                              PatchSurface* surface);

// The share of the first joint at each vertex, as by patch_weight_table.
void patch_surface_weights(const PatchSurface& surface, const float* weights, const bool* same_joint, float* out);

void bezier_cubic(const Vec3* p0, const Vec3* p1, const Vec3* p2, const Vec3* p3, float t, Vec3* out);

// s runs from corner 0 towards corner 1, t from corner 0 towards corner 2.
void patch_point_quad(const QuadPatch* patch, float s, float t, Vec3* out);
void patch_normal_quad(const QuadPatch* patch, float s, float t, Vec3* out);

}  // namespace pelt
