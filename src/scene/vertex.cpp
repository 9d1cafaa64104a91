// From a primitive to its vertices. The surprise: a triangle's cache is made on first use and is not refreshed when
// the model changes; it stands until the session forgets the model or the layer.
#include "scene/vertex.h"

namespace pelt {

namespace {

int32_t slot_of(const Model* model, int32_t id) { return list_index_of(&model->points, id, 0); }

const Point* find_point(const Model* model, int32_t reference, bool by_slot) {
    return by_slot ? list_at<Point>(&model->points, reference, 0) : list_find<Point>(&model->points, reference);
}

// Plane of three corners of the triangle; left alone when one of them has no point.
void set_face_normal(const Model* model, const Triangle* triangle, int a, int b, int c, Vec3* out) {
    const int corners[3] = {a, b, c};
    Vec3 places[3];
    for (int i = 0; i < 3; ++i) {
        const Vec3* place = model_point_position(model, triangle->points[corners[i]]);
        if (place == nullptr) { return; }
        places[i] = *place;  // it lies in a static copy
    }
    *out = plane_normal(&places[0], &places[1], &places[2]);
}

int32_t joint_span(const Model* model, const TriangleCache* cache, int corners) {
    int32_t span = 1;
    const Joint* before = nullptr;
    for (int i = 0; i < corners; ++i) {
        const Point* point = find_point(model, cache->point_slots[i], true);
        const Joint* joint = point != nullptr ? point->joint_a : nullptr;
        if (i > 0 && joint != before) { span = 2; }
        before = joint;
    }
    return span;
}

void fill_slots(const Model* model, const Triangle* triangle, TriangleCache* cache) {
    const int corners = triangle_corners(triangle);
    const int controls = triangle->curve_type > 0 ? corners * 2 : 0;
    for (int i = 0; i < 4; ++i) {
        cache->point_slots[i] = i < corners ? slot_of(model, triangle->points[i]) : -1;
        cache->normal_slots[i] = i < corners ? slot_of(model, triangle->normals[i]) : -1;
    }
    for (int i = 0; i < 8; ++i) { cache->control_slots[i] = i < controls ? slot_of(model, triangle->controls[i]) : -1; }
    cache->joint_span = joint_span(model, cache, corners);
}

}  // namespace

TriangleCache* triangle_cache_make(Session* session, Model* model, Triangle* triangle) {
    auto* cache = add_state<TriangleCache>(&session->triangle_caches, &next_triangle_cache_id, &triangle->state_index);
    if (cache == nullptr) { return nullptr; }
    cache->triangle = triangle;
    cache->face_normal = cache->face_normal_2 = Vec3{};  // a slot used before still holds its former tenant
    set_face_normal(model, triangle, 0, 1, 2, &cache->face_normal);
    if (triangle->quad != 0) { set_face_normal(model, triangle, 2, 1, 3, &cache->face_normal_2); }
    fill_slots(model, triangle, cache);
    return cache;
}

const Vec3* point_position(Session* session, Model* model, int32_t reference, bool by_slot) {
    const Point* point = find_point(model, reference, by_slot);
    return point != nullptr ? point_posed_position(session, point) : nullptr;
}

const Vec3* point_normal(Session* session, Model* model, int32_t reference, bool by_slot) {
    const Point* point = find_point(model, reference, by_slot);
    return point != nullptr ? point_posed_normal(session, point) : nullptr;
}

const unsigned char* point_colour(Session*, Model* model, int32_t reference, bool by_slot) {
    const Point* point = find_point(model, reference, by_slot);
    return point != nullptr ? point->gouraud : nullptr;  // colours are not animated
}

}  // namespace pelt
