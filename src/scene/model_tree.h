// Questions about a model and all that hangs below it, through links of every kind, borrowed ones too.
#pragma once

#include <cstdint>
#include <vector>

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

// The same for what the model would be if each of the parents had another child like the added one.
bool model_tree_fits_with(const Model* model, const std::vector<Model*>& parents, const Model* added);

// Bytes that the records of one model take: points, primitives with their corners, joints, layers and the rest, without
// texts, images and children.
int64_t model_record_bytes(const Model* model);

// Those of one layer.
int64_t layer_record_bytes(const Layer& layer);

// The same of all models that it owns below itself.
int64_t model_child_bytes(const Model* model);

// The model, the given one or one that it owns below itself, in whose children the link stands; null for none.
Model* model_tree_link_owner(Model* model, const ChildLink* link);

}  // namespace pelt
