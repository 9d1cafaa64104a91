// Scene lists: which models make up an animated scene. A row fails as a whole, and with it the list.
#include "formats/scene_list.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/clip_reader.h"
#include "formats/line_reader.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "scene/model.h"

namespace pelt {

namespace {

inline constexpr const char* COMMENT_CHARS = "#";
inline constexpr int32_t COMMENT_COUNT = 1;

void set_error_text(const std::string& text) { animation_set_error(text.c_str()); }

// A row of a scene list. With fewer than four words only the model is there.
struct SceneRow {
    std::string model_directory;
    std::string model_file;
    std::optional<std::string> clip_directory;
    std::optional<std::string> clip_file;
    std::optional<std::string> parent;
    std::optional<std::string> parent_joint;
};

using SceneRows = std::vector<SceneRow>;

// Which row each row hangs on, -1 for "world".
using RowParents = std::vector<int32_t>;

// Rows beyond the limit are passed over without a word; intended.
void read_row(void* context) {
    SceneRows* rows = static_cast<SceneRows*>(context);
    if (reader_token_count() < 2 || rows->size() >= static_cast<size_t>(ANIMATION_ROW_LIMIT)) { return; }
    SceneRow row{.model_directory = reader_text(0),
                 .model_file = reader_text(1),
                 .clip_directory = {},
                 .clip_file = {},
                 .parent = {},
                 .parent_joint = {}};
    if (reader_token_count() >= 4) {
        row.clip_directory = reader_text_if_any(2);
        row.clip_file = reader_text_if_any(3);
        row.parent = reader_text_if_any(4);
        row.parent_joint = reader_text_if_any(5);
    }
    rows->push_back(std::move(row));
}

// The backslash stands in the text whatever separates directories here; intended.
void set_missing_clip(const SceneRow& row) {
    const std::string directory = *row.clip_directory == "." ? "" : *row.clip_directory + "\\";
    const std::string text = "could not find animation file: " + directory + *row.clip_file;
    if (load_failure().line > 0) {
        animation_reword_error(text.c_str());
    } else {
        set_error_text(text);
    }
}

// What the rows of a scene share. Neither many rows nor many files make more of the budgets.
struct SceneRead {
    const SceneListOptions& options;
    ChildBudget children;
    int64_t keys = 0;
};

// Loads the model and the clip of a row and appends them to the set. Leaves nothing behind when it fails.
bool load_row(const SceneRow& row, AnimationSet* set, SceneRead* read) {
    const char* base = read->options.base;
    const std::string directory = path_from(base, row.model_directory.c_str());
    const std::string path = path_join(directory.c_str(), row.model_file.c_str());
    Model* model = model_load(path.c_str(), &read->children, read->options.long_paths);
    if (model == nullptr) {
        if (load_error_get() != nullptr) { animation_reword_error(load_error_get()); }
        return false;
    }
    ModelAnimation* animation = nullptr;
    if (row.clip_directory && row.clip_file) {
        animation = animation_create(model);
        const std::string clips = path_from(base, row.clip_directory->c_str());
        const float length = animation_read_clip(model, &animation->clip, clips.c_str(), row.clip_file->c_str(), 0.0f,
                                                 HOLD_NONE, &read->keys);
        if (length == 0.0f) {
            if (read->keys > ANIMATION_KEY_LIMIT) {
                set_error_text("too many keys in the animation: " + *row.clip_file);
            } else {
                set_missing_clip(row);  // replaces whatever the clip reader said; intended
            }
            animation_release(animation);
            model_release(model);
            return false;
        }
        set->duration = std::max(set->duration, length);
    }
    set->models[set->count] = model;
    set->animations[set->count] = animation;
    ++set->count;
    return true;
}

// Hangs the row on the last other row whose model file it names.
bool link_row(const SceneRows& rows, size_t index, AnimationSet* set, RowParents* parents) {
    const SceneRow& row = rows[index];
    ModelAnimation* animation = set->animations[index];
    if (!row.parent || *row.parent == "world") { return true; }
    for (size_t other = 0; other < rows.size(); ++other) {
        if (other == index || animation == nullptr || rows[other].model_file != *row.parent) { continue; }
        animation->parent_animation = set->animations[other];
        animation->parent_model = set->models[other];
        (*parents)[index] = static_cast<int32_t>(other);
        if (!row.parent_joint) { continue; }
        animation->parent_joint = model_find_joint(set->models[other], row.parent_joint->c_str());
        if (animation->parent_joint == nullptr) {
            set_error_text("could not find parent joint: " + *row.parent_joint);
            return false;
        }
        animation->parent_slot =
            model_joint_index(set->models[other], row.parent_joint->c_str()) + ANIMATION_FIRST_JOINT_SLOT;
    }
    if (animation != nullptr && animation->parent_model != nullptr) { return true; }
    set_error_text("could not find parent: " + *row.parent);
    return false;
}

bool hangs_on_itself(const RowParents& parents, size_t index) {
    int32_t row = parents[index];
    for (size_t steps = 0; steps < parents.size() && row >= 0; ++steps) {
        if (row == static_cast<int32_t>(index)) { return true; }
        row = parents[static_cast<size_t>(row)];
    }
    return false;
}

bool link_rows(const SceneRows& rows, AnimationSet* set) {
    RowParents parents(rows.size(), -1);
    for (size_t index = 0; index < rows.size(); ++index) {
        if (!link_row(rows, index, set, &parents)) { return false; }
    }
    for (size_t index = 0; index < rows.size(); ++index) {
        if (!hangs_on_itself(parents, index)) { continue; }
        set_error_text("could not find parent: " + *rows[index].parent);
        return false;
    }
    return true;
}

bool load_rows(const SceneRows& rows, AnimationSet* set, const SceneListOptions& options) {
    SceneRead read{.options = options, .children = {}};
    for (const SceneRow& row : rows) {
        if (!load_row(row, set, &read)) { return false; }
    }
    return link_rows(rows, set);
}

void release_rows(AnimationSet* set) {
    for (int32_t i = 0; i < set->count; ++i) {
        animation_release(set->animations[i]);
        model_release(set->models[i]);
    }
}

}  // namespace

AnimationSet* animation_load(const char* path, const SceneListOptions& options) {
    animation_set_error(nullptr);
    if (file_exists(path) == 0) {
        set_error_text(std::string("file does not exist: ") + (path == nullptr ? "" : path));
        load_failure_in(path);
        return nullptr;
    }
    SceneRows rows;
    if (reader_run_file(path, COMMENT_CHARS, COMMENT_COUNT, read_row, &rows) == 0) { return nullptr; }
    AnimationSet* set = new AnimationSet{};
    if (load_rows(rows, set, options)) { return set; }
    load_failure_in(path);
    release_rows(set);
    delete set;
    return nullptr;
}

}  // namespace pelt
