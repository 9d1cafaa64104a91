// Writer of model files: joints, points in joint order, normals, colours, layers, child links, in the order in which
// the reader needs them.
//
// What surprises: it is not the inverse of the reader, and is meant to stay that way. The colour key comes out in
// bytes where the reader wants shares of 1, curved quads lose their curve type, blend groups, reflection maps and
// repeat factors are not written at all. write_losses tells which of these a model meets.
#include "formats/model_writer.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

#include "formats/text_output.h"
#include "foundation/file_access.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* NAMELESS_FILE = "noname.mod";
constexpr size_t EXTENSION_SIZE = 4;  // a dot and three characters
constexpr int FIXED_CURVE_TYPE = 3;   // a curved triangle of this type or above says nothing of it before its normals

struct WrittenPoint {
    int32_t id;
    const Point* point;
};

// The points of each joint, and under null those that no joint moves, all in list order.
using PointsByJoint = std::unordered_map<const Joint*, std::vector<WrittenPoint>>;

PointsByJoint points_by_joint(const Model& model) {
    PointsByJoint groups;
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        groups[point->joint_a].push_back(WrittenPoint{point.int_key(), &*point});
    }
    return groups;
}

int32_t whole(float value) { return float_to_int(value); }

std::string thousandths(float value) { return float_to_text(value, 3); }

// ---- joints and points ----

void put_joints(TextOutput& out, const Model& model) {
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        text_put(out, "joint  %-8s  %5d %5d %5d  %-8s %3d\n", joint.name, whole(joint.position.x),
                 whole(joint.position.y), whole(joint.position.z), joint.parent_name, joint.point_count);
    }
}

void put_point(TextOutput& out, const WrittenPoint& written, bool with_weight) {
    const Point& point = *written.point;
    text_put(out, "%-3d   %5d %5d %5d", written.id, whole(point.position.x), whole(point.position.y),
             whole(point.position.z));
    if (with_weight && point.weight != 1.0f) { text_put(out, "   %s", thousandths(point.weight).c_str()); }
    text_put(out, "\n");
}

void put_points(TextOutput& out, const Model& model) {
    const PointsByJoint groups = points_by_joint(model);
    const auto put_group = [&](const Joint* joint) {
        const auto group = groups.find(joint);
        if (group != groups.end()) {
            for (const WrittenPoint& point : group->second) {
                put_point(out, point, joint != nullptr);  // the weight of a world point is left out: intended
            }
        }
    };
    text_put(out, "points\n");
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        // The count is the stored one, whatever number of points follows: intended.
        text_put(out, "#\n# %d points for joint: %s\n#\n", joint.point_count, text_for_comment(joint.name).c_str());
        put_group(&joint);
    }
    text_put(out, "#\n# world points\n#\n");
    put_group(nullptr);
}

// Every point has its line, also in a model without normals: intended.
void put_normals(TextOutput& out, const Model& model) {
    text_put(out, "\nnormals\n");
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const Vec3& normal = point->normal;
        text_put(out, "%-3d   %6s %6s %6s\n", point.int_key(), thousandths(normal.x).c_str(),
                 thousandths(normal.y).c_str(), thousandths(normal.z).c_str());
    }
}

void put_colours(TextOutput& out, const Model& model) {
    text_put(out, "\ngouraud\n");
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const unsigned char* colour = point->gouraud;
        text_put(out, "%-3d   %-3d %-3d %-3d  %-3d\n", point.int_key(), colour[0], colour[1], colour[2], colour[3]);
    }
}

// ---- primitives ----

bool has_own_controls(const Triangle& triangle) {
    const int* ends = triangle_edge_ends(&triangle);
    for (int i = 0; i < 2 * triangle_corners(&triangle); ++i) {
        if (triangle.controls[i] != triangle.points[ends[i]]) { return true; }
    }
    return false;
}

// Intended: of a triangle only the first corner is compared, of a quad the first and the last.
bool has_own_normals(const Triangle& triangle) {
    return triangle.normals[0] != triangle.points[0] || (triangle.quad && triangle.normals[3] != triangle.points[3]);
}

void put_ids(TextOutput& out, const int16_t* ids, int count) {
    text_put(out, " ");
    for (int i = 0; i < count; ++i) { text_put(out, " %4d", ids[i]); }
}

// Intended: the curve type of a quad, and of a triangle above type 3, is written nowhere.
void put_triangle(TextOutput& out, const Triangle& triangle) {
    const int corners = triangle_corners(&triangle);
    const bool curved = triangle.curve_type != 0;
    const char* kind = curved ? (triangle.quad ? "4" : "3") : (triangle.quad ? "1" : "0");
    text_put(out, "%s", kind);
    put_ids(out, triangle.points, corners);
    if (curved && !triangle.quad && triangle.curve_type < FIXED_CURVE_TYPE) {
        text_put(out, "  %d", triangle.curve_type);
    }
    const bool own_controls = curved && has_own_controls(triangle);
    if (has_own_normals(triangle) || own_controls) {
        if (!triangle.quad && triangle.curve_type == FIXED_CURVE_TYPE) { text_put(out, "  %d", triangle.curve_type); }
        put_ids(out, triangle.normals, corners);
    }
    if (own_controls) { put_ids(out, triangle.controls, 2 * corners); }
    text_put(out, "\n");
}

