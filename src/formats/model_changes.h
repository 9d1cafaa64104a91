// What became of a model, in the terms of whoever works on it: moved points, added faces, other colours.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

struct Model;

enum ChangeKind : int32_t {
    CHANGE_ADDED,      // so many things, which the other model lacks
    CHANGE_REMOVED,    // so many things
    CHANGE_MOVED,      // so many things, by up to a distance
    CHANGE_ALTERED,    // so many things are otherwise than they were
    CHANGE_SET,        // a value is another
    CHANGE_REORDERED,  // the same things in another order
    CHANGE_OTHER,      // a sentence for what has no word here
};

struct ModelChangePart {
    ChangeKind kind;
    std::string what;  // of so many the word for one, such as "face"; else the name of the value
    int64_t count;     // 0 for a value
    double distance;   // of a move, in units of the model; else 0
    std::string from;  // of a value
    std::string to;
};

// All that became of one thing.
struct ModelChange {
    std::string subject;  // "layer", "joint", "child", "points" or "model"
    std::string name;     // empty for the points and the model
    std::vector<ModelChangePart> parts;
};

// The changes that lead from one model to the other, in the order: model, joints, points, layers, children. Layers,
// joints and children are known by their names, points by their ids, faces by their corners; a layer that is gone and
// stands there under a name of its own was renamed. Empty exactly where model_difference is. A null model is one
// without content.
std::vector<ModelChange> model_changes(const Model* from, const Model* to);

// "layer roof: 3 points moved by up to 12, 2 faces added, colour 127 0 0 to 100 0 0".
std::string model_change_text(const ModelChange& change);

}  // namespace pelt
