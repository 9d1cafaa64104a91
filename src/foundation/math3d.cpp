// Vectors and matrices of 32-bit floats.
//
// What surprises: a handful of conventions that look like mistakes and are settled. The second operand of a
// multiplication stands on the left, a point is divided by the sum of the bottom row, a face normal is scaled to its
// largest component, and two pi is 6.2831854, a little more than it should be. Everything above relies on them.
#include "foundation/math3d.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr Mat4 mat_identity_constant = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
constexpr double TURN_RADIANS = 6.2831854;  // as it stands: the sines of whole turns are not quite 0
constexpr float PI = 3.1415927f;

Mat4 mat_scratch;  // the factor of a translation, scale or rotation
Mat4 mat_gl_result;
Mat4 mat_snapshot_result;

// Four products of a column of a (stride four) and a row of b.
float dot_column_row(const float* column, const float* row) {
    return column[0] * row[0] + column[4] * row[1] + column[8] * row[2] + column[12] * row[3];
}

struct SineCosine {
    float sine;
    float cosine;
};

SineCosine sine_cosine(float degrees) {
    const double radians = static_cast<double>(degrees) / 360.0 * TURN_RADIANS;
    double cosine = std::cos(radians);
    double sine = std::sin(radians);
    // A guard against a library whose values leave -1 to 1.
    if (std::fabs(cosine) > 1.0) { cosine = -std::cos(-radians); }
    if (std::fabs(sine) > 1.0) { sine = -std::sin(-radians); }
    return {static_cast<float>(sine), static_cast<float>(cosine)};
}

// Whether the characters of a rotation text are allowed: '-', a digit or an axis letter in front, '-', '.' or digits
// behind.
bool is_rotation_text(const char* text) {
    if (text == nullptr) { return false; }
    for (const char* c = text; *c != '\0'; ++c) {
        const bool is_axis = *c >= 'x' && *c <= 'z';
        const bool allowed = *c == '-' || (*c >= '0' && *c <= '9') || (c == text ? is_axis : *c == '.');
        if (!allowed) { return false; }
    }
    return true;
}

float turned_by(float ax, float ay, float bx, float by) {
    return static_cast<float>(std::atan2(static_cast<double>(by - ay), static_cast<double>(bx - ax)));
}

}  // namespace

void mat_identity(Mat4* m) { *m = mat_identity_constant; }

void mat_copy(const Mat4* source, Mat4* destination) { *destination = *source; }

void mat_copy_words(const float* source, float* destination) {
    for (int i = 0; i < 16; ++i) { destination[i] = source[i]; }
}

const Mat4* mat_snapshot(const Mat4* source) {
    mat_snapshot_result = *source;
    return &mat_snapshot_result;
}

const Mat4* mat_to_gl(const Mat4* source) {
    if (source == &mat_gl_result) {
        const Mat4 copy = *source;
        mat_transpose(&copy, &mat_gl_result);
    } else {
        mat_transpose(source, &mat_gl_result);
    }
    return &mat_gl_result;
}

void mat_transpose(const Mat4* source, Mat4* destination) {
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) { destination->m[4 * column + row] = source->m[4 * row + column]; }
    }
}

void mat_print(const Mat4* m) {
    for (int i = 0; i < 4; ++i) {
        std::printf("%5.3f, %5.3f, %5.3f, %5.3f%s\n", static_cast<double>(m->m[i]), static_cast<double>(m->m[4 + i]),
                    static_cast<double>(m->m[8 + i]), static_cast<double>(m->m[12 + i]), i < 3 ? "," : "");
    }
}

void mat_multiply(const Mat4* a, const Mat4* b, Mat4* out) {
    Mat4 result;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) { result.m[4 * i + j] = dot_column_row(a->m + j, b->m + 4 * i); }
    }
    *out = result;
}

void mat_translate(Mat4* m, float x, float y, float z) {
    mat_identity(&mat_scratch);
    mat_scratch.m[3] = x;
    mat_scratch.m[7] = y;
    mat_scratch.m[11] = z;
    mat_multiply(&mat_scratch, m, m);
}

