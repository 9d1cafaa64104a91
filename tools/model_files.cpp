// Models on their way in and out of the program.
#include "model_files.h"

#include <set>
#include <string>
#include <unordered_map>

#include "commands.h"
#include "console.h"
#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "foundation/file_access.h"
#include "model_check.h"
#include "output_file.h"
#include "read_back.h"
#include "system.h"
#include "write_losses.h"

namespace pelt::tool {

namespace {

void warn_of_losses(const Model* model, const std::string& input, bool is_refused) {
    for (const WriteLoss& loss : model_write_losses(model)) {
        const bool is_reason = is_refused && loss.unreadable;
        print_warning(input, loss.text + (is_reason ? " (the new file will not read back)" : ""));
    }
}

// A joint's points are written together and dealt out by its count when they are read: those that a blend gave it, and
// those that a step added, count as well.
void count_points_of_joints(Model* model) {
    std::unordered_map<const Joint*, int32_t> named;
    for (const Point& point : list_elements<Point>(model->points)) { ++named[point.joint_a]; }
    for (Joint& joint : list_elements<Joint>(model->joints)) { joint.point_count = named[&joint]; }
}

// Images and children are looked for in the directory of the file that names them.
void warn_of_missing_files(const Model* model, const std::string& input, const std::string& output) {
    const std::string directory = name_of(path_of(output).parent_path());
    std::set<std::string> names = image_names(model);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        names.insert(std::string(link.name) + ".mod");
    }
    for (const std::string& name : names) {
        if (!file_exists(path_join(directory.c_str(), name.c_str()).c_str())) {
            print_warning(input, name + " is not in the directory of " + output + ", where it will be looked for");
        }
    }
}

}  // namespace

ModelOwner load_model(const std::string& path) {
    ModelOwner model(model_load(path.c_str()));
    if (model == nullptr) { print_report(problem_text(find_load_failure(path))); }
    return model;
}

int save_model(Model* model, const std::string& input, const ModelOutput& output) {
    count_points_of_joints(model);
    const std::string text = model_write_text(model, file_part(output.path).c_str());
    const std::string refusal = refusal_of_text(text, model);
    warn_of_losses(model, input, !refusal.empty());
    if (output.path != "-") { warn_of_missing_files(model, input, output.path); }
    if (!refusal.empty()) {
        print_report(output.path + ": the new file does not read back: " + refusal +
                     (output.force ? "" : "; nothing is written (--force writes it)"));
        if (!output.force) { return STATUS_BAD_MODEL; }
    }
    return write_replacing(output.path, text) ? STATUS_GOOD : STATUS_BAD_MODEL;
}

std::set<std::string> image_names(const Model* model) {
    std::set<std::string> names;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (const LayerImage* image = layer_first_image(&layer)) {
            for (const int slot : {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR}) { names.insert(image->names[slot]); }
        }
    }
    names.erase("");
    return names;
}

void add_model_output(CLI::App* command, ModelOutput* output) {
    command->add_option("-o,--output", output->path, "file to write; - for standard output")
        ->required()
        ->type_name("OUT");
    command->add_flag("--force", output->force, "write also what will not read back");
}

std::string file_part(const std::string& path) { return name_of(path_of(path).filename()); }

}  // namespace pelt::tool
