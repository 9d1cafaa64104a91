// The walk over all that the scene was read from.
#include "application/files_of_scene.h"

#include <unordered_set>

#include "application/problem.h"
#include "application/save_file.h"
#include "formats/animation.h"
#include "scene/model.h"

namespace pelt {

namespace {

class FileList {
public:
    // Each file once for each kind and model.
    void add(const std::string& path, const char* kind, const std::string& model) {
        if (path.empty() || !told_.insert(path + '\n' + kind + '\n' + model).second) { return; }
        files.push_back({path, kind, model});
    }

    void add_images(const Model* model, const std::string& id) {
        for (const Layer& layer : list_elements<Layer>(model->layers)) {
            const LayerImage* image = layer_first_image(&layer);
            for (int slot = 0; image != nullptr && slot < LAYER_IMAGE_SLOTS; ++slot) {
                if (image->names[slot][0] != '\0') { add(model_directory(model) + image->names[slot], "image", id); }
            }
        }
    }

    void add_children(const Model* model, const std::string& id) {
        for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
            if (link.borrowed) { continue; }
            if (link.model == nullptr) {
                add(model_directory(model) + link.name + ".mod", "child", id);
                continue;
            }
            add(model_file(link.model), "child", id);
            add_images(link.model, id);
            add_children(link.model, id);
        }
    }

    void add_clips(const AnimationClip& clip, const std::string& id) {
        for (const char* path : {clip.name, clip.unread_path}) {
            if (path != nullptr) { add(path, "clip", id); }
        }
        for (int32_t i = 0; i < clip.subclip_count; ++i) { add_clips(clip.subclips[i], id); }
    }

    std::vector<SceneFile> files;

private:
    std::unordered_set<std::string> told_;
};

}  // namespace

std::vector<SceneFile> files_of_scene(const Session& session) {
    FileList list;
    if (session.animation_path != nullptr) { list.add(session.animation_path, "scene list", {}); }
    for (const RootModel& root : list_elements<const RootModel>(session.root_models)) {
        const auto* state = list_at<const ModelState>(&session.model_states, root.model->state_index, 0);
        const std::string id = std::to_string(state != nullptr ? state->id : 0);
        list.add(model_file(root.model), "model", id);
        list.add_images(root.model, id);
        list.add_children(root.model, id);
        if (root.animation != nullptr) { list.add_clips(root.animation->clip, id); }
    }
    return list.files;
}

bool save_spares_scene(const Session& session, const std::string& path) {
    for (const SceneFile& file : files_of_scene(session)) {
        if (save_same_file(file.path, path)) {
            return save_refuse(PROBLEM_STATE, std::string("this is a file of the scene, of the kind ") + file.kind, path);
        }
    }
    return true;
}

}  // namespace pelt
