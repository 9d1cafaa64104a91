// pelt-model export: writes a model as Wavefront OBJ.
#include <memory>

#include "commands.h"
#include "console.h"
#include "formats/obj_writer.h"
#include "model_files.h"
#include "output_file.h"

namespace pelt::tool {

namespace {

struct ExportOptions {
    std::string input;
    std::string output;
};

// Whether each point's id is the number of its line, which the corners of polygons count on.
bool is_numbered_from_one(const Model* model) {
    int32_t number = 0;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (point.int_key() != ++number) { return false; }
    }
    return true;
}

bool has_polygons(const Model* model) {
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (list_count(&layer.polygons) > 0) { return true; }
    }
    return false;
}

void warn(const Model* model, const std::string& input) {
    if (list_count(&model->children) > 0) {
        print_warning(input, "child models are not exported; flatten the model first");
    }
    if (has_polygons(model) && !is_numbered_from_one(model)) {
        print_warning(input,
                      "polygons name points by their ids, which here are not the numbers of their lines; "
                      "flatten the model first");
    }
}

int run_export(const ExportOptions& options) {
    const ModelOwner model = load_model(options.input);
    if (model == nullptr) { return STATUS_BAD_MODEL; }
    warn(model.get(), options.input);
    const std::string name = file_part(options.output);
    const bool written = write_replacing(options.output, model_write_obj_text(model.get(), name.c_str()));
    return written ? STATUS_GOOD : STATUS_BAD_MODEL;
}

}  // namespace

void add_export(CLI::App& program, int* status) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = program.add_subcommand("export", "Write a model as Wavefront OBJ");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    command->add_option("-o,--output", options->output, "file to write; - for standard output")
        ->required()
        ->type_name("OUT.obj");
    command->footer(
        "Exports points at rest, triangles, quads as two triangles, polygons, and lines, one group a layer. y and z\n"
        "change places. Normals, texture coordinates, materials and child models are not exported, and curved\n"
        "primitives come out flat: see pelt-model flatten --help for a model that holds them as geometry.\n\n"
        "Example: pelt-model export models/tree.mod -o tree.obj\n");
    command->callback([options, status] { *status = run_export(*options); });
}

}  // namespace pelt::tool
