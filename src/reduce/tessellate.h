// Turns curved primitives into flat ones: the surface that is drawn at level of detail 1, as triangles and strips.
#pragma once

#include <cstdint>

namespace pelt {

struct Layer;
struct Model;
struct Triangle;

inline constexpr int BAKE_LEVEL = 1;  // the level of detail of what is made, whatever lod a caller asks for

// Replaces every curved triangle and quad by flat primitives and maps the texture coordinates anew. lod has no effect,
// whatever it is: every curved edge is cut in two. A curved primitive that refers to a point which the model itself
// does not hold leaves nothing. 1; 0 for null; 0 with a load error, and nothing changed, when new point ids would pass
// POINT_ID_LIMIT.
int model_tessellate(Model* model, int lod);

// The work of model_tessellate for one primitive of a layer of the model: adds the points that are no corners, under
// ids from next_id on, and the polygons and triangles that take the place of the primitive, which stays. New points
// have the place on the surface cut towards zero to integers, normal, blended weight, and a joint of the corners at
// the ends of their edge; colours where the model has them and a uvee where the layer has any. Neighbouring primitives
// share no new points. Returns the number of new points: 0 for a null argument, for a flat or unresolved primitive,
// and, with a load error, when ids run out.
int triangle_bake(Model* model, Layer* layer, Triangle* triangle, int lod, int32_t next_id);

}  // namespace pelt
