// Writes a model so that the reader makes the same one of it: joints, blend groups, points in the order in which they
// are dealt, normals, colours, layers, child links.
//
// What surprises: an image line stands behind the primitives that it can map and before those that name a point by its
// low 16 bits alone.
#include "formats/whole_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "formats/text_output.h"
#include "formats/whole_layout.h"
#include "formats/whole_lines.h"
#include "scene/model.h"

namespace pelt::whole {

namespace {

constexpr unsigned char DEFAULT_COLOUR[] = {127, 127, 127, 0};

// A section with a line for each point. Without the flag of the model no point may need one.
template <typename Put, typename Needs>
void put_point_section(WholeWriter& writer, const WholeLayout& layout, const char* section, bool flag, const Put& put,
                       const Needs& needs) {
    if (flag && layout.points.empty()) { refuse(writer, std::string("the model has ") + section + " and no points"); }
    if (flag) { writer.text += std::string("\n") + section + "\n"; }
    for (const LaidPoint& point : layout.points) {
        if (flag) {
            put(writer, point);
        } else if (needs(*point.point)) {
            refuse(writer,
                   "point " + std::to_string(point.id) + ": is in " + section + ", of which the model has none");
        }
    }
}

void put_points(WholeWriter& writer, const WholeLayout& layout) {
    if (!layout.points.empty()) { writer.text += "points\n"; }
    for (const LaidPoint& point : layout.points) { put_point(writer, point); }
    put_point_section(writer, layout, "normals", writer.model.has_normals != 0, put_normal, [](const Point& point) {
        return point.normal.x != 0.0f || point.normal.y != 0.0f || point.normal.z != 1.0f;
    });
    put_point_section(writer, layout, "gouraud", writer.model.has_gouraud != 0, put_colour, [](const Point& point) {
        return std::memcmp(point.gouraud, DEFAULT_COLOUR, sizeof DEFAULT_COLOUR) != 0;
    });
}

// The reader finds each corner where it looks for it to map an image.
bool can_be_mapped(const Model& model, const Triangle& triangle) {
    return std::all_of(triangle.points, triangle.points + triangle_corners(&triangle),
                       [&](int16_t id) { return list_find(&model.points, id) != nullptr; });
}

bool can_be_mapped(const Model& model, const Polygon& polygon) {
    const std::vector<PolygonVertex> strip = polygon_strip(polygon);
    return std::all_of(strip.begin(), strip.end(),
                       [&](const PolygonVertex& vertex) { return list_find(&model.points, vertex.point) != nullptr; });
}

// What of a layer's surface stands before its image and what behind.
struct Surface {
    std::vector<const Triangle*> triangles;
    std::vector<const Polygon*> polygons;
};

template <typename Primitive>
void split_surface(const Model& model, const KeyedList& list, std::vector<const Primitive*>& mapped,
                   std::vector<const Primitive*>& rest) {
    for (const Primitive& primitive : list_elements<Primitive>(list)) {
        const bool is_mapped = rest.empty() && can_be_mapped(model, primitive);
        (is_mapped ? mapped : rest).push_back(&primitive);
    }
}

void put_surface(WholeWriter& writer, const std::string& of, const Surface& surface) {
    if (surface.triangles.empty() && surface.polygons.empty()) { return; }
    writer.text += "triangles\n";
    for (const Triangle* triangle : surface.triangles) { put_triangle(writer, of, *triangle, needed_parts(*triangle)); }
    for (const Polygon* polygon : surface.polygons) { put_polygon(writer, of, *polygon); }
}

// Pixels that were loaded before the layer had its key have none: they are again loaded before it.
void put_images(WholeWriter& writer, const std::string& of, const Layer& layer) {
    static constexpr LayerImage NO_IMAGE{};
    const LayerImage* first = layer_first_image(&layer);
    const LayerImage& image = first != nullptr ? *first : NO_IMAGE;
    const auto put_those = [&](bool keyless) {
        constexpr int KEYLESS_BYTES = 3;
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            const bool is_keyless = layer.invisible && image.bytes_per_pixel[slot] == KEYLESS_BYTES;
            if (image.names[slot][0] != '\0' && is_keyless == keyless) { put_image(writer, of, layer, image, slot); }
        }
    };
    put_those(true);
    if (layer.invisible) { put_key(writer, of, layer); }
    put_those(false);
}

void put_uvees(WholeWriter& writer, const std::string& of, const Layer& layer) {
    if (list_count(&layer.uvees) > 0) { writer.text += "uvees\n"; }
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) { put_uvee(writer, of, uvee.int_key(), *uvee); }
}

