// Quaternions, scalar part last.
//
// What surprises: the blend changes its first operand, the stored key, when the two lie in opposite halves, and the
// matrix of a quaternion carries its squared length in the last element. Both are relied on.
#include "foundation/quat.h"

#include <cmath>
#include <cstdint>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr double HALF_TURN = 3.1415926535;
constexpr float SPREAD = 0.05f;  // nearness of 1 at which two quaternions count as equal or opposite

// 20.12 integers of the fixed-point forms.
constexpr int64_t FIXED_ONE = 4096;
constexpr int64_t FIXED_HALF = 2048;
constexpr int64_t FIXED_SPREAD = 206;
constexpr int64_t DEGREES = 360;

int64_t to_fixed(float value) { return float_to_int(static_cast<double>(value) * 4096.0); }

float from_fixed(int64_t value) { return static_cast<float>(static_cast<double>(value) / 4096.0); }

int64_t multiply_fixed(int64_t a, int64_t b) { return a * b / FIXED_ONE; }

// Sine of an angle of 4096 units a turn, by whole degrees.
int64_t sine_fixed(int64_t angle) {
    const int64_t degrees = angle * DEGREES / FIXED_ONE % DEGREES;
    return float_to_int(std::sin(static_cast<double>(degrees) / 360.0 * 2.0 * HALF_TURN) * 4096.0);
}

}  // namespace

void quat_from_matrix(const Mat4* m, float* x, float* y, float* z, float* w) {
    const float* e = m->m;
    const float p = e[0] - e[5] - e[10] + e[15];
    const float q = -e[0] + e[5] - e[10] + e[15];
    const float r = -e[0] - e[5] + e[10] + e[15];
    const float s = e[0] + e[5] + e[10] + e[15];
    const float big = std::fmax(std::fmax(p, q), std::fmax(r, s));
    const auto k = static_cast<float>(2.0 * std::sqrt(static_cast<double>(big)));
    Quat result;
    if (p == big) {
        result = {big / k, (e[4] + e[1]) / k, (e[2] + e[8]) / k, (e[9] - e[6]) / k};
    } else if (q == big) {
        result = {(e[4] + e[1]) / k, big / k, (e[9] + e[6]) / k, (e[2] - e[8]) / k};
    } else if (r == big) {
        result = {(e[2] + e[8]) / k, (e[9] + e[6]) / k, big / k, (e[4] - e[1]) / k};
    } else {
        result = {(e[9] - e[6]) / k, (e[2] - e[8]) / k, (e[4] - e[1]) / k, big / k};
    }
    const float sign = result.w < 0.0f ? -1.0f : 1.0f;
    *x = sign * result.x;
    *y = sign * result.y;
    *z = sign * result.z;
    *w = sign * result.w;
}

void quat_to_matrix(Mat4* out, float x, float y, float z, float w) {
    const float xx = x * x;
    const float yy = y * y;
    const float zz = z * z;
    const float ww = w * w;
    const float xy = x * y;
    const float xz = x * z;
    const float yz = y * z;
    const float xw = x * w;
    const float yw = y * w;
    const float zw = z * w;
    *out = {{xx - yy - zz + ww, 2.0f * (xy - zw), 2.0f * (xz + yw), 0.0f, 2.0f * (xy + zw), -xx + yy - zz + ww,
             2.0f * (yz - xw), 0.0f, 2.0f * (xz - yw), 2.0f * (yz + xw), -xx - yy + zz + ww, 0.0f, 0.0f, 0.0f, 0.0f,
             xx + yy + zz + ww}};
}

void quat_slerp(Quat* q0, Quat* q1, Quat* out, float t) {
    float dot = q0->x * q1->x + q0->y * q1->y + q0->z * q1->z + q0->w * q1->w;
    if (dot < 0.0f) {  // in the storage of the caller: the rotation stays the same, the sign stays flipped
        *q0 = {-q0->x, -q0->y, -q0->z, -q0->w};
        dot = -dot;
    }
    float s0;
    float s1;
    if (1.0f + dot > SPREAD) {
        if (1.0f - dot < SPREAD) {
            s0 = 1.0f - t;
            s1 = t;
        } else {
            const double omega = std::acos(static_cast<double>(dot));
            const double n = std::sin(omega);
            s0 = static_cast<float>(std::sin(static_cast<double>(1.0f - t) * omega) / n);
            s1 = static_cast<float>(std::sin(static_cast<double>(t) * omega) / n);
        }
    } else {
        *q1 = {-q0->y, q0->x, -q0->w, q0->z};
        s0 = static_cast<float>(std::sin(static_cast<double>(0.5f - t) * HALF_TURN));
        s1 = static_cast<float>(std::sin(static_cast<double>(t) * HALF_TURN));
    }
    *out = {s0 * q0->x + s1 * q1->x, s0 * q0->y + s1 * q1->y, s0 * q0->z + s1 * q1->z, s0 * q0->w + s1 * q1->w};
}

