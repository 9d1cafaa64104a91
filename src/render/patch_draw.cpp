// Curved primitives on their way to OpenGL: drawn_patch.h gathers the corners, patch.h makes a grid of them, and its
// triangles are sent. Nothing of a patch is kept, each pass of each frame computes it again in fixed local arrays. What
// surprises: the stored winding is that of a mirrored drawing, so a plain drawing sends each triple as 0, 2, 1; and the
// edge flag for a vertex is sent right behind the vertex before it.
#include "render/patch_draw.h"

#include <GL/gl.h>

#include "motion/drawn_patch.h"
#include "render/overlays.h"
#include "render/triangle_draw.h"
#include "scene/vertex.h"
#include "surfaces/patch.h"

namespace pelt {
namespace {

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

}  // namespace

int32_t triangle_draw_pn(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored) {
    if (!session || !model || !triangle) { return 0; }
    PatchCorners corners;
    if (!filtered_corners(session, model, triangle, &corners)) { return 0; }

    const int halves = triangle->quad ? 2 : 1;
    int32_t total = 0;
    for (int half = 0; half < halves; ++half) {
        const PatchCorners part = filtered_half(corners, half);
        PatchSurface surface;
        patch_surface(part, FILTERED_CURVE_TYPE, patch_level(session), &surface);
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
    PatchCorners corners;
    if (!curved_corners(session, model, triangle, &corners)) { return 0; }

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
    PatchCorners corners;
    PatchSurface surface;
    if (!skinned_surface(session, model, triangle, &corners, &surface)) { return 0; }
    patch_surface_attributes(corners, textured, gouraud_on(session, model), GOURAUD_SCALE, &surface);
    send_curved(surface, mirrored);
    draw_normals(session, model, triangle, surface);
    return surface.triangle_count;
}

}  // namespace pelt