void put_layer_head(WholeWriter& writer, const std::string& of, const Layer& layer) {
    writer.text += "\n";
    put_layer_line(writer, of, layer);
    if (layer.transparency != 0.0f) { put_transparency(writer, of, layer); }
}

}  // namespace

void put_layer(WholeWriter& writer, const Layer& layer) {
    const std::string of = std::string("layer ") + layer.name + ": ";
    const size_t start = writer.text.size();
    put_layer_head(writer, of, layer);
    const size_t head_lines = static_cast<size_t>(
        std::count(writer.text.begin() + static_cast<std::ptrdiff_t>(start), writer.text.end(), '\n'));
    const size_t head = writer.text.size();
    Surface mapped;
    Surface rest;
    split_surface(writer.model, layer.triangles, mapped.triangles, rest.triangles);
    split_surface(writer.model, layer.polygons, mapped.polygons, rest.polygons);
    put_surface(writer, of, mapped);
    put_uvees(writer, of, layer);
    put_images(writer, of, layer);
    put_surface(writer, of, rest);
    const LayerImage* image = layer_first_image(&layer);
    const bool has_image = image != nullptr && image->names[IMAGE_SLOT_BASE][0] != '\0';
    if (has_image && mapped.triangles.empty() && mapped.polygons.empty()) {
        refuse(writer, of + "an image and nothing that it could be mapped to");
    }
    if (list_count(&layer.lines) > 0) { writer.text += "lines\n"; }
    for (const Line& line : list_elements<Line>(layer.lines)) { put_polyline(writer, of, line); }
    // What stands behind the line of a layer looks it up by its name.
    constexpr size_t BLANK_AND_LAYER = 2;
    const bool has_more = writer.text.size() > head || head_lines > BLANK_AND_LAYER;
    if (has_more && std::strlen(layer.name) >= KEY_TEXT_SIZE) {
        refuse(writer, of + "a name of more than " + std::to_string(KEY_TEXT_SIZE - 1) + " bytes");
    }
}

}  // namespace pelt::whole

namespace pelt {

namespace {

void put_model(whole::WholeWriter& writer, const char* file_name) {
    using namespace whole;
    writer.text = "#\n# model: " + text_for_comment(file_name) + "\n#\n";
    const WholeLayout layout = whole_layout(&writer.model);
    auto count = layout.joint_counts.begin();
    for (const Joint& joint : list_elements<Joint>(writer.model.joints)) { put_joint(writer, joint, *count++); }
    for (const LaidBlend& blend : layout.blends) { put_blend(writer, *blend.blend, blend.count); }
    put_points(writer, layout);
    for (const Layer& layer : list_elements<Layer>(writer.model.layers)) { put_layer(writer, layer); }
    if (list_count(&writer.model.children) > 0) { writer.text += "\n"; }
    for (const ChildLink& link : list_elements<ChildLink>(writer.model.children)) { put_child(writer, link); }
}

}  // namespace

std::string model_write_whole(const Model* model, const char* file_name, std::string* refused) {
    std::string reason = model == nullptr ? "no model" : "";
    std::string text;
    if (model != nullptr) {
        whole::WholeWriter writer(*model);
        put_model(writer, file_name);
        reason = writer.refusal;
        text = writer.refusal.empty() ? std::move(writer.text) : std::string();
    }
    if (refused != nullptr) { *refused = reason; }
    return text;
}

}  // namespace pelt
