// Orders the points by joint and numbers them from 1. What surprises: references follow the rank of a point in the old
// order, so they stay right only where the old order was that of the joints already; and lines and uvees do not follow
// at all. Both are intended.
#include <unordered_map>
#include <vector>

#include "foundation/key_hash.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "scene/model.h"

namespace pelt {

namespace {

using PointOrder = std::vector<const Point*>;

// The points of each joint in joint order, then those of no joint; those of a joint of elsewhere are left out.
PointOrder joint_order(const Model* model) {
    std::unordered_map<const Joint*, size_t> groups;
    for (const Joint& joint : list_elements<Joint>(model->joints)) { groups.emplace(&joint, groups.size()); }
    groups.emplace(nullptr, groups.size());
    std::vector<PointOrder> points(groups.size());
    for (const Point& point : list_elements<Point>(model->points)) {
        const auto group = groups.find(point.joint_a);
        if (group != groups.end()) { points[group->second].push_back(&point); }
    }
    PointOrder order;
    for (const PointOrder& group : points) { order.insert(order.end(), group.begin(), group.end()); }
    return order;
}

KeyedList numbered_points(const PointOrder& order) {
    KeyedList points{};
    list_init(&points, sizeof(Point), KEY_INT);
    int32_t id = 0;
    for (const Point* source : order) {
        Point* point = list_add<Point>(&points, ++id);
        *point = *source;
        point->state_index = -1;
    }
    return points;
}

// The new number of every old id; what is not in it becomes 0.
using Numbers = std::unordered_map<int32_t, int16_t, KeyHash>;

Numbers old_ranks(const KeyedList& points) {
    Numbers numbers;
    numbers.reserve(static_cast<size_t>(list_count(&points)));
    int16_t rank = 0;
    const ListElements<Point> walk = list_elements<Point>(points);
    for (auto point = walk.begin(); point != walk.end(); ++point) { numbers.emplace(point.int_key(), ++rank); }
    return numbers;
}

void renumber(const Numbers& numbers, int16_t* id) {
    const auto number = numbers.find(*id);
    *id = number != numbers.end() ? number->second : int16_t{0};
}

void renumber_layer(const Numbers& numbers, const Layer& layer) {
    for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int16_t& id : triangle.points) { renumber(numbers, &id); }
        for (int16_t& id : triangle.normals) { renumber(numbers, &id); }
        for (int16_t& id : triangle.controls) { renumber(numbers, &id); }
    }
    for (Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            renumber(numbers, &vertex.point);
            renumber(numbers, &vertex.normal);
        }
    }
}

}  // namespace

int model_renumber_points(Model* model) {
    if (model == nullptr || list_count(&model->joints) == 0 || !point_id_fits(list_count(&model->points))) { return 0; }
    KeyedList points = numbered_points(joint_order(model));
    const Numbers numbers = old_ranks(model->points);
    for (const Layer& layer : list_elements<Layer>(model->layers)) { renumber_layer(numbers, layer); }
    list_free(&model->points);
    model->points = points;
    return 1;
}

}  // namespace pelt
