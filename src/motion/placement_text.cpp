// A turn as three texts. The matrix is the product of the turns about x, y and z, in this order; where that about y is
// a right angle the other two are one, which is then told as that about x.
#include "motion/placement_text.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr double DEGREES = 180.0 / std::numbers::pi;
constexpr double UPRIGHT = 1e-6;  // cosine below which a right angle is one
constexpr int DECIMALS = 4;
constexpr size_t TEXT_SIZE = 64;

std::string angle_text(double degrees) {
    char text[TEXT_SIZE];
    float_to_text(static_cast<float>(degrees), DECIMALS, text, sizeof text);
    std::string result = text;
    while (result.find('.') != std::string::npos && (result.back() == '0' || result.back() == '.')) {
        const bool ends = result.back() == '.';
        result.pop_back();
        if (ends) { break; }
    }
    return result == "-0" ? "0" : result;
}

}  // namespace

std::array<std::string, 3> rotation_texts(const Mat4& matrix) {
    const auto at = [&](int row, int column) { return static_cast<double>(matrix.m[4 * row + column]); };
    const double cosine = std::hypot(at(0, 0), at(0, 1));
    const double y = std::atan2(at(0, 2), cosine);
    const bool upright = cosine < UPRIGHT;
    const double x = upright ? std::atan2(at(2, 1), at(1, 1)) : std::atan2(-at(1, 2), at(2, 2));
    const double z = upright ? 0.0 : std::atan2(-at(0, 1), at(0, 0));
    return {angle_text(x * DEGREES), angle_text(y * DEGREES), angle_text(z * DEGREES)};
}

}  // namespace pelt
