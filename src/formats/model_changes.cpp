// Compares two models as a person would tell the difference.
//
// What surprises: what is compared here is compared once more, place by place, by model_difference. Whatever it finds
// and nobody here has a word for comes out as its own sentence, so that a difference is never kept quiet.
#include "formats/model_changes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "formats/model_compare.h"
#include "formats/model_writer.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* NONE = "none";

std::string told(int64_t value) { return std::to_string(value); }
std::string told(double value) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, static_cast<float>(value)).ptr);
}
std::string told(const Vec3& v) { return told(double{v.x}) + " " + told(double{v.y}) + " " + told(double{v.z}); }
std::string told(const int32_t (&colour)[3]) {
    return told(int64_t{colour[0]}) + " " + told(int64_t{colour[1]}) + " " + told(int64_t{colour[2]});
}
std::string told(const char* text) { return text[0] != '\0' ? text : NONE; }
std::string mirror_text(const Layer& layer) { return layer.mirror ? axis_word(layer.mirror_axis) : NONE; }

using Parts = std::vector<ModelChangePart>;

void count_part(Parts* parts, ChangeKind kind, const char* what, int64_t count) {
    if (count > 0) { parts->push_back({kind, what, count, 0, {}, {}}); }
}
void move_part(Parts* parts, const char* what, int64_t count, double distance) {
    if (count > 0) { parts->push_back({CHANGE_MOVED, what, count, distance, {}, {}}); }
}
void set_part(Parts* parts, const char* what, const std::string& from, const std::string& to) {
    if (from != to) { parts->push_back({CHANGE_SET, what, 0, 0, from, to}); }
}
void order_part(Parts* parts, const char* what) { parts->push_back({CHANGE_REORDERED, what, 0, 0, {}, {}}); }

void add_change(std::vector<ModelChange>* changes, const char* subject, const std::string& name, Parts parts) {
    if (!parts.empty()) { changes->push_back({subject, name, std::move(parts)}); }
}

double distance_of(const Vec3& a, const Vec3& b) {
    return std::hypot(double{b.x} - a.x, double{b.y} - a.y, double{b.z} - a.z);
}

template <typename Element>
std::vector<const Element*> elements_of(const KeyedList& list) {
    std::vector<const Element*> elements;
    for (const Element& element : list_elements<Element>(list)) { elements.push_back(&element); }
    return elements;
}

// What stands in both, in the first alone and in the second alone, by names; the same name several times is paired in
// its order.
template <typename Element>
struct Pairs {
    std::vector<std::pair<const Element*, const Element*>> both;
    std::vector<const Element*> removed;
    std::vector<const Element*> added;
    bool reordered = false;
};

template <typename Element>
Pairs<Element> pair_by_name(const KeyedList& from, const KeyedList& to) {
    std::unordered_map<std::string, std::vector<const Element*>> waiting;
    const std::vector<const Element*> first = elements_of<Element>(from);
    for (auto element = first.rbegin(); element != first.rend(); ++element) {
        waiting[(*element)->name].push_back(*element);
    }
    Pairs<Element> pairs;
    std::unordered_map<const Element*, size_t> rank;
    for (size_t i = 0; i < first.size(); ++i) { rank[first[i]] = i; }
    size_t highest = 0;
    for (const Element* element : elements_of<Element>(to)) {
        auto& same_name = waiting[element->name];
        if (same_name.empty()) {
            pairs.added.push_back(element);
            continue;
        }
        pairs.both.push_back({same_name.back(), element});
        pairs.reordered = pairs.reordered || rank[same_name.back()] < highest;
        highest = std::max(highest, rank[same_name.back()]);
        same_name.pop_back();
    }
    for (const Element* element : first) {
        const auto& left = waiting[element->name];
        if (std::find(left.begin(), left.end(), element) != left.end()) { pairs.removed.push_back(element); }
    }
    return pairs;
}

// ---- faces and lines ----

// What a primitive is by the file, as bytes: its corners first, then what else decides about it.
struct Shape {
    std::string corners;
    std::string rest;
    auto operator<=>(const Shape&) const = default;
};

