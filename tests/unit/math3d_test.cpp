// Vectors and matrices: the settled conventions, against values worked out by hand or in double precision.
#include "foundation/math3d.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace pelt {
namespace {

constexpr double TURN = 6.2831854;  // the library's own two pi

Mat4 identity() { return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}; }

Mat4 numbered() {
    Mat4 m;
    for (int i = 0; i < 16; ++i) { m.m[i] = static_cast<float>(i + 1); }
    return m;
}

Mat4 translation(float x, float y, float z) { return {{1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1}}; }

bool same_bits(const Mat4& a, const Mat4& b) { return std::memcmp(a.m, b.m, sizeof a.m) == 0; }

void expect_near(const Mat4& actual, const Mat4& expected, float tolerance = 1e-6F) {
    for (int i = 0; i < 16; ++i) { EXPECT_NEAR(actual.m[i], expected.m[i], tolerance) << "element " << i; }
}

// The right-handed rotation of column vectors about one axis, from its definition.
Mat4 rotation(int axis, double degrees) {
    const double r = degrees / 360.0 * TURN;
    const auto c = static_cast<float>(std::cos(r));
    const auto s = static_cast<float>(std::sin(r));
    switch (axis) {
        case 0: return {{1, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1}};
        case 1: return {{c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1}};
        default: return {{c, -s, 0, 0, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    }
}

// The product as it is written on paper: left times right, row-major.
Mat4 product(const Mat4& left, const Mat4& right) {
    Mat4 out;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) {
                sum += static_cast<double>(left.m[4 * r + k]) * static_cast<double>(right.m[4 * k + c]);
            }
            out.m[4 * r + c] = static_cast<float>(sum);
        }
    }
    return out;
}

void expect_vec(const Vec3& v, float x, float y, float z, float tolerance = 1e-6F) {
    EXPECT_NEAR(v.x, x, tolerance);
    EXPECT_NEAR(v.y, y, tolerance);
    EXPECT_NEAR(v.z, z, tolerance);
}

TEST(MatCopying, IdentityCopySnapshotAndWords) {
    Mat4 m = numbered();
    mat_identity(&m);
    EXPECT_TRUE(same_bits(m, identity()));
    const Mat4 source = numbered();
    mat_copy(&source, &m);
    EXPECT_TRUE(same_bits(m, source));
    Mat4 words = identity();
    mat_copy_words(source.m, words.m);
    EXPECT_TRUE(same_bits(words, source));
    EXPECT_TRUE(same_bits(*mat_snapshot(&source), source));
}

TEST(MatCopying, GlFormIsTheTranspose) {
    const Mat4 moved = translation(1, 2, 3);
    const Mat4* gl = mat_to_gl(&moved);
    EXPECT_EQ(gl->m[12], 1.0f);
    EXPECT_EQ(gl->m[13], 2.0f);
    EXPECT_EQ(gl->m[14], 3.0f);
    EXPECT_EQ(gl->m[3], 0.0f);
    const Mat4 source = numbered();
    Mat4 transposed;
    mat_transpose(&source, &transposed);
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) { EXPECT_EQ(transposed.m[4 * r + c], static_cast<float>(4 * c + r + 1)); }
    }
}

TEST(MatCopying, GlFormOfTheResultItselfIsTransposedBack) {
    const Mat4 source = numbered();
    EXPECT_TRUE(same_bits(*mat_to_gl(mat_to_gl(&source)), source));
}

TEST(MatPrint, ShowsTheTransposeWithoutACommaAtTheEnd) {
    const Mat4 m = numbered();
    ::testing::internal::CaptureStdout();
    mat_print(&m);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "1.000, 5.000, 9.000, 13.000,\n2.000, 6.000, 10.000, 14.000,\n"
              "3.000, 7.000, 11.000, 15.000,\n4.000, 8.000, 12.000, 16.000\n");
}

TEST(MatMultiply, SecondArgumentStandsOnTheLeft) {
    const Mat4 a = rotation(2, 30.0);
    const Mat4 b = numbered();
    Mat4 out;
    mat_multiply(&a, &b, &out);
    expect_near(out, product(b, a), 1e-5F);
}

