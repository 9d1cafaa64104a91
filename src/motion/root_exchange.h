// A root of the scene that is read anew: the new model takes the place of the old one, and what scripts know it by
// stays.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scene/session.h"

namespace pelt {

// A part of the old model that the new one has not.
struct LostPart {
    const char* kind;  // "layer", "child", or "model" for a whole root
    std::string name;  // of the layer, or of the model's file
    int32_t id;        // of the child or the root, of the layer's model; 0 for one that never had an id
    bool is_child;     // the id is one of a child
};

// Puts model and animation, which it takes over, in the place of those of the root with this key and releases these.
// Ids, placements and selection go over to the parts of the new tree that stand at the same place: children of the same
// name in their order. Models lent by the old tree are lent by the new one. Appends what is lost. False, with nothing
// taken over, when there is no such root.
bool session_exchange_root(Session* session, int32_t key, Model* model, ModelAnimation* animation,
                           std::vector<LostPart>* lost);

}  // namespace pelt
