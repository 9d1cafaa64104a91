// Finds what a model loses on its way through the writer and back through the reader, one check for each place where
// the two disagree. A check says at most one thing of the model, or of each layer: how often, and where first.
//
// What surprises: rounding is judged by what the reader would make of the written text, so that a normal that comes
// back exactly, because reading normalises it, is none.
#include "tools/write_losses.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "formats/line_reader.h"
#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

using Losses = std::vector<WriteLoss>;

constexpr int NORMAL_DECIMALS = 3;
constexpr int WEIGHT_DECIMALS = 3;
constexpr int SCALE_DECIMALS = 3;
constexpr int UVEE_DECIMALS = 4;
constexpr int TRANSPARENCY_DECIMALS = 4;
constexpr int CURVE_TYPE_OF_QUAD = 4;  // what a curved quad reads back as

void lose(Losses& losses, const std::string& text) { losses.push_back(WriteLoss{text, false}); }
void break_file(Losses& losses, const std::string& text) { losses.push_back(WriteLoss{text, true}); }

// "1 point", "3 points".
std::string counted(int32_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string of_layer(const Layer& layer) { return "layer " + std::string(layer.name) + ": "; }

// How often something was met, and where first.
struct Tally {
    int32_t count = 0;
    int32_t first = 0;
    void note(int32_t id) {
        first = count == 0 ? id : first;
        ++count;
    }
    std::string places(const std::string& noun) const {
        return counted(count, noun) + " (first: " + std::to_string(first) + ")";
    }
};

template <typename Condition>
Tally points_where(const Model& model, Condition condition) {
    Tally tally;
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (condition(*point)) { tally.note(point.int_key()); }
    }
    return tally;
}

// ---- texts and numbers that do not come back ----

bool reads_back(const char* word) {
    return word[0] != '\0' && word[0] != '"' && std::strpbrk(word, " \t\r\n") == nullptr;
}

// The value behind a number that was written with so many decimals; a text that is no number reads as 0.
float rounded(float value, int decimals) {
    const std::string text = float_to_text(value, decimals);
    return word_class(text.c_str()) == WORD_TEXT ? 0.0f : to_float(text_to_double(text.c_str()));
}

bool loses_decimals(float value, int decimals) { return rounded(value, decimals) != value; }

bool loses_fraction(const Vec3& place) {
    return static_cast<float>(float_to_int(place.x)) != place.x ||
           static_cast<float>(float_to_int(place.y)) != place.y || static_cast<float>(float_to_int(place.z)) != place.z;
}

// What the reader makes of the normal that is written.
Vec3 normal_read_back(const Vec3& normal) {
    Vec3 back{rounded(normal.x, NORMAL_DECIMALS), rounded(normal.y, NORMAL_DECIMALS),
              rounded(normal.z, NORMAL_DECIMALS)};
    vec_normalise(&back);
    return back;
}

bool loses_normal(const Vec3& normal) {
    const Vec3 back = normal_read_back(normal);
    return back.x != normal.x || back.y != normal.y || back.z != normal.z;
}

bool is_refused_normal(const Vec3& normal) { return !is_good_normal(normal_read_back(normal)); }

// ---- the model ----

void check_name(Losses& losses, const char* kind, const char* name) {
    if (!reads_back(name)) {
        break_file(losses, std::string(kind) + " \"" + name +
                               "\": a name that is empty or holds blanks comes out without quotes and is read as "
                               "something else");
    }
}

void check_names(Losses& losses, const Model& model) {
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        check_name(losses, "joint", joint.name);
        check_name(losses, "parent joint", joint.parent_name);
    }
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        if (model_writer_skips_layer(&model, layer.name)) { continue; }
        check_name(losses, "layer", layer.name);
        if (const LayerImage* image = layer_first_image(&layer)) {
            for (const int slot : {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR}) {
                if (image->names[slot][0] != '\0') { check_name(losses, "image", image->names[slot]); }
            }
        }
    }
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        check_name(losses, "child", link.name);
        for (const auto& rotation : link.rotate) { check_name(losses, "rotation of a child", rotation); }
    }
}

using JointPair = std::pair<const Joint*, const Joint*>;

