// pelt-model write: reads a model and writes it anew.
#include <memory>

#include "commands.h"
#include "model_files.h"

namespace pelt::tool {

namespace {

struct WriteOptions {
    std::string input;
    ModelOutput output;
};

int run_write(const WriteOptions& options) {
    const ModelOwner model = load_model(options.input);
    return model != nullptr ? save_model(model.get(), options.input, options.output) : STATUS_BAD_MODEL;
}

}  // namespace

void add_write(CLI::App& program, int* status) {
    auto options = std::make_shared<WriteOptions>();
    CLI::App* command = program.add_subcommand("write", "Read a model and write it in the standard lay-out");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    add_model_output(command, &options->output);
    command->footer(
        "Writes joints, points in joint order, normals, colours, layers and child links in fixed columns. The child\n"
        "models themselves are not written. The format holds less than a model: a warning names all that does not\n"
        "survive, such as blend groups, reflection maps, repeat factors, colour keys and names with blanks.\n"
        "OUT is replaced only when the new file is complete and reads back; naming the input itself is allowed.\n\n"
        "Example: pelt-model write models/tree.mod -o models/tidy.mod\n");
    command->callback([options, status] { *status = run_write(*options); });
}

}  // namespace pelt::tool