void mat_scale(Mat4* m, float x, float y, float z) {
    mat_identity(&mat_scratch);
    mat_scratch.m[0] = x;
    mat_scratch.m[5] = y;
    mat_scratch.m[10] = z;
    mat_multiply(&mat_scratch, m, m);
}

void mat_rotate(Mat4* m, float x, float y, float z) {
    // Where each axis puts cos, -sin, sin, cos.
    static constexpr int PLACES[3][4] = {{5, 6, 9, 10}, {0, 8, 2, 10}, {0, 1, 4, 5}};
    const float angles[3] = {x, y, z};
    for (int axis = 0; axis < 3; ++axis) {
        if (angles[axis] == 0.0f) { continue; }
        const SineCosine turn = sine_cosine(angles[axis]);
        mat_identity(&mat_scratch);
        mat_scratch.m[PLACES[axis][0]] = turn.cosine;
        mat_scratch.m[PLACES[axis][1]] = -turn.sine;
        mat_scratch.m[PLACES[axis][2]] = turn.sine;
        mat_scratch.m[PLACES[axis][3]] = turn.cosine;
        mat_multiply(&mat_scratch, m, m);
    }
}

int mat_rotate_text(Mat4* m, const char* text_0, const char* text_1, const char* text_2) {
    const char* texts[3] = {text_0, text_1, text_2};
    mat_identity(m);
    for (int position = 0; position < 3; ++position) {
        const char* text = texts[position];
        if (!is_rotation_text(text)) { return 0; }
        const bool names_axis = *text >= 'x' && *text <= 'z';
        const int axis = names_axis ? *text - 'x' : position;
        const float angle = to_float(text_to_double(names_axis ? text + 1 : text));
        mat_rotate(m, axis == 0 ? angle : 0.0f, axis == 1 ? angle : 0.0f, axis == 2 ? angle : 0.0f);
    }
    return 1;
}

void mat_inverse(const Mat4* source, Mat4* destination) {
    float a[4][4];
    float b[4][4];
    std::memcpy(a, source->m, sizeof a);
    std::memcpy(b, mat_identity_constant.m, sizeof b);
    for (int i = 0; i < 4; ++i) {
        int pivot = i;
        for (int j = i + 1; j < 4; ++j) {
            // Against the diagonal and not the best row so far: the last row that beats it wins. Intended.
            if (std::fabs(a[i][i]) < std::fabs(a[j][i])) { pivot = j; }
        }
        if (pivot != i) {
            std::swap(a[i], a[pivot]);
            std::swap(b[i], b[pivot]);
        }
        if (a[i][i] == 0.0f) {
            mat_identity(destination);
            return;
        }
        const float divisor = a[i][i];
        for (int k = 0; k < 4; ++k) {
            a[i][k] /= divisor;
            b[i][k] /= divisor;
        }
        for (int j = 0; j < 4; ++j) {
            const float factor = a[j][i];
            for (int k = 0; k < 4 && j != i; ++k) {
                a[j][k] -= factor * a[i][k];
                b[j][k] -= factor * b[i][k];
            }
        }
    }
    std::memcpy(destination->m, b, sizeof b);
}

void mat_transform_point(const Mat4* m, const Vec3* p, Vec3* out) { mat_transform_point_w(m, p, 0.0f, out); }

Vec3* mat_transform_point_w(const Mat4* m, const Vec3* p, float w, Vec3* out) {
    const float* e = m->m;
    // The point does not enter into the divisor: intended.
    const float divisor = e[12] + e[13] + e[14] + e[15] + w;
    const Vec3 from = *p;
    out->x = from.x * e[0] + from.y * e[1] + from.z * e[2] + e[3];
    out->y = from.x * e[4] + from.y * e[5] + from.z * e[6] + e[7];
    out->z = from.x * e[8] + from.y * e[9] + from.z * e[10] + e[11];
    if (divisor != 1.0f) {  // hardly ever, and three divisions are a third of this function
        out->x /= divisor;
        out->y /= divisor;
        out->z /= divisor;
    }
    return out;
}

