// Copying. The new points follow the last of the model, in ids and in order; what names an old point from a copy names
// the new one, and what names a point that was not copied, for its normal, goes on naming it.
#include "edit/duplicate.h"

#include <algorithm>
#include <map>
#include <set>

#include "edit/binding_counts.h"
#include "edit/delete_parts.h"
#include "edit/make_face.h"
#include "edit/move_points.h"
#include "edit/point_settings.h"
#include "edit/rebuild_normals.h"
#include "edit/settle.h"
#include "scene/append.h"
#include "scene/change.h"

namespace pelt {

namespace {

class PointCopies {
public:
    // Copies the points into the model, moved by so much.
    PointCopies(Model* model, const std::vector<int32_t>& ids, const Vec3& by);

    int16_t of(int16_t id) const {
        const auto found = copies_.find(id);
        return static_cast<int16_t>(found != copies_.end() ? found->second : id);
    }
    const std::vector<int32_t>& made() const { return made_; }

    Triangle of(const Triangle& triangle) const;
    std::vector<PolygonVertex> of(const Polygon& polygon) const;
    std::vector<int32_t> of(const Line& line) const;

    // Texture coordinates of their own in the layer.
    void copy_uvees(Model* model, Layer* layer) const;

private:
    std::map<int32_t, int32_t> copies_;
    std::vector<int32_t> made_;
};

PointCopies::PointCopies(Model* model, const std::vector<int32_t>& ids, const Vec3& by) {
    const std::vector<PointCounter> counters = point_counters(model, ids);
    int32_t next = model_next_point(model);
    for (const int32_t id : ids) {
        Point* copy = model_append_point(model, next, *list_find<Point>(&model->points, id));
        const Vec3 place = copy->position;
        // What is not moved stays where it is, to the last bit.
        if (by.x != 0.0f || by.y != 0.0f || by.z != 0.0f) {
            copy->position = {whole_number(double{place.x} + by.x), whole_number(double{place.y} + by.y),
                              whole_number(double{place.z} + by.z)};
        }
        remember_new_point(model, next, copy->position);
        copies_[id] = next;
        made_.push_back(next++);
    }
    raise_counts(model, counters);
}

Triangle PointCopies::of(const Triangle& triangle) const {
    Triangle copy = triangle;
    for (int16_t& id : copy.points) { id = of(id); }
    for (int16_t& id : copy.normals) { id = of(id); }
    for (int16_t& id : copy.controls) { id = of(id); }
    return copy;
}

std::vector<PolygonVertex> PointCopies::of(const Polygon& polygon) const {
    std::vector<PolygonVertex> strip = polygon_strip(polygon);
    for (PolygonVertex& vertex : strip) { vertex = {of(vertex.point), of(vertex.normal), vertex.u, vertex.v}; }
    return strip;
}

std::vector<int32_t> PointCopies::of(const Line& line) const {
    std::vector<int32_t> points;
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
        points.push_back(of(static_cast<int16_t>(line_point_id(stored))));
    }
    return points;
}

void PointCopies::copy_uvees(Model* model, Layer* layer) const {
    for (const auto& [old, copy] : copies_) {
        const Uvee* uvee = list_find<Uvee>(&layer->uvees, old);
        if (uvee != nullptr) { layer_append_uvee(model, layer, {copy, uvee->u, uvee->v}); }
    }
}

// ---- which points and primitives ----

template <typename Take>
void for_each_corner(const LayerPrimitives& primitives, Take take) {
    for (const int32_t slot : primitives.triangles) {
        const Triangle* triangle = list_at<const Triangle>(&primitives.layer->triangles, slot, 0);
        for (int i = 0; i < triangle_corners(triangle); ++i) { take(triangle->points[i]); }
    }
    for (const int32_t slot : primitives.polygons) {
        const Polygon* polygon = list_at<const Polygon>(&primitives.layer->polygons, slot, 0);
        for (const PolygonVertex& vertex : polygon_strip(*polygon)) { take(vertex.point); }
    }
    for (const int32_t slot : primitives.lines) {
        const Line* line = list_at<const Line>(&primitives.layer->lines, slot, 0);
        for (const int32_t& stored : list_elements<int32_t>(line->vertices)) { take(line_point_id(stored)); }
    }
}

std::vector<int32_t> corners_of(Model* model, const std::vector<LayerPrimitives>& primitives) {
    std::set<int32_t> ids;
    for (const LayerPrimitives& each : primitives) {
        for_each_corner(each, [&](int32_t id) {
            if (list_find(&model->points, id) != nullptr) { ids.insert(id); }
        });
    }
    return {ids.begin(), ids.end()};
}

LayerPrimitives all_of(Layer* layer) {
    LayerPrimitives all{layer, {}, {}, {}};
    const auto collect = [](auto elements, std::vector<int32_t>* slots) {
        for (auto each = elements.begin(); each != elements.end(); ++each) { slots->push_back(each.slot()); }
    };
    collect(list_elements<Triangle>(layer->triangles), &all.triangles);
    collect(list_elements<Polygon>(layer->polygons), &all.polygons);
    collect(list_elements<Line>(layer->lines), &all.lines);
    return all;
}

// Those of the primitives in these slots all of whose corners are among the points.
std::vector<int32_t> inside(const LayerPrimitives& all, std::vector<int32_t> LayerPrimitives::*kind,
                            const CornerSet& points) {
    std::vector<int32_t> slots;
    for (const int32_t slot : all.*kind) {
        LayerPrimitives one{all.layer, {}, {}, {}};
        (one.*kind).push_back(slot);
        bool inside = true;
        for_each_corner(one, [&](int32_t id) { inside &= points.has(static_cast<int16_t>(id)); });
        if (inside) { slots.push_back(slot); }
    }
    return slots;
}

std::vector<LayerPrimitives> primitives_inside(Model* model, const std::vector<int32_t>& ids) {
    const CornerSet points = corner_set(ids);
    std::vector<LayerPrimitives> found;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const LayerPrimitives all = all_of(&layer);
        found.push_back({&layer, inside(all, &LayerPrimitives::triangles, points),
                         inside(all, &LayerPrimitives::polygons, points),
                         inside(all, &LayerPrimitives::lines, points)});
    }
    return found;
}

