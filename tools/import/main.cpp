// pelt-import: makes models of this system from those of others.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>
#include <system_error>

#include "commands.h"
#include "console.h"
#include "foundation/file_access.h"
#include "interchange/import.h"
#include "interchange/import_bundle.h"
#include "limited_child.h"
#include "output_file.h"
#include "system.h"

#ifndef PELT_VERSION
#define PELT_VERSION "unknown"
#endif

namespace {

using namespace pelt;
using namespace pelt::tool;
namespace fs = std::filesystem;

constexpr const char* DESCRIPTION =
    "Make a model (.mod) of one in another format: glTF, OBJ, FBX, Collada, STL, PLY, 3DS ...";

constexpr const char* FOOTER =
    "The model gets OUT's name, its images and child models the same with a word behind it; all lie in the directory\n"
    "of OUT. Without -o it is made in the current directory, where no file of that name may be. Nothing is written\n"
    "unless all of it was made.\n\n"
    "What the format cannot say is told as a warning; with --strict it is an error, and nothing is written.\n\n"
    "Exit status: 0 all is good, 1 the file cannot be imported, 2 the command line is wrong.\n\n"
    "Example: pelt-import chair.gltf -o models/chair.mod\n";

constexpr const char* MODEL_EXTENSION = ".mod";

struct ImportCommand {
    std::string input;
    std::string output;
    bool strict = false;
    bool quiet = false;
    ImportOptions options;
    ChildLimits limits{1024, 20};
};

bool has_model_ending(const fs::path& path) {
    std::string ending = name_of(path.extension());
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c == 'M' || c == 'O' || c == 'D' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return ending == MODEL_EXTENSION;
}

// Where the model goes; empty with an error printed where it cannot.
fs::path output_path(const ImportCommand& command, int* status) {
    const bool is_named = !command.output.empty();
    const fs::path path =
        is_named ? path_of(command.output) : path_of(command.input).filename().replace_extension(MODEL_EXTENSION);
    *status = is_named ? STATUS_WRONG_USE : STATUS_BAD_MODEL;
    std::error_code unimportant;
    if (is_named && (!has_model_ending(path) || path.stem().empty())) {
        print_error("the name of the model must end in .mod: " + command.output);
        return {};
    }
    if (!is_named && fs::exists(fs::symlink_status(path, unimportant))) {
        print_error(name_of(path) + " is there already; -o names it if it is to be replaced");
        return {};
    }
    return path;
}

ImportResult import_in_child(const ImportCommand& command, const std::string& model_file) {
    const ChildResult child = run_in_child(
        command.limits, [&] { return import_bundle(import_model_file(command.input, model_file, command.options)); });
    ImportResult result;
    if (!child.error.empty()) {
        result.error = child.error;
    } else if (!import_unbundle(child.output, &result)) {
        result = {};
        result.error = "it is broken: what its reader made of it cannot be used";
    }
    return result;
}

fs::path path_of_file(const ImportResult& result, const ImportedFile& file, const fs::path& output) {
    return file.name == result.main ? output : output.parent_path() / path_of(file.name);
}

// An image that is made may have the name of one that was read.
bool spares_sources(const ImportResult& result, const fs::path& output) {
    for (const ImportedFile& file : result.files) {
        const fs::path written = path_of_file(result, file, output);
        for (const std::string& source : result.sources) {
            std::error_code unimportant;
            if (fs::equivalent(written, path_of(source), unimportant)) {
                print_error(name_of(written) + " would take the place of what it is made from; -o names another model");
                return false;
            }
        }
    }
    return true;
}

bool write_files(const ImportResult& result, const fs::path& output) {
    return std::all_of(result.files.begin(), result.files.end(), [&](const ImportedFile& file) {
        return write_replacing(name_of(path_of_file(result, file, output)), file.content);
    });
}

int run_import(const ImportCommand& command) {
    int status = STATUS_GOOD;
    const fs::path output = output_path(command, &status);
    if (output.empty()) { return status; }
    const ImportResult result = import_in_child(command, name_of(output.filename()));
    if (!result.error.empty() || result.files.empty()) {
        print_report(command.input + ": " + (result.error.empty() ? "nothing was made of it" : result.error));
        return STATUS_BAD_MODEL;
    }
    for (const std::string& loss : result.losses) {
        if (command.strict) {
            print_report(command.input + ": " + loss);
        } else {
            print_warning(command.input, loss);
        }
    }
    if (command.strict && !result.losses.empty()) { return STATUS_BAD_MODEL; }
    if (!spares_sources(result, output) || !write_files(result, output)) { return STATUS_BAD_MODEL; }
    if (command.quiet) { return STATUS_GOOD; }
    for (const std::string& note : result.notes) { print_line(command.input + ": " + note); }
    for (const ImportedFile& file : result.files) { print_line("made " + name_of(path_of_file(result, file, output))); }
    return STATUS_GOOD;
}

void add_options(CLI::App& program, ImportCommand& command) {
    program.add_option("FILE", command.input, "model of another format")->required();
    program.add_option("-o,--output", command.output, "model to write (.mod)")->type_name("OUT");
    program.add_option("--scale", command.options.scale, "units to one of the file (default: chosen by its size)")
        ->type_name("S")
        ->check(CLI::Range(1e-12, 1e12).description(""));
    program.add_option("--up", command.options.up, "the axis of the file that points up: y or z")
        ->type_name("AXIS")
        ->transform(CLI::CheckedTransformer(std::map<std::string, ImportUp>{{"y", UP_Y}, {"z", UP_Z}}).description(""));
    program
        .add_option("--sides", command.options.sides, "one or both sides of each surface (default: as the file says)")
        ->type_name("SIDES")
        ->transform(
            CLI::CheckedTransformer(std::map<std::string, ImportSides>{{"one", SIDES_ONE}, {"both", SIDES_BOTH}})
                .description(""));
    program.add_option("--max-texture", command.options.max_texture, "pixels on a side of an image, at most")
        ->type_name("N")
        ->check(CLI::Range(1, 32767).description(""))
        ->capture_default_str();
    program.add_option("--memory", command.limits.megabytes, "megabytes that the reader may take")
        ->type_name("MB")
        ->check(CLI::Range(128, 1024 * 1024).description(""))
        ->capture_default_str();
    program.add_option("--seconds", command.limits.seconds, "seconds that the reader may take")
        ->type_name("N")
        ->check(CLI::Range(1, 24 * 60 * 60).description(""))
        ->capture_default_str();
    program.add_flag("--strict", command.strict, "anything that is lost is an error");
    program.add_flag("-q,--quiet", command.quiet, "say nothing of what went well");
}

int run(const std::vector<std::string>& words) {
    CLI::App program(DESCRIPTION, "pelt-import");
    ImportCommand command;
    program.set_version_flag("--version", "pelt-import " PELT_VERSION, "Print the version and exit");
    program.footer(FOOTER);
    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "pelt-import: " + shown(error.what()) + "\nTry 'pelt-import --help' for more information.\n";
    });
    add_options(program, command);
    try {
        std::vector<const char*> argv;
        for (const std::string& word : words) { argv.push_back(word.c_str()); }
        program.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& error) { return program.exit(error) == 0 ? STATUS_GOOD : STATUS_WRONG_USE; }
    const int status = run_import(command);
    if (std::fflush(stdout) == 0 || status != STATUS_GOOD) { return status; }
    print_error("cannot write standard output");
    return STATUS_BAD_MODEL;
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
