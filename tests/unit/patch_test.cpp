// The geometry of curved primitives: control nets, points and normals on the surface, edges shared with a neighbour.
// patch_grid_test.cpp has the numbering of the vertices and all that follows it.
#include "surfaces/patch.h"

#if defined(GL_VERSION_1_1) || defined(__gl_h_)
#error "patch.h must not bring OpenGL with it"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <vector>

#include "support/patch_reference.h"

namespace pelt {
namespace {

using namespace patch_reference;

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
    for (int i = 0; i < 9; ++i) { boundary[i] = {i % 3 == 0 ? 0.0f : 2.0f, static_cast<float>(i), 0.0f}; }
    Vec3 out;
    EXPECT_EQ(patch_centre(boundary, &out), 1);
    // x: the edges stand at 2, the corners at 0. y: the edges sum to 1 + 2 + 4 + 5 + 7 + 8 = 27, the corners to 9.
    expect_near(out, {3.0, 5.25, 0.0}, 5e-5);
}

TEST(Centre, TakesASixthAndAThirdAsWritten) {
    Vec3 boundary[9];
    for (Vec3& p : boundary) { p = {1000, 1, 0}; }
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
    for (int i = 0; i < 10; ++i) { expect_same(patch.slots[i], expected[i]); }
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
    for (int place = 4; place < 10; ++place) { in.normals[place] = unit_float(3, 2, 1); }
    const TrianglePatch other = built(in);
    for (int slot = 10; slot < 16; ++slot) { expect_same(other.slots[slot], patch.slots[slot]); }
}

TEST(BuildTriangle, DoesNotReadThePlacesOfAQuad) {
    TriangleInput in = bulging_triangle();
    for (int place : {3, 10, 11}) { in.normals[place] = {NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER}; }
    for (const Vec3& slot : built(in).slots) { EXPECT_TRUE(std::isfinite(slot.x + slot.y + slot.z)); }
}

TEST(BuildTriangle, CornerNormalsDoNotShapeTheSurface) {
    TriangleInput in = bulging_triangle();
    const TrianglePatch patch = built(in);
    for (int i = 0; i < 3; ++i) { in.normals[i] = unit_float(5, 1, 1); }
    const TrianglePatch other = built(in);
    for (int slot = 0; slot < 10; ++slot) { expect_same(other.slots[slot], patch.slots[slot]); }
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
    for (int i = 0; i < 16; ++i) { expect_same(patch.slots[i], net[i]); }
}

TEST(BuildQuad, HoldsCornerNormalsAndTheMidNormalsOfItsOutline) {
    const QuadInput in = bulging_quad();
    const QuadPatch patch = built(in);
    for (int i = 0; i < 4; ++i) { expect_same(patch.slots[16 + i], in.normals[i]); }
    const int edges[4][2] = {{0, 1}, {1, 3}, {3, 2}, {2, 0}};
    for (int i = 0; i < 4; ++i) {
        const int from = edges[i][0], to = edges[i][1];
        Vec3 mid;
        patch_edge_normal(in.corners + from, in.corners + to, in.normals + from, in.normals + to, &mid);
        expect_same(patch.slots[20 + i], mid);
    }
}

// Every level of these types, against the place and the normal that a reference gives for the parameters of a vertex.
template <typename Patch, typename Place, typename Normal>
void expect_on_surface(const Patch& patch, std::initializer_list<int> types,
                       std::vector<Parameter> (*parameters_of)(int type, int level), Place place, Normal normal) {
    for (int type : types) {
        for (int level = 1; level <= 6; ++level) {
            SCOPED_TRACE(testing::Message() << "type " << type << " level " << level);
            const std::vector<Parameter> parameters = parameters_of(type, level);
            const Vertices vertices = evaluated(patch, type, level);
            ASSERT_EQ(static_cast<size_t>(vertices.count), parameters.size());
            for (int i = 0; i < vertices.count; ++i) {
                const auto [u, v] = parameters[static_cast<size_t>(i)];
                expect_near(vertices.positions[i], place(patch, u, v));
                expect_near(vertices.normals[i], normal(patch, u, v));
            }
        }
    }
}

TEST(EvalTriangle, EveryTypeAndLevelLiesOnTheBezierTriangle) {
    expect_on_surface(built(bulging_triangle()), {1, 2, 3}, triangle_parameters, triangle_casteljau,
                      triangle_normal_sum);
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
    for (int i = 0; i < 6; ++i) { expect_same(after.positions[i], before.positions[i]); }
    EXPECT_GT(std::fabs(evaluated(patch, 3, 2).positions[5].x), 100.0f);  // the one inner vertex of level 2
}

TEST(EvalTriangle, AFlatPatchIsNotExactlyFlat) {
    const Vec3 up{0, 0, 1};
    TriangleInput in = {{{0, 0, 3}, {3, 0, 3}, {0, 3, 3}}, {}};
    for (Vec3& normal : in.normals) { normal = up; }
    const TrianglePatch patch = built(in);
    expect_same(patch.slots[2], {3.0f * 0.33333f, 0.0f, 9.0f * 0.33333f});
    const Vertices vertices = evaluated(patch, 3, 1);
    // Half way along an edge the two inner points weigh three eighths each, and each is 1e-5 of its length short.
    EXPECT_NEAR(vertices.positions[1].z, 3.0 * (0.25 + 0.75 * 0.99999), 1e-6);
    EXPECT_LT(vertices.positions[1].z, 3.0f);
    EXPECT_EQ(vertices.positions[0].z, 3.0f);
}

TEST(EvalQuad, EveryTypeAndLevelLiesOnTheBicubicPatch) {
    expect_on_surface(built(bulging_quad()), {2, 4, 3, 1, 0}, quad_parameters, quad_casteljau, quad_normal);
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
        expect_near(out,
                    g * g * g * wide(p0) + 3 * g * g * f * wide(p1) + 3 * g * f * f * wide(p2) + f * f * f * wide(p3));
    }
}

