// Curved triangles and quads as pure geometry: from corners and normals to a control net, from the net to vertices,
// index lists and attributes. What surprises: a third is written 0.33333 in one place and 0.333333 in another and a
// sixth 0.166666, and grid parameters grow by repeated addition, so a flat patch comes out a hair off its plane and
// the last row a hair off its edge. Both are intended: neighbouring patches, old and new, share those hairs.
#include "surfaces/patch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace pelt {
namespace {

constexpr float EDGE_THIRD = 0.33333f;
constexpr float CORNER_THIRD = 0.333333f;
constexpr float EDGE_SIXTH = 0.166666f;

constexpr int TRIANGLE_TYPES = 3;
constexpr int TRIANGLE_GRID_LIMIT = 36;  // vertices of the finest triangular grid
constexpr int TRIANGLE_POINTS = 10;      // control points of a triangle, slots 0 to 9
constexpr int TRIANGLE_NORMALS = 6;      // its control normals, slots 10 to 15

// Slots of the control normals of a quad, in the order of its corners and of its edges 0-1, 1-3, 3-2, 2-0.
enum QuadNormalSlot : int { CORNER_0 = 16, CORNER_1, CORNER_2, CORNER_3, MID_01, MID_13, MID_32, MID_20 };

Vec3 multiply(const Vec3& a, float f) { return {a.x * f, a.y * f, a.z * f}; }
Vec3 lerp(const Vec3& from, const Vec3& to, float f) { return vec_add(multiply(vec_subtract(to, from), f), from); }

constexpr int hold_level(int level) { return std::clamp(level, 1, PATCH_LOD_LIMIT); }
constexpr int edge_vertices(int level) { return hold_level(level) + 2; }
constexpr float edge_step(int level) { return 1.0f / static_cast<float>(hold_level(level) + 1); }
constexpr int quad_columns(int type, int level) { return type == 2 ? 2 : edge_vertices(level); }
constexpr float quad_column_step(int type, int level) { return type == 2 ? 1.0f : edge_step(level); }

// One vertex of a triangular grid: its parameters and the weights of the control slots there.
struct GridVertex {
    float u, v;
    float point_weights[TRIANGLE_POINTS];
    float normal_weights[TRIANGLE_NORMALS];
};

struct TriangleGrid {
    int count;
    GridVertex vertices[TRIANGLE_GRID_LIMIT];
};

constexpr GridVertex grid_vertex(float u, float v) {
    const float w = 1.0f - u - v;
    return {u,
            v,
            {w * w * w, 3.0f * w * w * v, 3.0f * w * w * u, 3.0f * w * v * v, 6.0f * w * u * v, 3.0f * w * u * u,
             v * v * v, 3.0f * u * v * v, 3.0f * u * u * v, u * u * u},
            {w * w, u * u, v * v, w * u, u * v, w * v}};
}

constexpr void add_row(TriangleGrid& grid, float v, int vertices, float step) {
    float u = 0.0f;
    for (int i = 0; i < vertices; ++i, u += step) { grid.vertices[grid.count++] = grid_vertex(u, v); }
}

constexpr TriangleGrid triangle_grid(int type, int level) {
    TriangleGrid grid{};
    const int n = edge_vertices(level);
    const float step = edge_step(level);
    add_row(grid, 0.0f, n, step);
    if (type == 1) { add_row(grid, 1.0f, 1, step); }
    float v = step;
    for (int row = 1; type != 1 && row < n; ++row, v += step) { add_row(grid, v, type == 2 ? 1 : n - row, step); }
    return grid;
}

constexpr auto all_triangle_grids() {
    std::array<std::array<TriangleGrid, PATCH_LOD_LIMIT>, TRIANGLE_TYPES> grids{};
    for (int type = 1; type <= TRIANGLE_TYPES; ++type) {
        for (int level = 1; level <= PATCH_LOD_LIMIT; ++level) {
            grids[static_cast<size_t>(type - 1)][static_cast<size_t>(level - 1)] = triangle_grid(type, level);
        }
    }
    return grids;
}

// The parameters and weights depend on type and level alone, so the compiler works them out.
constexpr auto TRIANGLE_GRIDS = all_triangle_grids();

const TriangleGrid& grid_of(int type, int level) {
    return TRIANGLE_GRIDS[static_cast<size_t>(patch_triangle_type(type) - 1)]
                         [static_cast<size_t>(hold_level(level) - 1)];
}

// The sum over this many control slots, each by its weight, in slot order.
template <int Slots>
Vec3 weighted_sum(const Vec3* slots, const float* weights) {
    Vec3 sum = multiply(slots[0], weights[0]);
    for (int i = 1; i < Slots; ++i) { sum = vec_add(sum, multiply(slots[i], weights[i])); }
    return sum;
}

int16_t number(int vertex) { return static_cast<int16_t>(vertex); }

void set_triple(int16_t (&out)[3], int a, int b, int c) {
    out[0] = number(a);
    out[1] = number(b);
    out[2] = number(c);
}

// One curved row of n vertices, then the apex.
int index_fan(int n, int16_t (*out)[3]) {
    for (int i = 0; i < n - 1; ++i) { set_triple(out[i], i, i + 1, n); }
    return n - 1;
}

// Two curved rows that share their first vertex.
int index_ladder(int n, int16_t (*out)[3]) {
    int count = 0;
    set_triple(out[count++], 0, 1, n);
    for (int i = 1; i <= n - 2; ++i) {
        set_triple(out[count++], i, i + 1, i + n - 1);
        set_triple(out[count++], i + n - 1, i + 1, i + n);
    }
    return count;
}

// Rows of n, n - 1, ... 1 vertices.
int index_full(int n, int16_t (*out)[3]) {
    int count = 0;
    int k = 0;
    for (int width = n - 1; width >= 1; --width) {
        for (int i = 0; i < width; ++i, ++k) {
            set_triple(out[count++], k, k + 1, k + width + 1);
            if (i != width - 1) { set_triple(out[count++], k + 1, k + width + 2, k + width + 1); }
        }
        ++k;
    }
    return count;
}

// The four rows of the net at one s: control points of the curve along t.
void row_points(const QuadPatch* patch, float s, Vec3 out[4]) {
    for (int row = 0; row < 4; ++row) {
        const Vec3* p = patch->slots + 4 * row;
        bezier_cubic(p, p + 1, p + 2, p + 3, s, out + row);
    }
}

// From a normal over a mid normal to another as f goes from 0 to 1.
Vec3 along_boundary(const Vec3& from, const Vec3& mid, const Vec3& to, float f) {
    if (f == 0.5f) { return mid; }
    if (f < 0.5f) { return lerp(from, mid, f + f); }
    return lerp(mid, to, (f - 0.5f) + (f - 0.5f));
}

// The weight at a vertex is what the blended table leaves of 1.
int complement(float* values, int count) {
    for (int i = 0; i < count; ++i) { values[i] = 1.0f - values[i]; }
    return count;
}

}  // namespace

