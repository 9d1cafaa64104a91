// Quaternions, scalar part last. Unit length is assumed and never enforced.
#pragma once

#include "foundation/math3d.h"

namespace pelt {

struct Quat {
    float x, y, z, w;
};

// The rotation in the upper left of m, with w at least 0.
void quat_from_matrix(const Mat4* m, float* x, float* y, float* z, float* w);

// All sixteen elements; element 15 is the squared length of the quaternion.
void quat_to_matrix(Mat4* out, float x, float y, float z, float w);

// Spherical blend, linear for near neighbours. Flips the sign of q0 in its own storage when the dot product is
// negative: callers pass stored keys.
void quat_slerp(Quat* q0, Quat* q1, Quat* out, float t);

void quat_from_axis_degrees(Quat* out, float ax, float ay, float az, float angle);  // 360 units are a turn of pi
void quat_to_axis_degrees(const Quat* q, float* ax, float* ay, float* az, float* angle);
void quat_from_euler(Quat* out, float x, float y, float z);  // radians

// The same conversions in 20.12 integer arithmetic.
void quat_to_matrix_fixed(Mat4* out, float x, float y, float z, float w);
void quat_slerp_fixed(const Quat* q0, const Quat* q1, Quat* out, float t);

}  // namespace pelt
