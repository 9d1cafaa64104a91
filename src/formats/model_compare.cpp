// Compares two models field by field and stops at the first that differs.
//
// What surprises: nothing counts that has no effect, such as the axis of a mirror that is off, the key colour of a
// layer without a key, or the controls of a flat primitive.
#include "formats/model_compare.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

// The first difference found. Each note answers whether there is one by now, so that the next look can be left out.
struct Comparison {
    std::string difference;
    bool counts;
};

std::string shown(int64_t value) { return std::to_string(value); }
std::string shown(float value) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}
std::string shown(const Vec3& v) { return shown(v.x) + " " + shown(v.y) + " " + shown(v.z); }
std::string shown(const char* text) { return text[0] != '\0' ? text : "none"; }

bool same(int64_t a, int64_t b) { return a == b; }
bool same(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }
bool same(const Vec3& a, const Vec3& b) { return same(a.x, b.x) && same(a.y, b.y) && same(a.z, b.z); }
bool same(const char* a, const char* b) { return str_equal(a, b); }

bool differ(Comparison& found, const std::string& what) {
    found.difference = what;
    return true;
}

template <typename Value>
bool note(Comparison& found, const std::string& where, const char* field, const Value& a, const Value& b) {
    if (same(a, b)) { return false; }
    return differ(found, where + field + " " + shown(a) + " and " + shown(b));
}

bool note_flag(Comparison& found, const std::string& where, const char* field, int32_t a, int32_t b) {
    if ((a != 0) == (b != 0)) { return false; }
    return differ(found, where + field + (a != 0 ? " on and off" : " off and on"));
}

template <typename Element>
std::vector<const Element*> elements_of(const KeyedList& list) {
    std::vector<const Element*> elements;
    for (const Element& element : list_elements<Element>(list)) { elements.push_back(&element); }
    return elements;
}

template <typename Element, typename Look>
bool note_elements(Comparison& found, const std::string& where, const char* plural,
                   const std::vector<const Element*>& first, const std::vector<const Element*>& second,
                   const Look& look) {
    if (note(found, where, plural, static_cast<int64_t>(first.size()), static_cast<int64_t>(second.size()))) {
        return true;
    }
    for (size_t i = 0; i < first.size(); ++i) {
        if (look(*first[i], *second[i], i + 1)) { return true; }
    }
    return false;
}

// Compares two lists place by place.
template <typename Element, typename Look>
bool note_list(Comparison& found, const std::string& where, const char* plural, const KeyedList& a, const KeyedList& b,
               const Look& look) {
    return note_elements(found, where, plural, elements_of<Element>(a), elements_of<Element>(b), look);
}

// ---- joints ----

// The places of joints in their list: names can stand there twice.
using JointRanks = std::unordered_map<const Joint*, int64_t>;

JointRanks joint_ranks(const Model& model) {
    JointRanks ranks;
    int64_t rank = 0;
    for (const Joint& joint : list_elements<Joint>(model.joints)) { ranks[&joint] = ++rank; }
    return ranks;
}

struct Skeletons {
    JointRanks a;
    JointRanks b;
};

int64_t rank_of(const JointRanks& ranks, const Joint* joint) {
    const auto rank = ranks.find(joint);
    return joint == nullptr ? 0 : rank != ranks.end() ? rank->second : -1;
}

std::string named(const Joint* joint) { return joint != nullptr ? joint->name : "none"; }

bool note_joint_of(Comparison& found, const std::string& where, const char* field, const Skeletons& skeletons,
                   const Joint* a, const Joint* b) {
    if (rank_of(skeletons.a, a) == rank_of(skeletons.b, b)) { return false; }
    return differ(found, where + field + " " + named(a) + " and " + named(b));
}

bool note_joints(Comparison& found, const Model& a, const Model& b) {
    return note_list<Joint>(found, "", "joints", a.joints, b.joints, [&](const Joint& x, const Joint& y, size_t rank) {
        const std::string where = std::string("joint ") + x.name + ": ";
        return note(found, "joint " + std::to_string(rank) + ": ", "name", +x.name, +y.name) ||
               note(found, where, "place", x.position, y.position) ||
               note(found, where, "parent", +x.parent_name, +y.parent_name) ||
               (found.counts && note(found, where, "points", int64_t{x.point_count}, int64_t{y.point_count}));
    });
}

