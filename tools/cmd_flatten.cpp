// pelt-model flatten: reduces a model to the plainest form of the format.
#include <memory>

#include "commands.h"
#include "console.h"
#include "foundation/load_error.h"
#include "model_files.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "reduce/tessellate.h"

namespace pelt::tool {

namespace {

int tessellate(Model* model) { return model_tessellate(model, BAKE_LEVEL); }

struct Step {
    const char* name;
    int (*run)(Model* model);
    bool in_pipeline;
};

constexpr Step STEPS[] = {
    {"mirror", model_bake_mirror, true},          {"tessellate", tessellate, true},
    {"triangulate", model_triangulate, false},    {"flatten", model_flatten_baked, true},
    {"split-normals", model_split_normals, true}, {"uvees", model_store_uvees, true},
    {"renumber", model_number_by_joint, true},
};

struct FlattenOptions {
    std::string input;
    ModelOutput output;
    std::vector<std::string> only;
};

std::vector<const Step*> chosen_steps(const FlattenOptions& options) {
    std::vector<const Step*> chosen;
    for (const Step& step : STEPS) {
        if (options.only.empty() && step.in_pipeline) { chosen.push_back(&step); }
    }
    for (const std::string& name : options.only) {
        for (const Step& step : STEPS) {
            if (name == step.name) { chosen.push_back(&step); }
        }
    }
    return chosen;
}

bool has_lines(const Model* model) {
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (list_count(&layer.lines) > 0) { return true; }
    }
    return false;
}

void warn_of_children(const Model* model, const std::string& input) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model == nullptr) { continue; }
        const std::string name = std::string("child ") + link.name + ": ";
        if (list_count(&link.model->joints) > 0) { print_warning(input, name + "its joints are not carried over"); }
        if (has_lines(link.model)) { print_warning(input, name + "its lines are not carried over"); }
        warn_of_children(link.model, input);
    }
}

bool ids_fit(const Model* model) { return model_highest_point(model) <= POINT_ID_LIMIT; }

int run_flatten(const FlattenOptions& options) {
    const ModelOwner model = load_model(options.input);
    if (model == nullptr) { return STATUS_BAD_MODEL; }
    const bool has_children = list_count(&model->children) > 0;
    if (!ids_fit(model.get())) {
        print_report(options.input + ": point ids above " + std::to_string(POINT_ID_LIMIT) + "; nothing is written");
        return STATUS_BAD_MODEL;
    }
    for (const Step* step : chosen_steps(options)) {
        if (has_children && step->run == model_flatten_baked) { warn_of_children(model.get(), options.input); }
        load_error_set(nullptr);
        if (!step->run(model.get()) || !ids_fit(model.get())) {
            const char* reason = load_error_get();
            print_report(options.input + ": " + step->name + ": " + (reason != nullptr ? reason : "the step failed") +
                         "; nothing is written");
            return STATUS_BAD_MODEL;
        }
    }
    return save_model(model.get(), options.input, options.output);
}

}  // namespace

void add_flatten(CLI::App& program, int* status) {
    auto options = std::make_shared<FlattenOptions>();
    CLI::App* command = program.add_subcommand("flatten", "Reduce a model to plain triangles, without children");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    add_model_output(command, &options->output);
    std::vector<std::string> names;
    for (const Step& step : STEPS) { names.emplace_back(step.name); }
    command->add_option("--only", options->only, "run these steps alone, in the order given")
        ->delimiter(',')
        ->allow_extra_args(false)  // the word behind the steps is the model
        ->check(CLI::IsMember(names))
        ->type_name("STEP[,STEP...]");
    command->footer(
        "Runs all steps but triangulate, in this order:\n"
        "  mirror         mirrored layers become layers of their own, NAME_mirror\n"
        "  tessellate     curved primitives become flat ones, each curved edge cut in two\n"
        "  triangulate    quads and polygons become triangles (part of flatten)\n"
        "  flatten        triangulate, then the child models are merged in, their mirrors and curves baked\n"
        "                 as above, their layers as NUMBER_NAME\n"
        "  split-normals  a corner with the normal of another point gets a point of its own\n"
        "  uvees          texture coordinates are stored point by point\n"
        "  renumber       points are put in joint order and numbered from 1 (models with joints)\n"
        "New points have whole coordinates. A step that would need point ids above 32767 is refused, and nothing is\n"
        "written; so is what no file can hold, unless --lay-out described writes it with its losses, as pelt-model\n"
        "write does.\n\n"
        "Examples:\n"
        "  pelt-model flatten models/figure.mod -o models/flat.mod\n"
        "  pelt-model flatten models/duck.mod -o models/half.mod --only mirror,tessellate\n");
    command->callback([options, status] { *status = run_flatten(*options); });
}

}  // namespace pelt::tool
