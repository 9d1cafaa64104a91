// How a scene is looked at, in plain numbers, and where its places come to lie in the picture. No OpenGL, and nothing
// here assumes that the view is a parallel one.
#pragma once

#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

// What turns places of the world into pixels. Matrices are row-major.
struct PickView {
    Mat4 modelview;
    Mat4 projection;
    int32_t width, height;  // of the viewport in pixels, at least 1
    int32_t top;            // pixels of the window above the viewport; negative when it is higher than the window
};

// A place on its way to the picture, before the division by w. It is seen where w is above 0 and none of the others
// is greater than w.
struct ClipPlace {
    double x, y, z, w;
};

struct ClipMatrix {
    double m[16];  // row-major
};

// From places in a space, given by the matrix that leads from it to the world, to the picture.
ClipMatrix clip_matrix(const PickView& view, const Mat4& place);

inline ClipPlace clip_place(const ClipMatrix& c, const Vec3& p) {
    const double x = p.x, y = p.y, z = p.z;
    const double* m = c.m;
    return {m[0] * x + m[1] * y + m[2] * z + m[3], m[4] * x + m[5] * y + m[6] * z + m[7],
            m[8] * x + m[9] * y + m[10] * z + m[11], m[12] * x + m[13] * y + m[14] * z + m[15]};
}

// A place in the picture: -1 to 1 from left to right, from bottom to top, and from near to far.
struct PicturePlace {
    double x, y, z;
};

inline PicturePlace picture_place(const ClipPlace& p) { return {p.x / p.w, p.y / p.w, p.z / p.w}; }

// A rectangle of the picture.
struct PictureBox {
    double left, bottom, right, top;
};

// The middle of a pixel, counted from the upper left of the window; and how many pixels there are between two places.
PicturePlace pixel_place(const PickView& view, double x, double y);
double pixel_distance(const PickView& view, const PicturePlace& a, const PicturePlace& b);

Vec3 world_place(const Mat4& place, const Vec3& p);
float view_depth(const PickView& view,
                 const Vec3& world);  // along the view, from the plane of the focus; more is farther

}  // namespace pelt
