// Finds all problems of model files, where a load ends at the first.
//
// What surprises: each line is read twice. A first read cuts the file into lines and never stops; each line is then
// handed to a read of its own, which carries it out and may stop, so that the next line still has its turn.
#include "model_check.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt::tool {

namespace {

constexpr const char* COMMENT_CHARS = "#";
constexpr int32_t ID_LIMIT = 32767;

// Ids that are too large are told once a file: how many, and where the first stands.
struct HighIds {
    int32_t count = 0;
    int32_t line = 0;
    int32_t id = 0;
    void note(int32_t at, int32_t high) {
        if (count++ == 0) {
            line = at;
            id = high;
        }
    }
};

struct FileCheck {
    std::string file;
    bool strict;
    ModelFileContext context;
    std::vector<Problem> problems;
    std::unordered_map<int32_t, int32_t> normal_lines;  // by point id, the last line that gave its normal
    std::vector<int32_t> child_lines;                   // in the order of the links
    HighIds points;
    HighIds references;
};

void note(FileCheck& check, int32_t line, const std::string& text) {
    check.problems.push_back(Problem{check.file, line, text});
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
        if (fits) {
            return refusal.text;
        }
    }
    return nullptr;
}

void carry_out_line(void* context) {
    load_error_watch(nullptr, nullptr);  // the text alone: its place is that of the outer read
    model_parse_line(&static_cast<FileCheck*>(context)->context);
}

bool is_known_word(const char* word) {
    static const std::unordered_set<std::string> WORDS = {
        "points", "normals", "layer",  "transparency", "reflect", "invisible", "joint",       "blend",
        "triangles", "lines", "goraud", "gouraud",      "uvees",   "image",     "mirrorimage", "child"};
    return WORDS.count(word) != 0;
}

void note_what_is_passed_over(FileCheck& check, int32_t line) {
    constexpr int32_t POLYLINE = 2;
    if (std::strlen(reader_line()) >= static_cast<size_t>(READER_LINE_SIZE) - 1) {
        note(check, line, "a line of more than 1023 bytes is read in pieces");
    }
    if (reader_token_count() == READER_TOKEN_LIMIT) {
        note(check, line, "fields behind the 256th are ignored");
    }
    if (!reader_is_int(0)) {
        if (!is_known_word(reader_text(0))) {
            note(check, line, std::string("ignored: ") + reader_line());
        }
    } else if (check.context.mode == LINE_MODE_LINES && reader_int(0) != POLYLINE) {
        note(check, line, "ignored: a line of this type");
    }
}

void note_high_ids(FileCheck& check, int32_t line) {
    const LineMode mode = check.context.mode;
    const bool names_points = mode == LINE_MODE_TRIANGLES || mode == LINE_MODE_LINES;
    if (mode == LINE_MODE_NONE || !reader_is_int(0)) {
        return;
    }
    if (!names_points) {
        if (reader_int(0) > ID_LIMIT && (mode == LINE_MODE_POINTS || mode == LINE_MODE_NORMALS)) {
            check.points.note(line, reader_int(0));
        }
        return;
    }
    for (int32_t token = 1; token < reader_token_count(); ++token) {
        if (reader_int(token) > ID_LIMIT) {
            check.references.note(line, reader_int(token));
        }
    }
}

void check_line(void* context) {
    FileCheck& check = *static_cast<FileCheck*>(context);
    const int32_t line = reader_line_number();
    if (check.strict) {
        note_what_is_passed_over(check, line);
    }
    note_high_ids(check, line);
    if (check.context.mode == LINE_MODE_NORMALS && reader_is_int(0)) {
        check.normal_lines[reader_int(0)] = line;
    }
    const char* text = reader_line();
    const char* silent = silent_refusal(check);
    load_error_set(nullptr);
    if (!reader_run_data(text, COMMENT_CHARS, 1, carry_out_line, &check)) {
        const char* reason = load_error_get() != nullptr ? load_error_get() : silent;
        note(check, line, reason != nullptr ? reason : std::string("refused: ") + text);
    }
    while (check.child_lines.size() < static_cast<size_t>(list_count(&check.context.model->children))) {
        check.child_lines.push_back(line);
    }
}

// ---- one file ----

bool in_unit_range(float value) { return value >= -1.0f && value <= 1.0f; }