bool has_ids(const Model* model, size_t count, EditRefusal* refused) {
    if (model_next_point(model) + static_cast<int64_t>(count) - 1 <= POINT_ID_MOST) { return true; }
    return edit_refuse(refused, EDIT_STATE, "the model has no ids left for so many points: the last is 32767");
}

// ---- duplicate ----

MadeParts duplicate(Session* session, Model* model, const std::vector<int32_t>& ids,
                    const std::vector<LayerPrimitives>& primitives) {
    change_model(model);
    const PointCopies copies(model, ids, {0, 0, 0});
    MadeParts made{copies.made(), {}};
    Changed changed{copies.made(), {}};
    for (const LayerPrimitives& each : primitives) {
        Layer* layer = each.layer;
        if (each.triangles.empty() && each.polygons.empty() && each.lines.empty()) { continue; }
        copies.copy_uvees(model, layer);
        changed.layers.push_back(layer);
        for (const int32_t slot : each.triangles) {
            const Triangle copy = copies.of(*list_at<Triangle>(&layer->triangles, slot, 0));
            made.primitives.push_back({PrimitiveKind::TRIANGLE, layer_append_triangle(model, layer, copy)->id});
        }
        for (const int32_t slot : each.polygons) {
            const std::vector<PolygonVertex> copy = copies.of(*list_at<Polygon>(&layer->polygons, slot, 0));
            made.primitives.push_back({PrimitiveKind::POLYGON, layer_append_polygon(model, layer, copy)->id});
        }
        for (const int32_t slot : each.lines) {
            const std::vector<int32_t> copy = copies.of(*list_at<Line>(&layer->lines, slot, 0));
            made.primitives.push_back({PrimitiveKind::LINE, layer_append_line(model, layer, copy)->id});
        }
    }
    settle_model(session, model, changed);
    return made;
}

// ---- extrude ----

// Edges that one of the faces has alone, in the direction in which it runs around them.
std::vector<FaceEdge> outer_edges(const LayerPrimitives& faces, const std::vector<LayerPrimitives>& all) {
    const auto edges_of = [](const LayerPrimitives& each) {
        std::vector<FaceEdge> edges;
        for (const int32_t slot : each.triangles) {
            add_triangle_edges(*list_at<Triangle>(&each.layer->triangles, slot, 0), &edges);
        }
        for (const int32_t slot : each.polygons) {
            add_polygon_edges(*list_at<Polygon>(&each.layer->polygons, slot, 0), &edges);
        }
        return edges;
    };
    std::map<std::pair<int16_t, int16_t>, int> uses;
    const auto key = [](const FaceEdge& edge) { return std::minmax(edge.from, edge.to); };
    for (const LayerPrimitives& each : all) {
        for (const FaceEdge& edge : edges_of(each)) { ++uses[key(edge)]; }
    }
    std::vector<FaceEdge> outer;
    for (const FaceEdge& edge : edges_of(faces)) {
        if (edge.from != edge.to && uses[key(edge)] == 1) { outer.push_back(edge); }
    }
    return outer;
}

