// Taking out. What is done to each model of a file is worked out from that model alone, so that all come out alike.
#include "edit/delete_parts.h"

#include <algorithm>

#include "edit/binding_counts.h"
#include "edit/settle.h"
#include "scene/append.h"
#include "scene/change.h"

namespace pelt {

namespace {

LayerPrimitives touched_primitives(Layer* layer, const CornerSet& points) {
    LayerPrimitives touched{layer, {}, {}, {}};
    const auto collect = [&](auto elements, auto touches, std::vector<int32_t>* slots) {
        for (auto each = elements.begin(); each != elements.end(); ++each) {
            if (touches(*each, points)) { slots->push_back(each.slot()); }
        }
    };
    collect(list_elements<Triangle>(layer->triangles), triangle_touches, &touched.triangles);
    collect(list_elements<Polygon>(layer->polygons), polygon_touches, &touched.polygons);
    collect(list_elements<Line>(layer->lines), line_touches, &touched.lines);
    return touched;
}

bool triangle_borrows(const Triangle& triangle, const CornerSet& points) {
    const int corners = triangle_corners(&triangle);
    const auto has = [&](int16_t id) { return points.has(id); };
    return std::any_of(triangle.normals, triangle.normals + corners, has) ||
           (triangle.curve_type != 0 && std::any_of(triangle.controls, triangle.controls + 2 * corners, has));
}

void return_to_corners(Triangle* triangle, const CornerSet& points) {
    const int* ends = triangle_edge_ends(triangle);
    for (int i = 0; i < triangle_corners(triangle); ++i) {
        if (points.has(triangle->normals[i])) { triangle->normals[i] = triangle->points[i]; }
    }
    for (int i = 0; i < 2 * triangle_corners(triangle) && triangle->curve_type != 0; ++i) {
        if (points.has(triangle->controls[i])) { triangle->controls[i] = triangle->points[ends[i]]; }
    }
}

bool polygon_borrows(const Polygon& polygon, const CornerSet& points) {
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        if (points.has(vertex.normal)) { return true; }
    }
    return false;
}

// What the points lend goes back to the corners.
void end_loans(Session* session, Model* model, Layer* layer, const CornerSet& points) {
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        if (!triangle_borrows(triangle, points)) { continue; }
        session_forget_triangle(session, &triangle);
        change_element(model, layer, CONTENT_TRIANGLES, &triangle);
        return_to_corners(&triangle, points);
    }
    for (Polygon& polygon : list_elements<Polygon>(layer->polygons)) {
        if (!polygon_borrows(polygon, points)) { continue; }
        change_element(model, layer, CONTENT_POLYGONS, &polygon);
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            if (points.has(vertex.normal)) { vertex.normal = vertex.point; }
        }
    }
}

DeletedParts count_of(const LayerPrimitives& primitives) {
    return {0, static_cast<int32_t>(primitives.triangles.size() + primitives.polygons.size()),
            static_cast<int32_t>(primitives.lines.size()), 0};
}

DeletedParts delete_points(Session* session, Model* model, const std::vector<int32_t>& ids) {
    const CornerSet points = corner_set(ids);
    DeletedParts deleted{static_cast<int32_t>(ids.size()), 0, 0, 0};
    Changed changed;
    change_model(model);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const LayerPrimitives going = touched_primitives(&layer, points);
        const DeletedParts count = count_of(going);
        deleted.faces += count.faces;
        deleted.lines += count.lines;
        if (count.faces + count.lines > 0) { changed.layers.push_back(&layer); }
        remove_primitives(session, model, going);
        end_loans(session, model, &layer, points);
    }
    remove_points(session, model, ids);
    settle_model(session, model, changed);
    return deleted;
}

DeletedParts delete_primitives(Session* session, Model* model, const std::vector<PrimitivePlace>& places) {
    DeletedParts deleted{};
    Changed changed;
    change_model(model);
    for (const LayerPrimitives& going : primitives_at(model, places)) {
        const DeletedParts count = count_of(going);
        deleted.faces += count.faces;
        deleted.lines += count.lines;
        changed.layers.push_back(going.layer);
        remove_primitives(session, model, going);
    }
    settle_model(session, model, changed);
    return deleted;
}

// The ranks rise, so that those in front are right until they go.
DeletedParts delete_layers(Session* session, Model* model, const std::vector<int32_t>& ranks) {
    DeletedParts deleted{};
    change_model(model);
    for (auto rank = ranks.rbegin(); rank != ranks.rend(); ++rank) {
        Layer* layer = list_at<Layer>(&model->layers, *rank, 1);
        deleted.faces += list_count(&layer->triangles) + list_count(&layer->polygons);
        deleted.lines += list_count(&layer->lines);
        ++deleted.layers;
        session_forget_layer(session, layer);
        model_delete_layer_slot(model, list_slot_of_element(&model->layers, layer));
    }
    settle_model(session, model, {});
    return deleted;
}

}  // namespace

void remove_primitives(Session* session, Model* model, const LayerPrimitives& primitives) {
    for (const int32_t slot : primitives.triangles) {
        session_forget_triangle(session, list_at<Triangle>(&primitives.layer->triangles, slot, 0));
        layer_remove_triangle(model, primitives.layer, slot);
    }
    for (const int32_t slot : primitives.polygons) { layer_remove_polygon(model, primitives.layer, slot); }
    for (const int32_t slot : primitives.lines) { layer_remove_line(model, primitives.layer, slot); }
}

void remove_points(Session* session, Model* model, const std::vector<int32_t>& ids) {
    lower_counts(model, point_counters(model, ids));
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (const int32_t id : ids) {
            const int32_t slot = list_index_of(&layer.uvees, id, 0);
            if (slot >= 0) { layer_remove_uvee(model, &layer, slot); }
        }
    }
    for (const int32_t id : ids) {
        session_forget_point(session, list_find<Point>(&model->points, id));
        change_key(model, nullptr, CONTENT_POINTS, id);
        list_remove(&model->points, id);
    }
}

bool edit_delete_points(Session* session, Model* model, const std::vector<int32_t>& ids, DeletedParts* deleted,
                        EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    for (const int32_t id : ids) {
        if (list_find(&model->points, id) == nullptr) {
            return edit_refuse(refused, EDIT_ARGUMENT, "there is no point " + std::to_string(id));
        }
    }
    for (Model* target : targets) { *deleted = delete_points(session, target, ids); }
    models_changed_alike(targets);
    return true;
}

bool edit_delete_primitives(Session* session, Model* model, const std::vector<PrimitiveName>& names,
                            DeletedParts* deleted, EditRefusal* refused) {
    std::vector<Model*> targets;
    std::vector<PrimitivePlace> places;
    if (!edit_targets(session, model, &targets, refused) || !find_primitives(model, names, &places, refused)) {
        return false;
    }
    for (Model* target : targets) { *deleted = delete_primitives(session, target, places); }
    models_changed_alike(targets);
    return true;
}

bool edit_delete_layers(Session* session, Model* model, const std::vector<const Layer*>& layers, DeletedParts* deleted,
                        EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    std::vector<int32_t> ranks;
    int32_t rank = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (std::find(layers.begin(), layers.end(), &layer) != layers.end()) { ranks.push_back(rank); }
        ++rank;
    }
    for (Model* target : targets) { *deleted = delete_layers(session, target, ranks); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
