// Reader of the .mod text format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

struct Model;
struct Vec3;

// What the children of models that are loaded together have taken of MODEL_CHILD_BYTES_LIMIT.
struct ChildBudget {
    int64_t bytes = 0;
};

// A new root model with all its children, or null with the reason in the load-error record (where there is one).
// Without a budget the model has one for itself. With long paths its path and those of its children may have any length
// that the system takes (otherwise path_fits bounds them), and a slash separates on every system.
Model* model_load(const char* path, ChildBudget* budget = nullptr, bool long_paths = false);
Model* model_read(const char* path, Model* parent);

// The same for a child of a model that stands, whose paths are as long as the parent's.
Model* model_read_child(const char* path, Model* parent);

// Why a load takes no further file at its place of a tree of models, as a text with one "%s" for the path; null when it
// does. open_files are those of the models above it, the root first, and file its own, as file_resolve names them;
// model_count is the number of models read so far.
const char* model_tree_refusal(const std::vector<std::string>& open_files, int32_t model_count,
                               const std::string& file);

// Adds the lines to an existing model as they stand: no binding of points, no test of normals, no children.
// 1 when read to the end, else 0.
int model_read_file(Model* model, const char* path);
int model_read_data(Model* model, const char* text);

// Gives the points to the joints and blend groups by the counts of these, and joints the ranks of their parents, as the
// read of a file does behind its last line.
void model_bind_points(Model* model);

// Whether a model may have this normal: no component beyond 1 either way, not all of them 0, no non-numbers.
bool is_good_normal(const Vec3& normal);

// The test that ends the read of a file: 1 when all points have normals that can be used, else 0 with the load error
// set for the first one that has not.
int model_test_normals(const Model* model);

}  // namespace pelt
