// The box of a model, from what is in it.
#include "scene/measure.h"

#include "scene/change.h"

namespace pelt {

namespace {

struct Extent {
    Vec3 low{};
    Vec3 high{};
    bool empty = true;

    void take_in(const Vec3& place) {
        if (empty) { low = high = place; }
        empty = false;
        box_take_in(place, &low, &high);
    }
};

bool same_place(const Vec3& a, const Vec3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

void take_in_mirrored(const Model* model, const Layer& layer, Extent* extent) {
    const auto take = [&](int32_t id) {
        const Point* point = list_find<const Point>(&model->points, id);
        if (point != nullptr) { extent->take_in(mirrored_along(point->position, layer.mirror_axis)); }
    };
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) { take(triangle.points[corner]); }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) { take(vertex.point); }
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { take(line_point_id(stored)); }
    }
}

}  // namespace

void model_measure(Model* model) {
    if (model == nullptr) { return; }
    Extent extent;
    for (const Point& point : list_elements<Point>(model->points)) { extent.take_in(point.position); }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (layer.mirror != 0) { take_in_mirrored(model, layer, &extent); }
    }
    if (same_place(extent.low, model->bounds_min) && same_place(extent.high, model->bounds_max)) { return; }
    change_fields(model);
    model->bounds_min = extent.low;
    model->bounds_max = extent.high;
}

}  // namespace pelt
