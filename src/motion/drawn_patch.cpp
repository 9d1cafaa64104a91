// From a curved primitive to the corners of its patch, and the moving of a whole patch by joints.
#include "motion/drawn_patch.h"

#include <algorithm>

#include "motion/transform_state.h"
#include "scene/vertex.h"

namespace pelt {

namespace {

// False, as all gathering below, when a reference leads nowhere.
bool copy_vector(const Vec3* from, Vec3* to) {
    if (!from) { return false; }
    *to = *from;
    return true;
}

// Posed positions, colours and texture coordinates, and the posed normals that normal_slots name.
bool gather_corners(Session* session, Model* model, Triangle* triangle, const TriangleCache* cache,
                    const int32_t* normal_slots, PatchCorners* out) {
    out->count = triangle_corners(triangle);
    for (int i = 0; i < out->count; ++i) {
        const int32_t slot = cache->point_slots[i];
        if (!copy_vector(point_position(session, model, slot, true), &out->positions[i])) { return false; }
        if (!copy_vector(point_normal(session, model, normal_slots[i], true), &out->normals[i])) { return false; }
        out->colours[i] = point_colour(session, model, slot, true);
        out->uvs[i] = triangle->uvs[i];
        if (!out->colours[i]) { return false; }
    }
    return true;
}

bool gather_edge_normals(Session* session, Model* model, const TriangleCache* cache, PatchCorners* corners) {
    for (int i = 0; i < 2 * corners->count; ++i) {
        const Vec3* normal = point_normal(session, model, cache->control_slots[i], true);
        if (!copy_vector(normal, &corners->normals[PATCH_EDGE_NORMALS + i])) { return false; }
    }
    return true;
}

// The points as the model file placed them, with the weights of their joints. The joints have to be told apart later.
struct RestCorners {
    PatchCorners corners;
    float weights[4];
    Joint* joints[4];
};

bool gather_rest(Model* model, Triangle* triangle, const TriangleCache* cache, RestCorners* out) {
    const auto point_at = [model](int32_t slot) { return list_at<Point>(&model->points, slot, 0); };
    PatchCorners* corners = &out->corners;
    corners->count = triangle_corners(triangle);
    for (int i = 0; i < corners->count; ++i) {
        const Point* point = point_at(cache->point_slots[i]);
        const Point* normal = point_at(cache->normal_slots[i]);
        if (!point || !normal) { return false; }
        corners->positions[i] = point->position;
        corners->normals[i] = normal->normal;
        corners->colours[i] = point->gouraud;
        corners->uvs[i] = triangle->uvs[i];
        out->weights[i] = point->weight;
        out->joints[i] = point->joint_a;
    }
    for (int i = 0; i < 2 * corners->count; ++i) {
        const Point* control = point_at(cache->control_slots[i]);
        if (!control) { return false; }
        corners->normals[PATCH_EDGE_NORMALS + i] = control->normal;
    }
    return true;
}

struct JointPair {
    const JointState* first;
    const JointState* second;
};

// The two joints that move a patch: that of corner 0, and the last one among the corners that differs from it, or its
// parent where all are the same. Null for none, which leaves a vertex at rest.
JointPair choose_joints(Session* session, Model* model, const RestCorners& rest) {
    Joint* first = rest.joints[0];
    Joint* second = first;
    for (int i = 1; i < rest.corners.count; ++i) {
        if (rest.joints[i] != first) { second = rest.joints[i]; }
    }
    if (first && second == first) {
        second = first->parent_index != -1 ? model_find_joint(model, first->parent_name) : nullptr;
    }
    return {first ? joint_state(session, model, first) : nullptr,
            second ? joint_state(session, model, second) : nullptr};
}

Vec3 moved(const Vec3& v, const Mat4* matrix) {
    if (!matrix) { return v; }
    Vec3 out;
    mat_transform_point(matrix, &v, &out);
    return out;
}

// Moves every vertex by its share of the two joints. Normals are not brought back to unit length: as they come.
void skin_surface(const RestCorners& rest, const JointPair& joints, PatchSurface* surface) {
    bool same_joint[4] = {};
    for (int i = 0; i < rest.corners.count; ++i) { same_joint[i] = rest.joints[i] == rest.joints[0]; }
    float weights[PATCH_VERTEX_LIMIT];
    patch_surface_weights(*surface, rest.weights, same_joint, weights);
    const Mat4* skin_a = joints.first ? &joints.first->skin : nullptr;
    const Mat4* skin_b = joints.second ? &joints.second->skin : nullptr;
    const Mat4* turn_a = joints.first ? &joints.first->normal_matrix : nullptr;
    const Mat4* turn_b = joints.second ? &joints.second->normal_matrix : nullptr;
    for (int i = 0; i < surface->vertex_count; ++i) {
        Vec3& position = surface->positions[i];
        Vec3& normal = surface->normals[i];
        const float weight = weights[i];
        position = vec_weighted(moved(position, skin_a), weight, moved(position, skin_b), 1.0f - weight);
        normal = vec_weighted(moved(normal, turn_a), weight, moved(normal, turn_b), 1.0f - weight);
    }
}

}  // namespace

int patch_level(const Session* session) { return std::min(PATCH_LOD_LIMIT, session->display_lod); }

bool curved_corners(Session* session, Model* model, Triangle* triangle, PatchCorners* out) {
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    return cache && gather_corners(session, model, triangle, cache, cache->normal_slots, out) &&
           gather_edge_normals(session, model, cache, out);
}

bool filtered_corners(Session* session, Model* model, Triangle* triangle, PatchCorners* out) {
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    // The points' own normals on purpose: those that the primitive names elsewhere do not count here.
    return cache && gather_corners(session, model, triangle, cache, cache->point_slots, out);
}

// Three corners of a quad as a triangle whose edges take the normals of their ends.
PatchCorners filtered_half(const PatchCorners& all, int half) {
    static constexpr int CORNERS[2][3] = {{0, 1, 2}, {2, 1, 3}};
    PatchCorners out;
    out.count = 3;
    for (int i = 0; i < 3; ++i) {
        const int from = CORNERS[half][i];
        out.positions[i] = all.positions[from];
        out.normals[i] = all.normals[from];
        out.colours[i] = all.colours[from];
        out.uvs[i] = all.uvs[from];
    }
    for (int i = 0; i < 6; ++i) { out.normals[PATCH_EDGE_NORMALS + i] = out.normals[TRIANGLE_EDGE_ENDS[i]]; }
    return out;
}

bool skinned_surface(Session* session, Model* model, Triangle* triangle, PatchCorners* corners, PatchSurface* surface) {
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    RestCorners rest;
    if (!cache || !gather_rest(model, triangle, cache, &rest)) { return false; }
    *corners = rest.corners;
    patch_surface(rest.corners, triangle->curve_type, patch_level(session), surface);
    skin_surface(rest, choose_joints(session, model, rest), surface);
    return true;
}

}  // namespace pelt