void check_normals(FileCheck& check) {
    const ListElements<Point> points = list_elements<Point>(check.context.model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const Vec3& normal = point->normal;
        const bool good = in_unit_range(normal.x) && in_unit_range(normal.y) && in_unit_range(normal.z) &&
                          (normal.x != 0.0f || normal.y != 0.0f || normal.z != 0.0f);
        if (!good) {
            note(check, check.normal_lines[point.int_key()], "bad normal: " + std::to_string(point.int_key()));
        }
    }
}

void note_high(FileCheck& check, const HighIds& high, const char* text) {
    if (high.count > 0) {
        note(check, high.line, std::string(text) + ": " + std::to_string(high.id) +
                                   (high.count > 1 ? " and " + std::to_string(high.count - 1) + " more" : ""));
    }
}

// A child that a file names, with the line that does.
struct NamedChild {
    std::string path;
    int32_t line;
};

std::vector<NamedChild> check_lines(FileCheck& check) {
    Model* model = model_create(check.file.c_str(), nullptr);
    check.context.model = model;
    if (!reader_run_file(check.file.c_str(), COMMENT_CHARS, 1, check_line, &check)) {
        note(check, 0, "could not be read to its end");
    }
    check_normals(check);
    note_high(check, check.points, "a point id above 32767, which no primitive can name");
    note_high(check, check.references, "a primitive names an id above 32767, which is cut to 16 bits");
    std::vector<NamedChild> children;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        children.push_back({std::string(model->path) + link.name + ".mod", check.child_lines[children.size()]});
    }
    model_release(model);
    return children;
}

// ---- the tree of files ----

struct TreeCheck {
    bool strict;
    std::vector<std::string> open_files;  // from the root down to the one in hand, as they are called on disk
    std::unordered_set<std::string> seen;
    std::vector<Problem> problems;
};

void check_tree(TreeCheck& tree, const std::string& path);

void check_child(TreeCheck& tree, FileCheck& check, const NamedChild& child) {
    const std::string file = file_resolve(child.path.c_str());
    if (file.empty()) {
        note(check, child.line, "Cannot find child model: " + child.path);
    } else if (std::find(tree.open_files.begin(), tree.open_files.end(), file) != tree.open_files.end()) {
        note(check, child.line, "child model names itself or a model above it: " + child.path);
    } else if (tree.open_files.size() > MODEL_TREE_DEPTH_LIMIT) {
        note(check, child.line, "child models nested too deeply: " + child.path);
    }
}

void check_tree(TreeCheck& tree, const std::string& path) {
    const std::string file = file_resolve(path.c_str());
    if (!tree.seen.insert(file).second) {
        return;
    }
    FileCheck check{path, tree.strict, {}, {}, {}, {}, {}, {}};
    const std::vector<NamedChild> children = check_lines(check);
    tree.open_files.push_back(file);
    for (const NamedChild& child : children) {
        check_child(tree, check, child);
    }
    std::stable_sort(check.problems.begin(), check.problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    tree.problems.insert(tree.problems.end(), check.problems.begin(), check.problems.end());
    for (const NamedChild& child : children) {
        const std::string child_file = file_resolve(child.path.c_str());
        if (!child_file.empty() && tree.open_files.size() <= MODEL_TREE_DEPTH_LIMIT) {
            check_tree(tree, child.path);
        }
    }
    tree.open_files.pop_back();
}

}  // namespace

std::string problem_text(const Problem& problem) {
    const std::string place = problem.line > 0 ? ":" + std::to_string(problem.line) : "";
    return problem.file + place + ": " + problem.text;
}

std::vector<Problem> check_model_file(const std::string& path, bool strict) {
    if (!file_exists(path.c_str())) {
        return {Problem{path, 0, "could not find the file"}};
    }
    TreeCheck tree{strict, {}, {}, {}};
    check_tree(tree, path);
    // What only the whole shows, such as a tree with too many models.
    if (tree.problems.empty()) {
        Model* model = model_load(path.c_str());
        if (model == nullptr) {
            const char* text = load_error_get();
            tree.problems.push_back(Problem{path, 0, text != nullptr ? text : "Load failed"});
        }
        model_release(model);
    }
    return tree.problems;
}

}  // namespace pelt::tool
