// Making faces and turning them over. What surprises: the corners of a quad stand in the order of a strip, as those of
// a polygon do, while a person goes around; and a curved face knows its curved edges by the places of its corners, so
// that not every way of turning it over keeps its shape.
#include "edit/make_face.h"

#include <algorithm>
#include <array>
#include <set>

#include "edit/rebuild_normals.h"
#include "edit/settle.h"
#include "scene/append.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr int CORNERS_MOST = 4;
constexpr int16_t CURVED_TWO_SIDES = 2;  // of a quad: edges 0 to 1 and 2 to 3

struct FormRule {
    size_t least, most;
    const char* allowed;
};

FormRule rule_of(FaceForm form) {
    switch (form) {
        case FaceForm::TRIANGLE: return {3, 3, "a triangle has three corners"};
        case FaceForm::QUAD: return {4, 4, "a quad has four corners"};
        case FaceForm::POLYGON: return {3, POLYGON_CORNERS_MOST, "a polygon has 3 to 255 corners"};
        default: return {3, 4, "a curved face has three or four corners"};
    }
}

bool check_wish(const Model* model, const FaceWish& wish, EditRefusal* refused) {
    const FormRule rule = rule_of(wish.form);
    const size_t count = wish.points.size();
    if (count < rule.least || count > rule.most) { return edit_refuse(refused, EDIT_ARGUMENT, rule.allowed); }
    for (const int32_t id : wish.points) {
        if (list_find(&model->points, id) == nullptr) {
            return edit_refuse(refused, EDIT_ARGUMENT, "there is no point " + std::to_string(id));
        }
        if (id > POINT_ID_MOST) {
            return edit_refuse(refused, EDIT_STATE, "no face can name point " + std::to_string(id));
        }
        if (std::count(wish.points.begin(), wish.points.end(), id) > 1) {
            return edit_refuse(refused, EDIT_ARGUMENT, "a face has point " + std::to_string(id) + " as a corner once");
        }
    }
    if (wish.form != FaceForm::CURVED) { return true; }
    const bool good = count == 3 ? wish.curve_type >= 1 && wish.curve_type <= 3
                                 : wish.curve_type == CURVED_TWO_SIDES || wish.curve_type == 4;
    return good ||
           edit_refuse(refused, EDIT_ARGUMENT, "a curved face of three corners has type 1, 2 or 3, of four 2 or 4");
}

// Of one model. The layer is told by its rank.
PrimitiveName add_face(Session* session, Model* model, int32_t layer_rank, const FaceWish& wish) {
    Layer* layer = list_at<Layer>(&model->layers, layer_rank, 1);
    std::vector<int16_t> outline;
    for (const int32_t id : wish.points) { outline.push_back(static_cast<int16_t>(id)); }
    change_model(model);
    LayerPrimitives added{layer, {}, {}, {}};
    PrimitiveName name{};
    if (wish.form == FaceForm::POLYGON) {
        std::vector<PolygonVertex> vertices;
        for (const int16_t id : strip_of_outline(outline)) { vertices.push_back({id, id, 0.0f, 0.0f}); }
        const Polygon* polygon = layer_append_polygon(model, layer, vertices);
        name = {PrimitiveKind::POLYGON, polygon->id};
        added.polygons.push_back(list_slot_of_element(&layer->polygons, polygon));
    } else {
        const auto type = static_cast<int16_t>(wish.form == FaceForm::CURVED ? wish.curve_type : 0);
        const Triangle* triangle = layer_append_triangle(model, layer, triangle_of_outline(outline, type));
        name = {PrimitiveKind::TRIANGLE, triangle->id};
        added.triangles.push_back(list_slot_of_element(&layer->triangles, triangle));
    }
    const std::vector<int32_t> fresh = points_of_these_alone(model, {added}, wish.points);
    make_normals(model, fresh);
    settle_model(session, model, {fresh, {layer}});
    return name;
}

int32_t rank_of(const Model* model, const Layer* wanted) {
    int32_t rank = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (&layer == wanted) { return rank; }
        ++rank;
    }
    return -1;
}

// ---- turning over ----

// Which corner comes to stand at each place. What is curved along some edges only keeps these where they are.
std::array<int, CORNERS_MOST> turned_places(const Triangle& triangle) {
    if (triangle.quad && triangle.curve_type == CURVED_TWO_SIDES) { return {1, 0, 3, 2}; }
    if (!triangle.quad && triangle.curve_type == 1) { return {1, 0, 2, 3}; }
    return {0, 2, 1, 3};
}

// The control at an end of an edge stays with its corner and its edge.
void turn_controls(const Triangle& from, const std::array<int, CORNERS_MOST>& places, Triangle* to) {
    const int* ends = triangle_edge_ends(&from);
    const int count = 2 * triangle_corners(&from);
    for (int i = 0; i < count; ++i) {
        const int own = places[static_cast<size_t>(ends[i])];
        const int other = places[static_cast<size_t>(ends[i ^ 1])];
        for (int k = 0; k < count; ++k) {
            if (ends[k] == own && ends[k ^ 1] == other) { to->controls[i] = from.controls[k]; }
        }
    }
}

void turn_triangle(Triangle* triangle) {
    const Triangle old = *triangle;
    const std::array<int, CORNERS_MOST> places = turned_places(old);
    for (int i = 0; i < triangle_corners(&old); ++i) {
        const int from = places[static_cast<size_t>(i)];
        triangle->points[i] = old.points[from];
        triangle->normals[i] = old.normals[from];
        std::copy(old.uvs[from], old.uvs[from] + 2, triangle->uvs[i]);
    }
    if (old.curve_type != 0) { turn_controls(old, places, triangle); }
}

