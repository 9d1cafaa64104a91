// Which points of a model stand where in its file, so that the reader deals them to their joints.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

struct BlendWeight;
struct Model;
struct Point;

struct LaidPoint {
    int32_t id;
    const Point* point;
    bool names_joints;  // its own line has to say its joints
};

struct LaidBlend {
    const BlendWeight* blend;
    int32_t count;
};

struct WholeLayout {
    std::vector<int32_t> joint_counts;  // in the order of the joints
    std::vector<LaidBlend> blends;      // without those that no point is left for
    std::vector<LaidPoint> points;
};

// The lay-out as the model was read, where its counts deal the points right as they stand. Otherwise a new one: the
// points of each joint and its parent, those of each blend group, the rest, and the counts of what stands there.
WholeLayout whole_layout(const Model* model);

// Brings the counts of joints and blend groups to those of the points that they are dealt in this lay-out. A blend
// group that no point is left for goes.
void model_settle_counts(Model* model);

}  // namespace pelt
