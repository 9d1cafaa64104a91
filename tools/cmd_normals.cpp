// pelt-model normals: makes the normals of a model anew from its faces.
#include <memory>

#include "commands.h"
#include "model_files.h"
#include "reduce/normals.h"

namespace pelt::tool {

namespace {

struct NormalsOptions {
    std::string input;
    ModelOutput output;
    bool curved = false;
};

int run_normals(const NormalsOptions& options) {
    const ModelOwner model = load_model(options.input);
    if (model == nullptr) { return STATUS_BAD_MODEL; }
    model_rebuild_finite_normals(model.get());
    model->has_normals = list_count(&model->points) > 0 ? 1 : 0;  // those that were made are its own now
    if (options.curved) { model_make_curved(model.get()); }
    return save_model(model.get(), options.input, options.output);
}

}  // namespace

void add_normals(CLI::App& program, int* status) {
    auto options = std::make_shared<NormalsOptions>();
    CLI::App* command = program.add_subcommand("normals", "Make the normals of a model anew");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    add_model_output(command, &options->output);
    command->add_flag("--curved", options->curved, "make flat triangles and quads curved, along the new normals");
    command->footer(
        "Every point gets the average of the directions of the faces around it, each distinct direction counted once,\n"
        "six at most. A face without a direction does not count, and where directions cancel each other the first is\n"
        "taken. Normals that the file gave are overwritten. Child models stay as they are.\n\n"
        "Example: pelt-model normals models/tree.mod -o models/round.mod --curved\n");
    command->callback([options, status] { *status = run_normals(*options); });
}

}  // namespace pelt::tool
