// The lines of a model file, one function each, in the columns of the other writer where both say the same.
//
// What surprises: a normal is written at a length at which the reader, which makes it one of length 1, meets it again
// to the last place; and a primitive names a point above 32767 by whichever id has its low 16 bits.
#include "formats/whole_lines.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "formats/line_reader.h"
#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "formats/spelled_normal.h"
#include "foundation/text.h"
#include "images/image_registry.h"

namespace pelt::whole {

namespace {

constexpr size_t LONGEST_LINE = READER_LINE_SIZE - 1;
constexpr int32_t MOST_CORNERS = READER_TOKEN_LIMIT - 1;  // of a polygon or a line, behind the type
constexpr float WEIGHT_MIN = -1.0f;
constexpr float WEIGHT_MAX = 2.0f;
constexpr float REPEAT_MAX = 128.0f;
constexpr int DEFAULT_CURVE_TYPE[] = {3, 4};  // of a triangle and of a quad

std::vector<int32_t> ids_by_low_half(const Model& model) {
    std::vector<int32_t> ids(UINT16_MAX + 1, 0);
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        int32_t& known = ids[static_cast<size_t>(point.int_key() & 0xFFFF)];
        known = known == 0 ? point.int_key() : std::min(known, point.int_key());
    }
    return ids;
}

}  // namespace

WholeWriter::WholeWriter(const Model& written)
    : model(written), out(text_output_to_string(&line)), by_low(ids_by_low_half(written)) {}

void refuse(WholeWriter& writer, const std::string& reason) {
    if (writer.refusal.empty()) { writer.refusal = reason; }
}

void end_line(WholeWriter& writer, const std::string& of) {
    text_finish(writer.out);
    if (!writer.line.empty() && writer.line.back() == '\r') { writer.line += ' '; }  // or it would go with the line end
    if (writer.line.size() > LONGEST_LINE) {
        refuse(writer, of + "a line of the file holds " + std::to_string(LONGEST_LINE) + " bytes, and its own has " +
                           std::to_string(writer.line.size()));
    }
    writer.text += writer.line + "\n";
    writer.line.clear();
}

// ---- tokens ----

std::string name_token(WholeWriter& writer, const std::string& of, const std::string& name) {
    const bool needs_quotes = name.find_first_of(" \t") != std::string::npos || (!name.empty() && name[0] == '"');
    if (name.empty()) {
        refuse(writer, of + "a name is empty");
    } else if (name.find('\n') != std::string::npos) {
        refuse(writer, of + "a name with a line end in it");
    } else if (needs_quotes && name.find('"') != std::string::npos) {
        refuse(writer, of + "a name that needs quotes and has one in it: " + name);
    }
    return needs_quotes ? "\"" + name + "\"" : name;
}

// The shortest text that the reader makes this float of. It takes no exponents.
std::string number_token(WholeWriter& writer, const std::string& of, float value) {
    static constexpr char BEYOND_ALL[] = "1000000000000000000000000000000000000000.0";  // read as an infinity
    if (std::isnan(value)) {
        refuse(writer, of + "not a number");
        return "0";
    }
    if (std::isinf(value)) { return value < 0.0f ? std::string("-") + BEYOND_ALL : BEYOND_ALL; }
    constexpr float EXACT_INTEGER = 16777216.0f;
    if (value == std::trunc(value) && std::fabs(value) <= EXACT_INTEGER && !(value == 0.0f && std::signbit(value))) {
        return std::to_string(static_cast<int32_t>(value));
    }
    const auto spelled = [](auto number) {
        char digits[128];
        const auto result = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed);
        std::string text(digits, result.ptr);
        return text.find('.') == std::string::npos ? text + ".0" : text;
    };
    // The shortest text of the float is read by way of a double, which may round it another way.
    const std::string text = spelled(value);
    return to_float(text_to_double(text.c_str())) == value ? text : spelled(double{value});
}

// A coordinate that the format wants whole. The reader makes a float of what it reads.
int32_t whole(WholeWriter& writer, const std::string& of, float value) {
    const int32_t number = float_to_int(value);
    if (static_cast<float>(number) != value) {
        refuse(writer, of + "its place lies between whole numbers, or beyond them: " + float_to_text(value, 3));
    }
    return number;
}

