// Makes the files of an import: one model, or one with children where one cannot hold all.
#include <algorithm>
#include <memory>

#include "formats/scene_list.h"
#include "foundation/text.h"
#include "interchange/clip_making.h"
#include "interchange/import.h"
#include "interchange/model_making.h"
#include "interchange/motion_plan.h"
#include "interchange/soup_making.h"
#include "interchange/source_scene.h"
#include "interchange/surface_look.h"
#include "interchange/whole_scale.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* MODEL_EXTENSION = ".mod";
constexpr const char* SCENE_EXTENSION = ".scene";
constexpr size_t ANIMATION_NAME_LENGTH = 30;
constexpr size_t CHILD_NAME_LENGTH = 100;
constexpr size_t MANY_CHILDREN = 256;      // from which small neighbours share one
constexpr size_t SHARED_VERTICES = 15000;  // of those, at most: with a normal each they still fit

struct Making {
    const ImportSource& source;
    const LookBook& book;
    ImportResult& result;
    std::vector<std::string> children = {};  // names of what was made beside the first model, without ending
    int64_t child_bytes = 0;
};

std::string main_file(const ImportSource& source) { return source.stem + MODEL_EXTENSION; }

void append(SoupPart& all, const SoupPart& part) {
    const auto first = static_cast<uint32_t>(all.vertices.size());
    all.coloured = all.coloured || part.coloured;
    all.vertices.insert(all.vertices.end(), part.vertices.begin(), part.vertices.end());
    for (SoupFace face : part.faces) {
        for (uint32_t& corner : face.corners) { corner += first; }
        all.faces.push_back(face);
    }
}

std::vector<SoupPart> shared_by_neighbours(const std::vector<SoupPart>& parts) {
    std::vector<SoupPart> shared;
    for (const SoupPart& part : parts) {
        const size_t together = shared.empty() ? 0 : shared.back().vertices.size() + part.vertices.size();
        if (shared.empty() || together > SHARED_VERTICES) {
            shared.push_back(part);
        } else {
            append(shared.back(), part);
        }
    }
    return shared;
}

std::string child_name(const Making& making, const std::string& node) {
    const auto is_free = [&](const std::string& wanted) {
        return std::none_of(making.children.begin(), making.children.end(), [&](const std::string& other) {
            return str_equal_ignoring_case(other.c_str(), wanted.c_str());
        });
    };
    const std::string name = node.empty() ? making.source.stem + "_part" : making.source.stem + "_" + node;
    return free_name(plain_name(name, CHILD_NAME_LENGTH), CHILD_NAME_LENGTH, is_free);
}

void make_child(Making& making, const SoupPart& part) {
    if (part.faces.empty() || !making.result.error.empty()) { return; }
    const std::string name = child_name(making, part.name);
    MadeModel made = make_model(part, making.book, {}, name + MODEL_EXTENSION);
    if (made.is_too_large) {
        for (const SoupPart& half : soup_halves(part)) { make_child(making, half); }
        return;
    }
    making.result.error = made.error;
    making.child_bytes += made.bytes;
    making.children.push_back(name);
    if (making.children.size() >= static_cast<size_t>(MODEL_TREE_NODE_LIMIT) ||
        making.child_bytes > MODEL_CHILD_BYTES_LIMIT) {
        making.result.error = "it is larger than all children of one model may be together";
    }
    making.result.files.push_back({name + MODEL_EXTENSION, std::move(made.text)});
}

void make_static_models(Making& making, const std::vector<SoupPart>& parts) {
    const std::string file_name = main_file(making.source);
    SoupPart all;
    for (const SoupPart& part : parts) { append(all, part); }
    MadeModel made = make_model(all, making.book, {}, file_name);
    if (made.is_too_large) {
        const bool many = parts.size() > MANY_CHILDREN;
        for (const SoupPart& part : many ? shared_by_neighbours(parts) : parts) { make_child(making, part); }
        if (!making.result.error.empty()) { return; }
        making.result.notes.push_back(
            "more points and normals than the " + std::to_string(POOL_POINT_LIMIT) +
            " of one model: split into child models: " + std::to_string(making.children.size()));
        made = make_parent_model(making.children, file_name);
    }
    making.result.error = made.error;
    making.result.files.push_back({file_name, std::move(made.text)});
}

