// Primitives of a layer: triangles and quads, polygons (triangle strips), lines, and explicit texture coordinates.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/keyed_list.h"

namespace pelt {

struct Model;

inline constexpr int POLYGON_VERTEX_LIMIT = 512;

// A triangle or a quad, flat or curved. A quad's corners stand in strip order: its outline runs 0, 1, 3, 2.
// Ids are 16 bits wide by format: a higher one is cut to its low half.
struct Triangle {
    int32_t id;
    int16_t quad;
    int16_t curve_type;  // 0 flat, 1 to 4 curved
    int16_t points[4];
    int16_t normals[4];   // points whose normals belong to the corners
    int16_t controls[8];  // two for each edge: points whose normals shape it
    float uvs[4][2];
    int32_t state_index;  // slot in Session::triangle_caches, -1 for none
};

struct PolygonVertex {
    int16_t point;
    int16_t normal;
    float u, v;
};

struct Polygon {
    int32_t id;
    int16_t vertex_count;
    KeyedList vertices;  // PolygonVertex, KEY_NONE
    int32_t state_index;
};

struct Line {
    int32_t id;
    int16_t vertex_count;
    KeyedList vertices;  // int32_t point ids, KEY_NONE, read back through their low 16 bits
    int32_t state_index;
};

struct Uvee {
    int32_t point;
    float u, v;
};

struct UvPair {
    float u, v;
};

// All return 1, or 0 with nothing added; see the load-error record for the reason, where there is a text for it.
// Arrays: 4 points, 4 normals or null, 8 controls or null; the last of each matter for a quad only.
int model_add_triangle(Model* model, const char* layer, int quad, const int32_t* points, const int32_t* normals,
                       const int32_t* controls, int curve_type);
int model_add_polygon(Model* model, const char* layer, int count, const int32_t* points, const int32_t* normals);
int model_add_line(Model* model, const char* layer, int count, const int32_t* points);
int model_add_uvee(Model* model, const char* layer, int32_t point, float u, float v);

// Corners of a triangle record: 3, or 4 for a quad.
inline int triangle_corners(const Triangle* triangle) { return triangle->quad ? 4 : 3; }

// The corners at the ends of each edge, in the order of the controls that stand for them.
inline constexpr int TRIANGLE_EDGE_ENDS[] = {0, 1, 1, 2, 2, 0};
inline constexpr int QUAD_EDGE_ENDS[] = {0, 1, 1, 3, 3, 2, 2, 0};
inline const int* triangle_edge_ends(const Triangle* triangle) {
    return triangle->quad ? QUAD_EDGE_ENDS : TRIANGLE_EDGE_ENDS;
}

// The vertices of a polygon's strip, as many as its count names. With fewer than STRIP_MIN there is no triangle.
inline constexpr size_t STRIP_MIN = 3;
std::vector<PolygonVertex> polygon_strip(const Polygon& polygon);

// The point id that a stored line vertex stands for.
inline int32_t line_point_id(int32_t stored) { return static_cast<int16_t>(static_cast<uint16_t>(stored & 0xFFFF)); }

}  // namespace pelt