TEST(MatMultiply, OutMayBeEitherOperand) {
    const Mat4 a = rotation(0, 17.0);
    const Mat4 b = numbered();
    Mat4 out;
    mat_multiply(&a, &b, &out);
    Mat4 into_b = b;
    mat_multiply(&a, &into_b, &into_b);
    Mat4 into_a = a;
    mat_multiply(&into_a, &b, &into_a);
    EXPECT_TRUE(same_bits(into_b, out));
    EXPECT_TRUE(same_bits(into_a, out));
}

TEST(MatMultiply, IdentityOnEitherSideGivesTheOther) {
    const Mat4 t = translation(4, 5, 6);
    const Mat4 i = identity();
    Mat4 out;
    mat_multiply(&t, &i, &out);
    EXPECT_TRUE(same_bits(out, t));
    mat_multiply(&i, &t, &out);
    EXPECT_TRUE(same_bits(out, t));
}

TEST(MatMultiply, FirstArgumentActsOnThePointFirst) {
    const Mat4 t = translation(1, 0, 0);
    const Mat4 r = {{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};  // a quarter turn about z
    Mat4 out;
    mat_multiply(&t, &r, &out);
    const Vec3 origin{0, 0, 0};
    Vec3 moved;
    mat_transform_point(&out, &origin, &moved);
    expect_vec(moved, 0, 1, 0);  // moved to x 1, then turned to y 1
}

TEST(MatTranslate, ActsBeforeWhatStandsInTheMatrix) {
    Mat4 m = rotation(2, 40.0);
    const Mat4 expected = product(m, translation(1, 2, 3));
    mat_translate(&m, 1, 2, 3);
    expect_near(m, expected);
}

TEST(MatScale, ActsBeforeWhatStandsInTheMatrix) {
    Mat4 m = translation(1, 2, 3);
    mat_scale(&m, 2, 3, 4);
    EXPECT_TRUE(same_bits(m, {{2, 0, 0, 1, 0, 3, 0, 2, 0, 0, 4, 3, 0, 0, 0, 1}}));
}

TEST(MatRotate, ZeroAnglesLeaveEveryBit) {
    Mat4 m = numbered();
    m.m[5] = std::numeric_limits<float>::quiet_NaN();
    m.m[6] = -0.0f;
    const Mat4 before = m;
    mat_rotate(&m, 0.0f, 0.0f, -0.0f);
    EXPECT_TRUE(same_bits(m, before));
}

TEST(MatRotate, WholeTurnIsNotQuiteTheIdentity) {
    Mat4 m = identity();
    mat_rotate(&m, 360.0f, 0.0f, 0.0f);
    // 6.2831854 exceeds two pi by 9.28e-8.
    EXPECT_NEAR(m.m[9], 9.28e-8f, 1e-10F);
    EXPECT_NEAR(m.m[6], -9.28e-8f, 1e-10F);
    EXPECT_EQ(m.m[5], 1.0f);
}

TEST(MatRotate, EachAxisTurnsRightHanded) {
    for (int axis = 0; axis < 3; ++axis) {
        Mat4 m = identity();
        mat_rotate(&m, axis == 0 ? 33.0f : 0.0f, axis == 1 ? 33.0f : 0.0f, axis == 2 ? 33.0f : 0.0f);
        expect_near(m, rotation(axis, 33.0));
    }
    Mat4 z = identity();
    mat_rotate(&z, 0.0f, 0.0f, 90.0f);
    const Vec3 x{1, 0, 0};
    Vec3 turned;
    mat_transform_point(&z, &x, &turned);
    expect_vec(turned, 0, 1, 0);
}

TEST(MatRotate, IsTimesRxTimesRyTimesRz) {
    Mat4 m = numbered();
    const Mat4 expected =
        product(product(product(numbered(), rotation(0, 10.0)), rotation(1, 20.0)), rotation(2, 30.0));
    mat_rotate(&m, 10.0f, 20.0f, 30.0f);
    expect_near(m, expected, 2e-5F);
}

TEST(MatRotate, NonFiniteAnglesTravelOn) {
    Mat4 m = identity();
    mat_rotate(&m, std::numeric_limits<float>::infinity(), 0.0f, 0.0f);
    EXPECT_TRUE(std::isnan(m.m[5]));
}

TEST(MatRotateText, NumbersAreAnglesAboutTheAxisOfTheirPosition) {
    Mat4 m;
    EXPECT_EQ(mat_rotate_text(&m, "30", "45", "0"), 1);
    expect_near(m, product(rotation(0, 30.0), rotation(1, 45.0)));
    Mat4 named;
    EXPECT_EQ(mat_rotate_text(&named, "x30", "y45", "z0"), 1);
    EXPECT_TRUE(same_bits(m, named));
    EXPECT_EQ(mat_rotate_text(&m, "0", "0", "-12.5"), 1);
    expect_near(m, rotation(2, -12.5));
}

TEST(MatRotateText, AxisLettersChangeTheOrder) {
    Mat4 m;
    EXPECT_EQ(mat_rotate_text(&m, "z30", "x45", "0"), 1);
    expect_near(m, product(rotation(2, 30.0), rotation(0, 45.0)));
}

TEST(MatRotateText, ForbiddenTextEndsWithWhatEarlierTextsBuilt) {
    Mat4 m = numbered();
    EXPECT_EQ(mat_rotate_text(&m, "x10", "abc", "y5"), 0);
    expect_near(m, rotation(0, 10.0));
}

TEST(MatRotateText, AxisLetterStandsInFirstPlaceOnly) {
    Mat4 m = numbered();
    EXPECT_EQ(mat_rotate_text(&m, "-x10", "0", "0"), 0);
    EXPECT_TRUE(same_bits(m, identity()));
    EXPECT_EQ(mat_rotate_text(&m, "xx10", "0", "0"), 0);
    EXPECT_EQ(mat_rotate_text(&m, "X10", "0", "0"), 0);
}

TEST(MatRotateText, PointInFirstPlaceAndPlusAnywhereAreRefused) {
    Mat4 m;
    for (const char* text : {".5", "+5", "x+5", "5+", "1e3", " 5", "5 ", "w5"}) {
        EXPECT_EQ(mat_rotate_text(&m, text, "0", "0"), 0) << text;
        EXPECT_TRUE(same_bits(m, identity())) << text;
    }
    EXPECT_EQ(mat_rotate_text(&m, "x.5", "0", "0"), 1);
    expect_near(m, rotation(0, 0.5));
    EXPECT_EQ(mat_rotate_text(&m, "-.5", "0", "0"), 1);
    expect_near(m, rotation(0, -0.5));
}

TEST(MatRotateText, EmptyTextDoesNothing) {
    Mat4 m = numbered();
    EXPECT_EQ(mat_rotate_text(&m, "", "", ""), 1);
    EXPECT_TRUE(same_bits(m, identity()));
    EXPECT_EQ(mat_rotate_text(&m, "x", "-", "x-"), 1);
    EXPECT_TRUE(same_bits(m, identity()));
}

TEST(MatRotateText, NullTextIsRefused) {
    Mat4 m = numbered();
    EXPECT_EQ(mat_rotate_text(&m, "z90", nullptr, "0"), 0);
    expect_near(m, rotation(2, 90.0));
}

TEST(MatRotateText, TextsOfAnyLengthAreDefined) {
    Mat4 m;
    EXPECT_EQ(mat_rotate_text(&m, std::string(5000, '9').c_str(), "0", "0"), 1);
    EXPECT_TRUE(std::isnan(m.m[5]));
}

TEST(MatInverse, SingularMatrixGivesTheIdentity) {
    Mat4 m = identity();
    m.m[1] = m.m[5] = m.m[9] = m.m[13] = 0.0f;
    Mat4 out = numbered();
    mat_inverse(&m, &out);
    EXPECT_TRUE(same_bits(out, identity()));
    const Mat4 zero{};
    mat_inverse(&zero, &out);
    EXPECT_TRUE(same_bits(out, identity()));
}

TEST(MatInverse, OfATranslationIsTheOppositeTranslation) {
    const Mat4 m = translation(1, 2, 3);
    Mat4 out;
    mat_inverse(&m, &out);
    expect_near(out, translation(-1, -2, -3), 0.0f);
}

TEST(MatInverse, TimesTheMatrixIsTheIdentityAndTheSourceStays) {
    Mat4 m = product(product(translation(1, -2, 3), rotation(0, 25.0)), rotation(1, 70.0));
    mat_scale(&m, 2.0f, 0.5f, 3.0f);
    const Mat4 before = m;
    Mat4 inverse;
    mat_inverse(&m, &inverse);
    EXPECT_TRUE(same_bits(m, before));
    expect_near(product(m, inverse), identity(), 1e-5F);
    mat_inverse(&m, &m);
    EXPECT_TRUE(same_bits(m, inverse));
}

TEST(MatInverse, RowsAreExchangedWhereTheDiagonalIsZero) {
    const Mat4 m = {{0, 1, 0, 0, 0, 0, 2, 0, 4, 0, 0, 0, 0, 0, 0, 1}};
    Mat4 out;
    mat_inverse(&m, &out);
    expect_near(out, {{0, 0, 0.25f, 0, 1, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0, 1}}, 0.0f);
}

TEST(MatInverse, OnlyAPivotOfExactlyZeroIsSingular) {
    Mat4 m = identity();
    mat_scale(&m, 1e-30F, 2e-30F, 4e-30F);  // the product of the three is 0 in 32 bits
    Mat4 out;
    mat_inverse(&m, &out);
    EXPECT_FLOAT_EQ(out.m[0], 1e30F);
    EXPECT_FLOAT_EQ(out.m[5], 5e29F);
    EXPECT_FLOAT_EQ(out.m[10], 2.5e29f);
    EXPECT_EQ(out.m[15], 1.0f);
}

TEST(MatInverse, LastRowThatBeatsTheDiagonalIsThePivot) {
    // Column 0 holds 1, 1e8, 2: row 2 is the pivot although row 1 is the larger. It becomes (1 0.5 0.5), and 1e8 times
    // it swallows the 1 of row 1: (0 -5e7 -5e7). Normalised that is (0 1 1), which leaves nothing of the third row,
    // (0 -0.5 -0.5). So this matrix, whose determinant is 1, counts as singular; with row 1 as the pivot it would not.
    const Mat4 m = {{1, 0, 0, 0, 1e8F, 1, 0, 0, 2, 1, 1, 0, 0, 0, 0, 1}};
    Mat4 out = numbered();
    mat_inverse(&m, &out);
    EXPECT_TRUE(same_bits(out, identity()));
}

TEST(MatTransformPoint, DividesByTheSumOfTheBottomRow) {
    Mat4 m = translation(1, 2, 3);
    m.m[12] = 0.5f;
    m.m[13] = 0.25f;
    m.m[14] = 0.25f;  // the sum is 2, whatever the point
    for (const Vec3 p : {Vec3{0, 0, 0}, Vec3{10, 20, 30}}) {
        Vec3 out;
        mat_transform_point(&m, &p, &out);
        expect_vec(out, (p.x + 1) / 2, (p.y + 2) / 2, (p.z + 3) / 2);
    }
}

TEST(MatTransformPoint, BottomRowOfSumZeroGivesNonFiniteValues) {
    const Mat4 zero{};
    const Vec3 p{1, 1, 1};
    Vec3 out;
    mat_transform_point(&zero, &p, &out);
    EXPECT_TRUE(std::isnan(out.x));
    Mat4 flat = translation(1, 1, 1);
    flat.m[15] = 0.0f;
    mat_transform_point(&flat, &p, &out);
    EXPECT_TRUE(std::isinf(out.x));
}

TEST(MatTransformPoint, FormWithWAddsItToTheDivisor) {
    const Mat4 m = translation(1, 2, 3);
    const Vec3 p{3, 4, 5};
    Vec3 out;
    EXPECT_EQ(mat_transform_point_w(&m, &p, 1.0f, &out), &out);
    expect_vec(out, 2, 3, 4);
}

TEST(VecNormalise, MakesUnitLength) {
    Vec3 v{3, 0, -4};
    EXPECT_EQ(vec_normalise(&v), &v);
    expect_vec(v, 0.6f, 0, -0.8f);
    Vec3 all_axes{2, -3, 6};  // of the length 7
    vec_normalise(&all_axes);
    expect_vec(all_axes, 2.0f / 7, -3.0f / 7, 6.0f / 7);
}

TEST(VecNormalise, LargeComponentsDoNotOverflowTheLength) {
    Vec3 v{3e30F, 0, 4e30F};
    vec_normalise(&v);
    expect_vec(v, 0.6f, 0, 0.8f);
}

TEST(VecNormalise, ZeroVectorComesOutNonFinite) {
    Vec3 v{0, 0, 0};
    vec_normalise(&v);
    EXPECT_FALSE(std::isfinite(v.x));
    EXPECT_FALSE(std::isfinite(v.y));
    EXPECT_FALSE(std::isfinite(v.z));
}

TEST(VecAverage, IsTheMeanOfThePoints) {
    const Vec3 points[] = {{0, 0, 0}, {2, 4, 6}, {4, 2, 0}, {2, 6, 14}};
    expect_vec(vec_average(points, 4), 2, 3, 5);
    expect_vec(vec_average(points, 2), 1, 2, 3);
    EXPECT_TRUE(std::isnan(vec_average(points, 0).x));
}

TEST(VecNear, EachComponentIsStrictlyCloserThanTheTolerance) {
    const Vec3 a{1, 2, 3};
    const Vec3 inside{1.25f, 1.75f, 3.25f};
    for (const Vec3& at_limit : {Vec3{1.5f, 2, 3}, Vec3{1, 2.5f, 3}, Vec3{1, 2, 3.5f}, Vec3{0.5f, 2, 3}}) {
        EXPECT_EQ(vec_near(&a, &at_limit, 0.5f), 0);
        EXPECT_EQ(vec_near(&a, &at_limit, 0.75f), 1);
    }
    EXPECT_EQ(vec_near(&a, &inside, 0.5f), 1);
    EXPECT_EQ(vec_near(&inside, &a, 0.5f), 1);
    EXPECT_EQ(vec_near(&a, &a, 0.0f), 0);
}

TEST(PlaneNormal, IsVCrossUOfUnitLength) {
    const Vec3 a{1, 1, 1};
    const Vec3 b{3, 1, 1};
    const Vec3 c{1, 4, 1};
    const Vec3 n = plane_normal(&a, &b, &c);  // y cross x
    expect_vec(n, 0, 0, -1);
    const Vec3 d{2, 1, 1};
    const Vec3 e{1, 3, 4};
    // u = (1, 0, 0), v = (0, 2, 3) of any length: v cross u is (0, 3, -2).
    const auto root = static_cast<float>(std::sqrt(13.0));
    expect_vec(plane_normal(&a, &d, &e), 0, 3 / root, -2 / root);
    const Vec3 origin{0, 0, 0};
    const Vec3 first{0, 2, 0};
    const Vec3 second{3, 0, -4};
    expect_vec(plane_normal(&origin, &first, &second), 0.8f, 0, 0.6f);  // (3, 0, -4) cross (0, 2, 0) is (8, 0, 6)
}

TEST(TriangleNormal, WithoutATriangleIsZ) { expect_vec(triangle_normal(nullptr), 0, 0, 1, 0.0f); }

TEST(TriangleNormal, InAPlaneOfConstantZ) {
    const Vec3 t[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const Vec3 u[] = {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}};
    expect_vec(triangle_normal(t), 0, 0, -1, 0.0f);
    expect_vec(triangle_normal(u), 0, 0, 1, 0.0f);
}

TEST(TriangleNormal, AxisPlanesAgreeWithTheCrossProduct) {
    // Right-angled triangles with the corner anywhere, in each axis plane and both windings.
    const float plane[3][2] = {{0, 0}, {5, 1}, {2, 7}};
    for (int axis = 0; axis < 3; ++axis) {
        for (int first = 0; first < 3; ++first) {
            for (int winding : {1, 2}) {
                Vec3 t[3];
                for (int i = 0; i < 3; ++i) {
                    const float* uv = plane[(first + i * winding) % 3];
                    t[i] = axis == 0   ? Vec3{3, uv[0], uv[1]}
                           : axis == 1 ? Vec3{uv[0], 3, uv[1]}
                                       : Vec3{uv[0], uv[1], 3};
                }
                const Vec3 b{t[1].x - t[0].x, t[1].y - t[0].y, t[1].z - t[0].z};
                const Vec3 c{t[2].x - t[0].x, t[2].y - t[0].y, t[2].z - t[0].z};
                const float n[3] = {c.y * b.z - c.z * b.y, c.z * b.x - c.x * b.z, c.x * b.y - c.y * b.x};
                const float sign = n[axis] > 0.0f ? 1.0f : -1.0f;
                expect_vec(triangle_normal(t), axis == 0 ? sign : 0, axis == 1 ? sign : 0, axis == 2 ? sign : 0, 0.0f);
            }
        }
    }
}

TEST(TriangleNormal, LargestComponentHasMagnitudeOneAndTheLengthIsMore) {
    const Vec3 t[] = {{0, 0, 0}, {1, 1, 0}, {1, 0, 1}};
    const Vec3 n = triangle_normal(t);
    const float largest = std::fmax(std::fabs(n.x), std::fmax(std::fabs(n.y), std::fabs(n.z)));
    EXPECT_EQ(largest, 1.0f);
    EXPECT_GT(n.x * n.x + n.y * n.y + n.z * n.z, 1.0f);
    // (C - A) cross (B - A) = (1,0,1) x (1,1,0) = (-1, 1, 1).
    expect_vec(n, -1, 1, 1, 0.0f);
}

TEST(TriangleNormal, SkewedTriangleIsScaledToItsLargestComponent) {
    const Vec3 t[] = {{0, 0, 0}, {2, 0, 1}, {0, 3, 1}};
    // (0,3,1) x (2,0,1) = (3*1 - 1*0, 1*2 - 0*1, 0*0 - 3*2) = (3, 2, -6).
    expect_vec(triangle_normal(t), 0.5f, 2.0f / 6.0f, -1.0f);
}

TEST(TriangleNormal, CollinearPointsOutsideTheAxisPlanesAreNonFinite) {
    const Vec3 t[] = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}};
    EXPECT_FALSE(std::isfinite(triangle_normal(t).x));
}