TEST(NormalQuad, InTheMiddleIsTheNormalisedSumOfTheFourMidNormals) {
    QuadPatch patch = built(bulging_quad());
    Point3 sum{0, 0, 0};
    for (int slot = 20; slot < 24; ++slot) { sum = sum + wide(patch.slots[slot]); }
    for (int slot = 16; slot < 20; ++slot) {
        patch.slots[slot] = {1000, 1000, 1000};  // no corner has a say here
    }
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

TEST(SharedEdge, OfTwoTrianglesIsOneCurveWhateverTheirCornerNormals) {
    const TriangleInput left = bulging_triangle();
    TriangleInput right = left;  // the edge 0-1 of the left one, walked from its corner 1 as the edge 2-0
    right.corners[2] = left.corners[0];
    right.corners[0] = left.corners[1];
    right.corners[1] = {4, 4, 4};
    right.normals[8] = left.normals[4];
    right.normals[9] = left.normals[5];
    for (int i = 0; i < 3; ++i) { right.normals[i] = unit_float(static_cast<float>(i), 1, -1); }
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

TEST(BadInput, CoincidentCornersGiveEveryVertexAtThatPlace) {
    TriangleInput in = bulging_triangle();
    for (Vec3& corner : in.corners) { corner = {2, 2, 2}; }
    for (int type = 1; type <= 3; ++type) {
        const Vertices vertices = evaluated(built(in), type, 6);
        for (int i = 0; i < vertices.count; ++i) { expect_near(vertices.positions[i], {2, 2, 2}, 1e-4); }
    }
    QuadInput quad = bulging_quad();
    for (Vec3& corner : quad.corners) { corner = {2, 2, 2}; }
    const Vertices vertices = evaluated(built(quad), 4, 6);
    for (int i = 0; i < vertices.count; ++i) { expect_near(vertices.positions[i], {2, 2, 2}, 1e-4); }
}

TEST(BadInput, ZeroNormalsKeepThePositions) {
    TriangleInput in = bulging_triangle();
    for (Vec3& normal : in.normals) { normal = {0, 0, 0}; }
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
        for (Vec3& corner : triangle.corners) { corner.x = bad; }
        for (Vec3& corner : quad.corners) { corner.y = bad; }
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

PatchCorners corners_of(const Vec3* positions, const Vec3* normals, int count) {
    PatchCorners corners{};
    corners.count = count;
    std::copy(positions, positions + count, corners.positions);
    std::copy(normals, normals + PATCH_NORMAL_PLACES, corners.normals);
    return corners;
}

void expect_grid(const PatchSurface& surface, const Vertices& vertices) {
    ASSERT_EQ(surface.vertex_count, vertices.count);
    for (int i = 0; i < vertices.count; ++i) {
        expect_same(surface.positions[i], vertices.positions[i]);
        expect_same(surface.normals[i], vertices.normals[i]);
    }
}

TEST(Surface, IsTheNetTheGridAndTheIndexListOfItsPrimitive) {
    const TriangleInput triangle = bulging_triangle();
    const QuadInput quad = bulging_quad();
    PatchSurface surface;
    int16_t triangles[PATCH_TRIANGLE_LIMIT][3];
    for (const int level : {1, 4}) {
        for (const int type : {1, 2, 3, 4}) {  // a triangle of type 4 counts as 3
            patch_surface(corners_of(triangle.corners, triangle.normals, 3), type, level, &surface);
            EXPECT_FALSE(surface.quad);
            expect_grid(surface, evaluated(built(triangle), type, level));
            EXPECT_EQ(surface.triangle_count, patch_index_triangle(type == 4 ? 3 : type, level, triangles));
            EXPECT_EQ(std::memcmp(surface.net.slots, built(triangle).slots, sizeof built(triangle).slots), 0);
        }
        for (const int type : {2, 4}) {
            patch_surface(corners_of(quad.corners, quad.normals, 4), type, level, &surface);
            EXPECT_TRUE(surface.quad);
            expect_grid(surface, evaluated(built(quad), type, level));
            EXPECT_EQ(surface.triangle_count, patch_index_quad(type, level, triangles));
        }
    }
}

TEST(Surface, HasTheAttributesThatAreAskedForAtItsCorners) {
    const QuadInput quad = bulging_quad();
    const float uvs[4][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    const unsigned char colours[4][3] = {{0, 10, 20}, {40, 50, 60}, {80, 90, 100}, {120, 130, 140}};
    PatchCorners corners = corners_of(quad.corners, quad.normals, 4);
    for (int i = 0; i < 4; ++i) {
        corners.uvs[i] = uvs[i];
        corners.colours[i] = colours[i];
    }
    PatchSurface surface;
    patch_surface(corners, 2, 1, &surface);
    patch_surface_attributes(corners, true, true, 0.5f, &surface);
    EXPECT_EQ(surface.attribute_count, 5);
    EXPECT_EQ(surface.uvs, surface.attributes);
    EXPECT_EQ(surface.colours, surface.attributes + 2);
    // The second row is halfway from the corners 0 and 2 to the corners 1 and 3.
    const float halfway[] = {0.5f, 0, 10, 15, 20, 0.5f, 1, 50, 55, 60};
    for (int i = 0; i < 10; ++i) { EXPECT_NEAR(surface.attributes[10 + i], halfway[i], 1e-5f) << i; }
    patch_surface_attributes(corners, false, true, 1.0f, &surface);
    EXPECT_EQ(surface.attribute_count, 3);
    EXPECT_EQ(surface.uvs, nullptr);
    EXPECT_EQ(surface.colours[0], 0.0f);
    EXPECT_EQ(surface.colours[2], 20.0f);
    patch_surface_attributes(corners, true, false, 1.0f, &surface);
    EXPECT_EQ(surface.attribute_count, 2);
    EXPECT_EQ(surface.colours, nullptr);
    patch_surface_attributes(corners, false, false, 1.0f, &surface);
    EXPECT_EQ(surface.attribute_count, 0);
    EXPECT_EQ(surface.uvs, nullptr);
}

TEST(Surface, SharesItsVerticesBetweenTwoJoints) {
    const TriangleInput in = bulging_triangle();
    PatchSurface surface;
    patch_surface(corners_of(in.corners, in.normals, 3), 1, 1, &surface);  // a row from corner 0 to 1, then corner 2
    const float weights[3] = {1.0f, 0.75f, 0.5f};
    const bool same_joint[3] = {true, false, true};
    float shares[PATCH_VERTEX_LIMIT];
    patch_surface_weights(surface, weights, same_joint, shares);
    EXPECT_NEAR(shares[0], 1.0f, 1e-6f);
    EXPECT_NEAR(shares[2], 0.25f, 1e-6f);  // what corner 1 leaves to the joint of corner 0
    EXPECT_NEAR(shares[1], 0.625f, 1e-6f);
    EXPECT_NEAR(shares[3], 0.5f, 1e-6f);
}

}  // namespace
}  // namespace pelt