// The pairs of joints that the blend groups name: sorted, because each point is looked for among them.
std::vector<JointPair> blended_pairs(const Model& model) {
    std::vector<JointPair> pairs;
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        pairs.emplace_back(blend.joint_a, blend.joint_b);
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

void check_blends(Losses& losses, const Model& model) {
    const int32_t groups = list_count(&model.blends);
    if (groups > 0) {
        lose(losses, "not written, their points keep the first joint alone: " + counted(groups, "blend group"));
    }
}

void check_second_joints(Losses& losses, const Model& model) {
    std::unordered_map<const Joint*, const Joint*> parents{{nullptr, nullptr}};
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        parents[&joint] = model_find_joint(&model, joint.parent_name);
    }
    const std::vector<JointPair> blends = blended_pairs(model);
    const Tally lost = points_where(model, [&](const Point& point) {
        const auto parent = parents.find(point.joint_a);
        const Joint* read_back = parent != parents.end() ? parent->second : nullptr;
        return point.joint_b != read_back &&
               !std::binary_search(blends.begin(), blends.end(), JointPair{point.joint_a, point.joint_b});
    });
    if (lost.count > 0) { lose(losses, "second joint of their own lost: " + lost.places("point")); }
}

void check_world_weights(Losses& losses, const Model& model) {
    const Tally lost =
        points_where(model, [](const Point& point) { return point.joint_a == nullptr && point.weight != 1.0f; });
    if (lost.count > 0) { lose(losses, "weight lost, it reads back as 1: " + lost.places("world point")); }
}

void check_normals_flag(Losses& losses, const Model& model) {
    if (!model.has_normals && list_count(&model.points) > 0) {
        lose(losses, "the model has no normals and gains the default one for every point");
    }
}

// Faces whose corners lie on one line have no direction, and whoever makes normals of them gets a non-number.
void check_normals(Losses& losses, const Model& model) {
    const Tally refused = points_where(model, [](const Point& point) { return is_refused_normal(point.normal); });
    if (refused.count > 0) { break_file(losses, "a normal of no length or direction: " + refused.places("point")); }
}

void check_fractions(Losses& losses, const Model& model) {
    const Tally lost = points_where(model, [](const Point& point) { return loses_fraction(point.position); });
    if (lost.count > 0) { lose(losses, "fractions of the position lost: " + lost.places("point")); }
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        if (loses_fraction(joint.position)) {
            lose(losses, "joint " + std::string(joint.name) + " loses the fractions of its position");
        }
    }
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        if (loses_fraction(link.position)) {
            lose(losses, "child " + std::string(link.name) + " loses the fractions of its position");
        }
    }
}

void check_joint_counts(Losses& losses, const Model& model) {
    std::unordered_map<const Joint*, int32_t> named;
    for (const Point& point : list_elements<Point>(model.points)) { ++named[point.joint_a]; }
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        const int32_t stored = joint.point_count > 0 ? joint.point_count : 0;
        if (stored != named[&joint]) {
            lose(losses, "joint " + std::string(joint.name) + " counts " + std::to_string(joint.point_count) +
                             " points and " + std::to_string(named[&joint]) +
                             " name it: points are given to other joints");
        }
    }
}

void append_rounding(std::string& text, int32_t count, const char* noun, int decimals) {
    if (count > 0) {
        text += (text.empty() ? "" : ", ") + counted(count, noun) + " to " + std::to_string(decimals) + " decimals";
    }
}

void check_rounding(Losses& losses, const Model& model) {
    int32_t normals = 0;
    int32_t weights = 0;
    int32_t uvees = 0;
    int32_t transparencies = 0;
    int32_t scales = 0;
    for (const Point& point : list_elements<Point>(model.points)) {
        normals += !is_refused_normal(point.normal) && loses_normal(point.normal);
        weights += point.joint_a != nullptr && loses_decimals(point.weight, WEIGHT_DECIMALS);
    }
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        transparencies += loses_decimals(layer.transparency, TRANSPARENCY_DECIMALS);
        for (const Uvee& uvee : list_elements<Uvee>(layer.uvees)) {
            uvees += loses_decimals(uvee.u, UVEE_DECIMALS) || loses_decimals(uvee.v, UVEE_DECIMALS);
        }
    }
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        scales += loses_decimals(link.scale.x, SCALE_DECIMALS) || loses_decimals(link.scale.y, SCALE_DECIMALS) ||
                  loses_decimals(link.scale.z, SCALE_DECIMALS);
    }
    std::string text;
    append_rounding(text, normals, "normal", NORMAL_DECIMALS);
    append_rounding(text, weights, "weight", WEIGHT_DECIMALS);
    append_rounding(text, uvees, "uvee", UVEE_DECIMALS);
    append_rounding(text, transparencies, "transparency", TRANSPARENCY_DECIMALS);
    append_rounding(text, scales, "child scale", SCALE_DECIMALS);
    if (!text.empty()) { lose(losses, "rounded: " + text); }
}

