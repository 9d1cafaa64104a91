// Reader of model files: the lines first, and what can only be done behind the last of them, which is to deal the
// points out to the joints, to test the normals and to load the child models.
//
// What surprises: the points section has no marks for joints. A joint says how many points it owns, and the points
// are dealt out in the order of their first mention, to the joints, then to the blend groups; the rest is still.
#include "formats/model_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/point_dealing.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "scene/model.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr const char* COMMENT_CHARS = "#";
constexpr int32_t COMMENT_COUNT = 1;
constexpr const char* WORLD = "world";
constexpr const char* MODEL_EXTENSION = ".mod";
constexpr size_t ERROR_TEXT_SIZE = 256;

void parse_line_of(void* context) { model_parse_line(static_cast<ModelFileContext*>(context)); }

using PointWalk = ListElements<Point>::iterator;

// ---- normals ----

// A non-number fails here too.
bool in_unit_range(float value) { return value >= -1.0f && value <= 1.0f; }

// ---- the tree of child models ----

// What the models of one tree share while they are read.
struct TreeRead {
    std::vector<std::string> open_files;  // the model in hand and those above it, the root first
    int32_t model_count;
    ChildBudget* budget;
    bool long_paths;
};

// A root costs what its file holds, and that is what was asked for; a child costs it again with every link.
bool is_within_budget(TreeRead& tree, const Model* model, const char* path) {
    if (model->parent == nullptr) { return true; }
    tree.budget->bytes += model_record_bytes(model);
    if (tree.budget->bytes <= MODEL_CHILD_BYTES_LIMIT) { return true; }
    load_error_set_format("too many points and primitives in child models: %s", path);
    return false;
}

Model* read_tree(TreeRead& tree, const char* path, Model* parent);

bool read_children(TreeRead& tree, Model* model) {
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model != nullptr) { continue; }
        const std::string path = model_directory(model) + link.name + MODEL_EXTENSION;
        if (!file_exists(path.c_str())) {
            load_error_set_format("Cannot find child model: %s", path.c_str());
            return false;
        }
        link.model = read_tree(tree, path.c_str(), model);
        if (link.model == nullptr) { return false; }
    }
    return true;
}

// From its text, which the model keeps for a save; a file that cannot be kept is read line by line.
bool read_lines(Model* model, const char* path) {
    model->text = file_text_read(path);
    if (model->text == nullptr) { return model_read_file(model, path) != 0; }
    ModelFileContext context{};
    context.model = model;
    load_error_set(nullptr);
    return reader_run_text(model->text->view(), COMMENT_CHARS, COMMENT_COUNT, parse_line_of, &context, path) != 0;
}

bool fill_model(TreeRead& tree, Model* model, const char* path) {
    if (!read_lines(model, path) || !is_within_budget(tree, model, path)) { return false; }
    model_bind_points(model);
    if (!model_test_normals(model) || !read_children(tree, model)) { return false; }
    model_mark_read(model);
    return true;
}

// The model of one file with everything below it, or null with nothing left behind.
Model* read_tree(TreeRead& tree, const char* given_path, Model* parent) {
    const std::string own_path = tree.long_paths ? path_with_separators(given_path) : given_path;
    const char* path = own_path.c_str();
    if (!tree.long_paths && !path_fits(path)) {
        load_error_set_format(PATH_TOO_LONG, path);
        return nullptr;
    }
    if (!file_exists(path)) {
        load_error_set_format("could not find: %s", path);
        return nullptr;
    }
    const std::string file = file_resolve(path);
    if (const char* reason = model_tree_refusal(tree.open_files, tree.model_count, file)) {
        load_error_set_format(reason, path);
        return nullptr;
    }
    Model* model = tree.long_paths ? model_create_long(path, parent) : model_create(path, parent);
    model->opened_path = str_dup(path);
    model->long_paths = tree.long_paths ? 1 : 0;
    tree.open_files.push_back(file);
    ++tree.model_count;
    const bool good = fill_model(tree, model, path);
    tree.open_files.pop_back();
    if (!good) {
        load_failure_in(path);
        model_release(model);
        return nullptr;
    }
    return model;
}