Vec3* vec_normalise(Vec3* v) {
    const double x = v->x;
    const double y = v->y;
    const double z = v->z;
    const auto factor = static_cast<float>(1.0 / std::sqrt(x * x + y * y + z * z));
    v->x *= factor;
    v->y *= factor;
    v->z *= factor;
    return v;
}

Vec3 vec_average(const Vec3* points, int n) {
    Vec3 sum{0.0f, 0.0f, 0.0f};
    for (int i = 0; i < n && points != nullptr; ++i) {
        sum.x += points[i].x;
        sum.y += points[i].y;
        sum.z += points[i].z;
    }
    const auto factor = static_cast<float>(1.0 / n);
    return {sum.x * factor, sum.y * factor, sum.z * factor};
}

int vec_near(const Vec3* a, const Vec3* b, float tolerance) {
    return std::fabs(b->x - a->x) < tolerance && std::fabs(b->y - a->y) < tolerance &&
                   std::fabs(b->z - a->z) < tolerance
               ? 1
               : 0;
}

Vec3 plane_normal(const Vec3* a, const Vec3* b, const Vec3* c) {
    Vec3 u{b->x - a->x, b->y - a->y, b->z - a->z};
    Vec3 v{c->x - a->x, c->y - a->y, c->z - a->z};
    vec_normalise(&u);
    vec_normalise(&v);
    Vec3 normal{v.y * u.z - v.z * u.y, v.z * u.x - v.x * u.z, v.x * u.y - v.y * u.x};
    vec_normalise(&normal);
    return normal;
}

Vec3 triangle_normal(const Vec3* triangle) {
    if (triangle == nullptr) { return {0.0f, 0.0f, 1.0f}; }
    const Vec3& corner_a = triangle[0];
    const Vec3& corner_b = triangle[1];
    const Vec3& corner_c = triangle[2];
    const Vec3 a{corner_a.x - corner_c.x, corner_a.y - corner_c.y, corner_a.z - corner_c.z};
    const Vec3 b{corner_b.x - corner_a.x, corner_b.y - corner_a.y, corner_b.z - corner_a.z};
    if (a.x == 0.0f && b.x == 0.0f) {
        return {turns_clockwise(corner_a.y, corner_a.z, corner_b.y, corner_b.z, corner_c.y, corner_c.z) ? 1.0f : -1.0f,
                0.0f, 0.0f};
    }
    if (a.y == 0.0f && b.y == 0.0f) {  // the sense of this axis is opposite, as its pair of coordinates is
        return {0.0f,
                turns_clockwise(corner_a.x, corner_a.z, corner_b.x, corner_b.z, corner_c.x, corner_c.z) ? -1.0f : 1.0f,
                0.0f};
    }
    if (a.z == 0.0f && b.z == 0.0f) {
        return {0.0f, 0.0f,
                turns_clockwise(corner_a.x, corner_a.y, corner_b.x, corner_b.y, corner_c.x, corner_c.y) ? 1.0f : -1.0f};
    }
    const Vec3 n{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    const float largest = std::fmax(std::fabs(n.x), std::fmax(std::fabs(n.y), std::fabs(n.z)));
    return {n.x / largest * -1.0f, n.y / largest * -1.0f, n.z / largest * -1.0f};
}

int turns_clockwise(float ax, float ay, float bx, float by, float cx, float cy) {
    const float first = turned_by(ax, ay, bx, by);
    const float second = turned_by(bx, by, cx, cy);
    if (second < first && first - PI < second) { return 1; }
    return first < 0.0f && first + PI < second ? 1 : 0;
}

void vec_scale_to_largest(float* r, float* g, float* b, float* largest) {
    *largest = std::fmax(std::fmax(0.0f, *r), std::fmax(*g, *b));
    *r /= *largest;
    *g /= *largest;
    *b /= *largest;
}

}  // namespace pelt
