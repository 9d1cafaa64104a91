// Vectors and matrices of 32-bit floats.
//
// A Mat4 is row-major: element 4 * r + c is row r, column c, points are column vectors and the translation stands in
// elements 3, 7 and 11. OpenGL receives the transpose. Angles are degrees. Nothing here fails: a zero-length vector
// or a division by zero gives non-finite values, which travel on.
#pragma once

#include <cmath>
#include <initializer_list>

namespace pelt {

struct Vec3 {
    float x, y, z;
};

struct Mat4 {
    float m[16];
};

inline Vec3 vec_add(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 vec_subtract(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline float vec_dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline bool vec_is_finite(const Vec3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// a times its weight and b times its own; the weights need not add up to 1.
inline Vec3 vec_weighted(const Vec3& a, float weight_a, const Vec3& b, float weight_b) {
    return {a.x * weight_a + b.x * weight_b, a.y * weight_a + b.y * weight_b, a.z * weight_a + b.z * weight_b};
}

// Widens a box, given by its least and greatest place, to hold a place too. A non-number widens nothing.
inline void box_take_in(const Vec3& place, Vec3* low, Vec3* high) {
    const auto widen = [](float value, float* least, float* greatest) {
        if (value < *least) { *least = value; }
        if (value > *greatest) { *greatest = value; }
    };
    widen(place.x, &low->x, &high->x);
    widen(place.y, &low->y, &high->y);
    widen(place.z, &low->z, &high->z);
}

// Construction and copying. The source comes first.
void mat_identity(Mat4* m);
void mat_copy(const Mat4* source, Mat4* destination);
void mat_copy_words(const float* source, float* destination);
// Copies lying in one static matrix each, valid until the next call of the same function.
const Mat4* mat_snapshot(const Mat4* source);
const Mat4* mat_to_gl(const Mat4* source);                  // the transpose
void mat_transpose(const Mat4* source, Mat4* destination);  // two different matrices
void mat_print(const Mat4* m);                              // four lines on standard output, transposed

// Leaves the upper left alone: what m does to directions.
inline void mat_drop_translation(Mat4* m) {
    for (const int i : {3, 7, 11, 12, 13, 14}) { m->m[i] = 0.0f; }
    m->m[15] = 1.0f;
}

// out = b times a: the second argument stands on the left. out may be a or b.
void mat_multiply(const Mat4* a, const Mat4* b, Mat4* out);

// m becomes m times the factor, which thus acts on a point before everything that m holds.
void mat_translate(Mat4* m, float x, float y, float z);
void mat_scale(Mat4* m, float x, float y, float z);
void mat_rotate(Mat4* m, float x, float y, float z);  // Rx times Ry times Rz; an angle of exactly 0 is skipped

// Replaces m by the rotations of three texts in the order written: an angle about the axis of its position, or an
// axis letter and an angle (x30). 0 at the first text with a forbidden character, with m as built so far; else 1.
int mat_rotate_text(Mat4* m, const char* text_0, const char* text_1, const char* text_2);

// The identity for a singular matrix.
void mat_inverse(const Mat4* source, Mat4* destination);

// Divides by the sum of the bottom row, not by a homogeneous coordinate. out and p are two different vectors.
void mat_transform_point(const Mat4* m, const Vec3* p, Vec3* out);
Vec3* mat_transform_point_w(const Mat4* m, const Vec3* p, float w, Vec3* out);  // w is added to the divisor

Vec3* vec_normalise(Vec3* v);
Vec3 vec_average(const Vec3* points, int n);
int vec_near(const Vec3* a, const Vec3* b, float tolerance);  // each component strictly closer than the tolerance
Vec3 plane_normal(const Vec3* a, const Vec3* b, const Vec3* c);

// Face normal of three points A, B, C (null gives 0, 0, 1). Its largest component has magnitude 1: it is not of unit
// length.
Vec3 triangle_normal(const Vec3* triangle);
int turns_clockwise(float ax, float ay, float bx, float by, float cx, float cy);

// Divides all three by the greatest of 0 and the three, which is stored too.
void vec_scale_to_largest(float* r, float* g, float* b, float* largest);

}  // namespace pelt
