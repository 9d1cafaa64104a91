// The commands of pelt-model, one a file.
#pragma once

#include <CLI/CLI.hpp>

namespace pelt::tool {

enum ExitStatus : int {
    STATUS_GOOD = 0,
    STATUS_BAD_MODEL = 1,  // also a file that cannot be read or written
    STATUS_WRONG_USE = 2,
    // Of a comparison, as everyone's diff has them.
    STATUS_DIFFERENT = 1,
    STATUS_NOT_COMPARED = 2,
};

struct ModelOutput;

// The options of a command that writes a model.
void add_model_output(CLI::App* command, ModelOutput* output);

// Each adds its command to the program. When the command line names it, it runs and stores its status.
void add_info(CLI::App& program, int* status);
void add_check(CLI::App& program, int* status);
void add_diff(CLI::App& program, int* status);
void add_write(CLI::App& program, int* status);
void add_export(CLI::App& program, int* status);
void add_flatten(CLI::App& program, int* status);
void add_normals(CLI::App& program, int* status);
void add_ps2_check(CLI::App& program, int* status);
void add_import(CLI::App& program, int* status);

}  // namespace pelt::tool
