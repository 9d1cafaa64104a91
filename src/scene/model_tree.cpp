// Measures trees of child models. What surprises: a model that is lent to several others is met several times in one
// tree, so what is known of a model is kept and not worked out again, or a small scene could take for ever.

#include "scene/model_tree.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace pelt {

namespace {

constexpr TreeSize TOO_LARGE{MODEL_TREE_DEPTH_LIMIT + 1, MODEL_TREE_NODE_LIMIT + 1};

using TreeSizes = std::unordered_map<const Model*, TreeSize>;
using ModelSet = std::unordered_set<const Model*>;

TreeSize measure(const Model* model, TreeSizes* known, int32_t level) {
    if (level > MODEL_TREE_DEPTH_LIMIT) {
        return TOO_LARGE;
    }
    // Until it is known, a model counts as too large: whoever meets it then stands in a circle.
    const auto [entry, is_new] = known->emplace(model, TOO_LARGE);
    if (!is_new) {
        return entry->second;
    }
    TreeSize size{0, 1};
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        const TreeSize below = link.model != nullptr ? measure(link.model, known, level + 1) : TreeSize{0, 1};
        size.depth = std::min(std::max(size.depth, below.depth + 1), TOO_LARGE.depth);
        size.nodes = std::min(size.nodes + below.nodes, TOO_LARGE.nodes);
    }
    (*known)[model] = size;
    return size;
}

bool holds(const Model* model, const Model* searched, ModelSet* seen) {
    if (model == nullptr || !seen->insert(model).second) {
        return false;
    }
    if (model == searched) {
        return true;
    }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (holds(link.model, searched, seen)) {
            return true;
        }
    }
    return false;
}

}  // namespace

TreeSize model_tree_size(const Model* model) {
    if (model == nullptr) {
        return TreeSize{0, 0};
    }
    if (list_count(&model->children) == 0) {
        return TreeSize{0, 1};
    }
    TreeSizes known;
    return measure(model, &known, 0);
}

bool model_tree_holds(const Model* model, const Model* searched) {
    ModelSet seen;
    return searched != nullptr && holds(model, searched, &seen);
}

bool model_tree_fits(const Model* model) {
    const TreeSize size = model_tree_size(model);
    return size.depth <= MODEL_TREE_DEPTH_LIMIT && size.nodes <= MODEL_TREE_NODE_LIMIT;
}

}  // namespace pelt
