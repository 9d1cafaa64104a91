// Undoes the rounding of a normal's length. What surprises: it is tried out. A unit vector of floats has no length of
// exactly 1, and dividing by it again moves the last places. At some other length the roundings fall as they fell when
// the normal was made, and one such is found after a few tries.
#include "formats/spelled_normal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "formats/model_compare.h"
#include "formats/model_reader.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr int TRIES = 2000;
constexpr double LARGEST_POWER = 0x1p127;

Vec3 scaled(const Vec3& v, double by) { return {to_float(v.x * by), to_float(v.y * by), to_float(v.z * by)}; }

double greatest_component(const Vec3& v) { return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)}); }

bool is_same(const Vec3& a, const Vec3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// From 1 up to 2, each time another one, the same ones for every normal.
double next_scale(uint32_t* state) {
    *state = *state * 1664525U + 1013904223U;
    return 1.0 + static_cast<double>(*state >> 9) / 8388608.0;
}

// Takes the vector when it is read as the normal; true when that is exact.
bool try_out(const Vec3& normal, const Vec3& vector, SpelledNormal* spelled) {
    Vec3 read = vector;
    vec_normalise(&read);
    if (!is_good_normal(read)) { return false; }
    const bool exact = is_same(read, normal);
    if (exact || (!spelled->found && normals_match(read, normal))) { *spelled = SpelledNormal{vector, true}; }
    return exact;
}

}  // namespace

SpelledNormal spell_normal(const Vec3& normal) {
    SpelledNormal spelled{normal, false};
    if (!is_good_normal(normal) || try_out(normal, normal, &spelled)) { return spelled; }
    // A length near the end of the range is divided by more coarsely: a few normals come from there.
    const double far = LARGEST_POWER / greatest_component(normal);
    uint32_t state = 1;
    for (int i = 0; i < TRIES; ++i) {
        const double scale = next_scale(&state) * (i % 2 == 1 && i > TRIES / 2 ? far : 1.0);
        if (try_out(normal, scaled(normal, scale), &spelled)) { break; }
    }
    return spelled;
}

}  // namespace pelt
