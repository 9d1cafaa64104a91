// The geometry of curved primitives against evaluations of its own: de Casteljau's scheme for positions, Bernstein
// sums for normals, piecewise lines for the boundary of a quad. All of those work in double.
#include "render/patch.h"

#if defined(GL_VERSION_1_1) || defined(__gl_h_)
#error "patch.h must not bring OpenGL with it"
#endif

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <vector>

namespace pelt {
namespace {

constexpr double TOLERANCE = 2e-5;
const float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
const float INFINITE = std::numeric_limits<float>::infinity();

struct Point3 {
    double x, y, z;
};

Point3 wide(const Vec3& v) { return {v.x, v.y, v.z}; }
Point3 operator+(Point3 a, Point3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Point3 operator-(Point3 a, Point3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point3 operator*(double f, Point3 a) { return {f * a.x, f * a.y, f * a.z}; }
double dot(Point3 a, Point3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point3 unit(Point3 a) { return 1.0 / std::sqrt(dot(a, a)) * a; }
Point3 mix(Point3 a, Point3 b, double f) { return (1.0 - f) * a + f * b; }

void expect_near(const Vec3& actual, Point3 expected, double tolerance = TOLERANCE) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

void expect_same(const Vec3& actual, const Vec3& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

Vec3 unit_float(float x, float y, float z) {
    const Point3 n = unit({x, y, z});
    return {static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z)};
}

struct Parameter {
    float first, second;
};

// Where the vertices of a grid lie, in their order: (u, v) of a triangle.
std::vector<Parameter> triangle_parameters(int type, int level) {
    const int n = level + 2;
    const float step = 1.0f / static_cast<float>(level + 1);
    std::vector<float> sums{0.0f};
    for (int i = 1; i < n; ++i) sums.push_back(sums.back() + step);
    std::vector<Parameter> out;
    const auto at = [&](int i) { return sums[static_cast<size_t>(i)]; };
    for (int i = 0; i < n; ++i) out.push_back({at(i), 0.0f});
    if (type == 1) out.push_back({0.0f, 1.0f});
    for (int row = 1; row < n && type != 1; ++row) {
        for (int i = 0; i < (type == 2 ? 1 : n - row); ++i) out.push_back({at(i), at(row)});
    }
    return out;
}

// (s, t) of a quad.
std::vector<Parameter> quad_parameters(int type, int level) {
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
        for (int j = 0; j < level + 2; ++j, t += step) out.push_back({s, t});
    }
    return out;
}

// A net as a pyramid: net[j][k] counts towards P1 and P2, the rest towards P0.
Point3 triangle_casteljau(const TrianglePatch& patch, double u, double v) {
    static constexpr int SLOT[4][4] = {{0, 1, 3, 6}, {2, 4, 7, -1}, {5, 8, -1, -1}, {9, -1, -1, -1}};
    Point3 net[4][4] = {};
    for (int j = 0; j < 4; ++j) {
        for (int k = 0; k < 4 - j; ++k) net[j][k] = wide(patch.slots[SLOT[j][k]]);
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
Point3 triangle_normal_sum(const TrianglePatch& patch, double u, double v) {
    const double w = 1.0 - u - v;
    const Vec3* n = patch.slots + 10;
    return unit(w * w * wide(n[0]) + u * u * wide(n[1]) + v * v * wide(n[2]) + w * u * wide(n[3]) +
                u * v * wide(n[4]) + w * v * wide(n[5]));
}

Point3 casteljau(Point3 a, Point3 b, Point3 c, Point3 d, double f) {
    const Point3 ab = mix(a, b, f), bc = mix(b, c, f), cd = mix(c, d, f);
    return mix(mix(ab, bc, f), mix(bc, cd, f), f);
}

Point3 quad_casteljau(const QuadPatch& patch, double s, double t) {
    Point3 column[4];
    for (int row = 0; row < 4; ++row) {
        const Vec3* p = patch.slots + 4 * row;
        column[row] = casteljau(wide(p[0]), wide(p[1]), wide(p[2]), wide(p[3]), s);
    }
    return casteljau(column[0], column[1], column[2], column[3], t);
}

// Hat functions over 0, a half and 1.
Point3 boundary_normal(const Vec3& from, const Vec3& mid, const Vec3& to, double f) {
    const auto hat = [f](double place) { return std::max(0.0, 1.0 - 2.0 * std::fabs(f - place)); };
    return hat(0.0) * wide(from) + hat(0.5) * wide(mid) + hat(1.0) * wide(to);
}

Point3 quad_normal(const QuadPatch& patch, double s, double t) {
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
TriangleInput bulging_triangle() {
    return {{{-1.0f, 0.25f, 0.5f}, {2.0f, -0.5f, 0.0f}, {0.5f, 3.0f, -1.0f}},
            {unit_float(-1, -1, 3), unit_float(1, -1, 2), unit_float(0, 1, 2), {0, 0, 0},
             unit_float(-1, -0.5f, 2), unit_float(1, -0.2f, 2), unit_float(2, 0, 1), unit_float(0.1f, 1, 1),
             unit_float(0, 2, 3), unit_float(-2, 0, 3), {0, 0, 0}, {0, 0, 0}}};
}

QuadInput bulging_quad() {
    return {{{-1, -1, 0.1f}, {1.5f, -1, 0}, {-1, 2, 0.2f}, {1, 1, -0.3f}},
            {unit_float(-1, -1, 2), unit_float(1, -1, 3), unit_float(-1, 1, 2), unit_float(1, 1, 1),
             unit_float(-1, -0.5f, 2), unit_float(1, -0.2f, 2), unit_float(1, 0, 1), unit_float(0.1f, 1, 1),
             unit_float(0.5f, 2, 3), unit_float(-1, 0.3f, 3), unit_float(-1, 1, 4), unit_float(-2, -1, 5)}};
}

TrianglePatch built(const TriangleInput& input) {
    TrianglePatch patch;
    patch_build_triangle(input.corners, input.normals, &patch);
    return patch;
}

QuadPatch built(const QuadInput& input) {
    QuadPatch patch;
    patch_build_quad(input.corners, input.normals, &patch);
    return patch;
}

struct Vertices {
    int count;
    Vec3 positions[PATCH_VERTEX_LIMIT];
    Vec3 normals[PATCH_VERTEX_LIMIT];
};

Vertices evaluated(const TrianglePatch& patch, int type, int level) {
    Vertices out{};
    out.count = patch_eval_triangle(&patch, type, level, out.positions, out.normals);
    return out;
}

Vertices evaluated(const QuadPatch& patch, int type, int level) {
    Vertices out{};
    out.count = patch_eval_quad(&patch, type, level, out.positions, out.normals);
    return out;
}

using Triples = std::vector<std::array<int, 3>>;

Triples triples(int (*index)(int, int, int16_t (*)[3]), int type, int level) {
    int16_t list[PATCH_TRIANGLE_LIMIT][3];
    const int count = index(type, level, list);
    Triples out;
    for (int i = 0; i < count; ++i) out.push_back({list[i][0], list[i][1], list[i][2]});
    return out;
}

TEST(EdgePoints, LieAThirdAlongProjectedIntoTheTangentPlaneOfEachEnd) {
    const Vec3 a{1, 2, 3}, b{4, 0, -1};
    const Vec3 normal_a = unit_float(1, 2, 2), normal_b = unit_float(-2, 1, 2);
    Vec3 out[2];
    EXPECT_EQ(patch_edge_points(&a, &b, &normal_a, &normal_b, out), 2);
    const auto project = [](Point3 p, Point3 base, Point3 n) { return p - dot(p - base, n) * n; };
    const double short_of = 3.0 * 0.33333;
    expect_near(out[0], short_of * project(mix(wide(a), wide(b), 1.0 / 3.0), wide(a), wide(normal_a)));
    expect_near(out[1], short_of * project(mix(wide(b), wide(a), 1.0 / 3.0), wide(b), wide(normal_b)));
}

TEST(EdgePoints, WithTheEndsExchangedAreTheSamePointsInTheOtherOrder) {
    const Vec3 a{1, 2, 3}, b{4, 0.3f, -1};
    const Vec3 normal_a = unit_float(1, 2, 2), normal_b = unit_float(-2, 1, 2);
    Vec3 there[2], back[2];
    patch_edge_points(&a, &b, &normal_a, &normal_b, there);
    patch_edge_points(&b, &a, &normal_b, &normal_a, back);
    expect_same(there[0], back[1]);
    expect_same(there[1], back[0]);
}

TEST(EdgePoints, TakeAThirdAsWritten) {
    const Vec3 a{0, 0, 9}, b{3, 0, 9}, up{0, 0, 1};
    Vec3 out[2];
    patch_edge_points(&a, &b, &up, &up, out);
    expect_same(out[0], {3.0f * 0.33333f, 0.0f, 27.0f * 0.33333f});
    expect_same(out[1], {6.0f * 0.33333f, 0.0f, 27.0f * 0.33333f});
}

TEST(EdgeNormal, IsTheReflectedSumOfTheEndNormals) {
    const Vec3 a{0, 0, 0}, b{2, 0, 0}, normal_a{0, 1, 0}, normal_b{1, 0, 0};
    Vec3 out;
    EXPECT_EQ(patch_edge_normal(&a, &b, &normal_a, &normal_b, &out), 1);
    const double half = std::sqrt(0.5);
    expect_near(out, {-half, half, 0.0}, 1e-6);
}

TEST(EdgeNormal, OfADegenerateEdgeIsNotFinite) {
    const Vec3 a{1, 1, 1}, normal{0, 0, 1};
    Vec3 out{0, 0, 0};
    patch_edge_normal(&a, &a, &normal, &normal, &out);
    EXPECT_FALSE(std::isfinite(out.x) && std::isfinite(out.y) && std::isfinite(out.z));
}

TEST(EdgeNormal, OfAZeroSumIsNotFinite) {
    const Vec3 a{0, 0, 0}, b{1, 0, 0}, normal_a{0, 0, 1}, normal_b{0, 0, -1};
    Vec3 out{0, 0, 0};
    patch_edge_normal(&a, &b, &normal_a, &normal_b, &out);
    EXPECT_FALSE(std::isfinite(out.x) || std::isfinite(out.y) || std::isfinite(out.z));
}

TEST(Centre, LiesHalfAsFarBeyondTheMeanOfTheEdgesAsTheCornersLieBehind) {
    Vec3 boundary[9];
    for (int i = 0; i < 9; ++i) boundary[i] = {i % 3 == 0 ? 0.0f : 2.0f, static_cast<float>(i), 0.0f};
    Vec3 out;
    EXPECT_EQ(patch_centre(boundary, &out), 1);
    // x: the edges stand at 2, the corners at 0. y: the edges sum to 1 + 2 + 4 + 5 + 7 + 8 = 27, the corners to 9.
    expect_near(out, {3.0, 5.25, 0.0}, 5e-5);
}

TEST(Centre, TakesASixthAndAThirdAsWritten) {
    Vec3 boundary[9];
    for (Vec3& p : boundary) p = {1000, 1, 0};
    Vec3 out;
    patch_centre(boundary, &out);
    const double edges = 6.0 * 0.166666, corners = 3.0 * 0.333333;
    EXPECT_NEAR(out.x, 1000.0 * ((edges - corners) * 0.5 + edges), 1e-4);
    EXPECT_LT(out.x, 999.996);  // with true fractions it would be 1000
}

TEST(BuildTriangle, OrdersItsNetAlongTheRows) {
    const TriangleInput in = bulging_triangle();
    const TrianglePatch patch = built(in);
    const Vec3* p = in.corners;
    const Vec3* n = in.normals;
    Vec3 boundary[9] = {p[0], {}, {}, p[1], {}, {}, p[2], {}, {}};
    patch_edge_points(p + 0, p + 1, n + 4, n + 5, boundary + 1);
    patch_edge_points(p + 1, p + 2, n + 6, n + 7, boundary + 4);
    patch_edge_points(p + 2, p + 0, n + 8, n + 9, boundary + 7);
    const Vec3 *a = boundary + 1, *b = boundary + 4, *c = boundary + 7;
    Vec3 centre;
    patch_centre(boundary, &centre);
    const Vec3 expected[10] = {p[0], c[1], a[0], c[0], centre, a[1], p[2], b[1], b[0], p[1]};
    for (int i = 0; i < 10; ++i) expect_same(patch.slots[i], expected[i]);
}

TEST(BuildTriangle, ItsMidNormalsComeFromTheCornerNormals) {
    TriangleInput in = bulging_triangle();
    const TrianglePatch patch = built(in);
    for (int edge = 0; edge < 3; ++edge) {
        const int next = (edge + 1) % 3;
        Vec3 mid;
        patch_edge_normal(in.corners + edge, in.corners + next, in.normals + edge, in.normals + next, &mid);
        expect_same(patch.slots[10 + edge], in.normals[edge]);
        expect_same(patch.slots[13 + edge], mid);
    }
    for (int place = 4; place < 10; ++place) in.normals[place] = unit_float(3, 2, 1);
    const TrianglePatch other = built(in);
    for (int slot = 10; slot < 16; ++slot) expect_same(other.slots[slot], patch.slots[slot]);
}

TEST(BuildTriangle, DoesNotReadThePlacesOfAQuad) {
    TriangleInput in = bulging_triangle();
    for (int place : {3, 10, 11}) in.normals[place] = {NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER};
    for (const Vec3& slot : built(in).slots) EXPECT_TRUE(std::isfinite(slot.x + slot.y + slot.z));
}

TEST(BuildTriangle, CornerNormalsDoNotShapeTheSurface) {
    TriangleInput in = bulging_triangle();
    const TrianglePatch patch = built(in);
    for (int i = 0; i < 3; ++i) in.normals[i] = unit_float(5, 1, 1);
    const TrianglePatch other = built(in);
    for (int slot = 0; slot < 10; ++slot) expect_same(other.slots[slot], patch.slots[slot]);
}

TEST(BuildQuad, BendsFourEdgesAndTwoDiagonalsIntoItsNet) {
    const QuadInput in = bulging_quad();
    const QuadPatch patch = built(in);
    const Vec3* p = in.corners;
    const Vec3* n = in.normals;
    Vec3 a[2], b[2], c[2], d[2], e[2], f[2];
    patch_edge_points(p + 0, p + 1, n + 4, n + 5, a);
    patch_edge_points(p + 1, p + 3, n + 6, n + 7, b);
    patch_edge_points(p + 3, p + 2, n + 8, n + 9, c);
    patch_edge_points(p + 2, p + 0, n + 10, n + 11, d);
    patch_edge_points(p + 0, p + 3, n + 11, n + 7, e);
    patch_edge_points(p + 2, p + 1, n + 10, n + 6, f);
    const Vec3 net[16] = {p[0], a[0], a[1], p[1], d[1], e[0], f[1], b[0],
                          d[0], f[0], e[1], b[1], p[2], c[1], c[0], p[3]};
    for (int i = 0; i < 16; ++i) expect_same(patch.slots[i], net[i]);
}

TEST(BuildQuad, HoldsCornerNormalsAndTheMidNormalsOfItsOutline) {
    const QuadInput in = bulging_quad();
    const QuadPatch patch = built(in);
    for (int i = 0; i < 4; ++i) expect_same(patch.slots[16 + i], in.normals[i]);
    const int edges[4][2] = {{0, 1}, {1, 3}, {3, 2}, {2, 0}};
    for (int i = 0; i < 4; ++i) {
        const int from = edges[i][0], to = edges[i][1];
        Vec3 mid;
        patch_edge_normal(in.corners + from, in.corners + to, in.normals + from, in.normals + to, &mid);
        expect_same(patch.slots[20 + i], mid);
    }
}

TEST(Counts, OfFullTrianglesAndQuadsFollowTheLevel) {
    const int table[6][4] = {{6, 4, 9, 8},     {10, 9, 16, 18},  {15, 16, 25, 32},
                             {21, 25, 36, 50}, {28, 36, 49, 72}, {36, 49, 64, 98}};
    const TrianglePatch triangle = built(bulging_triangle());
    const QuadPatch quad = built(bulging_quad());
    for (int level = 1; level <= 6; ++level) {
        const int* row = table[level - 1];
        EXPECT_EQ(evaluated(triangle, 3, level).count, row[0]);
        EXPECT_EQ(triples(patch_index_triangle, 3, level).size(), static_cast<size_t>(row[1]));
        EXPECT_EQ(evaluated(quad, 4, level).count, row[2]);
        EXPECT_EQ(triples(patch_index_quad, 4, level).size(), static_cast<size_t>(row[3]));
    }
}

TEST(Counts, OfPartlyCurvedPrimitivesFollowTheLevel) {
    const TrianglePatch triangle = built(bulging_triangle());
    const QuadPatch quad = built(bulging_quad());
    for (int level = 1; level <= 6; ++level) {
        const int n = level + 2;
        EXPECT_EQ(evaluated(triangle, 1, level).count, n + 1);
        EXPECT_EQ(triples(patch_index_triangle, 1, level).size(), static_cast<size_t>(n - 1));
        EXPECT_EQ(evaluated(triangle, 2, level).count, 2 * n - 1);
        EXPECT_EQ(triples(patch_index_triangle, 2, level).size(), static_cast<size_t>(2 * n - 3));
        EXPECT_EQ(evaluated(quad, 2, level).count, 2 * n);
        EXPECT_EQ(triples(patch_index_quad, 2, level).size(), static_cast<size_t>(2 * n - 2));
    }
}

TEST(Counts, LevelsAreHeldToOneToSix) {
    const TrianglePatch triangle = built(bulging_triangle());
    const QuadPatch quad = built(bulging_quad());
    const float table[4] = {0, 1, 2, 3};
    float out[PATCH_VERTEX_LIMIT];
    for (int level : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(evaluated(triangle, 3, level).count, 6);
        EXPECT_EQ(evaluated(quad, 4, level).count, 9);
        EXPECT_EQ(triples(patch_index_triangle, 3, level).size(), 4u);
        EXPECT_EQ(triples(patch_index_quad, 4, level).size(), 8u);
        EXPECT_EQ(patch_attributes_triangle(table, 1, 3, level, out), 6);
        EXPECT_EQ(patch_attributes_quad(table, 1, 4, level, out), 9);
    }
    for (int level : {7, 100, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(evaluated(triangle, 3, level).count, 36);
        EXPECT_EQ(evaluated(quad, 4, level).count, 64);
        EXPECT_EQ(triples(patch_index_triangle, 3, level).size(), 49u);
        EXPECT_EQ(triples(patch_index_quad, 4, level).size(), 98u);
        EXPECT_EQ(patch_attributes_triangle(table, 1, 3, level, out), 36);
        EXPECT_EQ(patch_attributes_quad(table, 1, 4, level, out), 64);
    }
}

TEST(EvalTriangle, EveryTypeAndLevelLiesOnTheBezierTriangle) {
    const TrianglePatch patch = built(bulging_triangle());
    for (int type = 1; type <= 3; ++type) {
        for (int level = 1; level <= 6; ++level) {
            SCOPED_TRACE(testing::Message() << "type " << type << " level " << level);
            const std::vector<Parameter> parameters = triangle_parameters(type, level);
            const Vertices vertices = evaluated(patch, type, level);
            ASSERT_EQ(static_cast<size_t>(vertices.count), parameters.size());
            for (int i = 0; i < vertices.count; ++i) {
                const auto [u, v] = parameters[static_cast<size_t>(i)];
                expect_near(vertices.positions[i], triangle_casteljau(patch, u, v));
                expect_near(vertices.normals[i], triangle_normal_sum(patch, u, v));
            }
        }
    }
}

TEST(EvalTriangle, CornersStandAtTheEndsOfTheRows) {
    const TriangleInput in = bulging_triangle();
    const Vertices vertices = evaluated(built(in), 3, 4);
    expect_near(vertices.positions[0], wide(in.corners[0]));
    expect_near(vertices.positions[5], wide(in.corners[1]));
    expect_near(vertices.positions[20], wide(in.corners[2]));
    expect_near(vertices.normals[0], wide(in.normals[0]));
    expect_near(vertices.normals[5], wide(in.normals[1]));
    expect_near(vertices.normals[20], wide(in.normals[2]));
}

TEST(EvalTriangle, ATypeWithoutARuleCountsAsThree) {
    const TrianglePatch patch = built(bulging_triangle());
    const Vertices full = evaluated(patch, 3, 3);
    for (int type : {4, 0, -1, 5, 1000}) {
        const Vertices vertices = evaluated(patch, type, 3);
        ASSERT_EQ(vertices.count, full.count);
        EXPECT_EQ(std::memcmp(vertices.positions, full.positions, sizeof full.positions), 0);
    }
}

TEST(EvalTriangle, AtLevelOneTheCentreHasNoEffect) {
    TrianglePatch patch = built(bulging_triangle());
    const Vertices before = evaluated(patch, 3, 1);
    EXPECT_EQ(before.count, 6);
    EXPECT_EQ(triples(patch_index_triangle, 3, 1).size(), 4u);
    patch.slots[4] = {1000, 1000, 1000};
    const Vertices after = evaluated(patch, 3, 1);
    for (int i = 0; i < 6; ++i) expect_same(after.positions[i], before.positions[i]);
    EXPECT_GT(std::fabs(evaluated(patch, 3, 2).positions[5].x), 100.0f);  // the one inner vertex of level 2
}

TEST(EvalTriangle, AFlatPatchIsNotExactlyFlat) {
    const Vec3 up{0, 0, 1};
    TriangleInput in = {{{0, 0, 3}, {3, 0, 3}, {0, 3, 3}}, {}};
    for (Vec3& normal : in.normals) normal = up;
    const TrianglePatch patch = built(in);
    expect_same(patch.slots[2], {3.0f * 0.33333f, 0.0f, 9.0f * 0.33333f});
    const Vertices vertices = evaluated(patch, 3, 1);
    // Half way along an edge the two inner points weigh three eighths each, and each is 1e-5 of its length short.
    EXPECT_NEAR(vertices.positions[1].z, 3.0 * (0.25 + 0.75 * 0.99999), 1e-6);
    EXPECT_LT(vertices.positions[1].z, 3.0f);
    EXPECT_EQ(vertices.positions[0].z, 3.0f);
}

TEST(EvalQuad, EveryTypeAndLevelLiesOnTheBicubicPatch) {
    const QuadPatch patch = built(bulging_quad());
    for (int type : {2, 4, 3, 1, 0}) {
        for (int level = 1; level <= 6; ++level) {
            SCOPED_TRACE(testing::Message() << "type " << type << " level " << level);
            const std::vector<Parameter> parameters = quad_parameters(type, level);
            const Vertices vertices = evaluated(patch, type, level);
            ASSERT_EQ(static_cast<size_t>(vertices.count), parameters.size());
            for (int i = 0; i < vertices.count; ++i) {
                const auto [s, t] = parameters[static_cast<size_t>(i)];
                expect_near(vertices.positions[i], quad_casteljau(patch, s, t));
                expect_near(vertices.normals[i], quad_normal(patch, s, t));
            }
        }
    }
}

TEST(EvalQuad, EachVertexIsThatOfThePointAndTheNormalOperation) {
    const QuadPatch patch = built(bulging_quad());
    const Vertices vertices = evaluated(patch, 4, 5);
    const std::vector<Parameter> parameters = quad_parameters(4, 5);
    for (int i = 0; i < vertices.count; ++i) {
        const auto [s, t] = parameters[static_cast<size_t>(i)];
        Vec3 point, normal;
        patch_point_quad(&patch, s, t, &point);
        patch_normal_quad(&patch, s, t, &normal);
        expect_same(vertices.positions[i], point);
        expect_same(vertices.normals[i], normal);
    }
}

TEST(EvalQuad, SRunsTowardsCornerOneAndTTowardsCornerTwo) {
    const QuadInput in = bulging_quad();
    const Vertices vertices = evaluated(built(in), 4, 1);
    expect_near(vertices.positions[0], wide(in.corners[0]));
    expect_near(vertices.positions[2], wide(in.corners[2]));
    expect_near(vertices.positions[6], wide(in.corners[1]));
    expect_near(vertices.positions[8], wide(in.corners[3]));
}

TEST(BezierCubic, AgreesWithItsBernsteinSum) {
    const Vec3 p0{1, -2, 3}, p1{2, 5, -1}, p2{-3, 1, 4}, p3{0.5f, 0.25f, -6};
    for (float t : {0.0f, 0.125f, 0.3f, 0.5f, 0.77f, 1.0f}) {
        Vec3 out;
        bezier_cubic(&p0, &p1, &p2, &p3, t, &out);
        const double f = t, g = 1.0 - f;
        expect_near(out, g * g * g * wide(p0) + 3 * g * g * f * wide(p1) + 3 * g * f * f * wide(p2) +
                             f * f * f * wide(p3));
    }
}

TEST(NormalQuad, InTheMiddleIsTheNormalisedSumOfTheFourMidNormals) {
    QuadPatch patch = built(bulging_quad());
    Point3 sum{0, 0, 0};
    for (int slot = 20; slot < 24; ++slot) sum = sum + wide(patch.slots[slot]);
    for (int slot = 16; slot < 20; ++slot) patch.slots[slot] = {1000, 1000, 1000};  // no corner has a say here
    Vec3 out;
    patch_normal_quad(&patch, 0.5f, 0.5f, &out);
    expect_near(out, unit(sum), 1e-6);
}

TEST(NormalQuad, BelowAtAndAboveTheMiddleBlendsItsBoundary) {
    const QuadPatch patch = built(bulging_quad());
    for (float s : {0.0f, 0.2f, 0.5f, 0.8f, 1.0f}) {
        for (float t : {0.0f, 0.3f, 0.5f, 0.9f, 1.0f}) {
            Vec3 out;
            patch_normal_quad(&patch, s, t, &out);
            expect_near(out, quad_normal(patch, s, t));
        }
    }
}

TEST(Index, TriangleOfTypeOneAtLevelTwoIsAFanOfThree) {
    const TrianglePatch patch = built(bulging_triangle());
    EXPECT_EQ(evaluated(patch, 1, 2).count, 5);
    EXPECT_EQ(triples(patch_index_triangle, 1, 2), (Triples{{0, 1, 4}, {1, 2, 4}, {2, 3, 4}}));
}

TEST(Index, TriangleOfTypeTwoAtLevelOneIsALadderOfThree) {
    const TriangleInput in = bulging_triangle();
    const Vertices vertices = evaluated(built(in), 2, 1);
    EXPECT_EQ(vertices.count, 5);
    expect_near(vertices.positions[2], wide(in.corners[1]));
    expect_near(vertices.positions[4], wide(in.corners[2]));
    EXPECT_EQ(triples(patch_index_triangle, 2, 1), (Triples{{0, 1, 3}, {1, 2, 3}, {3, 2, 4}}));
}

TEST(Index, FullTriangleAtLevelTwo) {
    EXPECT_EQ(triples(patch_index_triangle, 3, 2),
              (Triples{{0, 1, 4}, {1, 5, 4}, {1, 2, 5}, {2, 6, 5}, {2, 3, 6}, {4, 5, 7}, {5, 8, 7}, {5, 6, 8},
                       {7, 8, 9}}));
}

TEST(Index, QuadOfTypeTwoAtLevelThreeHasFiveRowsOfTwo) {
    EXPECT_EQ(evaluated(built(bulging_quad()), 2, 3).count, 10);
    EXPECT_EQ(triples(patch_index_quad, 2, 3),
              (Triples{{0, 2, 1}, {3, 1, 2}, {2, 4, 3}, {5, 3, 4}, {4, 6, 5}, {7, 5, 6}, {6, 8, 7}, {9, 7, 8}}));
}

TEST(Index, TriangleTypesWithoutARuleGiveAnEmptyList) {
    for (int type : {4, 0, -1, 5}) EXPECT_TRUE(triples(patch_index_triangle, type, 3).empty());
}

TEST(Index, APrimitiveThatIsNoQuadTakesTypeThreeForFour) {
    EXPECT_EQ(patch_triangle_type(1), 1);
    EXPECT_EQ(patch_triangle_type(2), 2);
    EXPECT_EQ(patch_triangle_type(3), 3);
    EXPECT_EQ(patch_triangle_type(4), 3);
    EXPECT_EQ(patch_triangle_type(0), 3);
    EXPECT_EQ(patch_triangle_type(-32768), 3);
}

// Twice the area over the parameters; every triple must turn the same way, and all must cover the domain once.
double covered(const Triples& list, const std::vector<Parameter>& at, double turn) {
    std::set<int> used;
    double sum = 0.0;
    for (const auto& triple : list) {
        const Parameter a = at[static_cast<size_t>(triple[0])], b = at[static_cast<size_t>(triple[1])],
                        c = at[static_cast<size_t>(triple[2])];
        const double area = static_cast<double>(b.first - a.first) * static_cast<double>(c.second - a.second) -
                            static_cast<double>(c.first - a.first) * static_cast<double>(b.second - a.second);
        EXPECT_GT(turn * area, 1e-3);
        used.insert(triple.begin(), triple.end());
        sum += turn * area;
    }
    EXPECT_EQ(used.size(), at.size());
    return sum;
}

TEST(Index, EveryListCoversItsDomainOnceAndUsesEveryVertex) {
    for (int level = 1; level <= 6; ++level) {
        SCOPED_TRACE(level);
        for (int type = 1; type <= 3; ++type) {
            EXPECT_NEAR(covered(triples(patch_index_triangle, type, level), triangle_parameters(type, level), 1), 1.0,
                        1e-5);
        }
        for (int type : {2, 4}) {
            EXPECT_NEAR(covered(triples(patch_index_quad, type, level), quad_parameters(type, level), 1), 2.0, 1e-5);
        }
    }
}

TEST(Index, EveryQuadCellHasItsDiagonalBetweenSecondAndThird) {
    const Triples list = triples(patch_index_quad, 4, 6);
    for (size_t i = 0; i < list.size(); i += 2) {
        EXPECT_EQ(list[i][1], list[i + 1][2]);
        EXPECT_EQ(list[i][2], list[i + 1][1]);
    }
}

TEST(Attributes, OfATriangleAreBarycentric) {
    const float table[6] = {1, 5, -3, 0.25f, 0.5f, 1};
    for (int type = 1; type <= 3; ++type) {
        for (int level = 1; level <= 6; ++level) {
            float out[2 * PATCH_VERTEX_LIMIT];
            const std::vector<Parameter> at = triangle_parameters(type, level);
            ASSERT_EQ(patch_attributes_triangle(table, 2, type, level, out), static_cast<int>(2 * at.size()));
            for (size_t i = 0; i < at.size(); ++i) {
                const double u = at[i].first, v = at[i].second, w = 1.0 - u - v;
                EXPECT_NEAR(out[2 * i], w * 1 + u * 5 + v * -3, 1e-5);
                EXPECT_NEAR(out[2 * i + 1], w * 0.25 + u * 0.5 + v * 1, 1e-6);
            }
        }
    }
}

TEST(Attributes, OfAQuadAreBilinear) {
    const float table[12] = {1, 5, -3, 2, 0.25f, 0.5f, 1, 0, 7, 7, 7, 7};
    for (int type : {2, 4}) {
        for (int level = 1; level <= 6; ++level) {
            float out[3 * PATCH_VERTEX_LIMIT];
            const std::vector<Parameter> at = quad_parameters(type, level);
            ASSERT_EQ(patch_attributes_quad(table, 3, type, level, out), static_cast<int>(3 * at.size()));
            for (size_t i = 0; i < at.size(); ++i) {
                const double s = at[i].first, t = at[i].second;
                const auto blend = [&](const float* c) {
                    return (1 - s) * (1 - t) * c[0] + s * (1 - t) * c[1] + (1 - s) * t * c[2] + s * t * c[3];
                };
                EXPECT_NEAR(out[3 * i], blend(table), 1e-5);
                EXPECT_NEAR(out[3 * i + 1], blend(table + 4), 1e-6);
                EXPECT_EQ(out[3 * i + 2], 7.0f);
            }
        }
    }
}

TEST(Attributes, NoneAtAllWritesNothing) {
    float out[1] = {42};
    EXPECT_EQ(patch_attributes_triangle(nullptr, 0, 3, 6, out), 0);
    EXPECT_EQ(patch_attributes_quad(nullptr, 0, 4, 6, out), 0);
    EXPECT_EQ(out[0], 42.0f);
}

TEST(Grid, ParametersGrowByRepeatedAddition) {
    const float ramp[4] = {0, 1, 0, 1};  // u of a triangle, s of a quad, as they are
    bool differs = false;
    for (int level = 1; level <= 6; ++level) {
        const float step = 1.0f / static_cast<float>(level + 1);
        float triangle[PATCH_VERTEX_LIMIT], quad[PATCH_VERTEX_LIMIT];
        patch_attributes_triangle(ramp, 1, 3, level, triangle);
        patch_attributes_quad(ramp, 1, 2, level, quad);
        float sum = 0.0f;
        for (int i = 0; i < level + 2; ++i, sum += step) {
            EXPECT_EQ(triangle[i], sum);
            EXPECT_EQ(quad[2 * i], sum);
            differs = differs || sum != static_cast<float>(i) * step;
        }
    }
    EXPECT_TRUE(differs);  // so that a product in place of the sum would have been seen
}

TEST(SharedEdge, OfTwoTrianglesIsOneCurveWhateverTheirCornerNormals) {
    const TriangleInput left = bulging_triangle();
    TriangleInput right = left;  // the edge 0-1 of the left one, walked from its corner 1 as the edge 2-0
    right.corners[2] = left.corners[0];
    right.corners[0] = left.corners[1];
    right.corners[1] = {4, 4, 4};
    right.normals[8] = left.normals[4];
    right.normals[9] = left.normals[5];
    for (int i = 0; i < 3; ++i) right.normals[i] = unit_float(static_cast<float>(i), 1, -1);
    const TrianglePatch a = built(left), b = built(right);
    expect_same(a.slots[2], b.slots[3]);
    expect_same(a.slots[5], b.slots[1]);
    for (int level = 1; level <= 6; ++level) {
        const Vertices one = evaluated(a, 3, level), other = evaluated(b, 3, level);
        int first_of_row = 0;
        for (int i = 0; i < level + 2; ++i) {
            // The left one's first row runs from corner 0; the right one's first column ends there.
            expect_near(other.positions[first_of_row], wide(one.positions[level + 1 - i]), 4e-6);
            first_of_row += level + 2 - i;
        }
    }
}

TEST(SharedEdge, OfATriangleAndAQuadIsOneCurve) {
    const TriangleInput triangle = bulging_triangle();
    QuadInput quad = bulging_quad();
    quad.corners[0] = triangle.corners[0];
    quad.corners[1] = triangle.corners[1];
    quad.normals[4] = triangle.normals[4];
    quad.normals[5] = triangle.normals[5];
    for (int level = 1; level <= 6; ++level) {
        const Vertices full = evaluated(built(triangle), 3, level);
        const Vertices fan = evaluated(built(triangle), 1, level);
        const Vertices square = evaluated(built(quad), 4, level);
        const Vertices ladder = evaluated(built(quad), 2, level);
        for (int i = 0; i < level + 2; ++i) {
            expect_near(square.positions[i * (level + 2)], wide(full.positions[i]), 4e-6);
            expect_near(ladder.positions[i * 2], wide(full.positions[i]), 4e-6);
            expect_same(fan.positions[i], full.positions[i]);
        }
    }
}

TEST(SharedEdge, OfTwoQuadsIsOneCurveInEitherDirection) {
    const QuadInput left = bulging_quad();
    QuadInput right = bulging_quad();  // its edge 2-0 is the left one's edge 1-3
    right.corners[0] = left.corners[3];
    right.corners[2] = left.corners[1];
    right.normals[10] = left.normals[6];
    right.normals[11] = left.normals[7];
    const QuadPatch a = built(left), b = built(right);
    expect_same(a.slots[7], b.slots[8]);
    expect_same(a.slots[11], b.slots[4]);
    for (int level = 1; level <= 6; ++level) {
        const int n = level + 2;
        const Vertices one = evaluated(a, 4, level), other = evaluated(b, 4, level);
        for (int i = 0; i < n; ++i) {
            expect_near(other.positions[i], wide(one.positions[(n - 1) * n + n - 1 - i]), 4e-6);
        }
    }
}

TEST(SharedEdge, WithDifferentControlNormalsStaysOpen) {
    const TriangleInput left = bulging_triangle();
    TriangleInput right = left;
    right.normals[4] = unit_float(4, 0, 1);
    const Vertices one = evaluated(built(left), 3, 1), other = evaluated(built(right), 3, 1);
    EXPECT_GT(std::fabs(one.positions[1].z - other.positions[1].z), 0.01f);
}

TEST(Weights, CornersOfAnotherJointCountFromTheOtherEnd) {
    const float weights[4] = {0.9f, 0.25f, 0.75f, 1.5f};
    const bool same[4] = {true, true, false, false};
    float table[4];
    patch_weight_table(weights, same, 4, table);
    EXPECT_EQ(table[0], 1.0f - 0.9f);
    EXPECT_EQ(table[1], 0.75f);
    EXPECT_EQ(table[2], 0.75f);
    EXPECT_EQ(table[3], 1.5f);
}

TEST(Weights, OfATriangleTouchesThreeFloats) {
    const float weights[3] = {1, 1, 1};
    const bool same[3] = {false, true, false};  // corner 0 is always of its own joint
    float table[4] = {-1, -1, -1, -1};
    patch_weight_table(weights, same, 3, table);
    EXPECT_EQ(table[0], 0.0f);
    EXPECT_EQ(table[1], 0.0f);
    EXPECT_EQ(table[2], 1.0f);
    EXPECT_EQ(table[3], -1.0f);
}

TEST(Weights, BlendOverATriangleAndAQuadAsOneAttribute) {
    const float table[4] = {0.0f, 0.25f, 1.0f, 0.5f};
    for (int level = 1; level <= 6; ++level) {
        float out[PATCH_VERTEX_LIMIT];
        const std::vector<Parameter> uv = triangle_parameters(3, level);
        ASSERT_EQ(patch_weights_triangle(table, 3, level, out), static_cast<int>(uv.size()));
        for (size_t i = 0; i < uv.size(); ++i) {
            EXPECT_NEAR(out[i], 1.0 - (0.25 * static_cast<double>(uv[i].first) + static_cast<double>(uv[i].second)),
                        1e-6);
        }
        const std::vector<Parameter> st = quad_parameters(4, level);
        ASSERT_EQ(patch_weights_quad(table, 4, level, out), static_cast<int>(st.size()));
        for (size_t i = 0; i < st.size(); ++i) {
            const double s = st[i].first, t = st[i].second;
            EXPECT_NEAR(out[i], 1.0 - (s * (1 - t) * 0.25 + (1 - s) * t + s * t * 0.5), 1e-6);
        }
    }
}

TEST(BadInput, CoincidentCornersGiveEveryVertexAtThatPlace) {
    TriangleInput in = bulging_triangle();
    for (Vec3& corner : in.corners) corner = {2, 2, 2};
    for (int type = 1; type <= 3; ++type) {
        const Vertices vertices = evaluated(built(in), type, 6);
        for (int i = 0; i < vertices.count; ++i) expect_near(vertices.positions[i], {2, 2, 2}, 1e-4);
    }
    QuadInput quad = bulging_quad();
    for (Vec3& corner : quad.corners) corner = {2, 2, 2};
    const Vertices vertices = evaluated(built(quad), 4, 6);
    for (int i = 0; i < vertices.count; ++i) expect_near(vertices.positions[i], {2, 2, 2}, 1e-4);
}

TEST(BadInput, ZeroNormalsKeepThePositions) {
    TriangleInput in = bulging_triangle();
    for (Vec3& normal : in.normals) normal = {0, 0, 0};
    const Vertices vertices = evaluated(built(in), 3, 6);
    EXPECT_EQ(vertices.count, 36);
    for (int i = 0; i < vertices.count; ++i) {
        EXPECT_TRUE(std::isfinite(vertices.positions[i].x));
        EXPECT_FALSE(std::isfinite(vertices.normals[i].x));
    }
}

TEST(BadInput, NonFiniteNumbersTravelOnAndKeepTheCounts) {
    for (float bad : {NOT_A_NUMBER, INFINITE, -INFINITE, std::numeric_limits<float>::max()}) {
        TriangleInput triangle = bulging_triangle();
        QuadInput quad = bulging_quad();
        for (Vec3& corner : triangle.corners) corner.x = bad;
        for (Vec3& corner : quad.corners) corner.y = bad;
        triangle.normals[4] = quad.normals[4] = {bad, bad, bad};
        for (int level = 1; level <= 6; ++level) {
            const int n = level + 2;
            EXPECT_EQ(evaluated(built(triangle), 3, level).count, n * (n + 1) / 2);
            EXPECT_EQ(evaluated(built(quad), 4, level).count, n * n);
            EXPECT_FALSE(std::isfinite(evaluated(built(triangle), 1, level).positions[0].x));
            EXPECT_FALSE(std::isfinite(evaluated(built(quad), 2, level).positions[0].y));
        }
    }
}

TEST(Limits, TheFinestGridsFitTheWorkArrays) {
    EXPECT_LE(evaluated(built(bulging_quad()), 4, PATCH_LOD_LIMIT).count, PATCH_VERTEX_LIMIT);
    EXPECT_EQ(triples(patch_index_quad, 4, PATCH_LOD_LIMIT).size(), static_cast<size_t>(PATCH_TRIANGLE_LIMIT));
}

}  // namespace
}  // namespace pelt
