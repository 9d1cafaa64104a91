// Export of the surfaces and lines of a model, at rest, to the Wavefront text format.
//
// What surprises: the second and the third coordinate change places; and a corner is the number of its "v" line in
// faces and lines, but the id of its point in a polygon. Both are intended.
#include "formats/obj_writer.h"

#include <string>
#include <vector>

#include "formats/model_writer.h"
#include "formats/text_output.h"
#include "foundation/file_access.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

// With its dot, behind the dot that path_set_extension keeps: two dots, intended.
constexpr const char* OBJ_EXTENSION = ".obj";
constexpr const char* HEAD = "# This file was generated automatically by Sorvel.\n";

// Numbers of the "v" lines by the slots of their points. Counted once, since the rank of one point takes a walk.
std::vector<int32_t> number_points(const Model& model) {
    std::vector<int32_t> numbers(static_cast<size_t>(model.points.capacity), 0);
    int32_t number = 0;
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        numbers[static_cast<size_t>(point.slot())] = ++number;
    }
    return numbers;
}

struct ObjExport {
    TextOutput& out;
    const Model& model;
    const std::vector<int32_t> numbers;
};

// 0 for a point that is not the model's own.
int32_t number_of(const ObjExport& file, int32_t point_id) {
    const int32_t slot = list_index_of(&file.model.points, point_id, 0);
    return slot >= 0 ? file.numbers[static_cast<size_t>(slot)] : 0;
}

void put_face(ObjExport& file, int32_t a, int32_t b, int32_t c) {
    text_put(file.out, "f %d %d %d\n", number_of(file, a), number_of(file, b), number_of(file, c));
}

void put_faces(ObjExport& file, const Layer& layer) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        const int16_t* points = triangle.points;
        put_face(file, points[0], points[1], points[2]);
        if (triangle.quad) { put_face(file, points[2], points[1], points[3]); }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        text_put(file.out, "f ");
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            text_put(file.out, "%d ", vertex.point);  // the id, not the number: intended
        }
        text_put(file.out, "\n");
    }
}

void put_lines(ObjExport& file, const Layer& layer) {
    for (const Line& line : list_elements<Line>(layer.lines)) {
        text_put(file.out, "l ");
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            text_put(file.out, "%d ", number_of(file, line_point_id(stored)));
        }
        text_put(file.out, "\n");
    }
}

void put_obj(TextOutput& out, const Model& model, const char* file_name) {
    text_put(out, HEAD);
    text_put(out, "#\n# model: %s\n#\n", text_for_comment(file_name).c_str());
    text_put(out, "#\n# world points\n#\n");
    for (const Point& point : list_elements<Point>(model.points)) {
        const Vec3& place = point.position;
        text_put(out, "v %s %s %s\n", float_to_text(place.x, 6).c_str(), float_to_text(place.z, 6).c_str(),
                 float_to_text(place.y, 6).c_str());
    }
    ObjExport file{out, model, number_points(model)};
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        if (!model_writer_skips_layer(&model, layer.name)) {
            text_put(out, "\ng %s\n", layer.name);
            put_faces(file, layer);
            put_lines(file, layer);
        }
    }
}

}  // namespace

int model_export(const Model* model, int format, const char* path) {
    return format == EXPORT_FORMAT_OBJ ? model_write_obj(model, path) : 0;
}

int model_write_obj(const Model* model, const char* path) {
    if (model == nullptr || path == nullptr) { return 0; }
    const std::string name = path_set_extension(path, OBJ_EXTENSION);
    const int slot = file_open(name.c_str(), "w");
    if (slot < 0) { return 0; }
    TextOutput out = text_output_to_slot(&slot);
    put_obj(out, *model, name.c_str());
    text_finish(out);  // whether it succeeded is not looked at
    file_close(slot);
    return 1;
}

std::string model_write_obj_text(const Model* model, const char* file_name) {
    std::string text;
    if (model != nullptr) {
        TextOutput out = text_output_to_string(&text);
        put_obj(out, *model, file_name);
        text_finish(out);
    }
    return text;
}

}  // namespace pelt
