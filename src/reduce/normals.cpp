// Makes normals from faces. What surprises: a direction counts once, however many faces have it, and only the first six
// directions count; intended. The faces are walked once and noted at the points that they touch, which gives each point
// the order in which a walk for that point alone would meet them.
#include "reduce/normals.h"

#include <cmath>
#include <vector>

#include "scene/model.h"

namespace pelt {

namespace {

constexpr int DIRECTION_LIMIT = 6;
constexpr float SAME_DIRECTION = 0.0001f;
constexpr int16_t CURVED_TRIANGLE = 3;
constexpr int16_t CURVED_QUAD = 4;

// The distinct directions met around a point.
struct Directions {
    Vec3 found[DIRECTION_LIMIT];
    int32_t count;
};

struct Rebuild {
    const Model* model;
    bool finite_only;                    // faces without a direction do not count
    std::vector<Directions> directions;  // by slot of the point
};

// A unit normal; not valid when a point of the face is absent.
struct Face {
    Vec3 normal;
    bool valid;
};

void note(Directions* at, const Vec3& normal) {
    if (at->count >= DIRECTION_LIMIT) { return; }
    for (int32_t i = 0; i < at->count; ++i) {
        if (vec_near(&at->found[i], &normal, SAME_DIRECTION)) { return; }
    }
    at->found[at->count++] = normal;
}

void note_at(Rebuild* rebuild, int32_t id, const Face& face) {
    const int32_t slot = face.valid ? list_index_of(&rebuild->model->points, id, 0) : -1;
    if (slot >= 0) { note(&rebuild->directions[static_cast<size_t>(slot)], face.normal); }
}

bool corner_places(const Model* model, int32_t a, int32_t b, int32_t c, Vec3 out[3]) {
    const int32_t ids[3] = {a, b, c};
    for (int i = 0; i < 3; ++i) {
        const Vec3* place = model_point_position(model, ids[i]);
        if (place == nullptr) { return false; }
        out[i] = *place;
    }
    return true;
}

Face face_of(const Rebuild& rebuild, int32_t a, int32_t b, int32_t c) {
    Vec3 places[3];
    if (!corner_places(rebuild.model, a, b, c, places)) { return {{}, false}; }
    Face face{triangle_normal(places), true};
    vec_normalise(&face.normal);
    face.valid = !rebuild.finite_only || vec_is_finite(face.normal);
    return face;
}

// Notes a face once at each of its points, also where it names one twice.
void note_face(Rebuild* rebuild, int32_t a, int32_t b, int32_t c) {
    const Face face = face_of(*rebuild, a, b, c);
    note_at(rebuild, a, face);
    if (b != a) { note_at(rebuild, b, face); }
    if (c != a && c != b) { note_at(rebuild, c, face); }
}

void note_triangle(Rebuild* rebuild, const Triangle& triangle) {
    const int16_t* p = triangle.points;
    note_face(rebuild, p[0], p[1], p[2]);
    if (triangle.quad) { note_face(rebuild, p[2], p[1], p[3]); }
}

// The faces of a strip, each in the winding of the strip.
std::vector<Face> strip_faces(const Rebuild& rebuild, const std::vector<PolygonVertex>& strip) {
    std::vector<Face> faces;
    for (size_t i = 0; i + 2 < strip.size(); ++i) {
        const size_t turned = i % 2;
        faces.push_back(face_of(rebuild, strip[i + turned].point, strip[i + 1 - turned].point, strip[i + 2].point));
    }
    return faces;
}

void note_polygon(Rebuild* rebuild, const Polygon& polygon) {
    const std::vector<PolygonVertex> strip = polygon_strip(polygon);
    if (strip.size() < STRIP_MIN) { return; }
    const std::vector<Face> faces = strip_faces(*rebuild, strip);
    for (size_t i = 0; i < strip.size(); ++i) {
        // Intended: the first two vertices hear the same two faces.
        const size_t first = i < 2 ? 0 : i - 2;
        const size_t last = i < 2 ? 1 : i;
        for (size_t face = first; face <= last && face < faces.size(); ++face) {
            note_at(rebuild, strip[i].point, faces[face]);
        }
    }
}

Vec3 normal_of(const Directions& directions, bool finite_only) {
    if (directions.count == 0) { return {0.0f, 0.0f, 1.0f}; }
    Vec3 normal = vec_average(directions.found, directions.count);
    vec_normalise(&normal);
    return finite_only && !vec_is_finite(normal) ? directions.found[0] : normal;
}

void make_curved(Triangle* triangle) {
    triangle->curve_type = triangle->quad ? CURVED_QUAD : CURVED_TRIANGLE;
    const int* ends = triangle_edge_ends(triangle);
    for (int i = 0; i < 2 * triangle_corners(triangle); ++i) { triangle->controls[i] = triangle->points[ends[i]]; }
}

Rebuild note_all(const Model* model, bool finite_only) {
    Rebuild rebuild{model, finite_only, std::vector<Directions>(static_cast<size_t>(model->points.capacity))};
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) { note_triangle(&rebuild, triangle); }
        for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) { note_polygon(&rebuild, polygon); }
    }
    return rebuild;
}

int rebuild_normals(Model* model, bool finite_only) {
    if (model == nullptr) { return 1; }
    const Rebuild rebuild = note_all(model, finite_only);
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const Vec3 normal = normal_of(rebuild.directions[static_cast<size_t>(point.slot())], finite_only);
        model_set_normal(model, point.int_key(), normal.x, normal.y, normal.z);
    }
    return 1;
}

}  // namespace

int model_rebuild_normals(Model* model) { return rebuild_normals(model, false); }

int model_rebuild_finite_normals(Model* model) { return rebuild_normals(model, true); }

std::vector<MadeNormal> model_made_normals(const Model* model, const std::vector<int32_t>& ids) {
    std::vector<MadeNormal> made;
    if (model == nullptr) { return made; }
    const Rebuild rebuild = note_all(model, true);
    for (const int32_t id : ids) {
        const int32_t slot = list_index_of(&model->points, id, 0);
        if (slot < 0) { continue; }
        const Directions& directions = rebuild.directions[static_cast<size_t>(slot)];
        Vec3 normal = normal_of(directions, true);
        vec_normalise(&normal);  // once more, as it is stored
        made.push_back({id, normal, directions.count > 0});
    }
    return made;
}

int model_make_curved(Model* model) {
    if (model == nullptr) { return 0; }
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            if (triangle.curve_type == 0) { make_curved(&triangle); }
        }
    }
    return 1;
}

Vec3 model_face_normal(const Model* model, int32_t a, int32_t b, int32_t c) {
    Vec3 places[3];
    return triangle_normal(corner_places(model, a, b, c, places) ? places : nullptr);
}

const UvPair* triangle_planar_uvs(const Vec3* points, const float* box, int axis_u, int axis_v) {
    static UvPair uvs[3];
    if (points == nullptr || box == nullptr) { return nullptr; }
    const Vec3 low{box[0], box[1], box[2]};
    const Vec3 high{box[3], box[4], box[5]};
    for (int i = 0; i < 3; ++i) {
        uvs[i] = planar_uv(points[i].x, points[i].y, points[i].z, &low, &high, axis_u, axis_v);
    }
    return uvs;
}

}  // namespace pelt
