// Adding primitives to a layer. All checks come before anything is changed, so that a primitive that is refused
// leaves no trace. What surprises: an id is looked up in 32 bits and stored in 16, as the format has it.
#include "scene/primitive.h"

#include <algorithm>
#include <limits>

#include "foundation/load_error.h"
#include "scene/change.h"
#include "scene/ids.h"

namespace pelt {

int32_t next_triangle_id = 1;
int32_t next_polygon_id = 1;
int32_t next_line_id = 1;

namespace {

constexpr int QUAD_CORNERS = 4;
constexpr int CURVE_TYPE_MAX = 4;
constexpr const char* NO_POINT = "point does not exist";
constexpr const char* NO_NORMAL = "normal does not exist";

// Where the default control points come from, as places in the list of corners. A triangle's last one is the fourth
// place although it has three corners: intended.
constexpr int TRIANGLE_CONTROL_CORNERS[] = {0, 1, 1, 2, 2, 3};

int16_t cut_id(int32_t id) { return static_cast<int16_t>(static_cast<uint16_t>(id & 0xFFFF)); }

bool all_exist(const Model* model, const int32_t* ids, int count, const char* error) {
    for (int i = 0; i < count; ++i) {
        // Nearly all are the model's own; asking it here spares a call for each.
        const bool own = model != nullptr && list_find(&model->points, ids[i]) != nullptr;
        if (!own && model_find_point(model, ids[i]) == nullptr) {
            load_error_set(error);
            return false;
        }
    }
    return true;
}

void grow_mirrored(Model* model, const Layer* layer, int32_t id) {
    const Point* point = layer->mirror ? model_find_point(model, id) : nullptr;
    if (point == nullptr) { return; }
    const Vec3 place = mirrored_along(point->position, layer->mirror_axis);
    model_grow_bounds(model, place.x, place.y, place.z);
}

bool triangle_is_valid(const Model* model, int corners, const int32_t* points, const int32_t* normals,
                       const int32_t* controls, int curve_type) {
    if (points == nullptr || !all_exist(model, points, corners, NO_POINT)) { return false; }
    if (normals != nullptr && !all_exist(model, normals, corners, NO_NORMAL)) { return false; }
    if (curve_type >= 1 && controls != nullptr && !all_exist(model, controls, 2 * corners, NO_NORMAL)) { return false; }
    if (curve_type < 0 || curve_type > CURVE_TYPE_MAX) { return false; }
    return corners != QUAD_CORNERS || (curve_type != 1 && curve_type != 3);
}

void store_controls(Triangle* triangle, int corners, const int32_t* points, const int32_t* controls) {
    const int* places = corners == QUAD_CORNERS ? QUAD_EDGE_ENDS : TRIANGLE_CONTROL_CORNERS;
    for (int i = 0; i < 2 * corners; ++i) {
        triangle->controls[i] = cut_id(controls != nullptr ? controls[i] : points[places[i]]);
    }
}

// Vertices that a strip or line of this count gets: as many as its 16-bit count can say.
int16_t clamp_vertex_count(int count) {
    return static_cast<int16_t>(std::clamp<int>(count, 0, std::numeric_limits<int16_t>::max()));
}

}  // namespace

int model_add_triangle(Model* model, const char* layer, int quad, const int32_t* points, const int32_t* normals,
                       const int32_t* controls, int curve_type) {
    Layer* target = model_find_layer(model, layer);
    const int corners = quad ? QUAD_CORNERS : QUAD_CORNERS - 1;
    if (target == nullptr || !triangle_is_valid(model, corners, points, normals, controls, curve_type)) { return 0; }
    change_model(model);
    change_key(model, target, CONTENT_TRIANGLES, next_triangle_id);
    auto* triangle = list_add<Triangle>(&target->triangles, next_triangle_id);
    if (triangle == nullptr) { return 0; }
    *triangle = Triangle{};
    triangle->quad = quad ? 1 : 0;
    for (int i = 0; i < corners; ++i) {
        triangle->points[i] = cut_id(points[i]);
        triangle->normals[i] = cut_id(normals != nullptr ? normals[i] : points[i]);
        grow_mirrored(model, target, points[i]);
    }
    if (curve_type != 0) {
        triangle->curve_type = static_cast<int16_t>(curve_type);
        store_controls(triangle, corners, points, controls);
    }
    triangle->id = take_id(&next_triangle_id);
    triangle->state_index = -1;
    return 1;
}

int model_add_polygon(Model* model, const char* layer, int count, const int32_t* points, const int32_t* normals) {
    Layer* target = model_find_layer(model, layer);
    if (target == nullptr || points == nullptr || !all_exist(model, points, count, NO_POINT)) { return 0; }
    if (normals != nullptr && !all_exist(model, normals, count, NO_NORMAL)) { return 0; }
    change_model(model);
    change_key(model, target, CONTENT_POLYGONS, next_polygon_id);
    auto* polygon = list_add<Polygon>(&target->polygons, next_polygon_id);
    if (polygon == nullptr) { return 0; }
    *polygon = Polygon{};
    list_init(&polygon->vertices, sizeof(PolygonVertex), KEY_NONE);
    polygon->vertex_count = clamp_vertex_count(count);
    for (int i = 0; i < polygon->vertex_count; ++i) {
        PolygonVertex* vertex = list_add<PolygonVertex>(&polygon->vertices, i);
        *vertex = PolygonVertex{};
        vertex->point = cut_id(points[i]);
        vertex->normal = cut_id(normals != nullptr ? normals[i] : points[i]);
        grow_mirrored(model, target, points[i]);
    }
    polygon->id = take_id(&next_polygon_id);
    polygon->state_index = -1;
    return 1;
}

int model_add_line(Model* model, const char* layer, int count, const int32_t* points) {
    Layer* target = model_find_layer(model, layer);
    if (target == nullptr || points == nullptr || !all_exist(model, points, count, NO_POINT)) { return 0; }
    change_model(model);
    change_key(model, target, CONTENT_LINES, next_line_id);
    auto* line = list_add<Line>(&target->lines, next_line_id);
    if (line == nullptr) { return 0; }
    *line = Line{};
    list_init(&line->vertices, sizeof(int32_t), KEY_NONE);
    line->vertex_count = clamp_vertex_count(count);
    for (int i = 0; i < line->vertex_count; ++i) {
        *list_add<int32_t>(&line->vertices, i) = points[i];
        grow_mirrored(model, target, points[i]);
    }
    line->id = take_id(&next_line_id);
    line->state_index = -1;
    return 1;
}

std::vector<PolygonVertex> polygon_strip(const Polygon& polygon) {
    std::vector<PolygonVertex> strip;
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        if (static_cast<int>(strip.size()) >= polygon.vertex_count) { break; }
        strip.push_back(vertex);
    }
    return strip;
}

int model_add_uvee(Model* model, const char* layer, int32_t point, float u, float v) {
    Layer* target = model_find_layer(model, layer);
    if (target == nullptr) { return 0; }
    if (model_find_point(model, point) == nullptr) {
        load_error_set("uvee point not found in model");
        return 0;
    }
    change_model(model);
    change_key(model, target, CONTENT_UVEES, point);
    auto* uvee = list_add<Uvee>(&target->uvees, point);
    if (uvee == nullptr) { return 0; }
    *uvee = Uvee{point, u, v};
    return 1;
}

}  // namespace pelt
