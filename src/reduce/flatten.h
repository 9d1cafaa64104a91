// Reduces a model to the plainest form that a file can hold: one model without child links, triangles alone, an
// explicit texture coordinate for every used point, points numbered from 1 in joint order.
//
// Every operation changes its model in place and keeps no undo. It runs on a model that the session holds nothing of:
// session_forget_model comes first for one that stands in the scene. The operations, with those of bake_mirror.h and
// tessellate.h, are meant to run in this order: model_bake_mirror, model_tessellate, model_flatten,
// model_split_normals, model_renumber_points, then a writer.
//
// Coordinates of new points are cut towards zero to integers; what is out of range saturates and a non-number is 0.
// New point ids end at POINT_ID_LIMIT (flatten_limits.h): an operation that would pass it returns 0 and changes
// nothing. 1 on success; 0 for a null model, in silence; 0 with a load error for a refusal. Primitives that cannot be
// added are dropped, with the reason of the last one left in the load-error record, which may thus hold such a text
// after a success too.
#pragma once

#include <cstdint>

namespace pelt {

struct Model;

// model_triangulate_all, then, where the model has child links, model_merge_children with a counter that starts at 1.
int model_flatten(Model* model);

// model_flatten for a tree as it was read. What hangs below the model becomes flat before it is merged
// (model_bake_mirror, then model_tessellate), so that its curves follow its own normals and not those that a placement
// turned; afterwards the merged texture coordinates are mapped to the corners. A refusal may leave the models below
// baked.
int model_flatten_baked(Model* model);

// Merges the model of each child link into this one, depth first, by model_merge_child with the placement of the
// link; then releases the child models and drops all links. A borrowed model (ChildLink::borrowed) is merged as a copy:
// it stays as it was and with its owner. counter numbers the merged models across the tree and goes up by one for each.
// 0, and nothing changed, when the tree is beyond its bounds (model_tree_fits), when ids run out, when a layer name
// would become too long to be found, or when a link has no model.
int model_merge_children(Model* model, int32_t* counter);

// Copies the points and layers of a child into the parent. A point with the id k gets the id k + the parent's highest
// id + 1, and its place is scaled, turned by the three rotation texts (mat_rotate_text) and then moved; its normal is
// turned only. A layer "body" becomes "<counter>_body", and a layer of the parent that has that name already is added
// to. Joints, lines, mirrors and repeat factors are not carried: texture coordinates come along as uvees, which reach
// the corners with the next layer_map_uvees, and the axes of the image become x and y. Image
// files are looked for in the parent's directory.
// The child is prepared in place (mirrors baked, polygons and quads split, uvs stored), and otherwise stays the
// caller's. Its own child links are left alone. 0 for a null argument, too, and for a model merged into itself.
int model_merge_child(Model* parent, Model* child, float x, float y, float z, float scale_x, float scale_y,
                      float scale_z, const char* rotate_x, const char* rotate_y, const char* rotate_z,
                      int32_t* counter);

// Splits flat quads in two and polygons into the triangles of their strips, and maps the texture coordinates anew.
// The triangles of a polygon take the normals of their own corners' points. A polygon with an odd number of vertices
// leaves its last triangle twice, and one with fewer than three leaves nothing. Curved primitives stay.
int model_triangulate(Model* model);

// model_triangulate, then the uvs of all corners are stored as uvees, in layers with an image and without. A triangle
// stores a fourth corner too, which no point has: "uvee point not found in model" stays in the load-error record.
int model_triangulate_all(Model* model);

// Gives each corner of a triangle or quad whose normal comes from another point a point of its own under a new id: at
// the corner's place, with weight, normal and first joint of the point that gave the normal, and with the default
// colour. Where the joints of the two points differ, only the corner's normal moves to the new point.
int model_split_normals(Model* model);

// Orders the points by joint, in joint order, world points last, and numbers them from 1. A point of a joint that the
// model does not hold is dropped. References of triangles, quads and polygons become the rank of the point in the old
// order, which is right for points that stood in joint order before, as a file that was just read has them: then the
// call closes the gaps of the numbering. A reference to no point becomes 0. Lines and uvees keep their old numbers:
// model_store_uvees, called next, makes those of the new ones. 0 for a model without joints.
int model_renumber_points(Model* model);

// The same for points in any order: every reference follows its point, those of lines and uvees too, and the uvees of
// dropped points go with them. 1, with nothing done, for a model without joints.
int model_number_by_joint(Model* model);

// Stores the uvs of all corners as uvees, in layers that have an image.
int model_store_uvees(Model* model);

// Adds to every uvee a random amount, from 0 to amount_u and amount_v. Each call makes the same sequence anew. The uvs
// of the primitives follow with the next layer_map_uvees.
int model_jitter_uvees(Model* model, float amount_u, float amount_v);

}  // namespace pelt
