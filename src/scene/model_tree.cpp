// Measures trees of child models. A model that is lent to several others is met several times in one tree, so what is
// known of a model is kept and not worked out again, or a small scene could take for ever.
#include "scene/model_tree.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace pelt {

namespace {

constexpr TreeSize TOO_LARGE{MODEL_TREE_DEPTH_LIMIT + 1, MODEL_TREE_NODE_LIMIT + 1};

using TreeSizes = std::unordered_map<const Model*, TreeSize>;
using ModelSet = std::unordered_set<const Model*>;

// What is added to some models of a tree, in thought.
struct Addition {
    const std::vector<Model*>* parents;
    TreeSize size;
};

void take_in(TreeSize* size, const TreeSize& below) {
    size->depth = std::min(std::max(size->depth, below.depth + 1), TOO_LARGE.depth);
    size->nodes = std::min(size->nodes + below.nodes, TOO_LARGE.nodes);
}

TreeSize measure(const Model* model, TreeSizes* known, int32_t level, const Addition* addition = nullptr) {
    if (level > MODEL_TREE_DEPTH_LIMIT) { return TOO_LARGE; }
    // Until it is known, a model counts as too large: whoever meets it then stands in a circle.
    const auto [entry, is_new] = known->emplace(model, TOO_LARGE);
    if (!is_new) { return entry->second; }
    TreeSize size{0, 1};
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        take_in(&size, link.model != nullptr ? measure(link.model, known, level + 1, addition) : TreeSize{0, 1});
    }
    if (addition != nullptr &&
        std::find(addition->parents->begin(), addition->parents->end(), model) != addition->parents->end()) {
        take_in(&size, addition->size);
    }
    (*known)[model] = size;
    return size;
}

bool fits(const TreeSize& size) { return size.depth <= MODEL_TREE_DEPTH_LIMIT && size.nodes <= MODEL_TREE_NODE_LIMIT; }

bool holds(const Model* model, const Model* searched, ModelSet* visited) {
    if (model == nullptr || !visited->insert(model).second) { return false; }
    if (model == searched) { return true; }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (holds(link.model, searched, visited)) { return true; }
    }
    return false;
}

// A list takes its first slots whole; what it has room for beyond its elements is mostly never touched.
int64_t list_bytes(const KeyedList& list) {
    constexpr int32_t FIRST_SLOTS = 16;
    if (list.capacity < 1) { return 0; }
    const int64_t slots = std::max(list_count(&list), FIRST_SLOTS);
    return slots * list.element_size + static_cast<int64_t>(sizeof(ListStorage));
}

}  // namespace

TreeSize model_tree_size(const Model* model) {
    if (model == nullptr) { return TreeSize{0, 0}; }
    if (list_count(&model->children) == 0) { return TreeSize{0, 1}; }
    TreeSizes known;
    return measure(model, &known, 0);
}

bool model_tree_holds(const Model* model, const Model* searched) {
    ModelSet visited;
    return searched != nullptr && holds(model, searched, &visited);
}

bool model_tree_fits(const Model* model) { return fits(model_tree_size(model)); }

bool model_tree_fits_with(const Model* model, const std::vector<Model*>& parents, const Model* added) {
    if (model == nullptr) { return true; }
    TreeSizes known;
    const Addition addition{&parents, model_tree_size(added)};
    return fits(measure(model, &known, 0, &addition));
}

int64_t layer_record_bytes(const Layer& layer) {
    int64_t bytes = list_bytes(layer.triangles) + list_bytes(layer.polygons) + list_bytes(layer.lines) +
                    list_bytes(layer.uvees) + list_bytes(layer.images);
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) { bytes += list_bytes(polygon.vertices); }
    for (const Line& line : list_elements<Line>(layer.lines)) { bytes += list_bytes(line.vertices); }
    return bytes;
}

int64_t model_record_bytes(const Model* model) {
    int64_t bytes = static_cast<int64_t>(sizeof(Model)) + list_bytes(model->points) + list_bytes(model->joints) +
                    list_bytes(model->blends) + list_bytes(model->layers) + list_bytes(model->children);
    for (const Layer& layer : list_elements<Layer>(model->layers)) { bytes += layer_record_bytes(layer); }
    return bytes;
}

int64_t model_child_bytes(const Model* model) {
    int64_t bytes = 0;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model != nullptr && !link.borrowed) {
            bytes += model_record_bytes(link.model) + model_child_bytes(link.model);
        }
    }
    return bytes;
}

Model* model_tree_link_owner(Model* model, const ChildLink* link) {
    if (model == nullptr || link == nullptr) { return nullptr; }
    if (list_slot_of_element(&model->children, link) >= 0) { return model; }
    for (const ChildLink& each : list_elements<ChildLink>(model->children)) {
        Model* owner = each.borrowed ? nullptr : model_tree_link_owner(each.model, link);
        if (owner != nullptr) { return owner; }
    }
    return nullptr;
}

}  // namespace pelt
