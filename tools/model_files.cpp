// Models on their way in and out of the program.
#include "model_files.h"

#include <set>
#include <string>
#include <unordered_map>

#include "commands.h"
#include "console.h"
#include "formats/model_reader.h"
#include "formats/model_writer.h"
#include "formats/whole_layout.h"
#include "formats/whole_writer.h"
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

constexpr const char* WHOLE = "whole";
constexpr const char* DESCRIBED = "described";

// The image files that the written model names. The described lay-out names no reflection maps.
std::set<std::string> image_names(const Model* model, bool with_reflections) {
    std::set<std::string> names;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (const LayerImage* image = layer_first_image(&layer)) {
            for (const int slot : {IMAGE_SLOT_BASE, IMAGE_SLOT_MIRROR}) { names.insert(image->names[slot]); }
            if (with_reflections) { names.insert(image->names[IMAGE_SLOT_REFLECTION]); }
        }
    }
    names.erase("");
    return names;
}

// Images and children are looked for in the directory of the file that names them.
void warn_of_missing_files(const Model* model, const std::string& input, const ModelOutput& to) {
    const std::string& output = to.path;
    const std::string directory = name_of(path_of(output).parent_path());
    std::set<std::string> names = image_names(model, to.lay_out == WHOLE);
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        names.insert(std::string(link.name) + ".mod");
    }
    for (const std::string& name : names) {
        if (!file_exists(path_join(directory.c_str(), name.c_str()).c_str())) {
            print_warning(input, name + " is not in the directory of " + output + ", where it will be looked for");
        }
    }
}

struct WrittenText {
    bool can_be_written;
    std::string text;
    std::string not_read_back;  // the reason, empty when it does
};

WrittenText write_described(Model* model, const std::string& input, const ModelOutput& output) {
    count_points_of_joints(model);
    const std::string text = model_write_text(model, file_part(output.path).c_str());
    const std::string refusal = refusal_of_text(text, model);
    warn_of_losses(model, input, !refusal.empty());
    return {true, text, refusal};
}

WrittenText write_whole(Model* model, const ModelOutput& output) {
    model_settle_counts(model);
    std::string refused;
    const std::string text = model_write_whole(model, file_part(output.path).c_str(), &refused);
    if (!refused.empty()) {
        print_report(output.path + ": no file can hold the model: " + refused +
                     "; nothing is written (--lay-out described writes it with its losses)");
        return {false, {}, {}};
    }
    return {true, text, difference_of_text(text, model)};
}

}  // namespace

ModelOwner load_model(const std::string& path) {
    ModelOwner model(model_load(path.c_str()));
    if (model == nullptr) { print_report(problem_text(find_load_failure(path))); }
    return model;
}

int save_model(Model* model, const std::string& input, const ModelOutput& output) {
    const WrittenText written =
        output.lay_out == DESCRIBED ? write_described(model, input, output) : write_whole(model, output);
    if (!written.can_be_written) { return STATUS_BAD_MODEL; }
    if (output.path != "-") { warn_of_missing_files(model, input, output); }
    if (!written.not_read_back.empty()) {
        print_report(output.path + ": the new file does not read back: " + written.not_read_back +
                     (output.force ? "" : "; nothing is written (--force writes it)"));
        if (!output.force) { return STATUS_BAD_MODEL; }
    }
    return write_replacing(output.path, written.text) ? STATUS_GOOD : STATUS_BAD_MODEL;
}

void add_model_output(CLI::App* command, ModelOutput* output) {
    command->add_option("-o,--output", output->path, "file to write; - for standard output")
        ->required()
        ->type_name("OUT");
    command->add_option("--lay-out", output->lay_out, "whole loses nothing; described loses what a warning names")
        ->check(CLI::IsMember({WHOLE, DESCRIBED}))
        ->type_name("LAYOUT");
    command->add_flag("--force", output->force, "write also what will not read back");
}

std::string file_part(const std::string& path) { return name_of(path_of(path).filename()); }

}  // namespace pelt::tool
