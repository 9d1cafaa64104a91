// Sets of points, by what primitives say of them and by what they hold.
#include "edit/point_sets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <numeric>
#include <set>

#include "edit/settle.h"

namespace pelt {

namespace {

constexpr float SAME_NORMAL = 0.0001f;  // in each component

template <typename Take>
void for_each_primitive(const Layer& layer, Take take) {
    std::vector<int16_t> corners;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        corners.assign(triangle.points, triangle.points + triangle_corners(&triangle));
        take(corners);
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        corners.clear();
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            corners.push_back(vertex.point);
        }
        take(corners);
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        corners.clear();
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            corners.push_back(static_cast<int16_t>(line_point_id(stored)));
        }
        take(corners);
    }
}

// The points of the model for which the answer is yes.
template <typename Is>
std::vector<int32_t> points_that(const Model* model, Is is) {
    std::vector<int32_t> ids;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (is(point.int_key(), *point)) { ids.push_back(point.int_key()); }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

bool holds(const std::vector<int32_t>& sorted, int32_t id) {
    return std::binary_search(sorted.begin(), sorted.end(), id);
}

std::vector<int32_t> sorted(std::vector<int32_t> ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
}

// Which points hang together: each leads, by way of others, to one that stands for all of them.
class Links {
public:
    Links() { std::iota(leads_.begin(), leads_.end(), 0); }
    void join(int16_t a, int16_t b) {
        if (a > 0 && b > 0) { leads_[static_cast<size_t>(root(a))] = root(b); }
    }
    int32_t root(int32_t id) {
        while (leads_[static_cast<size_t>(id)] != id) {
            int32_t& lead = leads_[static_cast<size_t>(id)];
            lead = leads_[static_cast<size_t>(lead)];
            id = lead;
        }
        return id;
    }

private:
    std::array<int32_t, INT16_MAX + 1> leads_;
};

std::vector<int32_t> points_of_layers(const Model* model, const std::vector<int32_t>& ids) {
    const CornerSet own = corner_set(ids);
    CornerSet found = own;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        CornerSet of_layer;
        bool used = false;
        for_each_primitive(layer, [&](const std::vector<int16_t>& corners) {
            for (const int16_t id : corners) {
                used |= own.has(id);
                of_layer.add(id);
            }
        });
        if (used) { found.add_all(of_layer); }
    }
    const std::vector<int32_t> given = sorted(ids);
    return points_that(model, [&](int32_t id, const Point&) {
        return holds(given, id) || (id <= INT16_MAX && found.has(static_cast<int16_t>(id)));
    });
}

// Directions in cells as wide as what counts as the same, so that only neighbours are compared.
class Directions {
public:
    void add(const Vec3& normal) {
        if (vec_is_finite(normal)) { normals_.emplace(cell(normal), normal); }
    }
    bool holds(const Vec3& normal) const {
        if (!vec_is_finite(normal)) { return false; }
        const Cell middle = cell(normal);
        for (int near = 0; near < 27; ++near) {
            const Cell around{middle[0] + near % 3 - 1, middle[1] + near / 3 % 3 - 1, middle[2] + near / 9 - 1};
            const auto [first, last] = normals_.equal_range(around);
            const auto same = [&](const auto& each) { return vec_near(&each.second, &normal, SAME_NORMAL) != 0; };
            if (std::any_of(first, last, same)) { return true; }
        }
        return false;
    }

private:
    using Cell = std::array<double, 3>;
    static Cell cell(const Vec3& v) {
        const double wide = SAME_NORMAL;
        return {std::floor(v.x / wide), std::floor(v.y / wide), std::floor(v.z / wide)};
    }
    std::multimap<Cell, Vec3> normals_;
};

uint32_t colour_of(const Point& point) {
    uint32_t colour;
    std::memcpy(&colour, point.gouraud, sizeof colour);
    return colour;
}

}  // namespace

std::vector<int32_t> points_linked(const Model* model, const std::vector<int32_t>& ids) {
    Links links;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for_each_primitive(layer, [&](const std::vector<int16_t>& corners) {
            for (size_t i = 1; i < corners.size(); ++i) { links.join(corners[0], corners[i]); }
        });
    }
    std::set<int32_t> roots;
    for (const int32_t id : ids) {
        if (id <= INT16_MAX) { roots.insert(links.root(id)); }
    }
    const std::vector<int32_t> own = sorted(ids);
    return points_that(model, [&](int32_t id, const Point&) {
        return holds(own, id) || (id >= 1 && id <= INT16_MAX && roots.count(links.root(id)) != 0);
    });
}

std::vector<int32_t> points_grown(const Model* model, const std::vector<int32_t>& ids) {
    const CornerSet inner = corner_set(ids);
    CornerSet outer = inner;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for_each_primitive(layer, [&](const std::vector<int16_t>& corners) {
            if (std::none_of(corners.begin(), corners.end(), [&](int16_t id) { return inner.has(id); })) { return; }
            for (const int16_t id : corners) { outer.add(id); }
        });
    }
    const std::vector<int32_t> own = sorted(ids);
    return points_that(model, [&](int32_t id, const Point&) {
        return holds(own, id) || (id <= INT16_MAX && outer.has(static_cast<int16_t>(id)));
    });
}

std::vector<int32_t> points_inverted(const Model* model, const std::vector<int32_t>& ids) {
    const std::vector<int32_t> own = sorted(ids);
    return points_that(model, [&](int32_t id, const Point&) { return !holds(own, id); });
}

std::vector<int32_t> points_like(const Model* model, const std::vector<int32_t>& ids, PointLikeness likeness) {
    if (likeness == PointLikeness::LAYER) { return points_of_layers(model, ids); }
    Directions normals;
    std::set<uint32_t> colours;
    std::set<std::array<float, 3>> added;  // thousands of points may share one
    for (const int32_t id : ids) {
        const Point* point = list_find<const Point>(&model->points, id);
        if (point == nullptr) { continue; }
        colours.insert(colour_of(*point));
        const Vec3& n = point->normal;
        if (vec_is_finite(n) && added.insert({n.x, n.y, n.z}).second) { normals.add(n); }
    }
    const std::vector<int32_t> own = sorted(ids);
    const bool by_normal = likeness == PointLikeness::NORMAL;
    return points_that(model, [&](int32_t id, const Point& point) {
        return holds(own, id) || (by_normal ? normals.holds(point.normal) : colours.count(colour_of(point)) != 0);
    });
}

}  // namespace pelt
