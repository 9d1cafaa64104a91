// What a frame draws of the scene near a part of the picture, as plain triangles, lines and points: what picking looks
// at. Surfaces count as filled, whatever the mode.
#pragma once

#include <vector>

#include "edit/pick_view.h"
#include "scene/session.h"

namespace pelt {

// A model in one of its places, or the mirrored half of one.
struct SeenSpace {
    Model* model;
    ChildLink* link;  // null for a root
    Mat4 place;       // to the world, with the mirror
    ClipMatrix clip;
    bool mirrored;
};

// A layer in a space, with the texels that may leave out what they lie on: null where all is covered.
struct SeenSurface {
    int32_t space;
    const Layer* layer;
    const unsigned char* texels;  // four bytes each, the last 0 where nothing is
    int32_t width, height;
};

// One drawn triangle of a triangle, quad or polygon, in the order in which it is sent.
struct SeenTriangle {
    int32_t surface;
    const Triangle* triangle;  // either this
    const Polygon* polygon;    // or that
    ClipPlace corners[3];
    Vec3 places[3];
    UvPair uvs[3];
};

struct SeenLine {
    int32_t surface;
    const Line* line;
    int32_t points[2];
    ClipPlace ends[2];
    Vec3 places[2];
};

// A corner of something drawn, or a point that the overlay of points shows.
struct SeenPoint {
    int32_t space;
    const Layer* layer;  // the first that uses it; null for none
    int32_t id;
    bool dot;  // of the overlay
    Vec3 place;
    PicturePlace at;
};

// In the order of the frame, in which of two things at the same depth the later one is seen.
struct SeenScene {
    std::vector<SeenSpace> spaces;
    std::vector<SeenSurface> surfaces;
    std::vector<SeenTriangle> triangles;
    std::vector<SeenLine> lines;
    std::vector<SeenPoint> points;
};

// All triangles that may touch the box, and where they are asked for the lines that may, and the points in it.
SeenScene scene_seen(Session* session, const PickView& view, const PictureBox& box, bool with_points, bool with_lines);

// The surface that is seen at a place of the picture. No triangle where there is none.
struct SeenHit {
    const SeenTriangle* triangle;
    double weights[3];  // of its corners
    double depth;       // -1 to 1
};

// Whether the line of sight through a place meets the triangle where it is seen and covered.
bool seen_triangle_hit(const SeenScene& scene, const SeenTriangle& triangle, double x, double y, SeenHit* hit);
SeenHit seen_surface_at(const SeenScene& scene, double x, double y);

// Whether nothing lies before a place. What touches it does not.
inline constexpr double SEEN_TOUCH = 1e-5;  // of depth
bool seen_place(const SeenScene& scene, const PicturePlace& at);

}  // namespace pelt
