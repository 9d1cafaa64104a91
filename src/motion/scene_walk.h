// The models of the scene in the order in which a frame meets them, each with where it stands.
#pragma once

#include <functional>

#include "scene/session.h"

namespace pelt {

struct ScenePlace {
    Model* model;
    ChildLink* link;  // at which it hangs; null for a root
    Mat4 place;       // from the model to the world
    const ScenePlace* above;
};

// A model whose tree leads back to it, or deeper than a tree may be, is passed over there as it is in a frame. The
// places are valid during the call that gets them.
void scene_walk(Session* session, const std::function<void(const ScenePlace&)>& visit);

}  // namespace pelt
