// pelt-model ps2-check: whether all images of models have their console companions.
#include <memory>

#include "commands.h"
#include "console.h"
#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "model_files.h"

namespace pelt::tool {

namespace {

// While one model is loaded, the registry holds its images and those of its children, and no others.
int run_ps2_check(const std::string& file) {
    const ModelOwner model = load_model(file);
    if (model == nullptr) { return STATUS_BAD_MODEL; }
    int images = 0;
    int bad = 0;
    for (const ImageData& image : list_elements<ImageData>(*image_registry())) {
        load_error_set(nullptr);
        ++images;
        if (!image_check_ps2_file(&image)) {
            ++bad;
            print_report(file + ": " + load_error_get());
        }
    }
    if (bad == 0) { print_line(file + ": good (" + std::to_string(images) + " images)"); }
    return bad == 0 ? STATUS_GOOD : STATUS_BAD_MODEL;
}

}  // namespace

void add_ps2_check(CLI::App& program, int* status) {
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* command = program.add_subcommand("ps2-check", "Check that all images have their PS2 files");
    command->add_option("FILE", *files, "model files (.mod)")->required();
    command->footer(
        "Beside each image NAME.tga of a model and its children there must be a NAME.p2i. Where its depth is below 16\n"
        "it names a palette, whose .p2c file must lie in the current directory. Every image that lacks one is\n"
        "reported; one that cannot be loaded is not looked at (pelt-model check names it).\n\n"
        "Example: pelt-model ps2-check models/mill.mod   # status 1: the sample models have no PS2 files\n");
    command->callback([files, status] { *status = for_each_file(*files, run_ps2_check); });
}

}  // namespace pelt::tool
