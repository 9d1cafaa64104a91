// The forms of "scene" that concern files.
#include <cstring>

#include "application/application.h"
#include "application/files_of_scene.h"
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

Tcl_Obj* failure_entry(const std::string& kind, const LoadFailure& failure) {
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
    for (const LoadFailure& problem : load.problems) { problems.add(failure_entry(problem_kind(problem), problem)); }
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
    SceneLoad result;
    return scene_reload(application(), id, force, &result) ? load_result(result, true) : scene_refuse_load();
}

Tcl_Obj* list_files(const SceneWords&) {
    ReplyList list;
    for (const SceneFile& file : files_of_scene(application()->session)) {
        list.add(ReplyList()
                     .add("path", reply_text(file.path))
                     .add("kind", reply_text(file.kind))
                     .add("model", reply_text(file.model))
                     .add("there", reply_flag(file_exists(file.path.c_str()) != 0))
                     .value());
    }
    return list.value();
}

Tcl_Obj* tell_problem(const SceneWords&) {
    const Problem& problem = problem_last();
    if (problem.kind.empty()) { return ReplyList().value(); }
    return failure_entry(problem.kind, problem.what);
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