void put_polygon(TextOutput& out, const Polygon& polygon) {
    text_put(out, "2 ");
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        text_put(out, "%d ", vertex.point);
    }
    text_put(out, "\n");
}

void put_line(TextOutput& out, const Line& line) {
    text_put(out, "2 ");
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { text_put(out, "%d ", line_point_id(stored)); }
    text_put(out, "\n");
}

// ---- layers ----

// In the order of the model's points; one that is no point of the model itself is left out.
void put_uvees(TextOutput& out, const Model& model, const Layer& layer) {
    std::vector<std::pair<int32_t, const Uvee*>> by_slot;
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        const int32_t slot = list_index_of(&model.points, uvee.int_key(), 0);
        if (slot >= 0) { by_slot.emplace_back(slot, &*uvee); }
    }
    std::sort(by_slot.begin(), by_slot.end());
    text_put(out, "uvees\n");
    for (const auto& [slot, uvee] : by_slot) {
        text_put(out, "%d  %s  %s\n", list_int_key(&model.points, slot), float_to_text(uvee->u, 4).c_str(),
                 float_to_text(uvee->v, 4).c_str());
    }
}

// Neither the reflection map nor the repeat factors are written: intended.
void put_images(TextOutput& out, const Layer& layer) {
    for (const LayerImage& image : list_elements<LayerImage>(layer.images)) {
        text_put(out, "image  %s  %s %s\n", image.names[IMAGE_SLOT_BASE], axis_word(layer.image_axis_u),
                 axis_word(layer.image_axis_v));
        if (image.names[IMAGE_SLOT_MIRROR][0] != '\0') {
            text_put(out, "mirrorimage  %s\n", image.names[IMAGE_SLOT_MIRROR]);
        }
    }
}

void put_layer_head(TextOutput& out, const Layer& layer) {
    text_put(out, "\nlayer %s %d %d %d %s", layer.name, layer.colour[0], layer.colour[1], layer.colour[2],
             layer.singlesided ? "singlesided" : "doublesided");
    if (layer.mirror) { text_put(out, " mirror %s", axis_word(layer.mirror_axis)); }
    text_put(out, "\n");
    if (layer.invisible) {
        const int32_t* key = layer.invisible_colour;
        text_put(out, "invisible %d %d %d\n", key[0], key[1], key[2]);  // in bytes: intended
    }
    if (layer.transparency != 0.0f) {
        text_put(out, "transparency %s\n", float_to_text(layer.transparency, 4).c_str());
    }
}

void put_layer(TextOutput& out, const Model& model, const Layer& layer) {
    put_layer_head(out, layer);
    if (layer_has_surface(layer)) {
        text_put(out, "triangles\n");
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) { put_triangle(out, triangle); }
        for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) { put_polygon(out, polygon); }
        if (list_count(&layer.uvees) > 0) { put_uvees(out, model, layer); }
        put_images(out, layer);
    }
    if (list_count(&layer.lines) > 0) {
        text_put(out, "lines\n");
        for (const Line& line : list_elements<Line>(layer.lines)) { put_line(out, line); }
    }
}

void put_children(TextOutput& out, const Model& model) {
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        text_put(out, "child  %-8s  %5d %5d %5d  %6s %6s %6s  %5s %5s %5s\n", link.name, whole(link.position.x),
                 whole(link.position.y), whole(link.position.z), thousandths(link.scale.x).c_str(),
                 thousandths(link.scale.y).c_str(), thousandths(link.scale.z).c_str(), link.rotate[0], link.rotate[1],
                 link.rotate[2]);
    }
}

void put_model(TextOutput& out, const Model& model, const char* file_name) {
    text_put(out, "#\n# model: %s\n#\n", text_for_comment(file_name).c_str());
    put_joints(out, model);
    put_points(out, model);
    put_normals(out, model);
    if (model.has_gouraud) { put_colours(out, model); }
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        if (!model_writer_skips_layer(&model, layer.name)) { put_layer(out, model, layer); }
    }
    put_children(out, model);
}

}  // namespace

const char* axis_word(int code) {
    static constexpr const char* WORDS[] = {"x", "x", "y", "z", "-x", "-y", "-z"};
    return WORDS[code >= AXIS_X && code <= AXIS_MINUS_Z ? code : 0];
}

bool model_writer_skips_layer(const Model* model, const char* layer) {
    return model_count_triangles(model, layer) <= 0 && model_count_lines(model, layer) <= 0;
}

std::string model_file_name(const Model* model) {
    const std::string name = model != nullptr ? model->name : "";
    if (name.empty()) { return NAMELESS_FILE; }
    const bool has_extension = name.size() >= EXTENSION_SIZE && name[name.size() - EXTENSION_SIZE] == '.';
    return has_extension ? name : name + ".mod";
}

void model_write(const Model* model) {
    if (model == nullptr) { return; }
    const std::string name = model_file_name(model);
    const int slot = file_open(name.c_str(), "w");
    if (slot < 0) { return; }
    TextOutput out = text_output_to_slot(&slot);
    put_model(out, *model, name.c_str());
    text_finish(out);  // whether it succeeded is not looked at
    file_close(slot);
}

std::string model_write_text(const Model* model, const char* file_name) {
    std::string text;
    if (model != nullptr) {
        TextOutput out = text_output_to_string(&text);
        put_model(out, *model, file_name);
        text_finish(out);
    }
    return text;
}

}  // namespace pelt
