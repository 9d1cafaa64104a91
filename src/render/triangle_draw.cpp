// Flat primitives as OpenGL calls: triangles, quads and polygons, and the coordinates of the reflection pass. The
// surprise: the stored order of the corners is the one for a mirrored drawing, which a negative scale turns round, so
// that the plain drawing is the one that reverses it.
#include "render/triangle_draw.h"

#include <GL/gl.h>

#include <cmath>

#include "scene/vertex.h"

namespace pelt {

namespace {

// How far the normal and the place on the screen move a reflection coordinate from its middle.
constexpr float REFLECTION_MIDDLE = 1.5f;
constexpr float REFLECTION_NORMAL = 0.375f;
constexpr float REFLECTION_PLACE = 0.125f;

// The corners of a primitive, each part in an array of its own, as reflection_coords takes them.
template <int Limit>
struct FlatCorners {
    const Vec3* positions[Limit];
    const Vec3* normals[Limit];
    const unsigned char* colours[Limit];
    UvPair uvs[Limit];
};

// What is sent with each vertex besides normal and position.
struct VertexForm {
    bool textured;
    bool gouraud;
};

template <int Limit>
inline void send_vertex(const FlatCorners<Limit>& corners, int i, VertexForm form) {
    if (form.textured) { glTexCoord2f(corners.uvs[i].u, corners.uvs[i].v); }
    if (form.gouraud) {
        const unsigned char* c = corners.colours[i];
        glColor4f(static_cast<float>(c[0]) * GOURAUD_SCALE, static_cast<float>(c[1]) * GOURAUD_SCALE,
                  static_cast<float>(c[2]) * GOURAUD_SCALE, 1.0f - static_cast<float>(c[3]) * GOURAUD_SCALE);
    }
    const Vec3* n = corners.normals[i];
    const Vec3* p = corners.positions[i];
    glNormal3f(n->x, n->y, n->z);
    glVertex3f(p->x, p->y, p->z);
}

// The order in which corners are sent: a plain drawing changes the places of 1 and 2.
constexpr int STORED_ORDER[4] = {0, 1, 2, 3};
constexpr int REVERSED_ORDER[4] = {0, 2, 1, 3};

// From slots, without a search. False when one of them names no point.
bool collect_corners(Session* session, Model* model, const Triangle* triangle, const TriangleCache* cache,
                     const int (&order)[4], int count, FlatCorners<4>* out) {
    for (int i = 0; i < count; ++i) {
        const int corner = order[i];
        const int32_t point_slot = cache->point_slots[corner];
        const int32_t normal_slot = cache->normal_slots[corner];
        const auto* point = list_at<const Point>(&model->points, point_slot, 0);
        if (point == nullptr) { return false; }
        const PointState* state = point_posed(session, point);
        out->positions[i] = state != nullptr ? &state->position : &point->position;
        if (normal_slot == point_slot) {
            out->normals[i] = state != nullptr ? &state->normal : &point->normal;
        } else {
            out->normals[i] = point_normal(session, model, normal_slot, true);
            if (out->normals[i] == nullptr) { return false; }
        }
        out->colours[i] = point->gouraud;
        out->uvs[i] = {triangle->uvs[corner][0], triangle->uvs[corner][1]};
    }
    return true;
}

template <int Limit>
void send_corners(GLenum primitive, const FlatCorners<Limit>& corners, int first, int count, VertexForm form) {
    glBegin(primitive);
    for (int i = first; i < count; ++i) { send_vertex(corners, i, form); }
    glEnd();
}

template <int Limit>
void send_reflected(GLenum primitive, FlatCorners<Limit>* corners, int count) {
    reflection_coords(corners->positions, corners->normals, corners->uvs, count);
    send_corners(primitive, *corners, 0, count, {true, false});
}

// Half of a quad. The edge that begins at its second corner is the diagonal, which line mode does not show.
void send_half_quad(const FlatCorners<4>& corners, const int (&order)[3], VertexForm form) {
    for (int i = 0; i < 3; ++i) {
        glEdgeFlag(GL_TRUE);
        if (i == 1) { glEdgeFlag(GL_FALSE); }
        send_vertex(corners, order[i], form);
    }
}

void send_quad(const Session* session, const FlatCorners<4>& corners, VertexForm form) {
    if (session->display_quadlines != 0) {
        send_corners(GL_TRIANGLE_STRIP, corners, 0, 4, form);
        return;
    }
    glBegin(GL_TRIANGLES);
    send_half_quad(corners, {0, 1, 2}, form);
    send_half_quad(corners, {3, 2, 1}, form);
    glEnd();
}

// Vertices found, at most POLYGON_VERTEX_LIMIT; 0 when one of them names no point.
int collect_vertices(Session* session, Model* model, const Polygon* polygon, FlatCorners<POLYGON_VERTEX_LIMIT>* out) {
    int count = 0;
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
        if (count == POLYGON_VERTEX_LIMIT) { break; }
        const Point* point = list_find<const Point>(&model->points, vertex.point);
        const Vec3* normal = point_normal(session, model, vertex.normal, false);
        if (point == nullptr || normal == nullptr) { return 0; }
        out->positions[count] = point_posed_position(session, point);
        out->normals[count] = normal;
        out->colours[count] = point->gouraud;
        out->uvs[count] = {vertex.u, vertex.v};
        ++count;
    }
    return count;
}

struct FlatPlace {
    float x, y;
};

// What mat_transform_point gives for x and y. A reflection needs no more, and its pass costs a tenth less for it.
inline FlatPlace transform_flat(const Mat4& m, const Vec3& p) {
    const float* e = m.m;
    const float divisor = e[12] + e[13] + e[14] + e[15] + 0.0f;  // as there: a sum of negative zeros counts as zero
    FlatPlace out{p.x * e[0] + p.y * e[1] + p.z * e[2] + e[3], p.x * e[4] + p.y * e[5] + p.z * e[6] + e[7]};
    if (divisor != 1.0f) {
        out.x /= divisor;
        out.y /= divisor;
    }
    return out;
}

}  // namespace

