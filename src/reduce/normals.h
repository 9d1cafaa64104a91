// Normals made from faces, and flat primitives made curved by them.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/texture_map.h"
#include "foundation/math3d.h"

namespace pelt {

struct Model;

// Gives every point of the model the average of the distinct directions of the faces around it, of all layers: each
// direction counts once, whatever the number of faces that have it, and of more than six the first six met (layer by
// layer, triangles and quads before polygons) count. A point without a face gets (0, 0, 1). Lines do not count, nor
// does a face with a point that does not exist. Overwrites the normals that were there and sets has_normals.
// Time grows with points and corners, not with their product. Always 1, also for null.
// A face without a direction makes the normals of its points non-finite.
int model_rebuild_normals(Model* model);

// The same with a normal of length 1 for every point: a face without a direction does not count, and where directions
// cancel each other the first of them is taken.
int model_rebuild_finite_normals(Model* model);

// The normals that the latter would give to these points, in their order, without giving them. Ids that the model has
// no point for are left out.
struct MadeNormal {
    int32_t id;
    Vec3 normal;
    bool of_faces;  // false for a point without a face that has a direction
};
std::vector<MadeNormal> model_made_normals(const Model* model, const std::vector<int32_t>& ids);

// Makes each flat triangle and quad curved along all edges, with the normals at the ends of each edge as its control
// normals. Polygons and what is curved already stay. 1; 0 for null.
int model_make_curved(Model* model);

// triangle_normal of three points by their ids: not of unit length. (0, 0, 1), with a load error, when one is absent.
Vec3 model_face_normal(const Model* model, int32_t a, int32_t b, int32_t c);

// Planar coordinates of three points in a box (lower x, y, z, upper x, y, z), axis codes as for images: a static array
// of three pairs, valid until the next call. Null for a null argument.
const UvPair* triangle_planar_uvs(const Vec3* points, const float* box, int axis_u, int axis_v);

}  // namespace pelt