bool same_group(const Skeletons& skeletons, const BlendWeight& a, const BlendWeight& b) {
    return rank_of(skeletons.a, a.joint_a) == rank_of(skeletons.b, b.joint_a) &&
           rank_of(skeletons.a, a.joint_b) == rank_of(skeletons.b, b.joint_b);
}

// Without counts the second model need not have a group that its points do without.
std::vector<const BlendWeight*> compared_blends(const Comparison& found, const Skeletons& skeletons, const Model& a,
                                                const std::vector<const BlendWeight*>& of_b) {
    std::vector<const BlendWeight*> blends = elements_of<BlendWeight>(a.blends);
    if (found.counts) { return blends; }
    auto next = of_b.begin();
    std::vector<const BlendWeight*> compared;
    for (const BlendWeight* blend : blends) {
        if (next != of_b.end() && same_group(skeletons, *blend, **next)) {
            compared.push_back(blend);
            ++next;
        }
    }
    return compared;
}

bool note_blends(Comparison& found, const Skeletons& skeletons, const Model& a, const Model& b) {
    const std::vector<const BlendWeight*> of_b = elements_of<BlendWeight>(b.blends);
    return note_elements(
        found, "", "blends", compared_blends(found, skeletons, a, of_b), of_b,
        [&](const BlendWeight& x, const BlendWeight& y, size_t rank) {
            const std::string where = "blend " + std::to_string(rank) + ": ";
            return note_joint_of(found, where, "first joint", skeletons, x.joint_a, y.joint_a) ||
                   note_joint_of(found, where, "second joint", skeletons, x.joint_b, y.joint_b) ||
                   (found.counts && note(found, where, "points", int64_t{x.point_count}, int64_t{y.point_count}));
        });
}

// ---- points ----

bool note_colour(Comparison& found, const std::string& where, const unsigned char* a, const unsigned char* b) {
    static constexpr const char* CHANNELS[] = {"red", "green", "blue", "colour's transparency"};
    for (int channel = 0; channel < 4; ++channel) {
        if (note(found, where, CHANNELS[channel], int64_t{a[channel]}, int64_t{b[channel]})) { return true; }
    }
    return false;
}

bool note_point(Comparison& found, const Skeletons& skeletons, const std::string& where, const Point& a,
                const Point& b) {
    if (note(found, where, "place", a.position, b.position) || note(found, where, "weight", a.weight, b.weight) ||
        note_colour(found, where, a.gouraud, b.gouraud)) {
        return true;
    }
    if (!normals_match(a.normal, b.normal)) {
        return differ(found, where + "normal " + shown(a.normal) + " and " + shown(b.normal));
    }
    return note_joint_of(found, where, "first joint", skeletons, a.joint_a, b.joint_a) ||
           note_joint_of(found, where, "second joint", skeletons, a.joint_b, b.joint_b);
}

bool note_points(Comparison& found, const Skeletons& skeletons, const Model& a, const Model& b) {
    const auto points = list_elements<Point>(a.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const std::string where = "point " + std::to_string(point.int_key()) + ": ";
        const Point* other = list_find<Point>(&b.points, point.int_key());
        if (other == nullptr) { return differ(found, where + "only the first has it"); }
        if (note_point(found, skeletons, where, *point, *other)) { return true; }
    }
    const auto others = list_elements<Point>(b.points);
    for (auto point = others.begin(); point != others.end(); ++point) {
        if (list_find(&a.points, point.int_key()) == nullptr) {
            return differ(found, "point " + std::to_string(point.int_key()) + ": only the second has it");
        }
    }
    return false;
}

// ---- primitives ----

template <typename Id>
bool note_ids(Comparison& found, const std::string& where, const char* field, const Id* a, const Id* b, int count) {
    for (int i = 0; i < count; ++i) {
        if (note(found, where + field + " " + std::to_string(i + 1) + ": ", "point", int64_t{a[i]}, int64_t{b[i]})) {
            return true;
        }
    }
    return false;
}

bool note_triangle(Comparison& found, const std::string& where, const Triangle& a, const Triangle& b) {
    const int corners = triangle_corners(&a);
    return note(found, where, "corners", int64_t{corners}, int64_t{triangle_corners(&b)}) ||
           note(found, where, "curve type", int64_t{a.curve_type}, int64_t{b.curve_type}) ||
           note_ids(found, where, "corner", a.points, b.points, corners) ||
           note_ids(found, where, "normal", a.normals, b.normals, corners) ||
           (a.curve_type != 0 && note_ids(found, where, "control", a.controls, b.controls, 2 * corners));
}

