// Copies of points and faces, in place or drawn out.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/faces.h"
#include "scene/session.h"

namespace pelt {

// What was made in the model that was asked for.
struct MadeParts {
    std::vector<int32_t> points;
    std::vector<PrimitiveName> primitives;
};

// Copies points, with all faces and lines that have no other corners; the new ones stand in the order of the old. False
// for a model that has no ids left.
bool edit_duplicate_points(Session* session, Model* model, const std::vector<int32_t>& ids, MadeParts* made,
                           EditRefusal* refused);

// Copies faces and lines, with their points, which stand in the order of the ids of the old.
bool edit_duplicate_primitives(Session* session, Model* model, const std::vector<PrimitiveName>& names, MadeParts* made,
                               EditRefusal* refused);

// Moves faces on new points of their own, away from the old ones, and closes what opens along their outer edges with
// quads. Points that nothing uses any more go.
bool edit_extrude(Session* session, Model* model, const std::vector<PrimitiveName>& names, const Vec3& by,
                  MadeParts* made, EditRefusal* refused);

}  // namespace pelt