// A parent from outside brings its own tree along.
void enter_tree(TreeRead& tree, const Model* parent) {
    for (const Model* model = parent; model != nullptr; model = model->parent) {
        const std::string read = model_file(model);
        const std::string path = !read.empty() ? read : model_directory(model) + model->name + MODEL_EXTENSION;
        tree.open_files.insert(tree.open_files.begin(), file_resolve(path.c_str()));
        if (model->parent == nullptr) {
            tree.model_count = model_count_children(model) + 1;
            tree.budget->bytes += model_child_bytes(model);
        }
    }
}

Model* read_model(const char* path, Model* parent, ChildBudget* budget, bool long_paths) {
    load_error_set(nullptr);
    if (path == nullptr) { return nullptr; }
    TreeRead tree{{}, 0, budget, long_paths};
    enter_tree(tree, parent);
    return read_tree(tree, path, parent);
}

}  // namespace

// A file that goes round through another spelling of its own name ends at the depth limit.
const char* model_tree_refusal(const std::vector<std::string>& open_files, int32_t model_count,
                               const std::string& file) {
    if (std::find(open_files.begin(), open_files.end(), file) != open_files.end()) {
        return "child model names itself or a model above it: %s";
    }
    // With no file open this one is the root, which is no level of children.
    if (open_files.size() > MODEL_TREE_DEPTH_LIMIT) { return "child models nested too deeply: %s"; }
    if (model_count >= MODEL_TREE_NODE_LIMIT) { return "too many child models: %s"; }
    return nullptr;
}

Model* model_load(const char* path, ChildBudget* budget, bool long_paths) {
    ChildBudget own;
    return read_model(path, nullptr, budget != nullptr ? budget : &own, long_paths);
}

Model* model_read(const char* path, Model* parent) {
    ChildBudget own;
    return read_model(path, parent, &own, false);
}

Model* model_read_child(const char* path, Model* parent) {
    ChildBudget own;
    return read_model(path, parent, &own, parent != nullptr && parent->long_paths != 0);
}

int model_read_file(Model* model, const char* path) {
    ModelFileContext context{};
    context.model = model;
    load_error_set(nullptr);
    return model != nullptr ? reader_run_file(path, COMMENT_CHARS, COMMENT_COUNT, parse_line_of, &context) : 0;
}

int model_read_data(Model* model, const char* text) {
    ModelFileContext context{};
    context.model = model;
    load_error_set(nullptr);
    return model != nullptr ? reader_run_data(text, COMMENT_CHARS, COMMENT_COUNT, parse_line_of, &context) : 0;
}

// Joints without points left keep the parent index they were added with: intended.
void model_bind_points(Model* model) {
    const auto find_parent = [&](Joint& joint) {
        const bool rooted = std::strcmp(joint.parent_name, WORLD) == 0;
        joint.parent_index = rooted ? -1 : model_joint_index(model, joint.parent_name);
    };
    deal_points(*model, find_parent, [](Point& point, Joint* joint_a, Joint* joint_b) {
        point.joint_a = joint_a;
        point.joint_b = joint_b;
    });
}

bool is_good_normal(const Vec3& normal) {
    return in_unit_range(normal.x) && in_unit_range(normal.y) && in_unit_range(normal.z) &&
           (normal.x != 0.0f || normal.y != 0.0f || normal.z != 0.0f);
}

int model_test_normals(const Model* model) {
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (!is_good_normal(point->normal)) {
            char text[ERROR_TEXT_SIZE];
            std::snprintf(text, sizeof text, "(%s.mod) bad normal: %d", model->name, point.int_key());
            load_error_set(text);
            return 0;
        }
    }
    return 1;
}

}  // namespace pelt