bool note_polygon(Comparison& found, const std::string& where, const Polygon& a, const Polygon& b) {
    if (note(found, where, "corners", int64_t{a.vertex_count}, int64_t{b.vertex_count})) { return true; }
    return note_list<PolygonVertex>(found, where, "vertices", a.vertices, b.vertices,
                                    [&](const PolygonVertex& x, const PolygonVertex& y, size_t place) {
                                        const std::string vertex = where + "corner " + std::to_string(place) + ": ";
                                        return note(found, vertex, "point", int64_t{x.point}, int64_t{y.point}) ||
                                               note(found, vertex, "normal", int64_t{x.normal}, int64_t{y.normal});
                                    });
}

bool note_line(Comparison& found, const std::string& where, const Line& a, const Line& b) {
    if (note(found, where, "corners", int64_t{a.vertex_count}, int64_t{b.vertex_count})) { return true; }
    return note_list<int32_t>(found, where, "vertices", a.vertices, b.vertices,
                              [&](int32_t x, int32_t y, size_t place) {
                                  return note(found, where + "corner " + std::to_string(place) + ": ", "point",
                                              int64_t{line_point_id(x)}, int64_t{line_point_id(y)});
                              });
}

bool note_primitives(Comparison& found, const std::string& where, const Layer& a, const Layer& b) {
    const auto numbered = [&](const char* kind, size_t place) {
        return where + kind + " " + std::to_string(place) + ": ";
    };
    return note_list<Triangle>(found, where, "triangles and quads", a.triangles, b.triangles,
                               [&](const Triangle& x, const Triangle& y, size_t place) {
                                   return note_triangle(found, numbered("triangle", place), x, y);
                               }) ||
           note_list<Polygon>(found, where, "polygons", a.polygons, b.polygons,
                              [&](const Polygon& x, const Polygon& y, size_t place) {
                                  return note_polygon(found, numbered("polygon", place), x, y);
                              }) ||
           note_list<Line>(found, where, "lines", a.lines, b.lines, [&](const Line& x, const Line& y, size_t place) {
               return note_line(found, numbered("line", place), x, y);
           });
}

bool note_uvees(Comparison& found, const std::string& where, const Layer& a, const Layer& b) {
    const auto uvees = list_elements<Uvee>(a.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        const std::string point = where + "uvee of point " + std::to_string(uvee.int_key()) + ": ";
        const Uvee* other = list_find<Uvee>(&b.uvees, uvee.int_key());
        if (other == nullptr) { return differ(found, point + "only the first has it"); }
        if (note(found, point, "u", uvee->u, other->u) || note(found, point, "v", uvee->v, other->v)) { return true; }
    }
    return note(found, where, "uvees", int64_t{list_count(&a.uvees)}, int64_t{list_count(&b.uvees)});
}

// ---- layers ----

// The map that image and axes make.
bool note_map(Comparison& found, const std::string& where, const Layer& a, const Layer& b) {
    return note(found, where, "image axis u", int64_t{a.image_axis_u}, int64_t{b.image_axis_u}) ||
           note(found, where, "image axis v", int64_t{a.image_axis_v}, int64_t{b.image_axis_v}) ||
           note_flag(found, where, "repeat", a.image_repeat, b.image_repeat) ||
           (a.image_repeat != 0 && (note(found, where, "repeat u", a.repeat_u, b.repeat_u) ||
                                    note(found, where, "repeat v", a.repeat_v, b.repeat_v)));
}

// An image that is missing has neither a map nor a strength: what a line says of them is lost as it fails.
bool note_images(Comparison& found, const std::string& where, const Layer& a, const Layer& b) {
    static constexpr const char* KINDS[] = {"image", "mirror image", "reflection map"};
    static constexpr LayerImage NO_IMAGE{};
    const LayerImage* first = layer_first_image(&a);
    const LayerImage* second = layer_first_image(&b);
    const LayerImage& x = first != nullptr ? *first : NO_IMAGE;
    const LayerImage& y = second != nullptr ? *second : NO_IMAGE;
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        if (note(found, where, KINDS[slot], +x.names[slot], +y.names[slot])) { return true; }
    }
    const auto is_loaded = [&](int slot) { return x.pixels[slot] != nullptr && y.pixels[slot] != nullptr; };
    if (is_loaded(IMAGE_SLOT_REFLECTION) && note(found, where, "reflection", x.reflection, y.reflection)) {
        return true;
    }
    return is_loaded(IMAGE_SLOT_BASE) && note_map(found, where, a, b);
}