void append_ids(std::string* bytes, const int16_t* ids, int count) {
    bytes->append(reinterpret_cast<const char*>(ids), sizeof *ids * static_cast<size_t>(count));
}

std::vector<Shape> face_shapes(const Layer& layer) {
    std::vector<Shape> shapes;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        const int corners = triangle_corners(&triangle);
        Shape shape{triangle.quad ? "q" : "t", std::to_string(triangle.curve_type) + ":"};
        append_ids(&shape.corners, triangle.points, corners);
        append_ids(&shape.rest, triangle.normals, corners);
        if (triangle.curve_type != 0) { append_ids(&shape.rest, triangle.controls, 2 * corners); }
        shapes.push_back(std::move(shape));
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        Shape shape{"p", {}};
        for (const PolygonVertex& vertex : polygon_strip(polygon)) {
            append_ids(&shape.corners, &vertex.point, 1);
            append_ids(&shape.rest, &vertex.normal, 1);
        }
        shapes.push_back(std::move(shape));
    }
    return shapes;
}

std::vector<Shape> line_shapes(const Layer& layer) {
    std::vector<Shape> shapes;
    for (const Line& line : list_elements<Line>(layer.lines)) {
        Shape shape{"l", {}};
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            const auto id = static_cast<int16_t>(line_point_id(stored));
            append_ids(&shape.corners, &id, 1);
        }
        shapes.push_back(std::move(shape));
    }
    return shapes;
}

// How many of what is gone stand there again with the same corners and something else about them.
int64_t altered_shapes(const std::vector<Shape>& removed, const std::vector<Shape>& added) {
    std::unordered_map<std::string, int64_t> gone;
    for (const Shape& shape : removed) { ++gone[shape.corners]; }
    int64_t altered = 0;
    for (const Shape& shape : added) {
        const auto same = gone.find(shape.corners);
        if (same != gone.end() && same->second > 0) {
            --same->second;
            ++altered;
        }
    }
    return altered;
}

void compare_shapes(Parts* parts, const char* what, const char* plural, std::vector<Shape> from,
                    std::vector<Shape> to) {
    if (from == to) { return; }
    std::sort(from.begin(), from.end());
    std::sort(to.begin(), to.end());
    std::vector<Shape> removed;
    std::vector<Shape> added;
    std::set_difference(from.begin(), from.end(), to.begin(), to.end(), std::back_inserter(removed));
    std::set_difference(to.begin(), to.end(), from.begin(), from.end(), std::back_inserter(added));
    if (removed.empty() && added.empty()) {
        order_part(parts, plural);
        return;
    }
    const int64_t altered = altered_shapes(removed, added);
    count_part(parts, CHANGE_ADDED, what, static_cast<int64_t>(added.size()) - altered);
    count_part(parts, CHANGE_REMOVED, what, static_cast<int64_t>(removed.size()) - altered);
    count_part(parts, CHANGE_ALTERED, what, altered);
}

// ---- points ----

struct MovedPoints {
    std::unordered_map<int32_t, double> by;  // distances by id
    std::unordered_set<int32_t> told;        // those that a layer has told of
};

MovedPoints moved_points(const Model& from, const Model& to) {
    MovedPoints moved;
    const auto points = list_elements<Point>(from.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const Point* other = list_find<Point>(&to.points, point.int_key());
        if (other != nullptr && std::memcmp(&point->position, &other->position, sizeof(Vec3)) != 0) {
            const double distance = distance_of(point->position, other->position);
            if (distance != 0) { moved.by[point.int_key()] = distance; }
        }
    }
    return moved;
}

void collect_ids(const Layer& layer, std::unordered_set<int32_t>* ids) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        ids->insert(triangle.points, triangle.points + triangle_corners(&triangle));
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : polygon_strip(polygon)) { ids->insert(vertex.point); }
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { ids->insert(line_point_id(stored)); }
    }
}

void compare_moves(Parts* parts, MovedPoints* moved, const Layer& from, const Layer& to) {
    if (moved->by.empty()) { return; }
    std::unordered_set<int32_t> used;
    collect_ids(from, &used);
    collect_ids(to, &used);
    int64_t count = 0;
    double distance = 0;
    for (const auto& [id, by] : moved->by) {
        if (used.count(id) != 0) {
            ++count;
            distance = std::max(distance, by);
            moved->told.insert(id);
        }
    }
    move_part(parts, "point", count, distance);
}

