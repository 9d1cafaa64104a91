// What is seen at a pixel, and which points lie in a rectangle of pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/pick_view.h"
#include "scene/session.h"

namespace pelt {

enum class PickWhat { MODEL, LAYER, FACE, POINT };
enum class PickKind { NONE, TRIANGLE, QUAD, POLYGON, LINE, POINT };

struct PickHit {
    PickKind kind;
    Model* model;
    ChildLink* link;     // at which the model hangs; null for a root
    const Layer* layer;  // null for a point that no layer uses
    int32_t primitive;   // its id; 0 for a point
    int32_t point;       // id of the corner that is nearest in the picture
    Vec3 place;          // in the world
    float depth;         // see view_depth
    bool mirrored;
};

// What is seen at a pixel counted from the upper left of the window. FACE asks for a surface, POINT for a corner of
// something drawn or a point of the overlay, LAYER for a surface or a line, MODEL for those and points of the overlay.
// Lines and points count from so many pixels away, and come before the surface that they lie on; the nearest one does,
// where nothing lies before it. Kind NONE where there is nothing.
PickHit scene_pick(Session* session, const PickView& view, double x, double y, PickWhat what, double within);

struct PointsInside {
    Model* model;
    ChildLink* link;
    std::vector<int32_t> points;  // ids in their order, each once
};

// The corners of what is drawn, and the points of the overlay, in the pixels from one corner of a rectangle to the
// other, those two included: of each place of a model in which there are any. With through also those that something
// hides.
std::vector<PointsInside> scene_points_inside(Session* session, const PickView& view, double x0, double y0, double x1,
                                              double y1, bool through);

}  // namespace pelt
