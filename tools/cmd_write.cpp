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
    CLI::App* command = program.add_subcommand("write", "Read a model and write it anew");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    add_model_output(command, &options->output);
    command->footer(
        "Writes joints, blend groups, points in joint order, normals, colours, layers and child links. The child "
        "models\n"
        "themselves are not written. The file reads back as the same model; one that no file can hold is refused by\n"
        "name. --lay-out described writes fixed columns that hold less: a warning names all that does not survive, "
        "such\n"
        "as blend groups, reflection maps, repeat factors, colour keys and names with blanks.\n"
        "OUT is replaced only when the new file is complete and reads back; naming the input itself is allowed.\n\n"
        "Example: pelt-model write models/tree.mod -o models/tidy.mod\n");
    command->callback([options, status] { *status = run_write(*options); });
}

}  // namespace pelt::tool