bool same_joint(const Joint* a, const Joint* b) {
    return (a == nullptr) == (b == nullptr) && (a == nullptr || str_equal(a->name, b->name));
}

// All about points but what their layers tell.
Parts compare_points(const Model& from, const Model& to, const MovedPoints& moved) {
    int64_t removed = 0;
    int64_t kept = 0;
    int64_t normals = 0;
    int64_t colours = 0;
    int64_t bindings = 0;
    const auto points = list_elements<Point>(from.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const Point* other = list_find<Point>(&to.points, point.int_key());
        if (other == nullptr) {
            ++removed;
            continue;
        }
        ++kept;
        normals += normals_match(point->normal, other->normal) ? 0 : 1;
        colours += std::memcmp(point->gouraud, other->gouraud, sizeof point->gouraud) != 0 ? 1 : 0;
        bindings += point->weight == other->weight && same_joint(point->joint_a, other->joint_a) &&
                            same_joint(point->joint_b, other->joint_b)
                        ? 0
                        : 1;
    }
    Parts parts;
    count_part(&parts, CHANGE_ADDED, "point", int64_t{list_count(&to.points)} - kept);
    count_part(&parts, CHANGE_REMOVED, "point", removed);
    int64_t unused = 0;
    double distance = 0;
    for (const auto& [id, by] : moved.by) {
        if (moved.told.count(id) == 0) {
            ++unused;
            distance = std::max(distance, by);
        }
    }
    move_part(&parts, "unused point", unused, distance);
    count_part(&parts, CHANGE_ALTERED, "normal", normals);
    count_part(&parts, CHANGE_ALTERED, "colour", colours);
    count_part(&parts, CHANGE_ALTERED, "binding", bindings);
    return parts;
}

// ---- layers ----

std::string key_text(const Layer& layer) { return layer.invisible ? told(layer.invisible_colour) : NONE; }

std::string axes_text(const Layer& layer) {
    return std::string(axis_word(layer.image_axis_u)) + " " + axis_word(layer.image_axis_v);
}

std::string repeat_text(const Layer& layer) {
    return layer.image_repeat ? told(double{layer.repeat_u}) + " " + told(double{layer.repeat_v}) : NONE;
}

void compare_images(Parts* parts, const Layer& from, const Layer& to) {
    static constexpr const char* KINDS[] = {"image", "mirror image", "reflection map"};
    static constexpr LayerImage NO_IMAGE{};
    const LayerImage* first = layer_first_image(&from);
    const LayerImage* second = layer_first_image(&to);
    const LayerImage& x = first != nullptr ? *first : NO_IMAGE;
    const LayerImage& y = second != nullptr ? *second : NO_IMAGE;
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        set_part(parts, KINDS[slot], told(+x.names[slot]), told(+y.names[slot]));
    }
    const auto in_both = [&](int slot) { return x.names[slot][0] != '\0' && y.names[slot][0] != '\0'; };
    if (in_both(IMAGE_SLOT_BASE)) {
        set_part(parts, "axes", axes_text(from), axes_text(to));
        set_part(parts, "repeat", repeat_text(from), repeat_text(to));
    }
    if (in_both(IMAGE_SLOT_REFLECTION)) {
        set_part(parts, "reflection", told(double{x.reflection}), told(double{y.reflection}));
    }
}

void compare_uvees(Parts* parts, const Layer& from, const Layer& to) {
    int64_t kept = 0;
    int64_t altered = 0;
    const auto uvees = list_elements<Uvee>(from.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        const Uvee* other = list_find<Uvee>(&to.uvees, uvee.int_key());
        if (other == nullptr) { continue; }
        ++kept;
        altered += uvee->u == other->u && uvee->v == other->v ? 0 : 1;
    }
    count_part(parts, CHANGE_ADDED, "texture coordinate", int64_t{list_count(&to.uvees)} - kept);
    count_part(parts, CHANGE_REMOVED, "texture coordinate", int64_t{list_count(&from.uvees)} - kept);
    count_part(parts, CHANGE_ALTERED, "texture coordinate", altered);
}