void quat_from_axis_degrees(Quat* out, float ax, float ay, float az, float angle) {
    const float half = angle / 360.0f * 3.1415927f / 2.0f;  // 360 units are half a turn: intended
    const auto sine = static_cast<float>(std::sin(static_cast<double>(half)));
    const auto cosine = static_cast<float>(std::cos(static_cast<double>(half)));
    *out = {sine * ax, sine * ay, sine * az, cosine};
}

void quat_to_axis_degrees(const Quat* q, float* ax, float* ay, float* az, float* angle) {
    const double half = std::acos(static_cast<double>(q->w));
    const auto sine = static_cast<float>(std::sin(half));
    const Quat from = *q;
    *ax = from.x / sine;
    *ay = from.y / sine;
    *az = from.z / sine;
    *angle = static_cast<float>(2.0 * half / HALF_TURN * 360.0);
}

void quat_from_euler(Quat* out, float x, float y, float z) {
    const auto sx = static_cast<float>(std::sin(static_cast<double>(x) / 2.0));
    const auto cx = static_cast<float>(std::cos(static_cast<double>(x) / 2.0));
    const auto sy = static_cast<float>(std::sin(static_cast<double>(y) / 2.0));
    const auto cy = static_cast<float>(std::cos(static_cast<double>(y) / 2.0));
    const auto sz = static_cast<float>(std::sin(static_cast<double>(z) / 2.0));
    const auto cz = static_cast<float>(std::cos(static_cast<double>(z) / 2.0));
    *out = {sz * cy * cx - cz * sy * sx, cz * sy * cx + sz * cy * sx, cz * cy * sx - sz * sy * cx,
            cz * cy * cx + sz * sy * sx};
}

void quat_to_matrix_fixed(Mat4* out, float x, float y, float z, float w) {
    const int64_t fx = to_fixed(x);
    const int64_t fy = to_fixed(y);
    const int64_t fz = to_fixed(z);
    const int64_t fw = to_fixed(w);
    const int64_t xx = multiply_fixed(fx, fx);
    const int64_t yy = multiply_fixed(fy, fy);
    const int64_t zz = multiply_fixed(fz, fz);
    const int64_t ww = multiply_fixed(fw, fw);
    const int64_t xy = multiply_fixed(fx, fy);
    const int64_t xz = multiply_fixed(fx, fz);
    const int64_t yz = multiply_fixed(fy, fz);
    const int64_t xw = multiply_fixed(fx, fw);
    const int64_t yw = multiply_fixed(fy, fw);
    const int64_t zw = multiply_fixed(fz, fw);
    const int64_t elements[16] = {xx - yy - zz + ww,
                                  2 * (xy - zw),
                                  2 * (xz + yw),
                                  0,
                                  2 * (xy + zw),
                                  -xx + yy - zz + ww,
                                  2 * (yz - xw),
                                  0,
                                  2 * (xz - yw),
                                  2 * (yz + xw),
                                  -xx - yy + zz + ww,
                                  0,
                                  0,
                                  0,
                                  0,
                                  xx + yy + zz + ww};
    for (int i = 0; i < 16; ++i) { out->m[i] = from_fixed(elements[i]); }
}

void quat_slerp_fixed(const Quat* q0, const Quat* q1, Quat* out, float t) {
    int64_t from[4] = {to_fixed(q0->x), to_fixed(q0->y), to_fixed(q0->z), to_fixed(q0->w)};
    int64_t to[4] = {to_fixed(q1->x), to_fixed(q1->y), to_fixed(q1->z), to_fixed(q1->w)};
    if (from[0] == to[0] && from[1] == to[1] && from[2] == to[2] && from[3] == to[3]) {
        *out = *q0;
        return;
    }
    int64_t dot = 0;
    for (int i = 0; i < 4; ++i) { dot += multiply_fixed(from[i], to[i]); }
    if (dot < 0) {
        dot = -dot;
        for (int64_t& component : from) { component = -component; }
    }
    const int64_t time = to_fixed(t);
    int64_t factor_0 = FIXED_ONE - time;
    int64_t factor_1 = time;
    if (dot + FIXED_ONE < FIXED_SPREAD) {  // never so, since the dot product is not negative any more
        const int64_t across[4] = {-from[1], from[0], -from[3], from[2]};
        for (int i = 0; i < 4; ++i) { to[i] = across[i]; }
        factor_0 = sine_fixed(FIXED_HALF - time);
        factor_1 = sine_fixed(time);
    }
    float blended[4];
    for (int i = 0; i < 4; ++i) {
        blended[i] = from_fixed(multiply_fixed(factor_0, from[i]) + multiply_fixed(factor_1, to[i]));
    }
    *out = {blended[0], blended[1], blended[2], blended[3]};
}

}  // namespace pelt