namespace {

// The id by which a line names what the records hold in 16 bits.
int32_t id_token(WholeWriter& writer, const std::string& of, int32_t stored) {
    const int32_t id = writer.by_low[static_cast<size_t>(stored & 0xFFFF)];
    if (id == 0) { refuse(writer, of + "names point " + std::to_string(stored) + ", which is none of the model"); }
    return id;
}

void put_ids(WholeWriter& writer, const std::string& of, const int16_t* ids, int count) {
    text_put(writer.out, " ");
    for (int i = 0; i < count; ++i) { text_put(writer.out, " %4d", id_token(writer, of, ids[i])); }
}

}  // namespace

// ---- joints and points ----

// A joint as a line names it, from where it is looked up by that name.
std::string joint_token(WholeWriter& writer, const std::string& of, const Joint* joint) {
    if (joint == nullptr) { return "world"; }
    if (model_find_joint(&writer.model, joint->name) != joint) {
        refuse(writer, of + "follows joint " + joint->name + ", which no line can name");
    }
    return name_token(writer, of, joint->name);
}

// The parent's name. A longer one that was cut until it is the joint's own is refused by the reader unless it is as
// long again: it gets a character that is cut off.
std::string parent_token(WholeWriter& writer, const std::string& of, const Joint& joint) {
    static constexpr const char* OF_LENGTH[] = {"x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    std::string parent = joint.parent_name;
    const size_t missing = sizeof joint.parent_name - parent.size();
    if (parent == joint.name && missing >= 1 && missing <= 4) {
        parent += OF_LENGTH[missing - 1];
    } else if (parent == joint.name) {
        refuse(writer, of + "is its own parent");
    }
    return name_token(writer, of, parent);
}

void put_joint(WholeWriter& writer, const Joint& joint, int32_t count) {
    const std::string of = std::string("joint ") + joint.name + ": ";
    const Vec3& place = joint.position;
    text_put(writer.out, "joint  %-8s  %5d %5d %5d", name_token(writer, of, joint.name).c_str(),
             whole(writer, of, place.x), whole(writer, of, place.y), whole(writer, of, place.z));
    text_put(writer.out, "  %-8s %3d", parent_token(writer, of, joint).c_str(), count);
    end_line(writer, of);
}

void put_blend(WholeWriter& writer, const BlendWeight& blend, int32_t count) {
    const std::string of = "blend group: ";
    text_put(writer.out, "blend  %-8s %-8s %3d", joint_token(writer, of, blend.joint_a).c_str(),
             joint_token(writer, of, blend.joint_b).c_str(), count);
    end_line(writer, of);
}

void put_point(WholeWriter& writer, const LaidPoint& laid) {
    const std::string of = "point " + std::to_string(laid.id) + ": ";
    const Point& point = *laid.point;
    text_put(writer.out, "%-3d   %5d %5d %5d", laid.id, whole(writer, of, point.position.x),
             whole(writer, of, point.position.y), whole(writer, of, point.position.z));
    if (!(point.weight >= WEIGHT_MIN && point.weight <= WEIGHT_MAX)) {
        refuse(writer, of + "its weight lies outside -1 to 2");
    }
    if (point.weight != 1.0f || laid.names_joints) {
        text_put(writer.out, "   %s", number_token(writer, of, point.weight).c_str());
    }
    if (laid.names_joints) {
        text_put(writer.out, "  %s %s", joint_token(writer, of, point.joint_a).c_str(),
                 joint_token(writer, of, point.joint_b).c_str());
    }
    end_line(writer, of);
}

void put_normal(WholeWriter& writer, const LaidPoint& laid) {
    const std::string of = "point " + std::to_string(laid.id) + ": ";
    const SpelledNormal normal = spell_normal(laid.point->normal);
    if (!normal.found) { refuse(writer, of + "its normal is not of length 1"); }
    text_put(writer.out, "%-3d  ", laid.id);
    for (const float component : {normal.written.x, normal.written.y, normal.written.z}) {
        text_put(writer.out, " %6s", number_token(writer, of, component).c_str());
    }
    end_line(writer, of);
}

void put_colour(WholeWriter& writer, const LaidPoint& laid) {
    const unsigned char* colour = laid.point->gouraud;
    text_put(writer.out, "%-3d   %-3d %-3d %-3d  %-3d", laid.id, colour[0], colour[1], colour[2], colour[3]);
    end_line(writer, {});
}

// ---- primitives ----

namespace {

bool has_own_controls(const Triangle& triangle) {
    const int* ends = triangle_edge_ends(&triangle);
    for (int i = 0; i < 2 * triangle_corners(&triangle); ++i) {
        if (triangle.controls[i] != triangle.points[ends[i]]) { return true; }
    }
    return false;
}

}  // namespace

TriangleParts needed_parts(const Triangle& triangle) {
    const int corners = triangle_corners(&triangle);
    const int curve = triangle.curve_type;
    const bool controls = curve != 0 && has_own_controls(triangle);
    const bool normals = controls || !std::equal(triangle.normals, triangle.normals + corners, triangle.points);
    return {curve != 0 && (normals || curve != DEFAULT_CURVE_TYPE[triangle.quad ? 1 : 0]), normals, controls};
}

void put_triangle(WholeWriter& writer, const std::string& of, const Triangle& triangle, const TriangleParts& parts) {
    const int corners = triangle_corners(&triangle);
    const int curve = triangle.curve_type;
    if (curve < 0 || curve > 4 || (triangle.quad && (curve == 1 || curve == 3))) {
        refuse(writer, of + "a curve type of " + std::to_string(curve));
    }
    text_put(writer.out, "%d", (curve != 0 ? 3 : 0) + (triangle.quad ? 1 : 0));
    put_ids(writer, of, triangle.points, corners);
    if (parts.curve) { text_put(writer.out, "  %d", curve); }
    if (parts.normals) { put_ids(writer, of, triangle.normals, corners); }
    if (parts.controls) { put_ids(writer, of, triangle.controls, 2 * corners); }
    end_line(writer, of);
}

namespace {

void put_corner_count(WholeWriter& writer, const std::string& of, size_t count, int least) {
    if (count < static_cast<size_t>(least) || count > static_cast<size_t>(MOST_CORNERS)) {
        refuse(writer, of + std::to_string(count) + " corners, where a line of the file takes " +
                           std::to_string(least) + " to " + std::to_string(MOST_CORNERS));
    }
    text_put(writer.out, "2");
}

}  // namespace

void put_polygon(WholeWriter& writer, const std::string& of, const Polygon& polygon) {
    const std::vector<PolygonVertex> strip = polygon_strip(polygon);
    put_corner_count(writer, of, strip.size(), STRIP_MIN);
    for (const PolygonVertex& vertex : strip) {
        if (vertex.normal != vertex.point) { refuse(writer, of + "normals of their own at the corners of a polygon"); }
        text_put(writer.out, " %d", id_token(writer, of, vertex.point));
    }
    end_line(writer, of);
}

void put_polyline(WholeWriter& writer, const std::string& of, const Line& line) {
    put_corner_count(writer, of, static_cast<size_t>(list_count(&line.vertices)), 1);
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
        text_put(writer.out, " %d", id_token(writer, of, line_point_id(stored)));
    }
    end_line(writer, of);
}