Parts compare_layers(const Layer& from, const Layer& to, MovedPoints* moved) {
    Parts parts;
    compare_moves(&parts, moved, from, to);
    compare_shapes(&parts, "face", "faces", face_shapes(from), face_shapes(to));
    compare_shapes(&parts, "line", "lines", line_shapes(from), line_shapes(to));
    set_part(&parts, "colour", told(from.colour), told(to.colour));
    set_part(&parts, "sides", from.singlesided ? "1" : "2", to.singlesided ? "1" : "2");
    set_part(&parts, "transparency", told(double{from.transparency}), told(double{to.transparency}));
    set_part(&parts, "mirror", mirror_text(from), mirror_text(to));
    set_part(&parts, "colour key", key_text(from), key_text(to));
    compare_images(&parts, from, to);
    compare_uvees(&parts, from, to);
    return parts;
}

int64_t face_count(const Layer& layer) { return int64_t{list_count(&layer.triangles)} + list_count(&layer.polygons); }

// Whether a layer that is gone is the one that came, but for its name: it has faces or lines, and they are the same.
bool is_renamed(const Layer& from, const Layer& to) {
    if (face_count(from) + list_count(&from.lines) == 0) { return false; }
    return face_count(from) == face_count(to) && list_count(&from.lines) == list_count(&to.lines) &&
           face_shapes(from) == face_shapes(to) && line_shapes(from) == line_shapes(to);
}

// A whole layer that came or went, with what is in it.
Parts whole_layer(ChangeKind kind, const Layer& layer) {
    Parts parts;
    parts.push_back({kind, "layer", 1, 0, {}, {}});
    count_part(&parts, kind, "face", face_count(layer));
    count_part(&parts, kind, "line", list_count(&layer.lines));
    return parts;
}

void compare_all_layers(std::vector<ModelChange>* changes, const Model& from, const Model& to, MovedPoints* moved) {
    Pairs<Layer> pairs = pair_by_name<Layer>(from.layers, to.layers);
    for (const auto& [old_layer, new_layer] : pairs.both) {
        add_change(changes, "layer", new_layer->name, compare_layers(*old_layer, *new_layer, moved));
    }
    for (const Layer* layer : pairs.removed) {
        const auto renamed = std::find_if(pairs.added.begin(), pairs.added.end(),
                                          [&](const Layer* other) { return is_renamed(*layer, *other); });
        if (renamed == pairs.added.end()) {
            add_change(changes, "layer", layer->name, whole_layer(CHANGE_REMOVED, *layer));
            continue;
        }
        Parts parts;
        set_part(&parts, "name", layer->name, (*renamed)->name);
        for (ModelChangePart& part : compare_layers(*layer, **renamed, moved)) { parts.push_back(std::move(part)); }
        add_change(changes, "layer", (*renamed)->name, std::move(parts));
        pairs.added.erase(renamed);
    }
    for (const Layer* layer : pairs.added) {
        add_change(changes, "layer", layer->name, whole_layer(CHANGE_ADDED, *layer));
    }
}

// ---- joints and children ----

Parts compare_joints(const Joint& from, const Joint& to) {
    Parts parts;
    const double distance = distance_of(from.position, to.position);
    if (distance != 0) { move_part(&parts, "joint", 1, distance); }
    set_part(&parts, "parent", from.parent_name, to.parent_name);
    return parts;
}

Parts compare_children(const ChildLink& from, const ChildLink& to) {
    Parts parts;
    const double distance = distance_of(from.position, to.position);
    if (distance != 0) { move_part(&parts, "child", 1, distance); }
    set_part(&parts, "scale", told(from.scale), told(to.scale));
    const auto turns = [](const ChildLink& link) {
        return told(+link.rotate[0]) + " " + told(+link.rotate[1]) + " " + told(+link.rotate[2]);
    };
    set_part(&parts, "rotation", turns(from), turns(to));
    return parts;
}