bool note_settings(Comparison& found, const std::string& where, const Layer& a, const Layer& b) {
    static constexpr const char* CHANNELS[] = {"red", "green", "blue"};
    static constexpr const char* KEY_CHANNELS[] = {"key red", "key green", "key blue"};
    for (int channel = 0; channel < 3; ++channel) {
        if (note(found, where, CHANNELS[channel], int64_t{a.colour[channel]}, int64_t{b.colour[channel]}) ||
            (a.invisible != 0 && b.invisible != 0 &&
             note(found, where, KEY_CHANNELS[channel], int64_t{a.invisible_colour[channel]},
                  int64_t{b.invisible_colour[channel]}))) {
            return true;
        }
    }
    return note(found, where, "sides", int64_t{a.singlesided ? 1 : 2}, int64_t{b.singlesided ? 1 : 2}) ||
           note(found, where, "transparency", a.transparency, b.transparency) ||
           note_flag(found, where, "mirror", a.mirror, b.mirror) ||
           (a.mirror != 0 && note(found, where, "mirror axis", int64_t{a.mirror_axis}, int64_t{b.mirror_axis})) ||
           note_flag(found, where, "colour key", a.invisible, b.invisible);
}

bool note_layers(Comparison& found, const Model& a, const Model& b) {
    return note_list<Layer>(found, "", "layers", a.layers, b.layers, [&](const Layer& x, const Layer& y, size_t rank) {
        const std::string where = std::string("layer ") + x.name + ": ";
        return note(found, "layer " + std::to_string(rank) + ": ", "name", +x.name, +y.name) ||
               note_settings(found, where, x, y) || note_images(found, where, x, y) ||
               note_primitives(found, where, x, y) || note_uvees(found, where, x, y);
    });
}

// ---- children ----

bool note_children(Comparison& found, const Model& a, const Model& b) {
    static constexpr const char* TURNS[] = {"first rotation", "second rotation", "third rotation"};
    return note_list<ChildLink>(
        found, "", "children", a.children, b.children, [&](const ChildLink& x, const ChildLink& y, size_t rank) {
            const std::string where = "child " + std::to_string(rank) + ": ";
            for (int turn = 0; turn < 3; ++turn) {
                if (note(found, where, TURNS[turn], +x.rotate[turn], +y.rotate[turn])) { return true; }
            }
            return note(found, where, "name", +x.name, +y.name) ||
                   note(found, where, "place", x.position, y.position) || note(found, where, "scale", x.scale, y.scale);
        });
}

// Numbers in the order of their values, the next one behind each.
int64_t float_rank(float value) {
    const auto bits = std::bit_cast<int32_t>(value);
    return bits >= 0 ? int64_t{bits} : -int64_t{bits & INT32_MAX};
}

bool is_next(float a, float b) {
    const int64_t apart = float_rank(a) - float_rank(b);
    return same(a, b) || (!std::isnan(a) && !std::isnan(b) && apart >= -1 && apart <= 1);
}

}  // namespace

bool normals_match(const Vec3& a, const Vec3& b) { return is_next(a.x, b.x) && is_next(a.y, b.y) && is_next(a.z, b.z); }

std::string model_difference(const Model* a, const Model* b, bool counts) {
    if (a == b) { return {}; }
    if (a == nullptr || b == nullptr) { return a != nullptr ? "only the first is there" : "only the second is there"; }
    Comparison found{{}, counts};
    const Skeletons skeletons{joint_ranks(*a), joint_ranks(*b)};
    (void)(note_flag(found, "", "normals", a->has_normals, b->has_normals) ||
           note_flag(found, "", "gouraud colours", a->has_gouraud, b->has_gouraud) || note_joints(found, *a, *b) ||
           note_blends(found, skeletons, *a, *b) || note_points(found, skeletons, *a, *b) ||
           note_layers(found, *a, *b) || note_children(found, *a, *b));
    return found.difference;
}

}  // namespace pelt
