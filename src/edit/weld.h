// Points made one.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/refusal.h"
#include "scene/session.h"

namespace pelt {

// The first of the points, which stays as it is, takes the place of the others, which go. A face that is left with too
// few corners goes; a quad may become a triangle, and a polygon that folds becomes the triangles that are left of it.
bool edit_weld(Session* session, Model* model, const std::vector<int32_t>& ids, EditRefusal* refused);

}  // namespace pelt
