// Evaluations of curved primitives that owe nothing to the code under test, all in double: de Casteljau's scheme for
// positions, weighted sums for normals, piecewise lines for the boundary of a quad. And the patches they are tried on.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "surfaces/patch.h"

namespace pelt::patch_reference {

inline constexpr double TOLERANCE = 2e-5;
inline const float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
inline const float INFINITE = std::numeric_limits<float>::infinity();

struct Point3 {
    double x, y, z;
};

inline Point3 wide(const Vec3& v) { return {v.x, v.y, v.z}; }
inline Point3 operator+(Point3 a, Point3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Point3 operator-(Point3 a, Point3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Point3 operator*(double f, Point3 a) { return {f * a.x, f * a.y, f * a.z}; }
inline double dot(Point3 a, Point3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Point3 unit(Point3 a) { return 1.0 / std::sqrt(dot(a, a)) * a; }
inline Point3 mix(Point3 a, Point3 b, double f) { return (1.0 - f) * a + f * b; }

inline void expect_near(const Vec3& actual, Point3 expected, double tolerance = TOLERANCE) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

inline void expect_same(const Vec3& actual, const Vec3& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

inline Vec3 unit_float(float x, float y, float z) {
    const Point3 n = unit({x, y, z});
    return {static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z)};
}

struct Parameter {
    float first, second;
};

// Where the vertices of a grid lie, in their order: (u, v) of a triangle.
inline std::vector<Parameter> triangle_parameters(int type, int level) {
    const int n = level + 2;
    const float step = 1.0f / static_cast<float>(level + 1);
    std::vector<float> sums{0.0f};
    for (int i = 1; i < n; ++i) { sums.push_back(sums.back() + step); }
    std::vector<Parameter> out;
    const auto at = [&](int i) { return sums[static_cast<size_t>(i)]; };
    for (int i = 0; i < n; ++i) { out.push_back({at(i), 0.0f}); }
    if (type == 1) { out.push_back({0.0f, 1.0f}); }
    for (int row = 1; row < n && type != 1; ++row) {
        for (int i = 0; i < (type == 2 ? 1 : n - row); ++i) { out.push_back({at(i), at(row)}); }
    }
    return out;
}

// (s, t) of a quad.
inline std::vector<Parameter> quad_parameters(int type, int level) {
    const float step = 1.0f / static_cast<float>(level + 1);
    std::vector<Parameter> out;
    float s = 0.0f;
    for (int i = 0; i < level + 2; ++i, s += step) {
        if (type == 2) {
            out.push_back({s, 0.0f});
            out.push_back({s, 1.0f});
            continue;
        }
        float t = 0.0f;
        for (int j = 0; j < level + 2; ++j, t += step) { out.push_back({s, t}); }
    }
    return out;
}

// A net as a pyramid: net[j][k] counts towards P1 and P2, the rest towards P0.
inline Point3 triangle_casteljau(const TrianglePatch& patch, double u, double v) {
    static constexpr int SLOT[4][4] = {{0, 1, 3, 6}, {2, 4, 7, -1}, {5, 8, -1, -1}, {9, -1, -1, -1}};
    Point3 net[4][4] = {};
    for (int j = 0; j < 4; ++j) {
        for (int k = 0; k < 4 - j; ++k) { net[j][k] = wide(patch.slots[SLOT[j][k]]); }
    }
    for (int degree = 3; degree > 0; --degree) {
        for (int j = 0; j < degree; ++j) {
            for (int k = 0; k < degree - j; ++k) {
                net[j][k] = (1.0 - u - v) * net[j][k] + u * net[j + 1][k] + v * net[j][k + 1];
            }
        }
    }
    return net[0][0];
}

// The corner normals have weight w^2, u^2, v^2. The mid normals have single weights, not the doubled ones of a
// Bernstein sum of degree 2: that is how this surface shades.
inline Point3 triangle_normal_sum(const TrianglePatch& patch, double u, double v) {
    const double w = 1.0 - u - v;
    const Vec3* n = patch.slots + 10;
    return unit(w * w * wide(n[0]) + u * u * wide(n[1]) + v * v * wide(n[2]) + w * u * wide(n[3]) + u * v * wide(n[4]) +
                w * v * wide(n[5]));
}

inline Point3 casteljau(Point3 a, Point3 b, Point3 c, Point3 d, double f) {
    const Point3 ab = mix(a, b, f), bc = mix(b, c, f), cd = mix(c, d, f);
    return mix(mix(ab, bc, f), mix(bc, cd, f), f);
}

inline Point3 quad_casteljau(const QuadPatch& patch, double s, double t) {
    Point3 column[4];
    for (int row = 0; row < 4; ++row) {
        const Vec3* p = patch.slots + 4 * row;
        column[row] = casteljau(wide(p[0]), wide(p[1]), wide(p[2]), wide(p[3]), s);
    }
    return casteljau(column[0], column[1], column[2], column[3], t);
}

// Hat functions over 0, a half and 1.
inline Point3 boundary_normal(const Vec3& from, const Vec3& mid, const Vec3& to, double f) {
    const auto hat = [f](double place) { return std::max(0.0, 1.0 - 2.0 * std::fabs(f - place)); };
    return hat(0.0) * wide(from) + hat(0.5) * wide(mid) + hat(1.0) * wide(to);
}

inline Point3 quad_normal(const QuadPatch& patch, double s, double t) {
    const Vec3* n = patch.slots + 16;
    const Vec3* mid = patch.slots + 20;
    const Point3 across = mix(boundary_normal(n[0], mid[0], n[1], s), boundary_normal(n[2], mid[2], n[3], s), t);
    const Point3 down = mix(boundary_normal(n[0], mid[3], n[2], t), boundary_normal(n[1], mid[1], n[3], t), s);
    return unit(across + down);
}

struct TriangleInput {
    Vec3 corners[3];
    Vec3 normals[PATCH_NORMAL_PLACES];
};

struct QuadInput {
    Vec3 corners[4];
    Vec3 normals[PATCH_NORMAL_PLACES];
};

// A bulging triangle whose control normals differ from its corner normals.
inline TriangleInput bulging_triangle() {
    return {{{-1.0f, 0.25f, 0.5f}, {2.0f, -0.5f, 0.0f}, {0.5f, 3.0f, -1.0f}},
            {unit_float(-1, -1, 3),
             unit_float(1, -1, 2),
             unit_float(0, 1, 2),
             {0, 0, 0},
             unit_float(-1, -0.5f, 2),
             unit_float(1, -0.2f, 2),
             unit_float(2, 0, 1),
             unit_float(0.1f, 1, 1),
             unit_float(0, 2, 3),
             unit_float(-2, 0, 3),
             {0, 0, 0},
             {0, 0, 0}}};
}

inline QuadInput bulging_quad() {
    return {{{-1, -1, 0.1f}, {1.5f, -1, 0}, {-1, 2, 0.2f}, {1, 1, -0.3f}},
            {unit_float(-1, -1, 2), unit_float(1, -1, 3), unit_float(-1, 1, 2), unit_float(1, 1, 1),
             unit_float(-1, -0.5f, 2), unit_float(1, -0.2f, 2), unit_float(1, 0, 1), unit_float(0.1f, 1, 1),
             unit_float(0.5f, 2, 3), unit_float(-1, 0.3f, 3), unit_float(-1, 1, 4), unit_float(-2, -1, 5)}};
}

inline TrianglePatch built(const TriangleInput& input) {
    TrianglePatch patch;
    patch_build_triangle(input.corners, input.normals, &patch);
    return patch;
}

inline QuadPatch built(const QuadInput& input) {
    QuadPatch patch;
    patch_build_quad(input.corners, input.normals, &patch);
    return patch;
}

struct Vertices {
    int count;
    Vec3 positions[PATCH_VERTEX_LIMIT];
    Vec3 normals[PATCH_VERTEX_LIMIT];
};

inline Vertices evaluated(const TrianglePatch& patch, int type, int level) {
    Vertices out{};
    out.count = patch_eval_triangle(&patch, type, level, out.positions, out.normals);
    return out;
}

inline Vertices evaluated(const QuadPatch& patch, int type, int level) {
    Vertices out{};
    out.count = patch_eval_quad(&patch, type, level, out.positions, out.normals);
    return out;
}

using Triples = std::vector<std::array<int, 3>>;

inline Triples triples(int (*index)(int, int, int16_t (*)[3]), int type, int level) {
    int16_t list[PATCH_TRIANGLE_LIMIT][3];
    const int count = index(type, level, list);
    Triples out;
    for (int i = 0; i < count; ++i) { out.push_back({list[i][0], list[i][1], list[i][2]}); }
    return out;
}

}  // namespace pelt::patch_reference