int patch_edge_points(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3 out[2]) {
    const Vec3 d = vec_subtract(*b, *a);
    const float offset_a = vec_dot(d, *normal_a);
    const float offset_b = vec_dot(d, *normal_b);
    const Vec3 first = vec_subtract(vec_add(vec_add(*a, *a), *b), multiply(*normal_a, offset_a));
    // d points towards b, hence the sum: each offset lies against the direction in which its end looks.
    const Vec3 second = vec_add(vec_add(vec_add(*b, *b), *a), multiply(*normal_b, offset_b));
    out[0] = multiply(first, EDGE_THIRD);
    out[1] = multiply(second, EDGE_THIRD);
    return 2;
}

int patch_edge_normal(const Vec3* a, const Vec3* b, const Vec3* normal_a, const Vec3* normal_b, Vec3* out) {
    const Vec3 d = vec_subtract(*b, *a);
    const Vec3 sum = vec_add(*normal_a, *normal_b);
    const float t = vec_dot(d, sum) / vec_dot(d, d);
    *out = vec_subtract(sum, multiply(d, t + t));
    vec_normalise(out);
    return 1;
}

int patch_centre(const Vec3 boundary[9], Vec3* out) {
    Vec3 edges = boundary[1];
    for (int i : {2, 4, 5, 7, 8}) { edges = vec_add(edges, boundary[i]); }
    edges = multiply(edges, EDGE_SIXTH);
    const Vec3 corners = multiply(vec_add(vec_add(boundary[0], boundary[3]), boundary[6]), CORNER_THIRD);
    *out = vec_add(multiply(vec_subtract(edges, corners), 0.5f), edges);
    return 1;
}

