// pelt-model check: everything that is wrong with model files.
#include <limits>
#include <memory>

#include "commands.h"
#include "console.h"
#include "model_check.h"
#include "problem_report.h"

namespace pelt::tool {

namespace {

constexpr const char* TEXT = "text";

struct CheckOptions {
    std::vector<std::string> files;
    bool strict = false;
    bool quiet = false;
    size_t most = 0;
    std::string format = TEXT;
};

void print_text(const CheckOptions& options, const CheckedFile& checked) {
    for (const Problem& problem : checked.problems) { print_report(problem_text(problem)); }
    if (checked.left_out > 0) {
        print_report(checked.file + ": " + std::to_string(checked.left_out) + " more problems");
    }
    if (checked.problems.empty() && !options.quiet) { print_line(checked.file + ": good"); }
}

CheckedFile check_one(const CheckOptions& options, const std::string& file) {
    CheckedFile checked{file, check_model_file(file, options.strict), 0};
    if (options.most > 0 && checked.problems.size() > options.most) {
        checked.left_out = checked.problems.size() - options.most;
        checked.problems.resize(options.most);
    }
    return checked;
}

int run_check(const CheckOptions& options) {
    std::vector<CheckedFile> all;
    const int status = for_each_file(options.files, [&](const std::string& file) {
        all.push_back(check_one(options, file));
        const bool is_good = all.back().problems.empty();
        if (options.format == TEXT) {
            print_text(options, all.back());
            all.clear();
        }
        return is_good ? STATUS_GOOD : STATUS_BAD_MODEL;
    });
    if (options.format != TEXT) { print_bytes(problem_report(options.format, all)); }
    return status;
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
    command
        ->add_option("--format", options->format,
                     "text (default), json, sarif, github: for programs, on standard output")
        ->check(CLI::IsMember({TEXT, JSON, SARIF, GITHUB}))
        ->type_name("FORMAT");
    command->add_flag("-q,--quiet", options->quiet, "say nothing of good files");
    command->footer(
        "Loads each model, its images and its child models, and goes on where a load would end, so that one run\n"
        "names every bad line, first of all the one that ends a load. A problem is printed on standard error as\n"
        "FILE:LINE: TEXT, where an editor finds it. Reported besides: images and child models that are missing, bad\n"
        "normals, and ids above 32767, which the primitives cannot hold.\n"
        "--format github prints what a workflow shows beside the lines of a change, sarif what code scanners read.\n\n"
        "Example: pelt-model check --strict models/*.mod\n");
    command->callback([options, status] { *status = run_check(*options); });
}

}  // namespace pelt::tool