void reflection_coords(const Vec3* const* positions, const Vec3* const* normals, UvPair* uvs, int count) {
    Mat4 columns, view, turn, projection, screen;
    glGetFloatv(GL_MODELVIEW_MATRIX, columns.m);
    mat_transpose(&columns, &view);
    turn = view;
    mat_drop_translation(&turn);
    glGetFloatv(GL_PROJECTION_MATRIX, columns.m);
    mat_transpose(&columns, &projection);
    mat_multiply(&view, &projection, &screen);
    for (int i = 0; i < count; ++i) {
        const FlatPlace normal = transform_flat(turn, *normals[i]);
        FlatPlace place = transform_flat(screen, *positions[i]);
        if (place.x != 0.0f || place.y != 0.0f) {
            const float scale = 1.0f / std::sqrt(place.x * place.x + place.y * place.y);
            place.x *= scale;
            place.y *= scale;
        }
        uvs[i].u = REFLECTION_MIDDLE + (normal.x * REFLECTION_NORMAL + place.x * REFLECTION_PLACE);
        uvs[i].v = REFLECTION_MIDDLE - (normal.y * REFLECTION_NORMAL + place.y * REFLECTION_PLACE);
    }
}

int32_t triangle_draw(Session* session, Model* model, Triangle* triangle, bool textured, bool mirrored,
                      bool reflection) {
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    // A triangle of curve type 4 is a plain one: the type has a meaning for quads alone.
    const bool quad = triangle->quad != 0;
    const int count = quad ? 4 : 3;
    FlatCorners<4> corners;
    const auto& order = mirrored ? STORED_ORDER : REVERSED_ORDER;
    if (cache == nullptr || !collect_corners(session, model, triangle, cache, order, count, &corners)) { return 0; }
    if (reflection) {
        send_reflected(quad ? GL_TRIANGLE_STRIP : GL_TRIANGLES, &corners, count);
        return quad ? 2 : 1;
    }
    const VertexForm form{textured, gouraud_on(session, model)};
    if (quad) {
        send_quad(session, corners, form);
        return 2;
    }
    send_corners(GL_TRIANGLES, corners, 0, 3, form);
    return 1;
}

int32_t polygon_draw(Session* session, Model* model, Polygon* polygon, bool textured, bool mirrored, bool reflection) {
    FlatCorners<POLYGON_VERTEX_LIMIT> corners;
    const int count = collect_vertices(session, model, polygon, &corners);
    if (count < 3) { return 0; }
    if (reflection) {
        send_reflected(GL_TRIANGLE_STRIP, &corners, count);
        return count - 2;
    }
    const VertexForm form{textured, gouraud_on(session, model)};
    if (mirrored) {
        send_corners(GL_TRIANGLE_STRIP, corners, 0, count, form);
        return count - 2;
    }
    // The first triangle turned round, then the strip from its second vertex on: every triangle changes its winding.
    glBegin(GL_TRIANGLES);
    for (int i = 2; i >= 0; --i) { send_vertex(corners, i, form); }
    glEnd();
    send_corners(GL_TRIANGLE_STRIP, corners, 1, count, form);
    return count - 2;
}

}  // namespace pelt
