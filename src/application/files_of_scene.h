// Every file that the scene was made of.
#pragma once

#include <string>
#include <vector>

#include "scene/session.h"

namespace pelt {

struct SceneFile {
    std::string path;
    const char* kind;   // "model", "child", "image", "scene list" or "clip"
    std::string model;  // number of the root that it belongs to; empty for the scene list
};

// Each file once for each kind and root, whether it is there or not.
std::vector<SceneFile> files_of_scene(const Session& session);

// Leaves a refusal and answers false where the path, which is to be written, is a file of the scene: whoever reads the
// scene again would find something else there.
bool save_spares_scene(const Session& session, const std::string& path);

}  // namespace pelt