template <typename Element, typename Compare>
void compare_named(std::vector<ModelChange>* changes, const char* subject, const KeyedList& from, const KeyedList& to,
                   const Compare& compare) {
    const Pairs<Element> pairs = pair_by_name<Element>(from, to);
    for (const auto& [old_one, new_one] : pairs.both) {
        add_change(changes, subject, new_one->name, compare(*old_one, *new_one));
    }
    for (const Element* element : pairs.removed) {
        add_change(changes, subject, element->name, {{CHANGE_REMOVED, subject, 1, 0, {}, {}}});
    }
    for (const Element* element : pairs.added) {
        add_change(changes, subject, element->name, {{CHANGE_ADDED, subject, 1, 0, {}, {}}});
    }
}

Parts compare_flags(const Model& from, const Model& to) {
    const auto flag = [](int32_t value) { return value != 0 ? "on" : "off"; };
    Parts parts;
    set_part(&parts, "normals", flag(from.has_normals), flag(to.has_normals));
    set_part(&parts, "colours of points", flag(from.has_gouraud), flag(to.has_gouraud));
    const int64_t blends = int64_t{list_count(&to.blends)} - list_count(&from.blends);
    count_part(&parts, CHANGE_ADDED, "blend", blends);
    count_part(&parts, CHANGE_REMOVED, "blend", -blends);
    if (pair_by_name<Joint>(from.joints, to.joints).reordered) { order_part(&parts, "joints"); }
    if (pair_by_name<Layer>(from.layers, to.layers).reordered) { order_part(&parts, "layers"); }
    if (pair_by_name<ChildLink>(from.children, to.children).reordered) { order_part(&parts, "children"); }
    return parts;
}

std::string plural_of(const std::string& word) { return word + "s"; }

std::string part_text(const ModelChangePart& part) {
    const std::string counted = std::to_string(part.count) + " " + (part.count == 1 ? part.what : plural_of(part.what));
    switch (part.kind) {
        case CHANGE_ADDED: return counted + " added";
        case CHANGE_REMOVED: return counted + " removed";
        case CHANGE_MOVED: return counted + " moved by " + (part.count > 1 ? "up to " : "") + told(part.distance);
        case CHANGE_ALTERED: return counted + " changed";
        case CHANGE_SET: return part.what + " " + part.from + " to " + part.to;
        case CHANGE_REORDERED: return part.what + " in another order";
        case CHANGE_OTHER: return part.what;
    }
    return {};
}

// Of a part that is the thing itself.
std::string whole_text(const ModelChangePart& part) {
    if (part.kind == CHANGE_MOVED) { return "moved by " + told(part.distance); }
    return part.kind == CHANGE_ADDED ? "added" : "removed";
}

struct ModelReleaser {
    void operator()(Model* model) const { model_release(model); }
};

}  // namespace

std::vector<ModelChange> model_changes(const Model* from, const Model* to) {
    const std::unique_ptr<Model, ModelReleaser> nothing(model_create("", nullptr));
    const Model& a = from != nullptr ? *from : *nothing;
    const Model& b = to != nullptr ? *to : *nothing;
    std::vector<ModelChange> changes;
    const std::string difference = model_difference(&a, &b);
    if (difference.empty()) { return changes; }
    MovedPoints moved = moved_points(a, b);
    std::vector<ModelChange> layers;
    compare_all_layers(&layers, a, b, &moved);
    add_change(&changes, "model", {}, compare_flags(a, b));
    compare_named<Joint>(&changes, "joint", a.joints, b.joints, compare_joints);
    add_change(&changes, "points", {}, compare_points(a, b, moved));
    changes.insert(changes.end(), layers.begin(), layers.end());
    compare_named<ChildLink>(&changes, "child", a.children, b.children, compare_children);
    if (changes.empty()) { add_change(&changes, "model", {}, {{CHANGE_OTHER, difference, 0, 0, {}, {}}}); }
    return changes;
}

std::string model_change_text(const ModelChange& change) {
    std::string text = change.subject + (change.name.empty() ? "" : " " + change.name) + ": ";
    for (size_t i = 0; i < change.parts.size(); ++i) {
        const ModelChangePart& part = change.parts[i];
        text += (i > 0 ? ", " : "") + (part.what == change.subject ? whole_text(part) : part_text(part));
    }
    return text;
}

}  // namespace pelt
