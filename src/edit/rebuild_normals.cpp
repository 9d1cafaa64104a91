// Normals of points, by the rule that the whole rebuild of a model has (reduce/normals), for some of them.
#include "edit/rebuild_normals.h"

#include <algorithm>

#include "edit/settle.h"
#include "reduce/normals.h"
#include "scene/change.h"

namespace pelt {

namespace {

bool same_direction(const Vec3& a, const Vec3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// Also those whose normals alone are used.
template <typename Take>
void for_each_use(const Triangle& triangle, Take take) {
    const int corners = triangle_corners(&triangle);
    for (int i = 0; i < corners; ++i) {
        take(triangle.points[i]);
        take(triangle.normals[i]);
    }
    for (int i = 0; i < 2 * corners && triangle.curve_type != 0; ++i) { take(triangle.controls[i]); }
}

template <typename Take>
void for_each_use(const Polygon& polygon, Take take) {
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        take(vertex.point);
        take(vertex.normal);
    }
}

template <typename Primitive>
void add_uses(const KeyedList& list, const std::vector<int32_t>* left_out, CornerSet* used) {
    const auto elements = list_elements<Primitive>(list);
    for (auto each = elements.begin(); each != elements.end(); ++each) {
        if (left_out != nullptr && std::binary_search(left_out->begin(), left_out->end(), each.slot())) { continue; }
        for_each_use(*each, [&](int16_t id) { used->add(id); });
    }
}

std::vector<int32_t> corners_of(const Layer& layer) {
    CornerSet corners;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int i = 0; i < triangle_corners(&triangle); ++i) { corners.add(triangle.points[i]); }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            corners.add(vertex.point);
        }
    }
    std::vector<int32_t> ids;
    for (int32_t id = 1; id <= INT16_MAX; ++id) {
        if (corners.has(static_cast<int16_t>(id))) { ids.push_back(id); }
    }
    return ids;
}

std::vector<int32_t> all_points(const Model* model) {
    std::vector<int32_t> ids;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) { ids.push_back(point.int_key()); }
    return ids;
}

void store_normals(Model* model, const std::vector<MadeNormal>& normals, bool with_faceless) {
    model->has_normals = 1;
    for (const MadeNormal& made : normals) {
        Point* point = list_find<Point>(&model->points, made.id);
        if (point == nullptr || (!made.of_faces && !with_faceless) || same_direction(point->normal, made.normal)) {
            continue;
        }
        change_point(model, point);
        point->normal = made.normal;
    }
}

}  // namespace

void make_normals(Model* model, const std::vector<int32_t>& ids) {
    if (!ids.empty()) { store_normals(model, model_made_normals(model, ids), false); }
}

std::vector<int32_t> points_of_these_alone(Model* model, const std::vector<LayerPrimitives>& faces,
                                           const std::vector<int32_t>& ids) {
    CornerSet used;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const auto found =
            std::find_if(faces.begin(), faces.end(), [&](const LayerPrimitives& each) { return each.layer == &layer; });
        const bool any = found != faces.end();
        add_uses<Triangle>(layer.triangles, any ? &found->triangles : nullptr, &used);
        add_uses<Polygon>(layer.polygons, any ? &found->polygons : nullptr, &used);
    }
    std::vector<int32_t> alone;
    for (const int32_t id : ids) {
        const bool nameable = id <= INT16_MAX;
        if (!nameable || !used.has(static_cast<int16_t>(id))) { alone.push_back(id); }
    }
    return alone;
}

bool edit_rebuild_normals(Session* session, Model* model, const Layer* layer, EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    const std::vector<int32_t> ids = layer != nullptr ? corners_of(*layer) : all_points(model);
    for (Model* target : targets) {
        change_model(target);
        store_normals(target, model_made_normals(target, ids), true);
        settle_model(session, target, {ids, {}});
    }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