void lift_faces(Session* session, Model* model, const LayerPrimitives& faces, const PointCopies& copies) {
    for (const int32_t slot : faces.triangles) {
        Triangle* triangle = list_at<Triangle>(&faces.layer->triangles, slot, 0);
        session_forget_triangle(session, triangle);
        change_slot(model, faces.layer, CONTENT_TRIANGLES, slot);
        *triangle = copies.of(*triangle);
    }
    for (const int32_t slot : faces.polygons) {
        Polygon* polygon = list_at<Polygon>(&faces.layer->polygons, slot, 0);
        change_slot(model, faces.layer, CONTENT_POLYGONS, slot);
        const std::vector<PolygonVertex> strip = copies.of(*polygon);
        size_t i = 0;
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
            if (i < strip.size()) { vertex = strip[i++]; }
        }
    }
}

void add_sides(Model* model, LayerPrimitives* faces, const std::vector<FaceEdge>& edges, const PointCopies& copies,
               MadeParts* made) {
    for (const FaceEdge& edge : edges) {
        const Triangle side = triangle_of_outline({edge.from, edge.to, copies.of(edge.to), copies.of(edge.from)}, 0);
        const Triangle* added = layer_append_triangle(model, faces->layer, side);
        faces->triangles.push_back(list_slot_of_element(&faces->layer->triangles, added));
        made->primitives.push_back({PrimitiveKind::TRIANGLE, added->id});
    }
    std::sort(faces->triangles.begin(), faces->triangles.end());
}

// Of the points, those that no primitive names in any way.
std::vector<int32_t> unused_points(Model* model, const std::vector<int32_t>& ids) {
    CornerSet on_lines;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Line& line : list_elements<Line>(layer.lines)) {
            for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { on_lines.add(line_point_id(stored)); }
        }
    }
    std::vector<int32_t> unused = points_of_these_alone(model, {}, ids);
    std::erase_if(unused, [&](int32_t id) { return on_lines.has(static_cast<int16_t>(id)); });
    return unused;
}

MadeParts extrude(Session* session, Model* model, const std::vector<PrimitivePlace>& places, const Vec3& by) {
    std::vector<LayerPrimitives> faces = primitives_at(model, places);
    const std::vector<int32_t> old = corners_of(model, faces);
    std::vector<std::vector<FaceEdge>> edges;
    for (const LayerPrimitives& each : faces) { edges.push_back(outer_edges(each, faces)); }
    change_model(model);
    const PointCopies copies(model, old, by);
    MadeParts made{copies.made(), {}};
    Changed changed{copies.made(), {}};
    for (size_t i = 0; i < faces.size(); ++i) {
        copies.copy_uvees(model, faces[i].layer);
        lift_faces(session, model, faces[i], copies);
        add_sides(model, &faces[i], edges[i], copies, &made);
        changed.layers.push_back(faces[i].layer);
    }
    remove_points(session, model, unused_points(model, old));
    std::vector<int32_t> around = old;
    around.insert(around.end(), copies.made().begin(), copies.made().end());
    const std::vector<int32_t> fresh = points_of_these_alone(model, faces, around);
    make_normals(model, fresh);
    changed.points.insert(changed.points.end(), fresh.begin(), fresh.end());
    settle_model(session, model, changed);
    return made;
}

}  // namespace

bool edit_duplicate_points(Session* session, Model* model, const std::vector<int32_t>& ids, MadeParts* made,
                           EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused) || !has_ids(model, ids.size(), refused)) { return false; }
    for (Model* target : targets) {
        const MadeParts parts = duplicate(session, target, ids, primitives_inside(target, ids));
        if (target == model) { *made = parts; }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_duplicate_primitives(Session* session, Model* model, const std::vector<PrimitiveName>& names, MadeParts* made,
                               EditRefusal* refused) {
    std::vector<Model*> targets;
    std::vector<PrimitivePlace> places;
    if (!edit_targets(session, model, &targets, refused) || !find_primitives(model, names, &places, refused) ||
        !has_ids(model, corners_of(model, primitives_at(model, places)).size(), refused)) {
        return false;
    }
    for (Model* target : targets) {
        const std::vector<LayerPrimitives> primitives = primitives_at(target, places);
        const MadeParts parts = duplicate(session, target, corners_of(target, primitives), primitives);
        if (target == model) { *made = parts; }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_extrude(Session* session, Model* model, const std::vector<PrimitiveName>& names, const Vec3& by,
                  MadeParts* made, EditRefusal* refused) {
    std::vector<Model*> targets;
    std::vector<PrimitivePlace> places;
    if (!edit_targets(session, model, &targets, refused) || !find_primitives(model, names, &places, refused) ||
        !has_ids(model, corners_of(model, primitives_at(model, places)).size(), refused)) {
        return false;
    }
    for (Model* target : targets) {
        const MadeParts parts = extrude(session, target, places, by);
        if (target == model) { *made = parts; }
    }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
