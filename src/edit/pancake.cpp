// Lays models flat. What surprises: only the first step of a chain starts from the flattened place of a point; every
// later one starts from where the point was before, so the outcome depends on the order of the primitives. An edge
// that stands upright on the plane has no direction in it and gives a non-finite place: intended, as is the rest.
#include "edit/pancake.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "edit/selection.h"
#include "scene/change.h"

namespace pelt {

namespace {

void pancake_polygon(Model* model, KeyedList* laid, const Polygon& polygon) {
    std::vector<int16_t> ids;
    for (const PolygonVertex& vertex : polygon_strip(polygon)) { ids.push_back(vertex.point); }
    pancake_chain(model, laid, ids.data(), static_cast<int>(ids.size()));
}

void pancake_layer(Model* model, KeyedList* laid, const Layer& layer) {
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) { pancake_polygon(model, laid, polygon); }
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        pancake_chain(model, laid, triangle.points, triangle_corners(&triangle));
    }
}

void add_laid(KeyedList* laid, int32_t id, const Point& point) {
    Point* entry = list_add<Point>(laid, id);
    *entry = point;
    entry->position.z = 0.0f;
}

}  // namespace

int selection_pancake(Session* session) {
    if (session == nullptr) { return 0; }
    const auto entries = list_elements<SelectedModel>(session->selection.models);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (!model_pancake(selection_entry_model(session, entry.int_key(), &*entry))) { return 0; }
    }
    return 1;
}

int model_pancake(Model* model) {
    if (model == nullptr || list_count(&model->layers) == 0) { return 0; }
    change_model(model);
    KeyedList laid{};
    list_init(&laid, sizeof(Point), KEY_INT);
    for (const Layer& layer : list_elements<Layer>(model->layers)) { pancake_layer(model, &laid, layer); }
    const auto points = list_elements<Point>(laid);
    for (auto point = points.begin(); point != points.end(); ++point) {
        Model* owner = nullptr;
        Point* stored = model_find_owned_point(model, point.int_key(), &owner);
        if (stored == nullptr) { continue; }
        change_model(owner);
        change_point(owner, stored);
        *stored = *point;
    }
    list_free(&laid);
    return 1;
}

int pancake_chain(Model* model, KeyedList* laid, const int16_t* ids, int count) {
    if (laid == nullptr || ids == nullptr || count < 1) { return 0; }
    const Point* first = model_find_point(model, ids[0]);
    if (first == nullptr) { return 0; }
    const Point* base = list_find<const Point>(laid, ids[0]);
    if (base == nullptr) {
        add_laid(laid, ids[0], *first);
        base = first;
    }
    for (int i = 1; i < count; ++i) {
        const Point* stored = model_find_point(model, ids[i]);
        if (stored == nullptr) {
            continue;  // the step after it starts from the point before it
        }
        if (list_find(laid, ids[i]) == nullptr) {
            Point placed;
            pancake_point(base, stored, &placed);
            add_laid(laid, ids[i], placed);
        }
        base = stored;
    }
    return 1;
}

void pancake_point(const Point* a, const Point* b, Point* out) {
    if (a == nullptr || b == nullptr || out == nullptr) { return; }
    const Vec3 step = vec_subtract(b->position, a->position);
    const float ratio = std::sqrt(vec_dot(step, step)) / std::sqrt(step.x * step.x + step.y * step.y);
    const Vec3 place{step.x * ratio + a->position.x, step.y * ratio + a->position.y, 0.0f};
    *out = *b;
    out->position = place;
}

}  // namespace pelt
