// Where the nodes of a scene are at a time of an animation.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "interchange/source_scene.h"

namespace pelt {

// All nodes, each behind its parent, with their placements at rest in the axes of this system.
struct NodeTable {
    std::vector<const aiNode*> nodes;
    std::vector<int32_t> parents;  // -1 for the root
    std::vector<Placement> rest;
    std::map<std::string, int32_t> by_name;  // the first of each name
    std::map<const aiNode*, int32_t> by_node;
    Placement axes;
};

NodeTable make_node_table(const aiScene& scene, const Placement& axes);

// The animation's movement of each node, null for those that it leaves alone.
using NodeChannels = std::vector<const aiNodeAnim*>;
NodeChannels channels_of(const NodeTable& table, const aiAnimation& animation);

// Seconds; 0 for an animation without a time.
double duration_of(const aiAnimation& animation);

// The placements of all nodes at so many seconds.
std::vector<Placement> placements_at(const NodeTable& table, const NodeChannels& channels, const aiAnimation& animation,
                                     double seconds);

// Which nodes an animation ever moves from where they are at rest below their parents.
std::vector<bool> moving_nodes(const NodeTable& table, const aiScene& scene);

// ---- turns ----

struct Turn {
    double x = 0.0, y = 0.0, z = 0.0, w = 1.0;
};

// The rotation in a placement, without its scale; none for one that is flat.
Turn turn_of(const Placement& placement);
Turn turn_product(const Turn& a, const Turn& b);  // b first
Turn turn_inverse(const Turn& turn);
Place turned(const Turn& turn, const Place& v);
Turn turn_between(const Turn& a, const Turn& b, double share);  // the short way
double degrees_between(const Turn& a, const Turn& b);
std::array<double, 3> angles_of(const Turn& turn);  // degrees about x, y, z, as texts say a rotation

inline Place operator+(const Place& a, const Place& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Place operator-(const Place& a, const Place& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Place operator*(double factor, const Place& a) { return {factor * a[0], factor * a[1], factor * a[2]}; }
double length_of(const Place& v);

// A place under a placement, and where that takes the origin.
Place transformed(const Placement& placement, const Place& place);
Place origin_of(const Placement& placement);

}  // namespace pelt
