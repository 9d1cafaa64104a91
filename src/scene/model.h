// A Model: what one .mod file becomes. Owns its lists; images belong to the registry, run-time state to the Session.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/file_text.h"
#include "foundation/keyed_list.h"
#include "foundation/math3d.h"
#include "scene/layer.h"
#include "scene/point.h"
#include "scene/primitive.h"
#include "scene/skeleton.h"

namespace pelt {

// Bounds of a tree of child models: levels below its root, and models, each link counted.
inline constexpr int MODEL_TREE_DEPTH_LIMIT = 32;
inline constexpr int MODEL_TREE_NODE_LIMIT = 4096;

// What the records of all children that are loaded with a root may take together, in bytes: some two million points
// with twice as many triangles. A file of children is read once for each link to it, so that a small one can ask for
// any amount.
inline constexpr int64_t MODEL_CHILD_BYTES_LIMIT = int64_t{512} << 20;

// The saved version of a model that is nothing its file has.
inline constexpr uint64_t VERSION_NOWHERE = UINT64_MAX;

struct Model {
    Model* parent;   // null for a root
    char path[256];  // directory with its trailing separator; empty for none
    char name[128];  // lower case, without directory and extension
    int32_t tag;
    int32_t has_gouraud;
    int32_t has_normals;
    KeyedList points;    // Point, KEY_INT
    KeyedList joints;    // Joint, KEY_STRING
    KeyedList blends;    // BlendWeight, KEY_INT
    KeyedList layers;    // Layer, KEY_STRING
    KeyedList children;  // ChildLink, KEY_INT
    Vec3 bounds_min;
    Vec3 bounds_max;
    int32_t state_index;  // slot in Session::model_states, -1 for none
    uint64_t serial;      // of the process, never the same for two models: tells one from another at the same address
    int64_t changes;      // what was done to the content since it was read, counted; what a read does is none
    uint64_t version;     // of the content: a new number with every change, and that of before when it is taken back
    uint64_t saved_version;  // of the content that the model's file has
    int64_t saved_changes;   // the count of changes that stood with it
    int32_t watched;         // WatchState (scene/change.h)
    char* opened_path;       // heap text: the file it was read from, as given; null when it was made, or renamed since
    char* long_directory;    // heap text: the directory where path has no room for it, and is empty; else null
    int32_t long_paths;      // 1: read as a model whose paths may be of any length, and to be read again as one
    std::shared_ptr<FileText> text;  // what it was read from, or written to first; null for none
};

Model* model_create(const char* path, Model* parent);  // null for a null path; the file need not exist
// The same for a path of any length. Where the records cannot keep it (path_fits), path is empty, so that it leads
// nowhere else, long_directory holds what belongs there, and name is made of the file's name alone, cut to its field.
Model* model_create_long(const char* path, Model* parent);
int model_release(Model* model);  // with all children it owns; 0 for null
// Takes name and directory of the path, each where it has one: a text that is too short for a name keeps the old name.
int model_rename(Model* model, const char* path);
// The model belongs to this file from now on, under its name and with what lies beside it, as if it had been read from
// there.
void model_set_file(Model* model, const char* path);
const char* model_name(const Model* model);
const char* model_full_path(const Model* model);  // static text
void model_set_tag(Model* model, int32_t tag);
int32_t model_tag(const Model* model);
int model_scale(Model* model, float x, float y, float z);  // 0, and nothing done, when a factor is 0

int32_t model_count_points(const Model* model);
int32_t model_count_joints(const Model* model);
int32_t model_count_layers(const Model* model);
int32_t model_count_children(const Model* model);  // all descendants
// With a null layer name: triangle records of all layers. With a name: quads twice, polygons as their triangles.
int32_t model_count_triangles(const Model* model, const char* layer);
int32_t model_count_lines(const Model* model, const char* layer);

// Directory of the model with its trailing separator, whatever its length; empty for none. It, and never path alone,
// leads to what lies beside the model.
std::string model_directory(const Model* model);
// Path of the model's own file as it was read; empty for a model that was made, or renamed since.
std::string model_file(const Model* model);
// What was done, or taken back, since the content was that of the file, counted; 0 exactly when it is that of the file.
int64_t model_unsaved_changes(const Model* model);
// The content as it is now is that of the file, either just read (all counts begin anew) or saved.
void model_mark_read(Model* model);
void model_mark_saved(Model* model);

// Path of a file beside the model.
std::string model_file_path(const Model* model, const char* file);

}  // namespace pelt
