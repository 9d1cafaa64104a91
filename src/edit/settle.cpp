// What is derived from points and primitives is made anew where a change reached it, and nowhere else.
#include "edit/settle.h"

#include <algorithm>

#include "edit/bounds.h"
#include "formats/animation.h"
#include "formats/texture_map.h"
#include "motion/transform_state.h"
#include "scene/measure.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

// Whether the layer's texture coordinates may be others now. Run-time records of triangles hold what was known of their
// corners.
bool settle_triangles(Session* session, Layer* layer, const CornerSet& points) {
    bool touched = false;
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        if (!triangle_touches(triangle, points)) { continue; }
        touched = true;
        session_forget_triangle(session, &triangle);
    }
    return touched;
}

// The lines count too: they are part of the box that the texture is laid over.
bool touches_rest(const Layer& layer, const CornerSet& points) {
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        if (polygon_touches(polygon, points)) { return true; }
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        if (line_touches(line, points)) { return true; }
    }
    return false;
}

// The root whose animation moves the points of this model itself; only those of roots are moved.
bool is_posed(const Session* session, const Model* model) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (root.model == model) { return root.animation != nullptr && root.animation->enabled != 0; }
    }
    return false;
}

void pose_anew(Session* session, Model* model, const std::vector<int32_t>& ids) {
    const bool posed = is_posed(session, model);
    for (const int32_t id : ids) {
        Point* point = list_find<Point>(&model->points, id);
        if (point != nullptr && (posed || point->state_index != -1)) { point_pose_anew(session, model, point); }
    }
}

void grow_radius(Session* session, const Model* model) {
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        if (model_tree_holds(root.model, model)) { session_grow_radius(session, root.model); }
    }
}

}  // namespace

CornerSet corner_set(const std::vector<int32_t>& ids) {
    CornerSet set;
    for (const int32_t id : ids) { set.add(id); }
    return set;
}

bool polygon_touches(const Polygon& polygon, const CornerSet& points) {
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        if (points.has(vertex.point)) { return true; }
    }
    return false;
}

bool line_touches(const Line& line, const CornerSet& points) {
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
        if (points.has(static_cast<int16_t>(line_point_id(stored)))) { return true; }
    }
    return false;
}

void settle_model(Session* session, Model* model, const Changed& changed) {
    const CornerSet points = corner_set(changed.points);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const bool named = std::find(changed.layers.begin(), changed.layers.end(), &layer) != changed.layers.end();
        const bool touched = !changed.points.empty() && settle_triangles(session, &layer, points);
        if (layer_first_image(&layer) == nullptr) { continue; }
        if (named || touched || touches_rest(layer, points)) { layer_map(model, &layer); }
    }
    model_measure(model);
    pose_anew(session, model, changed.points);
    grow_radius(session, model);
}

}  // namespace pelt
