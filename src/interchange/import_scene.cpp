// Makes the files of an import: one model, or one with children where one cannot hold all.
#include <algorithm>
#include <memory>

#include "foundation/text.h"
#include "interchange/import.h"
#include "interchange/model_making.h"
#include "interchange/soup_making.h"
#include "interchange/source_scene.h"
#include "interchange/surface_look.h"
#include "interchange/whole_scale.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* MODEL_EXTENSION = ".mod";
constexpr size_t CHILD_NAME_LENGTH = 100;
constexpr size_t MANY_CHILDREN = 256;     // from which small neighbours share one
constexpr size_t SHARED_VERTICES = 15000;  // of those, at most: with a normal each they still fit

struct Making {
    const ImportSource& source;
    const LookBook& book;
    ImportResult& result;
    std::vector<std::string> children = {};
    int64_t child_bytes = 0;
};

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
    const std::string file_name = making.source.stem + MODEL_EXTENSION;
    SoupPart all;
    for (const SoupPart& part : parts) { append(all, part); }
    MadeModel made = make_model(all, making.book, {}, file_name);
    if (made.is_too_large) {
        const bool many = parts.size() > MANY_CHILDREN;
        for (const SoupPart& part : many ? shared_by_neighbours(parts) : parts) { make_child(making, part); }
        if (!making.result.error.empty()) { return; }
        making.result.notes.push_back("more points and normals than the " + std::to_string(POOL_POINT_LIMIT) +
                                      " of one model: split into child models: " +
                                      std::to_string(making.children.size()));
        made = make_parent_model(making.children, file_name);
    }
    making.result.error = made.error;
    making.result.files.push_back({file_name, std::move(made.text)});
}

void tell_what_is_left_out(const aiScene& scene, LossCounts& losses) {
    losses.add("cameras left out", scene.mNumCameras);
    losses.add("lights left out", scene.mNumLights);
    losses.add("animations left out", scene.mNumAnimations);
    int64_t skinned = 0;
    for (unsigned i = 0; scene.mMeshes != nullptr && i < scene.mNumMeshes; ++i) {
        skinned += scene.mMeshes[i] != nullptr && scene.mMeshes[i]->mNumBones > 0 ? 1 : 0;
    }
    losses.add("meshes that lose their skeleton", skinned);
}

void append_lines(std::vector<std::string>& to, const std::vector<std::string>& lines) {
    to.insert(to.end(), lines.begin(), lines.end());
}

}  // namespace

ImportResult import_scene(const aiScene& scene, const ImportSource& source, const ImportOptions& options) {
    ImportResult result;
    const SourceScene found = find_meshes(scene, up_of(source.format, options.up));
    result.error = found.error;
    if (!result.error.empty()) { return result; }
    const WholeScale scale = choose_scale(found, options.scale);
    result.error = scale.error;
    if (!result.error.empty()) { return result; }
    result.notes.push_back(scale.note);
    LossCounts losses;
    LossCounts notes;
    for (const std::string& loss : source.losses) { losses.add(loss); }
    tell_what_is_left_out(scene, losses);
    LookBook book{&scene, &source, &options, &losses, &notes};
    const std::vector<SoupPart> parts = make_parts(found, scale.scale, book, {}, &result.error);
    result.sources = book.read_files;
    const bool is_empty =
        std::all_of(parts.begin(), parts.end(), [](const SoupPart& part) { return part.faces.empty(); });
    if (result.error.empty() && is_empty) { result.error = "there is nothing to be seen in it"; }
    if (!result.error.empty()) { return result; }
    for (MadeImage& image : book.images) { result.files.push_back({image.name, std::move(image.tga)}); }
    Making making{source, book, result};
    make_static_models(making, parts);
    append_lines(result.notes, notes.lines());
    append_lines(result.losses, losses.lines());
    return result;
}

}  // namespace pelt
