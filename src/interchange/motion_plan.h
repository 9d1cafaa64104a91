// Which parts of a scene move together, and by what: each becomes a row of a scene list.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "interchange/model_making.h"
#include "interchange/node_motion.h"

namespace pelt {

struct PlannedJoint {
    int32_t node;
    int32_t parent;     // number of the row's joint above it, -1 for none
    Placement to_node;  // from places at rest to the node's own space
    Place place;        // of the joint at rest, not scaled
};

struct PlannedRow {
    std::string name;                  // of the node that it begins with
    std::vector<PlannedJoint> joints;  // each behind its parent; none for what stands still
    MadeSkeleton skeleton;             // the same as the models have them
};

struct MotionPlan {
    NodeTable table;
    std::vector<PlannedRow> rows;
    std::vector<std::vector<int32_t>> skins;  // by place of the source, by vertex; empty for one that no joint moves
    double size = 0.0;                        // of what is seen at rest, from corner to corner, not scaled
    int64_t vertices_beyond_two = 0;          // that more than two joints moved
};

// Whether a scene has joints, or anything that is seen moves.
bool scene_moves(const SourceScene& source);

// Plans the rows. The places of the source get the row as their unit and, where joints move them, the placement of the
// pose in which they were bound. The joints of the skeletons have no places yet.
MotionPlan plan_motion(SourceScene* source, const Placement& axes);

// Gives them these, in whole numbers.
void place_joints(MotionPlan* plan, double scale);

// The joints and their shares of a vertex, as the source has them: those of no share are left out.
struct VertexShare {
    const aiBone* bone;
    float weight;
};
std::vector<std::vector<VertexShare>> shares_of(const aiMesh& mesh);

}  // namespace pelt
