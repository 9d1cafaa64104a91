// Where things are: boxes, sizes, centres, and the radius of the scene.
#pragma once

#include "scene/session.h"

namespace pelt {

struct Box {
    Vec3 lower;
    Vec3 upper;
};

// A null matrix is the identity. A null model has a box of zeros.
Box model_bounds(const Model* model, const Mat4* matrix);
Vec3 model_size(const Model* model, const Mat4* matrix);
Vec3 model_centre(const Model* model, const Mat4* matrix);
float model_largest_extent(const Model* model, const Mat4* matrix);
Vec3 scene_centre(Session* session);  // also stored in the session
Vec3 selection_centre(Session* session);
float session_get_radius(const Session* session);

// Raises the radius to twice the model's largest size, its translation added; a non-finite size changes nothing.
void session_grow_radius(Session* session, Model* model);

}  // namespace pelt