// ---- layers ----

void put_uvee(WholeWriter& writer, const std::string& of, int32_t id, const Uvee& uvee) {
    const std::string place = of + "texture coordinates of point " + std::to_string(id) + ": ";
    if (list_find(&writer.model.points, id) == nullptr) { refuse(writer, place + "it is none of the model"); }
    text_put(writer.out, "%d  %s  %s", id, number_token(writer, place, uvee.u).c_str(),
             number_token(writer, place, uvee.v).c_str());
    end_line(writer, place);
}

namespace {

// The name that led to the image, of which the record may have had no room for all.
std::string image_name(const Model& model, const LayerImage& image, int slot) {
    const std::string kept = image.names[slot];
    const ImageData* loaded = image_find_id(image.image_id[slot]);
    const std::string path = loaded != nullptr ? loaded->path : "";
    const std::string beginning = model_directory(&model) + kept;
    const bool was_cut = path.size() > beginning.size() && path.compare(0, beginning.size(), beginning) == 0;
    return was_cut ? path.substr(model_directory(&model).size()) : kept;
}

}  // namespace

std::string image_token(WholeWriter& writer, const std::string& of, const LayerImage& image, int slot) {
    const std::string plain = image_name(writer.model, image, slot);
    if (plain == "none" && slot != IMAGE_SLOT_REFLECTION) { refuse(writer, of + "an image called none"); }
    return name_token(writer, of, plain);
}

bool is_axis(int code) { return code >= AXIS_X && code <= AXIS_MINUS_Z; }

