// The forms of "scene" that concern files.
#include <cstring>
#include <unordered_set>

#include "application/application.h"
#include "application/scene_load.h"
#include "formats/animation.h"
#include "foundation/file_access.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

std::string lost_id(const LostPart& part) {
    if (part.id == 0) { return {}; }
    return part.is_child ? scene_child_name(part.id) : std::to_string(part.id);
}

Tcl_Obj* failure_entry(const char* kind, const LoadFailure& failure) {
    return ReplyList()
        .add("kind", reply_text(kind))
        .add("text", reply_text(failure.text))
        .add("file", reply_text(failure.file))
        .add("line", reply_int(failure.line))
        .add("source", reply_text(failure.source))
        .value();
}

Tcl_Obj* load_result(const SceneLoad& load, bool with_lost) {
    ReplyList ids;
    for (const int32_t id : load.ids) { ids.add(reply_int(id)); }
    ReplyList problems;
    for (const LoadFailure& problem : load.problems) { problems.add(failure_entry(PROBLEM_FORMAT, problem)); }
    ReplyList result;
    result.add("ids", ids.value()).add("triangles", reply_int(load.triangles)).add("problems", problems.value());
    if (!with_lost) { return result.value(); }
    ReplyList lost;
    for (const LostPart& part : load.lost) {
        lost.add(ReplyList()
                     .add("kind", reply_text(part.kind))
                     .add("name", reply_text(part.name))
                     .add("id", reply_text(lost_id(part)))
                     .value());
    }
    return result.add("vanished", lost.value()).value();
}

using Loader = bool (*)(Application* app, const char* path, SceneLoad* out);

Tcl_Obj* load_file(const SceneWords& words, Loader load) {
    if (words.raw(0)[0] == '\0') { return scene_refuse_argument("file", "", "the name of a file"); }
    SceneLoad result;
    return load(application(), words.text(0).c_str(), &result) ? load_result(result, false) : scene_refuse_load();
}

Tcl_Obj* open_file(const SceneWords& words) { return load_file(words, scene_open); }

Tcl_Obj* add_file(const SceneWords& words) { return load_file(words, scene_add); }

Tcl_Obj* reload_files(const SceneWords& words) {
    bool force = false;
    int32_t id = 0;
    for (int i = 0; i < words.count; ++i) {
        SceneModel found{};
        if (std::strcmp(words.raw(i), "-force") == 0) {
            force = true;
        } else if (words.raw(i)[0] == '-' || id != 0) {
            return scene_refuse_argument("option", words.raw(i), "-force");
        } else if (!scene_read_model(words.raw(i), &found)) {
            return nullptr;
        } else if (found.link != nullptr || found.model->parent != nullptr) {
            return scene_refuse_argument("id", words.raw(i),
                                         "that of a model; a child is read with the model above it");
        } else {
            id = list_at<const ModelState>(&application()->session.model_states, found.model->state_index, 0)->id;
        }
    }
    const int64_t changes = force ? 0 : scene_changes_to_lose(&application()->session, id);
    if (changes > 0) {
        return scene_refuse(PROBLEM_UNSAVED, "a reload would lose " + std::to_string(changes) + " unsaved change" +
                                                 (changes > 1 ? "s" : "") + ": say -force");
    }
    SceneLoad result;
    return scene_reload(application(), id, &result) ? load_result(result, true) : scene_refuse_load();
}

// ---- the files that the scene was made of ----

class FileList {
public:
    // Each file once for each kind and model.
    void add(const std::string& path, const char* kind, const std::string& model) {
        if (path.empty() || !told_.insert(path + '\n' + kind + '\n' + model).second) { return; }
        list_.add(ReplyList()
                      .add("path", reply_text(path))
                      .add("kind", reply_text(kind))
                      .add("model", reply_text(model))
                      .add("there", reply_flag(file_exists(path.c_str()) != 0))
                      .value());
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

    Tcl_Obj* value() const { return list_.value(); }

private:
    ReplyList list_;
    std::unordered_set<std::string> told_;
};

Tcl_Obj* list_files(const SceneWords&) {
    const Session& session = application()->session;
    FileList files;
    if (session.animation_path != nullptr) { files.add(session.animation_path, "scene list", {}); }
    for (const RootModel& root : list_elements<RootModel>(session.root_models)) {
        const ModelState* state = list_at<const ModelState>(&session.model_states, root.model->state_index, 0);
        const std::string id = std::to_string(state != nullptr ? state->id : 0);
        files.add(model_file(root.model), "model", id);
        files.add_images(root.model, id);
        files.add_children(root.model, id);
        if (root.animation != nullptr) { files.add_clips(root.animation->clip, id); }
    }
    return files.value();
}

Tcl_Obj* tell_problem(const SceneWords&) {
    const Problem& problem = problem_last();
    if (problem.kind.empty()) { return ReplyList().value(); }
    return failure_entry(problem.kind.c_str(), problem.what);
}

constexpr SceneForm FORMS[] = {
    {"open", "FILE", 1, 1,
     "the scene becomes what the file says, a model or a scene list, and the view is fitted to it", open_file},
    {"add", "FILE", 1, 1, "the same beside what stands in the scene", add_file},
    {"reload", "?ID? ?-force?", 0, 2, "reads the files of the scene anew, or those of one model", reload_files},
    {"files", "", 0, 0, "every file that the scene was made of", list_files},
    {"problem", "", 0, 0, "the last failure", tell_problem},
};

}  // namespace

std::span<const SceneForm> scene_file_forms() { return FORMS; }

}  // namespace pelt
