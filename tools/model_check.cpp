// Finds all problems of model files, where a load ends at the first.
//
// What surprises: a line that ends a load is carried out all the same, and the read is told to go on behind it. Lines,
// files and child models are met in the order of a load, so that the first refusal is the one that ends it.
#include "model_check.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/key_hash.h"
#include "foundation/load_error.h"
#include "line_remarks.h"
#include "scene/model.h"
#include "system.h"

namespace pelt::tool {

namespace {

constexpr const char* COMMENT_CHARS = "#";
constexpr const char* MODEL_EXTENSION = ".mod";
constexpr const char* NO_TEXT = "Load failed";

struct Finding {
    size_t file_number;  // in the order in which the files are read
    bool refused;        // a load ends here
    Problem problem;
};

// A child that a file names, with the line that does.
struct NamedChild {
    std::string name;
    int32_t line;
};

struct ReadFile {
    size_t number;
    std::string path;  // under which it was met first
    std::vector<NamedChild> children;
    std::set<std::pair<int32_t, const char*>> told;  // lines of child links with what was wrong with them
};

struct TreeCheck {
    bool strict;
    bool go_on;  // behind the first refusal
    bool ended;
    std::vector<std::string> open_files;  // as for model_tree_refusal
    int32_t model_count;
    std::unordered_map<std::string, ReadFile, KeyHash> files;  // by what tells one from another
    std::vector<Finding> findings;
};

struct FileCheck {
    TreeCheck* tree;
    size_t number;
    std::string path;
    ModelFileContext context;
    LineRemarks remarks;
    std::vector<int32_t> child_lines;  // in the order of the links
};

void remark(TreeCheck& tree, size_t file_number, const Problem& problem) {
    tree.findings.push_back({file_number, false, problem});
}

void refuse(TreeCheck& tree, size_t file_number, const Problem& problem) {
    tree.findings.push_back({file_number, true, problem});
    tree.ended = !tree.go_on;
}

// ---- one line ----

// Why a line was refused, where the library has no text for it: by its first word, or by the section of a data line.
struct SilentRefusal {
    const char* word;  // null for a data line
    LineMode mode;
    const char* text;
};

constexpr SilentRefusal SILENT_REFUSALS[] = {
    {"layer", LINE_MODE_NONE, "the mirror axis of a layer must be x, y, z, -x, -y or -z"},
    {"transparency", LINE_MODE_NONE, "a transparency must lie in 0.0 to 1.0, behind a layer line"},
    {"reflect", LINE_MODE_NONE, "a reflection map needs a file name and a strength of 0.0 to 1.0"},
    {"image", LINE_MODE_NONE, "an image needs a file name and must stand behind the triangles of its layer"},
    {"mirrorimage", LINE_MODE_NONE, "a mirror image needs a file name"},
    {"blend", LINE_MODE_NONE, "the point count of a blend must be above 0"},
    {nullptr, LINE_MODE_POINTS, "a point id must be at least 1"},
    {nullptr, LINE_MODE_NORMALS, "a point id must be at least 1"},
    {nullptr, LINE_MODE_GOURAUD, "a point id must be at least 1"},
    {nullptr, LINE_MODE_TRIANGLES, "a curve type must be 0 to 4, and for a quad 0, 2 or 4"},
};

// Null where nothing is known.
const char* silent_refusal(const FileCheck& check) {
    const bool is_data = reader_is_int(0);
    for (const SilentRefusal& refusal : SILENT_REFUSALS) {
        const bool fits = refusal.word != nullptr ? !is_data && reader_token_equals(refusal.word, 0)
                                                  : is_data && refusal.mode == check.context.mode;
        if (fits) { return refusal.text; }
    }
    return nullptr;
}

void refuse_line(FileCheck& check, const char* silent) {
    const char* reason = load_error_get() != nullptr ? load_error_get() : silent;
    const std::string text = reason != nullptr ? reason : std::string("refused: ") + reader_line();
    refuse(*check.tree, check.number, {check.path, reader_line_number(), text});
}

void check_line(void* context) {
    FileCheck& check = *static_cast<FileCheck*>(context);
    remark_line(check.remarks, check.context.mode);
    const char* silent = silent_refusal(check);
    load_error_watch(nullptr, nullptr);  // the text alone: its place is told beside it
    load_error_set(nullptr);
    model_parse_line(&check.context);
    if (reader_take_abort_back()) { refuse_line(check, silent); }
    if (check.tree->ended) { reader_abort(); }
    while (check.child_lines.size() < static_cast<size_t>(list_count(&check.context.model->children))) {
        check.child_lines.push_back(reader_line_number());
    }
}

// ---- one file ----

void check_normals(FileCheck& check) {
    const auto points = list_elements<Point>(check.context.model->points);
    for (auto point = points.begin(); point != points.end() && !check.tree->ended; ++point) {
        if (!is_good_normal(point->normal)) {
            const int32_t line = check.remarks.normal_lines[point.int_key()];
            refuse(*check.tree, check.number, {check.path, line, "bad normal: " + std::to_string(point.int_key())});
        }
    }
}

std::vector<NamedChild> named_children(const FileCheck& check) {
    std::vector<NamedChild> children;
    for (const ChildLink& link : list_elements<ChildLink>(check.context.model->children)) {
        children.push_back({link.name, check.child_lines[children.size()]});
    }
    return children;
}

ReadFile read_file(TreeCheck& tree, const std::string& path) {
    FileCheck check{&tree, tree.files.size(), path, {}, {tree.strict, {}}, {}};
    check.remarks.remark = [&](int32_t line, const std::string& text) {
        remark(tree, check.number, {path, line, text});
    };
    Model* model = model_create(path.c_str(), nullptr);
    check.context.model = model;
    if (!reader_run_file(path.c_str(), COMMENT_CHARS, 1, check_line, &check) && !tree.ended) {
        refuse(tree, check.number, {path, 0, "could not be read to its end"});
    }
    check_normals(check);
    remark_file(check.remarks, model);
    if (tree.strict) { remark_cut_lines(check.remarks, path); }
    ReadFile read{check.number, path, named_children(check), {}};
    model_release(model);
    return read;
}

// ---- the tree of files ----

// What a file is called and where its images and children are looked for, however it was spelled.
std::string file_key(const std::string& file) {
    namespace fs = std::filesystem;
    const fs::path path = path_of(file);
    std::error_code problem;
    const fs::path directory = fs::canonical(path.has_parent_path() ? path.parent_path() : fs::path("."), problem);
    return problem ? file : name_of(directory / path.filename());
}

void check_tree(TreeCheck& tree, const std::string& path, const std::string& file);

// A place of a link is told once, however often its file is met.
void refuse_child(TreeCheck& tree, ReadFile& parent, const NamedChild& child, const char* reason,
                  const std::string& path) {
    if (parent.told.insert({child.line, reason}).second) {
        std::string text = reason;
        text.replace(text.find("%s"), 2, path);
        refuse(tree, parent.number, {parent.path, child.line, text});
    }
}

void check_child(TreeCheck& tree, ReadFile& parent, const std::string& parent_path, const NamedChild& child) {
    const char* directory = path_directory(parent_path.c_str());
    if (directory == nullptr) {
        return;  // a path that is too long for any model
    }
    const std::string path = directory + child.name + MODEL_EXTENSION;
    const std::string file = file_resolve(path.c_str());
    if (file.empty() || !file_exists(path.c_str())) {
        refuse_child(tree, parent, child, "Cannot find child model: %s", path);
    } else if (tree.model_count >= MODEL_TREE_NODE_LIMIT) {
        tree.ended = true;  // which the load tells of
    } else if (const char* reason = model_tree_refusal(tree.open_files, tree.model_count, file)) {
        refuse_child(tree, parent, child, reason, path);
    } else {
        check_tree(tree, path, file);
    }
}

void check_tree(TreeCheck& tree, const std::string& path, const std::string& file) {
    const std::string key = file_key(file);
    if (tree.files.count(key) == 0) {
        ReadFile read = read_file(tree, path);
        tree.files.emplace(key, std::move(read));
    }
    ReadFile& read = tree.files.at(key);  // stays where it is while others are added
    ++tree.model_count;
    tree.open_files.push_back(file);
    for (size_t i = 0; i < read.children.size() && !tree.ended; ++i) {
        check_child(tree, read, path, read.children[i]);
    }
    tree.open_files.pop_back();
}

std::vector<Finding> find_all(const std::string& path, bool strict, bool go_on) {
    TreeCheck tree{strict, go_on, false, {}, 0, {}, {}};
    check_tree(tree, path, file_resolve(path.c_str()));
    return std::move(tree.findings);
}

// Whether the text that a load left, cut to the size of its record, tells of this problem. A line may be refused
// without a text.
bool tells_of(const std::string& load_text, const std::string& problem) {
    constexpr size_t CUT_SIZE = 255;
    return load_text.empty() || load_text.size() >= CUT_SIZE || load_text.find(problem) != std::string::npos;
}

std::string load_text() { return load_error_get() != nullptr ? load_error_get() : ""; }

// What ended a load that left this text. A reason that only the whole tree shows has no place.
Finding end_of_load(const std::vector<Finding>& findings, const std::string& path, const std::string& text) {
    const auto refusal = std::find_if(findings.begin(), findings.end(), [](const Finding& f) { return f.refused; });
    if (refusal != findings.end() && tells_of(text, refusal->problem.text)) { return *refusal; }
    return {0, true, {path, 0, text.empty() ? NO_TEXT : text}};
}

}  // namespace

std::string problem_text(const Problem& problem) {
    const std::string place = problem.line > 0 ? ":" + std::to_string(problem.line) : "";
    return problem.file + place + ": " + problem.text;
}

Problem find_load_failure(const std::string& path) {
    const std::string text = load_text();
    if (!file_exists(path.c_str())) { return {path, 0, "could not find the file"}; }
    return end_of_load(find_all(path, false, false), path, text).problem;
}

std::vector<Problem> check_model_file(const std::string& path, bool strict) {
    if (!file_exists(path.c_str())) { return {Problem{path, 0, "could not find the file"}}; }
    Model* model = model_load(path.c_str());
    const bool loads = model != nullptr;
    const std::string text = load_text();
    model_release(model);
    std::vector<Finding> findings = find_all(path, strict, true);
    std::vector<Problem> problems;
    if (!loads) { problems.push_back(end_of_load(findings, path, text).problem); }
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
        return std::pair(a.file_number, a.problem.line) < std::pair(b.file_number, b.problem.line);
    });
    for (const Finding& finding : findings) {
        const Problem& problem = finding.problem;
        const bool told = !loads && problem.file == problems[0].file && problem.line == problems[0].line &&
                          problem.text == problems[0].text;
        if (!told) { problems.push_back(problem); }
    }
    return problems;
}

}  // namespace pelt::tool