void patch_build_triangle(const Vec3 corners[3], const Vec3 normals[PATCH_NORMAL_PLACES], TrianglePatch* out) {
    Vec3 boundary[9];
    for (int edge = 0; edge < 3; ++edge) {
        const int next = (edge + 1) % 3;
        boundary[3 * edge] = corners[edge];
        patch_edge_points(corners + edge, corners + next, normals + 4 + 2 * edge, normals + 5 + 2 * edge,
                          boundary + 3 * edge + 1);
        out->slots[10 + edge] = normals[edge];
        patch_edge_normal(corners + edge, corners + next, normals + edge, normals + next, out->slots + 13 + edge);
    }
    static constexpr int BOUNDARY_SLOTS[9] = {0, 2, 5, 9, 8, 7, 6, 3, 1};
    for (int i = 0; i < 9; ++i) { out->slots[BOUNDARY_SLOTS[i]] = boundary[i]; }
    patch_centre(boundary, out->slots + 4);
}

void patch_build_quad(const Vec3 corners[4], const Vec3 normals[PATCH_NORMAL_PLACES], QuadPatch* out) {
    // A line that is bent into the net: two corners, the places of the normals at its ends, the slots of its points.
    struct NetLine {
        int from, to, normal_from, normal_to, slot_near, slot_far;
    };
    static constexpr NetLine LINES[] = {
        {0, 1, 4, 5, 1, 2},   {1, 3, 6, 7, 7, 11},  {3, 2, 8, 9, 14, 13},
        {2, 0, 10, 11, 8, 4}, {0, 3, 11, 7, 5, 10}, {2, 1, 10, 6, 9, 6},
    };
    static constexpr int CORNER_SLOTS[4] = {0, 3, 12, 15};
    static constexpr int EDGES = 4;  // the first lines; the other two are the diagonals

    for (int i = 0; i < 4; ++i) {
        out->slots[CORNER_SLOTS[i]] = corners[i];
        out->slots[CORNER_0 + i] = normals[i];
    }
    for (int i = 0; const NetLine& line : LINES) {
        const Vec3* from = corners + line.from;
        const Vec3* to = corners + line.to;
        Vec3 inner[2];
        patch_edge_points(from, to, normals + line.normal_from, normals + line.normal_to, inner);
        out->slots[line.slot_near] = inner[0];
        out->slots[line.slot_far] = inner[1];
        if (i < EDGES) { patch_edge_normal(from, to, normals + line.from, normals + line.to, out->slots + MID_01 + i); }
        ++i;
    }
}

int patch_eval_triangle(const TrianglePatch* patch, int type, int level, Vec3* positions, Vec3* normals) {
    const TriangleGrid& grid = grid_of(type, level);
    for (int i = 0; i < grid.count; ++i) {
        const GridVertex& vertex = grid.vertices[i];
        positions[i] = weighted_sum<TRIANGLE_POINTS>(patch->slots, vertex.point_weights);
        normals[i] = weighted_sum<TRIANGLE_NORMALS>(patch->slots + TRIANGLE_POINTS, vertex.normal_weights);
        vec_normalise(normals + i);
    }
    return grid.count;
}

int patch_eval_quad(const QuadPatch* patch, int type, int level, Vec3* positions, Vec3* normals) {
    const int rows = edge_vertices(level);
    const int columns = quad_columns(type, level);
    const float row_step = edge_step(level);
    const float column_step = quad_column_step(type, level);
    int count = 0;
    float s = 0.0f;
    for (int i = 0; i < rows; ++i, s += row_step) {
        Vec3 curve[4];
        row_points(patch, s, curve);
        float t = 0.0f;
        for (int j = 0; j < columns; ++j, t += column_step) {
            bezier_cubic(curve, curve + 1, curve + 2, curve + 3, t, positions + count);
            patch_normal_quad(patch, s, t, normals + count);
            ++count;
        }
    }
    return count;
}

