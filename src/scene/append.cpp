// Adding behind the last record, and taking out. What surprises: a slot that was used before holds what stood in it, so
// every new record is written whole.
#include "scene/append.h"

#include <algorithm>

#include "scene/change.h"
#include "scene/ids.h"

namespace pelt {

namespace {

template <typename Record>
Record* append(Model* model, Layer* layer, ContentList which, int32_t key, const Record& record) {
    KeyedList* list = content_list(model, layer, which);
    const int32_t slot = list_end_slot(list);
    const Record copy = record;  // it may lie in the bytes that are told of
    change_slot(model, layer, which, slot);
    auto* added = static_cast<Record*>(list_add_at(list, slot, key));
    if (added != nullptr) { *added = copy; }
    return added;
}

int32_t free_id(const KeyedList& list, int32_t* next_id) {
    int32_t id = take_id(next_id);
    while (list_find(&list, id) != nullptr) { id = take_id(next_id); }
    return id;
}

void remove(Model* model, Layer* layer, ContentList which, int32_t slot) {
    change_slot(model, layer, which, slot);
    list_remove_slot(content_list(model, layer, which), slot);
}

}  // namespace

int32_t model_next_point(const Model* model) { return std::max(model_highest_point(model), 0) + 1; }

Point* model_append_point(Model* model, int32_t id, const Point& like) {
    Point* point = append(model, nullptr, CONTENT_POINTS, id, like);
    if (point != nullptr) { point->state_index = -1; }
    return point;
}

Triangle* layer_append_triangle(Model* model, Layer* layer, const Triangle& like) {
    Triangle triangle = like;
    triangle.id = free_id(layer->triangles, &next_triangle_id);
    triangle.state_index = -1;
    return append(model, layer, CONTENT_TRIANGLES, triangle.id, triangle);
}

Polygon* layer_append_polygon(Model* model, Layer* layer, const std::vector<PolygonVertex>& vertices) {
    Polygon polygon{};
    polygon.id = free_id(layer->polygons, &next_polygon_id);
    polygon.vertex_count = static_cast<int16_t>(vertices.size());
    polygon.state_index = -1;
    list_init(&polygon.vertices, sizeof(PolygonVertex), KEY_NONE);
    for (const PolygonVertex& vertex : vertices) { *list_add<PolygonVertex>(&polygon.vertices, 0) = vertex; }
    return append(model, layer, CONTENT_POLYGONS, polygon.id, polygon);
}

Line* layer_append_line(Model* model, Layer* layer, const std::vector<int32_t>& points) {
    Line line{};
    line.id = free_id(layer->lines, &next_line_id);
    line.vertex_count = static_cast<int16_t>(points.size());
    line.state_index = -1;
    list_init(&line.vertices, sizeof(int32_t), KEY_NONE);
    for (const int32_t point : points) { *list_add<int32_t>(&line.vertices, 0) = point; }
    return append(model, layer, CONTENT_LINES, line.id, line);
}

Uvee* layer_append_uvee(Model* model, Layer* layer, const Uvee& uvee) {
    if (Uvee* found = list_find<Uvee>(&layer->uvees, uvee.point)) {
        change_element(model, layer, CONTENT_UVEES, found);
        *found = uvee;
        return found;
    }
    return append(model, layer, CONTENT_UVEES, uvee.point, uvee);
}

void layer_remove_triangle(Model* model, Layer* layer, int32_t slot) { remove(model, layer, CONTENT_TRIANGLES, slot); }

void layer_remove_polygon(Model* model, Layer* layer, int32_t slot) {
    Polygon* polygon = list_at<Polygon>(&layer->polygons, slot, 0);
    if (polygon == nullptr) { return; }
    change_slot(model, layer, CONTENT_POLYGONS, slot);
    list_free(&polygon->vertices);
    list_remove_slot(&layer->polygons, slot);
}

void layer_remove_line(Model* model, Layer* layer, int32_t slot) {
    Line* line = list_at<Line>(&layer->lines, slot, 0);
    if (line == nullptr) { return; }
    change_slot(model, layer, CONTENT_LINES, slot);
    list_free(&line->vertices);
    list_remove_slot(&layer->lines, slot);
}

void layer_remove_uvee(Model* model, Layer* layer, int32_t slot) { remove(model, layer, CONTENT_UVEES, slot); }

}  // namespace pelt
