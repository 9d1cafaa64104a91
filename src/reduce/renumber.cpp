// Orders the points by joint and numbers them from 1. What surprises: in model_renumber_points references follow the
// rank of a point in the old order, so they stay right only where the old order was that of the joints already; and
// lines and uvees do not follow at all. Both are intended, and model_number_by_joint does what one would expect.
#include <unordered_map>
#include <vector>

#include "foundation/key_hash.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "scene/model.h"

namespace pelt {

namespace {

struct OrderedPoint {
    int32_t id;
    const Point* point;
};

using PointOrder = std::vector<OrderedPoint>;

PointOrder list_order(const Model* model) {
    PointOrder order;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) { order.push_back({point.int_key(), &*point}); }
    return order;
}

// The points of each joint in joint order, then those of no joint; those of a joint of elsewhere are left out.
PointOrder joint_order(const Model* model) {
    std::unordered_map<const Joint*, size_t> groups;
    for (const Joint& joint : list_elements<Joint>(model->joints)) { groups.emplace(&joint, groups.size()); }
    groups.emplace(nullptr, groups.size());
    std::vector<PointOrder> points(groups.size());
    for (const OrderedPoint& entry : list_order(model)) {
        const auto group = groups.find(entry.point->joint_a);
        if (group != groups.end()) { points[group->second].push_back(entry); }
    }
    PointOrder order;
    for (const PointOrder& group : points) { order.insert(order.end(), group.begin(), group.end()); }
    return order;
}

// The new number of every old id; what is not in it becomes 0.
using Numbers = std::unordered_map<int32_t, int16_t, KeyHash>;

Numbers numbers_by(const PointOrder& order) {
    Numbers numbers;
    numbers.reserve(order.size());
    int16_t number = 0;
    for (const OrderedPoint& entry : order) { numbers.emplace(entry.id, ++number); }
    return numbers;
}

int16_t number_of(const Numbers& numbers, int32_t id) {
    const auto number = numbers.find(id);
    return number != numbers.end() ? number->second : int16_t{0};
}

// Puts the points in this order, under the keys from 1 on.
void order_points(Model* model, const PointOrder& order) {
    KeyedList points{};
    list_init(&points, sizeof(Point), KEY_INT);
    int32_t id = 0;
    for (const OrderedPoint& entry : order) {
        Point* point = list_add<Point>(&points, ++id);
        *point = *entry.point;
        point->state_index = -1;
    }
    list_free(&model->points);
    model->points = points;
}

void renumber_surface(const Numbers& numbers, Layer& layer) {
    for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int16_t& id : triangle.points) { id = number_of(numbers, id); }
        for (int16_t& id : triangle.normals) { id = number_of(numbers, id); }
        for (int16_t& id : triangle.controls) { id = number_of(numbers, id); }
    }
    for (Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            vertex.point = number_of(numbers, vertex.point);
            vertex.normal = number_of(numbers, vertex.normal);
        }
    }
}

void renumber_lines_and_uvees(const Numbers& numbers, Layer& layer) {
    for (Line& line : list_elements<Line>(layer.lines)) {
        for (int32_t& stored : list_elements<int32_t>(line.vertices)) {
            stored = number_of(numbers, line_point_id(stored));
        }
    }
    KeyedList uvees{};
    list_init(&uvees, sizeof(Uvee), KEY_INT);
    for (const Uvee& old : list_elements<Uvee>(layer.uvees)) {
        const int32_t number = number_of(numbers, old.point);
        if (number > 0) { *list_add<Uvee>(&uvees, number) = Uvee{number, old.u, old.v}; }
    }
    list_free(&layer.uvees);
    layer.uvees = uvees;
}

}  // namespace

int model_renumber_points(Model* model) {
    if (model == nullptr || list_count(&model->joints) == 0 || !point_id_fits(list_count(&model->points))) { return 0; }
    const Numbers numbers = numbers_by(list_order(model));
    for (Layer& layer : list_elements<Layer>(model->layers)) { renumber_surface(numbers, layer); }
    order_points(model, joint_order(model));
    return 1;
}

int model_number_by_joint(Model* model) {
    if (model == nullptr) { return 0; }
    if (list_count(&model->joints) == 0) { return 1; }
    if (!point_id_fits(list_count(&model->points))) { return 0; }
    const PointOrder order = joint_order(model);
    const Numbers numbers = numbers_by(order);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        renumber_surface(numbers, layer);
        renumber_lines_and_uvees(numbers, layer);
    }
    order_points(model, order);
    return 1;
}

}  // namespace pelt