// ---- layers ----

void check_colour_key(Losses& losses, const Model&, const Layer& layer) {
    const int32_t* key = layer.invisible_colour;
    if (!layer.invisible || (key[0] == 0 && key[1] == 0 && key[2] == 0)) { return; }
    const std::string text = of_layer(layer) + "the colour key " + std::to_string(key[0]) + " " +
                             std::to_string(key[1]) + " " + std::to_string(key[2]);
    if (key[0] > 1 || key[1] > 1 || key[2] > 1) {
        break_file(losses, text + " comes out in bytes, where the reader wants 0.0 to 1.0");
    } else {
        lose(losses, text + " comes out in bytes and reads back as another colour");
    }
}

bool names_own_points(const int16_t* ids, const int16_t* points, int count) {
    return std::memcmp(ids, points, static_cast<size_t>(count) * sizeof *ids) == 0;
}

bool has_ring_controls(const Triangle& triangle) {
    const int16_t* p = triangle.points;
    const int16_t quad_ring[] = {p[0], p[1], p[1], p[3], p[3], p[2], p[2], p[0]};
    const int16_t triangle_ring[] = {p[0], p[1], p[1], p[2], p[2], p[0]};
    return triangle.quad ? names_own_points(triangle.controls, quad_ring, 8)
                         : names_own_points(triangle.controls, triangle_ring, 6);
}

// Whether the writer's short look at the normals finds that they are others than the corners.
bool normals_are_written(const Triangle& triangle) {
    const bool curved = triangle.curve_type != 0;
    return triangle.normals[0] != triangle.points[0] || (triangle.quad && triangle.normals[3] != triangle.points[3]) ||
           (curved && !has_ring_controls(triangle));
}

void check_curve_types(Losses& losses, const Model&, const Layer& layer) {
    int32_t retyped = 0;
    int32_t shifted = 0;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        const bool untyped = triangle.curve_type != 0 && (triangle.quad || triangle.curve_type == CURVE_TYPE_OF_QUAD);
        if (untyped && normals_are_written(triangle)) {
            ++shifted;
        } else if (untyped && !(triangle.quad && triangle.curve_type == CURVE_TYPE_OF_QUAD)) {
            ++retyped;
        }
    }
    if (retyped > 0) { lose(losses, of_layer(layer) + "curve type lost: " + counted(retyped, "curved primitive")); }
    if (shifted > 0) {
        break_file(losses, of_layer(layer) + counted(shifted, "curved primitive") +
                               " with normals or controls of their own come out without their curve type, which "
                               "shifts what follows");
    }
}

void check_corner_normals(Losses& losses, const Model&, const Layer& layer) {
    int32_t triangles = 0;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        triangles += !normals_are_written(triangle) &&
                     !names_own_points(triangle.normals, triangle.points, triangle_corners(&triangle));
    }
    int32_t vertices = 0;
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            vertices += vertex.normal != vertex.point;
        }
    }
    if (triangles > 0) {
        lose(losses, of_layer(layer) + "normals of their own lost, because the first corner has none: " +
                         counted(triangles, "triangle"));
    }
    if (vertices > 0) {
        lose(losses, of_layer(layer) + "normals of their own lost: " + counted(vertices, "polygon corner"));
    }
}

// Repeat factors act on corners without texture coordinates of their own.
bool repeat_matters(const Layer& layer) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            if (list_find(&layer.uvees, triangle.points[corner]) == nullptr) { return true; }
        }
    }
    return list_count(&layer.polygons) > 0;
}

void check_images(Losses& losses, const Model&, const Layer& layer) {
    const LayerImage* image = layer_first_image(&layer);
    if (image == nullptr) { return; }
    if (image->names[IMAGE_SLOT_REFLECTION][0] != '\0') {
        lose(losses, of_layer(layer) + "the reflection map " + image->names[IMAGE_SLOT_REFLECTION] + " is not written");
    }
    if (layer.image_repeat && repeat_matters(layer)) {
        lose(losses, of_layer(layer) + "the repeat factors of the image are not written");
    }
    const bool surface = layer_has_surface(layer);
    if (surface && image->names[IMAGE_SLOT_BASE][0] == '\0') {
        break_file(losses, of_layer(layer) + "its image line comes out without a file name");
    }
    if (!surface && image->names[IMAGE_SLOT_MIRROR][0] != '\0') {
        lose(losses, of_layer(layer) + "the mirror image of a layer without a surface is not written");
    }
}

