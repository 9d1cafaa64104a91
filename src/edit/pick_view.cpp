// The arithmetic of picking. In double precision, so that what decides is the scene and not the rounding.
#include "edit/pick_view.h"

#include <cmath>

namespace pelt {

namespace {

ClipMatrix product(const ClipMatrix& left, const Mat4& right) {
    ClipMatrix out{};
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            for (int k = 0; k < 4; ++k) {
                out.m[4 * row + column] += left.m[4 * row + k] * static_cast<double>(right.m[4 * k + column]);
            }
        }
    }
    return out;
}

}  // namespace

ClipMatrix clip_matrix(const PickView& view, const Mat4& place) {
    ClipMatrix matrix{};
    for (int i = 0; i < 16; ++i) { matrix.m[i] = view.projection.m[i]; }
    return product(product(matrix, view.modelview), place);
}

PicturePlace pixel_place(const PickView& view, double x, double y) {
    return {(x + 0.5) / view.width * 2.0 - 1.0, 1.0 - (y - view.top + 0.5) / view.height * 2.0, 0.0};
}

double pixel_distance(const PickView& view, const PicturePlace& a, const PicturePlace& b) {
    return std::hypot((a.x - b.x) * view.width / 2.0, (a.y - b.y) * view.height / 2.0);
}

Vec3 world_place(const Mat4& place, const Vec3& p) {
    const float* m = place.m;
    return {m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3], m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
            m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]};
}

float view_depth(const PickView& view, const Vec3& world) {
    // What is nearer has the greater z in front of the view.
    return -world_place(view.modelview, world).z;
}

}  // namespace pelt
