// pelt-model import: the program pelt-import, by another name.
//
// What surprises: its words are not looked at here, not even one that asks for help. What knows other formats would
// have to be linked for that, and this program start slower for all its other work.
#include <memory>

#include "commands.h"
#include "console.h"
#include "system.h"

namespace pelt::tool {

namespace {

constexpr const char* IMPORT_PROGRAM = "pelt-import";

int run_import(const CLI::App& command) {
    const int status = run_program_beside(IMPORT_PROGRAM, command.remaining());
    if (status >= 0) { return status; }
    print_error(std::string(IMPORT_PROGRAM) + " is not beside this program");
    return STATUS_BAD_MODEL;
}

}  // namespace

void add_import(CLI::App& program, int* status) {
    CLI::App* command = program.add_subcommand("import", "Make a model of one in another format (pelt-import)");
    command->set_help_flag();
    command->prefix_command();
    command->callback([command, status] { *status = run_import(*command); });
}

}  // namespace pelt::tool