// ---- what moves ----

// A row of the scene lists.
struct MadeRow {
    std::string file;  // of its model
    size_t planned;    // number among the planned rows
};

void make_row_models(Making& making, const MotionPlan& plan, size_t row, const SoupPart& part,
                     std::vector<MadeRow>& rows) {
    if (part.faces.empty() || !making.result.error.empty()) { return; }
    const std::string name = rows.empty() ? making.source.stem : child_name(making, part.name);
    MadeModel made = make_model(part, making.book, plan.rows[row].skeleton, name + MODEL_EXTENSION);
    if (made.is_too_large) {
        for (const SoupPart& half : soup_halves(part)) { make_row_models(making, plan, row, half, rows); }
        return;
    }
    making.result.error = made.error;
    making.result.files.push_back({name + MODEL_EXTENSION, std::move(made.text)});
    if (!rows.empty()) { making.children.push_back(name); }
    const bool is_first = rows.empty() && !making.source.model_file.empty();
    rows.push_back({is_first ? making.source.model_file : name + MODEL_EXTENSION, row});
}

std::string scene_list_text(const std::vector<MadeRow>& rows, const MadeAnimation& animation) {
    std::string text = "# model, its clip, and what it hangs on\n";
    for (const MadeRow& row : rows) {
        const std::string& clip = animation.clips[row.planned].name;
        text += ". \"" + row.file + "\"" + (clip.empty() ? "" : " . " + clip + " world") + "\n";
    }
    return text;
}

void make_scene_list(Making& making, const std::vector<MadeRow>& rows, MadeAnimation animation,
                     const std::string& name) {
    for (MadeClip& clip : animation.clips) {
        for (ImportedFile& file : clip.files) { making.result.files.push_back(std::move(file)); }
    }
    const std::string file = name + SCENE_EXTENSION;
    making.result.files.push_back({file, scene_list_text(rows, animation)});
    if (!animation.note.empty()) { making.result.notes.push_back("animation " + file + ": " + animation.note); }
    if (!animation.loss.empty()) { making.book.losses->add("animation " + file + ": " + animation.loss); }
}

void make_animations(Making& making, const MotionPlan& plan, const std::vector<MadeRow>& rows, double scale) {
    const aiScene& scene = *making.book.scene;
    std::vector<std::string> taken;
    const unsigned count = scene.mAnimations != nullptr ? scene.mNumAnimations : 0;
    for (unsigned i = 0; i < count; ++i) {
        if (scene.mAnimations[i] == nullptr) { continue; }
        const std::string given = plain_name(scene.mAnimations[i]->mName.C_Str(), ANIMATION_NAME_LENGTH);
        const std::string wanted = count == 1 ? "" : given.empty() ? "animation" : given;
        const std::string name = free_name(wanted, ANIMATION_NAME_LENGTH, [&](const std::string& other) {
            return std::find(taken.begin(), taken.end(), other) == taken.end();
        });
        taken.push_back(name);
        const std::string stem = making.source.stem + (name.empty() ? "" : "_" + name);
        make_scene_list(making, rows, make_clips(plan, *scene.mAnimations[i], scale, stem), stem);
    }
    if (count == 0 && rows.size() > 1) {
        MadeAnimation still;
        still.clips.resize(plan.rows.size());
        make_scene_list(making, rows, still, making.source.stem);
    }
}

std::string distance_text(double largest, double mean, double scale) {
    return "at most " + float_to_text(largest * scale, 2) + " units off, " + float_to_text(mean * scale, 3) +
           " on average";
}

void tell_cost(Making& making, const MotionPlan& plan, const SourceScene& source, double scale) {
    LossCounts& losses = *making.book.losses;
    const MotionCost cost = measure_motion(plan, source);
    constexpr double COUNTS = 1.0;  // unit, which rounding alone may come to
    if (plan.vertices_beyond_two > 0) {
        losses.add("points that more than two joints move keep the strongest two: " +
                   std::to_string(plan.vertices_beyond_two) + ", " +
                   distance_text(cost.largest_by_weights, cost.mean_by_weights, scale));
    }
    if (cost.largest * scale > COUNTS + cost.largest_by_weights * scale) {
        losses.add("joints only turn, and what else moves or scales them is left out: points are " +
                   distance_text(cost.largest, cost.mean, scale));
    }
}

