// pelt-model diff: what became of a model.
//
// What surprises: a version control system that calls this as its own comparison hands over two files with names of
// its own, one of which can be the empty device, and takes any status but 0 for a crash.
#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "console.h"
#include "formats/model_changes.h"
#include "lone_model.h"

namespace pelt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int JSON_INDENT = 2;

struct DiffOptions {
    std::vector<std::string> words;
    bool json = false;
    bool git = false;
};

// The words behind "git diff"'s own program: the name, then of the old and of the new file a path, a hash and a mode.
enum GitWord : size_t { GIT_NAME = 0, GIT_OLD = 1, GIT_NEW = 4, GIT_WORDS = 7 };
constexpr const char* NO_FILE[] = {"/dev/null", "nul"};

const char* word_of(ChangeKind kind) {
    static constexpr const char* WORDS[] = {"added", "removed", "moved", "changed", "set", "reordered", "other"};
    return WORDS[kind];
}

Json json_of(const ModelChangePart& part) {
    Json json{{"change", word_of(part.kind)}, {"what", part.what}};
    if (part.count > 0) { json["count"] = part.count; }
    if (part.kind == CHANGE_MOVED) { json["distance"] = part.distance; }
    if (part.kind == CHANGE_SET) {
        json["from"] = part.from;
        json["to"] = part.to;
    }
    return json;
}

Json json_of(const std::vector<ModelChange>& changes) {
    Json all = Json::array();
    for (const ModelChange& change : changes) {
        Json parts = Json::array();
        for (const ModelChangePart& part : change.parts) { parts.push_back(json_of(part)); }
        all.push_back({{"subject", change.subject}, {"name", change.name}, {"changes", parts}});
    }
    return all;
}

void print_changes(const std::vector<ModelChange>& changes, bool json) {
    if (json) {
        print_bytes(json_of(changes).dump(JSON_INDENT, ' ', true, Json::error_handler_t::replace) + "\n");
        return;
    }
    for (const ModelChange& change : changes) { print_line(model_change_text(change)); }
}

// Both models, or nulls where there is no file; false when one cannot be read.
bool load_both(const std::string& old_path, const std::string& new_path, ModelOwner* from, ModelOwner* to) {
    const auto load = [](const std::string& path, ModelOwner* model) {
        if (path == NO_FILE[0] || path == NO_FILE[1]) { return true; }
        *model = load_lone_model(path);
        return *model != nullptr;
    };
    const bool has_old = load(old_path, from);
    return load(new_path, to) && has_old;
}

int run_diff(const DiffOptions& options) {
    const std::string& old_path = options.git ? options.words[GIT_OLD] : options.words.front();
    const std::string& new_path = options.git ? options.words[GIT_NEW] : options.words.back();
    ModelOwner from;
    ModelOwner to;
    const bool is_read = load_both(old_path, new_path, &from, &to);
    if (options.git) { print_line("model " + options.words[GIT_NAME]); }
    if (!is_read) { return options.git ? STATUS_GOOD : STATUS_NOT_COMPARED; }
    const std::vector<ModelChange> changes = model_changes(from.get(), to.get());
    print_changes(changes, options.json);
    return changes.empty() || options.git ? STATUS_GOOD : STATUS_DIFFERENT;
}

// How many words there must be.
std::string refusal_of_words(const DiffOptions& options) {
    if (options.git) { return options.words.size() >= GIT_WORDS ? "" : "--git is followed by the words of git diff"; }
    return options.words.size() == 2 ? "" : "two model files are compared";
}

}  // namespace

void add_diff(CLI::App& program, int* status) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App* command = program.add_subcommand("diff", "Tell what became of a model");
    command->add_option("OLD NEW", options->words, "two model files (.mod)")->required();
    command->add_flag("--json", options->json, "print JSON: an array with an object for each thing that changed");
    command->add_flag("--git", options->git, "take the words that git hands to an external diff program");
    command->footer(
        "A line for each layer, joint and child that differs, and for the points. Only the two files are read: images\n"
        "and child models are compared by their names.\n\n"
        "Exit status: 0 both are the same, 1 they differ, 2 the command line is wrong or a file cannot be read.\n"
        "With --git it is 0 unless the command line is wrong.\n\n"
        "Example: pelt-model diff models/tree.mod models/lantern.mod  # status 1\n");
    command->callback([options, status] {
        const std::string refusal = refusal_of_words(*options);
        if (!refusal.empty()) { throw CLI::ValidationError(refusal); }
        *status = run_diff(*options);
    });
}

}  // namespace pelt::tool