namespace {

bool is_repeat_factor(float factor) { return factor >= -REPEAT_MAX && factor <= REPEAT_MAX; }

std::string repeat_tokens(WholeWriter& writer, const std::string& of, const Layer& layer) {
    if (!layer.image_repeat) { return {}; }
    if (!is_repeat_factor(layer.repeat_u) || !is_repeat_factor(layer.repeat_v)) {
        refuse(writer, of + "a repeat factor outside -128 to 128");
    }
    return " repeat " + number_token(writer, of, layer.repeat_u) + " " + number_token(writer, of, layer.repeat_v);
}

}  // namespace

void put_image(WholeWriter& writer, const std::string& of, const Layer& layer, const LayerImage& image, int slot) {
    const std::string name = image_token(writer, of, image, slot);
    if (slot == IMAGE_SLOT_BASE) {
        const bool has_axes = is_axis(layer.image_axis_u) && is_axis(layer.image_axis_v);
        if (image.pixels[slot] != nullptr && !has_axes) { refuse(writer, of + "an image without axes"); }
        text_put(writer.out, "image  %s  %s %s%s", name.c_str(), axis_word(layer.image_axis_u),
                 axis_word(layer.image_axis_v), repeat_tokens(writer, of, layer).c_str());
    } else if (slot == IMAGE_SLOT_MIRROR) {
        text_put(writer.out, "mirrorimage  %s", name.c_str());
    } else {
        if (!(image.reflection >= 0.0f && image.reflection <= 1.0f)) {
            refuse(writer, of + "a strength of reflection outside 0 to 1");
        }
        text_put(writer.out, "reflect  %s  %s", name.c_str(), number_token(writer, of, image.reflection).c_str());
    }
    end_line(writer, of);
}

// The shortest share of 1 that the reader cuts to this byte.
std::string key_token(WholeWriter& writer, const std::string& of, int32_t byte) {
    constexpr double BYTES = 255.0;
    constexpr int MOST_DECIMALS = 7;
    if (byte < 0 || byte > 255) { refuse(writer, of + "a colour key outside 0 to 255"); }
    for (int decimals = 1; decimals < MOST_DECIMALS; ++decimals) {
        const double unit = std::pow(10.0, decimals);
        const std::string text = float_to_text(std::ceil(byte / BYTES * unit) / unit, decimals);
        const float share = to_float(text_to_double(text.c_str()));
        if (share <= 1.0f && float_to_int(share * 255.0f) == byte) { return text; }
    }
    return "1.0";
}

void put_key(WholeWriter& writer, const std::string& of, const Layer& layer) {
    text_put(writer.out, "invisible");
    for (const int32_t byte : layer.invisible_colour) {
        text_put(writer.out, " %s", key_token(writer, of, byte).c_str());
    }
    end_line(writer, of);
}

void put_layer_line(WholeWriter& writer, const std::string& of, const Layer& layer) {
    text_put(writer.out, "layer %s %d %d %d %s", name_token(writer, of, layer.name).c_str(), layer.colour[0],
             layer.colour[1], layer.colour[2], layer.singlesided ? "singlesided" : "doublesided");
    if (layer.mirror) {
        if (!is_axis(layer.mirror_axis)) { refuse(writer, of + "a mirror axis of none"); }
        text_put(writer.out, " mirror %s", axis_word(layer.mirror_axis));
    }
    end_line(writer, of);
}

void put_transparency(WholeWriter& writer, const std::string& of, const Layer& layer) {
    if (!(layer.transparency >= 0.0f && layer.transparency <= 1.0f)) {
        refuse(writer, of + "a transparency outside 0 to 1");
    }
    text_put(writer.out, "transparency %s", number_token(writer, of, layer.transparency).c_str());
    end_line(writer, of);
}

// ---- children ----

void put_child(WholeWriter& writer, const ChildLink& link) {
    const std::string of = std::string("child ") + link.name + ": ";
    text_put(writer.out, "child  %-8s ", name_token(writer, of, link.name).c_str());
    for (const Vec3& values : {link.position, link.scale}) {
        for (const float value : {values.x, values.y, values.z}) {
            text_put(writer.out, " %5s", number_token(writer, of, value).c_str());
        }
        text_put(writer.out, " ");
    }
    for (const char* turn : link.rotate) { text_put(writer.out, " %5s", name_token(writer, of, turn).c_str()); }
    Mat4 unused;
    if (!mat_rotate_text(&unused, link.rotate[0], link.rotate[1], link.rotate[2])) {
        refuse(writer, of + "a rotation that is none");
    }
    end_line(writer, of);
}

}  // namespace pelt::whole
