// Lays models flat. What surprises: only the first step of a chain starts from the flattened place of a point; every
// later one starts from where the point was before, so the outcome depends on the order of the primitives. An edge
// that stands upright on the plane has no direction in it and gives a non-finite place: intended, as is the rest.
#include "edit/pancake.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "edit/selection.h"
#include "scene/model.h"

namespace pelt {

namespace {

void flatten_polygon(Model* model, KeyedList* flattened, const Polygon& polygon) {
    std::vector<int16_t> ids;
    for (const PolygonVertex& vertex : polygon_strip(polygon)) { ids.push_back(vertex.point); }
    pancake_chain(model, flattened, ids.data(), static_cast<int>(ids.size()));
}

void flatten_layer(Model* model, KeyedList* flattened, const Layer& layer) {
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        flatten_polygon(model, flattened, polygon);
    }
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        pancake_chain(model, flattened, triangle.points, triangle_corners(&triangle));
    }
}

void add_flattened(KeyedList* flattened, int32_t id, const Point& point) {
    Point* entry = list_add<Point>(flattened, id);
    *entry = point;
    entry->position.z = 0.0f;
}

}  // namespace

int selection_pancake(Session* session) {
    if (session == nullptr) { return 0; }
    const ListElements<SelectedModel> entries = list_elements<SelectedModel>(session->selection.models);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (!model_pancake(selection_entry_model(session, entry.int_key(), &*entry))) { return 0; }
    }
    return 1;
}

int model_pancake(Model* model) {
    if (model == nullptr || list_count(&model->layers) == 0) { return 0; }
    KeyedList flattened{};
    list_init(&flattened, sizeof(Point), KEY_INT);
    for (const Layer& layer : list_elements<Layer>(model->layers)) { flatten_layer(model, &flattened, layer); }
    const ListElements<Point> points = list_elements<Point>(flattened);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (Point* stored = model_find_point(model, point.int_key())) { *stored = *point; }
    }
    list_free(&flattened);
    ++model->changes;
    return 1;
}

int pancake_chain(Model* model, KeyedList* flattened, const int16_t* ids, int count) {
    if (flattened == nullptr || ids == nullptr || count < 1) { return 0; }
    const Point* first = model_find_point(model, ids[0]);
    if (first == nullptr) { return 0; }
    const Point* base = list_find<const Point>(flattened, ids[0]);
    if (base == nullptr) {
        add_flattened(flattened, ids[0], *first);
        base = first;
    }
    for (int i = 1; i < count; ++i) {
        const Point* stored = model_find_point(model, ids[i]);
        if (stored == nullptr) {
            continue;  // the step after it starts from the point before it
        }
        if (list_find(flattened, ids[i]) == nullptr) {
            Point placed;
            pancake_point(base, stored, &placed);
            add_flattened(flattened, ids[i], placed);
        }
        base = stored;
    }
    return 1;
}

void pancake_point(const Point* a, const Point* b, Point* out) {
    if (a == nullptr || b == nullptr || out == nullptr) { return; }
    const float x = b->position.x - a->position.x;
    const float y = b->position.y - a->position.y;
    const float z = b->position.z - a->position.z;
    const float full = std::sqrt(x * x + y * y + z * z);
    const float flat = std::sqrt(x * x + y * y);
    const float ratio = full / flat;
    const Vec3 place{x * ratio + a->position.x, y * ratio + a->position.y, 0.0f};
    *out = *b;
    out->position = place;
}

}  // namespace pelt
