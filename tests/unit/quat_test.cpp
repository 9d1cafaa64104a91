// Quaternions: conversions, the blend and the fixed-point forms.
#include "foundation/quat.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace pelt {
namespace {

constexpr double PI = 3.14159265358979323846;

Mat4 identity() { return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}; }

// A unit quaternion of a rotation by degrees about an axis of unit length.
Quat turn(double x, double y, double z, double degrees) {
    const double half = degrees * PI / 360.0;
    const double s = std::sin(half);
    return {static_cast<float>(x * s), static_cast<float>(y * s), static_cast<float>(z * s),
            static_cast<float>(std::cos(half))};
}

// The rotation matrix about a unit axis by Rodrigues' formula.
Mat4 rodrigues(double x, double y, double z, double degrees) {
    const double a = degrees * PI / 180.0;
    const double c = std::cos(a);
    const double s = std::sin(a);
    const double t = 1.0 - c;
    const double m[16] = {t * x * x + c,
                          t * x * y - s * z,
                          t * x * z + s * y,
                          0,
                          t * x * y + s * z,
                          t * y * y + c,
                          t * y * z - s * x,
                          0,
                          t * x * z - s * y,
                          t * y * z + s * x,
                          t * z * z + c,
                          0,
                          0,
                          0,
                          0,
                          1};
    Mat4 out;
    for (int i = 0; i < 16; ++i) { out.m[i] = static_cast<float>(m[i]); }
    return out;
}

void expect_near(const Mat4& actual, const Mat4& expected, float tolerance) {
    for (int i = 0; i < 16; ++i) { EXPECT_NEAR(actual.m[i], expected.m[i], tolerance) << "element " << i; }
}

void expect_quat(const Quat& q, float x, float y, float z, float w, float tolerance = 1e-6F) {
    EXPECT_NEAR(q.x, x, tolerance);
    EXPECT_NEAR(q.y, y, tolerance);
    EXPECT_NEAR(q.z, z, tolerance);
    EXPECT_NEAR(q.w, w, tolerance);
}

Quat from_matrix(const Mat4& m) {
    Quat q;
    quat_from_matrix(&m, &q.x, &q.y, &q.z, &q.w);
    return q;
}

const double AXES[][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.6, 0, 0.8}, {2.0 / 3, -1.0 / 3, 2.0 / 3}};

TEST(QuatFromMatrix, OfTheIdentityIsExact) { expect_quat(from_matrix(identity()), 0, 0, 0, 1, 0.0f); }

TEST(QuatFromMatrix, MatchesTheRotation) {
    for (const auto& axis : AXES) {
        for (double degrees : {1.0, 30.0, 90.0, 120.0, 179.0}) {
            const Quat expected = turn(axis[0], axis[1], axis[2], degrees);
            const Quat q = from_matrix(rodrigues(axis[0], axis[1], axis[2], degrees));
            expect_quat(q, expected.x, expected.y, expected.z, expected.w, 2e-6F);
        }
    }
}

TEST(QuatFromMatrix, ScalarPartIsNeverNegative) {
    for (const auto& axis : AXES) {
        for (double degrees : {200.0, 270.0, 350.0}) {
            const Quat expected = turn(axis[0], axis[1], axis[2], degrees);  // has a negative scalar part
            const Quat q = from_matrix(rodrigues(axis[0], axis[1], axis[2], degrees));
            EXPECT_GE(q.w, 0.0f);
            expect_quat(q, -expected.x, -expected.y, -expected.z, -expected.w, 2e-6F);
        }
    }
}

TEST(QuatFromMatrix, BackToTheMatrixWithinRoundingAlsoForHalfTurns) {
    for (const auto& axis : AXES) {
        for (double degrees : {0.0, 10.0, 90.0, 180.0, 270.0}) {
            const Mat4 m = rodrigues(axis[0], axis[1], axis[2], degrees);
            const Quat q = from_matrix(m);
            Mat4 back;
            quat_to_matrix(&back, q.x, q.y, q.z, q.w);
            expect_near(back, m, 2e-6F);
        }
    }
}