int patch_index_triangle(int type, int level, int16_t (*out)[3]) {
    const int n = edge_vertices(level);
    switch (type) {
        case 1: return index_fan(n, out);
        case 2: return index_ladder(n, out);
        case 3: return index_full(n, out);
        default: return 0;
    }
}

int patch_index_quad(int type, int level, int16_t (*out)[3]) {
    const int rows = edge_vertices(level);
    const int columns = quad_columns(type, level);
    int count = 0;
    for (int i = 0; i < rows - 1; ++i) {
        for (int j = 0; j < columns - 1; ++j) {
            const int k = i * columns + j;
            // The diagonal lies between the second and third vertex of both, where the edge flags hide it.
            set_triple(out[count++], k, k + columns, k + 1);
            set_triple(out[count++], k + columns + 1, k + 1, k + columns);
        }
    }
    return count;
}

int patch_attributes_triangle(const float* table, int attribute_count, int type, int level, float* out) {
    const TriangleGrid& grid = grid_of(type, level);
    int written = 0;
    for (int i = 0; i < grid.count; ++i) {
        const GridVertex& vertex = grid.vertices[i];
        for (int attribute = 0; attribute < attribute_count; ++attribute) {
            const float* c = table + 3 * attribute;
            out[written++] = (c[1] - c[0]) * vertex.u + c[0] + (c[2] - c[0]) * vertex.v;
        }
    }
    return written;
}

int patch_attributes_quad(const float* table, int attribute_count, int type, int level, float* out) {
    const int rows = edge_vertices(level);
    const int columns = quad_columns(type, level);
    const float row_step = edge_step(level);
    const float column_step = quad_column_step(type, level);
    int written = 0;
    float s = 0.0f;
    for (int i = 0; i < rows; ++i, s += row_step) {
        float t = 0.0f;
        for (int j = 0; j < columns; ++j, t += column_step) {
            for (int attribute = 0; attribute < attribute_count; ++attribute) {
                const float* c = table + 4 * attribute;
                const float a = (c[1] - c[0]) * s + c[0];
                const float b = (c[3] - c[2]) * s + c[2];
                out[written++] = (b - a) * t + a;
            }
        }
    }
    return written;
}

void patch_weight_table(const float* weights, const bool* same_joint, int corners, float* table) {
    // A corner of another joint counts from the other end, so that the blend runs from joint to joint.
    for (int i = 0; i < corners; ++i) { table[i] = i == 0 || same_joint[i] ? 1.0f - weights[i] : weights[i]; }
}

int patch_weights_triangle(const float* table, int type, int level, float* out) {
    return complement(out, patch_attributes_triangle(table, 1, type, level, out));
}

int patch_weights_quad(const float* table, int type, int level, float* out) {
    return complement(out, patch_attributes_quad(table, 1, type, level, out));
}

// An inner control point of a line lies beside it by a third of its length at most, for normals of unit length, and the
// centre of a triangle by half as much again. The thirds and the sums are a hair off, hence the margin.
float patch_bulge(const PatchCorners& corners) {
    constexpr float BULGE = 0.5f;
    constexpr float MARGIN = 1e-4f;
    float length = 0.0f, size = 0.0f, normal = 0.0f;
    for (int i = 0; i < corners.count; ++i) {
        const Vec3& corner = corners.positions[i];
        size = std::max(size, vec_dot(corner, corner));
        for (int j = 0; j < i; ++j) {
            const Vec3 line = vec_subtract(corner, corners.positions[j]);
            length = std::max(length, vec_dot(line, line));
        }
    }
    for (int i = 0; i < 2 * corners.count; ++i) {
        const Vec3& each = corners.normals[PATCH_EDGE_NORMALS + i];
        normal = std::max(normal, vec_dot(each, each));
    }
    return BULGE * std::sqrt(length) * normal + MARGIN * std::sqrt(size);
}