void make_moving_models(Making& making, const MotionPlan& plan, const SourceScene& source,
                        const std::vector<SoupPart>& parts, double scale) {
    std::vector<MadeRow> rows;
    for (size_t i = 0; i < parts.size(); ++i) { make_row_models(making, plan, i, parts[i], rows); }
    if (!making.result.error.empty()) { return; }
    if (rows.size() > static_cast<size_t>(ANIMATION_ROW_LIMIT)) {
        making.result.error = "it moves in " + std::to_string(rows.size()) +
                              " parts, each of which takes a row of a scene list, and that has " +
                              std::to_string(ANIMATION_ROW_LIMIT) + " at most";
        return;
    }
    if (rows[0].file.find('"') != std::string::npos) {
        making.result.error = "the name of the model stands in a scene list, which has no room for a quote in it";
        return;
    }
    make_animations(making, plan, rows, scale);
    tell_cost(making, plan, source, scale);
}

// The library hangs all bones of these files on one node, each where it is on the bone above it.
bool loses_joint_order(const std::string& format, const aiScene& scene) {
    bool has_bones = false;
    for (unsigned i = 0; scene.mMeshes != nullptr && i < scene.mNumMeshes; ++i) {
        has_bones = has_bones || (scene.mMeshes[i] != nullptr && scene.mMeshes[i]->mNumBones > 0);
    }
    return format == "mdl" && has_bones;
}

void tell_what_is_left_out(const aiScene& scene, const ImportSource& source, bool moves, LossCounts& losses) {
    losses.add("cameras left out", scene.mNumCameras);
    losses.add("lights left out", scene.mNumLights);
    if (loses_joint_order(source.format, scene)) {
        losses.add("joints and animations left out, whose order the reader of this format loses");
        return;
    }
    if (!moves) { losses.add("animations that move nothing that is seen left out", scene.mNumAnimations); }
    for (unsigned i = 0; scene.mAnimations != nullptr && i < scene.mNumAnimations; ++i) {
        const aiAnimation* animation = scene.mAnimations[i];
        if (animation == nullptr) { continue; }
        losses.add("animated shapes (morph targets) left out",
                   int64_t{animation->mNumMeshChannels} + animation->mNumMorphMeshChannels);
    }
}

void append_lines(std::vector<std::string>& to, const std::vector<std::string>& lines) {
    to.insert(to.end(), lines.begin(), lines.end());
}

}  // namespace

ImportResult import_scene(const aiScene& scene, const ImportSource& source, const ImportOptions& options) {
    ImportResult result;
    const ImportUp up = up_of(source.format, options.up);
    SourceScene found = find_meshes(scene, up);
    result.error = found.error;
    if (!result.error.empty()) { return result; }
    const bool moves = !loses_joint_order(source.format, scene) && scene_moves(found);
    MotionPlan plan;
    if (moves) { plan = plan_motion(&found, axes_placement(up)); }
    const WholeScale scale = choose_scale(found, options.scale);
    result.error = scale.error;
    if (!result.error.empty()) { return result; }
    result.notes.push_back(scale.note);
    LossCounts losses;
    LossCounts notes;
    for (const std::string& loss : source.losses) { losses.add(loss); }
    tell_what_is_left_out(scene, source, moves, losses);
    LookBook book{&scene, &source, &options, &losses, &notes};
    place_joints(&plan, scale.scale);
    const std::vector<SoupPart> parts = make_parts(found, scale.scale, book, plan.skins, &result.error);
    result.sources = book.read_files;
    const bool is_empty =
        std::all_of(parts.begin(), parts.end(), [](const SoupPart& part) { return part.faces.empty(); });
    if (result.error.empty() && is_empty) { result.error = "there is nothing to be seen in it"; }
    if (!result.error.empty()) { return result; }
    for (MadeImage& image : book.images) { result.files.push_back({image.name, std::move(image.tga)}); }
    Making making{source, book, result};
    result.main = main_file(source);
    if (moves) {
        make_moving_models(making, plan, found, parts, scale.scale);
    } else {
        make_static_models(making, parts);
    }
    append_lines(result.notes, notes.lines());
    append_lines(result.losses, losses.lines());
    return result;
}

}  // namespace pelt
