// pelt-model check: everything that is wrong with model files.
#include <limits>
#include <memory>

#include "commands.h"
#include "console.h"
#include "model_check.h"

namespace pelt::tool {

namespace {

struct CheckOptions {
    std::vector<std::string> files;
    bool strict = false;
    bool quiet = false;
    size_t most = 0;
};

int check_one(const CheckOptions& options, const std::string& file) {
    const std::vector<Problem> problems = check_model_file(file, options.strict);
    size_t printed = 0;
    for (const Problem& problem : problems) {
        if (options.most > 0 && printed == options.most) {
            print_report(file + ": " + std::to_string(problems.size() - printed) + " more problems");
            break;
        }
        print_report(problem_text(problem));
        ++printed;
    }
    if (problems.empty() && !options.quiet) { print_line(file + ": good"); }
    return problems.empty() ? STATUS_GOOD : STATUS_BAD_MODEL;
}

int run_check(const CheckOptions& options) {
    return for_each_file(options.files, [&](const std::string& file) { return check_one(options, file); });
}

}  // namespace

void add_check(CLI::App& program, int* status) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* command = program.add_subcommand("check", "Report everything that is wrong with models");
    command->add_option("FILE", options->files, "model files (.mod)")->required();
    command->add_flag("--strict", options->strict, "report lines that the reader ignores, too");
    command->add_option("--max", options->most, "stop after N problems of a file (default: all)")
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
    command->add_flag("-q,--quiet", options->quiet, "say nothing of good files");
    command->footer(
        "Loads each model, its images and its child models, and goes on where a load would end, so that one run\n"
        "names every bad line, first of all the one that ends a load. A problem is printed on standard error as\n"
        "FILE:LINE: TEXT, where an editor finds it. Reported besides: images and child models that are missing, bad\n"
        "normals, and ids above 32767, which the primitives cannot hold.\n\n"
        "Example: pelt-model check --strict models/*.mod\n");
    command->callback([options, status] { *status = run_check(*options); });
}

}  // namespace pelt::tool
