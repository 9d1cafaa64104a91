// Questions about a model and all that hangs below it, through links of every kind, borrowed ones too.
#pragma once

#include <cstdint>

#include "scene/model.h"

namespace pelt {

// Levels of children (a model without children has 0) and models (itself included), each link counted as often as it
// is met. Both stop growing one beyond the limits of a tree, and a tree that goes in a circle is beyond them.
struct TreeSize {
    int32_t depth;
    int32_t nodes;
};

TreeSize model_tree_size(const Model* model);  // zeros for null

// True when the searched model is the model itself or any descendant of it.
bool model_tree_holds(const Model* model, const Model* searched);

// True when depth and nodes keep within MODEL_TREE_DEPTH_LIMIT and MODEL_TREE_NODE_LIMIT.
bool model_tree_fits(const Model* model);

// Bytes that the records of one model take: points, primitives with their corners, joints, layers and the rest, without
// texts, images and children.
int64_t model_record_bytes(const Model* model);

// Those of one layer.
int64_t layer_record_bytes(const Layer& layer);

// The same of all models that it owns below itself.
int64_t model_child_bytes(const Model* model);

}  // namespace pelt