void patch_surface(const PatchCorners& corners, int curve_type, int level, PatchSurface* out) {
    out->quad = corners.count == 4;
    out->level = level;
    if (out->quad) {
        out->type = curve_type;
        patch_build_quad(corners.positions, corners.normals, &out->net);
        out->vertex_count = patch_eval_quad(&out->net, out->type, level, out->positions, out->normals);
        out->triangle_count = patch_index_quad(out->type, level, out->triangles);
        return;
    }
    out->type = patch_triangle_type(curve_type);
    TrianglePatch patch;
    patch_build_triangle(corners.positions, corners.normals, &patch);
    std::copy(std::begin(patch.slots), std::end(patch.slots), out->net.slots);
    out->vertex_count = patch_eval_triangle(&patch, out->type, level, out->positions, out->normals);
    out->triangle_count = patch_index_triangle(out->type, level, out->triangles);
}

void patch_surface_attributes(const PatchCorners& corners, bool textured, bool coloured, float colour_scale,
                              PatchSurface* surface) {
    float table[PATCH_ATTRIBUTE_LIMIT * 4];
    float* value = table;
    for (int axis = 0; textured && axis < 2; ++axis) {
        for (int i = 0; i < corners.count; ++i) { *value++ = corners.uvs[i][axis]; }
    }
    for (int channel = 0; coloured && channel < 3; ++channel) {
        for (int i = 0; i < corners.count; ++i) {
            *value++ = static_cast<float>(corners.colours[i][channel]) * colour_scale;
        }
    }
    surface->attribute_count = static_cast<int>(value - table) / corners.count;
    surface->uvs = textured ? surface->attributes : nullptr;
    surface->colours = coloured ? surface->attributes + (textured ? 2 : 0) : nullptr;
    if (surface->attribute_count == 0) { return; }
    (surface->quad ? patch_attributes_quad : patch_attributes_triangle)(table, surface->attribute_count, surface->type,
                                                                        surface->level, surface->attributes);
}

void patch_surface_weights(const PatchSurface& surface, const float* weights, const bool* same_joint, float* out) {
    float table[4];
    patch_weight_table(weights, same_joint, surface.quad ? 4 : 3, table);
    (surface.quad ? patch_weights_quad : patch_weights_triangle)(table, surface.type, surface.level, out);
}

void bezier_cubic(const Vec3* p0, const Vec3* p1, const Vec3* p2, const Vec3* p3, float t, Vec3* out) {
    const float t2 = t * t;
    const float t3 = t2 * t;
    const auto component = [=](float a, float b, float c, float d) {
        return a + (-3.0f * a + 3.0f * b) * t + (3.0f * a - 6.0f * b + 3.0f * c) * t2 +
               (-a + 3.0f * b - 3.0f * c + d) * t3;
    };
    *out = {component(p0->x, p1->x, p2->x, p3->x), component(p0->y, p1->y, p2->y, p3->y),
            component(p0->z, p1->z, p2->z, p3->z)};
}

void patch_point_quad(const QuadPatch* patch, float s, float t, Vec3* out) {
    Vec3 curve[4];
    row_points(patch, s, curve);
    bezier_cubic(curve, curve + 1, curve + 2, curve + 3, t, out);
}

void patch_normal_quad(const QuadPatch* patch, float s, float t, Vec3* out) {
    const Vec3* slots = patch->slots;
    const Vec3 top = along_boundary(slots[CORNER_0], slots[MID_01], slots[CORNER_1], s);
    const Vec3 bottom = along_boundary(slots[CORNER_2], slots[MID_32], slots[CORNER_3], s);
    const Vec3 left = along_boundary(slots[CORNER_0], slots[MID_20], slots[CORNER_2], t);
    const Vec3 right = along_boundary(slots[CORNER_1], slots[MID_13], slots[CORNER_3], t);
    *out = vec_add(lerp(top, bottom, t), lerp(left, right, s));
    vec_normalise(out);
}

}  // namespace pelt
