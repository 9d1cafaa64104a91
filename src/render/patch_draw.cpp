// Curved primitives on their way to OpenGL: gather the corners, let patch.h make a grid of them, send its triangles.
// Nothing of a patch is kept, each pass of each frame computes it again in fixed local arrays. What surprises: the
// stored winding is that of a mirrored drawing, so a plain drawing sends each triple as 0, 2, 1; and the edge flag for
// a vertex is sent right behind the vertex before it.
#include "render/patch_draw.h"

#include <GL/gl.h>

#include <algorithm>
#include <iterator>

#include "motion/transform_state.h"
#include "render/overlays.h"
#include "render/triangle_draw.h"
#include "render/vertex.h"
#include "surfaces/patch.h"

namespace pelt {
namespace {

int patch_level(const Session* session) { return std::min(PATCH_LOD_LIMIT, session->display_lod); }

// False, as all gathering below, when a reference leads nowhere: such a primitive is not drawn.
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

// reflected: coordinates into the reflection map to be sent in place of the primitive's own; null for none.
void send_vertex(const PatchSurface& surface, const UvPair* reflected, int vertex) {
    const int offset = vertex * surface.attribute_count;
    if (reflected) {
        glTexCoord2f(reflected[vertex].u, reflected[vertex].v);
    } else if (surface.uvs) {
        glTexCoord2f(surface.uvs[offset], surface.uvs[offset + 1]);
    }
    if (surface.colours) {
        const float* colour = surface.colours + offset;
        glColor3f(colour[0], colour[1], colour[2]);
    }
    const Vec3& normal = surface.normals[vertex];
    const Vec3& position = surface.positions[vertex];
    glNormal3f(normal.x, normal.y, normal.z);
    glVertex3f(position.x, position.y, position.z);
}

// The triangles of a surface, between glBegin and glEnd. Hiding the diagonals takes the edge behind each second vertex
// out of line drawings.
void send_triangles(const PatchSurface& surface, const UvPair* reflected, bool mirrored, bool hide_diagonals) {
    const int second = mirrored ? 1 : 2;
    const int third = mirrored ? 2 : 1;
    for (int i = 0; i < surface.triangle_count; ++i) {
        const int16_t* vertices = surface.triangles[i];
        send_vertex(surface, reflected, vertices[0]);
        if (hide_diagonals) { glEdgeFlag(GL_FALSE); }
        send_vertex(surface, reflected, vertices[second]);
        if (hide_diagonals) { glEdgeFlag(GL_TRUE); }
        send_vertex(surface, reflected, vertices[third]);
    }
}

// A surface of a primitive with a curve type, outside a reflection pass.
void send_curved(const PatchSurface& surface, bool mirrored) {
    glBegin(GL_TRIANGLES);
    send_triangles(surface, nullptr, mirrored, surface.quad);
    glEnd();
    glEdgeFlag(GL_TRUE);
}

void send_reflection(const PatchSurface& surface, bool mirrored) {
    const Vec3* positions[PATCH_VERTEX_LIMIT];
    const Vec3* normals[PATCH_VERTEX_LIMIT];
    UvPair reflected[PATCH_VERTEX_LIMIT];
    for (int i = 0; i < surface.vertex_count; ++i) {
        positions[i] = &surface.positions[i];
        normals[i] = &surface.normals[i];
    }
    reflection_coords(positions, normals, reflected, surface.vertex_count);
    glBegin(GL_TRIANGLES);
    send_triangles(surface, reflected, mirrored, false);
    glEnd();
}

void send_filtered(const PatchSurface& surface, bool mirrored) {
    glBegin(GL_TRIANGLES);
    glEdgeFlag(GL_TRUE);
    send_triangles(surface, nullptr, mirrored, false);
    glEnd();
    glEdgeFlag(GL_TRUE);
}

void draw_normals(Session* session, Model* model, Triangle* triangle, const PatchSurface& surface) {
    if (!session->display_normals) { return; }
    patch_normals_draw(session, model, triangle, surface.vertex_count, surface.positions, surface.normals);
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

int32_t triangle_draw_pn(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored) {
    if (!session || !model || !triangle) { return 0; }
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    PatchCorners corners;
    // The points' own normals on purpose: those that the primitive names elsewhere do not count here.
    if (!cache || !gather_corners(session, model, triangle, cache, cache->point_slots, &corners)) { return 0; }

    const int halves = triangle->quad ? 2 : 1;
    int32_t total = 0;
    for (int half = 0; half < halves; ++half) {
        const PatchCorners part = filtered_half(corners, half);
        PatchSurface surface;
        patch_surface(part, 3, patch_level(session), &surface);
        // The second half goes through the quad's list on purpose: that is how its net has always looked.
        if (session->display_curvenet) { patch_net_draw(surface.net.slots, half == 1); }
        patch_surface_attributes(part, textured, gouraud_on(session, model), GOURAUD_SCALE, &surface);
        send_filtered(surface, mirrored);
        total += surface.triangle_count;
        draw_normals(session, model, triangle, surface);
    }
    return total;
}

int32_t triangle_draw_curved(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                             bool reflection) {
    if (!session || !model || !triangle) { return 0; }
    if (session->display_curvepath) { return triangle_draw_skinned(session, model, triangle, textured, mirrored); }
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    PatchCorners corners;
    if (!cache || !gather_corners(session, model, triangle, cache, cache->normal_slots, &corners)) { return 0; }
    if (!gather_edge_normals(session, model, cache, &corners)) { return 0; }

    PatchSurface surface;
    patch_surface(corners, triangle->curve_type, patch_level(session), &surface);
    if (session->display_curvenet) { patch_net_draw(surface.net.slots, surface.quad); }
    patch_surface_attributes(corners, textured, gouraud_on(session, model), GOURAUD_SCALE, &surface);
    if (reflection) {
        send_reflection(surface, mirrored);
    } else {
        send_curved(surface, mirrored);
    }
    draw_normals(session, model, triangle, surface);
    return surface.triangle_count;
}

int32_t triangle_draw_skinned(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored) {
    if (!session || !model || !triangle) { return 0; }
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    RestCorners rest;
    if (!cache || !gather_rest(model, triangle, cache, &rest)) { return 0; }

    PatchSurface surface;
    patch_surface(rest.corners, triangle->curve_type, patch_level(session), &surface);
    skin_surface(rest, choose_joints(session, model, rest), &surface);
    patch_surface_attributes(rest.corners, textured, gouraud_on(session, model), GOURAUD_SCALE, &surface);
    send_curved(surface, mirrored);
    draw_normals(session, model, triangle, surface);
    return surface.triangle_count;
}

}  // namespace pelt
