// Roots of the scene that are read anew: the new models take the places of the old ones, and what scripts know them by
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

// A model for the place of the root with this key.
struct FreshRoot {
    int32_t key;
    Model* model;
    ModelAnimation* animation;  // null for none
};

// Puts models and animations, which it takes over, in the places of those of their roots and releases these. Ids,
// placements and selection go over to the parts of the new trees that stand at the same place: children of the same
// name in their order. Models lent by an old tree are lent by the new one. Appends what is lost. False, with nothing
// taken over, when a root or a model is not there.
bool session_exchange_roots(Session* session, const std::vector<FreshRoot>& all, std::vector<LostPart>* lost);

}  // namespace pelt
