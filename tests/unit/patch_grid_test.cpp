// Curved primitives by number: how many vertices and triangles each type has at each level, which vertices each
// triangle joins, and the attributes and weights that go along.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <set>
#include <vector>

#include "support/patch_reference.h"
#include "surfaces/patch.h"

namespace pelt {
namespace {

using namespace patch_reference;

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
    EXPECT_EQ(
        triples(patch_index_triangle, 3, 2),
        (Triples{{0, 1, 4}, {1, 5, 4}, {1, 2, 5}, {2, 6, 5}, {2, 3, 6}, {4, 5, 7}, {5, 8, 7}, {5, 6, 8}, {7, 8, 9}}));
}

TEST(Index, QuadOfTypeTwoAtLevelThreeHasFiveRowsOfTwo) {
    EXPECT_EQ(evaluated(built(bulging_quad()), 2, 3).count, 10);
    EXPECT_EQ(triples(patch_index_quad, 2, 3),
              (Triples{{0, 2, 1}, {3, 1, 2}, {2, 4, 3}, {5, 3, 4}, {4, 6, 5}, {7, 5, 6}, {6, 8, 7}, {9, 7, 8}}));
}

TEST(Index, TriangleTypesWithoutARuleGiveAnEmptyList) {
    for (int type : {4, 0, -1, 5}) { EXPECT_TRUE(triples(patch_index_triangle, type, 3).empty()); }
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

TEST(Limits, TheFinestGridsFitTheWorkArrays) {
    EXPECT_LE(evaluated(built(bulging_quad()), 4, PATCH_LOD_LIMIT).count, PATCH_VERTEX_LIMIT);
    EXPECT_EQ(triples(patch_index_quad, 4, PATCH_LOD_LIMIT).size(), static_cast<size_t>(PATCH_TRIANGLE_LIMIT));
}

}  // namespace
}  // namespace pelt
