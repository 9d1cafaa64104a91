// Loading beside the scene: the new models are read whole before anything of the old ones goes, with images of their
// own, so that a failure costs nothing and a changed picture is seen.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/load_error.h"
#include "motion/root_exchange.h"

namespace pelt {

struct Application;

struct SceneLoad {
    std::vector<int32_t> ids;           // of the roots that were loaded
    int64_t triangles = 0;              // of them and their children: a quad counts two, a polygon its triangles
    std::vector<LoadFailure> problems;  // what the files say that came to nothing
    std::vector<LostPart> lost;         // by a reload
};

// The scene becomes what the file, a model or a scene list, says; the view is reset and fitted. False, with the reason
// in problem_last and the scene as it was. The status callback hears "Loading..." before anything is looked at, and the
// rest when all is done; it may load, reset or destroy.
bool scene_open(Application* app, const char* path, SceneLoad* out);

// The same beside what stands in the scene; the view only grows. A second scene list is refused.
bool scene_add(Application* app, const char* path, SceneLoad* out);

// Reads the files of the scene anew: all of them, or with an id that of one root (of a scene list: all its rows). Ids,
// placements, selection, view and time stay. Roots that no file was read for stay as they are. Without force it is
// refused where a model that it would read again was changed since it was read: with no report at all, unless the
// first report is what changed it.
bool scene_reload(Application* app, int32_t id, bool force, SceneLoad* out);

// Changes to a model and the children that were read with it; 0 for null.
int64_t model_tree_changes(const Model* model);

// Triangles of a model and all below it, as told above.
int64_t model_tree_triangles(const Model* model);

}  // namespace pelt