void check_uvees(Losses& losses, const Model& model, const Layer& layer) {
    const bool surface = layer_has_surface(layer);
    int32_t lost = 0;
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        lost += !surface || list_find(&model.points, uvee.int_key()) == nullptr;
    }
    if (lost > 0) { lose(losses, of_layer(layer) + "not written: " + counted(lost, "uvee")); }
}

// ---- primitives that the reader refuses or cuts ----

struct VertexRow {
    size_t bytes;  // of the line that is written
    int32_t count;
    bool all_known;  // each vertex is a point of the model itself
};

void take_vertex(VertexRow& row, const Model& model, int32_t id) {
    row.bytes += std::to_string(id).size() + 1;
    ++row.count;
    row.all_known = row.all_known && list_find(&model.points, id) != nullptr;
}

struct RowTally {
    int32_t strange;
    int32_t short_ones;
    int32_t long_ones;
};

void note_row(RowTally& tally, const VertexRow& row, int32_t least) {
    constexpr size_t LONGEST = READER_LINE_SIZE - 1;
    tally.strange += !row.all_known;
    tally.short_ones += row.count < least;
    // The blank at the end does not count: a piece that holds nothing else is passed over.
    tally.long_ones += row.bytes - 1 > LONGEST || row.count >= READER_TOKEN_LIMIT;
}

bool names_known_points(const Model& model, const Triangle& triangle) {
    for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
        if (list_find(&model.points, triangle.points[corner]) == nullptr) { return false; }
    }
    return true;
}

RowTally tally_rows(const Model& model, const Layer& layer) {
    constexpr VertexRow EMPTY_ROW{2, 0, true};
    RowTally tally{};
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        tally.strange += !names_known_points(model, triangle);
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        VertexRow row = EMPTY_ROW;
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            take_vertex(row, model, vertex.point);
        }
        note_row(tally, row, 3);
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        VertexRow row = EMPTY_ROW;
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            take_vertex(row, model, line_point_id(stored));
        }
        note_row(tally, row, 1);
    }
    return tally;
}

void check_rows(Losses& losses, const Model& model, const Layer& layer) {
    const RowTally tally = tally_rows(model, layer);
    if (tally.strange > 0) {
        break_file(losses, of_layer(layer) + counted(tally.strange, "primitive") +
                               " with a corner that is no point of this model, or whose id is above 32767");
    }
    if (tally.short_ones > 0) {
        break_file(losses, of_layer(layer) + counted(tally.short_ones, "primitive") +
                               " with fewer corners than the reader accepts");
    }
    if (tally.long_ones > 0) {
        break_file(losses, of_layer(layer) + counted(tally.long_ones, "primitive") +
                               " with more corners than one line of the file can hold");
    }
}

void check_transparency(Losses& losses, const Model&, const Layer& layer) {
    if (!(layer.transparency >= 0.0f && layer.transparency <= 1.0f)) {
        break_file(losses, of_layer(layer) + "a transparency outside 0.0 to 1.0");
    }
}

constexpr void (*MODEL_CHECKS[])(Losses&, const Model&) = {
    check_names,   check_blends,    check_second_joints, check_world_weights, check_normals_flag,
    check_normals, check_fractions, check_joint_counts,  check_rounding,
};

constexpr void (*LAYER_CHECKS[])(Losses&, const Model&, const Layer&) = {
    check_colour_key, check_curve_types, check_corner_normals, check_images,
    check_uvees,      check_rows,        check_transparency,
};

}  // namespace

std::vector<WriteLoss> model_write_losses(const Model* model) {
    Losses losses;
    if (model == nullptr) { return losses; }
    for (const auto check : MODEL_CHECKS) { check(losses, *model); }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (model_writer_skips_layer(model, layer.name)) {
            lose(losses, of_layer(layer) + "has no triangle and no line and is left out");
            continue;
        }
        for (const auto check : LAYER_CHECKS) { check(losses, *model, layer); }
    }
    return losses;
}

}  // namespace pelt