// A strip of an odd number runs the other way when it is read backwards. In one of an even number the sides change
// places, which lays the edges between its triangles the other way; the middle two of four suffice.
void turn_strip(std::vector<PolygonVertex>* strip) {
    if (strip->size() % 2 != 0) {
        std::reverse(strip->begin(), strip->end());
    } else if (strip->size() == CORNERS_MOST) {
        std::swap((*strip)[1], (*strip)[2]);
    } else {
        for (size_t i = 0; i + 1 < strip->size(); i += 2) { std::swap((*strip)[i], (*strip)[i + 1]); }
    }
}

void turn_polygon(Polygon* polygon) {
    std::vector<PolygonVertex> strip = polygon_strip(*polygon);
    turn_strip(&strip);
    size_t i = 0;
    for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
        if (i < strip.size()) { vertex = strip[i++]; }
    }
}

void add_used(const LayerPrimitives& faces, std::set<int32_t>* used) {
    for (const int32_t slot : faces.triangles) {
        const Triangle* triangle = list_at<const Triangle>(&faces.layer->triangles, slot, 0);
        const int corners = triangle_corners(triangle);
        used->insert(triangle->normals, triangle->normals + corners);
        used->insert(triangle->points, triangle->points + corners);
    }
    for (const int32_t slot : faces.polygons) {
        const Polygon* polygon = list_at<const Polygon>(&faces.layer->polygons, slot, 0);
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
            used->insert(vertex.normal);
            used->insert(vertex.point);
        }
    }
}

std::vector<int32_t> turn_normals(Model* model, const std::vector<LayerPrimitives>& faces) {
    std::set<int32_t> used;
    for (const LayerPrimitives& each : faces) { add_used(each, &used); }
    const std::vector<int32_t> ids = points_of_these_alone(model, faces, {used.begin(), used.end()});
    for (const int32_t id : ids) {
        Point* point = list_find<Point>(&model->points, id);
        if (point == nullptr) { continue; }
        change_point(model, point);
        // Nothing is added to 0, so that no zero gets a sign.
        point->normal = {0.0f - point->normal.x, 0.0f - point->normal.y, 0.0f - point->normal.z};
    }
    return ids;
}

void flip(Session* session, Model* model, const std::vector<PrimitivePlace>& places) {
    const std::vector<LayerPrimitives> faces = primitives_at(model, places);
    Changed changed;
    change_model(model);
    for (const LayerPrimitives& each : faces) {
        for (const int32_t slot : each.triangles) {
            Triangle* triangle = list_at<Triangle>(&each.layer->triangles, slot, 0);
            session_forget_triangle(session, triangle);
            change_slot(model, each.layer, CONTENT_TRIANGLES, slot);
            turn_triangle(triangle);
        }
        for (const int32_t slot : each.polygons) {
            change_slot(model, each.layer, CONTENT_POLYGONS, slot);
            turn_polygon(list_at<Polygon>(&each.layer->polygons, slot, 0));
        }
        changed.layers.push_back(each.layer);
    }
    if (model->has_normals != 0) { changed.points = turn_normals(model, faces); }
    settle_model(session, model, changed);
}

}  // namespace

std::vector<int16_t> strip_of_outline(const std::vector<int16_t>& outline) {
    std::vector<int16_t> strip;
    size_t front = 1, back = outline.size();
    if (!outline.empty()) { strip.push_back(outline[0]); }
    while (front < back) {
        strip.push_back(outline[front++]);
        if (front < back) { strip.push_back(outline[--back]); }
    }
    return strip;
}

Triangle triangle_of_outline(const std::vector<int16_t>& outline, int16_t curve_type) {
    Triangle triangle{};
    const std::vector<int16_t> corners = strip_of_outline(outline);
    triangle.quad = corners.size() == CORNERS_MOST ? 1 : 0;
    triangle.curve_type = curve_type;
    const size_t count = triangle.quad ? 4 : 3;
    std::copy_n(corners.begin(), count, triangle.points);
    std::copy_n(corners.begin(), count, triangle.normals);
    const int* ends = triangle_edge_ends(&triangle);
    for (size_t i = 0; i < 2 * count && curve_type != 0; ++i) { triangle.controls[i] = triangle.points[ends[i]]; }
    triangle.state_index = -1;
    return triangle;
}

bool edit_add_face(Session* session, Model* model, const Layer* layer, const FaceWish& wish, PrimitiveName* made,
                   EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused) || !check_wish(model, wish, refused)) { return false; }
    const int32_t rank = rank_of(model, layer);
    if (rank < 0) { return edit_refuse(refused, EDIT_ARGUMENT, "the layer is none of the model"); }
    for (Model* target : targets) {
        const PrimitiveName name = add_face(session, target, rank, wish);
        if (target == model) { *made = name; }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_flip(Session* session, Model* model, const std::vector<PrimitiveName>& names, EditRefusal* refused) {
    std::vector<Model*> targets;
    std::vector<PrimitivePlace> places;
    if (!edit_targets(session, model, &targets, refused) || !find_primitives(model, names, &places, refused)) {
        return false;
    }
    for (Model* target : targets) { flip(session, target, places); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
