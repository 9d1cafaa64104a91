// Turns mirrored layers into real ones.
#pragma once

namespace pelt {

struct Model;

// Gives each layer that has a mirror a second layer, "<name>_mirror", with its mirrored triangles, quads and polygons,
// and clears the mirror. A layer of that name that exists already is added to. A corner uses the first point in list
// order that lies exactly at the mirrored place, or gets a new one: coordinates cut towards zero to integers, weight
// 1.0, no joint and the default colour. Where a corner has its own normal, the mirrored one is stored in its mirrored
// point, which for a point on the mirror plane is the point itself. The new layer takes the mirror image, or else the
// image; the source keeps the image alone. With an image transparency and colour key go along, the key for images added
// later; without one they stay behind.
// A polygon loses its first vertex to a triangle that turns the strip over; one with fewer than three vertices leaves
// nothing, and so does a primitive that refers to a point which the model itself does not hold. Lines are not
// mirrored. A mirror axis other than x, y and z doubles the layer in place.
// Time grows with points and corners, not with their product.
// 1; 0 for null; 0 with a load error, and nothing changed, when a new layer's name would be too long to be found
// again, or when new point ids would pass POINT_ID_LIMIT.
int model_bake_mirror(Model* model);

}  // namespace pelt
