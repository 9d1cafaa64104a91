// Welding. Each primitive that names a point that goes names the first one instead, and is then made to fit what
// corners it has left.
#include "edit/weld.h"

#include <algorithm>
#include <array>

#include "edit/delete_parts.h"
#include "edit/settle.h"
#include "scene/append.h"
#include "scene/change.h"

namespace pelt {

namespace {

struct Weld {
    Session* session;
    Model* model;
    int16_t stays;
    CornerSet goes;

    int16_t operator()(int16_t id) const { return goes.has(id) ? stays : id; }
};

bool names_any(const Triangle& triangle, const CornerSet& ids) {
    const int corners = triangle_corners(&triangle);
    const auto has = [&](int16_t id) { return ids.has(id); };
    return triangle_touches(triangle, ids) || std::any_of(triangle.normals, triangle.normals + corners, has) ||
           (triangle.curve_type != 0 && std::any_of(triangle.controls, triangle.controls + 2 * corners, has));
}

void rename_in(const Weld& weld, Triangle* triangle) {
    for (int16_t& id : triangle->points) { id = weld(id); }
    for (int16_t& id : triangle->normals) { id = weld(id); }
    for (int16_t& id : triangle->controls) { id = weld(id); }
}

// ---- quads that lose a corner ----

constexpr int OUTLINE[] = {0, 1, 3, 2};

// A corner of the triangle that a quad becomes: the corners of the quad that it stands for, one or two of them.
struct KeptCorner {
    int first;
    int last;
    bool is(int corner) const { return corner == first || corner == last; }
};

// The corner after the one that stands for two comes second, so that the merged one is 0.
std::array<KeptCorner, 3> kept_corners(int merged_first) {
    const auto at = [](int place) { return OUTLINE[place % 4]; };
    return {{{at(merged_first), at(merged_first + 1)},
             {at(merged_first + 2), at(merged_first + 2)},
             {at(merged_first + 3), at(merged_first + 3)}}};
}

bool is_curved_edge(const Triangle& quad, int merged_first) {
    return quad.curve_type == 4 || (quad.curve_type == 2 && merged_first % 2 == 0);
}

// Of a quad that curves along two sides one or both are left, beside the corner that both lead to or across from it.
int16_t curve_left(const Triangle& quad, int merged_first, std::array<KeptCorner, 3>* corners) {
    if (quad.curve_type == 0 || quad.curve_type == 4) { return quad.curve_type == 0 ? 0 : 3; }
    if (!is_curved_edge(quad, merged_first)) { return 2; }
    std::rotate(corners->begin(), corners->begin() + 1, corners->end());
    return 1;
}

int16_t control_left(const Triangle& quad, const KeptCorner& at, const KeptCorner& towards) {
    const int* ends = triangle_edge_ends(&quad);
    for (int i = 0; i < 8; ++i) {
        if (at.is(ends[i]) && towards.is(ends[i ^ 1])) { return quad.controls[i]; }
    }
    return quad.points[at.first];
}

void become_triangle(Triangle* triangle, int merged_first) {
    const Triangle quad = *triangle;
    std::array<KeptCorner, 3> corners = kept_corners(merged_first);
    triangle->curve_type = curve_left(quad, merged_first, &corners);
    triangle->quad = 0;
    for (size_t i = 0; i < corners.size(); ++i) {
        const int from = corners[i].first;
        triangle->points[i] = quad.points[from];
        triangle->normals[i] = quad.normals[from];
        std::copy(quad.uvs[from], quad.uvs[from] + 2, triangle->uvs[i]);
    }
    triangle->points[3] = triangle->normals[3] = 0;
    triangle->uvs[3][0] = triangle->uvs[3][1] = 0.0f;
    std::fill(std::begin(triangle->controls), std::end(triangle->controls), int16_t{0});
    const int* ends = triangle_edge_ends(triangle);
    for (int i = 0; i < 6 && triangle->curve_type != 0; ++i) {
        triangle->controls[i] =
            control_left(quad, corners[static_cast<size_t>(ends[i])], corners[static_cast<size_t>(ends[i ^ 1])]);
    }
}

// Fits the record to its corners; false when it has to go.
bool fit(Triangle* triangle) {
    const int16_t* p = triangle->points;
    if (!triangle->quad) { return p[0] != p[1] && p[1] != p[2] && p[2] != p[0]; }
    if (p[0] == p[3] || p[1] == p[2]) { return false; }  // folded along a diagonal
    int merged = 0, merged_first = 0;
    for (int place = 0; place < 4; ++place) {
        if (p[OUTLINE[place]] != p[OUTLINE[(place + 1) % 4]]) { continue; }
        ++merged;
        merged_first = place;
    }
    if (merged > 1) { return false; }
    if (merged == 1) { become_triangle(triangle, merged_first); }
    return true;
}

// ---- layers ----

void weld_triangles(const Weld& weld, Layer* layer) {
    const auto triangles = list_elements<Triangle>(layer->triangles);
    for (auto each = triangles.begin(); each != triangles.end(); ++each) {
        if (!names_any(*each, weld.goes)) { continue; }
        Triangle welded = *each;
        rename_in(weld, &welded);
        const bool stays = fit(&welded);
        session_forget_triangle(weld.session, &*each);
        if (!stays) {
            layer_remove_triangle(weld.model, layer, each.slot());
            continue;
        }
        welded.state_index = -1;
        change_slot(weld.model, layer, CONTENT_TRIANGLES, each.slot());
        *each = welded;
    }
}

// The triangles that a strip is made of, without those that have two corners in one place.
std::vector<Triangle> triangles_of(const std::vector<PolygonVertex>& strip) {
    std::vector<Triangle> triangles;
    for (size_t i = 0; i + 2 < strip.size(); ++i) {
        const size_t turned = i % 2;
        const PolygonVertex corners[3] = {strip[i + turned], strip[i + 1 - turned], strip[i + 2]};
        Triangle triangle{};
        triangle.state_index = -1;
        for (int corner = 0; corner < 3; ++corner) {
            triangle.points[corner] = corners[corner].point;
            triangle.normals[corner] = corners[corner].normal;
            triangle.uvs[corner][0] = corners[corner].u;
            triangle.uvs[corner][1] = corners[corner].v;
        }
        if (fit(&triangle)) { triangles.push_back(triangle); }
    }
    return triangles;
}

void weld_polygons(const Weld& weld, Layer* layer) {
    const auto polygons = list_elements<Polygon>(layer->polygons);
    for (auto each = polygons.begin(); each != polygons.end(); ++each) {
        std::vector<PolygonVertex> strip = polygon_strip(*each);
        bool named = false, corner_goes = false;
        for (PolygonVertex& vertex : strip) {
            corner_goes |= weld.goes.has(vertex.point);
            named |= weld.goes.has(vertex.point) || weld.goes.has(vertex.normal);
            vertex.point = weld(vertex.point);
            vertex.normal = weld(vertex.normal);
        }
        if (!named) { continue; }
        const std::vector<Triangle> left = triangles_of(strip);
        if (corner_goes && left.size() + 2 < strip.size()) {
            layer_remove_polygon(weld.model, layer, each.slot());
            for (const Triangle& triangle : left) { layer_append_triangle(weld.model, layer, triangle); }
            continue;
        }
        change_slot(weld.model, layer, CONTENT_POLYGONS, each.slot());
        size_t i = 0;
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(each->vertices)) {
            if (i < strip.size()) { vertex = strip[i++]; }
        }
    }
}

void weld_lines(const Weld& weld, Layer* layer) {
    const auto lines = list_elements<Line>(layer->lines);
    for (auto each = lines.begin(); each != lines.end(); ++each) {
        if (!line_touches(*each, weld.goes)) { continue; }
        std::vector<int32_t> points;
        for (const int32_t& stored : list_elements<int32_t>(each->vertices)) {
            const int32_t id = weld(static_cast<int16_t>(line_point_id(stored)));
            if (points.empty() || points.back() != id) { points.push_back(id); }
        }
        if (points.size() < 2) {
            layer_remove_line(weld.model, layer, each.slot());
            continue;
        }
        change_slot(weld.model, layer, CONTENT_LINES, each.slot());
        list_clear(&each->vertices);
        for (const int32_t id : points) { *list_add<int32_t>(&each->vertices, 0) = id; }
        each->vertex_count = static_cast<int16_t>(points.size());
    }
}

// The point that stays takes a texture coordinate over where it has none of its own.
void weld_uvees(const Weld& weld, Layer* layer, const std::vector<int32_t>& goes) {
    for (const int32_t id : goes) {
        const Uvee* uvee = list_find<Uvee>(&layer->uvees, id);
        if (uvee == nullptr || list_find(&layer->uvees, int32_t{weld.stays}) != nullptr) { continue; }
        layer_append_uvee(weld.model, layer, {weld.stays, uvee->u, uvee->v});
    }
}

void weld_points(Session* session, Model* model, const std::vector<int32_t>& ids) {
    const std::vector<int32_t> goes(ids.begin() + 1, ids.end());
    const Weld weld{session, model, static_cast<int16_t>(ids.front()), corner_set(goes)};
    Changed changed{{ids.front()}, {}};
    change_model(model);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        weld_triangles(weld, &layer);
        weld_polygons(weld, &layer);
        weld_lines(weld, &layer);
        weld_uvees(weld, &layer, goes);
        changed.layers.push_back(&layer);
    }
    remove_points(session, model, goes);
    settle_model(session, model, changed);
}

}  // namespace

bool edit_weld(Session* session, Model* model, const std::vector<int32_t>& ids, EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    if (ids.size() < 2) { return edit_refuse(refused, EDIT_ARGUMENT, "two or more points are needed to weld"); }
    if (ids.front() > POINT_ID_MOST) {
        return edit_refuse(refused, EDIT_STATE, "no face can name point " + std::to_string(ids.front()));
    }
    for (Model* target : targets) { weld_points(session, target, ids); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
