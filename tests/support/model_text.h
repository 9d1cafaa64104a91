// Models for tests: read from a text, written to a text, and told in full, so that two can be compared.
#pragma once

#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "scene/model.h"
#include "support/temp_dir.h"

namespace pelt::test {

struct Releaser {
    void operator()(Model* model) const { model_release(model); }
};
using OwnedModel = std::unique_ptr<Model, Releaser>;

inline OwnedModel read_model(const TempDir& dir, const std::string& name, const std::string& text) {
    return OwnedModel(model_load(dir.write(name, text).c_str()));
}

inline std::string write_model(const Model* model) { return model_write_text(model, "written.mod"); }

// Writes the model beside its images and reads that file; null when it does not load.
inline OwnedModel write_and_read(const TempDir& dir, const Model* model, const std::string& name = "again.mod") {
    return read_model(dir, name, write_model(model));
}

// ---- a model told in full, in words that have nothing to do with the file format ----

inline std::ostream& operator<<(std::ostream& out, const Vec3& v) {
    return out << "(" << v.x << "," << v.y << "," << v.z << ")";
}

template <typename Number>
void tell_array(std::ostream& out, const char* name, const Number* numbers, int count) {
    out << " " << name;
    for (int i = 0; i < count; ++i) { out << (i > 0 ? "," : "=") << +numbers[i]; }
}

inline const char* joint_name(const Joint* joint) { return joint != nullptr ? joint->name : "none"; }

inline void tell_points(std::ostream& out, const Model& model) {
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        out << "point " << point.int_key() << " " << point->position << " weight " << point->weight << " normal "
            << point->normal << " joints " << joint_name(point->joint_a) << "/" << joint_name(point->joint_b);
        tell_array(out, "colour", point->gouraud, 4);
        out << "\n";
    }
}

inline void tell_skeleton(std::ostream& out, const Model& model) {
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        out << "joint " << joint.name << " of " << joint.parent_name << " " << joint.position << " rank "
            << joint.parent_index << " points " << joint.point_count << "\n";
    }
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        out << "blend " << joint_name(blend.joint_a) << "/" << joint_name(blend.joint_b) << " " << blend.point_count
            << "\n";
    }
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        out << "child " << link.name << " at " << link.position << " scale " << link.scale << " turned "
            << link.rotate[0] << "/" << link.rotate[1] << "/" << link.rotate[2] << "\n";
    }
}

inline void tell_primitives(std::ostream& out, const Layer& layer) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        const int corners = triangle_corners(&triangle);
        out << "  triangle quad " << triangle.quad << " curve " << triangle.curve_type;
        tell_array(out, "points", triangle.points, corners);
        tell_array(out, "normals", triangle.normals, corners);
        tell_array(out, "controls", triangle.controls, 2 * corners);
        for (int corner = 0; corner < corners; ++corner) { tell_array(out, "uv", triangle.uvs[corner], 2); }
        out << "\n";
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        out << "  polygon " << polygon.vertex_count;
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            out << " " << vertex.point << "/" << vertex.normal << "/" << vertex.u << "/" << vertex.v;
        }
        out << "\n";
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        out << "  line " << line.vertex_count;
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) { out << " " << stored; }
        out << "\n";
    }
}

inline void tell_layer(std::ostream& out, const Layer& layer) {
    out << "layer " << layer.name << " singlesided " << layer.singlesided << " transparency " << layer.transparency
        << " mirror " << layer.mirror << "/" << (layer.mirror ? layer.mirror_axis : 0) << " key " << layer.invisible;
    tell_array(out, "colour", layer.colour, 3);
    tell_array(out, "invisible", layer.invisible_colour, 3);
    for (const LayerImage& image : list_elements<LayerImage>(layer.images)) {
        out << " image " << image.names[0] << "|" << image.names[1] << "|" << image.names[2] << " axes "
            << layer.image_axis_u << "/" << layer.image_axis_v << " repeat " << layer.image_repeat << " reflection "
            << image.reflection;
    }
    out << "\n";
    tell_primitives(out, layer);
    // By point: the order in which they were given has no meaning.
    std::map<int32_t, Uvee> uvees;
    for (const Uvee& uvee : list_elements<Uvee>(layer.uvees)) { uvees[uvee.point] = uvee; }
    for (const auto& [point, uvee] : uvees) { out << "  uvee " << point << " " << uvee.u << " " << uvee.v << "\n"; }
}

inline std::string told(const Model* model) {
    if (model == nullptr) { return "no model"; }
    std::ostringstream out;
    out << "gouraud " << model->has_gouraud << " normals " << model->has_normals << " box " << model->bounds_min << " "
        << model->bounds_max << "\n";
    tell_points(out, *model);
    tell_skeleton(out, *model);
    for (const Layer& layer : list_elements<Layer>(model->layers)) { tell_layer(out, layer); }
    return out.str();
}

}  // namespace pelt::test