TEST(QuatFromMatrix, HalfTurnHasScalarPartZero) {
    expect_quat(from_matrix({{1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}}), 1, 0, 0, 0, 0.0f);
    expect_quat(from_matrix({{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}}), 0, 1, 0, 0, 0.0f);
    expect_quat(from_matrix({{-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}), 0, 0, 1, 0, 0.0f);
}

TEST(QuatFromMatrix, TieGoesToTheEarlierComponent) {
    // A half turn about (1, 1, 0) / sqrt 2: x and y tie, and x is the one taken from the diagonal.
    const Quat q = from_matrix({{0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}});
    expect_quat(q, static_cast<float>(std::sqrt(0.5)), static_cast<float>(std::sqrt(0.5)), 0, 0);
    EXPECT_GT(q.x, 0.0f);
    const Quat opposed = from_matrix({{0, -1, 0, 0, -1, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}});
    EXPECT_GT(opposed.x, 0.0f);
    EXPECT_LT(opposed.y, 0.0f);
}

// Each element of the diagonal enters into all four sums, so that no component is a number any more.
TEST(QuatFromMatrix, NonFiniteMatrixIsDefined) {
    for (int element : {0, 5, 10, 15}) {
        Mat4 m = identity();
        m.m[element] = std::numeric_limits<float>::quiet_NaN();
        const Quat q = from_matrix(m);
        for (float component : {q.x, q.y, q.z, q.w}) { EXPECT_TRUE(std::isnan(component)) << "element " << element; }
    }
    // The greatest sum is infinite: what belongs to it is divided by itself, and of the others nothing is left.
    Mat4 m = identity();
    m.m[5] = std::numeric_limits<float>::infinity();
    m.m[1] = 3.0f;
    const Quat q = from_matrix(m);
    EXPECT_EQ(q.x, 0.0f);
    EXPECT_TRUE(std::isnan(q.y));
    EXPECT_EQ(q.z, 0.0f);
    EXPECT_EQ(q.w, 0.0f);
    // An element beside the diagonal enters into one component alone.
    m = identity();
    m.m[4] = std::numeric_limits<float>::quiet_NaN();
    const Quat turned = from_matrix(m);
    EXPECT_EQ(turned.x, 0.0f);
    EXPECT_EQ(turned.y, 0.0f);
    EXPECT_TRUE(std::isnan(turned.z));
    EXPECT_EQ(turned.w, 1.0f);
}

TEST(QuatToMatrix, LastElementIsTheSquaredLength) {
    Mat4 m;
    quat_to_matrix(&m, 1.0f, 2.0f, 3.0f, 4.0f);
    const Mat4 expected = {{1 - 4 - 9 + 16, 2 * (2 - 12), 2 * (3 + 8), 0, 2 * (2 + 12), -1 + 4 - 9 + 16, 2 * (6 - 4), 0,
                            2 * (3 - 8), 2 * (6 + 4), -1 - 4 + 9 + 16, 0, 0, 0, 0, 30}};
    expect_near(m, expected, 0.0f);
}

TEST(QuatSlerp, OfEqualQuaternionsGivesThemBackAtAnyTime) {
    for (float t : {0.0f, 0.25f, 0.5f, 1.0f}) {
        Quat a = turn(0, 1, 0, 50.0);
        Quat b = a;
        const Quat before = a;
        Quat out;
        quat_slerp(&a, &b, &out, t);
        expect_quat(out, before.x, before.y, before.z, before.w);
    }
}

TEST(QuatSlerp, OppositeQuaternionFlipsTheFirstInItsStorageAndIsLinear) {
    Quat b = turn(0, 0, 1, 80.0);
    Quat a = {-b.x, -b.y, -b.z, -b.w};
    Quat out;
    quat_slerp(&a, &b, &out, 0.3f);
    expect_quat(a, b.x, b.y, b.z, b.w, 0.0f);
    expect_quat(out, b.x, b.y, b.z, b.w);
}

TEST(QuatSlerp, TurnsEvenlyAlongTheArc) {
    for (double t : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        Quat a = turn(0.6, 0, 0.8, 20.0);
        Quat b = turn(0.6, 0, 0.8, 140.0);
        Quat out;
        quat_slerp(&a, &b, &out, static_cast<float>(t));
        const Quat expected = turn(0.6, 0, 0.8, 20.0 + 120.0 * t);
        expect_quat(out, expected.x, expected.y, expected.z, expected.w, 2e-6F);
    }
}

TEST(QuatSlerp, TakesTheShortWayAndLeavesTheSecondAlone) {
    Quat a = turn(0, 1, 0, 10.0);
    const Quat long_way = turn(0, 1, 0, 350.0);  // dot product below 0
    Quat b = long_way;
    Quat out;
    quat_slerp(&a, &b, &out, 0.5f);
    expect_quat(b, long_way.x, long_way.y, long_way.z, long_way.w, 0.0f);
    EXPECT_LT(a.w, 0.0f);
    // Half-way between 10 and -10 degrees is no rotation. Near neighbours are blended linearly: the two halves of
    // cos 5 degrees add up, and the length stays a little short of 1.
    EXPECT_NEAR(out.y, 0.0f, 1e-6F);
    EXPECT_NEAR(out.w, -std::cos(10.0 * PI / 360.0), 1e-6);
}

TEST(QuatSlerp, NearNeighboursAreBlendedLinearlyAndNotNormalised) {
    Quat a = turn(1, 0, 0, 0.0);
    Quat b = turn(1, 0, 0, 30.0);  // dot product cos 15 degrees, 0.966: within 0.05 of 1
    Quat out;
    quat_slerp(&a, &b, &out, 0.25f);
    expect_quat(out, 0.25f * b.x, 0, 0, 0.75f + 0.25f * b.w);
}

// At 0.05 from 1 the two blends differ by half a per cent.
TEST(QuatSlerp, TheBlendChangesAtADotProductOf95Hundredths) {
    for (double dot : {0.9499, 0.9501}) {
        Quat a{0, 0, 0, 1};
        Quat b{static_cast<float>(std::sqrt(1.0 - dot * dot)), 0, 0, static_cast<float>(dot)};
        const double omega = std::acos(dot);
        const double share = dot > 0.95 ? 0.25 : std::sin(0.25 * omega) / std::sin(omega);
        const double rest = dot > 0.95 ? 0.75 : std::sin(0.75 * omega) / std::sin(omega);
        const Quat second = b;
        Quat out;
        quat_slerp(&a, &b, &out, 0.25f);
        expect_quat(out, static_cast<float>(share * static_cast<double>(second.x)), 0, 0,
                    static_cast<float>(rest + share * dot));
    }
}

TEST(QuatSlerp, EveryComponentOfBothIsBlended) {
    Quat a{0.5f, 0.5f, 0.5f, 0.5f};
    Quat b{-0.1f, 0.7f, -0.1f, 0.7f};  // dot product 0.6
    const double omega = std::acos(0.6);
    const double s0 = std::sin(0.75 * omega) / std::sin(omega);
    const double s1 = std::sin(0.25 * omega) / std::sin(omega);
    Quat out;
    quat_slerp(&a, &b, &out, 0.25f);
    const auto odd = static_cast<float>(0.5 * s0 - 0.1 * s1);
    const auto even = static_cast<float>(0.5 * s0 + 0.7 * s1);
    expect_quat(out, odd, even, odd, even);
}

TEST(QuatSlerp, AllFourComponentsOfTheFirstAreFlippedInItsStorage) {
    Quat a{0.1f, -0.2f, 0.3f, -0.9f};
    Quat b{-0.1f, 0.2f, -0.3f, 0.9f};
    Quat out;
    quat_slerp(&a, &b, &out, 0.5f);
    expect_quat(a, b.x, b.y, b.z, b.w, 0.0f);
}

TEST(QuatSlerp, ADotProductOfZeroFlipsNothing) {
    Quat a{0, 0, 0, 1};
    Quat b{1, 0, 0, 0};
    Quat out;
    quat_slerp(&a, &b, &out, 0.5f);
    EXPECT_EQ(a.w, 1.0f);
    const auto root = static_cast<float>(std::sqrt(0.5));
    expect_quat(out, root, 0, 0, root);
}

// The only way into the blend of opposite quaternions, whose dot product is otherwise never below 0 by then.
TEST(QuatSlerp, ADotProductThatIsNoNumberBlendsWithAQuaternionAcrossTheFirst) {
    Quat a{std::numeric_limits<float>::quiet_NaN(), 0, 2, 3};
    Quat b{1, 1, 1, 1};
    Quat out;
    quat_slerp(&a, &b, &out, 0.1f);
    EXPECT_EQ(b.x, 0.0f);
    EXPECT_TRUE(std::isnan(b.y));
    EXPECT_EQ(b.z, -3.0f);
    EXPECT_EQ(b.w, 2.0f);
    const double s0 = std::sin(0.4 * PI);
    const double s1 = std::sin(0.1 * PI);
    EXPECT_TRUE(std::isnan(out.x));
    EXPECT_TRUE(std::isnan(out.y));
    EXPECT_NEAR(out.z, 2.0 * s0 - 3.0 * s1, 1e-6);
    EXPECT_NEAR(out.w, 3.0 * s0 + 2.0 * s1, 1e-6);
}

TEST(QuatSlerp, MayWriteToEitherOperand) {
    Quat a = turn(1, 0, 0, 10.0);
    Quat b = turn(1, 0, 0, 110.0);
    quat_slerp(&a, &b, &a, 0.5f);
    const Quat expected = turn(1, 0, 0, 60.0);
    expect_quat(a, expected.x, expected.y, expected.z, expected.w, 2e-6F);
}

TEST(QuatAxisDegrees, ThreeHundredAndSixtyUnitsAreATurnOfPi) {
    Quat q;
    quat_from_axis_degrees(&q, 0, 1, 0, 180.0f);  // a real turn of 90 degrees: half of it is 45
    const auto root = static_cast<float>(std::sqrt(0.5));
    expect_quat(q, 0, root, 0, root);
    quat_from_axis_degrees(&q, 0, 0, 1, 360.0f);
    expect_quat(q, 0, 0, 1, 0);
}

TEST(QuatAxisDegrees, BackGivesTheSameAxisAndAngle) {
    Quat q;
    quat_from_axis_degrees(&q, 0.6f, 0.0f, 0.8f, 130.0f);
    float x = 0;
    float y = 0;
    float z = 0;
    float angle = 0;
    quat_to_axis_degrees(&q, &x, &y, &z, &angle);
    EXPECT_NEAR(x, 0.6f, 1e-6F);
    EXPECT_NEAR(y, 0.0f, 1e-6F);
    EXPECT_NEAR(z, 0.8f, 1e-6F);
    EXPECT_NEAR(angle, 130.0f, 1e-4F);
}

TEST(QuatAxisDegrees, NoRotationDividesByZero) {
    const Quat q{0, 0, 0, 1};
    float x = 0;
    float y = 0;
    float z = 0;
    float angle = 7;
    quat_to_axis_degrees(&q, &x, &y, &z, &angle);
    EXPECT_FALSE(std::isfinite(x));
    EXPECT_EQ(angle, 0.0f);
}

TEST(QuatFromEuler, AgreesWithTheProductOfThreeTurns) {
    Quat q;
    const double radians = PI / 180.0;
    quat_from_euler(&q, static_cast<float>(40.0 * radians), 0.0f, 0.0f);
    Quat expected = turn(0, 0, 1, 40.0);  // the first angle turns about the third axis
    expect_quat(q, 0, 0, expected.z, expected.w);
    quat_from_euler(&q, 0.0f, static_cast<float>(40.0 * radians), 0.0f);
    expected = turn(0, 1, 0, 40.0);
    expect_quat(q, 0, expected.y, 0, expected.w);
    quat_from_euler(&q, 0.0f, 0.0f, static_cast<float>(40.0 * radians));
    expected = turn(1, 0, 0, 40.0);
    expect_quat(q, expected.x, 0, 0, expected.w);
}

TEST(QuatFromEuler, AllThreeAnglesByTheFormula) {
    const double x = 0.4;
    const double y = -0.7;
    const double z = 1.1;
    const double sx = std::sin(x / 2), cx = std::cos(x / 2), sy = std::sin(y / 2), cy = std::cos(y / 2);
    const double sz = std::sin(z / 2), cz = std::cos(z / 2);
    Quat q;
    quat_from_euler(&q, static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
    EXPECT_NEAR(q.x, sz * cy * cx - cz * sy * sx, 1e-6);
    EXPECT_NEAR(q.y, cz * sy * cx + sz * cy * sx, 1e-6);
    EXPECT_NEAR(q.z, cz * cy * sx - sz * sy * cx, 1e-6);
    EXPECT_NEAR(q.w, cz * cy * cx + sz * sy * sx, 1e-6);
    EXPECT_NEAR(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w, 1.0, 1e-6);
}

TEST(QuatFixed, MatrixAgreesWithTheFloatFormToTwelveBits) {
    const Quat q = turn(2.0 / 3, -1.0 / 3, 2.0 / 3, 75.0);
    Mat4 fixed;
    quat_to_matrix_fixed(&fixed, q.x, q.y, q.z, q.w);
    expect_near(fixed, rodrigues(2.0 / 3, -1.0 / 3, 2.0 / 3, 75.0), 10.0f / 4096.0f);
    for (float element : fixed.m) { EXPECT_EQ(element * 4096.0f, std::trunc(element * 4096.0f)); }
}

TEST(QuatFixed, MatrixTruncatesTowardsZero) {
    // 0.00036 * 4096 = 1.47 becomes 1, and 1 * 4096 / 4096 = 1; the products of two such are 0.
    Mat4 fixed;
    quat_to_matrix_fixed(&fixed, -0.00036f, 0.00036f, 0.0f, 1.0f);
    EXPECT_EQ(fixed.m[0], 1.0f);
    EXPECT_EQ(fixed.m[1], 0.0f);
    EXPECT_EQ(fixed.m[2], 2.0f / 4096.0f);  // 2 y w
    EXPECT_EQ(fixed.m[6], 2.0f / 4096.0f);  // -2 x w
    EXPECT_EQ(fixed.m[15], 1.0f);
}

TEST(QuatFixed, SlerpOfEqualInputsGivesTheFirst) {
    const Quat a = turn(1, 0, 0, 33.0);
    Quat out;
    quat_slerp_fixed(&a, &a, &out, 0.7f);
    expect_quat(out, a.x, a.y, a.z, a.w, 0.0f);
}

TEST(QuatFixed, SlerpIsAPlainLinearBlend) {
    const Quat a{0, 0, 0, 1};
    const Quat b{1, 0, 0, 0};
    Quat out;
    quat_slerp_fixed(&a, &b, &out, 0.25f);
    expect_quat(out, 0.25f, 0, 0, 0.75f, 0.0f);
}

TEST(QuatFixed, SlerpNegatesACopyOfTheFirst) {
    const Quat a{0, 0, 0, -1};
    const Quat b{0.5f, 0, 0, 0.5f};
    Quat out;
    quat_slerp_fixed(&a, &b, &out, 0.5f);
    EXPECT_EQ(a.w, -1.0f);
    expect_quat(out, 0.25f, 0, 0, 0.75f, 0.0f);
}

TEST(QuatFixed, HugeAndNonFiniteInputsAreDefined) {
    const float values[] = {1e30F, -1e30F, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN(), 524287.0f};
    for (float value : values) {
        const Quat a{value, -value, value, 1.0f};
        const Quat b{-value, 0.0f, value, value};
        Quat out;
        quat_slerp_fixed(&a, &b, &out, value);
        EXPECT_TRUE(std::isfinite(out.x));
        Mat4 m;
        quat_to_matrix_fixed(&m, value, value, -value, value);
        EXPECT_TRUE(std::isfinite(m.m[0]));
        EXPECT_TRUE(std::isfinite(m.m[1]));
    }
}

}  // namespace
}  // namespace pelt
