// Copying out of a model. What surprises: a face needs more points than its corners, since a normal and the control of
// a curve are named by the points that lend them.
#include <algorithm>
#include <map>
#include <set>

#include "edit/clipboard.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr const char* WORLD = "world";

struct Copier {
    const Model* model;
    Clipboard* clipboard;
    EditRefusal* refused;
    std::set<int32_t> points;
    std::set<std::string> joints;
};

bool has_point(const Copier& copier, int32_t id) { return list_find<Point>(&copier.model->points, id) != nullptr; }

bool need_point(Copier* copier, int32_t id) {
    if (!has_point(*copier, id)) {
        return edit_refuse(copier->refused, EDIT_STATE,
                           "point " + std::to_string(id) + " of a face or line is none of the model itself");
    }
    copier->points.insert(id);
    return true;
}

// What lends only a normal or bends an edge is replaced by the corner where it is not there.
int16_t lender(Copier* copier, int16_t id, int16_t corner) {
    if (!has_point(*copier, id)) { return corner; }
    copier->points.insert(id);
    return id;
}

bool copy_triangle(Copier* copier, const Triangle& triangle, CopiedLayer* layer) {
    Triangle copy = triangle;
    const int corners = triangle_corners(&triangle);
    const int* ends = triangle_edge_ends(&triangle);
    for (int i = 0; i < corners; ++i) {
        if (!need_point(copier, triangle.points[i])) { return false; }
        copy.normals[i] = lender(copier, triangle.normals[i], triangle.points[i]);
    }
    for (int i = 0; triangle.curve_type != 0 && i < 2 * corners; ++i) {
        copy.controls[i] = lender(copier, triangle.controls[i], triangle.points[ends[i]]);
    }
    layer->triangles.push_back(copy);
    return true;
}

bool copy_polygon(Copier* copier, const Polygon& polygon, CopiedLayer* layer) {
    std::vector<PolygonVertex> strip = polygon_strip(polygon);
    for (PolygonVertex& vertex : strip) {
        if (!need_point(copier, vertex.point)) { return false; }
        vertex.normal = lender(copier, vertex.normal, vertex.point);
    }
    layer->polygons.push_back(strip);
    return true;
}

bool copy_line(Copier* copier, const Line& line, CopiedLayer* layer) {
    std::vector<int32_t> ids;
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
        ids.push_back(line_point_id(stored));
        if (!need_point(copier, ids.back())) { return false; }
    }
    layer->lines.push_back(ids);
    return true;
}

CopiedLayer copy_settings(const Model* model, const Layer& layer, bool whole) {
    CopiedLayer copy{};
    copy.settings = layer;
    for (KeyedList* list : {&copy.settings.triangles, &copy.settings.polygons, &copy.settings.lines,
                            &copy.settings.uvees, &copy.settings.images}) {
        *list = KeyedList{};
    }
    copy.whole = whole;
    const LayerImage* image = layer_first_image(&layer);
    for (size_t slot = 0; image != nullptr && slot < copy.images.size(); ++slot) {
        if (image->names[slot][0] != '\0') { copy.images[slot] = model_file_path(model, image->names[slot]); }
    }
    copy.reflection = image != nullptr ? image->reflection : 0.0f;
    return copy;
}

// The primitives of a list that are wanted, all of a whole layer.
template <typename Primitive, typename Copy>
bool copy_those(Copier* copier, const KeyedList& list, const std::set<int32_t>& wanted, CopiedLayer* layer, Copy copy) {
    for (const Primitive& primitive : list_elements<Primitive>(list)) {
        if ((layer->whole || wanted.count(primitive.id) != 0) && !copy(copier, primitive, layer)) { return false; }
    }
    return true;
}

std::set<int32_t> corners_of(const CopiedLayer& layer) {
    std::set<int32_t> corners;
    for (const Triangle& triangle : layer.triangles) {
        corners.insert(triangle.points, triangle.points + triangle_corners(&triangle));
    }
    for (const std::vector<PolygonVertex>& polygon : layer.polygons) {
        for (const PolygonVertex& vertex : polygon) { corners.insert(vertex.point); }
    }
    return corners;
}

using WantedIds = std::map<PrimitiveKind, std::set<int32_t>>;

bool copy_layer(Copier* copier, const Layer& layer, bool whole, WantedIds& wanted) {
    CopiedLayer copy = copy_settings(copier->model, layer, whole);
    if (!copy_those<Triangle>(copier, layer.triangles, wanted[PrimitiveKind::TRIANGLE], &copy, copy_triangle) ||
        !copy_those<Polygon>(copier, layer.polygons, wanted[PrimitiveKind::POLYGON], &copy, copy_polygon) ||
        !copy_those<Line>(copier, layer.lines, wanted[PrimitiveKind::LINE], &copy, copy_line)) {
        return false;
    }
    const bool empty = copy.triangles.empty() && copy.polygons.empty() && copy.lines.empty();
    if (empty && !whole) { return true; }
    const std::set<int32_t> corners = corners_of(copy);
    for (const Uvee& uvee : list_elements<Uvee>(layer.uvees)) {
        if (!has_point(*copier, uvee.point) || !(whole || corners.count(uvee.point) != 0)) { continue; }
        copier->points.insert(uvee.point);
        copy.uvees.push_back(uvee);
    }
    copier->clipboard->layers.push_back(copy);
    return true;
}

// The joint and those above it, which come first.
std::string copy_joint(Copier* copier, const Joint* joint) {
    if (joint == nullptr || str_equal(joint->name, WORLD)) { return {}; }
    std::vector<const Joint*> chain;
    while (joint != nullptr && copier->joints.insert(joint->name).second) {
        chain.push_back(joint);
        joint = model_find_joint(copier->model, joint->parent_name);
    }
    for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
        copier->clipboard->joints.push_back({(*each)->name, (*each)->parent_name, (*each)->position});
    }
    return chain.empty() ? std::string() : chain[0]->name;
}

void copy_points(Copier* copier) {
    for (const int32_t id : copier->points) {
        const Point* point = list_find<Point>(&copier->model->points, id);
        CopiedPoint copy{id, *point, {}, {}};
        copy.record.joint_a = copy.record.joint_b = nullptr;
        copy.record.state_index = -1;
        for (const auto& [joint, name] : {std::pair{point->joint_a, &copy.joint_a}, {point->joint_b, &copy.joint_b}}) {
            copy_joint(copier, joint);
            if (joint != nullptr) { *name = joint->name; }
        }
        copier->clipboard->points.push_back(copy);
    }
}

}  // namespace

bool edit_copy(const Model* model, const CopyRequest& wanted, Clipboard* clipboard, EditRefusal* refused) {
    std::vector<PrimitivePlace> places;
    if (!find_primitives(model, wanted.primitives, &places, refused)) { return false; }
    Clipboard copied{model->has_normals != 0, model->has_gouraud != 0, {}, {}, {}};
    Copier copier{model, &copied, refused, {wanted.points.begin(), wanted.points.end()}, {}};
    WantedIds ids;
    for (const PrimitiveName& name : wanted.primitives) { ids[name.kind].insert(name.id); }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        const bool whole = std::find(wanted.layers.begin(), wanted.layers.end(), &layer) != wanted.layers.end();
        if (!copy_layer(&copier, layer, whole, ids)) { return false; }
    }
    copy_points(&copier);
    *clipboard = std::move(copied);
    return true;
}

}  // namespace pelt
