// pelt-model: the operations of the library that no script command reaches, as a command-line program.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "commands.h"
#include "console.h"
#include "system.h"

#ifndef PELT_VERSION
#define PELT_VERSION "unknown"
#endif

namespace {

using namespace pelt::tool;

constexpr const char* DESCRIPTION = "Look at, check, compare, rewrite, export and flatten models (.mod).";

constexpr const char* FOOTER =
    "Each command has its own help: pelt-model COMMAND --help.\n\n"
    "Several files are worked on one after the other, and a bad one does not stop the rest. Output goes to a new file\n"
    "that takes its name only when it is complete. Errors go to standard error, with the file and the line.\n\n"
    "Exit status: 0 all is good, 1 a model is bad or a file cannot be written (diff: the models\n"
    "differ), 2 the command line is wrong.\n\n"
    "Examples:\n"
    "  pelt-model info models/mill.mod\n"
    "  pelt-model check --strict models/*.mod\n"
    "  pelt-model flatten models/figure.mod -o models/flat.mod && pelt-model export models/flat.mod -o figure.obj\n";

std::string failure_message(const CLI::App* program, const CLI::Error& error) {
    const CLI::App* command = program->get_subcommands().empty() ? program : program->get_subcommands().front();
    const std::string help = command == program ? "pelt-model --help" : "pelt-model " + command->get_name() + " --help";
    return "pelt-model: " + shown(error.what()) + "\nTry '" + help + "' for more information.\n";
}

// What was printed may not have arrived, such as on a full disk. A status that is not good was explained before.
int finish(int status) {
    errno = 0;
    if ((std::fflush(stdout) == 0 && std::ferror(stdout) == 0) || status != STATUS_GOOD) { return status; }
    print_error(std::string("cannot write standard output: ") + std::strerror(errno != 0 ? errno : EIO));
    return STATUS_BAD_MODEL;
}

int run(const std::vector<std::string>& words) {
    CLI::App program(DESCRIPTION, "pelt-model");
    int status = STATUS_GOOD;
    program.allow_windows_style_options(false);  // a slash begins a path, on every system
    program.require_subcommand(0, 1);            // none is told below, so that an unknown word is told by its name
    program.set_version_flag("--version", "pelt-model " PELT_VERSION, "Print the version and exit");
    program.footer(FOOTER);
    program.failure_message(failure_message);
    for (const auto add :
         {add_info, add_check, add_diff, add_write, add_export, add_flatten, add_normals, add_ps2_check, add_import}) {
        add(program, &status);
    }
    try {
        std::vector<const char*> argv;
        for (const std::string& word : words) { argv.push_back(word.c_str()); }
        program.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& error) { return finish(program.exit(error) == 0 ? STATUS_GOOD : STATUS_WRONG_USE); }
    if (program.get_subcommands().empty()) {
        std::fputs("pelt-model: a command is required\nTry 'pelt-model --help' for more information.\n", stderr);
        return STATUS_WRONG_USE;
    }
    return finish(status);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(prepare_system(argc, argv));
    } catch (const std::exception& error) {
        print_error(error.what());
        return STATUS_BAD_MODEL;
    }
}
