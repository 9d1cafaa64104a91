// Points moved, scaled and turned.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/refusal.h"
#include "scene/session.h"

namespace pelt {

// What happens to each place: turned and scaled, then shifted.
struct PlaceChange {
    double linear[3][3];  // rows
    double shift[3];
};

PlaceChange moved_by(const Vec3& by);
PlaceChange scaled_about(const Vec3& centre, const Vec3& factors);
// An axis without a length has no turn: false. A turn runs as those of "select rotate" do.
bool turned_about(const Vec3& centre, const Vec3& axis, float degrees, PlaceChange* out);

// Where the change is told. At rest the two are one.
struct DragSpace {
    const ChildLink* link;  // of the model, where it was named by one; only in_scene looks at it
    bool in_scene;          // in the space of the whole scene, not in that of the model as it is posed
    const Layer* mirror;    // as seen in the mirrored half of this layer; null for the half that the file has
};

// Changes the places of the points, as they are drawn, as told, and stores where that puts them at rest, in whole
// numbers. Inside a step it starts from where they stood when the step began. False, with nothing changed, for a point
// whose pose cannot be undone and for a place that no number can say.
bool edit_point_places(Session* session, Model* model, const std::vector<int32_t>& ids, const PlaceChange& change,
                       const DragSpace& space, EditRefusal* refused);

// A point that a command has just made: where it is now is what a drag in the same step counts from.
void remember_new_point(const Model* model, int32_t id, const Vec3& place);

}  // namespace pelt