TEST(TriangleNormal, CollinearPointsInAnAxisPlaneTakeTheOtherSide) {
    const Vec3 t[] = {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}};
    expect_vec(triangle_normal(t), 0, 0, -1, 0.0f);
}

TEST(TurnsClockwise, TellsTheTurnAndIsZeroForCollinearPoints) {
    EXPECT_EQ(turns_clockwise(0, 0, 1, 0, 1, -1), 1);
    EXPECT_EQ(turns_clockwise(0, 0, 1, 0, 1, 1), 0);
    EXPECT_EQ(turns_clockwise(0, 0, 1, 1, 2, 2), 0);
    EXPECT_EQ(turns_clockwise(0, 0, 0, 0, 0, 0), 0);
}

TEST(TurnsClockwise, WorksAcrossTheSeamOfTheArcTangent) {
    // Heading (-1, -1), at -135 degrees, then (-1, 0.5), at 153: a clockwise turn that passes the half turn.
    EXPECT_EQ(turns_clockwise(0, 0, -1, -1, -2, -0.5f), 1);
    // Heading (-1, 0.5), then (-1, -1): the same the other way.
    EXPECT_EQ(turns_clockwise(0, 0, -1, 0.5f, -2, -0.5f), 0);
}

TEST(VecScaleToLargest, DividesByTheGreatest) {
    float r = 50.0f;
    float g = 200.0f;
    float b = -100.0f;
    float largest = 0.0f;
    vec_scale_to_largest(&r, &g, &b, &largest);
    EXPECT_EQ(largest, 200.0f);
    EXPECT_EQ(r, 0.25f);
    EXPECT_EQ(g, 1.0f);
    EXPECT_EQ(b, -0.5f);
}

TEST(VecScaleToLargest, OfAllNegativeComponentsTheGreatestIsZero) {
    float r = -3.0f;
    float g = -1.0f;
    float b = -2.0f;
    float largest = 9.0f;
    vec_scale_to_largest(&r, &g, &b, &largest);
    EXPECT_EQ(largest, 0.0f);
    for (float component : {r, g, b}) { EXPECT_EQ(component, -std::numeric_limits<float>::infinity()); }
}

TEST(VecScaleToLargest, EachComponentMayBeTheGreatest) {
    for (int greatest = 0; greatest < 3; ++greatest) {
        float v[3] = {1.0f, 1.0f, 1.0f};
        v[greatest] = 4.0f;
        float largest = 0.0f;
        vec_scale_to_largest(&v[0], &v[1], &v[2], &largest);
        EXPECT_EQ(largest, 4.0f);
        for (int i = 0; i < 3; ++i) { EXPECT_EQ(v[i], i == greatest ? 1.0f : 0.25f); }
    }
}

TEST(VecScaleToLargest, WithoutAPositiveComponentIsNonFinite) {
    float r = -1.0f;
    float g = 0.0f;
    float b = -2.0f;
    float largest = 9.0f;
    vec_scale_to_largest(&r, &g, &b, &largest);
    EXPECT_EQ(largest, 0.0f);
    EXPECT_TRUE(std::isinf(r));
    EXPECT_TRUE(std::isnan(g));
}

}  // namespace
}  // namespace pelt
